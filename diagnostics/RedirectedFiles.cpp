#include "diagnostics/RedirectedFiles.h"

#include <cstring>

#include "platform/Bstr.h"
#include "platform/CodePage.h"

namespace parcelon {

namespace {
bool ToBstr(const char* text, Bstr& out) {
  return SUCCEEDED(AnsiToBstr(text, std::strlen(text), out.Out()));
}
}  // namespace

RedirectedFiles::RedirectedFiles()
    : service_(host::CreateHostService<IFileRedirectionService>(host::CLSID_FileRedirectionService)) {}

bool RedirectedFiles::Map(const char* path, std::string& mapped) const {
  mapped.clear();
  if (!service_) {
    mapped = path;
    return true;
  }
  Bstr in;
  Bstr out;
  if (!ToBstr(path, in) || FAILED(service_->MapPath(in.Get(), out.Out()))) return false;
  return WideToAnsi(out.Get(), out.Length(), mapped) && !mapped.empty();
}

FILE* RedirectedFiles::Open(const char* path, const char* mode) const {
  std::string mapped;
  if (!Map(path, mapped)) return nullptr;
  return std::fopen(mapped.c_str(), mode);
}

bool RedirectedFiles::Rename(const char* from, const char* to) const {
  if (!service_) return std::rename(from, to) == 0;
  Bstr source;
  Bstr target;
  return ToBstr(from, source) && ToBstr(to, target) &&
         SUCCEEDED(service_->Rename(source.Get(), target.Get()));
}

bool RedirectedFiles::Remove(const char* path) const {
  if (!service_) return std::remove(path) == 0;
  Bstr target;
  return ToBstr(path, target) && SUCCEEDED(service_->Remove(target.Get()));
}

FILE* OpenRedirectedFile(const char* path, const char* mode) {
  return RedirectedFiles().Open(path, mode);
}

}  // namespace parcelon
