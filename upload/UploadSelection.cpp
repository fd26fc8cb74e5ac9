#include "upload/UploadSelection.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "upload/ParentWalk.h"

using parcelon::forms::Required;

namespace {

constexpr char kPutRecNumsPrefix[] = "Parcelon:CNA_Forms::PutRecNumsInMap(ICompanyFilePtr)";
constexpr char kAllCustomersPrefix[] = "Parcelon:CNA_Forms::PutAllCustomerRecNumsInMap(ICompanyFilePtr)";
constexpr char kStatementPrefix[] = "Parcelon:CNA_Forms::PutStatementRecNumsInMap(ICompanyFilePtr, long)";
constexpr char kCustomerJobPrefix[] = "Parcelon:CNA_Forms::AddCustomerJobToMap(INamePtr)";
constexpr char kTermPrefix[] = "Parcelon:CNA_Forms::AddTermToMap(ITermPtr)";
constexpr char kItemPrefix[] = "Parcelon:CNA_Forms::AddItemToMap(IItemPtr)";
constexpr char kItemCycle[] = "The parents or group members of an item in LX lead back to it.";

bool IsDeletion(NASendType method) {
  return method == nastDELETE || method == nastVOID || method == nastPENDING;
}

// The messages and record kind of the invoice or estimate part of the selection.
struct TransactionSelection {
  const char* prefix;
  const char* list;
  const char* item;
  const char* terms;
  const char* customer;
};

const TransactionSelection kInvoiceSelection = {
    "Parcelon:CNA_Forms::PutInvoiceRecNumsInMap(ICompanyFilePtr, long)",
    "Failed to get invoices from transactions in LX.",
    "Failed to get item from invoices in LX",
    "Failed to get terms from invoice in LX.  Skipping this optional field.",
    "Failed to get customer from invoice in LX.  Skipping this optional field."};
const TransactionSelection kEstimateSelection = {
    "Parcelon:CNA_Forms::PutEstimateRecNumsInMap(ICompanyFilePtr, long)",
    "Failed to get estimates from transactions in LX.",
    "Failed to get item from estimates in LX",
    "Failed to get terms from estimate in LX.  Skipping this optional field.",
    "Failed to get customer from estimate in LX.  Skipping this optional field."};

HRESULT GetList(ITransactions* transactions, IInvoices** list) { return transactions->GetInvoices(list); }
HRESULT GetList(ITransactions* transactions, IEstimates** list) { return transactions->GetEstimates(list); }

// The transaction `recNum` of the list that `List` names; each failing step logged.
template <class List, class Entry>
HRESULT LookUp(const ICompanyFilePtr& company, LONG recNum, const TransactionSelection& words,
               ComPtr<Entry>& entry) {
  ITransactionsPtr transactions;
  RETURN_IF_FAILED_LOG(Required(company)->GetTransactions(transactions.ReleaseAndGetAddressOf()), words.prefix,
                       "Failed to get transactions from company file in LX.");
  ComPtr<List> list;
  RETURN_IF_FAILED_LOG(GetList(Required(transactions), list.ReleaseAndGetAddressOf()), words.prefix, words.list);
  RETURN_IF_FAILED_LOG(Required(list)->GetItemByRecNum(parcelon::forms::RecNumKey(recNum),
                                                       entry.ReleaseAndGetAddressOf()),
                       words.prefix, words.item);
  Required(entry);
  return S_OK;
}

// The transaction `recNum`, and its terms and customer when they can be read (else null, after
// their skip message).
template <class List, class Entry>
HRESULT ReadTransactionParts(const ICompanyFilePtr& company, LONG recNum, const TransactionSelection& words,
                             ITermPtr& terms, INamePtr& customer) {
  ComPtr<Entry> transaction;
  RETURN_IF_FAILED((LookUp<List>(company, recNum, words, transaction)));
  if (FAILED(LOG_IF_FAILED(transaction->GetTerms(terms.ReleaseAndGetAddressOf()), words.prefix, words.terms)))
    terms.Reset();
  if (FAILED(LOG_IF_FAILED(transaction->GetCustomer(customer.ReleaseAndGetAddressOf()), words.prefix, words.customer)))
    customer.Reset();
  return S_OK;
}

// The company's customer list.
HRESULT GetCustomers(const ICompanyFilePtr& company, const char* prefix, ICustomersPtr& customers) {
  IListsPtr lists;
  RETURN_IF_FAILED_LOG(Required(company)->GetLists(lists.ReleaseAndGetAddressOf()), prefix,
                       "Failed to get lists from company file in LX.");
  RETURN_IF_FAILED_LOG(Required(lists)->GetCustomers(customers.ReleaseAndGetAddressOf()), prefix,
                       "Failed to get customers from lists in LX.");
  Required(customers);
  return S_OK;
}

}  // namespace

