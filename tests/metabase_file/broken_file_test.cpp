#include <fstream>

#include "server_fixture.h"

namespace trelvin::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ABrokenFile : public MetabaseFileTest {
 protected:
  // Binding fails with number, place and cause, and leaves the file as it is.
  void expectRefused(std::string_view text, std::string_view place, std::string_view cause) {
    writeFile(text);
    const std::optional<Failure> failure = failureOf([&] { bind("/W3SVC"); });
    ASSERT_TRUE(failure) << text;
    EXPECT_EQ(failure->number(), error_number::kMetabaseUnreadable);
    EXPECT_THAT(failure->description(), HasSubstr(filePath() + ", " + std::string(place) + ": "));
    EXPECT_THAT(failure->description(), HasSubstr(std::string(cause)));
    EXPECT_EQ(fileText(), text);
    EXPECT_THAT(folderNames(), ElementsAre("MetaBase.xml"));
  }
};

TEST_F(ABrokenFile, ThatIsEmptyIsRefused) {
  expectRefused("", "line 1, column 1", "empty");
  expectRefused(" \r\n\t", "line 1, column 1", "empty");
}

TEST_F(ABrokenFile, ThatIsNoXmlIsRefused) {
  expectRefused("[main]\nServer=Web1\n", "line 2, column 12", "No document element");
  expectRefused("<configuration>\n<MBProperty>\n<IIsWebService\tLocation =\"/LM/W3SVC>\n",
                "line 3, column 27", "attribute");
}

TEST_F(ABrokenFile, WithAnotherRootIsRefused) {
  expectRefused("<html>\n</html>\n", "line 1, column 1", "html");
  expectRefused("<?xml version =\"1.0\"?>\n<configuration>\n</configuration>\n", "line 2, column 1",
                "MBProperty");
}

TEST_F(ABrokenFile, IsRefusedWhereverItWasCutOff) {
  const std::string whole = sampleMetabase();
  const std::size_t lastNeeded = whole.rfind('>') + 1;
  for (std::size_t length = 0; length < lastNeeded; length += 37) {
    writeFile(whole.substr(0, length));
    EXPECT_EQ(numberOf([&] { bind("/W3SVC"); }), error_number::kMetabaseUnreadable) << length;
  }
  writeFile(whole.substr(0, lastNeeded - 1));
  EXPECT_EQ(numberOf([&] { bind("/W3SVC"); }), error_number::kMetabaseUnreadable);
}

TEST_F(ABrokenFile, WithTheSameLocationTwiceInAnyCaseIsRefused) {
  expectRefused(metabaseOf("<IIsWebService\tLocation =\"/LM/W3SVC\"\n\t>\n</IIsWebService>\n"
                           "  <IIsWebService\tLocation =\"/lm/w3svc\"\n\t>\n</IIsWebService>\n"),
                "line 7, column 3", "a second element has the Location /lm/w3svc");
  expectRefused(metabaseOf("<IIS_Global\tLocation =\".\"\n\t>\n</IIS_Global>\n<IIS_Global\tLocation "
                           "=\".\"\n\t>\n</IIS_Global>\n"),
                "line 7, column 1", "second");
}

TEST_F(ABrokenFile, WithAnElementWithoutLocationIsRefused) {
  expectRefused(metabaseOf("<IIsWebService\n\t\tMaxConnections=\"1\"\n\t>\n</IIsWebService>\n"),
                "line 4, column 1", "IIsWebService has no Location");
}

TEST_F(ABrokenFile, WithALocationThatIsNoPathIsRefused) {
  for (const char* location : {"", "LM", "/LM/", "/LM//W3SVC", "//"}) {
    expectRefused(
        metabaseOf("<IIsWebService\tLocation =\"" + std::string(location) + "\"\n\t>\n</IIsWebService>\n"),
        "line 4, column 1", "is no path");
  }
}

TEST_F(ABrokenFile, WithAnAttributeTwiceIsRefused) {
  expectRefused(
      metabaseOf(
          "<IIsWebService\tLocation =\"/LM/W3SVC\"\n\t\tRealm=\"a\"\n\t\tAppRoot=\"\"\n\t\tRealm=\"b\"\n\t>\n"
          "</IIsWebService>\n"),
      "line 4, column 1", "twice");
}

TEST_F(ABrokenFile, WithTextBehindTheEndIsRefused) {
  expectRefused(sampleMetabase() + "\n  rest of an older file", "line 154, column 3",
                "behind the last element");
}

