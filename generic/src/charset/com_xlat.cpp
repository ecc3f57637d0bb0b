// Values through the older matrix.

#include "charset/operands.h"
#include "diag/check.h"

#include <dlxcomn/charconv.h>
#include <dlxcomn/locale.h>

#include <algorithm>
#include <cstring>

namespace dlx {
namespace {

const CS_LOCALE *locale_of(const CS_CONTEXT &context, const CS_DATAFMT &format) {
    return format.locale != nullptr ? format.locale : context.ctxlocale;
}

// The cell of a pair of sets, or null.
const CS_FOU_FUNCS *find_cell(CS_INT from, CS_INT to) {
    for (const CS_FOU_XLT_MAP &row : Com_fou_xlt_map) {
        if (row.csid != from)
            continue;
        for (const CS_FOU_FUNCS &cell : row.fou_funcs)
            if (cell.csid == to)
                return &cell;
        return nullptr;
    }
    return nullptr;
}

// How text goes from one descriptor's set to the other's. A cell of a conversion that is none stands for a pair that
// the matrix does not have, one of a copy for sets that are the same.
struct Route {
    bool is_known; // false where a locale is missing, which has been reported
    CS_FOU_FUNCS cell;
};

constexpr Route BROKEN = {false, {}};

Route find_route(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_DATAFMT *destfmt) {
    COM_REQUIRE_PTR(context, BROKEN);
    COM_REQUIRE_PTR(srcfmt, BROKEN);
    COM_REQUIRE_PTR(destfmt, BROKEN);
    const CS_LOCALE *const from = locale_of(*context, *srcfmt);
    const CS_LOCALE *const to = locale_of(*context, *destfmt);
    COM_REQUIRE_PTR(from, BROKEN);
    COM_REQUIRE_PTR(to, BROKEN);
    const auto *const from_cache = static_cast<const CsLocCache *>(from->ctypeptr);
    const auto *const to_cache = static_cast<const CsLocCache *>(to->ctypeptr);
    COM_REQUIRE_PTR(from_cache, BROKEN);
    COM_REQUIRE_PTR(to_cache, BROKEN);
    if (from == to)
        return {true, {0, CS_XLATE_COPY, nullptr}};
    COM_REQUIRE_PTR(from_cache->locchardesc, BROKEN);
    COM_REQUIRE_PTR(to_cache->locchardesc, BROKEN);
    COM_REQUIRE_PTR(from_cache->locchardesc->char_attrib, BROKEN);
    COM_REQUIRE_PTR(to_cache->locchardesc->char_attrib, BROKEN);
    const CS_BYTE from_id = from_cache->locchardesc->char_attrib->cs_id;
    const CS_BYTE to_id = to_cache->locchardesc->char_attrib->cs_id;
    if (from_id == to_id)
        return {true, {to_id, CS_XLATE_COPY, nullptr}};
    const CS_FOU_FUNCS *const cell = find_cell(from_id, to_id);
    return {true, cell != nullptr ? *cell : CS_FOU_FUNCS{to_id, CS_XLATE_NONE, nullptr}};
}

CS_RETCODE status_of(int flags) {
    if ((flags & CS_XLATE_UNMAPPED) != 0)
        return CS_EUNMAPPED;
    if ((flags & CS_XLATE_FULL_DEST) != 0)
        return CS_EOVERFLOW;
    COM_REQUIRE(flags == 0, CS_FAIL);
    return CS_SUCCEED;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE com_intl_will_xlate(CsContext *context, CS_DATAFMT *srcfmt, CS_DATAFMT *destfmt, CS_INT *xlate_type) {
    COM_REQUIRE_PTR(xlate_type, CS_FAIL);
    const Route route = find_route(context, srcfmt, destfmt);
    if (!route.is_known)
        return CS_FAIL;
    *xlate_type = route.cell.xlate_type;
    return CS_SUCCEED;
}

CS_RETCODE com_intl_xlate(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt, CS_VOID *dest,
                          CS_INT *srcused, CS_INT *destused) {
    COM_REQUIRE_PTR(src, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(srcused, CS_FAIL);
    COM_REQUIRE_PTR(destused, CS_FAIL);
    const Route route = find_route(context, srcfmt, destfmt);
    if (!route.is_known)
        return CS_FAIL;
    if (route.cell.xlate_type == CS_XLATE_NONE) {
        *srcused = *destused = 0;
        return COM_TRACE(CS_ENOCONV);
    }
    const SourceText from(*srcfmt, src);
    const DestinationText to(*destfmt, dest);
    COM_REQUIRE(from.length >= 1, CS_FAIL);
    COM_REQUIRE(to.room >= 0, CS_FAIL);

    CS_RETCODE status;
    if (route.cell.xlate_type == CS_XLATE_COPY) {
        const CS_INT count = std::min(from.length, to.room);
        if (from.data != to.data)
            std::memmove(to.data, from.data, static_cast<std::size_t>(count));
        *srcused = *destused = count;
        status = count < from.length ? CS_EOVERFLOW : CS_SUCCEED;
    } else {
        if (route.cell.xlate_func == nullptr)
            return COM_TRACE(CS_ENOCONV);
        status = status_of(route.cell.xlate_func(from.data, from.length, to.data, to.room, srcused, destused));
    }
    to.set_length(*destused);
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}
