// The parcelon tool's sends and its gateway simulator as separate processes: the simulator on a
// free port, sends answered, refused and failing, their exit codes and what they say.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "support/TestSupport.h"

namespace parcelon::test {
namespace {

const std::string kSources = PARCELON_SOURCE_DIR;

// `parcelon gateway` in a child process; its address is the first line it prints.
class GatewayProcess {
 public:
  explicit GatewayProcess(const std::string& arguments) {
    // Built before the fork: the child of a threaded process may only make async-signal-safe calls.
    const std::string command = std::string("exec ") + PARCELON_TOOL + " gateway --port 0 " + arguments + " 2>/dev/null";
    int out[2];
    if (pipe(out) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(out[1], 1);
      close(out[0]);
      execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    close(out[1]);
    FILE* printed = fdopen(out[0], "r");
    char line[256] = "";
    if (printed && std::fgets(line, sizeof line, printed)) address_ = line;
    if (printed) std::fclose(printed);
    while (!address_.empty() && address_.back() == '\n') address_.pop_back();
  }
  // Stops it as a user would; its exit status.
  int Stop() {
    if (pid_ <= 0) return -1;
    kill(pid_, SIGTERM);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  ~GatewayProcess() { Stop(); }
  const std::string& Address() const { return address_; }

 private:
  pid_t pid_ = 0;
  std::string address_;
};

class CommandLineTest : public ::testing::Test {
 protected:
  // Runs `parcelon send`; its exit code, with what it wrote on standard error in `said`.
  int Send(const std::string& gateway, std::string& said) {
    const std::string errors = scratch_.File("stderr.txt");
    const std::string company = first_ ? " --company " + kSources + "/samples/sample-company.json" : "";
    first_ = false;
    const std::string command = std::string(PARCELON_TOOL) + " send --gateway " + gateway + " --timeout 20" + company +
                                " --store " + scratch_.File("company.db") +
                                " --form invoice:1001 --send email --to a@b.example --pdf " + kSources +
                                "/samples/invoice-1001.pdf --post >/dev/null 2>" + errors;
    const int status = std::system(command.c_str());
    said = ReadFile(errors);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  ScratchFolder scratch_;
  ScopedEnv settings_{"PARCELON_SETTINGS", (kSources + "/samples/ZPSSettings.aov").c_str()};
  bool first_ = true;
};

TEST_F(CommandLineTest, SendsAnsweredRefusedAndFailingGiveTheirExitCodes) {
  GatewayProcess gateway("--data " + scratch_.File("gateway") + " --fault 2:http=500 --fault 5:expired");
  ASSERT_EQ(0u, gateway.Address().rfind("http://127.0.0.1:", 0)) << gateway.Address();
  std::string said;
  EXPECT_EQ(3, Send(gateway.Address(), said));
  EXPECT_EQ("form 1 of 1, pass 1 (attachment): 615 bytes sent, 98 received",
            said.substr(0, said.find(',', said.find("received"))));
  EXPECT_NE(std::string::npos,
            said.find("parcelon: the send failed: pass 2 to " + gateway.Address() +
                      "/lxn/forms: the gateway answered HTTP 500: The gateway failed (scripted). (0x801901F4)\n"
                      "parcelon: the failed pass stamped nothing; what the gateway accepted before it stays stamped\n"))
      << said;
  EXPECT_EQ(0, Send(gateway.Address(), said)) << said;
  EXPECT_NE(std::string::npos, said.find("form 1 of 1, pass 2 (form): ")) << said;
  EXPECT_EQ(4, Send(gateway.Address(), said));
  EXPECT_NE(std::string::npos,
            said.find("parcelon: the send failed: the gateway says the login ticket has expired; log in again "
                      "(0x8004910A)\n"))
      << said;
  EXPECT_EQ(0, gateway.Stop());
  EXPECT_EQ(3, Send(gateway.Address(), said));
  EXPECT_NE(std::string::npos, said.find("/lxn/attachments: no gateway answers there (connection refused)")) << said;
}

TEST_F(CommandLineTest, AWrongFaultIsRefusedWithTheUsage) {
  const int status = std::system((std::string(PARCELON_TOOL) + " gateway --fault 2:explode >/dev/null 2>&1").c_str());
  EXPECT_EQ(2, WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

}  // namespace
}  // namespace parcelon::test
