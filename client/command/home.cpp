// The data home: where it is, and what a person is told of what cannot be loaded from it.
#include "home.h"

#include "names.h"
#include "text.h"

#include <dlxintl/intl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#ifndef DLXCOMN_INSTALLED_HOME
#error "the build tells where the home lies from the directory of an installed command"
#endif

namespace client {
namespace {

namespace fs = std::filesystem;

constexpr CS_INT ROOM = 1025;     // what the library builds the paths of its files in
constexpr int LONGEST_HOME = 900; // what leaves room there for the longest name below it
constexpr const char *VARIABLE = "DALVEX";

std::string adopted;

// Where the command lies, or nothing.
fs::path own_directory() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::path() : self.parent_path();
}

struct Class {
    CS_INT id;
    const char *what;
    const char *lists; // which command lists the names
};

constexpr Class CLASSES[] = {
    {CS_OID_CHARSET, "character set", "`dlxcomn charsets` lists them"},
    {CS_OID_NATLANG, "language", ""},
    {CS_OID_COLLATE, "sort order", ""},
    {CS_OID_DATETIME, "date format", ""},
    {CS_OID_NUMERIC, "number format", ""},
    {CS_OID_MONEY, "money format", ""},
};

const Class &class_of(CS_INT id) {
    return *std::find_if(std::begin(CLASSES), std::end(CLASSES), [id](const Class &one) { return one.id == id; });
}

// What two spellings of a name have in common: de_DE.utf8 and de_DE.UTF-8.
std::string bare(std::string_view name) {
    std::string result;
    for (const char letter : lowercase(name))
        if (letter != '-' && letter != '_' && letter != '.')
            result += letter;
    return result;
}

// Names that are the same but for their spelling, or else near ones.
std::vector<std::string_view> near_names(const std::string &name, const std::vector<std::string_view> &names) {
    if (name.empty())
        return {};
    std::vector<std::string_view> same;
    for (const std::string_view one : names)
        if (bare(one) == bare(name) && same.empty())
            same.push_back(one);
    return same.empty() ? nearest(name, names) : same;
}

std::string unknown(const std::string &what, const std::string &name, const std::vector<std::string_view> &names,
                    const std::string &lists) {
    const std::vector<std::string_view> near = near_names(name, names);
    std::string sentence = "no " + what + " " + client::quoted(name);
    if (!near.empty())
        sentence += "; did you mean " + enumerate(near, "or") + "?";
    if (!lists.empty())
        sentence += (near.empty() ? "; " : " ") + lists;
    return sentence;
}

// The code of the localization library in words, or what the status says by itself.
std::string reason_of(const Load &load) {
    switch (load.status) {
    case CS_EINTL:
    case CS_ENOLOCFILE:
        return intl_errstr(load.code);
    case CS_MEM_ERROR:
        return "there is no memory for it";
    default:
        return "this line is wrong, or something is missing in front of it";
    }
}

std::string sentence_of(const Load &load) {
    if (load.path.empty())
        return reason_of(load);
    return load.path + (load.line != 0 ? ":" + std::to_string(load.line) : "") + ": " + reason_of(load);
}

template <class T>
Maybe<T> failed(const Load &load) {
    return Maybe<T>::failure(sentence_of(load), FAILED);
}

// Closes the file when it is done with.
struct LocalizationFile : INTL_LOCFILE {
    int opened;
    explicit LocalizationFile(const std::string &path) : opened(intl_open(path.c_str(), this)) {}
    ~LocalizationFile() { intl_close(this); }
    LocalizationFile(const LocalizationFile &) = delete;
    LocalizationFile &operator=(const LocalizationFile &) = delete;
};

std::string built(CS_RETCODE status, const CS_CHAR *path) { return status == CS_SUCCEED ? path : ""; }

std::string text_of(const CS_STRING_LIST &name) { return {name.string, static_cast<size_t>(name.len)}; }

} // namespace

void adopt_home() {
    const char *given = std::getenv(VARIABLE);
    if (given != nullptr && *given != '\0')
        return;
    const fs::path here = own_directory();
    if (here.empty())
        return;
    for (const char *beside : {"../home", DLXCOMN_INSTALLED_HOME}) {
        const fs::path home = (here / beside).lexically_normal();
        std::error_code error;
        if (fs::is_regular_file(home / "config" / "objectid.dat", error)) {
            adopted = home.string();
            setenv(VARIABLE, adopted.c_str(), 1);
            return;
        }
    }
}

const std::string &adopted_home() { return adopted; }

