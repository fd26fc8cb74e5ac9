// CCompanyBuilder: the sending company's block "Company" that opens every form aggregate
// (invoice, estimate, statement), read from the company information of the open company file.
#pragma once

#include <utility>

#include "clienttools/XMLBuilder.h"
#include "host/CompanyFile.h"
#include "platform/ComBase.h"

class CCompanyBuilder {
 public:
  explicit CCompanyBuilder(ICompanyFile* companyFile) : companyFile_(companyFile) {}
  explicit CCompanyBuilder(ICompanyFilePtr companyFile) : companyFile_(std::move(companyFile)) {}

  // "Company": "CompanyName", "CompanyEmail" (optional), "Address", "CompanyPhone" (optional).
  // Nothing is written when the company information cannot be read. A required value that
  // cannot be read returns its failure with "Company" left open. A missing company file raises
  // ComError(E_POINTER).
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  ICompanyFilePtr companyFile_;
};
