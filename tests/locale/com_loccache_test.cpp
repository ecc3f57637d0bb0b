// The caches behind the categories of a locale.
#include "locale_fixture.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"

#include <functional>

namespace {

using support::FailingAllocator;
using support::NullCalls;
using support::ReturningAssertions;

CS_CHAR *copy_of(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<CS_CHAR *>(std::memcpy(comn_malloc(size), text, size));
}

// A cache with everything set. Names are memory of their own.
void fill(CsLocCache &cache, const CsLocCache &shared) {
    cache = shared;
    CS_CHAR **const NAMES[] = {&cache.locname,  &cache.charname, &cache.sortname, &cache.langname,
                               &cache.datename, &cache.numname,  &cache.monname};
    CS_INT *const LENGTHS[] = {&cache.locnamelen,  &cache.charnamelen, &cache.sortnamelen, &cache.langnamelen,
                               &cache.datenamelen, &cache.numnamelen,  &cache.monnamelen};
    const char *const TEXTS[] = {"locale", "set", "order", "language", "dates", "numbers", "money"};
    for (int i = 0; i < 7; ++i) {
        *NAMES[i] = copy_of(TEXTS[i]);
        *LENGTHS[i] = static_cast<CS_INT>(std::strlen(TEXTS[i]));
    }
}

class LocaleCaches : public testing::Test {
protected:
    LocaleCaches() {
        set_.oid = &ids_[0];
        order_.oid = &ids_[1];
        message_.lang_oid = &ids_[2];
        date_.id = &ids_[3];
        shared_.locchardesc = &set_;
        shared_.locsortorder = &order_;
        shared_.locmessage = &message_;
        shared_.locdateinfo = &date_;
        shared_.locnuminfo = &number_;
        shared_.locmoninfo = &money_;
    }
    CS_CONTEXT *context() { return application_.context(); }
    // A filled cache that has to be dropped.
    CsLocCache *filled() {
        CsLocCache *cache = nullptr;
        EXPECT_EQ(comn__create_loccache(context(), &cache), CS_SUCCEED);
        fill(*cache, shared_);
        return cache;
    }

