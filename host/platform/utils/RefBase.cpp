// The counts live in an object of their own, which goes with the last weak reference; the counted
// object itself holds one of those. The strong count begins at a number that real counts never
// reach: so the first strong reference can be told from all others, and an object that never had
// one from one that has lost its last.
#include <utils/RefBase.h>

namespace android {

// A strong count of at least this much means that no strong reference was ever taken.
static constexpr int32_t kNeverStrong = 1 << 28;

void RefBase::weakref_type::incWeak(const void* /*id*/) {
    mWeak.fetch_add(1, std::memory_order_relaxed);
}

void RefBase::weakref_type::decWeak(const void* /*id*/) {
    if (mWeak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

bool RefBase::weakref_type::attemptIncStrong(const void* /*id*/) {
    int32_t count = mStrong.load(std::memory_order_relaxed);
    while (count > 0) {
        if (!mStrong.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) continue;
        // The count is held before the object is touched: another thread may have taken the first
        // reference and dropped it meanwhile.
        if (count == kNeverStrong) {
            mStrong.fetch_sub(kNeverStrong, std::memory_order_relaxed);
            mBase->onFirstRef();
        }
        return true;
    }
    return false;
}

// The object itself counts as one weak reference to its counts, whatever strong ones there are.
RefBase::RefBase() : mRefs(new weakref_type(this)) {
    mRefs->mStrong.store(kNeverStrong, std::memory_order_relaxed);
    mRefs->mWeak.store(1, std::memory_order_relaxed);
}

RefBase::~RefBase() {
    mRefs->mStrong.store(0, std::memory_order_relaxed);
    mRefs->decWeak(this);
}

// Whoever meets the initial number took the first reference, and takes the number away.
void RefBase::incStrong(const void* /*id*/) const {
    if (mRefs->mStrong.fetch_add(1, std::memory_order_relaxed) != kNeverStrong) return;
    mRefs->mStrong.fetch_sub(kNeverStrong, std::memory_order_relaxed);
    const_cast<RefBase*>(this)->onFirstRef();
}

// What other threads did to the object before they let go of it happened before its destruction.
void RefBase::decStrong(const void* id) const {
    if (mRefs->mStrong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    const_cast<RefBase*>(this)->onLastStrongRef(id);
    delete this;
}

RefBase::weakref_type* RefBase::createWeak(const void* id) const {
    mRefs->incWeak(id);
    return mRefs;
}

int32_t RefBase::getStrongCount() const {
    const int32_t count = mRefs->mStrong.load(std::memory_order_relaxed);
    return count >= kNeverStrong ? count - kNeverStrong : count;
}

}  // namespace android
