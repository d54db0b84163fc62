// A server's metabase file in a folder of its own, written as a server writes it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/err.h"
#include "core/text.h"
#include "fakes/temp_folder.h"
#include "platform/linux/metabase/metabase_file.h"

namespace trelvin::test {

inline constexpr std::int32_t kDiskFullNumber = static_cast<std::int32_t>(0x80070070U);
inline constexpr std::int32_t kBusyNumber = static_cast<std::int32_t>(0x80070094U);
inline constexpr std::int32_t kNoSessionKeyNumber = static_cast<std::int32_t>(0x800CC81DU);

// A secret as a server writes it; nobody can read it elsewhere.
inline constexpr std::string_view kSecret =
    "49634462500000000600000040000000a0b1c2d35b7f00112233445566778899aabbccddeeff00112233445566778899aabbccdd"
    "eeff0011";

// Web sites 1, 10, 2 and 1876543210, an FTP site, pools, filters, templates: the whole variety of a server's
// file.
std::string sampleMetabase();

// A metabase with nothing but the given elements in the frame.
std::string metabaseOf(std::string_view elements);

// How a call failed; nothing when it went through.
template <typename Call>
std::optional<Failure> failureOf(Call&& call) {
  try {
    std::forward<Call>(call)();
    return std::nullopt;
  } catch (const Failure& failure) {
    return failure;
  }
}

template <typename Call>
std::int32_t numberOf(Call&& call) {
  const std::optional<Failure> failure = failureOf(std::forward<Call>(call));
  return failure ? failure->number() : 0;
}

// A list as texts, to compare and to print.
std::vector<std::string> textsOf(const Value& value);

std::vector<std::string> childNames(const NodeHandle& node);

class MetabaseFileTest : public ::testing::Test {
 protected:
  MetabaseFileTest() { writeFile(sampleMetabase()); }

  void writeFile(std::string_view text) { folder_.write("MetaBase.xml", text); }
  [[nodiscard]] std::string fileText() const { return textOf("MetaBase.xml"); }
  // The bytes of a file in the folder.
  [[nodiscard]] std::string textOf(std::string_view name) const;
  [[nodiscard]] std::string filePath() const { return (folder_ / "MetaBase.xml").string(); }
  [[nodiscard]] bool hasJournal() const { return folder_.has("MetaBase.xml.journal"); }
  // Names in the folder, in order.
  [[nodiscard]] std::vector<std::string> folderNames() const;

  // The provider on the file, for the server "Web1" in any case. Made at the first use.
  Metabase& metabase();
  // As at the end of a program.
  void closeMetabase() { metabase_.reset(); }
  [[nodiscard]] std::unique_ptr<Metabase> makeMetabase() const;

  NodeHandle bind(std::string_view below) { return metabase().getObject("IIS://Web1" + std::string(below)); }
  void putAndSet(std::string_view below, std::string_view property, const Value& value);

  TempFolder folder_;

 private:
  std::unique_ptr<Metabase> metabase_;
};

}  // namespace trelvin::test
