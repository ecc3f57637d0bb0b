// Money text by the rules as they are told, one step after the other and slowly; and character sets to read it in.
#ifndef TESTS_SUPPORT_MONEY_TEXT_H
#define TESTS_SUPPORT_MONEY_TEXT_H

#include "support/charsets.h"
#include "support/money.h"
#include "support/naive_walk.h"

#include <dlxcomn/dlxcomn.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace support {

// ---- Character sets ----

// One byte a character and classes only: the letters A to J read as digits, "~" as a second kind of blank.
class LettersAsDigits : public ConstructedSet {
public:
    LettersAsDigits() : ConstructedSet(1, 0) {
        without_width_map();
        for (int digit = 0; digit < 10; ++digit)
            type(0, 'A' + digit, {'A', static_cast<CS_BYTE>('0' + digit), CS_LEX_IDENT, CS_CT_UPPER});
        type(0, '~', {'~', ' ', 0, CS_CT_SPACE});
    }
};

// One byte a character, normalized: 0xB0 to 0xB9 are digits, 0xAC a comma, 0xAE a point, 0xAD a minus sign.
class NormalizedBytes : public ConstructedSet {
public:
    NormalizedBytes() : ConstructedSet(1, 1) {
        without_width_map();
        for (int digit = 0; digit < 10; ++digit)
            norm(0, 0xB0 + digit, '0' + digit);
        norm(0, 0xAC, ',').norm(0, 0xAE, '.').norm(0, 0xAD, '-');
    }
};

// No tables at all: bytes stand for themselves, and nothing is space or currency.
class BareBytes : public ConstructedSet {
public:
    BareBytes() : ConstructedSet(0, 0) { without_width_map(); }
};

// One byte a character, but what 0x81 is hangs on the byte behind it, which is the next character or none.
class RowsWithoutWidth : public ConstructedSet {
public:
    RowsWithoutWidth() : ConstructedSet(2, 0) {
        without_width_map();
        type_row(0x81, 1);
        type(1, 0, {0, 0, 0, CS_CT_SPACE});
        type(1, ' ', {0, 0, 0, CS_CT_SPACE});
        type(1, '5', {0, 0, CS_LEX_CURRENCY, 0});
    }
};

// The double-byte set with a byte of width 0, which begins no character, and one that opens three bytes.
class UnevenWidths : public DoubleByteSet {
public:
    UnevenWidths() { width(0x80, 0x80, 0, 1).width(0xFD, 0xFD, 3, 2); }
};

// Widths as in UTF-8, without normalization: what a character reads as hangs on its first byte. All of U+2000 to
// U+2FFF is currency, the euro sign among it.
class Utf8Like : public ConstructedSet {
public:
    Utf8Like() : ConstructedSet(1, 0) {
        width(0xC2, 0xDF, 2, 1).width(0xE0, 0xEF, 3, 2).width(0xF0, 0xF4, 4, 2);
        type(0, 0xE2, {0, 0, CS_LEX_CURRENCY, 0});
    }
};

inline std::vector<std::shared_ptr<ConstructedSet>> text_sets() {
    return {std::make_shared<LettersAsDigits>(),  std::make_shared<NormalizedBytes>(), std::make_shared<BareBytes>(),
            std::make_shared<RowsWithoutWidth>(), std::make_shared<DoubleByteSet>(),   std::make_shared<FourByteSet>(),
            std::make_shared<ThreeByteSet>(),     std::make_shared<UnevenWidths>(),    std::make_shared<Utf8Like>()};
}

// The wide form of ASCII text in the double-byte sets.
inline std::string wide(std::string_view ascii) {
    std::string text;
    for (const char c : ascii) {
        text += static_cast<char>(WIDE_LEAD);
        text += static_cast<char>(static_cast<CS_BYTE>(c) + 0x80);
    }
    return text;
}

// ---- Reading, as told ----

struct ToldCharacter {
    int ascii = 0;
    bool currency = false;
    bool space = false;
};

// The characters of a text. Where a rule looks at a second byte, there is a zero byte behind the text; a character that
// the end cuts is nothing at all.
inline std::vector<ToldCharacter> told_characters(std::string_view text, const CHAR_ATTRIB *set) {
    const std::string bytes = std::string(text) + '\0';
    std::vector<ToldCharacter> characters;
    for (std::size_t position = 0; position < text.size();) {
        const auto *const p = reinterpret_cast<const CS_BYTE *>(bytes.data()) + position;
        ToldCharacter character;
        position += static_cast<std::size_t>(naive::step(set, p));
        if (position <= text.size()) {
            character.ascii = naive::to_ascii(set, p);
            character.currency = (naive::entry(set, p).char_lex & CS_LEX_CURRENCY) != 0;
            character.space = (naive::entry(set, p).char_type & CS_CT_SPACE) != 0;
        }
        characters.push_back(character);
    }
    return characters;
}

