// The XML document interfaces off Windows, over libxml2: a document that loads text (loadXML),
// its parse error, and read-only nodes, node lists and attribute maps. Every other member returns
// E_NOTIMPL.
//
// The parse never reaches the network or the file system and never expands entities
// (XML_PARSE_NONET, no NOENT, DTDLOAD or RECOVER). A DOCTYPE stops it at once, as MSXML 6 refuses
// DTDs by default; so does a text longer than kMaxDomDocumentChars or an element nested deeper
// than kMaxDomElementDepth. Each ends in a parse error with its reason.
#ifndef _WIN32

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/SAX2.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "platform/RefCounted.h"
#include "platform/XmlDom.h"

namespace parcelon {

namespace {

// ---- Text -----------------------------------------------------------------------------------

// UTF-16 to UTF-8; false for an unpaired surrogate.
bool Utf16ToUtf8(const OLECHAR* text, size_t length, std::string& out) {
  out.clear();
  out.reserve(length);
  for (size_t i = 0; i < length; ++i) {
    uint32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (i + 1 >= length || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) return false;
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      return false;
    }
    if (c < 0x80) {
      out += char(c);
    } else if (c < 0x800) {
      out += char(0xC0 | c >> 6);
      out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += char(0xE0 | c >> 12);
      out += char(0x80 | (c >> 6 & 0x3F));
      out += char(0x80 | (c & 0x3F));
    } else {
      out += char(0xF0 | c >> 18);
      out += char(0x80 | (c >> 12 & 0x3F));
      out += char(0x80 | (c >> 6 & 0x3F));
      out += char(0x80 | (c & 0x3F));
    }
  }
  return true;
}

// Well-formed UTF-8 (as libxml2 hands out) to a new BSTR.
HRESULT Utf8ToBstr(std::string_view text, BSTR* out) {
  if (!out) return E_POINTER;
  std::u16string wide;
  wide.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const int extra = byte < 0x80 ? 0 : byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    uint32_t c = extra == 0 ? byte : byte & (0x3F >> extra);
    for (int k = 1; k <= extra && i + k < text.size(); ++k) c = c << 6 | (text[i + k] & 0x3F);
    i += size_t(extra) + 1;
    if (c >= 0x10000) {
      wide += char16_t(0xD800 + ((c - 0x10000) >> 10));
      wide += char16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      wide += char16_t(c);
    }
  }
  *out = SysAllocStringLen(wide.data(), UINT(wide.size()));
  return *out ? S_OK : E_OUTOFMEMORY;
}

bool IsXmlBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view WithoutLeadingBlanks(std::string_view text) {
  while (!text.empty() && IsXmlBlank(text.front())) text.remove_prefix(1);
  return text;
}

size_t TrailingBlanks(std::string_view text) {
  size_t count = 0;
  while (count < text.size() && IsXmlBlank(text[text.size() - 1 - count])) ++count;
  return count;
}

std::string_view Trimmed(std::string_view text) {
  text = WithoutLeadingBlanks(text);
  text.remove_suffix(TrailingBlanks(text));
  return text;
}

