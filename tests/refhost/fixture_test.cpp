// Loading company fixtures: the exact message of each kind of malformed fixture, and a round trip
// of every list field through the host's interfaces, texts exactly as UTF-16. Arbitrary fixture
// texts (mutations of the sample among them) are fuzz/fixture_fuzzer.cpp's.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CompanyTestSupport.h"
#include "support/TestSupport.h"

namespace parcelon::refhost::test {
namespace {

struct BadFixture {
  const char* what;
  std::string fixture;
  std::string message;
};

std::string Repeated(const std::string& piece, int times) {
  std::string text;
  text.reserve(piece.size() * size_t(times));
  for (int i = 0; i < times; ++i) text += piece;
  return text;
}

// A chain of `length` customers, each the job of the one before.
std::string CustomerChain(int length) {
  std::string customers;
  for (int i = 1; i <= length; ++i)
    customers += std::string(i > 1 ? "," : "") + "{\"recNum\":" + std::to_string(i) +
                 ",\"name\":\"C" + std::to_string(i) + "\"" +
                 (i > 1 ? ",\"parent\":" + std::to_string(i - 1) : "") + "}";
  return "{\"customers\":[" + customers + "]}";
}

// Messages follow "company.json: "; an empty message stands for a parser's message of line 1.
const std::vector<BadFixture> kBadFixtures = {
    {"syntax error", "{\n  \"terms\": [\n    {\"recNum\": 1,, }\n  ]\n}",
     "line 3, column 18: syntax error while parsing object key - unexpected ','; expected string literal"},
    {"truncated document", R"({"terms": [)", ""},
    {"ill-formed UTF-8", "{\"terms\": [{\"recNum\": 1, \"name\": \"\xC3\x28\"}]}", ""},
    {"nesting too deep", std::string(40, '[') + std::string(40, ']'),
     "line 1, column 33: arrays and objects nested deeper than 32 levels"},
    {"document not an object", "[]", "expected an object, found an array"},
    {"unknown section", R"({"customer": []})", "customer: unknown field"},
    {"section not an array", R"({"terms": {}})", "terms: expected an array, found an object"},
    // Room is not reserved for a million customers before the first is read.
    {"a million bare numbers for customers", R"({"customers": [)" + Repeated("1,", 1'000'000) + "1]}",
     "/customers/0: expected an object, found a number"},
    {"record not an object", R"({"terms": [3]})", "/terms/0: expected an object, found a number"},
    {"wrong type", R"({"terms": [{"recNum": 1, "name": 5}]})", "/terms/0: name: expected a string, found a number"},
    {"missing record number", R"({"terms": [{"name": "Net 30"}]})", "/terms/0: recNum: missing required field"},
    {"record number out of range", R"({"terms": [{"recNum": 3000000000, "name": "A"}]})",
     "/terms/0: recNum: expected a whole number from 1 to 2147483647"},
    {"record number not whole", R"({"terms": [{"recNum": 1.5, "name": "A"}]})",
     "/terms/0: recNum: expected a whole number from 1 to 2147483647, found a number"},
    {"unknown field", R"({"terms": [{"recNum": 1, "name": "A", "dueDays": 3}]})", "/terms/0: dueDays: unknown field"},
    {"unknown enumeration name", R"({"terms": [{"recNum": 1, "name": "A", "type": "x"}]})",
     "/terms/0: type: expected one of standard, dateDriven or its number"},
    {"duplicate record number", R"({"terms": [{"recNum": 1, "name": "A"}, {"recNum": 1, "name": "B"}]})",
     "/terms/1: recNum: duplicate record number 1, first at /terms/0"},
    {"duplicate record number across name sections",
     R"({"customers": [{"recNum": 4, "name": "A"}], "otherNames": [{"recNum": 4, "name": "B"}]})",
     "/otherNames/0: recNum: duplicate record number 4, first at /customers/0"},
    {"duplicate record number, other names first",
     R"({"otherNames": [{"recNum": 4, "name": "B"}], "customers": [{"recNum": 3, "name": "A"}, )"
     R"({"recNum": 4, "name": "C"}]})",
     "/customers/1: recNum: duplicate record number 4, first at /otherNames/0"},
    {"section given twice", R"({"terms": [], "company": {}, "terms": []})", "/terms: a second section of this name"},
    {"cycle among customers listed after other names",
     R"({"otherNames": [{"recNum": 1, "name": "A"}], "customers": [{"recNum": 2, "name": "B", "parent": 3}, )"
     R"({"recNum": 3, "name": "C", "parent": 2}]})",
     "/customers/1: parent: the parent links form a cycle"},
    {"dangling parent", R"({"customers": [{"recNum": 1, "name": "A"}, {"recNum": 2, "name": "B", "parent": 9}]})",
     "/customers/1: parent: expected a record number of a customer or job"},
    {"parent that is not a customer",
     R"({"customers": [{"recNum": 2, "name": "B", "parent": 1}], "otherNames": [{"recNum": 1, "name": "A"}]})",
     "/customers/0: parent: expected a record number of a customer or job"},
    {"parent cycle",
     R"({"customers": [{"recNum": 1, "name": "A", "parent": 2}, {"recNum": 2, "name": "B", "parent": 1}]})",
     "/customers/1: parent: the parent links form a cycle"},
    {"own parent", R"({"classes": [{"recNum": 1, "name": "A", "parent": 1}]})",
     "/classes/0: parent: the parent links form a cycle"},
    {"tree too deep", CustomerChain(70), "/customers/64: parent: the tree is deeper than 63 levels"},
    {"dangling terms", R"({"customers": [{"recNum": 1, "name": "A", "terms": 4}]})",
     "/customers/0: terms: expected a record number of a term"},
    {"dangling associated name", R"({"salesReps": [{"recNum": 1, "name": "AB", "associatedName": 8}]})",
     "/salesReps/0: associatedName: expected a record number of a name"},
    {"group members of an item that is not a group", R"({"items": [{"recNum": 1, "name": "A", "groupItems": [1]}]})",
     "/items/0: groupItems: only items of type group or taxGroup have members"},
    {"dangling group member", R"({"items": [{"recNum": 1, "name": "A", "type": "group", "groupItems": [2]}]})",
     "/items/0: groupItems: expected record numbers of items"},
    // Whole numbers from 2^63 to 2^64 - 1 read as negative numbers once cast to 64 signed bits.
    {"amount above 64 bits", R"({"invoices": [{"recNum": 1, "amount": 18446744073709551615}]})",
     R"(/invoices/0: amount: expected an amount such as "-1234.50" (at most 17 digits, 2 decimals))"},
    {"subscription status above 64 bits", R"({"company": {"subscriptions": {"Mail": 18446744073709551615}}})",
     "/company/subscriptions/Mail: expected a whole number"},
    {"data file property above 64 bits",
     R"({"dataFileRecords": [{"name": "R", "properties": {"a/b": 18446744073709551615}}]})",
     "/dataFileRecords/0/properties/a~1b: expected a whole number from -9223372036854775808 to "
     "9223372036854775807"},
    {"bad modification time", R"({"terms": [{"recNum": 1, "name": "A", "modTime": "2009-03-07"}]})",
     R"(/terms/0: modTime: expected seconds since 1970 or a time such as "2009-03-07T14:30:00Z", from 1970 to 2038)"},
    {"date not in its form", R"({"invoices": [{"recNum": 1, "date": "2009-3-07"}]})",
     R"(/invoices/0: date: expected a date such as "2009-03-07" or "2009-03-07T14:30:00", from 1900)"},
    {"time not in its form", R"({"invoices": [{"recNum": 1, "date": "2009-03-07T14:3"}]})",
     R"(/invoices/0: date: expected a date such as "2009-03-07" or "2009-03-07T14:30:00", from 1900)"},
    {"duplicate attribute",
     R"({"terms": [{"recNum": 1, "name": "A", "attributes": [{"name": "T", "owner": "O"}, )"
     R"({"name": "T", "owner": "O", "value": 2}]}]})",
     "/terms/0/attributes/1: name: a second attribute of this name and owner"},
    {"too many address lines", R"({"company": {"address": {"lines": ["1", "2", "3", "4", "5"]}}})",
     "/company/address: lines: expected at most 4 lines"},
    {"fault of an unknown interface", R"({"faults": [{"operation": "IFoo::GetBar", "hresult": "E_FAIL"}]})",
     "/faults/0: operation: expected Interface::Method of a host interface"},
    {"fault that is no failure", R"({"faults": [{"operation": "IName::GetNote", "hresult": "0x00000001"}]})",
     R"(/faults/0: hresult: expected a failure code such as "0x80004005" or "E_FAIL")"},
    {"unknown unavailable interface", R"({"unavailable": ["ITerm3"]})",
     "/unavailable/0: expected the name of a host interface"},
    {"absent record of an unknown list", R"({"absent": [{"list": "vendors", "record": 1}]})",
     R"(/absent/0: list: expected the name of a list, such as "customers")"},
    {"absent record that does not exist", R"({"absent": [{"list": "customers", "record": 7}]})",
     "/absent/0: record: expected a record number of the list"},
    {"absent estimate that does not exist", R"({"absent": [{"list": "estimates", "record": 7}]})",
     "/absent/0: record: expected a record number of the list"},
};

TEST(BadFixture, FailsWithItsMessage) {
  for (const BadFixture& bad : kBadFixtures) {
    SCOPED_TRACE(bad.what);
    const std::string error = LoadError(bad.fixture);
    if (bad.message.empty())
      EXPECT_EQ(0u, error.find("company.json: line 1, column ")) << error;
    else
      EXPECT_EQ("company.json: " + bad.message, error);
  }
}

TEST(FixtureFile, MessagesNameTheFileAsGiven) {
  ScratchFolder folder;
  Company company;
  std::string error;
  EXPECT_EQ(STG_E_FILENOTFOUND, LoadFixtureFile(folder.File("absent.json"), company, error));
  EXPECT_EQ(folder.File("absent.json") + ": cannot open the file", error);
  WriteFile(folder.File("bad.json"), "{\"terms\": [{\"recNum\": 0, \"name\": \"A\"}]}");
  EXPECT_EQ(kInvalidFixture, LoadFixtureFile(folder.File("bad.json"), company, error));
  EXPECT_EQ(folder.File("bad.json") + ": /terms/0: recNum: expected a whole number from 1 to 2147483647", error);
}

// Names that need escaping in XML, non-ASCII letters, a typographic apostrophe and a character
// beyond the basic plane.
constexpr const char* kRoundTrip = R"({
  "company": {
    "companyName": "Smith & Sons <Ltd>",
    "address": {"lines": ["1 \"Main\" St", "Suite 2"], "city": "Zürich", "state": "ZH",
                "postalCode": "8001", "country": "Schweiz", "note": "back door"},
    "legalCompanyName": "Smith & Sons Holding",
    "legalAddress": {"lines": ["Bahnhofstrasse 1", "Postfach"], "city": "Zürich", "state": "ZH",
                     "postalCode": "8002", "country": "CH"},
    "email": "office@smith.example", "phone": "+41 44 000 00 00",
    "companyUID": "uid-1", "companyAuthID": "auth-1",
    "subscriptions": {"lxob1.lxn": 3}
  },
  "terms": [
    {"recNum": 10, "name": "2% 10 Net 30", "type": "standard", "stdDueDays": 30,
     "stdDiscountDays": 10, "discountPct": 2.0, "minDays": 5, "modTime": 1236433800},
    {"recNum": 11, "name": "Due 15th", "type": "dateDriven", "dayOfMonthDue": 15,
     "discountDayOfMonth": 5, "modTime": "2009-03-07T13:50:00Z", "isHidden": true}
  ],
  "customers": [
    {"recNum": 1, "name": "O’Brien & “Partners”", "companyName": "Ünal <GmbH>",
     "salutation": "Dr.", "firstName": "Åsa", "middleInitial": "J", "lastName": "Øster 𝄞",
     "contactName1": "c1", "contactName2": "c2", "telephoneNumber1": "t1",
     "telephoneNumber2": "t2", "faxNumber": "f", "email": "e@x", "accountNumber": "A-1",
     "note": "n", "jobStatus": "inProgress", "terms": 10, "salesRep": 40,
     "billingAddress": {"lines": ["B1"], "city": "Bern"},
     "shippingAddress": {"lines": ["S1", "S2", "S3", "S4"], "note": "dock"},
     "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}",
                     "value": 1234}]}
  ],
  "otherNames": [{"recNum": 30, "name": "Rep Person"}],
  "salesReps": [{"recNum": 40, "name": "RP", "associatedName": 30}],
  "items": [{"recNum": 50, "name": "Consulting", "type": "service", "longDescription": "Hours"}],
  "classes": [{"recNum": 60, "name": "East"}],
  "shipMethods": [{"recNum": 70, "name": "UPS"}],
  "customerMessages": [{"recNum": 80, "name": "Thank you!"}]
})";

