#include "platform/windows/program_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "core/text.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

// It needs what windows.h brings.
#include <sddl.h>

namespace trelvin::test {
namespace {

TEST(CommandLine, BeginsBehindTheNameAndItsBlank) {
  EXPECT_EQ(argumentsOf(L"\"C:\\Program Files\\Trelvin.exe\" -RUNBACKUP -B a.job"), "-RUNBACKUP -B a.job");
  EXPECT_EQ(argumentsOf(L"Trelvin.exe -F"), "-F");
  EXPECT_EQ(argumentsOf(L"\"C:\\a b\"\\Trelvin.exe -F"), "-F");
}

TEST(CommandLine, IsEmptyWhereNothingFollowsTheName) {
  EXPECT_EQ(argumentsOf(L"\"C:\\Program Files\\Trelvin.exe\""), "");
  EXPECT_EQ(argumentsOf(L"\"C:\\Program Files\\Trelvin.exe\" "), "");
  EXPECT_EQ(argumentsOf(L"Trelvin.exe"), "");
  EXPECT_EQ(argumentsOf(L""), "");
}

TEST(CommandLine, KeepsEveryFurtherBlank) {
  EXPECT_EQ(argumentsOf(L"Trelvin.exe  "), " ");
  EXPECT_EQ(argumentsOf(L"Trelvin.exe -B "), "-B ");
  EXPECT_EQ(argumentsOf(L"Trelvin.exe  -F"), " -F");
}

TEST(CommandLine, ComesAsUtf8) {
  EXPECT_EQ(argumentsOf(L"Trelvin.exe -B \u00DCb.job"),
            "-B \xC3\x9C"
            "b.job");
}

// What Trelvin.exe of this test's own path would claim, held by somebody else.
class ClaimOfAnother {
 public:
  explicit ClaimOfAnother(const wchar_t* rights) {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    std::string name = lowerCase(utf8Text(path));
    std::replace(name.begin(), name.end(), '\\', '/');
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor,
                                                                       nullptr));
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), descriptor, FALSE};
    mutex_ = ::CreateMutexW(&attributes, FALSE, wideText("Global\\Trelvin:" + name).c_str());
    EXPECT_NE(mutex_, nullptr);
    ::LocalFree(descriptor);
  }
  ClaimOfAnother(const ClaimOfAnother&) = delete;
  ClaimOfAnother& operator=(const ClaimOfAnother&) = delete;
  ~ClaimOfAnother() { ::CloseHandle(mutex_); }

 private:
  HANDLE mutex_ = nullptr;
};

TEST(PrevInstance, SeesAClaimThatEverybodyMayOpen) {
  const ClaimOfAnother claim(L"D:(A;;GA;;;WD)");
  EXPECT_TRUE(makeApplication()->prevInstance());
}

TEST(PrevInstance, SeesAClaimThatThisUserMayNotOpen) {
  const ClaimOfAnother claim(L"D:(D;;GA;;;WD)");
  EXPECT_TRUE(makeApplication()->prevInstance());
}

}  // namespace
}  // namespace trelvin::test
