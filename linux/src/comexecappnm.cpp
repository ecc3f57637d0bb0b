// The application's name, as this platform tells it: the file name of the running executable.
#include "bytes/fold.h"
#include "diag/check.h"

#include <dlxcomn/services.h>
#include <dlxintl/intl.h>

#include <libgen.h> // basename, the POSIX one
#include <unistd.h>

CS_RETCODE comn__genappname_from_exec(CS_CONTEXT * /*context*/, CS_CHAR *appname, CS_INT appnamesize,
                                      CS_INT sanitize) {
    COM_REQUIRE_PTR(appname, CS_FAIL);
    COM_REQUIRE(appnamesize >= 1, CS_FAIL);
    char path[4096] = "";
    // A failure is not told apart: it goes on with the empty path, whose last component is ".".
    if (readlink("/proc/self/exe", path, sizeof path - 1) == 0)
        return COM_TRACE(CS_FAIL);
    intl_strlcpy(appname, basename(path), static_cast<size_t>(appnamesize));
    dlx::fold_name(sanitize, appname, appnamesize - 1);
    return CS_SUCCEED;
}
