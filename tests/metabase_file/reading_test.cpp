#include "server_fixture.h"

namespace trelvin::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ReadingAMetabase : public MetabaseFileTest {};

TEST_F(ReadingAMetabase, BindsAPathInAnyCase) {
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->className(), "IIsWebVirtualDir");
  EXPECT_EQ(metabase().getObject("iis://WEB1/w3svc/1/Root")->className(), "IIsWebVirtualDir");
  EXPECT_EQ(bind("/w3svc/1/root/STRAßE")->get("Path").toText(), "\\\\server\\Ünter");
}

TEST_F(ReadingAMetabase, BindsTheServerItselfAsItsComputer) {
  const NodeHandle computer = bind("");
  EXPECT_EQ(computer->className(), "IIsComputer");
  EXPECT_EQ(computer->adsPath(), "IIS://Web1");
  EXPECT_EQ(computer->name(), "Web1");
}

TEST_F(ReadingAMetabase, TakesASlashAtTheEndForNone) {
  EXPECT_EQ(bind("/W3SVC/")->adsPath(), "IIS://Web1/W3SVC");
  EXPECT_EQ(metabase().getObject("IIS://Web1/")->adsPath(), "IIS://Web1");
}

TEST_F(ReadingAMetabase, RefusesWhatIsNoPath) {
  for (const char* path : {"", "IIS:", "IIS://", "IIS:///W3SVC", "LDAP://Web1/W3SVC", "/LM/W3SVC",
                           "IIS://Web1//W3SVC", "IIS://Web1/W3SVC//1", "IIS://Web1/W3SVC//"}) {
    EXPECT_EQ(numberOf([&] { metabase().getObject(path); }), error_number::kAdsBadPath) << path;
  }
}

TEST_F(ReadingAMetabase, FailsForANodeThatIsMissing) {
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/3"); }), error_number::kMetabasePathNotFound);
  EXPECT_EQ(numberOf([&] { bind("/LM/W3SVC"); }), error_number::kMetabasePathNotFound);
  EXPECT_EQ(numberOf([&] { bind("/NNTPSVC"); }), error_number::kMetabasePathNotFound);
}

TEST_F(ReadingAMetabase, FailsForAServerThatCannotBeReached) {
  EXPECT_EQ(numberOf([&] { metabase().getObject("IIS://Web2/W3SVC"); }), error_number::kServerUnavailable);
  std::filesystem::remove(filePath());
  EXPECT_EQ(numberOf([&] { bind("/W3SVC"); }), error_number::kServerUnavailable);
}

TEST_F(ReadingAMetabase, EchoesTheBoundPathAndAddsStoredNames) {
  const NodeHandle site = metabase().getObject("IIS://wEB1/w3svc/1/root");
  EXPECT_EQ(site->adsPath(), "IIS://wEB1/w3svc/1/root");
  EXPECT_EQ(site->name(), "root");
  std::vector<std::string> paths;
  site->forEachChild([&](const NodeHandle& child) { paths.push_back(child->adsPath()); });
  EXPECT_THAT(paths, ElementsAre("IIS://wEB1/w3svc/1/root/bin", "IIS://wEB1/w3svc/1/root/plain",
                                 "IIS://wEB1/w3svc/1/root/Straße"));
}

TEST_F(ReadingAMetabase, ListsChildrenByTextSoThatTenComesBeforeTwo) {
  EXPECT_THAT(childNames(bind("/W3SVC")), ElementsAre("1", "10", "1876543210", "2", "AppPools", "Info"));
  EXPECT_THAT(childNames(bind("/W3SVC/1")), ElementsAre("Filters", "IIsCertMapper", "ROOT"));
  EXPECT_THAT(childNames(bind("/W3SVC/2")), IsEmpty());
}

TEST_F(ReadingAMetabase, AVisitMayBindAndChangeWhatItLikes) {
  std::vector<std::string> names;
  bind("/W3SVC")->forEachChild([&](const NodeHandle& child) {
    names.push_back(child->name());
    if (child->name() == "1") bind("/W3SVC")->deleteChild("IIsWebServer", "10");
    if (child->name() == "2") bind("/W3SVC")->create("IIsWebServer", "7")->setInfo();
  });
  EXPECT_THAT(names, ElementsAre("1", "10", "1876543210", "2", "AppPools", "Info"));
  EXPECT_THAT(childNames(bind("/W3SVC")), ElementsAre("1", "1876543210", "2", "7", "AppPools", "Info"));
}

