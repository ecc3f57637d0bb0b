// Format data files, and what reads their values.
#include "locale_fixture.h"
#include "support/account.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"

#include <optional>

namespace {

using support::FailingAllocator;
using support::NullCalls;
using support::ReturningAssertions;

// ---- Grouping lists -----------------------------------------------------------------------------------------------

class Grouping : public testing::Test {
protected:
    ~Grouping() override { comn_free(numbers_); }

    // Reads a list; its numbers in text, or the status.
    std::string read(const std::string &list) {
        support::write_file(directory_.path_of("file"), "[s]\ngrouping = " + list + "\n");
        INTL_LOCFILE file;
        EXPECT_EQ(intl_open(directory_.path_of("file").c_str(), &file), 0);
        int status = 0;
        EXPECT_NE(intl_nextsection(&file, &status), nullptr);
        EXPECT_NE(intl_nextentry(&file, &status), nullptr);
        comn_free(numbers_);
        numbers_ = &guard_;
        count_ = -5;
        const FailingAllocator allocator(failing_);
        const CS_RETCODE result = comn__read_grp(&file, nullptr, &numbers_, &count_);
        EXPECT_EQ(allocator.held(), numbers_ != nullptr);
        intl_close(&file);
        if (result != CS_SUCCEED) {
            EXPECT_EQ(numbers_, nullptr);
            EXPECT_EQ(count_, 0);
            return "status " + std::to_string(result);
        }
        std::string text;
        for (CS_INT i = 0; i < count_; ++i)
            text += std::to_string(numbers_[i]) + ";";
        return text;
    }

    support::TempDirectory directory_;
    CS_INT guard_ = 0;
    CS_INT *numbers_ = nullptr;
    CS_INT count_ = 0;
    int failing_ = 0;
};

const std::string FAILS = "status " + std::to_string(CS_FAIL);

TEST_F(Grouping, NoListIsNoArray) {
    EXPECT_EQ(read(""), "");
    EXPECT_EQ(numbers_, nullptr);
    EXPECT_EQ(count_, 0);
}

TEST_F(Grouping, MinusOneIsTheWholeList) {
    EXPECT_EQ(read("-1"), "-1;");
    EXPECT_EQ(read("-1, 3, 0"), "-1;") << "whatever follows";
}

TEST_F(Grouping, ListThatBeginsWithZeroOrBelowMinusOneFails) {
    EXPECT_EQ(read("0"), FAILS);
    EXPECT_EQ(read("-2"), FAILS);
    EXPECT_EQ(read("-2, 1"), FAILS);
    EXPECT_EQ(read("x"), FAILS) << "no number is 0";
    EXPECT_EQ(read("\"\""), FAILS);
}

TEST_F(Grouping, SizeAloneFails) { EXPECT_EQ(read("3"), FAILS); }

TEST_F(Grouping, OddityListsOfSizesCannotMeetTheCheck) {
    for (const char *list : {"3, 0", "3, 3", "3, -1", "1, 0", "3, 2, 0", "1, 1, 1, 1, 1, 1, 1, 1", "2147483647, 0"})
        EXPECT_EQ(read(list), FAILS) << list;
}

TEST_F(Grouping, TroubleOfTheReaderIsTold) {
    const std::string trouble = "status " + std::to_string(CS_EINTL);
    EXPECT_EQ(read("\"3"), trouble);
    EXPECT_EQ(read("3, \\xZZ"), trouble);
    EXPECT_EQ(read("3, 2, \"1"), trouble);
}

TEST_F(Grouping, OutOfMemoryIsTold) {
    failing_ = 1;
    EXPECT_EQ(read("-1"), "status " + std::to_string(CS_MEM_ERROR));
    failing_ = 2;
    EXPECT_EQ(read("3, 0"), "status " + std::to_string(CS_MEM_ERROR));
}

TEST_F(Grouping, LongestValueFits) {
    EXPECT_EQ(read(std::string(1000, '0') + "1"), FAILS); // 1, and nothing behind it
    EXPECT_EQ(read("-" + std::string(1000, '0') + "1"), "-1;");
}

using GroupingDeathTest = Grouping;

TEST_F(GroupingDeathTest, NeedsItsOperands) {
    INTL_LOCFILE file = {};
    NullCalls calls;
    const auto call = [](INTL_LOCFILE *ifile, CS_INT **numbers, CS_INT *count) -> long {
        return comn__read_grp(ifile, nullptr, numbers, count);
    };
    calls.add_each("comn__read_grp", call, CS_FAIL, &file, &numbers_, &count_);
    calls.expect_reports("com_locfmt");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(count_, 0); });
}

// ---- Elements of a format -----------------------------------------------------------------------------------------

TEST(FormatElements, FirstOfATypeDecides) {
    ParseStruct last = {2, nullptr, nullptr};
    ParseStruct middle = {3, nullptr, &last};
    ParseStruct first = {2, nullptr, &middle};
    CS_BYTE text[] = "x";
    EXPECT_EQ(comn__chk_format(2, &first, text), CS_TRUE);
    EXPECT_EQ(comn__chk_format(2, &first, nullptr), CS_FALSE);
    EXPECT_EQ(comn__chk_format(3, &first, text), CS_TRUE);
    EXPECT_EQ(comn__chk_format(3, &first, nullptr), CS_FALSE);
}

TEST(FormatElements, NoneIsNoFailure) {
    ParseStruct only = {2, nullptr, nullptr};
    EXPECT_EQ(comn__chk_format(9, &only, nullptr), CS_SUCCEED);
    EXPECT_EQ(comn__chk_format(9, nullptr, nullptr), CS_SUCCEED);
}

