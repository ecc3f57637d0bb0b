// The built command: what each subcommand prints, what it says when it cannot, and what it exits with.
#include "command/text.h"
#include "support/environment.h"
#include "support/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace {

using support::ProcessOutcome;
using support::run_process;
using testing::HasSubstr;
using testing::StartsWith;

ProcessOutcome dlxcomn(std::vector<std::string> arguments, const std::string &input = "") {
    arguments.insert(arguments.begin(), DLXCOMN_COMMAND);
    return run_process(std::move(arguments), input);
}

// A pipeline or a redirection, with "dlxcomn" standing for the command.
ProcessOutcome shell(const std::string &line) {
    return run_process({"/bin/sh", "-c", "dlxcomn() { \"" DLXCOMN_COMMAND "\" \"$@\"; }; " + line});
}

// The line that `convert` prints for a value.
std::string line(const std::string &text, const std::string &status, const std::string &destlen,
                 const std::string &bytes) {
    char result[2048];
    std::snprintf(result, sizeof result, "%-24s  %-13s  %3s  %s\n", text.c_str(), status.c_str(), destlen.c_str(),
                  bytes.c_str());
    return result;
}

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string one; std::getline(stream, one);)
        lines.push_back(one);
    return lines;
}

size_t widest_line(const std::string &text) {
    size_t widest = 0;
    for (const std::string &one : lines_of(text))
        widest = std::max(widest, one.size());
    return widest;
}

#define EXPECT_DONE(outcome, expected) \
    do { \
        const ProcessOutcome &done = (outcome); \
        EXPECT_EQ(done.output, expected); \
        EXPECT_EQ(done.errors, ""); \
        EXPECT_EQ(done.exit_code, 0); \
    } while (0)

#define EXPECT_MISUSED(outcome, sentence) \
    do { \
        const ProcessOutcome &misused = (outcome); \
        EXPECT_THAT(misused.errors, HasSubstr(sentence)); \
        EXPECT_THAT(misused.errors, StartsWith("dlxcomn: ")); \
        EXPECT_EQ(misused.exit_code, 2); \
    } while (0)

// ---- Help and version ----

struct HelpCase {
    std::vector<std::string> arguments;
    const char *usage;
};

class Help : public testing::TestWithParam<HelpCase> {};

TEST_P(Help, GoesToStandardOutputAndFitsTheTerminal) {
    const ProcessOutcome outcome = dlxcomn(GetParam().arguments);
    EXPECT_THAT(outcome.output, StartsWith(GetParam().usage));
    EXPECT_LE(widest_line(outcome.output), 100u);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exit_code, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Everywhere, Help,
    testing::Values(HelpCase{{"--help"}, "usage: dlxcomn COMMAND"}, HelpCase{{"-h"}, "usage: dlxcomn COMMAND"},
                    HelpCase{{"help"}, "usage: dlxcomn COMMAND"},
                    HelpCase{{"convert", "--help"}, "usage: dlxcomn convert --to"},
                    HelpCase{{"convert", "--to", "nonsense", "-h", "1"}, "usage: dlxcomn convert --to"},
                    HelpCase{{"help", "convert"}, "usage: dlxcomn convert --to"},
                    HelpCase{{"types", "--help"}, "usage: dlxcomn types\n"},
                    HelpCase{{"matrix", "--help"}, "usage: dlxcomn matrix ["},
                    HelpCase{{"tour", "--help"}, "usage: dlxcomn tour\n"},
                    HelpCase{{"date", "--help"}, "usage: dlxcomn date ["},
                    HelpCase{{"paths", "--help"}, "usage: dlxcomn paths ["},
                    HelpCase{{"help", "locale"}, "usage: dlxcomn locale ["},
                    HelpCase{{"recode", "-h"}, "usage: dlxcomn recode FROM"},
                    HelpCase{{"help", "sort"}, "usage: dlxcomn sort --charset"},
                    HelpCase{{"help", "message"}, "usage: dlxcomn message NUMBER"},
                    HelpCase{{"help", "check"}, "usage: dlxcomn check\n"}));

TEST(Command, TellsItsVersion) { EXPECT_DONE(dlxcomn({"--version"}), "dlxcomn 1.0.0\n"); }

