// The older matrix of ten character sets, and its single-byte routines.
//
// Each routine is a table of 256 partners, made at compile time from the high codes of com_fou_tables.h.

#include "charset/com_fou_tables.h"
#include "diag/check.h"

#include <dlxcomn/charconv.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace dlx {
namespace {

constexpr int ASCII_END = 0x80;
constexpr CS_BYTE UNMAPPED = 0; // in a table, of any code but 0
constexpr CS_BYTE SUBSTITUTE = '?';

using Partners = std::array<CS_BYTE, 256>;

// Codes below `copied` stand for themselves, those from `first` on are in the table, and the rest has no partner.
template <std::size_t N>
constexpr Partners partners(int copied, int first, const CS_BYTE (&high)[N]) {
    Partners map = {};
    for (int code = 0; code < copied; ++code)
        map[static_cast<std::size_t>(code)] = static_cast<CS_BYTE>(code);
    for (std::size_t i = 0; i < N; ++i)
        map[static_cast<std::size_t>(first) + i] = high[i];
    return map;
}

constexpr CS_BYTE NO_HIGH_CODES[] = {UNMAPPED};
constexpr Partners ASCII_ONLY = partners(ASCII_END, ASCII_END, NO_HIGH_CODES);

int translate(const Partners &map, const CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused) {
    const int count = std::min(slen, dlen);
    COM_REQUIRE_PTR(sused, CS_XLATE_INVALID);
    COM_REQUIRE_PTR(dused, CS_XLATE_INVALID);
    if (count > 0) {
        COM_REQUIRE_PTR(src, CS_XLATE_INVALID);
        COM_REQUIRE_PTR(dest, CS_XLATE_INVALID);
    }
    int flags = dlen < slen ? CS_XLATE_FULL_DEST : 0;
    *sused = *dused = count;
    for (int i = 0; i < count; ++i) {
        const CS_BYTE code = src[i];
        CS_BYTE partner = map[code];
        if (partner == UNMAPPED && code != 0) {
            partner = SUBSTITUTE;
            flags |= CS_XLATE_UNMAPPED;
        }
        dest[i] = partner;
    }
    return flags;
}

} // namespace
} // namespace dlx

using namespace dlx;

#define SINGLE_BYTE_ROUTINE(name, map)                                                                                 \
    int name(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused) {                                \
        static constexpr Partners MAP = map;                                                                           \
        return translate(MAP, src, slen, dest, dlen, sused, dused);                                                    \
    }

SINGLE_BYTE_ROUTINE(com__fou_ascii8_tofrom_1byte, ASCII_ONLY)
SINGLE_BYTE_ROUTINE(com__fou_cp437_to_cp850, partners(0x9B, 0x9B, Hi_cp437_to_cp850))
SINGLE_BYTE_ROUTINE(com__fou_cp850_to_cp437, partners(0x9B, 0x9B, Hi_cp850_to_cp437))
SINGLE_BYTE_ROUTINE(com__fou_cp437_to_iso1, partners(ASCII_END, 0x80, Hi_cp437_to_iso1))
SINGLE_BYTE_ROUTINE(com__fou_cp437_to_roman8, partners(ASCII_END, 0x80, Hi_cp437_to_roman8))
SINGLE_BYTE_ROUTINE(com__fou_cp437_to_mac, partners(ASCII_END, 0x80, Hi_cp437_to_mac))
SINGLE_BYTE_ROUTINE(com__fou_cp850_to_iso1, partners(ASCII_END, 0x80, Hi_cp850_to_iso1))
SINGLE_BYTE_ROUTINE(com__fou_cp850_to_roman8, partners(ASCII_END, 0x80, Hi_cp850_to_roman8))
SINGLE_BYTE_ROUTINE(com__fou_cp850_to_mac, partners(ASCII_END, 0x80, Hi_cp850_to_mac))
SINGLE_BYTE_ROUTINE(com__fou_iso1_to_cp437, partners(ASCII_END, 0xA0, Hi_iso1_to_cp437))
SINGLE_BYTE_ROUTINE(com__fou_iso1_to_cp850, partners(ASCII_END, 0xA0, Hi_iso1_to_cp850))
SINGLE_BYTE_ROUTINE(com__fou_iso1_to_roman8, partners(ASCII_END, 0xA0, Hi_iso1_to_roman8))
SINGLE_BYTE_ROUTINE(com__fou_iso1_to_mac, partners(ASCII_END, 0xA0, Hi_iso1_to_mac))
SINGLE_BYTE_ROUTINE(com__fou_roman8_to_iso1, partners(ASCII_END, 0xA0, Hi_roman8_to_iso1))
SINGLE_BYTE_ROUTINE(com__fou_roman8_to_cp850, partners(ASCII_END, 0xA0, Hi_roman8_to_cp850))
SINGLE_BYTE_ROUTINE(com__fou_roman8_to_mac, partners(ASCII_END, 0xA0, Hi_roman8_to_mac))
SINGLE_BYTE_ROUTINE(com__fou_roman8_to_cp437, partners(ASCII_END, 0xB0, Hi_roman8_to_cp437))
SINGLE_BYTE_ROUTINE(com__fou_mac_to_iso1, partners(ASCII_END, 0x80, Hi_mac_to_iso1))
SINGLE_BYTE_ROUTINE(com__fou_mac_to_cp850, partners(ASCII_END, 0x80, Hi_mac_to_cp850))
SINGLE_BYTE_ROUTINE(com__fou_mac_to_cp437, partners(ASCII_END, 0x80, Hi_mac_to_cp437))
SINGLE_BYTE_ROUTINE(com__fou_mac_to_roman8, partners(ASCII_END, 0x80, Hi_mac_to_roman8))

