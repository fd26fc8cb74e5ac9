#include "response/ResponseProcessing.h"

#include <algorithm>
#include <string>

#include "diagnostics/LogIfFailed.h"
#include "forms/FormRequest.h"
#include "host/Services.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/XmlDom.h"
#include "response/ResponseCodes.h"
#include "response/StatusParser.h"
#include "upload/UploadAttributes.h"
#include "upload/UploadState.h"

namespace parcelon::response {

namespace {

constexpr char kParseResponsePrefix[] = "Parcelon:CNA_Forms::ParseResponse";
constexpr char kParseInboxPrefix[] = "Parcelon:CNA_Forms::ParseInboxRequests(_bstr_t, OLAString)";

constexpr char kNoInbox[] = "LXInbox.dll may be missing or unregistered.";
constexpr char kNoDataUploadRs[] = "Failed to parse DataUploadRs.";

// Removes every upload-time stamp of the company when the gateway asks for a full upload again.
// Failures are logged; they do not change the result.
void RemoveStampsIfAsked(const CStatusParser& status, const char* prefix) {
  if (status.GetStatusCode().NotEquals("4011")) return;
  ICompanyFilePtr company;
  if (FAILED(LOG_IF_FAILED(GetCurrentCompanyFilePtr(company), prefix,
                           "Failed to get current company file.  Can't delete attributes.")))
    return;
  LOG_IF_FAILED(CUploadAttributeKiller(company).RemoveAttributes(), prefix, "Problem removing attributes.");
}

// Refuses a value that does not fit the session's bound, with a log line naming it.
HRESULT CheckLength(const OLAString& value, const char* prefix, const char* tooLong) {
  if (value.GetLength() < kMaxResponseValueLength) return S_OK;
  RETURN_HR_LOG(kResponseValueTooLong, prefix, tooLong);
}

HRESULT CheckToken(const CStatusParser& status, const char* prefix) {
  return CheckLength(status.GetLastDataUploadToken(), prefix,
                     "The last data upload token is 100 characters or longer; it is not stored.");
}

// Stores the response's token as the last data upload token, when it carries one.
HRESULT StoreToken(const CStatusParser& status, const char* prefix) {
  const OLAString& token = status.GetLastDataUploadToken();
  if (token.IsEmpty()) return S_OK;
  RETURN_IF_FAILED_LOG(CatchComError([&] { ThrowIfFailed(upload::StoreLastDataUploadToken(token)); }), prefix,
                       "Failed to store the last data upload token.");
  return S_OK;
}

HRESULT CreateInbox(ILXInboxPtr& inbox, const char* prefix) {
  RETURN_IF_FAILED_LOG(CoCreateInstance(host::CLSID_LXInbox, nullptr, CLSCTX_INPROC_SERVER, IidOf<ILXInbox>(),
                                        inbox.ReleaseAndGetVoidAddress()),
                       prefix, kNoInbox);
  return S_OK;
}

// Keeps the parsed "DataUploadRs" in the host's inbox, as its XML text under its name.
HRESULT KeepInInbox(const CStatusParser& status) {
  ILXInboxPtr inbox;
  RETURN_IF_FAILED(CreateInbox(inbox, kParseResponsePrefix));
  const IXMLDOMNodePtr element = status.GetElement();
  if (!element) RETURN_HR_LOG(kInboxStoreFailed, kParseResponsePrefix, kNoDataUploadRs);
  Bstr xml;
  Bstr name;
  HRESULT hr = element->get_xml(xml.Out());
  if (SUCCEEDED(hr)) hr = element->get_nodeName(name.Out());
  if (SUCCEEDED(hr)) hr = inbox->StoreRequest(xml.Get(), name.Get());
  if (FAILED(hr)) RETURN_HR_LOG(kInboxStoreFailed, kParseResponsePrefix, "Failed to store a request in the LX inbox.");
  return S_OK;
}

bool NameIs(IXMLDOMNode* node, const char* expected) {
  Bstr name;
  if (FAILED(node->get_nodeName(name.Out()))) return false;
  OLAString text;
  return text.SetFromBSTR(name.Get()) && text.Equals(expected);
}

// The first child of `node` that is an element; null for none.
HRESULT FirstElementChild(IXMLDOMNode* node, IXMLDOMNodePtr& child) {
  child.Reset();
  IXMLDOMNodeListPtr children;
  RETURN_IF_FAILED(node->get_childNodes(children.ReleaseAndGetAddressOf()));
  LONG count = 0;
  if (children) RETURN_IF_FAILED(children->get_length(&count));
  for (LONG i = 0; i < count; ++i) {
    IXMLDOMNodePtr item;
    RETURN_IF_FAILED(children->get_item(i, item.ReleaseAndGetAddressOf()));
    DOMNodeType type = NODE_INVALID;
    if (item && SUCCEEDED(item->get_nodeType(&type)) && type == NODE_ELEMENT) {
      child = std::move(item);
      return S_OK;
    }
  }
  return S_OK;
}

// The aggregate to read: the node itself, or for the message set "LXDataMsgsRs" its first element
// child, which must be the "DataUploadRs". Whitespace and comments before it are passed over.
HRESULT AggregateOf(IUnknown* argument, IXMLDOMNodePtr& aggregate) {
  IXMLDOMNodePtr node;
  if (!argument || FAILED(argument->QueryInterface(IidOf<IXMLDOMNode>(), node.ReleaseAndGetVoidAddress())) || !node)
    RETURN_HR_LOG(E_NOINTERFACE, kParseResponsePrefix, "The response aggregate is not an XML DOM node.");
  DOMNodeType type = NODE_INVALID;
  RETURN_IF_FAILED_LOG(node->get_nodeType(&type), kParseResponsePrefix, "Failed while parsing the element node.");
  if (type != NODE_ELEMENT || !NameIs(node.Get(), "LXDataMsgsRs")) {
    aggregate = std::move(node);
    return S_OK;
  }
  RETURN_IF_FAILED_LOG(FirstElementChild(node.Get(), aggregate), kParseResponsePrefix,
                       "Failed while parsing the element node.");
  if (!aggregate || !NameIs(aggregate.Get(), "DataUploadRs"))
    RETURN_HR_LOG(kInboxStoreFailed, kParseResponsePrefix, kNoDataUploadRs);
  return S_OK;
}

HRESULT ApplyAttachmentRs(const CStatusParser& status, INA_Form7* currentForm) {
  const OLAString& code = status.GetStatusCode();
  if (code.Equals("13109")) RETURN_HR_LOG(kTicketExpired, kParseResponsePrefix, "Ticket expired. ");
  if (code.Equals("13102")) return kAttachmentRefused;
  if (code.NotEquals("0") || status.GetMessageID().IsEmpty()) return S_OK;
  RETURN_IF_FAILED(CheckLength(status.GetMessageID(), kParseResponsePrefix,
                               "The attachment's message ID is 100 characters or longer; it is not kept."));
  if (!currentForm) RETURN_HR_LOG(E_UNEXPECTED, kParseResponsePrefix, "There is no current form for the message ID.");
  Bstr messageID;
  const OLAString& text = status.GetMessageID();
  ThrowIfFailed(AnsiToBstr(text.GetText(), size_t(text.GetLength()), messageID.Out()));
  RETURN_IF_FAILED_LOG(currentForm->put_MessageID(messageID.Get()), kParseResponsePrefix,
                       "Failed to put the message ID on the current form.");
  return S_OK;
}

// A response that cannot be checked has no effect: the token is checked before anything is done,
// and the upload counts as accepted only once its token, if any, is stored.
HRESULT ApplyDataUploadRs(const CStatusParser& status, bool& dataUploadAccepted) {
  RETURN_IF_FAILED(CheckToken(status, kParseResponsePrefix));
  RemoveStampsIfAsked(status, kParseResponsePrefix);
  RETURN_IF_FAILED(StoreToken(status, kParseResponsePrefix));
  if (status.GetStatusCode().Equals("0")) dataUploadAccepted = true;
  return KeepInInbox(status);
}

// Applies one kept request; false when it was not applied and stays in the inbox.
bool ApplyInboxRequest(ILXInbox* inbox, BSTR requestID) {
  Bstr xml;
  CStatusParser status;
  if (FAILED(inbox->GetRequest(requestID, xml.Out())) || FAILED(status.Parse(xml.Get()))) {
    CNALogger::Log(kParseInboxPrefix, "Failed to parse request from the Inbox.  Continuing...", E_FAIL);
    return false;
  }
  if (status.GetElementName().NotEquals("DataUploadRs")) return false;
  if (FAILED(CheckToken(status, kParseInboxPrefix))) return false;
  RemoveStampsIfAsked(status, kParseInboxPrefix);
  return SUCCEEDED(StoreToken(status, kParseInboxPrefix));
}

}  // namespace

HRESULT ParseResponse(IUnknown* node, INA_Form7* currentForm, bool& dataUploadAccepted) {
  return Guarded([&] {
    IXMLDOMNodePtr aggregate;
    RETURN_IF_FAILED(AggregateOf(node, aggregate));
    CStatusParser status;
    RETURN_IF_FAILED_LOG(status.ParseElement(aggregate.Get()), kParseResponsePrefix,
                         "Failed while parsing the element node.");
    const bool attachment = status.GetElementName().Equals("AttachmentRs");
    const bool dataUpload = status.GetElementName().Equals("DataUploadRs");
    if (!attachment && !dataUpload) return S_OK;
    // Without a status nothing can be told of the request: no effect at all.
    if (status.GetStatusCode().IsEmpty())
      RETURN_HR_LOG(E_FAIL, kParseResponsePrefix, "The response aggregate carries no status code.");
    return attachment ? ApplyAttachmentRs(status, currentForm) : ApplyDataUploadRs(status, dataUploadAccepted);
  });
}

HRESULT ParseInboxRequests(BSTR requestIDs, const OLAString& delimiters) {
  return Guarded([&] {
    ILXInboxPtr inbox;
    RETURN_IF_FAILED(CreateInbox(inbox, kParseInboxPrefix));
    std::string list;
    if (!WideToAnsi(requestIDs, SysStringLen(requestIDs), list)) return E_OUTOFMEMORY;
    const std::string separators = delimiters.IsEmpty() ? "," : delimiters.GetText();
    for (size_t start = list.find_first_not_of(separators); start != std::string::npos;) {
      const size_t end = std::min(list.find_first_of(separators, start), list.size());
      Bstr id;
      ThrowIfFailed(AnsiToBstr(list.data() + start, end - start, id.Out()));
      if (ApplyInboxRequest(inbox.Get(), id.Get()))
        LOG_IF_FAILED(inbox->DeleteRequest(id.Get()), kParseInboxPrefix,
                      "Failed to delete old request from the Inbox.  Continuing...");
      start = list.find_first_not_of(separators, end);
    }
    return S_OK;
  });
}

}  // namespace parcelon::response
