// Data file records through the host's interfaces, kept in memory and (off Windows) in a company
// store: the component's write protocol, value types, the record lock, unsaved values, faults.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "CompanyTestSupport.h"
#include "refhost/DataFileStore.h"
#if PARCELON_HAVE_SQLITE
#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost::test {
namespace {

const std::string kRecord = "Orvane:NetworkAdapter:DataUpload";
const std::string kToken = "LastDataUploadToken";

enum class Keeper { Memory, Store };

class DataFileRecordsTest : public ::testing::TestWithParam<Keeper> {
 protected:
  void SetUp() override {
    company_ = std::make_shared<Company>();
#if PARCELON_HAVE_SQLITE
    if (GetParam() == Keeper::Store)
      company_->store = CompanyStore::Create(folder_.File("company.db"), "{}", "test", *company_);
#endif
  }

  // A new records object, as each call of the company file's GetDataFileRecords gives.
  IDataFileRecordsPtr Records() {
    IDataFileRecordsPtr records;
    EXPECT_EQ(S_OK, NewDataFileRecords(company_, records.ReleaseAndGetAddressOf()));
    return records;
  }
  IDataFileRecordPtr Take(const std::string& name = kRecord) {
    IDataFileRecordPtr record = TakeDataFileRecord(company_, name);
    EXPECT_TRUE(record) << name;
    return record;
  }
  // The record `kRecord` through GetItem alone, as a reader takes it.
  IDataFileRecordPtr Item() {
    IDataFileRecordPtr record;
    EXPECT_EQ(S_OK, Records()->GetItem(MakeBstr(kRecord).Get(), record.ReleaseAndGetAddressOf()));
    return record;
  }
  static IDataFilePropertyBagPtr BagOf(const IDataFileRecordPtr& record) {
    IDataFilePropertyBagPtr bag;
    EXPECT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
    return bag;
  }
  static std::string ReadFrom(const IDataFilePropertyBagPtr& bag) {
    Var value;
    EXPECT_EQ(S_OK, bag->Read(MakeBstr(kToken).Get(), &value));
    return Describe(value);
  }
  bool Exists() {
    VARIANT_BOOL exists = VARIANT_FALSE;
    EXPECT_EQ(S_OK, Records()->Exists(MakeBstr(kRecord).Get(), &exists));
    return exists == VARIANT_TRUE;
  }
  void Write(const VARIANT& value, const std::string& property = kToken) {
    EXPECT_TRUE(WriteAsComponent(company_, kRecord, property, value)) << property;
  }
  std::string Read(const std::string& property = kToken) {
    return ReadAsComponent(company_, kRecord, property);
  }

#if PARCELON_HAVE_SQLITE
  ScratchFolder folder_;
#endif
  std::shared_ptr<Company> company_;
};

TEST_P(DataFileRecordsTest, FirstWriteAddsTheRecordThenKeepsTheProperty) {
  EXPECT_FALSE(Exists());
  Write(Var::Str("T-42"));
  EXPECT_TRUE(Exists());
  EXPECT_EQ("BSTR:T-42", Read());
  EXPECT_EQ(1, Get(Item(), &IDataFileRecord::GetDataVersion));
  EXPECT_EQ(kRecord, Get(Item(), &IDataFileRecord::GetName));
}

// A value of type `vt` that `set` fills in.
template <class Set>
Var Value(VARTYPE vt, Set set) {
  Var v;
  v.vt = vt;
  set(v);
  return v;
}

// Each value type the component writes comes back with its type and value; texts keep their
// length, embedded NULs included.
TEST_P(DataFileRecordsTest, ValuesKeepTheirTypes) {
  const std::pair<std::function<Var()>, std::string> cases[] = {
      {[] { return Value(VT_I4, [](Var& v) { v.lVal = -2147483647 - 1; }); }, "I4:-2147483648"},
      {[] { return Value(VT_I8, [](Var& v) { v.llVal = 1700000001LL * 1000; }); }, "I8:1700000001000"},
      {[] { return Value(VT_BOOL, [](Var& v) { v.boolVal = VARIANT_TRUE; }); }, "BOOL:-1"},
      {[] { return Value(VT_R8, [](Var& v) { v.dblVal = -0.125; }); }, "R8:-0.125"},
      {[] { return Value(VT_DATE, [](Var& v) { v.date = 45123.75; }); }, "DATE:45123.75"},
      {[] { return Var::Str("Caf\xC3\xA9 \xE2\x80\x99 \xF0\x9F\x93\xA6 <&>"); },
       "BSTR:Caf\xC3\xA9 \xE2\x80\x99 \xF0\x9F\x93\xA6 <&>"},
      {[] { return Var::Str(""); }, "BSTR:"},
      {[] {
         const OLECHAR text[] = {'a', 0, 'b'};
         return Value(VT_BSTR, [&](Var& v) { v.bstrVal = SysAllocStringLen(text, 3); });
       },
       std::string("BSTR:a\0b", 8)},
  };
  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].second);
    const std::string property = "P" + std::to_string(i);
    Write(cases[i].first(), property);
    EXPECT_EQ(cases[i].second, Read(property));
  }
}

