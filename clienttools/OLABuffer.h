// OLABuffer: the growable byte buffer under every document; what was written is wiped before the
// memory holding it is freed.
#pragma once

#include <cstddef>
#include <cstdint>

class OLABuffer {
 public:
  // Result codes.
  static constexpr int32_t kOk = 0;
  static constexpr int32_t kTooLarge = -9996;     // would pass MaxSize or the end of the content
  static constexpr int32_t kGrowthFailed = -9997;
  static constexpr int32_t kNoData = -9998;

  // Allocates `initialSize` bytes (the growth step, or 512, when 0). A growth step of 0 means 512.
  explicit OLABuffer(uint64_t initialSize = 0, uint64_t growthStep = 0);
  OLABuffer(const OLABuffer&) = delete;
  OLABuffer& operator=(const OLABuffer&) = delete;
  virtual ~OLABuffer();

  virtual uint64_t MaxSize() const { return 4000000000ULL; }

  // Writes at the position; position and length then both mark the end of what was written.
  int32_t Append(const void* bytes, size_t count);
  // As Append, in pieces of at most 16384 bytes.
  int32_t AppendLarge(const void* bytes, size_t count);
  int32_t AppendChar(char c);
  int32_t AppendString(const char* text);

  // Room for `count` more bytes at the position, for a writer that fills it directly and then
  // calls CommitTail with what it wrote (at most `count`); null when the room cannot be made
  // (Reserve of the same total tells why).
  char* ReserveTail(size_t count) {
    const uint64_t end = uint64_t(position_) + count;
    if (end > capacity_ && EnsureCapacity(end) != kOk) return nullptr;
    return data_ + position_;
  }
  void CommitTail(size_t count) {
    position_ = uint32_t(position_ + count);
    length_ = position_;
    if (length_ > written_) written_ = length_;
  }

  const char* GetData() const { return data_; }
  uint32_t GetLength() const { return length_; }
  uint32_t GetPosition() const { return position_; }
  uint64_t GetCapacity() const { return capacity_; }
  // How far the block has ever been written (its high-water mark): what the wipes cover.
  uint64_t GetWritten() const { return written_; }

  // Makes room for `total` bytes in all.
  int32_t Reserve(uint64_t total);
  // Appends `count` bytes of this buffer's content, from `start`, to `target`.
  int32_t CopyRange(OLABuffer& target, uint32_t start, uint32_t count) const;
  // Copies `count` bytes from the position onward and advances the position.
  int32_t Read(void* out, uint32_t count);
  // Refused beyond the length.
  int32_t SetPosition(uint32_t position);
  // Sets the length; 0 means: to the position. Refused beyond the capacity.
  int32_t SetLength(uint32_t length);
  // Overwrites everything written with `fill` and empties the buffer.
  void Clear(char fill);
  // Empties the buffer and keeps its memory, so that the next document is written in place; the
  // old text is overwritten by the new one and wiped with the block.
  void Rewind() { length_ = position_ = 0; }
  bool Equals(const OLABuffer& other) const;

  // Fault injection for tests: the `n`th allocation of a block from now on (1: the next one; the
  // first allocation of a buffer and every growth count) fails as if memory had run out; 0 turns
  // it off. Per thread.
  static void FailAllocation(uint64_t n);
  // Blocks allocated by this thread so far (failed ones included).
  static uint64_t AllocationCount();

 private:
  // Room for `needed` bytes in all; grows geometrically so that appends stay linear.
  int32_t EnsureCapacity(uint64_t needed);

  char* data_ = nullptr;
  uint64_t capacity_ = 0;
  uint64_t growthStep_ = 0;
  uint32_t length_ = 0;
  uint32_t position_ = 0;
  uint64_t written_ = 0;  // high-water mark of the length
};
