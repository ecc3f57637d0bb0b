// Locks and threads over POSIX: recursive mutexes with an owner check, events, semaphores, conditions, threads,
// keys, and the coroutine mode.
//
// A mutex counts its recursion here and not in the system's mutex, which stays a default one: that lets a
// condition wait give it up whole from any depth, and makes the inner levels free of system code.
#include "diag/check.h"

#include <dlxcomn/thread.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <sched.h>
#include <signal.h>
#include <sys/time.h>

CS_THRDRES *Coroutine_sem = nullptr;

namespace {

constexpr pthread_t NO_OWNER = ~pthread_t{0};

// The calling thread. Kept in a variable of its own because the library's call for it costs as much as an
// inner take.
pthread_t self() {
    [[gnu::tls_model("initial-exec")]] static thread_local pthread_t id = 0;
    if (id == 0) [[unlikely]]
        id = pthread_self();
    return id;
}

// The owner is written with the inner mutex held and read without it by a thread that asks whether it is its
// own: only the owner can see its own id there.
pthread_t owner_of(const COMN_MUTEX &mutex) { return __atomic_load_n(&mutex.owner, __ATOMIC_RELAXED); }
void set_owner(COMN_MUTEX &mutex, pthread_t owner) { __atomic_store_n(&mutex.owner, owner, __ATOMIC_RELAXED); }

// A handle that is missing or was deleted is misused like one that is released by a stranger: the report is the
// same, and not the one of a missing address.
bool alive(const COMN_MUTEX *mutex) { return mutex != nullptr && mutex->magic == COMN_MUTEX_MAGIC; }

COMN_MUTEX *as_mutex(CS_THRDRES *handle) { return reinterpret_cast<COMN_MUTEX *>(handle); }
COMN_EVENT *as_event(CS_THRDRES *handle) { return reinterpret_cast<COMN_EVENT *>(handle); }
COMN_SEM *as_semaphore(CS_THRDRES *handle) { return reinterpret_cast<COMN_SEM *>(handle); }
pthread_cond_t *as_condition(CS_THRDRES *handle) { return reinterpret_cast<pthread_cond_t *>(handle); }
pthread_t *as_thread(CS_THRDRES *handle) { return reinterpret_cast<pthread_t *>(handle); }

template <class Record>
CS_THRDRES *as_handle(Record *record) {
    return reinterpret_cast<CS_THRDRES *>(record);
}

CS_RETCODE status_of(int system_result) { return system_result == 0 ? CS_SUCCEED : COM_TRACE(CS_FAIL); }

template <class Record>
Record *allocate() {
    return static_cast<Record *>(std::calloc(1, sizeof(Record)));
}

// Makes a record of a mutex and a condition, which events and semaphores are.
template <class Record>
Record *create_waitable() {
    auto *record = allocate<Record>();
    if (record == nullptr)
        return nullptr;
    if (pthread_mutex_init(&record->pm, nullptr) == 0) {
        if (pthread_cond_init(&record->pc, nullptr) == 0)
            return record;
        pthread_mutex_destroy(&record->pm);
    }
    std::free(record);
    return nullptr;
}

template <class Record>
CS_RETCODE delete_waitable(Record *record) {
    const int condition = pthread_cond_destroy(&record->pc);
    const int mutex = pthread_mutex_destroy(&record->pm);
    std::free(record);
    return status_of(condition != 0 ? condition : mutex);
}

// The first take by a thread, once the inner mutex is locked.
CS_RETCODE own(COMN_MUTEX &mutex) {
    if (owner_of(mutex) != NO_OWNER || mutex.use_count != 0) [[unlikely]] {
        com_bomb(__FILE__, __LINE__);
        pthread_mutex_unlock(&mutex.mutex);
        return COM_TRACE(CS_FAIL);
    }
    set_owner(mutex, self());
    mutex.use_count = 1;
    return CS_SUCCEED;
}

template <int (*lock)(pthread_mutex_t *)>
CS_RETCODE take(CS_THRDRES *handle) {
    COMN_MUTEX *mutex = as_mutex(handle);
    COM_REQUIRE(alive(mutex), CS_FAIL);
    if (owner_of(*mutex) == self()) {
        COM_REQUIRE(mutex->use_count > 0, CS_FAIL);
        ++mutex->use_count;
        return CS_SUCCEED;
    }
    COM_REQUIRE(lock(&mutex->mutex) == 0, CS_FAIL);
    return own(*mutex);
}

void unlock(void *mutex) { pthread_mutex_unlock(static_cast<pthread_mutex_t *>(mutex)); }

timespec deadline_after(CS_INT millisecs) {
    constexpr long NANOSECONDS = 1'000'000'000;
    timeval now;
    gettimeofday(&now, nullptr);
    timespec deadline;
    deadline.tv_sec = now.tv_sec + millisecs / 1000;
    deadline.tv_nsec = now.tv_usec * 1000 + millisecs % 1000 * 1'000'000L;
    if (deadline.tv_nsec >= NANOSECONDS) {
        deadline.tv_nsec -= NANOSECONDS;
        ++deadline.tv_sec;
    }
    return deadline;
}

// One wait on the event's condition, as a cancellation point that cannot leave `pm` locked. Cancellation is
// off behind it, whatever it was before.
int wait_once(COMN_EVENT *event, CS_INT millisecs) {
    int result = 0;
    int old_state = 0;
    pthread_cleanup_push(unlock, &event->pm);
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &old_state);
    if (millisecs < 1) {
        result = pthread_cond_wait(&event->pc, &event->pm);
    } else {
        const timespec deadline = deadline_after(millisecs);
        result = pthread_cond_timedwait(&event->pc, &event->pm, &deadline);
    }
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &old_state);
    pthread_cleanup_pop(0);
    return result;
}

