// Values of a localization file, as the loaders of character sets and sort orders read them.
#ifndef DLX_CHARSET_LOCVALUE_H
#define DLX_CHARSET_LOCVALUE_H

#include "diag/check.h"

#include <dlxcomn/context.h>
#include <dlxintl/intl.h>

#include <string_view>

namespace dlx {

// What a null answer of the reader is: the end of what was looked for, or its failure.
inline CS_RETCODE ended(CS_CONTEXT *context, int status) {
    if (status >= 0)
        return CS_FAIL;
    context->ctxintlerr = status;
    return CS_EINTL;
}

// The next value of the present entry; `status` says why there is none.
inline const CS_BYTE *next_value(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_INT &length, CS_RETCODE &status) {
    int reader = 0;
    const CS_CHAR *const value = intl_nextvalue(ifile, &reader);
    status = value != nullptr ? CS_SUCCEED : ended(context, reader);
    length = value != nullptr ? intl_valuelen(ifile) : 0;
    return reinterpret_cast<const CS_BYTE *>(value);
}

// The next key of the present section; `status` says why there is none.
inline CS_CHAR *next_entry(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_RETCODE &status) {
    int reader = 0;
    CS_CHAR *const entry = intl_nextentry(ifile, &reader);
    status = entry != nullptr ? CS_SUCCEED : ended(context, reader);
    return entry;
}

// Moves to a section; the sections in front of it are skipped.
inline CS_RETCODE find_section(CS_CONTEXT *context, INTL_LOCFILE *ifile, std::string_view name) {
    int reader = 0;
    while (const CS_CHAR *section = intl_nextsection(ifile, &reader))
        if (name == section)
            return CS_SUCCEED;
    return ended(context, reader);
}

// Closes a file that was read with `status`, which a failure of the reader that only shows now replaces.
inline CS_RETCODE close_file(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_RETCODE status) {
    const int closed = intl_close(ifile);
    return status == CS_SUCCEED && closed < 0 ? ended(context, closed) : status;
}

} // namespace dlx

#endif
