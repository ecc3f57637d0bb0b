// Where the text of an operand lies, how long it is, and how much room there is.
#ifndef DLX_CHARSET_OPERANDS_H
#define DLX_CHARSET_OPERANDS_H

#include "bytes/memory.h"

#include <dlxcomn/context.h>
#include <dlxcomn/types.h>

namespace dlx {

constexpr CS_INT VARCHAR_ROOM = 256;

// A CS_VARCHAR has its length in 16 bits in front of its text; anything else is the text, and its length stands in the
// descriptor.
struct SourceText {
    CS_BYTE *data;
    CS_INT length;

    SourceText(const CS_DATAFMT &format, CS_VOID *value)
        : data(static_cast<CS_BYTE *>(value)), length(format.maxlength) {
        if (format.datatype == CS_VARCHAR_TYPE) {
            length = load<CS_SMALLINT>(data);
            data += offsetof(CS_VARCHAR, str);
        }
    }
};

struct DestinationText {
    CS_BYTE *value;
    CS_BYTE *data;
    CS_INT room;
    bool has_length;

    DestinationText(const CS_DATAFMT &format, CS_VOID *at)
        : value(static_cast<CS_BYTE *>(at)), data(value), room(format.maxlength),
          has_length(format.datatype == CS_VARCHAR_TYPE) {
        if (has_length) {
            data += offsetof(CS_VARCHAR, str);
            room = VARCHAR_ROOM;
        }
    }

    void set_length(CS_INT length) const {
        if (has_length)
            store(value, static_cast<CS_SMALLINT>(length));
    }
};

} // namespace dlx

#endif
