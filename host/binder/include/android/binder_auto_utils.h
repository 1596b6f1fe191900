#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <unistd.h>

#include <cstddef>
#include <ostream>
#include <string>

namespace ndk {

// Owns one strong reference.
class SpAIBinder {
  public:
    SpAIBinder() : mBinder(nullptr) {}
    SpAIBinder(std::nullptr_t) : SpAIBinder() {}  // NOLINT: implicit like a pointer
    // Adopts the reference the caller already owns.
    explicit SpAIBinder(AIBinder* binder) : mBinder(binder) {}
    SpAIBinder(const SpAIBinder& other) : mBinder(other.mBinder) {
        if (mBinder != nullptr) AIBinder_incStrong(mBinder);
    }
    SpAIBinder(SpAIBinder&& other) noexcept : mBinder(other.release()) {}
    ~SpAIBinder() { set(nullptr); }

    SpAIBinder& operator=(const SpAIBinder& other) {
        if (this == &other) return *this;
        AIBinder* binder = other.mBinder;
        if (binder != nullptr) AIBinder_incStrong(binder);
        set(binder);
        return *this;
    }
    SpAIBinder& operator=(SpAIBinder&& other) noexcept {
        if (this != &other) set(other.release());
        return *this;
    }

    // Takes ownership of binder and drops the previous reference.
    void set(AIBinder* binder) {
        AIBinder* old = mBinder;
        mBinder = binder;
        if (old != nullptr) AIBinder_decStrong(old);
    }
    AIBinder* release() {
        AIBinder* binder = mBinder;
        mBinder = nullptr;
        return binder;
    }
    AIBinder* get() const { return mBinder; }
    AIBinder** getR() { return &mBinder; }

    bool operator==(const SpAIBinder& rhs) const { return mBinder == rhs.mBinder; }
    bool operator!=(const SpAIBinder& rhs) const { return mBinder != rhs.mBinder; }
    bool operator<(const SpAIBinder& rhs) const { return mBinder < rhs.mBinder; }
    bool operator<=(const SpAIBinder& rhs) const { return mBinder <= rhs.mBinder; }
    bool operator>(const SpAIBinder& rhs) const { return mBinder > rhs.mBinder; }
    bool operator>=(const SpAIBinder& rhs) const { return mBinder >= rhs.mBinder; }

  private:
    AIBinder* mBinder;
};

namespace impl {

// Move-only owner of a C handle released by Destroy.
template <typename T, void (*Destroy)(T), T DEFAULT>
class ScopedAResource {
  public:
    explicit ScopedAResource(T a = DEFAULT) : mT(a) {}
    ~ScopedAResource() { reset(); }
    ScopedAResource(const ScopedAResource&) = delete;
    ScopedAResource& operator=(const ScopedAResource&) = delete;
    ScopedAResource(ScopedAResource&& other) noexcept : mT(other.release()) {}
    ScopedAResource& operator=(ScopedAResource&& other) noexcept {
        if (this != &other) set(other.release());
        return *this;
    }

    void set(T a) {
        T old = mT;
        mT = a;
        if (old != DEFAULT) Destroy(old);
    }
    void reset() { set(DEFAULT); }
    T get() const { return mT; }
    T* getR() { return &mT; }
    T release() {
        T a = mT;
        mT = DEFAULT;
        return a;
    }

  private:
    T mT;
};

}  // namespace impl

class ScopedAParcel : public impl::ScopedAResource<AParcel*, AParcel_delete, nullptr> {
  public:
    explicit ScopedAParcel(AParcel* a = nullptr) : ScopedAResource(a) {}
    ScopedAParcel(ScopedAParcel&&) = default;
    ScopedAParcel& operator=(ScopedAParcel&&) = default;
};

class ScopedAStatus : public impl::ScopedAResource<AStatus*, AStatus_delete, nullptr> {
  public:
    explicit ScopedAStatus(AStatus* a = nullptr) : ScopedAResource(a) {}
    ScopedAStatus(ScopedAStatus&&) = default;
    ScopedAStatus& operator=(ScopedAStatus&&) = default;

