// Upload selection against the reference host: what each kind of form marks, deletions, all
// customers, the optional and required reads with their log lines, and bad host data (cycles,
// record number 0) ending cleanly.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "UploadTestSupport.h"
#include "forms/FormParts.h"
#include "refhost/CompanyData.h"
#include "upload/UploadSelection.h"

namespace parcelon::test {
namespace {

// A customer 10 with jobs 11 and 12 (12 under 11), a customer 20; terms 1 and 2.
constexpr char kCompany[] = R"({
  "terms": [{"recNum": 1, "name": "Net 30"}, {"recNum": 2, "name": "Net 10"}],
  "customers": [
    {"recNum": 10, "name": "Harbor"},
    {"recNum": 11, "name": "Roof", "parent": 10},
    {"recNum": 12, "name": "Gutters", "parent": 11},
    {"recNum": 20, "name": "Pine", "terms": 2}
  ],
  "invoices": [
    {"recNum": 100, "customer": 12, "terms": 1},
    {"recNum": 101, "customer": 20}
  ],
  "estimates": [{"recNum": 200, "customer": 11, "terms": 2}]
})";

const std::string kSelectPrefix = "Parcelon:CNA_Forms::PutRecNumsInMap(ICompanyFilePtr): ";
const std::string kInvoicePrefix = "Parcelon:CNA_Forms::PutInvoiceRecNumsInMap(ICompanyFilePtr, long): ";
const std::string kEstimatePrefix = "Parcelon:CNA_Forms::PutEstimateRecNumsInMap(ICompanyFilePtr, long): ";
const std::string kStatementPrefix = "Parcelon:CNA_Forms::PutStatementRecNumsInMap(ICompanyFilePtr, long): ";
const std::string kAllPrefix = "Parcelon:CNA_Forms::PutAllCustomerRecNumsInMap(ICompanyFilePtr): ";
const std::string kCustomerJobPrefix = "Parcelon:CNA_Forms::AddCustomerJobToMap(INamePtr): ";
const std::string kTermPrefix = "Parcelon:CNA_Forms::AddTermToMap(ITermPtr): ";
const std::string kCycle = "The parents of a customerjob in LX lead back to it or nest deeper than a tree can.";

// The map as "kind recnum=mark ..." for the four kinds the request carries.
std::string Describe(const CRecNumMap& map) {
  const std::pair<const char*, RecordKind> kinds[] = {{"terms", RecordKind::kTerm},
                                                      {"customers", RecordKind::kCustomerJob},
                                                      {"invoices", RecordKind::kInvoice},
                                                      {"estimates", RecordKind::kEstimate}};
  std::string text;
  for (const auto& [name, kind] : kinds) {
    if (map.Of(kind).empty()) continue;
    text += text.empty() ? "" : "; ";
    text += name;
    for (const auto& [recNum, mark] : map.Of(kind)) text += " " + std::to_string(recNum) + "=" + std::to_string(mark);
  }
  return text;
}

struct Form {
  NAFormType type;
  LONG recNum;
  NASendType method = nastEMAIL;
  bool post = true;
  LONG statementCustomer = 0;
};

class SelectionTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    UseCompany(kCompany);
  }

  void AddForms(const std::vector<Form>& forms) {
    for (const Form& f : forms) {
      INA_Form7Ptr form = NewForm();
      form->put_FormType(f.type);
      form->put_TransactionRecordNumber(f.recNum);
      form->put_SendMethod(f.method);
      form->put_Post(f.post ? VARIANT_TRUE : VARIANT_FALSE);
      form->put_StatementCustomerRecNum(f.statementCustomer);
      forms_.push_back(form);
    }
  }

  // The map after selecting for `forms`, with the result `expected`.
  std::string Select(const std::vector<Form>& forms, HRESULT expected = S_OK, bool allCustomers = false) {
    forms_.clear();
    AddForms(forms);
    map_.Clear();
    EXPECT_EQ(expected, CUploadSelection(map_, forms_, allCustomers).PutRecNumsInMap(CompanyFile()));
    return Describe(map_);
  }

  refhost::Name& Name(LONG recNum) { return *Host().GetCompany().names.Find(recNum); }

  std::vector<INA_Form7Ptr> forms_;
  CRecNumMap map_;
};

