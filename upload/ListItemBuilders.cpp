#include "upload/ListItemBuilders.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/EnumToString.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"

using parcelon::forms::Required;

namespace {

constexpr char kTermPrefix[] = "Parcelon:CTermItemBuilder::BuildXML(XMLBuilder&)";
constexpr char kCustomerPrefix[] = "Parcelon:CCustomerJobItemBuilder::BuildXML(XMLBuilder&)";
constexpr char kClassPrefix[] = "Parcelon:CClassItemBuilder::BuildXML(XMLBuilder&)";
constexpr char kCustMessagePrefix[] = "Parcelon:CCustMessageItemBuilder::BuildXML(XMLBuilder&)";
constexpr char kSalesRepPrefix[] = "Parcelon:CSalesRepItemBuilder::BuildXML(XMLBuilder&)";
constexpr char kShipMethodPrefix[] = "Parcelon:CShipMethodItemBuilder::BuildXML(XMLBuilder&)";

// Opens `element` with the attribute `attribute` = `value`, or without it when `value` is empty.
void OpenWithAttribute(XMLBuilder& builder, XmlName element, const char* attribute, const OLAString& value) {
  if (value.GetLength() == 0) {
    builder.OpenAggregate(element);
    return;
  }
  const OLAString attributes[] = {attribute, value, ""};
  builder.OpenAggregateWithAttributes(element, attributes);
}

// "ClientID", "Name" and "Hidden" of a list record, all required.
HRESULT AddIdentity(XMLBuilder& builder, IListElement* record, const char* prefix, const char* recNumMessage,
                    const char* nameMessage, const char* hiddenMessage) {
  LONG recNum = 0;
  RETURN_IF_FAILED_LOG(record->GetRecNum(&recNum), prefix, recNumMessage);
  builder.AddLongElement("ClientID", recNum);
  Bstr name;
  RETURN_IF_FAILED_LOG(record->GetName(name.Out()), prefix, nameMessage);
  builder.AddElement("Name", name.Get());
  VARIANT_BOOL hidden = VARIANT_FALSE;
  RETURN_IF_FAILED_LOG(record->GetIsHidden(&hidden), prefix, hiddenMessage);
  builder.AddBoolElement("Hidden", hidden);
  return S_OK;
}

// "TMModStamp": the record's modification time, optional and left out when it is zero.
void AddModStamp(XMLBuilder& builder, IListElement* record, const char* prefix, const char* message) {
  LONG modTime = 0;
  if (SUCCEEDED(LOG_IF_FAILED(record->GetModTime(&modTime), prefix, message)) && modTime != 0)
    builder.AddLongElement("TMModStamp", modTime);
}

// The messages of a kept list record's first children, worded for its kind.
struct KeptRecordWording {
  const char* prefix;
  const char* recNum;
  const char* name;
  const char* hidden;
  const char* modTime;
};

// Opens `element` and writes "ClientID", "Name", "Hidden" and "TMModStamp" of a kept list record.
HRESULT OpenKeptRecord(XMLBuilder& builder, XmlName element, IListElement* record, const KeptRecordWording& w) {
  builder.OpenAggregate(element);
  RETURN_IF_FAILED(AddIdentity(builder, record, w.prefix, w.recNum, w.name, w.hidden));
  AddModStamp(builder, record, w.prefix, w.modTime);
  return S_OK;
}

// "ParentID" or "ParentRootID": the record number of the record that `getParent` gives, when
// there is one; both reads are optional.
template <class Record>
void AddParentReference(XMLBuilder& builder, Record* record, XmlName name,
                        HRESULT (STDMETHODCALLTYPE Record::*getParent)(Record**), const char* prefix,
                        const char* parentMessage, const char* recNumMessage) {
  ComPtr<Record> parent;
  if (FAILED(LOG_IF_FAILED((record->*getParent)(parent.ReleaseAndGetAddressOf()), prefix, parentMessage)) || !parent)
    return;
  LONG recNum = 0;
  if (SUCCEEDED(LOG_IF_FAILED(parent->GetRecNum(&recNum), prefix, recNumMessage))) builder.AddLongElement(name, recNum);
}

#define PARCELON_OPTIONAL(text) text "  Skipping this optional element."

// A required whole-number field of a term.
HRESULT AddTermDays(XMLBuilder& builder, ITerm* term, HRESULT (STDMETHODCALLTYPE ITerm::*get)(LONG*), XmlName name,
                    const char* message) {
  LONG value = 0;
  RETURN_IF_FAILED_LOG((term->*get)(&value), kTermPrefix, message);
  builder.AddLongElement(name, value);
  return S_OK;
}

}  // namespace

