// The two sales tax aggregates, "SalesTax" and "SalesTaxData": self-contained writers kept for
// request builders; the form aggregates do not call them.
#pragma once

#include <utility>

#include "clienttools/XMLBuilder.h"
#include "host/ListRecords.h"
#include "platform/ComBase.h"

// "SalesTax": the sales tax item's name, its rate and the tax total.
class CSalesTaxBuilder {
 public:
  CSalesTaxBuilder(IItemPtr salesTaxItem, IAmountPtr rate, double taxTotal)
      : salesTaxItem_(std::move(salesTaxItem)), rate_(std::move(rate)), taxTotal_(taxTotal) {}

  // "SalesTax": "ItemName", "Rate", "SalesTaxTotal" (two decimals). A value that cannot be read
  // returns its failure with "SalesTax" left open. A missing item or rate raises
  // ComError(E_POINTER).
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IItemPtr salesTaxItem_;
  IAmountPtr rate_;
  double taxTotal_;
};

// "SalesTaxData": the sales tax item's record number, the percentage, the tax total and whether
// the tax prints as a line item.
class CSalesTaxDataBuilder {
 public:
  CSalesTaxDataBuilder(IItemPtr salesTaxItem, IAmountPtr taxPercentage, double taxTotal,
                       VARIANT_BOOL printAsLineItem)
      : salesTaxItem_(std::move(salesTaxItem)),
        taxPercentage_(std::move(taxPercentage)),
        taxTotal_(taxTotal),
        printAsLineItem_(printAsLineItem) {}

  // "SalesTaxData": "SalesTaxID", "SalesTaxPercentage", "SalesTaxTotal" (two decimals),
  // "PrintAsLineItem". Failures as for CSalesTaxBuilder.
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IItemPtr salesTaxItem_;
  IAmountPtr taxPercentage_;
  double taxTotal_;
  VARIANT_BOOL printAsLineItem_;
};
