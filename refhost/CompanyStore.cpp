// The company store in SQLite: creating, verifying and opening it, and its reads and writes.
#include "refhost/CompanyStore.h"

#if PARCELON_HAVE_SQLITE

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "host/Attributes.h"

namespace parcelon::refhost {

namespace {

// Marks the SQLite file as a company store (PRAGMA application_id): "PcSt".
constexpr int32_t kApplicationId = 0x50635374;

// How long a writer waits for another process's transaction before giving up.
constexpr int kBusyTimeoutMs = 10000;

constexpr const char* kSchema = R"sql(
CREATE TABLE meta(
  key TEXT PRIMARY KEY NOT NULL,
  value NOT NULL);
CREATE TABLE attribute_record(  -- the records whose attributes the store holds in full
  list TEXT NOT NULL,
  rec_num INTEGER NOT NULL,
  UNIQUE(list, rec_num));
CREATE TABLE attribute(
  list TEXT NOT NULL,
  rec_num INTEGER NOT NULL,
  name TEXT NOT NULL,
  owner TEXT NOT NULL,
  value INTEGER NOT NULL,
  PRIMARY KEY(list, rec_num, name, owner)) WITHOUT ROWID;
CREATE TABLE record_field(
  list TEXT NOT NULL,
  rec_num INTEGER NOT NULL,
  field TEXT NOT NULL,
  value TEXT NOT NULL,  -- JSON
  UNIQUE(list, rec_num, field));
CREATE TABLE data_file(
  name TEXT PRIMARY KEY NOT NULL,
  version INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE data_file_property(
  record TEXT NOT NULL,
  name TEXT NOT NULL,
  type INTEGER NOT NULL,  -- the VARTYPE
  value NOT NULL,         -- INTEGER, REAL, or the UTF-16 code units of a text as a BLOB
  UNIQUE(record, name));
)sql";

std::string Quoted(const std::string& path) { return "\"" + path + "\""; }

[[noreturn]] void NotAStore(const std::string& path, const std::string& why) {
  throw StoreError(E_FAIL, Quoted(path) + " is not a Parcelon company store: " + why);
}

// Closes the door on what a foreign file could make SQLite do: no triggers or views calling
// functions with side effects, no writes to the schema table.
void Harden(sqlite::Database& db) {
  sqlite3_db_config(db.Get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(db.Get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  db.Check(sqlite3_busy_timeout(db.Get(), kBusyTimeoutMs));
}

// Checks, through a read-only connection so that nothing is written to a file we refuse, that
// `path` is a company store of our schema version. Returns `path`.
const std::string& Verify(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) {
    const int error = errno;
    throw StoreError(error == ENOENT ? STG_E_FILENOTFOUND : E_FAIL,
                     "company store " + Quoted(path) + ": " + std::strerror(error));
  }
  if (!S_ISREG(info.st_mode)) NotAStore(path, "not a regular file");

  sqlite::Database db(path, SQLITE_OPEN_READONLY);
  Harden(db);
  int64_t applicationId = 0;
  try {
    sqlite::Statement pragma(db, "PRAGMA application_id");
    if (pragma.Step()) applicationId = pragma.Int(0);
  } catch (const StoreError&) {
    if ((sqlite3_errcode(db.Get()) & 0xFF) == SQLITE_NOTADB)
      NotAStore(path, "file is not a database");
    throw;
  }
  if (applicationId != kApplicationId)
    NotAStore(path, "an SQLite database of another application");

  const std::string store = "company store " + Quoted(path);
  sqlite::Statement meta(db, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'meta'");
  if (!meta.Step()) throw StoreError(E_FAIL, store + " is damaged: it has no meta table");
  sqlite::Statement version(db,
                            "SELECT value, typeof(value) FROM meta WHERE key = 'schema_version'");
  if (!version.Step()) throw StoreError(E_FAIL, store + " is damaged: it has no schema version");
  if (version.Utf8(1) != "integer")
    throw StoreError(E_FAIL, store + " is damaged: its schema version is not a number");
  if (version.Int(0) != CompanyStore::kSchemaVersion)
    throw StoreError(E_FAIL, store + " has schema version " + version.Utf8(0) +
                                 ", but this build reads only version " +
                                 std::to_string(CompanyStore::kSchemaVersion) +
                                 "; the store was left untouched");
  return path;
}

void BindValue(sqlite::Statement& statement, int index, const PropertyValue& value) {
  switch (value.type) {
    case VT_R8:
    case VT_DATE: statement.BindReal(index, value.real); break;
    case VT_BSTR:
      statement.BindBlob(index, value.text.data(), value.text.size() * sizeof(char16_t));
      break;
    default: statement.Bind(index, value.integer); break;
  }
}

void CheckName(const Text& name) {
  if (name.size() * sizeof(char16_t) > kMaxPropertyBytes)
    throw StoreError(E_INVALIDARG, "a name longer than " + std::to_string(kMaxPropertyBytes) +
                                       " bytes");
}

}  // namespace

CompanyStore::CompanyStore(const std::string& path)
    : db_(Verify(path), SQLITE_OPEN_READWRITE), locks_(path + ".locks") {
  Harden(db_);
  // WAL lets readers go on while one process writes; FULL syncs each commit, so that a commit
  // that returned survives a crash of the machine too.
  db_.Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;");
}

CompanyStore::~CompanyStore() = default;

bool CompanyStore::BeginWrites() {
  if (writes_) return false;
  writes_ = std::make_unique<sqlite::Transaction>(db_);
  return true;
}

bool CompanyStore::EndWrites(bool commit) {
  if (!writes_) return false;
  // Dropped whatever the commit gives: a failed commit has rolled the writes back.
  const std::unique_ptr<sqlite::Transaction> writes = std::move(writes_);
  if (commit) writes->Commit();
  return true;
}

std::shared_ptr<CompanyStore> CompanyStore::Create(const std::string& path,
                                                   std::string_view fixtureJson,
                                                   std::string_view source,
                                                   const Company& company) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) == 0)
    throw StoreError(kAlreadyExists, "company store " + Quoted(path) + " already exists");

