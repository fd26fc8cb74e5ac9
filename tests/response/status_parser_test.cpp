// CStatusParser: the values it reads from whole documents and from elements, and every failure of
// the document it loads with its exact log lines (the document's members failed by a stand-in).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ResponseTestSupport.h"
#include "response/StatusParser.h"

namespace parcelon::test {
namespace {

const std::string kLoadPrefix = "Parcelon:CStatusParser::LoadXML(_bstr_t): ";
const std::string kParsePrefix = "Parcelon:CStatusParser::Parse(_bstr_t): ";

// Every value of a parser, one line each.
std::string Values(const CStatusParser& parser) {
  return "name=" + std::string(parser.GetElementName().GetText()) + "\ntrnUID=" + parser.GetTrnUID().GetText() +
         "\ncode=" + parser.GetStatusCode().GetText() + "\nseverity=" + parser.GetStatusSeverity().GetText() +
         "\nmessage=" + parser.GetStatusMessage().GetText() + "\nMessageID=" + parser.GetMessageID().GetText() +
         "\ntoken=" + parser.GetLastDataUploadToken().GetText() + "\n";
}

std::string ValuesOf(const std::string& name, const std::string& code = "", const std::string& messageID = "",
                     const std::string& token = "") {
  return "name=" + name + "\ntrnUID=\ncode=" + code + "\nseverity=\nmessage=\nMessageID=" + messageID +
         "\ntoken=" + token + "\n";
}

class StatusParserTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    UseCompany("{}");
  }
};

struct ParseCase {
  const char* name;
  std::string xml;
  std::string values;
};

TEST_F(StatusParserTest, ReadsTheStatusOfTheRootElement) {
  const std::vector<ParseCase> cases = {
      {"every value",
       "<AttachmentRs trnUID=\"0001-0002\" statusCode=\"0\" statusSeverity=\"INFO\" statusMessage=\"Success\">"
       "<MessageID>ATT-7</MessageID><LastDataUploadToken>TOK-1</LastDataUploadToken></AttachmentRs>",
       "name=AttachmentRs\ntrnUID=0001-0002\ncode=0\nseverity=INFO\nmessage=Success\nMessageID=ATT-7\ntoken=TOK-1\n"},
      {"no statusMessage", "<DataUploadRs statusCode=\"13109\"/>", ValuesOf("DataUploadRs", "13109")},
      {"names in another case are not taken",
       "<AttachmentRs StatusCode=\"0\"><messageid>a</messageid><MessageId>b</MessageId>"
       "<lastDataUploadToken>c</lastDataUploadToken></AttachmentRs>",
       ValuesOf("AttachmentRs")},
      {"text trimmed, whitespace and comments passed over",
       "<DataUploadRs statusCode=\" 0 \">\n  <!-- new token -->\n  <LastDataUploadToken>  T-2\n</LastDataUploadToken>\n"
       "</DataUploadRs>",
       ValuesOf("DataUploadRs", " 0 ", "", "T-2")},
      {"only direct children",
       "<AttachmentRs statusCode=\"0\"><Inner><MessageID>deep</MessageID></Inner></AttachmentRs>",
       ValuesOf("AttachmentRs", "0")},
      {"the last of two", "<AttachmentRs><MessageID>A</MessageID><MessageID>B</MessageID></AttachmentRs>",
       ValuesOf("AttachmentRs", "", "B")},
      {"the ANSI code page", "<AttachmentRs><MessageID>caf&#233;&#x20AC;&#x4E2D;</MessageID></AttachmentRs>",
       ValuesOf("AttachmentRs", "", "caf\xE9\x80?")},
  };
  for (const ParseCase& c : cases) {
    SCOPED_TRACE(c.name);
    StartCase();
    CStatusParser parser;
    EXPECT_EQ(S_OK, parser.Parse(MakeBstr(c.xml).Get()));
    EXPECT_EQ(c.values, Values(parser));
    EXPECT_EQ(std::vector<std::string>{}, LogEntries());
  }
}

TEST_F(StatusParserTest, ParseElementForgetsTheValuesBeforeAndClearEmptiesAll) {
  CStatusParser parser;
  ASSERT_EQ(S_OK, parser.Parse(MakeBstr("<AttachmentRs statusCode=\"0\"><MessageID>M</MessageID></AttachmentRs>").Get()));
  ASSERT_EQ(S_OK, parser.ParseElement(RootOf("<DataUploadRs statusSeverity=\"ERROR\"/>").Get()));
  EXPECT_EQ("name=DataUploadRs\ntrnUID=\ncode=\nseverity=ERROR\nmessage=\nMessageID=\ntoken=\n", Values(parser));
  IXMLDOMNodePtr element = parser.GetElement();
  ASSERT_TRUE(element);
  Bstr name;
  ASSERT_EQ(S_OK, element->get_nodeName(name.Out()));
  EXPECT_EQ("DataUploadRs", Take(name.Detach()));
  parser.Clear();
  EXPECT_EQ(ValuesOf(""), Values(parser));
  EXPECT_FALSE(parser.GetElement());
  EXPECT_EQ(E_POINTER, parser.ParseElement(nullptr));
}

