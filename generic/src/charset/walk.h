// The rules by which text is walked, inline: the exported walkers are one-liners over them, and the parsers of
// numbers, money and dates use them without a call for each character.
//
// A character is the bytes that the set's width map gives to its first byte. What it is stands in the type
// entry of that byte or, for the first byte of a two-byte code, in a page that the second byte indexes. No rule
// knows where the text ends; a rule that looks at the second byte reads it in any case.
//
// The tables are taken at their word: a page number must be that of a page which the set has.
#ifndef DLX_CHARSET_WALK_H
#define DLX_CHARSET_WALK_H

#include <dlxcomn/charset.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace dlx {

class Walker {
public:
    // A null `set` means iso_1.
    explicit Walker(const CHAR_ATTRIB *set) : Walker(set != nullptr ? *set : ISO_1_char_attrib) {}

    // Every character is one byte.
    bool is_single_byte() const { return widths_ == nullptr; }

    // The classes of a set whose characters are one byte each and whose normal form is the lower case, as iso_1 and
    // its like are; null for any other. An entry may still lead to a page.
    const CHAR_MAP *simple_types() const {
        return is_single_byte() && norms_ == nullptr && types_ != nullptr ? types_->chmap : nullptr;
    }

    // A character that begins with `first` is one byte, or is walked as one.
    bool is_one_byte(CS_BYTE first) const { return is_single_byte() || low_half(first) <= 1; }

    // Bytes of the character, as the set's table says, even if that is 0.
    CS_INT width(const CS_BYTE *p) const {
        if (is_single_byte())
            return 1;
        const CS_INT bytes = low_half(*p);
        return bytes == 2 && has_four_byte_codes() && is_ascii_digit(p[1]) ? 4 : bytes;
    }

    // Bytes to the next character. A table may hold a width of 0 for bytes that begin no character; a walk
    // must still come to its end, so such a byte counts as one.
    CS_INT step(const CS_BYTE *p) const {
        const CS_INT bytes = width(p);
        return bytes != 0 ? bytes : 1;
    }

    // How many of the `bytes` at `p` are surely characters of one byte each. Text is so for long stretches, and
    // there the widths of eight bytes can be looked up at once, where a walk has to wait for each of them.
    std::ptrdiff_t single_byte_run(const CS_BYTE *p, std::ptrdiff_t bytes) const {
        if (is_single_byte())
            return bytes;
        std::ptrdiff_t run = 0;
        for (CS_INT wider = 0; bytes - run >= 8; run += 8) {
            for (int i = 0; i < 8; ++i)
                wider |= low_half(p[run + i]) ^ 1;
            if (wider != 0)
                break;
        }
        return run;
    }

    // Columns that the character takes on a terminal.
    CS_INT columns(const CS_BYTE *p) const { return is_single_byte() ? 1 : widths_[*p] >> 4; }

    // The type entry. A set without type pages has no classes and no case.
    const CHAR_MAP &type(const CS_BYTE *p) const {
        if (types_ == nullptr)
            return NOTHING;
        const CHAR_MAP &first = types_[0].chmap[*p];
        return has_page(first) ? types_[first.char_upper].chmap[p[1]] : first;
    }

    // The entry of the first byte names a page for the second one.
    bool has_second_level(const CS_BYTE *p) const { return types_ != nullptr && has_page(types_[0].chmap[*p]); }

    CS_INT type_bits(const CS_BYTE *p, CS_INT mask) const { return type(p).char_type & mask; }
    CS_BYTE lex(const CS_BYTE *p) const { return type(p).char_lex; }

    // The normalized single byte, or 0 for a character that has no ASCII form. In a set without
    // normalization pages it is the lower-case form of the first byte, whatever page that byte leads to:
    // callers compare keywords without case on it.
    CS_BYTE to_ascii(const CS_BYTE *p) const {
        const CS_BYTE first = single_byte_to_ascii(*p);
        if (norms_ == nullptr || is_one_byte(*p) || first == 0)
            return first;
        return norms_[first].norm[p[1]];
    }

    // The same of a character that is known to be one byte.
    CS_BYTE single_byte_to_ascii(CS_BYTE c) const {
        if (norms_ != nullptr)
            return norms_[0].norm[c];
        return types_ != nullptr ? types_[0].chmap[c].char_lower : c;
    }

