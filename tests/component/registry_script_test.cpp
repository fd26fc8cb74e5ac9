// The registry scripts of the two classes, read as registration reads them: exactly the keys and
// values of the classes' registration; text outside the scripts' form refused. On Windows, the
// keys written to (and removed from) the registry, and a failed write undone.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/RegistryScript.h"

namespace parcelon::test {
namespace {

const std::string kSources = PARCELON_SOURCE_DIR;

std::string ReadScript(const std::string& name) {
  std::ifstream in(kSources + "/component/" + name, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// One line per key: its path, its default value after " = " when it has one, and its removal
// mark ("[never removed]", "[rewritten]").
void List(const std::vector<RegistryKey>& keys, const std::string& parent,
          std::vector<std::string>& lines) {
  for (const RegistryKey& key : keys) {
    const std::string path = parent + "\\" + key.name;
    std::string line = path;
    if (key.hasValue) line += " = " + key.value;
    if (key.noRemove) line += " [never removed]";
    if (key.forceRemove) line += " [rewritten]";
    lines.push_back(line);
    List(key.subkeys, path, lines);
  }
}

std::vector<std::string> Listing(const std::string& script) {
  std::vector<RegistryKey> keys;
  EXPECT_EQ(S_OK, ReadRegistryScript(ReadScript(script), "C:\\Program Files\\parcelon.dll", keys));
  std::vector<std::string> lines;
  List(keys, "HKCR", lines);
  return lines;
}

// The class name key twice (the second time with CurVer), and the class key under CLSID with its
// description, class names, Programmable, the module as InprocServer32's only value and the
// type library.
std::vector<std::string> Expected(const std::string& name, const std::string& clsid) {
  const std::string progId = "Parcelon." + name;
  const std::string description = name + " Class";
  const std::string classKey = "HKCR\\CLSID\\" + clsid;
  return {
      "HKCR\\" + progId + " = " + description,
      "HKCR\\" + progId + "\\CLSID = " + clsid,
      "HKCR\\" + progId + " = " + description,
      "HKCR\\" + progId + "\\CLSID = " + clsid,
      "HKCR\\" + progId + "\\CurVer = " + progId,
      "HKCR\\CLSID [never removed]",
      classKey + " = " + description + " [rewritten]",
      classKey + "\\ProgID = " + progId,
      classKey + "\\VersionIndependentProgID = " + progId,
      classKey + "\\Programmable [rewritten]",
      classKey + "\\InprocServer32 = C:\\Program Files\\parcelon.dll",
      classKey + "\\TypeLib = {37A2FBF3-1795-4679-94A3-A153F1A8BB54}",
  };
}

TEST(RegistryScript, EachClassWritesExactlyItsKeys) {
  EXPECT_EQ(Expected("NA_Forms", "{37A2FC00-1795-4679-94A3-A153F1A8BB54}"),
            Listing("NA_Forms.rgs"));
  EXPECT_EQ(Expected("NA_Form", "{37A2FC02-1795-4679-94A3-A153F1A8BB54}"), Listing("NA_Form.rgs"));
}

TEST(RegistryScript, QuotesAndModulePath) {
  std::vector<RegistryKey> keys;
  ASSERT_EQ(S_OK, ReadRegistryScript("HKCR\n{\n  'A b' = s 'it''s %MODULE% and %MODULE%'\n}\n",
                                     "m.dll", keys));
  ASSERT_EQ(1u, keys.size());
  EXPECT_EQ("A b", keys[0].name);
  EXPECT_EQ("it's m.dll and m.dll", keys[0].value);
  EXPECT_TRUE(keys[0].subkeys.empty());
}

TEST(RegistryScript, RefusesTextOutsideTheScriptsForm) {
  const HRESULT malformed = HRESULT_FROM_WIN32(13L);
  for (const char* text : {
           "HKLM\n{\n}\n",                       // only the classes root
           "HKCR\n{\n  A = s 'x'\n",             // unclosed block
           "HKCR\n{\n  A = s 'x\n}\n",           // unclosed quote
           "HKCR\n{\n  A = d '1'\n}\n",          // only string values
           "HKCR\n{\n  A = s x\n}\n",            // unquoted value
           "HKCR\n{\n  val A = s 'x'\n}\n",      // no named values
           "HKCR\n{\n  NoRemove\n}\n",           // a mark without a key
           "HKCR\n{\n  {\n  }\n}\n",             // a block without a key
           "HKCR",                               // no block
           "HKCR\n{\n  ForceRemove ''\n}\n",      // an empty name: the root itself
           "HKCR\n{\n  'A\\B' = s 'x'\n}\n",     // a path, not one key's name
       }) {
    SCOPED_TRACE(text);
    std::vector<RegistryKey> keys(1);
    EXPECT_EQ(malformed, ReadRegistryScript(text, "m.dll", keys));
    EXPECT_TRUE(keys.empty());
  }
  std::string deep = "HKCR\n{\n";
  for (int i = 0; i < 40; ++i) deep += "A\n{\n";
  for (int i = 0; i < 41; ++i) deep += "}\n";
  std::vector<RegistryKey> keys;
  EXPECT_EQ(malformed, ReadRegistryScript(deep, "m.dll", keys));
}

#ifdef _WIN32

// The default value of HKCR\`path`, or "(absent)" when the key is not there.
std::wstring DefaultValue(const std::wstring& path) {
  wchar_t value[512];
  DWORD size = sizeof value;
  const LONG status =
      RegGetValueW(HKEY_CLASSES_ROOT, path.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, value, &size);
  if (status == ERROR_FILE_NOT_FOUND) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
      return L"(absent)";
    RegCloseKey(key);
    return L"(no value)";
  }
  return status == ERROR_SUCCESS ? value : L"(error)";
}

// In the build's own Wine prefix: keys written, rewritten and removed as the marks say.
TEST(RegistryScript, WritesAndRemovesKeys) {
  std::vector<RegistryKey> keys;
  ASSERT_EQ(S_OK, ReadRegistryScript("HKCR\n{\n  NoRemove ParcelonTest.Kept\n  {\n"
                                     "    ForceRemove Inner = s 'v'\n  }\n"
                                     "  ParcelonTest.Gone = s 'g'\n  {\n    Sub\n  }\n}\n",
                                     "", keys));
  HKEY stale = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CLASSES_ROOT, L"ParcelonTest.Kept\\Inner\\Stale", 0,
                                           nullptr, 0, KEY_WRITE, nullptr, &stale, nullptr));
  RegCloseKey(stale);
  std::vector<std::wstring> created;
  ASSERT_EQ(S_OK, WriteRegistryKeys(keys, created));
  EXPECT_EQ(L"v", DefaultValue(L"ParcelonTest.Kept\\Inner"));
  EXPECT_EQ(L"(absent)", DefaultValue(L"ParcelonTest.Kept\\Inner\\Stale")) << "rewritten";
  EXPECT_EQ(L"g", DefaultValue(L"ParcelonTest.Gone"));
  EXPECT_EQ(L"(no value)", DefaultValue(L"ParcelonTest.Gone\\Sub"));

