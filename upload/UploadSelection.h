// CUploadSelection: marks in the session's record-number map the records that the forms of the
// session refer to (mark 1), and the invoices and estimates to report as deleted (mark 6).
//
// Walks through host data are bounded: a customer's parent chain ends after the deepest level a
// tree of the host can have, and a chain that comes back to a record it passed is a cycle. Either
// ends the selection with E_FAIL and a log line. Record number 0 means "no record" and is never
// selected.
#pragma once

#include <unordered_set>
#include <vector>

#include "host/HostModel.h"
#include "interfaces/ParcelonInterfaces.h"
#include "upload/ParentWalk.h"
#include "upload/RecNumMap.h"

class CUploadSelection {
 public:
  static constexpr int kMaxTreeDepth = parcelon::upload::kMaxTreeDepth;

  CUploadSelection(CRecNumMap& map, const std::vector<INA_Form7Ptr>& forms, bool doAllCustomers)
      : map_(map), forms_(forms), doAllCustomers_(doAllCustomers) {}
  virtual ~CUploadSelection() = default;

  // Every customer and job with DoAllCustomers, then the records of each form with Post set, in
  // the order the forms were added. The first failing form ends the selection.
  HRESULT PutRecNumsInMap(const ICompanyFilePtr& company);
  HRESULT PutAllCustomerRecNumsInMap(const ICompanyFilePtr& company);
  // The transaction, its terms and its customer with the customer's parents.
  HRESULT PutInvoiceRecNumsInMap(const ICompanyFilePtr& company, LONG recNum);
  HRESULT PutEstimateRecNumsInMap(const ICompanyFilePtr& company, LONG recNum);
  // The statement's customer with its parents.
  HRESULT PutStatementRecNumsInMap(const ICompanyFilePtr& company, LONG customerRecNum);
  // The customer or job and its parents; E_FAIL for parents that form a cycle or nest too deep.
  // A record number that cannot be read is skipped.
  HRESULT AddCustomerJobToMap(const INamePtr& name);
  void AddTermToMap(const ITermPtr& terms);
  // Kept for the uploads of the other lists; no selection reaches them.
  void AddClassToMap(const IClassPtr& record);
  void AddCustomerMessageToMap(const ICustomerMessagePtr& record);
  void AddSalesRepToMap(const ISalesRepPtr& record);
  void AddShipMethodToMap(const IShipMethodPtr& record);
  void AddStyleToMap(const IStylePtr& record);
  // The item, its parents and, for a group, its members and theirs. Kept for the item uploads; no
  // selection reaches it. A group that contains itself (directly or through other groups) or
  // parents in a cycle end it with E_FAIL and a log line; a member met before is not walked again.
  HRESULT AddItemToMap(const IItemPtr& item);

 private:
  // Marks `record` of `kind` selected unless its number is 0; a number that cannot be read is
  // skipped after `message`.
  template <class Record>
  void AddRecordToMap(const ComPtr<Record>& record, RecordKind kind, const char* prefix, const char* message);
  // Marks the transaction `recNum` of `kind`, its terms and its customer (either may be null).
  HRESULT MarkTransaction(RecordKind kind, LONG recNum, const ITermPtr& terms, const INamePtr& customer);
  // One form's part of PutRecNumsInMap.
  HRESULT PutFormRecNumsInMap(const ICompanyFilePtr& company, INA_Form7* form);
  // One item of AddItemToMap: marks it and its parents; `group` receives the item when it is a
  // group whose members are still to walk, with their count.
  HRESULT MarkItem(const IItemPtr& item, std::unordered_set<LONG>& visited, IItemPtr& group, LONG& recNum,
                   LONG& count);

  CRecNumMap& map_;
  const std::vector<INA_Form7Ptr>& forms_;
  bool doAllCustomers_;
};
