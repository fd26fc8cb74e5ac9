#include "forms/EstimateForm.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/CompanyBuilder.h"
#include "platform/Bstr.h"

using parcelon::forms::AddAmount;
using parcelon::forms::Required;

namespace {

constexpr char kFormPrefix[] = "Parcelon:CEstimateFormBuilder::BuildXML(XMLBuilder&)";
constexpr char kDetailPrefix[] = "Parcelon:CEstimateDetailBuilder::BuildXML(XMLBuilder&)";
constexpr char kInitPrefix[] = "Parcelon:CEstimateDetailBuilder::InitEstimatePtr(void)";
constexpr char kCostPrefix[] = "Parcelon:CEstimateDetailBuilder::CheckTemplateForHowToHandleCost(BOOL*)";
constexpr char kSalesTaxPrefix[] =
    "Parcelon:CEstimateDetailBuilder::MaybeAddSalesTaxLineItem(double, IItemPtr, IAmountPtr, "
    "VARIANT_BOOL, XMLBuilder&)";
constexpr char kItemPrefix[] =
    "Parcelon:CEstimateItemBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL, OLAString&, IAmountPtr&, BOOL)";
constexpr char kLinePrefix[] = "Parcelon:CEstimateItemBuilder::BuildEstimateLineItem()";

constexpr parcelon::forms::SalesHeaderWording kHeaderWording = {
    .transactionNumber =
        "Failed to get transaction number from estimate in LX.  Skipping this optional element.",
    .date = "Failed to get date from estimate in LX.  Skipping this optional element.",
    .amount = "Failed to get amount from estimate in LX.",
    .amountDouble = "Failed to get double from amount in LX when getting estimate's total amount.",
    .createTimeStamp = "Failed to get create time stamp from estimate in LX.",
    .customer = "Failed to get customer from estimate in LX.",
    .customerRecNum =
        "Failed to get record number from customer in LX while getting estimate's customer job ID.",
    .billingAddress =
        "Failed to get billing address lines from estimate in LX.  Skipping this optional element.",
};

constexpr parcelon::forms::LineWording kLineWording = {
    .item = "Failed to get item from estimate line item in LX.  Continuing...",
    .itemType = "Failed to get type from item in LX while building estimate item.  Continuing...",
    .endOfGroup = "Failed to get is end of group from estimate line item(2) in LX.",
    .printable = "Failed to get is printable from estimate line item(2) in LX.",
    .quantity = "Failed to get quantity from estimate line item(2) in LX.",
    .secondVersion = "Failed to get estimate line item(2) from LX.",
    .itemMissingForName =
        "Using empty item name element because failed to get item from estimate line item in LX.",
    .itemName =
        "Failed to get name from item in LX while building estimate item.  Using empty item name element.",
    .description =
        "Failed to get item description from estimate line item in LX.  Skipping this optional element.",
    .unitPrice = "Failed to get unit price from estimate line item in LX.  Skipping this optional element.",
    .amount = "Failed to get amount from estimate line item in LX.  Skipping this optional element.",
    .lineClass = "Failed to get class from estimate line item in LX.  Skipping this optional element.",
    .className =
        "Failed to get name from class in LX while getting estimate item's class name.  Skipping this "
        "optional element.",
    .other1 = "Failed to get other 1 from estimate line item in LX.  Skipping this optional element.",
    .other2 = "Failed to get other 2 from estimate line item in LX.  Skipping this optional element.",
    .taxable = "Failed to get is taxable from estimate line item in LX.",
    .paid = "Failed to get paid from estimate line item in LX.",
    .openBalance = "Failed to get open balance from estimate line item in LX.  Skipping this optional element.",
    .customFieldCount =
        "Failed to get custom field count from estimate line item in LX.  Skipping this optional element.",
    .customField = "Failed to get custom field from estimate line item in LX.  Skipping this optional element.",
};

constexpr parcelon::forms::SalesTaxLineWording kSalesTaxWording = {
    .itemRecNum = "Failed to get record number from sales tax item in LX while building estimate detail.",
    .customStyle = "Failed to get custom style from estimate in LX.",
    .styleFields = "Failed to get fields from style in LX while building estimate detail.",
    .fieldCount = "Failed to get count from style fields list in LX while building estimate detail.",
    .fieldID = "Failed to get ID from style field in LX while building estimate detail.",
    .fieldOnPrint = "Failed to get on print from style field in LX while building estimate detail.",
    .itemName = "Failed to get name from sales tax item in LX while building estimate's sales tax line item.",
    .longDescription =
        "Failed to get long description from sales tax item in LX while building estimate's sales tax "
        "line item.  Skipping this optional element.",
    .rate =
        "Failed converting amount to XML for rate while building estimate's sales tax line item.  "
        "Skipping this optional element.",
};

// A yes/no question to the host whose failure only costs the answer: it is then taken as no.
VARIANT_BOOL AskOrAssumeNo(IEstimateItemLineItem* line, HRESULT (STDMETHODCALLTYPE ILineItem::*ask)(VARIANT_BOOL*),
                           const char* message) {
  VARIANT_BOOL answer = VARIANT_FALSE;
  if (FAILED(LOG_IF_FAILED((line->*ask)(&answer), kLinePrefix, message))) return VARIANT_FALSE;
  return answer;
}

}  // namespace