TEST(Command, WithoutArgumentsTellsItsUsageAsAnError) {
    const ProcessOutcome outcome = dlxcomn({});
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, StartsWith("usage: dlxcomn COMMAND"));
    EXPECT_EQ(outcome.exit_code, 2);
}

TEST(Command, SuggestsASubcommand) {
    EXPECT_MISUSED(dlxcomn({"covnert"}), "no command \"covnert\"; did you mean convert?");
    EXPECT_MISUSED(dlxcomn({"zzz"}), "there are convert, types, matrix, tour, date, locale, locales, charsets, recode, ");
    EXPECT_MISUSED(dlxcomn({"help", "zzz"}), "no command \"zzz\"");
}

TEST(Command, RefusesArgumentsThatItDoesNotTake) {
    EXPECT_MISUSED(dlxcomn({"types", "int"}), "types takes no argument, not \"int\"");
    EXPECT_MISUSED(dlxcomn({"tour", "1"}), "tour takes no argument, not \"1\"");
    EXPECT_MISUSED(dlxcomn({"matrix", "int", "int", "int"}), "two datatypes at most");
    EXPECT_MISUSED(dlxcomn({"types", "--wide"}), "no option --wide here");
    EXPECT_MISUSED(dlxcomn({"convert", "--too", "int", "1"}),
                   "no option --too; there are --to, --from, --precision, --scale, --length and --format");
    EXPECT_MISUSED(dlxcomn({"convert", "-x", "1"}), "no option -x");
    EXPECT_MISUSED(dlxcomn({"convert", "1", "--to"}), "--to wants a value behind it");
}

// ---- convert: values ----

TEST(Convert, PrintsTextStatusLengthAndBytes) {
    EXPECT_DONE(dlxcomn({"convert", "--to", "tinyint", "42"}), line("42", "CS_SUCCEED", "1", "2a"));
    EXPECT_DONE(dlxcomn({"convert", "--from", "int", "--to", "int", "-2"}), line("-2", "CS_SUCCEED", "4", "feffffff"));
}

