// Bstr: an owning BSTR (SysFreeString on destruction); null reads as the empty string.
#pragma once

#include <utility>

#include "platform/ComBase.h"

class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(const OLECHAR* text) : str_(SysAllocString(text)) {}
  Bstr(const OLECHAR* text, UINT length) : str_(SysAllocStringLen(text, length)) {}
  Bstr(const Bstr& other)
      : str_(other.str_ ? SysAllocStringLen(other.str_, SysStringLen(other.str_)) : nullptr) {}
  Bstr(Bstr&& other) noexcept : str_(std::exchange(other.str_, nullptr)) {}
  ~Bstr() { SysFreeString(str_); }
  Bstr& operator=(Bstr other) noexcept {
    std::swap(str_, other.str_);
    return *this;
  }

  static Bstr Attach(BSTR s) {
    Bstr out;
    out.str_ = s;
    return out;
  }
  BSTR Detach() { return std::exchange(str_, nullptr); }
  void Reset() { SysFreeString(std::exchange(str_, nullptr)); }

  BSTR Get() const { return str_; }
  UINT Length() const { return SysStringLen(str_); }
  bool Empty() const { return Length() == 0; }
  // Out-parameter slot: frees the current string first.
  BSTR* Out() {
    Reset();
    return &str_;
  }

 private:
  BSTR str_ = nullptr;
};
