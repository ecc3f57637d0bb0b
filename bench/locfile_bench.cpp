// The reader of localization files against readers of INI files: a message file of 1 MB from the first section to the
// last value. The file lies in memory; each contender opens it by its path. One value of a row is one entry.
#include "contest.h"
#include "data.h"

#include <dlxintl/intl.h>

#include <glib.h>
#include <ini.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr std::size_t FILE_BYTES = 1'000'000;

// What a reader is to find in the file, and how each kind of reader counts it.
struct Found {
    std::size_t sections = 0;
    std::size_t entries = 0;
    std::size_t key_bytes = 0;
    std::size_t value_bytes = 0;
    bool operator==(const Found &) const = default;
};

class MessageFile {
public:
    // Texts in quotes, as message files have them, or plain, with a comma to be escaped in one of four.
    MessageFile(bool quoted, std::uint64_t seed) {
        static constexpr const char *WORDS[] = {"the",   "connection", "was", "refused", "by",       "server",
                                                "value", "of",         "is",  "too",     "property", "large"};
        Random random(seed);
        std::string content;
        for (std::uint64_t number = 17'040'000; content.size() < FILE_BYTES; ++number) {
            if (values.entries % 200 == 0) {
                const std::string name = "section " + std::to_string(values.sections++);
                content += (values.sections == 1 ? "[" : "\n[") + name + "]\n";
            }
            const std::string key = std::to_string(number);
            std::string text = "%1!", written = text;
            const std::size_t length = 30 + below(random, 90);
            for (std::size_t word = 0; text.size() < length; ++word) {
                const bool comma = word == 4 && number % 4 == 0;
                const std::string behind = std::string(comma ? "," : "") + " " + WORDS[below(random, std::size(WORDS))];
                written += comma && !quoted ? "\\" + behind : behind;
                text += behind;
            }
            const std::string raw = "08001, " + (quoted ? '"' + written + '"' : written);
            content += key + " = " + raw + "\n";
            ++values.entries;
            values.key_bytes += key.size();
            values.value_bytes += 5 + text.size();
            raw_values.value_bytes += raw.size();
        }
        raw_values = {values.sections, values.entries, values.key_bytes, raw_values.value_bytes};
        bytes = content.size();
        file_ = memfd_create("messages", MFD_CLOEXEC);
        path = "/proc/self/fd/" + std::to_string(file_);
        if (write(file_, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
            std::abort();
    }

    Found values;     // the list of values taken apart and decoded
    Found raw_values; // all behind the equals sign as one text
    std::size_t bytes = 0;
    std::string path;

private:
    int file_;
};

// ---- Contenders -----------------------------------------------------------------------------------------------

struct Library {
    static Found expected(const MessageFile &file) { return file.values; }
    static Found read(const char *path) {
        Found found;
        INTL_LOCFILE file;
        int status = intl_open(path, &file);
        while (status == INTL_OK && intl_nextsection(&file, &status) != nullptr) {
            ++found.sections;
            while (const char *key = intl_nextentry(&file, &status)) {
                ++found.entries;
                found.key_bytes += std::strlen(key);
                while (const char *value = intl_nextvalue(&file, &status)) {
                    benchmark::DoNotOptimize(value);
                    found.value_bytes += static_cast<std::size_t>(intl_valuelen(&file));
                }
            }
        }
        intl_close(&file);
        return found;
    }
};

// Hands out each entry with its section; the value is one text, neither decoded nor taken apart.
struct Inih {
    struct State {
        Found found;
        std::string section;
    };
    static Found expected(const MessageFile &file) { return file.raw_values; }
    static Found read(const char *path) {
        State state;
        if (ini_parse(path, entry, &state) != 0)
            return {};
        return state.found;
    }
    static int entry(void *user, const char *section, const char *key, const char *value) {
        State &state = *static_cast<State *>(user);
        if (state.section != section) {
            state.section = section;
            ++state.found.sections;
        }
        ++state.found.entries;
        state.found.key_bytes += std::strlen(key);
        state.found.value_bytes += std::strlen(value);
        return 1;
    }
};

// Loads the whole file into tables. Entries are then counted by group; their texts are not looked at.
struct GKeyFileLoad {
    static Found expected(const MessageFile &file) { return {file.values.sections, file.values.entries, 0, 0}; }
    static Found read(const char *path) {
        Found found;
        GKeyFile *file = g_key_file_new();
        if (g_key_file_load_from_file(file, path, G_KEY_FILE_NONE, nullptr)) {
            char **groups = g_key_file_get_groups(file, &found.sections);
            for (char **group = groups; *group != nullptr; ++group) {
                gsize count = 0;
                g_strfreev(g_key_file_get_keys(file, *group, &count, nullptr));
                found.entries += count;
            }
            g_strfreev(groups);
        }
        g_key_file_free(file);
        return found;
    }
};

template <class Contender>
void enter_reader(const char *row, const char *name, const MessageFile &file) {
    benchmark::RegisterBenchmark((std::string(row) + '/' + name).c_str(), [&file](benchmark::State &state) {
        if (!(Contender::read(file.path.c_str()) == Contender::expected(file))) {
            state.SkipWithError("wrong contents");
            return;
        }
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(file.values.entries))) {
            Found found = Contender::read(file.path.c_str());
            benchmark::DoNotOptimize(found);
        }
        const auto files = static_cast<double>(state.iterations()) / static_cast<double>(file.values.entries);
        state.SetBytesProcessed(static_cast<std::int64_t>(files * static_cast<double>(file.bytes)));
    });
}

void enter_readers(const char *row, const MessageFile &file) {
    enter_reader<Library>(row, LIBRARY, file);
    enter_reader<Inih>(row, "inih", file);
    enter_reader<GKeyFileLoad>(row, "GKeyFile", file);
}

} // namespace

void enter_locfile_rows() {
    static const MessageFile quoted(true, 70), plain(false, 71);
    enter_readers("localization file of 1 MB, quoted texts", quoted);
    enter_readers("localization file of 1 MB, plain texts", plain);
}

} // namespace bench
