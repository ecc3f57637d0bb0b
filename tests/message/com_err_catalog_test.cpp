// The catalog of messages: its start, lookups, what is cached, failures, and threads that share it.
#include "support/assertions.h"
#include "support/failing_allocator.h"
#include "support/failing_system.h"
#include "support/messages.h"
#include "support/naive_catalog.h"
#include "support/null_calls.h"
#include "support/temp_home.h"

#include <dlxintl/intl.h>

#include <atomic>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using support::FailingAllocator;
using support::FailingSystem;
using support::MESSAGE_FILE;
using support::MessageContext;
using support::MessageLanguage;
using support::NullCalls;
using support::ReturningAssertions;

const std::string DEFAULTS = "[comdefaults]\n"
                             "1 = ZZZZ1, \"no memory for a text\"\n"
                             "2 = ZZZZ2, \"no layer\"\n"
                             "3 = ZZZZ3, \"no origin\"\n"
                             "4 = ZZZZ4, \"no message\"\n";
const std::string LAYERS = "[comlayer]\n1 = ZZZZZ, \"common library\"\n";
const std::string ORIGINS = "[comorigin]\n4 = ZZZZZ, \"api\"\n";
const std::string MESSAGES = "[comapierror]\n"
                             "1 = 01004, \"The result is truncated.\"\n"
                             "2 = 22003, \"The value of %1! is out of range.\"\n";
const std::string WHOLE_FILE = DEFAULTS + LAYERS + ORIGINS + MESSAGES;

std::string message_of(int number) { return std::to_string(number) + " = C" + std::to_string(number % 1000); }
std::string text_of(int number) { return "text " + std::to_string(number); }
// The API section with messages 1 to `count`.
std::string many_messages(int count) {
    std::string section = "[comapierror]\n";
    for (int number = 1; number <= count; ++number)
        section += message_of(number) + ", \"" + text_of(number) + "\"\n";
    return section;
}
std::string in_quotes(const std::string &text) { return "'" + text + "'"; }

class Catalog : public testing::Test {
protected:
    Catalog() { write(WHOLE_FILE); }
    void write(const std::string &content) { home_.write(MESSAGE_FILE, content); }
    void remove_file() { home_.remove(MESSAGE_FILE); }

    CS_CONTEXT *context() { return context_.get(); }
    CS_RETCODE start() { return com_errinit(context()); }
    CS_MESSAGE &record() { return language_.record(); }
    // The cached messages, newest first.
    std::vector<std::string> history() {
        std::vector<std::string> found;
        for (const CsErrorCache *error = record().locerrhist; error != nullptr; error = error->histnext)
            found.push_back(std::to_string(error->errseccache->errtag) + "/" + std::to_string(error->errnum));
        EXPECT_EQ(static_cast<CS_INT>(found.size()), record().locerrcnt);
        return found;
    }
    // Loads messages of the API section.
    void load(int first, int last) {
        for (int number = first; number <= last; ++number)
            ASSERT_EQ(context_.text(CS_ERRTAG_API, number), in_quotes(text_of(number)));
    }

    support::TempHome home_;
    MessageLanguage language_;
    MessageContext context_{language_};
};

using Strings = std::vector<std::string>;

// ---- Tables -------------------------------------------------------------------------------------------------------

TEST(CatalogTables, SectionsAndDefaultsOfThisLibrary) {
    const char *const NAMES[] = {"comdefaults", "comlayer", "comorigin", "comapierror"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Comlocsections[i].errtag, i + 1);
        EXPECT_STREQ(Comlocsections[i].errstr, NAMES[i]);
        EXPECT_EQ(Comdeferrs[i].errtag, 1);
        EXPECT_EQ(Comdeferrs[i].errnum, static_cast<CS_MSGNUM>(i + 1));
    }
}

// ---- Start --------------------------------------------------------------------------------------------------------

TEST_F(Catalog, StartReadsTheDefaultsAndNothingElse) {
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(history(), (Strings{"1/4", "1/3", "1/2", "1/1"}));
    ASSERT_NE(context_.catalog(), nullptr);
    EXPECT_STREQ(context_.catalog()->err_file, "comnlib.loc");
    EXPECT_EQ(context_.catalog()->err_locale, &language_.locale());
    ASSERT_NE(record().locfilecache, nullptr);
    EXPECT_STREQ(record().locfilecache->errfilename, "comnlib.loc");
    EXPECT_EQ(record().locfilecache->next, nullptr);
    Strings sections;
    for (const CsErrSecCache *section = record().locfilecache->errsecs; section != nullptr; section = section->next)
        sections.push_back(std::to_string(section->errtag) + section->errstr);
    EXPECT_EQ(sections, (Strings{"4comapierror", "3comorigin", "2comlayer", "1comdefaults"}));
}

TEST_F(Catalog, DefaultsAreThereWithoutTheFile) {
    ASSERT_EQ(start(), CS_SUCCEED);
    remove_file();
    EXPECT_EQ(context_.text(1, 1), "'no memory for a text'");
    EXPECT_EQ(context_.text(1, 4), "'no message'");
    EXPECT_EQ(context_.code(1, 2), "ZZZZ2");
    EXPECT_EQ(context_.text(2, 1), "status -414");
}

TEST_F(Catalog, SecondStartTakesThePresentLocale) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CS_ERRHAN *const catalog = context_.catalog();
    CS_CHAR *const file = catalog->err_file;
    CS_LOCALE other = language_.locale();
    context()->ctxlocale = &other;
    EXPECT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.catalog(), catalog);
    EXPECT_EQ(catalog->err_file, file);
    EXPECT_EQ(catalog->err_locale, &other);
    EXPECT_EQ(history().size(), 4u) << "what is cached is not read again";
    context()->ctxlocale = &language_.locale();
}

