#include "forms/EnumToString.h"

#include <cstddef>
#include <cstring>
#include <span>

namespace {

// Tables indexed by host value.
constexpr const char* kClearedStates[] = {"csError", "csUncleared", "csPending", "csCleared",
                                          "csDownloaded"};

constexpr const char* kItemTypes[] = {"itSERVICE",  "itINVENTORY", "itPART",    "itCHARGES",
                                      "itSUBTOTAL", "itGROUP",     "itDISCOUNT", "itPAYMENT",
                                      "itTAXCOMP",  "itTAXGROUP"};

constexpr const char* kJobStatuses[] = {"None", "Pending", "Awarded", "InProgress", "Closed",
                                        "NotAwarded"};

constexpr const char* kTermTypes[] = {"Standard", "DateDriven"};

// "Cashsale" is spelled so in the gateway's vocabulary.
constexpr const char* kTemplateTypes[] = {"Invoice",       "CreditMemo", "Cashsale",
                                          "PurchaseOrder", "Statement",  "Estimate"};

constexpr const char* kAlignments[] = {"Left", "Center", "Right", "Indented", "Decimal",
                                       "CheckAmount"};

constexpr const char* kVertAlignments[] = {"Top", "Center", "Bottom"};

constexpr const char* kColumnTypes[] = {"Balance", "Percentage",    "Quantity",         "String",
                                        "Date",    "Logo",          "Label",            "Art",
                                        "LabelBlueText", "LabelWhiteOnBlue", "None"};

// Host identifiers without a style field of their own.
constexpr char kUnassigned[] = "???";

// The host's style field identifiers in order. The last entry is one word made of two names run
// together, as the gateway expects it; neither half has an entry of its own.
constexpr const char* kStyleFields[] = {
    "StyleCompVatId",          "StyleDate",              "StyleInvNum",
    "StyleBillTo",             "StyleShipTo",            "StyleCustVatId",
    "StylePoNum",              "StyleTerms",             "StyleDueDate",
    "StyleRep",                "StyleShipDate",          "StyleShipVia",
    "StyleFob",                "StyleJob",               "StyleCustFldBox1",
    "StyleCustFldBox2",        "StyleCustFldBox3",       "StyleCustFldBox4",
    "StyleCustFldBox5",        "StyleCustFldBox6",       "StyleCustFldBox7",
    "StyleOther1",             "StyleServiceDate",       "StyleItem",
    "StyleItemDesc",           "StyleCustFld1",          "StyleCustFld2",
    "StyleCustFld3",           "StyleCustFld4",          "StyleCustFld5",
    "StyleClass",              "StyleOther2",            "StyleQty",
    "StyleOther3",             "StyleRate",              "StyleItemTotal",
    "EstStyleMarkupItem",      "StyleItemAmount",        kUnassigned,
    kUnassigned,               "StyleTitle",             "StyleCustMsg",
    "StyleVatSubtotal",        kUnassigned,              "StyleTotalItemTotal",
    "EstStyleMarkupTotal",     "StyleTotalAmount",       "StyleSignature",
    "StyleEstQty",             "StyleEstRate",           "StyleEstAmt",
    "StylePrevQty",            "StylePrevRate",          "StylePrevAmt",
    "StylePrevPercent",        "StyleCurPercent",        "StyleTotalPercent",
    "StyleCompName",           "StyleCompAddress",       "StyleLogo",
    "StyleStaticText",         "StylePendingArt",        "StyleJobColumn",
    kUnassigned,               "StyleBalanceDue",        "StyleSubtotal",
    "StyleSalesTax",           "StylePrePayments",       "StyleAccountNum",
    "StmtStyleAmountDue",      "StmtStyleAmountEnclosed", "StmtStyleBalance",
    "StmtStyleCurrent",        "StmtStyleDue1To30",      "StmtStyleDue31To60",
    "StmtStyleDue61To90",      "StmtStyleDueOver90",     "StmtStyleAmountDueFooter",
    "StmtStyleShowAging",      kUnassigned,              "StyleCompEmail",
    "StyleCompWebSite",        "StyleCompPhone",         "StyleCompFax",
    "StyleSONumber",           "StyleSOQty",             "StylePrevInvoiceQtyStyleRefundedArt",
};
static_assert(std::size(kStyleFields) == 87, "the host numbers 87 style field identifiers");

constexpr const char* kDocumentTypes[] = {
    "Non-Ledgerine Document", "Invoice",       "Estimate",    "Statement",
    "Purchase Order",         "Sales Order",   "Sales Receipt", "Credit Memo",
    "Report",                 "Timesheet",     "Billpay Stub", "Paycheck Stub",
};

// Tables of exact matches, for values that are bit sets.
struct ValueWord {
  int32_t value;
  const char* word;
};

constexpr ValueWord kBorders[] = {
    {0, "None"},       {1, "Left"},      {2, "Right"},    {4, "Top"},        {8, "Bottom"},
    {15, "Fullbox"},   {16, "Under"},    {32, "VCenter"}, {64, "HCenter"},   {128, "Left2"},
    {256, "Right2"},   {512, "Top2"},    {1024, "Bottom2"}, {2048, "Dashed"}, {4095, "All"},
};

constexpr ValueWord kPrintOnPages[] = {
    {1, "First"}, {2, "Middle"}, {4, "Last"}, {7, "All"}, {8, "Preprinted"}, {15, "Always"},
};

// A single page with the preprinted bit toggled.
constexpr ValueWord kSinglePages[] = {{1, "First"}, {2, "Middle"}, {4, "Last"}};

constexpr int32_t kPreprintedBit = 8;
constexpr int32_t kVertAlignFlag = 0x80;
constexpr int32_t kVertAlignWordMask = 0x7F;

// The word at `index`, or null when the index is outside the table or unassigned.
const char* WordAt(std::span<const char* const> table, long index) {
  if (index < 0 || static_cast<unsigned long>(index) >= table.size()) return nullptr;
  const char* word = table[size_t(index)];
  return std::strcmp(word, kUnassigned) == 0 ? nullptr : word;
}

const char* FindWord(std::span<const ValueWord> table, int32_t value) {
  for (const ValueWord& entry : table)
    if (entry.value == value) return entry.word;
  return nullptr;
}

// Writes `word` (or `missing` when there is none) and returns 1 or 0 accordingly.
int32_t Put(const char* word, OLAString& out, const char* missing = "") {
  out.SetText(word ? word : missing);
  return word ? 1 : 0;
}

}  // namespace

