// The walkers again, written down one statement of their description after the other: what the tests and the
// fuzz target compare with. A set is given by its record; null means iso_1.
#ifndef TESTS_SUPPORT_NAIVE_WALK_H
#define TESTS_SUPPORT_NAIVE_WALK_H

#include <dlxcomn/dlxcomn.h>

#include <string>

namespace support::naive {

inline const CHAR_ATTRIB &record(const CHAR_ATTRIB *ca) { return ca ? *ca : ISO_1_char_attrib; }

inline int width(const CHAR_ATTRIB *ca, const CS_BYTE *p) {
    const CS_BYTE *map = record(ca).cs_width_map;
    if (!map)
        return 1;
    const int w = map[p[0]] % 16;
    if (map[255] / 16 == 15 && w == 2) {
        if (p[1] == '0' || p[1] == '1' || p[1] == '2' || p[1] == '3' || p[1] == '4' || p[1] == '5' || p[1] == '6' ||
            p[1] == '7' || p[1] == '8' || p[1] == '9')
            return 4;
        return 2;
    }
    return w;
}

inline int step(const CHAR_ATTRIB *ca, const CS_BYTE *p) { return width(ca, p) == 0 ? 1 : width(ca, p); }

inline int columns(const CHAR_ATTRIB *ca, const CS_BYTE *p) {
    const CS_BYTE *map = record(ca).cs_width_map;
    return map ? map[p[0]] / 16 : 1;
}

inline CHAR_MAP entry(const CHAR_ATTRIB *ca, const CS_BYTE *p) {
    const CS_TYPE_MAP *pages = record(ca).cs_type_map;
    if (!pages)
        return CHAR_MAP{0, 0, 0, 0};
    CHAR_MAP found = pages[0].chmap[p[0]];
    if (found.char_type >= 0x80)
        found = pages[found.char_upper].chmap[p[1]];
    return found;
}

inline int to_ascii(const CHAR_ATTRIB *ca, const CS_BYTE *p) {
    const CHAR_ATTRIB &set = record(ca);
    if (set.cs_norm_map) {
        const auto *bytes = reinterpret_cast<const CS_BYTE *>(set.cs_norm_map);
        if (width(ca, p) < 2)
            return bytes[p[0]];
        const int page = bytes[p[0]];
        return page == 0 ? 0 : bytes[256 * page + p[1]];
    }
    if (set.cs_type_map)
        return set.cs_type_map[0].chmap[p[0]].char_lower;
    return p[0];
}

// The bytes that the case change writes.
inline std::string other_case(const CHAR_ATTRIB *ca, const CS_BYTE *p, bool upper) {
    const CHAR_ATTRIB &set = record(ca);
    std::string whole(reinterpret_cast<const char *>(p), static_cast<std::size_t>(step(ca, p)));
    if (!set.cs_type_map)
        return whole;
    const CHAR_MAP first = set.cs_type_map[0].chmap[p[0]];
    if (first.char_type >= 0x80) {
        const CHAR_MAP second = set.cs_type_map[first.char_upper].chmap[p[1]];
        return {static_cast<char>(p[0]), static_cast<char>(upper ? second.char_upper : second.char_lower)};
    }
    const CS_BYTE other = upper ? first.char_upper : first.char_lower;
    return other == 0 ? whole : std::string(1, static_cast<char>(other));
}

struct Whole {
    int bytes = 0, part1 = 0, part2 = 0, count = 0;
    bool operator==(const Whole &) const = default;
};

inline Whole whole_char(const CHAR_ATTRIB *ca, const CS_BYTE *start, const CS_BYTE *end) {
    Whole result;
    if (!(start < end))
        return result;
    const CS_BYTE *position = start;
    const CS_BYTE *last = start;
    while (position < end) {
        last = position;
        position += step(ca, position);
        ++result.count;
    }
    if (position == end) {
        result.bytes = static_cast<int>(end - start);
        return result;
    }
    --result.count;
    result.bytes = static_cast<int>(last - start);
    result.part2 = static_cast<int>(position - end);
    result.part1 = step(ca, last) - result.part2;
    return result;
}

inline std::string str_to_ascii(const CHAR_ATTRIB *ca, const CS_BYTE *source, int length) {
    std::string result;
    for (int at = 0; at < length;) {
        const CS_BYTE *p = source + at;
        if (to_ascii(ca, p) != 0)
            result += static_cast<char>(to_ascii(ca, p));
        else
            result.append(reinterpret_cast<const char *>(p), static_cast<std::size_t>(step(ca, p)));
        at += step(ca, p);
    }
    return result;
}

inline const CS_BYTE *mb_strchr(const CHAR_ATTRIB *ca, const CS_BYTE *p, CS_BYTE wanted) {
    for (;;) {
        if (*p == 0)
            return nullptr;
        if (*p == wanted)
            return p;
        p += 1 + whole_char(ca, p, p + 1).part2;
    }
}

} // namespace support::naive

#endif
