// Form templates through the host's interfaces: a style with fields and columns read back
// exactly, faults on one kind of area and one style, and bad style fixtures.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "CompanyTestSupport.h"

namespace parcelon::refhost::test {
namespace {

const char kFixture[] = R"json({
  "styles": [
    {"recNum": 1, "fullName": "Service Invoice — “Blue” & <Co>", "type": "invoice",
     "predefined": true, "width": 850, "height": 1100, "leftMargin": 25, "rightMargin": 26,
     "topMargin": 27, "bottomMargin": 28,
     "fields": [
       {"id": "date", "onPrint": false,
        "label": {"label": "Date", "x": 600, "y": 40, "horzTextAlign": "right",
                  "vertTextAlign": 129, "pagesPrintedOn": "last", "border": "fullbox",
                  "width": 80, "height": 12, "multiLine": true, "usesAscent": true,
                  "font": {"name": "Times New Roman", "size": 12, "color": 255, "bold": true,
                           "italic": true, "underline": true, "strikeThrough": true}},
        "data": {"x": 700, "y": 41, "dataType": "date", "precision": 0, "horzTextAlign": "left",
                 "vertTextAlign": "bottom", "border": 3, "pagesPrintedOn": 9, "width": 90,
                 "height": 13, "font": {"name": "Courier", "size": 9, "color": 16711680}}},
       {"id": 38, "onScreen": false, "usesLabel": false,
        "data": {"dataType": "balance", "showCurrency": true, "showZeroAmts": true,
                 "taxable": true, "multiLine": true}}
     ],
     "table": {"width": 800, "height": 500, "labelHeight": 20,
               "columns": [
                 {"id": "item", "label": {"label": "Item", "width": 100},
                  "data": {"width": 120}},
                 {"id": "rate", "order": 5, "usesData": false,
                  "label": {"label": "Rate", "horzTextAlign": "center", "border": "under"},
                  "data": {"dataType": "balance", "horzTextAlign": "decimal", "precision": 4}}
               ]}},
    {"recNum": 7, "fullName": "Plain", "type": 99,
     "fields": [{"id": "title", "label": {"label": "Invoice"}}]}
  ]
})json";

// A label or data area as every getter of IStyleTextArea and IStyleDataArea sees it.
struct AreaSeen {
  LONG horzAlign = 0, vertAlign = 0, pages = 0, border = 0, width = 0, height = 0;
  bool multiLine = false, usesAscent = false;
  std::string fontName;
  LONG fontSize = 0, fontColor = 0;
  bool fontBold = false, fontItalic = false, fontUnderline = false, fontStrikeThrough = false;
  // Data areas only.
  LONG dataType = -1, precision = -1;
  bool showCurrency = false, showZeroAmts = false, taxable = false;

  friend bool operator==(const AreaSeen&, const AreaSeen&) = default;
  friend std::ostream& operator<<(std::ostream& out, const AreaSeen& a) {
    return out << "{align " << a.horzAlign << "/" << a.vertAlign << " pages " << a.pages
               << " border " << a.border << " size " << a.width << "x" << a.height
               << " multiLine " << a.multiLine << " ascent " << a.usesAscent << " font "
               << a.fontName << " " << a.fontSize << " " << a.fontColor << " " << a.fontBold
               << a.fontItalic << a.fontUnderline << a.fontStrikeThrough << " type "
               << a.dataType << " precision " << a.precision << " " << a.showCurrency
               << a.showZeroAmts << a.taxable << "}";
  }
};

