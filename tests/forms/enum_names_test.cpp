// Words of the host enumerations: every documented value, the edges of every table, the
// fallbacks of the bit-set tables, document type names.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

#include "forms/EnumToString.h"

namespace {

using ToString = int32_t (CLXEnumToString::*)(int32_t, OLAString&) const;

struct Word {
  int32_t value;
  const char* word;
  int32_t result;
};

// The words of one conversion.
struct WordTable {
  const char* operation;
  ToString convert;
  std::vector<Word> words;
};

#define OP(name) #name, &CLXEnumToString::name

// `words` for the values 0, 1, ... in order, each with the result 1; then the values `outside`,
// which have none: the empty word (or `none`) with the result 0.
std::vector<Word> InOrder(std::initializer_list<const char*> words, std::initializer_list<int32_t> outside,
                          const char* none = "") {
  std::vector<Word> table;
  for (const char* word : words) table.push_back({int32_t(table.size()), word, 1});
  for (int32_t value : outside) table.push_back({value, none, 0});
  return table;
}

// Runs each word on a string that already holds other text, so that a word which is not
// written (or an empty result that is not cleared) shows.
void ExpectWords(const WordTable& table) {
  const CLXEnumToString names;
  for (const Word& w : table.words) {
    SCOPED_TRACE(std::string(table.operation) + "(" + std::to_string(w.value) + ")");
    OLAString out("previous text");
    EXPECT_EQ((names.*table.convert)(w.value, out), w.result);
    EXPECT_STREQ(out.GetText(), w.word);
    EXPECT_EQ(out.GetLength(), int(std::char_traits<char>::length(w.word)));
  }
}

TEST(EnumNames, EveryTable) {
  const WordTable tables[] = {
      {OP(ClearedStateToString),
       InOrder({"csError", "csUncleared", "csPending", "csCleared", "csDownloaded"}, {5, -1, INT32_MIN, INT32_MAX},
               "UNKNOWN")},
      {OP(ItemTypeToString), InOrder({"itSERVICE", "itINVENTORY", "itPART", "itCHARGES", "itSUBTOTAL", "itGROUP",
                                      "itDISCOUNT", "itPAYMENT", "itTAXCOMP", "itTAXGROUP"},
                                     {10, -1, INT32_MIN})},
      {OP(JobStatusToString), InOrder({"None", "Pending", "Awarded", "InProgress", "Closed", "NotAwarded"}, {6, -1})},
      {OP(TermTypeToString), InOrder({"Standard", "DateDriven"}, {2, -1})},
      {OP(TemplateTypeToString),
       InOrder({"Invoice", "CreditMemo", "Cashsale", "PurchaseOrder", "Statement", "Estimate"}, {6, -1})},
      {OP(AlignmentToString), InOrder({"Left", "Center", "Right", "Indented", "Decimal", "CheckAmount"}, {6, -1})},
      {OP(ColumnTypeToString), InOrder({"Balance", "Percentage", "Quantity", "String", "Date", "Logo", "Label", "Art",
                                        "LabelBlueText", "LabelWhiteOnBlue", "None"},
                                       {11, -1})},
      // The low seven bits choose the word; bit 7 is the result, whatever the word.
      {OP(VertAlignToString),
       {{0, "Top", 0}, {1, "Center", 0}, {2, "Bottom", 0}, {3, "", 0}, {127, "", 0}, {128, "Top", 128},
        {129, "Center", 128}, {130, "Bottom", 128}, {131, "", 128}, {255, "", 128}, {256, "Top", 0},
        {256 + 128 + 2, "Bottom", 128}, {-1, "", 128}, {-128, "Top", 128}, {-255, "Center", 0}}},
      {OP(BorderToString),
       {{0, "None", 1}, {1, "Left", 1}, {2, "Right", 1}, {4, "Top", 1}, {8, "Bottom", 1}, {15, "Fullbox", 1},
        {16, "Under", 1}, {32, "VCenter", 1}, {64, "HCenter", 1}, {128, "Left2", 1}, {256, "Right2", 1},
        {512, "Top2", 1}, {1024, "Bottom2", 1}, {2048, "Dashed", 1}, {4095, "All", 1},
        // Combinations without a word: "Fullbox" below 15 as a signed number, "All" from 15 on.
        {3, "Fullbox", 1}, {5, "Fullbox", 1}, {14, "Fullbox", 1}, {-1, "Fullbox", 1}, {INT32_MIN, "Fullbox", 1},
        {17, "All", 1}, {48, "All", 1}, {4094, "All", 1}, {4096, "All", 1}, {INT32_MAX, "All", 1}}},
      {OP(PrintOnPagesToString),
       {{1, "First", 1}, {2, "Middle", 1}, {4, "Last", 1}, {7, "All", 1}, {8, "Preprinted", 1}, {15, "Always", 1},
        // A single page marked preprinted loses the mark.
        {9, "First", 1}, {10, "Middle", 1}, {12, "Last", 1},
        // Anything else has no word.
        {0, "", 0}, {3, "", 0}, {5, "", 0}, {6, "", 0}, {11, "", 0}, {13, "", 0}, {14, "", 0}, {16, "", 0},
        {17, "", 0}, {-1, "", 0}, {-7, "", 0}}},
      // Beyond the identifiers of the table below.
      {OP(StyleFieldToString), {{87, "", 0}, {1000, "", 0}, {-1, "", 0}, {INT32_MIN, "", 0}}},
  };
  for (const WordTable& table : tables) ExpectWords(table);
}

// The whole table in identifier order; "???" marks identifiers the host leaves unassigned.
constexpr const char* kExpectedStyleFields[] = {
    "StyleCompVatId", "StyleDate", "StyleInvNum", "StyleBillTo", "StyleShipTo",
    "StyleCustVatId", "StylePoNum", "StyleTerms", "StyleDueDate", "StyleRep",
    "StyleShipDate", "StyleShipVia", "StyleFob", "StyleJob", "StyleCustFldBox1",
    "StyleCustFldBox2", "StyleCustFldBox3", "StyleCustFldBox4", "StyleCustFldBox5",
    "StyleCustFldBox6", "StyleCustFldBox7", "StyleOther1", "StyleServiceDate", "StyleItem",
    "StyleItemDesc", "StyleCustFld1", "StyleCustFld2", "StyleCustFld3", "StyleCustFld4",
    "StyleCustFld5", "StyleClass", "StyleOther2", "StyleQty", "StyleOther3", "StyleRate",
    "StyleItemTotal", "EstStyleMarkupItem", "StyleItemAmount", "???", "???", "StyleTitle",
    "StyleCustMsg", "StyleVatSubtotal", "???", "StyleTotalItemTotal", "EstStyleMarkupTotal",
    "StyleTotalAmount", "StyleSignature", "StyleEstQty", "StyleEstRate", "StyleEstAmt",
    "StylePrevQty", "StylePrevRate", "StylePrevAmt", "StylePrevPercent", "StyleCurPercent",
    "StyleTotalPercent", "StyleCompName", "StyleCompAddress", "StyleLogo", "StyleStaticText",
    "StylePendingArt", "StyleJobColumn", "???", "StyleBalanceDue", "StyleSubtotal",
    "StyleSalesTax", "StylePrePayments", "StyleAccountNum", "StmtStyleAmountDue",
    "StmtStyleAmountEnclosed", "StmtStyleBalance", "StmtStyleCurrent", "StmtStyleDue1To30",
    "StmtStyleDue31To60", "StmtStyleDue61To90", "StmtStyleDueOver90",
    "StmtStyleAmountDueFooter", "StmtStyleShowAging", "???", "StyleCompEmail",
    "StyleCompWebSite", "StyleCompPhone", "StyleCompFax", "StyleSONumber", "StyleSOQty",
    "StylePrevInvoiceQtyStyleRefundedArt",
};
static_assert(std::size(kExpectedStyleFields) == 87);

TEST(EnumNames, StyleFieldEveryIdentifier) {
  WordTable table{OP(StyleFieldToString), {}};
  int known = 0;
  for (int32_t field = 0; field < 87; ++field) {
    const std::string expected = kExpectedStyleFields[field];
    const bool unassigned = expected == "???";
    table.words.push_back({field, unassigned ? "" : kExpectedStyleFields[field], unassigned ? 0 : 1});
    known += unassigned ? 0 : 1;
  }
  ExpectWords(table);
  EXPECT_EQ(known, 82);
}

// The word replaces earlier text entirely, CDATA mark included, so that a reused string never
// carries a wrapped value into an element.
TEST(EnumNames, WordReplacesWrappedText) {
  const CLXEnumToString names;
  OLAString out("a much longer earlier value");
  out.WrapInCData();
  ASSERT_TRUE(out.IsCData());
  EXPECT_EQ(names.TermTypeToString(0, out), 1);
  EXPECT_STREQ(out.GetText(), "Standard");
  EXPECT_FALSE(out.IsCData());

  out.WrapInCData();
  EXPECT_EQ(names.TermTypeToString(7, out), 0);
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_FALSE(out.IsCData());
}

TEST(EnumNames, DocumentTypeName) {
  const struct {
    long type;
    const char* name;
  } cases[] = {
      {0, "Non-Ledgerine Document"}, {1, "Invoice"},       {2, "Estimate"},
      {3, "Statement"},              {4, "Purchase Order"}, {5, "Sales Order"},
      {6, "Sales Receipt"},          {7, "Credit Memo"},   {8, "Report"},
      {9, "Timesheet"},              {10, "Billpay Stub"}, {11, "Paycheck Stub"},
      {12, "Unknown"},               {13, "Unknown"},      {LONG_MAX, "Unknown"},
      {-1, "Unknown"},               {-12, "Unknown"},     {LONG_MIN, "Unknown"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("DocumentTypeName(" + std::to_string(c.type) + ")");
    EXPECT_STREQ(DocumentTypeName(c.type), c.name);
  }
}

TEST(EnumNames, HostFormTypesAreInvoiceEstimateStatement) {
  for (long type : {LONG_MIN, -1L, 0L, 1L, 2L, 3L, 4L, 5L, 11L, 12L, 257L, LONG_MAX}) {
    SCOPED_TRACE(type);
    EXPECT_EQ(type >= 1 && type <= 3, IsHostFormType(type));
  }
}

}  // namespace
