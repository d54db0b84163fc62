#include "server_fixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace trelvin::test {

namespace {

constexpr std::string_view kHead =
    "<?xml version =\"1.0\"?>\n"
    "<configuration xmlns=\"urn:microsoft-catalog:XML_Metabase_V64_0\">\n"
    "<MBProperty>\n";
constexpr std::string_view kFoot = "</MBProperty>\n</configuration>\n";

constexpr std::string_view kGlobal = R"(<IIS_Global	Location ="."
		BINSchemaTimeStamp="00aa11bb22cc33dd"
		ChangeNumber="42"
		HistoryMajorVersionNumber="7"
	>
</IIS_Global>
<IIS_ROOT	Location ="/"
		AdminACL="SECRET"
	>
</IIS_ROOT>
<IIsComputer	Location ="/LM"
		EnableHistory="1"
		MaxBandwidth="4294967295"
	>
</IIsComputer>
<IIsConfigObject	Location ="/LM/IISADMIN"
	>
</IIsConfigObject>
<IIsConfigObject	Location ="/LM/IISADMIN/EXTENSIONS"
	>
	<Custom
		Name="MD_IISADMIN_EXTENSIONS"
		ID="1028"
		Value="{11111111-2222-3333-4444-555555555555}"
		Type="MULTISZ"
		UserType="IIS_MD_UT_SERVER"
		Attributes="NO_ATTRIBUTES"
	/>
</IIsConfigObject>
<IIsFtpService	Location ="/LM/MSFTPSVC"
		AllowAnonymous="TRUE"
		ConnectionTimeout="120"
	>
</IIsFtpService>
<IIsFtpServer	Location ="/LM/MSFTPSVC/1"
		ServerBindings=":21:"
		ServerComment="Default FTP Site"
	>
</IIsFtpServer>
<IIsFtpVirtualDir	Location ="/LM/MSFTPSVC/1/ROOT"
		AccessFlags="AccessRead"
		Path="d:\ftproot"
	>
</IIsFtpVirtualDir>
<IIsMimeMap	Location ="/LM/MimeMap"
		MimeMap=".htm,text/html
			.txt,text/plain"
	>
</IIsMimeMap>
)";

constexpr std::string_view kWebService = R"(<IIsWebService	Location ="/LM/W3SVC"
		AccessFlags="AccessRead"
		AnonymousUserName="IUSR_WEB1"
		AnonymousUserPass="SECRET"
		AppPoolId="DefaultAppPool"
		AuthFlags="AuthAnonymous | AuthNTLM"
		DirBrowseFlags="DirBrowseShowDate | DirBrowseShowTime | DirBrowseShowSize | DirBrowseShowExtension | DirBrowseShowLongDate | EnableDefaultDoc"
		HttpErrors="400,*,FILE,d:\help\400.htm
			404,2,URL,/missing.asp"
		MaxConnections="2000"
		ScriptMaps=".asp,c:\asp.dll,5,GET,HEAD,POST
			.idq,c:\idq.dll,7,GET"
		ServerComment="Web service"
	>
	<Custom
		Name="MD_ISM_ACCESS_CHECK"
		ID="6269"
		Value="4294967295"
		Type="DWORD"
		UserType="IIS_MD_UT_FILE"
		Attributes="NO_ATTRIBUTES"
	/>
</IIsWebService>
<IIsWebServer	Location ="/LM/W3SVC/1"
		ServerAutoStart="TRUE"
		ServerBindings=":80:
			10.0.0.1:8080:www.example.com"
		ServerComment="Tom &amp; Jerry&#39;s &quot;best&quot; &lt;site&gt;"
	>
</IIsWebServer>
<IIsFilters	Location ="/LM/W3SVC/1/Filters"
		AdminACL="SECRET"
		FilterLoadOrder="rewrite"
	>
</IIsFilters>
<IIsCertMapper	Location ="/LM/W3SVC/1/IIsCertMapper"
	>
