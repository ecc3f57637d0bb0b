// The records of locales, and what they tell of themselves.
#include "locale_fixture.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"

#include <algorithm>
#include <thread>

namespace {

using support::FailingAllocator;
using support::NullCalls;
using support::ReturningAssertions;

// Six caches, one for each category, with names of their own.
class Categories {
public:
    Categories() {
        for (int i = 0; i < 6; ++i) {
            const std::string number = std::to_string(i + 1);
            sets_[i] = "set" + number;
            languages_[i] = "language_" + number;
            orders_[i] = "ord" + number;
            caches_[i].charname = chars(sets_[i]);
            caches_[i].charnamelen = length_of(sets_[i]);
            caches_[i].langname = chars(languages_[i]);
            caches_[i].langnamelen = length_of(languages_[i]);
            caches_[i].sortname = chars(orders_[i]);
            caches_[i].sortnamelen = length_of(orders_[i]);
        }
    }
    CsLocCache &cache(CS_INT lctype) { return caches_[lctype - 1]; }
    CS_LOCALE locale() {
        return {&caches_[0], &caches_[1], &caches_[2], &caches_[3], &caches_[4], &caches_[5], nullptr, nullptr};
    }

private:
    CsLocCache caches_[6] = {};
    std::string sets_[6], languages_[6], orders_[6];
};

// ---- Names --------------------------------------------------------------------------------------------------------

class LocaleText : public testing::Test {
protected:
    std::string text(CS_INT lctype, CS_INT type, CS_INT room = 64) {
        std::string buffer(64, '~');
        CS_INT length = -1;
        const CS_RETCODE status = com_intl_getstr(&locale_, lctype, type, chars(buffer), room, &length);
        if (status != CS_SUCCEED) {
            EXPECT_EQ(status, CS_FAIL);
            EXPECT_EQ(length, -1);
            EXPECT_EQ(buffer, std::string(64, '~'));
            return "fails";
        }
        EXPECT_EQ(buffer.substr(static_cast<size_t>(length)), std::string(64 - static_cast<size_t>(length), '~'))
            << "no terminator";
        return buffer.substr(0, static_cast<size_t>(length));
    }

