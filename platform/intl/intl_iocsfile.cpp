// Byte files for readers that take a character at a time: a block of one's own, and a count of what there was.
#include <dlxintl/intl.h>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

struct intl_iocsfile {
    int fd;
    size_t begin; // unread bytes of the block
    size_t end;
    char block[16 * 1024];
};

namespace {

// Fills the empty block. The count of bytes, 0 at the end of the file, or -1.
ssize_t fill_block(INTL_IOCSFILE &file) {
    ssize_t count;
    do
        count = read(file.fd, file.block, sizeof file.block);
    while (count < 0 && errno == EINTR);
    file.begin = 0;
    file.end = count > 0 ? static_cast<size_t>(count) : 0;
    return count;
}

} // namespace

INTL_IOCSFILE *intl_iocsfopen(const char *name, int mode) {
    if (mode != INTL_IOCS_READ)
        return nullptr;
    const int fd = open(name, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    auto *file = static_cast<INTL_IOCSFILE *>(comn_malloc(sizeof(INTL_IOCSFILE)));
    if (file == nullptr) {
        close(fd);
        return nullptr;
    }
    file->fd = fd;
    file->begin = file->end = 0;
    return file;
}

int intl_iocsfread(INTL_IOCSFILE *file, void *buffer, int count, int *got) {
    auto *to = static_cast<char *>(buffer);
    *got = 0;
    while (*got < count) {
        if (file->begin == file->end) {
            const ssize_t filled = fill_block(*file);
            if (filled <= 0)
                return filled == 0 ? INTL_OK : INTL_EREAD;
        }
        const size_t wanted = static_cast<size_t>(count - *got);
        const size_t held = file->end - file->begin;
        const size_t taken = wanted < held ? wanted : held;
        std::memcpy(to + *got, file->block + file->begin, taken);
        file->begin += taken;
        *got += static_cast<int>(taken);
    }
    return INTL_OK;
}

int intl_iocsfclose(INTL_IOCSFILE *file) {
    if (file == nullptr)
        return INTL_OK;
    const int result = close(file->fd);
    comn_free(file);
    return result == 0 ? INTL_OK : INTL_EREAD;
}
