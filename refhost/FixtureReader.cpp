// The reader of fixture objects: each typed field with its checks and its message.
#include "refhost/FixtureReader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "refhost/FixtureDates.h"
#include "refhost/FixtureDecimals.h"

namespace parcelon::refhost {

using json = nlohmann::json;

std::string TypeName(const json& value) {
  switch (value.type()) {
    case json::value_t::null:
      return "null";
    case json::value_t::object:
      return "an object";
    case json::value_t::array:
      return "an array";
    case json::value_t::string:
      return "a string";
    case json::value_t::boolean:
      return "a boolean";
    case json::value_t::binary:
      return "binary data";
    case json::value_t::discarded:
      return "nothing";
    default:
      return "a number";
  }
}

std::optional<int64_t> WholeNumber(const json& value) {
  if (!value.is_number_integer() ||
      (value.is_number_unsigned() &&
       value.get<uint64_t>() > uint64_t(std::numeric_limits<int64_t>::max())))
    return std::nullopt;
  return value.get<int64_t>();
}


FixtureReader::FixtureReader(FixtureContext& context, const json& object, std::string pointer)
    : context_(context), object_(object), pointer_(std::move(pointer)) {
  if (!object_.is_object())
    FailAt(context_, pointer_, "expected an object, found " + TypeName(object_));
}

bool FixtureReader::Has(const char* field) const { return object_.contains(field); }

const json* FixtureReader::Field(const char* field) {
  const auto found = object_.find(field);
  if (found == object_.end()) return nullptr;
  read_.push_back(field);
  return found->is_null() ? nullptr : &*found;
}

const json* FixtureReader::Array(const char* field) {
  const json* value = Field(field);
  if (value && !value->is_array()) Fail(field, "expected an array, found " + TypeName(*value));
  return value;
}

std::string FixtureReader::ElementPointer(const char* field, size_t index) const {
  return pointer_ + "/" + field + "/" + std::to_string(index);
}

bool FixtureReader::Read(const char* field, Text& out) {
  const json* value = Field(field);
  if (!value) return false;
  if (!value->is_string()) Fail(field, "expected a string, found " + TypeName(*value));
  if (!Utf8ToText(value->get_ref<const std::string&>(), out))
    Fail(field, "the string is not well-formed UTF-8");
  return true;
}

bool FixtureReader::Read(const char* field, bool& out) {
  const json* value = Field(field);
  if (!value) return false;
  if (!value->is_boolean()) Fail(field, "expected true or false, found " + TypeName(*value));
  out = value->get<bool>();
  return true;
}

bool FixtureReader::Read(const char* field, LONG& out, LONG min, LONG max) {
  const json* value = Field(field);
  if (!value) return false;
  const auto range = " from " + std::to_string(min) + " to " + std::to_string(max);
  if (value->is_number_unsigned()) {
    if (value->get<uint64_t>() > uint64_t(max)) Fail(field, "expected a whole number" + range);
    out = static_cast<LONG>(value->get<uint64_t>());
  } else if (value->is_number_integer()) {
    const int64_t number = value->get<int64_t>();
    if (number < min || number > max) Fail(field, "expected a whole number" + range);
    out = static_cast<LONG>(number);
  } else {
    Fail(field, "expected a whole number" + range + ", found " + TypeName(*value));
  }
  if (out < min || out > max) Fail(field, "expected a whole number" + range);
  return true;
}

bool FixtureReader::Read(const char* field, Amount& out) {
  const json* value = Field(field);
  if (!value) return false;
  const json* number = value;
  std::optional<Text> text;
  if (value->is_object()) {
    FixtureReader inner(context_, *value, pointer_ + "/" + field);
    inner.Read("valid", out.valid);
    text.emplace();
    if (!inner.Read("text", *text)) text.reset();
    number = inner.Field("value");
    inner.Finish();
  }
  out.empty = !number;
  out.cents = 0;
  if (number) {
    bool negative = false;
    int64_t magnitude = 0;
    int decimals = 0;
    if (const std::optional<int64_t> whole = WholeNumber(*number);
        whole && WithinDigits(*whole, 15)) {
      negative = *whole < 0;
      magnitude = (negative ? -*whole : *whole) * 100;
    } else if (!number->is_string() || !ParseDecimal(number->get_ref<const std::string&>(), 2,
                                                     negative, magnitude, decimals)) {
      Fail(field, "expected an amount such as \"-1234.50\" (at most 17 digits, 2 decimals)");
    } else {
      for (; decimals < 2; ++decimals) magnitude *= 10;
    }
    out.cents = negative ? -magnitude : magnitude;
  }
  out.text = text ? *text : out.empty ? Text() : CentsText(out.cents);
  return true;
}

bool FixtureReader::Read(const char* field, Percent& out) {
  const json* value = Field(field);
  if (!value) return false;
  if (!value->is_number() || !std::isfinite(value->get<double>()))
    Fail(field, "expected a number, found " + TypeName(*value));
  out.empty = false;
  out.value = value->get<double>();
  return true;
}

bool FixtureReader::Read(const char* field, Quantity& out) {
  const json* value = Field(field);
  if (!value) return false;
  int decimals = 0;
  if (const std::optional<int64_t> whole = WholeNumber(*value); whole && WithinDigits(*whole, 17)) {
    out.negative = *whole < 0;
    out.integer = out.negative ? -*whole : *whole;
  } else if (!value->is_string() || !ParseDecimal(value->get_ref<const std::string&>(), 10,
                                                  out.negative, out.integer, decimals)) {
    Fail(field, "expected a quantity such as \"2.5\" (at most 17 digits, 10 decimals)");
  }
  out.decimals = static_cast<SHORT>(decimals);
  out.empty = false;
  return true;
}

bool FixtureReader::Read(const char* field, Address& out) {
  const json* value = Field(field);
  if (!value) return false;
  FixtureReader inner(context_, *value, pointer_ + "/" + field);
  if (const json* lines = inner.Array("lines")) {
    if (lines->size() > out.lines.size()) inner.Fail("lines", "expected at most 4 lines");
    for (size_t i = 0; i < lines->size(); ++i) {
      const json& line = (*lines)[i];
      if (!line.is_string() || !Utf8ToText(line.get_ref<const std::string&>(), out.lines[i]))
        FailAt(context_, inner.ElementPointer("lines", i), "expected a string");
    }
  }
  inner.Read("city", out.city);
  inner.Read("state", out.state);
  inner.Read("postalCode", out.postalCode);
  inner.Read("country", out.country);
  inner.Read("note", out.note);
  inner.Finish();
  return true;
}

bool FixtureReader::ReadDate(const char* field, DATE& out) {
  const json* value = Field(field);
  if (!value) return false;
  if (value->is_number()) {
    const double number = value->get<double>();
    if (!(number >= 0 && number <= kMaxOleDate))
      Fail(field, "expected an OLE date from 0 to 2958465");
    out = number;
    return true;
  }
  const std::optional<DateTime> date =
      value->is_string() ? ParseDateTime(value->get_ref<const std::string&>(), false)
                         : std::nullopt;
  if (!date || date->year < 1900)
    Fail(field, "expected a date such as \"2009-03-07\" or \"2009-03-07T14:30:00\", from 1900");
  out = OleDateOf(*date);
  return true;
}

bool FixtureReader::ReadTime(const char* field, LONG& out) {
  const json* value = Field(field);
  if (!value) return false;
  if (value->is_number_integer() || value->is_number_unsigned()) {
    read_.pop_back();
    return Read(field, out, 0, INT32_MAX);
  }
  const std::optional<DateTime> time =
      value->is_string() ? ParseDateTime(value->get_ref<const std::string&>(), true) : std::nullopt;
  const int64_t seconds = time ? SecondsOf(*time) : -1;
  if (seconds < 0 || seconds > INT32_MAX)
    Fail(field,
         "expected seconds since 1970 or a time such as \"2009-03-07T14:30:00Z\", from 1970 to "
         "2038");
  out = static_cast<LONG>(seconds);
  return true;
}

bool FixtureReader::ReadEnum(const char* field, LONG& out,
                             std::span<const std::string_view> names) {
  const json* value = Field(field);
  if (!value) return false;
  if (value->is_string()) {
    const auto found = std::find(names.begin(), names.end(), value->get_ref<const std::string&>());
    if (found != names.end()) {
      out = static_cast<LONG>(found - names.begin());
      return true;
    }
  } else if (const std::optional<int64_t> number = WholeNumber(*value);
             number && *number >= 0 && *number < int64_t(names.size())) {
    out = static_cast<LONG>(*number);
    return true;
  }
  std::string choices;
  for (std::string_view name : names) (choices += choices.empty() ? "" : ", ") += name;
  Fail(field, "expected one of " + choices + " or its number");
}

bool FixtureReader::ReadCustomerReference(const char* field, RecNum& out, Company& company) {
  if (!Read(field, out, 0)) return false;
  if (out == 0) return true;
  if (const Name* name = company.names.Find(out); !name)
    context_.pendingReferences.push_back(
        {pointer_, field, ListKind::Names, out, "a customer or job", true});
  else if (!name->customer)
    Fail(field, "expected a record number of a customer or job");
  return true;
}

void FixtureReader::Finish() const {
  if (read_.size() == object_.size()) return;
  // An element, not a structured binding: clang 14 cannot capture a binding in a lambda.
  for (const auto& item : object_.items()) {
    const std::string& key = item.key();
    if (std::none_of(read_.begin(), read_.end(), [&](const char* f) { return key == f; }))
      Fail(key, "unknown field");
  }
}

void FixtureReader::Fail(std::string_view field, const std::string& message) const {
  FailAt(context_, pointer_, std::string(field) + ": " + message);
}

void FixtureReader::FailAt(const FixtureContext& context, const std::string& pointer,
                           const std::string& message) {
  throw FixtureError(context.file + ": " + (pointer.empty() ? "" : pointer + ": ") + message);
}

}  // namespace parcelon::refhost