    Application application_;
    CsOID ids_[4] = {};
    CsCharDesc set_ = {};
    CsSortDesc order_ = {};
    CS_MESSAGE message_ = {};
    CS_DATEINFO date_ = {};
    CS_NUMINFO number_ = {};
    CS_MONINFO money_ = {};
    CsLocCache shared_ = {};
};

// ---- Making and dropping ------------------------------------------------------------------------------------------

TEST_F(LocaleCaches, BeginZeroed) {
    CsLocCache *cache = nullptr;
    ASSERT_EQ(comn__create_loccache(context(), &cache), CS_SUCCEED);
    const CsLocCache zero = {};
    EXPECT_EQ(std::memcmp(cache, &zero, sizeof zero), 0);
    comn__drop_loccache(context(), cache);
}

TEST_F(LocaleCaches, OutOfMemoryMakesNone) {
    CsLocCache *cache = &shared_;
    const FailingAllocator allocator(1);
    EXPECT_EQ(comn__create_loccache(context(), &cache), CS_MEM_ERROR);
    EXPECT_EQ(cache, nullptr);
}

TEST_F(LocaleCaches, DropFreesTheNamesAndLeavesWhatTheyLeadTo) {
    const FailingAllocator allocator;
    CsLocCache *const cache = filled();
    EXPECT_EQ(allocator.held(), 8);
    comn__drop_loccache(context(), cache);
    EXPECT_EQ(allocator.held(), 0);
    EXPECT_EQ(set_.oid, &ids_[0]);
}

TEST_F(LocaleCaches, DropAllFreesTheChainAndClearsItsHead) {
    CsLocCache *const first = filled();
    CsLocCache *const second = filled();
    first->locnext = second;
    application_.globals().cmg_lcache = first;
    {
        const FailingAllocator allocator;
        EXPECT_EQ(com_intl_loccache_drop(context()), CS_SUCCEED);
        EXPECT_EQ(allocator.held(), -16);
    }
    EXPECT_EQ(application_.globals().cmg_lcache, nullptr);
    EXPECT_EQ(com_intl_loccache_drop(context()), CS_SUCCEED) << "none are left";
}

TEST_F(LocaleCaches, CopyHasNamesOfItsOwnAndNoDatesNumbersOrMoney) {
    CsLocCache *const from = filled();
    from->locnext = from;
    CsLocCache to;
    std::memset(static_cast<void *>(&to), '~', sizeof to);
    ASSERT_EQ(comn__copy_loccache(from, &to), CS_SUCCEED);
    EXPECT_NE(to.locname, from->locname);
    EXPECT_STREQ(to.locname, "locale");
    EXPECT_EQ(to.locnamelen, 6);
    EXPECT_STREQ(to.charname, "set");
    EXPECT_EQ(to.charnamelen, 3);
    EXPECT_STREQ(to.sortname, "order");
    EXPECT_EQ(to.sortnamelen, 5);
    EXPECT_STREQ(to.langname, "language");
    EXPECT_EQ(to.langnamelen, 8);
    EXPECT_EQ(to.locchardesc, &set_);
    EXPECT_EQ(to.locsortorder, &order_);
    EXPECT_EQ(to.locmessage, &message_);
    EXPECT_EQ(to.datename, nullptr);
    EXPECT_EQ(to.datenamelen, 0);
    EXPECT_EQ(to.locdateinfo, nullptr);
    EXPECT_EQ(to.numname, nullptr);
    EXPECT_EQ(to.locnuminfo, nullptr);
    EXPECT_EQ(to.monname, nullptr);
    EXPECT_EQ(to.locmoninfo, nullptr);
    EXPECT_EQ(to.locnext, nullptr);
    auto *const whole = static_cast<CsLocCache *>(comn_malloc(sizeof(CsLocCache)));
    *whole = to;
    comn__drop_loccache(context(), whole);
    comn__drop_loccache(context(), from);
}

TEST_F(LocaleCaches, CopyOfACacheWithoutNamesHasNone) {
    CsLocCache to;
    std::memset(static_cast<void *>(&to), '~', sizeof to);
    ASSERT_EQ(comn__copy_loccache(&shared_, &to), CS_SUCCEED);
    EXPECT_EQ(to.locname, nullptr);
    EXPECT_EQ(to.locnamelen, 0);
    EXPECT_EQ(to.charname, nullptr);
}

TEST_F(LocaleCaches, CopyTellsThatMemoryIsShort) {
    CsLocCache *const from = filled();
    for (int failing = 1; failing <= 5; ++failing) {
        const FailingAllocator allocator(failing);
        CsLocCache *to = static_cast<CsLocCache *>(comn_malloc(sizeof(CsLocCache)));
        if (to == nullptr)
            continue;
        EXPECT_EQ(comn__copy_loccache(from, to), CS_MEM_ERROR) << failing;
        comn__drop_loccache(context(), to); // what there is can be dropped
        EXPECT_EQ(allocator.held(), 0);
    }
    comn__drop_loccache(context(), from);
}

// ---- Lookup by name -----------------------------------------------------------------------------------------------

TEST_F(LocaleCaches, ScanByNameComparesLengthAndBytes) {
    CsLocCache nameless = shared_;
    CsLocCache *const named = filled();
    nameless.locnext = named;
    application_.globals().cmg_lcache = &nameless;
    CS_CHAR name[] = "locale2";
    EXPECT_EQ(com__scan_lcache_name(context(), name, 6), named);
    EXPECT_EQ(com__scan_lcache_name(context(), name, 7), nullptr);
    EXPECT_EQ(com__scan_lcache_name(context(), name, 5), nullptr);
    EXPECT_EQ(com__scan_lcache_name(context(), name, 0), nullptr) << "a cache without a name is never found";
    application_.globals().cmg_lcache = nullptr;
    EXPECT_EQ(com__scan_lcache_name(context(), name, 6), nullptr);
    comn__drop_loccache(context(), named);
}

// ---- Equality of date data ----------------------------------------------------------------------------------------

TEST_F(LocaleCaches, DatesWithIdentifiersAreEqualByThem) {
    CS_DATEINFO a = {}, b = {};
    a.id = b.id = &ids_[0];
    b.is12hour = 1;
    b.convertfmt = 7;
    EXPECT_EQ(comn__cmp_dtinfo(&a, &b), CS_TRUE) << "whatever else they hold";
    b.id = &ids_[1];
    EXPECT_EQ(comn__cmp_dtinfo(&a, &b), CS_FALSE);
    b = a;
    b.id = nullptr;
    EXPECT_EQ(comn__cmp_dtinfo(&a, &b), CS_FALSE);
    EXPECT_EQ(comn__cmp_dtinfo(&b, &a), CS_FALSE);
}

TEST_F(LocaleCaches, DatesWithoutIdentifiersAreEqualByFields) {
    using Change = std::function<void(CS_DATEINFO &)>;
    static CS_BYTE text[] = "text", same[] = "text", other[] = "test";
    std::vector<std::pair<std::string, Change>> changes = {
        {"is12hour", [](CS_DATEINFO &d) { d.is12hour = 1; }},
        {"firstday", [](CS_DATEINFO &d) { d.firstday = 3; }},
        {"convertfmt", [](CS_DATEINFO &d) { d.convertfmt = 3; }},
        {"dateorder", [](CS_DATEINFO &d) { d.dateorder[0] = 'x'; }},
        {"locdateorder_id", [](CS_DATEINFO &d) { d.locdateorder_id = 2; }},
    };
    using Text = CS_BYTE *CS_DATEINFO::*;
    using Length = CS_INT CS_DATEINFO::*;
    const std::pair<Text, Length> TEXTS[] = {
        {&CS_DATEINFO::amindict, &CS_DATEINFO::amindict_len},
        {&CS_DATEINFO::pmindict, &CS_DATEINFO::pmindict_len},
        {&CS_DATEINFO::datefmt, &CS_DATEINFO::datefmt_len},
        {&CS_DATEINFO::timefmt, &CS_DATEINFO::timefmt_len},
        {&CS_DATEINFO::longdtfmt, &CS_DATEINFO::longdtfmt_len},
        {&CS_DATEINFO::shrtdtfmt, &CS_DATEINFO::shrtdtfmt_len},
        {&CS_DATEINFO::era, &CS_DATEINFO::era_len},
        {&CS_DATEINFO::era_t_fmt, &CS_DATEINFO::eratfmt_len},
        {&CS_DATEINFO::era_d_fmt, &CS_DATEINFO::eradfmt_len},
        {&CS_DATEINFO::era_dt_fmt, &CS_DATEINFO::eradtfmt_len},
    };
    CS_DATEINFO base = {};
    const auto slots = [&](CS_DATEINFO &d) {
        std::vector<std::pair<CS_BYTE **, CS_INT *>> all;
        for (const auto &[member, length] : TEXTS)
            all.emplace_back(&(d.*member), &(d.*length));
        for (int i = 0; i < 12; ++i)
            all.emplace_back(&d.months[i], &d.mon_len[i]);
        for (int i = 0; i < 12; ++i)
            all.emplace_back(&d.shortmonths[i], &d.shrtmon_len[i]);
        for (int i = 0; i < 7; ++i)
            all.emplace_back(&d.days[i], &d.day_len[i]);
        for (int i = 0; i < 7; ++i)
            all.emplace_back(&d.shortdays[i], &d.shrtday_len[i]);
        return all;
    };
    for (const auto &[at, length] : slots(base)) {
        *at = text;
        *length = 4;
    }
    CS_DATEINFO alike = base;
    for (const auto &[at, length] : slots(alike))
        *at = same;
    alike.next = &base;
    EXPECT_EQ(comn__cmp_dtinfo(&base, &alike), CS_TRUE);
    for (const auto &[name, change] : changes) {
        CS_DATEINFO changed = alike;
        change(changed);
        EXPECT_EQ(comn__cmp_dtinfo(&base, &changed), CS_FALSE) << name;
    }
    for (size_t i = 0; i < slots(base).size(); ++i) {
        CS_DATEINFO changed = alike;
        *slots(changed)[i].first = other;
        EXPECT_EQ(comn__cmp_dtinfo(&base, &changed), CS_FALSE) << "text " << i;
        *slots(changed)[i].first = same;
        *slots(changed)[i].second = 3;
        EXPECT_EQ(comn__cmp_dtinfo(&base, &changed), CS_FALSE) << "length " << i;
        *slots(changed)[i].first = nullptr;
        EXPECT_EQ(comn__cmp_dtinfo(&base, &changed), CS_FALSE) << "none " << i;
        EXPECT_EQ(comn__cmp_dtinfo(&changed, &base), CS_FALSE) << "none " << i;
    }
}

// ---- Equality of caches -------------------------------------------------------------------------------------------

TEST_F(LocaleCaches, AreEqualByNamesAndIdentifiers) {
    CsLocCache *const a = filled();
    CsLocCache *const b = filled();
    b->locnext = a;
    EXPECT_EQ(comn__cmp_loccache(a, b), CS_TRUE);
    CsCharDesc other_set = {};
    CsSortDesc other_order = {};
    CS_MESSAGE other_message = {};
    CS_DATEINFO other_date = {};
    CS_NUMINFO other_number = {};
    CS_MONINFO other_money = {};
    const std::pair<const char *, std::function<void(CsLocCache &)>> CHANGES[] = {
        {"locname", [](CsLocCache &c) { c.locnamelen = 5; }},
        {"charname", [](CsLocCache &c) { c.charnamelen = 2; }},
        {"sortname", [](CsLocCache &c) { c.sortnamelen = 4; }},
        {"langname", [](CsLocCache &c) { c.langnamelen = 7; }},
        {"datename", [](CsLocCache &c) { c.datenamelen = 4; }},
        {"numname", [](CsLocCache &c) { c.numnamelen = 6; }},
        {"monname", [](CsLocCache &c) { c.monnamelen = 4; }},
        {"no locname", [](CsLocCache &c) { c.locname = nullptr; }},
        {"no charname", [](CsLocCache &c) { c.charname = nullptr; }},
        {"no sortname", [](CsLocCache &c) { c.sortname = nullptr; }},
        {"no langname", [](CsLocCache &c) { c.langname = nullptr; }},
        {"no datename", [](CsLocCache &c) { c.datename = nullptr; }},
        {"no numname", [](CsLocCache &c) { c.numname = nullptr; }},
        {"no monname", [](CsLocCache &c) { c.monname = nullptr; }},
        {"set", [&](CsLocCache &c) { c.locchardesc = &other_set; }},
        {"order", [&](CsLocCache &c) { c.locsortorder = &other_order; }},
        {"message", [&](CsLocCache &c) { c.locmessage = &other_message; }},
        {"date", [&](CsLocCache &c) { c.locdateinfo = &other_date; }},
        {"number", [&](CsLocCache &c) { c.locnuminfo = &other_number; }},
        {"money", [&](CsLocCache &c) { c.locmoninfo = &other_money; }},
        {"no set", [](CsLocCache &c) { c.locchardesc = nullptr; }},
        {"no order", [](CsLocCache &c) { c.locsortorder = nullptr; }},
        {"no message", [](CsLocCache &c) { c.locmessage = nullptr; }},
        {"no date", [](CsLocCache &c) { c.locdateinfo = nullptr; }},
        {"no number", [](CsLocCache &c) { c.locnuminfo = nullptr; }},
        {"no money", [](CsLocCache &c) { c.locmoninfo = nullptr; }},
    };
    for (const auto &[name, change] : CHANGES) {
        CsLocCache changed = *b;
        change(changed);
        EXPECT_EQ(comn__cmp_loccache(a, &changed), CS_FALSE) << name;
        EXPECT_EQ(comn__cmp_loccache(&changed, a), CS_FALSE) << name;
        EXPECT_EQ(comn__cmp_loccache(&changed, &changed), CS_TRUE) << name;
    }
    comn__drop_loccache(context(), a);
    comn__drop_loccache(context(), b);
}

TEST_F(LocaleCaches, DescriptorsOfOneIdentifierAreEqual) {
    CsLocCache a = shared_, b = shared_;
    CsCharDesc set = set_;
    CsSortDesc order = order_;
    CS_MESSAGE message = message_;
    CS_DATEINFO date = date_;
    b.locchardesc = &set;
    b.locsortorder = &order;
    b.locmessage = &message;
    b.locdateinfo = &date;
    EXPECT_EQ(comn__cmp_loccache(&a, &b), CS_TRUE);
}

TEST_F(LocaleCaches, TwoWithNothingAreEqual) {
    CsLocCache a = {}, b = {};
    EXPECT_EQ(comn__cmp_loccache(&a, &b), CS_TRUE);
}

// ---- Taking an equal cache off the lists --------------------------------------------------------------------------

class EqualCache : public LocaleCaches {
protected:
    EqualCache() {
        for (int i = 0; i < 3; ++i) {
            caches_[i] = shared_;
            caches_[i].locdateinfo = &dates_[i];
            caches_[i].locnext = i < 2 ? &caches_[i + 1] : nullptr;
            dates_[i].convertfmt = i;
            dates_[i].next = i > 0 ? &dates_[i - 1] : nullptr; // in another order than the caches
        }
        application_.globals().cmg_lcache = &caches_[0];
        application_.globals().cmg_datetime = &dates_[2];
        wanted_ = shared_;
        wanted_.locdateinfo = &wanted_date_;
    }
    ~EqualCache() override { application_.globals().cmg_lcache = application_.globals().cmg_datetime = nullptr; }