// A wait that is no cancellation point: ended there a thread would leave the mutex locked.
int wait_uncancelled(pthread_cond_t &condition, pthread_mutex_t &mutex) {
    int old_state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &old_state);
    const int result = pthread_cond_wait(&condition, &mutex);
    pthread_setcancelstate(old_state, nullptr);
    return result;
}

} // namespace

// ---- Mutexes ---------------------------------------------------------------------------------------------------

CS_RETCODE comn_create_mutex(CS_THRDRES **mutex) {
    COM_REQUIRE_PTR(mutex, CS_FAIL);
    *mutex = nullptr;
    auto *record = allocate<COMN_MUTEX>();
    if (record == nullptr)
        return COM_TRACE(CS_FAIL);
    if (pthread_mutex_init(&record->mutex, nullptr) != 0) {
        std::free(record);
        return COM_TRACE(CS_FAIL);
    }
    record->magic = COMN_MUTEX_MAGIC;
    record->owner = NO_OWNER;
    *mutex = as_handle(record);
    return CS_SUCCEED;
}

CS_RETCODE comn_delete_mutex(CS_THRDRES *handle) {
    COMN_MUTEX *mutex = as_mutex(handle);
    COM_REQUIRE(alive(mutex), CS_FAIL);
    COM_REQUIRE(mutex->use_count == 0, CS_FAIL);
    COM_REQUIRE(owner_of(*mutex) == NO_OWNER, CS_FAIL);
    COM_REQUIRE(pthread_mutex_destroy(&mutex->mutex) == 0, CS_FAIL);
    __atomic_store_n(&mutex->magic, 0, __ATOMIC_RELAXED); // a plain store into memory that goes would be left out
    std::free(mutex);
    return CS_SUCCEED;
}

CS_RETCODE comn_take_mutex(CS_THRDRES *mutex) { return take<pthread_mutex_lock>(mutex); }

// Contention is no result here: callers try only where they alone can hold the mutex.
CS_RETCODE comn_try_mutex(CS_THRDRES *mutex) { return take<pthread_mutex_trylock>(mutex); }

CS_RETCODE comn_release_mutex(CS_THRDRES *handle) {
    COMN_MUTEX *mutex = as_mutex(handle);
    COM_REQUIRE(alive(mutex), CS_FAIL);
    COM_REQUIRE(owner_of(*mutex) == self(), CS_FAIL);
    COM_REQUIRE(mutex->use_count != 0, CS_FAIL);
    if (--mutex->use_count != 0)
        return CS_SUCCEED;
    set_owner(*mutex, NO_OWNER);
    COM_REQUIRE(pthread_mutex_unlock(&mutex->mutex) == 0, CS_FAIL);
    return CS_SUCCEED;
}

CS_BOOL comn_check_mutex(CS_THRDRES *mutex) {
    COM_REQUIRE(alive(as_mutex(mutex)), CS_FALSE);
    return owner_of(*as_mutex(mutex)) == self();
}

// ---- Events ----------------------------------------------------------------------------------------------------

CS_RETCODE comn_create_event(CS_THRDRES **cond) { return comn_create_event_ex(cond, CS_TRUE); }

