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

// FNV-1a over `count` bytes, continuing from `hash`.
uint64_t Fnv1a(const uint8_t* bytes, size_t count, uint64_t hash = 14695981039346656037ull) {
  for (size_t i = 0; i < count; ++i) hash = (hash ^ bytes[i]) * 1099511628211ull;
  return hash;
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

  // What BuildData of `attachment` hands out, with status `expected`, for the form whose own
  // attachment is `name` (a form without attachment for an empty name).
  BYTE* BuildData(CAttachmentData& attachment, const std::string& name, HRESULT expected = S_OK) {
    BYTE* data = reinterpret_cast<BYTE*>(this);  // to be replaced, also on failure
    const INA_Form7Ptr form = name.empty() ? NewForm() : FormWithAttachment(name);
    EXPECT_EQ(expected, attachment.BuildData(form.Get(), &data));
    return data;
  }

  // The scratch file "form.pdf" holding `content`.
  std::string FormFile(const std::string& content = "Hello, PDF!") {
    WriteFile(ScratchFile("form.pdf"), content);
    return ScratchFile("form.pdf");
  }

  // CPDFBuilder's text and status for the file at `path`.
  static std::string BuildPDF(const std::string& path, HRESULT expected, uint32_t depth = 0) {
    return Written(expected, [&](XMLBuilder& b) { return CPDFBuilder(MakeBstr(path).Get()).BuildXML(b); }, depth);
  }
};

// ---- The attachment pass's body ----------------------------------------------------------------

// An empty file gives one zero byte; a second call replaces the data of the first.
TEST_F(PDFTest, BuildDataOfAnEmptyFileAndAgain) {
  WriteFile(ScratchFile("empty.pdf"), "");
  WriteFile(ScratchFile("b.pdf"), "second one");
  CAttachmentData attachment;
  const BYTE* data = BuildData(attachment, "empty.pdf");
  ASSERT_NE(nullptr, data);
  EXPECT_EQ(0, attachment.DataSize());
  EXPECT_EQ(0, data[0]);
  data = BuildData(attachment, "b.pdf");
  EXPECT_EQ("second one", std::string(reinterpret_cast<const char*>(data), size_t(attachment.DataSize())));
}

// A missing file, a folder and a form without attachment give no data.
TEST_F(PDFTest, BuildDataOfNoReadableFileLogsAndGivesNoData) {
  std::filesystem::create_directory(ScratchFile("folder.pdf"));
  for (const char* name : {"missing.pdf", "folder.pdf", ""}) {
    SCOPED_TRACE(name);
    StartCase();
    CAttachmentData attachment;
    EXPECT_EQ(nullptr, BuildData(attachment, name, E_FAIL));
    EXPECT_EQ(std::vector<std::string>{Entry(kBuildDataPrefix, "Error opening PDF file.")}, LogEntries());
  }
}