template <class Area>
AreaSeen SeeArea(const ComPtr<Area>& area) {
  AreaSeen seen;
  if (!area) {
    ADD_FAILURE() << "no area";
    return seen;
  }
  IStyleTextAreaPtr text;
  EXPECT_EQ(S_OK, area.As(text));
  seen.horzAlign = Get(text, &IStyleTextArea::GetHorzTextAlign);
  seen.vertAlign = Get(text, &IStyleTextArea::GetVertTextAlign);
  seen.pages = Get(text, &IStyleTextArea::GetPagesPrintedOn);
  seen.border = Get(text, &IStyleTextArea::GetBorder);
  seen.width = Get(text, &IStyleTextArea::GetWidth);
  seen.height = Get(text, &IStyleTextArea::GetHeight);
  seen.multiLine = Get(text, &IStyleTextArea::GetMultiLine);
  seen.usesAscent = Get(text, &IStyleTextArea::GetUsesAscent);
  const IStyleFontPtr font = Get(text, &IStyleTextArea::GetFont);
  seen.fontName = Get(font, &IStyleFont::GetName);
  seen.fontSize = Get(font, &IStyleFont::GetSize);
  seen.fontColor = Get(font, &IStyleFont::GetColor);
  seen.fontBold = Get(font, &IStyleFont::GetBold);
  seen.fontItalic = Get(font, &IStyleFont::GetItalic);
  seen.fontUnderline = Get(font, &IStyleFont::GetUnderline);
  seen.fontStrikeThrough = Get(font, &IStyleFont::GetStrikeThrough);
  IStyleDataAreaPtr data;
  if (SUCCEEDED(area.As(data))) {
    seen.dataType = Get(data, &IStyleDataArea::GetDataType);
    seen.precision = Get(data, &IStyleDataArea::GetPrecision);
    seen.showCurrency = Get(data, &IStyleDataArea::GetShowCurrency);
    seen.showZeroAmts = Get(data, &IStyleDataArea::GetShowZeroAmts);
    seen.taxable = Get(data, &IStyleDataArea::GetTaxable);
  }
  return seen;
}

// What a fixture area without the field gives.
constexpr LONG kNoData = -1;
AreaSeen Area(LONG horz, LONG vert, LONG pages, LONG border, LONG width, LONG height,
              bool multiLine = false, bool usesAscent = false, LONG dataType = kNoData,
              LONG precision = kNoData) {
  AreaSeen a;
  a.horzAlign = horz, a.vertAlign = vert, a.pages = pages, a.border = border;
  a.width = width, a.height = height, a.multiLine = multiLine, a.usesAscent = usesAscent;
  a.fontName = "Arial", a.fontSize = 10;
  a.dataType = dataType, a.precision = precision;
  return a;
}

class TemplatesTest : public ::testing::Test {
 protected:
  IStylePtr StyleOf(LONG recNum) {
    IStylesPtr styles = Get(ListsOf(company_), &ILists::GetStyles);
    IStylePtr style;
    EXPECT_EQ(S_OK, styles->GetItemByRecNum(RecNumVariant(recNum), style.ReleaseAndGetAddressOf()));
    return style;
  }
  IStyleFieldPtr FieldOf(LONG style, LONG index) {
    return Get(Get(StyleOf(style), &IStyle::GetFields), &IStyleFields::GetItem, index);
  }
  IStyleColumnPtr ColumnOf(LONG index) {
    const IStyleTablePtr table = Get(StyleOf(1), &IStyle::GetTable);
    return Get(Get(table, &IStyleTable::GetColumns), &IStyleColumns::GetItem, index);
  }

  CompanyPtr company_ = LoadCompany(kFixture);
};

TEST_F(TemplatesTest, StylePageReadsBackExactly) {
  const IStylePtr style = StyleOf(1);
  EXPECT_EQ(1, Get(style, &IStyle::GetRecNum));
  EXPECT_EQ("Service Invoice — “Blue” & <Co>", Get(style, &IStyle::GetFullName));
  EXPECT_EQ(tplInvoice, Get(style, &IStyle::GetType));
  EXPECT_TRUE(Get(style, &IStyle::GetPredefined));
  EXPECT_EQ(850, Get(style, &IStyle::GetWidth));
  EXPECT_EQ(1100, Get(style, &IStyle::GetHeight));
  EXPECT_EQ(25, Get(style, &IStyle::GetLeftMargin));
  EXPECT_EQ(26, Get(style, &IStyle::GetRightMargin));
  EXPECT_EQ(27, Get(style, &IStyle::GetTopMargin));
  EXPECT_EQ(28, Get(style, &IStyle::GetBottomMargin));
  const IStyleTablePtr table = Get(style, &IStyle::GetTable);
  EXPECT_EQ(800, Get(table, &IStyleTable::GetWidth));
  EXPECT_EQ(500, Get(table, &IStyleTable::GetHeight));
  EXPECT_EQ(20, Get(table, &IStyleTable::GetLabelHeight));
  // A type the host does not define is kept, so that the builders' unknown-value paths can run.
  EXPECT_EQ(99, Get(StyleOf(7), &IStyle::GetType));
  EXPECT_FALSE(Get(StyleOf(7), &IStyle::GetPredefined));
}

