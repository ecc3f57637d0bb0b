// dlxcomn check: whether a context can start in the home, file by file.
#include "command.h"

#include "home.h"
#include "text.h"

#include <dlxcomn/checkfiles.h>
#include <dlxintl/intl.h>

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn check

The start-up check of the home: prints each file that a context needs to start in the locale of the
environment (LC_ALL, LANG, else default), and whether it can be read; then starts a context as a
client library does. Where anything is wrong the library's own diagnosis follows, as it prints it
when a start fails, on standard error and in a file dlxinit.err of the current directory.

Exit status: 0 all is well; 1 something is missing or wrong.
)";

constexpr CS_INT ROOM = 1025; // what the library builds the paths of its files in

class Check {
public:
    int run() {
        const Maybe<std::string> directory = home_directory();
        if (!directory) {
            complain(directory.sentence());
            if (intl_home(nullptr, 0) < 0)
                diagnose(); // a path that is too long it would take for a mistake of its caller
            return FAILED;
        }
        print("home " + *directory + "\n\n");
        const Maybe<std::shared_ptr<Home>> home = Home::open();
        if (!home) {
            note("identifiers", false, home.sentence());
            return finish();
        }
        note("identifiers", true, "config/objectid.dat");
        const std::string name = environment_locale((*home)->context());
        const Maybe<std::vector<LocaleLine>> lines = (*home)->locale_lines();
        note("locale names", static_cast<bool>(lines), lines ? "locales/locales.dat" : lines.sentence());
        if (lines)
            for (const LocaleLine &line : *lines)
                if (line.name == name) {
                    check_files(line);
                    break;
                }
        start(**home, name);
        return finish();
    }

private:
    void note(const std::string &what, bool is_fine, const std::string &tells) {
        print(left(what, 16) + left(is_fine ? "ok" : "wrong", 7) + tells + "\n");
        is_fine_ = is_fine_ && is_fine;
    }

    void note_file(const std::string &what, CS_RETCODE status, const CS_CHAR *path) {
        note(what, status == CS_SUCCEED, std::string(path) + (status == CS_SUCCEED ? "" : " cannot be read"));
    }

    void check_files(LocaleLine line) {
        CS_CHAR path[ROOM];
        const auto language_file = [&](const std::string &what, std::string file) {
            note_file(what,
                      com__verify_msgfile(nullptr, line.language.data(), static_cast<CS_INT>(line.language.size()),
                                          file.data(), static_cast<CS_INT>(file.size()), path, ROOM),
                      path);
        };
        const auto charset_file = [&](const std::string &what, std::string file, const char *extension) {
            note_file(what,
                      com__verify_charfile(nullptr, line.charset.data(), file.data(), const_cast<CS_CHAR *>(extension),
                                           path, ROOM),
                      path);
        };
        if (line.datetime.empty())
            language_file("date data", "common.loc");
        language_file("client messages", "cslib.loc");
        language_file("messages", "comnlib.loc");
        charset_file("sort order", line.sortorder, "srt");
        charset_file("character set", "charset.loc", nullptr);
        charset_file("conversions", line.charset, "cfg");
    }

    void start(Home &home, const std::string &name) {
        const Maybe<CsLocCache *> cache = home.load_locale(name);
        if (!cache) {
            note("start", false, cache.sentence());
            return;
        }
        const Maybe<CsLocCache *> used = home.use(*cache);
        note("start", static_cast<bool>(used), used ? "a context starts in the locale " + name : used.sentence());
    }

    int finish() {
        if (is_fine_)
            return DONE;
        diagnose();
        return FAILED;
    }

    static void diagnose() {
        finish_output(DONE); // what the library prints comes behind it
        Owner owner;
        com_intl_verify_ctxloc(owner.context());
    }

    bool is_fine_ = true;
};

} // namespace

int run_check(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "check");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (!line->operands.empty())
        return misused("check takes no argument, not " + quoted(line->operands.front()), "check");
    return Check().run();
}

} // namespace client
