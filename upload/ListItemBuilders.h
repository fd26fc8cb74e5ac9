// The list records of the data upload: "TermItem" (CTermItemBuilder) and "CustomerJobItem"
// (CCustomerJobItemBuilder). A required value that cannot be read is logged and returned with the
// element left open; an optional one is logged ("... Skipping this optional element.") and left out.
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
  // "ParentID" or "ParentRootID": the record number of `getParent`'s record, when there is one.
  void AddParentReference(XmlName name, HRESULT (STDMETHODCALLTYPE IName::*getParent)(IName**),
                          const char* parentMessage, const char* recNumMessage, XMLBuilder& builder);

  INamePtr customer_;
};
