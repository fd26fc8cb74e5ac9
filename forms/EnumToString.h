// CLXEnumToString: the gateway's fixed English words for the host's enumeration values.
#pragma once

#include <cstdint>

#include "clienttools/OLAString.h"

// Each ...ToString operation writes the word for one host value into `out`, replacing what was
// there, and returns 1 when the value has a word, 0 when it has none (`out` is then empty, or
// "UNKNOWN" for a cleared state). The words are part of the gateway's vocabulary, capitals
// included. The class holds no data; any instance will do.
class CLXEnumToString {
 public:
  // 0 "csError" .. 4 "csDownloaded"; others "UNKNOWN".
  int32_t ClearedStateToString(int32_t state, OLAString& out) const;
  // 0 "itSERVICE" .. 9 "itTAXGROUP".
  int32_t ItemTypeToString(int32_t type, OLAString& out) const;
  // 0 "None" .. 5 "NotAwarded".
  int32_t JobStatusToString(int32_t status, OLAString& out) const;
  // 0 "Standard", 1 "DateDriven".
  int32_t TermTypeToString(int32_t type, OLAString& out) const;
  // 0 "Invoice" .. 5 "Estimate".
  int32_t TemplateTypeToString(int32_t type, OLAString& out) const;
  // Horizontal alignment: 0 "Left" .. 5 "CheckAmount".
  int32_t AlignmentToString(int32_t alignment, OLAString& out) const;
  // The low seven bits choose "Top", "Center" or "Bottom" (else empty). Returns bit 7 of the
  // value (128 or 0), a separate flag the host carries in the same value.
  int32_t VertAlignToString(int32_t alignment, OLAString& out) const;
  // A border bit set. Combinations without a word of their own become "Fullbox" below 15
  // (signed) and "All" otherwise; always returns 1.
  int32_t BorderToString(int32_t border, OLAString& out) const;
  // Pages a style element prints on. A single page with the preprinted bit (8) loses the bit.
  int32_t PrintOnPagesToString(int32_t pages, OLAString& out) const;
  // 0 "Balance" .. 10 "None".
  int32_t ColumnTypeToString(int32_t type, OLAString& out) const;
  // Style field identifiers 0 .. 86; unassigned identifiers have no word.
  int32_t StyleFieldToString(int32_t field, OLAString& out) const;
};

// Display name of a form's document type, for messages and non-host documents; "Unknown" for
// anything outside 0 .. 11.
const char* DocumentTypeName(long type);

// True for the document types that have a structured form aggregate: invoice (1), estimate (2)
// and statement (3).
bool IsHostFormType(long type);
