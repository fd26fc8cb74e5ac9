#include "forms/FormRequest.h"

#include <span>

#include "clienttools/TrnUID.h"
#include "diagnostics/LogIfFailed.h"
#include "forms/EnumToString.h"
#include "forms/EstimateForm.h"
#include "forms/FormParts.h"
#include "forms/InvoiceForm.h"
#include "forms/StatementForm.h"
#include "host/Services.h"
#include "platform/Bstr.h"
#include "platform/ComError.h"

namespace {

constexpr char kBuildXMLPrefix[] = "Parcelon:CNA_Form::BuildXML(short, BSTR*)";
constexpr char kLXOBFormPrefix[] = "Parcelon:CNA_Form::BuildLXOBFormXML";
constexpr char kAttachmentsPrefix[] = "Parcelon:CNA_Form::AddAttachmentsInfo(XMLBuilder&)";
constexpr char kServicesPrefix[] =
    "Parcelon:CNA_Form::AddServiceSubscriptionElements(XMLBuilder&, ICompanyFilePtr&)";
constexpr char kAuthIDPrefix[] = "Parcelon:CNA_Form::ExtractCompanyAuthID()";
constexpr char kCompanyUIDPrefix[] = "Parcelon:CNA_Form::RetreiveCompanyUID(OLAString*)";
constexpr char kCompanyFilePrefix[] = "Parcelon:CNA_Form::GetCurrentCompanyFilePtr(ICompanyFilePtr&)";

// The builder's start: the session inserts the text two levels below its root.
constexpr uint32_t kRequestDepth = 2;
constexpr uint64_t kRequestCapacity = 4096;

// ---- Reading the form's properties ---------------------------------------------------------

using TextGetter = HRESULT (STDMETHODCALLTYPE INA_Form7::*)(BSTR*);
using BoolGetter = HRESULT (STDMETHODCALLTYPE INA_Form7::*)(VARIANT_BOOL*);

// A property of the form; a failed read raises its HRESULT.
Bstr ReadText(INA_Form7* form, TextGetter get) {
  Bstr value;
  ThrowIfFailed((form->*get)(value.Out()), &IidOf<INA_Form7>());
  return value;
}

template <class Value, class Interface>
Value Read(INA_Form7* form, HRESULT (STDMETHODCALLTYPE Interface::*get)(Value*)) {
  Value value{};
  ThrowIfFailed((form->*get)(&value), &IidOf<INA_Form7>());
  return value;
}

// A text element from a text property: always written, or only when the property is not empty.
enum class Presence { kAlways, kWhenSet };
struct TextField {
  const char* element;
  TextGetter get;
  Presence presence;
};

void AddTextFields(XMLBuilder& builder, INA_Form7* form, std::span<const TextField> fields) {
  for (const TextField& field : fields) {
    const Bstr value = ReadText(form, field.get);
    if (field.presence == Presence::kAlways || !value.Empty())
      builder.AddElement(field.element, value.Get());
  }
}

struct BoolField {
  const char* element;
  BoolGetter get;
};

void AddBoolFields(XMLBuilder& builder, INA_Form7* form, std::span<const BoolField> fields) {
  for (const BoolField& field : fields) builder.AddBoolElement(field.element, Read<VARIANT_BOOL>(form, field.get));
}

constexpr TextField kEMailFields[] = {
    {"EMailFrom", &INA_Form::get_From, Presence::kAlways},
    {"EMailTo", &INA_Form::get_To, Presence::kAlways},
    {"EMailCc", &INA_Form::get_Cc, Presence::kWhenSet},
    {"EMailBcc", &INA_Form::get_Bcc, Presence::kWhenSet},
    {"EMailReplyTo", &INA_Form::get_ReplyTo, Presence::kWhenSet},
    {"EMailSubject", &INA_Form::get_Subject, Presence::kAlways},
    {"EMailText", &INA_Form::get_Text, Presence::kAlways},
};

constexpr BoolField kAllowFields[] = {
    {"AllowPayment", &INA_Form::get_Pay},
    {"AllowPosting", &INA_Form::get_Post},
};

constexpr TextField kFaxSenderFields[] = {
    {"CompanyName", &INA_Form::get_Fax_FromCompanyName, Presence::kWhenSet},
    {"Fax", &INA_Form::get_Fax_FromFaxNumber, Presence::kWhenSet},
    {"Phone", &INA_Form::get_Fax_FromTelephoneNumber, Presence::kWhenSet},
};

constexpr TextField kFaxRecipientFields[] = {
    {"CompanyName", &INA_Form::get_Fax_ToCompanyName, Presence::kWhenSet},
    {"Name", &INA_Form::get_Fax_ToRecipientName, Presence::kWhenSet},
    {"Fax", &INA_Form::get_Fax_ToFaxNumber, Presence::kAlways},
};

constexpr TextField kPaperMailFromFields[] = {
    {"Attention", &INA_Form5::get_PaperMail_FromAttention, Presence::kWhenSet},
    {"AddresseeName", &INA_Form5::get_PaperMail_FromAddresseeName, Presence::kAlways},
    {"Addr1", &INA_Form5::get_PaperMail_FromStreetAddress1, Presence::kAlways},
    {"Addr2", &INA_Form5::get_PaperMail_FromStreetAddress2, Presence::kWhenSet},
    {"City", &INA_Form5::get_PaperMail_FromCity, Presence::kAlways},
    {"State", &INA_Form5::get_PaperMail_FromState, Presence::kAlways},
    {"PostalCode", &INA_Form5::get_PaperMail_FromPostalCode, Presence::kAlways},
    {"Country", &INA_Form5::get_PaperMail_FromCountry, Presence::kAlways},
};

constexpr TextField kPaperMailToFields[] = {
    {"Attention", &INA_Form5::get_PaperMail_ToAttention, Presence::kWhenSet},
    {"AddresseeName", &INA_Form5::get_PaperMail_ToAddresseeName, Presence::kAlways},
    {"Addr1", &INA_Form5::get_PaperMail_ToStreetAddress1, Presence::kAlways},
    {"Addr2", &INA_Form5::get_PaperMail_ToStreetAddress2, Presence::kWhenSet},
    {"City", &INA_Form5::get_PaperMail_ToCity, Presence::kAlways},
    {"State", &INA_Form5::get_PaperMail_ToState, Presence::kAlways},
    {"PostalCode", &INA_Form5::get_PaperMail_ToPostalCode, Presence::kAlways},
    {"Country", &INA_Form5::get_PaperMail_ToCountry, Presence::kAlways},
};

constexpr TextField kCoverLetterField[] = {
    {"CoverLetter", &INA_Form5::get_CoverLetter, Presence::kWhenSet},
};

constexpr BoolField kPaperMailOptions[] = {
    {"IsSample", &INA_Form5::get_IsSample},
    {"UseColor", &INA_Form5::get_UseColor},
};

// The e-mail header of a non-host document: every field, set or not.
constexpr TextField kEMailHeaderFields[] = {
    {"EMailFrom", &INA_Form::get_From, Presence::kAlways},
    {"EMailTo", &INA_Form::get_To, Presence::kAlways},
    {"EMailCc", &INA_Form::get_Cc, Presence::kAlways},
    {"EMailBcc", &INA_Form::get_Bcc, Presence::kAlways},
    {"EMailReplyTo", &INA_Form::get_ReplyTo, Presence::kAlways},
    {"EMailSubject", &INA_Form::get_Subject, Presence::kAlways},
};

// ---- The request aggregates of the host forms ----------------------------------------------

enum class Delivery { kEMail, kFax, kPaperMail };

struct RequestKind {
  NAFormType formType;
  NASendType sendMethod;
  const char* aggregate;
  Delivery delivery;
  const char* formFailure;  // logged when the form aggregate cannot be built
};

constexpr RequestKind kRequestKinds[] = {
    {naftINVOICE, nastEMAIL, "InvoiceEMailRq", Delivery::kEMail,
     "Failed to build invoice form aggregate XML for the invoice email."},
    {naftINVOICE, nastPAPER_MAIL, "InvoicePaperMailRq", Delivery::kPaperMail,
     "Failed to build invoice form aggregate XML for the invoice paper mail."},
    {naftINVOICE, nastFAX, "InvoiceFaxRq", Delivery::kFax,
     "Failed to build invoice form aggregate XML for the invoice fax."},
    {naftESTIMATE, nastEMAIL, "EstimateEMailRq", Delivery::kEMail,
     "Failed to build estimate form aggregate XML for the estimate email"},
    {naftESTIMATE, nastFAX, "EstimateFaxRq", Delivery::kFax,
     "Failed to build estimate form aggregate XML for the estimate fax."},
    {naftSTATEMENT, nastEMAIL, "StatementEMailRq", Delivery::kEMail,
     "Failed to build statement form for the Email."},
    {naftSTATEMENT, nastFAX, "StatementFaxRq", Delivery::kFax,
     "Failed to build statement form for the Fax."},
};

// The request aggregate for a form type and send method; null for a combination that has none.
const RequestKind* FindRequestKind(NAFormType formType, NASendType sendMethod) {
  for (const RequestKind& kind : kRequestKinds)
    if (kind.formType == formType && kind.sendMethod == sendMethod) return &kind;
  return nullptr;
}

// The services whose subscription status every e-mailed or paper-mailed request reports.
struct ServiceName {
  const char* text;
  const OLECHAR* wide;
};
constexpr ServiceName kServiceNames[] = {
    {"lxob1.lxn", PARCELON_OLESTR("lxob1.lxn")},
    {"lxob2.lxn", PARCELON_OLESTR("lxob2.lxn")},
    {"lxobpay.lxn", PARCELON_OLESTR("lxobpay.lxn")},
    {"lxobpaper.lxn", PARCELON_OLESTR("lxobpaper.lxn")},
};

// The statement's header values that the form holds.
StatementValues StatementValuesOf(INA_Form7* form) {
  StatementValues values;
  values.statementID = Read<LONG>(form, &INA_Form3::get_StatementID);
  values.statementDate = Read<DATE>(form, &INA_Form3::get_StatementDate);
  values.dueDate = Read<DATE>(form, &INA_Form3::get_StatementDueDate);
  values.fromDate = Read<DATE>(form, &INA_Form3::get_StatementFromDate);
  values.toDate = Read<DATE>(form, &INA_Form3::get_StatementToDate);
  values.amountDue = ReadText(form, &INA_Form3::get_StatementAmountDue);
  values.customerRecNum = Read<LONG>(form, &INA_Form3::get_StatementCustomerRecNum);
  return values;
}

// Opens `name` with the attribute "trnUID" set to a fresh identifier.
void OpenRequestAggregate(XMLBuilder& builder, XmlName name) {
  const OLAString attributes[] = {"trnUID", NewTrnUID(), ""};
  builder.OpenAggregateWithAttributes(name, attributes);
}

// Opens a message set with the attribute "version" set to "1".
void OpenMessageSet(XMLBuilder& builder, XmlName name) {
  const OLAString attributes[] = {"version", "1", ""};
  builder.OpenAggregateWithAttributes(name, attributes);
}

// The host's authentication tool.
HRESULT CreateAuthTool(INAAuthToolPtr& tool, const char* prefix) {
  RETURN_IF_FAILED_LOG(CoCreateInstance(parcelon::host::CLSID_NAAuthTool, nullptr, CLSCTX_INPROC_SERVER,
                                        IidOf<INAAuthTool>(), tool.ReleaseAndGetVoidAddress()),
                       prefix, "NAAuthTool.dll may be missing or unregistered.");
  return S_OK;
}

}  // namespace

