// ComError: the exception that carries a failed HRESULT inside the component. It never crosses
// an interface method: every method catches it and returns its code.
#pragma once

#include <exception>

#include "platform/ComBase.h"

class ComError : public std::exception {
 public:
  explicit ComError(HRESULT hr, const IID* source = nullptr) : hr_(hr) {
    if (source) source_ = *source;
  }
  HRESULT Error() const noexcept { return hr_; }
  // The identity of the interface whose call failed (GUID_NULL when unknown).
  const IID& Source() const noexcept { return source_; }
  const char* what() const noexcept override { return "COM error"; }

 private:
  HRESULT hr_;
  IID source_{};
};

// Throws ComError when hr is a failure.
inline void ThrowIfFailed(HRESULT hr, const IID* source = nullptr) {
  if (FAILED(hr)) throw ComError(hr, source);
}

// Evaluates `expr` once and returns its HRESULT from the enclosing function when it is a failure.
// It logs nothing: for a failure that the callee has already logged, or that needs no log. The
// logging forms are in diagnostics/LogIfFailed.h.
#define RETURN_IF_FAILED(expr)                      \
  do {                                              \
    const HRESULT parcelon_hr_ = (expr);            \
    if (FAILED(parcelon_hr_)) return parcelon_hr_;  \
  } while (0)
