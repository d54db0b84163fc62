#include "platform/registry.h"

#include <gtest/gtest.h>

#include "contract/facilities.h"

namespace trelvin::test {
namespace {

constexpr RegistryRoot kRoot = RegistryRoot::kLocalMachine;
constexpr const char* kKey = "Software\\Trelvin Tests\\Deep";

class RegistryContract : public testing::Test {
 protected:
  // A stored text may end in a NUL or may lack it.
  std::string text(std::string_view name) {
    const Registry::QueryResult result = registry_->queryValue(kRoot, kKey, name);
    EXPECT_EQ(result.code, 0) << name;
    EXPECT_EQ(result.type, kRegString) << name;
    return result.data.substr(0, result.data.find('\0'));
  }
  std::int32_t put(std::string_view name, std::string_view value) {
    return registry_->setValue(kRoot, kKey, name, kRegString, value);
  }

  TempFolder folder_;
  std::unique_ptr<Registry> registry_ = systemRegistry(folder_);
};

TEST_F(RegistryContract, AMissingKeyOrValueIsNotFound) {
  EXPECT_EQ(registry_->queryValue(kRoot, kKey, "x").code, 2);
  ASSERT_EQ(put("x", "1"), 0);
  EXPECT_EQ(registry_->queryValue(kRoot, kKey, "y").code, 2);
}

TEST_F(RegistryContract, ATextComesBackAsItWasWritten) {
  for (const char* value : {"plain", "", "with \"quotes\" and \\ backslashes", "Grüße 日本"}) {
    ASSERT_EQ(put("x", value), 0);
    EXPECT_EQ(text("x"), value);
  }
}

TEST_F(RegistryContract, ANulThatEndsATextIsNotPartOfIt) {
  ASSERT_EQ(put("x", std::string_view("one\0", 4)), 0);
  EXPECT_EQ(text("x"), "one");
}

TEST_F(RegistryContract, KeysAndNamesMatchInAnyCase) {
  ASSERT_EQ(put("ProxyServer", "proxy:8080"), 0);
  EXPECT_EQ(registry_->queryValue(kRoot, "SOFTWARE\\trelvin tests\\DEEP", "proxyserver").code, 0);
}

TEST_F(RegistryContract, ANumberKeepsItsTypeAndItsFourBytes) {
  ASSERT_EQ(registry_->setValue(kRoot, kKey, "n", kRegDword, std::string_view("\x01\x02\x03\x04", 4)), 0);
  const Registry::QueryResult result = registry_->queryValue(kRoot, kKey, "n");
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.type, kRegDword);
  EXPECT_EQ(result.data, std::string("\x01\x02\x03\x04", 4));
}

TEST_F(RegistryContract, ALaterWriteReplacesAnEarlierOne) {
  put("x", "a longer one");
  put("x", "short");
  EXPECT_EQ(text("x"), "short");
}

}  // namespace
}  // namespace trelvin::test