TEST_F(Catalog, SecondStartReadsDefaultsThatWereEvicted) {
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(100));
    ASSERT_EQ(start(), CS_SUCCEED);
    load(1, 98);
    EXPECT_EQ(start(), CS_SUCCEED);
    // The first two were gone; their return took the place of the other two, which came back in turn.
    const Strings now = history();
    EXPECT_EQ(Strings(now.begin(), now.begin() + 5), (Strings{"1/4", "1/3", "1/2", "1/1", "4/98"}));
    EXPECT_EQ(now.back(), "4/3");
}

TEST_F(Catalog, DropFreesTheCatalogAndKeepsTheTexts) {
    const FailingAllocator allocator;
    ASSERT_EQ(start(), CS_SUCCEED);
    const int held = allocator.held();
    EXPECT_EQ(com_errdrop(context()), CS_SUCCEED);
    EXPECT_EQ(context()->ctxcomerrhan, nullptr);
    EXPECT_EQ(allocator.held(), held - 2);
    EXPECT_EQ(history().size(), 4u);
    EXPECT_EQ(com_errdrop(context()), CS_SUCCEED) << "twice";
    EXPECT_EQ(allocator.held(), held - 2);
    language_.drop();
    EXPECT_EQ(allocator.held(), 0);
}

TEST_F(Catalog, ThreeOfFourSectionsFail) {
    for (const std::string &content : {LAYERS + ORIGINS + MESSAGES, DEFAULTS + ORIGINS + MESSAGES,
                                       DEFAULTS + LAYERS + MESSAGES, DEFAULTS + LAYERS + ORIGINS}) {
        write(content);
        EXPECT_EQ(start(), CS_FAIL);
        EXPECT_EQ(record().locfilecache, nullptr) << "what was made for it is dropped";
        EXPECT_EQ(history(), Strings());
        ASSERT_NE(context_.catalog(), nullptr) << "the catalog stays";
        EXPECT_EQ(context_.text(1, 2), "status 0");
    }
    EXPECT_EQ(context()->ctxintlerr, 0);
    write(WHOLE_FILE);
    EXPECT_EQ(start(), CS_SUCCEED);
}

TEST_F(Catalog, KnownFileStaysWhenAStartFails) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CsErrFileCache *const file = record().locfilecache;
    const auto before = history();
    write(DEFAULTS + LAYERS + ORIGINS);
    EXPECT_EQ(start(), CS_FAIL);
    remove_file();
    EXPECT_EQ(start(), CS_ENOLOCFILE);
    EXPECT_EQ(record().locfilecache, file);
    EXPECT_EQ(history(), before);
    EXPECT_EQ(context_.text(1, 2), "'no layer'");
}

TEST_F(Catalog, MissingDefaultIsNoFailure) {
    write("[comdefaults]\n3 = ZZZZ3, \"no origin\"\n" + LAYERS + ORIGINS + MESSAGES);
    EXPECT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(history(), Strings{"1/3"});
    EXPECT_EQ(context_.text(1, 2), "status 0");
}

TEST_F(Catalog, OtherSectionsAreSkippedWithoutCounting) {
    const std::string other = "[server messages]\n1 = 00000, \"not this\"\n[comlayers]\n2 = 00000, \"nor this\"\n";
    write(other + DEFAULTS + other + LAYERS + ORIGINS + other + MESSAGES + other);
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(history().size(), 4u);
    EXPECT_EQ(context_.text(1, 2), "'no layer'");
    EXPECT_EQ(context_.text(4, 1), "'The result is truncated.'");
}

TEST_F(Catalog, OddityASectionThatStandsTwiceCountsTwice) {
    write(DEFAULTS + LAYERS + DEFAULTS + ORIGINS + MESSAGES);
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(history().size(), 4u);
    EXPECT_EQ(context_.text(3, 4), "'api'");
    EXPECT_EQ(context_.text(4, 1), "status 0") << "the fifth was not looked for";
}

TEST_F(Catalog, OrderOfSectionsDoesNotMatter) {
    write(MESSAGES + ORIGINS + DEFAULTS + LAYERS);
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(history(), (Strings{"1/4", "1/3", "1/2", "1/1"}));
    EXPECT_EQ(context_.text(4, 2), "'The value of %1! is out of range.'");
}

TEST_F(Catalog, MissingFileAndMissingHomeAreToldApart) {
    remove_file();
    EXPECT_EQ(start(), CS_ENOLOCFILE);
    EXPECT_EQ(context()->ctxintlerr, INTL_ECANTOPEN);
    EXPECT_EQ(record().locfilecache, nullptr);
    home_.home().put(std::nullopt);
    EXPECT_EQ(start(), CS_EINTL);
    EXPECT_EQ(context()->ctxintlerr, INTL_ENOHOME);
    EXPECT_EQ(record().locfilecache, nullptr);
    EXPECT_NE(context_.catalog(), nullptr);
}

