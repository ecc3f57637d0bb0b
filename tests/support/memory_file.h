// A file in memory that has a path while the object lives.
#ifndef TESTS_SUPPORT_MEMORY_FILE_H
#define TESTS_SUPPORT_MEMORY_FILE_H

#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace support {

class MemoryFile {
public:
    explicit MemoryFile(const std::string &content)
        : file_(memfd_create("content", MFD_CLOEXEC)), path_("/proc/self/fd/" + std::to_string(file_)) {
        if (file_ < 0 || write(file_, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
            std::abort();
    }
    ~MemoryFile() { close(file_); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    const char *path() const { return path_.c_str(); }

private:
    int file_;
    std::string path_;
};

} // namespace support

#endif
