// Log-and-return helpers for calls to the host: on failure the caller's fixed prefix, a fixed
// message and the HRESULT go to the log, and the caller returns the failure (a required value)
// or skips the element and goes on (an optional value).
//
//   RETURN_IF_FAILED_LOG(customer->GetName(name.Out()), kPrefix, "Failed to get customer name.");
//   if (SUCCEEDED(LOG_IF_FAILED(customer->GetNote(note.Out()), kPrefix,
//                               "Failed to get note.  Skipping this optional element.")))
//     builder.AddTextElement("Note", note);
//   RETURN_IF_FAILED_LOG(parcelon::CatchComError([&] { builder.AddAddressElement(...); }), ...);
#pragma once

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
