// Names of locales from the environment and from locales.dat, the start-up, and the records of messages.
#include "locale_fixture.h"
#include "support/environment.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"

#include <array>

namespace {

using support::changed;
using support::FailingAllocator;
using support::NullCalls;
using support::ReturningAssertions;
using support::Variable;

// ---- The environment ----------------------------------------------------------------------------------------------

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

// ---- locales.dat --------------------------------------------------------------------------------------------------

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

// ---- Start-up -----------------------------------------------------------------------------------------------------

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

// ---- Message records ----------------------------------------------------------------------------------------------

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
    EXPECT_EQ(
        comn__intl_load_message(context(), application_.identifier(CS_OID_NATLANG, "german"), &cache, file_, ROOM),
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
    calls.add(
        "globals", [&] { return call(&bare, &language, &cache); }, CS_FAIL);
    calls.add(
        "set", [&] { return call(context(), &language, &no_set); }, CS_FAIL);
    calls.add(
        "drop", [&] { return comn_intl_message_drop(nullptr); }, CS_FAIL);
    calls.add(
        "drop, globals", [&] { return comn_intl_message_drop(&bare); }, CS_FAIL);
    calls.expect_reports("com_intl");
    calls.expect_answers([] {},
                         [&] {
                             EXPECT_EQ(cache.locmessage, nullptr);
                             EXPECT_EQ(messages(), 0);
                         });
}

} // namespace
