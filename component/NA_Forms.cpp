#include "component/NA_Forms.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "component/NA_Form.h"
#include "diagnostics/Dumps.h"
#include "diagnostics/FeatureSettings.h"
#include "diagnostics/HostMessageBox.h"
#include "diagnostics/LogIfFailed.h"
#include "forms/EnumToString.h"
#include "forms/FormRequest.h"
#include "host/HostServices.h"
#include "platform/CodePage.h"
#include "response/ResponseProcessing.h"
#include "upload/DataUploadRequest.h"
#include "upload/UploadAttributes.h"
#include "upload/UploadClock.h"
#include "upload/UploadState.h"

namespace {

using OleString = std::basic_string<OLECHAR>;
using OleStringView = std::basic_string_view<OLECHAR>;
using parcelon::Guarded;
using parcelon::ReturnText;

constexpr const char* kBuildXMLPrefix = "Parcelon:CNA_Forms::BuildXML(short, BSTR*)";
constexpr const char* kOnSynchCompletedPrefix = "Parcelon:CNA_Forms::OnSynchCompleted()";
constexpr const char* kURLPrefix = "Parcelon:CNA_Forms::get_URL";
constexpr const char* kContentTypePrefix = "Parcelon:CNA_Forms::get_ContentType";
constexpr const char* kRequestHeaderParamsPrefix = "Parcelon:CNA_Forms::get_RequestHeaderParams";
constexpr const char* kResponseHeaderParamNamePrefix =
    "Parcelon:CNA_Forms::get_ResponseHeaderParamName";
constexpr const char* kSetResponseHeaderParamValuePrefix =
    "Parcelon:CNA_Forms::SetResponseHeaderParamValue";
constexpr const char* kTxEParamsPrefix = "Parcelon:CNA_Forms::get_TxEParams";
constexpr const char* kPossiblyDeletePrefix = "Parcelon:CNA_Forms::PossiblyDeleteAllUploadTimeAttributes()";

// The switch that removes every upload-time stamp before each request.
constexpr const char* kRemoveUploadTimesKey = "NetworkAdapter.RemoveUploadTimeAttrs";

constexpr uint64_t kBuilderCapacity = 4096;

constexpr const char* kFormGatewayURLKey = "EmailService.FormGatewayURL";
constexpr const char* kFormGatewayAttachURLKey = "EmailService.FormGatewayAttachURL";

// The document type declarations: the host forms' request, and the delivery request of any other
// document.
constexpr const OLECHAR* kLXMainDocType = PARCELON_OLESTR(
    "ZPN PUBLIC '-//ORVANE//DTD LXN Platform LXMAIN 1.0//EN' "
    "'https://gateway.orvane.example/dtds/lxmain.dtd'");
constexpr const OLECHAR* kFormGateDocType = PARCELON_OLESTR(
    "ZPN PUBLIC '-//ORVANE//DTD LXN Platform FORMGATE 1.0//EN' "
    "'https://gateway.orvane.example/dtds/formgate.dtd'");

// The response header that carries the attachment's message identifier, and the cookie in it:
// "messageid=" and the identifier, up to the next ";".
constexpr OleStringView kCookieHeader = PARCELON_OLESTR("Set-Cookie");
constexpr OleStringView kMessageIdName = PARCELON_OLESTR("messageid");
constexpr OLECHAR kCookieSeparator = PARCELON_OLESTR(';');
// The identifier starts after "messageid=" ...
constexpr ptrdiff_t kMessageIdOffset = ptrdiff_t(kMessageIdName.size()) + 1;
// ... and is read as if one closing character followed it before the separator, so the last
// character before the separator is not part of it.
constexpr ptrdiff_t kMessageIdOverhead = kMessageIdOffset + 1;
// The identifier must be shorter than this.
constexpr ptrdiff_t kMessageIdLimit = 100;

constexpr const char* kNoMessageId = "Did not find expected messageid value";

// The send methods that deliver the form, and so travel with an attachment pass first.
bool IsDelivering(NASendType method) {
  return method == nastEMAIL || method == nastFAX || method == nastPAPER_MAIL;
}

// A BSTR as text; null reads as empty.
OleStringView ViewOf(BSTR text) {
  return OleStringView(text ? text : PARCELON_OLESTR(""), SysStringLen(text));
}

// Appends one request header line: the name, ": ", the value and CR LF.
void AppendHeaderLine(OleString& text, OleStringView name, OleStringView value) {
  text.append(name).append(PARCELON_OLESTR(": ")).append(value).append(PARCELON_OLESTR("\r\n"));
}

// A new BSTR of `text` in `*out`.
HRESULT ReturnText(const OleString& text, BSTR* out) {
  *out = SysAllocStringLen(text.data(), UINT(text.size()));
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace

// ---- IUnknown -------------------------------------------------------------------------------

void* CNA_Forms::FindInterface(REFIID riid) {
  if (parcelon::IsOneOf<IUnknown, IDispatch, INA_Forms, INA_Forms2>(riid))
    return static_cast<INA_Forms2*>(this);
  if (parcelon::IsOneOf<INA_Base, INA_Base2, INA_Base3, INA_Base4, INA_Base5>(riid))
    return static_cast<INA_Base5*>(this);
  return nullptr;
}

// ---- INA_Forms, INA_Forms2 ------------------------------------------------------------------

HRESULT CNA_Forms::AddForm(INA_Form** pForm) {
  if (!pForm) return E_POINTER;
  *pForm = nullptr;
  return Guarded([&] {
    ComPtr<INA_Form7> form;
    const HRESULT hr =
        CNA_Form::CreateInstance(IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress());
    if (FAILED(hr)) return hr;
    forms_.push_back(form);
    *pForm = form.Detach();
    return S_OK;
  });
}

HRESULT CNA_Forms::RemoveAllForms() {
  forms_.clear();
  return S_OK;
}

// ---- The send states ------------------------------------------------------------------------

HRESULT CNA_Forms::Initialize() {
  if (forms_.empty()) {
    // Nothing to send: the send is over before it begins.
    currentForm_.Reset();
    state_ = kDone;
    return E_UNEXPECTED;
  }
  cursor_ = 0;
  currentForm_ = forms_.front();
  NASendType method = nastNONE;
  const HRESULT hr = currentForm_->get_SendMethod(&method);
  if (FAILED(hr)) return hr;
  state_ = IsDelivering(method) ? kAttachmentPass : kFormPass;
  return S_OK;
}

HRESULT CNA_Forms::OnSynchCompleted() {
  attachment_.Release();
  // The answer counts for this pass only.
  const bool uploadAccepted = std::exchange(dataUploadAccepted_, false) && uploadWritten_;
  switch (state_) {
    case kAttachmentPass: {
      // The attachment went up when its response gave the form a message identifier (an empty
      // one counts).
      Bstr messageID;
      if (SUCCEEDED(ReadCurrentForm(&INA_Form7::get_MessageID, messageID)) && messageID.Get()) {
        state_ = kFormPass;
        return S_OK;
      }
      RETURN_HR_LOG(kNoAttachmentMessageID, kOnSynchCompletedPrefix,
                    "Failed to get parcelon attachment message ID");
    }
    case kFormPass:
      return CompleteFormPass(uploadAccepted);
    default:
      return S_OK;
  }
}

HRESULT CNA_Forms::CompleteFormPass(bool uploadAccepted) {
  if (cursor_ >= forms_.size()) {
    // The forms were removed during the send.
    state_ = kDone;
  } else {
    currentForm_ = forms_[cursor_];
    VARIANT_BOOL synchMultiple = VARIANT_FALSE;
    HRESULT hr = currentForm_->get_SynchMultiple(&synchMultiple);
    if (FAILED(hr)) return hr;
    if (synchMultiple != VARIANT_FALSE) {
      // One pass carried the whole send.
      state_ = kDone;
    } else {
      NASendType method = nastNONE;
      hr = currentForm_->get_SendMethod(&method);
      if (FAILED(hr)) return hr;
      // The next pass takes the next form. Whether it starts with an attachment pass is decided
      // by the send method of the form just completed, not by that of the next form.
      if (++cursor_ < forms_.size()) {
        state_ = IsDelivering(method) ? kAttachmentPass : kFormPass;
        currentForm_ = forms_[cursor_];
      } else {
        state_ = kDone;
      }
    }
  }

  // Whether an upload was due is what this pass wrote, not a question asked again of a form
  // that may be the next one by now.
  return uploadAccepted ? RecordAcceptedUpload() : S_OK;
}

HRESULT CNA_Forms::get_IsAnotherSynchNeeded(VARIANT_BOOL* pDoItAgain) {
  if (!pDoItAgain) return E_POINTER;
  *pDoItAgain = state_ == kDone ? VARIANT_FALSE : VARIANT_TRUE;
  return S_OK;
}

// ---- The current form -----------------------------------------------------------------------

HRESULT CNA_Forms::CurrentFormType(NAFormType& type) const {
  type = naftINVOICE;
  return currentForm_ ? currentForm_->get_FormType(&type) : S_OK;
}

HRESULT CNA_Forms::CurrentSendMethod(NASendType& method) const {
  method = nastNONE;
  return currentForm_ ? currentForm_->get_SendMethod(&method) : S_OK;
}

HRESULT CNA_Forms::ReadCurrentForm(StringGetter getter, Bstr& value) const {
  if (!currentForm_) return E_UNEXPECTED;
  return (currentForm_.Get()->*getter)(value.Out());
}

// ---- The company data upload ----------------------------------------------------------------

HRESULT CNA_Forms::PossiblyDeleteAllUploadTimeAttributes() {
  const bool asked = AmbitAccess::GetFeatureParamAsBool(AmbitAccess::kFeatureSection, kRemoveUploadTimesKey, nullptr);
  if (!asked && forceNewCompany_ == VARIANT_FALSE) return S_OK;
  ICompanyFilePtr company;
  RETURN_IF_FAILED_LOG(parcelon::GetCurrentCompanyFilePtr(company), kPossiblyDeletePrefix,
                       "Failed to get current company file.");
  RETURN_IF_FAILED(CUploadAttributeKiller(company).RemoveAttributes());
  if (asked) {
    // The switch removes the stamps before every request until it is turned off: say so.
    const std::string text = std::string("Upload time attributes successfully removed.\n") +
                             "To avoid further attribute removal,\nplease reset the value of \"" +
                             kRemoveUploadTimesKey + "\"\nto \"0\" in the \"" + AmbitAccess::kFileName +
                             "\" file at this time.";
    const std::string caption = std::string(AmbitAccess::kFeatureSection) + " Warning";
    parcelon::ShowMessageBox(text.c_str(), caption.c_str(), parcelon::host::kMessageBoxIconStop, false);
  }
  return S_OK;
}

HRESULT CNA_Forms::IsDataUploadDue(bool& due) {
  return IsOkayToBuildLXDataMsgsRq(doAllCustomers_ != VARIANT_FALSE, currentForm_.Get(), &due);
}

HRESULT CNA_Forms::BuildDataMsgSet(XMLBuilder& builder) {
  uploadWritten_ = false;
  // The records are stamped with the time their data was read, so that an edit made while the
  // request is on its way is sent again next time.
  const int64_t builtAt = parcelon::upload::CurrentUploadClock().Now();
  const DataUploadSession session{recNumMap_, forms_, forceNewCompany_ != VARIANT_FALSE,
                                  doAllCustomers_ != VARIANT_FALSE, LONG(uploadScope_)};
  RETURN_IF_FAILED(CDataUploadRequest(session).BuildLXDataMsgsRq(builder));
  uploadWritten_ = true;
  uploadBuiltAt_ = builtAt;
  return S_OK;
}

HRESULT CNA_Forms::RecordAcceptedUpload() {
  ICompanyFilePtr company;
  RETURN_IF_FAILED_LOG(parcelon::GetCurrentCompanyFilePtr(company), kOnSynchCompletedPrefix,
                       "Failed to get company file ptr.");
  // A record that cannot be stamped is logged by the writer and goes up again next time; the
  // gateway has the upload all the same.
  (void)CUploadAttributeWriter(company, recNumMap_, uploadBuiltAt_).UpdateUploadTimeAttributes();
  RETURN_IF_FAILED_LOG(parcelon::upload::StoreLastClientDataUploadTime(time_t(uploadBuiltAt_ + 1)),
                       kOnSynchCompletedPrefix, "Failed to store the client data upload time.");
  return S_OK;
}

void CNA_Forms::StartPass() {
  // Nothing of an earlier pass's upload or its answer may count for this pass's.
  dataUploadAccepted_ = false;
  uploadWritten_ = false;
}

// ---- The pass's request ---------------------------------------------------------------------

HRESULT CNA_Forms::get_LoginType(NALoginType* pLoginType) {
  if (!pLoginType) return E_POINTER;
  *pLoginType = naltSTANDARDLOGIN;
  return S_OK;
}

HRESULT CNA_Forms::IsSendMethod() {
  if (!currentForm_) return S_FALSE;
  NASendType method = nastNONE;
  const HRESULT hr = CurrentSendMethod(method);
  if (FAILED(hr)) return hr;
  return IsDelivering(method) ? S_OK : S_FALSE;
}

HRESULT CNA_Forms::get_DTD_ID(BSTR* pDtdIdToUse) {
  return ReturnText(PARCELON_OLESTR("LXMAIN"), pDtdIdToUse);
}

HRESULT CNA_Forms::get_DTD_Version(BSTR* pDtdVersionToUse) {
  return ReturnText(PARCELON_OLESTR("1.0"), pDtdVersionToUse);
}

HRESULT CNA_Forms::get_ServiceID(BSTR* pServiceID) {
  const OLECHAR* service = PARCELON_OLESTR("1006");
  NASendType firstMethod = nastNONE;
  if (!forms_.empty() && SUCCEEDED(forms_.front()->get_SendMethod(&firstMethod)) &&
      firstMethod == nastFAX)
    service = PARCELON_OLESTR("2010");
  NAFormType type = naftINVOICE;
  if (SUCCEEDED(CurrentFormType(type)) && !IsHostFormType(type)) service = PARCELON_OLESTR("2036");
  return ReturnText(service, pServiceID);
}

HRESULT CNA_Forms::get_XMLDocType(BSTR* pVal) {
  NAFormType type = naftINVOICE;
  const bool otherDocument = SUCCEEDED(CurrentFormType(type)) && !IsHostFormType(type);
  return ReturnText(otherDocument ? kFormGateDocType : kLXMainDocType, pVal);
}

HRESULT CNA_Forms::put_AuthParams(BSTR ticketID, BSTR authid) {
  return Guarded([&] {
    Bstr ticket, auth;
    ThrowIfFailed(parcelon::CopyBstr(ticketID, ticket.Out()));
    ThrowIfFailed(parcelon::CopyBstr(authid, auth.Out()));
    ticket_ = std::move(ticket);
    authid_ = std::move(auth);
    return S_OK;
  });
}

HRESULT CNA_Forms::BuildXML(short indentLevel, BSTR* pXML) {
  if (!pXML) return E_POINTER;
  *pXML = nullptr;
  StartPass();
  return Guarded([&] {
    const uint32_t depth = uint32_t(std::max<short>(indentLevel, 0));
    if (request_)
      request_->Clear(depth);
    else
      request_.emplace(depth, kBuilderCapacity);
    XMLBuilder& builder = *request_;

    NAFormType type = naftINVOICE;
    RETURN_IF_FAILED_LOG(CurrentFormType(type), kBuildXMLPrefix,
                         "Failed to get form type for current form.");
    if (IsHostFormType(type)) {
      LOG_IF_FAILED(PossiblyDeleteAllUploadTimeAttributes(), kBuildXMLPrefix,
                    "Failed to delete all the upload time attributes.  Continuing...");
      bool uploadDue = false;
      RETURN_IF_FAILED_LOG(IsDataUploadDue(uploadDue), kBuildXMLPrefix,
                           "Failed to find out if we need to do data upload.");
      if (uploadDue)
        RETURN_IF_FAILED_LOG(BuildDataMsgSet(builder), kBuildXMLPrefix,
                             "Failed to build LX data msg set.");
    }

    if (currentForm_) {
      NASendType method = nastNONE;
      const HRESULT hr = CurrentSendMethod(method);
      if (FAILED(hr)) return hr;
      if (IsDelivering(method)) {
        Bstr formXML;
        RETURN_IF_FAILED_LOG(
            currentForm_->BuildXML(short(std::min<int>(indentLevel, SHRT_MAX - 1) + 1),
                                   formXML.Out()),
            kBuildXMLPrefix, "Failed to build XML for a form");
        if (!formXML.Empty()) {
          std::string text;
          if (!parcelon::WideToAnsi(formXML.Get(), formXML.Length(), text)) return E_OUTOFMEMORY;
          builder.AppendRaw(text.c_str());
        }
      }
    }
    RETURN_IF_FAILED_LOG(builder.GetXMLAsBSTR(pXML), kBuildXMLPrefix, "Failed to write the request.");
    return S_OK;
  });
}

HRESULT CNA_Forms::BuildData(BYTE** pData) {
  StartPass();
  return attachment_.BuildData(currentForm_.Get(), pData);
}

HRESULT CNA_Forms::get_DataSize(LONG* pVal) {
  if (!pVal) return E_POINTER;
  *pVal = attachment_.DataSize();
  return S_OK;
}

HRESULT CNA_Forms::get_URL(BSTR* pVal) {
  if (!pVal) return E_POINTER;
  *pVal = nullptr;
  return Guarded([&] {
    NAFormType type = naftINVOICE;
    const HRESULT typeRead = CurrentFormType(type);
    if (FAILED(typeRead)) {
      CNALogger::Log(kURLPrefix, "Unable to get form type for current form.", typeRead);
      return E_FAIL;
    }
    // The attachment goes to its own address; every other pass to the form gateway. A document
    // other than a host form has no pass outside states 1 and 2: report it, but still answer.
    HRESULT result = S_OK;
    const char* key = state_ == kAttachmentPass ? kFormGatewayAttachURLKey : kFormGatewayURLKey;
    if (!IsHostFormType(type) && state_ != kAttachmentPass && state_ != kFormPass) {
      CNALogger::Log(kURLPrefix, "Unexpected send state.", E_FAIL);
      result = E_FAIL;
    }
    const std::string address = AmbitAccess::GetURLAddress(key);
    const HRESULT hr = parcelon::AnsiToBstr(address.data(), address.size(), pVal);
    return FAILED(hr) ? hr : result;
  });
}

HRESULT CNA_Forms::get_ContentType(BSTR* pVal) {
  if (!pVal) return E_POINTER;
  *pVal = nullptr;
  if (state_ != kAttachmentPass) return ReturnText(PARCELON_OLESTR("application/x-zpn"), pVal);
  // The attachment is declared by its bare document type, which must be "pdf"; the gateway
  // expects that word, not a MIME type.
  constexpr OleStringView kPdf = PARCELON_OLESTR("pdf");
  Bstr docType;
  RETURN_IF_FAILED_LOG(ReadCurrentForm(&INA_Form7::get_DocType, docType), kContentTypePrefix,
                       "Unable to get doc type for current form.");
  if (ViewOf(docType.Get()) != kPdf) RETURN_HR_LOG(E_FAIL, kContentTypePrefix, "Invalid doc type");
  return ReturnText(kPdf.data(), pVal);
}

HRESULT CNA_Forms::get_RequestHeaderParams(BSTR* pVal) {
  if (!pVal) return E_POINTER;
  return Guarded([&] {
    OleString text;
    if (state_ == kAttachmentPass) {
      Bstr fileName;
      RETURN_IF_FAILED_LOG(ReadCurrentForm(&INA_Form7::get_AttachmentFileName, fileName),
                           kRequestHeaderParamsPrefix,
                           "Failed to get attachment filename from current form.");
      AppendHeaderLine(text, PARCELON_OLESTR("ticket"), ViewOf(ticket_.Get()));
      AppendHeaderLine(text, PARCELON_OLESTR("authid"), ViewOf(authid_.Get()));
      AppendHeaderLine(text, PARCELON_OLESTR("filename"), ViewOf(fileName.Get()));
      AppendHeaderLine(text, PARCELON_OLESTR("final"), PARCELON_OLESTR("false"));
    } else if (state_ == kFormPass) {
      AppendHeaderLine(text, PARCELON_OLESTR("final"), PARCELON_OLESTR("true"));
    } else {
      return S_OK;
    }
    return ReturnText(text, pVal);
  });
}

// ---- The response ---------------------------------------------------------------------------

HRESULT CNA_Forms::get_NumResponseHeaderParams(short* pVal) {
  // The adapter asks for the cookie header by name all the same.
  if (!pVal) return E_POINTER;
  *pVal = 0;
  return S_OK;
}

HRESULT CNA_Forms::get_ResponseHeaderParamName(short index, BSTR* pVal) {
  if (!pVal) return E_POINTER;
  *pVal = nullptr;
  if (state_ == kAttachmentPass && index == 1) return ReturnText(kCookieHeader.data(), pVal);
  RETURN_HR_LOG(E_FAIL, kResponseHeaderParamNamePrefix,
                "Network Adapter asking for too many header param names.");
}

HRESULT CNA_Forms::SetResponseHeaderParamValue(BSTR name, BSTR value) {
  if (ViewOf(name) != kCookieHeader)
    RETURN_HR_LOG(E_FAIL, kSetResponseHeaderParamValuePrefix,
                  "Network Adapter asking to set unexpected response header param or non-exist.");
  // The identifier runs from "messageid=" to the last character before the next ";" (or before
  // the end), that last character left out. Anything shorter than one character or too long is
  // refused: nothing that comes from the network may break the send.
  const OleStringView cookie = ViewOf(value);
  const size_t start = cookie.find(kMessageIdName);
  if (start == OleStringView::npos)
    RETURN_HR_LOG(E_FAIL, kSetResponseHeaderParamValuePrefix, kNoMessageId);
  const size_t end = std::min(cookie.find(kCookieSeparator, start), cookie.size());
  const ptrdiff_t length = ptrdiff_t(end - start) - kMessageIdOverhead;
  if (length < 1 || length >= kMessageIdLimit)
    RETURN_HR_LOG(E_FAIL, kSetResponseHeaderParamValuePrefix, kNoMessageId);

  return Guarded([&] {
    if (!currentForm_) return E_UNEXPECTED;
    const Bstr messageID(cookie.data() + start + kMessageIdOffset, UINT(length));
    if (!messageID.Get()) return E_OUTOFMEMORY;
    const HRESULT hr = currentForm_->put_MessageID(messageID.Get());
    if (FAILED(hr)) return hr;
    std::string dump;
    if (parcelon::WideToAnsi(cookie.data(), cookie.size(), dump))
      parcelon::DumpResponseHeaderCookie(dump.c_str());
    return S_OK;
  });
}

HRESULT CNA_Forms::get_ResponseTypesToParse(BSTR* pResponseTypes) {
  return ReturnText(PARCELON_OLESTR("AttachmentRs,LXDataMsgsRs"), pResponseTypes);
}

HRESULT CNA_Forms::ParseResponse(IUnknown* pIXMLDOMNode) {
  // An upload counts as accepted only when this pass wrote one and its response accepted it.
  bool accepted = false;
  const HRESULT hr = parcelon::response::ParseResponse(pIXMLDOMNode, currentForm_.Get(), accepted);
  if (accepted && uploadWritten_) dataUploadAccepted_ = true;
  return hr;
}

// ---- INA_Base5 ------------------------------------------------------------------------------

HRESULT CNA_Forms::get_TxEParams(BSTR* pSubject, BSTR* pReplyEmailAddress, BSTR* pEmailContent,
                                 BSTR* pToEmailAddress, BSTR* pCCEmailAddress,
                                 BSTR* pBCCEmailAddress, BSTR* pAttachedFiles) {
  struct Read {
    StringGetter getter;
    const char* failure;
  };
  static const Read kReads[] = {
      {&INA_Form7::get_Subject, "Failed to get email subject :"},
      {&INA_Form7::get_From, "Failed to get from address :"},
      {&INA_Form7::get_Text, "Failed to get email content :"},
      {&INA_Form7::get_To, "Failed to get to address :"},
      {&INA_Form7::get_Cc, "Failed to get cc address :"},
      {&INA_Form7::get_Bcc, "Failed to get bcc address :"},
      {&INA_Form7::get_AttachmentFileList, "Failed to get attachment name :"},
  };
  BSTR* const outputs[] = {pSubject,        pReplyEmailAddress, pEmailContent, pToEmailAddress,
                           pCCEmailAddress, pBCCEmailAddress,   pAttachedFiles};
  static_assert(std::size(kReads) == std::size(outputs));
  for (BSTR* output : outputs)
    if (!output) return E_POINTER;
  for (BSTR* output : outputs) *output = nullptr;

  return Guarded([&] {
    Bstr values[std::size(kReads)];
    for (size_t i = 0; i < std::size(kReads); ++i)
      RETURN_IF_FAILED_LOG(ReadCurrentForm(kReads[i].getter, values[i]), kTxEParamsPrefix,
                           kReads[i].failure);
    // The attached files go out once: a second call finds the list empty.
    currentForm_->ClearAttachmentFileList();
    for (size_t i = 0; i < std::size(kReads); ++i) *outputs[i] = values[i].Detach();
    return S_OK;
  });
}
