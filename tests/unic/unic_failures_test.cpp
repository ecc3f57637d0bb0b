// A set whose first load meets a system that refuses memory or files: a failed handle that leaves nothing behind, and a
// set that is there at the next try.
#include "support/failing_allocator.h"
#include "support/failing_files.h"

#include "support/environment.h"

#include <dlxunic/unic.h>

#include <gtest/gtest.h>

namespace {

using support::FailingAllocator;
using support::FailingFiles;

const support::Variable home("DALVEX", DLXCOMN_BUILD_DIR "/home");

// A set can be loaded once in a process, so that each test has its own: of single bytes, with pairs, with codes of
// three bytes and with states.
constexpr UNICONV_CID SETS_FOR_MEMORY[] = {1252, 47, 49, 930};
constexpr UNICONV_CID SETS_FOR_PASSES[] = {1250, 36, 954};

class UnicFailures : public testing::Test {
protected:
    // The linker allocates and releases where a function is looked for the first time.
    static void SetUpTestSuite() {
        const int file = open("/proc/self/exe", O_RDONLY);
        struct stat status;
        ASSERT_EQ(fstat(file, &status), 0);
        void *const memory = mmap(nullptr, 1, PROT_READ, MAP_PRIVATE, file, 0);
        ASSERT_NE(memory, MAP_FAILED);
        munmap(memory, 1);
        close(file);
    }
};

int get_and_free(UNICONV_CID cid) {
    CVTH handle = nullptr;
    const int status = uniconv_HandleGet(cid, &handle);
    EXPECT_EQ(handle != nullptr, status == UNI_OK);
    uniconv_HandleFree(handle);
    return status;
}

// Each allocation of a first handle in turn: of the set, of what its passes need and of the handle.
TEST_F(UnicFailures, EveryAllocationOfAFirstHandle) {
    for (const UNICONV_CID cid : SETS_FOR_MEMORY) {
        const int allocations = cid == 930 ? 2 : 3;
        for (int n = 1; n <= allocations; ++n) {
            const bool set_is_there = n == allocations; // the handle is the last
            const FailingAllocator allocator(n);
            const FailingFiles files;
            CVTH handle = &handle;
            EXPECT_EQ(uniconv_HandleGet(cid, &handle), UNI_NOMEMORY) << cid << " allocation " << n;
            EXPECT_EQ(handle, nullptr);
            EXPECT_EQ(allocator.asked(), n) << cid;
            EXPECT_EQ(allocator.held(), set_is_there ? allocations - 1 : 0) << cid << " allocation " << n;
            EXPECT_EQ(files.mapped(), set_is_there ? 1 : 0) << cid << " allocation " << n;
            EXPECT_EQ(files.open(), 0);
        }
        const FailingAllocator allocator;
        const FailingFiles files;
        EXPECT_EQ(get_and_free(cid), UNI_OK) << cid;
        EXPECT_EQ(allocator.asked(), 1) << "the handle alone";
        EXPECT_EQ(files.mapped(), 0);
    }
}

TEST_F(UnicFailures, EveryAllocationOfAFirstPass) {
    for (const UNICONV_CID cid : SETS_FOR_PASSES) {
        char buffer[4];
        int count = -1;
        for (int n = 1; n <= 2; ++n) {
            const FailingAllocator allocator(n);
            const FailingFiles files;
            EXPECT_EQ(uniconv_StrToUTF8(cid, "a", 1, buffer, 4, &count), UNI_NOMEMORY) << cid << " allocation " << n;
            EXPECT_EQ(count, 0);
            EXPECT_EQ(allocator.held(), 0);
            EXPECT_EQ(files.mapped(), 0);
        }
        EXPECT_EQ(uniconv_StrToUTF8(cid, "a", 1, buffer, 4, &count), UNI_OK);
        EXPECT_EQ(count, 1);
        // Nothing is asked of the system from then on.
        const FailingAllocator allocator(1, FailingAllocator::LASTING);
        const FailingFiles files("open");
        EXPECT_EQ(uniconv_StrToUTF8(cid, "ab", 2, buffer, 4, &count), UNI_OK);
        EXPECT_EQ(uniconv_StrFromUTF8(cid, "abc", 3, buffer, 4, &count), UNI_OK);
        EXPECT_EQ(count, 3);
        EXPECT_EQ(allocator.asked(), 0);
        EXPECT_EQ(files.failed(), 0);
    }
}

struct Refusal {
    const char *function;
    UNICONV_CID cid;
    int status;
};

TEST_F(UnicFailures, FilesThatTheSystemRefuses) {
    for (const Refusal &refusal : {Refusal{"open", 1251, UNI_NOSET}, Refusal{"fstat", 1253, UNI_NOSET},
                                   Refusal{"mmap", 1254, UNI_NOMEMORY}, Refusal{"mmap", 50, UNI_NOMEMORY}}) {
        {
            const FailingFiles files(refusal.function);
            const FailingAllocator allocator;
            EXPECT_EQ(get_and_free(refusal.cid), refusal.status) << refusal.function;
            EXPECT_EQ(files.failed(), 1) << refusal.function;
            EXPECT_EQ(files.open(), 0) << refusal.function;
            EXPECT_EQ(files.mapped(), 0) << refusal.function;
            EXPECT_EQ(allocator.held(), 0) << refusal.function;
        }
        const FailingFiles files;
        EXPECT_EQ(get_and_free(refusal.cid), UNI_OK) << refusal.function;
        EXPECT_EQ(files.open(), 0);
        EXPECT_EQ(files.mapped(), 1);
    }
}

TEST_F(UnicFailures, ASourceThatCannotBeLoadedIsNoSource) {
    CVTH handle = nullptr;
    ASSERT_EQ(uniconv_HandleGet(1252, &handle), UNI_OK);
    {
        const FailingFiles files("open");
        EXPECT_EQ(uniconv_SetSource(handle, 1255), UNI_NOSET);
    }
    {
        const FailingAllocator allocator(1);
        EXPECT_EQ(uniconv_SetSource(handle, 1255), UNI_NOMEMORY);
    }
    EXPECT_EQ(uniconv_SetSource(handle, 1255), UNI_OK);
    uniconv_HandleFree(handle);
}

} // namespace
