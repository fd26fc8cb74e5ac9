#include "forms/FormParts.h"

namespace parcelon::forms {

namespace {

// The list `getList` of the company file's transactions, and its entry `recNum`.
template <class List, class Entry, class GetList>
HRESULT LookUpTransaction(ICompanyFile* companyFile, LONG recNum, GetList getList,
                          const char* listMessage, const char* itemMessage, const char* prefix,
                          ComPtr<Entry>& entry) {
  ITransactionsPtr transactions;
  RETURN_IF_FAILED_LOG(Required(companyFile)->GetTransactions(transactions.ReleaseAndGetAddressOf()),
                       prefix, "Failed to get transactions from company file in LX.");
  ComPtr<List> list;
  RETURN_IF_FAILED_LOG(getList(Required(transactions), list.ReleaseAndGetAddressOf()), prefix,
                       listMessage);
  RETURN_IF_FAILED_LOG(Required(list)->GetItemByRecNum(RecNumKey(recNum), entry.ReleaseAndGetAddressOf()),
                       prefix, itemMessage);
  Required(entry);
  return S_OK;
}

}  // namespace

HRESULT ReadDouble(const IAmountPtr& amount, double& value) {
  IAmount2Ptr amount2;
  const HRESULT hr = amount.As(amount2);
  return FAILED(hr) ? hr : Required(amount2)->GetDouble(&value);
}

VARIANT RecNumKey(LONG recNum) {
  VARIANT key;
  VariantInit(&key);
  key.vt = VT_I4;
  key.lVal = recNum;
  return key;
}

HRESULT ElementStatus(uint32_t code) {
  if (FAILED(HRESULT(code))) return HRESULT(code);
  return code == XMLBuilder::kNoBuffer ? E_OUTOFMEMORY : S_OK;
}

HRESULT AddAmount(XMLBuilder& builder, XmlName name, const IAmountPtr& amount, bool omitIfEmpty) {
  IAmountPtr reference(amount);
  return ElementStatus(builder.AddHostAmountElement(name, reference.Detach(), omitIfEmpty));
}

void AddHostDate(XMLBuilder& builder, XmlName name, DATE date) {
  if (date != 0) builder.AddZonedDateTimeElement(name, date);
}

HRESULT AddAddress(XMLBuilder& builder, XmlName name, const IAddressPtr& address) {
  return CatchComError([&] { builder.AddAddressElement(name, address.Get()); });
}

void AddTextIfNotEmpty(XMLBuilder& builder, XmlName name, BSTR text) {
  if (SysStringLen(text) != 0) builder.AddElement(name, text);
}

HRESULT LookUpInvoice(ICompanyFile* companyFile, LONG recNum, const char* prefix,
                      IInvoicePtr& invoice) {
  return LookUpTransaction<IInvoices>(
      companyFile, recNum,
      [](ITransactions* transactions, IInvoices** list) { return transactions->GetInvoices(list); },
      "Failed to get invoices from transactions in LX.", "Failed to get item from invoices in LX.",
      prefix, invoice);
}

HRESULT LookUpEstimate(ICompanyFile* companyFile, LONG recNum, const char* prefix,
                       IEstimatePtr& estimate) {
  return LookUpTransaction<IEstimates>(
      companyFile, recNum,
      [](ITransactions* transactions, IEstimates** list) { return transactions->GetEstimates(list); },
      "Failed to get estimates from transactions in LX.", "Failed to get item from estimates in LX.",
      prefix, estimate);
}

// ---- Header elements of invoices and estimates ---------------------------------------------

HRESULT AddTransactionHead(XMLBuilder& builder, ISalesTransaction* transaction, LONG recNum,
                           const SalesHeaderWording& wording, const char* prefix, double& total) {
  Required(transaction);
  builder.AddLongElement("TranID", recNum);

  LONG number = 0;
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetTransactionNumber(&number), prefix, wording.transactionNumber)))
    builder.AddLongElement("TranNum", number);

  DATE date = 0;
  if (SUCCEEDED(LOG_IF_FAILED(transaction->GetDate(&date), prefix, wording.date)))
    AddHostDate(builder, "TranDate", date);

  IAmountPtr amount;
  RETURN_IF_FAILED_LOG(transaction->GetAmount(amount.ReleaseAndGetAddressOf()), prefix, wording.amount);
  RETURN_IF_FAILED_LOG(AddAmount(builder, "TotalAmount", amount, false), prefix,
                       "Failed converting amount to XML for total amount.");
  RETURN_IF_FAILED_LOG(ReadDouble(amount, total), prefix, wording.amountDouble);

  LONG created = 0;
  RETURN_IF_FAILED_LOG(transaction->GetCreateTimeStamp(&created), prefix, wording.createTimeStamp);
  builder.AddLongElement("TMCreateStamp", created);
  return S_OK;
}

