// The doubly linked list, the queue and the stack.
#include "support/lists.h"

#include <algorithm>
#include <random>
#include <vector>

using namespace support;

namespace {

constexpr const char *STEM = "lm_dlink";
using Numbers = std::vector<std::intptr_t>;

Numbers backwards(LM_HANDLE *list) {
    Numbers result;
    for (const DLinkNode *node = static_cast<DLinkInfo *>(list->list_state)->tail; node; node = node->previous)
        result.push_back(number_of(node->data));
    return {result.rbegin(), result.rend()};
}

class LmDlink : public ListTest {
protected:
    void SetUp() override {
        ListTest::SetUp();
        list = make(LM_DLINK);
    }
    Answer insert(std::intptr_t data, CS_INT position = LM_OP_LAST, DLinkNode **cursor = nullptr) {
        return operate(list, LM_OP_INSERT, cursor, position, data);
    }
    Answer go(CS_INT operation, DLinkNode **cursor = nullptr, std::intptr_t data = 0) {
        return operate(list, operation, cursor, LM_UNUSED, data);
    }
    void fill(const Numbers &numbers) {
        for (const std::intptr_t number : numbers)
            ASSERT_EQ(insert(number), succeeds(number));
    }
    void expect(const Numbers &numbers) {
        EXPECT_EQ(walk(list), numbers);
        EXPECT_EQ(backwards(list), numbers);
        EXPECT_EQ(load_of(list), static_cast<CS_INT>(numbers.size()));
    }

    LM_HANDLE *list = nullptr;
};
using LmDlinkDeathTest = LmDlink;

// ---- Linked list -----------------------------------------------------------------------------------------------

TEST_F(LmDlink, TheFirstEntryIsHeadTailAndCursorWhateverThePosition) {
    for (const CS_INT position : {27, 28, 32, 33, 0, LM_UNUSED}) {
        EXPECT_EQ(insert(5, position), succeeds(5));
        const auto *info = static_cast<DLinkInfo *>(list->list_state);
        EXPECT_EQ(info->head, list->cur_ptr);
        EXPECT_EQ(info->tail, list->cur_ptr);
        EXPECT_EQ(list->cur_ptr->state, LM_INSERTED);
        EXPECT_EQ(go(LM_OP_DELETE), succeeds(0));
    }
}

TEST_F(LmDlink, TheFirstEntryByACallersCursorSetsTheListsOwnToo) {
    DLinkNode *cursor = nullptr;
    EXPECT_EQ(insert(5, LM_OP_LAST, &cursor), succeeds(5));
    EXPECT_NE(cursor, nullptr);
    EXPECT_EQ(list->cur_ptr, cursor);
}

TEST_F(LmDlink, InsertAtEveryPositionMovesTheCursorToTheNewEntry) {
    fill({1, 2, 3});
    EXPECT_EQ(insert(0, LM_OP_FIRST), succeeds(0));
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(0));
    EXPECT_EQ(insert(10, LM_POS_BEFORE), succeeds(10)) << "at the head";
    EXPECT_EQ(insert(11, LM_POS_AFTER), succeeds(11));
    EXPECT_EQ(go(LM_OP_LAST), succeeds(3));
    EXPECT_EQ(insert(12, LM_POS_AFTER), succeeds(12)) << "at the tail";
    EXPECT_EQ(insert(13, LM_POS_BEFORE), succeeds(13));
    EXPECT_EQ(insert(14, LM_OP_LAST), succeeds(14));
    expect({10, 11, 0, 1, 2, 3, 13, 12, 14});
}

