// A million random operations over pools of the three kinds and their sub-pools, beside a model that knows every
// live block: no two overlap, each lies in a chunk that the source still lends, holds what was written to it and
// has the header word that its kind gives it; chunks go back once and whole.
#include "support/assertions.h"
#include "support/pools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

using namespace support;

namespace {

constexpr CS_UINT OVERSIZED = 0x80000000;
constexpr CS_UINT FREE = 0x40000000;

struct Live {
    CS_INT size;          // as asked for
    CS_INT bytes;         // that the block holds
    unsigned char filler; // of all its bytes asked for
    MM_HANDLE *owner;
};

class Workload {
public:
    Workload(CS_INT type, CS_INT blocksize, CS_INT chunksize, std::uint64_t seed)
        : pool_(type, blocksize, chunksize), random_(seed), type_(type) {}

    void run(int operations) {
        for (int i = 0; i < operations && !testing::Test::HasFailure(); ++i) {
            const std::uint64_t dice = random_() % 1000;
            // Long tides of growing and shrinking, so that chunks come and go.
            const std::uint64_t wanted = i / 5000 % 2 == 0 ? 600 : 400;
            if (dice == 0)
                make_or_drop_subpool();
            else if (dice < wanted || live_.empty() || type_ == MM_ALLOCONLY)
                allocate();
            else if (dice < 900 || type_ != MM_BUDDY)
                release(pick());
            else
                reallocate(pick());
            if (i % 1024 == 0)
                check_all();
        }
        check_all();
        if (type_ == MM_BUDDY) {
            while (!live_.empty() && !testing::Test::HasFailure())
                release(live_.begin());
        }
        EXPECT_EQ(pool_.drop(), CS_SUCCEED);
        EXPECT_EQ(pool_.source.memory.count(), 0U);
        EXPECT_EQ(pool_.source.bad_returns, 0);
    }

private:
    using Blocks = std::map<char *, Live>;

