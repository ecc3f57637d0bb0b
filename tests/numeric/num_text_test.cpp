// com__subchartoexctnume and com__subexctnumetochar.
#include "support/assertions.h"
#include "support/numeric_record.h"
#include "support/numeric_text_reference.h"

#include <gtest/gtest.h>

#include <random>

using support::length_of_precision;
using support::power_of;
using support::Record;
using support::TextCall;
using support::TextReference;
using support::TextResult;

namespace {

constexpr CS_BYTE FROM_TEXT = 255;
constexpr CS_BYTE COMPUTED = 0;

TextCall call_of(const std::string &text, int precision, int scale, int flag, CS_INT destlen = 33) {
    return {text, static_cast<int>(text.size()), destlen, static_cast<CS_BYTE>(precision), static_cast<CS_BYTE>(scale),
            flag};
}

// The value of a result as a signed count of its last places.
std::string value_of(const TextResult &result) {
    if (result.value.empty())
        return std::string("code ").append(std::to_string(result.code));
    return support::value_text(result.value.data(), result.destlen);
}

TextResult read(const TextCall &call) {
    bool intact = false;
    TextResult result = support::read_by_library(call, &intact);
    EXPECT_TRUE(intact) << support::describe(call);
    return result;
}

// What text gives at a fixed precision of 77 and a fixed scale.
std::string at_scale(const std::string &text, int scale, int flag = 0) {
    return value_of(read(call_of(text, 77, scale, flag)));
}

void expect_like_reference(const TextCall &call) {
    bool intact = false;
    const TextResult expected = TextReference::read(call);
    const TextResult actual = support::read_by_library(call, &intact);
    ASSERT_TRUE(intact) << support::describe(call);
    ASSERT_EQ(actual, expected) << support::describe(call) << "\n library   " << support::describe(actual)
                                << "\n reference " << support::describe(expected);
}

// The head, zeros and a final 1.
std::string text_with_zeros(const std::string &head, size_t zeros) {
    return std::string(head).append(zeros, '0').append("1");
}

// ---- Reading: plain text -----------------------------------------------------------------------

TEST(NumericFromText, IntegerAtScaleZero) {
    const TextResult result = read(call_of("12345", 10, 0, 0));
    EXPECT_EQ(result.code, NUME_OK);
    EXPECT_EQ(value_of(result), "12345");
    EXPECT_EQ(result.precision, 10);
    EXPECT_EQ(result.scale, 0);
    EXPECT_EQ(result.destlen, 33);
    EXPECT_EQ(result.offset, 0);
}

TEST(NumericFromText, FractionIsBroughtToTheScale) {
    EXPECT_EQ(at_scale("1.5", 4), "15000");
    EXPECT_EQ(at_scale("-1.5", 4), "-15000");
    EXPECT_EQ(at_scale(".5", 1), "5");
    EXPECT_EQ(at_scale("5.", 1), "50");
    EXPECT_EQ(at_scale("00012.340", 3), "12340");
}

TEST(NumericFromText, SignAndBlanksMayMixBeforeTheFirstDigit) {
    EXPECT_EQ(at_scale("   7", 0), "7");
    EXPECT_EQ(at_scale("- 7", 0), "-7");
    EXPECT_EQ(at_scale("  -  7", 0), "-7");
    EXPECT_EQ(at_scale("+7", 0), "7");
    EXPECT_EQ(at_scale("-.5", 1), "-5");
}

TEST(NumericFromText, SecondSignIsBadValue) {
    EXPECT_EQ(at_scale("--7", 0), "code 2");
    EXPECT_EQ(at_scale("+-7", 0), "code 2");
    EXPECT_EQ(at_scale("- -7", 0), "code 2");
}

TEST(NumericFromText, SignBehindTheNumberIsBadValue) {
    EXPECT_EQ(at_scale("7-", 0), "code 2");
    EXPECT_EQ(at_scale("7 +", 0), "code 2");
}

TEST(NumericFromText, LeadingTabIsNotABlank) {
    EXPECT_EQ(at_scale("\t7", 0), "code 2");
    EXPECT_EQ(at_scale("\t", 0), "0"); // white space and nothing else is zero
}

TEST(NumericFromText, TrailingWhiteSpaceIsSkipped) {
    EXPECT_EQ(at_scale("7  ", 0), "7");
    EXPECT_EQ(at_scale("7 \t\n\v\f\r\x0E\x0F", 0), "7");
    EXPECT_EQ(at_scale("7.5\n", 1), "75");
    EXPECT_EQ(at_scale("7\xA0", 0), "code 2"); // the no-break space is none here
}

TEST(NumericFromText, AnythingBehindWhiteSpaceIsBadValue) {
    EXPECT_EQ(at_scale("7 8", 0), "code 2");
    EXPECT_EQ(at_scale("7 .", 0), "code 2");
    EXPECT_EQ(at_scale("7x", 0), "code 2");
    EXPECT_EQ(at_scale("x", 0), "code 2");
    EXPECT_EQ(at_scale("1,000", 0), "code 2");
}

TEST(NumericFromText, SecondPointIsBadValue) {
    EXPECT_EQ(at_scale("1.2.3", 5), "code 2");
    EXPECT_EQ(at_scale("1..", 5), "code 2");
}

TEST(NumericFromText, NulInsideTheLengthIsBadValue) {
    TextCall call = call_of(std::string("12\0", 3), 77, 0, 0);
    EXPECT_EQ(read(call).code, NUME_BADVALUE);
}

TEST(NumericFromText, OnlyTheLengthIsRead) {
    TextCall call = call_of("123x", 77, 0, 0);
    call.len = 3;
    EXPECT_EQ(value_of(read(call)), "123");
}

TEST(NumericFromText, NothingIsZeroAndNoError) {
    for (const char *text : {"", "   ", "-", "+", " - ", ".", "-.", "e5", "e", "E", "-e5"}) {
        const TextResult result = read(call_of(text, 77, 2, 0));
        EXPECT_EQ(result.code, NUME_OK) << text;
        EXPECT_EQ(value_of(result), "0") << text;
    }
}

TEST(NumericFromText, NegativeLengthIsBadValue) {
    TextCall call = call_of("1", 77, 0, 0);
    call.len = -1;
    EXPECT_EQ(read(call).code, NUME_BADVALUE);
}

TEST(NumericFromText, BadValueLeavesAClearedDestination) {
    CS_BYTE bytes[33];
    std::memset(bytes, 0xFF, sizeof bytes);
    CS_BYTE *dest = bytes;
    CS_INT destlen = sizeof bytes;
    CS_BYTE precision = 77, scale = 0;
    char text[] = "12x";
    EXPECT_EQ(com__subchartoexctnume(text, 3, &dest, &destlen, &precision, &scale, 0), NUME_BADVALUE);
    for (const CS_BYTE byte : bytes)
        EXPECT_EQ(byte, 0);
}

// ---- Reading: digits that are dropped ----------------------------------------------------------

TEST(NumericFromText, RoundsAtTheFirstFractionDigitLost) {
    EXPECT_EQ(at_scale("12.345", 2, 1), "1235");
    EXPECT_EQ(at_scale("12.344", 2, 1), "1234");
    EXPECT_EQ(at_scale("12.3449999", 2, 1), "1234");
    EXPECT_EQ(at_scale("-12.345", 2, 1), "-1235");
    EXPECT_EQ(at_scale("0.5", 0, 1), "1");
    EXPECT_EQ(at_scale("9.99", 1, 1), "100");
}

TEST(NumericFromText, WhatStandsBehindTheDroppedDigitIsNotRead) {
    EXPECT_EQ(at_scale("12.344xyz", 2, 1), "1234");
    EXPECT_EQ(at_scale("12.345--", 2, 1), "1235");
    EXPECT_EQ(at_scale("12.34xyz", 2, 1), "code 2");
}

TEST(NumericFromText, WithoutFlagTheFirstLostDigitIsTruncated) {
    EXPECT_EQ(at_scale("12.345", 2, 0), "code 6");
    EXPECT_EQ(at_scale("12.340", 2, 0), "code 6"); // a zero too
    EXPECT_EQ(at_scale("12.34", 2, 0), "1234");
    EXPECT_EQ(at_scale("12.345", 2, 2), "code 6"); // only 1 permits it
    EXPECT_EQ(at_scale("12.345", 2, -1), "code 6");
}

TEST(NumericFromText, DigitsBeyondTheRoomAreScaledBackAndOverflow) {
    const std::string digits(78, '9');
    EXPECT_EQ(value_of(read(call_of(digits, 77, 0, 1))), "code 1");
    EXPECT_EQ(value_of(read(call_of(digits, 77, 0, 0))), "code 6");
    EXPECT_EQ(value_of(read(call_of(std::string(77, '9'), 77, 0, 0))), std::string(77, '9'));
}

TEST(NumericFromText, FractionDigitBeyondTheRoomIsCutNotRounded) {
    // Two digits fit a value of two bytes; the third is lost to the room, not to the scale.
    EXPECT_EQ(value_of(read(call_of("1.29", 2, 1, 1, 2))), "13");
    EXPECT_EQ(value_of(read(call_of("12.9", 77, 1, 1, 2))), "120");
}

TEST(NumericFromText, LeadingZerosTakeNoRoom) {
    EXPECT_EQ(value_of(read(call_of("0000000000000099", 2, 0, 0, 2))), "99");
    EXPECT_EQ(value_of(read(call_of("0.00", 2, 2, 0, 2))), "0");
    EXPECT_EQ(at_scale(std::string(500, '0') + "7", 0), "7");
}

TEST(NumericFromText, RoundingUpPastTheRoomOverflows) {
    // 300 digits that round, one after the other, into the one byte of a two-byte value.
    EXPECT_EQ(value_of(read(call_of(std::string(255, '5') + "e-1", 77, 0, 1, 33))), "code 2");
    EXPECT_EQ(value_of(read(call_of(std::string(256, '5') + "e-1", 77, 0, 1, 2))), "code 1");
    // The overflow comes before the broken end of the text is seen.
    EXPECT_EQ(value_of(read(call_of(std::string(256, '5') + "xe-1", 77, 0, 1, 2))), "code 1");
    EXPECT_EQ(value_of(read(call_of(std::string(255, '5') + "xe-1", 77, 0, 1, 2))), "code 2");
}

// ---- Reading: exponents ------------------------------------------------------------------------

TEST(NumericFromText, ExponentMovesThePoint) {
    EXPECT_EQ(at_scale("1e5", 0), "100000");
    EXPECT_EQ(at_scale("1E5", 0), "100000");
    EXPECT_EQ(at_scale("1e+5", 0), "100000");
    EXPECT_EQ(at_scale("123e-1", 2), "1230");
    EXPECT_EQ(at_scale("1.5e3", 0), "1500");
    EXPECT_EQ(at_scale("1.5e-3", 4), "15");
    EXPECT_EQ(at_scale("-2.5e1", 1), "-250");
}

TEST(NumericFromText, ExponentMayHaveAnyNumberOfDigits) {
    EXPECT_EQ(at_scale("1e005", 0), "100000");
    EXPECT_EQ(at_scale("1e0000000000000000000000000000005", 0), "100000");
    EXPECT_EQ(at_scale("1e-300", 0, 1), "0");
}

TEST(NumericFromText, ExponentWithoutDigitsIsZero) {
    EXPECT_EQ(at_scale("12e", 0), "12");
    EXPECT_EQ(at_scale("12e+", 0), "12");
    EXPECT_EQ(at_scale("12e-", 0), "12");
}

TEST(NumericFromText, BlankBehindATwoDigitExponentIsAcceptedAndBehindOneDigitNot) {
    EXPECT_EQ(at_scale("1e05 ", 0), "100000");
    EXPECT_EQ(at_scale("1e+05 \t", 0), "100000");
    EXPECT_EQ(at_scale("1e005 ", 0), "100000");
    EXPECT_EQ(at_scale("1e5 ", 0), "code 2");
    EXPECT_EQ(at_scale("1e+5 ", 0), "code 2");
    EXPECT_EQ(at_scale("1e ", 0), "code 2");
    EXPECT_EQ(at_scale("1e05 6", 0), "code 2");
    EXPECT_EQ(at_scale("1e05x", 0), "code 2");
    EXPECT_EQ(at_scale("1e5x", 0), "code 2");
    EXPECT_EQ(at_scale("1e--5", 0), "code 2");
}

TEST(NumericFromText, ExponentIsReadUpToItsNulAndNotUpToTheLength) {
    TextCall call = call_of("1e12", 77, 0, 0);
    call.len = 3; // "1e1": the 2 counts all the same
    EXPECT_EQ(value_of(read(call)), "1000000000000");
    call.text = "1e1x";
    EXPECT_EQ(read(call).code, NUME_BADVALUE);
    call.text = "1e5";
    call.len = 1; // no "e" within the length, so no exponent
    EXPECT_EQ(value_of(read(call)), "1");
}

TEST(NumericFromText, LowerCaseMarkIsSearchedFirstAndTheFirstMarkEndsTheDigits) {
    EXPECT_EQ(at_scale("7E2e", 0), "7");    // the exponent is that of "e", empty
    EXPECT_EQ(at_scale("7E1e2", 0), "700"); // the digits end at "E"
    EXPECT_EQ(at_scale("7e1E2", 0), "code 2");
}

TEST(NumericFromText, BrokenExponentIsFoundBeforeTheDigits) {
    EXPECT_EQ(at_scale("1.239ex", 1, 0), "code 2"); // not 6
}

TEST(NumericFromText, DigitsDroppedBeforeThePointByANegativeExponentCountForNothing) {
    EXPECT_EQ(at_scale("123e-1", 0, 1), "0");
    EXPECT_EQ(at_scale("523e-1", 0, 1), "100");
    EXPECT_EQ(at_scale("555e-1", 0, 1), "300"); // each digit from 5 up adds one
    EXPECT_EQ(at_scale("55e-2", 0, 1), "0");
    EXPECT_EQ(at_scale("-523e-1", 0, 1), "-100");
    EXPECT_EQ(at_scale("123e-1", 0, 0), "code 6");
}

TEST(NumericFromText, ExponentAloneBelowTheScaleVanishes) {
    EXPECT_EQ(at_scale("e-5", 0, 1), "0");
    EXPECT_EQ(at_scale("e-5", 0, 0), "code 6");
    EXPECT_EQ(at_scale("-e-5", 0, 1), "0");
}

TEST(NumericFromText, RescaleOfMoreThan77PlacesIsBadValue) {
    EXPECT_EQ(at_scale("1e77", 0, 1), "code 1"); // 78 digits
    EXPECT_EQ(at_scale("0e77", 0, 1), "0");
    EXPECT_EQ(at_scale("1e78", 0, 1), "code 2");
    EXPECT_EQ(at_scale("0e78", 0, 1), "code 2"); // zero too
    EXPECT_EQ(at_scale("1e99999999999999999999999", 0, 1), "code 2");
    EXPECT_EQ(at_scale("1e-99999999999999999999999", 0, 1), "0");
    EXPECT_EQ(value_of(read(call_of("1e78", 77, FROM_TEXT, 1))), "code 2");
}

TEST(NumericFromText, RescalePastTheBytesOverflows) {
    EXPECT_EQ(value_of(read(call_of("1e3", 77, 0, 0, 2))), "code 1");
    EXPECT_EQ(value_of(read(call_of("25", 77, 1, 0, 2))), "250");
    EXPECT_EQ(value_of(read(call_of("26", 77, 1, 0, 2))), "code 1");
}

// ---- Reading: scale and precision --------------------------------------------------------------

TEST(NumericFromText, ScaleIsTakenFromTheText) {
    const TextResult result = read(call_of("12.345", 77, FROM_TEXT, 0));
    EXPECT_EQ(value_of(result), "12345");
    EXPECT_EQ(result.scale, 3);
    EXPECT_EQ(read(call_of("12", 77, FROM_TEXT, 0)).scale, 0);
    EXPECT_EQ(read(call_of("12.", 77, FROM_TEXT, 0)).scale, 0);
    EXPECT_EQ(read(call_of("12.5", 77, 78, 0)).scale, 1); // any scale above 77 asks for that
}

TEST(NumericFromText, ExponentIsNotAppliedToFractionDigitsWhenTheScaleComesFromTheText) {
    const TextResult result = read(call_of("1.5e-3", 77, FROM_TEXT, 0));
    EXPECT_EQ(value_of(result), "15");
    EXPECT_EQ(result.scale, 1);
    EXPECT_EQ(read(call_of("1.5e1", 77, FROM_TEXT, 0)).scale, 1);
    EXPECT_EQ(value_of(read(call_of("1.5e1", 77, FROM_TEXT, 0))), "15");
}

TEST(NumericFromText, NegativeExponentWithoutFractionLeavesItsLowByteAsScale) {
    const TextResult result = read(call_of("5e-3", 77, FROM_TEXT, 0));
    EXPECT_EQ(value_of(result), "5");
    EXPECT_EQ(result.scale, 253);
    EXPECT_EQ(read(call_of("5e-1000000000000000000001", 77, FROM_TEXT, 1)).scale,
              TextReference::read(call_of("5e-1000000000000000000001", 77, FROM_TEXT, 1)).scale);
}

TEST(NumericFromText, PositiveExponentWithTheScaleFromTheTextGivesScaleZero) {
    const TextResult result = read(call_of("1.5e3", 77, FROM_TEXT, 0));
    EXPECT_EQ(value_of(result), "1500");
    EXPECT_EQ(result.scale, 0);
}

TEST(NumericFromText, FixedPrecisionIsHeldAgainstTheValue) {
    EXPECT_EQ(value_of(read(call_of("999", 3, 0, 0))), "999");
    EXPECT_EQ(read(call_of("1000", 3, 0, 0)).code, NUME_OVERFLOW);
    EXPECT_EQ(read(call_of("99.95", 3, 1, 1)).code, NUME_OVERFLOW); // rounds to 100.0
    EXPECT_EQ(read(call_of("1", 1, 1, 0)).code, NUME_OVERFLOW);
}

TEST(NumericFromText, PrecisionIsComputedAndTheValueMovesToItsEnd) {
    const TextResult result = read(call_of("-12.345", COMPUTED, FROM_TEXT, 0));
    EXPECT_EQ(result.precision, 5);
    EXPECT_EQ(result.scale, 3);
    EXPECT_EQ(result.destlen, 4);
    EXPECT_EQ(result.offset, 29);
    EXPECT_EQ(value_of(result), "-12345");
    EXPECT_EQ(read(call_of("12.345", 78, FROM_TEXT, 0)).precision, 5); // above 77 asks for it as well
    EXPECT_EQ(read(call_of("12.345", 255, FROM_TEXT, 0)).precision, 5);
}

TEST(NumericFromText, ComputedPrecisionLeavesOutLeadingZeros) {
    EXPECT_EQ(read(call_of("000123", COMPUTED, FROM_TEXT, 0)).precision, 3);
    EXPECT_EQ(read(call_of("0.05", COMPUTED, FROM_TEXT, 0)).precision, 3); // as many as the scale, and one
    EXPECT_EQ(read(call_of(".05", COMPUTED, FROM_TEXT, 0)).precision, 2);
    EXPECT_EQ(read(call_of("0", COMPUTED, FROM_TEXT, 0)).precision, 1);
    EXPECT_EQ(read(call_of("000", COMPUTED, FROM_TEXT, 0)).precision, 1);
    EXPECT_EQ(read(call_of("", COMPUTED, FROM_TEXT, 0)).precision, 1);
}

TEST(NumericFromText, ComputedPrecisionOf78DigitsOverflows) {
    EXPECT_EQ(read(call_of(text_with_zeros("0.", 76), COMPUTED, FROM_TEXT, 0)).code, NUME_OVERFLOW);
    EXPECT_EQ(read(call_of(text_with_zeros("0.", 75), COMPUTED, FROM_TEXT, 0)).precision, 77);
    EXPECT_EQ(read(call_of(std::string(77, '0') + "1", COMPUTED, FROM_TEXT, 0)).code, NUME_OVERFLOW);
}

TEST(NumericFromText, ComputedPrecisionCanBeSmallerThanTheDigitsLeft) {
    // 100000 is 01 86 A0; the one digit that was kept has room for the last byte.
    const TextResult result = read(call_of("1e5", COMPUTED, FROM_TEXT, 0));
    EXPECT_EQ(result.code, NUME_OK);
    EXPECT_EQ(result.precision, 1);
    EXPECT_EQ(result.destlen, 2);
    EXPECT_EQ(value_of(result), std::to_string(0xA0));
    // 10^9 ends in a zero byte: no minus zero comes of it.
    EXPECT_EQ(value_of(read(call_of("-1e9", COMPUTED, FROM_TEXT, 0))), "0");
}

TEST(NumericFromText, ComputedPrecisionAlwaysWritesTheSignByte) {
    const TextResult result = read(call_of("1024e6", COMPUTED, FROM_TEXT, 0)); // the bytes ahead are not zero
    ASSERT_EQ(result.destlen, 3);
    EXPECT_EQ(result.value[0], 0);
}

TEST(NumericFromText, ComputedPrecisionNeverMovesTheValueOutOfTheBuffer) {
    const TextResult result = read(call_of("0.0000", COMPUTED, FROM_TEXT, 0, 2));
    EXPECT_EQ(result.code, NUME_OVERFLOW);
    EXPECT_EQ(result.destlen, 2);
    EXPECT_EQ(result.offset, 0);
}

TEST(NumericFromText, LengthZeroMeans33) {
    const TextResult result = read(call_of("12", 77, 0, 0, 0));
    EXPECT_EQ(result.destlen, 33);
    EXPECT_EQ(value_of(result), "12");
}

TEST(NumericFromText, MinusZeroIsNeverMade) {
    EXPECT_EQ(at_scale("-0.00", 2), "0");
    EXPECT_EQ(at_scale("-0.001", 2, 1), "0");
    EXPECT_EQ(at_scale("-0.006", 2, 1), "-1");
    EXPECT_EQ(at_scale("-0", 0), "0");
    EXPECT_EQ(value_of(read(call_of("-0", COMPUTED, FROM_TEXT, 0))), "0");
    EXPECT_EQ(value_of(read(call_of("-0", 2, 0, 0, 2))), "0");
    EXPECT_EQ(value_of(read(call_of("-5", 2, 0, 0, 2))), "-5");
}

// ---- Reading: against the reference ------------------------------------------------------------

class TextGenerator {
public:
    explicit TextGenerator(unsigned long seed) : random_(seed) {}