HRESULT AddCustomerJob(XMLBuilder& builder, ISalesTransaction* transaction,
                       const SalesHeaderWording& wording, const char* prefix) {
  INamePtr customer;
  RETURN_IF_FAILED_LOG(Required(transaction)->GetCustomer(customer.ReleaseAndGetAddressOf()), prefix,
                       wording.customer);
  LONG customerID = 0;
  RETURN_IF_FAILED_LOG(Required(customer)->GetRecNum(&customerID), prefix, wording.customerRecNum);
  builder.AddLongElement("CustomerJobID", customerID);

  Bstr name;
  RETURN_IF_FAILED_LOG(customer->GetFullName(name.Out()), prefix, "Failed to get customer job name.");
  builder.AddElement("CustomerJobName", name.Get());

  IAddressPtr address;
  HRESULT hr = transaction->GetBillingAddress(address.ReleaseAndGetAddressOf());
  if (SUCCEEDED(hr)) hr = AddAddress(builder, "BillAddress", address);
  LOG_IF_FAILED(hr, prefix, wording.billingAddress);
  return S_OK;
}

// ---- Line writer ---------------------------------------------------------------------------

CSalesLineItemBuilder::CSalesLineItemBuilder(ILineItem* line, const LineWording& wording)
    : line_(line), wording_(wording) {}

void CSalesLineItemBuilder::ReadItem(const char* prefix) {
  IItemPtr item;
  const HRESULT itemResult = LOG_IF_FAILED(Required(line_)->GetItem(item.ReleaseAndGetAddressOf()),
                                           prefix, wording_.item);
  if (SUCCEEDED(itemResult) && item) {
    if (FAILED(LOG_IF_FAILED(item->GetType(&itemType_), prefix, wording_.itemType))) itemType_ = -1;
    if (FAILED(LOG_IF_FAILED(item->GetName(itemName_.Out()), prefix, wording_.itemName)))
      itemName_.Reset();
  } else {
    CNALogger::Log(prefix, wording_.itemMissingForName, SUCCEEDED(itemResult) ? E_POINTER : itemResult);
  }
}

void CSalesLineItemBuilder::AddItemName(XMLBuilder& builder) { builder.AddElement("ItemName", itemName_.Get()); }

void CSalesLineItemBuilder::AddDescription(XMLBuilder& builder, const char* prefix) {
  Bstr description;
  if (SUCCEEDED(LOG_IF_FAILED(line_->GetDescription(description.Out()), prefix, wording_.description)))
    builder.AddElement("ItemDesc", description.Get());
}

void CSalesLineItemBuilder::AddQuantity(XMLBuilder& builder, const char* prefix) {
  LOG_IF_FAILED(AddAmount(builder, "Quantity", quantity_, true), prefix,
                "Failed converting amount to XML for quantity.  Skipping this optional element.");
}

void CSalesLineItemBuilder::AddRate(XMLBuilder& builder, const char* prefix) {
  IAmountPtr rate;
  if (SUCCEEDED(LOG_IF_FAILED(line_->GetUnitPrice(rate.ReleaseAndGetAddressOf()), prefix, wording_.unitPrice)))
    LOG_IF_FAILED(AddAmount(builder, "Rate", rate, true), prefix,
                  "Failed converting amount to XML for rate.  Skipping this optional element.");
}

void CSalesLineItemBuilder::AddLineAmount(XMLBuilder& builder, const char* prefix) {
  if (SUCCEEDED(LOG_IF_FAILED(line_->GetAmount(amount_.ReleaseAndGetAddressOf()), prefix, wording_.amount)))
    LOG_IF_FAILED(AddAmount(builder, "Amount", amount_, true), prefix,
                  "Failed converting amount to XML for amount.  Skipping this optional element.");
  else
    amount_.Reset();
}

