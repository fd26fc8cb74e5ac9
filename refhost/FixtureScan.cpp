// The pass over a fixture's text before it is parsed: one loop over the bytes that tracks strings,
// nesting and the elements of the document's member arrays.
#include "refhost/FixtureScan.h"

#include <algorithm>
#include <utility>

#include "refhost/Fixture.h"

namespace parcelon::refhost {

namespace {

// Line and column (from 1) of the byte at `offset`.
std::pair<size_t, size_t> LineAndColumn(std::string_view text, size_t offset) {
  offset = std::min(offset, text.size());
  size_t line = 1, lineStart = 0;
  for (size_t i = 0; i < offset; ++i)
    if (text[i] == '\n') ++line, lineStart = i + 1;
  return {line, offset - lineStart + 1};
}

}  // namespace

void FailAtOffset(const std::string& file, std::string_view text, size_t offset,
                  const std::string& message) {
  const auto [line, column] = LineAndColumn(text, offset);
  throw FixtureError(file + ": line " + std::to_string(line) + ", column " +
                     std::to_string(column) + ": " + message);
}

std::vector<size_t> ScanFixture(std::string_view text, const std::string& file,
                                std::span<const std::string_view> sections) {
  std::vector<size_t> elements(sections.size());
  constexpr size_t kNone = size_t(-1);
  size_t counted = kNone;  // the section whose array is open
  size_t keyStart = 0, keyEnd = 0;  // the last string of the document object, its member's key
  int depth = 0;
  size_t values = 1;  // every container and every separator adds one
  bool inString = false, escaped = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      if (escaped) {
        escaped = false;
      } else if (c == '\\') {
        escaped = true;
      } else if (c == '"') {
        inString = false;
        keyEnd = i;
      }
    } else if (c == '"') {
      inString = true;
      keyStart = i + 1;
    } else if ((c == '[' || c == '{' || c == ',') && ++values > kMaxFixtureValues) {
      FailAtOffset(file, text, i, "more than " + std::to_string(kMaxFixtureValues) + " values");
    } else if (c == '[' || c == '{') {
      if (c == '[' && depth == 1 && keyEnd >= keyStart) {
        const auto found = std::find(sections.begin(), sections.end(),
                                     text.substr(keyStart, keyEnd - keyStart));
        counted = found == sections.end() ? kNone : size_t(found - sections.begin());
        if (counted != kNone) ++elements[counted];
      }
      if (++depth > kMaxFixtureNesting)
        FailAtOffset(file, text, i,
                     "arrays and objects nested deeper than " + std::to_string(kMaxFixtureNesting) +
                         " levels");
    } else if (c == ']' || c == '}') {
      if (--depth == 1) counted = kNone;
    } else if (c == ',' && depth == 2 && counted != kNone) {
      ++elements[counted];
    }
  }
  return elements;
}

}  // namespace parcelon::refhost
