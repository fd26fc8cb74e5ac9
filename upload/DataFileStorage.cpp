#include "upload/DataFileStorage.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "upload/UploadClock.h"

using parcelon::forms::Required;

namespace {

constexpr char kSelectPrefix[] = "NetworkAdapterManager:CDataFileStorage::SelectDFR(const char*, long)";
constexpr char kInitPrefix[] = "NetworkAdapterManager:CDataFileStorage::InitDFRPointer()";
constexpr char kReadPrefix[] = "NetworkAdapterManager:CDataFileStorage::ReadProperty(const char*, VARIANT*)";
constexpr char kWritePrefix[] = "NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT)";
constexpr char kDeletePrefix[] = "NetworkAdapterManager:CDataFileStorage::DeleteDFR()";

constexpr char kGetBag[] = "Failed to get property bag from data file record in LX.";

// A BSTR of ANSI text; raises E_OUTOFMEMORY when it cannot be made.
Bstr BstrOf(const std::string& text) {
  Bstr out;
  ThrowIfFailed(parcelon::AnsiToBstr(text.data(), text.size(), out.Out()));
  return out;
}

}  // namespace

std::string DataFileRecordName(const char* part) {
  return std::string(kDataFileRecordPrefix) + ":" + part;
}

HRESULT CDataFileStorage::SelectDFR(const char* name, long version) {
  ILXApplicationPtr application;
  RETURN_IF_FAILED_LOG(CoCreateInstance(parcelon::host::CLSID_LXAddIn, nullptr, CLSCTX_INPROC_SERVER,
                                        IidOf<ILXApplication>(), application.ReleaseAndGetVoidAddress()),
                       kSelectPrefix, "Failed to get LX Application ptr.");
  IAddInGoodiesPtr goodies;
  RETURN_IF_FAILED_LOG(Required(application)->GetAddInGoodies(goodies.ReleaseAndGetAddressOf()),
                       kSelectPrefix, "Failed to get add-in goodies from LX application.");
  ICompanyFilePtr companyFile;
  RETURN_IF_FAILED_LOG(Required(goodies)->GetCurrentCompanyFile(companyFile.ReleaseAndGetAddressOf()),
                       kSelectPrefix, "Failed to attach to current company from add-in goodies in LX.");
  Required(companyFile);
  companyFile_ = companyFile;
  name_ = name;
  version_ = version;
  selected_ = true;
  record_.Reset();
  return S_OK;
}

HRESULT CDataFileStorage::InitDFRPointer(bool create) {
  if (record_) return S_OK;
  IDataFileRecordsPtr records;
  RETURN_IF_FAILED_LOG(Required(companyFile_)->GetDataFileRecords(records.ReleaseAndGetAddressOf()),
                       kInitPrefix, "Failed to get data file records from company file in LX.");
  const Bstr name = BstrOf(name_);
  VARIANT_BOOL exists = VARIANT_FALSE;
  RETURN_IF_FAILED_LOG(Required(records)->Exists(name.Get(), &exists), kInitPrefix,
                       "Failed to determine if a data file record exists from data file records in LX.");
  if (exists != VARIANT_FALSE) {
    RETURN_IF_FAILED_LOG(records->GetItem(name.Get(), record_.ReleaseAndGetAddressOf()), kInitPrefix,
                         "Failed to ask for item from data file records in LX.");
  } else if (create) {
    RETURN_IF_FAILED_LOG(records->Add(name.Get(), record_.ReleaseAndGetAddressOf()), kInitPrefix,
                         "Failed to add from data file records in LX.");
  }
  return S_OK;
}

