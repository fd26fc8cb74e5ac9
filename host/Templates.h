// The host's form templates ("styles"): page, free-standing fields with their label and data
// areas, the item table with its columns, and fonts.
//
// Sizes and coordinates are whole numbers in the host's layout units.
#pragma once

#include "host/Attributes.h"
#include "platform/ComBase.h"
#include "platform/ComPtr.h"

// Form type of a template.
enum LXTemplateType {
  tplInvoice = 0,
  tplCreditMemo = 1,
  tplCashSale = 2,
  tplPurchaseOrder = 3,
  tplStatement = 4,
  tplEstimate = 5,
};

// Horizontal text alignment of a label or data area.
enum LXHorzAlign {
  haLeft = 0,
  haCenter = 1,
  haRight = 2,
  haIndented = 3,
  haDecimal = 4,
  haCheckAmount = 5,
};

// Vertical text alignment: the low seven bits; bit 7 is a separate flag in the same value.
enum LXVertAlign {
  vaTop = 0,
  vaCenter = 1,
  vaBottom = 2,
  vaFlagBit = 0x80,
};

// Border of an area: a bit set.
enum LXBorder {
  bdNone = 0,
  bdLeft = 1,
  bdRight = 2,
  bdTop = 4,
  bdBottom = 8,
  bdFullbox = 15,
  bdUnder = 16,
  bdVCenter = 32,
  bdHCenter = 64,
  bdLeft2 = 128,
  bdRight2 = 256,
  bdTop2 = 512,
  bdBottom2 = 1024,
  bdDashed = 2048,
  bdAll = 4095,
};

// Pages an area prints on: a bit set.
enum LXPrintOnPages {
  popFirst = 1,
  popMiddle = 2,
  popLast = 4,
  popAll = 7,
  popPreprinted = 8,
  popAlways = 15,
};

// Data type of a data area or column.
enum LXColumnType {
  ctBalance = 0,
  ctPercentage = 1,
  ctQuantity = 2,
  ctString = 3,
  ctDate = 4,
  ctLogo = 5,
  ctLabel = 6,
  ctArt = 7,
  ctLabelBlueText = 8,
  ctLabelWhiteOnBlue = 9,
  ctNone = 10,
};

// Identifier of a template field or column. The host leaves 38, 39, 43, 63 and 79 unassigned.
enum LXStyleFieldID {
  sfCompVatId = 0,
  sfDate = 1,
  sfInvNum = 2,
  sfBillTo = 3,
  sfShipTo = 4,
  sfCustVatId = 5,
  sfPoNum = 6,
  sfTerms = 7,
  sfDueDate = 8,
  sfRep = 9,
  sfShipDate = 10,
  sfShipVia = 11,
  sfFob = 12,
  sfJob = 13,
  sfCustFldBox1 = 14,
  sfCustFldBox2 = 15,
  sfCustFldBox3 = 16,
  sfCustFldBox4 = 17,
  sfCustFldBox5 = 18,
  sfCustFldBox6 = 19,
  sfCustFldBox7 = 20,
  sfOther1 = 21,
  sfServiceDate = 22,
  sfItem = 23,
  sfItemDesc = 24,
  sfCustFld1 = 25,
  sfCustFld2 = 26,
  sfCustFld3 = 27,
  sfCustFld4 = 28,
  sfCustFld5 = 29,
  sfClass = 30,
  sfOther2 = 31,
  sfQty = 32,
  sfOther3 = 33,
  sfRate = 34,
  sfItemTotal = 35,
  sfEstMarkupItem = 36,
  sfItemAmount = 37,
  sfTitle = 40,
  sfCustMsg = 41,
  sfVatSubtotal = 42,
  sfTotalItemTotal = 44,
  sfEstMarkupTotal = 45,
  sfTotalAmount = 46,
  sfSignature = 47,
  sfEstQty = 48,
  sfEstRate = 49,
  sfEstAmt = 50,
  sfPrevQty = 51,
  sfPrevRate = 52,
  sfPrevAmt = 53,
  sfPrevPercent = 54,
  sfCurPercent = 55,
  sfTotalPercent = 56,
  sfCompName = 57,
  sfCompAddress = 58,
  sfLogo = 59,
  sfStaticText = 60,
  sfPendingArt = 61,
  sfJobColumn = 62,
  sfBalanceDue = 64,
  sfSubtotal = 65,
  sfSalesTax = 66,
  sfPrePayments = 67,
  sfAccountNum = 68,
  sfStmtAmountDue = 69,
  sfStmtAmountEnclosed = 70,
  sfStmtBalance = 71,
  sfStmtCurrent = 72,
  sfStmtDue1To30 = 73,
  sfStmtDue31To60 = 74,
  sfStmtDue61To90 = 75,
  sfStmtDueOver90 = 76,
  sfStmtAmountDueFooter = 77,
  sfStmtShowAging = 78,
  sfCompEmail = 80,
  sfCompWebSite = 81,
  sfCompPhone = 82,
  sfCompFax = 83,
  sfSONumber = 84,
  sfSOQty = 85,
  sfPrevInvoiceQtyStyleRefundedArt = 86,
};

