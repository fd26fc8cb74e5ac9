// The XML document interfaces the response processing reads (IXMLDOMDocument, IXMLDOMNode,
// IXMLDOMElement, IXMLDOMNodeList, IXMLDOMNamedNodeMap, IXMLDOMParseError) and CreateDomDocument,
// which makes an empty document.
//
// On Windows these are the SDK's interfaces and the document is MSXML 6 ("Msxml2.DOMDocument.6.0").
// Elsewhere the same interfaces are declared here with the published IIDs and the Windows slot
// order, and implemented over libxml2 (platform/XmlDomLibxml.cpp) for the members the component
// uses; every other member returns E_NOTIMPL. The libxml2 document behaves as MSXML 6 does with
// its defaults: no DTD is accepted (the load fails), whitespace-only text nodes are dropped, the
// text of an element is trimmed, names are exact and case-sensitive.
#pragma once

#include "platform/ComBase.h"
#include "platform/ComPtr.h"
#include "platform/Dispatch.h"

#ifdef _WIN32

#include <msxml2.h>

#else  // !_WIN32

typedef enum tagDOMNodeType {
  NODE_INVALID = 0,
  NODE_ELEMENT = 1,
  NODE_ATTRIBUTE = 2,
  NODE_TEXT = 3,
  NODE_CDATA_SECTION = 4,
  NODE_ENTITY_REFERENCE = 5,
  NODE_ENTITY = 6,
  NODE_PROCESSING_INSTRUCTION = 7,
  NODE_COMMENT = 8,
  NODE_DOCUMENT = 9,
  NODE_DOCUMENT_TYPE = 10,
  NODE_DOCUMENT_FRAGMENT = 11,
  NODE_NOTATION = 12,
} DOMNodeType;

struct IXMLDOMNodeList;
struct IXMLDOMNamedNodeMap;
struct IXMLDOMDocument;
struct IXMLDOMElement;
struct IXMLDOMParseError;
// Interfaces that only appear in slots nothing here calls.
struct IXMLDOMDocumentType;
struct IXMLDOMImplementation;
struct IXMLDOMDocumentFragment;
struct IXMLDOMText;
struct IXMLDOMComment;
struct IXMLDOMCDATASection;
struct IXMLDOMProcessingInstruction;
struct IXMLDOMAttribute;
struct IXMLDOMEntityReference;

struct IXMLDOMNode : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** childList) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** firstChild) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** lastChild) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** previousSibling) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** nextSibling) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** attributeMap) = 0;
  virtual HRESULT STDMETHODCALLTYPE insertBefore(IXMLDOMNode* newChild, VARIANT refChild,
                                                 IXMLDOMNode** outNewChild) = 0;
  virtual HRESULT STDMETHODCALLTYPE replaceChild(IXMLDOMNode* newChild, IXMLDOMNode* oldChild,
                                                 IXMLDOMNode** outOldChild) = 0;
  virtual HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode* childNode, IXMLDOMNode** oldChild) = 0;
  virtual HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode* newChild, IXMLDOMNode** outNewChild) = 0;
  virtual HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* hasChild) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** document) = 0;
  virtual HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** cloneRoot) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_nodeTypeString(BSTR* nodeType) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_text(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_text(BSTR text) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_specified(VARIANT_BOOL* isSpecified) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_definition(IXMLDOMNode** definitionNode) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* typedValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_nodeTypedValue(VARIANT typedValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_dataType(VARIANT* dataTypeName) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_dataType(BSTR dataTypeName) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_xml(BSTR* xmlString) = 0;
  virtual HRESULT STDMETHODCALLTYPE transformNode(IXMLDOMNode* stylesheet, BSTR* xmlString) = 0;
  virtual HRESULT STDMETHODCALLTYPE selectNodes(BSTR queryString, IXMLDOMNodeList** resultList) = 0;
  virtual HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR queryString, IXMLDOMNode** resultNode) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_parsed(VARIANT_BOOL* isParsed) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* namespaceURI) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefixString) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_baseName(BSTR* nameString) = 0;
  virtual HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode* stylesheet,
                                                          VARIANT outputObject) = 0;
};

