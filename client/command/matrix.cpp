// dlxcomn matrix: the conversion matrix as a picture, a row of it, or one cell.
#include "command.h"

#include "conversion.h"
#include "owner.h"
#include "text.h"

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn matrix [FROM [TO]]

Without arguments draws the conversion matrix: a row for each source datatype, a column for each
destination, by their ids. With two datatypes names the function that converts the one to the
other. With one, lists what it converts to, with the functions.

A cell that is filled but cannot run holds a function of bigint: it tells that a conversion exists,
and the function refuses every source but bigint and long.

Exit status: 0; 2 when there is no such datatype or no such conversion.
)";

constexpr size_t LABEL_WIDTH = 18;

char mark(Cell cell) {
    switch (cell) {
    case Cell::filled:
        return 'o';
    case Cell::not_runnable:
        return 'x';
    default:
        return '.';
    }
}

std::string header(int divisor) {
    std::string line(LABEL_WIDTH, ' ');
    for (CS_INT to = 0; to < TYPE_COUNT; ++to)
        line += {' ', static_cast<char>('0' + to / divisor % 10)};
    return line + "\n";
}

int draw_matrix(CS_CONTEXT *context) {
    int filled = 0;
    int not_runnable = 0;
    print(left("   from", LABEL_WIDTH) + " to\n" + header(10) + header(1));
    for (CS_INT from = 0; from < TYPE_COUNT; ++from) {
        std::string line = right(std::to_string(from), 2) + " " + std::string(datatype(from).name);
        line = left(line, LABEL_WIDTH);
        for (CS_INT to = 0; to < TYPE_COUNT; ++to) {
            const Cell here = cell(context, from, to);
            filled += here == Cell::filled;
            not_runnable += here == Cell::not_runnable;
            line += {' ', mark(here)};
        }
        print(line + "\n");
    }
    const int empty = TYPE_COUNT * TYPE_COUNT - filled - not_runnable;
    print("\no filled: " + std::to_string(filled) + "   x filled but not runnable: " + std::to_string(not_runnable) +
          "   . empty: " + std::to_string(empty) + "\n");
    return DONE;
}

// The function of a cell, with what a reader must know before a call of it.
std::string described_function(CS_CONTEXT *context, const Datatype &from, const Datatype &to) {
    const std::string name = function_name(com_conv_func(context, from.id, to.id));
    const bool runs = cell(context, from.id, to.id) == Cell::filled;
    return runs ? name : name + "  (not runnable: it takes bigint and long alone)";
}

int list_row(CS_CONTEXT *context, const Datatype &from) {
    bool has_any = false;
    for (CS_INT to = 0; to < TYPE_COUNT; ++to) {
        if (cell(context, from.id, to) == Cell::empty)
            continue;
        print(left(datatype(to).name, 14) + "  " + described_function(context, from, datatype(to)) + "\n");
        has_any = true;
    }
    return has_any ? DONE : misused(std::string(from.name) + " converts to no datatype", "matrix");
}

int name_cell(CS_CONTEXT *context, const Datatype &from, const Datatype &to) {
    if (cell(context, from.id, to.id) == Cell::empty)
        return misused(find_conversion(context, from, to).sentence(), "matrix");
    print(described_function(context, from, to) + "\n");
    return DONE;
}

} // namespace

int run_matrix(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "matrix");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (line->operands.size() > 2)
        return misused("matrix takes two datatypes at most", "matrix");
    std::vector<const Datatype *> types;
    for (const std::string &operand : line->operands) {
        const Maybe<const Datatype *> type = find_datatype(operand);
        if (!type)
            return misused(type.sentence(), "matrix");
        types.push_back(*type);
    }

    Owner owner;
    CS_CONTEXT *context = owner.context();
    if (context == nullptr) {
        complain("no memory for a context");
        return FAILED;
    }
    if (types.empty())
        return draw_matrix(context);
    return types.size() == 1 ? list_row(context, *types[0]) : name_cell(context, *types[0], *types[1]);
}

} // namespace client
