// The date data of languages.

#include "charset/locvalue.h"
#include "diag/check.h"
#include "locale/locale_lock.h"

#include <dlxcomn/datetext.h>
#include <dlxcomn/locale.h>

#include <cstdlib>
#include <cstring>

namespace dlx {
namespace {

constexpr CS_CHAR FILE_NAME[] = "common.loc";
constexpr std::string_view SECTION = "datetime";
constexpr int MONTHS = 12;
constexpr int WEEK = 7;

// ---- Orders ----

struct Order {
    std::string_view name;
    CS_INT id;
    CS_INT style;
};

constexpr Order ORDERS[] = {{"mdy", DATEORDER_MDY, 0},  {"dmy", DATEORDER_DMY, 3},  {"ymd", DATEORDER_YMD, 11},
                            {"ydm", DATEORDER_YDM, 13}, {"myd", DATEORDER_MYD, 14}, {"dym", DATEORDER_DYM, 15}};

// Styles in which a date prints: 1 to 23, 36 to 40, 100 to 118, 121, 122 and 136 to 140.
bool is_print_style(CS_INT style) {
    return (style >= 1 && style <= 23) || (style >= 36 && style <= 40) || (style >= 100 && style <= 118) ||
           style == 121 || style == 122 || (style >= 136 && style <= 140);
}

// ---- Texts of a record ----

bool copy_text(CS_BYTE *&to, CS_INT &to_len, const CS_BYTE *from, CS_INT len) {
    if (from == nullptr)
        return true;
    to = static_cast<CS_BYTE *>(std::malloc(static_cast<std::size_t>(len) + 1));
    if (to == nullptr)
        return false;
    std::memcpy(to, from, static_cast<std::size_t>(len));
    to[len] = '\0';
    to_len = len;
    return true;
}

bool copy_text(CS_BYTE *&to, CS_INT &to_len, const char *from) {
    return copy_text(to, to_len, reinterpret_cast<const CS_BYTE *>(from), static_cast<CS_INT>(std::strlen(from)));
}

template <int Count>
bool copy_texts(CS_BYTE *(&to)[Count], CS_INT (&to_lens)[Count], CS_BYTE *const (&from)[Count],
                const CS_INT (&lens)[Count]) {
    for (int i = 0; i < Count; ++i)
        if (!copy_text(to[i], to_lens[i], from[i], lens[i]))
            return false;
    return true;
}

template <int Count>
void free_texts(CS_BYTE *const (&texts)[Count]) {
    for (CS_BYTE *text : texts)
        std::free(text);
}

// ---- Reading ----

CS_DATEINFO *new_record() { return static_cast<CS_DATEINFO *>(std::calloc(1, sizeof(CS_DATEINFO))); }

// The days come from the file from Sunday on, and go into the record from the first day of the week on.
bool take_over(const intl_dateinfo &file, CS_DATEINFO &info) {
    for (int i = 0; i < MONTHS; ++i)
        if (!copy_text(info.months[i], info.mon_len[i], file.months[i]) ||
            !copy_text(info.shortmonths[i], info.shrtmon_len[i], file.shortmonths[i]))
            return false;
    for (int i = 0; i < WEEK; ++i)
        if (!copy_text(info.days[i], info.day_len[i], file.days[(file.firstday - 1 + i) % WEEK]))
            return false;
    intl_strlcpy(info.dateorder, file.dateorder, sizeof info.dateorder);
    info.firstday = file.firstday;
    info.is12hour = file.is12hour;
    info.locdateorder_id = com__get_dateorder_id(info.dateorder);
    info.convertfmt = com__map_dateorder_id_to_fmt(info.locdateorder_id);
    info.fmt_reset = CS_FALSE;
    return true;
}

CS_RETCODE read_section(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_DATEINFO *&info) {
    CS_RETCODE status = find_section(context, ifile, SECTION);
    if (status != CS_SUCCEED)
        return status;
    auto *const file = static_cast<intl_dateinfo *>(std::calloc(1, sizeof(intl_dateinfo)));
    if (file == nullptr)
        return CS_MEM_ERROR;
    const int read = intl_datetime(ifile, file);
    if (read < 0) {
        status = ended(context, read);
    } else {
        info = new_record();
        if (info == nullptr || !take_over(*file, *info))
            status = CS_MEM_ERROR;
    }
    std::free(file);
    return status;
}

// ---- Lookup ----

const CS_DATEINFO *date_of(const CS_LOCALE *locale) {
    COM_REQUIRE_PTR(locale, nullptr);
    const auto *const cache = static_cast<const CsLocCache *>(locale->timeptr);
    COM_REQUIRE_PTR(cache, nullptr);
    COM_REQUIRE_PTR(cache->locdateinfo, nullptr);
    return cache->locdateinfo;
}

// The data of a locale, else of the context's; null where the built-in data holds.
const CS_DATEINFO *date_of(const CS_CONTEXT *context, const CS_LOCALE *locale) {
    if (locale != nullptr)
        return date_of(locale);
    return context != nullptr ? date_of(context->ctxlocale) : nullptr;
}

const CS_DATEINFO *date_of(const CS_CONTEXT *context, const CS_DATAFMT *dfmt) {
    return date_of(context, dfmt != nullptr ? dfmt->locale : nullptr);
}

CS_CHAR **names(CS_BYTE *const *table) { return reinterpret_cast<CS_CHAR **>(const_cast<CS_BYTE **>(table)); }

} // namespace
} // namespace dlx

