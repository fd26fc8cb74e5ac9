// The reference host's company in memory: plain records of every list, the transactions and
// templates, the data file records, the faults, and the optional persistent store.
//
// Texts are UTF-16. Times are seconds since 1970 (LONG), dates OLE dates (DATE, 0 when not set).
// A reference to another record is its record number, 0 when not set. Each list finds a record
// by record number through an open-addressing index kept as records are added; lists do not
// change size after loading, so a record's address stays valid for the company's lifetime.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/ComBase.h"
#include "refhost/Faults.h"
#include "refhost/ListKind.h"
#include "refhost/RecNumIndex.h"
#include "refhost/RecordStorage.h"
#include "refhost/Text.h"

namespace parcelon::refhost {

class CompanyStore;
class DataFileStore;  // The SQLite store of the company's changes (refhost/CompanyStore.h).

using RecNum = LONG;

// A money amount: exact cents with a sign, and the text as the host formats it.
struct Amount {
  bool empty = true;
  bool valid = true;
  // Signed; never INT64_MIN, so its magnitude always fits.
  int64_t cents = 0;
  Text text;
};

struct Percent {
  bool empty = true;
  double value = 0;
};

// A quantity: magnitude / 10^decimals with a sign.
struct Quantity {
  bool empty = true;
  bool valid = true;
  bool negative = false;
  int64_t integer = 0;
  SHORT decimals = 0;
};

struct Address {
  std::array<Text, 4> lines;
  Text city;
  Text state;
  Text postalCode;
  Text country;
  Text note;
};

// A long attribute of a list record, identified by name and owner.
struct Attribute {
  Text name;
  Text owner;
  LONG value = 0;
};

// What every list record has.
struct ListRecord {
  RecNum recNum = 0;
  Text name;
  bool hidden = false;
  LONG modTime = 0;
  std::vector<Attribute> attributes;
  // Held between LockForEdit and Save; not persisted.
  bool lockedForEdit = false;
  // Set when an attribute was added or written since the last Save; not persisted.
  bool attributesChanged = false;
};

// The links of a record in a tree (names, items, classes). `level` and `root` are derived from
// the parent links by LinkCompany.
struct TreeLinks {
  RecNum parent = 0;
  LONG level = 0;
  // The top-level record above; the record itself at the top.
  RecNum root = 0;
};

struct Term : ListRecord {
  static constexpr ListKind kList = ListKind::Terms;
  LONG type = 0;  // LXTermType
  LONG stdDueDays = 0;
  LONG stdDiscountDays = 0;
  LONG dayOfMonthDue = 0;
  LONG discountDayOfMonth = 0;
  Percent discountPct;
  LONG minDays = 0;
  bool discountEmpty = true;
};

// A name: a customer, a job (a customer with a parent) or another name (vendor, employee).
struct Name : ListRecord, TreeLinks {
  static constexpr ListKind kList = ListKind::Names;
  // Customers and jobs are in the customer list; other names only in the names list.
  bool customer = true;
  LONG jobStatus = 0;  // LXJobStatus
  Text companyName;
  Text salutation;
  Text firstName;
  Text middleInitial;
  Text lastName;
  Text contactName1;
  Text contactName2;
  Text telephoneNumber1;
  Text telephoneNumber2;
  Text faxNumber;
  Text email;
  Text accountNumber;
  Text note;
  Address address;
  Address billingAddress;
  Address shippingAddress;
  RecNum salesRep = 0;
  RecNum terms = 0;
};

struct Item : ListRecord, TreeLinks {
  static constexpr ListKind kList = ListKind::Items;
  LONG type = 0;  // LXItemType
  Text longDescription;
  // Members of a group item (itGROUP, itTAXGROUP), in order.
  std::vector<RecNum> groupMembers;
};

struct Class : ListRecord, TreeLinks {
  static constexpr ListKind kList = ListKind::Classes;
};

struct SalesRep : ListRecord {
  static constexpr ListKind kList = ListKind::SalesReps;
  RecNum associatedName = 0;
};

struct ShipMethod : ListRecord {
  static constexpr ListKind kList = ListKind::ShipMethods;
};

struct CustomerMessage : ListRecord {
  static constexpr ListKind kList = ListKind::CustomerMessages;
};

}  // namespace parcelon::refhost

// Invoices, estimates and styles (Invoice, Estimate, Style), kept by the transactions module.
#include "refhost/TransactionData.h"

namespace parcelon::refhost {

// The records of one list in list order, in one contiguous block, with an index by record
// number.
template <class Record>
class RecordList {
 public:
  // Appends a record; false, and nothing added, when its record number is taken already.
  bool Add(Record record) {
    if (!index_.Insert(record.recNum, records_.size())) return false;
    records_.push_back(std::move(record));
    return true;
  }
  void Reserve(size_t count) {
    records_.reserve(count);
    index_.Reserve(count);
  }
  size_t Size() const { return records_.size(); }
  Record& At(size_t position) { return records_[position]; }
  const Record& At(size_t position) const { return records_[position]; }
  // The record of `recNum`; null when there is none. Ignores absent-record faults: see
  // Company::Find.
  Record* Find(RecNum recNum) {
    const size_t position = index_.Find(recNum);
    return position == RecNumIndex::kNotFound ? nullptr : &records_[position];
  }
  const Record* Find(RecNum recNum) const { return const_cast<RecordList*>(this)->Find(recNum); }
  // The position in the list of one of its records.
  size_t PositionOf(const Record& record) const { return size_t(&record - records_.data()); }
  // The list's empty record (record number 0, empty texts), which references that are not set
  // give.
  Record& Empty() { return empty_; }

