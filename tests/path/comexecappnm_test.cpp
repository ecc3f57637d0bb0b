// The application's name from the link to its executable, which this test program answers itself.
#include "support/assertions.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

// What readlink answers: the text, an error where there is none, or the system's own answer.
bool answer_is_set = false;
std::optional<std::string> answer;
std::string asked_path;
size_t asked_size = 0;

} // namespace

extern "C" ssize_t readlink(const char *path, char *buffer, size_t size) noexcept {
    if (!answer_is_set)
        return syscall(SYS_readlink, path, buffer, size);
    asked_path = path;
    asked_size = size;
    if (!answer) {
        errno = EACCES;
        return -1;
    }
    const size_t count = std::min(size, answer->size());
    std::memcpy(buffer, answer->data(), count);
    return static_cast<ssize_t>(count);
}

namespace {

constexpr char GUARD = '\x7E';

class AppName : public testing::Test {
protected:
    AppName() {
        answer_is_set = true;
        answer = "/usr/bin/TheTool";
    }
    ~AppName() override { answer_is_set = false; }

    std::string name(CS_INT size, CS_INT sanitize) {
        std::string room(static_cast<size_t>(size) + 16, GUARD);
        EXPECT_EQ(comn__genappname_from_exec(&context_, room.data(), size, sanitize), CS_SUCCEED);
        EXPECT_EQ(room.substr(static_cast<size_t>(size)), std::string(16, GUARD));
        return room.c_str();
    }
    CS_CONTEXT context_ = {};
};

using AppNameDeathTest = AppName;

TEST_F(AppName, IsTheLastComponentOfTheLink) {
    EXPECT_EQ(name(100, 0), "TheTool");
    EXPECT_EQ(asked_path, "/proc/self/exe");
    EXPECT_EQ(asked_size, 4095u);
    answer = "/usr/bin/deleted tool (deleted)";
    EXPECT_EQ(name(100, 0), "deleted tool (deleted)");
}

TEST_F(AppName, OfThisVeryProgram) {
    answer_is_set = false;
    EXPECT_EQ(name(100, 0), "comexecappnm_test");
}

TEST_F(AppName, IsCutAtEverySize) {
    const std::string tool = "TheTool";
    for (CS_INT size = 1; size < 30; ++size) {
        EXPECT_EQ(name(size, 0), tool.substr(0, static_cast<size_t>(size) - 1)) << size;
        EXPECT_EQ(name(size, 2), std::string("THETOOL").substr(0, static_cast<size_t>(size) - 1)) << size;
    }
}

TEST_F(AppName, IsFoldedAsTold) {
    answer = "/x/aB_9.Z\xC4";
    EXPECT_EQ(name(100, 1), "ab_9.z\xC4");
    EXPECT_EQ(name(100, 2), "AB_9.Z\xC4");
    for (const CS_INT sanitize : {0, 3, -1, 257})
        EXPECT_EQ(name(100, sanitize), "aB_9.Z\xC4") << sanitize;
}

TEST_F(AppName, EmptyLinkFails) {
    answer = "";
    CS_CHAR room[8] = "before";
    EXPECT_EQ(comn__genappname_from_exec(&context_, room, sizeof room, 0), CS_FAIL);
    EXPECT_STREQ(room, "before");
}

TEST_F(AppName, OddityLinkThatCannotBeReadSucceedsWithADot) {
    answer.reset();
    EXPECT_EQ(name(100, 0), ".");
}

TEST_F(AppName, LongestLinkIsTakenAsFarAsItComes) {
    answer = "/" + std::string(5000, 'T');
    EXPECT_EQ(name(5000, 1), std::string(4094, 't'));
}

TEST_F(AppName, TakesNoContext) {
    CS_CHAR room[16];
    EXPECT_EQ(comn__genappname_from_exec(nullptr, room, sizeof room, 1), CS_SUCCEED);
    EXPECT_STREQ(room, "thetool");
}

// This source does not lie below generic/src.
#define EXPECT_REPORT(statement, text) \
    EXPECT_DEATH(statement, text ", file 'linux/src/comexecappnm\\.cpp' line [0-9]+")

TEST_F(AppNameDeathTest, NullName) {
    EXPECT_REPORT(comn__genappname_from_exec(&context_, nullptr, 8, 0), "Invalid NULL pointer ");
}

TEST_F(AppNameDeathTest, RoomOfNothing) {
    CS_CHAR room[8];
    EXPECT_REPORT(comn__genappname_from_exec(&context_, room, 0, 0), "assertion failed");
    EXPECT_REPORT(comn__genappname_from_exec(&context_, room, -1, 0), "assertion failed");
}

TEST_F(AppName, MistakesThatComeBackFailAndWriteNothing) {
    const support::ReturningAssertions assertions;
    CS_CHAR room[8] = "before";
    EXPECT_EQ(comn__genappname_from_exec(&context_, nullptr, 8, 0), CS_FAIL);
    EXPECT_EQ(comn__genappname_from_exec(&context_, room, 0, 0), CS_FAIL);
    EXPECT_EQ(comn__genappname_from_exec(&context_, room, -1, 0), CS_FAIL);
    EXPECT_EQ(assertions.count(), 3);
    EXPECT_STREQ(room, "before");
}

} // namespace
