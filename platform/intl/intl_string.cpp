// Bounded copy and append.
#include <dlxintl/intl.h>

#include <cstring>

size_t intl_strlcpy(char *dest, const char *src, size_t size) {
    const size_t length = std::strlen(src);
    if (size != 0) {
        const size_t count = length < size ? length : size - 1;
        std::memcpy(dest, src, count);
        dest[count] = '\0';
    }
    return length;
}

size_t intl_strlcat(char *dest, const char *src, size_t size) {
    const size_t held = strnlen(dest, size);
    if (held == size)
        return size + std::strlen(src);
    return held + intl_strlcpy(dest + held, src, size - held);
}
