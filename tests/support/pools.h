// Pools over memory that the test controls: a source of chunks that counts, refuses and watches its borders, a
// context that does the same, and views of the records.
#ifndef TESTS_SUPPORT_POOLS_H
#define TESTS_SUPPORT_POOLS_H

#include <dlxcomn/dlxcomn.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

namespace support {

constexpr CS_INT CHUNK_RECORD = 32; // in front of the first payload of a chunk
constexpr CS_INT BLOCK_HEADER = 8;
constexpr CS_INT BLOCK_LINK = 8; // in front of what a handle takes from the store

// Refuses the n-th request (from 1), or it and every later one; 0 refuses none.
struct Refusal {
    int n = 0;
    bool lasting = false;

    bool hits(int request) const { return n != 0 && (lasting ? request >= n : request == n); }
};

// Memory with a red zone of known content on either side.
class GuardedMemory {
public:
    char *obtain(CS_UINT size, std::size_t misaligned = 0) {
        char *whole = static_cast<char *>(std::malloc(size + 2 * ZONE));
        std::memset(whole, RED, size + 2 * ZONE);
        char *memory = whole + ZONE + misaligned;
        std::memset(memory, FRESH, size);
        held_[memory] = {whole, size};
        return memory;
    }
    // False if the memory did not come from here or was written around.
    bool give_back(const void *memory) {
        const auto found = held_.find(static_cast<const char *>(memory));
        if (found == held_.end())
            return false;
        const bool intact = is_intact(found->first, found->second);
        std::free(found->second.whole);
        held_.erase(found);
        return intact;
    }
    bool is_intact() const {
        for (const auto &[memory, piece] : held_)
            if (!is_intact(memory, piece))
                return false;
        return true;
    }
    std::size_t count() const { return held_.size(); }
    // The size of what lies at this address, or 0.
    CS_UINT size_at(const void *memory) const {
        const auto found = held_.find(static_cast<const char *>(memory));
        return found == held_.end() ? 0 : found->second.size;
    }
    // Whether the bytes lie inside one piece.
    bool holds(const void *memory, std::size_t size) const {
        const auto *begin = static_cast<const char *>(memory);
        auto next = held_.upper_bound(begin);
        if (next == held_.begin())
            return false;
        --next;
        return begin + size <= next->first + next->second.size;
    }
    ~GuardedMemory() {
        for (const auto &[memory, piece] : held_)
            std::free(piece.whole);
    }
    GuardedMemory() = default;
    GuardedMemory(const GuardedMemory &) = delete;
    GuardedMemory &operator=(const GuardedMemory &) = delete;

private:
    static constexpr std::size_t ZONE = 64;
    static constexpr int RED = 0xFB;
    static constexpr int FRESH = 0xA7;
    struct Piece {
        char *whole;
        CS_UINT size;
    };

    static bool is_intact(const char *memory, const Piece &piece) {
        for (const char *p = piece.whole; p < piece.whole + piece.size + 2 * ZONE; ++p) {
            if (p == memory)
                p += piece.size;
            if (static_cast<unsigned char>(*p) != RED)
                return false;
        }
        return true;
    }

    std::map<const char *, Piece> held_;
};

// What MM_PROP_SBREAK and MM_PROP_UNSBREAK are given, with the source itself as their argument.
struct ChunkSource {
    GuardedMemory memory;
    Refusal refusal;
    std::size_t misaligned = 0;
    CS_RETCODE unsbreak_status = CS_SUCCEED;
    std::vector<CS_INT> sizes; // of every request, the refused ones too
    std::vector<MM_HANDLE *> handles;
    int returned = 0;
    int bad_returns = 0;

    static CS_VOID *obtain(MM_HANDLE *mmh, CS_VOID *param, CS_INT size) {
        auto *self = static_cast<ChunkSource *>(param);
        self->sizes.push_back(size);
        self->handles.push_back(mmh);
        if (self->refusal.hits(static_cast<int>(self->sizes.size())))
            return nullptr;
        return self->memory.obtain(static_cast<CS_UINT>(size), self->misaligned);
    }
    static CS_RETCODE give_back(MM_HANDLE *mmh, CS_VOID *param, CS_VOID *buffer) {
        auto *self = static_cast<ChunkSource *>(param);
        self->handles.push_back(mmh);
        if (self->unsbreak_status == CS_SUCCEED) {
            ++self->returned;
            self->bad_returns += !self->memory.give_back(buffer);
        }
        return self->unsbreak_status;
    }
};

template <class Function>
CS_VOID *as_buffer(Function *function) {
    return reinterpret_cast<CS_VOID *>(function);
}

inline CS_RETCODE set_integer(MM_HANDLE *mmh, CS_INT property, CS_INT value) {
    return comn_mmproperty(mmh, MM_SET, property, &value, sizeof value, nullptr);
}
inline CS_RETCODE set_pointer(MM_HANDLE *mmh, CS_INT property, CS_VOID *value) {
    return comn_mmproperty(mmh, MM_SET, property, value, MM_OPT_UNUSED, nullptr);
}

// Room of the caller for the records of a pool.
struct RecordArea {
    alignas(8) char bytes[sizeof(MmPoolHead) + sizeof(MM_HANDLE)];

