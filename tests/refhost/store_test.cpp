// The company store: round trips through the file, what a second process sees, the record lock
// across processes and after its holder dies, and the files the store refuses untouched.
//
// The second process is this test binary run again with a filter selecting StoreChild.Run, which
// plays the role named in its environment; the processes talk through pipes.
#if PARCELON_HAVE_SQLITE

#include <fcntl.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "CompanyTestSupport.h"
#include "refhost/CompanyStore.h"

namespace parcelon::refhost::test {
namespace {

const char kFixture[] = R"({"company": {"name": "Caf\u00e9 & Sons \u2019"}, "customers": []})";
const std::string kRecord = "Orvane:NetworkAdapter:DataUpload";
const std::string kToken = "LastDataUploadToken";
const Text kUploadTime = u"ParcelonUploadTime";
const Text kOwner = u"{54901C71-3408-44fb-9031-7B4BB81D871C}";

// The message of the StoreError that `action` throws; empty when it throws none.
template <class Action>
std::string ErrorOf(Action&& action) {
  try {
    action();
  } catch (const StoreError& error) {
    return error.what();
  }
  return {};
}

// Runs raw SQL on a database file, outside the store.
void RunSql(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &db));
  char* message = nullptr;
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message))
      << (message ? message : "");
  sqlite3_free(message);
  sqlite3_close(db);
}

std::shared_ptr<Company> CompanyOver(std::shared_ptr<CompanyStore> store) {
  auto company = std::make_shared<Company>();
  company->store = std::move(store);
  return company;
}

bool WriteToken(const CompanyPtr& company, const std::string& token) {
  return WriteAsComponent(company, kRecord, kToken, Var::Str(token));
}

// Stored attributes as "names 7: name owner value, ...; terms 2: ; ...".
std::string Describe(const std::vector<StoredAttributes>& stored) {
  std::string text;
  for (const StoredAttributes& record : stored) {
    text += std::string(ListName(record.list)) + " " + std::to_string(record.recNum) + ":";
    for (const Attribute& a : record.attributes)
      text += " " + TextToUtf8(a.name) + " " + TextToUtf8(a.owner) + " " + std::to_string(a.value);
    text += "; ";
  }
  return text;
}

// Stored fields as "names 7 email=json; ...".
std::string Describe(const std::vector<StoredRecordField>& fields) {
  std::string text;
  for (const StoredRecordField& f : fields)
    text += std::string(ListName(f.list)) + " " + std::to_string(f.recNum) + " " + f.field.name +
            "=" + f.field.json + "; ";
  return text;
}

// ---------------------------------------------------------------------------------------------
// The second process.

constexpr char kRoleVariable[] = "PARCELON_STORE_CHILD";
constexpr char kStoreVariable[] = "PARCELON_STORE_CHILD_STORE";
constexpr char kInVariable[] = "PARCELON_STORE_CHILD_IN";
constexpr char kOutVariable[] = "PARCELON_STORE_CHILD_OUT";

// This test binary, run again as the child playing `role` on the store at `store`. The child
// reads one-letter commands from the parent and answers with lines.
class Child {
 public:
  Child(const std::string& role, const std::string& store) {
    int toChild[2], fromChild[2];
    if (::pipe2(toChild, O_CLOEXEC) != 0 || ::pipe2(fromChild, O_CLOEXEC) != 0) return;
    // Everything the child needs is made before fork, which leaves it only system calls to do.
    std::vector<std::string> variables = {
        std::string(kRoleVariable) + "=" + role,
        std::string(kStoreVariable) + "=" + store,
        std::string(kInVariable) + "=" + std::to_string(toChild[0]),
        std::string(kOutVariable) + "=" + std::to_string(fromChild[1]),
    };
    std::vector<char*> environment;
    for (std::string& variable : variables) environment.push_back(variable.data());
    for (char** inherited = environ; *inherited; ++inherited) environment.push_back(*inherited);
    environment.push_back(nullptr);
    char program[] = "refhost_tests";
    char filter[] = "--gtest_filter=StoreChild.Run";
    char* arguments[] = {program, filter, nullptr};

    const pid_t pid = ::fork();
    if (pid == 0) {
      // The two ends the child keeps must survive exec; its test runner's report would only
      // repeat what the parent checks.
      ::fcntl(toChild[0], F_SETFD, 0);
      ::fcntl(fromChild[1], F_SETFD, 0);
      const int quiet = ::open("/dev/null", O_WRONLY);
      if (quiet >= 0) ::dup2(quiet, STDOUT_FILENO);
      ::execve("/proc/self/exe", arguments, environment.data());
      ::_exit(127);
    }
    ::close(toChild[0]);
    ::close(fromChild[1]);
    in_ = fromChild[0];
    out_ = toChild[1];
    pid_ = pid;
  }

