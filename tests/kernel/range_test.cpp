// The range rules, row by row: what is stored below and above each destination, and which core code tells it.
#include "kernel/range.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using namespace dlx;
using Integer = __int128;

// Both sides of a pair. A code of NUME_OK says that no value of the source lies there.
template <class From, class To>
void expect_row(From below, To low, int below_code, From above, To high, int above_code) {
    const Fitted<To> under = fit<To>(below);
    EXPECT_EQ((code_of_side<From, To>(under.side)), below_code);
    if (below_code != NUME_OK) {
        EXPECT_EQ(under.side, Side::BELOW);
        EXPECT_EQ(under.value, low);
    }
    const Fitted<To> over = fit<To>(above);
    EXPECT_EQ((code_of_side<From, To>(over.side)), above_code);
    if (above_code != NUME_OK) {
        EXPECT_EQ(over.side, Side::ABOVE);
        EXPECT_EQ(over.value, high);
    }
}

// The row of an integer pair, judged by the ends of the source.
template <class From, class To>
void expect_integers(int below_code, int above_code) {
    expect_row<From, To>(std::numeric_limits<From>::min(), std::numeric_limits<To>::min(), below_code,
                         std::numeric_limits<From>::max(), std::numeric_limits<To>::max(), above_code);
    // Around both bounds, as far as the source reaches.
    const Integer low = std::numeric_limits<To>::min(), high = std::numeric_limits<To>::max();
    for (Integer bound : {low, high})
        for (Integer value = bound - 2; value <= bound + 2; ++value) {
            if (value < std::numeric_limits<From>::min() || value > std::numeric_limits<From>::max())
                continue;
            const Fitted<To> fitted = fit<To>(static_cast<From>(value));
            EXPECT_EQ(fitted.side, value < low ? Side::BELOW : value > high ? Side::ABOVE : Side::INSIDE);
            EXPECT_TRUE(fitted.value == std::clamp(value, low, high));
        }
}

constexpr int NONE = NUME_OK, OVER = NUME_OVERFLOW, UNDER = NUME_UNDERFLOW;
using I1 = CS_TINYINT;
using I2 = CS_SMALLINT;
using I4 = CS_INT;
using I8 = CS_BIGINT;
using UI2 = CS_USMALLINT;
using UI4 = CS_UINT;
using UI8 = CS_UBIGINT;

TEST(Range, SmallIntegers) {
    expect_integers<I2, I1>(OVER, OVER);
    expect_integers<I2, UI2>(UNDER, NONE);
    expect_integers<I2, UI4>(UNDER, NONE);
    expect_integers<I2, UI8>(UNDER, NONE);
    expect_integers<UI2, I1>(NONE, OVER);
    expect_integers<UI2, I2>(NONE, OVER);
}

TEST(Range, Integers) {
    expect_integers<I4, I1>(OVER, OVER);
    expect_integers<I4, I2>(OVER, OVER);
    expect_integers<I4, UI2>(UNDER, OVER);
    expect_integers<I4, UI4>(UNDER, NONE);
    expect_integers<I4, UI8>(UNDER, NONE);
    expect_integers<UI4, I1>(NONE, OVER);
    expect_integers<UI4, I2>(NONE, OVER);
    expect_integers<UI4, I4>(NONE, OVER);
    expect_integers<UI4, UI2>(NONE, OVER);
}

// The low side is mixed: an underflow into the two narrow types, an overflow into 32 bits.
TEST(Range, BigIntegers) {
    expect_integers<I8, I1>(UNDER, OVER);
    expect_integers<I8, I2>(UNDER, OVER);
    expect_integers<I8, I4>(OVER, OVER);
    expect_integers<I8, UI2>(UNDER, OVER);
    expect_integers<I8, UI4>(UNDER, OVER);
    expect_integers<I8, UI8>(UNDER, NONE);
    expect_integers<UI8, I1>(NONE, OVER);
    expect_integers<UI8, I2>(NONE, OVER);
    expect_integers<UI8, I4>(NONE, OVER);
    expect_integers<UI8, I8>(NONE, OVER);
    expect_integers<UI8, UI2>(NONE, OVER);
    expect_integers<UI8, UI4>(NONE, OVER);
}

TEST(Range, PairsThatNeverFail) {
    expect_integers<I1, I1>(NONE, NONE);
    expect_integers<I1, I2>(NONE, NONE);
    expect_integers<I1, UI2>(NONE, NONE);
    expect_integers<I1, UI8>(NONE, NONE);
    expect_integers<I2, I2>(NONE, NONE);
    expect_integers<I2, I4>(NONE, NONE);
    expect_integers<I2, I8>(NONE, NONE);
    expect_integers<I4, I4>(NONE, NONE);
    expect_integers<I4, I8>(NONE, NONE);
    expect_integers<I8, I8>(NONE, NONE);
    expect_integers<UI2, I4>(NONE, NONE);
    expect_integers<UI2, UI4>(NONE, NONE);
    expect_integers<UI4, I8>(NONE, NONE);
    expect_integers<UI4, UI8>(NONE, NONE);
    expect_integers<UI8, UI8>(NONE, NONE);
}

