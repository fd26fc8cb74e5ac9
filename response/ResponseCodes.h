// The results a gateway's response aggregate can give the session.
#pragma once

#include "platform/ComBase.h"

// An attachment answered "13102".
inline constexpr HRESULT kAttachmentRefused = HRESULT(0x80049109L);
// An attachment answered "13109": the login ticket has expired.
inline constexpr HRESULT kTicketExpired = HRESULT(0x8004910AL);
// The data upload response could not be parsed or kept in the host's inbox.
inline constexpr HRESULT kInboxStoreFailed = HRESULT(0x8004911CL);
// A message identifier or upload token of 100 characters or more: refused, never cut.
inline constexpr HRESULT kResponseValueTooLong = HRESULT(0x8007006FL);  // ERROR_BUFFER_OVERFLOW
