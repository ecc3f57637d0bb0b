// Typed values of a localization file.

#include "charset/locvalue.h"
#include "bytes/memory.h"

#include <dlxcomn/sortorder.h>

namespace dlx {
namespace {

// A number of so many bytes, the first one highest. What the value does not have counts as 0.
CS_RETCODE get_number(CS_CONTEXT *context, INTL_LOCFILE *ifile, int bytes, CS_UINT &number) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    CS_INT length;
    CS_RETCODE status;
    const CS_BYTE *const value = next_value(context, ifile, length, status);
    if (value == nullptr)
        return COM_TRACE(status);
    number = 0;
    for (int i = 0; i < bytes; ++i)
        number = number << 8 | (i < length ? value[i] : 0u);
    return CS_SUCCEED;
}

bool is_identifier(std::string_view text) {
    if (text.empty() || com_isalpha(static_cast<CS_BYTE>(text[0])) == 0)
        return false;
    for (const char c : text.substr(1)) {
        const auto byte = static_cast<CS_BYTE>(c);
        if (com_isalpha(byte) == 0 && com_isdigit(byte) == 0 && c != '_')
            return false;
    }
    return true;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE comn__get_byteval(CsContext *context, INTL_LOCFILE *ifile, CS_BYTE *byteval) {
    COM_REQUIRE_PTR(byteval, CS_FAIL);
    CS_UINT number = 0;
    const CS_RETCODE status = get_number(context, ifile, sizeof *byteval, number);
    if (status == CS_SUCCEED)
        *byteval = static_cast<CS_BYTE>(number);
    return status;
}

CS_RETCODE comn__get_shortval(CsContext *context, INTL_LOCFILE *ifile, CS_VOID *shortval) {
    COM_REQUIRE_PTR(shortval, CS_FAIL);
    CS_UINT number = 0;
    const CS_RETCODE status = get_number(context, ifile, sizeof(CS_SMALLINT), number);
    if (status == CS_SUCCEED)
        store(shortval, static_cast<CS_SMALLINT>(number));
    return status;
}

CS_RETCODE comn__get_longval(CsContext *context, INTL_LOCFILE *ifile, CS_INT *longval) {
    COM_REQUIRE_PTR(longval, CS_FAIL);
    CS_UINT number = 0;
    const CS_RETCODE status = get_number(context, ifile, sizeof *longval, number);
    if (status == CS_SUCCEED)
        *longval = static_cast<CS_INT>(number);
    return status;
}

CS_RETCODE comn__get_string(CsContext *context, INTL_LOCFILE *ifile, CS_CHAR *string, CS_BOOL is_alnum, CS_INT maxlen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE(is_alnum == CS_FALSE || is_alnum == CS_TRUE, CS_FAIL);
    CS_INT length;
    CS_RETCODE status;
    const auto *const value = reinterpret_cast<const CS_CHAR *>(next_value(context, ifile, length, status));
    if (value == nullptr)
        return COM_TRACE(status);
    if (string == nullptr)
        return CS_SUCCEED;
    if (length > maxlen || (is_alnum && !is_identifier({value, static_cast<std::size_t>(length)})))
        return COM_TRACE(CS_FAIL);
    if (intl_strlcpy(string, value, static_cast<std::size_t>(maxlen)) >= static_cast<std::size_t>(maxlen))
        return COM_TRACE(CS_FAIL);
    return CS_SUCCEED;
}

CS_RETCODE comn__get_boolval(CsContext *context, INTL_LOCFILE *ifile, int *boolval) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(boolval, CS_FAIL);
    CS_INT length;
    CS_RETCODE status;
    const auto *const value = reinterpret_cast<const CS_CHAR *>(next_value(context, ifile, length, status));
    if (value == nullptr)
        return COM_TRACE(status);
    const std::string_view word(value, static_cast<std::size_t>(length));
    if (word != "true" && word != "false")
        return COM_TRACE(CS_FAIL);
    *boolval = word == "true";
    return CS_SUCCEED;
}
