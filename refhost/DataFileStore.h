// Where the reference host keeps data file records: the values, data versions and record locks
// behind the host's IDataFileRecords, in the company's memory or in the company store.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/ComBase.h"
#include "refhost/CompanyData.h"
#include "refhost/Text.h"

namespace parcelon::refhost {

// A failure of the data file records or of the company store: a message for people and the
// HRESULT that the host's interfaces answer with.
class StoreError : public std::runtime_error {
 public:
  StoreError(HRESULT code, const std::string& message) : std::runtime_error(message), code_(code) {}
  HRESULT Code() const noexcept { return code_; }

 private:
  HRESULT code_;
};

// The status of Add for a name that is taken: HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS).
inline constexpr HRESULT kAlreadyExists = static_cast<HRESULT>(0x800700B7);

// The longest text, in bytes, that a data file record keeps as a property value or name. A
// longer one is refused with E_INVALIDARG before it reaches the records.
inline constexpr size_t kMaxPropertyBytes = size_t(1) << 20;

// Copies a VARIANT into a PropertyValue: DISP_E_BADVARTYPE for a type the records do not keep
// (see PropertyValue), E_INVALIDARG for a text longer than kMaxPropertyBytes.
HRESULT PropertyValueFromVariant(const VARIANT& value, PropertyValue& out);
// Fills *out, which holds nothing to free; E_OUTOFMEMORY when a BSTR cannot be allocated.
HRESULT PropertyValueToVariant(const PropertyValue& value, VARIANT* out);

// What one Save of a data file record writes: its data version when it was set, and the
// properties written since the record was taken or last saved (VT_EMPTY erases a property).
struct DataFileSave {
  std::optional<LONG> version;
  std::map<Text, PropertyValue, std::less<>> properties;
};

// The data file records of one company. Failures throw StoreError. Each call reads or writes the
// records as they stand now, with no cache, so that a writer elsewhere is seen at once.
class DataFileStore {
 public:
  virtual ~DataFileStore() = default;

  virtual bool Exists(const Text& record) = 0;
  // Adds an empty record of data version 0; kAlreadyExists when the name is taken.
  virtual void Add(const Text& record) = 0;
  // LX_E_NOTFOUND when there is no such record.
  virtual LONG DataVersion(const Text& record) = 0;
  // The property's value; VT_EMPTY when it was never written. LX_E_NOTFOUND when there is no
  // such record.
  virtual PropertyValue Read(const Text& record, const Text& property) = 0;
  // Writes the data version and properties at once, adding the record (data version 0 unless
  // set) when it is gone.
  virtual void Save(const Text& record, const DataFileSave& save) = 0;
  // Removes the record and its properties; LX_E_NOTFOUND when there is no such record.
  virtual void Delete(const Text& record) = 0;

  // The record lock, one holder at a time among all who share the records. `holder` identifies
  // the taker within this process; taking a lock one already holds succeeds. Never waits.
  virtual bool TryLock(const Text& record, const void* holder) = 0;
  // Releases the lock if `holder` holds it; false when it did not.
  virtual bool Unlock(const Text& record, const void* holder) = 0;
};

// The data file records of a company without a store: its `dataFileRecords`, seen by this
// process only. The locks are those of this object.
class MemoryDataFileStore final : public DataFileStore {
 public:
  explicit MemoryDataFileStore(Company& company) : records_(company.dataFileRecords) {}

  bool Exists(const Text& record) override;
  void Add(const Text& record) override;
  LONG DataVersion(const Text& record) override;
  PropertyValue Read(const Text& record, const Text& property) override;
  void Save(const Text& record, const DataFileSave& save) override;
  void Delete(const Text& record) override;
  bool TryLock(const Text& record, const void* holder) override;
  bool Unlock(const Text& record, const void* holder) override;

 private:
  DataFileRecord& Find(const Text& record);

  std::map<Text, DataFileRecord, std::less<>>& records_;
  std::map<Text, const void*, std::less<>> holders_;
};

}  // namespace parcelon::refhost
