// What the conversions from one integer type do with values, driven over the boundaries of all types, every value of
// the narrow ones, and seeded random values of every length. The oracles are 128-bit integers, the C library's
// printing, extended floats and GMP.
#ifndef TESTS_SUPPORT_INTEGER_SOURCE_TESTS_H
#define TESTS_SUPPORT_INTEGER_SOURCE_TESTS_H

#include "support/assertions.h"
#include "support/number_frame_tests.h"
#include "support/number_models.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <type_traits>

namespace support {

using Integer = __int128;

// A destination with its range, and the statuses outside it; a status of 0 says that the case cannot happen.
struct RangeRow {
    const char *to;
    Integer low;
    Integer high;
    CS_RETCODE below;
    CS_RETCODE above;
};
constexpr CS_RETCODE CANNOT_HAPPEN = 0;

constexpr Integer I2_LOW = -32768, I2_HIGH = 32767, I4_LOW = -2147483648ll, I4_HIGH = 2147483647;
constexpr Integer I8_LOW = std::numeric_limits<std::int64_t>::min(), I8_HIGH = std::numeric_limits<std::int64_t>::max();
constexpr Integer UI2_HIGH = 65535, UI4_HIGH = 4294967295u, UI8_HIGH = 18446744073709551615u;

template <class T>
std::string printed(T value) {
    char text[32];
    if constexpr (std::is_signed_v<T>)
        std::snprintf(text, sizeof text, "%" PRId64, static_cast<std::int64_t>(value));
    else
        std::snprintf(text, sizeof text, "%" PRIu64, static_cast<std::uint64_t>(value));
    return text;
}

// Bounds of all types and powers of two and ten, with their neighbours.
template <class T>
std::vector<T> boundary_values() {
    std::vector<T> result;
    const auto add_around = [&result](Integer middle) {
        for (Integer value = middle - 2; value <= middle + 2; ++value)
            for (Integer signed_value : {value, -value})
                if (signed_value >= std::numeric_limits<T>::min() && signed_value <= std::numeric_limits<T>::max())
                    result.push_back(static_cast<T>(signed_value));
    };
    for (int bit = 0; bit <= 64; ++bit)
        add_around(Integer(1) << bit);
    Integer power = 1;
    for (int digits = 0; digits <= 20; ++digits, power *= 10)
        add_around(power);
    // The thresholds of the floats.
    for (Integer bound : {Integer(9223370000000000000), Integer(9223372036854769664), Integer(18446700000000000000u),
                          Integer(18446744073709500416u), Integer(16777217), Integer(9007199254740993)})
        add_around(bound);
    return result;
}

template <class T>
std::vector<T> all_values() {
    std::vector<T> result = boundary_values<T>();
    if constexpr (sizeof(T) <= 2) {
        for (Integer value = std::numeric_limits<T>::min(); value <= std::numeric_limits<T>::max(); ++value)
            result.push_back(static_cast<T>(value));
    } else {
        std::mt19937_64 random(20240601 + sizeof(T));
        for (int i = 0; i < 30000; ++i)
            result.push_back(static_cast<T>(static_cast<std::int64_t>(random()) >> (random() % 64)));
    }
    return result;
}

// 64-bit values above these become these floats, so that the reverse conversion takes them.
template <class Float>
struct FloatCeilings;
template <>
struct FloatCeilings<float> {
    static constexpr Integer SIGNED_LAST = 9223369999999999999, UNSIGNED_LAST = 18446699999999999999u;
    static constexpr float SIGNED = 9223369837831520256.0f, UNSIGNED = 18446700093244440576.0f;
};
template <>
struct FloatCeilings<double> {
    static constexpr Integer SIGNED_LAST = 9223372036854769663, UNSIGNED_LAST = 18446744073709500415u;
    static constexpr double SIGNED = 9223372036854769664.0, UNSIGNED = 18446744073709500416.0;
};

// Extended floats hold every 64-bit integer, so each conversion below rounds once.
static_assert(std::numeric_limits<long double>::digits >= 64);

template <class Float, class T>
Float model_float(T value) {
    using Ceilings = FloatCeilings<Float>;
    if (sizeof(T) == 8 && std::is_signed_v<T> && value > Ceilings::SIGNED_LAST)
        return Ceilings::SIGNED;
    if (sizeof(T) == 8 && std::is_unsigned_v<T>) {
        if (value > Ceilings::UNSIGNED_LAST)
            return Ceilings::UNSIGNED;
        const Integer rest = Integer(value) - (Integer(1) << 63);
        if (rest >= 0)
            return static_cast<Float>(9223372036854775808.0L +
                                      static_cast<long double>(static_cast<Float>(static_cast<long double>(rest + 1))));
    }
    return static_cast<Float>(static_cast<long double>(value));
}

template <class T>
class IntegerSource : public ConversionTest {
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
    Outcome run(const NumberMember &member, T value) {
        return run(member, value, format_of(member.destination.ids[0]));
    }

