#include "diagnostics/FeatureSettings.h"

#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "diagnostics/Logger.h"
#include "platform/ComBase.h"
#include "platform/Paths.h"

#ifdef _WIN32
#include <cstdlib>
#else
#include <sys/stat.h>
#include <time.h>

#include <ini.h>
#endif

namespace {

constexpr const char* kLogPrefix = "Parcelon:AmbitAccess::ReadSettingsFile(const FileIdentity&)";

// Keys are read eight bytes at a time: every read of a switch hashes and compares its key.
constexpr uint64_t kOnes = 0x0101010101010101ull;

// The eight bytes of `text` from `at` (fewer at the end, padded with zeros).
uint64_t Word(std::string_view text, size_t at) {
  uint64_t word = 0;
  if (text.size() - at >= 8) {
    std::memcpy(&word, text.data() + at, 8);
    return word;
  }
  for (size_t i = 0; at + i < text.size(); ++i)
    word |= uint64_t(static_cast<unsigned char>(text[at + i])) << (8 * i);
  return word;
}

// Lower-cases the ASCII capitals among eight bytes; other bytes stay as they are.
uint64_t FoldWord(uint64_t word) {
  const uint64_t low = word & (0x7F * kOnes);
  const uint64_t fromA = low + (0x80 - 'A') * kOnes;      // high bit set where byte >= 'A'
  const uint64_t pastZ = low + (0x80 - 'Z' - 1) * kOnes;  // high bit set where byte > 'Z'
  const uint64_t capitals = fromA & ~pastZ & ~word & (0x80 * kOnes);
  return word | capitals >> 2;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t at = 0; at < a.size(); at += 8)
    if (FoldWord(Word(a, at)) != FoldWord(Word(b, at))) return false;
  return true;
}

// Hash and equality of keys without regard to ASCII case; transparent, so that a lookup by
// string_view builds no string.
struct NoCaseHash {
  using is_transparent = void;
  size_t operator()(std::string_view text) const {
    uint64_t hash = text.size() * 0x9E3779B97F4A7C15ull;
    for (size_t at = 0; at < text.size(); at += 8) {
      hash = (hash ^ FoldWord(Word(text, at))) * 0xFF51AFD7ED558CCDull;
      hash ^= hash >> 32;
    }
    return static_cast<size_t>(hash);
  }
};
struct NoCaseEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const { return EqualsNoCase(a, b); }
};

// One value, with its readings as a switch and as a number made once at the load.
struct Setting {
  std::string text;
  bool flag = false;
  int number = 0;
};
using SettingMap = std::unordered_map<std::string, Setting, NoCaseHash, NoCaseEqual>;

struct Snapshot {
  SettingMap features;
  SettingMap urls;
};

// Decimal with an optional sign, fitting an int; 0 otherwise.
bool ParseNumber(std::string_view text, int& number) {
  if (text.size() > 1 && text[0] == '+' && text[1] >= '0' && text[1] <= '9') text.remove_prefix(1);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  number = value;
  return true;
}

Setting MakeSetting(std::string_view text) {
  Setting setting;
  setting.text = text;
  const bool isNumber = ParseNumber(text, setting.number);
  setting.flag = EqualsNoCase(text, "true") || EqualsNoCase(text, "yes") ||
                 EqualsNoCase(text, "on") || (isNumber && setting.number != 0);
  return setting;
}

void Store(Snapshot& snapshot, std::string_view section, std::string_view key,
           std::string_view value) {
  if (EqualsNoCase(section, AmbitAccess::kFeatureSection))
    snapshot.features.insert_or_assign(std::string(key), MakeSetting(value));
  else if (EqualsNoCase(section, AmbitAccess::kUrlSection))
    snapshot.urls.insert_or_assign(std::string(key), MakeSetting(value));
}

// What tells one state of the settings file from another.
struct FileIdentity {
  std::string path;
  bool exists = false;
  uint64_t size = 0;
  int64_t modified = 0;
  bool operator==(const FileIdentity&) const = default;
};

