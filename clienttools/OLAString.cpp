#include "clienttools/OLAString.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "platform/CodePage.h"
#include "platform/Paths.h"

#ifndef _WIN32
#include <strings.h>
#endif

namespace {
constexpr char kCDataOpen[] = "<![CDATA[";
constexpr size_t kCDataOpenLength = sizeof kCDataOpen - 1;

int CompareNoCase(const char* a, const char* b) {
#ifdef _WIN32
  return _stricmp(a, b);
#else
  return strcasecmp(a, b);
#endif
}
}  // namespace

OLAString::OLAString(const char* text) { SetText(text); }

OLAString::OLAString(const char* text, size_t length) { SetText(text, length); }

OLAString::OLAString(const OLAString& other) { Assign(other); }

OLAString::OLAString(OLAString&& other) noexcept
    : maxLength_(other.maxLength_),
      text_(std::exchange(other.text_, nullptr)),
      capacity_(std::exchange(other.capacity_, 0)),
      length_(std::exchange(other.length_, 0)),
      cdata_(std::exchange(other.cdata_, 0)) {}

OLAString& OLAString::operator=(const OLAString& other) {
  if (this != &other) Assign(other);
  return *this;
}

OLAString& OLAString::operator=(OLAString&& other) noexcept {
  if (this != &other) {
    Free();
    maxLength_ = other.maxLength_;
    text_ = std::exchange(other.text_, nullptr);
    capacity_ = std::exchange(other.capacity_, 0);
    length_ = std::exchange(other.length_, 0);
    cdata_ = std::exchange(other.cdata_, 0);
  }
  return *this;
}

OLAString::~OLAString() { Free(); }

void OLAString::Free() {
  std::free(text_);
  text_ = nullptr;
  capacity_ = 0;
  length_ = 0;
}

// Makes room for `capacity` bytes (terminator included): the block grows to exactly that size.
// The strings are short (at most kMaxChars) and built from a few pieces.
bool OLAString::Reserve(int capacity) {
  if (capacity <= capacity_) return true;
  if (capacity > kMaxChars + 1) return false;
  auto* grown = static_cast<char*>(std::realloc(text_, size_t(capacity)));
  if (!grown) {
    Free();
    return false;
  }
  std::memset(grown + capacity_, 0, size_t(capacity - capacity_));
  text_ = grown;
  capacity_ = int16_t(capacity);
  return true;
}

bool OLAString::Assign(const OLAString& other) {
  if (this == &other) return true;
  const bool ok = SetText(other.text_, size_t(other.length_));
  cdata_ = other.cdata_;
  maxLength_ = other.maxLength_;
  return ok;
}

bool OLAString::IsValid() const { return uint16_t(length_) <= maxLength_; }

void OLAString::SetMaxLength(uint16_t maxLength) { maxLength_ = maxLength; }

void OLAString::Truncate(int16_t position) {
  if (position < 0 || position >= capacity_ || !text_) return;
  text_[position] = '\0';
  Recount();
}

void OLAString::TruncateToMaxLength() {
  if (maxLength_ <= kMaxChars) Truncate(int16_t(maxLength_));
}

bool OLAString::SetText(const char* text) { return SetText(text, text ? std::strlen(text) : 0); }

bool OLAString::SetText(const char* text, size_t length) {
  cdata_ = 0;
  if (!text || length == 0) {
    Free();
    return true;
  }
  const bool fits = length <= size_t(kMaxChars);
  const size_t kept = fits ? length : size_t(kMaxChars);
  if (text_ && text >= text_ && text < text_ + capacity_) {
    // Assigning a part of ourselves: move within the block.
    std::memmove(text_, text, kept);
  } else {
    if (!Reserve(int(kept) + 1)) return false;
    std::memcpy(text_, text, kept);
  }
  text_[kept] = '\0';
  length_ = int16_t(kept);
  return fits;
}

bool OLAString::SetFromBSTR(BSTR text) {
  const UINT length = SysStringLen(text);
  if (length == 0) return SetText(nullptr);
  std::string ansi;
  if (!parcelon::WideToAnsi(text, std::min<size_t>(length, size_t(kMaxChars) + 1), ansi)) {
    Free();
    return false;
  }
  return SetText(ansi.data(), ansi.size()) && length <= UINT(kMaxChars);
}

bool OLAString::SetFromDouble(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.15g", value);
  return SetText(text);
}

bool OLAString::Append(const char* text) { return Append(text, text ? std::strlen(text) : 0); }

bool OLAString::Append(const char* text, size_t length) {
  if (!text || length == 0) return true;
  const size_t room = size_t(kMaxChars - length_);
  const bool fits = length <= room;
  const size_t kept = fits ? length : room;
  if (kept == 0) return fits;
  // The source may lie inside our own block, which Reserve may move.
  const bool inside = text_ && text >= text_ && text < text_ + capacity_;
  const size_t offset = inside ? size_t(text - text_) : 0;
  if (!Reserve(length_ + int(kept) + 1)) return false;
  std::memmove(text_ + length_, inside ? text_ + offset : text, kept);
  length_ = int16_t(length_ + int(kept));
  text_[length_] = '\0';
  return fits;
}