Maybe<std::string> home_directory() {
    std::string directory(ROOM, '\0');
    const int length = intl_home(directory.data(), ROOM);
    if (length < 0)
        return Maybe<std::string>::failure(intl_errstr(length), FAILED);
    if (length > LONGEST_HOME)
        return Maybe<std::string>::failure("the path of the home directory has " + std::to_string(length) +
                                               " bytes; the library has room for " + std::to_string(LONGEST_HOME),
                                           FAILED);
    directory.resize(static_cast<size_t>(length));
    return directory;
}

Maybe<std::shared_ptr<Home>> Home::open() {
    using Answer = Maybe<std::shared_ptr<Home>>;
    const Maybe<std::string> directory = home_directory();
    if (!directory)
        return Answer::failure(directory.sentence(), directory.code());
    std::error_code error;
    if (!fs::is_directory(*directory, error))
        return Answer::failure("the home " + client::quoted(*directory) +
                                   " is no directory that can be read; the variable DALVEX names the home",
                               FAILED);
    std::shared_ptr<Home> home(new Home);
    if (home->context() == nullptr)
        return Answer::failure("no memory for a context", FAILED);
    if (const Load load = home->localization_.start(); !load)
        return failed<std::shared_ptr<Home>>(load);
    return home;
}

// ---- Names ----

std::vector<std::string> Home::names_of(const CsOID *oid) {
    std::vector<std::string> names;
    for (const CS_STRING_LIST *name = oid->oidlnames; name != nullptr; name = name->next)
        names.push_back(text_of(*name));
    return names;
}

std::vector<std::string> Home::first_names(CS_INT id_class) {
    std::vector<std::string> names;
    const auto *const table = static_cast<const CS_OID_TABLE *>(context()->ctxglobals->ctxoids);
    for (const CsOID *oid = table->ot_oid[id_class]; oid != nullptr; oid = oid->oidnext)
        if (oid->oidlnames != nullptr)
            names.push_back(text_of(*oid->oidlnames));
    return names;
}

Maybe<std::string> Home::find(CS_INT id_class, const std::string &name) {
    const auto *const table = static_cast<const CS_OID_TABLE *>(context()->ctxglobals->ctxoids);
    std::vector<std::string> all;
    for (const CsOID *oid = table->ot_oid[id_class]; oid != nullptr; oid = oid->oidnext)
        for (const std::string &one : names_of(oid)) {
            if (one == name)
                return names_of(oid).front();
            all.push_back(one);
        }
    const Class &asked = class_of(id_class);
    return Maybe<std::string>::failure(unknown(asked.what, name, {all.begin(), all.end()}, asked.lists));
}

// ---- Locales ----

std::string locales_path() {
    static CS_CHAR file[] = "locales.dat";
    CS_CONTEXT context = {};
    CS_CHAR path[ROOM] = "";
    return built(com__path_locfile(&context, nullptr, nullptr, file, path, ROOM), path);
}

std::string charset_directory(const std::string &charset) {
    std::string name = charset;
    CS_CHAR path[ROOM] = "";
    return built(com_path_charfile(nullptr, name.empty() ? nullptr : name.data(), nullptr, nullptr, path, ROOM), path);
}

Maybe<std::vector<LocaleLine>> Home::locale_lines() {
    using Answer = Maybe<std::vector<LocaleLine>>;
    const std::string path = locales_path();
    LocalizationFile file(path);
    const auto wrong = [&](const std::string &what) {
        return Answer::failure(path + (file.linenum != 0 ? ":" + std::to_string(file.linenum) : "") + ": " + what,
                               FAILED);
    };
    if (file.opened < 0)
        return wrong(intl_errstr(file.opened));
    int status = 0;
    const char *section;
    do
        section = intl_nextsection(&file, &status);
    while (section != nullptr && std::strcmp(section, "linux") != 0);
    if (section == nullptr)
        return wrong(status < 0 ? intl_errstr(status) : "there is no section [linux]");
    std::vector<LocaleLine> lines;
    while (const char *key = intl_nextentry(&file, &status)) {
        if (std::strcmp(key, "locale") != 0)
            return wrong("only entries named locale stand in this section, not " + client::quoted(key));
        LocaleLine line;
        line.number = file.linenum;
        for (std::string *field :
             {&line.name, &line.language, &line.charset, &line.sortorder, &line.datetime, &line.numeric, &line.money}) {
            const char *value = intl_nextvalue(&file, &status);
            if (value == nullptr)
                break;
            field->assign(value, static_cast<size_t>(intl_valuelen(&file)));
            if (field->size() >= CS_LOCNAME_SIZE)
                return wrong("a name of " + std::to_string(field->size()) + " bytes is too long");
        }
        if (status < 0)
            return wrong(intl_errstr(status));
        if (line.sortorder.empty())
            line.sortorder = "binary";
        lines.push_back(std::move(line));
    }
    if (status < 0)
        return wrong(intl_errstr(status));
    return lines;
}

