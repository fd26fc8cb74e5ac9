// Loading company fixtures: the exact message of each kind of malformed fixture, and a round trip
// of every list field through the host's interfaces, texts exactly as UTF-16.
#include <gtest/gtest.h>

#include <cctype>
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

const std::vector<BadFixture> kBadFixtures = {
    {"syntax error", "{\n  \"terms\": [\n    {\"recNum\": 1,, }\n  ]\n}",
     "company.json: line 3, column 18: syntax error while parsing object key - unexpected ','; "
     "expected string literal"},
    {"truncated document", "{\"terms\": [", ""},
    {"ill-formed UTF-8", "{\"terms\": [{\"recNum\": 1, \"name\": \"\xC3\x28\"}]}", ""},
    {"nesting too deep", std::string(40, '[') + std::string(40, ']'),
     "company.json: line 1, column 33: arrays and objects nested deeper than 32 levels"},
    {"document not an object", "[]", "company.json: expected an object, found an array"},
    {"unknown section", "{\"customer\": []}", "company.json: customer: unknown field"},
    {"section not an array", "{\"terms\": {}}",
     "company.json: terms: expected an array, found an object"},
    // Room is not reserved for a million customers before the first is read.
    {"a million bare numbers for customers", "{\"customers\": [" + Repeated("1,", 1'000'000) + "1]}",
     "company.json: /customers/0: expected an object, found a number"},
    {"record not an object", "{\"terms\": [3]}",
     "company.json: /terms/0: expected an object, found a number"},
    {"wrong type", "{\"terms\": [{\"recNum\": 1, \"name\": 5}]}",
     "company.json: /terms/0: name: expected a string, found a number"},
    {"missing record number", "{\"terms\": [{\"name\": \"Net 30\"}]}",
     "company.json: /terms/0: recNum: missing required field"},
    {"record number out of range", "{\"terms\": [{\"recNum\": 3000000000, \"name\": \"A\"}]}",
     "company.json: /terms/0: recNum: expected a whole number from 1 to 2147483647"},
    {"record number not whole", "{\"terms\": [{\"recNum\": 1.5, \"name\": \"A\"}]}",
     "company.json: /terms/0: recNum: expected a whole number from 1 to 2147483647, found a "
     "number"},
    {"unknown field", "{\"terms\": [{\"recNum\": 1, \"name\": \"A\", \"dueDays\": 3}]}",
     "company.json: /terms/0: dueDays: unknown field"},
    {"unknown enumeration name", "{\"terms\": [{\"recNum\": 1, \"name\": \"A\", \"type\": \"x\"}]}",
     "company.json: /terms/0: type: expected one of standard, dateDriven or its number"},
    {"duplicate record number",
     "{\"terms\": [{\"recNum\": 1, \"name\": \"A\"}, {\"recNum\": 1, \"name\": \"B\"}]}",
     "company.json: /terms/1: recNum: duplicate record number 1, first at /terms/0"},
    {"duplicate record number across name sections",
     "{\"customers\": [{\"recNum\": 4, \"name\": \"A\"}], \"otherNames\": [{\"recNum\": 4, "
     "\"name\": \"B\"}]}",
     "company.json: /otherNames/0: recNum: duplicate record number 4, first at /customers/0"},
    {"duplicate record number, other names first",
     "{\"otherNames\": [{\"recNum\": 4, \"name\": \"B\"}], \"customers\": [{\"recNum\": 3, "
     "\"name\": \"A\"}, {\"recNum\": 4, \"name\": \"C\"}]}",
     "company.json: /customers/1: recNum: duplicate record number 4, first at /otherNames/0"},
    {"section given twice", "{\"terms\": [], \"company\": {}, \"terms\": []}",
     "company.json: /terms: a second section of this name"},
    {"cycle among customers listed after other names",
     "{\"otherNames\": [{\"recNum\": 1, \"name\": \"A\"}], \"customers\": [{\"recNum\": 2, "
     "\"name\": \"B\", \"parent\": 3}, {\"recNum\": 3, \"name\": \"C\", \"parent\": 2}]}",
     "company.json: /customers/1: parent: the parent links form a cycle"},
    {"dangling parent",
     "{\"customers\": [{\"recNum\": 1, \"name\": \"A\"}, {\"recNum\": 2, \"name\": \"B\", "
     "\"parent\": 9}]}",
     "company.json: /customers/1: parent: expected a record number of a customer or job"},
    {"parent that is not a customer",
     "{\"customers\": [{\"recNum\": 2, \"name\": \"B\", \"parent\": 1}], \"otherNames\": "
     "[{\"recNum\": 1, \"name\": \"A\"}]}",
     "company.json: /customers/0: parent: expected a record number of a customer or job"},
    {"parent cycle",
     "{\"customers\": [{\"recNum\": 1, \"name\": \"A\", \"parent\": 2}, {\"recNum\": 2, "
     "\"name\": \"B\", \"parent\": 1}]}",
     "company.json: /customers/1: parent: the parent links form a cycle"},
    {"own parent", "{\"classes\": [{\"recNum\": 1, \"name\": \"A\", \"parent\": 1}]}",
     "company.json: /classes/0: parent: the parent links form a cycle"},
    {"tree too deep", CustomerChain(70),
     "company.json: /customers/64: parent: the tree is deeper than 63 levels"},
    {"dangling terms", "{\"customers\": [{\"recNum\": 1, \"name\": \"A\", \"terms\": 4}]}",
     "company.json: /customers/0: terms: expected a record number of a term"},
    {"dangling associated name",
     "{\"salesReps\": [{\"recNum\": 1, \"name\": \"AB\", \"associatedName\": 8}]}",
     "company.json: /salesReps/0: associatedName: expected a record number of a name"},
    {"group members of an item that is not a group",
     "{\"items\": [{\"recNum\": 1, \"name\": \"A\", \"groupItems\": [1]}]}",
     "company.json: /items/0: groupItems: only items of type group or taxGroup have members"},
    {"dangling group member",
     "{\"items\": [{\"recNum\": 1, \"name\": \"A\", \"type\": \"group\", \"groupItems\": [2]}]}",
     "company.json: /items/0: groupItems: expected record numbers of items"},
    {"bad modification time",
     "{\"terms\": [{\"recNum\": 1, \"name\": \"A\", \"modTime\": \"2009-03-07\"}]}",
     "company.json: /terms/0: modTime: expected seconds since 1970 or a time such as "
     "\"2009-03-07T14:30:00Z\", from 1970 to 2038"},
    {"duplicate attribute",
     "{\"terms\": [{\"recNum\": 1, \"name\": \"A\", \"attributes\": [{\"name\": \"T\", "
     "\"owner\": \"O\"}, {\"name\": \"T\", \"owner\": \"O\", \"value\": 2}]}]}",
     "company.json: /terms/0/attributes/1: name: a second attribute of this name and owner"},
    {"too many address lines",
     "{\"company\": {\"address\": {\"lines\": [\"1\", \"2\", \"3\", \"4\", \"5\"]}}}",
     "company.json: /company/address: lines: expected at most 4 lines"},
    {"fault of an unknown interface",
     "{\"faults\": [{\"operation\": \"IFoo::GetBar\", \"hresult\": \"E_FAIL\"}]}",
     "company.json: /faults/0: operation: expected Interface::Method of a host interface"},
    {"fault that is no failure",
     "{\"faults\": [{\"operation\": \"IName::GetNote\", \"hresult\": \"0x00000001\"}]}",
     "company.json: /faults/0: hresult: expected a failure code such as \"0x80004005\" or "
     "\"E_FAIL\""},
    {"unknown unavailable interface", "{\"unavailable\": [\"ITerm3\"]}",
     "company.json: /unavailable/0: expected the name of a host interface"},
    {"absent record of an unknown list", "{\"absent\": [{\"list\": \"vendors\", \"record\": 1}]}",
     "company.json: /absent/0: list: expected the name of a list, such as \"customers\""},
    {"absent record that does not exist",
     "{\"absent\": [{\"list\": \"customers\", \"record\": 7}]}",
     "company.json: /absent/0: record: expected a record number of the list"},
};

