// This is as much of the device's vector as a list of services needs: it grows, and is read.
#pragma once

#include <stddef.h>

#include <vector>

namespace android {

template <typename T>
class Vector {
  public:
    // Returns the index of the new item.
    size_t add(const T& item) {
        mItems.push_back(item);
        return mItems.size() - 1;
    }
    size_t size() const { return mItems.size(); }
    bool isEmpty() const { return mItems.empty(); }
    // The index must be below size().
    const T& operator[](size_t index) const { return mItems[index]; }
    const T& itemAt(size_t index) const { return mItems[index]; }
    const T* begin() const { return mItems.data(); }
    const T* end() const { return mItems.data() + mItems.size(); }

  private:
    std::vector<T> mItems;
};

}  // namespace android
