// The logging return macros: what a builder writes, returns and logs when a host call fails.
#include <gtest/gtest.h>

#include <cstdio>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "diagnostics/FakeHost.h"
#include "diagnostics/LogIfFailed.h"

namespace parcelon::test {
namespace {

constexpr const char* kPrefix = "Parcelon:CTermItemBuilder::BuildXML(XMLBuilder&)";

using LogIfFailedTest = DiagnosticsTest;

// A host call that counts how often it is made.
struct HostCall {
  HRESULT result;
  int calls = 0;
  HRESULT operator()() {
    ++calls;
    return result;
  }
};

// Writes a required and an optional element, as a builder does; `written` lists what it wrote.
HRESULT BuildTerms(HostCall& name, HostCall& days, std::vector<std::string>& written) {
  RETURN_IF_FAILED_LOG(name(), kPrefix, "Failed to get terms name.");
  written.push_back("Name");
  if (SUCCEEDED(LOG_IF_FAILED(days(), kPrefix,
                              "Failed to get due days.  Skipping this optional element.")))
    written.push_back("DueDays");
  written.push_back("End");
  return S_OK;
}

// A failed required value is logged once and returned; a failed optional one is logged and skipped.
TEST_F(LogIfFailedTest, FailuresAreLoggedAndReturnedOrSkipped) {
  const struct {
    HRESULT name, days, returned;
    int daysCalls;
    std::vector<std::string> written, entries;
  } cases[] = {
      {S_OK, S_FALSE, S_OK, 1, {"Name", "DueDays", "End"}, {}},
      {E_POINTER, S_OK, E_POINTER, 0, {}, {"Failed to get terms name.  HRESULT=0x80004003"}},
      {S_OK, E_FAIL, S_OK, 1, {"Name", "End"},
       {"Failed to get due days.  Skipping this optional element.  HRESULT=0x80004005"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.name << " " << c.days);
    std::remove(LogPath().c_str());
    HostCall name{c.name}, days{c.days};
    std::vector<std::string> written;
    EXPECT_EQ(c.returned, BuildTerms(name, days, written));
    EXPECT_EQ(c.written, written);
    EXPECT_EQ(1, name.calls);
    EXPECT_EQ(c.daysCalls, days.calls);
    EXPECT_EQ(c.entries, LogEntries());
  }
}

HRESULT Unexpected(HRESULT hr) {
  RETURN_HR_LOG(hr, kPrefix, "Unexpected send state.");
}

TEST_F(LogIfFailedTest, ReturnHrLogsAndReturnsTheGivenCode) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.EnableLogContext=1\n");
  EXPECT_EQ(E_FAIL, Unexpected(E_FAIL));
  EXPECT_EQ(std::vector<std::string>{std::string(kPrefix) +
                                     ": Unexpected send state.  HRESULT=0x80004005"},
            LogEntries());
}

TEST(CatchComErrorTest, TurnsExceptionsIntoTheirCodes) {
  EXPECT_EQ(S_OK, CatchComError([] {}));
  EXPECT_EQ(E_POINTER, CatchComError([] { throw ComError(E_POINTER); }));
  EXPECT_EQ(E_OUTOFMEMORY, CatchComError([] { ThrowIfFailed(E_OUTOFMEMORY); }));
  EXPECT_EQ(E_OUTOFMEMORY, CatchComError([] { throw std::bad_alloc(); }));
}

// Nothing that a body throws leaves Guarded: the host's errors give their codes unlogged, any
// other exception E_FAIL with a log line.
TEST_F(LogIfFailedTest, GuardedLetsNoExceptionThrough) {
  EXPECT_EQ(S_FALSE, Guarded([] { return S_FALSE; }));
  EXPECT_EQ(E_POINTER, Guarded([]() -> HRESULT { throw ComError(E_POINTER); }));
  EXPECT_EQ(E_OUTOFMEMORY, Guarded([]() -> HRESULT { throw std::bad_alloc(); }));
  EXPECT_TRUE(LogEntries().empty());
  EXPECT_EQ(E_FAIL, Guarded([]() -> HRESULT { throw std::out_of_range("vector::at"); }));
  EXPECT_EQ(E_FAIL, Guarded([]() -> HRESULT { throw 42; }));
  EXPECT_EQ((std::vector<std::string>{"Unexpected exception: vector::at  HRESULT=0x80004005",
                                      "Unexpected exception: unknown  HRESULT=0x80004005"}),
            LogEntries());
}

HRESULT WriteAddress(bool hostFails) {
  RETURN_IF_FAILED_LOG(CatchComError([hostFails] {
                         if (hostFails) ThrowIfFailed(E_POINTER);
                       }),
                       kPrefix, "Failed to write the bill-to address.");
  return S_OK;
}

TEST_F(LogIfFailedTest, HostConversionErrorIsLoggedAndReturned) {
  EXPECT_EQ(S_OK, WriteAddress(false));
  EXPECT_EQ(E_POINTER, WriteAddress(true));
  EXPECT_EQ(std::vector<std::string>{"Failed to write the bill-to address.  HRESULT=0x80004003"},
            LogEntries());
}

}  // namespace
}  // namespace parcelon::test
