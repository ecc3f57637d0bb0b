// Makes the plain allocator fail on demand, and counts what is held.
//
// This header defines malloc, calloc, realloc and free for the executable that includes it (in one source
// only). The library's calls bind to them, as they would to any allocator that a program brings along. Each
// passes on to the C library's own, or under a sanitizer to the one that the sanitizer's run time exports, so
// that memory errors and leaks are still seen there. Without a FailingAllocator they only pass on.
#ifndef TESTS_SUPPORT_FAILING_ALLOCATOR_H
#define TESTS_SUPPORT_FAILING_ALLOCATOR_H

#include <cerrno>
#include <cstddef>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define REAL_ALLOCATOR(function) __interceptor_##function
#else
#define REAL_ALLOCATOR(function) __libc_##function
#endif

// The run time of the thread sanitizer allocates before it can take note of a call.
#define BEFORE_SANITIZER __attribute__((no_sanitize("thread")))

extern "C" {
void *REAL_ALLOCATOR(malloc)(std::size_t size);
void *REAL_ALLOCATOR(calloc)(std::size_t count, std::size_t size);
void *REAL_ALLOCATOR(realloc)(void *memory, std::size_t size);
void REAL_ALLOCATOR(free)(void *memory);
}

namespace support {

// While one of these lives, allocations of this thread are counted, and the n-th (from 1) fails: that one
// alone, or it and every later one.
class FailingAllocator {
public:
    enum Span { ONCE, LASTING };

    // 0 fails none.
    explicit FailingAllocator(int n = 0, Span span = ONCE) : failing_(n), span_(span) { current_ = this; }
    ~FailingAllocator() { current_ = nullptr; }
    FailingAllocator(const FailingAllocator &) = delete;
    FailingAllocator &operator=(const FailingAllocator &) = delete;

    // Allocations asked for, with those that failed.
    int asked() const { return asked_; }
    // Allocations made less allocations released.
    int held() const { return held_; }
    // Keeps the bytes that `memory` has at its release.
    void watch(const void *memory, void *image, std::size_t size) {
        watched_ = memory;
        image_ = image;
        size_ = size;
    }

    BEFORE_SANITIZER static bool refuses() {
        FailingAllocator *self = current_;
        if (self == nullptr)
            return false;
        ++self->asked_;
        if (self->failing_ == 0 || self->asked_ < self->failing_ ||
            (self->span_ == ONCE && self->asked_ != self->failing_))
            return false;
        errno = ENOMEM; // the C library counts on it
        return true;
    }
    BEFORE_SANITIZER static void *made(void *memory) {
        if (current_ != nullptr && memory != nullptr)
            ++current_->held_;
        return memory;
    }
    BEFORE_SANITIZER static void released(const void *memory) {
        if (current_ == nullptr || memory == nullptr)
            return;
        --current_->held_;
        if (memory == current_->watched_)
            std::memcpy(current_->image_, memory, current_->size_);
    }

private:
    static inline thread_local FailingAllocator *current_ = nullptr;
    int failing_;
    Span span_;
    int asked_ = 0;
    int held_ = 0;
    const void *watched_ = nullptr;
    void *image_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace support

extern "C" {

BEFORE_SANITIZER void *malloc(std::size_t size) noexcept {
    return support::FailingAllocator::refuses() ? nullptr
                                                : support::FailingAllocator::made(REAL_ALLOCATOR(malloc)(size));
}

BEFORE_SANITIZER void *calloc(std::size_t count, std::size_t size) noexcept {
    return support::FailingAllocator::refuses() ? nullptr
                                                : support::FailingAllocator::made(REAL_ALLOCATOR(calloc)(count, size));
}

BEFORE_SANITIZER void *realloc(void *memory, std::size_t size) noexcept {
    if (support::FailingAllocator::refuses())
        return nullptr;
    void *moved = REAL_ALLOCATOR(realloc)(memory, size);
    if (moved != nullptr || size == 0)
        support::FailingAllocator::released(memory);
    return support::FailingAllocator::made(moved);
}

BEFORE_SANITIZER void free(void *memory) noexcept {
    support::FailingAllocator::released(memory);
    REAL_ALLOCATOR(free)(memory);
}

} // extern "C"

#endif
