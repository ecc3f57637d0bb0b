// The chained hash table against hash tables with text keys, and the doubly linked list against linked lists. All
// of them hold pointers and copy nothing but their own records.
#include "contest.h"
#include "data.h"

#include <dlxcomn/dlxcomn.h>

#include <absl/container/flat_hash_map.h>
#include <glib.h>

#include <algorithm>
#include <cstdlib>
#include <list>
#include <numeric>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// As large as the table of this library.
#define HASH_INITIAL_NUM_BUCKETS 16384U
#define HASH_INITIAL_NUM_BUCKETS_LOG2 14U
#include <uthash.h>

namespace bench {
namespace {

constexpr CS_INT LIST_VERSION = 16001;

// A list of this library with the context that it lives in.
class OwnList {
public:
    OwnList(CS_INT type, CS_INT table_size, CS_INT pool_size) {
        static char context_name[] = "bench", list_name[] = "list";
        if (lm_initlm(LIST_VERSION, context_name, LM_NULLTERM, &context_) != CS_SUCCEED)
            std::abort();
        lm_property(context_, LM_ACT_SET, LM_PROP_MAX_TABLESIZE, &table_size, sizeof table_size, nullptr);
        lm_property(context_, LM_ACT_SET, LM_PROP_MAX_POOLSIZE, &pool_size, sizeof pool_size, nullptr);
        if (lm_list_alloc(context_, type, list_name, LM_NULLTERM, &list_) != CS_SUCCEED)
            std::abort();
    }
    ~OwnList() { lm_exit(context_, LM_FORCE_EXIT); }
    OwnList(const OwnList &) = delete;
    OwnList &operator=(const OwnList &) = delete;

    LM_HANDLE *list() const { return list_; }

private:
    LM_CONTEXT *context_ = nullptr;
    LM_HANDLE *list_ = nullptr;
};

// ---- Finding by key -------------------------------------------------------------------------------------------

constexpr std::size_t ENTRIES = 10'000;
constexpr CS_INT TABLE_SIZE = 16'384;

// Keys with the order in which they are asked for: long enough that no processor learns it. Whoever asks has a copy
// of the key, not the key itself.
struct Names {
    static constexpr std::size_t STEPS = 64 * VALUES;
    std::vector<std::string> keys;
    std::vector<std::string> copies;
    std::vector<std::uint16_t> order;

    Names(std::vector<std::string> names, std::uint64_t seed) : keys(std::move(names)), copies(keys) {
        Random random(seed);
        for (std::size_t i = 0; i < STEPS; ++i)
            order.push_back(static_cast<std::uint16_t>(below(random, ENTRIES)));
    }
};

// Lower-case letters, 8 to 31 of them.
std::vector<std::string> words(std::uint64_t seed) {
    Random random(seed);
    std::set<std::string> known;
    std::vector<std::string> names;
    while (names.size() < ENTRIES) {
        std::string name(8 + below(random, 24), '\0');
        for (char &letter : name)
            letter = static_cast<char>('a' + below(random, 26));
        if (known.insert(name).second)
            names.push_back(name);
    }
    return names;
}

// Each has insert(key, data) and find(key), which gives null for a miss. Keys outlive the tables.

class OwnTable {
public:
    void insert(const std::string &key, const void *data) { operate(LM_OP_INSERT, key, data, nullptr); }
    const void *find(const std::string &key) {
        CS_VOID *found = nullptr;
        return operate(LM_OP_FIND, key, nullptr, &found) == CS_SUCCEED ? found : nullptr;
    }

private:
    CS_RETCODE operate(CS_INT operation, const std::string &key, const void *data, CS_VOID **found) {
        return lm_list_op(table_.list(), operation, const_cast<char *>(key.data()), static_cast<CS_INT>(key.size()),
                          const_cast<void *>(data), found);
    }

    OwnList table_{LM_CHASH, TABLE_SIZE, 0};
};

class GlibTable {
public:
    ~GlibTable() { g_hash_table_destroy(table_); }
    GlibTable() = default;
    GlibTable(const GlibTable &) = delete;
    GlibTable &operator=(const GlibTable &) = delete;

    void insert(const std::string &key, const void *data) {
        g_hash_table_insert(table_, const_cast<char *>(key.c_str()), const_cast<void *>(data));
    }
    const void *find(const std::string &key) { return g_hash_table_lookup(table_, key.c_str()); }

private:
    GHashTable *table_ = g_hash_table_new(g_str_hash, g_str_equal);
};

// Both grow into about as many slots as this library's table has.
template <class Map>
class StandardTable {
public:
    StandardTable() { map_.reserve(ENTRIES); }
    void insert(const std::string &key, const void *data) { map_.emplace(key, data); }
    const void *find(const std::string &key) {
        const auto entry = map_.find(std::string_view(key));
        return entry != map_.end() ? entry->second : nullptr;
    }

private:
    Map map_;
};

class UtTable {
public:
    UtTable() = default;
    ~UtTable() { HASH_CLEAR(hh, first_); }
    UtTable(const UtTable &) = delete;
    UtTable &operator=(const UtTable &) = delete;

