// The record that all contexts of a process share: its users, its mutex, and the routing of signals that its
// first user starts and its last one ends.
#include "support/assertions.h"
#include "support/failing_allocator.h"
#include "support/failing_system.h"
#include "support/routing.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

using support::all_tasks;
using support::eventually;
using support::FailingAllocator;
using support::FailingSystem;
using support::ReturningAssertions;
using support::task_of;
using support::Tasks;
using support::tasks_since;
using namespace support::routing;

bool is_zero(const CsAppGlobal &global) {
    static const CsAppGlobal zero = {};
    return std::memcmp(&global, &zero, sizeof zero) == 0;
}

CS_CFGCHAIN *some_chain() {
    static int chain;
    return reinterpret_cast<CS_CFGCHAIN *>(&chain);
}

class Private {
public:
    explicit Private(CS_THREAD *table = nullptr) { EXPECT_EQ(com_appglobal_alloc(&global_, table, 0), CS_SUCCEED); }
    ~Private() { EXPECT_EQ(com_appglobal_drop(global_, 0), CS_SUCCEED); }
    Private(const Private &) = delete;
    Private &operator=(const Private &) = delete;
    CsAppGlobal *operator->() const { return global_; }
    operator CsAppGlobal *() const { return global_; }

private:
    CsAppGlobal *global_ = nullptr;
};

// ---- Layout ----------------------------------------------------------------------------------------------------

TEST(AppGlobal, HasItsFieldsInOrder) {
    const std::vector<std::size_t> offsets = {
        offsetof(CsAppGlobal, ag_subscribers), offsetof(CsAppGlobal, ag_state),
        offsetof(CsAppGlobal, ag_accesscnt),   offsetof(CsAppGlobal, ag_dsglobal),
        offsetof(CsAppGlobal, ag_netglobal),   offsetof(CsAppGlobal, ag_asyncglobal),
        offsetof(CsAppGlobal, ag_accessfunc),  offsetof(CsAppGlobal, ag_platformptr),
        offsetof(CsAppGlobal, ag_ctxthread),   offsetof(CsAppGlobal, ag_mtx),
        offsetof(CsAppGlobal, ag_appctxglobal), offsetof(CsAppGlobal, ag_cfgchain),
        offsetof(CsAppGlobal, ag_blk_osfncs),  offsetof(CsAppGlobal, ag_ctxglobal),
    };
    EXPECT_EQ(offsets, (std::vector<std::size_t>{0, 16, 20, 24, 32, 64, 80, 88, 96, 104, 112, 136, 144, 152}));
    EXPECT_EQ(sizeof(CsAppGlobal), 160u);
}

TEST(AppGlobal, CarriesTwentyServerFunctionsInOrder) {
#define AT(function) offsetof(BlkSrvLibTable, function)
    const std::vector<std::size_t> offsets = {
        AT(srv_thread_props), AT(srv_alloc),       AT(srv_bzero),      AT(srv_descfmt),          AT(srv_bind),
        AT(srv_xferdata),     AT(srv_senddone),    AT(srv_free),       AT(srv__charcvt_multiplier),
        AT(srv__charset_trans), AT(srv__chksrvproc), AT(srv__cscvtchk), AT(srv__enddata_test),   AT(srv__get_xdrrecv),
        AT(srv__getchar),     AT(srv__getint),     AT(srv__getserver), AT(srv__seterr),          AT(srv__st_verify),
        AT(srv_text_info),
    };
#undef AT
    ASSERT_EQ(offsets.size(), 20u);
    for (std::size_t i = 0; i < offsets.size(); ++i)
        EXPECT_EQ(offsets[i], i * sizeof(void *));
    EXPECT_EQ(sizeof(BlkSrvLibTable), 20 * sizeof(void *));
}

// ---- Private records -------------------------------------------------------------------------------------------

