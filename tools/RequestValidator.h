// Checks a request document against the document type its declaration names, with libxml2's DTD
// validation. The declaration's file is looked up in a local folder and never fetched.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace parcelon::tools {

// The largest document checked: far above a first upload of tens of thousands of customers, and
// small enough that a parsed tree stays a bounded cost.
inline constexpr size_t kMaxRequestDocumentBytes = size_t(64) << 20;

// The document type definitions a request may declare: the file name its system identifier ends
// with.
inline constexpr std::string_view kRequestDtdFiles[] = {"lxmain.dtd", "formgate.dtd"};

// Parses `document` (no network access), finds the definition its declaration names in
// `dtdDirectory` and validates the document against it. True when it is valid; otherwise false,
// with `message` saying why: libxml2's first error with its line ("line 5: Element ... content does
// not follow the DTD, ..."), or why the document was refused before validation (too large, no
// declaration, an unknown definition, an internal subset).
// Safe to call from several threads at once: libxml2 is initialised once, on the first call, and the
// error handler installed for a call is the calling thread's own.
bool ValidateRequest(std::string_view document, const std::string& dtdDirectory, std::string& message);

}  // namespace parcelon::tools