std::string_view ViewOf(const xmlChar* text) {
  return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

// ---- The parsed document --------------------------------------------------------------------

struct XmlDocFree {
  void operator()(xmlDocPtr doc) const { xmlFreeDoc(doc); }
};
struct ParserFree {
  void operator()(xmlParserCtxtPtr ctxt) const { xmlFreeParserCtxt(ctxt); }
};
struct XmlFree {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, XmlFree>;

// A loaded libxml2 document; every node object keeps the one it belongs to alive.
using DocumentRef = std::shared_ptr<xmlDoc>;

// What a failed load reports through IXMLDOMParseError.
struct ParseErrorInfo {
  LONG code = 0;
  std::string reason;
  LONG line = 0;
  LONG linePosition = 0;
};

// The load's own refusals, raised from the parser's callbacks.
struct LoadGuard {
  int depth = 0;
  LONG refusal = 0;
  std::string reason;

  void Refuse(xmlParserCtxtPtr ctxt, LONG code, const char* why) {
    if (refusal == 0) {
      refusal = code;
      reason = why;
    }
    xmlStopParser(ctxt);
  }
};

LoadGuard& GuardOf(void* ctx) {
  return *static_cast<LoadGuard*>(static_cast<xmlParserCtxtPtr>(ctx)->_private);
}

// Any DOCTYPE, with or without an internal subset or an external identifier, ends the parse
// before anything of it is read or fetched.
void RefuseDoctype(void* ctx, const xmlChar*, const xmlChar*, const xmlChar*) {
  GuardOf(ctx).Refuse(static_cast<xmlParserCtxtPtr>(ctx), kDomErrorDtdProhibited,
                      "DTD is prohibited.");
}

void StartElementWithinDepth(void* ctx, const xmlChar* localname, const xmlChar* prefix,
                             const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                             int attributeCount, int defaultedCount, const xmlChar** attributes) {
  LoadGuard& guard = GuardOf(ctx);
  if (++guard.depth > kMaxDomElementDepth) {
    guard.Refuse(static_cast<xmlParserCtxtPtr>(ctx), kDomErrorTooDeep,
                 "Elements are nested deeper than 128 levels.");
    return;
  }
  xmlSAX2StartElementNs(ctx, localname, prefix, uri, namespaceCount, namespaces, attributeCount,
                        defaultedCount, attributes);
}

void EndElementWithinDepth(void* ctx, const xmlChar* localname, const xmlChar* prefix,
                           const xmlChar* uri) {
  --GuardOf(ctx).depth;
  xmlSAX2EndElementNs(ctx, localname, prefix, uri);
}

// A text node of whitespace only. MSXML, without preserveWhiteSpace, shows no such node; where
// one stood, the text of the elements around it reads a blank between their pieces.
bool IsBlankText(xmlNodePtr node) {
  return node->type == XML_TEXT_NODE && Trimmed(ViewOf(node->content)).empty();
}

// Parses `text` into a document, or fills `error`. E_OUTOFMEMORY when memory runs out.
HRESULT Parse(BSTR text, DocumentRef& parsed, ParseErrorInfo& error) {
  const UINT length = SysStringLen(text);
  if (length > kMaxDomDocumentChars) {
    error = {kDomErrorTooLarge, "The document is longer than 4194304 characters.", 0, 0};
    return S_FALSE;
  }
  std::string utf8;
  if (!Utf16ToUtf8(text, length, utf8)) {
    error = {kDomErrorMalformed, "The document holds an unpaired surrogate.", 0, 0};
    return S_FALSE;
  }
  if (utf8.empty()) {
    error = {kDomErrorMalformed + XML_ERR_DOCUMENT_EMPTY, "Document is empty", 1, 0};
    return S_FALSE;
  }
  const std::unique_ptr<xmlParserCtxt, ParserFree> ctxt(
      xmlCreateMemoryParserCtxt(utf8.data(), int(utf8.size())));
  if (!ctxt) return E_OUTOFMEMORY;
  LoadGuard guard;
  ctxt->_private = &guard;
  ctxt->sax->internalSubset = RefuseDoctype;
  ctxt->sax->startElementNs = StartElementWithinDepth;
  ctxt->sax->endElementNs = EndElementWithinDepth;
  xmlCtxtUseOptions(ctxt.get(), XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                                    XML_PARSE_IGNORE_ENC);
  xmlParseDocument(ctxt.get());
  std::unique_ptr<xmlDoc, XmlDocFree> doc(std::exchange(ctxt->myDoc, nullptr));
  if (guard.refusal != 0) {
    error = {guard.refusal, guard.reason, LONG(ctxt->input ? ctxt->input->line : 0), 0};
    return S_FALSE;
  }
  if (!ctxt->wellFormed || !doc) {
    const xmlError& last = ctxt->lastError;
    if (last.code == XML_ERR_NO_MEMORY) return E_OUTOFMEMORY;
    const std::string_view message = Trimmed(ViewOf(reinterpret_cast<const xmlChar*>(last.message)));
    error = {kDomErrorMalformed + (last.code & 0xFFF),
             message.empty() ? "The document is not well-formed." : std::string(message),
             LONG(last.line), LONG(last.int2)};
    return S_FALSE;
  }
  parsed = DocumentRef(doc.release(), XmlDocFree());
  return S_OK;
}

// ---- Nodes ----------------------------------------------------------------------------------

// The node kinds a document shows: elements, text that is not blank, CDATA, comments, processing
// instructions.
bool IsShown(xmlNodePtr node) {
  switch (node->type) {
    case XML_TEXT_NODE:
      return !IsBlankText(node);
    case XML_ELEMENT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
      return true;
    default:
      return false;
  }
}

xmlNodePtr ShownFrom(xmlNodePtr node) {
  while (node && !IsShown(node)) node = node->next;
  return node;
}

bool HasChildren(xmlNodePtr node) {
  return node && (node->type == XML_ELEMENT_NODE || node->type == XML_DOCUMENT_NODE);
}

DOMNodeType TypeOf(xmlNodePtr node) {
  switch (node->type) {
    case XML_ELEMENT_NODE: return NODE_ELEMENT;
    case XML_ATTRIBUTE_NODE: return NODE_ATTRIBUTE;
    case XML_TEXT_NODE: return NODE_TEXT;
    case XML_CDATA_SECTION_NODE: return NODE_CDATA_SECTION;
    case XML_PI_NODE: return NODE_PROCESSING_INSTRUCTION;
    case XML_COMMENT_NODE: return NODE_COMMENT;
    case XML_DOCUMENT_NODE: return NODE_DOCUMENT;
    default: return NODE_INVALID;
  }
}

// The qualified name of an element or attribute ("prefix:name"), or the DOM's name of the kind.
std::string NameOf(xmlNodePtr node) {
  switch (node->type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE: {
      std::string name;
      if (node->ns && node->ns->prefix) name.append(ViewOf(node->ns->prefix)).append(":");
      return name.append(ViewOf(node->name));
    }
    case XML_TEXT_NODE: return "#text";
    case XML_CDATA_SECTION_NODE: return "#cdata-section";
    case XML_COMMENT_NODE: return "#comment";
    case XML_PI_NODE: return std::string(ViewOf(node->name));
    default: return "#document";
  }
}

// The text of the text and CDATA nodes below `top`, in document order, as MSXML reads it without
// preserveWhiteSpace: the text nodes' whitespace is cut at the start and at the end of the whole,
// each run of blank text nodes between two pieces reads as one blank, CDATA stays as it is.
std::string DescendantText(xmlNodePtr top) {
  std::string text;
  bool blankBetween = false;
  size_t cutAtEnd = 0;
  xmlNodePtr node = top->children;
  while (node) {
    if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
      std::string_view piece = ViewOf(node->content);
      if (IsBlankText(node)) {
        blankBetween = !text.empty();
      } else {
        if (blankBetween) text += ' ';
        blankBetween = false;
        const bool isText = node->type == XML_TEXT_NODE;
        if (isText && text.empty()) piece = WithoutLeadingBlanks(piece);
        text.append(piece);
        cutAtEnd = isText ? TrailingBlanks(piece) : 0;
      }
    }
    if (node->type == XML_ELEMENT_NODE && node->children) {
      node = node->children;
      continue;
    }
    while (node != top && !node->next) node = node->parent;
    node = node == top ? nullptr : node->next;
  }
  text.resize(text.size() - cutAtEnd);
  return text;
}

// The DOM's text of a node: an element's or the document's as DescendantText reads it, a text
// node's trimmed, a CDATA section's, comment's, instruction's or attribute's as it stands.
std::string TextOf(xmlNodePtr node) {
  switch (node->type) {
    case XML_ELEMENT_NODE:
    case XML_DOCUMENT_NODE:
      return DescendantText(node);
    case XML_TEXT_NODE:
      return std::string(Trimmed(ViewOf(node->content)));
    case XML_CDATA_SECTION_NODE:
      return std::string(ViewOf(node->content));
    default: {
      const XmlText content(xmlNodeGetContent(node));
      return std::string(ViewOf(content.get()));
    }
  }
}

struct XmlBufferFree {
  void operator()(xmlBufferPtr buffer) const { xmlBufferFree(buffer); }
};

// The markup of a node: an element with its content, or the document's top-level nodes.
HRESULT MarkupOf(xmlDocPtr doc, xmlNodePtr node, BSTR* out) {
  const std::unique_ptr<xmlBuffer, XmlBufferFree> buffer(xmlBufferCreate());
  if (!buffer) return E_OUTOFMEMORY;
  if (node->type == XML_DOCUMENT_NODE) {
    for (xmlNodePtr child = ShownFrom(node->children); child; child = ShownFrom(child->next)) {
      if (xmlNodeDump(buffer.get(), doc, child, 0, 0) < 0) return E_OUTOFMEMORY;
      xmlBufferCCat(buffer.get(), "\r\n");
    }
  } else if (xmlNodeDump(buffer.get(), doc, node, 0, 0) < 0) {
    return E_OUTOFMEMORY;
  }
  return Utf8ToBstr(std::string_view(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                                     size_t(xmlBufferLength(buffer.get()))),
                    out);
}

// Creates an object of T with `args` and hands out its interface `I`.
template <class T, class I, class... Args>
HRESULT Give(I** out, Args&&... args) {
  if (!out) return E_POINTER;
  T* object = new (std::nothrow) T(std::forward<Args>(args)...);
  if (!object) return E_OUTOFMEMORY;
  object->AddRef();
  *out = object;
  return S_OK;
}

// IDispatch for objects that no script drives.
template <class Interface>
class NoDispatch : public Interface {
 public:
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count) *count = 0;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }
};