void CSalesLineItemBuilder::AddClassName(XMLBuilder& builder, const char* prefix) {
  IClassPtr lineClass;
  if (FAILED(LOG_IF_FAILED(line_->GetClass(lineClass.ReleaseAndGetAddressOf()), prefix, wording_.lineClass)))
    return;
  Bstr name;
  if (SUCCEEDED(LOG_IF_FAILED(Required(lineClass)->GetName(name.Out()), prefix, wording_.className)))
    builder.AddElement("ClassName", name.Get());
}

void CSalesLineItemBuilder::AddOthers(XMLBuilder& builder, const char* prefix) {
  Bstr other;
  if (SUCCEEDED(LOG_IF_FAILED(line_->GetOther1(other.Out()), prefix, wording_.other1)))
    builder.AddElement("Other1", other.Get());
  if (SUCCEEDED(LOG_IF_FAILED(line_->GetOther2(other.Out()), prefix, wording_.other2)))
    builder.AddElement("Other2", other.Get());
}

HRESULT CSalesLineItemBuilder::AddFlags(XMLBuilder& builder, const char* prefix) {
  builder.AddBoolElement("IsPrintable", printable_);
  RETURN_IF_FAILED_LOG(line_->GetIsTaxable(&lineIsTaxable_), prefix, wording_.taxable);
  // Tax applies to the line when both the line and the customer are taxable.
  const bool taxed = lineIsTaxable_ != VARIANT_FALSE && customerIsTaxable_ != VARIANT_FALSE;
  builder.AddBoolElement("IsTaxable", taxed ? VARIANT_TRUE : VARIANT_FALSE);
  builder.AddBoolElement("IsEndOfGroup", endOfGroup_);
  VARIANT_BOOL paid = VARIANT_FALSE;
  RETURN_IF_FAILED_LOG(line_->GetPaid(&paid), prefix, wording_.paid);
  builder.AddBoolElement("Paid", paid);
  return S_OK;
}

void CSalesLineItemBuilder::AddOpenBalance(XMLBuilder& builder, const char* prefix) {
  IAmountPtr balance;
  if (SUCCEEDED(LOG_IF_FAILED(line_->GetOpenBalance(balance.ReleaseAndGetAddressOf()), prefix, wording_.openBalance)))
    LOG_IF_FAILED(AddAmount(builder, "BalOpen", balance, true), prefix,
                  "Failed converting amount to XML for balance open.  Skipping this optional element.");
}

void CSalesLineItemBuilder::AddCustomFields(XMLBuilder& builder, const char* prefix) {
  LONG count = 0;
  if (FAILED(LOG_IF_FAILED(line_->GetCustomFieldCount(&count), prefix, wording_.customFieldCount))) return;
  for (LONG index = 0; index < count; ++index) {
    Bstr data;
    if (FAILED(LOG_IF_FAILED(line_->GetCustomField(index, data.Out()), prefix, wording_.customField))) continue;
    builder.OpenAggregate("CustomFieldData");
    builder.AddLongElement("Index", index);
    builder.AddElement("Data", data.Get());
    builder.CloseAggregate("CustomFieldData");
  }
}

void CSalesLineItemBuilder::AddTaxableFlag(XMLBuilder& builder) {
  // The host's one-character tax code: "T", or a single space for an untaxed line.
  builder.AddElement("TaxableFlag", lineIsTaxable_ != VARIANT_FALSE ? "T" : " ");
}

void CSalesLineItemBuilder::GiveNameAndAmount(OLAString& itemName, IAmountPtr& amount) const {
  itemName.SetFromBSTR(itemName_.Get());
  amount = amount_;
}

// ---- Sales-tax line rule -------------------------------------------------------------------

namespace {

// Whether the template of `transaction` prints its sales tax field; a template that does not
// print it shows the tax as a line item instead.
HRESULT PrintsSalesTaxField(ISalesTransaction* transaction, const SalesTaxLineWording& wording,
                            const char* prefix, bool& prints) {
  prints = false;
  IStylePtr style;
  RETURN_IF_FAILED_LOG(transaction->GetCustomStyle(style.ReleaseAndGetAddressOf()), prefix, wording.customStyle);
  IStyleFieldsPtr fields;
  RETURN_IF_FAILED_LOG(Required(style)->GetFields(fields.ReleaseAndGetAddressOf()), prefix, wording.styleFields);
  LONG count = 0;
  RETURN_IF_FAILED_LOG(Required(fields)->GetCount(&count), prefix, wording.fieldCount);
  for (LONG index = 0; index < count; ++index) {
    IStyleFieldPtr field;
    LONG id = 0;
    HRESULT hr = fields->GetItem(index, field.ReleaseAndGetAddressOf());
    if (SUCCEEDED(hr)) hr = Required(field)->GetID(&id);
    RETURN_IF_FAILED_LOG(hr, prefix, wording.fieldID);
    if (id != sfSalesTax) continue;
    VARIANT_BOOL onPrint = VARIANT_FALSE;
    RETURN_IF_FAILED_LOG(field->GetOnPrint(&onPrint), prefix, wording.fieldOnPrint);
    prints = onPrint != VARIANT_FALSE;
    return S_OK;
  }
  return S_OK;
}

}  // namespace

