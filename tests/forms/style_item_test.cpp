// The template style aggregate against the reference host: the sample company's two templates
// whole, one fault table over every read, and host values the fixture cannot give.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "forms/FormParts.h"
#include "forms/FormsTestHost.h"
#include "forms/StyleItem.h"
#include "tools/TemplateStyle.h"

namespace parcelon::test {
namespace {

// Style 1: one field, one column and a tax-flag column of its own, each area with its own font
// so that every block of the text is told apart. Style 2: a table with the tax-flag column only.
constexpr char kTemplates[] = R"({"styles": [
  {"recNum": 1, "fullName": "Faults", "type": "invoice",
   "fields": [{"id": "date",
               "label": {"label": "Date", "height": 14, "font": {"name": "LabelFont"}},
               "data": {"height": 15, "font": {"name": "DataFont"}}}],
   "table": {"width": 500,
             "columns": [{"id": "item",
                          "label": {"label": "Item", "horzTextAlign": "center", "font": {"name": "HeadFont"}},
                          "data": {"width": 90, "font": {"name": "CellFont"}}}],
             "taxFlag": {"data": {"width": 20}}}},
  {"recNum": 2, "fullName": "Flag only", "table": {"taxFlag": {}}}
]})";

const std::string kItem = "Parcelon:CStyleItemBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL): ";
const std::string kField = "Parcelon:CStyleFieldBuilder::BuildXML(XMLBuilder&): ";
const std::string kFieldLabel = "Parcelon:CStyleFieldLabelBuilder::BuildXML(XMLBuilder&): ";
const std::string kFieldData = "Parcelon:CStyleFieldDataBuilder::BuildXML(XMLBuilder&): ";
const std::string kTable = "Parcelon:CStyleTableBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL): ";
const std::string kColumn = "Parcelon:CStyleColumnBuilder::BuildXML(XMLBuilder&, long&): ";
const std::string kColumnLabel = "Parcelon:CStyleColumnLabelBuilder::BuildXML(XMLBuilder&): ";
const std::string kColumnData = "Parcelon:CStyleColumnDataBuilder::BuildXML(XMLBuilder&): ";
const std::string kFont = "Parcelon:CStyleFontBuilder::BuildXML(XMLBuilder&): ";

// Where a failed read sits: its builder's prefix and the messages of the builders above it, from
// the innermost out.
struct Level {
  std::string prefix;
  std::vector<std::pair<std::string, std::string>> parents;
};

const std::pair<std::string, std::string> kBuildField = {kItem, "Failed to build style field aggregate XML."};
const std::pair<std::string, std::string> kBuildTable = {kItem, "Failed to build style table aggregate XML."};
const std::pair<std::string, std::string> kBuildColumn = {kTable, "Failed to build style column aggregate XML."};

const Level kAtItem = {kItem, {}};
const Level kAtField = {kField, {kBuildField}};
const Level kAtFieldLabel = {kFieldLabel, {{kField, "Failed to build style field label aggregate XML."}, kBuildField}};
const Level kAtFieldData = {kFieldData, {{kField, "Failed to build style field data aggregate XML."}, kBuildField}};
const Level kAtLabelFont = {kFont,
                            {{kFieldLabel, "Failed to build style font aggregate XML for style field label."},
                             {kField, "Failed to build style field label aggregate XML."},
                             kBuildField}};
const Level kAtTable = {kTable, {kBuildTable}};
const Level kAtColumn = {kColumn, {kBuildColumn, kBuildTable}};
const Level kAtColumnLabel = {
    kColumnLabel, {{kColumn, "Failed to build style column label aggregate XML."}, kBuildColumn, kBuildTable}};
const Level kAtColumnData = {
    kColumnData, {{kColumn, "Failed to build style column data aggregate XML."}, kBuildColumn, kBuildTable}};

// A required read: the fault fails the whole aggregate with the log lines of its level.
struct RequiredRead {
  const char* operation;
  const Level& level;
  const char* message;
  LONG style = 1;
};

