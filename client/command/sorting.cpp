#include "sorting.h"

#include <algorithm>

namespace client {

std::vector<std::string_view> lines_of(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

int compare(const CsSortDesc &order, std::string_view first, std::string_view second) {
    auto *const table = static_cast<SO_1CLASS *>(order.char_sort_class);
    auto *const text1 = const_cast<char *>(first.data());
    auto *const text2 = const_cast<char *>(second.data());
    const auto length1 = static_cast<int>(first.size()), length2 = static_cast<int>(second.size());
    if (table == nullptr)
        return com_memhilo(reinterpret_cast<CS_BYTE *>(text1), length1, reinterpret_cast<CS_BYTE *>(text2), length2);
    const int result = com__ps_dl_sqlhilo(table, text1, length1, text2, length2);
    if (result != 0 || (table->stat1 & SO_TERTIARY) == 0)
        return result;
    return com__spec_tord(table, text1, length1, text2, length2);
}

std::vector<std::string_view> sorted(std::vector<std::string_view> lines, const CsSortDesc &order) {
    std::stable_sort(lines.begin(), lines.end(), [&order](std::string_view first, std::string_view second) {
        return compare(order, first, second) < 0;
    });
    return lines;
}

} // namespace client
