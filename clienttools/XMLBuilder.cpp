#include "clienttools/XMLBuilder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "clienttools/OLADateTime.h"
#include "diagnostics/RedirectedFiles.h"
#include "diagnostics/FeatureSettings.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/ComError.h"

namespace {

constexpr char kSettingsSection[] = "ZPSSettings";
constexpr char kIndentKey[] = "NetworkAdapter.IndentXML";

// What happens to each byte of an escaped value: kept, dropped, or replaced by an entity.
enum ByteAction : uint8_t { kKeep, kDrop, kGt, kLt, kAmp, kApos, kQuot };

struct Entity {
  const char* text;
  size_t length;
};
constexpr Entity kEntities[] = {{}, {}, {"&gt;", 4}, {"&lt;", 4}, {"&amp;", 5}, {"&apos;", 6}, {"&quot;", 6}};

constexpr std::array<uint8_t, 256> MakeByteActions() {
  std::array<uint8_t, 256> table{};
  for (int b = 0; b < 256; ++b) {
    // Tab, line feed and 0x20..0x7F survive; other control bytes and the whole upper half of the
    // code page are dropped.
    table[b] = (b == 0x09 || b == 0x0A || (b >= 0x20 && b <= 0x7F)) ? kKeep : kDrop;
  }
  table['>'] = kGt;
  table['<'] = kLt;
  table['&'] = kAmp;
  table['\''] = kApos;
  table[0x92] = kApos;  // the typographic apostrophe is folded into the plain one
  table['"'] = kQuot;
  return table;
}
constexpr std::array<uint8_t, 256> kByteActions = MakeByteActions();

constexpr size_t kLongestEntity = 6;

char* Put(char* out, const char* bytes, size_t count) {
  if (count > 0) std::memcpy(out, bytes, count);
  return out + count;
}

// The index of the first byte from `i` on that is not plain printable text, or `count`: sixteen
// bytes at a time where the processor allows, so that ordinary values are scanned quickly.
size_t SkipPlain(const unsigned char* p, size_t i, size_t count) {
#if defined(__SSE2__)
  const __m128i space = _mm_set1_epi8(0x20);
  const __m128i specials[] = {_mm_set1_epi8('<'), _mm_set1_epi8('>'), _mm_set1_epi8('&'),
                              _mm_set1_epi8('\''), _mm_set1_epi8('"')};
  for (; i + 16 <= count; i += 16) {
    const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    // Bytes from 0x80 up read as negative, so "less than a space" also catches the upper half.
    __m128i flagged = _mm_cmplt_epi8(chunk, space);
    for (const __m128i& special : specials) flagged = _mm_or_si128(flagged, _mm_cmpeq_epi8(chunk, special));
    if (const int mask = _mm_movemask_epi8(flagged)) return i + size_t(__builtin_ctz(unsigned(mask)));
  }
#endif
  while (i < count && kByteActions[p[i]] == kKeep) ++i;
  return i;
}

// Writes `count` bytes escaped (the XML specials as entities, 0x92 as an apostrophe) and cleaned
// (only tab, line feed and 0x20..0x7F survive), copying runs of plain bytes at once.
char* PutEscaped(char* out, const char* bytes, size_t count) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes);
  size_t runStart = 0;
  for (size_t i = SkipPlain(p, 0, count); i < count; i = SkipPlain(p, i + 1, count)) {
    const uint8_t action = kByteActions[p[i]];
    if (action == kKeep) continue;  // tab and line feed
    out = Put(out, bytes + runStart, i - runStart);
    if (action != kDrop) out = Put(out, kEntities[action].text, kEntities[action].length);
    runStart = i + 1;
  }
  return Put(out, bytes + runStart, count - runStart);
}

// ---- The pieces of a line ------------------------------------------------------------------
// Each piece knows the longest text it can write (Size) and writes it (Put). An operation lists
// the pieces of its line once, and Emit reserves the sum of their sizes before putting them, so
// the room reserved and the text written come from the same list and cannot disagree.

