// Second versions of the UTF routines: a byte and a rule at a time.
#ifndef TESTS_SUPPORT_NAIVE_UTF_H
#define TESTS_SUPPORT_NAIVE_UTF_H

#include <dlxcomn/dlxcomn.h>

#include <optional>
#include <string>

namespace support::naive {

// What a call leaves behind. `dest` is all of the room, `ground` where nothing was written.
struct Utf {
    int flags = 0;
    int sused = 0;
    int dused = 0;
    std::string dest;
    bool operator==(const Utf &) const = default;
};

constexpr char UTF_GROUND = '\xEE';

enum { FULL = 2, INVALID = 4 };

class UtfWriter {
public:
    explicit UtfWriter(int room) : room_(static_cast<std::size_t>(room)) {}
    bool fits(std::size_t bytes) const { return dest_.size() + bytes <= room_; }
    void byte(unsigned value) { dest_ += static_cast<char>(value); }
    void unit(unsigned value) { // machine order, which is the low byte first
        byte(value % 256);
        byte(value / 256);
    }
    Utf finish(int flags, std::size_t sused, const std::optional<std::string> &pad) {
        while (pad && fits(pad->size()))
            dest_ += *pad;
        Utf result{flags, static_cast<int>(sused), static_cast<int>(dest_.size()), dest_};
        result.dest.resize(room_, UTF_GROUND);
        return result;
    }

private:
    std::size_t room_;
    std::string dest_;
};

inline unsigned utf_byte(const std::string &text, std::size_t at) { return static_cast<unsigned char>(text[at]); }
inline unsigned utf_unit(const std::string &text, std::size_t at) {
    return utf_byte(text, at) + 256 * utf_byte(text, at + 1);
}

// `pad` is a unit of two bytes.
inline Utf utf8_to_utf16(const std::string &src, int room, const std::optional<std::string> &pad, bool validity) {
    UtfWriter to(room);
    std::size_t at = 0;
    while (at < src.size()) {
        const unsigned lead = utf_byte(src, at);
        std::size_t bytes;
        unsigned value;
        if (lead < 0x80) {
            bytes = 1;
            value = lead;
        } else if (lead >= 0xC0 && lead <= 0xDF) {
            bytes = 2;
            value = lead - 0xC0;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            bytes = 3;
            value = lead - 0xE0;
        } else if (lead >= 0xF0 && lead <= 0xF7) {
            bytes = 4;
            value = lead - 0xF0;
        } else {
            return to.finish(INVALID, at, pad);
        }
        if (at + bytes > src.size())
            return to.finish(INVALID, at, pad);
        for (std::size_t i = 1; i < bytes; ++i) {
            const unsigned next = utf_byte(src, at + i);
            if (next < 0x80 || next > 0xBF)
                return to.finish(INVALID, at, pad);
            value = value * 64 + (next - 0x80);
        }
        if (bytes == 3 && validity && (value == 0xFFFE || value == 0xFFFF))
            return to.finish(INVALID, at, pad);
        if (bytes == 4 && validity && (value == 0xFFFE || value == 0xFFFF))
            return to.finish(INVALID, at, pad);
        if (bytes == 4 && value > 0x10FFFF)
            return to.finish(INVALID, at, pad);
        if (value > 0xFFFF) {
            if (!to.fits(4))
                return to.finish(FULL, at, pad);
            to.unit(0xD800 + (value - 0x10000) / 1024);
            to.unit(0xDC00 + (value - 0x10000) % 1024);
        } else {
            if (!to.fits(2))
                return to.finish(FULL, at, pad);
            to.unit(value);
        }
        at += bytes;
    }
    return to.finish(0, at, pad);
}

inline Utf utf16_to_utf16(const std::string &src, int room, const std::optional<std::string> &pad) {
    UtfWriter to(room);
    std::size_t at = 0;
    for (; src.size() - at >= 2; at += 2) {
        if (!to.fits(2))
            return to.finish(FULL, at, pad);
        to.unit(utf_unit(src, at));
    }
    return to.finish(at < src.size() ? INVALID : 0, at, pad);
}

// `pad` is a byte.
inline Utf utf16_to_utf8(const std::string &src, int room, const std::optional<std::string> &pad, bool validity) {
    UtfWriter to(room);
    std::size_t at = 0;
    while (at < src.size()) {
        if (src.size() - at == 1)
            return to.finish(INVALID, at, pad);
        const unsigned unit = utf_unit(src, at);
        if (validity && unit > 0xFFFD)
            return to.finish(INVALID, at, pad);
        if (unit >= 0xD800 && unit <= 0xDBFF && src.size() - at >= 4 && utf_unit(src, at + 2) > 0xDBFF) {
            const unsigned value = 0x10000 + (unit % 1024) * 1024 + utf_unit(src, at + 2) % 1024;
            if (!to.fits(4))
                return to.finish(FULL, at, pad);
            to.byte(0xF0 + value / 262144);
            to.byte(0x80 + value / 4096 % 64);
            to.byte(0x80 + value / 64 % 64);
            to.byte(0x80 + value % 64);
            at += 4;
            continue;
        }
        if (!to.fits(unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3))
            return to.finish(FULL, at, pad);
        if (unit < 0x80) {
            to.byte(unit);
        } else if (unit < 0x800) {
            to.byte(0xC0 + unit / 64);
            to.byte(0x80 + unit % 64);
        } else {
            to.byte(0xE0 + unit / 4096);
            to.byte(0x80 + unit / 64 % 64);
            to.byte(0x80 + unit % 64);
        }
        at += 2;
    }
    return to.finish(0, at, pad);
}

} // namespace support::naive

#endif
