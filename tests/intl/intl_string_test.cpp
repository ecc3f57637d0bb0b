// Bounded copy and append against models that go byte by byte.
#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace {

constexpr size_t ROOM = 24;
constexpr char GUARD = '\x7E';

// A destination with bytes behind it that nobody may write.
struct Buffer {
    char bytes[ROOM + 8];
    Buffer() { std::memset(bytes, GUARD, sizeof bytes); }
    bool operator==(const Buffer &other) const { return std::memcmp(bytes, other.bytes, sizeof bytes) == 0; }
};

size_t model_copy(char *dest, const char *src, size_t size) {
    size_t length = 0;
    for (; src[length] != '\0'; ++length)
        if (length + 1 < size)
            dest[length] = src[length];
    if (size != 0)
        dest[length < size ? length : size - 1] = '\0';
    return length;
}

size_t model_append(char *dest, const char *src, size_t size) {
    size_t held = 0;
    while (held < size && dest[held] != '\0')
        ++held;
    size_t length = 0;
    for (; src[length] != '\0'; ++length)
        if (held + length + 1 < size)
            dest[held + length] = src[length];
    if (held < size)
        dest[held + length < size ? held + length : size - 1] = '\0';
    return held + length;
}

const std::string sample = "abcdefghijklmnopqrstuvwxyz0123456789";

TEST(IntlString, CopyAtEveryLengthAndSize) {
    for (size_t length = 0; length <= 30; ++length)
        for (size_t size = 0; size <= ROOM; ++size) {
            const std::string source = sample.substr(0, length);
            Buffer got, expected;
            EXPECT_EQ(intl_strlcpy(got.bytes, source.c_str(), size), length);
            EXPECT_EQ(model_copy(expected.bytes, source.c_str(), size), length);
            EXPECT_EQ(got, expected) << length << " into " << size;
        }
}

TEST(IntlString, CopyCutsAndTerminates) {
    Buffer buffer;
    EXPECT_EQ(intl_strlcpy(buffer.bytes, "abcdef", 4), 6u);
    EXPECT_STREQ(buffer.bytes, "abc");
    EXPECT_EQ(buffer.bytes[4], GUARD);
}

TEST(IntlString, CopyWithNoRoomWritesNothing) {
    Buffer buffer;
    EXPECT_EQ(intl_strlcpy(buffer.bytes, "abc", 0), 3u);
    EXPECT_EQ(buffer, Buffer());
    EXPECT_EQ(intl_strlcpy(nullptr, "abc", 0), 3u);
}

TEST(IntlString, AppendAtEveryLengthAndSize) {
    for (size_t held = 0; held < ROOM; ++held)
        for (size_t length = 0; length <= 30; ++length)
            for (size_t size = 0; size <= ROOM; ++size) {
                const std::string source = sample.substr(0, length);
                Buffer got;
                std::memcpy(got.bytes, sample.c_str(), held);
                got.bytes[held] = '\0';
                Buffer expected = got;
                const size_t tried = model_append(expected.bytes, source.c_str(), size);
                EXPECT_EQ(intl_strlcat(got.bytes, source.c_str(), size), tried) << held << "+" << length << "/" << size;
                EXPECT_EQ(got, expected) << held << "+" << length << "/" << size;
            }
}

TEST(IntlString, AppendCutsAndTerminates) {
    Buffer buffer;
    intl_strlcpy(buffer.bytes, "ab", ROOM);
    EXPECT_EQ(intl_strlcat(buffer.bytes, "cdef", 5), 6u);
    EXPECT_STREQ(buffer.bytes, "abcd");
}

TEST(IntlString, AppendToTextThatFillsItsSizeLeavesItWithoutATerminator) {
    Buffer buffer;
    EXPECT_EQ(intl_strlcat(buffer.bytes, "abc", 4), 7u);
    EXPECT_EQ(buffer, Buffer());
}

TEST(IntlString, RandomCopiesAndAppendsFollowTheModels) {
    std::mt19937_64 random(20240314);
    for (int round = 0; round < 100000; ++round) {
        Buffer got;
        for (char &byte : got.bytes)
            if (random() % 4 != 0)
                byte = static_cast<char>(random() % 6 == 0 ? 0 : random());
        got.bytes[ROOM] = '\0';
        Buffer expected = got;
        std::string source(random() % 40, '\0');
        for (char &byte : source)
            byte = static_cast<char>(1 + random() % 255);
        const size_t size = random() % (ROOM + 1);
        if (random() % 2 != 0)
            ASSERT_EQ(intl_strlcpy(got.bytes, source.c_str(), size), model_copy(expected.bytes, source.c_str(), size));
        else
            ASSERT_EQ(intl_strlcat(got.bytes, source.c_str(), size),
                      model_append(expected.bytes, source.c_str(), size));
        ASSERT_EQ(got, expected) << "round " << round;
    }
}

} // namespace
