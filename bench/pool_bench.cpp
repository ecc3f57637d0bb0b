// Pools against allocators: blocks that come and go in random order, blocks that go together, nodes of one size.
// Every contender hands out zeroed memory, as a pool does. The pools have no lock and take their chunks from malloc.
#include "contest.h"
#include "data.h"

#include <dlxcomn/dlxcomn.h>

#include <apr_general.h>
#include <apr_pools.h>
#include <dlfcn.h>
#include <talloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <memory_resource>
#include <optional>

namespace bench {
namespace {

constexpr CS_INT DEFAULT_CHUNK = 4136;
constexpr CS_INT LARGE_CHUNK = 1 << 20;

// ---- Contenders -----------------------------------------------------------------------------------------------
// Each has allocate(size), which clears, and release(block, size).

template <CS_INT TYPE, CS_INT CHUNK>
class Pool {
public:
    Pool() {
        handle_ = reinterpret_cast<MM_HANDLE *>(area_);
        comn_mmmanage(nullptr, 0, &handle_);
        set(MM_PROP_SBREAK, reinterpret_cast<CS_VOID *>(obtain));
        set(MM_PROP_UNSBREAK, reinterpret_cast<CS_VOID *>(give_back));
        CS_INT type = TYPE;
        set(MM_PROP_TYPE, &type);
        CS_INT chunk = CHUNK;
        set(MM_PROP_CHUNKSIZE, &chunk);
    }
    ~Pool() { comn_mmdrop(handle_, MM_DROP_FORCE); }
    Pool(const Pool &) = delete;
    Pool &operator=(const Pool &) = delete;

    void *allocate(std::size_t size) {
        CS_VOID *block = nullptr;
        comn_mmalloc(handle_, static_cast<CS_INT>(size), &block);
        return block;
    }
    void release(void *block, std::size_t) { comn_mmfree(handle_, block); }

private:
    static CS_VOID *obtain(MM_HANDLE *, CS_VOID *, CS_INT size) { return std::malloc(static_cast<std::size_t>(size)); }
    static CS_RETCODE give_back(MM_HANDLE *, CS_VOID *, CS_VOID *chunk) {
        std::free(chunk);
        return CS_SUCCEED;
    }
    void set(CS_INT property, CS_VOID *value) {
        comn_mmproperty(handle_, MM_SET, property, value, MM_OPT_UNUSED, nullptr);
    }

    alignas(8) char area_[sizeof(MmPoolHead) + sizeof(MM_HANDLE)];
    MM_HANDLE *handle_;
};

class Glibc {
public:
    void *allocate(std::size_t size) { return std::memset(std::malloc(size), 0, size); }
    void release(void *block, std::size_t) { std::free(block); }
};

// Its shared library would take over malloc for the whole program, so it is loaded where only its own names reach.
class Mimalloc {
public:
    void *allocate(std::size_t size) { return std::memset(functions().allocate(size), 0, size); }
    void release(void *block, std::size_t) { functions().release(block); }

private:
    struct Functions {
        void *(*allocate)(std::size_t);
        void (*release)(void *);
    };
    static const Functions &functions() {
        static const Functions loaded = load();
        return loaded;
    }
    static Functions load() {
        void *library = dlopen("libmimalloc.so.2", RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::exit(1);
        }
        return {reinterpret_cast<void *(*)(std::size_t)>(dlsym(library, "mi_malloc")),
                reinterpret_cast<void (*)(void *)>(dlsym(library, "mi_free"))};
    }
};

class Talloc {
public:
    void *allocate(std::size_t size) { return _talloc_zero(context_.get(), size, "block"); }
    void release(void *block, std::size_t) { talloc_free(block); }

private:
    struct Free {
        void operator()(void *context) const { talloc_free(context); }
    };
    std::unique_ptr<void, Free> context_{talloc_new(nullptr)};
};

template <class Resource>
class Pmr {
public:
    void *allocate(std::size_t size) { return std::memset(resource_.allocate(size, 8), 0, size); }
    void release(void *block, std::size_t size) { resource_.deallocate(block, size, 8); }

private:
    Resource resource_;
};

class Apr {
public:
    Apr() {
        static const apr_status_t ready = apr_initialize();
        if (ready != APR_SUCCESS || apr_pool_create(&pool_, nullptr) != APR_SUCCESS)
            std::abort();
    }
    ~Apr() { apr_pool_destroy(pool_); }
    Apr(const Apr &) = delete;
    Apr &operator=(const Apr &) = delete;

    void *allocate(std::size_t size) { return apr_pcalloc(pool_, size); }

private:
    apr_pool_t *pool_ = nullptr;
};

// ---- Work -----------------------------------------------------------------------------------------------------

// Whether the block is all zeros; it is dirty afterwards.
bool was_clear(void *block, std::size_t size) {
    auto *bytes = static_cast<unsigned char *>(block);
    const bool clear = bytes != nullptr && std::all_of(bytes, bytes + size, [](unsigned char c) { return c == 0; });
    if (clear)
        std::memset(block, 0xFF, size);
    return clear;
}

// Which of the live blocks is released for a new one, and of what size that is. A long row, so that no allocator
// learns it.
struct Turnover {
    static constexpr std::size_t LIVE = 1000;
    static constexpr std::size_t STEPS = 64 * VALUES;
    std::vector<std::uint16_t> slots;
    std::vector<std::uint16_t> sizes;