    static Integer read(const Outcome &outcome, const RangeRow &row, CS_INT width) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, outcome.bytes.data(), static_cast<size_t>(width));
        const int unused = 64 - 8 * width;
        return row.low < 0 ? Integer(static_cast<std::int64_t>(bits << unused) >> unused) : Integer(bits);
    }

    // Saturation and statuses by the rows, for every interesting value.
    void integers_saturate(const std::vector<RangeRow> &rows) {
        ASSERT_EQ(rows.size(), 7u);
        for (const RangeRow &row : rows) {
            const NumberMember &to = member(row.to);
            bool saw_below = false, saw_above = false;
            for (T value : all_values<T>()) {
                const Outcome outcome = run(to, value);
                const bool below = value<row.low, above = value> row.high;
                saw_below = saw_below || below;
                saw_above = saw_above || above;
                const CS_RETCODE status = below ? row.below : above ? row.above : CS_SUCCEED;
                ASSERT_EQ(outcome.status, status) << to << " of " << printed(value);
                ASSERT_EQ(outcome.destlen, to.destination.width) << to;
                const Integer stored = below ? row.low : above ? row.high : Integer(value);
                ASSERT_TRUE(read(outcome, row, to.destination.width) == stored) << to << " of " << printed(value);
                ASSERT_TRUE(outcome.untouched_from(static_cast<size_t>(to.destination.width))) << to;
            }
            EXPECT_EQ(saw_below, row.below != CANNOT_HAPPEN) << to;
            EXPECT_EQ(saw_above, row.above != CANNOT_HAPPEN) << to;
        }
    }

    void bit_is_one_for_everything_but_zero() {
        for (T value : all_values<T>()) {
            const Outcome outcome = run(member("bit"), value);
            ASSERT_EQ(outcome.status, CS_SUCCEED);
            ASSERT_EQ(outcome.destlen, 1);
            ASSERT_EQ(outcome.bytes[0], value != 0) << printed(value);
            ASSERT_TRUE(outcome.untouched_from(1));
        }
    }

    template <class Float>
    void floats_round_once(const char *to) {
        for (T value : all_values<T>()) {
            const Outcome outcome = run(member(to), value);
            ASSERT_EQ(outcome.status, CS_SUCCEED);
            ASSERT_EQ(outcome.destlen, static_cast<CS_INT>(sizeof(Float)));
            ASSERT_EQ(outcome.value<Float>(), (model_float<Float, T>(value))) << to << " of " << printed(value);
            ASSERT_TRUE(outcome.untouched_from(sizeof(Float)));
        }
    }

    void text_is_what_printf_writes() {
        for (T value : all_values<T>()) {
            const std::string text = printed(value);
            const Outcome outcome = run(member("char"), value, format_of(CS_CHAR_TYPE, 64));
            ASSERT_EQ(outcome.status, CS_SUCCEED);
            ASSERT_EQ(outcome.text(), text);
            ASSERT_TRUE(outcome.untouched_from(text.size())) << text;
        }
    }

    void text_in_every_room_and_format() {
        for (T value : boundary_values<T>()) {
            const std::string text = printed(value);
            for (CS_INT room = 0; room <= static_cast<CS_INT>(text.size()) + 24; ++room)
                for (CS_INT format = 0; format < 8; ++format)
                    expect_outcome(run(member("char"), value, format_of(CS_CHAR_TYPE, room, format)),
                                   model_char(text, room, format),
                                   text + " in " + std::to_string(room) + ", format " + std::to_string(format));
        }
    }

    void varchar_has_a_nul_and_keeps_the_bytes_behind_it() {
        for (T value : all_values<T>())
            expect_outcome(run(member("varchar"), value), model_varchar(printed(value), std::string(1, '\0')),
                           printed(value));
    }

    void bytes_go_in_memory_order() {
        for (T value : boundary_values<T>()) {
            for (CS_INT room = 0; room <= 12; ++room)
                for (CS_INT format = 0; format < 8; ++format)
                    expect_outcome(run(member("bin"), value, format_of(CS_BINARY_TYPE, room, format)),
                                   model_bin(value, room, format), printed(value));
            expect_outcome(run(member("varbin"), value), model_varbin(value), printed(value));
        }
    }

    void numerics_hold_the_value_at_every_shape() {
        for (CS_INT precision : {1, 2, 3, 5, 9, 10, 18, 19, 20, 21, 22, 38, 54, 76, 77})
            for (CS_INT scale : {0, 1, 2, 5, 18, 37, 58, 76, 77})
                for (T value : boundary_values<T>()) {
                    const Outcome outcome = run(member("num"), value, numeric_format(precision, scale));
                    NumericModel(printed(value), static_cast<unsigned>(precision), static_cast<unsigned>(scale))
                        .expect_in(outcome, printed(value) + " to numeric(" + std::to_string(precision) + "," +
                                                std::to_string(scale) + ")");
                }
    }

    void numeric_shapes_outside_the_range_leave_the_record(bool takes_from_source) {
        for (CS_INT precision : {0, -1, 78, 255, 256 + 5, std::numeric_limits<CS_INT>::min(), CS_VALUE_FROM_SOURCE})
            for (CS_INT scale : {0, 77, 78, -1}) {
                if (takes_from_source && precision == CS_VALUE_FROM_SOURCE)
                    continue;
                const Outcome outcome = run(member("num"), T(1), numeric_format(precision, scale));
                EXPECT_EQ(outcome.status, CS_EPRECISION) << precision;
                EXPECT_EQ(outcome.destlen, 35);
                EXPECT_TRUE(outcome.untouched_from(0));
            }
        for (CS_INT scale : {78, 255, 256 + 5, std::numeric_limits<CS_INT>::max()}) {
            const Outcome outcome = run(member("num"), T(1), numeric_format(10, scale));
            EXPECT_EQ(outcome.status, CS_ESCALE) << scale;
            EXPECT_EQ(outcome.destlen, 35);
            EXPECT_TRUE(outcome.untouched_from(0));
        }
    }

    // The low byte of a negative scale goes into the record: -254 is 2.
    void numeric_scale_is_cut_to_a_byte() {
        const Outcome outcome = run(member("num"), T(7), numeric_format(10, -254));
        NumericModel("7", 10, 2).expect_in(outcome, "scale of -254");
    }

    void numeric_scale_beyond_the_range_as_a_byte_is_reported() {
        const ReturningAssertions assertions;
        int reports = 0;
        for (CS_INT scale : {-1, -100, -178, CS_VALUE_FROM_SOURCE}) {
            const Outcome outcome = run(member("num"), T(7), numeric_format(10, scale));
            EXPECT_EQ(assertions.count(), ++reports) << scale;
            EXPECT_EQ(outcome.status, CS_FAIL);
            EXPECT_TRUE(outcome.untouched()) << scale;
            EXPECT_EQ(outcome.destfmt.scale, scale);
        }
    }

    void numeric_scale_beyond_the_range_as_a_byte_ends_the_process(const char *file) {
        const std::string report = std::string("assertion failed, file 'generic/src/") + file + "\\.cpp' line [0-9]+";
        for (CS_INT scale : {-1, CS_VALUE_FROM_SOURCE})
            EXPECT_DEATH(run(member("num"), T(7), numeric_format(10, scale)), report);
    }

    template <class Money, class Count, class Value>
    void money_is_the_value_or_overflow(const char *to, int (*kernel)(Money *, Value *)) {
        for (T value : all_values<T>()) {
            const Outcome outcome = run(member(to), value);
            const Integer count = Integer(value) * 10000;
            const bool fits = count >= std::numeric_limits<Count>::min() && count <= std::numeric_limits<Count>::max();
            ASSERT_EQ(outcome.status, fits ? CS_SUCCEED : CS_EOVERFLOW) << to << " of " << printed(value);
            ASSERT_EQ(outcome.destlen, static_cast<CS_INT>(sizeof(Money)));
            ASSERT_TRUE(outcome.untouched_from(sizeof(Money)));
            // What an overflow leaves is the money kernel's to say.
            Money kept = {};
            Value widened = value;
            kernel(&kept, &widened);
            ASSERT_EQ(std::memcmp(&kept, outcome.bytes.data(), sizeof kept), 0) << to << " of " << printed(value);
            if (!fits)
                continue;
            if constexpr (sizeof(Money) == 8) {
                ASSERT_EQ(kept.mnyhigh, static_cast<CS_INT>(count >> 32)) << printed(value);
                ASSERT_EQ(kept.mnylow, static_cast<CS_UINT>(count & 0xFFFFFFFF)) << printed(value);
            } else {
                ASSERT_EQ(kept.mny4, static_cast<CS_INT>(count)) << printed(value);
            }
        }
    }

