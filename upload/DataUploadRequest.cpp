#include "upload/DataUploadRequest.h"

#include <string>

#include "clienttools/TrnUID.h"
#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "forms/FormRequest.h"
#include "platform/Bstr.h"
#include "upload/ListItemBuilders.h"
#include "upload/ParentWalk.h"
#include "upload/TransactionBuilders.h"
#include "upload/UploadClock.h"
#include "upload/UploadSelection.h"
#include "upload/UploadState.h"

using parcelon::forms::RecNumKey;
using parcelon::forms::Required;

namespace {

constexpr char kIsOkayPrefix[] = "Parcelon:CNA_Forms::IsOkayToBuildLXDataMsgsRq(BOOL*)";
constexpr char kMsgsRqPrefix[] = "Parcelon:CNA_Forms::BuildLXDataMsgsRq(XMLBuilder&)";
constexpr char kUploadRqPrefix[] = "Parcelon:CNA_Forms::BuildDataUploadRq(ICompanyFilePtr, XMLBuilder&)";
constexpr char kCompanyAddPrefix[] = "Parcelon:CNA_Forms::BuildCompanyAdd(ICompanyFilePtr, XMLBuilder&)";
constexpr char kTermsPrefix[] = "Parcelon:CDataUploadHelper::AddTermItems(CRecNumMap&, XMLBuilder&)";
constexpr char kCustomersPrefix[] = "Parcelon:CDataUploadHelper::AddCustomerJobItems(CRecNumMap&, XMLBuilder&)";
constexpr char kInvoicesPrefix[] = "Parcelon:CDataUploadHelper::AddInvoices(CRecNumMap&, XMLBuilder&)";
constexpr char kEstimatesPrefix[] = "Parcelon:CDataUploadHelper::AddEstimates(CRecNumMap&, XMLBuilder&)";
constexpr char kAttributePrefix[] =
    "Parcelon:CDataUploadHelper::GetUploadTimeAttribute(IAttributeContainerPtr&, long*)";

// Opens `name` once, before the first record of a section.
class Section {
 public:
  Section(XMLBuilder& builder, XmlName name) : builder_(builder), name_(name) {}
  void Open() {
    if (!open_) builder_.OpenAggregate(name_);
    open_ = true;
  }
  void Close() {
    if (open_) builder_.CloseAggregate(name_);
  }

 private:
  XMLBuilder& builder_;
  XmlName name_;
  bool open_ = false;
};

// A sent record's new mark: 1 -> 4, 2 -> 5.
uint32_t SentMark(uint32_t mark) { return mark == kMarkSelected ? kMarkSentSelected : kMarkSentChanged; }

HRESULT GetLists(const ICompanyFilePtr& company, const char* prefix, IListsPtr& lists) {
  RETURN_IF_FAILED_LOG(Required(company)->GetLists(lists.ReleaseAndGetAddressOf()), prefix,
                       "Failed to get lists from company file in LX.");
  Required(lists);
  return S_OK;
}

// The transactions' section writer, for invoices or estimates.
template <class List, class Entry, class Builder>
HRESULT AddTransactions(const ICompanyFilePtr& company, CRecNumMap::Marks& marks, XMLBuilder& builder,
                        HRESULT (STDMETHODCALLTYPE ITransactions::*getList)(List**), XmlName sectionName,
                        const char* prefix, const char* listMessage, const char* itemMessage,
                        const char* buildMessage) {
  Section section(builder, sectionName);
  ComPtr<List> list;
  for (auto& [recNum, mark] : marks) {
    if (mark != kMarkSelected && mark != kMarkChanged) continue;
    if (!list) {
      ITransactionsPtr transactions;
      RETURN_IF_FAILED_LOG(Required(company)->GetTransactions(transactions.ReleaseAndGetAddressOf()), prefix,
                           "Failed to get transactions from company file in LX.");
      RETURN_IF_FAILED_LOG((Required(transactions)->*getList)(list.ReleaseAndGetAddressOf()), prefix, listMessage);
      Required(list);
    }
    ComPtr<Entry> entry;
    RETURN_IF_FAILED_LOG(list->GetItemByRecNum(RecNumKey(LONG(recNum)), entry.ReleaseAndGetAddressOf()), prefix,
                         itemMessage);
    section.Open();
    RETURN_IF_FAILED_LOG(Builder(entry).BuildXML(builder), prefix, buildMessage);
    mark = SentMark(mark);
  }
  section.Close();
  return S_OK;
}

// The removal notices: one "ClientID" per record marked to delete.
void AddDeleted(CRecNumMap::Marks& marks, XMLBuilder& builder, XmlName sectionName) {
  Section section(builder, sectionName);
  for (auto& [recNum, mark] : marks) {
    if (mark != kMarkToDelete) continue;
    section.Open();
    builder.AddLongElement("ClientID", int32_t(recNum));
    mark = kMarkDeleted;
  }
  section.Close();
}

}  // namespace