TEST_P(DataFileRecordsTest, WritingEmptyErasesTheProperty) {
  Write(Value(VT_I4, [](Var& v) { v.lVal = 1700000000; }));
  Write(Var());
  EXPECT_EQ("EMPTY", Read());
}

TEST_P(DataFileRecordsTest, TypesTheRecordsDoNotKeepAreRefused) {
  const IDataFilePropertyBagPtr bag = BagOf(Take());
  for (const VARTYPE type : {VT_NULL, VT_DECIMAL, VT_UNKNOWN, VT_ERROR}) {
    SCOPED_TRACE(type);
    VARIANT value;  // not cleared: it holds no value of its type
    VariantInit(&value);
    value.vt = type;
    EXPECT_EQ(DISP_E_BADVARTYPE, bag->Write(MakeBstr(kToken).Get(), value));
  }
}

TEST_P(DataFileRecordsTest, HugeValueIsRefusedWithoutHarm) {
  const IDataFileRecordPtr record = Take();
  ASSERT_TRUE(TryLock(record));
  const IDataFilePropertyBagPtr bag = BagOf(record);
  const auto text = [](size_t length) {
    return Value(VT_BSTR, [&](Var& v) {
      v.bstrVal = SysAllocStringLen(nullptr, UINT(length));
      std::fill_n(v.bstrVal, length, OLECHAR('x'));
    });
  };
  EXPECT_EQ(E_INVALIDARG, bag->Write(MakeBstr(kToken).Get(), text(50u << 20)));  // 100 MB
  EXPECT_EQ(S_OK, bag->Write(MakeBstr(kToken).Get(), text(kMaxPropertyBytes / 2)));
  ASSERT_EQ(S_OK, record->Save());
  EXPECT_EQ("BSTR:" + std::string(kMaxPropertyBytes / 2, 'x'), Read());
}

TEST_P(DataFileRecordsTest, UnsavedValuesStayWithTheirRecordObject) {
  Write(Var::Str("saved"));
  IDataFileRecordPtr record = Take();
  ASSERT_TRUE(TryLock(record));
  IDataFilePropertyBagPtr bag = BagOf(record);
  ASSERT_EQ(S_OK, bag->Write(MakeBstr(kToken).Get(), Var::Str("unsaved")));
  ASSERT_EQ(S_OK, record->SetDataVersion(7));

  // The writer sees its own values, through this bag and a new one; nobody else does.
  EXPECT_EQ("BSTR:unsaved", ReadFrom(bag));
  EXPECT_EQ("BSTR:unsaved", ReadFrom(BagOf(record)));
  EXPECT_EQ("BSTR:saved", Read());
  const IDataFileRecordPtr other = Item();
  EXPECT_EQ(1, Get(other, &IDataFileRecord::GetDataVersion));

  // Released without Save: the values are gone, and so is the lock.
  bag.Reset();
  record.Reset();
  EXPECT_EQ("BSTR:saved", Read());
  EXPECT_TRUE(TryLock(other));
}