HRESULT CTermItemBuilder::BuildXML(XMLBuilder& builder) {
  ITerm* const term = Required(term_);
  LONG type = 0;
  RETURN_IF_FAILED_LOG(term->GetType(&type), kTermPrefix, "Failed to get type from term in LX.");
  OLAString typeName;
  CLXEnumToString().TermTypeToString(type, typeName);
  OpenWithAttribute(builder, "TermItem", "type", typeName);

  RETURN_IF_FAILED(AddIdentity(builder, term, kTermPrefix, "Failed to get record number from term in LX.",
                               "Failed to get name from term in LX.", "Failed to get hidden from term in LX."));
  AddModStamp(builder, term, kTermPrefix, PARCELON_OPTIONAL("Failed to get mod time from term in LX."));
  RETURN_IF_FAILED(AddTermDays(builder, term, &ITerm::GetStdDueDays, "StdDueDays",
                               "Failed to get standard due days from term in LX."));
  RETURN_IF_FAILED(AddTermDays(builder, term, &ITerm::GetStdDiscountDays, "StdDiscountDays",
                               "Failed to get standard discount days from term in LX."));
  RETURN_IF_FAILED(AddTermDays(builder, term, &ITerm::GetDayOfMonthDue, "DayOfMonthDue",
                               "Failed to get day of month due from term in LX."));
  RETURN_IF_FAILED(AddTermDays(builder, term, &ITerm::GetDiscountDayOfMonth, "DiscountDayOfMonth",
                               "Failed to get discount day of month from term in LX."));
  // The percentage is written only when the terms have one.
  const char* const noDiscount = "Failed to get discount percentage from term in LX.  Skipping this optional element.";
  IPercentPtr discount;
  if (SUCCEEDED(LOG_IF_FAILED(term->GetDiscountPct(discount.ReleaseAndGetAddressOf()), kTermPrefix, noDiscount)) &&
      discount) {
    VARIANT_BOOL empty = VARIANT_TRUE;
    double value = 0;
    HRESULT hr = discount->IsEmpty(&empty);
    if (SUCCEEDED(hr) && empty == VARIANT_FALSE) hr = discount->GetValue(&value);
    if (SUCCEEDED(LOG_IF_FAILED(hr, kTermPrefix, noDiscount)) && empty == VARIANT_FALSE)
      builder.AddFixedElement("DiscountPct", value, 5);
  }
  RETURN_IF_FAILED(AddTermDays(builder, term, &ITerm::GetMinDays, "MinDays", "Failed to get minimum days from term in LX."));
  builder.CloseAggregate("TermItem");
  return S_OK;
}

