// One pass's exchange with the gateway: what the network adapter sends and what comes back. The
// send driver hands every pass to a PassExchange; SimulatedGateway answers as a gateway would
// without a network, HttpExchange (native builds) posts the pass over HTTP.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ComBase.h"

namespace parcelon::tools {

struct PassRequest {
  int pass = 0;
  // The form the pass belongs to (from 1) and the number of forms in the send.
  int form = 0, forms = 0;
  bool attachment = false;
  std::string url, contentType;
  // "name: value" lines, each ended by CR LF, as the session gives them.
  std::string headerLines;
  // The attachment's bytes, or the request document of a form pass.
  std::string body;
};

struct PassResponse {
  int status = 0;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  // The first header of that name, compared without case; null when there is none.
  const std::string* Header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
      if (key.size() != name.size()) continue;
      bool same = true;
      for (size_t i = 0; same && i < key.size(); ++i)
        same = (key[i] | 0x20) == (name[i] | 0x20);
      if (same) return &value;
    }
    return nullptr;
  }
};

class PassExchange {
 public:
  virtual ~PassExchange() = default;
  // Sends `request` and fills `response`. A failure returns its HRESULT and says in `error`
  // what went wrong, in words for the user.
  virtual HRESULT Exchange(const PassRequest& request, PassResponse& response, std::string& error) = 0;
};

// The gateway's answers without a network: an attachment gets the "messageid" cookie and an
// "AttachmentRs" with the same identifier, a form request that carried a data upload an
// "LXDataMsgsRs" whose "DataUploadRs" carries a new token; other passes get no document.
// `statuses` answer pass 1, 2, ...; "0" for the passes beyond.
class SimulatedGateway final : public PassExchange {
 public:
  explicit SimulatedGateway(std::vector<std::string> statuses) : statuses_(std::move(statuses)) {}
  HRESULT Exchange(const PassRequest& request, PassResponse& response, std::string& error) override;

 private:
  std::vector<std::string> statuses_;
  int attachments_ = 0;
  int uploads_ = 0;
};

// A status as a response document's attribute text.
std::string EscapedAttribute(std::string_view text);

}  // namespace parcelon::tools
