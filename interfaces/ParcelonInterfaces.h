// The automation interfaces of the type library PARCELONLib, as C++ declarations with the slot
// order of the type library on both targets: the send session NA_Forms (INA_Forms, INA_Forms2 and
// the adapter callbacks INA_Base to INA_Base5) and the form NA_Form (INA_Form to INA_Form7).
//
// INA_Forms.. and INA_Form.. are dual interfaces (their slots follow those of IDispatch);
// INA_Base.. are custom interfaces (their slots follow those of IUnknown). Each interface derives
// from the one before it, so a later version's slots continue the earlier one's. Properties are
// get_X/put_X pairs in the order get, put; "long" of the type library is the 32-bit LONG.
#pragma once

#include <cstdint>

#include "platform/ComBase.h"
#include "platform/ComPtr.h"
#include "platform/Dispatch.h"

// ---- Enumerations ---------------------------------------------------------------------------
// 32-bit, as in the type library; every 32-bit value is a value of the type (a form type beyond
// the named ones is accepted and shown as "Unknown").

enum NATransactionType : int32_t {
  nattINVOICE = 0,
  nattESTIMATE = 1,
  nattSTATEMENT = 2,
};

enum NASendType : int32_t {
  nastEMAIL = 0,
  nastFAX = 1,
  nastNONE = 2,
  nastDELETE = 3,
  nastVOID = 4,
  nastPENDING = 5,
  nastPAPER_MAIL = 6,
};

enum NAFormType : int32_t {
  naftNON_LX = 0,
  naftINVOICE = 1,
  naftESTIMATE = 2,
  naftSTATEMENT = 3,
  naftPURCHASE_ORDER = 4,
  naftSALES_ORDER = 5,
  naftSALES_RECEIPT = 6,
  naftCREDIT_MEMO = 7,
  naftREPORT = 8,
  naftTIMESHEET = 9,
  naftBILLPAY_STUB = 10,
  naftPAYCHECK_STUB = 11,
};

// nausFULL shares its value with nausCHECK_ALL_CUSTOMERJOBS; the published type library has it so.
enum NAUploadScope : int32_t {
  nausTXN_TARGETED = 1,
  nausCHECK_ALL_CUSTOMERJOBS = 2,
  nausFULL = 2,
};

enum NALoginType : int32_t {
  naltSTANDARDLOGIN = 0,
  naltANONYMOUSLOGIN = 1,
  naltENSURELOGINONLY = 2,
};

// ---- NA_Form: one form to send --------------------------------------------------------------