using namespace dlx;

// ---- Orders ----

CS_INT com__get_dateorder_id(CS_CHAR *dateorder) {
    COM_REQUIRE_PTR(dateorder, DATEORDER_MDY);
    for (const Order &order : ORDERS)
        if (order.name == dateorder)
            return order.id;
    return DATEORDER_MDY;
}

CS_INT com__map_dateorder_id_to_fmt(CS_INT dateorder_id) {
    COM_REQUIRE(dateorder_id >= DATEORDER_MDY && dateorder_id <= DATEORDER_DYM, 0);
    return ORDERS[dateorder_id - DATEORDER_MDY].style;
}

CS_INT com_intl_convt_firstday(CS_INT orig_firstday, CS_INT orig_day, CS_INT dest_firstday) {
    return ((orig_firstday - 1 + orig_day) % WEEK + 8 - dest_firstday) % WEEK;
}

// ---- Getters ----

CS_CHAR **com_intl_months(CsContext *context, CS_DATAFMT *dfmt) {
    const CS_DATEINFO *const info = date_of(context, dfmt);
    return info != nullptr ? names(info->months) : com__get_months();
}

CS_CHAR **com_intl_shortmonths(CsContext *context, CS_DATAFMT *dfmt) {
    const CS_DATEINFO *const info = date_of(context, dfmt);
    return info != nullptr ? names(info->shortmonths) : com__get_shortmonths();
}

CS_CHAR **com_intl_days(CsContext *context, CS_DATAFMT *dfmt) {
    const CS_DATEINFO *const info = date_of(context, dfmt);
    return info != nullptr ? names(info->days) : com__get_days();
}

CS_INT com_intl_firstday(CsContext *context, CS_DATAFMT *dfmt) {
    const CS_DATEINFO *const info = date_of(context, dfmt);
    return info != nullptr ? info->firstday : com__get_firstday();
}

CS_CHAR *com_intl_dateorder(CsContext *context, CS_DATAFMT *dfmt) {
    const CS_DATEINFO *const info = date_of(context, dfmt);
    return info != nullptr ? const_cast<CS_CHAR *>(info->dateorder) : com__get_date_order();
}

CS_INT com_intl_dateorder_id(CsContext *context, CS_DATAFMT *dfmt) {
    const CS_DATEINFO *const info = date_of(context, dfmt);
    return info != nullptr ? info->locdateorder_id : com__get_date_order_id();
}

CS_INT com_intl_is12hour(CsContext *context, CS_DATAFMT *dfmt) {
    return comn_dtloc_is12hour(context, dfmt != nullptr ? dfmt->locale : nullptr);
}

