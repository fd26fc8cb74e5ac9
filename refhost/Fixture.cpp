// Loading a company from a JSON fixture: the records of the list, template and transaction
// sections as the parser completes them, then the rest; errors name the file, the JSON pointer
// and the field.
#include "refhost/Fixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <new>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>

#include "host/HostModel.h"

namespace parcelon::refhost {

namespace {

using json = nlohmann::json;

// ---- Dates and times ----------------------------------------------------------------------

// Days from 1970-01-01 to a day of the proleptic Gregorian calendar.
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

bool IsLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

// A date and time written "YYYY-MM-DD", "YYYY-MM-DDTHH:MM:SS" or, with `zone`, the latter
// followed by "Z".
struct DateTime {
  int year, month, day, hour = 0, minute = 0, second = 0;
};

std::optional<DateTime> ParseDateTime(std::string_view text, bool requireTime) {
  DateTime t{};
  char tail = 0;
  const std::string copy(text);
  int consumed = 0;
  if (std::sscanf(copy.c_str(), "%4d-%2d-%2d%n", &t.year, &t.month, &t.day, &consumed) != 3 ||
      consumed != 10)
    return std::nullopt;
  if (copy.size() > 10) {
    int more = 0;
    if (std::sscanf(copy.c_str() + 10, "T%2d:%2d:%2d%n%c", &t.hour, &t.minute, &t.second, &more,
                    &tail) < 3 ||
        more != 9)
      return std::nullopt;
    const std::string rest = copy.substr(19);
    if (requireTime ? rest != "Z" : !rest.empty()) return std::nullopt;
  } else if (requireTime) {
    return std::nullopt;
  }
  static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (t.month < 1 || t.month > 12 || t.day < 1 ||
      t.day > kDays[size_t(t.month - 1)] + (t.month == 2 && IsLeap(t.year)) || t.hour > 23 ||
      t.minute > 59 || t.second > 59 || t.hour < 0 || t.minute < 0 || t.second < 0)
    return std::nullopt;
  return t;
}

int64_t SecondsOf(const DateTime& t) {
  return DaysFromCivil(t.year, unsigned(t.month), unsigned(t.day)) * 86400 + t.hour * 3600 +
         t.minute * 60 + t.second;
}

// OLE dates: days since 1899-12-30; the fixture takes 1900-01-01 to 9999-12-31.
constexpr double kMaxOleDate = 2958465.999988426;
const int64_t kOleEpochDays = DaysFromCivil(1899, 12, 30);

// ---- Decimals -------------------------------------------------------------------------------

// A decimal "-123.45": sign, digits, and at most `maxDecimals` digits after the point. Gives
// the scaled magnitude and the number of decimals; false for anything else or for more than
// 17 digits in all.
bool ParseDecimal(std::string_view text, int maxDecimals, bool& negative, int64_t& magnitude,
                  int& decimals) {
  negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  const size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  const std::string_view fraction =
      point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
  if (whole.empty() || (point != std::string_view::npos && fraction.empty()) ||
      fraction.size() > size_t(maxDecimals) || whole.size() + fraction.size() > 17)
    return false;
  magnitude = 0;
  for (std::string_view part : {whole, fraction})
    for (char c : part) {
      if (c < '0' || c > '9') return false;
      magnitude = magnitude * 10 + (c - '0');
    }
  decimals = int(fraction.size());
  return true;
}

// Has `number` at most `digits` digits?
bool WithinDigits(int64_t number, int digits) {
  int64_t limit = 1;
  for (int i = 0; i < digits; ++i) limit *= 10;
  return number > -limit && number < limit;
}

Text CentsText(int64_t cents) {
  const int64_t magnitude = cents < 0 ? -cents : cents;
  char text[32];
  std::snprintf(text, sizeof text, "%s%lld.%02lld", cents < 0 ? "-" : "",
                static_cast<long long>(magnitude / 100), static_cast<long long>(magnitude % 100));
  return AsciiText(text);
}

// ---- Enumerations ---------------------------------------------------------------------------

constexpr std::array<std::string_view, 2> kTermTypes = {"standard", "dateDriven"};
constexpr std::array<std::string_view, 10> kItemTypes = {
    "service", "inventory", "part",    "charges", "subtotal",
    "group",   "discount",  "payment", "taxComp", "taxGroup"};
constexpr std::array<std::string_view, 6> kJobStatuses = {"none",       "pending", "awarded",
                                                          "inProgress", "closed",  "notAwarded"};

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

}  // namespace

// ---- FixtureReader --------------------------------------------------------------------------

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
    if (number->is_number_integer() && WithinDigits(number->get<int64_t>(), 15)) {
      negative = number->get<int64_t>() < 0;
      magnitude = (negative ? -number->get<int64_t>() : number->get<int64_t>()) * 100;
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
  if (value->is_number_integer() && WithinDigits(value->get<int64_t>(), 17)) {
    out.negative = value->get<int64_t>() < 0;
    out.integer = out.negative ? -value->get<int64_t>() : value->get<int64_t>();
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
  out = double(DaysFromCivil(date->year, unsigned(date->month), unsigned(date->day)) -
               kOleEpochDays) +
        (date->hour * 3600 + date->minute * 60 + date->second) / 86400.0;
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
  } else if (value->is_number_integer() && value->get<int64_t>() >= 0 &&
             value->get<int64_t>() < int64_t(names.size())) {
    out = static_cast<LONG>(value->get<int64_t>());
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

// ---- Sections ---------------------------------------------------------------------------

namespace {

// A JSON pointer token for an object key: "~" as "~0", "/" as "~1".
std::string PointerToken(const std::string& key) {
  std::string token;
  for (char c : key) {
    if (c == '~')
      token += "~0";
    else if (c == '/')
      token += "~1";
    else
      token += c;
  }
  return token;
}

constexpr std::pair<const char*, Text Name::*> kNameTexts[] = {
    {"companyName", &Name::companyName},
    {"salutation", &Name::salutation},
    {"firstName", &Name::firstName},
    {"middleInitial", &Name::middleInitial},
    {"lastName", &Name::lastName},
    {"contactName1", &Name::contactName1},
    {"contactName2", &Name::contactName2},
    {"telephoneNumber1", &Name::telephoneNumber1},
    {"telephoneNumber2", &Name::telephoneNumber2},
    {"faxNumber", &Name::faxNumber},
    {"email", &Name::email},
    {"accountNumber", &Name::accountNumber},
    {"note", &Name::note},
};

constexpr std::pair<const char*, Address Name::*> kNameAddresses[] = {
    {"address", &Name::address},
    {"billingAddress", &Name::billingAddress},
    {"shippingAddress", &Name::shippingAddress},
};

constexpr std::pair<std::string_view, HRESULT> kNamedResults[] = {
    {"E_FAIL", E_FAIL},
    {"E_POINTER", E_POINTER},
    {"E_OUTOFMEMORY", E_OUTOFMEMORY},
    {"E_INVALIDARG", E_INVALIDARG},
    {"E_NOINTERFACE", E_NOINTERFACE},
    {"E_NOTIMPL", E_NOTIMPL},
    {"E_UNEXPECTED", E_UNEXPECTED},
    {"E_ACCESSDENIED", E_ACCESSDENIED},
    {"LX_E_NOTFOUND", LX_E_NOTFOUND},
};

// "0x80004005" or one of kNamedResults; none for anything else.
std::optional<HRESULT> ParseResult(const std::string& text) {
  for (const auto& [name, hr] : kNamedResults)
    if (text == name) return hr;
  if (text.size() != 10 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) return {};
  uint32_t value = 0;
  for (size_t i = 2; i < text.size(); ++i) {
    const char c = text[i];
    const int digit = c >= '0' && c <= '9'   ? c - '0'
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10
                      : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                             : -1;
    if (digit < 0) return {};
    value = value << 4 | uint32_t(digit);
  }
  return static_cast<HRESULT>(value);
}

bool HasRecord(Company& company, ListKind list, RecNum recNum) {
  switch (list) {
    case ListKind::Invoices:
      return company.invoices.Find(recNum);
    case ListKind::Estimates:
      return company.estimates.Find(recNum);
    case ListKind::Styles:
      return company.styles.Find(recNum);
    default:
      return FindListRecord(company, list, recNum);
  }
}

// Line and column (from 1) of the byte at `offset`.
std::pair<size_t, size_t> LineAndColumn(std::string_view text, size_t offset) {
  offset = std::min(offset, text.size());
  size_t line = 1, lineStart = 0;
  for (size_t i = 0; i < offset; ++i)
    if (text[i] == '\n') ++line, lineStart = i + 1;
  return {line, offset - lineStart + 1};
}

[[noreturn]] void FailAtOffset(const std::string& file, std::string_view text, size_t offset,
                               const std::string& message) {
  const auto [line, column] = LineAndColumn(text, offset);
  throw FixtureError(file + ": line " + std::to_string(line) + ", column " +
                     std::to_string(column) + ": " + message);
}

// Refuses arrays and objects nested deeper than kMaxFixtureNesting and more than
// kMaxFixtureValues values, before parsing. Gives, for each of `sections`, about how many elements
// the document's member array of that name has (at most one more), for reserving room for them.
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

// Builds a fixture's document as the parser reads it, except for the elements of the record
// sections: each of those goes to `onRecord` as soon as it is complete and is dropped right
// after, so that a large company never sits in memory twice and every record is read while it is
// still in the processor's cache. The arrays of the record sections are left empty.
class StreamingDocument {
 public:
  // `onRecord(section, index, element)`: `section` indexes `sections`.
  using OnRecord = std::function<void(size_t section, size_t index, json& element)>;

  StreamingDocument(std::span<const std::string_view> sections, FixtureContext& context,
                    OnRecord onRecord)
      : sections_(sections), seen_(sections.size()), context_(context),
        onRecord_(std::move(onRecord)) {}

  // Parses `text`, whose nesting ScanFixture has bounded; throws FixtureError.
  json Parse(std::string_view text) {
    if (!json::sax_parse(text, this)) {
      // The library's message starts "[json.exception.parse_error.101] parse error at line 1,
      // column 2: "; the position is given again in the fixture's own form.
      const size_t column = error_.find("column ");
      const size_t colon = column == std::string::npos ? column : error_.find(": ", column);
      if (colon != std::string::npos) error_.erase(0, colon + 2);
      FailAtOffset(context_.file, text, errorByte_ == 0 ? 0 : errorByte_ - 1, error_);
    }
    return std::move(root_);
  }

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
  void StartSection() {
    const auto found = std::find(sections_.begin(), sections_.end(), key_);
    section_ = found == sections_.end() ? kNoSection : size_t(found - sections_.begin());
    if (section_ == kNoSection) return;
    if (seen_[section_])
      FixtureReader::FailAt(context_, "/" + key_, "a second section of this name");
    seen_[section_] = true;
    index_ = 0;
  }

  // Adds `value` to the innermost open array or object (under `key_`), or makes it the document.
  json& Insert(json&& value) {
    if (stack_.empty()) return root_ = std::move(value);
    json& parent = *stack_.back();
    if (parent.is_array()) {
      auto& elements = parent.get_ref<json::array_t&>();
      elements.push_back(std::move(value));
      return elements.back();
    }
    // Of two equal keys the last wins, as in a parsed document.
    return parent.get_ref<json::object_t&>()[key_] = std::move(value);
  }

  bool Scalar(json&& value) {
    Insert(std::move(value));
    Completed();
    return true;
  }

  bool End() {
    stack_.pop_back();
    if (stack_.size() == 1) section_ = kNoSection;  // a member of the document ends
    Completed();
    return true;
  }

  // A value has been completed: an element of a record section is read and dropped.
  void Completed() {
    if (section_ == kNoSection || stack_.size() != 2) return;
    auto& elements = stack_.back()->get_ref<json::array_t&>();
    onRecord_(section_, index_++, elements.back());
    elements.pop_back();
  }

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

// Reads the sections of one fixture into a company. The records of the list, template and
// transaction sections are read as the parser completes them, in the fixture's order, so
// references between records are checked once every record is in: the tree links at Link()
// and references of transactions that pointed ahead at CheckPendingReferences().
class Loader {
 public:
  Loader(FixtureContext& context, Company& company, const RecordEdit& edit)
      : context_(context), company_(company), edit_(edit) {}

  void Load(std::string_view text) {
    expectedRecords_ = ScanFixture(text, context_.file, kRecordSections);
    StreamingDocument parser(kRecordSections, context_,
                             [this](size_t section, size_t index, json& element) {
                               ReadRecord(section, index, element);
                             });
    document_ = parser.Parse(text);
    root_.emplace(context_, document_, "");
    LoadCompanyInfo();
    LoadHost();
    // What is left of a record section is its empty array, or a value of the wrong type.
    for (std::string_view section : kRecordSections)
      root_->ForEach(std::string(section).c_str(), [](FixtureReader&) {});
    Link();
    CheckPendingReferences();
    LoadDataFileRecords();
    LoadFaults();
    root_->Finish();
  }

 private:
  static constexpr size_t kMaxReservedBytes = size_t(256) << 20;
  static constexpr std::string_view kRecordSections[] = {
      "terms",       "customers",        "otherNames", "items",    "classes",  "salesReps",
      "shipMethods", "customerMessages", "styles",     "invoices", "estimates"};

  void ReadRecord(size_t section, size_t index, json& element) {
    const std::string_view name = kRecordSections[section];
    const ListKind list = name == "otherNames" ? ListKind::Names : *ListFromName(name);
    if (list == ListKind::Names && index == 0)
      nameSections_.emplace_back(company_.names.Size(), name);
    if (edit_) edit_(list, element);
    FixtureReader r(context_, element, "/" + std::string(name) + "/" + std::to_string(index));
    // Room for the whole section at once: growing a large list record by record would move every
    // record several times.
    const size_t reserve = index == 0 ? expectedRecords_[section] : 0;
    switch (list) {
      case ListKind::Terms:
        return Add(reserve, company_.terms, r, [&](Term& term) {
          r.ReadEnum("type", term.type, kTermTypes);
          r.Read("stdDueDays", term.stdDueDays, 0);
          r.Read("stdDiscountDays", term.stdDiscountDays, 0);
          r.Read("dayOfMonthDue", term.dayOfMonthDue, 0, 31);
          r.Read("discountDayOfMonth", term.discountDayOfMonth, 0, 31);
          r.Read("discountPct", term.discountPct);
          r.Read("minDays", term.minDays, 0);
          term.discountEmpty = term.discountPct.empty;
          r.Read("isDiscountEmpty", term.discountEmpty);
        });
      case ListKind::Names:
        return Add(reserve, company_.names, r, [&](Name& record) {
          if (name == "customers")
            r.Read("parent", record.parent, 0);
          else
            record.customer = false;
          ReadName(r, record);
        });
      case ListKind::Items:
        return Add(reserve, company_.items, r, [&](Item& item) {
          r.ReadEnum("type", item.type, kItemTypes);
          r.Read("parent", item.parent, 0);
          r.Read("longDescription", item.longDescription);
          r.ForEachValue("groupItems", [&](const json& member, const std::string& pointer) {
            if (!member.is_number_integer() || member.get<int64_t>() < 1 ||
                member.get<int64_t>() > INT32_MAX)
              FixtureReader::FailAt(context_, pointer, "expected a record number of an item");
            item.groupMembers.push_back(static_cast<RecNum>(member.get<int64_t>()));
          });
          if (!item.groupMembers.empty() && item.type != itGROUP && item.type != itTAXGROUP)
            r.Fail("groupItems", "only items of type group or taxGroup have members");
        });
      case ListKind::Classes:
        return Add(reserve, company_.classes, r, [&](Class& record) { r.Read("parent", record.parent, 0); });
      case ListKind::SalesReps:
        return Add(reserve, company_.salesReps, r,
                   [&](SalesRep& rep) { r.Read("associatedName", rep.associatedName, 0); });
      case ListKind::ShipMethods:
        return Add(reserve, company_.shipMethods, r, [](ShipMethod&) {});
      case ListKind::CustomerMessages:
        return Add(reserve, company_.customerMessages, r, [](CustomerMessage&) {});
      case ListKind::Styles:
        return Add(reserve, company_.styles, r, [&](Style& style) { ReadStyle(r, style, company_); });
      case ListKind::Invoices:
        return Add(reserve, company_.invoices, r, [&](Invoice& invoice) { ReadInvoice(r, invoice, company_); });
      case ListKind::Estimates:
        return Add(reserve, company_.estimates, r,
                   [&](Estimate& estimate) { ReadEstimate(r, estimate, company_); });
    }
  }

  // Reads a record of Record's list from `r` (the fields every list record has, then `fill`)
  // and adds it, refusing a record number the list has already; first makes room for `reserve`
  // more records.
  template <class Record, class Fill>
  void Add(size_t reserve, RecordList<Record>& list, FixtureReader& r, Fill&& fill) {
    // The count is only a hint, not yet checked record by record: a section of a million bare
    // numbers does not get room for a million records.
    if (reserve) list.Reserve(list.Size() + std::min(reserve, kMaxReservedBytes / sizeof(Record)));
    Record record;
    if constexpr (std::is_base_of_v<ListRecord, Record>) ReadListRecord(r, record);
    fill(record);
    r.Finish();
    const RecNum recNum = record.recNum;
    if (!list.Add(std::move(record))) {
      const size_t first = static_cast<size_t>(list.Find(recNum) - list.Records().data());
      r.Fail("recNum", "duplicate record number " + std::to_string(recNum) + ", first at " +
                           PointerOf(Record::kList, first));
    }
  }

  void LoadCompanyInfo() {
    root_->Accept("company");
    const json* section = Section("company");
    if (!section) return;
    FixtureReader r(context_, *section, "/company");
    CompanyInfo& info = company_.info;
    r.Read("companyName", info.companyName);
    r.Read("address", info.address);
    r.Read("legalCompanyName", info.legalCompanyName);
    r.Read("legalAddress", info.legalAddress);
    r.Read("email", info.email);
    r.Read("phone", info.phone);
    r.Read("companyUID", company_.companyUID);
    r.Read("companyAuthID", company_.authID);
    if (const json* statuses = Section("subscriptions", *section)) {
      if (!statuses->is_object()) r.Fail("subscriptions", "expected an object");
      for (const auto& [service, status] : statuses->items()) {
        const std::string pointer = "/company/subscriptions/" + PointerToken(service);
        if (!status.is_number_integer() || status.get<int64_t>() < INT32_MIN ||
            status.get<int64_t>() > INT32_MAX)
          FixtureReader::FailAt(context_, pointer, "expected a whole number");
        Text name;
        Utf8ToText(service, name);
        company_.serviceStatuses[name] = static_cast<LONG>(status.get<int64_t>());
      }
      r.Accept("subscriptions");
    }
    r.Finish();
  }

  void LoadHost() {
    root_->Accept("host");
    const json* section = Section("host");
    if (!section) return;
    FixtureReader r(context_, *section, "/host");
    r.Read("logFolder", company_.host.logFolder);
    r.Finish();
  }

  static void ReadListRecord(FixtureReader& r, ListRecord& record) {
    r.Require("recNum", record.recNum, 1);
    r.Require("name", record.name);
    r.Read("isHidden", record.hidden);
    r.ReadTime("modTime", record.modTime);
    std::set<std::pair<Text, Text>> seen;
    r.ForEach("attributes", [&](FixtureReader& a) {
      Attribute attribute;
      a.Require("name", attribute.name);
      a.Require("owner", attribute.owner);
      a.Read("value", attribute.value);
      if (!seen.emplace(attribute.name, attribute.owner).second)
        a.Fail("name", "a second attribute of this name and owner");
      record.attributes.push_back(std::move(attribute));
    });
  }

  static void ReadName(FixtureReader& r, Name& name) {
    r.ReadEnum("jobStatus", name.jobStatus, kJobStatuses);
    for (const auto& [field, member] : kNameTexts) r.Read(field, name.*member);
    for (const auto& [field, member] : kNameAddresses) r.Read(field, name.*member);
    r.Read("salesRep", name.salesRep, 0);
    r.Read("terms", name.terms, 0);
  }

  // The JSON pointer of the record at `position` of `list`.
  std::string PointerOf(ListKind list, size_t position) const {
    if (list != ListKind::Names)
      return "/" + std::string(ListName(list)) + "/" + std::to_string(position);
    // Customers and other names share the list, section after section in the fixture's order.
    auto section = nameSections_.rbegin();
    while (section->first > position) ++section;
    return "/" + std::string(section->second) + "/" + std::to_string(position - section->first);
  }

  void Link() {
    const std::optional<LinkProblem> problem = LinkCompany(company_);
    if (!problem) return;
    const std::string field = problem->field;
    std::string message;
    switch (problem->kind) {
      case LinkProblem::MissingParent:
        message = problem->list == ListKind::Names ? "expected a record number of a customer or job"
                  : problem->list == ListKind::Items ? "expected a record number of an item"
                                                     : "expected a record number of a class";
        break;
      case LinkProblem::ParentCycle:
        message = "the parent links form a cycle";
        break;
      case LinkProblem::TooDeep:
        message = "the tree is deeper than " + std::to_string(kMaxTreeLevel) + " levels";
        break;
      case LinkProblem::MissingReference:
        message = field == "terms"        ? "expected a record number of a term"
                  : field == "salesRep"   ? "expected a record number of a sales rep"
                  : field == "groupItems" ? "expected record numbers of items"
                                          : "expected a record number of a name";
        break;
    }
    FixtureReader::FailAt(context_, PointerOf(problem->list, problem->position),
                          field + ": " + message);
  }

  void CheckPendingReferences() {
    for (const PendingReference& reference : context_.pendingReferences) {
      const Name* name =
          reference.customerOnly ? company_.names.Find(reference.recNum) : nullptr;
      if (reference.customerOnly ? !name || !name->customer
                                 : !HasRecord(company_, reference.list, reference.recNum))
        FixtureReader::FailAt(context_, reference.pointer,
                              std::string(reference.field) + ": expected a record number of " +
                                  reference.what);
    }
  }

  void LoadDataFileRecords() {
    root_->ForEach("dataFileRecords", [&](FixtureReader& r) {
      DataFileRecord record;
      r.Require("name", record.name);
      r.Read("dataVersion", record.dataVersion);
      if (const json* properties = Section("properties", r.Json())) {
        if (!properties->is_object()) r.Fail("properties", "expected an object");
        for (const auto& [key, value] : properties->items())
          ReadProperty(r.Pointer() + "/properties/" + PointerToken(key), key, value, record);
        r.Accept("properties");
      }
      if (company_.dataFileRecords.count(record.name))
        r.Fail("name", "a second data file record of this name");
      Text name = record.name;
      company_.dataFileRecords.emplace(std::move(name), std::move(record));
    });
  }

  void ReadProperty(const std::string& pointer, const std::string& key, const json& value,
                    DataFileRecord& record) {
    PropertyValue property;
    if (value.is_string()) {
      property.type = VT_BSTR;
      if (!Utf8ToText(value.get_ref<const std::string&>(), property.text))
        FixtureReader::FailAt(context_, pointer, "the string is not well-formed UTF-8");
    } else if (value.is_boolean()) {
      property.type = VT_BOOL;
      property.integer = value.get<bool>() ? -1 : 0;
    } else if (value.is_number_integer() && value.get<int64_t>() >= INT32_MIN &&
               value.get<int64_t>() <= INT32_MAX) {
      property.type = VT_I4;
      property.integer = value.get<int64_t>();
    } else if (value.is_number_integer()) {
      property.type = VT_I8;
      property.integer = value.get<int64_t>();
    } else if (value.is_number_float()) {
      property.type = VT_R8;
      property.real = value.get<double>();
    } else if (!value.is_null()) {
      FixtureReader::FailAt(
          context_, pointer,
          "expected a string, a boolean, a number or null, found " + TypeName(value));
    }
    Text name;
    Utf8ToText(key, name);
    record.properties[name] = std::move(property);
  }

  void LoadFaults() {
    Faults& faults = company_.faults;
    root_->ForEach("faults", [&](FixtureReader& r) {
      Text operation, result;
      r.Require("operation", operation);
      r.Require("hresult", result);
      LONG record = 0;
      const bool forRecord = r.Read("record", record, 0);
      const std::optional<HRESULT> hr = ParseResult(TextToUtf8(result));
      if (!hr || SUCCEEDED(*hr))
        r.Fail("hresult", "expected a failure code such as \"0x80004005\" or \"E_FAIL\"");
      if (!faults.Fail(TextToUtf8(operation), *hr,
                       forRecord ? std::optional<LONG>(record) : std::nullopt))
        r.Fail("operation", "expected Interface::Method of a host interface");
    });
    root_->ForEachValue("unavailable", [&](const json& name, const std::string& pointer) {
      if (!name.is_string() || !faults.MakeUnavailable(name.get_ref<const std::string&>()))
        FixtureReader::FailAt(context_, pointer, "expected the name of a host interface");
    });
    root_->ForEach("absent", [&](FixtureReader& r) {
      Text listName;
      LONG record = 0;
      r.Require("list", listName);
      r.Require("record", record, 1);
      const std::optional<ListKind> list = ListFromName(TextToUtf8(listName));
      if (!list) r.Fail("list", "expected the name of a list, such as \"customers\"");
      if (!HasRecord(company_, *list, record))
        r.Fail("record", "expected a record number of the list");
      faults.MakeAbsent(*list, record);
    });
    root_->ForEachValue("lockedDataFileRecords", [&](const json& name, const std::string& pointer) {
      Text text;
      if (!name.is_string() || !Utf8ToText(name.get_ref<const std::string&>(), text))
        FixtureReader::FailAt(context_, pointer, "expected the name of a data file record");
      faults.HoldLock(text);
    });
  }

  // The member `name` of the whole document (or of `object`); null when absent or null.
  const json* Section(const char* name) { return Section(name, document_); }
  static const json* Section(const char* name, const json& object) {
    const auto found = object.find(name);
    return found == object.end() || found->is_null() ? nullptr : &*found;
  }

  FixtureContext& context_;
  Company& company_;
  const RecordEdit& edit_;
  std::vector<size_t> expectedRecords_;  // for each of kRecordSections
  json document_;  // what is left once the records are read
  std::optional<FixtureReader> root_;
  // Where the sections of the names list start in it: (position, section).
  std::vector<std::pair<size_t, std::string_view>> nameSections_;
};

}  // namespace

void LoadFixture(std::string_view text, const std::string& file, Company& company,
                 const RecordEdit& edit) {
  if (text.size() > kMaxFixtureBytes)
    throw FixtureError(file + ": the fixture is larger than " +
                       std::to_string(kMaxFixtureBytes >> 20) + " MiB");
  FixtureContext context{file, 0, {}};
  Company loaded;
  Loader(context, loaded, edit).Load(text);
  company = std::move(loaded);
}

HRESULT LoadFixtureText(std::string_view text, const std::string& file, Company& company,
                        std::string& error, const RecordEdit& edit) {
  try {
    LoadFixture(text, file, company, edit);
    error.clear();
    return S_OK;
  } catch (const FixtureError& e) {
    error = e.what();
    return kInvalidFixture;
  } catch (const std::bad_alloc&) {
    error = file + ": out of memory";
    return E_OUTOFMEMORY;
  } catch (const json::exception& e) {
    error = file + ": " + e.what();
    return kInvalidFixture;
  }
}

HRESULT ReadFixtureFile(const std::string& path, std::string& text, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = path + ": cannot open the file";
    return STG_E_FILENOTFOUND;
  }
  in.seekg(0, std::ios::end);
  const std::streamoff size = in.tellg();
  if (size >= 0 && uint64_t(size) > kMaxFixtureBytes) {
    error =
        path + ": the fixture is larger than " + std::to_string(kMaxFixtureBytes >> 20) + " MiB";
    return kInvalidFixture;
  }
  text.assign(size < 0 ? 0 : static_cast<size_t>(size), '\0');
  in.seekg(0);
  if (size < 0 || !in.read(text.data(), size)) {
    error = path + ": cannot read the file";
    return kInvalidFixture;
  }
  return S_OK;
}

HRESULT LoadFixtureFile(const std::string& path, Company& company, std::string& error) {
  std::string text;
  const HRESULT hr = ReadFixtureFile(path, text, error);
  return FAILED(hr) ? hr : LoadFixtureText(text, path, company, error);
}

}  // namespace parcelon::refhost
