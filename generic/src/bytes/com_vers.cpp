// What this library says of itself.
#include "diag/check.h"

#include <dlxcomn/services.h>

namespace {

constexpr CS_INT VERSION = 16001;
constexpr CS_BOOL IS_DEBUG = CS_TRUE; // what callers have always been told, in every build

} // namespace

// Product / version / patch / driver / platform / system and thread model / build / word size / kind / date.
constinit const CS_CHAR comn__Vdate[] =
    "DLX Common Library/16.0.1/GA/16.0.03.02/x86_64/Linux POSIX threads/1/64-bit/OPT/2026-11-21";

void com_version(CS_INT *p_version, CS_BOOL *p_is_debug) {
    COM_REQUIRE_PTR(p_version);
    COM_REQUIRE_PTR(p_is_debug);
    *p_version = VERSION;
    *p_is_debug = IS_DEBUG;
}