TEST(Convert, GoesOnBehindAFailureAndExitsWithOne) {
    const ProcessOutcome outcome = dlxcomn({"convert", "--to", "tinyint", "300", "7", "-1"});
    EXPECT_EQ(outcome.output, line("255", "CS_EOVERFLOW", "1", "ff") + line("7", "CS_SUCCEED", "1", "07") +
                                  line("0", "CS_EUNDERFLOW", "1", "00"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exit_code, 1);
}

TEST(Convert, TakesTypesByIdInEitherCaseAndAsTheyStandInHeaders) {
    const std::string seven = line("7", "CS_SUCCEED", "2", "0700");
    EXPECT_DONE(dlxcomn({"convert", "--from", "8", "--to", "7", "7"}), seven);
    EXPECT_DONE(dlxcomn({"convert", "--from=INT", "--to=CS_SMALLINT", "7"}), seven);
}

TEST(Convert, TakesTheLastOfAnOptionGivenTwice) {
    EXPECT_DONE(dlxcomn({"convert", "--to", "int", "--to", "tinyint", "7"}), line("7", "CS_SUCCEED", "1", "07"));
}

TEST(Convert, TellsTheSidesApartByTheSource) {
    const ProcessOutcome from_int = dlxcomn({"convert", "--from", "int", "--to", "tinyint", "-1"});
    EXPECT_EQ(from_int.output, line("0", "CS_EOVERFLOW", "1", "00"));
    const ProcessOutcome from_bigint = dlxcomn({"convert", "--from", "bigint", "--to", "tinyint", "-1"});
    EXPECT_EQ(from_bigint.output, line("0", "CS_EUNDERFLOW", "1", "00"));
}

TEST(Convert, TakesAWholeNumberForABigintAndALargeOneForANumeric) {
    // The statuses below the range tell which source it was.
    EXPECT_EQ(dlxcomn({"convert", "--to", "tinyint", "-1"}).output, line("0", "CS_EUNDERFLOW", "1", "00"));
    EXPECT_EQ(dlxcomn({"convert", "--to", "tinyint", "-9223372036854775809"}).output,
              line("0", "CS_EOVERFLOW", "1", "00"));
    EXPECT_DONE(dlxcomn({"convert", "--to", "ubigint", "18446744073709551615"}),
                line("18446744073709551615", "CS_SUCCEED", "8", "ffffffffffffffff"));
}

TEST(Convert, TakesAPointForANumericAndAnExponentForAFloat) {
    EXPECT_DONE(dlxcomn({"convert", "--to", "numeric", "12.50"}), line("12.50", "CS_SUCCEED", "5", "04020004e2"));
    EXPECT_DONE(dlxcomn({"convert", "--to", "char", "1e21"}), line("\"1e+21\"", "CS_SUCCEED", "5", "31652b3231"));
    EXPECT_DONE(dlxcomn({"convert", "--to", "bit", "nan", "-inf"}),
                line("1", "CS_SUCCEED", "1", "01") + line("1", "CS_SUCCEED", "1", "01"));
}

TEST(Convert, KeepsEveryDigitOfANumeric) {
    const std::string digits(77, '9');
    const ProcessOutcome outcome = dlxcomn({"convert", "--from", "numeric", "--to", "char", digits});
    EXPECT_THAT(outcome.output, StartsWith("\"" + digits + "\"  CS_SUCCEED      77  3939"));
    EXPECT_EQ(outcome.exit_code, 0);
}

TEST(Convert, ShowsOnlyTheBytesInUseOfANumeric) {
    EXPECT_DONE(dlxcomn({"convert", "--from", "int", "--to", "numeric", "300"}),
                line("300", "CS_SUCCEED", "35", "0a0000000000012c"));
}

TEST(Convert, GivesANumericRoomForTheSourceUnlessTold) {
    EXPECT_DONE(dlxcomn({"convert", "--from", "tinyint", "--to", "numeric", "255"}),
                line("255", "CS_SUCCEED", "35", "03000000ff"));
    EXPECT_DONE(dlxcomn({"convert", "--from", "tinyint", "--to", "numeric", "--scale", "2", "255"}),
                line("255.00", "CS_SUCCEED", "35", "05020000639c"));
    EXPECT_DONE(dlxcomn({"convert", "--to", "decimal", "--precision", "10", "--scale", "2", "5"}),
                line("5.00", "CS_SUCCEED", "35", "0a020000000001f4"));
    EXPECT_DONE(dlxcomn({"convert", "--to", "numeric", "0.1e0"}),
                line("0.10000000000000001", "CS_SUCCEED", "35", "4d1100" + std::string(50, '0') + "2386f26fc10001"));
}

TEST(Convert, HandsImpossibleDigitsOnToTheConversion) {
    const auto with = [](const char *option, const char *digits) {
        return dlxcomn({"convert", "--from", "int", "--to", "numeric", option, digits, "1"}).output;
    };
    EXPECT_EQ(with("--precision", "78"), line("-", "CS_EPRECISION", "35", "-"));
    EXPECT_EQ(with("--precision", "-2147483648"), line("-", "CS_EPRECISION", "35", "-"));
    EXPECT_EQ(with("--scale", "78"), line("-", "CS_ESCALE", "35", "-"));
    EXPECT_EQ(with("--scale", "2147483647"), line("-", "CS_ESCALE", "35", "-"));
}

TEST(Convert, ShowsWhatACutNumericHolds) {
    const ProcessOutcome outcome =
        dlxcomn({"convert", "--to", "numeric", "--precision", "10", "--scale", "2", "12.349"});
    EXPECT_EQ(outcome.output, line("12.34", "CS_ETRUNCATED", "8", "0a020000000004d2"));
    EXPECT_EQ(outcome.exit_code, 1);
}

TEST(Convert, ShowsADashWhereNothingWasWritten) {
    EXPECT_EQ(dlxcomn({"convert", "--from", "int", "--to", "numeric", "--precision", "0", "1"}).output,
              line("-", "CS_EPRECISION", "35", "-"));
    EXPECT_EQ(dlxcomn({"convert", "--from", "bit", "--to", "int", "2"}).output, line("-", "CS_EDOMAIN", "-", "-"));
    EXPECT_EQ(dlxcomn({"convert", "--from", "int", "--to", "char", "--length", "1", "12345"}).output,
              line("-", "CS_EOVERFLOW", "1", "-"));
}

TEST(Convert, ShowsABitInAVarcharThoughItsLengthIsNotTold) {
    EXPECT_DONE(dlxcomn({"convert", "--from", "bit", "--to", "varchar", "1"}),
                line("\"1\"", "CS_SUCCEED", "-", "010031"));
}

TEST(Convert, QuotesTextAndEscapesWhatHasNoGlyph) {
    EXPECT_DONE(dlxcomn({"convert", "--from", "int", "--to", "char", "--format", "nullterm", "7"}),
                line("\"7\\0\"", "CS_SUCCEED", "2", "3700"));
    EXPECT_DONE(dlxcomn({"convert", "--from", "int", "--to", "varchar", "-7"}),
                line("\"-7\"", "CS_SUCCEED", "258", "02002d37"));
}

TEST(Convert, PadsAsTheFormatSays) {
    const auto padded = [](const char *format) {
        return dlxcomn({"convert", "--from", "int", "--to", "char", "--length", "4", "--format", format, "42"});
    };
    EXPECT_DONE(padded("blankpad"), line("\"42  \"", "CS_SUCCEED", "4", "34322020"));
    EXPECT_DONE(padded("zeropad"), line("\"42\\0\\0\"", "CS_SUCCEED", "4", "34320000"));
    EXPECT_DONE(padded("blankpad,nullterm"), line("\"42 \\0\"", "CS_SUCCEED", "4", "34322000"));
    const ProcessOutcome both = padded("zeropad,blankpad");
    EXPECT_THAT(both.output, HasSubstr("CS_EFORMAT"));
    EXPECT_EQ(both.exit_code, 1);
}

TEST(Convert, ShowsTheAsteriskOfANumberThatDoesNotFit) {
    EXPECT_EQ(dlxcomn({"convert", "--from", "int", "--to", "char", "--length", "3", "12345"}).output,
              line("\"*\"", "CS_EOVERFLOW", "1", "2a"));
    EXPECT_EQ(dlxcomn({"convert", "--from", "int", "--to", "char", "--length", "0", "1"}).output,
              line("-", "CS_EOVERFLOW", "0", "-"));
}

TEST(Convert, ShowsBytesInMemoryOrderAndCutWhereTheRoomEnds) {
    EXPECT_DONE(dlxcomn({"convert", "--from", "int", "--to", "binary", "258"}),
                line("0x02010000", "CS_SUCCEED", "4", "02010000"));
    EXPECT_EQ(dlxcomn({"convert", "--from", "int", "--to", "binary", "--length", "1", "258"}).output,
              line("0x02", "CS_ETRUNCATED", "1", "02"));
    EXPECT_DONE(dlxcomn({"convert", "--from", "smallint", "--to", "varbinary", "258"}),
                line("0x0201", "CS_SUCCEED", "258", "02000201"));
}

TEST(Convert, ShowsMoneyWithItsFourDecimals) {
    EXPECT_DONE(dlxcomn({"convert", "--from", "float", "--to", "money", "1.00005"}),
                line("1.0001", "CS_SUCCEED", "8", "0000000011270000"));
    EXPECT_EQ(dlxcomn({"convert", "--to", "money4", "214749"}).output,
              line("214748.3647", "CS_EOVERFLOW", "4", "ffffff7f"));
}

TEST(Convert, ShowsWhatStandsForANull) {
    EXPECT_DONE(dlxcomn({"convert", "--from", "void", "--to", "datetime", "null"}),
                line("0:0", "CS_SUCCEED", "8", "0000000000000000"));
    EXPECT_DONE(dlxcomn({"convert", "--from", "void", "--to", "char", "null"}), line("\"\"", "CS_SUCCEED", "0", "-"));
    EXPECT_DONE(dlxcomn({"convert", "--from", "void", "--to", "void", "null"}), line("-", "CS_SUCCEED", "-", "-"));
}

TEST(Convert, TakesThePrecisionOfTheSourceWhereTheConversionDoes) {
    EXPECT_DONE(dlxcomn({"convert", "--to", "numeric", "--precision", "source", "--scale", "source", "1.5"}),
                line("1.5", "CS_SUCCEED", "4", "0201000f"));
    EXPECT_DONE(dlxcomn({"convert", "--to", "numeric", "--scale", "source", "1.5"}),
                line("1.5", "CS_SUCCEED", "4", "0201000f"));
    EXPECT_DONE(dlxcomn({"convert", "--from", "bigint", "--to", "numeric", "--precision", "source", "1"}),
                line("1", "CS_SUCCEED", "35", "150000000000000000000001"));
    EXPECT_EQ(dlxcomn({"convert", "--from", "int", "--to", "numeric", "--precision", "source", "1"}).output,
              line("-", "CS_EPRECISION", "35", "-"));
}

// Seventy-seven decimals with a sign are one character too many for the conversion to text: a contract of the
// library, which would end the process of a caller that does not ask to go on.
TEST(Convert, SurvivesABrokenContractAndTellsIt) {
    const std::string literal = "-0." + std::string(76, '0') + "1";
    const ProcessOutcome outcome = dlxcomn({"convert", "--to", "char", literal, "0.5"});
    EXPECT_EQ(outcome.output, line("-", "CS_EOVERFLOW", "-", "-") + line("\"0.5\"", "CS_SUCCEED", "3", "302e35"));
    EXPECT_THAT(outcome.errors, HasSubstr("comn_numtochar reported a broken contract"));
    EXPECT_EQ(outcome.exit_code, 1);
}

TEST(Convert, ShowsANumericThatTheConversionToTextHasNoRoomFor) {
    const std::string literal = "-0." + std::string(76, '0') + "1";
    const ProcessOutcome outcome = dlxcomn({"convert", "--to", "numeric", literal});
    EXPECT_THAT(outcome.output, StartsWith(literal + "  CS_SUCCEED"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exit_code, 0);
}

// ---- convert: standard input ----

TEST(Convert, ReadsStandardInputALineEach) {
    const std::string expected = line("1", "CS_SUCCEED", "1", "01") + line("2", "CS_SUCCEED", "1", "02");
    EXPECT_DONE(dlxcomn({"convert", "--to", "tinyint"}, "1\n2\n"), expected);
    EXPECT_DONE(dlxcomn({"convert", "--to", "tinyint"}, "1\r\n 2"), expected); // no newline behind the last one
    EXPECT_DONE(dlxcomn({"convert", "--to", "tinyint"}, ""), "");
}

TEST(Convert, TriesEveryLineOfStandardInput) {
    const ProcessOutcome outcome = dlxcomn({"convert", "--from", "int", "--to", "tinyint"}, "x\n\n300\n4\n");
    EXPECT_EQ(outcome.output, line("255", "CS_EOVERFLOW", "1", "ff") + line("4", "CS_SUCCEED", "1", "04"));
    EXPECT_THAT(outcome.errors, HasSubstr("\"x\" is no int value"));
    EXPECT_THAT(outcome.errors, HasSubstr("\"\" is no int value"));
    EXPECT_EQ(outcome.exit_code, 2);
}

TEST(Convert, TellsThatStandardInputCannotBeRead) {
    const ProcessOutcome outcome = shell("dlxcomn convert --to int < /");
    EXPECT_THAT(outcome.errors, HasSubstr("cannot read standard input: Is a directory"));
    EXPECT_EQ(outcome.exit_code, 2);
}

// ---- convert: what cannot be done ----

TEST(Convert, SuggestsADatatype) {
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "itn", "1"}),
                   "no datatype \"itn\"; did you mean int? `dlxcomn types` lists them");
    EXPECT_MISUSED(dlxcomn({"convert", "--from", "double", "--to", "int", "1"}), "did you mean float?");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "xyzzy", "1"}), "no datatype \"xyzzy\"; `dlxcomn types` lists them");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "40", "1"}), "ids run from 0 to 39");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "-1", "1"}), "ids run from 0 to 39");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "", "1"}), "no datatype \"\"; `dlxcomn types` lists them");
}

