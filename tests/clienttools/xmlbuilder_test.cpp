// XMLBuilder: escaping and cleaning of values, indentation, every kind of element and the host
// values it reads, and where the document goes.
#include "clienttools/XMLBuilder.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>
#ifndef _WIN32
#include <libxml/parser.h>
#include <libxml/tree.h>
#endif

#include "diagnostics/FeatureSettings.h"
#include "platform/ComError.h"
#include "support/FakeHostValues.h"
#include "support/TestSupport.h"

using parcelon::test::FakeAddress;
using parcelon::test::FakeAmount;
using parcelon::test::MakeBstr;
using parcelon::test::ScopedEnv;
using parcelon::test::ScratchFolder;

namespace {

std::string Text(const XMLBuilder& builder) {
  const OLABuffer* buffer = builder.Buffer();
  return buffer ? std::string(buffer->GetData(), buffer->GetLength()) : std::string();
}

// Points the settings service at a file of our own for the test's duration.
class XMLBuilderTest : public ::testing::Test {
 protected:
  void SetIndent(bool on) {
    parcelon::test::WriteFile(settings_, std::string("[ZPSSettings]\nNetworkAdapter.IndentXML=") + (on ? "1" : "0") + "\n");
    AmbitAccess::Reload();
  }
  void SetUp() override { SetIndent(false); }
  void TearDown() override { AmbitAccess::Reload(); }