class BadFixtureTest : public ::testing::TestWithParam<BadFixture> {};

TEST_P(BadFixtureTest, FailsWithItsMessage) {
  const std::string error = LoadError(GetParam().fixture);
  if (GetParam().message.empty())
    EXPECT_EQ(0u, error.find("company.json: line 1, column ")) << error;
  else
    EXPECT_EQ(GetParam().message, error);
}

INSTANTIATE_TEST_SUITE_P(Fixture, BadFixtureTest, ::testing::ValuesIn(kBadFixtures),
                         [](const ::testing::TestParamInfo<BadFixture>& info) {
                           std::string name;
                           for (const char* c = info.param.what; *c; ++c)
                             name += std::isalnum(static_cast<unsigned char>(*c)) ? *c : '_';
                           return name;
                         });

TEST(FixtureFile, MissingFileNamesThePath) {
  parcelon::test::ScratchFolder folder;
  Company company;
  std::string error;
  EXPECT_EQ(STG_E_FILENOTFOUND, LoadFixtureFile(folder.File("absent.json"), company, error));
  EXPECT_EQ(folder.File("absent.json") + ": cannot open the file", error);
}

TEST(FixtureFile, MessagesNameTheFileAsGiven) {
  parcelon::test::ScratchFolder folder;
  parcelon::test::WriteFile(folder.File("bad.json"),
                            "{\"terms\": [{\"recNum\": 0, \"name\": \"A\"}]}");
  Company company;
  std::string error;
  EXPECT_EQ(kInvalidFixture, LoadFixtureFile(folder.File("bad.json"), company, error));
  EXPECT_EQ(
      folder.File("bad.json") + ": /terms/0: recNum: expected a whole number from 1 to 2147483647",
      error);
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
  "customerMessages": [{"recNum": 80, "name": "Thank you!"}],
  "host": {"logFolder": "/tmp/logs"}
})";

