// Making and dropping lists of every type, their properties, the change of a table's size, the node pool.
#include "support/lists.h"
#include "support/naive_key_hash.h"

#include <string>
#include <vector>

using namespace support;

namespace {

constexpr const char *STEM = "lm_list";
constexpr CS_INT TYPES[] = {LM_DLINK, LM_CHASH, LM_DHASH, LM_QUEUE, LM_STACK};
using Numbers = std::vector<std::intptr_t>;

class LmList : public ListTest {
protected:
    static Answer insert(LM_HANDLE *list, std::string_view key, std::intptr_t data) {
        return list->hdlprop->list_type == LM_DLINK ? operate(list, LM_OP_INSERT, nullptr, LM_OP_LAST, data)
                                                    : by_key(list, LM_OP_INSERT, key, data);
    }
    LM_HANDLE *current() { return property<LM_HANDLE *>(context, LM_PROP_CURRENT_HANDLEADDR); }
};
using LmListDeathTest = LmList;

TEST(LmListNumbers, TypesOperationsAndPositions) {
    EXPECT_EQ((std::vector<CS_INT>{LM_DLINK, LM_CHASH, LM_DHASH, LM_QUEUE, LM_STACK}),
              (std::vector<CS_INT>{13, 14, 16, 18, 19}));
    EXPECT_EQ((std::vector<CS_INT>{LM_OP_INSERT, LM_OP_DELETE, LM_OP_FIND, LM_OP_UPDATE, LM_OP_NEXT, LM_OP_PREV,
                                   LM_OP_CURRENT, LM_OP_FIRST, LM_OP_LAST, LM_OP_PRINT, LM_OP_PRINTALL, LM_OP_WALK,
                                   LM_POS_BEFORE, LM_POS_AFTER, LM_NOT_FOUND, LM_FORCE_DROP}),
              (std::vector<CS_INT>{20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35}));
    EXPECT_EQ((std::vector<CS_INT>{LM_PROP_HANDLE_LOAD, LM_PROP_CONTEXT_ADDR, LM_PROP_HANDLE_NAME, LM_PROP_PRINT_FUNC,
                                   LM_PROP_COMP_FUNC}),
              (std::vector<CS_INT>{8, 9, 10, 11, 12}));
}

// ---- Creation and drop -----------------------------------------------------------------------------------------

TEST_F(LmList, ANewListOfEveryTypeGoesToTheFrontAndIsCurrent) {
    set_property<CS_INT>(context, LM_PROP_MAX_POOLSIZE, 4);
    CS_INT load = 0;
    LM_HANDLE *previous = nullptr;
    for (const CS_INT type : TYPES) {
        LM_HANDLE *list = make(type);
        EXPECT_EQ(context->first_handle, list);
        EXPECT_EQ(list->next, previous);
        EXPECT_EQ(current(), list);
        EXPECT_EQ(context->cxtprop->cur_handlename, list->hdlprop->handle_name);
        EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), ++load);
        EXPECT_EQ(list->state, LM_INITIALIZED);
        EXPECT_EQ(list->hdlprop->state, LM_INITIALIZED);
        EXPECT_EQ(load_of(list), 0);
        EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_POOLSIZE), type == LM_DHASH ? 0 : 4);
        EXPECT_EQ(list->free_nodes, type == LM_DHASH ? 0 : 4);
        previous = list;
    }
}

TEST_F(LmList, AnAllocatorOfItsOwn) {
    WatchedMemory own;
    LM_HANDLE *list = nullptr;
    ASSERT_EQ(lm_list_alloc_ex(context, LM_CHASH, text("own"), LM_NULLTERM, &list, WatchedMemory::allocate,
                               WatchedMemory::release, &own),
              CS_SUCCEED);
    EXPECT_EQ(own.held(), 5u) << "handle, properties, name, record, table";
    EXPECT_EQ(lm_list_drop(list, LM_UNUSED), CS_SUCCEED);
    EXPECT_EQ(own.held(), 0u);
}

