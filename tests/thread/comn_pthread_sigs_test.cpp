// Signals that are routed to threads. Each test sends real signals inside a child process of its own, and reads
// the masks of all threads from the system.
#include "support/assertions.h"
#include "support/child.h"
#include "support/routing.h"

#include <cstdlib>
#include <limits>
#include <set>
#include <vector>

namespace {

using support::all_tasks;
using support::Ending;
using support::eventually;
using support::note;
using support::ReturningAssertions;
using support::sleeps;
using support::Task;
using support::task_of;
using support::Tasks;
using support::tasks_since;
using namespace support::routing;

// ---- What is routed --------------------------------------------------------------------------------------------

TEST(RoutedSignals, AreThoseThatAskForSomethingAndTheRealTimeOnes) {
    std::set<int> routed = {SIGHUP,  SIGINT,  SIGQUIT, SIGABRT, SIGUSR1, SIGUSR2, SIGALRM,   SIGTERM,  SIGCHLD, SIGCONT,
                            SIGTSTP, SIGTTIN, SIGTTOU, SIGURG,  SIGXCPU, SIGXFSZ, SIGVTALRM, SIGWINCH, SIGIO,   SIGPWR};
    for (int sig = SIGRTMIN; sig <= SIGRTMAX; ++sig)
        routed.insert(sig);
    for (int sig = -70; sig <= 200; ++sig)
        EXPECT_EQ(comn_sig_is_handled_synchronously(sig), routed.count(sig) != 0 ? CS_TRUE : CS_FALSE) << sig;
    EXPECT_EQ(comn_sig_is_handled_synchronously(std::numeric_limits<CS_INT>::max()), CS_FALSE);
    EXPECT_EQ(comn_sig_is_handled_synchronously(std::numeric_limits<CS_INT>::min()), CS_FALSE);
}

// ---- Set-up ----------------------------------------------------------------------------------------------------

TEST(SignalSetup, StartsOneCatcherWithTheOriginalMaskAndBlocksRoutedSignalsInTheCaller) {
    expect_pass([](int notes) {
        block({SIGUSR1, SIGPIPE});
        const Task original = task_of(gettid());
        const Tasks before = all_tasks();
        CHILD_CHECK(notes, comn_signal_setup() == CS_SUCCEED);
        const Tasks started = tasks_since(before);
        CHILD_CHECK(notes, started.size() == 1);
        CHILD_CHECK(notes, started.begin()->second.blocked == original.blocked);
        const Task caller = task_of(gettid());
        for (int sig = 1; sig < COMN_SIG_COUNT; ++sig)
            CHILD_CHECK(notes, caller.blocks(sig) ==
                                   (original.blocks(sig) || comn_sig_is_handled_synchronously(sig) == CS_TRUE));
    });
}

TEST(SignalSetup, TwiceIsHarmless) {
    expect_pass([](int notes) {
        CHILD_CHECK(notes, comn_signal_setup() == CS_SUCCEED);
        const Tasks before = all_tasks();
        const Task caller = task_of(gettid());
        CHILD_CHECK(notes, comn_signal_setup() == CS_SUCCEED);
        CHILD_CHECK(notes, tasks_since(before).empty());
        CHILD_CHECK(notes, task_of(gettid()).blocked == caller.blocked);
        const Accepted accepted(notes, SIGUSR1);
        CHILD_CHECK(notes, kill(getpid(), SIGUSR1) == 0);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
    });
}

TEST(SignalSetup, ThreadsOfTheLibraryBlockAllRoutedSignals) {
    expect_pass([](int notes) {
        comn_signal_setup();
        comn_install_handler(SIGUSR1, COMN_SIG_UNBLOCK, nullptr); // the creator's own mask does not count
        const Task creator = task_of(gettid());
        CS_THRDRES *thread = nullptr;
        static std::atomic<pid_t> id = 0;
        static std::atomic<bool> end = false;
        comn_create_thread(
            &thread,
            [](CS_VOID *) -> CS_VOID * {
                id = gettid();
                eventually([] { return end.load(); });
                return nullptr;
            },
            nullptr);
        CHILD_CHECK(notes, task_of(gettid()).blocked == creator.blocked);
        eventually([] { return id != 0; });
        const Task started = task_of(id);
        end = true;
        comn_join_thread(thread);
        for (int sig = 1; sig < COMN_SIG_COUNT; ++sig)
            CHILD_CHECK(notes, started.blocks(sig) == (comn_sig_is_handled_synchronously(sig) == CS_TRUE));
    });
}

TEST(SignalMask, DefaultIsAppliedAndTheOldOnePutBack) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Task library = task_of(gettid());
        comn_install_handler(SIGUSR1, COMN_SIG_UNBLOCK, nullptr);
        block({SIGPIPE});
        const Task own = task_of(gettid());
        sigset_t kept;
        CHILD_CHECK(notes, comn_apply_default_sigblock(&kept) == CS_SUCCEED);
        CHILD_CHECK(notes, task_of(gettid()).blocked == library.blocked);
        CHILD_CHECK(notes, comn_restore_sigblock(&kept) == CS_SUCCEED);
        CHILD_CHECK(notes, task_of(gettid()).blocked == own.blocked);
        CHILD_CHECK(notes, comn_apply_default_sigblock(nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, task_of(gettid()).blocked == library.blocked);
    });
}