// ---- CEstimateFormBuilder --------------------------------------------------------------------

HRESULT CEstimateFormBuilder::BuildXML(XMLBuilder& builder) {
  builder.OpenAggregate("EstimateForm");
  RETURN_IF_FAILED_LOG(CCompanyBuilder(companyFile_).BuildXML(builder), kFormPrefix,
                       "Failed to build company aggregate XML.");
  RETURN_IF_FAILED_LOG(CEstimateDetailBuilder(companyFile_.Get(), recNum_).BuildXML(builder), kFormPrefix,
                       "Failed to build estimate detail aggregate XML.");

  IEstimatePtr estimate;
  RETURN_IF_FAILED(parcelon::forms::LookUpEstimate(
      companyFile_.Get(), recNum_, kFormPrefix, estimate));
  // The customer's taxable state is only checked for being readable: the form carries no lines.
  VARIANT_BOOL customerIsTaxable = VARIANT_TRUE;
  LOG_IF_FAILED(estimate->GetCustomerIsTaxable(&customerIsTaxable), kFormPrefix,
                "Failed to get customer is taxable from estimate in LX.  We'll assume he is.");
  builder.CloseAggregate("EstimateForm");
  return S_OK;
}

// ---- CEstimateDetailBuilder ------------------------------------------------------------------

HRESULT CEstimateDetailBuilder::InitEstimatePtr() {
  return parcelon::forms::LookUpEstimate(companyFile_.Get(), recNum_, kInitPrefix, estimate_);
}

HRESULT CEstimateDetailBuilder::BuildXML(XMLBuilder& builder) {
  RETURN_IF_FAILED_LOG(InitEstimatePtr(), kDetailPrefix, "Failed to initialize the estimate ptr.");
  IEstimate* const estimate = estimate_.Get();

  builder.OpenAggregate("EstimateDetail");
  RETURN_IF_FAILED(parcelon::forms::AddTransactionHead(
      builder, estimate, recNum_, kHeaderWording, kDetailPrefix, totalAmount_));
  AddProject(builder);
  RETURN_IF_FAILED(parcelon::forms::AddCustomerJob(
      builder, estimate, kHeaderWording, kDetailPrefix));

  Bstr number;
  if (SUCCEEDED(LOG_IF_FAILED(estimate->GetEstimateNumber(number.Out()), kDetailPrefix,
                              "Failed to get estimate number from estimate in LX.  Skipping this optional "
                              "element.")))
    parcelon::forms::AddTextIfNotEmpty(builder, "EstimateNum", number.Get());
  builder.CloseAggregate("EstimateDetail");
  return S_OK;
}