struct INA_Form : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_To(BSTR* pVal) = 0;                             // 1
  virtual HRESULT STDMETHODCALLTYPE put_To(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Cc(BSTR* pVal) = 0;                             // 2
  virtual HRESULT STDMETHODCALLTYPE put_Cc(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Bcc(BSTR* pVal) = 0;                            // 3
  virtual HRESULT STDMETHODCALLTYPE put_Bcc(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_From(BSTR* pVal) = 0;                           // 4
  virtual HRESULT STDMETHODCALLTYPE put_From(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReplyTo(BSTR* pVal) = 0;                        // 5
  virtual HRESULT STDMETHODCALLTYPE put_ReplyTo(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Subject(BSTR* pVal) = 0;                        // 6
  virtual HRESULT STDMETHODCALLTYPE put_Subject(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Text(BSTR* pVal) = 0;                           // 7
  virtual HRESULT STDMETHODCALLTYPE put_Text(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_TransactionType(NATransactionType* pVal) = 0;   // 8
  virtual HRESULT STDMETHODCALLTYPE put_TransactionType(NATransactionType newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_TransactionRecordNumber(LONG* pVal) = 0;        // 9
  virtual HRESULT STDMETHODCALLTYPE put_TransactionRecordNumber(LONG newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SendMethod(NASendType* pVal) = 0;               // 10
  virtual HRESULT STDMETHODCALLTYPE put_SendMethod(NASendType newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Pay(VARIANT_BOOL* pVal) = 0;                    // 11
  virtual HRESULT STDMETHODCALLTYPE put_Pay(VARIANT_BOOL newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE BuildXML(short indentLevel, BSTR* pXML) = 0;        // 12
  virtual HRESULT STDMETHODCALLTYPE get_Post(VARIANT_BOOL* pVal) = 0;                   // 13
  virtual HRESULT STDMETHODCALLTYPE put_Post(VARIANT_BOOL newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Fax_FromCompanyName(BSTR* pVal) = 0;            // 14
  virtual HRESULT STDMETHODCALLTYPE put_Fax_FromCompanyName(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Fax_FromTelephoneNumber(BSTR* pVal) = 0;        // 15
  virtual HRESULT STDMETHODCALLTYPE put_Fax_FromTelephoneNumber(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Fax_FromFaxNumber(BSTR* pVal) = 0;              // 16
  virtual HRESULT STDMETHODCALLTYPE put_Fax_FromFaxNumber(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Fax_ToCompanyName(BSTR* pVal) = 0;              // 17
  virtual HRESULT STDMETHODCALLTYPE put_Fax_ToCompanyName(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Fax_ToRecipientName(BSTR* pVal) = 0;            // 18
  virtual HRESULT STDMETHODCALLTYPE put_Fax_ToRecipientName(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Fax_ToFaxNumber(BSTR* pVal) = 0;                // 19
  virtual HRESULT STDMETHODCALLTYPE put_Fax_ToFaxNumber(BSTR newVal) = 0;
};

// Statement data, put only.
struct INA_Form2 : INA_Form {
  // Appends one statement line; the seventh string is the line's rate.
  virtual HRESULT STDMETHODCALLTYPE put_StatementTxnItemView(                           // 20
      DATE date, BSTR txnDesc, BSTR amountStr, BSTR txnItemDesc, BSTR txnItemQty,
      BSTR txnRunningBal, BSTR txnItemRate) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_StatementStyleNumber(LONG newVal) = 0;          // 21
  virtual HRESULT STDMETHODCALLTYPE put_StatementCustomerRecNum(LONG newVal) = 0;       // 22
  virtual HRESULT STDMETHODCALLTYPE put_StatementAgedBalItem(BSTR newVal) = 0;          // 23
  virtual HRESULT STDMETHODCALLTYPE put_StatementDate(DATE newVal) = 0;                 // 24
  virtual HRESULT STDMETHODCALLTYPE put_StatementDueDate(DATE newVal) = 0;              // 25
  virtual HRESULT STDMETHODCALLTYPE put_StatementAmountDue(BSTR newVal) = 0;            // 26
  virtual HRESULT STDMETHODCALLTYPE put_StatementID(LONG newVal) = 0;                   // 27
};

// Statement data, get (and the statement period, get and put).
struct INA_Form3 : INA_Form2 {
  virtual HRESULT STDMETHODCALLTYPE get_StatementStyleNumber(LONG* pVal) = 0;           // 30
  virtual HRESULT STDMETHODCALLTYPE get_StatementCustomerRecNum(LONG* pVal) = 0;        // 31
  virtual HRESULT STDMETHODCALLTYPE get_StatementDate(DATE* pVal) = 0;                  // 32
  virtual HRESULT STDMETHODCALLTYPE get_StatementDueDate(DATE* pVal) = 0;               // 33
  virtual HRESULT STDMETHODCALLTYPE get_StatementAmountDue(BSTR* pVal) = 0;             // 34
  virtual HRESULT STDMETHODCALLTYPE get_StatementID(LONG* pVal) = 0;                    // 35
  virtual HRESULT STDMETHODCALLTYPE get_StatementFromDate(DATE* pVal) = 0;              // 36
  virtual HRESULT STDMETHODCALLTYPE put_StatementFromDate(DATE newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_StatementToDate(DATE* pVal) = 0;                // 37
  virtual HRESULT STDMETHODCALLTYPE put_StatementToDate(DATE newVal) = 0;
};

struct INA_Form4 : INA_Form3 {
  virtual HRESULT STDMETHODCALLTYPE get_PDFFileName(BSTR* pVal) = 0;                    // 38
  virtual HRESULT STDMETHODCALLTYPE put_PDFFileName(BSTR newVal) = 0;
};

struct INA_Form5 : INA_Form4 {
  virtual HRESULT STDMETHODCALLTYPE get_FormType(NAFormType* pVal) = 0;                 // 39
  virtual HRESULT STDMETHODCALLTYPE put_FormType(NAFormType newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DocType(BSTR* pVal) = 0;                        // 40
  virtual HRESULT STDMETHODCALLTYPE put_DocType(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AttachmentPath(BSTR* pVal) = 0;                 // 41
  virtual HRESULT STDMETHODCALLTYPE put_AttachmentPath(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AttachmentFileName(BSTR* pVal) = 0;             // 42
  virtual HRESULT STDMETHODCALLTYPE put_AttachmentFileName(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MessageID(BSTR* pVal) = 0;                      // 43
  virtual HRESULT STDMETHODCALLTYPE put_MessageID(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BatchSend(VARIANT_BOOL* pVal) = 0;              // 44
  virtual HRESULT STDMETHODCALLTYPE put_BatchSend(VARIANT_BOOL newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_RemoveAfterSend(VARIANT_BOOL* pVal) = 0;        // 45
  virtual HRESULT STDMETHODCALLTYPE put_RemoveAfterSend(VARIANT_BOOL newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToAttention(BSTR* pVal) = 0;          // 46
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToAttention(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromAttention(BSTR* pVal) = 0;        // 47
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromAttention(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToAddresseeName(BSTR* pVal) = 0;      // 48
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToAddresseeName(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromAddresseeName(BSTR* pVal) = 0;    // 49
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromAddresseeName(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToStreetAddress1(BSTR* pVal) = 0;     // 50
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToStreetAddress1(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromStreetAddress1(BSTR* pVal) = 0;   // 51
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromStreetAddress1(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToStreetAddress2(BSTR* pVal) = 0;     // 52
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToStreetAddress2(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromStreetAddress2(BSTR* pVal) = 0;   // 53
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromStreetAddress2(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToCity(BSTR* pVal) = 0;               // 54
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToCity(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromCity(BSTR* pVal) = 0;             // 55
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromCity(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToState(BSTR* pVal) = 0;              // 56
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToState(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromState(BSTR* pVal) = 0;            // 57
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromState(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToPostalCode(BSTR* pVal) = 0;         // 58
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToPostalCode(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromPostalCode(BSTR* pVal) = 0;       // 59
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromPostalCode(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_ToCountry(BSTR* pVal) = 0;            // 60
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_ToCountry(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PaperMail_FromCountry(BSTR* pVal) = 0;          // 61
  virtual HRESULT STDMETHODCALLTYPE put_PaperMail_FromCountry(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CoverLetter(BSTR* pVal) = 0;                    // 62
  virtual HRESULT STDMETHODCALLTYPE put_CoverLetter(BSTR newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsSample(VARIANT_BOOL* pVal) = 0;               // 63
  virtual HRESULT STDMETHODCALLTYPE put_IsSample(VARIANT_BOOL newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_UseColor(VARIANT_BOOL* pVal) = 0;               // 64
  virtual HRESULT STDMETHODCALLTYPE put_UseColor(VARIANT_BOOL newVal) = 0;
};

struct INA_Form6 : INA_Form5 {
  virtual HRESULT STDMETHODCALLTYPE get_SynchMultiple(VARIANT_BOOL* pVal) = 0;          // 65
  virtual HRESULT STDMETHODCALLTYPE put_SynchMultiple(VARIANT_BOOL newVal) = 0;
};

struct INA_Form7 : INA_Form6 {
  virtual HRESULT STDMETHODCALLTYPE get_AttachmentFileList(BSTR* pVal) = 0;             // 66
  virtual HRESULT STDMETHODCALLTYPE AddAttachmentFile(BSTR newValue) = 0;               // 67
  virtual HRESULT STDMETHODCALLTYPE ClearAttachmentFileList() = 0;                      // 68
};

// ---- NA_Forms: the send session -------------------------------------------------------------

struct INA_Forms : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE AddForm(INA_Form** pForm) = 0;                      // 1
  virtual HRESULT STDMETHODCALLTYPE RemoveAllForms() = 0;                               // 2
  virtual HRESULT STDMETHODCALLTYPE OnSynchCompleted() = 0;                             // 3
  virtual HRESULT STDMETHODCALLTYPE get_ForceNewCompany(VARIANT_BOOL* pVal) = 0;        // 4
  virtual HRESULT STDMETHODCALLTYPE put_ForceNewCompany(VARIANT_BOOL newVal) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DoAllCustomers(VARIANT_BOOL* pVal) = 0;         // 5
  virtual HRESULT STDMETHODCALLTYPE put_DoAllCustomers(VARIANT_BOOL newVal) = 0;
};

struct INA_Forms2 : INA_Forms {
  virtual HRESULT STDMETHODCALLTYPE get_UploadScope(NAUploadScope* pVal) = 0;           // 6
  virtual HRESULT STDMETHODCALLTYPE put_UploadScope(NAUploadScope newVal) = 0;
};

// The network adapter's callbacks, in its calling order within a pass.
struct INA_Base : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE BuildXML(short indentLevel, BSTR* pXML) = 0;        // 3
  virtual HRESULT STDMETHODCALLTYPE OnSynchCompleted() = 0;                             // 4
  virtual HRESULT STDMETHODCALLTYPE get_LoginType(NALoginType* pLoginType) = 0;         // 5
  // S_OK when the current form is delivered (e-mail, fax, paper mail), S_FALSE otherwise.
  virtual HRESULT STDMETHODCALLTYPE IsSendMethod() = 0;                                 // 6
};

struct INA_Base2 : INA_Base {
  virtual HRESULT STDMETHODCALLTYPE get_DTD_ID(BSTR* pDtdIdToUse) = 0;                  // 7
  virtual HRESULT STDMETHODCALLTYPE get_DTD_Version(BSTR* pDtdVersionToUse) = 0;        // 8
  virtual HRESULT STDMETHODCALLTYPE get_IsAnotherSynchNeeded(VARIANT_BOOL* pDoItAgain) = 0;  // 9
  virtual HRESULT STDMETHODCALLTYPE get_ResponseTypesToParse(BSTR* pResponseTypes) = 0;  // 10
  virtual HRESULT STDMETHODCALLTYPE ParseResponse(IUnknown* pIXMLDOMNode) = 0;          // 11
  virtual HRESULT STDMETHODCALLTYPE get_ServiceID(BSTR* pServiceID) = 0;                // 12
};

struct INA_Base3 : INA_Base2 {
  virtual HRESULT STDMETHODCALLTYPE Initialize() = 0;                                   // 13
  virtual HRESULT STDMETHODCALLTYPE BuildData(BYTE** pData) = 0;                        // 14
  virtual HRESULT STDMETHODCALLTYPE get_DataSize(LONG* pVal) = 0;                       // 15
  virtual HRESULT STDMETHODCALLTYPE get_URL(BSTR* pVal) = 0;                            // 16
  virtual HRESULT STDMETHODCALLTYPE get_ContentType(BSTR* pVal) = 0;                    // 17
  virtual HRESULT STDMETHODCALLTYPE get_RequestHeaderParams(BSTR* pVal) = 0;            // 18
  virtual HRESULT STDMETHODCALLTYPE get_NumResponseHeaderParams(short* pVal) = 0;       // 19
  virtual HRESULT STDMETHODCALLTYPE get_ResponseHeaderParamName(short index, BSTR* pVal) = 0;  // 20
  virtual HRESULT STDMETHODCALLTYPE SetResponseHeaderParamValue(BSTR name, BSTR value) = 0;    // 21
  virtual HRESULT STDMETHODCALLTYPE get_XMLDocType(BSTR* pVal) = 0;                     // 22
};

struct INA_Base4 : INA_Base3 {
  virtual HRESULT STDMETHODCALLTYPE put_AuthParams(BSTR ticketID, BSTR authid) = 0;     // 23
};

struct INA_Base5 : INA_Base4 {
  virtual HRESULT STDMETHODCALLTYPE get_TxEParams(                                      // 24
      BSTR* pSubject, BSTR* pReplyEmailAddress, BSTR* pEmailContent, BSTR* pToEmailAddress,
      BSTR* pCCEmailAddress, BSTR* pBCCEmailAddress, BSTR* pAttachedFiles) = 0;
};

// ---- Identifiers ----------------------------------------------------------------------------
// As published, braces included.

PARCELON_DECLARE_IID(INA_Form, "{37A2FC01-1BB5-11D4-A345-005004269401}")
PARCELON_DECLARE_IID(INA_Form2, "{E931D274-4E28-11D5-9094-00508BF6BC63}")
PARCELON_DECLARE_IID(INA_Form3, "{7F522D50-0ADE-11D6-A55A-0050DA0A536C}")
PARCELON_DECLARE_IID(INA_Form4, "{5C3D71D2-6A6E-46CE-B269-DD9C08EC3B60}")
PARCELON_DECLARE_IID(INA_Form5, "{65FF1C6F-81C0-4C49-BAFA-CE8700DE7AB0}")
PARCELON_DECLARE_IID(INA_Form6, "{588B9068-D360-45F7-93F9-6E6109F0BF77}")
PARCELON_DECLARE_IID(INA_Form7, "{809E6BAE-999D-4501-8B3E-341C1D2C64BC}")
PARCELON_DECLARE_IID(INA_Forms, "{37A2FBFF-1BB5-11D4-A345-005004269401}")
PARCELON_DECLARE_IID(INA_Forms2, "{4050B586-A4CE-4D21-95BD-9F1EF08804CB}")
PARCELON_DECLARE_IID(INA_Base, "{03CDB2B0-1B96-11D4-A345-005004269401}")
PARCELON_DECLARE_IID(INA_Base2, "{BF88BA74-72E4-4313-930B-A66D862B0982}")
PARCELON_DECLARE_IID(INA_Base3, "{DC1D15FD-932C-4BC2-BD52-B6FDD93050EB}")
PARCELON_DECLARE_IID(INA_Base4, "{CD278961-8815-41FF-AC1D-3BCAECDF4720}")
PARCELON_DECLARE_IID(INA_Base5, "{85DBD043-794A-4D24-8884-27E18AC6FA8E}")

// The type library PARCELONLib.
inline constexpr GUID LIBID_PARCELONLib =
    parcelon::GuidFromText("{37A2FBF3-1795-4679-94A3-A153F1A8BB54}");
// The send session.
inline constexpr CLSID CLSID_NA_Forms =
    parcelon::GuidFromText("{37A2FC00-1795-4679-94A3-A153F1A8BB54}");
// One form to send.
inline constexpr CLSID CLSID_NA_Form =
    parcelon::GuidFromText("{37A2FC02-1795-4679-94A3-A153F1A8BB54}");

using INA_FormPtr = ComPtr<INA_Form>;
using INA_Form7Ptr = ComPtr<INA_Form7>;
using INA_FormsPtr = ComPtr<INA_Forms>;
using INA_Forms2Ptr = ComPtr<INA_Forms2>;
using INA_Base5Ptr = ComPtr<INA_Base5>;