TEST_F(LmDlink, ACallersCursorIsUsedAndMovedInsteadOfTheListsOwn) {
    fill({1, 2, 3, 4});
    DLinkNode *cursor = nullptr;
    EXPECT_EQ(go(LM_OP_CURRENT, &cursor), succeeds(4)) << "an empty one starts from the list's own";
    EXPECT_EQ(cursor, list->cur_ptr);
    EXPECT_EQ(go(LM_OP_FIRST, &cursor), succeeds(1));
    EXPECT_EQ(go(LM_OP_NEXT, &cursor), succeeds(2));
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(4)) << "the list's own stays";
    EXPECT_EQ(insert(9, LM_POS_AFTER, &cursor), succeeds(9));
    EXPECT_EQ(go(LM_OP_UPDATE, &cursor, 8), succeeds(8));
    EXPECT_EQ(go(LM_OP_PREV, &cursor), succeeds(2));
    EXPECT_EQ(go(LM_OP_DELETE, &cursor), succeeds(1));
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(4));
    expect({1, 8, 3, 4});
}

TEST_F(LmDlink, DeletingTheMiddleMovesTheCursorBack) {
    fill({1, 2, 3});
    go(LM_OP_PREV);
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(1));
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(1));
    expect({1, 3});
}

TEST_F(LmDlink, DeletingTheHeadMovesTheCursorForward) {
    fill({1, 2, 3});
    go(LM_OP_FIRST);
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(2));
    expect({2, 3});
}

TEST_F(LmDlink, DeletingTheTailMovesTheCursorBack) {
    fill({1, 2, 3});
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(2));
    expect({1, 2});
}

TEST_F(LmDlink, DeletingDownToOneLeavesItHeadAndTail) {
    fill({1, 2});
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(1));
    const auto *info = static_cast<DLinkInfo *>(list->list_state);
    EXPECT_EQ(info->head, list->cur_ptr);
    EXPECT_EQ(info->tail, list->cur_ptr);
    expect({1});
}

TEST_F(LmDlink, DeletingTheLastEntryLeavesNoCursorAndCurrentSucceedsWithNull) {
    fill({1});
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(0));
    EXPECT_EQ(list->cur_ptr, nullptr);
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(0));
    EXPECT_EQ(go(LM_OP_FIRST), succeeds(0));
    EXPECT_EQ(go(LM_OP_LAST), succeeds(0));
    expect({});
}

TEST_F(LmDlink, TheListsOwnCursorDoesNotOutliveAnEntryDeletedByACallers) {
    fill({1, 2, 3});
    DLinkNode *cursor = list->cur_ptr;
    EXPECT_EQ(go(LM_OP_DELETE, &cursor), succeeds(2));
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(2));
}

TEST_F(LmDlink, WalkingOffAnEndFailsAndTouchesNothing) {
    EXPECT_EQ(go(LM_OP_NEXT), fails()) << "no cursor at all";
    EXPECT_EQ(go(LM_OP_PREV), fails());
    fill({1, 2});
    EXPECT_EQ(go(LM_OP_NEXT), fails());
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(2)) << "the cursor stays on the tail";
    EXPECT_EQ(go(LM_OP_PREV), succeeds(1));
    EXPECT_EQ(go(LM_OP_PREV), fails());
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(1));
    DLinkNode *cursor = nullptr;
    EXPECT_EQ(go(LM_OP_PREV, &cursor), fails());
    EXPECT_EQ(cursor, nullptr) << "a caller's cursor stays empty";
}

TEST_F(LmDlink, NoAnswerIsAskedFor) {
    EXPECT_EQ(lm_list_op(list, LM_OP_INSERT, nullptr, LM_OP_LAST, datum(3), nullptr), CS_SUCCEED);
    EXPECT_EQ(lm_list_op(list, LM_OP_CURRENT, nullptr, LM_UNUSED, nullptr, nullptr), CS_SUCCEED);
    expect({3});
}

