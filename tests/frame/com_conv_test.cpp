// Widths of datatypes, lookup and replacement of conversions, the list of user conversions, and what is left
// when memory runs out.
#include "support/failing_allocator.h"

#include "support/assertions.h"
#include "support/bare_context.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace {

using support::BareContext;
using support::FailingAllocator;
using support::ReturningAssertions;

// ---- comn_typelen ---------------------------------------------------------------------------

constexpr int GIVEN = -1;

// By id.
constexpr int widths[40] = {
    GIVEN, GIVEN, GIVEN, GIVEN, GIVEN, GIVEN, 1,     2,     4,     4,     // 0 to 9
    8,     1,     8,     4,     8,     4,     35,    35,    258,   258,   // 10 to 19
    GIVEN, GIVEN, GIVEN, GIVEN, GIVEN, 2,     GIVEN, 4,     4,     GIVEN, // 20 to 29
    8,     2,     4,     8,     GIVEN, 8,     8,     GIVEN, GIVEN, GIVEN, // 30 to 39
};

TEST(ComConvTypelen, EachIdAnswersItsWidthOrTheGivenLength) {
    for (const CS_INT length : {7, 0, 1, -3, CS_UNUSED, INT_MAX, INT_MIN})
        for (CS_INT id = 0; id < 40; ++id)
            EXPECT_EQ(comn_typelen(id, length), widths[id] == GIVEN ? length : widths[id]) << id << ", " << length;
}

TEST(ComConvTypelen, IdsOutsideTheTableAnswerTheGivenLength) {
    for (const CS_INT id : {40, 41, 50, 100, 255, 256 + 8, 65536 + 8, INT_MAX, -1, -8, -32, CS_UNUSED, INT_MIN})
        for (const CS_INT length : {7, 0, -3})
            EXPECT_EQ(comn_typelen(id, length), length) << id;
}

TEST(ComConvTypelen, LongAnswersTheGivenLengthThoughBigintIsEightWide) {
    EXPECT_EQ(comn_typelen(20, 7), 7);
    EXPECT_EQ(comn_typelen(30, 7), 8);
}

TEST(ComConvTypelen, UnitextAnswersTheGivenLengthThoughUnicharIsTwoWide) {
    EXPECT_EQ(comn_typelen(29, 7), 7);
    EXPECT_EQ(comn_typelen(25, 7), 2);
}

TEST(ComConvTypelen, ShortDateAndShortMoneyAreFourWide) {
    EXPECT_EQ(comn_typelen(13, 0), 4);
    EXPECT_EQ(comn_typelen(15, 0), 4);
}

TEST(ComConvTypelen, FixedWidthsAreThoseOfTheValueTypes) {
    EXPECT_EQ(comn_typelen(CS_DATETIME_TYPE, 0), CS_INT(sizeof(CS_DATETIME)));
    EXPECT_EQ(comn_typelen(CS_DATETIME4_TYPE, 0), CS_INT(sizeof(CS_DATETIME4)));
    EXPECT_EQ(comn_typelen(CS_MONEY_TYPE, 0), CS_INT(sizeof(CS_MONEY)));
    EXPECT_EQ(comn_typelen(CS_MONEY4_TYPE, 0), CS_INT(sizeof(CS_MONEY4)));
    EXPECT_EQ(comn_typelen(CS_NUMERIC_TYPE, 0), CS_INT(sizeof(CS_NUMERIC)));
}

// ---- Stand-ins for an application's conversions ----------------------------------------------

CS_RETCODE first_user(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *, CS_INT *) { return 101; }
CS_RETCODE second_user(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *, CS_INT *) { return 102; }
CS_RETCODE third_user(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *, CS_INT *) { return 103; }

class ComConv : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(com_conv_init(context), CS_SUCCEED); }

    BareContext context;
};

// The built-in table.
const CS_CONV_FUNC *builtin() {
    CS_CONV_FUNC *table = nullptr;
    int dimension = 0;
    com__get_ctbl(&table, &dimension);
    EXPECT_EQ(dimension, 40);
    return table;
}

constexpr size_t TABLE_BYTES = 40 * 40 * sizeof(CS_CONV_FUNC);