struct Bytes {
  const char* text;
  size_t count;
  size_t Size() const { return count; }
  char* Put(char* out) const { return ::Put(out, text, count); }
};

template <size_t N>
Bytes Lit(const char (&text)[N]) {
  return {text, N - 1};
}
Bytes Name(XmlName name) { return {name.Text(), name.Length()}; }
Bytes Text(const OLAString& text) { return {text.GetText(), size_t(text.GetLength())}; }

struct Repeat {
  char c;
  size_t count;
  size_t Size() const { return count; }
  char* Put(char* out) const {
    if (count > 0) std::memset(out, c, count);
    return out + count;
  }
};

Repeat Spaces(size_t count) { return {' ', count}; }

// Escaped and cleaned: each byte becomes at most one entity.
struct Escaped {
  const char* text;
  size_t count;
  size_t Size() const { return kLongestEntity * count; }
  char* Put(char* out) const { return PutEscaped(out, text, count); }
};

// Either the bytes as they are or escaped and cleaned.
struct Content {
  const char* text;
  size_t count;
  bool escape;
  size_t Size() const { return escape ? Escaped{text, count}.Size() : count; }
  char* Put(char* out) const { return escape ? Escaped{text, count}.Put(out) : ::Put(out, text, count); }
};

// A CDATA section of the bytes as they are. A "]]>" inside would end the section early, so the
// section is split between its "]]" and its ">", as pugixml writes it: "]]" ends one section and
// the ">" opens the next.
struct CData {
  static constexpr std::string_view kOpen = "<![CDATA[";
  static constexpr std::string_view kClose = "]]>";
  std::string_view text;

  size_t Size() const {
    size_t sections = 1;
    for (size_t at = text.find(kClose); at != std::string_view::npos; at = text.find(kClose, at + 2)) ++sections;
    return text.size() + sections * (kOpen.size() + kClose.size());
  }
  char* Put(char* out) const {
    size_t from = 0;
    do {
      const size_t close = text.find(kClose, from);
      const size_t to = close == std::string_view::npos ? text.size() : close + 2;
      out = ::Put(out, kOpen.data(), kOpen.size());
      out = ::Put(out, text.data() + from, to - from);
      out = ::Put(out, kClose.data(), kClose.size());
      from = to;
    } while (from < text.size());
    return out;
  }
};

// The attributes of a start tag: ` key="value"` for each pair up to the first empty key.
struct Attributes {
  const OLAString* pairs;
  size_t Size() const {
    size_t size = 0;
    for (const OLAString* pair = pairs; pair && !pair[0].IsEmpty(); pair += 2)
      size += Lit(" ").Size() + Text(pair[0]).Size() + Lit("=\"").Size() + Text(pair[1]).Size() + Lit("\"").Size();
    return size;
  }
  char* Put(char* out) const {
    for (const OLAString* pair = pairs; pair && !pair[0].IsEmpty(); pair += 2) {
      out = Lit(" ").Put(out);
      out = Text(pair[0]).Put(out);
      out = Lit("=\"").Put(out);
      out = Text(pair[1]).Put(out);
      out = Lit("\"").Put(out);
    }
    return out;
  }
};

}  // namespace

XMLBuilder::XMLBuilder() : XMLBuilder(0, kDefaultCapacity) {}

XMLBuilder::XMLBuilder(uint32_t depth, uint64_t capacity)
    : buffer_(NewBuffer(capacity)), depth_(depth), capacity_(capacity), failure_(buffer_ ? S_OK : E_OUTOFMEMORY) {}

XMLBuilder::~XMLBuilder() { delete buffer_; }

// A buffer whose first allocation failed is as good as none.
OLABuffer* XMLBuilder::NewBuffer(uint64_t capacity) {
  auto* buffer = new (std::nothrow) OLABuffer(capacity, capacity);
  if (buffer && !buffer->GetData()) {
    delete buffer;
    buffer = nullptr;
  }
  return buffer;
}

