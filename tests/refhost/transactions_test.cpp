// Invoices, estimates and their lines through the host's interfaces: a fixture read back
// exactly, references to list records, faults for one record, a second version made
// unavailable, and fixtures that refer to records that do not exist.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "CompanyTestSupport.h"

namespace parcelon::refhost::test {
namespace {

// OLE dates and time stamps the fixture below writes as text.
constexpr DATE k2009_03_01 = 39873;
constexpr DATE k2009_03_07 = 39879;
constexpr DATE k2009_03_17 = 39889;
constexpr DATE k2009_04_06 = 39909;
constexpr LONG k2009_03_07T14_30Z = 1236436200;

// Invoice 101 has every field, terms with a discount and two lines; invoice 102 has no terms, a
// zero date, a zero total and a negative balance; estimate 201 is for a job, estimate 202 has a
// zero date and a negative total.
const char kFixture[] = R"json({
  "terms": [
    {"recNum": 1, "name": "Net 30", "stdDueDays": 30},
    {"recNum": 2, "name": "2% 10 Net 30", "stdDueDays": 30, "stdDiscountDays": 10,
     "discountPct": 2}
  ],
  "customers": [
    {"recNum": 10, "name": "Ärger & Söhne <GmbH>"},
    {"recNum": 11, "name": "O’Brien \"Phase 1\"", "parent": 10}
  ],
  "otherNames": [{"recNum": 20, "name": "Dana Vendor"}],
  "items": [
    {"recNum": 30, "name": "Consulting", "type": "service"},
    {"recNum": 31, "name": "Loyalty", "type": "discount"},
    {"recNum": 32, "name": "State tax", "type": "taxComp"}
  ],
  "classes": [{"recNum": 40, "name": "East"}],
  "salesReps": [{"recNum": 50, "name": "DV", "associatedName": 20}],
  "shipMethods": [{"recNum": 60, "name": "Courier"}],
  "customerMessages": [{"recNum": 70, "name": "Thank you!"}],
  "styles": [
    {"recNum": 1, "fullName": "Service Invoice", "type": "invoice"},
    {"recNum": 2, "fullName": "Custom Estimate", "type": "estimate"}
  ],
  "invoices": [
    {"recNum": 101, "transactionNumber": 7, "date": "2009-03-07", "dueDate": "2009-04-06",
     "amount": "1234.50", "createTimeStamp": "2009-03-07T14:30:00Z", "modTimeStamp": 1236440000,
     "customer": 11, "customerIsTaxable": true, "terms": 2,
     "billingAddress": {"lines": ["O’Brien", "12 Rue <Haute>", "Bât. 3", "Suite 9"],
                        "city": "Zürich", "state": "ZH", "postalCode": "8001",
                        "country": "CH", "note": "back door"},
     "class": 40, "salesRep": 50, "shipMethod": 60, "customerMessage": 70, "customStyle": 1,
     "salesTaxItem": 32, "salesTaxRate": "8.25", "salesTaxTotal": "93.50",
     "invoiceNumber": "INV-1001", "remainingBalance": "1234.50",
     "suggestedDiscountAmount": "24.69", "suggestedDiscountDate": "2009-03-17",
     "allowPayment": true,
     "lines": [
       {"item": 30, "description": "Design — phase “one”",
        "quantity": {"value": "2.50", "text": "2.5"}, "unitPrice": "456.40",
        "amount": "1141.00", "class": 40, "other1": "o1", "other2": "o2", "isTaxable": true,
        "openBalance": "1141.00", "clearedState": "pending", "customFields": ["PO 7", "", "&"],
        "serviceDate": "2009-03-01", "currentPercentage": "50.00",
        "estimateAmount": "2282.00", "estimateQuantity": "5.00", "estimateRate": "456.40",
        "priorAmount": "0.00", "priorPercentage": "0.00", "priorQuantity": "0.00",
        "priorRate": "0.00", "totalPercentage": "50.00"},
       {"item": 31, "description": "Loyalty discount", "amount": "-0.50", "paid": true,
        "isPrintable": false, "isEndOfGroup": true, "clearedState": 4}
     ]},
    {"recNum": 102, "transactionNumber": 8, "date": 0, "amount": "0.00", "customer": 10,
     "remainingBalance": "-25.00"}
  ],
  "estimates": [
    {"recNum": 201, "transactionNumber": 3, "date": "2009-03-01", "amount": "2282.00",
     "createTimeStamp": 1235900000, "modTimeStamp": 1235900001, "customer": 11, "customerIsTaxable": true,
     "customStyle": 2, "estimateNumber": "E-17",
     "lines": [
       {"item": 30, "quantity": "20.00", "unitPrice": "100.00", "amount": "2282.00",
        "markup": "282.00", "nominalTotal": "2000.00", "isTaxable": true},
       {"item": 31, "amount": "0.00", "markup": "-5.00", "class": 40}
     ]},
    {"recNum": 202, "transactionNumber": 4, "transactionTypeName": "Quote", "date": 0, "amount": "-40.00",
     "customer": 10, "terms": 1, "estimateNumber": "E-18"}
  ]
})json";

