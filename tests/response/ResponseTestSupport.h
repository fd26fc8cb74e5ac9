// The response tests' setting: the forms tests' reference host and log, a document standing in for
// MSXML 6 whose chosen members fail, and loading a response into a document.
#pragma once

#include <map>
#include <string>

#include "forms/FormsTestHost.h"
#include "platform/RefCounted.h"
#include "platform/XmlDom.h"

namespace parcelon::test {

// A document whose members pass to a real document, except those named in `faults`, which return
// their code at once. get_parseError may instead give the parse error of another document.
class FaultyDocument final : public IXMLDOMDocument, private CRefCounted<FaultyDocument> {
 public:
  FaultyDocument(IXMLDOMDocumentPtr inner, std::map<std::string, HRESULT> faults, IXMLDOMDocumentPtr errorSource)
      : inner_(std::move(inner)), faults_(std::move(faults)), errorSource_(std::move(errorSource)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    if (!IsOneOf<IUnknown, IDispatch, IXMLDOMNode, IXMLDOMDocument>(riid)) {
      *ppv = nullptr;
      return E_NOINTERFACE;
    }
    *ppv = static_cast<IXMLDOMDocument*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return AddRefImpl(); }
  ULONG STDMETHODCALLTYPE Release() override { return ReleaseImpl(); }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return inner_->GetTypeInfoCount(count); }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
    return inner_->GetTypeInfo(index, locale, info);
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override {
    return inner_->GetIDsOfNames(riid, names, count, locale, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID riid, LCID locale, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override {
    return inner_->Invoke(member, riid, locale, flags, params, result, exception, argumentError);
  }

  // clang-format off
  HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) override { return Call("get_nodeName", [&] { return inner_->get_nodeName(name); }); }
  HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* value) override { return Call("get_nodeValue", [&] { return inner_->get_nodeValue(value); }); }
  HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT value) override { return Call("put_nodeValue", [&] { return inner_->put_nodeValue(value); }); }
  HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) override { return Call("get_nodeType", [&] { return inner_->get_nodeType(type); }); }
  HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) override { return Call("get_parentNode", [&] { return inner_->get_parentNode(parent); }); }
  HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** childList) override { return Call("get_childNodes", [&] { return inner_->get_childNodes(childList); }); }
  HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** firstChild) override { return Call("get_firstChild", [&] { return inner_->get_firstChild(firstChild); }); }
  HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** lastChild) override { return Call("get_lastChild", [&] { return inner_->get_lastChild(lastChild); }); }
  HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** previousSibling) override { return Call("get_previousSibling", [&] { return inner_->get_previousSibling(previousSibling); }); }
  HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** nextSibling) override { return Call("get_nextSibling", [&] { return inner_->get_nextSibling(nextSibling); }); }
  HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** attributeMap) override { return Call("get_attributes", [&] { return inner_->get_attributes(attributeMap); }); }
  HRESULT STDMETHODCALLTYPE insertBefore(IXMLDOMNode* newChild, VARIANT refChild, IXMLDOMNode** outNewChild) override { return Call("insertBefore", [&] { return inner_->insertBefore(newChild, refChild, outNewChild); }); }
  HRESULT STDMETHODCALLTYPE replaceChild(IXMLDOMNode* newChild, IXMLDOMNode* oldChild, IXMLDOMNode** outOldChild) override { return Call("replaceChild", [&] { return inner_->replaceChild(newChild, oldChild, outOldChild); }); }
  HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode* childNode, IXMLDOMNode** oldChild) override { return Call("removeChild", [&] { return inner_->removeChild(childNode, oldChild); }); }
  HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode* newChild, IXMLDOMNode** outNewChild) override { return Call("appendChild", [&] { return inner_->appendChild(newChild, outNewChild); }); }
  HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* hasChild) override { return Call("hasChildNodes", [&] { return inner_->hasChildNodes(hasChild); }); }
  HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** document) override { return Call("get_ownerDocument", [&] { return inner_->get_ownerDocument(document); }); }
  HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** cloneRoot) override { return Call("cloneNode", [&] { return inner_->cloneNode(deep, cloneRoot); }); }
  HRESULT STDMETHODCALLTYPE get_nodeTypeString(BSTR* nodeType) override { return Call("get_nodeTypeString", [&] { return inner_->get_nodeTypeString(nodeType); }); }
  HRESULT STDMETHODCALLTYPE get_text(BSTR* text) override { return Call("get_text", [&] { return inner_->get_text(text); }); }
  HRESULT STDMETHODCALLTYPE put_text(BSTR text) override { return Call("put_text", [&] { return inner_->put_text(text); }); }
  HRESULT STDMETHODCALLTYPE get_specified(VARIANT_BOOL* isSpecified) override { return Call("get_specified", [&] { return inner_->get_specified(isSpecified); }); }
  HRESULT STDMETHODCALLTYPE get_definition(IXMLDOMNode** definitionNode) override { return Call("get_definition", [&] { return inner_->get_definition(definitionNode); }); }
  HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* typedValue) override { return Call("get_nodeTypedValue", [&] { return inner_->get_nodeTypedValue(typedValue); }); }
  HRESULT STDMETHODCALLTYPE put_nodeTypedValue(VARIANT typedValue) override { return Call("put_nodeTypedValue", [&] { return inner_->put_nodeTypedValue(typedValue); }); }
  HRESULT STDMETHODCALLTYPE get_dataType(VARIANT* dataTypeName) override { return Call("get_dataType", [&] { return inner_->get_dataType(dataTypeName); }); }
  HRESULT STDMETHODCALLTYPE put_dataType(BSTR dataTypeName) override { return Call("put_dataType", [&] { return inner_->put_dataType(dataTypeName); }); }
  HRESULT STDMETHODCALLTYPE get_xml(BSTR* xmlString) override { return Call("get_xml", [&] { return inner_->get_xml(xmlString); }); }
  HRESULT STDMETHODCALLTYPE transformNode(IXMLDOMNode* stylesheet, BSTR* xmlString) override { return Call("transformNode", [&] { return inner_->transformNode(stylesheet, xmlString); }); }
  HRESULT STDMETHODCALLTYPE selectNodes(BSTR queryString, IXMLDOMNodeList** resultList) override { return Call("selectNodes", [&] { return inner_->selectNodes(queryString, resultList); }); }
  HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR queryString, IXMLDOMNode** resultNode) override { return Call("selectSingleNode", [&] { return inner_->selectSingleNode(queryString, resultNode); }); }
  HRESULT STDMETHODCALLTYPE get_parsed(VARIANT_BOOL* isParsed) override { return Call("get_parsed", [&] { return inner_->get_parsed(isParsed); }); }
  HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* namespaceURI) override { return Call("get_namespaceURI", [&] { return inner_->get_namespaceURI(namespaceURI); }); }
  HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefixString) override { return Call("get_prefix", [&] { return inner_->get_prefix(prefixString); }); }
  HRESULT STDMETHODCALLTYPE get_baseName(BSTR* nameString) override { return Call("get_baseName", [&] { return inner_->get_baseName(nameString); }); }
  HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode* stylesheet, VARIANT outputObject) override { return Call("transformNodeToObject", [&] { return inner_->transformNodeToObject(stylesheet, outputObject); }); }
  HRESULT STDMETHODCALLTYPE get_doctype(IXMLDOMDocumentType** documentType) override { return Call("get_doctype", [&] { return inner_->get_doctype(documentType); }); }
  HRESULT STDMETHODCALLTYPE get_implementation(IXMLDOMImplementation** impl) override { return Call("get_implementation", [&] { return inner_->get_implementation(impl); }); }
  HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** element) override { return Call("get_documentElement", [&] { return inner_->get_documentElement(element); }); }
  HRESULT STDMETHODCALLTYPE putref_documentElement(IXMLDOMElement* element) override { return Call("putref_documentElement", [&] { return inner_->putref_documentElement(element); }); }
  HRESULT STDMETHODCALLTYPE createElement(BSTR tagName, IXMLDOMElement** element) override { return Call("createElement", [&] { return inner_->createElement(tagName, element); }); }
  HRESULT STDMETHODCALLTYPE createDocumentFragment(IXMLDOMDocumentFragment** fragment) override { return Call("createDocumentFragment", [&] { return inner_->createDocumentFragment(fragment); }); }
  HRESULT STDMETHODCALLTYPE createTextNode(BSTR data, IXMLDOMText** text) override { return Call("createTextNode", [&] { return inner_->createTextNode(data, text); }); }
  HRESULT STDMETHODCALLTYPE createComment(BSTR data, IXMLDOMComment** comment) override { return Call("createComment", [&] { return inner_->createComment(data, comment); }); }
  HRESULT STDMETHODCALLTYPE createCDATASection(BSTR data, IXMLDOMCDATASection** cdata) override { return Call("createCDATASection", [&] { return inner_->createCDATASection(data, cdata); }); }
  HRESULT STDMETHODCALLTYPE createProcessingInstruction(BSTR target, BSTR data, IXMLDOMProcessingInstruction** pi) override { return Call("createProcessingInstruction", [&] { return inner_->createProcessingInstruction(target, data, pi); }); }
  HRESULT STDMETHODCALLTYPE createAttribute(BSTR name, IXMLDOMAttribute** attribute) override { return Call("createAttribute", [&] { return inner_->createAttribute(name, attribute); }); }
  HRESULT STDMETHODCALLTYPE createEntityReference(BSTR name, IXMLDOMEntityReference** entityRef) override { return Call("createEntityReference", [&] { return inner_->createEntityReference(name, entityRef); }); }
  HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tagName, IXMLDOMNodeList** resultList) override { return Call("getElementsByTagName", [&] { return inner_->getElementsByTagName(tagName, resultList); }); }
  HRESULT STDMETHODCALLTYPE createNode(VARIANT type, BSTR name, BSTR namespaceURI, IXMLDOMNode** node) override { return Call("createNode", [&] { return inner_->createNode(type, name, namespaceURI, node); }); }
  HRESULT STDMETHODCALLTYPE nodeFromID(BSTR idString, IXMLDOMNode** node) override { return Call("nodeFromID", [&] { return inner_->nodeFromID(idString, node); }); }
  HRESULT STDMETHODCALLTYPE load(VARIANT xmlSource, VARIANT_BOOL* isSuccessful) override { return Call("load", [&] { return inner_->load(xmlSource, isSuccessful); }); }
  HRESULT STDMETHODCALLTYPE get_readyState(LONG* value) override { return Call("get_readyState", [&] { return inner_->get_readyState(value); }); }
  HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** errorObj) override { return Call("get_parseError", [&] { return (errorSource_ ? errorSource_ : inner_)->get_parseError(errorObj); }); }
  HRESULT STDMETHODCALLTYPE get_url(BSTR* urlString) override { return Call("get_url", [&] { return inner_->get_url(urlString); }); }
  HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* isAsync) override { return Call("get_async", [&] { return inner_->get_async(isAsync); }); }
  HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL isAsync) override { return Call("put_async", [&] { return inner_->put_async(isAsync); }); }
  HRESULT STDMETHODCALLTYPE abort() override { return Call("abort", [&] { return inner_->abort(); }); }
  HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL* isSuccessful) override { return Call("loadXML", [&] { return inner_->loadXML(xml, isSuccessful); }); }
  HRESULT STDMETHODCALLTYPE save(VARIANT destination) override { return Call("save", [&] { return inner_->save(destination); }); }
  HRESULT STDMETHODCALLTYPE get_validateOnParse(VARIANT_BOOL* isValidating) override { return Call("get_validateOnParse", [&] { return inner_->get_validateOnParse(isValidating); }); }
  HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL isValidating) override { return Call("put_validateOnParse", [&] { return inner_->put_validateOnParse(isValidating); }); }
  HRESULT STDMETHODCALLTYPE get_resolveExternals(VARIANT_BOOL* isResolving) override { return Call("get_resolveExternals", [&] { return inner_->get_resolveExternals(isResolving); }); }
  HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL isResolving) override { return Call("put_resolveExternals", [&] { return inner_->put_resolveExternals(isResolving); }); }
  HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* isPreserving) override { return Call("get_preserveWhiteSpace", [&] { return inner_->get_preserveWhiteSpace(isPreserving); }); }
  HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) override { return Call("put_preserveWhiteSpace", [&] { return inner_->put_preserveWhiteSpace(isPreserving); }); }
  HRESULT STDMETHODCALLTYPE put_onreadystatechange(VARIANT sink) override { return Call("put_onreadystatechange", [&] { return inner_->put_onreadystatechange(sink); }); }
  HRESULT STDMETHODCALLTYPE put_ondataavailable(VARIANT sink) override { return Call("put_ondataavailable", [&] { return inner_->put_ondataavailable(sink); }); }
  HRESULT STDMETHODCALLTYPE put_ontransformnode(VARIANT sink) override { return Call("put_ontransformnode", [&] { return inner_->put_ontransformnode(sink); }); }
  // clang-format on

 private:
  friend class CRefCounted<FaultyDocument>;
  ~FaultyDocument() = default;

  template <class Forward>
  HRESULT Call(const char* member, Forward forward) {
    const auto fault = faults_.find(member);
    if (fault != faults_.end()) return fault->second;
    return forward();
  }

  IXMLDOMDocumentPtr inner_;
  std::map<std::string, HRESULT> faults_;
  IXMLDOMDocumentPtr errorSource_;
};

