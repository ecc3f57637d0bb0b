// The shipped tables over the whole code space of every set, in both directions, against the C library's iconv and ICU.
#include "support/environment.h"
#include "support/unicode_calls.h"
#include "support/unicode_text.h"

#include <dlxcomn/charconv.h>

#include <cerrno>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include <iconv.h>
#include <unicode/ucnv.h>

namespace {

using support::Handle;
using support::Units;

const support::Variable home("DALVEX", DLXCOMN_BUILD_DIR "/home");

// ---- Oracles ------------------------------------------------------------------------------------------------------

class Oracle {
public:
    virtual ~Oracle() = default;
    // The text of bytes that are whole characters of the set; none for anything else.
    virtual std::optional<Units> units(const std::string &bytes) = 0;
    virtual std::optional<std::string> bytes(char32_t character) = 0;
};

class IconvOracle : public Oracle {
public:
    explicit IconvOracle(const std::string &name)
        : from_(iconv_open("UTF-16LE", name.c_str())), to_(iconv_open(name.c_str(), "UTF-16LE")) {
        EXPECT_NE(from_, reinterpret_cast<iconv_t>(-1)) << name;
        EXPECT_NE(to_, reinterpret_cast<iconv_t>(-1)) << name;
    }
    ~IconvOracle() override {
        iconv_close(from_);
        iconv_close(to_);
    }
    std::optional<Units> units(const std::string &bytes) override {
        char16_t out[16];
        const auto length = convert(from_, bytes.data(), bytes.size(), reinterpret_cast<char *>(out), sizeof out);
        return length ? std::optional(Units(out, *length / 2)) : std::nullopt;
    }
    std::optional<std::string> bytes(char32_t character) override {
        const Units units = support::units_of({character});
        char out[32];
        const auto length =
            convert(to_, reinterpret_cast<const char *>(units.data()), units.size() * 2, out, sizeof out);
        return length ? std::optional(std::string(out, *length)) : std::nullopt;
    }

private:
    static std::optional<size_t> convert(iconv_t with, const char *in, size_t in_left, char *out, size_t size) {
        size_t left = size;
        auto *source = const_cast<char *>(in);
        iconv(with, nullptr, nullptr, nullptr, nullptr);
        if (iconv(with, &source, &in_left, &out, &left) != 0 || iconv(with, nullptr, nullptr, &out, &left) != 0)
            return std::nullopt;
        return size - left;
    }
    iconv_t from_, to_;
};

class IcuOracle : public Oracle {
public:
    explicit IcuOracle(const std::string &name) {
        UErrorCode error = U_ZERO_ERROR;
        converter_ = ucnv_open(name.c_str(), &error);
        ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFallback(converter_, false);
        EXPECT_TRUE(U_SUCCESS(error)) << name;
    }
    ~IcuOracle() override { ucnv_close(converter_); }
    std::optional<Units> units(const std::string &bytes) override {
        char16_t out[16];
        UErrorCode error = U_ZERO_ERROR;
        const auto length = ucnv_toUChars(converter_, out, 16, bytes.data(), static_cast<int>(bytes.size()), &error);
        return U_SUCCESS(error) ? std::optional(Units(out, static_cast<size_t>(length))) : std::nullopt;
    }
    std::optional<std::string> bytes(char32_t character) override {
        const Units units = support::units_of({character});
        char out[32];
        UErrorCode error = U_ZERO_ERROR;
        const auto length = ucnv_fromUChars(converter_, out, 32, units.data(), static_cast<int>(units.size()), &error);
        // ICU leaves out invisible characters that the set does not have, with success.
        return U_SUCCESS(error) && length > 0 ? std::optional(std::string(out, static_cast<size_t>(length)))
                                              : std::nullopt;
    }

private:
    UConverter *converter_;
};

// ---- What the sets are --------------------------------------------------------------------------------------------

enum class Shape { single, pairs, euc_jp, euc_tw, gb18030, shift };

struct Set {
    UNICONV_CID number;
    const char *iconv_name; // where null, the ICU name holds
    const char *icu_name;
    Shape shape = Shape::single;
    friend void PrintTo(const Set &set, std::ostream *out) { *out << set.number; }
};

constexpr Set SETS[] = {
    {1, "ISO-8859-1", nullptr},
    {2, "CP850", nullptr},
    {3, "CP437", nullptr},
    {4, "HP-ROMAN8", nullptr},
    {5, "MACINTOSH", nullptr},
    {8, "EUC-JP", nullptr, Shape::pairs},
    {9, "EUC-TW", nullptr, Shape::euc_tw},
    {10, "EUC-CN", nullptr, Shape::pairs},
    {11, "CP932", nullptr, Shape::pairs},
    {12, "ISO-8859-2", nullptr},
    {13, "ISO-8859-5", nullptr},
    {14, "ISO-8859-6", nullptr},
    {15, "ISO-8859-7", nullptr},
    {16, "ISO-8859-8", nullptr},
    {17, "ISO-8859-9", nullptr},
    {18, "ISO-8859-10", nullptr},
    {19, "ISO-8859-3", nullptr},
    {20, "ISO-8859-4", nullptr},
    {21, "ISO-8859-15", nullptr},
    {26, "MAC-CYRILLIC", nullptr},
    {27, "MAC-CENTRALEUROPE", nullptr},
    {28, nullptr, "x-mac-greek"},
    {29, nullptr, "x-mac-turkish"},
    {30, "HP-GREEK8", nullptr},
    {31, "HP-TURKISH8", nullptr},
    {32, "KOI8-R", nullptr},
    {33, "TIS-620", nullptr},
    {34, "BIG5", nullptr, Shape::pairs},
    {36, "EUC-KR", nullptr, Shape::pairs},
    {37, "CP037", nullptr},
    {42, "ISO-8859-13", nullptr},
    {43, "ISO-8859-14", nullptr},
    {44, "HP-ROMAN9", nullptr},
    {45, nullptr, "macintosh"},
    {46, "IBM874", nullptr},
    {47, "BIG5-HKSCS", nullptr, Shape::pairs},
    {48, "GB18030", nullptr, Shape::gb18030},
    {49, "EUC-JP", nullptr, Shape::euc_jp},
    {50, "SJIS", nullptr, Shape::pairs},
    {54, "RK1048", nullptr},
    {273, "CP273", nullptr},
    {277, "IBM277", nullptr},
    {278, "CP278", nullptr},
    {280, "CP280", nullptr},
    {284, "CP284", nullptr},
    {285, "CP285", nullptr},
    {290, "CP290", nullptr},
    {297, "CP297", nullptr},
    {420, "CP420", nullptr},
    {424, "CP424", nullptr},
    {500, "CP500", nullptr},
    {737, "CP737", nullptr},
    {775, "CP775", nullptr},
    {852, "CP852", nullptr},
    {855, "CP855", nullptr},
    {856, "CP856", nullptr},
    {857, "CP857", nullptr},
    {858, "CP858", nullptr},
    {860, "CP860", nullptr},
    {861, "CP861", nullptr},
    {862, "CP862", nullptr},
    {863, "CP863", nullptr},
    {864, "CP864", nullptr},
    {865, "CP865", nullptr},
    {866, "CP866", nullptr},
    {869, "CP869", nullptr},
    {870, "CP870", nullptr},
    {871, "CP871", nullptr},
    {874, "CP874", nullptr},
    {875, "CP875", nullptr},
    {921, "CP921", nullptr},
    {923, nullptr, "cp923"},
    {930, "CP930", nullptr, Shape::shift},
    {932, "IBM932", nullptr, Shape::pairs},
    {933, "CP933", nullptr, Shape::shift},
    {935, "CP935", nullptr, Shape::shift},
    {936, "CP936", nullptr, Shape::pairs},
    {937, "CP937", nullptr, Shape::shift},
    {939, "CP939", nullptr, Shape::shift},
    {949, "CP949", nullptr, Shape::pairs},
    {950, nullptr, "windows-950-2000", Shape::pairs},
    {954, nullptr, "ibm-954_P101-2007", Shape::euc_jp},
    {1006, nullptr, "cp1006"},
    {1026, "CP1026", nullptr},
    {1047, "CP1047", nullptr},
    {1140, "CP1140", nullptr},
    {1141, "CP1141", nullptr},
    {1142, "CP1142", nullptr},
    {1143, "CP1143", nullptr},
    {1144, "CP1144", nullptr},
    {1145, "CP1145", nullptr},
    {1146, "CP1146", nullptr},
    {1147, "CP1147", nullptr},
    {1148, "CP1148", nullptr},
    {1149, "CP1149", nullptr},
    {1250, "CP1250", nullptr},
    {1251, "CP1251", nullptr},
    {1252, "CP1252", nullptr},
    {1253, "CP1253", nullptr},
    {1254, "CP1254", nullptr},
    {1255, "CP1255", nullptr},
    {1256, "CP1256", nullptr},
    {1257, "CP1257", nullptr},
    {1258, "CP1258", nullptr},
    {3000, "CP930", nullptr, Shape::shift},
    {3001, "CP939", nullptr, Shape::shift},
    {3002, "CP930", nullptr, Shape::shift},
    {3003, "CP939", nullptr, Shape::shift},
    {5026, "CP930", nullptr, Shape::shift},
    {5035, "CP939", nullptr, Shape::shift},
};

std::unique_ptr<Oracle> oracle_of(const Set &set) {
    if (set.iconv_name != nullptr)
        return std::make_unique<IconvOracle>(set.iconv_name);
    return std::make_unique<IcuOracle>(set.icu_name);
}

// ---- Known differences --------------------------------------------------------------------------------------------

// Codes that mean another character here than to the oracle, and nothing else differs about them.
struct Exchange {
    UNICONV_CID number;
    char32_t there, here;
    bool both_ways; // the oracle writes `there` as it reads it
};
constexpr Exchange EXCHANGES[] = {
    // Text that is all ASCII moves between sets as it is, so ASCII characters in other text have to be the same.
    {50, 0xA5, 0x5C, false},
    {50, 0x203E, 0x7E, false},
    {856, 0x1C, 0x1A, true},
    {856, 0x7F, 0x1C, true},
    {856, 0x1A, 0x7F, true},
    {932, 0x1C, 0x1A, true},
    {932, 0x7F, 0x1C, true},
    {932, 0x1A, 0x7F, true},
    // The variants for systems on which the yen sign and the backslash are one character.
    {3000, 0xA5, 0x5C, true},
    {3000, 0x5C, 0xA5, true},
    {3001, 0xA5, 0x5C, true},
    {3001, 0x5C, 0xA5, true},
    {3002, 0xA5, 0x5C, true},
    {3002, 0x5C, 0xA5, true},
    {3003, 0xA5, 0x5C, true},
    {3003, 0x5C, 0xA5, true},
};

char32_t here(UNICONV_CID number, char32_t there) {
    for (const Exchange &exchange : EXCHANGES)
        if (exchange.number == number && exchange.there == there)
            return exchange.here;
    return there;
}
char32_t there(UNICONV_CID number, char32_t here) {
    for (const Exchange &exchange : EXCHANGES)
        if (exchange.number == number && exchange.here == here && exchange.both_ways)
            return exchange.there;
    return here;
}

// Where the C library writes characters as codes that mean something else, and we do not: how many of each set.
struct Refusals {
    UNICONV_CID number;
    int controls;    // it writes a control: the sign for no partner, or one whose old picture the character was
    int round_trips; // it writes another character's code though the character has one of its own
};
constexpr Refusals REFUSALS[] = {
    {856, 34, 0},   {930, 109, 2},  {932, 139, 0},  {933, 64, 0},   {935, 73, 0},   {937, 85, 0},   {939, 109, 2},
    {3000, 109, 2}, {3001, 109, 2}, {3002, 109, 2}, {3003, 109, 2}, {5026, 109, 2}, {5035, 109, 2},
};

bool has_control(const std::optional<Units> &text) {
    return text && text->size() == 1 && (text->front() < 0x20 || (text->front() >= 0x7F && text->front() < 0xA0));
}

// DEC Kanji is the EUC code without the sets behind 8E and 8F.
bool is_outside_dec_kanji(UNICONV_CID number, const std::string &bytes) {
    const auto wide = std::find_if(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
    return number == 8 && wide != bytes.end() && (*wide == '\x8E' || *wide == '\x8F');
}

// U+FFFD is the sign of a fault, wherever it comes from.
bool is_code_of_the_sign_of_faults(UNICONV_CID number, const std::string &bytes) {
    return number == 48 && bytes == "\x84\x31\xA4\x37";
}

// ---- The code space -----------------------------------------------------------------------------------------------

using Visit = std::function<void(const std::string &)>;

struct Bytes {
    int low, high;
};

void each(const std::vector<Bytes> &ranges, const Visit &visit, const std::string &front = "") {
    if (front.size() == ranges.size()) {
        visit(front);
        return;
    }
    const Bytes range = ranges[front.size()];
    for (int byte = range.low; byte <= range.high; ++byte)
        each(ranges, visit, front + static_cast<char>(byte));
}

void each_code(Shape shape, const Visit &visit) {
    each({{1, 255}}, visit);
    if (shape == Shape::single)
        return;
    each({{1, 255}, {1, 255}}, visit);
    if (shape == Shape::euc_jp)
        each({{0x8F, 0x8F}, {0x80, 0xFF}, {0x80, 0xFF}}, visit);
    if (shape == Shape::euc_tw)
        each({{0x8E, 0x8E}, {0xA0, 0xB1}, {0x9F, 0xFF}, {0x9F, 0xFF}}, visit);
    if (shape == Shape::gb18030)
        each({{0x81, 0xFE}, {0x30, 0x39}, {0x81, 0xFE}, {0x30, 0x39}}, visit);
    if (shape == Shape::shift)
        each({{0x0E, 0x0E}, {0x10, 255}, {0x10, 255}}, [&](const std::string &bytes) { visit(bytes + '\x0F'); });
}

class UnicTable : public testing::TestWithParam<Set> {
protected:
    // A difference that is not listed; the first few are told, all are counted.
    void differ(const std::string &what) {
        if (++differences_ <= 12)
            told_ += "  " + what + "\n";
    }
    ~UnicTable() override {
        if (differences_ != 0)
            ADD_FAILURE() << differences_ << " differences of set " << GetParam().number << ":\n" << told_;
    }

private:
    int differences_ = 0;
    std::string told_;
};

std::string hexadecimal(const std::string &bytes) {
    std::string text;
    char two[4];
    for (const char c : bytes) {
        std::snprintf(two, sizeof two, "%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        text += two;
    }
    return text;
}
std::string hexadecimal(const Units &units) {
    std::string text;
    char four[8];
    for (const char16_t c : units) {
        std::snprintf(four, sizeof four, "%04X ", static_cast<unsigned>(c));
        text += four;
    }
    return text;
}

TEST_P(UnicTable, EveryCodeToUnits) {
    const Handle handle(GetParam().number);
    ASSERT_EQ(handle.status(), UNI_OK);
    const auto oracle = oracle_of(GetParam());
    int characters = 0;
    each_code(GetParam().shape, [&](const std::string &bytes) {
        UNICHAR out[16];
        int count = 0;
        const int status = uniconv_unistrFromS(handle.get(), out, 16, bytes.c_str(), &count);
        const Units told(out, out + count);
        std::optional<Units> expected = oracle->units(bytes);
        if (is_outside_dec_kanji(GetParam().number, bytes) || is_code_of_the_sign_of_faults(GetParam().number, bytes))
            expected.reset();
        if (expected)
            for (char16_t &unit : *expected)
                unit = static_cast<char16_t>(here(GetParam().number, unit));
        characters += status == UNI_OK;
        const bool same = expected ? status == UNI_OK && told == *expected : status != UNI_OK;
        if (!same)
            differ(hexadecimal(bytes) + " is " + (expected ? hexadecimal(*expected) : "nothing") + ", but status " +
                   std::to_string(status) + " with " + hexadecimal(told));
    });
    EXPECT_GE(characters, 160);
}

TEST_P(UnicTable, EveryCharacterToBytes) {
    const Handle handle(GetParam().number);
    ASSERT_EQ(handle.status(), UNI_OK);
    const auto oracle = oracle_of(GetParam());
    const Shape shape = GetParam().shape;
    const char32_t last = shape == Shape::single ? 0x107FF : shape == Shape::gb18030 ? 0x10FFFF : 0x2FFFF;
    int factor = 0, characters = 0, controls = 0, round_trips = 0;
    ASSERT_EQ(uniconv_GetExpansionFactor(handle.get(), &factor), UNI_OK);
    for (char32_t c = 1; c <= last; ++c) {
        if (c == 0xD800)
            c = 0xE000;
        UNICHAR units[3] = {static_cast<UNICHAR>(c), 0, 0};
        if (c > 0xFFFF) {
            units[0] = static_cast<UNICHAR>(0xD7C0 + (c >> 10));
            units[1] = static_cast<UNICHAR>(0xDC00 + c % 0x400);
        }
        char out[16];
        int count = 0;
        const int status = uniconv_unistrToS(handle.get(), out, 16, units, &count);
        const std::string told(out, static_cast<size_t>(count - 1));
        ASSERT_LE(count - 1, factor * (c > 0xFFFF ? 2 : 1)) << "the factor is too small";
        auto expected = oracle->bytes(there(GetParam().number, c));
        if (expected && is_outside_dec_kanji(GetParam().number, *expected))
            expected.reset();
        characters += status == UNI_OK;
        const bool same = expected ? status == UNI_OK && told == *expected : status == UNI_SUBSTITUTED;
        if (same)
            continue;
        const auto meaning = expected ? oracle->units(*expected) : std::nullopt;
        const auto own = support::units_of({there(GetParam().number, c)});
        if (status == UNI_SUBSTITUTED && has_control(meaning) && *meaning != own)
            ++controls;
        else if (status == UNI_OK && meaning && *meaning != own && oracle->units(told) == own)
            ++round_trips;
        else
            differ("U+" + hexadecimal(support::units_of({c})) + "is " +
                   (expected ? hexadecimal(*expected) : "nothing") + ", but status " + std::to_string(status) +
                   " with " + hexadecimal(told));
    }
    EXPECT_GE(characters, 160);
    const Refusals *refusals = std::find_if(std::begin(REFUSALS), std::end(REFUSALS),
                                            [](const Refusals &row) { return row.number == GetParam().number; });
    const bool listed = refusals != std::end(REFUSALS);
    EXPECT_EQ(controls, listed ? refusals->controls : 0);
    EXPECT_EQ(round_trips, listed ? refusals->round_trips : 0);
}

INSTANTIATE_TEST_SUITE_P(Sets, UnicTable, testing::ValuesIn(SETS),
                         [](const auto &set) { return std::to_string(set.param.number); });

TEST(UnicTables, EverySetOfTheEngineHasATableOrNeedsNone) {
    for (const CSID_CSNAME &row : csid_name) {
        if (row.unilib_cid == -3)
            continue;
        EXPECT_EQ(Handle(row.unilib_cid).status(), UNI_OK) << row.unilib_cid;
    }
}

TEST(UnicTables, EverySetIsComparedHere) {
    constexpr UNICONV_CID MAC_THAI = 41; // which no oracle knows: it has a test of its own
    for (const CSID_CSNAME &row : csid_name) {
        if (row.unilib_cid <= 0 || row.unilib_cid == MAC_THAI)
            continue;
        EXPECT_TRUE(std::any_of(std::begin(SETS), std::end(SETS), [&](const Set &set) {
            return set.number == row.unilib_cid;
        })) << row.unilib_cid;
    }
}

TEST(UnicTables, MacThaiIsTheThaiStandardWithTypographicCharacters) {
    const Handle handle(41);
    IconvOracle standard("TIS-620");
    for (int byte = 1; byte < 256; ++byte) {
        const std::string bytes(1, static_cast<char>(byte));
        const support::ToUnits told = handle.from(bytes);
        const auto thai = standard.units(bytes);
        // Three signs of the standard stand nowhere in this set; their places have others.
        if (!thai || byte == 0xEE || byte == 0xFA || byte == 0xFB)
            continue;
        EXPECT_EQ(told.text, *thai) << byte;
        EXPECT_EQ(handle.to(told.text).text, bytes) << byte;
    }
    EXPECT_EQ(handle.from("\x80\x81\x82\x8D\x8E\x91\x9D\x9E\xEE\xFA\xFB").text,
              u"\u00AB\u00BB\u2026\u201C\u201D\u2022\u2018\u2019\u2122\u00AE\u00A9");
    EXPECT_EQ(handle.from("\x83\x88\x98\x94").text, u"\u0E48\u0E48\u0E48\u0E34") << "marks by their places";
    EXPECT_EQ(handle.to(u"\u0E48\u0E34").text, "\xE8\xD4");
    for (const char *none : {"\x90", "\x9F", "\xFC", "\xFF"})
        EXPECT_EQ(handle.from(none).status, UNI_SUBSTITUTED);
}

} // namespace
