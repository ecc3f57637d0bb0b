// The engine towards UTF-8 and from it, its persistent handle, the copy of ASCII, and how far text can grow.
#include "charset/engine_fixture.h"

#include "support/cases.h"
#include "support/null_calls.h"
#include "support/temp_directory.h"
#include "support/unicode_text.h"

#include <dlxunic/unic.h>

#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace {

using namespace engine;
using support::ReturningAssertions;

using EngineUtf8 = EngineTest;
using EngineUtf8DeathTest = EngineTest;

void expect_failure(const Result &result) {
    EXPECT_EQ(result.status, CS_FAIL);
    EXPECT_EQ(result.length, 0);
}

// ---- To UTF-8 -------------------------------------------------------------------------------------------------------

TEST_F(EngineUtf8, ToItselfIsACopyOfAnyBytesAndACutIsTold) {
    const std::string bytes("\xFF\0\xC3", 3);
    expect_text(to_utf8(cache("utf8"), bytes, 3), CS_SUCCEED, bytes);
    EXPECT_TRUE(to_utf8(cache("utf8"), bytes, 5).untouched_from(3));
    expect_text(to_utf8(cache("utf8"), "\xC3\xA4\xC3\xB6", 3), CS_ETRUNCATED, "\xC3\xA4\xC3");
    expect_text(to_utf8(cache("utf8"), "a", 0), CS_ETRUNCATED, "");
    expect_text(to_utf8(cache("utf8"), "", 0), CS_SUCCEED, "");
}

TEST_F(EngineUtf8, ToItIsTheSetOfTheGlobalsNotAnyThatBearsTheNumber) {
    BareSet other(190); // the number of utf8
    expect_text(to_utf8(&other.locale.cache, "\xC3\xA4", 2), CS_SUCCEED, "\xC3\xA4");
    // It goes through 16-bit text, where a fault is replaced.
    expect_text(to_utf8(&other.locale.cache, "\xFF", 3), CS_SUCCEED, "\xEF\xBF\xBD");
}

TEST_F(EngineUtf8, ToItAUserFunctionGetsADescriptorOfItsOwn) {
    install("iso_1", "utf8", note_call);
    user_calls.clear();
    CS_DATAFMT srcfmt = text_format(locale("iso_1"), 1);
    char src[] = "a", dest[8] = "~~~~~~~";
    CS_INT length = NO_LENGTH;
    EXPECT_EQ(comn__convt_to_utf8(&context_, 1, &srcfmt, cache("iso_1"), src, dest, 6, &length), USER_STATUS);
    ASSERT_EQ(user_calls.size(), 1u);
    const UserCall &call = user_calls.front();
    EXPECT_EQ(call.context, &context_);
    EXPECT_EQ(call.srcfmt, &srcfmt);
    EXPECT_EQ(call.src, src);
    EXPECT_EQ(call.dest, dest);
    EXPECT_EQ(call.destlen, &length);
    CS_DATAFMT told = {};
    told.maxlength = 6;
    EXPECT_EQ(std::memcmp(&call.destination, &told, sizeof told), 0) << "datatype 0, the room, and zeros";
    EXPECT_STREQ(dest, "user~~~");
    EXPECT_EQ(length, USER_LENGTH);
}

TEST_F(EngineUtf8, ToItAsciiIsCopied) {
    const std::string text("a\0\x7F", 3);
    BareSet unknown(99);
    expect_text(to_utf8(&unknown.locale.cache, text, 3), CS_SUCCEED, text);
    // A full stop there: no look at the set is taken.
    expect_text(to_utf8(cache("cp037"), "\x4B", 3), CS_SUCCEED, "\x4B");
    expect_failure(to_utf8(&unknown.locale.cache, text, 2));
}

TEST_F(EngineUtf8, ToItFromEverySet) {
    expect_text(to_utf8(cache("iso_1"), "Gr\xFC\xDF!", 16), CS_SUCCEED, "Gr\xC3\xBC\xC3\x9F!");
    expect_text(to_utf8(cache("sjis"), "\x93\xFA\x96\x7B", 16), CS_SUCCEED, "\xE6\x97\xA5\xE6\x9C\xAC");
    expect_text(to_utf8(cache("gb18030"), "\x94\x39\xFC\x36", 16), CS_SUCCEED, "\xF0\x9F\x98\x80");
    expect_text(to_utf8(cache("cp939"), "\x0E\x45\x62\x45\x66\x0F\xE9", 16), CS_SUCCEED, "\xE6\x97\xA5\xE6\x9C\xACZ");
    expect_text(to_utf8(cache("utf16"), std::string("\xE4\0\x3D\xD8\x00\xDE", 6), 16), CS_SUCCEED,
                "\xC3\xA4\xF0\x9F\x98\x80");
    expect_text(to_utf8(cache("iso88593"), "a\xA5", 16), CS_SUCCEED, "a\xEF\xBF\xBD");
    expect_text(to_utf8(cache("utf16"), std::string("\xE4\0\x00\xDC", 4), 16), CS_SUCCEED, "\xC3\xA4\xEF\xBF\xBD");
}

