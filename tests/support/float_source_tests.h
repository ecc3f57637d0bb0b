// What the conversions from one float type do with values, driven over the neighbours of every bound, named specials
// and seeded random bit patterns. The oracles are extended floats, 128-bit integers, the C library's printing and
// reading, and GMP.
#ifndef TESTS_SUPPORT_FLOAT_SOURCE_TESTS_H
#define TESTS_SUPPORT_FLOAT_SOURCE_TESTS_H

#include "support/assertions.h"
#include "support/number_frame_tests.h"
#include "support/number_models.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <type_traits>

namespace support {

using Integer = __int128;

// A destination with its bounds, which are also what is stored beyond them, and the statuses there. What the
// processor makes of NaN.
struct FloatRow {
    const char *to;
    Integer low;
    Integer high;
    CS_RETCODE below;
    CS_RETCODE above;
    Integer nan;
};

constexpr Integer I4_LOW = -2147483648ll, I4_HIGH = 2147483647, UI4_HIGH = 4294967295u;
constexpr Integer I8_LOWEST = std::numeric_limits<std::int64_t>::min(), TWO_TO_63 = 9223372036854775808u;

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

template <class T>
std::vector<T> special_floats() {
    using Limits = std::numeric_limits<T>;
    std::vector<T> result = {Limits::infinity(),
                             -Limits::infinity(),
                             Limits::quiet_NaN(),
                             -Limits::quiet_NaN(),
                             T(0),
                             -T(0),
                             T(0.5),
                             T(-0.5),
                             T(0.1),
                             T(0.25),
                             T(1.9),
                             T(-1.9),
                             T(255.5),
                             T(-1),
                             T(100),
                             T(1e16),
                             T(1e17),
                             T(1e20),
                             T(1e21),
                             T(-1e21),
                             T(1e-4),
                             T(1e-5),
                             T(1e30),
                             T(-1e30),
                             Limits::max(),
                             Limits::lowest(),
                             Limits::min(),
                             Limits::denorm_min()};
    const auto add_around = [&result](T middle) {
        T value = middle;
        for (int i = 0; i < 3; ++i)
            value = std::nextafter(value, -Limits::infinity());
        for (int i = 0; i < 7; ++i, value = std::nextafter(value, Limits::infinity())) {
            result.push_back(value);
            result.push_back(-value);
        }
    };
    for (int bit = 0; bit <= 65; ++bit)
        for (T offset : {T(-1), T(-0.5), T(0), T(0.5), T(1)})
            add_around(std::ldexp(T(1), bit) + offset);
    for (T bound : {T(9.22337e18), T(9223372036854769664.0), T(1.84467e19), T(18446744073709500416.0), T(32767.5),
                    T(65535.5), T(4294967295.5), T(2147483647.5)})
        add_around(bound);
    return result;
}

template <class T>
std::vector<T> all_floats() {
    std::vector<T> result = special_floats<T>();
    std::mt19937_64 random(20240701 + sizeof(T));
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        result.push_back(std::bit_cast<T>(static_cast<BitsOf<T>>(bits)));
        result.push_back(static_cast<T>(
            std::ldexp(static_cast<double>(static_cast<std::int64_t>(bits)), -static_cast<int>(random() % 80))));
    }
    return result;
}

inline std::string printed_17g(double value) {
    char text[64];
    return std::string(text, static_cast<size_t>(std::snprintf(text, sizeof text, "%.17g", value)));
}

// A float as text: minus zero is zero, a leading "0." loses its zero, and ".0" shows that it is a float.
inline std::string model_float_text(double value) {
    std::string text = printed_17g(value == 0 ? 0.0 : value);
    if (text.rfind("0.", 0) == 0)
        text.erase(0, 1);
    if (text.find('.') == std::string::npos && text.find('e') == std::string::npos)
        text += ".0";
    return text;
}

// The decimal integer that a numeric of this scale holds for the value, by its 17 significant digits.
inline std::string scaled_digits(double value, int scale) {
    char text[64];
    std::snprintf(text, sizeof text, "%.16e", std::fabs(value)); // d.dddddddddddddddde+xx
    std::string digits = std::string(1, text[0]) + std::string(text + 2, 16);
    const int shift = std::atoi(text + 19) - 16 + scale;
    if (shift >= 0) {
        digits.append(static_cast<size_t>(shift), '0');
    } else if (-shift > 17) {
        digits = "0";
    } else {
        const size_t kept = digits.size() - static_cast<size_t>(-shift);
        const bool up = digits[kept] >= '5';
        mpz_t integer;
        mpz_init_set_str(integer, ("0" + digits.substr(0, kept)).c_str(), 10);
        if (up)
            mpz_add_ui(integer, integer, 1);
        char *written = mpz_get_str(nullptr, 10, integer);
        digits = written;
        std::free(written);
        mpz_clear(integer);
    }
    return (value < 0 ? "-" : "") + digits;
}

