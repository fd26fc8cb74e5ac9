// The host's sales transactions: invoices and estimates with their header fields, and the
// transaction lists of a company file.
//
// Dates are OLE dates, 0 when not set; time stamps are seconds since 1970. A reference to a
// list record that is not set gives an empty record (record number 0, empty names).
#pragma once

#include "host/HostValues.h"
#include "host/LineItems.h"
#include "host/ListRecords.h"
#include "platform/ComBase.h"
#include "platform/ComPtr.h"

struct IStyle;

// Second version of the host amount: the amount as a double, for arithmetic on totals.
struct IAmount2 : IAmount {
  virtual HRESULT STDMETHODCALLTYPE GetDouble(double* value) = 0;
};

// What invoices and estimates have in common.
struct ISalesTransaction : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetRecNum(LONG* recNum) = 0;
  // The host's running number of the transaction.
  virtual HRESULT STDMETHODCALLTYPE GetTransactionNumber(LONG* number) = 0;
  // Display name of the transaction's type, such as "Invoice".
  virtual HRESULT STDMETHODCALLTYPE GetTransactionTypeName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDate(DATE* date) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDueDate(DATE* date) = 0;
  // The total; it also answers for IAmount2.
  virtual HRESULT STDMETHODCALLTYPE GetAmount(IAmount** amount) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCreateTimeStamp(LONG* time) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetModTimeStamp(LONG* time) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCustomer(IName** customer) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCustomerIsTaxable(VARIANT_BOOL* taxable) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTerms(ITerm** terms) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetBillingAddress(IAddress** address) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetClass(IClass** transactionClass) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSalesRep(ISalesRep** salesRep) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetShipMethod(IShipMethod** shipMethod) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCustomerMessage(ICustomerMessage** message) = 0;
  // The template the transaction prints with.
  virtual HRESULT STDMETHODCALLTYPE GetCustomStyle(IStyle** style) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSalesTaxItem(IItem** item) = 0;
  // The sales tax rate, a percentage read as an amount.
  virtual HRESULT STDMETHODCALLTYPE GetSalesTaxRate(IAmount** rate) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSalesTaxTotal(IAmount** total) = 0;
};

struct IInvoice : ISalesTransaction {
  virtual HRESULT STDMETHODCALLTYPE GetInvoiceNumber(BSTR* number) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRemainingBalance(IAmount** balance) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLineItems(IInvoiceItemLineItems** lines) = 0;
};

// Second version of an invoice: the early-payment discount its terms suggest (when the terms'
// ITerm2 says there is one) and whether the customer may pay it online.
struct IInvoice2 : IInvoice {
  virtual HRESULT STDMETHODCALLTYPE GetSuggestedDiscountAmount(IAmount** amount) = 0;
  // The last day on which the discount applies.
  virtual HRESULT STDMETHODCALLTYPE GetSuggestedDiscountDate(DATE* date) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAllowPayment(VARIANT_BOOL* allow) = 0;
};

struct IEstimate : ISalesTransaction {
  virtual HRESULT STDMETHODCALLTYPE GetEstimateNumber(BSTR* number) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLineItems(IEstimateItemLineItems** lines) = 0;
};

// GetItemByRecNum takes the record number as a VT_I4 VARIANT and fails with LX_E_NOTFOUND for
// an unknown record number.
struct IInvoices : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IInvoice** invoice) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IInvoice** invoice) = 0;
};

struct IEstimates : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IEstimate** estimate) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IEstimate** estimate) = 0;
};

// The transaction lists of a company file.
struct ITransactions : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetInvoices(IInvoices** invoices) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetEstimates(IEstimates** estimates) = 0;
};

PARCELON_DECLARE_IID(IAmount2, 0x34D3D3B0, 0x32F3, 0x4919, 0xA5, 0x46, 0x15, 0xCF, 0x43, 0xF7, 0xB2, 0xA0)
PARCELON_DECLARE_IID(ISalesTransaction, 0x9BE6E916, 0xBB86, 0x4753, 0x9A, 0xE3, 0x40, 0x8D, 0xAB, 0xCD, 0x85, 0x4F)
PARCELON_DECLARE_IID(IInvoice, 0x9F9FF707, 0x0F86, 0x4347, 0x84, 0x90, 0xB3, 0x1C, 0x70, 0xF3, 0xE0, 0xAE)
PARCELON_DECLARE_IID(IInvoice2, 0xC98169DF, 0x0F3E, 0x42EA, 0x99, 0x84, 0x39, 0x8E, 0xDC, 0xA1, 0xA1, 0xB8)
PARCELON_DECLARE_IID(IEstimate, 0x8FA53BC8, 0xBE86, 0x45EE, 0xA9, 0x08, 0x5E, 0x15, 0xA5, 0xD2, 0x7D, 0x05)
PARCELON_DECLARE_IID(IInvoices, 0x901CBFB0, 0x79E6, 0x4691, 0xA0, 0x90, 0xA1, 0x62, 0xAD, 0x61, 0x92, 0x90)
PARCELON_DECLARE_IID(IEstimates, 0x1AB02CC8, 0x552B, 0x44E6, 0x83, 0xDF, 0x20, 0x2C, 0x23, 0xE7, 0x89, 0x6F)
PARCELON_DECLARE_IID(ITransactions, 0x4EF992E5, 0x0FBB, 0x4E5F, 0xB0, 0xF4, 0x2B, 0x9F, 0xA1, 0x71, 0x4B, 0x94)

using IAmount2Ptr = ComPtr<IAmount2>;
using ISalesTransactionPtr = ComPtr<ISalesTransaction>;
using IInvoicePtr = ComPtr<IInvoice>;
using IInvoice2Ptr = ComPtr<IInvoice2>;
using IEstimatePtr = ComPtr<IEstimate>;
using IInvoicesPtr = ComPtr<IInvoices>;
using IEstimatesPtr = ComPtr<IEstimates>;
using ITransactionsPtr = ComPtr<ITransactions>;
