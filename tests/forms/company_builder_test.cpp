// The company block and the two sales tax aggregates against the reference host, with every
// failure reached through its faults.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "forms/CompanyBuilder.h"
#include "forms/SalesTaxBuilder.h"
#include "forms/FormsTestHost.h"
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

constexpr char kWholeCompany[] =
    "<Company>\n"
    "<CompanyName>Acme &amp; Sons</CompanyName>\n"
    "<CompanyEmail>billing@acme.test</CompanyEmail>\n"
    "<Address>\n"
    "<Addr1>1 Main St</Addr1>\n"
    "<Addr2>Suite 5</Addr2>\n"
    "<City>Springfield</City>\n"
    "<State>IL</State>\n"
    "<PostalCode>62701</PostalCode>\n"
    "<Country>USA</Country>\n"
    "</Address>\n"
    "<CompanyPhone>555-0100</CompanyPhone>\n"
    "</Company>\n";

constexpr char kCompanyPrefix[] = "Parcelon:CCompanyBuilder::BuildXML(): ";

class CompanyBuilderTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    UseCompany(kCompany);
  }

  // The block's text and status.
  std::string Build(HRESULT expected) {
    XMLBuilder builder(0, 4096);
    EXPECT_EQ(expected, CCompanyBuilder(CompanyFile().Get()).BuildXML(builder));
    return std::string(builder.Buffer()->GetData(), builder.Buffer()->GetLength());
  }
};

