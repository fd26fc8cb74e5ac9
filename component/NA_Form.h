// CNA_Form, the coclass NA_Form: one form to send. A bag of delivery properties (addresses, texts,
// fax and paper-mail data, statement data, attachment data) that the network adapter fills and
// the session reads during the passes, with one operation of substance, BuildXML, which writes the
// form's delivery request.
#pragma once

#include <string>
#include <vector>

#include "component/ComObject.h"
#include "interfaces/ParcelonInterfaces.h"
#include "forms/StatementForm.h"
#include "platform/Bstr.h"

// Created as parcelon::CComObject<CNA_Form> or inside an aggregate (component/ComObject.h),
// which supply IUnknown.
class CNA_Form : public parcelon::CDispatchStub<INA_Form7> {
 public:
  static HRESULT CreateInstance(REFIID riid, void** ppv) {
    return parcelon::CreateComObject<CNA_Form>(riid, ppv);
  }

  // The interface `riid` of this object, not yet counted; null when it has none.
  void* FindInterface(REFIID riid);

  // The statement lines in the order they were put.
  const std::vector<StatementTxnItemView>& StatementLines() const { return statementLines_; }

  // INA_Form
  PARCELON_PROPERTY(BSTR, To, to_)
  PARCELON_PROPERTY(BSTR, Cc, cc_)
  PARCELON_PROPERTY(BSTR, Bcc, bcc_)
  PARCELON_PROPERTY(BSTR, From, from_)
  PARCELON_PROPERTY(BSTR, ReplyTo, replyTo_)
  PARCELON_PROPERTY(BSTR, Subject, subject_)
  PARCELON_PROPERTY(BSTR, Text, text_)
  PARCELON_PROPERTY(NATransactionType, TransactionType, transactionType_)
  PARCELON_PROPERTY(LONG, TransactionRecordNumber, transactionRecordNumber_)
  PARCELON_PROPERTY(NASendType, SendMethod, sendMethod_)
  PARCELON_PROPERTY(VARIANT_BOOL, Pay, pay_)
  HRESULT STDMETHODCALLTYPE BuildXML(short indentLevel, BSTR* pXML) override;
  PARCELON_PROPERTY(VARIANT_BOOL, Post, post_)
  PARCELON_PROPERTY(BSTR, Fax_FromCompanyName, faxFromCompanyName_)
  PARCELON_PROPERTY(BSTR, Fax_FromTelephoneNumber, faxFromTelephoneNumber_)
  PARCELON_PROPERTY(BSTR, Fax_FromFaxNumber, faxFromFaxNumber_)
  PARCELON_PROPERTY(BSTR, Fax_ToCompanyName, faxToCompanyName_)
  PARCELON_PROPERTY(BSTR, Fax_ToRecipientName, faxToRecipientName_)
  PARCELON_PROPERTY(BSTR, Fax_ToFaxNumber, faxToFaxNumber_)

  // INA_Form2
  HRESULT STDMETHODCALLTYPE put_StatementTxnItemView(DATE date, BSTR txnDesc, BSTR amountStr,
                                                     BSTR txnItemDesc, BSTR txnItemQty,
                                                     BSTR txnRunningBal, BSTR txnItemRate) override;
  PARCELON_PUTTER(LONG, StatementStyleNumber, statementStyleNumber_)
  PARCELON_PUTTER(LONG, StatementCustomerRecNum, statementCustomerRecNum_)
  PARCELON_PUTTER(BSTR, StatementAgedBalItem, statementAgedBalItem_)
  PARCELON_PUTTER(DATE, StatementDate, statementDate_)
  PARCELON_PUTTER(DATE, StatementDueDate, statementDueDate_)
  PARCELON_PUTTER(BSTR, StatementAmountDue, statementAmountDue_)
  PARCELON_PUTTER(LONG, StatementID, statementID_)

