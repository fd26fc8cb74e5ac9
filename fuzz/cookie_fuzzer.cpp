// The gateway's cookie through a whole form pass: the sample company's invoice 1001 is sent by
// e-mail with its PDF, driven as the network adapter drives a send, and the attachment pass's
// "Set-Cookie" response header is the input (read as UTF-8). The session must take the message
// identifier exactly when the cookie holds one of the documented form (from "messageid=" to the
// last character but one before the next ";" or the end, one to 99 characters), and the form
// pass must then give a request that libxml2 parses, whose "MsgID" reads back as the
// identifier, escaped and cleaned.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "component/ClassObjects.h"
#include "FuzzSupport.h"
#include "interfaces/ParcelonInterfaces.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/ComPtr.h"
#include "refhost/ReferenceHost.h"
#include "tools/SendDriver.h"

using parcelon::fuzz::Cleaned;
using parcelon::fuzz::Finding;

namespace {

const std::string kSources = PARCELON_SOURCE_DIR;

// The sample company's host, loaded once and never destroyed; its classes and the component's
// are registered for each input and revoked after it, so that nothing is left in the class table
// (a static of its own) at exit.
parcelon::refhost::ReferenceHost* host = nullptr;

void Check(HRESULT hr, const char* call) {
  if (FAILED(hr)) Finding(std::string(call) + " failed: " + std::to_string(hr));
}

std::string Ansi(const OLECHAR* text, size_t length) {
  std::string out;
  parcelon::WideToAnsi(text, length, out);
  return out;
}

// The identifier the documented rule takes from the cookie, if any.
std::optional<std::u16string> ExpectedId(const std::u16string& cookie) {
  const size_t start = cookie.find(u"messageid");
  if (start == std::u16string::npos) return std::nullopt;
  size_t end = cookie.find(u';', start);
  if (end == std::u16string::npos) end = cookie.size();
  const ptrdiff_t length = ptrdiff_t(end - start) - ptrdiff_t(sizeof "messageid=");
  if (length < 1 || length > 99) return std::nullopt;
  return cookie.substr(start + 10, size_t(length));
}

xmlNode* FindElement(xmlNode* node, const char* name) {
  for (; node; node = node->next) {
    if (node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, BAD_CAST name)) return node;
    if (xmlNode* found = FindElement(node->children, name)) return found;
  }
  return nullptr;
}

ComPtr<INA_Base5> StartSession() {
  ComPtr<INA_Forms2> forms;
  Check(CoCreateInstance(CLSID_NA_Forms, nullptr, CLSCTX_INPROC_SERVER, IidOf<INA_Forms2>(),
                         forms.ReleaseAndGetVoidAddress()),
        "creating NA_Forms");
  ComPtr<INA_Form> added;
  Check(forms->AddForm(added.ReleaseAndGetAddressOf()), "AddForm");
  ComPtr<INA_Form7> form;
  Check(added.As(form), "INA_Form7");
  Check(form->put_FormType(naftINVOICE), "put_FormType");
  Check(form->put_TransactionRecordNumber(1001), "put_TransactionRecordNumber");
  Check(form->put_SendMethod(nastEMAIL), "put_SendMethod");
  Check(form->put_To(parcelon::tools::ToBstr("siobhan@obrien.example").Get()), "put_To");
  Check(form->put_From(parcelon::tools::ToBstr("office@harborpine.example").Get()), "put_From");
  Check(form->put_AttachmentPath(parcelon::tools::ToBstr(kSources + "/samples").Get()), "put_AttachmentPath");
  Check(form->put_AttachmentFileName(parcelon::tools::ToBstr("invoice-1001.pdf").Get()), "put_AttachmentFileName");
  Check(form->put_DocType(parcelon::tools::ToBstr("pdf").Get()), "put_DocType");
  ComPtr<INA_Base5> session;
  Check(forms.As(session), "INA_Base5");
  Check(session->Initialize(), "Initialize");
  return session;
}