TEST(SignalMaskDeathTest, RestoreFromNowhereIsAnAssertion) {
    EXPECT_NULL_REPORT(comn_restore_sigblock(nullptr), "comn_pthread_sigs");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_restore_sigblock(nullptr), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
}

// ---- Signals without a handler ---------------------------------------------------------------------------------

// Every thread of the library, and the one that ran the set-up, blocks them: they land on the catcher.
TEST(UnhandledSignal, EndsTheProcessThoughLibraryThreadsBlockIt) {
    for (const int sig : {SIGTERM, SIGHUP, SIGINT, SIGUSR1, SIGALRM, SIGPWR, SIGRTMIN, SIGRTMAX}) {
        const Ending ending = in_child_with_threads([sig](int notes) {
            comn_signal_setup();
            CHILD_CHECK(notes, task_of(gettid()).blocks(sig));
            kill(getpid(), sig);
            CHILD_CHECK(notes, eventually([] { return false; }));
        });
        EXPECT_TRUE(ending.killed(sig)) << sig << ": " << ending.status;
        EXPECT_EQ(ending.notes, "");
    }
}

TEST(UnhandledSignal, ThatWasBlockedBeforeTheSetupStaysPending) {
    expect_pass([](int notes) {
        block({SIGTERM});
        comn_signal_setup();
        kill(getpid(), SIGTERM);
        sigset_t pending;
        sigpending(&pending);
        CHILD_CHECK(notes, sigismember(&pending, SIGTERM) == 1);
    });
}

// ---- Handlers --------------------------------------------------------------------------------------------------

TEST(Handler, RunsOnItsAcceptThreadWithTheSignalAndTwoZeros) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1);
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
        CHILD_CHECK(notes, last_thread == accepted.id());
        CHILD_CHECK(notes, last_thread != gettid());
        CHILD_CHECK(notes, last_signal == SIGUSR1);
        CHILD_CHECK(notes, last_code == 0);
        CHILD_CHECK(notes, last_info == nullptr);
        for (int n = 2; n <= 20; ++n) {
            kill(getpid(), SIGUSR1);
            CHILD_CHECK(notes, eventually([n] { return calls == n; }));
            CHILD_CHECK(notes, last_thread == accepted.id());
        }
    });
}

TEST(Handler, MayTakeAMutexThatIsHeldAndBlock) {
    expect_pass([](int notes) {
        comn_signal_setup();
        static CS_THRDRES *mutex = nullptr;
        static long plain = 0;
        comn_create_mutex(&mutex);
        comn_take_mutex(mutex);
        const Accepted accepted(notes, SIGTERM, [](CS_INT, CS_INT, CS_VOID *) {
            comn_take_mutex(mutex);
            comn_take_mutex(mutex);
            ++plain;
            comn_release_mutex(mutex);
            comn_release_mutex(mutex);
            ++calls;
        });
        kill(getpid(), SIGTERM);
        CHILD_CHECK(notes, sleeps(accepted.id()));
        ++plain; // this thread goes on meanwhile
        CHILD_CHECK(notes, calls == 0);
        comn_release_mutex(mutex);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
        CHILD_CHECK(notes, plain == 2);
    });
}