  ScratchFolder folder_;
  std::string settings_ = folder_.File("ZPSSettings.aov");
  ScopedEnv env_{"PARCELON_SETTINGS", settings_.c_str()};
};

TEST_F(XMLBuilderTest, EscapesAndCleansValuesToPrintableAscii) {
  struct Case { std::string value; std::string content; };
  const std::vector<Case> cases = {
      {"O\x92Neil", "O&apos;Neil"},          // typographic apostrophe folded into the plain one
      {"Caf\xE9", "Caf"},                    // the upper half of the code page is dropped
      {"a\r\nb", "a\nb"},                    // carriage return dropped, line feed kept
      {"t\tx\x01\x1F\x7F", "t\tx\x7F"},      // tab and DEL kept, other controls dropped
      {std::string("\x80\xFF", 2), ""},
      {"plain", "plain"},
      {"\"Tom & Jerry's <best>\"", "&quot;Tom &amp; Jerry&apos;s &lt;best&gt;&quot;"},
  };
  for (const Case& c : cases) {
    XMLBuilder b;
    EXPECT_EQ(b.AddElement("V", OLAString(c.value.c_str())), XMLBuilder::kDone);
    EXPECT_EQ(Text(b), "<V>" + c.content + "</V>\n") << c.value;
  }
}

TEST_F(XMLBuilderTest, BstrValuesConvertThroughTheCodePage) {
  XMLBuilder b;
  // U+2019 is 0x92 in the code page and becomes an apostrophe entity; e-acute is dropped.
  b.AddElement("Name", MakeBstr("O\u2019Brien & Caf\u00e9").Get());
  b.AddElement("Empty", static_cast<BSTR>(nullptr));
  EXPECT_EQ(Text(b), "<Name>O&apos;Brien &amp; Caf</Name>\n<Empty></Empty>\n");
}

TEST_F(XMLBuilderTest, CDataKeepsEveryByte) {
  XMLBuilder b;
  b.AddCDataElement("C", OLAString("a<b&\xE9"));
  b.AddCDataElement("D", MakeBstr("x<y").Get());
  EXPECT_EQ(Text(b), "<C><![CDATA[a<b&\xE9]]></C>\n<D><![CDATA[x<y]]></D>\n");
}

TEST_F(XMLBuilderTest, IndentationFollowsTheSwitch) {
  for (bool on : {false, true}) {
    SetIndent(on);
    XMLBuilder b;
    b.OpenAggregate("A");
    b.AddElement("B", OLAString("x"));
    b.OpenAggregate("C");
    b.AddBoolElement("D", VARIANT_TRUE);
    b.CloseAggregate("C");
    b.CloseAggregate("A");
    const std::string pad = on ? "  " : "";
    EXPECT_EQ(Text(b), "<A>\n" + pad + "<B>x</B>\n" + pad + "<C>\n" + pad + pad + "<D>Y</D>\n" + pad + "</C>\n</A>\n");
  }
}

TEST_F(XMLBuilderTest, SubDocumentStartsAtItsDepth) {
  SetIndent(true);
  XMLBuilder b(2, 64);
  b.AddIntElement("I", -7);
  b.AddComment(OLAString("note"));
  EXPECT_EQ(Text(b), "    <I>-7</I>\n    <!--note-->\n");
}

TEST_F(XMLBuilderTest, AttributesEndAtTheFirstEmptyKey) {
  XMLBuilder b;
  const OLAString attributes[] = {"trnUID", "AB12", "version", "1", "", "ignored", "late", "x"};
  b.OpenAggregateWithAttributes("Rq", attributes);
  b.CloseAggregate("Rq");
  EXPECT_EQ(Text(b), "<Rq trnUID=\"AB12\" version=\"1\">\n</Rq>\n");
}

TEST_F(XMLBuilderTest, ScalarElementsAndRawText) {
  XMLBuilder b;
  b.AppendRaw("<?xml version=\"1.0\"?>");
  b.AppendNewlines(2);
  b.AppendNewlines(-3);
  b.AppendText(OLAString("a&b"), true, true);
  b.AppendText(OLAString("a&b"), false, false);
  b.AddHeaderLine("Content-Type", "pdf");
  b.AddStartTag("S");
  b.AddNotDoneElement("ND");
  b.AddNameValueComment("Key", "Value");
  b.AddLongElement("L", 2147483647);
  b.AddFixedElement("F", 2.5, 3);
  b.AddDoubleElement("D", 0.1);
  b.AddBoolElement("B1", 1);
  b.AddBoolElement("B0", VARIANT_FALSE);
  EXPECT_EQ(Text(b),
            "<?xml version=\"1.0\"?>\n\na&amp;b\na&bContent-Type:pdf\n<S>\n<ND>NOT DONE</ND>\n"
            "<!--Key: Value-->\n<L>2147483647</L>\n<F>2.500</F>\n<D>0.1</D>\n<B1>N</B1>\n<B0>N</B0>\n");
}

TEST_F(XMLBuilderTest, ExactValuesWriteTheirTextOrNothing) {
  XMLBuilder b;
  EXPECT_EQ(b.AddAmountElement("Amt", OLAAmount(1234, 50)), XMLBuilder::kDone);
  EXPECT_EQ(b.AddPrecisionElement("Qty", OLAPrecisionInteger(300, 2)), XMLBuilder::kDone);
  EXPECT_EQ(b.AddPrecisionElement2("Neg", OLAPrecisionInteger(-5, 2)), XMLBuilder::kDone);
  EXPECT_EQ(b.AddPrecisionElement("Bad", OLAPrecisionInteger(1, 30)), XMLBuilder::kValueNotSet);
  EXPECT_EQ(Text(b), "<Amt>1234.5</Amt>\n<Qty>3</Qty>\n<Neg>-.05</Neg>\n");
}

TEST_F(XMLBuilderTest, DatesInTheirThreeForms) {
  ScopedEnv tz("TZ", "UTC");
  XMLBuilder b;
  EXPECT_EQ(b.AddDateTimeElement("D0", 0.0), XMLBuilder::kDone);
  EXPECT_EQ(b.AddDateTimeElement("Noon", 39879.5), XMLBuilder::kDone);
  EXPECT_EQ(b.AddCompactDateElement("C", 39879.75), XMLBuilder::kDone);
  EXPECT_EQ(b.AddDateTimeElement("Out", 2958466.0), XMLBuilder::kValueNotSet);
  EXPECT_EQ(b.AddCompactDateElement("Out", -657435.0), XMLBuilder::kValueNotSet);
  EXPECT_EQ(Text(b), "<D0>18991230</D0>\n<Noon>20090307T120000+0000</Noon>\n<C>20090307</C>\n");
}

// The builder prepares the amount for text, reads it with the separator as a point, and releases
// the reference it was given whatever happens; a failing host call comes back as it came.
TEST_F(XMLBuilderTest, HostAmounts) {
  const struct {
    const char* hostText;
    bool omitIfEmpty;
    HRESULT prepareResult;
    HRESULT textResult;
    uint32_t result;
    const char* written;
  } cases[] = {
      {"12,50", false, S_OK, S_OK, XMLBuilder::kDone, "<A>12.50</A>\n"},
      {"1250", false, S_OK, S_OK, XMLBuilder::kDone, "<A>1250</A>\n"},
      {"-3.25", false, S_OK, S_OK, XMLBuilder::kDone, "<A>-3.25</A>\n"},
      {"5", false, S_OK, S_OK, XMLBuilder::kDone, "<A>5</A>\n"},
      {"", true, S_OK, S_OK, XMLBuilder::kOptionalEmpty, ""},
      {"", false, S_OK, S_OK, XMLBuilder::kDone, "<A></A>\n"},
      {"1.00", false, E_OUTOFMEMORY, S_OK, uint32_t(E_OUTOFMEMORY), ""},
      {"1.00", false, S_OK, E_OUTOFMEMORY, uint32_t(E_OUTOFMEMORY), ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.hostText);
    XMLBuilder b;
    auto* amount = new FakeAmount(c.hostText);
    amount->prepareResult = c.prepareResult;
    amount->textResult = c.textResult;
    amount->AddRef();  // ours
    amount->AddRef();  // the one handed to the builder
    EXPECT_EQ(b.AddHostAmountElement("A", amount, c.omitIfEmpty), c.result);
    EXPECT_EQ(Text(b), c.written);
    if (SUCCEEDED(c.prepareResult)) {
      EXPECT_EQ(amount->prepareMode, -1);
    }
    EXPECT_EQ(amount->References(), 1u);
    amount->Release();
  }
}

// Only the non-empty fields are written, the lines numbered by their place; an address without
// any writes nothing at all.
TEST_F(XMLBuilderTest, Addresses) {
  FakeAddress address;
  address.lines[1] = "Suite 5 & Co";
  address.city = "Reno";
  XMLBuilder b;
  EXPECT_EQ(b.AddAddressElement("BillAddress", &address), XMLBuilder::kDone);
  EXPECT_EQ(Text(b), "<BillAddress>\n<Addr2>Suite 5 &amp; Co</Addr2>\n<City>Reno</City>\n</BillAddress>\n");

  FakeAddress full;
  full.lines = {"1", "2", "3", "4"};
  full.city = "C";
  full.state = "S";
  full.postalCode = "P";
  full.country = "K";
  full.note = "N";
  XMLBuilder all;
  all.AddAddressElement("A", &full);
  EXPECT_EQ(Text(all),
            "<A>\n<Addr1>1</Addr1>\n<Addr2>2</Addr2>\n<Addr3>3</Addr3>\n<Addr4>4</Addr4>\n<City>C</City>\n"
            "<State>S</State>\n<PostalCode>P</PostalCode>\n<Country>K</Country>\n<Note>N</Note>\n</A>\n");

  FakeAddress empty;
  XMLBuilder none;
  EXPECT_EQ(none.AddAddressElement("A", &empty), XMLBuilder::kOptionalEmpty);
  EXPECT_EQ(Text(none), "");
  EXPECT_EQ(none.Depth(), 0u);
}

TEST_F(XMLBuilderTest, AddressFailuresRaiseComErrors) {
  FakeAddress failing;
  failing.city = "X";
  failing.failingField = 5;  // the state
  const struct { IAddress* address; HRESULT error; IID source; } cases[] = {
      {nullptr, E_POINTER, GUID_NULL}, {&failing, E_FAIL, IidOf<IAddress>()}};
  XMLBuilder b;
  for (const auto& c : cases) {
    try {
      b.AddAddressElement("A", c.address);
      ADD_FAILURE() << "expected a COM error";
    } catch (const ComError& e) {
      EXPECT_EQ(e.Error(), c.error);
      EXPECT_TRUE(IsEqualGUID(e.Source(), c.source));
    }
  }
  EXPECT_EQ(Text(b), "");
}

TEST_F(XMLBuilderTest, BstrOfTheWholeBuffer) {
  XMLBuilder empty;
  BSTR out = reinterpret_cast<BSTR>(1);
  EXPECT_EQ(empty.GetXMLAsBSTR(&out), S_OK);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(empty.GetXMLAsBSTR(nullptr), E_POINTER);

  XMLBuilder b;
  b.AppendRaw("<A>\x80</A>");
  ASSERT_EQ(b.GetXMLAsBSTR(&out), S_OK);
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(SysStringLen(out), 8u);
  EXPECT_EQ(out[3], 0x20AC);  // the euro sign of the code page
  SysFreeString(out);
}

TEST_F(XMLBuilderTest, WritesAndDumpsTheBuffer) {
  ScratchFolder temp;
  std::string folder = temp.Path();
  folder.pop_back();  // no trailing separator: the builder adds one
  ScopedEnv tempEnv("TEMP", folder.c_str());
  XMLBuilder b;
  b.AddElement("A", OLAString("1"));
  b.DumpToTempFile();
  EXPECT_EQ(parcelon::test::ReadFile(temp.File("dump.xml")), "<A>1</A>\n");
  b.WriteToFile(OLAString(temp.File("copy.xml").c_str()));
  EXPECT_EQ(parcelon::test::ReadFile(temp.File("copy.xml")), "<A>1</A>\n");
  EXPECT_EQ(b.WriteToFile(OLAString(temp.File("missing/dir/x.xml").c_str())), XMLBuilder::kDone);
}

TEST_F(XMLBuilderTest, LongValuesAreEscapedWhole) {
  // A value made only of ampersands grows fivefold; nothing is cut at the string limit.
  const std::string value(OLAString::kMaxChars, '&');
  XMLBuilder b;
  b.AddElement("V", OLAString(value.c_str()));
  EXPECT_EQ(Text(b).size(), 3 + 5 * value.size() + 5);
}

}  // namespace

