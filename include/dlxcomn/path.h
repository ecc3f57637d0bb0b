/*
 * path.h - where each file of the stack lies.
 *
 * A path builder writes a terminated path to pathname, whose room is pathsize bytes with the NUL, and
 * answers CS_SUCCEED, CS_FAIL when the path would not fit, or CS_EINTL when the home directory is not known
 * (the code goes to ctxintlerr if a context is given). Each has a fit test of its own, and some refuse
 * paths that would just fit; none ever writes past the room. ncs true adds the subdirectory that the
 * environment variable DALVEX_NCS names.
 *
 * The transport configuration path is process-wide and unguarded: set it before threads use it.
 */
#ifndef DLXCOMN_PATH_H
#define DLXCOMN_PATH_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct intl_locfile INTL_LOCFILE;

/* home[/DALVEX_NCS][/directory][/filename]; directory and filename may be null. Zeroes all of pathname. */
DLXCOMN_API CS_RETCODE com_path_anyfile(CS_CHAR *pathname, CS_INT pathsize, CS_CHAR *directory, CS_CHAR *filename,
                                        CS_BOOL ncs);
/* The value of DLXNCS_IFILE, or home/interfaces. */
DLXCOMN_API CS_RETCODE com_path_ifile(CS_CONTEXT *context, CS_CHAR *pathname, CS_INT pathsize);
/* home[/DALVEX_NCS]/config/cfgfile */
DLXCOMN_API CS_RETCODE com_path_cfgfile(CS_CONTEXT *context, CS_CHAR *cfgfile, CS_CHAR *pathname, CS_INT pathsize,
                                        CS_BOOL ncs);
/* home/locales[/lang[/charset]]/locfile */
DLXCOMN_API CS_RETCODE com__path_locfile(CS_CONTEXT *context, CS_CHAR *lang, CS_CHAR *charset, CS_CHAR *locfile,
                                         CS_CHAR *pathname, CS_INT pathsize);
/* home/locales/message/lang/msgfile; both texts are NUL-terminated. */
DLXCOMN_API CS_RETCODE com_path_msgfile(CS_CONTEXT *context, CS_CHAR *lang, CS_INT langlen, CS_CHAR *msgfile,
                                        CS_INT msgfilelen, CS_CHAR *pathname, CS_INT pathsize);
/* home/charsets[/charset][/filename[.fileext]] */
DLXCOMN_API CS_RETCODE com_path_charfile(CS_CONTEXT *context, CS_CHAR *charset, CS_CHAR *filename, CS_CHAR *fileext,
                                         CS_CHAR *pathname, CS_INT pathsize);
/* Kinds of data file of comn__path_locdata. */
enum { CS_LOCDATA_MONEY = 4, CS_LOCDATA_NUMERIC = 5, CS_LOCDATA_DATETIME = 6 };
/* home/locales/money/filename.mon, .../numeric/filename.num or .../datetime/filename.dt */
DLXCOMN_API CS_RETCODE comn__path_locdata(CS_CONTEXT *context, CS_INT type, CS_CHAR *filename, CS_CHAR *pathname,
                                          CS_INT pathsize);

/* ---- Openers: a path and intl_open. CS_ENOLOCFILE with the code in ctxintlerr. --------------- */

DLXCOMN_API CS_RETCODE com__open_cfgfile(CS_CONTEXT *context, CS_CHAR *cfgfile, INTL_LOCFILE *ifile, CS_BOOL ncs);
/* locfilename (if not null) receives the path, cut to filenamelen - 1 bytes, before the file is opened. */
DLXCOMN_API CS_RETCODE comn__open_msgfile(CS_CONTEXT *context, CS_CHAR *lang, CS_INT langlen, CS_CHAR *msgfile,
                                          CS_INT msgfilelen, INTL_LOCFILE *ifile, CS_CHAR *locfilename,
                                          CS_INT filenamelen);

DLXCOMN_API CS_RETCODE com__open_locfile(CS_CONTEXT *context, CS_CHAR *lang, CS_CHAR *charset, CS_CHAR *locfile,
                                         INTL_LOCFILE *ifile, CS_CHAR *locfilename, CS_INT filenamelen);
DLXCOMN_API CS_RETCODE com__open_charfile(CS_CONTEXT *context, CS_CHAR *charset, CS_CHAR *filename, CS_CHAR *fileext,
                                          INTL_LOCFILE *ifile, CS_CHAR *locfilename, CS_INT filenamelen);

/* ---- Transport configuration --------------------------------------------------------------- */

/* Store a path of up to 511 bytes; null clears it. CS_FAIL keeps the old one. */
DLXCOMN_API CS_RETCODE com_set_tclcfg(CS_CHAR *path);
/*
 * The stored path, else DLXNCS_TCL_CFG, else DALVEX_TCL_CFG, else home[/DALVEX_NCS]/config/libtcl64.cfg.
 * Answers the length, or 0. A stored path that does not fit is 0.
 */
DLXCOMN_API CS_INT com_get_tclcfg(CS_CHAR *buf, CS_INT buflen);

/* ---- The directory library ----------------------------------------------------------------- */

/*
 * The suffix of its file name, up to 256 bytes: the built-in one, or with latest 1 the greatest, byte by
 * byte, that lies in the directory devlib3p64. CS_FAIL when that cannot be read.
 */
DLXCOMN_API CS_RETCODE com_get_ldapversionsuffix(CS_CHAR *versionsuffix, CS_INT latest);
/* The search: *updatefound tells whether versionsuffix was written. */
DLXCOMN_API CS_RETCODE com__find_latest_ldapversion(CS_CHAR *versionsuffix, CS_BOOL *updatefound);
DLXCOMN_API CS_CHAR *com_get_driverversionsuffix(void);

#ifdef __cplusplus
}
#endif
#endif