TEST(AppGlobal, EachPrivateAllocMakesARecordOfItsOwn) {
    CS_THREAD table = {};
    const Private first(&table);
    const Private second;
    EXPECT_NE(first.operator->(), second.operator->());
    EXPECT_NE(first.operator->(), &Application_global);
    EXPECT_EQ(first->ag_accesscnt, 1);
    EXPECT_EQ(first->ag_ctxthread, &table);
    EXPECT_EQ(second->ag_ctxthread, nullptr);
    ASSERT_NE(first->ag_mtx, nullptr);
    EXPECT_EQ(comn_take_mutex(first->ag_mtx), CS_SUCCEED); // of its own as well
    EXPECT_EQ(comn_check_mutex(second->ag_mtx), CS_FALSE);
    EXPECT_EQ(comn_release_mutex(first->ag_mtx), CS_SUCCEED);
    // All the rest is zero.
    CsAppGlobal rest = *first;
    rest.ag_accesscnt = 0;
    rest.ag_ctxthread = nullptr;
    rest.ag_mtx = nullptr;
    EXPECT_TRUE(is_zero(rest));
    EXPECT_TRUE(is_zero(Application_global));
}

// Any flags without the bit of value 1 ask for one.
TEST(AppGlobal, OtherFlagBitsDoNotSelectTheStaticRecord) {
    for (const CS_INT flags : {2, 4, ~1}) {
        CsAppGlobal *global = nullptr;
        ASSERT_EQ(com_appglobal_alloc(&global, nullptr, flags), CS_SUCCEED);
        EXPECT_NE(global, &Application_global);
        EXPECT_EQ(com_appglobal_drop(global, flags), CS_SUCCEED);
    }
}

TEST(AppGlobal, PrivateRecordsStartNoRouting) {
    const Tasks before = all_tasks();
    const auto blocked = task_of(gettid()).blocked;
    {
        const Private global;
        EXPECT_TRUE(tasks_since(before).empty());
        EXPECT_EQ(task_of(gettid()).blocked, blocked);
    }
    EXPECT_TRUE(tasks_since(before).empty());
}

TEST(AppGlobal, DropOfAPrivateRecordWipesAndFreesIt) {
    CsAppGlobal image;
    std::memset(&image, 0xEE, sizeof image);
    FailingAllocator allocator;
    CsAppGlobal *global = nullptr;
    ASSERT_EQ(com_appglobal_alloc(&global, nullptr, 0), CS_SUCCEED);
    global->ag_state = 7;
    EXPECT_EQ(com_appglobal_drop(global, 0), CS_SUCCEED);
    EXPECT_EQ(allocator.held(), 0);
    // The same once more, with a look at the bytes that go back.
    ASSERT_EQ(com_appglobal_alloc(&global, nullptr, 0), CS_SUCCEED);
    global->ag_state = 7;
    allocator.watch(global, &image, sizeof image);
    EXPECT_EQ(com_appglobal_drop(global, 0), CS_SUCCEED);
    EXPECT_TRUE(is_zero(image));
}

// ---- The static record -----------------------------------------------------------------------------------------

TEST(AppGlobal, FirstStaticUserStartsRoutingAndTheLastOneEndsIt) {
    expect_pass([](int notes) {
        const Tasks before = all_tasks();
        const auto blocked = task_of(gettid()).blocked;
        CS_THREAD table = {};
        CsAppGlobal *global = nullptr;
        CHILD_CHECK(notes, com_appglobal_alloc(&global, &table, CS_APPGLOBAL_STATIC) == CS_SUCCEED);
        CHILD_CHECK(notes, global == &Application_global);
        CHILD_CHECK(notes, global->ag_accesscnt == 1);
        CHILD_CHECK(notes, global->ag_ctxthread == &table);
        CHILD_CHECK(notes, tasks_since(before).size() == 1); // the catcher
        CHILD_CHECK(notes, task_of(gettid()).blocks(SIGTERM));
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, COMN_SIG_DFL, nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, com_appglobal_drop(global, CS_APPGLOBAL_STATIC) == CS_SUCCEED);
        CHILD_CHECK(notes, is_zero(Application_global));
        CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
        CHILD_CHECK(notes, task_of(gettid()).blocked == blocked);
    });
}

