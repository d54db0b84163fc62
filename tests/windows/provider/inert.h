// A COM object that answers to no name.
#pragma once

#include "windows/provider/counted.h"

namespace trelvin::test {

// Interface is IDispatch or one that stands on it, with its identifier.
template <typename Interface, const IID& kInterface>
class Inert : public Counted<Interface> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** result) override {
    if (wanted == IID_IUnknown || wanted == IID_IDispatch || wanted == kInterface) {
      return this->refer(result);
    }
    *result = nullptr;
    return E_NOINTERFACE;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* /*count*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }

 protected:
  ~Inert() override = default;
};

}  // namespace trelvin::test