TEST(Handler, ThatBlocksHoldsNoOtherSignalUp) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted blocking(notes, SIGUSR1, block_until_released);
        const Accepted other(notes, SIGUSR2);
        CHILD_CHECK(notes, blocking.id() != other.id());
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return entered == 1; }));
        kill(getpid(), SIGUSR2);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
        CHILD_CHECK(notes, last_thread == other.id());
        kill(getpid(), SIGUSR1); // which stays pending
        release_blocked();
        CHILD_CHECK(notes, eventually([] { return entered == 2; }));
        release_blocked();
    });
}

TEST(Handler, MayInstallAnotherInItsPlace) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1, [](CS_INT sig, CS_INT, CS_VOID *) {
            if (comn_install_handler(sig, count_call, nullptr) == CS_SUCCEED)
                ++entered;
        });
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return entered == 1; }));
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
        CHILD_CHECK(notes, last_thread == accepted.id());
    });
}

TEST(Handler, TakesEverySignalThatIsRouted) {
    expect_pass([](int notes) {
        comn_signal_setup();
        int sent = 0;
        for (int sig = 1; sig < COMN_SIG_COUNT; ++sig) {
            if (comn_sig_is_handled_synchronously(sig) == CS_FALSE)
                continue;
            const Accepted accepted(notes, sig);
            kill(getpid(), sig);
            ++sent;
            CHILD_CHECK(notes, eventually([sent] { return calls == sent; }));
            CHILD_CHECK(notes, last_signal == sig);
            CHILD_CHECK(notes, last_thread == accepted.id());
            CHILD_CHECK(notes, comn_install_handler(sig, COMN_SIG_DFL, nullptr) == CS_SUCCEED);
            CHILD_CHECK(notes, accepted.gone());
        }
        CHILD_CHECK(notes, sent == 20 + SIGRTMAX - SIGRTMIN + 1);
    });
}

TEST(Handler, TakesEachRealTimeSignalThatIsQueued) {
    expect_pass([](int notes) {
        comn_signal_setup();
        for (const int sig : {SIGRTMIN, SIGRTMAX}) {
            calls = 0;
            const Accepted accepted(notes, sig);
            for (int n = 0; n < 100; ++n)
                sigqueue(getpid(), sig, {});
            CHILD_CHECK(notes, eventually([] { return calls == 100; }));
            CHILD_CHECK(notes, last_thread == accepted.id());
        }
    });
}

// ---- Installing ------------------------------------------------------------------------------------------------

TEST(Install, HasTheCatcherBlockTheSignalBeforeItReturns) {
    expect_pass([](int notes) {
        const pid_t catcher = set_up(notes);
        for (const int sig : {SIGUSR1, SIGTERM, SIGRTMIN + 3}) {
            CHILD_CHECK(notes, !task_of(catcher).blocks(sig));
            const Tasks before = all_tasks();
            CHILD_CHECK(notes, comn_install_handler(sig, count_call, nullptr) == CS_SUCCEED);
            CHILD_CHECK(notes, task_of(catcher).blocks(sig));
            CHILD_CHECK(notes, tasks_since(before).size() == 1);
            CHILD_CHECK(notes, disposition(sig) == comn__redirect_handler);
        }
        CHILD_CHECK(notes, !task_of(catcher).blocks(SIGUSR2));
    });
}

TEST(Install, FirstAnswersTheDispositionThatItFound) {
    expect_pass([](int notes) {
        comn_signal_setup();
        COMN_SIG_FUNC old = count_call;
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, count_call, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_DFL));
        signal(SIGUSR2, SIG_IGN);
        CHILD_CHECK(notes, comn_install_handler(SIGUSR2, count_call, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_IGN));
        signal(SIGHUP, in_signal_context);
        CHILD_CHECK(notes, comn_install_handler(SIGHUP, count_call, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(in_signal_context));
        kill(getpid(), SIGHUP);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
        CHILD_CHECK(notes, contexts == 0);
    });
}