TEST_F(Catalog, TroubleOfTheReaderAtTheStartIsTold) {
    const struct {
        std::string content;
        int code;
    } CASES[] = {
        {"[comdefaults\n", INTL_EBADSECTION},
        {DEFAULTS + LAYERS + "[comorigin", INTL_EBADSECTION},
        {"[comdefaults]\n1\n", INTL_ENOEQUALS},
        {DEFAULTS + "[comlayer]\n1 ZZZZZ\n", INTL_ENOEQUALS},
        {"[comdefaults]\n1 = \\\n", INTL_EBADESCAPE},
        {"[comdefaults]\n1 = \"ZZZZZ\n", INTL_EUNTERMINATED},
        {"[comdefaults]\n1 = ZZZZZ, \"a\n", INTL_EUNTERMINATED},
        {"[comdefaults]\n1 = ZZZZZ, \"a\", \\xZZ\n", INTL_EBADESCAPE},
        {"[comdefaults]\n1 = ZZZZZ, " + std::string(1024, 'x') + "\n", INTL_ELINETOOLONG},
    };
    for (const auto &bad : CASES) {
        SCOPED_TRACE(bad.content);
        context()->ctxintlerr = 0;
        write(bad.content);
        EXPECT_EQ(start(), CS_EINTL);
        EXPECT_EQ(context()->ctxintlerr, bad.code);
        EXPECT_EQ(record().locfilecache, nullptr);
        EXPECT_EQ(history(), Strings());
    }
}

TEST_F(Catalog, FileThatCannotBeReadIsTold) {
    ASSERT_EQ(start(), CS_SUCCEED);
    remove_file();
    home_.make_directory(MESSAGE_FILE);
    EXPECT_EQ(context_.text(4, 1), "status -301");
    EXPECT_EQ(context()->ctxintlerr, INTL_EREAD);
    context()->ctxintlerr = 0;
    EXPECT_EQ(start(), CS_EINTL);
    EXPECT_EQ(context()->ctxintlerr, INTL_EREAD);
}

TEST_F(Catalog, MalformedEntryThatNobodyAskedForIsPassedOver) {
    write(DEFAULTS + "[comlayer]\n9 = \\xZZ, \"x\n" + ORIGINS + MESSAGES);
    EXPECT_EQ(start(), CS_SUCCEED);
}

TEST_F(Catalog, DefaultWithoutATextFailsTheStart) {
    write("[comdefaults]\n1 = ZZZZ1, \"a text\"\n2 = ZZZZZ\n" + LAYERS + ORIGINS + MESSAGES);
    EXPECT_EQ(start(), CS_FAIL);
    EXPECT_EQ(history(), Strings());
}

// ---- Other catalogs -----------------------------------------------------------------------------------------------

class OtherCatalog : public Catalog {
protected:
    static constexpr CS_ERRSECTION SECTIONS[] = {{70, const_cast<CS_CHAR *>("network")},
                                                 {71, const_cast<CS_CHAR *>("login")}};
    OtherCatalog() {
        home_.write(
            "locales/message/us_english/other.loc",
            "[login]\n5 = 28000, \"Login failed.\"\n6 = 28001, \"No.\"\n[network]\n5 = 08S01, \"Link lost.\"\n");
    }
    CS_RETCODE start_other(CS_INT sections, const CS_ERRIDX *errs, CS_INT nerrs) {
        return com_err_init(context(), &other_, SECTIONS, sections, errs, nerrs);
    }
    std::string other_text(CS_INT tag, CS_INT number) {
        CS_ERRIDX idx = {tag, static_cast<CS_MSGNUM>(number)};
        CS_CHAR *text = nullptr;
        return com_err_msg(context(), &other_, &idx, &text) == CS_SUCCEED ? text : "";
    }

    CS_CHAR file_[10] = "other.loc";
    CS_ERRHAN other_ = {&language_.locale(), file_};
};

TEST_F(OtherCatalog, LiesBehindTheFirstInTheSameCache) {
    ASSERT_EQ(start(), CS_SUCCEED);
    const CS_ERRIDX wanted[] = {{71, 6}, {70, 5}};
    ASSERT_EQ(start_other(2, wanted, 2), CS_SUCCEED);
    EXPECT_STREQ(record().locfilecache->errfilename, "comnlib.loc");
    ASSERT_NE(record().locfilecache->next, nullptr);
    EXPECT_STREQ(record().locfilecache->next->errfilename, "other.loc");
    EXPECT_EQ(history(), (Strings{"70/5", "71/6", "1/4", "1/3", "1/2", "1/1"}));
    EXPECT_EQ(other_text(71, 5), "Login failed.");
    EXPECT_EQ(other_text(70, 5), "Link lost.");
    EXPECT_EQ(other_text(4, 1), "") << "a section of the other file";
}

