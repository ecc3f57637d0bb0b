// The typed values of a localization file, from files of the tests' own.
#include "support/memory_file.h"
#include "support/null_calls.h"

#include <dlxcomn/dlxcomn.h>
#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using support::ReturningAssertions;
using namespace std::string_literals;

// A reader that stands on an entry with these values.
class LocValue : public testing::Test {
protected:
    ~LocValue() override { intl_close(&file_); }

    INTL_LOCFILE *values(const std::string &list) {
        intl_close(&file_);
        const support::MemoryFile memory("[s]\nk = " + list + "\n");
        int status = 0;
        EXPECT_EQ(intl_open(memory.path(), &file_), INTL_OK);
        EXPECT_NE(intl_nextsection(&file_, &status), nullptr);
        EXPECT_NE(intl_nextentry(&file_, &status), nullptr);
        context_.ctxintlerr = 0;
        return &file_;
    }

    CS_CONTEXT context_ = {};
    INTL_LOCFILE file_ = {};
};

// ---- Numbers --------------------------------------------------------------------------------------------------

class LocNumber : public LocValue {
protected:
    int byte_of(const std::string &list) {
        CS_BYTE number = 0xEE;
        EXPECT_EQ(comn__get_byteval(&context_, values(list), &number), CS_SUCCEED);
        return number;
    }
    int short_of(const std::string &list) {
        CS_SMALLINT number = 0x7EEE;
        EXPECT_EQ(comn__get_shortval(&context_, values(list), &number), CS_SUCCEED);
        return number;
    }
    CS_INT long_of(const std::string &list) {
        CS_INT number = 0x7EEEEEEE;
        EXPECT_EQ(comn__get_longval(&context_, values(list), &number), CS_SUCCEED);
        return number;
    }
};

TEST_F(LocNumber, ByteIsTheFirstOfTheValue) {
    EXPECT_EQ(byte_of("\\x01"), 1);
    EXPECT_EQ(byte_of("\\xff\\x01"), 0xFF);
    EXPECT_EQ(byte_of("1"), '1') << "a digit is a byte like any other";
    EXPECT_EQ(byte_of("\"\\x01\""), '\\') << "nothing is decoded in quotes";
}

TEST_F(LocNumber, ShortIsTwoBytesWithTheFirstOneHigh) {
    EXPECT_EQ(short_of("\\x12\\x34"), 0x1234);
    EXPECT_EQ(short_of("\\x12\\x34\\x56"), 0x1234);
    EXPECT_EQ(short_of("\\x80\\x00"), -32768);
    EXPECT_EQ(short_of("\\xff\\xff"), -1);
    EXPECT_EQ(short_of("AB"), 0x4142);
}