TEST_F(ReadingAMetabase, ReadsTextsWithTheirReferencesResolved) {
  EXPECT_EQ(bind("/W3SVC/1")->get("ServerComment"), Value("Tom & Jerry's \"best\" <site>"));
}

TEST_F(ReadingAMetabase, FindsAPropertyInAnyCase) {
  EXPECT_EQ(bind("/W3SVC/10")->get("servercomment").toText(), "Ten");
}

TEST_F(ReadingAMetabase, ReadsAListAlwaysAsAListOfTexts) {
  const Value bindings = bind("/W3SVC/1")->get("ServerBindings");
  EXPECT_EQ(bindings.varType(), kVarList);
  EXPECT_THAT(textsOf(bindings), ElementsAre(":80:", "10.0.0.1:8080:www.example.com"));
  const Value single = bind("/W3SVC/1/ROOT")->get("HttpCustomHeaders");
  EXPECT_EQ(single.varType(), kVarList);
  EXPECT_THAT(textsOf(single), ElementsAre("X-Powered-By: nobody"));
  EXPECT_EQ(single.list()[0].varType(), kVarText);
}

TEST_F(ReadingAMetabase, ReadsAnEmptyListForAListThatIsSetNowhere) {
  const Value bindings = bind("/W3SVC/2")->get("ServerBindings");
  EXPECT_EQ(bindings.varType(), kVarList);
  EXPECT_EQ(bindings.upperBound(), -1);
}

TEST_F(ReadingAMetabase, ReadsFlagWordsFromNamesAndFromNumbers) {
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("AccessFlags"), Value(517));
  EXPECT_EQ(bind("/W3SVC/1/ROOT/Straße")->get("AccessFlags"), Value(513));
  EXPECT_EQ(bind("/W3SVC")->get("DirBrowseFlags"), Value(1073741886));
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AuthPersistence"), Value(0))
      << "nothing between the quotes is no flag";
}

TEST_F(ReadingAMetabase, ReadsAFlagFromTheWordInForce) {
  const NodeHandle root = bind("/W3SVC/1/ROOT");
  EXPECT_EQ(root->get("AccessScript"), Value(true));
  EXPECT_EQ(root->get("AccessWrite"), Value(false));
  EXPECT_EQ(root->get("AuthNTLM"), Value(true)) << "the word is inherited from the service";
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AccessRead"), Value(false)) << "the word is set to none";
  EXPECT_EQ(bind("/MSFTPSVC")->get("AccessRead"), Value(true)) << "the schema's default";
}

TEST_F(ReadingAMetabase, ReadsNumbersBeyondTheSignAsNegative) {
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("MaxRequestEntityAllowed"), Value(-1));
  EXPECT_EQ(bind("")->get("MaxBandwidth"), Value(-1));
}

TEST_F(ReadingAMetabase, ReadsTruthValuesTextsAndBytesByTheirTypes) {
  EXPECT_EQ(bind("/W3SVC/1")->get("ServerAutoStart"), Value(true));
  EXPECT_EQ(bind("/MSFTPSVC")->get("AllowAnonymous").varType(), kVarBoolean);
  const Value hash = bind("/W3SVC/1876543210")->get("SSLCertHash");
  EXPECT_EQ(hash, Value(Value::Bytes{0x00, 0xFF, 0x10, 0xAB}));
  EXPECT_EQ(bind("/W3SVC/1")->get("LogFileDirectory").toText(), "%Windir%\\System32\\LogFiles")
      << "never expanded";
}

TEST_F(ReadingAMetabase, ReadsAMimeMapAsAListOfObjects) {
  const Value map = bind("/MimeMap")->get("MimeMap");
  ASSERT_EQ(map.varType(), kVarList);
  ASSERT_EQ(map.upperBound(), 1);
  EXPECT_EQ(map.list()[0].varType(), kVarObject);
  EXPECT_EQ(map.list()[0].object()->typeName(), "MimeMap");
}

TEST_F(ReadingAMetabase, ReadsIpSecurityAndAccessListsAsObjects) {
  EXPECT_EQ(bind("/W3SVC/1/ROOT/Straße")->get("IPSecurity").varType(), kVarObject);
  EXPECT_EQ(bind("/W3SVC/2")->get("IPSecurity").varType(), kVarObject) << "also where it is set nowhere";
  EXPECT_EQ(bind("/W3SVC/1/Filters")->get("AdminACL").varType(), kVarObject);
}

TEST_F(ReadingAMetabase, ReadsASecretAsAnEmptyText) {
  EXPECT_EQ(bind("/W3SVC")->get("AnonymousUserPass"), Value(""));
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("UNCPassword"), Value(""));
}