namespace parcelon {

HRESULT BuildFormRequest(INA_Form7* form, BSTR* xml) {
  if (!xml) return E_POINTER;
  *xml = nullptr;
  if (!form) return E_POINTER;
  return Guarded([&] { return CFormRequest(form).BuildXML(xml); });
}

HRESULT GetCurrentCompanyFilePtr(ICompanyFilePtr& companyFile) {
  ILXApplicationPtr application;
  IAddInGoodiesPtr goodies;
  HRESULT hr = CoCreateInstance(host::CLSID_LXAddIn, nullptr, CLSCTX_INPROC_SERVER,
                                IidOf<ILXApplication>(), application.ReleaseAndGetVoidAddress());
  if (SUCCEEDED(hr)) hr = application->GetAddInGoodies(goodies.ReleaseAndGetAddressOf());
  RETURN_IF_FAILED_LOG(hr, kCompanyFilePrefix, "Failed to get add-in goodies from LX application.");
  RETURN_IF_FAILED_LOG(forms::Required(goodies)->GetCurrentCompanyFile(companyFile.ReleaseAndGetAddressOf()),
                       kCompanyFilePrefix,
                       "Failed to attach to current company from add-in goodies in LX.");
  forms::Required(companyFile);
  return S_OK;
}

}  // namespace parcelon