class TransactionsTest : public ::testing::Test {
 public:
  IInvoicePtr InvoiceOf(LONG recNum) {
    return ByRecNum<IInvoice>(Get(Transactions(), &ITransactions::GetInvoices), recNum);
  }
  IEstimatePtr EstimateOf(LONG recNum) {
    return ByRecNum<IEstimate>(Get(Transactions(), &ITransactions::GetEstimates), recNum);
  }
  // The record `recNum` of a list, which must find it.
  template <class I, class List>
  static ComPtr<I> ByRecNum(const List& list, LONG recNum) {
    ComPtr<I> record;
    EXPECT_EQ(S_OK, list->GetItemByRecNum(RecNumVariant(recNum), record.ReleaseAndGetAddressOf()));
    return record;
  }
  // The invoice or estimate `recNum` as the interface both answer for.
  ISalesTransactionPtr TransactionOf(LONG recNum) {
    ISalesTransactionPtr transaction;
    if (recNum < 200)
      EXPECT_EQ(S_OK, InvoiceOf(recNum).As(transaction));
    else
      EXPECT_EQ(S_OK, EstimateOf(recNum).As(transaction));
    return transaction;
  }
  // Line `index` of invoice or estimate `recNum` as the interface both kinds of line answer for.
  ILineItemPtr LineOf(LONG recNum, LONG index) {
    ILineItemPtr line;
    if (recNum < 200) {
      IInvoiceItemLineItemsPtr lines = Get(InvoiceOf(recNum), &IInvoice::GetLineItems);
      EXPECT_EQ(S_OK, Get(lines, &IInvoiceItemLineItems::GetItem, index).As(line));
    } else {
      IEstimateItemLineItemsPtr lines = Get(EstimateOf(recNum), &IEstimate::GetLineItems);
      EXPECT_EQ(S_OK, Get(lines, &IEstimateItemLineItems::GetItem, index).As(line));
    }
    return line;
  }
  ITransactionsPtr Transactions() {
    ICompanyFilePtr file;
    EXPECT_EQ(S_OK, NewCompanyFile(company_, file.ReleaseAndGetAddressOf()));
    return Get(file, &ICompanyFile::GetTransactions);
  }

 protected:
  CompanyPtr company_ = LoadCompany(kFixture);
};

// The header fields that invoices and estimates share.
struct HeaderCase {
  LONG recNum, number;
  std::string typeName;
  DATE date, dueDate;
  AmountSeen amount;
  LONG createTime, modTime, customer;
  bool customerTaxable;
  LONG terms, style;
};

