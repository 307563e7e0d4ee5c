// Reference counting: RefBase, and wp<T>, the weak pointer. sp<T> is in StrongPointer.h.
#pragma once

#include <stdint.h>

#include <atomic>
#include <utility>

#include <utils/StrongPointer.h>

namespace android {

// Derive virtually. The object deletes itself when its last strong reference goes, on whichever
// thread drops it. Counts may be changed from any thread.
//
// The id that the methods take is the pointer that asks, which a debugging build of the device
// notes. It is not used here.
class RefBase {
  public:
    // Both counts outlive the object for as long as weak references to it exist.
    class weakref_type {
      public:
        // Weak references keep the counts alive, not the object.
        void incWeak(const void* id);
        void decWeak(const void* id);
        // Takes a strong reference if one exists or none ever did. False for ever once the last one
        // is gone: the object may still be in its destructor then.
        bool attemptIncStrong(const void* id);

      private:
        friend class RefBase;
        explicit weakref_type(RefBase* base) : mBase(base) {}

        std::atomic<int32_t> mStrong;
        std::atomic<int32_t> mWeak{0};
        RefBase* const mBase;
    };

    // sp<T> calls these. decStrong destroys the object with the last reference.
    void incStrong(const void* id) const;
    void decStrong(const void* id) const;
    // wp<T> calls it: it gives the counts, with one weak reference more.
    weakref_type* createWeak(const void* id) const;
    // How many strong references there were a moment ago: for tests.
    int32_t getStrongCount() const;

    RefBase(const RefBase&) = delete;
    RefBase& operator=(const RefBase&) = delete;

  protected:
    RefBase();
    virtual ~RefBase();

    // Called once, with the first strong reference, when the object is complete: unlike in a
    // constructor, it may hand out pointers to itself. On the thread that took the reference.
    virtual void onFirstRef() {}
    // The object is still whole, but no strong reference to it can be taken any more.
    virtual void onLastStrongRef(const void* /*id*/) {}

  private:
    weakref_type* const mRefs;
};

// The weak pointer to an object derived from RefBase: it knows the object without keeping it. Used
// by one thread at a time.
template <typename T>
class wp {
  public:
    wp() = default;
    wp(T* other) : mPtr(other), mRefs(other ? other->createWeak(this) : nullptr) {}  // NOLINT
    wp(const sp<T>& other) : wp(other.get()) {}                                      // NOLINT
    wp(const wp<T>& other) : mPtr(other.mPtr), mRefs(other.mRefs) {
        if (mRefs != nullptr) mRefs->incWeak(this);
    }
    template <typename U>
    wp(const sp<U>& other) : wp(static_cast<T*>(other.get())) {}  // NOLINT
    ~wp() { clear(); }

    wp& operator=(const wp<T>& other) {  // NOLINT: self is safe
        wp<T> copy(other);
        std::swap(mPtr, copy.mPtr);
        std::swap(mRefs, copy.mRefs);
        return *this;
    }

    // A strong pointer while the object lives, null for ever after. From an object without any
    // strong reference yet it takes the first.
    sp<T> promote() const {
        sp<T> result;
        if (mRefs != nullptr && mRefs->attemptIncStrong(&result)) result.set_pointer(mPtr);
        return result;
    }

    void clear() {
        if (mRefs != nullptr) mRefs->decWeak(this);
        mPtr = nullptr;
        mRefs = nullptr;
    }

    // Only for comparing: the object may be gone.
    T* unsafe_get() const { return mPtr; }

    // Two weak pointers are equal when they were made from the same object, living or not.
    bool operator==(const wp<T>& other) const { return mRefs == other.mRefs; }
    bool operator!=(const wp<T>& other) const { return mRefs != other.mRefs; }
    bool operator==(const sp<T>& other) const { return mPtr == other.get(); }

  private:
    T* mPtr = nullptr;
    RefBase::weakref_type* mRefs = nullptr;
};

}  // namespace android
