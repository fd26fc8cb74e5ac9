// The fixture loader: the input is loaded as fixture text. Every input ends in S_OK with no
// message, or in the status of a refused fixture with a message that names the file; nothing
// else may escape the loader (the sanitizers catch a wrong read or an overflowing conversion).
// A fixture that holds a whole number beyond the signed 64-bit range is never loaded: no field
// takes one, and read as a signed number it would turn into a small negative one.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "FuzzSupport.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"

using parcelon::fuzz::Finding;

namespace {

// Counts the whole numbers above INT64_MAX that the JSON parser reads as unsigned.
struct BigIntegers : nlohmann::json_sax<nlohmann::json> {
  size_t count = 0;
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t value) override {
    count += value > uint64_t(INT64_MAX);
    return true;
  }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  parcelon::refhost::Company company;
  std::string error;
  const HRESULT hr = parcelon::refhost::LoadFixtureText(text, "fuzz.json", company, error);
  if (hr == S_OK) {
    if (!error.empty()) Finding("a loaded fixture has the message: " + error);
    BigIntegers big;
    nlohmann::json::sax_parse(text.begin(), text.end(), &big);
    if (big.count) Finding("a fixture with a whole number beyond the signed 64-bit range is loaded");
  } else if (hr == parcelon::refhost::kInvalidFixture || hr == E_OUTOFMEMORY) {
    if (error.rfind("fuzz.json", 0) != 0) Finding("a refused fixture's message does not name the file: " + error);
  } else {
    Finding("the loader returns " + std::to_string(hr) + ": " + error);
  }
  return 0;
}
