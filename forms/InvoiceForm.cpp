#include "forms/InvoiceForm.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/CompanyBuilder.h"
#include "platform/Bstr.h"

using parcelon::forms::AddAmount;
using parcelon::forms::AddHostDate;
using parcelon::forms::Required;

namespace {

constexpr char kFormPrefix[] = "Parcelon:CInvoiceFormBuilder::BuildXML(XMLBuilder&)";
constexpr char kDetailPrefix[] = "Parcelon:CInvoiceDetailBuilder::BuildXML(XMLBuilder&)";
constexpr char kInitPrefix[] = "Parcelon:CInvoiceDetailBuilder::InitInvoicePtr(void)";
constexpr char kSalesTaxPrefix[] =
    "Parcelon:CInvoiceDetailBuilder::MaybeAddSalesTaxLineItem(double, IItemPtr, IAmountPtr, "
    "VARIANT_BOOL, XMLBuilder&)";
constexpr char kItemPrefix[] =
    "Parcelon:CInvoiceItemBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL, OLAString&, IAmountPtr&)";
constexpr char kLinePrefix[] = "Parcelon:CInvoiceItemBuilder::BuildInvoiceLineItem()";
constexpr char kProgressPrefix[] =
    "Parcelon:CInvoiceItemBuilder::BuildProgressInvoiceElements(IInvoiceItemLineItem2Ptr, XMLBuilder&)";

constexpr parcelon::forms::SalesHeaderWording kHeaderWording = {
    .transactionNumber =
        "Failed to get transaction number from invoice in LX.  Skipping this optional element.",
    .date = "Failed to get date from invoice in LX.  Skipping this optional element.",
    .amount = "Failed to get amount from invoice in LX.",
    .amountDouble = "Failed to get double from amount in LX when getting invoice's total amount.",
    .createTimeStamp = "Failed to get create time stamp from invoice in LX.",
    .customer = "Failed to get customer from invoice in LX.",
    .customerRecNum =
        "Failed to get record number from customer in LX while getting invoice's customer job ID.",
    .billingAddress =
        "Failed to get billing address lines from invoice in LX.  Skipping this optional element.",
};

constexpr parcelon::forms::LineWording kLineWording = {
    .item = "Failed to get item from invoice line item in LX.  Continuing...",
    .itemType = "Failed to get type from item in LX while building invoice item.  Continuing...",
    .endOfGroup = "Failed to get is end of group from invoice line item(2) in LX.",
    .printable = "Failed to get is printable from invoice line item(2) in LX.",
    .quantity = "Failed to get quantity from invoice line item(2) in LX.",
    .secondVersion = "Failed to get invoice line item(2) from LX.",
    .itemMissingForName =
        "Using empty item name element because failed to get item from invoice line item in LX.",
    .itemName =
        "Failed to get name from item in LX while building invoice item.  Using empty item name element.",
    .description =
        "Failed to get item description from invoice line item in LX.  Skipping this optional element.",
    .unitPrice = "Failed to get unit price from invoice line item in LX.  Skipping this optional element.",
    .amount = "Failed to get amount from invoice line item in LX.  Skipping this optional element.",
    .lineClass = "Failed to get class from invoice line item in LX.  Skipping this optional element.",
    .className =
        "Failed to get name from class in LX while getting invoice item's class name.  Skipping this "
        "optional element.",
    .other1 = "Failed to get other 1 from invoice line item in LX.  Skipping this optional element.",
    .other2 = "Failed to get other 2 from invoice line item in LX.  Skipping this optional element.",
    .taxable = "Failed to get is taxable from invoice line item in LX.",
    .paid = "Failed to get paid from invoice line item in LX.",
    .openBalance = "Failed to get open balance from invoice line item in LX.  Skipping this optional element.",
    .customFieldCount =
        "Failed to get custom field count from invoice line item in LX.  Skipping this optional element.",
    .customField = "Failed to get custom field from invoice line item in LX.  Skipping this optional element.",
};

constexpr parcelon::forms::SalesTaxLineWording kSalesTaxWording = {
    .itemRecNum = "Failed to get record number from sales tax item in LX while building invoice detail.",
    .customStyle = "Failed to get custom style from invoice in LX.",
    .styleFields = "Failed to get fields from style in LX while building invoice detail.",
    .fieldCount = "Failed to get count from style fields list in LX while building invoice detail.",
    .fieldID = "Failed to get ID from style field in LX while building invoice detail.",
    .fieldOnPrint = "Failed to get on print from style field in LX while building invoice detail.",
    .itemName = "Failed to get name from sales tax item in LX while building invoice's sales tax line item.",
    .longDescription =
        "Failed to get long description from sales tax item in LX while building invoice's sales tax "
        "line item.  Skipping this optional element.",
    .rate =
        "Failed converting amount to XML for rate while building invoice's sales tax line item.  "
        "Skipping this optional element.",
};

// One figure of a progress invoice line: its element, its getter and its two messages.
struct ProgressFigure {
  const char* element;
  HRESULT (STDMETHODCALLTYPE IInvoiceItemLineItem2::*get)(IAmount**);
  const char* readFailed;
  const char* convertFailed;
};

const ProgressFigure kProgressFigures[] = {
    {"CurrentPercentage", &IInvoiceItemLineItem2::GetCurrentPercentage,
     "Failed to get current percentage from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for current percentage.  Skipping this optional element."},
    {"EstimateAmount", &IInvoiceItemLineItem2::GetEstimateAmount,
     "Failed to get estimate amount from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for estimate amount.  Skipping this optional element."},
    {"EstimateQuantity", &IInvoiceItemLineItem2::GetEstimateQuantity,
     "Failed to get estimate quantity from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for estimate quantity.  Skipping this optional element."},
    {"EstimateRate", &IInvoiceItemLineItem2::GetEstimateRate,
     "Failed to get estimate rate from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for estimate rate.  Skipping this optional element."},
    {"PriorAmount", &IInvoiceItemLineItem2::GetPriorAmount,
     "Failed to get prior amount from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for prior amount.  Skipping this optional element."},
    {"PriorPercentage", &IInvoiceItemLineItem2::GetPriorPercentage,
     "Failed to get prior percentage from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for prior percentage.  Skipping this optional element."},
    {"PriorQuantity", &IInvoiceItemLineItem2::GetPriorQuantity,
     "Failed to get prior quantity from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for prior quantity.  Skipping this optional element."},
    {"PriorRate", &IInvoiceItemLineItem2::GetPriorRate,
     "Failed to get prior rate from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for prior rate.  Skipping this optional element."},
    {"TotalPercentage", &IInvoiceItemLineItem2::GetTotalPercentage,
     "Failed to get total percentage from invoice line item(2) in LX.  Skipping this optional element.",
     "Failed converting amount to XML for total percentage.  Skipping this optional element."},
};

}  // namespace

