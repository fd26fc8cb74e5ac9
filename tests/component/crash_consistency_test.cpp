// Crash consistency of the stamps: a child process runs a whole send against the SQLite company
// store and is killed (SIGKILL) at a pass boundary or in the middle of stamping. The store must
// then be intact, hold no stamp that an accepted and completed upload did not write, and the
// next send must upload every record the first one carried that is not stamped.
#include <gtest/gtest.h>

#if PARCELON_HAVE_SQLITE

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "../upload/UploadTestSupport.h"
#include "component/SampleSendTest.h"
#include "refhost/Sqlite.h"

namespace parcelon::test {
namespace {

constexpr int64_t kFirstSend = 1235869200;  // 2009-03-01 01:00:00 UTC
constexpr int64_t kNextSend = kFirstSend + 3600;

// The records the e-mailed estimate 2001 with Post uploads: its terms, its job and the job's
// parents.
const std::set<std::string> kUploaded = {"term 2", "name 100", "name 101", "name 102"};

tools::SendSpec PostedEstimate() {
  tools::FormSpec form = SampleForm(naftESTIMATE, 2001, nastEMAIL);
  form.post = true;
  tools::SendSpec plan;
  plan.forms = {form};
  return plan;
}

// Where the child dies: after an adapter call of a pass (pass 0: before the first pass), or at
// the chosen call of a host operation.
struct KillPoint {
  const char* name;
  int pass = 0;
  const char* call = nullptr;
  const char* operation = nullptr;
  int operationCall = 0;
  // Whether the first send's upload is stamped when the child dies there.
  bool stamped = false;
};

// The list records, among the uploaded ones, that carry a stamp: "term 2", "name 100".
std::set<std::string> Stamped(refhost::Company& company) {
  std::set<std::string> stamped;
  const auto scan = [&](const char* kind, auto& records) {
    for (size_t i = 0; i < records.Size(); ++i)
      for (const refhost::Attribute& attribute : records.At(i).attributes)
        if (attribute.name == u"ParcelonUploadTime")
          stamped.insert(std::string(kind) + " " + std::to_string(records.At(i).recNum));
  };
  scan("term", company.terms);
  scan("name", company.names);
  return stamped;
}

// The list records a transcript's data upload carries, as Stamped names them.
std::set<std::string> Carried(const std::string& transcript) {
  std::set<std::string> carried;
  const auto section = [&](const char* kind, const std::string& element) {
    const size_t begin = transcript.find("<" + element + ">");
    if (begin == std::string::npos) return;
    const size_t end = transcript.find("</" + element + ">", begin);
    const std::string text = transcript.substr(begin, end - begin);
    static const std::regex clientID(R"(<ClientID>(\d+)</ClientID>)");
    for (std::sregex_iterator it(text.begin(), text.end(), clientID), last; it != last; ++it)
      carried.insert(std::string(kind) + " " + (*it)[1].str());
  };
  section("term", "TermsAdd");
  section("name", "CustomerJobsAdd");
  return carried;
}

std::string IntegrityCheck(const std::string& path) {
  refhost::sqlite::Database db(path, SQLITE_OPEN_READONLY);
  refhost::sqlite::Statement check(db, "PRAGMA integrity_check");
  std::string result;
  while (check.Step()) result += check.Utf8(0);
  return result;
}

class CrashConsistencyTest : public SampleSendTest, public ::testing::WithParamInterface<KillPoint> {
 protected:
  // Runs the first send in a child process that dies at the kill point.
  void RunChildUntilKilled() {
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      // The child: nothing of the parent's test may run here, whatever happens.
      const std::unique_ptr<refhost::ReferenceHost> host = OpenStoreHost(store_, LogFolder());
      if (!host) ::_exit(2);
      const KillPoint& point = GetParam();
      if (point.operation && !host->GetFaults().Trap(point.operation, point.operationCall, [] { ::raise(SIGKILL); }))
        ::_exit(3);
      FakeUploadClock clock;
      clock.now = kFirstSend;
      upload::ScopedUploadClock scopedClock(clock);
      tools::SendSpec plan = PostedEstimate();
      if (point.call)
        plan.afterCall = [&](int pass, const char* call) {
          if (pass == point.pass && std::string(call) == point.call) ::raise(SIGKILL);
        };
      std::string transcript;
      tools::RunSend(plan, transcript);
      ::_exit(4);  // the send ended without reaching the kill point
    }
    int status = 0;
    ASSERT_EQ(pid, ::waitpid(pid, &status, 0));
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
        << "the child ended without being killed, status " << status;
  }

  const std::string store_ = ScratchFile("company.db");
};

TEST_P(CrashConsistencyTest, TheStoreHoldsNoStampWithoutAnAcceptedUploadAndTheNextSendUploadsTheRest) {
  std::string error;
  ASSERT_EQ(S_OK, refhost::ReferenceHost::CreateStore(kSources + "/samples/sample-company.json", store_, error))
      << error;
  RunChildUntilKilled();

  EXPECT_EQ("ok", IntegrityCheck(store_));
  const std::unique_ptr<refhost::ReferenceHost> host = OpenStoreHost(store_, LogFolder());
  ASSERT_TRUE(host);
  const std::set<std::string> stamped = Stamped(host->GetCompany());
  EXPECT_EQ(GetParam().stamped ? kUploaded : std::set<std::string>{}, stamped);
  const refhost::Term* term = host->GetCompany().terms.Find(2);
  if (GetParam().stamped && term && !term->attributes.empty()) {
    EXPECT_EQ(LONG(kFirstSend), term->attributes.front().value) << "stamped with the first send's build time";
  }

  FakeUploadClock clock;
  clock.now = kNextSend;
  upload::ScopedUploadClock scopedClock(clock);
  std::string transcript;
  ASSERT_EQ(S_OK, tools::RunSend(PostedEstimate(), transcript)) << transcript;
  // Every record not stamped goes up again. A stamped customer may too: the change scan trusts the
  // stamps only after a stored last client upload time.
  const std::set<std::string> carried = Carried(transcript);
  for (const std::string& record : kUploaded)
    EXPECT_TRUE(stamped.count(record) || carried.count(record)) << record << " was neither stamped nor sent again";
  if (GetParam().stamped) {
    EXPECT_EQ(0u, carried.count("term 2")) << "a stamped, unchanged term stays home";
  }
  EXPECT_EQ(kUploaded, Stamped(host->GetCompany())) << "the next send stamps what it carried";
}

INSTANTIATE_TEST_SUITE_P(
    KillPoints, CrashConsistencyTest,
    ::testing::Values(KillPoint{"BeforeTheFirstPass", 0, "Initialize"},
                      KillPoint{"AfterTheAttachmentPass", 1, "OnSynchCompleted"},
                      KillPoint{"AfterTheUploadWasBuilt", 2, "BuildXML"},
                      KillPoint{"AfterTheUploadWasAccepted", 2, "ParseResponse"},
                      KillPoint{"AtTheFirstStamp", 0, nullptr, "IListElement::Save", 1},
                      KillPoint{"InTheMiddleOfStamping", 0, nullptr, "IListElement::Save", 3},
                      KillPoint{"BeforeTheUploadTimeIsStored", 0, nullptr, "IDataFileRecord::Save", 2, true},
                      KillPoint{"AfterTheFormPass", 2, "OnSynchCompleted", nullptr, 0, true}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace parcelon::test

#endif  // PARCELON_HAVE_SQLITE
