// The sets of the process: a table is looked for by the first handle and shared by all later ones. A look-up of a set
// that is there takes no lock. A failure is not kept: a file that appears later is found.
#include "one_pass.h"
#include "sets.h"

#include "../intl/home_directory.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

namespace dlx::unic {

constinit std::atomic<const CharacterSet *> loaded_sets[TABLE_NUMBER_LIMIT + 1];

namespace {

constinit std::mutex loading;

constexpr std::size_t PATH_SIZE = 4096;

bool home_directory_of_tables(char (&path)[PATH_SIZE]) {
    HomeDirectory home;
    const char *directory = home.find();
    if (directory == nullptr)
        return false;
    const int length = std::snprintf(path, sizeof path, "%s/charsets/unicode", directory);
    return length > 0 && static_cast<std::size_t>(length) < sizeof path;
}

// A path comes here as text made from bytes of which only ASCII survived. One that lost characters names no directory
// any more, and as callers take their path from the home in force, so do we.
bool directory_of_tables(const UNICHAR *directory, char (&path)[PATH_SIZE]) {
    if (directory != nullptr) {
        int count = 0;
        bool lost = false;
        for (const UNICHAR *p = directory; *p != 0; ++p)
            lost |= *p == 0xFFFD;
        if (!lost)
            return uniutf8_unistrToUTF8(path, sizeof path, directory, &count) >= 0;
    }
    return home_directory_of_tables(path);
}

int load(int number, const UNICHAR *directory, const CharacterSet **set) {
    char path[PATH_SIZE];
    if (!directory_of_tables(directory, path))
        return UNI_NOSET;
    CharacterSet fresh = {};
    fresh.number = number;
    const int status = map_table(path, number, &fresh.table);
    if (status != UNI_OK)
        return status;
    auto *kept = static_cast<CharacterSet *>(std::malloc(sizeof(CharacterSet)));
    if (kept == nullptr) {
        unmap_table(fresh.table);
        return UNI_NOMEMORY;
    }
    new (kept) CharacterSet(fresh);
    choose_functions(kept);
    if (!prepare_passes(kept, Speed::BEST)) {
        std::free(kept);
        unmap_table(fresh.table);
        return UNI_NOMEMORY;
    }
    loaded_sets[number].store(kept, std::memory_order_release);
    *set = kept;
    return UNI_OK;
}

} // namespace

int find_set(int number, const UNICHAR *directory, const CharacterSet **set) {
    if (number > 0 && number <= TABLE_NUMBER_LIMIT) {
        *set = loaded_set(number);
        if (*set != nullptr)
            return UNI_OK;
        const std::lock_guard<std::mutex> guard(loading);
        *set = loaded_sets[number].load(std::memory_order_relaxed);
        return *set != nullptr ? UNI_OK : load(number, directory, set);
    }
    switch (number) {
    case ASCII:
        *set = &ASCII_SET;
        return UNI_OK;
    case UTF16:
        *set = &UTF16_SET;
        return UNI_OK;
    case UTF8:
        *set = &UTF8_SET;
        return UNI_OK;
    case COMPRESSION:
        *set = &COMPRESSION_SET;
        return UNI_OK;
    default:
        return UNI_NOSET;
    }
}

} // namespace dlx::unic