// ---- com_conv_init, com_conv_free -----------------------------------------------------------

TEST(ComConvInit, GivesTheContextItsOwnCopyOfTheBuiltInTable) {
    BareContext context;
    context->ctxusrcvttbl = reinterpret_cast<CsUsrCvtFunc *>(0x1000); // whatever was there
    EXPECT_EQ(com_conv_init(context), CS_SUCCEED);
    EXPECT_EQ(context->ctxcvttbl.cvtdim, 40);
    ASSERT_NE(context->ctxcvttbl.cvttbl, nullptr);
    EXPECT_NE(context->ctxcvttbl.cvttbl, builtin());
    EXPECT_EQ(std::memcmp(context->ctxcvttbl.cvttbl, builtin(), TABLE_BYTES), 0);
    EXPECT_EQ(context->ctxusrcvttbl, nullptr);
}

int owner_allocations = 0;

TEST(ComConvInit, UsesThePlainAllocatorAndNotTheOwners) {
    BareContext context;
    owner_allocations = 0;
    context->ctxmalloc = [](CS_CONTEXT *, CS_UINT) -> CS_VOID * {
        ++owner_allocations;
        return nullptr;
    };
    EXPECT_EQ(com_conv_init(context), CS_SUCCEED);
    EXPECT_EQ(com_conv_install(context, 50, 2, first_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_free(context), CS_SUCCEED);
    EXPECT_EQ(owner_allocations, 0);
}

TEST(ComConvInit, OutOfMemoryLeavesTheSideSetAndNoTable) {
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        BareContext context;
        CS_RETCODE status;
        int asked, held;
        {
            FailingAllocator allocator(1, span);
            status = com_conv_init(context);
            asked = allocator.asked();
            held = allocator.held();
        }
        EXPECT_EQ(asked, 1);
        EXPECT_EQ(held, 0);
        EXPECT_EQ(status, CS_MEM_ERROR);
        EXPECT_EQ(context->ctxcvttbl.cvtdim, 40);
        EXPECT_EQ(context->ctxcvttbl.cvttbl, nullptr);
        EXPECT_EQ(com_conv_free(context), CS_SUCCEED);
        EXPECT_EQ(context->ctxcvttbl.cvtdim, 0);
        EXPECT_EQ(com_conv_init(context), CS_SUCCEED);
    }
}

TEST(ComConvInit, AsksForNoMoreThanItsTable) {
    BareContext context;
    FailingAllocator allocator(2, FailingAllocator::LASTING);
    const CS_RETCODE status = com_conv_init(context);
    const int held = allocator.held();
    EXPECT_EQ(status, CS_SUCCEED);
    EXPECT_EQ(held, 1);
}

TEST(ComConvFree, ReleasesTheTableAndTheWholeUserListAndMayBeCalledTwice) {
    BareContext context;
    int held, held_twice;
    {
        FailingAllocator allocator;
        com_conv_init(context);
        for (CS_INT source = 40; source < 50; ++source)
            for (CS_INT destination = 0; destination < 10; ++destination)
                com_conv_install(context, source, destination, first_user);
        held = allocator.held();
        com_conv_free(context);
        com_conv_free(context);
        held_twice = allocator.held();
    }
    EXPECT_EQ(held, 1 + 100);
    EXPECT_EQ(held_twice, 0);
    EXPECT_EQ(context->ctxcvttbl.cvttbl, nullptr);
    EXPECT_EQ(context->ctxcvttbl.cvtdim, 0);
    EXPECT_EQ(context->ctxusrcvttbl, nullptr);
}

TEST(ComConvFree, SucceedsOnAContextThatWasNeverInitialised) {
    BareContext context;
    EXPECT_EQ(com_conv_free(context), CS_SUCCEED);
}

// ---- com_conv_func --------------------------------------------------------------------------

TEST_F(ComConv, FuncAnswersTheCellOfTheContextsTable) {
    for (CS_INT source = 0; source < 40; ++source)
        for (CS_INT destination = 0; destination < 40; ++destination)
            EXPECT_EQ(com_conv_func(context, source, destination), builtin()[40 * source + destination])
                << source << " to " << destination;
}

