// Loads of locales that contexts share: by name, and like another with one item replaced.
#include "locale_fixture.h"
#include "support/failing_allocator.h"
#include "support/failing_system.h"
#include "support/null_calls.h"

#include <thread>

namespace {

using support::changed;
using support::FailingAllocator;
using support::FailingSystem;
using support::NullCalls;
using support::ReturningAssertions;

// ---- Loading by name ----------------------------------------------------------------------------------------------

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

// ---- Derived caches -----------------------------------------------------------------------------------------------

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
    calls.add(
        "context", [&] { return call(nullptr, name, from, &cache); }, CS_FAIL);
    calls.add(
        "globals", [&] { return call(&bare, name, from, &cache); }, CS_FAIL);
    calls.add(
        "name", [&] { return call(context(), nullptr, from, &cache); }, CS_FAIL);
    calls.add(
        "old cache", [&] { return call(context(), name, nullptr, &cache); }, CS_FAIL);
    calls.add(
        "new cache", [&] { return call(context(), name, from, nullptr); }, CS_FAIL);
    calls.add(
        "set", [&] { return call(context(), name, &no_set, &cache); }, CS_FAIL);
    calls.add(
        "messages", [&] { return call(context(), name, &no_messages, &cache); }, CS_FAIL);
    calls.expect_reports("com_intl");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(cache, nullptr); });
}

} // namespace