CS_INT comn_dtloc_format(CS_CONTEXT *context, CS_LOCALE *locale) {
    const CS_DATEINFO *const info = date_of(context, locale);
    return info != nullptr ? info->locdateorder_id : com__get_date_order_id();
}

CS_INT comn_dtloc_format_fmt(CS_CONTEXT *context, CS_LOCALE *locale) {
    const CS_DATEINFO *const info = date_of(context, locale);
    // Without a context the answer is the number of the order, not a style: callers know it as 1.
    return info != nullptr ? info->convertfmt : com__get_date_order_id();
}

CS_INT comn_dtloc_is12hour(CS_CONTEXT *context, CS_LOCALE *locale) {
    constexpr CS_INT ENGLISH = 1;
    const CS_DATEINFO *const info = date_of(context, locale);
    return info != nullptr ? info->is12hour : ENGLISH;
}

CS_INT comn_intl_is12hour(CsContext *context, CS_LOCALE *locale) {
    COM_REQUIRE_PTR(context, 0);
    return comn_dtloc_is12hour(context, locale);
}

CS_INT comn_intl_get_dtfmt(CS_CONTEXT *context, CS_LOCALE *locale) {
    COM_REQUIRE_PTR(context, 0);
    const CS_DATEINFO *const info = date_of(context, locale);
    return info != nullptr ? info->convertfmt : 0;
}

CS_INT comn_get_datetochar_fmt(CS_CONTEXT *context, CS_DATAFMT *fmt) {
    COM_REQUIRE_PTR(fmt, 0);
    const CS_INT style = comn_intl_get_dtfmt(context, fmt->locale);
    return is_print_style(style) ? style : 0;
}

// ---- Records ----

CS_RETCODE comn__copy_dtinfo(CS_DATEINFO *src_dtinfo, CS_DATEINFO *dest_dtinfo) {
    COM_REQUIRE_PTR(src_dtinfo, CS_FAIL);
    COM_REQUIRE_PTR(dest_dtinfo, CS_FAIL);
    const CS_DATEINFO &from = *src_dtinfo;
    CS_DATEINFO &to = *dest_dtinfo;
    to = {};
    to.id = from.id;
    to.is12hour = from.is12hour;
    to.firstday = from.firstday;
    to.secprec = from.secprec;
    std::memcpy(to.dateorder, from.dateorder, sizeof to.dateorder);
    to.convertfmt = from.convertfmt;
    to.fmt_reset = from.fmt_reset;
    to.locdateorder_id = from.locdateorder_id;
    const bool is_whole = copy_text(to.amindict, to.amindict_len, from.amindict, from.amindict_len) &&
                          copy_text(to.pmindict, to.pmindict_len, from.pmindict, from.pmindict_len) &&
                          copy_texts(to.months, to.mon_len, from.months, from.mon_len) &&
                          copy_texts(to.shortmonths, to.shrtmon_len, from.shortmonths, from.shrtmon_len) &&
                          copy_texts(to.days, to.day_len, from.days, from.day_len) &&
                          copy_texts(to.shortdays, to.shrtday_len, from.shortdays, from.shrtday_len) &&
                          copy_text(to.datefmt, to.datefmt_len, from.datefmt, from.datefmt_len) &&
                          copy_text(to.timefmt, to.timefmt_len, from.timefmt, from.timefmt_len) &&
                          copy_text(to.longdtfmt, to.longdtfmt_len, from.longdtfmt, from.longdtfmt_len) &&
                          copy_text(to.shrtdtfmt, to.shrtdtfmt_len, from.shrtdtfmt, from.shrtdtfmt_len) &&
                          copy_text(to.era, to.era_len, from.era, from.era_len) &&
                          copy_text(to.era_t_fmt, to.eratfmt_len, from.era_t_fmt, from.eratfmt_len) &&
                          copy_text(to.era_d_fmt, to.eradfmt_len, from.era_d_fmt, from.eradfmt_len) &&
                          copy_text(to.era_dt_fmt, to.eradtfmt_len, from.era_dt_fmt, from.eradtfmt_len);
    return is_whole ? CS_SUCCEED : COM_TRACE(CS_MEM_ERROR);
}

