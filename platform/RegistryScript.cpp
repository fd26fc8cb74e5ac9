#include "platform/RegistryScript.h"

#include <cctype>

namespace parcelon {
namespace {

constexpr HRESULT kMalformedScript = HRESULT_FROM_WIN32(13L);  // ERROR_INVALID_DATA

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

class ScriptReader {
 public:
  ScriptReader(std::string_view text, std::string_view modulePath)
      : text_(text), modulePath_(modulePath) {}

  HRESULT ReadRoots(std::vector<RegistryKey>& keys) {
    std::string token;
    bool quoted = false;
    while (Next(token, quoted)) {
      if (quoted || (token != "HKCR" && token != "HKEY_CLASSES_ROOT")) return kMalformedScript;
      if (!Next(token, quoted) || quoted || token != "{") return kMalformedScript;
      const HRESULT hr = ReadKeys(keys, 1);
      if (FAILED(hr)) return hr;
    }
    return malformed_ ? kMalformedScript : S_OK;
  }

 private:
  // Keys up to the closing brace of the enclosing block (consumed).
  HRESULT ReadKeys(std::vector<RegistryKey>& keys, int depth) {
    // The scripts nest a few levels; a deeper text is not one of them.
    if (depth > 16) return kMalformedScript;
    std::string token;
    bool quoted = false;
    if (!Next(token, quoted)) return kMalformedScript;
    while (quoted || token != "}") {
      RegistryKey key;
      if (!quoted && (token == "NoRemove" || token == "ForceRemove")) {
        (token == "NoRemove" ? key.noRemove : key.forceRemove) = true;
        if (!Next(token, quoted)) return kMalformedScript;
      }
      if (!quoted && (token == "{" || token == "}" || token == "=" || token == "val"))
        return kMalformedScript;
      // An empty name opens (and a removal deletes) the parent itself; a backslash makes a path
      // whose upper keys no removal would find.
      if (token.empty() || token.find('\\') != std::string::npos) return kMalformedScript;
      key.name = token;
      if (!Next(token, quoted)) return kMalformedScript;
      if (!quoted && token == "=") {
        if (!Next(token, quoted) || quoted || token != "s") return kMalformedScript;
        if (!Next(token, quoted) || !quoted) return kMalformedScript;
        key.hasValue = true;
        key.value = WithModulePath(token);
        if (!Next(token, quoted)) return kMalformedScript;
      }
      if (!quoted && token == "{") {
        const HRESULT hr = ReadKeys(key.subkeys, depth + 1);
        if (FAILED(hr)) return hr;
        if (!Next(token, quoted)) return kMalformedScript;
      }
      keys.push_back(std::move(key));
    }
    return S_OK;
  }

  // The next token: a brace or "=" alone, a quoted text (quoted set), or a bare word. A brace
  // followed by other than white space starts a bare word, as "{37A2FC00-...}".
  bool Next(std::string& token, bool& quoted) {
    while (pos_ < text_.size() && IsSpace(text_[pos_])) ++pos_;
    if (pos_ >= text_.size()) return false;
    token.clear();
    quoted = false;
    const char c = text_[pos_];
    const bool alone = pos_ + 1 >= text_.size() || IsSpace(text_[pos_ + 1]);
    if (c == '=' || ((c == '{' || c == '}') && alone)) {
      token = c;
      ++pos_;
      return true;
    }
    if (c == '\'') {
      quoted = true;
      for (++pos_; pos_ < text_.size(); ++pos_) {
        if (text_[pos_] != '\'') {
          token += text_[pos_];
        } else if (pos_ + 1 < text_.size() && text_[pos_ + 1] == '\'') {
          token += '\'';
          ++pos_;
        } else {
          ++pos_;
          return true;
        }
      }
      malformed_ = true;  // an unclosed quote
      return false;
    }
    while (pos_ < text_.size() && !IsSpace(text_[pos_]) && text_[pos_] != '=' &&
           text_[pos_] != '\'')
      token += text_[pos_++];
    return true;
  }

  std::string WithModulePath(const std::string& value) const {
    static constexpr std::string_view kModule = "%MODULE%";
    std::string out;
    size_t from = 0;
    for (size_t at; (at = value.find(kModule, from)) != std::string::npos; from = at + kModule.size())
      out.append(value, from, at - from).append(modulePath_);
    return out.append(value, from);
  }

  std::string_view text_;
  std::string_view modulePath_;
  size_t pos_ = 0;
  bool malformed_ = false;
};

}  // namespace

HRESULT ReadRegistryScript(std::string_view text, std::string_view modulePath,
                           std::vector<RegistryKey>& keys) {
  keys.clear();
  const HRESULT hr = ScriptReader(text, modulePath).ReadRoots(keys);
  if (FAILED(hr)) keys.clear();
  return hr;
}

}  // namespace parcelon

#ifdef _WIN32

