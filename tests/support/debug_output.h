// Catches the debug output while it lives.
#ifndef TESTS_SUPPORT_DEBUG_OUTPUT_H
#define TESTS_SUPPORT_DEBUG_OUTPUT_H

#include <dlxcomn/diag.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace support {

class DebugOutput {
public:
    DebugOutput() : previous_(Com_fp) {
        Com_fp = open_memstream(&text_, &length_);
        std::fflush(Com_fp);
    }
    ~DebugOutput() {
        std::fclose(Com_fp);
        std::free(text_);
        Com_fp = previous_;
    }
    DebugOutput(const DebugOutput &) = delete;
    DebugOutput &operator=(const DebugOutput &) = delete;

    // What has come out and was flushed by whoever wrote it.
    std::string text() const { return {text_, length_}; }
    // The same since the last call.
    std::string take() {
        std::string result(text_ + taken_, length_ - taken_);
        taken_ = length_;
        return result;
    }

private:
    FILE *previous_;
    char *text_ = nullptr;
    size_t length_ = 0;
    size_t taken_ = 0;
};

} // namespace support

#endif
