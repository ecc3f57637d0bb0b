// dlxcomn paths: where the files of the stack lie for this environment.
#include "command.h"

#include "home.h"
#include "text.h"

#include <dlxcomn/dlxcomn.h>
#include <dlxintl/intl.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn paths [--language NAME] [--charset NAME] [--sortorder NAME]

Prints where each kind of file lies for the environment of this process, and whether it is there and
can be read: the variables that decide it first, then a file or directory a line. Language,
character set and sort order are us_english, iso_1 and binary unless told. Where DALVEX is not set
the home that lies beside the command is taken, if there is one.

Exit status: 0, whatever is missing; 1 when the home directory is not known or its path is too long.
)";

constexpr CS_INT ROOM = 1025; // what the library builds the paths of its files in

enum class Kind { file, directory };

struct Place {
    const char *what;
    Kind kind;
    std::function<CS_RETCODE(CS_CHAR *path)> build;
};

const char *state(const char *path, Kind kind) {
    struct stat found;
    if (stat(path, &found) != 0)
        return errno == ENOENT || errno == ENOTDIR ? "missing" : "not readable";
    if (kind == Kind::file && S_ISDIR(found.st_mode))
        return "a directory";
    if (kind == Kind::directory && !S_ISDIR(found.st_mode))
        return "no directory";
    // A directory is read by those who may also pass through it.
    return access(path, kind == Kind::file ? R_OK : R_OK | X_OK) == 0 ? "readable" : "not readable";
}

void print_variables() {
    for (const char *name : {"DALVEX", "DALVEX_NCS", "DLXNCS_IFILE", "DLXNCS_TCL_CFG", "DALVEX_TCL_CFG"}) {
        std::string value(static_cast<size_t>(intlgetenv(nullptr, 0, name)), '\0');
        intlgetenv(value.data(), static_cast<int>(value.size()) + 1, name);
        const bool is_adopted = !adopted_home().empty() && value == adopted_home();
        print(left(name, 16) +
              (value.empty() ? "not set" : is_adopted ? "not set: the home beside the command" : quoted(value)) + "\n");
    }
}

// The library's own builders tell where everything is.
std::vector<Place> places(std::string &language, std::string &charset, std::string &sortorder) {
    static CS_CHAR ncs_cfg[] = "ncs.cfg", objectid[] = "objectid.dat", locales[] = "locales.dat";
    static CS_CHAR common[] = "common.loc", messages[] = "comnlib.loc", attributes[] = "charset", loc[] = "loc";
    static CS_CHAR srt[] = "srt", unicode[] = "unicode", libraries[] = "devlib3p64";
    const auto config = [](CS_CHAR *name) {
        return [name](CS_CHAR *path) { return com_path_cfgfile(nullptr, name, path, ROOM, CS_FALSE); };
    };
    const auto message = [&language](CS_CHAR *name) {
        return [&language, name](CS_CHAR *path) {
            return com_path_msgfile(nullptr, language.data(), CS_NULLTERM, name, static_cast<CS_INT>(std::strlen(name)),
                                    path, ROOM);
        };
    };
    const auto of_charset = [](CS_CHAR *set, CS_CHAR *name, CS_CHAR *extension) {
        return [=](CS_CHAR *path) { return com_path_charfile(nullptr, set, name, extension, path, ROOM); };
    };
    return {
        {"home", Kind::directory,
         [](CS_CHAR *path) { return com_path_anyfile(path, ROOM, nullptr, nullptr, CS_FALSE); }},
        {"interfaces", Kind::file, [](CS_CHAR *path) { return com_path_ifile(nullptr, path, ROOM); }},
        {"configuration", Kind::file, config(ncs_cfg)},
        {"transport", Kind::file,
         [](CS_CHAR *path) {
             const CS_INT length = com_get_tclcfg(path, ROOM); // the whole length, also of a path that was cut
             return length > 0 && length < ROOM ? CS_SUCCEED : CS_FAIL;
         }},
        {"identifiers", Kind::file, config(objectid)},
        {"locale names", Kind::file,
         [](CS_CHAR *path) {
             CS_CONTEXT context = {};
             return com__path_locfile(&context, nullptr, nullptr, locales, path, ROOM);
         }},
        {"date data", Kind::file, message(common)},
        {"messages", Kind::file, message(messages)},
        {"character set", Kind::file, of_charset(charset.data(), attributes, loc)},
        {"sort order", Kind::file, of_charset(charset.data(), sortorder.data(), srt)},
        {"Unicode tables", Kind::directory, of_charset(unicode, nullptr, nullptr)},
        {"libraries", Kind::directory,
         [](CS_CHAR *path) { return com_path_anyfile(path, ROOM, libraries, nullptr, CS_TRUE); }},
    };
}

} // namespace

int run_paths(const Arguments &arguments) {
    std::vector<Option> options = {{"language"}, {"charset"}, {"sortorder"}};
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "paths");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (!line->operands.empty())
        return misused("paths takes no argument, not " + quoted(line->operands.front()), "paths");
    std::string language = options[0].value.value_or("us_english");
    std::string charset = options[1].value.value_or("iso_1");
    std::string sortorder = options[2].value.value_or("binary");

    print_variables();
    const int home = intl_home(nullptr, 0);
    if (home < 0) {
        complain(intl_errstr(home));
        return FAILED;
    }
    if (home >= ROOM - 1) { // what the library takes for a mistake of its caller
        complain("the path of the home directory has " + std::to_string(home) + " bytes; the library has room for " +
                 std::to_string(ROOM - 2));
        return FAILED;
    }
    print("\n");
    for (const Place &place : places(language, charset, sortorder)) {
        CS_CHAR path[ROOM];
        const bool fits = place.build(path) == CS_SUCCEED;
        print(left(place.what, 16) + left(fits ? state(path, place.kind) : "too long", 14) +
              (fits ? std::string(path) : "") + "\n");
    }
    return DONE;
}

} // namespace client
