// CNA_Forms, the coclass NA_Forms: the send session that the network adapter drives.
//
// The adapter adds one NA_Form per form, calls Initialize, and then runs pass after pass through
// the callbacks of INA_Base to INA_Base5, asking the session for everything one exchange needs
// (URL, content type, headers, body, document type, service identifier) and handing back the
// response headers and aggregates. Each pass carries at most one form: first, for a delivered form
// (e-mail, fax, paper mail), the upload of its PDF (send state 1), then the form request itself
// (send state 2). Send state 3 ends the send.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "component/ComObject.h"
#include "interfaces/ParcelonInterfaces.h"
#include "forms/PDFBuilder.h"
#include "platform/Bstr.h"
#include "upload/RecNumMap.h"

// The object is created as parcelon::CComObject<CNA_Forms> (alone) or inside an aggregate
// (component/ComObject.h), which supply IUnknown.
class CNA_Forms : public parcelon::CDispatchStub<INA_Forms2, INA_Base5>, public INA_Base5 {
 public:
  // The send states. A new session is in kNotStarted until Initialize.
  enum SendState : LONG {
    kNotStarted = 0,
    kAttachmentPass = 1,
    kFormPass = 2,
    kDone = 3,
  };

  // OnSynchCompleted after an attachment pass whose response gave the form no message identifier.
  static constexpr HRESULT kNoAttachmentMessageID = HRESULT(0x8004910FL);

  static HRESULT CreateInstance(REFIID riid, void** ppv) {
    return parcelon::CreateComObject<CNA_Forms>(riid, ppv);
  }

  // The interface `riid` of this object, not yet counted; null when it has none.
  void* FindInterface(REFIID riid);

  SendState State() const { return state_; }

  // INA_Forms, INA_Forms2
  HRESULT STDMETHODCALLTYPE AddForm(INA_Form** pForm) override;
  HRESULT STDMETHODCALLTYPE RemoveAllForms() override;
  // Also INA_Base::OnSynchCompleted.
  HRESULT STDMETHODCALLTYPE OnSynchCompleted() override;
  PARCELON_PROPERTY(VARIANT_BOOL, ForceNewCompany, forceNewCompany_)
  PARCELON_PROPERTY(VARIANT_BOOL, DoAllCustomers, doAllCustomers_)
  PARCELON_PROPERTY(NAUploadScope, UploadScope, uploadScope_)

  // INA_Base
  HRESULT STDMETHODCALLTYPE BuildXML(short indentLevel, BSTR* pXML) override;
  HRESULT STDMETHODCALLTYPE get_LoginType(NALoginType* pLoginType) override;
  HRESULT STDMETHODCALLTYPE IsSendMethod() override;

  // INA_Base2
  HRESULT STDMETHODCALLTYPE get_DTD_ID(BSTR* pDtdIdToUse) override;
  HRESULT STDMETHODCALLTYPE get_DTD_Version(BSTR* pDtdVersionToUse) override;
  HRESULT STDMETHODCALLTYPE get_IsAnotherSynchNeeded(VARIANT_BOOL* pDoItAgain) override;
  HRESULT STDMETHODCALLTYPE get_ResponseTypesToParse(BSTR* pResponseTypes) override;
  HRESULT STDMETHODCALLTYPE ParseResponse(IUnknown* pIXMLDOMNode) override;
  HRESULT STDMETHODCALLTYPE get_ServiceID(BSTR* pServiceID) override;