// A reference-counted object answering for IUnknown, IDispatch and `Interfaces`.
template <class Derived, class Most, class... Interfaces>
class DomObject : public NoDispatch<Most>, public CRefCounted<Derived> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    if (!IsOneOf<IUnknown, IDispatch, Most, Interfaces...>(riid)) {
      *ppv = nullptr;
      return E_NOINTERFACE;
    }
    *ppv = static_cast<Most*>(this);
    this->AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return this->AddRefImpl(); }
  ULONG STDMETHODCALLTYPE Release() override { return this->ReleaseImpl(); }

 protected:
  virtual ~DomObject() = default;
};

HRESULT NewNode(const DocumentRef& doc, xmlNodePtr node, IXMLDOMNode** out);

HRESULT NoNode(IXMLDOMNode** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return S_FALSE;
}

class NodeList final : public DomObject<NodeList, IXMLDOMNodeList> {
 public:
  NodeList(DocumentRef doc, std::vector<xmlNodePtr> nodes) : doc_(std::move(doc)), nodes_(std::move(nodes)) {}

  HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** out) override {
    if (index < 0 || size_t(index) >= nodes_.size()) return NoNode(out);
    return NewNode(doc_, nodes_[size_t(index)], out);
  }
  HRESULT STDMETHODCALLTYPE get_length(LONG* length) override {
    if (!length) return E_POINTER;
    *length = LONG(nodes_.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** out) override {
    if (next_ >= nodes_.size()) return NoNode(out);
    return NewNode(doc_, nodes_[next_++], out);
  }
  HRESULT STDMETHODCALLTYPE reset() override {
    next_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown**) override { return E_NOTIMPL; }

 private:
  DocumentRef doc_;
  std::vector<xmlNodePtr> nodes_;
  size_t next_ = 0;
};

