// The encoding of a dotted identifier again, by what its bytes mean: what the tests and the fuzz target compare with.
#ifndef TESTS_SUPPORT_NAIVE_BER_H
#define TESTS_SUPPORT_NAIVE_BER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace support::naive {

// The number that a text begins with: blanks, a sign, decimal digits. At most 2^64 - 1, of which 32 bits are held.
inline std::uint32_t arc_of(const std::string &text) {
    std::size_t at = 0;
    while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
        ++at;
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        ++at;
    constexpr unsigned __int128 MOST = ~std::uint64_t{0};
    unsigned __int128 number = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
        if (number <= MOST)
            number = number * 10 + static_cast<unsigned>(text[at] - '0');
    if (number > MOST)
        return 0xFFFFFFFF;
    const auto held = static_cast<std::uint32_t>(number);
    return negative ? 0 - held : held;
}

inline std::vector<std::uint32_t> arcs_of(const std::string &dotted) {
    std::vector<std::uint32_t> arcs;
    std::string piece;
    for (const char c : std::string(dotted.c_str()) + ".") { // a NUL ends it
        if (c != '.') {
            piece += c;
            continue;
        }
        if (!piece.empty())
            arcs.push_back(arc_of(piece));
        piece.clear();
    }
    return arcs;
}

// None for fewer than two arcs or more than 252 bytes of content.
inline std::optional<std::string> ber_of(const std::vector<std::uint32_t> &arcs) {
    if (arcs.size() < 2)
        return std::nullopt;
    std::string content(1, static_cast<char>((arcs[0] * std::uint32_t{40} + arcs[1]) % 256));
    for (std::size_t i = 2; i < arcs.size(); ++i) {
        std::string groups;
        for (std::uint32_t rest = arcs[i]; groups.empty() || rest != 0; rest /= 128)
            groups.insert(groups.begin(), static_cast<char>(rest % 128 + (groups.empty() ? 0 : 128)));
        content += groups;
    }
    if (content.size() > 252)
        return std::nullopt;
    std::string ber = "\x06";
    if (content.size() >= 125)
        ber += '\x81';
    ber += static_cast<char>(content.size());
    return ber + content;
}

inline std::optional<std::string> ber_of(const std::string &dotted) { return ber_of(arcs_of(dotted)); }

} // namespace support::naive

#endif
