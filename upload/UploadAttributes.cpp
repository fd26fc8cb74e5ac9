#include "upload/UploadAttributes.h"

#include <algorithm>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"
#include "upload/DataFileStorage.h"
#include "upload/DataUploadRequest.h"
#include "upload/UploadClock.h"

using parcelon::forms::RecNumKey;

// The words of one list kind, and the log lines made of them once.
struct UploadAttributeList {
  RecordKind kind;
  const char* list;          // the list in messages: "terms", "customers"
  const char* kinds;         // the kind in the writer's failing-kind line: "terms", "customer jobs"
  const char* record;        // a record of it: "term(4)"
  const char* found;         // a record found by its number: "term(4)", "name(4)"
  const char* noun;          // "term"
  const char* writerMethod;  // "UpdateTerms(ITermsPtr)"
  const char* killerMethod;  // "RemoveTermAttributes(ITermsPtr)"
};

namespace {

constexpr char kWriterPrefix[] = "Parcelon:CUploadAttributeWriter::UpdateUploadTimeAttributes()";
constexpr char kPutPrefix[] = "Parcelon:CUploadAttributeWriter::PutUploadTimeAttribute(IAttributeContainerPtr&)";
constexpr char kStylePrefix[] = "Parcelon:CUploadAttributeWriter::PutStyleUploadTime(long, long)";
constexpr char kKillerPrefix[] = "Parcelon:CUploadAttributeKiller::RemoveAttributes()";
constexpr char kKillStylesPrefix[] = "Parcelon:CUploadAttributeKiller::RemoveStyleAttributes()";
constexpr char kNoLists[] = "Failed to get lists from company file in LX.";
constexpr char kNoStyleRecord[] = "Failed to access data file for style upload times.";
constexpr char kTimeProperty[] = "LastClientDataUploadTime";

// The seven list kinds whose records carry a stamp, in the order both walk them.
enum ListIndex { kClasses, kShipMethods, kCustomerMessages, kSalesReps, kTerms, kCustomerJobs, kItems, kListCount };

const UploadAttributeList kLists[kListCount] = {
    {RecordKind::kClass, "classes", "classes", "class(3)", "class(3)", "class", "UpdateClasses(IClassesPtr)",
     "RemoveClassAttributes(IClassesPtr)"},
    {RecordKind::kShipMethod, "ship methods", "ship methods", "ship method(3)", "ship method(3)", "ship method",
     "UpdateShipMethods(IShipMethodsPtr)", "RemoveShipMethodAttributes(IShipMethodsPtr)"},
    {RecordKind::kCustomerMessage, "customer messages", "customer messages", "customer message(3)",
     "customer message(3)", "customer message", "UpdateCustomerMessages(ICustomerMessagesPtr)",
     "RemoveCustomerMessageAttributes(ICustomerMessagesPtr)"},
    {RecordKind::kSalesRep, "sales reps", "sales reps", "sales rep(3)", "sales rep(3)", "sales rep",
     "UpdateSalesReps(ISalesRepsPtr)", "RemoveSalesRepAttributes(ISalesRepsPtr)"},
    {RecordKind::kTerm, "terms", "terms", "term(4)", "term(4)", "term", "UpdateTerms(ITermsPtr)",
     "RemoveTermAttributes(ITermsPtr)"},
    {RecordKind::kCustomerJob, "customers", "customer jobs", "customer(4)", "name(4)", "customer",
     "UpdateCustomerJobs(ICustomersPtr)", "RemoveCustomerJobAttributes(ICustomersPtr)"},
    {RecordKind::kItem, "items", "items", "item(4)", "item(4)", "item", "UpdateItems(IItemsPtr)",
     "RemoveItemAttributes(IItemsPtr)"},
};

// The log lines of one kind, composed once from its words.
struct ListLines {
  std::string writerPrefix, killerPrefix;
  std::string updating, notFound, lock, attributes, put, save;
  std::string noList, count, recNum, findStamp, removeStamp;
};

const ListLines& LinesOf(const UploadAttributeList& kind) {
  static const auto* const lines = [] {
    auto* all = new ListLines[kListCount];
    for (size_t i = 0; i < kListCount; ++i) {
      const UploadAttributeList& k = kLists[i];
      const std::string record = k.record, noun = k.noun, list = k.list;
      all[i] = ListLines{
          std::string("Parcelon:CUploadAttributeWriter::") + k.writerMethod,
          std::string("Parcelon:CUploadAttributeKiller::") + k.killerMethod,
          std::string("Failed while updating upload time attributes for ") + k.kinds + ".",
          std::string("Failed to get ") + k.found + " from find in LX.",
          "Failed to lock " + record + " for editing.",
          "Failed to get attributes from " + record + " in LX.",
          "Failed to update attributes with current upload time for " + noun + ".",
          "Failed to save " + record + " after writing to its attributes.",
          "Failed to get " + list + " from lists in LX.",
          "Failed to get count from " + list + " in LX.",
          "Failed to get record number from " + noun + " in LX.",
          "Failed to find upload time attribute in LX for " + noun + ".",
          "Failed to remove upload time attribute in LX for " + noun + ".",
      };
    }
    return all;
  }();
  return lines[&kind - kLists];
}

// The record interface of a list: what its GetItem gives, a list element.
template <class List, class Record>
Record* RecordFrom(HRESULT (STDMETHODCALLTYPE List::*)(LONG, Record**));
template <class List>
using RecordOf = std::remove_pointer_t<decltype(RecordFrom(&List::GetItem))>;

// The list type of a getter of ILists.
template <class Get>
struct ListArgument;
template <class List>
struct ListArgument<HRESULT (STDMETHODCALLTYPE ILists::*)(List**)> {
  using type = List*;
};

// The first failure of several steps that all run.
HRESULT FirstFailure(HRESULT first, HRESULT next) { return FAILED(first) ? first : next; }

// A null record given with success counts as a failure of the call that gave it.
template <class T>
HRESULT NotNull(HRESULT hr, const ComPtr<T>& object) {
  return SUCCEEDED(hr) && !object ? E_POINTER : hr;
}

const Bstr& StampName() {
  static const Bstr name(PARCELON_OLESTR("ParcelonUploadTime"));
  return name;
}
const Bstr& StampOwner() {
  static const Bstr owner(PARCELON_OLESTR("{54901C71-3408-44fb-9031-7B4BB81D871C}"));
  return owner;
}

HRESULT GetLists(const ICompanyFilePtr& company, const char* prefix, IListsPtr& lists) {
  if (!company) RETURN_HR_LOG(E_POINTER, prefix, kNoLists);
  RETURN_IF_FAILED_LOG(NotNull(company->GetLists(lists.ReleaseAndGetAddressOf()), lists), prefix, kNoLists);
  return S_OK;
}

// Takes the seven lists in order and gives each to `visit` with its index and the status of
// taking it (a list that could not be taken comes null).
template <class Visit>
void ForEachList(ILists* lists, Visit visit) {
  const auto take = [&](ListIndex index, auto get) {
    ComPtr<std::remove_pointer_t<typename ListArgument<decltype(get)>::type>> list;
    const HRESULT hr = NotNull((lists->*get)(list.ReleaseAndGetAddressOf()), list);
    visit(index, hr, list);
  };
  take(kClasses, &ILists::GetClasses);
  take(kShipMethods, &ILists::GetShipMethods);
  take(kCustomerMessages, &ILists::GetCustomerMessages);
  take(kSalesReps, &ILists::GetSalesReps);
  take(kTerms, &ILists::GetTerms);
  take(kCustomerJobs, &ILists::GetCustomers);
  take(kItems, &ILists::GetItems);
}

// The company file's grouped writes, where the host offers them: the stamps of a pass reach the
// company file as one write, or none of them when the process dies half way. A host without
// them keeps each record's save on its own.
class GroupedWrites {
 public:
  GroupedWrites(const ICompanyFilePtr& company, const char* prefix) : prefix_(prefix) {
    if (FAILED(company.As(file_)) || !file_) return;
    if (FAILED(LOG_IF_FAILED(file_->BeginWrites(), prefix_, "Failed to begin the writes of upload time attributes in LX.")))
      file_.Reset();
  }
  ~GroupedWrites() { (void)End(); }
  GroupedWrites(const GroupedWrites&) = delete;
  GroupedWrites& operator=(const GroupedWrites&) = delete;