struct IStyleFont : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* name) = 0;
  // Size in points.
  virtual HRESULT STDMETHODCALLTYPE GetSize(LONG* points) = 0;
  // Colour as 0x00BBGGRR.
  virtual HRESULT STDMETHODCALLTYPE GetColor(LONG* rgb) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetBold(VARIANT_BOOL* bold) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItalic(VARIANT_BOOL* italic) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUnderline(VARIANT_BOOL* underline) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetStrikeThrough(VARIANT_BOOL* strikeThrough) = 0;
};

// What every label and data area of a field or column has.
struct IStyleTextArea : IUnknown {
  // An LXHorzAlign.
  virtual HRESULT STDMETHODCALLTYPE GetHorzTextAlign(LONG* alignment) = 0;
  // An LXVertAlign, with its flag bit.
  virtual HRESULT STDMETHODCALLTYPE GetVertTextAlign(LONG* alignment) = 0;
  // LXPrintOnPages bits.
  virtual HRESULT STDMETHODCALLTYPE GetPagesPrintedOn(LONG* pages) = 0;
  // LXBorder bits.
  virtual HRESULT STDMETHODCALLTYPE GetBorder(LONG* border) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetWidth(LONG* width) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetHeight(LONG* height) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMultiLine(VARIANT_BOOL* multiLine) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUsesAscent(VARIANT_BOOL* usesAscent) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFont(IStyleFont** font) = 0;
};

// What the data areas of fields and columns add: the kind of value and how amounts show.
struct IStyleDataArea : IStyleTextArea {
  // An LXColumnType.
  virtual HRESULT STDMETHODCALLTYPE GetDataType(LONG* type) = 0;
  // Number of decimals of an amount.
  virtual HRESULT STDMETHODCALLTYPE GetPrecision(LONG* decimals) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetShowCurrency(VARIANT_BOOL* show) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetShowZeroAmts(VARIANT_BOOL* show) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTaxable(VARIANT_BOOL* taxable) = 0;
};

// The label of a free-standing field, placed on the page.
struct IStyleFieldLabel : IStyleTextArea {
  virtual HRESULT STDMETHODCALLTYPE GetLabel(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetX(LONG* x) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetY(LONG* y) = 0;
};

// The data area of a free-standing field, placed on the page.
struct IStyleFieldData : IStyleDataArea {
  virtual HRESULT STDMETHODCALLTYPE GetX(LONG* x) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetY(LONG* y) = 0;
};

// A free-standing field of a template.
struct IStyleField : IUnknown {
  // An LXStyleFieldID.
  virtual HRESULT STDMETHODCALLTYPE GetID(LONG* id) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOnScreen(VARIANT_BOOL* onScreen) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOnPrint(VARIANT_BOOL* onPrint) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUsesLabel(VARIANT_BOOL* usesLabel) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUsesData(VARIANT_BOOL* usesData) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLabel(IStyleFieldLabel** label) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetData(IStyleFieldData** data) = 0;
};

// The fields of a template, in template order from index 0.
struct IStyleFields : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IStyleField** field) = 0;
};

// The heading of an item-table column.
struct IStyleColumnLabel : IStyleTextArea {
  virtual HRESULT STDMETHODCALLTYPE GetLabel(BSTR* text) = 0;
};

// The data cells of an item-table column.
struct IStyleColumnData : IStyleDataArea {};

// A column of the item table.
struct IStyleColumn : IUnknown {
  // An LXStyleFieldID.
  virtual HRESULT STDMETHODCALLTYPE GetID(LONG* id) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOnScreen(VARIANT_BOOL* onScreen) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOnPrint(VARIANT_BOOL* onPrint) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUsesLabel(VARIANT_BOOL* usesLabel) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUsesData(VARIANT_BOOL* usesData) = 0;
  // Position among the columns, from left to right.
  virtual HRESULT STDMETHODCALLTYPE GetOrder(LONG* order) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLabel(IStyleColumnLabel** label) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetData(IStyleColumnData** data) = 0;
};

// The columns of the item table, from index 0.
struct IStyleColumns : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IStyleColumn** column) = 0;
};

// The item table of a template.
struct IStyleTable : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetWidth(LONG* width) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetHeight(LONG* height) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLabelHeight(LONG* height) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetColumns(IStyleColumns** columns) = 0;
};

// The item table's second version: the column of the taxable mark ("T") that the host prints
// beside each taxable line. It has no identifier of its own among LXStyleFieldID.
struct IStyleTable2 : IStyleTable {
  // The tax-flag column, or null when the table has none.
  virtual HRESULT STDMETHODCALLTYPE GetTaxFlagColumn(IStyleColumn** column) = 0;
};

// A form template.
struct IStyle : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetRecNum(LONG* recNum) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFullName(BSTR* fullName) = 0;
  // An LXTemplateType.
  virtual HRESULT STDMETHODCALLTYPE GetType(LONG* type) = 0;
  // True for a template that comes with the host.
  virtual HRESULT STDMETHODCALLTYPE GetPredefined(VARIANT_BOOL* predefined) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetWidth(LONG* width) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetHeight(LONG* height) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLeftMargin(LONG* margin) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRightMargin(LONG* margin) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTopMargin(LONG* margin) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetBottomMargin(LONG* margin) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFields(IStyleFields** fields) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTable(IStyleTable** table) = 0;
};

