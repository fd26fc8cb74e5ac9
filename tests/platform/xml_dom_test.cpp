// The XML document of CreateDomDocument: one table of documents whose parse results must read the
// same from MSXML 6 (on Windows, under Wine) and from the libxml2 document (elsewhere), and the
// libxml2 document's own bounds.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/XmlDom.h"
#include "support/TestSupport.h"

namespace parcelon::test {
namespace {

std::string Ansi(const Bstr& text) {
  std::string out;
  WideToAnsi(text.Get(), text.Length(), out);
  return out;
}

const char* TypeName(DOMNodeType type) {
  switch (type) {
    case NODE_ELEMENT: return "element";
    case NODE_ATTRIBUTE: return "attribute";
    case NODE_TEXT: return "text";
    case NODE_CDATA_SECTION: return "cdata";
    case NODE_COMMENT: return "comment";
    case NODE_PROCESSING_INSTRUCTION: return "pi";
    default: return "other";
  }
}

// One node as the table writes it: its type, name and text.
std::string NodeLine(IXMLDOMNode* node) {
  DOMNodeType type = NODE_INVALID;
  Bstr name;
  Bstr text;
  EXPECT_EQ(S_OK, node->get_nodeType(&type));
  EXPECT_EQ(S_OK, node->get_nodeName(name.Out()));
  EXPECT_EQ(S_OK, node->get_text(text.Out()));
  return std::string(TypeName(type)) + " " + Ansi(name) + " \"" + Ansi(text) + "\"";
}

class DomTest : public ::testing::Test {
 protected:
#ifdef _WIN32
  void SetUp() override { ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))); }
  void TearDown() override { CoUninitialize(); }
#endif

  static IXMLDOMDocumentPtr NewDocument() {
    IXMLDOMDocumentPtr document;
    EXPECT_EQ(S_OK, CreateDomDocument(document.ReleaseAndGetAddressOf()));
    if (document) {
      EXPECT_EQ(S_OK, document->put_async(VARIANT_FALSE));
      EXPECT_EQ(S_OK, document->put_validateOnParse(VARIANT_FALSE));
    }
    return document;
  }

  // Loads `xml` and describes the result: whether it loaded, whether the parse error has a code,
  // then the root's name, the named attributes' texts, the root's children and the root's text.
  static std::string Describe(const Bstr& xml, const std::vector<const char*>& attributes) {
    const IXMLDOMDocumentPtr document = NewDocument();
    if (!document) return "no document";
    std::ostringstream out;
    VARIANT_BOOL loaded = VARIANT_TRUE;
    const HRESULT hr = document->loadXML(xml.Get(), &loaded);
    out << "loaded " << (loaded ? "yes" : "no") << " (" << (hr == S_OK ? "S_OK" : hr == S_FALSE ? "S_FALSE" : "other")
        << ")\n";
    IXMLDOMParseErrorPtr error;
    LONG code = 0;
    EXPECT_EQ(S_OK, document->get_parseError(error.ReleaseAndGetAddressOf()));
    EXPECT_TRUE(SUCCEEDED(error->get_errorCode(&code)));
    out << "error " << (code == 0 ? "zero" : "non-zero") << "\n";
    IXMLDOMElementPtr root;
    if (document->get_documentElement(root.ReleaseAndGetAddressOf()) != S_OK || !root) {
      out << "no root\n";
      return out.str();
    }
    Bstr name;
    EXPECT_EQ(S_OK, root->get_nodeName(name.Out()));
    out << "root " << Ansi(name) << "\n";
    IXMLDOMNamedNodeMapPtr map;
    EXPECT_EQ(S_OK, root->get_attributes(map.ReleaseAndGetAddressOf()));
    for (const char* attribute : attributes) {
      IXMLDOMNodePtr item;
      const HRESULT found = map->getNamedItem(MakeBstr(attribute).Get(), item.ReleaseAndGetAddressOf());
      out << "@" << attribute << " " << (found == S_OK && item ? NodeLine(item.Get()) : "absent") << "\n";
    }
    IXMLDOMNodeListPtr children;
    LONG count = 0;
    EXPECT_EQ(S_OK, root->get_childNodes(children.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, children->get_length(&count));
    for (LONG i = 0; i < count; ++i) {
      IXMLDOMNodePtr child;
      EXPECT_EQ(S_OK, children->get_item(i, child.ReleaseAndGetAddressOf()));
      out << "child " << NodeLine(child.Get()) << "\n";
    }
    Bstr text;
    EXPECT_EQ(S_OK, root->get_text(text.Out()));
    out << "text \"" << Ansi(text) << "\"\n";
    return out.str();
  }
};

