// Mutexes, conditions, the coroutine mode and the table of callbacks: who may take and give back, to which
// depth, and what a broken contract does in both modes of an assertion.
#include "support/assertions.h"
#include "support/cancelled_threads.h"
#include "support/failing_allocator.h"
#include "support/failing_system.h"
#include "support/tasks.h"

#include <atomic>
#include <thread>
#include <vector>

namespace {

using support::eventually;
using support::FailingAllocator;
using support::FailingSystem;
using support::ReturningAssertions;
using support::Runner;
using support::sleeps;

constexpr pthread_t NOBODY = ~pthread_t{0};

COMN_MUTEX *record_of(CS_THRDRES *mutex) { return reinterpret_cast<COMN_MUTEX *>(mutex); }

class Mutex {
public:
    Mutex() { EXPECT_EQ(comn_create_mutex(&handle_), CS_SUCCEED); }
    ~Mutex() { EXPECT_EQ(comn_delete_mutex(handle_), CS_SUCCEED); }
    Mutex(const Mutex &) = delete;
    Mutex &operator=(const Mutex &) = delete;
    operator CS_THRDRES *() const { return handle_; }
    COMN_MUTEX *operator->() const { return record_of(handle_); }

private:
    CS_THRDRES *handle_ = nullptr;
};

class Condition {
public:
    Condition() { EXPECT_EQ(comn_create_cond(&handle_), CS_SUCCEED); }
    ~Condition() { EXPECT_EQ(comn_delete_cond(handle_), CS_SUCCEED); }
    Condition(const Condition &) = delete;
    Condition &operator=(const Condition &) = delete;
    operator CS_THRDRES *() const { return handle_; }

private:
    CS_THRDRES *handle_ = nullptr;
};

template <class Code>
void on_another_thread(Code code) {
    std::thread(code).join();
}

// ---- Mutexes ---------------------------------------------------------------------------------------------------

TEST(Mutex, CreatedFreeWithTheSystemsMutexUntouched) {
    const Mutex mutex;
    EXPECT_EQ(mutex->magic, 0xDEADBABEu);
    EXPECT_EQ(mutex->owner, NOBODY);
    EXPECT_EQ(mutex->use_count, 0u);
    EXPECT_EQ(pthread_mutex_trylock(&mutex->mutex), 0);
    EXPECT_EQ(pthread_mutex_trylock(&mutex->mutex), EBUSY); // of the default kind, not a recursive one
    EXPECT_EQ(pthread_mutex_unlock(&mutex->mutex), 0);
}

TEST(Mutex, RecordHasItsFieldsInOrder) {
    EXPECT_EQ(offsetof(COMN_MUTEX, owner), 0u);
    EXPECT_EQ(offsetof(COMN_MUTEX, mutex), sizeof(pthread_t));
    EXPECT_EQ(offsetof(COMN_MUTEX, magic), sizeof(pthread_t) + sizeof(pthread_mutex_t));
    EXPECT_EQ(offsetof(COMN_MUTEX, use_count), offsetof(COMN_MUTEX, magic) + sizeof(unsigned));
}

TEST(Mutex, EachTakeNeedsItsRelease) {
    const Mutex mutex;
    for (unsigned depth = 1; depth <= 5; ++depth) {
        EXPECT_EQ(comn_take_mutex(mutex), CS_SUCCEED);
        EXPECT_EQ(mutex->use_count, depth);
        EXPECT_EQ(mutex->owner, pthread_self());
    }
    for (unsigned depth = 5; depth-- > 0;) {
        EXPECT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
        EXPECT_EQ(mutex->use_count, depth);
        EXPECT_EQ(mutex->owner, depth == 0 ? NOBODY : pthread_self());
    }
    EXPECT_EQ(pthread_mutex_trylock(&mutex->mutex), 0); // the system's mutex is free again
    EXPECT_EQ(pthread_mutex_unlock(&mutex->mutex), 0);
}

TEST(Mutex, TryTakesLikeTakeWhereNobodyElseHolds) {
    const Mutex mutex;
    EXPECT_EQ(comn_try_mutex(mutex), CS_SUCCEED);
    EXPECT_EQ(mutex->owner, pthread_self());
    EXPECT_EQ(comn_try_mutex(mutex), CS_SUCCEED);
    EXPECT_EQ(comn_take_mutex(mutex), CS_SUCCEED);
    EXPECT_EQ(mutex->use_count, 3u);
    for (int depth = 0; depth < 3; ++depth)
        EXPECT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
}

TEST(Mutex, CheckTellsWhetherTheCallerOwnsIt) {
    const Mutex mutex;
    EXPECT_EQ(comn_check_mutex(mutex), CS_FALSE);
    comn_take_mutex(mutex);
    EXPECT_EQ(comn_check_mutex(mutex), CS_TRUE);
    on_another_thread([&] { EXPECT_EQ(comn_check_mutex(mutex), CS_FALSE); });
    comn_release_mutex(mutex);
    EXPECT_EQ(comn_check_mutex(mutex), CS_FALSE);
}

TEST(Mutex, TakenTwiceAndReleasedOnceKeepsOthersOut) {
    const Mutex mutex;
    std::atomic<bool> entered = false;
    comn_take_mutex(mutex);
    comn_take_mutex(mutex);
    Runner other([&] {
        EXPECT_EQ(comn_take_mutex(mutex), CS_SUCCEED);
        entered = true;
        EXPECT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
    });
    EXPECT_TRUE(sleeps(other.id()));
    comn_release_mutex(mutex);
    EXPECT_TRUE(sleeps(other.id()));
    EXPECT_FALSE(entered);
    EXPECT_EQ(mutex->owner, pthread_self());
    comn_release_mutex(mutex);
    other.join();
    EXPECT_TRUE(entered);
    EXPECT_EQ(mutex->owner, NOBODY);
}

TEST(Mutex, KeepsThreadsApartAtMixedDepths) {
    const Mutex mutex;
    long plain = 0; // only safe if the mutex works
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 5000; ++i) {
                const int depth = 1 + (i + t) % 3;
                for (int d = 0; d < depth; ++d)
                    ASSERT_EQ(comn_take_mutex(mutex), CS_SUCCEED);
                ++plain;
                ASSERT_EQ(mutex->use_count, static_cast<unsigned>(depth));
                for (int d = 0; d < depth; ++d)
                    ASSERT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(plain, 4 * 5000);
    EXPECT_EQ(mutex->use_count, 0u);
}

TEST(Mutex, DeleteClearsTheMagicBeforeTheMemoryGoes) {
    COMN_MUTEX image = {};
    FailingAllocator allocator;
    CS_THRDRES *mutex = nullptr;
    comn_create_mutex(&mutex);
    allocator.watch(mutex, &image, sizeof image);
    EXPECT_EQ(comn_delete_mutex(mutex), CS_SUCCEED);
    EXPECT_EQ(image.magic, 0u);
    EXPECT_EQ(image.owner, NOBODY); // the rest shows that the image was taken
    EXPECT_EQ(allocator.held(), 0);
}

// A mutex that nobody made or that is gone.
struct BadMutexes {
    COMN_MUTEX deleted = {};
    CS_THRDRES *stale() { return reinterpret_cast<CS_THRDRES *>(&deleted); }
    BadMutexes() { deleted.owner = NOBODY; }
};

TEST(MutexDeathTest, NullAndDeletedHandlesAreAssertions) {
    BadMutexes bad;
    const Condition condition;
    for (CS_THRDRES *mutex : {static_cast<CS_THRDRES *>(nullptr), bad.stale()}) {
        EXPECT_BOMB(comn_take_mutex(mutex), "comn_posix_thrd");
        EXPECT_BOMB(comn_try_mutex(mutex), "comn_posix_thrd");
        EXPECT_BOMB(comn_release_mutex(mutex), "comn_posix_thrd");
        EXPECT_BOMB(comn_delete_mutex(mutex), "comn_posix_thrd");
        EXPECT_BOMB(comn_check_mutex(mutex), "comn_posix_thrd");
        EXPECT_BOMB(comn_wait_cond(condition, mutex), "comn_posix_thrd");
    }
    EXPECT_NULL_REPORT(comn_create_mutex(nullptr), "comn_posix_thrd");
}

TEST(Mutex, NullAndDeletedHandlesFailWhereAssertionsReturn) {
    BadMutexes bad;
    const Condition condition;
    for (CS_THRDRES *mutex : {static_cast<CS_THRDRES *>(nullptr), bad.stale()}) {
        const ReturningAssertions returning;
        EXPECT_EQ(comn_take_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_try_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_release_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_delete_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_check_mutex(mutex), CS_FALSE);
        EXPECT_EQ(comn_wait_cond(condition, mutex), CS_FAIL);
        EXPECT_EQ(returning.count(), 6);
    }
    EXPECT_EQ(bad.deleted.use_count, 0u);
    EXPECT_EQ(bad.deleted.owner, NOBODY);
    const ReturningAssertions returning;
    EXPECT_EQ(comn_create_mutex(nullptr), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
}

TEST(MutexDeathTest, ReleaseByAnotherThreadIsAnAssertion) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    EXPECT_BOMB(on_another_thread([&] { comn_release_mutex(mutex); }), "comn_posix_thrd");
    comn_release_mutex(mutex);
}

TEST(Mutex, ReleaseByAnotherThreadFailsWhereAssertionsReturn) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    {
        const ReturningAssertions returning;
        on_another_thread([&] { EXPECT_EQ(comn_release_mutex(mutex), CS_FAIL); });
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_EQ(mutex->owner, pthread_self());
    EXPECT_EQ(mutex->use_count, 1u);
    EXPECT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
}

TEST(MutexDeathTest, ReleaseOfAFreeMutexIsAnAssertion) {
    const Mutex mutex;
    EXPECT_BOMB(comn_release_mutex(mutex), "comn_posix_thrd");
}

TEST(Mutex, ReleaseOfAFreeMutexFailsWhereAssertionsReturn) {
    const Mutex mutex;
    const ReturningAssertions returning;
    EXPECT_EQ(comn_release_mutex(mutex), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_EQ(mutex->use_count, 0u);
}

// The depth of an owned mutex that somebody wrote over.
TEST(MutexDeathTest, ADepthOfZeroUnderAnOwnerIsAnAssertion) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    mutex->use_count = 0;
    EXPECT_BOMB(comn_take_mutex(mutex), "comn_posix_thrd");
    EXPECT_BOMB(comn_try_mutex(mutex), "comn_posix_thrd");
    EXPECT_BOMB(comn_release_mutex(mutex), "comn_posix_thrd");
    EXPECT_BOMB(comn_delete_mutex(mutex), "comn_posix_thrd"); // an owner is present
    mutex->use_count = 1;
    comn_release_mutex(mutex);
}

TEST(Mutex, ADepthOfZeroUnderAnOwnerFailsWhereAssertionsReturn) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    mutex->use_count = 0;
    {
        const ReturningAssertions returning;
        EXPECT_EQ(comn_take_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_try_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_release_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_delete_mutex(mutex), CS_FAIL);
        EXPECT_EQ(returning.count(), 4);
    }
    EXPECT_EQ(mutex->use_count, 0u);
    mutex->use_count = 1;
    comn_release_mutex(mutex);
}

