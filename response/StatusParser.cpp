#include "response/StatusParser.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "diagnostics/LogIfFailed.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"

namespace {

constexpr char kLoadXMLPrefix[] = "Parcelon:CStatusParser::LoadXML(_bstr_t)";
constexpr char kParsePrefix[] = "Parcelon:CStatusParser::Parse(_bstr_t)";

using OleStringView = std::basic_string_view<OLECHAR>;

OleStringView ViewOf(const Bstr& text) {
  return OleStringView(text.Get() ? text.Get() : PARCELON_OLESTR(""), text.Length());
}

// The parse error's code and reason; the reason in the ANSI code page, without the line break
// MSXML ends it with, so that the log entry stays one line.
HRESULT ReadParseError(IXMLDOMDocument* document, LONG& code, std::string& reason) {
  IXMLDOMParseErrorPtr error;
  HRESULT hr = document->get_parseError(error.ReleaseAndGetAddressOf());
  if (FAILED(hr)) return hr;
  if (!error) return E_POINTER;
  RETURN_IF_FAILED(error->get_errorCode(&code));
  if (code == 0) return S_OK;
  Bstr text;
  RETURN_IF_FAILED(error->get_reason(text.Out()));
  if (!parcelon::WideToAnsi(text.Get(), text.Length(), reason)) return E_OUTOFMEMORY;
  while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r' || reason.back() == ' '))
    reason.pop_back();
  return S_OK;
}

// Logs "<lead><reason>" with the parse error's code.
void LogParseError(const char* lead, const std::string& reason, LONG code) {
  char message[CNALogger::kEntrySize];
  std::snprintf(message, sizeof message, "%s%s", lead, reason.c_str());
  CNALogger::Log(kLoadXMLPrefix, message, HRESULT(code));
}

// The text of a node as an OLAString. A text beyond OLAString's bound keeps its first
// OLAString::kMaxChars characters, which no caller takes for a valid value.
HRESULT ReadText(IXMLDOMNode* node, OLAString& value) {
  Bstr text;
  RETURN_IF_FAILED(node->get_text(text.Out()));
  if (!value.SetFromBSTR(text.Get()) && text.Length() <= UINT(OLAString::kMaxChars)) return E_OUTOFMEMORY;
  return S_OK;
}

}  // namespace

HRESULT CStatusParser::LoadXML(BSTR xml) {
  document_.Reset();
  IXMLDOMDocumentPtr document;
  RETURN_IF_FAILED_LOG(parcelon::CreateDomDocument(document.ReleaseAndGetAddressOf()), kLoadXMLPrefix,
                       "msxml.dll may not be in your path or may not be registered.");
  RETURN_IF_FAILED_LOG(document->put_async(VARIANT_FALSE), kLoadXMLPrefix, "Failed on put async on xml document.");
  RETURN_IF_FAILED_LOG(document->put_validateOnParse(VARIANT_FALSE), kLoadXMLPrefix,
                       "Failed on put validateOnParse on xml document.");
  VARIANT_BOOL loaded = VARIANT_FALSE;
  const HRESULT loadResult = document->loadXML(xml, &loaded);
  LONG code = 0;
  std::string reason;
  if (FAILED(loadResult) || loaded == VARIANT_FALSE) {
    RETURN_IF_FAILED_LOG(ReadParseError(document.Get(), code, reason), kLoadXMLPrefix,
                         "Failed to load XML and failed to get XML dom parse error.");
    if (code == 0) {
      RETURN_HR_LOG(FAILED(loadResult) ? loadResult : E_FAIL, kLoadXMLPrefix,
                    "Failed to load status XML into XML dom document.");
    }
    LogParseError("XML load error: ", reason, code);
    return FAILED(HRESULT(code)) ? HRESULT(code) : E_FAIL;
  }
  RETURN_IF_FAILED_LOG(ReadParseError(document.Get(), code, reason), kLoadXMLPrefix,
                       "Failed to get XML dom parse error.  Need this to tell whether a parse error occurred.");
  if (code != 0) LogParseError("XML parse error: ", reason, code);
  document_ = std::move(document);
  return S_OK;
}

