// The context of the list manager.
#include "support/lists.h"

#include <cstring>
#include <string>

using namespace support;

namespace {

constexpr const char *STEM = "lm_context";

class LmContext : public ListTest {
protected:
    Answer name_of_current(char *room, CS_INT size, CS_INT *length) {
        return {lm_property(context, LM_ACT_GET, LM_PROP_CURRENT_HANDLENAME, room, size, length), room};
    }
    CS_RETCODE make_current(const char *name, CS_INT length) {
        return lm_property(context, LM_ACT_SET, LM_PROP_CURRENT_HANDLENAME, text(name), length, nullptr);
    }
    LM_HANDLE *current() { return property<LM_HANDLE *>(context, LM_PROP_CURRENT_HANDLEADDR); }
};
using LmContextDeathTest = LmContext;

TEST(LmNumbers, States) {
    EXPECT_EQ(LM_ALLOCATED, 11);
    EXPECT_EQ(LM_RELEASED, 12);
    EXPECT_EQ(LM_INITIALIZED, 13);
    EXPECT_EQ(LM_UNINITIALIZED, 14);
    EXPECT_EQ(LM_INSERTED, 15);
    EXPECT_EQ(LM_SET, 16);
    EXPECT_EQ(LM_UNSET, 17);
}

TEST(LmNumbers, OptionsActionsAndProperties) {
    EXPECT_EQ(LM_NULLTERM, -9);
    EXPECT_EQ(LM_UNUSED, -99999);
    EXPECT_EQ(LM_FORCE_EXIT, 36);
    EXPECT_EQ(LM_ACT_GET, 33);
    EXPECT_EQ(LM_ACT_SET, 34);
    EXPECT_EQ(LM_ACT_CLEAR, 35);
    EXPECT_EQ(LM_PROP_LIST_TYPE, 1);
    EXPECT_EQ(LM_PROP_MAX_TABLESIZE, 2);
    EXPECT_EQ(LM_PROP_MAX_POOLSIZE, 3);
    EXPECT_EQ(LM_PROP_VERSION, 4);
    EXPECT_EQ(LM_PROP_CONTEXT_LOAD, 5);
    EXPECT_EQ(LM_PROP_CURRENT_HANDLENAME, 6);
    EXPECT_EQ(LM_PROP_CURRENT_HANDLEADDR, 7);
}

// ---- Creation --------------------------------------------------------------------------------------------------

TEST_F(LmContext, IsCompleteWithItsDefaults) {
    EXPECT_EQ(context->state, LM_INITIALIZED);
    EXPECT_EQ(context->lmchkparam, CS_FALSE);
    EXPECT_EQ(context->first_handle, nullptr);
    EXPECT_EQ(context->lmmalloc, &WatchedMemory::allocate);
    EXPECT_EQ(context->lmfree, &WatchedMemory::release);
    EXPECT_EQ(context->lmuser, &memory);
    EXPECT_EQ(context->cxtprop->state, LM_INITIALIZED);
    EXPECT_EQ(context->cxtprop->list_type, LM_DLINK);
    EXPECT_EQ(context->cxtprop->max_tablesize, 10);
    EXPECT_EQ(context->cxtprop->max_poolsize, 0);
    EXPECT_EQ(context->cxtprop->version, 16001);
    EXPECT_EQ(context->cxtprop->context_load, 0);
    EXPECT_EQ(context->cxtprop->cur_handlename, nullptr);
    EXPECT_EQ(context->cxtprop->cur_handleaddr, nullptr);
}

TEST_F(LmContext, ATerminatedNameCountsItsTerminator) {
    EXPECT_EQ(context->length, 6);
    EXPECT_STREQ(context->context_name, "lists");
}

TEST(LmInitLm, ANameOfALengthIsKeptAsItIs) {
    char name[] = "abcdef";
    LM_CONTEXT *context = nullptr;
    ASSERT_EQ(lm_initlm(1100, name, 3, &context), CS_SUCCEED);
    EXPECT_EQ(context->length, 3);
    EXPECT_NE(context->context_name, name);
    std::memset(name, '#', sizeof name); // a copy was kept
    EXPECT_EQ(std::string(context->context_name, 3), "abc");
    EXPECT_EQ(lm_exit(context, LM_UNUSED), CS_SUCCEED);
}

TEST(LmInitLm, TakesPlainMemory) {
    LM_CONTEXT *context = nullptr;
    ASSERT_EQ(lm_initlm(1100, text("plain"), LM_NULLTERM, &context), CS_SUCCEED);
    EXPECT_EQ(context->lmmalloc, &lm___malloc);
    EXPECT_EQ(context->lmfree, &lm___free);
    EXPECT_EQ(context->lmuser, nullptr);
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_VERSION), 1100);
    EXPECT_EQ(lm_exit(context, LM_FORCE_EXIT), CS_SUCCEED);
}

