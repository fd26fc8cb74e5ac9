// Diagnostic dumps of what is sent and received: a form's attachment and the cookie of a
// response's header, written to the temporary folder when their switches are on.
//
// With "NetworkAdapter.DoNotOverwriteDump" off, each dump overwrites a fixed file
// ("na2003_Invoice.pdf", "responseHeaderCookie.txt"); with it on, each goes to a new file whose
// name begins "NARequest" or "NAResponseHeaderCookie" and six characters that make it unique.
// Failures are logged and reported as E_FAIL; the caller goes on with the send in every case.
#pragma once

#include <cstddef>

#include "diagnostics/RedirectedFiles.h"
#include "platform/ComBase.h"

namespace parcelon {

// With "NetworkAdapter.DumpAttachment" on, writes the attachment to "na2003_" (or a unique name
// "NARequest??????_"), the form type ("Invoice" for 1, "Estimate" for 2, "Statement" for 3,
// "Attachment" for any other value, such as one for a type that could not be read), "." and
// `extension` ("pdf" when null or empty).
HRESULT DumpAttachment(const void* bytes, size_t count, long formType, const char* extension);

// With "NetworkAdapter.DumpResponseHeaderCookie" on, writes `cookie` to
// "responseHeaderCookie.txt" (or a unique name "NAResponseHeaderCookie??????.txt").
HRESULT DumpResponseHeaderCookie(const char* cookie);

}  // namespace parcelon
