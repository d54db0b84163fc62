#include "platform/linux/file_text.h"

#include <gtest/gtest.h>

#include <string>

namespace trelvin {
namespace {

using namespace std::string_literals;

TEST(FileTextTest, TextThatIsUtf8PassesAsItIs) {
  for (const std::string& text : {""s, "plain"s, "ä€😀"s, "\0"s, "\xF4\x8F\xBF\xBF"s}) {
    EXPECT_EQ(utf8OrWindows1252(text), text);
  }
}

TEST(FileTextTest, BytesThatAreNoUtf8AreCharactersOfTheCodePage) {
  EXPECT_EQ(utf8OrWindows1252("\xE4\x80!"), "ä€!") << "a character that is no complete one";
  EXPECT_EQ(utf8OrWindows1252("caf\xE9"), "café");
  EXPECT_EQ(utf8OrWindows1252("\xC0\x80"), "À€") << "a longer form than needed";
  EXPECT_EQ(utf8OrWindows1252("\xE0\x80\x80"), "à€€");
  EXPECT_EQ(utf8OrWindows1252("\xED\xA0\x80"), "í\u00A0€") << "half of a surrogate pair";
  EXPECT_EQ(utf8OrWindows1252("\xF5\xF4\x90\x80\x80"), "õô\u0090€€") << "beyond the last character";
  EXPECT_EQ(utf8OrWindows1252("\x81"), "\u0081") << "the code page has none there";
}

TEST(FileTextTest, Utf16SurvivesTheWayThereAndBack) {
  for (const std::string& wide : {""s, "a\0\xE4\0\xAC\x20"s, "\x3D\xD8\x00\xDE"s, "\x3D\xD8"s,
                                  "\x00\xDE\x3D\xD8"s, "\x3D\xD8\x3D\xD8\x00\xDE"s, "\0\0"s, "\xFF\xFF"s}) {
    EXPECT_EQ(utf16FromUtf8(utf8FromUtf16(wide)), wide);
  }
  EXPECT_EQ(utf8FromUtf16("\x3D\xD8\x00\xDE"s), "😀");
}

TEST(FileTextTest, AnOddLastByteOfUtf16IsDropped) {
  EXPECT_EQ(utf8FromUtf16("a\0b"s), "a");
}

TEST(FileTextTest, AFileKeepsItsForm) {
  for (const std::string& bytes : {""s, "plain \xE4"s, "\xEF\xBB\xBFmarked"s, "\xFF\xFEw\0"s, "\xFF\xFE"s}) {
    EXPECT_EQ(FileText::fromBytes(bytes).toBytes(), bytes);
  }
  EXPECT_EQ(FileText::fromBytes("\xEF\xBB\xBFmarked").text, "marked");
  EXPECT_EQ(FileText::fromBytes("\xFF\xFEw\0"s).text, "w");
}

TEST(FileTextTest, TheFirstLineEndIsTheFilesOwn) {
  EXPECT_EQ(FileText::fromBytes("").lineEnd(), "\r\n");
  EXPECT_EQ(FileText::fromBytes("one line").lineEnd(), "\r\n");
  EXPECT_EQ(FileText::fromBytes("a\r\nb\n").lineEnd(), "\r\n");
  EXPECT_EQ(FileText::fromBytes("a\nb\r\n").lineEnd(), "\n");
  EXPECT_EQ(FileText::fromBytes("\n").lineEnd(), "\n");
}

}  // namespace
}  // namespace trelvin
