/*
 * charload.h - character sets from their files.
 *
 * A set is loaded once for each identifier, from charset.loc in its directory, and hangs on cmg_chardesc of the
 * context's globals until those die. Loading runs under the lock of the locale loader; a set becomes visible to readers
 * as its last step and never changes.
 */
#ifndef DLXCOMN_CHARLOAD_H
#define DLXCOMN_CHARLOAD_H

#include <dlxcomn/charset.h>
#include <dlxcomn/locale.h>
#include <dlxcomn/path.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Set lcache->locchardesc to the set of an identifier: one that is loaded already, or that of lcache->charname. Where
 * the context has a locale and lcache a sortname, its sort order is loaded with the set. locfilename (may be null)
 * receives the path of the file that was opened. CS_FAIL for a file that is not right; the status of
 * com__open_charfile; CS_EINTL with the code in ctxintlerr; CS_MEM_ERROR. A failure leaves nothing behind.
 */
DLXCOMN_API CS_RETCODE comn__intl_load_charset(CsContext *context, CsOID *oid, CsLocCache *lcache,
                                               CS_CHAR *locfilename, CS_INT filenamelen);
/* Free all sets of the context's globals, when those die. */
DLXCOMN_API CS_RETCODE com_intl_chardesc_drop(CsContext *context);
/* Free a set with its tables and sort orders; null is accepted. */
DLXCOMN_API void comn__chardesc_drop(CsCharDesc *chardesc);

/* Memory of one record, not cleared; null without memory. The tables in it belong to the owner of the image. */
DLXCOMN_API CS_ATTRIB *com_alloc_char_attrib(void);
DLXCOMN_API void com_free_char_attrib(CS_ATTRIB *chatr);

/* ---- The steps of the loader ----------------------------------------------------------------------- */

/* Read charset.loc of lcache->charname into the set of lcache. */
DLXCOMN_API CS_RETCODE comn__get_charset(CsContext *context, CsLocCache *lcache, CS_CHAR *locfilename,
                                         CS_INT filenamelen);
/* Read the tables of an image of image_size bytes; ifile stands on its first entry. */
DLXCOMN_API CS_RETCODE comn__load_charset1(CsContext *context, CHAR_ATTRIB *char_attrib, CS_INT image_size,
                                           INTL_LOCFILE *ifile);
DLXCOMN_API CS_RETCODE comn__load_charset2(CsContext *context, CHAR_ATTRIB *char_attrib, CS_INT image_size,
                                           INTL_LOCFILE *ifile);
/*
 * Read bin_image_size (at least 1) bytes, which must end where a value ends. get_next_entry false takes the first value
 * from the present entry. White space around all the digits, and "0x" in front of them, count as text: the bytes that
 * are missing for it stay as they were.
 */
DLXCOMN_API CS_RETCODE comn__get_image(CsContext *context, CS_BYTE *bin_image, CS_INT bin_image_size,
                                       INTL_LOCFILE *ifile, CS_BOOL get_next_entry);

#ifdef __cplusplus
}
#endif
#endif
