// Signal handlers that run as plain functions, on threads.
//
// Every thread that the library makes, and the thread that started routing, blocks the routed signals. The
// catcher thread does not: a signal without a handler lands there and has its normal effect. Installing a
// handler makes the catcher block the signal too, and gives it an accept thread that takes it by sigwait and
// calls the handler. A thread cannot set another's mask, so the catcher is asked by a byte through a pipe and
// answers by an event; an installer goes on only when the new mask is in force.
//
// What runs in signal context is comn__redirect_handler alone: a few atomic operations and pthread_kill.
#include "diag/check.h"

#include <dlxcomn/signals.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <unistd.h>

namespace {

constexpr char UPDATE_MASK = 'u';
constexpr char END = 'e';
constexpr CS_INT WITHOUT_LIMIT = -9999;

// Bit n is set for a routed signal n from 0 to 30: those that ask for something, not those that report a fault.
constexpr std::uint32_t ROUTED_SIGNALS = 0x77F6D44E;
constexpr CS_INT LAST_ROUTED_BIT = 30;

using SystemHandler = void (*)(int);

// All of it is guarded by its mutex but for what signal context and accept threads read, which is atomic.
struct Routing {
    int initialized;
    CS_THRDRES *pthread_sigs_mutex;
    int do_update_block_event[2];        // the pipe to the catcher: read end, write end
    CS_THRDRES *update_block_done_event; // its answer
    CS_THRDRES *sig_catcher_thread;
    sigset_t original_signal_mask; // of the thread that started routing
    sigset_t catcher_signal_mask;
    sigset_t default_signal_mask; // of all other threads of the library
    std::array<SystemHandler, COMN_SIG_COUNT> orig_sighan_array;
    std::array<std::atomic<COMN_SIG_FUNC>, COMN_SIG_COUNT> sig_func_array;
    std::array<std::atomic<CS_THRDRES *>, COMN_SIG_COUNT> sig_accept_thread_array;
    std::atomic<int> redirects; // calls of comn__redirect_handler under way
};

static_assert(std::atomic<COMN_SIG_FUNC>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "used in signal context");

constinit Routing routing = {};

// The two handler types stand for one another: the system keeps what it is given.
template <class To, class From>
To handler_cast(From handler) {
    return reinterpret_cast<To>(reinterpret_cast<void (*)()>(handler));
}

template <class Call>
ssize_t again_on_interrupt(Call call) {
    ssize_t result;
    do
        result = call();
    while (result < 0 && errno == EINTR);
    return result;
}

bool send_command(char command) {
    return again_on_interrupt([&] { return write(routing.do_update_block_event[1], &command, 1); }) == 1;
}

// Has the catcher take its mask anew, and waits until it has.
CS_RETCODE update_catcher() {
    if (!send_command(UPDATE_MASK)) {
        std::perror("write(do_update_block_event) failed:");
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
    COM_REQUIRE(comn_waitfor_event(routing.update_block_done_event, WITHOUT_LIMIT) == CS_SUCCEED, CS_FAIL);
    return CS_SUCCEED;
}

CS_RETCODE change_mask(int how, CS_INT signal) {
    sigset_t set;
    sigemptyset(&set);
    if (sigaddset(&set, signal) != 0 || pthread_sigmask(how, &set, nullptr) != 0)
        return COM_TRACE(CS_FAIL);
    return CS_SUCCEED;
}

SystemHandler system_handler(COMN_SIG_FUNC handler) {
    if (handler == COMN_SIG_DFL)
        return SIG_DFL;
    if (handler == COMN_SIG_IGN)
        return SIG_IGN;
    return handler_cast<SystemHandler>(handler);
}

void answer(COMN_SIG_FUNC *old_handler, COMN_SIG_FUNC function) {
    if (old_handler != nullptr)
        *old_handler = function;
}

CS_RETCODE install(CS_INT sig, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler) {
    // What an earlier install answered for an ignored signal may be given back.
    if (handler == handler_cast<COMN_SIG_FUNC>(SIG_IGN))
        handler = COMN_SIG_IGN;
    if (!comn_sig_is_handled_synchronously(sig))
        return comn__sigaction(sig, handler, old_handler);
    const COMN_SIG_FUNC present = routing.sig_func_array[sig];
    const bool removes = handler == COMN_SIG_DFL || handler == COMN_SIG_IGN;
    if (present == nullptr)
        return removes || handler == nullptr ? comn__sigaction(sig, handler, old_handler)
                                             : comn__install_accept_thread(sig, handler, old_handler);
    if (removes)
        return comn__uninstall_accept_thread(sig, handler, old_handler);
    answer(old_handler, present);
    if (handler != nullptr) // null only asks
        routing.sig_func_array[sig] = handler;
    return CS_SUCCEED;
}

// Ends the accept thread of a signal whose function is gone already: the poke makes sigwait return, and the
// thread, finding no function, end. A redirection that is under way may still use the handle, and is let through.
CS_RETCODE end_accept_thread(CS_INT sig) {
    CS_THRDRES *thread = routing.sig_accept_thread_array[sig].exchange(nullptr);
    while (routing.redirects != 0)
        sched_yield();
    comn_signal_thread(thread, sig);
    COM_REQUIRE(comn_join_thread(thread) == CS_SUCCEED, CS_FAIL);
    return CS_SUCCEED;
}

// Accept threads outlive the end of routing. At the next start they go, and their signals get the disposition
// back that they had at first: else such a thread would take signals away from the next handler or the catcher.
void retire_accept_threads() {
    for (int sig = 1; sig < COMN_SIG_COUNT; ++sig) {
        routing.sig_func_array[sig] = nullptr;
        if (routing.sig_accept_thread_array[sig] == nullptr)
            continue;
        struct sigaction action = {};
        action.sa_handler = routing.orig_sighan_array[sig];
        sigaction(sig, &action, nullptr);
        end_accept_thread(sig);
    }
}

CS_RETCODE start_catcher() {
    if (pipe2(routing.do_update_block_event, O_CLOEXEC) != 0) {
        std::perror("pipe(do_update_block_event) failed:");
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
    CS_RETCODE status = comn_create_event(&routing.update_block_done_event);
    if (status == CS_SUCCEED) {
        status = comn_create_thread(&routing.sig_catcher_thread, comn__sig_catcher_thread, nullptr);
        if (status != CS_SUCCEED)
            comn_delete_event(routing.update_block_done_event);
    }
    if (status != CS_SUCCEED) {
        close(routing.do_update_block_event[0]);
        close(routing.do_update_block_event[1]);
    }
    COM_REQUIRE(status == CS_SUCCEED, CS_FAIL);
    COM_REQUIRE(comn_waitfor_event(routing.update_block_done_event, WITHOUT_LIMIT) == CS_SUCCEED, CS_FAIL);
    return CS_SUCCEED;
}

// Whether the catcher was told to end. Where it could not be it sees the end of its pipe, or a descriptor that is
// none.
bool dismiss_catcher() {
    const bool told = send_command(END);
    if (told)
        comn_yield();
    else
        close(routing.do_update_block_event[1]);
    return told;
}

CS_RETCODE join_catcher(bool told) {
    const CS_RETCODE joined = comn_join_thread(routing.sig_catcher_thread);
    comn_delete_event(routing.update_block_done_event); // in use until the catcher has ended, as is its end of the pipe
    if (!told)
        close(routing.do_update_block_event[0]);
    return joined;
}

CS_RETCODE start_routing() {
    retire_accept_threads();
    COM_REQUIRE(pthread_sigmask(SIG_SETMASK, nullptr, &routing.original_signal_mask) == 0, CS_FAIL);
    routing.catcher_signal_mask = routing.original_signal_mask;
    routing.default_signal_mask = routing.original_signal_mask;
    if (start_catcher() != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);

    for (int sig = 1; sig < COMN_SIG_COUNT; ++sig) {
        struct sigaction action;
        if (sigaction(sig, nullptr, &action) == 0)
            routing.orig_sighan_array[sig] = action.sa_handler;
        if (comn_sig_is_handled_synchronously(sig))
            sigaddset(&routing.default_signal_mask, sig);
    }
    const CS_RETCODE status = comn_apply_default_sigblock(nullptr);
    if (status != CS_SUCCEED)
        join_catcher(dismiss_catcher());
    COM_REQUIRE(status == CS_SUCCEED, CS_FAIL);
    return CS_SUCCEED;
}

// The mask of the thread that ends routing: what it was at the start, but for signals that the application has
// unblocked since.
bool restore_original_mask() {
    sigset_t now;
    if (pthread_sigmask(SIG_SETMASK, nullptr, &now) != 0)
        return false;
    sigset_t mask = routing.original_signal_mask;
    for (int sig = 1; sig < COMN_SIG_COUNT; ++sig)
        if (sigismember(&routing.original_signal_mask, sig) == 1 && sigismember(&now, sig) == 0)
            sigdelset(&mask, sig);
    return pthread_sigmask(SIG_SETMASK, &mask, nullptr) == 0;
}

} // namespace

CS_BOOL comn_sig_is_handled_synchronously(CS_INT signal) {
    if (signal >= SIGRTMIN && signal <= SIGRTMAX)
        return CS_TRUE;
    return signal >= 0 && signal <= LAST_ROUTED_BIT && (ROUTED_SIGNALS >> signal & 1) != 0;
}

CS_RETCODE comn_signal_setup() {
    if (routing.initialized == 1)
        return CS_SUCCEED;
    COM_REQUIRE(comn_create_mutex(&routing.pthread_sigs_mutex) == CS_SUCCEED, CS_FAIL);
    routing.initialized = 1;
    comn_take_mutex(routing.pthread_sigs_mutex);
    const CS_RETCODE status = start_routing();
    comn_release_mutex(routing.pthread_sigs_mutex);
    if (status == CS_SUCCEED)
        return CS_SUCCEED;
    comn_delete_mutex(routing.pthread_sigs_mutex);
    routing.initialized = 0;
    return COM_TRACE(status);
}

CS_RETCODE comn_signal_exit() {
    COM_REQUIRE(routing.initialized == 1, CS_FAIL);
    comn_take_mutex(routing.pthread_sigs_mutex);
    const bool restored = restore_original_mask();
    const bool told = dismiss_catcher();
    comn_release_mutex(routing.pthread_sigs_mutex);
    comn_delete_mutex(routing.pthread_sigs_mutex);
    const CS_RETCODE joined = join_catcher(told);
    routing.initialized = 0;
    COM_REQUIRE(restored, CS_FAIL);
    return joined;
}

CS_RETCODE comn_install_handler(CS_INT sig, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler) {
    COM_REQUIRE(routing.initialized == 1, CS_FAIL);
    if (sig < 0 || sig >= COMN_SIG_COUNT)
        return COM_TRACE(CS_FAIL);
    if (handler == COMN_SIG_UNBLOCK)
        return comn__unblock_signal(sig);
    if (handler == COMN_SIG_BLOCK)
        return comn__block_signal(sig);
    COM_REQUIRE(comn_take_mutex(routing.pthread_sigs_mutex) == CS_SUCCEED, CS_FAIL);
    const CS_RETCODE status = install(sig, handler, old_handler);
    comn_release_mutex(routing.pthread_sigs_mutex);
    return status;
}

CS_RETCODE comn__install_accept_thread(CS_INT sig, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler) {
    COM_REQUIRE(routing.initialized == 1, CS_FAIL);
    COM_REQUIRE(comn_sig_is_handled_synchronously(sig) && routing.sig_func_array[sig] == nullptr, CS_FAIL);
    COM_REQUIRE(sigaddset(&routing.catcher_signal_mask, sig) == 0, CS_FAIL);
    if (update_catcher() != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    // Only now nothing but an accept thread takes the signal.
    routing.sig_func_array[sig] = handler;
    CS_THRDRES *thread = nullptr;
    auto *argument = reinterpret_cast<CS_VOID *>(static_cast<std::intptr_t>(sig));
    const CS_RETCODE created = comn_create_thread(&thread, comn__sig_accept_thread, argument);
    if (created != CS_SUCCEED) {
        routing.sig_func_array[sig] = nullptr;
        sigdelset(&routing.catcher_signal_mask, sig);
        update_catcher();
    }
    COM_REQUIRE(created == CS_SUCCEED, CS_FAIL);
    routing.sig_accept_thread_array[sig] = thread;
    const auto redirect = handler_cast<COMN_SIG_FUNC>(comn__redirect_handler);
    COM_REQUIRE(comn__sigaction(sig, redirect, old_handler) == CS_SUCCEED, CS_FAIL);
    return CS_SUCCEED;
}

CS_RETCODE comn__uninstall_accept_thread(CS_INT sig, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler) {
    COM_REQUIRE(routing.initialized == 1, CS_FAIL);
    COM_REQUIRE(comn_sig_is_handled_synchronously(sig) && routing.sig_func_array[sig] != nullptr, CS_FAIL);
    answer(old_handler, routing.sig_func_array[sig]);
    if (handler == COMN_SIG_DFL)
        comn__sigaction(sig, handler, nullptr);
    routing.sig_func_array[sig] = nullptr;
    if (end_accept_thread(sig) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    // An ignored signal would never have reached sigwait.
    if (handler == COMN_SIG_IGN)
        comn__sigaction(sig, handler, nullptr);
    COM_REQUIRE(sigdelset(&routing.catcher_signal_mask, sig) == 0, CS_FAIL);
    return update_catcher();
}

CS_RETCODE comn__sigaction(CS_INT signal, COMN_SIG_FUNC handler, COMN_SIG_FUNC *old_handler) {
    struct sigaction action = {};
    struct sigaction old_action = {};
    action.sa_handler = system_handler(handler);
    for (int sig = 1; sig < COMN_SIG_COUNT; ++sig)
        if (comn_sig_is_handled_synchronously(sig))
            sigaddset(&action.sa_mask, sig);
    if (sigaction(signal, handler != nullptr ? &action : nullptr, &old_action) != 0)
        return COM_TRACE(CS_FAIL);
    answer(old_handler, handler_cast<COMN_SIG_FUNC>(old_action.sa_handler));
    return CS_SUCCEED;
}

CS_RETCODE comn__block_signal(CS_INT sig) { return change_mask(SIG_BLOCK, sig); }
CS_RETCODE comn__unblock_signal(CS_INT sig) { return change_mask(SIG_UNBLOCK, sig); }

CS_RETCODE comn_apply_default_sigblock(CS_VOID *restore_blocksetp) {
    const int result =
        pthread_sigmask(SIG_SETMASK, &routing.default_signal_mask, static_cast<sigset_t *>(restore_blocksetp));
    return result == 0 ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_RETCODE comn_restore_sigblock(CS_VOID *restore_blocksetp) {
    COM_REQUIRE_PTR(restore_blocksetp, CS_FAIL);
    const int result = pthread_sigmask(SIG_SETMASK, static_cast<sigset_t *>(restore_blocksetp), nullptr);
    return result == 0 ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

// Reached only on a thread outside the library that has the signal open.
void comn__redirect_handler(int sig) {
    if (sig < 0 || sig >= COMN_SIG_COUNT)
        return;
    ++routing.redirects; // from here to its counterpart no accept thread is joined
    CS_THRDRES *thread = routing.sig_accept_thread_array[sig];
    if (thread != nullptr && routing.sig_func_array[sig] != nullptr) {
        const int saved = errno;
        pthread_kill(*reinterpret_cast<pthread_t *>(thread), sig);
        errno = saved;
    }
    --routing.redirects;
}

CS_VOID *comn__sig_accept_thread(CS_VOID *signal) {
    const auto wanted = static_cast<CS_INT>(reinterpret_cast<std::intptr_t>(signal));
    sigset_t set;
    sigemptyset(&set);
    COM_REQUIRE(sigaddset(&set, wanted) == 0, nullptr);
    for (;;) {
        int delivered = 0;
        const int result = sigwait(&set, &delivered);
        if (result == EINTR)
            continue;
        COM_REQUIRE(result == 0, nullptr);
        COM_REQUIRE(delivered == wanted, nullptr);
        const COMN_SIG_FUNC function = routing.sig_func_array[wanted];
        if (function == nullptr)
            comn_exit_thread(nullptr);
        function(wanted, 0, nullptr);
    }
}

CS_VOID *comn__sig_catcher_thread(CS_VOID * /*unused*/) {
    COM_REQUIRE(routing.initialized == 1, nullptr);
    char command = UPDATE_MASK;
    while (command != END) {
        COM_REQUIRE(pthread_sigmask(SIG_SETMASK, &routing.catcher_signal_mask, nullptr) == 0, nullptr);
        comn_signal_event(routing.update_block_done_event);
        const ssize_t count = again_on_interrupt([&] { return read(routing.do_update_block_event[0], &command, 1); });
        if (count == 0 || (count < 0 && errno == EBADF))
            return nullptr;
        if (count < 0) {
            std::perror("read(do_update_block_event) failed:");
            com_bomb(__FILE__, __LINE__);
            return nullptr;
        }
    }
    close(routing.do_update_block_event[0]);
    close(routing.do_update_block_event[1]);
    return nullptr;
}