TEST_F(LmList, TheNameIsCopied) {
    char name[] = "abcdef";
    LM_HANDLE *list = nullptr;
    ASSERT_EQ(lm_list_alloc(context, LM_DLINK, name, 3, &list), CS_SUCCEED);
    EXPECT_EQ(list->hdlprop->length, 3);
    std::memset(name, '#', sizeof name);
    EXPECT_EQ(std::string(list->hdlprop->handle_name, 3), "abc");
}

TEST_F(LmList, NullContextsAndHandlesFail) {
    LM_HANDLE *list = nullptr;
    EXPECT_EQ(lm_list_alloc(nullptr, LM_DLINK, text("x"), 1, &list), CS_FAIL);
    EXPECT_EQ(lm_list_alloc_ex(nullptr, LM_DLINK, text("x"), 1, &list, lm___malloc, lm___free, nullptr), CS_FAIL);
    EXPECT_EQ(lm_list_drop(nullptr, LM_UNUSED), CS_FAIL);
    EXPECT_EQ(lm_list_op(nullptr, LM_OP_CURRENT, nullptr, 0, nullptr, nullptr), CS_FAIL);
    EXPECT_EQ(lm_list_prop(nullptr, LM_ACT_GET, LM_PROP_LIST_TYPE, &list, 0, nullptr), CS_FAIL);
}

TEST_F(LmListDeathTest, ANullNameFailsWhereParametersAreCheckedAndIsBrokenElsewhere) {
    LM_HANDLE *list = nullptr;
    expect_broken(STEM, [&] { return lm_list_alloc(context, LM_DLINK, nullptr, 1, &list); });
    context->lmchkparam = CS_TRUE;
    EXPECT_EQ(lm_list_alloc(context, LM_DLINK, nullptr, 1, &list), CS_FAIL);
    EXPECT_EQ(lm___pchk_list_alloc(nullptr, text("x")), CS_FAIL);
    EXPECT_EQ(lm___pchk_list_alloc(context, text("x")), CS_SUCCEED);
}

TEST_F(LmListDeathTest, UnassignedTypes) {
    LM_HANDLE *list = nullptr;
    EXPECT_EQ(lm_list_alloc(context, 17, text("x"), 1, &list), CS_FAIL) << "17 is a plain failure";
    for (const CS_INT type : {15, 0, 12, 20})
        expect_broken(STEM, [&, type] { return lm_list_alloc(context, type, text("x"), 1, &list); });
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 0);
    list = make(LM_DLINK);
    for (const CS_INT type : {15, 17, 99}) {
        list->hdlprop->list_type = type;
        expect_broken(STEM, [&] { return lm_list_op(list, LM_OP_CURRENT, nullptr, 0, nullptr, nullptr); });
    }
    list->hdlprop->list_type = LM_DLINK;
}

TEST_F(LmListDeathTest, DroppingAnUnassignedTypeIsReportedAndGoesTheWayOfItsNeighbour) {
    for (const CS_INT type : {15, 17}) {
        LM_HANDLE *list = make(type == 15 ? LM_DHASH : LM_QUEUE);
        insert(list, "a", 1);
        list->hdlprop->list_type = type;
        expect_broken(STEM, [&] { return lm_list_drop(list, LM_FORCE_DROP); }, CS_SUCCEED);
        EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 0);
    }
}

TEST_F(LmList, DropIsRefusedWhileThereAreEntriesAndForcedTakesThem) {
    for (const CS_INT type : TYPES) {
        const std::size_t held = memory.held();
        LM_HANDLE *list = make(type);
        insert(list, "a", 1);
        EXPECT_EQ(lm_list_drop(list, LM_UNUSED), CS_FAIL);
        EXPECT_EQ(operate(list, LM_OP_CURRENT), succeeds(1));
        EXPECT_EQ(lm_list_drop(list, LM_FORCE_DROP), CS_SUCCEED);
        EXPECT_EQ(memory.held(), held);
        EXPECT_EQ(memory.released().back().memory, list);
        EXPECT_TRUE(memory.released().back().is_stamped());
        EXPECT_EQ(lm_list_drop(make(type), LM_UNUSED), CS_SUCCEED) << "an empty one goes";
    }
}

