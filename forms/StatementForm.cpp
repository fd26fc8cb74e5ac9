#include "forms/StatementForm.h"

#include <algorithm>
#include <iterator>

#include "diagnostics/LogIfFailed.h"
#include "forms/CompanyBuilder.h"
#include "forms/FormParts.h"

using parcelon::forms::Required;

namespace {

constexpr char kFormPrefix[] = "Parcelon:CStatementFormBuilder::BuildXML(XMLBuilder&)";
constexpr char kCustomerPrefix[] = "Parcelon:CStatementDetailBuilder::BuildCustomerXML(XMLBuilder&)";
constexpr char kAddressPrefix[] = "Parcelon:CStatementDetailBuilder::BuildCustomerAddress(XMLBuilder&)";
constexpr char kAccountPrefix[] = "Parcelon:CStatementDetailBuilder::BuildCustomerAccnt(XMLBuilder&)";
constexpr char kSalesRepPrefix[] = "Parcelon:CStatementDetailBuilder::BuildCustomerSalesRep(XMLBuilder&)";
constexpr char kTermsPrefix[] = "Parcelon:CStatementDetailBuilder::BuildCustomerTerms(XMLBuilder&)";

SharedText Share(BSTR text) {
  auto shared = std::make_shared<OLAString>();
  shared->SetFromBSTR(text);
  return shared;
}

void AddSharedText(XMLBuilder& builder, XmlName name, const SharedText& text) {
  static const OLAString kEmpty;
  builder.AddElement(name, text ? *text : kEmpty);
}

}  // namespace

StatementTxnItemView StatementTxnItemView::FromHost(DATE date, BSTR txnDesc, BSTR amountStr, BSTR txnItemDesc,
                                                    BSTR txnItemQty, BSTR txnRunningBal, BSTR txnItemRate) {
  return {date,
          Share(txnDesc),
          Share(amountStr),
          Share(txnItemDesc),
          Share(txnItemQty),
          Share(txnRunningBal),
          Share(txnItemRate)};
}

// ---- CStatementFormBuilder -------------------------------------------------------------------

HRESULT CStatementFormBuilder::BuildXML(XMLBuilder& builder) {
  builder.OpenAggregate("StatementForm");
  RETURN_IF_FAILED_LOG(CCompanyBuilder(companyFile_).BuildXML(builder), kFormPrefix,
                       "Failed to build company aggregate XML.");
  RETURN_IF_FAILED_LOG(CStatementDetailBuilder(companyFile_.Get(), values_.customerRecNum).BuildXML(builder, values_),
                       kFormPrefix, "Failed to build Statement Detail XML.");
  builder.CloseAggregate("StatementForm");
  return S_OK;
}

// ---- CStatementDetailBuilder -----------------------------------------------------------------

HRESULT CStatementDetailBuilder::BuildXML(XMLBuilder& builder, const StatementValues& values) {
  builder.OpenAggregate("StatementDetail");
  builder.AddLongElement("StatementID", values.statementID);
  builder.AddDateTimeElement("StatementDate", values.statementDate);
  builder.AddDateTimeElement("DueDate", values.dueDate);
  builder.AddElement("AmountDue", values.amountDue.Get());
  RETURN_IF_FAILED(BuildCustomerXML(builder));
  builder.AddDateTimeElement("StatementFromDate", values.fromDate);
  builder.AddDateTimeElement("StatementToDate", values.toDate);
  builder.CloseAggregate("StatementDetail");
  return S_OK;
}

HRESULT CStatementDetailBuilder::LookUpCustomer(const char* prefix) {
  if (customer_) return S_OK;
  IListsPtr lists;
  RETURN_IF_FAILED_LOG(Required(companyFile_)->GetLists(lists.ReleaseAndGetAddressOf()), prefix,
                       "Failed to get Lists from company file in LX.");
  INamesPtr names;
  RETURN_IF_FAILED_LOG(Required(lists)->GetNames(names.ReleaseAndGetAddressOf()), prefix,
                       "Failed to get Names from company file in LX.");
  RETURN_IF_FAILED_LOG(Required(names)->GetItemByRecNum(parcelon::forms::RecNumKey(customerRecNum_),
                                                        customer_.ReleaseAndGetAddressOf()),
                       prefix, "Failed to get customer from Names in LX.");
  Required(customer_);
  return S_OK;
}

