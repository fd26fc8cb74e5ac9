// The company store: one SQLite file that holds a company's fixture and every change made to the
// company since (attributes, list record saves, data file records), shared by every process
// that opens it.
#pragma once

#if PARCELON_HAVE_SQLITE

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/CompanyData.h"
#include "refhost/DataFileStore.h"
#include "refhost/ListKind.h"
#include "refhost/RecordLocks.h"
#include "refhost/Sqlite.h"
#include "refhost/Text.h"

namespace parcelon::refhost {

// The long attributes of one list record, all of them, as the last write of the record's
// attributes left them.
struct StoredAttributes {
  ListKind list = ListKind::Terms;
  RecNum recNum = 0;
  std::vector<Attribute> attributes;
};

// One field of a list record as a Save left it: the field's name as fixtures spell it and its
// value as JSON text.
struct StoredField {
  std::string name;
  std::string json;
};

// A field of a record of a list, as loaded from the store.
struct StoredRecordField {
  ListKind list = ListKind::Terms;
  RecNum recNum = 0;
  StoredField field;
};

// The store of one company. Every write is one SQLite transaction in WAL mode, so that a crash
// at any point keeps every write that returned and none that did not; readers and writers in
// other processes wait for each other (busy timeout) rather than fail. Data file records are
// read and written in the file at each call. Failures throw StoreError.
class CompanyStore final : public DataFileStore {
 public:
  // The layout of the tables this build reads and writes.
  static constexpr int kSchemaVersion = 1;

  // Makes a new store at `path` holding the fixture's text (`source` names where it came from,
  // for messages) and the company's data file records, then opens it. The file appears whole or
  // not at all; an existing file at `path` is refused and left alone.
  static std::shared_ptr<CompanyStore> Create(const std::string& path, std::string_view fixtureJson,
                                              std::string_view source, const Company& company);
  // Opens an existing store. A file that is not a store, or a store of another schema version,
  // is refused without a single write to it.
  static std::shared_ptr<CompanyStore> Open(const std::string& path);

  ~CompanyStore() override;

  const std::string& Path() const { return db_.Path(); }
  // The fixture the store was made from, and where that fixture came from.
  std::string FixtureJson();
  std::string FixtureSource();

  // The attributes of every list record whose attributes were written since the store was made,
  // to put in place of the fixture's; in the order of their first write.
  std::vector<StoredAttributes> Attributes();
  // Writes the attributes of a list record: `attributes` is the record's whole set, which
  // replaces what the fixture or an earlier write gave it (an empty set removes them all).
  void WriteAttributes(ListKind list, RecNum recNum, const std::vector<Attribute>& attributes);

  // The fields of list records as their last saves left them, to apply over the fixture.
  std::vector<StoredRecordField> RecordFields();
  // Writes what a Save of a list record changed, as one transaction: the fields given (added or
  // replaced; a field not given keeps its stored value) and, when given, the record's whole set
  // of attributes as WriteAttributes does.
  void SaveRecord(ListKind list, RecNum recNum, const std::vector<StoredField>& fields,
                  const std::vector<Attribute>* attributes);

  // Makes the writes until EndWrites one transaction: all of them reach the file at EndWrites,
  // none when the process ends before it. False when writes are grouped already.
  bool BeginWrites();
  // Commits the writes since BeginWrites, or with `commit` false rolls them back; false when
  // none were begun.
  bool EndWrites(bool commit = true);

  // DataFileStore: the data file records of the store, locked through the lock file beside it
  // (the store's path followed by ".locks").
  bool Exists(const Text& record) override;
  void Add(const Text& record) override;
  LONG DataVersion(const Text& record) override;
  PropertyValue Read(const Text& record, const Text& property) override;
  void Save(const Text& record, const DataFileSave& save) override;
  void Delete(const Text& record) override;
  bool TryLock(const Text& record, const void* holder) override;
  bool Unlock(const Text& record, const void* holder) override;

 private:
  explicit CompanyStore(const std::string& path);

  void ReplaceAttributes(ListKind list, RecNum recNum, const std::vector<Attribute>& attributes);
  RecNum RecNumOf(sqlite::Statement& row, int column, const char* table);
  ListKind ListOf(sqlite::Statement& row, int column, const char* table);
  [[noreturn]] void Damaged(const std::string& what);

  sqlite::Database db_;
  RecordLocks locks_;
  // The transaction of the writes between BeginWrites and EndWrites; each write is a savepoint
  // inside it.
  std::unique_ptr<sqlite::Transaction> writes_;
};

}  // namespace parcelon::refhost

#endif  // PARCELON_HAVE_SQLITE