  ASSERT_EQ(S_OK, DeleteRegistryKeys(keys));
  EXPECT_EQ(L"(no value)", DefaultValue(L"ParcelonTest.Kept"));
  EXPECT_EQ(L"(absent)", DefaultValue(L"ParcelonTest.Kept\\Inner"));
  EXPECT_EQ(L"(absent)", DefaultValue(L"ParcelonTest.Gone"));
  EXPECT_EQ(S_OK, DeleteRegistryKeys(keys)) << "nothing left to remove is no failure";
  RegDeleteTreeW(HKEY_CLASSES_ROOT, L"ParcelonTest.Kept");
}

// A key that cannot be written (a name over the registry's 255 characters) undoes the keys the
// same call created before it.
TEST(RegistryScript, AFailedWriteUndoesWhatItCreated) {
  std::vector<RegistryKey> keys;
  ASSERT_EQ(S_OK, ReadRegistryScript("HKCR\n{\n  ParcelonTest.First = s 'f'\n  {\n    Sub\n  }\n"
                                     "  ParcelonTest." + std::string(300, 'x') + "\n}\n",
                                     "", keys));
  std::vector<std::wstring> created;
  EXPECT_TRUE(FAILED(WriteRegistryKeys(keys, created)));
  EXPECT_TRUE(created.empty());
  EXPECT_EQ(L"(absent)", DefaultValue(L"ParcelonTest.First"));
}

#endif  // _WIN32

}  // namespace
}  // namespace parcelon::test
