// dlxcomn message, and the numbers that it takes.
#include "command/message_text.h"
#include "command_fixture.h"

namespace {

using client::parse_message_number;
using Message = CommandTest;
using SiteMessage = SiteTest;

TEST_F(Message, IsTakenApartAndRaised) {
    EXPECT_DONE(dlxcomn({"message", "0x01040602", "--locale", "de_DE.UTF-8"}),
                "message    17040898 (0x01040602) in the locale de_DE.UTF-8\n"
                "layer        1  Client\n"
                "origin       4  gemeinsame Bibliothek\n"
                "severity     6\n"
                "number       2\n"
                "SQLSTATE   HY001\n"
                "text       dlxcomn: Client: gemeinsame Bibliothek: der Speicher reicht nicht aus\n");
}

TEST_F(Message, NumberMayBeDecimal) {
    EXPECT_DONE(dlxcomn({"message", "17040898"}), dlxcomn({"message", "0X1040602"}).output);
    EXPECT_THAT(dlxcomn({"message", "17040898"}).output, StartsWith("message    17040898 (0x01040602) in the locale "
                                                                    "default\n"));
}

TEST_F(Message, TextComesFromTheSetOfTheLocale) {
    for (const char *locale : {"ru_RU", "ru_RU.KOI8-R", "ru_RU.UTF-8"}) {
        const auto outcome = dlxcomn({"message", "17040898", "--locale", locale});
        EXPECT_EQ(outcome.exit_code, 0);
        EXPECT_THAT(outcome.output, HasSubstr("origin       4  общая библиотека\n")) << locale;
    }
}

TEST_F(Message, ParametersFillTheText) {
    EXPECT_THAT(dlxcomn({"message", "0x01040603", "--locale", "en_US", "/etc/a%s.cfg"}).output,
                HasSubstr("\"/etc/a%s.cfg\""));
    const std::string syntax = dlxcomn({"message", "0x01040608", "--locale", "en_US", "12", "}"}).output;
    EXPECT_THAT(syntax, HasSubstr("syntax error in line 12 near \"}\"\n"));
    EXPECT_THAT(dlxcomn({"message", "0x01040608", "--locale", "en_US"}).output,
                HasSubstr("syntax error in line %1! near \"%2!\"\n"));
    EXPECT_MISUSED(dlxcomn({"message", "0x01040608", "a", "b", "c"}), "a message has two parameters at most");
}

TEST_F(Message, NumberWithoutATextIsADefault) {
    const auto outcome = dlxcomn({"message", "0x090803FF", "--locale", "en_US"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_THAT(outcome.output, HasSubstr("\nlayer        9\norigin       8\nseverity     3\nnumber     255\n"
                                          "SQLSTATE   ZZZZZ\ntext       dlxcomn: "));
}

TEST_F(Message, OfTheLocalizationLibraryIsItsText) {
    const auto outcome = dlxcomn({"message", "0x01050605", "--locale", "en_US"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_THAT(outcome.output, HasSubstr(": localization library: an entry has no \"=\"\n"));
    EXPECT_MISUSED(dlxcomn({"message", "0x01050605", "x"}),
                   "messages of origin 5 are those of the localization library and take no parameter");
}

TEST_F(Message, IsThatOfTheEnvironmentWhereTheHomeHasIt) {
    lang_.put("fr_FR.UTF-8");
    EXPECT_THAT(dlxcomn({"message", "17040898"}).output, HasSubstr("in the locale fr_FR.UTF-8\n"));
    lang_.put("C.utf-8");
    EXPECT_THAT(dlxcomn({"message", "17040898"}).output, HasSubstr("in the locale default\n"));
    EXPECT_MISUSED(dlxcomn({"message", "17040898", "--locale", "C.utf-8"}),
                   "no locale \"C.utf-8\"; did you mean C.UTF-8? `dlxcomn locales` lists them");
}

TEST_F(Message, WantsANumber) {
    EXPECT_MISUSED(dlxcomn({"message"}), "message wants a NUMBER");
    for (const char *wrong : {"", "x", "0x", "12a", "-1", "4294967296", "0x100000000", "1.5"})
        EXPECT_EQ(dlxcomn({"message", "--", wrong}).exit_code, 2) << wrong;
    EXPECT_MISUSED(dlxcomn({"message", "1x"}),
                   "\"1x\" is no message number; it takes one of 32 bits, such as 0x01040602");
    EXPECT_THAT(dlxcomn({"message", "--help"}).output, StartsWith("usage: dlxcomn message NUMBER "));
}

TEST(MessageNumber, IsDecimalOrHexadecimal) {
    EXPECT_EQ(parse_message_number("0"), 0u);
    EXPECT_EQ(parse_message_number("17040898"), 0x01040602u);
    EXPECT_EQ(parse_message_number("4294967295"), 0xFFFFFFFFu);
    EXPECT_EQ(parse_message_number("0xfFfFfFfF"), 0xFFFFFFFFu);
    EXPECT_EQ(parse_message_number("0x-1"), std::nullopt);
    EXPECT_EQ(parse_message_number(" 1"), std::nullopt);
}

TEST_F(SiteMessage, CatalogThatIsNotRightIsTold) {
    const std::string file = "locales/message/german/comnlib.loc";
    const auto raise = [] { return dlxcomn({"message", "17040898", "--locale", "de_DE"}); };
    const std::string sound = content_of(file);
    change(file, "[comorigin]", "[comorigins]");
    auto outcome = raise();
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_THAT(outcome.errors, StartsWith("dlxcomn: " + path_of(file) + ":"));
    EXPECT_THAT(outcome.errors, HasSubstr("this line is wrong, or something is missing in front of it"));
    write(file, sound);
    change(file, "[comorigin]", "[comorigin");
    EXPECT_FAILED(raise(), path_of(file) + ":" + std::to_string(line_of(file, "[comorigin")) +
                               ": a section line is not of the form [name]");
    remove(file);
    EXPECT_FAILED(raise(), path_of(file) + ": the file cannot be opened");
}

} // namespace