struct IXMLDOMElement : IXMLDOMNode {
  virtual HRESULT STDMETHODCALLTYPE get_tagName(BSTR* tagName) = 0;
  virtual HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE setAttribute(BSTR name, VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE getAttributeNode(BSTR name, IXMLDOMAttribute** attributeNode) = 0;
  virtual HRESULT STDMETHODCALLTYPE setAttributeNode(IXMLDOMAttribute* attribute,
                                                     IXMLDOMAttribute** attributeNode) = 0;
  virtual HRESULT STDMETHODCALLTYPE removeAttributeNode(IXMLDOMAttribute* attribute,
                                                        IXMLDOMAttribute** attributeNode) = 0;
  virtual HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tagName, IXMLDOMNodeList** resultList) = 0;
  virtual HRESULT STDMETHODCALLTYPE normalize() = 0;
};

struct IXMLDOMDocument : IXMLDOMNode {
  virtual HRESULT STDMETHODCALLTYPE get_doctype(IXMLDOMDocumentType** documentType) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_implementation(IXMLDOMImplementation** impl) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** element) = 0;
  virtual HRESULT STDMETHODCALLTYPE putref_documentElement(IXMLDOMElement* element) = 0;
  virtual HRESULT STDMETHODCALLTYPE createElement(BSTR tagName, IXMLDOMElement** element) = 0;
  virtual HRESULT STDMETHODCALLTYPE createDocumentFragment(IXMLDOMDocumentFragment** fragment) = 0;
  virtual HRESULT STDMETHODCALLTYPE createTextNode(BSTR data, IXMLDOMText** text) = 0;
  virtual HRESULT STDMETHODCALLTYPE createComment(BSTR data, IXMLDOMComment** comment) = 0;
  virtual HRESULT STDMETHODCALLTYPE createCDATASection(BSTR data, IXMLDOMCDATASection** cdata) = 0;
  virtual HRESULT STDMETHODCALLTYPE createProcessingInstruction(BSTR target, BSTR data,
                                                                IXMLDOMProcessingInstruction** pi) = 0;
  virtual HRESULT STDMETHODCALLTYPE createAttribute(BSTR name, IXMLDOMAttribute** attribute) = 0;
  virtual HRESULT STDMETHODCALLTYPE createEntityReference(BSTR name,
                                                          IXMLDOMEntityReference** entityRef) = 0;
  virtual HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tagName, IXMLDOMNodeList** resultList) = 0;
  virtual HRESULT STDMETHODCALLTYPE createNode(VARIANT type, BSTR name, BSTR namespaceURI,
                                               IXMLDOMNode** node) = 0;
  virtual HRESULT STDMETHODCALLTYPE nodeFromID(BSTR idString, IXMLDOMNode** node) = 0;
  virtual HRESULT STDMETHODCALLTYPE load(VARIANT xmlSource, VARIANT_BOOL* isSuccessful) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_readyState(LONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** errorObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_url(BSTR* urlString) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* isAsync) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL isAsync) = 0;
  virtual HRESULT STDMETHODCALLTYPE abort() = 0;
  virtual HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL* isSuccessful) = 0;
  virtual HRESULT STDMETHODCALLTYPE save(VARIANT destination) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_validateOnParse(VARIANT_BOOL* isValidating) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL isValidating) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_resolveExternals(VARIANT_BOOL* isResolving) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL isResolving) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* isPreserving) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_onreadystatechange(VARIANT sink) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ondataavailable(VARIANT sink) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ontransformnode(VARIANT sink) = 0;
};

struct IXMLDOMNodeList : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** listItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_length(LONG* listLength) = 0;
  virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** nextItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** enumerator) = 0;
};

