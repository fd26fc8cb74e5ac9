// The upload-time stamps: the writer over the records an upload carried, the killer over every
// list record and the last client upload time, their failures with exact log lines through the
// reference host's faults, and the stamps kept by the SQLite company store.
#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <string>
#include <vector>

#include "UploadTestSupport.h"
#include "upload/DataFileStorage.h"
#include "upload/UploadAttributes.h"
#include "upload/UploadState.h"

namespace parcelon::test {
namespace {

constexpr LONG kOld = 1600000000;
// Built at kBuilt; the clock stands later, at kNow.
constexpr int64_t kBuilt = kNow - 60;

// Terms 1 (stamped long ago) and 2 (no stamp); customer 10 with job 11; customer 20; one record
// of each other list kind, all stamped.
constexpr char kCompany[] = R"({
  "terms": [
    {"recNum": 1, "name": "Net 30", "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1600000000}]},
    {"recNum": 2, "name": "Net 60"}
  ],
  "customers": [
    {"recNum": 10, "name": "Siobhan", "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1600000000},
                                                    {"name": "Other", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 7}]},
    {"recNum": 11, "name": "Roof", "parent": 10},
    {"recNum": 20, "name": "Pine", "attributes": [{"name": "ParcelonUploadTime", "owner": "{00000000-0000-0000-0000-000000000000}", "value": 5}]}
  ],
  "classes": [{"recNum": 30, "name": "East", "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1600000000}]}],
  "shipMethods": [{"recNum": 40, "name": "Post", "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1600000000}]}],
  "customerMessages": [{"recNum": 50, "name": "Thanks", "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1600000000}]}],
  "salesReps": [{"recNum": 60, "name": "AB", "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1600000000}]}],
  "items": [{"recNum": 70, "name": "Mulch", "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1600000000}]}]
})";

const std::string kWriter = "Parcelon:CUploadAttributeWriter::UpdateUploadTimeAttributes(): ";
const std::string kTerms = "Parcelon:CUploadAttributeWriter::UpdateTerms(ITermsPtr): ";
const std::string kCustomers = "Parcelon:CUploadAttributeWriter::UpdateCustomerJobs(ICustomersPtr): ";
const std::string kPut = "Parcelon:CUploadAttributeWriter::PutUploadTimeAttribute(IAttributeContainerPtr&): ";
const std::string kKiller = "Parcelon:CUploadAttributeKiller::RemoveAttributes(): ";
const std::string kKillTerms = "Parcelon:CUploadAttributeKiller::RemoveTermAttributes(ITermsPtr): ";
const std::string kKillClasses = "Parcelon:CUploadAttributeKiller::RemoveClassAttributes(IClassesPtr): ";
const std::string kKillCustomers = "Parcelon:CUploadAttributeKiller::RemoveCustomerJobAttributes(ICustomersPtr): ";
const std::string kKillStyles = "Parcelon:CUploadAttributeKiller::RemoveStyleAttributes(): ";
const std::string kPutStyle = "Parcelon:CUploadAttributeWriter::PutStyleUploadTime(long, long): ";
const std::string kWriteProperty = "NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT): ";
const std::string kTermsFailed = "Failed while updating upload time attributes for terms.";

// The stamp of a refhost record: our name and owner's value, or none.
std::optional<LONG> StampOf(const refhost::ListRecord* record) {
  if (!record) return std::nullopt;
  for (const refhost::Attribute& attribute : record->attributes)
    if (attribute.name == u"ParcelonUploadTime" && attribute.owner == u"{54901C71-3408-44fb-9031-7B4BB81D871C}")
      return attribute.value;
  return std::nullopt;
}

class UploadAttributesTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    UseCompany(kCompany);
  }

  std::optional<LONG> Term(LONG recNum) { return StampOf(Host().GetCompany().terms.Find(recNum)); }
  std::optional<LONG> Name(LONG recNum) { return StampOf(Host().GetCompany().names.Find(recNum)); }
  bool Locked(LONG termRecNum) { return Host().GetCompany().terms.Find(termRecNum)->lockedForEdit; }

  // Terms 1 and 2 and customers 10 and 11 sent; customer 20 selected but not sent.
  void MarkUploaded() {
    map_(RecordKind::kTerm, 1) = kMarkSentChanged;
    map_(RecordKind::kTerm, 2) = kMarkSentSelected;
    map_(RecordKind::kCustomerJob, 10) = kMarkSentSelected;
    map_(RecordKind::kCustomerJob, 11) = kMarkSentSelected;
    map_(RecordKind::kCustomerJob, 20) = kMarkUnchanged;
  }

  HRESULT Stamp(int64_t built = kBuilt) {
    return CUploadAttributeWriter(CompanyFile(), map_, built).UpdateUploadTimeAttributes();
  }

  CRecNumMap map_;
};

TEST_F(UploadAttributesTest, TheWriterStampsExactlyTheSentRecordsWithTheBuildTime) {
  MarkUploaded();
  map_(RecordKind::kInvoice, 100) = kMarkSentSelected;
  map_(RecordKind::kTerm, 3) = kMarkInserted;
  ASSERT_EQ(S_OK, Stamp());
  EXPECT_EQ(kBuilt, Term(1));
  EXPECT_EQ(kBuilt, Term(2)) << "a record without a stamp gets one";
  EXPECT_EQ(kBuilt, Name(10));
  EXPECT_EQ(kBuilt, Name(11));
  EXPECT_EQ(std::nullopt, Name(20)) << "selected but not sent";
  EXPECT_EQ(kOld, StampOf(Host().GetCompany().classes.Find(30))) << "a kind the upload did not carry";
  // Another owner's attribute and another attribute of ours stay as they were.
  EXPECT_EQ(5, Host().GetCompany().names.Find(20)->attributes.at(0).value);
  EXPECT_EQ(7, Host().GetCompany().names.Find(10)->attributes.at(1).value);
  EXPECT_FALSE(Locked(1));
  EXPECT_FALSE(Locked(2));
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

TEST_F(UploadAttributesTest, WithoutABuildTimeTheWriterStampsWithTheClock) {
  MarkUploaded();
  ASSERT_EQ(S_OK, CUploadAttributeWriter(CompanyFile(), map_).UpdateUploadTimeAttributes());
  EXPECT_EQ(kNow, Term(1));
}

// A time beyond the 32-bit attribute is held at its bound, never wrapped into the past.
TEST_F(UploadAttributesTest, AStampSaturatesAtTheAttributesRange) {
  struct Case {
    int64_t built;
    LONG stamp;
  };
  const Case cases[] = {
      {int64_t(INT32_MAX) - 1, INT32_MAX - 1}, {int64_t(INT32_MAX), INT32_MAX},    {int64_t(INT32_MAX) + 1, INT32_MAX},
      {int64_t(1) << 40, INT32_MAX},           {INT64_MAX, INT32_MAX},             {0, 0},
      {int64_t(INT32_MIN) - 1, INT32_MIN},     {INT64_MIN, INT32_MIN},
  };
  map_(RecordKind::kTerm, 1) = kMarkSentChanged;
  for (const Case& c : cases) {
    ASSERT_EQ(S_OK, Stamp(c.built)) << c.built;
    EXPECT_EQ(c.stamp, Term(1)) << c.built;
  }
}

// Each fault hits term 1 (or the list, or every record); term 2 and the customers are stamped
// still, and no record stays locked.
TEST_F(UploadAttributesTest, AFailureOnOneRecordIsLoggedAndTheOthersAreStamped) {
  struct Case {
    HostFault fault;
    std::vector<std::string> log;
    bool term1Stamped;
    bool term2Stamped;
    bool customersStamped = true;
  };
  const std::string e = "0x80004005";
  const Case cases[] = {
      {{"ITerm::LockForEdit", 1, E_FAIL},
       {Entry(kTerms, "Failed to lock term(4) for editing."), Entry(kWriter, kTermsFailed)}, false, true},
      {{"ITerm::GetAttributes", 1, E_FAIL},
       {Entry(kTerms, "Failed to get attributes from term(4) in LX."), Entry(kWriter, kTermsFailed)}, false, true},
      {{"IAttributeContainer::FindAttribute", 1, E_OUTOFMEMORY},
       {Entry(kPut, "Failed to find/access our upload time attribute.", "0x8007000e"),
        Entry(kTerms, "Failed to update attributes with current upload time for term.", "0x8007000e"),
        Entry(kWriter, kTermsFailed, "0x8007000e")},
       false, true},
      {{"IAttributeContainer::AddLongAttribute", std::nullopt, E_FAIL},
       {Entry(kPut, "Failed to add new long attribute in LX."),
        Entry(kTerms, "Failed to update attributes with current upload time for term."), Entry(kWriter, kTermsFailed),
        Entry(kPut, "Failed to add new long attribute in LX."),
        Entry(kCustomers, "Failed to update attributes with current upload time for customer."),
        Entry(kWriter, "Failed while updating upload time attributes for customer jobs.")},
       true, false, false},
      {{"ILongAttribute::SetValue", 1, E_FAIL},
       {Entry(kPut, "Failed to put the upload time attribute's new value in LX."),
        Entry(kTerms, "Failed to update attributes with current upload time for term."), Entry(kWriter, kTermsFailed)},
       false, true},
      {{"ITerm::Save", 1, E_FAIL},
       {Entry(kTerms, "Failed to save term(4) after writing to its attributes."), Entry(kWriter, kTermsFailed)},
       true, true},  // in memory the value is set; the store would not have it
      {{"ILists::GetTerms", std::nullopt, E_FAIL}, {Entry(kWriter, kTermsFailed)}, false, false},
      {{"ITerms::GetItemByRecNum", std::nullopt, E_FAIL},
       {Entry(kTerms, "Failed to get term(4) from find in LX."), Entry(kTerms, "Failed to find 1 from terms in LX."),
        Entry(kTerms, "Failed to get term(4) from find in LX."), Entry(kTerms, "Failed to find 2 from terms in LX."),
        Entry(kWriter, kTermsFailed)},
       false, false},
      {{"ICompanyFile::GetLists", std::nullopt, E_FAIL},
       {Entry(kWriter, "Failed to get lists from company file in LX.")}, false, false, false},
  };
  for (const Case& c : cases) {
    UseCompany(kCompany);
    StartCase();
    MarkUploaded();
    Inject(c.fault);
    EXPECT_EQ(c.fault.hr, Stamp()) << c.fault.operation;
    EXPECT_EQ(c.log, LogEntries()) << c.fault.operation;
    EXPECT_EQ(c.term1Stamped, Term(1) == kBuilt) << c.fault.operation;
    EXPECT_EQ(c.term2Stamped, Term(2) == kBuilt) << c.fault.operation;
    EXPECT_EQ(c.customersStamped, Name(10) == kBuilt && Name(11) == kBuilt) << c.fault.operation;
    if (std::string(c.fault.operation) != "ITerm::Save") {
      EXPECT_FALSE(Locked(1)) << c.fault.operation << ": a failure after the lock still ends the edit";
    }
    EXPECT_FALSE(Locked(2)) << c.fault.operation;
  }
}

TEST_F(UploadAttributesTest, ARecordMissingFromItsListIsLoggedWithItsNumber) {
  MarkUploaded();
  Faults().MakeAbsent(refhost::ListKind::Names, 11);
  EXPECT_EQ(LX_E_NOTFOUND, Stamp());
  EXPECT_EQ((std::vector<std::string>{
                Entry(kCustomers, "Failed to get name(4) from find in LX.", "0x80041a00"),
                Entry(kCustomers, "Failed to find 11 from customers in LX.", "0x80041a00"),
                Entry(kWriter, "Failed while updating upload time attributes for customer jobs.", "0x80041a00")}),
            LogEntries());
  EXPECT_EQ(kBuilt, Name(10));
  EXPECT_EQ(kBuilt, Term(1));
}

// ---- The killer -----------------------------------------------------------------------------

class UploadAttributeKillerTest : public UploadAttributesTest {
 protected:
  void SetUp() override {
    UploadAttributesTest::SetUp();
    ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kOld));
    CNALogger::ResetForTesting();
  }

  // Every record that still carries our stamp, as "list recNum".
  std::vector<std::string> Stamped() {
    std::vector<std::string> stamped;
    refhost::Company& company = Host().GetCompany();
    const auto scan = [&](const char* name, auto& list) {
      for (size_t i = 0; i < list.Size(); ++i)
        if (StampOf(&list.At(i))) stamped.push_back(std::string(name) + " " + std::to_string(list.At(i).recNum));
    };
    scan("class", company.classes);
    scan("shipMethod", company.shipMethods);
    scan("customerMessage", company.customerMessages);
    scan("salesRep", company.salesReps);
    scan("term", company.terms);
    scan("name", company.names);
    scan("item", company.items);
    return stamped;
  }

  LONG LastTime() {
    LONG time = -1;
    EXPECT_EQ(S_OK, upload::RetrieveLastClientDataUploadTime(&time));
    return time;
  }

  HRESULT Kill() { return CUploadAttributeKiller(CompanyFile()).RemoveAttributes(); }
};

TEST_F(UploadAttributeKillerTest, RemovesEveryStampOfEveryListAndErasesTheLastClientUploadTime) {
  ASSERT_EQ(S_OK, Kill());
  EXPECT_EQ(std::vector<std::string>{}, Stamped());
  EXPECT_EQ(0, LastTime());
  // Other attributes stay, and records without a stamp are passed over without a word.
  EXPECT_EQ(7, Host().GetCompany().names.Find(10)->attributes.at(0).value);
  EXPECT_EQ(5, Host().GetCompany().names.Find(20)->attributes.at(0).value);
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

TEST_F(UploadAttributeKillerTest, AFailureIsLoggedTheOtherStampsGoAndTheTimeIsErasedAllTheSame) {
  struct Case {
    HostFault fault;
    std::vector<std::string> log;
    std::vector<std::string> stamped;
  };
  const Case cases[] = {
      {{"ICompanyFile::GetLists", std::nullopt, E_FAIL},
       {Entry(kKiller, "Failed to get lists from company file in LX.")},
       {"class 30", "shipMethod 40", "customerMessage 50", "salesRep 60", "term 1", "name 10", "item 70"}},
      {{"ILists::GetClasses", std::nullopt, E_FAIL}, {Entry(kKiller, "Failed to get classes from lists in LX.")},
       {"class 30"}},
      {{"ILists::GetCustomers", std::nullopt, E_FAIL}, {Entry(kKiller, "Failed to get customers from lists in LX.")},
       {"name 10"}},
      {{"ITerms::GetCount", std::nullopt, E_FAIL}, {Entry(kKillTerms, "Failed to get count from terms in LX.")},
       {"term 1"}},
      {{"IClasses::GetItem", std::nullopt, E_FAIL}, {Entry(kKillClasses, "Failed to get record number from class in LX.")},
       {"class 30"}},
      {{"IClass::GetRecNum", 30, E_FAIL}, {Entry(kKillClasses, "Failed to get record number from class in LX.")},
       {"class 30"}},
      {{"ITerm::GetAttributes", 1, E_FAIL}, {Entry(kKillTerms, "Failed to get attributes from term(4) in LX.")},
       {"term 1"}},
      {{"IAttributeContainer::FindAttribute", 10, E_FAIL},
       {Entry(kKillCustomers, "Failed to find upload time attribute in LX for customer.")}, {"name 10"}},
      {{"IAttributeContainer::RemoveAttribute", 1, E_FAIL},
       {Entry(kKillTerms, "Failed to remove upload time attribute in LX for term.")}, {"term 1"}},
  };
  for (const Case& c : cases) {
    UseCompany(kCompany);
    ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kOld));
    StartCase();
    Inject(c.fault);
    EXPECT_EQ(c.fault.hr, Kill()) << c.fault.operation;
    EXPECT_EQ(c.log, LogEntries()) << c.fault.operation;
    EXPECT_EQ(c.stamped, Stamped()) << c.fault.operation;
    Faults().Clear();
    EXPECT_EQ(0, LastTime()) << c.fault.operation << ": erased even though removal stopped part way";
  }
}

TEST_F(UploadAttributeKillerTest, ATimeThatCannotBeErasedFailsWithItsLines) {
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  EXPECT_EQ(E_FAIL, Kill());
  EXPECT_EQ((std::vector<std::string>{Entry(kWriteProperty, "Could not acquire data file record lock in LX.",
                                            HexCode(CDataFileStorage::kLockRefused)),
                                      Entry(kKiller, "Failed to erase last client data upload time in the data file.")}),
            LogEntries());
  EXPECT_EQ(std::vector<std::string>{}, Stamped()) << "the stamps went before the time was tried";
  Faults().Clear();
  EXPECT_EQ(kOld, LastTime());
}

// ---- Style upload times ---------------------------------------------------------------------

TEST_F(UploadAttributesTest, StyleUploadTimesAreWrittenPerStyleAndDeletedWhole) {
  ASSERT_EQ(S_OK, CUploadAttributeWriter(CompanyFile(), map_).PutStyleUploadTime(3, kOld));
  CDataFileStorage storage;
  ASSERT_EQ(S_OK, storage.SelectDFR("Orvane:NetworkAdapter:Parcelon:StyleUploadTimes", 1));
  VARIANT value;
  VariantInit(&value);
  ASSERT_EQ(S_OK, storage.ReadProperty("3", &value));
  EXPECT_EQ(VT_I4, value.vt);
  EXPECT_EQ(kOld, value.lVal);
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());

  ASSERT_EQ(S_OK, CUploadAttributeKiller(CompanyFile()).RemoveStyleAttributes());
  EXPECT_EQ(std::vector<std::string>{Entry(kKillStyles, "Successfully deleted upload time attribute for all styles.",
                                           "0")},
            LogEntries());

  StartCase();
  Faults().HoldLock(u"Orvane:NetworkAdapter:Parcelon:StyleUploadTimes");
  EXPECT_EQ(E_FAIL, CUploadAttributeWriter(CompanyFile(), map_).PutStyleUploadTime(3, kOld));
  EXPECT_EQ(E_FAIL, CUploadAttributeKiller(CompanyFile()).RemoveStyleAttributes());
  EXPECT_EQ((std::vector<std::string>{
                Entry(kWriteProperty, "Could not acquire data file record lock in LX.",
                      HexCode(CDataFileStorage::kLockRefused)),
                Entry(kPutStyle, "Failed to write property to data file for style upload time."),
                Entry("NetworkAdapterManager:CDataFileStorage::DeleteDFR(): ", "Could not acquire data file record lock in LX.",
                      HexCode(CDataFileStorage::kLockRefused)),
                Entry(kKillStyles, "Failed to delete data file record for style upload times.")}),
            LogEntries());
}

// ---- The SQLite company store --------------------------------------------------------------

#if PARCELON_HAVE_SQLITE
class UploadAttributesStoreTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    WriteFile(ScratchFile("company.json"), kCompany);
    std::string error;
    ASSERT_EQ(S_OK, refhost::ReferenceHost::CreateStore(ScratchFile("company.json"), store_, error)) << error;
    Reopen();
  }
  void TearDown() override {
    host_.reset();
    UploadTest::TearDown();
  }
  // A new host of the store, as a restart of the application gives it.
  void Reopen() {
    host_.reset();
    host_ = OpenStoreHost(store_, LogFolder());
    ASSERT_TRUE(host_);
  }
  // Empties the log for the next case.
  void StartCaseLog() {
    CNALogger::ResetForTesting();
    std::remove((LogFolder() + "NALog.log").c_str());
  }
  ICompanyFilePtr File() {
    ICompanyFilePtr file;
    EXPECT_EQ(S_OK, host_->GetCompanyFile(file.ReleaseAndGetAddressOf()));
    return file;
  }
  std::vector<std::optional<LONG>> Stamps() {
    refhost::Company& company = host_->GetCompany();
    return {StampOf(company.terms.Find(1)), StampOf(company.terms.Find(2)), StampOf(company.names.Find(10)),
            StampOf(company.names.Find(11)), StampOf(company.items.Find(70))};
  }

  const std::string store_ = ScratchFile("company.db");
  std::unique_ptr<refhost::ReferenceHost> host_;
};

TEST_F(UploadAttributesStoreTest, StampsAndTheirRemovalSurviveAReopen) {
  CRecNumMap map;
  map(RecordKind::kTerm, 2) = kMarkSentSelected;
  map(RecordKind::kCustomerJob, 11) = kMarkSentChanged;
  ASSERT_EQ(S_OK, CUploadAttributeWriter(File(), map, kBuilt).UpdateUploadTimeAttributes());
  Reopen();
  const std::vector<std::optional<LONG>> stamped = {kOld, LONG(kBuilt), kOld, LONG(kBuilt), kOld};
  EXPECT_EQ(stamped, Stamps());

  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kBuilt + 1));
  ASSERT_EQ(S_OK, CUploadAttributeKiller(File()).RemoveAttributes());
  Reopen();
  EXPECT_EQ(std::vector<std::optional<LONG>>(5), Stamps());
  LONG time = -1;
  EXPECT_EQ(S_OK, upload::RetrieveLastClientDataUploadTime(&time));
  EXPECT_EQ(0, time);
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

// The stamps of a pass are one write of the store: when it does not go through, none of them is
// kept, although each record's save succeeded.
TEST_F(UploadAttributesStoreTest, TheStampsOfAPassReachTheStoreTogetherOrNotAtAll) {
  CRecNumMap map;
  map(RecordKind::kTerm, 1) = kMarkSentSelected;
  map(RecordKind::kTerm, 2) = kMarkSentSelected;
  map(RecordKind::kCustomerJob, 11) = kMarkSentChanged;
  ASSERT_TRUE(host_->GetFaults().Fail("ICompanyFile3::EndWrites", E_FAIL));
  EXPECT_EQ(E_FAIL, CUploadAttributeWriter(File(), map, kBuilt).UpdateUploadTimeAttributes());
  EXPECT_EQ(std::vector<std::string>{Entry(kWriter, "Failed to end the writes of upload time attributes in LX.")},
            LogEntries());
  host_->GetFaults().Clear();
  Reopen();
  EXPECT_EQ((std::vector<std::optional<LONG>>{kOld, std::nullopt, kOld, std::nullopt, kOld}), Stamps());

  // A host that cannot group the writes keeps each record's save.
  StartCaseLog();
  ASSERT_TRUE(host_->GetFaults().Fail("ICompanyFile3::BeginWrites", E_FAIL));
  EXPECT_EQ(S_OK, CUploadAttributeWriter(File(), map, kBuilt).UpdateUploadTimeAttributes());
  EXPECT_EQ(std::vector<std::string>{Entry(kWriter, "Failed to begin the writes of upload time attributes in LX.")},
            LogEntries());
  host_->GetFaults().Clear();
  Reopen();
  EXPECT_EQ((std::vector<std::optional<LONG>>{LONG(kBuilt), LONG(kBuilt), kOld, LONG(kBuilt), kOld}), Stamps());
}
#endif

}  // namespace
}  // namespace parcelon::test
