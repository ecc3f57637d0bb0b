// The subcommands of dlxcomn, what they exit with, and how they talk to the person in front of them.
#ifndef DLX_CLIENT_COMMAND_COMMAND_H
#define DLX_CLIENT_COMMAND_COMMAND_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace client {

// What a process ends with.
enum ExitCode {
    DONE = 0,
    FAILED = 1, // a conversion or a check failed, a file is missing or wrong, or the output could not be written
    MISUSED = 2 // what was asked for cannot be done: a wrong name, a bad literal, no such conversion
};

using Arguments = std::vector<std::string>;

// Runs the command line behind the program's name.
int run_command(const Arguments &arguments);

int run_convert(const Arguments &arguments);
int run_types(const Arguments &arguments);
int run_matrix(const Arguments &arguments);
int run_tour(const Arguments &arguments);
int run_date(const Arguments &arguments);
int run_paths(const Arguments &arguments);
int run_locale(const Arguments &arguments);
int run_locales(const Arguments &arguments);
int run_charsets(const Arguments &arguments);
int run_recode(const Arguments &arguments);
int run_sort(const Arguments &arguments);
int run_check(const Arguments &arguments);
int run_message(const Arguments &arguments);

// A value, or the sentence that tells why there is none and what would do.
template <class T>
class Maybe {
public:
    Maybe(T value) : value_(std::move(value)) {}
    static Maybe failure(std::string sentence, ExitCode code = MISUSED) {
        Maybe result;
        result.sentence_ = std::move(sentence);
        result.code_ = code;
        return result;
    }
    explicit operator bool() const { return value_.has_value(); }
    const T &operator*() const { return *value_; }
    const T *operator->() const { return &*value_; }
    const std::string &sentence() const { return sentence_; }
    ExitCode code() const { return code_; }

private:
    Maybe() = default;
    std::optional<T> value_;
    std::string sentence_;
    ExitCode code_ = DONE;
};

// To standard output. False once the output has failed: there is no use in going on.
bool print(std::string_view text);
// The same, and at once: what a filter has to say does not wait for more.
bool print_now(std::string_view text);
// What the output's fate makes of `code`: a failure to write is told and becomes FAILED.
int finish_output(int code);

// To standard error, behind the program's name.
void complain(std::string_view sentence);
// The same for a command line that cannot be understood; answers MISUSED.
int misused(std::string_view sentence, std::string_view subcommand = {});
// Tells why there is no value: like misused() or like complain(). Answers what to exit with.
template <class T>
int refused(const Maybe<T> &nothing, std::string_view subcommand) {
    if (nothing.code() == MISUSED)
        return misused(nothing.sentence(), subcommand);
    complain(nothing.sentence());
    return nothing.code();
}

// ---- The command line of a subcommand ----

struct Option {
    std::string_view name; // without the dashes; each takes a value
    std::optional<std::string> value = {};
};

struct CommandLine {
    bool help = false;
    std::vector<std::string> operands;
};

// Sets the values of `options`. A negative number is an operand although it begins with a dash, and all behind
// "--" are.
Maybe<CommandLine> parse_command_line(const Arguments &arguments, std::vector<Option> &options);

} // namespace client

#endif
