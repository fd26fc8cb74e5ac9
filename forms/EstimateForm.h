// The estimate form aggregate "EstimateForm": the company block and the estimate's header
// ("EstimateDetail"). Like the invoice form it carries no lines; the line writer
// (CEstimateItemBuilder), the sales-tax line rule and the template's cost check are kept with it
// for forms that carry lines.
#pragma once

#include "clienttools/OLAString.h"
#include "clienttools/XMLBuilder.h"
#include "forms/FormParts.h"
#include "host/HostModel.h"
#include "platform/ComBase.h"

class CEstimateFormBuilder {
 public:
  CEstimateFormBuilder(ICompanyFile* companyFile, LONG transactionRecNum)
      : companyFile_(companyFile), recNum_(transactionRecNum) {}

  // "EstimateForm": "Company", "EstimateDetail". A failure is returned with the elements opened
  // so far left open.
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  ICompanyFilePtr companyFile_;
  LONG recNum_;
};

class CEstimateDetailBuilder {
 public:
  CEstimateDetailBuilder(ICompanyFile* companyFile, LONG transactionRecNum)
      : companyFile_(companyFile), recNum_(transactionRecNum) {}

  // "EstimateDetail": "TranID", "TranNum", "TranDate", "TotalAmount", "TMCreateStamp", "Project"
  // (the job's name, for an estimate of a job), "CustomerJobID", "CustomerJobName",
  // "BillAddress", "EstimateNum".
  HRESULT BuildXML(XMLBuilder& builder);
  // Looks the estimate up in the company file.
  HRESULT InitEstimatePtr();

  // Whether the lines may show their cost: *showCost is TRUE when the estimate's template prints
  // both the rate column and the markup column, FALSE otherwise. It is the last argument of
  // CEstimateItemBuilder::BuildXML. Looks the estimate up first when BuildXML has not.
  HRESULT CheckTemplateForHowToHandleCost(BOOL* showCost);

  // The sales-tax line rule, as the invoice's: one "EstimateItem" for the sales tax (see
  // CInvoiceDetailBuilder::MaybeAddSalesTaxLineItem).
  HRESULT MaybeAddSalesTaxLineItem(double total, IItemPtr salesTaxItem, IAmountPtr rate,
                                   VARIANT_BOOL customerIsTaxable, XMLBuilder& builder);

  // The estimate's total amount as BuildXML read it.
  double TotalAmount() const { return totalAmount_; }

 private:
  void AddProject(XMLBuilder& builder);

  ICompanyFilePtr companyFile_;
  LONG recNum_;
  IEstimatePtr estimate_;
  double totalAmount_ = 0;
};

// One "EstimateItem" for one estimate line.
class CEstimateItemBuilder : public parcelon::forms::CSalesLineItemBuilder {
 public:
  explicit CEstimateItemBuilder(IEstimateItemLineItem* line);

  // Writes the line: "ItemName", "ItemDesc", "Quantity" (unless the quantity is blank), "Rate"
  // (when `showCost` is set) and "Amount" (both unless the line only describes: zero amount and
  // blank quantity), "ClassName", "Other1", "Other2", "IsPrintable", "IsTaxable", "IsEndOfGroup",
  // "Paid", "BalOpen", "MarkupLineItem" (when `showCost` is set), "NominalLineItem", the
  // "CustomFieldData" and "TaxableFlag". The arguments are those of the invoice line writer,
  // and the template's cost check (CEstimateDetailBuilder::CheckTemplateForHowToHandleCost).
  HRESULT BuildXML(XMLBuilder& builder, VARIANT_BOOL customerIsTaxable, OLAString& itemName,
                   IAmountPtr& amount, BOOL showCost);
  // The elements of the line, into the builder BuildXML was given.
  HRESULT BuildEstimateLineItem();

 private:
  void AddMarkup(XMLBuilder& builder);
  void AddNominalTotal(XMLBuilder& builder);

  IEstimateItemLineItemPtr estimateLine_;
  XMLBuilder* builder_ = nullptr;
  BOOL showCost_ = FALSE;
};
