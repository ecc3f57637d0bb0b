// Building a message and handing it to the application.

#include "diag/check.h"

#include <dlxcomn/message.h>
#include <dlxintl/intl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace dlx {
namespace {

constexpr CS_INT TEXT = 0;    // types of parameters
constexpr CS_INT INTEGER = 8; // by its address
constexpr CS_INT MOST_PARAMETERS = 3;

constexpr CS_INT LAYER_MISSING = 2; // failure codes, of the defaults and of the texts of last resort
constexpr CS_INT ORIGIN_MISSING = 3;
constexpr CS_INT MESSAGE_MISSING = 4;

constexpr CS_UINT LOCALIZATION_ORIGIN = 5; // whose messages are the texts of its codes
constexpr CS_INT TEMPLATE_SLACK = 512;     // what parameters may add to a template
constexpr std::string_view SEPARATOR = ": ";
constexpr CS_INT SEPARATORS = 3;
constexpr std::string_view NO_SQLSTATE = "ZZZZZ";

// The bytes of a message number.
CS_UINT layer_of(CS_MSGNUM msgnum) { return msgnum >> 24; }
CS_UINT origin_of(CS_MSGNUM msgnum) { return msgnum >> 16 & 0xFF; }
CS_UINT severity_of(CS_MSGNUM msgnum) { return msgnum >> 8 & 0xFF; }
CS_UINT number_of(CS_MSGNUM msgnum) { return msgnum & 0xFF; }

CS_INT length_of(const CS_CHAR *text) { return static_cast<CS_INT>(std::strlen(text)); }

struct Parameter {
    CS_INT type;
    CS_VOID *value;
};

Parameter text(CS_CHAR *value) { return {TEXT, value}; }
Parameter integer(CS_INT *value) { return {INTEGER, value}; }

CS_RETCODE pack(SourceLine where, CsErrParams *ep, const char *format, Parameter first,
                Parameter second = {TEXT, nullptr}, Parameter third = {TEXT, nullptr}, CS_INT count = 1) {
    COM_REQUIRE_PTR_AT(where, ep, CS_FAIL);
    COM_REQUIRE_PTR_AT(where, first.value, CS_FAIL);
    if (count >= 2)
        COM_REQUIRE_PTR_AT(where, second.value, CS_FAIL);
    if (count >= 3)
        COM_REQUIRE_PTR_AT(where, third.value, CS_FAIL);
    *ep = {count,      const_cast<CS_CHAR *>(format), first.type, first.value, second.type, second.value, third.type,
           third.value};
    return CS_SUCCEED;
}

// Calls `build` with the value of a parameter: a text or an int.
template <class Build>
int with_value(CS_INT type, const CS_VOID *value, Build build) {
    return type == TEXT ? build(static_cast<const CS_CHAR *>(value)) : build(*static_cast<const CS_INT *>(value));
}

bool is_type(CS_INT type) { return type == TEXT || type == INTEGER; }

// Fills the template; negative where that fails.
int fill(const CsErrParams &params, const CS_CHAR *message_template, CS_CHAR *buffer, CS_INT length) {
    constexpr int FAILED = -1;
    constexpr int NO_FLAGS = 0;
    COM_REQUIRE(is_type(params.ep_type2), FAILED);
    return with_value(params.ep_type2, params.ep_param2, [&](auto second) {
        if (params.ep_numparams == 2)
            return intl_strbuild(NO_FLAGS, buffer, length, message_template, params.ep_format, second);
        COM_REQUIRE(is_type(params.ep_type3), FAILED);
        return with_value(params.ep_type3, params.ep_param3, [&](auto third) {
            return intl_strbuild(NO_FLAGS, buffer, length, message_template, params.ep_format, second, third);
        });
    });
}

// A buffer that takes as much of each part as is left.
class CutText {
public:
    CutText(CS_CHAR *to, CS_INT room) : to_(to), room_(std::max(room, 0)) {}

    void append(const CS_CHAR *part, CS_INT length) {
        length = std::min(length, room_ - length_);
        if (length <= 0)
            return;
        std::memcpy(to_ + length_, part, static_cast<std::size_t>(length));
        length_ += length;
    }
    CS_INT length() const { return length_; }

private:
    CS_CHAR *to_;
    CS_INT room_;
    CS_INT length_ = 0;
};

bool is_known_failure(CS_RETCODE status) {
    return status == CS_FAIL || status == CS_EINTL || status == CS_MEM_ERROR || status == CS_ENOLOCFILE;
}

// A text of the catalog, or null. A context without a catalog has none.
CS_CHAR *catalog_text(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT tag, CS_INT number) {
    if (errhan == nullptr)
        return nullptr;
    CS_ERRIDX idx = {tag, static_cast<CS_MSGNUM>(number)};
    CS_CHAR *found;
    const CS_RETCODE status = com_err_msg(context, errhan, &idx, &found);
    if (status == CS_SUCCEED)
        return found;
    COM_REQUIRE(is_known_failure(status), nullptr);
    return nullptr;
}

} // namespace
} // namespace dlx

