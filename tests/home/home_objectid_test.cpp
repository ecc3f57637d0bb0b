// The identifiers that ship.
#include "home/shipped_home.h"

#include <map>
#include <set>

namespace {

class HomeObjectid : public ShippedHome {};

const std::vector<FileEntry> entries = entries_of(HOME + "/config/objectid.dat");
const Strings classes = {"charset",  "numeric",  "money",    "datetime", "collate", "natlang",
                         "integer2", "integer4", "integer8", "float4",   "float8",  "secmech"};

TEST_F(HomeObjectid, EveryClassHasIdentifiers) {
    const auto *const table = static_cast<const CS_OID_TABLE *>(globals().ctxoids);
    for (std::size_t i = 0; i < classes.size(); ++i)
        EXPECT_NE(table->ot_oid[i], nullptr) << classes[i];
    for (const FileEntry &entry : entries)
        EXPECT_NE(std::ranges::find(classes, entry.section), classes.end()) << entry.section;
}

TEST_F(HomeObjectid, IdentifiersLieBelowTheArcOfTheirClass) {
    for (const FileEntry &entry : entries) {
        if (entry.section == "secmech")
            continue; // these are registered for everyone
        const auto number = std::ranges::find(classes, entry.section) - classes.begin();
        const std::string arc = "1.3.6.1.4.1.54321." + std::to_string(number + 1) + ".";
        EXPECT_TRUE(entry.key.starts_with(arc)) << entry.section << " " << entry.key;
    }
}

TEST_F(HomeObjectid, NamesAndIdentifiersStandOnceInAClass) {
    std::map<std::string, std::set<std::string>> seen;
    for (const FileEntry &entry : entries) {
        EXPECT_FALSE(entry.values.empty()) << entry.key;
        EXPECT_TRUE(seen[entry.section].insert(entry.key).second) << entry.key;
        for (const std::string &name : entry.values) {
            EXPECT_FALSE(name.empty()) << entry.key;
            EXPECT_TRUE(seen[entry.section].insert(name).second) << name;
        }
    }
}

TEST_F(HomeObjectid, NoAliasIsTheNameOfAnotherSet) {
    for (const FileEntry &entry : entries)
        for (std::size_t i = 1; entry.section == "charset" && i < entry.values.size(); ++i)
            for (const CSID_CSNAME &set : csid_name)
                EXPECT_NE(entry.values[i], name_of(set)) << entry.key;
}

TEST_F(HomeObjectid, SetsAreKnownByTheNumberThatTheLibraryGivesThem) {
    std::vector<CSID_CSNAME> sets = shipped_sets();
    std::ranges::copy_if(csid_name, std::back_inserter(sets),
                         [](const CSID_CSNAME &set) { return name_of(set) == "ucs2"; });
    ASSERT_EQ(sets.size(), 118u);
    for (const CSID_CSNAME &set : sets) {
        const CsOID *const oid = identifier(CS_OID_CHARSET, name_of(set));
        ASSERT_NE(oid, nullptr);
        EXPECT_EQ(text_of(oid->oidstring, oid->oidnamelen), "1.3.6.1.4.1.54321.1." + std::to_string(set.csid));
        EXPECT_EQ(text_of(oid->oidlnames->string, oid->oidlnames->len), name_of(set));
    }
}

struct Representation {
    CS_INT id_class;
    CS_INT number;
};

TEST_F(HomeObjectid, NumbersOfTheLoginGoToIdentifiersAndBack) {
    constexpr Representation ALL[] = {
        {CS_OID_INTEGER2, 2}, {CS_OID_INTEGER2, 3}, {CS_OID_INTEGER4, 0}, {CS_OID_INTEGER4, 1}, {CS_OID_CHARSET, 6},
        {CS_OID_CHARSET, 7},  {CS_OID_FLOAT8, 4},   {CS_OID_FLOAT8, 5},   {CS_OID_FLOAT8, 10},  {CS_OID_FLOAT8, 11},
        {CS_OID_FLOAT4, 12},  {CS_OID_FLOAT4, 13},  {CS_OID_FLOAT4, 14},  {CS_OID_FLOAT4, 15}};
    for (const Representation &representation : ALL) {
        CsOID *oid = nullptr;
        ASSERT_EQ(comn_tds_to_oid(context(), representation.id_class, representation.number, &oid), CS_SUCCEED)
            << representation.number;
        CS_INT number = -1;
        ASSERT_EQ(comn_oid_to_tds(context(), oid, &number), CS_SUCCEED) << representation.number;
        EXPECT_EQ(number, representation.number);
    }
}

TEST_F(HomeObjectid, EveryIdentifierIsFoundByItsEncodingAndEachOfItsNames) {
    for (const FileEntry &entry : entries) {
        const auto id_class = static_cast<CS_INT>(std::ranges::find(classes, entry.section) - classes.begin());
        CsOID *const oid = identifier(id_class, entry.values[0]);
        ASSERT_NE(oid, nullptr);
        EXPECT_EQ(text_of(oid->oidstring, oid->oidnamelen), entry.key);
        CsOID *found = nullptr;
        EXPECT_EQ(comn_gid_to_oid(context(), id_class, oid->oidber, oid->oidberlen, &found), CS_SUCCEED);
        EXPECT_EQ(found, oid) << entry.key;
        for (const std::string &name : entry.values)
            EXPECT_EQ(identifier(id_class, name), oid) << name;
    }
}

TEST_F(HomeObjectid, TheFileTellsASiteToReplaceTheArc) {
    const std::string text = support::content_of_file(HOME + "/config/objectid.dat");
    EXPECT_NE(text.find("a site replaces it"), std::string::npos);
}

} // namespace
