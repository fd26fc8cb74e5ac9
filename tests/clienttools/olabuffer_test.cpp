// OLABuffer: writing at the position, growth, reading and copying within bounds, the size limit.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "clienttools/OLABuffer.h"

namespace {

std::string Content(const OLABuffer& buffer) {
  return std::string(buffer.GetData(), buffer.GetLength());
}

// A buffer with a small limit, to reach it cheaply.
class SmallBuffer : public OLABuffer {
 public:
  using OLABuffer::OLABuffer;
  uint64_t MaxSize() const override { return 1000; }
};

TEST(OLABuffer, AppendAfterRewindOverwritesAndSetsTheLength) {
  OLABuffer buffer;
  ASSERT_EQ(buffer.AppendString("Hello, world"), OLABuffer::kOk);
  ASSERT_EQ(buffer.SetPosition(0), OLABuffer::kOk);
  ASSERT_EQ(buffer.AppendString("Jelly"), OLABuffer::kOk);
  EXPECT_EQ(buffer.GetLength(), 5u);
  EXPECT_EQ(buffer.GetPosition(), 5u);
  EXPECT_EQ(Content(buffer), "Jelly");

  ASSERT_EQ(buffer.SetPosition(3), OLABuffer::kOk);
  ASSERT_EQ(buffer.AppendChar('!'), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), "Jel!");
  // The position may not pass the length.
  EXPECT_EQ(buffer.SetPosition(4), OLABuffer::kOk);
  EXPECT_EQ(buffer.SetPosition(5), OLABuffer::kTooLarge);
  EXPECT_EQ(buffer.GetPosition(), 4u);
}

TEST(OLABuffer, SetLengthZeroMeansUpToThePosition) {
  OLABuffer buffer(16);
  ASSERT_EQ(buffer.AppendString("abcdef"), OLABuffer::kOk);
  ASSERT_EQ(buffer.SetPosition(2), OLABuffer::kOk);
  ASSERT_EQ(buffer.SetLength(0), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), "ab");
  EXPECT_EQ(buffer.SetLength(17), OLABuffer::kTooLarge);
  EXPECT_EQ(Content(buffer), "ab");
}

TEST(OLABuffer, GrowsAcrossManyAppends) {
  OLABuffer buffer(0, 16);
  std::string expected;
  for (int i = 0; i < 10000; ++i) {
    const std::string piece = std::to_string(i) + ",";
    ASSERT_EQ(buffer.AppendString(piece.c_str()), OLABuffer::kOk);
    expected += piece;
  }
  EXPECT_EQ(buffer.GetLength(), expected.size());
  EXPECT_GE(buffer.GetCapacity(), expected.size());
  EXPECT_EQ(Content(buffer), expected);
  // A hundred kilobytes at once.
  std::string bytes(100 * 1024, '\0');
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = char(i * 7 % 251);
  ASSERT_EQ(buffer.AppendLarge(bytes.data(), bytes.size()), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), expected + bytes);
}

TEST(OLABuffer, CopyRangeWithinTheContent) {
  OLABuffer source;
  ASSERT_EQ(source.AppendString("0123456789"), OLABuffer::kOk);
  const struct { uint32_t start; uint32_t count; int32_t result; const char* copied; } cases[] = {
      {0, 10, OLABuffer::kOk, "0123456789"}, {3, 4, OLABuffer::kOk, "3456"},
      {10, 0, OLABuffer::kOk, ""}, {9, 2, OLABuffer::kTooLarge, ""},
      {11, 0, OLABuffer::kTooLarge, ""}, {0xFFFFFFFFu, 2, OLABuffer::kTooLarge, ""},
      {2, 0xFFFFFFFFu, OLABuffer::kTooLarge, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.start) + "+" + std::to_string(c.count));
    OLABuffer target;
    EXPECT_EQ(source.CopyRange(target, c.start, c.count), c.result);
    EXPECT_EQ(Content(target), c.copied);
  }
  EXPECT_EQ(Content(source), "0123456789");
  // A buffer may copy its own content, also when the copy makes it grow and move.
  OLABuffer buffer(16, 16);
  ASSERT_EQ(buffer.AppendString("0123456789"), OLABuffer::kOk);
  ASSERT_EQ(buffer.CopyRange(buffer, 2, 8), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), "012345678923456789");
  ASSERT_EQ(buffer.Append(buffer.GetData(), buffer.GetLength()), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), "012345678923456789012345678923456789");
}

TEST(OLABuffer, ReadAdvancesWithinTheContent) {
  OLABuffer buffer;
  ASSERT_EQ(buffer.AppendString("abcdef"), OLABuffer::kOk);
  ASSERT_EQ(buffer.SetPosition(1), OLABuffer::kOk);
  char out[8] = {};
  ASSERT_EQ(buffer.Read(out, 3), OLABuffer::kOk);
  EXPECT_EQ(std::string(out, 3), "bcd");
  EXPECT_EQ(buffer.GetPosition(), 4u);
  EXPECT_EQ(buffer.Read(out, 3), OLABuffer::kTooLarge);
  EXPECT_EQ(buffer.GetPosition(), 4u);
  ASSERT_EQ(buffer.Read(out, 2), OLABuffer::kOk);
  EXPECT_EQ(std::string(out, 2), "ef");
  EXPECT_EQ(buffer.Read(out, 0), OLABuffer::kOk);
  EXPECT_EQ(buffer.Read(out, 1), OLABuffer::kTooLarge);
}

