// Any bytes as the format of the debug output, with the arguments that the format takes, against a version that
// goes by whole specifiers. What would take other arguments must come out as illegal.
#include "input.h"

#include <cstdarg>
#include <utility>

namespace {

constexpr std::size_t MAX_FORMAT = 256;
constexpr std::size_t SLOTS = MAX_FORMAT / 2 + 1; // a conversion takes two bytes at least
constexpr long BEYOND = 0x5E471E51;

// What a format prints, and the arguments it takes from a list of slots of eight bytes.
struct Expected {
    std::string text;
    long slots[SLOTS];
    std::size_t taken = 0;

    explicit Expected(const std::string &format) {
        std::fill(slots, slots + SLOTS, BEYOND);
        for (std::size_t at = 0; at < format.size();)
            at = format[at] != '%' ? plain(format, at) : specifier(format, at);
    }

private:
    std::size_t plain(const std::string &format, std::size_t at) {
        text += format[at];
        return at + 1;
    }

    std::size_t specifier(const std::string &format, std::size_t at) {
        if (format.compare(at, 2, "%%") == 0)
            return plain(format, at) + 1;
        const std::size_t letter = format.find_first_of("cdlsxX", at + 1);
        if (letter == std::string::npos)
            return illegal(format.size());
        std::size_t end = letter + 1;
        if (format[letter] == 'l' && end < format.size() && (format[end] == 'd' || format[end] == 'x'))
            ++end;
        if (format.find_first_not_of("-+ #'.h0123456789", at + 1) != letter || end - at > 79)
            return illegal(end);
        print(format.substr(at, end - at), format[letter], format[end - 1]);
        return end;
    }

    std::size_t illegal(std::size_t end) {
        text += "illegal format specification\n";
        return end;
    }

    // The arguments differ from each other, and every third string is null.
    void print(const std::string &specifier, char letter, char last) {
        static const char *const words[] = {"", "word", nullptr, "a text with several words", "100%d", nullptr};
        const long number = static_cast<long>(taken * 0x9E3779B97F4A7C15u);
        const char *word = words[taken % 6];
        long &slot = slots[taken++];
        slot = letter == 's' ? reinterpret_cast<long>(word) : number;
        if (letter == 's')
            append(specifier.c_str(), word != nullptr ? word : "(null)");
        else if (last == 'l')
            return; // a length without a conversion
        else if (letter == 'l')
            append(specifier.c_str(), number);
        else if (letter == 'c')
            append(specifier.c_str(), static_cast<int>(static_cast<signed char>(number)));
        else
            append(specifier.c_str(), static_cast<int>(number));
    }

    template <class Argument>
    void append(const char *specifier, Argument argument) {
        char buffer[4096] = "";
        const int length = std::snprintf(buffer, sizeof buffer, specifier, argument);
        text.append(buffer, length >= 0 ? static_cast<std::size_t>(length) : std::strlen(buffer));
    }
};

// Numbers above 999 lose their last digits: what they would print takes long and shows nothing more.
std::string bounded(const std::string &format) {
    std::string result;
    int digits = 0;
    for (const char c : format) {
        const bool digit = c >= '0' && c <= '9';
        digits = !digit ? 0 : digits != 0 || c != '0' ? digits + 1 : 0;
        if (digits <= 3)
            result += c;
    }
    return result;
}

struct Printed {
    std::string text;
    CS_RETCODE status;
    long next; // the argument behind those that were taken
};

void print(Printed &printed, const char *format, std::size_t taken, ...) {
    char *text = nullptr;
    std::size_t length = 0;
    Com_fp = open_memstream(&text, &length);
    FUZZ_CHECK(Com_fp != nullptr);
    std::va_list arguments;
    va_start(arguments, taken);
    printed.status = comn_debug_vprint(format, &arguments);
    printed.next = va_arg(arguments, long);
    va_end(arguments);
    std::fclose(Com_fp);
    Com_fp = nullptr;
    printed.text.assign(text, length);
    std::free(text);
}

template <std::size_t... Index>
Printed print(const std::string &format, const Expected &expected, std::index_sequence<Index...>) {
    Printed printed;
    print(printed, format.c_str(), expected.taken, expected.slots[Index]...);
    return printed;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    std::string format = bounded(fuzz::Input(data, std::min(size, MAX_FORMAT)).rest());
    format.resize(std::strlen(format.c_str())); // a NUL ends a format
    const Expected expected(format);
    const Printed printed = print(format, expected, std::make_index_sequence<SLOTS>());
    FUZZ_CHECK(printed.status == CS_SUCCEED);
    FUZZ_CHECK(printed.text == expected.text);
    FUZZ_CHECK(printed.next == expected.slots[expected.taken]);
    return 0;
}