namespace {

// An element operation writing one line (or, for an address, a few) named `text`, or writing
// `text` where the operation has no name.
struct Operation {
  const char* name;
  std::function<uint32_t(XMLBuilder&, const OLAString& text)> write;
};

std::vector<Operation> EveryElementOperation() {
  const OLAString attributes[] = {"version", "1", ""};
  return {
      {"AddElement", [](XMLBuilder& b, const OLAString& n) { return b.AddElement(n, OLAString("v")); }},
      {"AddElement(BSTR)", [](XMLBuilder& b, const OLAString& n) { return b.AddElement(n, MakeBstr("v").Get()); }},
      {"AddCDataElement", [](XMLBuilder& b, const OLAString& n) { return b.AddCDataElement(n, OLAString("v")); }},
      {"AddCDataElement(BSTR)",
       [](XMLBuilder& b, const OLAString& n) { return b.AddCDataElement(n, MakeBstr("v").Get()); }},
      {"OpenAggregate", [](XMLBuilder& b, const OLAString& n) { return b.OpenAggregate(n); }},
      {"OpenAggregateWithAttributes",
       [attributes](XMLBuilder& b, const OLAString& n) { return b.OpenAggregateWithAttributes(n, attributes); }},
      {"CloseAggregate", [](XMLBuilder& b, const OLAString& n) { return b.CloseAggregate(n); }},
      {"AddStartTag", [](XMLBuilder& b, const OLAString& n) { return b.AddStartTag(n); }},
      {"AddNotDoneElement", [](XMLBuilder& b, const OLAString& n) { return b.AddNotDoneElement(n); }},
      {"AddIntElement", [](XMLBuilder& b, const OLAString& n) { return b.AddIntElement(n, -12); }},
      {"AddLongElement", [](XMLBuilder& b, const OLAString& n) { return b.AddLongElement(n, 12); }},
      {"AddFixedElement", [](XMLBuilder& b, const OLAString& n) { return b.AddFixedElement(n, 1.5, 2); }},
      {"AddDoubleElement", [](XMLBuilder& b, const OLAString& n) { return b.AddDoubleElement(n, 0.25); }},
      {"AddAmountElement", [](XMLBuilder& b, const OLAString& n) { return b.AddAmountElement(n, OLAAmount(3, 10)); }},
      {"AddPrecisionElement",
       [](XMLBuilder& b, const OLAString& n) { return b.AddPrecisionElement(n, OLAPrecisionInteger(7, 1)); }},
      {"AddPrecisionElement2",
       [](XMLBuilder& b, const OLAString& n) { return b.AddPrecisionElement2(n, OLAPrecisionInteger(7, 1)); }},
      {"AddDateTimeElement", [](XMLBuilder& b, const OLAString& n) { return b.AddDateTimeElement(n, 39879.5); }},
      {"AddZonedDateTimeElement",
       [](XMLBuilder& b, const OLAString& n) { return b.AddZonedDateTimeElement(n, 39879.5); }},
      {"AddCompactDateElement", [](XMLBuilder& b, const OLAString& n) { return b.AddCompactDateElement(n, 39879.5); }},
      {"AddBoolElement", [](XMLBuilder& b, const OLAString& n) { return b.AddBoolElement(n, VARIANT_TRUE); }},
      {"AddHostAmountElement",
       [](XMLBuilder& b, const OLAString& n) {
         auto* amount = new FakeAmount("1,25");
         amount->AddRef();
         return b.AddHostAmountElement(n, amount, false);
       }},
      {"AddAddressElement",
       [](XMLBuilder& b, const OLAString& n) {
         FakeAddress address;
         address.city = "Reno";
         return b.AddAddressElement(n, &address);
       }},
      {"AddNameValueComment",
       [](XMLBuilder& b, const OLAString& n) { return b.AddNameValueComment(n, OLAString("v")); }},
      {"AddComment", [](XMLBuilder& b, const OLAString& n) { return b.AddComment(n); }},
      {"AddHeaderLine", [](XMLBuilder& b, const OLAString& n) { return b.AddHeaderLine(n, OLAString("v")); }},
      {"AppendText", [](XMLBuilder& b, const OLAString& n) { return b.AppendText(n, true, true); }},
      {"AppendRaw", [](XMLBuilder& b, const OLAString& n) { return b.AppendRaw(n.GetText()); }},
      {"AppendNewlines",
       [](XMLBuilder& b, const OLAString& n) { return b.AppendNewlines(int16_t(n.GetLength())); }},
  };
}

// Every operation, writing text that ends one byte before the buffer's end, exactly at it and one
// byte past it: the text is whole, and (under AddressSanitizer) nothing is written past the block.
TEST_F(XMLBuilderTest, ElementsEndingAtTheCapacityStayInsideTheBuffer) {
  ScopedEnv tz("TZ", "UTC");
  constexpr uint64_t kCapacity = 96;
  for (const bool indent : {false, true}) {
    SetIndent(indent);
    for (const Operation& op : EveryElementOperation()) {
      for (const uint64_t end : {kCapacity - 1, kCapacity, kCapacity + 1}) {
        SCOPED_TRACE(std::string(op.name) + " ending at " + std::to_string(end) + (indent ? ", indented" : ""));
        // The line as a roomy builder writes it, after as much padding as makes it end at `end`.
        const OLAString name("Name");
        XMLBuilder roomy(1, 4096);
        op.write(roomy, name);
        const std::string line = Text(roomy);
        ASSERT_LT(line.size(), kCapacity - 1);
        const std::string padding(end - line.size(), 'p');
        XMLBuilder b(1, kCapacity);
        ASSERT_EQ(b.AppendRaw(padding.c_str()), XMLBuilder::kDone);
        EXPECT_EQ(op.write(b, name), XMLBuilder::kDone);
        EXPECT_EQ(Text(b), padding + line);
        EXPECT_EQ(b.Status(), S_OK);
      }
    }
  }
}

// A "]]>" inside a CDATA value is split between two sections, so the document stays well formed
// and reads back as the value.
TEST_F(XMLBuilderTest, CDataSplitsTheSectionEnd) {
  const struct { const char* value; const char* written; } cases[] = {
      {"a]]>b", "<![CDATA[a]]]]><![CDATA[>b]]>"},
      {"]]>", "<![CDATA[]]]]><![CDATA[>]]>"},
      {"x]]>y]]>z", "<![CDATA[x]]]]><![CDATA[>y]]]]><![CDATA[>z]]>"},
      {"]]]>>", "<![CDATA[]]]]]><![CDATA[>>]]>"},
      {"]] >", "<![CDATA[]] >]]>"},
      {"", "<![CDATA[]]>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    XMLBuilder b(0, 16);
    EXPECT_EQ(b.AddCDataElement("C", OLAString(c.value)), XMLBuilder::kDone);
    EXPECT_EQ(Text(b), std::string("<C>") + c.written + "</C>\n");
#ifndef _WIN32
    const std::string document = Text(b);
    xmlDocPtr doc = xmlReadMemory(document.data(), int(document.size()), nullptr, nullptr, XML_PARSE_NONET);
    ASSERT_NE(doc, nullptr);
    xmlChar* content = xmlNodeGetContent(xmlDocGetRootElement(doc));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(content)), c.value);
    xmlFree(content);
    xmlFreeDoc(doc);
#endif
  }
}

