#include "platform/linux/metabase/fold.h"

#include <gtest/gtest.h>

#include <string>

namespace trelvin::test {
namespace {

TEST(AFoldedHash, IsTheSameInEitherCaseWhateverTheLength) {
  const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789/_-";
  for (std::size_t length = 0; length <= letters.size(); ++length) {
    const std::string text = letters.substr(0, length);
    EXPECT_EQ(foldedHash(text), foldedHash(upperCase(text))) << text;
  }
}

TEST(AFoldedHash, TellsTheNeighboursOfTheLettersApart) {
  EXPECT_NE(foldedHash("@"), foldedHash("`"));
  EXPECT_NE(foldedHash("["), foldedHash("{"));
  EXPECT_NE(foldedHash("path[longer"), foldedHash("path{longer"));
}

TEST(AFoldedHash, TellsTextsApartThatDifferAnywhere) {
  EXPECT_NE(foldedHash("/LM/W3SVC/1/ROOT"), foldedHash("/LM/W3SVC/2/ROOT"));
  EXPECT_NE(foldedHash("/LM/W3SVC/1"), foldedHash("/LM/W3SVC/11"));
  EXPECT_NE(foldedHash("a"), foldedHash(std::string("a\0", 2)));
}

TEST(AFoldedHash, FoldsLettersBeyondAscii) {
  EXPECT_EQ(foldedHash("/LM/W3SVC/1/ROOT/b\xC3\xBC"
                       "cher"),
            foldedHash("/lm/w3svc/1/root/B\xC3\x9C"
                       "CHER"));
  EXPECT_EQ(foldedHash("\xC4\xB1"), foldedHash("i")) << "the dotless i has the same capital letter";
}

}  // namespace
}  // namespace trelvin::test
