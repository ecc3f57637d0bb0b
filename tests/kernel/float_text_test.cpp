// The text of doubles against the C library's own "%.17g".
#include "kernel/float_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace {

std::string printed(double value) {
    char text[64];
    return std::string(text, static_cast<size_t>(std::snprintf(text, sizeof text, "%.17g", value)));
}

// The text of a value, with a check that only its 32 bytes of room were used.
std::string formatted(double value) {
    constexpr char GUARD = 0x5A;
    char room[32 + 8];
    std::memset(room, GUARD, sizeof room);
    const int length = dlx::format_double_17g(value, room);
    for (size_t i = 32; i < sizeof room; ++i)
        EXPECT_EQ(room[i], GUARD) << "written behind the room for " << printed(value);
    return std::string(room, static_cast<size_t>(length));
}

double from_bits(std::uint64_t bits) { return std::bit_cast<double>(bits); }

void expect_as_printed(double value) { ASSERT_EQ(formatted(value), printed(value)) << std::hexfloat << value; }

// The value, its neighbours, and the same below zero.
void expect_around(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(std::fabs(value));
    for (std::uint64_t near = bits - 2; near != bits + 3; ++near)
        if (near < 0x7FF0000000000000) { // a step below zero wraps to a NaN
            expect_as_printed(from_bits(near));
            expect_as_printed(-from_bits(near));
        }
}

TEST(FloatText, WritesWhatIsKnown) {
    EXPECT_EQ(formatted(0.1), "0.10000000000000001");
    EXPECT_EQ(formatted(0.5), "0.5");
    EXPECT_EQ(formatted(-0.5), "-0.5");
    EXPECT_EQ(formatted(100), "100");
    EXPECT_EQ(formatted(1e16), "10000000000000000");
    EXPECT_EQ(formatted(1e17), "1e+17");
    EXPECT_EQ(formatted(1e21), "1e+21");
    EXPECT_EQ(formatted(0.0001), "0.0001");
    EXPECT_EQ(formatted(0.00001), "1.0000000000000001e-05");
    EXPECT_EQ(formatted(1.7976931348623157e308), "1.7976931348623157e+308");
    EXPECT_EQ(formatted(5e-324), "4.9406564584124654e-324");
    EXPECT_EQ(formatted(9007199254740993.0), "9007199254740992");
    EXPECT_EQ(formatted(123456789012345678.0), "1.2345678901234568e+17");
}

