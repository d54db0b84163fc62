#include <algorithm>

#include "server_fixture.h"

namespace trelvin::test {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class TheSchema : public MetabaseFileTest {
 protected:
  void pretendVersion(const std::string& version) {
    writeFile(replaceAll(sampleMetabase(), "MajorIIsVersionNumber=\"6\"",
                         "MajorIIsVersionNumber=\"" + version + "\""));
  }
  std::vector<std::string> propertiesOf(const std::string& name) {
    return bind("/Schema/" + name)->optionalProperties().texts();
  }
};

std::vector<std::string> firstOf(const std::vector<std::string>& names, std::size_t count) {
  return {names.begin(), names.begin() + static_cast<std::ptrdiff_t>(std::min(count, names.size()))};
}

TEST_F(TheSchema, IsBoundByThePathThatANodeGives) {
  const NodeHandle site = bind("/W3SVC/1");
  EXPECT_EQ(site->schema(), "IIS://Web1/schema/IIsWebServer");
  const NodeHandle schema = metabase().getObject(site->schema());
  EXPECT_EQ(schema->className(), "Class");
  EXPECT_EQ(schema->name(), "IIsWebServer");
  EXPECT_THAT(schema->mandatoryProperties(), IsEmpty());
  EXPECT_THAT(firstOf(schema->optionalProperties().texts(), 4),
              ElementsAre("ContentIndexed", "KeyType", "ServerState", "ServerComment"));
}

TEST_F(TheSchema, ListsAWordsFlagsBehindIt) {
  const std::vector<std::string> names = propertiesOf("IIsWebVirtualDir");
  const auto word = std::find(names.begin(), names.end(), "AccessFlags");
  ASSERT_NE(word, names.end());
  EXPECT_THAT(std::vector<std::string>(word, word + 4),
              ElementsAre("AccessFlags", "AccessExecute", "AccessSource", "AccessRead"));
  EXPECT_EQ(names.size(), 145U);
}

TEST_F(TheSchema, EveryListedPropertyCanBeRead) {
  for (const char* path :
       {"/W3SVC", "/W3SVC/1", "/W3SVC/1/ROOT", "/W3SVC/1/ROOT/bin", "/MSFTPSVC/1", "/MSFTPSVC/1/ROOT",
        "/W3SVC/AppPools/DefaultAppPool", "/W3SVC/1/Filters", "/MimeMap"}) {
    const NodeHandle node = bind(path);
    for (const std::string& name : metabase().getObject(node->schema())->optionalProperties()) {
      EXPECT_EQ(numberOf([&] { node->get(name); }), 0) << path << " " << name;
    }
  }
}

TEST_F(TheSchema, EveryPropertyCanBePutBackAsItWasRead) {
  for (const char* path : {"/W3SVC", "/W3SVC/1", "/W3SVC/1/ROOT", "/W3SVC/1/ROOT/Straße", "/MSFTPSVC/1"}) {
    for (const std::string& name : metabase().getObject(bind(path)->schema())->optionalProperties()) {
      const NodeHandle node = bind(path);
      const Value before = node->get(name);
      node->put(name, before);
      node->setInfo();
      const Value after = bind(path)->get(name);
      EXPECT_EQ(after.varType(), before.varType()) << path << " " << name;
      if (before.varType() == kVarObject || name == "MimeMap") continue;  // objects are equal by identity
      EXPECT_EQ(after, before) << path << " " << name;
    }
  }
  closeMetabase();
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("AccessFlags"), Value(517)) << "what was written can be read";
  EXPECT_THAT(fileText(), ::testing::HasSubstr("UNCPassword=\"" + std::string(kSecret))) << "secrets stay";
}

