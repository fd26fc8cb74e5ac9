// The kept list records that no request reaches (classes, customer messages, sales reps, ship
// methods): their whole elements, their sections and the log line of each failed read.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UploadTestSupport.h"
#include "forms/FormParts.h"
#include "upload/DataUploadRequest.h"
#include "upload/ListItemBuilders.h"

namespace parcelon::test {
namespace {

// Class 5 has never been uploaded; class 6 changed after its upload.
constexpr char kCompany[] = R"({
  "customers": [{"recNum": 10, "name": "Harbor"}],
  "classes": [
    {"recNum": 5, "name": "West", "modTime": 1699999000},
    {"recNum": 6, "name": "Docks", "parent": 5, "modTime": 1699999000,
     "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1699990000}]}
  ],
  "customerMessages": [{"recNum": 7, "name": "Thank you", "isHidden": true, "modTime": 1699999500}],
  "salesReps": [{"recNum": 8, "name": "AB", "associatedName": 10}],
  "shipMethods": [{"recNum": 9, "name": "Courier"}]
})";

const std::string kClass5 =
    "<ClassItem>\n<ClientID>5</ClientID>\n<Name>West</Name>\n<Hidden>N</Hidden>\n<TMModStamp>1699999000</TMModStamp>\n"
    "<Sublevel>0</Sublevel>\n</ClassItem>\n";
const std::string kClass6 =
    "<ClassItem>\n<ClientID>6</ClientID>\n<Name>Docks</Name>\n<Hidden>N</Hidden>\n<TMModStamp>1699999000</TMModStamp>\n"
    "<ParentID>5</ParentID>\n<ParentRootID>5</ParentRootID>\n<Sublevel>1</Sublevel>\n</ClassItem>\n";
const std::string kMessage7 =
    "<CustMessageItem>\n<ClientID>7</ClientID>\n<Name>Thank you</Name>\n<Hidden>Y</Hidden>\n"
    "<TMModStamp>1699999500</TMModStamp>\n</CustMessageItem>\n";
const std::string kSalesRep8 =
    "<SalesRepItem>\n<ClientID>8</ClientID>\n<Name>AB</Name>\n<Hidden>N</Hidden>\n<AssocNameID>10</AssocNameID>\n"
    "</SalesRepItem>\n";
const std::string kShipMethod9 =
    "<ShipMethodItem>\n<ClientID>9</ClientID>\n<Name>Courier</Name>\n<Hidden>N</Hidden>\n</ShipMethodItem>\n";

std::string Prefix(const std::string& name) { return "Parcelon:" + name + "::BuildXML(XMLBuilder&): "; }
std::string SectionPrefix(const std::string& name) {
  return "Parcelon:CDataUploadHelper::" + name + "(CRecNumMap&, XMLBuilder&): ";
}

class KeptRecordsTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    UseCompany(kCompany);
  }

  template <class Builder, class Record, class List>
  std::string Build(HRESULT expected, HRESULT (STDMETHODCALLTYPE ILists::*getList)(List**), LONG recNum) {
    const ComPtr<Record> record = FindListRecord<Record>(CompanyFile(), getList, recNum);
    return Written(expected, [&](XMLBuilder& b) { return Builder(record).BuildXML(b); });
  }
  std::string Class(HRESULT expected, LONG recNum) {
    return Build<CClassItemBuilder, IClass>(expected, &ILists::GetClasses, recNum);
  }
  std::string Message(HRESULT expected) {
    return Build<CCustMessageItemBuilder, ICustomerMessage>(expected, &ILists::GetCustomerMessages, 7);
  }
  std::string SalesRep(HRESULT expected) { return Build<CSalesRepItemBuilder, ISalesRep>(expected, &ILists::GetSalesReps, 8); }
  std::string ShipMethod(HRESULT expected) {
    return Build<CShipMethodItemBuilder, IShipMethod>(expected, &ILists::GetShipMethods, 9);
  }

  // The four sections, with class 5, sales rep 8 and ship method 9 selected; stops at the first failure.
  std::string Sections(HRESULT expected) {
    map_.Clear();
    for (const auto& [kind, recNum] : {std::pair{RecordKind::kClass, 5}, std::pair{RecordKind::kSalesRep, 8},
                                       std::pair{RecordKind::kShipMethod, 9}})
      map_(kind, recNum) = kMarkSelected;
    CDataUploadHelper helper(CompanyFile(), kNow - 1000, false);
    return Written(expected, [&](XMLBuilder& b) {
      for (auto add : {&CDataUploadHelper::AddClassItems, &CDataUploadHelper::AddCustMessageItems,
                       &CDataUploadHelper::AddSalesRepItems, &CDataUploadHelper::AddShipMethodItems})
        RETURN_IF_FAILED((helper.*add)(map_, b));
      return S_OK;
    });
  }

  CRecNumMap map_;
};

