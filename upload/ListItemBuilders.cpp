#include "upload/ListItemBuilders.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/EnumToString.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"

using parcelon::forms::Required;

namespace {

constexpr char kTermPrefix[] = "Parcelon:CTermItemBuilder::BuildXML(XMLBuilder&)";
constexpr char kCustomerPrefix[] = "Parcelon:CCustomerJobItemBuilder::BuildXML(XMLBuilder&)";

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
  LONG modTime = 0;
  if (SUCCEEDED(LOG_IF_FAILED(term->GetModTime(&modTime), kTermPrefix,
                              "Failed to get mod time from term in LX.  Skipping this optional element.")) &&
      modTime != 0)
    builder.AddLongElement("TMModStamp", modTime);
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

void CCustomerJobItemBuilder::AddParentReference(XmlName name, HRESULT (STDMETHODCALLTYPE IName::*getParent)(IName**),
                                                 const char* parentMessage, const char* recNumMessage,
                                                 XMLBuilder& builder) {
  INamePtr parent;
  if (FAILED(LOG_IF_FAILED((customer_.Get()->*getParent)(parent.ReleaseAndGetAddressOf()), kCustomerPrefix,
                           parentMessage)) ||
      !parent)
    return;
  LONG recNum = 0;
  if (SUCCEEDED(LOG_IF_FAILED(parent->GetRecNum(&recNum), kCustomerPrefix, recNumMessage)))
    builder.AddLongElement(name, recNum);
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
  AddParentReference("ParentID", &IName::GetParent,
                     "Failed to get parent name from customer in LX.  Skipping this optional element.",
                     "Failed to get record number from customer in LX while getting customer's parent name.  "
                     "Skipping this optional element.",
                     builder);
  AddParentReference("ParentRootID", &IName::GetParentRoot,
                     "Failed to get parent name root from customer in LX.  Skipping this optional element.",
                     "Failed to get record number from customer in LX while getting customer's parent name root.  "
                     "Skipping this optional element.",
                     builder);
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
