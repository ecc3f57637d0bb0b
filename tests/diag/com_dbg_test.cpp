// Assertion exits in both modes, the trace of status codes, bounded copies, the start-up error file.
#include "support/assertions.h"
#include "support/child.h"
#include "support/debug_output.h"
#include "support/temp_directory.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using support::DebugOutput;
using support::Ending;
using support::in_child;
using support::note;
using support::ReturningAssertions;

// ---- Assertion exits ------------------------------------------------------------------------

int notes_of_handler = -1;

void note_state_of_standard_error(int) {
    errno = 0;
    const bool closed = fcntl(STDERR_FILENO, F_GETFD) == -1 && errno == EBADF;
    note(notes_of_handler, closed ? "closed" : "open");
}

TEST(ComDbgAbort, FullModeClosesStandardErrorBeforeItAborts) {
    const Ending ending = in_child([](int notes) {
        notes_of_handler = notes;
        std::signal(SIGABRT, note_state_of_standard_error);
        com__abort();
        note(notes, " and came back");
    });
    EXPECT_EQ(ending.notes, "closed");
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
    EXPECT_EQ(ending.err, "");
}

TEST(ComDbgAbort, FullModeIsTheModeAProcessStartsIn) {
    const Ending ending = in_child([](int) { com__abort(); });
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
}

TEST(ComDbgAbort, FullModeDoesNotComeBackFromAnIgnoredSignal) {
    const Ending ending = in_child([](int notes) {
        std::signal(SIGABRT, SIG_IGN);
        com__abort();
        note(notes, "came back");
    });
    EXPECT_EQ(ending.notes, "");
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
}

TEST(ComDbgAbort, FullModeReportsBeforeItCloses) {
    const Ending ending = in_child([](int) {
        static char buffer[1024];
        setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
        com_bomb("generic/src/com_i4.cpp", 41);
    });
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
    EXPECT_EQ(ending.err, "\n\rassertion failed, file 'generic/src/com_i4.cpp' line 41\n\r");
}

TEST(ComDbgAbort, EveryOtherModeFlushesStandardErrorRaisesSignalSixAndReturns) {
    for (const int mode : {0, 2, -1, INT_MAX, INT_MIN}) {
        const Ending ending = in_child([mode](int notes) {
            static char buffer[1024];
            setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
            notes_of_handler = notes;
            std::signal(6, note_state_of_standard_error);
            com_toggle_abort(mode);
            std::fputs("held back", stderr);
            com__abort();
            note(notes, " came back");
        });
        EXPECT_EQ(ending.notes, "open came back") << mode;
        EXPECT_EQ(ending.err, "held back") << mode;
        EXPECT_TRUE(ending.exited(0)) << mode;
    }
}

TEST(ComDbgAbort, OtherModeWithoutAHandlerEndsByTheSignal) {
    const Ending ending = in_child([](int notes) {
        com_toggle_abort(0);
        com__abort();
        note(notes, "came back");
    });
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
    EXPECT_EQ(ending.notes, "");
}

TEST(ComDbgAbort, ToggleBackToOneAbortsFullyAgain) {
    const Ending ending = in_child([](int) {
        std::signal(SIGABRT, SIG_IGN);
        com_toggle_abort(0);
        com__abort();
        com_toggle_abort(1);
        com__abort();
    });
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
}

TEST(ComDbgReports, BombWritesItsExactMessageAndReturnsWithTheSignalIgnored) {
    const Ending ending = in_child([](int notes) {
        std::signal(SIGABRT, SIG_IGN);
        com_toggle_abort(0);
        com_bomb("generic/src/com_conv.cpp", 7);
        note(notes, "came back");
    });
    EXPECT_EQ(ending.err, "\n\rassertion failed, file 'generic/src/com_conv.cpp' line 7\n\r");
    EXPECT_EQ(ending.out, "");
    EXPECT_EQ(ending.notes, "came back");
}

TEST(ComDbgReports, NullPointerReportWritesItsExactMessageAndReturnsWithTheSignalIgnored) {
    const Ending ending = in_child([](int notes) {
        std::signal(SIGABRT, SIG_IGN);
        com_toggle_abort(0);
        com_raise_invalid_null_pointer("generic/src/com_null.cpp", -2147483647);
        note(notes, "came back");
    });
    EXPECT_EQ(ending.err, "\nInvalid NULL pointer , file 'generic/src/com_null.cpp' line -2147483647\n");
    EXPECT_EQ(ending.out, "");
    EXPECT_EQ(ending.notes, "came back");
}

