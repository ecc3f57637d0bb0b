// Sort orders a second time: the table of a description, and the comparisons, step after step.
#ifndef TESTS_SUPPORT_NAIVE_SORT_H
#define TESTS_SUPPORT_NAIVE_SORT_H

#include <dlxcomn/dlxcomn.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace support::naive {

// ---- Descriptions -------------------------------------------------------------------------------------------

// A "lig" entry: lists of forms, and the two letters that they stand for.
struct Ligature {
    std::vector<std::string> lists; // a byte of a text is a form
    bool is_after = false;
    char first = 0;
    char second = 0;
};

// What a file says: entries of values of items of one or two bytes.
struct SortOrder {
    bool preference = true;
    std::vector<Ligature> ligatures;
    std::vector<std::vector<std::vector<std::string>>> characters;

    // Every byte that is not there yet, but for NUL and the forms of ligatures, as entries of so many bytes.
    SortOrder &fill(std::size_t to_an_entry = 1) {
        std::array<bool, 256> is_there = {};
        is_there[0] = true;
        for (const Ligature &ligature : ligatures)
            for (const std::string &list : ligature.lists)
                for (const char c : list)
                    is_there[static_cast<unsigned char>(c)] = true;
        for (const auto &entry : characters)
            for (const auto &value : entry)
                for (const std::string &item : value)
                    if (item.size() == 1)
                        is_there[static_cast<unsigned char>(item[0])] = true;
        std::size_t in_entry = to_an_entry;
        for (int code = 0; code < 256; ++code) {
            if (is_there[static_cast<std::size_t>(code)])
                continue;
            if (in_entry++ == to_an_entry) {
                characters.emplace_back();
                in_entry = 1;
            }
            characters.back().push_back({std::string(1, static_cast<char>(code))});
        }
        return *this;
    }
};

inline std::string escaped(const std::string &bytes) {
    std::string text;
    for (const char c : bytes) {
        constexpr char DIGITS[] = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        text += {'\\', 'x', DIGITS[byte / 16], DIGITS[byte % 16]};
    }
    return text;
}

inline std::string joined(const std::vector<std::string> &items, const char *between) {
    std::string text;
    for (const std::string &item : items)
        text += (text.empty() ? "" : between) + item;
    return text;
}

constexpr char SORT_HEADER[] = "[sortorder]\n"
                               "class = \\x01\nid = \\x32\nname = test_order\ncharset = iso_1\n"
                               "description = An order made up\nmenuname = Made up\n";

// The lines of the entries.
inline std::string body_of(const SortOrder &order) {
    std::string text;
    for (const Ligature &ligature : order.ligatures) {
        std::vector<std::string> values;
        for (const std::string &list : ligature.lists) {
            std::vector<std::string> forms;
            for (const char c : list)
                forms.push_back(escaped({c}));
            values.push_back(joined(forms, "="));
        }
        const std::string letters = {ligature.first, ligature.second};
        values.push_back((ligature.is_after ? "after " : "equal ") + escaped(letters));
        text += "lig = " + joined(values, ", ") + "\n";
    }
    for (const auto &entry : order.characters) {
        std::vector<std::string> values;
        for (const auto &value : entry) {
            std::vector<std::string> items;
            for (const std::string &item : value)
                items.push_back(escaped(item));
            values.push_back(joined(items, "="));
        }
        text += "char = " + joined(values, ", ") + "\n";
    }
    return text;
}

inline std::string file_of(const SortOrder &order) {
    return SORT_HEADER + std::string(order.preference ? "" : "preference = false\n") + body_of(order);
}

// ---- The table of a description -----------------------------------------------------------------------------

// None where the description is not right. It is taken to be right in its form: items of one width in a value, lists
// and letters without NUL.
class TableMaker {
public:
    explicit TableMaker(const SortOrder &order) : order_(order) {}

    std::optional<SO_1CLASS> make() {
        table_.stat1 = 1;
        for (LSC &weight : table_.lscs)
            weight.pst.smelist = 255;
        for (SMEL &smel : table_.smels)
            smel.next_smel = 255;
        if (!order_.ligatures.empty())
            table_.stat1 |= 0x30;
        for (const auto &ligature : order_.ligatures)
            for (const auto &list : ligature.lists)
                records_.push_back({list, ligature.is_after, ligature.first, ligature.second});
        int p = 0;
        for (const auto &entry : order_.characters) {
            if (++p == 256)
                break;
            if (!add_entry(entry, p))
                return {};
        }
        if (!add_ligatures() || !finish())
            return {};
        return table_;
    }

private:
    struct Record {
        std::string forms;
        bool is_after;
        char first;
        char second;
    };

