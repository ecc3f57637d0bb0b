// Strings that are replaced, memory that is cleared, symbols, the default thread id.
#include "support/assertions.h"
#include "support/failing_allocator.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

namespace {

using support::FailingAllocator;
using support::ReturningAssertions;

// ---- com_setstring --------------------------------------------------------------------------------------------

class SetString : public testing::Test {
protected:
    ~SetString() override { std::free(dest_); }
    CS_CHAR *dest_ = nullptr;
    CS_INT length_ = -7;
    std::string source_ = "some text";
};

TEST_F(SetString, MakesATerminatedCopy) {
    EXPECT_EQ(com_setstring(&dest_, &length_, source_.data(), 4), CS_SUCCEED);
    EXPECT_STREQ(dest_, "some");
    EXPECT_EQ(length_, 4);
    EXPECT_EQ(com_setstring(&dest_, &length_, source_.data(), CS_NULLTERM), CS_SUCCEED);
    EXPECT_STREQ(dest_, "some text");
    EXPECT_EQ(length_, 9);
}

TEST_F(SetString, CopiesNulBytesOfACountedSource) {
    std::string source("a\0b\0", 4);
    EXPECT_EQ(com_setstring(&dest_, &length_, source.data(), 4), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(dest_, "a\0b\0\0", 5), 0);
    EXPECT_EQ(length_, 4);
}

TEST_F(SetString, LengthOfNothingFailsAndLeavesTheOldOne) {
    ASSERT_EQ(com_setstring(&dest_, &length_, source_.data(), 4), CS_SUCCEED);
    CS_CHAR *const before = dest_;
    CS_CHAR empty[] = "";
    EXPECT_EQ(com_setstring(&dest_, &length_, source_.data(), 0), CS_FAIL);
    EXPECT_EQ(com_setstring(&dest_, &length_, source_.data(), -1), CS_FAIL);
    EXPECT_EQ(com_setstring(&dest_, &length_, source_.data(), CS_UNUSED), CS_FAIL);
    EXPECT_EQ(com_setstring(&dest_, &length_, empty, CS_NULLTERM), CS_FAIL);
    EXPECT_EQ(dest_, before);
    EXPECT_STREQ(dest_, "some");
    EXPECT_EQ(length_, 4);
}

TEST_F(SetString, NullArgumentsFailWithoutAReport) {
    EXPECT_EQ(com_setstring(nullptr, &length_, source_.data(), 4), CS_FAIL);
    EXPECT_EQ(com_setstring(&dest_, nullptr, source_.data(), 4), CS_FAIL);
    EXPECT_EQ(com_setstring(&dest_, &length_, nullptr, 4), CS_FAIL);
    EXPECT_EQ(com_setstring(&dest_, &length_, nullptr, CS_NULLTERM), CS_FAIL);
    EXPECT_EQ(dest_, nullptr);
    EXPECT_EQ(length_, -7);
}

TEST_F(SetString, OddityWithoutMemoryLosesTheOldString) {
    ASSERT_EQ(com_setstring(&dest_, &length_, source_.data(), 4), CS_SUCCEED);
    CS_CHAR *const old = dest_;
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        dest_ = old;
        CS_RETCODE status;
        {
            const FailingAllocator failing(1, span);
            status = com_setstring(&dest_, &length_, source_.data(), 9);
        }
        EXPECT_EQ(status, CS_MEM_ERROR);
        EXPECT_EQ(dest_, nullptr);
        EXPECT_EQ(length_, 4);
        EXPECT_STREQ(old, "some") << "it is still there, for whoever kept its address";
    }
    std::free(old);
}

TEST_F(SetString, RandomReplacements) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 20000; ++round) {
        std::string source(1 + random() % 300, ' ');
        for (char &c : source)
            c = static_cast<char>(1 + random() % 255);
        const bool terminated = random() % 2 == 0;
        ASSERT_EQ(com_setstring(&dest_, &length_, source.data(),
                                terminated ? CS_NULLTERM : static_cast<CS_INT>(source.size())),
                  CS_SUCCEED);
        ASSERT_EQ(dest_, source);
        ASSERT_EQ(length_, static_cast<CS_INT>(source.size()));
    }
}