TEST(ComDbgReports, BothEndTheProcessInFullMode) {
    const Ending bomb = in_child([](int notes) {
        com_bomb("f", 1);
        note(notes, "came back");
    });
    EXPECT_TRUE(bomb.killed(SIGABRT));
    EXPECT_EQ(bomb.err, "\n\rassertion failed, file 'f' line 1\n\r");
    EXPECT_EQ(bomb.notes, "");
    const Ending null_report = in_child([](int notes) {
        com_raise_invalid_null_pointer("f", 1);
        note(notes, "came back");
    });
    EXPECT_TRUE(null_report.killed(SIGABRT));
    EXPECT_EQ(null_report.err, "\nInvalid NULL pointer , file 'f' line 1\n");
    EXPECT_EQ(null_report.notes, "");
}

TEST(ComDbgReports, AReportNamesTheSourceWithoutItsRoom) {
    const Ending ending = in_child([](int) {
        std::signal(SIGABRT, SIG_IGN);
        com_toggle_abort(0);
        com_errset(0);
    });
    EXPECT_EQ(ending.err.find("\n\rassertion failed, file 'generic/src/com_dbg.cpp' line "), 0u) << ending.err;
}

// ---- com_panic ------------------------------------------------------------------------------

TEST(ComDbgPanic, WritesTheMessageAndExitsWithMinusOne) {
    const Ending ending = in_child([](int notes) {
        com_panic("no 100% memory");
        note(notes, "came back");
    });
    EXPECT_EQ(ending.err, "\nINTERNAL ERROR: unrecoverable error: no 100% memory\n");
    EXPECT_EQ(ending.out, "");
    EXPECT_EQ(ending.notes, "");
    EXPECT_TRUE(ending.exited(255)) << ending.status;
}

TEST(ComDbgPanic, FlushesStandardErrorBeforeItExits) {
    const Ending ending = in_child([](int notes) {
        static char buffer[1024];
        setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
        notes_of_handler = notes;
        std::atexit([] { note(notes_of_handler, support::content_of(STDERR_FILENO)); });
        com_panic("m");
    });
    EXPECT_EQ(ending.notes, "\nINTERNAL ERROR: unrecoverable error: m\n");
    EXPECT_TRUE(ending.exited(255)) << ending.status;
}

TEST(ComDbgPanicDeathTest, NullMessage) { EXPECT_NULL_REPORT(com_panic(nullptr), "com_dbg"); }

TEST(ComDbgPanic, NullMessageEndsTheProcessAlsoWhereReportsReturn) {
    const Ending ending = in_child([](int notes) {
        std::signal(SIGABRT, SIG_IGN);
        com_toggle_abort(0);
        com_panic(nullptr);
        note(notes, "came back");
    });
    EXPECT_EQ(ending.notes, "");
    EXPECT_TRUE(ending.exited(255)) << ending.status;
    EXPECT_EQ(ending.err.find("\nInvalid NULL pointer , file 'generic/src/com_dbg.cpp' line "), 0u) << ending.err;
    EXPECT_NE(ending.err.find("\nINTERNAL ERROR: unrecoverable error: (null)\n"), std::string::npos) << ending.err;
}

// ---- The trace of status codes --------------------------------------------------------------

class ComDbgTrace : public testing::Test {
protected:
    void TearDown() override { Com_trace_enable = COM_TRACE_OFF; }
};

struct NamedStatus {
    CS_RETCODE error;
    const char *name;
    bool everyday; // not traced at COM_TRACE_ERRORS
};

constexpr NamedStatus named[] = {
    {1, "CS_SUCCEED", true},           {0, "CS_FAIL", false},          {-1, "CS_MEM_ERROR", false},
    {-2, "CS_PENDING", true},          {-3, "CS_QUIET", false},        {-4, "CS_BUSY", false},
    {-5, "CS_INTERRUPT", true},        {-202, "CS_CANCELED", false},   {-203, "CS_ROW_FAIL", false},
    {-204, "CS_END_DATA", true},       {-205, "CS_END_RESULTS", true}, {-206, "CS_END_ITEM", true},
    {-207, "CS_NOMSG", false},         {-208, "CS_TIMED_OUT", false},  {-210, "CS_PASSTHRU_EOM", false},
    {-211, "CS_PASSTHRU_MORE", false}, {-213, "CS_TRYING", false},
};

