// C++ object model over AIBinder: shared ownership, local/remote interface objects and the class
// trampolines that generated code plugs its onTransact into.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>

namespace ndk {

// Owned through std::shared_ptr, created by make<T>() (plain `new` does not compile). The first
// ref() creates the owning shared_ptr; destroying an object that never had one, or one that
// something still owns, aborts as on a device.
class SharedRefBase {
  public:
    SharedRefBase() {}
    virtual ~SharedRefBase() {
        std::call_once(mFlagThis, [] {
            internal::abortWith(__FILE__, __LINE__,
                                "ndk::SharedRefBase: destroyed without a ref ever created (made "
                                "on the stack or outside SharedRefBase::make?)");
        });
        if (ref() != nullptr) {
            internal::abortWith(__FILE__, __LINE__,
                                "ndk::SharedRefBase: destroyed while still owned (double "
                                "ownership: deleted by hand, or owned by a second shared_ptr?)");
        }
    }

    // The owning reference; the first call creates it, so it must run on a heap object.
    std::shared_ptr<SharedRefBase> ref() {
        std::shared_ptr<SharedRefBase> self = mThis.lock();
        std::call_once(mFlagThis, [&] { mThis = self = std::shared_ptr<SharedRefBase>(this); });
        return self;
    }

    template <typename CHILD>
    std::shared_ptr<CHILD> ref() {
        return std::static_pointer_cast<CHILD>(ref());
    }

    template <class T, class... Args>
    static std::shared_ptr<T> make(Args&&... args) {
        T* t = new T(std::forward<Args>(args)...);
        return t->template ref<T>();
    }

    static void operator delete(void* p) { std::free(p); }

  private:
    // Only make() allocates: a second owner would delete the object twice.
    static void* operator new(size_t s) { return std::malloc(s); }

    std::once_flag mFlagThis;
    std::weak_ptr<SharedRefBase> mThis;
};

class ICInterface : public SharedRefBase {
  public:
    ICInterface() {}
    virtual ~ICInterface() {}

    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;
    virtual inline binder_status_t dump(int fd, const char** args, uint32_t numArgs);

    // The local object behind a binder created by one of our classes; null for proxies.
    static inline std::shared_ptr<ICInterface> asInterface(AIBinder* binder);

    static inline AIBinder_Class* defineClass(const char* interfaceDescriptor,
                                              AIBinder_Class_onTransact onTransact);

  private:
    class ICInterfaceData {
      public:
        std::shared_ptr<ICInterface> interface;

        static inline std::shared_ptr<ICInterface> getInterface(AIBinder* binder);
        static inline void* onCreate(void* args);
        static inline void onDestroy(void* userData);
        static inline binder_status_t onDump(AIBinder* binder, int fd, const char** args,
                                             uint32_t numArgs);
    };
};

// Local (service side) half. One binder per object at a time, created on first use; the binder
// keeps the object alive, the object only remembers the binder weakly (no cycle).
template <typename INTERFACE>
class BnCInterface : public INTERFACE {
  public:
    BnCInterface() {}
    virtual ~BnCInterface() {}

    SpAIBinder asBinder() override final;
    bool isRemote() override final { return false; }

  protected:
    virtual SpAIBinder createBinder() = 0;

  private:
    std::mutex mMutex;
    ScopedAIBinder_Weak mWeakBinder;
};

// Remote (client side) half: a thin holder of the proxy binder.
template <typename INTERFACE>
class BpCInterface : public INTERFACE {
  public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}
    virtual ~BpCInterface() {}

    SpAIBinder asBinder() override final;
    bool isRemote() override final { return AIBinder_isRemote(mBinder.get()); }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        return AIBinder_dump(asBinder().get(), fd, args, numArgs);
    }

  private:
    SpAIBinder mBinder;
};

binder_status_t ICInterface::dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
    return STATUS_OK;
}

std::shared_ptr<ICInterface> ICInterface::asInterface(AIBinder* binder) {
    return ICInterfaceData::getInterface(binder);
}

AIBinder_Class* ICInterface::defineClass(const char* interfaceDescriptor,
                                         AIBinder_Class_onTransact onTransact) {
    AIBinder_Class* clazz = AIBinder_Class_define(interfaceDescriptor, ICInterfaceData::onCreate,
                                                  ICInterfaceData::onDestroy, onTransact);
    if (clazz == nullptr) return nullptr;
    AIBinder_Class_setOnDump(clazz, ICInterfaceData::onDump);
    return clazz;
}

std::shared_ptr<ICInterface> ICInterface::ICInterfaceData::getInterface(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    void* userData = AIBinder_getUserData(binder);
    if (userData == nullptr) return nullptr;
    return static_cast<ICInterfaceData*>(userData)->interface;
}

void* ICInterface::ICInterfaceData::onCreate(void* args) {
    std::shared_ptr<ICInterface> interface = static_cast<ICInterface*>(args)->ref<ICInterface>();
    return static_cast<void*>(new ICInterfaceData{interface});
}

void ICInterface::ICInterfaceData::onDestroy(void* userData) {
    delete static_cast<ICInterfaceData*>(userData);
}

binder_status_t ICInterface::ICInterfaceData::onDump(AIBinder* binder, int fd, const char** args,
                                                     uint32_t numArgs) {
    std::shared_ptr<ICInterface> interface = getInterface(binder);
    if (interface == nullptr) return STATUS_DEAD_OBJECT;
    return interface->dump(fd, args, numArgs);
}

template <typename INTERFACE>
SpAIBinder BnCInterface<INTERFACE>::asBinder() {
    std::lock_guard<std::mutex> lock(mMutex);
    SpAIBinder binder;
    if (mWeakBinder.get() != nullptr) binder.set(AIBinder_Weak_promote(mWeakBinder.get()));
    if (binder.get() == nullptr) {
        binder = createBinder();
        mWeakBinder.set(AIBinder_Weak_new(binder.get()));
    }
    return binder;
}

template <typename INTERFACE>
SpAIBinder BpCInterface<INTERFACE>::asBinder() {
    return mBinder;
}

}  // namespace ndk

// std::make_shared / std::make_unique of a SharedRefBase would give it a second owner: refused at
// compile time, as the device's header does.
namespace ndk::internal {
template <typename T, typename = void>
struct is_complete_type : std::false_type {};
template <typename T>
struct is_complete_type<T, decltype(void(sizeof(T)))> : std::true_type {};
}  // namespace ndk::internal

namespace std {

template <typename T, typename... Args,
          std::enable_if_t<ndk::internal::is_complete_type<T>::value, bool> = true,
          std::enable_if_t<std::is_base_of<ndk::SharedRefBase, T>::value, bool> = true>
shared_ptr<T> make_shared(Args...) {
    static_assert(!std::is_base_of<ndk::SharedRefBase, T>::value,
                  "use ndk::SharedRefBase::make<T>() for ndk::SharedRefBase types");
}

template <typename T, typename... Args,
          std::enable_if_t<ndk::internal::is_complete_type<T>::value, bool> = true,
          std::enable_if_t<std::is_base_of<ndk::SharedRefBase, T>::value, bool> = true>
unique_ptr<T> make_unique(Args...) {
    static_assert(!std::is_base_of<ndk::SharedRefBase, T>::value,
                  "use ndk::SharedRefBase::make<T>() for ndk::SharedRefBase types");
}

}  // namespace std
