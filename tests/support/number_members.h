// Every conversion from an integer, a bit or a float: the member, the ids that it serves, and what its destination is.
#ifndef TESTS_SUPPORT_NUMBER_MEMBERS_H
#define TESTS_SUPPORT_NUMBER_MEMBERS_H

#include <dlxcomn/dlxcomn.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace support {

struct DestinationWord {
    const char *name;
    std::vector<CS_INT> ids;
    CS_INT width; // 0 where it is not fixed
};

struct NumberMember {
    const char *name;
    std::string source; // "i4"; its file is com_i4.cpp
    std::vector<CS_INT> source_ids;
    CS_INT source_width;
    DestinationWord destination;
    CS_CONV_FUNC function;

    bool takes_source(CS_INT id) const {
        return std::find(source_ids.begin(), source_ids.end(), id) != source_ids.end();
    }
    bool takes_destination(CS_INT id) const {
        return std::find(destination.ids.begin(), destination.ids.end(), id) != destination.ids.end();
    }
    bool is_to(const std::string &word) const { return destination.name == word; }
    bool is_to_bytes() const { return is_to("bin") || is_to("varbin"); }
    // The room of the destination counts.
    bool has_room() const { return is_to("char") || is_to("bin"); }
    // comn_fixedtobin and comn_fixedtovarbin test the pointers.
    bool tests_pointers_in_helper() const { return is_to_bytes() && source != "bit"; }
};

inline std::ostream &operator<<(std::ostream &out, const NumberMember &member) { return out << member.name; }

inline const std::vector<NumberMember> &number_members() {
    const DestinationWord i1 = {"i1", {6}, 1}, i2 = {"i2", {7}, 2}, i4 = {"i4", {8}, 4}, i8 = {"i8", {20, 30}, 8},
                          ui2 = {"ui2", {31}, 2}, ui4 = {"ui4", {32}, 4}, ui8 = {"ui8", {33}, 8},
                          bit = {"bit", {11}, 1}, flt4 = {"flt4", {9}, 4}, flt8 = {"flt8", {10}, 8},
                          money = {"money", {14}, 8}, mny4 = {"mny4", {15}, 4}, num = {"num", {16, 17}, 35},
                          text = {"char", {0, 2, 4, 21, 22, 34}, 0}, varchar = {"varchar", {18}, 258},
                          bin = {"bin", {1, 3, 5}, 0}, varbin = {"varbin", {19}, 258};
#define MEMBER(source, ids, width, word, destination)                                                                  \
    { "comn_" #source "to" #word, #source, ids, width, destination, comn_##source##to##word }
#define COMMON_MEMBERS(source, ids, width)                                                                             \
    MEMBER(source, ids, width, i1, i1), MEMBER(source, ids, width, i2, i2), MEMBER(source, ids, width, i4, i4),        \
        MEMBER(source, ids, width, i8, i8), MEMBER(source, ids, width, ui2, ui2),                                      \
        MEMBER(source, ids, width, ui4, ui4), MEMBER(source, ids, width, ui8, ui8),                                    \
        MEMBER(source, ids, width, bit, bit), MEMBER(source, ids, width, flt4, flt4),                                  \
        MEMBER(source, ids, width, flt8, flt8), MEMBER(source, ids, width, num, num),                                  \
        MEMBER(source, ids, width, char, text), MEMBER(source, ids, width, varchar, varchar),                          \
        MEMBER(source, ids, width, bin, bin), MEMBER(source, ids, width, varbin, varbin)
#define MEMBERS(source, ids, width)                                                                                    \
    COMMON_MEMBERS(source, ids, width), MEMBER(source, ids, width, money, money), MEMBER(source, ids, width, mny4, mny4)
    const std::vector<CS_INT> i1_ids = {6}, i2_ids = {7}, i4_ids = {8}, i8_ids = {20, 30}, ui2_ids = {31},
                              ui4_ids = {32}, ui8_ids = {33}, bit_ids = {11}, flt4_ids = {9}, flt8_ids = {10};
    static const std::vector<NumberMember> all = {
        MEMBERS(i1, i1_ids, 1),          MEMBERS(i2, i2_ids, 2),     MEMBERS(i4, i4_ids, 4),
        MEMBERS(i8, i8_ids, 8),          MEMBERS(ui2, ui2_ids, 2),   MEMBERS(ui4, ui4_ids, 4),
        MEMBERS(ui8, ui8_ids, 8),        MEMBERS(flt4, flt4_ids, 4), MEMBERS(flt8, flt8_ids, 8),
        COMMON_MEMBERS(bit, bit_ids, 1),
    };
#undef MEMBERS
#undef COMMON_MEMBERS
#undef MEMBER
    return all;
}

inline std::vector<NumberMember> members_from(const std::string &source) {
    std::vector<NumberMember> result;
    for (const NumberMember &member : number_members())
        if (member.source == source)
            result.push_back(member);
    return result;
}

} // namespace support

#endif
