// CNA_Form, the coclass NA_Form: one form to send. A bag of delivery properties (addresses, texts,
// fax and paper-mail data, statement data, attachment data) that the network adapter fills and
// the session reads during the passes, with one operation of substance, BuildXML, which writes the
// form's delivery request.
#pragma once

#include <string>
#include <vector>

#include "component/ComObject.h"
#include "component/ParcelonInterfaces.h"
#include "forms/StatementForm.h"
#include "platform/Bstr.h"

// A property's get_/put_ pair over a field of the form; the field of a BSTR property is a Bstr.
#define NA_FORM_GETTER(Type, Name, field) \
  HRESULT STDMETHODCALLTYPE get_##Name(Type* pVal) override { return ReadProperty(field, pVal); }
#define NA_FORM_PUTTER(Type, Name, field)                      \
  HRESULT STDMETHODCALLTYPE put_##Name(Type newVal) override { \
    return WriteProperty(field, newVal);                       \
  }
#define NA_FORM_PROPERTY(Type, Name, field) \
  NA_FORM_GETTER(Type, Name, field)         \
  NA_FORM_PUTTER(Type, Name, field)

class CNA_Form final : public parcelon::CDispatchStub<INA_Form7>,
                       private parcelon::CRefCounted<CNA_Form> {
 public:
  static HRESULT CreateInstance(REFIID riid, void** ppv) {
    return parcelon::CreateComObject<CNA_Form>(riid, ppv);
  }

  // The statement lines in the order they were put.
  const std::vector<StatementTxnItemView>& StatementLines() const { return statementLines_; }

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return AddRefImpl(); }
  ULONG STDMETHODCALLTYPE Release() override { return ReleaseImpl(); }

  // INA_Form
  NA_FORM_PROPERTY(BSTR, To, to_)
  NA_FORM_PROPERTY(BSTR, Cc, cc_)
  NA_FORM_PROPERTY(BSTR, Bcc, bcc_)
  NA_FORM_PROPERTY(BSTR, From, from_)
  NA_FORM_PROPERTY(BSTR, ReplyTo, replyTo_)
  NA_FORM_PROPERTY(BSTR, Subject, subject_)
  NA_FORM_PROPERTY(BSTR, Text, text_)
  NA_FORM_PROPERTY(NATransactionType, TransactionType, transactionType_)
  NA_FORM_PROPERTY(LONG, TransactionRecordNumber, transactionRecordNumber_)
  NA_FORM_PROPERTY(NASendType, SendMethod, sendMethod_)
  NA_FORM_PROPERTY(VARIANT_BOOL, Pay, pay_)
  HRESULT STDMETHODCALLTYPE BuildXML(short indentLevel, BSTR* pXML) override;
  NA_FORM_PROPERTY(VARIANT_BOOL, Post, post_)
  NA_FORM_PROPERTY(BSTR, Fax_FromCompanyName, faxFromCompanyName_)
  NA_FORM_PROPERTY(BSTR, Fax_FromTelephoneNumber, faxFromTelephoneNumber_)
  NA_FORM_PROPERTY(BSTR, Fax_FromFaxNumber, faxFromFaxNumber_)
  NA_FORM_PROPERTY(BSTR, Fax_ToCompanyName, faxToCompanyName_)
  NA_FORM_PROPERTY(BSTR, Fax_ToRecipientName, faxToRecipientName_)
  NA_FORM_PROPERTY(BSTR, Fax_ToFaxNumber, faxToFaxNumber_)

  // INA_Form2
  HRESULT STDMETHODCALLTYPE put_StatementTxnItemView(DATE date, BSTR txnDesc, BSTR amountStr,
                                                     BSTR txnItemDesc, BSTR txnItemQty,
                                                     BSTR txnRunningBal, BSTR txnItemRate) override;
  NA_FORM_PUTTER(LONG, StatementStyleNumber, statementStyleNumber_)
  NA_FORM_PUTTER(LONG, StatementCustomerRecNum, statementCustomerRecNum_)
  NA_FORM_PUTTER(BSTR, StatementAgedBalItem, statementAgedBalItem_)
  NA_FORM_PUTTER(DATE, StatementDate, statementDate_)
  NA_FORM_PUTTER(DATE, StatementDueDate, statementDueDate_)
  NA_FORM_PUTTER(BSTR, StatementAmountDue, statementAmountDue_)
  NA_FORM_PUTTER(LONG, StatementID, statementID_)

  // INA_Form3
  NA_FORM_GETTER(LONG, StatementStyleNumber, statementStyleNumber_)
  NA_FORM_GETTER(LONG, StatementCustomerRecNum, statementCustomerRecNum_)
  NA_FORM_GETTER(DATE, StatementDate, statementDate_)
  NA_FORM_GETTER(DATE, StatementDueDate, statementDueDate_)
  NA_FORM_GETTER(BSTR, StatementAmountDue, statementAmountDue_)
  NA_FORM_GETTER(LONG, StatementID, statementID_)
  NA_FORM_PROPERTY(DATE, StatementFromDate, statementFromDate_)
  NA_FORM_PROPERTY(DATE, StatementToDate, statementToDate_)

  // INA_Form4
  NA_FORM_PROPERTY(BSTR, PDFFileName, pdfFileName_)

  // INA_Form5
  NA_FORM_PROPERTY(NAFormType, FormType, formType_)
  NA_FORM_PROPERTY(BSTR, DocType, docType_)
  NA_FORM_PROPERTY(BSTR, AttachmentPath, attachmentPath_)
  NA_FORM_PROPERTY(BSTR, AttachmentFileName, attachmentFileName_)
  NA_FORM_PROPERTY(BSTR, MessageID, messageID_)
  NA_FORM_PROPERTY(VARIANT_BOOL, BatchSend, batchSend_)
  NA_FORM_PROPERTY(VARIANT_BOOL, RemoveAfterSend, removeAfterSend_)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToAttention, paperMailTo_.attention)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromAttention, paperMailFrom_.attention)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToAddresseeName, paperMailTo_.addresseeName)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromAddresseeName, paperMailFrom_.addresseeName)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToStreetAddress1, paperMailTo_.streetAddress1)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromStreetAddress1, paperMailFrom_.streetAddress1)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToStreetAddress2, paperMailTo_.streetAddress2)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromStreetAddress2, paperMailFrom_.streetAddress2)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToCity, paperMailTo_.city)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromCity, paperMailFrom_.city)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToState, paperMailTo_.state)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromState, paperMailFrom_.state)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToPostalCode, paperMailTo_.postalCode)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromPostalCode, paperMailFrom_.postalCode)
  NA_FORM_PROPERTY(BSTR, PaperMail_ToCountry, paperMailTo_.country)
  NA_FORM_PROPERTY(BSTR, PaperMail_FromCountry, paperMailFrom_.country)
  NA_FORM_PROPERTY(BSTR, CoverLetter, coverLetter_)
  NA_FORM_PROPERTY(VARIANT_BOOL, IsSample, isSample_)
  NA_FORM_PROPERTY(VARIANT_BOOL, UseColor, useColor_)

  // INA_Form6
  NA_FORM_PROPERTY(VARIANT_BOOL, SynchMultiple, synchMultiple_)

  // INA_Form7
  HRESULT STDMETHODCALLTYPE get_AttachmentFileList(BSTR* pVal) override;
  HRESULT STDMETHODCALLTYPE AddAttachmentFile(BSTR newValue) override;
  HRESULT STDMETHODCALLTYPE ClearAttachmentFileList() override;

 private:
  friend class parcelon::CRefCounted<CNA_Form>;
  template <class T>
  friend HRESULT parcelon::CreateComObject(REFIID, void**);

  struct PaperMailAddress {
    Bstr attention;
    Bstr addresseeName;
    Bstr streetAddress1;
    Bstr streetAddress2;
    Bstr city;
    Bstr state;
    Bstr postalCode;
    Bstr country;
  };

  CNA_Form() = default;
  ~CNA_Form() = default;

  static HRESULT ReadProperty(const Bstr& field, BSTR* out) {
    return parcelon::CopyBstr(field.Get(), out);
  }
  static HRESULT WriteProperty(Bstr& field, BSTR value);
  template <class T>
  static HRESULT ReadProperty(const T& field, T* out) {
    if (!out) return E_POINTER;
    *out = field;
    return S_OK;
  }
  template <class T>
  static HRESULT WriteProperty(T& field, T value) {
    field = value;
    return S_OK;
  }

  // The form's own attachment when both its path and its file name are set: the path made to
  // end with "\" (written back) and the file name. False when either is empty.
  bool OwnAttachmentPath(std::basic_string<OLECHAR>& path);

  Bstr to_, cc_, bcc_, from_, replyTo_, subject_, text_;
  NATransactionType transactionType_ = nattINVOICE;
  LONG transactionRecordNumber_ = 0;
  NASendType sendMethod_ = nastNONE;
  VARIANT_BOOL pay_ = VARIANT_FALSE;
  VARIANT_BOOL post_ = VARIANT_FALSE;
  Bstr faxFromCompanyName_, faxFromTelephoneNumber_, faxFromFaxNumber_;
  Bstr faxToCompanyName_, faxToRecipientName_, faxToFaxNumber_;

  std::vector<StatementTxnItemView> statementLines_;
  LONG statementStyleNumber_ = 0;
  LONG statementCustomerRecNum_ = 0;
  Bstr statementAgedBalItem_;
  DATE statementDate_ = 0;
  DATE statementDueDate_ = 0;
  Bstr statementAmountDue_;
  LONG statementID_ = 0;
  DATE statementFromDate_ = 0;
  DATE statementToDate_ = 0;

  Bstr pdfFileName_;

  NAFormType formType_ = naftINVOICE;
  Bstr docType_, attachmentPath_, attachmentFileName_, messageID_;
  VARIANT_BOOL batchSend_ = VARIANT_FALSE;
  VARIANT_BOOL removeAfterSend_ = VARIANT_FALSE;
  PaperMailAddress paperMailTo_, paperMailFrom_;
  Bstr coverLetter_;
  VARIANT_BOOL isSample_ = VARIANT_FALSE;
  VARIANT_BOOL useColor_ = VARIANT_FALSE;

  VARIANT_BOOL synchMultiple_ = VARIANT_FALSE;

  std::vector<Bstr> attachmentFiles_;
};

#undef NA_FORM_PROPERTY
#undef NA_FORM_PUTTER
#undef NA_FORM_GETTER
