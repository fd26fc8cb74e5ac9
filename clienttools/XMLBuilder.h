// XMLBuilder: the streaming writer of every request document, appending to one OLABuffer.
#pragma once

#include <cstdint>
#include <string>

#include "clienttools/OLABuffer.h"
#include "clienttools/OLAPrecisionInteger.h"
#include "clienttools/OLAString.h"
#include "host/HostValues.h"
#include "platform/ComBase.h"

// An element name, taken from an OLAString or a literal without copying it.
class XmlName {
 public:
  XmlName(const OLAString& name) : text_(name.GetText()), length_(size_t(name.GetLength())) {}  // NOLINT
  XmlName(const char* name) : text_(name), length_(std::char_traits<char>::length(name)) {}     // NOLINT
  const char* Text() const { return text_; }
  size_t Length() const { return length_; }

 private:
  const char* text_;
  size_t length_;
};

class XMLBuilder {
 public:
  // Result codes of the element operations.
  static constexpr uint32_t kDone = 0;
  static constexpr uint32_t kOptionalEmpty = 1;  // nothing written: an optional value was empty
  static constexpr uint32_t kValueNotSet = 2;    // nothing written: the value is unset or invalid
  static constexpr uint32_t kNoBuffer = 3;  // nothing written: no buffer, or it could not grow

  static constexpr uint64_t kDefaultCapacity = 51200;

  XMLBuilder();
  // A sub-document at the indentation of the place it will be inserted; `capacity` is both the
  // initial size and the growth step of the buffer.
  XMLBuilder(uint32_t depth, uint64_t capacity);
  XMLBuilder(const XMLBuilder&) = delete;
  XMLBuilder& operator=(const XMLBuilder&) = delete;
  virtual ~XMLBuilder();

  // The first failure of the writer itself (no buffer, a buffer that could not grow or would pass
  // its size limit), as an HRESULT: E_OUTOFMEMORY, or E_INVALIDARG for a document too large; S_OK
  // while every write succeeded. Once failed, the builder stays failed: every operation writes
  // nothing and reports kNoBuffer, so a document with a hole in it can never be handed out.
  [[nodiscard]] HRESULT Status() const { return failure_; }

  // Empties the document and starts again at `depth`, keeping the buffer's memory for the next
  // one; a failure is forgotten (a builder without buffer tries to allocate one again).
  void Clear(uint32_t depth);

  // The operations keep their slot order: a derived writer may replace any of them.
  // `attributes` is read two strings at a time and ends at the first empty key; attribute values
  // are written as given.
  virtual uint32_t OpenAggregateWithAttributes(XmlName name, const OLAString* attributes);
  virtual uint32_t OpenAggregate(XmlName name);
  virtual uint32_t CloseAggregate(XmlName name);
  virtual uint32_t AppendRaw(const char* text);
  virtual uint32_t AppendText(const OLAString& text, bool addNewline, bool escape);
  virtual uint32_t AppendNewlines(int16_t count);
  virtual uint32_t AddNotDoneElement(XmlName name);
  virtual uint32_t AddNameValueComment(XmlName name, const OLAString& value);
  virtual uint32_t AddElement(XmlName name, BSTR value);
  virtual uint32_t AddElement(XmlName name, const OLAString& value);
  virtual uint32_t AddCDataElement(XmlName name, BSTR value);
  virtual uint32_t AddCDataElement(XmlName name, const OLAString& value);
  virtual uint32_t AddHeaderLine(const OLAString& name, const OLAString& value);
  virtual uint32_t AddComment(const OLAString& text);
  virtual uint32_t AddStartTag(XmlName name);
  virtual uint32_t AddIntElement(XmlName name, int32_t value);
  virtual uint32_t AddLongElement(XmlName name, int32_t value);
  virtual uint32_t AddFixedElement(XmlName name, double value, int decimals);
  virtual uint32_t AddDoubleElement(XmlName name, double value);
  // Takes ownership of `amount` (released in every path). A failed host call is returned as it
  // came, as an HRESULT.
  virtual uint32_t AddHostAmountElement(XmlName name, IAmount* amount, bool omitIfEmpty);
  virtual uint32_t AddAmountElement(XmlName name, OLAAmount value);
  virtual uint32_t AddPrecisionElement(XmlName name, OLAPrecisionInteger value);
  // Dates outside the OLE range write nothing and report kValueNotSet.
  virtual uint32_t AddDateTimeElement(XmlName name, double date);
  virtual uint32_t AddZonedDateTimeElement(XmlName name, double date);
  virtual uint32_t AddCompactDateElement(XmlName name, double date);
  virtual uint32_t AddPrecisionElement2(XmlName name, OLAPrecisionInteger value);
  virtual uint32_t AddBoolElement(XmlName name, VARIANT_BOOL value);
  // Throws ComError: E_POINTER for a null address, the host's code for a failed read.
  virtual uint32_t AddAddressElement(XmlName name, IAddress* address);
  virtual uint32_t WriteToFile(const OLAString& path);
  virtual uint32_t DumpToTempFile();

  // The whole buffer as a new BSTR (null when empty). Fails with Status() after a failed write,
  // E_POINTER for a null `out`, E_INVALIDARG when the text does not fit a BSTR and E_OUTOFMEMORY
  // when the conversion cannot allocate; `out` is then null.
  [[nodiscard]] HRESULT GetXMLAsBSTR(BSTR* out) const;

  const OLABuffer* Buffer() const { return buffer_; }
  uint32_t Depth() const { return depth_; }

 private:
  // Writes the pieces of one line (see XMLBuilder.cpp) after one capacity check for their longest
  // text; the first write that cannot be made fails the builder.
  template <class... Pieces>
  uint32_t Emit(const Pieces&... pieces);
  // Room for `count` more bytes, or null after recording the failure.
  char* Reserve(size_t count);
  static OLABuffer* NewBuffer(uint64_t capacity);
  size_t IndentWidth() const;
  // indentation, <name>, content (escaped and cleaned when asked), </name>, newline
  uint32_t WriteTextElement(XmlName name, const char* content, size_t count, bool escape);
  uint32_t WriteTextElement(XmlName name, const char* content) {
    return WriteTextElement(name, content, std::char_traits<char>::length(content), false);
  }
  uint32_t WriteValueElement(XmlName name, OLAPrecisionInteger& value);

  OLABuffer* buffer_;
  uint32_t depth_;
  uint64_t capacity_;  // the buffer's initial size and growth step
  HRESULT failure_;
  std::string scratch_;  // reused for BSTR conversions, so a run of elements allocates nothing
};