std::string Nested(int depth) {
  std::string xml;
  for (int i = 0; i < depth; ++i) xml += "<a>";
  for (int i = 0; i < depth; ++i) xml += "</a>";
  return xml;
}

struct DomCase {
  const char* name;
  std::string xml;
  std::vector<const char*> attributes;
  std::string expected;
  // What Wine's MSXML 6 gives where it departs from MSXML 6 itself; null where they agree.
  const char* underWine = nullptr;
};

const char kNotLoaded[] = "loaded no (S_FALSE)\nerror non-zero\nno root\n";

TEST_F(DomTest, DocumentsReadTheSameAsMsxml6) {
  const std::vector<DomCase> cases = {
      {"well-formed",
       "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
       "<AttachmentRs statusCode=\"0\" statusSeverity=\"INFO\"><MessageID>ATT-1</MessageID></AttachmentRs>",
       {"statusCode", "statusSeverity", "statusMessage"},
       "loaded yes (S_OK)\nerror zero\nroot AttachmentRs\n"
       "@statusCode attribute statusCode \"0\"\n@statusSeverity attribute statusSeverity \"INFO\"\n"
       "@statusMessage absent\n"
       "child element MessageID \"ATT-1\"\ntext \"ATT-1\"\n"},
      {"whitespace",
       "<Rs>\n  <MessageID>  ATT  2\t</MessageID>\n  <Empty>   </Empty>\n\t<Tail>x</Tail> \r\n</Rs>",
       {},
       "loaded yes (S_OK)\nerror zero\nroot Rs\n"
       "child element MessageID \"ATT  2\"\nchild element Empty \"\"\nchild element Tail \"x\"\n"
       "text \"ATT  2\t x\"\n"},
      {"nested text",
       "<a>one<b> two </b>three<c><d>four</d></c> </a>",
       {},
       "loaded yes (S_OK)\nerror zero\nroot a\n"
       "child text #text \"one\"\nchild element b \"two\"\nchild text #text \"three\"\nchild element c \"four\"\n"
       "text \"one two threefour\"\n"},
      {"attributes",
       "<Rs trnUID=\"T-1\" statusCode=\" 0 \" statusMessage=\"a &amp; b\" StatusCode=\"x\"/>",
       {"trnUID", "statusCode", "statusMessage", "StatusCode", "statusmessage"},
       "loaded yes (S_OK)\nerror zero\nroot Rs\n"
       "@trnUID attribute trnUID \"T-1\"\n@statusCode attribute statusCode \" 0 \"\n"
       "@statusMessage attribute statusMessage \"a & b\"\n@StatusCode attribute StatusCode \"x\"\n"
       "@statusmessage absent\ntext \"\"\n"},
      {"comments",
       "<Rs><!-- first --><MessageID>M</MessageID><!--second--></Rs>",
       {},
       "loaded yes (S_OK)\nerror zero\nroot Rs\n"
       "child comment #comment \" first \"\nchild element MessageID \"M\"\nchild comment #comment \"second\"\n"
       "text \"M\"\n"},
      {"CDATA",
       "<Rs><Token><![CDATA[ <T&1> ]]></Token><![CDATA[  ]]></Rs>",
       {},
       "loaded yes (S_OK)\nerror zero\nroot Rs\n"
       "child element Token \" <T&1> \"\nchild cdata #cdata-section \"  \"\ntext \" <T&1>   \"\n"},
      {"text around a comment", "<Rs> a <!-- c --> b <E/></Rs>", {},
       "loaded yes (S_OK)\nerror zero\nroot Rs\nchild text #text \"a\"\nchild comment #comment \" c \"\n"
       "child text #text \"b\"\nchild element E \"\"\ntext \"a  b\"\n"},
      {"character references", "<Rs>caf&#233; &lt;&gt;</Rs>", {},
       "loaded yes (S_OK)\nerror zero\nroot Rs\nchild text #text \"caf\xE9 <>\"\ntext \"caf\xE9 <>\"\n"},
      {"names differing in case", "<Rs></rs>", {}, kNotLoaded},
      {"not XML", "this is not XML", {}, kNotLoaded},
      {"empty", "", {}, kNotLoaded},
      {"only whitespace", " \r\n", {}, kNotLoaded},
      {"two roots", "<a/><b/>", {}, kNotLoaded},
      {"deep nesting", Nested(10000), {}, kNotLoaded},
      // MSXML 6 prohibits DTDs unless told otherwise (ProhibitDTD); Wine's MSXML 6 does not, and
      // loads both documents.
      {"DOCTYPE with an external DTD", "<!DOCTYPE Rs SYSTEM \"http://127.0.0.1:9/rs.dtd\"><Rs/>", {}, kNotLoaded,
       "loaded yes (S_OK)\nerror zero\nroot Rs\ntext \"\"\n"},
      {"DOCTYPE with an internal entity", "<!DOCTYPE Rs [<!ENTITY e \"x\">]><Rs>&e;</Rs>", {}, kNotLoaded,
       "loaded yes (S_OK)\nerror zero\nroot Rs\nchild other e \"\"\ntext \"x\"\n"},
      {"billion laughs",
       "<!DOCTYPE lolz [<!ENTITY lol \"lol\">"
       "<!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
       "<!ENTITY lol2 \"&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;\">"
       "<!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">"
       "<!ENTITY lol4 \"&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;\">"
       "<!ENTITY lol5 \"&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;\">"
       "<!ENTITY lol6 \"&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;\">"
       "<!ENTITY lol7 \"&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;\">"
       "<!ENTITY lol8 \"&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;\">"
       "<!ENTITY lol9 \"&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;\">"
       "]><lolz>&lol9;</lolz>",
       {},
       kNotLoaded},
  };
  for (const DomCase& c : cases) {
    SCOPED_TRACE(c.name);
#ifdef _WIN32
    const std::string expected = c.underWine ? c.underWine : c.expected;
#else
    const std::string& expected = c.expected;
#endif
    EXPECT_EQ(expected, Describe(MakeBstr(c.xml), c.attributes));
  }
}

