// Handlers of routed signals that leave traces, and the accept threads behind them; for code in child processes.
#ifndef TESTS_SUPPORT_ROUTING_H
#define TESTS_SUPPORT_ROUTING_H

#include "support/child.h"
#include "support/tasks.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <initializer_list>

#include <signal.h>

// A child leaves with threads alive, for which the thread sanitizer would wait a second each time. Include this header
// in one source of an executable only.
extern "C" const char *__tsan_default_options() { return "atexit_sleep_ms=20"; }

namespace support::routing {

// Runs the code in a child. The first thread of a process may bring others with it, which are a sanitizer's; so
// it is not one of those that are counted.
template <class Code>
Ending in_child_with_threads(Code code) {
    return in_child([&](int notes) {
        std::thread([] {}).join();
        code(notes);
    });
}

// The same for code that is to come to its end with all its checks passed.
template <class Code>
void expect_pass(Code code) {
    const Ending ending = in_child_with_threads(code);
    EXPECT_TRUE(ending.exited(0)) << "status " << ending.status << '\n' << ending.err;
    EXPECT_EQ(ending.notes, "");
}

// ---- Handlers ----------------------------------------------------------------------------------------------

inline std::atomic<int> calls = 0; // counted behind the values of the last call
inline std::atomic<int> last_signal = 0;
inline std::atomic<int> last_code = -1;
inline std::atomic<void *> last_info = &calls;
inline std::atomic<pid_t> last_thread = 0;
inline std::atomic<int> other_calls = 0;

inline void count_call(CS_INT sig, CS_INT code, CS_VOID *info) {
    last_signal = sig;
    last_code = code;
    last_info = info;
    last_thread = gettid();
    ++calls;
}

inline void count_other_call(CS_INT, CS_INT, CS_VOID *) {
    last_thread = gettid();
    ++other_calls;
}

inline std::atomic<int> entered = 0;
inline std::atomic<int> released = 0;

// Each call needs a release of its own.
inline void block_until_released(CS_INT, CS_INT, CS_VOID *) {
    const int call = ++entered;
    eventually([call] { return released >= call; });
}
inline void release_blocked() { ++released; }

inline std::atomic<int> contexts = 0;
inline void in_signal_context(int) { ++contexts; }

// ---- Dispositions and masks --------------------------------------------------------------------------------

using SystemHandler = void (*)(int);

inline COMN_SIG_FUNC as_handler(SystemHandler handler) {
    return reinterpret_cast<COMN_SIG_FUNC>(reinterpret_cast<void (*)()>(handler));
}

inline SystemHandler disposition(int sig) {
    struct sigaction action;
    sigaction(sig, nullptr, &action);
    return action.sa_handler;
}

inline void block(std::initializer_list<int> signals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int sig : signals)
        sigaddset(&set, sig);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

// A signal that this thread blocks is queued even where it is ignored, until the catcher throws it away.
inline bool thrown_away(int sig) {
    return eventually([sig] {
        sigset_t pending;
        sigpending(&pending);
        return sigismember(&pending, sig) == 0;
    });
}

// So that assertions that return can raise their signal.
inline void unblock_abort() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGABRT);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

// ---- Threads of the routing --------------------------------------------------------------------------------

// The thread that `start` makes, if it makes exactly one.
template <class Start>
pid_t thread_started_by(int notes, Start start) {
    const Tasks before = all_tasks();
    start();
    const Tasks started = tasks_since(before);
    CHILD_CHECK(notes, started.size() == 1);
    return started.empty() ? 0 : started.begin()->first;
}

// Starts routing; the catcher.
inline pid_t set_up(int notes) {
    return thread_started_by(notes, [notes] { CHILD_CHECK(notes, comn_signal_setup() == CS_SUCCEED); });
}

// A first handler of a signal and its accept thread.
class Accepted {
public:
    Accepted(int notes, int sig, COMN_SIG_FUNC handler = count_call) : signal_(sig) {
        id_ = thread_started_by(notes, [&] {
            CHILD_CHECK(notes, comn_install_handler(sig, handler, nullptr) == CS_SUCCEED);
        });
    }
    pid_t id() const { return id_; }
    bool gone() const {
        return eventually([this] { return all_tasks().count(id_) == 0; });
    }
    // Whether the signal has been sent to the thread itself and not been taken.
    bool pending() const { return (task_of(id_).pending >> (signal_ - 1) & 1) != 0; }

private:
    int signal_;
    pid_t id_ = 0;
};

} // namespace support::routing

#endif
