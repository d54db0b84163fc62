#include "platform/linux/registry_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "fakes/temp_folder.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;

constexpr RegistryRoot kMachine = RegistryRoot::kLocalMachine;
constexpr const char* kKey = "Software\\Morvane\\Trelvin";
constexpr const char* kHead =
    "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Morvane\\Trelvin]\r\n";

class RegistryFileTest : public testing::Test {
 protected:
  void fileHolds(std::string_view bytes) const { folder_.write("Registry.reg", bytes); }
  // The program's key with these lines.
  void keyHolds(std::string_view lines) const { fileHolds(kHead + std::string(lines)); }
  [[nodiscard]] std::string file() const { return folder_.read("Registry.reg"); }

  Registry::QueryResult query(std::string_view name) { return registry_->queryValue(kMachine, kKey, name); }
  std::int32_t set(std::string_view name, std::string_view text) {
    return registry_->setValue(kMachine, kKey, name, kRegString, text);
  }
  // The text of a value, or what stands against it.
  std::string text(std::string_view name) {
    const Registry::QueryResult result = query(name);
    if (result.code != 0) return "code " + std::to_string(result.code);
    if (result.type != kRegString) return "type " + std::to_string(result.type);
    return result.data;
  }
  [[nodiscard]] fs::perms mode() const { return fs::status(folder_ / "Registry.reg").permissions(); }

  TempFolder folder_;
  std::unique_ptr<Registry> registry_ = makeRegistryFile((folder_ / "Registry.reg").string());
};

TEST_F(RegistryFileTest, AMissingFileKeyOrValueIsNotFound) {
  EXPECT_EQ(text("ODBCDSN"), "code 2");
  keyHolds("\"ODBCUID\"=\"me\"\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Other]\r\n\"ODBCDSN\"=\"store\"\r\n");
  EXPECT_EQ(text("ODBCDSN"), "code 2");
  EXPECT_EQ(registry_->queryValue(kMachine, "Software\\None", "ODBCUID").code, 2);
}

TEST_F(RegistryFileTest, ATextIsReadWithItsEscapes) {
  keyHolds("\"ODBCPWD\"=\"a\\\\b\\\"c\\\\\"\r\n\"Empty\"=\"\"\r\n");
  EXPECT_EQ(text("ODBCPWD"), "a\\b\"c\\");
  const Registry::QueryResult empty = query("Empty");
  EXPECT_EQ(empty.code, 0);
  EXPECT_EQ(empty.type, kRegString);
  EXPECT_EQ(empty.data, "");
}

TEST_F(RegistryFileTest, KeysAndNamesMatchInAnyCase) {
  fileHolds(
      "Windows Registry Editor Version "
      "5.00\n[hkey_local_machine\\SOFTWARE\\morvane\\TRELVIN]\n\"odbcdsn\"=\"s\"\n");
  EXPECT_EQ(text("ODBCDSN"), "s");
}

TEST_F(RegistryFileTest, ADwordHasItsTypeAndItsFourBytes) {
  keyHolds("\"ODBCDSN\"=dword:0000002a\r\n");
  const Registry::QueryResult result = query("ODBCDSN");
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.type, kRegDword);
  EXPECT_EQ(result.data, std::string("\x2A\0\0\0", 4));
}

TEST_F(RegistryFileTest, BytesMayBeContinuedOverLines) {
  keyHolds("\"Bytes\"=hex:01,02,\\\r\n  03,\\\r\n  ff\r\n\"After\"=\"x\"\r\n");
  const Registry::QueryResult result = query("Bytes");
  EXPECT_EQ(result.type, 3U);
  EXPECT_EQ(result.data, "\x01\x02\x03\xFF");
  EXPECT_EQ(text("After"), "x");
}

TEST_F(RegistryFileTest, TextsInHexFormComeBackAsText) {
  keyHolds("\"Path\"=hex(2):25,00,e4,00,25,00,00,00\r\n\"Text\"=hex(1):41,00,00,00\r\n\"None\"=hex:\r\n");
  const Registry::QueryResult result = query("Path");
  EXPECT_EQ(result.type, 2U);
  EXPECT_EQ(result.data, "%ä%");
  EXPECT_EQ(text("Text"), "A");
  EXPECT_EQ(query("None").data, "");
}

