// The key hash, restated as it would be told: signed bytes, a pending word, 'Z' behind a broken last word.
#ifndef TESTS_SUPPORT_NAIVE_KEY_HASH_H
#define TESTS_SUPPORT_NAIVE_KEY_HASH_H

#include <cstdint>
#include <string>
#include <string_view>

namespace support {

inline std::uint32_t naive_word(std::string_view four_bytes) {
    std::int64_t word = 0;
    for (const char byte : four_bytes) {
        const std::int64_t extended = byte >= 0 && static_cast<unsigned char>(byte) < 0x80
                                          ? static_cast<unsigned char>(byte)
                                          : static_cast<unsigned char>(byte) - 256;
        word = word * 256; // makes room below; a negative byte then sets every bit above its own
        word |= extended;
    }
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(word));
}

inline std::uint32_t naive_key_hash(std::string_view key) {
    std::uint64_t hash = 0;
    std::uint64_t pending = 0;
    const auto push = [&](std::uint64_t word) { hash = (hash * 37 + word) % 4294967296u; };
    while (key.size() >= 4) {
        const std::uint32_t word = naive_word(key.substr(0, 4));
        key.remove_prefix(4);
        if (pending == 0) {
            pending = word;
            continue;
        }
        push(pending);
        push(word);
        pending = 0;
    }
    if (pending != 0)
        push(pending);
    if (!key.empty())
        push(naive_word((std::string(key) + "ZZZ").substr(0, 4)));
    return static_cast<std::uint32_t>(hash);
}

inline std::uint32_t naive_slot(std::string_view key, std::uint32_t range) { return naive_key_hash(key) % range; }
inline std::uint32_t naive_increment(std::string_view key, std::uint32_t range) {
    return static_cast<std::uint32_t>(naive_key_hash(key) * std::uint64_t{7} % 4294967296u) % (range - 1) + 1;
}

} // namespace support

#endif