Maybe<CsLocCache *> Home::load_locale(const std::string &name) {
    using Answer = Maybe<CsLocCache *>;
    const Maybe<std::vector<LocaleLine>> lines = locale_lines();
    if (!lines)
        return Answer::failure(lines.sentence(), lines.code());
    const auto line =
        std::find_if(lines->begin(), lines->end(), [&](const LocaleLine &one) { return one.name == name; });
    if (line == lines->end()) {
        std::vector<std::string_view> names;
        for (const LocaleLine &one : *lines)
            names.push_back(one.name);
        return Answer::failure(unknown("locale", name, names, "`dlxcomn locales` lists them"));
    }
    const std::string where =
        locales_path() + ":" + std::to_string(line->number) + ": the locale " + client::quoted(name);
    if (line->language.empty() || line->charset.empty())
        return Answer::failure(where + " wants a language and a character set", FAILED);
    const std::pair<CS_INT, const std::string *> identifiers[] = {
        {CS_OID_NATLANG, &line->language},  {CS_OID_CHARSET, &line->charset}, {CS_OID_COLLATE, &line->sortorder},
        {CS_OID_DATETIME, &line->datetime}, {CS_OID_NUMERIC, &line->numeric}, {CS_OID_MONEY, &line->money},
    };
    for (const auto &[id_class, named] : identifiers)
        if (!named->empty() && !find(id_class, *named))
            return Answer::failure(where + " names the " + class_of(id_class).what + " " + client::quoted(*named) +
                                       ", which objectid.dat does not have",
                                   FAILED);
    CsLocCache *cache = nullptr;
    if (const Load load = localization_.load_locale(name, &cache); !load)
        return failed<CsLocCache *>(load);
    return cache;
}

std::string environment_locale(CS_CONTEXT *context) {
    CS_CHAR name[CS_LOCNAME_SIZE] = "";
    return com_intl_envloc(context, CS_LC_ALL, name, sizeof name) == CS_SUCCEED ? name : "default";
}

Maybe<CsLocCache *> Home::use(CsLocCache *cache) {
    if (const Load load = localization_.use(cache); !load)
        return failed<CsLocCache *>(load);
    return cache;
}

// ---- Character sets ----

Maybe<CsCharDesc *> Home::load_charset(const std::string &name) {
    using Answer = Maybe<CsCharDesc *>;
    const Maybe<std::string> local = find(CS_OID_CHARSET, name);
    if (!local)
        return Answer::failure(local.sentence(), local.code());
    CsCharDesc *set = nullptr;
    if (const Load load = localization_.load_charset(*local, &set); !load)
        return failed<CsCharDesc *>(load);
    return set;
}

Maybe<CsSortDesc *> Home::load_order(CsCharDesc *set, const std::string &name) {
    using Answer = Maybe<CsSortDesc *>;
    const Maybe<std::string> local = find(CS_OID_COLLATE, name);
    if (!local)
        return Answer::failure(local.sentence(), local.code());
    const std::string charset = names_of(set->oid).front();
    std::vector<std::string> orders;
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(charset_directory(charset), error))
        if (entry.path().extension() == ".srt")
            orders.push_back(entry.path().stem().string());
    std::sort(orders.begin(), orders.end());
    if (std::find(orders.begin(), orders.end(), *local) == orders.end())
        return Answer::failure(charset + " has no sort order " + client::quoted(*local) +
                               (orders.empty() ? "" : "; it has " + enumerate({orders.begin(), orders.end()}, "and")));
    CsSortDesc *order = nullptr;
    if (const Load load = localization_.load_order(set, *local, &order); !load)
        return failed<CsSortDesc *>(load);
    return order;
}

std::optional<std::string> Home::to_utf8(CsLocCache *cache, const std::string &text) {
    constexpr size_t GROWTH = 4;
    std::string source = text, result(GROWTH * text.size() + 1, '\0');
    CS_DATAFMT format = {};
    format.datatype = CS_CHAR_TYPE;
    format.maxlength = static_cast<CS_INT>(source.size());
    CS_INT length = 0;
    if (comn__convt_to_utf8(context(), 0, &format, cache, source.data(), result.data(),
                            static_cast<CS_INT>(result.size()), &length) != CS_SUCCEED)
        return std::nullopt;
    result.resize(static_cast<size_t>(length));
    return result;
}

} // namespace client
