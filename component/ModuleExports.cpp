// The four entry points of the component's shared library (libparcelon.so, parcelon.dll).
#include "component/ClassObjects.h"
#include "component/Module.h"

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, void** ppv) {
  return parcelon::GetClassObject(clsid, riid, ppv);
}

STDAPI DllCanUnloadNow() { return parcelon::CanUnloadModule(); }

STDAPI DllRegisterServer() { return parcelon::RegisterModule(); }

STDAPI DllUnregisterServer() { return parcelon::UnregisterModule(); }
