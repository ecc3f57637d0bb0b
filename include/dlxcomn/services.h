/*
 * services.h - small process-level services: environment, versions, state tables, byte comparisons, memory.
 *
 * Nothing here keeps state; any thread may call any of them.
 */
#ifndef DLXCOMN_SERVICES_H
#define DLXCOMN_SERVICES_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- State tables --------------------------------------------------------------------------
 * The tables belong to the callers. Every list of events or pairs ends with a first byte of 255.
 */
typedef CS_BYTE CS_EVENT;

typedef struct _cs_depend {
    CS_BYTE dep_event;
    CS_BYTE dep_depevent;
} CS_DEPEND;

typedef struct _cs_event_ns {
    CS_BYTE ens_event;
    CS_BYTE ens_nstate;
} CS_EVENT_NS;

/* A row of code and text; a table of them ends with the key -99999. */
typedef struct _cs_strings {
    CS_INT key;
    char *string;
} CS_STRINGS;

typedef struct _cs_st_table {
    char *st_name;
    CS_INT st_version;
    int st_numstates;
    CS_EVENT st_init;
    CS_EVENT **st_ver; /* a list for each state */
    CS_DEPEND *st_depend; /* may be null */
    CS_EVENT_NS **st_trans; /* a list for each state */
    CS_STRINGS *st_ststrings;
    CS_STRINGS *st_verstrings;
    CS_STRINGS *st_transtrings;
} CS_ST_TABLE;

typedef struct _cs_ns_table {
    char *nsname;
    CS_EVENT_NS **nstable; /* a list for each state */
    int nsnumevents;
    int nsnumstates;
    CS_STRINGS *nsevtstrs;
    CS_STRINGS *nsststrs;
    CS_INT nsversion;
} CS_NS_TABLE;

#define CS_ST_END 255     /* ends a list */
#define CS_ST_STAY 149    /* a next state: stay */
#define CS_ST_INVALID 254 /* answered for an event without a transition */

/* Whether the event is one of the state. */
DLXCOMN_API CS_BOOL com_st_ver(CS_ST_TABLE *table, CS_INT state, CS_INT event);
/* Whether the event depends on another, which *depend_event receives. */
DLXCOMN_API CS_BOOL com_st_depend(CS_ST_TABLE *table, CS_INT event, CS_INT *depend_event);
/* The next state, or CS_ST_INVALID; CS_ST_STAY in the table answers the state itself. */
DLXCOMN_API CS_INT com_st_trans(CS_ST_TABLE *table, CS_INT state, CS_INT event);
/* The next state as the table has it, or CS_ST_STAY for an event without a transition. */
DLXCOMN_API CS_INT com_ns_trans(CS_NS_TABLE *table, CS_INT state, CS_INT event);

/* ---- Comparison of byte strings -------------------------------------------------------------
 * Bytes compare as unsigned; the answer is the difference of the first pair that differs. The forms with
 * len do not stop at a NUL; the forms with an i fold case with the C library's tolower.
 */
DLXCOMN_API int com_unsignstrcmp(CS_CHAR *str1, CS_CHAR *str2);
DLXCOMN_API int com_unsignstrncmp(CS_CHAR *str1, CS_CHAR *str2, CS_INT len);
DLXCOMN_API int com_unsignstricmp(CS_CHAR *str1, CS_CHAR *str2);
DLXCOMN_API int com_unsignstrnicmp(CS_CHAR *str1, CS_CHAR *str2, CS_INT len);

/* ---- Memory and lookup --------------------------------------------------------------------- */

/*
 * Replace *destp by a terminated copy of source; sourcelen CS_NULLTERM takes its length. CS_FAIL for a null
 * argument or a length of 0 or less (*destp stays), CS_MEM_ERROR (the old string is lost).
 */
DLXCOMN_API CS_RETCODE com_setstring(CS_CHAR **destp, CS_INT *destlenp, CS_CHAR *source, CS_INT sourcelen);
/* Fill n bytes; the stores are never optimized away. Answers s. */
DLXCOMN_API CS_VOID *com_secure_memset(CS_VOID *s, int c, size_t n);
/* A symbol of the process, or null. */
DLXCOMN_API CS_VOID *com_dlsym(CS_CHAR *symbol);
/* The thread id of a process without threads: the integer 0, 4 bytes. */
DLXCOMN_API CS_RETCODE comn_get_default_tid(CS_VOID *buffer, CS_INT buflen, CS_INT *outlen);
/* The value of a variable, up to 255 bytes, which the caller frees; null when it is not set or empty. */
DLXCOMN_API CS_CHAR *com_getenv(CS_CHAR *envvar);

/* ---- Identity ------------------------------------------------------------------------------ */

/* Product / version / patch / driver / platform / system / build / word size / kind / date. */
extern DLXCOMN_API const CS_CHAR comn__Vdate[];
/* The version number, and whether this is a debug build: 16001 and 1. */
DLXCOMN_API void com_version(CS_INT *p_version, CS_BOOL *p_is_debug);
/*
 * The executable's file name, bounded by appnamesize; sanitize 1 folds it to lower case, 2 to upper case.
 * CS_FAIL when the name of the executable is empty.
 */
DLXCOMN_API CS_RETCODE comn__genappname_from_exec(CS_CONTEXT *context, CS_CHAR *appname, CS_INT appnamesize,
                                                  CS_INT sanitize);

#ifdef __cplusplus
}
#endif
#endif
