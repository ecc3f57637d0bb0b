// The end of signal routing and a new start, and what failures of the system do to both. Each test runs in a
// child process of its own.
#include "support/assertions.h"
#include "support/failing_allocator.h"
#include "support/failing_system.h"
#include "support/routing.h"

#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>

namespace {

using support::all_tasks;
using support::Ending;
using support::eventually;
using support::FailingAllocator;
using support::FailingSystem;
using support::ReturningAssertions;
using support::sleeps;
using support::Task;
using support::task_of;
using support::Tasks;
using support::tasks_since;
using namespace support::routing;

constexpr int MOST_FILES = 64;

// The descriptors that are open.
std::vector<bool> open_files() {
    std::vector<bool> files(MOST_FILES);
    for (int file = 0; file < MOST_FILES; ++file)
        files[static_cast<std::size_t>(file)] = fcntl(file, F_GETFD) >= 0;
    return files;
}

struct Pipe {
    int read_end = -1;
    int write_end = -1;
    pid_t catcher = 0;
};

// Starts routing; its pipe, at which the catcher reads by then.
Pipe set_up_with_pipe(int notes) {
    const std::vector<bool> before = open_files();
    Pipe pipe;
    pipe.catcher = set_up(notes);
    CHILD_CHECK(notes, sleeps(pipe.catcher));
    for (int file = 0; file < MOST_FILES; ++file)
        if (!before[static_cast<std::size_t>(file)] && fcntl(file, F_GETFD) >= 0)
            ((fcntl(file, F_GETFL) & O_ACCMODE) == O_RDONLY ? pipe.read_end : pipe.write_end) = file;
    CHILD_CHECK(notes, pipe.read_end >= 0 && pipe.write_end >= 0);
    return pipe;
}

// Leaves a write end that cannot be written to; the catcher sees the end of its pipe.
void break_off(const Pipe &pipe) {
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, pipe.write_end);
    close(nothing);
}

// The catcher's read that is under way still gets its byte. The next one is at `path`.
void replace_read_end(const Pipe &pipe, const char *path, int flags) {
    const int file = open(path, flags);
    dup2(file, pipe.read_end);
    close(file);
}

bool ends(pid_t task) {
    return eventually([task] { return all_tasks().count(task) == 0; });
}

// ---- The end ---------------------------------------------------------------------------------------------------

TEST(SignalExit, EndsTheCatcherAndClosesThePipe) {
    expect_pass([](int notes) {
        const Tasks before = all_tasks();
        const std::vector<bool> files = open_files();
        for (int round = 0; round < 20; ++round) {
            const Pipe pipe = set_up_with_pipe(notes);
            CHILD_CHECK(notes, (fcntl(pipe.read_end, F_GETFD) & FD_CLOEXEC) != 0); // none of a child program's business
            CHILD_CHECK(notes, (fcntl(pipe.write_end, F_GETFD) & FD_CLOEXEC) != 0);
            CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
            CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
            CHILD_CHECK(notes, open_files() == files);
        }
    });
}

TEST(SignalExit, PutsTheOriginalMaskBack) {
    expect_pass([](int notes) {
        block({SIGUSR1, SIGPIPE});
        const Task original = task_of(gettid());
        comn_signal_setup();
        block({SIGPROF}); // what was blocked since is put back as well
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
        CHILD_CHECK(notes, task_of(gettid()).blocked == original.blocked);
    });
}

TEST(SignalExit, LeavesSignalsUnblockedThatTheApplicationUnblockedSince) {
    expect_pass([](int notes) {
        block({SIGUSR1, SIGUSR2, SIGPIPE});
        comn_signal_setup();
        comn_install_handler(SIGUSR1, COMN_SIG_UNBLOCK, nullptr); // routed, and blocked originally
        comn_install_handler(SIGPIPE, COMN_SIG_UNBLOCK, nullptr); // neither routed
        comn_install_handler(SIGTERM, COMN_SIG_UNBLOCK, nullptr); // nor blocked originally
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
        const Task now = task_of(gettid());
        CHILD_CHECK(notes, !now.blocks(SIGUSR1));
        CHILD_CHECK(notes, !now.blocks(SIGPIPE));
        CHILD_CHECK(notes, !now.blocks(SIGTERM));
        CHILD_CHECK(notes, now.blocks(SIGUSR2));
        CHILD_CHECK(notes, !now.blocks(SIGHUP));
    });
}