int32_t CLXEnumToString::ClearedStateToString(int32_t state, OLAString& out) const {
  return Put(WordAt(kClearedStates, state), out, "UNKNOWN");
}

int32_t CLXEnumToString::ItemTypeToString(int32_t type, OLAString& out) const {
  return Put(WordAt(kItemTypes, type), out);
}

int32_t CLXEnumToString::JobStatusToString(int32_t status, OLAString& out) const {
  return Put(WordAt(kJobStatuses, status), out);
}

int32_t CLXEnumToString::TermTypeToString(int32_t type, OLAString& out) const {
  return Put(WordAt(kTermTypes, type), out);
}

int32_t CLXEnumToString::TemplateTypeToString(int32_t type, OLAString& out) const {
  return Put(WordAt(kTemplateTypes, type), out);
}

int32_t CLXEnumToString::AlignmentToString(int32_t alignment, OLAString& out) const {
  return Put(WordAt(kAlignments, alignment), out);
}

int32_t CLXEnumToString::VertAlignToString(int32_t alignment, OLAString& out) const {
  Put(WordAt(kVertAlignments, alignment & kVertAlignWordMask), out);
  return alignment & kVertAlignFlag;
}

int32_t CLXEnumToString::BorderToString(int32_t border, OLAString& out) const {
  const char* word = FindWord(kBorders, border);
  // Combinations are never spelled out bit by bit: a coarse box or everything.
  if (!word) word = border < 15 ? "Fullbox" : "All";
  return Put(word, out);
}

int32_t CLXEnumToString::PrintOnPagesToString(int32_t pages, OLAString& out) const {
  const char* word = FindWord(kPrintOnPages, pages);
  if (!word) word = FindWord(kSinglePages, pages ^ kPreprintedBit);
  return Put(word, out);
}

int32_t CLXEnumToString::ColumnTypeToString(int32_t type, OLAString& out) const {
  return Put(WordAt(kColumnTypes, type), out);
}

int32_t CLXEnumToString::StyleFieldToString(int32_t field, OLAString& out) const {
  return Put(WordAt(kStyleFields, field), out);
}

const char* DocumentTypeName(long type) {
  const char* name = WordAt(kDocumentTypes, type);
  return name ? name : "Unknown";
}

bool IsHostFormType(long type) { return type >= 1 && type <= 3; }