// A getter of a BSTR of interface I.
template <class I>
using TextGetter = HRESULT (STDMETHODCALLTYPE I::*)(BSTR*);

template <class I>
void ExpectTexts(I* object, const std::vector<std::pair<TextGetter<I>, Text>>& expected) {
  for (size_t i = 0; i < expected.size(); ++i) {
    BSTR text = nullptr;
    ASSERT_EQ(S_OK, (object->*expected[i].first)(&text)) << "getter " << i;
    EXPECT_EQ(expected[i].second, Take(text)) << "getter " << i;
  }
}

TEST(FixtureRoundTrip, CompanyInformation) {
  const CompanyPtr company = LoadCompany(kRoundTrip);
  ICompanyFile* fileRaw = nullptr;
  ASSERT_EQ(S_OK, NewCompanyFile(company, &fileRaw));
  const ComPtr<ICompanyFile> file = ComPtr<ICompanyFile>::Attach(fileRaw);
  ComPtr<ICompanyInfo> info;
  ASSERT_EQ(S_OK, file->GetCompanyInfo(info.ReleaseAndGetAddressOf()));
  ComPtr<ICompanyInfo2> info2;
  ASSERT_EQ(S_OK, info.As(info2));
  ExpectTexts<ICompanyInfo2>(info2.Get(),
                             {
                                 {&ICompanyInfo2::GetCompanyName, u"Smith & Sons <Ltd>"},
                                 {&ICompanyInfo2::GetLegalCompanyName, u"Smith & Sons Holding"},
                                 {&ICompanyInfo2::GetLegalAddress1, u"Bahnhofstrasse 1"},
                                 {&ICompanyInfo2::GetLegalAddress2, u"Postfach"},
                                 {&ICompanyInfo2::GetLegalCity, u"Zürich"},
                                 {&ICompanyInfo2::GetLegalState, u"ZH"},
                                 {&ICompanyInfo2::GetLegalZip, u"8002"},
                                 {&ICompanyInfo2::GetLegalCountry, u"CH"},
                                 {&ICompanyInfo2::GetEmail, u"office@smith.example"},
                                 {&ICompanyInfo2::GetPhone, u"+41 44 000 00 00"},
                             });
  ComPtr<IAddress> address;
  ASSERT_EQ(S_OK, info->GetAddress(address.ReleaseAndGetAddressOf()));
  ExpectTexts<IAddress>(address.Get(), {
                                           {&IAddress::GetCity, u"Zürich"},
                                           {&IAddress::GetState, u"ZH"},
                                           {&IAddress::GetPostalCode, u"8001"},
                                           {&IAddress::GetCountry, u"Schweiz"},
                                           {&IAddress::GetNote, u"back door"},
                                       });
  const Text lines[] = {u"1 \"Main\" St", u"Suite 2", u"", u""};
  for (LONG i = 0; i < 4; ++i) {
    BSTR line = nullptr;
    ASSERT_EQ(S_OK, address->GetLine(i, &line));
    EXPECT_EQ(lines[i], Take(line));
  }
  BSTR line = nullptr;
  EXPECT_EQ(E_INVALIDARG, address->GetLine(4, &line));

  ComPtr<ICompanyFile2> file2;
  ASSERT_EQ(S_OK, file.As(file2));
  ComPtr<ICompanyProfile> profile;
  ASSERT_EQ(S_OK, file2->GetCompanyProfile(profile.ReleaseAndGetAddressOf()));
  ComPtr<IServiceSubscriptionStatus> status;
  ASSERT_EQ(S_OK, profile->GetServiceSubscriptionStatus(status.ReleaseAndGetAddressOf()));
  LONG value = -1;
  EXPECT_EQ(S_OK, status->GetStatus(MakeBstr("lxob1.lxn").Get(), &value));
  EXPECT_EQ(3, value);
  EXPECT_EQ(S_OK, status->GetStatus(MakeBstr("other").Get(), &value));
  EXPECT_EQ(0, value);
}

