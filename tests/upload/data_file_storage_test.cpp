// The upload state in the company file: the DataUpload record through CDataFileStorage and the
// session's four wrappers, against the reference host (faults, the held lock) and, off Windows,
// the SQLite company store read and locked by a second process.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UploadTestSupport.h"
#include "upload/DataFileStorage.h"
#include "upload/UploadState.h"
#if PARCELON_HAVE_SQLITE
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace parcelon::test {
namespace {

const std::string kRecord = "Orvane:NetworkAdapter:DataUpload";
const std::string kWritePrefix = "NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT): ";
const std::string kReadPrefix = "NetworkAdapterManager:CDataFileStorage::ReadProperty(const char*, VARIANT*): ";
const std::string kInitPrefix = "NetworkAdapterManager:CDataFileStorage::InitDFRPointer(): ";
const std::string kSelectPrefix = "NetworkAdapterManager:CDataFileStorage::SelectDFR(const char*, long): ";
const std::string kStoreTokenPrefix = "Parcelon:CNA_Forms::StoreLastDataUploadToken(OLAString): ";
const std::string kRetrieveTokenPrefix = "Parcelon:CNA_Forms::RetrieveLastDataUploadToken(OLAString*): ";
const std::string kStoreTimePrefix = "Parcelon:CNA_Forms::StoreLastClientDataUploadTime(time_t): ";
const std::string kRetrieveTimePrefix = "Parcelon:CNA_Forms::RetrieveLastClientDataUploadTime(OLAString*): ";
const std::string kTokenNotWritten = "Failed to write last data upload token \"T-7\" to the data file.";

constexpr char kEmptyCompany[] = "{}";

std::string Token() {
  OLAString token;
  EXPECT_EQ(S_OK, upload::RetrieveLastDataUploadToken(&token));
  return token.GetText();
}

LONG Time() {
  LONG time = -1;
  EXPECT_EQ(S_OK, upload::RetrieveLastClientDataUploadTime(&time));
  return time;
}

class DataFileStorageTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    UseCompany(kEmptyCompany);
  }

  bool RecordExists() {
    IDataFileRecordsPtr records;
    EXPECT_EQ(S_OK, CompanyFile()->GetDataFileRecords(records.ReleaseAndGetAddressOf()));
    VARIANT_BOOL exists = VARIANT_FALSE;
    EXPECT_EQ(S_OK, records->Exists(MakeBstr(kRecord).Get(), &exists));
    return exists != VARIANT_FALSE;
  }
};

TEST_F(DataFileStorageTest, ACompanyThatNeverUploadedReadsTokenZeroAndTimeZeroWithoutARecord) {
  EXPECT_EQ("0", Token());
  EXPECT_EQ(0, Time());
  EXPECT_FALSE(RecordExists()) << "reading never creates the record";
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

TEST_F(DataFileStorageTest, TheFirstWriteCreatesTheRecordAndBothValuesReadBack) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("TOKEN-0042"));
  EXPECT_TRUE(RecordExists());
  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kNow + 1));
  EXPECT_EQ("TOKEN-0042", Token());
  EXPECT_EQ(kNow + 1, Time());
  EXPECT_EQ(std::vector<uint32_t>{}, clock_.sleeps);
}

// The token is data: a token that looks like a format is kept, read and logged as it stands.
TEST_F(DataFileStorageTest, ATokenIsNeverAFormat) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("%s%n%d \"%Iu\""));
  EXPECT_EQ("%s%n%d \"%Iu\"", Token());
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  EXPECT_EQ(E_FAIL, upload::StoreLastDataUploadToken("%n%n%s"));
  EXPECT_EQ(Entry(kStoreTokenPrefix, "Failed to write last data upload token \"%n%n%s\" to the data file."),
            LogEntries().back());
}

// The time is written as a 64-bit value and read back through a 32-bit conversion; an empty value
// (as the attribute removal leaves it) reads 0, a value beyond 32 bits cannot be read.
TEST_F(DataFileStorageTest, TheTimeIsReadBackAsA32BitValue) {
  CDataFileStorage storage;
  ASSERT_EQ(S_OK, storage.SelectDFR(kRecord.c_str(), 1));
  VARIANT empty;
  VariantInit(&empty);
  ASSERT_EQ(S_OK, storage.WriteProperty("LastClientDataUploadTime", empty));
  EXPECT_EQ(0, Time());

  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(time_t(2147483648LL)));
  LONG time = 7;
  EXPECT_EQ(E_FAIL, upload::RetrieveLastClientDataUploadTime(&time));
  EXPECT_EQ(7, time);
  EXPECT_EQ(Entry(kRetrieveTimePrefix, "Failed to read last client data upload time property from data file."),
            LogEntries().back());
}

