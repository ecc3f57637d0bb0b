// The datatypes and the statuses by name.
#ifndef DLX_CLIENT_COMMAND_NAMES_H
#define DLX_CLIENT_COMMAND_NAMES_H

#include "command.h"

#include <dlxcomn/dlxcomn.h>

namespace client {

// What the bytes of a value are, and so how its literal is written and shown.
enum class Form {
    text,
    bytes,
    varchar,
    varbinary,
    units,
    signed_integer,
    unsigned_integer,
    single_float,
    double_float,
    money,
    money4,
    numeric,
    datetime,
    datetime4,
    nothing, // carries no value
    opaque   // has bytes, and no literal
};

struct Datatype {
    CS_INT id;
    std::string_view name;
    std::string_view word; // as it stands in the names of conversion functions
    Form form;
    std::string_view layout;

    bool is_numeric() const { return form == Form::numeric; }
    // Text or bytes: the room of a destination is the caller's to choose, and padding is defined.
    bool has_room() const { return form == Form::text || form == Form::bytes || form == Form::units; }
    // Bytes of a value, or `given` where that is the caller's to know.
    CS_INT width(CS_INT given) const {
        switch (id) {
        case CS_LONG_TYPE: // comn_typelen leaves these two to the caller, but they have one width
            return sizeof(CS_LONG);
        case CS_USHORT_TYPE:
            return sizeof(CS_USHORT);
        default:
            return comn_typelen(id, given);
        }
    }
};

constexpr CS_INT TYPE_COUNT = CS_USER_TYPE;

// id from 0 to TYPE_COUNT - 1.
const Datatype &datatype(CS_INT id);
// By name, in either case and with or without "cs_" in front, or by id.
Maybe<const Datatype *> find_datatype(std::string_view spelled);

// "CS_EOVERFLOW"; the number of a status without a name.
std::string status_name(CS_RETCODE status);

// The CS_FORMAT_ bits of a list such as "nullterm,blankpad".
Maybe<CS_INT> parse_format(std::string_view list);

// The words that `wrong` was most likely meant to be, at most three, the likeliest first.
std::vector<std::string_view> nearest(std::string_view wrong, const std::vector<std::string_view> &words);

} // namespace client

#endif