TEST_F(RegistryFileTest, TheOlderFormHasTextsOfOneByteForEachCharacter) {
  fileHolds(
      "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Morvane\\Trelvin]\r\n\"P\"=hex(2):25,e4,25,00\r\n\"T\"="
      "\"\xE4\"\r\n");
  EXPECT_EQ(query("P").data, "%ä%");
  EXPECT_EQ(text("T"), "ä");
}

TEST_F(RegistryFileTest, TheDefaultValueHasTheEmptyName) {
  keyHolds("@=\"default\"\r\n");
  EXPECT_EQ(text(""), "default");
  EXPECT_EQ(set("", "new"), 0);
  EXPECT_EQ(file(), kHead + std::string("@=\"new\"\r\n"));
}

TEST_F(RegistryFileTest, AFileInUtf16IsReadAndStaysOne) {
  std::string wide = "\xFF\xFE";
  for (const char letter : kHead + std::string("\"ODBCUID\"=\"me\"\r\n")) wide += {letter, '\0'};
  fileHolds(wide);
  EXPECT_EQ(text("ODBCUID"), "me");
  EXPECT_EQ(set("ODBCUID", "ä"), 0);
  EXPECT_EQ(text("ODBCUID"), "ä");
  EXPECT_EQ(file().substr(0, 2), "\xFF\xFE");
  EXPECT_NE(file().find(std::string("\"\0\xE4\0\"\0", 6)), std::string::npos);
}

TEST_F(RegistryFileTest, ALaterValueReplacesAnEarlierOne) {
  keyHolds(
      "\"x\"=\"1\"\r\n\"X\"=\"2\"\r\n[HKEY_LOCAL_MACHINE\\Software\\MORVANE\\Trelvin]\r\n\"x\"=\"3\"\r\n");
  EXPECT_EQ(text("x"), "3");
  EXPECT_EQ(set("x", "4"), 0);
  EXPECT_EQ(text("x"), "4");
}

TEST_F(RegistryFileTest, ADeletionTakesTheValueOut) {
  keyHolds("\"x\"=\"1\"\r\n\"y\"=\"2\"\r\n\"x\"=-\r\n");
  EXPECT_EQ(text("x"), "code 2");
  EXPECT_EQ(text("y"), "2");
  EXPECT_EQ(set("x", "3"), 0);
  EXPECT_EQ(text("x"), "3");
}

TEST_F(RegistryFileTest, ADeletedKeyTakesAllBelowItOut) {
  keyHolds("\"x\"=\"1\"\r\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Morvane]\r\n\"x\"=\"2\"\r\n");
  EXPECT_EQ(text("x"), "code 2");
  EXPECT_EQ(set("x", "3"), 0);
  EXPECT_EQ(text("x"), "3");
}

TEST_F(RegistryFileTest, TheDeletionOfAKeyWithALongerNameIsAnother) {
  keyHolds(
      "\"x\"=\"1\"\r\n[-HKEY_LOCAL_MACHINE\\Software\\Morv]\r\n[-HKEY_LOCAL_"
      "MACHINE\\Software\\Morvane\\Trelvin\\Sub]\r\n");
  EXPECT_EQ(text("x"), "1");
}

TEST_F(RegistryFileTest, AValueThatMakesNoSenseIsInvalidAndHidesNoOther) {
  keyHolds(
      "\"a\"=\"open\r\n\"b\"=dword:xyz\r\n\"c\"=dword:\r\n\"d\"=hex:1g\r\n\"e\"=hex(2:00\r\n\"f\"="
      "nonsense\\\r\n\"g\"=\r\n\"good\"=\"x\"\r\n");
  for (const char* const name : {"a", "b", "c", "d", "e", "f", "g"}) EXPECT_EQ(text(name), "code 13") << name;
  EXPECT_EQ(text("good"), "x");
  EXPECT_EQ(set("a", "mended"), 0);
  EXPECT_EQ(text("a"), "mended");
  EXPECT_EQ(text("good"), "x");
}

TEST_F(RegistryFileTest, ATextMayHoldLineEndsAsTheEditorWritesThem) {
  keyHolds("\"x\"=\"one\r\n[HKEY_LOCAL_MACHINE\\\\Other]\r\ntwo\"\r\n\"y\"=\"2\"\r\n");
  EXPECT_EQ(text("x"), "one\r\n[HKEY_LOCAL_MACHINE\\Other]\r\ntwo");
  EXPECT_EQ(text("y"), "2");
}

