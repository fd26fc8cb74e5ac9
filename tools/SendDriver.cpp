#include "tools/SendDriver.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>

#include "diagnostics/FeatureSettings.h"
#include "platform/CodePage.h"
#include "platform/ComPtr.h"
#include "platform/XmlDom.h"
#include "tools/RequestDocument.h"

namespace parcelon::tools {

namespace {

// Appends printf-formatted text of any length.
void Say(std::string& out, const char* format, ...) {
  va_list args, again;
  va_start(args, format);
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  if (length > 0) {
    const size_t start = out.size();
    out.resize(start + size_t(length) + 1);
    std::vsnprintf(&out[start], size_t(length) + 1, format, again);
    out.resize(start + size_t(length));
  }
  va_end(again);
}

std::string ToText(BSTR text) {
  std::string out;
  WideToAnsi(text, SysStringLen(text), out);
  return out;
}

bool Delivering(NASendType send) { return send == nastEMAIL || send == nastFAX || send == nastPAPER_MAIL; }

// The key under which the settings give `url`, so that the transcript says which address was chosen.
const char* UrlKey(const std::string& url) {
  for (const char* key : {"EmailService.FormGatewayURL", "EmailService.FormGatewayAttachURL"})
    if (!url.empty() && AmbitAccess::GetURLAddress(key) == url) return key;
  return "(no key)";
}

uint64_t Fnv1a64(const BYTE* data, size_t size) {
  uint64_t hash = 14695981039346656037ull;
  for (size_t i = 0; i < size; ++i) hash = (hash ^ data[i]) * 1099511628211ull;
  return hash;
}

// A failed call ends the send: the transcript names it, RunSend returns its code.
struct CallFailed {
  HRESULT hr;
};

class Driver {
 public:
  Driver(const SendSpec& plan, std::string& out, PassExchange& exchange)
      : plan_(plan), out_(out), exchange_(exchange) {}

  void Check(HRESULT hr, const char* call) {
    if (FAILED(hr)) {
      Say(out_, "%s failed: 0x%08" PRIX32 "\n", call, uint32_t(hr));
      if (failure_.empty()) Say(failure_, "%s failed: 0x%08" PRIX32, call, uint32_t(hr));
      throw CallFailed{hr};
    }
    if (plan_.afterCall) plan_.afterCall(pass_, call);
  }

  void Run() {
    ComPtr<INA_Forms2> forms;
    Check(CoCreateInstance(CLSID_NA_Forms, nullptr, CLSCTX_INPROC_SERVER, IidOf<INA_Forms2>(),
                           forms.ReleaseAndGetVoidAddress()),
          "creating NA_Forms");
    for (const FormSpec& form : plan_.forms) AddForm(forms.Get(), form);
    if (plan_.allCustomers) Check(forms->put_DoAllCustomers(VARIANT_TRUE), "put_DoAllCustomers");
    ComPtr<INA_Base5> session;
    Check(forms.As(session), "INA_Base5");
    Check(session->Initialize(), "Initialize");
    // The adapter knows an attachment pass from the forms it added: the session starts with one
    // when the first form is delivered, and after a form pass moves by the method of the form
    // just sent.
    bool attachmentPass = Delivering(plan_.forms.front().send);
    size_t formIndex = 0;
    VARIANT_BOOL again = VARIANT_TRUE;
    for (int pass = 1; again == VARIANT_TRUE; ++pass) {
      pass_ = pass;
      Pass(pass, attachmentPass, session.Get());
      if (attachmentPass) {
        attachmentPass = false;
      } else {
        attachmentPass = formIndex < plan_.forms.size() && Delivering(plan_.forms[formIndex].send);
        ++formIndex;
      }
      Check(session->get_IsAnotherSynchNeeded(&again), "IsAnotherSynchNeeded");
    }
    Say(out_, "== done\n");
  }