TEST_F(SelectionTest, EachFormMarksItsTransactionTermsAndCustomerWithItsParents) {
  EXPECT_EQ("terms 1=1; customers 10=1 11=1 12=1; invoices 100=1", Select({{naftINVOICE, 100}}));
  EXPECT_EQ("terms 2=1; customers 10=1 11=1; estimates 200=1", Select({{naftESTIMATE, 200}}));
  // A statement marks its customer only.
  EXPECT_EQ("customers 10=1 11=1 12=1", Select({{naftSTATEMENT, 1, nastEMAIL, true, 12}}));
  // The invoice's customer's own terms are not the invoice's.
  EXPECT_EQ("customers 20=1; invoices 101=1", Select({{naftINVOICE, 101}}));
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

TEST_F(SelectionTest, FormsWithoutPostOrRecordNumberAndOtherDocumentsMarkNothing) {
  EXPECT_EQ("", Select({{naftINVOICE, 100, nastEMAIL, false},
                        {naftINVOICE, 0},
                        {naftESTIMATE, 0, nastVOID},
                        {NAFormType(7), 100}}));
}

TEST_F(SelectionTest, DeletionsMarkOnlyTheTransactionAndTheLaterFormWins) {
  for (const NASendType method : {nastDELETE, nastVOID, nastPENDING}) {
    SCOPED_TRACE(method);
    EXPECT_EQ("invoices 100=6", Select({{naftINVOICE, 100, method}}));
    EXPECT_EQ("estimates 200=6", Select({{naftESTIMATE, 200, method}}));
  }
  EXPECT_EQ("terms 1=1; customers 10=1 11=1 12=1; invoices 100=1",
            Select({{naftINVOICE, 100, nastVOID}, {naftINVOICE, 100, nastFAX}}));
  EXPECT_EQ("terms 1=1; customers 10=1 11=1 12=1; invoices 100=6",
            Select({{naftINVOICE, 100, nastFAX}, {naftINVOICE, 100, nastDELETE}}));
}

TEST_F(SelectionTest, AllCustomersMarksEveryCustomerAndJobBeforeTheForms) {
  EXPECT_EQ("customers 10=1 11=1 12=1 20=1; estimates 200=6",
            Select({{naftESTIMATE, 200, nastDELETE}}, S_OK, true));
}

// Record number 0 means "no record": never selected, as a customer, a parent or a term.
TEST_F(SelectionTest, RecordNumberZeroIsNeverSelected) {
  Name(11).recNum = 0;
  EXPECT_EQ("customers 10=1 12=1 20=1", Select({}, S_OK, true));
  // The walk up from job 12 ends at the parent without a number.
  EXPECT_EQ("terms 1=1; customers 12=1; invoices 100=1", Select({{naftINVOICE, 100}}));
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

TEST_F(SelectionTest, OptionalReadsAreSkippedWithTheirMessage) {
  struct Case {
    HostFault fault;
    std::string selected;
    std::string log;
  };
  const Case cases[] = {
      {{"IInvoice::GetTerms", std::nullopt, E_FAIL},
       "customers 10=1 11=1 12=1; invoices 100=1",
       Entry(kInvoicePrefix, "Failed to get terms from invoice in LX.  Skipping this optional field.")},
      {{"IInvoice::GetCustomer", std::nullopt, E_FAIL},
       "terms 1=1; invoices 100=1",
       Entry(kInvoicePrefix, "Failed to get customer from invoice in LX.  Skipping this optional field.")},
      {{"ITerm::GetRecNum", 1, E_FAIL},
       "customers 10=1 11=1 12=1; invoices 100=1",
       Entry(kTermPrefix, "Failed to get record number from term in LX.  Skipping this optional field.")},
      {{"IName::GetRecNum", 12, E_FAIL},
       "terms 1=1; invoices 100=1",
       Entry(kCustomerJobPrefix, "Failed to get record number from customerjob in LX.  Skipping this optional field.")},
      // A failure in the parent walk ends it silently.
      {{"IName::GetParent", 11, E_FAIL}, "terms 1=1; customers 11=1 12=1; invoices 100=1", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    EXPECT_EQ(c.selected, Select({{naftINVOICE, 100}}));
    EXPECT_EQ(c.log.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.log}, LogEntries());
  }
  StartCase();
  Inject({"IEstimate::GetTerms", std::nullopt, E_FAIL});
  EXPECT_EQ("customers 10=1 11=1; estimates 200=1", Select({{naftESTIMATE, 200}}));
  EXPECT_EQ(std::vector<std::string>{Entry(kEstimatePrefix,
                                           "Failed to get terms from estimate in LX.  Skipping this optional field.")},
            LogEntries());
}

TEST_F(SelectionTest, RequiredReadsEndTheSelectionWithTheirMessages) {
  struct Case {
    HostFault fault;
    Form form;
    bool allCustomers;
    std::vector<std::string> log;
  };
  const std::string invoiceFailed = Entry(kSelectPrefix, "Failed on mark invoice or its list items for upload.");
  const std::string estimateFailed = Entry(kSelectPrefix, "Failed on mark estimate or its list items for upload.");
  const std::string statementFailed = Entry(kSelectPrefix, "Failed on mark statement or its list items for upload.");
  const std::string customersFailed = Entry(kSelectPrefix, "Failed to mark customers for upload.");
  const Case cases[] = {
      {{"ICompanyFile::GetTransactions", std::nullopt, E_FAIL}, {naftINVOICE, 100}, false,
       {Entry(kInvoicePrefix, "Failed to get transactions from company file in LX."), invoiceFailed}},
      {{"ITransactions::GetInvoices", std::nullopt, E_FAIL}, {naftINVOICE, 100}, false,
       {Entry(kInvoicePrefix, "Failed to get invoices from transactions in LX."), invoiceFailed}},
      {{"IInvoices::GetItemByRecNum", std::nullopt, E_FAIL}, {naftINVOICE, 100}, false,
       {Entry(kInvoicePrefix, "Failed to get item from invoices in LX"), invoiceFailed}},
      {{"ITransactions::GetEstimates", std::nullopt, E_FAIL}, {naftESTIMATE, 200}, false,
       {Entry(kEstimatePrefix, "Failed to get estimates from transactions in LX."), estimateFailed}},
      {{"IEstimates::GetItemByRecNum", std::nullopt, E_FAIL}, {naftESTIMATE, 200}, false,
       {Entry(kEstimatePrefix, "Failed to get item from estimates in LX"), estimateFailed}},
      {{"ICompanyFile::GetLists", std::nullopt, E_FAIL}, {naftSTATEMENT, 1, nastEMAIL, true, 12}, false,
       {Entry(kStatementPrefix, "Failed to get lists from company file in LX."), statementFailed}},
      {{"ILists::GetCustomers", std::nullopt, E_FAIL}, {naftSTATEMENT, 1, nastEMAIL, true, 12}, false,
       {Entry(kStatementPrefix, "Failed to get customers from lists in LX."), statementFailed}},
      {{"ICustomers::GetItemByRecNum", std::nullopt, E_FAIL}, {naftSTATEMENT, 1, nastEMAIL, true, 12}, false,
       {Entry(kStatementPrefix, "Failed to get customer from customers in LX."), statementFailed}},
      {{"ICompanyFile::GetLists", std::nullopt, E_FAIL}, {naftINVOICE, 100}, true,
       {Entry(kAllPrefix, "Failed to get lists from company file in LX."), customersFailed}},
      {{"ICustomers::GetCount", std::nullopt, E_FAIL}, {naftINVOICE, 100}, true,
       {Entry(kAllPrefix, "Failed to get count from customers in LX."), customersFailed}},
      {{"IName::GetRecNum", 11, E_FAIL}, {naftINVOICE, 100}, true,
       {Entry(kAllPrefix, "Failed to get record number from customer in LX."), customersFailed}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    Select({c.form}, E_FAIL, c.allCustomers);
    EXPECT_EQ(c.log, LogEntries());
  }
}

// The first failing form ends the selection; what earlier forms marked stays.
TEST_F(SelectionTest, TheFirstFailingFormEndsTheSelection) {
  Inject({"IEstimates::GetItemByRecNum", std::nullopt, E_FAIL});
  EXPECT_EQ("customers 20=1; invoices 101=1",
            Select({{naftINVOICE, 101}, {naftESTIMATE, 200}, {naftINVOICE, 100}}, E_FAIL));
}

TEST_F(SelectionTest, ACycleAmongJobsEndsTheSelection) {
  Name(10).parent = 12;  // 12 -> 11 -> 10 -> 12
  EXPECT_EQ("terms 1=1; customers 10=1 11=1 12=1; invoices 100=1", Select({{naftINVOICE, 100}}, E_FAIL));
  EXPECT_EQ((std::vector<std::string>{Entry(kCustomerJobPrefix, kCycle),
                                      Entry(kSelectPrefix, "Failed on mark invoice or its list items for upload.")}),
            LogEntries());
  StartCase();
  Name(12).parent = 12;  // a job that is its own parent
  Select({{naftSTATEMENT, 1, nastEMAIL, true, 12}}, E_FAIL);
  EXPECT_EQ(Entry(kCustomerJobPrefix, kCycle), LogEntries().at(0));
}

// The deepest chain a host tree can have is walked whole; one level more is refused.
TEST_F(SelectionTest, ParentChainsEndAtTheDeepestTreeLevel) {
  auto& names = Host().GetCompany().names;
  const auto chain = [&](int depth) {
    for (LONG recNum = 1000; recNum <= 1000 + depth; ++recNum) {
      refhost::Name* name = names.Find(recNum);
      if (!name) {
        refhost::Name record;
        record.recNum = recNum;
        record.name = u"Level";
        names.Add(std::move(record));
        name = names.Find(recNum);
      }
      name->parent = recNum == 1000 + depth ? 0 : recNum + 1;
    }
  };
  chain(CUploadSelection::kMaxTreeDepth);
  Select({{naftSTATEMENT, 1, nastEMAIL, true, 1000}});
  EXPECT_EQ(size_t(CUploadSelection::kMaxTreeDepth + 1), map_.Of(RecordKind::kCustomerJob).size());
  chain(CUploadSelection::kMaxTreeDepth + 1);
  Select({{naftSTATEMENT, 1, nastEMAIL, true, 1000}}, E_FAIL);
  EXPECT_EQ(Entry(kCustomerJobPrefix, kCycle), LogEntries().at(0));
}

// The kept members for the other lists mark their kind, skip record number 0 and a number that
// cannot be read.
TEST_F(SelectionTest, TheKeptMembersMarkTheirOwnKind) {
  UseCompany(R"({"classes": [{"recNum": 4, "name": "East"}], "shipMethods": [{"recNum": 6, "name": "Truck"}]})");
  IListsPtr lists;
  IClassesPtr classes;
  IClassPtr eastern;
  IShipMethodsPtr methods;
  IShipMethodPtr truck;
  ASSERT_EQ(S_OK, CompanyFile()->GetLists(lists.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, lists->GetClasses(classes.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, classes->GetItem(0, eastern.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, lists->GetShipMethods(methods.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, methods->GetItem(0, truck.ReleaseAndGetAddressOf()));
  CUploadSelection selection(map_, forms_, false);
  selection.AddClassToMap(eastern);
  selection.AddShipMethodToMap(truck);
  EXPECT_EQ(uint32_t(kMarkSelected), *map_.Find(RecordKind::kClass, 4));
  EXPECT_EQ(uint32_t(kMarkSelected), *map_.Find(RecordKind::kShipMethod, 6));
  Inject({"IClass::GetRecNum", std::nullopt, E_FAIL});
  map_.Clear();
  selection.AddClassToMap(eastern);
  EXPECT_EQ(0u, map_.Size());
  EXPECT_EQ(std::vector<std::string>{Entry("Parcelon:CNA_Forms::AddClassToMap(IClassPtr): ",
                                           "Failed to get record number from class in LX.  Skipping this optional field.")},
            LogEntries());
}

// Items: 1 a group of 2 and 3; 3 a group of 4; 4 under parent 5.
constexpr char kItems[] = R"({
  "items": [
    {"recNum": 1, "name": "Kit", "type": "group", "groupItems": [2, 3]},
    {"recNum": 2, "name": "Part", "type": "part"},
    {"recNum": 3, "name": "Sub kit", "type": "group", "groupItems": [4]},
    {"recNum": 4, "name": "Hose", "type": "inventory", "parent": 5},
    {"recNum": 5, "name": "Garden", "type": "service"}
  ]
})";

class ItemSelectionTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    UseCompany(kItems);
  }
  IItemPtr Item(LONG recNum) {
    IListsPtr lists;
    IItemsPtr items;
    IItemPtr item;
    EXPECT_EQ(S_OK, CompanyFile()->GetLists(lists.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, lists->GetItems(items.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, items->GetItemByRecNum(parcelon::forms::RecNumKey(recNum), item.ReleaseAndGetAddressOf()));
    return item;
  }
  std::string Items(HRESULT expected, LONG recNum) {
    map_.Clear();
    EXPECT_EQ(expected, CUploadSelection(map_, forms_, false).AddItemToMap(Item(recNum)));
    std::string text;
    for (const auto& [number, mark] : map_.Of(RecordKind::kItem)) text += std::to_string(number) + " ";
    return text;
  }
  std::vector<INA_Form7Ptr> forms_;
  CRecNumMap map_;
};

const std::string kItemPrefix = "Parcelon:CNA_Forms::AddItemToMap(IItemPtr): ";
const std::string kItemCycle = "The parents or group members of an item in LX lead back to it.";

TEST_F(ItemSelectionTest, AGroupBringsItsMembersAndTheirParents) {
  EXPECT_EQ("1 2 3 4 5 ", Items(S_OK, 1));
  EXPECT_EQ("4 5 ", Items(S_OK, 4));
  Inject({"IItem::GetGroupItem", 1, E_FAIL});
  EXPECT_EQ("1 ", Items(S_OK, 1));
  EXPECT_EQ((std::vector<std::string>(2, Entry(kItemPrefix, "Failed to get group item from item in LX.  Skipping this one."))),
            LogEntries());
  StartCase();
  Inject({"IItem::GetGroupCount", 3, E_FAIL});
  EXPECT_EQ("1 2 3 ", Items(S_OK, 1));
  EXPECT_EQ(std::vector<std::string>{Entry(kItemPrefix, "Failed to get group count from item in LX.  Continuing.")},
            LogEntries());
}

TEST_F(ItemSelectionTest, AGroupContainingItselfEndsTheWalk) {
  Host().GetCompany().items.Find(3)->groupMembers = {4, 1};  // 1 -> 3 -> 1
  EXPECT_EQ("1 2 3 4 5 ", Items(E_FAIL, 1));
  Host().GetCompany().items.Find(3)->groupMembers = {3};
  Items(E_FAIL, 3);
  EXPECT_EQ((std::vector<std::string>(2, Entry(kItemPrefix, kItemCycle))), LogEntries());
}

// 40,000 members, each also in a second group and nested 40,000 deep: every one is marked once,
// without deep recursion, counted past 16 bits.
TEST_F(ItemSelectionTest, ManyAndDeeplyNestedMembersAreWalkedOnce) {
  auto& items = Host().GetCompany().items;
  constexpr LONG kMembers = 40000;
  for (LONG recNum = 100; recNum < 100 + kMembers; ++recNum) {
    refhost::Item item;
    item.recNum = recNum;
    item.name = u"Member";
    item.type = itGROUP;
    if (recNum + 1 < 100 + kMembers) item.groupMembers = {recNum + 1};
    items.Add(std::move(item));
  }
  auto& kit = items.Find(1)->groupMembers;
  for (LONG recNum = 100; recNum < 100 + kMembers; ++recNum) kit.push_back(recNum);
  map_.Clear();
  EXPECT_EQ(S_OK, CUploadSelection(map_, forms_, false).AddItemToMap(Item(1)));
  EXPECT_EQ(size_t(5 + kMembers), map_.Of(RecordKind::kItem).size());
}

}  // namespace
}  // namespace parcelon::test
