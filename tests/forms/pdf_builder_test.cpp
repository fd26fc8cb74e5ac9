// The PDF attachment: the raw body of the attachment pass (CAttachmentData) and the inline base64
// writer (CPDFBuilder) with its pieces and the disposal of the file, against the reference host's
// base64 coder and file redirection.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#ifdef __linux__
#include <sys/resource.h>
#include <unistd.h>
#endif

#include "forms/FormsTestHost.h"
#include "forms/PDFBuilder.h"

namespace parcelon::test {
namespace {

constexpr char kBuildDataPrefix[] = "Parcelon:CNA_Forms::BuildData: ";
constexpr char kPDFPrefix[] = "Parcelon:CPDFBuilder::BuildXML(XMLBuilder&): ";

// `count` bytes of every value, zero bytes included, in an order that repeats only rarely.
std::string SampleBytes(size_t count) {
  std::string bytes(count, '\0');
  uint32_t state = 12345;
  for (char& byte : bytes) {
    state = state * 1103515245u + 12345u;
    byte = static_cast<char>(state >> 16);
  }
  return bytes;
}

// Standard base64 with padding, the test's own oracle.
std::string Base64(const std::string& bytes) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t left = bytes.size() - i;
    uint32_t group = uint32_t(uint8_t(bytes[i])) << 16;
    if (left > 1) group |= uint32_t(uint8_t(bytes[i + 1])) << 8;
    if (left > 2) group |= uint32_t(uint8_t(bytes[i + 2]));
    out += kAlphabet[group >> 18 & 63];
    out += kAlphabet[group >> 12 & 63];
    out += left > 1 ? kAlphabet[group >> 6 & 63] : '=';
    out += left > 2 ? kAlphabet[group & 63] : '=';
  }
  return out;
}

std::string Entry(const char* prefix, const char* message, const char* hr = "0x80004005") {
  return std::string(prefix) + message + "  HRESULT=" + hr;
}

class PDFTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    UseCompany(R"({"company": {"companyName": "Acme"}})");
  }

  // A form whose own attachment is the file `name` of the scratch folder.
  INA_Form7Ptr FormWithAttachment(const std::string& name) {
    INA_Form7Ptr form = NewForm();
    std::string folder = ScratchFile("");
    folder.pop_back();  // the form adds the separator itself
    EXPECT_EQ(S_OK, form->put_AttachmentPath(MakeBstr(folder).Get()));
    EXPECT_EQ(S_OK, form->put_AttachmentFileName(MakeBstr(name).Get()));
    EXPECT_EQ(S_OK, form->put_FormType(naftINVOICE));
    EXPECT_EQ(S_OK, form->put_DocType(MakeBstr("pdf").Get()));
    return form;
  }

  // CPDFBuilder's text and status for the file at `path`.
  std::string BuildPDF(const std::string& path, HRESULT expected, uint32_t depth = 0) {
    XMLBuilder builder(depth, 4096);
    EXPECT_EQ(expected, CPDFBuilder(MakeBstr(path).Get()).BuildXML(builder));
    return std::string(builder.Buffer()->GetData(), builder.Buffer()->GetLength());
  }
};

// ---- The attachment pass's body ----------------------------------------------------------------

TEST_F(PDFTest, BuildDataHandsOutTheFileAsItIs) {
  const std::string bytes = SampleBytes(70001);
  WriteFile(ScratchFile("invoice 7.pdf"), bytes);
  const INA_Form7Ptr form = FormWithAttachment("invoice 7.pdf");
  CAttachmentData attachment;
  BYTE* data = nullptr;
  ASSERT_EQ(S_OK, attachment.BuildData(form.Get(), &data));
  ASSERT_EQ(attachment.Data(), data);
  ASSERT_EQ(LONG(bytes.size()), attachment.DataSize());
  EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(data), bytes.size()));
  EXPECT_EQ(0, data[bytes.size()]);
  EXPECT_TRUE(FileExists(ScratchFile("invoice 7.pdf")));  // the pass leaves the file alone
  EXPECT_TRUE(LogEntries().empty());

  attachment.Release();
  EXPECT_EQ(0, attachment.DataSize());
  EXPECT_EQ(nullptr, attachment.Data());
}