TEST(FixtureRoundTrip, EveryFieldOfACustomer) {
  const CompanyPtr company = LoadCompany(kRoundTrip);
  const ComPtr<IName> name = RecordOf<IName>(company, 1);
  ExpectTexts<IName>(name.Get(), {
                                     {&IName::GetName, u"O’Brien & “Partners”"},
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
                                     {&IName::GetNote, u"n"},
                                 });
  ComPtr<IJobInfo> job;
  ASSERT_EQ(S_OK, name->GetJobInfo(job.ReleaseAndGetAddressOf()));
  LONG status = -1;
  EXPECT_EQ(S_OK, job->GetJobStatus(&status));
  EXPECT_EQ(jsInProgress, status);

  ComPtr<IAddress> billing, shipping, own;
  ASSERT_EQ(S_OK, name->GetBillingAddress(billing.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, name->GetShippingAddress(shipping.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, name->GetAddress(own.ReleaseAndGetAddressOf()));
  ExpectTexts<IAddress>(billing.Get(), {{&IAddress::GetCity, u"Bern"}});
  ExpectTexts<IAddress>(shipping.Get(), {{&IAddress::GetNote, u"dock"}});
  ExpectTexts<IAddress>(own.Get(), {{&IAddress::GetCity, u""}});
  BSTR line = nullptr;
  ASSERT_EQ(S_OK, shipping->GetLine(3, &line));
  EXPECT_EQ(u"S4", Take(line));

  ComPtr<ITerm> terms;
  ASSERT_EQ(S_OK, name->GetTerms(terms.ReleaseAndGetAddressOf()));
  EXPECT_EQ(10, RecNumOf(terms));
  ComPtr<ISalesRep> rep;
  ASSERT_EQ(S_OK, name->GetSalesRep(rep.ReleaseAndGetAddressOf()));
  EXPECT_EQ(40, RecNumOf(rep));
  ComPtr<IName> associated;
  ASSERT_EQ(S_OK, rep->GetAssociatedName(associated.ReleaseAndGetAddressOf()));
  EXPECT_EQ(30, RecNumOf(associated));
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
    ComPtr<ITerm2> term;
    ASSERT_EQ(S_OK, RecordOf<ITerm>(company, e.recNum).As(term));
    LONG type, due, discountDays, dayDue, discountDay, minDays, modTime;
    VARIANT_BOOL hidden, discountEmpty, percentEmpty;
    EXPECT_EQ(S_OK, term->GetType(&type));
    EXPECT_EQ(S_OK, term->GetStdDueDays(&due));
    EXPECT_EQ(S_OK, term->GetStdDiscountDays(&discountDays));
    EXPECT_EQ(S_OK, term->GetDayOfMonthDue(&dayDue));
    EXPECT_EQ(S_OK, term->GetDiscountDayOfMonth(&discountDay));
    EXPECT_EQ(S_OK, term->GetMinDays(&minDays));
    EXPECT_EQ(S_OK, term->GetModTime(&modTime));
    EXPECT_EQ(S_OK, term->GetIsHidden(&hidden));
    EXPECT_EQ(S_OK, term->GetIsDiscountEmpty(&discountEmpty));
    ComPtr<IPercent> percent;
    ASSERT_EQ(S_OK, term->GetDiscountPct(percent.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, percent->IsEmpty(&percentEmpty));
    EXPECT_EQ(e.type, type);
    EXPECT_EQ(e.dueDays, due);
    EXPECT_EQ(e.discountDays, discountDays);
    EXPECT_EQ(e.dayDue, dayDue);
    EXPECT_EQ(e.discountDay, discountDay);
    EXPECT_EQ(e.minDays, minDays);
    EXPECT_EQ(e.modTime, modTime);
    EXPECT_EQ(e.hidden ? VARIANT_TRUE : VARIANT_FALSE, hidden);
    EXPECT_EQ(e.discountEmpty ? VARIANT_TRUE : VARIANT_FALSE, discountEmpty);
    EXPECT_EQ(e.discountEmpty ? VARIANT_TRUE : VARIANT_FALSE, percentEmpty);
    if (!e.discountEmpty) {
      double value = 0;
      EXPECT_EQ(S_OK, percent->GetValue(&value));
      EXPECT_EQ(e.discount, value);
    }
  }
}

TEST(FixtureRoundTrip, AttributesAndHostSettings) {
  const CompanyPtr company = LoadCompany(kRoundTrip);
  ComPtr<IAttributeContainer> attributes;
  ASSERT_EQ(S_OK, RecordOf<IName>(company, 1)->GetAttributes(attributes.ReleaseAndGetAddressOf()));
  ComPtr<IAttribute> attribute;
  ASSERT_EQ(S_OK,
            attributes->FindAttribute(MakeBstr("ParcelonUploadTime").Get(),
                                      MakeBstr("{54901C71-3408-44fb-9031-7B4BB81D871C}").Get(),
                                      attribute.ReleaseAndGetAddressOf()));
  ComPtr<ILongAttribute> value;
  ASSERT_EQ(S_OK, attribute.As(value));
  LONG stamp = 0;
  EXPECT_EQ(S_OK, value->GetValue(&stamp));
  EXPECT_EQ(1234, stamp);
  EXPECT_EQ(u"/tmp/logs", company->host.logFolder);
  EXPECT_EQ(u"uid-1", company->companyUID);
  EXPECT_EQ(u"auth-1", company->authID);
}

}  // namespace
}  // namespace parcelon::refhost::test
