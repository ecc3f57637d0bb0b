// Calls of the Unicode conversion library on strings, with a guard behind the room that they are given.
#ifndef TESTS_SUPPORT_UNICODE_CALLS_H
#define TESTS_SUPPORT_UNICODE_CALLS_H

#include <dlxunic/unic.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace support {

// A text in a buffer of its own, which ends right behind the zeros that the library asks for.
template <typename Char>
class Terminated {
public:
    explicit Terminated(const std::basic_string<Char> &text, size_t zeros = 1)
        : room_(new Char[text.size() + zeros]()) {
        std::copy(text.begin(), text.end(), room_.get());
    }
    const Char *get() const { return room_.get(); }

private:
    std::unique_ptr<Char[]> room_;
};

struct ToUnits {
    int status;
    std::u16string text;
};
struct ToBytes {
    int status;
    std::string text;
    std::string behind; // what stands behind the text in its room
};

class Handle {
public:
    explicit Handle(UNICONV_CID cid) { status_ = uniconv_HandleGet(cid, &handle_); }
    ~Handle() { uniconv_HandleFree(handle_); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    int status() const { return status_; }
    CVTH get() const { return handle_; }

    // The room of exactly `room` units or bytes and the terminator; what is written behind it fails the test.
    ToUnits from(const std::string &source, size_t room) const {
        const Terminated<char> text(source, 3);
        const std::unique_ptr<UNICHAR[]> buffer(new UNICHAR[room + 2]);
        std::fill_n(buffer.get(), room + 2, static_cast<UNICHAR>(0x5A5A));
        int count = -1;
        const int status = uniconv_unistrFromS(handle_, buffer.get(), static_cast<int>(room) + 1, text.get(), &count);
        EXPECT_EQ(buffer[room + 1], 0x5A5A);
        if (count < 0 || static_cast<size_t>(count) > room) {
            ADD_FAILURE() << "count " << count << " of room " << room;
            return {status, {}};
        }
        EXPECT_EQ(buffer[static_cast<size_t>(count)], 0);
        return {status, std::u16string(buffer.get(), buffer.get() + count)};
    }
    ToUnits from(const std::string &source) const { return from(source, source.size() * 2 + 1); }

    ToBytes to(const std::u16string &source, size_t room) const {
        const std::basic_string<UNICHAR> units(source.begin(), source.end());
        const Terminated<UNICHAR> text(units);
        const std::unique_ptr<char[]> buffer(new char[room + 2]);
        std::fill_n(buffer.get(), room + 2, '\x5A');
        int count = -1;
        const int status = uniconv_unistrToS(handle_, buffer.get(), static_cast<int>(room) + 1, text.get(), &count);
        EXPECT_EQ(buffer[room + 1], '\x5A');
        if (count < 1 || static_cast<size_t>(count) > room + 1) {
            ADD_FAILURE() << "count " << count << " of room " << room;
            return {status, {}, {}};
        }
        EXPECT_EQ(buffer[static_cast<size_t>(count) - 1], '\0');
        const auto length = static_cast<size_t>(count) - 1;
        return {status, std::string(buffer.get(), length), std::string(buffer.get() + length, room + 1 - length)};
    }
    ToBytes to(const std::u16string &source) const { return to(source, source.size() * 4 + 4); }

private:
    CVTH handle_ = nullptr;
    int status_;
};

} // namespace support

#endif