template <class T>
class FloatSource : public ConversionTest {
protected:
    void set_source(const char *word) { members_ = members_from(word); }

    const NumberMember &member(const std::string &to) const {
        for (const NumberMember &candidate : members_)
            if (candidate.is_to(to))
                return candidate;
        ADD_FAILURE() << "no conversion to " << to;
        return members_.front();
    }

    Outcome run(const NumberMember &member, T value, const CS_DATAFMT &format) {
        return convert(member.function, member.source_ids[0], value, format);
    }
    Outcome run(const char *to, T value) {
        return run(member(to), value, format_of(member(to).destination.ids[0], 64));
    }
    std::string text_of(T value) { return run("char", value).text(); }

    static Integer model_integer(T value, const FloatRow &row) {
        const long double wide = value;
        if (std::isnan(value))
            return row.nan;
        if (wide < static_cast<long double>(row.low))
            return row.low;
        if (wide > static_cast<long double>(row.high))
            return row.high;
        // The upper half of the unsigned 64-bit values is one short.
        if (wide >= static_cast<long double>(TWO_TO_63))
            return TWO_TO_63 - 1 + static_cast<Integer>(wide - static_cast<long double>(TWO_TO_63));
        return static_cast<Integer>(wide);
    }

    void integers_truncate_and_saturate(const std::vector<FloatRow> &rows) {
        ASSERT_EQ(rows.size(), 7u);
        for (const FloatRow &row : rows) {
            const NumberMember &to = member(row.to);
            const auto width = static_cast<size_t>(to.destination.width);
            bool saw_below = false, saw_above = false;
            for (T value : all_floats<T>()) {
                const Outcome outcome = run(row.to, value);
                const bool below = static_cast<long double>(value) < static_cast<long double>(row.low);
                const bool above = static_cast<long double>(value) > static_cast<long double>(row.high);
                saw_below = saw_below || below;
                saw_above = saw_above || above;
                ASSERT_EQ(outcome.status, below   ? row.below
                                          : above ? row.above
                                                  : CS_SUCCEED)
                    << to << " of " << printed_17g(value);
                ASSERT_EQ(outcome.destlen, to.destination.width);
                const Integer stored = model_integer(value, row);
                ASSERT_EQ(std::memcmp(outcome.bytes.data(), &stored, width), 0) << to << " of " << printed_17g(value);
                ASSERT_TRUE(outcome.untouched_from(width));
            }
            EXPECT_TRUE(saw_below && saw_above) << to;
        }
    }

    void bit_is_one_for_everything_but_zero() {
        for (T value : all_floats<T>()) {
            const Outcome outcome = run("bit", value);
            ASSERT_EQ(outcome.status, CS_SUCCEED);
            ASSERT_EQ(outcome.destlen, 1);
            ASSERT_EQ(outcome.bytes[0], value > 0 || value < 0 || std::isnan(value)) << printed_17g(value);
        }
    }

    // The bits stay, those of a signalling NaN as well.
    void same_float_keeps_every_bit(const char *to) {
        std::vector<T> values = all_floats<T>();
        const BitsOf<T> signalling = sizeof(T) == 8 ? static_cast<BitsOf<T>>(0x7FF0000000000001) : 0x7F800001;
        for (size_t i = 0; i <= values.size(); ++i) {
            const BitsOf<T> bits = i < values.size() ? std::bit_cast<BitsOf<T>>(values[i]) : signalling;
            const Outcome outcome =
                convert(member(to).function, member(to).source_ids[0], bits, format_of(member(to).source_ids[0]));
            ASSERT_EQ(outcome.status, CS_SUCCEED);
            ASSERT_EQ(outcome.destlen, static_cast<CS_INT>(sizeof(T)));
            ASSERT_EQ(outcome.template value<BitsOf<T>>(), bits);
            ASSERT_TRUE(outcome.untouched_from(sizeof(T)));
        }
    }

    void text_has_seventeen_digits() {
        for (T value : all_floats<T>()) {
            const std::string text = model_float_text(value);
            const Outcome outcome = run("char", value);
            ASSERT_EQ(outcome.status, CS_SUCCEED);
            ASSERT_EQ(outcome.text(), text);
            ASSERT_TRUE(outcome.untouched_from(text.size())) << text;
        }
    }