TEST_F(RegistryFileTest, TheFirstWriteMakesTheFile) {
  EXPECT_EQ(set("ProxyServer", "proxy:8080"), 0);
  EXPECT_EQ(file(), kHead + std::string("\"ProxyServer\"=\"proxy:8080\"\r\n"));
}

TEST_F(RegistryFileTest, AnEmptyFileCountsAsNone) {
  fileHolds("");
  EXPECT_EQ(set("ProxyServer", "p"), 0);
  EXPECT_EQ(file(), kHead + std::string("\"ProxyServer\"=\"p\"\r\n"));
}

TEST_F(RegistryFileTest, EveryTextComesBackAsItWasWritten) {
  for (const std::string& value : {std::string(), std::string("a;b]c=\"d\\"), std::string("ä€😀"),
                                   std::string("one\r\n[two]\r\n\"x\"=\"y\""), std::string("a\0b", 3),
                                   std::string("\\"), std::string("\""), std::string(5000, 'x')}) {
    EXPECT_EQ(set("ODBCPWD", value), 0);
    EXPECT_EQ(text("ODBCPWD"), value);
    EXPECT_EQ(set("Other", "x"), 0);
    EXPECT_EQ(text("ODBCPWD"), value);
  }
}

TEST_F(RegistryFileTest, ANulThatEndsATextIsNotStored) {
  EXPECT_EQ(set("x", std::string_view("text\0", 5)), 0);
  EXPECT_EQ(text("x"), "text");
}

TEST_F(RegistryFileTest, OtherTypesComeBackAsTheyWereWritten) {
  EXPECT_EQ(registry_->setValue(kMachine, kKey, "n", kRegDword, std::string_view("\x01\x02\x03\xFE", 4)), 0);
  EXPECT_EQ(query("n").type, kRegDword);
  EXPECT_EQ(query("n").data, "\x01\x02\x03\xFE");
  EXPECT_NE(file().find("dword:fe030201"), std::string::npos);
  EXPECT_EQ(registry_->setValue(kMachine, kKey, "b", 3, "\xFF"), 0);
  EXPECT_EQ(query("b").type, 3U);
  EXPECT_EQ(query("b").data, "\xFF");
  EXPECT_EQ(registry_->setValue(kMachine, kKey, "e", 2, "%ä%"), 0);
  EXPECT_EQ(query("e").type, 2U);
  EXPECT_EQ(query("e").data, "%ä%");
  EXPECT_EQ(registry_->setValue(kMachine, kKey, "q", 11, "12345678"), 0);
  EXPECT_EQ(query("q").type, 11U);
  EXPECT_EQ(query("q").data, "12345678");
  EXPECT_EQ(registry_->setValue(kMachine, kKey, "short", kRegDword, "12"), 0);
  EXPECT_EQ(query("short").type, kRegDword);
  EXPECT_EQ(query("short").data, "12");
}

TEST_F(RegistryFileTest, AWriteKeepsEverythingElse) {
  const std::string other =
      "\r\n; a comment\r\n[HKEY_LOCAL_MACHINE\\Software\\Other]\r\n\"x\"=hex(b):01,\\\r\n  02\r\nno registry "
      "line\r\n";
  keyHolds("\"ODBCDSN\"=\"old\"\r\n\"Custom\"=dword:00000001\r\n" + other);
  EXPECT_EQ(set("odbcdsn", "new"), 0);
  EXPECT_EQ(set("ODBCUID", "me"), 0);
  EXPECT_EQ(file(),
            kHead +
                std::string("\"ODBCDSN\"=\"new\"\r\n\"Custom\"=dword:00000001\r\n\"ODBCUID\"=\"me\"\r\n") +
                other);
}

TEST_F(RegistryFileTest, AWriteKeepsBytesThatAreNoUtf8) {
  keyHolds("\"x\"=\"\xE4\"\r\n\"B\xFC\"=\"1\"\r\n");
  EXPECT_EQ(text("x"), "ä");
  EXPECT_EQ(text("Bü"), "1");
  EXPECT_EQ(set("y", "2"), 0);
  EXPECT_EQ(file(), kHead + std::string("\"x\"=\"\xE4\"\r\n\"B\xFC\"=\"1\"\r\n\"y\"=\"2\"\r\n"));
}