HRESULT CUploadSelection::PutRecNumsInMap(const ICompanyFilePtr& company) {
  if (doAllCustomers_)
    RETURN_IF_FAILED_LOG(PutAllCustomerRecNumsInMap(company), kPutRecNumsPrefix, "Failed to mark customers for upload.");
  for (const INA_Form7Ptr& form : forms_) RETURN_IF_FAILED(PutFormRecNumsInMap(company, Required(form)));
  return S_OK;
}

HRESULT CUploadSelection::PutFormRecNumsInMap(const ICompanyFilePtr& company, INA_Form7* form) {
  VARIANT_BOOL post = VARIANT_FALSE;
  RETURN_IF_FAILED(form->get_Post(&post));
  if (post == VARIANT_FALSE) return S_OK;
  NAFormType type = naftINVOICE;
  NASendType method = nastNONE;
  LONG recNum = 0;
  RETURN_IF_FAILED(form->get_FormType(&type));
  RETURN_IF_FAILED(form->get_SendMethod(&method));
  RETURN_IF_FAILED(form->get_TransactionRecordNumber(&recNum));
  if (recNum == 0) return S_OK;
  switch (type) {
    case naftINVOICE:
      if (IsDeletion(method)) {
        map_(RecordKind::kInvoice, recNum) = kMarkToDelete;
        return S_OK;
      }
      RETURN_IF_FAILED_LOG(PutInvoiceRecNumsInMap(company, recNum), kPutRecNumsPrefix,
                           "Failed on mark invoice or its list items for upload.");
      return S_OK;
    case naftESTIMATE:
      if (IsDeletion(method)) {
        map_(RecordKind::kEstimate, recNum) = kMarkToDelete;
        return S_OK;
      }
      RETURN_IF_FAILED_LOG(PutEstimateRecNumsInMap(company, recNum), kPutRecNumsPrefix,
                           "Failed on mark estimate or its list items for upload.");
      return S_OK;
    case naftSTATEMENT: {
      LONG customerRecNum = 0;
      RETURN_IF_FAILED(form->get_StatementCustomerRecNum(&customerRecNum));
      RETURN_IF_FAILED_LOG(PutStatementRecNumsInMap(company, customerRecNum), kPutRecNumsPrefix,
                           "Failed on mark statement or its list items for upload.");
      return S_OK;
    }
    default:
      return S_OK;
  }
}

HRESULT CUploadSelection::PutAllCustomerRecNumsInMap(const ICompanyFilePtr& company) {
  ICustomersPtr customers;
  RETURN_IF_FAILED(GetCustomers(company, kAllCustomersPrefix, customers));
  LONG count = 0;
  RETURN_IF_FAILED_LOG(customers->GetCount(&count), kAllCustomersPrefix, "Failed to get count from customers in LX.");
  for (LONG index = 0; index < count; ++index) {
    INamePtr customer;
    LONG recNum = 0;
    HRESULT hr = customers->GetItem(index, customer.ReleaseAndGetAddressOf());
    if (SUCCEEDED(hr)) hr = Required(customer)->GetRecNum(&recNum);
    RETURN_IF_FAILED_LOG(hr, kAllCustomersPrefix, "Failed to get record number from customer in LX.");
    if (recNum != 0) map_(RecordKind::kCustomerJob, recNum) = kMarkSelected;
  }
  return S_OK;
}