TEST(LmInitLm, AnEmptyName) {
    LM_CONTEXT *context = nullptr;
    ASSERT_EQ(lm_initlm(1100, text("abc"), 0, &context), CS_SUCCEED);
    EXPECT_EQ(context->length, 0);
    EXPECT_EQ(lm_exit(context, LM_UNUSED), CS_SUCCEED);
}

TEST(LmInitLmDeathTest, BrokenCalls) {
    WatchedMemory memory;
    LM_CONTEXT *context = nullptr;
    const auto init = [&](CS_INT version, const char *name, CS_INT length, LM_CONTEXT **where,
                          LM_ALLOCATOR allocate = WatchedMemory::allocate,
                          LM_RELEASER release = WatchedMemory::release) {
        return [=, &memory] {
            return lm_initlm_ex(version, text(name), length, where, allocate, release, &memory);
        };
    };
    expect_broken(STEM, init(1099, "x", 1, &context));
    expect_broken(STEM, init(-1, "x", 1, &context));
    expect_broken(STEM, init(1100, nullptr, 1, &context));
    expect_broken(STEM, init(1100, "x", -1, &context));
    expect_broken(STEM, init(1100, "x", LM_UNUSED, &context));
    expect_broken(STEM, init(1100, "x", 1, nullptr));
    expect_broken(STEM, init(1100, "x", 1, &context, nullptr));
    expect_broken(STEM, init(1100, "x", 1, &context, WatchedMemory::allocate, nullptr));
    expect_broken(STEM, [] { return lm___api_init(nullptr, lm___malloc, lm___free, nullptr); });
    expect_broken(STEM, [] { return lm___api_init_fail(nullptr); });
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(memory.asked(), 0);
}

TEST(LmInitLm, OutOfMemoryAtEveryAllocationLeavesNoContext) {
    for (const auto span : {WatchedMemory::ONCE, WatchedMemory::LASTING}) {
        for (int n = 1;; ++n) {
            WatchedMemory memory;
            memory.fail(n, span);
            auto *context = reinterpret_cast<LM_CONTEXT *>(&memory);
            const CS_RETCODE status = lm_initlm_ex(1100, text("x"), LM_NULLTERM, &context, WatchedMemory::allocate,
                                                   WatchedMemory::release, &memory);
            if (n > 3) {
                EXPECT_EQ(status, CS_SUCCEED) << "context, properties and name are all it takes";
                EXPECT_EQ(lm_exit(context, LM_UNUSED), CS_SUCCEED);
                break;
            }
            EXPECT_EQ(status, CS_MEM_ERROR);
            EXPECT_EQ(context, nullptr);
            EXPECT_EQ(memory.held(), 0u);
            EXPECT_EQ(memory.strangers(), 0);
            EXPECT_TRUE(memory.all_wiped());
        }
    }
}

TEST(LmInitLm, TheBareRecordsAreAllocatedAndUndone) {
    WatchedMemory memory;
    LM_CONTEXT *context = nullptr;
    ASSERT_EQ(lm___api_init(&context, WatchedMemory::allocate, WatchedMemory::release, &memory), CS_SUCCEED);
    EXPECT_EQ(context->state, LM_ALLOCATED);
    EXPECT_EQ(context->cxtprop->state, LM_ALLOCATED);
    EXPECT_EQ(context->context_name, nullptr);
    EXPECT_EQ(context->first_handle, nullptr);
    EXPECT_EQ(lm___api_init_fail(&context), CS_SUCCEED);
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(memory.held(), 0u);
    EXPECT_EQ(lm___api_init_fail(&context), CS_SUCCEED) << "nothing to undo";
}

// ---- Exit ------------------------------------------------------------------------------------------------------

TEST_F(LmContext, ExitGivesBackNamePropertiesAndContextWiped) {
    const void *order[] = {context->context_name, context->cxtprop, context};
    memory.forget_released();
    EXPECT_EQ(lm_exit(context, LM_UNUSED), CS_SUCCEED);
    context = nullptr;
    ASSERT_EQ(memory.released().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(memory.released()[i].memory, order[i]);
    EXPECT_TRUE(memory.released()[0].is_wiped());
    EXPECT_TRUE(memory.released()[1].is_stamped());
    EXPECT_TRUE(memory.released()[2].is_stamped());
}

TEST_F(LmContext, ExitIsRefusedWhileThereAreLists) {
    LM_HANDLE *list = make(LM_DLINK);
    EXPECT_EQ(lm_exit(context, LM_UNUSED), CS_FAIL);
    EXPECT_EQ(context->state, LM_INITIALIZED);
    EXPECT_EQ(context->first_handle, list);
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 1);
    EXPECT_EQ(operate(list, LM_OP_INSERT, nullptr, LM_OP_LAST, 7), succeeds(7)) << "the context goes on as it was";
}

