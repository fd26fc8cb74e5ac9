// Registry scripts of an in-process server's classes: a reader of their text into the keys they
// write under the classes root, so that registration and its tests share one reading, and (on
// Windows) the writing and removal of a module's script resources.
//
// The text is a tree of keys: `HKCR { ... }` holds keys written as
//   [NoRemove|ForceRemove] name [= s 'value'] [{ subkeys }]
// where a name is a bare word (a GUID in braces included) or quoted with '', and '' inside quotes
// stands for one '. "%MODULE%" in a value is the module's path.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/ComBase.h"

namespace parcelon {

struct RegistryKey {
  std::string name;
  bool hasValue = false;
  std::string value;  // the key's default value, when hasValue
  bool noRemove = false;     // unregistration leaves the key (and visits its subkeys)
  bool forceRemove = false;  // registration deletes the key's old tree first
  std::vector<RegistryKey> subkeys;
};

// Reads `text` into the keys it writes under the classes root, with "%MODULE%" replaced by
// `modulePath` (UTF-8). HRESULT_FROM_WIN32(ERROR_INVALID_DATA) for text outside that form.
HRESULT ReadRegistryScript(std::string_view text, std::string_view modulePath,
                           std::vector<RegistryKey>& keys);

#ifdef _WIN32
// Writes `keys` under the classes root as registration does: a ForceRemove key loses its old
// tree first. On failure the keys this call created are deleted again, and the failure returned.
// `created` collects the paths of the keys created (for a caller that undoes several calls).
HRESULT WriteRegistryKeys(const std::vector<RegistryKey>& keys, std::vector<std::wstring>& created);
// Deletes the keys listed in `created`, the last first.
void DeleteCreatedKeys(const std::vector<std::wstring>& created);
// Removes what `keys` wrote: every key with its tree, except NoRemove keys, of which only the
// subkeys are visited. A key that is not there is no failure.
HRESULT DeleteRegistryKeys(const std::vector<RegistryKey>& keys);

// The module (DLL or executable) whose image holds `address`: a server passes one of its own
// functions to find itself.
HMODULE ModuleOf(const void* address);
// The path of `module`.
HRESULT ModulePath(HMODULE module, std::wstring& path);
// The keys of `module`'s registry script resource `id` (type "REGISTRY"), "%MODULE%" read as
// the module's path.
HRESULT ModuleScriptKeys(HMODULE module, int id, std::vector<RegistryKey>& keys);
#endif

}  // namespace parcelon