HRESULT IsOkayToBuildLXDataMsgsRq(bool doAllCustomers, INA_Form7* currentForm, bool* ok) {
  *ok = doAllCustomers;
  if (doAllCustomers || !currentForm) return S_OK;
  VARIANT_BOOL post = VARIANT_FALSE;
  RETURN_IF_FAILED_LOG(currentForm->get_Post(&post), kIsOkayPrefix, "Failed to get post on a form");
  *ok = post != VARIANT_FALSE;
  return S_OK;
}

// ---- CDataUploadHelper ----------------------------------------------------------------------

HRESULT CDataUploadHelper::GetUploadTimeAttribute(IAttributeContainerPtr& attributes, LONG* value) {
  *value = 0;
  IAttributePtr attribute;
  const HRESULT found = Required(attributes)->FindAttribute(Bstr(PARCELON_OLESTR("ParcelonUploadTime")).Get(),
                                                            Bstr(PARCELON_OLESTR("{54901C71-3408-44fb-9031-7B4BB81D871C}")).Get(),
                                                            attribute.ReleaseAndGetAddressOf());
  // Never uploaded: not an error.
  if (found == LX_E_NOTFOUND) return S_FALSE;
  // Anything that cannot be read counts as no upload time, so the record is sent.
  if (FAILED(LOG_IF_FAILED(found, kAttributePrefix, "Failed to find/access our upload time attribute."))) return S_FALSE;
  ILongAttributePtr longAttribute;
  Required(attribute);
  if (FAILED(attribute.As(longAttribute)) || !longAttribute) {
    CNALogger::Log(kAttributePrefix, "Attribute is not a long attribute!", E_NOINTERFACE);
    return S_FALSE;
  }
  if (FAILED(LOG_IF_FAILED(longAttribute->GetValue(value), kAttributePrefix,
                           "Failed to get the upload time attribute's value."))) {
    *value = 0;
    return S_FALSE;
  }
  return S_OK;
}

