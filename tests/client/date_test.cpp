// dlxcomn date: what it prints of values and of texts that are none, and which token it says stopped a text.
#include "command/date.h"
#include "support/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using client::date_tokens;
using client::DateRules;
using client::DateToken;
using client::read_date;
using client::stopping_token;
using support::ProcessOutcome;
using testing::HasSubstr;
using testing::StartsWith;

ProcessOutcome date(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {DLXCOMN_COMMAND, "date"});
    return support::run_process(std::move(arguments));
}

#define EXPECT_PRINTS(outcome, code, expected) \
    do { \
        const ProcessOutcome &told = (outcome); \
        EXPECT_EQ(told.output, expected); \
        EXPECT_EQ(told.errors, ""); \
        EXPECT_EQ(told.exit_code, code); \
    } while (0)

// ---- Values ----

TEST(Date, PrintsFieldsPartsAndStyles) {
    EXPECT_PRINTS(date({"Jan 5 2024 1:07:08.5PM"}), 0, R"("Jan 5 2024 1:07:08.5PM" is a datetime
  dtdays       45294
  dttime       14168550

  year         2024
  quarter      1
  month        1  January
  weekday      6  Friday
  day          5
  day of year  5
  hour         13
  minute       7
  second       8
  millisecond  500
  week         1
  ISO year     2024
  ISO week     1
  ISO weekday  5  Friday
  microsecond  0

    0  "Jan  5 2024  1:07PM"                 100  "Jan  5 2024  1:07PM"
    1  "01/05/24"                            101  "01/05/2024"
    2  "24.01.05"                            102  "2024.01.05"
    3  "05/01/24"                            103  "05/01/2024"
    4  "05.01.24"                            104  "05.01.2024"
    5  "05-01-24"                            105  "05-01-2024"
    6  "05 Jan 24"                           106  "05 Jan 2024"
    7  "Jan 05, 24"                          107  "Jan 05, 2024"
    8  "13:07:08"                            108  "13:07:08"
    9  "Jan  5 2024  1:07:08:500PM"          109  "Jan  5 2024  1:07:08:500PM"
   10  "01-05-24"                            110  "01-05-2024"
   11  "24/01/05"                            111  "2024/01/05"
   12  "240105"                              112  "20240105"
   13  "24/05/01"                            113  "2024/05/01"
   14  "01/24/05"                            114  "01/2024/05"
   15  "05/24/01"                            115  "05/2024/01"
   16  "Jan  5 2024 13:07:08"                116  "Jan  5 2024 13:07:08"
   17  " 1:07PM"                             117  " 1:07PM"
   18  "13:07"                               118  "13:07"
   19  " 1:07:08:500PM"
   20  "13:07:08:500"
   21  "24/01/05 13:07:08"                   121  "2024/01/05 13:07:08"
   22  "24/01/05  1:07PM"                    122  "2024/01/05  1:07PM"
   23  "2024-01-05T13:07:08"
   36  " 1:07:08.500000PM"                   136  " 1:07:08.500000PM"
   37  "13:07:08.500000"                     137  "13:07:08.500000"
   38  "Jan  5 24  1:07:08.500000PM"         138  "Jan  5 2024  1:07:08.500000PM"
   39  "Jan  5 24 13:07:08.500000"           139  "Jan  5 2024 13:07:08.500000"
   40  "24-01-05 13:07:08.500000"            140  "2024-01-05 13:07:08.500000"
)");
}

TEST(Date, ShowsADashForWhatATimeDoesNotHave) {
    EXPECT_PRINTS(date({"--type", "time", "12:30:15AM"}), 0, R"("12:30:15AM" is a time
  ticks        544500

  year         -
  quarter      -
  month        -
  weekday      -
  day          -
  day of year  -
  hour         0
  minute       30
  second       15
  millisecond  0
  week         -
  ISO year     -
  ISO week     -
  ISO weekday  -
  microsecond  0

    0  "12:30AM"                             100  "Jan  1 1900 12:30AM"
    1  -                                     101  -
    2  -                                     102  -
    3  -                                     103  -
    4  -                                     104  -
    5  -                                     105  -
    6  -                                     106  -
    7  -                                     107  -
    8  "00:30:15"                            108  "00:30:15"
    9  "12:30:15:000AM"                      109  "Jan  1 1900 12:30:15:000AM"
   10  -                                     110  -
   11  -                                     111  -
   12  -                                     112  -
   13  -                                     113  -
   14  -                                     114  -
   15  -                                     115  -
   16  "Jan  1 1900 00:30:15"                116  "Jan  1 1900 00:30:15"
   17  "12:30AM"                             117  "12:30AM"
   18  "00:30"                               118  "00:30"
   19  "12:30:15:000AM"
   20  "00:30:15:000"
   21  "00/01/01 00:30:15"                   121  "1900/01/01 00:30:15"
   22  "00/01/01 12:30AM"                    122  "1900/01/01 12:30AM"
   23  "1900-01-01T00:30:15"
   36  "12:30:15.000000AM"                   136  "12:30:15.000000AM"
   37  "00:30:15.000000"                     137  "00:30:15.000000"
   38  "Jan  1 00 12:30:15.000000AM"         138  "Jan  1 1900 12:30:15.000000AM"
   39  "Jan  1 00 00:30:15.000000"           139  "Jan  1 1900 00:30:15.000000"
   40  "00-01-01 00:30:15.000000"            140  "1900-01-01 00:30:15.000000"
)");
}