TEST(AppGlobal, TwoAllocsAndOneDropLeaveItLive) {
    expect_pass([](int notes) {
        const Tasks before = all_tasks();
        CS_THREAD tables[2] = {};
        CsAppGlobal *first = nullptr;
        CsAppGlobal *second = nullptr;
        com_appglobal_alloc(&first, &tables[0], 1);
        CS_THRDRES *const mutex = first->ag_mtx;
        CHILD_CHECK(notes, com_appglobal_alloc(&second, &tables[1], 1) == CS_SUCCEED);
        CHILD_CHECK(notes, second == first);
        CHILD_CHECK(notes, first->ag_accesscnt == 2);
        CHILD_CHECK(notes, first->ag_ctxthread == &tables[0]); // that of the first user
        CHILD_CHECK(notes, first->ag_mtx == mutex);
        CHILD_CHECK(notes, com_appglobal_drop(first, 1) == CS_SUCCEED);
        CHILD_CHECK(notes, first->ag_accesscnt == 1);
        CHILD_CHECK(notes, first->ag_mtx == mutex);
        CHILD_CHECK(notes, tasks_since(before).size() == 1);
        CHILD_CHECK(notes, com_appglobal_drop(first, 1) == CS_SUCCEED);
        CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
        CHILD_CHECK(notes, is_zero(Application_global));
    });
}

TEST(AppGlobal, GoesLiveAgainAfterTheLastDrop) {
    expect_pass([](int notes) {
        for (int round = 1; round <= 3; ++round) {
            CsAppGlobal *global = nullptr;
            CHILD_CHECK(notes, com_appglobal_alloc(&global, nullptr, 1) == CS_SUCCEED);
            const Accepted accepted(notes, SIGUSR1);
            kill(getpid(), SIGUSR1);
            CHILD_CHECK(notes, eventually([round] { return calls == round; }));
            CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_SUCCEED);
        }
    });
}

// The list of configurations holds only what was added since the last entry: a live record's is emptied by each.
TEST(AppGlobal, EachLaterUserEmptiesTheConfigurationChain) {
    expect_pass([](int notes) {
        CsAppGlobal *global = nullptr;
        com_appglobal_alloc(&global, nullptr, 1);
        for (int user = 2; user <= 4; ++user) {
            global->ag_cfgchain = some_chain();
            global->ag_state = user;
            CHILD_CHECK(notes, com_appglobal_alloc(&global, nullptr, 1) == CS_SUCCEED);
            CHILD_CHECK(notes, global->ag_cfgchain == nullptr);
            CHILD_CHECK(notes, global->ag_state == user); // nothing else is
            CHILD_CHECK(notes, global->ag_accesscnt == user);
        }
        global->ag_cfgchain = some_chain();
        CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_SUCCEED); // which leaves it to those that remain
        CHILD_CHECK(notes, global->ag_cfgchain == some_chain());
    });
}

TEST(AppGlobal, LaterUsersWaitForTheMutex) {
    expect_pass([](int notes) {
        CsAppGlobal *global = nullptr;
        com_appglobal_alloc(&global, nullptr, 1);
        comn_take_mutex(global->ag_mtx);
        std::atomic<bool> entered = false;
        support::Runner other([&] {
            CsAppGlobal *again = nullptr;
            CHILD_CHECK(notes, com_appglobal_alloc(&again, nullptr, 1) == CS_SUCCEED);
            entered = true;
        });
        CHILD_CHECK(notes, support::sleeps(other.id()));
        CHILD_CHECK(notes, !entered);
        CHILD_CHECK(notes, global->ag_accesscnt == 1);
        comn_release_mutex(global->ag_mtx);
        other.join();
        CHILD_CHECK(notes, global->ag_accesscnt == 2);
    });
}

