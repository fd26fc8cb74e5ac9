// Helpers for the reference host's tests: companies from fixture text (and fixtures changed at
// one place that must fail), what a getter gives or answers, a host amount seen through all its
// getters, record-number VARIANTs, list records, and data file records used as the component
// uses them.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>

#include "host/DataFile.h"
#include "host/HostModel.h"
#include "platform/Bstr.h"
#include "platform/ComPtr.h"
#include "refhost/CompanyData.h"
#include "refhost/DataFileObjects.h"
#include "refhost/Fixture.h"
#include "refhost/HostObjects.h"
#include "support/TestSupport.h"

namespace parcelon::refhost::test {

using parcelon::test::FileExists;
using parcelon::test::MakeBstr;
using parcelon::test::ReadFile;
using parcelon::test::ScratchFolder;
using parcelon::test::WriteFile;

// The company of a fixture text that must load.
inline CompanyPtr LoadCompany(const std::string& fixture) {
  auto company = std::make_shared<Company>();
  std::string error;
  EXPECT_EQ(S_OK, LoadFixtureText(fixture, "company.json", *company, error)) << error;
  return company;
}

// The message of a fixture text that must fail to load.
inline std::string LoadError(const std::string& fixture) {
  Company company;
  std::string error;
  EXPECT_EQ(kInvalidFixture, LoadFixtureText(fixture, "company.json", company, error));
  return error;
}

// A fixture changed at one JSON pointer, and where its message must point and what it must say.
struct FixtureChange {
  const char* pointer;
  nlohmann::json value;
  const char* where;  // "/invoices/0: customer": the message starts "company.json: <where>: "
  const char* phrase;
};

inline void ExpectRefused(const char* fixtureText, const FixtureChange& change) {
  SCOPED_TRACE(change.pointer);
  nlohmann::json fixture = nlohmann::json::parse(fixtureText);
  fixture[nlohmann::json::json_pointer(change.pointer)] = change.value;
  const std::string error = LoadError(fixture.dump());
  EXPECT_EQ(0u, error.find(std::string("company.json: ") + change.where + ": ")) << error;
  EXPECT_NE(std::string::npos, error.find(change.phrase)) << error;
}

// Takes a BSTR that a getter gave out.
inline Text Take(BSTR text) { return FromBstr(Bstr::Attach(text).Get()); }

inline VARIANT RecNumVariant(LONG recNum) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_I4;
  v.lVal = recNum;
  return v;
}

namespace detail {

// What `call(Out*)` gives, as Get describes it.
template <class Out, class Call>
auto Receive(Call&& call) {
  if constexpr (std::is_same_v<Out, BSTR>) {
    Bstr text;
    EXPECT_EQ(S_OK, call(text.Out()));
    return TextToUtf8(FromBstr(text.Get()));
  } else if constexpr (std::is_same_v<Out, VARIANT_BOOL>) {
    VARIANT_BOOL flag = 1;
    EXPECT_EQ(S_OK, call(&flag));
    EXPECT_TRUE(flag == VARIANT_TRUE || flag == VARIANT_FALSE) << flag;
    return flag == VARIANT_TRUE;
  } else if constexpr (std::is_pointer_v<Out>) {
    using I = std::remove_pointer_t<Out>;
    I* result = nullptr;
    EXPECT_EQ(S_OK, call(&result));
    return ComPtr<I>::Attach(result);
  } else {
    Out value{};
    EXPECT_EQ(S_OK, call(&value));
    return value;
  }
}

}  // namespace detail

// What `getter` of `object` gives; the test fails when the call does. Texts come as UTF-8,
// VARIANT_BOOLs as bool (and must be VARIANT_TRUE or VARIANT_FALSE), interfaces as ComPtr.
template <class Object, class Base, class Out>
auto Get(const ComPtr<Object>& object, HRESULT (STDMETHODCALLTYPE Base::*getter)(Out*)) {
  static_assert(std::is_base_of_v<Base, Object>);
  return detail::Receive<Out>([&](Out* out) { return (object.Get()->*getter)(out); });
}

