// How much of the heap is in use: what a leak adds to, and what a resident size hides.
#include <dlfcn.h>
#include <malloc.h>

#include "bench/soak/soak.h"

namespace soak {

// Sanitizers have a heap of their own, and a function that tells.
size_t heapInUse() {
    using Tell = size_t (*)();
    static const auto tell =
            reinterpret_cast<Tell>(dlsym(RTLD_DEFAULT, "__sanitizer_get_current_allocated_bytes"));
    if (tell != nullptr) return tell();
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

bool hasLeaks() {
    using Look = int (*)();
    static const auto look =
            reinterpret_cast<Look>(dlsym(RTLD_DEFAULT, "__lsan_do_recoverable_leak_check"));
    return look != nullptr && look() != 0;
}

}  // namespace soak
