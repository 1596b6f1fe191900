// SharedRefBase / BnCInterface ownership, local fromBinder, parcel helpers and ToString.
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_to_string.h>
#include <gtest/gtest.h>

#include <atomic>

#include "trox_test_util.h"

using aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::ITroxCallbackDefault;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using namespace trox_test;

namespace {

std::atomic<int> gAlive{0};

class CountedCallback : public BnTroxCallback {
  public:
    explicit CountedCallback(int id) : tag(id) { ++gAlive; }
    ~CountedCallback() override { --gAlive; }
    ndk::ScopedAStatus onCallback(const std::vector<TroxRequestData>&) override {
        return ndk::ScopedAStatus::ok();
    }
    std::shared_ptr<CountedCallback> self() { return ref<CountedCallback>(); }
    const int tag;
};

TEST(SharedRefBase, MakeRefAndLastOwnerDeletes) {
    gAlive = 0;
    {
        auto cb = ndk::SharedRefBase::make<CountedCallback>(5);
        EXPECT_EQ(cb->tag, 5);
        EXPECT_EQ(gAlive, 1);
        std::shared_ptr<CountedCallback> again = cb->self();
        EXPECT_EQ(again.get(), cb.get());
        EXPECT_EQ(cb.use_count(), 2);
        cb.reset();
        EXPECT_EQ(gAlive, 1);  // still held by `again`
    }
    EXPECT_EQ(gAlive, 0);
}

TEST(BnCInterface, BinderKeepsObjectAliveAndIsReused) {
    gAlive = 0;
    ndk::SpAIBinder binder;
    {
        auto cb = ndk::SharedRefBase::make<CountedCallback>(1);
        EXPECT_FALSE(cb->isRemote());
        binder = cb->asBinder();
        ASSERT_NE(binder.get(), nullptr);
        EXPECT_EQ(cb->asBinder().get(), binder.get());  // one binder per object
        EXPECT_FALSE(AIBinder_isRemote(binder.get()));
    }
    EXPECT_EQ(gAlive, 1);  // only the binder holds it now
    std::shared_ptr<ITroxCallback> back = ITroxCallback::fromBinder(binder);
    ASSERT_NE(back, nullptr);
    EXPECT_FALSE(back->isRemote());
    EXPECT_EQ(static_cast<CountedCallback*>(back.get())->tag, 1);
    back.reset();
    binder.set(nullptr);
    EXPECT_EQ(gAlive, 0);
}

TEST(BnCInterface, NewBinderAfterTheOldOneDied) {
    gAlive = 0;
    auto cb = ndk::SharedRefBase::make<CountedCallback>(2);
    cb->asBinder();                // created and dropped at once
    EXPECT_EQ(cb.use_count(), 1);  // the dead binder no longer holds the object
    ndk::SpAIBinder second = cb->asBinder();
    ASSERT_NE(second.get(), nullptr);
    EXPECT_EQ(cb.use_count(), 2);
    EXPECT_EQ(ndk::ICInterface::asInterface(second.get()).get(), cb.get());
}

TEST(ICInterface, FromBinderRejectsOtherClassesAndNull) {
    auto cb = ndk::SharedRefBase::make<CountedCallback>(3);
    EXPECT_EQ(ITrox::fromBinder(cb->asBinder()), nullptr);
    EXPECT_EQ(ITroxCallback::fromBinder(ndk::SpAIBinder()), nullptr);
    EXPECT_EQ(ndk::ICInterface::asInterface(nullptr), nullptr);
}

// Interfaces keep the device's leniency: a null one is written and read as a null binder by both
// the required and the nullable helpers, and the receiver decides.
TEST(ParcelHelpers, NullInterfacesTravelAsNullBinders) {
    ndk::ScopedAParcel parcel(AParcel_create());
    std::shared_ptr<ITroxCallback> none;
    ASSERT_EQ(ndk::AParcel_writeData(parcel.get(), none), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_writeNullableData(parcel.get(), none), STATUS_OK);
    EXPECT_EQ(marshal(parcel.get()), (Bytes{0, 0, 0, 0, 0, 0, 0, 0}));
    AParcel_setDataPosition(parcel.get(), 0);
    std::shared_ptr<ITroxCallback> first = ndk::SharedRefBase::make<CountedCallback>(4);
    std::shared_ptr<ITroxCallback> second = first;
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &first), STATUS_OK);
    EXPECT_EQ(ndk::AParcel_readNullableData(parcel.get(), &second), STATUS_OK);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);
}

TEST(ParcelHelpers, StrongBinders) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(ndk::AParcel_writeRequiredStrongBinder(parcel.get(), ndk::SpAIBinder()),
              STATUS_UNEXPECTED_NULL);
    auto cb = ndk::SharedRefBase::make<CountedCallback>(6);
    ASSERT_EQ(ndk::AParcel_writeNullableStrongBinder(parcel.get(), ndk::SpAIBinder()), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_writeRequiredStrongBinder(parcel.get(), cb->asBinder()), STATUS_OK);
    AParcel_setDataPosition(parcel.get(), 0);
    ndk::SpAIBinder b;
    EXPECT_EQ(ndk::AParcel_readRequiredStrongBinder(parcel.get(), &b), STATUS_UNEXPECTED_NULL);
    ASSERT_EQ(ndk::AParcel_readNullableStrongBinder(parcel.get(), &b), STATUS_OK);
    EXPECT_NE(b.get(), nullptr);
    EXPECT_NE(ITroxCallback::fromBinder(b), nullptr);
}

