// Lines in a sort order.
#ifndef DLX_CLIENT_COMMAND_SORTING_H
#define DLX_CLIENT_COMMAND_SORTING_H

#include <dlxcomn/dlxcomn.h>

#include <string_view>
#include <vector>

namespace client {

// The lines of a text, without their line feeds. The last one needs none.
std::vector<std::string_view> lines_of(std::string_view text);

// Negative, zero or positive, as the order compares two texts: by its tertiary weights where all else is equal.
int compare(const CsSortDesc &order, std::string_view first, std::string_view second);

// Texts that compare as equal stay in the order that they came in.
std::vector<std::string_view> sorted(std::vector<std::string_view> lines, const CsSortDesc &order);

} // namespace client

#endif
