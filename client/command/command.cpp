// The dispatch of subcommands, the command line, and the output with its failures.
#include "command.h"

#include "home.h"
#include "names.h"
#include "text.h"

#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#ifndef DLXCOMN_VERSION
#error "the build tells the version"
#endif

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn COMMAND [ARGUMENT...]

Shows what libdlxcomn_r64 does, by calling it as an application does.

Values of the forty datatypes, each through the conversion matrix:
  convert   convert values: dlxcomn convert --to tinyint 300
  types     list the datatypes with their width and layout
  matrix    draw the conversion matrix, or name the function of one pair
  date      read texts of dates and print their value, parts and styles

Text in the languages and character sets of the data home:
  locale    what a locale is made of: dlxcomn locale de_DE.UTF-8
  locales   list the locales
  charsets  list the character sets
  recode    a filter from one character set to another: dlxcomn recode latin1 utf8
  sort      sort lines: dlxcomn sort --charset iso_1 --order dict
  message   what a message number says: dlxcomn message 0x01040602

  tour      a walk through all of it, a call a line
  paths     print where files lie for this environment, and whether they can be read
  check     check the files that a context needs to start

  --help     this text; dlxcomn COMMAND --help tells about one command
  --version  the version

The home is the directory that DALVEX names; without it, the one that lies beside the command.

Exit status: 0 done; 1 a conversion or a check failed, a file is missing or wrong, or the output
could not be written; 2 what was asked for cannot be done.
)";

struct Subcommand {
    std::string_view name;
    int (*run)(const Arguments &arguments);
};

constexpr Subcommand SUBCOMMANDS[] = {
    {"convert", run_convert},
    {"types", run_types},
    {"matrix", run_matrix},
    {"tour", run_tour},
    {"date", run_date},
    {"locale", run_locale},
    {"locales", run_locales},
    {"charsets", run_charsets},
    {"recode", run_recode},
    {"sort", run_sort},
    {"message", run_message},
    {"paths", run_paths},
    {"check", run_check},
};

const Subcommand *find_subcommand(std::string_view name) {
    for (const Subcommand &subcommand : SUBCOMMANDS)
        if (subcommand.name == name)
            return &subcommand;
    return nullptr;
}

int unknown_subcommand(std::string_view name) {
    std::vector<std::string_view> names;
    for (const Subcommand &subcommand : SUBCOMMANDS)
        names.push_back(subcommand.name);
    const std::vector<std::string_view> near = nearest(name, names);
    const std::string advice =
        near.empty() ? "there are " + enumerate(names, "and") : "did you mean " + enumerate(near, "or") + "?";
    return misused("no command " + quoted(name) + "; " + advice);
}

int dispatch(const Arguments &arguments) {
    if (arguments.empty()) {
        std::fputs(HELP, stderr);
        return MISUSED;
    }
    const std::string &first = arguments.front();
    const Arguments rest(arguments.begin() + 1, arguments.end());
    if (first == "--help" || first == "-h" || (first == "help" && rest.empty())) {
        print(HELP);
        return DONE;
    }
    if (first == "--version") {
        print("dlxcomn " DLXCOMN_VERSION "\n");
        return DONE;
    }
    const bool wants_help = first == "help";
    const std::string &name = wants_help ? rest.front() : first;
    const Subcommand *subcommand = find_subcommand(name);
    if (subcommand == nullptr)
        return unknown_subcommand(name);
    return subcommand->run(wants_help ? Arguments{"--help"} : rest);
}

int output_error = 0; // errno of the first failure to write

// A dash and a letter is an option, but for the two that begin numbers: -inf and -nan.
bool looks_like_option(const std::string &argument) {
    if (argument.size() < 2 || argument[0] != '-')
        return false;
    if (argument[1] == '-')
        return true;
    const std::string lower = lowercase(argument);
    return std::isalpha(static_cast<unsigned char>(argument[1])) != 0 && !lower.starts_with("-inf") &&
           !lower.starts_with("-nan");
}

std::string no_such_option(const std::string &spelled, const std::vector<Option> &options) {
    if (options.empty())
        return "no option " + spelled + " here";
    std::vector<std::string> names;
    for (const Option &option : options)
        names.push_back("--" + std::string(option.name));
    return "no option " + spelled + "; there are " + enumerate({names.begin(), names.end()}, "and");
}

} // namespace

int run_command(const Arguments &arguments) {
    adopt_home();
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away is told like any other failure to write
    return finish_output(dispatch(arguments));
}

bool print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() && output_error == 0)
        output_error = errno;
    return output_error == 0;
}

bool print_now(std::string_view text) {
    print(text);
    if (std::fflush(stdout) != 0 && output_error == 0)
        output_error = errno;
    return output_error == 0;
}

int finish_output(int code) {
    if (print_now(""))
        return code;
    complain(std::string("cannot write to standard output: ") + std::strerror(output_error));
    return FAILED;
}

void complain(std::string_view sentence) {
    std::fflush(stdout); // on a terminal a complaint stands behind the lines that came before it
    const std::string line = "dlxcomn: " + std::string(sentence) + "\n";
    std::fputs(line.c_str(), stderr);
}

int misused(std::string_view sentence, std::string_view subcommand) {
    complain(sentence);
    const std::string help = subcommand.empty() ? "dlxcomn" : "dlxcomn " + std::string(subcommand);
    std::fprintf(stderr, "`%s --help` tells more\n", help.c_str());
    return MISUSED;
}

Maybe<CommandLine> parse_command_line(const Arguments &arguments, std::vector<Option> &options) {
    CommandLine line;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string &argument = arguments[i];
        if (argument == "--") {
            line.operands.insert(line.operands.end(), arguments.begin() + static_cast<ptrdiff_t>(i) + 1,
                                 arguments.end());
            break;
        }
        if (argument == "--help" || argument == "-h") {
            line.help = true;
            continue;
        }
        if (!looks_like_option(argument)) {
            line.operands.push_back(argument);
            continue;
        }
        const size_t equals = argument.find('=');
        const std::string spelled = argument.substr(0, equals);
        Option *found = nullptr;
        for (Option &option : options)
            if (spelled == "--" + std::string(option.name))
                found = &option;
        if (found == nullptr)
            return Maybe<CommandLine>::failure(no_such_option(spelled, options));
        if (equals != std::string::npos)
            found->value = argument.substr(equals + 1);
        else if (i + 1 < arguments.size())
            found->value = arguments[++i];
        else
            return Maybe<CommandLine>::failure(spelled + " wants a value behind it");
    }
    return line;
}

} // namespace client