void Authenticate(INA_Base5* session) {
  Check(session->put_AuthParams(parcelon::tools::ToBstr("TICKET-0001").Get(),
                                parcelon::tools::ToBstr("AUTH-0001").Get()),
        "AuthParams");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xmlInitParser();
  const std::string settings = parcelon::fuzz::UseScratchFolder();
  parcelon::fuzz::WriteFile(settings,
                            "[ZPSSettings]\nNetworkAdapter.IndentXML=1\n[URLs]\n"
                            "EmailService.FormGatewayURL=https://forms.gateway.example/lxn/forms\n"
                            "EmailService.FormGatewayAttachURL=https://forms.gateway.example/lxn/attachments\n");
  HRESULT hr = S_OK;
  std::string error;
  host =
      parcelon::refhost::ReferenceHost::FromFixture(kSources + "/samples/sample-company.json", hr, error).release();
  if (!host) Finding("the sample company does not load: " + error);
  return 0;
}

namespace {

// One send: the cookie given to the attachment pass, then the form pass.
void Send(const Bstr& cookie, const std::optional<std::u16string>& expected, const std::string& utf8);

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string utf8(reinterpret_cast<const char*>(data), size);
  const Bstr decoded = parcelon::tools::ToBstr(utf8);
  // The cookie as a text header gives it: no null characters.
  std::u16string units(reinterpret_cast<const char16_t*>(decoded.Get()), decoded.Length());
  std::erase(units, u'\0');
  const Bstr cookie(reinterpret_cast<const OLECHAR*>(units.data()), UINT(units.size()));
  const std::optional<std::u16string> expected = ExpectedId(units);
  Check(host->Register(), "registering the host");
  {
    parcelon::ClassObjectRegistration classes;
    Check(classes.Result(), "registering the component");
    Send(cookie, expected, utf8);
  }
  host->Revoke();
  return 0;
}

namespace {

void Send(const Bstr& cookie, const std::optional<std::u16string>& expected, const std::string& utf8) {
  // The attachment pass.
  ComPtr<INA_Base5> session = StartSession();
  Authenticate(session.Get());
  BYTE* attachment = nullptr;
  Check(session->BuildData(&attachment), "BuildData");
  short headers = 0;
  Check(session->get_NumResponseHeaderParams(&headers), "NumResponseHeaderParams");
  Bstr name;
  Check(session->get_ResponseHeaderParamName(1, name.Out()), "ResponseHeaderParamName");
  const HRESULT taken = session->SetResponseHeaderParamValue(name.Get(), cookie.Get());
  if (SUCCEEDED(taken) != expected.has_value())
    Finding(std::string("the cookie [") + utf8 + "] is " + (SUCCEEDED(taken) ? "taken" : "refused"));
  if (FAILED(taken)) return;
  Check(session->OnSynchCompleted(), "OnSynchCompleted");

  // The form pass.
  VARIANT_BOOL again = VARIANT_FALSE;
  Check(session->get_IsAnotherSynchNeeded(&again), "IsAnotherSynchNeeded");
  if (again != VARIANT_TRUE) Finding("no form pass after the attachment");
  Authenticate(session.Get());
  Bstr body;
  Check(session->BuildXML(0, body.Out()), "BuildXML");
  const std::string request = Ansi(body.Get(), body.Length());
  xmlDoc* doc = xmlReadMemory(request.data(), int(request.size()), "request.xml", "windows-1252",
                              XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (!doc) Finding("libxml2 cannot parse the form request:\n" + request);
  xmlNode* element = FindElement(xmlDocGetRootElement(doc), "MsgID");
  if (!element) Finding("the form request has no MsgID:\n" + request);
  xmlChar* content = xmlNodeGetContent(element);
  const std::string read = content ? reinterpret_cast<const char*>(content) : "";
  xmlFree(content);
  xmlFreeDoc(doc);
  const std::string id = Cleaned(Ansi(reinterpret_cast<const OLECHAR*>(expected->data()), expected->size()));
  if (read != id) Finding("MsgID reads back as [" + read + "], expected [" + id + "]");
  Check(session->OnSynchCompleted(), "OnSynchCompleted");
}

}  // namespace
