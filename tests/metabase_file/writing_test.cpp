#include <pugixml.hpp>

#include "server_fixture.h"

namespace trelvin::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class WritingAMetabase : public MetabaseFileTest {
 protected:
  // The file after the program's end, and what a second start reads from it.
  void reopen() { closeMetabase(); }
};

TEST_F(WritingAMetabase, APutIsSeenByItsHandleAloneUntilSetInfo) {
  const NodeHandle site = bind("/W3SVC/10");
  site->put("ServerComment", "changed");
  EXPECT_EQ(site->get("ServerComment").toText(), "changed");
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "Ten");
  site->setInfo();
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "changed");
}

TEST_F(WritingAMetabase, ACommitSurvivesTheProgramsEnd) {
  putAndSet("/W3SVC/10", "ServerComment", "changed");
  reopen();
  EXPECT_THAT(folderNames(), ElementsAre("MetaBase.xml"));
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "changed");
}

TEST_F(WritingAMetabase, ChangesNothingButTheElementInHand) {
  putAndSet("/W3SVC/10", "ServerComment", "Eleven");
  reopen();
  EXPECT_EQ(fileText(), replaceAll(sampleMetabase(), "\"Ten\"", "\"Eleven\""));
}

TEST_F(WritingAMetabase, KeepsByteOrderMarkAndLineEnds) {
  const std::string before = "\xEF\xBB\xBF" + replaceAll(sampleMetabase(), "\n", "\r\n");
  writeFile(before);
  putAndSet("/W3SVC/10", "ServerComment", "Eleven");
  putAndSet("/W3SVC/1", "ServerBindings", Value::List{":80:", ":81:"});
  reopen();
  EXPECT_EQ(fileText(),
            replaceAll(replaceAll(before, "\"Ten\"", "\"Eleven\""), "10.0.0.1:8080:www.example.com", ":81:"));
}

TEST_F(WritingAMetabase, KeepsWhatItDoesNotUnderstandInAChangedElement) {
  const std::string before = metabaseOf(
      "<IIsWebServer\tLocation =\"/LM/W3SVC/1\"\n\t\tHouseRule='keep &#65; "
      "it'\n\t\tServerComment=\"old\"\n\t>\n\t<!-- a note -->\n"
      "\t<Custom\n\t\tName=\"UnknownName_9202\"\n\t\tID=\"9202\"\n\t\tValue=\"1\"\n\t/>\n\t<Strange "
      "kind=\"x\"/>\n</IIsWebServer>\n");
  writeFile(before);
  putAndSet("/W3SVC/1", "ServerComment", "new");
  reopen();
  EXPECT_EQ(fileText(),
            replaceAll(replaceAll(before, "\"old\"", "\"new\""), "'keep &#65; it'", "\"keep &#65; it\""));
}

TEST_F(WritingAMetabase, WritesANewAttributeInTheOrderOfNames) {
  putAndSet("/W3SVC/10", "MaxConnections", 5);
  putAndSet("/W3SVC/10", "ServerSize", 2);
  reopen();
  EXPECT_THAT(fileText(),
              HasSubstr("<IIsWebServer\tLocation =\"/LM/W3SVC/10\"\n\t\tMaxConnections=\"5\"\n"
                        "\t\tServerComment=\"Ten\"\n\t\tServerSize=\"2\"\n\t>\n</IIsWebServer>\n"));
}