struct UnnamedStatus {
    CS_RETCODE error;
    const char *number;
};

constexpr UnnamedStatus unnamed[] = {
    {-101, "4294967195"},
    {-102, "4294967194"},
    {-103, "4294967193"},
    {-104, "4294967192"},
    {-105, "4294967191"},
    {-106, "4294967190"},
    {-107, "4294967189"},
    {-108, "4294967188"},
    {-113, "4294967183"},
    {-114, "4294967182"},
    {-115, "4294967181"},
    {-116, "4294967180"},
    {-117, "4294967179"},
    {-301, "4294966995"},
    {-414, "4294966882"},
    {-417, "4294966879"},
    {2, "2"},
    {-6, "4294967290"},
    {-201, "4294967095"},
    {-209, "4294967087"},
    {-212, "4294967084"},
    {INT_MAX, "2147483647"},
    {INT_MIN, "2147483648"},
};

TEST_F(ComDbgTrace, StartsSwitchedOffOnStandardOutput) {
    EXPECT_EQ(Com_trace_enable, 1);
    EXPECT_EQ(Com_fp, nullptr);
}

TEST_F(ComDbgTrace, TableOfNamesHasSeventeenRowsInOrder) {
    ASSERT_EQ(std::size(named), 17u);
    ASSERT_EQ(COM_ERROR_COUNT, 17);
    for (size_t i = 0; i < std::size(named); ++i) {
        EXPECT_EQ(Com_errors[i].error, named[i].error) << i;
        EXPECT_STREQ(Com_errors[i].name, named[i].name) << i;
    }
}

TEST_F(ComDbgTrace, OffPrintsNothingAndReturnsTheStatus) {
    DebugOutput output;
    for (const NamedStatus &row : named)
        EXPECT_EQ(com_errtrace(row.error, "a/b.cpp", 3), row.error);
    for (const UnnamedStatus &row : unnamed)
        EXPECT_EQ(com_errtrace(row.error, "a/b.cpp", 3), row.error);
    std::fflush(Com_fp);
    EXPECT_EQ(output.text(), "");
}

TEST_F(ComDbgTrace, ErrorsPrintsEveryStatusButTheSixEverydayOnes) {
    com_errset(COM_TRACE_ERRORS);
    DebugOutput output;
    int silent = 0;
    for (const NamedStatus &row : named) {
        EXPECT_EQ(com_errtrace(row.error, "generic/src/com_i4.c", 12), row.error);
        const std::string line = std::string("(") + row.name + ") file com_i4.c, line 12\n";
        EXPECT_EQ(output.take(), row.everyday ? "" : line) << row.name;
        silent += row.everyday;
    }
    EXPECT_EQ(silent, 6);
}

TEST_F(ComDbgTrace, AllPrintsEveryStatus) {
    com_errset(COM_TRACE_ALL);
    DebugOutput output;
    for (const NamedStatus &row : named) {
        EXPECT_EQ(com_errtrace(row.error, "com_i4.c", 12), row.error);
        EXPECT_EQ(output.take(), std::string("(") + row.name + ") file com_i4.c, line 12\n");
    }
}

TEST_F(ComDbgTrace, StatusesWithoutANamePrintAsUnsignedNumbers) {
    for (const CS_INT level : {COM_TRACE_ERRORS, COM_TRACE_ALL}) {
        com_errset(level);
        DebugOutput output;
        for (const UnnamedStatus &row : unnamed) {
            EXPECT_EQ(com_errtrace(row.error, "generic/src/com_i4.c", 7), row.error);
            EXPECT_EQ(output.take(), std::string("(") + row.number + ") file com_i4.c, line 7\n");
        }
    }
}

