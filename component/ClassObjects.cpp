#include "component/ClassObjects.h"

#include "component/NA_Form.h"
#include "component/NA_Forms.h"

namespace parcelon {
namespace {

CClassFactory<CNA_Forms> formsClassObject;
CClassFactory<CNA_Form> formClassObject;

// In the module's order: NA_Forms, NA_Form.
const ComponentClass kClasses[] = {
    {CLSID_NA_Forms, PARCELON_OLESTR("Parcelon.NA_Forms"), PARCELON_OLESTR("NA_Forms Class"),
     &formsClassObject, 101},
    {CLSID_NA_Form, PARCELON_OLESTR("Parcelon.NA_Form"), PARCELON_OLESTR("NA_Form Class"),
     &formClassObject, 102},
};

}  // namespace

std::span<const ComponentClass> ComponentClasses() { return kClasses; }

HRESULT GetClassObject(REFCLSID clsid, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  for (const ComponentClass& entry : kClasses)
    if (entry.clsid == clsid) return entry.classObject->QueryInterface(riid, ppv);
  return CLASS_E_CLASSNOTAVAILABLE;
}

ClassObjectRegistration::ClassObjectRegistration() {
  for (const ComponentClass& entry : kClasses) {
    result_ = CoRegisterClassObject(entry.clsid, entry.classObject, CLSCTX_INPROC_SERVER,
                                    REGCLS_MULTIPLEUSE, &cookies_[registered_]);
    if (FAILED(result_)) {
      Revoke();
      return;
    }
    ++registered_;
  }
}

ClassObjectRegistration::~ClassObjectRegistration() { Revoke(); }

void ClassObjectRegistration::Revoke() {
  while (registered_ > 0) CoRevokeClassObject(cookies_[--registered_]);
}

}  // namespace parcelon