struct FieldCase {
  LONG style;
  LONG index;
  LONG id;
  bool onScreen, onPrint, usesLabel, usesData;
  std::string label;
  LONG labelX, labelY;
  AreaSeen labelArea;
  LONG dataX, dataY;
  AreaSeen dataArea;
};

TEST_F(TemplatesTest, FieldsReadBackExactly) {
  AreaSeen dateLabel = Area(haRight, 129, popLast, bdFullbox, 80, 12, true, true);
  dateLabel.fontName = "Times New Roman", dateLabel.fontSize = 12, dateLabel.fontColor = 255;
  dateLabel.fontBold = dateLabel.fontItalic = dateLabel.fontUnderline = true;
  dateLabel.fontStrikeThrough = true;
  AreaSeen dateData = Area(haLeft, vaBottom, 9, 3, 90, 13, false, false, ctDate, 0);
  dateData.fontName = "Courier", dateData.fontSize = 9, dateData.fontColor = 0xFF0000;
  AreaSeen balanceData = Area(haLeft, vaTop, popAll, bdNone, 0, 0, true, false, ctBalance, 2);
  balanceData.showCurrency = balanceData.showZeroAmts = balanceData.taxable = true;

  const FieldCase cases[] = {
      {1, 0, sfDate, true, false, true, true, "Date", 600, 40, dateLabel, 700, 41, dateData},
      // An identifier the host leaves unassigned; a label the fixture leaves out.
      {1, 1, 38, false, true, false, true, "", 0, 0, Area(haLeft, vaTop, popAll, bdNone, 0, 0),
       0, 0, balanceData},
      {7, 0, sfTitle, true, true, true, true, "Invoice", 0, 0,
       Area(haLeft, vaTop, popAll, bdNone, 0, 0), 0, 0,
       Area(haLeft, vaTop, popAll, bdNone, 0, 0, false, false, ctString, 2)},
  };
  for (const FieldCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "style " << c.style << " field " << c.index);
    const IStyleFieldPtr field = FieldOf(c.style, c.index);
    ASSERT_TRUE(field);
    EXPECT_EQ(c.id, Get(field, &IStyleField::GetID));
    EXPECT_EQ(c.onScreen, Get(field, &IStyleField::GetOnScreen));
    EXPECT_EQ(c.onPrint, Get(field, &IStyleField::GetOnPrint));
    EXPECT_EQ(c.usesLabel, Get(field, &IStyleField::GetUsesLabel));
    EXPECT_EQ(c.usesData, Get(field, &IStyleField::GetUsesData));
    const IStyleFieldLabelPtr label = Get(field, &IStyleField::GetLabel);
    EXPECT_EQ(c.label, Get(label, &IStyleFieldLabel::GetLabel));
    EXPECT_EQ(c.labelX, Get(label, &IStyleFieldLabel::GetX));
    EXPECT_EQ(c.labelY, Get(label, &IStyleFieldLabel::GetY));
    EXPECT_EQ(c.labelArea, SeeArea(label));
    const IStyleFieldDataPtr data = Get(field, &IStyleField::GetData);
    EXPECT_EQ(c.dataX, Get(data, &IStyleFieldData::GetX));
    EXPECT_EQ(c.dataY, Get(data, &IStyleFieldData::GetY));
    EXPECT_EQ(c.dataArea, SeeArea(data));
  }
  EXPECT_EQ(2, Get(Get(StyleOf(1), &IStyle::GetFields), &IStyleFields::GetCount));
}