TEST_F(WritingAMetabase, WritesEveryTypeInTheFormOfTheFile) {
  const NodeHandle site = bind("/W3SVC/2");
  site->put("ServerComment", "a \"b\" <c> & d");
  site->put("ServerBindings", Value::List{":80:", "10.0.0.1:81:x"});
  site->put("MaxConnections", -1);
  site->put("ServerAutoStart", false);
  site->put("AccessFlags", 513);
  site->put("DirBrowseFlags", 0);
  site->put("SSLCertHash", Value::Bytes{0xAB, 0x01});
  site->put("LogFileDirectory", "%Windir%\\Logs");
  site->put("MimeMap", bind("/MimeMap")->get("MimeMap"));
  site->put("IPSecurity", bind("/W3SVC/1/ROOT/Straße")->get("IPSecurity"));
  site->setInfo();
  reopen();
  EXPECT_THAT(fileText(), HasSubstr("<IIsWebServer\tLocation =\"/LM/W3SVC/2\"\n"
                                    "\t\tAccessFlags=\"AccessRead | AccessScript\"\n"
                                    "\t\tDirBrowseFlags=\"0\"\n"
                                    "\t\tIPSecurity=\"0a0b\"\n"
                                    "\t\tLogFileDirectory=\"%Windir%\\Logs\"\n"
                                    "\t\tMaxConnections=\"4294967295\"\n"
                                    "\t\tMimeMap=\".htm,text/html\n\t\t\t.txt,text/plain\"\n"
                                    "\t\tSSLCertHash=\"ab01\"\n"
                                    "\t\tServerAutoStart=\"FALSE\"\n"
                                    "\t\tServerBindings=\":80:\n\t\t\t10.0.0.1:81:x\"\n"
                                    "\t\tServerComment=\"a &quot;b&quot; &lt;c&gt; &amp; d\"\n"
                                    "\t>\n</IIsWebServer>\n"));
  EXPECT_EQ(bind("/W3SVC/2")->get("ServerComment").toText(), "a \"b\" <c> & d");
}

TEST_F(WritingAMetabase, KeepsBitsThatHaveNoNameByWritingTheNumber) {
  putAndSet("/W3SVC/2", "AccessFlags", 0x400201);
  reopen();
  EXPECT_THAT(fileText(), HasSubstr("AccessFlags=\"4194817\""));
  EXPECT_EQ(bind("/W3SVC/2")->get("AccessFlags"), Value(0x400201));
}

TEST_F(WritingAMetabase, KeepsLineEndsAndTabsOfATextForAnyReader) {
  putAndSet("/W3SVC/2", "ServerComment", "one\r\n\ttwo");
  reopen();
  EXPECT_EQ(bind("/W3SVC/2")->get("ServerComment").toText(), "one\r\n\ttwo");
  EXPECT_THAT(fileText(), HasSubstr("one&#13;&#10;&#09;two"));
}

TEST_F(WritingAMetabase, AFlagStoresTheWholeWord) {
  putAndSet("/W3SVC/2", "AuthBasic", true);
  reopen();
  EXPECT_THAT(
      fileText(),
      HasSubstr("Location =\"/LM/W3SVC/2\"\n\t\tAuthFlags=\"AuthBasic | AuthAnonymous | AuthNTLM\"\n"));
  putAndSet("/W3SVC", "AuthFlags", 0);
  EXPECT_EQ(bind("/W3SVC/2")->get("AuthNTLM"), Value(true))
      << "none of the word's flags is inherited any more";
}

TEST_F(WritingAMetabase, FlagsPutInARowAddUp) {
  const NodeHandle root = bind("/W3SVC/1/ROOT/bin");
  root->put("AccessRead", true);
  root->put("AccessScript", "True");
  root->put("AccessRead", false);
  EXPECT_EQ(root->get("AccessFlags"), Value(512));
  root->setInfo();
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AccessFlags"), Value(512));
}

TEST_F(WritingAMetabase, TakesNumbersInAnyFormThatFits) {
  const NodeHandle site = bind("/W3SVC/2");
  site->put("MaxConnections", "250");
  EXPECT_EQ(site->get("MaxConnections"), Value(250));
  site->put("MaxConnections", 4294967295.0);
  EXPECT_EQ(site->get("MaxConnections"), Value(-1));
  site->put("MaxConnections", Value(std::int16_t{7}));
  EXPECT_EQ(site->get("MaxConnections"), Value(7));
}

