// Text values of the registry.
#include "core/registry_strings.h"

#include <gtest/gtest.h>

#include "fakes/program_test.h"
#include "platform/platform.h"

namespace trelvin::test {
namespace {

constexpr auto kRoot = RegistryRoot::kLocalMachine;

std::string read(const char* name, const char* otherwise = "default") {
  return readRegString(kRoot, kRegistryKey, name, otherwise);
}

// Answers every question alike and keeps what is written.
class FixedRegistry : public Registry {
 public:
  QueryResult queryValue(RegistryRoot, std::string_view subKey, std::string_view valueName) override {
    asked.push_back(std::string(subKey) + "|" + std::string(valueName));
    return answer;
  }
  std::int32_t setValue(RegistryRoot, std::string_view subKey, std::string_view valueName, std::uint32_t type,
                        std::string_view data) override {
    written.push_back(std::string(subKey) + "|" + std::string(valueName) + "|" + std::to_string(type) + "|" +
                      std::string(data));
    return code;
  }

  QueryResult answer;
  std::int32_t code = 0;
  std::vector<std::string> asked;
  std::vector<std::string> written;
};

class RegistryStringsTest : public ProgramTest {
 protected:
  FixedRegistry& useFixedRegistry() {
    auto made = std::make_unique<FixedRegistry>();
    FixedRegistry& fixed = *made;
    platform().registry = std::move(made);
    return fixed;
  }
};

TEST_F(RegistryStringsTest, AMissingKeyGivesTheDefault) {
  EXPECT_EQ(read("ODBCDSN"), "default");
}

TEST_F(RegistryStringsTest, AMissingValueGivesTheDefault) {
  writeRegString(kRoot, kRegistryKey, "Other", "x");
  EXPECT_EQ(read("ODBCDSN"), "default");
}

TEST_F(RegistryStringsTest, AValueOfAnotherTypeGivesTheDefault) {
  platform().registry->setValue(kRoot, kRegistryKey, "ODBCDSN", kRegDword,
                                std::string("\x01\x00\x00\x00", 4));
  EXPECT_EQ(read("ODBCDSN"), "default");
  EXPECT_EQ(readProgramValue("ODBCDSN"), "");
}

TEST_F(RegistryStringsTest, AWrittenValueIsReadBack) {
  writeRegString(kRoot, kRegistryKey, "ODBCDSN", "My Sites; \xC3\x84");
  EXPECT_EQ(read("ODBCDSN"), "My Sites; \xC3\x84");
}

TEST_F(RegistryStringsTest, AnEmptyValueIsEmptyAndNotTheDefault) {
  writeRegString(kRoot, kRegistryKey, "ODBCDSN", "");
  EXPECT_EQ(read("ODBCDSN"), "");
}

TEST_F(RegistryStringsTest, NothingIsKeptBetweenTwoCalls) {
  writeProgramValue("ODBCDSN", "one");
  EXPECT_EQ(readProgramValue("ODBCDSN"), "one");
  platform().registry->setValue(kRoot, kRegistryKey, "ODBCDSN", kRegString, "two");
  EXPECT_EQ(readProgramValue("ODBCDSN"), "two");
}

TEST_F(RegistryStringsTest, WhatStandsBeforeTheFirstNulIsTheValue) {
  FixedRegistry& registry = useFixedRegistry();
  registry.answer = {0, kRegString, std::string("one\0two\0", 8)};
  EXPECT_EQ(read("ODBCDSN"), "one");
  registry.answer = {0, kRegString, std::string("\0two", 4)};
  EXPECT_EQ(read("ODBCDSN"), "");
}

TEST_F(RegistryStringsTest, WithoutANulTheWholeBufferIsTheValue) {
  useFixedRegistry().answer = {0, kRegString, " one "};
  EXPECT_EQ(read("ODBCDSN"), " one ");
}

TEST_F(RegistryStringsTest, ATextOfSizeNoughtIsEmpty) {
  useFixedRegistry().answer = {0, kRegString, ""};
  EXPECT_EQ(read("ODBCDSN"), "");
}

TEST_F(RegistryStringsTest, AFailedQueryGivesTheDefaultWhateverItBrought) {
  useFixedRegistry().answer = {5, kRegString, "secret"};
  EXPECT_EQ(read("ODBCDSN"), "default");
  EXPECT_TRUE(logLines().empty());
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(RegistryStringsTest, ATextIsWrittenAsOneWithoutItsNul) {
  FixedRegistry& registry = useFixedRegistry();
  writeRegString(kRoot, kRegistryKey, "ODBCUID", "me");
  EXPECT_EQ(registry.written, (std::vector<std::string>{"Software\\Morvane\\Trelvin|ODBCUID|1|me"}));
}

TEST_F(RegistryStringsTest, AWriteWithoutTheRightToItPassesInSilence) {
  FixedRegistry& registry = useFixedRegistry();
  registry.code = 5;
  writeProgramValue("ODBCUID", "me");
  EXPECT_EQ(registry.written.size(), 1U);
  EXPECT_TRUE(logLines().empty());
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(RegistryStringsTest, TheProgramsValuesLieBelowItsOwnKeyAndDefaultToNothing) {
  FixedRegistry& registry = useFixedRegistry();
  registry.answer.code = 2;
  EXPECT_EQ(readProgramValue("ProxyServer"), "");
  EXPECT_EQ(registry.asked, (std::vector<std::string>{"Software\\Morvane\\Trelvin|ProxyServer"}));
}

}  // namespace
}  // namespace trelvin::test
