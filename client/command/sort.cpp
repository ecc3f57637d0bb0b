// dlxcomn sort: lines in a sort order of a character set.
#include "command.h"

#include "home.h"
#include "input.h"
#include "sorting.h"
#include "text.h"

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn sort --charset SET --order ORDER [FILE]

Writes the lines of FILE, or of standard input where there is none or it is -, in a sort order of
their character set: the file charsets/SET/ORDER.srt of the home. Such orders are

  binary    by the value of bytes
  dict      as in a dictionary: case and accents only decide between words of the same letters
  nocase    as dict, but upper and lower case are the same
  noaccent  as nocase, but letters with and without accents are the same too

Blanks at the end of a line do not count, but with binary. Lines that the order calls equal keep the
order that they come in. A line feed is written behind every line, also behind a last one without.

Exit status: 0 done; 1 a file could not be read; 2 no such set or order.
)";

} // namespace

int run_sort(const Arguments &arguments) {
    std::vector<Option> options = {{"charset"}, {"order"}};
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "sort");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    for (const Option &option : options)
        if (!option.value)
            return misused("sort wants --" + std::string(option.name), "sort");
    if (line->operands.size() > 1)
        return misused("sort takes one file, not " + quoted(line->operands[1]) + " too", "sort");
    const Maybe<std::shared_ptr<Home>> home = Home::open();
    if (!home)
        return refused(home, "sort");
    const Maybe<CsCharDesc *> set = (*home)->load_charset(*options[0].value);
    if (!set)
        return refused(set, "sort");
    const Maybe<CsSortDesc *> order = (*home)->load_order(*set, *options[1].value);
    if (!order)
        return refused(order, "sort");
    Input input(line->operands.empty() ? "-" : line->operands[0]);
    const std::optional<std::string> text = input.read_all();
    if (!text) {
        complain(input.trouble());
        return FAILED;
    }
    for (const std::string_view one : sorted(lines_of(*text), **order))
        if (!print(one) || !print("\n"))
            return FAILED;
    return DONE;
}

} // namespace client