    TextCall next() {
        TextCall call;
        const bool is_broken = chance(8);
        pick_blanks(call.text);
        if (chance(2))
            call.text += chance(3) ? '+' : '-';
        if (chance(6))
            pick_blanks(call.text);
        if (chance(3))
            call.text += std::string(pick(chance(10) ? 300 : 5), '0');
        pick_digits(call.text);
        if (chance(2)) {
            call.text += '.';
            if (chance(3))
                call.text += std::string(pick(chance(20) ? 300 : 80), '0');
            pick_digits(call.text);
        }
        if (chance(3))
            pick_exponent(call.text);
        if (chance(4))
            for (size_t i = pick(4); i > 0; --i)
                call.text += " \t\n\r\x0E\x0F  "[pick(7)];
        if (is_broken)
            for (size_t i = pick(3); i > 0; --i)
                call.text.insert(pick(call.text.size()), 1, "+-.eEx 0159\t\0\x08\x10\xA0"[pick(15)]);
        call.len = static_cast<int>(chance(12) ? pick(call.text.size()) : call.text.size());
        call.destlen = chance(3) ? 33 : chance(20) ? 0 : static_cast<CS_INT>(2 + pick(31));
        call.precision = static_cast<CS_BYTE>(chance(2) ? 1 + pick(76) : chance(2) ? 0 : pick(255));
        call.scale = static_cast<CS_BYTE>(chance(3) ? pick(6) : chance(2) ? pick(77) : chance(4) ? pick(255) : 255);
        call.flag = chance(3) ? 0 : chance(30) ? 2 : 1;
        return call;
    }

private:
    size_t pick(size_t most) { return static_cast<size_t>(random_() % (most + 1)); }
    bool chance(size_t one_in) { return pick(one_in - 1) == 0; }
    void pick_blanks(std::string &text) { text += std::string(chance(4) ? pick(3) : 0, ' '); }
    void pick_digits(std::string &text) {
        const size_t count = chance(6) ? pick(1) : chance(2) ? pick(20) : pick(85);
        const size_t kind = pick(4);
        for (size_t i = 0; i < count; ++i)
            text += kind == 0 ? '9' : kind == 1 ? static_cast<char>('4' + pick(1)) : static_cast<char>('0' + pick(9));
    }
    void pick_exponent(std::string &text) {
        text += chance(3) ? 'E' : 'e';
        if (chance(2))
            text += chance(2) ? '-' : '+';
        const size_t kind = pick(9);
        if (kind == 0)
            return;
        if (kind == 1)
            text += std::string(pick(4), '0');
        text += std::to_string(pick(kind < 6 ? 12 : kind < 9 ? 90 : 400));
        if (chance(100))
            text += std::string(30, static_cast<char>('0' + pick(9)));
    }

