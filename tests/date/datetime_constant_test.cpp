// Additions to server constants, by the type of the source and the room of the result.
#include "support/assertions.h"
#include "support/naive_calendar.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <vector>

namespace {

using namespace support::calendar;

constexpr CS_BYTE DATE = 49, TIME = 51, NARROW = 58, DATETIME = 61, BIG_DATETIME = 187, BIG_TIME = 188;
constexpr CS_BYTE FILL = 0xA5;

using Bytes = std::vector<CS_BYTE>;

template <class Value>
Bytes bytes_of(const Value &value) {
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

Bytes datetime(CS_INT day, CS_INT ticks) { return bytes_of(CS_DATETIME{day, ticks}); }
Bytes narrow(CS_USHORT days, CS_USHORT minutes) { return bytes_of(CS_DATETIME4{days, minutes}); }
Bytes word(CS_INT value) { return bytes_of(value); }
Bytes big(CS_BIGDATETIME value) { return bytes_of(value); }

// A constant with its value at an odd address, in the middle of bytes that are to stay.
class Constant {
public:
    Constant(CS_BYTE type, CS_INT maxlen) {
        room_.fill(FILL);
        std::memset(static_cast<void *>(&record_), FILL, sizeof record_);
        record_.type = type;
        record_.maxlen = maxlen;
        record_.len = UNTOUCHED;
        record_.value = room_.data() + PLACE;
    }
    Constant(CS_BYTE type, const Bytes &value) : Constant(type, UNTOUCHED) {
        record_.len = static_cast<CS_INT>(value.size());
        std::copy(value.begin(), value.end(), room_.begin() + PLACE);
    }
    Constant(const Constant &) = delete;
    Constant &operator=(const Constant &) = delete;

    __CONSTANT *get() { return &record_; }
    // What was stored; the length and the value must have been, and nothing else.
    Bytes stored() const {
        if (record_.len == UNTOUCHED)
            return untouched() ? Bytes{} : Bytes{0xDE, 0xAD};
        Constant same(record_.type, record_.maxlen);
        same.record_.len = record_.len;
        std::copy_n(room_.begin() + PLACE, record_.len, same.room_.begin() + PLACE);
        same.record_.value = record_.value;
        if (room_ != same.room_ || std::memcmp(&record_, &same.record_, sizeof record_) != 0)
            return {0xDE, 0xAD};
        return {room_.begin() + PLACE, room_.begin() + PLACE + record_.len};
    }
    bool untouched() const {
        return std::all_of(room_.begin(), room_.end(), [](CS_BYTE byte) { return byte == FILL; });
    }
    bool is(const Bytes &value) const {
        return record_.len == static_cast<CS_INT>(value.size()) &&
               std::equal(value.begin(), value.end(), room_.begin() + PLACE);
    }

private:
    static constexpr int PLACE = 17;
    alignas(8) std::array<CS_BYTE, 64> room_;
    __CONSTANT record_;
};

struct Outcome {
    int code;
    Bytes value; // empty for nothing stored
    bool operator==(const Outcome &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
        return out << "code " << outcome.code << " value " << testing::PrintToString(outcome.value);
    }
};

Outcome failed(int code) { return {code, {}}; }
Outcome good(const Bytes &value) { return {0, value}; }

using Function = int (*)(int, CS_INT, __CONSTANT *, __CONSTANT *);

Outcome run(Function function, int part, CS_INT value, CS_BYTE type, const Bytes &from, CS_BYTE to_type,
            CS_INT maxlen) {
    Constant source(type, from), result(to_type, maxlen);
    const int code = function(part, value, source.get(), result.get());
    EXPECT_TRUE(source.is(from));
    return {code, result.stored()};
}

// To a result of the source's type and size.
Outcome sum(int part, CS_INT value, CS_BYTE type, const Bytes &from) {
    return run(com__dateadd_both, part, value, type, from, type, static_cast<CS_INT>(from.size()));
}
Outcome sum_to(CS_BYTE to_type, CS_INT maxlen, int part, CS_INT value, CS_BYTE type, const Bytes &from) {
    return run(com__dateadd_both, part, value, type, from, to_type, maxlen);
}
Outcome big_sum(int part, CS_INT value, CS_BYTE type, const Bytes &from, CS_INT maxlen = 8) {
    return run(com__bigdateadd_both, part, value, type, from, type, maxlen);
}

// ---- Ticks ----

TEST(DateaddBoth, TypesHaveTheNumbersOfTheWire) {
    EXPECT_EQ(TDS_DATE, DATE);
    EXPECT_EQ(TDS_TIME, TIME);
    EXPECT_EQ(TDS_DATETIME4, NARROW);
    EXPECT_EQ(TDS_DATETIME, DATETIME);
    EXPECT_EQ(TDS_BIGDATETIME, BIG_DATETIME);
    EXPECT_EQ(TDS_BIGTIME, BIG_TIME);
}

TEST(DateaddBoth, EachType) {
    EXPECT_EQ(sum(DATEPART_MONTH, 1, DATETIME, datetime(45320, 777)), good(datetime(45349, 777)));
    EXPECT_EQ(sum(DATEPART_MONTH, 1, NARROW, narrow(45320, 77)), good(narrow(45349, 77)));
    EXPECT_EQ(sum(DATEPART_MONTH, 1, DATE, word(45320)), good(word(45349)));
    EXPECT_EQ(sum(DATEPART_MONTH, 1, TIME, word(777)), good(word(777)));
    EXPECT_EQ(sum(DATEPART_HOUR, 25, DATETIME, datetime(10, 777)), good(datetime(11, 777 + 1080000)));
    EXPECT_EQ(sum(DATEPART_HOUR, 25, NARROW, narrow(10, 77)), good(narrow(11, 137)));
    EXPECT_EQ(sum(DATEPART_HOUR, 25, DATE, word(10)), good(word(11)));
    EXPECT_EQ(sum(DATEPART_HOUR, 25, TIME, word(777)), good(word(777 + 1080000)));
}

TEST(DateaddBoth, RandomSumsAreThoseOfDateAdd) {
    Draw draw(95);
    for (int i = 0; i < 30000; ++i) {
        const CS_INT value = draw.amount(), day = draw.day(), ticks = draw.ticks();
        const CS_USHORT days = static_cast<CS_USHORT>(draw.below(65536));
        const CS_USHORT minutes = static_cast<CS_USHORT>(draw.below(1440));
        for (int part = 0; part <= 13; ++part) {
            CS_DATETIME wide = {day, ticks}, of_date = {day, 0}, of_time = {0, ticks},
                        of_narrow = {days, minutes * 18000};
            int code = com__date_add(part, value, &wide);
            ASSERT_EQ(sum(part, value, DATETIME, datetime(day, ticks)), code != 0              ? failed(code)
                                                                        : wide.dtdays < -53690 ? failed(1)
                                                                                               : good(bytes_of(wide)));
            code = com__date_add(part, value, &of_date);
            ASSERT_EQ(sum(part, value, DATE, word(day)), code != 0 ? failed(code) : good(word(of_date.dtdays)));
            code = com__date_add(part, value, &of_time);
            ASSERT_EQ(sum(part, value, TIME, word(ticks)), code != 0 ? failed(code) : good(word(of_time.dttime)));
            code = com__date_add(part, value, &of_narrow);
            CS_DATETIME4 result;
            if (code == 0)
                code = com__dttodate4(&of_narrow, &result);
            ASSERT_EQ(sum(part, value, NARROW, narrow(days, minutes)),
                      code != 0 ? failed(code) : good(bytes_of(result)));
        }
    }
}

TEST(DateaddBoth, DatetimeBefore1753IsRefused) {
    EXPECT_EQ(sum(DATEPART_DAY, -1, DATETIME, datetime(-53689, 5)), good(datetime(-53690, 5)));
    EXPECT_EQ(sum(DATEPART_DAY, -1, DATETIME, datetime(-53690, 5)), failed(1));
    EXPECT_EQ(sum(DATEPART_HOUR, -1, DATETIME, datetime(-53690, 5)), failed(1));
    EXPECT_EQ(sum(DATEPART_DAY, -1, DATE, word(-53690)), good(word(-53691))); // a date has place for it
    EXPECT_EQ(sum(DATEPART_DAY, 1, DATETIME, datetime(-53691, 5)), good(datetime(-53690, 5)));
}

TEST(DateaddBoth, NarrowSumsMustBeNarrow) {
    EXPECT_EQ(sum(DATEPART_DAY, -1, NARROW, narrow(0, 5)), failed(1));
    EXPECT_EQ(sum(DATEPART_DAY, 1, NARROW, narrow(65535, 5)), failed(1));
    EXPECT_EQ(sum(DATEPART_MINUTE, 1, NARROW, narrow(65535, 1439)), failed(1));
    EXPECT_EQ(sum(DATEPART_SECOND, 29, NARROW, narrow(10, 5)), good(narrow(10, 5)));
    EXPECT_EQ(sum(DATEPART_SECOND, 30, NARROW, narrow(10, 5)), good(narrow(10, 6)));
    EXPECT_EQ(sum(DATEPART_SECOND, 30, NARROW, narrow(10, 1439)), good(narrow(11, 0)));
}

TEST(DateaddBoth, TimesGoRoundTheClock) {
    EXPECT_EQ(sum(DATEPART_HOUR, -1, TIME, word(0)), good(word(23 * 1080000)));
    EXPECT_EQ(sum(DATEPART_SECOND, 1, TIME, word(25919999)), good(word(299)));
    EXPECT_EQ(sum(DATEPART_DAY, 1000, TIME, word(5)), good(word(5)));
    EXPECT_EQ(sum(DATEPART_DAY, 2958464, TIME, word(5)), failed(1)); // it is a time of 1900-01-01
    EXPECT_EQ(sum(DATEPART_YEAR, -1900, TIME, word(5)), failed(1));
}

TEST(DateaddBoth, DatesAreTheirMidnight) {
    EXPECT_EQ(sum(DATEPART_HOUR, 23, DATE, word(10)), good(word(10)));
    EXPECT_EQ(sum(DATEPART_HOUR, -1, DATE, word(10)), good(word(9)));
    EXPECT_EQ(sum(DATEPART_DAY, 1, DATE, word(2958463)), failed(1));
    EXPECT_EQ(sum(DATEPART_DAY, -1, DATE, word(-693595)), failed(1));
}

TEST(DateaddBoth, ResultIsStoredByItsRoomAndType) {
    const Bytes source = datetime(10, 9000); // 00:00:30
    EXPECT_EQ(sum_to(DATETIME, 8, DATEPART_DAY, 1, DATETIME, source), good(datetime(11, 9000)));
    EXPECT_EQ(sum_to(NARROW, 4, DATEPART_DAY, 1, DATETIME, source), good(narrow(11, 1)));
    EXPECT_EQ(sum_to(DATE, 4, DATEPART_DAY, 1, DATETIME, source), good(word(11)));
    EXPECT_EQ(sum_to(TIME, 4, DATEPART_DAY, 1, DATETIME, source), good(word(9000)));
    EXPECT_EQ(sum_to(DATETIME, 8, DATEPART_DAY, 1, NARROW, narrow(10, 3)), good(datetime(11, 54000)));
    EXPECT_EQ(sum_to(DATETIME, 8, DATEPART_DAY, 1, DATE, word(10)), good(datetime(11, 0)));
    EXPECT_EQ(sum_to(DATETIME, 8, DATEPART_DAY, 1, TIME, word(300)), good(datetime(1, 300)));
    EXPECT_EQ(sum_to(NARROW, 4, DATEPART_DAY, 1, TIME, word(36000)), good(narrow(1, 2)));
}

TEST(DateaddBoth, LengthsAndRoomsOtherThan8And4AreRefused) {
    for (int length = 0; length <= 16; ++length)
        for (const CS_BYTE type : {DATE, TIME, NARROW, DATETIME})
            if (length != 4 && length != 8) {
                EXPECT_EQ(sum_to(DATETIME, 8, DATEPART_DAY, 1, type, Bytes(static_cast<std::size_t>(length), 1)),
                          failed(1));
                EXPECT_EQ(sum_to(type, length, DATEPART_DAY, 1, DATETIME, datetime(10, 20)), failed(1));
            }
    for (const CS_INT length : {INT_MIN, -8, -1, 0, 1, 255, 65536 + 4, INT_MAX}) {
        Constant source(DATETIME, datetime(10, 20)), result(DATETIME, 8);
        source.get()->len = length;
        EXPECT_EQ(com__dateadd_both(DATEPART_DAY, 1, source.get(), result.get()), 1) << length;
        EXPECT_EQ(result.stored(), Bytes{});
        EXPECT_EQ(sum_to(DATETIME, length, DATEPART_DAY, 1, DATETIME, datetime(10, 20)), failed(1)) << length;
    }
}

TEST(DateaddBoth, FailureOfTheSumStoresNothing) {
    EXPECT_EQ(sum(DATEPART_YEAR, 9999, DATETIME, datetime(10, 20)), failed(1));
    EXPECT_EQ(sum(DATEPART_MINUTE, 1, DATETIME, datetime(10, 25920000)), failed(1));
    EXPECT_EQ(sum(DATEPART_MINUTE, 1, TIME, word(25920000)), failed(1));
    EXPECT_EQ(sum(DATEPART_MINUTE, 1, NARROW, narrow(10, 1440)), failed(1));
}

TEST(DateaddBoth, ResultMayBeTheSource) {
    Constant constant(DATETIME, datetime(10, 20));
    constant.get()->maxlen = 8;
    EXPECT_EQ(com__dateadd_both(DATEPART_DAY, 5, constant.get(), constant.get()), 0);
    EXPECT_TRUE(constant.is(datetime(15, 20)));
    EXPECT_EQ(com__dateadd_both(DATEPART_YEAR, -5000, constant.get(), constant.get()), 1);
    EXPECT_TRUE(constant.is(datetime(15, 20)));
}

// ---- Big values ----

TEST(BigdateaddBoth, DatetimesAreThoseOfBigdateAdd) {
    Draw draw(96);
    for (int i = 0; i < 30000; ++i) {
        const CS_INT value = draw.amount();
        const CS_BIGDATETIME from = draw.big();
        for (int part = 0; part <= 14; ++part) {
            CS_BIGDATETIME to = from;
            const int code = com__bigdate_add(part, value, &to, BIG_DATETIME);
            ASSERT_EQ(big_sum(part, value, BIG_DATETIME, big(from)), code != 0 ? failed(code) : good(big(to)));
        }
    }
    EXPECT_EQ(big_sum(DATEPART_MICROSECOND, 1, BIG_DATETIME, big(LAST_BIG)), failed(1));
    EXPECT_EQ(big_sum(DATEPART_MICROSECOND, 1, BIG_DATETIME, big(LAST_BIG - 1)), good(big(LAST_BIG)));
    EXPECT_EQ(big_sum(DATEPART_MICROSECOND, -1, BIG_DATETIME, big(FIRST_BIG)), failed(1));
}

TEST(BigdateaddBoth, TimesGoRoundTheClock) {
    const std::int64_t units[15] = {0, 0, 0, 0, 0, 0, 3600000000, 60000000, 1000000, 1000, 0, 0, 0, 0, 1};
    Draw draw(97);
    for (int i = 0; i < 30000; ++i) {
        const CS_INT value = draw.amount();
        const CS_BIGTIME from = draw.micros_of_day();
        for (int part = 0; part <= 14; ++part) {
            // Whole days leave the time, as years and months do.
            Wide to = (Wide(from) + Wide(units[part]) * value) % Wide(MICROS_A_DAY);
            if (to < 0)
                to += Wide(MICROS_A_DAY);
            ASSERT_EQ(big_sum(part, value, BIG_TIME, big(from)), good(big(static_cast<CS_BIGTIME>(to))))
                << part << ' ' << value << ' ' << from;
        }
    }
    EXPECT_EQ(big_sum(DATEPART_HOUR, 25, BIG_TIME, big(82800000000)), good(big(0)));
    EXPECT_EQ(big_sum(DATEPART_MICROSECOND, -1, BIG_TIME, big(0)), good(big(86399999999)));
    EXPECT_EQ(big_sum(DATEPART_YEAR, INT_MAX, BIG_TIME, big(5)), good(big(5)));
}

TEST(BigdateaddBoth, LengthsAndRoomsOtherThan8AreRefused) {
    for (const CS_BYTE type : {BIG_DATETIME, BIG_TIME}) {
        for (int length = 0; length <= 16; ++length)
            if (length != 8) {
                EXPECT_EQ(big_sum(DATEPART_DAY, 1, type, Bytes(static_cast<std::size_t>(length), 0)), failed(1));
                EXPECT_EQ(big_sum(DATEPART_HOUR, 1, type, big(FIRST_BIG), length), failed(1));
            }
        for (const CS_INT length : {INT_MIN, -8, -1, INT_MAX})
            EXPECT_EQ(big_sum(DATEPART_HOUR, 1, type, big(FIRST_BIG), length), failed(1));
    }
}

TEST(BigdateaddBoth, ResultMayBeTheSource) {
    Constant constant(BIG_DATETIME, big(FIRST_BIG));
    constant.get()->maxlen = 8;
    EXPECT_EQ(com__bigdateadd_both(DATEPART_MICROSECOND, 7, constant.get(), constant.get()), 0);
    EXPECT_TRUE(constant.is(big(FIRST_BIG + 7)));
}

// ---- Validity ----

struct Validity {
    int answer;
    Bytes cast;
    bool operator==(const Validity &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Validity &validity) {
        return out << validity.answer << ' ' << testing::PrintToString(validity.cast);
    }
};

Validity validity(CS_BYTE type, const Bytes &value) {
    Constant source(type, value);
    Bytes buffer(16, FILL);
    const int answer = com__valid_datetime(source.get(), buffer.data());
    EXPECT_TRUE(source.is(value));
    for (std::size_t i = value.size(); i < buffer.size(); ++i)
        EXPECT_EQ(buffer[i], FILL) << i;
    buffer.resize(std::min(buffer.size(), value.size()));
    return {answer, buffer};
}

int is_valid(CS_BYTE type, const Bytes &value) { return validity(type, value).answer; }

TEST(ValidDatetime, ValidValuesAreCopied) {
    for (const CS_INT day : {-53690, 0, 2958463})
        for (const CS_INT ticks : {0, 1, 25919999})
            EXPECT_EQ(validity(DATETIME, datetime(day, ticks)), (Validity{1, datetime(day, ticks)}));
    for (const CS_USHORT days : {CS_USHORT(0), CS_USHORT(65535)})
        for (const CS_USHORT minutes : {CS_USHORT(0), CS_USHORT(1439)})
            EXPECT_EQ(validity(NARROW, narrow(days, minutes)), (Validity{1, narrow(days, minutes)}));
    for (const CS_INT day : {-693595, -53691, 0, 2958463})
        EXPECT_EQ(validity(DATE, word(day)), (Validity{1, word(day)}));
    for (const CS_INT ticks : {0, 25919999})
        EXPECT_EQ(validity(TIME, word(ticks)), (Validity{1, word(ticks)}));
}

TEST(ValidDatetime, ValuesOutsideTheirRangeAreNot) {
    for (const CS_INT day : {INT_MIN, -693596, -693595, -53691, 2958464, INT_MAX})
        EXPECT_EQ(is_valid(DATETIME, datetime(day, 0)), 0) << day;
    for (const CS_INT ticks : {25920000, INT_MAX}) {
        EXPECT_EQ(is_valid(DATETIME, datetime(0, ticks)), 0) << ticks;
        EXPECT_EQ(is_valid(TIME, word(ticks)), 0) << ticks;
    }
    for (const CS_INT day : {INT_MIN, -693596, 2958464, INT_MAX})
        EXPECT_EQ(is_valid(DATE, word(day)), 0) << day;
    for (const CS_USHORT minutes : {CS_USHORT(1440), CS_USHORT(65535)})
        EXPECT_EQ(is_valid(NARROW, narrow(0, minutes)), 0) << minutes;
}

TEST(ValidDatetime, NegativeTimesPassAsTheDayBefore) {
    EXPECT_EQ(validity(DATETIME, datetime(10, -1)), (Validity{1, datetime(9, 25919999)}));
    EXPECT_EQ(validity(TIME, word(-1)), (Validity{1, word(25919999)}));
    EXPECT_EQ(is_valid(DATETIME, datetime(-53690, -1)), 0); // where there is none
}

TEST(ValidDatetime, OtherLengthsAreNotAndNothingIsWritten) {
    for (const std::size_t length : {0, 1, 2, 3, 5, 6, 7, 9, 12}) {
        const Validity none = validity(DATETIME, Bytes(length, 0));
        EXPECT_EQ(none.answer, 0) << length;
        EXPECT_EQ(none.cast, Bytes(length, FILL)) << length;
    }
}

// ---- Broken contracts ----

TEST(ConstantDeathTest, PartThatIsNone) {
    static Constant source(DATETIME, datetime(10, 20)), result(DATETIME, 8);
    static Constant big_source(BIG_DATETIME, big(FIRST_BIG)), big_result(BIG_DATETIME, 8);
    static Constant time_source(BIG_TIME, big(5)), time_result(BIG_TIME, 8);
    for (const int part : {-1, 15}) {
        EXPECT_BOMB(com__dateadd_both(part, 1, source.get(), result.get()), "datetime_add");
        EXPECT_BOMB(com__bigdateadd_both(part, 1, big_source.get(), big_result.get()), "datetime_add");
        EXPECT_BOMB(com__bigdateadd_both(part, 1, time_source.get(), time_result.get()), "datetime_add");
    }
    EXPECT_BOMB(com__dateadd_both(DATEPART_MICROSECOND, 1, source.get(), result.get()), "datetime_add");
}

TEST(Constant, PartThatIsNoneIsMinus101WhereAssertionsReturn) {
    for (const int part : {INT_MIN, -1, 15, INT_MAX}) {
        const support::ReturningAssertions returning;
        EXPECT_EQ(sum(part, 1, DATETIME, datetime(10, 20)), failed(-101));
        EXPECT_EQ(big_sum(part, 1, BIG_DATETIME, big(FIRST_BIG)), failed(-101));
        EXPECT_EQ(big_sum(part, 1, BIG_TIME, big(5)), failed(-101));
        EXPECT_EQ(returning.count(), 3);
    }
    const support::ReturningAssertions returning;
    EXPECT_EQ(sum(DATEPART_MICROSECOND, 1, DATETIME, datetime(10, 20)), failed(-101));
    EXPECT_EQ(returning.count(), 1);
}

} // namespace