</IIsCertMapper>
<IIsWebVirtualDir	Location ="/LM/W3SVC/1/ROOT"
		AccessFlags="AccessExecute | AccessRead | AccessScript"
		AppFriendlyName="Default Application"
		AppIsolated="2"
		AppRoot="/LM/W3SVC/1/ROOT"
		HttpCustomHeaders="X-Powered-By: nobody"
		MaxRequestEntityAllowed="4294967295"
		Path="d:\inetpub\wwwroot"
		UNCPassword="SECRET"
	>
</IIsWebVirtualDir>
<!-- put here by hand, to stay -->
<IIsWebDirectory	Location ="/LM/W3SVC/1/ROOT/bin"
		AccessFlags="0"
		AuthPersistence=""
	>
</IIsWebDirectory>
<IIsConfigObject	Location ="/LM/W3SVC/1/ROOT/plain"
	>
</IIsConfigObject>
<IIsWebVirtualDir	Location ="/LM/W3SVC/1/ROOT/Straße"
		AccessFlags="513"
		IPSecurity="0a0b"
		Path="\\server\Ünter"
	>
</IIsWebVirtualDir>
<IIsWebServer	Location ="/LM/W3SVC/10"
		ServerComment="Ten"
	>
</IIsWebServer>
<IIsWebServer	Location ="/LM/W3SVC/1876543210"
		SSLCertHash="00ff10AB"
		ServerComment="Hashed"
	>
	<Custom
		Name="UnknownName_2166"
		ID="2166"
		Value="1"
		Type="DWORD"
		UserType="IIS_MD_UT_SERVER"
		Attributes="NO_ATTRIBUTES"
	/>
</IIsWebServer>
<IIsWebServer	Location ="/LM/W3SVC/2"
	>
</IIsWebServer>
<IIsApplicationPools	Location ="/LM/W3SVC/AppPools"
	>
</IIsApplicationPools>
<IIsApplicationPool	Location ="/LM/W3SVC/AppPools/DefaultAppPool"
	>
</IIsApplicationPool>
<IIsWebInfo	Location ="/LM/W3SVC/Info"
		MajorIIsVersionNumber="6"
		MinorIIsVersionNumber="0"
	>
</IIsWebInfo>
<IIsConfigObject	Location ="/LM/W3SVC/Info/Templates"
	>
</IIsConfigObject>
)";

}  // namespace

std::string metabaseOf(std::string_view elements) {
  return std::string(kHead) + std::string(elements) + std::string(kFoot);
}

std::string sampleMetabase() {
  return replaceAll(metabaseOf(std::string(kGlobal) + std::string(kWebService)), "SECRET", kSecret);
}

std::vector<std::string> textsOf(const Value& value) {
  std::vector<std::string> texts;
  for (const Value& item : value.list()) texts.push_back(item.toText());
  return texts;
}

std::vector<std::string> childNames(const NodeHandle& node) {
  std::vector<std::string> names;
  node->forEachChild([&](const NodeHandle& child) { names.push_back(child->name()); });
  return names;
}

std::string MetabaseFileTest::textOf(std::string_view name) const {
  std::ostringstream text;
  text << std::ifstream(folder_ / name, std::ios::binary).rdbuf();
  return text.str();
}

std::vector<std::string> MetabaseFileTest::folderNames() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::unique_ptr<Metabase> MetabaseFileTest::makeMetabase() const {
  const std::string path = filePath();
  return makeFileMetabase([path](std::string_view server) {
    return equalsIgnoringCase(server, "Web1") ? std::optional(path) : std::nullopt;
  });
}

Metabase& MetabaseFileTest::metabase() {
  if (metabase_ == nullptr) metabase_ = makeMetabase();
  return *metabase_;
}

void MetabaseFileTest::putAndSet(std::string_view below, std::string_view property, const Value& value) {
  const NodeHandle node = bind(below);
  node->put(property, value);
  node->setInfo();
}

}  // namespace trelvin::test
