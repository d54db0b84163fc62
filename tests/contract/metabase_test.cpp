#include "platform/metabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "contract/facilities.h"
#include "core/err.h"
#include "fakes/failures.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kFile = "WEB1/C$/WINDOWS/system32/inetsrv/MetaBase.xml";

// Two web sites and an FTP site of a server with IIS 6.
constexpr const char* kMetabase = R"(<?xml version ="1.0"?>
<configuration xmlns="urn:microsoft-catalog:XML_Metabase_V64_0">
<MBProperty>
<IIS_ROOT	Location ="/"
	>
</IIS_ROOT>
<IIsComputer	Location ="/LM"
		MaxBandwidth="4294967295"
	>
</IIsComputer>
<IIsFtpService	Location ="/LM/MSFTPSVC"
	>
</IIsFtpService>
<IIsFtpServer	Location ="/LM/MSFTPSVC/1"
		ServerComment="Files"
	>
</IIsFtpServer>
<IIsMimeMap	Location ="/LM/MimeMap"
		MimeMap=".htm,text/html
			.txt,text/plain"
	>
</IIsMimeMap>
<IIsWebService	Location ="/LM/W3SVC"
		AnonymousUserName="IUSR_WEB1"
		AuthFlags="AuthAnonymous | AuthNTLM"
		MaxConnections="2000"
	>
</IIsWebService>
<IIsWebServer	Location ="/LM/W3SVC/1"
		ServerAutoStart="TRUE"
		ServerBindings=":80:
			10.0.0.1:8080:www.example.com"
		ServerComment="Grüße 日本"
		SSLCertHash="00ff10AB"
	>
</IIsWebServer>
<IIsWebVirtualDir	Location ="/LM/W3SVC/1/ROOT"
		AccessFlags="AccessExecute | AccessRead | AccessScript"
		AppRoot="/LM/W3SVC/1/ROOT"
		HttpCustomHeaders="X-Powered-By: nobody"
		IPSecurity="0a0b"
		Path="D:\wwwroot"
	>
</IIsWebVirtualDir>
<IIsWebDirectory	Location ="/LM/W3SVC/1/ROOT/bin"
		AccessFlags="0"
	>
</IIsWebDirectory>
<IIsWebServer	Location ="/LM/W3SVC/10"
		ServerComment="Ten"
	>
</IIsWebServer>
<IIsWebServer	Location ="/LM/W3SVC/2"
	>
</IIsWebServer>
<IIsApplicationPools	Location ="/LM/W3SVC/AppPools"
	>
</IIsApplicationPools>
<IIsWebInfo	Location ="/LM/W3SVC/Info"
		MajorIIsVersionNumber="6"
	>
</IIsWebInfo>
</MBProperty>
</configuration>
)";

std::vector<std::string> textsOf(const Value& list) {
  std::vector<std::string> texts;
  for (const Value& text : list.list()) texts.push_back(text.toText());
  return texts;
}

class MetabaseContract : public testing::Test {
 protected:
  MetabaseContract() { network_.write(kFile, kMetabase); }

  NodeHandle bind(const std::string& below) { return metabase_->getObject("IIS://WEB1" + below); }
  Value get(const std::string& below, const std::string& property) { return bind(below)->get(property); }
  // Commits a value and answers what another handle reads.
  Value putAndGet(const std::string& below, const std::string& property, const Value& value) {
    const NodeHandle node = bind(below);
    node->put(property, value);
    node->setInfo();
    return get(below, property);
  }
  std::vector<std::string> childNames(const std::string& below) {
    std::vector<std::string> names;
    bind(below)->forEachChild([&](const NodeHandle& child) { names.push_back(child->name()); });
    return names;
  }
  // The file as it is when nobody uses the metabase any more.
  std::string closedFile() {
    metabase_.reset();
    return network_.read(kFile);
  }

  TempFolder network_;
  std::unique_ptr<Metabase> metabase_ = systemMetabase(network_);
};

