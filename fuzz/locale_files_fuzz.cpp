// The two files that make a locale, of any content: what a name stands for, and the date conventions of a language. A
// load ends in a locale that is whole or in none, a name asked for twice is loaded once, and what a locale names goes
// into any room and never past it. The rest of the home is the one that ships.
#include "home.h"
#include "localization.h"
#include "owner.h"

namespace {

constexpr const char *LANGUAGE = "us_english";

// A home whose list of locales is the input.
const fuzz::Home &home_of_names() {
    static const fuzz::Home &home = *[] {
        auto *const made = new fuzz::Home("locales/locales.dat");
        made->link(FUZZ_HOME "/config", "config");
        made->link(FUZZ_HOME "/charsets", "charsets");
        made->link(FUZZ_HOME "/locales/message", "locales/message");
        return made;
    }();
    return home;
}

// A home with one language, whose conventions are the input.
const fuzz::Home &home_of_conventions() {
    static const fuzz::Home &home = *[] {
        auto *const made = new fuzz::Home(std::string("locales/message/") + LANGUAGE + "/common.loc");
        made->link(FUZZ_HOME "/config", "config");
        made->link(FUZZ_HOME "/charsets", "charsets");
        made->link(FUZZ_HOME "/locales/locales.dat", "locales/locales.dat");
        return made;
    }();
    return home;
}

void check_text(const CS_BYTE *text, CS_INT length) {
    FUZZ_CHECK(text != nullptr && length >= 0);
    FUZZ_CHECK(std::strlen(reinterpret_cast<const char *>(text)) == static_cast<std::size_t>(length));
}

void check_conventions(const CS_DATEINFO &info) {
    for (int month = 0; month < 12; ++month) {
        check_text(info.months[month], info.mon_len[month]);
        check_text(info.shortmonths[month], info.shrtmon_len[month]);
    }
    for (int day = 0; day < 7; ++day)
        check_text(info.days[day], info.day_len[day]);
    FUZZ_CHECK(info.firstday >= 1 && info.firstday <= 7);
    FUZZ_CHECK(info.is12hour == CS_TRUE || info.is12hour == CS_FALSE);
}

// What the locale names, in so much room.
void ask(CS_CONTEXT *context, CsLocCache *cache, CS_INT room) {
    CS_LOCALE locale = {cache, cache, cache, cache, cache, cache, nullptr, nullptr};
    fuzz::ExactBuffer buffer(static_cast<std::size_t>(room));
    auto *const text = reinterpret_cast<CS_CHAR *>(buffer.get());
    CS_INT length = 0;
    const auto check = [&](CS_RETCODE status) {
        FUZZ_CHECK(status == CS_SUCCEED || status == CS_ETRUNCATED || status == CS_FAIL);
        FUZZ_CHECK(length >= 0 && length <= room);
    };
    for (CS_INT month = 0; month < 12; ++month) {
        check(comn_intl_month(context, &locale, CS_LOC_MONTH, month, text, room, &length));
        check(comn_intl_month(context, &locale, CS_LOC_SHORTMONTH, month, text, room, &length));
    }
    for (CS_INT day = 0; day < 7; ++day)
        check(comn_intl_day(context, &locale, CS_LOC_DAY, day, text, room, &length));
    check(comn_intl_dateorder(context, &locale, text, room, &length));
    check(com_intl_get_locname(context, cache, text, room, &length));
}

void load(client::Owner &owner, client::Localization &localization, const std::string &name, CS_INT room) {
    CsLocCache *cache = nullptr, *again = nullptr;
    const client::Load first = localization.load_locale(name, &cache);
    FUZZ_CHECK(static_cast<bool>(first) == (cache != nullptr));
    const client::Load second = localization.load_locale(name, &again);
    FUZZ_CHECK(second.status == first.status && again == cache);
    if (cache == nullptr)
        return;
    FUZZ_CHECK(cache->locchardesc != nullptr && cache->locdateinfo != nullptr && cache->locmessage != nullptr);
    check_conventions(*cache->locdateinfo);
    ask(owner.context(), cache, room);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool is_of_names = (input.byte() & 1) != 0;
    const CS_INT room = input.byte();
    auto &home = const_cast<fuzz::Home &>(is_of_names ? home_of_names() : home_of_conventions());
    home.enter();
    home.put(input.rest());

    client::Owner owner;
    client::Localization localization(owner.context());
    FUZZ_CHECK(localization.start());
    for (const char *name : is_of_names ? std::initializer_list<const char *>{"default", "de_DE", "a", ""}
                                        : std::initializer_list<const char *>{"en_US", "en_US.UTF-8"})
        load(owner, localization, name, room);
    return 0;
}