struct TypeCase {
    const char *type;
    const char *text;
    std::vector<const char *> shown;
};

class Types : public testing::TestWithParam<TypeCase> {};

TEST_P(Types, ShowTheirFieldsAndParts) {
    const ProcessOutcome outcome = date({"--type", GetParam().type, GetParam().text});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.errors, "");
    for (const char *line : GetParam().shown)
        EXPECT_THAT(outcome.output, HasSubstr("\n" + std::string(line) + "\n"));
}

INSTANTIATE_TEST_SUITE_P(
    All, Types,
    testing::Values(
        TypeCase{"datetime", "Jan 1 1753 0:0:0:3",
                 {"  dtdays       -53690", "  dttime       1", "  millisecond  3", "  weekday      2  Monday"}},
        TypeCase{"datetime4", "6/6/2079 23:59:29",
                 {"  days         65535", "  minutes      1439", "  year         2079", "  second       0",
                  "   40  \"79-06-06 23:59:00.000000\"            140  \"2079-06-06 23:59:00.000000\""}},
        TypeCase{"date", "31 Dec 9999",
                 {"  days         2958463", "  hour         -", "  microsecond  -", "  weekday      6  Friday",
                  "    0  \"Dec 31 9999\"                         100  \"Dec 31 9999 12:00AM\""}},
        TypeCase{"bigdatetime", "1 Jan 2021 0:0:0.000001",
                 {"  microseconds 63776678400000001", "  microsecond  1", "  ISO year     2020", "  ISO week     53"}},
        TypeCase{"bigtime", "23:59:59.999999",
                 {"  microseconds 86399999999", "  millisecond  999", "  microsecond  999999", "  year         -"}}));

TEST(Date, TellsWhenDigitsOfAFractionWereLost) {
    EXPECT_THAT(date({"10:30:15.1234"}).output,
                StartsWith("\"10:30:15.1234\" is a datetime; digits of its fraction were lost\n"));
    EXPECT_THAT(date({"10:30:15.123"}).output, StartsWith("\"10:30:15.123\" is a datetime\n"));
    EXPECT_THAT(date({"--type", "bigtime", "10:30:15.1234"}).output,
                StartsWith("\"10:30:15.1234\" is a bigtime\n"));
}

TEST(Date, ReadsByOrderAndStyle) {
    const auto short_form = [](std::vector<std::string> options) {
        options.push_back("1/2/03");
        const std::string output = date(std::move(options)).output;
        return output.substr(output.find("112  \"") + 6, 8);
    };
    EXPECT_EQ(short_form({}), "20030102");
    EXPECT_EQ(short_form({"--order", "mdy"}), "20030102");
    EXPECT_EQ(short_form({"--order", "dmy"}), "20030201");
    EXPECT_EQ(short_form({"--order", "ymd"}), "20010203");
    EXPECT_EQ(short_form({"--order", "ydm"}), "20010302");
    EXPECT_EQ(short_form({"--order", "myd"}), "20020103");
    EXPECT_EQ(short_form({"--order", "DYM"}), "20020301");
    EXPECT_EQ(short_form({"--style", "3"}), "20030201");
    EXPECT_EQ(short_form({"--order=ymd", "--style=1"}), "20030102");
}