TEST_F(LmContext, ForcedExitDropsListsOfEveryTypeWithTheirEntries) {
    for (const CS_INT type : {LM_DLINK, LM_CHASH, LM_DHASH, LM_QUEUE, LM_STACK}) {
        LM_HANDLE *list = make(type);
        for (const char *key : {"one", "two", "three"})
            EXPECT_EQ(operate(list, LM_OP_INSERT, type == LM_DLINK ? nullptr : text(key),
                              type == LM_DLINK ? LM_OP_LAST : 3, 1),
                      succeeds(1));
    }
    EXPECT_EQ(lm_exit(context, LM_FORCE_EXIT), CS_SUCCEED);
    context = nullptr;
    EXPECT_EQ(memory.held(), 0u);
}

TEST_F(LmContext, ForcedExitDropsTheNewestListFirst) {
    const void *first = make(LM_DLINK, "first");
    const void *second = make(LM_DLINK, "second");
    memory.forget_released();
    EXPECT_EQ(lm_exit(context, LM_FORCE_EXIT), CS_SUCCEED);
    context = nullptr;
    std::vector<const void *> handles;
    for (const auto &block : memory.released())
        if (block.memory == first || block.memory == second)
            handles.push_back(block.memory);
    EXPECT_EQ(handles, (std::vector<const void *>{second, first}));
}

TEST(LmExit, ANullContextFails) {
    EXPECT_EQ(lm_exit(nullptr, LM_UNUSED), CS_FAIL);
    EXPECT_EQ(lm_exit(nullptr, LM_FORCE_EXIT), CS_FAIL);
}

TEST_F(LmContextDeathTest, ForcedExitStopsAtTheFirstListThatCannotBeDropped) {
    make(LM_DLINK, "last");
    LM_HANDLE *broken = make(LM_DLINK, "broken");
    make(LM_DLINK, "goes");
    broken->hdlprop->list_type = 99;
    expect_broken("lm_list", [&] { return lm_exit(context, LM_FORCE_EXIT); });
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 2);
    EXPECT_EQ(context->first_handle, broken);
    EXPECT_EQ(context->state, LM_INITIALIZED);
    broken->hdlprop->list_type = LM_DLINK;
}

TEST_F(LmContextDeathTest, ReleasedRecordsAndOtherOptionsAreBroken) {
    for (const CS_INT option : {0, LM_FORCE_DROP, 37})
        expect_broken(STEM, [&] { return lm_exit(context, option); });
    CS_INT value = 55;
    const auto get = [&] { return lm_property(context, LM_ACT_GET, LM_PROP_LIST_TYPE, &value, LM_UNUSED, nullptr); };
    context->state = LM_RELEASED;
    expect_broken(STEM, [&] { return lm_exit(context, LM_UNUSED); });
    expect_broken(STEM, get);
    context->state = LM_INITIALIZED;
    context->cxtprop->state = LM_RELEASED;
    expect_broken(STEM, [&] { return lm_exit(context, LM_FORCE_EXIT); });
    context->cxtprop->state = LM_INITIALIZED;
    EXPECT_EQ(value, 55);
}

TEST_F(LmContextDeathTest, ACountWithoutListsIsBroken) {
    context->cxtprop->context_load = 1;
    expect_broken(STEM, [&] { return lm_exit(context, LM_FORCE_EXIT); });
    context->cxtprop->context_load = 0;
}

// ---- Properties ------------------------------------------------------------------------------------------------

