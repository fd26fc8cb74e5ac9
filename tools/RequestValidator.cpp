#include "tools/RequestValidator.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/valid.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <memory>

namespace parcelon::tools {

namespace {

#if LIBXML_VERSION >= 21200
using ErrorPointer = const xmlError*;
#else
using ErrorPointer = xmlError*;
#endif

// The first error libxml2 reports while it is installed, as "line N: message"; warnings are not
// kept. The previous handler of the thread is restored when it goes.
class FirstErrorCatcher {
 public:
  FirstErrorCatcher() : previous_(xmlStructuredError), previousContext_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(this, &Catch);
  }
  ~FirstErrorCatcher() { xmlSetStructuredErrorFunc(previousContext_, previous_); }
  FirstErrorCatcher(const FirstErrorCatcher&) = delete;
  FirstErrorCatcher& operator=(const FirstErrorCatcher&) = delete;

  bool Caught() const { return !text_.empty(); }
  const std::string& Text() const { return text_; }

 private:
  static void Catch(void* context, ErrorPointer error) {
    auto* self = static_cast<FirstErrorCatcher*>(context);
    if (!error || error->level < XML_ERR_ERROR || self->Caught()) return;
    std::string text = error->message ? error->message : "unknown error";
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    self->text_ = "line " + std::to_string(error->line) + ": " + text;
  }

  xmlStructuredErrorFunc previous_;
  void* previousContext_;
  std::string text_;
};

struct DocFree {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
struct DtdFree {
  void operator()(xmlDtd* dtd) const { xmlFreeDtd(dtd); }
};
struct ValidCtxtFree {
  void operator()(xmlValidCtxt* context) const { xmlFreeValidCtxt(context); }
};

bool Refuse(std::string& message, std::string text) {
  message = std::move(text);
  return false;
}

// The definition file that `systemID` names: its last path segment, when it is one of ours and
// the identifier climbs no folder.
std::string_view DtdFileOf(std::string_view systemID) {
  if (systemID.find("..") != std::string_view::npos || systemID.find('\\') != std::string_view::npos) return {};
  const std::string_view file = systemID.substr(systemID.rfind('/') + 1);
  const bool known =
      std::find(std::begin(kRequestDtdFiles), std::end(kRequestDtdFiles), file) != std::end(kRequestDtdFiles);
  return known ? file : std::string_view();
}

}  // namespace

bool ValidateRequest(std::string_view document, const std::string& dtdDirectory, std::string& message) {
  message.clear();
  if (document.size() > kMaxRequestDocumentBytes)
    return Refuse(message, "the document is larger than " + std::to_string(kMaxRequestDocumentBytes) + " bytes");

  // Once per process, before any parse: libxml2's global state is then ready for every thread.
  static const bool initialised = (xmlInitParser(), true);
  (void)initialised;
  FirstErrorCatcher errors;
  // No network and no external subset: the declaration is read, never followed.
  const std::unique_ptr<xmlDoc, DocFree> doc(
      xmlReadMemory(document.data(), int(document.size()), "request.xml", nullptr, XML_PARSE_NONET));
  if (!doc || errors.Caught())
    return Refuse(message, errors.Caught() ? errors.Text() : std::string("the document is not XML"));

  const xmlDtd* declaration = doc->intSubset;
  if (!declaration) return Refuse(message, "the document has no document type declaration");
  if (declaration->children) return Refuse(message, "the document type declaration has an internal subset");
  const char* systemID = reinterpret_cast<const char*>(declaration->SystemID);
  if (!systemID) return Refuse(message, "the document type declaration names no system identifier");
  const std::string_view file = DtdFileOf(systemID);
  if (file.empty())
    return Refuse(message, std::string("the document type declaration names an unknown definition: ") + systemID);

  const std::string path = dtdDirectory + "/" + std::string(file);
  const std::unique_ptr<xmlDtd, DtdFree> dtd(xmlParseDTD(nullptr, reinterpret_cast<const xmlChar*>(path.c_str())));
  if (!dtd || errors.Caught())
    return Refuse(message, "cannot read the document type definition " + path +
                               (errors.Caught() ? ": " + errors.Text() : std::string()));

  const std::unique_ptr<xmlValidCtxt, ValidCtxtFree> context(xmlNewValidCtxt());
  if (!context) return Refuse(message, "out of memory");
  const bool valid = xmlValidateDtd(context.get(), doc.get(), dtd.get()) == 1 && !errors.Caught();
  if (!valid) return Refuse(message, errors.Caught() ? errors.Text() : std::string("the document is not valid"));
  return true;
}

}  // namespace parcelon::tools