TEST_P(DataFileRecordsTest, ReadsSeeWhatOthersSavedSinceTheRecordWasTaken) {
  Write(Var::Str("first"));
  const IDataFilePropertyBagPtr bag = BagOf(Item());
  Write(Var::Str("second"));
  EXPECT_EQ("BSTR:second", ReadFrom(bag));
}

TEST_P(DataFileRecordsTest, SaveAndDeleteNeedTheLock) {
  Write(Var::Str("kept"));
  const IDataFileRecordPtr record = Take();
  ASSERT_EQ(S_OK, BagOf(record)->Write(MakeBstr(kToken).Get(), Var::Str("unlocked write")));
  EXPECT_EQ(E_ACCESSDENIED, record->Save());
  EXPECT_EQ(E_ACCESSDENIED, record->Delete());
  EXPECT_EQ(S_FALSE, record->Unlock());
  EXPECT_EQ("BSTR:kept", Read());
}

TEST_P(DataFileRecordsTest, LockHasOneHolderAtATime) {
  IDataFileRecordPtr first = Take();
  IDataFileRecordPtr second = Take();
  IDataFileRecordPtr elsewhere = Take("Orvane:NetworkAdapter:Parcelon:StyleUploadTimes");

  EXPECT_TRUE(TryLock(first));
  EXPECT_TRUE(TryLock(first)) << "the holder asking again";
  EXPECT_FALSE(TryLock(second));
  EXPECT_TRUE(TryLock(elsewhere)) << "another record's lock";
  EXPECT_EQ(S_FALSE, second->Unlock()) << "a refused object cannot release the holder's lock";
  EXPECT_FALSE(TryLock(second));

  ASSERT_EQ(S_OK, first->Unlock());
  EXPECT_TRUE(TryLock(second));
  EXPECT_FALSE(TryLock(first));
  second.Reset();
  EXPECT_TRUE(TryLock(first)) << "a released holder gives up the lock";
}

TEST_P(DataFileRecordsTest, LockHeldBySomeoneElseIsRefused) {
  company_->faults.HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  const IDataFileRecordPtr record = Take();
  EXPECT_FALSE(TryLock(record));
  EXPECT_EQ(E_ACCESSDENIED, record->Save());
  EXPECT_TRUE(TryLock(Take("Another")));
}

