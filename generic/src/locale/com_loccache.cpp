// The caches behind the categories of a locale: making, comparing and dropping them.

#include "diag/check.h"

#include <dlxcomn/locale.h>
#include <dlxcomn/message.h>
#include <dlxcomn/services.h>
#include <dlxcomn/sortorder.h>

#include <cstdlib>
#include <cstring>

namespace dlx {
namespace {

// Counted texts, of which null is only like null.
template <class Text>
bool is_same_text(const Text *text1, CS_INT len1, const Text *text2, CS_INT len2) {
    if (text1 == nullptr || text2 == nullptr)
        return text1 == text2;
    return len1 == len2 && std::memcmp(text1, text2, static_cast<std::size_t>(len1)) == 0;
}

template <int Count>
bool are_same_texts(CS_BYTE *const (&texts1)[Count], const CS_INT (&lens1)[Count], CS_BYTE *const (&texts2)[Count],
                    const CS_INT (&lens2)[Count]) {
    for (int i = 0; i < Count; ++i)
        if (!is_same_text(texts1[i], lens1[i], texts2[i], lens2[i]))
            return false;
    return true;
}

bool is_same_dateinfo(CS_DATEINFO *info1, CS_DATEINFO *info2) {
    if (info1 == nullptr || info2 == nullptr)
        return info1 == info2;
    return comn__cmp_dtinfo(info1, info2);
}

// Descriptors are alike that stand for one identifier.
bool is_same_set(const CsCharDesc *set1, const CsCharDesc *set2) {
    return set1 == set2 || (set1 != nullptr && set2 != nullptr && set1->oid == set2->oid);
}

bool is_same_order(const CsSortDesc *order1, const CsSortDesc *order2) {
    return order1 == order2 || (order1 != nullptr && order2 != nullptr && order1->oid == order2->oid);
}

bool is_same_message(const CS_MESSAGE *message1, const CS_MESSAGE *message2) {
    return message1 == message2 ||
           (message1 != nullptr && message2 != nullptr && message1->lang_oid == message2->lang_oid);
}

// A name may be missing.
CS_RETCODE copy_name(CS_CHAR *&to, CS_INT &to_len, CS_CHAR *from, CS_INT from_len) {
    return from == nullptr ? CS_SUCCEED : com_setstring(&to, &to_len, from, from_len);
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE comn__create_loccache(CsContext *context, CsLocCache **lcache_ptr) {
    (void)context;
    COM_REQUIRE_PTR(lcache_ptr, CS_FAIL);
    *lcache_ptr = static_cast<CsLocCache *>(std::calloc(1, sizeof(CsLocCache)));
    return *lcache_ptr != nullptr ? CS_SUCCEED : COM_TRACE(CS_MEM_ERROR);
}

void comn__drop_loccache(CsContext *context, CsLocCache *lcache) {
    (void)context;
    COM_REQUIRE_PTR(lcache);
    std::free(lcache->locname);
    std::free(lcache->charname);
    std::free(lcache->sortname);
    std::free(lcache->langname);
    std::free(lcache->datename);
    std::free(lcache->numname);
    std::free(lcache->monname);
    std::free(lcache);
}

CS_RETCODE comn__copy_loccache(CsLocCache *src_loccache, CsLocCache *dest_loccache) {
    COM_REQUIRE_PTR(src_loccache, CS_FAIL);
    COM_REQUIRE_PTR(dest_loccache, CS_FAIL);
    const CsLocCache &from = *src_loccache;
    CsLocCache &to = *dest_loccache;
    to = {};
    to.locchardesc = from.locchardesc;
    to.locmessage = from.locmessage;
    to.locsortorder = from.locsortorder;
    if (copy_name(to.locname, to.locnamelen, from.locname, from.locnamelen) != CS_SUCCEED ||
        copy_name(to.charname, to.charnamelen, from.charname, from.charnamelen) != CS_SUCCEED ||
        copy_name(to.langname, to.langnamelen, from.langname, from.langnamelen) != CS_SUCCEED ||
        copy_name(to.sortname, to.sortnamelen, from.sortname, from.sortnamelen) != CS_SUCCEED)
        return COM_TRACE(CS_MEM_ERROR);
    return CS_SUCCEED;
}

CS_BOOL comn__cmp_dtinfo(CS_DATEINFO *dt1, CS_DATEINFO *dt2) {
    COM_REQUIRE_PTR(dt1, CS_FALSE);
    COM_REQUIRE_PTR(dt2, CS_FALSE);
    if (dt1->id != nullptr || dt2->id != nullptr)
        return dt1->id == dt2->id;
    const CS_DATEINFO &a = *dt1;
    const CS_DATEINFO &b = *dt2;
    return a.is12hour == b.is12hour && a.firstday == b.firstday && a.secprec == b.secprec &&
           a.convertfmt == b.convertfmt && a.locdateorder_id == b.locdateorder_id &&
           std::strncmp(a.dateorder, b.dateorder, sizeof a.dateorder) == 0 &&
           is_same_text(a.amindict, a.amindict_len, b.amindict, b.amindict_len) &&
           is_same_text(a.pmindict, a.pmindict_len, b.pmindict, b.pmindict_len) &&
           are_same_texts(a.months, a.mon_len, b.months, b.mon_len) &&
           are_same_texts(a.shortmonths, a.shrtmon_len, b.shortmonths, b.shrtmon_len) &&
           are_same_texts(a.days, a.day_len, b.days, b.day_len) &&
           are_same_texts(a.shortdays, a.shrtday_len, b.shortdays, b.shrtday_len) &&
           is_same_text(a.datefmt, a.datefmt_len, b.datefmt, b.datefmt_len) &&
           is_same_text(a.timefmt, a.timefmt_len, b.timefmt, b.timefmt_len) &&
           is_same_text(a.longdtfmt, a.longdtfmt_len, b.longdtfmt, b.longdtfmt_len) &&
           is_same_text(a.shrtdtfmt, a.shrtdtfmt_len, b.shrtdtfmt, b.shrtdtfmt_len) &&
           is_same_text(a.era, a.era_len, b.era, b.era_len) &&
           is_same_text(a.era_t_fmt, a.eratfmt_len, b.era_t_fmt, b.eratfmt_len) &&
           is_same_text(a.era_d_fmt, a.eradfmt_len, b.era_d_fmt, b.eradfmt_len) &&
           is_same_text(a.era_dt_fmt, a.eradtfmt_len, b.era_dt_fmt, b.eradtfmt_len);
}

CS_BOOL comn__cmp_loccache(CsLocCache *loc1, CsLocCache *loc2) {
    COM_REQUIRE_PTR(loc1, CS_FALSE);
    COM_REQUIRE_PTR(loc2, CS_FALSE);
    const CsLocCache &a = *loc1;
    const CsLocCache &b = *loc2;
    return is_same_text(a.locname, a.locnamelen, b.locname, b.locnamelen) &&
           is_same_text(a.charname, a.charnamelen, b.charname, b.charnamelen) &&
           is_same_set(a.locchardesc, b.locchardesc) &&
           is_same_text(a.sortname, a.sortnamelen, b.sortname, b.sortnamelen) &&
           is_same_order(a.locsortorder, b.locsortorder) &&
           is_same_text(a.langname, a.langnamelen, b.langname, b.langnamelen) &&
           is_same_message(a.locmessage, b.locmessage) &&
           is_same_text(a.datename, a.datenamelen, b.datename, b.datenamelen) &&
           is_same_dateinfo(a.locdateinfo, b.locdateinfo) &&
           is_same_text(a.numname, a.numnamelen, b.numname, b.numnamelen) && a.locnuminfo == b.locnuminfo &&
           is_same_text(a.monname, a.monnamelen, b.monname, b.monnamelen) && a.locmoninfo == b.locmoninfo;
}

CsLocCache *com__scan_lcache_name(CsContext *context, CS_CHAR *name, CS_INT namelen) {
    COM_REQUIRE_PTR(context, nullptr);
    COM_REQUIRE_PTR(context->ctxglobals, nullptr);
    COM_REQUIRE_PTR(name, nullptr);
    for (auto *cache = static_cast<CsLocCache *>(context->ctxglobals->cmg_lcache); cache != nullptr;
         cache = cache->locnext)
        if (cache->locname != nullptr && is_same_text(cache->locname, cache->locnamelen, name, namelen))
            return cache;
    return nullptr;
}

namespace dlx {
namespace {

// The link that leads to a record of a chain, or null.
template <class Record>
Record **find_link(Record **head, const Record *record, Record *Record::*next) {
    for (Record **link = head; *link != nullptr; link = &((*link)->*next))
        if (*link == record)
            return link;
    return nullptr;
}

} // namespace
} // namespace dlx

CS_RETCODE comn__scan_lcache(CS_CONTEXT *context, CsLocCache *loccache, CsLocCache **dup_loccache) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(dup_loccache, CS_FAIL);
    *dup_loccache = nullptr;
    if (loccache == nullptr)
        return CS_SUCCEED;
    auto **link = reinterpret_cast<CsLocCache **>(&context->ctxglobals->cmg_lcache);
    while (*link != nullptr && !comn__cmp_loccache(*link, loccache))
        link = &(*link)->locnext;
    CsLocCache *const found = *link;
    if (found == nullptr)
        return CS_SUCCEED;
    auto **dates = reinterpret_cast<CS_DATEINFO **>(&context->ctxglobals->cmg_datetime);
    CS_DATEINFO **const date = find_link(dates, found->locdateinfo, &CS_DATEINFO::next);
    if (date == nullptr)
        return COM_TRACE(CS_FAIL);
    *date = found->locdateinfo->next;
    *link = found->locnext;
    *dup_loccache = found;
    return CS_SUCCEED;
}

CS_RETCODE com_intl_loccache_drop(CsContext *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    for (auto *cache = static_cast<CsLocCache *>(context->ctxglobals->cmg_lcache); cache != nullptr;) {
        CsLocCache *const next = cache->locnext;
        comn__drop_loccache(context, cache);
        cache = next;
    }
    context->ctxglobals->cmg_lcache = nullptr;
    return CS_SUCCEED;
}
