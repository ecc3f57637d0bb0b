// A second catalog of messages in UTF-8, over the naive reader: one list of what is cached, the oldest first.
#ifndef TESTS_SUPPORT_NAIVE_CATALOG_H
#define TESTS_SUPPORT_NAIVE_CATALOG_H

#include "support/naive_locfile.h"

#include <dlxcomn/dlxcomn.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace support::naive {

using Sections = std::vector<std::pair<int, std::string>>;
using Index = std::pair<int, int>; // tag and number

inline const Sections OWN_SECTIONS = {{1, "comdefaults"}, {2, "comlayer"}, {3, "comorigin"}, {4, "comapierror"}};
inline const std::vector<Index> OWN_DEFAULTS = {{1, 1}, {1, 2}, {1, 3}, {1, 4}};

inline std::string without_escapes(const std::string &text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        switch (text[++i]) {
        case '"':
            result += '"';
            break;
        case 'b':
            result += '\b';
            break;
        case 'f':
            result += '\f';
            break;
        case 'n':
            result += '\n';
            break;
        case 'r':
            result += '\r';
            break;
        case 't':
            result += '\t';
            break;
        default:
            result += '\\';
        }
    }
    return result;
}

class Catalog {
public:
    struct Message {
        Index index;
        std::string code, text;
    };

    CS_RETCODE start(const std::string &content, const Sections &sections = OWN_SECTIONS,
                     const std::vector<Index> &wanted = OWN_DEFAULTS) {
        const bool was_known = is_known_;
        is_known_ = true;
        const CS_RETCODE status = read_sections(content, sections, wanted);
        if (status != CS_SUCCEED && !was_known) {
            is_known_ = false;
            tags_.clear();
            messages_.clear();
        }
        return status;
    }

    CS_RETCODE find(const std::string &content, Index index, Message &found) {
        const auto tag =
            std::find_if(tags_.begin(), tags_.end(), [&](const auto &t) { return t.first == index.first; });
        if (tag == tags_.end())
            return CS_FAIL;
        if (!is_cached(index)) {
            NaiveLocfile file = opened(content);
            NaiveLocfile::Answer section;
            while ((section = file.next_section()).text && section.text->c_str() != tag->second) {
            }
            if (!section.text)
                return missing(section);
            const CS_RETCODE status = read_messages(file, index.first, {index});
            if (status != CS_SUCCEED)
                return status;
            if (!is_cached(index))
                return CS_FAIL;
        }
        found = *position(index);
        return CS_SUCCEED;
    }

    const std::deque<Message> &messages() const { return messages_; }
    int code() const { return code_; } // of the last failure of the reader

private:
    // The file at its beginning, taken apart anew only when it is another.
    NaiveLocfile opened(const std::string &content) {
        if (!file_ || content != content_) {
            content_ = content;
            file_.emplace(content);
        }
        return *file_;
    }
    CS_RETCODE missing(const NaiveLocfile::Answer &answer) {
        if (answer.status >= 0)
            return CS_FAIL;
        code_ = answer.status;
        return CS_EINTL;
    }
    std::deque<Message>::const_iterator position(Index index) const {
        return std::find_if(messages_.begin(), messages_.end(), [&](const Message &m) { return m.index == index; });
    }
    bool is_cached(Index index) const { return position(index) != messages_.end(); }

    CS_RETCODE read_sections(const std::string &content, const Sections &sections, const std::vector<Index> &wanted) {
        NaiveLocfile file = opened(content);
        for (std::size_t met = 0; met < sections.size();) {
            const NaiveLocfile::Answer name = file.next_section();
            if (!name.text)
                return missing(name);
            const auto section = std::find_if(sections.begin(), sections.end(), [&](const auto &candidate) {
                return candidate.second == name.text->c_str();
            });
            if (section == sections.end())
                continue;
            ++met;
            if (std::none_of(tags_.begin(), tags_.end(), [&](const auto &t) { return t.first == section->first; }))
                tags_.push_back(*section);
            if (wanted.empty())
                continue;
            const CS_RETCODE status = read_messages(file, section->first, wanted);
            if (status != CS_SUCCEED)
                return status;
        }
        return CS_SUCCEED;
    }

    CS_RETCODE read_messages(NaiveLocfile &file, int tag, const std::vector<Index> &wanted) {
        for (std::size_t met = 0; met < wanted.size();) {
            const NaiveLocfile::Answer key = file.next_entry();
            if (!key.text)
                return key.status < 0 ? missing(key) : CS_SUCCEED;
            const Index index = {tag, std::atoi(key.text->c_str())};
            if (std::find(wanted.begin(), wanted.end(), index) == wanted.end())
                continue;
            ++met;
            if (is_cached(index))
                continue;
            const NaiveLocfile::Answer code = file.next_value();
            if (!code.text)
                return missing(code);
            std::string text;
            NaiveLocfile::Answer value = file.next_value();
            if (!value.text)
                return missing(value);
            for (; value.text; value = file.next_value())
                text += without_escapes(value.text->c_str());
            if (value.status < 0)
                return missing(value);
            if (messages_.size() == 100)
                messages_.pop_front();
            messages_.push_back({index, std::string(code.text->c_str()).substr(0, 7), text});
        }
        return CS_SUCCEED;
    }

    std::string content_;
    std::optional<NaiveLocfile> file_;
    bool is_known_ = false;
    Sections tags_;
    std::deque<Message> messages_;
    int code_ = 0;
};

} // namespace support::naive

#endif