TEST(SignalExit, LetsAcceptThreadsAndTheirHandlersLive) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1);
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
        CHILD_CHECK(notes, all_tasks().count(accepted.id()) == 1);
        for (int n = 1; n <= 10; ++n) { // through the accept thread, or through this one, which has it open again
            kill(getpid(), SIGUSR1);
            CHILD_CHECK(notes, eventually([n] { return calls == n; }));
            CHILD_CHECK(notes, last_thread == accepted.id());
        }
    });
}

TEST(SignalExit, IsFollowedByAssertionsInInstalls) {
    const Ending ending = in_child_with_threads([](int) {
        comn_signal_setup();
        comn_signal_exit();
        comn_install_handler(SIGUSR1, count_call, nullptr);
    });
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
    EXPECT_NE(ending.err.find("assertion failed, file 'generic/src/comn_pthread_sigs.cpp'"), std::string::npos);
}

TEST(SignalExit, TwiceIsAnAssertion) {
    const Ending ending = in_child_with_threads([](int notes) {
        comn_signal_setup();
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
        comn_signal_exit();
    });
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
    EXPECT_EQ(ending.notes, "");
}

TEST(SignalExit, WithoutAWayToTheCatcherClosesThePipeUnderIt) {
    expect_pass([](int notes) {
        const Tasks before = all_tasks();
        const Pipe pipe = set_up_with_pipe(notes);
        break_off(pipe);
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
        CHILD_CHECK(notes, fcntl(pipe.write_end, F_GETFD) < 0);
        CHILD_CHECK(notes, fcntl(pipe.read_end, F_GETFD) < 0);
        CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
        CHILD_CHECK(notes, comn_signal_setup() == CS_SUCCEED);
    });
}

// ---- A new start -----------------------------------------------------------------------------------------------

TEST(SignalRestart, RoutesAsTheFirstDid) {
    expect_pass([](int notes) {
        for (int round = 1; round <= 3; ++round) {
            const pid_t catcher = set_up(notes);
            CHILD_CHECK(notes, task_of(gettid()).blocks(SIGUSR1));
            const Accepted accepted(notes, SIGUSR1);
            CHILD_CHECK(notes, task_of(catcher).blocks(SIGUSR1));
            kill(getpid(), SIGUSR1);
            CHILD_CHECK(notes, eventually([round] { return calls == round; }));
            CHILD_CHECK(notes, last_thread == accepted.id());
            CHILD_CHECK(notes, comn_install_handler(SIGUSR1, COMN_SIG_DFL, nullptr) == CS_SUCCEED);
            CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
            CHILD_CHECK(notes, !task_of(gettid()).blocks(SIGUSR1));
        }
    });
}

TEST(SignalRestart, EndsAcceptThreadsThatOutlivedTheExit) {
    expect_pass([](int notes) {
        comn_signal_setup();
        const Accepted first(notes, SIGUSR1, count_other_call);
        comn_signal_exit();
        const pid_t catcher = set_up(notes);
        CHILD_CHECK(notes, first.gone());
        CHILD_CHECK(notes, disposition(SIGUSR1) == SIG_DFL);
        CHILD_CHECK(notes, !task_of(catcher).blocks(SIGUSR1));
        COMN_SIG_FUNC old = count_other_call;
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, nullptr, &old) == CS_SUCCEED);
        CHILD_CHECK(notes, old == nullptr); // the former handler is forgotten
        const Accepted second(notes, SIGUSR1);
        for (int n = 1; n <= 10; ++n) {
            kill(getpid(), SIGUSR1);
            CHILD_CHECK(notes, eventually([n] { return calls == n; }));
            CHILD_CHECK(notes, last_thread == second.id());
        }
        CHILD_CHECK(notes, other_calls == 0);
    });
}

// Where the signal was ignored at first the thread is reached all the same, and then it is ignored again.
TEST(SignalRestart, EndsAcceptThreadsOfSignalsThatWereIgnored) {
    expect_pass([](int notes) {
        signal(SIGUSR1, SIG_IGN);
        comn_signal_setup();
        const Accepted accepted(notes, SIGUSR1);
        comn_signal_exit();
        comn_signal_setup();
        CHILD_CHECK(notes, accepted.gone());
        CHILD_CHECK(notes, disposition(SIGUSR1) == SIG_IGN);
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, thrown_away(SIGUSR1));
        CHILD_CHECK(notes, calls == 0);
    });
}

TEST(SignalRestart, GivesASignalWithAFormerHandlerItsNormalEffect) {
    const Ending ending = in_child_with_threads([](int notes) {
        comn_signal_setup();
        const Accepted accepted(notes, SIGTERM);
        comn_signal_exit();
        comn_signal_setup();
        kill(getpid(), SIGTERM);
        eventually([] { return false; });
    });
    EXPECT_TRUE(ending.killed(SIGTERM)) << ending.status;
    EXPECT_EQ(ending.notes, "");
}

