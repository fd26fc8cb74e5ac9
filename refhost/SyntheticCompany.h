// Synthetic company fixtures of any size, for benchmarks and scaling tests.
#pragma once

#include <string>

namespace parcelon::refhost {

// The JSON fixture of a company with `names` customers and jobs in all: every fourth name is a
// top-level customer, followed by a job, a sub-job and a sub-sub-job under it (three levels
// deep). Four terms, a few items, and one two-line invoice per customer come with it. The text
// is the same for the same size.
std::string SyntheticCompanyJson(int names);

}  // namespace parcelon::refhost