// ---- CFormRequest ----------------------------------------------------------------------------

HRESULT CFormRequest::BuildXML(BSTR* xml) {
  *xml = nullptr;
  XMLBuilder builder(kRequestDepth, kRequestCapacity);

  RETURN_IF_FAILED_LOG(parcelon::GetCurrentCompanyFilePtr(companyFile_), kBuildXMLPrefix,
                       "Failed to get company file ptr.");
  RETURN_IF_FAILED_LOG(RetreiveCompanyUID(&companyUID_), kBuildXMLPrefix,
                       "Failed while getting company UID.");
  if (FAILED(LOG_IF_FAILED(ExtractCompanyAuthID(), kBuildXMLPrefix,
                           "Couldn't get company ID.  Skipping...")))
    companyAuthID_.SetText("");

  const NAFormType formType = Read<NAFormType>(form_, &INA_Form5::get_FormType);
  const HRESULT hr = IsHostFormType(formType) ? BuildLXOBFormXML(builder)
                                              : CNonLXOBFormBuilder(form_, companyAuthID_).BuildXML(builder);
  RETURN_IF_FAILED_LOG(builder.GetXMLAsBSTR(xml), kBuildXMLPrefix, "Failed to write the form request.");
  return hr;
}

HRESULT CFormRequest::BuildLXOBFormXML(XMLBuilder& builder) {
  const NAFormType formType = Read<NAFormType>(form_, &INA_Form5::get_FormType);
  const NASendType sendMethod = Read<NASendType>(form_, &INA_Form::get_SendMethod);

  OpenMessageSet(builder, "LXNParcelonMsgsRq");
  const RequestKind* kind = FindRequestKind(formType, sendMethod);
  if (!kind) {
    // An estimate or statement by paper mail, or a form that is not delivered: no request.
    builder.CloseAggregate("LXNParcelonMsgsRq");
    return S_OK;
  }

  OpenRequestAggregate(builder, kind->aggregate);
  if (!companyAuthID_.IsEmpty()) builder.AddElement("AuthID", companyAuthID_);
  builder.AddElement("CompanyUID", companyUID_);
  switch (kind->delivery) {
    case Delivery::kEMail: AddEMailData(builder); break;
    case Delivery::kFax: AddFaxData(builder); break;
    case Delivery::kPaperMail: AddPaperMailData(builder); break;
  }
  RETURN_IF_FAILED_LOG(BuildFormAggregate(builder, formType), kLXOBFormPrefix, kind->formFailure);

  // Faxes carry neither the service status, nor the attachment description, nor "BatchSend".
  HRESULT hr = S_OK;
  if (kind->delivery != Delivery::kFax) {
    AddServiceSubscriptionElements(builder, companyFile_);
    hr = AddAttachmentsInfo(builder);
    if (kind->delivery == Delivery::kPaperMail) AddBoolFields(builder, form_, kPaperMailOptions);
    builder.AddBoolElement("BatchSend", Read<VARIANT_BOOL>(form_, &INA_Form5::get_BatchSend));
  }
  builder.CloseAggregate(kind->aggregate);
  builder.CloseAggregate("LXNParcelonMsgsRq");
  return hr;
}

