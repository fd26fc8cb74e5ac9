// Thin owning wrappers over SQLite 3: a connection, a prepared statement, a write transaction.
// Every failure throws StoreError naming the database file and SQLite's own reason.
#pragma once

#if PARCELON_HAVE_SQLITE

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "refhost/DataFileStore.h"

namespace parcelon::refhost::sqlite {

// An open connection; closed on destruction.
class Database {
 public:
  // Opens `file` with sqlite3_open_v2 flags (SQLITE_OPEN_READONLY, SQLITE_OPEN_READWRITE, ...).
  // Messages name the store `path`, which is `file` unless given.
  Database(const std::string& file, int flags, const std::string& path = {});
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  sqlite3* Get() const { return db_; }
  // The store that messages name.
  const std::string& Path() const { return path_; }
  // Runs one or more statements that return no rows.
  void Execute(const char* sql);
  // Throws StoreError for a result code that is not `ok` (SQLITE_OK by default).
  void Check(int rc, int ok = SQLITE_OK) const;
  [[noreturn]] void Fail(int rc) const;

 private:
  std::string path_;
  sqlite3* db_ = nullptr;
};

// A prepared statement. Text is bound and read as UTF-16 or UTF-8; blobs as bytes.
class Statement {
 public:
  Statement(Database& db, const char* sql);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& Bind(int index, int64_t value);
  Statement& BindReal(int index, double value);
  Statement& Bind(int index, std::string_view utf8);
  Statement& Bind(int index, const std::u16string& text);
  Statement& BindBlob(int index, const void* bytes, size_t size);
  Statement& BindNull(int index);

  // Steps once: true while a row is ready, false when done.
  bool Step();
  // Steps to the end of a statement that returns no rows, then resets it for new bindings.
  void Run();

  int ColumnType(int column) const;
  int64_t Int(int column) const;
  double Real(int column) const;
  std::string Utf8(int column) const;
  std::u16string Utf16(int column) const;
  // The bytes of a blob or text column; throws StoreError when longer than `maxBytes`.
  std::string_view Bytes(int column, size_t maxBytes) const;

 private:
  Database& db_;
  sqlite3_stmt* stmt_ = nullptr;
};

// BEGIN IMMEDIATE on construction, ROLLBACK on destruction unless Commit() ran, so that a
// failure half way through writes nothing. Inside a transaction that is open already it is a
// savepoint of it: its failure undoes its own writes, and its commit keeps them for the outer
// transaction to commit or not.
class Transaction {
 public:
  explicit Transaction(Database& db);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  Database& db_;
  bool nested_;
  bool done_ = false;
};

}  // namespace parcelon::refhost::sqlite

#endif  // PARCELON_HAVE_SQLITE
