// Recoding in pieces against conversions in one go: the engine's own, and those of iconv.
#include "command/home.h"
#include "command/recoder.h"
#include "support/environment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <iconv.h>

namespace {

using namespace std::string_literals; // for texts with NULs
using client::Home;
using client::Losses;
using client::RecodedSet;
using client::Recoder;
using support::Variable;

using Pieces = std::vector<size_t>; // their lengths; the rest follows in one

class Recoding : public testing::Test {
protected:
    Recoding() : home_(*Home::open()) {}

    CsCharDesc *set(const std::string &name) {
        const auto found = home_->load_charset(name);
        EXPECT_TRUE(found) << found.sentence();
        return found ? *found : nullptr;
    }
    RecodedSet recoded_set(const std::string &name) {
        RecodedSet result;
        result.name = name;
        EXPECT_EQ(comn__get_unilib_cid(set(name)->char_attrib->cs_id, &result.cid), CS_SUCCEED);
        return result;
    }

    std::string recode(const std::string &from, const std::string &to, std::string_view text, const Pieces &pieces = {},
                       Losses *losses = nullptr) {
        const auto recoder = Recoder::open(recoded_set(from), recoded_set(to));
        EXPECT_TRUE(recoder) << recoder.sentence();
        std::string result;
        for (const size_t piece : pieces) {
            (*recoder)->recode(text.substr(0, piece), false, &result);
            text.remove_prefix(std::min(piece, text.size()));
        }
        (*recoder)->recode(text, false, &result);
        (*recoder)->recode({}, true, &result);
        if (losses != nullptr)
            *losses = (*recoder)->losses();
        return result;
    }

    // The engine's conversion of a value.
    CS_RETCODE convert(const std::string &from, const std::string &to, std::string text, std::string *result) {
        CsLocCache caches[2] = {};
        caches[0].locchardesc = set(from);
        caches[1].locchardesc = set(to);
        CS_LOCALE locales[2] = {};
        locales[0].ctypeptr = &caches[0];
        locales[1].ctypeptr = &caches[1];
        CS_DATAFMT formats[2] = {};
        formats[0].datatype = formats[1].datatype = CS_CHAR_TYPE;
        formats[0].locale = &locales[0];
        formats[1].locale = &locales[1];
        formats[0].maxlength = static_cast<CS_INT>(text.size());
        result->assign(8 * text.size() + 8, '\0');
        formats[1].maxlength = static_cast<CS_INT>(result->size());
        CS_INT length = 0;
        const CS_RETCODE status = comn_charset_convert(home_->context(), CS_LC_CTYPE, &formats[0], text.data(),
                                                       &formats[1], result->data(), &length);
        result->resize(static_cast<size_t>(length));
        return status;
    }

    // Cut in two at every offset, and in pieces of every length up to 5.
    void expect_same_in_pieces(const std::string &from, const std::string &to, const std::string &text) {
        Losses of_whole;
        const std::string whole = recode(from, to, text, {}, &of_whole);
        const auto expect_same = [&](const Pieces &pieces) {
            Losses losses;
            const std::string result = recode(from, to, text, pieces, &losses);
            ASSERT_EQ(result, whole) << from << " to " << to << " cut behind " << pieces[0];
            ASSERT_EQ(losses.missing, of_whole.missing);
            ASSERT_EQ(losses.malformed, of_whole.malformed);
            ASSERT_EQ(losses.first_malformed, of_whole.first_malformed);
            ASSERT_EQ(losses.cut_at, of_whole.cut_at);
        };
        for (size_t at = 0; at <= text.size(); ++at)
            ASSERT_NO_FATAL_FAILURE(expect_same({at}));
        for (size_t length = 1; length <= 5; ++length)
            ASSERT_NO_FATAL_FAILURE(expect_same(Pieces(text.size() / length, length)));
    }

