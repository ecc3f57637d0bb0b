/*
 * thread.h - recursive mutexes, events, semaphores, conditions, threads, keys, and the coroutine mode.
 *
 * Every handle is a CS_THRDRES that its create function allocates and its delete or join function frees;
 * what is behind it is one of the records below, and only the functions here touch it. All functions
 * answer CS_SUCCEED or CS_FAIL but where told; a create function that fails leaves null and nothing behind.
 * The first ten functions of a CS_THREAD table can be filled from here.
 *
 * Misuse of a handle (null, deleted, released by another thread) is a broken contract, and so is a failing
 * system call of a mutex; of an event or a semaphore it is CS_FAIL.
 */
#ifndef DLXCOMN_THREAD_H
#define DLXCOMN_THREAD_H

#include <pthread.h>

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

#define COMN_MUTEX_MAGIC 0xDEADBABEu

typedef struct _comnmutex_ {
    pthread_t owner;       /* all bits set when free */
    pthread_mutex_t mutex; /* default attributes: recursion is counted here, not there */
    unsigned magic;        /* COMN_MUTEX_MAGIC while alive, 0 after delete */
    unsigned use_count;    /* recursion depth */
} COMN_MUTEX;

typedef struct _comnevent_ {
    CS_BOOL ar; /* auto-reset */
    CS_BOOL ev; /* signalled */
    pthread_cond_t pc;
    pthread_mutex_t pm;
} COMN_EVENT;

typedef struct _comnsem_ {
    CS_INT ev; /* the count; a negative one is a broken semaphore */
    pthread_cond_t pc;
    pthread_mutex_t pm;
} COMN_SEM;

typedef pthread_t CS_THRDID;
typedef CS_INT CS_THRDKEY;
typedef CS_VOID *(*CS_THREAD_FUNC)(CS_VOID *arg);

/* ---- Mutexes -------------------------------------------------------------------------------
 * Recursive, owned by a thread. comn_try_mutex is for places where no contention is possible: a mutex that
 * another thread holds is a broken contract there, not a result.
 */
DLXCOMN_API CS_RETCODE comn_create_mutex(CS_THRDRES **mutex);
DLXCOMN_API CS_RETCODE comn_delete_mutex(CS_THRDRES *mutex); /* must be free */
DLXCOMN_API CS_RETCODE comn_take_mutex(CS_THRDRES *mutex);
DLXCOMN_API CS_RETCODE comn_try_mutex(CS_THRDRES *mutex);
DLXCOMN_API CS_RETCODE comn_release_mutex(CS_THRDRES *mutex);
/* Whether the calling thread owns the mutex. */
DLXCOMN_API CS_BOOL comn_check_mutex(CS_THRDRES *mutex);

/* ---- Events --------------------------------------------------------------------------------
 * An auto-reset event wakes one waiter and is then unset; a manual one wakes all and stays set until reset.
 */
DLXCOMN_API CS_RETCODE comn_create_event(CS_THRDRES **cond); /* auto-reset */
DLXCOMN_API CS_RETCODE comn_create_event_ex(CS_THRDRES **cond, CS_BOOL autoreset);
DLXCOMN_API CS_RETCODE comn_delete_event(CS_THRDRES *cond);
DLXCOMN_API CS_RETCODE comn_reset_event(CS_THRDRES *cond);
DLXCOMN_API CS_RETCODE comn_signal_event(CS_THRDRES *cond);
/*
 * Wait for an event: 0 polls, a negative value waits without limit. CS_SUCCEED, CS_FAIL or CS_TIMED_OUT. Each
 * wake-up without the event starts the full time anew. The wait is a cancellation point, and leaves
 * cancellation disabled behind it.
 */
DLXCOMN_API CS_RETCODE comn_waitfor_event(CS_THRDRES *cond, CS_INT millisecs);

/* ---- Conditions ---------------------------------------------------------------------------- */

DLXCOMN_API CS_RETCODE comn_create_cond(CS_THRDRES **cond);
DLXCOMN_API CS_RETCODE comn_delete_cond(CS_THRDRES *cond);
DLXCOMN_API CS_RETCODE comn_broadcast_cond(CS_THRDRES *cond);
DLXCOMN_API CS_RETCODE comn_signal_cond(CS_THRDRES *cond);
/* Give the mutex up to whatever depth it is held, wait, and take it back to the same depth. */
DLXCOMN_API CS_RETCODE comn_wait_cond(CS_THRDRES *cond, CS_THRDRES *mutex);

/* ---- Semaphores ---------------------------------------------------------------------------- */

