// The texts of the files of a character set.
#ifndef HOME_GENERATOR_FILES_H
#define HOME_GENERATOR_FILES_H

#include "decoder.h"

#include <array>
#include <string>

namespace home {

struct SortOrder {
    std::string_view name;
    int id;
    std::string_view title;
    bool case_counts;
    bool accents_count;
};

// Those that sets have besides `binary`.
inline constexpr SortOrder SORT_ORDERS[] = {
    {"dict", 2, "Dictionary order: case and accents count after letters", true, true},
    {"nocase", 3, "Dictionary order without case", false, true},
    {"noaccent", 4, "Dictionary order without case and accents", false, false}};

std::string charset_file(const Set &set, Decoder &decoder);
std::string config_file(const Set &set);
std::string binary_order_file(const Set &set);
// Of a set of single bytes.
std::string sort_order_file(const Set &set, Decoder &decoder, const SortOrder &order);

// "\x41".
std::string escaped(int byte);

} // namespace home

#endif