  ~Child() {
    Close();
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
    if (in_ >= 0) ::close(in_);
  }

  bool Started() const { return pid_ > 0; }

  void Send(char command) {
    if (out_ >= 0) (void)!::write(out_, &command, 1);
  }
  // Closes the child's command pipe, which it reads as "finish".
  void Close() {
    if (out_ >= 0) ::close(out_);
    out_ = -1;
  }

  // The child's next line, without its end; "<eof>" when the child has closed its end or died.
  std::string ReadLine() {
    std::string line;
    char c;
    while (true) {
      const ssize_t n = ::read(in_, &c, 1);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return "<eof>";
      if (c == '\n') return line;
      line.push_back(c);
    }
  }

  // Waits for the child to end; its exit status, or -signal when a signal ended it.
  int Wait() {
    int status = 0;
    if (pid_ <= 0 || ::waitpid(pid_, &status, 0) != pid_) return -1000;
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  void Kill() {
    if (pid_ > 0) ::kill(pid_, SIGKILL);
  }

 private:
  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
};

// The child's side. Roles:
//   "read":  prints the token and then the stored attributes, as Describe gives them.
//   "write": writes the token "from the child", prints "saved", and ends without closing
//            anything, as a crash would.
//   "lock":  takes the record's lock and prints "locked" or "refused"; then, per command, 't'
//            tries again and prints the answer, 'u' unlocks and prints "unlocked"; ends when the
//            parent closes the pipe.
TEST(StoreChild, Run) {
  const char* role = std::getenv(kRoleVariable);
  if (!role) GTEST_SKIP() << "plays the second process of the cross-process tests";
  const int in = std::atoi(std::getenv(kInVariable));
  const int out = std::atoi(std::getenv(kOutVariable));
  auto say = [&](const std::string& line) {
    const std::string text = line + "\n";
    (void)!::write(out, text.data(), text.size());
  };
  std::shared_ptr<Company> company;
  try {
    company = CompanyOver(CompanyStore::Open(std::getenv(kStoreVariable)));
  } catch (const StoreError& error) {
    say(std::string("error: ") + error.what());
    ::_exit(2);
  }
  const std::string which = role;
  if (which == "read") {
    say(ReadAsComponent(company, kRecord, kToken));
    say(Describe(company->store->Attributes()));
  } else if (which == "write") {
    say(WriteToken(company, "from the child") ? "saved" : "failed");
    ::_exit(0);
  } else if (which == "lock") {
    IDataFileRecordPtr record = TakeDataFileRecord(company, kRecord);
    say(TryLock(record) ? "locked" : "refused");
    char command;
    while (::read(in, &command, 1) == 1) {
      if (command == 't') say(TryLock(record) ? "locked" : "refused");
      if (command == 'u') say(SUCCEEDED(record->Unlock()) ? "unlocked" : "unlock failed");
    }
  }
}

// ---------------------------------------------------------------------------------------------

class StoreTest : public ::testing::Test {
 protected:
  // A store of kFixture whose data file record "Seeded" (data version 3) holds Count = 12.
  std::shared_ptr<CompanyStore> CreateStore() {
    Company company;
    DataFileRecord seeded;
    seeded.name = u"Seeded";
    seeded.dataVersion = 3;
    seeded.properties[u"Count"] = PropertyValue{VT_I4, 12, 0, u""};
    company.dataFileRecords[seeded.name] = seeded;
    return CompanyStore::Create(path_, kFixture, "samples/company.json", company);
  }
  std::string Named() const { return "company store \"" + path_ + "\""; }