    CS_RETCODE scan(CS_INT style) {
        wanted_date_.convertfmt = style;
        return comn__scan_lcache(context(), &wanted_, &found_);
    }

    CsLocCache caches_[3];
    CS_DATEINFO dates_[3] = {};
    CsLocCache wanted_;
    CS_DATEINFO wanted_date_ = {};
    CsLocCache *found_ = &wanted_;
};

TEST_F(EqualCache, IsUnlinkedWithItsDates) {
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        ASSERT_EQ(scan(i), CS_SUCCEED);
        EXPECT_EQ(found_, &caches_[i]);
        EXPECT_EQ(count_of(application_.caches(), &CsLocCache::locnext), 2 - i);
        EXPECT_EQ(count_of(application_.dates(), &CS_DATEINFO::next), 2 - i);
        ASSERT_EQ(scan(i), CS_SUCCEED);
        EXPECT_EQ(found_, nullptr) << "it is gone";
    }
}

TEST_F(EqualCache, FromTheMiddleAndTheEndOfTheChains) {
    ASSERT_EQ(scan(1), CS_SUCCEED);
    EXPECT_EQ(caches_[0].locnext, &caches_[2]);
    EXPECT_EQ(dates_[2].next, &dates_[0]);
    ASSERT_EQ(scan(2), CS_SUCCEED);
    EXPECT_EQ(caches_[0].locnext, nullptr);
    EXPECT_EQ(application_.dates(), &dates_[0]);
}

