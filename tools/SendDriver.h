// Drives a send session as the host's network adapter does, pass by pass in its calling order,
// and writes down what every pass sends and what it is answered: the parcelon tool's dry run and
// its sends over HTTP, and the whole-send tests. Each pass's exchange goes through a PassExchange:
// simulated answers by default, or the network.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "interfaces/ParcelonInterfaces.h"
#include "platform/Bstr.h"
#include "tools/PassExchange.h"

namespace parcelon::tools {

struct FormSpec {
  NAFormType type = naftINVOICE;
  LONG recNum = 0;
  NASendType send = nastEMAIL;
  std::string to, cc, bcc, from, replyTo, subject, text, pdf, faxTo;
  bool post = false;
  bool synchMultiple = false;
  // Statements: the customer or job, the statement date and its period (OLE dates).
  LONG statementCustomer = 0;
  DATE statementDate = 0, statementFrom = 0, statementTo = 0;
};

struct SendSpec {
  std::string ticket = "TICKET-0001";
  std::string authId = "AUTH-0001";
  // The session's DoAllCustomers: every customer and job goes with the data upload.
  bool allCustomers = false;
  std::vector<FormSpec> forms;
  // The status the simulated gateway answers pass 1, 2, ... with; "0" for the passes beyond.
  std::vector<std::string> responses;
  // Who answers the passes; null: a SimulatedGateway of `responses`.
  PassExchange* exchange = nullptr;
  // Called after each adapter call that succeeded, with the pass (0 before the first) and the
  // call's name as the transcript gives it ("BuildXML", "OnSynchCompleted"): tests stop a send
  // at a chosen point with it.
  std::function<void(int pass, const char* call)> afterCall;
};

// Creates an NA_Forms session through the class table (the component's and the host's classes
// must be registered), adds and fills the forms, and runs every pass. The transcript gets, per
// pass, the adapter's questions and the session's answers: state, URL key and address, content
// type, header lines and the body (an attachment as its length and FNV-1a digest, a request as
// its text), then the cookie and the response document the pass is answered with and what
// ParseResponse returned for each aggregate of it; a form request's own status, when the answer
// carries one. A form pass posts the request document (RequestDocument.h) around the session's
// text. A failed call or exchange ends the send: its HRESULT is returned, the transcript says
// which call failed, and `failure` (when given) says it in words. A form the gateway refused ends
// the send after its pass completed, with kFormRefused.
HRESULT RunSend(const SendSpec& plan, std::string& transcript, std::string* failure = nullptr);

// The result of a send whose form request the gateway answered with a status other than "0".
inline constexpr HRESULT kFormRefused = HRESULT(0x80049180L);

// A BSTR from UTF-8 text.
Bstr ToBstr(const std::string& utf8);

}  // namespace parcelon::tools