    void text_in_every_room_and_format() {
        for (T value : special_floats<T>()) {
            const std::string text = model_float_text(value);
            for (CS_INT room = 0; room <= static_cast<CS_INT>(text.size()) + 3; ++room)
                for (CS_INT format = 0; format < 8; ++format)
                    expect_outcome(run(member("char"), value, format_of(CS_CHAR_TYPE, room, format)),
                                   model_char(text, room, format), text + " in " + std::to_string(room));
        }
    }

    void varchar_has_no_nul() {
        for (T value : all_floats<T>())
            expect_outcome(run("varchar", value), model_varchar(model_float_text(value), ""), printed_17g(value));
    }

    void bytes_go_in_memory_order() {
        for (T value : special_floats<T>()) {
            for (CS_INT room = 0; room <= 12; ++room)
                for (CS_INT format = 0; format < 8; ++format)
                    expect_outcome(run(member("bin"), value, format_of(CS_BINARY_TYPE, room, format)),
                                   model_bin(value, room, format), printed_17g(value));
            expect_outcome(run("varbin", value), model_varbin(value), printed_17g(value));
        }
    }

    void numerics_hold_seventeen_digits_rounded() {
        std::vector<T> values = special_floats<T>();
        std::mt19937_64 random(20240702);
        for (int i = 0; i < 1000; ++i)
            values.push_back(static_cast<T>(std::ldexp(static_cast<double>(static_cast<std::int64_t>(random())),
                                                       -static_cast<int>(random() % 120))));
        for (CS_INT precision : {1, 5, 10, 17, 18, 19, 38, 60, 77})
            for (CS_INT scale : {0, 1, 4, 10, 20, 40, 77})
                for (T value : values)
                    if (std::isfinite(value))
                        NumericModel(scaled_digits(value, scale), static_cast<unsigned>(precision),
                                     static_cast<unsigned>(scale), 0)
                            .expect_in(run(member("num"), value, numeric_format(precision, scale)),
                                       printed_17g(value) + " to numeric(" + std::to_string(precision) + "," +
                                           std::to_string(scale) + ")");
    }

    void numeric_of_nan_is_no_value() {
        const Outcome outcome = run(member("num"), std::numeric_limits<T>::quiet_NaN(), numeric_format(10, 2));
        EXPECT_EQ(outcome.status, CS_EDOMAIN);
        EXPECT_EQ(outcome.destlen, 35);
        EXPECT_TRUE(outcome.untouched_from(0));
    }

    void numeric_of_infinity_is_overflow() {
        for (T value : {std::numeric_limits<T>::infinity(), -std::numeric_limits<T>::infinity()})
            for (CS_INT scale : {0, 77}) {
                const Outcome outcome = run(member("num"), value, numeric_format(77, scale));
                EXPECT_EQ(outcome.status, CS_EOVERFLOW);
                EXPECT_EQ(outcome.destlen, 35);
                EXPECT_TRUE(outcome.untouched_from(35));
            }
    }

    // The largest value would be rescaled by more places than a numeric has, the smallest vanishes.
    void numeric_of_extremes_is_a_status() {
        for (CS_INT scale : {0, 2, 40}) {
            EXPECT_EQ(run(member("num"), std::numeric_limits<T>::max(), numeric_format(10, scale)).status,
                      CS_EOVERFLOW);
            NumericModel("0", 77, static_cast<unsigned>(scale))
                .expect_in(run(member("num"), -std::numeric_limits<T>::denorm_min(), numeric_format(77, scale)),
                           "too small");
        }
    }

    void numeric_shapes_outside_the_range_leave_the_record() {
        for (CS_INT precision : {0, -1, 78, 255, CS_VALUE_FROM_SOURCE}) {
            const Outcome outcome = run(member("num"), T(1), numeric_format(precision, 78));
            EXPECT_EQ(outcome.status, CS_EPRECISION) << precision;
            EXPECT_EQ(outcome.destlen, 35);
            EXPECT_EQ(outcome.destfmt.precision, precision);
            EXPECT_TRUE(outcome.untouched_from(0));
        }
        for (CS_INT scale : {78, 255, std::numeric_limits<CS_INT>::max()}) {
            const Outcome outcome = run(member("num"), T(1), numeric_format(10, scale));
            EXPECT_EQ(outcome.status, CS_ESCALE) << scale;
            EXPECT_EQ(outcome.destlen, 35);
            EXPECT_TRUE(outcome.untouched_from(0));
        }
        NumericModel("7", 10, 2).expect_in(run(member("num"), T(7), numeric_format(10, -254)), "scale of -254");
    }