  // Built under a name of its own and linked into place whole: a crash leaves at most that
  // scratch file, never a half-made store at `path`.
  const std::string scratch = path + ".creating-" + std::to_string(::getpid());
  ::unlink(scratch.c_str());
  try {
    {
      sqlite::Database db(scratch, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, path);
      Harden(db);
      db.Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;");
      sqlite::Transaction transaction(db);
      db.Execute(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
      db.Execute(kSchema);
      sqlite::Statement meta(db, "INSERT INTO meta(key, value) VALUES(?1, ?2)");
      meta.Bind(1, std::string_view("schema_version")).Bind(2, int64_t(kSchemaVersion)).Run();
      meta.Bind(1, std::string_view("fixture")).Bind(2, fixtureJson).Run();
      meta.Bind(1, std::string_view("fixture_source")).Bind(2, source).Run();
      sqlite::Statement added(db, "INSERT INTO data_file(name, version) VALUES(?1, ?2)");
      sqlite::Statement written(db,
                                "INSERT INTO data_file_property(record, name, type, value) "
                                "VALUES(?1, ?2, ?3, ?4)");
      for (const auto& [name, record] : company.dataFileRecords) {
        CheckName(name);
        added.Bind(1, name).Bind(2, int64_t(record.dataVersion)).Run();
        for (const auto& [property, value] : record.properties) {
          if (value.type == VT_EMPTY) continue;
          CheckName(property);
          written.Bind(1, name).Bind(2, property).Bind(3, int64_t(value.type));
          BindValue(written, 4, value);
          written.Run();
        }
      }
      transaction.Commit();
    }
    if (::link(scratch.c_str(), path.c_str()) != 0) {
      const int error = errno;
      throw StoreError(error == EEXIST ? kAlreadyExists : E_FAIL,
                       "company store " + Quoted(path) + ": " + std::strerror(error));
    }
  } catch (...) {
    ::unlink(scratch.c_str());
    throw;
  }
  ::unlink(scratch.c_str());
  return Open(path);
}

std::shared_ptr<CompanyStore> CompanyStore::Open(const std::string& path) {
  return std::shared_ptr<CompanyStore>(new CompanyStore(path));
}

void CompanyStore::Damaged(const std::string& what) {
  throw StoreError(E_FAIL, "company store " + Quoted(Path()) + " is damaged: " + what);
}

std::string CompanyStore::FixtureJson() {
  sqlite::Statement row(db_, "SELECT value FROM meta WHERE key = 'fixture'");
  if (!row.Step()) Damaged("it holds no fixture");
  return row.Utf8(0);
}

std::string CompanyStore::FixtureSource() {
  sqlite::Statement row(db_, "SELECT value FROM meta WHERE key = 'fixture_source'");
  return row.Step() ? row.Utf8(0) : std::string();
}

ListKind CompanyStore::ListOf(sqlite::Statement& row, int column, const char* table) {
  const std::string name = row.Utf8(column);
  const auto list = ListFromName(name);
  if (!list || ListName(*list) != name) Damaged("unknown list \"" + name + "\" in " + table);
  return *list;
}

RecNum CompanyStore::RecNumOf(sqlite::Statement& row, int column, const char* table) {
  const int64_t recNum = row.Int(column);
  if (row.ColumnType(column) != SQLITE_INTEGER || recNum < std::numeric_limits<LONG>::min() ||
      recNum > std::numeric_limits<LONG>::max())
    Damaged("a record number out of range in " + std::string(table));
  return RecNum(recNum);
}

std::vector<StoredAttributes> CompanyStore::Attributes() {
  std::vector<StoredAttributes> out;
  // One pass over the records in the order of their first write, each followed by its own
  // attributes (the primary key orders them), so that grouping needs no lookup.
  sqlite::Statement row(db_,
                        "SELECT r.list, r.rec_num, a.name, a.owner, a.value "
                        "FROM attribute_record r LEFT JOIN attribute a "
                        "ON a.list = r.list AND a.rec_num = r.rec_num "
                        "ORDER BY r.rowid, a.name, a.owner");
  while (row.Step()) {
    const ListKind list = ListOf(row, 0, "attribute_record");
    const RecNum recNum = RecNumOf(row, 1, "attribute_record");
    if (out.empty() || out.back().list != list || out.back().recNum != recNum)
      out.push_back(StoredAttributes{list, recNum, {}});
    if (row.ColumnType(2) == SQLITE_NULL) continue;
    const int64_t value = row.Int(4);
    if (value < std::numeric_limits<LONG>::min() || value > std::numeric_limits<LONG>::max())
      Damaged("an attribute value out of range");
    out.back().attributes.push_back(Attribute{row.Utf16(2), row.Utf16(3), LONG(value)});
  }
  return out;
}

void CompanyStore::ReplaceAttributes(ListKind list, RecNum recNum,
                                     const std::vector<Attribute>& attributes) {
  sqlite::Statement owned(db_,
                          "INSERT OR IGNORE INTO attribute_record(list, rec_num) VALUES(?1, ?2)");
  owned.Bind(1, ListName(list)).Bind(2, int64_t(recNum)).Run();
  sqlite::Statement cleared(db_, "DELETE FROM attribute WHERE list = ?1 AND rec_num = ?2");
  cleared.Bind(1, ListName(list)).Bind(2, int64_t(recNum)).Run();
  sqlite::Statement added(db_,
                          "INSERT OR REPLACE INTO attribute(list, rec_num, name, owner, value) "
                          "VALUES(?1, ?2, ?3, ?4, ?5)");
  for (const Attribute& attribute : attributes) {
    CheckName(attribute.name);
    CheckName(attribute.owner);
    added.Bind(1, ListName(list)).Bind(2, int64_t(recNum)).Bind(3, attribute.name);
    added.Bind(4, attribute.owner).Bind(5, int64_t(attribute.value)).Run();
  }
}

void CompanyStore::WriteAttributes(ListKind list, RecNum recNum,
                                   const std::vector<Attribute>& attributes) {
  sqlite::Transaction transaction(db_);
  ReplaceAttributes(list, recNum, attributes);
  transaction.Commit();
}

std::vector<StoredRecordField> CompanyStore::RecordFields() {
  std::vector<StoredRecordField> out;
  sqlite::Statement row(db_, "SELECT list, rec_num, field, value FROM record_field ORDER BY rowid");
  while (row.Step()) {
    StoredRecordField stored;
    stored.list = ListOf(row, 0, "record_field");
    stored.recNum = RecNumOf(row, 1, "record_field");
    stored.field.name = row.Utf8(2);
    stored.field.json = row.Utf8(3);
    out.push_back(std::move(stored));
  }
  return out;
}

void CompanyStore::SaveRecord(ListKind list, RecNum recNum, const std::vector<StoredField>& fields,
                              const std::vector<Attribute>* attributes) {
  sqlite::Transaction transaction(db_);
  sqlite::Statement field(db_,
                          "INSERT INTO record_field(list, rec_num, field, value) "
                          "VALUES(?1, ?2, ?3, ?4) "
                          "ON CONFLICT(list, rec_num, field) DO UPDATE SET value = excluded.value");
  for (const StoredField& changed : fields) {
    field.Bind(1, ListName(list)).Bind(2, int64_t(recNum)).Bind(3, changed.name);
    field.Bind(4, changed.json).Run();
  }
  if (attributes) ReplaceAttributes(list, recNum, *attributes);
  transaction.Commit();
}

bool CompanyStore::Exists(const Text& record) {
  sqlite::Statement row(db_, "SELECT 1 FROM data_file WHERE name = ?1");
  return row.Bind(1, record).Step();
}

void CompanyStore::Add(const Text& record) {
  CheckName(record);
  sqlite::Statement row(db_, "INSERT OR IGNORE INTO data_file(name, version) VALUES(?1, 0)");
  row.Bind(1, record).Run();
  if (sqlite3_changes(db_.Get()) == 0)
    throw StoreError(kAlreadyExists, "a data file record of that name exists");
}

LONG CompanyStore::DataVersion(const Text& record) {
  sqlite::Statement row(db_, "SELECT version FROM data_file WHERE name = ?1");
  if (!row.Bind(1, record).Step()) throw StoreError(LX_E_NOTFOUND, "no such data file record");
  return LONG(row.Int(0));
}

PropertyValue CompanyStore::Read(const Text& record, const Text& property) {
  // The length is asked first so that a huge value in a damaged store is refused unread.
  sqlite::Statement row(db_,
                        "SELECT p.type, typeof(p.value), length(p.value), "
                        "CASE WHEN length(p.value) <= ?3 THEN p.value END "
                        "FROM data_file d LEFT JOIN data_file_property p "
                        "ON p.record = d.name AND p.name = ?2 WHERE d.name = ?1");
  row.Bind(1, record).Bind(2, property).Bind(3, int64_t(kMaxPropertyBytes));
  if (!row.Step()) throw StoreError(LX_E_NOTFOUND, "no such data file record");
  PropertyValue value;
  if (row.ColumnType(0) == SQLITE_NULL) return value;
  const int64_t type = row.Int(0);
  const std::string storage = row.Utf8(1);
  if (storage == "blob" && row.Int(2) > int64_t(kMaxPropertyBytes))
    Damaged("a data file record property holds " + std::to_string(row.Int(2)) +
            " bytes, more than the " + std::to_string(kMaxPropertyBytes) + " allowed");
  auto damaged = [&] { Damaged("the value of a data file record property"); };
  switch (type) {
    case VT_I4:
    case VT_I8:
    case VT_BOOL:
      if (storage != "integer") damaged();
      value.integer = row.Int(3);
      if (type == VT_I4 && (value.integer < std::numeric_limits<LONG>::min() ||
                            value.integer > std::numeric_limits<LONG>::max()))
        damaged();
      if (type == VT_BOOL && value.integer != 0 && value.integer != VARIANT_TRUE) damaged();
      break;
    case VT_R8:
    case VT_DATE:
      if (storage != "real") damaged();
      value.real = row.Real(3);
      break;
    case VT_BSTR: {
      if (storage != "blob") damaged();
      const std::string_view bytes = row.Bytes(3, kMaxPropertyBytes);
      if (bytes.size() % sizeof(char16_t) != 0) damaged();
      value.text.resize(bytes.size() / sizeof(char16_t));
      std::memcpy(value.text.data(), bytes.data(), bytes.size());
      break;
    }
    default: damaged();
  }
  value.type = VARTYPE(type);
  return value;
}

void CompanyStore::Save(const Text& record, const DataFileSave& save) {
  CheckName(record);
  sqlite::Transaction transaction(db_);
  sqlite::Statement version(db_,
                            "INSERT INTO data_file(name, version) VALUES(?1, coalesce(?2, 0)) "
                            "ON CONFLICT(name) DO UPDATE SET version = coalesce(?2, version)");
  version.Bind(1, record);
  if (save.version)
    version.Bind(2, int64_t(*save.version));
  else
    version.BindNull(2);
  version.Run();
  sqlite::Statement erase(db_, "DELETE FROM data_file_property WHERE record = ?1 AND name = ?2");
  sqlite::Statement write(db_,
                          "INSERT INTO data_file_property(record, name, type, value) "
                          "VALUES(?1, ?2, ?3, ?4) ON CONFLICT(record, name) "
                          "DO UPDATE SET type = excluded.type, value = excluded.value");
  for (const auto& [name, value] : save.properties) {
    CheckName(name);
    if (value.type == VT_EMPTY) {
      erase.Bind(1, record).Bind(2, name).Run();
    } else {
      write.Bind(1, record).Bind(2, name).Bind(3, int64_t(value.type));
      BindValue(write, 4, value);
      write.Run();
    }
  }
  transaction.Commit();
}

void CompanyStore::Delete(const Text& record) {
  sqlite::Transaction transaction(db_);
  sqlite::Statement properties(db_, "DELETE FROM data_file_property WHERE record = ?1");
  properties.Bind(1, record).Run();
  sqlite::Statement row(db_, "DELETE FROM data_file WHERE name = ?1");
  row.Bind(1, record).Run();
  if (sqlite3_changes(db_.Get()) == 0) throw StoreError(LX_E_NOTFOUND, "no such data file record");
  transaction.Commit();
}

bool CompanyStore::TryLock(const Text& record, const void* holder) {
  return locks_.TryLock(record, holder);
}

bool CompanyStore::Unlock(const Text& record, const void* holder) {
  return locks_.Unlock(record, holder);
}

}  // namespace parcelon::refhost

#endif  // PARCELON_HAVE_SQLITE