  ScratchFolder folder_;
  const std::string path_ = folder_.File("company.db");
};

TEST_F(StoreTest, LastWritesOfAttributesFieldsAndRecordsSurviveReopening) {
  {
    auto store = CreateStore();
    // Earlier writes, which the later ones replace: attributes as a whole, fields one by one.
    store->WriteAttributes(ListKind::Names, 7, {Attribute{u"T", u"O", 1}});
    store->WriteAttributes(ListKind::Terms, 2, {Attribute{u"T", u"O", 1}});
    store->SaveRecord(ListKind::Names, 7, {{"email", "\"old\""}, {"note", "\"n\""}}, nullptr);

    const std::vector<Attribute> stamps = {Attribute{kUploadTime, kOwner, 1700000000}};
    store->SaveRecord(ListKind::Names, 7, {{"email", R"("a@b.example")"}, {"hidden", "true"}}, &stamps);
    // An empty set is kept: it hides the fixture's.
    store->WriteAttributes(ListKind::Terms, 2, {});
    store->WriteAttributes(ListKind::Items, -5, {Attribute{u"B", u"{X}", -1}, Attribute{u"A", u"{X}", 2}});
    DataFileSave save;
    save.version = 1;
    save.properties[u"LastDataUploadToken"] = PropertyValue{VT_BSTR, 0, 0, u"T\u00e9-1"};
    store->Save(u"Orvane:NetworkAdapter:DataUpload", save);
  }
  auto store = CompanyStore::Open(path_);
  EXPECT_EQ(kFixture, store->FixtureJson());
  EXPECT_EQ("samples/company.json", store->FixtureSource());
  EXPECT_EQ("names 7: ParcelonUploadTime {54901C71-3408-44fb-9031-7B4BB81D871C} 1700000000; terms 2:; "
            "items -5: A {X} 2 B {X} -1; ",
            Describe(store->Attributes()));
  // A replaced field keeps its place.
  EXPECT_EQ(R"(names 7 email="a@b.example"; names 7 note="n"; names 7 hidden=true; )",
            Describe(store->RecordFields()));

  const PropertyValue token = store->Read(u"Orvane:NetworkAdapter:DataUpload", u"LastDataUploadToken");
  EXPECT_EQ(VT_BSTR, token.type);
  EXPECT_EQ(u"T\u00e9-1", token.text);
  EXPECT_EQ(1, store->DataVersion(u"Orvane:NetworkAdapter:DataUpload"));
  EXPECT_EQ(3, store->DataVersion(u"Seeded")) << "the fixture's records are kept from the start";
  EXPECT_EQ(12, store->Read(u"Seeded", u"Count").integer);
}

TEST_F(StoreTest, CreateRefusesAnExistingFileAndLeavesItAlone) {
  WriteFile(path_, "someone's file");
  EXPECT_EQ(Named() + " already exists", ErrorOf([&] { CreateStore(); }));
  EXPECT_EQ("someone's file", ReadFile(path_));
}

TEST_F(StoreTest, CreateInAMissingFolderOrOpenOfAMissingStoreNamesTheStore) {
  const std::string path = folder_.File("missing/company.db");
  EXPECT_EQ("company store \"" + path + "\": unable to open database file",
            ErrorOf([&] { CompanyStore::Create(path, kFixture, "test", Company()); }));
  EXPECT_FALSE(FileExists(folder_.File("missing")));
  EXPECT_EQ(Named() + ": No such file or directory", ErrorOf([&] { CompanyStore::Open(path_); }));
}

// Files that are not company stores, or stores of another schema version, are refused with a
// message naming them, and left as they were, byte for byte, with no lock file made beside them.
TEST_F(StoreTest, FilesThatAreNotStoresAreRefusedUntouched) {
  struct Case {
    bool ourStore;  // made by CreateStore before `sql` runs
    std::string sql;  // empty: a text file
    std::string error;
  };
  const std::string name = "\"" + path_ + "\"";
  const std::string marked = "PRAGMA application_id = 1348686708; CREATE TABLE meta(key, value);";
  const auto version = [&](const std::string& v) {
    return Case{true, "UPDATE meta SET value = " + v + " WHERE key = 'schema_version'",
                Named() + " has schema version " + v +
                    ", but this build reads only version 1; the store was left untouched"};
  };
  const Case cases[] = {
      {false, "", name + " is not a Parcelon company store: file is not a database"},
      {false, "CREATE TABLE meta(key, value);",
       name + " is not a Parcelon company store: an SQLite database of another application"},
      {false, "PRAGMA application_id = 1348686708; CREATE TABLE t(x);",
       Named() + " is damaged: it has no meta table"},
      {false, marked, Named() + " is damaged: it has no schema version"},
      {false, marked + "INSERT INTO meta VALUES('schema_version', '1');",
       Named() + " is damaged: its schema version is not a number"},
      version("2"), version("0"), version("-1"),
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sql);
    std::remove(path_.c_str());
    if (c.ourStore) CreateStore().reset();
    if (c.sql.empty())
      WriteFile(path_, std::string(8192, 'x'));
    else
      RunSql(path_, c.sql);
    std::remove((path_ + ".locks").c_str());
    const std::string before = ReadFile(path_);
    EXPECT_EQ(c.error, ErrorOf([&] { CompanyStore::Open(path_); }));
    EXPECT_EQ(before, ReadFile(path_));
    EXPECT_FALSE(FileExists(path_ + ".locks"));
  }
}