// A getter of a BSTR of interface I.
template <class I>
using TextGetter = HRESULT (STDMETHODCALLTYPE I::*)(BSTR*);

// The texts the getters give, compared as UTF-16.
template <class I>
void ExpectTexts(const ComPtr<I>& object, const std::vector<std::pair<TextGetter<I>, Text>>& expected) {
  ASSERT_TRUE(object);
  for (size_t i = 0; i < expected.size(); ++i) {
    BSTR text = nullptr;
    ASSERT_EQ(S_OK, (object.Get()->*expected[i].first)(&text)) << "getter " << i;
    EXPECT_EQ(expected[i].second, Take(text)) << "getter " << i;
  }
}

TEST(FixtureRoundTrip, CompanyInformation) {
  ComPtr<ICompanyFile> file;
  ASSERT_EQ(S_OK, NewCompanyFile(LoadCompany(kRoundTrip), file.ReleaseAndGetAddressOf()));
  const ComPtr<ICompanyInfo> info = Get(file, &ICompanyFile::GetCompanyInfo);
  ComPtr<ICompanyInfo2> info2;
  ASSERT_EQ(S_OK, info.As(info2));
  ExpectTexts(info2, {{&ICompanyInfo2::GetCompanyName, u"Smith & Sons <Ltd>"},
                      {&ICompanyInfo2::GetLegalCompanyName, u"Smith & Sons Holding"},
                      {&ICompanyInfo2::GetLegalAddress1, u"Bahnhofstrasse 1"},
                      {&ICompanyInfo2::GetLegalAddress2, u"Postfach"},
                      {&ICompanyInfo2::GetLegalCity, u"Zürich"},
                      {&ICompanyInfo2::GetLegalState, u"ZH"},
                      {&ICompanyInfo2::GetLegalZip, u"8002"},
                      {&ICompanyInfo2::GetLegalCountry, u"CH"},
                      {&ICompanyInfo2::GetEmail, u"office@smith.example"},
                      {&ICompanyInfo2::GetPhone, u"+41 44 000 00 00"}});
  const ComPtr<IAddress> address = Get(info, &ICompanyInfo::GetAddress);
  ExpectTexts(address, {{&IAddress::GetCity, u"Zürich"},
                        {&IAddress::GetState, u"ZH"},
                        {&IAddress::GetPostalCode, u"8001"},
                        {&IAddress::GetCountry, u"Schweiz"},
                        {&IAddress::GetNote, u"back door"}});
  const std::string lines[] = {"1 \"Main\" St", "Suite 2", "", ""};
  for (LONG i = 0; i < 4; ++i) EXPECT_EQ(lines[i], Get(address, &IAddress::GetLine, i));
  BSTR line = nullptr;
  EXPECT_EQ(E_INVALIDARG, address->GetLine(4, &line));

  ComPtr<ICompanyFile2> file2;
  ASSERT_EQ(S_OK, file.As(file2));
  const ComPtr<IServiceSubscriptionStatus> status =
      Get(Get(file2, &ICompanyFile2::GetCompanyProfile), &ICompanyProfile::GetServiceSubscriptionStatus);
  LONG value = -1;
  EXPECT_EQ(S_OK, status->GetStatus(MakeBstr("lxob1.lxn").Get(), &value));
  EXPECT_EQ(3, value);
  EXPECT_EQ(S_OK, status->GetStatus(MakeBstr("other").Get(), &value));
  EXPECT_EQ(0, value);
}