TEST_F(TransactionsTest, HeadersReadBackExactly) {
  const HeaderCase cases[] = {
      {101, 7, "Invoice", k2009_03_07, k2009_04_06, Money("1234.50", false, 1234, 50),
       k2009_03_07T14_30Z, 1236440000, 11, true, 2, 1},
      {102, 8, "Invoice", 0, 0, Money("0.00", false, 0, 0), 0, 0, 10, false, 0, 0},
      {201, 3, "Estimate", k2009_03_01, 0, Money("2282.00", false, 2282, 0), 1235900000,
       1235900001, 11, true, 0, 2},
      {202, 4, "Quote", 0, 0, Money("-40.00", true, 40, 0), 0, 0, 10, false, 1, 0},
  };
  for (const HeaderCase& c : cases) {
    SCOPED_TRACE(c.recNum);
    const ISalesTransactionPtr t = TransactionOf(c.recNum);
    ASSERT_TRUE(t);
    EXPECT_EQ(c.recNum, Get(t, &ISalesTransaction::GetRecNum));
    EXPECT_EQ(c.number, Get(t, &ISalesTransaction::GetTransactionNumber));
    EXPECT_EQ(c.typeName, Get(t, &ISalesTransaction::GetTransactionTypeName));
    EXPECT_EQ(c.date, Get(t, &ISalesTransaction::GetDate));
    EXPECT_EQ(c.dueDate, Get(t, &ISalesTransaction::GetDueDate));
    EXPECT_EQ(c.amount, SeeAmount(Get(t, &ISalesTransaction::GetAmount)));
    EXPECT_EQ(c.createTime, Get(t, &ISalesTransaction::GetCreateTimeStamp));
    EXPECT_EQ(c.modTime, Get(t, &ISalesTransaction::GetModTimeStamp));
    EXPECT_EQ(c.customer, RecNumOf(Get(t, &ISalesTransaction::GetCustomer)));
    EXPECT_EQ(c.customerTaxable, Get(t, &ISalesTransaction::GetCustomerIsTaxable));
    EXPECT_EQ(c.terms, RecNumOf(Get(t, &ISalesTransaction::GetTerms)));
    EXPECT_EQ(c.style, RecNumOf(Get(t, &ISalesTransaction::GetCustomStyle)));
  }
}

TEST_F(TransactionsTest, ReferencesGiveTheListRecords) {
  const ISalesTransactionPtr t = TransactionOf(101);
  EXPECT_EQ(40, RecNumOf(Get(t, &ISalesTransaction::GetClass)));
  EXPECT_EQ(50, RecNumOf(Get(t, &ISalesTransaction::GetSalesRep)));
  EXPECT_EQ(60, RecNumOf(Get(t, &ISalesTransaction::GetShipMethod)));
  EXPECT_EQ(70, RecNumOf(Get(t, &ISalesTransaction::GetCustomerMessage)));
  EXPECT_EQ(32, RecNumOf(Get(t, &ISalesTransaction::GetSalesTaxItem)));
  EXPECT_EQ(Money("8.25", false, 8, 25), SeeAmount(Get(t, &ISalesTransaction::GetSalesTaxRate)));
  EXPECT_EQ(Money("93.50", false, 93, 50), SeeAmount(Get(t, &ISalesTransaction::GetSalesTaxTotal)));
  // The address getters themselves are read back in fixture_test; here, that all four lines come.
  const IAddressPtr address = Get(t, &ISalesTransaction::GetBillingAddress);
  const std::array<std::string, 4> lines = {"O’Brien", "12 Rue <Haute>", "Bât. 3", "Suite 9"};
  for (LONG i = 0; i < 4; ++i) EXPECT_EQ(lines[size_t(i)], Get(address, &IAddress::GetLine, i));
  EXPECT_EQ("Zürich", Get(address, &IAddress::GetCity));
}