TEST(MutexDeathTest, AnOwnerOrADepthBehindTheLockIsAnAssertion) {
    const Mutex mutex;
    mutex->owner = pthread_self() + 1;
    EXPECT_BOMB(comn_take_mutex(mutex), "comn_posix_thrd");
    mutex->owner = NOBODY;
    mutex->use_count = 1;
    EXPECT_BOMB(comn_take_mutex(mutex), "comn_posix_thrd");
    EXPECT_BOMB(comn_try_mutex(mutex), "comn_posix_thrd");
    mutex->use_count = 0;
}

TEST(Mutex, AnOwnerOrADepthBehindTheLockFailsUnlockedWhereAssertionsReturn) {
    const Mutex mutex;
    for (const unsigned depth : {0u, 1u}) {
        const pthread_t owner = depth == 0 ? pthread_self() + 1 : NOBODY;
        mutex->owner = owner;
        mutex->use_count = depth;
        const ReturningAssertions returning;
        EXPECT_EQ(comn_take_mutex(mutex), CS_FAIL);
        EXPECT_EQ(comn_try_mutex(mutex), CS_FAIL);
        EXPECT_EQ(returning.count(), 2);
        EXPECT_EQ(mutex->owner, owner);
        EXPECT_EQ(mutex->use_count, depth);
        mutex->owner = NOBODY;
        mutex->use_count = 0;
    }
    EXPECT_EQ(comn_take_mutex(mutex), CS_SUCCEED); // nothing was left locked
    comn_release_mutex(mutex);
}