TEST_F(ComDbgTrace, SucceedPrintsAtLevelThreeOnly) {
    DebugOutput output;
    com_errset(2);
    com_errtrace(CS_SUCCEED, "f", 1);
    std::fflush(Com_fp);
    EXPECT_EQ(output.text(), "");
    com_errset(3);
    com_errtrace(CS_SUCCEED, "f", 1);
    EXPECT_EQ(output.text(), "(CS_SUCCEED) file f, line 1\n");
}

TEST_F(ComDbgTrace, ShowsOnlyWhatStandsBehindTheLastSlash) {
    com_errset(COM_TRACE_ALL);
    DebugOutput output;
    const struct {
        const char *file;
        const char *shown;
    } cases[] = {{"a.c", "a.c"}, {"/a.c", "a.c"}, {"x/y/z/a.c", "a.c"}, {"dir/", ""},
                 {"", ""},       {"/", ""},       {"a\\b.c", "a\\b.c"}, {"//a%sb.c", "a%sb.c"}};
    for (const auto &row : cases) {
        com_errtrace(CS_FAIL, row.file, -4);
        EXPECT_EQ(output.take(), "(CS_FAIL) file " + std::string(row.shown) + ", line -4\n") << row.file;
    }
}

TEST_F(ComDbgTrace, GoesToStandardOutputWithoutADebugFile) {
    const Ending ending = in_child([](int) {
        com_errset(COM_TRACE_ERRORS);
        com_errtrace(CS_FAIL, "generic/src/com_i4.c", 9);
    });
    EXPECT_EQ(ending.out, "(CS_FAIL) file com_i4.c, line 9\n");
    EXPECT_EQ(ending.err, "");
}

TEST_F(ComDbgTrace, ErrsetTakesTheThreeLevels) {
    for (const CS_INT level : {3, 2, 1}) {
        com_errset(level);
        EXPECT_EQ(Com_trace_enable, level);
    }
}

TEST(ComDbgTraceDeathTest, ErrsetOfAnotherLevel) {
    EXPECT_BOMB(com_errset(0), "com_dbg");
    EXPECT_BOMB(com_errset(4), "com_dbg");
    EXPECT_BOMB(com_errset(-1), "com_dbg");
}

TEST_F(ComDbgTrace, ErrsetOfAnotherLevelLeavesTheLevelWhereReportsReturn) {
    com_errset(COM_TRACE_ERRORS);
    ReturningAssertions assertions;
    for (const CS_INT level : {0, 4, -1, INT_MAX, INT_MIN}) {
        com_errset(level);
        EXPECT_EQ(Com_trace_enable, COM_TRACE_ERRORS);
    }
    EXPECT_EQ(assertions.count(), 5);
}

TEST(ComDbgTraceDeathTest, NullFileOfATracedStatus) {
    com_errset(COM_TRACE_ALL);
    EXPECT_NULL_REPORT(com_errtrace(CS_FAIL, nullptr, 1), "com_dbg");
    com_errset(COM_TRACE_OFF);
}

TEST_F(ComDbgTrace, NullFileReturnsTheStatusWhereReportsReturn) {
    com_errset(COM_TRACE_ALL);
    DebugOutput output;
    ReturningAssertions assertions;
    EXPECT_EQ(com_errtrace(CS_EDOMAIN, nullptr, 1), CS_EDOMAIN);
    EXPECT_EQ(assertions.count(), 1);
    std::fflush(Com_fp);
    EXPECT_EQ(output.text(), "");
}

TEST(ComDbgStackDepth, IsAlwaysZero) {
    int depth = 77;
    com__get_stack_depth(&depth);
    EXPECT_EQ(depth, 0);
}

TEST(ComDbgStackDepthDeathTest, NullDepth) { EXPECT_NULL_REPORT(com__get_stack_depth(nullptr), "com_dbg"); }

TEST(ComDbgStackDepth, NullDepthReturnsWhereReportsReturn) {
    ReturningAssertions assertions;
    com__get_stack_depth(nullptr);
    EXPECT_EQ(assertions.count(), 1);
}

CS_RETCODE unexpected_line(CS_CHAR *, CS_INT) {
    ADD_FAILURE() << "no line of a stack is ever given";
    return CS_SUCCEED;
}

