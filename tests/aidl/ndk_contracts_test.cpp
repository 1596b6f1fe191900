// SharedRefBase and binder object ownership, and where a device aborts (misused SharedRefBase,
// empty ScopedAStatus, delegator over another version) the host aborts too and says why.
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::ITroxCallbackDefault;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;

namespace {

class Counted : public ndk::SharedRefBase {};

int gAlive = 0;

class Callback : public BnTroxCallback {
  public:
    Callback() { ++gAlive; }
    ~Callback() override { --gAlive; }
    ndk::ScopedAStatus onCallback(const std::vector<TroxRequestData>& data) override {
        calls += static_cast<int>(data.size());
        return ndk::ScopedAStatus::ok();
    }
    std::shared_ptr<Callback> self() { return ref<Callback>(); }
    int calls = 0;
};

TEST(Ownership, BinderKeepsTheObjectAliveAndLocalLookupsFindIt) {
    gAlive = 0;
    ndk::SpAIBinder binder;
    {
        auto cb = ndk::SharedRefBase::make<Callback>();
        EXPECT_EQ(cb->self().get(), cb.get());
        EXPECT_FALSE(cb->isRemote());
        binder = cb->asBinder();
        ASSERT_NE(binder.get(), nullptr);
        EXPECT_EQ(cb->asBinder().get(), binder.get());  // one binder per object
    }
    EXPECT_EQ(gAlive, 1);  // only the binder holds it now
    std::shared_ptr<ITroxCallback> back = ITroxCallback::fromBinder(binder);
    ASSERT_NE(back, nullptr);
    EXPECT_FALSE(back->isRemote());
    EXPECT_EQ(ITrox::fromBinder(binder), nullptr);  // another interface
    EXPECT_EQ(ITroxCallback::fromBinder(ndk::SpAIBinder()), nullptr);
    back.reset();
    binder.set(nullptr);
    EXPECT_EQ(gAlive, 0);
}

TEST(Ownership, NewBinderAfterTheOldOneDied) {
    auto cb = ndk::SharedRefBase::make<Callback>();
    cb->asBinder();                // created and dropped at once
    EXPECT_EQ(cb.use_count(), 1);  // the dead binder no longer holds the object
    ndk::SpAIBinder second = cb->asBinder();
    ASSERT_NE(second.get(), nullptr);
    EXPECT_EQ(cb.use_count(), 2);
    EXPECT_EQ(ndk::ICInterface::asInterface(second.get()).get(), cb.get());
}

TEST(DefaultImpl, AnswersUnknownTransaction) {
    auto def = ndk::SharedRefBase::make<ITroxCallbackDefault>();
    EXPECT_EQ(def->onCallback({}).getStatus(), STATUS_UNKNOWN_TRANSACTION);
    int32_t version = -1;
    EXPECT_TRUE(def->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 0);
    EXPECT_EQ(def->asBinder().get(), nullptr);
}

// The process starts no binder thread, so the default style's plain fork is safe; the
// re-executing style would also not run under a user-mode emulator.
TEST(DeviceAborts, MisusedSharedRefBaseOrDelegator) {
    EXPECT_DEATH({ Counted onStack; }, "destroyed without a ref ever created");
    EXPECT_DEATH(
            {
                std::shared_ptr<Counted> owner = ndk::SharedRefBase::make<Counted>();
                delete owner.get();
            },
            "destroyed while still owned");
    // The default implementation reports version 0, not 1.
    EXPECT_DEATH(ndk::SharedRefBase::make<ITroxCallback::DefaultDelegator>(
                         ndk::SharedRefBase::make<ITroxCallbackDefault>()),
                 "Mismatched versions of delegator and implementation");
}

TEST(DeviceAborts, EveryUseOfAnEmptyStatusNamesItself) {
    ndk::ScopedAStatus empty;
    EXPECT_DEATH((void)empty.getExceptionCode(), "AStatus_getExceptionCode: null AStatus");
    EXPECT_DEATH((void)empty.getStatus(), "AStatus_getStatus: null AStatus");
    EXPECT_DEATH((void)empty.getServiceSpecificError(),
                 "AStatus_getServiceSpecificError: null AStatus");
    EXPECT_DEATH((void)empty.getMessage(), "AStatus_getMessage: null AStatus");
    ndk::ScopedAStatus status = ndk::ScopedAStatus::ok();
    ndk::ScopedAStatus taken = std::move(status);
    // NOLINTNEXTLINE: use after move on purpose
    EXPECT_DEATH((void)status.getDescription(), "AStatus_getDescription: null AStatus");
    // What generated code does with a method's empty return value.
    ndk::ScopedAParcel reply(AParcel_create());
    EXPECT_DEATH((void)AParcel_writeStatusHeader(reply.get(), empty.get()),
                 "AParcel_writeStatusHeader: null AStatus");
}

TEST(Delegator, SameVersionForwardsCalls) {
    auto impl = ndk::SharedRefBase::make<Callback>();
    auto delegator = ndk::SharedRefBase::make<ITroxCallback::DefaultDelegator>(impl);
    ASSERT_TRUE(delegator->onCallback({TroxRequestData(), TroxRequestData()}).isOk());
    EXPECT_EQ(impl->calls, 2);
    int32_t version = 0;
    ASSERT_TRUE(delegator->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 1);
}

// No move: a moved-from SpAIBinder still holds its binder, as on a device, and each copy owns a
// reference of its own.
TEST(SpAIBinder, MoveCopies) {
    auto impl = ndk::SharedRefBase::make<Callback>();
    ndk::SpAIBinder first = impl->asBinder();
    const int32_t before = AIBinder_debugGetRefCount(first.get());
    ndk::SpAIBinder second = std::move(first);
    EXPECT_EQ(first.get(), second.get());  // NOLINT: reading the moved-from object on purpose
    EXPECT_EQ(AIBinder_debugGetRefCount(second.get()), before + 1);
}

}  // namespace