    bool isOk() const { return get() != nullptr && AStatus_isOk(get()); }
    binder_exception_t getExceptionCode() const {
        return get() == nullptr ? EX_NONE : AStatus_getExceptionCode(get());
    }
    binder_status_t getStatus() const {
        return get() == nullptr ? STATUS_OK : AStatus_getStatus(get());
    }
    int32_t getServiceSpecificError() const {
        return get() == nullptr ? 0 : AStatus_getServiceSpecificError(get());
    }
    const char* getMessage() const { return get() == nullptr ? "" : AStatus_getMessage(get()); }
    std::string getDescription() const {
        if (get() == nullptr) return "(null status)";
        const char* description = AStatus_getDescription(get());
        std::string result(description);
        AStatus_deleteDescription(description);
        return result;
    }

    static ScopedAStatus ok() { return ScopedAStatus(AStatus_newOk()); }
    static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
        return ScopedAStatus(AStatus_fromExceptionCode(exception));
    }
    static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception,
                                                      const char* message) {
        return ScopedAStatus(AStatus_fromExceptionCodeWithMessage(exception, message));
    }
    static ScopedAStatus fromServiceSpecificError(int32_t serviceSpecific) {
        return ScopedAStatus(AStatus_fromServiceSpecificError(serviceSpecific));
    }
    static ScopedAStatus fromServiceSpecificErrorWithMessage(int32_t serviceSpecific,
                                                             const char* message) {
        return ScopedAStatus(AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message));
    }
    static ScopedAStatus fromStatus(binder_status_t status) {
        return ScopedAStatus(AStatus_fromStatus(status));
    }
};

inline std::ostream& operator<<(std::ostream& os, const ScopedAStatus& status) {
    return os << status.getDescription();
}

class ScopedAIBinder_DeathRecipient
    : public impl::ScopedAResource<AIBinder_DeathRecipient*, AIBinder_DeathRecipient_delete,
                                   nullptr> {
  public:
    explicit ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient* a = nullptr)
        : ScopedAResource(a) {}
    ScopedAIBinder_DeathRecipient(ScopedAIBinder_DeathRecipient&&) = default;
    ScopedAIBinder_DeathRecipient& operator=(ScopedAIBinder_DeathRecipient&&) = default;
};

class ScopedAIBinder_Weak
    : public impl::ScopedAResource<AIBinder_Weak*, AIBinder_Weak_delete, nullptr> {
  public:
    explicit ScopedAIBinder_Weak(AIBinder_Weak* a = nullptr) : ScopedAResource(a) {}
    ScopedAIBinder_Weak(ScopedAIBinder_Weak&&) = default;
    ScopedAIBinder_Weak& operator=(ScopedAIBinder_Weak&&) = default;

    SpAIBinder promote() const { return SpAIBinder(AIBinder_Weak_promote(get())); }
};

namespace internal {
inline void closeWithError(int fd) {
    if (fd >= 0) ::close(fd);
}
}  // namespace internal

class ScopedFileDescriptor : public impl::ScopedAResource<int, internal::closeWithError, -1> {
  public:
    explicit ScopedFileDescriptor(int a = -1) : ScopedAResource(a) {}
    ScopedFileDescriptor(ScopedFileDescriptor&&) = default;
    ScopedFileDescriptor& operator=(ScopedFileDescriptor&&) = default;
    ScopedFileDescriptor dup() const { return ScopedFileDescriptor(::dup(get())); }
    bool operator==(const ScopedFileDescriptor& rhs) const { return get() == rhs.get(); }
    bool operator!=(const ScopedFileDescriptor& rhs) const { return get() != rhs.get(); }
    bool operator<(const ScopedFileDescriptor& rhs) const { return get() < rhs.get(); }
};

}  // namespace ndk
