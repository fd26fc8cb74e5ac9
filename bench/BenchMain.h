// Pairs each benchmark with a named baseline and prints the ratio of their medians after the run.
//
// Every benchmark binary runs each benchmark five times by default and reports the median (the
// console shows the mean, median, deviation and variation of the five). `--quick` runs each once
// for a minimal time and leaves out sizes of 10,000 and up (a benchmark that takes only such
// sizes needs a smaller one to run quick), so that a whole binary takes a few seconds: it shows
// that the benchmarks still build and run, its figures mean little. Google Benchmark's own flags
// given on the command line override these defaults. A benchmark that reports an error
// (SkipWithError) makes the binary exit with 1.
#pragma once

namespace parcelon::bench {

// Declares that `name` is measured against `baseline` (both full benchmark names); the ratio of
// their median CPU times per unit of work (steadier than wall time on a shared machine) is printed
// after the console report. `work` and `baselineWork` are the units each iteration does (records
// loaded, say), 1 by default.
void CompareWith(const char* name, const char* baseline, double work = 1, double baselineWork = 1);

}  // namespace parcelon::bench
