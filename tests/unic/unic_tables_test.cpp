// The shipped tables over the whole code space of every set, in both directions, against the C library's iconv and ICU.
#include "support/code_pages.h"
#include "support/environment.h"
#include "support/unicode_calls.h"

#include <dlxcomn/charconv.h>

#include <functional>

namespace {

using support::Handle;
using support::Units;
using namespace support::code_pages;

const support::Variable home("DALVEX", DLXCOMN_BUILD_DIR "/home");

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
