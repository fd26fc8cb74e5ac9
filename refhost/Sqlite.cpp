// SQLite connections, statements and transactions that report failures as StoreError.
#include "refhost/Sqlite.h"

#if PARCELON_HAVE_SQLITE

namespace parcelon::refhost::sqlite {

namespace {

// The HRESULT a host interface answers with for a SQLite result code.
HRESULT CodeOf(int rc) {
  switch (rc & 0xFF) {
    case SQLITE_NOMEM: return E_OUTOFMEMORY;
    case SQLITE_TOOBIG: return E_INVALIDARG;
    case SQLITE_FULL: return static_cast<HRESULT>(0x80030070);  // STG_E_MEDIUMFULL
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_AUTH: return E_ACCESSDENIED;
    default: return E_FAIL;
  }
}

}  // namespace

Database::Database(const std::string& file, int flags, const std::string& path)
    : path_(path.empty() ? file : path) {
  const int rc = sqlite3_open_v2(file.c_str(), &db_, flags, nullptr);
  if (rc != SQLITE_OK) {
    // The handle exists even when the open fails (unless memory ran out) and holds the reason.
    const std::string reason = db_ ? sqlite3_errmsg(db_) : sqlite3_errstr(rc);
    sqlite3_close(db_);
    db_ = nullptr;
    throw StoreError(CodeOf(rc), "company store \"" + path_ + "\": " + reason);
  }
  sqlite3_extended_result_codes(db_, 1);
}

Database::~Database() { sqlite3_close(db_); }

void Database::Fail(int rc) const {
  throw StoreError(CodeOf(rc), "company store \"" + path_ + "\": " + sqlite3_errmsg(db_));
}

void Database::Check(int rc, int ok) const {
  if (rc != ok) Fail(rc);
}

void Database::Execute(const char* sql) { Check(sqlite3_exec(db_, sql, nullptr, nullptr, nullptr)); }

Statement::Statement(Database& db, const char* sql) : db_(db) {
  db_.Check(sqlite3_prepare_v2(db_.Get(), sql, -1, &stmt_, nullptr));
}

Statement::~Statement() { sqlite3_finalize(stmt_); }

Statement& Statement::Bind(int index, int64_t value) {
  db_.Check(sqlite3_bind_int64(stmt_, index, value));
  return *this;
}

Statement& Statement::BindReal(int index, double value) {
  db_.Check(sqlite3_bind_double(stmt_, index, value));
  return *this;
}

Statement& Statement::Bind(int index, std::string_view utf8) {
  db_.Check(sqlite3_bind_text64(stmt_, index, utf8.data(), utf8.size(), SQLITE_TRANSIENT,
                                SQLITE_UTF8));
  return *this;
}

Statement& Statement::Bind(int index, const std::u16string& text) {
  db_.Check(sqlite3_bind_text64(stmt_, index, reinterpret_cast<const char*>(text.data()),
                                text.size() * sizeof(char16_t), SQLITE_TRANSIENT, SQLITE_UTF16));
  return *this;
}

Statement& Statement::BindBlob(int index, const void* bytes, size_t size) {
  // A null pointer would bind NULL rather than an empty blob.
  static const char kNothing = 0;
  db_.Check(sqlite3_bind_blob64(stmt_, index, size ? bytes : &kNothing, size, SQLITE_TRANSIENT));
  return *this;
}

Statement& Statement::BindNull(int index) {
  db_.Check(sqlite3_bind_null(stmt_, index));
  return *this;
}

bool Statement::Step() {
  const int rc = sqlite3_step(stmt_);
  if (rc == SQLITE_ROW) return true;
  if (rc == SQLITE_DONE) return false;
  db_.Fail(rc);
}

void Statement::Run() {
  while (Step()) {
  }
  sqlite3_reset(stmt_);
}

int Statement::ColumnType(int column) const { return sqlite3_column_type(stmt_, column); }

int64_t Statement::Int(int column) const { return sqlite3_column_int64(stmt_, column); }

double Statement::Real(int column) const { return sqlite3_column_double(stmt_, column); }

std::string Statement::Utf8(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
  if (!text && sqlite3_errcode(db_.Get()) == SQLITE_NOMEM) db_.Fail(SQLITE_NOMEM);
  return std::string(text ? text : "", size_t(sqlite3_column_bytes(stmt_, column)));
}

std::u16string Statement::Utf16(int column) const {
  const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(stmt_, column));
  if (!text && sqlite3_errcode(db_.Get()) == SQLITE_NOMEM) db_.Fail(SQLITE_NOMEM);
  return std::u16string(text ? text : u"",
                        size_t(sqlite3_column_bytes16(stmt_, column)) / sizeof(char16_t));
}

std::string_view Statement::Bytes(int column, size_t maxBytes) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(stmt_, column));
  const size_t size = size_t(sqlite3_column_bytes(stmt_, column));
  if (size > maxBytes)
    throw StoreError(E_INVALIDARG, "company store \"" + db_.Path() + "\": a stored value of " +
                                       std::to_string(size) + " bytes is longer than the " +
                                       std::to_string(maxBytes) + " bytes allowed");
  if (!bytes && size) db_.Fail(SQLITE_NOMEM);
  return std::string_view(bytes ? bytes : "", size);
}

Transaction::Transaction(Database& db) : db_(db), nested_(!sqlite3_get_autocommit(db.Get())) {
  db_.Execute(nested_ ? "SAVEPOINT write" : "BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  // A failed statement may have rolled the transaction back already; then there is nothing left.
  if (done_ || sqlite3_get_autocommit(db_.Get())) return;
  sqlite3_exec(db_.Get(), nested_ ? "ROLLBACK TO write; RELEASE write" : "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::Commit() {
  db_.Execute(nested_ ? "RELEASE write" : "COMMIT");
  done_ = true;
}

}  // namespace parcelon::refhost::sqlite

#endif  // PARCELON_HAVE_SQLITE
