#include "support/TestSupport.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include "platform/Paths.h"

namespace parcelon::test {

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name) {
  const char* old = std::getenv(name);
  hadValue_ = old != nullptr;
  if (old) old_ = old;
  SetEnv(name, value);
}

ScopedEnv::~ScopedEnv() { SetEnv(name_.c_str(), hadValue_ ? old_.c_str() : nullptr); }

ScratchFolder::ScratchFolder() {
  static std::atomic<int> counter{0};
  const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
  std::filesystem::path base = std::filesystem::temp_directory_path();
  std::ostringstream name;
  name << "parcelon-test-" << stamp << "-" << counter++;
  const std::filesystem::path folder = base / name.str();
  std::filesystem::create_directories(folder);
  path_ = folder.string();
  AppendSeparator(path_);
}

ScratchFolder::~ScratchFolder() {
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool FileExists(const std::string& path) {
  std::error_code ec;
  return std::filesystem::exists(path, ec);
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

Bstr MakeBstr(const std::string& utf8) {
  std::u16string wide;
  for (size_t i = 0; i < utf8.size();) {
    const auto c = static_cast<unsigned char>(utf8[i]);
    char32_t cp;
    int extra;
    if (c < 0x80) { cp = c; extra = 0; }
    else if ((c >> 5) == 6) { cp = c & 0x1F; extra = 1; }
    else if ((c >> 4) == 14) { cp = c & 0x0F; extra = 2; }
    else { cp = c & 0x07; extra = 3; }
    ++i;
    for (int k = 0; k < extra && i < utf8.size(); ++k, ++i) cp = cp << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3F);
    if (cp >= 0x10000) {
      cp -= 0x10000;
      wide.push_back(char16_t(0xD800 + (cp >> 10)));
      wide.push_back(char16_t(0xDC00 + (cp & 0x3FF)));
    } else {
      wide.push_back(char16_t(cp));
    }
  }
  return Bstr(reinterpret_cast<const OLECHAR*>(wide.data()), UINT(wide.size()));
}

}  // namespace parcelon::test