TEST(Install, OverAHandlerSwapsItWithoutANewThread) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1, count_call);
        const Tasks before = all_tasks();
        COMN_SIG_FUNC old = nullptr;
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, count_other_call, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == count_call);
        CHILD_CHECK(notes, tasks_since(before).empty());
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return other_calls == 1; }));
        CHILD_CHECK(notes, calls == 0);
        CHILD_CHECK(notes, last_thread == accepted.id());
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, count_call, nullptr) == CS_SUCCEED); // and unanswered
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
        CHILD_CHECK(notes, last_thread == accepted.id());
    });
}

TEST(Install, DefaultOverAHandlerEndsItsThreadAndOpensTheCatcher) {
    const Ending ending = in_child_with_threads([](int notes) {
        const pid_t catcher = set_up(notes);
        const Accepted accepted(notes, SIGTERM);
        CHILD_CHECK(notes, task_of(catcher).blocks(SIGTERM));
        COMN_SIG_FUNC old = nullptr;
        CHILD_CHECK(notes, comn_install_handler(SIGTERM, COMN_SIG_DFL, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == count_call);
        CHILD_CHECK(notes, !task_of(catcher).blocks(SIGTERM));
        CHILD_CHECK(notes, disposition(SIGTERM) == SIG_DFL);
        CHILD_CHECK(notes, accepted.gone());
        CHILD_CHECK(notes, calls == 0); // the poke is no signal for the handler
        kill(getpid(), SIGTERM);
        eventually([] { return false; });
    });
    EXPECT_TRUE(ending.killed(SIGTERM)) << ending.status;
    EXPECT_EQ(ending.notes, "");
}

TEST(Install, IgnoreOverAHandlerEndsItsThreadAndOpensTheCatcher) {
    expect_pass([](int notes) {
        const pid_t catcher = set_up(notes);
        const Accepted accepted(notes, SIGTERM);
        COMN_SIG_FUNC old = nullptr;
        CHILD_CHECK(notes, comn_install_handler(SIGTERM, COMN_SIG_IGN, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == count_call);
        CHILD_CHECK(notes, !task_of(catcher).blocks(SIGTERM));
        CHILD_CHECK(notes, disposition(SIGTERM) == SIG_IGN);
        CHILD_CHECK(notes, accepted.gone());
        kill(getpid(), SIGTERM);
        CHILD_CHECK(notes, calls == 0);
        // It can be installed again.
        const Accepted again(notes, SIGTERM);
        kill(getpid(), SIGTERM);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
    });
}

// While a handler runs its thread cannot be joined: what the disposition is then tells on which side of the
// join it changes. The default comes before it, since the poke reaches the thread whatever the default does;
// ignoring comes behind it.
TEST(Install, DefaultChangesTheDispositionBeforeTheThreadEndsAndIgnoreBehind) {
    for (const COMN_SIG_FUNC removal : {COMN_SIG_DFL, COMN_SIG_IGN})
        expect_pass([removal](int notes) {
            comn_signal_setup();
            const Accepted accepted(notes, SIGUSR1, block_until_released);
            kill(getpid(), SIGUSR1);
            CHILD_CHECK(notes, eventually([] { return entered == 1; }));
            support::Runner remover([removal] { comn_install_handler(SIGUSR1, removal, nullptr); });
            CHILD_CHECK(notes, eventually([&] { return accepted.pending(); })); // the poke is out
            CHILD_CHECK(notes, sleeps(remover.id()));
            CHILD_CHECK(notes, disposition(SIGUSR1) == (removal == COMN_SIG_DFL ? SIG_DFL : comn__redirect_handler));
            release_blocked();
            remover.join();
            CHILD_CHECK(notes, disposition(SIGUSR1) == (removal == COMN_SIG_DFL ? SIG_DFL : SIG_IGN));
            CHILD_CHECK(notes, accepted.gone());
            CHILD_CHECK(notes, entered == 1);
        });
}

TEST(Install, PlainDispositionsWithoutAHandlerStartNoThread) {
    expect_pass([](int notes) {
        const pid_t catcher = set_up(notes);
        const Tasks before = all_tasks();
        COMN_SIG_FUNC old = count_call;
        CHILD_CHECK(notes, comn_install_handler(SIGTERM, COMN_SIG_IGN, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_DFL));
        CHILD_CHECK(notes, disposition(SIGTERM) == SIG_IGN);
        kill(getpid(), SIGTERM);
        CHILD_CHECK(notes, thrown_away(SIGTERM));
        CHILD_CHECK(notes, comn_install_handler(SIGTERM, COMN_SIG_DFL, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_IGN));
        CHILD_CHECK(notes, disposition(SIGTERM) == SIG_DFL);
        CHILD_CHECK(notes, comn_install_handler(SIGTERM, COMN_SIG_DFL, nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, tasks_since(before).empty());
        CHILD_CHECK(notes, !task_of(catcher).blocks(SIGTERM));
    });
}

// Their handlers run in signal context, on whatever thread the signal hits.
TEST(Install, SignalsThatAreNotRoutedGetPlainDispositions) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Tasks before = all_tasks();
        COMN_SIG_FUNC old = count_call;
        CHILD_CHECK(notes, comn_install_handler(SIGPIPE, as_handler(in_signal_context), &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_DFL));
        CHILD_CHECK(notes, disposition(SIGPIPE) == in_signal_context);
        raise(SIGPIPE);
        CHILD_CHECK(notes, contexts == 1);
        CHILD_CHECK(notes, comn_install_handler(SIGPIPE, COMN_SIG_IGN, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(in_signal_context));
        CHILD_CHECK(notes, disposition(SIGPIPE) == SIG_IGN);
        CHILD_CHECK(notes, comn_install_handler(SIGPIPE, COMN_SIG_DFL, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_IGN));
        CHILD_CHECK(notes, disposition(SIGPIPE) == SIG_DFL);
        CHILD_CHECK(notes, tasks_since(before).empty());
    });
}

TEST(Install, AnsweredSigIgnMayBeGivenBack) {
    expect_pass([](int notes) {
        comn_signal_setup();
        signal(SIGTERM, SIG_IGN);
        COMN_SIG_FUNC old = nullptr;
        comn_install_handler(SIGTERM, count_call, &old);
        CHILD_CHECK(notes, comn_install_handler(SIGTERM, old, nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, disposition(SIGTERM) == SIG_IGN);
        kill(getpid(), SIGTERM);
        CHILD_CHECK(notes, thrown_away(SIGTERM));
        CHILD_CHECK(notes, calls == 0);
        CHILD_CHECK(notes, comn_install_handler(SIGPIPE, old, nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, disposition(SIGPIPE) == SIG_IGN);
    });
}

TEST(Install, NullOnlyAsks) {
    expect_pass([](int notes) {
        comn_signal_setup();
        COMN_SIG_FUNC old = count_call;
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, nullptr, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_DFL));
        const Accepted accepted(notes, SIGUSR1);
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, nullptr, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == count_call);
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, nullptr, nullptr) == CS_SUCCEED);
        signal(SIGPIPE, in_signal_context);
        CHILD_CHECK(notes, comn_install_handler(SIGPIPE, nullptr, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(in_signal_context));
        CHILD_CHECK(notes, disposition(SIGPIPE) == in_signal_context);
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
    });
}