// The list section writer: each record changed since its upload time is marked 2; each record of
// the map marked 1 or 2 is written, unless it is up to date.
template <class List, class Record, class Builder>
HRESULT CDataUploadHelper::AddListItems(CRecNumMap& map, XMLBuilder& builder, const ListSection<List>& section) {
  const char* const prefix = section.prefix;
  IListsPtr lists;
  RETURN_IF_FAILED(GetLists(company_, prefix, lists));
  ComPtr<List> list;
  RETURN_IF_FAILED_LOG((lists.Get()->*section.getList)(list.ReleaseAndGetAddressOf()), prefix, section.listMessage);
  LONG count = 0;
  RETURN_IF_FAILED_LOG(Required(list)->GetCount(&count), prefix, section.countMessage);
  Section element(builder, section.element);
  for (LONG index = 0; index < count; ++index) {
    ComPtr<Record> record;
    LONG recNum = 0;
    HRESULT hr = list->GetItem(index, record.ReleaseAndGetAddressOf());
    if (SUCCEEDED(hr)) hr = Required(record)->GetRecNum(&recNum);
    RETURN_IF_FAILED_LOG(hr, prefix, section.recNumMessage);
    if (recNum == 0) continue;
    IAttributeContainerPtr attributes;
    RETURN_IF_FAILED_LOG(record->GetAttributes(attributes.ReleaseAndGetAddressOf()), prefix,
                         section.attributesMessage);
    LONG uploadTime = 0;
    bool upToDate = false;
    if (GetUploadTimeAttribute(attributes, &uploadTime) == S_OK) {
      LONG modTime = 0;
      RETURN_IF_FAILED_LOG(record->GetModTime(&modTime), prefix, section.modTimeMessage);
      // A changed record travels whether or not a form refers to it.
      if (modTime > uploadTime)
        map(section.kind, recNum) = kMarkChanged;
      else
        upToDate = true;
    }
    uint32_t* const mark = map.Find(section.kind, recNum);
    if (!mark) continue;
    if (upToDate && *mark == kMarkSelected) *mark = kMarkUnchanged;
    if (*mark != kMarkSelected && *mark != kMarkChanged) continue;
    element.Open();
    RETURN_IF_FAILED_LOG(Builder(record).BuildXML(builder), prefix, section.buildMessage);
    *mark = SentMark(*mark);
  }
  element.Close();
  return S_OK;
}

HRESULT CDataUploadHelper::AddTermItems(CRecNumMap& map, XMLBuilder& builder) {
  static const ListSection<ITerms> kTerms = {
      RecordKind::kTerm, &ILists::GetTerms, "TermsAdd", kTermsPrefix,
      "Failed to get terms from lists in LX.", "Failed to get count from terms in LX.",
      "Failed to get record number from term in LX.", "Failed to get attributes from term(4) in LX.",
      "Failed to get mod time from term in LX.", "Failed while building term item XML."};
  return AddListItems<ITerms, ITerm, CTermItemBuilder>(map, builder, kTerms);
}

HRESULT CDataUploadHelper::AddClassItems(CRecNumMap& map, XMLBuilder& builder) {
  static const ListSection<IClasses> kClasses = {
      RecordKind::kClass, &ILists::GetClasses, "ClassesAdd",
      "Parcelon:CDataUploadHelper::AddClassItems(CRecNumMap&, XMLBuilder&)",
      "Failed to get classes from lists in LX.", "Failed to get count from classes in LX.",
      "Failed to get record number from class in LX.", "Failed to get attributes from class(4) in LX.",
      "Failed to get mod time from class in LX.", "Failed while building class item XML."};
  return AddListItems<IClasses, IClass, CClassItemBuilder>(map, builder, kClasses);
}

HRESULT CDataUploadHelper::AddCustMessageItems(CRecNumMap& map, XMLBuilder& builder) {
  static const ListSection<ICustomerMessages> kMessages = {
      RecordKind::kCustomerMessage, &ILists::GetCustomerMessages, "CustMessagesAdd",
      "Parcelon:CDataUploadHelper::AddCustMessageItems(CRecNumMap&, XMLBuilder&)",
      "Failed to get customer messages from lists in LX.", "Failed to get count from customer messages in LX.",
      "Failed to get record number from customer message in LX.",
      "Failed to get attributes from customer message(4) in LX.",
      "Failed to get mod time from customer message in LX.", "Failed while building customer message item XML."};
  return AddListItems<ICustomerMessages, ICustomerMessage, CCustMessageItemBuilder>(map, builder, kMessages);
}

HRESULT CDataUploadHelper::AddSalesRepItems(CRecNumMap& map, XMLBuilder& builder) {
  static const ListSection<ISalesReps> kSalesReps = {
      RecordKind::kSalesRep, &ILists::GetSalesReps, "SalesRepsAdd",
      "Parcelon:CDataUploadHelper::AddSalesRepItems(CRecNumMap&, XMLBuilder&)",
      "Failed to get sales reps from lists in LX.", "Failed to get count from sales reps in LX.",
      "Failed to get record number from sales rep in LX.", "Failed to get attributes from sales rep(4) in LX.",
      "Failed to get mod time from sales rep in LX.", "Failed while building sales rep item XML."};
  return AddListItems<ISalesReps, ISalesRep, CSalesRepItemBuilder>(map, builder, kSalesReps);
}

