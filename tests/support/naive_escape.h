// The doubling of quotes, a character at a time.
#ifndef TESTS_SUPPORT_NAIVE_ESCAPE_H
#define TESTS_SUPPORT_NAIVE_ESCAPE_H

#include "support/charsets.h"
#include "support/naive_walk.h"

#include <string>

namespace support::naive {

struct Escaped {
    CS_RETCODE status;
    std::string bytes;
    bool operator==(const Escaped &) const = default;
};

inline Escaped escchar(const CHAR_ATTRIB *ca, const std::string &source, bool stops_at_nul, std::size_t room,
                       CS_BYTE quote) {
    // A lookup of the second byte may look here; it changes nothing, since the character is cut in any case.
    const std::string padded = source + std::string(LONGEST_CHARACTER, '\0');
    std::string result;
    for (std::size_t at = 0; at < source.size();) {
        const auto *p = reinterpret_cast<const CS_BYTE *>(padded.data()) + at;
        const auto width = static_cast<std::size_t>(step(ca, p));
        const bool is_cut = at + width > source.size();
        std::string piece = source.substr(at, width);
        if (!is_cut && to_ascii(ca, p) == quote)
            piece += piece;
        if (result.size() + piece.size() > room)
            return {CS_ETRUNCATED, result};
        result += piece;
        if (stops_at_nul && !is_cut && width == 1 && *p == 0)
            break;
        at += width;
    }
    return {CS_SUCCEED, result};
}

} // namespace support::naive

#endif
