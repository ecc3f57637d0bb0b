// The environment and the home directory, read anew at every call.
#include "home_directory.h"

#include <dlxintl/intl.h>

#include <cstdlib>
#include <cstring>

namespace {

int put(char *buffer, int size, const char *text) {
    return static_cast<int>(intl_strlcpy(buffer, text, size > 0 ? static_cast<size_t>(size) : 0));
}

} // namespace

int intl_home(char *buffer, int size) {
    dlx::HomeDirectory home;
    const char *path = home.find();
    return path != nullptr ? put(buffer, size, path) : INTL_ENOHOME;
}

int intlgetenv(char *buffer, int size, const char *name) {
    const char *value = std::getenv(name);
    return put(buffer, size, value != nullptr ? value : "");
}
