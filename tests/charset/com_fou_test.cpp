// The single-byte routines of the older matrix: each code against what the two sets say in Unicode, each length, and
// the matrix cell by cell.
//
// The C library's iconv is the oracle. Where a table has another partner than it, or none for a code that has one, the
// difference stands below with its reason, and it has to be there.
#include "support/assertions.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <iconv.h>

namespace {

using support::ReturningAssertions;

constexpr CS_BYTE GROUND = 0xEE;

struct Routine {
    const char *from;
    const char *to;
    CS_XLATE_FUNC function;
};

#define ROUTINE(from, to) {#from, #to, com__fou_##from##_to_##to}
constexpr Routine ROUTINES[] = {
    ROUTINE(cp437, cp850),  ROUTINE(cp437, iso1),    ROUTINE(cp437, mac),    ROUTINE(cp437, roman8),
    ROUTINE(cp850, cp437),  ROUTINE(cp850, iso1),    ROUTINE(cp850, mac),    ROUTINE(cp850, roman8),
    ROUTINE(iso1, cp437),   ROUTINE(iso1, cp850),    ROUTINE(iso1, mac),     ROUTINE(iso1, roman8),
    ROUTINE(mac, cp437),    ROUTINE(mac, cp850),     ROUTINE(mac, iso1),     ROUTINE(mac, roman8),
    ROUTINE(roman8, cp437), ROUTINE(roman8, cp850),  ROUTINE(roman8, iso1),  ROUTINE(roman8, mac),
};

// Why a table differs.
enum Reason {
    SHIFTED,  // the end of the table stands three places early: a code has the partner of the code three above it
    CONTROLS, // control characters above ASCII are not converted
    BLANK,    // the table has no partner for the blank that does not break
    HYPHEN,   // the soft hyphen and the en dash are taken for each other
    SUM,      // the Greek capital sigma and the sign of summation are taken for each other
    MICRO,    // the table has no partner for the micro sign
    FLORIN,   // nor for the sign of the florin
    OLD_MAC   // the tables of mac end at 0xD8, as that set once did
};

struct Differences {
    const char *from;
    const char *to;
    Reason reason;
    std::vector<std::pair<int, int>> codes; // and the partner, 0 for none
};

const Differences DIFFERENCES[] = {
    {"cp437", "cp850", SHIFTED,
     {{0xB6, 0xB9}, {0xB7, 0xBA}, {0xB8, 0xBB}, {0xB9, 0xBC}, {0xBA, 0}, {0xBB, 0}, {0xBC, 0xBF}, {0xBD, 0xC0},
      {0xBE, 0xC1}, {0xBF, 0xC2}, {0xC0, 0xC3}, {0xC1, 0xC4}, {0xC2, 0xC5}, {0xC3, 0}, {0xC4, 0}, {0xC5, 0xC8},
      {0xC6, 0xC9}, {0xC7, 0xCA}, {0xC8, 0xCB}, {0xC9, 0xCC}, {0xCA, 0xCD}, {0xCB, 0xCE}, {0xCC, 0}, {0xCD, 0},
      {0xCE, 0}, {0xD6, 0xD9}, {0xD7, 0xDA}, {0xD8, 0xDB}, {0xD9, 0xDC}, {0xDA, 0}, {0xDB, 0}, {0xDC, 0xDF},
      {0xDE, 0xE1}, {0xDF, 0}, {0xE1, 0}, {0xE6, 0}, {0xEE, 0xF1}, {0xF1, 0}, {0xF3, 0xF6}, {0xF5, 0xF8}, {0xF6, 0},
      {0xF7, 0xFA}, {0xF8, 0}, {0xFA, 0xFD}, {0xFB, 0xFE}, {0xFC, 0xFF}, {0xFD, 0}, {0xFE, 0}, {0xFF, 0}}},
    {"cp437", "iso1", SHIFTED,
     {{0xDE, 0xDF}, {0xE1, 0}, {0xE6, 0}, {0xEE, 0xB1}, {0xF1, 0}, {0xF3, 0xF7}, {0xF5, 0xB0}, {0xF6, 0},
      {0xF7, 0xB7}, {0xF8, 0}, {0xFA, 0xB2}, {0xFC, 0xA0}, {0xFD, 0}, {0xFF, 0}}},
    {"cp437", "roman8", BLANK,
     {{0xFF, 0}}},
    {"roman8", "cp437", BLANK,
     {{0xA0, 0}}},
    {"cp850", "cp437", MICRO,
     {{0xE6, 0}}},
    {"iso1", "cp437", MICRO,
     {{0xB5, 0}}},
    {"iso1", "roman8", CONTROLS,
     {{0x80, 0}, {0x81, 0}, {0x82, 0}, {0x83, 0}, {0x84, 0}, {0x85, 0}, {0x86, 0}, {0x87, 0}, {0x88, 0}, {0x89, 0},
      {0x8A, 0}, {0x8B, 0}, {0x8C, 0}, {0x8D, 0}, {0x8E, 0}, {0x8F, 0}, {0x90, 0}, {0x91, 0}, {0x92, 0}, {0x93, 0},
      {0x94, 0}, {0x95, 0}, {0x96, 0}, {0x97, 0}, {0x98, 0}, {0x99, 0}, {0x9A, 0}, {0x9B, 0}, {0x9C, 0}, {0x9D, 0},
      {0x9E, 0}, {0x9F, 0}}},
    {"roman8", "iso1", CONTROLS,
     {{0x80, 0}, {0x81, 0}, {0x82, 0}, {0x83, 0}, {0x84, 0}, {0x85, 0}, {0x86, 0}, {0x87, 0}, {0x88, 0}, {0x89, 0},
      {0x8A, 0}, {0x8B, 0}, {0x8C, 0}, {0x8D, 0}, {0x8E, 0}, {0x8F, 0}, {0x90, 0}, {0x91, 0}, {0x92, 0}, {0x93, 0},
      {0x94, 0}, {0x95, 0}, {0x96, 0}, {0x97, 0}, {0x98, 0}, {0x99, 0}, {0x9A, 0}, {0x9B, 0}, {0x9C, 0}, {0x9D, 0},
      {0x9E, 0}, {0x9F, 0}}},
    {"cp850", "roman8", BLANK,
     {{0xFF, 0}}},
    {"roman8", "cp850", BLANK,
     {{0xA0, 0}}},
    {"iso1", "mac", HYPHEN,
     {{0xAD, 0xD0}}},
    {"iso1", "mac", OLD_MAC,
     {{0xAF, 0}, {0xB7, 0}, {0xB8, 0}, {0xC1, 0}, {0xC2, 0}, {0xC8, 0}, {0xCA, 0}, {0xCB, 0}, {0xCC, 0}, {0xCD, 0},
      {0xCE, 0}, {0xCF, 0}, {0xD2, 0}, {0xD3, 0}, {0xD4, 0}, {0xD9, 0}, {0xDA, 0}, {0xDB, 0}}},
    {"mac", "iso1", HYPHEN,
     {{0xD0, 0xAD}}},
    {"mac", "iso1", OLD_MAC,
     {{0xE1, 0}, {0xE5, 0}, {0xE6, 0}, {0xE7, 0}, {0xE8, 0}, {0xE9, 0}, {0xEA, 0}, {0xEB, 0}, {0xEC, 0}, {0xED, 0},
      {0xEE, 0}, {0xEF, 0}, {0xF1, 0}, {0xF2, 0}, {0xF3, 0}, {0xF4, 0}, {0xF8, 0}, {0xFC, 0}}},
    {"cp850", "mac", FLORIN,
     {{0x9F, 0}}},
    {"cp850", "mac", OLD_MAC,
     {{0xB5, 0}, {0xB6, 0}, {0xD2, 0}, {0xD3, 0}, {0xD4, 0}, {0xD5, 0}, {0xD6, 0}, {0xD7, 0}, {0xD8, 0}, {0xDE, 0},
      {0xE0, 0}, {0xE2, 0}, {0xE3, 0}, {0xE9, 0}, {0xEA, 0}, {0xEB, 0}, {0xEE, 0}, {0xF7, 0}, {0xFA, 0}}},
    {"cp850", "mac", HYPHEN,
     {{0xF0, 0xD0}}},
    {"mac", "cp850", FLORIN,
     {{0xC4, 0}}},
    {"mac", "cp850", HYPHEN,
     {{0xD0, 0xF0}}},
    {"mac", "cp850", OLD_MAC,
     {{0xE1, 0}, {0xE5, 0}, {0xE6, 0}, {0xE7, 0}, {0xE8, 0}, {0xE9, 0}, {0xEA, 0}, {0xEB, 0}, {0xEC, 0}, {0xED, 0},
      {0xEE, 0}, {0xEF, 0}, {0xF1, 0}, {0xF2, 0}, {0xF3, 0}, {0xF4, 0}, {0xF5, 0}, {0xF8, 0}, {0xFC, 0}}},
    {"cp437", "mac", SUM,
     {{0xE4, 0xB7}}},
    {"cp437", "mac", OLD_MAC,
     {{0xFA, 0}}},
    {"mac", "cp437", SUM,
     {{0xB7, 0xE4}}},
    {"mac", "cp437", OLD_MAC,
     {{0xE1, 0}}},
    {"mac", "roman8", BLANK,
     {{0xCA, 0}}},
    {"mac", "roman8", OLD_MAC,
     {{0xD9, 0}, {0xE1, 0}, {0xE5, 0}, {0xE6, 0}, {0xE7, 0}, {0xE8, 0}, {0xE9, 0}, {0xEA, 0}, {0xEB, 0}, {0xEC, 0},
      {0xED, 0}, {0xEE, 0}, {0xEF, 0}, {0xF1, 0}, {0xF2, 0}, {0xF3, 0}, {0xF4, 0}, {0xF6, 0}, {0xF7, 0}, {0xF8, 0}}},
    {"roman8", "mac", BLANK,
     {{0xA0, 0}}},
    {"roman8", "mac", OLD_MAC,
     {{0xA2, 0}, {0xA3, 0}, {0xA4, 0}, {0xA5, 0}, {0xA6, 0}, {0xA7, 0}, {0xAA, 0}, {0xAC, 0}, {0xAD, 0}, {0xAE, 0},
      {0xB0, 0}, {0xDF, 0}, {0xE0, 0}, {0xE5, 0}, {0xE6, 0}, {0xE7, 0}, {0xE8, 0}, {0xED, 0}, {0xEE, 0}, {0xF2, 0}}},
};

// ---- The oracle ---------------------------------------------------------------------------------------------

const char *iconv_name(const std::string &set) {
    static const std::map<std::string, const char *> NAMES = {{"iso1", "ISO-8859-1"},
                                                              {"cp850", "CP850"},
                                                              {"cp437", "CP437"},
                                                              {"roman8", "HP-ROMAN8"},
                                                              {"mac", "MACINTOSH"}};
    return NAMES.at(set);
}

// The code points of all codes of a set; none for a code that it does not define.
std::vector<std::optional<char32_t>> code_points(const std::string &set) {
    std::vector<std::optional<char32_t>> result(256);
    for (int code = 0; code < 256; ++code) {
        const iconv_t converter = iconv_open("UTF-32LE", iconv_name(set));
        if (converter == iconv_t(-1)) {
            ADD_FAILURE() << "no " << set << " in the C library";
            return result;
        }
        char in = static_cast<char>(code);
        char32_t out = 0;
        char *from = &in, *to = reinterpret_cast<char *>(&out);
        std::size_t left = 1, room = sizeof out;
        if (iconv(converter, &from, &left, &to, &room) != std::size_t(-1) && room == 0)
            result[static_cast<std::size_t>(code)] = out;
        iconv_close(converter);
    }
    return result;
}

// What each code is in the other set; 0 for no partner.
std::vector<int> partners_in_unicode(const std::string &from, const std::string &to) {
    std::map<char32_t, int> codes;
    const auto target = code_points(to);
    for (int code = 0; code < 256; ++code)
        if (const auto point = target[static_cast<std::size_t>(code)])
            codes[*point] = code;
    std::vector<int> result;
    for (const auto point : code_points(from))
        result.push_back(point && codes.contains(*point) ? codes[*point] : 0);
    return result;
}

// ---- Calls --------------------------------------------------------------------------------------------------

struct Result {
    int flags;
    int sused;
    int dused;
    std::vector<CS_BYTE> dest;
    bool operator==(const Result &) const = default;
};

void PrintTo(const Result &result, std::ostream *out) {
    *out << "flags " << result.flags << " used " << result.sused << '/' << result.dused << ':';
    for (const CS_BYTE byte : result.dest)
        *out << ' ' << std::hex << int(byte) << std::dec;
}

// The buffers have no spare byte, so that the address sanitizer sees the first one too many.
Result call(CS_XLATE_FUNC function, const std::vector<CS_BYTE> &text, int slen, int dlen) {
    std::vector<CS_BYTE> src(text.begin(), text.begin() + slen);
    Result result{-5, -5, -5, std::vector<CS_BYTE>(static_cast<std::size_t>(dlen), GROUND)};
    result.flags = function(src.data(), slen, result.dest.data(), dlen, &result.sused, &result.dused);
    EXPECT_TRUE(std::equal(src.begin(), src.end(), text.begin())) << "the source was changed";
    return result;
}

// The same from a map of partners, with 0 for those that have none.
Result expected(const std::vector<int> &map, const std::vector<CS_BYTE> &text, int slen, int dlen) {
    const int count = slen < dlen ? slen : dlen;
    Result result{dlen < slen ? 2 : 0, count, count, std::vector<CS_BYTE>(static_cast<std::size_t>(dlen), GROUND)};
    for (int i = 0; i < count; ++i) {
        const CS_BYTE code = text[static_cast<std::size_t>(i)];
        const int partner = map[code];
        const bool is_unmapped = partner == 0 && code != 0;
        result.dest[static_cast<std::size_t>(i)] = is_unmapped ? CS_BYTE('?') : static_cast<CS_BYTE>(partner);
        if (is_unmapped)
            result.flags |= 1;
    }
    return result;
}

void expect_map(CS_XLATE_FUNC function, const std::vector<int> &map) {
    for (int code = 0; code < 256; ++code) {
        const std::vector<CS_BYTE> text = {static_cast<CS_BYTE>(code)};
        EXPECT_EQ(call(function, text, 1, 1), expected(map, text, 1, 1)) << "code " << std::hex << code;
    }
    std::vector<CS_BYTE> all(256);
    std::iota(all.begin(), all.end(), CS_BYTE(0));
    EXPECT_EQ(call(function, all, 256, 256), expected(map, all, 256, 256));
    // Texts that map whole and texts that do not, at every pair of lengths.
    for (const int first : {0x41, 0x7A, 0xA0, 0xC0, 0xDC}) {
        std::vector<CS_BYTE> text(20);
        std::iota(text.begin(), text.end(), static_cast<CS_BYTE>(first));
        for (int slen = 0; slen <= 20; ++slen)
            for (int dlen = 0; dlen <= 22; ++dlen)
                EXPECT_EQ(call(function, text, slen, dlen), expected(map, text, slen, dlen)) << slen << ' ' << dlen;
    }
}

std::vector<int> identity(int end) {
    std::vector<int> map(256, 0);
    std::iota(map.begin(), map.begin() + end, 0);
    return map;
}

// ---- Tables -------------------------------------------------------------------------------------------------

TEST(SingleByteRoutines, EveryCodeIsWhatTheSetsSayInUnicodeButForTheDifferencesListed) {
    for (const auto &[from, to, function] : ROUTINES) {
        SCOPED_TRACE(std::string(from) + " to " + to);
        const std::vector<int> unicode = partners_in_unicode(from, to);
        std::vector<int> map = unicode;
        for (const Differences &differences : DIFFERENCES) {
            if (differences.from != std::string(from) || differences.to != std::string(to))
                continue;
            for (const auto &[code, partner] : differences.codes) {
                ASSERT_NE(partner, unicode[static_cast<std::size_t>(code)]) << "no difference: " << std::hex << code;
                map[static_cast<std::size_t>(code)] = partner;
            }
        }
        expect_map(function, map);
    }
}

TEST(SingleByteRoutines, EveryDifferenceHasTheReasonThatItIsListedWith) {
    std::set<std::string> known;
    for (const Routine &routine : ROUTINES)
        known.insert(std::string(routine.from) + routine.to);
    for (const auto &[from, to, reason, codes] : DIFFERENCES) {
        SCOPED_TRACE(std::string(from) + " to " + to);
        EXPECT_TRUE(known.contains(std::string(from) + to));
        const auto points = code_points(from);
        const auto target = code_points(to);
        const std::vector<int> unicode = partners_in_unicode(from, to);
        for (const auto &[code, partner] : codes) {
            const auto at = static_cast<std::size_t>(code);
            const char32_t point = points[at].value_or(0);
            const char32_t taken = partner != 0 ? target[static_cast<std::size_t>(partner)].value_or(0) : 0;
            const auto are = [&](char32_t one, char32_t other) {
                return (point == one && taken == other) || (point == other && taken == one);
            };
            switch (reason) {
            case SHIFTED:
                EXPECT_EQ(partner, code <= 0xFC ? unicode[at + 3] : 0) << std::hex << code;
                break;
            case CONTROLS:
                EXPECT_TRUE(point >= 0x80 && point <= 0x9F && partner == 0) << std::hex << code;
                break;
            case BLANK:
                EXPECT_TRUE(point == 0xA0 && partner == 0) << std::hex << code;
                break;
            case HYPHEN:
                EXPECT_TRUE(are(0xAD, 0x2013)) << std::hex << code;
                break;
            case SUM:
                EXPECT_TRUE(are(0x3A3, 0x2211)) << std::hex << code;
                break;
            case MICRO:
                EXPECT_TRUE(point == 0xB5 && partner == 0) << std::hex << code;
                break;
            case FLORIN:
                EXPECT_TRUE(point == 0x192 && partner == 0) << std::hex << code;
                break;
            case OLD_MAC:
                EXPECT_TRUE((from == std::string("mac") ? code : unicode[at]) >= 0xD9 && partner == 0)
                    << std::hex << code;
                break;
            }
        }
    }
}

TEST(SingleByteRoutines, AsciiRoutineKeepsAsciiAlone) { expect_map(com__fou_ascii8_tofrom_1byte, identity(0x80)); }

TEST(SingleByteRoutines, UnmappedAndFullAreToldTogether) {
    const std::vector<CS_BYTE> text = {'a', 0x80, 'b'};
    const Result result = call(com__fou_iso1_to_cp850, text, 3, 2);
    EXPECT_EQ(result, (Result{CS_XLATE_UNMAPPED | CS_XLATE_FULL_DEST, 2, 2, {'a', '?'}}));
}

TEST(SingleByteRoutines, NulIsACharacterAsAnyOther) {
    EXPECT_EQ(call(com__fou_iso1_to_mac, {'a', 0, 'b'}, 3, 3), (Result{0, 3, 3, {'a', 0, 'b'}}));
}

TEST(SingleByteRoutines, AValueMayBeConvertedInPlace) {
    CS_BYTE text[] = {'a', 0xE4, 0xFC, 'z'};
    int sused = 0, dused = 0;
    EXPECT_EQ(com__fou_iso1_to_cp850(text, 4, text, 4, &sused, &dused), 0);
    EXPECT_EQ(std::vector<CS_BYTE>(text, text + 4), (std::vector<CS_BYTE>{'a', 0x84, 0x81, 'z'}));
}

// ---- The routine that only counts ---------------------------------------------------------------------------

TEST(CaseSwap, OnlyCountsUpToTheFirstNulAndLeavesTheDestination) {
    for (int nul = 0; nul <= 12; ++nul)
        for (int slen = 0; slen <= 12; ++slen)
            for (int dlen = 0; dlen <= 12; ++dlen) {
                std::vector<CS_BYTE> text(12, 'x');
                if (nul < 12)
                    text[static_cast<std::size_t>(nul)] = 0;
                // The count may go on to dlen, behind the source's length.
                const int limit = dlen >= slen ? dlen : slen;
                std::vector<CS_BYTE> src(text.begin(), text.begin() + limit);
                std::vector<CS_BYTE> dest(static_cast<std::size_t>(dlen), GROUND);
                int sused = -5, dused = -5;
                EXPECT_EQ(com__fou_caseswap(src.data(), slen, dest.data(), dlen, &sused, &dused), dlen < slen ? 2 : 0);
                EXPECT_EQ(sused, std::min(nul, limit)) << nul << ' ' << slen << ' ' << dlen;
                EXPECT_EQ(dused, sused);
                EXPECT_EQ(dest, std::vector<CS_BYTE>(static_cast<std::size_t>(dlen), GROUND));
            }
}

// ---- The matrix ---------------------------------------------------------------------------------------------

TEST(Matrix, EveryCell) {
    constexpr CS_INT SETS[] = {0, 1, 2, 3, 4, 5, 140, 141, 142, 255};
    struct Cell {
        CS_INT type;
        CS_XLATE_FUNC function;
    };
    constexpr Cell copy = {1, nullptr}, none = {0, nullptr}, ascii = {2, com__fou_ascii8_tofrom_1byte},
                   swap = {3, com__fou_caseswap};
#define FULL(name) Cell{3, com__fou_##name}
    constexpr Cell CELLS[10][10] = {
        {copy, ascii, ascii, ascii, ascii, ascii, ascii, ascii, ascii, swap},
        {ascii, copy, FULL(iso1_to_cp850), FULL(iso1_to_cp437), FULL(iso1_to_roman8), FULL(iso1_to_mac), ascii, ascii,
         ascii, swap},
        {ascii, FULL(cp850_to_iso1), copy, FULL(cp850_to_cp437), FULL(cp850_to_roman8), FULL(cp850_to_mac), ascii,
         ascii, ascii, none},
        {ascii, FULL(cp437_to_iso1), FULL(cp437_to_cp850), copy, FULL(cp437_to_roman8), FULL(cp437_to_mac), ascii,
         ascii, ascii, none},
        {ascii, FULL(roman8_to_iso1), FULL(roman8_to_cp850), FULL(roman8_to_cp437), copy, FULL(roman8_to_mac), ascii,
         ascii, ascii, none},
        {ascii, FULL(mac_to_iso1), FULL(mac_to_cp850), FULL(mac_to_cp437), FULL(mac_to_roman8), copy, ascii, ascii,
         ascii, none},
        {ascii, ascii, ascii, ascii, ascii, ascii, copy, FULL(eucjis_to_sjis), FULL(eucjis_to_deckanji), none},
        {ascii, ascii, ascii, ascii, ascii, ascii, FULL(sjis_to_eucjis_deckanj), copy, FULL(sjis_to_eucjis_deckanj),
         none},
        {ascii, ascii, ascii, ascii, ascii, ascii, FULL(deckanji_to_eucjis), FULL(deckanji_to_sjis), copy, none},
        {ascii, ascii, none, none, none, none, none, none, none, copy},
    };
#undef FULL
    for (int from = 0; from < 10; ++from) {
        EXPECT_EQ(Com_fou_xlt_map[from].csid, SETS[from]);
        for (int to = 0; to < 10; ++to) {
            const CS_FOU_FUNCS &cell = Com_fou_xlt_map[from].fou_funcs[to];
            EXPECT_EQ(cell.csid, SETS[to]) << from << ' ' << to;
            EXPECT_EQ(cell.xlate_type, CELLS[from][to].type) << from << ' ' << to;
            EXPECT_EQ(cell.xlate_func, CELLS[from][to].function) << from << ' ' << to;
        }
    }
}

// ---- Broken contracts ---------------------------------------------------------------------------------------

TEST(SingleByteRoutinesDeathTest, NullPointersAreReported) {
    CS_BYTE text[4] = "abc";
    int used = 0;
    EXPECT_NULL_REPORT(com__fou_iso1_to_mac(nullptr, 3, text, 3, &used, &used), "com_fou");
    EXPECT_NULL_REPORT(com__fou_iso1_to_mac(text, 3, nullptr, 3, &used, &used), "com_fou");
    EXPECT_NULL_REPORT(com__fou_iso1_to_mac(text, 3, text, 3, nullptr, &used), "com_fou");
    EXPECT_NULL_REPORT(com__fou_iso1_to_mac(text, 3, text, 3, &used, nullptr), "com_fou");
    EXPECT_NULL_REPORT(com__fou_caseswap(nullptr, 3, text, 3, &used, &used), "com_fou");
    EXPECT_NULL_REPORT(com__fou_caseswap(text, 3, text, 3, nullptr, &used), "com_fou");
    EXPECT_NULL_REPORT(com__fou_caseswap(text, 3, text, 3, &used, nullptr), "com_fou");
}

TEST(SingleByteRoutines, NullPointersAreInvalidTextWhereAssertionsReturn) {
    const ReturningAssertions returning;
    CS_BYTE text[4] = "abc";
    int used = -5;
    EXPECT_EQ(com__fou_iso1_to_mac(nullptr, 3, text, 3, &used, &used), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_iso1_to_mac(text, 3, nullptr, 3, &used, &used), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_iso1_to_mac(text, 3, text, 3, nullptr, &used), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_iso1_to_mac(text, 3, text, 3, &used, nullptr), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_caseswap(nullptr, 3, text, 3, &used, &used), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_caseswap(text, 3, text, 3, nullptr, &used), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_caseswap(text, 3, text, 3, &used, nullptr), CS_XLATE_INVALID);
    EXPECT_EQ(used, -5);
    EXPECT_STREQ(reinterpret_cast<char *>(text), "abc");
    EXPECT_EQ(returning.count(), 7);
}

TEST(SingleByteRoutines, WithoutBytesNoBufferIsNeeded) {
    int sused = -5, dused = -5;
    EXPECT_EQ(com__fou_cp850_to_mac(nullptr, 0, nullptr, 0, &sused, &dused), 0);
    EXPECT_EQ(sused, 0);
    EXPECT_EQ(dused, 0);
}

} // namespace
