// Makes a call of the thread library fail on demand, and keeps the deadlines that waits are given.
//
// This header defines the functions below for the executable that includes it (in one source only). The library's
// calls bind to them, and they pass on to the real ones, or to those of a sanitizer, unless they are to fail.
#ifndef TESTS_SUPPORT_FAILING_SYSTEM_H
#define TESTS_SUPPORT_FAILING_SYSTEM_H

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>

#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>
#include <time.h>

// The run time of a sanitizer calls these before it can take note of a call. A cancellation drops the frames of waits,
// which must not leave red zones behind.
#define PASSES_ON __attribute__((no_sanitize("thread", "address", "undefined")))

namespace support {

// While one of these lives, calls of `function` by this thread fail with EAGAIN: the n-th (from 1) and all behind it.
class FailingSystem {
public:
    explicit FailingSystem(const char *function, int n = 1) : function_(function), passing_(n - 1) { current_ = this; }
    ~FailingSystem() { current_ = nullptr; }
    FailingSystem(const FailingSystem &) = delete;
    FailingSystem &operator=(const FailingSystem &) = delete;

    PASSES_ON static bool refuses(const char *function) {
        FailingSystem *self = current_;
        return self != nullptr && std::strcmp(function, self->function_) == 0 && self->passing_-- <= 0;
    }

private:
    static inline thread_local FailingSystem *current_ = nullptr;
    const char *function_;
    int passing_;
};

// Waits with a deadline, of all threads, and the deadline of the last one, on the system's clock of the day. That
// clock may be made to run fast or slow, so a time that has passed on another one says little of it.
inline std::atomic<int> timed_waits = 0; // counted behind the deadline
inline std::atomic<std::chrono::nanoseconds> last_deadline = {};

PASSES_ON inline void note_deadline(const timespec &deadline) {
    last_deadline = std::chrono::seconds(deadline.tv_sec) + std::chrono::nanoseconds(deadline.tv_nsec);
    ++timed_waits;
}

template <class Function>
PASSES_ON Function next_of(Function &known, const char *name) {
    Function next = __atomic_load_n(&known, __ATOMIC_RELAXED);
    if (next == nullptr) {
        next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
        __atomic_store_n(&known, next, __ATOMIC_RELAXED);
    }
    return next;
}

} // namespace support

#define MAY_FAIL(name, exceptions, parameters, arguments, ...)         \
    extern "C" PASSES_ON int name parameters exceptions {              \
        static int(*real) parameters = nullptr;                        \
        __VA_ARGS__;                                                   \
        if (support::FailingSystem::refuses(#name))                    \
            return EAGAIN;                                             \
        return support::next_of(real, #name) arguments;                \
    }

MAY_FAIL(pthread_attr_init, noexcept, (pthread_attr_t * attributes), (attributes))
MAY_FAIL(pthread_attr_setscope, noexcept, (pthread_attr_t * attributes, int scope), (attributes, scope))
MAY_FAIL(pthread_attr_setdetachstate, noexcept, (pthread_attr_t * attributes, int state), (attributes, state))
MAY_FAIL(pthread_create, noexcept,
         (pthread_t *__restrict thread, const pthread_attr_t *__restrict attributes, void *(*start)(void *),
          void *__restrict argument),
         (thread, attributes, start, argument))
MAY_FAIL(pthread_mutex_init, noexcept, (pthread_mutex_t * mutex, const pthread_mutexattr_t *attributes),
         (mutex, attributes))
MAY_FAIL(pthread_mutex_lock, noexcept, (pthread_mutex_t * mutex), (mutex))
MAY_FAIL(pthread_mutex_unlock, noexcept, (pthread_mutex_t * mutex), (mutex))
MAY_FAIL(pthread_cond_init, noexcept,
         (pthread_cond_t *__restrict condition, const pthread_condattr_t *__restrict attributes),
         (condition, attributes))
MAY_FAIL(pthread_cond_signal, noexcept, (pthread_cond_t * condition), (condition))
MAY_FAIL(pthread_cond_broadcast, noexcept, (pthread_cond_t * condition), (condition))
MAY_FAIL(pthread_cond_wait, , (pthread_cond_t *__restrict condition, pthread_mutex_t *__restrict mutex),
         (condition, mutex))
MAY_FAIL(pthread_cond_timedwait, ,
         (pthread_cond_t *__restrict condition, pthread_mutex_t *__restrict mutex,
          const timespec *__restrict deadline),
         (condition, mutex, deadline), support::note_deadline(*deadline))
MAY_FAIL(pthread_key_create, noexcept, (pthread_key_t * key, void (*destructor)(void *)), (key, destructor))
MAY_FAIL(pthread_sigmask, noexcept, (int how, const sigset_t *__restrict set, sigset_t *__restrict old),
         (how, set, old))

#undef MAY_FAIL
#undef PASSES_ON

#endif