TEST_F(MetabaseContract, ANodeTellsItsClassNamePathAndSchema) {
  const NodeHandle root = bind("/W3SVC/1/ROOT");
  EXPECT_EQ(root->className(), "IIsWebVirtualDir");
  EXPECT_EQ(root->name(), "ROOT");
  EXPECT_EQ(root->adsPath(), "IIS://WEB1/W3SVC/1/ROOT");
  EXPECT_EQ(root->schema(), "IIS://WEB1/schema/IIsWebVirtualDir");
}

TEST_F(MetabaseContract, APathBindsInAnyCase) {
  EXPECT_EQ(metabase_->getObject("IIS://web1/w3svc/1/root")->className(), "IIsWebVirtualDir");
}

TEST_F(MetabaseContract, ABindSaysWhyItFails) {
  for (const auto& [path, number] : {std::pair("IIS://WEB1/W3SVC/3", error_number::kMetabasePathNotFound),
                                     std::pair("IIS://WEB1/NNTPSVC", error_number::kMetabasePathNotFound),
                                     std::pair("IIS://WEB2/W3SVC", error_number::kServerUnavailable),
                                     std::pair("IIS:///W3SVC", error_number::kAdsBadPath)}) {
    const Failure failure = failureOf([&] { metabase_->getObject(path); });
    EXPECT_EQ(hexOf(failure.number()), hexOf(number)) << path;
    EXPECT_GT(failure.description().size(), 10U) << failure.description();
    EXPECT_THAT(failure.description(), testing::Not(HasSubstr("system error"))) << path;
  }
}

TEST_F(MetabaseContract, AHandleStaysGoodWhenALaterBindFails) {
  NodeHandle node = bind("/W3SVC/1");
  EXPECT_NE(failureOf([&] { node = bind("/W3SVC/3"); }).number(), 0);
  EXPECT_EQ(node->name(), "1");
}

TEST_F(MetabaseContract, ChildrenComeInTheOrderOfTheServer) {
  EXPECT_THAT(childNames("/W3SVC"), ElementsAre("1", "10", "2", "AppPools", "Info"));
  EXPECT_THAT(childNames("/W3SVC/2"), IsEmpty());
  std::vector<std::string> paths;
  bind("/W3SVC/1")->forEachChild([&](const NodeHandle& child) { paths.push_back(child->adsPath()); });
  EXPECT_THAT(paths, ElementsAre("IIS://WEB1/W3SVC/1/ROOT"));
}

TEST_F(MetabaseContract, AVisitOfTheChildrenMayChangeThem) {
  bind("/W3SVC")->forEachChild([&](const NodeHandle& child) {
    if (child->name() == "1") bind("/W3SVC")->deleteChild("IIsWebServer", "10");
  });
  EXPECT_THAT(childNames("/W3SVC"), ElementsAre("1", "2", "AppPools", "Info"));
}

TEST_F(MetabaseContract, TheSchemaNamesThePropertiesOfAClass) {
  network_.write("WEB1/C$/WINDOWS/system32/inetsrv/MBSchema.xml",
                 "<MetaData><DatabaseMeta><Collection InternalName=\"IIsWebServer\">"
                 "<Property InheritsPropertiesFrom=\"IIsConfigObject:KeyType\" MetaFlagsEx=\"MANDATORY\"/>"
                 "</Collection></DatabaseMeta></MetaData>");
  const NodeHandle schemaClass = metabase_->getObject(bind("/W3SVC/1")->schema());
  EXPECT_EQ(schemaClass->className(), "Class");
  EXPECT_THAT(schemaClass->optionalProperties(), Contains("ServerComment"));
  EXPECT_THAT(schemaClass->mandatoryProperties(), ElementsAre("KeyType"));
  EXPECT_EQ(numberOfFailure([&] { return bind("/W3SVC/1")->optionalProperties(); }),
            error_number::kAdsPropertyNotSupported);
}