TEST(ParcelHelpers, StringsAndIntArraysTable) {
    struct Case {
        std::optional<std::string> text;
        std::optional<std::vector<int32_t>> ints;
    };
    const std::vector<Case> cases = {
            {std::nullopt, std::nullopt},
            {"", std::vector<int32_t>{}},
            {"hello", std::vector<int32_t>{1, -1, 0x7fffffff}},
            {std::string("a\0b", 3), std::vector<int32_t>{0}},
    };
    for (const auto& c : cases) {
        ndk::ScopedAParcel parcel(AParcel_create());
        ASSERT_EQ(ndk::AParcel_writeNullableData(parcel.get(), c.text), STATUS_OK);
        ASSERT_EQ(ndk::AParcel_writeNullableData(parcel.get(), c.ints), STATUS_OK);
        AParcel_setDataPosition(parcel.get(), 0);
        std::optional<std::string> text = "junk";
        std::optional<std::vector<int32_t>> ints = std::vector<int32_t>{9};
        ASSERT_EQ(ndk::AParcel_readNullableData(parcel.get(), &text), STATUS_OK);
        ASSERT_EQ(ndk::AParcel_readNullableData(parcel.get(), &ints), STATUS_OK);
        EXPECT_EQ(text, c.text);
        EXPECT_EQ(ints, c.ints);
    }
}

TEST(ParcelHelpers, NullIntoNonNullIsUnexpectedNull) {
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(AParcel_writeInt32(parcel.get(), -1), STATUS_OK);
    std::string s;
    AParcel_setDataPosition(parcel.get(), 0);
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &s), STATUS_UNEXPECTED_NULL);
    std::vector<int32_t> v;
    AParcel_setDataPosition(parcel.get(), 0);
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &v), STATUS_UNEXPECTED_NULL);
    std::vector<TroxRequestData> d;
    AParcel_setDataPosition(parcel.get(), 0);
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &d), STATUS_UNEXPECTED_NULL);
}

TEST(ParcelHelpers, HugeLengthsAllocateNothing) {
    for (int32_t length : {0x7fffffff, 0x10000000, 3}) {
        Bytes b;
        put32(&b, static_cast<uint32_t>(length));
        put32(&b, 0);
        put32(&b, 0);
        ndk::ScopedAParcel parcel = parcelOf(b);
        std::vector<int32_t> ints;
        EXPECT_NE(ndk::AParcel_readData(parcel.get(), &ints), STATUS_OK) << length;
        EXPECT_EQ(ints.capacity(), 0u);
        AParcel_setDataPosition(parcel.get(), 0);
        std::optional<std::vector<std::optional<std::string>>> strings;
        EXPECT_NE(ndk::AParcel_readNullableData(parcel.get(), &strings), STATUS_OK) << length;
        AParcel_setDataPosition(parcel.get(), 0);
        std::vector<TroxRequestData> records;
        EXPECT_NE(ndk::AParcel_readData(parcel.get(), &records), STATUS_OK) << length;
        EXPECT_EQ(records.capacity(), 0u);
    }
}

TEST(ToString, ValuesTable) {
    using android::internal::ToString;
    std::optional<std::vector<std::optional<std::string>>> tags =
            std::vector<std::optional<std::string>>{"a", std::nullopt};
    const std::pair<std::string, std::string> cases[] = {
            {ToString(int32_t{-3}), "-3"},
            {ToString(int64_t{0x00000000FFFFFFFB}), "4294967291"},
            {ToString(true), "true"},
            {ToString(false), "false"},
            {ToString(std::string("x y")), "x y"},
            {ToString(std::optional<std::string>()), "(null)"},
            {ToString(tags), "[a, (null)]"},
            {ToString(std::vector<int32_t>{1, 2}), "[1, 2]"},
            {ToString(std::vector<int32_t>{}), "[]"},
            {ToString(std::shared_ptr<ITroxCallback>()), "(null)"},
            // An interface has no text of its own.
            {ToString(std::shared_ptr<ITroxCallback>(ndk::SharedRefBase::make<CountedCallback>(7))),
             "<unimplemented>"},
            {ToString(char16_t{0x00e9}), "\xc3\xa9"},
            {ToString(int8_t{-2}), "-2"},
    };
    for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
}

TEST(DefaultImpl, AnswersUnknownTransaction) {
    auto def = ndk::SharedRefBase::make<ITroxCallbackDefault>();
    ndk::ScopedAStatus status = def->onCallback({});
    EXPECT_EQ(status.getStatus(), STATUS_UNKNOWN_TRANSACTION);
    int32_t version = -1;
    EXPECT_TRUE(def->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 0);
    EXPECT_EQ(def->asBinder().get(), nullptr);
}

}  // namespace