TEST_F(ReadingAMetabase, InheritsFromTheNearestNodeAbove) {
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("AnonymousUserName").toText(), "IUSR_WEB1");
  EXPECT_EQ(bind("/W3SVC/2")->get("MaxConnections"), Value(2000));
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("HttpCustomHeaders").list()[0].toText(), "X-Powered-By: nobody");
  EXPECT_EQ(bind("/W3SVC/2")->get("ServerComment").toText(), "Web service");
}

TEST_F(ReadingAMetabase, DoesNotInheritWhatIsNotInheritable) {
  writeFile(replaceAll(sampleMetabase(), "<IIsWebServer\tLocation =\"/LM/W3SVC/2\"\n",
                       "<IIsWebServer\tLocation =\"/LM/W3SVC/2\"\n\t\tServerBindings=\":81:\"\n"));
  EXPECT_THAT(textsOf(bind("/W3SVC/2")->get("ServerBindings")), ElementsAre(":81:"));
  EXPECT_THAT(textsOf(bind("/W3SVC/10")->get("ServerBindings")), IsEmpty());
}

TEST_F(ReadingAMetabase, GivesTheDefaultOfTheSchemaForWhatIsSetNowhere) {
  EXPECT_EQ(bind("/W3SVC/1")->get("ConnectionTimeout"), Value(120));
  EXPECT_EQ(bind("/W3SVC/1")->get("DefaultDoc"), Value("default.htm"));
  EXPECT_EQ(bind("/W3SVC/1")->get("Realm"), Value(""));
  EXPECT_EQ(bind("/W3SVC/1")->get("ServerState"), Value(4)) << "stopped: nothing runs in a file";
}

TEST_F(ReadingAMetabase, RefusesAPropertyThatTheClassLacks) {
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->get("ServerBindings"); }),
            error_number::kAdsPropertyNotSupported);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1")->get("NoSuchThing"); }), error_number::kAdsPropertyNotSupported);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1876543210")->get("UnknownName_2166"); }),
            error_number::kAdsPropertyNotSupported);
}

TEST_F(ReadingAMetabase, HidesACustomPropertyThatTheClassDoesNotList) {
  writeFile(
      metabaseOf("<IIsWebService\tLocation "
                 "=\"/LM/W3SVC\"\n\t>\n\t<Custom\n\t\tName=\"MD_IISADMIN_EXTENSIONS\"\n\t\tID=\"1028\""
                 "\n\t\tValue=\"a\"\n\t/"
                 ">\n\t<Custom\n\t\tName=\"ServerComment\"\n\t\tID=\"1015\"\n\t\tValue=\"by hand\"\n\t/>"
                 "\n</IIsWebService>\n"));
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->get("MD_IISADMIN_EXTENSIONS"); }),
            error_number::kAdsPropertyNotSupported);
  EXPECT_EQ(bind("/W3SVC")->get("ServerComment").toText(), "by hand") << "the class does list it";
}

TEST_F(ReadingAMetabase, GivesNoDataPathForACustomPropertyThatTheClassDoesNotList) {
  writeFile(
      metabaseOf("<IIsWebService\tLocation =\"/LM/W3SVC\"\n\t>\n</IIsWebService>\n"
                 "<IIsConfigObject\tLocation =\"/LM/W3SVC/plain\"\n\t>\n\t<Custom\n\t\tName=\"AccessFlags\"\n"
                 "\t\tID=\"6016\"\n\t\tValue=\"AccessRead\"\n\t/>\n</IIsConfigObject>\n"));
  EXPECT_THAT(bind("/W3SVC")->getDataPaths("AccessFlags", Value()), testing::IsEmpty());
}

TEST_F(ReadingAMetabase, AFlagOfAnotherVersionDoesNotTakeTheOthersWithIt) {
  writeFile(
      metabaseOf("<IIsWebService\tLocation =\"/LM/W3SVC\"\n\t\tAccessFlags=\"AccessRead | AccessOfTomorrow | "
                 "AccessScript\"\n\t>\n</IIsWebService>\n"));
  EXPECT_EQ(bind("/W3SVC")->get("AccessFlags").toLong(), 513);
}

