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

#ifdef __SANITIZE_ADDRESS__
#include <cstdint>
#include <elf.h>
#include <link.h>
#include <sanitizer/lsan_interface.h>
#include <sys/auxv.h>
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define REAL_ALLOCATOR(function) __interceptor_##function
#else
#define REAL_ALLOCATOR(function) __libc_##function
#endif

// The run time of a sanitizer allocates before it can take note of a call or of an access.
#define BEFORE_SANITIZER __attribute__((no_sanitize("thread", "address", "undefined")))

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

// The dynamic linker keeps memory in places that the leak check does not look at: the modules that pthread_exit
// loads, the thread-local storage of modules. The check takes all that the linker asks for as in use, and knows
// it by the direct caller of the allocator, which would be this header for everybody. So while one of these
// lives, an allocation counts as in use if `caller` is the linker.
class LinkersOwn {
public:
#ifdef __SANITIZE_ADDRESS__
    BEFORE_SANITIZER explicit LinkersOwn(const void *caller) : marks_(in_linker(caller)) {
        if (marks_)
            __lsan_disable();
    }
    BEFORE_SANITIZER ~LinkersOwn() {
        if (marks_)
            __lsan_enable();
    }
    LinkersOwn(const LinkersOwn &) = delete;
    LinkersOwn &operator=(const LinkersOwn &) = delete;

private:
    BEFORE_SANITIZER static bool in_linker(const void *code) {
        static const std::uintptr_t base = getauxval(AT_BASE);
        static const std::uintptr_t size = extent(base);
        return reinterpret_cast<std::uintptr_t>(code) - base < size;
    }
    // Of the module that lies there; 0 if the program was started by hand through the linker.
    BEFORE_SANITIZER static std::uintptr_t extent(std::uintptr_t base) {
        if (base == 0)
            return 0;
        const auto *header = reinterpret_cast<const ElfW(Ehdr) *>(base);
        const auto *segments = reinterpret_cast<const ElfW(Phdr) *>(base + header->e_phoff);
        std::uintptr_t end = 0;
        for (int i = 0; i < header->e_phnum; ++i)
            if (segments[i].p_type == PT_LOAD)
                end = segments[i].p_vaddr + segments[i].p_memsz; // they ascend
        return end;
    }

    bool marks_;
#else
    BEFORE_SANITIZER explicit LinkersOwn(const void * /*caller*/) {}
#endif
};

} // namespace support

extern "C" {

BEFORE_SANITIZER void *malloc(std::size_t size) noexcept {
    [[maybe_unused]] const support::LinkersOwn own(__builtin_return_address(0));
    return support::FailingAllocator::refuses() ? nullptr
                                                : support::FailingAllocator::made(REAL_ALLOCATOR(malloc)(size));
}

BEFORE_SANITIZER void *calloc(std::size_t count, std::size_t size) noexcept {
    [[maybe_unused]] const support::LinkersOwn own(__builtin_return_address(0));
    return support::FailingAllocator::refuses() ? nullptr
                                                : support::FailingAllocator::made(REAL_ALLOCATOR(calloc)(count, size));
}

BEFORE_SANITIZER void *realloc(void *memory, std::size_t size) noexcept {
    [[maybe_unused]] const support::LinkersOwn own(__builtin_return_address(0));
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