// "Project": the name of the job an estimate is for; an estimate for a customer has none. The
// customer is read here on its own, as an optional value.
void CEstimateDetailBuilder::AddProject(XMLBuilder& builder) {
  INamePtr customer;
  if (FAILED(LOG_IF_FAILED(estimate_->GetCustomer(customer.ReleaseAndGetAddressOf()), kDetailPrefix,
                           "Failed to get customer from estimate in LX.  Skipping this optional element.")))
    return;
  VARIANT_BOOL isJob = VARIANT_FALSE;
  if (FAILED(LOG_IF_FAILED(Required(customer)->GetIsJob(&isJob), kDetailPrefix,
                           "Failed to get is job from customer in LX while getting estimate's project.  "
                           "Skipping this optional element.")) ||
      isJob == VARIANT_FALSE)
    return;
  Bstr name;
  if (SUCCEEDED(LOG_IF_FAILED(customer->GetName(name.Out()), kDetailPrefix,
                              "Failed to get name from customer in LX while getting estimate's project.  "
                              "Skipping this optional element.")))
    builder.AddElement("Project", name.Get());
}

HRESULT CEstimateDetailBuilder::CheckTemplateForHowToHandleCost(BOOL* showCost) {
  if (!showCost) return E_POINTER;
  *showCost = FALSE;
  if (!estimate_) {
    RETURN_IF_FAILED(InitEstimatePtr());
  }
  IStylePtr style;
  RETURN_IF_FAILED_LOG(estimate_->GetCustomStyle(style.ReleaseAndGetAddressOf()), kCostPrefix,
                       "Failed to get custom style from estimate in LX.");
  IStyleTablePtr table;
  RETURN_IF_FAILED_LOG(Required(style)->GetTable(table.ReleaseAndGetAddressOf()), kCostPrefix,
                       "Failed to get table from style in LX.");
  IStyleColumnsPtr columns;
  RETURN_IF_FAILED_LOG(Required(table)->GetColumns(columns.ReleaseAndGetAddressOf()), kCostPrefix,
                       "Failed to get columns from style table in LX.");
  LONG count = 0;
  RETURN_IF_FAILED_LOG(Required(columns)->GetCount(&count), kCostPrefix,
                       "Failed to get count from style columns list in LX.");

  VARIANT_BOOL ratePrinted = VARIANT_FALSE;
  VARIANT_BOOL markupPrinted = VARIANT_FALSE;
  for (LONG index = 0; index < count; ++index) {
    IStyleColumnPtr column;
    LONG id = 0;
    HRESULT hr = columns->GetItem(index, column.ReleaseAndGetAddressOf());
    if (SUCCEEDED(hr)) hr = Required(column)->GetID(&id);
    RETURN_IF_FAILED_LOG(hr, kCostPrefix, "Failed get ID from style column in LX while building estimate detail.");
    if (id == sfRate)
      RETURN_IF_FAILED_LOG(column->GetOnPrint(&ratePrinted), kCostPrefix,
                           "Failed to get on print from style rate column in LX while building estimate detail.");
    else if (id == sfEstMarkupItem)
      RETURN_IF_FAILED_LOG(column->GetOnPrint(&markupPrinted), kCostPrefix,
                           "Failed to get on print from style markup column in LX while building estimate detail.");
  }
  // A customer sees the cost of a line only on a template that shows both the cost rate and the
  // markup on it; otherwise the lines show quantities and amounts alone.
  *showCost = ratePrinted != VARIANT_FALSE && markupPrinted != VARIANT_FALSE ? TRUE : FALSE;
  return S_OK;
}

HRESULT CEstimateDetailBuilder::MaybeAddSalesTaxLineItem(double total, IItemPtr salesTaxItem, IAmountPtr rate,
                                                         VARIANT_BOOL customerIsTaxable, XMLBuilder& builder) {
  if (!estimate_) {
    RETURN_IF_FAILED(InitEstimatePtr());
  }
  return parcelon::forms::AddSalesTaxLine(builder, "EstimateItem", estimate_.Get(), total, salesTaxItem.Get(), rate,
                                          customerIsTaxable, kSalesTaxWording, kSalesTaxPrefix);
}