TEST_F(LmContext, NumbersAreReadSetAndCleared) {
    struct {
        CS_INT which;
        CS_INT standard;
        CS_INT LM_CXTPROP::*field;
    } const rows[] = {
        {LM_PROP_LIST_TYPE, 13, &LM_CXTPROP::list_type},
        {LM_PROP_MAX_TABLESIZE, 10, &LM_CXTPROP::max_tablesize},
        {LM_PROP_MAX_POOLSIZE, 0, &LM_CXTPROP::max_poolsize},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(property<CS_INT>(context, row.which), row.standard);
        EXPECT_EQ(set_property<CS_INT>(context, row.which, 16), CS_SUCCEED);
        EXPECT_EQ(context->cxtprop->*row.field, 16);
        EXPECT_EQ(property<CS_INT>(context, row.which), 16);
        CS_INT length = 55;
        EXPECT_EQ(lm_property(context, LM_ACT_CLEAR, row.which, nullptr, LM_UNUSED, &length), CS_SUCCEED);
        EXPECT_EQ(length, 0) << "zeroed first, and set by nothing but a get";
        EXPECT_EQ(property<CS_INT>(context, row.which), row.standard);
        CS_INT value = 55;
        EXPECT_EQ(lm_property(context, LM_ACT_GET, row.which, &value, 0, nullptr), CS_SUCCEED) << "no outlen";
        EXPECT_EQ(value, row.standard);
    }
}

TEST_F(LmContext, DefaultsArePassedToNewLists) {
    set_property<CS_INT>(context, LM_PROP_LIST_TYPE, LM_CHASH);
    set_property<CS_INT>(context, LM_PROP_MAX_TABLESIZE, 7);
    set_property<CS_INT>(context, LM_PROP_MAX_POOLSIZE, 3);
    LM_HANDLE *list = make(LM_UNUSED);
    EXPECT_EQ(property<CS_INT>(list, LM_PROP_LIST_TYPE), LM_CHASH);
    EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_TABLESIZE), 7);
    EXPECT_EQ(property<CS_INT>(list, LM_PROP_MAX_POOLSIZE), 3);
    EXPECT_EQ(list->free_nodes, 3);
}

TEST_F(LmContext, VersionLoadAndCurrentHandleCanBeRead) {
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_VERSION), 16001);
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 0);
    EXPECT_EQ(current(), nullptr);
    LM_HANDLE *first = make(LM_DLINK, "first");
    EXPECT_EQ(current(), first);
    LM_HANDLE *second = make(LM_DLINK, "second");
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_CONTEXT_LOAD), 2);
    EXPECT_EQ(current(), second) << "the most recent one";
}

TEST_F(LmContext, TheCurrentHandlesNameComesTerminatedAndCountsItOnce) {
    char room[8] = "#######";
    CS_INT length = 55;
    make(LM_DLINK, "abc"); // given with LM_NULLTERM: four bytes are kept
    EXPECT_EQ(name_of_current(room, 8, &length), (Answer{CS_SUCCEED, room}));
    EXPECT_EQ(length, 4);
    EXPECT_STREQ(room, "abc");
    LM_HANDLE *counted = nullptr;
    ASSERT_EQ(lm_list_alloc(context, LM_DLINK, text("wxyz"), 3, &counted), CS_SUCCEED); // three bytes are kept
    EXPECT_EQ(name_of_current(room, 8, &length), (Answer{CS_SUCCEED, room}));
    EXPECT_EQ(length, 4);
    EXPECT_STREQ(room, "wxy");
    std::memset(room, '#', 7);
    EXPECT_EQ(name_of_current(room, 3, &length), (Answer{CS_SUCCEED, room}));
    EXPECT_EQ(length, 4) << "too small is told by the length alone";
    EXPECT_STREQ(room, "#######");
}

TEST_F(LmContext, AHandleIsMadeCurrentByTheBeginningOfItsName) {
    LM_HANDLE *alpha = make(LM_DLINK, "alpha");
    LM_HANDLE *beta = make(LM_DLINK, "beta");
    LM_HANDLE *alpine = make(LM_DLINK, "alpine");
    EXPECT_EQ(make_current("beta", 4), CS_SUCCEED);
    EXPECT_EQ(current(), beta);
    EXPECT_EQ(context->cxtprop->cur_handlename, beta->hdlprop->handle_name);
    EXPECT_EQ(make_current("alp", 3), CS_SUCCEED);
    EXPECT_EQ(current(), alpine) << "the first of the chain: the newest";
    EXPECT_EQ(make_current("alpha", LM_NULLTERM), CS_SUCCEED);
    EXPECT_EQ(current(), alpha);
    EXPECT_EQ(make_current("beta", 5), CS_SUCCEED) << "with its terminator, which was kept";
    EXPECT_EQ(current(), beta);
    EXPECT_EQ(lm_property(context, LM_ACT_CLEAR, LM_PROP_CURRENT_HANDLENAME, nullptr, LM_UNUSED, nullptr), CS_SUCCEED);
    EXPECT_EQ(current(), alpine) << "the first of the chain";
}

