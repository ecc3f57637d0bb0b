// The date data of languages: reading and sharing it, what locales tell of it, and styles of a locale's own.
#include "locale_fixture.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"

#include <algorithm>
#include <thread>

namespace {

using support::changed;
using support::FailingAllocator;
using support::NullCalls;
using support::ReturningAssertions;

// ---- Orders -------------------------------------------------------------------------------------------------------

TEST(DateOrder, TableOfOrders) {
    const struct {
        std::string order;
        CS_INT id;
        CS_INT style;
    } ROWS[] = {{"mdy", 1, 0}, {"dmy", 2, 3}, {"ymd", 3, 11}, {"ydm", 4, 13}, {"myd", 5, 14}, {"dym", 6, 15}};
    for (auto row : ROWS) {
        EXPECT_EQ(com__get_dateorder_id(chars(row.order)), row.id) << row.order;
        EXPECT_EQ(com__map_dateorder_id_to_fmt(row.id), row.style) << row.order;
    }
}

TEST(DateOrder, AnyOtherTextIsMdy) {
    for (std::string order : {"", "m", "md", "MDY", "dmyx", "yyy", "dm"})
        EXPECT_EQ(com__get_dateorder_id(chars(order)), 1) << order;
}

TEST(DateOrderDeathTest, AnyOtherIdIsAnAssertion) {
    for (const CS_INT id : {0, 7, -1}) {
        EXPECT_BOMB(com__map_dateorder_id_to_fmt(id), "comlocdt");
        const ReturningAssertions returning;
        EXPECT_EQ(com__map_dateorder_id_to_fmt(id), 0);
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_NULL_REPORT(com__get_dateorder_id(nullptr), "comlocdt");
    const ReturningAssertions returning;
    EXPECT_EQ(com__get_dateorder_id(nullptr), 1);
}

// ---- Weeks --------------------------------------------------------------------------------------------------------

TEST(FirstDay, OddityRecountIsAsTheFormulaGives) { EXPECT_EQ(com_intl_convt_firstday(2, 3, 1), 4); }

TEST(FirstDay, RecountsEveryDayOfEveryWeek) {
    // Day names of a week from Sunday on; both counts have to name the same one.
    for (CS_INT from = 1; from <= 7; ++from)
        for (CS_INT day = 0; day < 7; ++day)
            for (CS_INT to = 1; to <= 7; ++to) {
                const CS_INT recounted = com_intl_convt_firstday(from, day, to);
                ASSERT_TRUE(recounted >= 0 && recounted < 7);
                EXPECT_EQ((from + day) % 7, (to + recounted) % 7) << from << day << to;
            }
}

// ---- Reading ------------------------------------------------------------------------------------------------------

class DateData : public LocaleFixture {
protected:
    // The data that a language has with this file.
    CS_RETCODE read(const std::string &content, CS_DATEINFO *&info) {
        home_.write(support::common_loc_of("german"), content);
        comn_intl_dt_drop(context());
        CsLocCache cache = {};
        cache.locmessage = &message_;
        cache.langname = chars(language_);
        cache.langnamelen = length_of(language_);
        const CS_RETCODE status = comn__read_common(context(), &cache, file_, ROOM);
        info = cache.locdateinfo;
        return status;
    }
    CS_DATEINFO *read(const std::string &content) {
        CS_DATEINFO *info = nullptr;
        EXPECT_EQ(read(content, info), CS_SUCCEED);
        return info;
    }

    std::string language_ = "german";
    CsOID id_ = {};
    CS_MESSAGE message_ = {&id_, nullptr, nullptr, nullptr, 0, nullptr, nullptr};
};

TEST_F(DateData, HoldsTheNames) {
    const CS_DATEINFO *const info = read(support::german_common());
    EXPECT_EQ(names_of(info->months, info->mon_len),
              (Strings{"Januar", "Februar", "M\xC3\xA4rz", "April", "Mai", "Juni", "Juli", "August", "September",
                       "Oktober", "November", "Dezember"}));
    EXPECT_EQ(names_of(info->shortmonths, info->shrtmon_len),
              (Strings{"Jan", "Feb", "M\xC3\xA4r", "Apr", "Mai", "Jun", "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"}));
    EXPECT_EQ(names_of(info->days, info->day_len),
              (Strings{"Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag", "Sonntag"}));
    EXPECT_EQ(info->firstday, 2);
    EXPECT_EQ(info->is12hour, 0);
    EXPECT_STREQ(info->dateorder, "dmy");
    EXPECT_EQ(info->locdateorder_id, 2);
    EXPECT_EQ(info->convertfmt, 3);
    EXPECT_EQ(info->fmt_reset, CS_FALSE);
    EXPECT_EQ(info->id, &id_);
    EXPECT_EQ(application_.dates(), info);
    EXPECT_EQ(context()->ctxintlerr, 0);
    EXPECT_EQ(file_, home_.path_of(support::common_loc_of("german")));
}

TEST_F(DateData, WhatNoFileHasIsZero) {
    const CS_DATEINFO *const info = read(support::german_common());
    for (const CS_BYTE *text : {info->amindict, info->pmindict, info->datefmt, info->timefmt, info->longdtfmt,
                                info->shrtdtfmt, info->era, info->era_t_fmt, info->era_d_fmt, info->era_dt_fmt})
        EXPECT_EQ(text, nullptr);
    for (const CS_BYTE *day : info->shortdays)
        EXPECT_EQ(day, nullptr);
    EXPECT_EQ(info->secprec, 0);
}

TEST_F(DateData, DaysAreRotatedToTheFirstDayOfTheWeek) {
    for (int first = 1; first <= 7; ++first) {
        const CS_DATEINFO *const info =
            read(changed(support::us_english_common(), "firstday = 1", "firstday = " + std::to_string(first)));
        Strings days = WEEK_FROM_SUNDAY;
        std::rotate(days.begin(), days.begin() + first - 1, days.end());
        EXPECT_EQ(names_of(info->days, info->day_len), days) << first;
        EXPECT_EQ(info->firstday, first);
    }
}

TEST_F(DateData, EachOrderHasItsStyle) {
    for (std::string order : {"mdy", "dmy", "ymd", "ydm", "myd", "dym"}) {
        const CS_DATEINFO *const info = read(changed(support::us_english_common(), "mdy", order));
        EXPECT_EQ(info->dateorder, order);
        EXPECT_EQ(info->locdateorder_id, com__get_dateorder_id(chars(order)));
        EXPECT_EQ(info->convertfmt, com__map_dateorder_id_to_fmt(info->locdateorder_id));
    }
}

TEST_F(DateData, OrderThatThereIsNotCountsAsMdy) {
    const CS_DATEINFO *const info = read(changed(support::us_english_common(), "mdy", "yyy"));
    EXPECT_STREQ(info->dateorder, "yyy");
    EXPECT_EQ(info->locdateorder_id, 1);
    EXPECT_EQ(info->convertfmt, 0);
}

TEST_F(DateData, OneLanguageIsReadOnce) {
    CS_DATEINFO *const info = read(support::german_common());
    home_.remove("locales");
    CsLocCache cache = {};
    cache.locmessage = &message_;
    EXPECT_EQ(comn__read_common(context(), &cache, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(cache.locdateinfo, info);
    EXPECT_EQ(dates(), 1);
}

TEST_F(DateData, MissingFileTellsItsPath) {
    home_.remove(support::common_loc_of("german"));
    CsLocCache cache = {};
    cache.locmessage = &message_;
    cache.langname = chars(language_);
    cache.langnamelen = 6;
    EXPECT_EQ(comn__read_common(context(), &cache, file_, ROOM), CS_ENOLOCFILE);
    EXPECT_EQ(context()->ctxintlerr, INTL_ECANTOPEN);
    EXPECT_EQ(file_, home_.path_of(support::common_loc_of("german")));
    EXPECT_EQ(cache.locdateinfo, nullptr);
}

TEST_F(DateData, FileWithoutTheSectionFails) {
    CS_DATEINFO *info = nullptr;
    EXPECT_EQ(read("", info), CS_FAIL);
    EXPECT_EQ(read("[date]\n" + support::us_english_common().substr(11), info), CS_FAIL);
    EXPECT_EQ(info, nullptr);
    EXPECT_EQ(dates(), 0);
}

TEST_F(DateData, TroubleOfTheReaderIsTold) {
    CS_DATEINFO *info = nullptr;
    const struct {
        std::string content;
        int code;
    } CASES[] = {
        {"[other", INTL_EBADSECTION},
        {changed(support::us_english_common(), "firstday = 1", "firstday"), INTL_ENOEQUALS},
        {changed(support::us_english_common(), "Sunday", "\"Sunday"), INTL_EUNTERMINATED},
        {changed(support::us_english_common(), "firstday = 1", "firstday = 8"), INTL_EBADDATE},
        {changed(support::us_english_common(), ", Saturday", ""), INTL_EBADDATE},
    };
    for (const auto &bad : CASES) {
        context()->ctxintlerr = 0;
        EXPECT_EQ(read(bad.content, info), CS_EINTL);
        EXPECT_EQ(context()->ctxintlerr, bad.code);
        EXPECT_EQ(info, nullptr);
        EXPECT_EQ(dates(), 0);
    }
}

TEST_F(DateData, OutOfMemoryIsToldAndLinksNothing) {
    home_.write(support::common_loc_of("german"), support::german_common());
    int failing = 1;
    for (CS_RETCODE status = CS_FAIL; status != CS_SUCCEED; ++failing) {
        ASSERT_LT(failing, 100);
        const FailingAllocator allocator(failing);
        CsLocCache cache = {};
        cache.locmessage = &message_;
        cache.langname = chars(language_);
        cache.langnamelen = 6;
        status = comn__read_common(context(), &cache, nullptr, 0);
        if (status != CS_SUCCEED) {
            // The reader is the first to ask.
            EXPECT_EQ(status, failing == 1 ? CS_ENOLOCFILE : CS_MEM_ERROR) << failing;
            EXPECT_EQ(cache.locdateinfo, nullptr);
            EXPECT_EQ(application_.dates(), nullptr);
            EXPECT_EQ(allocator.held(), 0) << failing;
        }
    }
    EXPECT_EQ(failing, 1 + 3 + 12 + 12 + 7 + 1) << "the reader, two records, and names";
}

TEST_F(DateData, OtherFormatFilesAreNotRead) {
    CS_DATEINFO *date = nullptr;
    CS_MONINFO *money = nullptr;
    CS_NUMINFO *number = nullptr;
    EXPECT_EQ(comn__read_dtfile(context(), nullptr, &id_, &date), CS_SUCCEED);
    EXPECT_EQ(comn__read_monfile(context(), nullptr, &id_, &money), CS_SUCCEED);
    EXPECT_EQ(comn__read_numfile(context(), nullptr, &id_, &number), CS_SUCCEED);
    EXPECT_EQ(date, nullptr);
    EXPECT_EQ(money, nullptr);
    EXPECT_EQ(number, nullptr);
}

TEST_F(DateData, ScansFindDatesOnly) {
    CS_DATEINFO *const info = read(support::german_common());
    CsOID alike = id_;
    CS_MONINFO money = {};
    CS_NUMINFO number = {};
    money.id = number.id = &id_;
    globals().cmg_money = &money;
    globals().cmg_numeric = &number;
    EXPECT_EQ(comn__scan_cache_dt(context(), &id_), info);
    EXPECT_EQ(comn__scan_cache_dt(context(), &alike), nullptr) << "by pointer";
    EXPECT_EQ(comn__scan_cache_mon(context(), &id_), nullptr);
    EXPECT_EQ(comn__scan_cache_num(context(), &id_), nullptr);
    EXPECT_EQ(comn_intl_mon_drop(context()), CS_SUCCEED); // which frees none of them
    EXPECT_EQ(comn_intl_num_drop(context()), CS_SUCCEED);
    EXPECT_EQ(globals().cmg_money, nullptr);
    EXPECT_EQ(globals().cmg_numeric, nullptr);
}

TEST_F(DateData, DropFreesAllAndClearsTheHead) {
    {
        const FailingAllocator allocator;
        CsLocCache cache = {};
        cache.locmessage = &message_;
        cache.langname = chars(language_);
        cache.langnamelen = 6;
        ASSERT_EQ(comn__read_common(context(), &cache, nullptr, 0), CS_SUCCEED);
        EXPECT_EQ(allocator.held(), 1 + 12 + 12 + 7);
        EXPECT_EQ(comn_intl_dt_drop(context()), CS_SUCCEED);
        EXPECT_EQ(allocator.held(), 0);
    }
    EXPECT_EQ(globals().cmg_datetime, nullptr);
    EXPECT_EQ(comn_intl_dt_drop(context()), CS_SUCCEED) << "none are left";
}

TEST_F(DateData, FreeTakesNullAndTextsThatNoFileHas) {
    comn__free_dtinfo(nullptr);
    comn__free_moninfo(nullptr);
    comn__free_numinfo(nullptr);
    const FailingAllocator allocator;
    auto *const info = static_cast<CS_DATEINFO *>(comn_calloc(1, sizeof(CS_DATEINFO)));
    CS_BYTE **const TEXTS[] = {&info->amindict,  &info->pmindict,   &info->datefmt,      &info->timefmt,
                               &info->longdtfmt, &info->shrtdtfmt,  &info->era,          &info->era_t_fmt,
                               &info->era_d_fmt, &info->era_dt_fmt, &info->shortdays[0], &info->shortdays[6]};
    for (CS_BYTE **text : TEXTS)
        *text = static_cast<CS_BYTE *>(comn_malloc(1));
    comn__free_dtinfo(info);
    EXPECT_EQ(allocator.held(), 0);
}

TEST_F(DateData, CopyHasTextsOfItsOwnAndIsOnNoList) {
    CS_DATEINFO *const from = read(support::german_common());
    CS_BYTE mark[] = "vorm.";
    from->amindict = mark;
    from->amindict_len = 5;
    CS_DATEINFO *const to = static_cast<CS_DATEINFO *>(comn_malloc(sizeof(CS_DATEINFO)));
    std::memset(static_cast<void *>(to), '~', sizeof *to);
    from->next = from;
    ASSERT_EQ(comn__copy_dtinfo(from, to), CS_SUCCEED);
    from->next = nullptr;
    EXPECT_EQ(to->next, nullptr);
    EXPECT_EQ(to->id, from->id);
    to->id = nullptr;
    const CsOID *const id = from->id;
    from->id = nullptr;
    EXPECT_EQ(comn__cmp_dtinfo(from, to), CS_TRUE);
    from->id = const_cast<CsOID *>(id);
    EXPECT_NE(to->amindict, from->amindict);
    EXPECT_STREQ(reinterpret_cast<char *>(to->amindict), "vorm.");
    EXPECT_NE(to->months[0], from->months[0]);
    EXPECT_EQ(names_of(to->days, to->day_len), names_of(from->days, from->day_len));
    EXPECT_EQ(to->fmt_reset, from->fmt_reset);
    from->amindict = nullptr;
    comn__free_dtinfo(to);
}

using DateDataDeathTest = DateData;

TEST_F(DateDataDeathTest, NeedsItsOperands) {
    CS_CONTEXT bare = {};
    CsLocCache cache = {}, no_messages = {};
    cache.locmessage = &message_;
    CS_DATEINFO info = {};
    NullCalls calls;
    const auto call = [](CS_CONTEXT *context, CsLocCache *lcache) -> long {
        return comn__read_common(context, lcache, nullptr, 0);
    };
    calls.add_each("comn__read_common", call, CS_FAIL, context(), &cache);
    calls.add(
        "globals", [&] { return call(&bare, &cache); }, CS_FAIL);
    calls.add(
        "messages", [&] { return call(context(), &no_messages); }, CS_FAIL);
    NULL_CALLS(calls, comn__copy_dtinfo, CS_FAIL, &info, &info);
    NULL_CALLS(calls, comn_intl_dt_drop, CS_FAIL, context());
    NULL_CALLS(calls, comn_intl_mon_drop, CS_FAIL, context());
    NULL_CALLS(calls, comn_intl_num_drop, CS_FAIL, context());
    calls.add(
        "dates, globals", [&] { return comn_intl_dt_drop(&bare); }, CS_FAIL);
    calls.add(
        "money, globals", [&] { return comn_intl_mon_drop(&bare); }, CS_FAIL);
    calls.add(
        "numbers, globals", [&] { return comn_intl_num_drop(&bare); }, CS_FAIL);
    calls.add(
        "scan", [&] { return comn__scan_cache_dt(nullptr, &id_) != nullptr; }, 0);
    calls.add(
        "scan, globals", [&] { return comn__scan_cache_dt(&bare, &id_) != nullptr; }, 0);
    calls.expect_reports("comlocdt");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(cache.locdateinfo, nullptr); });
}

// ---- What locales tell --------------------------------------------------------------------------------------------

class DateGetters : public LocaleFixture {
protected:
    DateGetters() { context()->ctxlocale = &english_; }
    CS_DATAFMT format_of(CS_LOCALE *locale) {
        CS_DATAFMT format = {};
        format.locale = locale;
        return format;
    }

    CS_LOCALE german_ = locale_of(loaded("de"));
    CS_LOCALE english_ = locale_of(loaded("default"));
};

TEST_F(DateGetters, AnswerFromTheDescriptorsLocale) {
    german_.collateptr = german_.ctypeptr = german_.messageptr = nullptr; // only the category of time counts
    CS_DATAFMT format = format_of(&german_);
    CS_DATEINFO *const info = static_cast<CsLocCache *>(german_.timeptr)->locdateinfo;
    for (CS_CONTEXT *with : {context(), static_cast<CS_CONTEXT *>(nullptr)}) {
        EXPECT_EQ(static_cast<void *>(com_intl_months(with, &format)), info->months);
        EXPECT_EQ(static_cast<void *>(com_intl_shortmonths(with, &format)), info->shortmonths);
        EXPECT_EQ(static_cast<void *>(com_intl_days(with, &format)), info->days);
        EXPECT_EQ(com_intl_firstday(with, &format), 2);
        EXPECT_EQ(com_intl_dateorder(with, &format), info->dateorder);
        EXPECT_EQ(com_intl_dateorder_id(with, &format), 2);
        EXPECT_EQ(com_intl_is12hour(with, &format), 0);
        EXPECT_EQ(comn_dtloc_format(with, &german_), 2);
        EXPECT_EQ(comn_dtloc_format_fmt(with, &german_), 3);
        EXPECT_EQ(comn_dtloc_is12hour(with, &german_), 0);
    }
}

TEST_F(DateGetters, ElseFromTheContexts) {
    context()->ctxlocale = &german_;
    CS_DATAFMT without = format_of(nullptr);
    CS_DATEINFO *const info = static_cast<CsLocCache *>(german_.timeptr)->locdateinfo;
    for (CS_DATAFMT *format : {&without, static_cast<CS_DATAFMT *>(nullptr)}) {
        EXPECT_EQ(static_cast<void *>(com_intl_months(context(), format)), info->months);
        EXPECT_EQ(static_cast<void *>(com_intl_shortmonths(context(), format)), info->shortmonths);
        EXPECT_EQ(static_cast<void *>(com_intl_days(context(), format)), info->days);
        EXPECT_EQ(com_intl_firstday(context(), format), 2);
        EXPECT_EQ(com_intl_dateorder(context(), format), info->dateorder);
        EXPECT_EQ(com_intl_dateorder_id(context(), format), 2);
        EXPECT_EQ(com_intl_is12hour(context(), format), 0);
    }
    EXPECT_EQ(comn_dtloc_format(context(), nullptr), 2);
    EXPECT_EQ(comn_dtloc_format_fmt(context(), nullptr), 3);
    EXPECT_EQ(comn_dtloc_is12hour(context(), nullptr), 0);
    EXPECT_EQ(comn_intl_is12hour(context(), nullptr), 0);
    EXPECT_EQ(comn_intl_get_dtfmt(context(), nullptr), 3);
}

TEST_F(DateGetters, WithoutAContextFromTheBuiltInData) {
    CS_DATAFMT without = format_of(nullptr);
    for (CS_DATAFMT *format : {&without, static_cast<CS_DATAFMT *>(nullptr)}) {
        EXPECT_EQ(com_intl_months(nullptr, format), com__get_months());
        EXPECT_EQ(com_intl_shortmonths(nullptr, format), com__get_shortmonths());
        EXPECT_EQ(com_intl_days(nullptr, format), com__get_days());
        EXPECT_EQ(com_intl_firstday(nullptr, format), 1);
        EXPECT_EQ(com_intl_dateorder(nullptr, format), com__get_date_order());
        EXPECT_EQ(com_intl_dateorder_id(nullptr, format), 1);
        EXPECT_EQ(com_intl_is12hour(nullptr, format), 1);
    }
    EXPECT_EQ(comn_dtloc_format(nullptr, nullptr), 1);
    EXPECT_EQ(comn_dtloc_is12hour(nullptr, nullptr), 1);
}

TEST_F(DateGetters, OddityStyleWithoutAContextIsTheNumberOfTheOrder) {
    EXPECT_EQ(comn_dtloc_format_fmt(nullptr, nullptr), com__get_date_order_id());
    EXPECT_EQ(comn_dtloc_format_fmt(context(), nullptr), 0) << "English of a context";
}

TEST_F(DateGetters, StyleIsOfTheLocaleOrTheContexts) {
    EXPECT_EQ(comn_intl_get_dtfmt(context(), &german_), 3);
    EXPECT_EQ(comn_intl_get_dtfmt(context(), nullptr), 0);
    EXPECT_EQ(comn_intl_is12hour(context(), &german_), 0);
    EXPECT_EQ(comn_intl_is12hour(context(), nullptr), 1);
}

TEST_F(DateGetters, OnlyStylesThatPrintADateComeBack) {
    CS_DATEINFO *const info = static_cast<CsLocCache *>(german_.timeptr)->locdateinfo;
    CS_DATAFMT format = format_of(&german_);
    CS_INT known = 0;
    for (CS_INT style = -300; style <= 300; ++style) {
        info->convertfmt = style;
        const CS_INT got = comn_get_datetochar_fmt(context(), &format);
        EXPECT_TRUE(got == style || got == 0) << style;
        known += got == style && style != 0;
    }
    EXPECT_EQ(known, 23 + 5 + 19 + 2 + 5);
    for (const CS_INT edge : {1, 23, 36, 40, 100, 118, 121, 122, 136, 140}) {
        info->convertfmt = edge;
        EXPECT_EQ(comn_get_datetochar_fmt(context(), &format), edge);
    }
    for (const CS_INT beyond : {0, 24, 35, 41, 99, 119, 120, 123, 135, 141}) {
        info->convertfmt = beyond;
        EXPECT_EQ(comn_get_datetochar_fmt(context(), &format), 0) << beyond;
    }
}

using DateGettersDeathTest = DateGetters;

TEST_F(DateGettersDeathTest, NeedDateData) {
    CsLocCache empty = {};
    CS_LOCALE no_cache = {}, no_dates = locale_of(&empty);
    CS_CONTEXT bare = {};
    CS_DATAFMT format = format_of(&no_cache), dateless = format_of(&no_dates);
    NullCalls calls;
    calls.add(
        "cache", [&] { return com_intl_firstday(context(), &format); }, 1);
    calls.add(
        "dates", [&] { return com_intl_firstday(context(), &dateless); }, 1);
    calls.add(
        "context's locale", [&] { return com_intl_firstday(&bare, nullptr); }, 1);
    calls.add(
        "months", [&] { return com_intl_months(context(), &format) == com__get_months(); }, 1);
    calls.add(
        "is12hour", [&] { return comn_intl_is12hour(nullptr, &german_); }, 0);
    calls.add(
        "get_dtfmt", [&] { return comn_intl_get_dtfmt(nullptr, &german_); }, 0);
    calls.add(
        "datetochar", [&] { return comn_get_datetochar_fmt(context(), nullptr); }, 0);
    calls.expect_reports("comlocdt");
    calls.expect_answers([] {}, [] {});
}

// ---- Styles of a locale -------------------------------------------------------------------------------------------

class DateStyle : public DateGetters {
protected:
    CS_RETCODE set(CS_LOCALE *locale, CS_INT style) { return comn_intl_set_dtfmt(context(), locale, &style); }
    CsLocCache *cache_of(const CS_LOCALE &locale) { return static_cast<CsLocCache *>(locale.timeptr); }
};

TEST_F(DateStyle, IsOfACacheOfItsOwnThatAllCategoriesShare) {
    CsLocCache *const before = cache_of(german_);
    german_.collateptr = english_.collateptr;
    ASSERT_EQ(set(&german_, 104), CS_SUCCEED);
    CsLocCache *const cache = cache_of(german_);
    EXPECT_NE(cache, before);
    EXPECT_EQ(german_.collateptr, cache);
    EXPECT_EQ(german_.ctypeptr, cache);
    EXPECT_EQ(german_.messageptr, cache);
    EXPECT_EQ(german_.monetaryptr, cache);
    EXPECT_EQ(german_.numericptr, cache);
    EXPECT_EQ(cache->locname, nullptr);
    EXPECT_EQ(cache->locnamelen, 0);
    EXPECT_EQ(text_of(cache->langname, cache->langnamelen), "german");
    EXPECT_EQ(cache->locdateinfo->id, nullptr);
    EXPECT_EQ(cache->locdateinfo->convertfmt, 104);
    EXPECT_EQ(cache->locdateinfo->fmt_reset, CS_TRUE);
    EXPECT_EQ(cache->locdateinfo->locdateorder_id, 2);
    EXPECT_EQ(names_of(cache->locdateinfo->months, cache->locdateinfo->mon_len)[2], "M\xC3\xA4rz");
    EXPECT_EQ(application_.caches(), cache);
    EXPECT_EQ(application_.dates(), cache->locdateinfo);
    EXPECT_EQ(before->locdateinfo->convertfmt, 3) << "what others share stays";
    EXPECT_EQ(comn_intl_get_dtfmt(context(), &german_), 104);
    EXPECT_EQ(comn_intl_get_dtfmt(context(), nullptr), 0);
}

TEST_F(DateStyle, WithoutALocaleIsTheContexts) {
    ASSERT_EQ(set(nullptr, 7), CS_SUCCEED);
    EXPECT_EQ(cache_of(english_)->locdateinfo->convertfmt, 7);
    EXPECT_EQ(comn_intl_get_dtfmt(context(), nullptr), 7);
}

TEST_F(DateStyle, SameStyleTwiceLeavesOneCache) {
    ASSERT_EQ(set(&german_, 7), CS_SUCCEED);
    CsLocCache *const cache = cache_of(german_);
    ASSERT_EQ(set(&german_, 7), CS_SUCCEED);
    EXPECT_EQ(cache_of(german_), cache);
    EXPECT_EQ(caches(), 3);
    EXPECT_EQ(dates(), 3);
}

TEST_F(DateStyle, SameStyleOfAnotherLocaleSharesTheCache) {
    CS_LOCALE other = locale_of(loaded("de"));
    ASSERT_EQ(set(&german_, 7), CS_SUCCEED);
    ASSERT_EQ(set(&other, 7), CS_SUCCEED);
    EXPECT_EQ(cache_of(other), cache_of(german_));
    ASSERT_EQ(set(nullptr, 7), CS_SUCCEED);
    EXPECT_NE(cache_of(english_), cache_of(german_)) << "but not of another language";
    EXPECT_EQ(caches(), 4);
}

TEST_F(DateStyle, SecondStyleMakesASecondCache) {
    ASSERT_EQ(set(&german_, 7), CS_SUCCEED);
    CsLocCache *const first = cache_of(german_);
    ASSERT_EQ(set(&german_, 8), CS_SUCCEED);
    EXPECT_NE(cache_of(german_), first);
    EXPECT_EQ(caches(), 4);
    ASSERT_EQ(set(&german_, 7), CS_SUCCEED);
    EXPECT_EQ(cache_of(german_), first) << "and the first one is found again";
    EXPECT_EQ(application_.caches(), first);
    EXPECT_EQ(application_.dates(), first->locdateinfo);
    EXPECT_EQ(caches(), 4);
    EXPECT_EQ(dates(), 4);
}

TEST_F(DateStyle, BufferNeedsNoAlignment) {
    CS_BYTE buffer[1 + sizeof(CS_INT)];
    const CS_INT style = 7;
    std::memcpy(buffer + 1, &style, sizeof style);
    ASSERT_EQ(comn_intl_set_dtfmt(context(), &german_, buffer + 1), CS_SUCCEED);
    EXPECT_EQ(comn_intl_get_dtfmt(context(), &german_), 7);
}

TEST_F(DateStyle, LockTroubleFails) {
    CsLocCache *const before = cache_of(german_);
    application_.callbacks().take_mutex_fn = fail_to_lock;
    EXPECT_EQ(set(&german_, 7), CS_FAIL);
    EXPECT_EQ(cache_of(german_), before);
    EXPECT_EQ(caches(), 2);
}

TEST_F(DateStyle, EqualCacheWithoutListedDatesFails) {
    ASSERT_EQ(set(&german_, 7), CS_SUCCEED);
    CsLocCache *const cache = cache_of(german_);
    CS_VOID *const head = globals().cmg_datetime;
    globals().cmg_datetime = nullptr;
    {
        const FailingAllocator allocator;
        EXPECT_EQ(set(&german_, 7), CS_FAIL);
        EXPECT_EQ(allocator.held(), 0);
    }
    EXPECT_EQ(cache_of(german_), cache);
    EXPECT_EQ(caches(), 3);
    globals().cmg_datetime = head;
}

TEST_F(DateStyle, OutOfMemoryIsToldAndLinksNothing) {
    const CS_LOCALE before = german_;
    int failing = 1;
    for (CS_RETCODE status = CS_FAIL; status != CS_SUCCEED; ++failing) {
        ASSERT_LT(failing, 100);
        const FailingAllocator allocator(failing);
        status = set(&german_, 7);
        if (status != CS_SUCCEED) {
            EXPECT_EQ(status, CS_MEM_ERROR) << failing;
            EXPECT_EQ(std::memcmp(&german_, &before, sizeof before), 0);
            EXPECT_EQ(allocator.held(), 0) << failing;
            EXPECT_EQ(caches(), 2);
            EXPECT_EQ(dates(), 2);
        }
    }
    EXPECT_EQ(failing, 1 + 1 + 4 + 1 + 12 + 12 + 7 + 1) << "a cache and its names, a record and its names";
}

TEST_F(DateStyle, ManyThreadsSetStyles) {
    constexpr int THREADS = 8;
    std::vector<CS_LOCALE> locales(THREADS, locale_of(loaded("de")));
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([&, t] {
            CS_CONTEXT own = *context();
            for (CS_INT style = 1; style <= 5; ++style) {
                CS_INT value = style;
                comn_intl_set_dtfmt(&own, &locales[static_cast<size_t>(t)], &value);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const CS_LOCALE &locale : locales)
        EXPECT_EQ(locale.timeptr, locales[0].timeptr);
    EXPECT_EQ(caches(), 2 + 5) << "one for each style";
    EXPECT_EQ(dates(), 2 + 5);
}

using DateStyleDeathTest = DateStyle;

TEST_F(DateStyleDeathTest, NeedsItsOperands) {
    CS_INT style = 7;
    CsLocCache empty = {};
    CS_LOCALE no_cache = {}, no_dates = locale_of(&empty);
    CS_CONTEXT bare = {}, localeless = *context();
    localeless.ctxlocale = nullptr;
    NullCalls calls;
    calls.add(
        "context", [&] { return comn_intl_set_dtfmt(nullptr, &german_, &style); }, CS_FAIL);
    calls.add(
        "globals", [&] { return comn_intl_set_dtfmt(&bare, &german_, &style); }, CS_FAIL);
    calls.add(
        "buffer", [&] { return comn_intl_set_dtfmt(context(), &german_, nullptr); }, CS_FAIL);
    calls.add(
        "locale", [&] { return comn_intl_set_dtfmt(&localeless, nullptr, &style); }, CS_FAIL);
    calls.add(
        "cache", [&] { return comn_intl_set_dtfmt(context(), &no_cache, &style); }, CS_FAIL);
    calls.add(
        "dates", [&] { return comn_intl_set_dtfmt(context(), &no_dates, &style); }, CS_FAIL);
    calls.expect_reports("comlocdt");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(caches(), 2); });
}

} // namespace