// ---- CEstimateItemBuilder --------------------------------------------------------------------

CEstimateItemBuilder::CEstimateItemBuilder(IEstimateItemLineItem* line)
    : CSalesLineItemBuilder(line, kLineWording), estimateLine_(line) {}

HRESULT CEstimateItemBuilder::BuildXML(XMLBuilder& builder, VARIANT_BOOL customerIsTaxable, OLAString& itemName,
                                       IAmountPtr& amount, BOOL showCost) {
  builder_ = &builder;
  customerIsTaxable_ = customerIsTaxable;
  showCost_ = showCost;
  ReadItem(kItemPrefix);
  IEstimateItemLineItem2Ptr line2;
  RETURN_IF_FAILED(ReadSecondVersion(line2, kItemPrefix));

  builder.OpenAggregate("EstimateItem");
  RETURN_IF_FAILED(BuildEstimateLineItem());
  builder.CloseAggregate("EstimateItem");
  GiveNameAndAmount(itemName, amount);
  return S_OK;
}

HRESULT CEstimateItemBuilder::BuildEstimateLineItem() {
  XMLBuilder& builder = *Required(builder_);
  IEstimateItemLineItem* const line = Required(estimateLine_);
  AddItemName(builder);
  AddDescription(builder, kLinePrefix);

  const VARIANT_BOOL amountIsZero = AskOrAssumeNo(line, &ILineItem::GetIsAmountZero,
                                                  "Failed determining if line amount is zero in LX.  Continuing...");
  const VARIANT_BOOL quantityIsBlank = AskOrAssumeNo(line, &ILineItem::GetIsQuantityBlank,
                                                     "Failed determining if quantity is blank in LX.  Continuing...");
  // A line with neither quantity nor amount only describes: it has no figures.
  const bool describesOnly = amountIsZero != VARIANT_FALSE && quantityIsBlank != VARIANT_FALSE;
  if (quantityIsBlank == VARIANT_FALSE) AddQuantity(builder, kLinePrefix);
  if (!describesOnly) {
    if (showCost_) AddRate(builder, kLinePrefix);
    AddLineAmount(builder, kLinePrefix);
  }

  AddClassName(builder, kLinePrefix);
  AddOthers(builder, kLinePrefix);
  RETURN_IF_FAILED(AddFlags(builder, kLinePrefix));
  AddOpenBalance(builder, kLinePrefix);
  if (showCost_) AddMarkup(builder);
  AddNominalTotal(builder);
  AddCustomFields(builder, kLinePrefix);
  AddTaxableFlag(builder);
  return S_OK;
}

void CEstimateItemBuilder::AddMarkup(XMLBuilder& builder) {
  IAmountPtr markup;
  if (SUCCEEDED(LOG_IF_FAILED(estimateLine_->GetMarkup(markup.ReleaseAndGetAddressOf()), kLinePrefix,
                              "Failed to get markup from estimate line item in LX.  Skipping this optional "
                              "element.")))
    LOG_IF_FAILED(AddAmount(builder, "MarkupLineItem", markup, true), kLinePrefix,
                  "Failed converting amount to XML for markup line item.  Skipping this optional element.");
}

void CEstimateItemBuilder::AddNominalTotal(XMLBuilder& builder) {
  IAmountPtr nominal;
  if (FAILED(LOG_IF_FAILED(estimateLine_->GetNominalTotal(nominal.ReleaseAndGetAddressOf()), kLinePrefix,
                           "Failed to get nominal total from estimate line item in LX.  Skipping this optional "
                           "element.")))
    return;
  double value = 0;
  if (SUCCEEDED(LOG_IF_FAILED(parcelon::forms::ReadDouble(nominal, value), kLinePrefix,
                              "Failed to get double from amount in LX when getting nominal line item.  Skipping "
                              "this optional element.")))
    builder.AddDoubleElement("NominalLineItem", value);
}