    Turnover(std::size_t smallest, std::size_t largest, std::uint64_t seed) {
        Random random(seed);
        for (std::size_t i = 0; i < STEPS; ++i) {
            slots.push_back(static_cast<std::uint16_t>(below(random, LIVE)));
            sizes.push_back(static_cast<std::uint16_t>(smallest + below(random, largest - smallest + 1)));
        }
    }
};

// One value is one release and one allocation.
template <class Allocator>
class ComingAndGoing {
public:
    explicit ComingAndGoing(const Turnover &turnover) : turnover_(turnover) {
        for (std::size_t slot = 0; slot < Turnover::LIVE; ++slot)
            place(slot, turnover.sizes[slot]);
    }
    ~ComingAndGoing() {
        for (const Block &block : live_)
            allocator_.release(block.memory, block.size);
    }
    ComingAndGoing(const ComingAndGoing &) = delete;
    ComingAndGoing &operator=(const ComingAndGoing &) = delete;

    void work(std::size_t) {
        slot_ = turnover_.slots[step_];
        allocator_.release(live_[slot_].memory, live_[slot_].size);
        place(slot_, turnover_.sizes[step_]);
        step_ = (step_ + 1) % Turnover::STEPS;
    }
    bool right(std::size_t) const { return was_clear(live_[slot_].memory, live_[slot_].size); }

private:
    struct Block {
        void *memory;
        std::size_t size;
    };
    void place(std::size_t slot, std::size_t size) { live_[slot] = {allocator_.allocate(size), size}; }

    const Turnover &turnover_;
    Allocator allocator_;
    Block live_[Turnover::LIVE];
    std::size_t slot_ = 0;
    std::size_t step_ = 0;
};

struct Nothing {};

// One value is one block; each thousand or so goes together, allocator and all.
template <class Allocator>
class AllAtOnce {
public:
    static constexpr std::size_t SIZE = 64;

    explicit AllAtOnce(const Nothing &) {}
    void work(std::size_t i) {
        if (i == 0)
            allocator_.emplace();
        block_ = allocator_->allocate(SIZE);
    }
    bool right(std::size_t) const { return was_clear(block_, SIZE); }

private:
    std::optional<Allocator> allocator_;
    void *block_ = nullptr;
};

} // namespace

void enter_pool_rows() {
    static const Turnover mixed(16, 2000, 300);
    static const Turnover nodes(48, 48, 301);
    static const Nothing nothing;

    const auto enter_mixed = [](const std::string &row, auto *pool) {
        enter<ComingAndGoing<std::remove_pointer_t<decltype(pool)>>>(row, LIBRARY, mixed);
        enter<ComingAndGoing<Glibc>>(row, "glibc", mixed);
        enter<ComingAndGoing<Mimalloc>>(row, "mimalloc", mixed);
        enter<ComingAndGoing<Talloc>>(row, "talloc", mixed);
    };
    enter_mixed("pool buddy 16-2000, default chunks", static_cast<Pool<MM_BUDDY, DEFAULT_CHUNK> *>(nullptr));
    enter_mixed("pool buddy 16-2000, 1 MB chunks", static_cast<Pool<MM_BUDDY, LARGE_CHUNK> *>(nullptr));

    const auto enter_bump = [](const std::string &row, auto *pool) {
        enter<AllAtOnce<std::remove_pointer_t<decltype(pool)>>>(row, LIBRARY, nothing);
        enter<AllAtOnce<Pmr<std::pmr::monotonic_buffer_resource>>>(row, "pmr monotonic", nothing);
        enter<AllAtOnce<Apr>>(row, "apr", nothing);
    };
    enter_bump("pool alloc-only 64, default chunks", static_cast<Pool<MM_ALLOCONLY, DEFAULT_CHUNK> *>(nullptr));
    enter_bump("pool alloc-only 64, 1 MB chunks", static_cast<Pool<MM_ALLOCONLY, LARGE_CHUNK> *>(nullptr));

    const auto enter_nodes = [](const std::string &row, auto *pool) {
        enter<ComingAndGoing<std::remove_pointer_t<decltype(pool)>>>(row, LIBRARY, nodes);
        enter<ComingAndGoing<Pmr<std::pmr::unsynchronized_pool_resource>>>(row, "pmr pool", nodes);
        enter<ComingAndGoing<Mimalloc>>(row, "mimalloc", nodes);
    };
    enter_nodes("pool uniform 48, default chunks", static_cast<Pool<MM_UNIFORM, DEFAULT_CHUNK> *>(nullptr));
    enter_nodes("pool uniform 48, 1 MB chunks", static_cast<Pool<MM_UNIFORM, LARGE_CHUNK> *>(nullptr));
}

} // namespace bench