CS_RETCODE comn_create_event_ex(CS_THRDRES **cond, CS_BOOL autoreset) {
    COM_REQUIRE_PTR(cond, CS_FAIL);
    auto *event = create_waitable<COMN_EVENT>();
    *cond = as_handle(event);
    if (event == nullptr)
        return COM_TRACE(CS_FAIL);
    event->ar = autoreset;
    return CS_SUCCEED;
}

CS_RETCODE comn_delete_event(CS_THRDRES *cond) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    return delete_waitable(as_event(cond));
}

CS_RETCODE comn_reset_event(CS_THRDRES *cond) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    COMN_EVENT *event = as_event(cond);
    if (pthread_mutex_lock(&event->pm) != 0)
        return COM_TRACE(CS_FAIL);
    event->ev = CS_FALSE;
    return status_of(pthread_mutex_unlock(&event->pm));
}

CS_RETCODE comn_signal_event(CS_THRDRES *cond) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    COMN_EVENT *event = as_event(cond);
    if (pthread_mutex_lock(&event->pm) != 0)
        return COM_TRACE(CS_FAIL);
    event->ev = CS_TRUE;
    const int woken = event->ar ? pthread_cond_signal(&event->pc) : pthread_cond_broadcast(&event->pc);
    if (woken != 0)
        event->ev = CS_FALSE;
    const int unlocked = pthread_mutex_unlock(&event->pm);
    if (unlocked != 0)
        event->ev = CS_FALSE;
    return status_of(woken != 0 ? woken : unlocked);
}

CS_RETCODE comn_waitfor_event(CS_THRDRES *cond, CS_INT millisecs) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    COMN_EVENT *event = as_event(cond);
    if (pthread_mutex_lock(&event->pm) != 0)
        return COM_TRACE(CS_FAIL);
    while (!event->ev) {
        // The full time runs anew after a wake-up that brought no event.
        const int result = millisecs == 0 ? ETIMEDOUT : wait_once(event, millisecs);
        if (result != 0) {
            pthread_mutex_unlock(&event->pm);
            return COM_TRACE(result == ETIMEDOUT ? CS_TIMED_OUT : CS_FAIL);
        }
    }
    if (event->ar)
        event->ev = CS_FALSE;
    return status_of(pthread_mutex_unlock(&event->pm));
}

// ---- Conditions ------------------------------------------------------------------------------------------------

CS_RETCODE comn_create_cond(CS_THRDRES **cond) {
    COM_REQUIRE_PTR(cond, CS_FAIL);
    *cond = nullptr;
    auto *condition = allocate<pthread_cond_t>();
    if (condition == nullptr)
        return COM_TRACE(CS_FAIL);
    if (pthread_cond_init(condition, nullptr) != 0) {
        std::free(condition);
        return COM_TRACE(CS_FAIL);
    }
    *cond = as_handle(condition);
    return CS_SUCCEED;
}

CS_RETCODE comn_delete_cond(CS_THRDRES *cond) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    const CS_RETCODE status = status_of(pthread_cond_destroy(as_condition(cond)));
    std::free(cond);
    return status;
}

CS_RETCODE comn_broadcast_cond(CS_THRDRES *cond) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    return status_of(pthread_cond_broadcast(as_condition(cond)));
}

CS_RETCODE comn_signal_cond(CS_THRDRES *cond) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    return status_of(pthread_cond_signal(as_condition(cond)));
}

CS_RETCODE comn_wait_cond(CS_THRDRES *cond, CS_THRDRES *handle) {
    COM_REQUIRE(cond != nullptr, CS_FAIL);
    COMN_MUTEX *mutex = as_mutex(handle);
    COM_REQUIRE(alive(mutex), CS_FAIL);
    COM_REQUIRE(owner_of(*mutex) == self(), CS_FAIL);

    const unsigned depth = mutex->use_count;
    set_owner(*mutex, NO_OWNER);
    mutex->use_count = 0;
    const int result = wait_uncancelled(*as_condition(cond), mutex->mutex);
    set_owner(*mutex, self());
    mutex->use_count = depth;
    return status_of(result);
}

// ---- Semaphores ------------------------------------------------------------------------------------------------