TEST(FixtureRoundTrip, EveryFieldOfACustomer) {
  const ComPtr<IName> name = RecordOf<IName>(LoadCompany(kRoundTrip), 1);
  ExpectTexts(name, {{&IName::GetName, u"O’Brien & “Partners”"},
                     {&IName::GetFullName, u"O’Brien & “Partners”"},
                     {&IName::GetCompanyName, u"Ünal <GmbH>"},
                     {&IName::GetSalutation, u"Dr."},
                     {&IName::GetFirstName, u"Åsa"},
                     {&IName::GetMiddleInitial, u"J"},
                     {&IName::GetLastName, u"Øster 𝄞"},
                     {&IName::GetContactName1, u"c1"},
                     {&IName::GetContactName2, u"c2"},
                     {&IName::GetTelephoneNumber1, u"t1"},
                     {&IName::GetTelephoneNumber2, u"t2"},
                     {&IName::GetFaxNumber, u"f"},
                     {&IName::GetEmail, u"e@x"},
                     {&IName::GetAccountNumber, u"A-1"},
                     {&IName::GetNote, u"n"}});
  EXPECT_EQ(jsInProgress, Get(Get(name, &IName::GetJobInfo), &IJobInfo::GetJobStatus));
  ExpectTexts(Get(name, &IName::GetBillingAddress), {{&IAddress::GetCity, u"Bern"}});
  ExpectTexts(Get(name, &IName::GetShippingAddress), {{&IAddress::GetNote, u"dock"}});
  ExpectTexts(Get(name, &IName::GetAddress), {{&IAddress::GetCity, u""}});
  EXPECT_EQ("S4", Get(Get(name, &IName::GetShippingAddress), &IAddress::GetLine, 3));
  EXPECT_EQ(10, RecNumOf(Get(name, &IName::GetTerms)));
  const ComPtr<ISalesRep> rep = Get(name, &IName::GetSalesRep);
  EXPECT_EQ(40, RecNumOf(rep));
  EXPECT_EQ(30, RecNumOf(Get(rep, &ISalesRep::GetAssociatedName)));
}