// The attributes of an element. Namespace declarations are not among them.
class AttributeMap final : public DomObject<AttributeMap, IXMLDOMNamedNodeMap> {
 public:
  AttributeMap(DocumentRef doc, xmlNodePtr element) : doc_(std::move(doc)), element_(element) {}

  HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** out) override {
    std::string wanted;
    if (!Utf16ToUtf8(name, SysStringLen(name), wanted)) return NoNode(out);
    for (xmlAttrPtr attribute = element_->properties; attribute; attribute = attribute->next) {
      const auto node = reinterpret_cast<xmlNodePtr>(attribute);
      if (NameOf(node) == wanted) return NewNode(doc_, node, out);
    }
    return NoNode(out);
  }
  HRESULT STDMETHODCALLTYPE setNamedItem(IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE removeNamedItem(BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** out) override {
    xmlAttrPtr attribute = element_->properties;
    for (LONG i = 0; attribute && i < index; ++i) attribute = attribute->next;
    if (index < 0 || !attribute) return NoNode(out);
    return NewNode(doc_, reinterpret_cast<xmlNodePtr>(attribute), out);
  }
  HRESULT STDMETHODCALLTYPE get_length(LONG* length) override {
    if (!length) return E_POINTER;
    *length = 0;
    for (xmlAttrPtr attribute = element_->properties; attribute; attribute = attribute->next) ++*length;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE getQualifiedItem(BSTR, BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE removeQualifiedItem(BSTR, BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown**) override { return E_NOTIMPL; }

 private:
  DocumentRef doc_;
  xmlNodePtr element_;
};

// The IXMLDOMNode members over one libxml2 node (null: a document with nothing loaded).
template <class Derived, class Most, class... Interfaces>
class NodeBase : public DomObject<Derived, Most, IXMLDOMNode, Interfaces...> {
 public:
  HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) override {
    return Utf8ToBstr(node_ ? NameOf(node_) : "#document", name);
  }
  HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) override {
    if (!type) return E_POINTER;
    *type = node_ ? TypeOf(node_) : NODE_DOCUMENT;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** out) override {
    if (!node_ || node_->type == XML_DOCUMENT_NODE || node_->type == XML_ATTRIBUTE_NODE) return NoNode(out);
    return NewNode(doc_, node_->parent, out);
  }
  HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** out) override {
    std::vector<xmlNodePtr> children;
    if (HasChildren(node_)) {
      for (xmlNodePtr child = ShownFrom(node_->children); child; child = ShownFrom(child->next))
        children.push_back(child);
    }
    return Give<NodeList>(out, doc_, std::move(children));
  }
  HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** out) override {
    if (!HasChildren(node_)) return NoNode(out);
    return NewNode(doc_, ShownFrom(node_->children), out);
  }
  HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** out) override {
    if (!node_ || node_->type == XML_DOCUMENT_NODE || node_->type == XML_ATTRIBUTE_NODE) return NoNode(out);
    return NewNode(doc_, ShownFrom(node_->next), out);
  }
  HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (!node_ || node_->type != XML_ELEMENT_NODE) return S_FALSE;
    return Give<AttributeMap>(out, doc_, node_);
  }
  HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* hasChild) override {
    if (!hasChild) return E_POINTER;
    const bool has = HasChildren(node_) && ShownFrom(node_->children);
    *hasChild = has ? VARIANT_TRUE : VARIANT_FALSE;
    return has ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE get_text(BSTR* text) override {
    return Utf8ToBstr(node_ ? TextOf(node_) : std::string(), text);
  }
  HRESULT STDMETHODCALLTYPE get_xml(BSTR* xml) override {
    if (!node_) return Utf8ToBstr("", xml);
    if (node_->type == XML_ATTRIBUTE_NODE) return E_NOTIMPL;
    return MarkupOf(doc_.get(), node_, xml);
  }

  HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE insertBefore(IXMLDOMNode*, VARIANT, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE replaceChild(IXMLDOMNode*, IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_nodeTypeString(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_text(BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_specified(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_definition(IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_nodeTypedValue(VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_dataType(VARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_dataType(BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE transformNode(IXMLDOMNode*, BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE selectNodes(BSTR, IXMLDOMNodeList**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_parsed(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_prefix(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_baseName(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode*, VARIANT) override { return E_NOTIMPL; }

 protected:
  NodeBase(DocumentRef doc, xmlNodePtr node) : doc_(std::move(doc)), node_(node) {}

  DocumentRef doc_;
  xmlNodePtr node_;
};

// A node of a loaded document; it answers for IXMLDOMElement when it is an element.
class Node final : public NodeBase<Node, IXMLDOMElement> {
 public:
  Node(DocumentRef doc, xmlNodePtr node) : NodeBase(std::move(doc), node) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (riid == IidOf<IXMLDOMElement>() && node_->type != XML_ELEMENT_NODE) {
      if (ppv) *ppv = nullptr;
      return E_NOINTERFACE;
    }
    return NodeBase::QueryInterface(riid, ppv);
  }

  HRESULT STDMETHODCALLTYPE get_tagName(BSTR* name) override { return get_nodeName(name); }
  HRESULT STDMETHODCALLTYPE getAttribute(BSTR, VARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE setAttribute(BSTR, VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE removeAttribute(BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE getAttributeNode(BSTR, IXMLDOMAttribute**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE setAttributeNode(IXMLDOMAttribute*, IXMLDOMAttribute**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE removeAttributeNode(IXMLDOMAttribute*, IXMLDOMAttribute**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR, IXMLDOMNodeList**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE normalize() override { return E_NOTIMPL; }
};

HRESULT NewNode(const DocumentRef& doc, xmlNodePtr node, IXMLDOMNode** out) {
  if (!node) return NoNode(out);
  if (node->type == XML_DOCUMENT_NODE) return E_NOTIMPL;  // The document is its own object.
  return Give<Node>(out, doc, node);
}

class ParseError final : public DomObject<ParseError, IXMLDOMParseError> {
 public:
  explicit ParseError(ParseErrorInfo info) : info_(std::move(info)) {}

  // S_FALSE when there was no error, as MSXML answers.
  HRESULT STDMETHODCALLTYPE get_errorCode(LONG* code) override {
    const HRESULT hr = Put(code, info_.code);
    return hr == S_OK && info_.code == 0 ? S_FALSE : hr;
  }
  HRESULT STDMETHODCALLTYPE get_reason(BSTR* reason) override { return Utf8ToBstr(info_.reason, reason); }
  HRESULT STDMETHODCALLTYPE get_line(LONG* line) override { return Put(line, info_.line); }
  HRESULT STDMETHODCALLTYPE get_linepos(LONG* position) override { return Put(position, info_.linePosition); }
  HRESULT STDMETHODCALLTYPE get_url(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_srcText(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_filepos(LONG*) override { return E_NOTIMPL; }

 private:
  static HRESULT Put(LONG* out, LONG value) {
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
  }
  ParseErrorInfo info_;
};

// The document: loads text synchronously and never validates.
class Document final : public NodeBase<Document, IXMLDOMDocument> {
 public:
  Document() : NodeBase(nullptr, nullptr) {}

  HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL* isSuccessful) override {
    if (isSuccessful) *isSuccessful = VARIANT_FALSE;
    doc_.reset();
    node_ = nullptr;
    error_ = ParseErrorInfo();
    DocumentRef parsed;
    HRESULT hr;
    try {
      hr = Parse(xml, parsed, error_);
    } catch (const std::bad_alloc&) {
      hr = E_OUTOFMEMORY;
    }
    if (hr != S_OK) return hr;
    doc_ = std::move(parsed);
    node_ = reinterpret_cast<xmlNodePtr>(doc_.get());
    if (isSuccessful) *isSuccessful = VARIANT_TRUE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** out) override {
    try {
      return Give<ParseError>(out, error_);
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    }
  }
  HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    xmlNodePtr root = doc_ ? xmlDocGetRootElement(doc_.get()) : nullptr;
    if (!root) return S_FALSE;
    return Give<Node>(out, doc_, root);
  }
  HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* isAsync) override { return PutFalse(isAsync); }
  // Loading is always synchronous; asking for asynchronous loading changes nothing.
  HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE get_validateOnParse(VARIANT_BOOL* isValidating) override { return PutFalse(isValidating); }
  // A document with a DTD never loads, so there is nothing to validate against.
  HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE get_resolveExternals(VARIANT_BOOL* isResolving) override { return PutFalse(isResolving); }
  HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL isResolving) override {
    return isResolving == VARIANT_FALSE ? S_OK : E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* isPreserving) override { return PutFalse(isPreserving); }
  HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) override {
    return isPreserving == VARIANT_FALSE ? S_OK : E_NOTIMPL;
  }

  HRESULT STDMETHODCALLTYPE get_doctype(IXMLDOMDocumentType**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_implementation(IXMLDOMImplementation**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE putref_documentElement(IXMLDOMElement*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createElement(BSTR, IXMLDOMElement**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createDocumentFragment(IXMLDOMDocumentFragment**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createTextNode(BSTR, IXMLDOMText**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createComment(BSTR, IXMLDOMComment**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createCDATASection(BSTR, IXMLDOMCDATASection**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createProcessingInstruction(BSTR, BSTR, IXMLDOMProcessingInstruction**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE createAttribute(BSTR, IXMLDOMAttribute**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createEntityReference(BSTR, IXMLDOMEntityReference**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR, IXMLDOMNodeList**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE createNode(VARIANT, BSTR, BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE nodeFromID(BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE load(VARIANT, VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_readyState(LONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_url(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE abort() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE save(VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_onreadystatechange(VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_ondataavailable(VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_ontransformnode(VARIANT) override { return E_NOTIMPL; }

 private:
  static HRESULT PutFalse(VARIANT_BOOL* out) {
    if (!out) return E_POINTER;
    *out = VARIANT_FALSE;
    return S_OK;
  }
  ParseErrorInfo error_;
};

}  // namespace

// A class registered for MSXML 6's CLSID in the in-process class table comes first, so that a test
// can stand in for the document; without one, the libxml2 document.
HRESULT CreateDomDocument(IXMLDOMDocument** document) {
  if (!document) return E_POINTER;
  *document = nullptr;
  const HRESULT hr = CoCreateInstance(kClsidDomDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                      IidOf<IXMLDOMDocument>(), reinterpret_cast<void**>(document));
  if (hr != REGDB_E_CLASSNOTREG) return hr;
  return Give<Document>(document);
}

}  // namespace parcelon

#endif  // !_WIN32
