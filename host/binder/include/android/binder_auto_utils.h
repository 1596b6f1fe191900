#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <string.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace ndk {

namespace internal {
// Where a device's header asserts: say why on stderr, then abort.
[[noreturn]] inline void abortWith(const char* file, int line, const char* message) {
    std::fprintf(stderr, "%s:%d: %s\n", file, line, message);
    std::fflush(stderr);
    std::abort();
}
}  // namespace internal

// Owns one strong reference. Copying takes another; there is no move (a moved-from SpAIBinder
// keeps its binder, as on a device).
class SpAIBinder {
  public:
    SpAIBinder() : mBinder(nullptr) {}
    // Adopts the reference the caller already owns.
    explicit SpAIBinder(AIBinder* binder) : mBinder(binder) {}
    SpAIBinder(std::nullptr_t) : SpAIBinder() {}  // NOLINT: implicit like a pointer
    SpAIBinder(const SpAIBinder& other) : mBinder(nullptr) { *this = other; }
    ~SpAIBinder() { set(nullptr); }

    SpAIBinder& operator=(const SpAIBinder& other) {
        if (this == &other) return *this;
        AIBinder_incStrong(other.mBinder);
        set(other.mBinder);
        return *this;
    }

    // Takes ownership of binder and drops the previous reference. Another thread replacing the
    // binder meanwhile is a data race the device's header aborts on.
    void set(AIBinder* binder) {
        AIBinder* old = *const_cast<AIBinder* volatile*>(&mBinder);
        if (old != nullptr) AIBinder_decStrong(old);
        if (old != *const_cast<AIBinder* volatile*>(&mBinder)) {
            internal::abortWith(__FILE__, __LINE__, "ndk::SpAIBinder::set: race detected.");
        }
        mBinder = binder;
    }
    AIBinder* get() const { return mBinder; }
    AIBinder** getR() { return &mBinder; }

    bool operator!=(const SpAIBinder& rhs) const { return get() != rhs.get(); }
    bool operator<(const SpAIBinder& rhs) const { return get() < rhs.get(); }
    bool operator<=(const SpAIBinder& rhs) const { return get() <= rhs.get(); }
    bool operator==(const SpAIBinder& rhs) const { return get() == rhs.get(); }
    bool operator>(const SpAIBinder& rhs) const { return get() > rhs.get(); }
    bool operator>=(const SpAIBinder& rhs) const { return get() >= rhs.get(); }

  private:
    AIBinder* mBinder;
};

namespace impl {

// Move-only owner of a C handle released by Destroy (called on the default value too, which
// every Destroy used here accepts).
template <typename T, void (*Destroy)(T), T DEFAULT>
class ScopedAResource {
  public:
    explicit ScopedAResource(T t = DEFAULT) : mT(t) {}
    ~ScopedAResource() { set(DEFAULT); }

    void set(T t) {
        Destroy(mT);
        mT = t;
    }
    T get() { return mT; }
    const T get() const { return mT; }
    [[nodiscard]] T release() {
        T t = mT;
        mT = DEFAULT;
        return t;
    }
    T* getR() { return &mT; }

    ScopedAResource(const ScopedAResource&) = delete;
    ScopedAResource& operator=(const ScopedAResource&) = delete;
    ScopedAResource(ScopedAResource&& other) noexcept : mT(other.mT) { other.mT = DEFAULT; }
    ScopedAResource& operator=(ScopedAResource&& other) noexcept {
        if (this != &other) {
            set(other.mT);
            other.mT = DEFAULT;
        }
        return *this;
    }

  private:
    T mT;
};

}  // namespace impl

class ScopedAParcel : public impl::ScopedAResource<AParcel*, AParcel_delete, nullptr> {
  public:
    explicit ScopedAParcel(AParcel* a = nullptr) : ScopedAResource(a) {}
    ~ScopedAParcel() {}
    ScopedAParcel(ScopedAParcel&&) = default;
    ScopedAParcel& operator=(ScopedAParcel&&) = default;
};

// The getters read the held status: on an empty one (default-constructed, moved from) they abort,
// where a device dereferences null.
class ScopedAStatus : public impl::ScopedAResource<AStatus*, AStatus_delete, nullptr> {
  public:
    explicit ScopedAStatus(AStatus* a = nullptr) : ScopedAResource(a) {}
    ~ScopedAStatus() {}
    ScopedAStatus(ScopedAStatus&&) = default;
    ScopedAStatus& operator=(ScopedAStatus&&) = default;

    bool isOk() const { return get() != nullptr && AStatus_isOk(get()); }
    binder_exception_t getExceptionCode() const { return AStatus_getExceptionCode(get()); }
    int32_t getServiceSpecificError() const { return AStatus_getServiceSpecificError(get()); }
    binder_status_t getStatus() const { return AStatus_getStatus(get()); }
    const char* getMessage() const { return AStatus_getMessage(get()); }
    std::string getDescription() const {
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

class ScopedAIBinder_DeathRecipient
    : public impl::ScopedAResource<AIBinder_DeathRecipient*, AIBinder_DeathRecipient_delete,
                                   nullptr> {
  public:
    explicit ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient* a = nullptr)
        : ScopedAResource(a) {}
    ~ScopedAIBinder_DeathRecipient() {}
    ScopedAIBinder_DeathRecipient(ScopedAIBinder_DeathRecipient&&) = default;
    ScopedAIBinder_DeathRecipient& operator=(ScopedAIBinder_DeathRecipient&&) = default;
};

class ScopedAIBinder_Weak
    : public impl::ScopedAResource<AIBinder_Weak*, AIBinder_Weak_delete, nullptr> {
  public:
    explicit ScopedAIBinder_Weak(AIBinder_Weak* a = nullptr) : ScopedAResource(a) {}
    ~ScopedAIBinder_Weak() {}
    ScopedAIBinder_Weak(ScopedAIBinder_Weak&&) = default;
    ScopedAIBinder_Weak& operator=(ScopedAIBinder_Weak&&) = default;

    SpAIBinder promote() const { return SpAIBinder(AIBinder_Weak_promote(get())); }
};

namespace internal {
inline void closeWithError(int fd) {
    if (fd == -1) return;
    if (::close(fd) != 0) std::perror("ndk::ScopedFileDescriptor: close");
}
}  // namespace internal

class ScopedFileDescriptor : public impl::ScopedAResource<int, internal::closeWithError, -1> {
  public:
    ScopedFileDescriptor() : ScopedFileDescriptor(-1) {}
    explicit ScopedFileDescriptor(int a) : ScopedAResource(a) {}
    ~ScopedFileDescriptor() {}
    ScopedFileDescriptor(ScopedFileDescriptor&&) = default;
    ScopedFileDescriptor& operator=(ScopedFileDescriptor&&) = default;

    ScopedFileDescriptor dup() const { return ScopedFileDescriptor(::dup(get())); }

    bool operator!=(const ScopedFileDescriptor& rhs) const { return get() != rhs.get(); }
    bool operator<(const ScopedFileDescriptor& rhs) const { return get() < rhs.get(); }
    bool operator<=(const ScopedFileDescriptor& rhs) const { return get() <= rhs.get(); }
    bool operator==(const ScopedFileDescriptor& rhs) const { return get() == rhs.get(); }
    bool operator>(const ScopedFileDescriptor& rhs) const { return get() > rhs.get(); }
    bool operator>=(const ScopedFileDescriptor& rhs) const { return get() >= rhs.get(); }
};

}  // namespace ndk
