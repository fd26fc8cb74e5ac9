// The statement form aggregate "StatementForm": the company block and the statement's header
// ("StatementDetail"). A statement is no single host transaction: its header values come from the
// form object, and only the customer is read from the company file. The writers of the aging
// block, the customer's account number, sales rep and terms, and the statement lines are kept
// with it for forms that carry them.
#pragma once

#include <memory>
#include <span>
#include <utility>

#include "clienttools/OLAString.h"
#include "clienttools/XMLBuilder.h"
#include "host/HostModel.h"
#include "platform/Bstr.h"
#include "platform/ComBase.h"

// A text shared between copies, reference counted; null reads as empty.
using SharedText = std::shared_ptr<const OLAString>;

// One statement line as display texts. Copying a view shares its texts.
struct StatementTxnItemView {
  // The view of one line as the form object receives it (see INA_Form2::StatementTxnItemView).
  static StatementTxnItemView FromHost(DATE date, BSTR txnDesc, BSTR amountStr, BSTR txnItemDesc,
                                       BSTR txnItemQty, BSTR txnRunningBal, BSTR txnItemRate);

  DATE date = 0;
  SharedText txnDesc;
  SharedText amountStr;
  SharedText txnItemDesc;
  SharedText txnItemQty;
  SharedText txnRunningBal;
  SharedText txnItemRate;
};

// The statement's header values, as the form object holds them.
struct StatementValues {
  LONG statementID = 0;
  DATE statementDate = 0;
  DATE dueDate = 0;
  // The period the statement covers.
  DATE fromDate = 0;
  DATE toDate = 0;
  // Formatted by the host already.
  Bstr amountDue;
  // The customer or job the statement is for.
  LONG customerRecNum = 0;
};

class CStatementFormBuilder {
 public:
  CStatementFormBuilder(ICompanyFile* companyFile, StatementValues values)
      : companyFile_(companyFile), values_(std::move(values)) {}

  // "StatementForm": "Company", "StatementDetail". A failure is returned with the elements opened
  // so far left open.
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  ICompanyFilePtr companyFile_;
  StatementValues values_;
};

class CStatementDetailBuilder {
 public:
  // The aging names, in the order of the aging values.
  static constexpr const char* kAgingNames[] = {"Current", "Due130", "Due3160", "Due6190", "DueOver90", "AmountDue"};

  CStatementDetailBuilder(ICompanyFile* companyFile, LONG customerRecNum)
      : companyFile_(companyFile), customerRecNum_(customerRecNum) {}

  // "StatementDetail": "StatementID", "StatementDate", "DueDate", "AmountDue", the customer
  // ("CustomerJobName", "CustomerJobID", "BillAddress") and "StatementFromDate",
  // "StatementToDate". Every element is required.
  HRESULT BuildXML(XMLBuilder& builder, const StatementValues& values);
  // "CustomerJobName" and "CustomerJobID" of the customer or job, and the "BillAddress" of its
  // top-level customer.
  HRESULT BuildCustomerXML(XMLBuilder& builder);
  // "BillAddress": the address of the top-level customer that BuildCustomerXML found.
  HRESULT BuildCustomerAddress(XMLBuilder& builder);

  // "AgingDetail": one element per aging value, named by kAgingNames in order; values beyond
  // the six names are not written.
  void BuildAgingXML(XMLBuilder& builder, std::span<const OLAString> agingValues);
  // "AccountNumber" of the customer.
  HRESULT BuildCustomerAccnt(XMLBuilder& builder);
  // "SalesRep": the name of the customer's sales rep.
  HRESULT BuildCustomerSalesRep(XMLBuilder& builder);
  // "Terms": the name of the customer's terms.
  HRESULT BuildCustomerTerms(XMLBuilder& builder);
  // "StatementItem": "TranDate", "TranDesc", "ItemDesc", "Quantity", "Rate", "Amount", "Balance".
  void BuildStatementItemXML(XMLBuilder& builder, const StatementTxnItemView& line);

 private:
  // Finds the customer in the company file's names, once; failures are logged with `prefix`.
  HRESULT LookUpCustomer(const char* prefix);

  ICompanyFilePtr companyFile_;
  LONG customerRecNum_;
  INamePtr customer_;
  INamePtr root_;
};