    Variable home_directory_{"DALVEX", DLXCOMN_BUILD_DIR "/home"};
    std::shared_ptr<Home> home_;
};

// A text that the set has, with characters of every length that it has. NUL-free.
struct Sample {
    const char *set;
    const char *iconv; // what the C library calls the set, where both map these characters alike
    const char *text;  // UTF-8
};

constexpr Sample SAMPLES[] = {
    {"iso_1", "ISO-8859-1", "Grüße, añjo £1 ½"},
    {"cp850", "CP850", "Grüße ░▒▓ ñ"},
    {"cp1252", "CP1252", "“Grüße” – 5 €"},
    {"iso88592", "ISO-8859-2", "Zażółć gęślą jaźń, příliš žluťoučký"},
    {"iso88595", "ISO-8859-5", "Съешь ещё этих булок"},
    {"koi8", "KOI8-R", "Съешь ещё этих булок ═╬"},
    {"cp037", "IBM037", "Hello, World! (1 + 2) Grüße"},
    {"cp500", "IBM500", "EBCDIC [brackets] été"},
    {"tis620", "TIS-620", "ภาษาไทย abc"},
    {"cp1258", nullptr, "Tiê\xCC\x81ng Viê\xCC\xA3t, thâ\xCC\x89m"},
    {"sjis", "SHIFT_JIS", "日本語ﾃｷｽﾄ abc ソ表 終"},
    {"eucjis", "EUC-JP", "日本語ﾃｷｽﾄ abc 丂丄 終"},
    {"cp932ms", "CP932", "①日本語ﾃｷｽﾄ abc 髙 ソ表"},
    {"eucgb", "EUC-CN", "中文字符 abc 编码"},
    {"cp936", "GBK", "中文字符 abc 編碼 €"},
    {"gb18030", "GB18030", "中文 abc ÿ ḿ 𠀀𐐷 🂡 €"},
    {"big5", "BIG5", "中文 abc 功能 許"},
    {"big5hk", "BIG5-HKSCS", "中文 abc Ê̄ Ê̌ Ê ê̄x ê 𠝹"},
    {"euccns", "EUC-TW", "中文 abc 編碼 丂 乂"},
    {"eucksc", "EUC-KR", "한국어 abc 문자 漢字"},
    {"cp949", "CP949", "한국어 abc 똠방각하 펲시콜라"},
    {"cp930", nullptr, "日本語 ABC ｶﾅ 終 1日"},
    {"cp933", "IBM933", "한국어 ABC 문자 1자"},
    {"cp935", "IBM935", "中文 ABC 字符 1字"},
    {"cp937", "IBM937", "中文 ABC 字元 1字"},
    {"cp939", "IBM939", "日本語 abc 終 1日"},
    {"utf8", "UTF-8", "aé日𝄞 ﷽ 🂡z"},
    {"utf16", "UTF-16LE", "aé日𝄞 Ā 🂡z"},
    {"rcsu", nullptr, "aé日𝄞 Ā 🂡z Съешь ещё 日本語 한 \U000F0001\uE000\uE001 \u2022\u0149\u0149 ﷽"},
};

class RecodingOfSample : public Recoding, public testing::WithParamInterface<Sample> {};

INSTANTIATE_TEST_SUITE_P(Recode, RecodingOfSample, testing::ValuesIn(SAMPLES),
                         [](const auto &test) { return std::string(test.param.set); });

TEST_P(RecodingOfSample, PiecesMakeTheWholeInBothDirections) {
    const std::string text = GetParam().text;
    Losses losses;
    const std::string there = recode("utf8", GetParam().set, text, {}, &losses);
    EXPECT_FALSE(losses.any()) << losses.missing << " missing";
    EXPECT_EQ(recode(GetParam().set, "utf8", there, {}, &losses), text);
    EXPECT_FALSE(losses.any());
    expect_same_in_pieces("utf8", GetParam().set, text);
    expect_same_in_pieces(GetParam().set, "utf8", there);
    expect_same_in_pieces(GetParam().set, "utf16", there);
    expect_same_in_pieces(GetParam().set, "gb18030", there);
}

TEST_P(RecodingOfSample, IsWhatTheEngineMakesOfAValue) {
    std::string there, back;
    ASSERT_EQ(convert("utf8", GetParam().set, GetParam().text, &there), CS_SUCCEED);
    EXPECT_EQ(recode("utf8", GetParam().set, GetParam().text), there);
    for (const char *to : {"utf8", "utf16", "gb18030", "iso_1", "cp939", "sjis", "rcsu"}) {
        ASSERT_EQ(convert(GetParam().set, to, there, &back), CS_SUCCEED) << to;
        EXPECT_EQ(recode(GetParam().set, to, there), back) << to;
    }
}

std::string by_iconv(const char *from, const char *to, std::string text) {
    const iconv_t converter = iconv_open(to, from);
    EXPECT_NE(converter, reinterpret_cast<iconv_t>(-1)) << from << " to " << to;
    std::string result(8 * text.size() + 16, '\0');
    char *in = text.data(), *out = result.data();
    size_t in_left = text.size(), out_left = result.size();
    EXPECT_NE(iconv(converter, &in, &in_left, &out, &out_left), static_cast<size_t>(-1)) << from << " to " << to;
    iconv(converter, nullptr, nullptr, &out, &out_left); // back to the first state
    iconv_close(converter);
    result.resize(result.size() - out_left);
    return result;
}

// The C library has no such set as the others, or other characters in these places.
std::vector<Sample> samples_of_iconv() {
    std::vector<Sample> samples;
    std::copy_if(std::begin(SAMPLES), std::end(SAMPLES), std::back_inserter(samples),
                 [](const Sample &sample) { return sample.iconv != nullptr; });
    return samples;
}

class RecodingLikeIconv : public RecodingOfSample {};

INSTANTIATE_TEST_SUITE_P(Recode, RecodingLikeIconv, testing::ValuesIn(samples_of_iconv()),
                         [](const auto &test) { return std::string(test.param.set); });

TEST_P(RecodingLikeIconv, MakesTheSame) {
    const std::string there = by_iconv("UTF-8", GetParam().iconv, GetParam().text);
    EXPECT_EQ(recode("utf8", GetParam().set, GetParam().text), there);
    EXPECT_EQ(recode(GetParam().set, "utf8", there), GetParam().text);
}

// ---- States ----

TEST_F(Recoding, ShiftStateGoesOnOverPieces) {
    const std::string kanji = recode("utf8", "cp939", "日本語");
    ASSERT_EQ(kanji.size(), 8u);
    EXPECT_EQ(kanji.front(), '\x0E');
    EXPECT_EQ(kanji.back(), '\x0F');
    EXPECT_EQ(recode("utf8", "cp939", "日本語", {3, 3, 3}), kanji);
    EXPECT_EQ(recode("cp939", "utf8", kanji, {1, 1, 1, 1, 1, 1, 1}), "日本語");
    // A text that lacks its way back is whole: its characters are.
    Losses losses;
    EXPECT_EQ(recode("cp939", "utf8", kanji.substr(0, 7), {3}, &losses), "日本語");
    EXPECT_FALSE(losses.any());
}

TEST_F(Recoding, EbcdicBytesThatLookLikeAsciiAreConverted) {
    // A value of such bytes alone is copied by the engine; here a blank is a blank, however the text is cut.
    EXPECT_EQ(recode("cp037", "utf8", "\x40\x40\x4B"), "  .");
    EXPECT_EQ(recode("utf8", "cp037", "  ."), "\x40\x40\x4B");
    EXPECT_EQ(recode("cp037", "utf8", "\xC1\x40\x40\xC2", {1, 1, 1}), "A  B");
}

TEST_F(Recoding, CharactersThatJoinAreJoinedOverPieces) {
    const std::string joined = recode("utf8", "big5hk", "Ê̄");
    EXPECT_EQ(joined, "\x88\x62");
    for (size_t at = 0; at <= 4; ++at)
        EXPECT_EQ(recode("utf8", "big5hk", "Ê̄", {at}), joined) << at;
    EXPECT_EQ(recode("utf8", "big5hk", "Êx", {2}), "\x88\x66x");
    EXPECT_EQ(recode("utf8", "big5hk", "ÊÊ̄Ê̌ê̄", {2, 2, 2, 2, 2, 2, 2}), "\x88\x66\x88\x62\x88\x64\x88\xA3");
}

TEST_F(Recoding, NoCodeOfTwoCharactersBeginsWithAnAsciiOne) {
    for (const std::string &name : home_->first_names(CS_OID_CHARSET)) {
        UNICONV_CID cid = UNICONV_NONE;
        std::string as_text = name;
        if (name == "ucs2" || name == "rcsu" ||
            com_get_csid(reinterpret_cast<CS_BYTE *>(as_text.data()), &cid) != CS_SUCCEED)
            continue;
        for (const char *mark : {"\u0300", "\u0301", "\u0303", "\u0304", "\u0309", "\u030C", "\u0323", "\u02E5",
                                 "\u02E9", "\u3099", "\u309A"}) {
            const std::string alone = recode("utf8", name, mark);
            for (const char *letter : {"a", "E", "z", " "})
                ASSERT_EQ(recode("utf8", name, std::string(letter) + mark), recode("utf8", name, letter) + alone)
                    << name;
        }
    }
}

// ---- NUL ----

std::string with_nuls(const char *pattern) {
    std::string text = pattern;
    std::replace(text.begin(), text.end(), '#', '\0');
    return text;
}

TEST_F(Recoding, NulIsACharacter) {
    const std::string text = with_nuls("#Grüße##日本語#z#");
    for (const Sample &sample : SAMPLES) {
        const bool has_all =
            std::string_view("sjis gb18030 cp932ms eucjis utf8 utf16 rcsu").find(sample.set) != std::string_view::npos;
        const std::string one = has_all ? text : with_nuls("#ab##c#");
        const std::string there = recode("utf8", sample.set, one);
        Losses losses;
        const bool has_umlauts = std::string_view("sjis cp932ms").find(sample.set) == std::string_view::npos;
        if (has_umlauts) {
            EXPECT_EQ(recode(sample.set, "utf8", there, {}, &losses), one) << sample.set;
            EXPECT_FALSE(losses.any()) << sample.set;
        }
        expect_same_in_pieces("utf8", sample.set, one);
        expect_same_in_pieces(sample.set, "utf8", there);
    }
    EXPECT_EQ(recode("utf8", "utf16", "a\0b"s), "a\0\0\0b\0"s);
    EXPECT_EQ(recode("utf16", "utf8", "a\0\0\0b\0"s), "a\0b"s);
}

TEST_F(Recoding, NulEndsTheShiftedState) {
    // No code of two bytes holds a NUL, so the text is back in its first state there.
    const std::string there = recode("utf8", "cp939", "日\0本"s);
    EXPECT_EQ(there, "\x0E\x45\x62\x0F\0\x0E\x45\x66\x0F"s);
    EXPECT_EQ(recode("cp939", "utf8", there), "日\0本"s);
    // Without the way back the state goes on behind a NUL too.
    EXPECT_EQ(recode("cp939", "utf8", "\x0E\x45\x62\0\x45\x66\x0F"s), "日\0本"s);
}

TEST_F(Recoding, NulInsideACharacterEndsIt) {
    Losses losses;
    EXPECT_EQ(recode("utf8", "utf16", "\xE6\x97\0z"s, {}, &losses), "\xFD\xFF\0\0z\0"s);
    EXPECT_EQ(losses.malformed, 1u);
    EXPECT_EQ(losses.first_malformed, 0u);
    EXPECT_FALSE(losses.cut_at);
    EXPECT_EQ(recode("sjis", "utf8", "a\x93\0z"s, {}, &losses), "a\xEF\xBF\xBD\0z"s);
    EXPECT_EQ(losses.malformed, 1u);
    EXPECT_EQ(losses.first_malformed, 1u);
    EXPECT_EQ(recode("cp939", "utf8", "\x0E\x45\0\x45\x62"s, {}, &losses), "\xEF\xBF\xBD\0日"s);
    EXPECT_EQ(losses.malformed, 1u);
    EXPECT_EQ(recode("utf16", "utf8", "\x00\xD8\0\0z\0"s, {}, &losses), "\xEF\xBF\xBD\0z"s);
    EXPECT_EQ(losses.malformed, 1u);
    for (const auto &[set, text] :
         std::initializer_list<std::pair<const char *, std::string>>{{"utf8", "\xE6\x97\0z"s},
                                                                     {"sjis", "a\x93\0z"s},
                                                                     {"gb18030", "\x81\x30\0\x81\x30\x81\0\x81\0"s},
                                                                     {"eucjis", "\x8F\xA1\0\x8F\0"s},
                                                                     {"cp939", "\x0E\x45\0\x45\x62"s},
                                                                     {"utf16", "\x00\xD8\0\0z\0\0\xDC"s}})
        expect_same_in_pieces(set, "utf8", text);
}

// ---- What does not go smoothly ----

TEST_F(Recoding, CharactersWithoutAPartnerAreCounted) {
    Losses losses;
    EXPECT_EQ(recode("utf8", "iso_1", "a日b本c", {}, &losses), "a?b?c");
    EXPECT_EQ(losses.missing, 2u);
    EXPECT_EQ(losses.malformed, 0u);
    EXPECT_EQ(recode("utf8", "sjis", "한é𝄞", {}, &losses), "??????");  // wide in UTF-8
    EXPECT_EQ(recode("iso_1", "sjis", "\xE9\xDF", {}, &losses), "??"); // a byte each
    EXPECT_EQ(losses.missing, 2u);
    EXPECT_EQ(recode("utf8", "big5hk", "Ê̄ñ\xCC\x84", {}, &losses).size(), 6u);
    EXPECT_EQ(losses.missing, 2u) << "a mark that has no partner without its letter";
    expect_same_in_pieces("utf8", "iso_1", "a日b本c");
    expect_same_in_pieces("utf8", "sjis", "한é𝄞ﾃ");
    expect_same_in_pieces("utf8", "cp939", "한é𝄞ﾃ日𝄞");
}

TEST_F(Recoding, BytesThatAreNoCharacterAreCountedWithTheFirstOffset) {
    Losses losses;
    EXPECT_EQ(recode("utf8", "utf16", "xy\xFFz\xE6\x97z\xC0\x80", {}, &losses).size(), 2u * 8);
    EXPECT_EQ(losses.malformed, 4u);
    EXPECT_EQ(losses.first_malformed, 2u);
    EXPECT_EQ(recode("utf8", "iso_1", "xy\xFFzé\xFE日", {}, &losses), "xy?z\xE9??");
    EXPECT_EQ(losses.malformed, 2u);
    EXPECT_EQ(losses.missing, 1u) << "what was no character lacks no partner";
    EXPECT_EQ(recode("utf8", "utf16", "\xEF\xBF\xBD", {}, &losses), "\xFD\xFF");
    EXPECT_FALSE(losses.any()) << "U+FFFD is a character";
    EXPECT_EQ(recode("ascii_8", "utf8", "a\x80\x81", {}, &losses), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(losses.malformed, 2u);
    EXPECT_EQ(losses.first_malformed, 1u);
    for (const char *text : {"xy\xFFz\xE6\x97z\xC0\x80", "\xEF\xBF\xBD\xFF\xEF\xBF\xBD", "\xF0\x90\x80z\xED\xA0\x80"})
        for (const char *to : {"utf16", "iso_1", "sjis", "gb18030"})
            expect_same_in_pieces("utf8", to, text);
}

TEST_F(Recoding, TextThatEndsInsideACharacterIsTold) {
    const struct {
        const char *set;
        std::string text;
        std::uint64_t at;
    } cases[] = {
        {"utf8", "ab\xE6\x97", 2},  {"utf8", "\xF0", 0},           {"utf8", "日\xF0\x9D\x84", 3},
        {"sjis", "a\x93", 1},       {"eucjis", "a\x8F\xA2", 1},    {"gb18030", "a\x81\x30\x81", 1},
        {"gb18030", "\x81\x30", 0}, {"euccns", "\x8E\xA2\xA1", 0}, {"cp939", "\x0E\x45\x62\x45", 3},
        {"utf16", "a\0b"s, 2},      {"utf16", "a\0\x34\xD8"s, 2},  {"utf16", "a\0\x34\xD8\x1E"s, 2},
        {"rcsu", "a\x0E\x4E", 1},   {"rcsu", "ab\x0F\xD8\x34", 3}, {"rcsu", "ab\x01", 2},
    };
    for (const auto &[set, text, at] : cases) {
        Losses losses;
        const char *const to = set == "utf16"s ? "utf8" : "utf16";
        const std::string result = recode(set, to, text, {}, &losses);
        ASSERT_TRUE(losses.cut_at) << set;
        EXPECT_EQ(*losses.cut_at, at) << set;
        EXPECT_EQ(losses.malformed, 0u) << set;
        expect_same_in_pieces(set, to, text);
        EXPECT_EQ(result, recode(set, to, text.substr(0, at), {}, &losses)) << set;
        EXPECT_FALSE(losses.any()) << set;
    }
}

TEST_F(Recoding, FirstByteOfACharacterShowsThatTheOneBeforeIsNone) {
    for (const auto &[set, text] : {std::pair("utf8", "\xE6\xE6"), std::pair("cp930", "\x0E\xFC\x3E")}) {
        Losses losses;
        EXPECT_EQ(recode(set, "utf16", text, {}, &losses), "\xFD\xFF") << set;
        EXPECT_EQ(losses.malformed, 1u) << set;
        EXPECT_EQ(losses.cut_at, std::string_view(text).size() - 1) << set;
        expect_same_in_pieces(set, "utf16", text);
    }
}

TEST_F(Recoding, TextThatStaysInItsSetIsCopied) {
    Losses losses;
    EXPECT_EQ(recode("utf8", "utf8", "a\xFF\0\xE6"s, {2}, &losses), "a\xFF\0\xE6"s);
    EXPECT_FALSE(losses.any());
}

TEST_F(Recoding, NothingBecomesNothing) {
    for (const Sample &sample : SAMPLES) {
        EXPECT_EQ(recode(sample.set, "utf8", ""), "");
        EXPECT_EQ(recode("utf8", sample.set, ""), "");
    }
}

TEST_F(Recoding, CompressedTextMayUseEveryTag) {
    // Windows that are defined, changed, quoted from and extended; units with tags among them; a pair in two quotes.
    const std::string text = "\x12\x9C\x18\xFA\xFF\x1F\x08\x80\x03\xE4\x0B\x61\xC4\x80\x81\x15\xC0"
                             "\x0E\xD8\x34\x0E\xDD\x1E\x0F\x65\xE5\xF0\xE0\x01\xE8\x08\x80\x0F\xF1\x04\x02"
                             "\x81\x0F\x4E\x2D\xE2\xAA"s;
    Losses losses;
    const std::string whole = recode("rcsu", "utf8", text, {}, &losses);
    EXPECT_FALSE(losses.any());
    std::string engine;
    ASSERT_EQ(convert("rcsu", "utf8", text, &engine), CS_SUCCEED);
    EXPECT_EQ(whole, engine);
    expect_same_in_pieces("rcsu", "utf8", text);
}

TEST_F(Recoding, CompressedTextMayHoldZerosInsideCharacters) {
    const std::string text = "\x0F\x4E\x00\x00\x61\xE0\x02\x00\x0B\x00\x00\x80\x0E\x01\x00z"s;
    EXPECT_EQ(recode("rcsu", "utf8", text), "一a\u0080\U00010000Āz");
    expect_same_in_pieces("rcsu", "utf8", text);
    // U+0000 itself in each of its forms.
    const std::string nuls = "a\0b\x01\0c\x0E\0\0d\x0F\0\0\0e\xF0\0\0\0f"s;
    EXPECT_EQ(recode("rcsu", "utf8", nuls), "a\0b\0c\0d\0e\0f"s);
    expect_same_in_pieces("rcsu", "utf8", nuls);
    // Half a pair in front of U+0000, and behind U+FFFD, which is a character.
    Losses losses;
    EXPECT_EQ(recode("rcsu", "utf8", "\x0E\xFF\xFD\x0E\xD8\x34\0z"s, {}, &losses), "\xEF\xBF\xBD\xEF\xBF\xBD\0z"s);
    EXPECT_EQ(losses.malformed, 1u);
    EXPECT_EQ(losses.first_malformed, 3u);
    // A definition that lacks its byte.
    EXPECT_EQ(recode("rcsu", "utf8", "a\x18\0b"s, {}, &losses), "a\xEF\xBF\xBD\0b"s);
    EXPECT_EQ(losses.malformed, 1u);
    EXPECT_EQ(losses.first_malformed, 1u);
}

// ---- Every set of the home ----

std::string random_bytes(std::mt19937_64 &random, size_t length) {
    std::string text(length, '\0');
    for (char &byte : text)
        byte = static_cast<char>(random() % 256);
    return text;
}

std::string random_utf8(std::mt19937_64 &random, size_t length) {
    std::u16string units;
    for (size_t i = 0; i < length; ++i) {
        static constexpr std::pair<unsigned, unsigned> BLOCKS[] = {
            {0x01, 0x7F},   {0xA0, 0xFF},     {0x100, 0x17F},   {0x391, 0x3C9},   {0x410, 0x44F},   {0x5D0, 0x5EA},
            {0xE01, 0xE30}, {0x2010, 0x2040}, {0x3041, 0x30FE}, {0x4E00, 0x9FA5}, {0xAC00, 0xD7A3}, {0xFF61, 0xFF9F}};
        const auto &[low, high] = BLOCKS[random() % std::size(BLOCKS)];
        units.push_back(static_cast<char16_t>(low + random() % (high - low + 1)));
    }
    std::string text;
    for (const unsigned unit : units)
        if (unit < 0x80)
            text += static_cast<char>(unit);
        else if (unit < 0x800)
            text += {static_cast<char>(0xC0 | unit >> 6), static_cast<char>(0x80 | (unit & 0x3F))};
        else
            text += {static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 0x3F)),
                     static_cast<char>(0x80 | (unit & 0x3F))};
    return text;
}

