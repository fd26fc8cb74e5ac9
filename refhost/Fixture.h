// Loading a company from a JSON fixture (the schema is in the README).
//
// Every problem ends in a FixtureError whose message names the file, the position and the field:
// "company.json: line 3, column 7: ..." for a syntax error, "company.json: /customers/3: terms:
// expected a record number of a term" for a schema violation (the JSON pointer of the object,
// then the field).
#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "platform/ComBase.h"
#include "refhost/CompanyData.h"
#include "refhost/FixtureReader.h"

namespace parcelon::refhost {

// The status of a fixture that cannot be loaded for its content: HRESULT_FROM_WIN32
// (ERROR_INVALID_DATA).
inline constexpr HRESULT kInvalidFixture = static_cast<HRESULT>(0x8007000D);
// The largest fixture file accepted, and the deepest nesting of arrays and objects.
inline constexpr size_t kMaxFixtureBytes = size_t(256) << 20;
inline constexpr int kMaxFixtureNesting = 32;
// Values (objects, arrays, members and elements) a fixture may hold: a parsed value takes tens of
// bytes, so this bounds the memory a fixture can take before any section is read.
inline constexpr size_t kMaxFixtureValues = 8'000'000;

// A change to each record of a list section before it is read ("otherNames" and "customers"
// are records of the names list): how a company store lays its saved fields over the fixture.
using RecordEdit = std::function<void(ListKind list, nlohmann::json& record)>;

// Loads fixture text into `company`, replacing what it held, refusing text larger than
// kMaxFixtureBytes or nested deeper than kMaxFixtureNesting. `file` names the fixture in
// messages. Throws FixtureError.
void LoadFixture(std::string_view text, const std::string& file, Company& company,
                 const RecordEdit& edit = {});

// Reads the fixture file at `path` into `text`: STG_E_FILENOTFOUND when it cannot be opened,
// kInvalidFixture when it cannot be read or is larger than kMaxFixtureBytes, with `error` saying
// why.
HRESULT ReadFixtureFile(const std::string& path, std::string& text, std::string& error);

// Loads the fixture file at `path` into `company`. On failure returns STG_E_FILENOTFOUND (no
// such file), kInvalidFixture (unreadable, too large or malformed) or E_OUTOFMEMORY, with
// `error` saying why; S_OK otherwise.
HRESULT LoadFixtureFile(const std::string& path, Company& company, std::string& error);
// As LoadFixtureFile, for fixture text held in memory.
HRESULT LoadFixtureText(std::string_view text, const std::string& file, Company& company,
                        std::string& error, const RecordEdit& edit = {});

// Read one record of the "styles", "invoices" or "estimates" section, counting its memory
// against the budget of the context. Defined with the transaction objects (TransactionFixture.cpp).
void ReadStyle(FixtureReader& r, Style& style, Company& company);
void ReadInvoice(FixtureReader& r, Invoice& invoice, Company& company);
void ReadEstimate(FixtureReader& r, Estimate& estimate, Company& company);

}  // namespace parcelon::refhost