TEST_F(LmList, DroppingTheCurrentListMakesTheFirstCurrent) {
    LM_HANDLE *first = make(LM_DLINK, "first");
    LM_HANDLE *second = make(LM_DLINK, "second");
    LM_HANDLE *third = make(LM_DLINK, "third");
    EXPECT_EQ(lm_list_drop(second, LM_UNUSED), CS_SUCCEED);
    EXPECT_EQ(current(), third) << "another's drop leaves it";
    EXPECT_EQ(third->next, first);
    EXPECT_EQ(lm_list_drop(third, LM_UNUSED), CS_SUCCEED);
    EXPECT_EQ(current(), first);
    EXPECT_EQ(context->cxtprop->cur_handlename, first->hdlprop->handle_name);
    EXPECT_EQ(lm_list_drop(first, LM_UNUSED), CS_SUCCEED);
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(context->cxtprop->cur_handlename, nullptr);
}

TEST_F(LmListDeathTest, BrokenCalls) {
    LM_HANDLE *list = make(LM_DLINK);
    for (const CS_INT option : {0, LM_FORCE_EXIT})
        expect_broken(STEM, [&, option] { return lm_list_drop(list, option); });
    for (const CS_INT length : {-1, LM_UNUSED})
        expect_broken(STEM, [&, length] {
            LM_HANDLE *other = nullptr;
            return lm_list_alloc(context, LM_DLINK, text("x"), length, &other);
        });
    expect_broken(STEM, [&] { return lm_list_alloc(context, LM_DLINK, text("x"), 1, nullptr); });
    const auto alloc_ex = [&](LM_ALLOCATOR allocate, LM_RELEASER release) {
        return [=, this] {
            auto *untouched = static_cast<LM_HANDLE *>(UNTOUCHED);
            LM_HANDLE *other = untouched;
            const CS_RETCODE status =
                lm_list_alloc_ex(context, LM_DLINK, text("x"), 1, &other, allocate, release, &memory);
            EXPECT_EQ(other, untouched);
            return status;
        };
    };
    expect_broken(STEM, alloc_ex(nullptr, WatchedMemory::release));
    expect_broken(STEM, alloc_ex(WatchedMemory::allocate, nullptr));
    list->state = LM_RELEASED;
    CS_INT value = 55;
    expect_broken(STEM, [&] { return lm_list_drop(list, LM_UNUSED); });
    expect_broken(STEM, [&] { return lm_list_op(list, LM_OP_CURRENT, nullptr, 0, nullptr, nullptr); });
    expect_broken(STEM, [&] { return lm_list_prop(list, LM_ACT_GET, LM_PROP_LIST_TYPE, &value, 0, nullptr); });
    list->state = LM_INITIALIZED;
    context->state = LM_RELEASED;
    expect_broken(STEM, [&] {
        LM_HANDLE *other = nullptr;
        return lm_list_alloc(context, LM_DLINK, text("x"), 1, &other);
    });
    context->state = LM_INITIALIZED;
    expect_broken(STEM, [&] { return lm___chash_rehash(nullptr); });
    expect_broken(STEM, [&] { return lm___dhash_rehash(nullptr); });
    EXPECT_EQ(value, 55);
}

TEST_F(LmListDeathTest, AListMissingFromItsContextIsNotDropped) {
    LM_HANDLE *first = make(LM_DLINK, "first");
    LM_HANDLE *second = make(LM_DLINK, "second");
    insert(second, "", 7);
    context->first_handle = first;
    expect_broken(STEM, [&] { return lm_list_drop(second, LM_FORCE_DROP); });
    context->first_handle = nullptr; // a context without any
    expect_broken(STEM, [&] { return lm_list_drop(second, LM_FORCE_DROP); });
    context->first_handle = second;
    EXPECT_EQ(current(), second);
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 2);
    EXPECT_EQ(walk(second), Numbers{7});
    EXPECT_EQ(lm_list_drop(second, LM_FORCE_DROP), CS_SUCCEED);
    EXPECT_EQ(current(), first);
}

