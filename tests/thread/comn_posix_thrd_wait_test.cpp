// Events and semaphores: who is woken, how long a wait lasts, what a cancellation and a failing call leave behind.
#include "support/assertions.h"
#include "support/cancelled_threads.h"
#include "support/failing_system.h"
#include "support/tasks.h"

#include <chrono>
#include <limits>
#include <memory>
#include <vector>

#include <sys/time.h>

namespace {

using namespace std::chrono_literals;
using support::eventually;
using support::FailingSystem;
using support::last_deadline;
using support::ReturningAssertions;
using support::Runner;
using support::sleeps;
using support::timed_waits;

constexpr CS_INT WITHOUT_LIMIT = -9999;
constexpr CS_INT LONG = 30'000; // milliseconds; no test waits that long

template <class Record>
class Handle {
public:
    explicit Handle(CS_BOOL autoreset) { EXPECT_EQ(comn_create_event_ex(&handle_, autoreset), CS_SUCCEED); }
    Handle() { EXPECT_EQ(comn_create_sem(&handle_, 5), CS_SUCCEED); }
    ~Handle() {
        if constexpr (std::is_same_v<Record, COMN_EVENT>)
            EXPECT_EQ(comn_delete_event(handle_), CS_SUCCEED);
        else
            EXPECT_EQ(comn_delete_sem(handle_), CS_SUCCEED);
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    operator CS_THRDRES *() const { return handle_; }
    Record *operator->() const { return reinterpret_cast<Record *>(handle_); }

    // Read as anybody else may be at it.
    CS_INT value() const {
        pthread_mutex_lock(&(*this)->pm);
        const CS_INT value = (*this)->ev;
        pthread_mutex_unlock(&(*this)->pm);
        return value;
    }
    bool left_unlocked() const {
        if (pthread_mutex_trylock(&(*this)->pm) != 0)
            return false;
        pthread_mutex_unlock(&(*this)->pm);
        return true;
    }

private:
    CS_THRDRES *handle_ = nullptr;
};

using Event = Handle<COMN_EVENT>;
using Semaphore = Handle<COMN_SEM>;

int cancel_state() {
    int state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
    pthread_setcancelstate(state, nullptr);
    return state;
}

// ---- Events ----------------------------------------------------------------------------------------------------

TEST(Event, StartsUnset) {
    CS_THRDRES *handle = nullptr;
    ASSERT_EQ(comn_create_event(&handle), CS_SUCCEED);
    const auto *record = reinterpret_cast<COMN_EVENT *>(handle);
    EXPECT_EQ(record->ar, CS_TRUE); // comn_create_event makes auto-reset ones
    EXPECT_EQ(record->ev, CS_FALSE);
    EXPECT_EQ(comn_delete_event(handle), CS_SUCCEED);
    const Event manual(CS_FALSE);
    EXPECT_EQ(manual->ar, CS_FALSE);
    EXPECT_EQ(manual->ev, CS_FALSE);
}

TEST(Event, PollOfAnUnsetOneTimesOutAtOnce) {
    const Event event(CS_TRUE);
    EXPECT_EQ(comn_waitfor_event(event, 0), CS_TIMED_OUT);
    EXPECT_EQ(CS_TIMED_OUT, -208);
    EXPECT_TRUE(event.left_unlocked());
}

TEST(Event, AutoResetSignalledTwiceLetsOneWaiterThroughOnce) {
    const Event event(CS_TRUE);
    EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
    EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
    EXPECT_EQ(comn_waitfor_event(event, 0), CS_SUCCEED);
    EXPECT_EQ(event->ev, CS_FALSE);
    EXPECT_EQ(comn_waitfor_event(event, 0), CS_TIMED_OUT);
}

TEST(Event, ManualStaysSetForAllUntilReset) {
    const Event event(CS_FALSE);
    EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
    for (const CS_INT millisecs : {0, 1, WITHOUT_LIMIT})
        EXPECT_EQ(comn_waitfor_event(event, millisecs), CS_SUCCEED);
    EXPECT_EQ(event->ev, CS_TRUE);
    EXPECT_EQ(comn_reset_event(event), CS_SUCCEED);
    EXPECT_EQ(event->ev, CS_FALSE);
    EXPECT_EQ(comn_waitfor_event(event, 0), CS_TIMED_OUT);
}

TEST(Event, ResetTakesTheSignalOfAnAutoResetOneBack) {
    const Event event(CS_TRUE);
    comn_signal_event(event);
    EXPECT_EQ(comn_reset_event(event), CS_SUCCEED);
    EXPECT_EQ(comn_waitfor_event(event, 0), CS_TIMED_OUT);
    EXPECT_EQ(comn_reset_event(event), CS_SUCCEED); // and once more does no harm
}

TEST(Event, ManualWakesAllWaiters) {
    const Event event(CS_FALSE);
    std::atomic<int> through = 0;
    std::vector<std::unique_ptr<Runner>> waiters;
    for (int i = 0; i < 4; ++i)
        waiters.push_back(std::make_unique<Runner>([&, i] {
            EXPECT_EQ(comn_waitfor_event(event, i % 2 == 0 ? WITHOUT_LIMIT : LONG), CS_SUCCEED);
            ++through;
        }));
    for (const auto &waiter : waiters)
        EXPECT_TRUE(sleeps(waiter->id()));
    EXPECT_EQ(through, 0);
    EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
    waiters.clear();
    EXPECT_EQ(through, 4);
}

TEST(Event, AutoResetWakesOneWaiterForEachSignal) {
    const Event event(CS_TRUE);
    std::atomic<int> through = 0;
    std::vector<std::unique_ptr<Runner>> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.push_back(std::make_unique<Runner>([&] {
            EXPECT_EQ(comn_waitfor_event(event, WITHOUT_LIMIT), CS_SUCCEED);
            ++through;
        }));
    for (const auto &waiter : waiters)
        EXPECT_TRUE(sleeps(waiter->id()));
    for (int signals = 1; signals <= 3; ++signals) {
        EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
        EXPECT_TRUE(eventually([&] { return through == signals; }));
        EXPECT_EQ(event.value(), CS_FALSE);
        EXPECT_EQ(through, signals);
    }
}

TEST(Event, HandsEverySignalFromThreadToThread) {
    const Event ping(CS_TRUE);
    const Event pong(CS_TRUE);
    constexpr int ROUNDS = 2000;
    int ball = 0; // safe only if the events order its readers and writers
    Runner other([&] {
        for (int i = 0; i < ROUNDS; ++i) {
            ASSERT_EQ(comn_waitfor_event(ping, WITHOUT_LIMIT), CS_SUCCEED);
            ++ball;
            ASSERT_EQ(comn_signal_event(pong), CS_SUCCEED);
        }
    });
    for (int i = 0; i < ROUNDS; ++i) {
        ASSERT_EQ(comn_signal_event(ping), CS_SUCCEED);
        ASSERT_EQ(comn_waitfor_event(pong, LONG), CS_SUCCEED);
        ASSERT_EQ(ball, i + 1);
    }
}

// The time that the deadlines of waits are told in.
std::chrono::microseconds time_of_day() {
    timeval now;
    gettimeofday(&now, nullptr);
    return std::chrono::seconds(now.tv_sec) + std::chrono::microseconds(now.tv_usec);
}

TEST(Event, TimedWaitLastsItsTime) {
    const Event event(CS_TRUE);
    for (const CS_INT millisecs : {1, 7, 30}) {
        const auto start = time_of_day();
        EXPECT_EQ(comn_waitfor_event(event, millisecs), CS_TIMED_OUT);
        EXPECT_GE(time_of_day() - start, std::chrono::milliseconds(millisecs));
        EXPECT_TRUE(event.left_unlocked());
    }
}

// Deadlines whose milliseconds run over into the seconds, and the longest time there is: a time that the system
// finds malformed would end the wait.
TEST(Event, TimedWaitTakesAnyTime) {
    for (const CS_INT millisecs : {999, 1000, 1999, 86'400'001, std::numeric_limits<CS_INT>::max()}) {
        const Event event(CS_TRUE);
        const int waits = timed_waits;
        const auto earliest = time_of_day();
        Runner waiter([&] { EXPECT_EQ(comn_waitfor_event(event, millisecs), CS_SUCCEED); });
        EXPECT_TRUE(eventually([&] { return timed_waits > waits; }));
        const auto latest = time_of_day();
        EXPECT_GE(last_deadline.load(), earliest + std::chrono::milliseconds(millisecs));
        EXPECT_LE(last_deadline.load(), latest + std::chrono::milliseconds(millisecs));
        EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
    }
}

// Any negative time, not only the usual one, waits without limit.
TEST(Event, NegativeTimeWaitsWithoutLimit) {
    for (const CS_INT millisecs : {-1, -9999, std::numeric_limits<CS_INT>::min()}) {
        const Event event(CS_TRUE);
        Runner waiter([&] { EXPECT_EQ(comn_waitfor_event(event, millisecs), CS_SUCCEED); });
        EXPECT_TRUE(sleeps(waiter.id()));
        EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
    }
}

// Each wake-up that brings no event starts the whole time anew.
TEST(Event, TimedDeadlineStartsAnewAfterAWakeUp) {
    constexpr std::chrono::milliseconds TIME(LONG);
    const Event event(CS_TRUE);
    const int waits = timed_waits;
    Runner waiter([&] { EXPECT_EQ(comn_waitfor_event(event, LONG), CS_SUCCEED); });
    EXPECT_TRUE(eventually([&] { return timed_waits > waits; }));
    std::this_thread::sleep_for(1ms);

    pthread_mutex_lock(&event->pm); // which the waiter has until it waits
    const int waits_before = timed_waits;
    const auto first = last_deadline.load();
    const auto woken = time_of_day();
    pthread_cond_broadcast(&event->pc);
    pthread_mutex_unlock(&event->pm);
    EXPECT_TRUE(eventually([&] { return timed_waits > waits_before; }));
    EXPECT_LT(first, woken + TIME);
    EXPECT_GE(last_deadline.load(), woken + TIME);
    EXPECT_EQ(comn_signal_event(event), CS_SUCCEED);
}

TEST(Event, AWakeUpWithoutTheEventGoesOnWaiting) {
    const Event event(CS_TRUE);
    std::atomic<bool> through = false;
    Runner waiter([&] {
        EXPECT_EQ(comn_waitfor_event(event, WITHOUT_LIMIT), CS_SUCCEED);
        through = true;
    });
    EXPECT_TRUE(sleeps(waiter.id()));
    pthread_cond_broadcast(&event->pc);
    EXPECT_TRUE(sleeps(waiter.id()));
    EXPECT_FALSE(through);
    comn_signal_event(event);
    waiter.join();
    EXPECT_TRUE(through);
}

TEST(Event, AWaitedEventLeavesCancellationDisabled) {
    for (const CS_INT millisecs : {1, LONG, WITHOUT_LIMIT}) {
        const Event event(CS_TRUE);
        Runner waiter([&] {
            EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_ENABLE);
            comn_waitfor_event(event, millisecs);
            EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_DISABLE);
        });
        if (millisecs != 1) { // which runs out by itself
            EXPECT_TRUE(sleeps(waiter.id()));
            comn_signal_event(event);
        }
    }
}

