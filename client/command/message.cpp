// dlxcomn message: a message number taken apart, and what an application receives for it.
#include "command.h"

#include "home.h"
#include "message_text.h"
#include "text.h"

#include <charconv>

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn message NUMBER [--locale NAME] [PARAMETER [PARAMETER]]

Takes a message number (decimal, or hexadecimal with 0x in front) apart, raises the message in a
locale, and prints what the error callback of the application receives, in UTF-8. The locale is that
of the environment (LC_ALL, LANG) where the home has it, and else default, unless told. The name of
the function that raises it is dlxcomn here. Parameters fill the places %1! and %2! of the text;
without any they stay.

Exit status: 0 done; 1 the home or a file is missing or wrong; 2 no such locale, or no number.
)";

std::string byte_line(CS_UINT value, const std::string &text) {
    return right(std::to_string(value), 3) + (text.empty() ? "" : "  " + text);
}

} // namespace

std::optional<CS_MSGNUM> parse_message_number(std::string_view text) {
    const bool is_hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (is_hexadecimal)
        text.remove_prefix(2);
    std::uint32_t number = 0;
    const auto [stop, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, is_hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != text.data() + text.size())
        return std::nullopt;
    return static_cast<CS_MSGNUM>(number);
}

int run_message(const Arguments &arguments) {
    std::vector<Option> options = {{"locale"}};
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "message");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (line->operands.empty())
        return misused("message wants a NUMBER", "message");
    const std::optional<CS_MSGNUM> number = parse_message_number(line->operands.front());
    if (!number)
        return misused(quoted(line->operands.front()) + " is no message number; it takes one of 32 bits, such as " +
                           "0x01040602",
                       "message");
    const std::vector<std::string> parameters(line->operands.begin() + 1, line->operands.end());
    if (parameters.size() > 2)
        return misused("a message has two parameters at most", "message");
    const Maybe<std::shared_ptr<Home>> home = Home::open();
    if (!home)
        return refused(home, "message");
    std::string name = options[0].value.value_or(environment_locale((*home)->context()));
    Maybe<CsLocCache *> cache = (*home)->load_locale(name);
    if (!cache && cache.code() == MISUSED && !options[0].value) {
        name = "default";
        cache = (*home)->load_locale(name);
    }
    if (!cache)
        return refused(cache, "message");
    if (const Maybe<CsLocCache *> used = (*home)->use(*cache); !used)
        return refused(used, "message");
    const Maybe<Raised> raised = raise_message(**home, *cache, *number, "dlxcomn", parameters);
    if (!raised)
        return refused(raised, "message");

    const auto bytes = static_cast<CS_UINT>(*number);
    const CS_BYTE shown[] = {static_cast<CS_BYTE>(bytes >> 24), static_cast<CS_BYTE>(bytes >> 16),
                             static_cast<CS_BYTE>(bytes >> 8), static_cast<CS_BYTE>(bytes)};
    print("message    " + std::to_string(bytes) + " (0x" + hexadecimal(shown, sizeof shown) + ") in the locale " +
          name + "\n");
    print("layer      " + byte_line(shown[0], raised->layer) + "\n");
    print("origin     " + byte_line(shown[1], raised->origin) + "\n");
    print("severity   " + byte_line(shown[2], "") + "\n");
    print("number     " + byte_line(shown[3], "") + "\n");
    print("SQLSTATE   " + raised->sqlstate + "\n");
    print("text       " + raised->text + "\n");
    return DONE;
}

} // namespace client
