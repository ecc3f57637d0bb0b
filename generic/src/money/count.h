// Money as one machine word: what every operation works on between the load of a value and its store.
//
// A Count is the value in ten-thousandths. In memory the high word comes first, whatever the order of bytes in a
// word, so the two halves are loaded and stored one by one; a value need not be aligned.
#ifndef DLX_MONEY_COUNT_H
#define DLX_MONEY_COUNT_H

#include "bytes/memory.h"
#include "diag/check.h"
#include "numeric/limbs.h"

#include <dlxcomn/money.h>
#include <dlxcomn/numeric.h>

#include <cstddef>
#include <cstdint>
#include <limits>

namespace dlx {

using Count = std::int64_t;

constexpr int MONEY_PLACES = 4;
constexpr limb MONEY_UNIT = 10000; // counts in one whole

constexpr Count LARGEST_COUNT = std::numeric_limits<Count>::max();
constexpr Count SMALLEST_COUNT = std::numeric_limits<Count>::min();

inline Count load_count(const void *money) {
    const auto high = load<CS_UINT>(money);
    const auto low = load<CS_UINT>(static_cast<const char *>(money) + offsetof(CS_MONEY, mnylow));
    return static_cast<Count>(static_cast<limb>(high) << 32 | low);
}

inline void store_count(void *money, Count count) {
    const auto bits = static_cast<limb>(count);
    store(money, static_cast<CS_UINT>(bits >> 32));
    store(static_cast<char *>(money) + offsetof(CS_MONEY, mnylow), static_cast<CS_UINT>(bits));
}

// 2^63 for the smallest count.
inline limb magnitude_of(Count count) {
    const auto bits = static_cast<limb>(count);
    return count < 0 ? 0 - bits : bits;
}

// The count of that sign; a magnitude of 2^63 is the smallest count.
inline Count signed_count(limb magnitude, bool negative) {
    return static_cast<Count>(negative ? 0 - magnitude : magnitude);
}

// The smallest count reaches one further than the largest.
inline bool fits_count(limb magnitude, bool negative) {
    return magnitude <= static_cast<limb>(LARGEST_COUNT) + static_cast<limb>(negative);
}

// count * mpier, the magnitude then plus add; NUME_OVERFLOW leaves count as it was.
//
// Three things that callers see: mpier 0 gives add itself, with its sign. The smallest count is out of reach even
// where the result would be just that. And the high half of mpier meets only the low 48 bits of the magnitude: what
// it would make of the top 16 is not part of the result, and not an overflow either.
inline int scale_count(Count &count, CS_UINT mpier, CS_UINT add) {
    if (mpier == 0) {
        count = static_cast<CS_INT>(add);
        return NUME_OK;
    }
    constexpr limb LOW_48 = 0x0000FFFFFFFFFFFF;
    const limb magnitude = magnitude_of(count);
    double_limb scaled = static_cast<double_limb>(magnitude) * (mpier & 0xFFFF) + add;
    scaled += static_cast<double_limb>(magnitude & LOW_48) * (mpier >> 16) << 16;
    if (scaled > static_cast<limb>(LARGEST_COUNT))
        return NUME_OVERFLOW;
    count = signed_count(static_cast<limb>(scaled), count < 0);
    return NUME_OK;
}

// The count as a word of CS_MONEY4, or the bound that it passes; false then.
inline bool narrow_count(Count count, CS_INT &word) {
    constexpr Count LOW = std::numeric_limits<CS_INT>::min();
    constexpr Count HIGH = std::numeric_limits<CS_INT>::max();
    word = static_cast<CS_INT>(count < LOW ? LOW : count > HIGH ? HIGH : count);
    return word == count;
}

// Whether all operands are there. A missing one is reported at the member that was called.
template <class... Operand>
inline bool has_operands(SourceLine member, const Operand *...operands) {
    if ((... && (operands != nullptr))) [[likely]]
        return true;
    com_raise_invalid_null_pointer(member.file, member.line);
    return false;
}

} // namespace dlx

#endif