    MM_HANDLE *any_handle() {
        const std::size_t which = random_() % (children_.size() + 1);
        return which == children_.size() ? static_cast<MM_HANDLE *>(pool_) : children_[which];
    }
    Blocks::iterator pick() {
        const auto at = live_.lower_bound(reinterpret_cast<char *>(random_() % (highest_ - lowest_ + 1) + lowest_));
        return at == live_.end() ? live_.begin() : at;
    }
    CS_INT any_size() {
        if (type_ == MM_UNIFORM)
            return 61;
        return static_cast<CS_INT>(random_() % (random_() % 50 == 0 ? 12'000 : random_() % 2 == 0 ? 64 : 1500));
    }

    void allocate() {
        MM_HANDLE *owner = any_handle();
        const CS_INT size = any_size();
        CS_VOID *memory = nullptr;
        ASSERT_EQ(comn_mmalloc(owner, size, &memory), CS_SUCCEED);
        ASSERT_TRUE(is_zero(memory, static_cast<std::size_t>(size)));
        enter(static_cast<char *>(memory), size, owner);
    }

    void enter(char *block, CS_INT size, MM_HANDLE *owner) {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0U);
        Live live = {size, held_by(block, size, owner), static_cast<unsigned char>(random_()), owner};
        ASSERT_TRUE(pool_.source.memory.holds(block, static_cast<std::size_t>(live.bytes)));
        const auto next = live_.lower_bound(block);
        ASSERT_TRUE(next == live_.end() || block + live.bytes <= next->first);
        ASSERT_TRUE(next == live_.begin() || std::prev(next)->first + std::prev(next)->second.bytes <= block);
        std::memset(block, live.filler, static_cast<std::size_t>(size));
        if (size != 0 || type_ != MM_ALLOCONLY)
            live_.emplace(block, live);
        lowest_ = std::min(lowest_, reinterpret_cast<std::uint64_t>(block));
        highest_ = std::max(highest_, reinterpret_cast<std::uint64_t>(block));
    }

    // The bytes that belong to a block by the rules of its kind, its header checked on the way.
    CS_INT held_by(const char *block, CS_INT size, const MM_HANDLE *owner) {
        const CS_UINT word = header_word(block);
        if (type_ == MM_ALLOCONLY)
            return (size + 7) / 8 * 8;
        if (type_ == MM_UNIFORM) {
            EXPECT_EQ(word, 72U);
            return 64;
        }
        CS_INT order = 1;
        while ((16 << order) < size + 8)
            ++order;
        const CS_INT bpmax = owner->mmh_pool.af.bpmax;
        if (order > bpmax) {
            EXPECT_EQ(word, static_cast<CS_UINT>(size) | OVERSIZED);
            return size;
        }
        EXPECT_EQ(word & (OVERSIZED | FREE | 0x3FE00000U | 0xFU), static_cast<CS_UINT>(order));
        // The region that the header tells begins a multiple of the block's size in front of it.
        const auto low = static_cast<CS_UINT>(reinterpret_cast<std::uintptr_t>(block - 8)) & 0x7FFFC;
        const CS_UINT offset = (low - ((word & 0x1FFFF0) >> 2)) & 0x7FFFF;
        EXPECT_EQ(offset % (16U << order), 0U);
        EXPECT_LT(offset, 16U << bpmax);
        return (16 << order) - 8;
    }

    void check_content(const char *block, const Live &live, CS_INT count) {
        const auto *end = block + count;
        ASSERT_EQ(std::find_if(block, end, [&](char c) { return static_cast<unsigned char>(c) != live.filler; }), end);
    }

    void release(Blocks::iterator at) {
        const auto [block, live] = *at;
        check_content(block, live, live.size);
        live_.erase(at);
        ASSERT_EQ(comn_mmfree(live.owner, block), CS_SUCCEED);
        // A larger one is the store's again, or even the source's.
        ASSERT_TRUE(type_ != MM_BUDDY || live.bytes > 4088 || (header_word(block) & FREE) != 0);
    }

    void reallocate(Blocks::iterator at) {
        const auto [block, live] = *at;
        const CS_INT size = any_size();
        const CS_UINT word = header_word(block);
        const CS_INT capacity = (word & OVERSIZED) != 0 ? live.size : 16 << (word & 0xF);
        CS_VOID *moved = block;
        ASSERT_EQ(comn_mmrealloc(live.owner, size, &moved), CS_SUCCEED);
        if (size <= capacity) {
            ASSERT_EQ(moved, block);
            return;
        }
        ASSERT_NE(moved, block);
        check_content(static_cast<char *>(moved), live, live.size);
        live_.erase(at);
        enter(static_cast<char *>(moved), size, live.owner);
    }

    void make_or_drop_subpool() {
        if (children_.size() < 4) {
            MM_HANDLE *child = pool_;
            ASSERT_EQ(com___subpool(pool_, static_cast<CS_INT>(children_.size()), &child), CS_SUCCEED);
            ASSERT_EQ(set_integer(child, MM_PROP_BLOCKSIZE, 4096), CS_SUCCEED);
            children_.push_back(child);
            return;
        }
        MM_HANDLE *child = children_.front();
        children_.erase(children_.begin());
        for (auto at = live_.begin(); at != live_.end();) {
            if (at->second.owner == child) {
                check_content(at->first, at->second, at->second.size);
                at = live_.erase(at);
            } else {
                ++at;
            }
        }
        ASSERT_EQ(comn_mmdrop(child, MM_OPT_UNUSED), CS_SUCCEED);
    }

    void check_all() {
        for (const auto &[block, live] : live_) {
            check_content(block, live, live.size);
            ASSERT_EQ(held_by(block, live.size, live.owner), live.bytes);
        }
        ASSERT_TRUE(is_store_sound(pool_));
        ASSERT_TRUE(pool_.source.memory.is_intact());
        ASSERT_EQ(pool_.source.memory.count(), chunk_count(pool_));
    }

    SourcedPool pool_;
    std::mt19937_64 random_;
    CS_INT type_;
    std::vector<MM_HANDLE *> children_;
    Blocks live_;
    std::uint64_t lowest_ = UINT64_MAX;
    std::uint64_t highest_ = 0;
};

TEST(PoolWorkloadTest, BuddyBlocksInChunksOfTheDefaultSize) { Workload(MM_BUDDY, 4096, 4136, 8104).run(300'000); }
TEST(PoolWorkloadTest, BuddyBlocksInLargeChunks) { Workload(MM_BUDDY, 4096, 200'000, 8105).run(300'000); }
TEST(PoolWorkloadTest, UniformNodes) { Workload(MM_UNIFORM, 4096, 4136, 8106).run(250'000); }
TEST(PoolWorkloadTest, UniformNodesInLargeChunks) { Workload(MM_UNIFORM, 4096, 100'000, 8107).run(100'000); }
TEST(PoolWorkloadTest, AllocOnlyBlocks) { Workload(MM_ALLOCONLY, 4096, 50'000, 8108).run(50'000); }

} // namespace
