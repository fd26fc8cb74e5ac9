// Words of the host enumerations: every documented value, the edges of every table, the
// fallbacks of the bit-set tables, document type names.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <iterator>
#include <string>

#include "forms/EnumToString.h"

namespace {

using ToString = int32_t (CLXEnumToString::*)(int32_t, OLAString&) const;

struct EnumCase {
  const char* operation;
  ToString convert;
  int32_t value;
  const char* word;
  int32_t result;
};

#define OP(name) #name, &CLXEnumToString::name

std::string Describe(const EnumCase& c) {
  return std::string(c.operation) + "(" + std::to_string(c.value) + ")";
}

// Runs each case on a string that already holds other text, so that a word which is not
// written (or an empty result that is not cleared) shows.
void ExpectWords(const EnumCase* begin, const EnumCase* end) {
  const CLXEnumToString names;
  for (const EnumCase* c = begin; c != end; ++c) {
    SCOPED_TRACE(Describe(*c));
    OLAString out("previous text");
    EXPECT_EQ((names.*c->convert)(c->value, out), c->result);
    EXPECT_STREQ(out.GetText(), c->word);
    EXPECT_EQ(out.GetLength(), int(std::char_traits<char>::length(c->word)));
  }
}

template <size_t N>
void ExpectWords(const EnumCase (&cases)[N]) {
  ExpectWords(cases, cases + N);
}

TEST(EnumNames, ClearedState) {
  const EnumCase cases[] = {
      {OP(ClearedStateToString), 0, "csError", 1},
      {OP(ClearedStateToString), 1, "csUncleared", 1},
      {OP(ClearedStateToString), 2, "csPending", 1},
      {OP(ClearedStateToString), 3, "csCleared", 1},
      {OP(ClearedStateToString), 4, "csDownloaded", 1},
      {OP(ClearedStateToString), 5, "UNKNOWN", 0},
      {OP(ClearedStateToString), -1, "UNKNOWN", 0},
      {OP(ClearedStateToString), INT32_MIN, "UNKNOWN", 0},
      {OP(ClearedStateToString), INT32_MAX, "UNKNOWN", 0},
  };
  ExpectWords(cases);
}

TEST(EnumNames, ItemType) {
  const EnumCase cases[] = {
      {OP(ItemTypeToString), 0, "itSERVICE", 1},
      {OP(ItemTypeToString), 1, "itINVENTORY", 1},
      {OP(ItemTypeToString), 2, "itPART", 1},
      {OP(ItemTypeToString), 3, "itCHARGES", 1},
      {OP(ItemTypeToString), 4, "itSUBTOTAL", 1},
      {OP(ItemTypeToString), 5, "itGROUP", 1},
      {OP(ItemTypeToString), 6, "itDISCOUNT", 1},
      {OP(ItemTypeToString), 7, "itPAYMENT", 1},
      {OP(ItemTypeToString), 8, "itTAXCOMP", 1},
      {OP(ItemTypeToString), 9, "itTAXGROUP", 1},
      {OP(ItemTypeToString), 10, "", 0},
      {OP(ItemTypeToString), -1, "", 0},
      {OP(ItemTypeToString), INT32_MIN, "", 0},
  };
  ExpectWords(cases);
}

TEST(EnumNames, JobStatusAndTermType) {
  const EnumCase cases[] = {
      {OP(JobStatusToString), 0, "None", 1},
      {OP(JobStatusToString), 1, "Pending", 1},
      {OP(JobStatusToString), 2, "Awarded", 1},
      {OP(JobStatusToString), 3, "InProgress", 1},
      {OP(JobStatusToString), 4, "Closed", 1},
      {OP(JobStatusToString), 5, "NotAwarded", 1},
      {OP(JobStatusToString), 6, "", 0},
      {OP(JobStatusToString), -1, "", 0},
      {OP(TermTypeToString), 0, "Standard", 1},
      {OP(TermTypeToString), 1, "DateDriven", 1},
      {OP(TermTypeToString), 2, "", 0},
      {OP(TermTypeToString), -1, "", 0},
  };
  ExpectWords(cases);
}

TEST(EnumNames, TemplateTypeAlignmentAndColumnType) {
  const EnumCase cases[] = {
      {OP(TemplateTypeToString), 0, "Invoice", 1},
      {OP(TemplateTypeToString), 1, "CreditMemo", 1},
      {OP(TemplateTypeToString), 2, "Cashsale", 1},
      {OP(TemplateTypeToString), 3, "PurchaseOrder", 1},
      {OP(TemplateTypeToString), 4, "Statement", 1},
      {OP(TemplateTypeToString), 5, "Estimate", 1},
      {OP(TemplateTypeToString), 6, "", 0},
      {OP(TemplateTypeToString), -1, "", 0},
      {OP(AlignmentToString), 0, "Left", 1},
      {OP(AlignmentToString), 1, "Center", 1},
      {OP(AlignmentToString), 2, "Right", 1},
      {OP(AlignmentToString), 3, "Indented", 1},
      {OP(AlignmentToString), 4, "Decimal", 1},
      {OP(AlignmentToString), 5, "CheckAmount", 1},
      {OP(AlignmentToString), 6, "", 0},
      {OP(AlignmentToString), -1, "", 0},
      {OP(ColumnTypeToString), 0, "Balance", 1},
      {OP(ColumnTypeToString), 1, "Percentage", 1},
      {OP(ColumnTypeToString), 2, "Quantity", 1},
      {OP(ColumnTypeToString), 3, "String", 1},
      {OP(ColumnTypeToString), 4, "Date", 1},
      {OP(ColumnTypeToString), 5, "Logo", 1},
      {OP(ColumnTypeToString), 6, "Label", 1},
      {OP(ColumnTypeToString), 7, "Art", 1},
      {OP(ColumnTypeToString), 8, "LabelBlueText", 1},
      {OP(ColumnTypeToString), 9, "LabelWhiteOnBlue", 1},
      {OP(ColumnTypeToString), 10, "None", 1},
      {OP(ColumnTypeToString), 11, "", 0},
      {OP(ColumnTypeToString), -1, "", 0},
  };
  ExpectWords(cases);
}

// The low seven bits choose the word; bit 7 is the result, whatever the word.
TEST(EnumNames, VertAlignReturnsBitSeven) {
  const EnumCase cases[] = {
      {OP(VertAlignToString), 0, "Top", 0},
      {OP(VertAlignToString), 1, "Center", 0},
      {OP(VertAlignToString), 2, "Bottom", 0},
      {OP(VertAlignToString), 3, "", 0},
      {OP(VertAlignToString), 127, "", 0},
      {OP(VertAlignToString), 128, "Top", 128},
      {OP(VertAlignToString), 129, "Center", 128},
      {OP(VertAlignToString), 130, "Bottom", 128},
      {OP(VertAlignToString), 131, "", 128},
      {OP(VertAlignToString), 255, "", 128},
      {OP(VertAlignToString), 256, "Top", 0},
      {OP(VertAlignToString), 256 + 128 + 2, "Bottom", 128},
      {OP(VertAlignToString), -1, "", 128},
      {OP(VertAlignToString), -128, "Top", 128},
      {OP(VertAlignToString), -255, "Center", 0},
  };
  ExpectWords(cases);
}

TEST(EnumNames, BorderExactMatches) {
  const EnumCase cases[] = {
      {OP(BorderToString), 0, "None", 1},       {OP(BorderToString), 1, "Left", 1},
      {OP(BorderToString), 2, "Right", 1},      {OP(BorderToString), 4, "Top", 1},
      {OP(BorderToString), 8, "Bottom", 1},     {OP(BorderToString), 15, "Fullbox", 1},
      {OP(BorderToString), 16, "Under", 1},     {OP(BorderToString), 32, "VCenter", 1},
      {OP(BorderToString), 64, "HCenter", 1},   {OP(BorderToString), 128, "Left2", 1},
      {OP(BorderToString), 256, "Right2", 1},   {OP(BorderToString), 512, "Top2", 1},
      {OP(BorderToString), 1024, "Bottom2", 1}, {OP(BorderToString), 2048, "Dashed", 1},
      {OP(BorderToString), 4095, "All", 1},
  };
  ExpectWords(cases);
}

// Combinations without a word: "Fullbox" below 15 as a signed number, "All" from 15 on.
TEST(EnumNames, BorderCombinationsFallBack) {
  const EnumCase cases[] = {
      {OP(BorderToString), 3, "Fullbox", 1},
      {OP(BorderToString), 5, "Fullbox", 1},
      {OP(BorderToString), 14, "Fullbox", 1},
      {OP(BorderToString), -1, "Fullbox", 1},
      {OP(BorderToString), INT32_MIN, "Fullbox", 1},
      {OP(BorderToString), 17, "All", 1},
      {OP(BorderToString), 48, "All", 1},
      {OP(BorderToString), 4094, "All", 1},
      {OP(BorderToString), 4096, "All", 1},
      {OP(BorderToString), INT32_MAX, "All", 1},
  };
  ExpectWords(cases);
}

TEST(EnumNames, PrintOnPages) {
  const EnumCase cases[] = {
      {OP(PrintOnPagesToString), 1, "First", 1},
      {OP(PrintOnPagesToString), 2, "Middle", 1},
      {OP(PrintOnPagesToString), 4, "Last", 1},
      {OP(PrintOnPagesToString), 7, "All", 1},
      {OP(PrintOnPagesToString), 8, "Preprinted", 1},
      {OP(PrintOnPagesToString), 15, "Always", 1},
      // A single page marked preprinted loses the mark.
      {OP(PrintOnPagesToString), 9, "First", 1},
      {OP(PrintOnPagesToString), 10, "Middle", 1},
      {OP(PrintOnPagesToString), 12, "Last", 1},
      // Anything else has no word.
      {OP(PrintOnPagesToString), 0, "", 0},
      {OP(PrintOnPagesToString), 3, "", 0},
      {OP(PrintOnPagesToString), 5, "", 0},
      {OP(PrintOnPagesToString), 6, "", 0},
      {OP(PrintOnPagesToString), 11, "", 0},
      {OP(PrintOnPagesToString), 13, "", 0},
      {OP(PrintOnPagesToString), 14, "", 0},
      {OP(PrintOnPagesToString), 16, "", 0},
      {OP(PrintOnPagesToString), 17, "", 0},
      {OP(PrintOnPagesToString), -1, "", 0},
      {OP(PrintOnPagesToString), -7, "", 0},
  };
  ExpectWords(cases);
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
  const CLXEnumToString names;
  int known = 0;
  for (int32_t field = 0; field < 87; ++field) {
    SCOPED_TRACE("StyleFieldToString(" + std::to_string(field) + ")");
    const std::string expected = kExpectedStyleFields[field];
    const bool unassigned = expected == "???";
    OLAString out("previous text");
    EXPECT_EQ(names.StyleFieldToString(field, out), unassigned ? 0 : 1);
    EXPECT_STREQ(out.GetText(), unassigned ? "" : expected.c_str());
    known += unassigned ? 0 : 1;
  }
  EXPECT_EQ(known, 82);
}

TEST(EnumNames, StyleFieldEdges) {
  const EnumCase cases[] = {
      {OP(StyleFieldToString), 38, "", 0},
      {OP(StyleFieldToString), 39, "", 0},
      {OP(StyleFieldToString), 43, "", 0},
      {OP(StyleFieldToString), 63, "", 0},
      {OP(StyleFieldToString), 79, "", 0},
      {OP(StyleFieldToString), 85, "StyleSOQty", 1},
      {OP(StyleFieldToString), 86, "StylePrevInvoiceQtyStyleRefundedArt", 1},
      {OP(StyleFieldToString), 87, "", 0},
      {OP(StyleFieldToString), 1000, "", 0},
      {OP(StyleFieldToString), -1, "", 0},
      {OP(StyleFieldToString), INT32_MIN, "", 0},
  };
  ExpectWords(cases);
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
  for (long type : {LONG_MIN, -1L, 0L, 4L, 5L, 11L, 12L, 257L, LONG_MAX}) {
    SCOPED_TRACE(type);
    EXPECT_FALSE(IsHostFormType(type));
  }
  for (long type : {1L, 2L, 3L}) {
    SCOPED_TRACE(type);
    EXPECT_TRUE(IsHostFormType(type));
  }
}

}  // namespace
