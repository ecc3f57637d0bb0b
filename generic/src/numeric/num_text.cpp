// Exact numerics from text and to text.
//
// Reading has two ways to one result. Plain text, in which every digit can be kept, is taken in by runs of up to
// nineteen digits. Everything else (an exponent, digits to drop, a broken text) goes through the rule digit by
// digit: what it drops, and what it does not look at any more, is decided by the digits before.
#include "diag/check.h"
#include "kernel/digits.h"
#include "numeric/decimal.h"

#include <cstdint>
#include <cstring>

namespace dlx {
namespace {

// ---- Digits in ---------------------------------------------------------------------------------

constexpr bool is_digit(char c) { return static_cast<unsigned char>(c - '0') <= 9; }
constexpr bool is_sign_or_blank(char c) { return c == ' ' || c == '+' || c == '-'; }

// The top bit of each byte that is no digit.
constexpr std::uint64_t non_digits(std::uint64_t word) {
    const std::uint64_t digits = word ^ ZERO_DIGITS;
    return (((digits & 0x7F7F7F7F7F7F7F7F) + 0x7676767676767676) | digits) & 0x8080808080808080;
}

const char *skip_digits(const char *p, const char *end) {
    for (; end - p >= 8; p += 8)
        if (const std::uint64_t others = non_digits(load<std::uint64_t>(p)); others != 0)
            return p + std::countr_zero(others) / 8;
    while (p != end && is_digit(*p))
        ++p;
    return p;
}

const char *skip_zeros(const char *p, const char *end) {
    while (p != end && *p == '0')
        ++p;
    return p;
}

// The value of `count` (0 to 19) digits.
limb read_limb(const char *p, int count) {
    limb value = 0;
    for (; count >= 8; p += 8, count -= 8)
        value = value * small_power_of_ten(8) + value_of_eight_digits(load<std::uint64_t>(p));
    for (; count > 0; ++p, --count)
        value = value * 10 + static_cast<limb>(*p - '0');
    return value;
}

// Puts `count` digits behind those of m, which has room for them.
void append_digits(Magnitude &m, const char *p, int count) {
    if (const int head = count % LIMB_DIGITS; head != 0) {
        const limb value = read_limb(p, head);
        if (is_zero(m))
            m.at[0] = value;
        else
            multiply_add(m, small_power_of_ten(head), value);
        p += head;
        count -= head;
    }
    for (; count != 0; p += LIMB_DIGITS, count -= LIMB_DIGITS)
        multiply_add(m, LIMB_POWER, read_limb(p, LIMB_DIGITS));
}

// Digits that come one by one: they gather in a limb before they reach the magnitude.
class DigitCollector {
public:
    void take(unsigned digit) {
        run_ = run_ * 10 + digit;
        if (++count_ == LIMB_DIGITS)
            flush();
    }
    // False when the sum does not fit a value of `length` bytes.
    bool add_one(int length) {
        flush();
        return multiply_add(magnitude_, 1, 1) == 0 && significant_bytes(magnitude_) < length;
    }
    const Magnitude &magnitude() {
        flush();
        return magnitude_;
    }

private:
    void flush() {
        multiply_add(magnitude_, small_power_of_ten(count_), run_);
        run_ = 0;
        count_ = 0;
    }

    Magnitude magnitude_ = {};
    limb run_ = 0;
    int count_ = 0;
};

// ---- Reading -----------------------------------------------------------------------------------

// What the caller's arguments ask for.
struct Target {
    int length; // bytes of the value
    int max_digits;
    int scale; // above 77: from the text
    bool may_drop;

