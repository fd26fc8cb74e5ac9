#include "tools/GatewaySimulator.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "tools/PassExchange.h"

namespace parcelon::tools {

namespace {

// What an answer is given after the request was dealt with.
struct Answer {
  int http = 200;
  std::string body, contentType = "application/xml", cookie;
};

std::string Status(const std::string& code, const char* tag, const std::string& inner = "",
                   const std::string& extra = "") {
  return "<" + std::string(tag) + extra + " statusCode=\"" + EscapedAttribute(code) + "\" statusSeverity=\"" +
         (code == "0" ? "INFO" : "ERROR") + "\"" + (inner.empty() ? "/>" : ">" + inner + "</" + tag + ">");
}

std::string Replaced(std::string name, std::string_view from, std::string_view to) {
  if (name.size() >= from.size() && name.compare(name.size() - from.size(), from.size(), from) == 0)
    name.replace(name.size() - from.size(), from.size(), to);
  return name;
}

// Closes the connection of `request` without a word: the socket whose ends are the request's
// addresses is shut down, so the client reads the end of the stream where an answer should be.
void DropConnection(const httplib::Request& request, int serverPort) {
  DIR* fds = opendir("/proc/self/fd");
  if (!fds) return;
  while (const dirent* entry = readdir(fds)) {
    const int fd = std::atoi(entry->d_name);
    struct stat info;
    if (fd <= 2 || fd == dirfd(fds) || fstat(fd, &info) != 0 || !S_ISSOCK(info.st_mode)) continue;
    sockaddr_in peer{}, local{};
    socklen_t peerSize = sizeof peer, localSize = sizeof local;
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peerSize) != 0 || peer.sin_family != AF_INET ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&local), &localSize) != 0)
      continue;
    if (ntohs(peer.sin_port) == request.remote_port && ntohs(local.sin_port) == serverPort) {
      shutdown(fd, SHUT_RDWR);
      break;
    }
  }
  closedir(fds);
}

}  // namespace

bool ParseGatewayFault(const std::string& text, GatewayFault& fault, std::string& error) {
  const size_t colon = text.find(':');
  char* end = nullptr;
  const long request = colon == std::string::npos ? 0 : std::strtol(text.c_str(), &end, 10);
  if (colon == std::string::npos || end != text.c_str() + colon || request < 1 || request > 1000000)
    return error = "a fault reads N:WHAT with a request number N from 1, got \"" + text + "\"", false;
  fault = GatewayFault{};
  fault.request = int(request);
  const std::string what = text.substr(colon + 1);
  const size_t equals = what.find('=');
  const std::string name = what.substr(0, equals), value = equals == std::string::npos ? "" : what.substr(equals + 1);
  const auto number = [&](int low, int high) {
    char* numberEnd = nullptr;
    const long n = std::strtol(value.c_str(), &numberEnd, 10);
    if (value.empty() || *numberEnd || n < low || n > high) return false;
    fault.value = int(n);
    return true;
  };
  bool ok = true;
  if (name == "status" && !value.empty() && value.size() < 32) fault.kind = GatewayFault::kStatus, fault.status = value;
  else if (name == "http") fault.kind = GatewayFault::kHttp, ok = number(300, 599);
  else if (name == "delay") fault.kind = GatewayFault::kDelay, ok = number(0, 600000);
  else if (what == "expired") fault.kind = GatewayFault::kExpired, fault.status = "13109";
  else if (what == "malformed") fault.kind = GatewayFault::kMalformed;
  else if (what == "truncated") fault.kind = GatewayFault::kTruncated;
  else if (what == "drop") fault.kind = GatewayFault::kDrop;
  else ok = false;
  if (!ok)
    error = "unknown fault \"" + text +
            "\" (status=CODE, http=300..599, delay=MS, expired, malformed, truncated or drop)";
  return ok;
}

struct GatewaySimulator::State {
  GatewayOptions options;
  std::unique_ptr<GatewayStore> store;
  httplib::Server server;
  std::thread thread;
  int port = 0;
  std::atomic<int> requests{0};
  std::mutex mutex;
  std::condition_variable stopped;
  bool stopping = false;

