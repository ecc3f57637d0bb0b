// What every conversion from a number has in common, driven over all members of one source: pointers, ids, rooms,
// lengths, unaligned values. A test of a source derives its fixture and names the source.
#ifndef TESTS_SUPPORT_NUMBER_FRAME_TESTS_H
#define TESTS_SUPPORT_NUMBER_FRAME_TESTS_H

#include "support/assertions.h"
#include "support/convert.h"
#include "support/number_members.h"

#include <limits>

namespace support {

class NumberFrames : public ConversionTest {
protected:
    // A call with every argument in its place, which a test then spoils.
    struct Arguments {
        CS_CONTEXT *context;
        CS_DATAFMT srcfmt;
        CS_BYTE src[8] = {1}; // 1 as an integer or a bit
        Outcome outcome;
        bool null[6] = {};

        CS_RETCODE call(const NumberMember &member) {
            return member.function(null[0] ? nullptr : context, null[1] ? nullptr : &srcfmt, null[2] ? nullptr : src,
                                   null[3] ? nullptr : &outcome.destfmt, null[4] ? nullptr : outcome.bytes.data(),
                                   null[5] ? nullptr : &outcome.destlen);
        }
    };

    Arguments arguments(const NumberMember &member) {
        Arguments result;
        result.context = context();
        result.srcfmt = format_of(member.source_ids[0], member.source_width);
        result.outcome.destfmt = format_of(member.destination.ids[0], 64);
        result.outcome.destfmt.precision = 20;
        result.outcome.destfmt.scale = 2;
        return result;
    }

    // The call is reported exactly once, fails and touches nothing.
    void expect_one_report(const NumberMember &member, Arguments &spoiled, const ReturningAssertions &assertions,
                           const char *what, CS_INT detail) {
        const int before = assertions.count();
        EXPECT_EQ(spoiled.call(member), CS_FAIL) << member << ' ' << what << ' ' << detail;
        EXPECT_EQ(assertions.count(), before + 1) << member << ' ' << what << ' ' << detail;
        EXPECT_TRUE(spoiled.outcome.untouched()) << member << ' ' << what << ' ' << detail;
    }

    void null_pointers_are_reported_and_nothing_is_touched(const std::string &source) {
        const ReturningAssertions assertions;
        for (const NumberMember &member : members_from(source))
            for (unsigned nulls = 1; nulls < 64; ++nulls) {
                Arguments spoiled = arguments(member);
                for (unsigned i = 0; i < 6; ++i)
                    spoiled.null[i] = (nulls >> i & 1) != 0;
                expect_one_report(member, spoiled, assertions, "null pointers", static_cast<CS_INT>(nulls));
            }
    }

    void wrong_ids_are_reported_and_nothing_is_touched(const std::string &source) {
        const ReturningAssertions assertions;
        for (const NumberMember &member : members_from(source))
            for (CS_INT id = -1; id <= 41; ++id) {
                if (!member.takes_source(id)) {
                    Arguments spoiled = arguments(member);
                    spoiled.srcfmt.datatype = id;
                    expect_one_report(member, spoiled, assertions, "source id", id);
                }
                if (!member.takes_destination(id)) {
                    Arguments spoiled = arguments(member);
                    spoiled.outcome.destfmt.datatype = id;
                    expect_one_report(member, spoiled, assertions, "destination id", id);
                }
            }
    }

    void negative_rooms_are_reported_and_nothing_is_touched(const std::string &source) {
        const ReturningAssertions assertions;
        for (const NumberMember &member : members_from(source))
            if (member.has_room())
                for (CS_INT room : {-1, -9, std::numeric_limits<CS_INT>::min()})
                    for (CS_INT format = 0; format < 8; ++format) {
                        Arguments spoiled = arguments(member);
                        spoiled.outcome.destfmt.maxlength = room;
                        spoiled.outcome.destfmt.format = format;
                        expect_one_report(member, spoiled, assertions, "room", room);
                    }
    }

    // Only char and bin have a room: elsewhere maxlength is not looked at.
    void room_does_not_count_for_fixed_widths(const std::string &source, bool (*is_wanted)(const NumberMember &)) {
        for (const NumberMember &member : members_from(source))
            if (!member.has_room() && is_wanted(member)) {
                Arguments sound = arguments(member);
                sound.outcome.destfmt.maxlength = -1;
                EXPECT_EQ(sound.call(member), CS_SUCCEED) << member;
            }
    }

    // All ids of a member lead to one result, at any address, and the width of the destination is its length.
    void every_id_and_address_gives_the_same(const std::string &source, bool (*is_wanted)(const NumberMember &)) {
        for (const NumberMember &member : members_from(source)) {
            if (!is_wanted(member))
                continue;
            Arguments first = arguments(member);
            EXPECT_EQ(first.call(member), CS_SUCCEED) << member;
            const bool sets_length = !(source == "bit" && (member.is_to("varchar") || member.is_to("varbin")));
            if (member.destination.width != 0) {
                EXPECT_EQ(first.outcome.destlen, sets_length ? member.destination.width : UNTOUCHED_LENGTH) << member;
                EXPECT_TRUE(first.outcome.untouched_from(static_cast<size_t>(member.destination.width))) << member;
            }
            for (CS_INT source_id : member.source_ids)
                for (CS_INT destination_id : member.destination.ids)
                    for (size_t shift : {0, 1, 2, 3, 5}) {
                        Arguments other = arguments(member);
                        other.srcfmt.datatype = source_id;
                        other.outcome.destfmt.datatype = destination_id;
                        CS_BYTE moved_source[16];
                        std::memcpy(moved_source + shift, other.src, sizeof other.src);
                        const CS_RETCODE status =
                            member.function(other.context, &other.srcfmt, moved_source + shift, &other.outcome.destfmt,
                                            other.outcome.bytes.data() + shift, &other.outcome.destlen);
                        EXPECT_EQ(status, CS_SUCCEED) << member << ' ' << source_id << ' ' << destination_id;
                        EXPECT_EQ(other.outcome.destlen, first.outcome.destlen) << member;
                        EXPECT_EQ(std::memcmp(other.outcome.bytes.data() + shift, first.outcome.bytes.data(), 300), 0)
                            << member << " at an address off by " << shift;
                    }
        }
    }

