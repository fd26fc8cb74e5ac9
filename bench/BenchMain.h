// Pairs each benchmark with a named baseline and prints their ratio after the run.
#pragma once

namespace parcelon::bench {

// Declares that `name` is measured against `baseline` (both full benchmark names); the ratio of
// their CPU times per unit of work (steadier than wall time on a shared machine) is printed after
// the console report. `work` and `baselineWork` are the units each iteration does (records
// loaded, say), 1 by default.
void CompareWith(const char* name, const char* baseline, double work = 1, double baselineWork = 1);

}  // namespace parcelon::bench