    void numeric_scale_beyond_the_range_as_a_byte_is_reported() {
        const ReturningAssertions assertions;
        int reports = 0;
        for (CS_INT scale : {-1, CS_VALUE_FROM_SOURCE}) {
            const Outcome outcome = run(member("num"), T(7), numeric_format(10, scale));
            EXPECT_EQ(assertions.count(), ++reports) << scale;
            EXPECT_EQ(outcome.status, CS_FAIL);
            EXPECT_TRUE(outcome.untouched()) << scale;
        }
    }

    // The money kernel's width or failure becomes the status, and what it leaves stays.
    template <class Kernel>
    void money_is_what_the_kernel_makes(const char *to, size_t width, Kernel kernel) {
        int failures = 0;
        for (T value : all_floats<T>()) {
            const Outcome outcome = run(to, value);
            CS_BYTE kept[8] = {};
            const bool failed = kernel(reinterpret_cast<CS_BYTE *>(&value), kept) == -1;
            failures += failed;
            ASSERT_EQ(outcome.status, failed ? CS_EOVERFLOW : CS_SUCCEED) << to << " of " << printed_17g(value);
            ASSERT_EQ(outcome.destlen, static_cast<CS_INT>(width));
            ASSERT_EQ(std::memcmp(kept, outcome.bytes.data(), width), 0) << to << " of " << printed_17g(value);
            ASSERT_TRUE(outcome.untouched_from(width));
        }
        EXPECT_GT(failures, 1000);
    }

    void money_of_known_values() {
        EXPECT_EQ(run("money", T(1.5)).template value<CS_MONEY>().mnylow, 15000u);
        EXPECT_EQ(run("mny4", T(-1.5)).template value<CS_MONEY4>().mny4, -15000);
        EXPECT_EQ(run("money", T(1e30)).status, CS_EOVERFLOW);
        EXPECT_EQ(run("mny4", T(1e6)).status, CS_EOVERFLOW);
    }

private:
    std::vector<NumberMember> members_;
};

} // namespace support

// The tests that both float sources share.
#define FLOAT_SOURCE_TESTS(Suite, Type, word, rows)                                                                    \
    class Suite : public FloatSource<Type> {                                                                           \
    protected:                                                                                                         \
        Suite() { set_source(word); }                                                                                  \
    };                                                                                                                 \
    TEST_F(Suite, IntegersTruncateAndSaturateAsTheRowsTell) { integers_truncate_and_saturate(rows); }                  \
    TEST_F(Suite, BitIsOneForEverythingButZero) { bit_is_one_for_everything_but_zero(); }                              \
    TEST_F(Suite, SameFloatKeepsEveryBit) { same_float_keeps_every_bit(word); }                                        \
    TEST_F(Suite, TextHasSeventeenDigits) { text_has_seventeen_digits(); }                                             \
    TEST_F(Suite, TextInEveryRoomAndFormat) { text_in_every_room_and_format(); }                                       \
    TEST_F(Suite, VarcharHasNoNul) { varchar_has_no_nul(); }                                                           \
    TEST_F(Suite, BytesGoInMemoryOrder) { bytes_go_in_memory_order(); }                                                \
    TEST_F(Suite, NumericHoldsSeventeenDigitsRounded) { numerics_hold_seventeen_digits_rounded(); }                    \
    TEST_F(Suite, NumericOfNanIsNoValue) { numeric_of_nan_is_no_value(); }                                             \
    TEST_F(Suite, NumericOfInfinityIsOverflow) { numeric_of_infinity_is_overflow(); }                                  \
    TEST_F(Suite, NumericOfExtremesIsAStatus) { numeric_of_extremes_is_a_status(); }                                   \
    TEST_F(Suite, NumericShapesOutsideTheRangeLeaveTheRecord) { numeric_shapes_outside_the_range_leave_the_record(); } \
    TEST_F(Suite, NumericScaleBeyondTheRangeAsAByteIsReported) {                                                       \
        numeric_scale_beyond_the_range_as_a_byte_is_reported();                                                        \
    }                                                                                                                  \
    TEST_F(Suite, MoneyOfKnownValues) { money_of_known_values(); }                                                     \
    class Suite##DeathTest : public Suite {};                                                                          \
    TEST_F(Suite##DeathTest, NumericScaleFromSource) {                                                                 \
        EXPECT_BOMB(run(member("num"), 7, numeric_format(10, CS_VALUE_FROM_SOURCE)), "com_" word);                     \
    }

#endif