void CFormRequest::AddEMailData(XMLBuilder& builder) {
  builder.OpenAggregate("EMailData");
  AddTextFields(builder, form_, kEMailFields);
  AddBoolFields(builder, form_, kAllowFields);
  builder.CloseAggregate("EMailData");
}

void CFormRequest::AddFaxData(XMLBuilder& builder) {
  builder.OpenAggregate("FaxData");
  bool anySender = false;
  for (const TextField& field : kFaxSenderFields) anySender = anySender || !ReadText(form_, field.get).Empty();
  if (anySender) {
    builder.OpenAggregate("SenderInfo");
    AddTextFields(builder, form_, kFaxSenderFields);
    builder.CloseAggregate("SenderInfo");
  }
  builder.OpenAggregate("RecipientInfo");
  AddTextFields(builder, form_, kFaxRecipientFields);
  builder.CloseAggregate("RecipientInfo");
  const Bstr note = ReadText(form_, &INA_Form::get_Text);
  if (!note.Empty()) builder.AddElement("Note", note.Get());
  builder.CloseAggregate("FaxData");
}

void CFormRequest::AddPaperMailData(XMLBuilder& builder) {
  builder.OpenAggregate("PaperMailData");
  builder.OpenAggregate("PaperMailFrom");
  AddTextFields(builder, form_, kPaperMailFromFields);
  builder.CloseAggregate("PaperMailFrom");
  builder.OpenAggregate("PaperMailTo");
  AddTextFields(builder, form_, kPaperMailToFields);
  builder.CloseAggregate("PaperMailTo");
  AddTextFields(builder, form_, kCoverLetterField);
  AddBoolFields(builder, form_, kAllowFields);
  builder.CloseAggregate("PaperMailData");
}

