// Threads, their identities, cancellation and keys.
#include "support/assertions.h"
#include "support/cancelled_threads.h"
#include "support/failing_allocator.h"
#include "support/failing_system.h"
#include "support/tasks.h"

#include <functional>
#include <limits>
#include <vector>

namespace {

using support::eventually;
using support::FailingAllocator;
using support::FailingSystem;
using support::ReturningAssertions;
using support::sleeps;

using Code = std::function<void()>;

CS_VOID *run(CS_VOID *code) {
    (*static_cast<Code *>(code))();
    return nullptr;
}

CS_VOID *do_nothing(CS_VOID *) { return nullptr; }

// Runs the code on a thread of the library's making, to its end.
void on_a_thread(Code code, CS_INT stacksize = 0) {
    CS_THRDRES *thread = nullptr;
    ASSERT_EQ(comn_create_thread_ex(&thread, run, &code, stacksize), CS_SUCCEED);
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
}

int cancel_state() {
    int state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
    pthread_setcancelstate(state, nullptr);
    return state;
}

bool same(const sigset_t &a, const sigset_t &b) {
    for (int sig = 1; sig < COMN_SIG_COUNT; ++sig)
        if (sigismember(&a, sig) != sigismember(&b, sig))
            return false;
    return true;
}

sigset_t mask_now() {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return mask;
}

// ---- Creation, end and join ------------------------------------------------------------------------------------

TEST(Thread, RunsFromItsCreationWithItsArgument) {
    std::atomic<CS_VOID *> seen = nullptr;
    struct Argument {
        std::atomic<CS_VOID *> *seen;
    } argument = {&seen};
    CS_THRDRES *thread = nullptr;
    const CS_THREAD_FUNC body = [](CS_VOID *given) -> CS_VOID * {
        *static_cast<Argument *>(given)->seen = given;
        return nullptr;
    };
    ASSERT_EQ(comn_create_thread(&thread, body, &argument), CS_SUCCEED);
    ASSERT_NE(thread, nullptr);
    EXPECT_TRUE(eventually([&] { return seen == &argument; })); // nobody has called comn_start_thread
    EXPECT_EQ(comn_start_thread(thread), CS_SUCCEED);
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
}

TEST(Thread, HandleIsTheIdOnTheHeap) {
    std::atomic<pthread_t> id = 0;
    Code code = [&] { id = pthread_self(); };
    CS_THRDRES *thread = nullptr;
    ASSERT_EQ(comn_create_thread(&thread, run, &code), CS_SUCCEED);
    const pthread_t told = *reinterpret_cast<pthread_t *>(thread);
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
    EXPECT_EQ(id, told);
}

TEST(Thread, MayHaveNoArgument) {
    std::vector<CS_THRDRES *> threads(3);
    EXPECT_EQ(comn_create_thread(&threads[0], do_nothing, nullptr), CS_SUCCEED);
    EXPECT_EQ(comn_create_thread_ex(&threads[1], do_nothing, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(comn_create_thread_ex(&threads[2], do_nothing, nullptr, -1), CS_SUCCEED);
    for (CS_THRDRES *thread : threads)
        EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
    pthread_t id = 0;
    ASSERT_EQ(comn_create_thread_no_alloc(&id, do_nothing, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(pthread_join(id, nullptr), 0);
}

struct Attributes {
    std::size_t stack = 0;
    int scope = -1;
    int detached = -1;
};

Attributes attributes_of_thread(CS_INT stacksize) {
    Attributes result;
    on_a_thread(
        [&] {
            pthread_attr_t attributes;
            ASSERT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
            pthread_attr_getstacksize(&attributes, &result.stack);
            pthread_attr_getscope(&attributes, &result.scope);
            pthread_attr_getdetachstate(&attributes, &result.detached);
            pthread_attr_destroy(&attributes);
        },
        stacksize);
    return result;
}

TEST(Thread, HasTheStackThatIsAskedForOrTheSystemsOwn) {
    pthread_attr_t attributes;
    std::size_t usual = 0;
    pthread_attr_init(&attributes);
    pthread_attr_getstacksize(&attributes, &usual);
    pthread_attr_destroy(&attributes);
    const std::size_t more = usual + (3 << 20);
    EXPECT_GE(attributes_of_thread(static_cast<CS_INT>(more)).stack, more);
    for (const CS_INT none : {0, -1, std::numeric_limits<CS_INT>::min()})
        EXPECT_GE(attributes_of_thread(none).stack, usual);
}

TEST(Thread, IsJoinableWithSystemScope) {
    const Attributes attributes = attributes_of_thread(0);
    EXPECT_EQ(attributes.scope, PTHREAD_SCOPE_SYSTEM);
    EXPECT_EQ(attributes.detached, PTHREAD_CREATE_JOINABLE);
}

TEST(Thread, JoinWaitsForTheEndAndFreesTheHandle) {
    bool done = false;
    Code code = [&] {
        for (int i = 0; i < 100; ++i)
            sched_yield();
        done = true;
    };
    CS_THRDRES *thread = nullptr;
    ASSERT_EQ(comn_create_thread(&thread, run, &code), CS_SUCCEED);
    const FailingAllocator allocator; // of this thread
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
    EXPECT_TRUE(done);
    EXPECT_LE(allocator.held(), -1);
}

TEST(Thread, ThatJoinsItselfFailsAndKeepsItsHandle) {
    std::atomic<CS_THRDRES *> handle = nullptr;
    Code code = [&] {
        eventually([&] { return handle != nullptr; });
        EXPECT_EQ(comn_join_thread(handle), CS_FAIL);
    };
    CS_THRDRES *thread = nullptr;
    ASSERT_EQ(comn_create_thread(&thread, run, &code), CS_SUCCEED);
    handle = thread;
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
}

TEST(Thread, ExitEndsTheCallingThread) {
    bool before = false;
    bool behind = false;
    on_a_thread([&] {
        before = true;
        comn_exit_thread(nullptr);
        behind = true;
    });
    EXPECT_TRUE(before);
    EXPECT_FALSE(behind);
}

TEST(Thread, CannotBeDetached) {
    CS_THRDRES *thread = nullptr;
    ASSERT_EQ(comn_create_thread(&thread, do_nothing, nullptr), CS_SUCCEED);
    EXPECT_EQ(comn_detach_thread(thread), CS_FAIL);
    EXPECT_EQ(comn_detach_thread(nullptr), CS_FAIL);
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED); // it still can be joined
}

TEST(Thread, StartAndPriorityDoNothing) {
    EXPECT_EQ(comn_start_thread(nullptr), CS_SUCCEED);
    EXPECT_EQ(comn_set_priority(nullptr, 99), CS_SUCCEED);
    EXPECT_EQ(comn_set_priority(nullptr, -1), CS_SUCCEED);
}

TEST(Thread, ThereIsNoGlobalLock) {
    EXPECT_EQ(comn_lock_global(), CS_FAIL);
    EXPECT_EQ(comn_unlock_global(), CS_FAIL);
}

TEST(ThreadDeathTest, CleanupAborts) {
    EXPECT_EXIT(comn_thread_cleanup(nullptr), testing::KilledBySignal(SIGABRT), "");
}

// ---- Masks of new threads --------------------------------------------------------------------------------------

// No routing was set up in this process, so the mask of the library's threads is the empty one: whatever their
// creator blocks, they block nothing.
TEST(Thread, StartsWithAnEmptyMaskBeforeRoutingAndTheCreatorKeepsItsOwn) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR2);
    sigaddset(&blocked, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const sigset_t creator = mask_now();
    sigset_t seen;
    sigfillset(&seen);
    on_a_thread([&] { seen = mask_now(); });
    EXPECT_TRUE(same(mask_now(), creator));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    for (int sig = 1; sig < COMN_SIG_COUNT; ++sig)
        EXPECT_NE(sigismember(&seen, sig), 1) << sig;
}

// ---- Signals to a thread ---------------------------------------------------------------------------------------

TEST(Thread, SignalReachesTheThreadThatIsMeant) {
    int delivered = 0;
    std::atomic<bool> ready = false;
    Code code = [&] {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &set, nullptr);
        ready = true;
        sigwait(&set, &delivered);
    };
    CS_THRDRES *thread = nullptr;
    ASSERT_EQ(comn_create_thread(&thread, run, &code), CS_SUCCEED);
    EXPECT_TRUE(eventually([&] { return ready.load(); }));
    EXPECT_EQ(comn_signal_thread(thread, 0), CS_SUCCEED); // only asks
    EXPECT_EQ(comn_signal_thread(thread, 1000), CS_FAIL);
    EXPECT_EQ(comn_signal_thread(thread, SIGUSR1), CS_SUCCEED);
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
    EXPECT_EQ(delivered, SIGUSR1);
}

// ---- Cancellation ----------------------------------------------------------------------------------------------

TEST(Cancellation, SetCancelstateDisablesIt) {
    on_a_thread([] {
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_ENABLE);
        EXPECT_EQ(comn_set_cancelstate(), CS_SUCCEED);
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_DISABLE);
        EXPECT_EQ(comn_set_cancelstate(), CS_SUCCEED);
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_DISABLE);
    });
}