// A reference that is not set gives an empty record, not a failure: the builders read its
// record number 0 and its empty name.
TEST_F(TransactionsTest, ReferencesNotSetGiveEmptyRecords) {
  const ISalesTransactionPtr t = TransactionOf(102);
  const ITermPtr terms = Get(t, &ISalesTransaction::GetTerms);
  ASSERT_TRUE(terms);
  EXPECT_EQ(0, RecNumOf(terms));
  EXPECT_EQ("", Get(terms, &ITerm::GetFullName));
  EXPECT_EQ(0, RecNumOf(Get(t, &ISalesTransaction::GetClass)));
  EXPECT_EQ(0, RecNumOf(Get(t, &ISalesTransaction::GetSalesTaxItem)));
  const IStylePtr style = Get(t, &ISalesTransaction::GetCustomStyle);
  EXPECT_EQ(0, RecNumOf(style));
  EXPECT_EQ(0, Get(Get(style, &IStyle::GetFields), &IStyleFields::GetCount));
  const IAddressPtr address = Get(t, &ISalesTransaction::GetBillingAddress);
  EXPECT_EQ("", Get(address, &IAddress::GetLine, 0));
  EXPECT_EQ(EmptyAmount(), SeeAmount(Get(t, &ISalesTransaction::GetSalesTaxRate)));
}

TEST_F(TransactionsTest, InvoiceFieldsReadBackExactly) {
  const IInvoicePtr full = InvoiceOf(101);
  EXPECT_EQ("INV-1001", Get(full, &IInvoice::GetInvoiceNumber));
  EXPECT_EQ(Money("1234.50", false, 1234, 50), SeeAmount(Get(full, &IInvoice::GetRemainingBalance)));
  IInvoice2Ptr full2;
  ASSERT_EQ(S_OK, full.As(full2));
  EXPECT_EQ(Money("24.69", false, 24, 69),
            SeeAmount(Get(full2, &IInvoice2::GetSuggestedDiscountAmount)));
  EXPECT_EQ(k2009_03_17, Get(full2, &IInvoice2::GetSuggestedDiscountDate));
  EXPECT_TRUE(Get(full2, &IInvoice2::GetAllowPayment));

  const IInvoicePtr bare = InvoiceOf(102);
  EXPECT_EQ("", Get(bare, &IInvoice::GetInvoiceNumber));
  EXPECT_EQ(Money("-25.00", true, 25, 0), SeeAmount(Get(bare, &IInvoice::GetRemainingBalance)));
  IInvoice2Ptr bare2;
  ASSERT_EQ(S_OK, bare.As(bare2));
  EXPECT_EQ(EmptyAmount(), SeeAmount(Get(bare2, &IInvoice2::GetSuggestedDiscountAmount)));
  EXPECT_EQ(0, Get(bare2, &IInvoice2::GetSuggestedDiscountDate));
  EXPECT_FALSE(Get(bare2, &IInvoice2::GetAllowPayment));
  EXPECT_EQ(0, Get(Get(bare, &IInvoice::GetLineItems), &IInvoiceItemLineItems::GetCount));

  EXPECT_EQ("E-17", Get(EstimateOf(201), &IEstimate::GetEstimateNumber));
  EXPECT_EQ("E-18", Get(EstimateOf(202), &IEstimate::GetEstimateNumber));
}