TEST_F(CompanyBuilderTest, WritesNameEmailAddressAndPhone) {
  EXPECT_EQ(kWholeCompany, Build(S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(CompanyBuilderTest, IndentsWithTheSwitch) {
  WriteSettings("NetworkAdapter.IndentXML=1\n");
  XMLBuilder builder(2, 4096);
  EXPECT_EQ(S_OK, CCompanyBuilder(CompanyFile().Get()).BuildXML(builder));
  EXPECT_EQ(
      "    <Company>\n"
      "      <CompanyName>Acme &amp; Sons</CompanyName>\n"
      "      <CompanyEmail>billing@acme.test</CompanyEmail>\n"
      "      <Address>\n"
      "        <Addr1>1 Main St</Addr1>\n"
      "        <Addr2>Suite 5</Addr2>\n"
      "        <City>Springfield</City>\n"
      "        <State>IL</State>\n"
      "        <PostalCode>62701</PostalCode>\n"
      "        <Country>USA</Country>\n"
      "      </Address>\n"
      "      <CompanyPhone>555-0100</CompanyPhone>\n"
      "    </Company>\n",
      std::string(builder.Buffer()->GetData(), builder.Buffer()->GetLength()));
}

struct CompanyFault {
  const char* operation;
  HRESULT hr;
  HRESULT status;          // what BuildXML returns
  const char* text;        // what is written
  const char* logMessage;  // the one log entry, after the prefix
};

class CompanyFaultTest : public CompanyBuilderTest, public ::testing::WithParamInterface<CompanyFault> {};

TEST_P(CompanyFaultTest, LogsAndSkipsOrStops) {
  const CompanyFault& fault = GetParam();
  ASSERT_TRUE(Faults().Fail(fault.operation, fault.hr));
  EXPECT_EQ(fault.text, Build(fault.status));
  char hr[16];
  std::snprintf(hr, sizeof hr, "%#lx", static_cast<unsigned long>(static_cast<uint32_t>(fault.hr)));
  EXPECT_EQ(std::vector<std::string>{kCompanyPrefix + std::string(fault.logMessage) + "  HRESULT=" + hr},
            LogEntries());
}

constexpr char kUpToEmail[] =
    "<Company>\n"
    "<CompanyName>Acme &amp; Sons</CompanyName>\n"
    "<CompanyEmail>billing@acme.test</CompanyEmail>\n";

INSTANTIATE_TEST_SUITE_P(
    Reads, CompanyFaultTest,
    ::testing::Values(
        CompanyFault{"ICompanyFile::GetCompanyInfo", E_FAIL, E_FAIL, "",
                     "Failed to get company info from company file in LX."},
        CompanyFault{"ICompanyInfo::GetCompanyName", E_ACCESSDENIED, E_ACCESSDENIED, "<Company>\n",
                     "Failed to get company name from company info in LX."},
        CompanyFault{"ICompanyInfo::GetAddress", E_FAIL, E_FAIL, kUpToEmail,
                     "Failed to get address lines from company info in LX."},
        CompanyFault{"IAddress::GetPostalCode", E_OUTOFMEMORY, E_OUTOFMEMORY, kUpToEmail,
                     "Failed to get address lines from company info in LX."},
        CompanyFault{"ICompanyInfo2::GetEmail", E_FAIL, S_OK,
                     "<Company>\n"
                     "<CompanyName>Acme &amp; Sons</CompanyName>\n"
                     "<Address>\n"
                     "<Addr1>1 Main St</Addr1>\n"
                     "<Addr2>Suite 5</Addr2>\n"
                     "<City>Springfield</City>\n"
                     "<State>IL</State>\n"
                     "<PostalCode>62701</PostalCode>\n"
                     "<Country>USA</Country>\n"
                     "</Address>\n"
                     "<CompanyPhone>555-0100</CompanyPhone>\n"
                     "</Company>\n",
                     "Failed to get email address from company info (2) in LX.  Skipping this "
                     "optional element."},
        CompanyFault{"ICompanyInfo2::GetPhone", E_FAIL, S_OK,
                     "<Company>\n"
                     "<CompanyName>Acme &amp; Sons</CompanyName>\n"
                     "<CompanyEmail>billing@acme.test</CompanyEmail>\n"
                     "<Address>\n"
                     "<Addr1>1 Main St</Addr1>\n"
                     "<Addr2>Suite 5</Addr2>\n"
                     "<City>Springfield</City>\n"
                     "<State>IL</State>\n"
                     "<PostalCode>62701</PostalCode>\n"
                     "<Country>USA</Country>\n"
                     "</Address>\n"
                     "</Company>\n",
                     "Failed to get phone number from company info (2) in LX.  Skipping this "
                     "optional element."}));

TEST_F(CompanyBuilderTest, WithoutSecondCompanyInfoWritesNameAndAddressOnly) {
  ASSERT_TRUE(Faults().MakeUnavailable("ICompanyInfo2"));
  EXPECT_EQ(
      "<Company>\n"
      "<CompanyName>Acme &amp; Sons</CompanyName>\n"
      "<Address>\n"
      "<Addr1>1 Main St</Addr1>\n"
      "<Addr2>Suite 5</Addr2>\n"
      "<City>Springfield</City>\n"
      "<State>IL</State>\n"
      "<PostalCode>62701</PostalCode>\n"
      "<Country>USA</Country>\n"
      "</Address>\n"
      "</Company>\n",
      Build(S_OK));
  EXPECT_EQ((std::vector<std::string>{
                std::string(kCompanyPrefix) +
                    "Failed to get email address from company info (2) in LX.  Skipping this "
                    "optional element.  HRESULT=0x80004002",
                std::string(kCompanyPrefix) +
                    "Failed to get phone number from company info (2) in LX.  Skipping this "
                    "optional element.  HRESULT=0x80004002"}),
            LogEntries());
}

TEST_F(CompanyBuilderTest, EmptyAddressIsLeftOut) {
  UseCompany(R"({"company": {"companyName": "Bare"}})");
  EXPECT_EQ(
      "<Company>\n"
      "<CompanyName>Bare</CompanyName>\n"
      "<CompanyEmail></CompanyEmail>\n"
      "<CompanyPhone></CompanyPhone>\n"
      "</Company>\n",
      Build(S_OK));
}

TEST_F(CompanyBuilderTest, MissingCompanyFileRaisesPointerError) {
  XMLBuilder builder(0, 4096);
  try {
    CCompanyBuilder(static_cast<ICompanyFile*>(nullptr)).BuildXML(builder);
    ADD_FAILURE() << "no ComError";
  } catch (const ComError& error) {
    EXPECT_EQ(E_POINTER, error.Error());
  }
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
  std::string Build(Builder&& taxBuilder, HRESULT expected) {
    XMLBuilder builder(0, 4096);
    EXPECT_EQ(expected, taxBuilder.BuildXML(builder));
    return std::string(builder.Buffer()->GetData(), builder.Buffer()->GetLength());
  }
};

TEST_F(SalesTaxTest, SalesTaxWritesNameRateAndTotal) {
  EXPECT_EQ(
      "<SalesTax>\n"
      "<ItemName>Taxes:County &lt;5%&gt;</ItemName>\n"
      "<Rate>8.25</Rate>\n"
      "<SalesTaxTotal>12.30</SalesTaxTotal>\n"
      "</SalesTax>\n",
      Build(CSalesTaxBuilder(SalesTaxItem(), Amount("8.25"), 12.3), S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(SalesTaxTest, SalesTaxDataWritesIdPercentageTotalAndFlag) {
  EXPECT_EQ(
      "<SalesTaxData>\n"
      "<SalesTaxID>30</SalesTaxID>\n"
      "<SalesTaxPercentage>7.50</SalesTaxPercentage>\n"
      "<SalesTaxTotal>-3.10</SalesTaxTotal>\n"
      "<PrintAsLineItem>Y</PrintAsLineItem>\n"
      "</SalesTaxData>\n"
      "<SalesTaxData>\n"
      "<SalesTaxID>30</SalesTaxID>\n"
      "<SalesTaxPercentage></SalesTaxPercentage>\n"
      "<SalesTaxTotal>0.00</SalesTaxTotal>\n"
      "<PrintAsLineItem>N</PrintAsLineItem>\n"
      "</SalesTaxData>\n",
      Build(CSalesTaxDataBuilder(SalesTaxItem(), Amount("7,50"), -3.1, VARIANT_TRUE), S_OK) +
          Build(CSalesTaxDataBuilder(SalesTaxItem(), Amount(""), 0, VARIANT_FALSE), S_OK));
}

TEST_F(SalesTaxTest, SalesTaxFailuresLeaveTheAggregateOpen) {
  ASSERT_TRUE(Faults().Fail("IItem::GetFullName", E_FAIL));
  EXPECT_EQ("<SalesTax>\n", Build(CSalesTaxBuilder(SalesTaxItem(), Amount("8.25"), 1), E_FAIL));
  Faults().Clear();
  EXPECT_EQ("<SalesTax>\n<ItemName>Taxes:County &lt;5%&gt;</ItemName>\n",
            Build(CSalesTaxBuilder(SalesTaxItem(), Amount("8.25", E_ACCESSDENIED), 1), E_ACCESSDENIED));
  EXPECT_EQ((std::vector<std::string>{
                "Parcelon:CSalesTaxBuilder::BuildXML(XMLBuilder&): Failed to get full name from "
                "item in LX for sales tax.  HRESULT=0x80004005",
                "Parcelon:CSalesTaxBuilder::BuildXML(XMLBuilder&): Failed converting amount to "
                "XML for rate for sales tax.  HRESULT=0x80070005"}),
            LogEntries());
}

TEST_F(SalesTaxTest, SalesTaxDataFailuresLeaveTheAggregateOpen) {
  ASSERT_TRUE(Faults().Fail("IItem::GetRecNum", E_FAIL));
  EXPECT_EQ("<SalesTaxData>\n",
            Build(CSalesTaxDataBuilder(SalesTaxItem(), Amount("1"), 1, VARIANT_TRUE), E_FAIL));
  Faults().Clear();
  EXPECT_EQ("<SalesTaxData>\n<SalesTaxID>30</SalesTaxID>\n",
            Build(CSalesTaxDataBuilder(SalesTaxItem(), Amount("1", E_ACCESSDENIED), 1, VARIANT_TRUE),
                  E_ACCESSDENIED));
  EXPECT_EQ((std::vector<std::string>{
                "Parcelon:CSalesTaxDataBuilder::BuildXML(XMLBuilder&): Failed to get record "
                "number from item in LX for sales tax data.  HRESULT=0x80004005",
                "Parcelon:CSalesTaxDataBuilder::BuildXML(XMLBuilder&): Failed converting amount "
                "to XML for sales tax percentage.  HRESULT=0x80070005"}),
            LogEntries());
}

TEST_F(SalesTaxTest, MissingItemOrAmountRaisesPointerError) {
  XMLBuilder builder(0, 4096);
  const auto code = [&](auto&& action) {
    try {
      action();
    } catch (const ComError& error) {
      return error.Error();
    }
    return S_OK;
  };
  EXPECT_EQ(E_POINTER, code([&] { CSalesTaxBuilder(nullptr, Amount("1"), 1).BuildXML(builder); }));
  EXPECT_EQ(E_POINTER, code([&] { CSalesTaxBuilder(SalesTaxItem(), nullptr, 1).BuildXML(builder); }));
  EXPECT_EQ(E_POINTER,
            code([&] { CSalesTaxDataBuilder(nullptr, Amount("1"), 1, VARIANT_TRUE).BuildXML(builder); }));
}

}  // namespace
}  // namespace parcelon::test