TEST(Install, BlockAndUnblockChangeTheCallersMaskAlone) {
    expect_pass([](int notes) {
        const pid_t catcher = set_up(notes);
        const Task before = task_of(catcher);
        for (const int sig : {SIGUSR1, SIGPIPE, SIGRTMIN}) {
            CHILD_CHECK(notes, comn_install_handler(sig, COMN_SIG_UNBLOCK, nullptr) == CS_SUCCEED);
            CHILD_CHECK(notes, !task_of(gettid()).blocks(sig));
            COMN_SIG_FUNC old = count_call;
            CHILD_CHECK(notes, comn_install_handler(sig, COMN_SIG_BLOCK, &old) == CS_SUCCEED);
            CHILD_CHECK(notes, task_of(gettid()).blocks(sig));
            CHILD_CHECK(notes, old == count_call); // nothing to answer
            CHILD_CHECK(notes, disposition(sig) == SIG_DFL);
        }
        CHILD_CHECK(notes, task_of(catcher).blocked == before.blocked);
        CHILD_CHECK(notes, task_of(gettid()).blocks(SIGUSR2)); // the others as they were
    });
}

TEST(Install, BlockAndUnblockTakeNoLock) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1, block_until_released);
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return entered == 1; }));
        // Holds the lock for as long as the handler runs.
        support::Runner remover([] { comn_install_handler(SIGUSR1, COMN_SIG_DFL, nullptr); });
        CHILD_CHECK(notes, eventually([&] { return accepted.pending(); }));
        CHILD_CHECK(notes, comn_install_handler(SIGUSR2, COMN_SIG_UNBLOCK, nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, comn_install_handler(SIGUSR2, COMN_SIG_BLOCK, nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, entered == 1);
        release_blocked();
    });
}

