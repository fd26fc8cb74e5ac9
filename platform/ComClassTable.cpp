// The adapter's class table off Windows: class objects by CLSID and class names (ProgIDs) by
// text. It is built as a shared library of its own, so that every module of a process (the
// component's shared library, the host's objects in the executable) sees one table, as every
// module on Windows sees COM's.
#include "platform/ComBase.h"

#ifndef _WIN32

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace {
struct ClassEntry {
  CLSID clsid;
  IUnknown* classObject;
  DWORD cookie;
};

struct ClassTable {
  std::mutex lock;
  std::vector<ClassEntry> entries;
  std::vector<std::pair<std::u16string, CLSID>> progIds;
  DWORD nextCookie = 1;
};

ClassTable& Classes() {
  static ClassTable table;
  return table;
}

// The text's length when it is at most `limit` characters, else limit + 1.
size_t BoundedLength(LPCOLESTR text, size_t limit) {
  size_t n = 0;
  while (n <= limit && text[n]) ++n;
  return n;
}

// A ProgID is at most 39 characters.
constexpr size_t kMaxProgIdLength = 39;
}  // namespace

HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown* classObject, DWORD, DWORD, DWORD* cookie) {
  if (!classObject || !cookie) return E_INVALIDARG;
  ClassTable& table = Classes();
  std::lock_guard guard(table.lock);
  table.entries.push_back({clsid, classObject, table.nextCookie});
  classObject->AddRef();
  *cookie = table.nextCookie++;
  return S_OK;
}

HRESULT CoRevokeClassObject(DWORD cookie) {
  ClassTable& table = Classes();
  IUnknown* released = nullptr;
  {
    std::lock_guard guard(table.lock);
    for (auto it = table.entries.begin(); it != table.entries.end(); ++it) {
      if (it->cookie == cookie) {
        released = it->classObject;
        table.entries.erase(it);
        break;
      }
    }
  }
  if (!released) return E_INVALIDARG;
  released->Release();
  return S_OK;
}

HRESULT CoGetClassObject(REFCLSID clsid, DWORD, void*, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  IUnknown* classObject = nullptr;
  {
    ClassTable& table = Classes();
    std::lock_guard guard(table.lock);
    // The newest registration wins, so a test can shadow a class for its own duration.
    for (auto it = table.entries.rbegin(); it != table.entries.rend(); ++it) {
      if (it->clsid == clsid) {
        classObject = it->classObject;
        classObject->AddRef();
        break;
      }
    }
  }
  if (!classObject) return REGDB_E_CLASSNOTREG;
  const HRESULT hr = classObject->QueryInterface(riid, ppv);
  classObject->Release();
  return hr;
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  IClassFactory* factory = nullptr;
  HRESULT hr = CoGetClassObject(clsid, context, nullptr, IidOf<IClassFactory>(),
                                reinterpret_cast<void**>(&factory));
  if (FAILED(hr)) return hr;
  hr = factory->CreateInstance(outer, riid, ppv);
  factory->Release();
  return hr;
}

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid) {
  if (!progId || !clsid) return E_INVALIDARG;
  const size_t length = BoundedLength(progId, kMaxProgIdLength);
  if (length > kMaxProgIdLength) return CO_E_CLASSSTRING;
  const std::u16string name(progId, length);
  ClassTable& table = Classes();
  std::lock_guard guard(table.lock);
  for (const auto& [registered, registeredClsid] : table.progIds) {
    if (registered == name) {
      *clsid = registeredClsid;
      return S_OK;
    }
  }
  return CO_E_CLASSSTRING;
}

namespace parcelon {

HRESULT RegisterProgId(LPCOLESTR progId, REFCLSID clsid) {
  if (!progId) return E_INVALIDARG;
  const size_t length = BoundedLength(progId, kMaxProgIdLength);
  if (length == 0 || length > kMaxProgIdLength) return E_INVALIDARG;
  const std::u16string name(progId, length);
  ClassTable& table = Classes();
  std::lock_guard guard(table.lock);
  for (auto& [registered, registeredClsid] : table.progIds) {
    if (registered == name) {
      registeredClsid = clsid;
      return S_OK;
    }
  }
  table.progIds.emplace_back(name, clsid);
  return S_OK;
}

HRESULT UnregisterProgId(LPCOLESTR progId) {
  if (!progId) return E_INVALIDARG;
  const std::u16string name(progId, BoundedLength(progId, kMaxProgIdLength));
  ClassTable& table = Classes();
  std::lock_guard guard(table.lock);
  for (auto it = table.progIds.begin(); it != table.progIds.end(); ++it) {
    if (it->first == name) {
      table.progIds.erase(it);
      return S_OK;
    }
  }
  return S_FALSE;
}

}  // namespace parcelon

#endif  // !_WIN32
