// What Windows and its users read in the files of the programs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/text.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::SizeIs;

struct ProgramFile {
  std::filesystem::path path;
  std::string name;
};

void PrintTo(const ProgramFile& file, std::ostream* stream) {
  *stream << file.name;
}

class ProgramFileTest : public testing::TestWithParam<ProgramFile> {
 protected:
  ProgramFileTest() {
    if (image_ == nullptr) throw std::runtime_error("the file can't be read");
  }
  ~ProgramFileTest() override { ::FreeLibrary(image_); }

  [[nodiscard]] std::string resource(int number, LPWSTR kind) const {
    const HRSRC found = ::FindResourceW(image_, MAKEINTRESOURCEW(number), kind);
    if (found == nullptr) return {};
    const auto* const bytes = static_cast<const char*>(::LockResource(::LoadResource(image_, found)));
    return {bytes, ::SizeofResource(image_, found)};
  }
  [[nodiscard]] std::string manifest() const { return resource(1, RT_MANIFEST); }

  // An entry of the version.
  [[nodiscard]] static std::string versionText(const std::string& name) {
    std::vector<char> info = version();
    void* found = nullptr;
    UINT length = 0;
    const std::wstring entry = wideText("\\StringFileInfo\\040904B0\\" + name);
    if (::VerQueryValueW(info.data(), entry.c_str(), &found, &length) == FALSE) return {};
    return utf8Text(static_cast<const wchar_t*>(found));
  }
  // The libraries that have to be there before the program begins.
  [[nodiscard]] static std::vector<std::string> libraries() {
    std::ifstream file(GetParam().path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    const std::string bytes = content.str();
    const auto headers = recordAt<IMAGE_NT_HEADERS>(bytes, headersOf(bytes));
    const auto imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::vector<std::string> names;
    for (std::size_t at = placeOf(bytes, imports);; at += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
      const auto import = recordAt<IMAGE_IMPORT_DESCRIPTOR>(bytes, at);
      if (import.Name == 0) return names;
      names.push_back(lowerCase(bytes.c_str() + placeOf(bytes, import.Name)));
    }
  }
  template <typename Record>
  static Record recordAt(const std::string& bytes, std::size_t place) {
    Record record{};
    std::memcpy(&record, bytes.substr(place, sizeof(record)).data(), sizeof(record));
    return record;
  }
  static std::size_t headersOf(const std::string& bytes) {
    return static_cast<std::size_t>(recordAt<IMAGE_DOS_HEADER>(bytes, 0).e_lfanew);
  }
  // Where in the file an address of the program lies.
  static std::size_t placeOf(const std::string& bytes, DWORD address) {
    const std::size_t start = headersOf(bytes);
    const auto headers = recordAt<IMAGE_NT_HEADERS>(bytes, start);
    for (WORD number = 0; number < headers.FileHeader.NumberOfSections; ++number) {
      const auto section = recordAt<IMAGE_SECTION_HEADER>(
          bytes, start + sizeof(headers) + number * sizeof(IMAGE_SECTION_HEADER));
      if (address - section.VirtualAddress < section.SizeOfRawData) {
        return section.PointerToRawData + address - section.VirtualAddress;
      }
    }
    throw std::runtime_error("an address lies nowhere");
  }
  [[nodiscard]] static std::vector<char> version() {
    DWORD ignored = 0;
    std::vector<char> info(::GetFileVersionInfoSizeW(GetParam().path.c_str(), &ignored));
    ::GetFileVersionInfoW(GetParam().path.c_str(), 0, static_cast<DWORD>(info.size()), info.data());
    return info;
  }

  HMODULE image_ = ::LoadLibraryExW(GetParam().path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
};

// Else Windows guesses, and takes whatever has "Setup" in its name for an installer.
TEST_P(ProgramFileTest, AsksForNoRightsBeyondThoseOfWhoeverStartsIt) {
  EXPECT_THAT(manifest(), HasSubstr("level=\"asInvoker\""));
}

TEST_P(ProgramFileTest, NeedsNoLibraryThatWindowsDoesNotBring) {
  static const std::set<std::string> kOfWindows{
      "activeds.dll", "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll",
      "kernel32.dll", "msvcrt.dll",   "odbc32.dll",   "odbccp32.dll", "ole32.dll",
      "oleaut32.dll", "shell32.dll",  "user32.dll",   "ws2_32.dll"};
  EXPECT_THAT(libraries(), AllOf(testing::Not(testing::IsEmpty()), testing::IsSubsetOf(kOfWindows)));
}

TEST_P(ProgramFileTest, HasItsIconInSizesForCoarseAndFineScreens) {
  const std::string group = resource(1, RT_GROUP_ICON);
  ASSERT_THAT(group, SizeIs(testing::Gt(6U)));
  constexpr std::size_t kHead = 6;
  constexpr std::size_t kEntry = 14;
  std::vector<int> widths;
  for (std::size_t at = kHead; at < group.size(); at += kEntry) {
    widths.push_back(static_cast<unsigned char>(group[at]));
  }
  EXPECT_THAT(widths, AllOf(testing::Contains(16), testing::Contains(32), testing::Contains(48)));
}

TEST_P(ProgramFileTest, TellsItsVersionAndItsName) {
  std::vector<char> info = version();
  void* found = nullptr;
  UINT length = 0;
  ASSERT_TRUE(::VerQueryValueW(info.data(), L"\\", &found, &length));
  EXPECT_EQ(static_cast<const VS_FIXEDFILEINFO*>(found)->dwFileVersionMS,
            DWORD{MAKELONG(TRELVIN_VERSION_MINOR, TRELVIN_VERSION_MAJOR)});
  const std::string number =
      std::to_string(TRELVIN_VERSION_MAJOR) + "." + std::to_string(TRELVIN_VERSION_MINOR);
  EXPECT_EQ(versionText("FileVersion"), number);
  EXPECT_EQ(versionText("OriginalFilename"), GetParam().name + ".exe");
  EXPECT_THAT(manifest(), HasSubstr("name=\"" + GetParam().name + "\" version=\"" + number + ".0.0\""));
}

const ProgramFile kTrelvin{std::filesystem::path(TRELVIN_PROGRAM_FOLDER) / "Trelvin.exe", "Trelvin"};
const ProgramFile kSetup{TRELVIN_SETUP, "TrelvinSetup"};

INSTANTIATE_TEST_SUITE_P(All, ProgramFileTest, testing::Values(kTrelvin, kSetup),
                         testing::PrintToStringParamName());

class WindowedProgramFileTest : public ProgramFileTest {};

TEST_P(WindowedProgramFileTest, IsDrawnForTheDotsOfEachScreenWithTheControlsOfToday) {
  EXPECT_THAT(manifest(), AllOf(HasSubstr("PerMonitorV2"), HasSubstr("Microsoft.Windows.Common-Controls"),
                                HasSubstr("version=\"6.0.0.0\"")));
}

INSTANTIATE_TEST_SUITE_P(All, WindowedProgramFileTest, testing::Values(kTrelvin),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace trelvin::test