TEST_F(RegistryFileTest, ANewKeyStandsAtTheEndBehindABlankLine) {
  fileHolds("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A]\n\"x\"=\"1\"");
  EXPECT_EQ(set("y", "2"), 0);
  EXPECT_EQ(file(),
            "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A]\n\"x\"=\"1\"\n"
            "\n[HKEY_LOCAL_MACHINE\\Software\\Morvane\\Trelvin]\n\"y\"=\"2\"\n");
}

TEST_F(RegistryFileTest, TheFileIsReadableByItsOwnerOnly) {
  const mode_t before = ::umask(0);
  EXPECT_EQ(set("ODBCPWD", "secret"), 0);
  ::umask(before);
  EXPECT_EQ(mode(), fs::perms(0600));
}

TEST_F(RegistryFileTest, AFileThatOthersCouldReadIsTightenedOnWrite) {
  keyHolds("");
  fs::permissions(folder_ / "Registry.reg", fs::perms(0664));
  EXPECT_EQ(set("ODBCPWD", "secret"), 0);
  EXPECT_EQ(mode(), fs::perms(0600));
}

TEST_F(RegistryFileTest, AReadOnlyFileIsNotWritten) {
  keyHolds("\"x\"=\"1\"\r\n");
  fs::permissions(folder_ / "Registry.reg", fs::perms(0400));
  EXPECT_EQ(set("x", "2"), 5);
  EXPECT_EQ(text("x"), "1");
}

TEST_F(RegistryFileTest, ANameThatWouldBreakALineIsRefused) {
  keyHolds("\"x\"=\"1\"\r\n");
  const std::string before = file();
  EXPECT_EQ(set("a\n", "1"), 87);
  EXPECT_EQ(set(std::string_view("a\0", 2), "1"), 87);
  EXPECT_EQ(registry_->setValue(kMachine, "Software\r\n[x", "a", kRegString, "1"), 87);
  EXPECT_EQ(file(), before);
}

TEST_F(RegistryFileTest, ANameMayHoldQuotesAndBackslashes) {
  EXPECT_EQ(set("a\"b\\c=d", "1"), 0);
  EXPECT_EQ(text("A\"B\\C=D"), "1");
}

TEST_F(RegistryFileTest, AKeysNameMayHoldBrackets) {
  EXPECT_EQ(registry_->setValue(kMachine, "Software\\a]b[c]", "x", kRegString, "1"), 0);
  EXPECT_EQ(registry_->queryValue(kMachine, "software\\A]B[C]", "x").data, "1");
}

TEST_F(RegistryFileTest, FailuresOfTheSystemAreCodes) {
  folder_.makeFolder("Registry.reg");
  EXPECT_EQ(query("x").code, 1016);
  EXPECT_NE(set("x", "1"), 0);
  folder_.write("plain", "x");
  const auto below = makeRegistryFile((folder_ / "plain/Registry.reg").string());
  EXPECT_EQ(below->queryValue(kMachine, kKey, "x").code, 1016);
  EXPECT_NE(below->setValue(kMachine, kKey, "x", kRegString, "1"), 0);
  const auto nowhere = makeRegistryFile((folder_ / "missing/Registry.reg").string());
  EXPECT_EQ(nowhere->queryValue(kMachine, kKey, "x").code, 2);
  EXPECT_NE(nowhere->setValue(kMachine, kKey, "x", kRegString, "1"), 0);
}

TEST_F(RegistryFileTest, ABinaryFileIsReadWithoutHarm) {
  std::string bytes = kHead;
  unsigned state = 54321;
  for (int i = 0; i < 200'000; ++i) {
    state = state * 1664525U + 1013904223U;
    bytes += static_cast<char>(state >> 24U);
    if (state % 50 == 0) bytes += "\n\"x\"=hex:";
  }
  fileHolds(bytes);
  EXPECT_NE(query("missing").code, 0);
  EXPECT_EQ(set("mine", "1"), 0);
  EXPECT_EQ(text("mine"), "1");
}

}  // namespace
}  // namespace trelvin
