#include "forms/SalesTaxBuilder.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"

namespace {
constexpr char kSalesTaxPrefix[] = "Parcelon:CSalesTaxBuilder::BuildXML(XMLBuilder&)";
constexpr char kSalesTaxDataPrefix[] = "Parcelon:CSalesTaxDataBuilder::BuildXML(XMLBuilder&)";
}  // namespace

HRESULT CSalesTaxBuilder::BuildXML(XMLBuilder& builder) {
  builder.OpenAggregate("SalesTax");

  Bstr name;
  RETURN_IF_FAILED_LOG(parcelon::forms::Required(salesTaxItem_)->GetFullName(name.Out()), kSalesTaxPrefix,
                       "Failed to get full name from item in LX for sales tax.");
  builder.AddElement("ItemName", name.Get());

  RETURN_IF_FAILED_LOG(parcelon::forms::AddAmount(builder, "Rate", rate_, false), kSalesTaxPrefix,
                       "Failed converting amount to XML for rate for sales tax.");

  builder.AddFixedElement("SalesTaxTotal", taxTotal_, 2);
  builder.CloseAggregate("SalesTax");
  return S_OK;
}

HRESULT CSalesTaxDataBuilder::BuildXML(XMLBuilder& builder) {
  builder.OpenAggregate("SalesTaxData");

  LONG recNum = 0;
  RETURN_IF_FAILED_LOG(parcelon::forms::Required(salesTaxItem_)->GetRecNum(&recNum), kSalesTaxDataPrefix,
                       "Failed to get record number from item in LX for sales tax data.");
  builder.AddLongElement("SalesTaxID", recNum);

  RETURN_IF_FAILED_LOG(parcelon::forms::AddAmount(builder, "SalesTaxPercentage", taxPercentage_, false),
                       kSalesTaxDataPrefix,
                       "Failed converting amount to XML for sales tax percentage.");

  builder.AddFixedElement("SalesTaxTotal", taxTotal_, 2);
  builder.AddBoolElement("PrintAsLineItem", printAsLineItem_);
  builder.CloseAggregate("SalesTaxData");
  return S_OK;
}
