// Building a message and handing it to the application.
//
// A text of the catalog is the cache's own, and may go with the next one that is read. So each is copied while the lock
// is held that it was found under, and the message is put together from the copies.

#include "diag/check.h"
#include "message/lock.h"

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

constexpr Parameter NONE = {TEXT, nullptr};

// `where` is the packer that the parameters were given to.
CS_RETCODE pack(SourceLine where, CsErrParams *ep, CS_INT count, const char *format, Parameter first,
                Parameter second = NONE, Parameter third = NONE) {
    COM_REQUIRE_PTR_AT(where, ep, CS_FAIL);
    COM_REQUIRE_PTR_AT(where, first.value, CS_FAIL);
    if (count >= 2)
        COM_REQUIRE_PTR_AT(where, second.value, CS_FAIL);
    if (count >= 3)
        COM_REQUIRE_PTR_AT(where, third.value, CS_FAIL);
    *ep = {.ep_numparams = count,
           .ep_format = const_cast<CS_CHAR *>(format),
           .ep_type1 = first.type,
           .ep_param1 = first.value,
           .ep_type2 = second.type,
           .ep_param2 = second.value,
           .ep_type3 = third.type,
           .ep_param3 = third.value};
    return CS_SUCCEED;
}

// An integer is read here; a text may be missing, which a template takes for an empty one.
bool is_parameter(CS_INT type, const CS_VOID *value) { return type == TEXT || (type == INTEGER && value != nullptr); }

// Calls `build` with the value of a parameter: a text or an int.
template <class Build>
int with_value(CS_INT type, const CS_VOID *value, Build build) {
    return type == TEXT ? build(static_cast<const CS_CHAR *>(value)) : build(*static_cast<const CS_INT *>(value));
}

// Fills the template; negative where that fails.
int fill(const CsErrParams &params, const CS_CHAR *message_template, CS_CHAR *buffer, CS_INT length) {
    constexpr int FAILED = -1;
    constexpr int NO_FLAGS = 0;
    COM_REQUIRE(params.ep_numparams == 2 || params.ep_numparams == 3, FAILED);
    COM_REQUIRE_PTR(params.ep_format, FAILED);
    COM_REQUIRE(is_parameter(params.ep_type2, params.ep_param2), FAILED);
    COM_REQUIRE(params.ep_numparams == 2 || is_parameter(params.ep_type3, params.ep_param3), FAILED);
    return with_value(params.ep_type2, params.ep_param2, [&](auto second) {
        if (params.ep_numparams == 2)
            return intl_strbuild(NO_FLAGS, buffer, length, message_template, params.ep_format, second);
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

// ---- Texts of the catalog ----

// What a lookup may answer instead of a text.
bool is_absence(CS_RETCODE status) {
    return status == CS_FAIL || status == CS_EINTL || status == CS_MEM_ERROR || status == CS_ENOLOCFILE;
}

// A context without a catalog has no texts.
CS_RETCODE find_text(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT tag, CS_INT number, CS_CHAR **out) {
    if (errhan == nullptr)
        return CS_FAIL;
    CS_ERRIDX idx = {tag, static_cast<CS_MSGNUM>(number)};
    return com_err_msg(context, errhan, &idx, out);
}

// The mutex of a catalog's messages; null where it has none.
CS_THRDRES *mutex_of(const CS_ERRHAN *errhan) {
    if (errhan == nullptr || errhan->err_locale == nullptr)
        return nullptr;
    const auto *const cache = static_cast<const CsLocCache *>(errhan->err_locale->messageptr);
    return cache != nullptr && cache->locmessage != nullptr ? cache->locmessage->msgmtx : nullptr;
}

// A text out of the reach of the catalog. Without memory for a long one its beginning is kept.
class OwnText {
public:
    OwnText() = default;
    ~OwnText() {
        if (text_ != small_)
            std::free(text_);
    }
    OwnText(const OwnText &) = delete;
    OwnText &operator=(const OwnText &) = delete;

    // Once only.
    void keep(const CS_CHAR *text, CS_INT length) {
        if (length > SMALL)
            text_ = static_cast<CS_CHAR *>(std::malloc(static_cast<std::size_t>(length)));
        if (text_ == nullptr) {
            text_ = small_;
            length = SMALL;
        }
        std::memcpy(text_, text, static_cast<std::size_t>(length));
        length_ = length;
    }
    CS_CHAR *text() { return text_; }
    CS_INT length() const { return length_; }

private:
    static constexpr CS_INT SMALL = 256;

    CS_CHAR small_[SMALL];
    CS_CHAR *text_ = small_;
    CS_INT length_ = 0;
};

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

CS_RETCODE com_ep_s(CsErrParams *ep, CS_CHAR *str1) { return pack(COM_HERE, ep, 1, "%s", text(str1)); }
CS_RETCODE com_ep_sd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1) {
    return pack(COM_HERE, ep, 2, "%d", text(str1), integer(int1));
}
CS_RETCODE com_ep_ss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2) {
    return pack(COM_HERE, ep, 2, "%s", text(str1), text(str2));
}
CS_RETCODE com_ep_sss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_CHAR *str3) {
    return pack(COM_HERE, ep, 3, "%s %s", text(str1), text(str2), text(str3));
}
CS_RETCODE com_ep_sds(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_CHAR *str2) {
    return pack(COM_HERE, ep, 3, "%d %s", text(str1), integer(int1), text(str2));
}
CS_RETCODE com_ep_sdd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_INT *int2) {
    return pack(COM_HERE, ep, 3, "%d %d", text(str1), integer(int1), integer(int2));
}
CS_RETCODE com_ep_ssd(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_INT *int1) {
    return pack(COM_HERE, ep, 3, "%s %d", text(str1), text(str2), integer(int1));
}

