#include "upload/TransactionBuilders.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"

using parcelon::forms::Required;

namespace {

constexpr char kInvoicePrefix[] = "Parcelon:CInvoiceBuilder::BuildXML(XMLBuilder&)";
constexpr char kEstimatePrefix[] = "Parcelon:CEstimateBuilder::BuildXML(XMLBuilder&)";

// The messages of the header children that invoices and estimates share, worded for one of them.
struct HeaderWording {
  const char* prefix;
  const char* recNum;
  const char* customer;
  const char* customerRecNum;
  const char* createStamp;
  bool createStampRequired;
  const char* modStamp;
  const char* date;
  const char* dueDate;
  const char* transactionNumber;
  const char* typeName;
  const char* amount;
  const char* amountDouble;
  const char* terms;
  const char* termsRecNum;
  const char* billingAddress;
};

#define PARCELON_OPTIONAL(text) text "  Skipping this optional element."
const HeaderWording kInvoiceWording = {
    kInvoicePrefix,
    "Failed to get record number from invoice in LX.",
    PARCELON_OPTIONAL("Failed to get customer from invoice in LX."),
    PARCELON_OPTIONAL("Failed to get record number from customer in LX while getting invoice's customer ID."),
    "Failed to get create time stamp from invoice in LX.",
    true,
    PARCELON_OPTIONAL("Failed to get mod time stamp from invoice in LX."),
    PARCELON_OPTIONAL("Failed to get date from invoice in LX."),
    PARCELON_OPTIONAL("Failed to get due date from invoice in LX."),
    PARCELON_OPTIONAL("Failed to get transaction number from invoice in LX."),
    PARCELON_OPTIONAL("Failed to get transaction type name from invoice in LX."),
    "Failed to get amount from invoice in LX.",
    "Failed to get double from amount in LX when getting invoice's amount",
    PARCELON_OPTIONAL("Failed to get terms from invoice in LX."),
    PARCELON_OPTIONAL("Failed to get record number from term in LX while getting invoice's terms ID."),
    PARCELON_OPTIONAL("Failed to get billing address lines from invoice in LX."),
};
const HeaderWording kEstimateWording = {
    kEstimatePrefix,
    "Failed to get record number from estimate in LX.",
    PARCELON_OPTIONAL("Failed to get customer from estimate in LX."),
    PARCELON_OPTIONAL("Failed to get record number from customer in LX while getting estimate's customer ID."),
    PARCELON_OPTIONAL("Failed to get create time stamp from estimate in LX."),
    false,
    PARCELON_OPTIONAL("Failed to get mod time stamp from estimate in LX."),
    PARCELON_OPTIONAL("Failed to get date from estimate in LX."),
    PARCELON_OPTIONAL("Failed to get due date from estimate in LX."),
    PARCELON_OPTIONAL("Failed to get transaction number from estimate in LX."),
    PARCELON_OPTIONAL("Failed to get transaction type name from estimate in LX."),
    "Failed to get amount from estimate in LX.",
    "Failed to get double from amount in LX when getting estimate's amount",
    PARCELON_OPTIONAL("Failed to get terms from estimate in LX."),
    PARCELON_OPTIONAL("Failed to get record number from term in LX while getting estimate's terms ID."),
    PARCELON_OPTIONAL("Failed to get billing address lines from estimate in LX."),
};
#undef PARCELON_OPTIONAL

// Children 1 to 11 of "Invoice" and "Estimate"; `terms` receives the terms that were read (null
// when their read was skipped).
HRESULT AddHeader(XMLBuilder& builder, ISalesTransaction* transaction, const HeaderWording& w, ITermPtr& terms) {
  const char* const prefix = w.prefix;
  LONG recNum = 0;
  RETURN_IF_FAILED_LOG(transaction->GetRecNum(&recNum), prefix, w.recNum);
  builder.AddLongElement("ClientID", recNum);

  INamePtr customer;
  LONG customerRecNum = 0;
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetCustomer(customer.ReleaseAndGetAddressOf()), prefix, w.customer)) &&
      customer && SUCCEEDED(LOG_IF_FAILED(customer->GetRecNum(&customerRecNum), prefix, w.customerRecNum)) &&
      customerRecNum != 0)
    builder.AddLongElement("CustomerID", customerRecNum);

  LONG created = 0;
  const HRESULT createRead = LOG_IF_FAILED(transaction->GetCreateTimeStamp(&created), prefix, w.createStamp);
  if (FAILED(createRead) && w.createStampRequired) return createRead;
  if (SUCCEEDED(createRead)) builder.AddLongElement("TMCreateStamp", created);
  LONG modified = 0;
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetModTimeStamp(&modified), prefix, w.modStamp)))
    builder.AddLongElement("TMModStamp", modified);

  DATE date = 0;
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetDate(&date), prefix, w.date)))
    parcelon::forms::AddHostDate(builder, "TranDate", date);
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetDueDate(&date), prefix, w.dueDate)))
    parcelon::forms::AddHostDate(builder, "DueDate", date);
  LONG number = 0;
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetTransactionNumber(&number), prefix, w.transactionNumber)))
    builder.AddLongElement("TranNum", number);
  Bstr typeName;
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetTransactionTypeName(typeName.Out()), prefix, w.typeName)))
    parcelon::forms::AddTextIfNotEmpty(builder, "TranType", typeName.Get());

  IAmountPtr amount;
  RETURN_IF_FAILED_LOG(transaction->GetAmount(amount.ReleaseAndGetAddressOf()), prefix, w.amount);
  double value = 0;
  RETURN_IF_FAILED_LOG(parcelon::forms::ReadDouble(amount, value), prefix, w.amountDouble);
  RETURN_IF_FAILED_LOG(parcelon::forms::ElementStatus(builder.AddFixedElement("Amt", value, 2)), prefix,
                       "Failed converting amount to XML for amt.");

  LONG termsRecNum = 0;
  if (FAILED(LOG_IF_FAILED(transaction->GetTerms(terms.ReleaseAndGetAddressOf()), prefix, w.terms))) terms.Reset();
  if (terms && SUCCEEDED(LOG_IF_FAILED(terms->GetRecNum(&termsRecNum), prefix, w.termsRecNum)) && termsRecNum != 0)
    builder.AddLongElement("TermsID", termsRecNum);

  IAddressPtr address;
  HRESULT hr = transaction->GetBillingAddress(address.ReleaseAndGetAddressOf());
  if (SUCCEEDED(hr)) hr = parcelon::forms::AddAddress(builder, "BillAddress", address);
  LOG_IF_FAILED(hr, prefix, w.billingAddress);
  return S_OK;
}

}  // namespace