HRESULT CDataUploadHelper::AddShipMethodItems(CRecNumMap& map, XMLBuilder& builder) {
  static const ListSection<IShipMethods> kShipMethods = {
      RecordKind::kShipMethod, &ILists::GetShipMethods, "ShipMethodsAdd",
      "Parcelon:CDataUploadHelper::AddShipMethodItems(CRecNumMap&, XMLBuilder&)",
      "Failed to get ship methods from lists in LX.", "Failed to get count from ship methods in LX.",
      "Failed to get record number from ship method in LX.", "Failed to get attributes from ship method(4) in LX.",
      "Failed to get mod time from ship method in LX.", "Failed while building ship method item XML."};
  return AddListItems<IShipMethods, IShipMethod, CShipMethodItemBuilder>(map, builder, kShipMethods);
}

HRESULT CDataUploadHelper::IsChangedCustomer(const INamePtr& customer, bool& changed) {
  IAttributeContainerPtr attributes;
  RETURN_IF_FAILED_LOG(Required(customer)->GetAttributes(attributes.ReleaseAndGetAddressOf()), kCustomersPrefix,
                       "Failed to get attributes from customer(4) in LX.");
  LONG uploadTime = 0;
  changed = GetUploadTimeAttribute(attributes, &uploadTime) == S_OK && uploadTime > 0;
  return S_OK;
}

HRESULT CDataUploadHelper::MarkChangedCustomer(CRecNumMap& map, const INamePtr& customer) {
  LONG recNum = 0;
  RETURN_IF_FAILED_LOG(customer->GetRecNum(&recNum), kCustomersPrefix, "Failed to get record number from customer in LX.");
  if (recNum == 0) return S_OK;
  map(RecordKind::kCustomerJob, recNum) = kMarkChanged;
  // A changed job brings along its parents not yet in the map.
  return parcelon::upload::WalkParents(customer, recNum, kCustomersPrefix, [&](LONG parent) {
    if (!map.Find(RecordKind::kCustomerJob, parent)) map(RecordKind::kCustomerJob, parent) = kMarkSelected;
  });
}