TEST_F(LocNumber, ShortNeedNotBeAligned) {
    CS_BYTE room[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(comn__get_shortval(&context_, values("\\x12\\x34"), room + 1), CS_SUCCEED);
    const CS_SMALLINT expected = 0x1234;
    EXPECT_EQ(std::memcmp(room + 1, &expected, sizeof expected), 0);
    EXPECT_EQ(room[0], 0xEE);
    EXPECT_EQ(room[3], 0xEE);
}

TEST_F(LocNumber, LongIsFourBytesWithTheFirstOneHighest) {
    EXPECT_EQ(long_of("\\x00\\x00\\x05\\x05"), 1285);
    EXPECT_EQ(long_of("\\x12\\x34\\x56\\x78\\x9a"), 0x12345678);
    EXPECT_EQ(long_of("\\x80\\x00\\x00\\x00"), -0x7FFFFFFF - 1);
    EXPECT_EQ(long_of("\\xff\\xff\\xff\\xfe"), -2);
}

TEST_F(LocNumber, BytesThatTheValueDoesNotHaveCountAs0) {
    EXPECT_EQ(byte_of(","), 0);
    EXPECT_EQ(short_of(","), 0);
    EXPECT_EQ(short_of("\\x12"), 0x1200);
    EXPECT_EQ(long_of(","), 0);
    EXPECT_EQ(long_of("\\x12"), 0x12000000);
    EXPECT_EQ(long_of("\\x12\\x34"), 0x12340000);
    EXPECT_EQ(long_of("\\x12\\x34\\x56"), 0x12345600);
}

TEST_F(LocNumber, BytesOfAnEarlierValueDoNotCount) {
    INTL_LOCFILE *file = values("\\x11\\x22\\x33\\x44\\x55, \\x66, \\x77");
    CS_INT number = 0;
    EXPECT_EQ(comn__get_longval(&context_, file, &number), CS_SUCCEED);
    EXPECT_EQ(number, 0x11223344);
    EXPECT_EQ(comn__get_longval(&context_, file, &number), CS_SUCCEED);
    EXPECT_EQ(number, 0x66000000);
    CS_SMALLINT half = 0;
    EXPECT_EQ(comn__get_shortval(&context_, file, &half), CS_SUCCEED);
    EXPECT_EQ(half, 0x7700);
}

TEST_F(LocNumber, EachTakesTheNextValue) {
    INTL_LOCFILE *file = values("\\x01, \\x02\\x03, \\x04\\x05\\x06\\x07");
    CS_BYTE byte = 0;
    CS_SMALLINT half = 0;
    CS_INT number = 0;
    EXPECT_EQ(comn__get_byteval(&context_, file, &byte), CS_SUCCEED);
    EXPECT_EQ(comn__get_shortval(&context_, file, &half), CS_SUCCEED);
    EXPECT_EQ(comn__get_longval(&context_, file, &number), CS_SUCCEED);
    EXPECT_EQ(byte, 1);
    EXPECT_EQ(half, 0x0203);
    EXPECT_EQ(number, 0x04050607);
}

// ---- Texts ----------------------------------------------------------------------------------------------------

class LocText : public LocValue {
protected:
    static constexpr int LIMIT = 6;
    // The text, or "fail"; nothing is written behind the limit.
    std::string text_of(const std::string &list, CS_BOOL is_alnum) {
        std::string room(12, '~');
        const CS_RETCODE status = comn__get_string(&context_, values(list), room.data(), is_alnum, LIMIT);
        EXPECT_EQ(room.substr(LIMIT), "~~~~~~");
        EXPECT_EQ(context_.ctxintlerr, 0);
        if (status != CS_SUCCEED) {
            EXPECT_EQ(status, CS_FAIL);
            return "fail";
        }
        return room.c_str();
    }
    std::string free_form(const std::string &list) { return text_of(list, CS_FALSE); }
    std::string identifier(const std::string &list) { return text_of(list, CS_TRUE); }
};

TEST_F(LocText, LongestIsOneByteLessThanTheLimit) {
    for (const CS_BOOL is_alnum : {CS_FALSE, CS_TRUE}) {
        EXPECT_EQ(text_of("abcde", is_alnum), "abcde");
        EXPECT_EQ(text_of("abcdef", is_alnum), "fail");
        EXPECT_EQ(text_of("abcdefg", is_alnum), "fail");
        EXPECT_EQ(text_of("a", is_alnum), "a");
    }
}

TEST_F(LocText, FreeFormTakesAnyBytes) {
    EXPECT_EQ(free_form(" 1 - \\xff "), "1 - \xFF");
    EXPECT_EQ(free_form("\" a \""), " a ");
    EXPECT_EQ(free_form(","), "");
}

TEST_F(LocText, NulEndsTheTextButCountsForTheLimit) {
    EXPECT_EQ(free_form("ab\\x00cd"), "ab");
    EXPECT_EQ(free_form("ab\\x00cde"), "ab");
    EXPECT_EQ(free_form("ab\\x00cdef"), "fail");
}

TEST_F(LocText, IdentifierBeginsWithALetter) {
    EXPECT_EQ(identifier("iso_1"), "iso_1");
    EXPECT_EQ(identifier("Z9_"), "Z9_");
    EXPECT_EQ(identifier("1iso"), "fail");
    EXPECT_EQ(identifier("_iso"), "fail");
    EXPECT_EQ(identifier(","), "fail");
}

TEST_F(LocText, IdentifierIsLettersDigitsAndUnderscores) {
    for (int c = 0; c < 256; ++c) {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", c);
        const auto byte = static_cast<CS_BYTE>(c);
        const bool is_letter = com_isalpha(byte) != 0;
        const bool is_inner = is_letter || com_isdigit(byte) != 0 || c == '_';
        EXPECT_EQ(identifier(escaped) != "fail", is_letter) << c;
        EXPECT_EQ(identifier(std::string("a") + escaped + "b") != "fail", is_inner) << c;
    }
}

TEST_F(LocText, OddityLettersAreThoseOfIso1WithWhatCountsAsSuchThere) {
    EXPECT_EQ(identifier("\\xe4x"), "\xE4x");
    EXPECT_EQ(identifier("\\xa0x"), "\xA0x");
    EXPECT_EQ(identifier("\\x80x"), "fail");
}

TEST_F(LocText, WithoutADestinationAnyValueIsTakenAndDropped) {
    INTL_LOCFILE *file = values("a text of more than the limit, -, next");
    EXPECT_EQ(comn__get_string(&context_, file, nullptr, CS_FALSE, 3), CS_SUCCEED);
    EXPECT_EQ(comn__get_string(&context_, file, nullptr, CS_TRUE, 3), CS_SUCCEED);
    CS_CHAR next[8] = "";
    EXPECT_EQ(comn__get_string(&context_, file, next, CS_TRUE, 8), CS_SUCCEED);
    EXPECT_STREQ(next, "next");
}

TEST_F(LocText, WithoutRoomNothingIsWritten) {
    for (const CS_INT limit : {0, -1}) {
        CS_CHAR room[4] = "~~~";
        EXPECT_EQ(comn__get_string(&context_, values("a"), room, CS_FALSE, limit), CS_FAIL);
        EXPECT_EQ(comn__get_string(&context_, values(","), room, CS_FALSE, limit), CS_FAIL);
        EXPECT_STREQ(room, "~~~");
    }
}

// ---- Truth ----------------------------------------------------------------------------------------------------

TEST_F(LocValue, TruthIsOneOfTwoWords) {
    int truth = -77;
    EXPECT_EQ(comn__get_boolval(&context_, values("true"), &truth), CS_SUCCEED);
    EXPECT_EQ(truth, 1);
    EXPECT_EQ(comn__get_boolval(&context_, values("\"false\""), &truth), CS_SUCCEED);
    EXPECT_EQ(truth, 0);
    truth = -77;
    for (const char *other : {",", "True", "FALSE", "tru", "truer", "1", "0", "yes", "true\\x00", "\\x00"}) {
        EXPECT_EQ(comn__get_boolval(&context_, values(other), &truth), CS_FAIL) << other;
        EXPECT_EQ(truth, -77);
    }
}

// ---- No value -------------------------------------------------------------------------------------------------

class LocNoValue : public LocValue {
protected:
    // Each reader on a list without a next value.
    void expect_all(const std::string &list, CS_RETCODE status, int code) {
        CS_BYTE byte = 0xEE;
        CS_SMALLINT half = 0x7EEE;
        CS_INT number = 0x7EEEEEEE;
        int truth = -77;
        CS_CHAR text[4] = "~~~";
        EXPECT_EQ(comn__get_byteval(&context_, values(list), &byte), status);
        EXPECT_EQ(context_.ctxintlerr, code);
        EXPECT_EQ(comn__get_shortval(&context_, values(list), &half), status);
        EXPECT_EQ(context_.ctxintlerr, code);
        EXPECT_EQ(comn__get_longval(&context_, values(list), &number), status);
        EXPECT_EQ(context_.ctxintlerr, code);
        EXPECT_EQ(comn__get_boolval(&context_, values(list), &truth), status);
        EXPECT_EQ(context_.ctxintlerr, code);
        for (CS_CHAR *string : {static_cast<CS_CHAR *>(text), static_cast<CS_CHAR *>(nullptr)})
            for (const CS_BOOL is_alnum : {CS_FALSE, CS_TRUE}) {
                EXPECT_EQ(comn__get_string(&context_, values(list), string, is_alnum, 4), status);
                EXPECT_EQ(context_.ctxintlerr, code);
            }
        EXPECT_EQ(byte, 0xEE);
        EXPECT_EQ(half, 0x7EEE);
        EXPECT_EQ(number, 0x7EEEEEEE);
        EXPECT_EQ(truth, -77);
        EXPECT_STREQ(text, "~~~");
    }
};

TEST_F(LocNoValue, EndOfTheListFails) { expect_all("", CS_FAIL, 0); }

TEST_F(LocNoValue, FailureOfTheReaderIsTold) {
    expect_all("\"open", CS_EINTL, INTL_EUNTERMINATED);
    expect_all("\\xZ", CS_EINTL, INTL_EBADESCAPE);
}

// ---- Broken contracts -----------------------------------------------------------------------------------------

class ValueOperands {
public:
    explicit ValueOperands(support::NullCalls &calls) {
        NULL_CALLS(calls, comn__get_byteval, CS_FAIL, &context_, &file_, &byte_);
        NULL_CALLS(calls, comn__get_shortval, CS_FAIL, &context_, &file_, static_cast<CS_VOID *>(&half_));
        NULL_CALLS(calls, comn__get_longval, CS_FAIL, &context_, &file_, &number_);
        NULL_CALLS(calls, comn__get_boolval, CS_FAIL, &context_, &file_, &truth_);
        calls.add(
            "comn__get_string", [this] { return comn__get_string(nullptr, &file_, text_, CS_FALSE, 4); }, CS_FAIL);
        calls.add(
            "comn__get_string", [this] { return comn__get_string(&context_, nullptr, text_, CS_FALSE, 4); }, CS_FAIL);
    }
    bool are_untouched() const {
        return byte_ == 0xEE && half_ == 0x7EEE && number_ == -77 && truth_ == -77 && text_ == "~~~"s;
    }

private:
    CS_CONTEXT context_ = {};
    INTL_LOCFILE file_ = {};
    CS_BYTE byte_ = 0xEE;
    CS_SMALLINT half_ = 0x7EEE;
    CS_INT number_ = -77;
    int truth_ = -77;
    CS_CHAR text_[4] = "~~~";
};

TEST(LocValueDeathTest, MissingPointersAreReported) {
    support::NullCalls calls;
    const ValueOperands operands(calls);
    calls.expect_reports("locvalue");
}

TEST(LocValueContracts, MissingPointersFailWhereAssertionsReturn) {
    support::NullCalls calls;
    const ValueOperands operands(calls);
    calls.expect_answers([] {}, [&] { EXPECT_TRUE(operands.are_untouched()); });
}

TEST(LocValueDeathTest, FormOfATextIsOneOfTwo) {
    CS_CONTEXT context = {};
    INTL_LOCFILE file = {};
    CS_CHAR text[4];
    EXPECT_BOMB(comn__get_string(&context, &file, text, 2, 4), "locvalue");
    EXPECT_BOMB(comn__get_string(&context, &file, nullptr, -1, 4), "locvalue");
}

TEST_F(LocValue, OtherFormOfATextFailsAndTakesNothingWhereAssertionsReturn) {
    CS_CHAR text[4] = "~~~";
    INTL_LOCFILE *file = values("abc");
    {
        ReturningAssertions returning;
        EXPECT_EQ(comn__get_string(&context_, file, text, 2, 4), CS_FAIL);
        EXPECT_EQ(comn__get_string(&context_, file, nullptr, -1, 4), CS_FAIL);
        EXPECT_EQ(returning.count(), 2);
    }
    EXPECT_STREQ(text, "~~~");
    EXPECT_EQ(comn__get_string(&context_, file, text, CS_TRUE, 4), CS_SUCCEED);
    EXPECT_STREQ(text, "abc");
}

} // namespace
