// The transaction records of the data upload: the header elements "Invoice" (CInvoiceBuilder)
// and "Estimate" (CEstimateBuilder), without lines. Failures follow the list records' rule.
#pragma once

#include "clienttools/XMLBuilder.h"
#include "host/HostModel.h"

class CInvoiceBuilder {
 public:
  explicit CInvoiceBuilder(IInvoicePtr invoice) : invoice_(std::move(invoice)) {}
  virtual ~CInvoiceBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IInvoicePtr invoice_;
};

class CEstimateBuilder {
 public:
  explicit CEstimateBuilder(IEstimatePtr estimate) : estimate_(std::move(estimate)) {}
  virtual ~CEstimateBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IEstimatePtr estimate_;
};
