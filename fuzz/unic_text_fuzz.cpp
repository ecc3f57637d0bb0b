// Text in any shipped set, valid or not, from the set and to it: through 16-bit text by handles, in any room, and in
// one pass, which has to tell the same. Sources and rooms have no spare byte.
#include "input.h"

#include <dlxcomn/charconv.h>
#include <dlxunic/unic.h>

#include <vector>

namespace {

constexpr UNICONV_CID UTF8 = -4;

bool is_done(int status) { return status == UNI_OK || status == UNI_SUBSTITUTED; }

class Handle {
public:
    explicit Handle(UNICONV_CID cid) { status_ = uniconv_HandleGet(cid, &handle_); }
    ~Handle() { uniconv_HandleFree(handle_); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    CVTH get() const {
        FUZZ_CHECK(status_ == UNI_OK);
        return handle_;
    }

private:
    CVTH handle_ = nullptr;
    int status_;
};

using Units = std::vector<UNICHAR>;

struct Result {
    int status;
    std::string text;
    bool operator==(const Result &) const = default;
};

// Texts of bytes have three zeros behind them.
int to_units(const Handle &from, const std::string &text, std::size_t room, Units *units) {
    fuzz::ExactBuffer source(text.size() + 3, text);
    const std::unique_ptr<UNICHAR[]> buffer(new UNICHAR[room + 1]);
    int count = -1;
    const int status = uniconv_unistrFromS(from.get(), buffer.get(), static_cast<int>(room) + 1,
                                           reinterpret_cast<char *>(source.get()), &count);
    FUZZ_CHECK(count >= 0 && static_cast<std::size_t>(count) <= room && buffer[static_cast<std::size_t>(count)] == 0);
    units->assign(buffer.get(), buffer.get() + count + 1);
    return status;
}

Result to_bytes(const Handle &to, const Units &units, std::size_t room) {
    const std::unique_ptr<UNICHAR[]> source(new UNICHAR[units.size()]);
    std::copy(units.begin(), units.end(), source.get());
    fuzz::ExactBuffer buffer(room + 1);
    int count = -1;
    const int status = uniconv_unistrToS(to.get(), reinterpret_cast<char *>(buffer.get()), static_cast<int>(room) + 1,
                                         source.get(), &count);
    FUZZ_CHECK(count >= 1 && static_cast<std::size_t>(count) <= room + 1);
    return {status, buffer.first(static_cast<std::size_t>(count) - 1)};
}

// From one set to the other, as callers without a pass do it: an empty text with status 0 unless the whole came over.
Result in_two_steps(const Handle &from, const Handle &to, const std::string &text) {
    Units units;
    const int status = to_units(from, text, 2 * text.size() + 1, &units);
    if (!is_done(status))
        return {0, ""};
    Result result = to_bytes(to, units, 6 * units.size());
    FUZZ_CHECK(is_done(result.status));
    if (status == UNI_SUBSTITUTED)
        result.status = status;
    return result;
}

using Pass = int (*)(UNICONV_CID, const char *, int, char *, int, int *);

Result in_one_pass(Pass pass, UNICONV_CID cid, const std::string &text, std::size_t room) {
    fuzz::ExactBuffer source(text.size(), text), buffer(room);
    int count = -1;
    const int status = pass(cid, reinterpret_cast<char *>(source.get()), static_cast<int>(text.size()),
                            reinterpret_cast<char *>(buffer.get()), static_cast<int>(room), &count);
    if (!is_done(status))
        return {status == UNI_INDIRECT ? status : 0, ""};
    FUZZ_CHECK(count >= 0 && static_cast<std::size_t>(count) <= room);
    return {status, buffer.first(static_cast<std::size_t>(count))};
}

void compare(Pass pass, UNICONV_CID cid, const Result &expected, const std::string &text, std::size_t spare) {
    const std::size_t enough = expected.text.size();
    const Result told = in_one_pass(pass, cid, text, enough + spare);
    if (told.status == UNI_INDIRECT)
        return;
    FUZZ_CHECK(told == expected);
    FUZZ_CHECK(in_one_pass(pass, cid, text, enough) == expected);
    if (enough > 0)
        FUZZ_CHECK(in_one_pass(pass, cid, text, enough - 1 - spare % enough).status == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static const bool has_home = setenv("DALVEX", FUZZ_HOME, 1) == 0;
    FUZZ_CHECK(has_home);
    fuzz::Input input(data, size);
    const UNICONV_CID cid = csid_name[input.byte() % std::size(csid_name)].unilib_cid;
    const std::size_t spare = input.byte();
    const std::string text = input.rest();
    if (cid == -3)
        return 0;

    const Handle set(cid), utf8(UTF8), told_of_utf8(cid);
    FUZZ_CHECK(uniconv_SetSource(told_of_utf8.get(), UTF8) == UNI_OK);
    const std::string front = text.substr(0, text.find('\0'));
    if (cid != UTF8) {
        compare(uniconv_StrToUTF8, cid, in_two_steps(set, utf8, front), text, spare);
        compare(uniconv_StrFromUTF8, cid, in_two_steps(utf8, told_of_utf8, front), text, spare);
    }

    // In a room of any size, what fits is the beginning of what there is.
    Units all, some;
    to_units(set, text, 2 * text.size() + 1, &all);
    to_units(set, text, spare, &some);
    FUZZ_CHECK(std::equal(some.begin(), some.end() - 1, all.begin()));
    const Result whole = to_bytes(set, all, 8 * all.size()), part = to_bytes(set, all, spare);
    // What is cut in its second state goes back to the first one.
    const bool is_back = !part.text.empty() && part.text.back() == '\x0F';
    const std::string cut = part.text.substr(0, part.text.size() - (is_back ? 1 : 0));
    FUZZ_CHECK(whole.text.compare(0, cut.size(), cut) == 0);
    return 0;
}
