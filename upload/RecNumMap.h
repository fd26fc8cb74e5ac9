// CRecNumMap: the working set of one data upload, record number to mark, per kind of host record.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>

// The kinds of host record an upload can carry or stamp, in the map's order.
enum class RecordKind : size_t {
  kClass,
  kShipMethod,
  kCustomerMessage,
  kSalesRep,
  kTerm,
  kStyle,
  kCustomerJob,
  kItem,
  kInvoice,
  kEstimate,
};
inline constexpr size_t kRecordKindCount = 10;

// Why a record takes part in the upload and what became of it. Marks only move forward:
// selected -> unchanged or sent, changed -> sent, to delete -> deleted.
enum RecordMark : uint32_t {
  kMarkInserted = 0,      // inserted by a lookup, nothing known yet
  kMarkSelected = 1,      // a form of the session refers to it
  kMarkChanged = 2,       // modified after its last upload
  kMarkUnchanged = 3,     // selected, but unchanged since its last upload: not sent
  kMarkSentSelected = 4,  // written; was selected
  kMarkSentChanged = 5,   // written; was changed
  kMarkToDelete = 6,      // a transaction to report as deleted
  kMarkDeleted = 7,       // reported as deleted
};

class CRecNumMap {
 public:
  // Record number to mark, in ascending record-number order.
  using Marks = std::map<int64_t, uint32_t>;

  virtual ~CRecNumMap() = default;

  // The mark of `recNum`, inserted with kMarkInserted when absent.
  uint32_t& operator()(RecordKind kind, int64_t recNum) { return Of(kind)[recNum]; }
  // The mark of `recNum`, or null when the record takes no part; inserts nothing.
  uint32_t* Find(RecordKind kind, int64_t recNum);
  const uint32_t* Find(RecordKind kind, int64_t recNum) const;

  Marks& Of(RecordKind kind) { return maps_[size_t(kind)]; }
  const Marks& Of(RecordKind kind) const { return maps_[size_t(kind)]; }

  // Empties every kind.
  void Clear();
  // The number of records of every kind.
  size_t Size() const;

 private:
  std::array<Marks, kRecordKindCount> maps_;
};