// A value beyond OLAString's bound keeps its first 32766 characters; it is never taken for a
// valid identifier or token (response processing refuses 100 characters and more).
TEST_F(StatusParserTest, AValueBeyondTheStringBoundIsCut) {
  CStatusParser parser;
  const std::string token(40000, 'T');
  ASSERT_EQ(S_OK, parser.Parse(MakeBstr("<DataUploadRs><LastDataUploadToken>" + token +
                                        "</LastDataUploadToken></DataUploadRs>").Get()));
  EXPECT_EQ(OLAString::kMaxChars, parser.GetLastDataUploadToken().GetLength());
}

#ifndef _WIN32
// The reason is the libxml2 document's; MSXML words its own. The bad responses' table
// (bad_responses_test.cpp) has the other reasons.
TEST_F(StatusParserTest, ADocumentThatDoesNotLoadFailsWithItsReason) {
  CStatusParser parser;
  const HRESULT unclosed = HRESULT(0xC00CE04D);
  EXPECT_EQ(unclosed, parser.Parse(MakeBstr("<AttachmentRs statusCode=\"0\">").Get()));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kLoadPrefix, "XML load error: Premature end of data in tag AttachmentRs line 1", "0xc00ce04d"),
                Entry(kParsePrefix, "Failed to load XML.", "0xc00ce04d")}),
            LogEntries());
  EXPECT_EQ(ValuesOf(""), Values(parser));
}
#endif

// Each failing member of the document, with the log lines it leaves.
TEST_F(StatusParserTest, EveryFailureOfTheDocumentIsLogged) {
  const std::string xml = "<AttachmentRs statusCode=\"0\"/>";
  const std::string loadFailed = Entry(kParsePrefix, "Failed to load XML.");
  const struct {
    const char* member;
    HRESULT hr;
    std::vector<std::string> log;
  } cases[] = {
      {"put_async", E_FAIL, {Entry(kLoadPrefix, "Failed on put async on xml document."), loadFailed}},
      {"put_validateOnParse", E_FAIL, {Entry(kLoadPrefix, "Failed on put validateOnParse on xml document."), loadFailed}},
      {"loadXML", E_FAIL, {Entry(kLoadPrefix, "Failed to load status XML into XML dom document."), loadFailed}},
      {"get_parseError",
       E_FAIL,
       {Entry(kLoadPrefix, "Failed to get XML dom parse error.  Need this to tell whether a parse error occurred."),
        loadFailed}},
      {"get_documentElement",
       E_FAIL,
       {Entry(kParsePrefix, "Failed to instantiate the root node of the XML parse tree.")}},
      {"get_documentElement", S_FALSE, {Entry(kParsePrefix, "Missing document node of the XML parse tree.")}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.member);
    StartCase();
    const ScopedFaultyDocumentClass documents({{c.member, c.hr}});
    CStatusParser parser;
    EXPECT_EQ(E_FAIL, parser.Parse(MakeBstr(xml).Get()));
    EXPECT_EQ(c.log, LogEntries());
  }
}

TEST_F(StatusParserTest, AFailedLoadWithoutItsParseErrorIsLogged) {
  const ScopedFaultyDocumentClass documents({{"loadXML", S_FALSE}, {"get_parseError", E_ACCESSDENIED}});
  CStatusParser parser;
  EXPECT_EQ(E_ACCESSDENIED, parser.Parse(MakeBstr("<Rs/>").Get()));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kLoadPrefix, "Failed to load XML and failed to get XML dom parse error.", "0x80070005"),
                Entry(kParsePrefix, "Failed to load XML.", "0x80070005")}),
            LogEntries());
}

// A document that loads while its parse error has a code is taken, with the error logged.
TEST_F(StatusParserTest, ALoadedDocumentWithAParseErrorIsTaken) {
  IXMLDOMDocumentPtr failed;
  ASSERT_EQ(S_OK, CreateDomDocument(failed.ReleaseAndGetAddressOf()));
  VARIANT_BOOL loaded = VARIANT_TRUE;
  ASSERT_EQ(S_FALSE, failed->loadXML(MakeBstr("<a>").Get(), &loaded));
  const ScopedFaultyDocumentClass documents({}, failed);
  CStatusParser parser;
  EXPECT_EQ(S_OK, parser.Parse(MakeBstr("<AttachmentRs statusCode=\"0\"/>").Get()));
  EXPECT_EQ(ValuesOf("AttachmentRs", "0"), Values(parser));
  const std::vector<std::string> log = LogEntries();
  ASSERT_EQ(1u, log.size());
  EXPECT_EQ(0u, log[0].find(kLoadPrefix + "XML parse error: ")) << log[0];
}

TEST_F(StatusParserTest, AnElementThatCannotBeReadFailsTheParse) {
  const ScopedFaultyDocumentClass documents({{"get_nodeName", E_OUTOFMEMORY}});
  IXMLDOMDocumentPtr document;
  ASSERT_EQ(S_OK, CreateDomDocument(document.ReleaseAndGetAddressOf()));
  IXMLDOMNodePtr asNode;
  ASSERT_EQ(S_OK, document.As(asNode));
  CStatusParser parser;
  EXPECT_EQ(E_OUTOFMEMORY, parser.ParseElement(asNode.Get()));
}

}  // namespace
}  // namespace parcelon::test