// The templates of a company file. GetItemByRecNum takes a VT_I4 VARIANT and fails with
// LX_E_NOTFOUND for an unknown record number.
struct IStyles : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IStyle** style) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IStyle** style) = 0;
};

PARCELON_DECLARE_IID(IStyleFont, 0xD289F767, 0x3441, 0x4902, 0x8E, 0x27, 0x97, 0xDF, 0x7C, 0x77, 0x8F, 0xED)
PARCELON_DECLARE_IID(IStyleTextArea, 0xB81349B4, 0x9205, 0x4598, 0xBB, 0xA8, 0xF8, 0xC7, 0xC0, 0x34, 0xF0, 0xAB)
PARCELON_DECLARE_IID(IStyleDataArea, 0x5A893907, 0x5AB5, 0x4EAF, 0xB6, 0x36, 0xB6, 0xF2, 0x38, 0x55, 0x0C, 0xFF)
PARCELON_DECLARE_IID(IStyleFieldLabel, 0xD3F6670B, 0xC9ED, 0x487F, 0xAE, 0xAD, 0x31, 0x0B, 0x4F, 0x88, 0x7F, 0xBB)
PARCELON_DECLARE_IID(IStyleFieldData, 0x00CFCFD5, 0x45A2, 0x4A03, 0xB8, 0x97, 0x53, 0xA8, 0x23, 0x10, 0x3A, 0x1E)
PARCELON_DECLARE_IID(IStyleField, 0x32D33379, 0x2C00, 0x4A29, 0x9F, 0x9A, 0x48, 0xFC, 0xD8, 0x49, 0x6B, 0x05)
PARCELON_DECLARE_IID(IStyleFields, 0xA4F77B0E, 0xF890, 0x4067, 0xA6, 0xA8, 0xCB, 0xA9, 0xEA, 0xA8, 0x80, 0x86)
PARCELON_DECLARE_IID(IStyleColumnLabel, 0x6AD31278, 0xE1A1, 0x4A09, 0xA9, 0x07, 0x6E, 0xB4, 0x86, 0xE1, 0xC9, 0x0F)
PARCELON_DECLARE_IID(IStyleColumnData, 0x3A845E1B, 0xAF4C, 0x40F2, 0xB2, 0x0C, 0xD6, 0xAA, 0xE8, 0x25, 0x97, 0xA6)
PARCELON_DECLARE_IID(IStyleColumn, 0xCB59BEC3, 0x624A, 0x4C82, 0x83, 0xAC, 0x4B, 0x45, 0xB9, 0xA4, 0xC6, 0xAF)
PARCELON_DECLARE_IID(IStyleColumns, 0x68BB7F77, 0xEBBF, 0x4122, 0xA7, 0xB8, 0xCE, 0xB2, 0xAC, 0xC2, 0xEA, 0xC4)
PARCELON_DECLARE_IID(IStyleTable, 0x0845FB34, 0x90B8, 0x408F, 0x95, 0xAA, 0x01, 0xFA, 0x04, 0x09, 0x78, 0xD7)
PARCELON_DECLARE_IID(IStyle, 0x926E48EE, 0xA016, 0x4BC6, 0xAA, 0x12, 0xBB, 0x15, 0x96, 0x27, 0xCA, 0xE6)
PARCELON_DECLARE_IID(IStyles, 0xAB3D499B, 0x51EB, 0x46FE, 0xBE, 0xA1, 0x9A, 0x58, 0x65, 0x1A, 0xDD, 0x19)

using IStyleFontPtr = ComPtr<IStyleFont>;
using IStyleTextAreaPtr = ComPtr<IStyleTextArea>;
using IStyleDataAreaPtr = ComPtr<IStyleDataArea>;
using IStyleFieldLabelPtr = ComPtr<IStyleFieldLabel>;
using IStyleFieldDataPtr = ComPtr<IStyleFieldData>;
using IStyleFieldPtr = ComPtr<IStyleField>;
using IStyleFieldsPtr = ComPtr<IStyleFields>;
using IStyleColumnLabelPtr = ComPtr<IStyleColumnLabel>;
using IStyleColumnDataPtr = ComPtr<IStyleColumnData>;
using IStyleColumnPtr = ComPtr<IStyleColumn>;
using IStyleColumnsPtr = ComPtr<IStyleColumns>;
using IStyleTablePtr = ComPtr<IStyleTable>;
using IStyleTable2Ptr = ComPtr<IStyleTable2>;
using IStylePtr = ComPtr<IStyle>;
using IStylesPtr = ComPtr<IStyles>;

PARCELON_DECLARE_IID(IStyleTable2, 0x5C1E0B7A, 0x2F64, 0x4D0B, 0x9A, 0x3E, 0x61, 0xC8, 0x0D, 0x47, 0xB2, 0x95)