TEST_F(PDFTest, BuildDataOfAnEmptyFileGivesOneZeroByte) {
  WriteFile(ScratchFile("empty.pdf"), "");
  CAttachmentData attachment;
  BYTE* data = nullptr;
  ASSERT_EQ(S_OK, attachment.BuildData(FormWithAttachment("empty.pdf").Get(), &data));
  ASSERT_NE(nullptr, data);
  EXPECT_EQ(0, attachment.DataSize());
  EXPECT_EQ(0, data[0]);
}

TEST_F(PDFTest, BuildDataReplacesTheDataOfTheLastCall) {
  WriteFile(ScratchFile("a.pdf"), "first");
  WriteFile(ScratchFile("b.pdf"), "second one");
  CAttachmentData attachment;
  BYTE* data = nullptr;
  ASSERT_EQ(S_OK, attachment.BuildData(FormWithAttachment("a.pdf").Get(), &data));
  ASSERT_EQ(S_OK, attachment.BuildData(FormWithAttachment("b.pdf").Get(), &data));
  EXPECT_EQ("second one", std::string(reinterpret_cast<const char*>(data), size_t(attachment.DataSize())));
}

struct UnreadableCase {
  const char* name;
  const char* message;
};

class BuildDataFailureTest : public PDFTest, public ::testing::WithParamInterface<UnreadableCase> {};

TEST_P(BuildDataFailureTest, LogsAndGivesNoData) {
  std::filesystem::create_directory(ScratchFile("folder.pdf"));
  CAttachmentData attachment;
  BYTE* data = reinterpret_cast<BYTE*>(this);
  EXPECT_EQ(E_FAIL, attachment.BuildData(FormWithAttachment(GetParam().name).Get(), &data));
  EXPECT_EQ(nullptr, data);
  EXPECT_EQ(std::vector<std::string>{Entry(kBuildDataPrefix, GetParam().message)}, LogEntries());
}

INSTANTIATE_TEST_SUITE_P(Files, BuildDataFailureTest,
                         ::testing::Values(UnreadableCase{"missing.pdf", "Error opening PDF file."},
                                           UnreadableCase{"folder.pdf", "Error opening PDF file."}));

// A (sparse) file one byte longer than a 32-bit count can hold together with its terminating zero.
TEST_F(PDFTest, FileTooLargeForTheDataSizeIsRefused) {
  const std::string path = ScratchFile("huge.pdf");
  WriteFile(path, "");
  std::filesystem::resize_file(path, uintmax_t(kMaxAttachmentBytes) + 1);
  CAttachmentData attachment;
  BYTE* data = nullptr;
  EXPECT_EQ(E_FAIL, attachment.BuildData(FormWithAttachment("huge.pdf").Get(), &data));
  EXPECT_EQ(nullptr, data);
  EXPECT_EQ(0, attachment.DataSize());
  XMLBuilder builder(0, 4096);
  EXPECT_EQ(E_FAIL, CPDFBuilder(MakeBstr(path).Get()).BuildXML(builder));
  EXPECT_TRUE(FileExists(path));
  EXPECT_EQ((std::vector<std::string>{Entry(kBuildDataPrefix, "Error determining PDF file length."),
                                      Entry(kPDFPrefix, "Error determining PDF file length.")}),
            LogEntries());
}

TEST_F(PDFTest, BuildDataOfAFormWithoutAttachmentFailsToOpen) {
  CAttachmentData attachment;
  BYTE* data = nullptr;
  EXPECT_EQ(E_FAIL, attachment.BuildData(NewForm().Get(), &data));
  EXPECT_EQ(std::vector<std::string>{Entry(kBuildDataPrefix, "Error opening PDF file.")}, LogEntries());
}

