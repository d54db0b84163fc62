// A directory service for IIS:// paths that the tests register under the name that a real one has. It has no
// metabase of its own: its host does the work (wire.h).
#include <array>
#include <string>

#include "core/err.h"
#include "platform/windows/wide_text.h"
#include "windows/provider/directory_object.h"
#include "windows/provider/host_link.h"
#include "windows/provider/inert.h"

namespace trelvin::test {

namespace {

constexpr GUID kProvider = {0x5e0c8a2f, 0x9b1d, 0x4c7e, {0x8f, 0x35, 0x2a, 0x6d, 0x1b, 0x94, 0xc0, 0xe7}};
HINSTANCE ownModule = nullptr;

class Provider final : public Inert<IADsOpenDSObject, IID_IADsOpenDSObject> {
 public:
  // A bind has nothing but a number to tell of a failure.
  HRESULT STDMETHODCALLTYPE OpenDSObject(BSTR path, BSTR /*user*/, BSTR /*password*/, long /*options*/,
                                         IDispatch** result) override {
    *result = nullptr;
    try {
      const ComPtr<IDispatch> object = boundObject(utf8Text({path, ::SysStringLen(path)}));
      object->AddRef();
      *result = object.get();
      return S_OK;
    } catch (const Failure& failure) {
      return failure.number() < 0 ? failure.number() : E_FAIL;
    } catch (const std::exception&) {
      return E_FAIL;
    }
  }
};

class ProviderFactory final : public Counted<IClassFactory> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** result) override {
    if (wanted == IID_IUnknown || wanted == IID_IClassFactory) return refer(result);
    *result = nullptr;
    return E_NOINTERFACE;
  }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID wanted, void** result) override {
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    const ComPtr<Provider> made(new Provider);
    return made->QueryInterface(wanted, result);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    liveObjects += lock ? 1 : -1;
    return S_OK;
  }
};

struct RegistryText {
  std::wstring key;
  const wchar_t* value;
  std::wstring text;
};

std::array<RegistryText, 4> registration() {
  std::array<wchar_t, MAX_PATH> file{};
  ::GetModuleFileNameW(ownModule, file.data(), static_cast<DWORD>(file.size()));
  std::array<wchar_t, 64> guid{};
  ::StringFromGUID2(kProvider, guid.data(), static_cast<int>(guid.size()));
  const std::wstring classKey = std::wstring(L"Software\\Classes\\CLSID\\") + guid.data();
  return {{{L"Software\\Microsoft\\ADs\\Providers\\IIS", nullptr, L"IIS"},
           {L"Software\\Classes\\IIS\\CLSID", nullptr, guid.data()},
           {classKey + L"\\InprocServer32", nullptr, file.data()},
           {classKey + L"\\InprocServer32", L"ThreadingModel", L"Both"}}};
}

}  // namespace

}  // namespace trelvin::test

using namespace trelvin::test;

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD /*reason*/, LPVOID /*reserved*/) {
  ownModule = module;
  return TRUE;
}

extern "C" HRESULT STDMETHODCALLTYPE DllGetClassObject(REFCLSID wantedClass, REFIID wanted, void** result) {
  *result = nullptr;
  if (wantedClass != kProvider) return CLASS_E_CLASSNOTAVAILABLE;
  const trelvin::ComPtr<ProviderFactory> factory(new ProviderFactory);
  return factory->QueryInterface(wanted, result);
}

// The library stays: whoever asks for the number of its objects wants an answer.
extern "C" HRESULT STDMETHODCALLTYPE DllCanUnloadNow() {
  return S_FALSE;
}

extern "C" HRESULT STDMETHODCALLTYPE DllRegisterServer() {
  for (const RegistryText& entry : registration()) {
    const auto size = static_cast<DWORD>((entry.text.size() + 1) * sizeof(wchar_t));
    const LSTATUS result = ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, entry.key.c_str(), entry.value, REG_SZ,
                                             entry.text.c_str(), size);
    if (result != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(result));
  }
  return S_OK;
}

extern "C" HRESULT STDMETHODCALLTYPE DllUnregisterServer() {
  for (const RegistryText& entry : registration()) {
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, entry.key.c_str());
  }
  return S_OK;
}

// How many objects the program has not let go of.
extern "C" long liveDirectoryObjects() {
  return liveObjects;
}

// How many times a program has asked an object for the number of a member.
extern "C" long directoryNameLookups() {
  return nameLookups;
}

// From here on the host serves the network folder: its metabases, and its shares under their names.
extern "C" HRESULT STDMETHODCALLTYPE openDirectoryService() {
  try {
    HostLink::current();
    return S_OK;
  } catch (const std::exception&) {
    return E_FAIL;
  }
}

// The program is done: the host completes the metabase files.
extern "C" void closeDirectoryService() {
  HostLink::leave();
}
