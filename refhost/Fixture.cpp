// Loading a company from a JSON fixture: the records of the list, template and transaction
// sections as the parser completes them, then the rest; errors name the file, the JSON pointer
// and the field.
#include "refhost/Fixture.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <new>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>

#include "host/HostModel.h"
#include "refhost/FixtureScan.h"
#include "refhost/StreamingDocument.h"

namespace parcelon::refhost {

namespace {

using json = nlohmann::json;

constexpr std::array<std::string_view, 2> kTermTypes = {"standard", "dateDriven"};
constexpr std::array<std::string_view, 10> kItemTypes = {
    "service", "inventory", "part",    "charges", "subtotal",
    "group",   "discount",  "payment", "taxComp", "taxGroup"};
constexpr std::array<std::string_view, 6> kJobStatuses = {"none",       "pending", "awarded",
                                                          "inProgress", "closed",  "notAwarded"};


// A JSON pointer token for an object key: "~" as "~0", "/" as "~1".
std::string PointerToken(const std::string& key) {
  std::string token;
  for (char c : key) {
    if (c == '~')
      token += "~0";
    else if (c == '/')
      token += "~1";
    else
      token += c;
  }
  return token;
}

constexpr std::pair<const char*, Text Name::*> kNameTexts[] = {
    {"companyName", &Name::companyName},
    {"salutation", &Name::salutation},
    {"firstName", &Name::firstName},
    {"middleInitial", &Name::middleInitial},
    {"lastName", &Name::lastName},
    {"contactName1", &Name::contactName1},
    {"contactName2", &Name::contactName2},
    {"telephoneNumber1", &Name::telephoneNumber1},
    {"telephoneNumber2", &Name::telephoneNumber2},
    {"faxNumber", &Name::faxNumber},
    {"email", &Name::email},
    {"accountNumber", &Name::accountNumber},
    {"note", &Name::note},
};

constexpr std::pair<const char*, Address Name::*> kNameAddresses[] = {
    {"address", &Name::address},
    {"billingAddress", &Name::billingAddress},
    {"shippingAddress", &Name::shippingAddress},
};

constexpr std::pair<std::string_view, HRESULT> kNamedResults[] = {
    {"E_FAIL", E_FAIL},
    {"E_POINTER", E_POINTER},
    {"E_OUTOFMEMORY", E_OUTOFMEMORY},
    {"E_INVALIDARG", E_INVALIDARG},
    {"E_NOINTERFACE", E_NOINTERFACE},
    {"E_NOTIMPL", E_NOTIMPL},
    {"E_UNEXPECTED", E_UNEXPECTED},
    {"E_ACCESSDENIED", E_ACCESSDENIED},
    {"LX_E_NOTFOUND", LX_E_NOTFOUND},
};

// "0x80004005" or one of kNamedResults; none for anything else.
std::optional<HRESULT> ParseResult(const std::string& text) {
  for (const auto& [name, hr] : kNamedResults)
    if (text == name) return hr;
  if (text.size() != 10 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) return {};
  uint32_t value = 0;
  for (size_t i = 2; i < text.size(); ++i) {
    const char c = text[i];
    const int digit = c >= '0' && c <= '9'   ? c - '0'
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10
                      : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                             : -1;
    if (digit < 0) return {};
    value = value << 4 | uint32_t(digit);
  }
  return static_cast<HRESULT>(value);
}

bool HasRecord(Company& company, ListKind list, RecNum recNum) {
  switch (list) {
    case ListKind::Invoices:
      return company.invoices.Find(recNum);
    case ListKind::Estimates:
      return company.estimates.Find(recNum);
    case ListKind::Styles:
      return company.styles.Find(recNum);
    default:
      return FindListRecord(company, list, recNum);
  }
}

// Reads the sections of one fixture into a company. The records of the list, template and
// transaction sections are read as the parser completes them, in the fixture's order, so
// references between records are checked once every record is in: the tree links at Link()
// and references of transactions that pointed ahead at CheckPendingReferences().
class Loader {
 public:
  Loader(FixtureContext& context, Company& company, const RecordEdit& edit)
      : context_(context), company_(company), edit_(edit) {}