HRESULT CCustomerJobItemBuilder::BuildXML(XMLBuilder& builder) {
  IName* const customer = Required(customer_);
  IJobInfoPtr jobInfo;
  RETURN_IF_FAILED_LOG(customer->GetJobInfo(jobInfo.ReleaseAndGetAddressOf()), kCustomerPrefix,
                       "Failed to get job info from customer in LX.");
  LONG status = 0;
  RETURN_IF_FAILED_LOG(Required(jobInfo)->GetJobStatus(&status), kCustomerPrefix,
                       "Failed to get job status from customer in LX.");
  OLAString statusName;
  CLXEnumToString().JobStatusToString(status, statusName);
  OpenWithAttribute(builder, "CustomerJobItem", "jobStatus", statusName);

  RETURN_IF_FAILED(AddIdentity(builder, customer, kCustomerPrefix, "Failed to get record number from customer in LX.",
                               "Failed to get name from customer in LX.", "Failed to get hidden from customer in LX."));
  AddParentReference(builder, customer, "ParentID", &IName::GetParent, kCustomerPrefix,
                     PARCELON_OPTIONAL("Failed to get parent name from customer in LX."),
                     PARCELON_OPTIONAL("Failed to get record number from customer in LX while getting customer's "
                                       "parent name."));
  AddParentReference(builder, customer, "ParentRootID", &IName::GetParentRoot, kCustomerPrefix,
                     PARCELON_OPTIONAL("Failed to get parent name root from customer in LX."),
                     PARCELON_OPTIONAL("Failed to get record number from customer in LX while getting customer's "
                                       "parent name root."));
  LONG level = 0;
  RETURN_IF_FAILED_LOG(customer->GetSubLevel(&level), kCustomerPrefix, "Failed to get sub level from customer in LX.");
  builder.AddLongElement("Sublevel", level);

  struct Text {
    HRESULT (STDMETHODCALLTYPE IName::*get)(BSTR*);
    const char* element;
    const char* message;
  };
  static const Text kTexts[] = {
      {&IName::GetCompanyName, "CompanyName", "Failed to get company name from customer in LX.  Skipping this optional element."},
      {&IName::GetSalutation, "Salutation", "Failed to get salutation from customer in LX.  Skipping this optional element."},
      {&IName::GetFirstName, "FirstName", "Failed to get first name from customer in LX.  Skipping this optional element."},
      {&IName::GetMiddleInitial, "MiddleName", "Failed to get middle initial from customer in LX.  Skipping this optional element."},
      {&IName::GetLastName, "LastName", "Failed to get last name from customer in LX.  Skipping this optional element."},
      {&IName::GetContactName1, "Contact", "Failed to get contact name 1 from customer in LX.  Skipping this optional element."},
      {&IName::GetContactName2, "AltContact", "Failed to get contact name 2 from customer in LX.  Skipping this optional element."},
      {&IName::GetTelephoneNumber1, "Phone", "Failed to get telephone number 1 from customer in LX.  Skipping this optional element."},
      {&IName::GetTelephoneNumber2, "AltPhone", "Failed to get telephone number 2 from customer in LX.  Skipping this optional element."},
      {&IName::GetFaxNumber, "Fax", "Failed to get fax number from customer in LX.  Skipping this optional element."},
      {&IName::GetEmail, "Email", "Failed to get email from customer in LX.  Skipping this optional element."},
  };
  for (const Text& text : kTexts) {
    Bstr value;
    if (SUCCEEDED(LOG_IF_FAILED((customer->*text.get)(value.Out()), kCustomerPrefix, text.message)))
      parcelon::forms::AddTextIfNotEmpty(builder, text.element, value.Get());
  }
  struct Address {
    HRESULT (STDMETHODCALLTYPE IName::*get)(IAddress**);
    const char* element;
    const char* message;
  };
  static const Address kAddresses[] = {
      {&IName::GetBillingAddress, "BillAddress", "Failed to get billing address lines from customer in LX.  Skipping this optional element."},
      {&IName::GetShippingAddress, "ShipAddress", "Failed to get shipping address lines from customer in LX.  Skipping this optional element."},
  };
  for (const Address& address : kAddresses) {
    IAddressPtr value;
    HRESULT hr = (customer->*address.get)(value.ReleaseAndGetAddressOf());
    if (SUCCEEDED(hr)) hr = parcelon::forms::AddAddress(builder, address.element, value);
    LOG_IF_FAILED(hr, kCustomerPrefix, address.message);
  }
  Bstr note;
  if (SUCCEEDED(LOG_IF_FAILED(customer->GetNote(note.Out()), kCustomerPrefix,
                              "Failed to get note from customer in LX.  Skipping this optional element.")))
    parcelon::forms::AddTextIfNotEmpty(builder, "Notes", note.Get());
  builder.CloseAggregate("CustomerJobItem");
  return S_OK;
}

