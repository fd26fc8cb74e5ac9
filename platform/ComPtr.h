// ComPtr<T>: an owning interface pointer (AddRef on copy, Release on destruction).
#pragma once

#include <utility>

#include "platform/ComBase.h"

template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(std::nullptr_t) {}
  // Takes a new reference to an existing pointer.
  explicit ComPtr(T* p) : ptr_(p) {
    if (ptr_) ptr_->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.ptr_) {}
  ComPtr(ComPtr&& other) noexcept : ptr_(std::exchange(other.ptr_, nullptr)) {}
  ~ComPtr() { Reset(); }

  ComPtr& operator=(const ComPtr& other) {
    ComPtr(other).Swap(*this);
    return *this;
  }
  ComPtr& operator=(ComPtr&& other) noexcept {
    ComPtr(std::move(other)).Swap(*this);
    return *this;
  }

  // Adopts a pointer whose reference the caller already owns.
  static ComPtr Attach(T* p) {
    ComPtr out;
    out.ptr_ = p;
    return out;
  }
  T* Detach() { return std::exchange(ptr_, nullptr); }

  void Reset() {
    if (T* p = std::exchange(ptr_, nullptr)) p->Release();
  }
  void Swap(ComPtr& other) noexcept { std::swap(ptr_, other.ptr_); }

  T* Get() const { return ptr_; }
  T* operator->() const { return ptr_; }
  explicit operator bool() const { return ptr_ != nullptr; }

  // For out parameters: releases the current pointer and exposes the slot.
  T** ReleaseAndGetAddressOf() {
    Reset();
    return &ptr_;
  }
  void** ReleaseAndGetVoidAddress() { return reinterpret_cast<void**>(ReleaseAndGetAddressOf()); }

  template <class U>
  HRESULT As(ComPtr<U>& out) const {
    if (!ptr_) return E_POINTER;
    return ptr_->QueryInterface(IidOf<U>(), out.ReleaseAndGetVoidAddress());
  }

 private:
  T* ptr_ = nullptr;
};