  void Load(std::string_view text) {
    expectedRecords_ = ScanFixture(text, context_.file, kRecordSections);
    StreamingDocument parser(kRecordSections, context_,
                             [this](size_t section, size_t index, json& element) {
                               ReadRecord(section, index, element);
                             });
    document_ = parser.Parse(text);
    root_.emplace(context_, document_, "");
    LoadCompanyInfo();
    LoadHost();
    // What is left of a record section is its empty array, or a value of the wrong type.
    for (std::string_view section : kRecordSections)
      root_->ForEach(section.data(), [](FixtureReader&) {});  // a literal: the reader keeps the name
    Link();
    CheckPendingReferences();
    LoadDataFileRecords();
    LoadFaults();
    root_->Finish();
  }

 private:
  static constexpr size_t kMaxReservedBytes = size_t(256) << 20;
  static constexpr std::string_view kRecordSections[] = {
      "terms",       "customers",        "otherNames", "items",    "classes",  "salesReps",
      "shipMethods", "customerMessages", "styles",     "invoices", "estimates"};

  void ReadRecord(size_t section, size_t index, json& element) {
    const std::string_view name = kRecordSections[section];
    const ListKind list = name == "otherNames" ? ListKind::Names : *ListFromName(name);
    if (list == ListKind::Names && index == 0)
      nameSections_.emplace_back(company_.names.Size(), name);
    if (edit_) edit_(list, element);
    FixtureReader r(context_, element, "/" + std::string(name) + "/" + std::to_string(index));
    // Room for the whole section at once: growing a large list record by record would move every
    // record several times.
    const size_t reserve = index == 0 ? expectedRecords_[section] : 0;
    switch (list) {
      case ListKind::Terms:
        return Add(reserve, company_.terms, r, [&](Term& term) {
          r.ReadEnum("type", term.type, kTermTypes);
          r.Read("stdDueDays", term.stdDueDays, 0);
          r.Read("stdDiscountDays", term.stdDiscountDays, 0);
          r.Read("dayOfMonthDue", term.dayOfMonthDue, 0, 31);
          r.Read("discountDayOfMonth", term.discountDayOfMonth, 0, 31);
          r.Read("discountPct", term.discountPct);
          r.Read("minDays", term.minDays, 0);
          term.discountEmpty = term.discountPct.empty;
          r.Read("isDiscountEmpty", term.discountEmpty);
        });
      case ListKind::Names:
        return Add(reserve, company_.names, r, [&](Name& record) {
          if (name == "customers")
            r.Read("parent", record.parent, 0);
          else
            record.customer = false;
          ReadName(r, record);
        });
      case ListKind::Items:
        return Add(reserve, company_.items, r, [&](Item& item) {
          r.ReadEnum("type", item.type, kItemTypes);
          r.Read("parent", item.parent, 0);
          r.Read("longDescription", item.longDescription);
          r.ForEachValue("groupItems", [&](const json& member, const std::string& pointer) {
            const std::optional<int64_t> recNum = WholeNumber(member);
            if (!recNum || *recNum < 1 || *recNum > INT32_MAX)
              FixtureReader::FailAt(context_, pointer, "expected a record number of an item");
            item.groupMembers.push_back(static_cast<RecNum>(*recNum));
          });
          if (!item.groupMembers.empty() && item.type != itGROUP && item.type != itTAXGROUP)
            r.Fail("groupItems", "only items of type group or taxGroup have members");
        });
      case ListKind::Classes:
        return Add(reserve, company_.classes, r, [&](Class& record) { r.Read("parent", record.parent, 0); });
      case ListKind::SalesReps:
        return Add(reserve, company_.salesReps, r,
                   [&](SalesRep& rep) { r.Read("associatedName", rep.associatedName, 0); });
      case ListKind::ShipMethods:
        return Add(reserve, company_.shipMethods, r, [](ShipMethod&) {});
      case ListKind::CustomerMessages:
        return Add(reserve, company_.customerMessages, r, [](CustomerMessage&) {});
      case ListKind::Styles:
        return Add(reserve, company_.styles, r, [&](Style& style) { ReadStyle(r, style, company_); });
      case ListKind::Invoices:
        return Add(reserve, company_.invoices, r, [&](Invoice& invoice) { ReadInvoice(r, invoice, company_); });
      case ListKind::Estimates:
        return Add(reserve, company_.estimates, r,
                   [&](Estimate& estimate) { ReadEstimate(r, estimate, company_); });
    }
  }

