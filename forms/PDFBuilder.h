// Form request building: the form request envelope, the form aggregates, the company and sales tax
// blocks, and the PDF attachment. Including this header gives all of forms/.
//
// The PDF attachment travels in two ways:
// - CAttachmentData: the body of the session's attachment pass, the file's bytes as they are
//   (a large file mapped, not copied).
//   The session keeps one and answers the adapter's callbacks with it:
//
//     HRESULT CNA_Forms::BuildData(BYTE** pData) { return attachment_.BuildData(currentForm, pData); }
//     HRESULT CNA_Forms::get_DataSize(LONG* pVal) { *pVal = attachment_.DataSize(); return S_OK; }
//     // when the attachment pass ends, and with the session:
//     attachment_.Release();
//
// - CPDFBuilder: the file written inline into a request as base64 text ("PDFData"), for request
//   builders; no send pass uses it.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "clienttools/XMLBuilder.h"
#include "interfaces/ParcelonInterfaces.h"
#include "forms/CompanyBuilder.h"
#include "forms/EnumToString.h"
#include "forms/EstimateForm.h"
#include "forms/FormRequest.h"
#include "forms/InvoiceForm.h"
#include "forms/SalesTaxBuilder.h"
#include "forms/StatementForm.h"
#include "platform/Bstr.h"
#include "platform/ComBase.h"

namespace parcelon {

// The largest attachment: its length and the terminating zero byte must fit a signed 32-bit
// count.
inline constexpr long long kMaxAttachmentBytes = 0x7FFFFFFE;
// Files from this length on are mapped rather than read: the mapping spares the copy into a fresh
// buffer and that buffer's first touch of every page.
inline constexpr long long kMapFromBytes = 1 << 20;

// A file's bytes followed by one zero byte, in memory that this process may read and write
// without changing the file: a private mapping of the file (copy on write) or a buffer the file
// was read into.
class FileBytes {
 public:
  FileBytes() = default;
  FileBytes(const FileBytes&) = delete;
  FileBytes& operator=(const FileBytes&) = delete;
  ~FileBytes() { Reset(); }

  BYTE* Data() const { return data_; }
  // True when the bytes are a mapping of the file rather than a copy.
  bool Mapped() const { return mappedBytes_ != 0; }
  void Reset();

  // Maps `length` bytes of the open `file` and a zero byte after them; false (and nothing held)
  // when the system cannot map it.
  bool Map(std::FILE* file, size_t length);
  // A buffer of `length` + 1 bytes to read into; false when memory runs out.
  bool Allocate(size_t length);

 private:
  BYTE* data_ = nullptr;
  size_t mappedBytes_ = 0;  // the mapping's extent; 0 for an allocated buffer
};

// Reads the file at `path` (ANSI, through the host's file redirection) whole, with a terminating
// zero byte: a file of kMapFromBytes or more is mapped where the system can map it, any other is
// read into one buffer of its length plus one, one allocation sized from the file and one read.
// `data` and `size` are set as soon as the bytes exist, so after a failed read the caller still
// owns them. Failures are logged with `prefix`: "Error opening PDF file." (also for a folder,
// device or pipe), "Error determining PDF file length." (also for a file of more than
// kMaxAttachmentBytes bytes), "Unable to read full length of attachment file." (E_FAIL;
// E_OUTOFMEMORY when the buffer cannot be had).
HRESULT ReadWholeFile(const std::string& path, const char* prefix, FileBytes& data, LONG& size);

}  // namespace parcelon

// The attachment data of a send session: the bytes of the file that the current form names, in
// memory that the session owns until Release (a mapping of a large file, else a buffer).
class CAttachmentData {
 public:
  CAttachmentData() = default;
  CAttachmentData(const CAttachmentData&) = delete;
  CAttachmentData& operator=(const CAttachmentData&) = delete;

  // Frees the data of an earlier call, reads the file named by the form's AttachmentFileList
  // (whose "\" separators become "/" off Windows) and hands out the buffer through *data (still
  // owned here), then writes the attachment dump when its switch is on. Failures: the property read's own ("Failed to get attachment file name."),
  // and those of parcelon::ReadWholeFile; *data is then null.
  HRESULT BuildData(INA_Form7* form, BYTE** data);
  // The length in bytes of the data BuildData gave; 0 when there is none.
  LONG DataSize() const { return size_; }
  const BYTE* Data() const { return data_.Data(); }
  // Frees the data; the length becomes 0.
  void Release();

 private:
  parcelon::FileBytes data_;
  LONG size_ = 0;
};

// Writes a PDF file inline as "PDFData" with the file's base64 text, in pieces of
// "NetworkAdapter.PDFChunk" characters, and then disposes of the file: with
// "NetworkAdapter.PreservePDF" on it is kept in the temporary folder as the first free name of
// pdfform001.pdf to pdfform999.pdf, otherwise (or when no name is free) it is deleted.
class CPDFBuilder {
 public:
  explicit CPDFBuilder(BSTR fileName) : fileName_(fileName) {}

  // "PDFData": "IsEncoded" (Y), then one "Bytes" line per piece, written as they are. Failures
  // (the file is then left where it is): "No PDF file name specified.", those of
  // parcelon::ReadWholeFile, and the base64 coder's own.
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  Bstr fileName_;
};
