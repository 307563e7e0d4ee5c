#pragma once

namespace android {

template <typename T>
class wp;

// The strong pointer to an object derived from RefBase. A null one is not counted.
template <typename T>
class sp {
  public:
    sp() = default;
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

    void clear() { replace(nullptr); }

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
    bool operator<(const sp<T>& other) const { return mPtr < other.mPtr; }

  private:
    friend class wp<T>;

    void acquire() {
        if (mPtr != nullptr) mPtr->incStrong(this);
    }
    void release(T* ptr) {
        if (ptr != nullptr) ptr->decStrong(this);
    }
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
