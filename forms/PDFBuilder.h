// Form request building: the form request envelope, the form aggregates, the company and sales tax
// blocks, and the PDF attachment. Including this header gives all of forms/.
//
// The PDF attachment travels in two ways:
// - CAttachmentData: the body of the session's attachment pass, the file's bytes as they are.
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
#include <memory>
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

// Reads the file at `path` (ANSI, through the host's file redirection) whole into a new buffer of
// its length plus one terminating zero byte: one allocation sized from the file and one read, no
// growth. `data` and `size` are set as soon as the buffer exists, so after a failed read the
// caller still owns it. Failures are logged with `prefix`: "Error opening PDF file." (also for a
// folder, device or pipe), "Error determining PDF file length." (also for a file of more than
// kMaxAttachmentBytes bytes), "Unable to read full length of attachment file." (E_FAIL;
// E_OUTOFMEMORY when the buffer cannot be had).
HRESULT ReadWholeFile(const std::string& path, const char* prefix, std::unique_ptr<BYTE[]>& data,
                      LONG& size);

}  // namespace parcelon

// The attachment data of a send session: the bytes of the file that the current form names, in
// one buffer that the session owns until Release.
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
  const BYTE* Data() const { return data_.get(); }
  // Frees the data; the length becomes 0.
  void Release();

 private:
  std::unique_ptr<BYTE[]> data_;
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
