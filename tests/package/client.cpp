// A client of the installed package: links the component's shared library, creates a form through
// its class object, sets and reads a property, and lets the module go.
#include <cstdio>

#include "interfaces/ParcelonInterfaces.h"
#include "platform/Bstr.h"

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, void** ppv);
STDAPI DllCanUnloadNow();

int main() {
  ComPtr<IClassFactory> factory;
  if (DllGetClassObject(CLSID_NA_Form, IidOf<IClassFactory>(), factory.ReleaseAndGetVoidAddress()) != S_OK)
    return std::puts("no class object"), 1;
  ComPtr<INA_Form7> form;
  if (factory->CreateInstance(nullptr, IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress()) != S_OK)
    return std::puts("no form"), 1;
  const Bstr to(u"siobhan@obrien.example");
  BSTR read = nullptr;
  if (form->put_To(to.Get()) != S_OK || form->get_To(&read) != S_OK) return std::puts("no To"), 1;
  const Bstr owned = Bstr::Attach(read);
  const bool same = SysStringLen(owned.Get()) == SysStringLen(to.Get());
  const HRESULT held = DllCanUnloadNow();
  form.Reset();
  std::printf("To %s, while held %ld, after %ld\n", same ? "kept" : "lost", long(held),
              long(DllCanUnloadNow()));
  return 0;
}
