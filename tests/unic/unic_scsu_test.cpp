// The compression scheme: the examples of its standard, every tag, and random text there and back.
#include "support/unicode_calls.h"
#include "support/unicode_text.h"

#include <unicode/ucnv.h>

namespace {

using support::Handle;
using support::ToBytes;
using support::ToUnits;
using support::Units;

constexpr UNICONV_CID COMPRESSION = -5;

std::string from_hexadecimal(const std::string &text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); i += 3)
        bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
    return bytes;
}

// Another decoder and encoder of the scheme.
class Icu {
public:
    Icu() {
        converter_ = ucnv_open("SCSU", &error_);
        EXPECT_TRUE(U_SUCCESS(error_));
    }
    ~Icu() { ucnv_close(converter_); }
    Units units(const std::string &bytes) {
        Units text(bytes.size() * 2 + 8, u'\0');
        UErrorCode error = U_ZERO_ERROR;
        ucnv_reset(converter_);
        const int length = ucnv_toUChars(converter_, text.data(), static_cast<int>(text.size()), bytes.data(),
                                         static_cast<int>(bytes.size()), &error);
        EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
        text.resize(static_cast<size_t>(length));
        return text;
    }
    std::string bytes(const Units &text) {
        std::string bytes(text.size() * 4 + 8, '\0');
        UErrorCode error = U_ZERO_ERROR;
        ucnv_reset(converter_);
        const int length = ucnv_fromUChars(converter_, bytes.data(), static_cast<int>(bytes.size()), text.data(),
                                           static_cast<int>(text.size()), &error);
        EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
        bytes.resize(static_cast<size_t>(length));
        return bytes;
    }

private:
    UErrorCode error_ = U_ZERO_ERROR;
    UConverter *converter_;
};

TEST(UnicCompression, ExamplesOfTheStandard) {
    const Handle scheme(COMPRESSION);
    EXPECT_EQ(scheme.from(from_hexadecimal("D6 6C 20 66 6C 69 65 DF 74")).text, u"\u00D6l flie\u00DFt");
    EXPECT_EQ(scheme.from(from_hexadecimal("12 9C BE C1 BA B2 B0")).text, u"\u041C\u043E\u0441\u043A\u0432\u0430");
    EXPECT_EQ(scheme.to(u"\u00D6l flie\u00DFt").text, from_hexadecimal("D6 6C 20 66 6C 69 65 DF 74"));
    EXPECT_EQ(scheme.to(u"\u041C\u043E\u0441\u043A\u0432\u0430").text, from_hexadecimal("12 9C BE C1 BA B2 B0"));
    // All features: quoted and locking windows, definitions, both states, surrogate pairs and extended windows.
    const ToUnits told =
        scheme.from(from_hexadecimal("41 DF 12 81 03 5F 10 DF 1B 03 DF 1C 88 80 0B BF FF FF 0D 0A 41 0B "
                                     "BF FF FF"));
    EXPECT_EQ(told.status, UNI_OK);
    EXPECT_EQ(told.text,
              Icu().units(from_hexadecimal("41 DF 12 81 03 5F 10 DF 1B 03 DF 1C 88 80 0B BF FF FF 0D 0A 41 0B "
                                           "BF FF FF")));
}

