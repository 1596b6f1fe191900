#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace binder_test {

inline std::vector<uint8_t> bytesOf(const AParcel* parcel) {
    std::vector<uint8_t> out(static_cast<size_t>(AParcel_getDataSize(parcel)));
    if (AParcel_marshal(parcel, out.data(), 0, out.size()) != STATUS_OK) out.clear();
    return out;
}

inline ndk::ScopedAParcel parcelOf(const std::vector<uint8_t>& bytes) {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size());
    return parcel;
}

// Bytes as space-separated 4-byte groups, the way the wire layout is written down.
inline std::string hex(const std::vector<uint8_t>& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0) out += ' ';
        out += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
    }
    return out;
}

inline std::vector<uint8_t> unhex(const std::string& text) {
    std::vector<uint8_t> out;
    for (size_t i = 0; i + 1 < text.size(); i += text[i] == ' ' ? 1 : 2) {
        if (text[i] != ' ') out.push_back(std::stoi(text.substr(i, 2), nullptr, 16));
    }
    return out;
}

// Reads a nullable string; trailing NUL stripped.
inline binder_status_t readString(const AParcel* parcel, std::optional<std::string>* out) {
    binder_status_t status =
            AParcel_readString(parcel, out, [](void* data, int32_t length, char** buffer) {
                auto* text = static_cast<std::optional<std::string>*>(data);
                if (length < 0) text->reset();
                if (length >= 0) *buffer = text->emplace(static_cast<size_t>(length), '\0').data();
                return true;
            });
    if (status == STATUS_OK && out->has_value()) out->value().pop_back();
    return status;
}

inline binder_status_t writeString(AParcel* parcel, const std::string& s) {
    return AParcel_writeString(parcel, s.data(), static_cast<int32_t>(s.size()));
}

// State shared between a test and its echo service object.
struct EchoState {
    std::mutex mutex;
    std::condition_variable cv;
    bool released = false;
    bool blockedCallStarted = false;
    std::vector<int32_t> received;
    std::atomic<int> calls{0};
    std::atomic<bool> destroyed{false};
    pid_t lastCallingPid = 0;
};

enum : transaction_code_t {
    kEcho = FIRST_CALL_TRANSACTION,  // string in, same string out
    kRecord,                         // int32 appended to EchoState::received
    kBlock,                          // waits until EchoState::released
    kCallBack,                       // binder + string in: echoes the string through the binder
    kFail,                           // answers STATUS_PERMISSION_DENIED
    // Only the socket test service answers these.
    kCallerIdentity,  // -> calling pid, calling uid, own pid
    kRemember,        // binder in: kept until kForget
    kNotifyLater,     // int32 n: a service thread sends kRecord 0..n-1 one-way to the kept binder
    kForget,          // drops the kept binder
    kReturnBinder,    // binder in, same binder out
};

constexpr const char* kEchoDescriptor = "test.vexal.IEcho";

inline binder_status_t echoTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                                    AParcel* out);

inline const AIBinder_Class* echoClass() {
    static const AIBinder_Class* clazz = AIBinder_Class_define(
            kEchoDescriptor, [](void* args) { return args; },
            [](void* userData) {
                auto* state = static_cast<EchoState*>(userData);
                std::lock_guard<std::mutex> lock(state->mutex);
                state->destroyed = true;
                state->cv.notify_all();
            },
            echoTransact);
    return clazz;
}

inline ndk::SpAIBinder newEcho(EchoState* state) {
    return ndk::SpAIBinder(AIBinder_new(echoClass(), state));
}

// Sends code with what write puts after the interface token.
inline binder_status_t call(AIBinder* binder, transaction_code_t code,
                            const std::function<void(AParcel*)>& write,
                            ndk::ScopedAParcel* out = nullptr, binder_flags_t flags = 0) {
    AParcel* in = nullptr;
    if (binder_status_t s = AIBinder_prepareTransaction(binder, &in); s != STATUS_OK) return s;
    if (write) write(in);
    // The reply is written through getR(), which would drop a parcel already held without
    // deleting it.
    if (out != nullptr) out->set(nullptr);
    ndk::ScopedAParcel ignored;
    return AIBinder_transact(binder, code, &in, out != nullptr ? out->getR() : ignored.getR(),
                             flags);
}

inline binder_status_t sendInt(AIBinder* binder, transaction_code_t code, int32_t value,
                               ndk::ScopedAParcel* out = nullptr, binder_flags_t flags = 0) {
    return call(
            binder, code, [value](AParcel* in) { AParcel_writeInt32(in, value); }, out, flags);
}

// A client call of kEcho; the binder must have the echo class associated.
inline binder_status_t callEcho(AIBinder* binder, const std::string& text,
                                std::optional<std::string>* reply) {
    ndk::ScopedAParcel out;
    binder_status_t s = call(
            binder, kEcho, [&](AParcel* in) { writeString(in, text); }, &out);
    return s != STATUS_OK ? s : readString(out.get(), reply);
}

inline binder_status_t echoTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                                    AParcel* out) {
    auto* state = static_cast<EchoState*>(AIBinder_getUserData(binder));
    state->calls++;
    switch (code) {
        case kEcho: {
            std::optional<std::string> text;
            if (binder_status_t s = readString(in, &text); s != STATUS_OK) return s;
            {
                std::lock_guard<std::mutex> lock(state->mutex);
                state->lastCallingPid = AIBinder_getCallingPid();
                state->cv.notify_all();
            }
            return text ? writeString(out, *text) : AParcel_writeString(out, nullptr, -1);
        }
        case kRecord: {
            int32_t value = 0;
            if (binder_status_t s = AParcel_readInt32(in, &value); s != STATUS_OK) return s;
            std::lock_guard<std::mutex> lock(state->mutex);
            state->received.push_back(value);
            state->cv.notify_all();
            return STATUS_OK;
        }
        case kBlock: {
            std::unique_lock<std::mutex> lock(state->mutex);
            state->blockedCallStarted = true;
            state->cv.notify_all();
            state->cv.wait(lock, [state] { return state->released; });
            return STATUS_OK;
        }
        case kCallBack: {
            ndk::SpAIBinder target;
            std::optional<std::string> text;
            binder_status_t s = AParcel_readStrongBinder(in, target.getR());
            if (s != STATUS_OK || (s = readString(in, &text)) != STATUS_OK) return s;
            if (target.get() == nullptr) return STATUS_UNEXPECTED_NULL;
            if (!AIBinder_associateClass(target.get(), echoClass())) return STATUS_BAD_TYPE;
            std::optional<std::string> echoed;
            if ((s = callEcho(target.get(), *text, &echoed)) != STATUS_OK) return s;
            return writeString(out, echoed.value_or("<null>"));
        }
        case kFail:
            return STATUS_PERMISSION_DENIED;
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

}  // namespace binder_test
