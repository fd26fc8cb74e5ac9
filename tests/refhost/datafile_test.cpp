// Data file records through the host's interfaces, kept in memory and (off Windows) in a company
// store: the component's write protocol, value types, the record lock, unsaved values, faults.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "host/DataFile.h"
#include "platform/Bstr.h"
#include "platform/ComPtr.h"
#include "refhost/CompanyData.h"
#include "refhost/DataFileObjects.h"
#include "refhost/DataFileStore.h"
#include "support/TestSupport.h"
#if PARCELON_HAVE_SQLITE
#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost {
namespace {

using test::MakeBstr;

// A VARIANT that owns its value.
struct Var : VARIANT {
  Var() { VariantInit(this); }
  ~Var() { VariantClear(this); }
  Var(const Var&) = delete;
  Var& operator=(const Var&) = delete;

  static Var Str(const std::string& utf8) {
    Var v;
    v.vt = VT_BSTR;
    v.bstrVal = MakeBstr(utf8).Detach();
    return v;
  }
  static Var I4(LONG value) {
    Var v;
    v.vt = VT_I4;
    v.lVal = value;
    return v;
  }
  Var(Var&& other) noexcept : VARIANT(other) { VariantInit(&other); }
};

std::string Utf8(BSTR text) { return TextToUtf8(FromBstr(text)); }

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

  // The record `name`, taken or added as the component does: Exists, then GetItem or Add.
  IDataFileRecordPtr Take(const IDataFileRecordsPtr& records, const std::string& name) {
    VARIANT_BOOL exists = VARIANT_FALSE;
    EXPECT_EQ(S_OK, records->Exists(MakeBstr(name).Get(), &exists));
    IDataFileRecordPtr record;
    if (exists)
      EXPECT_EQ(S_OK, records->GetItem(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf()));
    else
      EXPECT_EQ(S_OK, records->Add(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf()));
    return record;
  }

  // Writes one property as the component does: lock, bag, write, data version 1, save, unlock.
  void WriteAsComponent(const std::string& name, const std::string& property, const VARIANT& value) {
    IDataFileRecordPtr record = Take(Records(), name);
    ASSERT_TRUE(record);
    VARIANT_BOOL locked = VARIANT_FALSE;
    ASSERT_EQ(S_OK, record->TryLock(&locked));
    ASSERT_EQ(VARIANT_TRUE, locked);
    IDataFilePropertyBagPtr bag;
    ASSERT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
    ASSERT_EQ(S_OK, bag->Write(MakeBstr(property).Get(), value));
    ASSERT_EQ(S_OK, record->SetDataVersion(1));
    ASSERT_EQ(S_OK, record->Save());
    ASSERT_EQ(S_OK, record->Unlock());
  }

  // Reads one property through a fresh records object, as the component does (no lock).
  Var ReadProperty(const std::string& name, const std::string& property, HRESULT expected = S_OK) {
    Var value;
    IDataFileRecordPtr record;
    EXPECT_EQ(S_OK, Records()->GetItem(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf()));
    if (!record) return value;
    IDataFilePropertyBagPtr bag;
    EXPECT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
    EXPECT_EQ(expected, bag->Read(MakeBstr(property).Get(), &value));
    return value;
  }

  static bool TryLock(const IDataFileRecordPtr& record) {
    VARIANT_BOOL locked = VARIANT_FALSE;
    EXPECT_EQ(S_OK, record->TryLock(&locked));
    return locked == VARIANT_TRUE;
  }

  static const std::string kRecord;
  static const std::string kToken;

#if PARCELON_HAVE_SQLITE
  test::ScratchFolder folder_;
#endif
  std::shared_ptr<Company> company_;
};

const std::string DataFileRecordsTest::kRecord = "Orvane:NetworkAdapter:DataUpload";
const std::string DataFileRecordsTest::kToken = "LastDataUploadToken";