const RequiredRead kRequiredReads[] = {
    {"IStyle::GetType", kAtItem, "Failed to get type from style in LX."},
    {"IStyle::GetRecNum", kAtItem, "Failed to get record number from style in LX."},
    {"IStyle::GetFullName", kAtItem, "Failed to get full name from style in LX."},
    {"IStyle::GetPredefined", kAtItem, "Failed to get predefined from style in LX."},
    {"IStyle::GetWidth", kAtItem, "Failed to get width from style in LX."},
    {"IStyle::GetHeight", kAtItem, "Failed to get height from style in LX."},
    {"IStyle::GetLeftMargin", kAtItem, "Failed to get left margin from style in LX."},
    {"IStyle::GetRightMargin", kAtItem, "Failed to get right margin from style in LX."},
    {"IStyle::GetTopMargin", kAtItem, "Failed to get top margin from style in LX."},
    {"IStyle::GetBottomMargin", kAtItem, "Failed to get bottom margin from style in LX."},
    {"IStyle::GetFields", kAtItem, "Failed to get fields from style in LX."},
    {"IStyleFields::GetCount", kAtItem, "Failed to get count from style fields list in LX."},
    {"IStyleFields::GetItem", kAtItem, "Failed to get item from style fields list in LX."},
    {"IStyle::GetTable", kAtItem, "Failed to get table from style in LX."},

    {"IStyleField::GetOnPrint", kAtField, "Failed to get on print from style field in LX."},
    {"IStyleField::GetID", kAtField, "Failed to get ID from style field in LX."},
    {"IStyleField::GetOnScreen", kAtField, "Failed to get on screen from style field in LX."},
    {"IStyleField::GetUsesLabel", kAtField, "Failed to get uses label from style field in LX."},
    {"IStyleField::GetUsesData", kAtField, "Failed to get uses data from style field in LX."},
    {"IStyleField::GetLabel", kAtField, "Failed to get label from style field in LX."},
    {"IStyleField::GetData", kAtField, "Failed to get data from style field in LX."},

    {"IStyleFieldLabel::GetLabel", kAtFieldLabel, "Failed to get label from style field label in LX."},
    {"IStyleFieldLabel::GetHorzTextAlign", kAtFieldLabel,
     "Failed to get horizontal text alignment from style field label in LX."},
    {"IStyleFieldLabel::GetVertTextAlign", kAtFieldLabel,
     "Failed to get vertical text alignment from style field label in LX."},
    {"IStyleFieldLabel::GetPagesPrintedOn", kAtFieldLabel, "Failed to get pages printed on from style field label in LX."},
    {"IStyleFieldLabel::GetBorder", kAtFieldLabel, "Failed to get border from style field label in LX."},
    {"IStyleFieldLabel::GetX", kAtFieldLabel, "Failed to get x coordinate from style field label in LX."},
    {"IStyleFieldLabel::GetY", kAtFieldLabel, "Failed to get y coordinate from style field label in LX."},
    {"IStyleFieldLabel::GetWidth", kAtFieldLabel, "Failed to get width from style field label in LX."},
    {"IStyleFieldLabel::GetHeight", kAtFieldLabel, "Failed to get height from style field label in LX."},
    {"IStyleFieldLabel::GetUsesAscent", kAtFieldLabel, "Failed to get uses ascent from style field label in LX."},

    {"IStyleFont::GetName", kAtLabelFont, "Failed to get name from style font in LX."},
    {"IStyleFont::GetSize", kAtLabelFont, "Failed to get size from style font in LX."},
    {"IStyleFont::GetColor", kAtLabelFont, "Failed to get color from style font in LX."},
    {"IStyleFont::GetBold", kAtLabelFont, "Failed to get bold from style font in LX."},
    {"IStyleFont::GetItalic", kAtLabelFont, "Failed to get italic from style font in LX."},
    {"IStyleFont::GetUnderline", kAtLabelFont, "Failed to get underline from style font in LX."},
    {"IStyleFont::GetStrikeThrough", kAtLabelFont, "Failed to get strike through from style font in LX."},

    {"IStyleFieldData::GetDataType", kAtFieldData, "Failed to get data type from style field data in LX."},
    {"IStyleFieldData::GetHorzTextAlign", kAtFieldData,
     "Failed to get horizontal text alignment from style field data in LX."},
    {"IStyleFieldData::GetVertTextAlign", kAtFieldData, "Failed to get vertical text alignment from style field data in LX."},
    {"IStyleFieldData::GetPagesPrintedOn", kAtFieldData, "Failed to get pages printed on from style field data in LX."},
    {"IStyleFieldData::GetBorder", kAtFieldData, "Failed to get border from style field data in LX."},
    {"IStyleFieldData::GetX", kAtFieldData, "Failed to get x coordinate from style field data in LX.."},
    {"IStyleFieldData::GetY", kAtFieldData, "Failed to get y coordinate from style field data in LX.."},
    {"IStyleFieldData::GetWidth", kAtFieldData, "Failed to get width from style field data in LX."},
    {"IStyleFieldData::GetHeight", kAtFieldData, "Failed to get height from style field data in LX."},
    {"IStyleFieldData::GetMultiLine", kAtFieldData, "Failed to get multi line from style field data in LX."},
    {"IStyleFieldData::GetUsesAscent", kAtFieldData, "Failed to get uses ascent from style field data in LX."},
    {"IStyleFieldData::GetPrecision", kAtFieldData, "Failed to get precision from style field data in LX."},
    {"IStyleFieldData::GetShowCurrency", kAtFieldData, "Failed to get show currency from style field data in LX."},
    {"IStyleFieldData::GetShowZeroAmts", kAtFieldData, "Failed to get show zero amounts from style field data in LX."},
    {"IStyleFieldData::GetTaxable", kAtFieldData, "Failed to get taxable from style field data in LX."},

    {"IStyleTable::GetWidth", kAtTable, "Failed to get width from style table in LX."},
    {"IStyleTable::GetHeight", kAtTable, "Failed to get height from style table in LX."},
    {"IStyleTable::GetLabelHeight", kAtTable, "Failed to get label height from style table in LX."},
    {"IStyleTable::GetColumns", kAtTable, "Failed to get columns from style table in LX."},
    {"IStyleColumns::GetCount", kAtTable, "Failed to get count from style columns list in LX."},
    {"IStyleColumns::GetItem", kAtTable, "Failed to get item from style columns list in LX."},
    // The table reads a column's on-print flag before the column does ...
    {"IStyleColumn::GetOnPrint", kAtTable, "Failed to get on print from style column in LX."},
    // ... so only the tax-flag column, which the table does not read, fails in the column.
    {"IStyleColumn::GetOnPrint", kAtColumn, "Failed to get on print from style column in LX.", 2},

    {"IStyleColumn::GetID", kAtColumn, "Failed to get ID from style column in LX."},
    {"IStyleColumn::GetOnScreen", kAtColumn, "Failed to get on screen from style column in LX."},
    {"IStyleColumn::GetUsesLabel", kAtColumn, "Failed to get uses label from style column in LX."},
    {"IStyleColumn::GetUsesData", kAtColumn, "Failed to get uses data from style column in LX."},
    {"IStyleColumn::GetOrder", kAtColumn, "Failed to get order from style column in LX."},
    {"IStyleColumn::GetLabel", kAtColumn, "Failed to get label from style column in LX."},
    {"IStyleColumn::GetData", kAtColumn, "Failed to get data from style column in LX."},
    {"IStyleColumnLabel::GetWidth", kAtColumn, "Failed to get width from style column label in LX."},
    {"IStyleColumnData::GetWidth", kAtColumn, "Failed to get width from style column data in LX."},

    {"IStyleColumnLabel::GetLabel", kAtColumnLabel, "Failed to get label from style column label in LX."},
    {"IStyleColumnLabel::GetHorzTextAlign", kAtColumnLabel,
     "Failed to get horizontal text alignment from style column label in LX."},
    {"IStyleColumnLabel::GetVertTextAlign", kAtColumnLabel,
     "Failed to get vertical text alignment from style column label in LX."},
    {"IStyleColumnLabel::GetPagesPrintedOn", kAtColumnLabel,
     "Failed to get pages printed on from style column label in LX."},
    {"IStyleColumnLabel::GetBorder", kAtColumnLabel, "Failed to get border from style column label in LX."},
    {"IStyleColumnLabel::GetUsesAscent", kAtColumnLabel, "Failed to get uses ascent from style column label in LX."},

    {"IStyleColumnData::GetDataType", kAtColumnData, "Failed to get data type from style column data in LX."},
    {"IStyleColumnData::GetHorzTextAlign", kAtColumnData,
     "Failed to get horizontal text alignment from style column data in LX."},
    {"IStyleColumnData::GetVertTextAlign", kAtColumnData,
     "Failed to get vertical text alignment from style column data in LX."},
    {"IStyleColumnData::GetPagesPrintedOn", kAtColumnData, "Failed to get pages printed on from style column data in LX."},
    {"IStyleColumnData::GetBorder", kAtColumnData, "Failed to get border from style column data in LX."},
    {"IStyleColumnData::GetMultiLine", kAtColumnData, "Failed to get multi line from style column data in LX."},
    {"IStyleColumnData::GetUsesAscent", kAtColumnData, "Failed to get uses ascent from style column data in LX."},
    {"IStyleColumnData::GetPrecision", kAtColumnData, "Failed to get precision from style column data in LX."},
    {"IStyleColumnData::GetShowCurrency", kAtColumnData, "Failed to get show currency from style column data in LX."},
    {"IStyleColumnData::GetShowZeroAmts", kAtColumnData,
     "Failed to get show zero amounts from style column data in LX."},
    {"IStyleColumnData::GetTaxable", kAtColumnData, "Failed to get taxable from style column data in LX."},
};