// ---- Failures of the system ------------------------------------------------------------------------------------

void expect_assertion(const Ending &ending, const std::string &text) {
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
    EXPECT_NE(ending.err.find(text), std::string::npos) << ending.err;
    EXPECT_NE(ending.err.find("assertion failed, file 'generic/src/comn_p"), std::string::npos) << ending.err;
    EXPECT_EQ(ending.notes, "");
}

void refuse_files() {
    const rlimit none = {3, 3}; // of the hard limit nothing is taken back: a child of its own
    setrlimit(RLIMIT_NOFILE, &none);
}

TEST(SignalFailure, WithoutAPipeTheSetupSaysSoAndAsserts) {
    expect_assertion(in_child_with_threads([](int) {
                         refuse_files();
                         comn_signal_setup();
                     }),
                     "pipe(do_update_block_event) failed:: Too many open files");
}

TEST(SignalFailure, WithoutAPipeTheSetupFailsWhereAssertionsReturn) {
    expect_pass([](int notes) {
        rlimit limit;
        getrlimit(RLIMIT_NOFILE, &limit);
        const Tasks before = all_tasks();
        const Task caller = task_of(gettid());
        {
            const ReturningAssertions returning;
            const FailingAllocator allocator;
            const rlimit none = {3, limit.rlim_max};
            setrlimit(RLIMIT_NOFILE, &none);
            CHILD_CHECK(notes, comn_signal_setup() == CS_FAIL);
            setrlimit(RLIMIT_NOFILE, &limit);
            CHILD_CHECK(notes, returning.count() == 1);
            CHILD_CHECK(notes, allocator.held() == 0);
        }
        CHILD_CHECK(notes, tasks_since(before).empty());
        CHILD_CHECK(notes, task_of(gettid()).blocked == caller.blocked);
        CHILD_CHECK(notes, comn_signal_setup() == CS_SUCCEED);
    });
}

TEST(SignalFailure, OfTheWriteInAnInstallIsSaidAndAsserted) {
    expect_assertion(in_child_with_threads([](int notes) {
                         const Pipe pipe = set_up_with_pipe(notes);
                         break_off(pipe);
                         comn_install_handler(SIGUSR1, count_call, nullptr);
                     }),
                     "write(do_update_block_event) failed:: Bad file descriptor");
}

TEST(SignalFailure, OfTheWriteInAnInstallFailsWhereAssertionsReturn) {
    expect_pass([](int notes) {
        const Pipe pipe = set_up_with_pipe(notes);
        unblock_abort();
        break_off(pipe);
        const Tasks before = all_tasks();
        COMN_SIG_FUNC old = count_call;
        const ReturningAssertions returning;
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, count_other_call, &old) == CS_FAIL);
        CHILD_CHECK(notes, returning.count() == 1);
        CHILD_CHECK(notes, old == count_call);
        CHILD_CHECK(notes, disposition(SIGUSR1) == SIG_DFL);
        CHILD_CHECK(notes, tasks_since(before).empty());
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
    });
}

TEST(SignalFailure, OfTheReadIsSaidByTheCatcherAndAsserted) {
    expect_assertion(in_child_with_threads([](int notes) {
                         const Pipe pipe = set_up_with_pipe(notes);
                         replace_read_end(pipe, "/", O_RDONLY); // a directory cannot be read
                         comn_install_handler(SIGUSR1, count_call, nullptr);
                         eventually([] { return false; });
                     }),
                     "read(do_update_block_event) failed:: Is a directory");
}

TEST(SignalFailure, OfTheReadEndsTheCatcherWhereAssertionsReturn) {
    expect_pass([](int notes) {
        const ReturningAssertions returning;
        const Pipe pipe = set_up_with_pipe(notes);
        replace_read_end(pipe, "/", O_RDONLY);
        comn_install_handler(SIGUSR1, count_call, nullptr);
        CHILD_CHECK(notes, ends(pipe.catcher));
        break_off(pipe);
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
    });
}

TEST(Catcher, EndsAtTheEndOfItsPipe) {
    expect_pass([](int notes) {
        const Pipe pipe = set_up_with_pipe(notes);
        close(pipe.write_end);
        CHILD_CHECK(notes, ends(pipe.catcher));
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
    });
}