TEST_F(LmListDeathTest, AListThatItsContextDoesNotCountIsNotDropped) {
    LM_HANDLE *list = make(LM_DLINK);
    context->cxtprop->context_load = 0;
    expect_broken(STEM, [&] { return lm_list_drop(list, LM_UNUSED); });
    context->cxtprop->context_load = 1;
    EXPECT_EQ(insert(list, "", 7), succeeds(7));
}

TEST_F(LmListDeathTest, APoolLargerThanItsSizeIsBrokenAtTheDrop) {
    set_property<CS_INT>(context, LM_PROP_MAX_POOLSIZE, 3);
    for (const CS_INT type : {LM_DLINK, LM_CHASH}) {
        LM_HANDLE *list = make(type);
        list->hdlprop->max_poolsize = 1;
        expect_broken(STEM, [&] { return lm_list_drop(list, LM_UNUSED); });
        EXPECT_EQ(list->state, LM_INITIALIZED);
        EXPECT_EQ(context->first_handle, list);
        EXPECT_EQ(lm__api_dlink_mpool_drop(list, 3), CS_SUCCEED);
        EXPECT_EQ(lm_list_drop(list, LM_UNUSED), CS_SUCCEED) << "what is left of it";
    }
}

// ---- Properties ------------------------------------------------------------------------------------------------

TEST_F(LmList, NameGivenWithItsTerminatorIsCountedOnce) {
    char room[8] = "#######";
    CS_INT length = 55;
    LM_HANDLE *list = make(LM_DLINK, "abc");
    EXPECT_EQ(list->hdlprop->length, 4);
    EXPECT_EQ(lm_list_prop(list, LM_ACT_GET, LM_PROP_HANDLE_NAME, room, 4, &length), CS_SUCCEED);
    EXPECT_EQ(length, 4);
    EXPECT_STREQ(room, "abc");
    EXPECT_EQ(lm_list_prop(list, LM_ACT_GET, LM_PROP_HANDLE_NAME, nullptr, 3, &length), CS_SUCCEED);
    EXPECT_EQ(length, 4) << "too small";
}

TEST_F(LmListDeathTest, PropertyTable) {
    LM_HANDLE *list = make(LM_DLINK);
    EXPECT_EQ(property<CS_INT>(list, LM_PROP_LIST_TYPE), LM_DLINK);
    EXPECT_EQ(property<LM_CONTEXT *>(list, LM_PROP_CONTEXT_ADDR), context);
    EXPECT_EQ(property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC), nullptr);
    EXPECT_EQ(set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect), CS_SUCCEED);
    EXPECT_EQ(property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC), &collect);
    const CS_COMPARE_FUNC compare = [](CS_VOID *, CS_VOID *) -> CS_INT { return 0; };
    EXPECT_EQ(set_property(list, LM_PROP_COMP_FUNC, compare), CS_SUCCEED);
    EXPECT_EQ(property<CS_COMPARE_FUNC>(list, LM_PROP_COMP_FUNC), compare);
    for (const CS_INT which : {LM_PROP_PRINT_FUNC, LM_PROP_COMP_FUNC})
        EXPECT_EQ(lm_list_prop(list, LM_ACT_CLEAR, which, nullptr, LM_UNUSED, nullptr), CS_SUCCEED);
    EXPECT_EQ(list->hdlprop->print_func, nullptr);
    EXPECT_EQ(list->hdlprop->comp_func, nullptr);
    CS_VOID *value = UNTOUCHED;
    CS_INT length = 55;
    for (const CS_INT which : {LM_PROP_LIST_TYPE, LM_PROP_HANDLE_LOAD, LM_PROP_CONTEXT_ADDR, LM_PROP_HANDLE_NAME})
        for (const CS_INT action : {LM_ACT_SET, LM_ACT_CLEAR})
            expect_broken(STEM, [&, which, action] { return lm_list_prop(list, action, which, &value, 8, &length); });
    for (const CS_INT which : {0, 4, 5, 6, 7, 13})
        expect_broken(STEM, [&, which] { return lm_list_prop(list, LM_ACT_GET, which, &value, 8, &length); });
    for (const CS_INT action : {0, 32, 36})
        expect_broken(STEM, [&, action] { return lm_list_prop(list, action, 1, &value, 8, &length); });
    for (const CS_INT which : {1, 3, 8, 9, 11, 12})
        expect_broken(STEM, [&, which] { return lm_list_prop(list, LM_ACT_GET, which, nullptr, 8, &length); });
    EXPECT_EQ(value, UNTOUCHED);
    EXPECT_EQ(length, 0);
}