// The font block of the font named `name` in style 1.
std::string FontBlock(const std::string& name) {
  return "<StyleFont>\n<Name>" + name +
         "</Name>\n<PtSize>10</PtSize>\n<RGBColor>0</RGBColor>\n<Bold>N</Bold>\n<Italic>N</Italic>\n"
         "<UnderLine>N</UnderLine>\n<StrikeThrough>N</StrikeThrough>\n</StyleFont>\n";
}

// The fixed tax-flag column of a table whose host keeps none.
std::string FixedTaxFlagColumn(const std::string& order, const std::string& width) {
  return "<StyleColumn id=\"StyleTaxFlag\">\n<OnScreen>Y</OnScreen>\n<OnPrint>Y</OnPrint>\n<UsesLabel>N</UsesLabel>\n"
         "<UsesData>Y</UsesData>\n<Order>" + order + "</Order>\n<Width>" + width + "</Width>\n"
         "<StyleColumnData type=\"String\">\n"
         "<StyleColumnInfo horzTextAlign=\"Center\" vertTextAlign=\"Top\" pagesPrintedOn=\"All\" border=\"None\">\n"
         "<MultiLine>N</MultiLine>\n<UsesAscent>N</UsesAscent>\n" +
         FontBlock("Arial") + "</StyleColumnInfo>\n</StyleColumnData>\n</StyleColumn>\n";
}