// A code, and the count that was read or, after a failure, what was read of it.
inline Answer told_read(std::string_view text, const CHAR_ATTRIB *set) {
    const std::vector<ToldCharacter> characters = told_characters(text, set);
    Wide value = 0;
    int sign = 0;
    int frac = -1;
    int group = -4;
    bool is_smallest = false;
    bool currency_seen = false;
    const auto answer = [&](int code) {
        return Answer{code, static_cast<std::int64_t>(static_cast<std::uint64_t>(value))};
    };
    const auto scale = [&](Wide by, Wide digit) {
        const Wide scaled = (value < 0 ? -value : value) * by + digit;
        if (scaled > LARGEST)
            return false;
        value = value < 0 ? -scaled : scaled;
        return true;
    };

    std::size_t i = 0;
    for (; i < characters.size(); ++i) {
        const ToldCharacter &character = characters[i];
        if (character.ascii == '+' || character.ascii == '-') {
            if (sign != 0)
                return answer(2);
            sign = character.ascii == '-' ? -1 : 1;
        } else if (character.ascii == ' ') {
        } else if (character.currency) {
            if (currency_seen)
                return answer(2);
            currency_seen = true;
        } else {
            break;
        }
    }
    for (; i < characters.size(); ++i) {
        const int c = characters[i].ascii;
        if (c >= '0' && c <= '9') {
            const int digit = c - '0';
            if (frac < 4) {
                ++group;
                if (frac >= 0)
                    ++frac;
                if (sign < 0 && value == 922337203685477580 && digit == 8) {
                    value = SMALLEST;
                    is_smallest = true;
                } else if (!scale(10, digit)) {
                    return answer(1);
                }
            } else if (frac == 4) {
                if (is_smallest && digit >= 1)
                    return answer(1);
                if (digit >= 5)
                    ++value;
                ++frac;
            }
        } else if (c == '.' && frac < 0) {
            frac = 0;
        } else if (c == ',' && (group < 0 || group == 3)) {
            group = 0;
        } else {
            break;
        }
    }
    for (; i < characters.size(); ++i)
        if (!characters[i].space)
            return answer(2);
    if (frac < 4) {
        constexpr int FACTORS[] = {10000, 1000, 100, 10};
        if (!scale(FACTORS[frac < 0 ? 0 : frac], 0))
            return answer(1);
    }
    if (value >= 0 && value <= LARGEST) {
        if (sign < 0)
            value = -value;
        return answer(0);
    }
    return answer((value == SMALLEST || value == -Wide{SMALLEST}) && sign < 0 ? 0 : 1);
}

// ---- Writing, as told ----

// The bytes of a buffer of `len` bytes that was full of `filler`, and where in it the text begins; no place when the
// text does not fit.
struct ToldText {
    std::optional<std::size_t> start;
    std::string buffer;
};

inline ToldText told_write(std::int64_t count, int len, int style, char filler) {
    // On a buffer with room for all, first.
    std::string room(64, filler);
    std::size_t place = room.size();
    const bool separated = (style & 0xFF) == 1;
    int decimals = style >> 8;
    if (decimals <= 0)
        decimals = 2;
    if (decimals > 4)
        decimals = 4;
    Wide value = magnitude(count);
    int last = 0;
    for (int have = 4; have > decimals; --have) {
        last = static_cast<int>(value % 10);
        value /= 10;
    }
    if (last > 4)
        ++value;
    for (int i = 0; i < decimals; ++i) {
        room[--place] = static_cast<char>('0' + static_cast<int>(value % 10));
        value /= 10;
    }
    room[--place] = '.';
    int digits = 0;
    do {
        room[--place] = static_cast<char>('0' + static_cast<int>(value % 10));
        value /= 10;
        if (++digits % 3 == 0 && separated)
            room[--place] = ',';
    } while (value != 0);
    if (room[place] == ',')
        room[place++] = ' ';
    if (count < 0)
        room[--place] = '-';

    const std::size_t bytes = room.size() - place;
    if (len < 0 || bytes > static_cast<std::size_t>(len))
        return {std::nullopt, std::string(static_cast<std::size_t>(len < 0 ? 0 : len), filler)};
    const auto length = static_cast<std::size_t>(len);
    const std::string end =
        length <= room.size() ? room.substr(room.size() - length) : std::string(length - room.size(), filler) + room;
    return {length - bytes, end};
}

} // namespace support

#endif
