// Hexadecimal text into bytes.
#ifndef DLX_BYTES_HEXADECIMAL_H
#define DLX_BYTES_HEXADECIMAL_H

#include <dlxcomn/types.h>

#include <cstddef>

namespace dlx {

// The value of a digit, or -1.
constexpr int hex_digit(CS_BYTE c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const int letter = c | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// Of ASCII, whatever the process's locale: this text is bytes of no character set.
constexpr bool is_hex_space(CS_BYTE c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The digits of a text: white space around them and one "0x" in front are taken off.
struct HexText {
    const CS_BYTE *digits;
    std::ptrdiff_t count;

    HexText(const CS_BYTE *text, std::ptrdiff_t length) : digits(text), count(length) {
        while (count > 0 && is_hex_space(digits[count - 1]))
            --count;
        while (count > 0 && is_hex_space(*digits)) {
            ++digits;
            --count;
        }
        if (count >= 2 && digits[0] == '0' && (digits[1] | 0x20) == 'x') {
            digits += 2;
            count -= 2;
        }
    }
};

} // namespace dlx

#endif