    void insert(const std::string &key, const void *data) {
        Entry *entry = &entries_.emplace_back();
        entry->data = data;
        HASH_ADD_KEYPTR(hh, first_, key.data(), key.size(), entry);
    }
    const void *find(const std::string &key) {
        Entry *entry = nullptr;
        HASH_FIND(hh, first_, key.data(), key.size(), entry);
        return entry != nullptr ? entry->data : nullptr;
    }

private:
    struct Entry {
        const void *data;
        UT_hash_handle hh;
    };
    std::list<Entry> entries_;
    Entry *first_ = nullptr;
};

// One value is one find.
template <class Table>
class Finding {
public:
    explicit Finding(const Names &names) : names_(names) {
        for (const std::string &key : names.keys)
            table_.insert(key, &key);
    }

    void work(std::size_t) {
        asked_ = names_.order[step_];
        found_ = table_.find(names_.copies[asked_]);
        step_ = (step_ + 1) % Names::STEPS;
    }
    bool right(std::size_t) const { return found_ == &names_.keys[asked_]; }

private:
    const Names &names_;
    Table table_;
    const void *found_ = nullptr;
    std::size_t asked_ = 0;
    std::size_t step_ = 0;
};

void enter_find(const std::string &row, const Names &names) {
    enter<Finding<OwnTable>>(row, LIBRARY, names);
    enter<Finding<GlibTable>>(row, "GHashTable", names);
    enter<Finding<StandardTable<std::unordered_map<std::string_view, const void *>>>>(row, "std::unordered_map", names);
    enter<Finding<StandardTable<absl::flat_hash_map<std::string_view, const void *>>>>(row, "absl::flat_hash_map", names);
    enter<Finding<UtTable>>(row, "uthash", names);
}

// ---- Appending and walking ------------------------------------------------------------------------------------

constexpr std::size_t LENGTH = 100'000;

// What a walk adds up, by the function that is called with each entry where the list has such a call.
std::uintptr_t sum;
void add(const void *data) { sum += reinterpret_cast<std::uintptr_t>(data); }

// Each has append(data), walk(), which adds up all entries, and clear().

template <CS_INT POOL_SIZE>
class OwnLinked {
public:
    void append(void *data) { operate(LM_OP_INSERT, LM_OP_LAST, data); }
    void walk() {
        CS_PRINT_FUNC function = visit;
        operate(LM_OP_WALK, LM_UNUSED, &function);
    }
    void clear() {
        operate(LM_OP_FIRST, LM_UNUSED, nullptr);
        for (std::size_t i = 0; i < LENGTH; ++i)
            operate(LM_OP_DELETE, LM_UNUSED, nullptr);
    }

private:
    static CS_INT visit(CS_VOID *data) {
        add(data);
        return 1;
    }
    void operate(CS_INT operation, CS_INT position, CS_VOID *data) {
        lm_list_op(list_.list(), operation, nullptr, position, data, nullptr);
    }

    OwnList list_{LM_DLINK, 1, POOL_SIZE};
};

class GlibQueue {
public:
    GlibQueue() = default;
    ~GlibQueue() { g_queue_clear(&queue_); }
    GlibQueue(const GlibQueue &) = delete;
    GlibQueue &operator=(const GlibQueue &) = delete;

    void append(void *data) { g_queue_push_tail(&queue_, data); }
    void walk() {
        g_queue_foreach(&queue_, [](void *data, void *) { add(data); }, nullptr);
    }
    void clear() { g_queue_clear(&queue_); }

private:
    GQueue queue_ = G_QUEUE_INIT;
};

// Its append would look for the end each time: the list is put together backwards and then turned.
class GlibList {
public:
    GlibList() = default;
    ~GlibList() { g_list_free(list_); }
    GlibList(const GlibList &) = delete;
    GlibList &operator=(const GlibList &) = delete;

    void append(void *data) { list_ = g_list_prepend(list_, data); }
    void walk() {
        list_ = g_list_reverse(list_);
        g_list_foreach(list_, [](void *data, void *) { add(data); }, nullptr);
    }
    void clear() {
        g_list_free(list_);
        list_ = nullptr;
    }

private:
    GList *list_ = nullptr;
};

class StandardList {
public:
    void append(void *data) { list_.push_back(data); }
    void walk() {
        for (const void *data : list_)
            add(data);
    }
    void clear() { list_.clear(); }

private:
    std::list<void *> list_;
};

// One value is one entry, appended and visited. The list is emptied while the clock stands.
template <class List>
void append_and_walk(benchmark::State &state) {
    static std::vector<char> entries(LENGTH);
    List list;
    while (state.KeepRunningBatch(LENGTH)) {
        for (char &entry : entries)
            list.append(&entry);
        sum = 0;
        list.walk();
        state.PauseTiming();
        const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(entries.data());
        if (sum != LENGTH * first + LENGTH * (LENGTH - 1) / 2) {
            state.SkipWithError("wrong sum");
            return;
        }
        list.clear();
        state.ResumeTiming();
    }
}

template <class List>
void enter_list(const std::string &row, const char *name) {
    benchmark::RegisterBenchmark((row + '/' + name).c_str(), append_and_walk<List>);
}

template <CS_INT POOL_SIZE>
void enter_lists(const std::string &row) {
    enter_list<OwnLinked<POOL_SIZE>>(row, LIBRARY);
    enter_list<GlibQueue>(row, "GQueue");
    enter_list<GlibList>(row, "GList");
    enter_list<StandardList>(row, "std::list");
}

} // namespace

void enter_list_rows() {
    static const Names names(words(500), 501);
    enter_find("chained hash find, 10,000 names", names);
    enter_lists<LENGTH>("list append and walk 100,000, node pool");
    enter_lists<0>("list append and walk 100,000, no node pool");
}

} // namespace bench
