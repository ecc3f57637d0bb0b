// Small services on text: how names, lists and bytes are shown.
#include "text.h"

#include <cctype>
#include <charconv>

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

std::string left(std::string_view text, size_t width) {
    std::string result(text);
    result.resize(result.size() < width ? width : result.size(), ' ');
    return result;
}

std::string right(std::string_view text, size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + std::string(text);
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