TEST(UnicCompression, EveryTagOfTheStateOfBytes) {
    const Handle scheme(COMPRESSION);
    constexpr char16_t FIXED[] = {0x0000, 0x0080, 0x0100, 0x0300, 0x2000, 0x2080, 0x2100, 0x3000};
    constexpr char16_t MOVING[] = {0x0080, 0x00C0, 0x0400, 0x0600, 0x0900, 0x3040, 0x30A0, 0xFF00};
    for (unsigned window = 0; window < 8; ++window) {
        const std::string quote(1, static_cast<char>(1 + window));
        const std::string change(1, static_cast<char>(0x10 + window));
        const std::string define(1, static_cast<char>(0x18 + window));
        EXPECT_EQ(scheme.from(quote + "\x41\x90").text, Units({static_cast<char16_t>(FIXED[window] + 0x41), 0x90}))
            << window;
        EXPECT_EQ(scheme.from(quote + "\x91\x90").text, Units({static_cast<char16_t>(MOVING[window] + 0x11), 0x90}))
            << window;
        EXPECT_EQ(scheme.from(change + "\x91z\x92").text, Units({static_cast<char16_t>(MOVING[window] + 0x11), u'z',
                                                                 static_cast<char16_t>(MOVING[window] + 0x12)}))
            << window;
        EXPECT_EQ(scheme.from(define + "\x20\x91").text, Units({0x1011})) << window;
        EXPECT_EQ(scheme.from(define + "\x68\x91").text, Units({0xE011})) << window;
        EXPECT_EQ(scheme.from(define + "\xFF\x91").text, Units({0xFF71})) << window;
        const auto extended = static_cast<char>(window << 5 | 0x01);
        EXPECT_EQ(scheme.from(std::string("\x0B") + extended + "\x02\x81").text,
                  support::units_of({0x10000 + (0x102 << 7) + 1}))
            << window;
    }
    EXPECT_EQ(scheme.from(from_hexadecimal("0E D8 3D 0E DE 01 7A")).text, u"\U0001F601z");
    EXPECT_EQ(scheme.from("\x09\x0A\x0D").text, u"\t\n\r");
}

TEST(UnicCompression, EveryTagOfTheStateOfUnits) {
    const Handle scheme(COMPRESSION);
    EXPECT_EQ(scheme.from(from_hexadecimal("0F 4E 2D 65 87")).text, u"\u4E2D\u6587");
    EXPECT_EQ(scheme.from(from_hexadecimal("0F 4E 2D F0 E0 01 4E 2D")).text, u"\u4E2D\xE001\u4E2D");
    EXPECT_EQ(scheme.from(from_hexadecimal("0F D8 3D DE 01 E2 9C 41")).text, u"\U0001F601\u041CA");
    for (unsigned window = 0; window < 8; ++window) {
        EXPECT_EQ(scheme.from(std::string("\x0F\x4E\x2D") + static_cast<char>(0xE8 + window) + "\x20\x91").text,
                  u"\u4E2D\u1011");
        EXPECT_EQ(scheme.from(std::string("\x0F\xF1") + static_cast<char>(window << 5 | 1) + "\x02\x81z").text,
                  support::units_of({0x10000 + (0x102 << 7) + 1, U'z'}));
    }
}

TEST(UnicCompression, ReservedTagsAndHalvesOfPairsAreReplaced) {
    const Handle scheme(COMPRESSION);
    for (const char *text : {"a\x0C"
                             "b",
                             "a\x18\xA8"
                             "b",
                             "a\x1F\xF8"
                             "b",
                             "a\x0E\xDC\x01"
                             "b",
                             "a\x0E\xD8\x01"
                             "b"}) {
        EXPECT_EQ(scheme.from(text).text, u"a\uFFFDb") << testing::PrintToString(text);
        EXPECT_EQ(scheme.from(text).status, UNI_SUBSTITUTED) << testing::PrintToString(text);
    }
    EXPECT_EQ(scheme.from("\x0F\x4E\x2D\xF2\x4E\x2D").text, u"\u4E2D\uFFFD\u4E2D");
}

TEST(UnicCompression, TextThatEndsInsideATagIsTruncated) {
    const Handle scheme(COMPRESSION);
    for (const char *text : {"ab\x01", "ab\x0E", "ab\x18", "ab\x1F", "ab\x0E\xD8\x3D"}) {
        EXPECT_EQ(scheme.from(text).status, UNI_TRUNCATED) << testing::PrintToString(text);
        EXPECT_EQ(scheme.from(text).text, u"ab") << testing::PrintToString(text);
    }
    EXPECT_EQ(scheme.from("\x0F\x4E\x2D\xF0").status, UNI_TRUNCATED);
    EXPECT_EQ(scheme.from("\x0F\x4E\x2D\xE8").status, UNI_TRUNCATED);
}

