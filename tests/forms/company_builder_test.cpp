// The company block and the two sales tax aggregates against the reference host, with every
// failure reached through its faults. The whole block of a company with every value is in the
// whole sends (tests/component/sends).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "forms/CompanyBuilder.h"
#include "forms/FormsTestHost.h"
#include "forms/SalesTaxBuilder.h"
#include "host/HostModel.h"
#include "support/FakeHostValues.h"

namespace parcelon::test {
namespace {

constexpr char kCompany[] = R"({
  "company": {
    "companyName": "Acme & Sons",
    "address": {"lines": ["1 Main St", "Suite 5"], "city": "Springfield", "state": "IL",
                "postalCode": "62701", "country": "USA"},
    "email": "billing@acme.test",
    "phone": "555-0100"
  },
  "items": [
    {"recNum": 29, "name": "Taxes", "type": "service"},
    {"recNum": 30, "name": "County <5%>", "type": "taxComp", "parent": 29}
  ]
})";

const std::string kEmail = "<CompanyEmail>billing@acme.test</CompanyEmail>\n";
const std::string kPhone = "<CompanyPhone>555-0100</CompanyPhone>\n";
const std::string kUpToEmail = "<Company>\n<CompanyName>Acme &amp; Sons</CompanyName>\n" + kEmail;
const std::string kWholeCompany =
    kUpToEmail +
    "<Address>\n<Addr1>1 Main St</Addr1>\n<Addr2>Suite 5</Addr2>\n<City>Springfield</City>\n<State>IL</State>\n"
    "<PostalCode>62701</PostalCode>\n<Country>USA</Country>\n</Address>\n" +
    kPhone + "</Company>\n";

constexpr char kCompanyPrefix[] = "Parcelon:CCompanyBuilder::BuildXML(): ";
const std::string kNoEmail = "Failed to get email address from company info (2) in LX." + kSkipping;
const std::string kNoPhone = "Failed to get phone number from company info (2) in LX." + kSkipping;

class CompanyBuilderTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    UseCompany(kCompany);
  }

  // The block's text at `depth` and its status.
  std::string Build(HRESULT expected, uint32_t depth = 0) {
    return Written(expected, [&](XMLBuilder& b) { return CCompanyBuilder(CompanyFile().Get()).BuildXML(b); }, depth);
  }
};

TEST_F(CompanyBuilderTest, IndentsWithTheSwitch) {
  WriteSettings("NetworkAdapter.IndentXML=1\n");
  EXPECT_EQ(
      "    <Company>\n      <CompanyName>Acme &amp; Sons</CompanyName>\n"
      "      <CompanyEmail>billing@acme.test</CompanyEmail>\n      <Address>\n        <Addr1>1 Main St</Addr1>\n"
      "        <Addr2>Suite 5</Addr2>\n        <City>Springfield</City>\n        <State>IL</State>\n"
      "        <PostalCode>62701</PostalCode>\n        <Country>USA</Country>\n      </Address>\n"
      "      <CompanyPhone>555-0100</CompanyPhone>\n    </Company>\n",
      Build(S_OK, 2));
}

struct CompanyFault {
  const char* operation;  // a fault, or an interface made unavailable
  HRESULT hr;
  HRESULT status;  // what BuildXML returns
  std::string text;
  std::vector<std::string> log;  // after the prefix, without the code
};

class CompanyFaultTest : public CompanyBuilderTest, public ::testing::WithParamInterface<CompanyFault> {};

TEST_P(CompanyFaultTest, LogsAndSkipsOrStops) {
  const CompanyFault& fault = GetParam();
  Inject({fault.operation, {}, fault.hr});
  EXPECT_EQ(fault.text, Build(fault.status));
  std::vector<std::string> log;
  for (const std::string& message : fault.log) log.push_back(Entry(kCompanyPrefix, message, HexCode(fault.hr)));
  EXPECT_EQ(log, LogEntries());
}