void comn__free_dtinfo(CS_DATEINFO *dtinfo) {
    if (dtinfo == nullptr)
        return;
    std::free(dtinfo->amindict);
    std::free(dtinfo->pmindict);
    free_texts(dtinfo->months);
    free_texts(dtinfo->shortmonths);
    free_texts(dtinfo->days);
    free_texts(dtinfo->shortdays);
    std::free(dtinfo->datefmt);
    std::free(dtinfo->timefmt);
    std::free(dtinfo->longdtfmt);
    std::free(dtinfo->shrtdtfmt);
    std::free(dtinfo->era);
    std::free(dtinfo->era_t_fmt);
    std::free(dtinfo->era_d_fmt);
    std::free(dtinfo->era_dt_fmt);
    std::free(dtinfo);
}

void comn__free_moninfo(CS_MONINFO *moninfo) { (void)moninfo; }

void comn__free_numinfo(CS_NUMINFO *numinfo) { (void)numinfo; }

namespace dlx {
namespace {

// Frees a chain of the globals and clears its head.
template <class Record>
CS_RETCODE drop_chain(CS_VOID *&head, void (*free_record)(Record *)) {
    for (auto *record = static_cast<Record *>(head); record != nullptr;) {
        Record *const next = record->next;
        free_record(record);
        record = next;
    }
    head = nullptr;
    return CS_SUCCEED;
}

} // namespace
} // namespace dlx

CS_RETCODE comn_intl_dt_drop(CsContext *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    return drop_chain(context->ctxglobals->cmg_datetime, comn__free_dtinfo);
}

CS_RETCODE comn_intl_mon_drop(CsContext *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    return drop_chain(context->ctxglobals->cmg_money, comn__free_moninfo);
}

CS_RETCODE comn_intl_num_drop(CsContext *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    return drop_chain(context->ctxglobals->cmg_numeric, comn__free_numinfo);
}

CS_DATEINFO *comn__scan_cache_dt(CsContext *context, CsOID *id) {
    COM_REQUIRE_PTR(context, nullptr);
    COM_REQUIRE_PTR(context->ctxglobals, nullptr);
    auto *info = static_cast<CS_DATEINFO *>(context->ctxglobals->cmg_datetime);
    while (info != nullptr && info->id != id)
        info = info->next;
    return info;
}

CS_MONINFO *comn__scan_cache_mon(CsContext *context, CsOID *id) {
    (void)context;
    (void)id;
    return nullptr;
}

CS_NUMINFO *comn__scan_cache_num(CsContext *context, CsOID *id) {
    (void)context;
    (void)id;
    return nullptr;
}

// ---- Reading ----

CS_RETCODE comn__read_dtfile(CsContext *context, INTL_LOCFILE *ifile, CsOID *id, CS_DATEINFO **dtinfo) {
    (void)context;
    (void)ifile;
    (void)id;
    (void)dtinfo;
    return CS_SUCCEED;
}

CS_RETCODE comn__read_monfile(CsContext *context, INTL_LOCFILE *ifile, CsOID *id, CS_MONINFO **moninfo) {
    (void)context;
    (void)ifile;
    (void)id;
    (void)moninfo;
    return CS_SUCCEED;
}

CS_RETCODE comn__read_numfile(CsContext *context, INTL_LOCFILE *ifile, CsOID *id, CS_NUMINFO **numinfo) {
    (void)context;
    (void)ifile;
    (void)id;
    (void)numinfo;
    return CS_SUCCEED;
}

