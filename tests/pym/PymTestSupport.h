// Shared by the Event API suites: a fixture that starts each test with a fresh fake service and
// an empty Event API connection, and builders for the records the fake is expected to receive.
#pragma once

#include "FakeTroxService.h"
#include "LogCapture.h"
#include "pym.h"

#include <android/log.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace aidl::vendor::vexal::hardware::trox {

inline void PrintTo(const TroxRequestParcel& parcel, std::ostream* os) {
    *os << parcel.toString();
}

inline void PrintTo(const TroxRequestData& data, std::ostream* os) {
    *os << data.toString();
}

}  // namespace aidl::vendor::vexal::hardware::trox

namespace vexal::testing {

using PymClient::Resource;

inline constexpr char kPymTag[] = "[PYM_CLIENT]";
inline constexpr int32_t kPowerConsistencyOpcode = 16848496;

inline LogLine logInfo(std::string text) {
    return {ANDROID_LOG_INFO, kPymTag, std::move(text)};
}
inline LogLine logDebug(std::string text) {
    return {ANDROID_LOG_DEBUG, kPymTag, std::move(text)};
}
inline LogLine logError(std::string text) {
    return {ANDROID_LOG_ERROR, kPymTag, std::move(text)};
}

inline std::vector<LogLine> operator+(std::vector<LogLine> a, const std::vector<LogLine>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The wire id is written out in full in each test (zero-extended 32-bit ids, or two words).
inline TroxRequestData entry(int64_t wireId, std::optional<std::string> value = std::nullopt,
                             std::optional<std::string> extra = std::nullopt) {
    TroxRequestData data;
    data.res_Id = wireId;
    data.res_Value = std::move(value);
    data.res_Extra = std::move(extra);
    return data;
}

inline TroxRequestParcel parcelOfKind(int32_t kind, std::vector<TroxRequestData> data = {}) {
    TroxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.requestData = std::move(data);
    return parcel;
}

inline std::vector<TroxRequestData> powerConsistencyQuery() {
    return {entry(kPowerConsistencyOpcode, "0 1 35"), entry(kPowerConsistencyOpcode, "1 1 35"),
            entry(kPowerConsistencyOpcode, "2 1 35")};
}

inline TroxRequestParcel powerConsistencyParcel() {
    TroxRequestParcel parcel = parcelOfKind(15, powerConsistencyQuery());
    parcel.pkg = "none";
    return parcel;
}

// The exact record of one call as the service decoded it.
struct ExpectedCall {
    std::string method;
    std::optional<TroxRequestParcel> parcel;
    std::vector<int32_t> ints = {};
    std::vector<TroxRequestData> data = {};
};

inline void expectCall(const RecordedCall& actual, const ExpectedCall& expected) {
    EXPECT_EQ(actual.method, expected.method);
    EXPECT_EQ(actual.parcel, expected.parcel);
    EXPECT_EQ(actual.ints, expected.ints);
    EXPECT_EQ(actual.data, expected.data);
    EXPECT_EQ(actual.callback, nullptr);
}

inline void expectOnlyCall(const FakeTrox& fake, const ExpectedCall& expected) {
    const auto calls = fake.calls();
    ASSERT_EQ(calls.size(), 1u);
    expectCall(calls.front(), expected);
}

inline std::vector<LogLine> notDeclaredLines() {
    return {logError("Trox is not declared, AServiceManager_isDeclared:0"),
            logError("pym_get_trox_hal_and_link_to_death error:-1")};
}

inline std::vector<LogLine> notRunningLines() {
    return {logError("Trox HAL Service not found"),
            logError("pym_get_trox_hal_and_link_to_death error:-1")};
}

inline LogLine failedLine(const std::string& name) {
    return logError(name + "() failed : trox HAL service not available");
}

// Log capture first, so that it outlives the service: the service's destructor kills it, and the
// death notification empties the Event API's connection for the next test.
class PymTest : public ::testing::Test {
  protected:
    std::vector<LogLine> pymLines() const { return logs.linesWithTag(kPymTag); }
    FakeTrox& fake() { return service.fake(); }

    LogCapture logs;
    FakeTroxService service;
};

}  // namespace vexal::testing