  // INA_Form3
  PARCELON_GETTER(LONG, StatementStyleNumber, statementStyleNumber_)
  PARCELON_GETTER(LONG, StatementCustomerRecNum, statementCustomerRecNum_)
  PARCELON_GETTER(DATE, StatementDate, statementDate_)
  PARCELON_GETTER(DATE, StatementDueDate, statementDueDate_)
  PARCELON_GETTER(BSTR, StatementAmountDue, statementAmountDue_)
  PARCELON_GETTER(LONG, StatementID, statementID_)
  PARCELON_PROPERTY(DATE, StatementFromDate, statementFromDate_)
  PARCELON_PROPERTY(DATE, StatementToDate, statementToDate_)

  // INA_Form4
  PARCELON_PROPERTY(BSTR, PDFFileName, pdfFileName_)

  // INA_Form5
  PARCELON_PROPERTY(NAFormType, FormType, formType_)
  PARCELON_PROPERTY(BSTR, DocType, docType_)
  PARCELON_PROPERTY(BSTR, AttachmentPath, attachmentPath_)
  PARCELON_PROPERTY(BSTR, AttachmentFileName, attachmentFileName_)
  PARCELON_PROPERTY(BSTR, MessageID, messageID_)
  PARCELON_PROPERTY(VARIANT_BOOL, BatchSend, batchSend_)
  PARCELON_PROPERTY(VARIANT_BOOL, RemoveAfterSend, removeAfterSend_)
  PARCELON_PROPERTY(BSTR, PaperMail_ToAttention, paperMailTo_.attention)
  PARCELON_PROPERTY(BSTR, PaperMail_FromAttention, paperMailFrom_.attention)
  PARCELON_PROPERTY(BSTR, PaperMail_ToAddresseeName, paperMailTo_.addresseeName)
  PARCELON_PROPERTY(BSTR, PaperMail_FromAddresseeName, paperMailFrom_.addresseeName)
  PARCELON_PROPERTY(BSTR, PaperMail_ToStreetAddress1, paperMailTo_.streetAddress1)
  PARCELON_PROPERTY(BSTR, PaperMail_FromStreetAddress1, paperMailFrom_.streetAddress1)
  PARCELON_PROPERTY(BSTR, PaperMail_ToStreetAddress2, paperMailTo_.streetAddress2)
  PARCELON_PROPERTY(BSTR, PaperMail_FromStreetAddress2, paperMailFrom_.streetAddress2)
  PARCELON_PROPERTY(BSTR, PaperMail_ToCity, paperMailTo_.city)
  PARCELON_PROPERTY(BSTR, PaperMail_FromCity, paperMailFrom_.city)
  PARCELON_PROPERTY(BSTR, PaperMail_ToState, paperMailTo_.state)
  PARCELON_PROPERTY(BSTR, PaperMail_FromState, paperMailFrom_.state)
  PARCELON_PROPERTY(BSTR, PaperMail_ToPostalCode, paperMailTo_.postalCode)
  PARCELON_PROPERTY(BSTR, PaperMail_FromPostalCode, paperMailFrom_.postalCode)
  PARCELON_PROPERTY(BSTR, PaperMail_ToCountry, paperMailTo_.country)
  PARCELON_PROPERTY(BSTR, PaperMail_FromCountry, paperMailFrom_.country)
  PARCELON_PROPERTY(BSTR, CoverLetter, coverLetter_)
  PARCELON_PROPERTY(VARIANT_BOOL, IsSample, isSample_)
  PARCELON_PROPERTY(VARIANT_BOOL, UseColor, useColor_)

  // INA_Form6
  PARCELON_PROPERTY(VARIANT_BOOL, SynchMultiple, synchMultiple_)

  // INA_Form7
  HRESULT STDMETHODCALLTYPE get_AttachmentFileList(BSTR* pVal) override;
  HRESULT STDMETHODCALLTYPE AddAttachmentFile(BSTR newValue) override;
  HRESULT STDMETHODCALLTYPE ClearAttachmentFileList() override;

 protected:
  CNA_Form() = default;
  ~CNA_Form() = default;

 private:
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
