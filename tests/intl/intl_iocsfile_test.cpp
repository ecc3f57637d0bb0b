// Byte files: any counts of bytes across the edges of the reader's block, and every way of not opening.
#include "support/failing_allocator.h"
#include "support/memory_file.h"
#include "support/temp_directory.h"

#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

using support::MemoryFile;

constexpr size_t BLOCK = 16 * 1024;

std::string random_bytes(size_t count) {
    std::mt19937_64 random(count + 1);
    std::string bytes(count, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

// Reads in portions that `portion` names, until one comes short, and compares with the content.
template <class Portion>
void expect_read_in_portions(const char *path, const std::string &content, Portion portion) {
    INTL_IOCSFILE *file = intl_iocsfopen(path, INTL_IOCS_READ);
    ASSERT_NE(file, nullptr);
    size_t at = 0;
    for (bool more = true; more;) {
        const int wanted = portion();
        std::string room(static_cast<size_t>(wanted) + 8, '\x7E');
        const size_t there = std::min(static_cast<size_t>(wanted), content.size() - at);
        std::string expected = room;
        expected.replace(0, there, content, at, there);
        int got = -1;
        ASSERT_EQ(intl_iocsfread(file, room.data(), wanted, &got), INTL_OK);
        ASSERT_EQ(got, static_cast<int>(there)) << "at " << at;
        ASSERT_EQ(room, expected) << "at " << at;
        at += there;
        more = there == static_cast<size_t>(wanted);
    }
    EXPECT_EQ(at, content.size());
    char byte = 'b';
    for (int again = 0; again < 3; ++again) {
        int got = -1;
        EXPECT_EQ(intl_iocsfread(file, &byte, 1, &got), INTL_OK);
        EXPECT_EQ(got, 0) << "the end stays the end";
    }
    EXPECT_EQ(byte, 'b');
    EXPECT_EQ(intl_iocsfclose(file), INTL_OK);
}

TEST(IntlIocsFile, EachByteByItself) {
    for (const size_t size : {size_t{0}, size_t{1}, BLOCK - 1, BLOCK, BLOCK + 1, 2 * BLOCK + 1}) {
        const std::string content = random_bytes(size);
        const MemoryFile file(content);
        expect_read_in_portions(file.path(), content, [] { return 1; });
    }
}

TEST(IntlIocsFile, PortionsAroundTheBlock) {
    const std::string content = random_bytes(5 * BLOCK + 123);
    const MemoryFile file(content);
    for (const size_t portion : {size_t{7}, BLOCK - 1, BLOCK, BLOCK + 1, 3 * BLOCK, 5 * BLOCK + 123, 6 * BLOCK})
        expect_read_in_portions(file.path(), content, [&] { return static_cast<int>(portion); });
}

TEST(IntlIocsFile, RandomPortions) {
    std::mt19937_64 random(5);
    for (int round = 0; round < 200; ++round) {
        const std::string content = random_bytes(random() % (4 * BLOCK));
        const MemoryFile file(content);
        const size_t bound = random() % 2 == 0 ? 100 : 2 * BLOCK;
        expect_read_in_portions(file.path(), content, [&] { return static_cast<int>(1 + random() % bound); });
    }
}

TEST(IntlIocsFile, CountOfNoneReadsNone) {
    const MemoryFile memory("ab");
    INTL_IOCSFILE *file = intl_iocsfopen(memory.path(), INTL_IOCS_READ);
    ASSERT_NE(file, nullptr);
    char byte = 'x';
    for (const int count : {0, -1}) {
        int got = -1;
        EXPECT_EQ(intl_iocsfread(file, &byte, count, &got), INTL_OK);
        EXPECT_EQ(got, 0);
    }
    EXPECT_EQ(byte, 'x');
    int got = 0;
    EXPECT_EQ(intl_iocsfread(file, &byte, 1, &got), INTL_OK);
    EXPECT_EQ(byte, 'a');
    EXPECT_EQ(intl_iocsfclose(file), INTL_OK);
}

TEST(IntlIocsFile, PipeThatDeliversAFewBytesAtATimeFillsTheWholeCount) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string content = random_bytes(1000);
    std::thread writer([&] {
        for (size_t at = 0; at < content.size(); at += 10)
            if (write(ends[1], content.data() + at, 10) < 0)
                break;
        close(ends[1]);
    });
    expect_read_in_portions(("/proc/self/fd/" + std::to_string(ends[0])).c_str(), content, [] { return 333; });
    close(ends[0]);
    writer.join();
}

TEST(IntlIocsFile, OnlyTheReadModeOpens) {
    const MemoryFile memory("ab");
    for (const int mode : {-1, 0, 1, 3, 4, INTL_IOCS_READ + 256})
        EXPECT_EQ(intl_iocsfopen(memory.path(), mode), nullptr) << mode;
    EXPECT_EQ(INTL_IOCS_READ, 2);
}

TEST(IntlIocsFile, MissingFileDoesNotOpen) {
    const support::TempDirectory directory;
    EXPECT_EQ(intl_iocsfopen(directory.path_of("absent").c_str(), INTL_IOCS_READ), nullptr);
    EXPECT_FALSE(std::filesystem::exists(directory.path_of("absent")));
}

TEST(IntlIocsFile, DirectoryOpensAndReadingItFails) {
    const support::TempDirectory directory;
    INTL_IOCSFILE *file = intl_iocsfopen(directory.path().c_str(), INTL_IOCS_READ);
    ASSERT_NE(file, nullptr);
    char byte = 'x';
    for (int again = 0; again < 2; ++again) {
        int got = -1;
        EXPECT_EQ(intl_iocsfread(file, &byte, 1, &got), INTL_EREAD);
        EXPECT_EQ(got, 0);
    }
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(intl_iocsfclose(file), INTL_OK);
}

TEST(IntlIocsFile, CloseOfNothingIsHarmless) { EXPECT_EQ(intl_iocsfclose(nullptr), INTL_OK); }

TEST(IntlIocsFile, CloseReleasesMemoryAndDescriptor) {
    const MemoryFile memory("ab");
    const int next = dup(0);
    close(next);
    const support::FailingAllocator counting;
    INTL_IOCSFILE *file = intl_iocsfopen(memory.path(), INTL_IOCS_READ);
    const int flags = fcntl(next, F_GETFD);
    intl_iocsfclose(file);
    EXPECT_NE(flags & FD_CLOEXEC, 0);
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
    EXPECT_EQ(counting.asked(), 1);
    EXPECT_EQ(counting.held(), 0);
}

TEST(IntlIocsFile, WithoutMemoryIsNullAndLeavesNoDescriptorOpen) {
    const MemoryFile memory("ab");
    const int next = dup(0);
    close(next);
    for (const auto span : {support::FailingAllocator::ONCE, support::FailingAllocator::LASTING}) {
        const support::FailingAllocator failing(1, span);
        INTL_IOCSFILE *file = intl_iocsfopen(memory.path(), INTL_IOCS_READ);
        EXPECT_EQ(file, nullptr);
        EXPECT_EQ(failing.held(), 0);
    }
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
}

} // namespace
