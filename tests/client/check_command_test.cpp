// dlxcomn check over homes that are whole, and homes that are not.
#include "command_fixture.h"

#include <cstdio>
#include <sstream>

namespace {

class Check : public SiteTest {
protected:
    // In the directory of the home, where the library leaves its dlxinit.err.
    support::ProcessOutcome check() const {
        return support::run_process({"/bin/sh", "-c", "cd \"$0\" && \"" DLXCOMN_COMMAND "\" check", directory_.path()});
    }
    std::string ok(const char *what, const std::string &name) const { return line(what, "ok", path_of(name)); }
    static std::string line(const char *what, const char *state, const std::string &tells) {
        char text[2048];
        std::snprintf(text, sizeof text, "%-16s%-7s%s\n", what, state, tells.c_str());
        return text;
    }
};

#define EXPECT_WRONG(outcome, what, tells)                                                                             \
    do {                                                                                                               \
        const support::ProcessOutcome &wrong = (outcome);                                                              \
        EXPECT_EQ(wrong.exit_code, 1);                                                                                 \
        EXPECT_THAT(wrong.output, HasSubstr("\n" + line(what, "wrong", tells)));                                       \
        EXPECT_THAT(wrong.errors, HasSubstr("The context allocation routine failed"));                                 \
    } while (0)

TEST_F(Check, WholeHomeIsFine) {
    EXPECT_DONE(check(), "home " + directory_.path() + "\n\n" + line("identifiers", "ok", "config/objectid.dat") +
                             line("locale names", "ok", "locales/locales.dat") +
                             ok("date data", "locales/message/us_english/common.loc") +
                             ok("client messages", "locales/message/us_english/cslib.loc") +
                             ok("messages", "locales/message/us_english/comnlib.loc") +
                             ok("sort order", "charsets/iso_1/binary.srt") +
                             ok("character set", "charsets/iso_1/charset.loc") +
                             ok("conversions", "charsets/iso_1/iso_1.cfg") +
                             line("start", "ok", "a context starts in the locale default"));
    EXPECT_FALSE(std::filesystem::exists(path_of("dlxinit.err")));
}

TEST_F(Check, ShippedHomeIsFineInEveryLocale) {
    home_.put(DLXCOMN_BUILD_DIR "/home");
    std::istringstream lines(dlxcomn({"locales"}).output);
    std::string text;
    std::getline(lines, text); // the heading
    int count = 0;
    while (std::getline(lines, text)) {
        lang_.put(text.substr(0, text.find(' ')));
        const auto outcome = check();
        EXPECT_EQ(outcome.exit_code, 0) << text << outcome.output;
        ++count;
    }
    EXPECT_GE(count, 40);
}

TEST_F(Check, EveryMissingFileIsTold) {
    remove("locales/message/us_english/common.loc");
    remove("charsets/iso_1/iso_1.cfg");
    const auto outcome = check();
    EXPECT_WRONG(outcome, "date data", path_of("locales/message/us_english/common.loc") + " cannot be read");
    EXPECT_WRONG(outcome, "conversions", path_of("charsets/iso_1/iso_1.cfg") + " cannot be read");
    EXPECT_WRONG(outcome, "start", path_of("locales/message/us_english/common.loc") + ": the file cannot be opened");
    EXPECT_THAT(outcome.errors, HasSubstr("Cannot access " + path_of("charsets/iso_1/iso_1.cfg") + " file\n"));
    EXPECT_EQ(content_of("dlxinit.err"), outcome.errors);
}

TEST_F(Check, FileThatNoStartNeedsIsToldToo) {
    remove("locales/message/us_english/cslib.loc");
    const auto outcome = check();
    EXPECT_WRONG(outcome, "client messages", path_of("locales/message/us_english/cslib.loc") + " cannot be read");
    EXPECT_THAT(outcome.output, HasSubstr(line("start", "ok", "a context starts in the locale default")));
}

TEST_F(Check, DamageIsToldByTheStart) {
    change("locales/message/us_english/comnlib.loc", "[comlayer]", "[comlayers]");
    const auto outcome = check();
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_THAT(outcome.output,
                HasSubstr("start           wrong  " + path_of("locales/message/us_english/comnlib.loc") + ":"));
}

TEST_F(Check, StopsWhereNothingIsLeftToCheck) {
    lang_.put("xx_XX");
    EXPECT_WRONG(check(), "start", "no locale \"xx_XX\"; `dlxcomn locales` lists them");
    remove("locales/locales.dat");
    EXPECT_WRONG(check(), "locale names", path_of("locales/locales.dat") + ": the file cannot be opened");
    remove("config/objectid.dat");
    EXPECT_WRONG(check(), "identifiers", path_of("config/objectid.dat") + ": the file cannot be opened");
    home_.put("/nonexistent");
    EXPECT_WRONG(check(), "identifiers",
                 "the home \"/nonexistent\" is no directory that can be read; the variable DALVEX names the home");
    home_.put("/" + std::string(5000, 'h'));
    EXPECT_FAILED(check(), "the path of the home directory has 5001 bytes; the library has room for 900");
    EXPECT_EQ(check().output, "");
}

TEST_F(Check, TakesNoArgument) {
    EXPECT_MISUSED(dlxcomn({"check", "C"}), "check takes no argument, not \"C\"");
    EXPECT_THAT(dlxcomn({"check", "--help"}).output, StartsWith("usage: dlxcomn check\n"));
}

} // namespace