TEST_F(WritingAMetabase, RefusesAValueThatDoesNotFitTheType) {
  const NodeHandle site = bind("/W3SVC/2");
  const auto refused = [&](const char* name, const Value& value) {
    EXPECT_EQ(numberOf([&] { site->put(name, value); }), error_number::kAdsBadParameter) << name;
  };
  refused("MaxConnections", "abc");
  refused("MaxConnections", 4294967296.0);
  refused("MaxConnections", Value::List{1});
  refused("ServerAutoStart", "maybe");
  refused("AuthBasic", Value::List{});
  refused("ServerComment", Value::List{"a"});
  refused("ServerComment", Value());
  refused("ServerComment", Null{});
  refused("ServerComment", std::string("a\0b", 3));
  refused("ServerComment", "\xFF\xFE");
  refused("ServerBindings", Value::List{":80:\n:81:"});
  refused("ServerBindings", Value::Bytes{1});
  refused("SSLCertHash", "ab");
  refused("MimeMap", Value::List{".htm,text/html"});
  refused("IPSecurity", "0a0b");
  refused("IPSecurity", bind("/MimeMap")->get("MimeMap").list()[0]);
  site->setInfo();
  EXPECT_FALSE(hasJournal()) << "nothing was put, nothing is committed";
}

TEST_F(WritingAMetabase, RefusesToPutWhatTheClassLacks) {
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->put("ServerBindings", ":80:"); }),
            error_number::kAdsPropertyNotSupported);
}

TEST_F(WritingAMetabase, TakesASingleTextForAListOfOne) {
  putAndSet("/W3SVC/2", "ServerBindings", ":8080:");
  EXPECT_THAT(textsOf(bind("/W3SVC/2")->get("ServerBindings")), ElementsAre(":8080:"));
}

TEST_F(WritingAMetabase, LeavesOutEmptyItemsOfAList) {
  putAndSet("/W3SVC/2", "ServerBindings", Value::List{"", ":80:", ""});
  EXPECT_THAT(textsOf(bind("/W3SVC/2")->get("ServerBindings")), ElementsAre(":80:"));
  putAndSet("/W3SVC/2", "ServerBindings", Value::List{});
  reopen();
  EXPECT_THAT(fileText(), HasSubstr("ServerBindings=\"\"\n"));
}

TEST_F(WritingAMetabase, NeverWritesASecretInTheClear) {
  const NodeHandle service = bind("/W3SVC");
  EXPECT_EQ(numberOf([&] { service->put("AnonymousUserPass", "letmein"); }), kNoSessionKeyNumber);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->put("UNCPassword", "letmein"); }), kNoSessionKeyNumber);
  service->put("AnonymousUserPass", service->get("AnonymousUserPass"));
  service->setInfo();
  EXPECT_FALSE(hasJournal());
  reopen();
  EXPECT_EQ(fileText(), sampleMetabase());
}

TEST_F(WritingAMetabase, CopiesAnAccessListWithinItsOwnMetabaseOnly) {
  putAndSet("/W3SVC/2", "AdminACL", bind("/W3SVC/1/Filters")->get("AdminACL"));
  TempFolder elsewhere;
  const std::string other = elsewhere.write("MetaBase.xml", sampleMetabase()).string();
  const auto second = makeFileMetabase([&](std::string_view) { return std::optional(other); });
  const NodeHandle target = second->getObject("IIS://Web2/W3SVC/2");
  EXPECT_EQ(numberOf([&] { target->put("AdminACL", bind("/W3SVC/1/Filters")->get("AdminACL")); }), 0)
      << "the same bytes as are in force there change nothing";
  elsewhere.write("MetaBase.xml", replaceAll(sampleMetabase(), kSecret, "49634462ff"));
  EXPECT_EQ(
      numberOf([&] {
        second->getObject("IIS://Web2/W3SVC/2")->put("AdminACL", bind("/W3SVC/1/Filters")->get("AdminACL"));
      }),
      kNoSessionKeyNumber);
}

TEST_F(WritingAMetabase, MakesAChildOnlyAtSetInfo) {
  const NodeHandle site = bind("/W3SVC")->create("IIsWebServer", "3");
  EXPECT_EQ(site->className(), "IIsWebServer");
  EXPECT_EQ(site->adsPath(), "IIS://Web1/W3SVC/3");
  EXPECT_EQ(site->get("KeyType"), Value("IIsWebServer"));
  EXPECT_EQ(site->get("MaxConnections"), Value(2000)) << "inherited from where it will stand";
  EXPECT_EQ(site->get("ServerBindings").upperBound(), -1);
  site->put("ServerComment", "Three");
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/3"); }), error_number::kMetabasePathNotFound);
  site->setInfo();
  EXPECT_EQ(bind("/W3SVC/3")->get("ServerComment").toText(), "Three");
  site->put("ServerSize", 1);
  site->setInfo();
  EXPECT_EQ(bind("/W3SVC/3")->get("ServerSize"), Value(1));
}

