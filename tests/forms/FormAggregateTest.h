// The setting of the form aggregate tests (invoice, estimate, statement, line writers): the
// reference host of a fixture company, the local time zone fixed to five hours west of UTC without
// daylight time (so that dates written with the local zone show it), helpers that compare texts,
// and the runner of the fault tables.
#pragma once

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "forms/FormsTestHost.h"
#include "support/TestSupport.h"

namespace parcelon::test {

// The company block of the fixtures below (kAggregateCompany), unindented.
inline constexpr char kCompanyBlock[] =
    "<Company>\n<CompanyName>Acme &amp; Sons</CompanyName>\n<CompanyEmail>billing@acme.test</CompanyEmail>\n"
    "<Address>\n<Addr1>1 Main St</Addr1>\n<City>Springfield</City>\n<State>IL</State>\n"
    "<PostalCode>62701</PostalCode>\n</Address>\n<CompanyPhone>555-0100</CompanyPhone>\n</Company>\n";

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

// Customer 10's name as the aggregates write it: escaped, without the characters they cannot carry.
inline const std::string kCustomerName = "Caf O&apos;Brien &amp; &quot;Sons&quot; &lt;Ltd&gt;";

// The whole text of a form aggregate of `kind` ("Invoice") of the fixture company.
inline std::string FormText(const std::string& kind, const std::string& detail) {
  return FormText(kind, detail, kCompanyBlock);
}

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

// A fault and what it does: the log lines, and either the status of a failed build or, for a
// build that succeeds, the lines of the whole text it leaves out.
struct FaultCase {
  HostFault fault;
  HRESULT status;
  std::vector<std::string> log;
  std::vector<std::string> missing = {};
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

  // Each case on its own: `build(status)` gives `whole` without the missing lines (when it
  // succeeds) and logs the case's lines.
  void ExpectFaults(const std::vector<FaultCase>& cases, const std::string& whole,
                    const std::function<std::string(HRESULT)>& build) {
    for (const FaultCase& c : cases) {
      SCOPED_TRACE(c.fault.operation);
      StartCase();
      Inject(c.fault);
      const std::string text = build(c.status);
      if (SUCCEEDED(c.status)) {
        EXPECT_EQ(WithoutLines(whole, c.missing), text);
      }
      EXPECT_EQ(c.log, LogEntries());
    }
  }

 private:
  std::optional<ScopedTimeZone> zone_;
};

}  // namespace parcelon::test
