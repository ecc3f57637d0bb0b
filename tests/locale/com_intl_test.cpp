// Names of locales from the environment and from locales.dat, and the loads that contexts share.
#include "locale_fixture.h"
#include "support/environment.h"
#include "support/failing_allocator.h"
#include "support/failing_system.h"
#include "support/null_calls.h"

#include <filesystem>
#include <optional>
#include <thread>

namespace {

using support::changed;
using support::FailingAllocator;
using support::FailingSystem;
using support::NullCalls;
using support::ReturningAssertions;
using support::Variable;

// ---- The environment -------------------------------------------------------------------------------------------------

constexpr std::array VARIABLES = {"LC_COLLATE", "LC_CTYPE", "LC_MESSAGE", "LC_MONETARY",
                                  "LC_NUMERIC", "LC_TIME",  "LC_ALL"};

class EnvironmentLookup : public testing::Test {
protected:
    // The name that a category finds, or its status.
    std::string found(CS_INT lctype, CS_INT room = 64) {
        std::string name(64, '~');
        const CS_RETCODE status = com_intl_envloc(&context_, lctype, chars(name), room);
        EXPECT_EQ(name.substr(static_cast<size_t>(room)), std::string(64 - static_cast<size_t>(room), '~'));
        return status == CS_SUCCEED ? name.c_str() : "status " + std::to_string(status);
    }

    CS_CONTEXT context_ = {};
    Variable variables_[7] = {Variable(VARIABLES[0]), Variable(VARIABLES[1]), Variable(VARIABLES[2]),
                              Variable(VARIABLES[3]), Variable(VARIABLES[4]), Variable(VARIABLES[5]),
                              Variable(VARIABLES[6])};
    Variable lang_{"LANG"};
    Variable plural_{"LC_MESSAGES"};
};

TEST_F(EnvironmentLookup, EachCategoryHasItsOwnVariable) {
    for (int i = 0; i < 7; ++i)
        variables_[i].put("of " + std::string(VARIABLES[i]));
    lang_.put("of LANG");
    for (CS_INT lctype = 1; lctype <= 7; ++lctype)
        EXPECT_EQ(found(lctype), "of " + std::string(VARIABLES[lctype - 1]));
}

TEST_F(EnvironmentLookup, LangStandsInForEachOfThem) {
    lang_.put("de");
    for (CS_INT lctype = 1; lctype <= 7; ++lctype)
        EXPECT_EQ(found(lctype), "de");
}

TEST_F(EnvironmentLookup, EmptyVariableIsAsUnset) {
    variables_[CS_LC_TIME - 1].put("");
    lang_.put("de");
    EXPECT_EQ(found(CS_LC_TIME), "de");
    lang_.put("");
    EXPECT_EQ(found(CS_LC_TIME), "default");
}

TEST_F(EnvironmentLookup, WithNothingSetItIsDefault) {
    for (CS_INT lctype = 1; lctype <= 7; ++lctype)
        EXPECT_EQ(found(lctype), "default");
}

TEST_F(EnvironmentLookup, OddityAllCategoriesVariableCountsOnlyWhereAskedFor) {
    variables_[CS_LC_ALL - 1].put("all");
    EXPECT_EQ(found(CS_LC_ALL), "all");
    for (CS_INT lctype = 1; lctype <= 6; ++lctype)
        EXPECT_EQ(found(lctype), "default");
}

TEST_F(EnvironmentLookup, OddityVariableOfMessagesHasNoFinalLetter) {
    plural_.put("plural");
    EXPECT_EQ(found(CS_LC_MESSAGE), "default");
    variables_[CS_LC_MESSAGE - 1].put("singular");
    EXPECT_EQ(found(CS_LC_MESSAGE), "singular");
}

TEST_F(EnvironmentLookup, NameFitsWithItsNul) {
    const std::string no_room = "status " + std::to_string(CS_EINTL);
    EXPECT_EQ(found(CS_LC_ALL, 8), "default");
    EXPECT_EQ(found(CS_LC_ALL, 7), no_room);
    EXPECT_EQ(found(CS_LC_ALL, 1), no_room);
    lang_.put("de_DE");
    EXPECT_EQ(found(CS_LC_ALL, 6), "de_DE");
    EXPECT_EQ(found(CS_LC_ALL, 5), no_room);
    variables_[CS_LC_ALL - 1].put("fr_FR");
    EXPECT_EQ(found(CS_LC_ALL, 6), "fr_FR");
    EXPECT_EQ(found(CS_LC_ALL, 5), no_room) << "and LANG does not stand in";
}

TEST(EnvironmentLookupDeathTest, NeedsRoomAndACategory) {
    CS_CONTEXT context = {};
    CS_CHAR name[8];
    EXPECT_BOMB(com_intl_envloc(&context, 0, name, 8), "com_intl");
    EXPECT_BOMB(com_intl_envloc(&context, 8, name, 8), "com_intl");
    EXPECT_BOMB(com_intl_envloc(&context, 1, name, 0), "com_intl");
    EXPECT_NULL_REPORT(com_intl_envloc(nullptr, 1, name, 8), "com_intl");
    EXPECT_NULL_REPORT(com_intl_envloc(&context, 1, nullptr, 8), "com_intl");
}

TEST(EnvironmentLookupReturning, BadCallsFailAndWriteNothing) {
    CS_CONTEXT context = {};
    std::string name = "~~~~~~~~";
    const ReturningAssertions returning;
    EXPECT_EQ(com_intl_envloc(&context, 0, chars(name), 8), CS_FAIL);
    EXPECT_EQ(com_intl_envloc(&context, 8, chars(name), 8), CS_FAIL);
    EXPECT_EQ(com_intl_envloc(&context, 1, chars(name), 0), CS_FAIL);
    EXPECT_EQ(com_intl_envloc(nullptr, 1, chars(name), 8), CS_FAIL);
    EXPECT_EQ(com_intl_envloc(&context, 1, nullptr, 8), CS_FAIL);
    EXPECT_EQ(returning.count(), 5);
    EXPECT_EQ(name, "~~~~~~~~");
}

// ---- locales.dat -----------------------------------------------------------------------------------------------------

class Lookup : public testing::Test {
protected:
    Lookup() { clear(); }
    void clear() { std::memset(static_cast<void *>(&names_), '~', sizeof names_); }

    CS_RETCODE look_up(std::string name) {
        return comn__intl_lookup(&context_, chars(name), length_of(name), &names_, file_, sizeof file_);
    }
    CS_RETCODE look_up_in(const std::string &content, const std::string &name) {
        home_.write(support::LOCALES_DAT, content);
        return look_up(name);
    }
    // The six names, separated; each has its length and its NUL.
    std::string names() {
        std::string text;
        const auto add = [&](const CS_CHAR *name, CS_INT length) {
            EXPECT_EQ(std::string(name), text_of(name, length));
            text += (text.empty() ? "" : "|") + std::string(name);
        };
        add(names_.lang, names_.langlen);
        add(names_.charset, names_.charsetlen);
        add(names_.sortorder, names_.sortorderlen);
        add(names_.datetime, names_.datetimelen);
        add(names_.numeric, names_.numericlen);
        add(names_.money, names_.moneylen);
        return text;
    }