// A (sparse) file one byte longer than a 32-bit count can hold together with its terminating zero.
TEST_F(PDFTest, FileTooLargeForTheDataSizeIsRefused) {
  const std::string path = ScratchFile("huge.pdf");
  WriteFile(path, "");
  std::filesystem::resize_file(path, uintmax_t(kMaxAttachmentBytes) + 1);
  CAttachmentData attachment;
  EXPECT_EQ(nullptr, BuildData(attachment, "huge.pdf", E_FAIL));
  EXPECT_EQ(0, attachment.DataSize());
  EXPECT_EQ("", BuildPDF(path, E_FAIL));
  EXPECT_TRUE(FileExists(path));
  EXPECT_EQ((std::vector<std::string>{Entry(kBuildDataPrefix, "Error determining PDF file length."),
                                      Entry(kPDFPrefix, "Error determining PDF file length.")}),
            LogEntries());
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

// The body is the file as it is, mapped, with a terminating zero (no second copy); the pass leaves
// the file alone, and Release gives the mapping up, after which the file can be replaced.
TEST_F(PDFTest, BuildDataHandsOutA100MegabyteFileAsItIs) {
  constexpr size_t kSize = size_t(100) << 20;
  const std::string path = ScratchFile("large 7.pdf");
  // Written a megabyte at a time, with its checksum.
  uint64_t expected = Fnv1a(nullptr, 0);
  {
    FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(nullptr, file);
    std::string block = SampleBytes(size_t(1) << 20);
    for (size_t written = 0; written < kSize; written += block.size()) {
      block[0] = char(written >> 20);  // no two megabytes alike
      expected = Fnv1a(reinterpret_cast<const uint8_t*>(block.data()), block.size(), expected);
      ASSERT_EQ(block.size(), std::fwrite(block.data(), 1, block.size(), file));
    }
    ASSERT_EQ(0, std::fclose(file));
  }
#ifdef __linux__
  const size_t residentBefore = ResidentBytes();
#endif

  CAttachmentData attachment;
  const BYTE* data = BuildData(attachment, "large 7.pdf");
  ASSERT_EQ(attachment.Data(), data);
  ASSERT_EQ(LONG(kSize), attachment.DataSize());
  EXPECT_EQ(expected, Fnv1a(data, kSize));
  EXPECT_EQ(0, data[kSize]);
#ifdef __linux__
  struct rusage usage {};
  ASSERT_EQ(0, getrusage(RUSAGE_SELF, &usage));
  EXPECT_LE(size_t(usage.ru_maxrss) * 1024, residentBefore + 2 * kSize);
#endif
  EXPECT_TRUE(FileExists(path));
  EXPECT_TRUE(LogEntries().empty());

  attachment.Release();
  EXPECT_EQ(0, attachment.DataSize());
  EXPECT_EQ(nullptr, attachment.Data());
  EXPECT_TRUE(std::filesystem::remove(path));
}

// Around the length from which files are mapped, and a mapped file ending at a page boundary or
// just after one: the bytes and the zero after them, whichever way they came.
TEST_F(PDFTest, ReadsOrMapsTheWholeFileAndAZeroByte) {
  constexpr size_t kFrom = size_t(kMapFromBytes);
  for (const size_t size : {kFrom - 1, kFrom, kFrom + 1, kFrom + 4095, kFrom + 4096}) {
    SCOPED_TRACE(size);
    const std::string bytes = SampleBytes(size);
    const std::string path = ScratchFile("sized.pdf");
    WriteFile(path, bytes);
    FileBytes data;
    LONG length = -1;
    ASSERT_EQ(S_OK, ReadWholeFile(path, "test", data, length));
    ASSERT_EQ(LONG(size), length);
    EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(data.Data()), size));
    EXPECT_EQ(0, data.Data()[size]);
#ifdef _WIN32
    const bool mapped = size >= kFrom && size % 4096 != 0;  // a view has no room for the zero byte
#else
    const bool mapped = false;  // a file another process may cut is never mapped here
#endif
    EXPECT_EQ(mapped, data.Mapped());
    // The bytes are the process's own: writing them leaves the file alone.
    data.Data()[0] = BYTE(~data.Data()[0]);
    EXPECT_EQ(BYTE(~bytes[0]), data.Data()[0]);
    data.Reset();
    EXPECT_EQ(bytes, ReadFile(path));
  }
  EXPECT_TRUE(LogEntries().empty());
}

