// The records of the "styles", "invoices" and "estimates" sections of a company fixture:
// templates, and the transactions that refer to them and to list records.
#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/HostModel.h"
#include "refhost/Fixture.h"

namespace parcelon::refhost {

namespace {

using json = nlohmann::json;

// The most lines one transaction, and the most fields or columns one template, may have; the
// most custom fields of one line.
constexpr size_t kMaxLines = 10000;
constexpr size_t kMaxStyleParts = 1000;
constexpr size_t kMaxCustomFields = 100;
// The most memory the records of these sections may take besides their texts, so that a fixture
// of many small objects ("lines": [{}, {}, ...]) cannot make the host exhaust memory.
constexpr size_t kMaxRecordBytes = size_t(256) << 20;

// Counts `count` records of `size` bytes for the array `field` of the object at `pointer` (the
// whole document for ""); fails when they would take the records beyond kMaxRecordBytes.
void Spend(FixtureContext& context, const std::string& pointer, std::string_view field, size_t count,
           size_t size) {
  if (count > (kMaxRecordBytes - context.recordBytes) / size)
    FixtureReader::FailAt(context, pointer,
                          std::string(field) + ": the transactions and templates would take more than " +
                              std::to_string(kMaxRecordBytes >> 20) + " MiB");
  context.recordBytes += count * size;
}

// Counts one record of Record's section, read with `r`.
template <class Record>
void SpendRecord(FixtureReader& r) {
  Spend(r.Context(), "", ListName(Record::kList), 1, sizeof(Record));
}

// A host code and the name a fixture gives it.
struct NamedCode {
  std::string_view name;
  LONG value;
};

constexpr NamedCode kClearedStates[] = {
    {"error", csError},     {"uncleared", csUncleared},   {"pending", csPending},
    {"cleared", csCleared}, {"downloaded", csDownloaded},
};

constexpr NamedCode kTemplateTypes[] = {
    {"invoice", tplInvoice},     {"creditMemo", tplCreditMemo},
    {"cashSale", tplCashSale},   {"purchaseOrder", tplPurchaseOrder},
    {"statement", tplStatement}, {"estimate", tplEstimate},
};

constexpr NamedCode kHorzAligns[] = {
    {"left", haLeft},         {"center", haCenter},   {"right", haRight},
    {"indented", haIndented}, {"decimal", haDecimal}, {"checkAmount", haCheckAmount},
};

constexpr NamedCode kVertAligns[] = {{"top", vaTop}, {"center", vaCenter}, {"bottom", vaBottom}};

constexpr NamedCode kBorders[] = {
    {"none", bdNone},       {"left", bdLeft},       {"right", bdRight},     {"top", bdTop},
    {"bottom", bdBottom},   {"fullbox", bdFullbox}, {"under", bdUnder},     {"vCenter", bdVCenter},
    {"hCenter", bdHCenter}, {"left2", bdLeft2},     {"right2", bdRight2},   {"top2", bdTop2},
    {"bottom2", bdBottom2}, {"dashed", bdDashed},   {"all", bdAll},
};

constexpr NamedCode kPrintOnPages[] = {
    {"first", popFirst}, {"middle", popMiddle},         {"last", popLast},
    {"all", popAll},     {"preprinted", popPreprinted}, {"always", popAlways},
};

constexpr NamedCode kColumnTypes[] = {
    {"balance", ctBalance},     {"percentage", ctPercentage},
    {"quantity", ctQuantity},   {"string", ctString},
    {"date", ctDate},           {"logo", ctLogo},
    {"label", ctLabel},         {"art", ctArt},
    {"labelBlueText", ctLabelBlueText}, {"labelWhiteOnBlue", ctLabelWhiteOnBlue},
    {"none", ctNone},
};

constexpr NamedCode kStyleFieldIds[] = {
    {"compVatId", sfCompVatId},
    {"date", sfDate},
    {"invNum", sfInvNum},
    {"billTo", sfBillTo},
    {"shipTo", sfShipTo},
    {"custVatId", sfCustVatId},
    {"poNum", sfPoNum},
    {"terms", sfTerms},
    {"dueDate", sfDueDate},
    {"rep", sfRep},
    {"shipDate", sfShipDate},
    {"shipVia", sfShipVia},
    {"fob", sfFob},
    {"job", sfJob},
    {"custFldBox1", sfCustFldBox1},
    {"custFldBox2", sfCustFldBox2},
    {"custFldBox3", sfCustFldBox3},
    {"custFldBox4", sfCustFldBox4},
    {"custFldBox5", sfCustFldBox5},
    {"custFldBox6", sfCustFldBox6},
    {"custFldBox7", sfCustFldBox7},
    {"other1", sfOther1},
    {"serviceDate", sfServiceDate},
    {"item", sfItem},
    {"itemDesc", sfItemDesc},
    {"custFld1", sfCustFld1},
    {"custFld2", sfCustFld2},
    {"custFld3", sfCustFld3},
    {"custFld4", sfCustFld4},
    {"custFld5", sfCustFld5},
    {"class", sfClass},
    {"other2", sfOther2},
    {"qty", sfQty},
    {"other3", sfOther3},
    {"rate", sfRate},
    {"itemTotal", sfItemTotal},
    {"estMarkupItem", sfEstMarkupItem},
    {"itemAmount", sfItemAmount},
    {"title", sfTitle},
    {"custMsg", sfCustMsg},
    {"vatSubtotal", sfVatSubtotal},
    {"totalItemTotal", sfTotalItemTotal},
    {"estMarkupTotal", sfEstMarkupTotal},
    {"totalAmount", sfTotalAmount},
    {"signature", sfSignature},
    {"estQty", sfEstQty},
    {"estRate", sfEstRate},
    {"estAmt", sfEstAmt},
    {"prevQty", sfPrevQty},
    {"prevRate", sfPrevRate},
    {"prevAmt", sfPrevAmt},
    {"prevPercent", sfPrevPercent},
    {"curPercent", sfCurPercent},
    {"totalPercent", sfTotalPercent},
    {"compName", sfCompName},
    {"compAddress", sfCompAddress},
    {"logo", sfLogo},
    {"staticText", sfStaticText},
    {"pendingArt", sfPendingArt},
    {"jobColumn", sfJobColumn},
    {"balanceDue", sfBalanceDue},
    {"subtotal", sfSubtotal},
    {"salesTax", sfSalesTax},
    {"prePayments", sfPrePayments},
    {"accountNum", sfAccountNum},
    {"stmtAmountDue", sfStmtAmountDue},
    {"stmtAmountEnclosed", sfStmtAmountEnclosed},
    {"stmtBalance", sfStmtBalance},
    {"stmtCurrent", sfStmtCurrent},
    {"stmtDue1To30", sfStmtDue1To30},
    {"stmtDue31To60", sfStmtDue31To60},
    {"stmtDue61To90", sfStmtDue61To90},
    {"stmtDueOver90", sfStmtDueOver90},
    {"stmtAmountDueFooter", sfStmtAmountDueFooter},
    {"stmtShowAging", sfStmtShowAging},
    {"compEmail", sfCompEmail},
    {"compWebSite", sfCompWebSite},
    {"compPhone", sfCompPhone},
    {"compFax", sfCompFax},
    {"soNumber", sfSONumber},
    {"soQty", sfSOQty},
    {"prevInvoiceQtyStyleRefundedArt", sfPrevInvoiceQtyStyleRefundedArt},
};

// Reads a host code: one of `names`, or any whole number, so that a fixture can also give the
// values the host does not define. False when the field is absent.
bool ReadCode(FixtureReader& r, const char* field, LONG& out, std::span<const NamedCode> names) {
  if (!r.Has(field)) return false;
  const json& value = r.Json()[field];
  if (!value.is_string()) return r.Read(field, out);
  r.Accept(field);
  const auto found = std::find_if(names.begin(), names.end(), [&](const NamedCode& code) {
    return code.name == value.get_ref<const std::string&>();
  });
  if (found == names.end()) {
    std::string choices;
    for (size_t i = 0; i < names.size() && i < 6; ++i)
      (choices += choices.empty() ? "" : ", ") += names[i].name;
    r.Fail(field, "expected a name such as " + choices + (names.size() > 6 ? ", ..." : "") +
                      " or a whole number");
  }
  out = found->value;
  return true;
}

// Calls `read(FixtureReader&)` on the object `field` of `r`, then Finish(); nothing when the
// field is absent or null.
template <class Read>
void ReadObject(FixtureReader& r, const char* field, Read&& read) {
  if (!r.Has(field)) return;
  r.Accept(field);
  const json& value = r.Json()[field];
  if (value.is_null()) return;
  FixtureReader inner(r.Context(), value, r.Pointer() + "/" + field);
  read(inner);
  inner.Finish();
}

// The number of elements of the array `field`; 0 when it is absent or no array.
size_t ArraySize(const FixtureReader& r, const char* field) {
  if (!r.Has(field)) return 0;
  const json& value = r.Json()[field];
  return value.is_array() ? value.size() : 0;
}

// Reads the objects of the array `field` into `parts`, with `read(FixtureReader&, Part&, index)`
// for each; refuses more than `limit` of them, or more than the budget allows.
template <class Part, class Read>
void ReadParts(FixtureReader& r, const char* field, size_t limit, std::vector<Part>& parts,
               Read&& read) {
  const size_t count = ArraySize(r, field);
  if (count > limit) r.Fail(field, "more than " + std::to_string(limit) + " elements");
  Spend(r.Context(), r.Pointer(), field, count, sizeof(Part));
  parts.reserve(count);
  r.ForEach(field, [&](FixtureReader& element) {
    const size_t index = parts.size();
    read(element, parts.emplace_back(), index);
  });
}

// ---- Templates ------------------------------------------------------------------------------

void ReadFont(FixtureReader& r, StyleFont& font) {
  r.Read("name", font.name);
  r.Read("size", font.size, 0, 1000);
  r.Read("color", font.color, 0, 0xFFFFFF);
  r.Read("bold", font.bold);
  r.Read("italic", font.italic);
  r.Read("underline", font.underline);
  r.Read("strikeThrough", font.strikeThrough);
}

void ReadTextArea(FixtureReader& r, StyleTextArea& area) {
  ReadCode(r, "horzTextAlign", area.horzAlign, kHorzAligns);
  ReadCode(r, "vertTextAlign", area.vertAlign, kVertAligns);
  ReadCode(r, "pagesPrintedOn", area.pagesPrintedOn, kPrintOnPages);
  ReadCode(r, "border", area.border, kBorders);
  r.Read("width", area.width, 0);
  r.Read("height", area.height, 0);
  r.Read("multiLine", area.multiLine);
  r.Read("usesAscent", area.usesAscent);
  ReadObject(r, "font", [&](FixtureReader& f) { ReadFont(f, area.font); });
}

void ReadDataArea(FixtureReader& r, StyleDataArea& area) {
  ReadTextArea(r, area);
  ReadCode(r, "dataType", area.dataType, kColumnTypes);
  r.Read("precision", area.precision, 0, 10);
  r.Read("showCurrency", area.showCurrency);
  r.Read("showZeroAmts", area.showZeroAmts);
  r.Read("taxable", area.taxable);
}

// The flags of a field or column.
template <class Part>
void ReadPartFlags(FixtureReader& r, Part& part) {
  r.Read("onScreen", part.onScreen);
  r.Read("onPrint", part.onPrint);
  r.Read("usesLabel", part.usesLabel);
  r.Read("usesData", part.usesData);
}

// What fields and columns have in common.
template <class Part>
void ReadStylePart(FixtureReader& r, Part& part) {
  if (!ReadCode(r, "id", part.id, kStyleFieldIds)) r.Fail("id", "missing required field");
  ReadPartFlags(r, part);
}

void ReadField(FixtureReader& r, StyleField& field, size_t) {
  ReadStylePart(r, field);
  ReadObject(r, "label", [&](FixtureReader& l) {
    ReadTextArea(l, field.label);
    l.Read("label", field.label.label);
    l.Read("x", field.label.x);
    l.Read("y", field.label.y);
  });
  ReadObject(r, "data", [&](FixtureReader& d) {
    ReadDataArea(d, field.data);
    d.Read("x", field.data.x);
    d.Read("y", field.data.y);
  });
}

void ReadColumnAreas(FixtureReader& r, StyleColumn& column, size_t index) {
  column.order = LONG(index);
  r.Read("order", column.order);
  ReadObject(r, "label", [&](FixtureReader& l) {
    ReadTextArea(l, column.label);
    l.Read("label", column.label.label);
  });
  ReadObject(r, "data", [&](FixtureReader& d) { ReadDataArea(d, column.data); });
}

void ReadColumn(FixtureReader& r, StyleColumn& column, size_t index) {
  ReadStylePart(r, column);
  ReadColumnAreas(r, column, index);
}

// The tax-flag column: a column without identifier, after the others unless its order says.
void ReadTaxFlagColumn(FixtureReader& r, StyleTable& table) {
  StyleColumn& column = table.taxFlag.emplace();
  ReadPartFlags(r, column);
  ReadColumnAreas(r, column, table.columns.size());
}

}  // namespace

void ReadStyle(FixtureReader& r, Style& style, Company&) {
  SpendRecord<Style>(r);
  r.Require("recNum", style.recNum, 1);
  r.Require("fullName", style.fullName);
  ReadCode(r, "type", style.type, kTemplateTypes);
  r.Read("predefined", style.predefined);
  r.Read("width", style.width, 0);
  r.Read("height", style.height, 0);
  r.Read("leftMargin", style.leftMargin, 0);
  r.Read("rightMargin", style.rightMargin, 0);
  r.Read("topMargin", style.topMargin, 0);
  r.Read("bottomMargin", style.bottomMargin, 0);
  ReadParts(r, "fields", kMaxStyleParts, style.fields, ReadField);
  ReadObject(r, "table", [&](FixtureReader& t) {
    StyleTable& table = style.table;
    t.Read("width", table.width, 0);
    t.Read("height", table.height, 0);
    t.Read("labelHeight", table.labelHeight, 0);
    ReadParts(t, "columns", kMaxStyleParts, table.columns, ReadColumn);
    ReadObject(t, "taxFlag", [&](FixtureReader& c) { ReadTaxFlagColumn(c, table); });
  });
}

// ---- Transactions ---------------------------------------------------------------------------

namespace {

void ReadLineItem(FixtureReader& r, LineItem& line, Company& company) {
  r.ReadReference<Item>("item", line.item, company, "an item");
  r.Read("description", line.description);
  r.Read("quantity", line.quantity);
  r.Read("unitPrice", line.unitPrice);
  r.Read("amount", line.amount);
  r.ReadReference<Class>("class", line.lineClass, company, "a class");
  r.Read("other1", line.other1);
  r.Read("other2", line.other2);
  r.Read("isTaxable", line.taxable);
  r.Read("paid", line.paid);
  r.Read("openBalance", line.openBalance);
  ReadCode(r, "clearedState", line.clearedState, kClearedStates);
  const size_t customFields = ArraySize(r, "customFields");
  if (customFields > kMaxCustomFields)
    r.Fail("customFields", "more than " + std::to_string(kMaxCustomFields) + " elements");
  Spend(r.Context(), r.Pointer(), "customFields", customFields, sizeof(Text));
  line.customFields.reserve(customFields);
  r.ForEachValue("customFields", [&](const json& value, const std::string& pointer) {
    Text& text = line.customFields.emplace_back();
    if (!value.is_string() || !Utf8ToText(value.get_ref<const std::string&>(), text))
      FixtureReader::FailAt(r.Context(), pointer, "expected a string");
  });
  r.Read("isEndOfGroup", line.endOfGroup);
  r.Read("isPrintable", line.printable);
}

constexpr std::pair<const char*, Amount InvoiceLine::*> kProgressAmounts[] = {
    {"currentPercentage", &InvoiceLine::currentPercentage},
    {"estimateAmount", &InvoiceLine::estimateAmount},
    {"estimateQuantity", &InvoiceLine::estimateQuantity},
    {"estimateRate", &InvoiceLine::estimateRate},
    {"priorAmount", &InvoiceLine::priorAmount},
    {"priorPercentage", &InvoiceLine::priorPercentage},
    {"priorQuantity", &InvoiceLine::priorQuantity},
    {"priorRate", &InvoiceLine::priorRate},
    {"totalPercentage", &InvoiceLine::totalPercentage},
};

// The header fields that invoices and estimates share; `typeName` is the default type name.
void ReadSalesTransaction(FixtureReader& r, SalesTransaction& record, Company& company,
                          const char* typeName) {
  r.Require("recNum", record.recNum, 1);
  r.Read("transactionNumber", record.transactionNumber);
  record.typeName = AsciiText(typeName);
  r.Read("transactionTypeName", record.typeName);
  r.ReadDate("date", record.date);
  r.ReadDate("dueDate", record.dueDate);
  r.Read("amount", record.amount);
  r.ReadTime("createTimeStamp", record.createTime);
  r.ReadTime("modTimeStamp", record.modTime);
  r.ReadCustomerReference("customer", record.customer, company);
  r.Read("customerIsTaxable", record.customerTaxable);
  r.ReadReference<Term>("terms", record.terms, company, "a term");
  r.Read("billingAddress", record.billingAddress);
  r.ReadReference<Class>("class", record.transactionClass, company, "a class");
  r.ReadReference<SalesRep>("salesRep", record.salesRep, company, "a sales rep");
  r.ReadReference<ShipMethod>("shipMethod", record.shipMethod, company, "a ship method");
  r.ReadReference<CustomerMessage>("customerMessage", record.customerMessage, company,
                                   "a customer message");
  r.ReadReference<Style>("customStyle", record.style, company, "a style");
  r.ReadReference<Item>("salesTaxItem", record.salesTaxItem, company, "an item");
  r.Read("salesTaxRate", record.salesTaxRate);
  r.Read("salesTaxTotal", record.salesTaxTotal);
}

}  // namespace

void ReadInvoice(FixtureReader& r, Invoice& invoice, Company& company) {
  SpendRecord<Invoice>(r);
  ReadSalesTransaction(r, invoice, company, "Invoice");
  r.Read("invoiceNumber", invoice.invoiceNumber);
  r.Read("remainingBalance", invoice.remainingBalance);
  r.Read("suggestedDiscountAmount", invoice.suggestedDiscountAmount);
  r.ReadDate("suggestedDiscountDate", invoice.suggestedDiscountDate);
  r.Read("allowPayment", invoice.allowPayment);
  ReadParts(r, "lines", kMaxLines, invoice.lines,
            [&](FixtureReader& l, InvoiceLine& line, size_t) {
              ReadLineItem(l, line, company);
              l.ReadDate("serviceDate", line.serviceDate);
              for (const auto& [field, member] : kProgressAmounts) l.Read(field, line.*member);
            });
}

void ReadEstimate(FixtureReader& r, Estimate& estimate, Company& company) {
  SpendRecord<Estimate>(r);
  ReadSalesTransaction(r, estimate, company, "Estimate");
  r.Read("estimateNumber", estimate.estimateNumber);
  ReadParts(r, "lines", kMaxLines, estimate.lines,
            [&](FixtureReader& l, EstimateLine& line, size_t) {
              ReadLineItem(l, line, company);
              l.Read("markup", line.markup);
              l.Read("nominalTotal", line.nominalTotal);
            });
}

}  // namespace parcelon::refhost
