// The upload-time stamps of list records: CUploadAttributeWriter stamps the records an accepted
// upload carried, CUploadAttributeKiller removes every stamp and the last client upload time.
#pragma once

#include "host/HostModel.h"
#include "upload/RecNumMap.h"

class CUploadAttributeWriter {
 public:
  CUploadAttributeWriter(ICompanyFilePtr company, const CRecNumMap& map)
      : company_(std::move(company)), map_(map) {}

  // Stamps every list record the map marks as sent in this request.
  HRESULT UpdateUploadTimeAttributes();

 private:
  ICompanyFilePtr company_;
  const CRecNumMap& map_;
};

class CUploadAttributeKiller {
 public:
  explicit CUploadAttributeKiller(ICompanyFilePtr company) : company_(std::move(company)) {}

  // Removes the stamp of every list record, then erases the last client upload time.
  HRESULT RemoveAttributes();

 private:
  ICompanyFilePtr company_;
};
