// Comparison of byte strings. Bytes are unsigned, and the answer is the difference of the first pair that
// differs.
#include "diag/check.h"

#include <dlxcomn/services.h>

#include <cctype>

namespace {

int plain(CS_CHAR c) { return static_cast<unsigned char>(c); }
int folded(CS_CHAR c) { return std::tolower(static_cast<unsigned char>(c)); }

template <int (*weight)(CS_CHAR)>
int compare_terminated(const CS_CHAR *a, const CS_CHAR *b) {
    for (;; ++a, ++b)
        if (const int difference = weight(*a) - weight(*b); difference != 0 || *a == '\0')
            return difference;
}

// Compares `len` bytes; a NUL is a byte like any other.
template <int (*weight)(CS_CHAR)>
int compare_counted(const CS_CHAR *a, const CS_CHAR *b, CS_INT len) {
    for (CS_INT i = 0; i < len; ++i)
        if (const int difference = weight(a[i]) - weight(b[i]); difference != 0)
            return difference;
    return 0;
}

} // namespace

int com_unsignstrcmp(CS_CHAR *str1, CS_CHAR *str2) {
    COM_REQUIRE_PTR(str1, 0);
    COM_REQUIRE_PTR(str2, 0);
    return compare_terminated<plain>(str1, str2);
}

int com_unsignstrncmp(CS_CHAR *str1, CS_CHAR *str2, CS_INT len) {
    COM_REQUIRE_PTR(str1, 0);
    COM_REQUIRE_PTR(str2, 0);
    return compare_counted<plain>(str1, str2, len);
}

int com_unsignstricmp(CS_CHAR *str1, CS_CHAR *str2) {
    COM_REQUIRE_PTR(str1, 0);
    COM_REQUIRE_PTR(str2, 0);
    return compare_terminated<folded>(str1, str2);
}

int com_unsignstrnicmp(CS_CHAR *str1, CS_CHAR *str2, CS_INT len) {
    COM_REQUIRE_PTR(str1, 0);
    COM_REQUIRE_PTR(str2, 0);
    return compare_counted<folded>(str1, str2, len);
}
