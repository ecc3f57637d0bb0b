// Case folding of names in place, by the C library's rules.
#ifndef DLX_BYTES_FOLD_H
#define DLX_BYTES_FOLD_H

#include <dlxcomn/types.h>

#include <cctype>

namespace dlx {

constexpr CS_INT FOLD_LOWER = 1;
constexpr CS_INT FOLD_UPPER = 2;

// Folds up to a NUL, or up to the byte at name[len], which is folded too: callers pass the last index that
// they own. Any other kind leaves the name alone.
inline void fold_name(CS_INT kind, CS_CHAR *name, CS_INT len) {
    if (kind != FOLD_LOWER && kind != FOLD_UPPER)
        return;
    for (CS_INT i = 0; i <= len && name[i] != '\0'; ++i) {
        const auto c = static_cast<unsigned char>(name[i]);
        name[i] = static_cast<CS_CHAR>(kind == FOLD_LOWER ? std::tolower(c) : std::toupper(c));
    }
}

} // namespace dlx

#endif