  // Reads a record of Record's list from `r` (the fields every list record has, then `fill`)
  // and adds it, refusing a record number the list has already; first makes room for `reserve`
  // more records.
  template <class Record, class Fill>
  void Add(size_t reserve, RecordList<Record>& list, FixtureReader& r, Fill&& fill) {
    // The count is only a hint, not yet checked record by record: a section of a million bare
    // numbers does not get room for a million records.
    if (reserve) list.Reserve(list.Size() + std::min(reserve, kMaxReservedBytes / sizeof(Record)));
    Record record;
    if constexpr (std::is_base_of_v<ListRecord, Record>) ReadListRecord(r, record);
    fill(record);
    r.Finish();
    const RecNum recNum = record.recNum;
    if (!list.Add(std::move(record))) {
      const size_t first = list.PositionOf(*list.Find(recNum));
      r.Fail("recNum", "duplicate record number " + std::to_string(recNum) + ", first at " +
                           PointerOf(Record::kList, first));
    }
  }

  void LoadCompanyInfo() {
    root_->Accept("company");
    const json* section = Section("company");
    if (!section) return;
    FixtureReader r(context_, *section, "/company");
    CompanyInfo& info = company_.info;
    r.Read("companyName", info.companyName);
    r.Read("address", info.address);
    r.Read("legalCompanyName", info.legalCompanyName);
    r.Read("legalAddress", info.legalAddress);
    r.Read("email", info.email);
    r.Read("phone", info.phone);
    r.Read("companyUID", company_.companyUID);
    r.Read("companyAuthID", company_.authID);
    if (const json* statuses = Section("subscriptions", *section)) {
      if (!statuses->is_object()) r.Fail("subscriptions", "expected an object");
      for (const auto& [service, status] : statuses->items()) {
        const std::string pointer = "/company/subscriptions/" + PointerToken(service);
        const std::optional<int64_t> number = WholeNumber(status);
        if (!number || *number < INT32_MIN || *number > INT32_MAX)
          FixtureReader::FailAt(context_, pointer, "expected a whole number");
        Text name;
        Utf8ToText(service, name);
        company_.serviceStatuses[name] = static_cast<LONG>(*number);
      }
      r.Accept("subscriptions");
    }
    r.Finish();
  }

  void LoadHost() {
    root_->Accept("host");
    const json* section = Section("host");
    if (!section) return;
    FixtureReader r(context_, *section, "/host");
    r.Read("logFolder", company_.host.logFolder);
    r.Finish();
  }

  static void ReadListRecord(FixtureReader& r, ListRecord& record) {
    r.Require("recNum", record.recNum, 1);
    r.Require("name", record.name);
    r.Read("isHidden", record.hidden);
    r.ReadTime("modTime", record.modTime);
    std::set<std::pair<Text, Text>> seen;
    r.ForEach("attributes", [&](FixtureReader& a) {
      Attribute attribute;
      a.Require("name", attribute.name);
      a.Require("owner", attribute.owner);
      a.Read("value", attribute.value);
      if (!seen.emplace(attribute.name, attribute.owner).second)
        a.Fail("name", "a second attribute of this name and owner");
      record.attributes.push_back(std::move(attribute));
    });
  }

  static void ReadName(FixtureReader& r, Name& name) {
    r.ReadEnum("jobStatus", name.jobStatus, kJobStatuses);
    for (const auto& [field, member] : kNameTexts) r.Read(field, name.*member);
    for (const auto& [field, member] : kNameAddresses) r.Read(field, name.*member);
    r.Read("salesRep", name.salesRep, 0);
    r.Read("terms", name.terms, 0);
  }

  // The JSON pointer of the record at `position` of `list`.
  std::string PointerOf(ListKind list, size_t position) const {
    if (list != ListKind::Names)
      return "/" + std::string(ListName(list)) + "/" + std::to_string(position);
    // Customers and other names share the list, section after section in the fixture's order.
    auto section = nameSections_.rbegin();
    while (section->first > position) ++section;
    return "/" + std::string(section->second) + "/" + std::to_string(position - section->first);
  }

