// What the fuzz targets share: reading the input piece by piece, buffers without a spare byte, and the trap.
#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <dlxcomn/dlxcomn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

// Ends the run with the place and the condition.
#define FUZZ_CHECK(condition)                                                                                          \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                               \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (0)

namespace fuzz {

// Takes the input from its front; what is not there reads as zero.
class Input {
public:
    Input(const unsigned char *data, std::size_t size) : data_(data), size_(size) {}
    CS_BYTE byte() {
        if (size_ == 0)
            return 0;
        --size_;
        return *data_++;
    }
    std::string rest() const { return {reinterpret_cast<const char *>(data_), size_}; }

private:
    const unsigned char *data_;
    std::size_t size_;
};

// Memory of exactly so many bytes, so that the address sanitizer sees the first one too many.
class ExactBuffer {
public:
    explicit ExactBuffer(std::size_t size, CS_BYTE ground = 0xEE) : bytes_(new CS_BYTE[size]), size_(size) {
        std::memset(bytes_.get(), ground, size);
    }
    // Holds `text` up to the buffer's end; the rest is NUL.
    ExactBuffer(std::size_t size, const std::string &text) : ExactBuffer(size, CS_BYTE{0}) {
        std::memcpy(bytes_.get(), text.data(), std::min(size, text.size()));
    }
    CS_BYTE *get() { return bytes_.get(); }
    std::string first(std::size_t count) const { return {reinterpret_cast<const char *>(bytes_.get()), count}; }
    std::string all() const { return first(size_); }

private:
    std::unique_ptr<CS_BYTE[]> bytes_;
    std::size_t size_;
};

} // namespace fuzz

#endif
