#include "platform/windows/adsi/late_bound.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "core/err.h"
#include "fakes/failures.h"
#include "windows/provider/inert.h"

namespace trelvin::test {
namespace {

// What an object tells of a failure.
using Tell = std::function<void(EXCEPINFO& info)>;

// An object whose every member fails, and tells of it what it is made with.
class FailingObject final : public Inert<IDispatch, IID_IDispatch> {
 public:
  explicit FailingObject(Tell tell) : tell_(std::move(tell)) {}

  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID* ids) override {
    ids[0] = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO* info,
                                   UINT*) override {
    *info = EXCEPINFO{};
    tell_(*info);
    return DISP_E_EXCEPTION;
  }

 private:
  ~FailingObject() override = default;

  Tell tell_;
};

LateBound failing(Tell tell) {
  return LateBound(ComPtr<IDispatch>(new FailingObject(std::move(tell))));
}

Failure failureOfPut(Tell tell) {
  const LateBound object = failing(std::move(tell));
  return failureOf([&] { return object.call("Put", {"Path", "C:\\site"}); });
}

void describe(EXCEPINFO& info) {
  info.bstrDescription = Bstr("It is locked.").release();
}

TEST(LateBound, AFailureHasTheNumberAndTheTextThatTheObjectGivesIt) {
  const Failure failure = failureOfPut([](EXCEPINFO& info) {
    info.scode = error_number::kAccessDenied;
    describe(info);
  });
  EXPECT_EQ(failure.number(), error_number::kAccessDenied);
  EXPECT_EQ(failure.description(), "It is locked.");
}

TEST(LateBound, ANumberOfTheRuntimeHasAFieldOfItsOwn) {
  EXPECT_EQ(failureOfPut([](EXCEPINFO& info) { info.wCode = 1001; }).number(), 1001);
}

HRESULT STDAPICALLTYPE tellLate(EXCEPINFO* info) {
  info->scode = error_number::kAdsBadParameter;
  describe(*info);
  return S_OK;
}

HRESULT STDAPICALLTYPE tellNothing(EXCEPINFO* /*info*/) {
  return E_FAIL;
}

TEST(LateBound, WhatIsOnlyToldWhenItIsAskedForIsAskedFor) {
  const Failure failure = failureOfPut([](EXCEPINFO& info) { info.pfnDeferredFillIn = tellLate; });
  EXPECT_EQ(failure.number(), error_number::kAdsBadParameter);
  EXPECT_EQ(failure.description(), "It is locked.");
}

// 0 would say that nothing has failed.
TEST(LateBound, AFailureToWhichTheObjectGivesNoNumberHasTheOneOfTheCall) {
  EXPECT_EQ(failureOfPut([](EXCEPINFO&) {}).number(), DISP_E_EXCEPTION);
  const Failure described = failureOfPut(describe);
  EXPECT_EQ(described.number(), DISP_E_EXCEPTION);
  EXPECT_EQ(described.description(), "It is locked.");
  EXPECT_EQ(failureOfPut([](EXCEPINFO& info) { info.pfnDeferredFillIn = tellNothing; }).number(),
            DISP_E_EXCEPTION);
}

TEST(LateBound, APutThatFailsWithoutANumberSetsTheErrorState) {
  const LateBound object = failing([](EXCEPINFO&) {});
  Err.clear();
  EXPECT_FALSE(attempt([&] { object.call("Put", {"Path", "C:\\site"}); }));
  EXPECT_TRUE(Err.isSet());
  Err.clear();
}

}  // namespace
}  // namespace trelvin::test
