// The value of an environment variable as a string of the caller's own.
#include <dlxcomn/services.h>
#include <dlxintl/intl.h>

#include <cstdlib>
#include <cstring>

CS_CHAR *com_getenv(CS_CHAR *envvar) {
    if (envvar == nullptr)
        return nullptr;
    char value[256]; // a longer value is cut to what this holds
    if (intlgetenv(value, sizeof value, envvar) <= 0)
        return nullptr;
    const std::size_t size = std::strlen(value) + 1;
    auto *copy = static_cast<CS_CHAR *>(std::malloc(size));
    if (copy != nullptr)
        std::memcpy(copy, value, size);
    return copy;
}