TEST_F(ReadingAMetabase, KnowsOnlyKeyTypeOfANodeWithoutAKeyType) {
  const NodeHandle plain = bind("/W3SVC/1/ROOT/plain");
  EXPECT_EQ(plain->className(), "IIsObject");
  EXPECT_EQ(plain->get("KeyType"), Value(""));
  EXPECT_EQ(numberOf([&] { plain->get("Path"); }), error_number::kAdsPropertyNotSupported);
  EXPECT_THAT(metabase().getObject(plain->schema())->optionalProperties(), ElementsAre("KeyType"));
}

TEST_F(ReadingAMetabase, KnowsOnlyKeyTypeOfAClassThatTheSchemaLacks) {
  writeFile(metabaseOf(
      "<IIsNntpServer\tLocation =\"/LM/NNTPSVC/1\"\n\t\tServerComment=\"news\"\n\t>\n</IIsNntpServer>\n"));
  const NodeHandle news = bind("/NNTPSVC/1");
  EXPECT_EQ(news->className(), "IIsNntpServer");
  EXPECT_EQ(news->get("KeyType"), Value("IIsNntpServer"));
  EXPECT_EQ(numberOf([&] { news->get("ServerComment"); }), error_number::kAdsPropertyNotSupported);
}

TEST_F(ReadingAMetabase, ImpliesNodesAboveThoseInTheFile) {
  writeFile(metabaseOf("<IIsWebServer\tLocation =\"/LM/W3SVC/1\"\n\t>\n</IIsWebServer>\n"));
  EXPECT_EQ(bind("/W3SVC")->className(), "IIsObject");
  EXPECT_THAT(childNames(bind("/W3SVC")), ElementsAre("1"));
}

TEST_F(ReadingAMetabase, GivesTheKeyTypeAsTheClass) {
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("KeyType"), Value("IIsWebVirtualDir"));
  EXPECT_EQ(bind("/MSFTPSVC/1")->get("keytype"), Value("IIsFtpServer"));
}

TEST_F(ReadingAMetabase, ListsTheNodesThatHoldAPropertyItselfFirst) {
  EXPECT_THAT(bind("/W3SVC/1/ROOT")->getDataPaths("AccessFlags", Value()),
              ElementsAre("IIS://Web1/W3SVC/1/ROOT", "IIS://Web1/W3SVC/1/ROOT/bin",
                          "IIS://Web1/W3SVC/1/ROOT/Straße"));
  EXPECT_THAT(metabase().getObject("IIS://web1/w3svc/1")->getDataPaths("path", 0),
              ElementsAre("IIS://web1/w3svc/1/ROOT", "IIS://web1/w3svc/1/ROOT/Straße"));
}

TEST_F(ReadingAMetabase, ListsTheNodesAsTheyAreAtEachQuestion) {
  const NodeHandle site = bind("/W3SVC/1");
  const auto paths = [&](const char* name) { return site->getDataPaths(name, Value()); };
  EXPECT_THAT(paths("Realm"), IsEmpty());
  putAndSet("/W3SVC/1/ROOT/bin", "Realm", "a");
  EXPECT_THAT(paths("Realm"), ElementsAre("IIS://Web1/W3SVC/1/ROOT/bin"));
  const NodeHandle made = bind("/W3SVC/1/ROOT")->create("IIsWebVirtualDir", "made");
  made->put("Realm", "b");
  EXPECT_THAT(paths("Realm").size(), 1U) << "not committed yet";
  made->setInfo();
  EXPECT_THAT(paths("Realm"), ElementsAre("IIS://Web1/W3SVC/1/ROOT/bin", "IIS://Web1/W3SVC/1/ROOT/made"));
  bind("/W3SVC/1/ROOT")->deleteChild("", "bin");
  EXPECT_THAT(paths("Realm"), ElementsAre("IIS://Web1/W3SVC/1/ROOT/made"));
  closeMetabase();
  EXPECT_THAT(paths("Realm"), ElementsAre("IIS://Web1/W3SVC/1/ROOT/made")) << "the file was written anew";
  putAndSet("/W3SVC/1", "Realm", "c");
  closeMetabase();
}

TEST_F(ReadingAMetabase, ListsTheNodesOfAFlagByItsWord) {
  EXPECT_THAT(bind("/MSFTPSVC/1")->getDataPaths("AccessRead", Value()),
              ElementsAre("IIS://Web1/MSFTPSVC/1/ROOT"));
}

TEST_F(ReadingAMetabase, ListsNothingForAPropertyThatIsSetNowhereBelow) {
  EXPECT_THAT(bind("/W3SVC/1")->getDataPaths("Realm", Value()), IsEmpty());
  EXPECT_THAT(bind("")->getDataPaths("ServerID", Value()), IsEmpty());
}

