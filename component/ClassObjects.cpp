#include "component/ClassObjects.h"

#include "component/NA_Form.h"
#include "component/NA_Forms.h"

namespace parcelon {
namespace {

CClassFactory<CNA_Forms> formsClassObject;
CClassFactory<CNA_Form> formClassObject;

struct ClassEntry {
  const CLSID& clsid;
  IClassFactory* classObject;
};

// In the module's order: NA_Forms, NA_Form.
const ClassEntry kClasses[] = {
    {CLSID_NA_Forms, &formsClassObject},
    {CLSID_NA_Form, &formClassObject},
};

}  // namespace

HRESULT GetClassObject(REFCLSID clsid, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  for (const ClassEntry& entry : kClasses)
    if (entry.clsid == clsid) return entry.classObject->QueryInterface(riid, ppv);
  return CLASS_E_CLASSNOTAVAILABLE;
}

ClassObjectRegistration::ClassObjectRegistration() {
  for (const ClassEntry& entry : kClasses) {
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