TEST(FloatText, ZeroesInfinitiesAndNansKeepTheirSign) {
    EXPECT_EQ(formatted(0.0), "0");
    EXPECT_EQ(formatted(-0.0), "-0");
    EXPECT_EQ(formatted(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(formatted(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(formatted(from_bits(0x7FF8000000000000)), "nan");
    EXPECT_EQ(formatted(from_bits(0xFFF8000000000000)), "-nan");
    EXPECT_EQ(formatted(from_bits(0x7FF0000000000001)), "nan"); // a signalling one
}

TEST(FloatText, LongestTextHasTwentyFourBytes) {
    EXPECT_EQ(formatted(-2.2250738585072014e-308), "-2.2250738585072014e-308");
    EXPECT_EQ(formatted(-2.2250738585072014e-308).size(), 24u);
}

// The last digit is decided by the rule for ties alone: the product's error cannot decide it.
TEST(FloatText, ExactTiesGoToEven) {
    EXPECT_EQ(formatted(1125899906842624.25), "1125899906842624.2");
    EXPECT_EQ(formatted(1125899906842624.75), "1125899906842624.8");
    EXPECT_EQ(formatted(70368744177664.0625), "70368744177664.062");
    EXPECT_EQ(formatted(-70368744177664.1875), "-70368744177664.188");
    EXPECT_EQ(formatted(2251799813685249.5), "2251799813685249.5"); // a half that seventeen digits hold
}

// x * 10^q is a half of an odd integer only for q up to 24. Builds such values for each q.
TEST(FloatText, EveryExponentWithTies) {
    std::mt19937_64 random(1);
    int ties = 0;
    for (int q = 1; q <= 24; ++q) {
        // x = odd * 2^-(q + 1) with 10^16 <= x * 10^q < 10^17.
        const double unit = std::ldexp(1.0, -(q + 1));
        const double low = std::pow(10.0, 16 - q) / unit;
        const double high = std::fmin(low * 10, std::ldexp(1.0, 53));
        if (low >= high)
            continue;
        for (int i = 0; i < 2000; ++i) {
            const double spread = std::ldexp(static_cast<double>(random() >> 11), -53);
            const auto odd = static_cast<std::uint64_t>(low + spread * (high - low)) | 1;
            expect_around(static_cast<double>(odd) * unit);
            ++ties;
        }
    }
    EXPECT_GE(ties, 20000);
}

TEST(FloatText, EveryPowerOfTwo) {
    for (int exponent = -1074; exponent <= 1023; ++exponent)
        expect_around(std::ldexp(1.0, exponent));
}

// Around 10^n the count of digits before the point changes, and nines round up to it.
TEST(FloatText, EveryPowerOfTenAndItsSmallMultiples) {
    for (int exponent = -330; exponent <= 308; ++exponent)
        for (int factor = 1; factor <= 200; ++factor) {
            char text[32];
            std::snprintf(text, sizeof text, "%de%d", factor, exponent);
            expect_around(std::strtod(text, nullptr));
        }
}

// Where fixed form and exponent form meet.
TEST(FloatText, BoundariesOfTheTwoForms) {
    for (double value : {1e-5, 9.9999999999999991e-05, 1e-4, 1e-3, 1e15, 1e16, 9999999999999998.0, 99999999999999984.0,
                         1e17, 1.0000000000000002e17, 9007199254740991.0, 9007199254740992.0, 9007199254740993.0,
                         18014398509481985.0, 36028797018963968.0, 72057594037927936.0})
        expect_around(value);
}

// Values whose decimal expansions come closest to a half at this or a nearby count of digits, from the published
// lists of hard cases for decimal conversion.
TEST(FloatText, HardCases) {
    struct Hard {
        double mantissa;
        int exponent;
    };
    constexpr Hard cases[] = {
        {8511030020275656, -342}, {5201988407066741, -824}, {6406892948269899, 237},   {8431154198732492, 72},
        {6475049196144587, 99},   {8274307542972842, 726},  {5381065484265332, -456},  {6761728585499734, -1057},
        {7976538478610756, 376},  {5982403858958067, 377},  {5536995190630837, 93},    {7225450889282194, 710},
        {7225450889282194, 709},  {8703372741147379, 117},  {8944262675275217, -1001}, {7459803696087692, -707},
        {6080469016670379, -381}, {8385515147034757, 721},  {7514216811389786, -828},  {8397297803260511, -345},
        {6733459239310543, 202},  {8091450587292794, -473}, {6567258882077402, 952},   {6712731423444934, 535},
        {6712731423444934, 534},  {5298405411573037, -957}, {5137311167659507, -144},  {6722280709661868, 363},
        {5344436398034927, -169}, {8369123604277281, -853}, {8995822108487663, -780},  {8942832835564782, -383},
        {8942832835564782, -384}, {8942832835564782, -385}, {6965949469487146, -249},  {6965949469487146, -250},
        {6965949469487146, -251}, {7487252720986826, 548},  {5592117679628511, 164},   {8887055249355788, 665},
        {6994187472632449, 690},  {8797576579012143, 588},  {7363326733505337, 272},   {8549497411294502, -448},
    };
    for (const Hard &hard : cases)
        expect_around(std::ldexp(hard.mantissa, hard.exponent));
}

TEST(FloatText, DenormalsOfEveryLength) {
    std::mt19937_64 random(2);
    for (int bits = 1; bits <= 52; ++bits)
        for (int i = 0; i < 500; ++i)
            expect_around(from_bits((1ull << (bits - 1)) | (random() & ((1ull << (bits - 1)) - 1))));
}

TEST(FloatText, RandomBitPatternsOfEveryExponent) {
    std::mt19937_64 random(20240501);
    for (int i = 0; i < 1000000; ++i)
        expect_as_printed(from_bits(random()));
}

// What applications print: short decimals, integers, quotients.
TEST(FloatText, RandomEverydayValues) {
    std::mt19937_64 random(20240502);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        expect_as_printed(static_cast<double>(static_cast<std::int64_t>(bits) >> (bits & 63)));
        expect_as_printed(static_cast<double>(static_cast<std::int32_t>(bits)) / 100);
        expect_as_printed(static_cast<double>(bits % 100000) / 1e3);
        expect_as_printed(
            std::ldexp(static_cast<double>(static_cast<std::int32_t>(bits)), -static_cast<int>(bits >> 59)));
        expect_as_printed(std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(bits % 141) - 70));
    }
}

} // namespace
