// dlxcomn recode: a filter from one character set to another.
#include "command.h"

#include "home.h"
#include "input.h"
#include "recoder.h"
#include "text.h"

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn recode FROM TO [FILE]

Writes the text of FILE, or of standard input where there is none or it is -, in another character
set. FROM and TO are names of sets as `dlxcomn charsets` lists them, or other names of theirs in
config/objectid.dat, such as latin1 or UTF-8. UTF-16 is in machine order, without a mark of it.

A character that TO does not have becomes "?", or "??" where it took two bytes or more in FROM and
TO has such characters. Bytes that are no character of FROM become U+FFFD, or what stands for that
in TO. Both are counted and told at the end. Of a text that ends inside a character all is written
that stands in front of it, and told where it begins: offsets are in bytes, from 0. A NUL is a
character like any other. Text that stays in its set is copied as it is.

The text is converted in pieces as it comes, but towards rcsu only at its end.

Exit status: 0 every character arrived; 1 not all did, or a file could not be read; 2 no such set.
)";

Maybe<RecodedSet> find_set(Home &home, const std::string &name) {
    const Maybe<CsCharDesc *> set = home.load_charset(name);
    if (!set)
        return Maybe<RecodedSet>::failure(set.sentence(), set.code());
    RecodedSet result;
    result.name = Home::names_of((*set)->oid).front();
    if (comn__get_unilib_cid((*set)->char_attrib->cs_id, &result.cid) != CS_SUCCEED)
        result.cid = UNICONV_NONE;
    return result;
}

std::string count_of(std::uint64_t count, const std::string &one, const std::string &more) {
    return std::to_string(count) + " " + (count == 1 ? one : more);
}

void tell_losses(const Losses &losses, const RecodedSet &from, const RecodedSet &to) {
    if (losses.missing != 0)
        complain(count_of(losses.missing, "character has", "characters have") + " no partner in " + to.name + " and " +
                 (losses.missing == 1 ? "was" : "were") + " replaced");
    if (losses.malformed != 0)
        complain(count_of(losses.malformed, "place is no character", "places are no characters") + " of " + from.name +
                 " and " + (losses.malformed == 1 ? "was replaced, at byte " : "were replaced, the first at byte ") +
                 std::to_string(losses.first_malformed));
    if (losses.cut_at)
        complain("the text ends inside the character that begins at byte " + std::to_string(*losses.cut_at));
}

} // namespace

int run_recode(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "recode");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (line->operands.size() < 2)
        return misused("recode wants the character set of the text, and the one to write it in", "recode");
    if (line->operands.size() > 3)
        return misused("recode takes one file, not " + quoted(line->operands[3]) + " too", "recode");
    const Maybe<std::shared_ptr<Home>> home = Home::open();
    if (!home)
        return refused(home, "recode");
    const Maybe<RecodedSet> from = find_set(**home, line->operands[0]);
    if (!from)
        return refused(from, "recode");
    const Maybe<RecodedSet> to = find_set(**home, line->operands[1]);
    if (!to)
        return refused(to, "recode");
    const Maybe<std::shared_ptr<Recoder>> recoder = Recoder::open(*from, *to);
    if (!recoder)
        return refused(recoder, "recode");
    Input input(line->operands.size() > 2 ? line->operands[2] : "-");

    std::string result;
    bool is_end = false;
    while (!is_end) {
        const std::optional<std::string_view> block = input.read();
        if (!block) {
            complain(input.trouble());
            return FAILED;
        }
        is_end = block->empty();
        result.clear();
        (*recoder)->recode(*block, is_end, &result);
        if (!print_now(result))
            return FAILED;
    }
    tell_losses((*recoder)->losses(), *from, *to);
    return (*recoder)->losses().any() ? FAILED : DONE;
}

} // namespace client
