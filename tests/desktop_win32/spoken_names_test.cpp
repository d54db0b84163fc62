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

}  // namespace
}  // namespace trelvin::test