private:
    std::vector<NumberMember> members_;
};

// The 64-bit sources take CS_VALUE_FROM_SOURCE in a numeric destination.
template <class T>
class WideIntegerSource : public IntegerSource<T> {
protected:
    // The converter chooses the precision that ten bytes hold, and the scale 0. The caller's descriptor says 255.
    void precision_from_source_changes_the_descriptor() {
        for (T value : boundary_values<T>()) {
            const CS_DATAFMT format = numeric_format(CS_VALUE_FROM_SOURCE, CS_VALUE_FROM_SOURCE);
            const Outcome outcome = this->run(this->member("num"), value, format);
            EXPECT_EQ(outcome.destfmt.precision, 255);
            EXPECT_EQ(outcome.destfmt.scale, 255);
            NumericModel(printed(value), 21, 0).expect_in(outcome, printed(value));
            EXPECT_TRUE(outcome.untouched_from(2 + 10));
        }
    }

    void precision_from_source_alone_takes_no_scale() {
        for (CS_INT scale : {0, 5, 77, -1}) {
            const Outcome outcome = this->run(this->member("num"), T(42), numeric_format(CS_VALUE_FROM_SOURCE, scale));
            EXPECT_EQ(outcome.destfmt.precision, 255);
            EXPECT_EQ(outcome.destfmt.scale, scale);
            NumericModel("42", 21, 0).expect_in(outcome, "scale " + std::to_string(scale));
        }
    }