HRESULT CDataUploadHelper::AddCustomerJobItems(CRecNumMap& map, XMLBuilder& builder) {
  IListsPtr lists;
  RETURN_IF_FAILED(GetLists(company_, kCustomersPrefix, lists));
  ICustomersPtr customers;
  RETURN_IF_FAILED_LOG(lists->GetCustomers(customers.ReleaseAndGetAddressOf()), kCustomersPrefix,
                       "Failed to get customers from lists in LX.");
  Required(customers);

  // The change scan: the host's filter when there was an upload before, else the whole list.
  if (lastUploadTime_ >= 1 && scope_ == 2) {
    ICustomerFilterPtr filter;
    RETURN_IF_FAILED_LOG(customers->GetFilter(filter.ReleaseAndGetAddressOf()), kCustomersPrefix,
                         "Failed to get filter for customers in LX.");
    RETURN_IF_FAILED_LOG(Required(filter)->SetModDateCriterion(lastUploadTime_, dcAfter), kCustomersPrefix,
                         "Failed to get filter for customers in LX.");
    LONG count = 0;
    RETURN_IF_FAILED_LOG(filter->GetCount(&count), kCustomersPrefix, "Failed to get count from customers in LX.");
    for (LONG index = 0; index < count; ++index) {
      INamePtr customer;
      RETURN_IF_FAILED_LOG(filter->GetItem(index, customer.ReleaseAndGetAddressOf()), kCustomersPrefix,
                           "Failed to get item from customers in LX.");
      bool changed = false;
      RETURN_IF_FAILED(IsChangedCustomer(customer, changed));
      if (changed) RETURN_IF_FAILED(MarkChangedCustomer(map, customer));
    }
  } else {
    LONG count = 0;
    RETURN_IF_FAILED_LOG(customers->GetCount(&count), kCustomersPrefix, "Failed to get count from customers in LX.");
    for (LONG index = 0; index < count; ++index) {
      INamePtr customer;
      RETURN_IF_FAILED_LOG(customers->GetItem(index, customer.ReleaseAndGetAddressOf()), kCustomersPrefix,
                           "Failed to get item from customers in LX.");
      LONG modTime = 0;
      RETURN_IF_FAILED_LOG(Required(customer)->GetModTime(&modTime), kCustomersPrefix,
                           "Failed to get mod time from customer in LX.");
      if (modTime <= lastUploadTime_) continue;
      bool changed = false;
      RETURN_IF_FAILED(IsChangedCustomer(customer, changed));
      if (changed) RETURN_IF_FAILED(MarkChangedCustomer(map, customer));
    }
  }

  // The writing pass, in ascending record-number order.
  Section section(builder, "CustomerJobsAdd");
  for (auto& [recNum, mark] : map.Of(RecordKind::kCustomerJob)) {
    if (mark != kMarkSelected && mark != kMarkChanged) continue;
    INamePtr customer;
    RETURN_IF_FAILED_LOG(customers->GetItemByRecNum(RecNumKey(LONG(recNum)), customer.ReleaseAndGetAddressOf()),
                         kCustomersPrefix, "Failed to get name(4) from find in LX.");
    Required(customer);
    if (mark == kMarkSelected && lastUploadTime_ >= 1) {
      // Sent again unless its upload time is strictly later than its last change.
      IAttributeContainerPtr attributes;
      RETURN_IF_FAILED_LOG(customer->GetAttributes(attributes.ReleaseAndGetAddressOf()), kCustomersPrefix,
                           "Failed to get attributes from customer(4) in LX.");
      LONG uploadTime = 0;
      if (GetUploadTimeAttribute(attributes, &uploadTime) == S_OK) {
        LONG modTime = 0;
        RETURN_IF_FAILED_LOG(customer->GetModTime(&modTime), kCustomersPrefix,
                             "Failed to get mod time from customer in LX.");
        if (uploadTime > modTime) {
          mark = kMarkUnchanged;
          continue;
        }
      }
    }
    section.Open();
    RETURN_IF_FAILED_LOG(CCustomerJobItemBuilder(customer).BuildXML(builder), kCustomersPrefix,
                         "Failed while building customer job item XML.");
    mark = SentMark(mark);
  }
  section.Close();
  return S_OK;
}

HRESULT CDataUploadHelper::AddInvoices(CRecNumMap& map, XMLBuilder& builder) {
  return AddTransactions<IInvoices, IInvoice, CInvoiceBuilder>(
      company_, map.Of(RecordKind::kInvoice), builder, &ITransactions::GetInvoices, "InvoicesAdd", kInvoicesPrefix,
      "Failed to get invoices from transactions in LX.", "Failed to get item from invoices in LX.",
      "Failed while building invoice XML.");
}

HRESULT CDataUploadHelper::AddEstimates(CRecNumMap& map, XMLBuilder& builder) {
  return AddTransactions<IEstimates, IEstimate, CEstimateBuilder>(
      company_, map.Of(RecordKind::kEstimate), builder, &ITransactions::GetEstimates, "EstimatesAdd",
      kEstimatesPrefix, "Failed to get estimates from transactions in LX.", "Failed to get item from estimates in LX.",
      "Failed while building estimate XML.");
}

HRESULT CDataUploadHelper::AddDeletedInvoices(CRecNumMap& map, XMLBuilder& builder) {
  AddDeleted(map.Of(RecordKind::kInvoice), builder, "InvoicesDel");
  return S_OK;
}

