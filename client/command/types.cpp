// dlxcomn types: the datatypes, a line each.
#include "command.h"

#include "names.h"
#include "text.h"

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn types

Lists the forty datatypes: id, name, the word by which the conversion functions call it (they are
comn_<source word>to<destination word>), width in bytes, with `given` where that is the caller's to
know, and layout. All integers and floats stand in machine byte order.
)";

} // namespace

int run_types(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "types");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (!line->operands.empty())
        return misused("types takes no argument, not " + quoted(line->operands.front()), "types");

    print("id  name            word         width  layout\n");
    for (CS_INT id = 0; id < TYPE_COUNT; ++id) {
        const Datatype &type = datatype(id);
        const CS_INT width = comn_typelen(id, CS_UNUSED);
        print(right(std::to_string(id), 2) + "  " + left(type.name, 14) + "  " + left(type.word, 11) + "  " +
              right(width == CS_UNUSED ? "given" : std::to_string(width), 5) + "  " + std::string(type.layout) + "\n");
    }
    return DONE;
}

} // namespace client