// A stored time later than now counts as 0, so that a clock that once ran ahead hides nothing;
// an unreadable time counts as 0 too.
TEST_F(DataFileStorageTest, ATimeInTheFutureCountsAsZero) {
  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kNow));
  EXPECT_EQ(kNow, upload::LastClientDataUploadTimeBefore(kNow));
  EXPECT_EQ(0, upload::LastClientDataUploadTimeBefore(kNow - 1));
  Faults().Fail("IDataFilePropertyBag::Read", E_FAIL);
  EXPECT_EQ(0, upload::LastClientDataUploadTimeBefore(kNow));
}

// A lock that another holds stays refused through five tries, 100 ms apart; nothing is written.
TEST_F(DataFileStorageTest, AHeldLockGivesUpAfterFiveTriesAndWritesNothing) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("OLD"));
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  CDataFileStorage storage;
  ASSERT_EQ(S_OK, storage.SelectDFR(kRecord.c_str(), 1));
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_I4;
  value.lVal = 5;
  EXPECT_EQ(CDataFileStorage::kLockRefused, storage.WriteProperty("LastDataUploadToken", value));
  EXPECT_EQ((std::vector<uint32_t>{100, 100, 100, 100}), clock_.sleeps);
  EXPECT_EQ(E_FAIL, upload::StoreLastDataUploadToken("T-7"));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kWritePrefix, "Could not acquire data file record lock in LX.", "0xffffd8f3"),
                Entry(kWritePrefix, "Could not acquire data file record lock in LX.", "0xffffd8f3"),
                Entry(kStoreTokenPrefix, kTokenNotWritten)}),
            LogEntries());
  Faults().Clear();
  EXPECT_EQ("OLD", Token());
}

struct WriteFault {
  const char* operation;
  std::vector<std::string> log;
};

// Each failing step of a write: its own line, the lock given back (a second write succeeds), and
// the wrapper's line; nothing is written.
TEST_F(DataFileStorageTest, EveryFailingStepOfAWriteIsLoggedAndReleasesTheLock) {
  const std::string unlocked = Entry(kWritePrefix, "Failed to unlock data file record in LX.");
  const WriteFault cases[] = {
      {"ICompanyFile::GetDataFileRecords",
       {Entry(kInitPrefix, "Failed to get data file records from company file in LX.")}},
      {"IDataFileRecords::Exists",
       {Entry(kInitPrefix, "Failed to determine if a data file record exists from data file records in LX.")}},
      {"IDataFileRecords::Add", {Entry(kInitPrefix, "Failed to add from data file records in LX.")}},
      {"IDataFileRecord::TryLock", {Entry(kWritePrefix, "Failed to acquire lock for data file record in LX.")}},
      {"IDataFileRecord::GetPropertyBag",
       {Entry(kWritePrefix, "Failed to get property bag from data file record in LX.")}},
      {"IDataFilePropertyBag::Write",
       {Entry(kWritePrefix, "Failed to write property \"LastDataUploadToken\" to property bag in LX.")}},
      {"IDataFileRecord::SetDataVersion",
       {Entry(kWritePrefix, "Failed to put data version to data file record in LX.")}},
      {"IDataFileRecord::Save", {Entry(kWritePrefix, "Failed to save data file record in LX.")}},
  };
  for (const WriteFault& c : cases) {
    SCOPED_TRACE(c.operation);
    StartCase();
    Inject({c.operation, std::nullopt, E_FAIL});
    EXPECT_EQ(E_FAIL, upload::StoreLastDataUploadToken("T-7"));
    std::vector<std::string> expected = c.log;
    expected.push_back(Entry(kStoreTokenPrefix, kTokenNotWritten));
    EXPECT_EQ(expected, LogEntries());
    Faults().Clear();
    EXPECT_EQ("0", Token());
  }
  // A record that exists is taken, not added.
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("T-1"));
  StartCase();
  Inject({"IDataFileRecords::GetItem", std::nullopt, E_FAIL});
  EXPECT_EQ(E_FAIL, upload::StoreLastDataUploadToken("T-7"));
  EXPECT_EQ((std::vector<std::string>{Entry(kInitPrefix, "Failed to ask for item from data file records in LX."),
                                      Entry(kStoreTokenPrefix, kTokenNotWritten)}),
            LogEntries());
}

