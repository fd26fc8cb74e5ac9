// The gateway simulator's store: a data upload is kept whole or not at all.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "support/TestSupport.h"
#include "tools/GatewayStore.h"

namespace parcelon::test {
namespace {

constexpr char kCompany[] = "{C0FFEE00-0000-4000-8000-000000000001}";

tools::ReceivedRequest ThreeRecords() {
  tools::ReceivedRequest upload;
  upload.hasUpload = true;
  upload.companyUID = kCompany;
  upload.companyName = "Harbor";
  upload.records = {{"Terms", "2", "<Terms><ClientID>2</ClientID></Terms>", false},
                    {"CustomerJobs", "100", "<CustomerJobs><ClientID>100</ClientID></CustomerJobs>", false},
                    {"CustomerJobs", "101", "<CustomerJobs><ClientID>101</ClientID></CustomerJobs>", false}};
  return upload;
}

// Runs `sql` on the store's file through a connection of its own.
void Execute(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &db));
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr)) << sqlite3_errmsg(db);
  sqlite3_close(db);
}

// A step of the upload that the database refuses: the upload says which and why, nothing of it is
// kept, and the same upload is kept whole once the database takes it.
TEST(GatewayStoreTest, AFailedUploadKeepsNothingAndSaysWhy) {
  const struct {
    const char* refused;
    const char* error;
  } cases[] = {
      {"BEFORE INSERT ON records WHEN NEW.client_id = '101'", "cannot keep a record: refused by the test"},
      {"BEFORE INSERT ON uploads", "cannot keep the upload: refused by the test"},
      {"BEFORE INSERT ON companies", "cannot keep the company: refused by the test"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.refused);
    ScratchFolder folder;
    const std::string path = folder.File("gateway.db");
    std::string error;
    const auto store = tools::GatewayStore::Open(path, error);
    ASSERT_TRUE(store) << error;
    Execute(path, std::string("CREATE TRIGGER refuse ") + c.refused + " BEGIN SELECT RAISE(ABORT, 'refused by the test'); END;");
    tools::UploadCounts counts;
    EXPECT_EQ("", store->ApplyUpload(ThreeRecords(), counts, error));
    EXPECT_EQ(c.error, error);
    EXPECT_TRUE(store->Records(kCompany).empty());

    Execute(path, "DROP TRIGGER refuse;");
    error.clear();
    EXPECT_EQ("TOKEN-0001", store->ApplyUpload(ThreeRecords(), counts, error)) << error;
    EXPECT_EQ(3, counts.added);
    EXPECT_EQ(3u, store->Records(kCompany).size());
  }
}

// A form names its attachments by the identifiers the gateway gave: anything else is unknown.
TEST(GatewayStoreTest, OnlyAnAttachmentIdentifierAsGivenIsKnown) {
  ScratchFolder folder;
  std::string error;
  const auto store = tools::GatewayStore::Open(folder.File("gateway.db"), error);
  ASSERT_TRUE(store) << error;
  ASSERT_EQ("ATT000001", store->AddAttachment("a.pdf", "TICKET", "%PDF"));
  const struct {
    const char* id;
    bool known;
  } cases[] = {{"ATT000001", true},   {"ATT000001 ", false}, {"ATT00000", false}, {"ATT1", false},
               {"ATT0000010", false}, {"ATT000002", false},  {"att000001", false}, {"ATT+00001", false},
               {" ATT000001", false}, {"ATT", false},        {"", false}};
  for (const auto& c : cases) EXPECT_EQ(c.known, store->HasAttachment(c.id)) << '"' << c.id << '"';
}

}  // namespace
}  // namespace parcelon::test