TEST_F(TheSchema, IsBoundByClassAndByProperty) {
  EXPECT_EQ(bind("/schema/iiswebserver")->name(), "IIsWebServer");
  EXPECT_EQ(bind("/Schema/ServerBindings")->get("Syntax"), Value("LIST"));
  EXPECT_EQ(bind("/Schema/AccessRead")->get("Syntax"), Value("BOOLEAN"));
  EXPECT_EQ(bind("/Schema/MaxConnections")->get("Syntax"), Value("INTEGER"));
  EXPECT_EQ(numberOf([&] { bind("/Schema/IIsNothing"); }), error_number::kMetabasePathNotFound);
}

TEST_F(TheSchema, ListsPropertiesOfClassObjectsOnly) {
  EXPECT_EQ(numberOf([&] { static_cast<void>(bind("/W3SVC/1")->optionalProperties()); }),
            error_number::kAdsPropertyNotSupported);
  EXPECT_EQ(numberOf([&] { static_cast<void>(bind("/W3SVC/1")->mandatoryProperties()); }),
            error_number::kAdsPropertyNotSupported);
  EXPECT_EQ(numberOf([&] { static_cast<void>(bind("/Schema/Path")->optionalProperties()); }),
            error_number::kAdsPropertyNotSupported);
}

TEST_F(TheSchema, CannotBeChanged) {
  const NodeHandle schema = bind("/Schema/IIsWebServer");
  EXPECT_EQ(numberOf([&] { schema->put("OptionalProperties", "x"); }), error_number::kNotSupportedByObject);
  EXPECT_EQ(numberOf([&] { schema->setInfo(); }), error_number::kNotSupportedByObject);
}

TEST_F(TheSchema, OfVersionFourHasWhatIis4Had) {
  pretendVersion("4");
  const std::vector<std::string> names = propertiesOf("IIsWebVirtualDir");
  EXPECT_THAT(names, Contains("KeyType"));
  EXPECT_THAT(names, Contains("PutReadSize")) << "dropped later";
  EXPECT_THAT(names, Not(Contains("AppPoolId")));
  EXPECT_THAT(names, Not(Contains("AspSessionMax")));
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->get("AppPoolId"); }),
            error_number::kAdsPropertyNotSupported);
  EXPECT_EQ(bind("/W3SVC/1")->get("AppIsolated"), Value(0)) << "its own default";
}

TEST_F(TheSchema, OfVersionFiveHasWhatCameWithFive) {
  pretendVersion("5");
  const std::vector<std::string> names = propertiesOf("IIsWebVirtualDir");
  EXPECT_THAT(names, Contains("PutReadSize"));
  EXPECT_THAT(names, Contains("AspSessionMax"));
  EXPECT_THAT(names, Not(Contains("AppPoolId")));
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AspSessionTimeout"), Value(20));
  EXPECT_EQ(numberOf([&] { bind("/Schema/IIsApplicationPool"); }), error_number::kMetabasePathNotFound);
}

TEST_F(TheSchema, OfVersionSixHasDroppedWhatOnlyOlderOnesHad) {
  EXPECT_EQ(numberOf([&] { bind("/Schema/AspThreadGateLoadHigh"); }), error_number::kMetabasePathNotFound);
  EXPECT_EQ(bind("/W3SVC/2")->get("AppIsolated"), Value(2));
  EXPECT_EQ(bind("/W3SVC/2")->get("AspSessionTimeout"), Value(10));
}

TEST_F(TheSchema, TakesTheVersionFromTheFtpServiceWhereThereIsNoWebService) {
  writeFile(metabaseOf(
      "<IIsFtpService\tLocation =\"/LM/MSFTPSVC\"\n\t>\n</IIsFtpService>\n"
      "<IIsFtpInfo\tLocation =\"/LM/MSFTPSVC/Info\"\n\t\tMajorIIsVersionNumber=\"5\"\n\t>\n</IIsFtpInfo>\n"));
  EXPECT_EQ(numberOf([&] { bind("/Schema/AppPoolId"); }), error_number::kMetabasePathNotFound);
}

