// Both modes of an assertion: the one that ends the process, and the one that returns.
#ifndef TESTS_SUPPORT_ASSERTIONS_H
#define TESTS_SUPPORT_ASSERTIONS_H

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

// The statement ends the process with the report of `stem`.cpp.
#define EXPECT_BOMB(statement, stem) \
    EXPECT_DEATH(statement, "assertion failed, file 'generic/src/" stem "\\.cpp' line [0-9]+")
#define EXPECT_NULL_REPORT(statement, stem) \
    EXPECT_DEATH(statement, "Invalid NULL pointer , file 'generic/src/" stem "\\.cpp' line [0-9]+")

namespace support {

// While one of these lives, assertions report (into nothing) and return, and are counted.
class ReturningAssertions {
public:
    ReturningAssertions() {
        count_ = 0;
        std::fflush(stderr);
        saved_stderr_ = dup(STDERR_FILENO);
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDERR_FILENO);
        close(nothing);
        saved_handler_ = std::signal(SIGABRT, [](int) { count_ = count_ + 1; });
        com_toggle_abort(0);
    }
    ~ReturningAssertions() {
        com_toggle_abort(1);
        std::signal(SIGABRT, saved_handler_);
        std::fflush(stderr);
        dup2(saved_stderr_, STDERR_FILENO);
        close(saved_stderr_);
    }
    ReturningAssertions(const ReturningAssertions &) = delete;
    ReturningAssertions &operator=(const ReturningAssertions &) = delete;

    // Reports since the object was made.
    int count() const { return count_; }

private:
    static inline volatile std::sig_atomic_t count_ = 0;
    int saved_stderr_;
    void (*saved_handler_)(int);
};

} // namespace support

#endif
