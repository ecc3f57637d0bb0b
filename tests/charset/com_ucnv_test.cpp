// Conversions of the application: set, get, clear, and the list that they hang on.
#include "support/assertions.h"
#include "support/data_home.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using support::FailingAllocator;
using support::ReturningAssertions;

constexpr CS_INT UNTOUCHED = -77777;

// Names as long as a record holds, and longer.
const std::string LONGEST(256, 'n');
const std::string TOO_LONG(257, 't');

CS_RETCODE first(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *, CS_INT *) { return 1; }
CS_RETCODE second(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *, CS_INT *) { return 2; }

class UserConversions : public testing::Test {
protected:
    UserConversions() {
        home_.write(support::OBJECTID_DAT,
                    "[charset]\n1.3.1.1 = a, alias\n1.3.1.2 = b\n1.3.1.3 = c\n1.3.1.4 = \"\"\n1.3.1.5 = " + LONGEST +
                        "\n1.3.1.6 = " + TOO_LONG + "\n[natlang]\n1.3.6.1 = language\n");
        context_.ctxglobals = &globals_;
        EXPECT_EQ(comn_intl_load_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
    }
    ~UserConversions() override {
        comn_drop_user_charconv_list(&context_);
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
    }

    CS_RETCODE call(CS_INT action, std::string from, std::string to, CS_INT *multiplier, CS_CONV_FUNC *function) {
        return comn_set_user_charset_convert(&context_, action, from.data(), static_cast<CS_INT>(from.size()),
                                             to.data(), static_cast<CS_INT>(to.size()), multiplier, function);
    }
    CS_RETCODE set(const std::string &from, const std::string &to, CS_CONV_FUNC function, CS_INT multiplier = 1) {
        return call(CS_USERCONV_SET, from, to, &multiplier, &function);
    }
    CS_RETCODE clear(const std::string &from, const std::string &to) {
        return call(CS_USERCONV_CLEAR, from, to, nullptr, nullptr);
    }
    CS_CONV_FUNC get(const std::string &from, const std::string &to) {
        CS_CONV_FUNC function = second;
        EXPECT_EQ(call(CS_USERCONV_GET, from, to, nullptr, &function), CS_SUCCEED);
        return function;
    }
    CsUserAlgo *head() { return static_cast<CsUserAlgo *>(context_.usercharconv); }
    int count() {
        int n = 0;
        for (const CsUserAlgo *each = head(); each != nullptr; each = each->next)
            ++n;
        return n;
    }
    CsOID *identifier(std::string name) {
        CsOID *oid = nullptr;
        CS_INT id_class = CS_OID_CHARSET;
        EXPECT_EQ(comn_globalid(&context_, CS_NAME_TO_OID, &oid, &id_class, CS_UNUSED, name.data(),
                                static_cast<CS_INT>(name.size()), nullptr, nullptr),
                  CS_SUCCEED);
        return oid;
    }

    support::TempHome home_;
    CsCtxGlobals globals_ = {};
    CS_CONTEXT context_ = {};
};
using UserConversionsDeathTest = UserConversions;

// ---- Set ------------------------------------------------------------------------------------------------------------

TEST_F(UserConversions, ASetMakesARecordOfNamesLengthsAndIdentifiers) {
    EXPECT_EQ(set("alias", "b", first, 3), CS_SUCCEED);
    ASSERT_EQ(count(), 1);
    const CsUserAlgo &record = *head();
    EXPECT_EQ(std::string(record.from_charname, 5), "alias") << "the name that was given, not the first one";
    EXPECT_EQ(record.from_charnamelen, 5);
    EXPECT_EQ(std::string(record.to_charname, 1), "b");
    EXPECT_EQ(record.to_charnamelen, 1);
    EXPECT_EQ(record.from_oid, identifier("a"));
    EXPECT_EQ(record.to_oid, identifier("b"));
    EXPECT_EQ(record.user_conv_func, first);
    EXPECT_EQ(record.conv_multiplier, 3);
    EXPECT_EQ(record.next, nullptr);
}

TEST_F(UserConversions, ANewOneStandsInFront) {
    set("a", "b", first);
    set("b", "c", first);
    set("c", "a", first);
    ASSERT_EQ(count(), 3);
    EXPECT_EQ(head()->from_oid, identifier("c"));
    EXPECT_EQ(head()->next->from_oid, identifier("b"));
    EXPECT_EQ(head()->next->next->from_oid, identifier("a"));
}

TEST_F(UserConversions, ASetOfTheSamePairReplacesFunctionAndMultiplierOnly) {
    set("a", "b", first, 3);
    set("b", "a", first, 4);
    const CsUserAlgo *const before = head()->next;
    EXPECT_EQ(set("alias", "b", second, 5), CS_SUCCEED);
    ASSERT_EQ(count(), 2);
    EXPECT_EQ(head()->next, before);
    EXPECT_EQ(before->user_conv_func, second);
    EXPECT_EQ(before->conv_multiplier, 5);
    EXPECT_EQ(before->from_charnamelen, 1) << "the name stays the first one that was given";
    EXPECT_EQ(head()->user_conv_func, first);
    EXPECT_EQ(head()->conv_multiplier, 4);
}

TEST_F(UserConversions, NoMultiplierIsOne) {
    CS_CONV_FUNC function = first;
    EXPECT_EQ(call(CS_USERCONV_SET, "a", "b", nullptr, &function), CS_SUCCEED);
    EXPECT_EQ(head()->conv_multiplier, 1);
    set("a", "b", first, 9);
    EXPECT_EQ(call(CS_USERCONV_SET, "a", "b", nullptr, &function), CS_SUCCEED);
    EXPECT_EQ(head()->conv_multiplier, 1) << "and not what it was";
}

TEST_F(UserConversions, AMultiplierIsTakenAsItIs) {
    for (const CS_INT multiplier : {0, -5, INT32_MAX}) {
        set("a", "b", first, multiplier);
        EXPECT_EQ(head()->conv_multiplier, multiplier);
    }
}

TEST_F(UserConversions, AFunctionMayBeNull) {
    EXPECT_EQ(set("a", "b", nullptr), CS_SUCCEED);
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(get("a", "b"), nullptr);
}

TEST_F(UserConversions, ASetOntoItselfIsAPairToo) {
    EXPECT_EQ(set("a", "a", first), CS_SUCCEED);
    EXPECT_EQ(get("a", "a"), first);
}

TEST_F(UserConversions, ContextsHaveListsOfTheirOwn) {
    set("a", "b", first);
    CS_CONTEXT other = {};
    other.ctxglobals = &globals_;
    CsUserAlgo *found = head();
    EXPECT_EQ(comn__get_user_charconv(&other, identifier("a"), identifier("b"), &found), CS_FAIL);
    EXPECT_EQ(found, nullptr);
}

// ---- Names ----------------------------------------------------------------------------------------------------------

TEST_F(UserConversions, AnUnknownNameIsToldForEveryAction) {
    CS_CONV_FUNC function = first;
    CS_INT multiplier = 7;
    set("a", "b", first);
    for (const CS_INT action : {33, 34, 35})
        for (const auto &[from, to] : {std::pair("a", "x"), {"x", "b"}, {"x", "x"}, {"language", "b"}, {"A", "b"}}) {
            EXPECT_EQ(call(action, from, to, &multiplier, &function), CS_EBADCSNAME) << from << ' ' << to;
            EXPECT_EQ(function, first);
            EXPECT_EQ(multiplier, 7);
        }
    EXPECT_EQ(count(), 1);
}

TEST_F(UserConversions, ALengthOfZeroHasNoName) { EXPECT_EQ(set("", "b", first), CS_EBADCSNAME); }

TEST_F(UserConversions, NamesMayHave256Bytes) {
    EXPECT_EQ(set(LONGEST, LONGEST, first), CS_SUCCEED);
    EXPECT_EQ(std::string(head()->from_charname, 256), LONGEST);
    EXPECT_EQ(head()->from_charnamelen, 256);
    EXPECT_EQ(std::string(head()->to_charname, 256), LONGEST);
    EXPECT_EQ(head()->to_charnamelen, 256);
    EXPECT_EQ(head()->conv_multiplier, 1);
}

TEST_F(UserConversions, LongerNamesAreASyntaxError) {
    EXPECT_EQ(set(TOO_LONG, "b", first), CS_ESYNTAX);
    EXPECT_EQ(set("a", TOO_LONG, first), CS_ESYNTAX);
    EXPECT_EQ(count(), 0);
    // Their conversion may be asked for: there is none.
    EXPECT_EQ(get(TOO_LONG, "b"), nullptr);
    EXPECT_EQ(clear(TOO_LONG, "b"), CS_SUCCEED);
}

TEST_F(UserConversions, ATerminatedNameIsFoundButHasNoLengthForARecord) {
    CS_CHAR from[] = "a", to[] = "b";
    CS_CONV_FUNC function = first;
    const auto terminated = [&](CS_INT action, CS_INT from_len, CS_INT to_len) {
        return comn_set_user_charset_convert(&context_, action, from, from_len, to, to_len, nullptr, &function);
    };
    EXPECT_EQ(terminated(CS_USERCONV_SET, CS_NULLTERM, 1), CS_ESYNTAX);
    EXPECT_EQ(terminated(CS_USERCONV_SET, 1, CS_NULLTERM), CS_ESYNTAX);
    EXPECT_EQ(count(), 0);
    set("a", "b", first);
    function = second;
    EXPECT_EQ(terminated(CS_USERCONV_GET, CS_NULLTERM, CS_NULLTERM), CS_SUCCEED);
    EXPECT_EQ(function, first);
    function = second;
    EXPECT_EQ(terminated(CS_USERCONV_SET, CS_NULLTERM, CS_NULLTERM), CS_SUCCEED) << "for one that is there";
    EXPECT_EQ(get("a", "b"), second);
    EXPECT_EQ(terminated(CS_USERCONV_CLEAR, CS_NULLTERM, CS_NULLTERM), CS_SUCCEED);
    EXPECT_EQ(count(), 0);
}

TEST_F(UserConversions, WithoutATableOfIdentifiersNoNameIsKnown) {
    comn_intl_drop_globalid(&context_, &globals_.ctxoids);
    globals_.ctxoids = nullptr;
    CS_OID_TABLE empty = {};
    globals_.ctxoids = &empty;
    EXPECT_EQ(set("a", "b", first), CS_EBADCSNAME);
    globals_.ctxoids = nullptr;
}

// ---- Get ------------------------------------------------------------------------------------------------------------

TEST_F(UserConversions, AGetTellsFunctionAndMultiplier) {
    set("a", "b", first, 3);
    set("b", "a", second, 4);
    CS_CONV_FUNC function = nullptr;
    CS_INT multiplier = UNTOUCHED;
    EXPECT_EQ(call(CS_USERCONV_GET, "a", "b", &multiplier, &function), CS_SUCCEED);
    EXPECT_EQ(function, first);
    EXPECT_EQ(multiplier, 3);
    EXPECT_EQ(call(CS_USERCONV_GET, "b", "alias", &multiplier, &function), CS_SUCCEED);
    EXPECT_EQ(function, second);
    EXPECT_EQ(multiplier, 4);
    EXPECT_EQ(get("a", "b"), first) << "without a multiplier";
}

TEST_F(UserConversions, AGetOfNoneIsANullFunctionAndLeavesTheMultiplier) {
    set("a", "b", first);
    CS_CONV_FUNC function = first;
    CS_INT multiplier = UNTOUCHED;
    EXPECT_EQ(call(CS_USERCONV_GET, "b", "a", &multiplier, &function), CS_SUCCEED);
    EXPECT_EQ(function, nullptr);
    EXPECT_EQ(multiplier, UNTOUCHED);
}

TEST_F(UserConversions, ALookUpComparesIdentifiersAsPointers) {
    set("a", "b", first);
    CsUserAlgo *found = nullptr;
    EXPECT_EQ(comn__get_user_charconv(&context_, identifier("a"), identifier("b"), &found), CS_SUCCEED);
    EXPECT_EQ(found, head());
    CsOID copy = *identifier("a");
    EXPECT_EQ(comn__get_user_charconv(&context_, &copy, identifier("b"), &found), CS_FAIL);
    EXPECT_EQ(found, nullptr);
    found = head();
    EXPECT_EQ(comn__get_user_charconv(&context_, identifier("b"), identifier("a"), &found), CS_FAIL);
    EXPECT_EQ(found, nullptr);
    found = head();
    EXPECT_EQ(comn__get_user_charconv(&context_, nullptr, nullptr, &found), CS_FAIL);
    EXPECT_EQ(found, nullptr);
}

// ---- Clear ----------------------------------------------------------------------------------------------------------

TEST_F(UserConversions, AClearOfOneBehindTheHeadTakesItAlone) {
    set("a", "b", first);
    set("b", "c", first);
    set("c", "a", first);
    const FailingAllocator counting;
    EXPECT_EQ(clear("b", "c"), CS_SUCCEED);
    EXPECT_EQ(counting.held(), -1);
    EXPECT_EQ(count(), 2);
    EXPECT_EQ(get("b", "c"), nullptr);
    EXPECT_EQ(get("a", "b"), first);
    EXPECT_EQ(clear("a", "b"), CS_SUCCEED); // the last
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(get("c", "a"), first);
}

TEST_F(UserConversions, OddityAClearOfTheHeadEmptiesTheListAndLeavesTheOthersAllocated) {
    set("a", "b", first);
    set("b", "c", first);
    set("c", "a", first);
    CsUserAlgo *const behind = head()->next;
    {
        const FailingAllocator counting;
        EXPECT_EQ(clear("c", "a"), CS_SUCCEED);
        EXPECT_EQ(counting.held(), -1) << "the head alone is freed";
    }
    EXPECT_EQ(context_.usercharconv, nullptr);
    EXPECT_EQ(get("a", "b"), nullptr);
    EXPECT_EQ(get("b", "c"), nullptr);
    // They are whole still. Nobody frees them but this test.
    EXPECT_EQ(behind->from_oid, identifier("b"));
    ASSERT_NE(behind->next, nullptr);
    EXPECT_EQ(behind->next->from_oid, identifier("a"));
    context_.usercharconv = behind;
}

TEST_F(UserConversions, AClearOfTheOnlyOneEmptiesTheList) {
    set("a", "b", first);
    EXPECT_EQ(clear("alias", "b"), CS_SUCCEED);
    EXPECT_EQ(context_.usercharconv, nullptr);
    set("a", "b", second);
    EXPECT_EQ(get("a", "b"), second);
}

TEST_F(UserConversions, AClearOfNoneSucceeds) {
    EXPECT_EQ(clear("a", "b"), CS_SUCCEED);
    set("a", "b", first);
    EXPECT_EQ(clear("b", "a"), CS_SUCCEED);
    EXPECT_EQ(count(), 1);
}

TEST_F(UserConversions, AClearTakesFunctionAndMultiplierForNothing) {
    set("a", "b", first, 3);
    CS_CONV_FUNC function = second;
    CS_INT multiplier = UNTOUCHED;
    EXPECT_EQ(call(CS_USERCONV_CLEAR, "a", "b", &multiplier, &function), CS_SUCCEED);
    EXPECT_EQ(function, second);
    EXPECT_EQ(multiplier, UNTOUCHED);
}

// ---- The list -------------------------------------------------------------------------------------------------------

TEST_F(UserConversions, ADropFreesTheWholeList) {
    set("a", "b", first);
    set("b", "c", first);
    set("c", "a", first);
    const FailingAllocator counting;
    EXPECT_EQ(comn_drop_user_charconv_list(&context_), CS_SUCCEED);
    EXPECT_EQ(counting.held(), -3);
    EXPECT_EQ(context_.usercharconv, nullptr);
    EXPECT_EQ(comn_drop_user_charconv_list(&context_), CS_SUCCEED) << "and again";
}

TEST_F(UserConversions, WithoutMemoryNothingIsSet) {
    set("a", "b", first);
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        const FailingAllocator failing(1, span);
        EXPECT_EQ(set("b", "c", first), CS_MEM_ERROR);
        EXPECT_EQ(failing.held(), 0);
    }
    EXPECT_EQ(count(), 1);
    // Without a new record there is nothing to fail.
    const FailingAllocator failing(1, FailingAllocator::LASTING);
    EXPECT_EQ(set("a", "b", second, 2), CS_SUCCEED);
    EXPECT_EQ(head()->user_conv_func, second);
}