TEST_F(EngineUtf8, ToItACutKeepsTheWholeRoom) {
    // What stands behind the last whole character is NUL.
    expect_text(to_utf8(cache("iso_1"), "\xE4\xF6\xFC", 6), CS_SUCCEED, "\xC3\xA4\xC3\xB6\xC3\xBC");
    expect_text(to_utf8(cache("iso_1"), "\xE4\xF6\xFC", 5), CS_ETRUNCATED, std::string("\xC3\xA4\xC3\xB6\0", 5));
    expect_text(to_utf8(cache("iso_1"), "\xE4\xF6\xFC", 1), CS_ETRUNCATED, std::string("\0", 1));
    expect_text(to_utf8(cache("iso_1"), "\xE4\xF6\xFC", 0), CS_ETRUNCATED, "");
    expect_text(to_utf8(cache("gb18030"), "a\x94\x39\xFC\x36", 4), CS_ETRUNCATED, std::string("a\0\0\0", 4));
    expect_text(to_utf8(cache("iso_1"), "abc", 2), CS_ETRUNCATED, "ab");
}

TEST_F(EngineUtf8, ToItASourceCutInsideACharacterFails) {
    for (const std::string text : {"\x82\xA0\x82\xA0\x82", "abc\x82", "\x82"})
        expect_failure(to_utf8(cache("sjis"), text, 32));
    expect_failure(to_utf8(cache("utf16"), std::string("\xE4\0\x3D\xD8", 4), 32));
}

TEST_F(EngineUtf8, ToItANulEndsTheText) {
    expect_text(to_utf8(cache("iso_1"), std::string("\xE4\0\xF6", 3), 8), CS_SUCCEED, "\xC3\xA4");
    expect_text(to_utf8(cache("utf16"), std::string("\xE4\0\0\0\xF6\0", 6), 8), CS_SUCCEED, "\xC3\xA4");
}

TEST_F(EngineUtf8, ToItNothingBehindTheResultIsWritten) {
    EXPECT_TRUE(to_utf8(cache("iso_1"), "\xE4", 8).untouched_from(2));
    EXPECT_TRUE(to_utf8(cache("iso_1"), "abc", 8).untouched_from(3));
}

TEST_F(EngineUtf8, TheMatchModePlaysNoPart) {
    for (const CS_INT mode : {-1, 0, 1, 2, 77}) {
        expect_text(to_utf8(cache("iso_1"), "\xE4", 8, mode), CS_SUCCEED, "\xC3\xA4");
        expect_text(from_utf8("\xC3\xA4", cache("cp850"), 8, mode), CS_SUCCEED, "\x84");
    }
}