 private:
  void AddForm(INA_Forms2* forms, const FormSpec& plan) {
    ComPtr<INA_Form> added;
    Check(forms->AddForm(added.ReleaseAndGetAddressOf()), "AddForm");
    ComPtr<INA_Form7> form;
    Check(added.As(form), "INA_Form7");
    Check(form->put_FormType(plan.type), "put_FormType");
    Check(form->put_TransactionRecordNumber(plan.recNum), "put_TransactionRecordNumber");
    Check(form->put_SendMethod(plan.send), "put_SendMethod");
    Check(form->put_Post(plan.post ? VARIANT_TRUE : VARIANT_FALSE), "put_Post");
    Check(form->put_SynchMultiple(plan.synchMultiple ? VARIANT_TRUE : VARIANT_FALSE), "put_SynchMultiple");
    const struct {
      HRESULT (STDMETHODCALLTYPE INA_Form7::*put)(BSTR);
      const std::string& value;
      const char* name;
    } texts[] = {{&INA_Form7::put_To, plan.to, "put_To"},
                 {&INA_Form7::put_Cc, plan.cc, "put_Cc"},
                 {&INA_Form7::put_Bcc, plan.bcc, "put_Bcc"},
                 {&INA_Form7::put_From, plan.from, "put_From"},
                 {&INA_Form7::put_ReplyTo, plan.replyTo, "put_ReplyTo"},
                 {&INA_Form7::put_Subject, plan.subject, "put_Subject"},
                 {&INA_Form7::put_Text, plan.text, "put_Text"},
                 {&INA_Form7::put_Fax_ToFaxNumber, plan.faxTo, "put_Fax_ToFaxNumber"}};
    if (plan.type == naftSTATEMENT) {
      Check(form->put_StatementCustomerRecNum(plan.statementCustomer), "put_StatementCustomerRecNum");
      Check(form->put_StatementDate(plan.statementDate), "put_StatementDate");
      Check(form->put_StatementFromDate(plan.statementFrom), "put_StatementFromDate");
      Check(form->put_StatementToDate(plan.statementTo), "put_StatementToDate");
    }
    for (const auto& text : texts)
      if (!text.value.empty()) Check((form.Get()->*text.put)(ToBstr(text.value).Get()), text.name);
    if (!plan.pdf.empty()) {
      // The form names its attachment by folder and file name.
      const size_t slash = plan.pdf.find_last_of("/\\");
      const std::string folder = slash == std::string::npos ? "." : plan.pdf.substr(0, slash);
      const std::string file = slash == std::string::npos ? plan.pdf : plan.pdf.substr(slash + 1);
      Check(form->put_AttachmentPath(ToBstr(folder).Get()), "put_AttachmentPath");
      Check(form->put_AttachmentFileName(ToBstr(file).Get()), "put_AttachmentFileName");
      Check(form->put_DocType(ToBstr("pdf").Get()), "put_DocType");
    }
  }

  void Pass(int pass, bool attachmentPass, INA_Base5* session) {
    Say(out_, "== pass %d\n", pass);
    NALoginType login;
    Check(session->get_LoginType(&login), "LoginType");
    const HRESULT sending = session->IsSendMethod();
    Check(sending, "IsSendMethod");
    Bstr service, dtdId, dtdVersion, docType;
    Check(session->get_ServiceID(service.Out()), "ServiceID");
    Check(session->get_DTD_ID(dtdId.Out()), "DTD_ID");
    Check(session->get_DTD_Version(dtdVersion.Out()), "DTD_Version");
    Check(session->get_XMLDocType(docType.Out()), "XMLDocType");
    Check(session->put_AuthParams(ToBstr(plan_.ticket).Get(), ToBstr(plan_.authId).Get()), "AuthParams");
    Say(out_, "login type: %d\nsend method delivering: %s\nservice: %s\nDTD: %s %s\ndoctype: %s\n", int(login),
        sending == S_OK ? "yes" : "no", ToText(service.Get()).c_str(), ToText(dtdId.Get()).c_str(),
        ToText(dtdVersion.Get()).c_str(), ToText(docType.Get()).c_str());

    Bstr url, contentType, headers, body;
    BYTE* data = nullptr;
    LONG size = 0;
    if (attachmentPass) {
      Check(session->BuildData(&data), "BuildData");
      Check(session->get_DataSize(&size), "DataSize");
    } else {
      Check(session->BuildXML(0, body.Out()), "BuildXML");
    }
    Check(session->get_URL(url.Out()), "URL");
    Check(session->get_ContentType(contentType.Out()), "ContentType");
    Check(session->get_RequestHeaderParams(headers.Out()), "RequestHeaderParams");
    const std::string address = ToText(url.Get());
    Say(out_, "send state: %d (%s)\nurl: %s = %s\ncontent type: %s\nheaders:\n%s", attachmentPass ? 1 : 2,
        attachmentPass ? "attachment" : "form", UrlKey(address), address.c_str(), ToText(contentType.Get()).c_str(),
        ToText(headers.Get()).c_str());
    if (attachmentPass)
      Say(out_, "body: %ld bytes, FNV-1a 64 %016" PRIx64 "\n", long(size), Fnv1a64(data, size_t(size > 0 ? size : 0)));
    else
      Say(out_, "body:\n%s", ToText(body.Get()).c_str());

    PassRequest request;
    request.pass = pass;
    request.form = formPasses_ + 1;
    request.forms = int(plan_.forms.size());
    request.attachment = attachmentPass;
    request.url = address;
    request.contentType = ToText(contentType.Get());
    request.headerLines = ToText(headers.Get());
    if (attachmentPass)
      request.body.assign(reinterpret_cast<const char*>(data), size_t(size > 0 ? size : 0));
    else
      request.body = ComposeRequestDocument(ToText(docType.Get()), ToText(body.Get()));
    PassResponse response;
    std::string error;
    const HRESULT exchanged = exchange_.Exchange(request, response, error);
    if (FAILED(exchanged)) {
      failure_ = error;
      Say(out_, "exchange: %s\n", error.c_str());
      Check(exchanged, "the exchange");
    }
    if (!attachmentPass) ++formPasses_;

    short responseHeaders = 0;
    Check(session->get_NumResponseHeaderParams(&responseHeaders), "NumResponseHeaderParams");
    if (attachmentPass) {
      Bstr name;
      Check(session->get_ResponseHeaderParamName(1, name.Out()), "ResponseHeaderParamName");
      const std::string* cookie = response.Header(ToText(name.Get()));
      Say(out_, "response: %s: %s\n", ToText(name.Get()).c_str(), cookie ? cookie->c_str() : "(none)");
      if (cookie)
        Check(session->SetResponseHeaderParamValue(name.Get(), ToBstr(*cookie).Get()), "SetResponseHeaderParamValue");
    }
    Bstr responseTypes;
    Check(session->get_ResponseTypesToParse(responseTypes.Out()), "ResponseTypesToParse");
    Say(out_, "response types to parse: %s\n", ToText(responseTypes.Get()).c_str());
    std::string refusal;
    if (response.body.empty())
      Say(out_, "response document: none\n");
    else
      Respond(session, response.body, ToText(responseTypes.Get()), refusal);
    Check(session->OnSynchCompleted(), "OnSynchCompleted");
    if (!refusal.empty()) {
      failure_ = refusal;
      Say(out_, "%s\n", refusal.c_str());
      throw CallFailed{kFormRefused};
    }
  }