// After a good Save the value is in the company file: an Unlock that fails is reported, and the
// write counts as done.
TEST_F(DataFileStorageTest, AFailingUnlockAfterAGoodSaveCountsAsDone) {
  Inject({"IDataFileRecord::Unlock", std::nullopt, E_FAIL});
  EXPECT_EQ(S_OK, upload::StoreLastDataUploadToken("T-9"));
  EXPECT_EQ(std::vector<std::string>{Entry(kWritePrefix, "Failed to unlock data file record in LX.")},
            LogEntries());
  Faults().Clear();
  EXPECT_EQ("T-9", Token());
}

TEST_F(DataFileStorageTest, EveryFailingStepOfAReadIsLogged) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("T-1"));
  const std::string noToken = "Failed to read last data upload token property from data file.";
  const WriteFault cases[] = {
      {"IDataFileRecords::GetItem", {Entry(kInitPrefix, "Failed to ask for item from data file records in LX.")}},
      {"IDataFileRecord::GetPropertyBag",
       {Entry(kReadPrefix, "Failed to get property bag from data file record in LX.")}},
      {"IDataFilePropertyBag::Read",
       {Entry(kReadPrefix, "Failed to read property \"LastDataUploadToken\" from property bag in LX.")}},
  };
  for (const WriteFault& c : cases) {
    SCOPED_TRACE(c.operation);
    StartCase();
    Inject({c.operation, std::nullopt, E_FAIL});
    OLAString token("kept");
    EXPECT_EQ(E_FAIL, upload::RetrieveLastDataUploadToken(&token));
    EXPECT_STREQ("kept", token.GetText());
    std::vector<std::string> expected = c.log;
    expected.push_back(Entry(kRetrieveTokenPrefix, noToken));
    EXPECT_EQ(expected, LogEntries());
  }
}

TEST_F(DataFileStorageTest, WithoutTheHostOrItsCompanyNothingIsReached) {
  Host().SetCompanyOpen(false);
  OLAString token;
  EXPECT_EQ(E_FAIL, upload::RetrieveLastDataUploadToken(&token));
  ASSERT_EQ(2u, LogEntries().size());
  EXPECT_EQ(0u, LogEntries()[0].find(kSelectPrefix + "Failed to attach to current company from add-in goodies in LX."));
  EXPECT_EQ(Entry(kRetrieveTokenPrefix, "Failed to access data file for last data upload token."), LogEntries()[1]);
  Host().SetCompanyOpen(true);

  StartCase();
  Inject({"ILXApplication::GetAddInGoodies", std::nullopt, E_FAIL});
  EXPECT_EQ(E_FAIL, upload::StoreLastClientDataUploadTime(kNow));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kSelectPrefix, "Failed to get add-in goodies from LX application."),
                Entry(kStoreTimePrefix, "Failed to access data file for last client data upload time.")}),
            LogEntries());
}

TEST_F(DataFileStorageTest, StorageUsedWithoutSelectionRefuses) {
  CDataFileStorage storage;
  VARIANT value;
  VariantInit(&value);
  EXPECT_EQ(CDataFileStorage::kStorageFailed, storage.WriteProperty("P", value));
  EXPECT_EQ(CDataFileStorage::kStorageFailed, storage.DeleteDFR());
  EXPECT_EQ(E_FAIL, storage.ReadProperty("P", &value));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kWritePrefix, "Must first call SelectDFR() to initialize this class", "0xffffd8f5"),
                Entry("NetworkAdapterManager:CDataFileStorage::DeleteDFR(): ",
                      "Must first call SelectDFR() to initialize this class", "0xffffd8f5"),
                Entry(kReadPrefix, "Must first call SelectDFR() to initialize this class.")}),
            LogEntries());
}

TEST_F(DataFileStorageTest, DeleteRemovesTheRecordUnderItsLock) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("T-1"));
  CDataFileStorage storage;
  ASSERT_EQ(S_OK, storage.SelectDFR(kRecord.c_str(), 1));
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  EXPECT_EQ(CDataFileStorage::kLockRefused, storage.DeleteDFR());
  Faults().Clear();
  ASSERT_EQ(S_OK, storage.DeleteDFR());
  EXPECT_FALSE(RecordExists());
  EXPECT_EQ("0", Token());
}

