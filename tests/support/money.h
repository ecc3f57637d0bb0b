// Money for tests: values made from counts, and random counts that crowd the places where something changes.
#ifndef TESTS_SUPPORT_MONEY_H
#define TESTS_SUPPORT_MONEY_H

#include <dlxcomn/dlxcomn.h>

#include <cstdint>
#include <iterator>
#include <limits>
#include <ostream>
#include <random>

namespace support {

using Wide = __int128;
using UnsignedWide = unsigned __int128;

constexpr std::int64_t LARGEST = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t SMALLEST = std::numeric_limits<std::int64_t>::min();

// Neither the result of anything nor near one: stands where nothing may have been written.
constexpr std::int64_t UNWRITTEN = 0x5A5A5A5AA5A5A5A5;

constexpr CS_MONEY money(std::int64_t count) { return {static_cast<CS_INT>(count >> 32), static_cast<CS_UINT>(count)}; }
constexpr CS_MONEY4 money4(std::int32_t count) { return {count}; }
constexpr std::int64_t count_of(const CS_MONEY &value) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(static_cast<std::uint32_t>(value.mnyhigh)) << 32 |
                                     value.mnylow);
}

// A code or status, with the count that was left behind.
struct Answer {
    int code;
    std::int64_t count;
    bool operator==(const Answer &) const = default;
};
inline std::ostream &operator<<(std::ostream &out, const Answer &answer) {
    return out << "(" << answer.code << ", " << answer.count << ")";
}

inline Wide magnitude(Wide value) { return value < 0 ? -value : value; }

class RandomCounts {
public:
    explicit RandomCounts(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t bits() { return engine_(); }
    // 0 to limit - 1.
    std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }

    // Any magnitude is as likely as any other by its count of bits, and every third count is a step or a few away from
    // a place of interest.
    std::int64_t count() {
        const auto spread = static_cast<std::int64_t>(engine_() >> below(64));
        switch (below(6)) {
        case 0:
        case 1:
            return wrapped(PLACES[below(std::size(PLACES))], static_cast<std::int64_t>(below(7)) - 3);
        case 2:
        case 3:
            return wrapped(0, -spread);
        default:
            return spread;
        }
    }
    // The same in 32 bits.
    std::int32_t word() {
        const std::int64_t wide = count();
        if (wide >= std::numeric_limits<std::int32_t>::min() && wide <= std::numeric_limits<std::int32_t>::max())
            return static_cast<std::int32_t>(wide);
        return static_cast<std::int32_t>(engine_() >> (32 + below(32))) * (below(2) ? 1 : -1);
    }

    static std::int64_t wrapped(std::int64_t a, std::int64_t b) {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
    }

private:
    // clang-format off
    static constexpr std::int64_t PLACES[] = {
        0, 5, 10, 100, -100, 1000, 5000, -5000, 9999, 10000, -10000, 15000, 0xFFFF, -0xFFFF, 0x7FFFFFFF, -0x80000000LL,
        0xFFFFFFFF, -0xFFFFFFFFLL, 0x100000000, 0xFFFFFFFFFFFF, -0xFFFFFFFFFFFF, 30370004999, 303700049997,
        327670000, 21474836470000, 42949672950000, -21474836480000, 922337203685477580, -922337203685477580,
        9223372036854770000, 9223372036854775000, LARGEST, SMALLEST,
    };
    // clang-format on

    std::mt19937_64 engine_;
};

} // namespace support

#endif