HRESULT AddSalesTaxLine(XMLBuilder& builder, XmlName lineElement, ISalesTransaction* transaction,
                        double total, IItem* salesTaxItem, const IAmountPtr& rate,
                        VARIANT_BOOL customerIsTaxable, const SalesTaxLineWording& wording,
                        const char* prefix) {
  if (customerIsTaxable == VARIANT_FALSE) return S_FALSE;
  LONG itemRecNum = 0;
  RETURN_IF_FAILED_LOG(Required(salesTaxItem)->GetRecNum(&itemRecNum), prefix, wording.itemRecNum);
  if (itemRecNum == 0) return S_FALSE;
  bool printsField = false;
  RETURN_IF_FAILED(PrintsSalesTaxField(Required(transaction), wording, prefix, printsField));
  if (printsField) return S_FALSE;

  Bstr name;
  RETURN_IF_FAILED_LOG(salesTaxItem->GetName(name.Out()), prefix, wording.itemName);
  builder.OpenAggregate(lineElement);
  builder.AddElement("ItemName", name.Get());
  Bstr description;
  if (SUCCEEDED(LOG_IF_FAILED(salesTaxItem->GetLongDescription(description.Out()), prefix, wording.longDescription)))
    builder.AddElement("ItemDesc", description.Get());
  LOG_IF_FAILED(AddAmount(builder, "Rate", rate, true), prefix, wording.rate);
  builder.AddFixedElement("Amount", total, 2);
  builder.AddBoolElement("IsPrintable", VARIANT_TRUE);
  builder.AddBoolElement("IsTaxable", VARIANT_FALSE);
  builder.AddBoolElement("IsEndOfGroup", VARIANT_FALSE);
  builder.AddBoolElement("Paid", VARIANT_FALSE);
  builder.CloseAggregate(lineElement);
  return S_OK;
}


HRESULT AddSuggestedDiscount(XMLBuilder& builder, const IInvoicePtr& invoice, const ITermPtr& terms,
                             const SuggestedDiscountWording& wording) {
  // Terms whose read was skipped give no discount, and nothing is read from them.
  if (!terms) return S_OK;
  LONG termsRecNum = 0;
  RETURN_IF_FAILED_LOG(terms->GetRecNum(&termsRecNum), wording.prefix, wording.termsRecNum);
  if (termsRecNum == 0) return S_OK;

  ITerm2Ptr terms2;
  VARIANT_BOOL noDiscount = VARIANT_TRUE;
  HRESULT hr = terms.As(terms2);
  if (SUCCEEDED(hr)) hr = Required(terms2)->GetIsDiscountEmpty(&noDiscount);
  if (FAILED(LOG_IF_FAILED(hr, wording.prefix, wording.terms2))) return S_OK;
  IInvoice2Ptr invoice2;
  if (FAILED(LOG_IF_FAILED(invoice.As(invoice2), wording.prefix, wording.amount2))) return S_OK;
  if (noDiscount != VARIANT_FALSE) return S_OK;

  const IID& source = IidOf<IInvoice2>();
  builder.OpenAggregate("SuggestedDiscountData");
  IAmountPtr discount;
  ThrowIfFailed(Required(invoice2)->GetSuggestedDiscountAmount(discount.ReleaseAndGetAddressOf()), &source);
  ThrowIfFailed(AddAmount(builder, "DiscountAmt", discount, false), &IidOf<IAmount>());
  DATE discountDate = 0;
  ThrowIfFailed(invoice2->GetSuggestedDiscountDate(&discountDate), &source);
  AddHostDate(builder, "DiscountDate", discountDate);
  builder.CloseAggregate("SuggestedDiscountData");
  return S_OK;
}

}  // namespace parcelon::forms