TEST(MutexDeathTest, DeleteOfAHeldMutexIsAnAssertion) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    EXPECT_BOMB(comn_delete_mutex(mutex), "comn_posix_thrd");
    comn_release_mutex(mutex);
}

TEST(Mutex, DeleteOfAHeldMutexFailsAndKeepsItWhereAssertionsReturn) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    {
        const ReturningAssertions returning;
        EXPECT_EQ(comn_delete_mutex(mutex), CS_FAIL);
        on_another_thread([&] { EXPECT_EQ(comn_delete_mutex(mutex), CS_FAIL); });
        EXPECT_EQ(returning.count(), 2);
    }
    EXPECT_EQ(mutex->magic, 0xDEADBABEu);
    EXPECT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
}

// Contention is no answer of comn_try_mutex: callers use it where nobody else can hold the mutex.
TEST(MutexDeathTest, TryOfAMutexThatAnotherThreadHoldsAborts) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    EXPECT_BOMB(on_another_thread([&] { comn_try_mutex(mutex); }), "comn_posix_thrd");
    comn_release_mutex(mutex);
}

TEST(Mutex, TryOfAMutexThatAnotherThreadHoldsFailsWhereAssertionsReturn) {
    const Mutex mutex;
    comn_take_mutex(mutex);
    {
        const ReturningAssertions returning;
        on_another_thread([&] { EXPECT_EQ(comn_try_mutex(mutex), CS_FAIL); });
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_EQ(mutex->owner, pthread_self());
    EXPECT_EQ(mutex->use_count, 1u);
    comn_release_mutex(mutex);
}

TEST(MutexDeathTest, AFailingSystemMutexIsAnAssertion) {
    const Mutex mutex;
    {
        const FailingSystem failing("pthread_mutex_lock");
        EXPECT_BOMB(comn_take_mutex(mutex), "comn_posix_thrd");
        const ReturningAssertions returning;
        EXPECT_EQ(comn_take_mutex(mutex), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(mutex->owner, NOBODY);
        EXPECT_EQ(mutex->use_count, 0u);
    }
    comn_take_mutex(mutex);
    {
        const FailingSystem failing("pthread_mutex_unlock");
        EXPECT_BOMB(comn_release_mutex(mutex), "comn_posix_thrd");
        const ReturningAssertions returning;
        EXPECT_EQ(comn_release_mutex(mutex), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(mutex->owner, NOBODY); // given up as far as this library goes
    }
    pthread_mutex_unlock(&mutex->mutex);
}

// ---- Conditions ------------------------------------------------------------------------------------------------

class WaitCond : public testing::TestWithParam<unsigned> {};

TEST_P(WaitCond, GivesTheMutexUpWholeAndComesBackToItsDepth) {
    const unsigned depth = GetParam();
    const Mutex mutex;
    const Condition condition;
    bool ready = false;
    Runner waiter([&] {
        for (unsigned d = 0; d < depth; ++d)
            ASSERT_EQ(comn_take_mutex(mutex), CS_SUCCEED);
        while (!ready)
            ASSERT_EQ(comn_wait_cond(condition, mutex), CS_SUCCEED);
        EXPECT_EQ(mutex->use_count, depth);
        EXPECT_EQ(mutex->owner, pthread_self());
        for (unsigned d = 0; d < depth; ++d)
            ASSERT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
    });
    ASSERT_TRUE(sleeps(waiter.id()));
    ASSERT_EQ(comn_take_mutex(mutex), CS_SUCCEED); // although it was held more than once
    EXPECT_EQ(mutex->use_count, 1u);
    ready = true;
    EXPECT_EQ(comn_signal_cond(condition), CS_SUCCEED);
    ASSERT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
    waiter.join();
    EXPECT_EQ(mutex->owner, NOBODY);
    EXPECT_EQ(mutex->use_count, 0u);
}
INSTANTIATE_TEST_SUITE_P(Depths, WaitCond, testing::Values(1u, 2u, 3u, 7u));

TEST(Condition, SignalWakesOneAndBroadcastAll) {
    constexpr int WAITERS = 3;
    const Mutex mutex;
    const Condition condition;
    int tickets = 0;
    std::atomic<int> waiting = 0;
    std::atomic<int> through = 0;
    std::vector<std::thread> waiters;
    for (int i = 0; i < WAITERS; ++i)
        waiters.emplace_back([&] {
            comn_take_mutex(mutex);
            ++waiting;
            while (tickets == 0)
                comn_wait_cond(condition, mutex);
            --tickets;
            ++through;
            comn_release_mutex(mutex);
        });
    // Once the mutex can be taken with all waiting, all are inside the wait.
    EXPECT_TRUE(eventually([&] { return waiting == WAITERS; }));
    comn_take_mutex(mutex);
    tickets = 1;
    EXPECT_EQ(comn_signal_cond(condition), CS_SUCCEED);
    comn_release_mutex(mutex);
    EXPECT_TRUE(eventually([&] { return through == 1; }));
    comn_take_mutex(mutex);
    tickets = WAITERS - 1;
    EXPECT_EQ(comn_broadcast_cond(condition), CS_SUCCEED);
    comn_release_mutex(mutex);
    for (std::thread &waiter : waiters)
        waiter.join();
    EXPECT_EQ(through, WAITERS);
}

TEST(Condition, SignalAndBroadcastWithoutAWaiterSucceed) {
    const Condition condition;
    EXPECT_EQ(comn_signal_cond(condition), CS_SUCCEED);
    EXPECT_EQ(comn_broadcast_cond(condition), CS_SUCCEED);
}

// A cancellation there would leave the mutex locked without an owner.
TEST(Condition, WaitIsNoCancellationPoint) {
    const Mutex mutex;
    const Condition condition;
    bool ready = false;
    std::atomic<bool> came_back = false;
    Runner waiter([&] {
        comn_take_mutex(mutex);
        while (!ready)
            comn_wait_cond(condition, mutex);
        came_back = true;
        int state = 0;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
        EXPECT_EQ(state, PTHREAD_CANCEL_ENABLE); // as it was
        comn_release_mutex(mutex);
    });
    ASSERT_TRUE(sleeps(waiter.id()));
    EXPECT_EQ(pthread_cancel(waiter.handle()), 0);
    comn_take_mutex(mutex);
    ready = true;
    comn_broadcast_cond(condition);
    comn_release_mutex(mutex);
    waiter.join();
    EXPECT_TRUE(came_back);
    EXPECT_EQ(mutex->owner, NOBODY);
}

TEST(ConditionDeathTest, NullHandlesAndAMutexOfAnotherAreAssertions) {
    const Mutex mutex;
    const Condition condition;
    EXPECT_NULL_REPORT(comn_create_cond(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_delete_cond(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_signal_cond(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_broadcast_cond(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_wait_cond(condition, mutex), "comn_posix_thrd"); // nobody holds it
    comn_take_mutex(mutex);
    EXPECT_BOMB(comn_wait_cond(nullptr, mutex), "comn_posix_thrd");
    EXPECT_BOMB(on_another_thread([&] { comn_wait_cond(condition, mutex); }), "comn_posix_thrd");
    comn_release_mutex(mutex);
}

TEST(Condition, NullHandlesAndAMutexOfAnotherFailWhereAssertionsReturn) {
    const Mutex mutex;
    const Condition condition;
    {
        const ReturningAssertions returning;
        EXPECT_EQ(comn_create_cond(nullptr), CS_FAIL);
        EXPECT_EQ(comn_delete_cond(nullptr), CS_FAIL);
        EXPECT_EQ(comn_signal_cond(nullptr), CS_FAIL);
        EXPECT_EQ(comn_broadcast_cond(nullptr), CS_FAIL);
        EXPECT_EQ(comn_wait_cond(condition, mutex), CS_FAIL);
        comn_take_mutex(mutex);
        EXPECT_EQ(comn_wait_cond(nullptr, mutex), CS_FAIL);
        on_another_thread([&] { EXPECT_EQ(comn_wait_cond(condition, mutex), CS_FAIL); });
        EXPECT_EQ(returning.count(), 7);
    }
    EXPECT_EQ(mutex->use_count, 1u);
    EXPECT_EQ(comn_release_mutex(mutex), CS_SUCCEED);
}

// ---- Coroutine mode --------------------------------------------------------------------------------------------

TEST(CoroutineMode, OffItDoesNothingAndSucceeds) {
    EXPECT_EQ(Coroutine_sem, nullptr);
    EXPECT_EQ(comn_take_coroutine_control(), CS_SUCCEED);
    EXPECT_EQ(comn_release_coroutine_control(), CS_SUCCEED);
    EXPECT_EQ(comn_end_coroutine_mode(), CS_SUCCEED);
    EXPECT_EQ(Coroutine_sem, nullptr);
}

TEST(CoroutineMode, StartedTwiceFails) {
    EXPECT_EQ(comn_start_coroutine_mode(), CS_SUCCEED);
    CS_THRDRES *const mutex = Coroutine_sem;
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(comn_start_coroutine_mode(), CS_FAIL);
    EXPECT_EQ(Coroutine_sem, mutex);
    EXPECT_EQ(comn_take_coroutine_control(), CS_SUCCEED);
    EXPECT_EQ(comn_end_coroutine_mode(), CS_SUCCEED);
    EXPECT_EQ(Coroutine_sem, nullptr);
    EXPECT_EQ(comn_start_coroutine_mode(), CS_SUCCEED); // and it can be started again
    comn_take_coroutine_control();
    EXPECT_EQ(comn_end_coroutine_mode(), CS_SUCCEED);
}

TEST(CoroutineMode, ThreadsRunOneAtATime) {
    ASSERT_EQ(comn_start_coroutine_mode(), CS_SUCCEED);
    long plain = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                ASSERT_EQ(comn_take_coroutine_control(), CS_SUCCEED);
                ++plain;
                ASSERT_EQ(comn_release_coroutine_control(), CS_SUCCEED);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(plain, 4 * 2000);
    EXPECT_EQ(comn_take_coroutine_control(), CS_SUCCEED);
    EXPECT_EQ(comn_check_mutex(Coroutine_sem), CS_TRUE);
    EXPECT_EQ(comn_end_coroutine_mode(), CS_SUCCEED);
}

TEST(CoroutineModeDeathTest, EndWithoutControlIsAnAssertion) {
    ASSERT_EQ(comn_start_coroutine_mode(), CS_SUCCEED);
    EXPECT_BOMB(comn_end_coroutine_mode(), "comn_posix_thrd");
    comn_take_coroutine_control();
    comn_end_coroutine_mode();
}

TEST(CoroutineMode, StaysOnWhereTheEndFails) {
    ASSERT_EQ(comn_start_coroutine_mode(), CS_SUCCEED);
    CS_THRDRES *const mutex = Coroutine_sem;
    {
        const ReturningAssertions returning;
        EXPECT_EQ(comn_end_coroutine_mode(), CS_FAIL); // at the release
        EXPECT_EQ(Coroutine_sem, mutex);
        EXPECT_EQ(returning.count(), 1);
        comn_take_coroutine_control();
        comn_take_coroutine_control();
        EXPECT_EQ(comn_end_coroutine_mode(), CS_FAIL); // at the delete, one level being left
        EXPECT_EQ(Coroutine_sem, mutex);
        EXPECT_EQ(returning.count(), 2);
    }
    EXPECT_EQ(comn_end_coroutine_mode(), CS_SUCCEED);
    EXPECT_EQ(Coroutine_sem, nullptr);
}

// ---- The table of callbacks ------------------------------------------------------------------------------------

TEST(ThreadTable, CanBeFilledFromTheseFunctions) {
    const CS_THREAD table = {comn_create_mutex, comn_delete_mutex, comn_take_mutex,   comn_release_mutex,
                             comn_create_event, comn_delete_event, comn_signal_event, comn_reset_event,
                             comn_waitfor_event, comn_get_tid};
    CS_THRDRES *mutex = nullptr;
    ASSERT_EQ(table.create_mutex_fn(&mutex), CS_SUCCEED);
    EXPECT_EQ(table.take_mutex_fn(mutex), CS_SUCCEED);
    EXPECT_EQ(table.release_mutex_fn(mutex), CS_SUCCEED);
    EXPECT_EQ(table.delete_mutex_fn(mutex), CS_SUCCEED);
    CS_THRDRES *event = nullptr;
    ASSERT_EQ(table.create_event_fn(&event), CS_SUCCEED);
    EXPECT_EQ(table.waitfor_event_fn(event, 0), CS_TIMED_OUT);
    EXPECT_EQ(table.signal_event_fn(event), CS_SUCCEED);
    EXPECT_EQ(table.reset_event_fn(event), CS_SUCCEED);
    EXPECT_EQ(table.waitfor_event_fn(event, 0), CS_TIMED_OUT);
    EXPECT_EQ(table.signal_event_fn(event), CS_SUCCEED);
    EXPECT_EQ(table.waitfor_event_fn(event, -9999), CS_SUCCEED);
    EXPECT_EQ(table.delete_event_fn(event), CS_SUCCEED);
    pthread_t id = 0;
    CS_INT length = 0;
    EXPECT_EQ(table.thread_id_fn(&id, sizeof id, &length), CS_SUCCEED);
    EXPECT_EQ(length, 8);
    EXPECT_TRUE(pthread_equal(id, pthread_self()));
}

// ---- Out of memory ---------------------------------------------------------------------------------------------

struct Creation {
    const char *name;
    CS_RETCODE (*create)(CS_THRDRES **handle);
    CS_RETCODE (*remove)(CS_THRDRES *handle);
};

class CreateOutOfMemory : public testing::TestWithParam<Creation> {};

// Every allocation of a create failing in turn, alone and with all behind it, until it goes through.
TEST_P(CreateOutOfMemory, FailsAndLeavesNothing) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        int failures = 0;
        for (int n = 1;; ++n) {
            FailingAllocator allocator(n, span);
            auto *handle = reinterpret_cast<CS_THRDRES *>(&allocator);
            const CS_RETCODE status = GetParam().create(&handle);
            if (allocator.asked() < n) {
                EXPECT_EQ(status, CS_SUCCEED);
                EXPECT_EQ(GetParam().remove(handle), CS_SUCCEED);
                EXPECT_EQ(allocator.held(), 0);
                break;
            }
            ++failures;
            EXPECT_EQ(status, CS_FAIL);
            EXPECT_EQ(handle, nullptr);
            EXPECT_EQ(allocator.held(), 0);
        }
        EXPECT_EQ(failures, 1);
    }
}

constexpr Creation CREATIONS[] = {
    {"mutex", comn_create_mutex, comn_delete_mutex},
    {"event", comn_create_event, comn_delete_event},
    {"manual_event", [](CS_THRDRES **handle) { return comn_create_event_ex(handle, CS_FALSE); }, comn_delete_event},
    {"cond", comn_create_cond, comn_delete_cond},
    {"sem", [](CS_THRDRES **handle) { return comn_create_sem(handle, 5); }, comn_delete_sem},
    {"coroutine_mode",
     [](CS_THRDRES **handle) {
         const CS_RETCODE status = comn_start_coroutine_mode();
         *handle = Coroutine_sem;
         return status;
     },
     [](CS_THRDRES *) {
         comn_take_coroutine_control();
         return comn_end_coroutine_mode();
     }},
};
INSTANTIATE_TEST_SUITE_P(Creations, CreateOutOfMemory, testing::ValuesIn(CREATIONS),
                         [](const auto &creation) { return std::string(creation.param.name); });

} // namespace