TEST_F(EngineUtf8DeathTest, ToItLengthsBelowZeroAreABrokenContract) {
    CS_DATAFMT srcfmt = text_format(nullptr, 1);
    char src[] = "a", dest[4] = "~~~";
    CS_INT length = NO_LENGTH;
    const auto run = [&](CS_INT maxlength, CS_INT destlen) {
        srcfmt.maxlength = maxlength;
        return comn__convt_to_utf8(&context_, 0, &srcfmt, cache("iso_1"), src, dest, destlen, &length);
    };
    EXPECT_BOMB(run(-1, 3), "com_ceng");
    EXPECT_BOMB(run(1, -1), "com_ceng");
    const ReturningAssertions returning;
    EXPECT_EQ(run(-1, 3), CS_FAIL);
    EXPECT_EQ(run(1, -1), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
    EXPECT_STREQ(dest, "~~~");
}

// ---- From UTF-8 -----------------------------------------------------------------------------------------------------

TEST_F(EngineUtf8, FromItToItselfIsACopyAndACutIsTold) {
    const std::string bytes("\xFF\0\xC3", 3);
    expect_text(from_utf8(bytes, cache("utf8"), 3), CS_SUCCEED, bytes);
    expect_text(from_utf8("\xC3\xA4", cache("utf8"), 1), CS_ETRUNCATED, "\xC3");
    expect_text(from_utf8("", cache("utf8"), 0), CS_SUCCEED, "");
}

TEST_F(EngineUtf8, FromItAUserFunctionGetsADescriptorOfItsOwn) {
    install("utf8", "iso_1", note_call);
    user_calls.clear();
    CS_DATAFMT destfmt = text_format(locale("iso_1"), 6);
    CS_BYTE src[] = "a";
    char dest[8] = "~~~~~~~";
    CS_INT length = NO_LENGTH;
    EXPECT_EQ(comn__convt_from_utf8(&context_, 1, src, 1, &destfmt, cache("iso_1"), dest, &length), USER_STATUS);
    ASSERT_EQ(user_calls.size(), 1u);
    const UserCall &call = user_calls.front();
    EXPECT_EQ(call.context, &context_);
    EXPECT_EQ(call.src, src);
    EXPECT_EQ(call.destfmt, &destfmt);
    EXPECT_EQ(call.dest, dest);
    EXPECT_EQ(call.destlen, &length);
    CS_DATAFMT told = {};
    told.maxlength = 1;
    EXPECT_EQ(std::memcmp(&call.source, &told, sizeof told), 0) << "datatype 0, the length, and zeros";
    EXPECT_EQ(length, USER_LENGTH);
}

TEST_F(EngineUtf8, FromItThereIsNoAsciiStep) {
    expect_text(from_utf8("ABC", cache("cp037"), 8), CS_SUCCEED, "\xC1\xC2\xC3");
    expect_text(from_utf8("AB", cache("utf16"), 8), CS_SUCCEED, std::string("A\0B\0", 4));
    BareSet unknown(99);
    expect_failure(from_utf8("abc", &unknown.locale.cache, 8));
    expect_text(from_utf8(std::string("a\0b", 3), cache("iso_1"), 8), CS_SUCCEED, "a"); // a NUL ends ASCII too
}

TEST_F(EngineUtf8, FromItToEverySet) {
    expect_text(from_utf8("Gr\xC3\xBC\xC3\x9F!", cache("iso_1"), 16), CS_SUCCEED, "Gr\xFC\xDF!");
    expect_text(from_utf8("\xE6\x97\xA5\xE6\x9C\xAC", cache("sjis"), 16), CS_SUCCEED, "\x93\xFA\x96\x7B");
    expect_text(from_utf8("\xF0\x9F\x98\x80", cache("gb18030"), 16), CS_SUCCEED, "\x94\x39\xFC\x36");
    expect_text(from_utf8("\xE6\x97\xA5\xE6\x9C\xACZ", cache("cp939"), 16), CS_SUCCEED, "\x0E\x45\x62\x45\x66\x0F\xE9");
    // Half of it changes of state, and the room is just enough.
    expect_text(from_utf8("\xE6\x97\xA5", cache("cp939"), 4), CS_SUCCEED, "\x0E\x45\x62\x0F");
    expect_text(from_utf8("", cache("sjis"), 0), CS_SUCCEED, "");
}

TEST_F(EngineUtf8, FromItCharactersWithoutAPartnerBecomeQuestionMarks) {
    expect_text(from_utf8("a\xE2\x82\xACz", cache("iso_1"), 8), CS_SUCCEED, "a?z");
    expect_text(from_utf8("a\xC5\xBDz", cache("sjis"), 8), CS_SUCCEED, "a??z");
    expect_text(from_utf8("\xF0\x9F\x98\x80", cache("big5"), 8), CS_SUCCEED, "??");
}

TEST_F(EngineUtf8, FromItACutKeepsTheWholeRoom) {
    expect_text(from_utf8("\xC3\xA4\xC3\xB6\xC3\xBC", cache("cp850"), 2), CS_ETRUNCATED, "\x84\x94");
    expect_text(from_utf8("\xC3\xA4", cache("cp850"), 0), CS_ETRUNCATED, "");
    expect_text(from_utf8("a\xE3\x81\x82\xE3\x81\x84", cache("sjis"), 4), CS_ETRUNCATED, std::string("a\x82\xA0\0", 4));
    expect_text(from_utf8("abc", cache("cp850"), 2), CS_ETRUNCATED, "ab");
}

TEST_F(EngineUtf8, FromItWhatIsNoUtf8Fails) {
    for (const std::string text : {"a\xFF", "\xC3", "abc\xE3\x81", "\xC0\x80", "\xED\xA0\x80", "\x80"})
        for (const char *set : {"iso_1", "sjis", "cp939", "utf16", "ascii_8"}) {
            SCOPED_TRACE(set);
            expect_failure(from_utf8(text, cache(set), 16));
        }
    // A fault behind a NUL is not seen.
    expect_text(from_utf8(std::string("a\0\xFF", 3), cache("iso_1"), 8), CS_SUCCEED, "a");
}

TEST_F(EngineUtf8, FromItLengthsHaveLimits) {
    CS_BYTE src[] = "abcd";
    char dest[4] = "~~~";
    const auto run = [&](CS_INT srclen, const char *set) {
        CS_DATAFMT destfmt = text_format(nullptr, 3);
        CS_INT length = NO_LENGTH;
        const CS_RETCODE status = comn__convt_from_utf8(&context_, 0, src, srclen, &destfmt, cache(set), dest, &length);
        return std::pair(status, length);
    };
    using Told = std::pair<CS_RETCODE, CS_INT>;
    for (const CS_INT srclen : {-1, INT32_MIN, 0x3FFFFFFF, INT32_MAX}) {
        EXPECT_EQ(run(srclen, "iso_1"), Told(CS_FAIL, 0)) << srclen;
        EXPECT_STREQ(dest, "~~~");
    }
    // A copy reads no more than it stores.
    EXPECT_EQ(run(0x3FFFFFFF, "utf8"), Told(CS_ETRUNCATED, 3));
    EXPECT_STREQ(dest, "abc");
}

TEST_F(EngineUtf8, FromItNothingBehindTheResultIsWritten) {
    EXPECT_TRUE(from_utf8("\xC3\xA4", cache("cp850"), 8).untouched_from(1));
    EXPECT_TRUE(from_utf8("abc", cache("sjis"), 8).untouched_from(3));
    EXPECT_TRUE(from_utf8("\xE6\x97\xA5", cache("cp939"), 8).untouched_from(4));
}

TEST_F(EngineUtf8, FromItInPlace) {
    std::string text = "a\xC3\xA4\xE2\x82\xAC";
    CS_DATAFMT destfmt = text_format(nullptr, 6);
    CS_INT length = NO_LENGTH;
    EXPECT_EQ(comn__convt_from_utf8(&context_, 0, reinterpret_cast<CS_BYTE *>(text.data()), 6, &destfmt,
                                    cache("cp1252"), text.data(), &length),
              CS_SUCCEED);
    EXPECT_EQ(text.substr(0, static_cast<std::size_t>(length)), "a\xE4\x80");
}

// Sets that nothing else here opens.
TEST_F(EngineUtf8, FromItTheTablesAreFoundWhateverTheNameOfTheHome) {
    BareSet cp278(45);
    const support::TempDirectory directory;
    const std::string home = directory.path_of("h\xC3\xB6me \xE4!");
    std::filesystem::create_directories(home + "/charsets");
    std::filesystem::create_symlink(DLXCOMN_BUILD_DIR "/home/charsets/unicode", home + "/charsets/unicode");
    const support::Variable variable("DALVEX", home);
    expect_text(from_utf8("A\xC3\xA9", &cp278.locale.cache, 8), CS_SUCCEED, "\xC1\x79");
}

TEST_F(EngineUtf8, FromItAPathThatIsTooLongFails) {
    BareSet cp280(32);
    const support::Variable variable("DALVEX", "/" + std::string(1100, 'x'));
    expect_failure(from_utf8("A", &cp280.locale.cache, 8));
}

TEST_F(EngineUtf8DeathTest, FromItARoomBelowZeroIsABrokenContract) {
    CS_BYTE src[] = "a";
    char dest[4] = "~~~";
    const auto run = [&] {
        CS_DATAFMT destfmt = text_format(nullptr, static_cast<std::size_t>(-1));
        CS_INT length = NO_LENGTH;
        return comn__convt_from_utf8(&context_, 0, src, 1, &destfmt, cache("iso_1"), dest, &length);
    };
    EXPECT_BOMB(run(), "com_ceng");
    const ReturningAssertions returning;
    EXPECT_EQ(run(), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_STREQ(dest, "~~~");
}

TEST_F(EngineUtf8, ToItAndFromItAVariableCharacterIsPlainText) {
    CS_DATAFMT format = text_format(nullptr, 3, CS_VARCHAR_TYPE);
    char src[] = "\xE4\xF6\xFC", dest[] = "~~~~~~~~";
    CS_INT length = NO_LENGTH;
    EXPECT_EQ(comn__convt_to_utf8(&context_, 0, &format, cache("iso_1"), src, dest, 8, &length), CS_SUCCEED);
    EXPECT_STREQ(dest, "\xC3\xA4\xC3\xB6\xC3\xBC~~");
    EXPECT_EQ(length, 6);
    CS_BYTE utf8[] = "\xC3\xA4\xC3\xB6\xC3\xBC";
    char back[] = "~~~~~~~~";
    EXPECT_EQ(comn__convt_from_utf8(&context_, 0, utf8, 6, &format, cache("cp850"), back, &length), CS_SUCCEED);
    EXPECT_STREQ(back, "\x84\x94\x81~~~~~");
    EXPECT_EQ(length, 3);
}

// ---- The persistent handle ------------------------------------------------------------------------------------------

class EnginePersistentHandle : public EngineTest {
protected:
    explicit EnginePersistentHandle(const char *set = "cp850") {
        UNICONV_CID cid = 0;
        com_get_csid(reinterpret_cast<CS_BYTE *>(const_cast<char *>(set)), &cid);
        EXPECT_EQ(uniconv_HandleGet(cid, &handle_), UNI_OK);
        comn_set_persistent_handle(handle_);
    }
    ~EnginePersistentHandle() override {
        comn_set_persistent_handle(nullptr);
        uniconv_HandleFree(handle_);
    }

    CVTH handle_ = nullptr;
};

TEST_F(EnginePersistentHandle, IsWhatWasSet) {
    EXPECT_EQ(comn__get_persistent_handle(), handle_);
    EXPECT_EQ(comn__persistent_handle, handle_);
    comn_set_persistent_handle(nullptr);
    EXPECT_EQ(comn__get_persistent_handle(), nullptr);
}

TEST_F(EnginePersistentHandle, IsUsedWhateverTheSetIs) {
    // E4 of cp850 is an o with a tilde.
    expect_text(to_utf8(cache("iso_1"), "\xE4", 8), CS_SUCCEED, "\xC3\xB5");
    expect_text(to_utf8(cache("sjis"), "\x93\xFA", 8), CS_SUCCEED, "\xC3\xB4\xC2\xB7");
    expect_text(from_utf8("\xC3\xB5", cache("iso_1"), 8), CS_SUCCEED, "\xE4");
    expect_text(from_utf8("ABC", cache("cp037"), 8), CS_SUCCEED, "ABC");
    // Even for a set that has no tables at all.
    BareSet unknown(99);
    expect_text(to_utf8(&unknown.locale.cache, "\xE4", 8), CS_SUCCEED, "\xC3\xB5");
    expect_text(from_utf8("\xC3\xB5", &unknown.locale.cache, 8), CS_SUCCEED, "\xE4");
}

TEST_F(EnginePersistentHandle, IsNotAskedByCopiesUserFunctionsAndAscii) {
    expect_text(to_utf8(cache("utf8"), "\xC3", 8), CS_SUCCEED, "\xC3");
    expect_text(from_utf8("\xC3", cache("utf8"), 8), CS_SUCCEED, "\xC3");
    expect_text(to_utf8(cache("cp037"), "\x4B", 8), CS_SUCCEED, "\x4B");
    install("iso_1", "utf8", note_call);
    install("utf8", "iso_1", note_call);
    expect_text(to_utf8(cache("iso_1"), "\xE4", 8), USER_STATUS, "user");
    expect_text(from_utf8("\xE4", cache("iso_1"), 8), USER_STATUS, "user");
}

TEST_F(EnginePersistentHandle, ServesAConversionTowardsUtf8ButNotOneBetweenOtherSets) {
    expect_text(convert("iso_1", "\xE4", "utf8", 8), CS_SUCCEED, "\xC3\xB5");
    expect_text(convert("iso_1", "\xE4", "mac", 8), CS_SUCCEED, "\x8A");
    expect_text(convert("utf8", "\xC3\xA4", "mac", 8), CS_SUCCEED, "\x8A");
}

TEST_F(EnginePersistentHandle, StaysOpenAndKeepsItsSubstitutes) {
    ASSERT_EQ(uniconv_SetSubstituteChar(handle_, '#'), UNI_OK);
    expect_text(from_utf8("a\xE2\x82\xACz", cache("iso_1"), 8), CS_SUCCEED, "a#z");
    expect_text(from_utf8("a\xE2\x82\xACz", cache("iso_1"), 8), CS_SUCCEED, "a#z");
    int factor = 0;
    EXPECT_EQ(uniconv_GetExpansionFactor(handle_, &factor), UNI_OK);
}

class EnginePersistentWideHandle : public EnginePersistentHandle {
protected:
    EnginePersistentWideHandle() : EnginePersistentHandle("sjis") {}
};

TEST_F(EnginePersistentWideHandle, IsUsedWhateverTheSetIs) {
    expect_text(to_utf8(cache("iso_1"), "\x93\xFA", 8), CS_SUCCEED, "\xE6\x97\xA5");
    expect_text(from_utf8("\xE6\x97\xA5", cache("iso_1"), 8), CS_SUCCEED, "\x93\xFA");
    expect_failure(to_utf8(cache("iso_1"), "\xE4", 8)); // half a character there
}

// ---- The copy of ASCII ----------------------------------------------------------------------------------------------

struct AsciiCopy {
    CS_RETCODE status;
    CS_INT length;
    std::string dest;
    bool operator==(const AsciiCopy &) const = default;
};

AsciiCopy naive_copy(std::string dest, std::size_t destlen, const std::string &source) {
    CS_INT length = 0;
    for (std::size_t i = 0; i < destlen && i < source.size(); ++i) {
        dest[i] = source[i];
        if (static_cast<CS_BYTE>(source[i]) >= 0x80)
            return {CS_ENOCONV, 0, dest};
        ++length;
    }
    return {destlen < source.size() ? CS_ETRUNCATED : CS_SUCCEED, length, dest};
}

// At places of which only so much belongs to either text, `from` and `to` bytes into their memory.
AsciiCopy copy(std::size_t destlen, const std::string &source, std::size_t from = 0, std::size_t to = 0) {
    const std::unique_ptr<CS_BYTE[]> src(new CS_BYTE[from + source.size()]), dest(new CS_BYTE[to + destlen]);
    std::memcpy(src.get() + from, source.data(), source.size());
    std::memset(dest.get(), GROUND, to + destlen);
    CS_INT length = NO_LENGTH;
    const CS_RETCODE status = comn__copy_ascii_only(dest.get() + to, static_cast<CS_INT>(destlen), src.get() + from,
                                                    static_cast<CS_INT>(source.size()), &length);
    return {status, length, std::string(reinterpret_cast<char *>(dest.get()) + to, destlen)};
}

std::string ground(std::size_t length) { return std::string(length, static_cast<char>(GROUND)); }

TEST(AsciiOnly, IsTheCopyByteByByte) {
    std::mt19937_64 random(20240601);
    for (int i = 0; i < support::cases(200000); ++i) {
        std::string source(random() % (random() % 4 == 0 ? 200 : 40), 'x');
        for (char &c : source)
            c = static_cast<char>(random() % 128);
        for (auto bad = random() % 3; bad-- > 0 && !source.empty();)
            source[random() % source.size()] |= static_cast<char>(0x80);
        const std::size_t destlen = random() % 3 == 0 ? random() % 64 : source.size() + random() % 3;
        ASSERT_EQ(copy(destlen, source, random() % 16, random() % 16), naive_copy(ground(destlen), destlen, source));
    }
}

TEST(AsciiOnly, EveryByteAtEveryPlace) {
    for (std::size_t length = 1; length < 34; ++length)
        for (std::size_t at = 0; at < length; ++at)
            for (const int byte : {0x00, 0x01, 0x7F, 0x80, 0x81, 0xC3, 0xFF}) {
                std::string source(length, 'a');
                source[at] = static_cast<char>(byte);
                ASSERT_EQ(copy(length + 1, source), naive_copy(ground(length + 1), length + 1, source));
            }
}

TEST(AsciiOnly, TheFirstByteThatIsNoneIsStored) {
    EXPECT_EQ(copy(6, "ab\xE4\xF6z"), (AsciiCopy{CS_ENOCONV, 0, "ab\xE4" + ground(3)}));
    // Also where bytes behind it would have gone in one step.
    EXPECT_EQ(copy(20, "\xE4 0123456789abcdefg"), (AsciiCopy{CS_ENOCONV, 0, "\xE4" + ground(19)}));
}

TEST(AsciiOnly, ACutIsTold) {
    EXPECT_EQ(copy(3, "abc\xE4"), (AsciiCopy{CS_ETRUNCATED, 3, "abc"}));
    EXPECT_EQ(copy(2, "a\xE4z"), (AsciiCopy{CS_ENOCONV, 0, "a\xE4"}));
}

TEST(AsciiOnly, ARoomOfNothingTakesNothing) {
    EXPECT_EQ(copy(0, "\xE4"), (AsciiCopy{CS_ETRUNCATED, 0, ""}));
    EXPECT_EQ(copy(0, ""), (AsciiCopy{CS_SUCCEED, 0, ""}));
    EXPECT_EQ(copy(4, ""), (AsciiCopy{CS_SUCCEED, 0, ground(4)}));
}

TEST(AsciiOnly, ItMayLieOnItsSource) {
    std::string text = "0123456789abcdefghij";
    CS_INT length = NO_LENGTH;
    auto *const bytes = reinterpret_cast<CS_BYTE *>(text.data());
    EXPECT_EQ(comn__copy_ascii_only(bytes, 20, bytes, 20, &length), CS_SUCCEED);
    EXPECT_EQ(text, "0123456789abcdefghij");
    EXPECT_EQ(length, 20);
}

// ---- How far text can grow ------------------------------------------------------------------------------------------

class EngineMultiplier : public EngineTest {
protected:
    CS_INT multiplier(CS_LOCALE *from, CS_LOCALE *to, CS_INT type = CS_LC_CTYPE, CS_RETCODE status = CS_SUCCEED) {
        CS_INT result = NO_LENGTH;
        EXPECT_EQ(comn_convert_max_multiplier(&context_, type, from, to, &result), status);
        return result;
    }
};
using EngineMultiplierDeathTest = EngineMultiplier;

TEST_F(EngineMultiplier, TheSameLocaleCacheOrSetIsOne) {
    EXPECT_EQ(multiplier(locale("sjis"), locale("sjis")), 1);
    CS_LOCALE twin_locale = *locale("sjis");
    EXPECT_EQ(multiplier(locale("sjis"), &twin_locale), 1);
    Locale twin(cache("sjis")->locchardesc);
    EXPECT_EQ(multiplier(locale("sjis"), &twin.record), 1);
    CS_LOCALE empty = {};
    EXPECT_EQ(multiplier(&empty, &empty), 1) << "without a look into it";
}

TEST_F(EngineMultiplier, NoLocaleIsTheContexts) {
    EXPECT_EQ(multiplier(nullptr, nullptr), 1) << "also where it has none";
    context_.ctxlocale = locale("iso_1");
    EXPECT_EQ(multiplier(nullptr, nullptr), 1);
    EXPECT_EQ(multiplier(nullptr, locale("utf8")), 2);
    EXPECT_EQ(multiplier(locale("utf8"), nullptr), 1);
    EXPECT_EQ(multiplier(nullptr, locale("iso_1")), 1);
}

TEST_F(EngineMultiplier, EachCategoryHasItsOwn) {
    CS_LOCALE mixed = {};
    mixed.messageptr = cache("iso_1");
    mixed.monetaryptr = cache("utf8");
    mixed.numericptr = cache("cp1252");
    mixed.timeptr = cache("sjis");
    mixed.ctypeptr = cache("tis620");
    const auto towards_utf8 = [&](CS_INT type) { return multiplier(&mixed, locale("utf8"), type); };
    EXPECT_EQ(towards_utf8(CS_LC_MESSAGE), 2);
    EXPECT_EQ(towards_utf8(CS_LC_MONETARY), 1);
    EXPECT_EQ(towards_utf8(CS_LC_NUMERIC), 3);
    EXPECT_EQ(towards_utf8(CS_LC_TIME), 3);
    for (const CS_INT type : {2, 0, 1, 7, -5, 1000})
        EXPECT_EQ(towards_utf8(type), 3) << type; // any other number is the character type
    mixed.ctypeptr = cache("iso_1");
    for (const CS_INT type : {2, 0, 1, 7, -5, 1000})
        EXPECT_EQ(towards_utf8(type), 2) << type;
}

TEST_F(EngineMultiplier, AUserConversionTellsItsOwn) {
    install("iso_1", "cp850", note_call, 17);
    install("iso_1", "iso_1", note_call, 18);
    user_calls.clear();
    EXPECT_EQ(multiplier(locale("iso_1"), locale("cp850")), 17);
    EXPECT_EQ(multiplier(locale("cp850"), locale("iso_1")), 1);
    Locale twin(cache("iso_1")->locchardesc);
    EXPECT_EQ(multiplier(locale("iso_1"), &twin.record), 1) << "the same set";
    EXPECT_TRUE(user_calls.empty());
    // Also between sets without tables.
    BareSet decmcs(6);
    CsUserAlgo conversion = {};
    conversion.from_oid = decmcs.get()->oid;
    conversion.to_oid = oid("iso_1");
    conversion.conv_multiplier = 5;
    CS_VOID *const list = std::exchange(context_.usercharconv, &conversion);
    EXPECT_EQ(multiplier(&decmcs.locale.record, locale("iso_1")), 5);
    context_.usercharconv = list;
}

TEST_F(EngineMultiplier, ASetWithoutTablesFails) {
    BareSet unknown(99), decmcs(6);
    for (BareSet *bare : {&unknown, &decmcs}) {
        multiplier(&bare->locale.record, locale("iso_1"), CS_LC_CTYPE, CS_FAIL);
        multiplier(locale("iso_1"), &bare->locale.record, CS_LC_CTYPE, CS_FAIL);
    }
    BareSet cp297(35); // which nothing else here opens
    const support::Variable home("DALVEX", "/nowhere");
    multiplier(&cp297.locale.record, locale("iso_1"), CS_LC_CTYPE, CS_FAIL);
}

// A text of the set without a fault: any bytes that have none, or what it has of characters of many scripts.
class EngineGrowth : public EngineMultiplier {
protected:
    std::string text_of(const std::string &set) {
        static constexpr std::pair<char32_t, unsigned> SCRIPTS[] = {
            {0x20, 0x5F},   {0xA0, 0x60},    {0x100, 0x80},  {0x391, 0x40},    {0x410, 0x40},    {0x5D0, 0x1B},
            {0x621, 0x20},  {0xE01, 0x3A},   {0x1EA0, 0x50}, {0x3041, 0x50},   {0x4E00, 0x2000}, {0xAC00, 0x2000},
            {0xFF61, 0x40}, {0x2010, 0x100}, {0x2500, 0x80}, {0x20000, 0x2000}};
        if (random_() % 2 == 0) {
            std::string bytes(1 + random_() % 24, 'x');
            const bool high = random_() % 2 == 0;
            for (char &c : bytes)
                c = static_cast<char>(high ? 0xA1 + random_() % 0x5E : random_());
            const bool is_utf8 = set == "utf8";
            const Result other = convert(set, bytes, is_utf8 ? "utf16" : "utf8");
            const char *const fault = is_utf8 ? "\xFD\xFF" : "\xEF\xBF\xBD";
            return other.status == CS_SUCCEED && other.text().find(fault) == std::string::npos ? bytes : "";
        }
        std::string utf8;
        for (auto i = 1 + random_() % 12; i > 0; --i) {
            const auto &[first, count] = SCRIPTS[random_() % std::size(SCRIPTS)];
            support::append_utf8(utf8, first + static_cast<char32_t>(random_() % count));
        }
        return from_utf8(utf8, cache(set), 64).text();
    }

    std::mt19937_64 random_{7207};
};

// Changes of state are made once in a text, and are not in the number.
TEST_F(EngineGrowth, OfEveryPairIsBounded) {
    constexpr CS_INT STATES = 2;
    const auto sets = shipped_sets();
    int texts = 0;
    for (const CSID_CSNAME &from : sets)
        for (const CSID_CSNAME &to : sets) {
            const CS_INT bound = multiplier(locale(name_of(from)), locale(name_of(to)));
            ASSERT_GE(bound, 1);
            for (int i = 0; i < support::cases(30); ++i) {
                const std::string text = text_of(name_of(from));
                const Result result = convert(name_of(from), text, name_of(to));
                ASSERT_EQ(result.status, CS_SUCCEED) << name_of(from) << " to " << name_of(to);
                ASSERT_LE(result.length, bound * static_cast<CS_INT>(text.size()) + STATES)
                    << name_of(from) << " to " << name_of(to) << " of " << testing::PrintToString(text);
                texts += !text.empty();
            }
        }
    EXPECT_GT(texts, static_cast<int>(sets.size() * sets.size()) * support::cases(30) / 2);
}

TEST_F(EngineMultiplierDeathTest, NullPointersAreReported) {
    CS_INT result = NO_LENGTH;
    CS_LOCALE empty = {};
    Locale no_set(nullptr);
    support::NullCalls calls;
    calls.add(
        "no context", [&] { return comn_convert_max_multiplier(nullptr, 2, locale("iso_1"), locale("mac"), &result); },
        CS_FAIL);
    calls.add(
        "no result", [&] { return comn_convert_max_multiplier(&context_, 2, locale("iso_1"), locale("mac"), nullptr); },
        CS_FAIL);
    calls.add(
        "no locale", [&] { return comn_convert_max_multiplier(&context_, 2, nullptr, locale("mac"), &result); },
        CS_FAIL);
    calls.add(
        "no locale", [&] { return comn_convert_max_multiplier(&context_, 2, locale("mac"), nullptr, &result); },
        CS_FAIL);
    calls.add(
        "no category", [&] { return comn_convert_max_multiplier(&context_, 2, &empty, locale("mac"), &result); },
        CS_FAIL);
    calls.add(
        "no set", [&] { return comn_convert_max_multiplier(&context_, 2, locale("mac"), &no_set.record, &result); },
        CS_FAIL);
    calls.expect_reports("com_ceng");
    calls.expect_answers([] {}, [] {});
}

// ---- Null pointers --------------------------------------------------------------------------------------------------

TEST_F(EngineUtf8DeathTest, NullPointersAreReported) {
    CS_DATAFMT format = text_format(nullptr, 1);
    CS_BYTE src[1] = {0xE4};
    char dest[5] = "~~~~";
    CS_INT length = NO_LENGTH;
    CsLocCache *const iso_1 = cache("iso_1");
    CsLocCache no_set = {};
    CsCharDesc no_attributes = {};
    Locale without_attributes(&no_attributes);
    CS_CONTEXT bare = {};
    support::NullCalls calls;
    const auto to = [&](const char *name, CS_CONTEXT *context, CS_DATAFMT *srcfmt, CsLocCache *from, CS_VOID *source,
                        CS_VOID *room, CS_INT *count) {
        calls.add(
            name, [=] { return comn__convt_to_utf8(context, 0, srcfmt, from, source, room, 1, count); }, CS_FAIL);
    };
    to("to: context", nullptr, &format, iso_1, src, dest, &length);
    to("to: globals", &bare, &format, iso_1, src, dest, &length);
    to("to: format", &context_, nullptr, iso_1, src, dest, &length);
    to("to: cache", &context_, &format, nullptr, src, dest, &length);
    to("to: set", &context_, &format, &no_set, src, dest, &length);
    to("to: source", &context_, &format, iso_1, nullptr, dest, &length);
    to("to: destination", &context_, &format, iso_1, src, nullptr, &length);
    to("to: length", &context_, &format, iso_1, src, dest, nullptr);
    const auto from = [&](const char *name, CS_CONTEXT *context, CS_BYTE *source, CS_DATAFMT *destfmt,
                          CsLocCache *cache, CS_VOID *room, CS_INT *count) {
        calls.add(
            name, [=] { return comn__convt_from_utf8(context, 0, source, 1, destfmt, cache, room, count); }, CS_FAIL);
    };
    from("from: context", nullptr, src, &format, iso_1, dest, &length);
    from("from: globals", &bare, src, &format, iso_1, dest, &length);
    from("from: source", &context_, nullptr, &format, iso_1, dest, &length);
    from("from: format", &context_, src, nullptr, iso_1, dest, &length);
    from("from: cache", &context_, src, &format, nullptr, dest, &length);
    from("from: set", &context_, src, &format, &no_set, dest, &length);
    from("from: destination", &context_, src, &format, iso_1, nullptr, &length);
    from("from: length", &context_, src, &format, iso_1, dest, nullptr);
    const auto copy = [&](const char *name, CS_BYTE *room, CS_BYTE *source, CS_INT *count) {
        calls.add(
            name, [=] { return comn__copy_ascii_only(room, 1, source, 1, count); }, CS_FAIL);
    };
    auto *const room = reinterpret_cast<CS_BYTE *>(dest);
    copy("copy: destination", nullptr, src, &length);
    copy("copy: source", room, nullptr, &length);
    copy("copy: length", room, src, nullptr);
    calls.add(
        "mnemonics: context", [] { return comn_intl_drop_mnemdb(nullptr); }, CS_FAIL);
    calls.add(
        "mnemonics: globals", [&] { return comn_intl_drop_mnemdb(&bare); }, CS_FAIL);
    calls.add(
        "a mnemonic", [] { return comn__drop_mnem_string(nullptr); }, 0);
    calls.expect_reports("com_ceng");
    calls.expect_answers([] {},
                         [&] {
                             EXPECT_EQ(length, NO_LENGTH);
                             EXPECT_STREQ(dest, "~~~~");
                         });
}

TEST_F(EngineUtf8DeathTest, ASetWithoutAttributesIsReported) {
    CsCharDesc empty = {};
    Locale other(&empty);
    CS_INT length = NO_LENGTH;
    char dest[] = "~~~~";
    const auto to = [&] {
        CS_DATAFMT format = text_format(nullptr, 1);
        char src[] = "\xE4";
        return comn__convt_to_utf8(&context_, 0, &format, &other.cache, src, dest, 4, &length);
    };
    const auto from = [&] {
        CS_DATAFMT format = text_format(nullptr, 4);
        CS_BYTE src[] = "\xC3\xA4";
        return comn__convt_from_utf8(&context_, 0, src, 2, &format, &other.cache, dest, &length);
    };
    EXPECT_NULL_REPORT(to(), "com_ceng");
    EXPECT_NULL_REPORT(from(), "com_ceng");
    const ReturningAssertions returning;
    EXPECT_EQ(to(), CS_FAIL);
    EXPECT_EQ(from(), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
}

TEST_F(EngineUtf8DeathTest, GlobalsWithoutAUtf8SetAreReported) {
    CsCtxGlobals none = {};
    CS_CONTEXT context = {};
    context.ctxglobals = &none;
    CS_INT length = NO_LENGTH;
    char dest[] = "~~~~";
    CsLocCache *const iso_1 = cache("iso_1");
    const auto to = [&] {
        CS_DATAFMT format = text_format(nullptr, 1);
        char src[] = "\xE4";
        return comn__convt_to_utf8(&context, 0, &format, iso_1, src, dest, 4, &length);
    };
    const auto from = [&] {
        CS_DATAFMT format = text_format(nullptr, 4);
        CS_BYTE src[] = "\xC3\xA4";
        return comn__convt_from_utf8(&context, 0, src, 2, &format, iso_1, dest, &length);
    };
    EXPECT_NULL_REPORT(to(), "com_ceng");
    EXPECT_NULL_REPORT(from(), "com_ceng");
    const ReturningAssertions returning;
    EXPECT_EQ(to(), CS_FAIL);
    EXPECT_EQ(from(), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
}

} // namespace