  void Link() {
    const std::optional<LinkProblem> problem = LinkCompany(company_);
    if (!problem) return;
    const std::string field = problem->field;
    std::string message;
    switch (problem->kind) {
      case LinkProblem::MissingParent:
        message = problem->list == ListKind::Names ? "expected a record number of a customer or job"
                  : problem->list == ListKind::Items ? "expected a record number of an item"
                                                     : "expected a record number of a class";
        break;
      case LinkProblem::ParentCycle:
        message = "the parent links form a cycle";
        break;
      case LinkProblem::TooDeep:
        message = "the tree is deeper than " + std::to_string(kMaxTreeLevel) + " levels";
        break;
      case LinkProblem::MissingReference:
        message = field == "terms"        ? "expected a record number of a term"
                  : field == "salesRep"   ? "expected a record number of a sales rep"
                  : field == "groupItems" ? "expected record numbers of items"
                                          : "expected a record number of a name";
        break;
    }
    FixtureReader::FailAt(context_, PointerOf(problem->list, problem->position),
                          field + ": " + message);
  }

  void CheckPendingReferences() {
    for (const PendingReference& reference : context_.pendingReferences) {
      const Name* name =
          reference.customerOnly ? company_.names.Find(reference.recNum) : nullptr;
      if (reference.customerOnly ? !name || !name->customer
                                 : !HasRecord(company_, reference.list, reference.recNum))
        FixtureReader::FailAt(context_, reference.pointer,
                              std::string(reference.field) + ": expected a record number of " +
                                  reference.what);
    }
  }

  void LoadDataFileRecords() {
    root_->ForEach("dataFileRecords", [&](FixtureReader& r) {
      DataFileRecord record;
      r.Require("name", record.name);
      r.Read("dataVersion", record.dataVersion);
      if (const json* properties = Section("properties", r.Json())) {
        if (!properties->is_object()) r.Fail("properties", "expected an object");
        for (const auto& [key, value] : properties->items())
          ReadProperty(r.Pointer() + "/properties/" + PointerToken(key), key, value, record);
        r.Accept("properties");
      }
      if (company_.dataFileRecords.count(record.name))
        r.Fail("name", "a second data file record of this name");
      Text name = record.name;
      company_.dataFileRecords.emplace(std::move(name), std::move(record));
    });
  }

  void ReadProperty(const std::string& pointer, const std::string& key, const json& value,
                    DataFileRecord& record) {
    PropertyValue property;
    const std::optional<int64_t> whole = WholeNumber(value);
    if (value.is_string()) {
      property.type = VT_BSTR;
      if (!Utf8ToText(value.get_ref<const std::string&>(), property.text))
        FixtureReader::FailAt(context_, pointer, "the string is not well-formed UTF-8");
    } else if (value.is_boolean()) {
      property.type = VT_BOOL;
      property.integer = value.get<bool>() ? -1 : 0;
    } else if (whole) {
      property.type = *whole >= INT32_MIN && *whole <= INT32_MAX ? VT_I4 : VT_I8;
      property.integer = *whole;
    } else if (value.is_number_integer()) {
      FixtureReader::FailAt(context_, pointer,
                            "expected a whole number from -9223372036854775808 to "
                            "9223372036854775807");
    } else if (value.is_number_float()) {
      property.type = VT_R8;
      property.real = value.get<double>();
    } else if (!value.is_null()) {
      FixtureReader::FailAt(
          context_, pointer,
          "expected a string, a boolean, a number or null, found " + TypeName(value));
    }
    Text name;
    Utf8ToText(key, name);
    record.properties[name] = std::move(property);
  }