TEST(Event, CancellationStaysAsItIsWhereNothingIsWaitedFor) {
    const Event event(CS_FALSE);
    std::thread([&] {
        EXPECT_EQ(comn_waitfor_event(event, 0), CS_TIMED_OUT);
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_ENABLE);
        comn_signal_event(event);
        EXPECT_EQ(comn_waitfor_event(event, WITHOUT_LIMIT), CS_SUCCEED);
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_ENABLE);
    }).join();
}

struct CancelledWait {
    CS_THRDRES *event;
    CS_INT millisecs;
    std::atomic<pid_t> id;
    std::atomic<bool> came_back;
};

CS_VOID *wait_to_be_cancelled(CS_VOID *argument) {
    auto *wait = static_cast<CancelledWait *>(argument);
    comn_set_cancelstate(); // off everywhere but in the wait
    wait->id = gettid();
    comn_waitfor_event(wait->event, wait->millisecs);
    wait->came_back = true;
    return nullptr;
}

TEST(Event, CancellationInTheWaitLeavesItUnlocked) {
    for (const CS_INT millisecs : {LONG, WITHOUT_LIMIT}) {
        const Event event(CS_TRUE);
        CancelledWait wait = {event, millisecs, 0, false};
        CS_THRDRES *thread = nullptr;
        ASSERT_EQ(comn_create_thread(&thread, wait_to_be_cancelled, &wait), CS_SUCCEED);
        EXPECT_TRUE(eventually([&] { return wait.id != 0; }));
        EXPECT_TRUE(sleeps(wait.id));
        EXPECT_EQ(comn_kill_thread(thread), CS_SUCCEED);
        EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
        EXPECT_FALSE(wait.came_back);
        EXPECT_TRUE(event.left_unlocked());
        comn_signal_event(event);
        EXPECT_EQ(comn_waitfor_event(event, 0), CS_SUCCEED); // and in working order
    }
}

