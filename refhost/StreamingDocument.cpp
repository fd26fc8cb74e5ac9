// The parser's events of a fixture: the document's values, and the records handed out one by one.
#include "refhost/StreamingDocument.h"

#include <algorithm>
#include <utility>

#include "refhost/FixtureScan.h"

namespace parcelon::refhost {

using json = nlohmann::json;

json StreamingDocument::Parse(std::string_view text) {
  if (!json::sax_parse(text, this)) {
    // The library's message starts "[json.exception.parse_error.101] parse error at line 1,
    // column 2: "; the position is given again in the fixture's own form.
    const size_t column = error_.find("column ");
    const size_t colon = column == std::string::npos ? column : error_.find(": ", column);
    if (colon != std::string::npos) error_.erase(0, colon + 2);
    FailAtOffset(context_.file, text, errorByte_ == 0 ? 0 : errorByte_ - 1, error_);
  }
  return std::move(root_);
}

void StreamingDocument::StartSection() {
  const auto found = std::find(sections_.begin(), sections_.end(), key_);
  section_ = found == sections_.end() ? kNoSection : size_t(found - sections_.begin());
  if (section_ == kNoSection) return;
  if (seen_[section_])
    FixtureReader::FailAt(context_, "/" + key_, "a second section of this name");
  seen_[section_] = true;
  index_ = 0;
}

json& StreamingDocument::Insert(json&& value) {
  if (stack_.empty()) return root_ = std::move(value);
  json& parent = *stack_.back();
  if (parent.is_array()) {
    auto& elements = parent.get_ref<json::array_t&>();
    elements.push_back(std::move(value));
    return elements.back();
  }
  // Of two equal keys the last wins, as in a parsed document.
  return parent.get_ref<json::object_t&>()[key_] = std::move(value);
}

bool StreamingDocument::End() {
  stack_.pop_back();
  if (stack_.size() == 1) section_ = kNoSection;  // a member of the document ends
  Completed();
  return true;
}

void StreamingDocument::Completed() {
  if (section_ == kNoSection || stack_.size() != 2) return;
  auto& elements = stack_.back()->get_ref<json::array_t&>();
  onRecord_(section_, index_++, elements.back());
  elements.pop_back();
}

}  // namespace parcelon::refhost
