// What the gateway simulator keeps in its SQLite file: the attachments it took, the companies and
// their records as the data uploads left them, and every form request it received with its answer.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "tools/ReceivedRequest.h"

struct sqlite3;

namespace parcelon::tools {

// A record of a company as the gateway holds it.
struct KeptRecord {
  std::string text;
  // "added", "changed" (by an upload after the one that added it) or "removed".
  std::string state;
};

struct UploadCounts {
  int added = 0, changed = 0, removed = 0;
};

class GatewayStore {
 public:
  // Opens or creates `path`; null with `error` when it cannot.
  static std::unique_ptr<GatewayStore> Open(const std::string& path, std::string& error);
  ~GatewayStore();
  GatewayStore(const GatewayStore&) = delete;
  GatewayStore& operator=(const GatewayStore&) = delete;

  // Keeps an attachment and gives its message identifier ("ATT000001"); empty on failure.
  std::string AddAttachment(const std::string& fileName, const std::string& ticket, const std::string& bytes);
  bool HasAttachment(const std::string& messageId);
  // Applies a data upload to the company's copy: the company, records added, changed, removed.
  // Gives the new upload token; empty with `error` on failure (nothing applied).
  std::string ApplyUpload(const ReceivedRequest& upload, UploadCounts& counts, std::string& error);
  // Keeps a received form with the status it was answered.
  void AddForm(const std::string& companyUID, const ReceivedForm& form, const std::string& status,
               const std::string& uploadSummary);

  // The records of a company by (kind, ClientID).
  std::map<std::pair<std::string, std::string>, KeptRecord> Records(const std::string& companyUID);
  // The received form requests' texts, oldest first.
  std::vector<std::string> FormTexts();
  int AttachmentCount();
  // The status page: companies, their records, the received forms per request.
  std::string StatusPage();

 private:
  explicit GatewayStore(sqlite3* db) : db_(db) {}
  bool Exec(const char* sql);

  sqlite3* db_;
  std::mutex mutex_;
};

}  // namespace parcelon::tools
