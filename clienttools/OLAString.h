// OLAString: the 8-bit, zero-terminated string (at most 32766 characters) in which element names
// and values travel to the XML writer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/ComBase.h"

class OLAString {
 public:
  // Capacity and length are signed 16-bit: at most 32766 characters plus the terminator.
  // An operation whose result would be longer keeps the first 32766 characters and returns false.
  static constexpr int kMaxChars = 32766;

  OLAString() = default;
  OLAString(const char* text);  // NOLINT(google-explicit-constructor): literals read naturally
  OLAString(const char* text, size_t length);
  OLAString(const OLAString& other);
  OLAString(OLAString&& other) noexcept;
  OLAString& operator=(const OLAString& other);
  OLAString& operator=(OLAString&& other) noexcept;
  virtual ~OLAString();

  // Copies text, CDATA flag and max length.
  virtual bool Assign(const OLAString& other);
  // True when the length is not above the max length.
  virtual bool IsValid() const;
  virtual void SetMaxLength(uint16_t maxLength);
  // Cuts the text at `position`; ignored for -1 or a position beyond the capacity.
  virtual void Truncate(int16_t position);
  virtual void TruncateToMaxLength();

  // Replaces the text; null or empty frees it.
  bool SetText(const char* text);
  bool SetText(const char* text, size_t length);
  // Replaces the text with the ANSI form of a BSTR; null gives the empty string.
  bool SetFromBSTR(BSTR text);
  // "%.15g"
  bool SetFromDouble(double value);
  bool Append(const char* text);
  bool Append(const char* text, size_t length);
  bool Append(const OLAString& other) { return Append(other.text_, size_t(other.length_)); }
  // Nothing for the zero character.
  bool AppendChar(char c);

  // The text; an empty string (never null) when none is set.
  const char* GetText() const { return text_ ? text_ : ""; }
  int GetLength() const { return length_; }
  int GetCapacity() const { return capacity_; }
  bool IsEmpty() const { return length_ == 0; }
  bool IsCData() const { return cdata_ != 0; }
  uint16_t GetMaxLength() const { return maxLength_; }
  // Grows the capacity to at least `size` bytes and returns the writable text (null when the
  // size is beyond the limit or memory runs out). Call Recount() after writing into it.
  char* GetBuffer(int size);
  // Recounts the length after a direct write through GetBuffer.
  void Recount();
  // Sets every allocated byte but the last to `c` and recounts.
  void Fill(char c);

  bool Equals(const OLAString& other) const;
  bool Equals(const char* text) const;
  bool NotEquals(const OLAString& other) const { return !Equals(other); }
  bool NotEquals(const char* text) const { return !Equals(text); }
  bool EqualsNoCase(const char* text) const;
  bool operator==(const OLAString& other) const { return Equals(other); }
  bool operator==(const char* text) const { return Equals(text); }

  void ToLower();
  void ToUpper();
  // Remove leading or trailing space characters (0x20 only).
  void TrimLeft();
  void TrimRight();
  // Empty, or only characters of " \n\r\t".
  bool IsBlank() const;
  // Replaces every occurrence of `from` by `to`, left to right, without rescanning replaced text.
  bool ReplaceAll(const char* from, const char* to);
  bool WrapInCData();
  bool UnwrapCData();
  // Text of a string resource of this module (Windows); false where there is none.
  bool LoadFromResource(unsigned id);
  // The temporary folder, a separator, then `fileName`.
  bool SetTempFilePath(const char* fileName);

  friend OLAString operator+(const OLAString& a, const OLAString& b);

 private:
  bool Reserve(int capacity);
  void Free();

  uint16_t maxLength_ = 65535;
  char* text_ = nullptr;
  int16_t capacity_ = 0;
  int16_t length_ = 0;
  uint16_t cdata_ = 0;
};