TEST_F(ComConv, FuncAnswersNullForANegativeIdWithoutAReport) {
    ReturningAssertions assertions;
    EXPECT_EQ(com_conv_func(context, -1, 0), nullptr);
    EXPECT_EQ(com_conv_func(context, 0, -1), nullptr);
    EXPECT_EQ(com_conv_func(context, -1, -1), nullptr);
    EXPECT_EQ(com_conv_func(context, INT_MIN, 8), nullptr);
    EXPECT_EQ(com_conv_func(context, -1, 50), nullptr);
    EXPECT_EQ(com_conv_func(context, 50, -1), nullptr);
    EXPECT_EQ(assertions.count(), 0);
}

TEST_F(ComConv, FuncAnswersNullForAUserPairWithAnEmptyList) {
    EXPECT_EQ(com_conv_func(context, 40, 0), nullptr);
    EXPECT_EQ(com_conv_func(context, 0, 40), nullptr);
    EXPECT_EQ(com_conv_func(context, 40, 40), nullptr);
    EXPECT_EQ(com_conv_func(context, INT_MAX, INT_MAX), nullptr);
}

TEST_F(ComConv, FuncUsesTheSideOfTheTableButTheBoundForty) {
    // A table of another side, as an owner could set up: cells are found by its side.
    static CS_CONV_FUNC cells[45 * 45];
    cells[45 * 39 + 39] = first_user;
    cells[45 * 40 + 2] = second_user;
    CS_CONV_FUNC *const own = context->ctxcvttbl.cvttbl;
    context->ctxcvttbl = {cells, 45};
    EXPECT_EQ(com_conv_func(context, 39, 39), first_user);
    EXPECT_EQ(com_conv_func(context, 40, 2), nullptr) << "an id of 40 is a user type whatever the side";
    context->ctxcvttbl = {own, 40};
}

TEST_F(ComConv, BitHasNoConversionToMoney) {
    EXPECT_EQ(com_conv_func(context, 11, 14), nullptr);
    EXPECT_EQ(com_conv_func(context, 11, 15), nullptr);
}

TEST_F(ComConv, SensitivityHasACellToIntThatBoundaryHasNot) {
    EXPECT_EQ(com_conv_func(context, 21, 8), comn_i8toi4);
    EXPECT_EQ(com_conv_func(context, 22, 8), nullptr);
}

// ---- com_conv_install, com_conv_default: built-in cells --------------------------------------

TEST_F(ComConv, InstallReplacesACellAndDefaultBringsItBack) {
    BareContext other;
    ASSERT_EQ(com_conv_init(other), CS_SUCCEED);
    EXPECT_EQ(com_conv_install(context, 6, 7, first_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 6, 7), first_user);
    EXPECT_EQ(com_conv_func(other, 6, 7), comn_i1toi2);
    EXPECT_EQ(Com__cnvrt_array[40 * 6 + 7], comn_i1toi2);
    EXPECT_EQ(context->ctxusrcvttbl, nullptr);
    EXPECT_EQ(com_conv_default(context, 6, 7), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 6, 7), comn_i1toi2);
}

TEST_F(ComConv, InstallChangesExactlyTheOneCell) {
    for (CS_INT source = 0; source < 40; ++source)
        for (CS_INT destination = 0; destination < 40; ++destination) {
            ASSERT_EQ(com_conv_install(context, source, destination, second_user), CS_SUCCEED);
            ASSERT_EQ(com_conv_func(context, source, destination), second_user);
            int changed = 0;
            for (int cell = 0; cell < 1600; ++cell)
                changed += context->ctxcvttbl.cvttbl[cell] != builtin()[cell];
            ASSERT_EQ(changed, 1) << source << " to " << destination;
            ASSERT_EQ(com_conv_default(context, source, destination), CS_SUCCEED);
            ASSERT_EQ(std::memcmp(context->ctxcvttbl.cvttbl, builtin(), TABLE_BYTES), 0);
        }
}

TEST_F(ComConv, InstallOfNullClosesACell) {
    EXPECT_EQ(com_conv_install(context, 8, 30, nullptr), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 8, 30), nullptr);
    EXPECT_EQ(com_conv_default(context, 8, 30), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 8, 30), comn_i4toi8);
}