// The same for a getter that takes an index first.
template <class Object, class Base, class Out>
auto Get(const ComPtr<Object>& object, HRESULT (STDMETHODCALLTYPE Base::*getter)(LONG, Out*),
         LONG index) {
  static_assert(std::is_base_of_v<Base, Object>);
  return detail::Receive<Out>([&](Out* out) { return (object.Get()->*getter)(index, out); });
}

// What `getter` of `object` answers, for fault tests; what it gives is released.
template <class Object, class Base, class Out>
HRESULT Status(const ComPtr<Object>& object, HRESULT (STDMETHODCALLTYPE Base::*getter)(Out*)) {
  static_assert(std::is_base_of_v<Base, Object>);
  Out out{};
  const HRESULT hr = (object.Get()->*getter)(&out);
  if constexpr (std::is_same_v<Out, BSTR>)
    SysFreeString(out);
  else if constexpr (std::is_pointer_v<Out>)
    if (out) out->Release();
  return hr;
}

// A host amount as every getter of IAmount and IAmount2 sees it.
struct AmountSeen {
  std::string text;
  bool empty = true;
  bool negative = false;
  LONGLONG whole = 0;
  LONG hundredths = 0;
  double asDouble = 0;

  friend bool operator==(const AmountSeen&, const AmountSeen&) = default;
  friend std::ostream& operator<<(std::ostream& out, const AmountSeen& a) {
    return out << "{\"" << a.text << "\" empty " << a.empty << " negative " << a.negative
               << " whole " << a.whole << " hundredths " << a.hundredths << " double "
               << a.asDouble << "}";
  }
};

// The amount that an amount getter gives; the amount must also answer for IAmount2.
inline AmountSeen SeeAmount(const ComPtr<IAmount>& amount) {
  AmountSeen seen;
  if (!amount) {
    ADD_FAILURE() << "no amount";
    return seen;
  }
  EXPECT_EQ(S_OK, amount->Prepare(-1));
  seen.text = Get(amount, &IAmount::GetText);
  seen.empty = Get(amount, &IAmount::IsEmpty);
  seen.negative = Get(amount, &IAmount::IsNegative);
  seen.whole = Get(amount, &IAmount::GetWhole);
  seen.hundredths = Get(amount, &IAmount::GetHundredths);
  ComPtr<IAmount2> amount2;
  EXPECT_EQ(S_OK, amount.As(amount2));
  if (amount2) seen.asDouble = Get(amount2, &IAmount2::GetDouble);
  return seen;
}

// The amount a fixture writes as `text` ("-25.00"); an empty text is the empty amount.
inline AmountSeen Money(const std::string& text, bool negative, LONGLONG whole, LONG hundredths) {
  const double magnitude = double(whole * 100 + hundredths) / 100;
  return {text, text.empty(), negative, whole, hundredths, negative ? -magnitude : magnitude};
}

// The empty amount: an amount that is not set.
inline AmountSeen EmptyAmount() { return Money("", false, 0, 0); }

// The record `recNum` of I's list, which must exist.
template <class I>
ComPtr<I> RecordOf(const CompanyPtr& company, LONG recNum) {
  I* record = nullptr;
  EXPECT_EQ(S_OK, NewRecordObject(company, recNum, &record)) << "record " << recNum;
  return ComPtr<I>::Attach(record);
}

inline ComPtr<ILists> ListsOf(const CompanyPtr& company) {
  ILists* lists = nullptr;
  EXPECT_EQ(S_OK, NewLists(company, &lists));
  return ComPtr<ILists>::Attach(lists);
}

// The record number of a list record; -1 when there is none or it cannot be read.
template <class I>
LONG RecNumOf(const ComPtr<I>& record) {
  LONG recNum = -1;
  if (!record || FAILED(record->GetRecNum(&recNum))) return -1;
  return recNum;
}