    bool has_scale() const { return scale <= CS_MAX_SCALE; }
};

// What the text was found to say: (magnitude) * 10^(exponent), once the kept digits behind the point are counted in.
struct Reading {
    Magnitude magnitude = {};
    bool negative = false;
    std::int64_t frac = -1;    // digits behind the point; -1 before one is seen
    std::int64_t seen = 0;     // digits kept
    std::int64_t sig = 0;      // of these, from the first that is not zero on
    std::int64_t dropped = 0;
    std::int64_t exponent = 0;
};

// Reads blanks, a sign, digits with a point and blanks, if that is the whole text and no digit is to be dropped.
// False, with nothing read, for any other text.
bool read_plain(const char *p, const char *end, const Target &target, Reading &reading) {
    bool has_sign = false;
    bool negative = false;
    for (; p != end && is_sign_or_blank(*p); ++p)
        if (*p != ' ') {
            if (has_sign)
                return false;
            has_sign = true;
            negative = *p == '-';
        }
    const char *const whole = p;
    const char *const whole_end = p = skip_digits(p, end);
    const bool has_point = p != end && *p == '.';
    const char *const fraction = p = p + has_point;
    const char *const fraction_end = p = has_point ? skip_digits(p, end) : p;
    while (p != end && *p == ' ')
        ++p;
    if (p != end)
        return false;

    const char *const whole_first = skip_zeros(whole, whole_end);
    const char *const fraction_first = whole_first == whole_end ? skip_zeros(fraction, fraction_end) : fraction;
    const std::ptrdiff_t sig = (whole_end - whole_first) + (fraction_end - fraction_first);
    const std::ptrdiff_t frac = fraction_end - fraction;
    if (sig > target.max_digits || frac > target.scale)
        return false;

    const auto whole_count = static_cast<int>(whole_end - whole_first);
    const auto fraction_count = static_cast<int>(fraction_end - fraction_first);
    if (whole_count + fraction_count <= LIMB_DIGITS) { // most values are one limb
        reading.magnitude.at[0] = read_limb(whole_first, whole_count) * small_power_of_ten(fraction_count) +
                                  read_limb(fraction_first, fraction_count);
    } else {
        append_digits(reading.magnitude, whole_first, whole_count);
        append_digits(reading.magnitude, fraction_first, fraction_count);
    }
    reading.negative = negative;
    reading.frac = frac;
    reading.seen = (whole_end - whole) + frac;
    reading.sig = sig;
    return true;
}

bool is_space(char c) { return com_isspace(static_cast<CS_BYTE>(c)) != 0; }

// An exponent beyond every text and every scale: larger ones all mean the same, but for their low byte.
constexpr std::int64_t EXPONENT_LIMIT = std::int64_t{1} << 48;

// Reads an exponent up to its NUL. Callers rely on the difference that the length makes: white space may follow from
// the third position on, so behind two digits and not behind one ("1e05 " is a number, "1e5 " is not). No digit at
// all is the exponent 0.
bool read_exponent(const char *p, std::int64_t &exponent) {
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    const char *const first = p;
    for (; is_digit(*p); ++p) {
        exponent = exponent * 10 + (*p - '0');
        if (exponent >= EXPONENT_LIMIT)
            exponent = EXPONENT_LIMIT + exponent % 256;
    }
    if (negative)
        exponent = -exponent;
    if (*p != '\0' && p - first < 2)
        return false;
    while (is_space(*p))
        ++p;
    return *p == '\0';
}

// Reads any text by the rule.
int read_stepwise(const char *p, const char *end, const Target &target, Reading &reading) {
    const auto length = static_cast<std::size_t>(end - p);
    const void *mark = std::memchr(p, 'e', length);
    if (mark == nullptr)
        mark = std::memchr(p, 'E', length);
    // Digits behind the point that are kept. An exponent moves the point first, so this can be below zero, and then
    // no digit is kept at all.
    std::int64_t limit = target.scale;
    if (mark != nullptr) {
        if (!read_exponent(static_cast<const char *>(mark) + 1, reading.exponent))
            return NUME_BADVALUE;
        limit += reading.exponent;
    }

    bool has_sign = false;
    for (; p != end && is_sign_or_blank(*p); ++p)
        if (*p != ' ') {
            if (has_sign)
                return NUME_BADVALUE;
            has_sign = true;
            reading.negative = *p == '-';
        }

    DigitCollector digits;
    for (; p != end; ++p) {
        if (!is_digit(*p)) {
            if (*p == '.' && reading.frac < 0) {
                reading.frac = 0;
                continue;
            }
            if (*p != 'e' && *p != 'E')
                for (; p != end; ++p)
                    if (!is_space(*p))
                        return NUME_BADVALUE;
            break;
        }
        const auto digit = static_cast<unsigned>(*p - '0');
        if (reading.sig < target.max_digits && reading.frac < limit) {
            ++reading.seen;
            if (reading.frac >= 0)
                ++reading.frac;
            if (digit != 0 || reading.sig != 0)
                ++reading.sig;
            digits.take(digit);
            continue;
        }
        if (!target.may_drop)
            return NUME_TRUNCATED;
        // Only the first fraction digit lost rounds. Before the point frac is -1, and where the exponent puts the
        // limit there too, each dropped digit from 5 up adds one: callers see 523e-1 become 100 at scale 0.
        if (digit >= 5 && reading.frac == limit) {
            if (!digits.add_one(target.length))
                return NUME_OVERFLOW;
            if (reading.sig == 0)
                reading.sig = 1;
        }
        ++reading.dropped;
        if (reading.frac >= 0) {
            ++reading.frac;
            break; // what stands behind the first fraction digit lost is not looked at, not even for syntax
        }
    }
    reading.magnitude = digits.magnitude();
    return NUME_OK;
}

int read_text(const char *p, const char *end, const Target &target, Reading &reading) {
    return read_plain(p, end, target, reading) ? NUME_OK : read_stepwise(p, end, target, reading);
}

// The magnitude times 10^places, for places from 0 up.
int rescale(Magnitude &m, std::int64_t places, int length) {
    if (places == 0)
        return NUME_OK;
    if (places > CS_MAX_SCALE)
        return NUME_BADVALUE;
    return shift_up(m, static_cast<int>(places), length) ? NUME_OK : NUME_OVERFLOW;
}

// Brings what was read to the scale that is asked for, or tells the scale that it has.
int apply_scale(const Target &target, Reading &reading, CS_BYTE *scale) {
    if (reading.frac < 0)
        reading.frac = 0;
    reading.exponent += reading.dropped - reading.frac;
    if (target.has_scale()) {
        const std::int64_t places = target.scale + reading.exponent;
        if (reading.seen < -places) {
            if (!target.may_drop)
                return NUME_TRUNCATED;
            reading.magnitude = {};
            return NUME_OK;
        }
        // Digits were kept only up to the scale, so from here on there is none to cut: places is not negative.
        return rescale(reading.magnitude, places, target.length);
    }
    if (reading.exponent > 0) {
        *scale = 0;
        return rescale(reading.magnitude, reading.exponent, target.length);
    }
    // A negative exponent without fraction digits is left to the scale byte: 5e-3 has the byte 253.
    *scale = static_cast<CS_BYTE>(reading.frac >= 1 ? reading.frac : reading.exponent);
    return NUME_OK;
}

// The precision of a value that was read without one; 0 when the text has more than 77 digits.
int computed_precision(const Reading &reading, int scale) {
    const std::int64_t seen = reading.seen > 1 ? reading.seen : 1;
    if (seen > CS_MAX_PREC)
        return 0;
    if (seen > scale && seen > reading.sig)
        return scale < reading.sig ? static_cast<int>(reading.sig) : scale + 1;
    return static_cast<int>(seen);
}

// ---- Digits out --------------------------------------------------------------------------------

constexpr limb TEN_8 = small_power_of_ten(8);
constexpr limb TEN_16 = small_power_of_ten(16);
constexpr int MAX_CHUNKS = 5; // 78 digits by nineteen

// The digits of a magnitude, at the end of a buffer. All limbs' worth of digits but the first are nineteen, zeros
// in front included, which are written by three stores of eight: the first store reaches five bytes too far ahead.
class Digits {
public:
    explicit Digits(const Magnitude &magnitude) : first_(end()) {
        int top = significant_limbs(magnitude) - 1;
        Magnitude m;
        for (int i = 0; i <= top; ++i)
            m.at[i] = magnitude.at[i];
        while (top >= 0) {
            limb chunk = m.at[top] < LIMB_POWER ? m.at[top--] : 0;
            for (int i = top; i >= 0; --i)
                m.at[i] = divide_two(chunk, m.at[i], LIMB_POWER, chunk);
            if (top >= 0)
                put_nineteen(chunk);
            else
                put_first(chunk);
        }
    }
    Digits(const Digits &) = delete;
    Digits &operator=(const Digits &) = delete;