TEST_P(DataFileRecordsTest, DeleteRemovesTheRecordAndItsValues) {
  Write(Var::Str("gone soon"));
  const IDataFileRecordPtr record = Take();
  ASSERT_TRUE(TryLock(record));
  ASSERT_EQ(S_OK, record->Delete());
  EXPECT_EQ(S_OK, record->Unlock());

  EXPECT_FALSE(Exists());
  IDataFileRecordPtr missing;
  EXPECT_EQ(LX_E_NOTFOUND, Records()->GetItem(MakeBstr(kRecord).Get(), missing.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(missing);
  const IDataFileRecordPtr added = Take();
  EXPECT_EQ(0, Get(added, &IDataFileRecord::GetDataVersion)) << "a new record starts at version 0";
  EXPECT_EQ("EMPTY", Read()) << "and empty";
}

TEST_P(DataFileRecordsTest, AddingATakenNameFails) {
  IDataFileRecordPtr record, again;
  ASSERT_EQ(S_OK, Records()->Add(MakeBstr(kRecord).Get(), record.ReleaseAndGetAddressOf()));
  EXPECT_EQ(kAlreadyExists, Records()->Add(MakeBstr(kRecord).Get(), again.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(again);
}

// A fault set for one operation fails that operation and no other.
TEST_P(DataFileRecordsTest, FaultFailsExactlyTheNamedOperation) {
  const std::vector<std::string> operations = {
      "IDataFileRecords::Exists",        "IDataFileRecords::GetItem",
      "IDataFileRecords::Add",           "IDataFileRecord::GetName",
      "IDataFileRecord::TryLock",        "IDataFileRecord::GetPropertyBag",
      "IDataFilePropertyBag::Write",     "IDataFilePropertyBag::Read",
      "IDataFileRecord::SetDataVersion", "IDataFileRecord::GetDataVersion",
      "IDataFileRecord::Save",           "IDataFileRecord::Unlock",
      "IDataFileRecord::Delete",
  };
  constexpr HRESULT kInjected = static_cast<HRESULT>(0x80041A77);
  for (const std::string& failing : operations) {
    SCOPED_TRACE(failing);
    // Everything the calls need is taken before the fault is set.
    company_->faults.Clear();
    const std::string name = "record for " + failing;
    const IDataFileRecordsPtr records = Records();
    const IDataFileRecordPtr record = Take(name);
    ASSERT_TRUE(TryLock(record));
    const IDataFilePropertyBagPtr bag = BagOf(record);
    ASSERT_TRUE(company_->faults.Fail(failing, kInjected));
    const auto expect = [&](const char* operation) { return operation == failing ? kInjected : S_OK; };

    VARIANT_BOOL flag = VARIANT_FALSE;
    IDataFileRecordPtr other;
    IDataFilePropertyBagPtr otherBag;
    Bstr gotName;
    Var value;
    LONG version = 0;
    EXPECT_EQ(expect("IDataFileRecords::Exists"), records->Exists(MakeBstr(name).Get(), &flag));
    EXPECT_EQ(expect("IDataFileRecords::Add"),
              records->Add(MakeBstr("added " + name).Get(), other.ReleaseAndGetAddressOf()));
    EXPECT_EQ(expect("IDataFileRecords::GetItem"),
              records->GetItem(MakeBstr(name).Get(), other.ReleaseAndGetAddressOf()));
    EXPECT_EQ(expect("IDataFileRecord::GetName"), record->GetName(gotName.Out()));
    EXPECT_EQ(expect("IDataFileRecord::TryLock"), record->TryLock(&flag));
    EXPECT_EQ(expect("IDataFileRecord::GetPropertyBag"), record->GetPropertyBag(otherBag.ReleaseAndGetAddressOf()));
    EXPECT_EQ(expect("IDataFilePropertyBag::Write"), bag->Write(MakeBstr(kToken).Get(), Var::Str("v")));
    EXPECT_EQ(expect("IDataFilePropertyBag::Read"), bag->Read(MakeBstr(kToken).Get(), &value));
    EXPECT_EQ(expect("IDataFileRecord::SetDataVersion"), record->SetDataVersion(1));
    EXPECT_EQ(expect("IDataFileRecord::GetDataVersion"), record->GetDataVersion(&version));
    EXPECT_EQ(expect("IDataFileRecord::Save"), record->Save());
    EXPECT_EQ(expect("IDataFileRecord::Delete"), record->Delete());
    EXPECT_EQ(expect("IDataFileRecord::Unlock"), record->Unlock());
  }
}

TEST_P(DataFileRecordsTest, NullOutParametersAreRefused) {
  const IDataFileRecordsPtr records = Records();
  EXPECT_EQ(E_POINTER, records->Exists(MakeBstr(kRecord).Get(), nullptr));
  EXPECT_EQ(E_POINTER, records->Add(MakeBstr(kRecord).Get(), nullptr));
  EXPECT_EQ(E_POINTER, records->GetItem(MakeBstr(kRecord).Get(), nullptr));
  const IDataFileRecordPtr record = Take();
  EXPECT_EQ(E_POINTER, record->TryLock(nullptr));
  EXPECT_EQ(E_POINTER, record->GetDataVersion(nullptr));
  EXPECT_EQ(E_POINTER, record->GetPropertyBag(nullptr));
  EXPECT_EQ(E_POINTER, BagOf(record)->Read(MakeBstr(kToken).Get(), nullptr));
}

#if PARCELON_HAVE_SQLITE
INSTANTIATE_TEST_SUITE_P(Keepers, DataFileRecordsTest, ::testing::Values(Keeper::Memory, Keeper::Store),
                         [](const auto& info) { return info.param == Keeper::Memory ? "Memory" : "Store"; });
#else
INSTANTIATE_TEST_SUITE_P(Keepers, DataFileRecordsTest, ::testing::Values(Keeper::Memory),
                         [](const auto&) { return std::string("Memory"); });
#endif

}  // namespace
}  // namespace parcelon::refhost::test