bool OLAString::AppendChar(char c) {
  if (c == '\0') return true;
  return Append(&c, 1);
}

char* OLAString::GetBuffer(int size) {
  if (size > capacity_ && !Reserve(size)) return nullptr;
  if (!text_ && !Reserve(1)) return nullptr;
  return text_;
}

void OLAString::Recount() {
  length_ = text_ ? int16_t(strnlen(text_, size_t(capacity_ > 0 ? capacity_ - 1 : 0))) : 0;
  if (text_) text_[length_] = '\0';
}

void OLAString::Fill(char c) {
  if (!text_ || capacity_ < 1) return;
  std::memset(text_, c, size_t(capacity_ - 1));
  text_[capacity_ - 1] = '\0';
  Recount();
}

bool OLAString::Equals(const OLAString& other) const {
  return length_ == other.length_ && std::memcmp(GetText(), other.GetText(), size_t(length_)) == 0;
}

bool OLAString::Equals(const char* text) const {
  if (!text) return length_ == 0;
  return std::strcmp(GetText(), text) == 0;
}

bool OLAString::EqualsNoCase(const char* text) const { return CompareNoCase(GetText(), text ? text : "") == 0; }

void OLAString::ToLower() {
  for (int i = 0; i < length_; ++i) text_[i] = char(std::tolower(static_cast<unsigned char>(text_[i])));
}

void OLAString::ToUpper() {
  for (int i = 0; i < length_; ++i) text_[i] = char(std::toupper(static_cast<unsigned char>(text_[i])));
}

void OLAString::TrimLeft() {
  int skip = 0;
  while (skip < length_ && text_[skip] == ' ') ++skip;
  if (skip == 0) return;
  std::memmove(text_, text_ + skip, size_t(length_ - skip) + 1);
  length_ = int16_t(length_ - skip);
}

void OLAString::TrimRight() {
  while (length_ > 0 && text_[length_ - 1] == ' ') text_[--length_] = '\0';
}

bool OLAString::IsBlank() const {
  for (int i = 0; i < length_; ++i)
    if (!std::strchr(" \n\r\t", text_[i])) return false;
  return true;
}

bool OLAString::ReplaceAll(const char* from, const char* to) {
  if (!from || !*from || length_ == 0) return true;
  const size_t fromLength = std::strlen(from);
  const char* found = std::strstr(GetText(), from);
  if (!found) return true;
  std::string result;
  result.reserve(size_t(length_));
  const char* cursor = GetText();
  for (; found; found = std::strstr(cursor, from)) {
    result.append(cursor, found);
    if (to) result.append(to);
    cursor = found + fromLength;
  }
  result.append(cursor);
  const uint16_t cdata = cdata_;
  const bool ok = SetText(result.data(), result.size());
  cdata_ = cdata;
  return ok;
}

bool OLAString::WrapInCData() {
  if (std::strncmp(GetText(), kCDataOpen, kCDataOpenLength) == 0) {
    cdata_ = 1;
    return true;
  }
  // Near the bound the text gives way, never the closing marker: a section without its end
  // would swallow the rest of the document.
  constexpr size_t kRoom = size_t(kMaxChars) - kCDataOpenLength - 3;
  const bool fits = size_t(length_) <= kRoom;
  const size_t kept = fits ? size_t(length_) : kRoom;
  std::string wrapped;
  wrapped.reserve(kept + kCDataOpenLength + 3);
  wrapped.append(kCDataOpen).append(GetText(), kept).append("]]>");
  const bool ok = SetText(wrapped.data(), wrapped.size());
  cdata_ = 1;
  return ok && fits;
}

bool OLAString::UnwrapCData() {
  if (std::strncmp(GetText(), kCDataOpen, kCDataOpenLength) != 0) return true;
  // The prefix and the last three characters go; a text too short for both becomes empty.
  const int keep = std::max(0, length_ - int(kCDataOpenLength) - 3);
  const bool ok = SetText(text_ + kCDataOpenLength, size_t(keep));
  cdata_ = 0;
  return ok;
}

bool OLAString::LoadFromResource([[maybe_unused]] unsigned id) {
#ifdef _WIN32
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCSTR>(&CompareNoCase), &module);
  char text[kMaxChars + 1];
  const int length = LoadStringA(module, id, text, sizeof text);
  if (length <= 0) return false;
  return SetText(text, size_t(length));
#else
  return false;
#endif
}

bool OLAString::SetTempFilePath(const char* fileName) {
  std::string path = parcelon::TempFolder();
  if (fileName) path += fileName;
  return SetText(path.data(), path.size());
}

OLAString operator+(const OLAString& a, const OLAString& b) {
  OLAString result(a);
  result.Append(b);
  result.cdata_ = (a.cdata_ || b.cdata_) ? 1 : 0;
  return result;
}
