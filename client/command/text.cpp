// Small services on text: how names, lists and bytes are shown.
#include "text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <utility>

namespace client {
namespace {

constexpr char HEX_DIGITS[] = "0123456789abcdef";

void append_escaped(std::string &result, unsigned char byte) {
    if (byte == 0)
        result += "\\0";
    else if (byte == '"' || byte == '\\')
        result += {'\\', static_cast<char>(byte)};
    else if (byte < ' ' || byte >= 0x7F)
        result += {'\\', 'x', HEX_DIGITS[byte >> 4], HEX_DIGITS[byte & 15]};
    else
        result += static_cast<char>(byte);
}

} // namespace

std::string lowercase(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::optional<CS_INT> parse_number(std::string_view text, CS_INT lowest, CS_INT highest) {
    CS_INT number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size() || number < lowest || number > highest)
        return std::nullopt;
    return number;
}

size_t columns(std::string_view text) {
    // Characters of two columns: ideographs and their signs, Hangul, full-width forms, pictures.
    static constexpr std::pair<char32_t, char32_t> WIDE[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},
                                                             {0xF900, 0xFAFF}, {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                                                             {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
    size_t result = 0;
    for (size_t at = 0; at < text.size();) {
        const auto lead = static_cast<unsigned char>(text[at++]);
        char32_t character = lead < 0xC0 ? lead : lead < 0xE0 ? lead & 0x1F : lead < 0xF0 ? lead & 0x0F : lead & 0x07;
        for (; at < text.size() && (text[at] & 0xC0) == 0x80; ++at)
            character = character << 6 | (text[at] & 0x3F);
        const auto is_in = [character](const auto &range) {
            return character >= range.first && character <= range.second;
        };
        result += 1 + std::any_of(std::begin(WIDE), std::end(WIDE), is_in);
    }
    return result;
}

std::string left(std::string_view text, size_t width) {
    const size_t taken = columns(text);
    return std::string(text) + std::string(taken < width ? width - taken : 0, ' ');
}

std::string right(std::string_view text, size_t width) {
    const size_t taken = columns(text);
    return std::string(taken < width ? width - taken : 0, ' ') + std::string(text);
}

std::string enumerate(const std::vector<std::string_view> &words, std::string_view last) {
    std::string result;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i != 0)
            result += i + 1 == words.size() ? " " + std::string(last) + " " : ", ";
        result += words[i];
    }
    return result;
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text)
        append_escaped(result, static_cast<unsigned char>(c));
    return result + "\"";
}

std::string hexadecimal(const CS_BYTE *bytes, size_t count) {
    std::string result;
    for (size_t i = 0; i < count; ++i)
        result += {HEX_DIGITS[bytes[i] >> 4], HEX_DIGITS[bytes[i] & 15]};
    return result;
}

std::string quoted_units(const std::vector<CS_UNICHAR> &units) {
    std::string result = "\"";
    for (const CS_UNICHAR unit : units) {
        const CS_BYTE bytes[] = {static_cast<CS_BYTE>(unit >> 8), static_cast<CS_BYTE>(unit)};
        if (unit == 0 || (unit >= ' ' && unit < 0x7F))
            append_escaped(result, bytes[1]);
        else
            result += "\\u" + hexadecimal(bytes, sizeof bytes);
    }
    return result + "\"";
}

} // namespace client
