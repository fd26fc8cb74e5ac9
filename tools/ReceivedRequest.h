// A form request document as the gateway reads it: the data upload's company and records, and the
// form requests with the attachments they refer to. libxml2, native builds only.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace parcelon::tools {

struct UploadedRecord {
  // The list's element without "Add" or "Del" ("Terms", "CustomerJobs", "Invoices").
  std::string kind;
  std::string clientId;
  // The record's element as UTF-8 text; empty for a removal.
  std::string text;
  bool removed = false;
};

struct ReceivedForm {
  // The request's element ("InvoiceEMailRq") and its message set ("LXNParcelonMsgsRq").
  std::string request, messageSet;
  std::string trnUID;
  // The attachments' message identifiers ("MsgID").
  std::vector<std::string> messageIds;
  std::string text;
};

struct ReceivedRequest {
  bool hasUpload = false;
  std::string companyUID, token, companyName, companyText;
  std::vector<UploadedRecord> records;
  std::vector<ReceivedForm> forms;
};

// Reads `document` (a request document in any encoding it declares; no DTD is loaded, nothing is
// fetched). False with `error` when it is not well-formed.
bool ReadReceivedRequest(std::string_view document, ReceivedRequest& out, std::string& error);

}  // namespace parcelon::tools
