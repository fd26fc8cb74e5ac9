// The fixture loader: the input is loaded as fixture text. Every input ends in S_OK with no
// message, or in the status of a refused fixture with a message that names the file; nothing
// else may escape the loader (the sanitizers catch a wrong read or an overflowing conversion).
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzSupport.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"

using parcelon::fuzz::Finding;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  parcelon::refhost::Company company;
  std::string error;
  const HRESULT hr = parcelon::refhost::LoadFixtureText(text, "fuzz.json", company, error);
  if (hr == S_OK) {
    if (!error.empty()) Finding("a loaded fixture has the message: " + error);
  } else if (hr == parcelon::refhost::kInvalidFixture || hr == E_OUTOFMEMORY) {
    if (error.rfind("fuzz.json", 0) != 0) Finding("a refused fixture's message does not name the file: " + error);
  } else {
    Finding("the loader returns " + std::to_string(hr) + ": " + error);
  }
  return 0;
}
