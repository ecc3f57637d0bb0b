// Small services on text: how names, lists and bytes are shown.
#ifndef DLX_CLIENT_COMMAND_TEXT_H
#define DLX_CLIENT_COMMAND_TEXT_H

#include <dlxcomn/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace client {

std::string lowercase(std::string_view text);
// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

// The whole number within a range that the text spells.
std::optional<CS_INT> parse_number(std::string_view text, CS_INT lowest, CS_INT highest);

// The columns that a text of UTF-8 takes on a terminal.
size_t columns(std::string_view text);

// Filled with blanks to a width in columns; longer text stands as it is.
std::string left(std::string_view text, size_t width);
std::string right(std::string_view text, size_t width);

// "a, b or c", with `last` as the word before the last.
std::string enumerate(const std::vector<std::string_view> &words, std::string_view last);

// In double quotes, bytes without a glyph as \xHH, a NUL as \0: it can be read in any terminal.
std::string quoted(std::string_view text);

// The same for UTF-16 units, those without an ASCII glyph as \uHHHH.
std::string quoted_units(const std::vector<CS_UNICHAR> &units);

// Two digits a byte.
std::string hexadecimal(const CS_BYTE *bytes, size_t count);

} // namespace client

#endif
