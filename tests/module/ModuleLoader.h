// The component's shared library as its clients load it: once per process, by path
// (PARCELON_MODULE_PATH), with its four entry points looked up by name.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "platform/ComBase.h"

using GetClassObjectEntry = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);
using ModuleEntry = HRESULT(STDMETHODCALLTYPE*)();

// The library, loaded once for the whole run (a process loads an in-process server once) and its
// four entry points.
struct LoadedModule {
  GetClassObjectEntry getClassObject = nullptr;
  ModuleEntry canUnloadNow = nullptr;
  ModuleEntry registerServer = nullptr;
  ModuleEntry unregisterServer = nullptr;

  static const LoadedModule& Get() {
    static const LoadedModule module = Load();
    return module;
  }

 private:
  template <class Entry>
  static Entry Find(void* library, const char* name) {
#ifdef _WIN32
    return reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name)));
#else
    return reinterpret_cast<Entry>(dlsym(library, name));
#endif
  }

  static LoadedModule Load() {
    LoadedModule module;
#ifdef _WIN32
    void* library = LoadLibraryA(PARCELON_MODULE_PATH);
#else
    void* library = dlopen(PARCELON_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
#endif
    if (!library) return module;
    module.getClassObject = Find<GetClassObjectEntry>(library, "DllGetClassObject");
    module.canUnloadNow = Find<ModuleEntry>(library, "DllCanUnloadNow");
    module.registerServer = Find<ModuleEntry>(library, "DllRegisterServer");
    module.unregisterServer = Find<ModuleEntry>(library, "DllUnregisterServer");
    return module;
  }
};