INSTANTIATE_TEST_SUITE_P(
    Reads, CompanyFaultTest,
    ::testing::Values(
        CompanyFault{"ICompanyFile::GetCompanyInfo", E_FAIL, E_FAIL, "",
                     {"Failed to get company info from company file in LX."}},
        CompanyFault{"ICompanyInfo::GetCompanyName", E_ACCESSDENIED, E_ACCESSDENIED, "<Company>\n",
                     {"Failed to get company name from company info in LX."}},
        CompanyFault{"ICompanyInfo::GetAddress", E_FAIL, E_FAIL, kUpToEmail,
                     {"Failed to get address lines from company info in LX."}},
        CompanyFault{"IAddress::GetPostalCode", E_OUTOFMEMORY, E_OUTOFMEMORY, kUpToEmail,
                     {"Failed to get address lines from company info in LX."}},
        CompanyFault{"ICompanyInfo2::GetEmail", E_FAIL, S_OK, WithoutLines(kWholeCompany, {kEmail}), {kNoEmail}},
        CompanyFault{"ICompanyInfo2::GetPhone", E_FAIL, S_OK, WithoutLines(kWholeCompany, {kPhone}), {kNoPhone}},
        // Without the second company info the block has name and address only.
        CompanyFault{"ICompanyInfo2", E_NOINTERFACE, S_OK, WithoutLines(kWholeCompany, {kEmail, kPhone}),
                     {kNoEmail, kNoPhone}}));

TEST_F(CompanyBuilderTest, EmptyAddressIsLeftOut) {
  UseCompany(R"({"company": {"companyName": "Bare"}})");
  EXPECT_EQ("<Company>\n<CompanyName>Bare</CompanyName>\n<CompanyEmail></CompanyEmail>\n"
            "<CompanyPhone></CompanyPhone>\n</Company>\n",
            Build(S_OK));
}

TEST_F(CompanyBuilderTest, MissingCompanyFileRaisesPointerError) {
  XMLBuilder builder(0, 4096);
  EXPECT_EQ(E_POINTER,
            ErrorRaisedBy([&] { CCompanyBuilder(static_cast<ICompanyFile*>(nullptr)).BuildXML(builder); }));
  EXPECT_EQ(0u, builder.Buffer()->GetLength());
}

// ---- Sales tax ------------------------------------------------------------------------------

class SalesTaxTest : public CompanyBuilderTest {
 protected:
  IItemPtr SalesTaxItem() {
    ComPtr<ILists> lists;
    EXPECT_EQ(S_OK, CompanyFile()->GetLists(lists.ReleaseAndGetAddressOf()));
    ComPtr<IItems> items;
    EXPECT_EQ(S_OK, lists->GetItems(items.ReleaseAndGetAddressOf()));
    VARIANT recNum;
    VariantInit(&recNum);
    recNum.vt = VT_I4;
    recNum.lVal = 30;
    IItemPtr item;
    EXPECT_EQ(S_OK, items->GetItemByRecNum(recNum, item.ReleaseAndGetAddressOf()));
    return item;
  }
  static IAmountPtr Amount(const char* text, HRESULT textResult = S_OK) {
    auto* amount = new FakeAmount(text);
    amount->textResult = textResult;
    return IAmountPtr(amount);
  }

  template <class Builder>
  static std::string Build(Builder&& taxBuilder, HRESULT expected) {
    return Written(expected, [&](XMLBuilder& b) { return taxBuilder.BuildXML(b); });
  }
};

