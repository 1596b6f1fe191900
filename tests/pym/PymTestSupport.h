// Shared by the Event API suites: a fixture that starts each test with a fresh fake service and
// an empty Event API connection, and builders for the records the fake is expected to receive.
#pragma once

#include "FakeTroxService.h"
#include "LogCapture.h"
#include "pym.h"

#include <android/log.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace aidl::vendor::vexal::hardware::trox {

inline void PrintTo(const TroxRequestParcel& parcel, std::ostream* os) {
    *os << parcel.toString();
}

}  // namespace aidl::vendor::vexal::hardware::trox

namespace vexal::testing {

using PymClient::Resource;
using Lines = std::vector<LogLine>;
using Data = std::vector<TroxRequestData>;

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

inline Lines operator+(Lines a, const Lines& b) {
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

// Acquisitions also carry a duration and both texts; other kinds leave them unset.
inline TroxRequestParcel parcelOf(int32_t kind, Data data = {}, int64_t duration = 0,
                                  std::optional<std::string> pkg = std::nullopt,
                                  std::optional<std::string> identity = std::nullopt) {
    TroxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.requestData = std::move(data);
    parcel.duration = duration;
    parcel.pkg = std::move(pkg);
    parcel.identity = std::move(identity);
    return parcel;
}

inline TroxRequestParcel powerConsistencyParcel() {
    const int32_t op = kPowerConsistencyOpcode;
    return parcelOf(15, {entry(op, "0 1 35"), entry(op, "1 1 35"), entry(op, "2 1 35")}, 0, "none");
}

// The exact record of the one call the service got.
inline void expectOnlyCall(const FakeTrox& fake, const std::string& method,
                           const std::optional<TroxRequestParcel>& parcel,
                           const std::vector<int32_t>& ints = {}, const Data& data = {}) {
    const auto calls = fake.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].method, method);
    EXPECT_EQ(calls[0].parcel, parcel);
    EXPECT_EQ(calls[0].ints, ints);
    EXPECT_EQ(calls[0].data, data);
    EXPECT_EQ(calls[0].callback, nullptr);
}

inline LogLine failedLine(const std::string& name) {
    return logError(name + "() failed : trox HAL service not available");
}

inline Lines connectFailedLines(const std::string& why) {
    return {logError(why), logError("pym_get_trox_hal_and_link_to_death error:-1")};
}

// Lists built by calls rather than braces, which keep a one-line lambda on one line.
inline Resource r(int32_t id, std::optional<std::string> value) {
    return {id, std::move(value)};
}
template <typename T, typename... More>
std::vector<T> list(T first, More... more) {
    return {first, T(more)...};
}

// The calls with outputs, as one text: the result, then what the outputs hold afterwards.
inline std::string str(int32_t value) {
    return std::to_string(value);
}

// The result, then each resource as id=value ("-" for none).
inline std::string show(int32_t result, const std::vector<Resource>& resources) {
    std::string text = str(result);
    for (const auto& r : resources) text += " " + str(r.id) + "=" + r.value.value_or("-");
    return text;
}

inline std::string multi(std::vector<Resource> resources) {
    return show(PymMutiResStateRequest(resources), resources);
}

inline std::string single(int32_t id) {
    std::string value = "before";
    PymResStateRequest(id, value);
    return value;
}

inline std::string history() {
    std::string text = "old";
    return str(PymGetHistory(text)) + " " + text;
}

// With the start of what the call wrote on standard output (the rest is the library's text).
inline std::string pmStatus() {
    ::testing::internal::CaptureStdout();
    const int32_t result = PymGetPMStatus(-5);
    const std::string out = ::testing::internal::GetCapturedStdout();
    return str(result) + " " + out.substr(0, out.find(':'));
}

// The type of what escapes `call`, or its result.
inline std::string escaping(const std::function<std::string()>& call) {
    try {
        return call();
    } catch (const std::bad_optional_access&) {
        return "bad_optional_access";
    } catch (const std::invalid_argument&) {
        return "invalid_argument";
    } catch (const std::out_of_range&) {
        return "out_of_range";
    }
}

inline std::string dataset() {
    std::vector<Resource> set{{1, "x"}, {2, std::nullopt}};
    std::string text = escaping([&] { return str(Pym_fetch_dataset(set)); });
    return show(0, set) + " " + text;
}

// Log capture first, so that it outlives the service: the service's destructor kills it, and the
// death notification empties the Event API's connection for the next test.
class PymTest : public ::testing::Test {
  protected:
    Lines pymLines() const { return logs.linesWithTag(kPymTag); }
    FakeTrox& fake() { return service.fake(); }

    LogCapture logs;
    FakeTroxService service;
};

}  // namespace vexal::testing
