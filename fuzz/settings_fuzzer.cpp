// The settings file: the input is written as the settings file and the switches are read from it.
// Half the inputs are taken as they come (any bytes): every key the file seems to name is read,
// and keys compare without regard to case, a non-zero number is on, and a second read agrees with
// the first. The other half build a well-formed file of distinct keys, whose switches, numbers and
// addresses must read back exactly as documented.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "diagnostics/FeatureSettings.h"
#include "FuzzSupport.h"

using parcelon::fuzz::Finding;

namespace {

const std::string& SettingsPath() {
  static const std::string path = parcelon::fuzz::UseScratchFolder();
  return path;
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
  return text;
}

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::toupper(c)); });
  return text;
}

std::string Trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

void CheckReads(const std::string& key) {
  const char* section = AmbitAccess::kFeatureSection;
  const bool on = AmbitAccess::GetFeatureParamAsBool(section, key.c_str(), nullptr);
  const int number = AmbitAccess::GetFeatureParamAsInt(section, key.c_str(), nullptr);
  const std::string url = AmbitAccess::GetURLAddress(key.c_str());
  if (number != 0 && !on) Finding("the number " + std::to_string(number) + " of [" + key + "] reads off");
  for (const std::string& spelling : {Lower(key), Upper(key), key}) {
    if (AmbitAccess::GetFeatureParamAsBool(section, spelling.c_str(), nullptr) != on ||
        AmbitAccess::GetFeatureParamAsInt(section, spelling.c_str(), nullptr) != number ||
        AmbitAccess::GetURLAddress(spelling.c_str()) != url)
      Finding("[" + key + "] reads otherwise as [" + spelling + "]");
  }
}

// The documented reading of a value: on for true, yes, on or a non-zero number; the number when
// the text is a decimal int with an optional sign.
bool ExpectedNumber(const std::string& value, int& number) {
  number = 0;
  size_t i = value[0] == '+' || value[0] == '-' ? 1 : 0;
  if (i == value.size()) return false;
  for (size_t k = i; k < value.size(); ++k)
    if (!std::isdigit(static_cast<unsigned char>(value[k]))) return false;
  errno = 0;
  const long long parsed = std::strtoll(value.c_str(), nullptr, 10);
  if (errno || parsed < INT_MIN || parsed > INT_MAX) return false;
  number = int(parsed);
  return true;
}

void CheckWellFormed(FuzzedDataProvider& in) {
  static const char* const kValues[] = {"1",  "0",     "true", "TRUE", "yes", "Yes", "on",  "ON",      "off",
                                        "no", "false", "-5",   "+7",   "2147483647", "2147483648", "-2147483648",
                                        "12abc", "", " 1", "0x10", "007"};
  struct Entry {
    std::string key, value;
  };
  std::vector<Entry> features, urls;
  std::string file = "[ZPSSettings]\n";
  const size_t count = in.ConsumeIntegralInRange<size_t>(0, 12);
  for (size_t i = 0; i < count; ++i) {
    std::string key = "K" + std::to_string(i) + "x" + in.ConsumeRandomLengthString(10);
    key.erase(std::remove_if(key.begin(), key.end(), [](unsigned char c) { return !std::isalnum(c) && c != '.'; }),
              key.end());
    const std::string value = in.ConsumeBool() ? kValues[in.ConsumeIntegralInRange<size_t>(0, std::size(kValues) - 1)]
                                               : std::to_string(in.ConsumeIntegral<int32_t>());
    features.push_back({key, value});
    file += key + "=" + value + "\n";
  }
  file += "[URLs]\n";
  const size_t urlCount = in.ConsumeIntegralInRange<size_t>(0, 4);
  for (size_t i = 0; i < urlCount; ++i) {
    const std::string key = "Service" + std::to_string(i) + ".URL";
    std::string value = "https://example.test/" + in.ConsumeRandomLengthString(40);
    value.erase(std::remove_if(value.begin(), value.end(),
                               [](unsigned char c) { return c < 0x21 || c > 0x7E || c == ';' || c == '#'; }),
                value.end());
    urls.push_back({key, value});
    file += key + "=" + value + "\n";
  }
  parcelon::fuzz::WriteFile(SettingsPath(), file);
  AmbitAccess::Reload();
  for (const Entry& entry : features) {
    int number = 0;
    const std::string value = Trim(entry.value);
    const bool isNumber = !value.empty() && ExpectedNumber(value, number);
    const std::string word = Lower(value);
    const bool on = (isNumber && number != 0) || word == "true" || word == "yes" || word == "on";
    if (AmbitAccess::GetFeatureParamAsBool("ZPSSettings", entry.key.c_str(), nullptr) != on)
      Finding("[" + entry.key + "=" + entry.value + "] reads " + (on ? "off" : "on") + "\n" + file);
    if (AmbitAccess::GetFeatureParamAsInt("ZPSSettings", entry.key.c_str(), nullptr) != number)
      Finding("[" + entry.key + "=" + entry.value + "] does not read as " + std::to_string(number) + "\n" + file);
  }
  for (const Entry& entry : urls)
    if (AmbitAccess::GetURLAddress(entry.key.c_str()) != entry.value)
      Finding("the address " + entry.key + " does not read back as " + entry.value + "\n" + file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  if (in.ConsumeBool()) {
    CheckWellFormed(in);
    return 0;
  }
  const std::string file = in.ConsumeRemainingBytesAsString();
  parcelon::fuzz::WriteFile(SettingsPath(), file);
  AmbitAccess::Reload();
  // Every key that a line seems to name, and a few that the system reads.
  std::vector<std::string> keys = {"NetworkAdapter.IndentXML", "NetworkAdapter.EnableLogContext",
                                   "EmailService.FormGatewayURL"};
  size_t start = 0;
  while (start < file.size() && keys.size() < 64) {
    size_t end = file.find('\n', start);
    if (end == std::string::npos) end = file.size();
    const std::string line = file.substr(start, end - start);
    const size_t equals = line.find('=');
    if (equals != std::string::npos) {
      std::string key = Trim(line.substr(0, equals));
      if (key.find('\0') == std::string::npos) keys.push_back(key);
    }
    start = end + 1;
  }
  for (const std::string& key : keys) CheckReads(key);
  return 0;
}
