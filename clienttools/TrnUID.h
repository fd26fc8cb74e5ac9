// TrnUID: the unique transaction identifiers ("trnUID") of the request aggregates.
#pragma once

#include <cstdint>

#include "clienttools/OLAString.h"

// The printed form: 32 upper-case hexadecimal digits in eight groups of four joined by "-",
// 39 characters: "TTTT-TTTT-TTTT-TTTT-PPPP-PPPP-SSSS-SSSS". T is the moment of creation in
// 100-nanosecond ticks since 1 January 1970 UTC, P the process id, S a process-wide sequence
// number. The moment and the process id keep identifiers apart between processes, the sequence
// number keeps them apart within one process, even within one clock tick.
constexpr int kTrnUIDLength = 39;

// The printed form of the three parts.
OLAString FormatTrnUID(uint64_t ticks, uint32_t processId, uint32_t sequence);

// A fresh identifier: the current time, this process's id and the next sequence number.
// Safe to call from any thread.
OLAString NewTrnUID();
