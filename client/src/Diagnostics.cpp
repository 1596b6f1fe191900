#define LOG_TAG "TROXFramework-lib-vendor"
#include "ClientFrame.h"
#include "halclient.h"

#include <log/log.h>

#include <cstdlib>
#include <cstring>

using vexal::client::ITrox;
using vexal::client::RequestType;
using vexal::client::TroxRequestParcel;

namespace {

constexpr size_t kPropertySize = 256;

// Asks the service to act on one of its tables, chosen by `selector`.
int diagnostic(const char* name, int selector) {
    ALOGI("trox client %s", name);
    int32_t out = -1;
    vexal::link::callTroxHal(name, [&](ITrox& hal) {
        TroxRequestParcel parcel;
        parcel.requestType = toWire(RequestType::kDiagnostics);
        parcel.param = 1;
        parcel.requestData.push_back(vexal::link::idEntry(selector));
        return hal.troxResCtlRequest(parcel, &out);
    });
    return out >= 1 ? 0 : -1;
}

// Copies `text` with its terminating zero; a text that does not fit ends the process, like a
// fortified copy would, rather than handing back a cut value.
void boundedCopy(char* destination, const std::string& text) {
    if (text.size() >= kPropertySize) {
        std::abort();
    }
    std::memcpy(destination, text.c_str(), text.size() + 1);
}

}  // namespace

// Selector 9 is not used by the service.
int troxHalclient::troxDumpToDoQueue() {
    return diagnostic("troxDumpToDoQueue", 0);
}
int troxHalclient::troxDumpRunMap() {
    return diagnostic("troxDumpRunMap", 1);
}
int troxHalclient::troxDumpActiveResMap() {
    return diagnostic("troxDumpActiveResMap", 2);
}
int troxHalclient::troxDumpResRequest() {
    return diagnostic("troxDumpResRequest", 3);
}
int troxHalclient::troxDumpResInfo() {
    return diagnostic("troxDumpResInfo", 4);
}
int troxHalclient::troxDumpSAInfo() {
    return diagnostic("troxDumpSAInfo", 5);
}
int troxHalclient::troxDumpPidFdList() {
    return diagnostic("troxDumpPidFdList", 6);
}
int troxHalclient::troxDumpPidfdMonitorMap() {
    return diagnostic("troxDumpPidfdMonitorMap", 7);
}
int troxHalclient::troxDumpResRecordList() {
    return diagnostic("troxDumpResRecordList", 8);
}
int troxHalclient::troxHistoryRequestRecordOn() {
    return diagnostic("troxHistoryRequestRecordOn", 10);
}
int troxHalclient::troxHistoryRequestRecordOff() {
    return diagnostic("troxHistoryRequestRecordOff", 11);
}

void troxHalclient::trox_init() {
    ALOGI("trox client trox_init");
    vexal::link::callTroxHal("trox_init", [](ITrox& hal) { return hal.trox_init(); });
}

char* troxHalclient::troxPropertyGet(const std::string& key) {
    ALOGI("trox client troxPropertyGet");
    // Cleared, so that a caller without a connection reads an empty text.
    char* value = new char[kPropertySize]();
    vexal::link::callTroxHal("troxPropertyGet", [&](ITrox& hal) {
        std::string text;
        auto status = hal.troxPropertyGet(key, &text);
        boundedCopy(value, text);
        return status;
    });
    ALOGI("troxPropertyGet %s ", value);
    return value;
}

int troxHalclient::troxPropertySet(const std::string& key, const std::string& value) {
    ALOGI("trox client troxPropertySet");
    int32_t out = -1;
    vexal::link::callTroxHal("troxPropertySet",
                             [&](ITrox& hal) { return hal.troxPropertySet(key, value, &out); });
    return out;
}

void troxHalclient::trox_add_zdbdebug_for_request_parcel(TroxRequestParcel& parcel) {
    parcel.debugTags = std::vector<std::optional<std::string>>{std::string("zdbdebug")};
}
