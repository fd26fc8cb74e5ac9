// Hand-written fakes of the host's value objects (amounts, percents, quantities, addresses) for
// toolkit tests.
#pragma once

#include <array>
#include <string>

#include "host/HostValues.h"
#include "support/TestSupport.h"

namespace parcelon::test {

// Reference counting and QueryInterface for a fake implementing one interface. Stack-allocated
// fakes are fine as long as nobody keeps a reference past their scope.
template <class Interface>
class FakeComObject : public Interface {
 public:
  virtual ~FakeComObject() = default;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    if (IsEqualGUID(riid, IidOf<IUnknown>()) || IsEqualGUID(riid, IidOf<Interface>())) {
      *ppv = static_cast<Interface*>(this);
      AddRef();
      return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0 && heap_) delete this;
    return left;
  }
  ULONG References() const { return references_; }
  // Heap objects delete themselves at the last Release.
  void OnHeap() { heap_ = true; }

 private:
  ULONG references_ = 0;
  bool heap_ = false;
};

// A fake whose answers come from public fields; the operation named in `failing` returns
// `failure` instead, as a failing host call would. Every host value can be empty.
template <class Interface>
class FakeHostValue : public FakeComObject<Interface> {
 public:
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override {
    return Answer("IsEmpty", out, Flag(empty));
  }

  std::string failing;
  HRESULT failure = E_FAIL;
  bool empty = false;

 protected:
  template <class T, class U>
  HRESULT Answer(const char* operation, T* out, U value) {
    if (failing == operation) return failure;
    *out = value;
    return S_OK;
  }
  static VARIANT_BOOL Flag(bool value) { return value ? VARIANT_TRUE : VARIANT_FALSE; }
};

// Built from text it lives on the heap and stands for a host amount read by its text; built
// without, it is a stack value read by its parts.
class FakeAmount : public FakeHostValue<IAmount> {
 public:
  FakeAmount() = default;
  explicit FakeAmount(std::string text) : text_(std::move(text)) {
    empty = text_.empty();
    OnHeap();
  }
  HRESULT STDMETHODCALLTYPE Prepare(LONG mode) override {
    prepareMode = mode;
    return prepareResult;
  }
  HRESULT STDMETHODCALLTYPE GetText(BSTR* text) override {
    if (FAILED(textResult)) return textResult;
    *text = MakeBstr(text_).Detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override {
    return Answer("IsValid", out, Flag(valid));
  }
  HRESULT STDMETHODCALLTYPE GetWhole(LONGLONG* out) override { return Answer("GetWhole", out, whole); }
  HRESULT STDMETHODCALLTYPE GetHundredths(LONG* out) override {
    return Answer("GetHundredths", out, hundredths);
  }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override {
    return Answer("IsNegative", out, Flag(negative));
  }

  LONG prepareMode = 0;
  HRESULT prepareResult = S_OK;
  HRESULT textResult = S_OK;
  bool valid = true;
  LONGLONG whole = 0;
  LONG hundredths = 0;
  bool negative = false;

 private:
  std::string text_;
};

class FakePercent : public FakeHostValue<IPercent> {
 public:
  HRESULT STDMETHODCALLTYPE GetValue(double* out) override { return Answer("GetValue", out, value); }

  double value = 0;
};

class FakeQuantity : public FakeHostValue<IQuantity> {
 public:
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override {
    return Answer("IsValid", out, Flag(valid));
  }
  HRESULT STDMETHODCALLTYPE GetInteger(LONGLONG* out) override { return Answer("GetInteger", out, integer); }
  HRESULT STDMETHODCALLTYPE GetDecimals(SHORT* out) override { return Answer("GetDecimals", out, decimals); }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override {
    return Answer("IsNegative", out, Flag(negative));
  }

  bool valid = true;
  LONGLONG integer = 0;
  SHORT decimals = 0;
  bool negative = false;
};

class FakeAddress : public FakeComObject<IAddress> {
 public:
  HRESULT STDMETHODCALLTYPE GetLine(LONG index, BSTR* text) override {
    return Give(int(index), index >= 0 && index < 4 ? lines[size_t(index)] : std::string(), text);
  }
  HRESULT STDMETHODCALLTYPE GetCity(BSTR* text) override { return Give(4, city, text); }
  HRESULT STDMETHODCALLTYPE GetState(BSTR* text) override { return Give(5, state, text); }
  HRESULT STDMETHODCALLTYPE GetPostalCode(BSTR* text) override { return Give(6, postalCode, text); }
  HRESULT STDMETHODCALLTYPE GetCountry(BSTR* text) override { return Give(7, country, text); }
  HRESULT STDMETHODCALLTYPE GetNote(BSTR* text) override { return Give(8, note, text); }

  std::array<std::string, 4> lines;
  std::string city, state, postalCode, country, note;
  int failingField = -1;  // 0-3 the lines, 4 city, 5 state, 6 postal code, 7 country, 8 note

 private:
  HRESULT Give(int field, const std::string& value, BSTR* text) {
    if (field == failingField) return E_FAIL;
    *text = value.empty() ? nullptr : MakeBstr(value).Detach();
    return S_OK;
  }
};

}  // namespace parcelon::test