TEST(Convert, WantsADestination) { EXPECT_MISUSED(dlxcomn({"convert", "1"}), "convert wants --to TYPE"); }

TEST(Convert, TellsTheFormThatALiteralTakes) {
    EXPECT_MISUSED(dlxcomn({"convert", "--from", "tinyint", "--to", "int", "256"}),
                   "\"256\" is no tinyint value; it takes a whole number from 0 to 255");
    EXPECT_MISUSED(dlxcomn({"convert", "--from", "void", "--to", "int", "1"}), "it takes the word null");
    EXPECT_MISUSED(dlxcomn({"convert", "--from", "numeric", "--to", "int", std::string(78, '1')}),
                   "it takes a decimal number of at most 77 digits");
}

TEST(Convert, TellsWhichDestinationsThereAre) {
    EXPECT_MISUSED(dlxcomn({"convert", "--from", "bit", "--to", "money", "1"}),
                   "no conversion from bit to money; bit converts to char, binary,");
    EXPECT_MISUSED(dlxcomn({"convert", "--from", "blob", "--to", "int", "1"}), "blob converts to no datatype");
    EXPECT_EQ(dlxcomn({"convert", "--from", "bit", "--to", "money"}, "1\n1\n").output, "");
}

TEST(Convert, TellsWhatAValueWasTakenFor) {
    const ProcessOutcome outcome = dlxcomn({"convert", "--to", "ushort", "5", "0.5"});
    EXPECT_THAT(outcome.errors, HasSubstr("no conversion from bigint to ushort; bigint converts to "));
    EXPECT_THAT(outcome.errors,
                HasSubstr("; \"5\" was taken for bigint as it is a whole number, --from says otherwise\n"));
    EXPECT_THAT(outcome.errors, HasSubstr("; \"0.5\" was taken for numeric as it has a decimal point,"));
    EXPECT_EQ(outcome.exit_code, 2);
}