TEST_F(LmContextDeathTest, TheCurrentHandlesNameNeverReadsPastAShorterName) {
    LM_HANDLE *list = nullptr;
    ASSERT_EQ(lm_list_alloc(context, LM_DLINK, text("ab"), 2, &list), CS_SUCCEED);
    expect_broken(STEM, [&] { return make_current("abcdefghijklmnopqrstuvwxyz", 26); });
    expect_broken(STEM, [&] { return make_current("ab\0", 3); });
    EXPECT_EQ(make_current("ab", 2), CS_SUCCEED);
    LM_HANDLE *longer = make(LM_DLINK, "abc");
    EXPECT_EQ(make_current("a", 1), CS_SUCCEED);
    EXPECT_EQ(current(), longer);
    EXPECT_EQ(make_current("ab\0", 2), CS_SUCCEED);
    EXPECT_EQ(current(), longer);
}

TEST_F(LmContextDeathTest, TheCurrentHandlesNameNeedsACurrentHandle) {
    char room[8] = "#######";
    for (const CS_INT action : {LM_ACT_GET, LM_ACT_SET, LM_ACT_CLEAR})
        expect_broken(STEM, [&] {
            return lm_property(context, action, LM_PROP_CURRENT_HANDLENAME, room, 7, nullptr);
        });
    EXPECT_STREQ(room, "#######");
}

TEST_F(LmContextDeathTest, NamesThatCannotBeMadeCurrent) {
    LM_HANDLE *list = make(LM_DLINK, "name");
    expect_broken(STEM, [&] { return make_current(nullptr, 4); });
    for (const CS_INT length : {0, -1, LM_UNUSED})
        expect_broken(STEM, [&] { return make_current("name", length); });
    expect_broken(STEM, [&] { return make_current("", LM_NULLTERM); });
    expect_broken(STEM, [&] { return make_current("other", 5); });
    EXPECT_EQ(current(), list);
}

TEST_F(LmContextDeathTest, WhatIsOnlyReadCannotBeSetOrClearedOrGivenALength) {
    for (const CS_INT which : {LM_PROP_VERSION, LM_PROP_CONTEXT_LOAD, LM_PROP_CURRENT_HANDLEADDR}) {
        LM_HANDLE *value = nullptr;
        expect_broken(STEM, [&] { return lm_property(context, LM_ACT_SET, which, &value, LM_UNUSED, nullptr); });
        expect_broken(STEM, [&] { return lm_property(context, LM_ACT_CLEAR, which, &value, LM_UNUSED, nullptr); });
        expect_broken(STEM, [&] { return lm_property(context, LM_ACT_GET, which, &value, 8, nullptr); });
        EXPECT_EQ(value, nullptr);
    }
}

TEST_F(LmContextDeathTest, UnknownPropertiesAndActionsAndMissingBuffers) {
    CS_INT value = 55;
    CS_INT length = 55;
    for (const CS_INT which : {0, -1, CS_INT{LM_PROP_HANDLE_LOAD}, CS_INT{LM_PROP_HANDLE_NAME}, 12, 13})
        expect_broken(STEM, [&] { return lm_property(context, LM_ACT_GET, which, &value, LM_UNUSED, &length); });
    EXPECT_EQ(length, 0);
    for (const CS_INT action : {0, 32, 36})
        expect_broken(STEM,
                      [&] { return lm_property(context, action, LM_PROP_LIST_TYPE, &value, LM_UNUSED, &length); });
    for (const CS_INT which : {LM_PROP_LIST_TYPE, LM_PROP_MAX_TABLESIZE, LM_PROP_MAX_POOLSIZE, LM_PROP_VERSION,
                               LM_PROP_CONTEXT_LOAD, LM_PROP_CURRENT_HANDLEADDR})
        expect_broken(STEM, [&] { return lm_property(context, LM_ACT_GET, which, nullptr, LM_UNUSED, &length); });
    for (const CS_INT which : {LM_PROP_LIST_TYPE, LM_PROP_MAX_TABLESIZE, LM_PROP_MAX_POOLSIZE})
        expect_broken(STEM, [&] { return lm_property(context, LM_ACT_SET, which, nullptr, LM_UNUSED, &length); });
    EXPECT_EQ(value, 55);
    EXPECT_EQ(property<CS_INT>(context, LM_PROP_LIST_TYPE), 13);
}

TEST(LmProperty, ANullContextFailsAndLeavesTheLength) {
    CS_INT length = 55;
    EXPECT_EQ(lm_property(nullptr, LM_ACT_GET, LM_PROP_LIST_TYPE, &length, LM_UNUSED, &length), CS_FAIL);
    EXPECT_EQ(length, 55);
}

} // namespace