    // The scale is still tested: only what was replaced is not.
    void precision_from_source_with_a_scale_above_the_range() {
        const Outcome outcome = this->run(this->member("num"), T(42), numeric_format(CS_VALUE_FROM_SOURCE, 78));
        EXPECT_EQ(outcome.status, CS_ESCALE);
        EXPECT_EQ(outcome.destlen, 35);
        EXPECT_EQ(outcome.destfmt.precision, 255);
        EXPECT_TRUE(outcome.untouched_from(0));
    }

    void scale_from_source_without_a_precision() {
        const Outcome outcome = this->run(this->member("num"), T(42), numeric_format(0, CS_VALUE_FROM_SOURCE));
        EXPECT_EQ(outcome.status, CS_EPRECISION);
        EXPECT_EQ(outcome.destlen, 35);
        EXPECT_EQ(outcome.destfmt.scale, 255);
        EXPECT_TRUE(outcome.untouched_from(0));
    }
};

} // namespace support

// The value tests of an integer source. `Base` is IntegerSource or WideIntegerSource of its type, `rows` the seven
// rows of its ranges, `Wide` and `kernel` the integer and the name's middle of the money kernel.
#define INTEGER_SOURCE_TESTS(Suite, Base, word, rows, takes_from_source, Wide, kernel)                                 \
    class Suite : public Base {                                                                                        \
    protected:                                                                                                         \
        Suite() { set_source(word); }                                                                                  \
    };                                                                                                                 \
    TEST_F(Suite, IntegersSaturateAsTheRowsTell) { integers_saturate(rows); }                                          \
    TEST_F(Suite, BitIsOneForEverythingButZero) { bit_is_one_for_everything_but_zero(); }                              \
    TEST_F(Suite, SingleIsRoundedOnce) { floats_round_once<float>("flt4"); }                                           \
    TEST_F(Suite, DoubleIsRoundedOnce) { floats_round_once<double>("flt8"); }                                          \
    TEST_F(Suite, TextIsWhatPrintfWrites) { text_is_what_printf_writes(); }                                            \
    TEST_F(Suite, TextInEveryRoomAndFormat) { text_in_every_room_and_format(); }                                       \
    TEST_F(Suite, VarcharHasANulAndKeepsTheBytesBehindIt) { varchar_has_a_nul_and_keeps_the_bytes_behind_it(); }       \
    TEST_F(Suite, BytesGoInMemoryOrder) { bytes_go_in_memory_order(); }                                                \
    TEST_F(Suite, NumericHoldsTheValueAtEveryShape) { numerics_hold_the_value_at_every_shape(); }                      \
    TEST_F(Suite, NumericShapesOutsideTheRangeLeaveTheRecord) {                                                        \
        numeric_shapes_outside_the_range_leave_the_record(takes_from_source);                                          \
    }                                                                                                                  \
    TEST_F(Suite, NumericScaleIsCutToAByte) { numeric_scale_is_cut_to_a_byte(); }                                      \
    TEST_F(Suite, NumericScaleBeyondTheRangeAsAByteIsReported) {                                                       \
        numeric_scale_beyond_the_range_as_a_byte_is_reported();                                                        \
    }                                                                                                                  \
    TEST_F(Suite, MoneyIsTheValueOrOverflow) {                                                                         \
        money_is_the_value_or_overflow<CS_MONEY, std::int64_t, Wide>("money", com__##kernel##tomny);                   \
        money_is_the_value_or_overflow<CS_MONEY4, std::int32_t, Wide>("mny4", com__##kernel##tomny4);                  \
    }                                                                                                                  \
    class Suite##DeathTest : public Suite {};                                                                          \
    TEST_F(Suite##DeathTest, NumericScaleBeyondTheRangeAsAByte) {                                                      \
        numeric_scale_beyond_the_range_as_a_byte_ends_the_process("com_" word);                                        \
    }

#endif
