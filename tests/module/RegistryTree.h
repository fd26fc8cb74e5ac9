// What a registration test reads: a process run to its end (regsvr32) and a tree of keys under
// the classes root as lines of text (Windows only).
#pragma once

#ifdef _WIN32
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

// Runs `commandLine` and gives its exit code (~0u when it cannot start).
inline DWORD RunProcess(std::wstring commandLine) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &process))
    return ~0u;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD code = ~0u;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

// regsvr32 on the module at `path`, silent; /u when `unregister`. Its exit code.
inline DWORD Regsvr32(const std::wstring& path, bool unregister = false) {
  return RunProcess(std::wstring(L"regsvr32.exe /s") + (unregister ? L" /u" : L"") + L" \"" + path + L"\"");
}

// The path of the module loaded from `path` (as the registry names it), loading it if need be;
// empty when it cannot be loaded.
inline std::wstring LoadedModulePath(const char* path) {
  HMODULE module = LoadLibraryA(path);
  wchar_t full[MAX_PATH];
  const DWORD length = module ? GetModuleFileNameW(module, full, MAX_PATH) : 0;
  return std::wstring(full, length);
}

// The tree of HKCR\`path`, one line per key in name order: its path, " = " and its default
// value when it has one, then one line ":name = value" per named value.
inline void Dump(const std::wstring& path, std::vector<std::wstring>& lines) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    lines.push_back(path + L" (absent)");
    return;
  }
  std::wstring line = path;
  std::vector<std::wstring> named;
  wchar_t name[256];
  wchar_t data[1024];
  for (DWORD i = 0;; ++i) {
    DWORD nameLength = 256, size = sizeof data, type = 0;
    if (RegEnumValueW(key, i, name, &nameLength, nullptr, &type, reinterpret_cast<BYTE*>(data),
                      &size) != ERROR_SUCCESS)
      break;
    const std::wstring value = type == REG_SZ ? std::wstring(data) : L"(not a string)";
    if (nameLength == 0)
      line += L" = " + value;
    else
      named.push_back(path + L":" + name + L" = " + value);
  }
  std::vector<std::wstring> subkeys;
  for (DWORD i = 0;; ++i) {
    DWORD nameLength = 256;
    if (RegEnumKeyExW(key, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
      break;
    subkeys.push_back(name);
  }
  RegCloseKey(key);
  lines.push_back(line);
  lines.insert(lines.end(), named.begin(), named.end());
  std::sort(subkeys.begin(), subkeys.end());
  for (const std::wstring& subkey : subkeys) Dump(path + L"\\" + subkey, lines);
}

#endif  // _WIN32