CS_RETCODE comn__read_common(CsContext *context, CsLocCache *lcache, CS_CHAR *locfilename, CS_INT filenamelen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(lcache, CS_FAIL);
    COM_REQUIRE_PTR(lcache->locmessage, CS_FAIL);
    CsOID *const language = lcache->locmessage->lang_oid;
    if (CS_DATEINFO *const known = comn__scan_cache_dt(context, language)) {
        lcache->locdateinfo = known;
        return CS_SUCCEED;
    }
    INTL_LOCFILE ifile;
    CS_RETCODE status =
        comn__open_msgfile(context, lcache->langname, lcache->langnamelen, const_cast<CS_CHAR *>(FILE_NAME),
                           static_cast<CS_INT>(std::strlen(FILE_NAME)), &ifile, locfilename, filenamelen);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    CS_DATEINFO *info = nullptr;
    status = read_section(context, &ifile, info);
    if (status != CS_SUCCEED) {
        comn__free_dtinfo(info);
        intl_close(&ifile);
        return COM_TRACE(status);
    }
    info->id = language;
    info->next = static_cast<CS_DATEINFO *>(context->ctxglobals->cmg_datetime);
    context->ctxglobals->cmg_datetime = info;
    lcache->locdateinfo = info;
    // A file that fails only at its end leaves the record where it is.
    const int closed = intl_close(&ifile);
    context->ctxintlerr = closed;
    return closed < 0 ? COM_TRACE(CS_EINTL) : CS_SUCCEED;
}

// ---- Styles of a locale ----

namespace dlx {
namespace {

struct Variant {
    CsLocCache *cache = nullptr;
    CS_DATEINFO *date = nullptr;
};

void drop_variant(CS_CONTEXT *context, const Variant &variant) {
    comn__free_dtinfo(variant.date);
    if (variant.cache != nullptr)
        comn__drop_loccache(context, variant.cache);
}

// A cache like the given one, with a style of its own and no name.
CS_RETCODE make_variant(CS_CONTEXT *context, CsLocCache *from, CS_INT style, Variant &variant) {
    CS_RETCODE status = comn__create_loccache(context, &variant.cache);
    if (status == CS_SUCCEED)
        status = comn__copy_loccache(from, variant.cache);
    if (status != CS_SUCCEED)
        return status;
    std::free(variant.cache->locname);
    variant.cache->locname = nullptr;
    variant.cache->locnamelen = 0;
    variant.date = new_record();
    status = variant.date != nullptr ? comn__copy_dtinfo(from->locdateinfo, variant.date) : CS_MEM_ERROR;
    if (status != CS_SUCCEED)
        return status;
    variant.date->id = nullptr;
    variant.date->convertfmt = style;
    variant.date->fmt_reset = CS_TRUE;
    variant.cache->locdateinfo = variant.date;
    return CS_SUCCEED;
}

} // namespace
} // namespace dlx

CS_RETCODE comn_intl_set_dtfmt(CS_CONTEXT *context, CS_LOCALE *locale, CS_VOID *buffer) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    if (locale == nullptr)
        locale = context->ctxlocale;
    COM_REQUIRE_PTR(locale, CS_FAIL);
    auto *const present = static_cast<CsLocCache *>(locale->timeptr);
    COM_REQUIRE_PTR(present, CS_FAIL);
    COM_REQUIRE_PTR(present->locdateinfo, CS_FAIL);
    CS_INT style;
    std::memcpy(&style, buffer, sizeof style);

    const LocaleLock lock(context);
    if (!lock.is_held())
        return COM_TRACE(CS_FAIL);
    Variant variant;
    CsLocCache *known = nullptr;
    CS_RETCODE status = make_variant(context, present, style, variant);
    if (status == CS_SUCCEED)
        status = comn__scan_lcache(context, variant.cache, &known);
    if (status != CS_SUCCEED || known != nullptr)
        drop_variant(context, variant);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);

    CsLocCache *const cache = known != nullptr ? known : variant.cache;
    CsCtxGlobals &globals = *context->ctxglobals;
    cache->locnext = static_cast<CsLocCache *>(globals.cmg_lcache);
    globals.cmg_lcache = cache;
    cache->locdateinfo->next = static_cast<CS_DATEINFO *>(globals.cmg_datetime);
    globals.cmg_datetime = cache->locdateinfo;
    locale->collateptr = locale->ctypeptr = locale->messageptr = cache;
    locale->monetaryptr = locale->numericptr = locale->timeptr = cache;
    return CS_SUCCEED;
}
