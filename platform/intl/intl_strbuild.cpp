// Message templates.
#include <dlxintl/intl.h>

#include <charconv>
#include <cstdarg>
#include <cstring>
#include <string_view>

namespace {

constexpr int MOST_PARAMETERS = 9;
constexpr std::size_t NUMBER_SIZE = 12; // of an int in decimal

// The parameters of a call as texts.
class Parameters {
public:
    // False for a list that is none.
    bool read(const char *format, va_list arguments) {
        for (; *format != '\0'; ++format) {
            if (*format == ' ')
                continue;
            if (*format != '%' || count_ == MOST_PARAMETERS)
                return false;
            ++format;
            if (*format == 's')
                texts_[count_] = text_or_empty(va_arg(arguments, const char *));
            else if (*format == 'd')
                texts_[count_] = number(va_arg(arguments, int));
            else
                return false;
            ++count_;
        }
        return true;
    }

    int count() const { return count_; }
    // From 1.
    std::string_view text(int parameter) const { return texts_[parameter - 1]; }

private:
    // A message is worth more without a parameter than not at all.
    static std::string_view text_or_empty(const char *text) { return text != nullptr ? text : ""; }

    std::string_view number(int value) {
        char *const text = numbers_[count_];
        return {text, static_cast<std::size_t>(std::to_chars(text, text + NUMBER_SIZE, value).ptr - text)};
    }

    int count_ = 0;
    std::string_view texts_[MOST_PARAMETERS];
    char numbers_[MOST_PARAMETERS][NUMBER_SIZE];
};

class Output {
public:
    Output(char *buffer, int size) : buffer_(buffer), room_(static_cast<std::size_t>(size) - 1) {}

    bool append(std::string_view text) {
        if (text.size() > room_ - length_)
            return false;
        std::memcpy(buffer_ + length_, text.data(), text.size());
        length_ += text.size();
        return true;
    }
    int end() {
        buffer_[length_] = '\0';
        return static_cast<int>(length_);
    }

private:
    char *buffer_;
    std::size_t room_;
    std::size_t length_ = 0;
};

bool is_placeholder(std::string_view text) {
    return text.size() >= 3 && text[0] == '%' && text[1] >= '1' && text[1] <= '9' && text[2] == '!';
}

bool fill(std::string_view rest, const Parameters &parameters, Output &output) {
    while (!rest.empty()) {
        if (is_placeholder(rest)) {
            const int parameter = rest[1] - '0';
            if (parameter > parameters.count() || !output.append(parameters.text(parameter)))
                return false;
            rest.remove_prefix(3);
        } else {
            if (!output.append(rest.substr(0, 1)))
                return false;
            rest.remove_prefix(rest.starts_with("%%") ? 2 : 1);
        }
    }
    return true;
}

} // namespace

int intl_strbuild(int /*flags*/, char *buffer, int length, const char *message_template, const char *format, ...) {
    if (length < 1)
        return INTL_EBADTEMPLATE;
    Parameters parameters;
    va_list arguments;
    va_start(arguments, format);
    const bool is_list = parameters.read(format, arguments);
    va_end(arguments);
    Output output(buffer, length);
    return is_list && fill(message_template, parameters, output) ? output.end() : static_cast<int>(INTL_EBADTEMPLATE);
}
