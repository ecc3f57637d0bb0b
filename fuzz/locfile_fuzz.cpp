// A localization file of any content, read whole and in an order of calls that the input chooses, by the reader and by
// the naive one. Blank lines in front, also of the input's choice, move the content across the edge of a block.
#include "input.h"
#include "support/locfile_steps.h"
#include "support/memory_file.h"

#include <dlxintl/intl.h>

namespace {

using support::MemoryFile;
using support::NaiveLocfile;
using support::Step;

constexpr std::size_t BLOCK = 64 * 1024;

class OpenFile {
public:
    explicit OpenFile(const MemoryFile &file) { FUZZ_CHECK(intl_open(file.path(), &file_) == INTL_OK); }
    ~OpenFile() { FUZZ_CHECK(intl_close(&file_) == INTL_OK); }
    INTL_LOCFILE &operator*() { return file_; }

private:
    INTL_LOCFILE file_;
};

void check(const std::string &difference) {
    if (difference.empty())
        return;
    std::fprintf(stderr, "%s\n", difference.c_str());
    std::abort();
}

// Comments up to `bytes` bytes before the first block ends.
std::string comments(std::size_t bytes) {
    std::string content(BLOCK - bytes, ';');
    for (std::size_t i = 999; i < content.size(); i += 1000)
        content[i] = '\n';
    content.back() = '\n';
    return content;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    const CS_BYTE lead = input.byte();
    CS_BYTE order[8];
    for (CS_BYTE &calls : order)
        calls = input.byte();
    std::string content = input.rest();
    if (lead >= 240 && !content.empty()) // rarely: large files are slow
        content.insert(0, "[lead]\n" + comments(7 + 1 + content.size() * (lead - 240) / 15 % (BLOCK / 2)));

    const MemoryFile memory(content);
    {
        OpenFile file(memory);
        NaiveLocfile naive(content);
        check(support::difference_in_all(*file, naive));
    }
    OpenFile file(memory);
    NaiveLocfile naive(content);
    bool ended = false;
    for (int round = 0; round < 8; ++round)
        for (const CS_BYTE calls : order)
            for (int shift = 0; shift < 8; shift += 2) {
                const int choice = calls >> shift & 3;
                const Step step = choice == 0 ? Step::section : choice == 1 ? Step::entry : Step::value;
                check(support::difference(*file, naive, step, ended));
            }
    return 0;
}
