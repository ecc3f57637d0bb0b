// Text between every pair of the sets that ship, short and long, against the C library's iconv and ICU.
#include "charset/engine_fixture.h"

#include "support/cases.h"
#include "support/code_pages.h"
#include "support/unicode_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <optional>
#include <random>

namespace {

using namespace engine;
namespace pages = support::code_pages;
using support::Units;

constexpr char32_t LAST = 0x2FFFF;
constexpr UNICONV_CID ASCII = 0, MAC_THAI = 41, HEBREW = 1255, VIETNAMESE = 1258, BIG5_HK = 47;

// Neither side of a text that begins with it agrees on whether it is text.
constexpr char32_t BYTE_ORDER_MARK = 0xFEFF;

// ---- What a set has -------------------------------------------------------------------------------------------------

// The sets that need no table. The compression scheme leaves choices to who writes it, so text in it is compared by
// what it says.
std::unique_ptr<pages::Oracle> oracle_of(UNICONV_CID cid) {
    switch (cid) {
    case ASCII:
        return std::make_unique<pages::IconvOracle>("ASCII");
    case UNICONV_UTF8:
        return std::make_unique<pages::IconvOracle>("UTF-8");
    case UNICONV_UTF16:
        return std::make_unique<pages::IconvOracle>("UTF-16LE");
    case UNICONV_RCSU:
        return std::make_unique<pages::IcuOracle>("SCSU");
    case MAC_THAI: // the Thai standard, as far as they are the same
        return std::make_unique<pages::IconvOracle>("TIS-620");
    default:
        for (const pages::Set &set : pages::SETS)
            if (set.number == cid)
                return pages::oracle_of(set);
        ADD_FAILURE() << "no oracle of " << cid;
        return nullptr;
    }
}

class Set {
public:
    explicit Set(const CSID_CSNAME &row) : name(name_of(row)), cid(row.unilib_cid), oracle(oracle_of(cid)) {
        const CHAR_ATTRIB &attributes = *Shipped::instance()[name].cache.locchardesc->char_attrib;
        is_wide = attributes.cs_width_map != nullptr;
        is_shifted = std::ranges::any_of(
            pages::SETS, [&](const pages::Set &set) { return set.number == cid && set.shape == pages::Shape::shift; });
        has_.resize(LAST + 1);
        if (is_universal()) {
            for (char32_t c = 1; c <= LAST; ++c)
                has_[c] = (c < 0xD800 || c > 0xDFFF) && c != 0xFFFD && c != BYTE_ORDER_MARK;
            return;
        }
        const char32_t last = !is_wide ? 0xFFFF : LAST;
        for (char32_t c = 1; c <= last; ++c) {
            if (c == 0xD800)
                c = 0xE000;
            if (!is_asked(c))
                continue;
            const auto bytes = oracle->bytes(c);
            // What the C library writes as a letter and a mark it joins again; a code is a character here.
            if (!bytes || (!is_wide && bytes->size() > 1) || oracle->units(*bytes) != support::units_of({c}) ||
                pages::is_outside_dec_kanji(cid, *bytes) || (cid == MAC_THAI && is_other_in_mac_thai(*bytes)))
                continue;
            has_[c] = true;
            (c < 0x80 ? low_ : high_).push_back(c);
        }
    }

    bool is_universal() const { return cid == UNICONV_UTF8 || cid == UNICONV_UTF16 || cid == UNICONV_RCSU; }
    // A character that both this and the oracle know, and agree on in both directions.
    bool has(char32_t c) const { return has_[c]; }
    std::size_t size() const { return low_.size() + high_.size(); }

    // Mostly beyond ASCII.
    char32_t any(std::mt19937_64 &random) const {
        if (is_universal()) {
            const char32_t c = support::random_character(random, static_cast<unsigned>(random() % 4));
            return c <= LAST && has(c) ? c : U'A';
        }
        const bool high = !high_.empty() && random() % 4 != 0;
        const auto &part = high ? high_ : low_;
        return part[random() % part.size()];
    }

