/*
 * signals.h - signal handlers that run as plain functions on a thread of their own.
 *
 * A handler installed here does not run in signal context: an accept thread waits for the signal and calls
 * it, so it may take mutexes, block and call this library. All threads of the library block the routed
 * signals; a catcher thread keeps those without a handler open, so that they have their normal effect.
 */
#ifndef DLXCOMN_SIGNALS_H
#define DLXCOMN_SIGNALS_H

#include <dlxcomn/thread.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Called with the signal and two zeros. */
typedef void (*COMN_SIG_FUNC)(CS_INT sig, CS_INT code, CS_VOID *info);

/* What may stand in place of a handler. */
#define COMN_SIG_IGN ((COMN_SIG_FUNC)-1)     /* ignore */
#define COMN_SIG_DFL ((COMN_SIG_FUNC)-2)     /* the default action */
#define COMN_SIG_BLOCK ((COMN_SIG_FUNC)-4)   /* block in the calling thread */
#define COMN_SIG_UNBLOCK ((COMN_SIG_FUNC)-5) /* unblock in the calling thread */

#define COMN_SIG_COUNT 65 /* signal numbers 0 to 64 */

/*
 * Start routing, and end it. The first repeats harmlessly. Accept threads and their handlers outlive the end; a
 * new start ends them, and waits for a handler that runs. The end puts the first caller's mask back on the
 * calling thread, but for the signals that the application has unblocked since.
 */
DLXCOMN_API CS_RETCODE comn_signal_setup(void);
DLXCOMN_API CS_RETCODE comn_signal_exit(void);

/*
 * Install, replace or remove the handler of a signal; *old_handler (if not null) receives the former one.
 * Routing must have been started. CS_FAIL for a number of 65 or more. On return the new state is in force. A
 * null handler changes nothing and only asks. A removal waits for the end of a handler that runs, so a handler
 * can replace itself but not remove itself. Like comn_waitfor_event it leaves cancellation disabled where it
 * had to wait for the catcher.
 */
DLXCOMN_API CS_RETCODE comn_install_handler(CS_INT sig, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler);

/* Whether a signal is one that is routed to threads. */
DLXCOMN_API CS_BOOL comn_sig_is_handled_synchronously(CS_INT signal);

/* ---- Parts of the above -------------------------------------------------------------------- */

DLXCOMN_API CS_VOID *comn__sig_catcher_thread(CS_VOID *unused);
DLXCOMN_API CS_VOID *comn__sig_accept_thread(CS_VOID *signal); /* the number, as a pointer */
DLXCOMN_API void comn__redirect_handler(int sig);
DLXCOMN_API CS_RETCODE comn__install_accept_thread(CS_INT sig, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler);
DLXCOMN_API CS_RETCODE comn__uninstall_accept_thread(CS_INT sig, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler);
/* Change the disposition of a signal; a null handler only reads it. */
DLXCOMN_API CS_RETCODE comn__sigaction(CS_INT signal, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler);
DLXCOMN_API CS_RETCODE comn__block_signal(CS_INT sig);
DLXCOMN_API CS_RETCODE comn__unblock_signal(CS_INT sig);

#ifdef __cplusplus
}
#endif
#endif
