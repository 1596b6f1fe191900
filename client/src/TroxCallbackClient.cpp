// Differs from the client class's "TROXFramework-lib-vendor" on purpose: the callback client's
// lines have always carried this spelling. Not a slip; do not align the two.
#define LOG_TAG "TroxFramework-lib-vendor"
#include "TroxCallbackClient.h"

#include "PrintLog.h"
#include "link/RequestEntries.h"

#include <log/log.h>

#include <algorithm>
#include <list>
#include <string>

using ::aidl::vendor::vexal::hardware::trox::BnTroxCallback;

void printLog(const BnTroxCallback::TransactionLog& log) {
    __android_log_print(ANDROID_LOG_INFO, nullptr,
                        "BnTroxCallback::logFunc NDK BACKEND method_name %s exception_code %d "
                        "exception_message %s transaction_error %d service_specific_error_code %d",
                        log.method_name.c_str(), log.exception_code, log.exception_message.c_str(),
                        log.transaction_error, log.service_specific_error_code);
}

TroxCallbackClient::TroxCallbackClient(const std::shared_ptr<IClientCallback>& callback,
                                       bool registering, bool byPath)
    : mCallback(callback), is_register(registering), is_by_path(byPath) {
    BnTroxCallback::logFunc = printLog;
}

TroxCallbackClient::TroxCallbackClient(const std::shared_ptr<IClientCallbackByPath>& callback,
                                       bool registering, bool byPath)
    : mCallbackByPath(callback), is_register(registering), is_by_path(byPath) {
    BnTroxCallback::logFunc = printLog;
}

TroxCallbackClient::~TroxCallbackClient() {
    ALOGI("ndk backend ~TroxCallbackClient");
    mCallback.reset();
}

ndk::ScopedAStatus TroxCallbackClient::onCallback(const std::vector<TroxRequestData>& data) {
    // Erasing below may drop the library's last reference while this call still runs.
    const std::shared_ptr<TroxCallbackClient> self = ref<TroxCallbackClient>();
    if (!data.empty() && !is_by_path) {
        std::list<PymClient::Resource> resources;
        for (const auto& record : data) {
            const int32_t id = vexal::link::replyId(record.res_Id);
            if (record.res_Value) {
                ALOGI("TroxCallbackClient::onCallback res_Id %#x res_Value %s is_register %d", id,
                      record.res_Value->c_str(), is_register);
            } else {
                ALOGI("TroxCallbackClient::onCallback res_Id %#x is_register %d", id, is_register);
            }
            resources.push_back({id, record.res_Value.value_or(std::string())});
        }
        if (mCallback) {
            ALOGI("TroxCallback::onCallback call IClientCallback onCallback is_register %d",
                  is_register);
            mCallback->onCallback(resources);
        }
    } else if (!data.empty()) {
        std::vector<std::string> paths;
        std::vector<std::string> values;
        for (const auto& record : data) {
            if (record.res_Path && record.res_Value) {
                ALOGI("TroxCallbackClient::onCallback res_Id %s res_Value %s is_register %d",
                      record.res_Path->c_str(), record.res_Value->c_str(), is_register);
            }
            paths.push_back(record.res_Path.value_or(std::string()));
            values.push_back(record.res_Value.value_or(std::string()));
        }
        if (mCallbackByPath) {
            ALOGI("TroxCallback::onCallback call IClientCallback onCallback is_register %d",
                  is_register);
            mCallbackByPath->onCallback(values, paths);
        }
    }
    if (is_register) return ndk::ScopedAStatus::ok();

    std::lock_guard<std::mutex> hold(request_callback_mutex);
    const int before = static_cast<int>(request_callbacks.size());
    bool found = false;
    auto kept = std::remove_if(request_callbacks.begin(), request_callbacks.end(),
                               [&](const std::shared_ptr<TroxCallbackClient>& entry) {
                                   if (entry.get() != this) return false;
                                   ALOGI("callback is found in request_callbacks");
                                   found = true;
                                   return true;
                               });
    request_callbacks.erase(kept, request_callbacks.end());
    if (!found) ALOGE("callback not found in request_callbacks");
    ALOGI("TroxCallback::onCallback request callback called , remove from request_callbacks , "
          "request_callbacks size before %d after %d",
          before, static_cast<int>(request_callbacks.size()));
    return ndk::ScopedAStatus::ok();
}