TEST_F(SalesTaxTest, SalesTaxWritesNameRateAndTotal) {
  EXPECT_EQ("<SalesTax>\n<ItemName>Taxes:County &lt;5%&gt;</ItemName>\n<Rate>8.25</Rate>\n"
            "<SalesTaxTotal>12.30</SalesTaxTotal>\n</SalesTax>\n",
            Build(CSalesTaxBuilder(SalesTaxItem(), Amount("8.25"), 12.3), S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(SalesTaxTest, SalesTaxDataWritesIdPercentageTotalAndFlag) {
  EXPECT_EQ("<SalesTaxData>\n<SalesTaxID>30</SalesTaxID>\n<SalesTaxPercentage>7.50</SalesTaxPercentage>\n"
            "<SalesTaxTotal>-3.10</SalesTaxTotal>\n<PrintAsLineItem>Y</PrintAsLineItem>\n</SalesTaxData>\n",
            Build(CSalesTaxDataBuilder(SalesTaxItem(), Amount("7,50"), -3.1, VARIANT_TRUE), S_OK));
  EXPECT_EQ("<SalesTaxData>\n<SalesTaxID>30</SalesTaxID>\n<SalesTaxPercentage></SalesTaxPercentage>\n"
            "<SalesTaxTotal>0.00</SalesTaxTotal>\n<PrintAsLineItem>N</PrintAsLineItem>\n</SalesTaxData>\n",
            Build(CSalesTaxDataBuilder(SalesTaxItem(), Amount(""), 0, VARIANT_FALSE), S_OK));
}

// A failed read leaves the aggregate open with what was written before it.
TEST_F(SalesTaxTest, FailuresLeaveTheAggregateOpen) {
  const std::string tax = "Parcelon:CSalesTaxBuilder::BuildXML(XMLBuilder&): ";
  const std::string data = "Parcelon:CSalesTaxDataBuilder::BuildXML(XMLBuilder&): ";
  const struct {
    const char* fault;  // an item read failing, or none: the amount's text fails
    bool dataBuilder;
    HRESULT status;
    const char* text;
    std::string log;
  } cases[] = {
      {"IItem::GetFullName", false, E_FAIL, "<SalesTax>\n",
       Entry(tax, "Failed to get full name from item in LX for sales tax.")},
      {nullptr, false, E_ACCESSDENIED, "<SalesTax>\n<ItemName>Taxes:County &lt;5%&gt;</ItemName>\n",
       Entry(tax, "Failed converting amount to XML for rate for sales tax.", "0x80070005")},
      {"IItem::GetRecNum", true, E_FAIL, "<SalesTaxData>\n",
       Entry(data, "Failed to get record number from item in LX for sales tax data.")},
      {nullptr, true, E_ACCESSDENIED, "<SalesTaxData>\n<SalesTaxID>30</SalesTaxID>\n",
       Entry(data, "Failed converting amount to XML for sales tax percentage.", "0x80070005")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    StartCase();
    if (c.fault) {
      ASSERT_TRUE(Faults().Fail(c.fault, E_FAIL));
    }
    const IAmountPtr amount = Amount("1", c.fault ? S_OK : E_ACCESSDENIED);
    EXPECT_EQ(c.text, c.dataBuilder ? Build(CSalesTaxDataBuilder(SalesTaxItem(), amount, 1, VARIANT_TRUE), c.status)
                                    : Build(CSalesTaxBuilder(SalesTaxItem(), amount, 1), c.status));
    EXPECT_EQ(std::vector<std::string>{c.log}, LogEntries());
  }
}

TEST_F(SalesTaxTest, MissingItemOrAmountRaisesPointerError) {
  XMLBuilder builder(0, 4096);
  EXPECT_EQ(E_POINTER, ErrorRaisedBy([&] { CSalesTaxBuilder(nullptr, Amount("1"), 1).BuildXML(builder); }));
  EXPECT_EQ(E_POINTER, ErrorRaisedBy([&] { CSalesTaxBuilder(SalesTaxItem(), nullptr, 1).BuildXML(builder); }));
  EXPECT_EQ(E_POINTER,
            ErrorRaisedBy([&] { CSalesTaxDataBuilder(nullptr, Amount("1"), 1, VARIANT_TRUE).BuildXML(builder); }));
}

}  // namespace
}  // namespace parcelon::test
