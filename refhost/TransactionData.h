// Invoices, estimates and their lines, and form templates ("styles"), as plain records of the
// reference host's company.
//
// Part of CompanyData.h, which includes it after the value types (RecNum, Amount, Address) that
// these records use; include CompanyData.h rather than this header. Each record keeps the record
// number that CompanyData's lists index by, and a static kList naming its list. References to
// list records are record numbers, 0 when not set; dates are OLE dates, 0 when not set (0 is a
// valid value and is handed out as it is); time stamps are seconds since 1970.
#pragma once

#include <optional>
#include <vector>

#include "refhost/ListKind.h"
#include "refhost/Text.h"

namespace parcelon::refhost {

// What every invoice and estimate line has. Whether the amount is zero and whether the
// quantity is blank are not kept: they follow from `amount` and `quantity`.
struct LineItem {
  RecNum item = 0;
  Text description;
  Amount unitPrice;
  Amount amount;
  // Held here for the second versions of both line interfaces; empty is a blank quantity.
  Amount quantity;
  RecNum lineClass = 0;
  Text other1;
  Text other2;
  bool taxable = false;
  bool paid = false;
  Amount openBalance;
  LONG clearedState = 1;  // LXClearedState, csUncleared
  std::vector<Text> customFields;
  bool endOfGroup = false;
  bool printable = true;
};

struct InvoiceLine : LineItem {
  DATE serviceDate = 0;
  // The progress-invoice figures, against the estimate and the invoices before this one.
  Amount currentPercentage;
  Amount estimateAmount;
  Amount estimateQuantity;
  Amount estimateRate;
  Amount priorAmount;
  Amount priorPercentage;
  Amount priorQuantity;
  Amount priorRate;
  Amount totalPercentage;
};

struct EstimateLine : LineItem {
  Amount markup;
  // The line's total before markup.
  Amount nominalTotal;
};

// What invoices and estimates have in common.
struct SalesTransaction {
  RecNum recNum = 0;
  LONG transactionNumber = 0;
  Text typeName;
  DATE date = 0;
  DATE dueDate = 0;
  Amount amount;
  LONG createTime = 0;
  LONG modTime = 0;
  // A customer or job of the names list.
  RecNum customer = 0;
  bool customerTaxable = false;
  RecNum terms = 0;
  Address billingAddress;
  RecNum transactionClass = 0;
  RecNum salesRep = 0;
  RecNum shipMethod = 0;
  RecNum customerMessage = 0;
  // The template the transaction prints with.
  RecNum style = 0;
  RecNum salesTaxItem = 0;
  // A percentage, kept as an amount as the host hands it out.
  Amount salesTaxRate;
  Amount salesTaxTotal;
};

struct Invoice : SalesTransaction {
  static constexpr ListKind kList = ListKind::Invoices;
  Text invoiceNumber;
  Amount remainingBalance;
  Amount suggestedDiscountAmount;
  DATE suggestedDiscountDate = 0;
  bool allowPayment = false;
  std::vector<InvoiceLine> lines;
};

struct Estimate : SalesTransaction {
  static constexpr ListKind kList = ListKind::Estimates;
  Text estimateNumber;
  std::vector<EstimateLine> lines;
};

struct StyleFont {
  Text name = u"Arial";
  LONG size = 10;  // points
  LONG color = 0;  // 0x00BBGGRR
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikeThrough = false;
};

// A label or data area of a field or column.
struct StyleTextArea {
  LONG horzAlign = 0;  // LXHorzAlign
  LONG vertAlign = 0;  // LXVertAlign with its flag bit
  LONG pagesPrintedOn = 7;  // LXPrintOnPages bits, popAll
  LONG border = 0;  // LXBorder bits
  LONG width = 0;
  LONG height = 0;
  bool multiLine = false;
  bool usesAscent = false;
  StyleFont font;
};

// A data area: what kind of value it shows and how amounts show.
struct StyleDataArea : StyleTextArea {
  LONG dataType = 3;  // LXColumnType, ctString
  LONG precision = 2;
  bool showCurrency = false;
  bool showZeroAmts = false;
  bool taxable = false;
};

struct StyleFieldLabel : StyleTextArea {
  Text label;
  LONG x = 0;
  LONG y = 0;
};

struct StyleFieldData : StyleDataArea {
  LONG x = 0;
  LONG y = 0;
};

// A free-standing field of a template.
struct StyleField {
  LONG id = 0;  // LXStyleFieldID
  bool onScreen = true;
  bool onPrint = true;
  bool usesLabel = true;
  bool usesData = true;
  StyleFieldLabel label;
  StyleFieldData data;
};

struct StyleColumnLabel : StyleTextArea {
  Text label;
};

struct StyleColumnData : StyleDataArea {};

// A column of the item table.
struct StyleColumn {
  LONG id = 0;  // LXStyleFieldID
  bool onScreen = true;
  bool onPrint = true;
  bool usesLabel = true;
  bool usesData = true;
  LONG order = 0;
  StyleColumnLabel label;
  StyleColumnData data;
};

struct StyleTable {
  LONG width = 0;
  LONG height = 0;
  LONG labelHeight = 0;
  std::vector<StyleColumn> columns;
  // The column of the taxable mark, when the table has one; its id is not used.
  std::optional<StyleColumn> taxFlag;
};

// A form template.
struct Style {
  static constexpr ListKind kList = ListKind::Styles;
  RecNum recNum = 0;
  Text fullName;
  LONG type = 0;  // LXTemplateType
  bool predefined = false;
  LONG width = 0;
  LONG height = 0;
  LONG leftMargin = 0;
  LONG rightMargin = 0;
  LONG topMargin = 0;
  LONG bottomMargin = 0;
  std::vector<StyleField> fields;
  StyleTable table;
};

}  // namespace parcelon::refhost