HRESULT CStatusParser::Parse(BSTR xml) {
  RETURN_IF_FAILED_LOG(LoadXML(xml), kParsePrefix, "Failed to load XML.");
  IXMLDOMElementPtr root;
  const HRESULT hr = document_->get_documentElement(root.ReleaseAndGetAddressOf());
  RETURN_IF_FAILED_LOG(hr, kParsePrefix, "Failed to instantiate the root node of the XML parse tree.");
  if (!root) RETURN_HR_LOG(E_FAIL, kParsePrefix, "Missing document node of the XML parse tree.");
  RETURN_IF_FAILED_LOG(ParseElement(root.Get()), kParsePrefix, "Failed while parsing the element node.");
  return S_OK;
}

HRESULT CStatusParser::ParseElement(IXMLDOMNode* element) {
  if (!element) return E_POINTER;
  IXMLDOMDocumentPtr document = std::move(document_);
  Clear();
  document_ = std::move(document);
  element_ = IXMLDOMNodePtr(element);
  Bstr name;
  RETURN_IF_FAILED(element->get_nodeName(name.Out()));
  if (!elementName_.SetFromBSTR(name.Get()) && name.Length() <= UINT(OLAString::kMaxChars)) return E_OUTOFMEMORY;
  RETURN_IF_FAILED(ReadAttributes(element));
  return ReadChildren(element);
}

HRESULT CStatusParser::ReadAttributes(IXMLDOMNode* element) {
  IXMLDOMNamedNodeMapPtr attributes;
  RETURN_IF_FAILED(element->get_attributes(attributes.ReleaseAndGetAddressOf()));
  if (!attributes) return S_OK;
  const struct {
    const OLECHAR* name;
    OLAString& value;
  } kAttributes[] = {
      {PARCELON_OLESTR("trnUID"), trnUID_},
      {PARCELON_OLESTR("statusCode"), statusCode_},
      {PARCELON_OLESTR("statusSeverity"), statusSeverity_},
      {PARCELON_OLESTR("statusMessage"), statusMessage_},
  };
  for (const auto& attribute : kAttributes) {
    const Bstr name(attribute.name);
    if (!name.Get()) return E_OUTOFMEMORY;
    IXMLDOMNodePtr item;
    const HRESULT hr = attributes->getNamedItem(name.Get(), item.ReleaseAndGetAddressOf());
    RETURN_IF_FAILED(hr);
    if (item) RETURN_IF_FAILED(ReadText(item.Get(), attribute.value));
  }
  return S_OK;
}

HRESULT CStatusParser::ReadChildren(IXMLDOMNode* element) {
  IXMLDOMNodeListPtr children;
  RETURN_IF_FAILED(element->get_childNodes(children.ReleaseAndGetAddressOf()));
  if (!children) return S_OK;
  LONG count = 0;
  RETURN_IF_FAILED(children->get_length(&count));
  for (LONG i = 0; i < count; ++i) {
    IXMLDOMNodePtr child;
    RETURN_IF_FAILED(children->get_item(i, child.ReleaseAndGetAddressOf()));
    if (!child) continue;
    DOMNodeType type = NODE_INVALID;
    RETURN_IF_FAILED(child->get_nodeType(&type));
    if (type != NODE_ELEMENT) continue;
    Bstr name;
    RETURN_IF_FAILED(child->get_nodeName(name.Out()));
    if (ViewOf(name) == PARCELON_OLESTR("LastDataUploadToken")) {
      RETURN_IF_FAILED(ReadText(child.Get(), lastDataUploadToken_));
    } else if (ViewOf(name) == PARCELON_OLESTR("MessageID")) {
      RETURN_IF_FAILED(ReadText(child.Get(), messageID_));
    }
  }
  return S_OK;
}

void CStatusParser::Clear() {
  document_.Reset();
  element_.Reset();
  for (OLAString* value : {&elementName_, &trnUID_, &statusCode_, &statusSeverity_, &statusMessage_, &messageID_,
                           &lastDataUploadToken_})
    value->SetText("");
}