  // The request's body, read piece by piece up to the limit: a chunked body declares no length,
  // so the server's own limit never sees it. False with the answer given when it cannot be read,
  // is longer (413) or comes in multipart form parts, which no adapter sends (415).
  bool ReadBody(const httplib::Request& request, const httplib::ContentReader& reader, std::string& body,
                httplib::Response& response) const {
    if (request.is_multipart_form_data()) {
      response.status = 415;
      response.set_content("The gateway takes no multipart/form-data requests.\n", "text/plain");
      return false;
    }
    bool tooLong = false;
    const bool read = reader([&](const char* data, size_t length) {
      if (length > options.maxRequestBytes - body.size()) return tooLong = true, false;
      body.append(data, length);
      return true;
    });
    if (read) return true;
    body = std::string();
    if (tooLong || response.status == 413) {
      response.status = 413;
      response.set_content("The request is longer than " + std::to_string(options.maxRequestBytes) + " bytes.\n",
                           "text/plain");
    } else {
      response.status = 400;
      response.set_content("The request's body could not be read.\n", "text/plain");
    }
    return false;
  }

  const GatewayFault* FaultFor(int request) const {
    for (const GatewayFault& fault : options.faults)
      if (fault.request == request) return &fault;
    return nullptr;
  }

  // The faults that take the place of any processing. True when the answer is given.
  bool Refuse(const GatewayFault* fault, const httplib::Request& request, httplib::Response& response) {
    if (!fault) return false;
    if (fault->kind == GatewayFault::kDrop) {
      DropConnection(request, port);
      return true;
    }
    if (fault->kind == GatewayFault::kHttp) {
      response.status = fault->value;
      response.set_content("The gateway failed (scripted).\n", "text/plain");
      return true;
    }
    return false;
  }

  // The faults that spoil an answer already decided.
  void Send(const GatewayFault* fault, Answer answer, httplib::Response& response) {
    if (fault && fault->kind == GatewayFault::kDelay) {
      std::unique_lock lock(mutex);
      stopped.wait_for(lock, std::chrono::milliseconds(fault->value), [&] { return stopping; });
    }
    if (fault && fault->kind == GatewayFault::kMalformed) answer.body = answer.body.substr(0, answer.body.size() / 2);
    response.status = answer.http;
    if (!answer.cookie.empty()) response.set_header("Set-Cookie", answer.cookie);
    if (fault && fault->kind == GatewayFault::kTruncated) {
      auto body = std::make_shared<std::string>(std::move(answer.body));
      response.set_content_provider(body->size(), answer.contentType,
                                    [body](size_t, size_t, httplib::DataSink& sink) {
                                      sink.write(body->data(), body->size() / 2);
                                      return false;
                                    });
      return;
    }
    response.set_content(answer.body, answer.contentType);
  }

  void OnAttachment(const httplib::Request& request, const std::string& body, httplib::Response& response) {
    const GatewayFault* fault = FaultFor(++requests);
    if (Refuse(fault, request, response)) return;
    Answer answer;
    if (fault && (fault->kind == GatewayFault::kStatus || fault->kind == GatewayFault::kExpired)) {
      answer.body = Status(fault->status, "AttachmentRs");
    } else {
      const std::string id =
          store->AddAttachment(request.get_header_value("filename"), request.get_header_value("ticket"), body);
      if (id.empty()) {
        answer.http = 500;
        answer.body = "The gateway could not keep the attachment.\n";
        answer.contentType = "text/plain";
      } else {
        answer.cookie = "messageid=" + id + " ; Path=/";
        answer.body = Status("0", "AttachmentRs", "<MessageID>" + id + "</MessageID>");
      }
    }
    Send(fault, std::move(answer), response);
  }