HRESULT CUploadSelection::MarkTransaction(RecordKind kind, LONG recNum, const ITermPtr& terms,
                                          const INamePtr& customer) {
  map_(kind, recNum) = kMarkSelected;
  AddTermToMap(terms);
  return AddCustomerJobToMap(customer);
}

HRESULT CUploadSelection::PutInvoiceRecNumsInMap(const ICompanyFilePtr& company, LONG recNum) {
  ITermPtr terms;
  INamePtr customer;
  RETURN_IF_FAILED((ReadTransactionParts<IInvoices, IInvoice>(company, recNum, kInvoiceSelection, terms, customer)));
  return MarkTransaction(RecordKind::kInvoice, recNum, terms, customer);
}

HRESULT CUploadSelection::PutEstimateRecNumsInMap(const ICompanyFilePtr& company, LONG recNum) {
  ITermPtr terms;
  INamePtr customer;
  RETURN_IF_FAILED((ReadTransactionParts<IEstimates, IEstimate>(company, recNum, kEstimateSelection, terms, customer)));
  return MarkTransaction(RecordKind::kEstimate, recNum, terms, customer);
}

HRESULT CUploadSelection::PutStatementRecNumsInMap(const ICompanyFilePtr& company, LONG customerRecNum) {
  ICustomersPtr customers;
  RETURN_IF_FAILED(GetCustomers(company, kStatementPrefix, customers));
  INamePtr customer;
  RETURN_IF_FAILED_LOG(customers->GetItemByRecNum(parcelon::forms::RecNumKey(customerRecNum),
                                                  customer.ReleaseAndGetAddressOf()),
                       kStatementPrefix, "Failed to get customer from customers in LX.");
  return AddCustomerJobToMap(customer);
}

template <class Record>
void CUploadSelection::AddRecordToMap(const ComPtr<Record>& record, RecordKind kind, const char* prefix,
                                      const char* message) {
  if (!record) return;
  LONG recNum = 0;
  if (FAILED(LOG_IF_FAILED(record->GetRecNum(&recNum), prefix, message))) return;
  if (recNum != 0) map_(kind, recNum) = kMarkSelected;
}

void CUploadSelection::AddTermToMap(const ITermPtr& terms) {
  AddRecordToMap(terms, RecordKind::kTerm, kTermPrefix,
                 "Failed to get record number from term in LX.  Skipping this optional field.");
}

void CUploadSelection::AddClassToMap(const IClassPtr& record) {
  AddRecordToMap(record, RecordKind::kClass, "Parcelon:CNA_Forms::AddClassToMap(IClassPtr)",
                 "Failed to get record number from class in LX.  Skipping this optional field.");
}

void CUploadSelection::AddCustomerMessageToMap(const ICustomerMessagePtr& record) {
  AddRecordToMap(record, RecordKind::kCustomerMessage,
                 "Parcelon:CNA_Forms::AddCustomerMessageToMap(ICustomerMessagePtr)",
                 "Failed to get record number from customer message in LX.  Skipping this optional field.");
}

void CUploadSelection::AddSalesRepToMap(const ISalesRepPtr& record) {
  AddRecordToMap(record, RecordKind::kSalesRep, "Parcelon:CNA_Forms::AddSalesRepToMap(ISalesRepPtr)",
                 "Failed to get record number from sales rep in LX.  Skipping this optional field.");
}

void CUploadSelection::AddShipMethodToMap(const IShipMethodPtr& record) {
  AddRecordToMap(record, RecordKind::kShipMethod, "Parcelon:CNA_Forms::AddShipMethodToMap(IShipMethodPtr)",
                 "Failed to get record number from ship method in LX.  Skipping this optional field.");
}