struct ColumnCase {
  LONG index;
  LONG id;
  bool onPrint, usesData;
  LONG order;
  std::string label;
  AreaSeen labelArea;
  AreaSeen dataArea;
};

TEST_F(TemplatesTest, ColumnsReadBackExactly) {
  const ColumnCase cases[] = {
      // Without an order, a column's order is its position.
      {0, sfItem, true, true, 0, "Item", Area(haLeft, vaTop, popAll, bdNone, 100, 0),
       Area(haLeft, vaTop, popAll, bdNone, 120, 0, false, false, ctString, 2)},
      {1, sfRate, true, false, 5, "Rate", Area(haCenter, vaTop, popAll, bdUnder, 0, 0),
       Area(haDecimal, vaTop, popAll, bdNone, 0, 0, false, false, ctBalance, 4)},
  };
  const IStyleColumnsPtr columns =
      Get(Get(StyleOf(1), &IStyle::GetTable), &IStyleTable::GetColumns);
  EXPECT_EQ(LONG(std::size(cases)), Get(columns, &IStyleColumns::GetCount));
  for (const ColumnCase& c : cases) {
    SCOPED_TRACE(c.index);
    const IStyleColumnPtr column = ColumnOf(c.index);
    ASSERT_TRUE(column);
    EXPECT_EQ(c.id, Get(column, &IStyleColumn::GetID));
    EXPECT_TRUE(Get(column, &IStyleColumn::GetOnScreen));
    EXPECT_EQ(c.onPrint, Get(column, &IStyleColumn::GetOnPrint));
    EXPECT_TRUE(Get(column, &IStyleColumn::GetUsesLabel));
    EXPECT_EQ(c.usesData, Get(column, &IStyleColumn::GetUsesData));
    EXPECT_EQ(c.order, Get(column, &IStyleColumn::GetOrder));
    const IStyleColumnLabelPtr label = Get(column, &IStyleColumn::GetLabel);
    EXPECT_EQ(c.label, Get(label, &IStyleColumnLabel::GetLabel));
    EXPECT_EQ(c.labelArea, SeeArea(label));
    EXPECT_EQ(c.dataArea, SeeArea(Get(column, &IStyleColumn::GetData)));
  }
  IStyleColumnPtr none;
  EXPECT_EQ(E_INVALIDARG, columns->GetItem(2, none.ReleaseAndGetAddressOf()));
}

struct AreaFaultCase {
  const char* operation;
  // Which areas of style 1 fail: field label, field data, column label, column data.
  bool fieldLabel, fieldData, columnLabel, columnData;
};

TEST_F(TemplatesTest, AreaFaultsFailTheirKindOfAreaOfTheirStyleOnly) {
  const AreaFaultCase cases[] = {
      {"IStyleFieldLabel::GetWidth", true, false, false, false},
      {"IStyleColumnData::GetWidth", false, false, false, true},
      {"IStyleTextArea::GetWidth", true, true, true, true},
      {"IStyleFieldData::GetPrecision", false, true, false, false},
      {"IStyleDataArea::GetPrecision", false, true, false, true},
  };
  for (const AreaFaultCase& c : cases) {
    SCOPED_TRACE(c.operation);
    company_->faults.Clear();
    ASSERT_TRUE(company_->faults.Fail(c.operation, E_ACCESSDENIED, 1));
    const std::string method = std::string(c.operation).substr(std::string(c.operation).find("::") + 2);
    const bool width = method == "GetWidth";
    const auto text = [](const auto& area) {
      IStyleTextAreaPtr common;
      EXPECT_EQ(S_OK, area.As(common));
      return common;
    };
    // The first field and column of style 1, and the first field of style 7.
    const IStyleTextAreaPtr areas[] = {text(Get(FieldOf(1, 0), &IStyleField::GetLabel)),
                                       text(Get(FieldOf(1, 0), &IStyleField::GetData)),
                                       text(Get(ColumnOf(0), &IStyleColumn::GetLabel)),
                                       text(Get(ColumnOf(0), &IStyleColumn::GetData)),
                                       text(Get(FieldOf(7, 0), &IStyleField::GetLabel)),
                                       text(Get(FieldOf(7, 0), &IStyleField::GetData))};
    const bool expected[] = {c.fieldLabel, c.fieldData, c.columnLabel, c.columnData, false, false};
    for (size_t i = 0; i < std::size(areas); ++i) {
      SCOPED_TRACE(i);
      LONG value = 0;
      HRESULT hr = S_OK;
      if (width) {
        hr = areas[i]->GetWidth(&value);
      } else {
        IStyleDataAreaPtr data;
        if (FAILED(areas[i].As(data))) continue;
        hr = data->GetPrecision(&value);
      }
      EXPECT_EQ(expected[i] ? E_ACCESSDENIED : S_OK, hr);
    }
  }
}

