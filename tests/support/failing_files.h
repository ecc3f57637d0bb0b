// Makes the system's calls for files fail on demand, and counts what is open and mapped.
//
// This header defines the functions below for the executable that includes it (in one source only). The library's calls
// bind to them, and they pass on to the real ones, or to those of a sanitizer, unless they are to fail.
#ifndef TESTS_SUPPORT_FAILING_FILES_H
#define TESTS_SUPPORT_FAILING_FILES_H

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace support {

// While one of these lives, calls of `function` by this thread fail, and what its calls open and map is counted.
class FailingFiles {
public:
    explicit FailingFiles(const char *function = "") : function_(function) { current_ = this; }
    ~FailingFiles() { current_ = nullptr; }
    FailingFiles(const FailingFiles &) = delete;
    FailingFiles &operator=(const FailingFiles &) = delete;

    int failed() const { return failed_; }
    int open() const { return open_; }
    int mapped() const { return mapped_; }

    static bool refuses(const char *function, int error) {
        FailingFiles *self = current_;
        if (self == nullptr || std::strcmp(function, self->function_) != 0)
            return false;
        ++self->failed_;
        errno = error;
        return true;
    }
    static void count_open(int change) {
        if (current_ != nullptr)
            current_->open_ += change;
    }
    static void count_mapped(int change) {
        if (current_ != nullptr)
            current_->mapped_ += change;
    }

    template <class Function>
    static Function real(const char *name, Function) {
        return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
    }

private:
    static inline thread_local FailingFiles *current_ = nullptr;
    const char *function_;
    int failed_ = 0;
    int open_ = 0;
    int mapped_ = 0;
};

} // namespace support

extern "C" {

int open(const char *path, int flags, ...) {
    if (support::FailingFiles::refuses("open", EMFILE))
        return -1;
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const int file = support::FailingFiles::real("open", ::open)(path, flags, mode);
    support::FailingFiles::count_open(file >= 0 ? 1 : 0);
    return file;
}

int close(int file) {
    support::FailingFiles::count_open(-1);
    return support::FailingFiles::real("close", ::close)(file);
}

int fstat(int file, struct stat *status) noexcept {
    if (support::FailingFiles::refuses("fstat", EIO))
        return -1;
    return support::FailingFiles::real("fstat", ::fstat)(file, status);
}

void *mmap(void *address, size_t length, int protection, int flags, int file, off_t offset) noexcept {
    if (support::FailingFiles::refuses("mmap", ENOMEM))
        return MAP_FAILED;
    void *memory = support::FailingFiles::real("mmap", ::mmap)(address, length, protection, flags, file, offset);
    support::FailingFiles::count_mapped(memory != MAP_FAILED ? 1 : 0);
    return memory;
}

int munmap(void *address, size_t length) noexcept {
    support::FailingFiles::count_mapped(-1);
    return support::FailingFiles::real("munmap", ::munmap)(address, length);
}

} // extern "C"

#endif
