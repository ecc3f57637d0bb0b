// The four allocators: the plain ones, so that a block of one library can be freed by another.
#include "support/failing_allocator.h"

#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

using support::FailingAllocator;

TEST(IntlMemory, BlocksAreThePlainAllocatorsOwn) {
    const FailingAllocator counting;
    std::free(comn_malloc(100));
    std::free(comn_calloc(10, 10));
    std::free(comn_realloc(std::malloc(5), 100));
    comn_free(std::malloc(100));
    EXPECT_EQ(counting.asked(), 5);
    EXPECT_EQ(counting.held(), 0);
    comn_free(nullptr);
}

TEST(IntlMemory, CallocClears) {
    for (int i = 0; i < 100; ++i) {
        auto *used = static_cast<unsigned char *>(comn_malloc(700));
        std::memset(used, 0xAB, 700);
        comn_free(used);
        auto *cleared = static_cast<unsigned char *>(comn_calloc(7, 100));
        ASSERT_NE(cleared, nullptr);
        EXPECT_TRUE(std::all_of(cleared, cleared + 700, [](unsigned char byte) { return byte == 0; }));
        comn_free(cleared);
    }
}

TEST(IntlMemory, ReallocKeepsWhatWasThereAndTakesNullForAnEmptyBlock) {
    auto *block = static_cast<char *>(comn_realloc(nullptr, 6));
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "kept!", 6);
    block = static_cast<char *>(comn_realloc(block, 100'000));
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(block, "kept!");
    comn_free(block);
}

TEST(IntlMemory, WithoutMemoryEachIsNullAndReallocKeepsTheBlock) {
    void *block = comn_malloc(8);
    std::memcpy(block, "kept!", 6);
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING}) {
        const auto without_memory = [&](auto call) {
            const FailingAllocator failing(1, span);
            return call() == nullptr;
        };
        EXPECT_TRUE(without_memory([] { return comn_malloc(8); }));
        EXPECT_TRUE(without_memory([] { return comn_calloc(2, 4); }));
        EXPECT_TRUE(without_memory([&] { return comn_realloc(block, 100); }));
        EXPECT_STREQ(static_cast<char *>(block), "kept!");
    }
    comn_free(block);
}

} // namespace