TEST(ComDbgStack, TouchesNothingAndAlwaysFails) {
    CS_BYTE id[16], frame[16];
    std::memset(id, 0x5A, sizeof id);
    std::memset(frame, 0x5A, sizeof frame);
    EXPECT_EQ(comn_dbg_stack(id, frame, 3, unexpected_line), CS_FAIL);
    EXPECT_EQ(comn_dbg_stack(nullptr, nullptr, 0, nullptr), CS_FAIL);
    EXPECT_EQ(comn_dbg_stack(nullptr, nullptr, -1, unexpected_line), CS_FAIL);
    for (const CS_BYTE byte : id)
        EXPECT_EQ(byte, 0x5A);
    for (const CS_BYTE byte : frame)
        EXPECT_EQ(byte, 0x5A);
}

// ---- Bounded copies -------------------------------------------------------------------------

constexpr char GUARD = '\x7E';
constexpr int ROOM = 24;

// A buffer that shows each byte written past `size`.
struct Guarded {
    char bytes[ROOM + 8];
    explicit Guarded(const std::string &text) {
        std::memset(bytes, GUARD, sizeof bytes);
        std::memcpy(bytes, text.c_str(), text.size() + 1);
    }
    bool holds(const std::string &text) const {
        if (text != bytes)
            return false;
        for (size_t i = text.size() + 1; i < sizeof bytes; ++i)
            if (bytes[i] != GUARD)
                return false;
        return true;
    }
};

const std::string sample = "abcdefghijklmnopqrst"; // 20 bytes

TEST(ComDbgCopy, CopstrCopiesExactlyWhatIsShorterThanTheSize) {
    ReturningAssertions assertions;
    int reports = 0;
    for (int length = 0; length <= 20; ++length)
        for (int size = -2; size <= ROOM; ++size) {
            const std::string source = sample.substr(0, length);
            Guarded dest("");
            com_copstr(dest.bytes, source.c_str(), size);
            const bool fits = size >= 1 && length < size;
            EXPECT_TRUE(dest.holds(fits ? source : "")) << length << " into " << size;
            reports += !fits;
            ASSERT_EQ(assertions.count(), reports) << length << " into " << size;
        }
}

TEST(ComDbgCopy, CatstrAppendsExactlyWhatIsShorterThanTheSizeTogether) {
    ReturningAssertions assertions;
    int reports = 0;
    for (int held = 0; held <= 10; ++held)
        for (int length = 0; length <= 10; ++length)
            for (int size = -2; size <= ROOM; ++size) {
                const std::string before = sample.substr(10, held);
                const std::string source = sample.substr(0, length);
                Guarded dest(before);
                com_catstr(dest.bytes, source.c_str(), size);
                const bool fits = size >= 1 && held + length < size;
                EXPECT_TRUE(dest.holds(fits ? before + source : before)) << held << "+" << length << " in " << size;
                reports += !fits;
                ASSERT_EQ(assertions.count(), reports) << held << "+" << length << " in " << size;
            }
}

TEST(ComDbgCopyDeathTest, CopstrNeverTruncates) {
    char dest[8] = "";
    EXPECT_BOMB(com_copstr(dest, "abc", 3), "com_dbg");
    EXPECT_BOMB(com_copstr(dest, "abc", 0), "com_dbg");
    EXPECT_BOMB(com_copstr(dest, "", -1), "com_dbg");
    com_copstr(dest, "abc", 4);
    EXPECT_STREQ(dest, "abc");
}

TEST(ComDbgCopyDeathTest, CatstrNeverTruncates) {
    char dest[8] = "ab";
    EXPECT_BOMB(com_catstr(dest, "cd", 4), "com_dbg");
    EXPECT_BOMB(com_catstr(dest, "", 2), "com_dbg");
    EXPECT_BOMB(com_catstr(dest, "", 0), "com_dbg");
    com_catstr(dest, "cd", 5);
    EXPECT_STREQ(dest, "abcd");
}

TEST(ComDbgCopyDeathTest, NullPointers) {
    char text[8] = "ab";
    EXPECT_NULL_REPORT(com_copstr(nullptr, "a", 4), "com_dbg");
    EXPECT_NULL_REPORT(com_copstr(text, nullptr, 4), "com_dbg");
    EXPECT_NULL_REPORT(com_catstr(nullptr, "a", 4), "com_dbg");
    EXPECT_NULL_REPORT(com_catstr(text, nullptr, 4), "com_dbg");
}