TEST_P(DataFileRecordsTest, FirstWriteAddsTheRecordThenKeepsTheProperty) {
  VARIANT_BOOL exists = VARIANT_TRUE;
  ASSERT_EQ(S_OK, Records()->Exists(MakeBstr(kRecord).Get(), &exists));
  EXPECT_EQ(VARIANT_FALSE, exists);

  WriteAsComponent(kRecord, kToken, Var::Str("T-42"));

  ASSERT_EQ(S_OK, Records()->Exists(MakeBstr(kRecord).Get(), &exists));
  EXPECT_EQ(VARIANT_TRUE, exists);
  const Var value = ReadProperty(kRecord, kToken);
  ASSERT_EQ(VT_BSTR, value.vt);
  EXPECT_EQ("T-42", Utf8(value.bstrVal));

  IDataFileRecordPtr record;
  ASSERT_EQ(S_OK, Records()->GetItem(MakeBstr(kRecord).Get(), record.ReleaseAndGetAddressOf()));
  LONG version = 0;
  ASSERT_EQ(S_OK, record->GetDataVersion(&version));
  EXPECT_EQ(1, version);
  Bstr name;
  ASSERT_EQ(S_OK, record->GetName(name.Out()));
  EXPECT_EQ(kRecord, Utf8(name.Get()));
}

TEST_P(DataFileRecordsTest, AddedRecordIsEmptyOfDataVersionZero) {
  IDataFileRecordPtr record;
  ASSERT_EQ(S_OK, Records()->Add(MakeBstr(kRecord).Get(), record.ReleaseAndGetAddressOf()));
  LONG version = -1;
  ASSERT_EQ(S_OK, record->GetDataVersion(&version));
  EXPECT_EQ(0, version);
  EXPECT_EQ(VT_EMPTY, ReadProperty(kRecord, kToken).vt);
}

// Each value type the component writes comes back with its type and value.
struct ValueCase {
  const char* label;
  VARTYPE type;
  LONGLONG integer;
  double real;
  const char* text;
};

TEST_P(DataFileRecordsTest, ValuesKeepTheirTypes) {
  const ValueCase cases[] = {
      {"I4", VT_I4, -2147483647 - 1, 0, nullptr},
      {"I8", VT_I8, 1700000001LL * 1000, 0, nullptr},
      {"BOOL", VT_BOOL, VARIANT_TRUE, 0, nullptr},
      {"R8", VT_R8, 0, -0.125, nullptr},
      {"DATE", VT_DATE, 0, 45123.75, nullptr},
      {"BSTR", VT_BSTR, 0, 0, "Caf\xC3\xA9 \xE2\x80\x99 \xF0\x9F\x93\xA6 <&>"},
      {"empty BSTR", VT_BSTR, 0, 0, ""},
  };
  for (const ValueCase& c : cases) {
    SCOPED_TRACE(c.label);
    Var value;
    value.vt = c.type;
    if (c.type == VT_BSTR)
      value.bstrVal = MakeBstr(c.text).Detach();
    else if (c.type == VT_R8 || c.type == VT_DATE)
      value.dblVal = c.real;
    else if (c.type == VT_BOOL)
      value.boolVal = VARIANT_BOOL(c.integer);
    else if (c.type == VT_I4)
      value.lVal = LONG(c.integer);
    else
      value.llVal = c.integer;
    WriteAsComponent(kRecord, c.label, value);

    const Var back = ReadProperty(kRecord, c.label);
    ASSERT_EQ(c.type, back.vt);
    if (c.type == VT_BSTR)
      EXPECT_EQ(c.text, Utf8(back.bstrVal));
    else if (c.type == VT_R8 || c.type == VT_DATE)
      EXPECT_EQ(c.real, back.dblVal);
    else if (c.type == VT_BOOL)
      EXPECT_EQ(VARIANT_BOOL(c.integer), back.boolVal);
    else if (c.type == VT_I4)
      EXPECT_EQ(c.integer, back.lVal);
    else
      EXPECT_EQ(c.integer, back.llVal);
  }
}

TEST_P(DataFileRecordsTest, TextWithEmbeddedNulKeepsItsLength) {
  Var value;
  value.vt = VT_BSTR;
  const OLECHAR text[] = {'a', 0, 'b'};
  value.bstrVal = SysAllocStringLen(text, 3);
  WriteAsComponent(kRecord, kToken, value);
  const Var back = ReadProperty(kRecord, kToken);
  ASSERT_EQ(VT_BSTR, back.vt);
  ASSERT_EQ(3u, SysStringLen(back.bstrVal));
  EXPECT_EQ(0, back.bstrVal[1]);
  EXPECT_EQ('b', back.bstrVal[2]);
}

