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

PARCELON_DECLARE_IID(IAmount2, "34D3D3B0-32F3-4919-A546-15CF43F7B2A0")
PARCELON_DECLARE_IID(ISalesTransaction, "9BE6E916-BB86-4753-9AE3-408DABCD854F")
PARCELON_DECLARE_IID(IInvoice, "9F9FF707-0F86-4347-8490-B31C70F3E0AE")
PARCELON_DECLARE_IID(IInvoice2, "C98169DF-0F3E-42EA-9984-398EDCA1A1B8")
PARCELON_DECLARE_IID(IEstimate, "8FA53BC8-BE86-45EE-A908-5E15A5D27D05")
PARCELON_DECLARE_IID(IInvoices, "901CBFB0-79E6-4691-A090-A162AD619290")
PARCELON_DECLARE_IID(IEstimates, "1AB02CC8-552B-44E6-83DF-202C23E7896F")
PARCELON_DECLARE_IID(ITransactions, "4EF992E5-0FBB-4E5F-B0F4-2B9FA1714B94")

using IAmount2Ptr = ComPtr<IAmount2>;
using ISalesTransactionPtr = ComPtr<ISalesTransaction>;
using IInvoicePtr = ComPtr<IInvoice>;
using IInvoice2Ptr = ComPtr<IInvoice2>;
using IEstimatePtr = ComPtr<IEstimate>;
using IInvoicesPtr = ComPtr<IInvoices>;
using IEstimatesPtr = ComPtr<IEstimates>;
using ITransactionsPtr = ComPtr<ITransactions>;