// A mapped file is let go before it is disposed of: Windows refuses to delete a mapped file.
TEST_F(PDFTest, WritesALargeFileAndDeletesIt) {
  const std::string bytes = SampleBytes(size_t(kMapFromBytes) + 1);
  const std::string path = FormFile(bytes);
  EXPECT_EQ("<PDFData>\n<IsEncoded>Y</IsEncoded>\n<Bytes>" + Base64(bytes) + "</Bytes>\n</PDFData>\n",
            BuildPDF(path, S_OK));
  EXPECT_FALSE(FileExists(path));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(PDFTest, BuildDataDumpsTheAttachmentWhenAsked) {
  WriteSettings("NetworkAdapter.DumpAttachment=1\n");
  // The dump is written in text mode: no line feeds, so that it reads back alike everywhere.
  const std::string bytes = "%PDF-1.4 \x01\x02\xff binary";
  WriteFile(ScratchFile("i.pdf"), bytes);
  CAttachmentData attachment;
  BuildData(attachment, "i.pdf");
  EXPECT_EQ(bytes, ReadFile(TempPath() + "na2003_Invoice.pdf"));
}

// ---- The inline writer -----------------------------------------------------------------------

TEST_F(PDFTest, WritesTheEncodedFileAndDeletesIt) {
  const std::string path = FormFile();
  EXPECT_EQ("<PDFData>\n<IsEncoded>Y</IsEncoded>\n<Bytes>SGVsbG8sIFBERiE=</Bytes>\n</PDFData>\n", BuildPDF(path, S_OK));
  EXPECT_FALSE(FileExists(path));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(PDFTest, PiecesStartAtTheLineStartWhateverTheIndentation) {
  WriteSettings("NetworkAdapter.IndentXML=1\nNetworkAdapter.PDFChunk=8\n");
  EXPECT_EQ("    <PDFData>\n      <IsEncoded>Y</IsEncoded>\n<Bytes>SGVsbG8s</Bytes>\n<Bytes>IFBERiE=</Bytes>\n"
            "    </PDFData>\n",
            BuildPDF(FormFile(), S_OK, 2));
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
  const std::string encoded = Base64(bytes);
  std::string expected = "<PDFData>\n<IsEncoded>Y</IsEncoded>\n";
  size_t at = 0;
  for (size_t length : piece.pieces) {
    expected += "<Bytes>" + encoded.substr(at, length) + "</Bytes>\n";
    at += length;
  }
  ASSERT_EQ(encoded.size(), at);
  EXPECT_EQ(expected + "</PDFData>\n", BuildPDF(FormFile(bytes), S_OK));
}

INSTANTIATE_TEST_SUITE_P(
    Chunks, PieceTest,
    ::testing::Values(PieceCase{1875, "1000", {1000, 1000, 500}},  // 2500 characters
                      PieceCase{150, "76", {76, 76, 48}},           // 200 characters
                      PieceCase{150, "199", {199, 1}}, PieceCase{150, "200", {200}}, PieceCase{150, "201", {200}},
                      PieceCase{150, "0", {200}}, PieceCase{150, "-76", {200}}, PieceCase{150, nullptr, {200}},
                      PieceCase{0, "10", {0}},
                      // A piece longer than a string of the toolkit holds.
                      PieceCase{60000, nullptr, {80000}}, PieceCase{60000, "40000", {40000, 40000}}));

TEST_F(PDFTest, PreservedFileTakesTheFirstFreeNumber) {
  WriteSettings("NetworkAdapter.PreservePDF=1\n");
  WriteFile(TempPath() + "pdfform001.pdf", "kept before");
  BuildPDF(FormFile(), S_OK);
  EXPECT_FALSE(FileExists(ScratchFile("form.pdf")));
  EXPECT_EQ("kept before", ReadFile(TempPath() + "pdfform001.pdf"));
  EXPECT_EQ("Hello, PDF!", ReadFile(TempPath() + "pdfform002.pdf"));
  BuildPDF(FormFile("second"), S_OK);
  EXPECT_EQ("second", ReadFile(TempPath() + "pdfform003.pdf"));
}

TEST_F(PDFTest, PreservedFileIsDeletedWhenEveryNumberIsTaken) {
  WriteSettings("NetworkAdapter.PreservePDF=1\n");
  char name[32];
  for (int number = 1; number <= 999; ++number) {
    std::snprintf(name, sizeof name, "pdfform%03d.pdf", number);
    WriteFile(TempPath() + name, "taken");
  }
  BuildPDF(FormFile(), S_OK);
  EXPECT_FALSE(FileExists(ScratchFile("form.pdf")));
  EXPECT_EQ("taken", ReadFile(TempPath() + "pdfform999.pdf"));
  EXPECT_FALSE(FileExists(TempPath() + "pdfform1000.pdf"));
}

TEST_F(PDFTest, PreservedFileIsDeletedWhenTheHostCannotRename) {
  WriteSettings("NetworkAdapter.PreservePDF=1\n");
  ASSERT_TRUE(Faults().Fail("IFileRedirectionService::Rename", E_ACCESSDENIED));
  BuildPDF(FormFile(), S_OK);
  EXPECT_FALSE(FileExists(ScratchFile("form.pdf")));
  EXPECT_FALSE(FileExists(TempPath() + "pdfform001.pdf"));
  EXPECT_EQ(999, Faults().Triggered("IFileRedirectionService::Rename"));
}

struct PDFFailure {
  const char* file;       // in the scratch folder; "" for an empty name, null for none
  const char* operation;  // a host fault, an interface made unavailable, or null
  HRESULT hr;
  const char* message;
  const char* logged;  // the HRESULT in the log
};

class PDFFailureTest : public PDFTest, public ::testing::WithParamInterface<PDFFailure> {};

TEST_P(PDFFailureTest, WritesNothingAndLeavesTheFile) {
  const PDFFailure& failure = GetParam();
  FormFile();
  std::filesystem::create_directory(ScratchFile("folder.pdf"));
  if (failure.operation) Inject({failure.operation, {}, E_ACCESSDENIED});
  const Bstr name = !failure.file ? Bstr() : MakeBstr(*failure.file ? ScratchFile(failure.file) : "");
  EXPECT_EQ("", Written(failure.hr, [&](XMLBuilder& b) { return CPDFBuilder(name.Get()).BuildXML(b); }));
  EXPECT_EQ("Hello, PDF!", ReadFile(ScratchFile("form.pdf")));
  EXPECT_EQ(std::vector<std::string>{Entry(kPDFPrefix, failure.message, failure.logged)}, LogEntries());
}

INSTANTIATE_TEST_SUITE_P(
    Failures, PDFFailureTest,
    ::testing::Values(
        PDFFailure{nullptr, nullptr, E_FAIL, "No PDF file name specified.", "0x80004005"},
        PDFFailure{"", nullptr, E_FAIL, "No PDF file name specified.", "0x80004005"},
        PDFFailure{"missing.pdf", nullptr, E_FAIL, "Error opening PDF file.", "0x80004005"},
        PDFFailure{"folder.pdf", nullptr, E_FAIL, "Error opening PDF file.", "0x80004005"},
        PDFFailure{"form.pdf", "IBase64Coder", E_NOINTERFACE, "Failed to create the base64 coder.", "0x80004002"},
        PDFFailure{"form.pdf", "IBase64Coder::Encode", E_ACCESSDENIED, "Failed to encode PDF file.", "0x80070005"},
        PDFFailure{"form.pdf", "IBase64Coder::EncodedMessage", E_ACCESSDENIED, "Failed to encode PDF file.",
                   "0x80070005"}));

}  // namespace
}  // namespace parcelon::test
