// The record-number map: insertion by lookup, plain lookups, order, clearing, kinds kept apart.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "upload/RecNumMap.h"

namespace {

std::vector<std::pair<int64_t, uint32_t>> Entries(const CRecNumMap& map, RecordKind kind) {
  return {map.Of(kind).begin(), map.Of(kind).end()};
}

TEST(RecNumMap, SettingAMarkInsertsAPlainLookupDoesNot) {
  CRecNumMap map;
  EXPECT_EQ(nullptr, map.Find(RecordKind::kTerm, 7));
  EXPECT_EQ(0u, map.Size());
  map(RecordKind::kTerm, 7) = kMarkSelected;
  ASSERT_NE(nullptr, map.Find(RecordKind::kTerm, 7));
  EXPECT_EQ(uint32_t(kMarkSelected), *map.Find(RecordKind::kTerm, 7));
  // A lookup that inserts leaves mark 0 behind.
  EXPECT_EQ(uint32_t(kMarkInserted), map(RecordKind::kTerm, 8));
  EXPECT_EQ(2u, map.Size());
}

TEST(RecNumMap, TraversalIsInAscendingOrderWhateverTheInsertionOrder) {
  CRecNumMap map;
  for (const int64_t recNum : {int64_t(42), int64_t(-3), int64_t(2147483647), int64_t(9), int64_t(1)})
    map(RecordKind::kCustomerJob, recNum) = kMarkSelected;
  map(RecordKind::kCustomerJob, 9) = kMarkChanged;  // a key occurs once
  const std::vector<std::pair<int64_t, uint32_t>> expected = {
      {-3, 1}, {1, 1}, {9, 2}, {42, 1}, {2147483647, 1}};
  EXPECT_EQ(expected, Entries(map, RecordKind::kCustomerJob));
}

TEST(RecNumMap, KindsAreKeptApart) {
  CRecNumMap map;
  map(RecordKind::kInvoice, 5) = kMarkToDelete;
  map(RecordKind::kEstimate, 5) = kMarkSelected;
  EXPECT_EQ(uint32_t(kMarkToDelete), *map.Find(RecordKind::kInvoice, 5));
  EXPECT_EQ(uint32_t(kMarkSelected), *map.Find(RecordKind::kEstimate, 5));
  for (size_t kind = 0; kind < kRecordKindCount; ++kind) {
    const RecordKind k = RecordKind(kind);
    if (k != RecordKind::kInvoice && k != RecordKind::kEstimate) {
      EXPECT_TRUE(map.Of(k).empty()) << kind;
    }
  }
}

TEST(RecNumMap, ClearEmptiesEveryKind) {
  CRecNumMap map;
  for (size_t kind = 0; kind < kRecordKindCount; ++kind) map(RecordKind(kind), 1 + kind) = kMarkSentSelected;
  EXPECT_EQ(kRecordKindCount, map.Size());
  map.Clear();
  EXPECT_EQ(0u, map.Size());
  EXPECT_EQ(nullptr, map.Find(RecordKind::kStyle, 6));
}

}  // namespace
