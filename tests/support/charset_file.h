// The text of charset.loc, as a site would write it.
#ifndef TESTS_SUPPORT_CHARSET_FILE_H
#define TESTS_SUPPORT_CHARSET_FILE_H

#include <dlxcomn/dlxcomn.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace support {

// A value of any bytes.
inline std::string escaped(const std::string &bytes) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += "\\x";
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 15];
    }
    return text;
}

inline std::string hex_of(const std::string &bytes) {
    static constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 15];
    }
    return text;
}

inline std::string big_endian(std::uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift);
    return bytes;
}

// The entries of one image, with values of `size` digits and the rest in the last one.
inline std::string definitions(const std::string &bytes, std::size_t size = 256) {
    const std::string digits = hex_of(bytes);
    std::string entries;
    for (std::size_t at = 0; at < digits.size(); at += size)
        entries += "definition = " + digits.substr(at, size) + "\n";
    return entries;
}

inline std::string random_bytes(std::mt19937_64 &random, std::size_t size) {
    std::string bytes(size, '\0');
    for (char &c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

// An image of the first class in its two pieces.
struct FirstClass {
    static constexpr std::uint32_t SIZE = 1285;
    std::string types = std::string(1028, '\0');
    std::string sounds = std::string(257, '\0');

    std::string entries() const { return definitions(types) + definitions(sounds); }
};

// An image of the second class: its tables and what its header says. A size of -1 is that of the table.
struct SecondClass {
    std::string width, norm;
    std::string types = std::string(1024, '\0');
    std::string sounds = std::string(256, '\0');
    CS_BYTE maxcharlen = 1, ncharsize = 1, ntype = 1, nnorm = 0, nsoundex = 1;
    long width_size = -1, norm_size = -1, types_size = -1, sounds_size = -1;

    std::string header() const {
        const auto size = [](long told, const std::string &table) {
            return big_endian(static_cast<std::uint32_t>(told >= 0 ? told : static_cast<long>(table.size())));
        };
        std::string bytes = "\x12\x34\x02";
        for (const CS_BYTE number : {maxcharlen, ncharsize, ntype, nnorm, nsoundex})
            bytes += static_cast<char>(number);
        bytes += "\xAA\xBB\xBB\xBB";
        const std::string no_offset = "\xFF\xFF\xFF\xFF";
        bytes += no_offset + size(width_size, width) + no_offset + size(norm_size, norm) + no_offset +
                 size(types_size, types) + no_offset + size(sounds_size, sounds);
        return bytes;
    }
    std::string tables() const {
        return definitions(width) + definitions(norm) + definitions(types) + definitions(sounds);
    }
    std::string entries() const { return definitions(header()) + tables(); }
    std::uint32_t size() const {
        return static_cast<std::uint32_t>(44 + width.size() + norm.size() + types.size() + sounds.size());
    }
};

// The section up to the image.
inline std::string charset_header(int set_class, std::uint32_t image_size) {
    return "[charset]\nclass = " + escaped(std::string(1, static_cast<char>(set_class))) +
           "\nname = test set\ndescription = A set of the tests.\nid = \\xc8\nstatus = \\x12\\x34\nimage_size = " +
           escaped(big_endian(image_size)) + "\n";
}

inline std::string charset_file(const FirstClass &image) {
    return charset_header(1, FirstClass::SIZE) + image.entries();
}
inline std::string charset_file(const SecondClass &image) { return charset_header(2, image.size()) + image.entries(); }

// An order by byte, as a file.
inline std::string binary_order() {
    return "[sortorder]\nclass = \\x01\nid = \\x32\nname = binary\nmenuname = Binary\ncharset = test\n"
           "description = By byte.\nbinary = true\n";
}

} // namespace support

#endif