// A VARIANT that owns its value.
struct Var : VARIANT {
  Var() { VariantInit(this); }
  ~Var() { VariantClear(this); }
  Var(Var&& other) noexcept : VARIANT(other) { VariantInit(&other); }
  Var& operator=(const Var&) = delete;

  static Var Str(const std::string& utf8) {
    Var v;
    v.vt = VT_BSTR;
    v.bstrVal = MakeBstr(utf8).Detach();
    return v;
  }
};

// A property value as "TYPE:value" ("BSTR:T-42", "I4:-1", "EMPTY"), for exact comparisons.
inline std::string Describe(const VARIANT& v) {
  const auto exact = [](double d) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", d);
    return std::string(text);
  };
  switch (v.vt) {
    case VT_EMPTY: return "EMPTY";
    case VT_I4: return "I4:" + std::to_string(v.lVal);
    case VT_I8: return "I8:" + std::to_string(v.llVal);
    case VT_BOOL: return "BOOL:" + std::to_string(v.boolVal);
    case VT_R8: return "R8:" + exact(v.dblVal);
    case VT_DATE: return "DATE:" + exact(v.date);
    case VT_BSTR:
      return "BSTR:" + TextToUtf8(std::u16string_view(
                           reinterpret_cast<const char16_t*>(v.bstrVal), SysStringLen(v.bstrVal)));
    default: return "vt " + std::to_string(v.vt);
  }
}

// A data file record taken as the component takes it: Exists, then GetItem or Add. Null when a
// step fails.
inline IDataFileRecordPtr TakeDataFileRecord(const CompanyPtr& company, const std::string& name) {
  IDataFileRecordsPtr records;
  VARIANT_BOOL exists = VARIANT_FALSE;
  IDataFileRecordPtr record;
  if (FAILED(NewDataFileRecords(company, records.ReleaseAndGetAddressOf())) ||
      FAILED(records->Exists(MakeBstr(name).Get(), &exists)))
    return {};
  if (exists)
    records->GetItem(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf());
  else
    records->Add(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf());
  return record;
}

inline bool TryLock(const IDataFileRecordPtr& record) {
  VARIANT_BOOL locked = VARIANT_FALSE;
  return record && SUCCEEDED(record->TryLock(&locked)) && locked == VARIANT_TRUE;
}

// Writes one property as the component does: take, lock, bag, write, data version 1, save,
// unlock. False when a step fails.
inline bool WriteAsComponent(const CompanyPtr& company, const std::string& name,
                             const std::string& property, const VARIANT& value) {
  IDataFileRecordPtr record = TakeDataFileRecord(company, name);
  IDataFilePropertyBagPtr bag;
  if (!TryLock(record) || FAILED(record->GetPropertyBag(bag.ReleaseAndGetAddressOf())))
    return false;
  const bool written = SUCCEEDED(bag->Write(MakeBstr(property).Get(), value)) &&
                       SUCCEEDED(record->SetDataVersion(1)) && SUCCEEDED(record->Save());
  return SUCCEEDED(record->Unlock()) && written;
}

// One property read through a fresh records object, as the component reads it (no lock), as
// Describe gives it; "<failed>" when a step fails.
inline std::string ReadAsComponent(const CompanyPtr& company, const std::string& name,
                                   const std::string& property) {
  IDataFileRecordsPtr records;
  IDataFileRecordPtr record;
  IDataFilePropertyBagPtr bag;
  Var value;
  if (FAILED(NewDataFileRecords(company, records.ReleaseAndGetAddressOf())) ||
      FAILED(records->GetItem(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf())) ||
      FAILED(record->GetPropertyBag(bag.ReleaseAndGetAddressOf())) ||
      FAILED(bag->Read(MakeBstr(property).Get(), &value)))
    return "<failed>";
  return Describe(value);
}

}  // namespace parcelon::refhost::test
