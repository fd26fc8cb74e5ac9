// Log-and-return helpers for calls to the host, and the exception guards of the interface
// methods. Which of the return helpers logs:
//
//   RETURN_IF_FAILED(expr)                       returns a failure, logs nothing (the callee has
//                                                logged it, or it needs no log); platform/ComError.h
//   RETURN_IF_FAILED_LOG(expr, prefix, message)  logs a failure, then returns it (a required value)
//   LOG_IF_FAILED(expr, prefix, message)         logs a failure and yields it (an optional value)
//   RETURN_HR_LOG(hr, prefix, message)           logs and returns `hr`, whatever it is
//
//   RETURN_IF_FAILED_LOG(customer->GetFullName(name.Out()), kPrefix, "Failed to get customer job name.");
//   if (SUCCEEDED(LOG_IF_FAILED(invoice->GetDueDate(&dueDate), kPrefix,
//                               "Failed to get due date from invoice in LX.  Skipping this optional element.")))
//     AddHostDate(builder, "DueDate", dueDate);
//   RETURN_IF_FAILED_LOG(parcelon::CatchComError([&] { builder.AddAddressElement(name, address); }),
//                        kPrefix, "Failed to get address lines from company info in LX.");
#pragma once

#include <cstdio>
#include <exception>
#include <new>

#include "diagnostics/Logger.h"
#include "platform/ComError.h"

namespace parcelon {

// Logs a failed `hr` and returns it unchanged.
inline HRESULT LogIfFailed(HRESULT hr, const char* prefix, const char* message) {
  if (FAILED(hr)) CNALogger::Log(prefix, message, hr);
  return hr;
}

// Runs `action` and turns a ComError raised inside it (a failed host conversion) into its HRESULT,
// and running out of memory into E_OUTOFMEMORY; S_OK when it returns normally.
template <class Action>
[[nodiscard]] HRESULT CatchComError(Action&& action) {
  try {
    action();
    return S_OK;
  } catch (const ComError& error) {
    return error.Error();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

// Logs an exception that no code expected (its text, when it has one) and gives E_FAIL.
inline HRESULT LogUnexpectedException(const char* what) noexcept {
  char message[CNALogger::kEntrySize];
  std::snprintf(message, sizeof message, "Unexpected exception: %s", what ? what : "unknown");
  try {
    CNALogger::Log("Parcelon", message, E_FAIL);
  } catch (...) {
    // A log that cannot be written does not change the answer.
  }
  return E_FAIL;
}

// Runs `body`, which returns an HRESULT, at the edge of an interface method, so that no C++
// exception crosses it: a ComError gives its HRESULT, an allocation failure E_OUTOFMEMORY, and
// any other exception E_FAIL with a log line.
template <class Body>
HRESULT Guarded(Body&& body) noexcept {
  try {
    HRESULT hr = S_OK;
    const HRESULT caught = CatchComError([&] { hr = body(); });
    return FAILED(caught) ? caught : hr;
  } catch (const std::exception& error) {
    return LogUnexpectedException(error.what());
  } catch (...) {
    return LogUnexpectedException(nullptr);
  }
}

}  // namespace parcelon

// Evaluates `expr` once; on failure logs it and returns the HRESULT from the enclosing function.
#define RETURN_IF_FAILED_LOG(expr, prefix, message)                     \
  do {                                                                  \
    const HRESULT parcelon_hr_ = (expr);                                \
    if (FAILED(parcelon_hr_)) {                                         \
      CNALogger::Log((prefix), (message), parcelon_hr_);                \
      return parcelon_hr_;                                              \
    }                                                                   \
  } while (0)

// Evaluates `expr` once; on failure logs it. Yields the HRESULT.
#define LOG_IF_FAILED(expr, prefix, message) ::parcelon::LogIfFailed((expr), (prefix), (message))

// Logs `hr` and returns it from the enclosing function.
#define RETURN_HR_LOG(hr, prefix, message)                \
  do {                                                    \
    const HRESULT parcelon_hr_ = (hr);                    \
    CNALogger::Log((prefix), (message), parcelon_hr_);    \
    return parcelon_hr_;                                  \
  } while (0)