    Categories categories_;
    CS_LOCALE locale_ = categories_.locale();
};

TEST_F(LocaleText, IsOfTheCategoryAskedFor) {
    for (CS_INT lctype = 1; lctype <= 6; ++lctype) {
        const std::string number = std::to_string(lctype);
        EXPECT_EQ(text(lctype, CS_LOCSTR_CHARSET), "set" + number);
        EXPECT_EQ(text(lctype, CS_LOCSTR_LANGUAGE), "language_" + number);
        EXPECT_EQ(text(lctype, CS_LOCSTR_SORTORDER), "ord" + number);
        EXPECT_EQ(text(lctype, CS_LOCSTR_LANGUAGE_CHARSET), "language_" + number + ".set" + number);
    }
}

TEST_F(LocaleText, FitsInExactlyItsLength) {
    EXPECT_EQ(text(1, CS_LOCSTR_CHARSET, 4), "set1");
    EXPECT_EQ(text(1, CS_LOCSTR_CHARSET, 3), "fails");
    EXPECT_EQ(text(1, CS_LOCSTR_LANGUAGE, 10), "language_1");
    EXPECT_EQ(text(1, CS_LOCSTR_LANGUAGE, 9), "fails");
    EXPECT_EQ(text(1, CS_LOCSTR_LANGUAGE_CHARSET, 15), "language_1.set1");
    EXPECT_EQ(text(1, CS_LOCSTR_LANGUAGE_CHARSET, 14), "fails");
}

TEST_F(LocaleText, MissingNameIsEmpty) {
    categories_.cache(2).sortname = nullptr;
    categories_.cache(2).sortnamelen = 0;
    EXPECT_EQ(text(2, CS_LOCSTR_SORTORDER, 1), "");
}

using LocaleTextDeathTest = LocaleText;

TEST_F(LocaleTextDeathTest, NeedsRoomACategoryAndAType) {
    for (const auto &[lctype, type, room] :
         {std::array{0, 1, 8}, std::array{7, 1, 8}, std::array{1, 0, 8}, std::array{1, 5, 8}, std::array{1, 1, 0}}) {
        CS_CHAR buffer[8] = "~";
        CS_INT length = -1;
        EXPECT_BOMB(com_intl_getstr(&locale_, lctype, type, buffer, room, &length), "com_loc");
        const ReturningAssertions returning;
        EXPECT_EQ(com_intl_getstr(&locale_, lctype, type, buffer, room, &length), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_STREQ(buffer, "~");
        EXPECT_EQ(length, -1);
    }
}

TEST_F(LocaleTextDeathTest, NeedsItsOperands) {
    CS_CHAR buffer[8] = "~";
    CS_INT length = -1;
    CS_LOCALE empty = {};
    NullCalls calls;
    const auto call = [](CS_LOCALE *locale, CS_CHAR *to, CS_INT *outlen) -> long {
        return com_intl_getstr(locale, 1, 1, to, 8, outlen);
    };
    calls.add_each("com_intl_getstr", call, CS_FAIL, &locale_, &buffer[0], &length);
    calls.add(
        "category", [&] { return call(&empty, buffer, &length); }, CS_FAIL);
    calls.expect_reports("com_loc");
    calls.expect_answers([] {}, [&] { EXPECT_STREQ(buffer, "~"); });
}

// ---- Likeness -----------------------------------------------------------------------------------------------------

constexpr CS_INT ALIKE = 0;
constexpr CS_INT DIFFERENT = 1;

class LocaleLikeness : public testing::Test {
protected:
    Categories categories1_, categories2_;
    CS_LOCALE locale1_ = categories1_.locale();
    CS_LOCALE locale2_ = categories2_.locale();
    CsCharDesc sets_[2] = {};
    CS_MESSAGE messages_[2] = {};
    CsSortDesc orders_[2] = {};
};

TEST_F(LocaleLikeness, LocaleIsLikeItself) {
    for (CS_INT lctype = 1; lctype <= 6; ++lctype)
        for (CS_INT type = 1; type <= 3; ++type)
            EXPECT_EQ(com_intl_loccmp(lctype, type, &locale1_, &locale1_), ALIKE);
}

TEST_F(LocaleLikeness, SharedCacheIsAlikeInItsCategoryOnly) {
    for (CS_INT lctype = 1; lctype <= 6; ++lctype) {
        CS_LOCALE mixed = categories2_.locale();
        (&mixed.collateptr)[lctype - 1] = (&locale1_.collateptr)[lctype - 1];
        for (CS_INT other = 1; other <= 6; ++other) {
            categories1_.cache(other).locchardesc = &sets_[0];
            categories2_.cache(other).locchardesc = &sets_[1];
            EXPECT_EQ(com_intl_loccmp(other, CS_LOCSTR_CHARSET, &locale1_, &mixed),
                      other == lctype ? ALIKE : DIFFERENT);
        }
    }
}

TEST_F(LocaleLikeness, TypesCompareTheirDescriptorsByPointer) {
    CsLocCache &cache1 = categories1_.cache(1);
    CsLocCache &cache2 = categories2_.cache(1);
    for (int bits = 0; bits < 8; ++bits) {
        cache1.locchardesc = &sets_[0];
        cache1.locmessage = &messages_[0];
        cache1.locsortorder = &orders_[0];
        cache2.locchardesc = &sets_[bits & 1];
        cache2.locmessage = &messages_[bits >> 1 & 1];
        cache2.locsortorder = &orders_[bits >> 2 & 1];
        EXPECT_EQ(com_intl_loccmp(1, CS_LOCSTR_CHARSET, &locale1_, &locale2_), bits & 1) << bits;
        EXPECT_EQ(com_intl_loccmp(1, CS_LOCSTR_LANGUAGE, &locale1_, &locale2_), bits >> 1 & 1) << bits;
        EXPECT_EQ(com_intl_loccmp(1, CS_LOCSTR_SORTORDER, &locale1_, &locale2_), bits >> 2 & 1) << bits;
    }
}

using LocaleLikenessDeathTest = LocaleLikeness;

TEST_F(LocaleLikenessDeathTest, NeedsACategoryAndAType) {
    for (const auto &[lctype, type] : {std::array{0, 1}, std::array{7, 1}, std::array{1, 0}, std::array{1, 4}}) {
        EXPECT_BOMB(com_intl_loccmp(lctype, type, &locale1_, &locale2_), "com_loc");
        const ReturningAssertions returning;
        EXPECT_EQ(com_intl_loccmp(lctype, type, &locale1_, &locale2_), DIFFERENT);
        EXPECT_EQ(returning.count(), 1);
    }
}

TEST_F(LocaleLikenessDeathTest, NeedsItsOperands) {
    CS_LOCALE empty = {};
    NullCalls calls;
    const auto call = [](CS_LOCALE *loc1, CS_LOCALE *loc2) -> long { return com_intl_loccmp(1, 1, loc1, loc2); };
    calls.add_each("com_intl_loccmp", call, DIFFERENT, &locale1_, &locale2_);
    calls.add(
        "first category", [&] { return call(&empty, &locale2_); }, DIFFERENT);
    calls.add(
        "second category", [&] { return call(&locale1_, &empty); }, DIFFERENT);
    calls.expect_reports("com_loc");
    calls.expect_answers([] {}, [] {});
}

// ---- Records ------------------------------------------------------------------------------------------------------

class LocaleRecords : public testing::Test {
protected:
    LocaleRecords() { application_.context()->ctxlocale = &own_; }
    ~LocaleRecords() override { comn_loc_drop_all(context()); }

    CS_CONTEXT *context() { return application_.context(); }
    CS_LOCALE *&head() { return application_.globals().cmg_locale; }
    CS_LOCALE *allocated() {
        CS_LOCALE *locale = nullptr;
        EXPECT_EQ(comn_loc_alloc(context(), &locale), CS_SUCCEED);
        return locale;
    }
    void fail_locks() { application_.callbacks().take_mutex_fn = fail_to_lock; }
    void mend_locks() { application_.callbacks().take_mutex_fn = comn_take_mutex; }

    Application application_;
    Categories categories_;
    CS_LOCALE own_ = categories_.locale();
};

TEST_F(LocaleRecords, BeginLikeTheContextsOwn) {
    CS_LOCALE *const locale = allocated();
    ASSERT_NE(locale, nullptr);
    EXPECT_EQ(locale->collateptr, own_.collateptr);
    EXPECT_EQ(locale->ctypeptr, own_.ctypeptr);
    EXPECT_EQ(locale->messageptr, own_.messageptr);
    EXPECT_EQ(locale->monetaryptr, own_.monetaryptr);
    EXPECT_EQ(locale->numericptr, own_.numericptr);
    EXPECT_EQ(locale->timeptr, own_.timeptr);
    EXPECT_EQ(locale->ctxptr, context());
    EXPECT_EQ(locale->next, nullptr);
    EXPECT_EQ(head(), locale);
}

TEST_F(LocaleRecords, NewestIsFirst) {
    CS_LOCALE *const first = allocated();
    CS_LOCALE *const second = allocated();
    EXPECT_EQ(head(), second);
    EXPECT_EQ(second->next, first);
}

TEST_F(LocaleRecords, OutOfMemoryMakesNone) {
    CS_LOCALE *locale = &own_;
    const FailingAllocator allocator(1);
    EXPECT_EQ(comn_loc_alloc(context(), &locale), CS_MEM_ERROR);
    EXPECT_EQ(locale, nullptr);
    EXPECT_EQ(head(), nullptr);
    EXPECT_EQ(allocator.held(), 0);
}

TEST_F(LocaleRecords, AllocationTellsTheLocksStatusAndKeepsNothing) {
    fail_locks();
    CS_LOCALE *locale = &own_;
    const FailingAllocator allocator;
    EXPECT_EQ(comn_loc_alloc(context(), &locale), LOCK_TROUBLE);
    EXPECT_EQ(allocator.held(), 0);
    EXPECT_EQ(locale, nullptr);
    EXPECT_EQ(head(), nullptr);
    mend_locks();
}

TEST_F(LocaleRecords, DropUnlinksOne) {
    for (int dropped = 0; dropped < 3; ++dropped) {
        CS_LOCALE *locales[] = {allocated(), allocated(), allocated()};
        EXPECT_EQ(comn_loc_drop(context(), locales[dropped]), CS_SUCCEED);
        for (int i = 0; i < 3; ++i)
            if (i != dropped) {
                EXPECT_TRUE(comn_loc_validate(context(), locales[i]));
            }
        EXPECT_EQ(count_of(head(), &CS_LOCALE::next), 2);
        comn_loc_drop_all(context());
        context()->ctxlocale = &own_;
    }
}

TEST_F(LocaleRecords, DropForgetsTheContextsOwn) {
    CS_LOCALE *const first = allocated();
    CS_LOCALE *const second = allocated();
    context()->ctxlocale = first;
    EXPECT_EQ(comn_loc_drop(context(), second), CS_SUCCEED);
    EXPECT_EQ(context()->ctxlocale, first);
    EXPECT_EQ(comn_loc_drop(context(), first), CS_SUCCEED);
    EXPECT_EQ(context()->ctxlocale, nullptr);
    EXPECT_EQ(head(), nullptr);
}

TEST_F(LocaleRecords, DropTellsTheLocksStatus) {
    CS_LOCALE *const locale = allocated();
    fail_locks();
    EXPECT_EQ(comn_loc_drop(context(), locale), LOCK_TROUBLE);
    EXPECT_EQ(comn_loc_drop_all(context()), LOCK_TROUBLE);
    EXPECT_FALSE(comn_loc_validate(context(), locale));
    mend_locks();
    EXPECT_TRUE(comn_loc_validate(context(), locale));
}

TEST_F(LocaleRecords, DropAllFreesThemAndTheDefault) {
    {
        const FailingAllocator allocator;
        allocated();
        allocated();
        context()->ctxlocale = allocated();
        EXPECT_EQ(allocator.held(), 3);
        context()->ctxdeflocale = static_cast<CS_LOCALE *>(comn_calloc(1, sizeof(CS_LOCALE)));
        EXPECT_EQ(comn_loc_drop_all(context()), CS_SUCCEED);
        EXPECT_EQ(allocator.held(), 0);
    }
    EXPECT_EQ(head(), nullptr);
    EXPECT_EQ(context()->ctxlocale, nullptr);
    EXPECT_EQ(context()->ctxdeflocale, nullptr);
    EXPECT_EQ(comn_loc_drop_all(context()), CS_SUCCEED) << "none are left";
}

TEST_F(LocaleRecords, DefaultThatIsOnTheListIsFreedOnce) {
    const FailingAllocator allocator;
    context()->ctxdeflocale = allocated();
    allocated();
    EXPECT_EQ(comn_loc_drop_all(context()), CS_SUCCEED);
    EXPECT_EQ(allocator.held(), 0);
    EXPECT_EQ(context()->ctxdeflocale, nullptr);
}

TEST_F(LocaleRecords, DropAllZeroesThemFirst) {
    CS_LOCALE *const locale = allocated();
    CS_LOCALE image = *locale;
    FailingAllocator allocator;
    allocator.watch(locale, &image, sizeof image);
    comn_loc_drop_all(context());
    const CS_LOCALE zero = {};
    EXPECT_EQ(std::memcmp(&image, &zero, sizeof image), 0);
}

TEST_F(LocaleRecords, ValidateFindsThoseOnTheList) {
    CS_LOCALE *const first = allocated();
    CS_LOCALE *const second = allocated();
    EXPECT_EQ(comn_loc_validate(context(), first), CS_TRUE);
    EXPECT_EQ(comn_loc_validate(context(), second), CS_TRUE);
    EXPECT_EQ(comn_loc_validate(context(), &own_), CS_FALSE);
}

TEST_F(LocaleRecords, CopyTakesTheCategoriesOnly) {
    CS_LOCALE owner = {}, next = {};
    CS_LOCALE locale = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &owner, &next};
    CS_LOCALE from = own_;
    from.ctxptr = context();
    from.next = &from;
    EXPECT_EQ(comn_loc_copy(&locale, &from), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(&locale, &own_, offsetof(CS_LOCALE, ctxptr)), 0);
    EXPECT_EQ(locale.ctxptr, &owner);
    EXPECT_EQ(locale.next, &next);
    EXPECT_EQ(comn_loc_copy(&locale, &locale), CS_SUCCEED);
    EXPECT_EQ(locale.timeptr, own_.timeptr);
}

TEST_F(LocaleRecords, ManyThreadsAllocateAndDrop) {
    constexpr int THREADS = 8;
    constexpr int ROUNDS = 200;
    std::vector<int> trouble(THREADS);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < THREADS; ++t)
        threads.emplace_back([&, t] {
            CS_CONTEXT own = *context();
            for (int round = 0; round < ROUNDS; ++round) {
                CS_LOCALE *locale = nullptr;
                trouble[t] += comn_loc_alloc(&own, &locale) != CS_SUCCEED || !comn_loc_validate(&own, locale);
                trouble[t] += comn_loc_drop(&own, locale) != CS_SUCCEED;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(trouble, std::vector<int>(THREADS));
    EXPECT_EQ(head(), nullptr);
}

using LocaleRecordsDeathTest = LocaleRecords;

TEST_F(LocaleRecordsDeathTest, EmptyListIsAProgramError) {
    EXPECT_NULL_REPORT(comn_loc_drop(context(), &own_), "com_loc");
    EXPECT_NULL_REPORT(comn_loc_validate(context(), &own_), "com_loc");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_loc_drop(context(), &own_), CS_FAIL);
    EXPECT_EQ(comn_loc_validate(context(), &own_), CS_FALSE);
    EXPECT_EQ(returning.count(), 2);
    EXPECT_EQ(comn_take_mutex(application_.globals().cmg_mtx), CS_SUCCEED) << "the lock is free";
    comn_release_mutex(application_.globals().cmg_mtx);
}

TEST_F(LocaleRecordsDeathTest, DropNeedsARecordOfTheList) {
    CS_LOCALE *const locale = allocated();
    EXPECT_NULL_REPORT(comn_loc_drop(context(), &own_), "com_loc");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_loc_drop(context(), &own_), CS_FAIL);
    EXPECT_EQ(head(), locale);
}

TEST_F(LocaleRecordsDeathTest, NeedTheirOperands) {
    CS_CONTEXT bare = {};
    CS_CONTEXT localeless = *context();
    localeless.ctxlocale = nullptr;
    CS_LOCALE *made = nullptr;
    CS_LOCALE *const locale = allocated();
    NullCalls calls;
    NULL_CALLS(calls, comn_loc_alloc, CS_FAIL, context(), &made);
    NULL_CALLS(calls, comn_loc_drop, CS_FAIL, context(), locale);
    NULL_CALLS(calls, comn_loc_drop_all, CS_FAIL, context());
    NULL_CALLS(calls, comn_loc_validate, CS_FALSE, context(), locale);
    NULL_CALLS(calls, comn_loc_copy, CS_FAIL, locale, &own_);
    calls.add(
        "alloc, globals", [&] { return comn_loc_alloc(&bare, &made); }, CS_FAIL);
    calls.add(
        "alloc, locale", [&] { return comn_loc_alloc(&localeless, &made); }, CS_FAIL);
    calls.add(
        "drop, globals", [&] { return comn_loc_drop(&bare, locale); }, CS_FAIL);
    calls.add(
        "drop all, globals", [&] { return comn_loc_drop_all(&bare); }, CS_FAIL);
    calls.add(
        "validate, globals", [&] { return comn_loc_validate(&bare, locale); }, CS_FALSE);
    calls.expect_reports("com_loc");
    calls.expect_answers([] {},
                         [&] {
                             EXPECT_EQ(made, nullptr);
                             EXPECT_EQ(head(), locale);
                         });
}

// ---- Identifiers --------------------------------------------------------------------------------------------------

using LocaleIdentifier = LocaleFixture;

TEST_F(LocaleIdentifier, IsOfTheSetOfTypesOrTheLanguageOfMessages) {
    CS_LOCALE locale = locale_of(loaded("default"));
    locale.ctypeptr = loaded("de.utf8");
    locale.messageptr = loaded("de");
    CsOID *oid = nullptr;
    EXPECT_EQ(comn_locale_to_oid(context(), &locale, CS_LOCALE_CHARSET_OID, &oid), CS_SUCCEED);
    EXPECT_EQ(oid, application_.identifier(CS_OID_CHARSET, "utf8"));
    EXPECT_EQ(comn_locale_to_oid(context(), &locale, CS_LOCALE_LANGUAGE_OID, &oid), CS_SUCCEED);
    EXPECT_EQ(oid, application_.identifier(CS_OID_NATLANG, "german"));
}

TEST_F(LocaleIdentifier, NamesWithoutOneOrTooLongFail) {
    std::string name(256, 'x');
    CsLocCache cache = {};
    cache.charname = chars(name);
    CS_LOCALE locale = locale_of(&cache);
    CsOID *oid = nullptr;
    for (const CS_INT length : {7, 255, 256}) {
        cache.charnamelen = length;
        EXPECT_EQ(comn_locale_to_oid(context(), &locale, CS_LOCALE_CHARSET_OID, &oid), CS_FAIL);
    }
    EXPECT_EQ(oid, nullptr);
}

using LocaleIdentifierDeathTest = LocaleFixture;

TEST_F(LocaleIdentifierDeathTest, TypeIsOneOfTwo) {
    CS_LOCALE locale = locale_of(loaded("default"));
    CsOID *oid = nullptr;
    for (const CS_INT type : {0, 3}) {
        EXPECT_BOMB(comn_locale_to_oid(context(), &locale, type, &oid), "gidutil");
        const ReturningAssertions returning;
        EXPECT_EQ(comn_locale_to_oid(context(), &locale, type, &oid), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_NULL_REPORT(comn_locale_to_oid(context(), &locale, CS_LOCALE_CHARSET_OID, nullptr), "gidutil");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_locale_to_oid(context(), &locale, CS_LOCALE_CHARSET_OID, nullptr), CS_FAIL);
    EXPECT_EQ(oid, nullptr);
}

} // namespace