TEST(Convert, RefusesAPairThatCannotRun) {
    EXPECT_MISUSED(dlxcomn({"convert", "--from", "textlocator", "--to", "int", "1"}),
                   "the conversion from textlocator to int cannot run: comn_i8toi4 takes bigint and long alone");
}

TEST(Convert, RefusesOptionsOutOfRange) {
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "char", "--length", "-1", "1"}),
                   "--length takes a whole number from 0 to 16777216, not \"-1\"");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "char", "--length", "16777217", "1"}), "--length takes");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "numeric", "--precision", "many", "1"}),
                   "--precision takes a whole number or `source`, not \"many\"");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "numeric", "--scale", "99999999999", "1"}), "--scale takes");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "char", "--format", "nullterm,padded", "1"}),
                   "no format \"padded\"; --format takes nullterm, blankpad and zeropad");
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "char", "--format", "", "1"}), "no format \"\"");
}

TEST(Convert, TakesOperandsBehindTwoDashesAsTheyStand) {
    EXPECT_MISUSED(dlxcomn({"convert", "--to", "int", "--", "--5"}), "\"--5\" was taken for char");
    EXPECT_DONE(dlxcomn({"convert", "--from", "int", "--to", "int", "--", "-5"}),
                line("-5", "CS_SUCCEED", "4", "fbffffff"));
}

