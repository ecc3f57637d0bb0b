// The account database as a test has it: one account, or none.
//
// This header defines getpwnam_r for the executable that includes it (in one source only), and the library's calls
// bind to it.
#ifndef TESTS_SUPPORT_ACCOUNT_H
#define TESTS_SUPPORT_ACCOUNT_H

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

#include <pwd.h>

namespace support {

struct Accounts {
    static inline std::string name = "dalvex";
    static inline std::optional<std::string> home; // none: no such account
    static inline bool without_directory = false;  // the record has a null pointer for it
    static inline int error = 0;                   // the lookup itself fails
    static void clear() {
        home.reset();
        without_directory = false;
        error = 0;
    }
};

} // namespace support

extern "C" int getpwnam_r(const char *name, passwd *record, char *buffer, std::size_t size, passwd **result) {
    using support::Accounts;
    *result = nullptr;
    if (Accounts::error != 0 || name != Accounts::name || !Accounts::home)
        return Accounts::error;
    if (Accounts::home->size() >= size)
        return ERANGE;
    std::memcpy(buffer, Accounts::home->c_str(), Accounts::home->size() + 1);
    *record = {};
    record->pw_dir = Accounts::without_directory ? nullptr : buffer;
    *result = record;
    return 0;
}

#endif
