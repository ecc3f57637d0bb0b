// Values in memory that need not be aligned for their type: descriptors point into row buffers.
#ifndef DLX_BYTES_MEMORY_H
#define DLX_BYTES_MEMORY_H

#include <cstring>
#include <type_traits>

namespace dlx {

template <class T>
inline T load(const void *from) {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <class T>
inline void store(void *to, const T &value) {
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(to, &value, sizeof value);
}

} // namespace dlx

#endif