TEST_F(StoreTest, CorruptStoreEndsInAClearError) {
  CreateStore().reset();
  std::string bytes = ReadFile(path_);
  ASSERT_GT(bytes.size(), 4096u * 2);
  // Every page but the first (which holds the schema) overwritten.
  std::fill(bytes.begin() + 4096, bytes.end(), char(0xA5));
  WriteFile(path_, bytes);
  EXPECT_EQ(Named() + ": database disk image is malformed",
            ErrorOf([&] { CompanyStore::Open(path_)->FixtureJson(); }));
}

TEST_F(StoreTest, DamagedOrOversizedValuesAreReportedNotTrusted) {
  CreateStore().reset();
  RunSql(path_, "INSERT INTO data_file_property(record, name, type, value) VALUES "
                "('Seeded', 'Huge', 8, zeroblob(2097152)), ('Seeded', 'OddText', 8, x'414243'), "
                "('Seeded', 'WideI4', 3, 4294967296), ('Seeded', 'Unknown', 13, 0), "
                "('Seeded', 'TextAsInt', 8, 5);"
                "INSERT INTO attribute_record(list, rec_num) VALUES('vendors', 1);");
  auto store = CompanyStore::Open(path_);
  const std::string damaged = Named() + " is damaged: ";
  EXPECT_EQ(damaged + "a data file record property holds 2097152 bytes, more than the 1048576 allowed",
            ErrorOf([&] { store->Read(u"Seeded", u"Huge"); }));
  for (const char16_t* property : {u"OddText", u"WideI4", u"Unknown", u"TextAsInt"})
    EXPECT_EQ(damaged + "the value of a data file record property",
              ErrorOf([&] { store->Read(u"Seeded", property); }));
  EXPECT_EQ(damaged + "unknown list \"vendors\" in attribute_record", ErrorOf([&] { store->Attributes(); }));
  EXPECT_EQ(12, store->Read(u"Seeded", u"Count").integer) << "the sound values stay readable";
}

// ---------------------------------------------------------------------------------------------
// Two processes.

