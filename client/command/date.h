// A text of a date or time as the library reads it: its value, or its tokens and the one that stopped the reading.
#ifndef DLX_CLIENT_COMMAND_DATE_H
#define DLX_CLIENT_COMMAND_DATE_H

#include "command.h"

#include <dlxcomn/dlxcomn.h>

namespace client {

// A value of one of the six types; the fields of the others are zero.
struct DateValue {
    CS_DATETIME datetime = {};
    CS_DATETIME4 datetime4 = {};
    CS_DATE date = 0;
    CS_TIME time = 0;
    CS_BIGDATETIME bigdatetime = 0;
    CS_BIGTIME bigtime = 0;
};

// How texts are read.
struct DateRules {
    CS_INT datatype = CS_DATETIME_TYPE;
    int style = 0;
    int order = DATEORDER_MDY;
};

struct DateReading {
    int code = DATE_OK;
    bool truncated = false; // digits of the fraction were lost
    DateValue value = {};
};

DateReading read_date(std::string_view text, const DateRules &rules);

struct DateToken {
    std::string_view text;
    struct com__datecrack token;
};

// The tokens of a text without its end: up to the first bad one, or one more than a date may have.
std::vector<DateToken> date_tokens(std::string_view text);

// Of a text that does not read, the index of the token that stopped it: the first one behind which nothing that
// could follow makes a value of the text. Where there is none such, either tokens are left over, of which it is the
// first behind the longest beginning that reads; or something is missing at the end, told by the count of tokens.
size_t stopping_token(const std::vector<DateToken> &tokens, std::string_view text, const DateRules &rules);

} // namespace client

#endif