TEST(Cancellation, YieldIsACancellationPointWhereCancellationIsOff) {
    std::atomic<bool> ready = false;
    std::atomic<bool> asked = false;
    std::atomic<bool> passed_others = false;
    std::atomic<bool> passed_yield = false;
    Code code = [&] {
        comn_set_cancelstate();
        ready = true;
        while (!asked) // other points of the system, which take no notice
            usleep(50);
        passed_others = true;
        comn_yield();
        passed_yield = true;
    };
    CS_THRDRES *thread = nullptr;
    ASSERT_EQ(comn_create_thread(&thread, run, &code), CS_SUCCEED);
    EXPECT_TRUE(eventually([&] { return ready.load(); }));
    EXPECT_EQ(comn_kill_thread(thread), CS_SUCCEED);
    asked = true;
    EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
    EXPECT_TRUE(passed_others);
    EXPECT_FALSE(passed_yield);
}

TEST(Cancellation, YieldKeepsTheState) {
    on_a_thread([] {
        EXPECT_EQ(comn_yield(), CS_SUCCEED);
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_ENABLE);
        comn_set_cancelstate();
        EXPECT_EQ(comn_yield(), CS_SUCCEED);
        EXPECT_EQ(cancel_state(), PTHREAD_CANCEL_DISABLE);
    });
}

