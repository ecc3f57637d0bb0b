// Money to and from text.
//
// Writing composes the text in three words, right-aligned, and stores what counts of them at the end of the caller's
// bytes. Reading walks by the rules of the text's character set; the plain form that nearly all money has is read
// sixteen bytes at a time, where these have no other meaning in the set.

#include "charset/walk.h"
#include "kernel/digits.h"
#include "money/count.h"

#include <algorithm>

namespace dlx {
namespace {

// ---- Writing ----

constexpr int STYLE_SEPARATORS = 1;
constexpr int STYLE_DECIMALS_SHIFT = 8;
constexpr int DEFAULT_DECIMALS = 2;

constexpr int GROUP = 3; // digits between separators

constexpr int WORD_BYTES = 8;
constexpr limb EIGHT_DIGITS = 100000000;

// Rounding by the last digit that is dropped, as an addition: half of the last digit kept.
constexpr limb ROUNDING[MONEY_PLACES + 1] = {5000, 500, 50, 5, 0};

int decimals_of(int style) {
    const int decimals = style >> STYLE_DECIMALS_SHIFT;
    return decimals <= 0 ? DEFAULT_DECIMALS : std::min(decimals, MONEY_PLACES);
}

// The last 24 bytes of a text, in which all money but its sign has room. A word's lowest byte is its first character.
// What stands in front of the text has no meaning.
struct TextWords {
    std::uint64_t first;
    std::uint64_t middle;
    std::uint64_t last;
};

// The word that begins at byte `from` (0 to 7) of the earlier one of two.
std::uint64_t word_from(int from, std::uint64_t earlier, std::uint64_t later) {
    return earlier >> 8 * from | later << 1 << (63 - 8 * from);
}

// A separator and the three digits that end before byte `end` of a pair of words.
std::uint64_t group_of(double_limb digits, int end) {
    return (static_cast<std::uint32_t>(digits >> 8 * (end - GROUP - 1)) & 0xFFFFFF00) | ',';
}

// The digits of a value below 10^15, with separators if they are wanted. Tells how many digits count, which are those
// without leading zeros, but one at least, and how many bytes these take, without a separator in front.
TextWords integer_text(limb value, bool separated, int &digits, int &bytes) {
    const std::uint64_t low = eight_digits(static_cast<std::uint32_t>(value % EIGHT_DIGITS));
    std::uint64_t high = 0;
    if (value < EIGHT_DIGITS) {
        constexpr std::uint64_t LAST_DIGIT = std::uint64_t{1} << 56; // a zero counts there
        digits = 8 - std::countr_zero(low | LAST_DIGIT) / 8;
    } else {
        high = eight_digits(static_cast<std::uint32_t>(value / EIGHT_DIGITS));
        digits = 16 - std::countr_zero(high) / 8;
    }
    bytes = digits;
    const TextWords plain = {0, high | ZERO_DIGITS, low | ZERO_DIGITS};
    if (!separated)
        return plain;
    bytes += (digits - 1) / GROUP;
    const double_limb text = static_cast<double_limb>(plain.last) << 64 | plain.middle;
    return {group_of(text, 4) << 32, group_of(text, 10) << 32 | group_of(text, 7),
            group_of(text, 16) << 32 | group_of(text, 13)};
}

// The same text with a point and `decimals` digits of a value below 10^4 behind it.
TextWords with_decimals(const TextWords &text, limb value, int decimals) {
    const std::uint64_t four = (eight_digits(static_cast<std::uint32_t>(value)) | ZERO_DIGITS) >> 32;
    const std::uint64_t tail = four << 8 | '.';
    const int behind = 1 + decimals;
    return {word_from(behind, text.first, text.middle), word_from(behind, text.middle, text.last),
            word_from(behind, text.last, tail)};
}

// Stores the last `bytes` (3 to 24) of the words in front of `end`, nothing else, and answers where they begin.
char *store_text(const TextWords &text, int bytes, char *end) {
    char *const to = end - bytes;
    if (bytes > 2 * WORD_BYTES) {
        store(to, word_from(3 * WORD_BYTES - bytes, text.first, text.middle));
        store(end - 2 * WORD_BYTES, text.middle);
        store(end - WORD_BYTES, text.last);
    } else if (bytes > WORD_BYTES) {
        store(to, word_from(2 * WORD_BYTES - bytes, text.middle, text.last));
        store(end - WORD_BYTES, text.last);
    } else {
        const std::uint64_t front = text.last >> 8 * (WORD_BYTES - bytes);
        if (bytes >= 4) {
            store(to, static_cast<std::uint32_t>(front));
            store(end - 4, static_cast<std::uint32_t>(text.last >> 32));
        } else {
            store(to, static_cast<std::uint16_t>(front));
            end[-1] = static_cast<char>(text.last >> 56);
        }
    }
    return to;
}

// The text at the end of the `len` bytes of `cp`, or null, and nothing written, when it does not fit.
//
// Where separators are asked for and the digits end with a whole group, the byte in front of a value without a sign is
// blanked if there is one: a separator was due there.
char *write_text(Count count, char *cp, int len, int style) {
    const bool separated = (style & 0xFF) == STYLE_SEPARATORS;
    const int decimals = decimals_of(style);
    const limb rounded = magnitude_of(count) + ROUNDING[decimals];

    int digits;
    int bytes;
    const TextWords integer = integer_text(rounded / MONEY_UNIT, separated, digits, bytes);
    bytes += 1 + decimals;
    const int sign = count < 0;
    if (bytes + sign > len)
        return nullptr;
    char *const number = store_text(with_decimals(integer, rounded % MONEY_UNIT, decimals), bytes, cp + len);
    // Without a sign its first digit is stored once more: signs are as good as random.
    char *const text = number - sign;
    const char first = *number;
    *text = sign != 0 ? '-' : first;
    if (separated && digits % GROUP == 0 && text != cp && sign == 0)
        text[-1] = ' ';
    return text;
}

// ---- Reading ----

// The characters of a text, each looked at only as far as the text reaches. One that the end cuts has no meaning: it
// is neither a digit nor space.
template <bool SINGLE_BYTE>
class Characters {
public:
    Characters(Walker walker, const CS_BYTE *begin, const CS_BYTE *end) : walker_(walker), next_(begin), end_(end) {
        measure();
    }

