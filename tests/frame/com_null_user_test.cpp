// Null values of user datatypes: the list, its oddities, and every value and node failing for want of memory.
#include "support/failing_allocator.h"

#include "frame/null_fixture.h"

#include <climits>
#include <cstdlib>
#include <random>

namespace {

using support::BareContext;
using support::ComNull;
using support::FailingAllocator;
using support::format_of;
using support::Types;

// ---- User types -----------------------------------------------------------------------------

TEST_F(ComNull, UserValueIsFollowedByANulThatCounts) {
    EXPECT_EQ(set(100, "ab"), CS_SUCCEED);
    const Got got = get(100, 8);
    EXPECT_EQ(got.status, CS_SUCCEED);
    EXPECT_EQ(got.length, 3);
    EXPECT_EQ(got.text(), std::string("ab\0", 3));
    EXPECT_TRUE(got.untouched_from(3));
}

TEST_F(ComNull, UnknownUserTypeStoresNothing) {
    set(100, "ab");
    for (const CS_INT type : {40, 99, 101, INT_MAX}) {
        const Got got = get(type, 8);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.length, 0);
        EXPECT_TRUE(got.untouched_from(0));
    }
}

TEST_F(ComNull, OddityUserValueThatFillsTheRoomWritesItsNulBehindTheRoom) {
    set(100, "abcd");
    for (CS_INT room = 0; room <= 6; ++room) {
        const Got got = get(100, room);
        const CS_INT stored = std::min(room, 4);
        EXPECT_EQ(got.length, stored + 1) << room;
        EXPECT_EQ(got.text(), std::string("abcd").substr(0, static_cast<size_t>(stored)) + '\0') << room;
        EXPECT_TRUE(got.untouched_from(static_cast<size_t>(stored) + 1)) << room;
    }
}

TEST_F(ComNull, UserValueIsNeverPadded) {
    set(100, "ab");
    for (int format = 0; format < 8; ++format) {
        const Got got = get(100, 8, format);
        EXPECT_EQ(got.status, CS_SUCCEED) << format;
        EXPECT_EQ(got.length, 3) << format;
        EXPECT_TRUE(got.untouched_from(3)) << format;
    }
}

TEST_F(ComNull, UserValueOfNoBytesIsANulAlone) {
    EXPECT_EQ(set(100, ""), CS_SUCCEED);
    EXPECT_EQ(context->ctxusrnulls->dventity, nullptr);
    EXPECT_EQ(get(100, 8).text(), std::string(1, '\0'));
    EXPECT_EQ(set(100, "ab"), CS_SUCCEED);
    EXPECT_EQ(set(100, ""), CS_SUCCEED);
    EXPECT_EQ(context->ctxusrnulls->dventity, nullptr);
    EXPECT_EQ(context->ctxusrnulls->dvsize, 0);
    EXPECT_EQ(get(100, 8).text(), std::string(1, '\0'));
}

TEST_F(ComNull, UserTypesNeedNoTable) {
    BareContext own;
    char value[] = "ab";
    EXPECT_EQ(com_null_set(own, 40, value, 2), CS_SUCCEED);
    CS_DATAFMT destfmt = format_of(40, 8);
    CS_BYTE bytes[8];
    CS_INT length = 0;
    EXPECT_EQ(com_null_get(own, &destfmt, bytes, 8, &length), CS_SUCCEED);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(com_null_reinstall(own, 40), CS_SUCCEED);
    EXPECT_EQ(own->ctxusrnulls, nullptr);
}

TEST_F(ComNull, NewUserTypesGoToTheFrontOfTheList) {
    set(100, "a");
    set(101, "b");
    set(102, "c");
    EXPECT_EQ(user_types(), (Types{102, 101, 100}));
    set(101, "B");
    EXPECT_EQ(user_types(), (Types{102, 101, 100})) << "a known type keeps its node";
    EXPECT_EQ(get(101, 8).text(), std::string("B\0", 2));
}

TEST_F(ComNull, ReinstallOfTheFirstUserTypeUnlinksIt) {
    set(100, "a");
    set(101, "b");
    set(102, "c");
    EXPECT_EQ(com_null_reinstall(context, 102), CS_SUCCEED);
    EXPECT_EQ(user_types(), (Types{101, 100}));
}

TEST_F(ComNull, OddityReinstallOfTheSecondUserTypeDropsTheFirstWithIt) {
    set(100, "a");
    set(101, "b");
    set(102, "c");
    CsUsrNull *dropped = context->ctxusrnulls;
    EXPECT_EQ(com_null_reinstall(context, 101), CS_SUCCEED);
    EXPECT_EQ(user_types(), (Types{100}));
    EXPECT_EQ(get(102, 8).length, 0) << "the first is no longer found";
    // Nothing points to it any more: the node is lost to the library as it stands.
    EXPECT_EQ(dropped->dttype, 102);
    std::free(dropped->dventity);
    std::free(dropped);
}