#if PARCELON_HAVE_SQLITE
// Runs `child` in a second process over the same company store; its text comes back through a pipe.
template <class Child>
std::string InSecondProcess(Child child) {
  int pipeEnds[2];
  if (::pipe(pipeEnds) != 0) return "<no pipe>";
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::close(pipeEnds[0]);
    const std::string text = child();
    (void)!::write(pipeEnds[1], text.data(), text.size());
    ::_exit(0);
  }
  ::close(pipeEnds[1]);
  std::string text;
  char buffer[256];
  for (ssize_t n; (n = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) text.append(buffer, size_t(n));
  ::close(pipeEnds[0]);
  ::waitpid(pid, nullptr, 0);
  return text;
}

class DataFileStoreTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    WriteFile(ScratchFile("company.json"), kEmptyCompany);
    std::string error;
    ASSERT_EQ(S_OK, refhost::ReferenceHost::CreateStore(ScratchFile("company.json"), store_, error)) << error;
    OpenStore();
  }
  void OpenStore() {
    host_.reset();
    host_ = OpenStoreHost(store_, LogFolder());
  }

  const std::string store_ = ScratchFile("company.db");
  std::unique_ptr<refhost::ReferenceHost> host_;
};

TEST_F(DataFileStoreTest, TokenAndTimeSurviveARestartAndAreReadByASecondProcess) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("TOKEN-77"));
  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kNow + 1));
  host_.reset();
  const std::string seen = InSecondProcess([&] {
    OpenStore();
    OLAString token;
    LONG time = 0;
    if (FAILED(upload::RetrieveLastDataUploadToken(&token)) || FAILED(upload::RetrieveLastClientDataUploadTime(&time)))
      return std::string("failed");
    return std::string(token.GetText()) + " " + std::to_string(time);
  });
  EXPECT_EQ("TOKEN-77 " + std::to_string(kNow + 1), seen);
}

TEST_F(DataFileStoreTest, ALockHeldByASecondProcessRefusesTheWrite) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("OLD"));
  int toChild[2], fromChild[2];
  ASSERT_EQ(0, ::pipe(toChild));
  ASSERT_EQ(0, ::pipe(fromChild));
  const pid_t pid = ::fork();
  if (pid == 0) {
    // The child takes the lock, says so, and holds it until the parent closes its pipe.
    ::close(toChild[1]);
    ::close(fromChild[0]);
    OpenStore();
    ICompanyFilePtr file;
    IDataFileRecordsPtr records;
    IDataFileRecordPtr record;
    VARIANT_BOOL locked = VARIANT_FALSE;
    if (SUCCEEDED(host_->GetCompanyFile(file.ReleaseAndGetAddressOf())) &&
        SUCCEEDED(file->GetDataFileRecords(records.ReleaseAndGetAddressOf())) &&
        SUCCEEDED(records->GetItem(MakeBstr(kRecord).Get(), record.ReleaseAndGetAddressOf())))
      record->TryLock(&locked);
    (void)!::write(fromChild[1], locked ? "L" : "R", 1);
    char c;
    while (::read(toChild[0], &c, 1) > 0) {
    }
    ::_exit(0);
  }
  ::close(toChild[0]);
  ::close(fromChild[1]);
  char answer = 0;
  ASSERT_EQ(1, ::read(fromChild[0], &answer, 1));
  ASSERT_EQ('L', answer);
  EXPECT_EQ(E_FAIL, upload::StoreLastDataUploadToken("T-7"));
  EXPECT_EQ((std::vector<uint32_t>{100, 100, 100, 100}), clock_.sleeps);
  EXPECT_EQ((std::vector<std::string>{
                Entry(kWritePrefix, "Could not acquire data file record lock in LX.", "0xffffd8f3"),
                Entry(kStoreTokenPrefix, kTokenNotWritten)}),
            LogEntries());
  ::close(toChild[1]);
  ::waitpid(pid, nullptr, 0);
  ::close(fromChild[0]);
  EXPECT_EQ("OLD", Token());
  EXPECT_EQ(S_OK, upload::StoreLastDataUploadToken("NEW")) << "the lock died with its holder";
}
#endif

}  // namespace
}  // namespace parcelon::test