  // Hands the document's aggregates of the names in `types` (the root, or an element child of it)
  // to ParseResponse, as the adapter does. A form request's own answer ("...Rs" in a message set of the document, beside the data
  // upload's) is written down with its status; one other than "0" goes into `refusal`.
  void Respond(INA_Base5* session, const std::string& response, const std::string& types, std::string& refusal) {
    Say(out_, "response document:\n%s\n", response.c_str());
    ComPtr<IXMLDOMDocument> document;
    Check(CreateDomDocument(document.ReleaseAndGetAddressOf()), "creating the response document");
    VARIANT_BOOL loaded = VARIANT_FALSE;
    HRESULT hr = document->loadXML(ToBstr(response).Get(), &loaded);
    if (hr != S_OK || !loaded) failure_ = "the gateway's answer to pass " + std::to_string(pass_) + " is not a readable document";
    Check(hr == S_OK && loaded ? S_OK : FAILED(hr) ? hr : E_FAIL, "loading the response document");
    ComPtr<IXMLDOMElement> root;
    hr = document->get_documentElement(root.ReleaseAndGetAddressOf());
    Check(hr == S_OK && root ? S_OK : FAILED(hr) ? hr : E_FAIL, "reading the response document");
    std::vector<ComPtr<IXMLDOMNode>> aggregates{ComPtr<IXMLDOMNode>(root.Get())};
    ComPtr<IXMLDOMNodeList> children;
    LONG count = 0;
    Check(root->get_childNodes(children.ReleaseAndGetAddressOf()), "reading the response document");
    Check(children->get_length(&count), "reading the response document");
    for (LONG i = 0; i < count; ++i) {
      aggregates.emplace_back();
      Check(children->get_item(i, aggregates.back().ReleaseAndGetAddressOf()), "reading the response document");
    }
    for (const ComPtr<IXMLDOMNode>& aggregate : aggregates) {
      Bstr name;
      Check(aggregate->get_nodeName(name.Out()), "reading the response document");
      if (("," + types + ",").find("," + ToText(name.Get()) + ",") == std::string::npos) {
        if (aggregate.Get() != root.Get()) ReadFormStatuses(aggregate.Get(), ToText(name.Get()), refusal);
        continue;
      }
      hr = session->ParseResponse(aggregate.Get());
      Say(out_, "ParseResponse(%s): 0x%08" PRIX32 "\n", ToText(name.Get()).c_str(), uint32_t(hr));
      Check(hr, "ParseResponse");
    }
  }