// ---- Identities ------------------------------------------------------------------------------------------------

TEST(ThreadId, IsTheSystemsInEachOfItsForms) {
    EXPECT_EQ(comn_threadid(), static_cast<CS_INT>(pthread_self()));
    EXPECT_EQ(comn_thread_id(), pthread_self());
    pthread_t other = 0;
    on_a_thread([&] {
        other = comn_thread_id();
        EXPECT_EQ(other, pthread_self());
        EXPECT_EQ(comn_threadid(), static_cast<CS_INT>(pthread_self()));
    });
    EXPECT_EQ(comn_thread_equal(other, other), CS_TRUE);
    EXPECT_EQ(comn_thread_equal(other, comn_thread_id()), CS_FALSE);
}

TEST(ThreadId, GetTidCopiesEightBytes) {
    struct {
        pthread_t id;
        pthread_t behind;
    } buffer = {0, 0x5A5A};
    for (const CS_INT room : {8, 9, 16}) {
        CS_INT length = -1;
        buffer.id = 0;
        EXPECT_EQ(comn_get_tid(&buffer, room, &length), CS_SUCCEED);
        EXPECT_EQ(length, 8);
        EXPECT_EQ(buffer.id, pthread_self());
        EXPECT_EQ(buffer.behind, 0x5A5Au);
    }
    unsigned char unaligned[9] = {};
    CS_INT length = 0;
    EXPECT_EQ(comn_get_tid(unaligned + 1, 8, &length), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(unaligned + 1, &buffer.id, 8), 0);
}

TEST(ThreadIdDeathTest, GetTidWithTooLittleRoomIsAnAssertion) {
    pthread_t id = 0;
    CS_INT length = 0;
    EXPECT_BOMB(comn_get_tid(&id, 7, &length), "comn_posix_thrd");
    EXPECT_BOMB(comn_get_tid(&id, -1, &length), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_get_tid(nullptr, 8, &length), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_get_tid(&id, 8, nullptr), "comn_posix_thrd");
}

TEST(ThreadId, GetTidWithTooLittleRoomWritesNothingWhereAssertionsReturn) {
    pthread_t id = 0;
    CS_INT length = -1;
    const ReturningAssertions returning;
    EXPECT_EQ(comn_get_tid(&id, 7, &length), CS_FAIL);
    EXPECT_EQ(comn_get_tid(&id, 0, &length), CS_FAIL);
    EXPECT_EQ(comn_get_tid(nullptr, 8, &length), CS_FAIL);
    EXPECT_EQ(comn_get_tid(&id, 8, nullptr), CS_FAIL);
    EXPECT_EQ(returning.count(), 4);
    EXPECT_EQ(id, 0u);
    EXPECT_EQ(length, -1);
}