// Callers pass a count and always get a semaphore at 0: its units come from comn_release_sem alone.
CS_RETCODE comn_create_sem(CS_THRDRES **sem, CS_INT /*count*/) {
    COM_REQUIRE_PTR(sem, CS_FAIL);
    auto *semaphore = create_waitable<COMN_SEM>();
    *sem = as_handle(semaphore);
    return semaphore != nullptr ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_RETCODE comn_delete_sem(CS_THRDRES *sem) {
    COM_REQUIRE(sem != nullptr, CS_FAIL);
    return delete_waitable(as_semaphore(sem));
}

CS_RETCODE comn_release_sem(CS_THRDRES *sem) {
    COM_REQUIRE(sem != nullptr, CS_FAIL);
    COMN_SEM *semaphore = as_semaphore(sem);
    if (pthread_mutex_lock(&semaphore->pm) != 0)
        return COM_TRACE(CS_FAIL);
    if (semaphore->ev == std::numeric_limits<CS_INT>::max()) { // one more would make it a broken one
        pthread_mutex_unlock(&semaphore->pm);
        return COM_TRACE(CS_FAIL);
    }
    ++semaphore->ev;
    const int woken = semaphore->ev == 1 ? pthread_cond_broadcast(&semaphore->pc) : 0;
    const int unlocked = pthread_mutex_unlock(&semaphore->pm);
    return status_of(woken != 0 ? woken : unlocked);
}

CS_RETCODE comn_waitfor_sem(CS_THRDRES *sem, CS_INT trywait) {
    COM_REQUIRE(sem != nullptr, CS_FAIL);
    COMN_SEM *semaphore = as_semaphore(sem);
    if (pthread_mutex_lock(&semaphore->pm) != 0)
        return COM_TRACE(CS_FAIL);
    if (semaphore->ev < 0)
        return COM_TRACE(CS_FAIL); // a broken semaphore stays locked: nobody is to use it again
    if (semaphore->ev == 0 && trywait == 1) {
        pthread_mutex_unlock(&semaphore->pm);
        return COM_TRACE(CS_FAIL);
    }
    while (semaphore->ev == 0) {
        if (wait_uncancelled(semaphore->pc, semaphore->pm) != 0) {
            pthread_mutex_unlock(&semaphore->pm);
            return COM_TRACE(CS_FAIL);
        }
    }
    --semaphore->ev;
    return status_of(pthread_mutex_unlock(&semaphore->pm));
}

// ---- Threads ---------------------------------------------------------------------------------------------------

namespace {

bool set_attributes(pthread_attr_t &attributes, CS_INT stacksize) {
    return (stacksize <= 0 || pthread_attr_setstacksize(&attributes, static_cast<std::size_t>(stacksize)) == 0) &&
           pthread_attr_setscope(&attributes, PTHREAD_SCOPE_SYSTEM) == 0 &&
           pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_JOINABLE) == 0;
}

} // namespace

CS_RETCODE comn_create_thread_no_alloc(CS_THRDID *thread, CS_THREAD_FUNC startRoutine, CS_VOID *arg,
                                       CS_INT stacksize) {
    COM_REQUIRE_PTR(thread, CS_FAIL);
    COM_REQUIRE_PTR(startRoutine, CS_FAIL);
    pthread_attr_t attributes;
    COM_REQUIRE(pthread_attr_init(&attributes) == 0, CS_FAIL);
    sigset_t callers_mask;
    bool created = set_attributes(attributes, stacksize) && comn_apply_default_sigblock(&callers_mask) == CS_SUCCEED;
    if (created) {
        created = pthread_create(thread, &attributes, startRoutine, arg) == 0;
        comn_restore_sigblock(&callers_mask);
    }
    pthread_attr_destroy(&attributes);
    COM_REQUIRE(created, CS_FAIL);
    return CS_SUCCEED;
}

CS_RETCODE comn_create_thread_ex(CS_THRDRES **threadpp, CS_THREAD_FUNC startRoutine, CS_VOID *arg, CS_INT stacksize) {
    COM_REQUIRE_PTR(threadpp, CS_FAIL);
    COM_REQUIRE_PTR(startRoutine, CS_FAIL);
    *threadpp = nullptr;
    auto *thread = allocate<pthread_t>();
    if (thread == nullptr)
        return COM_TRACE(CS_FAIL);
    const CS_RETCODE status = comn_create_thread_no_alloc(thread, startRoutine, arg, stacksize);
    if (status != CS_SUCCEED) {
        std::free(thread);
        return COM_TRACE(status);
    }
    *threadpp = as_handle(thread);
    return CS_SUCCEED;
}

CS_RETCODE comn_create_thread(CS_THRDRES **thread, CS_THREAD_FUNC startRoutine, CS_VOID *arg) {
    return comn_create_thread_ex(thread, startRoutine, arg, 0);
}

// A thread runs from its creation.
CS_RETCODE comn_start_thread(CS_THRDRES * /*thread*/) { return CS_SUCCEED; }