// ---- CInvoiceFormBuilder ---------------------------------------------------------------------

HRESULT CInvoiceFormBuilder::BuildXML(XMLBuilder& builder) {
  builder.OpenAggregate("InvoiceForm");
  RETURN_IF_FAILED_LOG(CCompanyBuilder(companyFile_).BuildXML(builder), kFormPrefix,
                       "Failed to build company aggregate XML.");
  RETURN_IF_FAILED_LOG(CInvoiceDetailBuilder(companyFile_.Get(), recNum_).BuildXML(builder), kFormPrefix,
                       "Failed to build invoice detail aggregate XML.");

  IInvoicePtr invoice;
  RETURN_IF_FAILED(parcelon::forms::LookUpInvoice(
      companyFile_.Get(), recNum_, kFormPrefix, invoice));
  // The customer's and the lines' taxable states are only checked for being readable: the form
  // carries no lines.
  VARIANT_BOOL customerIsTaxable = VARIANT_TRUE;
  LOG_IF_FAILED(invoice->GetCustomerIsTaxable(&customerIsTaxable), kFormPrefix,
                "Failed to get customer is taxable from invoice in LX.  We'll assume he is.");
  IInvoiceItemLineItemsPtr lines;
  RETURN_IF_FAILED_LOG(invoice->GetLineItems(lines.ReleaseAndGetAddressOf()), kFormPrefix,
                       "Failed to get invoice line items from invoice in LX.");
  LONG count = 0;
  RETURN_IF_FAILED_LOG(Required(lines)->GetCount(&count), kFormPrefix,
                       "Failed to get count from invoice line items in LX.");
  for (LONG index = 0; index < count; ++index) {
    IInvoiceItemLineItemPtr line;
    RETURN_IF_FAILED_LOG(lines->GetItem(index, line.ReleaseAndGetAddressOf()), kFormPrefix,
                         "Failed to get item from invoice line items in LX.");
    VARIANT_BOOL lineIsTaxable = VARIANT_FALSE;
    RETURN_IF_FAILED_LOG(Required(line)->GetIsTaxable(&lineIsTaxable), kFormPrefix,
                         "Failed to get is taxable from invoice line item in LX.");
  }
  builder.CloseAggregate("InvoiceForm");
  return S_OK;
}