TEST(Catcher, EndsWhereItsEndOfThePipeWasClosed) {
    expect_pass([](int notes) {
        const Pipe pipe = set_up_with_pipe(notes);
        replace_read_end(pipe, "/dev/null", O_WRONLY); // to be read like a closed one, and nobody else's
        const char command = 'u';
        CHILD_CHECK(notes, write(pipe.write_end, &command, 1) == 1);
        CHILD_CHECK(notes, ends(pipe.catcher));
        break_off(pipe);
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
    });
}

// Signals that are not routed run their handlers anywhere, and so in the catcher's read.
TEST(Catcher, ReadsAgainAfterAnInterruption) {
    expect_pass([](int notes) {
        const Pipe pipe = set_up_with_pipe(notes);
        struct sigaction action = {};
        action.sa_handler = in_signal_context; // without a restart of system calls
        sigaction(SIGPROF, &action, nullptr);
        for (int n = 1; n <= 5; ++n) {
            tgkill(getpid(), pipe.catcher, SIGPROF);
            CHILD_CHECK(notes, eventually([n] { return contexts == n; }));
            CHILD_CHECK(notes, sleeps(pipe.catcher));
        }
        const Accepted accepted(notes, SIGUSR1);
        CHILD_CHECK(notes, task_of(pipe.catcher).blocks(SIGUSR1));
        CHILD_CHECK(notes, comn_signal_exit() == CS_SUCCEED);
    });
}

// ---- Parts -----------------------------------------------------------------------------------------------------

TEST(RoutingPartsDeathTest, WithoutRoutingAreAssertions) {
    EXPECT_BOMB(comn__install_accept_thread(SIGUSR1, count_call, nullptr), "comn_pthread_sigs");
    EXPECT_BOMB(comn__uninstall_accept_thread(SIGUSR1, COMN_SIG_DFL, nullptr), "comn_pthread_sigs");
    EXPECT_BOMB(comn__sig_catcher_thread(nullptr), "comn_pthread_sigs");
    EXPECT_BOMB(comn__sig_accept_thread(nullptr), "comn_pthread_sigs"); // 0 is no signal
}

TEST(RoutingParts, MisusedFailWhereAssertionsReturn) {
    expect_pass([](int notes) {
        COMN_SIG_FUNC old = count_call;
        {
            const ReturningAssertions returning;
            CHILD_CHECK(notes, comn__install_accept_thread(SIGUSR1, count_other_call, &old) == CS_FAIL);
            CHILD_CHECK(notes, comn__uninstall_accept_thread(SIGUSR1, COMN_SIG_DFL, &old) == CS_FAIL);
            CHILD_CHECK(notes, comn__sig_catcher_thread(nullptr) == nullptr);
            CHILD_CHECK(notes, comn__sig_accept_thread(reinterpret_cast<CS_VOID *>(65)) == nullptr);
            CHILD_CHECK(notes, returning.count() == 4);
        }
        comn_signal_setup();
        unblock_abort();
        const Accepted accepted(notes, SIGUSR1);
        const Tasks before = all_tasks();
        {
            const ReturningAssertions returning;
            for (const CS_INT sig : {-1, 0, SIGPIPE, 65, 1000, SIGUSR1}) // one that has a handler among them
                CHILD_CHECK(notes, comn__install_accept_thread(sig, count_other_call, &old) == CS_FAIL);
            for (const CS_INT sig : {-1, 0, SIGPIPE, 65, 1000, SIGUSR2}) // and one that has none
                CHILD_CHECK(notes, comn__uninstall_accept_thread(sig, COMN_SIG_DFL, &old) == CS_FAIL);
            CHILD_CHECK(notes, returning.count() == 12);
        }
        CHILD_CHECK(notes, old == count_call);
        CHILD_CHECK(notes, tasks_since(before).empty());
        kill(getpid(), SIGUSR1);
        CHILD_CHECK(notes, eventually([] { return calls == 1; }));
        CHILD_CHECK(notes, last_thread == accepted.id());
    });
}

// ---- Refusals in turn ------------------------------------------------------------------------------------------

// The reading of the mask, both changes around the catcher's creation, the caller's default.
TEST(SignalFailure, OfEachMaskInASetUpLeavesNothingWhereAssertionsReturn) {
    for (int n = 1; n <= 4; ++n)
        expect_pass([n](int notes) {
            const Tasks before = all_tasks();
            const std::vector<bool> files = open_files();
            const Task caller = task_of(gettid());
            {
                const ReturningAssertions returning;
                const FailingAllocator allocator;
                const FailingSystem failing("pthread_sigmask", n);
                CHILD_CHECK(notes, comn_signal_setup() == CS_FAIL);
                CHILD_CHECK(notes, returning.count() >= 1);
                CHILD_CHECK(notes, allocator.held() == 0);
            }
            CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
            CHILD_CHECK(notes, open_files() == files);
            CHILD_CHECK(notes, task_of(gettid()).blocked == caller.blocked);
            CHILD_CHECK(notes, comn_signal_setup() == CS_SUCCEED);
        });
}