TEST_F(ComNull, OddityReinstallOfTheSecondOfTwoEmptiesTheList) {
    set(100, "a");
    set(101, "b");
    CsUsrNull *dropped = context->ctxusrnulls;
    EXPECT_EQ(com_null_reinstall(context, 100), CS_SUCCEED);
    EXPECT_EQ(user_types(), Types{});
    std::free(dropped->dventity);
    std::free(dropped);
}

TEST_F(ComNull, ReinstallFromTheThirdUserTypeOnUnlinksThatOneAlone) {
    for (CS_INT type = 100; type < 106; ++type)
        set(type, "v");
    EXPECT_EQ(com_null_reinstall(context, 103), CS_SUCCEED);
    EXPECT_EQ(user_types(), (Types{105, 104, 102, 101, 100}));
    EXPECT_EQ(com_null_reinstall(context, 100), CS_SUCCEED);
    EXPECT_EQ(user_types(), (Types{105, 104, 102, 101}));
    EXPECT_EQ(com_null_reinstall(context, 102), CS_SUCCEED);
    EXPECT_EQ(user_types(), (Types{105, 104, 101}));
}

TEST_F(ComNull, ReinstallOfAnUnknownUserTypeSucceedsAndChangesNothing) {
    EXPECT_EQ(com_null_reinstall(context, 100), CS_SUCCEED);
    set(100, "a");
    EXPECT_EQ(com_null_reinstall(context, 101), CS_SUCCEED);
    EXPECT_EQ(com_null_reinstall(context, INT_MAX), CS_SUCCEED);
    EXPECT_EQ(user_types(), (Types{100}));
}

// Random histories of user values against a vector that follows the told rules.
TEST_F(ComNull, RandomHistoriesOfUserValuesFollowAModel) {
    std::mt19937_64 random(20240313);
    std::vector<std::pair<CS_INT, std::string>> model; // front first
    for (int step = 0; step < 20000; ++step) {
        const CS_INT type = 40 + static_cast<CS_INT>(random() % 7);
        const auto found =
            std::find_if(model.begin(), model.end(), [type](const auto &entry) { return entry.first == type; });
        if (random() % 3 != 0) {
            const std::string value(random() % 20, static_cast<char>('a' + random() % 26));
            ASSERT_EQ(set(type, value), CS_SUCCEED);
            if (found != model.end())
                found->second = value;
            else
                model.insert(model.begin(), {type, value});
        } else {
            CsUsrNull *head = context->ctxusrnulls;
            ASSERT_EQ(com_null_reinstall(context, type), CS_SUCCEED);
            if (found != model.end() && found == model.begin() + 1) {
                model.erase(model.begin(), found + 1);
                std::free(head->dventity);
                std::free(head);
            } else if (found != model.end()) {
                model.erase(found);
            }
        }
        Types types;
        for (const auto &[known, value] : model) {
            types.push_back(known);
            const CS_INT room = static_cast<CS_INT>(random() % 24);
            const Got got = get(known, room);
            ASSERT_EQ(got.text(), value.substr(0, static_cast<size_t>(room)) + '\0');
        }
        ASSERT_EQ(user_types(), types);
    }
}

// ---- Out of memory --------------------------------------------------------------------------

TEST_F(ComNull, InitWithEachAllocationFailingIsToldAndLeaksNothing) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int n = 1; n <= 42; ++n) {
            BareContext own;
            own->ctxusrnulls = nullptr;
            CS_RETCODE status;
            int held, rows = 0, left;
            {
                FailingAllocator allocator(n, span);
                status = com_null_init(own);
                held = allocator.held();
                for (int id = 0; id < 40 && own->ctxnulls.nullvals != nullptr; ++id)
                    rows += own->ctxnulls.nullvals[id].dventity != nullptr;
                com_null_free(own);
                left = allocator.held();
            }
            EXPECT_EQ(status, n <= 41 ? CS_MEM_ERROR : CS_SUCCEED) << n;
            EXPECT_EQ(held, n - 1) << "the table and the rows so far stay in place";
            EXPECT_EQ(rows, std::max(n - 2, 0)) << n;
            EXPECT_EQ(left, 0) << n;
        }
}

TEST_F(ComNull, InitWithoutMemoryLeavesTheUserListAlone) {
    for (const int n : {1, 2, 41}) {
        BareContext own;
        auto *const sentinel = reinterpret_cast<CsUsrNull *>(0x1000);
        own->ctxusrnulls = sentinel;
        {
            FailingAllocator allocator(n);
            com_null_init(own);
        }
        EXPECT_EQ(own->ctxusrnulls, sentinel);
        EXPECT_EQ(own->ctxnulls.nulldim, 40);
        own->ctxusrnulls = nullptr;
    }
}