TEST_F(LmDlink, PrintCallsTheListsFunctionOnTheEntryAtTheCursor) {
    fill({1, 2, 3});
    for (const CS_INT operation : {LM_OP_PRINT, LM_OP_PRINTALL})
        EXPECT_EQ(go(operation).status, CS_FAIL) << "without a function";
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    walked.clear();
    stop_at = 3; // what the function says of a single entry does not count
    EXPECT_EQ(go(LM_OP_PRINT), succeeds(3));
    EXPECT_EQ(walked, Numbers{3});
    DLinkNode *first = static_cast<DLinkInfo *>(list->list_state)->head;
    EXPECT_EQ(go(LM_OP_PRINT, &first), succeeds(1));
    EXPECT_EQ(walked, (Numbers{3, 1}));
    walked.clear();
    stop_at = -1;
    EXPECT_EQ(go(LM_OP_PRINTALL), succeeds(3));
    EXPECT_EQ(walked, (Numbers{1, 2, 3}));
}

TEST_F(LmDlink, PrintOfNoEntryFails) {
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    walked.clear();
    EXPECT_EQ(go(LM_OP_PRINT), fails());
    EXPECT_EQ(go(LM_OP_PRINTALL), succeeds(0));
    EXPECT_EQ(walked, Numbers{});
}

TEST_F(LmDlink, AZeroEndsAWalkAndIsItsStatus) {
    fill({1, 2, 3});
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    CS_PRINT_FUNC function = collect;
    CS_VOID *data = UNTOUCHED;
    walked.clear();
    stop_at = 2;
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, &function, &data), 0);
    EXPECT_EQ(data, datum(3)) << "the cursor, which no walk moves";
    EXPECT_EQ(go(LM_OP_PRINTALL).status, 0);
    EXPECT_EQ(walked, (Numbers{1, 2, 1, 2}));
}

TEST_F(LmDlink, AWalkMayDeleteWhatItIsOn) {
    static LM_HANDLE *walked_list;
    walked_list = list;
    CS_PRINT_FUNC function = [](CS_VOID *) -> CS_INT {
        DLinkNode *first = static_cast<DLinkInfo *>(walked_list->list_state)->head;
        return lm_list_op(walked_list, LM_OP_DELETE, &first, LM_UNUSED, nullptr, nullptr);
    };
    for (const CS_INT operation : {LM_OP_WALK, LM_OP_PRINTALL}) {
        fill({1, 2, 3}); // the list's own cursor rests on an entry that goes
        set_property(list, LM_PROP_PRINT_FUNC, function);
        CS_VOID *data = UNTOUCHED;
        EXPECT_EQ(lm_list_op(list, operation, nullptr, LM_UNUSED, &function, &data), CS_SUCCEED);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(list->cur_ptr, nullptr);
        expect({});
    }
}

TEST_F(LmDlink, AWalkWithoutAFunctionFails) {
    fill({1});
    CS_PRINT_FUNC none = nullptr;
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, &none, nullptr), CS_FAIL);
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, nullptr, nullptr), CS_FAIL);
}

TEST_F(LmDlinkDeathTest, BrokenOperationsLeaveTheListAsItWas) {
    const auto call = [&](CS_INT operation, CS_INT size) {
        return [=, this] {
            CS_VOID *data = UNTOUCHED;
            const CS_RETCODE status = lm_list_op(list, operation, nullptr, size, datum(9), &data);
            EXPECT_EQ(data, UNTOUCHED);
            return status;
        };
    };
    for (const CS_INT operation : {LM_OP_DELETE, LM_OP_UPDATE})
        expect_broken(STEM, call(operation, LM_UNUSED));
    fill({1, 2});
    for (const CS_INT operation : {LM_OP_FIND + 0, 0, 19, 32, -1})
        expect_broken(STEM, call(operation, LM_UNUSED));
    for (const CS_INT position : {0, 20, 26, 29, 31, 34, LM_UNUSED})
        expect_broken(STEM, call(LM_OP_INSERT, position));
    expect({1, 2});
    list->cur_ptr = nullptr;
    for (const CS_INT position : {LM_POS_BEFORE, LM_POS_AFTER})
        expect_broken(STEM, call(LM_OP_INSERT, position));
    expect_broken(STEM, call(LM_OP_DELETE, LM_UNUSED));
    expect({1, 2});
}

