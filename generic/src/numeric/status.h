// The one mapping of core codes to statuses, which numerics and money share.
#ifndef DLX_NUMERIC_STATUS_H
#define DLX_NUMERIC_STATUS_H

#include <dlxcomn/numeric.h>

namespace dlx {

inline CS_RETCODE status_of_code(int code) {
    switch (code) {
    case NUME_OVERFLOW:
    case NUME_TRUNCATED: // an operation that would drop digits fails
        return CS_EOVERFLOW;
    case NUME_BADVALUE:
        return CS_ESYNTAX;
    case NUME_DIVZERO:
        return CS_EDIVZERO;
    default:
        return CS_SUCCEED;
    }
}

} // namespace dlx

#endif
