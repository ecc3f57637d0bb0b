/*
 * diag.h - what happens when calling code breaks a contract, the trace of status codes, bounded string
 * copies and the debug output stream.
 *
 * Nothing here needs a context or a locale. The process-wide variables are read and written without a
 * lock; output of two threads may interleave. Text arguments are NUL-terminated.
 */
#ifndef DLXCOMN_DIAG_H
#define DLXCOMN_DIAG_H

#include <stdio.h>

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Broken contracts ---------------------------------------------------------------------- */

/*
 * Report a null pointer, or a broken precondition, at a source line on standard error, then call
 * com__abort. They return only after com_toggle_abort.
 */
DLXCOMN_API void com_raise_invalid_null_pointer(const char *file, int line);
DLXCOMN_API void com_bomb(const char *file, int line);

/*
 * End the process: close standard error and abort. After com_toggle_abort(n) with n other than 1 it
 * flushes standard error and raises signal 6 instead, and returns when a handler returns or the signal
 * is ignored. Checked calls then return a status without touching anything further.
 */
DLXCOMN_API void com__abort(void);
DLXCOMN_API void com_toggle_abort(int n);

/* Report an unrecoverable error on standard error and exit with status -1. Does not return, in either mode. */
DLXCOMN_API void com_panic(const char *msg);

/* ---- Trace of status codes ----------------------------------------------------------------- */

enum {
    COM_TRACE_OFF = 1,    /* nothing */
    COM_TRACE_ERRORS = 2, /* all but CS_SUCCEED, CS_PENDING, CS_END_DATA, CS_END_RESULTS, CS_END_ITEM,
                             CS_INTERRUPT */
    COM_TRACE_ALL = 3     /* every status */
};

extern DLXCOMN_API CS_INT Com_trace_enable; /* the trace level, at first COM_TRACE_OFF */
extern DLXCOMN_API FILE *Com_fp;            /* debug output; null means standard output */

/* A status and its name, in the order in which com_errtrace searches. */
typedef struct _com_error_name {
    CS_RETCODE error;
    const char *name;
} COM_ERROR_NAME;

#define COM_ERROR_COUNT 17
extern DLXCOMN_API const COM_ERROR_NAME Com_errors[COM_ERROR_COUNT];

/* Set the trace level. A level other than the three is a broken contract. */
DLXCOMN_API void com_errset(CS_INT level);

/*
 * Print error with its place to the debug output if the trace level asks for it, and return error
 * unchanged. A status without a name prints as an unsigned 32-bit number. Only the last component of
 * file is shown.
 */
DLXCOMN_API CS_RETCODE com_errtrace(CS_RETCODE error, const char *file, int line);

/* The nesting depth that com_errtrace shows as dots: always 0. */
DLXCOMN_API void com__get_stack_depth(int *depth);

/* ---- Bounded copies ------------------------------------------------------------------------ */

/*
 * Copy src to dest, or append it there; size is the room at dest in bytes with its NUL. They never cut:
 * text that does not fit is a broken contract, and dest stays as it was.
 */
DLXCOMN_API void com_copstr(char *dest, const char *src, int size);
DLXCOMN_API void com_catstr(char *dest, const char *src, int size);

/* ---- Debug output -------------------------------------------------------------------------- */

/*
 * Send the debug output to a file, opened for append: CS_SUCCEED, or CS_FAIL if it cannot be opened.
 * filenlen only tells whether filename counts. A stream set earlier is replaced and stays open. With a
 * null filename or a filenlen of 0 the present stream is closed and standard output counts again.
 * context is not used.
 */
DLXCOMN_API CS_RETCODE comn_debug_setfile(CS_CONTEXT *context, CS_CHAR *filename, CS_INT filenlen);

/* Print to the debug output as printf does, and flush it. Always CS_SUCCEED. */
DLXCOMN_API int comn_debug_print(const char *fmtstr, ...) __attribute__((format(printf, 1, 2)));

/*
 * The same for a caller that holds an argument list: ap is the address of its va_list, which is moved
 * on. Knows only the conversions c, d, x, X (32 bits), ld, lx (64 bits), l (takes 64 bits and prints
 * nothing), s and %%; one of them with its flags, width and precision may take 78 bytes behind the "%". Anything else,
 * up to and including the next of these letters, prints a line that says so and takes no argument. Always CS_SUCCEED.
 */
DLXCOMN_API CS_RETCODE comn_debug_vprint(const CS_CHAR *fmtstr, CS_VOID *ap);

/* A stack walker's interface without a walker: touches nothing, always CS_FAIL. */
DLXCOMN_API CS_RETCODE comn_dbg_stack(CS_VOID *tid, CS_VOID *fp, CS_INT depth,
                                      CS_RETCODE (*funcp)(CS_CHAR *, CS_INT));

/*
 * Write a message to standard error, and append it to "dlxinit.err" in the current directory if that
 * can be opened. err_string is used as a printf format in both: pass text without "%".
 */
DLXCOMN_API void com_perr(const CS_CHAR *err_string);

#ifdef __cplusplus
}
#endif
#endif
