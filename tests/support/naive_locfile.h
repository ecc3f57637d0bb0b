// A second reader of localization files: it takes the content apart into lines at once and reads each byte by itself.
#ifndef TESTS_SUPPORT_NAIVE_LOCFILE_H
#define TESTS_SUPPORT_NAIVE_LOCFILE_H

#include <dlxintl/intl.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace support {

class NaiveLocfile {
public:
    struct Answer {
        std::optional<std::string> text; // none at an end or a failure
        int status = INTL_OK;
        bool operator==(const Answer &) const = default;
    };

    explicit NaiveLocfile(const std::string &content) {
        std::vector<std::string> lines;
        std::string line;
        for (std::size_t i = 0; i < content.size(); ++i) {
            if (content[i] != '\n')
                line += content[i];
            if (content[i] == '\n' || i + 1 == content.size()) {
                if (!line.empty() && line.back() == '\r')
                    line.pop_back();
                lines.push_back(line);
                line.clear();
            }
        }
        lines_ = std::make_shared<const std::vector<std::string>>(std::move(lines));
    }

    Answer next_section() {
        if (failure_ != INTL_OK)
            return {std::nullopt, failure_};
        in_section_ = false;
        values_.clear();
        while (next_line()) {
            if (text_[0] != '[')
                continue;
            const std::size_t close = text_.find(']');
            if (close + 1 != text_.size() || close == std::string::npos || trimmed(text_.substr(1, close - 1)).empty())
                return fail(INTL_EBADSECTION);
            in_section_ = true;
            return {trimmed(text_.substr(1, close - 1)), INTL_OK};
        }
        return {std::nullopt, failure_};
    }

    Answer next_entry() {
        if (failure_ != INTL_OK)
            return {std::nullopt, failure_};
        values_.clear();
        if (!in_section_)
            return {};
        if (!next_line()) {
            in_section_ = false;
            return {std::nullopt, failure_};
        }
        if (text_[0] == '[') {
            in_section_ = false;
            put_back_ = true;
            return {};
        }
        const std::size_t equals = text_.find('=');
        if (equals == std::string::npos)
            return fail(INTL_ENOEQUALS);
        values_ = all_values();
        std::reverse(values_.begin(), values_.end());
        return {trimmed(text_.substr(0, equals)), INTL_OK};
    }

    Answer next_value() {
        if (failure_ != INTL_OK)
            return {std::nullopt, failure_};
        if (values_.empty())
            return {};
        const Value value = values_.back();
        values_.pop_back();
        if (value.status != INTL_OK)
            return fail(value.status);
        quoted_ = value.quoted;
        return {value.text, INTL_OK};
    }

    int linenum() const { return linenum_; }
    bool is_quoted() const { return quoted_; }

private:
    struct Value {
        std::string text;
        bool quoted = false;
        int status = INTL_OK;
    };
    using Marked = std::vector<std::pair<char, bool>>; // a byte, and whether it was escaped

    static bool blank(char c) { return c == ' ' || c == '\t'; }
    static std::string trimmed(std::string text) {
        while (!text.empty() && blank(text.back()))
            text.pop_back();
        std::size_t begin = 0;
        while (begin < text.size() && blank(text[begin]))
            ++begin;
        return text.substr(begin);
    }
    static int digit(char c) {
        const std::size_t place = std::string("0123456789abcdefABCDEF").find(c);
        return place == std::string::npos ? -1 : static_cast<int>(place < 16 ? place : place - 6);
    }

    Answer fail(int code) {
        failure_ = code;
        return {std::nullopt, code};
    }

    bool next_line() {
        if (put_back_) {
            put_back_ = false;
            return true;
        }
        while (static_cast<std::size_t>(linenum_) < lines_->size()) {
            const std::string &line = (*lines_)[static_cast<std::size_t>(linenum_++)];
            if (line.size() > 1023) {
                failure_ = INTL_ELINETOOLONG;
                return false;
            }
            text_ = trimmed(line);
            if (!text_.empty() && text_[0] != ';')
                return true;
        }
        return false;
    }

    // The trimmed line has lost a blank that a backslash kept: values are cut out of the line as it stands.
    std::vector<Value> all_values() const {
        const std::string &line = (*lines_)[static_cast<std::size_t>(linenum_ - 1)];
        const std::string text = line.substr(line.find('=') + 1);
        std::vector<Value> values;
        if (trimmed(text).empty())
            return values;
        std::size_t i = 0;
        do {
            while (i < text.size() && blank(text[i]))
                ++i;
            values.push_back(i < text.size() && text[i] == '"' ? quoted_value(text, i) : plain_value(text, i));
        } while (values.back().status == INTL_OK && i++ < text.size());
        return values;
    }

    // Both leave i at the separator or at the end.
    static Value quoted_value(const std::string &text, std::size_t &i) {
        Value value;
        value.quoted = true;
        bool escaped = false;
        for (++i; i < text.size() && (escaped || text[i] != '"'); ++i) {
            value.text += text[i];
            escaped = !escaped && text[i] == '\\';
        }
        bool ends = i < text.size();
        for (++i; i < text.size() && text[i] != ','; ++i)
            ends = ends && blank(text[i]);
        if (!ends)
            value.status = INTL_EUNTERMINATED;
        i = std::min(i, text.size());
        return value;
    }

    static Value plain_value(const std::string &text, std::size_t &i) {
        Value value;
        Marked bytes;
        for (; i < text.size() && text[i] != ','; ++i) {
            if (text[i] != '\\') {
                bytes.emplace_back(text[i], false);
                continue;
            }
            const std::string behind = text.substr(i + 1);
            const bool is_byte = !behind.empty() && behind[0] == 'x';
            if (behind.empty() || (is_byte && (behind.size() < 3 || digit(behind[1]) < 0 || digit(behind[2]) < 0))) {
                value.status = INTL_EBADESCAPE;
                return value;
            }
            bytes.emplace_back(is_byte ? static_cast<char>(digit(behind[1]) * 16 + digit(behind[2])) : behind[0], true);
            i += is_byte ? 3 : 1;
        }
        while (!bytes.empty() && blank(bytes.back().first) && !bytes.back().second)
            bytes.pop_back();
        for (const auto &[byte, escaped] : bytes)
            value.text += byte;
        return value;
    }

    std::shared_ptr<const std::vector<std::string>> lines_; // of all copies of a reader
    int linenum_ = 0;
    std::string text_; // the present line, trimmed
    bool put_back_ = false;
    bool in_section_ = false;
    bool quoted_ = false;
    int failure_ = INTL_OK;
    std::vector<Value> values_; // what is left of the present entry, the next one last
};

} // namespace support

#endif