TEST(AppGlobal, CountsUsersFromManyThreads) {
    expect_pass([](int notes) {
        CsAppGlobal *global = nullptr;
        com_appglobal_alloc(&global, nullptr, 1);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([notes] {
                for (int i = 0; i < 500; ++i) {
                    CsAppGlobal *mine = nullptr;
                    CHILD_CHECK(notes, com_appglobal_alloc(&mine, nullptr, 1) == CS_SUCCEED);
                    CHILD_CHECK(notes, com_appglobal_drop(mine, 1) == CS_SUCCEED);
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        CHILD_CHECK(notes, global->ag_accesscnt == 1);
        CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_SUCCEED);
    });
}

// ---- Broken contracts ------------------------------------------------------------------------------------------

TEST(AppGlobalDeathTest, NullAddressesAreAssertions) {
    EXPECT_NULL_REPORT(com_appglobal_alloc(nullptr, nullptr, 0), "comaglob");
    EXPECT_NULL_REPORT(com_appglobal_alloc(nullptr, nullptr, 1), "comaglob");
    EXPECT_NULL_REPORT(com_appglobal_drop(nullptr, 0), "comaglob");
    EXPECT_NULL_REPORT(com_appglobal_drop(nullptr, 1), "comaglob");
}

TEST(AppGlobal, NullAddressesFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    EXPECT_EQ(com_appglobal_alloc(nullptr, nullptr, 0), CS_FAIL);
    EXPECT_EQ(com_appglobal_alloc(nullptr, nullptr, 1), CS_FAIL);
    EXPECT_EQ(com_appglobal_drop(nullptr, 0), CS_FAIL);
    EXPECT_EQ(com_appglobal_drop(nullptr, 1), CS_FAIL);
    EXPECT_EQ(returning.count(), 4);
    EXPECT_TRUE(is_zero(Application_global));
}

TEST(AppGlobalDeathTest, ANegativeCountIsAnAssertion) {
    Application_global.ag_accesscnt = -1;
    CsAppGlobal *global = nullptr;
    EXPECT_BOMB(com_appglobal_alloc(&global, nullptr, 1), "comaglob");
    {
        const ReturningAssertions returning;
        EXPECT_EQ(com_appglobal_alloc(&global, nullptr, 1), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_EQ(global, nullptr);
    EXPECT_EQ(Application_global.ag_accesscnt, -1);
    Application_global.ag_accesscnt = 0;
}

TEST(AppGlobalDeathTest, FlagsAndRecordMustAgreeInADrop) {
    const Private global;
    EXPECT_BOMB(com_appglobal_drop(global, 1), "comaglob");
    EXPECT_BOMB(com_appglobal_drop(&Application_global, 0), "comaglob");
    const ReturningAssertions returning;
    EXPECT_EQ(com_appglobal_drop(global, 1), CS_FAIL);
    EXPECT_EQ(com_appglobal_drop(&Application_global, 0), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
    EXPECT_EQ(global->ag_accesscnt, 1);
}

TEST(AppGlobalDeathTest, DropOfADeadRecordIsAnAssertion) {
    EXPECT_BOMB(com_appglobal_drop(&Application_global, 1), "comn_posix_thrd"); // of its mutex, which it has not
    const ReturningAssertions returning;
    EXPECT_EQ(com_appglobal_drop(&Application_global, 1), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_TRUE(is_zero(Application_global));
}

TEST(AppGlobalDeathTest, ADropTooManyIsAnAssertion) {
    const Private global;
    global->ag_accesscnt = 0;
    EXPECT_BOMB(com_appglobal_drop(global, 0), "comaglob");
    {
        const ReturningAssertions returning;
        EXPECT_EQ(com_appglobal_drop(global, 0), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_EQ(global->ag_accesscnt, 0);
    EXPECT_EQ(comn_check_mutex(global->ag_mtx), CS_FALSE); // not left held
    global->ag_accesscnt = 1;
}

TEST(AppGlobalDeathTest, SubscribersAtTheLastDropAreAnAssertion) {
    for (int library = 0; library < CS_APPGLOBAL_SUBSCRIBERS; ++library)
        for (const CS_INT count : {1, -1}) {
            const Private global;
            global->ag_subscribers[library] = count;
            EXPECT_BOMB(com_appglobal_drop(global, 0), "comaglob");
            {
                const ReturningAssertions returning;
                EXPECT_EQ(com_appglobal_drop(global, 0), CS_FAIL);
                EXPECT_EQ(returning.count(), 1);
            }
            // The reference is gone, the record is still there.
            EXPECT_EQ(global->ag_accesscnt, 0);
            EXPECT_NE(global->ag_mtx, nullptr);
            global->ag_subscribers[library] = 0;
            global->ag_accesscnt = 1;
        }
}

TEST(AppGlobal, SubscribersAtAnEarlierDropAreFine) {
    expect_pass([](int notes) {
        CsAppGlobal *global = nullptr;
        com_appglobal_alloc(&global, nullptr, 1);
        com_appglobal_alloc(&global, nullptr, 1);
        global->ag_subscribers[2] = 1;
        CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_SUCCEED);
        CHILD_CHECK(notes, global->ag_accesscnt == 1);
        global->ag_subscribers[2] = 0;
        CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_SUCCEED);
    });
}

TEST(AppGlobalDeathTest, AHeldMutexAtTheLastDropIsAnAssertion) {
    const Private global;
    comn_take_mutex(global->ag_mtx);
    EXPECT_BOMB(com_appglobal_drop(global, 0), "comn_posix_thrd");
    {
        const ReturningAssertions returning;
        EXPECT_EQ(com_appglobal_drop(global, 0), CS_FAIL);
        EXPECT_EQ(returning.count(), 2); // of the mutex, and of this record for it
    }
    comn_release_mutex(global->ag_mtx);
    global->ag_accesscnt = 1;
}

// ---- Failures --------------------------------------------------------------------------------------------------

TEST(AppGlobalOutOfMemory, PrivateAllocLeavesNothing) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        // The record is CS_MEM_ERROR, its mutex CS_FAIL.
        for (const auto &[n, expected] : {std::pair{1, CS_MEM_ERROR}, std::pair{2, CS_FAIL}}) {
            const FailingAllocator allocator(n, span);
            CsAppGlobal *global = &Application_global;
            EXPECT_EQ(com_appglobal_alloc(&global, nullptr, 0), expected);
            EXPECT_EQ(allocator.asked(), n);
            EXPECT_EQ(allocator.held(), 0);
            EXPECT_EQ(global, &Application_global); // untouched
        }
        const FailingAllocator allocator(3, span);
        CsAppGlobal *global = nullptr;
        EXPECT_EQ(com_appglobal_alloc(&global, nullptr, 0), CS_SUCCEED);
        EXPECT_EQ(allocator.asked(), 2);
        EXPECT_EQ(com_appglobal_drop(global, 0), CS_SUCCEED);
        EXPECT_EQ(allocator.held(), 0);
    }
}

TEST(AppGlobalOutOfMemory, StaticAllocLeavesNothingWhereAssertionsReturn) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        expect_pass([span](int notes) {
            for (int n = 1;; ++n) {
                const Tasks before = all_tasks();
                const auto blocked = task_of(gettid()).blocked;
                CsAppGlobal *global = nullptr;
                CS_RETCODE status = 0;
                int asked = 0;
                {
                    const ReturningAssertions returning;
                    const FailingAllocator allocator(n, span);
                    status = com_appglobal_alloc(&global, nullptr, 1);
                    asked = allocator.asked();
                }
                if (status == CS_SUCCEED) {
                    CHILD_CHECK(notes, asked < n);
                    CHILD_CHECK(notes, n > 4); // routing's lock, event and thread, and the mutex
                    CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_SUCCEED);
                    break;
                }
                CHILD_CHECK(notes, status == CS_FAIL);
                CHILD_CHECK(notes, global == nullptr);
                CHILD_CHECK(notes, is_zero(Application_global));
                CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
                CHILD_CHECK(notes, task_of(gettid()).blocked == blocked);
            }
        });
}

TEST(AppGlobal, LaterUserFailsWhereTheMutexCannotBeTaken) {
    expect_pass([](int notes) {
        CsAppGlobal *global = nullptr;
        com_appglobal_alloc(&global, nullptr, 1);
        unblock_abort();
        auto *mutex = reinterpret_cast<COMN_MUTEX *>(global->ag_mtx);
        mutex->magic = 0;
        {
            const ReturningAssertions returning;
            CsAppGlobal *again = nullptr;
            CHILD_CHECK(notes, com_appglobal_alloc(&again, nullptr, 1) == CS_FAIL);
            CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_FAIL);
            CHILD_CHECK(notes, returning.count() == 2);
            CHILD_CHECK(notes, again == nullptr);
        }
        CHILD_CHECK(notes, global->ag_accesscnt == 1);
        mutex->magic = COMN_MUTEX_MAGIC;
        CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_SUCCEED);
    });
}

TEST(AppGlobal, AnswersTheFailureOfTheSetupAndOfTheExit) {
    expect_pass([](int notes) {
        CsAppGlobal *global = nullptr;
        {
            const ReturningAssertions returning;
            const FailingSystem failing("pthread_create");
            CHILD_CHECK(notes, com_appglobal_alloc(&global, nullptr, 1) == CS_FAIL);
            CHILD_CHECK(notes, global == nullptr);
            CHILD_CHECK(notes, is_zero(Application_global));
        }
        com_appglobal_alloc(&global, nullptr, 1);
        unblock_abort();
        const ReturningAssertions returning;
        const FailingSystem failing("pthread_sigmask");
        CHILD_CHECK(notes, com_appglobal_drop(global, 1) == CS_FAIL);
        CHILD_CHECK(notes, is_zero(Application_global));
    });
}

} // namespace