    bool ended() const { return next_ >= end_; }
    CS_BYTE ascii() {
        if constexpr (SINGLE_BYTE)
            return walker_.single_byte_to_ascii(*next_);
        return whole_ ? walker_.to_ascii(window()) : 0;
    }
    bool is_currency() { return !ended() && whole_ && (walker_.lex(window()) & CS_LEX_CURRENCY) != 0; }
    bool is_space() { return whole_ && walker_.type_bits(window(), CS_CT_SPACE) != 0; }
    void step() {
        next_ += width_;
        measure();
    }

private:
    // Width and class may hang on a second byte. Behind the last byte of the text a zero byte stands for it.
    const CS_BYTE *window() {
        if (end_ - next_ > 1)
            return next_;
        last_[0] = *next_;
        return last_;
    }
    void measure() {
        if constexpr (!SINGLE_BYTE) {
            if (ended())
                return;
            width_ = walker_.step(window());
            whole_ = width_ <= end_ - next_;
        }
    }

    Walker walker_;
    const CS_BYTE *next_;
    const CS_BYTE *end_;
    CS_BYTE last_[2] = {};
    CS_INT width_ = 1;
    bool whole_ = true;
};

// Digits since the last separator, from a start that lets the first group be of any length up to three.
constexpr int NO_GROUP_YET = -4;
constexpr int NO_POINT_YET = -1;

// What is still to be multiplied on for the decimals that a text gave.
constexpr CS_UINT MISSING_DECIMALS[MONEY_PLACES] = {10000, 1000, 100, 10};

// The largest count that every further digit leaves in range, and one more: 922337203685477580.
constexpr Count BEFORE_LAST_DIGIT = LARGEST_COUNT / 10;

// Takes a digit into the count. The smallest count has no positive form to be reached through, so it is made here
// when its last digit comes behind a minus sign.
int take_digit(Count &value, CS_UINT digit, bool negative) {
    if (static_cast<limb>(value) < static_cast<limb>(BEFORE_LAST_DIGIT)) [[likely]] {
        value = value * 10 + digit;
        return NUME_OK;
    }
    if (negative && value == BEFORE_LAST_DIGIT && digit == 8) {
        value = SMALLEST_COUNT;
        return NUME_OK;
    }
    return scale_count(value, 10, digit);
}

// Reads the text into `value`, which holds what was read so far if that fails.
//
// Oddities that callers see: a separator may stand wherever no group was begun, so in front of all digits and among
// the first decimals too; it may follow seven digits, since three are then counted; and the digits behind the last
// one are not counted. Decimals past the fifth are not even counted, and the fifth alone decides the rounding.
template <bool SINGLE_BYTE>
int read_money(Characters<SINGLE_BYTE> text, Count &value) {
    value = 0;
    bool has_sign = false;
    bool negative = false;
    bool has_currency = false;
    for (; !text.ended(); text.step()) {
        const CS_BYTE c = text.ascii();
        if (c == '+' || c == '-') {
            if (has_sign)
                return NUME_BADVALUE;
            has_sign = true;
            negative = c == '-';
        } else if (c == ' ') {
            continue;
        } else if (text.is_currency()) {
            if (has_currency)
                return NUME_BADVALUE;
            has_currency = true;
        } else {
            break;
        }
    }

    int decimals = NO_POINT_YET;
    int group = NO_GROUP_YET;
    for (; !text.ended(); text.step()) {
        const CS_BYTE c = text.ascii();
        const CS_UINT digit = static_cast<CS_UINT>(c) - '0';
        if (digit <= 9) {
            if (decimals < MONEY_PLACES) {
                ++group;
                decimals += decimals != NO_POINT_YET;
                if (take_digit(value, digit, negative) != NUME_OK)
                    return NUME_OVERFLOW;
            } else if (decimals == MONEY_PLACES) {
                ++decimals;
                if (value == SMALLEST_COUNT && digit != 0)
                    return NUME_OVERFLOW;
                value = static_cast<Count>(static_cast<limb>(value) + (digit >= 5));
            }
        } else if (c == '.' && decimals == NO_POINT_YET) {
            decimals = 0;
        } else if (c == ',' && (group < 0 || group == GROUP)) {
            group = 0;
        } else {
            break;
        }
    }

    for (; !text.ended(); text.step())
        if (!text.is_space())
            return NUME_BADVALUE;
    if (decimals < MONEY_PLACES && scale_count(value, MISSING_DECIMALS[std::max(decimals, 0)], 0) != NUME_OK)
        return NUME_OVERFLOW;
    if (value == SMALLEST_COUNT)
        return negative ? NUME_OK : NUME_OVERFLOW;
    if (negative)
        value = -value;
    return NUME_OK;
}

// ---- Reading the plain form ----

constexpr int PLAIN_BYTES = 2 * WORD_BYTES;

// Sixteen digits as two words of text.
struct PlainDigits {
    std::uint64_t first;
    std::uint64_t last;
};

// The first `bytes` (0 to 8) of a word moved to its end, with zeros in front.
constexpr std::uint64_t fill_front(std::uint64_t word, int bytes) {
    const int half = 4 * (WORD_BYTES - bytes); // two shifts, since one by all 64 bits would be none
    return (word << half << half) | (ZERO_DIGITS & ~(~std::uint64_t{0} << half << half));
}

// The 0 to 16 bytes at `from`, with zeros in front, and no byte around them read.
PlainDigits load_plain(const CS_BYTE *from, int bytes) {
    if (bytes >= WORD_BYTES)
        return {fill_front(load<std::uint64_t>(from), bytes - WORD_BYTES),
                load<std::uint64_t>(from + bytes - WORD_BYTES)};
    std::uint64_t word = 0;
    if (bytes >= 4)
        word = load<std::uint32_t>(from) | std::uint64_t{load<std::uint32_t>(from + bytes - 4)} << 8 * (bytes - 4);
    else
        for (int i = 0; i < bytes; ++i)
            word |= static_cast<std::uint64_t>(from[i]) << 8 * i;
    return {ZERO_DIGITS, fill_front(word, bytes)};
}

// Takes the point out of the digits, which close up from the front; answers the decimals behind it, 0 without one.
// Only the last word is looked at: in the first one a point has too many digits behind it.
int take_point(PlainDigits &digits) {
    constexpr std::uint64_t POINTS = 0x2E2E2E2E2E2E2E2E, ONES = 0x0101010101010101, TOP_BITS = 0x8080808080808080;
    const std::uint64_t others = digits.last ^ POINTS;
    const std::uint64_t found = (others - ONES) & ~others & TOP_BITS;
    if (found == 0)
        return 0;
    const int at = std::countr_zero(found) & ~7;
    const std::uint64_t behind = ~std::uint64_t{0} << at << 8;
    const std::uint64_t before = digits.last & ~(~std::uint64_t{0} << at);
    digits.last = (digits.last & behind) | before << 8 | digits.first >> 56;
    digits.first = digits.first << 8 | '0';
    return WORD_BYTES - 1 - at / 8;
}

// Reads text of the form that nearly all money has: a sign or none, up to sixteen digits with at most one point among
// them and at most four behind it, and nothing else. False for any other text.
bool read_plain(const CS_BYTE *from, int bytes, Count &value) {
    if (bytes == 0)
        return false;
    const bool negative = *from == '-';
    const int sign = negative | (*from == '+');
    from += sign;
    bytes -= sign;
    if (bytes > PLAIN_BYTES)
        return false;
    PlainDigits digits = load_plain(from, bytes);
    const int decimals = take_point(digits);
    if (decimals > MONEY_PLACES || !are_eight_digits(digits.first) || !are_eight_digits(digits.last))
        return false;
    constexpr limb SCALES[MONEY_PLACES + 1] = {10000, 1000, 100, 10, 1};
    const limb number = value_of_eight_digits(digits.first) * EIGHT_DIGITS + value_of_eight_digits(digits.last);
    // Below 10^16 * 10^4, so the product may pass a count, and even the word.
    const double_limb magnitude = static_cast<double_limb>(number) * SCALES[decimals];
    if (magnitude > static_cast<limb>(LARGEST_COUNT))
        return false;
    value = signed_count(static_cast<limb>(magnitude), negative);
    return true;
}

// Whether text of the plain form has no other meaning in the set: a byte may stand for another or for none, or be a
// currency symbol where one is looked for.
bool means_itself(const Walker &walker, const CS_BYTE *from, int bytes) {
    bool itself = true;
    for (int i = 0; i < bytes; ++i)
        itself &= walker.stands_for_itself(from[i]);
    const int sign = *from == '-' || *from == '+';
    return itself && !Characters<true>(walker, from + sign, from + bytes).is_currency();
}

int read_text(const char *text, int length, const CHAR_ATTRIB *set, Count &value) {
    const auto *const begin = reinterpret_cast<const CS_BYTE *>(text);
    const int bytes = std::max(length, 0);
    const CS_BYTE *const end = begin + bytes;
    const Walker walker(set);
    if (read_plain(begin, bytes, value))
        if (set == nullptr || set == &ISO_1_char_attrib || means_itself(walker, begin, bytes))
            return NUME_OK;
    return walker.is_single_byte() ? read_money(Characters<true>(walker, begin, end), value)
                                   : read_money(Characters<false>(walker, begin, end), value);
}

} // namespace
} // namespace dlx