TEST_F(ComConv, DefaultOfACellThatNothingFillsClosesIt) {
    EXPECT_EQ(com_conv_install(context, 24, 26, first_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 24, 26), first_user);
    EXPECT_EQ(com_conv_default(context, 24, 26), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 24, 26), nullptr);
}

// Kept on purpose: com_conv_install does not judge negative ids, so one that still lands in the table
// overwrites the cell that it lands on.
TEST_F(ComConv, OddityInstallWithANegativeIdWritesWhereTheIndexPoints) {
    ReturningAssertions assertions;
    EXPECT_EQ(com_conv_install(context, 1, -3, third_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 0, 37), third_user);
    EXPECT_EQ(assertions.count(), 0);
}

TEST_F(ComConv, OddityInstallOfANegativeIdWithAUserTypeMakesANodeThatFuncNeverAnswers) {
    EXPECT_EQ(com_conv_install(context, -1, 50, third_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, -1, 50), nullptr);
    const CsUsrCvtFunc *node = com__conv_usr_struct(context, -1, 50);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->cvtfunc, third_user);
}

TEST_F(ComConv, AnInstalledFunctionIsCalledAsItIs) {
    com_conv_install(context, 8, 100, first_user);
    EXPECT_EQ(com_conv_func(context, 8, 100)(context, nullptr, nullptr, nullptr, nullptr, nullptr), 101);
}

// ---- The list of user conversions -----------------------------------------------------------

void expect_node(const CsUsrCvtFunc *node, CS_INT source, CS_INT destination, CS_CONV_FUNC function) {
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->srctype, source);
    EXPECT_EQ(node->desttype, destination);
    EXPECT_EQ(node->cvtfunc, function);
}

