// C++ object model over AIBinder: shared ownership, local/remote interface objects and the class
// trampolines that generated code plugs its onTransact into.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace ndk {

// Objects of this kind are always owned by shared_ptr, so binders created for them can keep them
// alive and ref() can be called from inside their own methods.
class SharedRefBase {
  public:
    SharedRefBase() {}
    SharedRefBase(const SharedRefBase&) = delete;
    SharedRefBase& operator=(const SharedRefBase&) = delete;
    virtual ~SharedRefBase() {}

    template <class T>
    std::shared_ptr<T> ref() {
        return std::static_pointer_cast<T>(lockSelf());
    }

    template <class T>
    std::shared_ptr<const T> ref() const {
        return std::static_pointer_cast<const T>(lockSelf());
    }

    template <class T, class... Args>
    static std::shared_ptr<T> make(Args&&... args) {
        T* t = new T(std::forward<Args>(args)...);
        std::shared_ptr<T> owner(t, [](T* p) { delete p; });
        static_cast<SharedRefBase*>(t)->mThis = owner;
        return owner;
    }

    // Public so that every derived destructor can free; allocation stays private to make().
    static void operator delete(void* p) { std::free(p); }

  private:
    static void* operator new(size_t s) {
        void* p = std::malloc(s);
        if (p == nullptr) throw std::bad_alloc();
        return p;
    }
    static void* operator new[](size_t) = delete;

    std::shared_ptr<SharedRefBase> lockSelf() const {
        std::shared_ptr<SharedRefBase> self = mThis.lock();
        if (self == nullptr) {
            // Either not created by make() or already being destroyed: both are caller bugs.
            std::fprintf(stderr, "ndk::SharedRefBase::ref() on an object not owned by make()\n");
            std::abort();
        }
        return self;
    }

    mutable std::weak_ptr<SharedRefBase> mThis;
};

class ICInterface : public SharedRefBase {
  public:
    ICInterface() {}
    virtual ~ICInterface() {}

    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;
    virtual binder_status_t dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
        return STATUS_OK;
    }

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
    virtual ~BnCInterface() {
        if (mWeakBinder != nullptr) AIBinder_Weak_delete(mWeakBinder);
    }

    SpAIBinder asBinder() override final;
    bool isRemote() override final { return false; }

    static std::string makeServiceName(std::string_view instance) {
        return std::string(INTERFACE::descriptor) + "/" + std::string(instance);
    }

  protected:
    virtual SpAIBinder createBinder() = 0;

  private:
    std::mutex mMutex;
    AIBinder_Weak* mWeakBinder = nullptr;
};

// Remote (client side) half: a thin holder of the proxy binder.
template <typename INTERFACE>
class BpCInterface : public INTERFACE {
  public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}
    virtual ~BpCInterface() {}

    SpAIBinder asBinder() override final { return mBinder; }
    bool isRemote() override final { return true; }

  private:
    SpAIBinder mBinder;
};

std::shared_ptr<ICInterface> ICInterface::asInterface(AIBinder* binder) {
    return ICInterfaceData::getInterface(binder);
}

AIBinder_Class* ICInterface::defineClass(const char* interfaceDescriptor,
                                         AIBinder_Class_onTransact onTransact) {
    AIBinder_Class* clazz = AIBinder_Class_define(interfaceDescriptor, ICInterfaceData::onCreate,
                                                  ICInterfaceData::onDestroy, onTransact);
    if (clazz != nullptr) AIBinder_Class_setOnDump(clazz, ICInterfaceData::onDump);
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
    ICInterfaceData* data = new ICInterfaceData{interface};
    return static_cast<void*>(data);
}

void ICInterface::ICInterfaceData::onDestroy(void* userData) {
    delete static_cast<ICInterfaceData*>(userData);
}

binder_status_t ICInterface::ICInterfaceData::onDump(AIBinder* binder, int fd, const char** args,
                                                     uint32_t numArgs) {
    std::shared_ptr<ICInterface> interface = getInterface(binder);
    if (interface == nullptr) return STATUS_UNEXPECTED_NULL;
    return interface->dump(fd, args, numArgs);
}

template <typename INTERFACE>
SpAIBinder BnCInterface<INTERFACE>::asBinder() {
    std::lock_guard<std::mutex> lock(mMutex);
    SpAIBinder binder;
    if (mWeakBinder != nullptr) binder = SpAIBinder(AIBinder_Weak_promote(mWeakBinder));
    if (binder.get() == nullptr) {
        binder = createBinder();
        if (mWeakBinder != nullptr) AIBinder_Weak_delete(mWeakBinder);
        mWeakBinder = binder.get() != nullptr ? AIBinder_Weak_new(binder.get()) : nullptr;
    }
    return binder;
}

}  // namespace ndk