// ---- CInvoiceDetailBuilder -------------------------------------------------------------------

HRESULT CInvoiceDetailBuilder::InitInvoicePtr() {
  return parcelon::forms::LookUpInvoice(companyFile_.Get(), recNum_, kInitPrefix, invoice_);
}

HRESULT CInvoiceDetailBuilder::BuildXML(XMLBuilder& builder) {
  RETURN_IF_FAILED_LOG(InitInvoicePtr(), kDetailPrefix, "Failed to initialize the invoice ptr.");
  IInvoice* const invoice = invoice_.Get();

  builder.OpenAggregate("InvoiceDetail");
  RETURN_IF_FAILED(parcelon::forms::AddTransactionHead(
      builder, invoice, recNum_, kHeaderWording, kDetailPrefix, totalAmount_));

  DATE dueDate = 0;
  if (SUCCEEDED(LOG_IF_FAILED(invoice->GetDueDate(&dueDate), kDetailPrefix,
                              "Failed to get due date from invoice in LX.  Skipping this optional element.")))
    AddHostDate(builder, "DueDate", dueDate);

  ITermPtr terms;
  if (SUCCEEDED(LOG_IF_FAILED(invoice->GetTerms(terms.ReleaseAndGetAddressOf()), kDetailPrefix,
                              "Failed to get terms from invoice in LX.  Skipping this optional element."))) {
    Bstr termsName;
    if (SUCCEEDED(LOG_IF_FAILED(Required(terms)->GetFullName(termsName.Out()), kDetailPrefix,
                                "Failed to get full name from term in LX while getting invoice's terms.  "
                                "Skipping this optional element.")))
      parcelon::forms::AddTextIfNotEmpty(builder, "Terms", termsName.Get());
  }

  RETURN_IF_FAILED(parcelon::forms::AddCustomerJob(
      builder, invoice, kHeaderWording, kDetailPrefix));

  Bstr number;
  if (SUCCEEDED(LOG_IF_FAILED(invoice->GetInvoiceNumber(number.Out()), kDetailPrefix,
                              "Failed to get invoice number from invoice in LX.  Skipping this optional element.")))
    parcelon::forms::AddTextIfNotEmpty(builder, "InvoiceNum", number.Get());

  IAmountPtr balance;
  if (SUCCEEDED(LOG_IF_FAILED(invoice->GetRemainingBalance(balance.ReleaseAndGetAddressOf()), kDetailPrefix,
                              "Failed to get remaining balance from invoice in LX.  Skipping this optional element.")))
    LOG_IF_FAILED(AddAmount(builder, "BalRemaining", balance, true), kDetailPrefix,
                  "Failed converting amount to XML for balance remaining.  Skipping this optional element.");

  static const parcelon::forms::SuggestedDiscountWording kDiscountWording = {
      kDetailPrefix,
      "Failed to get record number from term in LX while getting invoice's suggested discount data.",
      "Failed to get term(2) in LX while building invoice detail.  Skipping suggested discount info.",
      "Failed to get amount(2) in LX while building invoice detail.  Skipping suggested discount info.",
  };
  RETURN_IF_FAILED(parcelon::forms::AddSuggestedDiscount(builder, invoice_, terms, kDiscountWording));
  builder.CloseAggregate("InvoiceDetail");
  return S_OK;
}

