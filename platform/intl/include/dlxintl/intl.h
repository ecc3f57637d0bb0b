/*
 * intl.h - libdlxintl_r64: what the connectivity stack's libraries share below the common library.
 *
 * Bounded strings, the plain allocators, the environment and the home directory, the reader of localization
 * files, and byte files. Functions keep no state of their own, but for the line that intl_closedline tells; a reader
 * belongs to one thread at a time. Failures are the negative codes below, each with a text.
 */
#ifndef DLXINTL_INTL_H
#define DLXINTL_INTL_H

#include <stddef.h>

#define DLXINTL_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status codes -------------------------------------------------------------------------- */

enum {
    INTL_OK = 0,
    INTL_ECANTOPEN = -1,       /* the file cannot be opened */
    INTL_EREAD = -2,           /* reading failed */
    INTL_ELINETOOLONG = -3,    /* a line of more than 1023 bytes */
    INTL_EBADSECTION = -4,     /* a section line without its closing bracket, or with text behind it */
    INTL_ENOEQUALS = -5,       /* an entry without "=" */
    INTL_EUNTERMINATED = -6,   /* a quote that does not end on its line */
    INTL_EBADESCAPE = -7,      /* "\x" without two hexadecimal digits, a backslash at the end of a line */
    INTL_ENOMEMORY = -8,
    INTL_ENOHOME = -9,         /* no home directory */
    INTL_EBADTEMPLATE = -10,   /* a message template that cannot be built */
    INTL_EBADDATE = -11        /* bad date data */
};

/* The text of a code; a general one for any other number. Never null. */
DLXINTL_API const char *intl_errstr(int code);

/* ---- Bounded strings ----------------------------------------------------------------------- */

/*
 * Copy src to the size bytes of dest, or append it to the text there, cutting what does not fit. The result
 * is NUL-terminated when size is not 0 (for the append: when dest held a text shorter than size). They
 * answer the length of the text that was tried, without its NUL: a value of size or more says that it was
 * cut.
 */
DLXINTL_API size_t intl_strlcpy(char *dest, const char *src, size_t size);
DLXINTL_API size_t intl_strlcat(char *dest, const char *src, size_t size);

/* ---- Allocators: the plain ones of the process. -------------------------------------------- */

DLXINTL_API void *comn_malloc(size_t size);
DLXINTL_API void *comn_calloc(size_t count, size_t size);
DLXINTL_API void *comn_realloc(void *memory, size_t size);
DLXINTL_API void comn_free(void *memory);

/* ---- Environment ---------------------------------------------------------------------------
 * Both read the environment at every call, copy at most size - 1 bytes, terminate, and answer the true
 * length of the value.
 */

/*
 * The home directory: the value of DALVEX; if that is unset or empty, the home directory of the account
 * "dalvex"; else INTL_ENOHOME.
 */
DLXINTL_API int intl_home(char *buffer, int size);

/* A variable's value; 0 if it is unset or empty. */
DLXINTL_API int intlgetenv(char *buffer, int size, const char *name);

/* ---- Localization files --------------------------------------------------------------------
 * Text files of sections, keys and lists of values; docs/data-files.md tells their syntax. A reader goes
 * forward only: nextsection skips what is left of the present section, nextentry what is left of the present
 * entry. Texts that they answer are NUL-terminated, are the reader's, and hold until the next call on it. A
 * value may hold NUL bytes of its own (from "\x00"): valuelen tells its length.
 *
 * Null with *status 0 is the end (of the file, the section, the list); null with a negative *status is a
 * failure, linenum then being the line at fault, and every further call answers the same failure.
 */