TEST_F(LmDlinkDeathTest, DeletingAnEntryTwiceOrFromAnEmptyCountIsBroken) {
    set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, 2);
    fill({1, 2});
    DLinkNode *stale = list->cur_ptr;
    go(LM_OP_DELETE);
    ASSERT_EQ(stale->state, LM_UNINITIALIZED) << "it rests in the pool";
    expect_broken(STEM, [&] {
        DLinkNode *cursor = stale;
        return lm_list_op(list, LM_OP_DELETE, &cursor, LM_UNUSED, nullptr, nullptr);
    });
    list->hdlprop->handle_load = 0;
    expect_broken(STEM, [&] { return go(LM_OP_DELETE).status; });
    list->hdlprop->handle_load = 1;
    expect({1});
}

TEST_F(LmDlinkDeathTest, DeletingWithACountThatDoesNotFitTheEntriesIsBroken) {
    fill({1});
    list->hdlprop->handle_load = 2; // no entry would be left for a count of 1
    expect_broken(STEM, [&] { return go(LM_OP_DELETE).status; });
    list->hdlprop->handle_load = 1;
    fill({2});
    list->hdlprop->handle_load = 1; // an entry would be left
    expect_broken(STEM, [&] { return go(LM_OP_DELETE).status; });
    list->hdlprop->handle_load = 2;
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(2));
    expect({1, 2});
}

TEST_F(LmDlinkDeathTest, MissingHandles) {
    CS_VOID *data = UNTOUCHED;
    expect_broken(STEM, [&] { return lm___api_dlink_op(nullptr, LM_OP_CURRENT, nullptr, 0, nullptr, &data); });
    expect_broken(STEM, [&] { return lm___api_queue_op(nullptr, LM_OP_CURRENT, nullptr, 0, nullptr, &data); });
    expect_broken(STEM, [&] { return lm___api_stack_op(nullptr, LM_OP_CURRENT, nullptr, 0, nullptr, &data); });
    expect_broken(STEM, [] { return lm___api_dlink_init(nullptr); });
    expect_broken(STEM, [] { return lm___api_queue_drop(nullptr); });
    expect_broken(STEM, [] { return lm___api_stack_drop(nullptr); });
    EXPECT_EQ(data, UNTOUCHED);
}

TEST_F(LmDlinkDeathTest, ACountThatDoesNotFitTheEntriesIsBrokenAtTheDrop) {
    LM_HANDLE *broken = make(LM_DLINK, "broken");
    operate(broken, LM_OP_INSERT, nullptr, LM_OP_LAST, 1);
    broken->hdlprop->handle_load = 2;
    expect_broken(STEM, [&] { return lm_list_drop(broken, LM_FORCE_DROP); });
    EXPECT_EQ(walk(broken), Numbers{}) << "its entries went, and nothing holds on to them";
    EXPECT_EQ(operate(broken, LM_OP_CURRENT), succeeds(0));
    broken->hdlprop->handle_load = 0;
    EXPECT_EQ(lm_list_drop(broken, LM_UNUSED), CS_SUCCEED);
}

TEST_F(LmDlink, OutOfMemoryAtAnInsertLeavesTheListAsItWas) {
    for (const CS_INT position : {27, 28, 32, 33}) {
        fill({1, 2});
        memory.fail(1, WatchedMemory::LASTING);
        DLinkNode *cursor = nullptr;
        EXPECT_EQ(insert(3, position), fails(CS_MEM_ERROR));
        EXPECT_EQ(insert(3, position, &cursor), fails(CS_MEM_ERROR));
        EXPECT_EQ(cursor, nullptr);
        memory.succeed();
        EXPECT_EQ(go(LM_OP_CURRENT), succeeds(2));
        expect({1, 2});
        go(LM_OP_DELETE);
        go(LM_OP_DELETE);
    }
    memory.fail(1, WatchedMemory::ONCE);
    EXPECT_EQ(insert(3), fails(CS_MEM_ERROR));
    expect({});
    EXPECT_EQ(insert(3), succeeds(3));
}