using namespace dlx;

// ---- To text ----

char *com__mnytochar(CS_MONEY *mp, char *cp, int len, int style) {
    return has_operands(COM_HERE, mp, cp) ? write_text(load_count(mp), cp, len, style) : nullptr;
}
char *com__mny4tochar(CS_MONEY4 *m4p, char *cp, int len, int style) {
    return has_operands(COM_HERE, m4p, cp) ? write_text(load<CS_INT>(m4p), cp, len, style) : nullptr;
}
char *com_cvtmnytochar(CS_MONEY *mp, char *cp, int len, int style) {
    return has_operands(COM_HERE, mp, cp) ? write_text(load_count(mp), cp, len, style) : nullptr;
}
char *com_cvtmny4tochar(CS_MONEY4 *m4p, char *cp, int len, int style) {
    return has_operands(COM_HERE, m4p, cp) ? write_text(load<CS_INT>(m4p), cp, len, style) : nullptr;
}
// The count of decimals joins the one that style has already, bit by bit.
char *com_precmnytochar(CS_MONEY *mp, char *cp, int len, int style, int prec) {
    const auto decimals = static_cast<CS_UINT>(prec) << STYLE_DECIMALS_SHIFT;
    const auto joined = static_cast<int>(static_cast<CS_UINT>(style) | decimals);
    return has_operands(COM_HERE, mp, cp) ? write_text(load_count(mp), cp, len, joined) : nullptr;
}

// ---- From text ----

int com__mnyfromchar_mb(CS_MONEY *mp, char *icp, int ilen, int, CHAR_ATTRIB *chatr) {
    if (!has_operands(COM_HERE, mp, icp))
        return NUME_OVERFLOW;
    Count count;
    const int code = read_text(icp, ilen, chatr, count);
    store_count(mp, count);
    return code;
}
int com__mny4fromchar_mb(CS_MONEY4 *m4p, char *icp, int ilen, int, CS_ATTRIB *chatr) {
    if (!has_operands(COM_HERE, m4p, icp))
        return NUME_OVERFLOW;
    Count count;
    int code = read_text(icp, ilen, chatr, count);
    CS_INT word = 0;
    if (code == NUME_OK && !narrow_count(count, word))
        code = NUME_OVERFLOW;
    store(m4p, word);
    return code;
}