    const char *first() const { return first_; }
    int count() const { return static_cast<int>(buffer_ + sizeof buffer_ - first_); }

private:
    char *end() { return buffer_ + sizeof buffer_; }

    void put_eight(std::uint64_t digits) {
        first_ -= 8;
        store(first_, digits | ZERO_DIGITS);
    }
    void put_nineteen(limb chunk) {
        const limb low = chunk % TEN_16;
        put_eight(eight_digits(static_cast<std::uint32_t>(low % TEN_8)));
        put_eight(eight_digits(static_cast<std::uint32_t>(low / TEN_8)));
        put_eight(eight_digits(static_cast<std::uint32_t>(chunk / TEN_16)));
        first_ += 5;
    }
    // Without the zeros in front.
    void put_first(limb chunk) {
        std::uint64_t digits;
        for (; chunk >= TEN_8; chunk /= TEN_8)
            put_eight(eight_digits(static_cast<std::uint32_t>(chunk % TEN_8)));
        put_eight(digits = eight_digits(static_cast<std::uint32_t>(chunk)));
        first_ += std::countr_zero(digits) / 8;
    }

    char buffer_[5 + MAX_CHUNKS * LIMB_DIGITS];
    char *first_;
};

// Inline in the exported writer, where the value never passes through memory.
inline int write_text(const Decimal &value, char *dest, int room) {
    const Digits digits(value.magnitude);
    const int start = room - numeric_text_length(value.negative, digits.count(), value.scale);
    if (start < 0)
        return -1;

    char *p = dest + start;
    if (value.negative && digits.count() != 0)
        *p++ = '-';
    const int before = digits.count() > value.scale ? digits.count() - value.scale : 0;
    if (before != 0)
        std::memcpy(p, digits.first(), static_cast<std::size_t>(before));
    else
        *p = '0';
    if (value.scale != 0) {
        p += before != 0 ? before : 1;
        const int behind = digits.count() - before;
        const int zeros = value.scale - behind;
        *p++ = '.';
        if (zeros != 0)
            std::memset(p, '0', static_cast<std::size_t>(zeros));
        std::memcpy(p + zeros, digits.first() + before, static_cast<std::size_t>(behind));
    }
    return start;
}

} // namespace

int put_numeric_text(const Decimal &value, char *dest, int room) { return write_text(value, dest, room); }

} // namespace dlx

