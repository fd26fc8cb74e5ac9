// The lines of the host's invoices and estimates, and their second versions.
//
// Quantities, rates and the progress-invoice figures of a line come as host amounts: they are
// written as the host formats them.
#pragma once

#include "host/HostValues.h"
#include "host/ListRecords.h"
#include "platform/ComBase.h"
#include "platform/ComPtr.h"

// Reconciliation state of a line.
enum LXClearedState {
  csError = 0,
  csUncleared = 1,
  csPending = 2,
  csCleared = 3,
  csDownloaded = 4,
};

// What every invoice and estimate line has. A line without class gives an empty class.
struct ILineItem : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetItem(IItem** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUnitPrice(IAmount** rate) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAmount(IAmount** amount) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIsAmountZero(VARIANT_BOOL* zero) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIsQuantityBlank(VARIANT_BOOL* blank) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetClass(IClass** lineClass) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOther1(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOther2(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIsTaxable(VARIANT_BOOL* taxable) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPaid(VARIANT_BOOL* paid) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOpenBalance(IAmount** balance) = 0;
  // An LXClearedState.
  virtual HRESULT STDMETHODCALLTYPE GetClearedState(LONG* state) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCustomFieldCount(LONG* count) = 0;
  // The custom field at index 0 to GetCustomFieldCount - 1.
  virtual HRESULT STDMETHODCALLTYPE GetCustomField(LONG index, BSTR* data) = 0;
};

struct IInvoiceItemLineItem : ILineItem {
  // 0 when the line has no service date.
  virtual HRESULT STDMETHODCALLTYPE GetServiceDate(DATE* date) = 0;
};

// Second version of an invoice line: grouping, printing, quantity and the progress-invoice
// figures (against the estimate the invoice bills, and the invoices before it).
struct IInvoiceItemLineItem2 : IInvoiceItemLineItem {
  // True for the line that closes a group item's members.
  virtual HRESULT STDMETHODCALLTYPE GetIsEndOfGroup(VARIANT_BOOL* endOfGroup) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIsPrintable(VARIANT_BOOL* printable) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetQuantity(IAmount** quantity) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCurrentPercentage(IAmount** percentage) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetEstimateAmount(IAmount** amount) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetEstimateQuantity(IAmount** quantity) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetEstimateRate(IAmount** rate) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPriorAmount(IAmount** amount) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPriorPercentage(IAmount** percentage) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPriorQuantity(IAmount** quantity) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPriorRate(IAmount** rate) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTotalPercentage(IAmount** percentage) = 0;
};

struct IEstimateItemLineItem : ILineItem {
  virtual HRESULT STDMETHODCALLTYPE GetMarkup(IAmount** markup) = 0;
  // The line's total before markup.
  virtual HRESULT STDMETHODCALLTYPE GetNominalTotal(IAmount** total) = 0;
};

// Second version of an estimate line: grouping, printing and quantity.
struct IEstimateItemLineItem2 : IEstimateItemLineItem {
  virtual HRESULT STDMETHODCALLTYPE GetIsEndOfGroup(VARIANT_BOOL* endOfGroup) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIsPrintable(VARIANT_BOOL* printable) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetQuantity(IAmount** quantity) = 0;
};

// The lines of one invoice, from index 0.
struct IInvoiceItemLineItems : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IInvoiceItemLineItem** line) = 0;
};

// The lines of one estimate, from index 0.
struct IEstimateItemLineItems : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IEstimateItemLineItem** line) = 0;
};

PARCELON_DECLARE_IID(ILineItem, 0x7DC9AB07, 0x2409, 0x4651, 0x86, 0xA6, 0xB3, 0x7D, 0xAC, 0x87, 0x89, 0x4B)
PARCELON_DECLARE_IID(IInvoiceItemLineItem, 0xBD73577C, 0x1C7E, 0x4C5F, 0x80, 0x14, 0x4B, 0x91, 0x5E, 0xB3, 0x21, 0x9F)
PARCELON_DECLARE_IID(IInvoiceItemLineItem2, 0x21D5B703, 0x8321, 0x4F51, 0xB9, 0xB9, 0x85, 0x55, 0x7A, 0x42, 0x72, 0x14)
PARCELON_DECLARE_IID(IEstimateItemLineItem, 0x91E73F8E, 0xF07B, 0x4C88, 0xB5, 0xE5, 0xE6, 0x54, 0x35, 0xE4, 0x4C, 0x6E)
PARCELON_DECLARE_IID(IEstimateItemLineItem2, 0xF7C4061D, 0x6FEB, 0x425E, 0x9A, 0x36, 0x2C, 0xE6, 0x21, 0x4A, 0xAF, 0x24)
PARCELON_DECLARE_IID(IInvoiceItemLineItems, 0x32EB4B50, 0xFB10, 0x4315, 0xBF, 0x66, 0x53, 0xF0, 0x54, 0xB3, 0xF1, 0x64)
PARCELON_DECLARE_IID(IEstimateItemLineItems, 0xDAA05CEB, 0xA87F, 0x4C8C, 0x9E, 0xBC, 0xDD, 0xDD, 0xD7, 0xA9, 0xB7, 0xE1)

using ILineItemPtr = ComPtr<ILineItem>;
using IInvoiceItemLineItemPtr = ComPtr<IInvoiceItemLineItem>;
using IInvoiceItemLineItem2Ptr = ComPtr<IInvoiceItemLineItem2>;
using IEstimateItemLineItemPtr = ComPtr<IEstimateItemLineItem>;
using IEstimateItemLineItem2Ptr = ComPtr<IEstimateItemLineItem2>;
using IInvoiceItemLineItemsPtr = ComPtr<IInvoiceItemLineItems>;
using IEstimateItemLineItemsPtr = ComPtr<IEstimateItemLineItems>;