TEST_F(ReadingAMetabase, ListsNodesOfAnyClassForAnyPropertyOfTheSchema) {
  EXPECT_THAT(bind("")->getDataPaths("MimeMap", Value()), ElementsAre("IIS://Web1/MimeMap"));
  EXPECT_THAT(bind("/W3SVC")->getDataPaths("MD_ISM_ACCESS_CHECK", Value()), testing::IsEmpty())
      << "a custom one";
  EXPECT_THAT(bind("/W3SVC/1/ROOT")->getDataPaths("KeyType", Value()),
              ElementsAre("IIS://Web1/W3SVC/1/ROOT", "IIS://Web1/W3SVC/1/ROOT/bin",
                          "IIS://Web1/W3SVC/1/ROOT/Straße"));
}

TEST_F(ReadingAMetabase, ListsInheritablePropertiesOnlyWhenAskedTo) {
  EXPECT_THAT(bind("/W3SVC/1/ROOT")->getDataPaths("Path", 1).size(), 2U);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1")->getDataPaths("ServerBindings", 1); }),
            error_number::kMetabaseDataNotFound);
}

TEST_F(ReadingAMetabase, RefusesToListAPropertyThatTheSchemaLacks) {
  for (const char* name : {"NoSuchThing", "AspThreadGateLoadLow" /* dropped by IIS 6 */}) {
    EXPECT_EQ(numberOf([&] { bind("/W3SVC/1")->getDataPaths(name, Value()); }),
              error_number::kAdsPropertyNotSupported);
  }
}

TEST_F(ReadingAMetabase, TakesAFileWithByteOrderMarkAndWithWindowsLineEnds) {
  writeFile("\xEF\xBB\xBF" + replaceAll(sampleMetabase(), "\n", "\r\n"));
  EXPECT_THAT(textsOf(bind("/W3SVC/1")->get("ServerBindings")),
              ElementsAre(":80:", "10.0.0.1:8080:www.example.com"));
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("AccessFlags"), Value(517));
}

TEST_F(ReadingAMetabase, SeesAFileThatWasChangedOnDisk) {
  const NodeHandle before = bind("/W3SVC/10");
  EXPECT_EQ(before->get("ServerComment").toText(), "Ten");
  writeFile(replaceAll(sampleMetabase(), "\"Ten\"", "\"Ten changed\""));
  EXPECT_EQ(bind("/W3SVC/10")->get("ServerComment").toText(), "Ten changed");
  EXPECT_EQ(before->get("ServerComment").toText(), "Ten changed") << "the old handle stands on the same node";
}

TEST_F(ReadingAMetabase, AHandleOnANodeThatIsGoneFails) {
  const NodeHandle ten = bind("/W3SVC/10");
  bind("/W3SVC")->deleteChild("IIsWebServer", "10");
  EXPECT_EQ(numberOf([&] { ten->get("ServerComment"); }), error_number::kMetabasePathNotFound);
  bind("/W3SVC")->create("IIsWebServer", "10")->setInfo();
  EXPECT_EQ(ten->get("ServerComment").toText(), "Web service") << "a node of that name is there again";
}

TEST_F(ReadingAMetabase, NeverWritesOrMakesAFile) {
  const std::string before = fileText();
  bind("/W3SVC/1")->get("ServerComment");
  bind("/W3SVC")->getDataPaths("Path", Value());
  bind("/W3SVC/1")->setInfo();
  bind("/W3SVC")->create("IIsWebServer", "99");
  bind("/W3SVC/1")->put("ServerComment", "never committed");
  EXPECT_THAT(folderNames(), ElementsAre("MetaBase.xml"));
  closeMetabase();
  EXPECT_THAT(folderNames(), ElementsAre("MetaBase.xml"));
  EXPECT_EQ(fileText(), before);
}

TEST_F(ReadingAMetabase, AsksForTheFileAgainAfterItWentAway) {
  const std::string other =
      folder_.write("other/MetaBase.xml", replaceAll(sampleMetabase(), "\"Ten\"", "\"Elsewhere\"")).string();
  std::string where = filePath();
  const auto moving = makeFileMetabase([&](std::string_view) { return std::optional(where); });
  EXPECT_EQ(moving->getObject("IIS://any/W3SVC/10")->get("ServerComment").toText(), "Ten");
  std::filesystem::remove(where);
  where = other;
  EXPECT_EQ(moving->getObject("IIS://any/W3SVC/10")->get("ServerComment").toText(), "Elsewhere");
}

}  // namespace trelvin::test
