// CDataFileStorage: one named data file record of the open company file, reached through the
// host's add-in object, with its property bag read freely and written under the record's lock.
#pragma once

#include <string>

#include "host/HostModel.h"
#include "platform/ComBase.h"

// The names of the records this component keeps: the prefix, a colon and the record's own part.
inline constexpr char kDataFileRecordPrefix[] = "Orvane:NetworkAdapter";
inline constexpr char kDataUploadRecordPart[] = "DataUpload";
inline constexpr char kStyleUploadTimesRecordPart[] = "Parcelon:StyleUploadTimes";
std::string DataFileRecordName(const char* part);

class CDataFileStorage {
 public:
  // A write or delete that failed, and one whose lock stayed refused through every try.
  static constexpr HRESULT kStorageFailed = HRESULT(-9995);
  static constexpr HRESULT kLockRefused = HRESULT(-9997);
  // Tries to take the record's lock, and the wait between two tries.
  static constexpr int kLockTries = 5;
  static constexpr uint32_t kLockRetryMilliseconds = 100;

  virtual ~CDataFileStorage() = default;

  // Attaches to the host's current company file and remembers the record's name and version.
  HRESULT SelectDFR(const char* name, long version);
  // Takes the selected record when the company file has one; with `create`, adds it when it has
  // none. Without `create` and without a record, succeeds with no record held.
  HRESULT InitDFRPointer(bool create);
  // The property `name` into *value (VT_EMPTY when the record or the property does not exist).
  // Never creates the record and takes no lock.
  HRESULT ReadProperty(const char* name, VARIANT* value);
  // Writes `name` = `value` under the record's lock, creating the record when needed.
  HRESULT WriteProperty(const char* name, VARIANT value);
  // Deletes the record under its lock.
  HRESULT DeleteDFR();

 private:
  // Takes the record's lock: kLockTries tries, kLockRetryMilliseconds apart.
  HRESULT Lock(const char* prefix);
  // Releases the lock after a failure of `hr`, which is logged and returned.
  HRESULT UnlockAfterFailure(HRESULT hr, const char* prefix, const std::string& message);

  ICompanyFilePtr companyFile_;
  std::string name_;
  long version_ = 0;
  bool selected_ = false;
  IDataFileRecordPtr record_;
};
