// The environment and the home directory, read anew at every call.
#include <dlxintl/intl.h>

#include <cstdlib>
#include <cstring>

#include <pwd.h>
#include <sys/types.h>

namespace {

constexpr const char *HOME_VARIABLE = "DALVEX";
constexpr const char *HOME_ACCOUNT = "dalvex";

int put(char *buffer, int size, const char *text) {
    return static_cast<int>(intl_strlcpy(buffer, text, size > 0 ? static_cast<size_t>(size) : 0));
}

// The home directory of the account, or INTL_ENOHOME.
int account_home(char *buffer, int size) {
    char strings[4096];
    passwd record;
    passwd *found = nullptr;
    if (getpwnam_r(HOME_ACCOUNT, &record, strings, sizeof strings, &found) != 0 || found == nullptr ||
        found->pw_dir == nullptr || *found->pw_dir == '\0')
        return INTL_ENOHOME;
    return put(buffer, size, found->pw_dir);
}

} // namespace

int intl_home(char *buffer, int size) {
    const char *home = std::getenv(HOME_VARIABLE);
    return home != nullptr && *home != '\0' ? put(buffer, size, home) : account_home(buffer, size);
}

int intlgetenv(char *buffer, int size, const char *name) {
    const char *value = std::getenv(name);
    return put(buffer, size, value != nullptr ? value : "");
}