TEST_F(LmList, OnlyTablesHaveATableSize) {
    for (const CS_INT type : {LM_DLINK, LM_QUEUE, LM_STACK}) {
        LM_HANDLE *list = make(type);
        for (const CS_INT action : {LM_ACT_GET, LM_ACT_SET, LM_ACT_CLEAR}) {
            CS_INT value = 55;
            EXPECT_EQ(lm_list_prop(list, action, LM_PROP_MAX_TABLESIZE, &value, LM_UNUSED, nullptr), CS_FAIL);
            EXPECT_EQ(value, 55);
        }
    }
}

// ---- Table size ------------------------------------------------------------------------------------------------

TEST_F(LmList, AChainedTableWithoutCollisionsKeepsAllEntries) {
    LM_HANDLE *list = make(LM_CHASH);
    const std::string keys = "...a...b...c...d...e...f...g...h...i...j"; // ten neighbours: ten slots
    for (std::size_t i = 0; i < 10; ++i)
        insert(list, std::string_view(keys).substr(4 * i, 4), static_cast<std::intptr_t>(i + 1));
    EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 50), CS_SUCCEED);
    EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_TABLESIZE), 50);
    EXPECT_EQ(load_of(list), 10);
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_EQ(by_key(list, LM_OP_FIND, std::string_view(keys).substr(4 * i, 4)),
                  succeeds(static_cast<std::intptr_t>(i + 1)));
}

TEST_F(LmList, OddityAChainedRehashLosesEntriesToCopiesOfTheFirst) {
    LM_HANDLE *list = make(LM_CHASH);
    insert(list, "A", 1);
    insert(list, "K", 2);
    insert(list, "U", 3);
    EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 7), CS_SUCCEED);
    EXPECT_EQ(load_of(list), 3);
    EXPECT_EQ(walk(list), (Numbers{3, 3, 3}));
    EXPECT_EQ(by_key(list, LM_OP_FIND, "A"), fails(LM_NOT_FOUND));
}

TEST_F(LmList, AfterARehashTheCursorIsTheLastEntryPutBackOrNone) {
    for (const CS_INT type : {LM_CHASH, LM_DHASH}) {
        LM_HANDLE *list = make(type);
        insert(list, "a", 1);
        insert(list, "b", 2);
        const Numbers order = walk(list);
        std::intptr_t last = 0;
        for (const std::intptr_t data : order)
            last = data != 0 ? data : last;
        by_key(list, LM_OP_FIND, last == 1 ? "b" : "a");
        EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 20), CS_SUCCEED);
        EXPECT_EQ(operate(list, LM_OP_CURRENT), succeeds(last));
        by_key(list, LM_OP_DELETE, "a");
        by_key(list, LM_OP_DELETE, "b");
        EXPECT_EQ(lm_list_prop(list, LM_ACT_CLEAR, LM_PROP_MAX_TABLESIZE, nullptr, 0, nullptr), CS_SUCCEED);
        EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_TABLESIZE), 10) << "the context's";
        EXPECT_EQ(list->cur_ptr, nullptr);
    }
}

TEST_F(LmListDeathTest, ACountThatDoesNotFitTheEntriesIsBrokenAtARehash) {
    for (const CS_INT type : {LM_CHASH, LM_DHASH}) {
        LM_HANDLE *list = make(type);
        insert(list, "a", 1);
        insert(list, "b", 2);
        list->hdlprop->handle_load = 3;
        EXPECT_DEATH(set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 20), "lm_list\\.cpp");
        {
            const ReturningAssertions returning;
            EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 20), CS_FAIL);
            EXPECT_EQ(returning.count(), 1);
        }
        EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_TABLESIZE), 10);
        EXPECT_EQ(by_key(list, LM_OP_FIND, "a"), succeeds(1));
        EXPECT_EQ(by_key(list, LM_OP_FIND, "b"), succeeds(2));
        EXPECT_EQ(load_of(list), 3);
        list->hdlprop->handle_load = 2;
        EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 20), CS_SUCCEED);
    }
}