HRESULT CDataUploadHelper::AddDeletedEstimates(CRecNumMap& map, XMLBuilder& builder) {
  AddDeleted(map.Of(RecordKind::kEstimate), builder, "EstimatesDel");
  return S_OK;
}

// ---- CDataUploadRequest ---------------------------------------------------------------------

HRESULT CDataUploadRequest::BuildLXDataMsgsRq(XMLBuilder& builder) {
  session_.map.Clear();
  ICompanyFilePtr company;
  RETURN_IF_FAILED_LOG(parcelon::GetCurrentCompanyFilePtr(company), kMsgsRqPrefix, "Failed to get company file ptr.");
  RETURN_IF_FAILED_LOG(CUploadSelection(session_.map, session_.forms, session_.doAllCustomers).PutRecNumsInMap(company),
                       kMsgsRqPrefix, "Failed to put rec nums in map.");
  const OLAString version[] = {"version", "1", ""};
  builder.OpenAggregateWithAttributes("LXDataMsgsRq", version);
  RETURN_IF_FAILED_LOG(BuildDataUploadRq(company, builder), kMsgsRqPrefix, "Failed to build data upload request.");
  builder.CloseAggregate("LXDataMsgsRq");
  return S_OK;
}

HRESULT CDataUploadRequest::BuildDataUploadRq(const ICompanyFilePtr& company, XMLBuilder& builder) {
  const OLAString trnUID[] = {"trnUID", NewTrnUID(), ""};
  builder.OpenAggregateWithAttributes("DataUploadRq", trnUID);
  OLAString companyUID;
  RETURN_IF_FAILED_LOG(CFormRequest(nullptr).RetreiveCompanyUID(&companyUID), kUploadRqPrefix,
                       "Failed while getting company UID.");
  builder.AddElement("CompanyUID", companyUID);
  builder.AddBoolElement("ForceNewCompany", session_.forceNewCompany ? VARIANT_TRUE : VARIANT_FALSE);
  OLAString token;
  RETURN_IF_FAILED_LOG(parcelon::upload::RetrieveLastDataUploadToken(&token), kUploadRqPrefix,
                       "Failed while getting last data upload token.");
  builder.AddElement("LastDataUploadToken", token);
  // False as soon as one form is e-mailed; a form whose send method cannot be read is passed over.
  bool clientSync = true;
  for (const INA_Form7Ptr& form : session_.forms) {
    NASendType method = nastNONE;
    if (SUCCEEDED(Required(form)->get_SendMethod(&method)) && method == nastEMAIL) {
      clientSync = false;
      break;
    }
  }
  builder.AddBoolElement("ClientSync", clientSync ? VARIANT_TRUE : VARIANT_FALSE);
  RETURN_IF_FAILED_LOG(BuildCompanyAdd(company, builder), kUploadRqPrefix, "Failed while adding company.");

  const LONG lastUploadTime =
      parcelon::upload::LastClientDataUploadTimeBefore(parcelon::upload::CurrentUploadClock().Now());
  CDataUploadHelper helper(company, lastUploadTime, session_.doAllCustomers);
  helper.SetScope(session_.uploadScope);
  CRecNumMap& map = session_.map;
  RETURN_IF_FAILED_LOG(helper.AddTermItems(map, builder), kUploadRqPrefix, "Failed while adding term items.");
  RETURN_IF_FAILED_LOG(helper.AddCustomerJobItems(map, builder), kUploadRqPrefix, "Failed while adding customerjob items.");
  RETURN_IF_FAILED_LOG(helper.AddInvoices(map, builder), kUploadRqPrefix, "Failed while adding invoices.");
  RETURN_IF_FAILED_LOG(helper.AddDeletedInvoices(map, builder), kUploadRqPrefix, "Failed while adding deleted invoices.");
  RETURN_IF_FAILED_LOG(helper.AddEstimates(map, builder), kUploadRqPrefix, "Failed while adding estimates.");
  RETURN_IF_FAILED_LOG(helper.AddDeletedEstimates(map, builder), kUploadRqPrefix, "Failed while adding deleted estimates.");
  builder.CloseAggregate("DataUploadRq");
  return S_OK;
}