    std::mt19937_64 random_;
};

TEST(NumericFromText, GeneratedTextsReadAsTheReferenceReadsThem) {
    TextGenerator generator(20240501);
    int codes[7] = {};
    for (int i = 0; i < 300000; ++i) {
        const TextCall call = generator.next();
        ASSERT_NO_FATAL_FAILURE(expect_like_reference(call));
        ++codes[TextReference::read(call).code];
    }
    // Every answer came up often enough to mean something.
    EXPECT_GT(codes[NUME_OK], 50000);
    EXPECT_GT(codes[NUME_OVERFLOW], 10000);
    EXPECT_GT(codes[NUME_BADVALUE], 10000);
    EXPECT_GT(codes[NUME_TRUNCATED], 10000);
}

TEST(NumericFromText, EveryShortTextReadsAsTheReferenceReadsIt) {
    const std::string alphabet = "05+-. eE\tx";
    for (const int scale : {0, 1, 255})
        for (const int precision : {0, 2})
            for (const int flag : {0, 1})
                for (size_t length = 0; length <= 4; ++length) {
                    std::vector<size_t> at(length, 0);
                    for (bool more = true; more;) {
                        std::string text;
                        for (const size_t i : at)
                            text += alphabet[i];
                        ASSERT_NO_FATAL_FAILURE(expect_like_reference(call_of(text, precision, scale, flag, 3)));
                        more = false;
                        for (size_t &i : at) {
                            if (++i < alphabet.size()) {
                                more = true;
                                break;
                            }
                            i = 0;
                        }
                    }
                }
}

// ---- Reading: broken contracts -----------------------------------------------------------------

struct Arguments {
    char text[4] = "123";
    CS_BYTE bytes[33] = {};
    CS_BYTE *dest = bytes;
    CS_INT destlen = 33;
    CS_BYTE precision = 77;
    CS_BYTE scale = 0;
};

TEST(NumericFromTextDeathTest, NullPointersAreReported) {
    Arguments a;
    CS_BYTE *nothing = nullptr;
    const auto call = [](char *text, CS_BYTE **dest, CS_INT *destlen, CS_BYTE *precision, CS_BYTE *scale) {
        com__subchartoexctnume(text, 3, dest, destlen, precision, scale, 0);
    };
    EXPECT_NULL_REPORT(call(nullptr, &a.dest, &a.destlen, &a.precision, &a.scale), "num_text");
    EXPECT_NULL_REPORT(call(a.text, nullptr, &a.destlen, &a.precision, &a.scale), "num_text");
    EXPECT_NULL_REPORT(call(a.text, &nothing, &a.destlen, &a.precision, &a.scale), "num_text");
    EXPECT_NULL_REPORT(call(a.text, &a.dest, nullptr, &a.precision, &a.scale), "num_text");
    EXPECT_NULL_REPORT(call(a.text, &a.dest, &a.destlen, nullptr, &a.scale), "num_text");
    EXPECT_NULL_REPORT(call(a.text, &a.dest, &a.destlen, &a.precision, nullptr), "num_text");
}

TEST(NumericFromTextDeathTest, LengthOutsideTheTablesIsAnAssertion) {
    Arguments a;
    for (const CS_INT length : {-1, 1, 34, 35, 1000000}) {
        a.destlen = length;
        EXPECT_BOMB(com__subchartoexctnume(a.text, 3, &a.dest, &a.destlen, &a.precision, &a.scale, 0), "num_text");
    }
}

TEST(NumericFromText, ReturningAssertionsTouchNothing) {
    const support::ReturningAssertions returning;
    Arguments a;
    std::memset(a.bytes, 0x77, sizeof a.bytes);
    CS_BYTE *nothing = nullptr;
    EXPECT_EQ(com__subchartoexctnume(nullptr, 3, &a.dest, &a.destlen, &a.precision, &a.scale, 0), NUME_BADVALUE);
    EXPECT_EQ(com__subchartoexctnume(a.text, 3, nullptr, &a.destlen, &a.precision, &a.scale, 0), NUME_BADVALUE);
    EXPECT_EQ(com__subchartoexctnume(a.text, 3, &nothing, &a.destlen, &a.precision, &a.scale, 0), NUME_BADVALUE);
    EXPECT_EQ(com__subchartoexctnume(a.text, 3, &a.dest, nullptr, &a.precision, &a.scale, 0), NUME_BADVALUE);
    EXPECT_EQ(com__subchartoexctnume(a.text, 3, &a.dest, &a.destlen, nullptr, &a.scale, 0), NUME_BADVALUE);
    EXPECT_EQ(com__subchartoexctnume(a.text, 3, &a.dest, &a.destlen, &a.precision, nullptr, 0), NUME_BADVALUE);
    a.destlen = 34;
    EXPECT_EQ(com__subchartoexctnume(a.text, 3, &a.dest, &a.destlen, &a.precision, &a.scale, 0), NUME_BADVALUE);
    a.destlen = 1;
    EXPECT_EQ(com__subchartoexctnume(a.text, 3, &a.dest, &a.destlen, &a.precision, &a.scale, 0), NUME_BADVALUE);
    EXPECT_EQ(returning.count(), 8);
    EXPECT_EQ(a.dest, a.bytes);
    for (const CS_BYTE byte : a.bytes)
        EXPECT_EQ(byte, 0x77);
}

// ---- Writing -----------------------------------------------------------------------------------

// The text in a room of that many characters, or "-1". Nothing around the text may change.
std::string text_of(Record &record, int room = 79) {
    std::vector<char> buffer(static_cast<size_t>(room) + 16, '#');
    char *const dest = buffer.data() + 8;
    const int start = com__subexctnumetochar(&record, dest, room);
    const int first = start < 0 ? room : start;
    for (int i = -8; i < room + 8; ++i)
        if (i < first || i >= room) {
            EXPECT_EQ(dest[i], '#') << i;
        }
    return start < 0 ? std::to_string(start) : std::string(dest + start, dest + room);
}

std::string text_of(const mpz_class &value, int scale, int room = 79, int length = 33) {
    Record record(value, scale, length);
    return text_of(record, room);
}

TEST(NumericToText, OneDigitBeforeThePointAndTheScaleBehindIt) {
    EXPECT_EQ(text_of(0, 0), "0");
    EXPECT_EQ(text_of(0, 3), "0.000");
    EXPECT_EQ(text_of(5, 1), "0.5");
    EXPECT_EQ(text_of(5, 3), "0.005");
    EXPECT_EQ(text_of(-1, 0), "-1");
    EXPECT_EQ(text_of(-5, 1), "-0.5");
    EXPECT_EQ(text_of(12345, 2), "123.45");
    EXPECT_EQ(text_of(100, 2), "1.00");
    EXPECT_EQ(text_of(100, 0), "100");
}

TEST(NumericToText, MinusZeroHasNoSign) {
    Record plain(0, 0);
    plain.bytes[0] = 1;
    EXPECT_EQ(text_of(plain), "0");
    Record scaled(0, 2);
    scaled.bytes[0] = 1;
    EXPECT_EQ(text_of(scaled), "0.00");
    EXPECT_EQ(text_of(scaled, 4), "0.00");
    EXPECT_EQ(text_of(scaled, 3), "-1");
}

TEST(NumericToText, AnySignByteButZeroIsNegative) {
    Record record(7, 0);
    for (const CS_BYTE sign : {1, 2, 128, 255}) {
        record.bytes[0] = sign;
        EXPECT_EQ(text_of(record), "-7");
    }
}

TEST(NumericToText, NeedsItsRoomToTheLastCharacter) {
    EXPECT_EQ(text_of(-12345, 2, 7), "-123.45");
    EXPECT_EQ(text_of(-12345, 2, 6), "-1");
    EXPECT_EQ(text_of(5, 1, 3), "0.5");
    EXPECT_EQ(text_of(5, 1, 2), "-1");
    EXPECT_EQ(text_of(0, 0, 1), "0");
    EXPECT_EQ(text_of(0, 0, 0), "-1");
    EXPECT_EQ(text_of(0, 1, 3), "0.0");
    EXPECT_EQ(text_of(0, 1, 2), "-1");
}

TEST(NumericToText, NegativeRoomDoesNotFit) {
    Record record(1, 0);
    char nothing = '#';
    EXPECT_EQ(com__subexctnumetochar(&record, &nothing, -5), -1);
    EXPECT_EQ(nothing, '#');
}

TEST(NumericToText, NegativeValueOfScale77NeedsEightyCharacters) {
    EXPECT_EQ(text_of(1, 77), text_with_zeros("0.", 76));
    EXPECT_EQ(text_of(-1, 77), "-1");
    EXPECT_EQ(text_of(-1, 77, 80), text_with_zeros("-0.", 76));
    EXPECT_EQ(text_of(-1, 76), text_with_zeros("-0.", 75));
}

TEST(NumericToText, LargestMagnitudes) {
    const mpz_class largest = power_of(256, 32) - 1;
    EXPECT_EQ(text_of(largest, 0), largest.get_str());
    EXPECT_EQ(text_of(-largest, 0), mpz_class(-largest).get_str());
    EXPECT_EQ(text_of(power_of(10, 77) - 1, 77), std::string("0.").append(77, '9'));
}

TEST(NumericToText, EmptyRecordIsZero) {
    Record record(0, 2);
    record.constant.len = 0;
    EXPECT_EQ(text_of(record), "0.00");
    record.constant.len = 1;
    EXPECT_EQ(text_of(record), "0.00");
}

TEST(NumericToText, EveryPowerOfTenAndItsNeighbours) {
    for (int p = 0; p <= 77; ++p)
        for (int delta = -1; delta <= 1; ++delta) {
            const mpz_class value = power_of(10, p) + delta;
            EXPECT_EQ(text_of(value, 0), value.get_str());
        }
}

TEST(NumericToText, RandomValuesAsGmpWritesThem) {
    std::mt19937_64 random(7);
    gmp_randclass numbers(gmp_randinit_default);
    numbers.seed(11);
    for (int i = 0; i < 150000; ++i) {
        const int length = 2 + static_cast<int>(random() % 32);
        mpz_class value = numbers.get_z_bits(random() % static_cast<unsigned long>(8 * (length - 1) + 1));
        if (random() % 2 == 0)
            value = -value;
        const int scale = static_cast<int>(random() % 79);
        const std::string digits = support::decimal_text(value, scale);
        const int room = random() % 4 == 0 ? static_cast<int>(random() % 85) : 160;
        const std::string expected = static_cast<int>(digits.size()) <= room ? digits : "-1";
        ASSERT_EQ(text_of(value, scale, room, length), expected) << digits << " room " << room;
    }
}

TEST(NumericToText, RandomValuesReadBackAsThemselves) {
    std::mt19937_64 random(8);
    gmp_randclass numbers(gmp_randinit_default);
    numbers.seed(12);
    for (int i = 0; i < 100000; ++i) {
        const int precision = 1 + static_cast<int>(random() % 77);
        const int scale = static_cast<int>(random() % 77);
        const int length = length_of_precision(precision);
        mpz_class value = numbers.get_z_range(power_of(10, precision));
        if (random() % 2 == 0)
            value = -value;
        const std::string text = text_of(value, scale, 79, length);
        ASSERT_EQ(value_of(read(call_of(text, precision, scale, 0, length))), value.get_str()) << text;
    }
}

TEST(NumericToTextDeathTest, NullPointersAreReported) {
    Record record(1, 0);
    char room[8];
    EXPECT_NULL_REPORT(com__subexctnumetochar(nullptr, room, sizeof room), "num_text");
    EXPECT_NULL_REPORT(com__subexctnumetochar(&record, nullptr, 8), "num_text");
}

TEST(NumericToTextDeathTest, RecordThatCannotBeIsAnAssertion) {
    char room[8];
    for (const CS_INT length : {-1, 34, 1000000}) {
        Record record(1, 0);
        record.constant.len = length;
        EXPECT_BOMB(com__subexctnumetochar(&record, room, sizeof room), "num_text");
    }
    Record record(1, 0);
    record.constant.value = nullptr;
    EXPECT_NULL_REPORT(com__subexctnumetochar(&record, room, sizeof room), "num_text");
}

TEST(NumericToText, ReturningAssertionsDoNotFit) {
    const support::ReturningAssertions returning;
    Record record(1, 0);
    char room[8] = "#######";
    EXPECT_EQ(com__subexctnumetochar(nullptr, room, sizeof room), -1);
    EXPECT_EQ(com__subexctnumetochar(&record, nullptr, 8), -1);
    record.constant.len = 34;
    EXPECT_EQ(com__subexctnumetochar(&record, room, sizeof room), -1);
    EXPECT_EQ(returning.count(), 3);
    EXPECT_STREQ(room, "#######");
}

} // namespace