  // INA_Base3
  HRESULT STDMETHODCALLTYPE Initialize() override;
  HRESULT STDMETHODCALLTYPE BuildData(BYTE** pData) override;
  HRESULT STDMETHODCALLTYPE get_DataSize(LONG* pVal) override;
  HRESULT STDMETHODCALLTYPE get_URL(BSTR* pVal) override;
  HRESULT STDMETHODCALLTYPE get_ContentType(BSTR* pVal) override;
  HRESULT STDMETHODCALLTYPE get_RequestHeaderParams(BSTR* pVal) override;
  HRESULT STDMETHODCALLTYPE get_NumResponseHeaderParams(short* pVal) override;
  HRESULT STDMETHODCALLTYPE get_ResponseHeaderParamName(short index, BSTR* pVal) override;
  HRESULT STDMETHODCALLTYPE SetResponseHeaderParamValue(BSTR name, BSTR value) override;
  HRESULT STDMETHODCALLTYPE get_XMLDocType(BSTR* pVal) override;

  // INA_Base4
  HRESULT STDMETHODCALLTYPE put_AuthParams(BSTR ticketID, BSTR authid) override;

  // INA_Base5
  HRESULT STDMETHODCALLTYPE get_TxEParams(BSTR* pSubject, BSTR* pReplyEmailAddress,
                                          BSTR* pEmailContent, BSTR* pToEmailAddress,
                                          BSTR* pCCEmailAddress, BSTR* pBCCEmailAddress,
                                          BSTR* pAttachedFiles) override;

 protected:
  CNA_Forms() = default;
  ~CNA_Forms() = default;

 private:
  // The current form's type and send method. Without a current form they read as a form that
  // leaves them unset: an invoice, sent by no method.
  HRESULT CurrentFormType(NAFormType& type) const;
  HRESULT CurrentSendMethod(NASendType& method) const;
  // Reads a string property of the current form; E_UNEXPECTED when no pass has taken a form.
  using StringGetter = HRESULT (STDMETHODCALLTYPE INA_Form7::*)(BSTR*);
  HRESULT ReadCurrentForm(StringGetter getter, Bstr& value) const;
  HRESULT CompleteFormPass(bool uploadAccepted);

  // The company data upload's steps.
  // Removes every upload-time stamp when the switch "NetworkAdapter.RemoveUploadTimeAttrs" or
  // ForceNewCompany asks for it; the switch also shows a warning that it is still on.
  HRESULT PossiblyDeleteAllUploadTimeAttributes();
  HRESULT IsDataUploadDue(bool& due);
  HRESULT BuildDataMsgSet(XMLBuilder& builder);
  // After an accepted upload: stamps the records it carried with the time it was built, and
  // stores that time plus a second as the last client upload time.
  HRESULT RecordAcceptedUpload();
  // Forgets the upload of the pass before and whether it was accepted; every pass's request
  // building (BuildXML, BuildData) begins with it.
  void StartPass();

  std::vector<ComPtr<INA_Form7>> forms_;
  VARIANT_BOOL forceNewCompany_ = VARIANT_FALSE;
  VARIANT_BOOL doAllCustomers_ = VARIANT_FALSE;
  NAUploadScope uploadScope_ = nausCHECK_ALL_CUSTOMERJOBS;
  ComPtr<INA_Form7> currentForm_;
  // Index in forms_ of the current pass's form; the pass after it takes the next one.
  size_t cursor_ = 0;
  SendState state_ = kNotStarted;
  // The attachment pass's body, kept until the pass ends.
  CAttachmentData attachment_;
  Bstr ticket_;
  Bstr authid_;
  // Set when the response accepts a data upload; cleared when a pass begins and when it ends. It
  // counts only when this pass wrote an upload (uploadWritten_).
  bool dataUploadAccepted_ = false;
  // The form pass's request, cleared and written anew by every pass in the same memory.
  std::optional<XMLBuilder> request_;
  // The records of the data upload the last BuildXML wrote, with the marks saying which were sent;
  // uploadWritten_ tells whether this pass wrote one, uploadBuiltAt_ when (seconds since 1970).
  // Only BuildDataMsgSet changes them, and every pass begins by clearing uploadWritten_, so the
  // records stamped are always those of a request this pass wrote in full.
  CRecNumMap recNumMap_;
  bool uploadWritten_ = false;
  int64_t uploadBuiltAt_ = 0;
};