TEST(Date, ReadsEachTextByItself) {
    const ProcessOutcome outcome = date({"--type", "date", "1/2/03", "1/2", "31.12.99"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_THAT(outcome.output, StartsWith("\"1/2/03\" is a date\n  days         37621\n\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\"2003-01-02 00:00:00.000000\"\n\n\"1/2\" is no date: "));
    EXPECT_THAT(outcome.output, HasSubstr("\n\n\"31.12.99\" is no date: the month is out of range (2)\n"));
}

TEST(Date, AnEmptyTextIsMidnightOfTheFirstDay) {
    EXPECT_THAT(date({""}).output, StartsWith("\"\" is a datetime\n  dtdays       0\n  dttime       0\n"));
    EXPECT_THAT(date({"--type=bigdatetime", " "}).output,
                StartsWith("\" \" is a bigdatetime\n  microseconds 31622400000000\n"));
}

// ---- Texts that are none ----

TEST(Date, ShowsTheTokensAndTheOneThatStoppedIt) {
    EXPECT_PRINTS(date({"Jan 2 Sat 2003"}), 1, R"("Jan 2 Sat 2003" is no datetime: its tokens make no date (-1)
  "Jan"        DT_MONTH     0
  "2"          DT_NUMBER    2
  "Sat"        DT_ERROR                  stops it
)");
    EXPECT_PRINTS(date({"2003-01-02T10"}), 1, R"("2003-01-02T10" is no datetime: its tokens make no date (-1)
  "2003"       DT_YEAR4     2003
  "-"          DT_SEP
  "01"         DT_NUMBER    1
  "-"          DT_SEP
  "02"         DT_NUMBER    2
  "T"          DT_T
  "10"         DT_NUMBER    10
  the end of the text stops it: something is missing
)");
    EXPECT_PRINTS(date({"13 am"}), 1, R"("13 am" is no datetime: AM or PM contradicts the hour (9)
  "13"         DT_NUMBER    13
  "am"         DT_AMPM      0            stops it
)");
}

TEST(Date, ShowsOneTokenMoreThanADateMayHave) {
    std::string commas = "1/2/03";
    for (int i = 0; i < 30; ++i)
        commas += ",";
    EXPECT_THAT(date({commas}).output, HasSubstr("  \",\"          DT_COMMA                  stops it\n"));
    EXPECT_EQ(date_tokens(commas).size(), 21u);
    EXPECT_EQ(date_tokens(std::string(20, ',')).size(), 20u);
}

TEST(Date, ShowsBytesWithoutAGlyph) {
    EXPECT_THAT(date({"1/2/03\t10:30"}).output, HasSubstr("\n  \"\\x09\"       DT_ERROR                  stops it\n"));
}

struct StopCase {
    const char *text;
    const char *stop; // null for the end of the text
    int code;
    DateRules rules = {};
};

class Stops : public testing::TestWithParam<StopCase> {};

TEST_P(Stops, AtTheTokenBehindWhichNothingHelps) {
    const StopCase &test = GetParam();
    const std::vector<DateToken> tokens = date_tokens(test.text);
    EXPECT_EQ(read_date(test.text, test.rules).code, test.code);
    const size_t stop = stopping_token(tokens, test.text, test.rules);
    if (test.stop == nullptr) {
        EXPECT_EQ(stop, tokens.size());
    } else {
        ASSERT_LT(stop, tokens.size());
        EXPECT_EQ(tokens[stop].text, test.stop);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Stops,
    testing::Values(
        // Something is missing.
        StopCase{"1/2", nullptr, DATE_SYNTAX}, StopCase{"1/", nullptr, DATE_SYNTAX},
        StopCase{"Jan", nullptr, DATE_SYNTAX}, StopCase{"Jan 2", nullptr, DATE_SYNTAX},
        StopCase{"2-Jan-", nullptr, DATE_SYNTAX}, StopCase{"10:", nullptr, DATE_SYNTAX},
        StopCase{"10:30:15.", nullptr, DATE_SYNTAX}, StopCase{"1/2/03 10:", nullptr, DATE_SYNTAX},
        StopCase{"10:30 1/2", nullptr, DATE_SYNTAX}, StopCase{"1/2 10:30", nullptr, DATE_SYNTAX},
        StopCase{"1/2/03", nullptr, DATE_SYNTAX, {CS_DATETIME_TYPE, 101}},
        // A token is one too many.
        StopCase{"1/2/03 4", "4", DATE_LEFTOVER}, StopCase{"1/2/03 4 5", "5", DATE_LEFTOVER},
        StopCase{"10", "10", DATE_LEFTOVER}, StopCase{"2003 2004", "2004", DATE_LEFTOVER},
        StopCase{"20030102 20030103", "20030103", DATE_LEFTOVER}, StopCase{"Jan 2 2003 Feb", "Feb", DATE_LEFTOVER},
        // A token means nothing here.
        StopCase{"Sat", "Sat", DATE_SYNTAX}, StopCase{"1234567", "1234567", DATE_SYNTAX},
        StopCase{"Tuesday", "uesday", DATE_SYNTAX}, StopCase{"2003-01-02TX", "X", DATE_SYNTAX},
        StopCase{"12:30:15:1000", "1000", DATE_SYNTAX}, StopCase{"10:2003", "2003", DATE_SYNTAX},
        StopCase{"2003:10", ":", DATE_SYNTAX},
        // A value is out of its range.
        StopCase{"1/2/100", "100", DATE_YEAR2}, StopCase{"13AM", "AM", DATE_AMPM}, StopCase{"0PM", "PM", DATE_AMPM},
        StopCase{"Feb 30 2003", "30", DATE_BADDAY}, StopCase{"Feb 29 2003", "2003", DATE_BADDAY},
        StopCase{"25:00", ":", 1}, StopCase{"Jan 2 1700", "1700", 1},
        StopCase{"1/1/2080", "2080", 1, {CS_DATETIME4_TYPE}}));

// Every beginning of a text that reads may still become a date: the end of it is never told too early.
TEST(Stopping, NoBeginningOfAGoodTextIsStopped) {
    static constexpr const char *DATES[] = {"1/2/03",      "01-02-1999", "1999/01/02",  "Jan 2 2003", "2 Jan 2003",
                                            "2-Jan-2003",  "jan 2 03",   "Jan 2003",    "20030102",   "030102",
                                            "2003",        "1.2.03",     "2003.01.02",  "2-Jan-03",   "January 2, 2003",
                                            "2003 Jan 02", "Jan/2/2003", "2, Jan, 2003"};
    static constexpr const char *TIMES[] = {"",         "10:30",      "10:30:15",      "10:30:15.123",   "10:30:15:123",
                                            "3PM",      "12:00 AM",   "1:02:03.5PM",   "10:30.5",        "3 pm",
                                            "10:30:15.123456", "1:2:3:4AM"};
    std::mt19937_64 random(0x570B);
    int checked = 0;
    for (const char *day : DATES)
        for (const char *time : TIMES) {
            const std::string text = random() % 2 == 0 ? std::string(day) + " " + time : std::string(time) + " " + day;
            for (const CS_INT type : {CS_DATETIME_TYPE, CS_BIGDATETIME_TYPE, CS_DATE_TYPE})
                for (int order = DATEORDER_MDY; order <= DATEORDER_DYM; ++order) {
                    const DateRules rules = {type, 0, order};
                    if (read_date(text, rules).code != DATE_OK)
                        continue;
                    ++checked;
                    const std::vector<DateToken> tokens = date_tokens(text);
                    for (size_t count = 1; count <= tokens.size(); ++count) {
                        const auto length =
                            static_cast<size_t>(tokens[count - 1].text.data() + tokens[count - 1].text.size() -
                                                text.data());
                        const std::string beginning = text.substr(0, length);
                        const int code = read_date(beginning, rules).code;
                        const size_t stop = stopping_token(date_tokens(beginning), beginning, rules);
                        if (code != DATE_OK && code != DATE_LEFTOVER) {
                            EXPECT_EQ(stop, count) << text << " after " << beginning;
                        }
                    }
                }
        }
    EXPECT_GE(checked, 1000);
}

// ---- What cannot be done ----

TEST(Date, WantsATextAndKnownOptions) {
    const auto expect_misused = [](std::vector<std::string> arguments, const char *sentence) {
        const ProcessOutcome outcome = date(std::move(arguments));
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, "dlxcomn: " + std::string(sentence) + "\n`dlxcomn date --help` tells more\n");
        EXPECT_EQ(outcome.exit_code, 2);
    };
    expect_misused({}, "date wants a TEXT");
    expect_misused({"--order", "mdd", "1/2/03"}, "no order \"mdd\"; there are mdy, dmy, ymd, ydm, myd and dym");
    expect_misused({"--style", "ten", "1/2/03"}, "--style takes a whole number, not \"ten\"");
    expect_misused({"--type", "int", "1/2/03"},
                   "--type takes datetime, datetime4, date, time, bigdatetime or bigtime, not int");
    expect_misused({"--type", "datatime", "1/2/03"},
                   "no datatype \"datatime\"; did you mean datetime or datetime4? `dlxcomn types` lists them");
    expect_misused({"--format", "1", "1/2/03"}, "no option --format; there are --type, --order and --style");
}

} // namespace