    RecordArea() { std::memset(bytes, 0x5A, sizeof bytes); }
    MM_HANDLE *address() { return reinterpret_cast<MM_HANDLE *>(bytes); }
    MmPoolHead *head() { return reinterpret_cast<MmPoolHead *>(bytes); }
    MM_HANDLE *handle() { return reinterpret_cast<MM_HANDLE *>(bytes + sizeof(MmPoolHead)); }
};

// A pool without a lock over a source of its own; it is dropped by force at the end.
class SourcedPool {
public:
    explicit SourcedPool(CS_INT type = MM_BUDDY, CS_INT blocksize = 4096, CS_INT chunksize = 4136) {
        handle_ = area_.address();
        comn_mmmanage(nullptr, 0, &handle_);
        set_pointer(handle_, MM_PROP_SBREAK, as_buffer(ChunkSource::obtain));
        set_pointer(handle_, MM_PROP_UNSBREAK, as_buffer(ChunkSource::give_back));
        set_pointer(handle_, MM_PROP_PARAM, &source);
        set_integer(handle_, MM_PROP_TYPE, type);
        set_integer(handle_, MM_PROP_BLOCKSIZE, blocksize);
        set_integer(handle_, MM_PROP_CHUNKSIZE, chunksize);
    }
    ~SourcedPool() { drop(); }
    SourcedPool(const SourcedPool &) = delete;
    SourcedPool &operator=(const SourcedPool &) = delete;

    operator MM_HANDLE *() const { return handle_; }
    MM_HANDLE *operator->() const { return handle_; }
    MmPoolHead *head() { return area_.head(); }

    // Null where the allocation fails.
    char *allocate(CS_INT size) {
        CS_VOID *memory = nullptr;
        comn_mmalloc(handle_, size, &memory);
        return static_cast<char *>(memory);
    }
    CS_RETCODE drop() { return handle_->mmh_status == 0 ? CS_SUCCEED : comn_mmdrop(handle_, MM_DROP_FORCE); }

    ChunkSource source;

private:
    RecordArea area_;
    MM_HANDLE *handle_;
};

// A context whose allocations are counted, can fail, and are watched at their borders.
class PoolContext {
public:
    PoolContext() {
        context_.ctxversion = 114;
        context_.ctxmalloc = obtain;
        context_.ctxfree = give_back;
        context_.ctxctctx = this;
    }
    PoolContext(const PoolContext &) = delete;
    PoolContext &operator=(const PoolContext &) = delete;

    operator CS_CONTEXT *() { return &context_; }
    CS_CONTEXT *operator->() { return &context_; }

    GuardedMemory memory;
    Refusal refusal;
    std::vector<CS_UINT> sizes;
    int freed = 0;
    int bad_frees = 0;

private:
    static CS_VOID *obtain(CS_CONTEXT *context, CS_UINT size) {
        auto *self = static_cast<PoolContext *>(context->ctxctctx);
        self->sizes.push_back(size);
        return self->refusal.hits(static_cast<int>(self->sizes.size())) ? nullptr : self->memory.obtain(size);
    }
    static CS_RETCODE give_back(CS_CONTEXT *context, CS_VOID *memory) {
        auto *self = static_cast<PoolContext *>(context->ctxctctx);
        ++self->freed;
        self->bad_frees += !self->memory.give_back(memory);
        return CS_SUCCEED;
    }

    CS_CONTEXT context_ = {};
};

// ---- Views of records -----------------------------------------------------------------------------------------

inline bool is_zero(const void *memory, std::size_t size) {
    const auto *bytes = static_cast<const char *>(memory);
    for (std::size_t i = 0; i < size; ++i)
        if (bytes[i] != 0)
            return false;
    return true;
}

inline CS_UINT word_at(const void *address) {
    CS_UINT word;
    std::memcpy(&word, address, sizeof word);
    return word;
}

// Of a block that a buddy pool gave out.
inline CS_UINT header_word(const void *block) { return word_at(static_cast<const char *>(block) - BLOCK_HEADER); }

template <class Node>
std::size_t length_of(const Node *list, Node *Node::*next) {
    std::size_t length = 0;
    for (; list != nullptr; list = list->*next)
        ++length;
    return length;
}
inline std::size_t chunk_count(const MM_HANDLE *mmh) { return length_of(mmh->mmh_head->mph_heap, &MmHeap::next); }
inline std::size_t block_count(const MM_HANDLE *mmh) { return length_of(mmh->mmh_blocks, &MmBlock::next); }
inline std::size_t free_count(const MM_HANDLE *mmh, CS_INT order) {
    return length_of(mmh->mmh_pool.af.free[order], &MmDList::next);
}

// The free list of every chunk ascends, lies inside its chunk and never holds two touching blocks.
inline bool is_store_sound(const MM_HANDLE *mmh) {
    for (const MmHeap *chunk = mmh->mmh_head->mph_heap; chunk != nullptr; chunk = chunk->next) {
        const char *begin = reinterpret_cast<const char *>(&chunk->buffer);
        const char *end = reinterpret_cast<const char *>(chunk) + chunk->size;
        const char *last = nullptr;
        for (const MmList *block = chunk->free; block != nullptr; block = block->link) {
            const char *at = reinterpret_cast<const char *>(block);
            if (at < begin || (last != nullptr && at <= last) || block->size < 8 || block->size % 8 != 0)
                return false;
            last = at + block->size + BLOCK_HEADER;
            if (last > end)
                return false;
        }
    }
    return true;
}

} // namespace support

#endif