TEST_F(TemplatesTest, FontAndFieldFaultsSelectTheirStyle) {
  ASSERT_TRUE(company_->faults.Fail("IStyleFont::GetName", E_FAIL, 7));
  ASSERT_TRUE(company_->faults.Fail("IStyleField::GetOnPrint", E_FAIL, 1));
  Bstr name;
  const IStyleFontPtr font7 = Get(Get(FieldOf(7, 0), &IStyleField::GetLabel), &IStyleTextArea::GetFont);
  EXPECT_EQ(E_FAIL, font7->GetName(name.Out()));
  const IStyleFontPtr font1 = Get(Get(FieldOf(1, 0), &IStyleField::GetLabel), &IStyleTextArea::GetFont);
  EXPECT_EQ(S_OK, font1->GetName(name.Out()));
  VARIANT_BOOL onPrint = VARIANT_FALSE;
  EXPECT_EQ(E_FAIL, FieldOf(1, 1)->GetOnPrint(&onPrint));
  EXPECT_EQ(S_OK, FieldOf(7, 0)->GetOnPrint(&onPrint));
  // Columns are not fields.
  EXPECT_EQ(S_OK, ColumnOf(0)->GetOnPrint(&onPrint));
}

TEST(TemplateFixtureTest, BadStylesNameFilePositionAndField) {
  const FixtureChange changes[] = {
      {"/styles/0/fields/1/id", "nonsense", "/styles/0/fields/1: id", "expected a name such as compVatId"},
      {"/styles/0/fields/1/id", nullptr, "/styles/0/fields/1: id", "missing required field"},
      {"/styles/0/table/columns/1/label/font/color", -1, "/styles/0/table/columns/1/label/font: color",
       "whole number"},
      {"/styles/0/table/columns/1/label/font/colour", 1, "/styles/0/table/columns/1/label/font: colour",
       "unknown field"},
      {"/styles/0/table/columns/0/data/border", "thick", "/styles/0/table/columns/0/data: border",
       "expected a name"},
      {"/styles/0/table/columns/0/data/x", 3, "/styles/0/table/columns/0/data: x", "unknown field"},
      {"/styles/0/fields/0/label/precision", 3, "/styles/0/fields/0/label: precision", "unknown field"},
      {"/styles/0/table/columns", 5, "/styles/0/table: columns", "an array"},
      {"/styles/0/table", "wide", "/styles/0/table", "an object"},
      {"/styles/1/recNum", 1, "/styles/1: recNum", "duplicate record number 1, first at /styles/0"},
      {"/styles/1/fullName", nullptr, "/styles/1: fullName", "missing required field"},
      {"/styles/0/width", -5, "/styles/0: width", "whole number"},
  };
  for (const FixtureChange& change : changes) ExpectRefused(kFixture, change);
}

}  // namespace
}  // namespace parcelon::refhost::test
