// The reference host's transactions: the invoice and estimate lists of the company file and
// their invoices and estimates.
//
// A transaction object belongs to its own record for fault selection. The methods of
// ISalesTransaction are named after the transaction's interface and also answer to
// "ISalesTransaction": "IInvoice::GetDate" picks invoices, "ISalesTransaction::GetDate" both.
#include "refhost/CollectionObject.h"
#include "refhost/HostObjects.h"
#include "refhost/LineObjects.h"

namespace parcelon::refhost {

// The element objects of the transaction lists, found by CollectionObject through the record type.
HRESULT NewElementObject(const CompanyPtr& company, Invoice& record, IInvoice** out);
HRESULT NewElementObject(const CompanyPtr& company, Estimate& record, IEstimate** out);

namespace {

// What invoices and estimates have in common: the methods of ISalesTransaction, named after
// Element, and the line collection.
template <class Record, class Element, class Most, class... Also>
class SalesTransactionObject : public ComObject<Most, Also..., ISalesTransaction> {
  using Base = ComObject<Most, Also..., ISalesTransaction>;

 public:
  SalesTransactionObject(CompanyPtr company, const Record& record)
      : Base(std::move(company), record.recNum), record_(record) {}

  HRESULT STDMETHODCALLTYPE GetRecNum(LONG* out) override {
    return this->Give(Op("GetRecNum"), out, record_.recNum);
  }
  HRESULT STDMETHODCALLTYPE GetTransactionNumber(LONG* out) override {
    return this->Give(Op("GetTransactionNumber"), out, record_.transactionNumber);
  }
  HRESULT STDMETHODCALLTYPE GetTransactionTypeName(BSTR* out) override {
    return this->Give(Op("GetTransactionTypeName"), out, record_.typeName);
  }
  HRESULT STDMETHODCALLTYPE GetDate(DATE* out) override {
    return this->Give(Op("GetDate"), out, record_.date);
  }
  HRESULT STDMETHODCALLTYPE GetDueDate(DATE* out) override {
    return this->Give(Op("GetDueDate"), out, record_.dueDate);
  }
  HRESULT STDMETHODCALLTYPE GetAmount(IAmount** out) override {
    return this->Give(Op("GetAmount"), out, record_.amount);
  }
  HRESULT STDMETHODCALLTYPE GetCreateTimeStamp(LONG* out) override {
    return this->Give(Op("GetCreateTimeStamp"), out, record_.createTime);
  }
  HRESULT STDMETHODCALLTYPE GetModTimeStamp(LONG* out) override {
    return this->Give(Op("GetModTimeStamp"), out, record_.modTime);
  }
  HRESULT STDMETHODCALLTYPE GetCustomer(IName** out) override {
    return this->GiveRecord(Op("GetCustomer"), out, record_.customer);
  }
  HRESULT STDMETHODCALLTYPE GetCustomerIsTaxable(VARIANT_BOOL* out) override {
    return this->Give(Op("GetCustomerIsTaxable"), out, record_.customerTaxable);
  }
  HRESULT STDMETHODCALLTYPE GetTerms(ITerm** out) override {
    return this->GiveRecord(Op("GetTerms"), out, record_.terms);
  }
  HRESULT STDMETHODCALLTYPE GetBillingAddress(IAddress** out) override {
    return this->Give(Op("GetBillingAddress"), out, record_.billingAddress);
  }
  HRESULT STDMETHODCALLTYPE GetClass(IClass** out) override {
    return this->GiveRecord(Op("GetClass"), out, record_.transactionClass);
  }
  HRESULT STDMETHODCALLTYPE GetSalesRep(ISalesRep** out) override {
    return this->GiveRecord(Op("GetSalesRep"), out, record_.salesRep);
  }
  HRESULT STDMETHODCALLTYPE GetShipMethod(IShipMethod** out) override {
    return this->GiveRecord(Op("GetShipMethod"), out, record_.shipMethod);
  }
  HRESULT STDMETHODCALLTYPE GetCustomerMessage(ICustomerMessage** out) override {
    return this->GiveRecord(Op("GetCustomerMessage"), out, record_.customerMessage);
  }
  HRESULT STDMETHODCALLTYPE GetCustomStyle(IStyle** out) override {
    return this->GiveRecord(Op("GetCustomStyle"), out, record_.style);
  }
  HRESULT STDMETHODCALLTYPE GetSalesTaxItem(IItem** out) override {
    return this->GiveRecord(Op("GetSalesTaxItem"), out, record_.salesTaxItem);
  }
  HRESULT STDMETHODCALLTYPE GetSalesTaxRate(IAmount** out) override {
    return this->Give(Op("GetSalesTaxRate"), out, record_.salesTaxRate);
  }
  HRESULT STDMETHODCALLTYPE GetSalesTaxTotal(IAmount** out) override {
    return this->Give(Op("GetSalesTaxTotal"), out, record_.salesTaxTotal);
  }

