// A gateway response of any bytes (read as UTF-8) through the document layer and ParseResponse,
// against a fresh reference host for each input. The document must load only what libxml2's own
// parse of the same text loads, with the same root element; each aggregate the adapter would hand
// over (the root and its element children) goes to ParseResponse, which must end in one of its
// results; an accepted upload must be a "DataUploadRs" that answered "0", and a message
// identifier the form takes must be one of its "MessageID" texts, shorter than 100 characters.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "component/NA_Form.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/ComPtr.h"
#include "platform/XmlDom.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"
#include "response/ResponseCodes.h"
#include "response/ResponseProcessing.h"
#include "response/StatusParser.h"
#include "tools/SendDriver.h"

using parcelon::fuzz::Finding;

namespace {

std::string Ansi(const Bstr& text) {
  std::string out;
  parcelon::WideToAnsi(text.Get(), text.Length(), out);
  return out;
}

std::string NameOf(IXMLDOMNode* node) {
  Bstr name;
  if (FAILED(node->get_nodeName(name.Out()))) Finding("a node without a name");
  return Ansi(name);
}

// libxml2's own reading of the same text (the BSTR's UTF-16 units): whether it loads, and its
// root's qualified name.
bool LibxmlLoads(const Bstr& text, std::string& rootName) {
  xmlDoc* doc = xmlReadMemory(reinterpret_cast<const char*>(text.Get()), int(text.Length() * sizeof(OLECHAR)),
                              "response.xml", "UTF-16LE",
                              XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC);
  if (!doc) return false;
  const xmlNode* root = xmlDocGetRootElement(doc);
  rootName.clear();
  if (root && root->ns && root->ns->prefix) rootName = std::string(reinterpret_cast<const char*>(root->ns->prefix)) + ":";
  if (root) rootName += reinterpret_cast<const char*>(root->name);
  xmlFreeDoc(doc);
  return root != nullptr;
}

// The element children of `node`.
std::vector<IXMLDOMNodePtr> ElementChildren(IXMLDOMNode* node) {
  std::vector<IXMLDOMNodePtr> elements;
  IXMLDOMNodeListPtr children;
  LONG count = 0;
  if (FAILED(node->get_childNodes(children.ReleaseAndGetAddressOf())) || FAILED(children->get_length(&count)))
    Finding("the children cannot be read");
  for (LONG i = 0; i < count; ++i) {
    IXMLDOMNodePtr child;
    if (children->get_item(i, child.ReleaseAndGetAddressOf()) != S_OK) Finding("a child cannot be read");
    DOMNodeType type = NODE_INVALID;
    if (SUCCEEDED(child->get_nodeType(&type)) && type == NODE_ELEMENT) elements.push_back(child);
  }
  return elements;
}

bool IsResult(HRESULT hr) {
  for (const HRESULT known : {S_OK, E_FAIL, E_OUTOFMEMORY, kTicketExpired, kAttachmentRefused, kInboxStoreFailed,
                              kResponseValueTooLong})
    if (hr == known) return true;
  return false;
}

// Applies one aggregate and checks what it did against its own status.
void Apply(IXMLDOMNode* aggregate) {
  INA_Form7Ptr form;
  if (FAILED(CNA_Form::CreateInstance(IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress())))
    Finding("no form object");
  const Bstr before(u"BEFORE");
  form->put_MessageID(before.Get());
  bool accepted = false;
  const HRESULT hr = parcelon::response::ParseResponse(aggregate, form.Get(), accepted);
  if (!IsResult(hr)) Finding("ParseResponse gave " + std::to_string(hr));

  // What the aggregate says of itself, read by the parser (the message set: its first element).
  CStatusParser status;
  if (NameOf(aggregate) == "LXDataMsgsRs") {
    const std::vector<IXMLDOMNodePtr> children = ElementChildren(aggregate);
    if (children.empty()) {
      if (accepted) Finding("a message set without an element was accepted");
      return;
    }
    status.ParseElement(children.front().Get());
  } else {
    status.ParseElement(aggregate);
  }
  if (accepted && (status.GetElementName().NotEquals("DataUploadRs") || status.GetStatusCode().NotEquals("0")))
    Finding("an upload counted as accepted by " + std::string(status.GetElementName().GetText()) + " " +
            status.GetStatusCode().GetText());
  Bstr after;
  form->get_MessageID(after.Out());
  const std::string messageID = Ansi(after);
  if (messageID != "BEFORE") {
    if (status.GetElementName().NotEquals("AttachmentRs") || status.GetStatusCode().NotEquals("0") ||
        messageID != status.GetMessageID().GetText() || messageID.size() >= 100)
      Finding("the form took the message ID [" + messageID + "]");
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xmlInitParser();
  parcelon::fuzz::WriteFile(parcelon::fuzz::UseScratchFolder(), "[ZPSSettings]\n");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Bstr text = parcelon::tools::ToBstr(std::string(reinterpret_cast<const char*>(data), size));
  auto company = std::make_shared<parcelon::refhost::Company>();
  std::string error;
  if (FAILED(parcelon::refhost::LoadFixtureText("{}", "company.json", *company, error))) Finding(error);
  parcelon::refhost::ReferenceHost host(std::move(company));
  if (FAILED(host.Register())) Finding("registering the host");

  IXMLDOMDocumentPtr document;
  if (FAILED(parcelon::CreateDomDocument(document.ReleaseAndGetAddressOf()))) Finding("no document");
  VARIANT_BOOL loaded = VARIANT_FALSE;
  const HRESULT hr = document->loadXML(text.Get(), &loaded);
  if (hr != S_OK && hr != S_FALSE) Finding("loadXML gave " + std::to_string(hr));
  std::string libxmlRoot;
  const bool libxmlLoaded = LibxmlLoads(text, libxmlRoot);
  if (!loaded) return 0;
  if (!libxmlLoaded) Finding("a document libxml2 refuses loaded");
  IXMLDOMElementPtr root;
  if (document->get_documentElement(root.ReleaseAndGetAddressOf()) != S_OK || !root) Finding("no root");
  // Compared as UTF-16: names outside the ANSI code page read alike there once best-fitted.
  Bstr rootName;
  if (FAILED(root->get_nodeName(rootName.Out()))) Finding("a root without a name");
  const Bstr libxmlName = parcelon::tools::ToBstr(libxmlRoot);
  if (rootName.Length() != libxmlName.Length() ||
      !std::equal(rootName.Get(), rootName.Get() + rootName.Length(), libxmlName.Get()))
    Finding("the root reads [" + NameOf(root.Get()) + "], libxml2 [" + libxmlRoot + "]");
  Apply(root.Get());
  for (const IXMLDOMNodePtr& aggregate : ElementChildren(root.Get())) Apply(aggregate.Get());
  return 0;
}