// After its first failed write the builder writes nothing more, says so from every operation, and
// hands out no text; Clear starts a new document in the memory it kept.
TEST_F(XMLBuilderTest, AFailedWriteIsRemembered) {
  XMLBuilder b(0, 32);
  ASSERT_EQ(b.AddElement("A", OLAString("1")), XMLBuilder::kDone);
  OLABuffer::FailAllocation(1);
  EXPECT_EQ(b.AddElement("Long", OLAString(std::string(40, 'x').c_str())), XMLBuilder::kNoBuffer);
  OLABuffer::FailAllocation(0);
  EXPECT_EQ(b.Status(), E_OUTOFMEMORY);
  // Later writes would fit, or could grow again: none is made.
  FakeAddress address;
  address.city = "Reno";
  auto* amount = new FakeAmount("1.00");
  amount->AddRef();
  amount->AddRef();
  const uint32_t results[] = {
      b.AddElement("B", OLAString("2")), b.CloseAggregate("C"),
      b.AppendRaw(std::string(100, 'r').c_str()), b.AddHostAmountElement("H", amount, true),
      b.AddAddressElement("Addr", &address), b.AddAmountElement("M", OLAAmount()),
      b.AddDateTimeElement("D", 1e9), b.AddCDataElement("E", OLAString("e")),
  };
  for (const uint32_t result : results) EXPECT_EQ(result, XMLBuilder::kNoBuffer);
  EXPECT_EQ(amount->References(), 1u) << "the amount is released all the same";
  amount->Release();
  EXPECT_EQ(Text(b), "<A>1</A>\n");
  BSTR out = reinterpret_cast<BSTR>(1);
  EXPECT_EQ(b.GetXMLAsBSTR(&out), E_OUTOFMEMORY);
  EXPECT_EQ(out, nullptr);

  const char* block = b.Buffer()->GetData();
  b.Clear(0);
  EXPECT_EQ(b.Status(), S_OK);
  EXPECT_EQ(b.AddElement("Z", OLAString("9")), XMLBuilder::kDone);
  EXPECT_EQ(Text(b), "<Z>9</Z>\n");
  EXPECT_EQ(b.Buffer()->GetData(), block) << "the memory is kept";
}