 private:
  std::vector<Record, RecordAllocator<Record>> records_;
  Record empty_{};
  RecNumIndex index_;
};

// The company's own data.
struct CompanyInfo {
  Text companyName;
  Address address;
  Text legalCompanyName;
  // Lines 0 and 1, city, state, postal code (the legal zip) and country.
  Address legalAddress;
  Text email;
  Text phone;
};

// A value in a data file record's property bag: VT_EMPTY, VT_I4, VT_I8, VT_R8, VT_DATE, VT_BOOL
// or VT_BSTR.
struct PropertyValue {
  VARTYPE type = VT_EMPTY;
  int64_t integer = 0;  // VT_I4, VT_I8, VT_BOOL (0 or -1)
  double real = 0;      // VT_R8, VT_DATE
  Text text;            // VT_BSTR
};

// A named record that an add-in keeps in the company file.
struct DataFileRecord {
  Text name;
  LONG dataVersion = 0;
  std::map<Text, PropertyValue, std::less<>> properties;
};

// What the reference host's services give besides the company data.
struct HostSettings {
  // The folder that the host's folder service gives for logs; empty for none.
  Text logFolder;
};

struct Company {
  CompanyInfo info;
  HostSettings host;
  // What the authentication tool reports for the company.
  Text companyUID;
  Text authID;
  // IServiceSubscriptionStatus::GetStatus by service name; an unknown service reads 0.
  std::map<Text, LONG, std::less<>> serviceStatuses;

  RecordList<Term> terms;
  RecordList<Name> names;
  // Positions in `names` of the customers and jobs, in list order (filled by LinkCompany).
  std::vector<size_t> customers;
  RecordList<Item> items;
  RecordList<Class> classes;
  RecordList<SalesRep> salesReps;
  RecordList<ShipMethod> shipMethods;
  RecordList<CustomerMessage> customerMessages;
  RecordList<Invoice> invoices;
  RecordList<Estimate> estimates;
  RecordList<Style> styles;

  std::map<Text, DataFileRecord, std::less<>> dataFileRecords;

  Faults faults;
  // Where changes persist; null when the company lives in memory only.
  std::shared_ptr<CompanyStore> store;
  // The data file records' store when there is no company store: one per company, so that every
  // IDataFileRecords of the company sees the same records and the same locks.
  std::shared_ptr<DataFileStore> memoryDataFiles;

  // The list of records of type Record.
  template <class Record>
  RecordList<Record>& List();

  // The record `recNum` of Record's list as lookups by record number see it: null when it does
  // not exist or a fault makes it absent.
  template <class Record>
  Record* Find(RecNum recNum) {
    if (faults.IsAbsent(Record::kList, recNum)) return nullptr;
    return List<Record>().Find(recNum);
  }
};

template <class Record>
RecordList<Record>& Company::List() {
  if constexpr (std::is_same_v<Record, Term>)
    return terms;
  else if constexpr (std::is_same_v<Record, Name>)
    return names;
  else if constexpr (std::is_same_v<Record, Item>)
    return items;
  else if constexpr (std::is_same_v<Record, Class>)
    return classes;
  else if constexpr (std::is_same_v<Record, SalesRep>)
    return salesReps;
  else if constexpr (std::is_same_v<Record, ShipMethod>)
    return shipMethods;
  else if constexpr (std::is_same_v<Record, CustomerMessage>)
    return customerMessages;
  else if constexpr (std::is_same_v<Record, Invoice>)
    return invoices;
  else if constexpr (std::is_same_v<Record, Estimate>)
    return estimates;
  else
    return styles;
}

// The list record `recNum` of `list`, ignoring absent-record faults; null when there is none or
// the list holds no list records (invoices, estimates, styles).
ListRecord* FindListRecord(Company& company, ListKind list, RecNum recNum);

// The deepest tree LinkCompany accepts: a top-level record has level 0.
inline constexpr LONG kMaxTreeLevel = 63;

// A record whose references LinkCompany could not resolve.
struct LinkProblem {
  enum Kind { MissingParent, ParentCycle, TooDeep, MissingReference };
  Kind kind;
  ListKind list;
  // Position of the record in its list.
  size_t position;
  // The field at fault: "parent", "salesRep", "terms", "associatedName", "groupItems".
  const char* field;
};

// Checks the references between list records (parents, a name's terms and sales rep, a sales
// rep's name, group members) and derives the tree levels, roots and the customer list. Returns
// the first problem found, in list order. Linear in the number of records.
std::optional<LinkProblem> LinkCompany(Company& company);

}  // namespace parcelon::refhost