HRESULT CFormRequest::BuildFormAggregate(XMLBuilder& builder, NAFormType formType) {
  const LONG recNum = Read<LONG>(form_, &INA_Form::get_TransactionRecordNumber);
  switch (formType) {
    case naftINVOICE:
      return CInvoiceFormBuilder(companyFile_.Get(), recNum).BuildXML(builder);
    case naftESTIMATE:
      return CEstimateFormBuilder(companyFile_.Get(), recNum).BuildXML(builder);
    case naftSTATEMENT:
      return CStatementFormBuilder(companyFile_.Get(), StatementValuesOf(form_)).BuildXML(builder);
    default:
      return E_UNEXPECTED;  // only the host forms have a request aggregate
  }
}

HRESULT CFormRequest::AddServiceSubscriptionElements(XMLBuilder& builder, ICompanyFilePtr& companyFile) {
  ICompanyFile2Ptr companyFile2;
  RETURN_IF_FAILED_LOG(companyFile.As(companyFile2), kServicesPrefix,
                       "Failed to get ICompanyFile2 interface");
  ICompanyProfilePtr profile;
  RETURN_IF_FAILED_LOG(companyFile2->GetCompanyProfile(profile.ReleaseAndGetAddressOf()),
                       kServicesPrefix, "Failed to get company profile for company");
  IServiceSubscriptionStatusPtr subscriptions;
  RETURN_IF_FAILED_LOG(
      parcelon::forms::Required(profile)->GetServiceSubscriptionStatus(subscriptions.ReleaseAndGetAddressOf()),
      kServicesPrefix, "Failed to get service subscription status component from company profile");
  parcelon::forms::Required(subscriptions);

  for (const ServiceName& service : kServiceNames) {
    const Bstr name(service.wide);
    LONG status = 0;
    RETURN_IF_FAILED_LOG(subscriptions->GetStatus(name.Get(), &status), kServicesPrefix,
                         "Failed to get service subscription status");
    builder.OpenAggregate("ServiceStatusData");
    builder.AddElement("ServiceDesc", service.text);
    builder.AddLongElement("StatusValue", status);
    builder.CloseAggregate("ServiceStatusData");
  }
  return S_OK;
}