// Each list holds its own kind only; counts and index bounds are the lists' common code, tested
// in lists_test.
TEST_F(TransactionsTest, ListsFindOnlyTheirOwnKind) {
  IInvoicePtr invoice;
  EXPECT_EQ(LX_E_NOTFOUND, Get(Transactions(), &ITransactions::GetInvoices)
                               ->GetItemByRecNum(RecNumVariant(201), invoice.ReleaseAndGetAddressOf()));
  IEstimatePtr estimate;
  EXPECT_EQ(LX_E_NOTFOUND, Get(Transactions(), &ITransactions::GetEstimates)
                               ->GetItemByRecNum(RecNumVariant(101), estimate.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(invoice || estimate);
}

// What every line has, for the lines of both kinds.
struct LineCase {
  LONG recNum, index, item;
  std::string description;
  AmountSeen unitPrice, amount;
  bool amountZero, quantityBlank;
  LONG lineClass;
  bool taxable, paid;
  LONG clearedState;
  std::vector<std::string> customFields;
};

TEST_F(TransactionsTest, LinesReadBackExactly) {
  const LineCase cases[] = {
      {101, 0, 30, "Design — phase “one”", Money("456.40", false, 456, 40),
       Money("1141.00", false, 1141, 0), false, false, 40, true, false, csPending,
       {"PO 7", "", "&"}},
      {101, 1, 31, "Loyalty discount", EmptyAmount(), Money("-0.50", true, 0, 50), false, true, 0, false,
       true, csDownloaded, {}},
      {201, 0, 30, "", Money("100.00", false, 100, 0), Money("2282.00", false, 2282, 0), false,
       false, 0, true, false, csUncleared, {}},
      {201, 1, 31, "", EmptyAmount(), Money("0.00", false, 0, 0), true, true, 40, false, false, csUncleared,
       {}},
  };
  for (const LineCase& c : cases) {
    SCOPED_TRACE(testing::Message() << c.recNum << " line " << c.index);
    const ILineItemPtr line = LineOf(c.recNum, c.index);
    ASSERT_TRUE(line);
    EXPECT_EQ(c.item, RecNumOf(Get(line, &ILineItem::GetItem)));
    EXPECT_EQ(c.description, Get(line, &ILineItem::GetDescription));
    EXPECT_EQ(c.unitPrice, SeeAmount(Get(line, &ILineItem::GetUnitPrice)));
    EXPECT_EQ(c.amount, SeeAmount(Get(line, &ILineItem::GetAmount)));
    EXPECT_EQ(c.amountZero, Get(line, &ILineItem::GetIsAmountZero));
    EXPECT_EQ(c.quantityBlank, Get(line, &ILineItem::GetIsQuantityBlank));
    EXPECT_EQ(c.lineClass, RecNumOf(Get(line, &ILineItem::GetClass)));
    EXPECT_EQ(c.taxable, Get(line, &ILineItem::GetIsTaxable));
    EXPECT_EQ(c.paid, Get(line, &ILineItem::GetPaid));
    EXPECT_EQ(c.clearedState, Get(line, &ILineItem::GetClearedState));
    ASSERT_EQ(LONG(c.customFields.size()), Get(line, &ILineItem::GetCustomFieldCount));
    for (size_t i = 0; i < c.customFields.size(); ++i)
      EXPECT_EQ(c.customFields[i], Get(line, &ILineItem::GetCustomField, LONG(i)));
    Bstr beyond;
    EXPECT_EQ(E_INVALIDARG, line->GetCustomField(LONG(c.customFields.size()), beyond.Out()));
    EXPECT_EQ(E_INVALIDARG, line->GetCustomField(-1, beyond.Out()));
  }
}

TEST_F(TransactionsTest, InvoiceLineSecondVersionReadsBackExactly) {
  IInvoiceItemLineItem2Ptr line;
  ASSERT_EQ(S_OK, LineOf(101, 0).As(line));
  EXPECT_EQ("o1", Get(line, &ILineItem::GetOther1));
  EXPECT_EQ("o2", Get(line, &ILineItem::GetOther2));
  EXPECT_EQ(Money("1141.00", false, 1141, 0), SeeAmount(Get(line, &ILineItem::GetOpenBalance)));
  EXPECT_EQ(k2009_03_01, Get(line, &IInvoiceItemLineItem::GetServiceDate));
  EXPECT_FALSE(Get(line, &IInvoiceItemLineItem2::GetIsEndOfGroup));
  EXPECT_TRUE(Get(line, &IInvoiceItemLineItem2::GetIsPrintable));
  // A quantity keeps the text the host formats it with.
  EXPECT_EQ(Money("2.5", false, 2, 50), SeeAmount(Get(line, &IInvoiceItemLineItem2::GetQuantity)));
  using Getter = HRESULT (STDMETHODCALLTYPE IInvoiceItemLineItem2::*)(IAmount**);
  const std::pair<Getter, AmountSeen> progress[] = {
      {&IInvoiceItemLineItem2::GetCurrentPercentage, Money("50.00", false, 50, 0)},
      {&IInvoiceItemLineItem2::GetEstimateAmount, Money("2282.00", false, 2282, 0)},
      {&IInvoiceItemLineItem2::GetEstimateQuantity, Money("5.00", false, 5, 0)},
      {&IInvoiceItemLineItem2::GetEstimateRate, Money("456.40", false, 456, 40)},
      {&IInvoiceItemLineItem2::GetPriorAmount, Money("0.00", false, 0, 0)},
      {&IInvoiceItemLineItem2::GetPriorPercentage, Money("0.00", false, 0, 0)},
      {&IInvoiceItemLineItem2::GetPriorQuantity, Money("0.00", false, 0, 0)},
      {&IInvoiceItemLineItem2::GetPriorRate, Money("0.00", false, 0, 0)},
      {&IInvoiceItemLineItem2::GetTotalPercentage, Money("50.00", false, 50, 0)},
  };
  for (size_t i = 0; i < std::size(progress); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(progress[i].second, SeeAmount(Get(line, progress[i].first)));
  }

  IInvoiceItemLineItem2Ptr last;
  ASSERT_EQ(S_OK, LineOf(101, 1).As(last));
  EXPECT_TRUE(Get(last, &IInvoiceItemLineItem2::GetIsEndOfGroup));
  EXPECT_FALSE(Get(last, &IInvoiceItemLineItem2::GetIsPrintable));
  EXPECT_EQ(0, Get(last, &IInvoiceItemLineItem::GetServiceDate));
  EXPECT_EQ(EmptyAmount(), SeeAmount(Get(last, &IInvoiceItemLineItem2::GetQuantity)));
}

TEST_F(TransactionsTest, EstimateLineSecondVersionReadsBackExactly) {
  IEstimateItemLineItem2Ptr line;
  ASSERT_EQ(S_OK, LineOf(201, 0).As(line));
  EXPECT_EQ(Money("282.00", false, 282, 0), SeeAmount(Get(line, &IEstimateItemLineItem::GetMarkup)));
  EXPECT_EQ(Money("2000.00", false, 2000, 0),
            SeeAmount(Get(line, &IEstimateItemLineItem::GetNominalTotal)));
  EXPECT_EQ(Money("20.00", false, 20, 0), SeeAmount(Get(line, &IEstimateItemLineItem2::GetQuantity)));
  EXPECT_TRUE(Get(line, &IEstimateItemLineItem2::GetIsPrintable));
  EXPECT_FALSE(Get(line, &IEstimateItemLineItem2::GetIsEndOfGroup));

  IEstimateItemLineItemPtr second;
  ASSERT_EQ(S_OK, LineOf(201, 1).As(second));
  EXPECT_EQ(Money("-5.00", true, 5, 0), SeeAmount(Get(second, &IEstimateItemLineItem::GetMarkup)));
  EXPECT_EQ(EmptyAmount(), SeeAmount(Get(second, &IEstimateItemLineItem::GetNominalTotal)));
}

// Objects keep their company: a line read after everything else was released.
TEST_F(TransactionsTest, ObjectsOutliveTheCompanyFileAndTheCaller) {
  IInvoiceItemLineItemsPtr lines = Get(InvoiceOf(101), &IInvoice::GetLineItems);
  IInvoiceItemLineItemPtr line = Get(lines, &IInvoiceItemLineItems::GetItem, 0);
  lines.Reset();
  company_.reset();
  EXPECT_EQ("Design — phase “one”", Get(line, &ILineItem::GetDescription));
}

// One fault and the calls that it must fail and must leave alone.
struct FaultCase {
  const char* operation;
  LONG record;
  std::vector<std::function<HRESULT(TransactionsTest&)>> failing;
  std::vector<std::function<HRESULT(TransactionsTest&)>> passing;
};

// Calls of one getter of transaction `recNum`, or of line `index` of it.
auto InvoiceNumber(LONG recNum) {
  return [=](TransactionsTest& t) { return Status(t.InvoiceOf(recNum), &IInvoice::GetInvoiceNumber); };
}
auto Date(LONG recNum) {
  return [=](TransactionsTest& t) { return Status(t.TransactionOf(recNum), &ISalesTransaction::GetDate); };
}
auto LineTaxable(LONG recNum, LONG index) {
  return [=](TransactionsTest& t) { return Status(t.LineOf(recNum, index), &ILineItem::GetIsTaxable); };
}
auto InvoiceLineQuantity(LONG recNum, LONG index) {
  return [=](TransactionsTest& t) {
    IInvoiceItemLineItem2Ptr line;
    EXPECT_EQ(S_OK, t.LineOf(recNum, index).As(line));
    return Status(line, &IInvoiceItemLineItem2::GetQuantity);
  };
}
auto LineCount(LONG recNum) {
  return [=](TransactionsTest& t) {
    return Status(Get(t.InvoiceOf(recNum), &IInvoice::GetLineItems), &IInvoiceItemLineItems::GetCount);
  };
}

TEST_F(TransactionsTest, FaultsFailTheNamedOperationOfTheNamedRecordOnly) {
  const FaultCase cases[] = {
      {"IInvoice::GetInvoiceNumber", 101, {InvoiceNumber(101)}, {InvoiceNumber(102), Date(101)}},
      // A method of ISalesTransaction answers to the transaction's own interface...
      {"IInvoice::GetDate", 102, {Date(102)}, {Date(101), Date(202)}},
      // ... and to ISalesTransaction, for invoices and estimates alike.
      {"ISalesTransaction::GetDate", 202, {Date(202)}, {Date(201), Date(101)}},
      // Lines belong to their transaction.
      {"ILineItem::GetIsTaxable", 101, {LineTaxable(101, 0), LineTaxable(101, 1)},
       {LineTaxable(201, 0)}},
      {"IEstimateItemLineItem::GetIsTaxable", 201, {LineTaxable(201, 1)},
       {LineTaxable(101, 0)}},
      {"IInvoiceItemLineItem2::GetQuantity", 101, {InvoiceLineQuantity(101, 0)},
       {LineTaxable(101, 0)}},
      {"IInvoiceItemLineItems::GetCount", 102, {LineCount(102)}, {LineCount(101)}},
  };
  for (const FaultCase& c : cases) {
    SCOPED_TRACE(c.operation);
    company_->faults.Clear();
    ASSERT_TRUE(company_->faults.Fail(c.operation, E_UNEXPECTED, c.record));
    for (const auto& call : c.failing) EXPECT_EQ(E_UNEXPECTED, call(*this));
    for (const auto& call : c.passing) EXPECT_EQ(S_OK, call(*this));
    EXPECT_EQ(int(c.failing.size()), company_->faults.Triggered(c.operation));
  }
}

TEST_F(TransactionsTest, UnavailableSecondVersionsLeaveTheFirstVersions) {
  ASSERT_TRUE(company_->faults.MakeUnavailable("IInvoice2"));
  const IInvoicePtr invoice = InvoiceOf(101);
  IInvoice2Ptr invoice2;
  EXPECT_EQ(E_NOINTERFACE, invoice.As(invoice2));
  EXPECT_FALSE(invoice2);
  IInvoicePtr again;
  EXPECT_EQ(S_OK, invoice.As(again));
  ISalesTransactionPtr common;
  EXPECT_EQ(S_OK, invoice.As(common));
  EXPECT_EQ("INV-1001", Get(invoice, &IInvoice::GetInvoiceNumber));
  // Other second versions stay available.
  IInvoiceItemLineItem2Ptr line2;
  EXPECT_EQ(S_OK, LineOf(101, 0).As(line2));

  ASSERT_TRUE(company_->faults.MakeUnavailable("IInvoiceItemLineItem2"));
  EXPECT_EQ(E_NOINTERFACE, LineOf(101, 0).As(line2));
  IEstimateItemLineItem2Ptr estimateLine2;
  EXPECT_EQ(S_OK, LineOf(201, 0).As(estimateLine2));
}

TEST(TransactionFixtureTest, BadFixturesNameFilePositionAndField) {
  const FixtureChange changes[] = {
      {"/invoices/0/customer", 999, "/invoices/0: customer", "a customer or job"},
      // Another name is no customer.
      {"/invoices/0/customer", 20, "/invoices/0: customer", "a customer or job"},
      {"/estimates/1/terms", 3, "/estimates/1: terms", "a term"},
      {"/invoices/0/class", 41, "/invoices/0: class", "a class"},
      {"/invoices/0/salesRep", 51, "/invoices/0: salesRep", "a sales rep"},
      {"/invoices/0/shipMethod", 61, "/invoices/0: shipMethod", "a ship method"},
      {"/invoices/0/customerMessage", 71, "/invoices/0: customerMessage", "a customer message"},
      {"/estimates/0/customStyle", 9, "/estimates/0: customStyle", "a style"},
      {"/invoices/0/salesTaxItem", 33, "/invoices/0: salesTaxItem", "an item"},
      {"/invoices/0/lines/1/item", 99, "/invoices/0/lines/1: item", "an item"},
      {"/estimates/0/lines/1/class", 99, "/estimates/0/lines/1: class", "a class"},
      {"/invoices/1/recNum", 101, "/invoices/1: recNum",
       "duplicate record number 101, first at /invoices/0"},
      {"/estimates/1/recNum", 0, "/estimates/1: recNum", "whole number"},
      {"/invoices/0/amount", "12.345", "/invoices/0: amount", "amount"},
      {"/invoices/0/date", "2009-02-30", "/invoices/0: date", "date"},
      {"/invoices/0/createTimeStamp", -1, "/invoices/0: createTimeStamp", "whole number"},
      {"/invoices/0/lines/0/clearedState", "muddled", "/invoices/0/lines/0: clearedState",
       "uncleared"},
      {"/invoices/0/lines/0/customFields/1", 5, "/invoices/0/lines/0/customFields/1", "a string"},
      {"/invoices/0/lines/0/colour", "red", "/invoices/0/lines/0: colour", "unknown field"},
      {"/estimates/0/lines/0/serviceDate", "2009-03-01", "/estimates/0/lines/0: serviceDate",
       "unknown field"},
      {"/invoices/1/lines", "none", "/invoices/1: lines", "an array"},
      {"/estimates/0/lines/1", 7, "/estimates/0/lines/1", "an object"},
  };
  for (const FixtureChange& change : changes) ExpectRefused(kFixture, change);
}

TEST(TransactionFixtureTest, TooManyLinesAreRefusedBeforeTheyAreRead) {
  nlohmann::json fixture = nlohmann::json::parse(kFixture);
  fixture["invoices"][1]["lines"] = nlohmann::json::array();
  for (int i = 0; i < 10001; ++i) fixture["invoices"][1]["lines"].push_back(nullptr);
  const std::string error = LoadError(fixture.dump());
  EXPECT_EQ(0u, error.find("company.json: /invoices/1: lines: ")) << error;
}

// Many small lines, each within the limit of its invoice, cannot together exhaust memory: 400000
// lines take more than the 256 MiB that the transactions may take.
TEST(TransactionFixtureTest, ManySmallLinesAreRefusedBeforeTheyTakeTooMuchMemory) {
  std::string lines = "[";
  for (int i = 0; i < 10000; ++i) lines += i ? ",{}" : "{}";
  lines += "]";
  std::string fixture = R"({"customers": [{"recNum": 1, "name": "C"}], "invoices": [)";
  for (int i = 1; i <= 40; ++i)
    fixture += (i > 1 ? "," : "") + std::string(R"({"recNum": )") + std::to_string(i) +
               R"(, "lines": )" + lines + "}";
  fixture += "]}";
  const std::string error = LoadError(fixture);
  EXPECT_EQ(0u, error.find("company.json: /invoices/")) << error;
  EXPECT_NE(std::string::npos,
            error.find(": lines: the transactions and templates would take more than 256 MiB"))
      << error;
}

}  // namespace
}  // namespace parcelon::refhost::test