Pieces random_pieces(std::mt19937_64 &random, size_t length) {
    Pieces pieces;
    for (size_t sum = 0; sum < length; sum += pieces.back())
        pieces.push_back(random() % 12);
    return pieces;
}

TEST_F(Recoding, EverySetInRandomPiecesMakesTheWhole) {
    std::mt19937_64 random(20261121);
    int sets = 0, compared = 0;
    for (const std::string &name : home_->first_names(CS_OID_CHARSET)) {
        UNICONV_CID cid = UNICONV_NONE;
        std::string as_text = name;
        if (name == "ucs2" || com_get_csid(reinterpret_cast<CS_BYTE *>(as_text.data()), &cid) != CS_SUCCEED)
            continue;
        ++sets;
        for (int round = 0; round < 12; ++round) {
            const std::string text = random_utf8(random, 40);
            const std::string bytes = round % 2 == 0 ? random_bytes(random, 60) : recode("utf8", name, text);
            Losses whole, pieced;
            ASSERT_EQ(recode("utf8", name, text, random_pieces(random, text.size()), &pieced),
                      recode("utf8", name, text, {}, &whole))
                << name;
            ASSERT_EQ(pieced.missing, whole.missing) << name;
            const std::string decoded = recode(name, "utf8", bytes, {}, &whole);
            ASSERT_EQ(recode(name, "utf8", bytes, random_pieces(random, bytes.size()), &pieced), decoded) << name;
            ASSERT_EQ(pieced.malformed, whole.malformed) << name;
            ASSERT_EQ(pieced.first_malformed, whole.first_malformed) << name;
            ASSERT_EQ(pieced.cut_at, whole.cut_at) << name;
            // The engine's word, where it has one for the whole of the text.
            std::string engine;
            ASSERT_EQ(convert("utf8", name, text, &engine), CS_SUCCEED) << name;
            ASSERT_EQ(recode("utf8", name, text), engine) << name;
            const bool is_value = bytes.find('\0') == std::string::npos && !whole.cut_at &&
                                  std::any_of(bytes.begin(), bytes.end(), [](char byte) { return byte < 0; });
            if (is_value && name != "utf8") {
                ASSERT_EQ(convert(name, "utf8", bytes, &engine), CS_SUCCEED) << name;
                ASSERT_EQ(decoded, engine) << name;
                ++compared;
            }
        }
    }
    EXPECT_GE(sets, 115);
    EXPECT_GE(compared, 600);
}