TEST_F(EqualCache, NoneIsNoFailure) {
    EXPECT_EQ(scan(9), CS_SUCCEED);
    EXPECT_EQ(found_, nullptr);
    EXPECT_EQ(count_of(application_.caches(), &CsLocCache::locnext), 3);
}

TEST_F(EqualCache, EmptyListAndNoCacheAreNoFailure) {
    EXPECT_EQ(comn__scan_lcache(context(), nullptr, &found_), CS_SUCCEED);
    EXPECT_EQ(found_, nullptr);
    found_ = &wanted_;
    application_.globals().cmg_lcache = nullptr;
    EXPECT_EQ(scan(0), CS_SUCCEED);
    EXPECT_EQ(found_, nullptr);
}

TEST_F(EqualCache, DatesThatAreOnNoListFailAndChangeNothing) {
    application_.globals().cmg_datetime = &dates_[0];
    EXPECT_EQ(scan(1), CS_FAIL);
    EXPECT_EQ(found_, nullptr);
    EXPECT_EQ(count_of(application_.caches(), &CsLocCache::locnext), 3);
    caches_[1].locdateinfo = wanted_.locdateinfo = nullptr;
    EXPECT_EQ(comn__scan_lcache(context(), &wanted_, &found_), CS_FAIL) << "nor are those that there are not";
    EXPECT_EQ(found_, nullptr);
}