  // Commits the writes; a failure means that none of them reached the company file.
  HRESULT End() {
    if (!file_) return S_OK;
    const ICompanyFile3Ptr file = std::exchange(file_, nullptr);
    return LOG_IF_FAILED(file->EndWrites(), prefix_, "Failed to end the writes of upload time attributes in LX.");
  }

 private:
  const char* prefix_;
  ICompanyFile3Ptr file_;
};

}  // namespace

// ---- CUploadAttributeWriter -----------------------------------------------------------------

CUploadAttributeWriter::CUploadAttributeWriter(ICompanyFilePtr company, const CRecNumMap& map)
    : CUploadAttributeWriter(std::move(company), map, parcelon::upload::CurrentUploadClock().Now()) {}

LONG CUploadAttributeWriter::StampValue() const {
  return LONG(std::clamp<int64_t>(uploadTime_, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}

HRESULT CUploadAttributeWriter::UpdateUploadTimeAttributes() {
  IListsPtr lists;
  RETURN_IF_FAILED(GetLists(company_, kWriterPrefix, lists));
  GroupedWrites writes(company_, kWriterPrefix);
  HRESULT result = S_OK;
  ForEachList(lists.Get(), [&](ListIndex index, HRESULT got, const auto& list) {
    const HRESULT hr = SUCCEEDED(got) ? UpdateList(list, kLists[index]) : got;
    result = FirstFailure(result, LOG_IF_FAILED(hr, kWriterPrefix, LinesOf(kLists[index]).updating.c_str()));
  });
  return FirstFailure(result, writes.End());
}

HRESULT CUploadAttributeWriter::UpdateClasses(IClassesPtr classes) { return UpdateList(classes, kLists[kClasses]); }
HRESULT CUploadAttributeWriter::UpdateShipMethods(IShipMethodsPtr shipMethods) {
  return UpdateList(shipMethods, kLists[kShipMethods]);
}
HRESULT CUploadAttributeWriter::UpdateCustomerMessages(ICustomerMessagesPtr messages) {
  return UpdateList(messages, kLists[kCustomerMessages]);
}
HRESULT CUploadAttributeWriter::UpdateSalesReps(ISalesRepsPtr salesReps) {
  return UpdateList(salesReps, kLists[kSalesReps]);
}
HRESULT CUploadAttributeWriter::UpdateTerms(ITermsPtr terms) { return UpdateList(terms, kLists[kTerms]); }
HRESULT CUploadAttributeWriter::UpdateCustomerJobs(ICustomersPtr customers) {
  return UpdateList(customers, kLists[kCustomerJobs]);
}
HRESULT CUploadAttributeWriter::UpdateItems(IItemsPtr items) { return UpdateList(items, kLists[kItems]); }

// Stamps the kind's records that the map marks as sent, in ascending record-number order.
template <class List>
HRESULT CUploadAttributeWriter::UpdateList(const ComPtr<List>& list, const UploadAttributeList& kind) {
  const ListLines& lines = LinesOf(kind);
  const char* const prefix = lines.writerPrefix.c_str();
  HRESULT result = S_OK;
  for (const auto& [recNum, mark] : map_.Of(kind.kind)) {
    if (mark != kMarkSentSelected && mark != kMarkSentChanged) continue;
    ComPtr<RecordOf<List>> record;
    const HRESULT hr =
        list ? NotNull(list->GetItemByRecNum(RecNumKey(LONG(recNum)), record.ReleaseAndGetAddressOf()), record)
             : E_POINTER;
    if (FAILED(hr)) {
      CNALogger::Log(prefix, lines.notFound.c_str(), hr);
      const std::string missing = "Failed to find " + std::to_string(recNum) + " from " + kind.list + " in LX.";
      CNALogger::Log(prefix, missing.c_str(), hr);
    } else {
      result = FirstFailure(result, StampRecord(record.Get(), kind));
      continue;
    }
    result = FirstFailure(result, hr);
  }
  return result;
}

// Locks, stamps and saves one record. Save is how the host ends an edit, so once the record is
// locked it is saved whatever failed after the lock: no record stays locked.
HRESULT CUploadAttributeWriter::StampRecord(IListElement* record, const UploadAttributeList& kind) {
  const ListLines& lines = LinesOf(kind);
  const char* const prefix = lines.writerPrefix.c_str();
  RETURN_IF_FAILED_LOG(record->LockForEdit(), prefix, lines.lock.c_str());
  IAttributeContainerPtr attributes;
  HRESULT hr = LOG_IF_FAILED(NotNull(record->GetAttributes(attributes.ReleaseAndGetAddressOf()), attributes), prefix,
                             lines.attributes.c_str());
  if (SUCCEEDED(hr)) hr = LOG_IF_FAILED(PutUploadTimeAttribute(attributes), prefix, lines.put.c_str());
  return FirstFailure(hr, LOG_IF_FAILED(record->Save(), prefix, lines.save.c_str()));
}

HRESULT CUploadAttributeWriter::PutUploadTimeAttribute(IAttributeContainerPtr& attributes) {
  if (!attributes) RETURN_HR_LOG(E_POINTER, kPutPrefix, "Failed to find/access our upload time attribute.");
  IAttributePtr attribute;
  ILongAttributePtr stamp;
  HRESULT hr = attributes->FindAttribute(StampName().Get(), StampOwner().Get(), attribute.ReleaseAndGetAddressOf());
  if (hr == LX_E_NOTFOUND) {
    RETURN_IF_FAILED_LOG(
        NotNull(attributes->AddLongAttribute(StampName().Get(), StampOwner().Get(), stamp.ReleaseAndGetAddressOf()),
                stamp),
        kPutPrefix, "Failed to add new long attribute in LX.");
  } else {
    // An attribute of our name and owner that is not a long one cannot be stamped either.
    if (SUCCEEDED(hr)) hr = attribute ? attribute.As(stamp) : E_POINTER;
    RETURN_IF_FAILED_LOG(NotNull(hr, stamp), kPutPrefix, "Failed to find/access our upload time attribute.");
  }
  RETURN_IF_FAILED_LOG(stamp->SetValue(StampValue()), kPutPrefix,
                       "Failed to put the upload time attribute's new value in LX.");
  return S_OK;
}

HRESULT CUploadAttributeWriter::PutStyleUploadTime(long style, long uploadTime) {
  CDataFileStorage storage;
  if (FAILED(storage.SelectDFR(DataFileRecordName(kStyleUploadTimesRecordPart).c_str(), 1)))
    RETURN_HR_LOG(E_FAIL, kStylePrefix, kNoStyleRecord);
  // One property per style, named by the style's number.
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_I4;
  value.lVal = LONG(uploadTime);
  if (FAILED(storage.WriteProperty(std::to_string(style).c_str(), value)))
    RETURN_HR_LOG(E_FAIL, kStylePrefix, "Failed to write property to data file for style upload time.");
  return S_OK;
}

// ---- CUploadAttributeKiller -----------------------------------------------------------------

HRESULT CUploadAttributeKiller::RemoveAttributes() {
  IListsPtr lists;
  HRESULT result = GetLists(company_, kKillerPrefix, lists);
  if (SUCCEEDED(result)) {
    GroupedWrites writes(company_, kKillerPrefix);
    ForEachList(lists.Get(), [&](ListIndex index, HRESULT got, const auto& list) {
      const HRESULT hr = SUCCEEDED(got) ? RemoveList(list, kLists[index])
                                        : LOG_IF_FAILED(got, kKillerPrefix, LinesOf(kLists[index]).noList.c_str());
      result = FirstFailure(result, hr);
    });
    result = FirstFailure(result, writes.End());
  }
  // The next upload starts from time 0 even when some stamps stayed: a stamp left behind only
  // keeps its record out of an upload it did not change for, a time left behind would hide
  // every customer's changes before it.
  return FirstFailure(result, EraseLastClientDataUploadTime());
}

HRESULT CUploadAttributeKiller::EraseLastClientDataUploadTime() {
  CDataFileStorage storage;
  if (FAILED(storage.SelectDFR(DataFileRecordName(kDataUploadRecordPart).c_str(), 1)))
    RETURN_HR_LOG(E_FAIL, kKillerPrefix, "Failed to access data file for last client data upload time.");
  VARIANT empty;
  VariantInit(&empty);
  if (FAILED(storage.WriteProperty(kTimeProperty, empty)))
    RETURN_HR_LOG(E_FAIL, kKillerPrefix, "Failed to erase last client data upload time in the data file.");
  return S_OK;
}

HRESULT CUploadAttributeKiller::RemoveClassAttributes(IClassesPtr classes) {
  return RemoveList(classes, kLists[kClasses]);
}
HRESULT CUploadAttributeKiller::RemoveShipMethodAttributes(IShipMethodsPtr shipMethods) {
  return RemoveList(shipMethods, kLists[kShipMethods]);
}
HRESULT CUploadAttributeKiller::RemoveCustomerMessageAttributes(ICustomerMessagesPtr messages) {
  return RemoveList(messages, kLists[kCustomerMessages]);
}
HRESULT CUploadAttributeKiller::RemoveSalesRepAttributes(ISalesRepsPtr salesReps) {
  return RemoveList(salesReps, kLists[kSalesReps]);
}
HRESULT CUploadAttributeKiller::RemoveTermAttributes(ITermsPtr terms) { return RemoveList(terms, kLists[kTerms]); }
HRESULT CUploadAttributeKiller::RemoveCustomerJobAttributes(ICustomersPtr customers) {
  return RemoveList(customers, kLists[kCustomerJobs]);
}
HRESULT CUploadAttributeKiller::RemoveItemAttributes(IItemsPtr items) { return RemoveList(items, kLists[kItems]); }

// Removes the stamp of every record of the list; a record that cannot be reached or unstamped
// is logged and the walk goes on.
template <class List>
HRESULT CUploadAttributeKiller::RemoveList(const ComPtr<List>& list, const UploadAttributeList& kind) {
  const ListLines& lines = LinesOf(kind);
  const char* const prefix = lines.killerPrefix.c_str();
  if (!list) RETURN_HR_LOG(E_POINTER, prefix, lines.count.c_str());
  LONG count = 0;
  RETURN_IF_FAILED_LOG(list->GetCount(&count), prefix, lines.count.c_str());
  HRESULT result = S_OK;
  for (LONG index = 0; index < count; ++index) {
    ComPtr<RecordOf<List>> record;
    LONG recNum = 0;
    HRESULT hr = NotNull(list->GetItem(index, record.ReleaseAndGetAddressOf()), record);
    if (SUCCEEDED(hr)) hr = record->GetRecNum(&recNum);
    if (SUCCEEDED(hr))
      hr = UnstampRecord(record.Get(), kind);
    else
      CNALogger::Log(prefix, lines.recNum.c_str(), hr);
    result = FirstFailure(result, hr);
  }
  return result;
}

// Removes one record's stamp; a record without one is left alone without a word.
HRESULT CUploadAttributeKiller::UnstampRecord(IListElement* record, const UploadAttributeList& kind) {
  const ListLines& lines = LinesOf(kind);
  const char* const prefix = lines.killerPrefix.c_str();
  IAttributeContainerPtr attributes;
  RETURN_IF_FAILED_LOG(NotNull(record->GetAttributes(attributes.ReleaseAndGetAddressOf()), attributes), prefix,
                       lines.attributes.c_str());
  IAttributePtr stamp;
  const HRESULT found = attributes->FindAttribute(StampName().Get(), StampOwner().Get(), stamp.ReleaseAndGetAddressOf());
  if (found == LX_E_NOTFOUND) return S_OK;
  RETURN_IF_FAILED_LOG(NotNull(found, stamp), prefix, lines.findStamp.c_str());
  RETURN_IF_FAILED_LOG(attributes->RemoveAttribute(stamp.Get()), prefix, lines.removeStamp.c_str());
  return S_OK;
}

HRESULT CUploadAttributeKiller::RemoveStyleAttributes() {
  CDataFileStorage storage;
  if (FAILED(storage.SelectDFR(DataFileRecordName(kStyleUploadTimesRecordPart).c_str(), 1)))
    RETURN_HR_LOG(E_FAIL, kKillStylesPrefix, kNoStyleRecord);
  if (FAILED(storage.DeleteDFR()))
    RETURN_HR_LOG(E_FAIL, kKillStylesPrefix, "Failed to delete data file record for style upload times.");
  CNALogger::Log(kKillStylesPrefix, "Successfully deleted upload time attribute for all styles.", S_OK);
  return S_OK;
}
