// Messages of locales that were loaded from a home: one language in two character sets, and contexts that share them.
#include "locale/locale_fixture.h"

#include <filesystem>
#include <map>
#include <string>

namespace {

std::string comnlib(const std::string &language) {
    const std::map<std::string, std::string> texts = {
        {"german", "[comlayer]\n1 = ZZZZZ, \"gemeinsame Bibliothek\"\n[comorigin]\n4 = ZZZZZ, \"f\xC3\xBCr alle\"\n"
                   "[comapierror]\n2 = 22003, \"Der Wert \\\"%1!\\\" \", \"ist ung\xC3\xBCltig: %2! \xE2\x82\xAC.\"\n"},
        {"us_english", "[comlayer]\n1 = ZZZZZ, \"common library\"\n[comorigin]\n4 = ZZZZZ, \"all of them\"\n"
                       "[comapierror]\n2 = 22003, \"The value \\\"%1!\\\" is bad: %2!.\"\n"}};
    return "[comdefaults]\n1 = ZZZZZ, a\n2 = ZZZZZ, b\n3 = ZZZZZ, c\n4 = ZZZZZ, d\n" + texts.at(language);
}

std::string raised_text, raised_code;

CS_RETCODE note(CS_CONTEXT * /*context*/, CS_CLIENTMSG *message) {
    raised_text = text_of(message->msgstring, message->msgstringlen);
    raised_code = reinterpret_cast<const char *>(message->sqlstate);
    return CS_SUCCEED;
}

// A context of the application with a locale of its own.
class LocaleContext {
public:
    LocaleContext(Application &application, CsLocCache *cache) : locale_(locale_of(cache)) {
        context_.ctxglobals = &application.globals();
        context_.ctxthread = &application.callbacks();
        context_.ctxlocale = &locale_;
        context_.ctxerrfunc = note;
        EXPECT_EQ(com_errinit(&context_), CS_SUCCEED);
    }
    ~LocaleContext() { com_errdrop(&context_); }
    LocaleContext(const LocaleContext &) = delete;
    LocaleContext &operator=(const LocaleContext &) = delete;

    std::string raised() {
        CS_CHAR name[] = "comn_call", value[] = "x%s";
        CS_INT number = -5;
        CsErrParams params;
        com_ep_ssd(&params, name, value, &number);
        EXPECT_EQ(com__error(&context_, 17040898, &params), CS_SUCCEED);
        EXPECT_EQ(raised_code, "22003");
        return raised_text;
    }

private:
    CS_LOCALE locale_;
    CS_CONTEXT context_ = {};
};

class LoadedMessages : public LocaleFixture {
protected:
    LoadedMessages() {
        for (const std::string language : {"german", "us_english"})
            home_.write("locales/message/" + language + "/comnlib.loc", comnlib(language));
        std::filesystem::create_symlink(DLXCOMN_BUILD_DIR "/home/charsets/unicode", home_.path_of("charsets/unicode"));
        EXPECT_EQ(comn_intl_init(context(), file_, ROOM), CS_SUCCEED);
    }
};

TEST_F(LoadedMessages, ComeInTheLanguageAndSetOfTheLocale) {
    LocaleContext utf8(application_, loaded("de.utf8")), latin(application_, loaded("de")),
        english(application_, loaded("default"));
    EXPECT_EQ(utf8.raised(), "comn_call: gemeinsame Bibliothek: f\xC3\xBCr alle: Der Wert \"x%s\" ist ung\xC3\xBCltig: "
                             "-5 \xE2\x82\xAC.");
    EXPECT_EQ(latin.raised(), "comn_call: gemeinsame Bibliothek: f\xFCr alle: Der Wert \"x%s\" ist ung\xFCltig: -5 ?.")
        << "the set has no euro sign";
    EXPECT_EQ(english.raised(), "comn_call: common library: all of them: The value \"x%s\" is bad: -5.");
}

TEST_F(LoadedMessages, AreSharedByContextsAndOutliveThem) {
    CsLocCache *const cache = loaded("de");
    {
        LocaleContext first(application_, cache);
        first.raised();
    }
    home_.remove("locales/message/german/comnlib.loc");
    EXPECT_EQ(cache->locmessage->locerrcnt, 4 + 3);
    CS_LOCALE locale = locale_of(cache);
    CS_CHAR file[] = "comnlib.loc";
    CS_ERRHAN errhan = {&locale, file};
    CS_ERRIDX idx = {CS_ERRTAG_LAYER, 1};
    CS_CHAR *text = nullptr;
    EXPECT_EQ(com_err_msg(context(), &errhan, &idx, &text), CS_SUCCEED);
    EXPECT_STREQ(text, "gemeinsame Bibliothek");
}

TEST_F(LoadedMessages, DegradeToBuiltInTextsWhereTheSetHasNoTable) {
    CsLocCache *const cache = loaded("us.850");
    cache->locchardesc->char_attrib->cs_id = 255; // a set that nobody knows
    CS_LOCALE locale = locale_of(cache);
    context()->ctxlocale = &locale;
    EXPECT_EQ(com_errinit(context()), CS_FAIL);
    EXPECT_EQ(cache->locmessage->locfilecache, nullptr);
    CS_CHAR name[] = "comn_call";
    CsErrParams params;
    com_ep_s(&params, name);
    context()->ctxerrfunc = note;
    EXPECT_EQ(com__error(context(), 17040898, &params), CS_SUCCEED);
    EXPECT_EQ(raised_text,
              "comn_call: unable to get layer message string: unable to get origin message string: unable to "
              "get error string");
    com_errdrop(context());
}

} // namespace
