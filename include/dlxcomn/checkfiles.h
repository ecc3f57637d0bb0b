/*
 * checkfiles.h - why a context cannot load its localization files.
 *
 * The check walks the files that a context needs, in the order of what is most likely to be wrong, and prints each
 * finding for a person through com_perr. It changes nothing and takes no lock: run it on the thread that failed.
 */
#ifndef DLXCOMN_CHECKFILES_H
#define DLXCOMN_CHECKFILES_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

DLXCOMN_API void com_intl_verify_ctxloc(CS_CONTEXT *context);

/*
 * Whether a file can be read: CS_SUCCEED or CS_FAIL, with its path at path. Where the path cannot be built path is "*",
 * and the status that of the builder. The first takes the language of the locale's messages.
 */
DLXCOMN_API CS_RETCODE com_intl_verify_a_msgfile(CS_CONTEXT *context, CS_LOCALE *locale, CS_CHAR *msgfile,
                                                 CS_CHAR *path, CS_INT pathsize);
DLXCOMN_API CS_RETCODE com__verify_msgfile(CS_CONTEXT *context, CS_CHAR *lang, CS_INT langlen, CS_CHAR *msgfile,
                                           CS_INT msgfilelen, CS_CHAR *path, CS_INT pathsize);
DLXCOMN_API CS_RETCODE com__verify_charfile(CS_CONTEXT *context, CS_CHAR *charset, CS_CHAR *filename,
                                            CS_CHAR *fileext, CS_CHAR *path, CS_INT pathsize);

#ifdef __cplusplus
}
#endif
#endif