HRESULT CFormRequest::AddAttachmentsInfo(XMLBuilder& builder) {
  Bstr messageID;
  Bstr fileName;
  Bstr docType;
  if (FAILED(form_->get_MessageID(messageID.Out())) ||
      FAILED(form_->get_AttachmentFileName(fileName.Out())) ||
      FAILED(form_->get_DocType(docType.Out())))
    RETURN_HR_LOG(E_FAIL, kAttachmentsPrefix, "Missing required attachment info data");
  // Without an uploaded attachment there is nothing to describe.
  if (messageID.Empty() || fileName.Empty() || docType.Empty()) return S_OK;

  const NAFormType formType = Read<NAFormType>(form_, &INA_Form5::get_FormType);
  builder.OpenAggregate("Attachments");
  builder.AddElement("MsgID", messageID.Get());
  builder.OpenAggregate("AttachmentInfo");
  builder.AddElement("FileName", fileName.Get());
  builder.AddElement("FormType", DocumentTypeName(formType));
  builder.AddElement("DocType", docType.Get());
  builder.AddBoolElement("RemoveOnSend", Read<VARIANT_BOOL>(form_, &INA_Form5::get_RemoveAfterSend));
  builder.CloseAggregate("AttachmentInfo");
  builder.CloseAggregate("Attachments");
  return S_OK;
}

HRESULT CFormRequest::ExtractCompanyAuthID() {
  INAAuthToolPtr tool;
  RETURN_IF_FAILED(CreateAuthTool(tool, kAuthIDPrefix));
  Bstr authID;
  RETURN_IF_FAILED(parcelon::forms::Required(tool)->GetCompanyAuthID(authID.Out()));
  companyAuthID_.SetFromBSTR(authID.Get());
  return S_OK;
}

HRESULT CFormRequest::RetreiveCompanyUID(OLAString* companyUID) {
  INAAuthToolPtr tool;
  RETURN_IF_FAILED(CreateAuthTool(tool, kCompanyUIDPrefix));
  Bstr uid;
  RETURN_IF_FAILED(parcelon::forms::Required(tool)->GetCompanyUID(uid.Out()));
  companyUID->SetFromBSTR(uid.Get());
  return S_OK;
}

// ---- CNonLXOBFormBuilder --------------------------------------------------------------------

HRESULT CNonLXOBFormBuilder::BuildXML(XMLBuilder& builder) {
  const OLAString deleteOnSend[] = {"deleteOnSend", "yes", ""};
  const NAFormType formType = Read<NAFormType>(form_, &INA_Form5::get_FormType);

  OpenMessageSet(builder, "FormsMsgsRq");
  OpenRequestAggregate(builder, "FormsDeliveryRq");
  builder.AddElement("MessageID", ReadText(form_, &INA_Form5::get_MessageID).Get());
  builder.AddElement("CompanyAuthID", companyAuthID_);

  builder.OpenAggregateWithAttributes("FormsDeliveryData", deleteOnSend);
  builder.OpenAggregate("EMailHeader");
  AddTextFields(builder, form_, kEMailHeaderFields);
  builder.CloseAggregate("EMailHeader");
  builder.AddElement("CoverLetter", ReadText(form_, &INA_Form5::get_CoverLetter).Get());
  builder.OpenAggregateWithAttributes("AttachmentHeader", deleteOnSend);
  builder.AddElement("FileName", ReadText(form_, &INA_Form5::get_AttachmentFileName).Get());
  builder.AddElement("DocType", ReadText(form_, &INA_Form5::get_DocType).Get());
  builder.AddElement("FormType", DocumentTypeName(formType));
  builder.CloseAggregate("AttachmentHeader");
  builder.CloseAggregate("FormsDeliveryData");

  builder.AddIntElement("NumberOfAttachments", 1);
  builder.AddElement("Service", "EMAIL");
  builder.OpenAggregate("Source");
  builder.AddElement("Product", "Ledgerine");
  builder.CloseAggregate("Source");
  builder.CloseAggregate("FormsDeliveryRq");
  builder.CloseAggregate("FormsMsgsRq");
  return S_OK;
}
