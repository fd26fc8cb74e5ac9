// The invoice form aggregate "InvoiceForm": the company block and the invoice's header
// ("InvoiceDetail"). The invoice's lines reach the gateway with the uploaded transaction records;
// the form only checks that every line's taxable state can be read. The line writer
// (CInvoiceItemBuilder) and the sales-tax line rule are kept with it for forms that carry lines.
#pragma once

#include "clienttools/OLAString.h"
#include "clienttools/XMLBuilder.h"
#include "forms/FormParts.h"
#include "host/HostModel.h"
#include "platform/ComBase.h"

class CInvoiceFormBuilder {
 public:
  CInvoiceFormBuilder(ICompanyFile* companyFile, LONG transactionRecNum)
      : companyFile_(companyFile), recNum_(transactionRecNum) {}

  // "InvoiceForm": "Company", "InvoiceDetail". A failure is returned with the elements opened so
  // far left open.
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  ICompanyFilePtr companyFile_;
  LONG recNum_;
};

class CInvoiceDetailBuilder {
 public:
  CInvoiceDetailBuilder(ICompanyFile* companyFile, LONG transactionRecNum)
      : companyFile_(companyFile), recNum_(transactionRecNum) {}

  // "InvoiceDetail": "TranID", "TranNum", "TranDate", "TotalAmount", "TMCreateStamp", "DueDate",
  // "Terms", "CustomerJobID", "CustomerJobName", "BillAddress", "InvoiceNum", "BalRemaining" and
  // "SuggestedDiscountData". A failure to read the suggested discount itself raises ComError.
  HRESULT BuildXML(XMLBuilder& builder);
  // Looks the invoice up in the company file.
  HRESULT InitInvoicePtr();

  // The sales-tax line rule: one "InvoiceItem" for the sales tax, when the customer is taxable,
  // `salesTaxItem` is a sales tax item, and the invoice's template does not print its sales tax
  // field (it shows the tax as a line item instead). "Rate" is written from `rate`, "Amount"
  // from `total` with two decimals. Looks the invoice up first when BuildXML has not. S_FALSE
  // when no line is due.
  HRESULT MaybeAddSalesTaxLineItem(double total, IItemPtr salesTaxItem, IAmountPtr rate,
                                   VARIANT_BOOL customerIsTaxable, XMLBuilder& builder);

  // The invoice's total amount as BuildXML read it.
  double TotalAmount() const { return totalAmount_; }

 private:

  ICompanyFilePtr companyFile_;
  LONG recNum_;
  IInvoicePtr invoice_;
  double totalAmount_ = 0;
};

// One "InvoiceItem" for one invoice line.
class CInvoiceItemBuilder : public parcelon::forms::CSalesLineItemBuilder {
 public:
  explicit CInvoiceItemBuilder(IInvoiceItemLineItem* line);

  // Writes the line: "ItemName", "ItemDesc", "Quantity", "Rate", "Amount", "ClassName", "Other1",
  // "Other2", "IsPrintable", "IsTaxable" (the line is taxable and so is the customer, as
  // `customerIsTaxable` says), "IsEndOfGroup", "Paid", "BalOpen", the "CustomFieldData",
  // "ServiceDate", "TaxableFlag" and the progress-invoice figures. `itemName` and `amount`
  // receive the line's item name and amount (null when it could not be read).
  HRESULT BuildXML(XMLBuilder& builder, VARIANT_BOOL customerIsTaxable, OLAString& itemName,
                   IAmountPtr& amount);
  // The elements of the line, into the builder BuildXML was given.
  HRESULT BuildInvoiceLineItem();
  // "CurrentPercentage" to "TotalPercentage", each left out when empty or unreadable.
  HRESULT BuildProgressInvoiceElements(IInvoiceItemLineItem2Ptr line2, XMLBuilder& builder);

 private:
  void AddServiceDate(XMLBuilder& builder);

  IInvoiceItemLineItemPtr invoiceLine_;
  IInvoiceItemLineItem2Ptr line2_;
  XMLBuilder* builder_ = nullptr;
};