TEST(ComDbgCopy, NullPointersReturnWhereReportsReturn) {
    ReturningAssertions assertions;
    Guarded dest("ab");
    com_copstr(nullptr, "a", 4);
    com_copstr(dest.bytes, nullptr, 4);
    com_catstr(nullptr, "a", 4);
    com_catstr(dest.bytes, nullptr, 4);
    EXPECT_EQ(assertions.count(), 4);
    EXPECT_TRUE(dest.holds("ab"));
}

// ---- com_perr -------------------------------------------------------------------------------

TEST(ComDbgPerr, WritesToStandardErrorAndAppendsToTheFileInTheCurrentDirectory) {
    support::TempDirectory directory;
    support::write_file(directory.path_of("dlxinit.err"), "earlier\n");
    const Ending ending = in_child([&](int) {
        static char buffer[1024];
        setvbuf(stderr, buffer, _IOFBF, sizeof buffer); // what comes out was flushed
        if (chdir(directory.path().c_str()) != 0)
            _exit(98);
        com_perr("no locale\n");
        com_perr("no home\n");
    });
    EXPECT_TRUE(ending.exited(0)) << ending.status;
    EXPECT_EQ(ending.err, "no locale\nno home\n");
    EXPECT_EQ(ending.out, "");
    EXPECT_EQ(support::content_of_file(directory.path_of("dlxinit.err")), "earlier\nno locale\nno home\n");
}

TEST(ComDbgPerr, MakesTheFileWhereThereIsNone) {
    support::TempDirectory directory;
    in_child([&](int) {
        if (chdir(directory.path().c_str()) != 0)
            _exit(98);
        com_perr("first\n");
    });
    EXPECT_EQ(support::content_of_file(directory.path_of("dlxinit.err")), "first\n");
}

TEST(ComDbgPerr, IgnoresAFileThatCannotBeOpened) {
    support::TempDirectory directory;
    std::filesystem::create_directory(directory.path_of("dlxinit.err"));
    const Ending ending = in_child([&](int) {
        if (chdir(directory.path().c_str()) != 0)
            _exit(98);
        com_perr("still told\n");
    });
    EXPECT_TRUE(ending.exited(0)) << ending.status;
    EXPECT_EQ(ending.err, "still told\n");
}

TEST(ComDbgPerr, IgnoresACurrentDirectoryThatTakesNoFile) {
    support::TempDirectory directory;
    const std::string gone = directory.path_of("gone");
    std::filesystem::create_directory(gone);
    const Ending ending = in_child([&](int) {
        if (chdir(gone.c_str()) != 0 || rmdir(gone.c_str()) != 0)
            _exit(98);
        com_perr("still told\n");
    });
    EXPECT_TRUE(ending.exited(0)) << ending.status;
    EXPECT_EQ(ending.err, "still told\n");
}

TEST(ComDbgPerr, UsesTheStringItselfAsTheFormatInBothPlaces) {
    support::TempDirectory directory;
    const Ending ending = in_child([&](int) {
        if (chdir(directory.path().c_str()) != 0)
            _exit(98);
        com_perr("100%% lost\n");
    });
    EXPECT_EQ(ending.err, "100% lost\n");
    EXPECT_EQ(support::content_of_file(directory.path_of("dlxinit.err")), "100% lost\n");
}

TEST(ComDbgPerrDeathTest, NullString) { EXPECT_NULL_REPORT(com_perr(nullptr), "com_dbg"); }

TEST(ComDbgPerr, NullStringReturnsAndMakesNoFileWhereReportsReturn) {
    support::TempDirectory directory;
    const Ending ending = in_child([&](int) {
        if (chdir(directory.path().c_str()) != 0)
            _exit(98);
        std::signal(SIGABRT, SIG_IGN);
        com_toggle_abort(0);
        com_perr(nullptr);
    });
    EXPECT_TRUE(ending.exited(0)) << ending.status;
    EXPECT_EQ(ending.err.find("\nInvalid NULL pointer , file 'generic/src/com_dbg.cpp' line "), 0u) << ending.err;
    EXPECT_FALSE(std::filesystem::exists(directory.path_of("dlxinit.err")));
}

} // namespace
