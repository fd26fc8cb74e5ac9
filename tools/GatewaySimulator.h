// A stand-in for the forms gateway on 127.0.0.1 (cpp-httplib): the attachment endpoint keeps the
// PDF and answers the "messageid" cookie and an "AttachmentRs"; the form endpoint validates the
// request document, applies its data upload to the gateway's copy of the company, checks the
// attachments it names and answers the upload's and each form's status; GET / shows what it
// holds. Misbehaviour can be scripted per request number. Native builds only.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/GatewayStore.h"

namespace parcelon::tools {

// Misbehaviour for the request of that number (from 1, counted over both endpoints).
struct GatewayFault {
  enum Kind {
    kStatus,     // answer this status and keep nothing ("status=4011")
    kExpired,    // the login ticket expired: status "13109", nothing kept
    kHttp,       // this HTTP status and no document, nothing kept ("http=500")
    kDrop,       // close the connection without an answer, nothing kept
    kMalformed,  // keep the request, answer a document that is not well-formed
    kTruncated,  // keep the request, break the connection halfway through the answer
    kDelay,      // keep the request, answer after this many milliseconds ("delay=MS")
  };
  int request = 0;
  Kind kind = kStatus;
  std::string status;
  int value = 0;
};

// Reads "N:status=CODE", "N:http=CODE", "N:delay=MS", "N:expired", "N:malformed", "N:truncated",
// "N:drop"; false with `error` otherwise.
bool ParseGatewayFault(const std::string& text, GatewayFault& fault, std::string& error);

struct GatewayOptions {
  // The folder of the gateway's SQLite file (gateway.db); created when missing.
  std::string dataDirectory;
  // 0 picks a free port.
  int port = 0;
  std::string formPath = "/lxn/forms";
  std::string attachmentPath = "/lxn/attachments";
  std::vector<GatewayFault> faults;
  // The longest request body read (a chunked one included); a longer one is answered 413.
  size_t maxRequestBytes = size_t(256) << 20;
  // Checks a form request document before anything else; false refuses it with HTTP 400 and
  // `message`. Null accepts every document.
  std::function<bool(std::string_view document, std::string& message)> validate;
};

class GatewaySimulator {
 public:
  // Opens the store, binds 127.0.0.1 and serves on a thread of its own; null with `error` when
  // it cannot.
  static std::unique_ptr<GatewaySimulator> Start(GatewayOptions options, std::string& error);
  ~GatewaySimulator();
  GatewaySimulator(const GatewaySimulator&) = delete;
  GatewaySimulator& operator=(const GatewaySimulator&) = delete;

  int Port() const;
  // "http://127.0.0.1:PORT"
  std::string Address() const;
  GatewayStore& Store();
  // Ends every delayed answer at once and stops serving; waits for the server's thread.
  void Stop();

  struct State;

 private:
  explicit GatewaySimulator(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace parcelon::tools
