// sp<T>, the strong pointer of libutils: what RefBase counts. A pointer is used by one thread at a
// time; several threads may hold pointers to one object.
#pragma once

namespace android {

template <typename T>
class wp;

// The strong pointer to an object derived from RefBase. A null one is not counted. Giving up the
// last one, be it by assignment, destroys the object on the spot: not with a lock held that it may
// want.
template <typename T>
class sp {
  public:
    sp() = default;
    // Takes a bare pointer without a word, as the device's does: sp<T> name = new T is the usual
    // way.
    sp(T* other) : mPtr(other) { acquire(); }  // NOLINT: implicit by contract
    sp(const sp<T>& other) : mPtr(other.mPtr) { acquire(); }
    sp(sp<T>&& other) noexcept : mPtr(other.mPtr) { other.mPtr = nullptr; }
    template <typename U>
    sp(U* other) : mPtr(other) {  // NOLINT
        acquire();
    }
    template <typename U>
    sp(const sp<U>& other) : mPtr(other.get()) {  // NOLINT
        acquire();
    }
    ~sp() { release(mPtr); }

    sp& operator=(T* other) { return replace(other); }
    sp& operator=(const sp<T>& other) { return replace(other.mPtr); }  // NOLINT: self is safe
    sp& operator=(sp<T>&& other) noexcept {
        T* old = mPtr;
        mPtr = other.mPtr;
        other.mPtr = nullptr;
        release(old);
        return *this;
    }
    template <typename U>
    sp& operator=(const sp<U>& other) {
        return replace(other.get());
    }

    // Gives up the object; null from then on.
    void clear() { replace(nullptr); }

    // The bare pointer is not counted: it is good as long as somebody holds the object.
    T* get() const { return mPtr; }
    T& operator*() const { return *mPtr; }
    T* operator->() const { return mPtr; }
    explicit operator bool() const { return mPtr != nullptr; }

    template <typename U>
    bool operator==(const sp<U>& other) const {
        return mPtr == other.get();
    }
    template <typename U>
    bool operator!=(const sp<U>& other) const {
        return mPtr != other.get();
    }
    bool operator==(const T* other) const { return mPtr == other; }
    bool operator!=(const T* other) const { return mPtr != other; }
    // The order of addresses, which a map of binders goes by.
    bool operator<(const sp<T>& other) const { return mPtr < other.mPtr; }

  private:
    friend class wp<T>;

    void acquire() {
        if (mPtr != nullptr) mPtr->incStrong(this);
    }
    void release(T* ptr) {
        if (ptr != nullptr) ptr->decStrong(this);
    }
    // Counts the new one before it gives up the old one, which may hold the last reference to it.
    sp& replace(T* other) {
        T* old = mPtr;
        if (other != nullptr) other->incStrong(this);
        mPtr = other;
        release(old);
        return *this;
    }
    // Takes over a count that promote() has already added.
    void set_pointer(T* ptr) { mPtr = ptr; }

    T* mPtr = nullptr;
};

}  // namespace android