TEST_F(WritingAMetabase, WritesNewNodesInTheOrderOfTheFile) {
  bind("/W3SVC")->create("IIsWebServer", "3")->setInfo();
  bind("/W3SVC/3")->create("IIsWebVirtualDir", "ROOT")->setInfo();
  bind("/W3SVC/1/ROOT")->create("IIsWebDirectory", "abc")->setInfo();
  reopen();
  std::string expected = sampleMetabase();
  expected = replaceAll(
      expected, "<IIsApplicationPools\t",
      "<IIsWebServer\tLocation =\"/LM/W3SVC/3\"\n\t>\n</IIsWebServer>\n"
      "<IIsWebVirtualDir\tLocation =\"/LM/W3SVC/3/ROOT\"\n\t>\n</IIsWebVirtualDir>\n<IIsApplicationPools\t");
  expected = replaceAll(
      expected, "<!-- put here",
      "<IIsWebDirectory\tLocation =\"/LM/W3SVC/1/ROOT/abc\"\n\t>\n</IIsWebDirectory>\n<!-- put here");
  EXPECT_EQ(fileText(), expected);
}

TEST_F(WritingAMetabase, RefusesAChildThatExistsWhenItIsCommitted) {
  const NodeHandle site = bind("/W3SVC")->create("IIsWebServer", "10");
  EXPECT_EQ(numberOf([&] { site->setInfo(); }), error_number::kAdsObjectExists);
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "Ten");
}

TEST_F(WritingAMetabase, RefusesAChildWhoseParentIsGone) {
  const NodeHandle root = bind("/W3SVC/10")->create("IIsWebVirtualDir", "ROOT");
  bind("/W3SVC")->deleteChild("IIsWebServer", "10");
  EXPECT_EQ(numberOf([&] { root->setInfo(); }), error_number::kMetabasePathNotFound);
}

TEST_F(WritingAMetabase, RefusesAClassThatTheContainerDoesNotHold) {
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->create("IIsFtpServer", "3"); }), error_number::kAdsBadParameter);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->create("IIsNothing", "3"); }), error_number::kAdsBadParameter);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/IIsCertMapper")->create("IIsObject", "x"); }),
            error_number::kAdsBadParameter);
}

TEST_F(WritingAMetabase, RefusesANameThatNoNodeCanHave) {
  const std::string longest(255, 'n');
  for (const std::string& name :
       {std::string(), std::string("a/b"), longest + "n", std::string("a\tb"), std::string("\xFF")}) {
    EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->create("IIsWebDirectory", name); }),
              error_number::kAdsBadParameter);
  }
  bind("/W3SVC/1/ROOT")->create("IIsWebDirectory", longest)->setInfo();
  EXPECT_EQ(bind("/W3SVC/1/ROOT/" + longest)->name(), longest);
}

TEST_F(WritingAMetabase, TakesNamesBeyondAscii) {
  bind("/W3SVC/1/ROOT")->create("IIsWebDirectory", "Größe & \"Maß\"")->setInfo();
  reopen();
  EXPECT_EQ(bind("/W3SVC/1/ROOT/GRÖßE & \"MAß\"")->className(), "IIsWebDirectory");
  EXPECT_THAT(fileText(), HasSubstr("/LM/W3SVC/1/ROOT/Größe &amp; &quot;Maß&quot;"));
}

TEST_F(WritingAMetabase, RemovesAChildWithAllThatLiesBelow) {
  bind("/W3SVC")->deleteChild("iiswebserver", "1");
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1"); }), error_number::kMetabasePathNotFound);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT/bin"); }), error_number::kMetabasePathNotFound);
  reopen();
  const std::string before = sampleMetabase();
  const std::size_t first = before.find("<IIsWebServer\tLocation =\"/LM/W3SVC/1\"");
  const std::size_t behind = before.find("<IIsWebServer\tLocation =\"/LM/W3SVC/10\"");
  EXPECT_EQ(fileText(),
            before.substr(0, first) + "<!-- put here by hand, to stay -->\n" + before.substr(behind));
}