#ifdef __linux__
// A kernel attribute file states a length of a page but reads much shorter: a file whose content
// cannot be read to its length.
TEST_F(PDFTest, BuildDataOfAFileShorterThanItsLengthFails) {
  const char* path = "/sys/kernel/mm/transparent_hugepage/enabled";
  if (!FileExists(path)) GTEST_SKIP() << "no " << path;
  INA_Form7Ptr form = NewForm();
  ASSERT_EQ(S_OK, form->AddAttachmentFile(MakeBstr(path).Get()));
  CAttachmentData attachment;
  BYTE* data = nullptr;
  EXPECT_EQ(E_FAIL, attachment.BuildData(form.Get(), &data));
  EXPECT_EQ(std::vector<std::string>{Entry(kBuildDataPrefix, "Unable to read full length of attachment file.")},
            LogEntries());
}

// The resident set size of the process now, in bytes.
size_t ResidentBytes() {
  long pages = 0, resident = 0;
  if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(statm);
  }
  return size_t(resident) * size_t(sysconf(_SC_PAGESIZE));
}
#endif

TEST_F(PDFTest, BuildDataReadsA100MegabyteFile) {
  constexpr size_t kSize = size_t(100) << 20;
  const std::string path = ScratchFile("large.pdf");
  // Written a megabyte at a time, with its FNV-1a checksum.
  uint64_t expected = 14695981039346656037ull;
  {
    FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(nullptr, file);
    std::string block = SampleBytes(size_t(1) << 20);
    for (size_t written = 0; written < kSize; written += block.size()) {
      block[0] = char(written >> 20);  // no two megabytes alike
      for (char c : block) expected = (expected ^ uint8_t(c)) * 1099511628211ull;
      ASSERT_EQ(block.size(), std::fwrite(block.data(), 1, block.size(), file));
    }
    ASSERT_EQ(0, std::fclose(file));
  }
#ifdef __linux__
  const size_t residentBefore = ResidentBytes();
#endif

  CAttachmentData attachment;
  BYTE* data = nullptr;
  ASSERT_EQ(S_OK, attachment.BuildData(FormWithAttachment("large.pdf").Get(), &data));
  ASSERT_EQ(LONG(kSize), attachment.DataSize());
  uint64_t checksum = 14695981039346656037ull;
  for (size_t i = 0; i < kSize; ++i) checksum = (checksum ^ data[i]) * 1099511628211ull;
  EXPECT_EQ(expected, checksum);
  EXPECT_EQ(0, data[kSize]);
#ifdef __linux__
  struct rusage usage {};
  ASSERT_EQ(0, getrusage(RUSAGE_SELF, &usage));
  EXPECT_LE(size_t(usage.ru_maxrss) * 1024, residentBefore + 2 * kSize);
#endif
}

TEST_F(PDFTest, BuildDataDumpsTheAttachmentWhenAsked) {
  WriteSettings("NetworkAdapter.DumpAttachment=1\n");
  // The dump is written in text mode: no line feeds, so that it reads back alike everywhere.
  const std::string bytes = "%PDF-1.4 \x01\x02\xff binary";
  WriteFile(ScratchFile("i.pdf"), bytes);
  CAttachmentData attachment;
  BYTE* data = nullptr;
  ASSERT_EQ(S_OK, attachment.BuildData(FormWithAttachment("i.pdf").Get(), &data));
  EXPECT_EQ(bytes, ReadFile(TempPath() + "na2003_Invoice.pdf"));
}

// ---- The inline writer -----------------------------------------------------------------------

