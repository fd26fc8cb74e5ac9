// Test helper: whether a session's request text, composed as the network adapter posts it,
// validates against the document type definitions in dtds/. The validator is native only; the
// Windows build takes every request as valid.
#pragma once

#include <string>

#include "tools/RequestDocument.h"
#ifndef _WIN32
#include "tools/RequestValidator.h"
#endif

namespace parcelon::test {

inline constexpr char kLXMainDocType[] =
    "ZPN PUBLIC '-//ORVANE//DTD LXN Platform LXMAIN 1.0//EN' 'https://gateway.orvane.example/dtds/lxmain.dtd'";
inline constexpr char kFormGateDocType[] =
    "ZPN PUBLIC '-//ORVANE//DTD LXN Platform FORMGATE 1.0//EN' 'https://gateway.orvane.example/dtds/formgate.dtd'";

// "valid", or the validator's message for `body` under `docType`. A body of another document's
// delivery request ("FormsMsgsRq") goes under its own declaration when none is given.
inline std::string RequestValidity(const std::string& body, const char* docType = nullptr) {
  if (!docType) docType = body.starts_with("<FormsMsgsRq") ? kFormGateDocType : kLXMainDocType;
#ifdef _WIN32
  (void)body;
  return "valid";
#else
  std::string message;
  return tools::ValidateRequest(tools::ComposeRequestDocument(docType, body), PARCELON_SOURCE_DIR "/dtds", message)
             ? "valid"
             : message;
#endif
}

}  // namespace parcelon::test