TEST_F(WritingAMetabase, RefusesToRemoveWhatIsMissingOrOfAnotherClass) {
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->deleteChild("IIsWebServer", "3"); }),
            error_number::kMetabasePathNotFound);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->deleteChild("IIsWebServer", "Info"); }),
            error_number::kMetabasePathNotFound);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->deleteChild("IIsWebVirtualDir", "1/ROOT"); }),
            error_number::kMetabasePathNotFound);
  EXPECT_EQ(bind("/W3SVC/Info")->className(), "IIsWebInfo");
  EXPECT_FALSE(hasJournal());
}

TEST_F(WritingAMetabase, ANodeMadeAgainAfterItsRemovalIsEmpty) {
  bind("/W3SVC")->deleteChild("IIsWebServer", "1");
  bind("/W3SVC")->create("IIsWebServer", "1")->setInfo();
  EXPECT_THAT(childNames(bind("/W3SVC/1")), ElementsAre());
  reopen();
  EXPECT_EQ(bind("/W3SVC/1")->get("ServerBindings").upperBound(), -1);
  EXPECT_THAT(childNames(bind("/W3SVC")), ElementsAre("1", "10", "1876543210", "2", "AppPools", "Info"));
}

TEST_F(WritingAMetabase, GivesAPlainNodeItsClassByKeyType) {
  const NodeHandle plain = bind("/W3SVC/1/ROOT/plain");
  plain->put("KeyType", "iiswebdirectory");
  plain->setInfo();
  EXPECT_EQ(numberOf([&] { plain->get("Path"); }), error_number::kAdsPropertyNotSupported)
      << "the class as bound";
  EXPECT_EQ(bind("/W3SVC/1/ROOT/plain")->get("AccessFlags"), Value(517))
      << "a new bind has the class's properties";
  reopen();
  EXPECT_THAT(fileText(),
              HasSubstr("<IIsWebDirectory\tLocation =\"/LM/W3SVC/1/ROOT/plain\"\n\t>\n</IIsWebDirectory>\n"));
}

TEST_F(WritingAMetabase, MovesDataOfAPlainNodeToTheAttributesOfItsClass) {
  writeFile(metabaseOf(
      "<IIsConfigObject\tLocation =\"/LM/W3SVC/1/ROOT\"\n\t>\n\t<Custom\n\t\tName=\"Path\"\n\t\tID=\"3001\"\n"
      "\t\tValue=\"d:\\x &amp; "
      "y\"\n\t\tType=\"STRING\"\n\t\tUserType=\"IIS_MD_UT_FILE\"\n\t\tAttributes=\"INHERIT\"\n\t/>\n"
      "\t<Custom\n\t\tName=\"UnknownName_9\"\n\t\tID=\"9\"\n\t\tValue=\"1\"\n\t/>\n</IIsConfigObject>\n"));
  putAndSet("/W3SVC/1/ROOT", "KeyType", "IIsWebVirtualDir");
  reopen();
  EXPECT_THAT(fileText(),
              HasSubstr("<IIsWebVirtualDir\tLocation =\"/LM/W3SVC/1/ROOT\"\n\t\tPath=\"d:\\x &amp; y\"\n\t>\n"
                        "\t<Custom\n\t\tName=\"UnknownName_9\"\n\t\tID=\"9\"\n\t\tValue=\"1\"\n\t/>\n</"
                        "IIsWebVirtualDir>\n"));
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("Path").toText(), "d:\\x & y");
}