TEST_F(ComNull, SetWithoutMemoryLeavesABuiltInTypeWithoutAValueUntilSetAgain) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        set(CS_INT_TYPE, "wxyz");
        char value[] = "1234";
        CS_RETCODE status;
        int held;
        {
            FailingAllocator allocator(1, span);
            status = com_null_set(context, CS_INT_TYPE, value, 4);
            held = allocator.held();
        }
        EXPECT_EQ(status, CS_MEM_ERROR);
        EXPECT_EQ(held, -1) << "the old value is gone";
        EXPECT_EQ(context->ctxnulls.nullvals[CS_INT_TYPE].dventity, nullptr);
        EXPECT_EQ(set(CS_INT_TYPE, "5678"), CS_SUCCEED);
        EXPECT_EQ(get(CS_INT_TYPE, 4).text(), "5678");
    }
}

TEST_F(ComNull, SetOfAKnownUserTypeWithoutMemoryLeavesAnEmptyValue) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        set(100, "ab");
        char value[] = "a much longer value";
        CS_RETCODE status;
        int held;
        {
            FailingAllocator allocator(1, span);
            status = com_null_set(context, 100, value, sizeof value);
            held = allocator.held();
        }
        EXPECT_EQ(status, CS_MEM_ERROR);
        EXPECT_EQ(held, -1) << "the old value is gone";
        EXPECT_EQ(user_types(), (Types{100}));
        EXPECT_EQ(get(100, 8).text(), std::string(1, '\0')) << "an empty value, safe to ask for";
    }
}

TEST_F(ComNull, SetOfANewUserTypeWithoutMemoryLeavesTheListAsItWas) {
    set(100, "a");
    set(101, "b");
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int n = 1; n <= 2; ++n) {
            char value[] = "abc";
            CS_RETCODE status;
            int held;
            {
                FailingAllocator allocator(n, span);
                status = com_null_set(context, 102, value, 3);
                held = allocator.held();
            }
            EXPECT_EQ(status, CS_MEM_ERROR) << n;
            EXPECT_EQ(held, 0) << n;
            EXPECT_EQ(user_types(), (Types{101, 100})) << n;
        }
}

TEST_F(ComNull, SetWithNoBytesNeedsNoMemoryButTheNode) {
    char none[] = "";
    CS_RETCODE built_in, first, second;
    {
        FailingAllocator allocator(2, FailingAllocator::LASTING);
        built_in = com_null_set(context, CS_INT_TYPE, none, 0);
        first = com_null_set(context, 100, none, 0);
        second = com_null_set(context, 100, none, 0);
    }
    EXPECT_EQ(built_in, CS_SUCCEED);
    EXPECT_EQ(first, CS_SUCCEED);
    EXPECT_EQ(second, CS_SUCCEED);
}

TEST_F(ComNull, ReinstallAsksForMemoryOnlyWhereTheValueIsSmaller) {
    set(CS_INT_TYPE, "12345678");
    set(CS_REAL_TYPE, "1234");
    set(CS_FLOAT_TYPE, "123");
    CS_RETCODE larger, equal, smaller, user;
    {
        FailingAllocator allocator(1, FailingAllocator::LASTING);
        larger = com_null_reinstall(context, CS_INT_TYPE);
        equal = com_null_reinstall(context, CS_REAL_TYPE);
        smaller = com_null_reinstall(context, CS_FLOAT_TYPE);
        user = com_null_reinstall(context, 100);
    }
    EXPECT_EQ(larger, CS_SUCCEED);
    EXPECT_EQ(equal, CS_SUCCEED);
    EXPECT_EQ(smaller, CS_MEM_ERROR);
    EXPECT_EQ(user, CS_SUCCEED);
    EXPECT_EQ(get(CS_INT_TYPE, 4).text(), std::string(4, '\0'));
    EXPECT_EQ(context->ctxnulls.nullvals[CS_FLOAT_TYPE].dventity, nullptr);
    EXPECT_EQ(set(CS_FLOAT_TYPE, "12345678"), CS_SUCCEED);
    EXPECT_EQ(com_null_reinstall(context, CS_FLOAT_TYPE), CS_SUCCEED);
    EXPECT_EQ(get(CS_FLOAT_TYPE, 8).text(), std::string(8, '\0'));
}

TEST_F(ComNull, GetNeedsNoMemory) {
    set(100, "ab");
    FailingAllocator allocator(1, FailingAllocator::LASTING);
    CS_BYTE bytes[300];
    CS_INT length;
    CS_DATAFMT destfmt = format_of(0, 300, CS_FORMAT_BLANKPAD);
    for (CS_INT type = 0; type < 101; ++type) {
        destfmt.datatype = type;
        com_null_get(context, &destfmt, bytes, 299, &length);
    }
    EXPECT_EQ(allocator.asked(), 0);
}

} // namespace