// ---- Files --------------------------------------------------------------------------------------------------------

class FormatFiles : public LocaleFixture {
protected:
    FormatFiles() {
        cache_.monname = money_;
        cache_.numname = number_;
        cache_.datename = date_;
    }
    CS_RETCODE load(CS_INT type) { return comn__load_locdata(context(), type, &id_, &cache_, file_, ROOM); }

    CS_CHAR money_[5] = "euro", number_[7] = "dotted", date_[4] = "iso";
    CsOID id_ = {};
    CsLocCache cache_ = {};
};

TEST_F(FormatFiles, AreOpenedByTheirNamesAndFillNothing) {
    EXPECT_EQ(load(CS_LOCDATA_MONEY), CS_SUCCEED);
    EXPECT_EQ(file_, home_.path_of("locales/money/euro.mon"));
    EXPECT_EQ(load(CS_LOCDATA_NUMERIC), CS_SUCCEED);
    EXPECT_EQ(file_, home_.path_of("locales/numeric/dotted.num"));
    EXPECT_EQ(load(CS_LOCDATA_DATETIME), CS_SUCCEED);
    EXPECT_EQ(file_, home_.path_of("locales/datetime/iso.dt"));
    EXPECT_EQ(cache_.locmoninfo, nullptr);
    EXPECT_EQ(cache_.locnuminfo, nullptr);
    EXPECT_EQ(cache_.locdateinfo, nullptr);
}

TEST_F(FormatFiles, TypesAreFourToSix) {
    EXPECT_EQ(CS_LOCDATA_MONEY, 4);
    EXPECT_EQ(CS_LOCDATA_NUMERIC, 5);
    EXPECT_EQ(CS_LOCDATA_DATETIME, 6);
    EXPECT_EQ(load(3), CS_FAIL);
    EXPECT_EQ(load(7), CS_FAIL);
    EXPECT_STREQ(file_, "");
}

TEST_F(FormatFiles, LoadedDatesAreFoundWithoutAFile) {
    CS_DATEINFO info = {};
    info.id = &id_;
    globals().cmg_datetime = &info;
    EXPECT_EQ(load(CS_LOCDATA_DATETIME), CS_SUCCEED);
    EXPECT_EQ(cache_.locdateinfo, &info);
    EXPECT_STREQ(file_, "");
    globals().cmg_datetime = nullptr;
}

TEST_F(FormatFiles, MissingFileTellsItsPath) {
    home_.remove("locales/numeric");
    EXPECT_EQ(load(CS_LOCDATA_NUMERIC), CS_ENOLOCFILE);
    EXPECT_EQ(context()->ctxintlerr, INTL_ECANTOPEN);
    EXPECT_EQ(file_, home_.path_of("locales/numeric/dotted.num"));
}

TEST_F(FormatFiles, PathIsCutToItsRoom) {
    std::string file(16, '~');
    ASSERT_EQ(comn__load_locdata(context(), CS_LOCDATA_MONEY, &id_, &cache_, chars(file), 9), CS_SUCCEED);
    EXPECT_EQ(file, home_.path_of("").substr(0, 8) + '\0' + "~~~~~~~");
    EXPECT_EQ(comn__load_locdata(context(), CS_LOCDATA_MONEY, &id_, &cache_, nullptr, 0), CS_SUCCEED);
}

TEST_F(FormatFiles, PathThatDoesNotFitFails) {
    std::string longest(1024, 'x');
    cache_.monname = chars(longest);
    EXPECT_EQ(load(CS_LOCDATA_MONEY), CS_FAIL);
    EXPECT_STREQ(file_, "");
}

TEST_F(FormatFiles, HomeThatIsNotKnownIsTold) {
    home_.home().put(std::nullopt);
    EXPECT_EQ(load(CS_LOCDATA_MONEY), CS_EINTL);
    EXPECT_EQ(context()->ctxintlerr, INTL_ENOHOME);
}

TEST_F(FormatFiles, LeaveNothingOpenOrAllocated) {
    const FailingAllocator allocator;
    EXPECT_EQ(comn__load_locdata(context(), CS_LOCDATA_MONEY, &id_, &cache_, file_, ROOM), CS_SUCCEED);
    EXPECT_EQ(allocator.held(), 0);
}

using FormatFilesDeathTest = FormatFiles;

TEST_F(FormatFilesDeathTest, NeedTheirOperands) {
    NullCalls calls;
    const auto call = [](CS_CONTEXT *context, CsOID *oid, CsLocCache *cache) -> long {
        return comn__load_locdata(context, CS_LOCDATA_MONEY, oid, cache, nullptr, 0);
    };
    calls.add_each("comn__load_locdata", call, CS_FAIL, context(), &id_, &cache_);
    calls.expect_reports("com_locfmt");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(cache_.locmoninfo, nullptr); });
}

TEST_F(FormatFilesDeathTest, PathNeedsRoomAndAName) {
    EXPECT_BOMB(comn__load_locdata(context(), CS_LOCDATA_MONEY, &id_, &cache_, file_, 0), "com_locfmt");
    CsLocCache nameless = {};
    EXPECT_NULL_REPORT(comn__load_locdata(context(), CS_LOCDATA_MONEY, &id_, &nameless, nullptr, 0), "com_path");
    const ReturningAssertions returning;
    EXPECT_EQ(comn__load_locdata(context(), CS_LOCDATA_MONEY, &id_, &cache_, file_, 0), CS_FAIL);
    EXPECT_EQ(comn__load_locdata(context(), CS_LOCDATA_MONEY, &id_, &nameless, nullptr, 0), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
}

} // namespace