    // A caller may convert a value where it stands.
    void result_may_replace_the_source(const std::string &source, bool (*is_wanted)(const NumberMember &)) {
        for (const NumberMember &member : members_from(source)) {
            if (!is_wanted(member))
                continue;
            Arguments apart = arguments(member);
            EXPECT_EQ(apart.call(member), CS_SUCCEED) << member;
            Arguments together = arguments(member);
            CS_BYTE *bytes = together.outcome.bytes.data();
            std::memcpy(bytes, together.src, static_cast<size_t>(member.source_width));
            EXPECT_EQ(member.function(together.context, &together.srcfmt, bytes, &together.outcome.destfmt, bytes,
                                      &together.outcome.destlen),
                      CS_SUCCEED)
                << member;
            EXPECT_EQ(together.outcome.destlen, apart.outcome.destlen) << member;
            for (size_t i = 0; i < apart.outcome.bytes.size(); ++i) {
                if (apart.outcome.bytes[i] != UNTOUCHED) {
                    EXPECT_EQ(together.outcome.bytes[i], apart.outcome.bytes[i]) << member << " at byte " << i;
                }
            }
        }
    }

    static bool is_numeric(const NumberMember &member) { return member.is_to("num"); }
    static bool is_money(const NumberMember &member) { return member.is_to("money") || member.is_to("mny4"); }
    static bool is_plain(const NumberMember &member) { return !is_numeric(member) && !is_money(member); }
};

// In the mode in which a report ends the process: it names the source's file.
class NumberFramesDeath : public NumberFrames {
protected:
    void reports_name(const std::string &source, const char *file) {
        for (const NumberMember &member : members_from(source)) {
            if (!member.is_to("i4") && !member.is_to("char") && !member.is_to("bin") && !member.is_to("varbin"))
                continue;
            const std::string where = std::string("file 'generic/src/") + file + "\\.cpp' line [0-9]+";
            const std::string helper = "file 'generic/src/com_bin\\.cpp' line [0-9]+";
            Arguments no_source = arguments(member);
            no_source.null[2] = true;
            EXPECT_DEATH(no_source.call(member),
                         "Invalid NULL pointer , " + (member.tests_pointers_in_helper() ? helper : where));
            Arguments wrong_source = arguments(member);
            wrong_source.srcfmt.datatype = CS_VOID_TYPE;
            EXPECT_DEATH(wrong_source.call(member), "assertion failed, " + where);
            Arguments wrong_destination = arguments(member);
            wrong_destination.outcome.destfmt.datatype = CS_VOID_TYPE;
            EXPECT_DEATH(wrong_destination.call(member), "assertion failed, " + where);
            if (!member.has_room())
                continue;
            Arguments no_room = arguments(member);
            no_room.outcome.destfmt.maxlength = -1;
            EXPECT_DEATH(no_room.call(member),
                         "assertion failed, " + (member.tests_pointers_in_helper() ? helper : where));
        }
    }
};

} // namespace support

// The frame tests of the source `word`, whose file is com_<word>.cpp.
#define NUMBER_FRAME_TESTS(Suite, word, file)                                                                          \
    class Suite##Frames : public support::NumberFrames {};                                                             \
    TEST_F(Suite##Frames, NullPointersAreReportedAndNothingIsTouched) {                                                \
        null_pointers_are_reported_and_nothing_is_touched(word);                                                       \
    }                                                                                                                  \
    TEST_F(Suite##Frames, WrongIdsAreReportedAndNothingIsTouched) {                                                    \
        wrong_ids_are_reported_and_nothing_is_touched(word);                                                           \
    }                                                                                                                  \
    TEST_F(Suite##Frames, NegativeRoomsAreReportedAndNothingIsTouched) {                                               \
        negative_rooms_are_reported_and_nothing_is_touched(word);                                                      \
    }                                                                                                                  \
    TEST_F(Suite##Frames, RoomDoesNotCountForFixedWidths) { room_does_not_count_for_fixed_widths(word, is_plain); }    \
    TEST_F(Suite##Frames, EveryIdAndAddressGivesTheSame) { every_id_and_address_gives_the_same(word, is_plain); }      \
    TEST_F(Suite##Frames, ResultMayReplaceTheSource) { result_may_replace_the_source(word, is_plain); }                \
    TEST_F(Suite##Frames, EveryIdAndAddressGivesTheSameNumeric) {                                                      \
        every_id_and_address_gives_the_same(word, is_numeric);                                                         \
        result_may_replace_the_source(word, is_numeric);                                                               \
        room_does_not_count_for_fixed_widths(word, is_numeric);                                                        \
    }                                                                                                                  \
    TEST_F(Suite##Frames, EveryIdAndAddressGivesTheSameMoney) {                                                        \
        every_id_and_address_gives_the_same(word, is_money);                                                           \
        result_may_replace_the_source(word, is_money);                                                                 \
        room_does_not_count_for_fixed_widths(word, is_money);                                                          \
    }                                                                                                                  \
    class Suite##FramesDeathTest : public support::NumberFramesDeath {};                                               \
    TEST_F(Suite##FramesDeathTest, ReportsNameTheFile) { reports_name(word, file); }

#endif