    const std::string name;
    const UNICONV_CID cid;
    const std::unique_ptr<pages::Oracle> oracle;
    bool is_wide;    // it has characters of two bytes and more
    bool is_shifted; // in a state of their own

private:
    bool is_asked(char32_t c) const {
        // Codes for changes of state, and what is exchanged for something else on purpose.
        if ((is_shifted && (c == 0x0E || c == 0x0F)) || c == 0xFFFD || c == BYTE_ORDER_MARK)
            return false;
        for (const pages::Exchange &exchange : pages::EXCHANGES)
            if (exchange.number == cid && (exchange.here == c || exchange.there == c))
                return false;
        // Marks that the C library joins with the letter in front of them.
        const bool is_mark = (c >= 0x300 && c < 0x370) || (c >= 0x5B0 && c < 0x5C8);
        return !is_mark || (cid != HEBREW && cid != VIETNAMESE && cid != BIG5_HK);
    }
    static bool is_other_in_mac_thai(const std::string &bytes) {
        return bytes == "\xEE" || bytes == "\xFA" || bytes == "\xFB";
    }

    std::vector<bool> has_;
    std::u32string low_, high_;
};

const std::vector<std::unique_ptr<Set>> &sets() {
    static const std::vector<std::unique_ptr<Set>> all = [] {
        std::vector<std::unique_ptr<Set>> made;
        for (const CSID_CSNAME &row : shipped_sets())
            made.push_back(std::make_unique<Set>(row));
        return made;
    }();
    return all;
}

// ---- Text -----------------------------------------------------------------------------------------------------------

// Characters that both sets have.
std::u32string common_text(std::mt19937_64 &random, const Set &from, const Set &to, std::size_t length) {
    const Set &fewer = from.is_universal() || (!to.is_universal() && to.size() < from.size()) ? to : from;
    const Set &other = &fewer == &from ? to : from;
    std::u32string text;
    while (text.size() < length) {
        char32_t c = fewer.any(random);
        for (int tries = 0; !other.has(c) && tries < 20; ++tries)
            c = fewer.any(random);
        while (!other.has(c))
            c = U' ' + static_cast<char32_t>(random() % 95);
        if (fewer.has(c))
            text += c;
    }
    return text;
}

bool is_ascii(const std::string &bytes) {
    return std::ranges::all_of(bytes, [](char c) { return static_cast<CS_BYTE>(c) < 0x80; });
}

class EnginePairs : public EngineTest {
protected:
    // Whether the text came over whole.
    void check(const Set &from, const Set &to, const std::u32string &text) {
        const Units units = support::units_of(text);
        const auto source = from.oracle->bytes(units);
        const auto expected = to.oracle->bytes(units);
        ASSERT_TRUE(source && expected);
        const Result result = convert(from.name, *source, to.name);
        ASSERT_EQ(result.status, CS_SUCCEED) << context(from, to, *source);
        ASSERT_EQ(result.length, static_cast<CS_INT>(result.text().size()));
        if (is_ascii(*source)) // whatever it means
            expect_same(result.text(), *source, context(from, to, *source));
        else if (to.cid == UNICONV_RCSU)
            ASSERT_TRUE(to.oracle->units(result.text()) == units) << context(from, to, *source);
        else
            expect_same(result.text(), *expected, context(from, to, *source));
    }

    // Whether a room that is too small got the whole characters that fit, and zeros.
    void check_cut(const Set &from, const Set &to, const std::u32string &text, std::size_t room) {
        const auto source = from.oracle->bytes(support::units_of(text));
        if (is_ascii(*source))
            return;
        std::string expected;
        for (std::size_t count = text.size() - 1; count > 0 && expected.empty(); --count) {
            const std::string bytes = to.oracle->bytes(support::units_of(text.substr(0, count))).value();
            if (bytes.size() <= room)
                expected = bytes;
        }
        expected.resize(room, '\0');
        const Result result = convert(from.name, *source, to.name, room);
        ASSERT_EQ(result.status, CS_ETRUNCATED) << context(from, to, *source) << room;
        ASSERT_EQ(result.length, static_cast<CS_INT>(room));
        expect_same(result.text(), expected, context(from, to, *source) + std::to_string(room) + " ");
    }