  // The form answers inside a message set: its elements named "...Rs", with their "statusCode".
  void ReadFormStatuses(IXMLDOMNode* messageSet, const std::string& setName, std::string& refusal) {
    if (setName.size() < 6 || setName.compare(setName.size() - 6, 6, "MsgsRs") != 0) return;
    ComPtr<IXMLDOMNode> answer;
    if (FAILED(messageSet->get_firstChild(answer.ReleaseAndGetAddressOf()))) return;
    while (answer) {
      Bstr name;
      if (SUCCEEDED(answer->get_nodeName(name.Out()))) {
        const std::string status = Attribute(answer.Get(), "statusCode", "(none)");
        const std::string words = Attribute(answer.Get(), "statusMessage", "");
        Say(out_, "form status: %s %s%s%s\n", ToText(name.Get()).c_str(), status.c_str(), words.empty() ? "" : " ",
            words.c_str());
        if (status != "0" && refusal.empty())
          refusal = "the gateway refused form " + std::to_string(formPasses_) + " (" + ToText(name.Get()) +
                    "): status " + status + (words.empty() ? "" : ", \"" + words + "\"");
      }
      ComPtr<IXMLDOMNode> next;
      if (FAILED(answer->get_nextSibling(next.ReleaseAndGetAddressOf()))) break;
      answer = next;
    }
  }

  static std::string Attribute(IXMLDOMNode* node, const char* name, const char* missing) {
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    ComPtr<IXMLDOMNode> attribute;
    Bstr text;
    if (FAILED(node->get_attributes(attributes.ReleaseAndGetAddressOf())) || !attributes ||
        attributes->getNamedItem(ToBstr(name).Get(), attribute.ReleaseAndGetAddressOf()) != S_OK || !attribute ||
        FAILED(attribute->get_text(text.Out())))
      return missing;
    return ToText(text.Get());
  }

 public:
  const std::string& Failure() const { return failure_; }

 private:
  const SendSpec& plan_;
  std::string& out_;
  PassExchange& exchange_;
  std::string failure_;
  // The form passes completed so far.
  int formPasses_ = 0;
  // The pass under way; 0 before the first.
  int pass_ = 0;
};

}  // namespace

Bstr ToBstr(const std::string& utf8) {
  std::u16string wide;
  for (size_t i = 0; i < utf8.size();) {
    const auto c = static_cast<unsigned char>(utf8[i]);
    const int extra = c < 0x80 ? 0 : c < 0xE0 ? 1 : c < 0xF0 ? 2 : 3;
    char32_t cp = extra == 0 ? c : c & (0x3F >> extra);
    for (int k = 1; k <= extra && i + k < utf8.size(); ++k)
      cp = cp << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
    i += size_t(extra) + 1;
    if (cp >= 0x10000) {
      wide.push_back(char16_t(0xD800 + ((cp - 0x10000) >> 10)));
      wide.push_back(char16_t(0xDC00 + ((cp - 0x10000) & 0x3FF)));
    } else {
      wide.push_back(char16_t(cp));
    }
  }
  return Bstr(reinterpret_cast<const OLECHAR*>(wide.data()), UINT(wide.size()));
}

HRESULT RunSend(const SendSpec& plan, std::string& transcript, std::string* failure) {
  if (plan.forms.empty()) return E_INVALIDARG;
  SimulatedGateway simulated(plan.responses);
  Driver driver(plan, transcript, plan.exchange ? *plan.exchange : simulated);
  try {
    driver.Run();
    return S_OK;
  } catch (const CallFailed& failed) {
    if (failure) *failure = driver.Failure();
    return failed.hr;
  }
}

std::string EscapedAttribute(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

HRESULT SimulatedGateway::Exchange(const PassRequest& request, PassResponse& response, std::string&) {
  const std::string status =
      request.pass <= int(statuses_.size()) ? statuses_[size_t(request.pass - 1)] : std::string("0");
  const std::string code = EscapedAttribute(status);
  const char* severity = status == "0" ? "INFO" : "ERROR";
  char id[32];
  response.status = 200;
  if (request.attachment) {
    // The attachment's message identifier, in the cookie and in the answer.
    std::snprintf(id, sizeof id, "ATT%06d", ++attachments_);
    response.headers.emplace_back("Set-Cookie", std::string("messageid=") + id + " ; Path=/");
    response.body = "<AttachmentRs statusCode=\"" + code + "\" statusSeverity=\"" + severity + "\"><MessageID>" + id +
                    "</MessageID></AttachmentRs>";
  } else if (request.body.find("<LXDataMsgsRq") != std::string::npos) {
    // A new upload token.
    std::snprintf(id, sizeof id, "TOKEN-%04d", ++uploads_);
    response.body = "<LXDataMsgsRs><DataUploadRs statusCode=\"" + code + "\" statusSeverity=\"" + severity +
                    "\"><LastDataUploadToken>" + id + "</LastDataUploadToken></DataUploadRs></LXDataMsgsRs>";
  }
  return S_OK;
}

}  // namespace parcelon::tools