TEST_F(MetabaseContract, EveryTypeOfPropertyReadsAsItsTypeOfValue) {
  EXPECT_EQ(get("/W3SVC/1", "ServerComment"), Value("Grüße 日本"));
  EXPECT_EQ(get("/W3SVC", "MaxConnections"), Value(2000));
  EXPECT_EQ(get("", "MaxBandwidth"), Value(-1)) << "beyond the sign";
  EXPECT_EQ(get("/W3SVC/1", "ServerAutoStart"), Value(true));
  EXPECT_EQ(get("/W3SVC/1/ROOT", "AccessFlags"), Value(517));
  EXPECT_EQ(get("/W3SVC/1/ROOT", "AccessScript"), Value(true));
  EXPECT_EQ(get("/W3SVC/1/ROOT", "AccessWrite"), Value(false));
  EXPECT_EQ(get("/W3SVC/1", "SSLCertHash"), Value(Value::Bytes{0x00, 0xFF, 0x10, 0xAB}));
  EXPECT_THAT(textsOf(get("/W3SVC/1", "ServerBindings")),
              ElementsAre(":80:", "10.0.0.1:8080:www.example.com"));
  EXPECT_EQ(get("/W3SVC/2", "ServerBindings").upperBound(), -1) << "a list that is set nowhere is empty";
}

TEST_F(MetabaseContract, ObjectsReadAsObjectsOfTheirKind) {
  const Value security = get("/W3SVC/1/ROOT", "IPSecurity");
  ASSERT_EQ(security.varType(), kVarObject);
  EXPECT_EQ(security.object()->typeName(), "IPSecurity");
  const Value map = get("/MimeMap", "MimeMap");
  ASSERT_EQ(map.varType(), kVarList);
  ASSERT_EQ(map.upperBound(), 1);
  ASSERT_EQ(map.list()[1].varType(), kVarObject);
  EXPECT_EQ(map.list()[1].object()->typeName(), "MimeMap");
}

TEST_F(MetabaseContract, AValueIsInheritedOrTheSchemasDefault) {
  EXPECT_EQ(get("/W3SVC/1/ROOT/bin", "AnonymousUserName"), Value("IUSR_WEB1"));
  EXPECT_EQ(get("/W3SVC/2", "MaxConnections"), Value(2000));
  EXPECT_EQ(get("/W3SVC/1/ROOT", "AuthNTLM"), Value(true));
  EXPECT_THAT(textsOf(get("/W3SVC/1/ROOT/bin", "HttpCustomHeaders")), ElementsAre("X-Powered-By: nobody"));
  EXPECT_EQ(get("/W3SVC/2", "ConnectionTimeout"), Value(120));
  EXPECT_EQ(get("/W3SVC/2", "Realm"), Value(""));
}

TEST_F(MetabaseContract, APropertyThatTheClassLacksIsNotSupported) {
  for (const char* name : {"ServerBindings", "NoSuchThing"}) {
    const NodeHandle root = bind("/W3SVC/1/ROOT");
    const Failure read = failureOf([&] { root->get(name); });
    EXPECT_EQ(hexOf(read.number()), "80005006");
    EXPECT_THAT(read.description(), HasSubstr(name));
    const Failure written = failureOf([&] { root->put(name, "x"); });
    EXPECT_EQ(hexOf(written.number()), "80005006");
    EXPECT_THAT(written.description(), HasSubstr(name));
  }
}

TEST_F(MetabaseContract, AValueOfTheWrongKindIsRefused) {
  const Failure failure = failureOf([&] { bind("/W3SVC")->put("MaxConnections", "many"); });
  EXPECT_EQ(hexOf(failure.number()), "80005008");
  EXPECT_THAT(failure.description(), HasSubstr("MaxConnections"));
}

TEST_F(MetabaseContract, APutIsSeenByOthersOnlyAfterSetInfo) {
  const NodeHandle site = bind("/W3SVC/1");
  site->put("ServerComment", "new");
  EXPECT_EQ(site->get("ServerComment"), Value("new"));
  EXPECT_EQ(get("/W3SVC/1", "ServerComment"), Value("Grüße 日本"));
  site->setInfo();
  EXPECT_EQ(get("/W3SVC/1", "ServerComment"), Value("new"));
}