    bool is_form(char c) const {
        return std::any_of(records_.begin(), records_.end(),
                           [c](const Record &record) { return record.forms.find(c) != std::string::npos; });
    }

    int references(char c, std::size_t records) const {
        int count = 0;
        for (std::size_t i = 0; i < records; ++i)
            if (records_[i].is_after) {
                count += records_[i].first == c;
                count += records_[i].second == c;
            }
        return count;
    }

    LSC &weight(char c) { return table_.lscs[static_cast<unsigned char>(c)]; }

    static void set(LSC &at, int p, int s, int t) {
        at.pst.p = static_cast<CS_BYTE>(p);
        at.pst.s = static_cast<CS_BYTE>(s);
        at.pst.t = static_cast<CS_BYTE>(t);
    }

    bool add_entry(const std::vector<std::vector<std::string>> &entry, int p) {
        int s = 0;
        for (const auto &value : entry) {
            if (s > 1 && (table_.stat1 & 1) != 0)
                table_.stat1 = static_cast<CS_BYTE>((table_.stat1 & 0xFE) | 2);
            int step = 1, t = 1;
            for (const std::string &item : value) {
                if (t >= 2)
                    table_.stat1 |= 8;
                if (t >= 2 && order_.preference)
                    table_.stat1 = static_cast<CS_BYTE>((table_.stat1 & 0xFC) | 4);
                if (item.find('\0') != std::string::npos)
                    return false;
                for (const char c : item)
                    if (is_form(c))
                        return false;
                table_.last_char = static_cast<CS_BYTE>(item.back());
                if (item.size() == 2) {
                    table_.stat1 |= 0x10;
                    if (!add_pair(item, p, s, t))
                        return false;
                } else {
                    step += references(item[0], records_.size());
                    if (weight(item[0]).pst.t != 0)
                        return false;
                    set(weight(item[0]), p, s, t);
                    if (s == 0 && t == 1)
                        firsts_[p] = static_cast<CS_BYTE>(item[0]);
                }
                ++t;
            }
            s += step;
        }
        return true;
    }

    bool add_pair(const std::string &item, int p, int s, int t) {
        const auto second = static_cast<CS_BYTE>(item[1]);
        if (second == '=' || second == ' ')
            return false;
        LSC &first = weight(item[0]);
        for (int at = first.pst.smelist; at != 255; at = table_.smels[at].next_smel)
            if (table_.smels[at].smel_types.sm_1type.xtraw == second)
                return false;
        if (table_.nsmels == 64)
            return false;
        SMEL &smel = table_.smels[table_.nsmels];
        smel.type_smel = 1;
        smel.noxtraw = 1;
        smel.smel_types.sm_1type.xtraw = second;
        set(smel.smel_types.sm_1type.lsc1, p, s, t);
        smel.next_smel = first.pst.smelist;
        first.pst.smelist = table_.nsmels++;
        return true;
    }

    bool add_ligatures() {
        for (std::size_t i = 0; i < records_.size(); ++i) {
            const Record &record = records_[i];
            for (std::size_t form = 0; form < record.forms.size(); ++form) {
                if (table_.nsmels == 64)
                    return false;
                if (form != 0)
                    table_.stat1 |= 8;
                SMEL &smel = table_.smels[table_.nsmels];
                smel.type_smel = 3;
                const auto of = [&](char letter, LSC &to) {
                    const auto own = weight(letter).pst;
                    set(to, own.p, own.s + references(letter, i) + (record.is_after ? 1 : 0), static_cast<int>(form) + 1);
                };
                of(record.first, smel.smel_types.sm_3type.lsc1);
                of(record.second, smel.smel_types.sm_3type.lsc2);
                weight(record.forms[form]).pst.smelist = table_.nsmels++;
            }
        }
        return true;
    }

    // The first character of the entries behind a primary weight that an entry begins; 0 behind the last.
    CS_BYTE behind(int p) const {
        const auto next = firsts_.upper_bound(p);
        return next == firsts_.end() ? CS_BYTE(0) : next->second;
    }

