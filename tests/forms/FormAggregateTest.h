// The setting of the form aggregate tests (invoice, estimate, statement): the reference host of a
// fixture company, the local time zone fixed to five hours west of UTC without daylight time (so
// that dates written with the local zone show it), and helpers that build an aggregate and
// compare texts.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "clienttools/XMLBuilder.h"
#include "forms/FormsTestHost.h"
#include "platform/ComError.h"
#include "support/TestSupport.h"

namespace parcelon::test {

// The company block of the fixtures below (kAggregateCompany), unindented.
inline constexpr char kCompanyBlock[] =
    "<Company>\n"
    "<CompanyName>Acme &amp; Sons</CompanyName>\n"
    "<CompanyEmail>billing@acme.test</CompanyEmail>\n"
    "<Address>\n"
    "<Addr1>1 Main St</Addr1>\n"
    "<City>Springfield</City>\n"
    "<State>IL</State>\n"
    "<PostalCode>62701</PostalCode>\n"
    "</Address>\n"
    "<CompanyPhone>555-0100</CompanyPhone>\n"
    "</Company>\n";

// The company information and customers that every aggregate fixture starts with: customer 10
// with a name full of characters that need escaping or that the request cannot carry (an
// ampersand, double quotes, "<", an e acute and a typographic apostrophe), its job 11, the
// job's own job 12, and customer 13 without a name.
inline constexpr char kAggregateCompany[] = R"(
  "company": {
    "companyName": "Acme & Sons",
    "address": {"lines": ["1 Main St"], "city": "Springfield", "state": "IL", "postalCode": "62701"},
    "email": "billing@acme.test",
    "phone": "555-0100"
  },
  "terms": [
    {"recNum": 1, "name": "Net 30", "stdDueDays": 30},
    {"recNum": 2, "name": "2% 10 Net 30", "stdDueDays": 30, "stdDiscountDays": 10, "discountPct": 2}
  ],
  "customers": [
    {"recNum": 10, "name": "Café O’Brien & \"Sons\" <Ltd>", "accountNumber": "A-77",
     "terms": 2, "salesRep": 1,
     "address": {"lines": ["12 Rue Éole", "", "Floor 3"], "city": "Quebec", "state": "QC",
                 "postalCode": "G1R 4P5", "country": "Canada"},
     "billingAddress": {"lines": ["PO Box 9"], "city": "Quebec"}},
    {"recNum": 11, "name": "Roof", "parent": 10, "jobStatus": "inProgress",
     "address": {"lines": ["3 Job Site Rd"], "city": "Levis"}},
    {"recNum": 12, "name": "Gutters", "parent": 11},
    {"recNum": 13, "name": ""}
  ],
  "otherNames": [{"recNum": 40, "name": "Rita Rep"}],
  "salesReps": [{"recNum": 1, "name": "RR", "associatedName": 40}],
)";

// Gives the process the time zone `tz` for the scope and restores the previous one after.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* tz) : env_(std::in_place, "TZ", tz) { Reset(); }
  ~ScopedTimeZone() {
    env_.reset();
    Reset();
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

 private:
  static void Reset() {
#ifdef _WIN32
    _tzset();
#else
    tzset();
#endif
  }
  std::optional<ScopedEnv> env_;
};

// The text a builder holds.
inline std::string TextOf(const XMLBuilder& builder) {
  return std::string(builder.Buffer()->GetData(), builder.Buffer()->GetLength());
}

// `text` without the lines `removed` (each given with its line feed); fails the test when one
// of them is not a line of `text`.
inline std::string WithoutLines(std::string text, const std::vector<std::string>& removed) {
  for (const std::string& line : removed) {
    // A line begins the text or follows a line feed.
    const size_t at = ("\n" + text).find("\n" + line);
    if (at == std::string::npos)
      ADD_FAILURE() << "no line " << line;
    else
      text.erase(at, line.size());
  }
  return text;
}

// `text` with the blanks at the start of every line removed.
inline std::string WithoutLeadingBlanks(const std::string& text) {
  std::string out;
  bool lineStart = true;
  for (char c : text) {
    if (lineStart && c == ' ') continue;
    lineStart = c == '\n';
    out += c;
  }
  return out;
}

// A fault of the reference host, as the failure tables give it: the operation, the record it is
// limited to (none: every record) and the code. An interface name alone ("ITerm2") makes that
// interface unavailable instead.
struct HostFault {
  const char* operation;
  std::optional<LONG> record;
  HRESULT hr;
};

class FormAggregateTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    zone_.emplace("EST5");
  }
  void TearDown() override {
    zone_.reset();
    FormsTest::TearDown();
  }

  // Makes `fault` happen.
  void Inject(const HostFault& fault) {
    if (std::string(fault.operation).find("::") == std::string::npos)
      ASSERT_TRUE(Faults().MakeUnavailable(fault.operation)) << fault.operation;
    else
      ASSERT_TRUE(Faults().Fail(fault.operation, fault.hr, fault.record)) << fault.operation;
  }

  // Clears the faults and the log, for the next case of a table.
  void StartCase() {
    Faults().Clear();
    CNALogger::ResetForTesting();
    std::remove((LogFolder() + "NALog.log").c_str());
  }

  // Runs `build` on a new builder at depth 0 and gives its text; `status` receives the result.
  static std::string Build(const std::function<HRESULT(XMLBuilder&)>& build, HRESULT& status) {
    XMLBuilder builder(0, 4096);
    status = build(builder);
    return TextOf(builder);
  }

 private:
  std::optional<ScopedTimeZone> zone_;
};

}  // namespace parcelon::test