// ---- Output that cannot be written ----

TEST(Output, FailureToWriteIsTold) {
    for (const char *subcommand : {"types", "tour", "matrix", "--help", "--version", "convert --to int 1"}) {
        const ProcessOutcome outcome = shell(std::string("dlxcomn ") + subcommand + " > /dev/full");
        EXPECT_EQ(outcome.errors, "dlxcomn: cannot write to standard output: No space left on device\n") << subcommand;
        EXPECT_EQ(outcome.exit_code, 1) << subcommand;
    }
}

TEST(Output, AReaderThatWentAwayIsTold) {
    const ProcessOutcome outcome =
        shell("{ yes 1 | dlxcomn convert --to int; echo exit $? >&2; } | head -n 1 > /dev/null");
    EXPECT_THAT(outcome.errors, HasSubstr("dlxcomn: cannot write to standard output: Broken pipe\n"));
    EXPECT_THAT(outcome.errors, HasSubstr("exit 1\n"));
}

TEST(Output, AClosedOneIsTold) {
    const ProcessOutcome outcome = shell("dlxcomn types >&-");
    EXPECT_THAT(outcome.errors, HasSubstr("cannot write to standard output: Bad file descriptor"));
    EXPECT_EQ(outcome.exit_code, 1);
}

// ---- types, matrix, tour ----

TEST(Types, ListsTheFortyIds) {
    const ProcessOutcome outcome = dlxcomn({"types"});
    const std::vector<std::string> lines = lines_of(outcome.output);
    ASSERT_EQ(lines.size(), 41u);
    EXPECT_THAT(lines[0], StartsWith("id  name            word         width  layout"));
    EXPECT_THAT(lines[1], StartsWith(" 0  char            char         given  text"));
    EXPECT_THAT(lines[17], StartsWith("16  numeric         num             35  precision, scale"));
    EXPECT_THAT(lines[21], StartsWith("20  long            i8           given  "));
    EXPECT_THAT(lines[31], StartsWith("30  bigint          i8               8  "));
    EXPECT_THAT(lines[40], StartsWith("39  unitextlocator  locator      given  "));
    EXPECT_LE(widest_line(outcome.output), 100u);
    EXPECT_EQ(outcome.exit_code, 0);
}

