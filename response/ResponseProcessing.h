// The processing of the gateway's response aggregates for the send session.
//
// ParseResponse takes one aggregate that the network adapter hands over as a DOM node: an
// "AttachmentRs" gives the current form its message identifier (or reports an expired ticket), an
// "LXDataMsgsRs" carries the "DataUploadRs" whose status says whether the data upload was
// accepted, whether every upload-time stamp must go ("4011"), and the new upload token; the
// "DataUploadRs" is then kept in the host's inbox. ParseInboxRequests applies such kept requests
// later and deletes them from the inbox.
#pragma once

#include "clienttools/OLAString.h"
#include "interfaces/ParcelonInterfaces.h"
#include "platform/ComBase.h"

namespace parcelon::response {

// A message identifier or upload token must be shorter than this many characters; a longer one
// is refused, never cut.
inline constexpr int kMaxResponseValueLength = 100;

// Applies the aggregate `node` (an IXMLDOMNode) to the session: `currentForm` (may be null) gets
// the attachment's message identifier; `dataUploadAccepted` is set when a "DataUploadRs" answered
// "0" and its token, if any, was stored, and left alone otherwise.
HRESULT ParseResponse(IUnknown* node, INA_Form7* currentForm, bool& dataUploadAccepted);

// Applies the inbox's "DataUploadRs" requests named in `requestIDs`, which `delimiters` separate
// ("," when empty), and deletes each one applied. A request that cannot be read, parsed or applied
// is logged and left in the inbox; only a missing inbox fails the call.
HRESULT ParseInboxRequests(BSTR requestIDs, const OLAString& delimiters);

}  // namespace parcelon::response