// ---- Operands -----------------------------------------------------------------------------------------------------

using LocaleCachesDeathTest = LocaleCaches;

TEST_F(LocaleCachesDeathTest, NeedTheirOperands) {
    CS_CONTEXT bare = {};
    CsLocCache cache = shared_, other = shared_;
    CsLocCache *found = nullptr;
    CS_CHAR name[] = "x";
    NullCalls calls;
    calls.add(
        "create", [&] { return comn__create_loccache(context(), nullptr); }, CS_FAIL);
    calls.add(
        "drop", [&] { return comn__drop_loccache(context(), nullptr), 0L; }, 0);
    NULL_CALLS(calls, comn__copy_loccache, CS_FAIL, &cache, &other);
    NULL_CALLS(calls, comn__cmp_loccache, CS_FALSE, &cache, &other);
    NULL_CALLS(calls, comn__cmp_dtinfo, CS_FALSE, &date_, &date_);
    NULL_CALLS(calls, com_intl_loccache_drop, CS_FAIL, context());
    calls.add(
        "drop, globals", [&] { return com_intl_loccache_drop(&bare); }, CS_FAIL);
    calls.add(
        "scan, context", [&] { return comn__scan_lcache(nullptr, &cache, &found); }, CS_FAIL);
    calls.add(
        "scan, globals", [&] { return comn__scan_lcache(&bare, &cache, &found); }, CS_FAIL);
    calls.add(
        "scan, result", [&] { return comn__scan_lcache(context(), &cache, nullptr); }, CS_FAIL);
    calls.add(
        "name, context", [&] { return com__scan_lcache_name(nullptr, name, 1) != nullptr; }, 0);
    calls.add(
        "name, globals", [&] { return com__scan_lcache_name(&bare, name, 1) != nullptr; }, 0);
    calls.add(
        "name", [&] { return com__scan_lcache_name(context(), nullptr, 1) != nullptr; }, 0);
    calls.expect_reports("com_loccache");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(other.locchardesc, &set_); });
}

} // namespace