CS_RETCODE comn_kill_thread(CS_THRDRES *threadp) {
    COM_REQUIRE(threadp != nullptr, CS_FAIL);
    return status_of(pthread_cancel(*as_thread(threadp)));
}

CS_RETCODE comn_join_thread(CS_THRDRES *threadp) {
    COM_REQUIRE(threadp != nullptr, CS_FAIL);
    if (pthread_join(*as_thread(threadp), nullptr) != 0)
        return COM_TRACE(CS_FAIL);
    std::free(threadp);
    return CS_SUCCEED;
}

CS_RETCODE comn_detach_thread(CS_THRDRES * /*threadp*/) { return COM_TRACE(CS_FAIL); }

CS_RETCODE comn_exit_thread(CS_THRDRES * /*thread*/) { pthread_exit(nullptr); }

void comn_thread_cleanup(CS_VOID * /*handle*/) { std::abort(); }

CS_RETCODE comn_set_priority(CS_THRDRES * /*thread*/, CS_INT /*newprio*/) { return CS_SUCCEED; }

CS_RETCODE comn_signal_thread(CS_THRDRES *threadp, CS_INT sig) {
    COM_REQUIRE(threadp != nullptr, CS_FAIL);
    return status_of(pthread_kill(*as_thread(threadp), sig));
}

CS_RETCODE comn_lock_global() { return COM_TRACE(CS_FAIL); }
CS_RETCODE comn_unlock_global() { return COM_TRACE(CS_FAIL); }

CS_RETCODE comn_yield() {
    int old_state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &old_state);
    pthread_testcancel();
    sched_yield();
    pthread_setcancelstate(old_state, nullptr);
    return CS_SUCCEED;
}

CS_RETCODE comn_set_cancelstate() {
    int old_state = 0;
    return status_of(pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &old_state));
}

CS_INT comn_threadid() { return static_cast<CS_INT>(pthread_self()); }
CS_THRDID comn_thread_id() { return pthread_self(); }

CS_RETCODE comn_get_tid(CS_VOID *buffer, CS_INT buflen, CS_INT *outlen) {
    const pthread_t id = pthread_self();
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    COM_REQUIRE(buflen >= static_cast<CS_INT>(sizeof id), CS_FAIL);
    std::memcpy(buffer, &id, sizeof id);
    *outlen = sizeof id;
    return CS_SUCCEED;
}

CS_BOOL comn_thread_equal(CS_THRDID tid1, CS_THRDID tid2) { return pthread_equal(tid1, tid2) != 0; }

// ---- Keys ------------------------------------------------------------------------------------------------------

CS_RETCODE comn_create_key(CS_THRDKEY *keyp) {
    COM_REQUIRE_PTR(keyp, CS_FAIL);
    pthread_key_t key;
    if (pthread_key_create(&key, nullptr) != 0)
        return COM_TRACE(CS_FAIL);
    *keyp = static_cast<CS_THRDKEY>(key);
    return CS_SUCCEED;
}

CS_RETCODE comn_drop_key(CS_THRDKEY key) { return status_of(pthread_key_delete(static_cast<pthread_key_t>(key))); }

CS_VOID *comn_get_threaduserdata(CS_THRDKEY key) {
    return key == CS_UNUSED ? nullptr : pthread_getspecific(static_cast<pthread_key_t>(key));
}

CS_RETCODE comn_set_threaduserdata(CS_THRDKEY key, CS_VOID *dataptr) {
    return status_of(pthread_setspecific(static_cast<pthread_key_t>(key), dataptr));
}

// ---- Coroutine mode --------------------------------------------------------------------------------------------

CS_RETCODE comn_start_coroutine_mode() {
    if (Coroutine_sem != nullptr)
        return COM_TRACE(CS_FAIL);
    return comn_create_mutex(&Coroutine_sem);
}

CS_RETCODE comn_take_coroutine_control() {
    return Coroutine_sem != nullptr ? comn_take_mutex(Coroutine_sem) : CS_SUCCEED;
}

CS_RETCODE comn_release_coroutine_control() {
    return Coroutine_sem != nullptr ? comn_release_mutex(Coroutine_sem) : CS_SUCCEED;
}

CS_RETCODE comn_end_coroutine_mode() {
    if (Coroutine_sem == nullptr)
        return CS_SUCCEED;
    CS_RETCODE status = comn_release_mutex(Coroutine_sem);
    if (status == CS_SUCCEED)
        status = comn_delete_mutex(Coroutine_sem);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    Coroutine_sem = nullptr;
    return CS_SUCCEED;
}