TEST_P(DataFileRecordsTest, WritingEmptyErasesTheProperty) {
  WriteAsComponent(kRecord, "LastClientDataUploadTime", Var::I4(1700000000));
  WriteAsComponent(kRecord, "LastClientDataUploadTime", Var());
  EXPECT_EQ(VT_EMPTY, ReadProperty(kRecord, "LastClientDataUploadTime").vt);
}

TEST_P(DataFileRecordsTest, TypesTheRecordsDoNotKeepAreRefused) {
  IDataFileRecordPtr record = Take(Records(), kRecord);
  IDataFilePropertyBagPtr bag;
  ASSERT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
  for (const VARTYPE type : {VT_NULL, VT_DECIMAL, VT_UNKNOWN, VT_ERROR}) {
    SCOPED_TRACE(type);
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    EXPECT_EQ(DISP_E_BADVARTYPE, bag->Write(MakeBstr(kToken).Get(), value));
  }
}

TEST_P(DataFileRecordsTest, HugeValueIsRefusedWithoutHarm) {
  IDataFileRecordPtr record = Take(Records(), kRecord);
  ASSERT_TRUE(TryLock(record));
  IDataFilePropertyBagPtr bag;
  ASSERT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
  Var huge;
  huge.vt = VT_BSTR;
  huge.bstrVal = SysAllocStringLen(nullptr, 50u << 20);  // 100 MB of text
  ASSERT_NE(nullptr, huge.bstrVal);
  EXPECT_EQ(E_INVALIDARG, bag->Write(MakeBstr(kToken).Get(), huge));
  Var longest;
  longest.vt = VT_BSTR;
  longest.bstrVal = SysAllocStringLen(nullptr, UINT(kMaxPropertyBytes / 2));
  ASSERT_NE(nullptr, longest.bstrVal);
  std::fill_n(longest.bstrVal, kMaxPropertyBytes / 2, OLECHAR('x'));
  EXPECT_EQ(S_OK, bag->Write(MakeBstr(kToken).Get(), longest));
  ASSERT_EQ(S_OK, record->Save());
  EXPECT_EQ(kMaxPropertyBytes / 2, SysStringLen(ReadProperty(kRecord, kToken).bstrVal));
}

TEST_P(DataFileRecordsTest, UnsavedValuesStayWithTheirRecordObject) {
  WriteAsComponent(kRecord, kToken, Var::Str("saved"));
  IDataFileRecordPtr record = Take(Records(), kRecord);
  ASSERT_TRUE(TryLock(record));
  IDataFilePropertyBagPtr bag;
  ASSERT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, bag->Write(MakeBstr(kToken).Get(), Var::Str("unsaved")));
  ASSERT_EQ(S_OK, record->SetDataVersion(7));

  // The writer sees its own values, through this bag and a new one; nobody else does.
  Var own;
  ASSERT_EQ(S_OK, bag->Read(MakeBstr(kToken).Get(), &own));
  EXPECT_EQ("unsaved", Utf8(own.bstrVal));
  EXPECT_EQ("saved", Utf8(ReadProperty(kRecord, kToken).bstrVal));
  IDataFileRecordPtr other;
  ASSERT_EQ(S_OK, Records()->GetItem(MakeBstr(kRecord).Get(), other.ReleaseAndGetAddressOf()));
  LONG version = 0;
  ASSERT_EQ(S_OK, other->GetDataVersion(&version));
  EXPECT_EQ(1, version);

  // Released without Save: the values are gone, and so is the lock.
  bag.Reset();
  record.Reset();
  EXPECT_EQ("saved", Utf8(ReadProperty(kRecord, kToken).bstrVal));
  EXPECT_TRUE(TryLock(other));
}

TEST_P(DataFileRecordsTest, ReadsSeeWhatOthersSavedSinceTheRecordWasTaken) {
  WriteAsComponent(kRecord, kToken, Var::Str("first"));
  IDataFileRecordPtr reader;
  ASSERT_EQ(S_OK, Records()->GetItem(MakeBstr(kRecord).Get(), reader.ReleaseAndGetAddressOf()));
  IDataFilePropertyBagPtr bag;
  ASSERT_EQ(S_OK, reader->GetPropertyBag(bag.ReleaseAndGetAddressOf()));

  WriteAsComponent(kRecord, kToken, Var::Str("second"));
  Var value;
  ASSERT_EQ(S_OK, bag->Read(MakeBstr(kToken).Get(), &value));
  EXPECT_EQ("second", Utf8(value.bstrVal));
}

