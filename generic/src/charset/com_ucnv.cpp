// Conversions between character sets that the application brings along.

#include "diag/check.h"

#include <dlxcomn/charconv.h>

#include <cstdlib>
#include <cstring>

namespace dlx {
namespace {

CsUserAlgo **list_of(CS_CONTEXT *context) { return reinterpret_cast<CsUserAlgo **>(&context->usercharconv); }

bool is_name_length(CS_INT length) { return length >= 0 && length <= CS_USERCONV_NAME; }

CS_RETCODE resolve(CS_CONTEXT *context, CS_CHAR *name, CS_INT len, CsOID *&oid) {
    CS_INT id_class = CS_OID_CHARSET;
    return comn_globalid(context, CS_NAME_TO_OID, &oid, &id_class, CS_UNUSED, name, len, nullptr, nullptr);
}

// The link that leads to the conversion of a pair, which is null where there is none.
CsUserAlgo **find_conversion(CS_CONTEXT *context, const CsOID *from, const CsOID *to) {
    CsUserAlgo **link = list_of(context);
    while (*link != nullptr && ((*link)->from_oid != from || (*link)->to_oid != to))
        link = &(*link)->next;
    return link;
}

CS_RETCODE add_conversion(CS_CONTEXT *context, CS_CHAR *from_name, CS_INT from_len, CsOID *from, CS_CHAR *to_name,
                          CS_INT to_len, CsOID *to, CsUserAlgo *&conversion) {
    conversion = static_cast<CsUserAlgo *>(std::calloc(1, sizeof(CsUserAlgo)));
    if (conversion == nullptr)
        return CS_MEM_ERROR;
    if (!is_name_length(from_len) || !is_name_length(to_len)) {
        std::free(conversion);
        return CS_ESYNTAX;
    }
    std::memcpy(conversion->from_charname, from_name, static_cast<std::size_t>(from_len));
    std::memcpy(conversion->to_charname, to_name, static_cast<std::size_t>(to_len));
    conversion->from_charnamelen = from_len;
    conversion->to_charnamelen = to_len;
    conversion->from_oid = from;
    conversion->to_oid = to;
    conversion->next = *list_of(context);
    *list_of(context) = conversion;
    return CS_SUCCEED;
}

// With the head, which was set last, the whole list goes: what stands behind it stays allocated and is no longer
// reachable. Applications rely on it to end all of their conversions by one call.
void clear_conversion(CS_CONTEXT *context, CsUserAlgo **link) {
    CsUserAlgo *const conversion = *link;
    *link = link == list_of(context) ? nullptr : conversion->next;
    std::free(conversion);
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE comn__get_user_charconv(CS_CONTEXT *context, CsOID *from_oid, CsOID *to_oid, CsUserAlgo **useralgop) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(useralgop, CS_FAIL);
    *useralgop = *find_conversion(context, from_oid, to_oid);
    return *useralgop != nullptr ? CS_SUCCEED : CS_FAIL; // none is the ordinary case, so it is not traced
}

CS_RETCODE comn_set_user_charset_convert(CS_CONTEXT *context, CS_INT action, CS_CHAR *srccharset, CS_INT srccharset_len,
                                         CS_CHAR *destcharset, CS_INT destcharset_len, CS_INT *multiplier,
                                         CS_CONV_FUNC *func) {
    constexpr CS_INT DEFAULT_MULTIPLIER = 1;
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(srccharset, CS_FAIL);
    COM_REQUIRE_PTR(destcharset, CS_FAIL);
    COM_REQUIRE(action == CS_USERCONV_GET || action == CS_USERCONV_SET || action == CS_USERCONV_CLEAR, CS_FAIL);
    CsOID *from, *to;
    if (resolve(context, srccharset, srccharset_len, from) != CS_SUCCEED ||
        resolve(context, destcharset, destcharset_len, to) != CS_SUCCEED)
        return COM_TRACE(CS_EBADCSNAME);
    CsUserAlgo **const link = find_conversion(context, from, to);
    CsUserAlgo *conversion = *link;
    switch (action) {
    case CS_USERCONV_SET:
        COM_REQUIRE_PTR(func, CS_FAIL);
        if (conversion == nullptr) {
            const CS_RETCODE status =
                add_conversion(context, srccharset, srccharset_len, from, destcharset, destcharset_len, to, conversion);
            if (status != CS_SUCCEED)
                return COM_TRACE(status);
        }
        conversion->user_conv_func = *func;
        conversion->conv_multiplier = multiplier != nullptr ? *multiplier : DEFAULT_MULTIPLIER;
        return CS_SUCCEED;
    case CS_USERCONV_CLEAR:
        if (conversion != nullptr)
            clear_conversion(context, link);
        return CS_SUCCEED;
    default:
        COM_REQUIRE_PTR(func, CS_FAIL);
        *func = conversion != nullptr ? conversion->user_conv_func : nullptr;
        if (conversion != nullptr && multiplier != nullptr)
            *multiplier = conversion->conv_multiplier;
        return CS_SUCCEED;
    }
}

CS_RETCODE comn_drop_user_charconv_list(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    for (CsUserAlgo *conversion = *list_of(context); conversion != nullptr;) {
        CsUserAlgo *const next = conversion->next;
        std::free(conversion);
        conversion = next;
    }
    *list_of(context) = nullptr;
    return CS_SUCCEED;
}
