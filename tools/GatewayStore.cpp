#include "tools/GatewayStore.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

#include "tools/PassExchange.h"

namespace parcelon::tools {

namespace {

constexpr char kSchema[] =
    "PRAGMA journal_mode=WAL;"
    // A stand-in for a gateway: a power cut may lose the last answers, never consistency.
    "PRAGMA synchronous=NORMAL;"
    "CREATE TABLE IF NOT EXISTS attachments(id INTEGER PRIMARY KEY, file_name TEXT, ticket TEXT, size INTEGER,"
    "  data BLOB, received TEXT DEFAULT CURRENT_TIMESTAMP);"
    "CREATE TABLE IF NOT EXISTS companies(uid TEXT PRIMARY KEY, name TEXT, text TEXT, token TEXT);"
    "CREATE TABLE IF NOT EXISTS uploads(id INTEGER PRIMARY KEY, company_uid TEXT, added INTEGER, changed INTEGER,"
    "  removed INTEGER);"
    "CREATE TABLE IF NOT EXISTS records(company_uid TEXT, kind TEXT, client_id TEXT, text TEXT, state TEXT,"
    "  upload INTEGER, PRIMARY KEY(company_uid, kind, client_id));"
    "CREATE TABLE IF NOT EXISTS forms(id INTEGER PRIMARY KEY, company_uid TEXT, request TEXT, trn_uid TEXT,"
    "  message_ids TEXT, status TEXT, upload TEXT, text TEXT, received TEXT DEFAULT CURRENT_TIMESTAMP);";

// One prepared statement, finalized when it goes.
class Statement {
 public:
  Statement(sqlite3* db, const char* sql) { sqlite3_prepare_v2(db, sql, -1, &statement_, nullptr); }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement& Bind(int index, const std::string& text) {
    sqlite3_bind_text(statement_, index, text.data(), int(text.size()), SQLITE_TRANSIENT);
    return *this;
  }
  Statement& BindBlob(int index, const std::string& bytes) {
    sqlite3_bind_blob(statement_, index, bytes.data(), int(bytes.size()), SQLITE_TRANSIENT);
    return *this;
  }
  Statement& Bind(int index, sqlite3_int64 value) {
    sqlite3_bind_int64(statement_, index, value);
    return *this;
  }
  bool Step() { return statement_ && sqlite3_step(statement_) == SQLITE_ROW; }
  bool Run() { return statement_ && sqlite3_step(statement_) == SQLITE_DONE; }
  std::string Text(int column) {
    const auto* text = sqlite3_column_text(statement_, column);
    return text ? std::string(reinterpret_cast<const char*>(text), size_t(sqlite3_column_bytes(statement_, column))) : "";
  }
  sqlite3_int64 Int(int column) { return sqlite3_column_int64(statement_, column); }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

// An attachment's message identifier: "ATT" and its row number in six digits or more.
std::string AttachmentId(long long row) {
  char id[32];
  std::snprintf(id, sizeof id, "ATT%06lld", row);
  return id;
}

}  // namespace

std::unique_ptr<GatewayStore> GatewayStore::Open(const std::string& path, std::string& error) {
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    error = "cannot open " + path + ": " + (db ? sqlite3_errmsg(db) : "out of memory");
    sqlite3_close(db);
    return nullptr;
  }
  sqlite3_busy_timeout(db, 5000);
  std::unique_ptr<GatewayStore> store(new GatewayStore(db));
  if (!store->Exec(kSchema)) return error = "cannot create the tables in " + path + ": " + sqlite3_errmsg(db), nullptr;
  return store;
}

GatewayStore::~GatewayStore() { sqlite3_close(db_); }

bool GatewayStore::Exec(const char* sql) { return sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }

std::string GatewayStore::AddAttachment(const std::string& fileName, const std::string& ticket, const std::string& bytes) {
  const std::lock_guard lock(mutex_);
  if (!Statement(db_, "INSERT INTO attachments(file_name, ticket, size, data) VALUES(?, ?, ?, ?)")
           .Bind(1, fileName)
           .Bind(2, ticket)
           .Bind(3, sqlite3_int64(bytes.size()))
           .BindBlob(4, bytes)
           .Run())
    return "";
  return AttachmentId(sqlite3_last_insert_rowid(db_));
}

bool GatewayStore::HasAttachment(const std::string& messageId) {
  // Only an identifier exactly as the gateway gave it: a stray character or a shortened number
  // is unknown, as it would be to the real gateway.
  if (messageId.size() < 4 || messageId.compare(0, 3, "ATT") != 0 || messageId[3] < '0' || messageId[3] > '9')
    return false;
  char* end = nullptr;
  const long long row = std::strtoll(messageId.c_str() + 3, &end, 10);
  if (AttachmentId(row) != messageId) return false;
  const std::lock_guard lock(mutex_);
  return Statement(db_, "SELECT 1 FROM attachments WHERE id = ?").Bind(1, sqlite3_int64(row)).Step();
}

std::string GatewayStore::ApplyUpload(const ReceivedRequest& upload, UploadCounts& counts, std::string& error) {
  const std::lock_guard lock(mutex_);
  counts = {};
  if (upload.companyUID.empty()) return error = "the data upload names no CompanyUID", "";
  // The whole upload or nothing: a step that fails says why, then rolls back the steps before it.
  const auto failed = [&](const char* what) {
    error = std::string("cannot keep ") + what + ": " + sqlite3_errmsg(db_);
    Exec("ROLLBACK");
    counts = {};
    return std::string();
  };
  if (!Exec("BEGIN IMMEDIATE")) return error = std::string("cannot start the upload: ") + sqlite3_errmsg(db_), "";
  sqlite3_int64 uploadNumber = 0;
  {
    Statement next(db_, "SELECT COUNT(*) + 1 FROM uploads");
    if (!next.Step()) return failed("the upload");
    uploadNumber = next.Int(0);
  }
  for (const UploadedRecord& record : upload.records) {
    Statement existing(db_, "SELECT state FROM records WHERE company_uid = ? AND kind = ? AND client_id = ?");
    existing.Bind(1, upload.companyUID).Bind(2, record.kind).Bind(3, record.clientId);
    const bool known = existing.Step();
    const bool wasRemoved = known && existing.Text(0) == "removed";
    const char* state = record.removed ? "removed" : known && !wasRemoved ? "changed" : "added";
    ++(record.removed ? counts.removed : known && !wasRemoved ? counts.changed : counts.added);
    if (!Statement(db_, "INSERT OR REPLACE INTO records VALUES(?, ?, ?, ?, ?, ?)")
             .Bind(1, upload.companyUID)
             .Bind(2, record.kind)
             .Bind(3, record.clientId)
             .Bind(4, record.text)
             .Bind(5, state)
             .Bind(6, uploadNumber)
             .Run())
      return failed("a record");
  }
  if (!Statement(db_, "INSERT INTO uploads(company_uid, added, changed, removed) VALUES(?, ?, ?, ?)")
           .Bind(1, upload.companyUID)
           .Bind(2, counts.added)
           .Bind(3, counts.changed)
           .Bind(4, counts.removed)
           .Run())
    return failed("the upload");
  char token[32];
  std::snprintf(token, sizeof token, "TOKEN-%04lld", static_cast<long long>(sqlite3_last_insert_rowid(db_)));
  Statement company(db_,
                    "INSERT INTO companies VALUES(?1, ?2, ?3, ?4) ON CONFLICT(uid) DO UPDATE SET"
                    " name = COALESCE(NULLIF(?2, ''), name), text = COALESCE(NULLIF(?3, ''), text), token = ?4");
  if (!company.Bind(1, upload.companyUID).Bind(2, upload.companyName).Bind(3, upload.companyText).Bind(4, token).Run())
    return failed("the company");
  if (!Exec("COMMIT")) return failed("the upload");
  return token;
}

void GatewayStore::AddForm(const std::string& companyUID, const ReceivedForm& form, const std::string& status,
                           const std::string& uploadSummary) {
  std::string ids;
  for (const std::string& id : form.messageIds) ids += (ids.empty() ? "" : ",") + id;
  const std::lock_guard lock(mutex_);
  Statement(db_, "INSERT INTO forms(company_uid, request, trn_uid, message_ids, status, upload, text)"
                 " VALUES(?, ?, ?, ?, ?, ?, ?)")
      .Bind(1, companyUID)
      .Bind(2, form.request)
      .Bind(3, form.trnUID)
      .Bind(4, ids)
      .Bind(5, status)
      .Bind(6, uploadSummary)
      .Bind(7, form.text)
      .Run();
}

std::map<std::pair<std::string, std::string>, KeptRecord> GatewayStore::Records(const std::string& companyUID) {
  const std::lock_guard lock(mutex_);
  std::map<std::pair<std::string, std::string>, KeptRecord> records;
  Statement rows(db_, "SELECT kind, client_id, text, state FROM records WHERE company_uid = ?");
  rows.Bind(1, companyUID);
  while (rows.Step()) records[{rows.Text(0), rows.Text(1)}] = {rows.Text(2), rows.Text(3)};
  return records;
}

std::vector<std::string> GatewayStore::FormTexts() {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> texts;
  Statement rows(db_, "SELECT text FROM forms ORDER BY id");
  while (rows.Step()) texts.push_back(rows.Text(0));
  return texts;
}

int GatewayStore::AttachmentCount() {
  const std::lock_guard lock(mutex_);
  Statement count(db_, "SELECT COUNT(*) FROM attachments");
  return count.Step() ? int(count.Int(0)) : 0;
}

std::string GatewayStore::StatusPage() {
  const std::lock_guard lock(mutex_);
  std::string page =
      "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Gateway simulator</title></head><body>\n"
      "<h1>Gateway simulator</h1>\n";
  Statement attachments(db_, "SELECT COUNT(*), COALESCE(SUM(size), 0) FROM attachments");
  if (attachments.Step())
    page += "<p>Attachments kept: " + attachments.Text(0) + " (" + attachments.Text(1) + " bytes)</p>\n";
  Statement companies(db_, "SELECT uid, name, token FROM companies ORDER BY name, uid");
  while (companies.Step()) {
    const std::string uid = companies.Text(0);
    page += "<h2>" + EscapedAttribute(companies.Text(1)) + " " + EscapedAttribute(uid) + "</h2>\n<p>Last upload token: " +
            EscapedAttribute(companies.Text(2)) + "</p>\n<table border=\"1\">\n<tr><th>Kind</th><th>ClientID</th><th>State</th>"
            "<th>Upload</th><th>Name</th></tr>\n";
    Statement records(db_, "SELECT kind, client_id, state, upload, text FROM records WHERE company_uid = ?"
                           " ORDER BY kind, CAST(client_id AS INTEGER), client_id");
    records.Bind(1, uid);
    while (records.Step()) {
      const std::string text = records.Text(4);
      const size_t name = text.find("<Name>"), end = text.find("</Name>");
      page += "<tr><td>" + EscapedAttribute(records.Text(0)) + "</td><td>" + EscapedAttribute(records.Text(1)) + "</td><td>" +
              EscapedAttribute(records.Text(2)) + "</td><td>" + records.Text(3) + "</td><td>" +
              (name != std::string::npos && end > name ? text.substr(name + 6, end - name - 6) : "") +
              "</td></tr>\n";
    }
    page += "</table>\n";
  }
  page += "<h2>Received forms</h2>\n<table border=\"1\">\n<tr><th>#</th><th>Received</th><th>Company</th>"
          "<th>Request</th><th>Attachments</th><th>Data upload</th><th>Status</th></tr>\n";
  Statement forms(db_, "SELECT id, received, company_uid, request, message_ids, upload, status FROM forms ORDER BY id");
  while (forms.Step()) {
    page += "<tr>";
    for (int column = 0; column < 7; ++column) page += "<td>" + EscapedAttribute(forms.Text(column)) + "</td>";
    page += "</tr>\n";
  }
  return page + "</table>\n</body></html>\n";
}

}  // namespace parcelon::tools