// ---- Keys ------------------------------------------------------------------------------------------------------

TEST(Key, HoldsAValueForEachThread) {
    CS_THRDKEY key = -1;
    ASSERT_EQ(comn_create_key(&key), CS_SUCCEED);
    int mine = 0;
    int others = 0;
    EXPECT_EQ(comn_get_threaduserdata(key), nullptr);
    EXPECT_EQ(comn_set_threaduserdata(key, &mine), CS_SUCCEED);
    on_a_thread([&] {
        EXPECT_EQ(comn_get_threaduserdata(key), nullptr);
        EXPECT_EQ(comn_set_threaduserdata(key, &others), CS_SUCCEED);
        EXPECT_EQ(comn_get_threaduserdata(key), &others);
    }); // whose end calls no destructor: there would be nothing to call
    EXPECT_EQ(comn_get_threaduserdata(key), &mine);
    EXPECT_EQ(comn_set_threaduserdata(key, nullptr), CS_SUCCEED);
    EXPECT_EQ(comn_get_threaduserdata(key), nullptr);
    EXPECT_EQ(comn_drop_key(key), CS_SUCCEED);
}

TEST(Key, IsTheSystemsKey) {
    CS_THRDKEY key = -1;
    ASSERT_EQ(comn_create_key(&key), CS_SUCCEED);
    int value = 0;
    EXPECT_EQ(pthread_setspecific(static_cast<pthread_key_t>(key), &value), 0);
    EXPECT_EQ(comn_get_threaduserdata(key), &value);
    EXPECT_EQ(comn_drop_key(key), CS_SUCCEED);
}

TEST(Key, UnusedGivesNullAndTakesNothing) {
    EXPECT_EQ(CS_UNUSED, -99999);
    EXPECT_EQ(comn_get_threaduserdata(-99999), nullptr);
    int value = 0;
    EXPECT_EQ(comn_set_threaduserdata(-99999, &value), CS_FAIL);
    EXPECT_EQ(comn_drop_key(-99999), CS_FAIL);
}

TEST(Key, ThatWasDroppedFails) {
    CS_THRDKEY key = -1;
    ASSERT_EQ(comn_create_key(&key), CS_SUCCEED);
    ASSERT_EQ(comn_drop_key(key), CS_SUCCEED);
    EXPECT_EQ(comn_drop_key(key), CS_FAIL);
    int value = 0;
    EXPECT_EQ(comn_set_threaduserdata(key, &value), CS_FAIL);
    EXPECT_EQ(comn_get_threaduserdata(key), nullptr);
}

TEST(Key, CreateFailsWithTheSystem) {
    const FailingSystem failing("pthread_key_create");
    CS_THRDKEY key = -1;
    EXPECT_EQ(comn_create_key(&key), CS_FAIL);
    EXPECT_EQ(key, -1);
}

TEST(KeyDeathTest, CreateWithoutAPlaceForItIsAnAssertion) {
    EXPECT_NULL_REPORT(comn_create_key(nullptr), "comn_posix_thrd");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_create_key(nullptr), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
}

// ---- Broken contracts and refusals -----------------------------------------------------------------------------