TEST_F(WritingAMetabase, MovesAttributesThatANewClassLacksToCustomElements) {
  putAndSet("/W3SVC/1/ROOT/Straße", "KeyType", "IIsWebDirectory");
  reopen();
  const std::string text = fileText();
  EXPECT_THAT(text,
              HasSubstr("<IIsWebDirectory\tLocation "
                        "=\"/LM/W3SVC/1/ROOT/Straße\"\n\t\tAccessFlags=\"513\"\n\t\tIPSecurity=\"0a0b\"\n"));
  EXPECT_THAT(
      text,
      HasSubstr("\t>\n\t<Custom\n\t\tName=\"Path\"\n\t\tID=\"3001\"\n\t\tValue="
                "\"\\\\server\\Ünter\"\n\t\tType=\"STRING\"\n"
                "\t\tUserType=\"IIS_MD_UT_FILE\"\n\t\tAttributes=\"INHERIT\"\n\t/>\n</IIsWebDirectory>\n"));
}

TEST_F(WritingAMetabase, RefusesAKeyTypeThatIsNoClass) {
  const NodeHandle root = bind("/W3SVC/1/ROOT");
  EXPECT_EQ(numberOf([&] { root->put("KeyType", "IIsNothing"); }), error_number::kAdsBadParameter);
  EXPECT_EQ(numberOf([&] { root->put("KeyType", ""); }), error_number::kAdsBadParameter);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT/plain")->put("KeyType", ""); }), 0) << "as it was read";
}

TEST_F(WritingAMetabase, AReadOnlyFileOrFolderIsNotChanged) {
  namespace fs = std::filesystem;
  fs::permissions(filePath(), fs::perms::owner_read);
  EXPECT_EQ(numberOf([&] { putAndSet("/W3SVC/10", "ServerComment", "x"); }), error_number::kAccessDenied);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->deleteChild("IIsWebServer", "10"); }),
            error_number::kAccessDenied);
  fs::permissions(filePath(), fs::perms::owner_read | fs::perms::owner_write);
  fs::permissions(folder_.path(), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(numberOf([&] { putAndSet("/W3SVC/10", "ServerComment", "x"); }), error_number::kAccessDenied);
  fs::permissions(folder_.path(), fs::perms::owner_all);
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "Ten");
  EXPECT_THAT(folderNames(), ElementsAre("MetaBase.xml"));
  putAndSet("/W3SVC/10", "ServerComment", "now");
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "now");
}

TEST_F(WritingAMetabase, KeepsTheFilesMode) {
  namespace fs = std::filesystem;
  fs::permissions(filePath(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  putAndSet("/W3SVC/10", "ServerComment", "x");
  reopen();
  EXPECT_EQ(fs::status(filePath()).permissions(),
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST_F(WritingAMetabase, WritesThroughASymbolicLink) {
  const std::string link = (folder_ / "link.xml").string();
  std::filesystem::create_symlink(filePath(), link);
  auto linked = makeFileMetabase([&](std::string_view) { return std::optional(link); });
  const NodeHandle ten = linked->getObject("IIS://x/W3SVC/10");
  ten->put("ServerComment", "linked");
  ten->setInfo();
  linked.reset();
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_THAT(fileText(), HasSubstr("\"linked\""));
}

TEST_F(WritingAMetabase, WhatItWroteIsAMetabaseFileForAnyReader) {
  for (int i = 20; i < 60; ++i) {
    const NodeHandle site = bind("/W3SVC")->create("IIsWebServer", std::to_string(i));
    site->put("ServerComment", "Site " + std::to_string(i) + " <&\"'>");
    site->setInfo();
    if (i % 3 == 0) bind("/W3SVC")->deleteChild("IIsWebServer", std::to_string(i));
  }
  bind("/W3SVC")->deleteChild("IIsWebServer", "10");
  reopen();
  pugi::xml_document document;
  ASSERT_TRUE(document.load_string(fileText().c_str(), pugi::parse_full));
  std::vector<std::string> sites;
  for (const pugi::xml_node element :
       document.document_element().child("MBProperty").children("IIsWebServer")) {
    sites.emplace_back(element.attribute("Location").value());
  }
  EXPECT_TRUE(std::is_sorted(sites.begin(), sites.end())) << ::testing::PrintToString(sites);
  EXPECT_EQ(sites.size(), 30U) << "27 of the 40 new ones, and three old ones";
}

}  // namespace trelvin::test