/* count is not used: a semaphore starts at 0 and gets its units from comn_release_sem alone. */
DLXCOMN_API CS_RETCODE comn_create_sem(CS_THRDRES **sem, CS_INT count);
DLXCOMN_API CS_RETCODE comn_delete_sem(CS_THRDRES *sem);
DLXCOMN_API CS_RETCODE comn_release_sem(CS_THRDRES *sem);
/* Take a unit; with trywait 1 CS_FAIL where there is none. A negative count is CS_FAIL and leaves it locked. */
DLXCOMN_API CS_RETCODE comn_waitfor_sem(CS_THRDRES *sem, CS_INT trywait);

/* ---- Threads -------------------------------------------------------------------------------
 * A new thread runs from its creation, joinable, with system scope and the signal mask that signal.h tells.
 * stacksize is bytes; 0 and less is the system's default. arg may be null.
 */
DLXCOMN_API CS_RETCODE comn_create_thread_no_alloc(CS_THRDID *thread, CS_THREAD_FUNC startRoutine, CS_VOID *arg,
                                                   CS_INT stacksize);
DLXCOMN_API CS_RETCODE comn_create_thread_ex(CS_THRDRES **threadpp, CS_THREAD_FUNC startRoutine, CS_VOID *arg,
                                             CS_INT stacksize);
DLXCOMN_API CS_RETCODE comn_create_thread(CS_THRDRES **thread, CS_THREAD_FUNC startRoutine, CS_VOID *arg);
DLXCOMN_API CS_RETCODE comn_start_thread(CS_THRDRES *thread);  /* nothing to do */
DLXCOMN_API CS_RETCODE comn_kill_thread(CS_THRDRES *threadp);  /* a cancellation request */
DLXCOMN_API CS_RETCODE comn_join_thread(CS_THRDRES *threadp);  /* frees the handle */
DLXCOMN_API CS_RETCODE comn_detach_thread(CS_THRDRES *threadp); /* not supported: CS_FAIL */
DLXCOMN_API CS_RETCODE comn_exit_thread(CS_THRDRES *thread);   /* ends the calling thread */
DLXCOMN_API void comn_thread_cleanup(CS_VOID *handle);         /* aborts */
DLXCOMN_API CS_RETCODE comn_set_priority(CS_THRDRES *thread, CS_INT newprio); /* nothing to do */
DLXCOMN_API CS_RETCODE comn_signal_thread(CS_THRDRES *threadp, CS_INT sig);
DLXCOMN_API CS_RETCODE comn_lock_global(void);   /* not supported: CS_FAIL */
DLXCOMN_API CS_RETCODE comn_unlock_global(void); /* not supported: CS_FAIL */
/* Let others run; a pending cancellation takes effect here. */
DLXCOMN_API CS_RETCODE comn_yield(void);
/* Disable cancellation of the calling thread. */
DLXCOMN_API CS_RETCODE comn_set_cancelstate(void);

DLXCOMN_API CS_INT comn_threadid(void);
DLXCOMN_API CS_THRDID comn_thread_id(void);
/* Copy the id of the calling thread, 8 bytes; buflen of less is a broken contract. */
DLXCOMN_API CS_RETCODE comn_get_tid(CS_VOID *buffer, CS_INT buflen, CS_INT *outlen);
DLXCOMN_API CS_BOOL comn_thread_equal(CS_THRDID tid1, CS_THRDID tid2);

/* ---- Keys ---------------------------------------------------------------------------------- */

DLXCOMN_API CS_RETCODE comn_create_key(CS_THRDKEY *keyp); /* without a destructor */
DLXCOMN_API CS_RETCODE comn_drop_key(CS_THRDKEY key);
DLXCOMN_API CS_VOID *comn_get_threaduserdata(CS_THRDKEY key); /* null for CS_UNUSED */
DLXCOMN_API CS_RETCODE comn_set_threaduserdata(CS_THRDKEY key, CS_VOID *dataptr);

/* ---- Coroutine mode ------------------------------------------------------------------------
 * Threads that run one at a time, by holding one process-wide mutex. With the mode off take, release and end
 * do nothing and succeed. The caller of end must hold control.
 */
extern DLXCOMN_API CS_THRDRES *Coroutine_sem; /* null when the mode is off */
DLXCOMN_API CS_RETCODE comn_start_coroutine_mode(void); /* CS_FAIL when it is on */
DLXCOMN_API CS_RETCODE comn_take_coroutine_control(void);
DLXCOMN_API CS_RETCODE comn_release_coroutine_control(void);
DLXCOMN_API CS_RETCODE comn_end_coroutine_mode(void);

/* ---- Signal masks -------------------------------------------------------------------------- */

/*
 * Give the calling thread the mask of the library's threads, and put its own back. restore_blocksetp is the
 * address of a sigset_t that keeps the old mask; it may be null in the first.
 */
DLXCOMN_API CS_RETCODE comn_apply_default_sigblock(CS_VOID *restore_blocksetp);
DLXCOMN_API CS_RETCODE comn_restore_sigblock(CS_VOID *restore_blocksetp);

#ifdef __cplusplus
}
#endif
#endif