TEST(FixtureRoundTrip, TermsOfBothTypes) {
  const CompanyPtr company = LoadCompany(kRoundTrip);
  struct Expected {
    LONG recNum, type, dueDays, discountDays, dayDue, discountDay, minDays, modTime;
    bool hidden, discountEmpty;
    double discount;
  };
  const Expected expected[] = {
      {10, ttStandard, 30, 10, 0, 0, 5, 1236433800, false, false, 2.0},
      {11, ttDateDriven, 0, 0, 15, 5, 0, 1236433800, true, true, 0},
  };
  for (const Expected& e : expected) {
    SCOPED_TRACE(e.recNum);
    ComPtr<ITerm2> term;
    ASSERT_EQ(S_OK, RecordOf<ITerm>(company, e.recNum).As(term));
    EXPECT_EQ(e.type, Get(term, &ITerm::GetType));
    EXPECT_EQ(e.dueDays, Get(term, &ITerm::GetStdDueDays));
    EXPECT_EQ(e.discountDays, Get(term, &ITerm::GetStdDiscountDays));
    EXPECT_EQ(e.dayDue, Get(term, &ITerm::GetDayOfMonthDue));
    EXPECT_EQ(e.discountDay, Get(term, &ITerm::GetDiscountDayOfMonth));
    EXPECT_EQ(e.minDays, Get(term, &ITerm::GetMinDays));
    EXPECT_EQ(e.modTime, Get(term, &ITerm::GetModTime));
    EXPECT_EQ(e.hidden, Get(term, &ITerm::GetIsHidden));
    EXPECT_EQ(e.discountEmpty, Get(term, &ITerm2::GetIsDiscountEmpty));
    const ComPtr<IPercent> percent = Get(term, &ITerm::GetDiscountPct);
    EXPECT_EQ(e.discountEmpty, Get(percent, &IPercent::IsEmpty));
    if (!e.discountEmpty) {
      EXPECT_EQ(e.discount, Get(percent, &IPercent::GetValue));
    }
  }
}

TEST(FixtureRoundTrip, Attributes) {
  const CompanyPtr company = LoadCompany(kRoundTrip);
  const ComPtr<IAttributeContainer> attributes = Get(RecordOf<IName>(company, 1), &IName::GetAttributes);
  ComPtr<IAttribute> attribute;
  ASSERT_EQ(S_OK, attributes->FindAttribute(MakeBstr("ParcelonUploadTime").Get(),
                                            MakeBstr("{54901C71-3408-44fb-9031-7B4BB81D871C}").Get(),
                                            attribute.ReleaseAndGetAddressOf()));
  ComPtr<ILongAttribute> value;
  ASSERT_EQ(S_OK, attribute.As(value));
  EXPECT_EQ(1234, Get(value, &ILongAttribute::GetValue));
}

}  // namespace
}  // namespace parcelon::refhost::test
