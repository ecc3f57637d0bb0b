// dlxcomn locale and dlxcomn locales: what a locale is made of, and which ones there are.
#include "command.h"

#include "home.h"
#include "recoder.h"
#include "text.h"

#include <algorithm>

namespace client {
namespace {

constexpr const char *LOCALE_HELP = R"(usage: dlxcomn locale [NAME]

Loads a locale from the home and prints what it is made of. Without a name it is the locale of the
environment: LC_ALL, LANG, else default. Names of months and days are those that a program in this
locale sees, converted from the locale's character set to UTF-8.

Exit status: 0 done; 1 the home or a file of the locale is missing or wrong; 2 no such locale.
)";

constexpr const char *LOCALES_HELP = R"(usage: dlxcomn locales

Lists the locales of the home's locales/locales.dat: name, language, character set, sort order, and
formats of dates, numbers and money where a locale names any.

Exit status: 0 done; 1 the home or the file is missing or wrong.
)";

constexpr size_t WIDTH = 15;
constexpr size_t LINE_WIDTH = 96;
constexpr int MONTHS = 12;
constexpr int WEEK = 7;

void print_item(std::string_view what, const std::string &text) { print(left(what, WIDTH) + text + "\n"); }

// Names with commas between, in as many lines as they need.
void print_names(std::string_view what, const std::vector<std::string> &names) {
    std::string line = left(what, WIDTH);
    size_t width = WIDTH;
    for (size_t i = 0; i < names.size(); ++i) {
        const size_t needed = columns(names[i]) + 2;
        if (width + needed > LINE_WIDTH && width > WIDTH) {
            line.pop_back();
            line += "\n" + std::string(WIDTH, ' ');
            width = WIDTH;
        }
        line += names[i] + (i + 1 < names.size() ? ", " : "");
        width += needed;
    }
    print(line + "\n");
}

std::string text_of(const CS_CHAR *text, CS_INT length) { return {text, static_cast<size_t>(length)}; }

// A name and the others that the identifier has.
std::string with_aliases(const std::string &name, const CsOID *oid) {
    std::vector<std::string> others = Home::names_of(oid);
    others.erase(std::remove(others.begin(), others.end(), name), others.end());
    return others.empty() ? name : name + " (also " + enumerate({others.begin(), others.end()}, "and") + ")";
}

std::string describe_set(const CHAR_ATTRIB &set) {
    UNICONV_CID cid = UNICONV_NONE;
    comn__get_unilib_cid(set.cs_id, &cid);
    const std::string width = set.cs_width_map == nullptr
                                  ? "one byte a character"
                                  : "up to " + std::to_string(set.cs_maxcharlen) + " bytes a character";
    return "id " + std::to_string(set.cs_id) + ", " + width + ", " +
           (cid == UNICONV_NONE ? "unknown to the Unicode library" : "Unicode library number " + std::to_string(cid));
}

std::string describe_order(const CsSortDesc &order) {
    const std::string description = order.char_sort_descript->descript;
    return description.empty() ? "" : ": " + description;
}

// What the library answers for a name, as UTF-8.
class Names {
public:
    Names(Home &home, CsLocCache *cache)
        : home_(home), cache_(cache), locale_{cache, cache, cache, cache, cache, cache, home.context(), nullptr} {}

    std::string month(CS_INT type, CS_INT number) { return shown(comn_intl_month, type, number); }
    std::string day(CS_INT number) { return shown(comn_intl_day, CS_LOC_DAY, number); }

private:
    template <class Function>
    std::string shown(Function function, CS_INT type, CS_INT number) {
        CS_CHAR name[256];
        CS_INT length = 0;
        const CS_RETCODE status =
            function(home_.context(), &locale_, type, number, name, static_cast<CS_INT>(sizeof name), &length);
        const std::optional<std::string> text =
            status == CS_SUCCEED ? home_.to_utf8(cache_, text_of(name, length)) : std::nullopt;
        return text.value_or("(not in this character set)");
    }

    Home &home_;
    CsLocCache *cache_;
    CS_LOCALE locale_;
};