// Two cursors, every operation, a pool that changes its size: against a plain vector.
TEST_F(LmDlink, RandomOperationsAgainstAVector) {
    std::mt19937_64 random(83001);
    Numbers model;
    std::intptr_t own = 0; // what the cursors rest on; 0 is nothing
    std::intptr_t callers = 0;
    DLinkNode *cursor = nullptr;
    std::intptr_t last = 0;
    const auto place = [&](std::intptr_t number) { return std::find(model.begin(), model.end(), number); };
    for (int i = 0; i < 60000; ++i) {
        const bool by_caller = random() % 2 == 0;
        DLinkNode **key = by_caller ? &cursor : nullptr;
        std::intptr_t at = by_caller && callers != 0 ? callers : own;
        Answer got = fails();
        const CS_INT operation = std::vector<CS_INT>{20, 20, 21, 23, 24, 25, 26, 27, 28}[random() % 9];
        bool moved = true;
        if (operation == LM_OP_INSERT && model.size() < 40) {
            const CS_INT position = std::vector<CS_INT>{27, 28, 32, 33}[random() % 4];
            if (model.empty())
                model.push_back(own = last + 1);
            else if (position == LM_OP_FIRST)
                model.insert(model.begin(), last + 1);
            else if (position == LM_OP_LAST)
                model.push_back(last + 1);
            else
                model.insert(place(at) + (position == LM_POS_AFTER), last + 1);
            at = ++last;
            got = insert(last, position, key);
        } else if (operation == LM_OP_DELETE && !model.empty()) {
            const auto found = place(at);
            const std::intptr_t gone = at;
            at = found != model.begin() ? found[-1] : model.size() > 1 ? found[1] : 0;
            model.erase(found);
            if (own == gone)
                own = at;
            if (callers == gone && !by_caller) {
                callers = 0;
                cursor = nullptr;
            }
            got = go(LM_OP_DELETE, key);
        } else if (operation == LM_OP_UPDATE && !model.empty()) {
            const auto found = place(at);
            *found = ++last;
            if (own == at)
                own = last;
            if (callers == at)
                callers = last;
            at = last;
            got = go(LM_OP_UPDATE, key, last);
        } else if (operation == LM_OP_NEXT || operation == LM_OP_PREV) {
            const auto found = place(at);
            moved = operation == LM_OP_NEXT ? at != 0 && found + 1 != model.end() : at != 0 && found != model.begin();
            if (moved)
                at = operation == LM_OP_NEXT ? found[1] : found[-1];
            got = go(operation, key);
        } else if (operation == LM_OP_FIRST || operation == LM_OP_LAST) {
            at = model.empty() ? 0 : operation == LM_OP_FIRST ? model.front() : model.back();
            got = go(operation, key);
        } else {
            got = go(LM_OP_CURRENT, key);
        }
        if (moved)
            (by_caller ? callers : own) = at;
        ASSERT_EQ(got, moved ? succeeds(at) : fails()) << "operation " << operation << " at step " << i;
        ASSERT_EQ(cursor == nullptr ? 0 : number_of(cursor->data), callers) << i;
        if (random() % 64 == 0) {
            const CS_INT size = static_cast<CS_INT>(random() % 20);
            ASSERT_EQ(set_property(list, LM_PROP_MAX_POOLSIZE, size), CS_SUCCEED);
        }
        ASSERT_LE(list->free_nodes, list->hdlprop->max_poolsize);
        if (i % 16 == 0) {
            ASSERT_EQ(walk(list), model) << i;
            ASSERT_EQ(backwards(list), model) << i;
            ASSERT_EQ(load_of(list), static_cast<CS_INT>(model.size()));
        }
        if (memory.released().size() > 1000) {
            ASSERT_TRUE(memory.all_wiped());
            memory.forget_released();
        }
    }
}

// ---- Queue -----------------------------------------------------------------------------------------------------