template <class From, class To>
void expect_float(From low, To low_stored, int below_code, From high, To high_stored) {
    EXPECT_EQ(fit<To>(low).side, Side::INSIDE);
    EXPECT_EQ(fit<To>(high).side, Side::INSIDE);
    const From infinity = std::numeric_limits<From>::infinity();
    expect_row<From, To>(std::nextafter(low, -infinity), low_stored, below_code, std::nextafter(high, infinity),
                         high_stored, OVER);
    expect_row<From, To>(-infinity, low_stored, below_code, infinity, high_stored, OVER);
}

TEST(Range, Doubles) {
    expect_float<double, I1>(0, 0, OVER, 255, 255);
    expect_float<double, I2>(-32768, -32768, OVER, 32767, 32767);
    expect_float<double, I4>(-2147483648.0, std::numeric_limits<I4>::min(), OVER, 2147483647, 2147483647);
    expect_float<double, I8>(-9223372036854769664.0, -9223372036854769664, OVER, 9223372036854769664.0,
                             9223372036854769664);
    expect_float<double, UI2>(0, 0, UNDER, 65535, 65535);
    expect_float<double, UI4>(0, 0, UNDER, 4294967295, 4294967295u);
    expect_float<double, UI8>(0, 0, UNDER, 18446744073709500416.0, 18446744073709500416u);
}

// The largest singles within the bounds.
TEST(Range, Singles) {
    expect_float<float, I1>(0, 0, OVER, 255, 255);
    expect_float<float, I2>(-32768, -32768, OVER, 32767, 32767);
    expect_float<float, I4>(-2147483648.0f, std::numeric_limits<I4>::min(), OVER, 2147483520.0f, 2147483647);
    expect_float<float, I8>(-9223369837831520256.0f, -9223370000000000000, OVER, 9223369837831520256.0f,
                            9223370000000000000);
    expect_float<float, UI2>(0, 0, UNDER, 65535, 65535);
    expect_float<float, UI4>(0, 0, UNDER, 4294967040.0f, 4294967295u);
    expect_float<float, UI8>(0, 0, UNDER, 18446698993732812800.0f, 18446700000000000000u);
}

TEST(Range, NanIsInside) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(fit<I1>(nan).side, Side::INSIDE);
    EXPECT_EQ(fit<I8>(nan).side, Side::INSIDE);
    EXPECT_EQ(fit<UI8>(static_cast<float>(nan)).side, Side::INSIDE);
    EXPECT_EQ(narrow(nan).side, Side::INSIDE);
}

// A value from 2^63 on comes out one short.
TEST(Range, UpperHalfOfUnsignedIsOneShort) {
    EXPECT_EQ(fit<UI8>(std::nextafter(0x1p63, 0.0)).value, 9223372036854774784u);
    EXPECT_EQ(fit<UI8>(0x1p63).value, 9223372036854775807u);
    EXPECT_EQ(fit<UI8>(0x1p63f).value, 9223372036854775807u);
}

TEST(Range, CeilingsOfTheFloats) {
    EXPECT_EQ(to_float<float>(I8(9223369999999999999)), 9223369837831520256.0f);
    EXPECT_EQ(to_float<float>(std::numeric_limits<I8>::max()), 9223369837831520256.0f);
    EXPECT_EQ(to_float<double>(I8(9223372036854769663)), 9223372036854769664.0);
    EXPECT_EQ(to_float<double>(std::numeric_limits<I8>::max()), 9223372036854769664.0);
    EXPECT_EQ(to_float<float>(std::numeric_limits<UI8>::max()), 18446700093244440576.0f);
    EXPECT_EQ(to_float<double>(std::numeric_limits<UI8>::max()), 18446744073709500416.0);
    EXPECT_EQ(to_float<double>(std::numeric_limits<I8>::min()), -0x1p63);
}

TEST(Range, NarrowedDoubles) {
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(narrow(3.4028234663852886e38).side, Side::INSIDE);
    EXPECT_EQ(narrow(3.4028234663852889e38).side, Side::ABOVE);
    EXPECT_EQ(narrow(3.4028234663852889e38).value, largest);
    EXPECT_EQ(narrow(-3.4028234663852889e38).side, Side::BELOW);
    EXPECT_EQ(narrow(-3.4028234663852889e38).value, -largest);
    EXPECT_EQ((code_of_side<double, float>(Side::BELOW)), OVER);
    EXPECT_EQ(narrow(1e-46).value, 0.0f);
}

} // namespace