 protected:
  const Record& data() const { return record_; }

  // Checks `operation` and `out`, then gives the transaction's lines.
  template <class Lines>
  HRESULT GiveLines(const OperationName& operation, Lines** out) {
    RETURN_IF_FAILED(this->Check(operation));
    if (!out) return E_POINTER;
    return NewLineItems(this->companyPtr(), record_, out);
  }

 private:
  static OperationName Op(std::string_view method) {
    return {IidOf<Element>(), method, "ISalesTransaction"};
  }

  const Record& record_;
};

class InvoiceObject final : public SalesTransactionObject<Invoice, IInvoice, IInvoice2, IInvoice> {
 public:
  using SalesTransactionObject::SalesTransactionObject;

  HRESULT STDMETHODCALLTYPE GetInvoiceNumber(BSTR* out) override {
    return Give("IInvoice::GetInvoiceNumber", out, data().invoiceNumber);
  }
  HRESULT STDMETHODCALLTYPE GetRemainingBalance(IAmount** out) override {
    return Give("IInvoice::GetRemainingBalance", out, data().remainingBalance);
  }
  HRESULT STDMETHODCALLTYPE GetLineItems(IInvoiceItemLineItems** out) override {
    return GiveLines("IInvoice::GetLineItems", out);
  }
  HRESULT STDMETHODCALLTYPE GetSuggestedDiscountAmount(IAmount** out) override {
    return Give("IInvoice2::GetSuggestedDiscountAmount", out, data().suggestedDiscountAmount);
  }
  HRESULT STDMETHODCALLTYPE GetSuggestedDiscountDate(DATE* out) override {
    return Give("IInvoice2::GetSuggestedDiscountDate", out, data().suggestedDiscountDate);
  }
  HRESULT STDMETHODCALLTYPE GetAllowPayment(VARIANT_BOOL* out) override {
    return Give("IInvoice2::GetAllowPayment", out, data().allowPayment);
  }
};

class EstimateObject final : public SalesTransactionObject<Estimate, IEstimate, IEstimate> {
 public:
  using SalesTransactionObject::SalesTransactionObject;

  HRESULT STDMETHODCALLTYPE GetEstimateNumber(BSTR* out) override {
    return Give("IEstimate::GetEstimateNumber", out, data().estimateNumber);
  }
  HRESULT STDMETHODCALLTYPE GetLineItems(IEstimateItemLineItems** out) override {
    return GiveLines("IEstimate::GetLineItems", out);
  }
};

class TransactionsObject final : public ComObject<ITransactions> {
 public:
  explicit TransactionsObject(CompanyPtr company) : ComObject(std::move(company), 0) {}

  HRESULT STDMETHODCALLTYPE GetInvoices(IInvoices** out) override {
    return GiveNew<CollectionObject<IInvoices, IInvoice, Invoice>>("ITransactions::GetInvoices",
                                                                   out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetEstimates(IEstimates** out) override {
    return GiveNew<CollectionObject<IEstimates, IEstimate, Estimate>>(
        "ITransactions::GetEstimates", out, companyPtr());
  }
};

}  // namespace

HRESULT NewElementObject(const CompanyPtr& company, Invoice& record, IInvoice** out) {
  return CreateObject<InvoiceObject>(out, company, record);
}
HRESULT NewElementObject(const CompanyPtr& company, Estimate& record, IEstimate** out) {
  return CreateObject<EstimateObject>(out, company, record);
}

HRESULT NewTransactions(const CompanyPtr& company, ITransactions** out) {
  return CreateObject<TransactionsObject>(out, company);
}

}  // namespace parcelon::refhost
