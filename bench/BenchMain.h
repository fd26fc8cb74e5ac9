// Pairs each benchmark with a named baseline and prints their ratio after the run.
#pragma once

namespace parcelon::bench {

// Declares that `name` is measured against `baseline` (both full benchmark names); the ratio of
// their real times per iteration is printed after the console report.
void CompareWith(const char* name, const char* baseline);

}  // namespace parcelon::bench