TEST_F(ComConv, UserListIsAChainOfSourcesWithAChainOfDestinationsEach) {
    EXPECT_EQ(com_conv_install(context, 50, 2, first_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_install(context, 50, 3, second_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_install(context, 51, 2, third_user), CS_SUCCEED);
    const CsUsrCvtFunc *head = context->ctxusrcvttbl;
    expect_node(head, 50, 2, first_user);
    expect_node(head->nextdest, 50, 3, second_user);
    expect_node(head->nextsrc, 51, 2, third_user);
    EXPECT_EQ(head->nextdest->nextdest, nullptr);
    EXPECT_EQ(head->nextdest->nextsrc, nullptr);
    EXPECT_EQ(head->nextsrc->nextdest, nullptr);
    EXPECT_EQ(head->nextsrc->nextsrc, nullptr);
}

TEST_F(ComConv, NewNodesGoBehindTheLastOfTheirChain) {
    const std::pair<CS_INT, CS_INT> installed[] = {{40, 1}, {8, 99}, {40, 2}, {77, 77}, {8, 40}, {40, 3}, {77, 0}};
    for (const auto &[source, destination] : installed)
        ASSERT_EQ(com_conv_install(context, source, destination, first_user), CS_SUCCEED);
    std::vector<std::pair<CS_INT, CS_INT>> read;
    for (const CsUsrCvtFunc *source = context->ctxusrcvttbl; source != nullptr; source = source->nextsrc)
        for (const CsUsrCvtFunc *node = source; node != nullptr; node = node->nextdest) {
            read.emplace_back(node->srctype, node->desttype);
            EXPECT_TRUE(node == source || node->nextsrc == nullptr);
        }
    const std::vector<std::pair<CS_INT, CS_INT>> expected = {{40, 1}, {40, 2},  {40, 3}, {8, 99},
                                                             {8, 40}, {77, 77}, {77, 0}};
    EXPECT_EQ(read, expected);
}

TEST_F(ComConv, InstallOfAKnownPairReusesItsNode) {
    com_conv_install(context, 50, 2, first_user);
    com_conv_install(context, 50, 3, first_user);
    const CsUsrCvtFunc *head = context->ctxusrcvttbl;
    const CsUsrCvtFunc *second = head->nextdest;
    FailingAllocator allocator(1, FailingAllocator::LASTING); // so no memory is asked for
    EXPECT_EQ(com_conv_install(context, 50, 2, second_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_install(context, 50, 3, third_user), CS_SUCCEED);
    EXPECT_EQ(context->ctxusrcvttbl, head);
    EXPECT_EQ(head->nextdest, second);
    EXPECT_EQ(head->cvtfunc, second_user);
    EXPECT_EQ(second->cvtfunc, third_user);
}

TEST_F(ComConv, DefaultOfAUserPairClosesItAndKeepsTheNodeForALaterInstall) {
    com_conv_install(context, 50, 2, first_user);
    const CsUsrCvtFunc *node = context->ctxusrcvttbl;
    EXPECT_EQ(com_conv_default(context, 50, 2), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 50, 2), nullptr);
    EXPECT_EQ(context->ctxusrcvttbl, node);
    expect_node(node, 50, 2, nullptr);
    EXPECT_EQ(com_conv_install(context, 50, 2, second_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 50, 2), second_user);
    EXPECT_EQ(context->ctxusrcvttbl, node);
    EXPECT_EQ(node->nextdest, nullptr);
    EXPECT_EQ(node->nextsrc, nullptr);
}

TEST_F(ComConv, DefaultOfAnUnknownUserPairDoesNothing) {
    com_conv_install(context, 50, 2, first_user);
    EXPECT_EQ(com_conv_default(context, 50, 3), CS_SUCCEED);
    EXPECT_EQ(com_conv_default(context, 51, 2), CS_SUCCEED);
    EXPECT_EQ(com_conv_default(context, 0, 50), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 50, 2), first_user);
    EXPECT_EQ(context->ctxusrcvttbl->nextdest, nullptr);
    EXPECT_EQ(context->ctxusrcvttbl->nextsrc, nullptr);
}

TEST_F(ComConv, OneUserIdIsEnoughForTheUserList) {
    EXPECT_EQ(com_conv_install(context, 39, 40, first_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_install(context, 40, 39, second_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_func(context, 39, 40), first_user);
    EXPECT_EQ(com_conv_func(context, 40, 39), second_user);
    EXPECT_EQ(std::memcmp(context->ctxcvttbl.cvttbl, builtin(), TABLE_BYTES), 0);
}

TEST_F(ComConv, StructAnswersTheNodeOrNull) {
    com_conv_install(context, 50, 2, first_user);
    com_conv_install(context, 50, 3, second_user);
    EXPECT_EQ(com__conv_usr_struct(context, 50, 2), context->ctxusrcvttbl);
    EXPECT_EQ(com__conv_usr_struct(context, 50, 3), context->ctxusrcvttbl->nextdest);
    EXPECT_EQ(com__conv_usr_struct(context, 50, 4), nullptr);
    EXPECT_EQ(com__conv_usr_struct(context, 52, 2), nullptr);
}

TEST_F(ComConv, StructDoesNotGoBackToTheChainOfSources) {
    // Only a list from another hand has one source twice: the first node of the source decides.
    CsUsrCvtFunc second = {60, 3, second_user, nullptr, nullptr};
    CsUsrCvtFunc first = {60, 2, first_user, nullptr, &second};
    context->ctxusrcvttbl = &first;
    EXPECT_EQ(com__conv_usr_struct(context, 60, 2), &first);
    EXPECT_EQ(com__conv_usr_struct(context, 60, 3), nullptr);
    EXPECT_EQ(com_conv_func(context, 60, 3), nullptr);
    context->ctxusrcvttbl = nullptr;
}

TEST_F(ComConv, UsrInstallTakesBuiltInPairsTooWhenCalledItself) {
    EXPECT_EQ(com__conv_usr_install(context, 6, 7, first_user), CS_SUCCEED);
    expect_node(context->ctxusrcvttbl, 6, 7, first_user);
    EXPECT_EQ(com_conv_func(context, 6, 7), comn_i1toi2) << "the table decides for built-in ids";
}

// Every step of a random history against a model: a map of pairs.
TEST_F(ComConv, RandomInstallsAndDefaultsFollowAModel) {
    std::mt19937_64 random(20240312);
    const CS_INT ids[] = {0, 6, 39, 40, 41, 50, 1000, INT_MAX};
    const CS_CONV_FUNC functions[] = {first_user, second_user, third_user, nullptr};
    std::map<std::pair<CS_INT, CS_INT>, CS_CONV_FUNC> model;
    for (int step = 0; step < 20000; ++step) {
        const std::pair pair(ids[random() % 8], ids[random() % 8]);
        const bool is_builtin = pair.first < 40 && pair.second < 40;
        if (random() % 3 != 0) {
            model[pair] = functions[random() % 4];
            ASSERT_EQ(com_conv_install(context, pair.first, pair.second, model[pair]), CS_SUCCEED);
        } else {
            model[pair] = is_builtin ? builtin()[40 * pair.first + pair.second] : nullptr;
            ASSERT_EQ(com_conv_default(context, pair.first, pair.second), CS_SUCCEED);
        }
        for (const auto &[known, function] : model)
            ASSERT_EQ(com_conv_func(context, known.first, known.second), function);
    }
}

// ---- Out of memory --------------------------------------------------------------------------

TEST_F(ComConv, InstallOutOfMemoryLeavesTheListAsItWas) {
    // In an empty list, behind the last source, and behind the last destination.
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int nodes = 0; nodes < 3; ++nodes)
            for (const CS_INT source : {50, 60}) {
                BareContext own;
                ASSERT_EQ(com_conv_init(own), CS_SUCCEED);
                for (CS_INT destination = 0; destination < nodes; ++destination)
                    ASSERT_EQ(com_conv_install(own, 50, destination, first_user), CS_SUCCEED);
                CS_RETCODE status;
                int asked, held;
                {
                    FailingAllocator allocator(1, span);
                    status = com_conv_install(own, source, 99, second_user);
                    asked = allocator.asked();
                    held = allocator.held();
                }
                EXPECT_EQ(status, CS_MEM_ERROR);
                EXPECT_EQ(asked, 1);
                EXPECT_EQ(held, 0);
                EXPECT_EQ(com_conv_func(own, source, 99), nullptr);
                int found = 0;
                for (const CsUsrCvtFunc *node = own->ctxusrcvttbl; node != nullptr; node = node->nextdest) {
                    expect_node(node, 50, found++, first_user);
                    EXPECT_EQ(node->nextsrc, nullptr);
                }
                EXPECT_EQ(found, nodes);
                EXPECT_EQ(com_conv_install(own, source, 99, second_user), CS_SUCCEED);
                EXPECT_EQ(com_conv_func(own, source, 99), second_user);
            }
}

TEST_F(ComConv, InstallOfACellNeedsNoMemory) {
    FailingAllocator allocator(1, FailingAllocator::LASTING);
    EXPECT_EQ(com_conv_install(context, 6, 7, first_user), CS_SUCCEED);
    EXPECT_EQ(com_conv_default(context, 6, 7), CS_SUCCEED);
}

// A whole life of a context, with each allocation failing in turn.
TEST(ComConvMemory, EveryFailingAllocationIsToldAndLeaksNothing) {
    const auto life = [](CS_CONTEXT *context) {
        CS_RETCODE worst = com_conv_init(context);
        if (worst == CS_SUCCEED)
            for (CS_INT source = 40; source < 43; ++source)
                for (CS_INT destination = 0; destination < 3; ++destination) {
                    const CS_RETCODE status = com_conv_install(context, source, destination, first_user);
                    if (status != CS_SUCCEED)
                        worst = status;
                }
        com_conv_free(context);
        return worst;
    };
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int n = 1; n <= 11; ++n) {
            BareContext context;
            CS_RETCODE status;
            int held;
            {
                FailingAllocator allocator(n, span);
                status = life(context);
                held = allocator.held();
            }
            EXPECT_EQ(status, n <= 10 ? CS_MEM_ERROR : CS_SUCCEED) << n;
            EXPECT_EQ(held, 0) << n;
        }
}

// ---- Broken contracts -----------------------------------------------------------------------

using ComConvDeathTest = ComConv;

TEST_F(ComConvDeathTest, NullContext) {
    EXPECT_NULL_REPORT(com_conv_init(nullptr), "com_conv");
    EXPECT_NULL_REPORT(com_conv_free(nullptr), "com_conv");
    EXPECT_NULL_REPORT(com_conv_func(nullptr, 0, 0), "com_conv");
    EXPECT_NULL_REPORT(com_conv_install(nullptr, 0, 0, first_user), "com_conv");
    EXPECT_NULL_REPORT(com_conv_default(nullptr, 0, 0), "com_conv");
    EXPECT_NULL_REPORT(com__conv_usr_struct(nullptr, 50, 0), "com_conv");
    EXPECT_NULL_REPORT(com__conv_usr_install(nullptr, 50, 0, first_user), "com_conv");
}

TEST_F(ComConvDeathTest, NullContextComesBeforeANegativeId) {
    EXPECT_NULL_REPORT(com_conv_func(nullptr, -1, -1), "com_conv");
    EXPECT_NULL_REPORT(com_conv_default(nullptr, -1, -1), "com_conv");
}

TEST_F(ComConv, NullContextReturnsWhereReportsReturn) {
    ReturningAssertions assertions;
    EXPECT_EQ(com_conv_init(nullptr), CS_FAIL);
    EXPECT_EQ(com_conv_free(nullptr), CS_FAIL);
    EXPECT_EQ(com_conv_func(nullptr, 0, 0), nullptr);
    EXPECT_EQ(com_conv_install(nullptr, 0, 0, first_user), CS_FAIL);
    EXPECT_EQ(com_conv_default(nullptr, 0, 0), CS_FAIL);
    EXPECT_EQ(com__conv_usr_struct(nullptr, 50, 0), nullptr);
    EXPECT_EQ(com__conv_usr_install(nullptr, 50, 0, first_user), CS_FAIL);
    EXPECT_EQ(assertions.count(), 7);
}

TEST(ComConvTableDeathTest, ContextWithoutATable) {
    BareContext context;
    EXPECT_NULL_REPORT(com_conv_func(context, 6, 7), "com_conv");
    EXPECT_NULL_REPORT(com_conv_install(context, 6, 7, first_user), "com_conv");
    EXPECT_NULL_REPORT(com_conv_install(context, 50, 7, first_user), "com_conv");
    EXPECT_NULL_REPORT(com_conv_default(context, 6, 7), "com_conv");
}

TEST(ComConvTable, ContextWithoutATableReturnsWhereReportsReturn) {
    BareContext context;
    ReturningAssertions assertions;
    EXPECT_EQ(com_conv_func(context, 6, 7), nullptr);
    EXPECT_EQ(com_conv_install(context, 6, 7, first_user), CS_FAIL);
    EXPECT_EQ(com_conv_install(context, 50, 7, first_user), CS_FAIL);
    EXPECT_EQ(com_conv_default(context, 6, 7), CS_FAIL);
    EXPECT_EQ(assertions.count(), 4);
    EXPECT_EQ(context->ctxusrcvttbl, nullptr);
    EXPECT_EQ(com_conv_func(context, 50, 7), nullptr) << "user pairs need no table";
    EXPECT_EQ(assertions.count(), 4);
}

TEST_F(ComConvDeathTest, DefaultOfANegativeId) {
    EXPECT_BOMB(com_conv_default(context, -1, 0), "com_conv");
    EXPECT_BOMB(com_conv_default(context, 0, -1), "com_conv");
    EXPECT_BOMB(com_conv_default(context, -1, 50), "com_conv");
    EXPECT_BOMB(com_conv_default(context, 50, INT_MIN), "com_conv");
}

TEST_F(ComConv, DefaultOfANegativeIdChangesNothingWhereReportsReturn) {
    com_conv_install(context, 6, 7, first_user);
    com_conv_install(context, -1, 50, second_user);
    ReturningAssertions assertions;
    EXPECT_EQ(com_conv_default(context, -1, 50), CS_FAIL);
    EXPECT_EQ(com_conv_default(context, -1, 6), CS_FAIL);
    EXPECT_EQ(com_conv_default(context, 6, -1), CS_FAIL);
    EXPECT_EQ(assertions.count(), 3);
    EXPECT_EQ(com_conv_func(context, 6, 7), first_user);
    EXPECT_EQ(com__conv_usr_struct(context, -1, 50)->cvtfunc, second_user);
}

} // namespace