// Short texts that are mostly wrong, of the bytes that decide.
TEST_F(Recoding, DamagedTextInPiecesMakesTheWhole) {
    std::mt19937_64 random(20261123);
    const std::pair<const char *, std::string> sets[] = {
        {"utf8", "\xE6\x97\xA5\xF0\x9D\x84\x9E\xEF\xBF\xBD\xC3\xED\xA0\0az"s},
        {"gb18030", "\x81\x30\x81\x30\xFE\x39\xA1\xA1\x84\x31\xA4\x37\xFF\0a0"s},
        {"eucjis", "\x8E\x8F\xA1\xB0\xF4\xFE\x80\xFF\0a~"s},
        {"sjis", "\x81\x93\xFA\x5C\x7E\xFC\xA1\xDF\xFD\x40\0a"s},
        {"euccns", "\x8E\xA1\xA2\xA3\xB0\xFE\xFF\x80\0a"s},
        {"big5hk", "\x88\x62\x64\x66\xA3\x87\xFE\x40\x30\0a"s},
        {"cp930", "\x0E\x0F\x0E\x45\x62\x3E\xFC\x21\x40\0\xC1\xFF"s},
        {"cp937", "\x0E\x0F\x0E\x4C\x41\x3F\xFE\x06\x40\0\xC1\x81"s},
        {"utf16", "\x00\xD8\x34\xDC\x1E\xDD\xDF\x61"s},
        {"rcsu", "\x01\x08\x0B\x0C\x0E\x0F\x10\x17\x18\x1F\xE0\xE8\xF0\xF1\xF2\xD8\xDC\0\0\xF9\x61\xA8\x80"s},
    };
    for (const auto &[name, bytes] : sets) {
        const RecodedSet from = recoded_set(name), to = recoded_set(name == "utf16"s ? "utf8" : "utf16");
        for (int round = 0; round < 3000; ++round) {
            std::string text(1 + random() % 9, '\0');
            for (char &byte : text)
                byte = bytes[random() % bytes.size()];
            const auto make = [&](size_t cut, Losses *losses) {
                const auto recoder = Recoder::open(from, to);
                std::string result;
                (*recoder)->recode(std::string_view(text).substr(0, cut), false, &result);
                (*recoder)->recode(std::string_view(text).substr(cut), true, &result);
                *losses = (*recoder)->losses();
                return result;
            };
            Losses whole, pieced;
            const std::string expected = make(0, &whole);
            for (size_t cut = 1; cut <= text.size(); ++cut) {
                ASSERT_EQ(make(cut, &pieced), expected) << name << " " << round << " " << cut;
                ASSERT_EQ(pieced.malformed, whole.malformed) << name << " " << round << " " << cut;
                ASSERT_EQ(pieced.first_malformed, whole.first_malformed) << name << " " << round << " " << cut;
                ASSERT_EQ(pieced.cut_at, whole.cut_at) << name << " " << round << " " << cut;
            }
        }
    }
}