TEST_F(OtherCatalog, NeedsOnlyTheSectionsThatItCounts) {
    home_.write("locales/message/us_english/other.loc", "[login]\n5 = 28000, \"Login failed.\"\n");
    EXPECT_EQ(start_other(1, nullptr, 0), CS_FAIL) << "the first of the two is the network";
    home_.write("locales/message/us_english/other.loc", "[network]\n5 = 08S01, \"Link lost.\"\n");
    EXPECT_EQ(start_other(1, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(start_other(2, nullptr, 0), CS_FAIL);
}

TEST_F(OtherCatalog, WithoutMessagesNoneIsRead) {
    ASSERT_EQ(start_other(2, nullptr, -77), CS_SUCCEED) << "the count then plays no part";
    EXPECT_EQ(history(), Strings());
    EXPECT_EQ(other_text(71, 6), "No.");
}

TEST_F(OtherCatalog, StartMayAddSections) {
    home_.write("locales/message/us_english/other.loc",
                "[network]\n5 = 08S01, \"Link lost.\"\n[login]\n5 = 1, \"L\"\n");
    ASSERT_EQ(start_other(1, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(other_text(71, 5), "");
    ASSERT_EQ(start_other(2, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(other_text(71, 5), "L");
    EXPECT_EQ(record().locfilecache->next, nullptr);
    const CsErrSecCache *const sections = record().locfilecache->errsecs;
    EXPECT_EQ(sections->errtag, 71) << "new ones go to the front";
    EXPECT_EQ(sections->next->errtag, 70);
    EXPECT_EQ(sections->next->next, nullptr) << "a known one is found by its tag";
}

TEST_F(OtherCatalog, EvictionCrossesFiles) {
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(200));
    const CS_ERRIDX wanted[] = {{71, 5}};
    ASSERT_EQ(start_other(2, wanted, 1), CS_SUCCEED);
    ASSERT_EQ(start(), CS_SUCCEED);
    load(1, 95);
    EXPECT_EQ(history().back(), "71/5");
    load(96, 96);
    EXPECT_EQ(history().back(), "1/1");
    EXPECT_EQ(record().locfilecache->errsecs->errcache, nullptr) << "it left its section as well";
    EXPECT_EQ(other_text(71, 5), "Login failed.");
}

// ---- Lookups ------------------------------------------------------------------------------------------------------

TEST_F(Catalog, TextAndCodeOfAMessage) {
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(2, 1), "'common library'");
    EXPECT_EQ(context_.text(3, 4), "'api'");
    EXPECT_EQ(context_.text(4, 1), "'The result is truncated.'");
    EXPECT_EQ(context_.code(4, 2), "22003");
    EXPECT_EQ(history(), (Strings{"4/2", "4/1", "3/4", "2/1", "1/4", "1/3", "1/2", "1/1"}));
}

TEST_F(Catalog, MessageIsReadOnceUntilItIsEvicted) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CS_CHAR *first = nullptr, *second = nullptr;
    ASSERT_EQ(context_.find(4, 1, first), CS_SUCCEED);
    remove_file();
    ASSERT_EQ(context_.find(4, 1, second), CS_SUCCEED);
    EXPECT_EQ(first, second);
    EXPECT_EQ(context_.code(4, 1), "01004");
    EXPECT_EQ(context_.text(4, 2), "status -414");
}

TEST_F(Catalog, WhatIsNotThereFails) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CS_CHAR *text = context_.catalog()->err_file;
    EXPECT_EQ(context_.find(4, 3, text), CS_FAIL) << "no such message";
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(context_.text(5, 1), "status 0") << "no such section";
    EXPECT_EQ(context_.code(4, 3), "status 0");
    EXPECT_EQ(context()->ctxintlerr, 0);
    CS_CHAR other_file[] = "other.loc";
    CS_ERRHAN other = {&language_.locale(), other_file};
    CS_ERRIDX idx = {4, 1};
    EXPECT_EQ(com_err_msg(context(), &other, &idx, &text), CS_FAIL) << "a file that was not started";
    write(DEFAULTS + LAYERS + ORIGINS);
    EXPECT_EQ(context_.text(4, 1), "status 0") << "the section has gone from the file";
    EXPECT_EQ(history().size(), 4u);
}

TEST_F(Catalog, TroubleOfTheReaderInALookupIsTold) {
    ASSERT_EQ(start(), CS_SUCCEED);
    const struct {
        std::string content;
        int code;
    } CASES[] = {
        {"[comapierror", INTL_EBADSECTION},
        {"[comapierror]\n0\n1 = 01004, x\n", INTL_ENOEQUALS},
        {"[comapierror]\n1 = 01004, \"x\n", INTL_EUNTERMINATED},
        {"[comapierror]\n1 = 01004, x, \\x1\n", INTL_EBADESCAPE},
    };
    for (const auto &bad : CASES) {
        SCOPED_TRACE(bad.content);
        context()->ctxintlerr = 0;
        write(bad.content);
        EXPECT_EQ(context_.text(4, 1), "status -301");
        EXPECT_EQ(context()->ctxintlerr, bad.code);
        EXPECT_EQ(history().size(), 4u);
    }
    home_.home().put(std::nullopt);
    EXPECT_EQ(context_.text(4, 1), "status -301");
    EXPECT_EQ(context()->ctxintlerr, INTL_ENOHOME);
}

TEST_F(Catalog, LookupReadsNoFurtherThanItsMessage) {
    ASSERT_EQ(start(), CS_SUCCEED);
    write(WHOLE_FILE + "no equals sign\n[bad\n");
    EXPECT_EQ(context_.text(4, 2), "'The value of %1! is out of range.'");
    EXPECT_EQ(context_.text(4, 3), "status -301");
    EXPECT_EQ(context()->ctxintlerr, INTL_ENOEQUALS);
}

TEST_F(Catalog, CodeIsCutToSevenBytes) {
    write(DEFAULTS + LAYERS + ORIGINS +
          "[comapierror]\n1 = 12345678, x\n2 = \"\", x\n3 = 1234567, x\n4 = \"a\\nb\", x\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.code(4, 1), "1234567");
    EXPECT_EQ(context_.code(4, 2), "");
    EXPECT_EQ(context_.code(4, 3), "1234567");
    EXPECT_EQ(context_.code(4, 4), "a\\nb") << "a code has no escapes";
}

TEST_F(Catalog, TextsOfAnEntryAreJoined) {
    write(DEFAULTS + LAYERS + ORIGINS +
          "[comapierror]\n1 = 01004, \"one \", two , \" three\"\n2 = 01004, \"\"\n3 = 01004, \"\", x, \"\"\n"
          "4 = 01004, \"a\\\", \"nb\"\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(4, 1), "'one two three'");
    EXPECT_EQ(context_.text(4, 2), "''");
    EXPECT_EQ(context_.text(4, 3), "'x'");
    // The quote of the first value is escaped, so its end is the next one and behind that stands "nb".
    EXPECT_EQ(context_.text(4, 4), "status -301");
}

TEST_F(Catalog, EscapesAreOfEachValueByItself) {
    write(DEFAULTS + LAYERS + ORIGINS + "[comapierror]\n1 = 01004, a\\\\, n\n2 = 01004, \"a\\nb\"\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(4, 1), "'a\\n'") << "a backslash at the end of a value names nothing";
    EXPECT_EQ(context_.text(4, 2), "'a\nb'") << "a real line feed";
}

TEST_F(Catalog, CodeWithoutATextFails) {
    write(DEFAULTS + LAYERS + ORIGINS + "[comapierror]\n1 = 01004\n2 =\n3 = 01004,\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(4, 1), "status 0");
    EXPECT_EQ(context_.text(4, 2), "status 0") << "not even a code";
    EXPECT_EQ(context_.text(4, 3), "''") << "an empty text is one";
    EXPECT_EQ(context()->ctxintlerr, 0);
}

TEST_F(Catalog, KeysAreNumbersAsFarAsTheyGo) {
    write(DEFAULTS + LAYERS + ORIGINS +
          "[comapierror]\n 007 = a, seven\n+8 = b, eight\n-1 = c, minus\n9lives = d, nine\nzero = e, zero\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(4, 7), "'seven'");
    EXPECT_EQ(context_.text(4, 8), "'eight'");
    EXPECT_EQ(context_.text(4, -1), "'minus'");
    EXPECT_EQ(context_.text(4, 9), "'nine'");
    EXPECT_EQ(context_.text(4, 0), "'zero'");
}

TEST_F(Catalog, FirstEntryOfANumberCounts) {
    write(DEFAULTS + LAYERS + ORIGINS + "[comapierror]\n1 = a, first\n1 = b, second\n01 = c, third\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(4, 1), "'first'");
}

TEST_F(Catalog, OddityAnEntryThatStandsTwiceCountsTwice) {
    write("[comdefaults]\n1 = a, one\n1 = b, one\n2 = c, two\n3 = d, three\n4 = e, four\n" + LAYERS + ORIGINS +
          MESSAGES);
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(history(), (Strings{"1/3", "1/2", "1/1"})) << "four of the wanted ones were met";
    EXPECT_EQ(context_.text(1, 4), "'four'");
}

TEST_F(Catalog, NumbersBelongToTheirSection) {
    write(DEFAULTS + "[comlayer]\n1 = a, layer\n[comorigin]\n1 = b, origin\n[comapierror]\n1 = c, api\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(2, 1), "'layer'");
    EXPECT_EQ(context_.text(3, 1), "'origin'");
    EXPECT_EQ(context_.text(4, 1), "'api'");
}

TEST_F(Catalog, SqlstateRoom) {
    write(DEFAULTS + LAYERS + ORIGINS + "[comapierror]\n1 = 01004, x\n2 = \"\", x\n");
    ASSERT_EQ(start(), CS_SUCCEED);
    const auto ask = [&](CS_INT number, CS_INT room, std::string &sqlstate, CS_INT &length) {
        CS_BYTE found[10];
        std::memset(found, '.', sizeof found);
        const CS_RETCODE status = com_err_sqlstate(context(), context_.catalog(), number, 4, found, room, &length);
        sqlstate.assign(reinterpret_cast<const char *>(found), sizeof found);
        return status;
    };
    std::string sqlstate;
    CS_INT length = -7;
    EXPECT_EQ(ask(1, 8, sqlstate, length), CS_SUCCEED);
    EXPECT_EQ(sqlstate, "01004.....");
    EXPECT_EQ(length, 5);
    EXPECT_EQ(ask(1, 5, sqlstate, length), CS_SUCCEED) << "no room for a NUL is needed";
    EXPECT_EQ(sqlstate, "01004.....");
    for (const CS_INT room : {4, 1}) {
        length = -7;
        EXPECT_EQ(ask(1, room, sqlstate, length), CS_FAIL);
        EXPECT_EQ(length, 5) << "the length is told all the same";
        EXPECT_EQ(sqlstate, "..........");
    }
    EXPECT_EQ(ask(2, 1, sqlstate, length), CS_SUCCEED);
    EXPECT_EQ(length, 0);
    length = -7;
    EXPECT_EQ(ask(3, 8, sqlstate, length), CS_FAIL);
    EXPECT_EQ(length, -7);
}

TEST_F(Catalog, NullTextFails) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CsErrorCache *error = nullptr;
    ASSERT_EQ(com__err_getcache(context(), context_.catalog(), 1, 2, &error), CS_SUCCEED);
    CS_CHAR *const text = std::exchange(error->errmsg, nullptr);
    EXPECT_EQ(context_.text(1, 2), "status 0");
    EXPECT_EQ(context_.code(1, 2), "ZZZZ2");
    error->errmsg = text;
}

TEST_F(Catalog, GetcacheAnswersTheRecord) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CsErrorCache *error = nullptr;
    ASSERT_EQ(com__err_getcache(context(), context_.catalog(), 4, 2, &error), CS_SUCCEED);
    EXPECT_EQ(error, record().locerrhist);
    EXPECT_EQ(error->errnum, 2);
    EXPECT_STREQ(error->errcode, "22003");
    EXPECT_EQ(error->errseccache->errtag, 4);
    EXPECT_EQ(com__err_getcache(context(), context_.catalog(), 4, 9, &error), CS_FAIL);
    EXPECT_EQ(error, nullptr);
}

// ---- The bound ----------------------------------------------------------------------------------------------------

TEST_F(Catalog, HundredAndFirstMessageEvictsTheEarliest) {
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(250));
    ASSERT_EQ(start(), CS_SUCCEED);
    load(1, 96);
    EXPECT_EQ(record().locerrcnt, 100);
    EXPECT_EQ(history().back(), "1/1");
    load(97, 97);
    EXPECT_EQ(record().locerrcnt, 100);
    EXPECT_EQ(history().back(), "1/2") << "a default goes like any other";
    EXPECT_EQ(context_.text(1, 1), "'no memory for a text'") << "and comes back from the file";
    EXPECT_EQ(history()[0], "1/1");
    EXPECT_EQ(history().back(), "1/3");
    load(98, 250);
    EXPECT_EQ(record().locerrcnt, 100);
    remove_file();
    load(151, 250);
    EXPECT_EQ(context_.text(4, 150), "status -414");
}

TEST_F(Catalog, HitsDoNotReorder) {
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(250));
    ASSERT_EQ(start(), CS_SUCCEED);
    load(1, 96);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(context_.text(1, 1), "'no memory for a text'");
    EXPECT_EQ(history().back(), "1/1");
    load(97, 97);
    remove_file();
    EXPECT_EQ(context_.text(1, 1), "status -414") << "first in, first out";
}

TEST_F(Catalog, EvictedOneIsReadAgainWithItsPresentText) {
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(101));
    ASSERT_EQ(start(), CS_SUCCEED);
    load(1, 101);
    write("[comapierror]\n1 = 99999, \"a new text\"\n101 = 99999, \"not looked at\"\n");
    EXPECT_EQ(context_.text(4, 1), "'a new text'");
    EXPECT_EQ(context_.code(4, 1), "99999");
    EXPECT_EQ(context_.text(4, 101), in_quotes(text_of(101)));
}

TEST_F(Catalog, RandomFilesAndLookupsAgreeWithTheNaiveCatalog) {
    std::mt19937_64 random(20261121);
    const auto pick = [&](auto... choices) {
        const std::string all[] = {choices...};
        return all[random() % sizeof...(choices)];
    };
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        const auto entry = [&] {
            std::string text = std::to_string(random() % 80) + " = " + pick("01004", "\"22\"", "123456789", "");
            for (auto values = random() % 32 == 0 ? 0 : 1 + random() % 3; values > 0; --values)
                text +=
                    pick(", ", " ,") + pick("\"a\\nb\"", "plain", "\"\\\\\"", "\"\\q%s\"", "\"\"", "\xC3\xA4", "a\\,b");
            if (random() % 500 == 0)
                text += pick(", \"x", ", \\x1", "\n[bad", "\nno equals");
            return text + pick("\n", "\n\n; comment\n", "\r\n");
        };
        std::string content;
        for (const char *name : {"comdefaults", "comlayer", "other", "comorigin", "comapierror"})
            if (random() % 40 != 0) {
                content += "[" + std::string(name) + "]\n";
                for (auto entries = random() % 120; entries > 0; --entries)
                    content += entry();
            }
        write(content);
        language_.drop();
        support::naive::Catalog naive;
        context()->ctxintlerr = 0;
        const CS_RETCODE status = start();
        ASSERT_EQ(status, naive.start(content)) << content;
        ASSERT_EQ(context()->ctxintlerr, naive.code());
        for (int lookup = 0; lookup < 400; ++lookup) {
            const int tag = 1 + static_cast<int>(random() % 5), number = static_cast<int>(random() % 85);
            support::naive::Catalog::Message expected;
            const CS_RETCODE told = naive.find(content, {tag, number}, expected);
            ASSERT_EQ(context_.text(tag, number),
                      told == CS_SUCCEED ? in_quotes(expected.text) : "status " + std::to_string(told));
            ASSERT_EQ(context_.code(tag, number),
                      told == CS_SUCCEED ? expected.code : "status " + std::to_string(told));
            ASSERT_EQ(context()->ctxintlerr, naive.code());
        }
        Strings expected;
        for (const auto &message : naive.messages())
            expected.insert(expected.begin(),
                            std::to_string(message.index.first) + "/" + std::to_string(message.index.second));
        ASSERT_EQ(history(), expected);
    }
}

// ---- Out of memory ------------------------------------------------------------------------------------------------

TEST_F(Catalog, StartWithoutMemoryLeavesNothingBehind) {
    int failing = 1;
    for (CS_RETCODE status = CS_FAIL; status != CS_SUCCEED; ++failing) {
        SCOPED_TRACE(failing);
        ASSERT_LT(failing, 100);
        const FailingAllocator allocator(failing);
        status = start();
        if (status != CS_SUCCEED) {
            EXPECT_TRUE(status == CS_MEM_ERROR || (status == CS_ENOLOCFILE && context()->ctxintlerr == INTL_ENOMEMORY));
            EXPECT_EQ(record().locfilecache, nullptr);
            EXPECT_EQ(history(), Strings());
        }
        EXPECT_EQ(context_.catalog() == nullptr, failing <= 2) << "it stays but for want of its own memory";
        EXPECT_EQ(com_errdrop(context()), CS_SUCCEED);
        language_.drop();
        EXPECT_EQ(allocator.held(), 0);
    }
    // The catalog and its file's name, the file with its name, the reader, 4 sections with names, and 4 messages: the
    // joined text, the record and the converted text of each.
    EXPECT_EQ(failing - 2, 2 + 2 + 1 + 4 * 2 + 4 * 3);
    EXPECT_EQ(start(), CS_SUCCEED);
    EXPECT_EQ(context_.text(4, 1), "'The result is truncated.'");
}

TEST_F(Catalog, SecondStartWithoutMemoryKeepsTheFile) {
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(98));
    ASSERT_EQ(start(), CS_SUCCEED);
    load(1, 98);
    for (int failing = 1; failing <= 4; ++failing) {
        const FailingAllocator allocator(failing);
        EXPECT_NE(start(), CS_SUCCEED);
        EXPECT_NE(record().locfilecache, nullptr);
    }
    EXPECT_EQ(start(), CS_SUCCEED);
}

TEST_F(Catalog, LookupWithoutMemoryIsToldAndTheNextOneWorks) {
    ASSERT_EQ(start(), CS_SUCCEED);
    for (int failing = 1; failing <= 4; ++failing) {
        SCOPED_TRACE(failing);
        const FailingAllocator allocator(failing);
        CS_CHAR *text = nullptr;
        EXPECT_EQ(context_.find(4, 1, text), failing == 1 ? CS_ENOLOCFILE : CS_MEM_ERROR) << "the reader asks first";
        EXPECT_EQ(allocator.held(), 0);
        EXPECT_EQ(history().size(), 4u);
    }
    const FailingAllocator allocator(5);
    CS_CHAR *text = nullptr;
    EXPECT_EQ(context_.find(4, 1, text), CS_SUCCEED);
    EXPECT_STREQ(text, "The result is truncated.");
    EXPECT_EQ(allocator.held(), 2);
}

TEST_F(Catalog, OddityALoadWithoutMemoryHasEvicted) {
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(100));
    ASSERT_EQ(start(), CS_SUCCEED);
    load(1, 96);
    const FailingAllocator allocator(3); // the record, behind reader and joined text
    CS_CHAR *text = nullptr;
    EXPECT_EQ(context_.find(4, 97, text), CS_MEM_ERROR);
    EXPECT_EQ(history().size(), 99u);
    EXPECT_EQ(history().back(), "1/2");
}

TEST_F(Catalog, CachedTextNeedsNoMemory) {
    ASSERT_EQ(start(), CS_SUCCEED);
    const FailingAllocator allocator(1, FailingAllocator::LASTING);
    CS_CHAR *text = nullptr;
    EXPECT_EQ(context_.find(1, 1, text), CS_SUCCEED);
    EXPECT_EQ(allocator.asked(), 0);
}

// ---- Threads ------------------------------------------------------------------------------------------------------

TEST_F(Catalog, ContextsOfManyThreadsShareACacheThatEvicts) {
    constexpr int THREADS = 4, COUNT = 130, ROUNDS = 300;
    write(DEFAULTS + LAYERS + ORIGINS + many_messages(COUNT));
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([&, t] {
            std::mt19937_64 random(static_cast<unsigned long long>(t));
            MessageContext own(language_);
            wrong += com_errinit(own.get()) != CS_SUCCEED;
            for (int i = 0; i < ROUNDS; ++i) {
                const int number = 1 + static_cast<int>(random() % COUNT);
                // The text itself is anybody's behind the lookup; the code is copied in it.
                CS_CHAR *text = nullptr;
                wrong += own.find(4, number, text) != CS_SUCCEED || text == nullptr;
                wrong += own.code(4, number) != "C" + std::to_string(number);
                wrong += own.code(1, 1 + number % 4) != "ZZZZ" + std::to_string(1 + number % 4);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(history().size(), 100u);
    EXPECT_EQ(record().locfilecache->next, nullptr) << "one file, whoever starts it";
}

TEST_F(Catalog, LockTroubleFails) {
    ASSERT_EQ(start(), CS_SUCCEED);
    const ReturningAssertions returning;
    const FailingSystem failing("pthread_mutex_lock");
    EXPECT_EQ(context_.text(1, 1), "status 0");
    EXPECT_EQ(start(), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
}

TEST_F(Catalog, LockIsGivenBackOnEveryWay) {
    const auto is_free = [&] { return reinterpret_cast<const COMN_MUTEX *>(record().msgmtx)->use_count == 0; };
    remove_file();
    EXPECT_EQ(start(), CS_ENOLOCFILE);
    EXPECT_TRUE(is_free());
    write(DEFAULTS);
    EXPECT_EQ(start(), CS_FAIL);
    EXPECT_TRUE(is_free());
    write(WHOLE_FILE);
    EXPECT_EQ(start(), CS_SUCCEED);
    EXPECT_TRUE(is_free());
    for (const int number : {1, 1, 3}) {
        context_.text(4, number);
        context_.code(4, number);
        EXPECT_TRUE(is_free());
    }
}

// ---- Assertions ---------------------------------------------------------------------------------------------------

using CatalogDeathTest = Catalog;

TEST_F(CatalogDeathTest, NeedsItsOperands) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CS_ERRHAN *const catalog = context_.catalog();
    CS_CONTEXT bare = {};
    CS_ERRIDX idx = {1, 1};
    CS_CHAR *text = nullptr;
    CsErrorCache *error = nullptr;
    CS_BYTE sqlstate[8] = "....";
    CS_INT length = -7;
    NullCalls calls;
    NULL_CALLS(calls, com_errinit, CS_FAIL, static_cast<CS_CONTEXT *>(nullptr));
    calls.add(
        "locale", [&] { return com_errinit(&bare); }, CS_FAIL);
    NULL_CALLS(calls, com_errdrop, CS_FAIL, context());
    calls.add_each(
        "com_err_init",
        [](CS_CONTEXT *context, CS_ERRHAN *errhan, const CS_ERRSECTION *sections) -> long {
            return com_err_init(context, errhan, sections, 4, nullptr, 0);
        },
        CS_FAIL, context(), catalog, const_cast<CS_ERRSECTION *>(Comlocsections));
    const auto message = [&](CS_CONTEXT *with, CS_ERRHAN *errhan, CS_ERRIDX *of) -> long {
        return com_err_msg(with, errhan, of, &text);
    };
    calls.add_each("com_err_msg", message, CS_FAIL, context(), catalog, &idx);
    calls.add(
        "com_err_msg, msg", [&] { return com_err_msg(context(), catalog, &idx, nullptr); }, CS_FAIL);
    const auto cached = [](CS_CONTEXT *with, CS_ERRHAN *errhan, CsErrorCache **out) -> long {
        return com__err_getcache(with, errhan, 1, 1, out);
    };
    calls.add_each("com__err_getcache", cached, CS_FAIL, context(), catalog, &error);
    const auto code = [&](CS_CONTEXT *with, CS_ERRHAN *errhan, CS_BYTE *to) -> long {
        return com_err_sqlstate(with, errhan, 1, 1, to, 8, &length);
    };
    calls.add_each("com_err_sqlstate", code, CS_FAIL, context(), catalog, sqlstate);
    calls.add(
        "com_err_sqlstate, outlen", [&] { return com_err_sqlstate(context(), catalog, 1, 1, sqlstate, 8, nullptr); },
        CS_FAIL);
    calls.expect_reports("com_err");
    calls.expect_answers([] {},
                         [&] {
                             EXPECT_EQ(text, nullptr);
                             EXPECT_EQ(error, nullptr);
                             EXPECT_STREQ(reinterpret_cast<const char *>(sqlstate), "....");
                             EXPECT_EQ(length, -7);
                             EXPECT_EQ(context_.catalog(), catalog);
                             EXPECT_EQ(bare.ctxcomerrhan, nullptr);
                         });
}

TEST_F(CatalogDeathTest, NeedsAWholeCatalog) {
    CS_CHAR file[] = "comnlib.loc";
    CsLocCache no_messages = {}, no_mutex = {};
    CS_MESSAGE unguarded = {};
    no_mutex.locmessage = &unguarded;
    CS_LOCALE empty = {}, without_messages = {}, without_mutex = {};
    without_messages.messageptr = &no_messages;
    without_mutex.messageptr = &no_mutex;
    const CS_ERRHAN CASES[] = {
        {nullptr, file},           {&language_.locale(), nullptr}, {&empty, file},
        {&without_messages, file}, {&without_mutex, file},
    };
    NullCalls calls;
    for (const CS_ERRHAN &errhan : CASES) {
        calls.add(
            "start",
            [&] {
                CS_ERRHAN copy = errhan;
                return com_err_init(context(), &copy, Comlocsections, 4, Comdeferrs, 4);
            },
            CS_FAIL);
        calls.add(
            "lookup",
            [&] {
                CS_ERRHAN copy = errhan;
                CS_ERRIDX idx = {1, 1};
                CS_CHAR *text;
                return com_err_msg(context(), &copy, &idx, &text);
            },
            CS_FAIL);
    }
    calls.expect_reports("com_err");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(record().locfilecache, nullptr); });
}

TEST_F(CatalogDeathTest, NeedsRoomForTheCode) {
    ASSERT_EQ(start(), CS_SUCCEED);
    CS_BYTE sqlstate[8] = "....";
    CS_INT length = -7;
    for (const CS_INT room : {0, -1, CS_NULLTERM}) {
        const auto ask = [&] { return com_err_sqlstate(context(), context_.catalog(), 1, 1, sqlstate, room, &length); };
        EXPECT_BOMB(ask(), "com_err");
        const ReturningAssertions returning;
        EXPECT_EQ(ask(), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(length, -7);
    }
}

TEST_F(CatalogDeathTest, CountsOfSectionsAndMessages) {
    const auto begin = [&](CS_INT nsections, CS_INT nerrs) {
        CS_CHAR file[] = "comnlib.loc";
        CS_ERRHAN errhan = {&language_.locale(), file};
        return com_err_init(context(), &errhan, Comlocsections, nsections, Comdeferrs, nerrs);
    };
    const struct { CS_INT nsections, nerrs; } BAD[] = {{0, 4}, {-1, 4}, {4, 0}, {4, 101}, {4, -1}};
    for (const auto &bad : BAD) {
        EXPECT_BOMB(begin(bad.nsections, bad.nerrs), "com_err");
        const ReturningAssertions returning;
        EXPECT_EQ(begin(bad.nsections, bad.nerrs), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(record().locfilecache, nullptr);
    }
    EXPECT_EQ(begin(4, 1), CS_SUCCEED);
    std::vector<CS_ERRIDX> hundred(100, CS_ERRIDX{1, 3});
    CS_CHAR file[] = "comnlib.loc";
    CS_ERRHAN errhan = {&language_.locale(), file};
    EXPECT_EQ(com_err_init(context(), &errhan, Comlocsections, 4, hundred.data(), 100), CS_SUCCEED);
    EXPECT_EQ(history(), (Strings{"1/3", "1/1"}));
}

} // namespace
