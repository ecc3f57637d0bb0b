// The tour's chapters on text: locales, character sets, sort orders and messages of the data home.
#include "tour.h"

#include "home.h"
#include "message_text.h"
#include "sorting.h"
#include "text.h"

#include <dlxcomn/charconv.h>

namespace client {
namespace {

struct Name {
    const char *locale;
    CS_INT type;
    CS_INT number;
    const char *what;
};

constexpr Name NAMES[] = {
    {"en_US.UTF-8", CS_LOC_MONTH, 2, "month 3"},
    {"de_DE", CS_LOC_MONTH, 2, "month 3"},
    {"pl_PL", CS_LOC_MONTH, 9, "month 10"},
    {"ru_RU.KOI8-R", CS_LOC_MONTH, 4, "month 5"},
    {"tr_TR.UTF-8", CS_LOC_SHORTMONTH, 1, "short month 2"},
    {"en_US", CS_LOC_DAY, 0, "first day"},
    {"fr_FR", CS_LOC_DAY, 0, "first day"},
    {"ja_JP", CS_LOC_DAY, 0, "first day"},
};

struct Text {
    const char *from;
    const char *to;
    std::string_view bytes;
    const char *remark;
};

constexpr Text TEXTS[] = {
    {"utf8", "iso_1", "Grüße", ""},
    {"utf8", "cp850", "Grüße", ""},
    {"utf8", "cp500", "Grüße", "EBCDIC"},
    {"utf8", "koi8", "мир", ""},
    {"utf8", "sjis", "\u65e5\u672c", ""},
    {"utf8", "cp939", "\u65e5\u672c", "in its second state"},
    {"utf8", "gb18030", "\U0001F40D", "four bytes"},
    {"utf8", "iso_1", "x \u2264 y", "no partner"},
    {"sjis", "eucjis", "\x93\xFA\x96\x7B\x82", "its end is missing"},
};

struct Pair {
    const char *order;
    const char *first; // UTF-8; compared in iso_1
    const char *second;
    const char *remark;
};

constexpr Pair PAIRS[] = {
    {"binary", "Zebra", "apfel", "by the codes"},
    {"dict", "Zebra", "apfel", "by the letters"},
    {"dict", "Äpfel", "apfelbaum", "letters first,"},
    {"dict", "apfel", "Äpfel", "then accents"},
    {"dict", "Apfel", "apfel", "and case"},
    {"nocase", "APFEL", "apfel", ""},
    {"noaccent", "Äpfel", "apfel", ""},
    {"dict", "Straße", "Strassen", "two letters"},
    {"dict", "Weg  ", "Weg", "blanks at the end"},
};

constexpr CS_MSGNUM OUT_OF_MEMORY = 0x01040602;
constexpr CS_MSGNUM CANNOT_OPEN = 0x01040603;

// One chapter after the other, up to the first that cannot be shown.
class Chapters {
public:
    explicit Chapters(Home &home) : home_(home) {}

    bool names() {
        print("\nA locale is loaded from the data home. It names months and days in its own character set.\n");
        for (const Name &name : NAMES) {
            const Maybe<CsLocCache *> cache = home_.load_locale(name.locale);
            if (!cache)
                return refuse(cache);
            CS_LOCALE locale = locale_of(*cache);
            CS_CHAR text[64];
            CS_INT length = 0;
            const auto function = name.type == CS_LOC_DAY ? comn_intl_day : comn_intl_month;
            const CS_RETCODE status =
                function(home_.context(), &locale, name.type, name.number, text, sizeof text, &length);
            const std::string bytes(text, static_cast<size_t>(length));
            print_step(std::string(name.what) + " of " + name.locale + ", " + (*cache)->charname,
                       home_.to_utf8(*cache, bytes).value_or("-"), status,
                       hexadecimal(reinterpret_cast<const CS_BYTE *>(text), bytes.size()));
        }
        return true;
    }

    bool texts() {
        print("\nText moves between any two character sets. A character without a partner becomes \"?\".\n");
        for (const Text &text : TEXTS) {
            const Maybe<CsCharDesc *> from = home_.load_charset(text.from);
            if (!from)
                return refuse(from);
            const Maybe<CsCharDesc *> to = home_.load_charset(text.to);
            if (!to)
                return refuse(to);
            show_text(text, *from, *to);
        }
        return true;
    }