TEST(Install, BadNumbersFail) {
    expect_pass([](int notes) {
        comn_signal_setup();
        constexpr CS_INT MOST = std::numeric_limits<CS_INT>::max();
        constexpr CS_INT LEAST = std::numeric_limits<CS_INT>::min();
        for (const COMN_SIG_FUNC handler :
             {COMN_SIG_FUNC{count_call}, COMN_SIG_DFL, COMN_SIG_IGN, COMN_SIG_BLOCK, COMN_SIG_UNBLOCK})
            for (const CS_INT sig : {65, 66, 1000, MOST, -1, LEAST, 0})
                CHILD_CHECK(notes, comn_install_handler(sig, handler, nullptr) == CS_FAIL);
        // Numbers that the system lets nobody handle, and those that it keeps for itself.
        for (const CS_INT sig : {SIGKILL, SIGSTOP, 32, 33}) {
            COMN_SIG_FUNC old = count_call;
            CHILD_CHECK(notes, comn_install_handler(sig, count_other_call, &old) == CS_FAIL);
            CHILD_CHECK(notes, old == count_call);
        }
    });
}

TEST(InstallDeathTest, BeforeTheSetupIsAnAssertion) {
    EXPECT_BOMB(comn_install_handler(SIGUSR1, count_call, nullptr), "comn_pthread_sigs");
    EXPECT_BOMB(comn_install_handler(SIGUSR1, COMN_SIG_BLOCK, nullptr), "comn_pthread_sigs");
    EXPECT_BOMB(comn_install_handler(65, count_call, nullptr), "comn_pthread_sigs");
    EXPECT_BOMB(comn_signal_exit(), "comn_pthread_sigs");
}

TEST(Install, BeforeTheSetupFailsWhereAssertionsReturn) {
    COMN_SIG_FUNC old = count_call;
    const Task before = task_of(gettid());
    const ReturningAssertions returning;
    EXPECT_EQ(comn_install_handler(SIGUSR1, count_other_call, &old), CS_FAIL);
    EXPECT_EQ(comn_install_handler(SIGUSR1, COMN_SIG_BLOCK, &old), CS_FAIL);
    EXPECT_EQ(comn_signal_exit(), CS_FAIL);
    EXPECT_EQ(returning.count(), 3);
    EXPECT_EQ(old, count_call);
    EXPECT_EQ(disposition(SIGUSR1), SIG_DFL);
    EXPECT_EQ(task_of(gettid()).blocked, before.blocked);
}

TEST(Install, IsSafeFromManyThreadsAtOnce) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Tasks before = all_tasks();
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([notes, t] {
                for (int i = 0; i < 25; ++i) {
                    const int sig = SIGRTMIN + (i + t) % 3;
                    const COMN_SIG_FUNC handler = (i + t) % 2 == 0 ? count_call : COMN_SIG_IGN;
                    CHILD_CHECK(notes, comn_install_handler(sig, handler, nullptr) == CS_SUCCEED);
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        for (int sig = SIGRTMIN; sig < SIGRTMIN + 3; ++sig)
            CHILD_CHECK(notes, comn_install_handler(sig, COMN_SIG_IGN, nullptr) == CS_SUCCEED);
        CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
    });
}

// ---- Dispositions ----------------------------------------------------------------------------------------------

