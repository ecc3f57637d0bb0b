// Makers of the built-in pages: a column is written down as ranges of codes, the way people read such a
// table, and the 256 entries are made from them at compile time.
#ifndef DLX_CHARSET_PAGES_H
#define DLX_CHARSET_PAGES_H

#include <dlxcomn/charset.h>

#include <cstddef>

namespace dlx {

// The codes first to last have `value`.
struct CodeRange {
    int first;
    int last;
    CS_BYTE value;
};

// Codes that no range names keep what they have.
template <std::size_t N>
constexpr void set_column(CS_TYPE_MAP &page, CS_BYTE CHAR_MAP::*column, const CodeRange (&ranges)[N]) {
    for (const CodeRange &range : ranges)
        for (int code = range.first; code <= range.last; ++code)
            page.chmap[code].*column = range.value;
}

// Moves the codes first to last of a case column to their other case.
constexpr void shift_case(CS_TYPE_MAP &page, CS_BYTE CHAR_MAP::*column, int first, int last, int distance) {
    for (int code = first; code <= last; ++code)
        page.chmap[code].*column = static_cast<CS_BYTE>(code + distance);
}

// A page with the case columns of iso_1, and no class yet. The multiplication and division signs (0xD7, 0xF7)
// stand among the letters without a case; 0xDF and 0xFF are letters whose other case lies outside the set.
constexpr CS_TYPE_MAP iso1_case_page() {
    constexpr int TO_UPPER = -0x20;
    constexpr int TO_LOWER = 0x20;
    CS_TYPE_MAP page = {};
    shift_case(page, &CHAR_MAP::char_upper, 0x00, 0xFF, 0);
    shift_case(page, &CHAR_MAP::char_upper, 0x61, 0x7A, TO_UPPER);
    shift_case(page, &CHAR_MAP::char_upper, 0xE0, 0xF6, TO_UPPER);
    shift_case(page, &CHAR_MAP::char_upper, 0xF8, 0xFE, TO_UPPER);
    shift_case(page, &CHAR_MAP::char_lower, 0x00, 0xFF, 0);
    shift_case(page, &CHAR_MAP::char_lower, 0x41, 0x5A, TO_LOWER);
    shift_case(page, &CHAR_MAP::char_lower, 0xC0, 0xD6, TO_LOWER);
    shift_case(page, &CHAR_MAP::char_lower, 0xD8, 0xDE, TO_LOWER);
    return page;
}

} // namespace dlx

#endif
