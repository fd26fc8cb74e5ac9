#include "platform/Paths.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/ComBase.h"

namespace parcelon {

void AppendSeparator(std::string& folder) {
  if (folder.empty() || (folder.back() != '\\' && folder.back() != '/')) folder += kPathSeparator;
}

std::string GetEnv(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string(value) : std::string();
}

void SetEnv(const char* name, const char* value) {
#ifdef _WIN32
  _putenv_s(name, value ? value : "");
#else
  if (value)
    setenv(name, value, 1);
  else
    unsetenv(name);
#endif
}

std::string TempFolder() {
  std::string folder = GetEnv("TEMP");
  if (folder.empty()) folder = GetEnv("TMP");
#ifndef _WIN32
  if (folder.empty()) folder = GetEnv("TMPDIR");
#endif
  if (folder.empty()) folder = ".";
  AppendSeparator(folder);
  return folder;
}

namespace {
std::string UserFolder([[maybe_unused]] const char* windowsVariable,
                       [[maybe_unused]] const char* xdgVariable,
                       [[maybe_unused]] const char* homeRelative) {
#ifdef _WIN32
  std::string base = GetEnv(windowsVariable);
  if (base.empty()) return {};
  AppendSeparator(base);
  return base + "Parcelon";
#else
  std::string base = GetEnv(xdgVariable);
  if (base.empty()) {
    const std::string home = GetEnv("HOME");
    if (home.empty()) return {};
    base = home + homeRelative;
  }
  AppendSeparator(base);
  return base + "parcelon";
#endif
}
}  // namespace

std::string UserStateFolder() { return UserFolder("LOCALAPPDATA", "XDG_STATE_HOME", "/.local/state"); }

std::string UserConfigFolder() { return UserFolder("APPDATA", "XDG_CONFIG_HOME", "/.config"); }

bool CreateFolders(const std::string& folder) {
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::u8path(folder), ec);
  return std::filesystem::is_directory(std::filesystem::u8path(folder), ec);
}

}  // namespace parcelon