  void LoadFaults() {
    Faults& faults = company_.faults;
    root_->ForEach("faults", [&](FixtureReader& r) {
      Text operation, result;
      r.Require("operation", operation);
      r.Require("hresult", result);
      LONG record = 0;
      const bool forRecord = r.Read("record", record, 0);
      const std::optional<HRESULT> hr = ParseResult(TextToUtf8(result));
      if (!hr || SUCCEEDED(*hr))
        r.Fail("hresult", "expected a failure code such as \"0x80004005\" or \"E_FAIL\"");
      if (!faults.Fail(TextToUtf8(operation), *hr,
                       forRecord ? std::optional<LONG>(record) : std::nullopt))
        r.Fail("operation", "expected Interface::Method of a host interface");
    });
    root_->ForEachValue("unavailable", [&](const json& name, const std::string& pointer) {
      if (!name.is_string() || !faults.MakeUnavailable(name.get_ref<const std::string&>()))
        FixtureReader::FailAt(context_, pointer, "expected the name of a host interface");
    });
    root_->ForEach("absent", [&](FixtureReader& r) {
      Text listName;
      LONG record = 0;
      r.Require("list", listName);
      r.Require("record", record, 1);
      const std::optional<ListKind> list = ListFromName(TextToUtf8(listName));
      if (!list) r.Fail("list", "expected the name of a list, such as \"customers\"");
      if (!HasRecord(company_, *list, record))
        r.Fail("record", "expected a record number of the list");
      faults.MakeAbsent(*list, record);
    });
    root_->ForEachValue("lockedDataFileRecords", [&](const json& name, const std::string& pointer) {
      Text text;
      if (!name.is_string() || !Utf8ToText(name.get_ref<const std::string&>(), text))
        FixtureReader::FailAt(context_, pointer, "expected the name of a data file record");
      faults.HoldLock(text);
    });
  }

  // The member `name` of the whole document (or of `object`); null when absent or null.
  const json* Section(const char* name) { return Section(name, document_); }
  static const json* Section(const char* name, const json& object) {
    const auto found = object.find(name);
    return found == object.end() || found->is_null() ? nullptr : &*found;
  }

  FixtureContext& context_;
  Company& company_;
  const RecordEdit& edit_;
  std::vector<size_t> expectedRecords_;  // for each of kRecordSections
  json document_;  // what is left once the records are read
  std::optional<FixtureReader> root_;
  // Where the sections of the names list start in it: (position, section).
  std::vector<std::pair<size_t, std::string_view>> nameSections_;
};

}  // namespace

void LoadFixture(std::string_view text, const std::string& file, Company& company,
                 const RecordEdit& edit) {
  if (text.size() > kMaxFixtureBytes)
    throw FixtureError(file + ": the fixture is larger than " +
                       std::to_string(kMaxFixtureBytes >> 20) + " MiB");
  FixtureContext context{file, 0, {}};
  Company loaded;
  Loader(context, loaded, edit).Load(text);
  company = std::move(loaded);
}

HRESULT LoadFixtureText(std::string_view text, const std::string& file, Company& company,
                        std::string& error, const RecordEdit& edit) {
  try {
    LoadFixture(text, file, company, edit);
    error.clear();
    return S_OK;
  } catch (const FixtureError& e) {
    error = e.what();
    return kInvalidFixture;
  } catch (const std::bad_alloc&) {
    error = file + ": out of memory";
    return E_OUTOFMEMORY;
  } catch (const json::exception& e) {
    error = file + ": " + e.what();
    return kInvalidFixture;
  }
}

HRESULT ReadFixtureFile(const std::string& path, std::string& text, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = path + ": cannot open the file";
    return STG_E_FILENOTFOUND;
  }
  in.seekg(0, std::ios::end);
  const std::streamoff size = in.tellg();
  if (size >= 0 && uint64_t(size) > kMaxFixtureBytes) {
    error =
        path + ": the fixture is larger than " + std::to_string(kMaxFixtureBytes >> 20) + " MiB";
    return kInvalidFixture;
  }
  text.assign(size < 0 ? 0 : static_cast<size_t>(size), '\0');
  in.seekg(0);
  if (size < 0 || !in.read(text.data(), size)) {
    error = path + ": cannot read the file";
    return kInvalidFixture;
  }
  return S_OK;
}

HRESULT LoadFixtureFile(const std::string& path, Company& company, std::string& error) {
  std::string text;
  const HRESULT hr = ReadFixtureFile(path, text, error);
  return FAILED(hr) ? hr : LoadFixtureText(text, path, company, error);
}

}  // namespace parcelon::refhost
