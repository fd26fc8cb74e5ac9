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

PARCELON_DECLARE_IID(IStyleFont, "D289F767-3441-4902-8E27-97DF7C778FED")
PARCELON_DECLARE_IID(IStyleTextArea, "B81349B4-9205-4598-BBA8-F8C7C034F0AB")
PARCELON_DECLARE_IID(IStyleDataArea, "5A893907-5AB5-4EAF-B636-B6F238550CFF")
PARCELON_DECLARE_IID(IStyleFieldLabel, "D3F6670B-C9ED-487F-AEAD-310B4F887FBB")
PARCELON_DECLARE_IID(IStyleFieldData, "00CFCFD5-45A2-4A03-B897-53A823103A1E")
PARCELON_DECLARE_IID(IStyleField, "32D33379-2C00-4A29-9F9A-48FCD8496B05")
PARCELON_DECLARE_IID(IStyleFields, "A4F77B0E-F890-4067-A6A8-CBA9EAA88086")
PARCELON_DECLARE_IID(IStyleColumnLabel, "6AD31278-E1A1-4A09-A907-6EB486E1C90F")
PARCELON_DECLARE_IID(IStyleColumnData, "3A845E1B-AF4C-40F2-B20C-D6AAE82597A6")
PARCELON_DECLARE_IID(IStyleColumn, "CB59BEC3-624A-4C82-83AC-4B45B9A4C6AF")
PARCELON_DECLARE_IID(IStyleColumns, "68BB7F77-EBBF-4122-A7B8-CEB2ACC2EAC4")
PARCELON_DECLARE_IID(IStyleTable, "0845FB34-90B8-408F-95AA-01FA040978D7")
PARCELON_DECLARE_IID(IStyle, "926E48EE-A016-4BC6-AA12-BB159627CAE6")
PARCELON_DECLARE_IID(IStyles, "AB3D499B-51EB-46FE-BEA1-9A58651ADD19")

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

PARCELON_DECLARE_IID(IStyleTable2, "5C1E0B7A-2F64-4D0B-9A3E-61C80D47B295")
