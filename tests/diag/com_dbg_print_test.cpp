// The debug output stream: where it goes, and the two ways of printing to it.
#include "support/assertions.h"
#include "support/child.h"
#include "support/debug_output.h"
#include "support/temp_directory.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using support::content_of_file;
using support::DebugOutput;
using support::Ending;
using support::in_child;
using support::note;
using support::ReturningAssertions;
using support::TempDirectory;

// ---- comn_debug_setfile ---------------------------------------------------------------------

class ComDbgSetfile : public testing::Test {
protected:
    void TearDown() override { comn_debug_setfile(nullptr, nullptr, 0); }

    CS_RETCODE set(const std::string &path, CS_INT length) {
        std::string name = path;
        return comn_debug_setfile(nullptr, name.data(), length);
    }

    TempDirectory directory_;
};

TEST_F(ComDbgSetfile, AppendsToTheFile) {
    const std::string path = directory_.path_of("debug");
    support::write_file(path, "earlier\n");
    EXPECT_EQ(set(path, static_cast<CS_INT>(path.size())), CS_SUCCEED);
    ASSERT_NE(Com_fp, nullptr);
    comn_debug_print("%s %d\n", "number", 5);
    EXPECT_EQ(content_of_file(path), "earlier\nnumber 5\n");
}

TEST_F(ComDbgSetfile, ReadsTheNameToItsNulWhateverTheLengthSays) {
    const CS_INT lengths[] = {1, 3, CS_NULLTERM, CS_UNUSED, 1000000};
    for (const CS_INT length : lengths) {
        const std::string path = directory_.path_of("debug" + std::to_string(length));
        EXPECT_EQ(set(path, length), CS_SUCCEED) << length;
        EXPECT_TRUE(std::filesystem::exists(path)) << length;
        EXPECT_EQ(comn_debug_setfile(nullptr, nullptr, 0), CS_SUCCEED);
    }
}

TEST_F(ComDbgSetfile, SecondNameLeavesTheFirstStreamOpen) {
    const std::string first = directory_.path_of("first");
    const std::string second = directory_.path_of("second");
    EXPECT_EQ(set(first, 1), CS_SUCCEED);
    FILE *stream = Com_fp;
    EXPECT_EQ(set(second, 1), CS_SUCCEED);
    ASSERT_NE(Com_fp, stream);
    comn_debug_print("to the second\n");
    EXPECT_NE(fcntl(fileno(stream), F_GETFD), -1);
    EXPECT_GE(std::fputs("to the first\n", stream), 0);
    EXPECT_EQ(std::fclose(stream), 0);
    EXPECT_EQ(content_of_file(first), "to the first\n");
    EXPECT_EQ(content_of_file(second), "to the second\n");
}

TEST_F(ComDbgSetfile, FileThatCannotBeOpenedFailsAndLeavesStandardOutput) {
    EXPECT_EQ(set(directory_.path_of("good"), 1), CS_SUCCEED);
    FILE *stream = Com_fp;
    EXPECT_EQ(set(directory_.path_of("no/such/directory"), 1), CS_FAIL);
    EXPECT_EQ(Com_fp, nullptr);
    EXPECT_NE(fcntl(fileno(stream), F_GETFD), -1);
    std::fclose(stream);
}

TEST_F(ComDbgSetfile, FailureIsTraced) {
    const Ending ending = in_child([&](int) {
        com_errset(COM_TRACE_ERRORS);
        set(directory_.path_of("no/such/directory"), 1);
    });
    EXPECT_EQ(ending.out.find("(CS_FAIL) file com_dbg.cpp, line "), 0u) << ending.out;
}

TEST_F(ComDbgSetfile, NullNameOrZeroLengthClosesTheStream) {
    std::string name = directory_.path_of("debug");
    const struct {
        CS_CHAR *name;
        CS_INT length;
    } cases[] = {{nullptr, 0}, {nullptr, 5}, {nullptr, CS_NULLTERM}, {name.data(), 0}};
    for (const auto &row : cases) {
        EXPECT_EQ(set(directory_.path_of("closed"), 1), CS_SUCCEED);
        const int descriptor = fileno(Com_fp);
        std::fputs("unflushed", Com_fp);
        EXPECT_EQ(comn_debug_setfile(nullptr, row.name, row.length), CS_SUCCEED);
        EXPECT_EQ(Com_fp, nullptr);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    }
    EXPECT_FALSE(std::filesystem::exists(name));
    EXPECT_EQ(content_of_file(directory_.path_of("closed")), "unflushedunflushedunflushedunflushed");
}

