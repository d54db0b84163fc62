#include "platform/windows/adsi/adsi_metabase.h"

#include <gtest/gtest.h>

#include "core/err.h"
#include "fakes/failures.h"
#include "fakes/temp_folder.h"
#include "fakes/windows/directory_service.h"
#include "platform/windows/adsi/com.h"
#include "platform/windows/adsi/late_bound.h"
#include "platform/windows/wide_text.h"

namespace trelvin::test {
namespace {

constexpr const char* kService = "IIS://WEB1/W3SVC";

class AdsiMetabase : public testing::Test {
 protected:
  AdsiMetabase() {
    network_.write("WEB1/C$/WINDOWS/system32/inetsrv/MetaBase.xml",
                   "<configuration xmlns=\"urn:microsoft-catalog:XML_Metabase_V64_0\"><MBProperty>"
                   "<IIsComputer Location=\"/LM\"/><IIsWebService Location=\"/LM/W3SVC\"/>"
                   "<IIsWebServer Location=\"/LM/W3SVC/1\"/><IIsWebServer Location=\"/LM/W3SVC/2\"/>"
                   "</MBProperty></configuration>");
  }

  // The object itself, without the program's handle.
  static LateBound bound(const char* path) {
    ComPtr<IDispatch> object;
    requireSuccess(
        ::ADsGetObject(wideText(path).c_str(), IID_IDispatch, reinterpret_cast<void**>(object.put())));
    return LateBound(std::move(object));
  }

  TempFolder network_;
  std::unique_ptr<Metabase> metabase_ = makeDirectoryService(network_.path());
};

TEST_F(AdsiMetabase, HoldsOneObjectForEachHandleAndLetsItGoWithTheHandle) {
  EXPECT_EQ(liveDirectoryObjects(), 0);
  NodeHandle service = metabase_->getObject(kService);
  EXPECT_EQ(liveDirectoryObjects(), 1);
  std::vector<NodeHandle> sites;
  service->forEachChild([&](const NodeHandle& site) { sites.push_back(site); });
  EXPECT_EQ(liveDirectoryObjects(), 3);
  sites.clear();
  EXPECT_EQ(liveDirectoryObjects(), 1);
  service->get("IPSecurity");
  EXPECT_EQ(liveDirectoryObjects(), 1) << "the value was an object, too";
  service.reset();
  EXPECT_EQ(liveDirectoryObjects(), 0);
}

TEST_F(AdsiMetabase, HoldsNothingAfterCallsThatFail) {
  NodeHandle service = metabase_->getObject(kService);
  EXPECT_NE(numberOfFailure([&] { return metabase_->getObject("IIS://WEB1/W3SVC/9"); }), 0);
  EXPECT_NE(numberOfFailure([&] { return service->get("NoSuchThing"); }), 0);
  EXPECT_NE(numberOfFailure([&] { return service->create("NoSuchClass", "3"); }), 0);
  EXPECT_EQ(liveDirectoryObjects(), 1);
}

TEST_F(AdsiMetabase, FailsToBindWithoutAProviderOnTheMachine) {
  removeDirectoryService();
  const std::int32_t number = numberOfFailure([&] { return metabase_->getObject(kService); });
  registerDirectoryService();
  EXPECT_EQ(number, error_number::kCannotCreateObject);
  EXPECT_EQ(metabase_->getObject(kService)->name(), "W3SVC") << "it is there again";
}

TEST_F(AdsiMetabase, AMemberThatTheObjectLacksIsNotSupported) {
  const LateBound service = bound(kService);
  EXPECT_EQ(numberOfFailure([&] { return service.property("NoSuchMember"); }),
            error_number::kNotSupportedByObject);
}

// As a real object does it, the tests' own tells calls from reads.
TEST_F(AdsiMetabase, AMemberIsReachedAsWhatItIsOnly) {
  const LateBound service = bound(kService);
  EXPECT_EQ(numberOfFailure([&] { return service.call("Name"); }), error_number::kNotSupportedByObject);
  EXPECT_EQ(numberOfFailure([&] { return service.property("SetInfo"); }),
            error_number::kNotSupportedByObject);
}

TEST_F(AdsiMetabase, NoObjectIsAskedForTheNumberOfAMemberThatAnotherOneOfItsKindHasTold) {
  const auto useAll = [this](const char* path) {
    const NodeHandle site = metabase_->getObject(path);
    for (const std::string& told : {site->className(), site->name(), site->adsPath(), site->schema()}) {
      EXPECT_NE(told, "");
    }
    site->put("ServerComment", "Shop");
    site->setInfo();
    EXPECT_EQ(site->get("ServerComment"), Value("Shop"));
    EXPECT_EQ(site->getDataPaths("ServerComment", Value()), std::vector<std::string>{path});
    site->create("IIsWebVirtualDir", "ROOT")->setInfo();
    site->deleteChild("IIsWebVirtualDir", "ROOT");
  };
  useAll("IIS://WEB1/W3SVC/1");
  const long asked = directoryNameLookups();
  useAll("IIS://WEB1/W3SVC/2");
  EXPECT_EQ(directoryNameLookups(), asked);
}

TEST_F(AdsiMetabase, ObjectsOfTheSchemaTellTheirOwnNumbers) {
  const NodeHandle site = metabase_->getObject("IIS://WEB1/W3SVC/1");
  EXPECT_EQ(site->name(), "1");
  const NodeHandle schema = metabase_->getObject(site->schema());
  EXPECT_EQ(schema->name(), "IIsWebServer");
  EXPECT_FALSE(schema->optionalProperties().texts().empty());
  EXPECT_EQ(site->name(), "1");
}

TEST_F(AdsiMetabase, AMemberThatComesWithTheClassOfANodeIsAskedForEachTime) {
  for (const char* path : {"IIS://WEB1/W3SVC/1", "IIS://WEB1/W3SVC/2"}) {
    const NodeHandle site = metabase_->getObject(path);
    const long before = directoryNameLookups();
    site->start();
    EXPECT_EQ(directoryNameLookups(), before + 1);
  }
}

TEST_F(AdsiMetabase, AnObjectOfAnotherKindIsNoMember) {
  const LateBound service = bound(kService);
  EXPECT_EQ(numberOfFailure([&] { return service.callForObject("Get", {"MaxConnections"}).isSet(); }),
            error_number::kTypeMismatch);
}

}  // namespace
}  // namespace trelvin::test
