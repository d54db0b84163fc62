// A COM object that counts its references, and itself among all that live.
#pragma once

#include <atomic>

#include "platform/windows/adsi/com_api.h"

namespace trelvin::test {

// All objects of this library that somebody still refers to.
inline std::atomic<long> liveObjects = 0;

// COM's interfaces have no destructor that would be virtual: only Release ends an object.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// Made with one reference; goes with the last one.
template <typename Interface>
class Counted : public Interface {
 public:
  Counted() { ++liveObjects; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~Counted() { --liveObjects; }

  // The answer to QueryInterface for an interface that the object has.
  HRESULT refer(void** result) {
    AddRef();
    *result = static_cast<Interface*>(this);
    return S_OK;
  }

 private:
  std::atomic<ULONG> references_ = 1;
};

#pragma GCC diagnostic pop

}  // namespace trelvin::test
