// objectid.dat of any content: the table that is loaded, against one made from the naive reader and the naive encoder,
// and every lookup in it.
#include "home.h"
#include "support/naive_ber.h"
#include "support/naive_locfile.h"

#include <dlxintl/intl.h>

#include <vector>

namespace naive = support::naive;

namespace {

using Bytes = std::string;

struct Entry {
    int id_class;
    std::string dotted;
    Bytes ber;
    std::vector<Bytes> names;
};

struct Model {
    CS_RETCODE status = CS_SUCCEED;
    int code = 0;
    std::vector<Entry> entries;

    explicit Model(const std::string &content) {
        support::NaiveLocfile file(content);
        support::NaiveLocfile::Answer section;
        while (status == CS_SUCCEED && (section = file.next_section()).text)
            if (const int id_class = class_of(section.text->c_str()); id_class >= 0)
                read_section(file, id_class);
        if (status == CS_SUCCEED)
            judge(section.status);
    }

private:
    static int class_of(const std::string &name) {
        static const char *const NAMES[] = {"charset",  "numeric",  "money",    "datetime", "collate", "natlang",
                                            "integer2", "integer4", "integer8", "float4",   "float8",  "secmech"};
        for (int id_class = 0; id_class < 12; ++id_class)
            if (name == NAMES[id_class])
                return id_class;
        return -1;
    }

    void judge(int reader) {
        if (reader >= 0)
            return;
        status = CS_EINTL;
        code = reader;
    }

    void read_section(support::NaiveLocfile &file, int id_class) {
        support::NaiveLocfile::Answer key;
        while ((key = file.next_entry()).text) {
            Entry entry = {id_class, key.text->c_str(), {}, {}};
            const auto ber = naive::ber_of(entry.dotted);
            if (!ber) {
                status = CS_FAIL;
                return;
            }
            entry.ber = *ber;
            support::NaiveLocfile::Answer value;
            while ((value = file.next_value()).text)
                entry.names.push_back(*value.text);
            judge(value.status);
            if (status != CS_SUCCEED)
                return;
            add(entry);
        }
        judge(key.status);
    }