HRESULT CInvoiceDetailBuilder::MaybeAddSalesTaxLineItem(double total, IItemPtr salesTaxItem, IAmountPtr rate,
                                                        VARIANT_BOOL customerIsTaxable, XMLBuilder& builder) {
  if (!invoice_) {
    RETURN_IF_FAILED(InitInvoicePtr());
  }
  return parcelon::forms::AddSalesTaxLine(builder, "InvoiceItem", invoice_.Get(), total, salesTaxItem.Get(), rate,
                                          customerIsTaxable, kSalesTaxWording, kSalesTaxPrefix);
}

// ---- CInvoiceItemBuilder ---------------------------------------------------------------------

CInvoiceItemBuilder::CInvoiceItemBuilder(IInvoiceItemLineItem* line)
    : CSalesLineItemBuilder(line, kLineWording), invoiceLine_(line) {}

HRESULT CInvoiceItemBuilder::BuildXML(XMLBuilder& builder, VARIANT_BOOL customerIsTaxable, OLAString& itemName,
                                      IAmountPtr& amount) {
  builder_ = &builder;
  customerIsTaxable_ = customerIsTaxable;
  ReadItem(kItemPrefix);
  RETURN_IF_FAILED(ReadSecondVersion(line2_, kItemPrefix));

  builder.OpenAggregate("InvoiceItem");
  RETURN_IF_FAILED(BuildInvoiceLineItem());
  builder.CloseAggregate("InvoiceItem");
  GiveNameAndAmount(itemName, amount);
  return S_OK;
}

HRESULT CInvoiceItemBuilder::BuildInvoiceLineItem() {
  XMLBuilder& builder = *Required(builder_);
  AddItemName(builder);
  AddDescription(builder, kLinePrefix);
  AddQuantity(builder, kLinePrefix);
  AddRate(builder, kLinePrefix);
  AddLineAmount(builder, kLinePrefix);
  AddClassName(builder, kLinePrefix);
  AddOthers(builder, kLinePrefix);
  RETURN_IF_FAILED(AddFlags(builder, kLinePrefix));
  AddOpenBalance(builder, kLinePrefix);
  AddCustomFields(builder, kLinePrefix);
  AddServiceDate(builder);
  AddTaxableFlag(builder);
  return BuildProgressInvoiceElements(line2_, builder);
}

void CInvoiceItemBuilder::AddServiceDate(XMLBuilder& builder) {
  DATE serviceDate = 0;
  if (SUCCEEDED(LOG_IF_FAILED(Required(invoiceLine_)->GetServiceDate(&serviceDate), kLinePrefix,
                              "Failed to get service date from invoice line item in LX.  Skipping this "
                              "optional element.")))
    AddHostDate(builder, "ServiceDate", serviceDate);
}

HRESULT CInvoiceItemBuilder::BuildProgressInvoiceElements(IInvoiceItemLineItem2Ptr line2, XMLBuilder& builder) {
  IInvoiceItemLineItem2* const line = Required(line2);
  for (const ProgressFigure& figure : kProgressFigures) {
    IAmountPtr value;
    if (SUCCEEDED(LOG_IF_FAILED((line->*figure.get)(value.ReleaseAndGetAddressOf()), kProgressPrefix, figure.readFailed)))
      LOG_IF_FAILED(AddAmount(builder, figure.element, value, true), kProgressPrefix, figure.convertFailed);
  }
  return S_OK;
}