// ---- com_secure_memset ----------------------------------------------------------------------------------------

TEST(SecureMemset, FillsJustItsBytes) {
    for (size_t count = 0; count < 70; ++count)
        for (const int value : {0, 0xA5, 0x1FF}) {
            std::string room(80, '\x7E');
            EXPECT_EQ(com_secure_memset(room.data() + 4, value, count), room.data() + 4);
            std::string expected(80, '\x7E');
            expected.replace(4, count, count, static_cast<char>(value));
            EXPECT_EQ(room, expected) << count;
        }
}

TEST(SecureMemsetDeathTest, Null) { EXPECT_NULL_REPORT(com_secure_memset(nullptr, 0, 1), "comutils"); }

TEST(SecureMemset, NullThatComesBackIsNull) {
    const ReturningAssertions assertions;
    EXPECT_EQ(com_secure_memset(nullptr, 0, 1), nullptr);
    EXPECT_EQ(assertions.count(), 1);
}

// ---- com_dlsym ------------------------------------------------------------------------------------------------

TEST(ComDlsym, FindsSymbolsOfTheProcess) {
    CS_CHAR known[] = "com_dlsym", library[] = "strlen", unknown[] = "no_such_symbol_anywhere";
    EXPECT_EQ(com_dlsym(known), reinterpret_cast<CS_VOID *>(&com_dlsym));
    EXPECT_NE(com_dlsym(library), nullptr);
    EXPECT_EQ(com_dlsym(unknown), nullptr);
}

TEST(ComDlsymDeathTest, Null) { EXPECT_NULL_REPORT(com_dlsym(nullptr), "comutils"); }

TEST(ComDlsym, NullThatComesBackIsNull) {
    const ReturningAssertions assertions;
    EXPECT_EQ(com_dlsym(nullptr), nullptr);
    EXPECT_EQ(assertions.count(), 1);
}

// ---- comn_get_default_tid -------------------------------------------------------------------------------------

TEST(DefaultTid, IsTheIntegerZero) {
    for (const CS_INT size : {4, 5, 100}) {
        CS_BYTE buffer[8];
        std::memset(buffer, 0x7E, sizeof buffer);
        CS_INT length = -7;
        EXPECT_EQ(comn_get_default_tid(buffer, size, &length), CS_SUCCEED);
        EXPECT_EQ(std::memcmp(buffer, "\0\0\0\0\x7E\x7E\x7E\x7E", 8), 0);
        EXPECT_EQ(length, 4);
    }
}

TEST(DefaultTid, NeedsNoLengthAndNoAlignment) {
    CS_BYTE buffer[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    EXPECT_EQ(comn_get_default_tid(buffer + 1, 4, nullptr), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(buffer, "\1\0\0\0\0\1\1\1", 8), 0);
}

TEST(DefaultTid, RoomOfLessThanFourFails) {
    CS_BYTE buffer[4] = {9, 9, 9, 9};
    CS_INT length = -7;
    for (const CS_INT size : {3, 0, -1, CS_UNUSED})
        EXPECT_EQ(comn_get_default_tid(buffer, size, &length), CS_FAIL) << size;
    EXPECT_EQ(buffer[0], 9);
    EXPECT_EQ(length, -7);
}

TEST(DefaultTidDeathTest, Null) {
    CS_INT length;
    EXPECT_NULL_REPORT(comn_get_default_tid(nullptr, 4, &length), "comutils");
}

TEST(DefaultTid, NullThatComesBackFails) {
    const ReturningAssertions assertions;
    CS_INT length = -7;
    EXPECT_EQ(comn_get_default_tid(nullptr, 4, &length), CS_FAIL);
    EXPECT_EQ(assertions.count(), 1);
    EXPECT_EQ(length, -7);
}

} // namespace
