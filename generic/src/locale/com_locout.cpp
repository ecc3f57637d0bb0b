// Names of a locale in its own character set. They are held in UTF-8 and converted on their way out.

#include "diag/check.h"

#include <dlxcomn/charconv.h>
#include <dlxcomn/locale.h>

#include <cstring>

namespace dlx {
namespace {

constexpr CS_INT EXACT = 1; // the match mode that names are asked for with

CS_RETCODE put(CS_CONTEXT *context, CS_LOCALE *locale, CsLocCache *cache, CS_BYTE *text, CS_INT length, CS_CHAR *buffer,
               CS_INT buflen, CS_INT *outlen) {
    CS_DATAFMT format = {};
    format.datatype = CS_CHAR_TYPE;
    format.maxlength = buflen;
    format.locale = locale;
    return comn__convt_from_utf8(context, EXACT, text, length, &format, cache, buffer, outlen);
}

// The cache of a locale's times, or of the context's; null after a report.
CsLocCache *time_cache(CS_CONTEXT *context, CS_LOCALE *locale) {
    COM_REQUIRE_PTR(context, nullptr);
    if (locale == nullptr)
        locale = context->ctxlocale;
    COM_REQUIRE_PTR(locale, nullptr);
    auto *const cache = static_cast<CsLocCache *>(locale->timeptr);
    COM_REQUIRE_PTR(cache, nullptr);
    COM_REQUIRE_PTR(cache->locdateinfo, nullptr);
    return cache;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE com_intl_get_locname(CS_CONTEXT *context, CS_VOID *loccache, CS_CHAR *buffer, CS_INT buflen,
                                CS_INT *outlen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(loccache, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    auto *const cache = static_cast<CsLocCache *>(loccache);
    *outlen = 0;
    if (cache->locname == nullptr)
        return CS_SUCCEED;
    return put(context, nullptr, cache, reinterpret_cast<CS_BYTE *>(cache->locname), cache->locnamelen, buffer, buflen,
               outlen);
}

CS_RETCODE comn_intl_month(CsContext *context, CS_LOCALE *locale, CS_INT type, CS_INT month_number, CS_CHAR *buffer,
                           CS_INT buflen, CS_INT *outlen) {
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    COM_REQUIRE(type == CS_LOC_MONTH || type == CS_LOC_SHORTMONTH, CS_FAIL);
    COM_REQUIRE(month_number >= 0 && month_number < 12, CS_FAIL);
    CsLocCache *const cache = time_cache(context, locale);
    if (cache == nullptr)
        return CS_FAIL;
    const CS_DATEINFO &info = *cache->locdateinfo;
    return type == CS_LOC_MONTH ? put(context, locale, cache, info.months[month_number], info.mon_len[month_number],
                                      buffer, buflen, outlen)
                                : put(context, locale, cache, info.shortmonths[month_number],
                                      info.shrtmon_len[month_number], buffer, buflen, outlen);
}

CS_RETCODE comn_intl_day(CsContext *context, CS_LOCALE *locale, CS_INT type, CS_INT day_number, CS_CHAR *buffer,
                         CS_INT buflen, CS_INT *outlen) {
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    COM_REQUIRE(type == CS_LOC_DAY, CS_FAIL);
    COM_REQUIRE(day_number >= 0 && day_number < 7, CS_FAIL);
    CsLocCache *const cache = time_cache(context, locale);
    if (cache == nullptr)
        return CS_FAIL;
    const CS_DATEINFO &info = *cache->locdateinfo;
    return put(context, locale, cache, info.days[day_number], info.day_len[day_number], buffer, buflen, outlen);
}

CS_RETCODE comn_intl_dateorder(CsContext *context, CS_LOCALE *locale, CS_CHAR *buffer, CS_INT buflen, CS_INT *outlen) {
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    CsLocCache *const cache = time_cache(context, locale);
    if (cache == nullptr)
        return CS_FAIL;
    CS_CHAR *const order = cache->locdateinfo->dateorder;
    return put(context, locale, cache, reinterpret_cast<CS_BYTE *>(order), static_cast<CS_INT>(std::strlen(order)),
               buffer, buflen, outlen);
}