TEST(ThreadDeathTest, NullArgumentsAreAssertions) {
    CS_THRDRES *thread = nullptr;
    pthread_t id = 0;
    EXPECT_NULL_REPORT(comn_create_thread(nullptr, do_nothing, &id), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_create_thread(&thread, nullptr, &id), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_create_thread_ex(nullptr, do_nothing, &id, 0), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_create_thread_ex(&thread, nullptr, &id, 0), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_create_thread_no_alloc(nullptr, do_nothing, &id, 0), "comn_posix_thrd");
    EXPECT_NULL_REPORT(comn_create_thread_no_alloc(&id, nullptr, &id, 0), "comn_posix_thrd");
    EXPECT_BOMB(comn_kill_thread(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_join_thread(nullptr), "comn_posix_thrd");
    EXPECT_BOMB(comn_signal_thread(nullptr, SIGUSR1), "comn_posix_thrd");
}

TEST(Thread, NullArgumentsFailWhereAssertionsReturn) {
    CS_THRDRES *thread = nullptr;
    pthread_t id = 0;
    const ReturningAssertions returning;
    EXPECT_EQ(comn_create_thread(nullptr, do_nothing, &id), CS_FAIL);
    EXPECT_EQ(comn_create_thread(&thread, nullptr, &id), CS_FAIL);
    EXPECT_EQ(comn_create_thread_ex(nullptr, do_nothing, &id, 0), CS_FAIL);
    EXPECT_EQ(comn_create_thread_ex(&thread, nullptr, &id, 0), CS_FAIL);
    EXPECT_EQ(comn_create_thread_no_alloc(nullptr, do_nothing, &id, 0), CS_FAIL);
    EXPECT_EQ(comn_create_thread_no_alloc(&id, nullptr, &id, 0), CS_FAIL);
    EXPECT_EQ(comn_kill_thread(nullptr), CS_FAIL);
    EXPECT_EQ(comn_join_thread(nullptr), CS_FAIL);
    EXPECT_EQ(comn_signal_thread(nullptr, SIGUSR1), CS_FAIL);
    EXPECT_EQ(returning.count(), 9);
    EXPECT_EQ(thread, nullptr);
}

class CreationRefused : public testing::TestWithParam<const char *> {};
using CreationRefusedDeathTest = CreationRefused;

TEST_P(CreationRefusedDeathTest, IsAnAssertion) {
    const FailingSystem failing(GetParam());
    CS_THRDRES *thread = nullptr;
    EXPECT_BOMB(comn_create_thread(&thread, do_nothing, nullptr), "comn_posix_thrd");
}

TEST_P(CreationRefused, LeavesNothingWhereAssertionsReturn) {
    const sigset_t before = mask_now();
    {
        const ReturningAssertions returning;
        const FailingSystem failing(GetParam());
        const FailingAllocator allocator;
        CS_THRDRES *thread = nullptr;
        EXPECT_EQ(comn_create_thread(&thread, do_nothing, nullptr), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(thread, nullptr);
        EXPECT_EQ(allocator.held(), 0);
    }
    EXPECT_TRUE(same(mask_now(), before));
}

constexpr const char *CREATING_CALLS[] = {"pthread_attr_init", "pthread_attr_setscope", "pthread_attr_setdetachstate",
                                          "pthread_sigmask", "pthread_create"};
const auto name_of_call = [](const auto &call) { return std::string(call.param); };
INSTANTIATE_TEST_SUITE_P(Calls, CreationRefusedDeathTest, testing::ValuesIn(CREATING_CALLS), name_of_call);
INSTANTIATE_TEST_SUITE_P(Calls, CreationRefused, testing::ValuesIn(CREATING_CALLS), name_of_call);

TEST(ThreadDeathTest, AStackThatTheSystemRefusesIsAnAssertion) {
    CS_THRDRES *thread = nullptr;
    EXPECT_BOMB(comn_create_thread_ex(&thread, do_nothing, nullptr, 1), "comn_posix_thrd");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_create_thread_ex(&thread, do_nothing, nullptr, 1), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_EQ(thread, nullptr);
}

TEST(ThreadOutOfMemory, FailsWithoutAnAssertionForWantOfAHandle) {
    FailingAllocator allocator(1);
    int something = 0;
    auto *thread = reinterpret_cast<CS_THRDRES *>(&something);
    EXPECT_EQ(comn_create_thread(&thread, do_nothing, nullptr), CS_FAIL);
    EXPECT_EQ(thread, nullptr);
    EXPECT_EQ(allocator.held(), 0);
}

// What the system itself allocates for a thread is refused by pthread_create, and so is an assertion.
TEST(ThreadOutOfMemory, EveryAllocationRefusedLeavesNothing) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int n = 1;; ++n) {
            CS_THRDRES *thread = nullptr;
            CS_RETCODE status = 0;
            int asked = 0;
            int held = 0;
            {
                const ReturningAssertions returning;
                const FailingAllocator allocator(n, span);
                status = comn_create_thread(&thread, do_nothing, nullptr);
                asked = allocator.asked();
                held = allocator.held();
            }
            if (status == CS_SUCCEED) {
                EXPECT_LT(asked, n);
                EXPECT_EQ(comn_join_thread(thread), CS_SUCCEED);
                break;
            }
            EXPECT_EQ(status, CS_FAIL);
            EXPECT_EQ(thread, nullptr);
            EXPECT_EQ(held, 0);
        }
}

} // namespace