    bool finish() {
        set(table_.lscs[0], 0, 0, 1);
        for (LSC &weight : table_.lscs) {
            const int head = weight.pst.smelist;
            if (weight.pst.t == 0 && (head == 255 || table_.smels[head].type_smel == 1))
                return false;
            if (head == 255) {
                weight.pst.smelist = behind(weight.pst.p);
                continue;
            }
            if (weight.pst.t != 0) {
                if (table_.nsmels == 64)
                    return false;
                int last = head;
                while (table_.smels[last].next_smel != 255)
                    last = table_.smels[last].next_smel;
                table_.smels[last].next_smel = table_.nsmels;
                SMEL &own = table_.smels[table_.nsmels++];
                set(own.smel_types.sm_0type.lsc1, weight.pst.p, weight.pst.s, weight.pst.t);
                set(weight, 0, 0, 0);
            }
            for (int at = head; at != 255; at = table_.smels[at].next_smel) {
                SMEL &smel = table_.smels[at];
                // The first weight of a type 1 element stands behind its second byte.
                LSC &first = smel.type_smel == 1 ? smel.smel_types.sm_1type.lsc1 : smel.smel_types.sm_0type.lsc1;
                first.pst.smelist = behind(first.pst.p);
                if (smel.type_smel == 3)
                    smel.smel_types.sm_3type.lsc2.pst.smelist = behind(smel.smel_types.sm_3type.lsc2.pst.p);
            }
        }
        return true;
    }

    const SortOrder &order_;
    SO_1CLASS table_ = {};
    std::vector<Record> records_;
    std::map<int, CS_BYTE> firsts_;
};

inline std::optional<SO_1CLASS> table_of(const SortOrder &order) { return TableMaker(order).make(); }

// ---- Comparison ---------------------------------------------------------------------------------------------

class SortSide {
public:
    SortSide(const SO_1CLASS &table, const std::string &text) : table_(table), text_(text) {}

    // The next weight; none at the end.
    std::optional<LSC> next() {
        if (hold_.lsclong != 0) {
            const LSC held = hold_;
            hold_.lsclong = 0;
            return held;
        }
        if (at == text_.size())
            return {};
        const LSC weight = table_.lscs[byte(at++)];
        if (weight.pst.t != 0)
            return weight;
        for (int element = weight.pst.smelist;; element = table_.smels[element].next_smel) {
            const SMEL &smel = table_.smels[element];
            if (smel.type_smel == 0)
                return smel.smel_types.sm_0type.lsc1;
            if (smel.type_smel == 3) {
                hold_ = smel.smel_types.sm_3type.lsc2;
                return smel.smel_types.sm_3type.lsc1;
            }
            if (at < text_.size() && byte(at) == smel.smel_types.sm_1type.xtraw) {
                ++at;
                return smel.smel_types.sm_1type.lsc1;
            }
        }
    }
    bool holds() const { return hold_.lsclong != 0; }
    bool has_only_blanks_from(std::size_t from) const {
        return text_.find_first_not_of(' ', from) == std::string::npos;
    }

    std::size_t at = 0;

private:
    unsigned byte(std::size_t place) const { return static_cast<unsigned char>(text_[place]); }

    const SO_1CLASS &table_;
    const std::string &text_;
    LSC hold_ = {0};
};

inline int compare(const SO_1CLASS &table, const std::string &text1, const std::string &text2) {
    SortSide side1(table, text1), side2(table, text2);
    int first_secondary = 0;
    while (true) {
        const auto weight1 = side1.next();
        if (!weight1) {
            if (side2.holds())
                return -1;
            return side2.has_only_blanks_from(side2.at) ? first_secondary : -1;
        }
        const auto weight2 = side2.next();
        if (!weight2)
            return side1.has_only_blanks_from(side1.at - 1) ? first_secondary : 1;
        if (weight1->pst.p != weight2->pst.p)
            return int(weight1->pst.p) - int(weight2->pst.p);
        if (first_secondary == 0 && weight1->pst.s != weight2->pst.s)
            first_secondary = int(weight1->pst.s) - int(weight2->pst.s);
    }
}

inline int compare_tertiary(const SO_1CLASS &table, const std::string &text1, const std::string &text2) {
    SortSide side1(table, text1), side2(table, text2);
    while (true) {
        const auto weight1 = side1.next();
        if (!weight1)
            return 0;
        const auto weight2 = side2.next();
        if (!weight2)
            return 0;
        if (weight1->pst.t != weight2->pst.t)
            return int(weight1->pst.t) - int(weight2->pst.t);
    }
}

} // namespace support::naive

#endif