std::string SettingsPath() {
  std::string path = parcelon::GetEnv(AmbitAccess::kPathVariable);
  if (!path.empty()) return path;
  path = parcelon::UserConfigFolder();
  if (path.empty()) return path;
  parcelon::AppendSeparator(path);
  return path + AmbitAccess::kFileName;
}

FileIdentity CurrentIdentity() {
  FileIdentity identity;
  identity.path = SettingsPath();
  if (identity.path.empty()) return identity;
#ifdef _WIN32
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExA(identity.path.c_str(), GetFileExInfoStandard, &data) ||
      (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
    return identity;
  identity.size = uint64_t(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
  identity.modified =
      int64_t(uint64_t(data.ftLastWriteTime.dwHighDateTime) << 32 | data.ftLastWriteTime.dwLowDateTime);
#else
  struct stat status;
  if (stat(identity.path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return identity;
  identity.size = uint64_t(status.st_size);
  identity.modified = int64_t(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
#endif
  identity.exists = true;
  return identity;
}

// What went wrong at a load, logged once the new settings are in place.
struct LoadProblems {
  bool unreadable = false;
  bool tooLarge = false;
  bool malformed = false;
  bool longLines = false;
};

#ifdef _WIN32

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// Cuts an inline comment: a ';' after white space, as inih reads values on the other targets.
std::string_view CutComment(std::string_view value) {
  for (size_t i = 1; i < value.size(); ++i)
    if (value[i] == ';' && (value[i - 1] == ' ' || value[i - 1] == '\t')) return value.substr(0, i);
  return value;
}

void ReadSection(const char* path, const char* section, size_t fileSize, Snapshot& snapshot,
                 LoadProblems& problems) {
  // The section's entries, each "key=value" and a zero, cannot be longer than the file.
  std::vector<char> buffer(fileSize + 16);
  const DWORD length =
      GetPrivateProfileSectionA(section, buffer.data(), static_cast<DWORD>(buffer.size()), path);
  const char* const end = buffer.data() + length;
  for (const char* entry = buffer.data(); entry < end && *entry; entry += std::strlen(entry) + 1) {
    const std::string_view line(entry);
    if (line.size() > AmbitAccess::kMaxLineLength) {
      problems.longLines = true;
      continue;
    }
    if (line.front() == ';' || line.front() == '#') continue;
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
      problems.malformed = true;
      continue;
    }
    Store(snapshot, section, Trim(line.substr(0, equals)),
          Trim(CutComment(Trim(line.substr(equals + 1)))));
  }
}

void ReadSettingsFile(const FileIdentity& file, Snapshot& snapshot, LoadProblems& problems) {
  char fullPath[MAX_PATH];
  if (!_fullpath(fullPath, file.path.c_str(), sizeof fullPath)) {
    problems.unreadable = true;
    return;
  }
  // The profile functions cache the file they read last; a file rewritten within the same
  // modification time would be read from that cache.
  WritePrivateProfileStringA(nullptr, nullptr, nullptr, fullPath);
  ReadSection(fullPath, AmbitAccess::kFeatureSection, size_t(file.size), snapshot, problems);
  ReadSection(fullPath, AmbitAccess::kUrlSection, size_t(file.size), snapshot, problems);
}

#else

// The file's text, handed to inih line by line.
struct LineReader {
  const char* next;
  const char* end;
  bool longLines = false;
};

// inih's fgets-style reader. A line longer than kMaxLineLength, or than inih's buffer, is handed
// over as an empty line and noted, rather than split into pieces that would read as lines.
char* ReadLine(char* line, int size, void* stream) {
  auto& reader = *static_cast<LineReader*>(stream);
  if (reader.next == reader.end || size < 2) return nullptr;
  const auto* feed = static_cast<const char*>(std::memchr(reader.next, '\n', size_t(reader.end - reader.next)));
  const char* const stop = feed ? feed + 1 : reader.end;
  const size_t length = size_t(stop - reader.next);
  size_t content = length;
  if (content > 0 && reader.next[content - 1] == '\n') --content;
  if (content > 0 && reader.next[content - 1] == '\r') --content;
  if (content > AmbitAccess::kMaxLineLength || length >= size_t(size)) {
    reader.longLines = true;
    std::strcpy(line, "\n");
  } else {
    std::memcpy(line, reader.next, length);
    line[length] = '\0';
  }
  reader.next = stop;
  return line;
}

int OnEntry(void* user, const char* section, const char* key, const char* value) {
  Store(*static_cast<Snapshot*>(user), section ? section : "", key ? key : "", value ? value : "");
  return 1;
}

void ReadSettingsFile(const FileIdentity& file, Snapshot& snapshot, LoadProblems& problems) {
  std::FILE* stream = std::fopen(file.path.c_str(), "rb");
  if (!stream) {
    problems.unreadable = true;
    return;
  }
  // The size was looked at and capped before; a file that changes meanwhile is read again at
  // the next check, since its identity will differ.
  std::string text(size_t(file.size), '\0');
  text.resize(std::fread(text.data(), 1, text.size(), stream));
  const bool failed = std::ferror(stream) != 0;
  std::fclose(stream);
  if (failed) {
    problems.unreadable = true;
    return;
  }
  LineReader reader{text.data(), text.data() + text.size()};
  if (ini_parse_stream(ReadLine, &reader, OnEntry, &snapshot) != 0) problems.malformed = true;
  problems.longLines = reader.longLines;
}

#endif

void LogProblems(const std::string& path, const LoadProblems& problems) {
  const auto log = [&path](const std::string& what) {
    const std::string message = "The settings file \"" + path + "\" " + what;
    CNALogger::Log(kLogPrefix, message.c_str(), E_FAIL);
  };
  if (problems.unreadable) log("cannot be read; every setting reads off.");
  if (problems.tooLarge)
    log("is larger than " + std::to_string(AmbitAccess::kMaxFileSize) +
        " bytes; every setting reads off.");
  if (problems.malformed) log("has malformed lines; they are ignored.");
  if (problems.longLines)
    log("has lines longer than " + std::to_string(AmbitAccess::kMaxLineLength) +
        " characters; they are ignored.");
}

// A cheap monotonic clock in milliseconds: its resolution (a few milliseconds) is ample for the
// check interval, and it costs no system call.
int64_t NowMs() {
#ifdef _WIN32
  return int64_t(GetTickCount64());
#else
  timespec now;
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
#endif
}

// The settings in force and the identity of the file they came from. Readers share the
// snapshot under a shared lock; a reload parses outside that lock and only swaps the pointer.
class SettingsStore {
 public:
  static SettingsStore& Instance() {
    static SettingsStore store;
    return store;
  }

  template <class Read>
  auto Find(SettingMap Snapshot::*map, const char* key, Read read) {
    if (NowMs() >= nextCheck_.load(std::memory_order_acquire)) Refresh(false);
    std::shared_lock lock(snapshotMutex_);
    const SettingMap& settings = (*snapshot_).*map;
    const auto found = key ? settings.find(std::string_view(key)) : settings.end();
    return read(found == settings.end() ? nullptr : &found->second);
  }

  void Refresh(bool force) {
    LoadProblems problems;
    std::string path;
    {
      std::lock_guard guard(reloadMutex_);
      // Another reader may have checked while this one waited.
      if (!force && NowMs() < nextCheck_.load(std::memory_order_acquire)) return;
      FileIdentity identity = CurrentIdentity();
      if (force || identity != identity_) {
        auto fresh = std::make_unique<Snapshot>();
        if (identity.exists && identity.size > AmbitAccess::kMaxFileSize) {
          problems.tooLarge = true;
        } else if (identity.exists) {
          try {
            ReadSettingsFile(identity, *fresh, problems);
          } catch (const std::bad_alloc&) {
            *fresh = Snapshot();
            problems.unreadable = true;
          }
        }
        {
          std::unique_lock lock(snapshotMutex_);
          snapshot_.swap(fresh);
        }
        generation_.fetch_add(1, std::memory_order_release);
        identity_ = std::move(identity);
        path = identity_.path;
      }
      nextCheck_.store(NowMs() + int64_t(AmbitAccess::kCheckIntervalSeconds) * 1000,
                       std::memory_order_release);
    }
    // Logged after the check time has moved on: the logger reads a switch itself.
    LogProblems(path, problems);
  }

  void CheckAtNextRead() { nextCheck_.store(INT64_MIN, std::memory_order_release); }

  struct Value {
    bool flag = false;
    int number = 0;
  };

  // Switches are asked for at every use (the XML writer once per line), nearly always by the same
  // few literal keys: a small per-thread cache answers those without a lock or a hash while the
  // snapshot it was read from is current.
  Value FindFeature(const char* key) {
    if (NowMs() >= nextCheck_.load(std::memory_order_acquire)) Refresh(false);
    const uint64_t generation = generation_.load(std::memory_order_acquire);
    thread_local CachedValue cache[kCachedKeys];
    thread_local unsigned nextSlot = 0;
    for (const CachedValue& entry : cache) {
      if (entry.key == key && entry.generation == generation && std::strcmp(entry.text, key) == 0)
        return entry.value;
    }
    const Value value = Find(&Snapshot::features, key, [](const Setting* s) {
      return s ? Value{s->flag, s->number} : Value{};
    });
    // Tagged with the generation read before the lookup: a reload in between only makes the entry
    // look stale, never wrongly current.
    if (key && std::strlen(key) < sizeof cache[0].text) {
      CachedValue& entry = cache[nextSlot++ % kCachedKeys];
      entry.key = key;
      std::strcpy(entry.text, key);
      entry.generation = generation;
      entry.value = value;
    }
    return value;
  }

 private:
  SettingsStore() = default;

  std::mutex reloadMutex_;
  std::shared_mutex snapshotMutex_;
  std::unique_ptr<Snapshot> snapshot_ = std::make_unique<Snapshot>();
  FileIdentity identity_;
  std::atomic<int64_t> nextCheck_{INT64_MIN};
  std::atomic<uint64_t> generation_{1};

  static constexpr unsigned kCachedKeys = 8;
  struct CachedValue {
    const char* key = nullptr;  // the caller's pointer, then its text to confirm the match
    char text[48] = {};
    uint64_t generation = 0;
    Value value;
  };
};

}  // namespace

namespace {
// The exact spelling first: it is what every caller passes, and the cheapest test.
bool IsFeatureSection(const char* section) {
  return section && (std::strcmp(section, AmbitAccess::kFeatureSection) == 0 ||
                     EqualsNoCase(section, AmbitAccess::kFeatureSection));
}
}  // namespace

bool AmbitAccess::GetFeatureParamAsBool(const char* section, const char* key, void*) {
  if (!IsFeatureSection(section)) return false;
  return SettingsStore::Instance().FindFeature(key).flag;
}

int AmbitAccess::GetFeatureParamAsInt(const char* section, const char* key, void*) {
  if (!IsFeatureSection(section)) return 0;
  return SettingsStore::Instance().FindFeature(key).number;
}

std::string AmbitAccess::GetURLAddress(const char* key) {
  return SettingsStore::Instance().Find(
      &Snapshot::urls, key, [](const Setting* s) { return s ? s->text : std::string(); });
}

void AmbitAccess::Reload() { SettingsStore::Instance().Refresh(true); }

void AmbitAccess::CheckAtNextRead() { SettingsStore::Instance().CheckAtNextRead(); }