    // Tells what stands around the first difference.
    static void expect_same(const std::string &told, const std::string &expected, const std::string &where) {
        if (told == expected)
            return;
        const auto [a, b] = std::ranges::mismatch(told, expected);
        const std::size_t at = static_cast<std::size_t>(a - told.begin());
        const std::size_t from = at < 8 ? 0 : at - 8;
        FAIL() << where << "differs at " << at << ": " << testing::PrintToString(told.substr(from, 24)) << ", expected "
               << testing::PrintToString(expected.substr(from, 24));
    }
    static std::string context(const Set &from, const Set &to, const std::string &source) {
        return from.name + " to " + to.name + " of " + testing::PrintToString(source.substr(0, 60)) + " ";
    }
};

// Each value has about 30 bytes.
std::size_t short_length(std::mt19937_64 &random, const Set &from) {
    return 1 + random() % (from.is_wide || from.is_universal() ? 15 : 30);
}

TEST_F(EnginePairs, ShortTextOfAllOfThem) {
    std::mt19937_64 random(611);
    for (const auto &from : sets())
        for (const auto &to : sets()) {
            if (from == to)
                continue;
            for (int i = 0; i < support::cases(10); ++i) {
                check(*from, *to, common_text(random, *from, *to, short_length(random, *from)));
                if (HasFatalFailure())
                    return;
            }
        }
}

TEST_F(EnginePairs, ShortTextThatIsCut) {
    std::mt19937_64 random(612);
    for (const auto &from : sets())
        for (const auto &to : sets()) {
            if (from == to || to->cid == UNICONV_RCSU || random() % 2 != 0)
                continue;
            const std::u32string text = common_text(random, *from, *to, short_length(random, *from));
            const std::size_t whole = to->oracle->bytes(support::units_of(text))->size();
            check_cut(*from, *to, text, random() % whole);
            if (HasFatalFailure())
                return;
        }
}

// Beyond the buffers that lie on the stack.
TEST_F(EnginePairs, LongTextOfEverySetInBothDirections) {
    std::mt19937_64 random(613);
    for (const int size : {300, 2000, support::cases(70000)})
        for (const auto &set : sets()) {
            const Set *other = set.get();
            while (other == set.get())
                other = sets()[random() % sets().size()].get();
            const auto length = static_cast<std::size_t>(size / (set->is_wide || set->is_universal() ? 2 : 1));
            check(*set, *other, common_text(random, *set, *other, length));
            check(*other, *set, common_text(random, *other, *set, length));
            if (HasFatalFailure())
                return;
        }
}

// Around the sizes of the buffers on the stack, in rooms without a spare byte.
TEST_F(EnginePairs, TextOfTheSizesOfWorkBuffers) {
    std::mt19937_64 random(617);
    const auto set = [](const char *name) -> const Set & {
        return **std::ranges::find_if(sets(), [&](const auto &each) { return each->name == name; });
    };
    const std::pair<const Set &, const Set &> pairs[] = {
        {set("iso_1"), set("cp850")},  {set("iso_1"), set("utf8")}, {set("utf8"), set("iso_1")},
        {set("sjis"), set("eucjis")},  {set("sjis"), set("utf8")},  {set("utf8"), set("sjis")},
        {set("cp939"), set("utf8")},   {set("utf8"), set("cp939")}, {set("gb18030"), set("utf16")},
        {set("utf16"), set("gb18030")}};
    for (const auto &[from, to] : pairs)
        for (const std::size_t middle : {64u, 128u, 255u, 510u, 1023u})
            for (std::size_t length = middle - 6; length < middle + 6; ++length) {
                const std::u32string text = common_text(random, from, to, length);
                const Units units = support::units_of(text);
                const std::string source = from.oracle->bytes(units).value();
                const std::string expected = to.oracle->bytes(units).value();
                const Result result = convert(from.name, source, to.name, expected.size());
                ASSERT_EQ(result.status, CS_SUCCEED) << context(from, to, source);
                expect_same(result.text(), expected, context(from, to, source));
                check_cut(from, to, text, expected.size() - 1);
                if (HasFatalFailure())
                    return;
            }
}

// The steps over blocks of ASCII, and out of them.
TEST_F(EnginePairs, OneAccentAtEveryPlaceOfATextOfEveryLength) {
    for (std::size_t length = 1; length <= 140; ++length)
        for (std::size_t at = 0; at < length; ++at) {
            const std::string before(at, 'b'), behind(length - at - 1, 'e');
            const std::string iso_1 = before + "\xE4" + behind, cp850 = before + "\x84" + behind;
            const std::string utf8 = before + "\xC3\xA4" + behind;
            ASSERT_EQ(convert("iso_1", iso_1, "cp850", length).text(), cp850);
            ASSERT_EQ(convert("iso_1", iso_1, "utf8", length + 1).text(), utf8);
            ASSERT_EQ(convert("utf8", utf8, "iso_1", length).text(), iso_1);
            ASSERT_EQ(to_utf8(cache("cp850"), cp850, length + 1).text(), utf8);
            ASSERT_EQ(from_utf8(utf8, cache("cp850"), length).text(), cp850);
            const std::string sjis = before + "\x93\xFA" + behind, wide = before + "\xE6\x97\xA5" + behind;
            ASSERT_EQ(convert("sjis", sjis, "utf8", length + 2).text(), wide);
            ASSERT_EQ(convert("utf8", wide, "sjis", length + 1).text(), sjis);
            const Result cut = convert("iso_1", iso_1, "utf8", length);
            ASSERT_EQ(cut.status, CS_ETRUNCATED);
            std::string kept = utf8.substr(0, length);
            if (at == length - 1)
                kept.back() = '\0';
            ASSERT_EQ(cut.text(), kept);
        }
}

TEST_F(EnginePairs, EverySetToUtf8AndBackByTheirOwnCalls) {
    std::mt19937_64 random(614);
    const Set &utf8 = **std::ranges::find_if(sets(), [](const auto &set) { return set->cid == UNICONV_UTF8; });
    for (const auto &set : sets()) {
        if (set->cid == UNICONV_UTF8)
            continue;
        for (int i = 0; i < support::cases(200); ++i) {
            const std::size_t length = i == 0 ? 3000 : 1 + random() % 30;
            const std::u32string text = common_text(random, *set, utf8, length);
            const Units units = support::units_of(text);
            const std::string bytes = set->oracle->bytes(units).value();
            const std::string plain = utf8.oracle->bytes(units).value();
            const Result to = to_utf8(cache(set->name), bytes, 4 * text.size() + 4);
            ASSERT_EQ(to.status, CS_SUCCEED) << set->name;
            expect_same(to.text(), is_ascii(bytes) ? bytes : plain, set->name + " ");
            const Result from = from_utf8(plain, cache(set->name), 8 * text.size() + 8);
            ASSERT_EQ(from.status, CS_SUCCEED) << set->name;
            if (set->cid == UNICONV_RCSU)
                ASSERT_TRUE(set->oracle->units(from.text()) == units);
            else
                expect_same(from.text(), bytes, set->name + " ");
            if (HasFatalFailure())
                return;
        }
    }
}

// ---- Characters without a partner -----------------------------------------------------------------------------------

TEST_F(EnginePairs, EachCharacterWithoutAPartnerIsReplacedByItsWidth) {
    std::mt19937_64 random(615);
    long replaced = 0;
    for (const auto &from : sets()) {
        if (from->cid == UNICONV_RCSU)
            continue;
        for (const auto &to : sets()) {
            // A text is put together by characters, which have no state, and what a set lacks has to be known.
            if (from == to || to->is_universal() || to->is_shifted || to->cid == MAC_THAI)
                continue;
            std::u32string text;
            std::string expected;
            while (text.size() < 12) {
                const char32_t c = from->any(random);
                if (to->has(c)) {
                    expected += to->oracle->bytes(c).value();
                } else {
                    if (to->oracle->bytes(c))
                        continue; // something of it is known, or differs
                    const std::size_t width = from->oracle->bytes(c).value().size();
                    expected += to->is_wide && width >= 2 ? "??" : "?";
                    ++replaced;
                }
                text += c;
            }
            const std::string source = from->oracle->bytes(support::units_of(text)).value();
            if (is_ascii(source))
                continue;
            const Result result = convert(from->name, source, to->name);
            ASSERT_EQ(result.status, CS_SUCCEED) << context(*from, *to, source);
            expect_same(result.text(), expected, context(*from, *to, source));
            if (HasFatalFailure())
                return;
        }
    }
    EXPECT_GT(replaced, 20000);
}

// ---- Text of any bytes ----------------------------------------------------------------------------------------------

// What comes is within the room, and the answer is one that is told.
TEST_F(EnginePairs, AnyBytesInAnyRoom) {
    std::mt19937_64 random(616);
    for (int i = 0; i < support::cases(100000); ++i) {
        const Set &from = *sets()[random() % sets().size()];
        const Set &to = *sets()[random() % sets().size()];
        std::string bytes(random() % 40, 'x');
        const auto taste = random() % 3;
        for (char &c : bytes)
            c = static_cast<char>(taste == 0 ? random() : taste == 1 ? 0x80 | random() : random() % 0x60 + 0x20);
        const std::size_t room = random() % 60;
        const Result result = convert(from.name, bytes, to.name, room); // its guards are checked
        ASSERT_TRUE(result.status == CS_SUCCEED || result.status == CS_ETRUNCATED || result.status == CS_FAIL);
        ASSERT_GE(result.length, 0);
        ASSERT_LE(result.length, static_cast<CS_INT>(room));
        ASSERT_TRUE(result.status != CS_FAIL || result.length == 0);
    }
}

} // namespace