HRESULT CDataFileStorage::ReadProperty(const char* name, VARIANT* value) {
  VariantClear(value);
  if (!selected_)
    RETURN_HR_LOG(E_FAIL, kReadPrefix, "Must first call SelectDFR() to initialize this class.");
  const HRESULT init = InitDFRPointer(false);
  if (FAILED(init)) return init;
  // A company file without the record has never written a value: everything reads empty.
  if (!record_) return S_OK;
  IDataFilePropertyBagPtr bag;
  RETURN_IF_FAILED_LOG(record_->GetPropertyBag(bag.ReleaseAndGetAddressOf()), kReadPrefix, kGetBag);
  // The name is data: it goes into the message as text, never as a format.
  const std::string readFailed =
      std::string("Failed to read property \"") + name + "\" from property bag in LX.";
  RETURN_IF_FAILED_LOG(Required(bag)->Read(BstrOf(name).Get(), value), kReadPrefix, readFailed.c_str());
  return S_OK;
}

HRESULT CDataFileStorage::Lock(const char* prefix) {
  for (int attempt = 1;; ++attempt) {
    VARIANT_BOOL locked = VARIANT_FALSE;
    const HRESULT hr = record_->TryLock(&locked);
    if (FAILED(hr)) {
      CNALogger::Log(prefix, "Failed to acquire lock for data file record in LX.", hr);
      return kStorageFailed;
    }
    if (locked != VARIANT_FALSE) return S_OK;
    if (attempt == kLockTries) break;
    parcelon::upload::CurrentUploadClock().SleepMilliseconds(kLockRetryMilliseconds);
  }
  RETURN_HR_LOG(kLockRefused, prefix, "Could not acquire data file record lock in LX.");
}

HRESULT CDataFileStorage::UnlockAfterFailure(HRESULT hr, const char* prefix, const std::string& message) {
  CNALogger::Log(prefix, message.c_str(), hr);
  LOG_IF_FAILED(record_->Unlock(), prefix, "Failed to unlock data file record in LX.");
  return kStorageFailed;
}

HRESULT CDataFileStorage::WriteProperty(const char* name, VARIANT value) {
  if (!selected_)
    RETURN_HR_LOG(kStorageFailed, kWritePrefix, "Must first call SelectDFR() to initialize this class");
  const HRESULT init = InitDFRPointer(true);
  if (FAILED(init)) return init;
  Required(record_);
  const HRESULT locked = Lock(kWritePrefix);
  if (FAILED(locked)) return locked;

  IDataFilePropertyBagPtr bag;
  HRESULT hr = record_->GetPropertyBag(bag.ReleaseAndGetAddressOf());
  if (FAILED(hr)) return UnlockAfterFailure(hr, kWritePrefix, kGetBag);
  hr = Required(bag)->Write(BstrOf(name).Get(), value);
  if (FAILED(hr))
    return UnlockAfterFailure(hr, kWritePrefix,
                              std::string("Failed to write property \"") + name + "\" to property bag in LX.");
  hr = record_->SetDataVersion(1);
  if (FAILED(hr)) return UnlockAfterFailure(hr, kWritePrefix, "Failed to put data version to data file record in LX.");
  hr = record_->Save();
  if (FAILED(hr)) return UnlockAfterFailure(hr, kWritePrefix, "Failed to save data file record in LX.");
  // The value is saved: a lock that will not let go is reported, but the write is done.
  LOG_IF_FAILED(record_->Unlock(), kWritePrefix, "Failed to unlock data file record in LX.");
  return S_OK;
}

HRESULT CDataFileStorage::DeleteDFR() {
  if (!selected_)
    RETURN_HR_LOG(kStorageFailed, kDeletePrefix, "Must first call SelectDFR() to initialize this class");
  const HRESULT init = InitDFRPointer(false);
  if (FAILED(init)) return init;
  if (!record_) return S_OK;
  const HRESULT locked = Lock(kDeletePrefix);
  if (FAILED(locked)) return locked;
  const HRESULT hr = record_->Delete();
  if (FAILED(hr)) return UnlockAfterFailure(hr, kDeletePrefix, "Failed to delete data file record in LX.");
  LOG_IF_FAILED(record_->Unlock(), kDeletePrefix, "Failed to unlock data file record in LX.");
  record_.Reset();
  return S_OK;
}