TEST_F(KeptRecordsTest, WholeElements) {
  EXPECT_EQ(kClass5, Class(S_OK, 5));
  EXPECT_EQ(kClass6, Class(S_OK, 6));
  EXPECT_EQ(kMessage7, Message(S_OK));
  EXPECT_EQ(kSalesRep8, SalesRep(S_OK));
  EXPECT_EQ(kShipMethod9, ShipMethod(S_OK));
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

// An optional read leaves its line out; a required one ends the element where it stands.
TEST_F(KeptRecordsTest, EachFailedReadHasItsLine) {
  struct Case {
    HostFault fault;
    HRESULT result;
    std::string prefix;
    std::string message;
    std::string line;  // the line left out, or the start of the line where the element ends
    std::string whole;
  };
  const std::string classPrefix = Prefix("CClassItemBuilder");
  const std::string repPrefix = Prefix("CSalesRepItemBuilder");
  const Case cases[] = {
      {{"IClass::GetParent", 6, E_FAIL}, S_OK, classPrefix, "Failed to get parent class from class in LX." + kSkipping,
       "<ParentID>5</ParentID>\n", kClass6},
      {{"IClass::GetParentRoot", 6, E_FAIL}, S_OK, classPrefix,
       "Failed to get parent class root from class in LX." + kSkipping, "<ParentRootID>5</ParentRootID>\n", kClass6},
      {{"IClass::GetSubLevel", 6, E_FAIL}, S_OK, classPrefix, "Failed to get sub level from class in LX." + kSkipping,
       "<Sublevel>1</Sublevel>\n", kClass6},
      {{"IClass::GetModTime", 6, E_FAIL}, S_OK, classPrefix, "Failed to get mod time from class in LX." + kSkipping,
       "<TMModStamp>1699999000</TMModStamp>\n", kClass6},
      {{"IClass::GetName", 6, E_FAIL}, E_FAIL, classPrefix, "Failed to get name from class in LX.", "<Name>", kClass6},
      {{"ICustomerMessage::GetIsHidden", 7, E_FAIL}, E_FAIL, Prefix("CCustMessageItemBuilder"),
       "Failed to get hidden from customer message in LX..", "<Hidden>", kMessage7},
      {{"ICustomerMessage::GetModTime", 7, E_FAIL}, S_OK, Prefix("CCustMessageItemBuilder"),
       "Failed to get mod time from customer message in LX." + kSkipping, "<TMModStamp>1699999500</TMModStamp>\n",
       kMessage7},
      {{"ISalesRep::GetAssociatedName", 8, E_FAIL}, S_OK, repPrefix,
       "Failed to get associated name from sales rep in LX." + kSkipping, "<AssocNameID>10</AssocNameID>\n", kSalesRep8},
      {{"IName::GetRecNum", 10, E_FAIL}, S_OK, repPrefix,
       "Failed to get record number from associated name in LX while getting sales rep's associated name ID." + kSkipping,
       "<AssocNameID>10</AssocNameID>\n", kSalesRep8},
      {{"ISalesRep::GetIsHidden", 8, E_FAIL}, E_FAIL, repPrefix, "Failed to get hidden from sales rep in LX.", "<Hidden>",
       kSalesRep8},
      {{"IShipMethod::GetRecNum", 9, E_FAIL}, E_FAIL, Prefix("CShipMethodItemBuilder"),
       "Failed to get record number from ship method in LX.", "<ClientID>", kShipMethod9},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    std::string text;
    if (c.whole == kClass6) text = Class(c.result, 6);
    if (c.whole == kMessage7) text = Message(c.result);
    if (c.whole == kSalesRep8) text = SalesRep(c.result);
    if (c.whole == kShipMethod9) text = ShipMethod(c.result);
    EXPECT_EQ(SUCCEEDED(c.result) ? WithoutLines(c.whole, {c.line}) : c.whole.substr(0, c.whole.find(c.line)), text);
    EXPECT_EQ(std::vector<std::string>{Entry(c.prefix, c.message)}, LogEntries());
  }
}

// Class 5 is selected, class 6 changed since its upload; the customer message is neither and
// writes nothing.
TEST_F(KeptRecordsTest, SectionsWriteSelectedAndChangedRecords) {
  EXPECT_EQ("<ClassesAdd>\n" + kClass5 + kClass6 + "</ClassesAdd>\n<SalesRepsAdd>\n" + kSalesRep8 +
                "</SalesRepsAdd>\n<ShipMethodsAdd>\n" + kShipMethod9 + "</ShipMethodsAdd>\n",
            Sections(S_OK));
  EXPECT_EQ(uint32_t(kMarkSentSelected), *map_.Find(RecordKind::kClass, 5));
  EXPECT_EQ(uint32_t(kMarkSentChanged), *map_.Find(RecordKind::kClass, 6));
  EXPECT_EQ(nullptr, map_.Find(RecordKind::kCustomerMessage, 7));
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());

  struct Case {
    HostFault fault;
    std::vector<std::string> log;
  };
  const Case cases[] = {
      {{"ILists::GetClasses", std::nullopt, E_FAIL},
       {Entry(SectionPrefix("AddClassItems"), "Failed to get classes from lists in LX.")}},
      {{"IClasses::GetCount", std::nullopt, E_FAIL},
       {Entry(SectionPrefix("AddClassItems"), "Failed to get count from classes in LX.")}},
      {{"IClass::GetModTime", 6, E_FAIL}, {Entry(SectionPrefix("AddClassItems"), "Failed to get mod time from class in LX.")}},
      {{"ILists::GetCustomerMessages", std::nullopt, E_FAIL},
       {Entry(SectionPrefix("AddCustMessageItems"), "Failed to get customer messages from lists in LX.")}},
      {{"ICustomerMessage::GetAttributes", 7, E_FAIL},
       {Entry(SectionPrefix("AddCustMessageItems"), "Failed to get attributes from customer message(4) in LX.")}},
      {{"ISalesRep::GetRecNum", 8, E_FAIL},
       {Entry(SectionPrefix("AddSalesRepItems"), "Failed to get record number from sales rep in LX.")}},
      {{"IShipMethod::GetName", 9, E_FAIL},
       {Entry(Prefix("CShipMethodItemBuilder"), "Failed to get name from ship method in LX."),
        Entry(SectionPrefix("AddShipMethodItems"), "Failed while building ship method item XML.")}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    Sections(E_FAIL);
    EXPECT_EQ(c.log, LogEntries());
  }
}

}  // namespace
}  // namespace parcelon::test