TEST_F(MetabaseContract, EveryTypeOfValueIsStored) {
  EXPECT_EQ(putAndGet("/W3SVC/2", "ServerComment", "Ünter <&> 木"), Value("Ünter <&> 木"));
  EXPECT_EQ(putAndGet("/W3SVC/2", "ServerComment", ""), Value(""));
  EXPECT_EQ(putAndGet("/W3SVC/2", "MaxConnections", 70000), Value(70000));
  EXPECT_EQ(putAndGet("/W3SVC/2", "MaxConnections", std::int16_t{7}), Value(7));
  EXPECT_EQ(putAndGet("/W3SVC/2", "MaxConnections", 4294967295.0), Value(-1));
  EXPECT_EQ(putAndGet("/W3SVC/2", "ServerAutoStart", true), Value(true));
  EXPECT_EQ(putAndGet("/W3SVC/2", "ServerAutoStart", false), Value(false));
  EXPECT_EQ(putAndGet("/W3SVC/2", "SSLCertHash", Value::Bytes{1, 0, 255}), Value(Value::Bytes{1, 0, 255}));
  EXPECT_THAT(textsOf(putAndGet("/W3SVC/2", "ServerBindings", Value::List{":81:", ":82:a"})),
              ElementsAre(":81:", ":82:a"));
  EXPECT_EQ(putAndGet("/W3SVC/2", "ServerBindings", Value::List{}).upperBound(), -1);
}

TEST_F(MetabaseContract, ATextOfAnyLengthIsStored) {
  const std::string longText(100000, 'x');
  EXPECT_EQ(putAndGet("/W3SVC/2", "ServerComment", longText), Value(longText));
  Value::List many;
  for (int i = 0; i < 2000; ++i) many.emplace_back(":" + std::to_string(i) + ":");
  EXPECT_EQ(putAndGet("/W3SVC/2", "ServerBindings", many).upperBound(), 1999);
}

TEST_F(MetabaseContract, AFlagThatIsPutChangesItsWord) {
  EXPECT_EQ(putAndGet("/W3SVC/1/ROOT", "AccessWrite", true), Value(true));
  EXPECT_EQ(get("/W3SVC/1/ROOT", "AccessFlags"), Value(519));
}

TEST_F(MetabaseContract, AnObjectIsCarriedFromNodeToNode) {
  putAndGet("/W3SVC/1/ROOT/bin", "IPSecurity", get("/W3SVC/1/ROOT", "IPSecurity"));
  putAndGet("/W3SVC/2", "MimeMap", get("/MimeMap", "MimeMap"));
  const std::string file = closedFile();
  const std::size_t bin = file.find("/LM/W3SVC/1/ROOT/bin");
  EXPECT_THAT(file.substr(bin, file.find("</", bin) - bin), HasSubstr("IPSecurity=\"0a0b\""));
  const std::size_t two = file.find("\"/LM/W3SVC/2\"");
  EXPECT_THAT(file.substr(two, file.find("</", two) - two), HasSubstr(".txt,text/plain"));
}

TEST_F(MetabaseContract, ANodeExistsOnlyAfterSetInfo) {
  NodeHandle site = bind("/W3SVC")->create("IIsWebServer", "3");
  EXPECT_EQ(numberOfFailure([&] { return bind("/W3SVC/3"); }), error_number::kMetabasePathNotFound);
  site->put("ServerComment", "Three");
  site->setInfo();
  site.reset();
  EXPECT_EQ(bind("/W3SVC/3")->className(), "IIsWebServer");
  EXPECT_EQ(get("/W3SVC/3", "ServerComment"), Value("Three"));
  bind("/W3SVC/3")->create("IIsWebVirtualDir", "ROOT")->setInfo();
  EXPECT_THAT(childNames("/W3SVC/3"), ElementsAre("ROOT"));
  EXPECT_THAT(closedFile(), HasSubstr("/LM/W3SVC/3/ROOT"));
}

TEST_F(MetabaseContract, ANameThatIsTakenIsRefusedBySetInfo) {
  const NodeHandle site = bind("/W3SVC")->create("IIsWebServer", "1");
  const Failure failure = failureOf([&] { site->setInfo(); });
  EXPECT_EQ(hexOf(failure.number()), "8000500E");
  EXPECT_THAT(failure.description(), HasSubstr("exists already"));
}