void XMLBuilder::Clear(uint32_t depth) {
  depth_ = depth;
  if (buffer_)
    buffer_->Rewind();
  else
    buffer_ = NewBuffer(capacity_);
  failure_ = buffer_ ? S_OK : E_OUTOFMEMORY;
}

char* XMLBuilder::Reserve(size_t count) {
  if (FAILED(failure_)) return nullptr;
  if (char* out = buffer_->ReserveTail(count)) return out;
  failure_ = uint64_t(buffer_->GetPosition()) + count > buffer_->MaxSize() ? E_INVALIDARG : E_OUTOFMEMORY;
  return nullptr;
}

template <class... Pieces>
uint32_t XMLBuilder::Emit(const Pieces&... pieces) {
  char* const start = Reserve((size_t(0) + ... + pieces.Size()));
  if (!start) return kNoBuffer;
  char* out = start;
  ((out = pieces.Put(out)), ...);
  buffer_->CommitTail(size_t(out - start));
  return kDone;
}

// Two spaces per level when the indentation switch is on; the switch is read at every line so
// that a change to the settings applies at once.
size_t XMLBuilder::IndentWidth() const {
  if (depth_ < 1 || FAILED(failure_) || !AmbitAccess::GetFeatureParamAsBool(kSettingsSection, kIndentKey, nullptr))
    return 0;
  return size_t(depth_) * 2;
}

uint32_t XMLBuilder::WriteTextElement(XmlName name, const char* content, size_t count, bool escape) {
  return Emit(Spaces(IndentWidth()), Lit("<"), Name(name), Lit(">"), Content{content, count, escape}, Lit("</"),
              Name(name), Lit(">\n"));
}

uint32_t XMLBuilder::OpenAggregateWithAttributes(XmlName name, const OLAString* attributes) {
  const uint32_t rc = Emit(Spaces(IndentWidth()), Lit("<"), Name(name), Attributes{attributes}, Lit(">\n"));
  ++depth_;
  return rc;
}

uint32_t XMLBuilder::OpenAggregate(XmlName name) { return OpenAggregateWithAttributes(name, nullptr); }

uint32_t XMLBuilder::CloseAggregate(XmlName name) {
  --depth_;  // callers pair opens and closes; the depth is not checked
  return Emit(Spaces(IndentWidth()), Lit("</"), Name(name), Lit(">\n"));
}

uint32_t XMLBuilder::AppendRaw(const char* text) {
  return Emit(Bytes{text, text ? std::strlen(text) : 0});
}

uint32_t XMLBuilder::AppendText(const OLAString& text, bool addNewline, bool escape) {
  return Emit(Content{text.GetText(), size_t(text.GetLength()), escape}, Repeat{'\n', addNewline ? 1u : 0u});
}

uint32_t XMLBuilder::AppendNewlines(int16_t count) { return Emit(Repeat{'\n', count > 0 ? size_t(count) : 0}); }

uint32_t XMLBuilder::AddNotDoneElement(XmlName name) { return WriteTextElement(name, "NOT DONE"); }

uint32_t XMLBuilder::AddNameValueComment(XmlName name, const OLAString& value) {
  OLAString text(name.Text(), name.Length());
  text.Append(": ");
  text.Append(value);
  return AddComment(text);
}

// The ANSI form of a BSTR, held to the string length limit of OLAString, in the reused scratch.
static const std::string& ToAnsi(BSTR value, std::string& scratch) {
  scratch.clear();
  const size_t length = std::min<size_t>(SysStringLen(value), size_t(OLAString::kMaxChars));
  if (!parcelon::WideToAnsi(value, length, scratch)) throw ComError(E_OUTOFMEMORY);
  if (scratch.size() > size_t(OLAString::kMaxChars)) scratch.resize(size_t(OLAString::kMaxChars));
  return scratch;
}