// The class of FaultyDocument, registered for MSXML 6's CLSID for its lifetime, so that
// CreateDomDocument gives a FaultyDocument. The real document inside is made before registering.
class ScopedFaultyDocumentClass final : public IClassFactory {
 public:
  explicit ScopedFaultyDocumentClass(std::map<std::string, HRESULT> faults, IXMLDOMDocumentPtr errorSource = nullptr)
      : faults_(std::move(faults)), errorSource_(std::move(errorSource)) {
    EXPECT_EQ(S_OK, CreateDomDocument(inner_.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, CoRegisterClassObject(kClsidDomDocument60, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_));
  }
  ~ScopedFaultyDocumentClass() { CoRevokeClassObject(cookie_); }
  ScopedFaultyDocumentClass(const ScopedFaultyDocumentClass&) = delete;
  ScopedFaultyDocumentClass& operator=(const ScopedFaultyDocumentClass&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    if (!IsOneOf<IUnknown, IClassFactory>(riid)) {
      *ppv = nullptr;
      return E_NOINTERFACE;
    }
    *ppv = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  // Lives on the test's stack.
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (outer) return CLASS_E_NOAGGREGATION;
    const ComPtr<IXMLDOMDocument> document =
        ComPtr<IXMLDOMDocument>(new FaultyDocument(inner_, faults_, errorSource_));
    return document->QueryInterface(riid, ppv);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  std::map<std::string, HRESULT> faults_;
  IXMLDOMDocumentPtr errorSource_;
  IXMLDOMDocumentPtr inner_;
  DWORD cookie_ = 0;
};

// A new document holding `xml`, which must load.
inline IXMLDOMDocumentPtr LoadedDocument(const std::string& xml) {
  IXMLDOMDocumentPtr document;
  EXPECT_EQ(S_OK, CreateDomDocument(document.ReleaseAndGetAddressOf()));
  VARIANT_BOOL loaded = VARIANT_FALSE;
  EXPECT_EQ(S_OK, document->loadXML(MakeBstr(xml).Get(), &loaded));
  EXPECT_EQ(VARIANT_TRUE, loaded) << xml;
  return document;
}

// The root element of a new document holding `xml`, as a node.
inline IXMLDOMNodePtr RootOf(const std::string& xml) {
  const IXMLDOMDocumentPtr document = LoadedDocument(xml);
  IXMLDOMElementPtr root;
  EXPECT_EQ(S_OK, document->get_documentElement(root.ReleaseAndGetAddressOf()));
  IXMLDOMNodePtr node;
  if (root) {
    EXPECT_EQ(S_OK, root.As(node));
  }
  return node;
}

}  // namespace parcelon::test
