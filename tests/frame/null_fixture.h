// A context with null values, and what com_null_get stored.
#ifndef TESTS_FRAME_NULL_FIXTURE_H
#define TESTS_FRAME_NULL_FIXTURE_H

#include "support/bare_context.h"
#include "support/convert.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace support {

class ComNull : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(com_null_init(context), CS_SUCCEED); }
    void TearDown() override { drop_user_values(context); }

    // com_null_free leaves the values of user types to their owner.
    static void drop_user_values(CS_CONTEXT *own) {
        while (own->ctxusrnulls != nullptr)
            com_null_reinstall(own, own->ctxusrnulls->dttype);
    }

    struct Got {
        CS_RETCODE status;
        CS_INT length = UNTOUCHED_LENGTH;
        CS_BYTE bytes[300];
        std::string text() const {
            return {reinterpret_cast<const char *>(bytes), static_cast<size_t>(std::max(length, 0))};
        }
        bool untouched_from(size_t from) const {
            return std::all_of(bytes + from, bytes + sizeof bytes, [](CS_BYTE byte) { return byte == UNTOUCHED; });
        }
    };

    // The null value for a destination whose room is `room`.
    Got get(CS_DATAFMT destfmt, CS_INT room) {
        Got got;
        std::memset(got.bytes, UNTOUCHED, sizeof got.bytes);
        got.status = com_null_get(context, &destfmt, got.bytes, room, &got.length);
        return got;
    }
    Got get(CS_INT type, CS_INT room, CS_INT format = 0) { return get(format_of(type, room, format), room); }

    CS_RETCODE set(CS_INT type, const std::string &value) {
        std::string bytes = value;
        return com_null_set(context, type, bytes.data(), static_cast<CS_INT>(bytes.size()));
    }

    std::vector<CS_INT> user_types() {
        std::vector<CS_INT> types;
        for (const CsUsrNull *node = context->ctxusrnulls; node != nullptr; node = node->nextnull)
            types.push_back(node->dttype);
        return types;
    }

    BareContext context;
};

using Types = std::vector<CS_INT>;

} // namespace support

#endif