// ---- Broken contracts -----------------------------------------------------------------------------------------------

TEST_F(UserConversionsDeathTest, OtherActionsAreABrokenContract) {
    CS_CONV_FUNC function = first;
    for (const CS_INT action : {0, 32, 36, -33}) {
        EXPECT_BOMB(call(action, "a", "b", nullptr, &function), "com_ucnv");
        const ReturningAssertions returning;
        EXPECT_EQ(call(action, "a", "b", nullptr, &function), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_EQ(count(), 0);
}

TEST_F(UserConversionsDeathTest, NullPointersAreReported) {
    CS_CHAR a[] = "a", b[] = "b";
    CS_CONV_FUNC function = first;
    CsUserAlgo *found = nullptr;
    support::NullCalls calls;
    for (const CS_INT action : {33, 34, 35}) {
        const auto add = [&](const char *name, CS_CONTEXT *context, CS_CHAR *from, CS_CHAR *to) {
            calls.add(
                name,
                [=, &function] {
                    return comn_set_user_charset_convert(context, action, from, 1, to, 1, nullptr, &function);
                },
                CS_FAIL);
        };
        add("no context", nullptr, a, b);
        add("no source", &context_, nullptr, b);
        add("no destination", &context_, a, nullptr);
        if (action != 35)
            calls.add(
                "no function", [=, this] { return call(action, "a", "b", nullptr, nullptr); }, CS_FAIL);
    }
    calls.add(
        "look-up: no context", [&] { return comn__get_user_charconv(nullptr, nullptr, nullptr, &found); }, CS_FAIL);
    calls.add(
        "look-up: no result", [&] { return comn__get_user_charconv(&context_, nullptr, nullptr, nullptr); }, CS_FAIL);
    calls.add(
        "drop: no context", [] { return comn_drop_user_charconv_list(nullptr); }, CS_FAIL);
    calls.expect_reports("com_ucnv");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(count(), 0); });
}

} // namespace