HRESULT CStatementDetailBuilder::BuildCustomerXML(XMLBuilder& builder) {
  RETURN_IF_FAILED(LookUpCustomer(kCustomerPrefix));
  Bstr fullName;
  RETURN_IF_FAILED_LOG(customer_->GetFullName(fullName.Out()), kCustomerPrefix, "Failed to get Job Name.");
  builder.AddElement("CustomerJobName", fullName.Get());
  builder.AddLongElement("CustomerJobID", customerRecNum_);
  // A job's statement goes to the address of the customer at the top of its tree.
  RETURN_IF_FAILED_LOG(customer_->GetRoot(root_.ReleaseAndGetAddressOf()), kCustomerPrefix,
                       "Failed to get Job Name Root.");
  return BuildCustomerAddress(builder);
}

HRESULT CStatementDetailBuilder::BuildCustomerAddress(XMLBuilder& builder) {
  IAddressPtr address;
  HRESULT hr = Required(root_)->GetAddress(address.ReleaseAndGetAddressOf());
  if (SUCCEEDED(hr)) hr = parcelon::forms::AddAddress(builder, "BillAddress", address);
  // Worded as the company block's message, though it concerns the customer.
  RETURN_IF_FAILED_LOG(hr, kAddressPrefix, "Failed to get address lines from company info in LX.");
  return S_OK;
}

void CStatementDetailBuilder::BuildAgingXML(XMLBuilder& builder, std::span<const OLAString> agingValues) {
  builder.OpenAggregate("AgingDetail");
  const size_t count = std::min(agingValues.size(), std::size(kAgingNames));
  for (size_t i = 0; i < count; ++i) builder.AddElement(kAgingNames[i], agingValues[i]);
  builder.CloseAggregate("AgingDetail");
}

HRESULT CStatementDetailBuilder::BuildCustomerAccnt(XMLBuilder& builder) {
  RETURN_IF_FAILED(LookUpCustomer(kAccountPrefix));
  Bstr number;
  RETURN_IF_FAILED_LOG(customer_->GetAccountNumber(number.Out()), kAccountPrefix, "Failed to get account number.");
  builder.AddElement("AccountNumber", number.Get());
  return S_OK;
}

HRESULT CStatementDetailBuilder::BuildCustomerSalesRep(XMLBuilder& builder) {
  RETURN_IF_FAILED(LookUpCustomer(kSalesRepPrefix));
  ISalesRepPtr salesRep;
  RETURN_IF_FAILED_LOG(customer_->GetSalesRep(salesRep.ReleaseAndGetAddressOf()), kSalesRepPrefix,
                       "Failed to get SalesRep from IName.");
  Bstr name;
  RETURN_IF_FAILED_LOG(Required(salesRep)->GetName(name.Out()), kSalesRepPrefix, "Failed to get salesRep name.");
  builder.AddElement("SalesRep", name.Get());
  return S_OK;
}

HRESULT CStatementDetailBuilder::BuildCustomerTerms(XMLBuilder& builder) {
  RETURN_IF_FAILED(LookUpCustomer(kTermsPrefix));
  ITermPtr terms;
  RETURN_IF_FAILED_LOG(customer_->GetTerms(terms.ReleaseAndGetAddressOf()), kTermsPrefix,
                       "Failed to get Term from IName.");
  Bstr name;
  RETURN_IF_FAILED_LOG(Required(terms)->GetName(name.Out()), kTermsPrefix, "Failed to get Term Name.");
  builder.AddElement("Terms", name.Get());
  return S_OK;
}

void CStatementDetailBuilder::BuildStatementItemXML(XMLBuilder& builder, const StatementTxnItemView& line) {
  builder.OpenAggregate("StatementItem");
  builder.AddZonedDateTimeElement("TranDate", line.date);
  AddSharedText(builder, "TranDesc", line.txnDesc);
  AddSharedText(builder, "ItemDesc", line.txnItemDesc);
  AddSharedText(builder, "Quantity", line.txnItemQty);
  AddSharedText(builder, "Rate", line.txnItemRate);
  AddSharedText(builder, "Amount", line.amountStr);
  AddSharedText(builder, "Balance", line.txnRunningBal);
  builder.CloseAggregate("StatementItem");
}
