// The Japanese routines of the older matrix.
//
// A character keeps its count of bytes, so source and destination move in step; the routines differ in how a leading
// byte is classed and in what becomes of a good pair.

#include "diag/check.h"

#include <dlxcomn/charconv.h>

#include <algorithm>

namespace dlx {
namespace {

// What a byte from 0x80 on begins.
enum Character {
    UNKNOWN_BYTE, // one byte without a partner
    UNKNOWN_PAIR, // two
    PAIR,         // two, which the second byte may spoil
    UNKNOWN_TRIPLE
};

struct Pair {
    CS_BYTE first;
    CS_BYTE second;
};

constexpr CS_BYTE SUBSTITUTE = '?';
constexpr CS_BYTE SINGLE_SHIFT_2 = 0x8E; // half-width kana: two bytes
constexpr CS_BYTE SINGLE_SHIFT_3 = 0x8F; // the supplementary set: three bytes

bool is_euc_byte(CS_BYTE c) { return c >= 0xA1 && c != 0xFF; }

Character class_of_eucjis(CS_BYTE lead) {
    if (lead == SINGLE_SHIFT_3)
        return UNKNOWN_TRIPLE;
    if (lead == SINGLE_SHIFT_2)
        return UNKNOWN_PAIR;
    return is_euc_byte(lead) ? PAIR : UNKNOWN_BYTE;
}

Character class_of_deckanji(CS_BYTE lead) { return is_euc_byte(lead) ? PAIR : UNKNOWN_BYTE; }

Character class_of_sjis(CS_BYTE lead) {
    if ((lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xEF))
        return PAIR;
    return lead >= 0xF0 && lead <= 0xFC ? UNKNOWN_PAIR : UNKNOWN_BYTE;
}

// Each answers whether the pair has a partner, and turns it into that.

bool drop_pair(Pair &) { return false; }

bool keep_euc(Pair &pair) { return is_euc_byte(pair.second); }

bool euc_to_sjis(Pair &pair) {
    if (!is_euc_byte(pair.second))
        return false;
    const int row = (pair.first + 1) / 2;
    const bool is_even = pair.first % 2 == 0;
    pair.first = static_cast<CS_BYTE>(row + (row > 111 ? 0x70 : 0x30));
    pair.second = static_cast<CS_BYTE>(pair.second - (is_even ? 2 : pair.second > 223 ? 0x60 : 0x61));
    return true;
}

bool sjis_to_euc(Pair &pair) {
    const int second = pair.second;
    if (second < 0x40 || second > 0xFC || second == 0x7F)
        return false;
    const int first = pair.first > 223 ? pair.first - 0x40 : pair.first;
    const bool is_upper_half = second >= 0x9F;
    pair.first = static_cast<CS_BYTE>(2 * first - 0x60 - (is_upper_half ? 0 : 1));
    pair.second = static_cast<CS_BYTE>(second + (is_upper_half ? 2 : second >= 0x7F ? 0x60 : 0x61));
    return true;
}

template <Character (*class_of)(CS_BYTE), bool (*convert)(Pair &)>
int translate(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused) {
    const int count = std::min(slen, dlen);
    COM_REQUIRE_PTR(sused, CS_XLATE_INVALID);
    COM_REQUIRE_PTR(dused, CS_XLATE_INVALID);
    if (count > 0) {
        COM_REQUIRE_PTR(src, CS_XLATE_INVALID);
        COM_REQUIRE_PTR(dest, CS_XLATE_INVALID);
    }
    int flags = dlen < slen ? CS_XLATE_FULL_DEST : 0;
    int left = count;
    const auto substitute = [&](int bytes) {
        dest = std::fill_n(dest, bytes, SUBSTITUTE);
        left -= bytes;
        flags |= CS_XLATE_UNMAPPED;
    };
    while (left > 0) {
        if (*src < 0x80) {
            *dest++ = *src++;
            --left;
            continue;
        }
        const Character character = class_of(*src);
        const int bytes = character == UNKNOWN_BYTE ? 1 : character == UNKNOWN_TRIPLE ? 3 : 2;
        if (bytes > left)
            break;
        if (character == UNKNOWN_TRIPLE) {
            // The second byte is raised in the caller's buffer and read again, instead of being stepped over with the
            // third: the text behind it comes out two bytes late. Callers have settled for that.
            ++src;
            *src = static_cast<CS_BYTE>(*src + 2);
            substitute(bytes);
            continue;
        }
        Pair pair = {src[0], bytes == 2 ? src[1] : CS_BYTE(0)};
        src += bytes;
        if (character != PAIR || !convert(pair)) {
            substitute(bytes);
            continue;
        }
        *dest++ = pair.first;
        *dest++ = pair.second;
        left -= bytes;
    }
    *sused = *dused = count - left;
    return flags;
}

} // namespace
} // namespace dlx

using namespace dlx;

#define JAPANESE_ROUTINE(name, class_of, convert)                                                                      \
    int name(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused) {                                \
        return translate<class_of, convert>(src, slen, dest, dlen, sused, dused);                                      \
    }

JAPANESE_ROUTINE(com__fou_deckanji_to_ascii8, class_of_deckanji, drop_pair)
JAPANESE_ROUTINE(com__fou_deckanji_to_eucjis, class_of_deckanji, keep_euc)
JAPANESE_ROUTINE(com__fou_deckanji_to_sjis, class_of_deckanji, euc_to_sjis)
JAPANESE_ROUTINE(com__fou_eucjis_to_ascii8, class_of_eucjis, drop_pair)
JAPANESE_ROUTINE(com__fou_eucjis_to_deckanji, class_of_eucjis, keep_euc)
JAPANESE_ROUTINE(com__fou_eucjis_to_sjis, class_of_eucjis, euc_to_sjis)
JAPANESE_ROUTINE(com__fou_sjis_to_ascii8, class_of_sjis, drop_pair)
JAPANESE_ROUTINE(com__fou_sjis_to_eucjis_deckanj, class_of_sjis, sjis_to_euc)
