// The attachment pass's body: BuildData of a 50 MB PDF against what a reader that copies the file
// costs, a fresh malloc plus one fread of the same file, and against the least such a reader can
// do, one fread into a buffer whose pages are in place already; each alone and followed by one
// reading of the body, as the upload does.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "BenchMain.h"
#include "component/NA_Form.h"
#include "diagnostics/FeatureSettings.h"
#include "forms/PDFBuilder.h"
#include "platform/CodePage.h"
#include "platform/Paths.h"

namespace {

constexpr size_t kPdfBytes = size_t(50) << 20;

// A 50 MB file of varied bytes in the temporary folder, written once per run, and settings with
// every switch off (no attachment dump).
const std::string& PdfPath() {
  static const std::string path = [] {
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    const std::string settings = (folder / "parcelon-bench-pdf-ZPSSettings.aov").string();
    if (FILE* f = std::fopen(settings.c_str(), "w")) {
      std::fputs("[ZPSSettings]\n", f);
      std::fclose(f);
    }
    parcelon::SetEnv("PARCELON_SETTINGS", settings.c_str());
    AmbitAccess::Reload();

    std::string file = (folder / "parcelon-bench-50MB.pdf").string();
    if (FILE* f = std::fopen(file.c_str(), "wb")) {
      std::string block(size_t(1) << 20, '\0');
      uint32_t state = 1;
      for (char& c : block) c = char((state = state * 1103515245u + 12345u) >> 16);
      for (size_t written = 0; written < kPdfBytes; written += block.size())
        std::fwrite(block.data(), 1, block.size(), f);
      std::fclose(f);
    }
    return file;
  }();
  return path;
}

// A form whose attachment list names the file.
INA_Form7Ptr PdfForm() {
  INA_Form7Ptr form;
  CNA_Form::CreateInstance(IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress());
  BSTR name = nullptr;
  parcelon::AnsiToBstr(PdfPath().data(), PdfPath().size(), &name);
  form->AddAttachmentFile(name);
  SysFreeString(name);
  form->put_FormType(naftINVOICE);
  return form;
}

// What the upload does with the body: one pass over every byte. Run after each reader as well,
// because a reader can leave part of its cost to the first reading of its pages (a mapping's
// pages are first touched here).
void ReadBody(const BYTE* body) {
  uint64_t sum = 0;
  for (size_t at = 0; body && at + sizeof sum <= kPdfBytes; at += sizeof sum) {
    uint64_t word;
    std::memcpy(&word, body + at, sizeof word);
    sum += word;
  }
  benchmark::DoNotOptimize(sum);
}

void BM_BuildData_50MB(benchmark::State& state, bool thenReadBody) {
  const INA_Form7Ptr form = PdfForm();
  CAttachmentData attachment;
  for (auto _ : state) {
    BYTE* data = nullptr;
    if (FAILED(attachment.BuildData(form.Get(), &data))) state.SkipWithError("BuildData failed");
    benchmark::DoNotOptimize(data);
    if (thenReadBody) ReadBody(data);
    // As the session does when the attachment pass ends.
    attachment.Release();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPdfBytes));
}
BENCHMARK_CAPTURE(BM_BuildData_50MB, alone, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_BuildData_50MB, then_read, true)->Unit(benchmark::kMillisecond);

// Opens the file, measures it and reads it whole into `buffer` with one fread.
void ReadInto(benchmark::State& state, char* buffer) {
  FILE* file = std::fopen(PdfPath().c_str(), "rb");
  std::fseek(file, 0, SEEK_END);
  const long length = std::ftell(file);
  std::fseek(file, 0, SEEK_SET);
  if (std::fread(buffer, 1, size_t(length), file) != kPdfBytes) state.SkipWithError("short read");
  std::fclose(file);
  benchmark::DoNotOptimize(buffer);
}

// A copying reader: a new buffer each time, its pages first touched by the read.
void BM_MallocFread_50MB(benchmark::State& state, bool thenReadBody) {
  PdfPath();
  for (auto _ : state) {
    char* buffer = static_cast<char*>(std::malloc(kPdfBytes + 1));
    ReadInto(state, buffer);
    if (thenReadBody) ReadBody(reinterpret_cast<const BYTE*>(buffer));
    std::free(buffer);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPdfBytes));
}
BENCHMARK_CAPTURE(BM_MallocFread_50MB, alone, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_MallocFread_50MB, then_read, true)->Unit(benchmark::kMillisecond);

// The least a copying reader can do: one fread into a buffer that exists and is touched already.
void BM_Fread_50MB(benchmark::State& state, bool thenReadBody) {
  PdfPath();
  const std::unique_ptr<char[]> buffer(new char[kPdfBytes + 1]());
  for (auto _ : state) {
    ReadInto(state, buffer.get());
    if (thenReadBody) ReadBody(reinterpret_cast<const BYTE*>(buffer.get()));
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPdfBytes));
}
BENCHMARK_CAPTURE(BM_Fread_50MB, alone, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Fread_50MB, then_read, true)->Unit(benchmark::kMillisecond);

const bool kPairs = [] {
  for (const std::string pass : {"/alone", "/then_read"}) {
    parcelon::bench::CompareWith(("BM_BuildData_50MB" + pass).c_str(), ("BM_MallocFread_50MB" + pass).c_str());
    parcelon::bench::CompareWith(("BM_BuildData_50MB" + pass).c_str(), ("BM_Fread_50MB" + pass).c_str());
  }
  return true;
}();

}  // namespace