using namespace dlx;

const CS_STRINGS Msgfailures[] = {
    {1, const_cast<char *>("unable to get string due to lack of memory")},
    {LAYER_MISSING, const_cast<char *>("unable to get layer message string")},
    {ORIGIN_MISSING, const_cast<char *>("unable to get origin message string")},
    {MESSAGE_MISSING, const_cast<char *>("unable to get error string")},
    {CS_UNUSED, const_cast<char *>("bad default error number")},
};

// ---- Parameters ----

CS_RETCODE com_ep_s(CsErrParams *ep, CS_CHAR *str1) { return pack(COM_HERE, ep, "%s", text(str1)); }
CS_RETCODE com_ep_sd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1) {
    return pack(COM_HERE, ep, "%d", text(str1), integer(int1), {}, 2);
}
CS_RETCODE com_ep_ss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2) {
    return pack(COM_HERE, ep, "%s", text(str1), text(str2), {}, 2);
}
CS_RETCODE com_ep_sss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_CHAR *str3) {
    return pack(COM_HERE, ep, "%s %s", text(str1), text(str2), text(str3), 3);
}
CS_RETCODE com_ep_sds(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_CHAR *str2) {
    return pack(COM_HERE, ep, "%d %s", text(str1), integer(int1), text(str2), 3);
}
CS_RETCODE com_ep_sdd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_INT *int2) {
    return pack(COM_HERE, ep, "%d %d", text(str1), integer(int1), integer(int2), 3);
}
CS_RETCODE com_ep_ssd(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_INT *int1) {
    return pack(COM_HERE, ep, "%s %d", text(str1), text(str2), integer(int1), 3);
}

// ---- Texts ----

CS_CHAR *com__get_failerr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT failcode) {
    if (CS_CHAR *const found = catalog_text(context, errhan, CS_ERRTAG_DEFAULTS, failcode))
        return found;
    const CS_STRINGS *failure = Msgfailures;
    while (failure->key != CS_UNUSED && failure->key != failcode)
        ++failure;
    COM_REQUIRE(failure->key != CS_UNUSED, failure->string);
    return failure->string;
}

void com__get_errstr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT tag, CS_INT number, CS_INT failcode, CS_CHAR **out,
                     CS_INT *outlen) {
    COM_REQUIRE_PTR(out);
    COM_REQUIRE_PTR(outlen);
    CS_CHAR *const found = catalog_text(context, errhan, tag, number);
    *out = found != nullptr ? found : com__get_failerr(context, errhan, failcode);
    *outlen = length_of(*out);
}

void com__get_intlerr(CS_MSGNUM msgnum, CsErrStrings *strings) {
    COM_REQUIRE_PTR(strings);
    strings->es_err = const_cast<CS_CHAR *>(intl_errstr(-static_cast<int>(number_of(msgnum))));
    strings->es_errlen = length_of(strings->es_err);
    strings->es_err_alloc = CS_FALSE;
}

void com__call_strbuild(CsErrParams *params, CS_CHAR *message_template, CS_INT length, CsErrStrings *strings) {
    COM_REQUIRE_PTR(params);
    COM_REQUIRE_PTR(message_template);
    COM_REQUIRE_PTR(strings);
    auto *const buffer = static_cast<CS_CHAR *>(std::malloc(static_cast<std::size_t>(length)));
    const int built = buffer != nullptr ? fill(*params, message_template, buffer, length) : -1;
    if (built < 0) { // the template says more than nothing
        std::free(buffer);
        strings->es_err = message_template;
        strings->es_errlen = length_of(message_template);
        strings->es_err_alloc = CS_FALSE;
        return;
    }
    strings->es_err = buffer;
    strings->es_errlen = built;
    strings->es_err_alloc = CS_TRUE;
}

void com__get_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CS_INT section, CsErrParams *params,
                     CsErrStrings *strings) {
    COM_REQUIRE_PTR(params);
    COM_REQUIRE_PTR(strings);
    if (origin_of(msgnum) == LOCALIZATION_ORIGIN) {
        COM_REQUIRE(params->ep_numparams == 1);
        com__get_intlerr(msgnum, strings);
        return;
    }
    strings->es_err_alloc = CS_FALSE;
    com__get_errstr(context, errhan, section, static_cast<CS_INT>(number_of(msgnum)), MESSAGE_MISSING, &strings->es_err,
                    &strings->es_errlen);
    if (params->ep_numparams > 1)
        com__call_strbuild(params, strings->es_err, strings->es_errlen + TEMPLATE_SLACK, strings);
}

