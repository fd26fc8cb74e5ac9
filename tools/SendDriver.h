// Drives a send session as the host's network adapter does, pass by pass in its calling order,
// and writes down what every pass would send: the dry run of the parcelon tool and of the
// whole-send tests. The gateway's answers are simulated: the attachment's cookie, and a response
// document for every pass that a gateway answers with one of the aggregates the session parses.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "interfaces/ParcelonInterfaces.h"
#include "platform/Bstr.h"

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
  // The status the gateway answers pass 1, 2, ... with; "0" for the passes beyond.
  std::vector<std::string> responses;
  // Called after each adapter call that succeeded, with the pass (0 before the first) and the
  // call's name as the transcript gives it ("BuildXML", "OnSynchCompleted"): tests stop a send
  // at a chosen point with it.
  std::function<void(int pass, const char* call)> afterCall;
};

// Creates an NA_Forms session through the class table (the component's and the host's classes
// must be registered), adds and fills the forms, and runs every pass. The transcript gets, per
// pass, the adapter's questions and the session's answers: state, URL key and address, content
// type, header lines and the body (an attachment as its length and FNV-1a digest, a request as
// its text), then the response document the pass is answered with and what ParseResponse returned
// for each aggregate of it. An attachment pass is answered with an "AttachmentRs" that carries a
// "MessageID", a form pass that carried a data upload with an "LXDataMsgsRs" whose "DataUploadRs"
// carries a new "LastDataUploadToken"; other passes get no document. A failed call ends the send;
// its HRESULT is returned and the transcript says which call failed.
HRESULT RunSend(const SendSpec& plan, std::string& transcript);

// A BSTR from UTF-8 text.
Bstr ToBstr(const std::string& utf8);

}  // namespace parcelon::tools