TEST(OLABuffer, MaxSizeIsNeverPassed) {
  SmallBuffer buffer(0, 64);
  const std::string bytes(1001, 'x');
  EXPECT_EQ(buffer.Append(bytes.data(), 1001), OLABuffer::kTooLarge);
  EXPECT_EQ(buffer.GetLength(), 0u);
  ASSERT_EQ(buffer.Append(bytes.data(), 600), OLABuffer::kOk);
  EXPECT_EQ(buffer.Append(bytes.data(), 401), OLABuffer::kTooLarge);
  EXPECT_EQ(buffer.AppendLarge(bytes.data(), 401), OLABuffer::kTooLarge);
  EXPECT_EQ(buffer.GetLength(), 600u);
  EXPECT_EQ(buffer.Reserve(1001), OLABuffer::kTooLarge);
  ASSERT_EQ(buffer.Append(bytes.data(), 400), OLABuffer::kOk);
  EXPECT_EQ(buffer.GetLength(), 1000u);
  EXPECT_LE(buffer.GetCapacity(), 1000u);
  EXPECT_EQ(buffer.AppendChar('x'), OLABuffer::kTooLarge);
  EXPECT_EQ(Content(buffer), std::string(1000, 'x'));
}

TEST(OLABuffer, Equals) {
  OLABuffer a(8), b(4096), c, empty1, empty2;
  ASSERT_EQ(a.AppendString("same bytes"), OLABuffer::kOk);
  ASSERT_EQ(b.AppendString("same bytes"), OLABuffer::kOk);
  ASSERT_EQ(c.AppendString("same bytez"), OLABuffer::kOk);
  EXPECT_TRUE(a.Equals(b));
  EXPECT_TRUE(b.Equals(a));
  EXPECT_FALSE(a.Equals(c));
  EXPECT_TRUE(empty1.Equals(empty2));
  EXPECT_FALSE(a.Equals(empty1));
  // Only the content counts, not what lies beyond it.
  ASSERT_EQ(c.SetPosition(9), OLABuffer::kOk);
  ASSERT_EQ(c.SetLength(0), OLABuffer::kOk);
  ASSERT_EQ(a.SetPosition(9), OLABuffer::kOk);
  ASSERT_EQ(a.SetLength(0), OLABuffer::kOk);
  EXPECT_TRUE(a.Equals(c));
}

// The injected failure hits exactly the allocation named: the first one of a buffer, or a growth,
// which leaves the content as it was; the allocations after it succeed again.
TEST(OLABuffer, InjectedAllocationFailures) {
  OLABuffer::FailAllocation(1);
  const OLABuffer none(16);
  EXPECT_EQ(none.GetData(), nullptr);
  EXPECT_EQ(none.GetCapacity(), 0u);

  OLABuffer buffer(16, 16);
  ASSERT_EQ(buffer.AppendString("0123456789"), OLABuffer::kOk);
  const uint64_t before = OLABuffer::AllocationCount();
  OLABuffer::FailAllocation(1);
  const std::string more(20, 'm');
  EXPECT_EQ(buffer.Append(more.data(), more.size()), OLABuffer::kGrowthFailed);
  EXPECT_EQ(Content(buffer), "0123456789");
  EXPECT_EQ(buffer.GetCapacity(), 16u);
  ASSERT_EQ(buffer.Append(more.data(), more.size()), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), "0123456789" + more);
  EXPECT_EQ(OLABuffer::AllocationCount(), before + 2);
  OLABuffer::FailAllocation(0);
}

// The wipes cover what was ever written (the high-water mark), which a rewind does not lower and
// a growth brings to the content it moved.
TEST(OLABuffer, HighWaterMark) {
  OLABuffer buffer(16, 16);
  ASSERT_EQ(buffer.AppendString("0123456789"), OLABuffer::kOk);
  buffer.Rewind();
  ASSERT_EQ(buffer.AppendString("abc"), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), "abc");
  EXPECT_EQ(buffer.GetWritten(), 10u);
  ASSERT_EQ(buffer.SetLength(12), OLABuffer::kOk);
  EXPECT_EQ(buffer.GetWritten(), 12u);
  ASSERT_EQ(buffer.SetPosition(3), OLABuffer::kOk);
  ASSERT_EQ(buffer.SetLength(0), OLABuffer::kOk);
  ASSERT_EQ(buffer.Reserve(100), OLABuffer::kOk);
  EXPECT_EQ(buffer.GetWritten(), 3u) << "only the content moves to the new block";
  EXPECT_EQ(Content(buffer), "abc");
  buffer.Clear('\0');
  EXPECT_EQ(buffer.GetLength(), 0u);
  EXPECT_EQ(buffer.GetPosition(), 0u);
  ASSERT_EQ(buffer.AppendString("new"), OLABuffer::kOk);
  EXPECT_EQ(Content(buffer), "new");
}

// Large blocks (mapped where the system allows) keep their content through growth and through a
// failed growth alike.
TEST(OLABuffer, LargeBlocksGrowWithTheirContent) {
  OLABuffer buffer(1 << 20, 1 << 20);
  std::string expected;
  for (int i = 0; expected.size() < (5u << 20); ++i) {
    const std::string piece = std::to_string(i) + ";";
    if (i % 50000 == 0) {
      OLABuffer::FailAllocation(1);
      const std::string tooMuch(size_t(buffer.GetCapacity() - buffer.GetLength() + 1), 'x');
      EXPECT_EQ(buffer.Append(tooMuch.data(), tooMuch.size()), OLABuffer::kGrowthFailed);
      OLABuffer::FailAllocation(0);
    }
    ASSERT_EQ(buffer.AppendString(piece.c_str()), OLABuffer::kOk);
    expected += piece;
  }
  EXPECT_EQ(Content(buffer), expected);
  EXPECT_GE(buffer.GetWritten(), expected.size());
}

}  // namespace