struct IXMLDOMNamedNodeMap : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** namedItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE setNamedItem(IXMLDOMNode* newItem, IXMLDOMNode** namedItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE removeNamedItem(BSTR name, IXMLDOMNode** namedItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** listItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_length(LONG* listLength) = 0;
  virtual HRESULT STDMETHODCALLTYPE getQualifiedItem(BSTR baseName, BSTR namespaceURI,
                                                     IXMLDOMNode** qualifiedItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE removeQualifiedItem(BSTR baseName, BSTR namespaceURI,
                                                        IXMLDOMNode** qualifiedItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** nextItem) = 0;
  virtual HRESULT STDMETHODCALLTYPE reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** enumerator) = 0;
};

struct IXMLDOMParseError : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_errorCode(LONG* errorCode) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_url(BSTR* urlString) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_reason(BSTR* reasonString) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_srcText(BSTR* sourceString) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_line(LONG* lineNumber) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_linepos(LONG* linePosition) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_filepos(LONG* filePosition) = 0;
};

#endif  // _WIN32

PARCELON_DECLARE_IID(IXMLDOMNode, "2933BF80-7B36-11D2-B20E-00C04F983E60")
PARCELON_DECLARE_IID(IXMLDOMDocument, "2933BF81-7B36-11D2-B20E-00C04F983E60")
PARCELON_DECLARE_IID(IXMLDOMNodeList, "2933BF82-7B36-11D2-B20E-00C04F983E60")
PARCELON_DECLARE_IID(IXMLDOMNamedNodeMap, "2933BF83-7B36-11D2-B20E-00C04F983E60")
PARCELON_DECLARE_IID(IXMLDOMElement, "2933BF86-7B36-11D2-B20E-00C04F983E60")
PARCELON_DECLARE_IID(IXMLDOMParseError, "3EFAA426-272F-11D2-836F-0000F87A7782")

using IXMLDOMNodePtr = ComPtr<IXMLDOMNode>;
using IXMLDOMDocumentPtr = ComPtr<IXMLDOMDocument>;
using IXMLDOMElementPtr = ComPtr<IXMLDOMElement>;
using IXMLDOMNodeListPtr = ComPtr<IXMLDOMNodeList>;
using IXMLDOMNamedNodeMapPtr = ComPtr<IXMLDOMNamedNodeMap>;
using IXMLDOMParseErrorPtr = ComPtr<IXMLDOMParseError>;

namespace parcelon {

// The class "Msxml2.DOMDocument.6.0".
inline constexpr CLSID kClsidDomDocument60 = GuidFromText("88D96A05-F192-11D4-A65F-0040963251E5");
inline constexpr const OLECHAR* kDomDocument60ProgId = PARCELON_OLESTR("Msxml2.DOMDocument.6.0");

// Bounds of the libxml2 document (off Windows): a longer text or a deeper nesting fails the load
// with a parse error that says so.
inline constexpr UINT kMaxDomDocumentChars = 4u * 1024 * 1024;
inline constexpr int kMaxDomElementDepth = 128;

// The parse error codes of the libxml2 document's own refusals; a malformed document gives
// 0xC00CE000 plus libxml2's error number.
inline constexpr LONG kDomErrorMalformed = LONG(0xC00CE000);
inline constexpr LONG kDomErrorDtdProhibited = LONG(0xC00CEF01);
inline constexpr LONG kDomErrorTooLarge = LONG(0xC00CEF02);
inline constexpr LONG kDomErrorTooDeep = LONG(0xC00CEF03);

// A new, empty document: MSXML 6 on Windows (REGDB_E_CLASSNOTREG or the like when it is not
// installed); elsewhere the class registered for kClsidDomDocument60 in the in-process class
// table when there is one (a test's), else the libxml2 document.
HRESULT CreateDomDocument(IXMLDOMDocument** document);

}  // namespace parcelon
