// The byte copies of the property functions.
#include "support/failing_allocator.h"
#include "support/lists.h"

#include <cstring>
#include <string>

using namespace support;

namespace {

constexpr const char *STEM = "lm_bytes";

struct Lengths {
    CS_INT actual = -7;
    CS_INT needed = -7;
};

TEST(LmRealLength, CountsTheTextAndItsTerminatorIfAskedTo) {
    struct {
        const char *source;
        CS_INT length;
        CS_BOOL terminated;
        CS_INT actual;
        CS_INT needed;
    } const rows[] = {
        {nullptr, 5, CS_FALSE, 0, 0},          {nullptr, 5, CS_TRUE, 0, 1}, {nullptr, LM_NULLTERM, CS_TRUE, 0, 1},
        {nullptr, -3, CS_FALSE, 0, 0},         {"abc", 0, CS_FALSE, 0, 0},  {"abc", 0, CS_TRUE, 0, 1},
        {"abc", 2, CS_FALSE, 2, 2},            {"abc", 2, CS_TRUE, 2, 3},   {"abc", LM_NULLTERM, CS_FALSE, 3, 3},
        {"abc", LM_NULLTERM, CS_TRUE, 3, 4},   {"", LM_NULLTERM, CS_TRUE, 0, 1},
        {"a\0c", 3, CS_TRUE, 3, 4},            {"a\0c", LM_NULLTERM, CS_TRUE, 1, 2},
    };
    for (const auto &row : rows) {
        Lengths got;
        EXPECT_EQ(lm___api_reallength(text(row.source), row.length, row.terminated, &got.actual, &got.needed),
                  CS_SUCCEED);
        EXPECT_EQ(got.actual, row.actual);
        EXPECT_EQ(got.needed, row.needed);
    }
}

TEST(LmBytesDeathTest, BadLengthsAndFlagsAreBrokenContracts) {
    Lengths got;
    char room[8] = "xxxxxxx";
    char *copy = room;
    CS_INT length = 55;
    for (const CS_INT bad : {-1, -8, -10, LM_UNUSED}) {
        expect_broken(STEM, [&] { return lm___api_reallength(text("abc"), bad, CS_TRUE, &got.actual, &got.needed); });
        expect_broken(STEM, [&] { return lm__api_cp_bytes(text("abc"), bad, CS_TRUE, room, 8, &length); });
        expect_broken(STEM, [&] { return lm__api_setdata(text("abc"), bad, CS_TRUE, &copy, &length); });
    }
    for (const CS_BOOL bad : {-1, 2, 256}) {
        expect_broken(STEM, [&] { return lm___api_reallength(text("abc"), 3, bad, &got.actual, &got.needed); });
        expect_broken(STEM, [&] { return lm__api_cp_bytes(text("abc"), 3, bad, room, 8, &length); });
        expect_broken(STEM, [&] { return lm__api_prop_cpbytes(text("abc"), 3, bad, room, 8, &length); });
        expect_broken(STEM, [&] { return lm__api_setdata(text("abc"), 3, bad, &copy, &length); });
    }
    EXPECT_EQ(got.actual, -7);
    EXPECT_EQ(got.needed, -7);
    EXPECT_STREQ(room, "xxxxxxx");
    EXPECT_EQ(copy, room);
    EXPECT_EQ(length, 55);
}

TEST(LmBytesDeathTest, MissingOperandsAreBrokenContracts) {
    CS_INT length = 55;
    char *copy = nullptr;
    expect_broken(STEM, [&] { return lm___api_reallength(text("abc"), 3, CS_TRUE, nullptr, &length); });
    expect_broken(STEM, [&] { return lm___api_reallength(text("abc"), 3, CS_TRUE, &length, nullptr); });
    expect_broken(STEM, [&] { return lm__api_cp_bytes(text("abc"), 3, CS_TRUE, nullptr, 8, &length); });
    expect_broken(STEM, [&] { return lm__api_setdata(text("abc"), 3, CS_TRUE, nullptr, &length); });
    expect_broken(STEM, [&] { return lm__api_setdata(text("abc"), 3, CS_TRUE, &copy, nullptr); });
    expect_broken(STEM, [&] { return lm__api_prop_setdata(text("abc"), 3, CS_TRUE, nullptr, &length); });
    expect_broken(STEM, [&] { return lm__api_prop_setdata(text("abc"), 3, CS_TRUE, &copy, nullptr); });
    EXPECT_EQ(length, 55);
    EXPECT_EQ(copy, nullptr);
}

TEST(LmCopyBytes, DestinationOfThreeForASourceOfFiveReportsFiveAndStaysUntouched) {
    char room[4] = "xyz";
    CS_INT length = 0;
    EXPECT_EQ(lm__api_cp_bytes(text("hello"), 5, CS_FALSE, room, 3, &length), CS_SUCCEED);
    EXPECT_EQ(length, 5);
    EXPECT_STREQ(room, "xyz");
}

TEST(LmCopyBytes, NeverReportsASmallDestinationAsAFailure) {
    EXPECT_EQ(lm__api_cp_bytes(text("hello"), 5, CS_TRUE, nullptr, 0, nullptr), CS_SUCCEED);
    EXPECT_EQ(lm__api_cp_bytes(text("hello"), LM_NULLTERM, CS_TRUE, nullptr, LM_UNUSED, nullptr), CS_SUCCEED);
}

TEST(LmCopyBytes, NoBytesNeedNoDestination) {
    CS_INT length = 55;
    EXPECT_EQ(lm__api_cp_bytes(nullptr, 3, CS_FALSE, nullptr, 0, &length), CS_SUCCEED);
    EXPECT_EQ(length, 0);
}

// Both names of the copy, at every length of text and room.
TEST(LmCopyBytes, EverySizeOfTextAndRoom) {
    const std::string source("The\0quick brown fox", 19);
    for (const auto copy : {lm__api_cp_bytes, lm__api_prop_cpbytes}) {
        for (CS_INT size = 0; size <= 19; ++size) {
            for (CS_INT room = 0; room <= 22; ++room) {
                for (const CS_BOOL terminated : {CS_FALSE, CS_TRUE}) {
                    std::string got(24, '#');
                    std::string expected = got;
                    const CS_INT needed = size + (terminated ? 1 : 0);
                    if (needed <= room) {
                        expected.replace(0, static_cast<std::size_t>(size), source, 0, static_cast<std::size_t>(size));
                        if (terminated)
                            expected[static_cast<std::size_t>(size)] = '\0';
                    }
                    CS_INT length = -1;
                    ASSERT_EQ(copy(text(source.data()), size, terminated, got.data(), room, &length), CS_SUCCEED);
                    ASSERT_EQ(length, needed);
                    ASSERT_EQ(got, expected) << size << " into " << room;
                }
            }
        }
    }
}

TEST(LmSetData, CopiesIntoPlainMemoryAndCountsWithoutTheTerminator) {
    const std::string source("one\0two three", 13);
    for (CS_INT size = 1; size <= 13; ++size) {
        for (const CS_BOOL terminated : {CS_FALSE, CS_TRUE}) {
            char *copy = text("stale");
            CS_INT length = 55;
            ASSERT_EQ(lm__api_setdata(text(source.data()), size, terminated, &copy, &length), CS_SUCCEED);
            ASSERT_EQ(length, size);
            const auto count = static_cast<std::size_t>(size);
            ASSERT_EQ(std::string(copy, count), source.substr(0, count));
            if (terminated) {
                ASSERT_EQ(copy[size], '\0');
            }
            ASSERT_NE(copy, source.data());
            std::free(copy);
        }
    }
}

TEST(LmSetData, ALengthOfNoneIsNullAndZero) {
    for (const char *source : {static_cast<const char *>(nullptr), "", "abc"}) {
        char *copy = text("stale");
        CS_INT length = 55;
        EXPECT_EQ(lm__api_setdata(text(source), 0, CS_TRUE, &copy, &length), CS_SUCCEED);
        EXPECT_EQ(copy, nullptr);
        EXPECT_EQ(length, 0);
    }
}

TEST(LmSetData, OutOfMemoryIsTold) {
    char *copy = text("stale");
    CS_INT length = 55;
    CS_RETCODE status;
    {
        FailingAllocator failing(1);
        status = lm__api_setdata(text("abc"), 3, CS_TRUE, &copy, &length);
        EXPECT_EQ(failing.held(), 0);
    }
    EXPECT_EQ(status, CS_MEM_ERROR);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(LmPropSetData, FreesTheOldValueAndTakesTheNew) {
    char *value = nullptr;
    CS_INT length = 55;
    {
        FailingAllocator counting;
        EXPECT_EQ(lm__api_prop_setdata(text("first"), LM_NULLTERM, CS_TRUE, &value, &length), CS_SUCCEED);
        EXPECT_EQ(counting.held(), 1);
        EXPECT_EQ(lm__api_prop_setdata(text("second"), 6, CS_TRUE, &value, &length), CS_SUCCEED);
        EXPECT_EQ(counting.held(), 1);
        EXPECT_STREQ(value, "second");
        EXPECT_EQ(length, 6);
        EXPECT_EQ(lm__api_prop_setdata(nullptr, 0, CS_TRUE, &value, &length), CS_SUCCEED);
        EXPECT_EQ(counting.held(), 0);
    }
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(LmPropSetData, OddityOutOfMemoryLosesTheOldValueAndSucceeds) {
    char *value = nullptr;
    CS_INT length = 0;
    ASSERT_EQ(lm__api_prop_setdata(text("first"), 5, CS_TRUE, &value, &length), CS_SUCCEED);
    CS_RETCODE status;
    {
        FailingAllocator failing(1, FailingAllocator::LASTING);
        status = lm__api_prop_setdata(text("second"), 6, CS_TRUE, &value, &length);
    }
    EXPECT_EQ(status, CS_SUCCEED);
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(LmPropSetDataDeathTest, OddityABadLengthIsReportedAndSucceeds) {
    char *value = nullptr;
    CS_INT length = 55;
    expect_broken(STEM, [&] { return lm__api_prop_setdata(text("abc"), -5, CS_TRUE, &value, &length); }, CS_SUCCEED);
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(LmPlainMemory, IgnoresTheUserPointer) {
    int user = 0;
    FailingAllocator counting;
    CS_VOID *memory = lm___malloc(&user, 24);
    EXPECT_EQ(counting.held(), 1);
    std::memset(memory, 1, 24);
    lm___free(nullptr, memory);
    EXPECT_EQ(counting.held(), 0);
    lm___free(&user, nullptr);
    EXPECT_EQ(user, 0);
}

} // namespace