HRESULT CDataUploadRequest::BuildCompanyAdd(const ICompanyFilePtr& company, XMLBuilder& builder) {
  ICompanyInfoPtr info;
  RETURN_IF_FAILED_LOG(Required(company)->GetCompanyInfo(info.ReleaseAndGetAddressOf()), kCompanyAddPrefix,
                       "Failed to get company info from company file in LX.");
  ICompanyInfo* const company_info = Required(info);
  ICompanyInfo2Ptr info2;
  const HRESULT secondVersion = info.As(info2);

  using Getter = HRESULT (STDMETHODCALLTYPE ICompanyInfo::*)(BSTR*);
  const auto read = [&](Getter get, const char* message, Bstr& value) {
    return SUCCEEDED(LOG_IF_FAILED((company_info->*get)(value.Out()), kCompanyAddPrefix, message));
  };
  builder.OpenAggregate("CompanyAdd");
  Bstr name, legalName;
  if (read(&ICompanyInfo::GetCompanyName, "Failed to get company name from company info in LX.  Skipping this optional element.", name))
    parcelon::forms::AddTextIfNotEmpty(builder, "CompanyName", name.Get());
  if (read(&ICompanyInfo::GetLegalCompanyName,
           "Failed to get legal company name from company info in LX.  Skipping this optional element.", legalName))
    parcelon::forms::AddTextIfNotEmpty(builder, "LegalCompanyName", legalName.Get());

  struct LegalField {
    Getter get;
    const char* element;
    const char* message;
  };
  static const LegalField kLegal[] = {
      {&ICompanyInfo::GetLegalAddress1, "Addr1", "Failed to get legal address 1 from company info in LX.  Skipping this optional element."},
      {&ICompanyInfo::GetLegalAddress2, "Addr2", "Failed to get legal address 2 from company info in LX.  Skipping this optional element."},
      {&ICompanyInfo::GetLegalCity, "City", "Failed to get legal city from company info in LX.  Skipping this optional element."},
      {&ICompanyInfo::GetLegalState, "State", "Failed to get legal state from company info in LX.  Skipping this optional element."},
      {&ICompanyInfo::GetLegalZip, "PostalCode", "Failed to get legal zip from company info in LX.  Skipping this optional element."},
      {&ICompanyInfo::GetLegalCountry, "Country", "Failed to get legal country from company info in LX.  Skipping this optional element."},
  };
  Bstr legal[std::size(kLegal)];
  bool anyLegal = false;
  for (size_t i = 0; i < std::size(kLegal); ++i)
    anyLegal |= read(kLegal[i].get, kLegal[i].message, legal[i]) && !legal[i].Empty();
  if (anyLegal) {
    builder.OpenAggregate("LegalAddress");
    for (size_t i = 0; i < std::size(kLegal); ++i) parcelon::forms::AddTextIfNotEmpty(builder, kLegal[i].element, legal[i].Get());
    builder.CloseAggregate("LegalAddress");
  }
  Bstr phone, email;
  if (SUCCEEDED(LOG_IF_FAILED(SUCCEEDED(secondVersion) ? info2->GetPhone(phone.Out()) : secondVersion,
                              kCompanyAddPrefix,
                              "Failed to get phone number from company info (2) in LX.  Skipping this optional element.")))
    parcelon::forms::AddTextIfNotEmpty(builder, "CompanyPhone", phone.Get());
  if (SUCCEEDED(LOG_IF_FAILED(SUCCEEDED(secondVersion) ? info2->GetEmail(email.Out()) : secondVersion,
                              kCompanyAddPrefix,
                              "Failed to get email address from company info (2) in LX.  Skipping this optional element.")))
    parcelon::forms::AddTextIfNotEmpty(builder, "CompanyEmail", email.Get());
  builder.CloseAggregate("CompanyAdd");
  return S_OK;
}
