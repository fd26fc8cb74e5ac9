#include "component/Module.h"

#include <atomic>

#include "component/ClassObjects.h"
#include "component/ComObject.h"
#include "platform/RegistryScript.h"
#include "diagnostics/LogIfFailed.h"
#include "interfaces/ParcelonInterfaces.h"

namespace parcelon {
namespace {

std::atomic<LONG> liveObjects{0};
std::atomic<LONG> locks{0};

#ifndef _WIN32
// The class table cookies of the registered classes, in the module's order; zero when a class
// is not registered.
DWORD registeredCookies[2] = {};
#endif

}  // namespace

void ModuleObjectCreated() { ++liveObjects; }
void ModuleObjectDestroyed() { --liveObjects; }

HRESULT ModuleLockServer(bool lock) {
  if (lock) {
    ++locks;
    return S_OK;
  }
  // An unlock without a lock would let the module go while a client still counts on it.
  LONG held = locks.load();
  do {
    if (held == 0) return E_UNEXPECTED;
  } while (!locks.compare_exchange_weak(held, held - 1));
  return S_OK;
}

LONG ModuleLiveObjects() { return liveObjects.load(); }
LONG ModuleLocks() { return locks.load(); }

HRESULT CanUnloadModule() { return liveObjects.load() == 0 && locks.load() == 0 ? S_OK : S_FALSE; }

#ifndef _WIN32

HRESULT UnregisterModule() {
  const auto classes = ComponentClasses();
  for (size_t i = 0; i < classes.size(); ++i) {
    UnregisterProgId(classes[i].progId);
    if (registeredCookies[i] != 0) CoRevokeClassObject(registeredCookies[i]);
    registeredCookies[i] = 0;
  }
  return S_OK;
}

HRESULT RegisterModule() {
  UnregisterModule();
  const auto classes = ComponentClasses();
  for (size_t i = 0; i < classes.size(); ++i) {
    HRESULT hr = CoRegisterClassObject(classes[i].clsid, classes[i].classObject,
                                       CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                       &registeredCookies[i]);
    if (SUCCEEDED(hr)) hr = RegisterProgId(classes[i].progId, classes[i].clsid);
    if (FAILED(hr)) {
      UnregisterModule();
      return hr;
    }
  }
  return S_OK;
}

#else  // _WIN32

namespace {

constexpr const char* kRegisterPrefix = "Parcelon:DllRegisterServer";
constexpr const char* kUnregisterPrefix = "Parcelon:DllUnregisterServer";

// The module that holds this code: the component's DLL.
HMODULE ThisModule() { return ModuleOf(reinterpret_cast<const void*>(&ThisModule)); }

// The type library resource of the module, registered or not.
HRESULT LoadTypeLibrary(REGKIND kind, ITypeLib** library) {
  std::wstring path;
  RETURN_IF_FAILED(ModulePath(ThisModule(), path));
  return LoadTypeLibEx(path.c_str(), kind, library);
}

// The keys of the class's registry script resource.
HRESULT ScriptKeys(const ComponentClass& componentClass, std::vector<RegistryKey>& keys) {
  return ModuleScriptKeys(ThisModule(), componentClass.registryScript, keys);
}

}  // namespace

ITypeInfo* TypeInfoOf(REFIID iid) {
  ITypeLib* library = nullptr;
  if (FAILED(LoadTypeLibrary(REGKIND_NONE, &library))) return nullptr;
  ITypeInfo* info = nullptr;
  if (FAILED(library->GetTypeInfoOfGuid(iid, &info))) info = nullptr;
  library->Release();
  return info;
}

HRESULT RegisterModule() {
  std::vector<std::wstring> created;
  for (const ComponentClass& componentClass : ComponentClasses()) {
    std::vector<RegistryKey> keys;
    HRESULT hr = LogIfFailed(ScriptKeys(componentClass, keys), kRegisterPrefix,
                             "Failed to read the registry script.");
    if (SUCCEEDED(hr))
      hr = LogIfFailed(WriteRegistryKeys(keys, created), kRegisterPrefix,
                       "Failed to write the registry script's keys.");
    if (FAILED(hr)) {
      DeleteCreatedKeys(created);
      return hr;
    }
  }
  ITypeLib* library = nullptr;
  const HRESULT hr = LogIfFailed(LoadTypeLibrary(REGKIND_REGISTER, &library), kRegisterPrefix,
                                 "Failed to register the type library.");
  if (FAILED(hr)) {
    DeleteCreatedKeys(created);
    return hr;
  }
  library->Release();
  return S_OK;
}

HRESULT UnregisterModule() {
  HRESULT first = S_OK;
  for (const ComponentClass& componentClass : ComponentClasses()) {
    std::vector<RegistryKey> keys;
    HRESULT hr = ScriptKeys(componentClass, keys);
    if (SUCCEEDED(hr)) hr = DeleteRegistryKeys(keys);
    LogIfFailed(hr, kUnregisterPrefix, "Failed to remove the registry script's keys.");
    if (SUCCEEDED(first)) first = hr;
  }
  // A type library that is not registered is no failure.
  HRESULT hr = UnRegisterTypeLib(LIBID_PARCELONLib, 1, 0, LOCALE_NEUTRAL, SYS_WIN64);
  if (hr == TYPE_E_REGISTRYACCESS || hr == TYPE_E_CANTLOADLIBRARY || hr == TYPE_E_LIBNOTREGISTERED)
    hr = S_OK;
  LogIfFailed(hr, kUnregisterPrefix, "Failed to unregister the type library.");
  return SUCCEEDED(first) ? hr : first;
}

#endif  // _WIN32

}  // namespace parcelon