    support::DataHome home_;
    CS_CONTEXT context_ = {};
    CsLocNames names_;
    CS_CHAR file_[1025] = "";
};

TEST_F(Lookup, SplitsTheLine) {
    ASSERT_EQ(look_up("all"), CS_SUCCEED);
    EXPECT_EQ(names(), "german|iso_1|dict|iso|dotted|euro");
    EXPECT_EQ(file_, home_.path_of(support::LOCALES_DAT));
}

TEST_F(Lookup, ListThatEndsEarlyLeavesTheRestEmpty) {
    ASSERT_EQ(look_up("default"), CS_SUCCEED);
    EXPECT_EQ(names(), "us_english|iso_1|binary|||");
    ASSERT_EQ(look_up("dated"), CS_SUCCEED);
    EXPECT_EQ(names(), "us_english|iso_1|binary|iso||");
}

TEST_F(Lookup, LineWithThreeValuesSortsBinary) {
    ASSERT_EQ(look_up("three"), CS_SUCCEED);
    EXPECT_EQ(names(), "us_english|iso_1|binary|||");
}

TEST_F(Lookup, EmptyFourthValueSortsBinary) {
    ASSERT_EQ(look_up("empty"), CS_SUCCEED);
    EXPECT_EQ(names(), "us_english|iso_1|binary|||");
    ASSERT_EQ(look_up("numbers"), CS_SUCCEED);
    EXPECT_EQ(names(), "german|iso_1|binary||dotted|");
}

TEST_F(Lookup, FirstLineOfANameCounts) {
    ASSERT_EQ(look_up("de"), CS_SUCCEED);
    EXPECT_EQ(names(), "german|iso_1|binary|||");
}

TEST_F(Lookup, SectionsOfOtherPlatformsAreSkipped) {
    ASSERT_EQ(look_up("C"), CS_SUCCEED);
    EXPECT_EQ(names(), "us_english|iso_1|dict|||");
    EXPECT_EQ(look_up("solaris"), CS_FAIL);
}

TEST_F(Lookup, NamesCompareByteByByte) {
    EXPECT_EQ(look_up("DE"), CS_FAIL);
    EXPECT_EQ(look_up("d"), CS_FAIL);
    EXPECT_EQ(look_up("de "), CS_FAIL);
    EXPECT_EQ(look_up("de.utf"), CS_FAIL);
}

TEST_F(Lookup, NameEndsAtItsNulWhateverItsLength) {
    std::string name = "de";
    EXPECT_EQ(comn__intl_lookup(&context_, chars(name), 1, &names_, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(comn__intl_lookup(&context_, chars(name), 99, &names_, nullptr, 0), CS_SUCCEED);
}

TEST_F(Lookup, MissingLanguageOrSetFails) {
    EXPECT_EQ(look_up("one"), CS_FAIL);
    EXPECT_EQ(look_up("two"), CS_FAIL);
    EXPECT_EQ(look_up("nolang"), CS_FAIL);
}

TEST_F(Lookup, OtherKeyEndsTheSearch) {
    const std::string content = "[linux]\nlocale = a, l, s\nlocal = b\nlocale = c, l, s\n";
    EXPECT_EQ(look_up_in(content, "a"), CS_SUCCEED);
    EXPECT_EQ(look_up("c"), CS_FAIL);
    EXPECT_EQ(context_.ctxintlerr, 0);
}

TEST_F(Lookup, NoSectionOfThePlatformFails) {
    EXPECT_EQ(look_up_in("[aix]\nlocale = a, l, s\n", "a"), CS_FAIL);
    EXPECT_EQ(look_up_in("", "a"), CS_FAIL);
    EXPECT_EQ(look_up_in("[Linux]\nlocale = a, l, s\n", "a"), CS_FAIL);
}

TEST_F(Lookup, OnlyTheFirstSectionOfThePlatformIsSearched) {
    EXPECT_EQ(look_up_in("[linux]\nlocale = a, l, s\n[linux]\nlocale = b, l, s\n", "b"), CS_FAIL);
}

TEST_F(Lookup, MissingFileTellsItsPath) {
    home_.remove(support::LOCALES_DAT);
    EXPECT_EQ(look_up("de"), CS_ENOLOCFILE);
    EXPECT_EQ(context_.ctxintlerr, INTL_ECANTOPEN);
    EXPECT_EQ(file_, home_.path_of(support::LOCALES_DAT));
}

TEST_F(Lookup, TroubleOfTheReaderIsTold) {
    EXPECT_EQ(look_up_in("[linux\nlocale = a, l, s\n", "a"), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EBADSECTION);
    EXPECT_EQ(look_up_in("[linux]\nlocale\n", "a"), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_ENOEQUALS);
    EXPECT_EQ(look_up_in("[linux]\nlocale = \"b\n", "a"), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EUNTERMINATED);
    EXPECT_EQ(look_up_in("[linux]\nlocale = a, l, s, \\xZZ\n", "a"), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EBADESCAPE);
    home_.remove(support::LOCALES_DAT);
    home_.make_directory(support::LOCALES_DAT);
    EXPECT_EQ(look_up("a"), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EREAD);
}

TEST_F(Lookup, PathIsCutToItsRoom) {
    std::string name = "de";
    std::string file(16, '~');
    ASSERT_EQ(comn__intl_lookup(&context_, chars(name), 2, &names_, chars(file), 9), CS_SUCCEED);
    EXPECT_EQ(file, home_.path_of("").substr(0, 8) + '\0' + "~~~~~~~");
}

TEST_F(Lookup, ValueOf255BytesFits) {
    const std::string longest(255, 'x');
    ASSERT_EQ(look_up_in("[linux]\nlocale = a, " + longest + ", " + longest + "\n", "a"), CS_SUCCEED);
    EXPECT_EQ(names(), longest + "|" + longest + "|binary|||");
}

using LookupDeathTest = Lookup;

TEST_F(LookupDeathTest, ValueOf256BytesIsAnAssertion) {
    const std::string longer(256, 'x');
    EXPECT_BOMB(look_up_in("[linux]\nlocale = a, l, s, " + longer + "\n", "a"), "com_intl");
    const ReturningAssertions returning;
    EXPECT_EQ(look_up_in("[linux]\nlocale = a, " + longer + ", s\n", "a"), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
}

TEST_F(LookupDeathTest, NeedsItsOperands) {
    std::string name = "de";
    NullCalls calls;
    const auto call = [&](CS_CONTEXT *context, CS_CHAR *text, CsLocNames *names) -> long {
        return comn__intl_lookup(context, text, 2, names, nullptr, 0);
    };
    calls.add_each("comn__intl_lookup", call, CS_FAIL, &context_, chars(name), &names_);
    calls.expect_reports("com_intl");
    calls.expect_answers([&] { clear(); }, [&] { EXPECT_EQ(names_.lang[0], '~'); });
}

TEST_F(LookupDeathTest, PathNeedsRoom) {
    std::string name = "de";
    EXPECT_BOMB(comn__intl_lookup(&context_, chars(name), 2, &names_, file_, 0), "com_path");
    const ReturningAssertions returning;
    EXPECT_EQ(comn__intl_lookup(&context_, chars(name), 2, &names_, file_, 0), CS_FAIL);
    EXPECT_EQ(names_.lang[0], '~');
}

// ---- Start-up --------------------------------------------------------------------------------------------------------

class StartUp : public LocaleFixture {
protected:
    CS_RETCODE init() { return comn_intl_init(context(), file_, ROOM); }
    CsLocCache *record() { return static_cast<CsLocCache *>(globals().cmg_utf8_ctypeptr); }
};

TEST_F(StartUp, SetsUpTheBasics) {
    ASSERT_EQ(init(), CS_SUCCEED);
    ASSERT_NE(record(), nullptr);
    EXPECT_EQ(text_of(record()->charname, record()->charnamelen), "utf8");
    EXPECT_EQ(text_of(record()->sortname, record()->sortnamelen), "binary");
    EXPECT_EQ(globals().cmg_utf8_charset, record()->locchardesc);
    EXPECT_EQ(record()->locchardesc, application_.sets());
    EXPECT_EQ(record()->locchardesc->oid, application_.identifier(CS_OID_CHARSET, "utf8"));
    EXPECT_EQ(record()->locsortorder, record()->locchardesc->sort_order);
    EXPECT_EQ(record()->locsortorder->oid, application_.identifier(CS_OID_COLLATE, "binary"));
    EXPECT_EQ(globals().ucs2_oid, application_.identifier(CS_OID_CHARSET, "ucs2"));
    EXPECT_NE(globals().lm, nullptr);
    EXPECT_EQ(file_, home_.path_of(support::order_of("utf8", "binary")));
}

TEST_F(StartUp, RecordIsOtherwiseZeroAndOnNoList) {
    ASSERT_EQ(init(), CS_SUCCEED);
    EXPECT_EQ(globals().cmg_lcache, nullptr);
    EXPECT_EQ(record()->locname, nullptr);
    EXPECT_EQ(record()->langname, nullptr);
    EXPECT_EQ(record()->locmessage, nullptr);
    EXPECT_EQ(record()->locdateinfo, nullptr);
    EXPECT_EQ(record()->locnext, nullptr);
}

TEST_F(StartUp, RepeatsHarmlessly) {
    ASSERT_EQ(init(), CS_SUCCEED);
    const CsCtxGlobals before = globals();
    home_.remove("charsets");
    EXPECT_EQ(init(), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(&before, &globals(), sizeof before), 0);
}

TEST_F(StartUp, NamesThatNoIdentifierHasFail) {
    for (const char *name : {"utf8", "binary, bin", "ucs2"}) {
        SCOPED_TRACE(name);
        Application application;
        home_.write(support::OBJECTID_DAT, changed(support::objectid_dat(), name, "another"));
        ASSERT_EQ(application.load_identifiers(), CS_SUCCEED);
        EXPECT_EQ(comn_intl_init(application.context(), nullptr, 0), CS_FAIL);
        EXPECT_EQ(application.globals().cmg_utf8_ctypeptr, nullptr);
        EXPECT_EQ(application.globals().lm, nullptr);
        EXPECT_EQ(application.globals().cmg_utf8_charset != nullptr, name != std::string("utf8"));
    }
}

TEST_F(StartUp, TroubleWithTheSetLeavesNothing) {
    home_.remove(support::charset_loc_of("utf8"));
    EXPECT_EQ(init(), CS_ENOLOCFILE);
    EXPECT_EQ(context()->ctxintlerr, INTL_ECANTOPEN);
    EXPECT_EQ(file_, home_.path_of(support::charset_loc_of("utf8")));
    EXPECT_EQ(globals().cmg_utf8_charset, nullptr);
    EXPECT_EQ(record(), nullptr);
    home_.write(support::charset_loc_of("utf8"), support::charset_loc("utf8"));
    EXPECT_EQ(init(), CS_SUCCEED) << "a call with the file in place sets up all";
    EXPECT_NE(record(), nullptr);
}

TEST_F(StartUp, OdditySetStaysWhereTheSortOrderFailsAndThenCountsAsStarted) {
    home_.remove(support::order_of("utf8", "binary"));
    EXPECT_EQ(init(), CS_ENOLOCFILE);
    EXPECT_EQ(globals().cmg_utf8_charset, application_.sets());
    EXPECT_EQ(init(), CS_SUCCEED);
    EXPECT_EQ(record(), nullptr);
    EXPECT_EQ(globals().lm, nullptr);
}

TEST_F(StartUp, EndsTheListContext) {
    ASSERT_EQ(init(), CS_SUCCEED);
    EXPECT_EQ(comn_lm_exit(context()), CS_SUCCEED);
    EXPECT_EQ(globals().lm, nullptr);
    EXPECT_EQ(comn_lm_exit(context()), CS_FAIL) << "there is none any more";
}

TEST_F(StartUp, OutOfMemoryIsToldAndLeavesNoRecord) {
    int failing = 1;
    for (CS_RETCODE status = CS_FAIL; status != CS_SUCCEED; ++failing) {
        ASSERT_LT(failing, 200);
        Application application;
        ASSERT_EQ(application.load_identifiers(), CS_SUCCEED);
        {
            const FailingAllocator allocator(failing);
            status = comn_intl_init(application.context(), nullptr, 0);
            if (status != CS_SUCCEED) {
                EXPECT_TRUE(status == CS_MEM_ERROR || status == CS_ENOLOCFILE) << status << " at " << failing;
                EXPECT_EQ(application.globals().cmg_utf8_ctypeptr, nullptr) << failing;
                EXPECT_EQ(application.globals().lm, nullptr) << failing;
            }
            application.drop();
            // Identifiers were made before the count.
            EXPECT_LE(allocator.held(), 0) << failing;
        }
    }
    EXPECT_GT(failing, 10);
}

using StartUpDeathTest = StartUp;

TEST_F(StartUpDeathTest, NeedsAContextWithGlobals) {
    CS_CONTEXT bare = {};
    EXPECT_NULL_REPORT(comn_intl_init(nullptr, nullptr, 0), "com_intl");
    EXPECT_NULL_REPORT(comn_intl_init(&bare, nullptr, 0), "com_intl");
    EXPECT_NULL_REPORT(comn_lm_exit(nullptr), "com_intl");
    EXPECT_NULL_REPORT(comn_lm_exit(&bare), "com_intl");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_intl_init(nullptr, nullptr, 0), CS_FAIL);
    EXPECT_EQ(comn_intl_init(&bare, nullptr, 0), CS_FAIL);
    EXPECT_EQ(comn_lm_exit(nullptr), CS_FAIL);
    EXPECT_EQ(comn_lm_exit(&bare), CS_FAIL);
    EXPECT_EQ(returning.count(), 4);
}

// ---- Loading by name -------------------------------------------------------------------------------------------------

using LocaleLoad = LocaleFixture;

TEST_F(LocaleLoad, FillsTheCache) {
    const CsLocCache *const cache = loaded("de");
    EXPECT_EQ(text_of(cache->locname, cache->locnamelen), "de");
    EXPECT_EQ(text_of(cache->charname, cache->charnamelen), "iso_1");
    EXPECT_EQ(text_of(cache->langname, cache->langnamelen), "german");
    EXPECT_EQ(text_of(cache->sortname, cache->sortnamelen), "binary");
    EXPECT_EQ(cache->locname[cache->locnamelen], '\0');
    EXPECT_EQ(cache->locchardesc->oid, application_.identifier(CS_OID_CHARSET, "iso_1"));
    EXPECT_EQ(cache->locmessage->lang_oid, application_.identifier(CS_OID_NATLANG, "german"));
    EXPECT_EQ(cache->locmessage->charset_oid, cache->locchardesc->oid);
    EXPECT_EQ(cache->locsortorder->oid, application_.identifier(CS_OID_COLLATE, "binary"));
    EXPECT_EQ(cache->locchardesc->sort_order, cache->locsortorder);
    ASSERT_NE(cache->locdateinfo, nullptr);
    EXPECT_EQ(cache->locdateinfo->id, cache->locmessage->lang_oid);
    EXPECT_EQ(cache->datename, nullptr);
    EXPECT_EQ(cache->numname, nullptr);
    EXPECT_EQ(cache->monname, nullptr);
    EXPECT_EQ(cache, application_.caches());
    EXPECT_EQ(cache->locnext, nullptr);
    EXPECT_EQ(file_, home_.path_of(support::common_loc_of("german")));
}

TEST_F(LocaleLoad, OneNameIsOneRecordAndReadsNoFileAgain) {
    const CsLocCache *const first = loaded("de");
    home_.remove("");
    file_[0] = '\0';
    EXPECT_EQ(loaded("de"), first);
    EXPECT_EQ(caches(), 1);
    EXPECT_STREQ(file_, "");
}

TEST_F(LocaleLoad, NewestCacheIsFirst) {
    CsLocCache *const first = loaded("de");
    CsLocCache *const second = loaded("default");
    EXPECT_EQ(application_.caches(), second);
    EXPECT_EQ(second->locnext, first);
}

TEST_F(LocaleLoad, SharesWhatIsLoaded) {
    CsLocCache *const german = loaded("de");
    CsLocCache *const english = loaded("default");
    EXPECT_EQ(german->locchardesc, english->locchardesc);
    EXPECT_EQ(german->locsortorder, english->locsortorder);
    EXPECT_NE(german->locmessage, english->locmessage);
    CsLocCache *const dictionary = loaded("C");
    EXPECT_EQ(dictionary->locmessage, english->locmessage);
    EXPECT_NE(dictionary->locsortorder, english->locsortorder);
    EXPECT_EQ(sets(), 1);
    EXPECT_EQ(messages(), 2);
    EXPECT_EQ(dates(), 2);
}

TEST_F(LocaleLoad, LocalesOfOneLanguageShareItsDates) {
    EXPECT_EQ(loaded("de")->locdateinfo, loaded("de.utf8")->locdateinfo);
    EXPECT_EQ(dates(), 1);
    EXPECT_EQ(messages(), 2) << "messages are of a language in a set";
}

TEST_F(LocaleLoad, LengthTellsApartWhatBeginsAlike) {
    CsLocCache *const cache = loaded("de");
    EXPECT_NE(loaded("de.utf8"), cache);
    std::string name = "de.utf8";
    EXPECT_EQ(com__scan_lcache_name(context(), chars(name), 2), cache);
    EXPECT_EQ(com__scan_lcache_name(context(), chars(name), 3), nullptr);
}

TEST_F(LocaleLoad, NamedDatesAreOnlyKept) {
    home_.remove("locales/datetime");
    CsLocCache *const cache = loaded("dated");
    EXPECT_EQ(cache->locdateinfo, nullptr);
    EXPECT_EQ(text_of(cache->datename, cache->datenamelen), "iso");
    EXPECT_EQ(dates(), 0);
}

TEST_F(LocaleLoad, AllNamesAreKept) {
    home_.remove("locales/numeric");
    CsLocCache *const cache = loaded("all");
    EXPECT_EQ(text_of(cache->sortname, cache->sortnamelen), "dict");
    EXPECT_EQ(text_of(cache->datename, cache->datenamelen), "iso");
    EXPECT_EQ(text_of(cache->numname, cache->numnamelen), "dotted");
    EXPECT_EQ(text_of(cache->monname, cache->monnamelen), "euro");
    EXPECT_NE(cache->locsortorder->char_sort_class, nullptr);
    EXPECT_EQ(cache->locnuminfo, nullptr);
    EXPECT_EQ(cache->locmoninfo, nullptr);
    EXPECT_EQ(file_, home_.path_of("locales/money/euro.mon")) << "the one such file that is opened";
}

TEST_F(LocaleLoad, NumbersMayHaveANameWithoutDates) {
    CsLocCache *const cache = loaded("numbers");
    EXPECT_NE(cache->locdateinfo, nullptr);
    EXPECT_EQ(text_of(cache->numname, cache->numnamelen), "dotted");
}

TEST_F(LocaleLoad, UnknownNamesFail) {
    for (const char *name : {"nowhere", "one", "badset", "badlang", "badsort", "baddate", "badnum", "badmoney"}) {
        CsLocCache *cache = nullptr;
        EXPECT_EQ(load(name, cache), CS_FAIL) << name;
        EXPECT_EQ(cache, nullptr);
        EXPECT_EQ(caches(), 0) << name;
    }
}

TEST_F(LocaleLoad, EmptyNameFails) {
    CsLocCache *cache = nullptr;
    EXPECT_EQ(load("", cache), CS_FAIL);
}

TEST_F(LocaleLoad, MissingFilesAreToldByPath) {
    const struct {
        const char *locale;
        std::string file;
    } CASES[] = {{"de", support::LOCALES_DAT},
                 {"de", support::charset_loc_of("iso_1")},
                 {"de", support::order_of("iso_1", "binary")},
                 {"de", support::common_loc_of("german")},
                 {"all", "locales/money/euro.mon"}};
    for (const auto &missing : CASES) {
        SCOPED_TRACE(missing.file);
        Application application;
        ASSERT_EQ(application.load_identifiers(), CS_SUCCEED);
        const std::string content = support::content_of_file(home_.path_of(missing.file));
        home_.remove(missing.file);
        std::string name = missing.locale;
        CS_VOID *cache = nullptr;
        EXPECT_EQ(comn_intl_load(application.context(), chars(name), length_of(name), &cache, file_, ROOM),
                  CS_ENOLOCFILE);
        EXPECT_EQ(application.context()->ctxintlerr, INTL_ECANTOPEN);
        EXPECT_EQ(file_, home_.path_of(missing.file));
        EXPECT_EQ(cache, nullptr);
        EXPECT_EQ(application.caches(), nullptr);
        home_.write(missing.file, content);
        EXPECT_EQ(comn_intl_load(application.context(), chars(name), length_of(name), &cache, nullptr, 0), CS_SUCCEED)
            << "with the file in place";
    }
}

TEST_F(LocaleLoad, DamagedFilesFail) {
    const struct {
        std::string file;
        std::string content;
        CS_RETCODE status;
    } CASES[] = {
        {support::charset_loc_of("iso_1"), "", CS_FAIL},
        {support::charset_loc_of("iso_1"), changed(support::charset_loc("iso_1"), "\\x05\\x05", "\\x05\\x06"), CS_FAIL},
        {support::charset_loc_of("iso_1"), changed(support::charset_loc("iso_1"), "class = \\x01", "class = \\x"),
         CS_EINTL},
        {support::order_of("iso_1", "binary"), changed(support::binary_srt("iso_1"), "id = \\x32\n", ""), CS_FAIL},
        {support::order_of("iso_1", "binary"), "[sortorder", CS_EINTL},
        {support::common_loc_of("german"), "[date]\n", CS_FAIL},
        {support::common_loc_of("german"), changed(support::german_common(), "firstday = 2", "firstday"), CS_EINTL},
        {support::common_loc_of("german"), changed(support::german_common(), "firstday = 2", "firstday = 8"), CS_EINTL},
    };
    for (const auto &damaged : CASES) {
        SCOPED_TRACE(damaged.file + ": " + damaged.content.substr(0, 60));
        Application application;
        ASSERT_EQ(application.load_identifiers(), CS_SUCCEED);
        const std::string content = support::content_of_file(home_.path_of(damaged.file));
        home_.write(damaged.file, damaged.content);
        std::string name = "de";
        CS_VOID *cache = nullptr;
        EXPECT_EQ(comn_intl_load(application.context(), chars(name), 2, &cache, file_, ROOM), damaged.status);
        EXPECT_EQ(application.context()->ctxintlerr < 0, damaged.status == CS_EINTL);
        EXPECT_EQ(file_, home_.path_of(damaged.file));
        EXPECT_EQ(application.caches(), nullptr);
        EXPECT_EQ(application.dates(), nullptr);
        home_.write(damaged.file, content);
    }
}

TEST_F(LocaleLoad, WhatWasLoadedBeforeAFailureStays) {
    home_.remove(support::common_loc_of("german"));
    CsLocCache *cache = nullptr;
    EXPECT_EQ(load("de", cache), CS_ENOLOCFILE);
    EXPECT_EQ(sets(), 1);
    EXPECT_EQ(messages(), 1);
    EXPECT_NE(application_.sets()->sort_order, nullptr);
    CsCharDesc *const set = application_.sets();
    home_.write(support::common_loc_of("german"), support::german_common());
    EXPECT_EQ(loaded("de")->locchardesc, set);
}

TEST_F(LocaleLoad, LockTroubleFails) {
    application_.callbacks().take_mutex_fn = fail_to_lock;
    CsLocCache *cache = nullptr;
    EXPECT_EQ(load("de", cache), CS_FAIL);
    EXPECT_EQ(cache, nullptr);
}

TEST_F(LocaleLoad, OwnersWithoutThreadsLockNothing) {
    context()->ctxthread = nullptr;
    EXPECT_NE(loaded("de"), nullptr);
    CS_THREAD none = {};
    context()->ctxthread = &none;
    EXPECT_NE(loaded("default"), nullptr);
}

TEST_F(LocaleLoad, LockIsFreeAfterEveryEnd) {
    CsLocCache *cache = nullptr;
    for (const char *name : {"de", "de", "nowhere", "badset", "badmoney"})
        load(name, cache);
    EXPECT_EQ(comn_take_mutex(globals().cmg_mtx), CS_SUCCEED);
    EXPECT_EQ(comn_release_mutex(globals().cmg_mtx), CS_SUCCEED);
}

TEST_F(LocaleLoad, ManyThreadsLoadOnce) {
    constexpr int THREADS = 8;
    constexpr int ROUNDS = 20;
    const Strings NAMES = {"de", "default", "C", "de.utf8", "us.850", "all"};
    for (int round = 0; round < ROUNDS; ++round) {
        Application application;
        ASSERT_EQ(application.load_identifiers(), CS_SUCCEED);
        std::vector<std::vector<CS_VOID *>> found(THREADS, std::vector<CS_VOID *>(NAMES.size()));
        std::vector<std::thread> threads;
        for (int t = 0; t < THREADS; ++t)
            threads.emplace_back([&, t] {
                CS_CONTEXT context = *application.context(); // of its own, with the same globals
                for (size_t i = 0; i < NAMES.size(); ++i) {
                    const size_t at = (i + static_cast<size_t>(t)) % NAMES.size();
                    std::string name = NAMES[at];
                    comn_intl_load(&context, chars(name), length_of(name), &found[static_cast<size_t>(t)][at], nullptr,
                                   0);
                    if (name == "de") { // readers of what is published take no lock
                        const auto *cache = static_cast<CsLocCache *>(found[static_cast<size_t>(t)][at]);
                        if (cache == nullptr || cache->locdateinfo->firstday != 2)
                            found[static_cast<size_t>(t)][at] = nullptr;
                    }
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        for (const auto &of_thread : found)
            EXPECT_EQ(of_thread, found[0]);
        for (const CS_VOID *cache : found[0])
            EXPECT_NE(cache, nullptr);
        EXPECT_EQ(count_of(application.caches(), &CsLocCache::locnext), 6);
        EXPECT_EQ(count_of(application.sets(), &CsCharDesc::charnext), 3);
        EXPECT_EQ(count_of(application.messages(), &CS_MESSAGE::messagenext), 4);
        EXPECT_EQ(count_of(application.dates(), &CS_DATEINFO::next), 2);
    }
}

// What a load may answer where memory is short. A file whose reader has none counts as one that cannot be opened, and a
// lock that has none fails: there is one in a message record.
bool is_shortage(CS_RETCODE status, int &locks) {
    locks += status == CS_FAIL;
    return status == CS_MEM_ERROR || status == CS_ENOLOCFILE || status == CS_FAIL;
}

TEST_F(LocaleLoad, OutOfMemoryIsToldAndLinksNothingHalf) {
    int locks = 0;
    int failing = 1;
    for (CS_RETCODE status = CS_FAIL; status != CS_SUCCEED; ++failing) {
        ASSERT_LT(failing, 500);
        Application application;
        ASSERT_EQ(application.load_identifiers(), CS_SUCCEED);
        std::string name = "numbers";
        const FailingAllocator allocator(failing);
        CS_VOID *cache = nullptr;
        status = comn_intl_load(application.context(), chars(name), length_of(name), &cache, nullptr, 0);
        if (status != CS_SUCCEED) {
            EXPECT_TRUE(is_shortage(status, locks)) << status << " at " << failing;
            EXPECT_EQ(cache, nullptr);
            EXPECT_EQ(application.caches(), nullptr);
            // What the failure left serves the next load.
            EXPECT_EQ(comn_intl_load(application.context(), chars(name), length_of(name), &cache, nullptr, 0),
                      CS_SUCCEED)
                << failing;
        }
        ASSERT_NE(cache, nullptr);
        EXPECT_EQ(count_of(application.sets(), &CsCharDesc::charnext), 1);
        EXPECT_EQ(count_of(application.messages(), &CS_MESSAGE::messagenext), 1);
        EXPECT_EQ(count_of(application.dates(), &CS_DATEINFO::next), 1);
        com_intl_loccache_drop(application.context());
        comn_intl_message_drop(application.context());
        comn_intl_dt_drop(application.context());
        com_intl_chardesc_drop(application.context());
        EXPECT_EQ(allocator.held(), 0) << failing;
    }
    EXPECT_EQ(locks, 1);
    EXPECT_GT(failing, 40);
}

TEST_F(LocaleLoad, MutexThatCannotBeMadeLeavesNoMessageRecord) {
    CsLocCache *cache = nullptr;
    {
        const FailingSystem failing("pthread_mutex_init");
        EXPECT_NE(load("de", cache), CS_SUCCEED);
    }
    EXPECT_EQ(messages(), 0);
    EXPECT_EQ(caches(), 0);
    EXPECT_NE(loaded("de"), nullptr);
}

using LocaleLoadDeathTest = LocaleFixture;

TEST_F(LocaleLoadDeathTest, NegativeLengthIsAnAssertion) {
    CS_CHAR name[] = "de";
    CS_VOID *cache = nullptr;
    EXPECT_BOMB(comn_intl_load(context(), name, -1, &cache, nullptr, 0), "com_intl");
    EXPECT_BOMB(comn_intl_load(context(), name, CS_NULLTERM, &cache, nullptr, 0), "com_intl");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_intl_load(context(), name, -1, &cache, nullptr, 0), CS_FAIL);
    EXPECT_EQ(cache, nullptr);
    EXPECT_EQ(returning.count(), 1);
}

TEST_F(LocaleLoadDeathTest, NeedsItsOperands) {
    CS_CHAR name[] = "de";
    CS_CONTEXT bare = {};
    CS_VOID *cache = nullptr;
    NullCalls calls;
    const auto call = [](CS_CONTEXT *context, CS_CHAR *text, CS_VOID **loaded) -> long {
        return comn_intl_load(context, text, 2, loaded, nullptr, 0);
    };
    calls.add_each("comn_intl_load", call, CS_FAIL, context(), &name[0], &cache);
    calls.add(
        "globals", [&] { return comn_intl_load(&bare, name, 2, &cache, nullptr, 0); }, CS_FAIL);
    calls.expect_reports("com_intl");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(cache, nullptr); });
}

TEST_F(LocaleLoadDeathTest, PathNeedsRoom) {
    CS_CHAR name[] = "de";
    CS_VOID *cache = nullptr;
    EXPECT_BOMB(comn_intl_load(context(), name, 2, &cache, file_, 0), "com_path");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_intl_load(context(), name, 2, &cache, file_, 0), CS_FAIL);
    EXPECT_EQ(cache, nullptr);
}

// ---- Derived caches --------------------------------------------------------------------------------------------------

using Derived = LocaleFixture;

TEST_F(Derived, ReplacesTheLanguage) {
    CsLocCache *const from = loaded("default");
    CsLocCache *const cache = derived(CS_LOC_LANGUAGE, "german", from);
    ASSERT_NE(cache, nullptr);
    EXPECT_NE(cache, from);
    EXPECT_EQ(text_of(cache->langname, cache->langnamelen), "german");
    EXPECT_EQ(text_of(cache->charname, cache->charnamelen), "iso_1");
    EXPECT_EQ(text_of(cache->sortname, cache->sortnamelen), "binary");
    EXPECT_EQ(cache->locmessage->lang_oid, application_.identifier(CS_OID_NATLANG, "german"));
    EXPECT_EQ(cache->locmessage->charset_oid, from->locchardesc->oid);
    EXPECT_EQ(cache->locchardesc, from->locchardesc);
    EXPECT_EQ(cache->locsortorder, from->locsortorder);
    EXPECT_EQ(cache->locdateinfo->id, cache->locmessage->lang_oid);
    EXPECT_EQ(cache->locdateinfo->firstday, 2);
    EXPECT_EQ(application_.caches(), cache);
    EXPECT_EQ(cache->locnext, from);
}

TEST_F(Derived, ReplacesTheSortOrder) {
    CsLocCache *const from = loaded("default");
    CsLocCache *const cache = derived(CS_LOC_SORTORDER, "dict", from);
    EXPECT_EQ(text_of(cache->sortname, cache->sortnamelen), "dict");
    EXPECT_EQ(cache->locsortorder->oid, application_.identifier(CS_OID_COLLATE, "dict"));
    EXPECT_EQ(cache->locchardesc, from->locchardesc);
    EXPECT_EQ(cache->locmessage, from->locmessage);
    EXPECT_EQ(cache->locdateinfo, from->locdateinfo);
}

TEST_F(Derived, ReplacesTheSet) {
    CsLocCache *const from = loaded("default");
    CsLocCache *const cache = derived(CS_LOC_CHARSET, "utf8", from);
    EXPECT_EQ(text_of(cache->charname, cache->charnamelen), "utf8");
    EXPECT_EQ(cache->locchardesc->oid, application_.identifier(CS_OID_CHARSET, "utf8"));
    EXPECT_EQ(cache->locdateinfo, from->locdateinfo);
}

TEST_F(Derived, OddityNewSetKeepsTheMessagesAndTheOrderOfTheOldOne) {
    CsLocCache *const from = loaded("default");
    CsLocCache *const cache = derived(CS_LOC_CHARSET, "utf8", from);
    EXPECT_EQ(cache->locmessage, from->locmessage);
    EXPECT_EQ(cache->locsortorder, from->locsortorder);
    EXPECT_EQ(cache->locchardesc->sort_order, nullptr);
}

TEST_F(Derived, NewSetBringsItsOrderOnceTheContextHasALocale) {
    CsLocCache *const from = loaded("C");
    CS_LOCALE locale = locale_of(from);
    context()->ctxlocale = &locale;
    CsLocCache *const cache = derived(CS_LOC_CHARSET, "cp850", from);
    EXPECT_NE(cache->locsortorder, from->locsortorder);
    EXPECT_EQ(cache->locchardesc->sort_order, cache->locsortorder);
    EXPECT_EQ(cache->locsortorder->oid, from->locsortorder->oid);
}

TEST_F(Derived, HasNoName) {
    CsLocCache *const cache = derived(CS_LOC_LANGUAGE, "german", loaded("default"));
    EXPECT_EQ(cache->locname, nullptr);
    EXPECT_EQ(cache->locnamelen, 0);
    CsLocCache *const named = loaded("de");
    EXPECT_NE(named, cache) << "the same data, but a load by name cannot find it";
    EXPECT_EQ(caches(), 3);
}

TEST_F(Derived, SameTripleIsTheExistingRecord) {
    CsLocCache *const from = loaded("default");
    CsLocCache *const german = loaded("de");
    EXPECT_EQ(derived(CS_LOC_LANGUAGE, "german", from), german);
    EXPECT_EQ(derived(CS_LOC_LANGUAGE, "us_english", from), from) << "nothing changes";
    CsLocCache *const dict = derived(CS_LOC_SORTORDER, "dict", from);
    EXPECT_EQ(derived(CS_LOC_SORTORDER, "dict", from), dict);
    EXPECT_EQ(derived(CS_LOC_SORTORDER, "binary", dict), from);
    EXPECT_EQ(caches(), 3);
}

TEST_F(Derived, AliasLeadsToTheSameRecord) {
    CsLocCache *const from = loaded("de");
    EXPECT_EQ(derived(CS_LOC_CHARSET, "iso-8859-1", from), from);
    EXPECT_EQ(derived(CS_LOC_SORTORDER, "bin", from), from);
}

TEST_F(Derived, CachesWithoutASortNameAreOnlyLikeOneAnother) {
    CsLocCache *const named = loaded("default");
    CsLocCache bare = *named;
    bare.sortname = nullptr;
    bare.sortnamelen = 0;
    bare.locsortorder = nullptr;
    CsLocCache *const cache = derived(CS_LOC_LANGUAGE, "us_english", &bare);
    EXPECT_NE(cache, named);
    EXPECT_EQ(cache->sortname, nullptr);
    EXPECT_EQ(cache->locsortorder, nullptr);
    EXPECT_EQ(derived(CS_LOC_LANGUAGE, "us_english", &bare), cache);
    EXPECT_EQ(derived(CS_LOC_LANGUAGE, "us_english", named), named);
    EXPECT_EQ(derived(CS_LOC_SORTORDER, "binary", &bare), named) << "a new order gives it one";
}

TEST_F(Derived, NameMayBeTerminatedInsteadOfCounted) {
    CsLocCache *const from = loaded("default");
    CS_CHAR name[] = "german";
    CS_VOID *cache = nullptr;
    ASSERT_EQ(comn_intl_load_dlxtypes(context(), CS_LOC_LANGUAGE, name, CS_NULLTERM, nullptr, 0, from, &cache),
              CS_SUCCEED);
    EXPECT_EQ(static_cast<CsLocCache *>(cache)->langnamelen, 6);
}

TEST_F(Derived, ReadsDatesAlsoWhereTheOldCacheHasOnlyANameForThem) {
    CsLocCache *const from = loaded("dated");
    CsLocCache *const cache = derived(CS_LOC_LANGUAGE, "german", from);
    EXPECT_NE(cache->locdateinfo, nullptr);
    EXPECT_EQ(cache->datename, nullptr);
}

TEST_F(Derived, UnknownNameHasAStatusOfItsOwn) {
    CsLocCache *const from = loaded("default");
    CsLocCache *cache = nullptr;
    for (const CS_INT type : {CS_LOC_LANGUAGE, CS_LOC_CHARSET, CS_LOC_SORTORDER})
        for (const char *name : {"nowhere", "", "euro"})
            EXPECT_EQ(derive(type, name, from, cache), CS_EBADCSNAME) << type << name;
    EXPECT_EQ(derive(CS_LOC_LANGUAGE, "iso_1", from, cache), CS_EBADCSNAME) << "a name of another class";
    EXPECT_EQ(cache, nullptr);
    EXPECT_EQ(caches(), 1);
}

TEST_F(Derived, MissingFilesAreToldByPath) {
    CsLocCache *const from = loaded("default");
    home_.remove("charsets");
    home_.remove("locales");
    CsLocCache *cache = nullptr;
    EXPECT_EQ(derive(CS_LOC_LANGUAGE, "german", from, cache), CS_ENOLOCFILE);
    EXPECT_EQ(file_, home_.path_of(support::common_loc_of("german")));
    EXPECT_EQ(derive(CS_LOC_CHARSET, "cp850", from, cache), CS_ENOLOCFILE);
    EXPECT_EQ(file_, home_.path_of(support::charset_loc_of("cp850")));
    EXPECT_EQ(derive(CS_LOC_SORTORDER, "dict", from, cache), CS_ENOLOCFILE);
    EXPECT_EQ(file_, home_.path_of(support::order_of("iso_1", "dict")));
    EXPECT_EQ(cache, nullptr);
    EXPECT_EQ(caches(), 1);
}

TEST_F(Derived, LockTroubleFails) {
    CsLocCache *const from = loaded("default");
    application_.callbacks().take_mutex_fn = fail_to_lock;
    CsLocCache *cache = nullptr;
    EXPECT_EQ(derive(CS_LOC_LANGUAGE, "german", from, cache), CS_FAIL);
    EXPECT_EQ(derive(CS_LOC_LANGUAGE, "nowhere", from, cache), CS_EBADCSNAME) << "names come first";
}

TEST_F(Derived, ManyThreadsMakeOneRecord) {
    constexpr int THREADS = 8;
    CsLocCache *const from = loaded("default");
    std::vector<CS_VOID *> found(THREADS);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < THREADS; ++t)
        threads.emplace_back([&, t] {
            CS_CONTEXT context = *application_.context();
            CS_CHAR name[] = "german";
            comn_intl_load_dlxtypes(&context, CS_LOC_LANGUAGE, name, 6, nullptr, 0, from, &found[t]);
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_NE(found[0], nullptr);
    EXPECT_EQ(found, std::vector<CS_VOID *>(THREADS, found[0]));
    EXPECT_EQ(caches(), 2);
}

TEST_F(Derived, OutOfMemoryIsToldAndLinksNothingHalf) {
    const struct {
        CS_INT type;
        const char *name;
    } CASES[] = {{CS_LOC_LANGUAGE, "german"}, {CS_LOC_CHARSET, "utf8"}, {CS_LOC_SORTORDER, "dict"}};
    for (const auto &item : CASES) {
        SCOPED_TRACE(item.name);
        int locks = 0;
        int failing = 1;
        for (CS_RETCODE status = CS_FAIL; status != CS_SUCCEED; ++failing) {
            ASSERT_LT(failing, 200);
            Application application;
            ASSERT_EQ(application.load_identifiers(), CS_SUCCEED);
            std::string base = "default", name = item.name;
            CS_VOID *from = nullptr, *cache = nullptr;
            int before = 0, during = 0;
            {
                const FailingAllocator allocator;
                ASSERT_EQ(comn_intl_load(application.context(), chars(base), 7, &from, nullptr, 0), CS_SUCCEED);
                before = allocator.held();
            }
            {
                const FailingAllocator allocator(failing);
                status = comn_intl_load_dlxtypes(application.context(), item.type, chars(name), length_of(name),
                                                 nullptr, 0, from, &cache);
                if (status != CS_SUCCEED) {
                    EXPECT_TRUE(is_shortage(status, locks)) << status << " at " << failing;
                    EXPECT_EQ(cache, nullptr);
                    EXPECT_EQ(application.caches(), from);
                }
                com_intl_loccache_drop(application.context());
                comn_intl_message_drop(application.context());
                comn_intl_dt_drop(application.context());
                com_intl_chardesc_drop(application.context());
                during = allocator.held();
            }
            EXPECT_EQ(before + during, 0) << failing;
        }
        EXPECT_EQ(locks, item.type == CS_LOC_LANGUAGE);
        EXPECT_GT(failing, 6);
    }
}

using DerivedDeathTest = LocaleFixture;

TEST_F(DerivedDeathTest, TypeIsOneOfThree) {
    CsLocCache *const from = loaded("default");
    CsLocCache *cache = nullptr;
    EXPECT_BOMB(derive(7, "german", from, cache), "com_intl");
    EXPECT_BOMB(derive(11, "german", from, cache), "com_intl");
    const ReturningAssertions returning;
    EXPECT_EQ(derive(7, "german", from, cache), CS_FAIL);
    EXPECT_EQ(derive(11, "german", from, cache), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
    EXPECT_EQ(cache, nullptr);
}

TEST_F(DerivedDeathTest, NeedsItsOperands) {
    CsLocCache *const from = loaded("default");
    CS_CHAR name[] = "german";
    CS_VOID *cache = nullptr;
    CS_CONTEXT bare = {};
    CsLocCache no_set = *from, no_messages = *from;
    no_set.locchardesc = nullptr;
    no_messages.locmessage = nullptr;
    NullCalls calls;
    const auto call = [&](CS_CONTEXT *context, CS_CHAR *text, CS_VOID *old, CS_VOID **made) -> long {
        return comn_intl_load_dlxtypes(context, CS_LOC_LANGUAGE, text, 6, nullptr, 0, old, made);
    };
    calls.add("context", [&] { return call(nullptr, name, from, &cache); }, CS_FAIL);
    calls.add("globals", [&] { return call(&bare, name, from, &cache); }, CS_FAIL);
    calls.add("name", [&] { return call(context(), nullptr, from, &cache); }, CS_FAIL);
    calls.add("old cache", [&] { return call(context(), name, nullptr, &cache); }, CS_FAIL);
    calls.add("new cache", [&] { return call(context(), name, from, nullptr); }, CS_FAIL);
    calls.add("set", [&] { return call(context(), name, &no_set, &cache); }, CS_FAIL);
    calls.add("messages", [&] { return call(context(), name, &no_messages, &cache); }, CS_FAIL);
    calls.expect_reports("com_intl");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(cache, nullptr); });
}

// ---- Message records -------------------------------------------------------------------------------------------------

using MessageRecords = LocaleFixture;

TEST_F(MessageRecords, AreOfALanguageInASet) {
    CsCharDesc set1 = {}, set2 = {};
    CsOID language1 = {}, language2 = {}, set_id1 = {}, set_id2 = {};
    set1.oid = &set_id1;
    set2.oid = &set_id2;
    const auto record = [&](CsOID &language, CsCharDesc &set) {
        CsLocCache cache = {};
        cache.locchardesc = &set;
        EXPECT_EQ(comn__intl_load_message(context(), &language, &cache, nullptr, 0), CS_SUCCEED);
        return cache.locmessage;
    };
    CS_MESSAGE *const first = record(language1, set1);
    EXPECT_EQ(first->lang_oid, &language1);
    EXPECT_EQ(first->charset_oid, &set_id1);
    EXPECT_EQ(first->locfilecache, nullptr);
    EXPECT_EQ(first->locerrhist, nullptr);
    EXPECT_EQ(first->locerrcnt, 0);
    EXPECT_EQ(record(language1, set1), first);
    CS_MESSAGE *const second = record(language1, set2);
    CS_MESSAGE *const third = record(language2, set1);
    EXPECT_NE(second, first);
    EXPECT_NE(third, first);
    EXPECT_EQ(application_.messages(), third) << "the newest is first";
    EXPECT_EQ(third->messagenext, second);
    EXPECT_EQ(record(language1, set1), first);
    EXPECT_EQ(messages(), 3);
}

TEST_F(MessageRecords, HaveALockOfTheirOwn) {
    CS_MESSAGE *const message = loaded("de")->locmessage;
    ASSERT_NE(message->msgmtx, nullptr);
    EXPECT_NE(message->msgmtx, globals().cmg_mtx);
    EXPECT_EQ(comn_take_mutex(message->msgmtx), CS_SUCCEED);
    EXPECT_EQ(comn_release_mutex(message->msgmtx), CS_SUCCEED);
}

TEST_F(MessageRecords, ReadNoFile) {
    home_.remove("locales/message");
    CsLocCache cache = *loaded("dated");
    EXPECT_EQ(comn__intl_load_message(context(), application_.identifier(CS_OID_NATLANG, "german"), &cache, file_, ROOM),
              CS_SUCCEED);
}

TEST_F(MessageRecords, DropFreesAllAndClearsTheHead) {
    const FailingAllocator allocator;
    const int before = allocator.held();
    CsCharDesc set = {};
    CsOID language = {};
    CsLocCache cache = {};
    cache.locchardesc = &set;
    ASSERT_EQ(comn__intl_load_message(context(), &language, &cache, nullptr, 0), CS_SUCCEED);
    // With files, and one without a lock.
    for (int i = 0; i < 2; ++i) {
        auto *const file = static_cast<CsErrFileCache *>(comn_calloc(1, sizeof(CsErrFileCache)));
        file->next = cache.locmessage->locfilecache;
        cache.locmessage->locfilecache = file;
    }
    auto *const bare = static_cast<CS_MESSAGE *>(comn_calloc(1, sizeof(CS_MESSAGE)));
    bare->messagenext = application_.messages();
    globals().cmg_message = bare;
    EXPECT_EQ(comn_intl_message_drop(context()), CS_SUCCEED);
    EXPECT_EQ(globals().cmg_message, nullptr);
    EXPECT_EQ(allocator.held(), before);
    EXPECT_EQ(comn_intl_message_drop(context()), CS_SUCCEED) << "none are left";
}

using MessageRecordsDeathTest = LocaleFixture;

TEST_F(MessageRecordsDeathTest, NeedTheirOperands) {
    CsCharDesc set = {};
    CsOID language = {};
    CsLocCache cache = {}, no_set = {};
    cache.locchardesc = &set;
    CS_CONTEXT bare = {};
    NullCalls calls;
    const auto call = [](CS_CONTEXT *context, CsOID *oid, CsLocCache *lcache) -> long {
        return comn__intl_load_message(context, oid, lcache, nullptr, 0);
    };
    calls.add_each("comn__intl_load_message", call, CS_FAIL, context(), &language, &cache);
    calls.add("globals", [&] { return call(&bare, &language, &cache); }, CS_FAIL);
    calls.add("set", [&] { return call(context(), &language, &no_set); }, CS_FAIL);
    calls.add("drop", [&] { return comn_intl_message_drop(nullptr); }, CS_FAIL);
    calls.add("drop, globals", [&] { return comn_intl_message_drop(&bare); }, CS_FAIL);
    calls.expect_reports("com_intl");
    calls.expect_answers([] {}, [&] {
        EXPECT_EQ(cache.locmessage, nullptr);
        EXPECT_EQ(messages(), 0);
    });
}

} // namespace