constexpr std::string_view kSchemaHead =
    "<?xml version =\"1.0\"?>\n<MetaData xmlns=\"x-urn:microsoft-catalog:MetaData_V7\">\n"
    "<DatabaseMeta InternalName =\"METABASE\">\n";
constexpr std::string_view kSchemaFoot = "</DatabaseMeta>\n</MetaData>\n";

class ASchemaFile : public TheSchema {
 protected:
  void writeSchema(std::string_view collections) {
    folder_.write("MBSchema.xml",
                  std::string(kSchemaHead) + std::string(collections) + std::string(kSchemaFoot));
  }
};

TEST_F(ASchemaFile, AddsPropertiesAndClasses) {
  writeSchema(R"(<Collection InternalName ="IIsConfigObject">
  <Property InternalName ="HouseColour" ID="70001" Type="DWORD" UserType="IIS_MD_UT_SERVER" Attributes="INHERIT" DefaultValue="7">
    <Flag InternalName ="ColourRed" Value="1" ID="70002"/>
    <Flag InternalName ="ColourBlue" Value="4" ID="70003"/>
  </Property>
</Collection>
<Collection InternalName ="IIsWebServer" InheritsPropertiesFrom="MetabaseBaseClass">
  <Property InheritsPropertiesFrom="IIsConfigObject:HouseColour"/>
</Collection>
<Collection InternalName ="IIsHouse" MetaFlagsEx="CONTAINERCLASS" ContainerClassList="IIsObject, IIsHouse">
  <Property InheritsPropertiesFrom="IIsConfigObject:KeyType"/>
  <Property InheritsPropertiesFrom="IIsConfigObject:HouseColour" MetaFlagsEx="| MANDATORY"/>
</Collection>
)");
  EXPECT_EQ(bind("/W3SVC/1")->get("HouseColour"), Value(7));
  EXPECT_EQ(bind("/W3SVC/1")->get("ColourBlue"), Value(true));
  putAndSet("/W3SVC/1", "ColourRed", false);
  EXPECT_THAT(bind("/Schema/IIsHouse")->mandatoryProperties(), ElementsAre("HouseColour"));
  EXPECT_THAT(bind("/Schema/IIsHouse")->optionalProperties(),
              ElementsAre("KeyType", "ColourRed", "ColourBlue"));
  EXPECT_THAT(propertiesOf("IIsWebServer"), Contains("ServerComment")) << "what is built in stays";
}

TEST_F(ASchemaFile, ChangesADefault) {
  writeSchema(
      "<Collection InternalName =\"IIsConfigObject\">\n"
      "<Property InternalName =\"ConnectionTimeout\" ID=\"1013\" Type=\"DWORD\" "
      "DefaultValue=\"900\"/>\n</Collection>\n");
  EXPECT_EQ(bind("/W3SVC/1")->get("ConnectionTimeout"), Value(900));
}

TEST_F(ASchemaFile, ThatIsBrokenIsNamedWithItsPlace) {
  folder_.write("MBSchema.xml", "<MetaData>\n  <DatabaseMeta>\n</MetaData>");
  const std::optional<Failure> failure = failureOf([&] { bind("/W3SVC"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), error_number::kMetabaseUnreadable);
  EXPECT_THAT(failure->description(), ::testing::HasSubstr("MBSchema.xml, line 3"));
}

TEST_F(ASchemaFile, ThatNamesAPropertyWithoutDefinitionIsRefused) {
  writeSchema(
      "<Collection InternalName =\"IIsWebServer\">\n<Property "
      "InheritsPropertiesFrom=\"IIsConfigObject:Nowhere\"/>\n"
      "</Collection>\n");
  const std::optional<Failure> failure = failureOf([&] { bind("/W3SVC"); });
  ASSERT_TRUE(failure);
  EXPECT_THAT(failure->description(), ::testing::HasSubstr("line 5, column 1"));
  EXPECT_THAT(failure->description(), ::testing::HasSubstr("Nowhere"));
}

}  // namespace trelvin::test