  void OnForm(const httplib::Request& request, const std::string& body, httplib::Response& response) {
    const GatewayFault* fault = FaultFor(++requests);
    if (Refuse(fault, request, response)) return;
    Answer answer;
    std::string message;
    ReceivedRequest received;
    if ((options.validate && !options.validate(body, message)) || !ReadReceivedRequest(body, received, message)) {
      answer.http = 400;
      answer.body = message + "\n";
      answer.contentType = "text/plain";
      return Send(fault, std::move(answer), response);
    }
    // A scripted status answers the data upload when there is one; an expired ticket answers
    // the forms too.
    const bool refused = fault && (fault->kind == GatewayFault::kStatus || fault->kind == GatewayFault::kExpired);
    const bool formsRefused = refused && (!received.hasUpload || fault->kind == GatewayFault::kExpired);
    std::string document = "<ZPN>";
    std::string uploadSummary;
    if (received.hasUpload) {
      std::string status = refused ? fault->status : "0", token, error;
      UploadCounts counts;
      if (!refused && (token = store->ApplyUpload(received, counts, error)).empty()) status = "3000";
      uploadSummary = status != "0" ? "refused: " + status
                                    : std::to_string(counts.added) + " added, " + std::to_string(counts.changed) +
                                          " changed, " + std::to_string(counts.removed) + " removed (" + token + ")";
      document += "<LXDataMsgsRs>" +
                  Status(status, "DataUploadRs", token.empty() ? "" : "<LastDataUploadToken>" + token + "</LastDataUploadToken>") +
                  "</LXDataMsgsRs>";
    }
    std::string openSet;
    for (const ReceivedForm& form : received.forms) {
      std::string status = formsRefused ? fault->status : "0", words;
      for (const std::string& id : form.messageIds)
        if (status == "0" && !store->HasAttachment(id)) status = "13102", words = "Attachment " + id + " is unknown.";
      store->AddForm(received.companyUID, form, status, uploadSummary);
      const std::string set = Replaced(form.messageSet, "Rq", "Rs");
      if (set != openSet) document += (openSet.empty() ? "" : "</" + openSet + ">") + "<" + set + ">";
      openSet = set;
      document += Status(status, Replaced(form.request, "Rq", "Rs").c_str(), "",
                         (form.trnUID.empty() ? "" : " trnUID=\"" + EscapedAttribute(form.trnUID) + "\"") +
                             (words.empty() ? "" : " statusMessage=\"" + EscapedAttribute(words) + "\""));
    }
    if (!openSet.empty()) document += "</" + openSet + ">";
    answer.body = document + "</ZPN>";
    Send(fault, std::move(answer), response);
  }
};

GatewaySimulator::GatewaySimulator(std::unique_ptr<State> state) : state_(std::move(state)) {}

GatewaySimulator::~GatewaySimulator() { Stop(); }

std::unique_ptr<GatewaySimulator> GatewaySimulator::Start(GatewayOptions options, std::string& error) {
  auto state = std::make_unique<State>();
  if (!options.dataDirectory.empty()) mkdir(options.dataDirectory.c_str(), 0755);
  state->store = GatewayStore::Open((options.dataDirectory.empty() ? "." : options.dataDirectory) + "/gateway.db", error);
  if (!state->store) return nullptr;
  state->options = std::move(options);
  State* s = state.get();
  // Enough workers for many adapters keeping their connections open at once.
  s->server.new_task_queue = [] { return new httplib::ThreadPool(32); };
  // A request that declares a length over the limit is refused (413) before it is read.
  s->server.set_payload_max_length(s->options.maxRequestBytes);
  s->server.Post(s->options.attachmentPath,
                 [s](const httplib::Request& q, httplib::Response& r, const httplib::ContentReader& reader) {
                   std::string body;
                   if (s->ReadBody(q, reader, body, r)) s->OnAttachment(q, body, r);
                 });
  s->server.Post(s->options.formPath,
                 [s](const httplib::Request& q, httplib::Response& r, const httplib::ContentReader& reader) {
                   std::string body;
                   if (s->ReadBody(q, reader, body, r)) s->OnForm(q, body, r);
                 });
  s->server.Get("/", [s](const httplib::Request&, httplib::Response& r) {
    r.set_content(s->store->StatusPage(), "text/html; charset=utf-8");
  });
  s->port = s->options.port == 0 ? s->server.bind_to_any_port("127.0.0.1")
                                 : s->server.bind_to_port("127.0.0.1", s->options.port) ? s->options.port : -1;
  if (s->port <= 0) {
    error = "cannot listen on 127.0.0.1:" + std::to_string(s->options.port);
    return nullptr;
  }
  s->thread = std::thread([s] { s->server.listen_after_bind(); });
  // A stop before the server runs would be lost: it only ends a server that is running.
  while (!s->server.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return std::unique_ptr<GatewaySimulator>(new GatewaySimulator(std::move(state)));
}

int GatewaySimulator::Port() const { return state_->port; }

std::string GatewaySimulator::Address() const { return "http://127.0.0.1:" + std::to_string(state_->port); }

GatewayStore& GatewaySimulator::Store() { return *state_->store; }

void GatewaySimulator::Stop() {
  if (!state_ || !state_->thread.joinable()) return;
  {
    const std::lock_guard lock(state_->mutex);
    state_->stopping = true;
  }
  state_->stopped.notify_all();
  state_->server.stop();
  state_->thread.join();
}

}  // namespace parcelon::tools