TEST_F(Recoding, RandomTextIsWhatIconvMakes) {
    std::mt19937_64 random(20261122);
    const std::pair<const char *, const char *> sets[] = {{"gb18030", "GB18030"}, {"utf16", "UTF-16LE"}};
    for (const auto &[set, name] : sets)
        for (int round = 0; round < 2000; ++round) {
            const std::string text = random_utf8(random, 30);
            const std::string there = by_iconv("UTF-8", name, text);
            ASSERT_EQ(recode("utf8", set, text, random_pieces(random, text.size())), there);
            ASSERT_EQ(recode(set, "utf8", there, random_pieces(random, there.size())), text);
        }
}

// ---- Sets that cannot be opened ----

TEST_F(Recoding, SetWithoutATableIsRefused) {
    const RecodedSet utf8 = recoded_set("utf8");
    const RecodedSet none = {"decmcs", UNICONV_NONE};
    EXPECT_EQ(Recoder::open(none, utf8).sentence(), "the Unicode library does not know decmcs");
    EXPECT_EQ(Recoder::open(utf8, none).code(), client::MISUSED);
    const RecodedSet absent = {"absent", 8000};
    EXPECT_EQ(Recoder::open(utf8, absent).sentence(), "the table of absent (charsets/unicode/8000.uct) cannot be read");
    EXPECT_EQ(Recoder::open(absent, utf8).code(), client::FAILED);
}

} // namespace