TEST_F(PDFTest, WritesTheEncodedFileAndDeletesIt) {
  const std::string path = ScratchFile("form.pdf");
  WriteFile(path, "Hello, PDF!");
  EXPECT_EQ(
      "<PDFData>\n"
      "<IsEncoded>Y</IsEncoded>\n"
      "<Bytes>SGVsbG8sIFBERiE=</Bytes>\n"
      "</PDFData>\n",
      BuildPDF(path, S_OK));
  EXPECT_FALSE(FileExists(path));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(PDFTest, PiecesStartAtTheLineStartWhateverTheIndentation) {
  WriteSettings("NetworkAdapter.IndentXML=1\nNetworkAdapter.PDFChunk=8\n");
  const std::string path = ScratchFile("form.pdf");
  WriteFile(path, "Hello, PDF!");
  EXPECT_EQ(
      "    <PDFData>\n"
      "      <IsEncoded>Y</IsEncoded>\n"
      "<Bytes>SGVsbG8s</Bytes>\n"
      "<Bytes>IFBERiE=</Bytes>\n"
      "    </PDFData>\n",
      BuildPDF(path, S_OK, 2));
}

struct PieceCase {
  size_t bytes;                // file length
  const char* chunkSetting;    // "NetworkAdapter.PDFChunk", or null for none
  std::vector<size_t> pieces;  // lengths of the "Bytes" texts
};

class PieceTest : public PDFTest, public ::testing::WithParamInterface<PieceCase> {};

TEST_P(PieceTest, SplitsTheTextIntoPiecesOfTheSetLength) {
  const PieceCase& piece = GetParam();
  if (piece.chunkSetting) WriteSettings(std::string("NetworkAdapter.PDFChunk=") + piece.chunkSetting + "\n");
  const std::string bytes = SampleBytes(piece.bytes);
  const std::string path = ScratchFile("form.pdf");
  WriteFile(path, bytes);

  const std::string encoded = Base64(bytes);
  std::string expected = "<PDFData>\n<IsEncoded>Y</IsEncoded>\n";
  size_t at = 0;
  for (size_t length : piece.pieces) {
    expected += "<Bytes>" + encoded.substr(at, length) + "</Bytes>\n";
    at += length;
  }
  ASSERT_EQ(encoded.size(), at);
  expected += "</PDFData>\n";
  EXPECT_EQ(expected, BuildPDF(path, S_OK));
}

INSTANTIATE_TEST_SUITE_P(
    Chunks, PieceTest,
    ::testing::Values(PieceCase{1875, "1000", {1000, 1000, 500}},  // 2500 characters
                      PieceCase{150, "76", {76, 76, 48}},           // 200 characters
                      PieceCase{150, "199", {199, 1}},
                      PieceCase{150, "200", {200}},
                      PieceCase{150, "201", {200}},
                      PieceCase{150, "0", {200}},
                      PieceCase{150, "-76", {200}},
                      PieceCase{150, nullptr, {200}},
                      PieceCase{0, nullptr, {0}},
                      PieceCase{0, "10", {0}},
                      // A piece longer than a string of the toolkit holds.
                      PieceCase{60000, nullptr, {80000}},
                      PieceCase{60000, "40000", {40000, 40000}}));

TEST_F(PDFTest, PreservedFileTakesTheFirstFreeNumber) {
  WriteSettings("NetworkAdapter.PreservePDF=1\n");
  WriteFile(TempPath() + "pdfform001.pdf", "kept before");
  const std::string path = ScratchFile("form.pdf");
  WriteFile(path, "Hello, PDF!");
  BuildPDF(path, S_OK);
  EXPECT_FALSE(FileExists(path));
  EXPECT_EQ("kept before", ReadFile(TempPath() + "pdfform001.pdf"));
  EXPECT_EQ("Hello, PDF!", ReadFile(TempPath() + "pdfform002.pdf"));

  WriteFile(path, "second");
  BuildPDF(path, S_OK);
  EXPECT_EQ("second", ReadFile(TempPath() + "pdfform003.pdf"));
}

TEST_F(PDFTest, PreservedFileIsDeletedWhenEveryNumberIsTaken) {
  WriteSettings("NetworkAdapter.PreservePDF=1\n");
  char name[32];
  for (int number = 1; number <= 999; ++number) {
    std::snprintf(name, sizeof name, "pdfform%03d.pdf", number);
    WriteFile(TempPath() + name, "taken");
  }
  const std::string path = ScratchFile("form.pdf");
  WriteFile(path, "Hello, PDF!");
  BuildPDF(path, S_OK);
  EXPECT_FALSE(FileExists(path));
  EXPECT_EQ("taken", ReadFile(TempPath() + "pdfform999.pdf"));
  EXPECT_FALSE(FileExists(TempPath() + "pdfform1000.pdf"));
}

TEST_F(PDFTest, PreservedFileIsDeletedWhenTheHostCannotRename) {
  WriteSettings("NetworkAdapter.PreservePDF=1\n");
  ASSERT_TRUE(Faults().Fail("IFileRedirectionService::Rename", E_ACCESSDENIED));
  const std::string path = ScratchFile("form.pdf");
  WriteFile(path, "Hello, PDF!");
  BuildPDF(path, S_OK);
  EXPECT_FALSE(FileExists(path));
  EXPECT_FALSE(FileExists(TempPath() + "pdfform001.pdf"));
  EXPECT_EQ(999, Faults().Triggered("IFileRedirectionService::Rename"));
}

struct PDFFailure {
  const char* file;       // in the scratch folder; null for no name
  const char* operation;  // a host fault, or null
  HRESULT hr;
  const char* message;
  const char* logged;  // the HRESULT in the log
};

class PDFFailureTest : public PDFTest, public ::testing::WithParamInterface<PDFFailure> {};

TEST_P(PDFFailureTest, WritesNothingAndLeavesTheFile) {
  const PDFFailure& failure = GetParam();
  WriteFile(ScratchFile("form.pdf"), "Hello, PDF!");
  std::filesystem::create_directory(ScratchFile("folder.pdf"));
  if (failure.operation && std::string(failure.operation) == "unavailable") {
    ASSERT_TRUE(Faults().MakeUnavailable("IBase64Coder"));
  } else if (failure.operation) {
    ASSERT_TRUE(Faults().Fail(failure.operation, E_ACCESSDENIED));
  }

  XMLBuilder builder(0, 4096);
  const Bstr name = failure.file ? MakeBstr(ScratchFile(failure.file)) : Bstr();
  EXPECT_EQ(failure.hr, CPDFBuilder(name.Get()).BuildXML(builder));
  EXPECT_EQ(0u, builder.Buffer()->GetLength());
  EXPECT_EQ("Hello, PDF!", ReadFile(ScratchFile("form.pdf")));
  EXPECT_EQ(std::vector<std::string>{Entry(kPDFPrefix, failure.message, failure.logged)}, LogEntries());
}

INSTANTIATE_TEST_SUITE_P(
    Failures, PDFFailureTest,
    ::testing::Values(
        PDFFailure{nullptr, nullptr, E_FAIL, "No PDF file name specified.", "0x80004005"},
        PDFFailure{"missing.pdf", nullptr, E_FAIL, "Error opening PDF file.", "0x80004005"},
        PDFFailure{"folder.pdf", nullptr, E_FAIL, "Error opening PDF file.", "0x80004005"},
        PDFFailure{"form.pdf", "unavailable", E_NOINTERFACE, "Failed to create the base64 coder.",
                   "0x80004002"},
        PDFFailure{"form.pdf", "IBase64Coder::Encode", E_ACCESSDENIED, "Failed to encode PDF file.",
                   "0x80070005"},
        PDFFailure{"form.pdf", "IBase64Coder::EncodedMessage", E_ACCESSDENIED,
                   "Failed to encode PDF file.", "0x80070005"}));

TEST_F(PDFTest, EmptyNameIsNoName) {
  XMLBuilder builder(0, 4096);
  EXPECT_EQ(E_FAIL, CPDFBuilder(MakeBstr("").Get()).BuildXML(builder));
  EXPECT_EQ(std::vector<std::string>{Entry(kPDFPrefix, "No PDF file name specified.")}, LogEntries());
}

}  // namespace
}  // namespace parcelon::test
