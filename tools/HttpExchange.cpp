#include "tools/HttpExchange.h"

#include <curl/curl.h>

#include <chrono>
#include <mutex>

namespace parcelon::tools {

namespace {

// The answer's body, up to kMaxResponseBytes; more ends the transfer (a write error for libcurl).
struct BodyCollector {
  std::string& body;
  bool tooLong = false;
};

size_t CollectBody(char* data, size_t size, size_t count, void* out) {
  auto& collector = *static_cast<BodyCollector*>(out);
  const size_t bytes = size * count;
  if (bytes > kMaxResponseBytes - collector.body.size()) return collector.tooLong = true, 0;
  collector.body.append(data, bytes);
  return bytes;
}

// Header lines "Name: value"; a new status line (after a 100 Continue) starts them again.
size_t CollectHeader(char* data, size_t size, size_t count, void* out) {
  auto& response = *static_cast<PassResponse*>(out);
  std::string line(data, size * count);
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
  if (line.rfind("HTTP/", 0) == 0) {
    response.headers.clear();
  } else if (const size_t colon = line.find(':'); colon != std::string::npos) {
    const size_t value = line.find_first_not_of(' ', colon + 1);
    response.headers.emplace_back(line.substr(0, colon), value == std::string::npos ? "" : line.substr(value));
  }
  return size * count;
}

// The session's header lines as curl's list, with the content type and without curl's own Expect.
curl_slist* RequestHeaders(const PassRequest& request) {
  curl_slist* list = curl_slist_append(nullptr, ("Content-Type: " + request.contentType).c_str());
  list = curl_slist_append(list, "Expect:");
  size_t start = 0;
  while (start < request.headerLines.size()) {
    size_t end = request.headerLines.find('\n', start);
    if (end == std::string::npos) end = request.headerLines.size();
    std::string line = request.headerLines.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) list = curl_slist_append(list, line.c_str());
    start = end + 1;
  }
  return list;
}

HRESULT WireResult(CURLcode code) {
  switch (code) {
    case CURLE_COULDNT_CONNECT: return kConnectionRefused;
    case CURLE_OPERATION_TIMEDOUT: return kTimedOut;
    default: return kConnectionBroken;
  }
}

}  // namespace

std::string AddressOnGateway(const std::string& gateway, const std::string& configured) {
  const size_t scheme = configured.find("://");
  const size_t path = configured.find('/', scheme == std::string::npos ? 0 : scheme + 3);
  std::string base = gateway;
  while (!base.empty() && base.back() == '/') base.pop_back();
  return base + (path == std::string::npos ? "/" : configured.substr(path));
}

HttpExchange::HttpExchange(HttpOptions options) : options_(std::move(options)) {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
  curl_ = curl_easy_init();
}

HttpExchange::~HttpExchange() { curl_easy_cleanup(static_cast<CURL*>(curl_)); }

HRESULT HttpExchange::Exchange(const PassRequest& request, PassResponse& response, std::string& error) {
  CURL* curl = static_cast<CURL*>(curl_);
  if (!curl) return error = "libcurl could not start", E_OUTOFMEMORY;
  const std::string url = AddressOnGateway(options_.gateway, request.url);
  curl_slist* headers = RequestHeaders(request);
  char curlError[CURL_ERROR_SIZE] = "";
  response = PassResponse{};
  curl_easy_reset(curl);
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  // One connection per pass: libcurl sends a request again, unseen, when a reused connection
  // dies before the answer, and a pass must go out once.
  curl_easy_setopt(curl, CURLOPT_FRESH_CONNECT, 1L);
  curl_easy_setopt(curl, CURLOPT_FORBID_REUSE, 1L);
  curl_easy_setopt(curl, CURLOPT_POST, 1L);
  curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request.body.data());
  curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(request.body.size()));
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, options_.timeoutMs);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, options_.timeoutMs);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, CollectBody);
  BodyCollector body{response.body};
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
  // An answer that declares a longer body is refused before any of it is read.
  curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(kMaxResponseBytes));
  curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, CollectHeader);
  curl_easy_setopt(curl, CURLOPT_HEADERDATA, &response);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, curlError);
  const auto start = std::chrono::steady_clock::now();
  const CURLcode code = curl_easy_perform(curl);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  seconds_ += seconds;
  bytesSent_ += request.body.size();
  curl_slist_free_all(headers);
  long status = 0;
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
  response.status = int(status);
  if (options_.progress)
    std::fprintf(options_.progress, "form %d of %d, pass %d (%s): %zu bytes sent, %zu received, %.1f ms\n",
                 request.form, request.forms, request.pass, request.attachment ? "attachment" : "form",
                 request.body.size(), response.body.size(), seconds * 1000);
  const std::string pass = "pass " + std::to_string(request.pass) + " to " + url;
  if (body.tooLong || code == CURLE_FILESIZE_EXCEEDED) {
    response.body = std::string();
    error = pass + ": the answer is longer than " + std::to_string(kMaxResponseBytes) + " bytes";
    return kConnectionBroken;
  }
  if (code != CURLE_OK) {
    const HRESULT hr = WireResult(code);
    error = pass + ": " +
            (hr == kConnectionRefused ? "no gateway answers there (connection refused)"
             : hr == kTimedOut        ? "no answer within " + std::to_string(options_.timeoutMs) + " ms (timed out)"
                                      : std::string("the connection broke off (") +
                                            (curlError[0] ? curlError : curl_easy_strerror(code)) + ")");
    return hr;
  }
  if (status < 200 || status >= 300) {
    std::string said = response.body.substr(0, 500);
    while (!said.empty() && (said.back() == '\n' || said.back() == '\r')) said.pop_back();
    error = pass + ": the gateway answered HTTP " + std::to_string(status) + (said.empty() ? "" : ": " + said);
    return HttpStatusResult(int(status));
  }
  return S_OK;
}

}  // namespace parcelon::tools