TEST_F(DomTest, TheDocumentAnswersForItsInterfaces) {
  const IXMLDOMDocumentPtr document = NewDocument();
  ASSERT_TRUE(document);
  VARIANT_BOOL loaded = VARIANT_FALSE;
  ASSERT_EQ(S_OK, document->loadXML(MakeBstr("<Rs><a/>t</Rs>").Get(), &loaded));
  IXMLDOMNodePtr asNode;
  EXPECT_EQ(S_OK, document.As(asNode));
  IXMLDOMElementPtr root;
  ASSERT_EQ(S_OK, document->get_documentElement(root.ReleaseAndGetAddressOf()));
  IXMLDOMNodePtr first;
  ASSERT_EQ(S_OK, root->get_firstChild(first.ReleaseAndGetAddressOf()));
  IXMLDOMElementPtr firstAsElement;
  EXPECT_EQ(S_OK, first.As(firstAsElement)) << "an element child answers for IXMLDOMElement";
  IXMLDOMNodePtr second;
  ASSERT_EQ(S_OK, first->get_nextSibling(second.ReleaseAndGetAddressOf()));
  IXMLDOMElementPtr secondAsElement;
  EXPECT_EQ(E_NOINTERFACE, second.As(secondAsElement)) << "a text node does not";
  IXMLDOMNodePtr third;
  EXPECT_EQ(S_FALSE, second->get_nextSibling(third.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(third);
  Bstr xml;
  ASSERT_EQ(S_OK, root->get_xml(xml.Out()));
  EXPECT_EQ("<Rs><a/>t</Rs>", Ansi(xml));
}

// A failed load leaves no document element behind from an earlier load.
TEST_F(DomTest, AFailedLoadForgetsTheEarlierDocument) {
  const IXMLDOMDocumentPtr document = NewDocument();
  ASSERT_TRUE(document);
  VARIANT_BOOL loaded = VARIANT_FALSE;
  ASSERT_EQ(S_OK, document->loadXML(MakeBstr("<Rs/>").Get(), &loaded));
  EXPECT_EQ(S_FALSE, document->loadXML(MakeBstr("<Rs>").Get(), &loaded));
  EXPECT_EQ(VARIANT_FALSE, loaded);
  IXMLDOMElementPtr root;
  EXPECT_EQ(S_FALSE, document->get_documentElement(root.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(root);
}

#ifndef _WIN32

std::string ParseErrorText(const IXMLDOMDocumentPtr& document) {
  IXMLDOMParseErrorPtr error;
  LONG code = 0;
  Bstr reason;
  EXPECT_EQ(S_OK, document->get_parseError(error.ReleaseAndGetAddressOf()));
  EXPECT_TRUE(SUCCEEDED(error->get_errorCode(&code)));
  EXPECT_EQ(S_OK, error->get_reason(reason.Out()));
  char hex[16];
  std::snprintf(hex, sizeof hex, "%08lX", static_cast<unsigned long>(static_cast<uint32_t>(code)));
  return std::string(hex) + " " + Ansi(reason);
}

std::string LoadError(const std::string& xml) {
  const IXMLDOMDocumentPtr document;
  IXMLDOMDocumentPtr fresh;
  EXPECT_EQ(S_OK, CreateDomDocument(fresh.ReleaseAndGetAddressOf()));
  VARIANT_BOOL loaded = VARIANT_TRUE;
  const HRESULT hr = fresh->loadXML(MakeBstr(xml).Get(), &loaded);
  if (hr == S_OK) return "loaded";
  EXPECT_EQ(S_FALSE, hr);
  return ParseErrorText(fresh);
}

// The bounds and refusals of the libxml2 document, with their codes and reasons.
TEST_F(DomTest, TheLibxmlDocumentRefusesWhatItBounds) {
  const std::string megabyteToken(1024 * 1024, 'T');
  EXPECT_EQ("loaded", LoadError("<Rs><LastDataUploadToken>" + megabyteToken + "</LastDataUploadToken></Rs>"));
  EXPECT_EQ("C00CEF02 The document is longer than 4194304 characters.",
            LoadError("<Rs>" + std::string(kMaxDomDocumentChars, 'x') + "</Rs>"));
  EXPECT_EQ("loaded", LoadError(Nested(kMaxDomElementDepth)));
  EXPECT_EQ("C00CEF03 Elements are nested deeper than 128 levels.", LoadError(Nested(kMaxDomElementDepth + 1)));
  EXPECT_EQ("C00CEF01 DTD is prohibited.", LoadError("<!DOCTYPE Rs><Rs/>"));
  EXPECT_EQ("C00CEF01 DTD is prohibited.", LoadError("<?xml version=\"1.0\"?><!DOCTYPE Rs SYSTEM \"file:///etc/passwd\"><Rs/>"));
  EXPECT_EQ("C00CE004 Document is empty", LoadError(""));
  EXPECT_EQ("C00CE04C Opening and ending tag mismatch: Rs line 1 and rs", LoadError("<Rs></rs>"));
}

// The document's text is UTF-16; a declared encoding does not change how it reads.
TEST_F(DomTest, TheDeclaredEncodingIsIgnored) {
  IXMLDOMDocumentPtr document;
  ASSERT_EQ(S_OK, CreateDomDocument(document.ReleaseAndGetAddressOf()));
  const OLECHAR text[] = u"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Rs>\u20AC\u00E9</Rs>";
  VARIANT_BOOL loaded = VARIANT_FALSE;
  ASSERT_EQ(S_OK, document->loadXML(Bstr(text).Get(), &loaded));
  IXMLDOMElementPtr root;
  ASSERT_EQ(S_OK, document->get_documentElement(root.ReleaseAndGetAddressOf()));
  Bstr value;
  ASSERT_EQ(S_OK, root->get_text(value.Out()));
  EXPECT_EQ(std::u16string(u"\u20AC\u00E9"), std::u16string(value.Get(), value.Length()));
  const OLECHAR unpaired[] = {u'<', u'a', u'>', 0xD800, u'<', u'/', u'a', u'>', 0};
  EXPECT_EQ(S_FALSE, document->loadXML(Bstr(unpaired).Get(), &loaded));
  EXPECT_EQ("C00CE000 The document holds an unpaired surrogate.", ParseErrorText(document));
}

// The nodes keep their document alive after the document object is gone.
TEST_F(DomTest, NodesOutliveTheDocumentObject) {
  IXMLDOMElementPtr root;
  {
    IXMLDOMDocumentPtr document;
    ASSERT_EQ(S_OK, CreateDomDocument(document.ReleaseAndGetAddressOf()));
    VARIANT_BOOL loaded = VARIANT_FALSE;
    ASSERT_EQ(S_OK, document->loadXML(MakeBstr("<Rs><MessageID>M-1</MessageID></Rs>").Get(), &loaded));
    ASSERT_EQ(S_OK, document->get_documentElement(root.ReleaseAndGetAddressOf()));
    ASSERT_EQ(S_OK, document->loadXML(MakeBstr("<Other/>").Get(), &loaded));
  }
  Bstr text;
  ASSERT_EQ(S_OK, root->get_text(text.Out()));
  EXPECT_EQ("M-1", Ansi(text));
}

#endif  // !_WIN32

}  // namespace
}  // namespace parcelon::test