TEST_F(XMLBuilderTest, ABuilderWithoutBufferFailsFromTheStart) {
  OLABuffer::FailAllocation(1);
  XMLBuilder b(0, 64);
  OLABuffer::FailAllocation(0);
  EXPECT_EQ(b.Buffer(), nullptr);
  EXPECT_EQ(b.Status(), E_OUTOFMEMORY);
  EXPECT_EQ(b.OpenAggregate("A"), XMLBuilder::kNoBuffer);
  EXPECT_EQ(b.Depth(), 1u) << "the open and close operations still count the depth";
  EXPECT_EQ(b.AddBoolElement("B", VARIANT_TRUE), XMLBuilder::kNoBuffer);
  BSTR out = reinterpret_cast<BSTR>(1);
  EXPECT_EQ(b.GetXMLAsBSTR(&out), E_OUTOFMEMORY);
  EXPECT_EQ(out, nullptr);
  // A new start allocates again.
  b.Clear(0);
  EXPECT_EQ(b.AddBoolElement("B", VARIANT_TRUE), XMLBuilder::kDone);
  EXPECT_EQ(Text(b), "<B>Y</B>\n");
}

// A builder cleared and written again gives the same text as a new one, in the same block.
TEST_F(XMLBuilderTest, ClearedBuilderRewritesInPlace) {
  const auto write = [](XMLBuilder& b, int rows) {
    b.OpenAggregate("L");
    for (int i = 0; i < rows; ++i) b.AddIntElement("I", i);
    b.CloseAggregate("L");
  };
  XMLBuilder reused(0, 64);
  write(reused, 1000);
  const char* block = reused.Buffer()->GetData();
  const uint64_t capacity = reused.Buffer()->GetCapacity();
  reused.Clear(0);
  write(reused, 10);
  XMLBuilder fresh(0, 64);
  write(fresh, 10);
  EXPECT_EQ(Text(reused), Text(fresh));
  EXPECT_EQ(reused.Buffer()->GetData(), block);
  EXPECT_EQ(reused.Buffer()->GetCapacity(), capacity);
}

}  // namespace
