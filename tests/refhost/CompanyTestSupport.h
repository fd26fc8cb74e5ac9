// Helpers for the reference host's tests: companies from fixture text, UTF-16 texts of BSTRs,
// record-number VARIANTs, and the list records of a company file.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/HostModel.h"
#include "platform/Bstr.h"
#include "platform/ComPtr.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/HostObjects.h"
#include "support/TestSupport.h"

namespace parcelon::refhost::test {

using parcelon::test::MakeBstr;

// The company of a fixture text that must load.
inline CompanyPtr LoadCompany(const std::string& fixture) {
  auto company = std::make_shared<Company>();
  std::string error;
  const HRESULT hr = LoadFixtureText(fixture, "company.json", *company, error);
  EXPECT_EQ(S_OK, hr) << error;
  return company;
}

// The message of a fixture text that must fail to load.
inline std::string LoadError(const std::string& fixture) {
  Company company;
  std::string error;
  EXPECT_EQ(kInvalidFixture, LoadFixtureText(fixture, "company.json", company, error));
  return error;
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

// The record number of a list record; -1 when it cannot be read.
template <class I>
LONG RecNumOf(const ComPtr<I>& record) {
  LONG recNum = -1;
  if (!record || FAILED(record->GetRecNum(&recNum))) return -1;
  return recNum;
}

}  // namespace parcelon::refhost::test
