#include "fakes/windows/directory_service.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <utility>

#include "platform/windows/adsi/adsi_metabase.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {

namespace {

// The provider's own routine of that name. The library stays loaded: objects of it are counted there.
template <typename Routine>
Routine providerRoutine(const char* name) {
  std::array<wchar_t, MAX_PATH> program{};
  ::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
  const std::filesystem::path file =
      std::filesystem::path(program.data()).replace_filename("directory_provider.dll");
  static const HMODULE library = ::LoadLibraryW(file.c_str());
  const FARPROC found = library == nullptr ? nullptr : ::GetProcAddress(library, name);
  if (found == nullptr) throw std::runtime_error(file.string() + " has no " + name);
  return reinterpret_cast<Routine>(reinterpret_cast<void*>(found));
}

void callProvider(const char* name) {
  using Register = HRESULT(STDMETHODCALLTYPE*)();
  if (FAILED(providerRoutine<Register>(name)())) throw std::runtime_error(std::string(name) + " failed");
}

class CountedMetabase final : public Metabase {
 public:
  explicit CountedMetabase(std::unique_ptr<Metabase> real) : real_(std::move(real)) {}
  CountedMetabase(const CountedMetabase&) = delete;
  CountedMetabase& operator=(const CountedMetabase&) = delete;
  ~CountedMetabase() override {
    providerRoutine<void (*)()>("closeDirectoryService")();
    EXPECT_EQ(liveDirectoryObjects(), 0) << "objects that nobody let go of";
  }
  NodeHandle getObject(std::string_view path) override { return real_->getObject(path); }

 private:
  std::unique_ptr<Metabase> real_;
};

}  // namespace

long liveDirectoryObjects() {
  return providerRoutine<long (*)()>("liveDirectoryObjects")();
}

long directoryNameLookups() {
  return providerRoutine<long (*)()>("directoryNameLookups")();
}

void registerDirectoryService() {
  callProvider("DllRegisterServer");
}

void removeDirectoryService() {
  callProvider("DllUnregisterServer");
}

std::unique_ptr<Metabase> makeDirectoryService(const std::filesystem::path& networkFolder) {
  if (::GetEnvironmentVariableW(L"TRELVIN_DIRECTORY_PORT", nullptr, 0) == 0) {
    throw std::runtime_error("the directory provider's host does not run");
  }
  ::SetEnvironmentVariableW(L"TRELVIN_NETWORK", networkFolder.c_str());
  registerDirectoryService();
  callProvider("openDirectoryService");
  return std::make_unique<CountedMetabase>(makeAdsiMetabase());
}

}  // namespace trelvin::test