void CUploadSelection::AddStyleToMap(const IStylePtr& record) {
  AddRecordToMap(record, RecordKind::kStyle, "Parcelon:CNA_Forms::AddStyleToMap(IStylePtr)",
                 "Failed to get record number from style in LX.  Skipping this optional field.");
}

HRESULT CUploadSelection::AddCustomerJobToMap(const INamePtr& name) {
  if (!name) return S_OK;
  LONG recNum = 0;
  if (FAILED(LOG_IF_FAILED(name->GetRecNum(&recNum), kCustomerJobPrefix,
                           "Failed to get record number from customerjob in LX.  Skipping this optional field.")))
    return S_OK;
  if (recNum == 0) return S_OK;
  map_(RecordKind::kCustomerJob, recNum) = kMarkSelected;

  return parcelon::upload::WalkParents(name, recNum, kCustomerJobPrefix, [&](LONG parent) {
    map_(RecordKind::kCustomerJob, parent) = kMarkSelected;
  });
}

HRESULT CUploadSelection::MarkItem(const IItemPtr& item, std::unordered_set<LONG>& visited, IItemPtr& group,
                                   LONG& recNum, LONG& count) {
  group.Reset();
  recNum = 0;
  if (!item || FAILED(LOG_IF_FAILED(item->GetRecNum(&recNum), kItemPrefix,
                                    "Failed to get record number from item in LX.  Skipping this optional field.")))
    return S_OK;
  // Met before: it and everything under it are marked already.
  if (recNum == 0 || !visited.insert(recNum).second) return S_OK;
  map_(RecordKind::kItem, recNum) = kMarkSelected;
  RETURN_IF_FAILED(parcelon::upload::WalkParents(
      item, recNum, kItemPrefix, [&](LONG parent) { map_(RecordKind::kItem, parent) = kMarkSelected; }, kItemCycle));
  LONG type = 0;
  if (FAILED(item->GetType(&type)) || (type != itGROUP && type != itTAXGROUP)) return S_OK;
  if (FAILED(LOG_IF_FAILED(item->GetGroupCount(&count), kItemPrefix, "Failed to get group count from item in LX.  Continuing.")))
    return S_OK;
  group = item;
  return S_OK;
}

HRESULT CUploadSelection::AddItemToMap(const IItemPtr& item) {
  // Depth first through the groups with a stack of its own, so that deep nesting cannot
  // exhaust the thread's stack; the groups on the stack are the path that a member must not
  // lead back to.
  struct Frame {
    IItemPtr group;
    LONG recNum;
    LONG count;
    LONG next;
  };
  std::vector<Frame> path;
  std::unordered_set<LONG> onPath, visited;
  const auto enter = [&](const IItemPtr& next) -> HRESULT {
    Frame frame{nullptr, 0, 0, 1};
    RETURN_IF_FAILED(MarkItem(next, visited, frame.group, frame.recNum, frame.count));
    if (frame.group) {
      onPath.insert(frame.recNum);
      path.push_back(std::move(frame));
    }
    return S_OK;
  };
  RETURN_IF_FAILED(enter(item));
  while (!path.empty()) {
    Frame& top = path.back();
    if (top.next > top.count) {
      onPath.erase(top.recNum);
      path.pop_back();
      continue;
    }
    IItemPtr member;
    if (FAILED(LOG_IF_FAILED(top.group->GetGroupItem(top.next++, member.ReleaseAndGetAddressOf()), kItemPrefix,
                             "Failed to get group item from item in LX.  Skipping this one.")))
      continue;
    LONG memberRecNum = 0;
    if (member && SUCCEEDED(member->GetRecNum(&memberRecNum)) && onPath.count(memberRecNum))
      RETURN_HR_LOG(E_FAIL, kItemPrefix, kItemCycle);
    RETURN_IF_FAILED(enter(member));
  }
  return S_OK;
}