TEST_F(MetabaseContract, ANodeGoesWithAllThatLiesBelowIt) {
  bind("/W3SVC")->deleteChild("IIsWebServer", "1");
  EXPECT_EQ(numberOfFailure([&] { return bind("/W3SVC/1/ROOT/bin"); }), error_number::kMetabasePathNotFound);
  const Failure again = failureOf([&] { bind("/W3SVC")->deleteChild("IIsWebServer", "1"); });
  EXPECT_EQ(hexOf(again.number()), "80070003");
  EXPECT_THAT(again.description(), HasSubstr("/LM/W3SVC/1"));
}

TEST_F(MetabaseContract, DataPathsAreThoseOfTheNodesThatHoldTheProperty) {
  const NodeHandle site = bind("/W3SVC/1");
  EXPECT_THAT(site->getDataPaths("AccessFlags", Value()),
              ElementsAre("IIS://WEB1/W3SVC/1/ROOT", "IIS://WEB1/W3SVC/1/ROOT/bin"));
  EXPECT_THAT(site->getDataPaths("ServerComment", 0), ElementsAre("IIS://WEB1/W3SVC/1"));
  EXPECT_THAT(site->getDataPaths("AnonymousUserName", Value()), IsEmpty()) << "inherited only";
  EXPECT_EQ(hexOf(failureOf([&] { site->getDataPaths("NoSuchThing", Value()); }).number()), "80005006");
  EXPECT_EQ(hexOf(failureOf([&] { site->getDataPaths("ServerBindings", 1); }).number()), "800CC801");
}

TEST_F(MetabaseContract, ADirectoryBecomesAnApplication) {
  bind("/W3SVC/1/ROOT/bin")->appCreate(true);
  EXPECT_EQ(get("/W3SVC/1/ROOT/bin", "AppIsolated"), Value(0));
  EXPECT_EQ(get("/W3SVC/1/ROOT/bin", "AppRoot"), Value("/LM/W3SVC/1/ROOT/bin"));
  bind("/W3SVC/1/ROOT/bin")->appCreate(false);
  EXPECT_EQ(get("/W3SVC/1/ROOT/bin", "AppIsolated"), Value(1));
  bind("/W3SVC/1/ROOT")->appCreate2(2);
  EXPECT_EQ(get("/W3SVC/1/ROOT", "AppIsolated"), Value(2));
}

TEST_F(MetabaseContract, AnApplicationGetsItsPool) {
  const NodeHandle bin = bind("/W3SVC/1/ROOT/bin");
  EXPECT_EQ(hexOf(failureOf([&] { bin->appCreate3(2, "Own", false); }).number()), "80070003");
  bin->appCreate3(2, "Own", true);
  EXPECT_EQ(get("/W3SVC/1/ROOT/bin", "AppPoolId"), Value("Own"));
  EXPECT_EQ(bind("/W3SVC/AppPools/Own")->className(), "IIsApplicationPool");
}

TEST_F(MetabaseContract, WhatIsNoDirectoryIsNoApplication) {
  const Failure failure = failureOf([&] { bind("/W3SVC/1")->appCreate(true); });
  EXPECT_EQ(failure.number(), error_number::kNotSupportedByObject);
  EXPECT_NE(failure.description(), "");
}

TEST_F(MetabaseContract, ASiteStartsAndOnlyASite) {
  bind("/W3SVC/1")->start();
  EXPECT_EQ(get("/W3SVC/1", "ServerState"), Value(2));
  bind("/MSFTPSVC/1")->start();
  EXPECT_EQ(numberOfFailure([&] {
              bind("/W3SVC/1/ROOT")->start();
              return 0;
            }),
            error_number::kNotSupportedByObject);
}

TEST_F(MetabaseContract, WhatIsOnlyReadLeavesTheFileAsItIs) {
  childNames("/W3SVC");
  get("/W3SVC/1", "ServerComment");
  EXPECT_EQ(closedFile(), kMetabase);
}

}  // namespace
}  // namespace trelvin::test