HRESULT CClassItemBuilder::BuildXML(XMLBuilder& builder) {
  IClass* const record = Required(class_);
  RETURN_IF_FAILED(OpenKeptRecord(builder, "ClassItem", record,
                                  {kClassPrefix, "Failed to get record number from class in LX.",
                                   "Failed to get name from class in LX.", "Failed to get hidden from class in LX.",
                                   PARCELON_OPTIONAL("Failed to get mod time from class in LX.")}));
  AddParentReference(builder, record, "ParentID", &IClass::GetParent, kClassPrefix,
                     PARCELON_OPTIONAL("Failed to get parent class from class in LX."),
                     PARCELON_OPTIONAL("Failed to get record number from class in LX while getting class's "
                                       "parent class."));
  AddParentReference(builder, record, "ParentRootID", &IClass::GetParentRoot, kClassPrefix,
                     PARCELON_OPTIONAL("Failed to get parent class root from class in LX."),
                     PARCELON_OPTIONAL("Failed to get record number from class in LX while getting class's "
                                       "parent class root."));
  LONG level = 0;
  if (SUCCEEDED(LOG_IF_FAILED(record->GetSubLevel(&level), kClassPrefix,
                              PARCELON_OPTIONAL("Failed to get sub level from class in LX."))))
    builder.AddLongElement("Sublevel", level);
  builder.CloseAggregate("ClassItem");
  return S_OK;
}

HRESULT CCustMessageItemBuilder::BuildXML(XMLBuilder& builder) {
  // The hidden flag's message ends in two full stops, kept as it stands.
  RETURN_IF_FAILED(OpenKeptRecord(builder, "CustMessageItem", Required(message_),
                                  {kCustMessagePrefix, "Failed to get record number from customer message in LX.",
                                   "Failed to get name from customer message in LX.",
                                   "Failed to get hidden from customer message in LX..",
                                   PARCELON_OPTIONAL("Failed to get mod time from customer message in LX.")}));
  builder.CloseAggregate("CustMessageItem");
  return S_OK;
}

HRESULT CSalesRepItemBuilder::BuildXML(XMLBuilder& builder) {
  ISalesRep* const salesRep = Required(salesRep_);
  RETURN_IF_FAILED(OpenKeptRecord(builder, "SalesRepItem", salesRep,
                                  {kSalesRepPrefix, "Failed to get record number from sales rep in LX.",
                                   "Failed to get name from sales rep in LX.",
                                   "Failed to get hidden from sales rep in LX.",
                                   PARCELON_OPTIONAL("Failed to get mod time from sales rep in LX.")}));
  INamePtr name;
  LONG recNum = 0;
  if (SUCCEEDED(LOG_IF_FAILED(salesRep->GetAssociatedName(name.ReleaseAndGetAddressOf()), kSalesRepPrefix,
                              PARCELON_OPTIONAL("Failed to get associated name from sales rep in LX."))) &&
      name &&
      SUCCEEDED(LOG_IF_FAILED(name->GetRecNum(&recNum), kSalesRepPrefix,
                              PARCELON_OPTIONAL("Failed to get record number from associated name in LX while "
                                                "getting sales rep's associated name ID."))))
    builder.AddLongElement("AssocNameID", recNum);
  builder.CloseAggregate("SalesRepItem");
  return S_OK;
}

HRESULT CShipMethodItemBuilder::BuildXML(XMLBuilder& builder) {
  RETURN_IF_FAILED(OpenKeptRecord(builder, "ShipMethodItem", Required(shipMethod_),
                                  {kShipMethodPrefix, "Failed to get record number from ship method in LX.",
                                   "Failed to get name from ship method in LX.",
                                   "Failed to get hidden from ship method in LX.",
                                   PARCELON_OPTIONAL("Failed to get mod time from ship method in LX.")}));
  builder.CloseAggregate("ShipMethodItem");
  return S_OK;
}

#undef PARCELON_OPTIONAL