TEST_F(ComDbgSetfile, ClosingWithNoStreamSucceeds) {
    EXPECT_EQ(comn_debug_setfile(nullptr, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(comn_debug_setfile(nullptr, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(Com_fp, nullptr);
}

TEST_F(ComDbgSetfile, TakesTheTraceAndBothPrintRoutes) {
    const std::string path = directory_.path_of("debug");
    set(path, 1);
    com_errset(COM_TRACE_ERRORS);
    com_errtrace(CS_FAIL, "a/b.c", 1);
    com_errset(COM_TRACE_OFF);
    EXPECT_EQ(content_of_file(path), "(CS_FAIL) file b.c, line 1\n");
}

// ---- comn_debug_print -----------------------------------------------------------------------

TEST(ComDbgPrint, PrintsAsPrintfDoesAndFlushes) {
    DebugOutput output;
    EXPECT_EQ(comn_debug_print("%s|%5.2f|%-4d|%#lx|%%\n", "text", 1.255, 7, 255ul), CS_SUCCEED);
    EXPECT_EQ(output.take(), "text| 1.25|7   |0xff|%\n");
    EXPECT_EQ(comn_debug_print("%s", ""), CS_SUCCEED);
    EXPECT_EQ(output.take(), "");
    EXPECT_EQ(comn_debug_print("plain"), CS_SUCCEED);
    EXPECT_EQ(output.take(), "plain");
}

TEST(ComDbgPrint, GoesToStandardOutputWithoutADebugFileAndFlushesIt) {
    const Ending ending = in_child([](int) { comn_debug_print("%d bytes", 12); });
    EXPECT_EQ(ending.out, "12 bytes");
    EXPECT_EQ(ending.err, "");
}

TEST(ComDbgPrint, SucceedsAlsoWhereNothingCanBeWritten) {
    FILE *full = std::fopen("/dev/full", "a");
    ASSERT_NE(full, nullptr);
    Com_fp = full;
    EXPECT_EQ(comn_debug_print("lost %d\n", 1), CS_SUCCEED);
    Com_fp = nullptr;
    std::fclose(full);
}

TEST(ComDbgPrintDeathTest, NullFormat) {
    const char *none = nullptr;
    EXPECT_NULL_REPORT(comn_debug_print(none, 1), "com_dbg");
}

TEST(ComDbgPrint, NullFormatSucceedsWhereReportsReturn) {
    DebugOutput output;
    ReturningAssertions assertions;
    const char *none = nullptr;
    EXPECT_EQ(comn_debug_print(none, 1), CS_SUCCEED);
    EXPECT_EQ(assertions.count(), 1);
    std::fflush(Com_fp);
    EXPECT_EQ(output.text(), "");
}

// ---- comn_debug_vprint ----------------------------------------------------------------------

constexpr long END = 0x5E471E51; // behind the arguments of a format, to see how many were taken
const std::string ILLEGAL = "illegal format specification\n";

// What a format printed, and the argument that would have been taken next. On this platform each argument
// takes one slot of eight bytes, whatever its type.
struct Printed {
    CS_RETCODE status;
    std::string text;
    long next;
};

Printed vprint(const char *format, ...) {
    DebugOutput output;
    Printed printed;
    std::va_list arguments;
    va_start(arguments, format);
    printed.status = comn_debug_vprint(format, &arguments);
    printed.next = va_arg(arguments, long);
    va_end(arguments);
    printed.text = output.text();
    return printed;
}

std::string printf_of(const char *format, ...) {
    char buffer[512];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return length < 0 ? std::string() : std::string(buffer, static_cast<size_t>(length));
}

std::string percent(std::string specifier) {
    specifier.insert(specifier.begin(), '%');
    return specifier;
}

// The format printed `expected`, and took all the arguments before END.
#define EXPECT_VPRINT(expected, ...)                            \
    do {                                                        \
        const Printed printed_ = vprint(__VA_ARGS__, END);      \
        EXPECT_EQ(printed_.status, CS_SUCCEED) << #__VA_ARGS__; \
        EXPECT_EQ(printed_.text, expected) << #__VA_ARGS__;     \
        EXPECT_EQ(printed_.next, END) << #__VA_ARGS__;          \
    } while (0)

TEST(ComDbgVprint, PlainTextStands) {
    EXPECT_VPRINT("", "");
    EXPECT_VPRINT("plain \n\t text", "plain \n\t text");
    EXPECT_VPRINT("\x01\xFF\x80", "\x01\xFF\x80");
}

TEST(ComDbgVprint, DoubledPercentIsOne) {
    EXPECT_VPRINT("%", "%%");
    EXPECT_VPRINT("%%", "%%%%");
    EXPECT_VPRINT("100% d", "100%% d");
    EXPECT_VPRINT("%5", "%%%d", 5);
}

TEST(ComDbgVprint, IntegersAre32BitsWide) {
    EXPECT_VPRINT("-5", "%d", -5);
    EXPECT_VPRINT("-2147483648 2147483647", "%d %d", INT32_MIN, INT32_MAX);
    EXPECT_VPRINT("ffffffff", "%x", -1);
    EXPECT_VPRINT("DEADBEEF", "%X", 0xDEADBEEFu);
    EXPECT_VPRINT("1", "%d", 0x700000001L); // the low half of a wider argument
}

TEST(ComDbgVprint, CharactersAreTheLowByteOfTheArgument) {
    EXPECT_VPRINT("a", "%c", 'a');
    EXPECT_VPRINT("b", "%c", 0x12345600 + 'b');
    EXPECT_VPRINT(std::string(1, '\0'), "%c", 0);
    EXPECT_VPRINT("\xFF", "%c", -1);
    EXPECT_VPRINT("\x80|  \xE9", "%c|%3c", 0x80, 0xE9);
}

TEST(ComDbgVprint, LongIntegersAre64BitsWide) {
    EXPECT_VPRINT("9223372036854775807", "%ld", INT64_MAX);
    EXPECT_VPRINT("-9223372036854775808", "%ld", INT64_MIN);
    EXPECT_VPRINT("8000000000000000", "%lx", INT64_MIN);
    EXPECT_VPRINT("   -7|0x00ff", "%5ld|%#06lx", -7L, 255L);
}

TEST(ComDbgVprint, LoneLongTakesItsArgumentAndPrintsNothing) {
    for (const char *format : {"%l", "%5l", "%-08.3l", "%hl"})
        EXPECT_VPRINT("", format, 7L);
    EXPECT_VPRINT("8", "%l%d", 7L, 8);
}

TEST(ComDbgVprint, LongBeforeAnyOtherLetterLeavesThatLetterAsText) {
    for (const char letter : std::string("bcefgijlmopqsuXzDU 5.-")) {
        const std::string format = std::string("<%l") + letter + ">%d";
        EXPECT_VPRINT(std::string("<") + letter + ">8", format.c_str(), 7L, 8);
    }
}

TEST(ComDbgVprint, StringsAndTheNullString) {
    EXPECT_VPRINT("text", "%s", "text");
    EXPECT_VPRINT("(null)", "%s", static_cast<char *>(nullptr));
    EXPECT_VPRINT("  (null)|(null)  |(nu", "%8s|%-8s|%.3s", static_cast<char *>(nullptr), static_cast<char *>(nullptr),
                  static_cast<char *>(nullptr));
    EXPECT_VPRINT("%d", "%s", "%d");
    EXPECT_VPRINT(std::string(5000, 'x'), "%s", std::string(5000, 'x').c_str());
}

TEST(ComDbgVprint, ManyArgumentsInOrder) {
    EXPECT_VPRINT("1 two 3 4 f 6 7 eight 9 a\n", "%d %s %ld %d %x %d %ld %s %d %c\n", 1, "two", 3L, 4, 15, 6, 7L,
                  "eight", 9, 'a');
}

TEST(ComDbgVprint, TheArgumentListMovesOnBetweenCalls) {
    const auto both = [](int count, ...) {
        std::va_list arguments;
        va_start(arguments, count);
        comn_debug_vprint("%d,", &arguments);
        comn_debug_vprint("%s", &arguments);
        va_end(arguments);
    };
    DebugOutput output;
    both(2, 5, "next");
    EXPECT_EQ(output.text(), "5,next");
}

TEST(ComDbgVprint, FlagsWidthsAndPrecisionsPrintAsPrintfDoes) {
    const char *const widths[] = {"", "1", "7", "20"};
    const char *const precisions[] = {"", ".", ".0", ".3", ".12"};
    const std::string letters[] = {"d", "x", "X", "c", "s", "ld", "lx"};
    const long values[] = {0, 42, -1, 0x123456789ABCDEF};
    const char *const texts[] = {"", "ab", "a longer text"};
    int cases = 0;
    for (int flags = 0; flags < 64; ++flags)
        for (const char *width : widths)
            for (const char *precision : precisions)
                for (const std::string &letter : letters) {
                    std::string format = "%";
                    for (int bit = 0; bit < 6; ++bit)
                        if ((flags >> bit & 1) != 0)
                            format += "-+ #0'"[bit];
                    format += width + std::string(precision) + letter;
                    const char *f = format.c_str();
                    if (letter == "s") {
                        for (const char *text : texts)
                            EXPECT_VPRINT(printf_of(f, text), f, text);
                    } else if (letter.size() == 2) {
                        for (const long value : values)
                            EXPECT_VPRINT(printf_of(f, value), f, value);
                    } else if (letter == "c") {
                        EXPECT_VPRINT(printf_of(f, 'q'), f, 'q');
                    } else {
                        for (const long value : values)
                            EXPECT_VPRINT(printf_of(f, static_cast<int>(value)), f, static_cast<int>(value));
                    }
                    ++cases;
                }
    EXPECT_EQ(cases, 64 * 4 * 5 * 7);
}

TEST(ComDbgVprint, ShortModifierPrintsAsPrintfDoes) {
    EXPECT_VPRINT("-1", "%hd", 0x1FFFF);
    EXPECT_VPRINT("ffff", "%hx", -1);
    EXPECT_VPRINT("-1", "%hhd", 0xFF);
}

TEST(ComDbgVprint, EndOfTheFormatInsideASpecifierIsIllegal) {
    EXPECT_VPRINT(ILLEGAL, "%");
    EXPECT_VPRINT("text" + ILLEGAL, "text%");
    EXPECT_VPRINT(ILLEGAL, "%5");
    EXPECT_VPRINT(ILLEGAL, "%-08.3");
    EXPECT_VPRINT("5" + ILLEGAL, "%d%", 5);
    EXPECT_VPRINT("%" + ILLEGAL, "%%%");
}

TEST(ComDbgVprint, UnknownConversionAtTheEndIsIllegalAndTakesNoArgument) {
    for (const char letter : std::string("abefghijkmnopqrtuvwyzABCDEFGHISZ@*$"))
        EXPECT_VPRINT(ILLEGAL, percent(std::string(1, letter)).c_str());
    EXPECT_VPRINT(ILLEGAL, "%f\n");
}

TEST(ComDbgVprint, UnknownConversionRunsOnToTheNextLetterOfTheSetAndTakesNoArgument) {
    EXPECT_VPRINT(ILLEGAL, "%f d");
    EXPECT_VPRINT(ILLEGAL + "5", "%f d%d", 5);
    EXPECT_VPRINT(ILLEGAL + "ue", "%u value"); // the l of "value" ends it
    EXPECT_VPRINT(ILLEGAL + "n 7", "%p %sn %d", 7);
    EXPECT_VPRINT(ILLEGAL + " 7", "%5%d %d", 7);
    EXPECT_VPRINT(ILLEGAL + ">", "%i, %ld>");
}

TEST(ComDbgVprint, SpecifiersThatWouldTakeOtherArgumentsAreIllegalAndSafe) {
    for (const char *format : {"%*d", "%.*d", "%*.*s", "%nd", "%hhnd", "%n%s", "%1$d", "%2$s", "%*1$d", "%ms", "%fs",
                               "%Lfs", "%jd", "%zd", "%td", "%qd", "%Id", "%5n5d", "%-*s", "%f%n%d", "%*lx"})
        EXPECT_VPRINT(ILLEGAL, format);
}

TEST(ComDbgVprint, SpecifierOf78BytesBehindThePercentIsTheLongest) {
    for (const char *letter : {"d", "x", "X", "c", "s", "ld", "lx", "l"})
        for (int total = 70; total <= 200; ++total) {
            const int flags = total - static_cast<int>(std::strlen(letter));
            const std::string format = percent(std::string(static_cast<size_t>(flags), '-') + letter + "|");
            const char *f = format.c_str();
            if (total > 78)
                EXPECT_VPRINT(ILLEGAL + "|", f);
            else if (*letter == 's')
                EXPECT_VPRINT("text|", f, "text");
            else if (*letter == 'l')
                EXPECT_VPRINT(letter[1] != '\0' ? "7|" : "|", f, 7L);
            else
                EXPECT_VPRINT(printf_of(f, '0'), f, '0');
        }
}

TEST(ComDbgVprint, SpecifierWithoutAnEndIsIllegalAtEveryLength) {
    for (size_t length = 0; length < 300; ++length)
        EXPECT_VPRINT(ILLEGAL, percent(std::string(length, '0')).c_str());
    EXPECT_VPRINT(ILLEGAL, percent(std::string(100000, '7')).c_str());
}

TEST(ComDbgVprint, FlushesAtTheEnd) {
    DebugOutput output;
    EXPECT_VPRINT("seen", "seen"); // vprint reads what was flushed
    EXPECT_VPRINT(ILLEGAL, "%");
}

TEST(ComDbgVprint, GoesToStandardOutputWithoutADebugFileAndFlushesIt) {
    const Ending ending = in_child([](int) {
        const auto print = [](const char *format, ...) {
            std::va_list arguments;
            va_start(arguments, format);
            comn_debug_vprint(format, &arguments);
            va_end(arguments);
        };
        print("%d bytes", 12);
    });
    EXPECT_EQ(ending.out, "12 bytes");
    EXPECT_EQ(ending.err, "");
}

void vprint_without(bool format, bool arguments) {
    std::va_list none = {};
    comn_debug_vprint(format ? "%%" : nullptr, arguments ? &none : nullptr);
}

TEST(ComDbgVprintDeathTest, NullPointers) {
    EXPECT_NULL_REPORT(vprint_without(false, true), "com_dbg");
    EXPECT_NULL_REPORT(vprint_without(true, false), "com_dbg");
}

TEST(ComDbgVprint, NullPointersSucceedAndPrintNothingWhereReportsReturn) {
    DebugOutput output;
    ReturningAssertions assertions;
    std::va_list none = {};
    EXPECT_EQ(comn_debug_vprint(nullptr, &none), CS_SUCCEED);
    EXPECT_EQ(comn_debug_vprint("text", nullptr), CS_SUCCEED);
    EXPECT_EQ(assertions.count(), 2);
    std::fflush(Com_fp);
    EXPECT_EQ(output.text(), "");
}

// Formats put together from pieces whose output is known one by one.
TEST(ComDbgVprint, RandomFormatsPrintTheirPiecesInOrder) {
    std::mt19937_64 random(20240311);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    const std::string plain[] = {"text", " ", "a", "lx", "5", "\n", "d", "'%%'", ""};
    const std::string illegal[] = {"%f d", "%*d", "%nx", "%u s", "%5%c", "%z.l", "%*ld", "%pX", "%q%s"};
    const char *const texts[] = {"one", "", nullptr};
    for (int round = 0; round < 40000; ++round) {
        std::string format, expected;
        long arguments[8];
        int taken = 0;
        for (int piece = 0; piece < 7; ++piece) {
            std::string specifier = percent(std::string(below(2), '-'));
            if (below(2) != 0)
                specifier += std::to_string(1 + below(12));
            const long value = static_cast<long>(random());
            switch (below(8)) {
            case 0: {
                const std::string &text = plain[below(std::size(plain))];
                format += text;
                expected += text == "'%%'" ? "'%'" : text;
                break;
            }
            case 1:
                format += illegal[below(std::size(illegal))];
                expected += ILLEGAL;
                if (format.back() == 'l')
                    format += '!', expected += '!'; // else a following d or x would belong to it
                break;
            case 2:
                specifier += "dxX"[below(3)];
                format += specifier;
                expected += printf_of(specifier.c_str(), static_cast<int>(value));
                arguments[taken++] = value;
                break;
            case 3:
                specifier += below(2) != 0 ? "ld" : "lx";
                format += specifier;
                expected += printf_of(specifier.c_str(), value);
                arguments[taken++] = value;
                break;
            case 4:
                specifier += 'c';
                format += specifier;
                expected += printf_of(specifier.c_str(), static_cast<int>(value));
                arguments[taken++] = value;
                break;
            case 5: {
                const char *text = texts[below(std::size(texts))];
                specifier += 's';
                format += specifier;
                expected += printf_of(specifier.c_str(), text != nullptr ? text : "(null)");
                arguments[taken++] = reinterpret_cast<long>(text);
                break;
            }
            case 6:
                format += "%%";
                expected += "%";
                break;
            default:
                format += "%l;";
                expected += ";";
                arguments[taken++] = value;
                break;
            }
        }
        arguments[taken] = END;
        const long *a = arguments;
        const Printed printed = vprint(format.c_str(), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
        ASSERT_EQ(printed.text, expected) << format;
        ASSERT_EQ(printed.next, END) << format;
        ASSERT_EQ(printed.status, CS_SUCCEED);
    }
}

} // namespace