uint32_t XMLBuilder::AddElement(XmlName name, BSTR value) {
  const std::string& text = ToAnsi(value, scratch_);
  return WriteTextElement(name, text.data(), text.size(), true);
}

uint32_t XMLBuilder::AddElement(XmlName name, const OLAString& value) {
  return WriteTextElement(name, value.GetText(), size_t(value.GetLength()), true);
}

uint32_t XMLBuilder::AddCDataElement(XmlName name, BSTR value) {
  const OLAString text(ToAnsi(value, scratch_).c_str());
  return AddCDataElement(name, text);
}

uint32_t XMLBuilder::AddCDataElement(XmlName name, const OLAString& value) {
  return Emit(Spaces(IndentWidth()), Lit("<"), Name(name), Lit(">"),
              CData{{value.GetText(), size_t(value.GetLength())}}, Lit("</"), Name(name), Lit(">\n"));
}

uint32_t XMLBuilder::AddHeaderLine(const OLAString& name, const OLAString& value) {
  return Emit(Text(name), Lit(":"), Text(value), Lit("\n"));
}

uint32_t XMLBuilder::AddComment(const OLAString& text) {
  return Emit(Spaces(IndentWidth()), Lit("<!--"), Text(text), Lit("-->\n"));
}

uint32_t XMLBuilder::AddStartTag(XmlName name) { return Emit(Lit("<"), Name(name), Lit(">\n")); }

uint32_t XMLBuilder::AddIntElement(XmlName name, int32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%d", value);
  return WriteTextElement(name, text);
}

uint32_t XMLBuilder::AddLongElement(XmlName name, int32_t value) { return AddIntElement(name, value); }

uint32_t XMLBuilder::AddFixedElement(XmlName name, double value, int decimals) {
  // "%.*f" of a huge double or a huge precision would not fit a small buffer; both are bounded.
  char text[400];
  std::snprintf(text, sizeof text, "%.*f", std::clamp(decimals, 0, 40), value);
  return WriteTextElement(name, text);
}

uint32_t XMLBuilder::AddDoubleElement(XmlName name, double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.15g", value);
  return WriteTextElement(name, text);
}

uint32_t XMLBuilder::AddHostAmountElement(XmlName name, IAmount* amount, bool omitIfEmpty) {
  const IAmountPtr owned = IAmountPtr::Attach(amount);
  if (FAILED(failure_)) return kNoBuffer;
  if (!owned) throw ComError(E_POINTER);
  Bstr text;
  HRESULT hr = owned->Prepare(-1);
  if (SUCCEEDED(hr)) hr = owned->GetText(text.Out());
  if (FAILED(hr)) return uint32_t(hr);
  if (omitIfEmpty && text.Empty()) return kOptionalEmpty;
  OLAString value;
  value.SetFromBSTR(text.Get());
  // A two-decimal amount in a locale with another decimal separator: make the separator a point.
  const int length = value.GetLength();
  if (length >= 3) {
    char* separator = value.GetBuffer(length + 1) + (length - 3);
    if (*separator != '.' && (*separator < '0' || *separator > '9')) *separator = '.';
  }
  return AddElement(name, value);
}

uint32_t XMLBuilder::WriteValueElement(XmlName name, OLAPrecisionInteger& value) {
  if (FAILED(failure_)) return kNoBuffer;
  if (!value.IsValid()) return kValueNotSet;
  const char* text = value.ToString();
  if (!text || !*text) return kValueNotSet;
  return WriteTextElement(name, text);
}

uint32_t XMLBuilder::AddAmountElement(XmlName name, OLAAmount value) { return WriteValueElement(name, value); }

uint32_t XMLBuilder::AddPrecisionElement(XmlName name, OLAPrecisionInteger value) {
  return WriteValueElement(name, value);
}

uint32_t XMLBuilder::AddPrecisionElement2(XmlName name, OLAPrecisionInteger value) {
  return WriteValueElement(name, value);
}