void com__fill_climsg(CsErrStrings *strings, CS_CHAR *outbuf, CS_INT outbuflen, CS_INT *outlen) {
    COM_REQUIRE_PTR(strings);
    COM_REQUIRE_PTR(outbuf);
    COM_REQUIRE_PTR(outlen);
    CutText out(outbuf, outbuflen);
    const auto separate = [&out] { out.append(SEPARATOR.data(), static_cast<CS_INT>(SEPARATOR.size())); };
    out.append(strings->es_api, strings->es_apilen);
    separate();
    out.append(strings->es_layer, strings->es_layerlen);
    separate();
    out.append(strings->es_origin, strings->es_origlen);
    separate();
    out.append(strings->es_err, strings->es_errlen);
    *outlen = out.length();
}

CS_RETCODE com_notrunc_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CsErrParams *params,
                              CS_CHAR *errbuf, CS_INT errlen, CS_INT section, CS_BOOL truncate, CS_CHAR *outbuf,
                              CS_INT outbuflen, CS_INT *outlen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(params, CS_FAIL);
    COM_REQUIRE_PTR(outbuf, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    COM_REQUIRE(params->ep_numparams >= 1 && params->ep_numparams <= MOST_PARAMETERS, CS_FAIL);
    COM_REQUIRE(params->ep_type1 == TEXT, CS_FAIL);
    COM_REQUIRE_PTR(params->ep_param1, CS_FAIL);
    CsErrStrings strings = {};
    strings.es_api = static_cast<CS_CHAR *>(params->ep_param1);
    strings.es_apilen = length_of(strings.es_api);
    com__get_errstr(context, errhan, CS_ERRTAG_LAYER, static_cast<CS_INT>(layer_of(msgnum)), LAYER_MISSING,
                    &strings.es_layer, &strings.es_layerlen);
    com__get_errstr(context, errhan, CS_ERRTAG_ORIGIN, static_cast<CS_INT>(origin_of(msgnum)), ORIGIN_MISSING,
                    &strings.es_origin, &strings.es_origlen);
    if (errbuf != nullptr) {
        strings.es_err = errbuf;
        strings.es_errlen = errlen;
    } else {
        com__get_errmsg(context, errhan, msgnum, section, params, &strings);
    }

    const CS_INT needed = strings.es_apilen + strings.es_layerlen + strings.es_origlen + strings.es_errlen +
                          SEPARATORS * static_cast<CS_INT>(SEPARATOR.size());
    const bool is_refused = !truncate && needed > outbuflen;
    if (is_refused)
        *outlen = needed;
    else
        com__fill_climsg(&strings, outbuf, outbuflen, outlen);
    if (strings.es_err_alloc)
        std::free(strings.es_err);
    return is_refused ? COM_TRACE(CS_FAIL) : CS_SUCCEED;
}

CS_RETCODE com_build_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CsErrParams *params,
                            CS_CHAR *errbuf, CS_INT errlen, CS_INT section, CS_CHAR *outbuf, CS_INT outbuflen,
                            CS_INT *outlen) {
    const CS_RETCODE status = com_notrunc_errmsg(context, errhan, msgnum, params, errbuf, errlen, section, CS_TRUE,
                                                 outbuf, outbuflen, outlen);
    COM_REQUIRE(status == CS_SUCCEED, status);
    return status;
}

CS_RETCODE com__error(CS_CONTEXT *context, CS_MSGNUM msgnum, CsErrParams *params) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(params, CS_FAIL);
    if (context->ctxerrfunc == nullptr)
        return COM_TRACE(CS_FAIL);
    auto *const errhan = static_cast<CS_ERRHAN *>(context->ctxcomerrhan);
    CS_CLIENTMSG message = {};
    const CS_RETCODE built = com_build_errmsg(context, errhan, msgnum, params, nullptr, 0, CS_ERRTAG_API,
                                              message.msgstring, CS_MAX_MSG - 1, &message.msgstringlen);
    if (built != CS_SUCCEED)
        return built;
    message.msgstring[message.msgstringlen] = '\0';
    if (errhan == nullptr ||
        com_err_sqlstate(context, errhan, static_cast<CS_INT>(number_of(msgnum)), CS_ERRTAG_API, message.sqlstate,
                         sizeof message.sqlstate, &message.sqlstatelen) != CS_SUCCEED) {
        std::memcpy(message.sqlstate, NO_SQLSTATE.data(), NO_SQLSTATE.size());
        message.sqlstatelen = static_cast<CS_INT>(NO_SQLSTATE.size());
    }
    message.severity = static_cast<CS_INT>(severity_of(msgnum));
    message.msgnumber = msgnum;
    return context->ctxerrfunc(context, &message);
}