    void add(const Entry &entry) {
        for (Entry &known : entries)
            if (known.id_class == entry.id_class && known.ber == entry.ber) {
                known.names.insert(known.names.end(), entry.names.begin(), entry.names.end());
                return;
            }
        entries.push_back(entry);
    }
};

Bytes bytes(const void *from, CS_INT len) { return {static_cast<const char *>(from), static_cast<std::size_t>(len)}; }

// Class by class, in the order of the file.
std::vector<const Entry *> of_class(const Model &model, int id_class) {
    std::vector<const Entry *> entries;
    for (const Entry &entry : model.entries)
        if (entry.id_class == id_class)
            entries.push_back(&entry);
    return entries;
}

void check_table(const Model &model, const CS_OID_TABLE &table) {
    for (int id_class = 0; id_class < CS_OID_CLASSES; ++id_class) {
        const CsOID *oid = table.ot_oid[id_class];
        for (const Entry *entry : of_class(model, id_class)) {
            FUZZ_CHECK(oid != nullptr);
            FUZZ_CHECK(bytes(oid->oidstring, oid->oidnamelen) == entry->dotted);
            FUZZ_CHECK(bytes(oid->oidber, oid->oidberlen) == entry->ber);
            FUZZ_CHECK(oid->oidnumlnames == static_cast<CS_INT>(entry->names.size()));
            const CS_STRING_LIST *name = oid->oidlnames;
            for (const Bytes &wanted : entry->names) {
                FUZZ_CHECK(name != nullptr && bytes(name->string, name->len) == wanted);
                name = name->next;
            }
            FUZZ_CHECK(name == nullptr);
            oid = oid->oidnext;
        }
        FUZZ_CHECK(oid == nullptr);
    }
}

bool has_name(const Entry &entry, const Bytes &name) {
    for (const Bytes &own : entry.names)
        if (own == name || (name.back() == '\0' && own == name.substr(0, name.size() - 1)))
            return true;
    return false;
}

// The entry that a lookup in one class or (CS_UNUSED) in all has to find.
template <class Matches>
const Entry *expected(const Model &model, int id_class, Matches matches) {
    for (int at = 0; at < CS_OID_CLASSES; ++at)
        if (id_class == CS_UNUSED || id_class == at)
            for (const Entry *entry : of_class(model, at))
                if (matches(*entry))
                    return entry;
    return nullptr;
}

void check_lookups(const Model &model, CS_CONTEXT *context) {
    std::size_t questions = 0;
    for (const Entry &entry : model.entries)
        for (int chosen : {entry.id_class, CS_UNUSED}) {
            const auto same = [&](const Entry &other) { return other.ber == entry.ber; };
            fuzz::ExactBuffer ber(entry.ber.size(), entry.ber);
            CsOID *oid = nullptr;
            FUZZ_CHECK(comn_gid_to_oid(context, chosen, ber.get(), static_cast<CS_INT>(entry.ber.size()), &oid) ==
                       CS_SUCCEED);
            FUZZ_CHECK(bytes(oid->oidstring, oid->oidnamelen) == expected(model, chosen, same)->dotted);

            const Entry *const lowest = expected(model, CS_UNUSED, same);
            for (std::size_t number = 1; number <= lowest->names.size() + 1 && questions < 500; ++number, ++questions) {
                const Bytes name = number <= lowest->names.size() ? lowest->names[number - 1] : "";
                fuzz::ExactBuffer room(name.size());
                CS_INT id_class = -1, length = -1, count = -1;
                const CS_RETCODE status = comn_globalid(
                    context, CS_OID_TO_NAME, &oid, &id_class, static_cast<CS_INT>(number),
                    reinterpret_cast<CS_CHAR *>(room.get()), static_cast<CS_INT>(name.size()), &count, &length);
                FUZZ_CHECK(status == (number <= lowest->names.size() ? CS_SUCCEED : CS_FAIL));
                FUZZ_CHECK(id_class == lowest->id_class && count == static_cast<CS_INT>(lowest->names.size()));
                FUZZ_CHECK(status != CS_SUCCEED || (room.all() == name && length == static_cast<CS_INT>(name.size())));
            }
            for (std::size_t number = 0; number < entry.names.size() && questions < 500; ++number, ++questions) {
                const Bytes &name = entry.names[number];
                for (const Bytes &sought : {name, name + '\0', name + 'x'}) {
                    if (sought.empty())
                        continue;
                    const Entry *const wanted =
                        expected(model, chosen, [&](const Entry &other) { return has_name(other, sought); });
                    fuzz::ExactBuffer text(sought.size(), sought);
                    CsOID *found = nullptr;
                    const CS_RETCODE status = comn_globalid(context, CS_NAME_TO_OID, &found, &chosen, CS_UNUSED,
                                                            reinterpret_cast<CS_CHAR *>(text.get()),
                                                            static_cast<CS_INT>(sought.size()), nullptr, nullptr);
                    FUZZ_CHECK(status == (wanted != nullptr ? CS_SUCCEED : CS_FAIL));
                    FUZZ_CHECK(wanted == nullptr || bytes(found->oidber, found->oidberlen) == wanted->ber);
                }
            }
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static fuzz::Home home("config/objectid.dat");
    const std::string content(reinterpret_cast<const char *>(data), size);
    home.put(content);
    const Model model(content);

    CsCtxGlobals globals = {};
    CS_CONTEXT context = {};
    context.ctxglobals = &globals;
    FUZZ_CHECK(comn_intl_load_globalid(&context, &globals.ctxoids) == model.status);
    FUZZ_CHECK(context.ctxintlerr == model.code);
    FUZZ_CHECK((globals.ctxoids != nullptr) == (model.status == CS_SUCCEED));
    if (globals.ctxoids == nullptr)
        return 0;
    check_table(model, *static_cast<CS_OID_TABLE *>(globals.ctxoids));
    check_lookups(model, &context);

    static FILE *const nowhere = std::fopen("/dev/null", "w");
    Com_fp = nowhere;
    comn_dbg_print_oidtable(&context, static_cast<CS_OID_TABLE *>(globals.ctxoids));
    Com_fp = nullptr;
    FUZZ_CHECK(comn_intl_drop_globalid(&context, &globals.ctxoids) == CS_SUCCEED);
    FUZZ_CHECK(globals.ctxoids == nullptr);
    return 0;
}
