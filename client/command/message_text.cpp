#include "message_text.h"

#include <dlxcomn/message.h>

namespace client {
namespace {

// The callback is given no more than the context, so what it receives waits here for raise_message.
CS_CLIENTMSG received;

CS_RETCODE receive(CS_CONTEXT * /*context*/, CS_CLIENTMSG *message) {
    received = *message;
    return CS_SUCCEED;
}

// A text of the catalog; empty for none.
std::string catalog_text(Home &home, CsLocCache *cache, CS_INT section, CS_MSGNUM number) {
    CS_ERRIDX index = {section, number};
    CS_CHAR *text = nullptr;
    CS_CONTEXT *const context = home.context();
    if (com_err_msg(context, static_cast<CS_ERRHAN *>(context->ctxcomerrhan), &index, &text) != CS_SUCCEED)
        return "";
    return home.to_utf8(cache, text).value_or("");
}

} // namespace

Maybe<Raised> raise_message(Home &home, CsLocCache *cache, CS_MSGNUM number, const std::string &function,
                            const std::vector<std::string> &parameters) {
    std::string texts[] = {function, parameters.empty() ? "" : parameters[0],
                           parameters.size() < 2 ? "" : parameters[1]};
    CsErrParams packed = {};
    switch (parameters.size()) {
    case 0:
        com_ep_s(&packed, texts[0].data());
        break;
    case 1:
        com_ep_ss(&packed, texts[0].data(), texts[1].data());
        break;
    default:
        com_ep_sss(&packed, texts[0].data(), texts[1].data(), texts[2].data());
    }
    const auto bytes = static_cast<CS_UINT>(number);
    constexpr CS_UINT LOCALIZATION_ORIGIN = 5;
    if ((bytes >> 16 & 0xFF) == LOCALIZATION_ORIGIN && !parameters.empty())
        return Maybe<Raised>::failure(
            "messages of origin 5 are those of the localization library and take no parameter");
    CS_CONTEXT *const context = home.context();
    context->ctxerrfunc = receive;
    if (com__error(context, number, &packed) != CS_SUCCEED)
        return Maybe<Raised>::failure("the message cannot be raised", FAILED);
    Raised raised;
    const std::string text(received.msgstring, static_cast<size_t>(received.msgstringlen));
    raised.text = home.to_utf8(cache, text).value_or(text);
    raised.sqlstate.assign(reinterpret_cast<const char *>(received.sqlstate),
                           static_cast<size_t>(received.sqlstatelen));
    raised.severity = received.severity;
    raised.layer = catalog_text(home, cache, CS_ERRTAG_LAYER, static_cast<CS_MSGNUM>(bytes >> 24));
    raised.origin = catalog_text(home, cache, CS_ERRTAG_ORIGIN, static_cast<CS_MSGNUM>(bytes >> 16 & 0xFF));
    return raised;
}

} // namespace client