TEST(Event, AWakeOrAnUnlockThatFailsTakesTheSignalBack) {
    const Event automatic(CS_TRUE);
    const Event manual(CS_FALSE);
    {
        const FailingSystem failing("pthread_cond_signal");
        EXPECT_EQ(comn_signal_event(automatic), CS_FAIL);
        EXPECT_EQ(comn_signal_event(manual), CS_SUCCEED); // wakes by the other call
    }
    EXPECT_EQ(automatic->ev, CS_FALSE);
    EXPECT_TRUE(automatic.left_unlocked());
    comn_reset_event(manual);
    {
        const FailingSystem failing("pthread_cond_broadcast");
        EXPECT_EQ(comn_signal_event(manual), CS_FAIL);
    }
    EXPECT_EQ(manual->ev, CS_FALSE);
    EXPECT_TRUE(manual.left_unlocked());
    {
        const FailingSystem failing("pthread_mutex_unlock");
        EXPECT_EQ(comn_signal_event(manual), CS_FAIL);
    }
    EXPECT_EQ(manual->ev, CS_FALSE);
    pthread_mutex_unlock(&manual->pm);
}

TEST(Event, AFailingWaitFailsUnlocked) {
    const Event event(CS_TRUE);
    {
        const FailingSystem failing("pthread_cond_wait");
        EXPECT_EQ(comn_waitfor_event(event, WITHOUT_LIMIT), CS_FAIL);
    }
    EXPECT_TRUE(event.left_unlocked());
    {
        const FailingSystem failing("pthread_cond_timedwait");
        EXPECT_EQ(comn_waitfor_event(event, 1), CS_FAIL);
    }
    EXPECT_TRUE(event.left_unlocked());
    comn_signal_event(event);
    {
        const FailingSystem failing("pthread_mutex_unlock");
        EXPECT_EQ(comn_waitfor_event(event, 1), CS_FAIL);
    }
    pthread_mutex_unlock(&event->pm);
    {
        const FailingSystem failing("pthread_mutex_unlock");
        EXPECT_EQ(comn_reset_event(event), CS_FAIL);
    }
    pthread_mutex_unlock(&event->pm);
}

