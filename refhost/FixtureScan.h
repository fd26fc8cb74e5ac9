// The pass over a fixture's text before it is parsed: limits on nesting and size, the sizes of
// the record sections, and messages by line and column.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace parcelon::refhost {

// Refuses arrays and objects nested deeper than kMaxFixtureNesting and more than
// kMaxFixtureValues values, before parsing. Gives, for each of `sections`, about how many elements
// the document's member array of that name has (at most one more), for reserving room for them.
// Throws FixtureError.
std::vector<size_t> ScanFixture(std::string_view text, const std::string& file,
                                std::span<const std::string_view> sections);

// Throws FixtureError "file: line L, column C: message" for the byte at `offset` of `text`.
[[noreturn]] void FailAtOffset(const std::string& file, std::string_view text, size_t offset,
                               const std::string& message);

}  // namespace parcelon::refhost