using namespace dlx;

int com__subchartoexctnume(char *cp, int len, CS_BYTE **dest, CS_INT *destlen, CS_BYTE *precision, CS_BYTE *scale,
                           int flag) {
    COM_REQUIRE_PTR(cp, NUME_BADVALUE);
    COM_REQUIRE_PTR(dest, NUME_BADVALUE);
    COM_REQUIRE_PTR(*dest, NUME_BADVALUE);
    COM_REQUIRE_PTR(destlen, NUME_BADVALUE);
    COM_REQUIRE_PTR(precision, NUME_BADVALUE);
    COM_REQUIRE_PTR(scale, NUME_BADVALUE);
    COM_REQUIRE(*destlen == 0 || is_value_length(*destlen), NUME_BADVALUE);
    if (*destlen == 0)
        *destlen = CS_MAX_NUMLEN;

    const Target target = {*destlen, precision_of_length(*destlen), *scale, flag == 1};
    Reading reading;
    int code = len >= 0 ? read_text(cp, cp + len, target, reading) : NUME_BADVALUE;
    if (code == NUME_OK)
        code = apply_scale(target, reading, scale);
    if (code != NUME_OK) {
        std::memset(*dest, 0, static_cast<std::size_t>(target.length));
        return code;
    }

    **dest = 0;
    store_magnitude(reading.magnitude, *dest + 1, target.length - 1);
    const bool is_computed = !is_precision(*precision);
    if (is_computed) {
        // The precision follows the digits of the text, and with it the length. The magnitude is not held against
        // it: callers see the high digits that an exponent added cut off.
        const int computed = computed_precision(reading, *scale);
        const int length = Com__Nume_Prec_To_Len[computed];
        if (computed == 0 || length > target.length)
            return NUME_OVERFLOW; // leading zeros count too, so that small destinations can be too small for zero
        *precision = static_cast<CS_BYTE>(computed);
        *dest += target.length - length;
        *destlen = length;
    }
    const bool has_digits = *destlen == MIN_VALUE_LENGTH ? (*dest)[1] != 0 : reading.sig != 0;
    **dest = reading.negative && has_digits ? 1 : 0;
    return is_computed || !passes_precision(reading.magnitude, *precision) ? NUME_OK : NUME_OVERFLOW;
}

int com__subexctnumetochar(__CONSTANT *srcconst, char *dest, int destlen) {
    COM_REQUIRE_RECORD(srcconst, -1);
    COM_REQUIRE(srcconst->len <= CS_MAX_NUMLEN, -1);
    COM_REQUIRE_PTR(dest, -1);
    return write_text(Decimal(*srcconst), dest, destlen);
}
