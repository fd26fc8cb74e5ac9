#include "forms/PDFBuilder.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <sys/mman.h>
#include <sys/stat.h>
#endif

#include "diagnostics/Dumps.h"
#include "diagnostics/FeatureSettings.h"
#include "diagnostics/LogIfFailed.h"
#include "diagnostics/RedirectedFiles.h"
#include "host/Services.h"
#include "platform/CodePage.h"
#include "platform/Paths.h"

namespace {

constexpr char kBuildDataPrefix[] = "Parcelon:CNA_Forms::BuildData";
constexpr char kPDFBuilderPrefix[] = "Parcelon:CPDFBuilder::BuildXML(XMLBuilder&)";

constexpr char kSettingsSection[] = "ZPSSettings";
constexpr char kChunkKey[] = "NetworkAdapter.PDFChunk";
constexpr char kPreserveKey[] = "NetworkAdapter.PreservePDF";
constexpr int kPreservedNames = 999;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// The ANSI form of a BSTR, as the C library's file functions take names; false when memory runs
// out.
bool ToAnsi(BSTR text, std::string& out) {
  out.clear();
  return parcelon::WideToAnsi(text, SysStringLen(text), out);
}

// The form joins its attachment's folder and name with "\", the separator of the host's own
// platform; elsewhere the file functions want "/".
void ToNativeSeparators(std::string& path) {
#ifdef _WIN32
  (void)path;
#else
  std::replace(path.begin(), path.end(), '\\', '/');
#endif
}

// Appends `count` characters of `text` as they stand, in pieces an OLAString can hold.
void AppendRawRange(XMLBuilder& builder, const char* text, size_t count) {
  OLAString piece;
  for (size_t at = 0; at < count; at += size_t(OLAString::kMaxChars)) {
    piece.SetText(text + at, std::min(count - at, size_t(OLAString::kMaxChars)));
    builder.AppendText(piece, false, false);
  }
}

// Asks for huge pages for the whole 2 MB blocks of a fresh buffer: the read fills every page of
// it, and faulting in 4 KB pages one by one costs about twice the read itself.
void AdviseHugePages(void* data, size_t size) {
#ifdef __linux__
  constexpr uintptr_t kHugePage = uintptr_t(2) << 20;
  const uintptr_t begin = (reinterpret_cast<uintptr_t>(data) + kHugePage - 1) & ~(kHugePage - 1);
  const uintptr_t end = (reinterpret_cast<uintptr_t>(data) + size) & ~(kHugePage - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
  (void)data;
  (void)size;
#endif
}

// False for a folder, a device or a pipe. Windows refuses to open those by itself.
bool IsRegularFile(const std::string& path) {
#ifdef _WIN32
  (void)path;
  return true;
#else
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
#endif
}

bool Exists(const parcelon::RedirectedFiles& files, const std::string& path) {
  std::string mapped;
  std::error_code error;
  return files.Map(path.c_str(), mapped) && std::filesystem::exists(mapped, error);
}

// After CPDFBuilder: keeps the file under the first free numbered name in the temporary folder
// when "NetworkAdapter.PreservePDF" is on, else (or when no name is left) deletes it. A name
// already in use is passed over, since the C library's rename would replace that file off
// Windows.
void DisposeOfFile(const std::string& path) {
  const parcelon::RedirectedFiles files;
  if (AmbitAccess::GetFeatureParamAsBool(kSettingsSection, kPreserveKey, nullptr)) {
    const std::string folder = parcelon::TempFolder();
    char name[32];
    for (int number = 1; number <= kPreservedNames; ++number) {
      std::snprintf(name, sizeof name, "pdfform%03d.pdf", number);
      const std::string target = folder + name;
      if (!Exists(files, target) && files.Rename(path.c_str(), target.c_str())) return;
    }
  }
  files.Remove(path.c_str());
}

}  // namespace

namespace parcelon {

void FileBytes::Reset() {
  if (!Mapped()) {
    delete[] data_;
  } else {
#ifdef _WIN32
    UnmapViewOfFile(data_);
#else
    munmap(data_, mappedBytes_);
#endif
  }
  data_ = nullptr;
  mappedBytes_ = 0;
}

bool FileBytes::Allocate(size_t length) {
  Reset();
  data_ = new (std::nothrow) BYTE[length + 1];
  if (data_) AdviseHugePages(data_, length + 1);
  return data_ != nullptr;
}

bool FileBytes::Map(std::FILE* file, size_t length) {
  Reset();
  if (length == 0) return false;
#ifdef _WIN32
  // A view ends with the file: the zero byte needs room in the file's last page.
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  if (length % system.dwPageSize == 0) return false;
  const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
  if (handle == INVALID_HANDLE_VALUE) return false;
  const HANDLE mapping = CreateFileMappingW(handle, nullptr, PAGE_WRITECOPY, 0, 0, nullptr);
  if (!mapping) return false;
  // The view keeps the mapping alive; a view longer than the file (cut since its length was
  // measured) is refused.
  void* view = MapViewOfFile(mapping, FILE_MAP_COPY, 0, 0, length);
  CloseHandle(mapping);
  if (!view) return false;
  data_ = static_cast<BYTE*>(view);
  mappedBytes_ = length + 1;
#else
  // Off Windows nothing stops another process from cutting a mapped file, and a read of a page
  // past its new end raises SIGBUS: the bytes are always read into memory of our own.
  (void)file;
  return false;
#endif
  // A file that has grown since is cut at the length measured.
  data_[length] = 0;
  return true;
}

HRESULT ReadWholeFile(const std::string& path, const char* prefix, FileBytes& data, LONG& size) {
  const RedirectedFiles files;
  std::string mapped;
  // Only a regular file is opened: a folder would open (off Windows) and read as garbage, a named
  // pipe would block the open until someone writes to it.
  if (!files.Map(path.c_str(), mapped) || !IsRegularFile(mapped))
    RETURN_HR_LOG(E_FAIL, prefix, "Error opening PDF file.");
  const FilePtr file(std::fopen(mapped.c_str(), "rb"));
  if (!file) RETURN_HR_LOG(E_FAIL, prefix, "Error opening PDF file.");
  if (std::fseek(file.get(), 0, SEEK_END) != 0)
    RETURN_HR_LOG(E_FAIL, prefix, "Error determining PDF file length.");
  const long length = std::ftell(file.get());
  if (length < 0 || static_cast<long long>(length) > kMaxAttachmentBytes ||
      std::fseek(file.get(), 0, SEEK_SET) != 0)
    RETURN_HR_LOG(E_FAIL, prefix, "Error determining PDF file length.");

  // A file that cannot be mapped (a file system without mappings, say) is read like a small one.
  if (static_cast<long long>(length) >= kMapFromBytes && data.Map(file.get(), size_t(length))) {
    size = LONG(length);
    return S_OK;
  }
  if (!data.Allocate(size_t(length)))
    RETURN_HR_LOG(E_OUTOFMEMORY, prefix, "Unable to read full length of attachment file.");
  size = LONG(length);
  // One read of one byte more than the length: a read error shows even for an empty file, and a
  // file that has grown since is cut at the length measured.
  BYTE* const bytes = data.Data();
  const size_t read = std::fread(bytes, 1, size_t(length) + 1, file.get());
  bytes[size_t(length)] = 0;
  if (read < size_t(length) || std::ferror(file.get()))
    RETURN_HR_LOG(E_FAIL, prefix, "Unable to read full length of attachment file.");
  return S_OK;
}

}  // namespace parcelon

// ---- CAttachmentData -------------------------------------------------------------------------

void CAttachmentData::Release() {
  data_.Reset();
  size_ = 0;
}

HRESULT CAttachmentData::BuildData(INA_Form7* form, BYTE** data) {
  if (!data) return E_POINTER;
  *data = nullptr;
  Release();
  if (!form) return E_POINTER;

  Bstr fileName;
  RETURN_IF_FAILED_LOG(form->get_AttachmentFileList(fileName.Out()), kBuildDataPrefix,
                       "Failed to get attachment file name.");
  std::string path;
  if (!ToAnsi(fileName.Get(), path)) return E_OUTOFMEMORY;
  ToNativeSeparators(path);
  RETURN_IF_FAILED(parcelon::ReadWholeFile(path, kBuildDataPrefix, data_, size_));
  *data = data_.Data();

  // The dump is named by form type and document type; what cannot be read gives the general
  // name. It never stops the send.
  NAFormType formType = naftNON_LX;
  const long dumpType = SUCCEEDED(form->get_FormType(&formType)) ? long(formType) : -1;
  Bstr docType;
  std::string extension;
  if (FAILED(form->get_DocType(docType.Out())) || !ToAnsi(docType.Get(), extension)) extension.clear();
  parcelon::DumpAttachment(data_.Data(), size_t(size_), dumpType, extension.c_str());
  return S_OK;
}

// ---- CPDFBuilder -----------------------------------------------------------------------------

HRESULT CPDFBuilder::BuildXML(XMLBuilder& builder) {
  if (fileName_.Empty()) RETURN_HR_LOG(E_FAIL, kPDFBuilderPrefix, "No PDF file name specified.");
  std::string path;
  if (!ToAnsi(fileName_.Get(), path)) return E_OUTOFMEMORY;

  IBase64CoderPtr coder;
  const char* encoded = nullptr;
  {
    parcelon::FileBytes bytes;
    LONG size = 0;
    RETURN_IF_FAILED(parcelon::ReadWholeFile(path, kPDFBuilderPrefix, bytes, size));
    RETURN_IF_FAILED_LOG(CoCreateInstance(parcelon::host::CLSID_Base64Coder, nullptr, CLSCTX_INPROC_SERVER,
                                          IidOf<IBase64Coder>(), coder.ReleaseAndGetVoidAddress()),
                         kPDFBuilderPrefix, "Failed to create the base64 coder.");
    RETURN_IF_FAILED_LOG(coder->Encode(bytes.Data(), size), kPDFBuilderPrefix,
                         "Failed to encode PDF file.");
    // The file's bytes are freed (or unmapped) here, before the file is disposed of: the encoded
    // text is all that is written.
  }
  RETURN_IF_FAILED_LOG(coder->EncodedMessage(&encoded), kPDFBuilderPrefix,
                       "Failed to encode PDF file.");
  if (!encoded) encoded = "";
  const size_t length = std::char_traits<char>::length(encoded);

  // Pieces of the configured length; one piece when it is not set, not positive, or not shorter
  // than the whole text.
  const int chunk = AmbitAccess::GetFeatureParamAsInt(kSettingsSection, kChunkKey, nullptr);
  const size_t pieceLength = chunk <= 0 || size_t(chunk) >= length ? length : size_t(chunk);

  builder.OpenAggregate("PDFData");
  builder.AddBoolElement("IsEncoded", VARIANT_TRUE);
  size_t at = 0;
  do {
    const size_t count = std::min(pieceLength, length - at);
    builder.AppendRaw("<Bytes>");
    AppendRawRange(builder, encoded + at, count);
    builder.AppendRaw("</Bytes>");
    builder.AppendNewlines(1);
    at += count;
  } while (at < length);
  builder.CloseAggregate("PDFData");

  DisposeOfFile(path);
  return S_OK;
}