TEST_F(LmList, AnOpenAddressedTableKeepsAllAndNeverShrinksBelowItsEntries) {
    LM_HANDLE *list = make(LM_DHASH);
    const char *const keys[] = {"a", "bb", "c", "dd", "e"};
    for (std::intptr_t i = 0; i < 5; ++i)
        insert(list, keys[i], i + 1);
    EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 4), CS_FAIL);
    EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_TABLESIZE), 10);
    for (const CS_INT size : {5, 40, 6}) {
        EXPECT_EQ(set_property(list, LM_PROP_MAX_TABLESIZE, size), CS_SUCCEED);
        EXPECT_EQ(load_of(list), 5);
        for (std::intptr_t i = 0; i < 5; ++i)
            EXPECT_EQ(by_key(list, LM_OP_FIND, keys[i]), succeeds(i + 1));
    }
}

TEST_F(LmList, ASizeOfNoSlotsFailsAndTheOldOneStays) {
    for (const CS_INT type : {LM_CHASH, LM_DHASH}) {
        LM_HANDLE *list = make(type);
        for (const CS_INT size : {0, -1})
            EXPECT_EQ(set_property(list, LM_PROP_MAX_TABLESIZE, size), CS_FAIL);
        EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_TABLESIZE), 10);
        EXPECT_EQ(insert(list, "a", 1), succeeds(1));
    }
}

// ---- The node pool ---------------------------------------------------------------------------------------------

TEST_F(LmListDeathTest, NodesRestInThePoolUpToItsSize) {
    LM_HANDLE *list = make(LM_DLINK);
    EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, -1), CS_FAIL);
    EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, 2), CS_SUCCEED);
    memory.succeed();
    DLinkNode *nodes[3] = {};
    for (DLinkNode *&node : nodes)
        EXPECT_EQ(lm__get_dlinknode(list, &node), CS_SUCCEED);
    EXPECT_EQ(memory.asked(), 1) << "two came from the pool";
    EXPECT_EQ(nodes[2]->state, LM_ALLOCATED);
    memory.forget_released();
    for (DLinkNode *node : nodes)
        EXPECT_EQ(lm__free_dlinknode(list, node), CS_SUCCEED);
    EXPECT_EQ(list->free_nodes, 2);
    EXPECT_EQ(list->free_DLN_list, nodes[1]);
    EXPECT_EQ(nodes[1]->state, LM_UNINITIALIZED);
    ASSERT_EQ(memory.released().size(), 1u);
    EXPECT_TRUE(memory.released()[0].is_stamped());
    EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, 1), CS_SUCCEED);
    EXPECT_EQ(list->free_nodes, 1);
    EXPECT_EQ(lm_list_prop(list, LM_ACT_CLEAR, LM_PROP_MAX_POOLSIZE, nullptr, 0, nullptr), CS_SUCCEED);
    EXPECT_EQ(list->free_nodes, 0) << "the context's size is 0";
    DLinkNode *node = nullptr;
    expect_broken("lm_nodes", [&] { return lm__api_dlink_mpool_init(list, 0); }); // none to add
    expect_broken("lm_nodes", [&] { return lm__get_dlinknode(nullptr, &node); });
    expect_broken("lm_nodes", [&] { return lm__get_dlinknode(list, nullptr); });
    expect_broken("lm_nodes", [&] { return lm__free_dlinknode(list, nullptr); });
    expect_broken("lm_nodes", [&] { return lm__free_dlinknode(nullptr, node); });
    expect_broken("lm_nodes", [&] { return lm__api_dlink_mpool_init(nullptr, 0); });
    expect_broken("lm_nodes", [&] { return lm__api_dlink_mpool_drop(nullptr, 0); });
}

