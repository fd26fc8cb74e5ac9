// The reader of fixture objects that every section's loader uses: typed fields with their range
// checks, and messages that name the file, the object's JSON pointer and the field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ComBase.h"
#include "refhost/CompanyData.h"

namespace parcelon::refhost {

class FixtureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A reference to a record that was not loaded yet when the reference was read: records are
// read in the order the fixture gives them, so it is checked once the whole fixture is read.
struct PendingReference {
  std::string pointer;  // of the object holding the reference
  const char* field;
  ListKind list;
  RecNum recNum;
  const char* what;     // "a term"
  bool customerOnly;    // a customer or job, not another name
};

// What the loaders of all sections share.
struct FixtureContext {
  std::string file;  // for messages
  // Memory the transactions and templates read so far take besides their texts.
  size_t recordBytes = 0;
  std::vector<PendingReference> pendingReferences;
};

// Reads the fields of one JSON object of a fixture. Each Read fills `out` when the field is
// present and not null, and returns whether it did; a value of the wrong type or out of range
// throws FixtureError naming the object's JSON pointer and the field. Finish() then refuses any
// field that no Read asked for.
class FixtureReader {
 public:
  // `object` must outlive the reader; `pointer` is its JSON pointer ("" for the whole document).
  // Throws FixtureError when `object` is not an object.
  FixtureReader(FixtureContext& context, const nlohmann::json& object, std::string pointer);

  const std::string& Pointer() const { return pointer_; }
  FixtureContext& Context() const { return context_; }
  // The object itself, for a field that the loader reads from the JSON (see Accept).
  const nlohmann::json& Json() const { return object_; }
  bool Has(const char* field) const;

  bool Read(const char* field, Text& out);
  bool Read(const char* field, bool& out);
  // A whole number from `min` to `max`.
  bool Read(const char* field, LONG& out, LONG min = INT32_MIN, LONG max = INT32_MAX);
  // "1234.50", "-3", a whole JSON number, or {"value": "1234.50", "text": "1,234.50",
  // "valid": false}.
  bool Read(const char* field, Amount& out);
  // A JSON number.
  bool Read(const char* field, Percent& out);
  // "2.5", "-10", or a whole JSON number.
  bool Read(const char* field, Quantity& out);
  // {"lines": [up to four texts], "city", "state", "postalCode", "country", "note"}.
  bool Read(const char* field, Address& out);
  // "2009-03-07", "2009-03-07T14:30:00", or an OLE date number (0 for none).
  bool ReadDate(const char* field, DATE& out);
  // Seconds since 1970 (0 to 2^31 - 1) or "2009-03-07T14:30:00Z".
  bool ReadTime(const char* field, LONG& out);
  // The name of one of `names` (its index is the value) or the index itself.
  bool ReadEnum(const char* field, LONG& out, std::span<const std::string_view> names);
  // A record number of a record of Record's list, or 0 for none; `what` names the record in
  // the message ("a term"). A record not loaded yet is looked for again at the end of the load.
  template <class Record>
  bool ReadReference(const char* field, RecNum& out, Company& company, const char* what) {
    if (!Read(field, out, 0)) return false;
    if (out != 0 && !company.List<Record>().Find(out))
      context_.pendingReferences.push_back({pointer_, field, Record::kList, out, what, false});
    return true;
  }
  // As ReadReference, for a customer or job of the names list.
  bool ReadCustomerReference(const char* field, RecNum& out, Company& company);

  // Read, and a "missing required field" error when the field is absent.
  template <class T, class... Rest>
  void Require(const char* field, T& out, Rest&&... rest) {
    if (!Read(field, out, std::forward<Rest>(rest)...)) Fail(field, "missing required field");
  }

  // Calls `each(FixtureReader&)` for every element of the array `field` (objects), and
  // Finish() after it; nothing when the field is absent.
  template <class Each>
  void ForEach(const char* field, Each&& each) {
    const nlohmann::json* array = Array(field);
    if (!array) return;
    for (size_t i = 0; i < array->size(); ++i) {
      FixtureReader element(context_, (*array)[i], ElementPointer(field, i));
      each(element);
      element.Finish();
    }
  }
  // Calls `each(const nlohmann::json&, const std::string& pointer)` for every element of the
  // array `field`; nothing when the field is absent.
  template <class Each>
  void ForEachValue(const char* field, Each&& each) {
    const nlohmann::json* array = Array(field);
    if (!array) return;
    for (size_t i = 0; i < array->size(); ++i) each((*array)[i], ElementPointer(field, i));
  }

  // Counts `field` as read, for a field that another loader reads from the JSON itself.
  void Accept(const char* field) { Field(field); }

  // Throws FixtureError when the object has a field that no Read asked for.
  void Finish() const;

  // "file: pointer: field: message".
  [[noreturn]] void Fail(std::string_view field, const std::string& message) const;
  // "file: pointer: message", for a value that is not an object's field.
  [[noreturn]] static void FailAt(const FixtureContext& context, const std::string& pointer,
                                  const std::string& message);

 private:
  // The field's value, null when absent or JSON null; counts it as read.
  const nlohmann::json* Field(const char* field);
  // The array `field`, null when absent; throws when it is not an array.
  const nlohmann::json* Array(const char* field);
  std::string ElementPointer(const char* field, size_t index) const;

  FixtureContext& context_;
  const nlohmann::json& object_;
  std::string pointer_;
  std::vector<const char*> read_;
};

// "a string", "an object", "a number", ... for messages.
std::string TypeName(const nlohmann::json& value);

// The value of a JSON integer that fits 64 signed bits; none for anything else. The parser keeps
// integers from 2^63 to 2^64 - 1 unsigned, which a signed read would turn negative.
std::optional<int64_t> WholeNumber(const nlohmann::json& value);

}  // namespace parcelon::refhost
