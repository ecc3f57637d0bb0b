// Any record and any value printed in any style at any room, against the second writer of the styles, with guards
// around the room; and the pieces that callers print by.
#include "input.h"
#include "support/naive_style.h"

#include <climits>

namespace {

using support::Engine;
using support::Printed;

constexpr CS_BYTE GUARD = 0xEE;
constexpr std::size_t ROOM = 80; // more than any style makes
constexpr std::size_t MARGIN = 16;

std::string guards(std::size_t count) { return std::string(count, static_cast<char>(GUARD)); }

class Numbers {
public:
    explicit Numbers(fuzz::Input &input) : input_(input) {}
    // Small ones as a date has them, or all 32 bits.
    CS_INT next() {
        const int kind = input_.byte();
        if (kind < 0x80)
            return kind;
        std::uint32_t bits = 0;
        for (int i = 0; i < 4; ++i)
            bits = bits << 8 | input_.byte();
        return static_cast<CS_INT>(bits);
    }

private:
    fuzz::Input &input_;
};

// What a call with the room `len` answers and writes, and nothing beside.
template <class Print>
void check(const Printed &told, int len, const Print &print) {
    std::string memory = guards(MARGIN + ROOM + MARGIN);
    const int answer = print(memory.data() + MARGIN);
    FUZZ_CHECK(answer == told.answer(len));
    const std::string written = told.status < 0 ? "" : told.written(len);
    FUZZ_CHECK(memory == guards(MARGIN) + written + guards(ROOM + MARGIN - written.size()));
}

void check_records(const CS_DATEREC &record, int len, int style, char **months, CS_INT secprec) {
    CS_DATEREC copy = record;
    check(support::naive_style(Engine::date, record, style, months, secprec), len,
          [&](char *buf) { return com__daterectochar(&copy, buf, len, style, months, secprec); });
    check(support::naive_style(Engine::time, record, style, months, secprec), len,
          [&](char *buf) { return com__timerectochar(&copy, buf, len, style, months, secprec); });
    FUZZ_CHECK(std::memcmp(&copy, &record, sizeof copy) == 0);
}

// Values within the ranges of their types.
void check_values(CS_INT number, CS_INT ticks, int len, int style, char **months) {
    constexpr CS_INT FIRST_DAY = -693595, LAST_DAY = 2958463, TICKS_A_DAY = 25920000;
    constexpr std::uint64_t MICROS_A_DAY = 86400000000;
    const auto within = [](std::uint32_t value, std::uint32_t count) { return static_cast<CS_INT>(value % count); };
    CS_INT days = FIRST_DAY + within(static_cast<std::uint32_t>(number), LAST_DAY - FIRST_DAY + 1);
    CS_INT time = within(static_cast<std::uint32_t>(ticks), TICKS_A_DAY);
    CS_BIGTIME bigtime = (static_cast<std::uint64_t>(static_cast<std::uint32_t>(ticks)) << 8 ^ time) % MICROS_A_DAY;
    CS_BIGDATETIME big = static_cast<std::uint64_t>(days + 693595 + 366) * MICROS_A_DAY + bigtime;

    const CS_DATEREC day = support::naive_day(days);
    CS_DATETIME both = {days, time};
    check(support::naive_style(Engine::date, support::naive_time_of_ticks(day, time), style, months, 300), len,
          [&](char *buf) { return com__datetochar(&both, buf, len, style, months); });
    check(support::naive_style(Engine::date, support::naive_time_of_micros(day, bigtime), style, months, 1000000), len,
          [&](char *buf) { return com__bigdatetimetochar(&big, buf, len, style, months); });
    check(support::naive_style(Engine::time, support::naive_time_of_ticks(support::naive_day(0), time), style, months,
                               300),
          len, [&](char *buf) { return com__timeatochar(&time, buf, len, style, months); });
    const CS_DATEREC first = support::naive_day(FIRST_DAY);
    check(support::naive_style(Engine::time, support::naive_time_of_micros(first, bigtime), style, months, 1000000),
          len, [&](char *buf) { return com__bigtimetochar(&bigtime, buf, len, style, months); });
    if (style != 0 && style != 9)
        check(support::naive_style(Engine::date, day, style, months, 300), len,
              [&](char *buf) { return com__dateatochar(&days, buf, len, style, months); });
    else if (months != nullptr)
        check(Printed{0, support::naive_pattern("Mon _d yyyy", day, months, 300)}, len,
              [&](char *buf) { return com__dateatochar(&days, buf, len, style, months); });
}

void check_pieces(CS_INT value, int width, int padchar) {
    const int len = width % 33 - 16;
    const auto pad = static_cast<char>(padchar);
    const std::string tail(pad != '\0' ? 1 : 0, pad);
    const auto field = static_cast<std::size_t>(std::abs(len));
    std::string digits = std::to_string(std::llabs(static_cast<long long>(value)));
    digits = digits.size() < field ? std::string(field - digits.size(), len < 0 ? '0' : ' ') + digits
                                   : digits.substr(digits.size() - field);
    check({0, digits + tail}, -1, [&](char *buf) { return com__cpint(buf, value, pad, len); });

    const std::string decimal = std::to_string(value);
    const bool is_cut = len > 0 && decimal.size() > static_cast<std::size_t>(len);
    check({0, is_cut ? "*" : decimal}, -1, [&](char *buf) { return com__itochar(value, buf, len); });

    std::string name = com__get_days()[field % 7];
    check({0, name.substr(0, static_cast<std::size_t>(std::max(len, 0))) + tail}, -1,
          [&](char *buf) { return com__cpchar(buf, name.data(), pad, len); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    const int style = input.byte() - 1;
    const int room = input.byte();
    const int len = room < 70 ? room : room < 80 ? -room : room == 80 ? INT_MAX : room == 81 ? INT_MIN : room % 70;
    const int kind = input.byte();
    char *long_names[12];
    for (char *&name : long_names)
        name = const_cast<char *>("\xC3\xA9 name that is longer than nine");
    char **const lists[] = {com__get_shortmonths(), com__get_months(), long_names, nullptr};
    char **const months = lists[kind % 4];
    const CS_INT secprec = kind / 4 % 3 == 0 ? 1000000 : kind / 4 % 3 == 1 ? 300 : 0;
    const bool has_month = kind >= 0x80;

    Numbers numbers(input);
    CS_DATEREC record;
    for (CS_INT *field : {&record.dateyear, &record.datemonth, &record.datedmonth, &record.datedyear, &record.datedweek,
                          &record.datehour, &record.dateminute, &record.datesecond, &record.datemsecond,
                          &record.datetzone, &record.datesecfrac, &record.datesecprec})
        *field = numbers.next();
    // The month is an index of the names. Where there are none, it may be anything.
    if (has_month || months != nullptr)
        record.datemonth = static_cast<CS_INT>(static_cast<std::uint32_t>(record.datemonth) % 12);
    check_records(record, len, style, months, secprec);
    check_values(record.dateyear, record.datesecfrac, len, style, months);
    check_pieces(record.datesecprec, record.datedyear & 0xFF, record.datedweek);
    return 0;
}