TEST_F(LmList, ANegativePoolSizeOfTheContextPoolsNothing) {
    set_property<CS_INT>(context, LM_PROP_MAX_POOLSIZE, -5);
    LM_HANDLE *list = make(LM_DLINK);
    EXPECT_EQ(list->free_nodes, 0);
    EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, 2), CS_SUCCEED);
    EXPECT_EQ(list->free_nodes, 2);
    EXPECT_EQ(lm_list_drop(list, LM_UNUSED), CS_SUCCEED);
}

// ---- Out of memory ---------------------------------------------------------------------------------------------

TEST_F(LmList, OutOfMemoryAtEveryAllocationOfACreation) {
    const std::size_t held = memory.held();
    for (const CS_INT pool : {0, 3})
        for (const CS_INT type : TYPES)
            for (const auto span : {WatchedMemory::ONCE, WatchedMemory::LASTING}) {
                set_property(context, LM_PROP_MAX_POOLSIZE, pool);
                CS_RETCODE status = CS_MEM_ERROR;
                int n = 0;
                while (status != CS_SUCCEED) {
                    memory.fail(++n, span);
                    LM_HANDLE *list = nullptr;
                    status = lm_list_alloc(context, type, text("x"), LM_NULLTERM, &list);
                    const int asked = memory.asked();
                    memory.succeed();
                    if (status == CS_SUCCEED) {
                        EXPECT_EQ(n, asked + 1) << "every failure was told";
                        EXPECT_EQ(lm_list_drop(list, LM_UNUSED), CS_SUCCEED);
                    }
                    ASSERT_TRUE(status == CS_SUCCEED || status == CS_MEM_ERROR);
                    EXPECT_EQ(list == nullptr, status != CS_SUCCEED);
                    EXPECT_EQ(memory.held(), held);
                    EXPECT_EQ(context->first_handle, nullptr);
                    EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 0);
                }
            }
}

TEST_F(LmList, OutOfMemoryAtEveryAllocationOfARehash) {
    for (const auto &[type, pool] : {std::pair{LM_CHASH, 0}, {LM_CHASH, 1}, {LM_DHASH, 0}})
        for (const auto span : {WatchedMemory::ONCE, WatchedMemory::LASTING}) {
            LM_HANDLE *list = make(type);
            insert(list, "a", 1);
            insert(list, "b", 2);
            EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, pool), CS_SUCCEED);
            const Numbers before = walk(list);
            const std::size_t held = memory.held();
            CS_RETCODE status = CS_MEM_ERROR;
            for (int n = 1; status != CS_SUCCEED; ++n) {
                memory.fail(n, span);
                status = set_property<CS_INT>(list, LM_PROP_MAX_TABLESIZE, 12);
                memory.succeed();
                ASSERT_TRUE(status == CS_SUCCEED || status == CS_MEM_ERROR);
                EXPECT_EQ(load_of(list), 2);
                if (status == CS_SUCCEED)
                    break;
                // A node of the pool that went into the new table went with it.
                EXPECT_EQ(memory.held() + static_cast<std::size_t>(pool - list->free_nodes), held);
                EXPECT_EQ(walk(list), before);
                EXPECT_EQ(operate(list, LM_OP_CURRENT), succeeds(2));
                EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_TABLESIZE), 10);
            }
            EXPECT_EQ(by_key(list, LM_OP_FIND, "a"), succeeds(1));
        }
}

TEST_F(LmList, OutOfMemoryAtEveryAllocationOfAPoolResize) {
    for (int n = 1; n <= 4; ++n)
        for (const auto span : {WatchedMemory::ONCE, WatchedMemory::LASTING}) {
            LM_HANDLE *list = make(LM_DLINK);
            set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, 2);
            const std::size_t held = memory.held();
            memory.fail(n, span);
            EXPECT_EQ(set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, 6), CS_MEM_ERROR);
            memory.succeed();
            EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_POOLSIZE), 2);
            EXPECT_EQ(list->free_nodes, 0) << "every pooled node went";
            EXPECT_EQ(list->free_DLN_list, nullptr);
            EXPECT_EQ(memory.held(), held - 2);
            EXPECT_EQ(lm_list_drop(list, LM_UNUSED), CS_SUCCEED);
        }
}

} // namespace