    // The byte is a character of its own, and its own normal form.
    bool stands_for_itself(CS_BYTE c) const {
        return (is_single_byte() || low_half(c) == 1) && single_byte_to_ascii(c) == c;
    }

private:
    static constexpr CHAR_MAP NOTHING = {0, 0, 0, 0};

    static bool has_page(const CHAR_MAP &entry) { return (entry.char_type & CS_CT_ROW) != 0; }
    static bool is_ascii_digit(CS_BYTE c) { return c >= '0' && c <= '9'; }
    bool has_four_byte_codes() const { return widths_[255] >> 4 == 15; }
    CS_INT low_half(CS_BYTE first) const { return widths_[first] & 0x0F; }

    explicit Walker(const CHAR_ATTRIB &set)
        : widths_(set.cs_width_map), types_(set.cs_type_map), norms_(set.cs_norm_map) {}

    // By value: a byte that a caller's loop writes could be part of the record, as far as a compiler knows, but
    // not of this.
    const CS_BYTE *widths_;
    const CS_TYPE_MAP *types_;
    const CS_NORM_MAP *norms_;
};

// What whole_characters() finds.
struct WholeCharacters {
    CS_INT count;      // of the whole characters
    CS_INT bytes;      // of the whole characters
    CS_INT before_end; // of the character that the end splits; both parts are 0 when it splits none
    CS_INT behind_end;
};

// Counts the whole characters of start to end. A range without bytes, or with its end in front, has none.
inline WholeCharacters whole_characters(const Walker &walker, const CS_BYTE *start, const CS_BYTE *end) {
    if (start >= end)
        return {0, 0, 0, 0};
    const std::ptrdiff_t range = end - start;
    std::ptrdiff_t count = 0;
    std::ptrdiff_t position = 0;
    CS_INT bytes = 1;
    while (position < range) {
        if (bytes == 1) {
            const std::ptrdiff_t run = walker.single_byte_run(start + position, range - position);
            position += run;
            count += run;
            if (position == range)
                break;
        }
        bytes = walker.step(start + position);
        const std::ptrdiff_t rest = range - position;
        if (bytes > rest)
            return {static_cast<CS_INT>(count), static_cast<CS_INT>(position), static_cast<CS_INT>(rest),
                    static_cast<CS_INT>(bytes - rest)};
        position += bytes;
        ++count;
    }
    return {static_cast<CS_INT>(count), static_cast<CS_INT>(position), 0, 0};
}

// Normalizes `src_len` bytes at `src` into `dest` until they are used up or `limit` bytes are out, and answers
// the bytes written. A character without an ASCII form goes out whole, also when it passes `src_len` or
// `limit`. `dest` may be `src`: nothing is written ahead of what has been read.
inline CS_INT normalize(const Walker &walker, const CS_BYTE *src, CS_INT src_len, CS_BYTE *dest,
                        CS_INT limit = std::numeric_limits<CS_INT>::max()) {
    std::ptrdiff_t taken = 0;
    std::ptrdiff_t written = 0;
    CS_INT bytes = 1;
    while (taken < src_len && written < limit) {
        if (bytes == 1) {
            const std::ptrdiff_t room = std::min<std::ptrdiff_t>(src_len - taken, limit - written);
            const std::ptrdiff_t run = walker.single_byte_run(src + taken, room);
            for (std::ptrdiff_t i = 0; i < run; ++i) {
                const CS_BYTE c = src[taken + i];
                const CS_BYTE ascii = walker.single_byte_to_ascii(c);
                dest[written + i] = ascii != 0 ? ascii : c;
            }
            taken += run;
            written += run;
            if (run == room)
                continue;
        }
        const CS_BYTE *p = src + taken;
        bytes = walker.step(p);
        if (const CS_BYTE ascii = walker.to_ascii(p)) {
            dest[written++] = ascii;
        } else {
            for (CS_INT i = 0; i < bytes; ++i)
                dest[written++] = p[i];
        }
        taken += bytes;
    }
    return static_cast<CS_INT>(written);
}

} // namespace dlx

#endif
