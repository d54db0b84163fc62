#include <map>
#include <memory>

#include "desktop_win32/desktop_win32_test.h"
#include "platform/windows/adsi/com.h"
#include "platform/windows/wide_text.h"
#include "window/frm_main.h"
// clang-format off
#include <initguid.h>
#include <oleacc.h>  // stands on Windows' own header
// clang-format on

namespace trelvin::test {
namespace {

class SpokenNamesTest : public DesktopWin32Test {
 protected:
  SpokenNamesTest() { show(frmMain); }

  // What a screen reader is told.
  static std::string nameOf(const std::string& control) {
    IAccessible* object = nullptr;
    if (FAILED(AccessibleObjectFromWindow(main(control), static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible,
                                          reinterpret_cast<void**>(&object)))) {
      return "<no object>";
    }
    VARIANT self{};
    self.vt = VT_I4;
    BSTR name = nullptr;
    object->get_accName(self, &name);
    const std::string text = name == nullptr ? std::string() : utf8Text(name);
    SysFreeString(name);
    object->Release();
    return text;
  }
  // Wine has the service, but does not carry it out.
  static bool keepsNames() {
    IAccPropServices* services = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&services)))) {
      return false;
    }
    const HRESULT result = services->SetHwndPropStr(main("lstOutput"), static_cast<DWORD>(OBJID_CLIENT),
                                                    CHILDID_SELF, PROPID_ACC_NAME, L"Output");
    services->Release();
    return SUCCEEDED(result);
  }

 private:
  Apartment apartment_;
};

TEST_F(SpokenNamesTest, ButtonsAndOptionsAreCalledByTheirCaptions) {
  EXPECT_EQ(nameOf("cmdPopulate"), "List Sites");
  EXPECT_EQ(nameOf("optExportWeb"), "Web");
}

TEST_F(SpokenNamesTest, TextBoxesAreCalledByTheWordsInFrontOfThem) {
  EXPECT_EQ(nameOf("txtImportServer"), "Server");
  EXPECT_EQ(nameOf("txtExportServer"), "Export Server");
}

TEST_F(SpokenNamesTest, ListsAreCalledByTheFrameAroundThem) {
  if (!keepsNames()) GTEST_SKIP() << "this Windows takes no names for its controls";
  EXPECT_EQ(nameOf("lstSites"), "Available Sites");
  EXPECT_EQ(nameOf("lstDirectories"), "New Directories");
}

// Keeps what is annotated, as Windows does.
class RecordedAnnotations final : public desktop::Annotations {
 public:
  void setName(HWND window, const std::string& name) override { names[window] = name; }
  void setDescription(HWND window, const std::string& description) override {
    descriptions[window] = description;
    ++descriptionsSet;
  }
  void clear(HWND window) override {
    areWindowsThere = areWindowsThere && IsWindow(window) != FALSE;
    names.erase(window);
    descriptions.erase(window);
  }

  std::map<HWND, std::string> names;
  std::map<HWND, std::string> descriptions;
  int descriptionsSet = 0;
  bool areWindowsThere = true;
};

class AnnotationsTest : public DesktopWin32Test {
 protected:
  explicit AnnotationsTest(
      std::shared_ptr<RecordedAnnotations> recorded = std::make_shared<RecordedAnnotations>())
      : DesktopWin32Test(recorded), annotations(*recorded) {
    show(frmMain);
  }
  [[nodiscard]] std::string nameOf(const std::string& control) const {
    const auto name = annotations.names.find(main(control));
    return name == annotations.names.end() ? "<left to Windows>" : name->second;
  }

  RecordedAnnotations& annotations;  // the desktop holds it
};

TEST_F(AnnotationsTest, WhatHasNoCaptionOfItsOwnGetsItsNameFromWhatIsAroundIt) {
  EXPECT_EQ(nameOf("lstSites"), "Available Sites");
  EXPECT_EQ(nameOf("lstDirectories"), "New Directories");
  EXPECT_EQ(nameOf("txtImportServer"), "Server");
}

TEST_F(AnnotationsTest, AButtonIsCalledByTheCaptionThatItHasJustNow) {
  for (const char* const each : {"cmdExportServer", "cmdExportFile", "optExportWeb", "chkCopyFiles"}) {
    EXPECT_EQ(nameOf(each), "<left to Windows>") << each;
  }
  frmMain.cmdExportServer.caption = "Abort";
  hand.look();
  EXPECT_EQ(nameOf("cmdExportServer"), "<left to Windows>");
  EXPECT_EQ(Hand::textOf(main("cmdExportServer")), "Ab&ort");
}

TEST_F(AnnotationsTest, ATooltipIsADescriptionAndIsTakenOverOnceWhenItChanges) {
  EXPECT_EQ(annotations.descriptions[main("lstSites")], "This is the list of sites available for export");
  const int before = annotations.descriptionsSet;
  hand.look();
  EXPECT_EQ(annotations.descriptionsSet, before);
  frmMain.lstSites.tooltip = "Nothing to export";
  hand.look();
  EXPECT_EQ(annotations.descriptions[main("lstSites")], "Nothing to export");
  EXPECT_EQ(annotations.descriptionsSet, before + 1);
}

TEST_F(AnnotationsTest, NothingIsLeftOfAWindowThatGoes) {
  ASSERT_FALSE(annotations.names.empty());
  frmMain.visible = false;
  hand.look();
  EXPECT_TRUE(annotations.names.empty());
  EXPECT_TRUE(annotations.descriptions.empty());
  EXPECT_TRUE(annotations.areWindowsThere) << "while they can still be found";
}

}  // namespace
}  // namespace trelvin::test