uint32_t XMLBuilder::AddDateTimeElement(XmlName name, double date) {
  if (FAILED(failure_)) return kNoBuffer;
  OLADateTime value;
  OLAString text;
  if (!value.SetFromOleDate(date) || !value.FormatXML(text)) return kValueNotSet;
  return WriteTextElement(name, text.GetText(), size_t(text.GetLength()), false);
}

uint32_t XMLBuilder::AddZonedDateTimeElement(XmlName name, double date) {
  if (FAILED(failure_)) return kNoBuffer;
  OLADateTime value;
  OLAString text;
  if (!value.SetFromOleDate(date)) return kValueNotSet;
  value.SetLocalZone();
  if (!value.FormatXML(text)) return kValueNotSet;
  return WriteTextElement(name, text.GetText(), size_t(text.GetLength()), false);
}

uint32_t XMLBuilder::AddCompactDateElement(XmlName name, double date) {
  if (FAILED(failure_)) return kNoBuffer;
  OLADateTime value;
  if (!value.SetFromOleDate(date)) return kValueNotSet;
  char text[32];
  std::snprintf(text, sizeof text, "%d%02.0f%02.0f", int(value.GetYear()), double(value.GetMonth()),
                double(value.GetDay()));
  return WriteTextElement(name, text);
}

uint32_t XMLBuilder::AddBoolElement(XmlName name, VARIANT_BOOL value) {
  return WriteTextElement(name, value == VARIANT_TRUE ? "Y" : "N");
}

uint32_t XMLBuilder::AddAddressElement(XmlName name, IAddress* address) {
  if (FAILED(failure_)) return kNoBuffer;
  if (!address) throw ComError(E_POINTER);
  struct Field {
    const char* element;
    Bstr value;
  };
  Field fields[] = {{"Addr1", {}}, {"Addr2", {}}, {"Addr3", {}},   {"Addr4", {}},  {"City", {}},
                    {"State", {}}, {"PostalCode", {}}, {"Country", {}}, {"Note", {}}};
  const IID& iid = IidOf<IAddress>();
  for (LONG line = 0; line < 4; ++line) ThrowIfFailed(address->GetLine(line, fields[line].value.Out()), &iid);
  ThrowIfFailed(address->GetCity(fields[4].value.Out()), &iid);
  ThrowIfFailed(address->GetState(fields[5].value.Out()), &iid);
  ThrowIfFailed(address->GetPostalCode(fields[6].value.Out()), &iid);
  ThrowIfFailed(address->GetCountry(fields[7].value.Out()), &iid);
  ThrowIfFailed(address->GetNote(fields[8].value.Out()), &iid);

  if (std::all_of(std::begin(fields), std::end(fields), [](const Field& f) { return f.value.Empty(); }))
    return kOptionalEmpty;
  uint32_t rc = OpenAggregate(name);
  for (const Field& field : fields) {
    if (rc != kDone) break;
    if (!field.value.Empty()) rc = AddElement(field.element, field.value.Get());
  }
  const uint32_t closed = CloseAggregate(name);
  return rc != kDone ? rc : closed;
}

uint32_t XMLBuilder::WriteToFile(const OLAString& path) {
  if (FAILED(failure_)) return kNoBuffer;
  FILE* file = parcelon::OpenRedirectedFile(path.GetText(), "wb");
  if (!file) return kDone;  // a file that cannot be opened is skipped without report
  std::fwrite(buffer_->GetData(), 1, buffer_->GetLength(), file);
  std::fclose(file);
  return kDone;
}

uint32_t XMLBuilder::DumpToTempFile() {
  OLAString path;
  path.SetTempFilePath("dump.xml");
  return WriteToFile(path);
}

HRESULT XMLBuilder::GetXMLAsBSTR(BSTR* out) const {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (FAILED(failure_)) return failure_;
  if (buffer_->GetLength() > uint32_t(INT32_MAX)) return E_INVALIDARG;
  return parcelon::AnsiToBstr(buffer_->GetData(), buffer_->GetLength(), out);
}
