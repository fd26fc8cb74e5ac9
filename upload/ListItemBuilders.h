// The list records of the data upload: "TermItem" (CTermItemBuilder) and "CustomerJobItem"
// (CCustomerJobItemBuilder), and the kept builders of classes, customer messages, sales reps and
// ship methods. A required value that cannot be read is logged and returned with the element left
// open; an optional one is logged ("... Skipping this optional element.") and left out.
#pragma once

#include "clienttools/XMLBuilder.h"
#include "host/HostModel.h"

class CTermItemBuilder {
 public:
  explicit CTermItemBuilder(ITermPtr term) : term_(std::move(term)) {}
  virtual ~CTermItemBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  ITermPtr term_;
};

class CCustomerJobItemBuilder {
 public:
  explicit CCustomerJobItemBuilder(INamePtr customer) : customer_(std::move(customer)) {}
  virtual ~CCustomerJobItemBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  INamePtr customer_;
};

class CClassItemBuilder {
 public:
  explicit CClassItemBuilder(IClassPtr itemClass) : class_(std::move(itemClass)) {}
  virtual ~CClassItemBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IClassPtr class_;
};

class CCustMessageItemBuilder {
 public:
  explicit CCustMessageItemBuilder(ICustomerMessagePtr message) : message_(std::move(message)) {}
  virtual ~CCustMessageItemBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  ICustomerMessagePtr message_;
};

class CSalesRepItemBuilder {
 public:
  explicit CSalesRepItemBuilder(ISalesRepPtr salesRep) : salesRep_(std::move(salesRep)) {}
  virtual ~CSalesRepItemBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  ISalesRepPtr salesRep_;
};

class CShipMethodItemBuilder {
 public:
  explicit CShipMethodItemBuilder(IShipMethodPtr shipMethod) : shipMethod_(std::move(shipMethod)) {}
  virtual ~CShipMethodItemBuilder() = default;
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IShipMethodPtr shipMethod_;
};
