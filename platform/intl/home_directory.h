// Where the home directory is: a rule of every library of the platform.
#ifndef DLXINTL_HOME_DIRECTORY_H
#define DLXINTL_HOME_DIRECTORY_H

#include <cstdlib>

#include <pwd.h>
#include <sys/types.h>

namespace dlx {

// The value of DALVEX, or else the home directory of the account dalvex; null without either. Read anew at every call;
// what it points to lives as long as the object does and the environment stays.
class HomeDirectory {
public:
    const char *find() {
        const char *home = std::getenv("DALVEX");
        return home != nullptr && *home != '\0' ? home : of_account();
    }

private:
    const char *of_account() {
        passwd record;
        passwd *found = nullptr;
        if (getpwnam_r("dalvex", &record, strings_, sizeof strings_, &found) != 0 || found == nullptr ||
            found->pw_dir == nullptr || *found->pw_dir == '\0')
            return nullptr;
        return found->pw_dir;
    }

    char strings_[4096];
};

} // namespace dlx

#endif