TEST_F(StoreTest, SecondProcessSeesTheFirstsStamps) {
  CreateStore()->WriteAttributes(ListKind::Names, 7, {Attribute{kUploadTime, kOwner, 1700000123}});
  ASSERT_TRUE(WriteToken(CompanyOver(CompanyStore::Open(path_)), "token 9"));

  Child child("read", path_);
  ASSERT_TRUE(child.Started());
  EXPECT_EQ("BSTR:token 9", child.ReadLine());
  EXPECT_EQ("names 7: ParcelonUploadTime {54901C71-3408-44fb-9031-7B4BB81D871C} 1700000123; ", child.ReadLine());
  EXPECT_EQ(0, child.Wait());
}

TEST_F(StoreTest, OpenStoreSeesWhatAnotherProcessCommittedBeforeDying) {
  const auto company = CompanyOver(CreateStore());
  ASSERT_TRUE(WriteToken(company, "from the parent"));
  IDataFilePropertyBagPtr bag;
  ASSERT_EQ(S_OK, TakeDataFileRecord(company, kRecord)->GetPropertyBag(bag.ReleaseAndGetAddressOf()));

  Child child("write", path_);
  ASSERT_TRUE(child.Started());
  EXPECT_EQ("saved", child.ReadLine());
  EXPECT_EQ(0, child.Wait());

  // Through the record object taken before the child wrote, and through a new one.
  Var value;
  ASSERT_EQ(S_OK, bag->Read(MakeBstr(kToken).Get(), &value));
  EXPECT_EQ("BSTR:from the child", Describe(value));
  EXPECT_EQ("BSTR:from the child", ReadAsComponent(company, kRecord, kToken));
}

TEST_F(StoreTest, LockIsRefusedToTheOtherProcessUntilReleased) {
  const auto company = CompanyOver(CreateStore());
  const IDataFileRecordPtr record = TakeDataFileRecord(company, kRecord);

  // The child holds it: the parent is refused.
  {
    Child child("lock", path_);
    ASSERT_TRUE(child.Started());
    ASSERT_EQ("locked", child.ReadLine());
    EXPECT_FALSE(TryLock(record));
    child.Send('u');
    ASSERT_EQ("unlocked", child.ReadLine());
    EXPECT_TRUE(TryLock(record));
    child.Close();
    EXPECT_EQ(0, child.Wait());
  }
  // The parent holds it: the child is refused until the parent unlocks.
  Child child("lock", path_);
  ASSERT_TRUE(child.Started());
  EXPECT_EQ("refused", child.ReadLine());
  ASSERT_EQ(S_OK, record->Unlock());
  child.Send('t');
  EXPECT_EQ("locked", child.ReadLine());
  EXPECT_FALSE(TryLock(record));
  child.Close();
  EXPECT_EQ(0, child.Wait());
  EXPECT_TRUE(TryLock(record)) << "the lock ends with the process that held it";
}

TEST_F(StoreTest, DyingHolderLeavesTheLockFree) {
  const IDataFileRecordPtr record = TakeDataFileRecord(CompanyOver(CreateStore()), kRecord);
  Child child("lock", path_);
  ASSERT_TRUE(child.Started());
  ASSERT_EQ("locked", child.ReadLine());
  EXPECT_FALSE(TryLock(record));
  child.Kill();
  EXPECT_EQ(-SIGKILL, child.Wait());
  EXPECT_TRUE(TryLock(record));
}

TEST_F(StoreTest, TwoOpensInOneProcessExcludeEachOther) {
  CreateStore().reset();
  const IDataFileRecordPtr mine = TakeDataFileRecord(CompanyOver(CompanyStore::Open(path_)), kRecord);
  const IDataFileRecordPtr theirs = TakeDataFileRecord(CompanyOver(CompanyStore::Open(path_)), kRecord);
  EXPECT_TRUE(TryLock(mine));
  EXPECT_FALSE(TryLock(theirs));
  ASSERT_EQ(S_OK, mine->Unlock());
  EXPECT_TRUE(TryLock(theirs));
  EXPECT_FALSE(TryLock(mine));
}

}  // namespace
}  // namespace parcelon::refhost::test

#endif  // PARCELON_HAVE_SQLITE