void print_dates(Home &home, CsLocCache *cache) {
    const CS_DATEINFO *const dates = cache->locdateinfo;
    if (dates == nullptr) {
        print_item("dates", "the format " + std::string(cache->datename) + ", which has no data");
        return;
    }
    print_item("dates", std::string(dates->dateorder) + ", printed in style " + std::to_string(dates->convertfmt) +
                            ", " + (dates->is12hour != 0 ? "12" : "24") + "-hour clock");
    Names names(home, cache);
    std::vector<std::string> months, short_months, days;
    for (int i = 0; i < MONTHS; ++i) {
        months.push_back(names.month(CS_LOC_MONTH, i));
        short_months.push_back(names.month(CS_LOC_SHORTMONTH, i));
    }
    for (int i = 0; i < WEEK; ++i)
        days.push_back(names.day(i)); // from the first day of the week on
    print_names("months", months);
    print_names("short months", short_months);
    print_names("days", days);
    print_item("first day", days.front() + " (day " + std::to_string(dates->firstday) + ", where 1 is Sunday)");
}

std::string format_of(const CS_CHAR *name) { return name != nullptr ? name : "none of its own"; }

int print_locale(Home &home, CsLocCache *cache) {
    print_item("locale", text_of(cache->locname, cache->locnamelen));
    print_item("language", with_aliases(text_of(cache->langname, cache->langnamelen), cache->locmessage->lang_oid));
    print_item("character set", with_aliases(text_of(cache->charname, cache->charnamelen), cache->locchardesc->oid));
    print_item("", describe_set(*cache->locchardesc->char_attrib));
    print_item("sort order", text_of(cache->sortname, cache->sortnamelen) + describe_order(*cache->locsortorder));
    RecodedSet set = {text_of(cache->charname, cache->charnamelen), UNICONV_NONE};
    comn__get_unilib_cid(cache->locchardesc->char_attrib->cs_id, &set.cid);
    const std::string trouble = table_trouble(set);
    if (!trouble.empty()) { // no name can be shown
        complain(trouble);
        return FAILED;
    }
    print_dates(home, cache);
    print_item("number format", format_of(cache->numname));
    print_item("money format", format_of(cache->monname));
    return DONE;
}

} // namespace

int run_locale(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "locale");
    if (line->help) {
        print(LOCALE_HELP);
        return DONE;
    }
    if (line->operands.size() > 1)
        return misused("locale takes one name, not " + quoted(line->operands[1]) + " too", "locale");
    const Maybe<std::shared_ptr<Home>> home = Home::open();
    if (!home)
        return refused(home, "locale");
    const std::string name = line->operands.empty() ? environment_locale((*home)->context()) : line->operands.front();
    const Maybe<CsLocCache *> cache = (*home)->load_locale(name);
    if (!cache)
        return refused(cache, "locale");
    return print_locale(**home, *cache);
}

int run_locales(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "locales");
    if (line->help) {
        print(LOCALES_HELP);
        return DONE;
    }
    if (!line->operands.empty())
        return misused("locales takes no argument, not " + quoted(line->operands.front()), "locales");
    const Maybe<std::shared_ptr<Home>> home = Home::open();
    if (!home)
        return refused(home, "locales");
    const Maybe<std::vector<LocaleLine>> lines = (*home)->locale_lines();
    if (!lines)
        return refused(lines, "locales");
    print("locale           language     charset   sort order\n");
    for (const LocaleLine &one : *lines) {
        std::string text = left(one.name, 15) + "  " + left(one.language, 11) + "  " + left(one.charset, 8) + "  " +
                           left(one.sortorder, 10);
        const std::pair<const char *, const std::string *> formats[] = {
            {"dates", &one.datetime}, {"numbers", &one.numeric}, {"money", &one.money}};
        for (const auto &[what, format] : formats)
            if (!format->empty())
                text += std::string("  ") + what + " " + *format;
        text.erase(text.find_last_not_of(' ') + 1);
        print(text + "\n");
    }
    return DONE;
}

} // namespace client
