// Hand-written fakes of the host's value objects (amounts, addresses) for toolkit tests.
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

class FakeAmount : public FakeComObject<IAmount> {
 public:
  explicit FakeAmount(std::string text) : text_(std::move(text)) { OnHeap(); }
  HRESULT STDMETHODCALLTYPE Prepare(LONG mode) override {
    prepareMode = mode;
    return prepareResult;
  }
  HRESULT STDMETHODCALLTYPE GetText(BSTR* text) override {
    if (FAILED(textResult)) return textResult;
    *text = MakeBstr(text_).Detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* empty) override {
    *empty = text_.empty() ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* valid) override {
    *valid = VARIANT_TRUE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetWhole(LONGLONG* whole) override {
    *whole = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetHundredths(LONG* hundredths) override {
    *hundredths = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* negative) override {
    *negative = VARIANT_FALSE;
    return S_OK;
  }

  LONG prepareMode = 0;
  HRESULT prepareResult = S_OK;
  HRESULT textResult = S_OK;

 private:
  std::string text_;
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
