// The records of locales, and what they tell of themselves.

#include "diag/check.h"
#include "locale/locale_lock.h"

#include <dlxcomn/locale.h>
#include <dlxcomn/services.h>

#include <cstdlib>
#include <cstring>

namespace dlx {
namespace {

// The cache of a category, 1 to 6.
const CsLocCache *category(const CS_LOCALE &locale, CS_INT lctype) {
    static constexpr CS_VOID *CS_LOCALE::*CATEGORIES[] = {&CS_LOCALE::collateptr, &CS_LOCALE::ctypeptr,
                                                          &CS_LOCALE::messageptr, &CS_LOCALE::monetaryptr,
                                                          &CS_LOCALE::numericptr, &CS_LOCALE::timeptr};
    return static_cast<const CsLocCache *>(locale.*CATEGORIES[lctype - CS_LC_COLLATE]);
}

bool is_category(CS_INT lctype) { return lctype >= CS_LC_COLLATE && lctype <= CS_LC_TIME; }

struct Name {
    const CS_CHAR *text;
    CS_INT length;
};

// Two parts of a name, the second with what stands in front of it.
struct Answer {
    Name first;
    Name separator;
    Name second;
};

constexpr Name NO_NAME = {"", 0};
constexpr Name POINT = {".", 1};

Answer answer_of(const CsLocCache &cache, CS_INT type) {
    switch (type) {
    case CS_LOCSTR_CHARSET:
        return {{cache.charname, cache.charnamelen}, NO_NAME, NO_NAME};
    case CS_LOCSTR_LANGUAGE:
        return {{cache.langname, cache.langnamelen}, NO_NAME, NO_NAME};
    case CS_LOCSTR_SORTORDER:
        return {{cache.sortname, cache.sortnamelen}, NO_NAME, NO_NAME};
    default:
        return {{cache.langname, cache.langnamelen}, POINT, {cache.charname, cache.charnamelen}};
    }
}

CS_CHAR *put(CS_CHAR *to, const Name &name) {
    if (name.length > 0)
        std::memcpy(to, name.text, static_cast<std::size_t>(name.length));
    return to + name.length;
}

CS_LOCALE **find_locale(CS_CONTEXT *context, const CS_LOCALE *locale) {
    CS_LOCALE **link = &context->ctxglobals->cmg_locale;
    while (*link != nullptr && *link != locale)
        link = &(*link)->next;
    return link;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE com_intl_getstr(CsLocale *locale, CS_INT lctype, CS_INT type, CS_CHAR *buf, CS_INT buflen, CS_INT *outlen) {
    COM_REQUIRE_PTR(locale, CS_FAIL);
    COM_REQUIRE_PTR(buf, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    COM_REQUIRE(buflen >= 1, CS_FAIL);
    COM_REQUIRE(is_category(lctype), CS_FAIL);
    COM_REQUIRE(type >= CS_LOCSTR_CHARSET && type <= CS_LOCSTR_LANGUAGE_CHARSET, CS_FAIL);
    const CsLocCache *const cache = category(*locale, lctype);
    COM_REQUIRE_PTR(cache, CS_FAIL);
    const Answer answer = answer_of(*cache, type);
    const CS_INT length = answer.first.length + answer.separator.length + answer.second.length;
    if (length > buflen)
        return COM_TRACE(CS_FAIL);
    put(put(put(buf, answer.first), answer.separator), answer.second);
    *outlen = length;
    return CS_SUCCEED;
}

CS_INT com_intl_loccmp(CS_INT lctype, CS_INT type, CsLocale *loc1, CsLocale *loc2) {
    constexpr CS_INT ALIKE = 0;
    constexpr CS_INT DIFFERENT = 1;
    COM_REQUIRE_PTR(loc1, DIFFERENT);
    COM_REQUIRE_PTR(loc2, DIFFERENT);
    COM_REQUIRE(is_category(lctype), DIFFERENT);
    COM_REQUIRE(type >= CS_LOCSTR_CHARSET && type <= CS_LOCSTR_SORTORDER, DIFFERENT);
    const CsLocCache *const cache1 = category(*loc1, lctype);
    const CsLocCache *const cache2 = category(*loc2, lctype);
    if (loc1 == loc2 || cache1 == cache2)
        return ALIKE;
    COM_REQUIRE_PTR(cache1, DIFFERENT);
    COM_REQUIRE_PTR(cache2, DIFFERENT);
    switch (type) {
    case CS_LOCSTR_CHARSET:
        return cache1->locchardesc == cache2->locchardesc ? ALIKE : DIFFERENT;
    case CS_LOCSTR_LANGUAGE:
        return cache1->locmessage == cache2->locmessage ? ALIKE : DIFFERENT;
    default:
        return cache1->locsortorder == cache2->locsortorder ? ALIKE : DIFFERENT;
    }
}

CS_RETCODE comn_loc_alloc(CsContext *context, CsLocale **locptr) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxlocale, CS_FAIL);
    COM_REQUIRE_PTR(locptr, CS_FAIL);
    *locptr = static_cast<CS_LOCALE *>(std::calloc(1, sizeof(CS_LOCALE)));
    if (*locptr == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    **locptr = *context->ctxlocale;
    const LocaleLock lock(context);
    if (!lock.is_held()) {
        std::free(*locptr);
        *locptr = nullptr;
        return COM_TRACE(lock.status());
    }
    (*locptr)->next = context->ctxglobals->cmg_locale;
    context->ctxglobals->cmg_locale = *locptr;
    (*locptr)->ctxptr = context;
    return CS_SUCCEED;
}

CS_RETCODE comn_loc_drop(CsContext *context, CsLocale *locale) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(locale, CS_FAIL);
    {
        const LocaleLock lock(context);
        if (!lock.is_held())
            return COM_TRACE(lock.status());
        CS_LOCALE **const link = find_locale(context, locale);
        COM_REQUIRE_PTR(*link, CS_FAIL);
        *link = locale->next;
        if (context->ctxlocale == locale)
            context->ctxlocale = nullptr;
    }
    std::free(locale);
    return CS_SUCCEED;
}

CS_RETCODE comn_loc_drop_all(CsContext *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    const LocaleLock lock(context);
    if (!lock.is_held())
        return COM_TRACE(lock.status());
    for (CS_LOCALE *locale = context->ctxglobals->cmg_locale; locale != nullptr;) {
        CS_LOCALE *const next = locale->next;
        if (context->ctxdeflocale == locale)
            context->ctxdeflocale = nullptr; // it goes here, and not once more below
        com_secure_memset(locale, 0, sizeof *locale); // who uses it still finds no caches; plain stores would go
        std::free(locale);
        locale = next;
    }
    context->ctxglobals->cmg_locale = nullptr;
    context->ctxlocale = nullptr;
    std::free(context->ctxdeflocale);
    context->ctxdeflocale = nullptr;
    return CS_SUCCEED;
}

CS_BOOL comn_loc_validate(CsContext *context, CsLocale *locale) {
    COM_REQUIRE_PTR(context, CS_FALSE);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FALSE);
    COM_REQUIRE_PTR(locale, CS_FALSE);
    const LocaleLock lock(context);
    if (!lock.is_held())
        return CS_FALSE;
    COM_REQUIRE_PTR(context->ctxglobals->cmg_locale, CS_FALSE);
    return *find_locale(context, locale) != nullptr;
}

CS_RETCODE comn_loc_copy(CsLocale *dest_locale, CsLocale *src_locale) {
    COM_REQUIRE_PTR(dest_locale, CS_FAIL);
    COM_REQUIRE_PTR(src_locale, CS_FAIL);
    CS_VOID *const owner = dest_locale->ctxptr;
    CS_LOCALE *const next = dest_locale->next;
    *dest_locale = *src_locale;
    dest_locale->ctxptr = owner;
    dest_locale->next = next;
    return CS_SUCCEED;
}