TEST(Matrix, DrawsFortyRowsWithALegendThatCountsThem) {
    const ProcessOutcome outcome = dlxcomn({"matrix"});
    const std::vector<std::string> lines = lines_of(outcome.output);
    ASSERT_EQ(lines.size(), 3u + 40 + 2);
    EXPECT_LE(widest_line(outcome.output), 100u);
    int filled = 0, not_runnable = 0, empty = 0;
    for (size_t row = 3; row < 43; ++row) {
        ASSERT_EQ(lines[row].size(), 18u + 2 * 40) << lines[row];
        for (size_t column = 19; column < lines[row].size(); column += 2) {
            filled += lines[row][column] == 'o';
            not_runnable += lines[row][column] == 'x';
            empty += lines[row][column] == '.';
        }
    }
    EXPECT_EQ(filled + not_runnable + empty, 1600);
    EXPECT_EQ(lines.back(), "o filled: " + std::to_string(filled) + "   x filled but not runnable: " +
                                std::to_string(not_runnable) + "   . empty: " + std::to_string(empty));
    EXPECT_EQ(not_runnable, 25); // sensitivity to int, and eight columns of each locator
    EXPECT_EQ(outcome.exit_code, 0);
}

TEST(Matrix, MarksTheCellsOfARow) {
    const std::vector<std::string> lines = lines_of(dlxcomn({"matrix"}).output);
    ASSERT_EQ(lines.size(), 45u);
    const auto at = [&lines](int from, int to) { return lines[3 + from][19 + 2 * to]; };
    EXPECT_EQ(at(8, 6), 'o');   // int to tinyint
    EXPECT_EQ(at(11, 14), '.'); // bit to money
    EXPECT_EQ(at(21, 8), 'x');  // sensitivity to int
    EXPECT_EQ(at(20, 8), 'o');  // long to int
    EXPECT_EQ(at(23, 23), 'o'); // void to void
    EXPECT_EQ(at(24, 24), '.'); // ushort
    EXPECT_EQ(at(39, 33), 'x'); // unitextlocator to ubigint
}

TEST(Matrix, NamesTheFunctionOfAPair) {
    EXPECT_DONE(dlxcomn({"matrix", "int", "tinyint"}), "comn_i4toi1\n");
    EXPECT_DONE(dlxcomn({"matrix", "20", "decimal"}), "comn_i8tonum\n");
    EXPECT_DONE(dlxcomn({"matrix", "float", "TEXT"}), "comn_flt8tochar\n");
    EXPECT_DONE(dlxcomn({"matrix", "void", "money"}), "comn_voidtoany\n");
    EXPECT_DONE(dlxcomn({"matrix", "void", "void"}), "comn_voidtovoid\n");
    EXPECT_DONE(dlxcomn({"matrix", "textlocator", "int"}),
                "comn_i8toi4  (not runnable: it takes bigint and long alone)\n");
}

TEST(Matrix, ListsARow) {
    const ProcessOutcome outcome = dlxcomn({"matrix", "long"});
    const std::vector<std::string> lines = lines_of(outcome.output);
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(lines[0], "int             comn_i8toi4");
    EXPECT_EQ(lines[7], "ubigint         comn_i8toui8");
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_MISUSED(dlxcomn({"matrix", "blob"}), "blob converts to no datatype");
}

TEST(Matrix, TellsThatAPairHasNoFunction) {
    const ProcessOutcome outcome = dlxcomn({"matrix", "bit", "money"});
    EXPECT_MISUSED(outcome, "no conversion from bit to money; bit converts to char, binary,");
    EXPECT_THAT(outcome.errors, HasSubstr("usmallint, uint and ubigint\n"));
    EXPECT_MISUSED(dlxcomn({"matrix", "int", "tinyitn"}), "did you mean tinyint?");
}

// What stands in front of a column.
std::string up_to_column(const std::string &line, size_t column) {
    std::string result = line;
    while (client::columns(result) > column)
        result.pop_back();
    return result;
}