TEST(Sigaction, BlocksAllRoutedSignalsInTheHandlerAndSetsNoFlags) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1);
        comn_install_handler(SIGPIPE, as_handler(in_signal_context), nullptr);
        for (const int sig : {SIGUSR1, SIGPIPE}) {
            struct sigaction action;
            sigaction(sig, nullptr, &action);
            constexpr int FLAGS = SA_RESTART | SA_SIGINFO | SA_NODEFER | SA_ONSTACK | SA_NOCLDSTOP | SA_NOCLDWAIT;
            CHILD_CHECK(notes, (action.sa_flags & FLAGS) == 0); // the C library adds one of its own
            for (int other = 1; other < COMN_SIG_COUNT; ++other)
                if (other != 32 && other != 33) // which the C library keeps for itself
                    CHILD_CHECK(notes, (sigismember(&action.sa_mask, other) == 1) ==
                                           (comn_sig_is_handled_synchronously(other) == CS_TRUE));
        }
    });
}

TEST(Sigaction, ReadsAndChangesWithoutRouting) {
    expect_pass([](int notes) {
        COMN_SIG_FUNC old = count_call;
        CHILD_CHECK(notes, comn__sigaction(SIGUSR1, nullptr, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_DFL));
        CHILD_CHECK(notes, comn__sigaction(SIGUSR1, COMN_SIG_IGN, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, comn__sigaction(SIGUSR1, nullptr, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(SIG_IGN));
        CHILD_CHECK(notes, disposition(SIGUSR1) == SIG_IGN);
        CHILD_CHECK(notes, comn__sigaction(SIGUSR1, as_handler(in_signal_context), nullptr) == CS_SUCCEED);
        raise(SIGUSR1);
        CHILD_CHECK(notes, contexts == 1);
        CHILD_CHECK(notes, comn__sigaction(SIGUSR1, COMN_SIG_DFL, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == as_handler(in_signal_context));
        CHILD_CHECK(notes, comn__sigaction(SIGKILL, COMN_SIG_IGN, &old) == CS_FAIL);
        CHILD_CHECK(notes, comn__sigaction(65, nullptr, &old) == CS_FAIL);
    });
}

// ---- Threads that have the signal open -------------------------------------------------------------------------

TEST(Redirection, HandsASignalThatHitsAForeignThreadToTheAcceptThread) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1);
        std::atomic<bool> end = false;
        support::Runner foreign([&] {
            comn_install_handler(SIGUSR1, COMN_SIG_UNBLOCK, nullptr);
            eventually([&] { return end.load(); });
        });
        CHILD_CHECK(notes, eventually([&] { return !task_of(foreign.id()).blocks(SIGUSR1); }));
        for (int n = 1; n <= 50; ++n) {
            if (n % 2 == 0)
                pthread_kill(foreign.handle(), SIGUSR1); // it can only go through the foreign thread
            else
                kill(getpid(), SIGUSR1);
            CHILD_CHECK(notes, eventually([n] { return calls == n; }));
            CHILD_CHECK(notes, last_thread == accepted.id());
        }
        end = true;
    });
}

TEST(Redirection, WithoutAHandlerDoesNothing) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1);
        constexpr int MOST = std::numeric_limits<int>::max();
        for (const int sig : {-1, 0, SIGUSR2, SIGTERM, SIGSEGV, 64, 65, 1000, MOST})
            comn__redirect_handler(sig);
        errno = 77;
        comn__redirect_handler(SIGUSR1);
        CHILD_CHECK(notes, errno == 77);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
    });
}

// Handlers come and go while signals rain on a thread that has them open: each removal must let redirections
// through that already have the accept thread's handle.
TEST(Redirection, OutlivesTheRemovalOfItsHandler) {
    expect_pass([](int notes) {
        comn_signal_setup();
        comn_install_handler(SIGUSR1, COMN_SIG_IGN, nullptr);
        std::atomic<bool> end = false;
        support::Runner foreign([&] {
            comn_install_handler(SIGUSR1, COMN_SIG_UNBLOCK, nullptr);
            while (!end)
                raise(SIGUSR1);
        });
        for (int i = 0; i < 100; ++i) {
            CHILD_CHECK(notes, comn_install_handler(SIGUSR1, count_call, nullptr) == CS_SUCCEED);
            const int before = calls;
            CHILD_CHECK(notes, eventually([before] { return calls > before; }));
            CHILD_CHECK(notes, comn_install_handler(SIGUSR1, COMN_SIG_IGN, nullptr) == CS_SUCCEED);
        }
        end = true;
    });
}

} // namespace