class LmQueue : public LmDlink {
protected:
    void SetUp() override {
        ListTest::SetUp();
        list = make(LM_QUEUE);
    }
};
using LmQueueDeathTest = LmQueue;

TEST_F(LmQueue, EntriesGoInAtTheTail) {
    for (std::intptr_t i = 1; i <= 3; ++i)
        EXPECT_EQ(go(LM_OP_INSERT, nullptr, i), succeeds(i));
    expect({1, 2, 3});
}

TEST_F(LmQueue, CurrentIsAlwaysTheHead) {
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(0)) << "or null";
    go(LM_OP_INSERT, nullptr, 1);
    go(LM_OP_INSERT, nullptr, 2);
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(1));
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(1));
}

TEST_F(LmQueue, OddityADeleteAnswersTheNewHead) {
    for (std::intptr_t i = 1; i <= 3; ++i)
        go(LM_OP_INSERT, nullptr, i);
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(2)) << "1 went";
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(3));
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(0)) << "the last one answers null";
    expect({});
}

TEST_F(LmQueue, KeyAndPositionDoNotCount) {
    fill({1, 2});
    DLinkNode *cursor = list->cur_ptr;
    DLinkNode *const before = cursor;
    EXPECT_EQ(insert(3, LM_OP_FIRST, &cursor), succeeds(3));
    EXPECT_EQ(go(LM_OP_DELETE, &cursor), succeeds(2));
    EXPECT_EQ(cursor, before);
    expect({2, 3});
}

TEST_F(LmQueue, PrintsAndWalksArePassedOn) {
    fill({1, 2, 3});
    EXPECT_EQ(go(LM_OP_PRINT), fails());
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    EXPECT_EQ(walk(list), (Numbers{1, 2, 3}));
    EXPECT_EQ(go(LM_OP_PRINTALL), succeeds(3));
    EXPECT_EQ(go(LM_OP_PRINT), succeeds(3)) << "the cursor is on the newest";
    EXPECT_EQ(walked, (Numbers{1, 2, 3, 1, 2, 3, 3}));
}

TEST_F(LmQueueDeathTest, OtherOperationsAndAnEmptyDeleteAreBroken) {
    expect_broken(STEM, [&] {
        const Answer answer = go(LM_OP_DELETE);
        EXPECT_EQ(answer.data, UNTOUCHED);
        return answer.status;
    });
    fill({1});
    for (const CS_INT operation : {22, 23, 24, 25, 27, 28, 0, 32})
        expect_broken(STEM, [&, operation] {
            const Answer answer = go(operation, nullptr, 9);
            EXPECT_EQ(answer.data, UNTOUCHED);
            return answer.status;
        });
    expect({1});
}

TEST_F(LmQueue, OutOfMemoryAtAnInsertLeavesTheQueueAsItWas) {
    fill({1});
    memory.fail(1, WatchedMemory::ONCE);
    EXPECT_EQ(insert(2), fails(CS_MEM_ERROR));
    expect({1});
}

TEST_F(LmQueue, RandomOperationsAgainstAVector) {
    std::mt19937_64 random(83002);
    Numbers model;
    for (int i = 1; i <= 60000; ++i) {
        const auto choice = random() % 5;
        if (choice < 2 && model.size() < 50) {
            model.push_back(i);
            ASSERT_EQ(insert(i), succeeds(i));
        } else if (choice < 4 && !model.empty()) {
            ASSERT_EQ(go(LM_OP_CURRENT), succeeds(model.front()));
            model.erase(model.begin());
            ASSERT_EQ(go(LM_OP_DELETE), succeeds(model.empty() ? 0 : model.front()));
        } else {
            ASSERT_EQ(go(LM_OP_CURRENT), succeeds(model.empty() ? 0 : model.front()));
        }
        if (i % 16 == 0) {
            ASSERT_EQ(walk(list), model);
        }
        ASSERT_EQ(load_of(list), static_cast<CS_INT>(model.size()));
    }
}

// ---- Stack -----------------------------------------------------------------------------------------------------

