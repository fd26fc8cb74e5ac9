// The session's upload state in the company file: the token the gateway gave for the last
// accepted upload and the time of the last client upload, kept in the DataUpload record.
#pragma once

#include <cstdint>
#include <ctime>

#include "clienttools/OLAString.h"
#include "platform/ComBase.h"

namespace parcelon::upload {

// Writes "LastClientDataUploadTime" as a 64-bit value.
HRESULT StoreLastClientDataUploadTime(time_t uploadTime);
// Reads "LastClientDataUploadTime" as a 32-bit value into *uploadTime; 0 when never written or
// written empty. *uploadTime is left alone on failure.
HRESULT RetrieveLastClientDataUploadTime(LONG* uploadTime);
// Writes "LastDataUploadToken".
HRESULT StoreLastDataUploadToken(const OLAString& token);
// Reads "LastDataUploadToken" into *token; "0" when never written or written empty.
HRESULT RetrieveLastDataUploadToken(OLAString* token);

// The last client upload time as the change scans use it: 0 when it cannot be read, and 0 when
// it lies after `now`, so that a clock that once ran ahead cannot hide changes.
LONG LastClientDataUploadTimeBefore(int64_t now);

}  // namespace parcelon::upload
