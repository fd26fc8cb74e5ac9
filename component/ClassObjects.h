// The class objects of NA_Forms and NA_Form with their class names, and their registration in
// the process's class table, so that CoCreateInstance creates the component's classes in process.
#pragma once

#include <span>

#include "platform/ComBase.h"

namespace parcelon {

// One class of the component: its CLSID, class name (ProgID), description, class object and the
// identifier of its registry script resource.
struct ComponentClass {
  const CLSID& clsid;
  const OLECHAR* progId;
  const OLECHAR* description;
  IClassFactory* classObject;
  int registryScript;
};

// The component's classes in the module's order: NA_Forms, NA_Form.
std::span<const ComponentClass> ComponentClasses();

// The class object of `clsid` (NA_Forms or NA_Form) as interface `riid`;
// CLASS_E_CLASSNOTAVAILABLE for any other class.
HRESULT GetClassObject(REFCLSID clsid, REFIID riid, void** ppv);

// Registers the class objects of both classes in the process's class table (on Windows, COM's
// own, for the calling thread's apartment) for the lifetime of this object.
class ClassObjectRegistration {
 public:
  ClassObjectRegistration();
  ~ClassObjectRegistration();
  ClassObjectRegistration(const ClassObjectRegistration&) = delete;
  ClassObjectRegistration& operator=(const ClassObjectRegistration&) = delete;

  // S_OK when both classes were registered; otherwise the first failure (and neither is).
  HRESULT Result() const { return result_; }

 private:
  void Revoke();

  HRESULT result_ = S_OK;
  DWORD cookies_[2] = {};  // one per class
  int registered_ = 0;
};

}  // namespace parcelon
