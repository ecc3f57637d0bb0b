// A home directory with one character set and one file of a sort order, and the records that a load takes.
#ifndef TESTS_SUPPORT_SORT_HOME_H
#define TESTS_SUPPORT_SORT_HOME_H

#include "support/environment.h"

#include <dlxcomn/dlxcomn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace support {

class SortHome {
public:
    SortHome() {
        std::string pattern = (std::filesystem::temp_directory_path() / "dlxcomn_sort_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            std::abort();
        path_ = pattern;
        std::filesystem::create_directories(path_ + "/charsets/iso_1");
        home_.put(path_);
    }
    ~SortHome() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    SortHome(const SortHome &) = delete;
    SortHome &operator=(const SortHome &) = delete;

    std::string file() const { return path_ + "/charsets/iso_1/test.srt"; }
    void write(const std::string &content) const { std::ofstream(file(), std::ios::binary) << content; }

private:
    Variable home_{"DALVEX"};
    std::string path_;
};

// A character set to which orders are loaded; it drops them at its end.
class SortSet {
public:
    SortSet() {
        cache_.charname = charname_;
        cache_.charnamelen = sizeof charname_ - 1;
        cache_.sortname = sortname_;
        cache_.sortnamelen = sizeof sortname_ - 1;
        cache_.locchardesc = &set_;
    }
    ~SortSet() { drop(); }
    SortSet(const SortSet &) = delete;
    SortSet &operator=(const SortSet &) = delete;

    CS_RETCODE load(CsOID &oid) { return comn__intl_load_sortorder(&context_, &oid, &cache_, nullptr, 0); }
    CS_RETCODE load() { return load(oid_); }
    void drop() {
        while (CsSortDesc *order = set_.sort_order) {
            set_.sort_order = order->sortnext;
            comn__sortorder_drop(order);
        }
        cache_.locsortorder = nullptr;
    }

    CsSortDesc *order() const { return cache_.locsortorder; }
    SO_1CLASS *table() const { return static_cast<SO_1CLASS *>(order()->char_sort_class); }

    CS_CONTEXT context_ = {};
    CsOID oid_ = {};
    CsCharDesc set_ = {};
    CsLocCache cache_ = {};

private:
    CS_CHAR charname_[6] = "iso_1";
    CS_CHAR sortname_[5] = "test";
};

} // namespace support

#endif
