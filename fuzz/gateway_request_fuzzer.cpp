// A form request of any bytes as the gateway simulator receives it: checked against its document
// type, then read. Neither may crash, leak or hang, and a document the validator accepts must be
// one the gateway can read, with a form request or an upload in it.
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzSupport.h"
#include "tools/ReceivedRequest.h"
#include "tools/RequestValidator.h"

using parcelon::fuzz::Finding;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view document(reinterpret_cast<const char*>(data), size);
  std::string message;
  const bool valid = parcelon::tools::ValidateRequest(document, PARCELON_SOURCE_DIR "/dtds", message);
  if (!valid && message.empty()) Finding("a refusal without a message");
  parcelon::tools::ReceivedRequest request;
  std::string error;
  const bool read = parcelon::tools::ReadReceivedRequest(document, request, error);
  if (valid && !read) Finding("a valid request the gateway cannot read: " + error);
  if (!read && error.empty()) Finding("an unread request without a reason");
  return 0;
}