HRESULT CInvoiceBuilder::BuildXML(XMLBuilder& builder) {
  IInvoice* const invoice = Required(invoice_);
  builder.OpenAggregate("Invoice");
  ITermPtr terms;
  RETURN_IF_FAILED(AddHeader(builder, invoice, kInvoiceWording, terms));

  Bstr number;
  if (SUCCEEDED(LOG_IF_FAILED(invoice->GetInvoiceNumber(number.Out()), kInvoicePrefix,
                              "Failed to get invoice number from invoice in LX.  Skipping this optional element.")))
    parcelon::forms::AddTextIfNotEmpty(builder, "InvoiceNum", number.Get());
  IAmountPtr balance;
  HRESULT hr = LOG_IF_FAILED(invoice->GetRemainingBalance(balance.ReleaseAndGetAddressOf()), kInvoicePrefix,
                             "Failed to get remaining balance from invoice in LX.  Skipping this optional element.");
  if (SUCCEEDED(hr))
    LOG_IF_FAILED(parcelon::forms::AddAmount(builder, "BalRemaining", balance, true), kInvoicePrefix,
                  "Failed converting amount to XML for balance remaining.  Skipping this optional element.");

  static const parcelon::forms::SuggestedDiscountWording kDiscountWording = {
      kInvoicePrefix,
      "Failed to get record number from term in LX while getting estimate's suggested discount data.",
      "Failed to get term(2) in LX while building invoice. Skipping suggested discount info.",
      "Failed to get amount(2) in LX while building invoice. Skipping suggested discount info.",
  };
  RETURN_IF_FAILED(parcelon::forms::AddSuggestedDiscount(builder, invoice_, terms, kDiscountWording));

  // Whether the customer may pay online comes from the invoice's second version.
  IInvoice2Ptr invoice2;
  VARIANT_BOOL allowPayment = VARIANT_FALSE;
  hr = invoice_.As(invoice2);
  if (SUCCEEDED(hr)) hr = invoice2->GetAllowPayment(&allowPayment);
  if (SUCCEEDED(LOG_IF_FAILED(hr, kInvoicePrefix, "Failed to get AllowPayment. Skipping this optional element.")))
    builder.AddBoolElement("AllowPayment", allowPayment);
  builder.CloseAggregate("Invoice");
  return S_OK;
}

HRESULT CEstimateBuilder::BuildXML(XMLBuilder& builder) {
  IEstimate* const estimate = Required(estimate_);
  builder.OpenAggregate("Estimate");
  ITermPtr terms;
  RETURN_IF_FAILED(AddHeader(builder, estimate, kEstimateWording, terms));
  Bstr number;
  if (SUCCEEDED(LOG_IF_FAILED(estimate->GetEstimateNumber(number.Out()), kEstimatePrefix,
                              "Failed to get estimate number from estimate in LX.  Skipping this optional element.")))
    parcelon::forms::AddTextIfNotEmpty(builder, "EstimateNum", number.Get());
  builder.CloseAggregate("Estimate");
  return S_OK;
}