namespace parcelon {
namespace {

HRESULT FromStatus(LONG status) { return status == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(status); }

std::wstring Wide(const std::string& utf8) {
  if (utf8.empty()) return {};
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), nullptr, 0);
  std::wstring wide(size_t(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), wide.data(), length);
  return wide;
}

HRESULT WriteKeys(HKEY parent, const std::wstring& parentPath, const std::vector<RegistryKey>& keys,
                  std::vector<std::wstring>& created) {
  for (const RegistryKey& key : keys) {
    const std::wstring name = Wide(key.name);
    const std::wstring path = parentPath.empty() ? name : parentPath + L"\\" + name;
    if (key.forceRemove) {
      const LONG status = RegDeleteTreeW(parent, name.c_str());
      if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) return FromStatus(status);
    }
    HKEY opened = nullptr;
    DWORD disposition = 0;
    HRESULT hr = FromStatus(RegCreateKeyExW(parent, name.c_str(), 0, nullptr, 0,
                                            KEY_READ | KEY_WRITE, nullptr, &opened, &disposition));
    if (FAILED(hr)) return hr;
    if (disposition == REG_CREATED_NEW_KEY) created.push_back(path);
    if (key.hasValue) {
      const std::wstring value = Wide(key.value);
      hr = FromStatus(RegSetValueExW(opened, nullptr, 0, REG_SZ,
                                     reinterpret_cast<const BYTE*>(value.c_str()),
                                     DWORD((value.size() + 1) * sizeof(wchar_t))));
    }
    if (SUCCEEDED(hr)) hr = WriteKeys(opened, path, key.subkeys, created);
    RegCloseKey(opened);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT DeleteKeys(HKEY parent, const std::vector<RegistryKey>& keys) {
  HRESULT first = S_OK;
  for (const RegistryKey& key : keys) {
    const std::wstring name = Wide(key.name);
    HRESULT hr = S_OK;
    if (key.noRemove) {
      HKEY opened = nullptr;
      const LONG status = RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ | KEY_WRITE, &opened);
      if (status == ERROR_SUCCESS) {
        hr = DeleteKeys(opened, key.subkeys);
        RegCloseKey(opened);
      } else if (status != ERROR_FILE_NOT_FOUND) {
        hr = FromStatus(status);
      }
    } else {
      const LONG status = RegDeleteTreeW(parent, name.c_str());
      if (status != ERROR_FILE_NOT_FOUND) hr = FromStatus(status);
    }
    if (SUCCEEDED(first)) first = hr;
  }
  return first;
}

}  // namespace

HRESULT WriteRegistryKeys(const std::vector<RegistryKey>& keys, std::vector<std::wstring>& created) {
  const size_t before = created.size();
  const HRESULT hr = WriteKeys(HKEY_CLASSES_ROOT, L"", keys, created);
  if (FAILED(hr)) {
    const std::vector<std::wstring> mine(created.begin() + ptrdiff_t(before), created.end());
    DeleteCreatedKeys(mine);
    created.resize(before);
  }
  return hr;
}

void DeleteCreatedKeys(const std::vector<std::wstring>& created) {
  // A key whose parent went first is already gone.
  for (auto it = created.rbegin(); it != created.rend(); ++it)
    RegDeleteTreeW(HKEY_CLASSES_ROOT, it->c_str());
}

HRESULT DeleteRegistryKeys(const std::vector<RegistryKey>& keys) {
  return DeleteKeys(HKEY_CLASSES_ROOT, keys);
}

HMODULE ModuleOf(const void* address) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                         GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     static_cast<LPCWSTR>(address), &module);
  return module;
}

HRESULT ModulePath(HMODULE module, std::wstring& path) {
  wchar_t wide[MAX_PATH + 1];
  const DWORD length = GetModuleFileNameW(module, wide, MAX_PATH + 1);
  if (length == 0 || length > MAX_PATH) return E_FAIL;
  path.assign(wide, length);
  return S_OK;
}

HRESULT ModuleScriptKeys(HMODULE module, int id, std::vector<RegistryKey>& keys) {
  HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), L"REGISTRY");
  HGLOBAL loaded = resource ? LoadResource(module, resource) : nullptr;
  const void* text = loaded ? LockResource(loaded) : nullptr;
  if (!text) return HRESULT_FROM_WIN32(ERROR_RESOURCE_DATA_NOT_FOUND);
  std::wstring path;
  if (FAILED(ModulePath(module, path))) return E_FAIL;
  const int bytes =
      WideCharToMultiByte(CP_UTF8, 0, path.data(), int(path.size()), nullptr, 0, nullptr, nullptr);
  std::string utf8(size_t(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, path.data(), int(path.size()), utf8.data(), bytes, nullptr, nullptr);
  return ReadRegistryScript(
      std::string_view(static_cast<const char*>(text), SizeofResource(module, resource)), utf8, keys);
}

}  // namespace parcelon

#endif  // _WIN32