// Each allocation of a set-up or an install failing in turn. Those of the system for a new thread are among them.
struct Step {
    const char *name;
    CS_RETCODE (*run)();
    CS_RETCODE (*undo)();
    bool within_routing;
};

class OutOfMemory : public testing::TestWithParam<Step> {};

TEST_P(OutOfMemory, LeavesNothingWhereAssertionsReturn) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        expect_pass([span](int notes) {
            const Step &step = GetParam();
            if (step.within_routing)
                comn_signal_setup();
            unblock_abort();
            for (int n = 1;; ++n) {
                const Tasks before = all_tasks();
                const std::vector<bool> files = open_files();
                const Task caller = task_of(gettid());
                CS_RETCODE status = 0;
                int asked = 0;
                int held = 0;
                int count = 0;
                {
                    const ReturningAssertions returning;
                    const FailingAllocator allocator(n, span);
                    status = step.run();
                    asked = allocator.asked();
                    held = allocator.held();
                    count = returning.count();
                }
                if (status == CS_SUCCEED) {
                    CHILD_CHECK(notes, asked < n);
                    CHILD_CHECK(notes, n > 1);
                    CHILD_CHECK(notes, step.undo() == CS_SUCCEED);
                    break;
                }
                CHILD_CHECK(notes, status == CS_FAIL);
                CHILD_CHECK(notes, count >= 1);
                CHILD_CHECK(notes, held == 0);
                CHILD_CHECK(notes, eventually([&] { return tasks_since(before).empty(); }));
                CHILD_CHECK(notes, open_files() == files);
                CHILD_CHECK(notes, task_of(gettid()).blocked == caller.blocked);
                CHILD_CHECK(notes, disposition(SIGUSR1) == SIG_DFL);
            }
        });
}

constexpr Step STEPS[] = {
    {"setup", comn_signal_setup, comn_signal_exit, false},
    {"install", [] { return comn_install_handler(SIGUSR1, count_call, nullptr); },
     []() -> CS_RETCODE {
         kill(getpid(), SIGUSR1);
         return eventually([] { return calls == 1; }) ? CS_SUCCEED : CS_FAIL;
     },
     true},
};
INSTANTIATE_TEST_SUITE_P(Steps, OutOfMemory, testing::ValuesIn(STEPS),
                         [](const auto &step) { return std::string(step.param.name); });

TEST(SignalFailure, ForWantOfMemoryOrAThreadIsAnAssertion) {
    for (int n = 1; n <= 3; ++n) // the lock, the event, the catcher's handle
        expect_assertion(in_child_with_threads([n](int) {
                             const FailingAllocator allocator(n);
                             comn_signal_setup();
                         }),
                         "");
    expect_assertion(in_child_with_threads([](int) {
                         comn_signal_setup();
                         const FailingAllocator allocator(1);
                         comn_install_handler(SIGUSR1, count_call, nullptr);
                     }),
                     "");
    for (const char *function : {"pthread_create", "pthread_sigmask", "pthread_mutex_init", "pthread_cond_init"})
        expect_assertion(in_child_with_threads([function](int) {
                             const FailingSystem failing(function);
                             comn_signal_setup();
                         }),
                         "");
    expect_assertion(in_child_with_threads([](int) {
                         comn_signal_setup();
                         const FailingSystem failing("pthread_sigmask");
                         comn_signal_exit();
                     }),
                     "");
}

TEST(SignalFailure, OfAMaskFailsWhereItIsAskedFor) {
    expect_pass([](int notes) {
        comn_signal_setup();
        sigset_t kept;
        const FailingSystem failing("pthread_sigmask");
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, COMN_SIG_BLOCK, nullptr) == CS_FAIL);
        CHILD_CHECK(notes, comn_install_handler(SIGUSR1, COMN_SIG_UNBLOCK, nullptr) == CS_FAIL);
        CHILD_CHECK(notes, comn_apply_default_sigblock(&kept) == CS_FAIL);
        CHILD_CHECK(notes, comn_restore_sigblock(&kept) == CS_FAIL);
    });
}

} // namespace
