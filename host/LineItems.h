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

PARCELON_DECLARE_IID(ILineItem, "7DC9AB07-2409-4651-86A6-B37DAC87894B")
PARCELON_DECLARE_IID(IInvoiceItemLineItem, "BD73577C-1C7E-4C5F-8014-4B915EB3219F")
PARCELON_DECLARE_IID(IInvoiceItemLineItem2, "21D5B703-8321-4F51-B9B9-85557A427214")
PARCELON_DECLARE_IID(IEstimateItemLineItem, "91E73F8E-F07B-4C88-B5E5-E65435E44C6E")
PARCELON_DECLARE_IID(IEstimateItemLineItem2, "F7C4061D-6FEB-425E-9A36-2CE6214AAF24")
PARCELON_DECLARE_IID(IInvoiceItemLineItems, "32EB4B50-FB10-4315-BF66-53F054B3F164")
PARCELON_DECLARE_IID(IEstimateItemLineItems, "DAA05CEB-A87F-4C8C-9EBC-DDDDD7A9B7E1")

using ILineItemPtr = ComPtr<ILineItem>;
using IInvoiceItemLineItemPtr = ComPtr<IInvoiceItemLineItem>;
using IInvoiceItemLineItem2Ptr = ComPtr<IInvoiceItemLineItem2>;
using IEstimateItemLineItemPtr = ComPtr<IEstimateItemLineItem>;
using IEstimateItemLineItem2Ptr = ComPtr<IEstimateItemLineItem2>;
using IInvoiceItemLineItemsPtr = ComPtr<IInvoiceItemLineItems>;
using IEstimateItemLineItemsPtr = ComPtr<IEstimateItemLineItems>;
