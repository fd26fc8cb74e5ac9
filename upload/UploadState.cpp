#include "upload/UploadState.h"

#include <cinttypes>
#include <cstdio>
#include <string>

#include "diagnostics/LogIfFailed.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "upload/DataFileStorage.h"

namespace parcelon::upload {
namespace {

constexpr char kStoreTimePrefix[] = "Parcelon:CNA_Forms::StoreLastClientDataUploadTime(time_t)";
constexpr char kRetrieveTimePrefix[] = "Parcelon:CNA_Forms::RetrieveLastClientDataUploadTime(OLAString*)";
constexpr char kStoreTokenPrefix[] = "Parcelon:CNA_Forms::StoreLastDataUploadToken(OLAString)";
constexpr char kRetrieveTokenPrefix[] = "Parcelon:CNA_Forms::RetrieveLastDataUploadToken(OLAString*)";

constexpr char kTimeProperty[] = "LastClientDataUploadTime";
constexpr char kTokenProperty[] = "LastDataUploadToken";
constexpr char kNoTimeAccess[] = "Failed to access data file for last client data upload time.";
constexpr char kNoTokenAccess[] = "Failed to access data file for last data upload token.";

// A VARIANT cleared on every exit.
struct Variant : VARIANT {
  Variant() { VariantInit(this); }
  ~Variant() { VariantClear(this); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
};

// The DataUpload record, selected; every failure is logged with `prefix` and `failure`.
HRESULT SelectDataUploadRecord(CDataFileStorage& storage, const char* prefix, const char* failure) {
  const std::string name = DataFileRecordName(kDataUploadRecordPart);
  if (FAILED(storage.SelectDFR(name.c_str(), 1))) RETURN_HR_LOG(E_FAIL, prefix, failure);
  return S_OK;
}

}  // namespace

HRESULT StoreLastClientDataUploadTime(time_t uploadTime) {
  CDataFileStorage storage;
  RETURN_IF_FAILED(SelectDataUploadRecord(storage, kStoreTimePrefix, kNoTimeAccess));
  Variant value;
  value.vt = VT_I8;
  value.llVal = int64_t(uploadTime);
  if (FAILED(storage.WriteProperty(kTimeProperty, value))) {
    const std::string message = "Failed to write last client data upload time \"" +
                                std::to_string(static_cast<unsigned long long>(uploadTime)) +
                                "\" to the data file.";
    RETURN_HR_LOG(E_FAIL, kStoreTimePrefix, message.c_str());
  }
  return S_OK;
}

HRESULT RetrieveLastClientDataUploadTime(LONG* uploadTime) {
  CDataFileStorage storage;
  RETURN_IF_FAILED(SelectDataUploadRecord(storage, kRetrieveTimePrefix, kNoTimeAccess));
  Variant stored, converted;
  if (FAILED(storage.ReadProperty(kTimeProperty, &stored)) ||
      FAILED(VariantChangeType(&converted, &stored, 0, VT_I4)))
    RETURN_HR_LOG(E_FAIL, kRetrieveTimePrefix, "Failed to read last client data upload time property from data file.");
  *uploadTime = converted.lVal;
  return S_OK;
}

HRESULT StoreLastDataUploadToken(const OLAString& token) {
  CDataFileStorage storage;
  RETURN_IF_FAILED(SelectDataUploadRecord(storage, kStoreTokenPrefix, kNoTokenAccess));
  Variant value;
  value.vt = VT_BSTR;
  ThrowIfFailed(AnsiToBstr(token.GetText(), size_t(token.GetLength()), &value.bstrVal));
  if (FAILED(storage.WriteProperty(kTokenProperty, value))) {
    // The token came from the network: it is text in the message, never its format.
    const std::string message = std::string("Failed to write last data upload token \"") +
                                token.GetText() + "\" to the data file.";
    RETURN_HR_LOG(E_FAIL, kStoreTokenPrefix, message.c_str());
  }
  return S_OK;
}

HRESULT RetrieveLastDataUploadToken(OLAString* token) {
  CDataFileStorage storage;
  RETURN_IF_FAILED(SelectDataUploadRecord(storage, kRetrieveTokenPrefix, kNoTokenAccess));
  Variant stored, text;
  if (FAILED(storage.ReadProperty(kTokenProperty, &stored)) ||
      (stored.vt != VT_EMPTY && FAILED(VariantChangeType(&text, &stored, 0, VT_BSTR))))
    RETURN_HR_LOG(E_FAIL, kRetrieveTokenPrefix, "Failed to read last data upload token property from data file.");
  std::string ansi;
  if (stored.vt != VT_EMPTY && !WideToAnsi(text.bstrVal, SysStringLen(text.bstrVal), ansi))
    return E_OUTOFMEMORY;
  if (!token->SetText(ansi.empty() ? "0" : ansi.c_str(), ansi.empty() ? 1 : ansi.size())) return E_OUTOFMEMORY;
  return S_OK;
}

LONG LastClientDataUploadTimeBefore(int64_t now) {
  LONG uploadTime = 0;
  if (FAILED(RetrieveLastClientDataUploadTime(&uploadTime))) return 0;
  return uploadTime > now ? 0 : uploadTime;
}

}  // namespace parcelon::upload
