// Messages as an application receives them.
#ifndef DLX_CLIENT_COMMAND_MESSAGE_TEXT_H
#define DLX_CLIENT_COMMAND_MESSAGE_TEXT_H

#include "home.h"

namespace client {

// What the error callback of the context was given, in UTF-8.
struct Raised {
    std::string text;
    std::string layer; // empty where the catalog has no text for it
    std::string origin;
    std::string sqlstate;
    CS_INT severity = 0;
};

// A whole number of 32 bits, decimal or with "0x" in front.
std::optional<CS_MSGNUM> parse_message_number(std::string_view text);

// Raises a message in the locale that the home is used in. The function is the one that the text blames; parameters are
// two at most.
Maybe<Raised> raise_message(Home &home, CsLocCache *cache, CS_MSGNUM number, const std::string &function,
                            const std::vector<std::string> &parameters);

} // namespace client

#endif
