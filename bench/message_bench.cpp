// Texts of messages that a catalog has in memory, by their number, against gettext by the English text. Each catalog
// holds the same messages, and every text is asked for once before the clock starts.
#include "contest.h"
#include "data.h"

#include <dlxcomn/dlxcomn.h>
#include <dlxintl/intl.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <libintl.h>
#include <unistd.h>

namespace bench {
namespace {

// Messages as both catalogs hold them, and which of them the values of a row ask for.
struct MessageTexts {
    MessageTexts(std::size_t count, std::uint64_t seed) {
        static constexpr const char *WORDS[] = {"connection", "value", "property", "server", "result", "locale"};
        for (std::size_t i = 0; i < count; ++i) {
            ids.push_back("The " + std::string(WORDS[i % std::size(WORDS)]) + " number " + std::to_string(i) +
                          " cannot be used here.");
            texts.push_back("Das Wort " + std::string(WORDS[i % std::size(WORDS)]) + " mit der Nummer " +
                            std::to_string(i) + " passt hier nicht.");
        }
        Random random(seed);
        for (std::size_t i = 0; i < VALUES; ++i)
            wanted.push_back(below(random, count));
    }

    std::vector<std::string> ids, texts;
    std::vector<std::size_t> wanted;
};

class Directory {
public:
    Directory() {
        char pattern[] = "/tmp/dlxcomn_bench_XXXXXX";
        if (mkdtemp(pattern) == nullptr)
            std::abort();
        path = pattern;
    }
    ~Directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;

    void write(const std::string &name, const std::string &content) const {
        const std::filesystem::path file = path + "/" + name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }

    std::string path;
};

// ---- Contenders -----------------------------------------------------------------------------------------------

class Library {
public:
    explicit Library(const MessageTexts &data) : data_(data) {
        std::string content = "[comdefaults]\n[comlayer]\n[comorigin]\n[comapierror]\n";
        for (std::size_t i = 0; i < data.texts.size(); ++i)
            content += std::to_string(i) + " = 01004, \"" + data.texts[i] + "\"\n";
        directory_.write("locales/message/german/comnlib.loc", content);
        if (const char *home = std::getenv("DALVEX"))
            home_ = home;
        setenv("DALVEX", directory_.path.c_str(), 1);
        set_.oid = messages_.charset_oid = &oid_;
        set_.char_attrib = com_get_charattrib(); // as every set has; UTF-8 is copied whatever they say
        globals_.cmg_chardesc = globals_.cmg_utf8_charset = &set_;
        comn_create_mutex(&messages_.msgmtx);
        cache_.langname = language_;
        cache_.langnamelen = sizeof language_ - 1;
        cache_.locchardesc = &set_;
        cache_.locmessage = &messages_;
        locale_.messageptr = &cache_;
        context_.ctxglobals = &globals_;
        context_.ctxlocale = &locale_;
        com_errinit(&context_);
        for (std::size_t i = 0; i < VALUES; ++i)
            work(i); // what is read is read now
        if (home_)
            setenv("DALVEX", home_->c_str(), 1);
        else
            unsetenv("DALVEX");
    }
    ~Library() {
        com_errdrop(&context_);
        while (CsErrFileCache *const file = messages_.locfilecache) {
            messages_.locfilecache = file->next;
            com__errfile_cache_drop(&messages_, file);
        }
        comn_delete_mutex(messages_.msgmtx);
    }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    void work(std::size_t i) {
        CS_ERRIDX idx = {CS_ERRTAG_API, static_cast<CS_MSGNUM>(data_.wanted[i])};
        com_err_msg(&context_, static_cast<CS_ERRHAN *>(context_.ctxcomerrhan), &idx, &text_);
    }
    bool right(std::size_t i) const { return text_ != nullptr && text_ == data_.texts[data_.wanted[i]]; }

private:
    const MessageTexts &data_;
    Directory directory_;
    std::optional<std::string> home_; // of the other rows
    CS_CHAR language_[sizeof "german"] = "german";
    CsOID oid_ = {};
    CsCharDesc set_ = {};
    CS_MESSAGE messages_ = {};
    CsLocCache cache_ = {};
    CS_LOCALE locale_ = {};
    CsCtxGlobals globals_ = {};
    CS_CONTEXT context_ = {};
    CS_CHAR *text_ = nullptr;
};

class Gettext {
public:
    explicit Gettext(const MessageTexts &data) : data_(data) {
        setlocale(LC_ALL, "C.UTF-8"); // any but "C", in which nothing is translated
        setenv("LANGUAGE", "de", 1);
        directory_.write("de/LC_MESSAGES/dlxcomn_bench.mo", compiled());
        bindtextdomain("dlxcomn_bench", directory_.path.c_str());
        bind_textdomain_codeset("dlxcomn_bench", "UTF-8");
    }
    ~Gettext() {
        unsetenv("LANGUAGE");
        setlocale(LC_ALL, "C");
    }
    Gettext(const Gettext &) = delete;
    Gettext &operator=(const Gettext &) = delete;

    void work(std::size_t i) { text_ = dgettext("dlxcomn_bench", data_.ids[data_.wanted[i]].c_str()); }
    bool right(std::size_t i) const { return text_ == data_.texts[data_.wanted[i]]; }

private:
    // The compiled form without a table of hashes: a header, the places of identifiers in their order and of texts.
    std::string compiled() const {
        std::vector<std::pair<std::string, std::string>> entries = {{"", "Content-Type: text/plain; charset=UTF-8\n"}};
        for (std::size_t i = 0; i < data_.ids.size(); ++i)
            entries.emplace_back(data_.ids[i], data_.texts[i]);
        std::sort(entries.begin(), entries.end());
        constexpr std::uint32_t MAGIC = 0x950412DE, HEADER = 28, PLACE = 8;
        const auto count = static_cast<std::uint32_t>(entries.size());
        std::string head, strings;
        const auto number = [&head](std::uint32_t value) {
            head.append(reinterpret_cast<const char *>(&value), sizeof value);
        };
        for (const std::uint32_t value : {MAGIC, 0u, count, HEADER, HEADER + PLACE * count, 0u, 0u})
            number(value);
        const auto place = [&](const std::string &text) {
            number(static_cast<std::uint32_t>(text.size()));
            number(HEADER + 2 * PLACE * count + static_cast<std::uint32_t>(strings.size()));
            strings.append(text.c_str(), text.size() + 1);
        };
        for (const auto &[id, text] : entries)
            place(id);
        for (const auto &[id, text] : entries)
            place(text);
        return head + strings;
    }

    const MessageTexts &data_;
    Directory directory_;
    const char *text_ = "";
};

void enter_row(const std::string &row, const MessageTexts &data) {
    enter<Library>(row, LIBRARY, data);
    enter<Gettext>(row, "gettext", data);
}

} // namespace

void enter_message_rows() {
    static const MessageTexts few(8, 80), many(64, 81);
    enter_row("com_err_msg cached, 8 messages", few);
    enter_row("com_err_msg cached, 64 messages", many);
}

} // namespace bench
