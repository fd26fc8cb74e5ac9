// The upload-time stamps of list records: CUploadAttributeWriter stamps the records an accepted
// upload carried, CUploadAttributeKiller removes every stamp and the last client upload time.
#pragma once

#include <cstdint>

#include "host/HostModel.h"
#include "upload/RecNumMap.h"

// The words of one list kind in the stamps' log lines.
struct UploadAttributeList;

class CUploadAttributeWriter {
 public:
  // Stamps with the upload clock's time now.
  CUploadAttributeWriter(ICompanyFilePtr company, const CRecNumMap& map);
  // Stamps with `uploadTime` (seconds since 1970): the time the upload was built, so that an
  // edit made while the request travelled counts as a change at the next upload.
  CUploadAttributeWriter(ICompanyFilePtr company, const CRecNumMap& map, int64_t uploadTime)
      : company_(std::move(company)), map_(map), uploadTime_(uploadTime) {}

  // Stamps every list record the map marks as sent in this request (marks 4 and 5). A record
  // that cannot be stamped is logged and the others are stamped still; the result is the first
  // failure, or S_OK.
  HRESULT UpdateUploadTimeAttributes();

  // One list kind each: the records of that kind the map marks as sent.
  HRESULT UpdateClasses(IClassesPtr classes);
  HRESULT UpdateShipMethods(IShipMethodsPtr shipMethods);
  HRESULT UpdateCustomerMessages(ICustomerMessagesPtr messages);
  HRESULT UpdateSalesReps(ISalesRepsPtr salesReps);
  HRESULT UpdateTerms(ITermsPtr terms);
  HRESULT UpdateCustomerJobs(ICustomersPtr customers);
  HRESULT UpdateItems(IItemsPtr items);

  // Sets the record's stamp (adding it when the record has none) to the upload time, held to
  // the attribute's 32-bit range. The record must be locked for editing.
  HRESULT PutUploadTimeAttribute(IAttributeContainerPtr& attributes);
  // Writes one style's upload time into the style upload times record; kept, the request build
  // does not call it.
  HRESULT PutStyleUploadTime(long style, long uploadTime);

  // The stamp's value: the upload time held to the attribute's range.
  LONG StampValue() const;

 private:
  template <class List>
  HRESULT UpdateList(const ComPtr<List>& list, const UploadAttributeList& kind);
  HRESULT StampRecord(IListElement* record, const UploadAttributeList& kind);

  ICompanyFilePtr company_;
  const CRecNumMap& map_;
  int64_t uploadTime_;
};

class CUploadAttributeKiller {
 public:
  explicit CUploadAttributeKiller(ICompanyFilePtr company) : company_(std::move(company)) {}

  // Removes the stamp of every list record, then erases the last client upload time, which it
  // does even when a removal failed. A record whose stamp cannot be removed is logged and the
  // others are still removed; the result is the first failure, or S_OK.
  HRESULT RemoveAttributes();

  // One list kind each: every record of the list, whether or not an upload carried it.
  HRESULT RemoveClassAttributes(IClassesPtr classes);
  HRESULT RemoveShipMethodAttributes(IShipMethodsPtr shipMethods);
  HRESULT RemoveCustomerMessageAttributes(ICustomerMessagesPtr messages);
  HRESULT RemoveSalesRepAttributes(ISalesRepsPtr salesReps);
  HRESULT RemoveTermAttributes(ITermsPtr terms);
  HRESULT RemoveCustomerJobAttributes(ICustomersPtr customers);
  HRESULT RemoveItemAttributes(IItemsPtr items);

  // Deletes the style upload times record; kept, nothing in the send calls it.
  HRESULT RemoveStyleAttributes();

 private:
  template <class List>
  HRESULT RemoveList(const ComPtr<List>& list, const UploadAttributeList& kind);
  HRESULT UnstampRecord(IListElement* record, const UploadAttributeList& kind);
  HRESULT EraseLastClientDataUploadTime();

  ICompanyFilePtr company_;
};