constexpr HRESULT kFault = E_ACCESSDENIED;

// An optional read: the fault logs `log` and the text misses what `edits` take out.
struct OptionalRead {
  const char* operation;
  std::vector<std::string> log;
  std::vector<std::pair<std::string, std::string>> edits;
};

std::string Skipped(const std::string& prefix, const std::string& message) {
  return Entry(prefix, message + kSkipping, HexCode(kFault));
}

const std::string kAscent = "<UsesAscent>N</UsesAscent>\n";

// Style 1's own tax-flag column.
const std::string kHostTaxFlagColumn =
    "<StyleColumn id=\"StyleTaxFlag\">\n<OnScreen>Y</OnScreen>\n<OnPrint>Y</OnPrint>\n<UsesLabel>Y</UsesLabel>\n"
    "<UsesData>Y</UsesData>\n<Order>1</Order>\n<Width>20</Width>\n<StyleColumnData type=\"String\">\n"
    "<StyleColumnInfo horzTextAlign=\"Left\" vertTextAlign=\"Top\" pagesPrintedOn=\"All\" border=\"None\">\n"
    "<MultiLine>N</MultiLine>\n" +
    kAscent + FontBlock("Arial") + "</StyleColumnInfo>\n</StyleColumnData>\n</StyleColumn>\n";

const std::vector<OptionalRead> kOptionalReads = {
    {"IStyleFieldLabel::GetMultiLine",
     {Skipped(kFieldLabel, "Failed to get multi line from style field label in LX.")},
     {{"<MultiLine>N</MultiLine>\n" + kAscent + FontBlock("LabelFont"), kAscent + FontBlock("LabelFont")}}},
    {"IStyleFieldLabel::GetFont",
     {Skipped(kFieldLabel, "Failed to get font from style field label in LX.")},
     {{FontBlock("LabelFont"), ""}}},
    {"IStyleFieldData::GetFont",
     {Skipped(kFieldData, "Failed to get font from style field data in LX.")},
     {{FontBlock("DataFont"), ""}}},
    {"IStyleColumnLabel::GetMultiLine",
     {Skipped(kColumnLabel, "Failed to get multi line from style column label in LX.")},
     {{"<MultiLine>N</MultiLine>\n" + kAscent + FontBlock("HeadFont"), kAscent + FontBlock("HeadFont")}}},
    {"IStyleColumnLabel::GetFont",
     {Skipped(kColumnLabel, "Failed to get font from style column label in LX.")},
     {{FontBlock("HeadFont"), ""}}},
    // The tax-flag column's data is a column's data too.
    {"IStyleColumnData::GetFont",
     {Skipped(kColumnData, "Failed to get font from style column data in LX."),
      Skipped(kColumnData, "Failed to get font from style column data in LX.")},
     {{FontBlock("CellFont"), ""}, {FontBlock("Arial"), ""}}},
    {"IStyleTable2::GetTaxFlagColumn",
     {Skipped(kTable, "Failed to get tax flag column from style table in LX.")},
     {{kHostTaxFlagColumn, ""}}},
};

