// The IUnknown pieces every COM object of this code shares: a single-threaded reference count
// and matching an IID against a list of interfaces.
#pragma once

#include "platform/ComBase.h"

namespace parcelon {

// True when `riid` names one of `Interfaces`.
template <class... Interfaces>
bool IsOneOf(REFIID riid) {
  return ((riid == IidOf<Interfaces>()) || ...);
}

// The reference count of an apartment object (all calls arrive on one thread). The object
// deletes itself on the last Release.
template <class Derived>
class CRefCounted {
 protected:
  ULONG AddRefImpl() { return ++refs_; }
  ULONG ReleaseImpl() {
    const ULONG left = --refs_;
    if (left == 0) delete static_cast<Derived*>(this);
    return left;
  }

 private:
  ULONG refs_ = 0;
};

}  // namespace parcelon