    bool orders() {
        print("\nTexts compare by a sort order of their character set, here of iso_1.\n");
        const Maybe<CsCharDesc *> set = home_.load_charset("iso_1");
        const Maybe<CsCharDesc *> utf8 = home_.load_charset("utf8");
        if (!set || !utf8)
            return refuse(set ? utf8 : set);
        for (const Pair &pair : PAIRS) {
            const Maybe<CsSortDesc *> order = home_.load_order(*set, pair.order);
            if (!order)
                return refuse(order);
            CS_RETCODE status = CS_SUCCEED;
            const std::string first = converted(pair.first, *utf8, *set, &status);
            const std::string second = converted(pair.second, *utf8, *set, &status);
            const int result = compare(**order, first, second);
            print_step(std::string(pair.order) + ": " + pair.first + ", " + pair.second,
                       result < 0   ? "comes first"
                       : result > 0 ? "comes second"
                                    : "the same",
                       status, pair.remark);
        }
        return true;
    }

    bool messages() {
        print("\nA failure arrives at the application's callback as a message in its language.\n");
        for (const char *name : {"en_US.UTF-8", "de_DE", "fr_FR", "tr_TR.UTF-8"})
            if (!show_message(name, OUT_OF_MEMORY, {}))
                return false;
        return show_message("ja_JP", CANNOT_OPEN, {"ncs.cfg"});
    }

private:
    template <class T>
    static bool refuse(const Maybe<T> &nothing) {
        complain(nothing.sentence());
        return false;
    }

    CS_LOCALE locale_of(CsLocCache *cache) {
        return {cache, cache, cache, cache, cache, cache, home_.context(), nullptr};
    }

    std::string converted(std::string_view text, CsCharDesc *from, CsCharDesc *to, CS_RETCODE *status) {
        CsLocCache caches[2] = {};
        caches[0].locchardesc = from;
        caches[1].locchardesc = to;
        CS_LOCALE locales[] = {locale_of(&caches[0]), locale_of(&caches[1])};
        CS_CHAR source[64] = "", result[64];
        CS_INT length = 0;
        text.copy(source, sizeof source);
        CS_DATAFMT formats[2] = {};
        for (int i = 0; i < 2; ++i) {
            formats[i].datatype = CS_CHAR_TYPE;
            formats[i].locale = &locales[i];
        }
        formats[0].maxlength = static_cast<CS_INT>(text.size());
        formats[1].maxlength = sizeof result;
        *status = comn_charset_convert(home_.context(), CS_LC_CTYPE, &formats[0], source, &formats[1], result, &length);
        return {result, static_cast<size_t>(length)};
    }

    void show_text(const Text &text, CsCharDesc *from, CsCharDesc *to) {
        CS_RETCODE status;
        const std::string result = converted(text.bytes, from, to, &status);
        const auto shown = [](const char *set, std::string_view bytes) {
            return set == std::string_view("utf8")
                       ? std::string(bytes)
                       : "0x" + hexadecimal(reinterpret_cast<const CS_BYTE *>(bytes.data()), bytes.size());
        };
        print_step(std::string(text.from) + " " + shown(text.from, text.bytes) + " -> " + text.to,
                   result.empty() ? "-" : shown(text.to, result), status, text.remark);
    }

    bool show_message(const char *name, CS_MSGNUM number, const std::vector<std::string> &parameters) {
        const Maybe<CsLocCache *> cache = home_.load_locale(name);
        if (!cache)
            return refuse(cache);
        if (const Maybe<CsLocCache *> used = home_.use(*cache); !used)
            return refuse(used);
        const Maybe<Raised> raised = raise_message(home_, *cache, number, "dlxcomn", parameters);
        if (!raised)
            return refuse(raised);
        print("  " + left(name, 13) + raised->sqlstate + "  " + raised->text + "\n");
        return true;
    }

    Home &home_;
};

} // namespace

int tour_of_home() {
    const Maybe<std::shared_ptr<Home>> home = Home::open();
    if (!home) {
        complain(home.sentence());
        return FAILED;
    }
    Chapters chapters(**home);
    return chapters.names() && chapters.texts() && chapters.orders() && chapters.messages() ? DONE : FAILED;
}

} // namespace client