TEST_P(DataFileRecordsTest, SaveAndDeleteNeedTheLock) {
  WriteAsComponent(kRecord, kToken, Var::Str("kept"));
  IDataFileRecordPtr record = Take(Records(), kRecord);
  IDataFilePropertyBagPtr bag;
  ASSERT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, bag->Write(MakeBstr(kToken).Get(), Var::Str("unlocked write")));
  EXPECT_EQ(E_ACCESSDENIED, record->Save());
  EXPECT_EQ(E_ACCESSDENIED, record->Delete());
  EXPECT_EQ(S_FALSE, record->Unlock());
  EXPECT_EQ("kept", Utf8(ReadProperty(kRecord, kToken).bstrVal));
}

TEST_P(DataFileRecordsTest, LockHasOneHolderAtATime) {
  IDataFileRecordsPtr records = Records();
  IDataFileRecordPtr first = Take(records, kRecord);
  IDataFileRecordPtr second = Take(records, kRecord);
  IDataFileRecordPtr elsewhere = Take(records, "Orvane:NetworkAdapter:Parcelon:StyleUploadTimes");

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
  IDataFileRecordPtr record = Take(Records(), kRecord);
  EXPECT_FALSE(TryLock(record));
  EXPECT_EQ(E_ACCESSDENIED, record->Save());
  EXPECT_TRUE(TryLock(Take(Records(), "Another")));
}

