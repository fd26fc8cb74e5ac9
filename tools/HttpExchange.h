// The network adapter's exchange over HTTP (libcurl): each pass is posted to the gateway with the
// session's content type and header lines, and the answer's status, headers and body come back.
// Native builds only.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "tools/PassExchange.h"

namespace parcelon::tools {

// Failures of the wire, as HRESULTs.
inline constexpr HRESULT kConnectionRefused = HRESULT(0x800704C9L);  // ERROR_CONNECTION_REFUSED
inline constexpr HRESULT kTimedOut = HRESULT(0x80072EE2L);           // the internet time-out
inline constexpr HRESULT kConnectionBroken = HRESULT(0x80072EFEL);   // connection aborted
// An HTTP status of 300 or more: 0x8019 and the status, as Windows' HTTP_E_STATUS_ codes.
inline HRESULT HttpStatusResult(int status) { return HRESULT(0x80190000L | (status & 0xFFFF)); }

// The longest answer a pass reads: a gateway answers with status documents of a few kilobytes, so
// anything near this is a gateway gone wrong, and reading on would only exhaust memory.
inline constexpr size_t kMaxResponseBytes = size_t(16) << 20;

// The configured address `configured` moved onto `gateway`: the gateway's scheme, host and port
// with the configured address's path ("http://127.0.0.1:8080" and
// "https://forms.gateway.example/lxn/forms" give "http://127.0.0.1:8080/lxn/forms").
std::string AddressOnGateway(const std::string& gateway, const std::string& configured);

struct HttpOptions {
  // Where the passes go: scheme, host and port; each pass keeps its configured path.
  std::string gateway;
  // The longest a pass may take, connecting included.
  long timeoutMs = 30000;
  // A progress line per pass goes here when set.
  std::FILE* progress = nullptr;
};

class HttpExchange final : public PassExchange {
 public:
  explicit HttpExchange(HttpOptions options);
  ~HttpExchange() override;
  HttpExchange(const HttpExchange&) = delete;
  HttpExchange& operator=(const HttpExchange&) = delete;

  HRESULT Exchange(const PassRequest& request, PassResponse& response, std::string& error) override;

  // The seconds spent in exchanges so far.
  double SecondsOnTheWire() const { return seconds_; }
  // The bytes of the requests' bodies sent so far.
  size_t BytesSent() const { return bytesSent_; }

 private:
  HttpOptions options_;
  void* curl_ = nullptr;
  double seconds_ = 0;
  size_t bytesSent_ = 0;
};

}  // namespace parcelon::tools
