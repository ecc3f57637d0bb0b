// One character of UTF-8, in both directions.
#ifndef DLXUNIC_UTF8_H
#define DLXUNIC_UTF8_H

#include "text.h"

namespace dlx::unic {

// What stands at a place of UTF-8. A malformed sequence is as long as it could have been the beginning of a character.
struct Sequence {
    enum Kind { CHARACTER, MALFORMED, CUT } kind;
    int length;
    char32_t character;
};

inline Sequence sequence_at(const std::uint8_t *p, const std::uint8_t *end) {
    const unsigned lead = p[0];
    if (lead < 0x80)
        return {Sequence::CHARACTER, 1, lead};
    if (lead < 0xC2 || lead > 0xF4)
        return {Sequence::MALFORMED, 1, REPLACEMENT};
    const int length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte tells overlong forms, surrogates and what is above the last character.
    const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t character = lead & (0x7Fu >> length);
    for (int i = 1; i < length; ++i) {
        if (p + i == end)
            return {Sequence::CUT, i, REPLACEMENT};
        const unsigned byte = p[i];
        if (byte < (i == 1 ? low : 0x80) || byte > (i == 1 ? high : 0xBF))
            return {Sequence::MALFORMED, i, REPLACEMENT};
        character = character << 6 | (byte & 0x3F);
    }
    return {Sequence::CHARACTER, length, character};
}

constexpr int utf8_length(char32_t c) { return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }

inline std::uint8_t *put_utf8(std::uint8_t *out, char32_t c) {
    if (c < 0x80) {
        *out++ = static_cast<std::uint8_t>(c);
    } else if (c < 0x800) {
        *out++ = static_cast<std::uint8_t>(0xC0 | c >> 6);
        *out++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *out++ = static_cast<std::uint8_t>(0xE0 | c >> 12);
        *out++ = static_cast<std::uint8_t>(0x80 | (c >> 6 & 0x3F));
        *out++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
    } else {
        *out++ = static_cast<std::uint8_t>(0xF0 | c >> 18);
        *out++ = static_cast<std::uint8_t>(0x80 | (c >> 12 & 0x3F));
        *out++ = static_cast<std::uint8_t>(0x80 | (c >> 6 & 0x3F));
        *out++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
    }
    return out;
}

} // namespace dlx::unic

#endif