// Counts and does nothing else: the destination is as the caller left it.
int com__fou_caseswap(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused) {
    (void)dest;
    const bool is_short = dlen < slen;
    const int limit = is_short ? slen : dlen;
    COM_REQUIRE_PTR(sused, CS_XLATE_INVALID);
    COM_REQUIRE_PTR(dused, CS_XLATE_INVALID);
    if (limit > 0)
        COM_REQUIRE_PTR(src, CS_XLATE_INVALID);
    int count = 0;
    while (count < limit && src[count] != 0)
        ++count;
    *sused = *dused = count;
    return is_short ? CS_XLATE_FULL_DEST : 0;
}

// ---- The matrix ----

namespace dlx {
namespace {

// cs_id of the ten sets.
enum Set {
    ASCII_8 = 0,
    ISO_1 = 1,
    CP850 = 2,
    CP437 = 3,
    ROMAN8 = 4,
    MAC = 5,
    EUCJIS = 140,
    SJIS = 141,
    DECKANJI = 142,
    DLXCHAR = 255
};

constexpr CS_FOU_FUNCS copy(Set to) { return {to, CS_XLATE_COPY, nullptr}; }
constexpr CS_FOU_FUNCS none(Set to) { return {to, CS_XLATE_NONE, nullptr}; }
constexpr CS_FOU_FUNCS ascii(Set to) { return {to, CS_XLATE_ASCII, com__fou_ascii8_tofrom_1byte}; }
constexpr CS_FOU_FUNCS full(Set to, CS_XLATE_FUNC routine) { return {to, CS_XLATE_FULL, routine}; }

} // namespace
} // namespace dlx

// Columns: ascii_8, iso_1, cp850, cp437, roman8, mac, eucjis, sjis, deckanji, dlxchar.
constinit const CS_FOU_XLT_MAP Com_fou_xlt_map[CS_FOU_SETS] = {
    {ASCII_8,
     {copy(ASCII_8), ascii(ISO_1), ascii(CP850), ascii(CP437), ascii(ROMAN8), ascii(MAC), ascii(EUCJIS), ascii(SJIS),
      ascii(DECKANJI), full(DLXCHAR, com__fou_caseswap)}},
    {ISO_1,
     {ascii(ASCII_8), copy(ISO_1), full(CP850, com__fou_iso1_to_cp850), full(CP437, com__fou_iso1_to_cp437),
      full(ROMAN8, com__fou_iso1_to_roman8), full(MAC, com__fou_iso1_to_mac), ascii(EUCJIS), ascii(SJIS),
      ascii(DECKANJI), full(DLXCHAR, com__fou_caseswap)}},
    {CP850,
     {ascii(ASCII_8), full(ISO_1, com__fou_cp850_to_iso1), copy(CP850), full(CP437, com__fou_cp850_to_cp437),
      full(ROMAN8, com__fou_cp850_to_roman8), full(MAC, com__fou_cp850_to_mac), ascii(EUCJIS), ascii(SJIS),
      ascii(DECKANJI), none(DLXCHAR)}},
    {CP437,
     {ascii(ASCII_8), full(ISO_1, com__fou_cp437_to_iso1), full(CP850, com__fou_cp437_to_cp850), copy(CP437),
      full(ROMAN8, com__fou_cp437_to_roman8), full(MAC, com__fou_cp437_to_mac), ascii(EUCJIS), ascii(SJIS),
      ascii(DECKANJI), none(DLXCHAR)}},
    {ROMAN8,
     {ascii(ASCII_8), full(ISO_1, com__fou_roman8_to_iso1), full(CP850, com__fou_roman8_to_cp850),
      full(CP437, com__fou_roman8_to_cp437), copy(ROMAN8), full(MAC, com__fou_roman8_to_mac), ascii(EUCJIS),
      ascii(SJIS), ascii(DECKANJI), none(DLXCHAR)}},
    {MAC,
     {ascii(ASCII_8), full(ISO_1, com__fou_mac_to_iso1), full(CP850, com__fou_mac_to_cp850),
      full(CP437, com__fou_mac_to_cp437), full(ROMAN8, com__fou_mac_to_roman8), copy(MAC), ascii(EUCJIS), ascii(SJIS),
      ascii(DECKANJI), none(DLXCHAR)}},
    {EUCJIS,
     {ascii(ASCII_8), ascii(ISO_1), ascii(CP850), ascii(CP437), ascii(ROMAN8), ascii(MAC), copy(EUCJIS),
      full(SJIS, com__fou_eucjis_to_sjis), full(DECKANJI, com__fou_eucjis_to_deckanji), none(DLXCHAR)}},
    {SJIS,
     {ascii(ASCII_8), ascii(ISO_1), ascii(CP850), ascii(CP437), ascii(ROMAN8), ascii(MAC),
      full(EUCJIS, com__fou_sjis_to_eucjis_deckanj), copy(SJIS), full(DECKANJI, com__fou_sjis_to_eucjis_deckanj),
      none(DLXCHAR)}},
    {DECKANJI,
     {ascii(ASCII_8), ascii(ISO_1), ascii(CP850), ascii(CP437), ascii(ROMAN8), ascii(MAC),
      full(EUCJIS, com__fou_deckanji_to_eucjis), full(SJIS, com__fou_deckanji_to_sjis), copy(DECKANJI), none(DLXCHAR)}},
    {DLXCHAR,
     {ascii(ASCII_8), ascii(ISO_1), none(CP850), none(CP437), none(ROMAN8), none(MAC), none(EUCJIS), none(SJIS),
      none(DECKANJI), copy(DLXCHAR)}},
};
