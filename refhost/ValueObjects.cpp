// The host's value objects over the reference host's values: amounts, percentages, quantities,
// addresses. Each is a copy of the value, owned by the record that gave it out.
#include "refhost/ComObject.h"

namespace parcelon::refhost {

namespace {

// A value object: a copy of the value, owned by the record that gave it out.
template <class Value, class Most, class... Also>
class ValueObject : public ComObject<Most, Also...> {
 public:
  ValueObject(CompanyPtr company, LONG record, const Value& value)
      : ComObject<Most, Also...>(std::move(company), record), value_(value) {}

 protected:
  Value value_;
};

class AmountObject final : public ValueObject<Amount, IAmount2, IAmount> {
 public:
  using ValueObject::ValueObject;

  HRESULT STDMETHODCALLTYPE Prepare(LONG) override { return Check("IAmount::Prepare"); }
  HRESULT STDMETHODCALLTYPE GetText(BSTR* out) override {
    return Give("IAmount::GetText", out, value_.text);
  }
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override {
    return Give("IAmount::IsEmpty", out, value_.empty);
  }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override {
    return Give("IAmount::IsValid", out, value_.valid);
  }
  HRESULT STDMETHODCALLTYPE GetWhole(LONGLONG* out) override {
    return Give("IAmount::GetWhole", out, LONGLONG(Magnitude() / 100));
  }
  HRESULT STDMETHODCALLTYPE GetHundredths(LONG* out) override {
    return Give("IAmount::GetHundredths", out, LONG(Magnitude() % 100));
  }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override {
    return Give("IAmount::IsNegative", out, value_.cents < 0);
  }
  HRESULT STDMETHODCALLTYPE GetDouble(double* out) override {
    return Give("IAmount2::GetDouble", out, double(value_.cents) / 100);
  }

 private:
  int64_t Magnitude() const { return value_.cents < 0 ? -value_.cents : value_.cents; }
};

class PercentObject final : public ValueObject<Percent, IPercent> {
 public:
  using ValueObject::ValueObject;

  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override {
    return Give("IPercent::IsEmpty", out, value_.empty);
  }
  HRESULT STDMETHODCALLTYPE GetValue(double* out) override {
    return Give("IPercent::GetValue", out, value_.value);
  }
};

class QuantityObject final : public ValueObject<Quantity, IQuantity> {
 public:
  using ValueObject::ValueObject;

  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override {
    return Give("IQuantity::IsEmpty", out, value_.empty);
  }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override {
    return Give("IQuantity::IsValid", out, value_.valid);
  }
  HRESULT STDMETHODCALLTYPE GetInteger(LONGLONG* out) override {
    return Give("IQuantity::GetInteger", out, LONGLONG(value_.integer));
  }
  HRESULT STDMETHODCALLTYPE GetDecimals(SHORT* out) override {
    return Give("IQuantity::GetDecimals", out, value_.decimals);
  }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override {
    return Give("IQuantity::IsNegative", out, value_.negative);
  }
};

class AddressObject final : public ValueObject<Address, IAddress> {
 public:
  using ValueObject::ValueObject;

  // Lines 0 to 3; E_INVALIDARG for any other index.
  HRESULT STDMETHODCALLTYPE GetLine(LONG index, BSTR* out) override {
    RETURN_IF_FAILED(Check("IAddress::GetLine"));
    if (index < 0 || index >= LONG(value_.lines.size())) return E_INVALIDARG;
    return Give("IAddress::GetLine", out, value_.lines[size_t(index)]);
  }
  HRESULT STDMETHODCALLTYPE GetCity(BSTR* out) override {
    return Give("IAddress::GetCity", out, value_.city);
  }
  HRESULT STDMETHODCALLTYPE GetState(BSTR* out) override {
    return Give("IAddress::GetState", out, value_.state);
  }
  HRESULT STDMETHODCALLTYPE GetPostalCode(BSTR* out) override {
    return Give("IAddress::GetPostalCode", out, value_.postalCode);
  }
  HRESULT STDMETHODCALLTYPE GetCountry(BSTR* out) override {
    return Give("IAddress::GetCountry", out, value_.country);
  }
  HRESULT STDMETHODCALLTYPE GetNote(BSTR* out) override {
    return Give("IAddress::GetNote", out, value_.note);
  }
};

}  // namespace

HRESULT NewObject(const CompanyPtr& company, LONG record, const Amount& value, IAmount** out) {
  return CreateObject<AmountObject>(out, company, record, value);
}
HRESULT NewObject(const CompanyPtr& company, LONG record, const Percent& value, IPercent** out) {
  return CreateObject<PercentObject>(out, company, record, value);
}
HRESULT NewObject(const CompanyPtr& company, LONG record, const Quantity& value, IQuantity** out) {
  return CreateObject<QuantityObject>(out, company, record, value);
}
HRESULT NewObject(const CompanyPtr& company, LONG record, const Address& value, IAddress** out) {
  return CreateObject<AddressObject>(out, company, record, value);
}

}  // namespace parcelon::refhost