class StyleItemTest : public FormsTest {
 protected:
  IStylePtr Style(LONG recNum) {
    ComPtr<ILists> lists;
    EXPECT_EQ(S_OK, CompanyFile()->GetLists(lists.ReleaseAndGetAddressOf()));
    IStylesPtr styles;
    EXPECT_EQ(S_OK, lists->GetStyles(styles.ReleaseAndGetAddressOf()));
    IStylePtr style;
    EXPECT_EQ(S_OK, styles->GetItemByRecNum(forms::RecNumKey(recNum), style.ReleaseAndGetAddressOf()));
    return style;
  }
  std::string Build(HRESULT expected, LONG recNum = 1, VARIANT_BOOL withTaxFlag = VARIANT_TRUE) {
    return Written(expected, [&](XMLBuilder& b) { return CStyleItemBuilder(Style(recNum).Get()).BuildXML(b, withTaxFlag); });
  }
  refhost::Style& StyleData(LONG recNum) { return *Host().GetCompany().Find<refhost::Style>(recNum); }
};

// The sample company's two templates, whole, through the parcelon tool's writer: the invoice's
// table has its own tax-flag column, the estimate's gets the fixed one.
TEST_F(StyleItemTest, SampleTemplatesAreWrittenWhole) {
  UseCompany(ReadFile(std::string(PARCELON_SOURCE_DIR) + "/samples/sample-company.json"));
  WriteSettings("NetworkAdapter.IndentXML=1\n");
  const struct {
    const char* name;
    const char* expected;
  } templates[] = {{"1", "invoice-template.txt"}, {"Harbor & Pine Estimate", "estimate-template.txt"}};
  for (const auto& t : templates) {
    SCOPED_TRACE(t.name);
    std::string text, error;
    EXPECT_EQ(S_OK, tools::WriteTemplateStyle(CompanyFile().Get(), t.name, true, text, error)) << error;
    EXPECT_EQ(ReadFile(std::string(PARCELON_SOURCE_DIR) + "/tests/forms/styles/" + t.expected), text);
  }
  std::string text, error;
  EXPECT_EQ(LX_E_NOTFOUND, tools::WriteTemplateStyle(CompanyFile().Get(), "Nope", true, text, error));
  EXPECT_EQ("no template \"Nope\" in the company", error);
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(StyleItemTest, EveryReadFailsAsRequiredOrSkipsAsOptional) {
  UseCompany(kTemplates);
  const std::string whole = Build(S_OK);
  for (const RequiredRead& read : kRequiredReads) {
    SCOPED_TRACE(read.operation);
    StartCase();
    ASSERT_TRUE(Faults().Fail(read.operation, kFault));
    Build(kFault, read.style);
    std::vector<std::string> log = {Entry(read.level.prefix, read.message, HexCode(kFault))};
    for (const auto& [prefix, message] : read.level.parents) log.push_back(Entry(prefix, message, HexCode(kFault)));
    EXPECT_EQ(log, LogEntries());
  }
  for (const OptionalRead& read : kOptionalReads) {
    SCOPED_TRACE(read.operation);
    StartCase();
    ASSERT_TRUE(Faults().Fail(read.operation, kFault));
    EXPECT_EQ(Edited(whole, read.edits), Build(S_OK));
    EXPECT_EQ(read.log, LogEntries());
  }
  // Without the table's second version the fixed column stands in for the host's: after the one
  // column, in the room its 90 leave of the table's 500.
  StartCase();
  ASSERT_TRUE(Faults().MakeUnavailable("IStyleTable2"));
  EXPECT_EQ(Edited(whole, {{kHostTaxFlagColumn, FixedTaxFlagColumn("1", "410")}}), Build(S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

// Host values the fixture refuses: negative and huge widths are written as they come, and the
// room the printed columns leave for the fixed tax-flag column is summed in 64 bits and held to
// 0 .. 2^31 - 1.
TEST_F(StyleItemTest, WidthsOutsideTheFixtureRangeDoNotOverflow) {
  UseCompany(R"({"styles": [{"recNum": 1, "fullName": "Wide", "type": 99,
      "fields": [{"id": 38}],
      "table": {"width": 100, "columns": [{"id": "item"}, {"id": "rate"}, {"id": "qty", "onPrint": false}]}}]})");
  refhost::Style& style = StyleData(1);
  style.width = -1;
  std::vector<refhost::StyleColumn>& columns = style.table.columns;
  const struct {
    LONG first, second, hidden;
    std::string firstWidth, taxFlagWidth;
  } cases[] = {
      {INT_MAX, INT_MAX, 5, "<Width>2147483647</Width>", "<Width>0</Width>"},
      {INT_MIN, INT_MIN, 5, "<Width>-2147483648</Width>", "<Width>2147483647</Width>"},
      {-30, 20, INT_MAX, "<Width>-30</Width>", "<Width>110</Width>"},
  };
  for (const auto& c : cases) {
    columns[0].label.width = columns[0].data.width = c.first;
    columns[1].data.width = c.second;
    columns[2].label.width = c.hidden;
    const std::string text = Build(S_OK);
    EXPECT_NE(std::string::npos, text.find("<StyleItem type=\"\">\n<ClientID>1</ClientID>\n<Name>Wide</Name>\n"
                                           "<Predefined>N</Predefined>\n<Width>-1</Width>\n"));
    EXPECT_NE(std::string::npos, text.find("<StyleField id=\"\">\n"));
    EXPECT_NE(std::string::npos, text.find("<StyleColumn id=\"StyleItem\">\n<OnScreen>Y</OnScreen>\n<OnPrint>Y</OnPrint>\n"
                                           "<UsesLabel>Y</UsesLabel>\n<UsesData>Y</UsesData>\n<Order>0</Order>\n" +
                                           c.firstWidth));
    EXPECT_NE(std::string::npos, text.find("<StyleColumn id=\"StyleTaxFlag\">\n<OnScreen>Y</OnScreen>\n"
                                           "<OnPrint>Y</OnPrint>\n<UsesLabel>N</UsesLabel>\n<UsesData>Y</UsesData>\n"
                                           "<Order>3</Order>\n" + c.taxFlagWidth))
        << c.firstWidth;
  }
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(StyleItemTest, EmptyTableHasTheFixedTaxFlagColumnOnlyOrNothing) {
  UseCompany(R"({"styles": [{"recNum": 1, "fullName": "Bare", "table": {"width": 640}}]})");
  const std::string head =
      "<StyleItem type=\"Invoice\">\n<ClientID>1</ClientID>\n<Name>Bare</Name>\n<Predefined>N</Predefined>\n"
      "<Width>0</Width>\n<Height>0</Height>\n<LeftMargin>0</LeftMargin>\n<RightMargin>0</RightMargin>\n"
      "<TopMargin>0</TopMargin>\n<BottomMargin>0</BottomMargin>\n<StyleTable>\n<Width>640</Width>\n"
      "<Height>0</Height>\n<LabelHeight>0</LabelHeight>\n<TableColumns>\n";
  const std::string tail = "</TableColumns>\n</StyleTable>\n</StyleItem>\n";
  EXPECT_EQ(head + FixedTaxFlagColumn("0", "640") + tail, Build(S_OK));
  EXPECT_EQ(head + tail, Build(S_OK, 1, VARIANT_FALSE));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(StyleItemTest, AThousandFieldsAreAllWritten) {
  std::string fields;
  for (int i = 0; i < 1000; ++i) fields += std::string(i ? "," : "") + "{\"id\": " + std::to_string(i % 87) + "}";
  UseCompany(R"({"styles": [{"recNum": 1, "fullName": "Busy", "fields": [)" + fields + "]}]}");
  const std::string text = Build(S_OK);
  size_t count = 0;
  for (size_t at = text.find("<StyleField id="); at != std::string::npos; at = text.find("<StyleField id=", at + 1)) ++count;
  EXPECT_EQ(1000u, count);
  EXPECT_NE(std::string::npos, text.find("<StyleField id=\"StylePrevInvoiceQtyStyleRefundedArt\">"));
  EXPECT_EQ("</StyleTable>\n</StyleItem>\n", text.substr(text.size() - 27));
}

TEST_F(StyleItemTest, MissingStyleRaisesPointerError) {
  XMLBuilder builder(0, 4096);
  EXPECT_EQ(E_POINTER, ErrorRaisedBy([&] { CStyleItemBuilder(nullptr).BuildXML(builder, VARIANT_TRUE); }));
  EXPECT_EQ(0u, builder.Buffer()->GetLength());
}

}  // namespace
}  // namespace parcelon::test