// Text as it is written, of few scripts at a time.
Units random_text(std::mt19937_64 &random) {
    static constexpr struct {
        char32_t low, high;
    } SCRIPTS[] = {{1, 0x7F},        {0x80, 0x17F},    {0x300, 0x36F},     {0x370, 0x52F},     {0x5D0, 0x6FF},
                   {0x900, 0x97F},   {0x2000, 0x21FF}, {0x3000, 0x30FF},   {0x4E00, 0x9FFF},   {0xAC00, 0xD7A3},
                   {0xE000, 0xF8FF}, {0xF900, 0xFFFF}, {0x10000, 0x103FF}, {0x1F300, 0x1F6FF}, {0x3400, 0x4DBF}};
    std::u32string text;
    const auto length = random() % 40;
    auto script = random() % std::size(SCRIPTS);
    while (text.size() < length) {
        if (random() % 5 == 0)
            script = random() % 3 == 0 ? 0 : random() % std::size(SCRIPTS);
        const auto &range = SCRIPTS[script];
        text += range.low + static_cast<char32_t>(random() % (range.high - range.low + 1));
    }
    return support::units_of(text);
}

TEST(UnicCompression, RandomTextThereAndBackAndThroughAnotherDecoder) {
    const Handle scheme(COMPRESSION);
    Icu icu;
    std::mt19937_64 random(830);
    int factor = 0;
    ASSERT_EQ(uniconv_GetExpansionFactor(scheme.get(), &factor), UNI_OK);
    for (int i = 0; i < 40000; ++i) {
        const Units text =
            i % 4 == 0 ? support::units_of(support::random_characters(random, random() % 40)) : random_text(random);
        const ToBytes packed = scheme.to(text, text.size() * static_cast<size_t>(factor));
        ASSERT_EQ(packed.status, UNI_OK) << testing::PrintToString(text);
        ASSERT_EQ(icu.units(packed.text), text) << testing::PrintToString(packed.text);
        const ToUnits back = scheme.from(packed.text);
        ASSERT_EQ(back.text, text) << testing::PrintToString(packed.text);
        ASSERT_EQ(back.status, UNI_OK) << testing::PrintToString(packed.text);
        // What another encoder writes.
        ASSERT_EQ(scheme.from(icu.bytes(text)).text, text) << testing::PrintToString(icu.bytes(text));
        // A cut is sound text, and as long as whole characters allow.
        const size_t room = random() % (packed.text.size() + 1);
        const ToBytes cut = scheme.to(text, room);
        ASSERT_EQ(cut.text, packed.text.substr(0, cut.text.size()));
        const Units kept = icu.units(cut.text);
        ASSERT_EQ(kept, text.substr(0, kept.size()));
        ASSERT_EQ(cut.status, room < packed.text.size() ? UNI_NOROOM : UNI_OK);
        const size_t units = random() % (text.size() + 1);
        const ToUnits few = scheme.from(packed.text, units);
        ASSERT_EQ(few.text, text.substr(0, few.text.size()));
        ASSERT_GE(few.text.size() + 1, units);
        ASSERT_EQ(few.status, units < text.size() ? UNI_NOROOM : UNI_OK);
    }
}

TEST(UnicCompression, HalvesOfPairsAreReplacedOnTheWayThere) {
    const Handle scheme(COMPRESSION);
    const ToBytes told = scheme.to(Units(u"a\xD800"
                                         u"b\xDC00"));
    EXPECT_EQ(told.status, UNI_SUBSTITUTED);
    EXPECT_EQ(scheme.from(told.text).text, u"a\uFFFDb\uFFFD");
}

TEST(UnicCompression, RandomBytesAreReadWithinTheThreeZerosBehindThem) {
    const Handle scheme(COMPRESSION);
    std::mt19937_64 random(831);
    for (int i = 0; i < 60000; ++i) {
        std::string bytes(random() % 24, '\0');
        for (char &c : bytes)
            c = static_cast<char>(random() % 2 == 0 ? 1 + random() % 0x1F : 1 + random() % 255);
        const ToUnits whole = scheme.from(bytes);
        ASSERT_TRUE(whole.status != UNI_NOROOM && whole.status != UNI_NOROOM_SUBSTITUTED);
        ASSERT_FALSE(support::naive_utf16(whole.text).faulty()) << testing::PrintToString(bytes);
        const ToUnits cut = scheme.from(bytes, random() % (whole.text.size() + 1));
        ASSERT_EQ(cut.text, whole.text.substr(0, cut.text.size()));
    }
}

} // namespace
