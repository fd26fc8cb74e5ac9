#include "refhost/SyntheticCompany.h"

#include <cstdio>

namespace parcelon::refhost {

namespace {
// Appends printf-formatted text; the pieces are short and bounded.
template <class... Args>
void Add(std::string& out, const char* format, Args... args) {
  char piece[512];
  const int length = std::snprintf(piece, sizeof piece, format, args...);
  if (length > 0) out.append(piece, size_t(length) < sizeof piece ? size_t(length) : sizeof piece - 1);
}
}  // namespace

std::string SyntheticCompanyJson(int names) {
  if (names < 0) names = 0;
  std::string out;
  out.reserve(size_t(names) * 420 + 4096);
  out +=
      "{\n\"company\": {\"companyName\": \"Synthetic & Co\", \"legalCompanyName\": \"Synthetic & Co Ltd\","
      " \"email\": \"office@synthetic.example\", \"phone\": \"555-0100\","
      " \"companyUID\": \"{00000000-0000-4000-8000-000000000001}\", \"companyAuthID\": \"SYN-1\"},\n"
      "\"terms\": [{\"recNum\": 1, \"name\": \"Net 30\", \"stdDueDays\": 30},"
      " {\"recNum\": 2, \"name\": \"2% 10 Net 30\", \"stdDueDays\": 30, \"stdDiscountDays\": 10, \"discountPct\": 2.0},"
      " {\"recNum\": 3, \"name\": \"Due 15th\", \"type\": \"dateDriven\", \"dayOfMonthDue\": 15},"
      " {\"recNum\": 4, \"name\": \"Due on receipt\"}],\n"
      "\"items\": [{\"recNum\": 1, \"name\": \"Labor\", \"type\": \"service\", \"longDescription\": \"Labor, per hour\"},"
      " {\"recNum\": 2, \"name\": \"Materials\", \"type\": \"inventory\", \"longDescription\": \"Materials & supplies\"}],\n"
      "\"customers\": [\n";
  for (int i = 0; i < names; ++i) {
    const int recNum = 1000 + i;
    const int level = i % 4;  // 0 a customer, 1 to 3 its jobs, each under the one before
    if (i > 0) out += ",\n";
    Add(out, "{\"recNum\": %d, \"name\": \"%s %d\", \"modTime\": %d", recNum, level ? "Job" : "Customer", i,
        1230000000 + i);
    if (level) Add(out, ", \"parent\": %d, \"jobStatus\": \"inProgress\"", recNum - 1);
    else
      Add(out,
          ", \"companyName\": \"Customer %d & Sons\", \"firstName\": \"Ann\", \"lastName\": \"O'Neil %d\","
          " \"telephoneNumber1\": \"555-%04d\", \"email\": \"c%d@example.com\", \"terms\": %d",
          i, i, i % 10000, i, 1 + i % 4);
    Add(out,
        ", \"billingAddress\": {\"lines\": [\"%d Main Street\", \"Suite %d\"], \"city\": \"Springfield\","
        " \"state\": \"CA\", \"postalCode\": \"9%04d\"}}",
        i, level, i % 10000);
  }
  out += "\n],\n\"invoices\": [\n";
  for (int i = 0, first = 1; i < names; i += 4) {
    if (!first) out += ",\n";
    first = 0;
    Add(out,
        "{\"recNum\": %d, \"invoiceNumber\": \"%d\", \"date\": %d, \"customer\": %d, \"terms\": %d,"
        " \"amount\": \"%d.50\", \"lines\": [{\"item\": 1, \"description\": \"Labor\", \"quantity\": \"2\","
        " \"unitPrice\": \"50.00\", \"amount\": \"100.00\"}, {\"item\": 2, \"description\": \"Materials\","
        " \"amount\": \"%d.50\"}]}",
        100000 + i, 100000 + i, 39800 + i % 365, 1000 + i, 1 + i % 4, 100 + i % 900, i % 900);
  }
  out += "\n]\n}\n";
  return out;
}

}  // namespace parcelon::refhost