// ---- Texts ----

void com__get_failerr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT failcode, CS_CHAR **out) {
    COM_REQUIRE_PTR(out);
    if (find_text(context, errhan, CS_ERRTAG_DEFAULTS, failcode, out) == CS_SUCCEED)
        return; // why the file has none does not matter here
    const CS_STRINGS *failure = Msgfailures;
    while (failure->key != CS_UNUSED && failure->key != failcode)
        ++failure;
    *out = failure->string;
    COM_REQUIRE(failure->key != CS_UNUSED);
}

void com__get_errstr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT tag, CS_INT number, CS_INT failcode, CS_CHAR **out,
                     CS_INT *outlen) {
    COM_REQUIRE_PTR(out);
    COM_REQUIRE_PTR(outlen);
    const CS_RETCODE status = find_text(context, errhan, tag, number, out);
    if (status != CS_SUCCEED)
        com__get_failerr(context, errhan, failcode, out);
    *outlen = length_of(*out);
    COM_REQUIRE(status == CS_SUCCEED || is_absence(status));
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

CS_RETCODE com__get_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CS_INT section,
                           CsErrParams *params, CsErrStrings *strings) {
    COM_REQUIRE_PTR(params, CS_FAIL);
    COM_REQUIRE_PTR(strings, CS_FAIL);
    if (origin_of(msgnum) == LOCALIZATION_ORIGIN) {
        COM_REQUIRE(params->ep_numparams == 1, CS_FAIL);
        com__get_intlerr(msgnum, strings);
        return CS_SUCCEED;
    }
    com__get_errstr(context, errhan, section, static_cast<CS_INT>(number_of(msgnum)), MESSAGE_MISSING, &strings->es_err,
                    &strings->es_errlen);
    strings->es_err_alloc = CS_FALSE;
    if (params->ep_numparams > 1)
        com__call_strbuild(params, strings->es_err, strings->es_errlen + TEMPLATE_SLACK, strings);
    return CS_SUCCEED;
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

namespace dlx {
namespace {

void keep_errstr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT tag, CS_UINT number, CS_INT failcode, OwnText &own) {
    const MessageLock lock(mutex_of(errhan));
    CS_CHAR *text;
    CS_INT length;
    com__get_errstr(context, errhan, tag, static_cast<CS_INT>(number), failcode, &text, &length);
    own.keep(text, length);
}

CS_RETCODE keep_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CS_INT section, CsErrParams *params,
                       CsErrStrings &strings, OwnText &own) {
    const MessageLock lock(mutex_of(errhan));
    const CS_RETCODE status = com__get_errmsg(context, errhan, msgnum, section, params, &strings);
    if (status != CS_SUCCEED || strings.es_err_alloc)
        return status;
    own.keep(strings.es_err, strings.es_errlen);
    strings.es_err = own.text();
    strings.es_errlen = own.length();
    return CS_SUCCEED;
}

} // namespace
} // namespace dlx

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
    COM_REQUIRE(errbuf == nullptr || errlen >= 0, CS_FAIL);
    CsErrStrings strings = {};
    OwnText layer, origin, message;
    strings.es_api = static_cast<CS_CHAR *>(params->ep_param1);
    strings.es_apilen = length_of(strings.es_api);
    keep_errstr(context, errhan, CS_ERRTAG_LAYER, layer_of(msgnum), LAYER_MISSING, layer);
    strings.es_layer = layer.text();
    strings.es_layerlen = layer.length();
    keep_errstr(context, errhan, CS_ERRTAG_ORIGIN, origin_of(msgnum), ORIGIN_MISSING, origin);
    strings.es_origin = origin.text();
    strings.es_origlen = origin.length();
    if (errbuf != nullptr) {
        strings.es_err = errbuf;
        strings.es_errlen = errlen;
    } else if (keep_errmsg(context, errhan, msgnum, section, params, strings, message) != CS_SUCCEED) {
        return CS_FAIL;
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
        return COM_TRACE(CS_FAIL); // with nobody to tell, no file is read either
    auto *const errhan = static_cast<CS_ERRHAN *>(context->ctxcomerrhan);
    CS_CLIENTMSG message = {};
    const CS_RETCODE built = com_build_errmsg(context, errhan, msgnum, params, nullptr, 0, CS_ERRTAG_API,
                                              message.msgstring, CS_MAX_MSG - 1, &message.msgstringlen);
    if (built != CS_SUCCEED)
        return COM_TRACE(built);
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
