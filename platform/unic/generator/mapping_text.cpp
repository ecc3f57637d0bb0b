// Mapping texts: sets that no source knows, told code by code or by what they change in another set.
#include "mapping.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace unic_tables {
namespace {

class MappingText {
public:
    MappingText(const std::string &path, Mapping *mapping) : path_(path), mapping_(*mapping) {}

    void apply() {
        std::ifstream file(path_);
        if (!file)
            fail("cannot read " + path_);
        for (std::string line; std::getline(file, line);) {
            ++line_;
            line.resize(std::min(line.find('#'), line.size()));
            std::istringstream words(line);
            std::string first;
            if (words >> first)
                statement(first, words);
        }
    }

private:
    [[noreturn]] void wrong(const std::string &what) const { fail(path_ + ":" + std::to_string(line_) + ": " + what); }

    std::uint32_t hexadecimal(const std::string &text) const {
        std::size_t used = 0;
        if (text.empty() || text.size() > 8 || text.find_first_not_of("0123456789ABCDEF") != std::string::npos)
            wrong("not a hexadecimal number: " + text);
        return static_cast<std::uint32_t>(std::stoul(text, &used, 16));
    }
    Code code_of(const std::string &text) const {
        if (text.size() % 2 != 0)
            wrong("not whole bytes: " + text);
        return {hexadecimal(text), static_cast<int>(text.size() / 2)};
    }

    void statement(const std::string &first, std::istringstream &words) {
        std::string second, third, more;
        words >> second;
        if (first == "without" && second.size() == 2) {
            remove_lead(hexadecimal(second));
        } else if (words >> third && third.size() > 2 && third.starts_with("U+")) {
            const char32_t character = hexadecimal(third.substr(2));
            if (character == 0 || character > 0x10FFFF || (character >= 0xD800 && character < 0xE000))
                wrong("no character: " + third);
            relate(code_of(first), second, character);
        } else {
            wrong("not understood: " + first);
        }
        if (words >> more)
            wrong("too much: " + more);
    }

    void relate(const Code &code, const std::string &how, char32_t character) {
        if (how != "=" && how != ">" && how != "<")
            wrong("not understood: " + how);
        if (how != "<")
            set_meaning(code, character);
        if (how != ">")
            mapping_.codes[character] = code.bytes;
    }

    void set_meaning(const Code &code, char32_t character) {
        std::vector<Meaning> &meanings = mapping_.meanings[mapping_.shift && code.length == 2 ? 1 : 0];
        const auto place = std::lower_bound(meanings.begin(), meanings.end(), code, comes_before);
        if (place != meanings.end() && place->code == code)
            place->characters = {character, 0};
        else
            meanings.insert(place, {code, {character, 0}});
    }

    // By bytes, a beginning before what it begins.
    static bool comes_before(const Meaning &a, const Code &b) {
        const auto aligned = [](const Code &code) { return std::uint64_t{code.bytes} << 8 * (4 - code.length); };
        return aligned(a.code) != aligned(b) ? aligned(a.code) < aligned(b) : a.code.length < b.length;
    }

    void remove_lead(unsigned lead) {
        for (auto &meanings : mapping_.meanings)
            std::erase_if(meanings, [&](const Meaning &meaning) { return meaning.code.byte(0) == lead; });
        for (std::uint32_t &code : mapping_.codes) {
            std::uint32_t first = code;
            while (first > 0xFF)
                first >>= 8;
            code = first == lead ? 0 : code;
        }
    }

    const std::string path_;
    Mapping &mapping_;
    int line_ = 0;
};

} // namespace

void apply_mapping_text(const std::string &path, Mapping *mapping) { MappingText(path, mapping).apply(); }

} // namespace unic_tables