TEST_P(DataFileRecordsTest, DeleteRemovesTheRecordAndItsValues) {
  WriteAsComponent(kRecord, kToken, Var::Str("gone soon"));
  IDataFileRecordPtr record = Take(Records(), kRecord);
  ASSERT_TRUE(TryLock(record));
  ASSERT_EQ(S_OK, record->Delete());
  EXPECT_EQ(S_OK, record->Unlock());

  VARIANT_BOOL exists = VARIANT_TRUE;
  ASSERT_EQ(S_OK, Records()->Exists(MakeBstr(kRecord).Get(), &exists));
  EXPECT_EQ(VARIANT_FALSE, exists);
  IDataFileRecordPtr missing;
  EXPECT_EQ(LX_E_NOTFOUND,
            Records()->GetItem(MakeBstr(kRecord).Get(), missing.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(missing);
  IDataFileRecordPtr added = Take(Records(), kRecord);
  EXPECT_EQ(VT_EMPTY, ReadProperty(kRecord, kToken).vt) << "a new record starts empty";
}

TEST_P(DataFileRecordsTest, AddingATakenNameFails) {
  IDataFileRecordPtr record;
  ASSERT_EQ(S_OK, Records()->Add(MakeBstr(kRecord).Get(), record.ReleaseAndGetAddressOf()));
  IDataFileRecordPtr again;
  EXPECT_EQ(kAlreadyExists,
            Records()->Add(MakeBstr(kRecord).Get(), again.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(again);
}

// A fault set for one operation fails that operation and no other.
TEST_P(DataFileRecordsTest, FaultFailsExactlyTheNamedOperation) {
  const std::vector<std::string> operations = {
      "IDataFileRecords::Exists",       "IDataFileRecords::GetItem",
      "IDataFileRecords::Add",          "IDataFileRecord::GetName",
      "IDataFileRecord::TryLock",       "IDataFileRecord::GetPropertyBag",
      "IDataFilePropertyBag::Write",    "IDataFilePropertyBag::Read",
      "IDataFileRecord::SetDataVersion", "IDataFileRecord::GetDataVersion",
      "IDataFileRecord::Save",          "IDataFileRecord::Unlock",
      "IDataFileRecord::Delete",
  };
  constexpr HRESULT kInjected = static_cast<HRESULT>(0x80041A77);
  for (const std::string& failing : operations) {
    SCOPED_TRACE(failing);
    company_->faults.Clear();
    ASSERT_TRUE(company_->faults.Fail(failing, kInjected));
    const std::string name = "record for " + failing;
    auto expect = [&](const std::string& operation) {
      return operation == failing ? kInjected : S_OK;
    };
    IDataFileRecordsPtr records = Records();
    VARIANT_BOOL exists = VARIANT_FALSE;
    EXPECT_EQ(expect("IDataFileRecords::Exists"),
              records->Exists(MakeBstr(name).Get(), &exists));
    IDataFileRecordPtr record;
    EXPECT_EQ(expect("IDataFileRecords::Add"),
              records->Add(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf()));
    if (failing == "IDataFileRecords::Add") {
      company_->faults.Clear();
      ASSERT_EQ(S_OK, records->Add(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf()));
      ASSERT_TRUE(company_->faults.Fail(failing, kInjected));
    }
    EXPECT_EQ(expect("IDataFileRecords::GetItem"),
              records->GetItem(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf()));
    if (!record) {
      company_->faults.Clear();
      ASSERT_EQ(S_OK, records->GetItem(MakeBstr(name).Get(), record.ReleaseAndGetAddressOf()));
      ASSERT_TRUE(company_->faults.Fail(failing, kInjected));
    }
    Bstr gotName;
    EXPECT_EQ(expect("IDataFileRecord::GetName"), record->GetName(gotName.Out()));
    VARIANT_BOOL locked = VARIANT_FALSE;
    EXPECT_EQ(expect("IDataFileRecord::TryLock"), record->TryLock(&locked));
    IDataFilePropertyBagPtr bag;
    EXPECT_EQ(expect("IDataFileRecord::GetPropertyBag"),
              record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
    company_->faults.Clear();
    // What the failing step would have done, so that the later steps can run.
    if (!locked) {
      ASSERT_TRUE(TryLock(record));
    }
    if (!bag) {
      ASSERT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
    }
    ASSERT_TRUE(company_->faults.Fail(failing, kInjected));

    EXPECT_EQ(expect("IDataFilePropertyBag::Write"),
              bag->Write(MakeBstr(kToken).Get(), Var::Str("v")));
    Var value;
    EXPECT_EQ(expect("IDataFilePropertyBag::Read"), bag->Read(MakeBstr(kToken).Get(), &value));
    EXPECT_EQ(expect("IDataFileRecord::SetDataVersion"), record->SetDataVersion(1));
    LONG version = 0;
    EXPECT_EQ(expect("IDataFileRecord::GetDataVersion"), record->GetDataVersion(&version));
    EXPECT_EQ(expect("IDataFileRecord::Save"), record->Save());
    EXPECT_EQ(expect("IDataFileRecord::Delete"), record->Delete());
    EXPECT_EQ(expect("IDataFileRecord::Unlock"), record->Unlock());
  }
}

TEST_P(DataFileRecordsTest, NullOutParametersAreRefused) {
  IDataFileRecordsPtr records = Records();
  EXPECT_EQ(E_POINTER, records->Exists(MakeBstr(kRecord).Get(), nullptr));
  EXPECT_EQ(E_POINTER, records->Add(MakeBstr(kRecord).Get(), nullptr));
  EXPECT_EQ(E_POINTER, records->GetItem(MakeBstr(kRecord).Get(), nullptr));
  IDataFileRecordPtr record = Take(records, kRecord);
  EXPECT_EQ(E_POINTER, record->TryLock(nullptr));
  EXPECT_EQ(E_POINTER, record->GetDataVersion(nullptr));
  EXPECT_EQ(E_POINTER, record->GetPropertyBag(nullptr));
  IDataFilePropertyBagPtr bag;
  ASSERT_EQ(S_OK, record->GetPropertyBag(bag.ReleaseAndGetAddressOf()));
  EXPECT_EQ(E_POINTER, bag->Read(MakeBstr(kToken).Get(), nullptr));
}

#if PARCELON_HAVE_SQLITE
INSTANTIATE_TEST_SUITE_P(Keepers, DataFileRecordsTest,
                         ::testing::Values(Keeper::Memory, Keeper::Store),
                         [](const auto& info) {
                           return info.param == Keeper::Memory ? "Memory" : "Store";
                         });
#else
INSTANTIATE_TEST_SUITE_P(Keepers, DataFileRecordsTest, ::testing::Values(Keeper::Memory),
                         [](const auto&) { return std::string("Memory"); });
#endif

}  // namespace
}  // namespace parcelon::refhost
