// dlxcomn charsets: the character sets of the home.
#include "command.h"

#include "home.h"
#include "text.h"

#include <dlxcomn/charconv.h>
#include <dlxunic/unic.h>

#include <algorithm>
#include <filesystem>

namespace client {
namespace {

namespace fs = std::filesystem;

constexpr const char *HELP = R"(usage: dlxcomn charsets

Lists the character sets of the home, the directories below charsets with a file charset.loc: name,
number of the set, its number in the Unicode library, the most bytes of a character, and the table
by which the Unicode library converts it, which a few sets do without.

Exit status: 0 done; 1 the home, or a set or its table, is missing or wrong.
)";

struct Row {
    int id;
    std::string text;
};

// How the Unicode library gets at a set. False for a table that is not there or not right.
bool find_table(UNICONV_CID cid, std::string *table) {
    if (cid == UNICONV_NONE) {
        *table = "none: converts to nothing";
        return true;
    }
    CVTH handle = nullptr;
    const int status = uniconv_HandleGet(cid, &handle);
    uniconv_HandleFree(handle);
    const std::string file = "unicode/" + std::to_string(cid) + ".uct";
    *table = status == UNI_OK         ? cid > 0 ? file : "built in"
             : status == UNI_BADTABLE ? file + " is damaged"
                                      : file + " cannot be read";
    return status == UNI_OK;
}

std::vector<std::string> sets_of_home() {
    std::vector<std::string> sets;
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(charset_directory(), error))
        if (fs::exists(entry.path() / "charset.loc", error))
            sets.push_back(entry.path().filename().string());
    std::sort(sets.begin(), sets.end());
    return sets;
}

} // namespace

int run_charsets(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "charsets");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (!line->operands.empty())
        return misused("charsets takes no argument, not " + client::quoted(line->operands.front()), "charsets");
    const Maybe<std::shared_ptr<Home>> home = Home::open();
    if (!home)
        return refused(home, "charsets");

    int code = DONE;
    std::vector<Row> rows;
    for (const std::string &name : sets_of_home()) {
        const Maybe<CsCharDesc *> set = (*home)->load_charset(name);
        if (!set) {
            complain(set.code() == MISUSED ? "the set " + client::quoted(name) + " has no identifier in objectid.dat"
                                           : set.sentence());
            code = FAILED;
            continue;
        }
        const CHAR_ATTRIB &attributes = *(*set)->char_attrib;
        UNICONV_CID cid = UNICONV_NONE;
        comn__get_unilib_cid(attributes.cs_id, &cid);
        std::string table;
        if (!find_table(cid, &table))
            code = FAILED;
        const int longest = attributes.cs_width_map == nullptr ? 1 : attributes.cs_maxcharlen;
        rows.push_back({attributes.cs_id, left(name, 10) + "  " + right(std::to_string(attributes.cs_id), 3) + "  " +
                                              right(cid == UNICONV_NONE ? "-" : std::to_string(cid), 7) + "  " +
                                              right(std::to_string(longest), 5) + "  " + table});
    }
    std::stable_sort(rows.begin(), rows.end(), [](const Row &one, const Row &other) { return one.id < other.id; });
    print("charset      id  Unicode  bytes  table\n");
    for (const Row &row : rows)
        print(row.text + "\n");
    return code;
}

} // namespace client