TEST_F(ABrokenFile, InAnotherEncodingIsRefused) {
  expectRefused("\xFF\xFE<", "line 1, column 1", "UTF-16");
  expectRefused("<?xml version =\"1.0\" encoding=\"windows-1252\"?>\n<configuration/>\n", "line 1, column 1",
                "windows-1252");
  std::string text = sampleMetabase();
  text[text.find("Default FTP")] = '\0';
  writeFile(text);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC"); }), error_number::kMetabaseUnreadable);
}

TEST_F(ABrokenFile, WithABrokenCharacterIsRefused) {
  expectRefused(replaceAll(sampleMetabase(), "Default FTP Site",
                           "Gr\xFC\xDF"
                           "e"),
                "line 40, column 20", "not UTF-8");
}

TEST_F(ABrokenFile, WithAnUnknownReferenceIsRefused) {
  for (const char* text :
       {"Tom & Jerry", "Tom &nbsp; Jerry", "Tom &#; Jerry", "Tom &#xZ; Jerry", "Tom &#12a; Jerry"}) {
    expectRefused(replaceAll(sampleMetabase(), "Default FTP Site", text), "line 40, column 22",
                  "begins no reference");
  }
}

TEST_F(ABrokenFile, IsNotOneForASignOfMarkupInAComment) {
  writeFile(replaceAll(sampleMetabase(), "put here by hand", "Tom & Jerry's"));
  EXPECT_EQ(bind("/W3SVC")->className(), "IIsWebService");
}

TEST_F(ABrokenFile, CountsColumnsInCharacters) {
  expectRefused(metabaseOf("<!-- äöü --><IIsWebService\tRealm=\"x\">\n</IIsWebService>\n"),
                "line 4, column 13", "no Location");
}

TEST_F(ABrokenFile, IsReadAgainOnceItWasMended) {
  writeFile("<configuration>");
  EXPECT_EQ(numberOf([&] { bind("/W3SVC"); }), error_number::kMetabaseUnreadable);
  writeFile(sampleMetabase());
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "Ten");
}

TEST_F(ABrokenFile, ThatCannotBeReadKeepsTheHandlesThatWereBoundBefore) {
  const NodeHandle ten = bind("/W3SVC/10");
  writeFile("<configuration>");
  EXPECT_EQ(numberOf([&] { bind("/W3SVC"); }), error_number::kMetabaseUnreadable);
  EXPECT_EQ(ten->get("ServerComment").toText(), "Ten");
}

// As the server does with a well-formed file: the property is passed over, the rest counts, and a rewrite
// keeps it.
TEST_F(ABrokenFile, OfOneInvalidPropertyLosesThatAlone) {
  writeFile(replaceAll(sampleMetabase(), "MaxConnections=\"2000\"", "MaxConnections=\"abc\""));
  EXPECT_EQ(bind("/W3SVC/1")->get("MaxConnections"), Value(0)) << "the schema's default";
  EXPECT_EQ(bind("/W3SVC")->get("ServerComment").toText(), "Web service");
  EXPECT_TRUE(bind("/W3SVC")->getDataPaths("MaxConnections", Value()).empty());
  putAndSet("/W3SVC", "ServerComment", "changed");
  closeMetabase();
  EXPECT_THAT(fileText(), HasSubstr("MaxConnections=\"abc\""));
}

TEST_F(ABrokenFile, OfAnInvalidTypeIsPassedOverForEachType) {
  writeFile(
      metabaseOf("<IIsWebServer\tLocation =\"/LM/W3SVC/1\"\n"
                 "\t\tAccessFlags=\"AccessTheMoon\"\n\t\tConnectionTimeout=\"4294967296\"\n"
                 "\t\tIPSecurity=\"xyz\"\n\t\tMaxConnections=\" "
                 "\"\n\t\tSSLCertHash=\"abc\"\n\t\tServerAutoStart=\"maybe\"\n"
                 "\t>\n</IIsWebServer>\n"));
  const NodeHandle site = bind("/W3SVC/1");
  EXPECT_EQ(site->get("AccessFlags"), Value(1)) << "the default";
  EXPECT_EQ(site->get("ConnectionTimeout"), Value(120));
  EXPECT_EQ(site->get("MaxConnections"), Value(0));
  EXPECT_EQ(site->get("SSLCertHash"), Value(Value::Bytes{}));
  EXPECT_EQ(site->get("ServerAutoStart"), Value(true));
  for (const char* name :
       {"AccessFlags", "ConnectionTimeout", "IPSecurity", "SSLCertHash", "ServerAutoStart"}) {
    EXPECT_TRUE(site->getDataPaths(name, Value()).empty()) << name;
  }
}

}  // namespace trelvin::test
