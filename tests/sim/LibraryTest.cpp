// The library's own doors against the reference service, in one process.
#include <condition_variable>
#include <list>
#include <mutex>

#include "IClientCallback.h"
#include "PymWrapper.h"
#include "SimTestSupport.h"
#include "halclient.h"
#include "pym.h"

namespace sim::testing {
namespace {

class Changes : public IClientCallback {
  public:
    void onCallback(std::list<PymClient::Resource> resources) override {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(std::move(resources));
        cv_.notify_all();
    }
    std::optional<std::list<PymClient::Resource>> waitForCall(size_t n) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!cv_.wait_for(lock, std::chrono::seconds(5), [&] { return calls_.size() >= n; })) {
            return std::nullopt;
        }
        return calls_[n - 1];
    }

  private:
    std::mutex mutex_;
    std::condition_variable cv_;
    std::vector<std::list<PymClient::Resource>> calls_;
};

class LibraryTest : public ServiceTest {};

std::string read(int32_t id) {
    std::vector<PymClient::Resource> r{{id, std::string()}};
    if (PymMutiResStateRequest(r) != 1 || !r[0].value) return "<none>";
    return *r[0].value;
}

TEST_F(LibraryTest, AcquisitionsByWrapperOneWayAndRuleSetAndRestore) {
    const int32_t h = PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example", "demo", 0);
    ASSERT_GT(h, 0);
    EXPECT_EQ(read(kBig), "800");
    EXPECT_EQ(read(kLittle), "300");
    PymReleaseWapper(h);
    EXPECT_EQ(read(kBig), "100");
    auto served = listen({entry(kBig)});
    const int32_t oneWay = PymEventAcquireOneWay(6, "com.example", "swipe", 0, {});
    ASSERT_GE(oneWay, 0);
    ASSERT_TRUE(served->waitForCall(1));
    EXPECT_EQ(read(kBig), "400");
    PymRelease(oneWay);
    EXPECT_EQ(read(kBig), "100");
    EXPECT_EQ(pymRuleCtl(102, 1, {}), 0);
    EXPECT_EQ(read(kBig), "600");
    EXPECT_EQ(pymRuleCtl(102, 0, {}), 0);
    EXPECT_EQ(read(kBig), "100");
}

TEST_F(LibraryTest, DataAndStatusQueriesAreAnsweredFromTheConfiguration) {
    EXPECT_EQ(PymGetPMStatus(0), 1);
    EXPECT_EQ(PymGetPMStatus(5), -1);
    EXPECT_EQ(PymGetFeatureStatus(7), 1);
    EXPECT_EQ(PymGetPowerConsis(), 87);
    std::string consis;
    PymResStateRequest(kPowerConsistencyId, consis);
    EXPECT_EQ(consis, "87");
    std::vector<PymClient::Resource> dataset;
    EXPECT_EQ(Pym_fetch_dataset(dataset), 2);
    EXPECT_EQ(dataset[0].value, "soc:test");
    const int32_t h = PymEventAcquire(0, "com.example", "id", 0, {});
    PymRelease(h);
    std::string history;
    ASSERT_EQ(PymGetHistory(history), 0);
    EXPECT_EQ(history.rfind("start:", 0), 0u);
    EXPECT_NE(history.find("event(8) pkg=com.example"), std::string::npos) << history;
}

TEST_F(LibraryTest, ClientClassListenerSeesChangesAndExpiry) {
    auto changes = std::make_shared<Changes>();
    std::list<PymClient::Resource> watch{{kBig, std::string()}};
    const int handle = troxHalclient::troxResListeningRegister(watch, 0, changes);
    ASSERT_GT(handle, 0);
    std::list<PymClient::Resource> set{{kBig, std::string("550")}};
    ASSERT_GT(troxHalclient::troxResCtlRequest(40, set, 0), 0);
    auto first = changes->waitForCall(1);
    ASSERT_TRUE(first);
    ASSERT_EQ(first->size(), 1u);
    EXPECT_EQ(first->front().id, kBig);
    EXPECT_EQ(first->front().value, "550");
    clock->advance(40);
    auto second = changes->waitForCall(2);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->front().value, "100");
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(handle), 0);
}

TEST_F(LibraryTest, DiagnosticsAndPropertiesThroughTheClientClass) {
    EXPECT_EQ(troxHalclient::troxDumpResInfo(), 0);
    EXPECT_EQ(troxHalclient::troxHistoryRequestRecordOff(), 0);
    EXPECT_FALSE(service().historyEnabled());
    EXPECT_EQ(troxHalclient::troxPropertySet("vendor.k", "v"), 0);
    char* value = troxHalclient::troxPropertyGet("vendor.k");
    EXPECT_STREQ(value, "v");
    delete[] value;
}

}  // namespace
}  // namespace sim::testing