typedef struct intl_locfile {
    int version;
    int linenum;         /* line of what was read last, from 1 */
    int linelen;         /* bytes of that line, without its end */
    int linepos;         /* where reading goes on in it */
    int end_of_list;     /* the present entry has no further value */
    int end_of_section;  /* the present section has no further entry */
    int eof;
    char comment_char;   /* ';' */
    char leftsection;    /* '[' */
    char rightsection;   /* ']' */
    char list_sep;       /* ',' */
    char escape;         /* '\\' */
    char line[1024];     /* the present line, NUL-terminated */
    char section[64];    /* name of the present section, cut to 63 bytes */
    char entry[64];      /* the present key, cut to 63 bytes */
    char value[1025];    /* the present value, NUL-terminated */
    void *file;          /* the reader's own state */
    int isquoted;        /* the present value stood in quotes */
    char quote_char;     /* '"' */
} INTL_LOCFILE;

/* Open a file and set the reader up. 0, or a negative code, with nothing to close. */
DLXINTL_API int intl_open(const char *path, INTL_LOCFILE *ifile);
/* Close it. 0, or INTL_EREAD where reading had failed. Harmless on a reader that is closed. */
DLXINTL_API int intl_close(INTL_LOCFILE *ifile);
/*
 * The line at which the reader stood that this thread closed last, 0 before the first: where a loader that closed its
 * file has found it wrong.
 */
DLXINTL_API int intl_closedline(void);
DLXINTL_API char *intl_nextsection(INTL_LOCFILE *ifile, int *status);
DLXINTL_API char *intl_nextentry(INTL_LOCFILE *ifile, int *status);
DLXINTL_API char *intl_nextvalue(INTL_LOCFILE *ifile, int *status);
/* Bytes of the value that intl_nextvalue answered last. */
DLXINTL_API int intl_valuelen(const INTL_LOCFILE *ifile);

/* ---- Date data ------------------------------------------------------------------------------ */

/* The conventions of a language, as its common.loc has them. Texts are NUL-terminated. */
typedef struct intl_dateinfo {
    char months[12][21];
    char shortmonths[12][10];
    char days[7][31];  /* from Sunday on */
    int firstday;      /* of the week: 1 for Sunday to 7 for Saturday */
    char dateorder[4]; /* such as "mdy" */
    int is12hour;      /* 1 for a 12-hour clock */
} intl_dateinfo;

/*
 * Read the section that ifile stands on. Its keys are the names of the fields, with "true" or "false" for is12hour;
 * all must be there, others are skipped. INTL_EBADDATE for a key that is missing or has the wrong count of values, or a
 * value that does not fit; else the reader's failure.
 */
DLXINTL_API int intl_datetime(INTL_LOCFILE *ifile, intl_dateinfo *dateinfo);

/* ---- Message templates ----------------------------------------------------------------------- */

/*
 * Fill a template: "%1!" to "%9!" are the parameters, "%%" is a percent sign, anything else stands. `format` lists the
 * parameters, "%s" for a text (null counts as empty) and "%d" for an int, separated by blanks. Answers the length of the
 * text in buffer, which is terminated; INTL_EBADTEMPLATE for a placeholder without a parameter, a list that is none, or
 * a text that does not fit. flags is 0.
 */
DLXINTL_API int intl_strbuild(int flags, char *buffer, int length, const char *message_template, const char *format,
                              ...);

/* ---- Byte files ---------------------------------------------------------------------------- */

typedef struct intl_iocsfile INTL_IOCSFILE;

enum { INTL_IOCS_READ = 2 }; /* the one mode of intl_iocsfopen */

/* Open a file for reading; null if it cannot be opened, for another mode, or for want of memory. */
DLXINTL_API INTL_IOCSFILE *intl_iocsfopen(const char *name, int mode);
/*
 * Read up to count bytes; *got receives how many there were, fewer only at the end of the file. 0, or
 * INTL_EREAD.
 */
DLXINTL_API int intl_iocsfread(INTL_IOCSFILE *file, void *buffer, int count, int *got);
DLXINTL_API int intl_iocsfclose(INTL_IOCSFILE *file);

#ifdef __cplusplus
}
#endif
#endif
