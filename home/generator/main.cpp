// home_generator DIRECTORY: writes the files of every character set that ships below DIRECTORY, as home/charsets has
// them.
#include "files.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

void write(const std::filesystem::path &path, const std::string &text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

void write_set(const std::filesystem::path &directory, const home::Set &set) {
    std::filesystem::create_directories(directory);
    const std::unique_ptr<home::Decoder> decoder = home::decoder_of(set);
    write(directory / "charset.loc", home::charset_file(set, *decoder));
    write(directory / (std::string(set.name) + ".cfg"), home::config_file(set));
    write(directory / "binary.srt", home::binary_order_file(set));
    if (!home::has_sort_orders(set))
        return;
    for (const home::SortOrder &order : home::SORT_ORDERS)
        write(directory / (std::string(order.name) + ".srt"), home::sort_order_file(set, *decoder, order));
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: home_generator DIRECTORY\n");
        return 2;
    }
    try {
        for (const home::Set &set : home::sets())
            write_set(std::filesystem::path(argv[1]) / set.name, set);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "home_generator: %s\n", error.what());
        return 1;
    }
    return 0;
}