TEST(Tour, IsATableThatFitsTheTerminal) {
    const ProcessOutcome outcome = dlxcomn({"tour"});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exit_code, 0);
    bool is_table = true;
    for (const std::string &one : lines_of(outcome.output)) {
        EXPECT_LE(client::columns(one), 100u) << one;
        is_table = is_table && !one.starts_with("A failure arrives"); // whose messages are no columns
        if (!is_table || !one.starts_with("  "))
            continue;
        ASSERT_GT(client::columns(one), 64u) << one;
        EXPECT_EQ(one.substr(up_to_column(one, 63).size(), 4), " CS_") << one; // the column of statuses
        EXPECT_NE(one[up_to_column(one, 41).size()], ' ') << one;              // the column of results
        EXPECT_EQ(one[up_to_column(one, 40).size()], ' ') << one;
    }
}

TEST(Tour, EndsWithTextOfTheDataHome) {
    const std::string tour = dlxcomn({"tour"}).output;
    for (const char *line : {
             "\n  month 3 of de_DE, iso_1                März                   CS_SUCCEED    4de4727a\n",
             "\n  first day of ja_JP, eucjis             日曜日                 CS_SUCCEED    c6fccdcbc6fc\n",
             "\n  utf8 Grüße -> cp850                    0x477281e165           CS_SUCCEED\n",
             "\n  utf8 日本 -> cp939                     0x0e456245660f         CS_SUCCEED    in its second state\n",
             "\n  sjis 0x93fa967b82 -> eucjis            0xc6fccbdc             CS_ETRUNCATED its end is missing\n",
             "\n  dict: Zebra, apfel                     comes second           CS_SUCCEED    by the letters\n",
             "\n  nocase: APFEL, apfel                   the same               CS_SUCCEED\n",
             "\n  de_DE        HY001  dlxcomn: Client: gemeinsame Bibliothek: der Speicher reicht nicht aus\n",
             "\n  ja_JP        HY000  dlxcomn: クライアント: 共通ライブラリ: 構成ファイル「ncs.cfg」を開けません\n"})
        EXPECT_THAT(tour, HasSubstr(line));
}

TEST(Tour, WithoutAHomeFailsBehindItsOtherChapters) {
    const support::Variable home("DALVEX", "/nonexistent");
    const ProcessOutcome outcome = dlxcomn({"tour"});
    EXPECT_THAT(outcome.output, HasSubstr("exactly 0.00005\n"));
    EXPECT_THAT(outcome.errors, StartsWith("dlxcomn: the home \"/nonexistent\" is no directory that can be read"));
    EXPECT_EQ(outcome.exit_code, 1);
}

TEST(Tour, ShowsSaturationStatusesRoundingAndTruncation) {
    const std::string tour = dlxcomn({"tour"}).output;
    const auto shows = [&tour](const char *what, const char *result, const char *status) {
        char line[128];
        std::snprintf(line, sizeof line, "\n  %-38s %-22s %s", what, result, status);
        EXPECT_THAT(tour, HasSubstr(line));
    };
    shows("int -1 -> tinyint", "0", "CS_EOVERFLOW");
    shows("bigint -1 -> tinyint", "0", "CS_EUNDERFLOW");
    shows("bigint 9223372036854775807 -> float", "9.2233720368547697e+18", "CS_SUCCEED");
    shows("bit 2 -> int", "-", "CS_EDOMAIN");
    shows("int 12345 -> char(4)", "\"*\"", "CS_EOVERFLOW");
    shows("numeric 123.45 -> char(5)", "\"123.4\"", "CS_EOVERFLOW");
    shows("float -1.9 -> int", "-1", "CS_SUCCEED");
    shows("float 255.5 -> tinyint", "255", "CS_EOVERFLOW");
    shows("numeric 12.349 -> numeric(10,2)", "12.34", "CS_ETRUNCATED");
    shows("numeric 99 + 1", "100", "CS_SUCCEED");
    shows("numeric 9999999999 * 9999999999", "99999999980000000001", "CS_SUCCEED");
    shows("numeric 1 / 3", "0.333333", "CS_SUCCEED");
    shows("numeric 2 / 3", "0.666666", "CS_SUCCEED");
    shows("numeric 1 / 0.00", "-", "CS_EDIVZERO");
    shows("money 0.0150 * 0.0100", "0.0002", "CS_SUCCEED");
    shows("money 2.0000 / 3.0000", "0.6666", "CS_SUCCEED");
    shows("money 0.0100 * 0.0050", "-", "CS_ESYNTAX");
}

} // namespace
