// The links between the records of the reference host's company: trees, references, customers.
#include "refhost/CompanyData.h"

#include <cstdint>

namespace parcelon::refhost {

namespace {

// May `parent` be the parent of a record of this list? A job's parent is a customer or job.
template <class Record>
bool CanBeParent(const Record& parent) {
  if constexpr (std::is_same_v<Record, Name>)
    return parent.customer;
  else
    return true;
}

// Fills level and root of every record of a tree from the parent links. Each record is walked
// once: a walk climbs from a record to the first record already done (or the top), then assigns
// the records it climbed from the top down.
template <class Record>
std::optional<LinkProblem> LinkTree(RecordList<Record>& list) {
  enum : uint8_t { kNew, kOnPath, kDone };
  std::vector<uint8_t> state(list.Size(), kNew);
  std::vector<size_t> path;
  for (size_t start = 0; start < list.Size(); ++start) {
    path.clear();
    for (size_t at = start; state[at] == kNew;) {
      state[at] = kOnPath;
      path.push_back(at);
      const RecNum parentNum = list.At(at).parent;
      if (parentNum == 0) break;
      const Record* parent = list.Find(parentNum);
      if (!parent || !CanBeParent(*parent))
        return LinkProblem{LinkProblem::MissingParent, Record::kList, at, "parent"};
      at = list.PositionOf(*parent);
      if (state[at] == kOnPath)
        return LinkProblem{LinkProblem::ParentCycle, Record::kList, path.back(), "parent"};
    }
    for (auto it = path.rbegin(); it != path.rend(); ++it) {
      Record& record = list.At(*it);
      if (record.parent == 0) {
        record.level = 0;
        record.root = record.recNum;
      } else {
        const Record& parent = *list.Find(record.parent);
        record.level = parent.level + 1;
        record.root = parent.root;
        if (record.level > kMaxTreeLevel)
          return LinkProblem{LinkProblem::TooDeep, Record::kList, *it, "parent"};
      }
      state[*it] = kDone;
    }
  }
  return std::nullopt;
}

// The first record of `list` whose reference (as `target` reads it) names no record of
// `targets`; 0 counts as not set.
template <class Record, class Target, class Field>
std::optional<LinkProblem> CheckReference(RecordList<Record>& list, RecordList<Target>& targets,
                                          Field field, const char* fieldName) {
  for (size_t i = 0; i < list.Size(); ++i) {
    const RecNum recNum = list.At(i).*field;
    if (recNum != 0 && !targets.Find(recNum))
      return LinkProblem{LinkProblem::MissingReference, Record::kList, i, fieldName};
  }
  return std::nullopt;
}

std::optional<LinkProblem> CheckGroups(RecordList<Item>& items) {
  for (size_t i = 0; i < items.Size(); ++i)
    for (RecNum member : items.At(i).groupMembers)
      if (!items.Find(member))
        return LinkProblem{LinkProblem::MissingReference, ListKind::Items, i, "groupItems"};
  return std::nullopt;
}

}  // namespace

ListRecord* FindListRecord(Company& company, ListKind list, RecNum recNum) {
  switch (list) {
    case ListKind::Terms:
      return company.terms.Find(recNum);
    case ListKind::Names:
      return company.names.Find(recNum);
    case ListKind::Items:
      return company.items.Find(recNum);
    case ListKind::Classes:
      return company.classes.Find(recNum);
    case ListKind::SalesReps:
      return company.salesReps.Find(recNum);
    case ListKind::ShipMethods:
      return company.shipMethods.Find(recNum);
    case ListKind::CustomerMessages:
      return company.customerMessages.Find(recNum);
    case ListKind::Invoices:
    case ListKind::Estimates:
    case ListKind::Styles:
      return nullptr;
  }
  return nullptr;
}

std::optional<LinkProblem> LinkCompany(Company& company) {
  std::optional<LinkProblem> problem;
  if ((problem = LinkTree(company.names)) || (problem = LinkTree(company.items)) ||
      (problem = LinkTree(company.classes)) ||
      (problem = CheckReference(company.names, company.terms, &Name::terms, "terms")) ||
      (problem = CheckReference(company.names, company.salesReps, &Name::salesRep, "salesRep")) ||
      (problem = CheckReference(company.salesReps, company.names, &SalesRep::associatedName,
                                "associatedName")) ||
      (problem = CheckGroups(company.items)))
    return problem;
  company.customers.clear();
  for (size_t i = 0; i < company.names.Size(); ++i)
    if (company.names.At(i).customer) company.customers.push_back(i);
  return std::nullopt;
}

}  // namespace parcelon::refhost
