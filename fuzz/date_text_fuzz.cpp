// Date text in a chosen set, read by each function from a buffer without a spare byte, against the naive reading; the
// names of months are the English ones, missing, or taken from the input.
#include "character_set.h"
#include "support/date_comparison.h"

#include <array>
#include <vector>

namespace {

// One byte chooses; names of the input have a length byte and their own buffers, so that none is read past its NUL.
class ChosenNames {
public:
    explicit ChosenNames(fuzz::Input &input) {
        const int kind = input.byte() % 5;
        months_ = kind == 0 ? nullptr : com__get_months();
        shortmonths_ = kind == 1 ? nullptr : com__get_shortmonths();
        if (kind != 4)
            return;
        for (std::size_t month = 0; month < list_.size(); ++month) {
            std::string name;
            for (int length = input.byte() % 40; length > 0; --length)
                if (const CS_BYTE c = input.byte(); c != 0)
                    name += static_cast<char>(c);
            names_.emplace_back(name.size() + 1, name);
            list_[month] = reinterpret_cast<char *>(names_.back().get());
        }
        shortmonths_ = list_.data();
    }
    char **months() const { return months_; }
    char **shortmonths() const { return shortmonths_; }

private:
    char **months_;
    char **shortmonths_;
    std::vector<fuzz::ExactBuffer> names_;
    std::array<char *, 12> list_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static constexpr int TYPES[] = {CS_DATETIME_TYPE, CS_BIGDATETIME_TYPE, CS_BIGTIME_TYPE, CS_DATE_TYPE};
    fuzz::Input input(data, size);
    fuzz::ChosenSet set(input);
    const ChosenNames names(input);
    support::naive::DateRules rules;
    rules.style = input.byte() - 1;
    rules.order = input.byte() % 9 - 1;
    const int wanted = input.byte();
    rules.partonly = wanted % 4;
    rules.type = TYPES[wanted / 4 % 4];
    rules.months = names.months();
    rules.shortmonths = names.shortmonths();
    rules.set = set.get();
    FUZZ_CHECK(support::DateComparison(input.rest(), rules).any_difference() == nullptr);
    return 0;
}
