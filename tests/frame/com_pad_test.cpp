// Padding, terminators and the doubling of quotes: every room, length and format against a model written down
// from the rules, and the odd cases by name.
#include "support/assertions.h"
#include "support/charsets.h"
#include "support/convert.h"
#include "support/naive_escape.h"

#include <algorithm>
#include <memory>
#include <ostream>

namespace {

using support::format_of;
using support::ReturningAssertions;

constexpr CS_INT MARGIN = 4; // bytes around a room, which must stay as they were
constexpr CS_INT MOST_ROOM = 12;
constexpr CS_BYTE GROUND = 0xEE; // of the room and its margins

// What a padding routine leaves behind.
struct Padded {
    CS_RETCODE status = 0;
    CS_INT destlen = 0;
    std::string memory; // the room and its margins
    bool operator==(const Padded &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Padded &padded) {
    return out << "status " << padded.status << ", *destlen " << padded.destlen << ", memory "
               << testing::PrintToString(padded.memory);
}

using Padding = CS_RETCODE (*)(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen);

Padded pad(Padding routine, CS_INT len, CS_INT written, CS_INT room, CS_INT format) {
    Padded result;
    result.memory.assign(static_cast<std::size_t>(MARGIN + std::max(room, 0) + MARGIN), static_cast<char>(GROUND));
    result.destlen = written;
    CS_DATAFMT destfmt = format_of(CS_CHAR_TYPE, room, format);
    result.status = routine(len, &destfmt, result.memory.data() + MARGIN, &result.destlen);
    return result;
}

// The rules, a byte at a time. Nothing may fall behind the room, so a terminator that has no place there
// counts as a value that does not fit.
Padded modelled_text(CS_INT unit, CS_INT len, CS_INT written, CS_INT room, CS_INT format) {
    const bool nullterm = (format & CS_FORMAT_NULLTERM) != 0;
    const bool zeropad = (format & CS_FORMAT_ZEROPAD) != 0;
    const bool blankpad = (format & CS_FORMAT_BLANKPAD) != 0;
    std::string memory(static_cast<std::size_t>(room), static_cast<char>(GROUND));
    const auto put_unit = [&](CS_INT at, char low) {
        memory.at(static_cast<std::size_t>(at)) = low;
        if (unit == 2)
            memory.at(static_cast<std::size_t>(at + 1)) = '\0';
    };
    const auto result = [&](CS_RETCODE status, CS_INT destlen) {
        const std::string margin(MARGIN, static_cast<char>(GROUND));
        return Padded{status, destlen, margin + memory + margin};
    };
    const auto overflow = [&] {
        if (nullterm && room >= unit)
            put_unit((room - unit) / unit * unit, '\0');
        return result(CS_EOVERFLOW, written);
    };

    if (len > room)
        return overflow();
    if (nullterm && room - len < unit)
        return overflow();
    const CS_INT tail = written - written % unit;
    if (zeropad) {
        if (blankpad)
            return result(CS_EFORMAT, written);
        if (room <= written)
            return result(CS_SUCCEED, written);
        for (CS_INT at = tail; at < room; ++at)
            memory.at(static_cast<std::size_t>(at)) = '\0';
        return result(CS_SUCCEED, room);
    }
    if (blankpad) {
        const CS_INT blanks = room > written ? (room - written) / unit : 0;
        for (CS_INT i = 0; i < blanks; ++i)
            put_unit(tail + i * unit, nullterm && i == blanks - 1 ? '\0' : ' ');
        return result(CS_SUCCEED, room);
    }
    if (nullterm) {
        if (tail + unit > room)
            return overflow();
        put_unit(tail, '\0');
        return result(CS_SUCCEED, written + unit);
    }
    return result(CS_SUCCEED, written);
}

Padded modelled_binary(CS_INT len, CS_INT written, CS_INT room, CS_INT format) {
    Padded result{CS_SUCCEED, written,
                  std::string(static_cast<std::size_t>(MARGIN + room + MARGIN), static_cast<char>(GROUND))};
    if ((format & CS_FORMAT_ZEROPAD) != 0 && room > len) {
        for (CS_INT at = len; at < room; ++at)
            result.memory.at(static_cast<std::size_t>(MARGIN + at)) = '\0';
        result.destlen = room;
    }
    return result;
}

// Calls back with every room, value length, count of bytes written, and format. Some exceed the room.
template <class Check>
void for_every_call(Check check) {
    for (CS_INT room = 0; room <= MOST_ROOM; ++room)
        for (CS_INT len = 0; len <= room + 3; ++len)
            for (CS_INT written = 0; written <= room + 3; ++written)
                for (CS_INT format = 0; format < 8; ++format)
                    check(len, written, room, format);
}

TEST(PadChar, EveryRoomLengthAndFormat) {
    for_every_call([](CS_INT len, CS_INT written, CS_INT room, CS_INT format) {
        EXPECT_EQ(pad(comn__padchar, len, written, room, format), modelled_text(1, len, written, room, format))
            << "len " << len << ", written " << written << ", room " << room << ", format " << format;
    });
}

TEST(PadUnichar, EveryRoomLengthAndFormat) {
    for_every_call([](CS_INT len, CS_INT written, CS_INT room, CS_INT format) {
        EXPECT_EQ(pad(comn__padunichar, len, written, room, format), modelled_text(2, len, written, room, format))
            << "len " << len << ", written " << written << ", room " << room << ", format " << format;
    });
}

TEST(PadBin, EveryRoomLengthAndFormat) {
    for_every_call([](CS_INT len, CS_INT written, CS_INT room, CS_INT format) {
        EXPECT_EQ(pad(comn__padbin, len, written, room, format), modelled_binary(len, written, room, format))
            << "len " << len << ", written " << written << ", room " << room << ", format " << format;
    });
}

TEST(Padding, OtherFormatBitsMeanNothing) {
    for (const Padding routine : {comn__padchar, comn__padunichar, comn__padbin})
        for (CS_INT format = 0; format < 8; ++format)
            EXPECT_EQ(pad(routine, 4, 4, 10, format), pad(routine, 4, 4, 10, format | CS_FORMAT_ESCAPEQUOTE | 0x40))
                << format;
}

// ---- By name ------------------------------------------------------------------------------------------------

constexpr char G = static_cast<char>(GROUND);

// The room alone.
std::string room_of(const Padded &padded) { return padded.memory.substr(MARGIN, padded.memory.size() - 2 * MARGIN); }

TEST(PadChar, ATerminatorWithoutRoomTakesTheLastValueByte) {
    const Padded padded = pad(comn__padchar, 3, 3, 3, CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_EOVERFLOW);
    EXPECT_EQ(room_of(padded), (std::string{G, G, '\0'}));
    EXPECT_EQ(padded.destlen, 3);
}

TEST(PadChar, ATerminatorIsCounted) {
    const Padded padded = pad(comn__padchar, 3, 3, 8, CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_SUCCEED);
    EXPECT_EQ(padded.destlen, 4);
    EXPECT_EQ(room_of(padded), (std::string{G, G, G, '\0', G, G, G, G}));
}

TEST(PadChar, BlanksWithATerminatorEndInNul) {
    const Padded padded = pad(comn__padchar, 2, 2, 5, CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_SUCCEED);
    EXPECT_EQ(padded.destlen, 5);
    EXPECT_EQ(room_of(padded), (std::string{G, G, ' ', ' ', '\0'}));
}

TEST(PadChar, ZeroBytesNeedNoTerminatorOfTheirOwn) {
    const Padded padded = pad(comn__padchar, 2, 2, 4, CS_FORMAT_ZEROPAD | CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_SUCCEED);
    EXPECT_EQ(padded.destlen, 4);
    EXPECT_EQ(room_of(padded), (std::string{G, G, '\0', '\0'}));
}

TEST(PadChar, ZeroBytesAndBlanksTogetherAreABadFormatOfAValueThatFits) {
    const CS_INT both = CS_FORMAT_ZEROPAD | CS_FORMAT_BLANKPAD;
    EXPECT_EQ(pad(comn__padchar, 2, 2, 4, both).status, CS_EFORMAT);
    EXPECT_EQ(pad(comn__padchar, 4, 4, 4, both).status, CS_EFORMAT);
    EXPECT_EQ(pad(comn__padchar, 5, 4, 4, both).status, CS_EOVERFLOW);
}

TEST(PadChar, AValueThatFillsItsRoomNeedsNoPadding) {
    for (const CS_INT format : {0, +CS_FORMAT_ZEROPAD, +CS_FORMAT_BLANKPAD}) {
        const Padded padded = pad(comn__padchar, 4, 4, 4, format);
        EXPECT_EQ(padded.status, CS_SUCCEED);
        EXPECT_EQ(padded.destlen, 4);
        EXPECT_EQ(room_of(padded), std::string(4, G));
    }
}

TEST(PadChar, NothingIsWrittenToARoomOfNothing) {
    EXPECT_EQ(pad(comn__padchar, 0, 0, 0, 0).status, CS_SUCCEED);
    EXPECT_EQ(pad(comn__padchar, 0, 0, 0, CS_FORMAT_NULLTERM), modelled_text(1, 0, 0, 0, CS_FORMAT_NULLTERM));
    EXPECT_EQ(pad(comn__padchar, 0, 0, 0, CS_FORMAT_NULLTERM).status, CS_EOVERFLOW);
}

TEST(PadChar, ATerminatorNeverFallsBehindTheRoomHoweverMuchWasWritten) {
    const Padded padded = pad(comn__padchar, 2, 5, 5, CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_EOVERFLOW);
    EXPECT_EQ(padded.destlen, 5);
    EXPECT_EQ(room_of(padded), (std::string{G, G, G, G, '\0'}));
}

TEST(PadUnichar, UnitsHaveTwoBytes) {
    Padded padded = pad(comn__padunichar, 4, 4, 10, CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_SUCCEED);
    EXPECT_EQ(padded.destlen, 10);
    EXPECT_EQ(room_of(padded), (std::string{G, G, G, G, ' ', '\0', ' ', '\0', '\0', '\0'}));
    padded = pad(comn__padunichar, 4, 4, 10, CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.destlen, 6);
    EXPECT_EQ(room_of(padded), (std::string{G, G, G, G, '\0', '\0', G, G, G, G}));
}

TEST(PadUnichar, ATerminatorNeedsAWholeUnit) {
    Padded padded = pad(comn__padunichar, 4, 4, 5, CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_EOVERFLOW);
    EXPECT_EQ(room_of(padded), (std::string{G, G, '\0', '\0', G}));
    EXPECT_EQ(pad(comn__padunichar, 4, 4, 6, CS_FORMAT_NULLTERM).status, CS_SUCCEED);
}

TEST(PadUnichar, ARoomBelowOneUnitIsLeftAlone) {
    for (const CS_INT room : {0, 1}) {
        const Padded padded = pad(comn__padunichar, 0, 0, room, CS_FORMAT_NULLTERM);
        EXPECT_EQ(padded.status, CS_EOVERFLOW);
        EXPECT_EQ(padded.destlen, 0);
        EXPECT_EQ(room_of(padded), std::string(static_cast<std::size_t>(room), G));
    }
}

TEST(PadUnichar, AnOddCountOfWrittenBytesIsRoundedDownForThePlaceAlone) {
    Padded padded = pad(comn__padunichar, 4, 5, 10, CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.destlen, 7);
    EXPECT_EQ(room_of(padded), (std::string{G, G, G, G, '\0', '\0', G, G, G, G}));
    padded = pad(comn__padunichar, 4, 5, 10, CS_FORMAT_BLANKPAD);
    EXPECT_EQ(padded.destlen, 10);
    EXPECT_EQ(room_of(padded), (std::string{G, G, G, G, ' ', '\0', ' ', '\0', G, G}));
}

TEST(PadUnichar, AnOddRoomKeepsItsLastByteBehindBlanksAndIsToldWhole) {
    const Padded padded = pad(comn__padunichar, 2, 2, 7, CS_FORMAT_BLANKPAD);
    EXPECT_EQ(padded.destlen, 7);
    EXPECT_EQ(room_of(padded), (std::string{G, G, ' ', '\0', ' ', '\0', G}));
}

TEST(PadBin, KnowsZeroBytesOnly) {
    EXPECT_EQ(room_of(pad(comn__padbin, 2, 2, 4, CS_FORMAT_ZEROPAD)), (std::string{G, G, '\0', '\0'}));
    const Padded padded = pad(comn__padbin, 2, 2, 4, CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM);
    EXPECT_EQ(padded.status, CS_SUCCEED);
    EXPECT_EQ(padded.destlen, 2);
    EXPECT_EQ(room_of(padded), std::string(4, G));
}

TEST(PadBin, FillsFromTheValueAndNotFromWhatWasWritten) {
    const Padded padded = pad(comn__padbin, 1, 3, 4, CS_FORMAT_ZEROPAD);
    EXPECT_EQ(room_of(padded), (std::string{G, '\0', '\0', '\0'}));
    EXPECT_EQ(padded.destlen, 4);
}

TEST(PadBin, ANegativeRoomIsNoRoom) {
    const Padded padded = pad(comn__padbin, 0, 0, -1, CS_FORMAT_ZEROPAD);
    EXPECT_EQ(padded.status, CS_SUCCEED);
    EXPECT_EQ(padded.destlen, 0);
}

// ---- Quotes -------------------------------------------------------------------------------------------------

using support::naive::Escaped;

// Source and destination have not a byte to spare, so that a sanitizer sees the first one too many.
Escaped escape(CS_ATTRIB *attr, const std::string &source, CS_INT room, CS_INT source_format = 0,
               CS_BYTE quote = '\'') {
    const auto src = std::make_unique<char[]>(source.size());
    const auto dest = std::make_unique<char[]>(static_cast<std::size_t>(room));
    std::copy(source.begin(), source.end(), src.get());
    std::fill_n(dest.get(), room, G);
    CS_DATAFMT srcfmt = format_of(CS_CHAR_TYPE, static_cast<CS_INT>(source.size()), source_format);
    CS_DATAFMT destfmt = format_of(CS_CHAR_TYPE, room, CS_FORMAT_NULLTERM | CS_FORMAT_BLANKPAD);
    CS_INT destlen = -5;
    const CS_RETCODE status = comn__escchar(src.get(), &srcfmt, dest.get(), &destfmt, &destlen, attr, quote);
    for (CS_INT at = std::max(destlen, 0); at < room; ++at)
        EXPECT_EQ(dest[static_cast<std::size_t>(at)], G) << "wrote behind the length that it told, at " << at;
    return {status, std::string(dest.get(), static_cast<std::size_t>(std::max(destlen, 0)))};
}

TEST(EscChar, DoublesEachQuote) {
    EXPECT_EQ(escape(nullptr, "it's", 10), (Escaped{CS_SUCCEED, "it''s"}));
    EXPECT_EQ(escape(nullptr, "'", 10), (Escaped{CS_SUCCEED, "''"}));
    EXPECT_EQ(escape(nullptr, "'''", 10), (Escaped{CS_SUCCEED, "''''''"}));
    EXPECT_EQ(escape(nullptr, "'a'b'", 10), (Escaped{CS_SUCCEED, "''a''b''"}));
    EXPECT_EQ(escape(nullptr, "plain", 10), (Escaped{CS_SUCCEED, "plain"}));
}

TEST(EscChar, IsNotPaddedByTheDestinationsFormat) { EXPECT_EQ(escape(nullptr, "ab", 6), (Escaped{CS_SUCCEED, "ab"})); }

TEST(EscChar, AnEmptySourceGivesNothing) { EXPECT_EQ(escape(nullptr, "", 4), (Escaped{CS_SUCCEED, ""})); }

TEST(EscChar, FillsItsRoomExactly) { EXPECT_EQ(escape(nullptr, "it's", 5), (Escaped{CS_SUCCEED, "it''s"})); }

TEST(EscChar, TruncatesAndTellsTheBytesWritten) {
    EXPECT_EQ(escape(nullptr, "it's", 4), (Escaped{CS_ETRUNCATED, "it''"}));
    EXPECT_EQ(escape(nullptr, "its", 2), (Escaped{CS_ETRUNCATED, "it"}));
    EXPECT_EQ(escape(nullptr, "it", 0), (Escaped{CS_ETRUNCATED, ""}));
}

TEST(EscChar, ADoubledQuoteThatDoesNotFitWholeIsNotBegun) {
    EXPECT_EQ(escape(nullptr, "it's", 3), (Escaped{CS_ETRUNCATED, "it"}));
    EXPECT_EQ(escape(nullptr, "'s", 1), (Escaped{CS_ETRUNCATED, ""}));
    EXPECT_EQ(escape(nullptr, "''", 3), (Escaped{CS_ETRUNCATED, "''"}));
}

TEST(EscChar, ANulEndsTheWalkAndIsCopiedIfTheSourceIsTerminated) {
    const std::string source("a'\0b'", 5);
    EXPECT_EQ(escape(nullptr, source, 10, CS_FORMAT_NULLTERM), (Escaped{CS_SUCCEED, std::string("a''\0", 4)}));
    EXPECT_EQ(escape(nullptr, source, 10), (Escaped{CS_SUCCEED, std::string("a''\0b''", 7)}));
    EXPECT_EQ(escape(nullptr, source, 3, CS_FORMAT_NULLTERM), (Escaped{CS_ETRUNCATED, "a''"}));
}

TEST(EscChar, ATerminatedSourceWithoutANulEndsAtItsLength) {
    EXPECT_EQ(escape(nullptr, "a'b", 10, CS_FORMAT_NULLTERM), (Escaped{CS_SUCCEED, "a''b"}));
}

TEST(EscChar, ATailByteIsNoQuoteAndNoNul) {
    support::DoubleByteSet set;
    EXPECT_EQ(escape(set.get(), "\x81'a'", 10), (Escaped{CS_SUCCEED, "\x81'a''"}));
    EXPECT_EQ(escape(set.get(), std::string("\x81\0'", 3), 10, CS_FORMAT_NULLTERM),
              (Escaped{CS_SUCCEED, std::string("\x81\0''", 4)}));
}

TEST(EscChar, AWideQuoteIsDoubledWhole) {
    support::DoubleByteSet set;
    EXPECT_EQ(escape(set.get(), "a\xA3\xA7z", 10), (Escaped{CS_SUCCEED, "a\xA3\xA7\xA3\xA7z"}));
    EXPECT_EQ(escape(set.get(), "a\xA3\xA7z", 5), (Escaped{CS_ETRUNCATED, "a\xA3\xA7\xA3\xA7"}));
    EXPECT_EQ(escape(set.get(), "a\xA3\xA7z", 4), (Escaped{CS_ETRUNCATED, "a"}));
}

TEST(EscChar, AWideCharacterIsNotCutByTheRoom) {
    support::FourByteSet set;
    EXPECT_EQ(escape(set.get(), "a\x81\x30\x81\x30", 4), (Escaped{CS_ETRUNCATED, "a"}));
    EXPECT_EQ(escape(set.get(), "a\x81\x30\x81\x30", 5), (Escaped{CS_SUCCEED, "a\x81\x30\x81\x30"}));
}

TEST(EscChar, ACharacterThatTheSourcesEndCutsIsTakenAsFarAsItGoes) {
    support::ThreeByteSet set;
    EXPECT_EQ(escape(set.get(), "a\x8F\xA1", 10), (Escaped{CS_SUCCEED, "a\x8F\xA1"}));
    EXPECT_EQ(escape(set.get(), "a\x8F", 10), (Escaped{CS_SUCCEED, "a\x8F"}));
    EXPECT_EQ(escape(set.get(), "a\x8F\xA1", 2), (Escaped{CS_ETRUNCATED, "a"}));
    set.norm(0, 0x8F, 1).norm(1, 0xA1, '\'');
    EXPECT_EQ(escape(set.get(), "\x8F\xA1", 10), (Escaped{CS_SUCCEED, "\x8F\xA1"})); // half a quote is none
}

TEST(EscChar, AWidthOfZeroDoesNotStopTheWalk) {
    support::DoubleByteSet set;
    set.width('a', 'a', 0, 0);
    EXPECT_EQ(escape(set.get(), "aa'a", 10), (Escaped{CS_SUCCEED, "aa''a"}));
}

TEST(EscChar, InASetWithoutNormPagesTheQuoteIsComparedWithoutCase) {
    EXPECT_EQ(escape(nullptr, "aXbx", 10, 0, 'x'), (Escaped{CS_SUCCEED, "aXXbxx"}));
    EXPECT_EQ(escape(nullptr, "aXbx", 10, 0, 'X'), (Escaped{CS_SUCCEED, "aXbx"})); // no form is upper case
}

TEST(EscChar, EveryRoomOfRandomTextInRandomSets) {
    std::mt19937_64 random(20240903);
    support::DoubleByteSet two;
    support::ThreeByteSet three;
    support::FourByteSet four;
    CS_ATTRIB *const sets[] = {nullptr, two.get(), three.get(), four.get()};
    for (int i = 0; i < 3'000; ++i) {
        const std::string text = support::random_text(random, random() % 24);
        CS_ATTRIB *set = sets[random() % 4];
        const CS_INT format = random() % 2 != 0 ? CS_FORMAT_NULLTERM : 0;
        const auto quote = static_cast<CS_BYTE>(random() % 4 != 0 ? '\'' : random());
        for (CS_INT room = 0; room <= 50; ++room)
            ASSERT_EQ(escape(set, text, room, format, quote),
                      support::naive::escchar(set, text, format != 0, static_cast<std::size_t>(room), quote))
                << testing::PrintToString(text) << " in " << room << " bytes with quote " << int{quote};
    }
    for (int i = 0; i < 1'000; ++i) {
        support::RandomSet set(random);
        const std::string text = support::random_text(random, random() % 24);
        const CS_INT room = static_cast<CS_INT>(random() % 50);
        const auto quote = static_cast<CS_BYTE>(random());
        ASSERT_EQ(escape(set.get(), text, room, 0, quote),
                  support::naive::escchar(set.get(), text, false, static_cast<std::size_t>(room), quote));
    }
}

// ---- Broken contracts ---------------------------------------------------------------------------------------

constexpr Padding TEXT_PADDINGS[] = {comn__padchar, comn__padunichar};
constexpr Padding PADDINGS[] = {comn__padchar, comn__padunichar, comn__padbin};

TEST(PaddingDeathTest, NullPointersAreReported) {
    CS_DATAFMT destfmt = format_of(CS_CHAR_TYPE, 4);
    CS_BYTE dest[4];
    CS_INT destlen = 2;
    for (const Padding routine : PADDINGS) {
        EXPECT_NULL_REPORT(routine(2, nullptr, dest, &destlen), "com_pad");
        EXPECT_NULL_REPORT(routine(2, &destfmt, nullptr, &destlen), "com_pad");
        EXPECT_NULL_REPORT(routine(2, &destfmt, dest, nullptr), "com_pad");
    }
}

TEST(PaddingDeathTest, NegativeLengthsAreReported) {
    for (const Padding routine : PADDINGS) {
        EXPECT_BOMB(pad(routine, -1, 0, 4, 0), "com_pad");
    }
    for (const Padding routine : TEXT_PADDINGS) {
        EXPECT_BOMB(pad(routine, 0, 0, -1, 0), "com_pad");
        EXPECT_BOMB(pad(routine, 0, -1, 4, 0), "com_pad");
    }
}

TEST(PaddingWhereReportsReturn, BrokenContractsFailAndTouchNothing) {
    ReturningAssertions returning;
    CS_DATAFMT destfmt = format_of(CS_CHAR_TYPE, 4, CS_FORMAT_ZEROPAD);
    CS_BYTE dest[] = {1, 2, 3, 4};
    CS_INT destlen = 2;
    int reports = 0;
    for (const Padding routine : PADDINGS) {
        EXPECT_EQ(routine(2, nullptr, dest, &destlen), CS_FAIL);
        EXPECT_EQ(routine(2, &destfmt, nullptr, &destlen), CS_FAIL);
        EXPECT_EQ(routine(2, &destfmt, dest, nullptr), CS_FAIL);
        EXPECT_EQ(routine(-1, &destfmt, dest, &destlen), CS_FAIL);
        EXPECT_EQ(returning.count(), reports += 4);
    }
    for (const Padding routine : TEXT_PADDINGS) {
        destfmt.maxlength = -1;
        EXPECT_EQ(routine(0, &destfmt, dest, &destlen), CS_FAIL);
        destfmt.maxlength = 4;
        CS_INT negative = -1;
        EXPECT_EQ(routine(0, &destfmt, dest, &negative), CS_FAIL);
        EXPECT_EQ(negative, -1);
        EXPECT_EQ(returning.count(), reports += 2);
    }
    EXPECT_EQ(destlen, 2);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(dest[i], i + 1);
}

// The arguments of a sound call, each of which can be spoilt.
struct EscapeCall {
    CS_DATAFMT srcfmt = format_of(CS_CHAR_TYPE, 4);
    CS_DATAFMT destfmt = format_of(CS_CHAR_TYPE, 8);
    CS_BYTE source[4] = {'i', 't', '\'', 's'};
    CS_BYTE dest[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    CS_INT destlen = 77;
    CS_VOID *src_argument = source;
    CS_DATAFMT *srcfmt_argument = &srcfmt;
    CS_VOID *dest_argument = dest;
    CS_DATAFMT *destfmt_argument = &destfmt;
    CS_INT *destlen_argument = &destlen;

    CS_RETCODE run() {
        return comn__escchar(src_argument, srcfmt_argument, dest_argument, destfmt_argument, destlen_argument, nullptr,
                             '\'');
    }
};
using Spoil = void (*)(EscapeCall &);
constexpr Spoil MISSING_POINTERS[] = {
    [](EscapeCall &call) { call.src_argument = nullptr; },
    [](EscapeCall &call) { call.srcfmt_argument = nullptr; },
    [](EscapeCall &call) { call.dest_argument = nullptr; },
    [](EscapeCall &call) { call.destfmt_argument = nullptr; },
    [](EscapeCall &call) { call.destlen_argument = nullptr; },
};

TEST(EscCharDeathTest, NullPointersAreReported) {
    for (const Spoil spoil : MISSING_POINTERS) {
        EscapeCall call;
        spoil(call);
        EXPECT_NULL_REPORT(call.run(), "com_pad");
    }
}

TEST(EscCharDeathTest, ANegativeRoomIsReported) {
    EscapeCall call;
    call.destfmt.maxlength = -1;
    EXPECT_BOMB(call.run(), "com_pad");
}

TEST(EscCharWhereReportsReturn, BrokenContractsFailAndTouchNothing) {
    ReturningAssertions returning;
    EscapeCall untouched;
    const auto expect_failure = [&](Spoil spoil) {
        EscapeCall call;
        spoil(call);
        EXPECT_EQ(call.run(), CS_FAIL);
        EXPECT_EQ(call.destlen, 77);
        EXPECT_EQ(std::memcmp(call.dest, untouched.dest, sizeof call.dest), 0);
    };
    for (const Spoil spoil : MISSING_POINTERS)
        expect_failure(spoil);
    expect_failure([](EscapeCall &call) { call.destfmt.maxlength = -1; });
    EXPECT_EQ(returning.count(), 6);
}

TEST(EscChar, ASourceOfNegativeLengthIsEmpty) {
    EscapeCall call;
    call.srcfmt.maxlength = -1;
    EXPECT_EQ(call.run(), CS_SUCCEED);
    EXPECT_EQ(call.destlen, 0);
}

} // namespace