TEST(Event, AFailingLockFails) {
    const Event event(CS_TRUE);
    const FailingSystem failing("pthread_mutex_lock");
    EXPECT_EQ(comn_signal_event(event), CS_FAIL);
    EXPECT_EQ(comn_reset_event(event), CS_FAIL);
    EXPECT_EQ(comn_waitfor_event(event, 0), CS_FAIL);
    EXPECT_EQ(event->ev, CS_FALSE);
}

TEST(EventDeathTest, NullHandlesAreAssertions) {
    EXPECT_NULL_REPORT(comn_create_event(nullptr), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_create_event_ex(nullptr, CS_TRUE), "comn_posix_thrd");
    EXPECT_BOMB(comn_delete_event(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_reset_event(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_signal_event(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_waitfor_event(nullptr, 0), "comn_posix_thrd");
}

TEST(Event, NullHandlesFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    EXPECT_EQ(comn_create_event(nullptr), CS_FAIL);
    EXPECT_EQ(comn_create_event_ex(nullptr, CS_TRUE), CS_FAIL);
    EXPECT_EQ(comn_delete_event(nullptr), CS_FAIL);
    EXPECT_EQ(comn_reset_event(nullptr), CS_FAIL);
    EXPECT_EQ(comn_signal_event(nullptr), CS_FAIL);
    EXPECT_EQ(comn_waitfor_event(nullptr, 0), CS_FAIL);
    EXPECT_EQ(returning.count(), 6);
}

// ---- Semaphores ------------------------------------------------------------------------------------------------

TEST(Semaphore, StartsAtZeroWhateverCountIsGiven) {
    for (const CS_INT count : {-1, 0, 1, 5}) {
        CS_THRDRES *sem = nullptr;
        ASSERT_EQ(comn_create_sem(&sem, count), CS_SUCCEED);
        EXPECT_EQ(reinterpret_cast<COMN_SEM *>(sem)->ev, 0);
        EXPECT_EQ(comn_waitfor_sem(sem, 1), CS_FAIL);
        EXPECT_EQ(comn_delete_sem(sem), CS_SUCCEED);
    }
}

TEST(Semaphore, HandsOutTheUnitsThatWereReleased) {
    const Semaphore sem;
    for (CS_INT units = 1; units <= 3; ++units) {
        EXPECT_EQ(comn_release_sem(sem), CS_SUCCEED);
        EXPECT_EQ(sem->ev, units);
    }
    EXPECT_EQ(comn_waitfor_sem(sem, 1), CS_SUCCEED);
    EXPECT_EQ(comn_waitfor_sem(sem, 0), CS_SUCCEED);
    EXPECT_EQ(comn_waitfor_sem(sem, 2), CS_SUCCEED);
    EXPECT_EQ(sem->ev, 0);
    EXPECT_EQ(comn_waitfor_sem(sem, 1), CS_FAIL);
    EXPECT_TRUE(sem.left_unlocked());
}

// Only the value 1 tries; any other waits.
TEST(Semaphore, WaitsUntilAUnitComes) {
    for (const CS_INT trywait : {0, 2, -1}) {
        const Semaphore sem;
        Runner waiter([&] { EXPECT_EQ(comn_waitfor_sem(sem, trywait), CS_SUCCEED); });
        EXPECT_TRUE(sleeps(waiter.id()));
        EXPECT_EQ(comn_release_sem(sem), CS_SUCCEED);
        waiter.join();
        EXPECT_EQ(sem->ev, 0);
    }
}

TEST(Semaphore, EachUnitLetsOneWaiterThrough) {
    const Semaphore sem;
    std::atomic<int> through = 0;
    std::vector<std::unique_ptr<Runner>> waiters;
    for (int i = 0; i < 4; ++i)
        waiters.push_back(std::make_unique<Runner>([&] {
            EXPECT_EQ(comn_waitfor_sem(sem, 0), CS_SUCCEED);
            ++through;
        }));
    for (const auto &waiter : waiters)
        EXPECT_TRUE(sleeps(waiter->id()));
    comn_release_sem(sem);
    EXPECT_TRUE(eventually([&] { return through == 1; }));
    EXPECT_EQ(sem.value(), 0);
    for (int i = 0; i < 3; ++i) // faster than those woken by the step from 0 to 1 can take
        comn_release_sem(sem);
    waiters.clear();
    EXPECT_EQ(through, 4);
    EXPECT_EQ(sem->ev, 0);
}

TEST(Semaphore, ProducersAndConsumersLoseNothing) {
    const Semaphore sem;
    constexpr int EACH = 3000;
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < EACH; ++i)
                ASSERT_EQ(comn_release_sem(sem), CS_SUCCEED);
        });
        threads.emplace_back([&] {
            for (int i = 0; i < EACH; ++i)
                ASSERT_EQ(comn_waitfor_sem(sem, 0), CS_SUCCEED);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(sem->ev, 0);
}

TEST(Semaphore, ANegativeOneFailsAndIsLeftLocked) {
    for (const CS_INT trywait : {0, 1}) {
        const Semaphore sem;
        sem->ev = -1;
        EXPECT_EQ(comn_waitfor_sem(sem, trywait), CS_FAIL);
        EXPECT_EQ(sem->ev, -1);
        EXPECT_EQ(pthread_mutex_trylock(&sem->pm), EBUSY);
        pthread_mutex_unlock(&sem->pm);
    }
}

TEST(Semaphore, ReleaseWakesOnTheStepFromZeroToOneAlone) {
    const Semaphore sem;
    const FailingSystem failing("pthread_cond_broadcast"); // so that a wake shows
    sem->ev = -1;
    EXPECT_EQ(comn_release_sem(sem), CS_SUCCEED);
    EXPECT_EQ(sem->ev, 0);
    EXPECT_EQ(comn_release_sem(sem), CS_FAIL);
    EXPECT_EQ(sem->ev, 1); // the unit stays
    EXPECT_EQ(comn_release_sem(sem), CS_SUCCEED);
    EXPECT_EQ(sem->ev, 2);
    EXPECT_TRUE(sem.left_unlocked());
}

// One more would make it a broken one.
TEST(Semaphore, ReleaseBeyondTheHighestCountFails) {
    const Semaphore sem;
    constexpr CS_INT MOST = std::numeric_limits<CS_INT>::max();
    sem->ev = MOST - 1;
    EXPECT_EQ(comn_release_sem(sem), CS_SUCCEED);
    EXPECT_EQ(comn_release_sem(sem), CS_FAIL);
    EXPECT_EQ(sem->ev, MOST);
    EXPECT_EQ(comn_waitfor_sem(sem, 1), CS_SUCCEED); // and in working order
    EXPECT_EQ(sem->ev, MOST - 1);
}

// A cancellation there would leave it locked for good.
TEST(Semaphore, WaitIsNoCancellationPoint) {
    const Semaphore sem;
    std::atomic<bool> came_back = false;
    Runner waiter([&] {
        comn_waitfor_sem(sem, 0);
        came_back = true;
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_ENABLE); // as it was
    });
    EXPECT_TRUE(sleeps(waiter.id()));
    EXPECT_EQ(pthread_cancel(waiter.handle()), 0);
    comn_release_sem(sem);
    waiter.join();
    EXPECT_TRUE(came_back);
}

TEST(Semaphore, AFailingCallFails) {
    const Semaphore sem;
    {
        const FailingSystem failing("pthread_cond_wait");
        EXPECT_EQ(comn_waitfor_sem(sem, 0), CS_FAIL);
    }
    EXPECT_TRUE(sem.left_unlocked());
    EXPECT_EQ(sem->ev, 0);
    {
        const FailingSystem failing("pthread_mutex_unlock");
        EXPECT_EQ(comn_release_sem(sem), CS_FAIL);
    }
    pthread_mutex_unlock(&sem->pm);
    {
        const FailingSystem failing("pthread_mutex_unlock");
        EXPECT_EQ(comn_waitfor_sem(sem, 0), CS_FAIL);
    }
    pthread_mutex_unlock(&sem->pm);
    const FailingSystem failing("pthread_mutex_lock");
    EXPECT_EQ(comn_release_sem(sem), CS_FAIL);
    EXPECT_EQ(comn_waitfor_sem(sem, 1), CS_FAIL);
}

TEST(SemaphoreDeathTest, NullHandlesAreAssertions) {
    EXPECT_NULL_REPORT(comn_create_sem(nullptr, 0), "comn_posix_thrd");
    EXPECT_BOMB(comn_delete_sem(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_release_sem(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_waitfor_sem(nullptr, 1), "comn_posix_thrd");
}

TEST(Semaphore, NullHandlesFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    EXPECT_EQ(comn_create_sem(nullptr, 0), CS_FAIL);
    EXPECT_EQ(comn_delete_sem(nullptr), CS_FAIL);
    EXPECT_EQ(comn_release_sem(nullptr), CS_FAIL);
    EXPECT_EQ(comn_waitfor_sem(nullptr, 1), CS_FAIL);
    EXPECT_EQ(returning.count(), 4);
}

// ---- Creation where the system refuses -------------------------------------------------------------------------

struct Refusal {
    const char *function;
    CS_RETCODE (*create)(CS_THRDRES **handle);
};

class CreateRefused : public testing::TestWithParam<Refusal> {};

TEST_P(CreateRefused, FailsAndAnswersNull) {
    const FailingSystem failing(GetParam().function);
    int something = 0;
    auto *handle = reinterpret_cast<CS_THRDRES *>(&something);
    EXPECT_EQ(GetParam().create(&handle), CS_FAIL);
    EXPECT_EQ(handle, nullptr);
}

CS_RETCODE create_sem(CS_THRDRES **sem) { return comn_create_sem(sem, 5); }

constexpr Refusal REFUSALS[] = {
    {"pthread_mutex_init", comn_create_mutex}, {"pthread_mutex_init", comn_create_event},
    {"pthread_cond_init", comn_create_event},  {"pthread_mutex_init", create_sem},
    {"pthread_cond_init", create_sem},         {"pthread_cond_init", comn_create_cond},
};
INSTANTIATE_TEST_SUITE_P(Calls, CreateRefused, testing::ValuesIn(REFUSALS));

} // namespace
