// The form request: the text that a form object writes on BuildXML to ask the gateway to deliver
// one form. The form object calls one function:
//
//   HRESULT CNA_Form::BuildXML(short /*indentLevel*/, BSTR* pXML) {
//     return parcelon::BuildFormRequest(this, pXML);
//   }
//
// BuildFormRequest writes at indent level 2 whatever indent level the caller asks for, since the
// session inserts the text under its own root. It never throws. On success *xml holds the
// request. When the form's content aggregate or its attachment description fails, *xml still
// receives the text written so far together with the failure code (the session drops it, but
// must free it); when the company file or the company UID cannot be had, *xml is null.
//
// For a host form (invoice, estimate, statement) the request is one aggregate inside
// "LXNParcelonMsgsRq", chosen by form type and send method; for any other document it is a
// delivery request inside "FormsMsgsRq" (CNonLXOBFormBuilder).
#pragma once

#include "clienttools/OLAString.h"
#include "clienttools/XMLBuilder.h"
#include "interfaces/ParcelonInterfaces.h"
#include "host/CompanyFile.h"
#include "platform/ComBase.h"

namespace parcelon {

// The whole request of `form` as a new BSTR in *xml (see above).
HRESULT BuildFormRequest(INA_Form7* form, BSTR* xml);

// The open company file of the host, reached through the host's add-in object.
HRESULT GetCurrentCompanyFilePtr(ICompanyFilePtr& companyFile);

}  // namespace parcelon

// The build of one form's request: the form, the company file, and the company's identifiers
// with the maker's online services. Lives for one BuildXML call.
class CFormRequest {
 public:
  explicit CFormRequest(INA_Form7* form) : form_(form) {}

  // The whole request (see BuildFormRequest); may raise ComError for a failed property read.
  HRESULT BuildXML(BSTR* xml);
  // The host-form branch: "LXNParcelonMsgsRq" with the request aggregate of the form type and
  // send method, or empty for any other combination.
  HRESULT BuildLXOBFormXML(XMLBuilder& builder);
  // One "ServiceStatusData" per service of the company's subscriptions; failures are logged and
  // end the list, never the request.
  HRESULT AddServiceSubscriptionElements(XMLBuilder& builder, ICompanyFilePtr& companyFile);
  // "Attachments" with the message identifier of the uploaded attachment and its description,
  // written only when the message identifier, file name and document type are all set.
  HRESULT AddAttachmentsInfo(XMLBuilder& builder);
  // The company's auth ID through the host's authentication tool, kept for the build.
  HRESULT ExtractCompanyAuthID();
  // The company UID through the host's authentication tool.
  HRESULT RetreiveCompanyUID(OLAString* companyUID);

  const OLAString& CompanyAuthID() const { return companyAuthID_; }

 private:
  // The delivery data of each send method.
  void AddEMailData(XMLBuilder& builder);
  void AddFaxData(XMLBuilder& builder);
  void AddPaperMailData(XMLBuilder& builder);
  // The form aggregate of the form's type, built from its transaction (or statement data).
  HRESULT BuildFormAggregate(XMLBuilder& builder, NAFormType formType);

  INA_Form7* form_;
  ICompanyFilePtr companyFile_;
  OLAString companyAuthID_;
  OLAString companyUID_;
};

// The delivery request of a document that is not one of the host's forms: "FormsMsgsRq" with one
// "FormsDeliveryRq" that e-mails the uploaded attachment.
class CNonLXOBFormBuilder {
 public:
  CNonLXOBFormBuilder(INA_Form7* form, const OLAString& companyAuthID)
      : form_(form), companyAuthID_(companyAuthID) {}

  // May raise ComError for a failed property read.
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  INA_Form7* form_;
  const OLAString& companyAuthID_;
};
