// The XML writer: the input is decoded into a sequence of XMLBuilder operations with their values,
// written inside one root aggregate. When every operation reported success, libxml2 must parse
// the document (read in the ANSI code page, Windows-1252), its elements must be the ones written,
// in order, and every escaped value must read back as its cleaned value: the bytes other than tab,
// line feed and 0x20 to 0x7F dropped, 0x92 read as an apostrophe.
#include <fuzzer/FuzzedDataProvider.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clienttools/OLAPrecisionInteger.h"
#include "clienttools/XMLBuilder.h"
#include "diagnostics/FeatureSettings.h"
#include "FuzzSupport.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/ComError.h"

using parcelon::fuzz::Cleaned;
using parcelon::fuzz::Finding;

namespace {

constexpr size_t kMaxOperations = 64;
constexpr size_t kMaxValueBytes = 300;
constexpr size_t kMaxNesting = 8;

// One element of the document, in the order its start tag appears: its name and, for a text
// element whose content the target can predict, that content as UTF-8.
struct Expected {
  std::string name;
  std::optional<std::string> content;
};

// A name that XML accepts: a letter, then letters, digits, ".", "-" and "_".
std::string Name(FuzzedDataProvider& in) {
  static constexpr char kFirst[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  static constexpr char kRest[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-_";
  std::string name(1, kFirst[in.ConsumeIntegralInRange<size_t>(0, sizeof kFirst - 2)]);
  const size_t length = in.ConsumeIntegralInRange<size_t>(0, 40);
  for (size_t i = 0; i < length; ++i) name += kRest[in.ConsumeIntegralInRange<size_t>(0, sizeof kRest - 2)];
  return name;
}

// Text from a safe alphabet, for what the writer writes as given (comments, attribute values).
std::string PlainText(FuzzedDataProvider& in) {
  static constexpr char kPlain[] = "abcXYZ019 .,:/=";
  std::string text;
  const size_t length = in.ConsumeIntegralInRange<size_t>(0, 60);
  for (size_t i = 0; i < length; ++i) text += kPlain[in.ConsumeIntegralInRange<size_t>(0, sizeof kPlain - 2)];
  return text;
}

// Windows-1252 bytes as UTF-8, through the platform's own conversion to UTF-16.
std::string Utf8FromAnsi(const std::string& ansi) {
  BSTR wide = nullptr;
  if (FAILED(parcelon::AnsiToBstr(ansi.data(), ansi.size(), &wide))) Finding("AnsiToBstr failed");
  const Bstr owned = Bstr::Attach(wide);
  std::string out;
  const OLECHAR* units = owned.Get();
  for (UINT i = 0; i < owned.Length(); ++i) {
    const auto u = static_cast<uint32_t>(units[i]);
    if (u < 0x80) {
      out += char(u);
    } else if (u < 0x800) {
      out += char(0xC0 | (u >> 6));
      out += char(0x80 | (u & 0x3F));
    } else {
      out += char(0xE0 | (u >> 12));
      out += char(0x80 | ((u >> 6) & 0x3F));
      out += char(0x80 | (u & 0x3F));
    }
  }
  return out;
}

// A CDATA value that a well-formed document can hold: characters XML allows, which the code page
// defines (its five undefined bytes have no Unicode character).
std::string CDataValue(FuzzedDataProvider& in) {
  std::string value = in.ConsumeRandomLengthString(kMaxValueBytes);
  std::string out;
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    const bool undefined = byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
    if ((byte >= 0x20 || byte == '\t' || byte == '\n') && !undefined) out += c;
  }
  return out;
}

void SetIndentation(bool on) {
  static int current = -1;
  if (current == int(on)) return;
  static const std::string settings = parcelon::fuzz::UseScratchFolder();
  parcelon::fuzz::WriteFile(settings, on ? "[ZPSSettings]\nNetworkAdapter.IndentXML=1\n" : "[ZPSSettings]\n");
  AmbitAccess::Reload();
  current = int(on);
}

// The elements of the parsed document in document order.
void Collect(xmlNode* node, std::vector<xmlNode*>& out) {
  for (; node; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    out.push_back(node);
    Collect(node->children, out);
  }
}

// Whether a result code means the operation did what it was asked (wrote its text, or nothing
// for an empty or unset value).
bool Succeeded(uint32_t result) {
  return result == XMLBuilder::kDone || result == XMLBuilder::kOptionalEmpty || result == XMLBuilder::kValueNotSet;
}

void CheckDocument(const XMLBuilder& builder, const std::vector<Expected>& expected) {
  const OLABuffer* buffer = builder.Buffer();
  if (!buffer) Finding("every operation succeeded without a buffer");
  const std::string text(buffer->GetData(), buffer->GetLength());

  xmlDoc* doc = xmlReadMemory(text.data(), int(text.size()), "request.xml", "windows-1252",
                              XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE);
  if (!doc) Finding("libxml2 cannot parse the document:\n" + text);
  std::vector<xmlNode*> elements;
  Collect(xmlDocGetRootElement(doc), elements);
  if (elements.size() != expected.size())
    Finding("the document has " + std::to_string(elements.size()) + " elements, " +
            std::to_string(expected.size()) + " were written:\n" + text);
  for (size_t i = 0; i < elements.size(); ++i) {
    if (expected[i].name != reinterpret_cast<const char*>(elements[i]->name))
      Finding("element " + std::to_string(i) + " is named " + reinterpret_cast<const char*>(elements[i]->name) +
              ", written as " + expected[i].name + ":\n" + text);
    if (!expected[i].content) continue;
    xmlChar* content = xmlNodeGetContent(elements[i]);
    const std::string read = content ? reinterpret_cast<const char*>(content) : "";
    xmlFree(content);
    if (read != *expected[i].content)
      Finding("element " + expected[i].name + " reads back as [" + read + "], expected [" + *expected[i].content +
              "]:\n" + text);
  }
  xmlFreeDoc(doc);

  // The text handed out must be the buffer's bytes, each as its code page character.
  BSTR handed = nullptr;
  if (const HRESULT hr = builder.GetXMLAsBSTR(&handed); FAILED(hr)) Finding("GetXMLAsBSTR failed: " + std::to_string(hr));
  const Bstr owned = Bstr::Attach(handed);
  std::string back;
  parcelon::WideToAnsi(owned.Get(), owned.Length(), back);
  if (back != text) Finding("GetXMLAsBSTR does not give the buffer's text");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xmlInitParser();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  SetIndentation(in.ConsumeBool());
  // Small capacities, so that elements end at, around and beyond the buffer's end.
  XMLBuilder builder(0, in.ConsumeIntegralInRange<uint64_t>(1, 4200));
  std::vector<Expected> expected;
  std::vector<std::string> open;
  bool allSucceeded = true;
  auto record = [&](uint32_t result, const std::string& name, std::optional<std::string> content) {
    if (!Succeeded(result)) allSucceeded = false;
    else if (result == XMLBuilder::kDone) expected.push_back({name, std::move(content)});
  };

  try {
    allSucceeded = builder.OpenAggregate("Request") == XMLBuilder::kDone;
    expected.push_back({"Request", std::nullopt});
    for (size_t step = 0; step < kMaxOperations && in.remaining_bytes() > 0; ++step) {
      const std::string name = Name(in);
      switch (in.ConsumeIntegralInRange<int>(0, 17)) {
        case 0: {
          if (open.size() >= kMaxNesting) break;
          record(builder.OpenAggregate(name.c_str()), name, std::nullopt);
          open.push_back(name);
          break;
        }
        case 1: {
          if (open.empty()) break;
          if (!Succeeded(builder.CloseAggregate(open.back().c_str()))) allSucceeded = false;
          open.pop_back();
          break;
        }
        case 2: {
          if (open.size() >= kMaxNesting) break;
          const std::string key = Name(in), value = PlainText(in);
          const OLAString attributes[] = {key.c_str(), value.c_str(), "", ""};
          record(builder.OpenAggregateWithAttributes(name.c_str(), attributes), name, std::nullopt);
          open.push_back(name);
          break;
        }
        case 3: {
          const std::string value = in.ConsumeRandomLengthString(kMaxValueBytes);
          record(builder.AddElement(name.c_str(), OLAString(value.data(), value.size())), name, Cleaned(value));
          break;
        }
        case 4: {
          std::u16string wide;
          const size_t length = in.ConsumeIntegralInRange<size_t>(0, kMaxValueBytes / 2);
          for (size_t i = 0; i < length; ++i) wide += char16_t(in.ConsumeIntegralInRange<uint16_t>(1, 0xFFFF));
          const Bstr value(reinterpret_cast<const OLECHAR*>(wide.data()), UINT(wide.size()));
          std::string ansi;
          parcelon::WideToAnsi(value.Get(), value.Length(), ansi);
          record(builder.AddElement(name.c_str(), value.Get()), name, Cleaned(ansi));
          break;
        }
        case 5: {
          const std::string value = CDataValue(in);
          record(builder.AddCDataElement(name.c_str(), OLAString(value.data(), value.size())), name,
                 Utf8FromAnsi(value));
          break;
        }
        case 6: {
          const int32_t value = in.ConsumeIntegral<int32_t>();
          const uint32_t result =
              in.ConsumeBool() ? builder.AddIntElement(name.c_str(), value) : builder.AddLongElement(name.c_str(), value);
          record(result, name, std::to_string(value));
          break;
        }
        case 7: {
          const double value = in.ConsumeFloatingPoint<double>();
          record(builder.AddFixedElement(name.c_str(), value, in.ConsumeIntegralInRange<int>(-2, 40)), name,
                 std::nullopt);
          break;
        }
        case 8:
          record(builder.AddDoubleElement(name.c_str(), in.ConsumeFloatingPoint<double>()), name, std::nullopt);
          break;
        case 9: {
          OLAPrecisionInteger value(in.ConsumeRandomLengthString(40).c_str());
          if (in.ConsumeBool()) value.SetScale(in.ConsumeIntegralInRange<uint16_t>(0, 31));
          std::string text = value.ToString();
          uint32_t result;
          switch (in.ConsumeIntegralInRange<int>(0, 2)) {
            case 0: result = builder.AddAmountElement(name.c_str(), OLAAmount(value)); break;
            case 1: result = builder.AddPrecisionElement(name.c_str(), value); break;
            default: result = builder.AddPrecisionElement2(name.c_str(), value); break;
          }
          record(result, name, text);
          break;
        }
        case 10: {
          const double date = in.ConsumeBool() ? in.ConsumeFloatingPoint<double>()
                                               : in.ConsumeFloatingPointInRange<double>(-700000.0, 3000000.0);
          uint32_t result;
          switch (in.ConsumeIntegralInRange<int>(0, 2)) {
            case 0: result = builder.AddDateTimeElement(name.c_str(), date); break;
            case 1: result = builder.AddZonedDateTimeElement(name.c_str(), date); break;
            default: result = builder.AddCompactDateElement(name.c_str(), date); break;
          }
          record(result, name, std::nullopt);
          break;
        }
        case 11: {
          const auto value = static_cast<VARIANT_BOOL>(in.ConsumeIntegral<int16_t>());
          record(builder.AddBoolElement(name.c_str(), value), name, value == VARIANT_TRUE ? "Y" : "N");
          break;
        }
        case 12:
          record(builder.AddNotDoneElement(name.c_str()), name, "NOT DONE");
          break;
        case 13:
          if (!Succeeded(builder.AddComment(PlainText(in).c_str()))) allSucceeded = false;
          break;
        case 14: {
          // A comment may not hold "--": the name part keeps no "-".
          std::string label = name;
          std::erase(label, '-');
          if (!Succeeded(builder.AddNameValueComment(label.c_str(), PlainText(in).c_str()))) allSucceeded = false;
          break;
        }
        case 15: {
          // Escaped text straight into the open aggregate's content.
          const std::string value = in.ConsumeRandomLengthString(kMaxValueBytes);
          if (!Succeeded(builder.AppendText(OLAString(value.data(), value.size()), in.ConsumeBool(), true)))
            allSucceeded = false;
          break;
        }
        case 16:
          if (!Succeeded(builder.AppendNewlines(in.ConsumeIntegralInRange<int16_t>(-2, 3)))) allSucceeded = false;
          break;
        default: {
          std::u16string wide;
          const size_t length = in.ConsumeIntegralInRange<size_t>(0, kMaxValueBytes / 2);
          for (size_t i = 0; i < length; ++i) wide += char16_t(in.ConsumeIntegralInRange<uint16_t>(0x20, 0x7E));
          const Bstr value(reinterpret_cast<const OLECHAR*>(wide.data()), UINT(wide.size()));
          const std::string ansi(wide.begin(), wide.end());
          record(builder.AddCDataElement(name.c_str(), value.Get()), name, ansi);
          break;
        }
      }
    }
    while (!open.empty()) {
      if (!Succeeded(builder.CloseAggregate(open.back().c_str()))) allSucceeded = false;
      open.pop_back();
    }
    if (!Succeeded(builder.CloseAggregate("Request"))) allSucceeded = false;
  } catch (const ComError&) {
    // A conversion that ran out of memory: the document is not handed out.
    return 0;
  }
  if (allSucceeded) CheckDocument(builder, expected);
  return 0;
}
