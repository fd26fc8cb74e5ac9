// A fixture's document built as the parser reads it, handing each record of the record sections
// to the loader as soon as it is complete.
#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/FixtureReader.h"

namespace parcelon::refhost {

// Builds a fixture's document as the parser reads it, except for the elements of the record
// sections: each of those goes to `onRecord` as soon as it is complete and is dropped right
// after, so that a large company never sits in memory twice and every record is read while it is
// still in the processor's cache. The arrays of the record sections are left empty.
class StreamingDocument {
 public:
  using json = nlohmann::json;
  // `onRecord(section, index, element)`: `section` indexes `sections`.
  using OnRecord = std::function<void(size_t section, size_t index, json& element)>;

  StreamingDocument(std::span<const std::string_view> sections, FixtureContext& context,
                    OnRecord onRecord)
      : sections_(sections), seen_(sections.size()), context_(context),
        onRecord_(std::move(onRecord)) {}

  // Parses `text`, whose nesting ScanFixture has bounded; throws FixtureError.
  json Parse(std::string_view text);

  // The parser's events.
  bool null() { return Scalar(nullptr); }
  bool boolean(bool value) { return Scalar(value); }
  bool number_integer(json::number_integer_t value) { return Scalar(value); }
  bool number_unsigned(json::number_unsigned_t value) { return Scalar(value); }
  bool number_float(json::number_float_t value, const std::string&) { return Scalar(value); }
  bool string(std::string& value) { return Scalar(std::move(value)); }
  bool binary(json::binary_t& value) { return Scalar(json::binary(std::move(value))); }
  bool key(std::string& key) {
    key_ = std::move(key);
    return true;
  }
  bool start_object(size_t) {
    stack_.push_back(&Insert(json::object()));
    return true;
  }
  bool start_array(size_t) {
    if (stack_.size() == 1) StartSection();
    stack_.push_back(&Insert(json::array()));
    return true;
  }
  bool end_object() { return End(); }
  bool end_array() { return End(); }
  bool parse_error(size_t byte, const std::string&, const nlohmann::detail::exception& error) {
    errorByte_ = byte;
    error_ = error.what();
    return false;
  }

 private:
  static constexpr size_t kNoSection = size_t(-1);

  // A member array of the document starts: a record section when `key_` names one.
  void StartSection();

  // Adds `value` to the innermost open array or object (under `key_`), or makes it the document.
  json& Insert(json&& value);

  bool Scalar(json&& value) {
    Insert(std::move(value));
    Completed();
    return true;
  }

  bool End();

  // A value has been completed: an element of a record section is read and dropped.
  void Completed();

  std::span<const std::string_view> sections_;
  std::vector<bool> seen_;
  FixtureContext& context_;
  OnRecord onRecord_;
  json root_;
  std::vector<json*> stack_;  // the open arrays and objects, the document first
  std::string key_;           // the key of the next member of the innermost object
  size_t section_ = kNoSection, index_ = 0;
  size_t errorByte_ = 0;
  std::string error_;
};

}  // namespace parcelon::refhost