class LmStack : public LmDlink {
protected:
    void SetUp() override {
        ListTest::SetUp();
        list = make(LM_STACK);
    }
};
using LmStackDeathTest = LmStack;

TEST_F(LmStack, EntriesGoInAtTheHeadWhereTheCursorRests) {
    for (std::intptr_t i = 1; i <= 3; ++i) {
        EXPECT_EQ(go(LM_OP_INSERT, nullptr, i), succeeds(i));
        EXPECT_EQ(go(LM_OP_CURRENT), succeeds(i));
    }
    expect({3, 2, 1});
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(2)) << "the new head";
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(2));
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(1));
    EXPECT_EQ(go(LM_OP_DELETE), succeeds(0));
    EXPECT_EQ(go(LM_OP_CURRENT), succeeds(0));
}

TEST_F(LmStack, OddityTheAnswerGoesWhereAVariableSays) {
    CS_VOID *data = UNTOUCHED;
    CS_VOID *where = &data;
    EXPECT_EQ(lm_list_op(list, LM_OP_INSERT, nullptr, LM_UNUSED, datum(7), &where), CS_SUCCEED);
    EXPECT_EQ(data, datum(7));
    EXPECT_EQ(where, &data);
    CS_VOID *nowhere = nullptr;
    EXPECT_EQ(lm_list_op(list, LM_OP_INSERT, nullptr, LM_UNUSED, datum(8), &nowhere), CS_SUCCEED);
    EXPECT_EQ(nowhere, nullptr);
    EXPECT_EQ(lm_list_op(list, LM_OP_DELETE, nullptr, LM_UNUSED, nullptr, nullptr), CS_SUCCEED);
    expect({7});
}

TEST_F(LmStack, PrintsAndWalksArePassedOn) {
    fill({1, 2, 3});
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    EXPECT_EQ(walk(list), (Numbers{3, 2, 1}));
    EXPECT_EQ(go(LM_OP_PRINTALL), succeeds(3));
    EXPECT_EQ(go(LM_OP_PRINT), succeeds(3));
    EXPECT_EQ(walked, (Numbers{3, 2, 1, 3, 2, 1, 3}));
}

TEST_F(LmStackDeathTest, OtherOperationsAndAnEmptyDeleteAreBroken) {
    expect_broken(STEM, [&] {
        const Answer answer = go(LM_OP_DELETE);
        EXPECT_EQ(answer.data, UNTOUCHED);
        return answer.status;
    });
    fill({1});
    for (const CS_INT operation : {22, 23, 24, 25, 27, 28, 0, 32})
        expect_broken(STEM, [&, operation] {
            const Answer answer = go(operation, nullptr, 9);
            EXPECT_EQ(answer.data, UNTOUCHED);
            return answer.status;
        });
    expect({1});
}

TEST_F(LmStack, OutOfMemoryAtAnInsertLeavesTheStackAsItWas) {
    fill({1});
    memory.fail(1, WatchedMemory::ONCE);
    EXPECT_EQ(insert(2), fails(CS_MEM_ERROR));
    expect({1});
}

TEST_F(LmStack, RandomOperationsAgainstAVector) {
    std::mt19937_64 random(83003);
    Numbers model;
    for (int i = 1; i <= 60000; ++i) {
        const auto choice = random() % 5;
        if (choice < 2 && model.size() < 50) {
            model.push_back(i);
            ASSERT_EQ(insert(i), succeeds(i));
        } else if (choice < 4 && !model.empty()) {
            model.pop_back();
            ASSERT_EQ(go(LM_OP_DELETE), succeeds(model.empty() ? 0 : model.back()));
        } else {
            ASSERT_EQ(go(LM_OP_CURRENT), succeeds(model.empty() ? 0 : model.back()));
        }
        if (i % 16 == 0) {
            ASSERT_EQ(walk(list), Numbers(model.rbegin(), model.rend()));
        }
        ASSERT_EQ(load_of(list), static_cast<CS_INT>(model.size()));
    }
}

} // namespace
