#include "simulation/simulator/data_values.h"

#include "simconnect/simconnect_api.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t changed = simConnectRequestFlagChanged;
constexpr std::uint32_t tagged = requestFlagTagged;

} // namespace

TEST(DataPayload, FlagsDecideWhatItHolds) {
    const DataValues before{{7, {1, 0}}, {8, {2}}};
    const DataValues now{{7, {1, 0}}, {8, {3}}};
    const Bytes allTagged{7, 0, 0, 0, 1, 0, 8, 0, 0, 0, 3};
    struct Case {
        DataValues before;
        std::uint32_t flags;
        std::size_t count;
        Bytes bytes;
    };
    const Case cases[] = {
        {now, 0, 2, {1, 0, 3}},
        {{}, changed, 2, {1, 0, 3}},
        {before, changed, 2, {1, 0, 3}},
        {now, changed, 0, {}},
        {now, tagged, 2, allTagged},
        {{}, changed | tagged, 2, allTagged},
        {before, changed | tagged, 1, {8, 0, 0, 0, 3}},
        {now, changed | tagged, 0, {}},
        // The second datum is new.
        {{now.front()}, changed | tagged, 1, {8, 0, 0, 0, 3}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(&one - cases);
        const DataPayload payload = payloadOf(now, one.before, one.flags);
        EXPECT_EQ(payload.count, one.count);
        EXPECT_EQ(payload.bytes, one.bytes);
    }
}

TEST(SetBlock, HoldsEveryDatumOrTaggedOnesInAnyOrder) {
    // Each value: the place of its datum, and its bytes.
    using Values = std::vector<std::pair<std::size_t, Bytes>>;
    struct Case {
        bool isTagged;
        Bytes block;
        std::optional<BlockFault> fault;
        Values values;
    };
    const Case cases[] = {
        {false, {1, 2, 3}, {}, {{0, {1, 2}}, {1, {3}}}},
        {false, {1, 2}, BlockFault::WrongSize, {}},
        {false, {1, 2, 3, 4}, BlockFault::WrongSize, {}},
        {true, {8, 0, 0, 0, 3, 7, 0, 0, 0, 1, 2}, {}, {{1, {3}}, {0, {1, 2}}}},
        {true, {8, 0, 0, 0, 3}, {}, {{1, {3}}}},
        {true, {}, {}, {}},
        {true, {9, 0, 0, 0, 3}, BlockFault::UnknownDatum, {}},
        {true, {7, 0, 0, 0, 1}, BlockFault::WrongSize, {}},
        {true, {8, 0, 0, 0, 3, 7, 0, 0}, BlockFault::WrongSize, {}},
    };
    const std::vector<DatumShape> shapes{{7, 2}, {8, 1}};
    for (const Case& one : cases) {
        SCOPED_TRACE(&one - cases);
        const SetValues set = valuesOf(one.block, shapes, one.isTagged);
        EXPECT_EQ(set.fault, one.fault);
        Values values;
        for (const SetValue& value : set.values) {
            values.emplace_back(value.datum, Bytes(value.bytes.begin(), value.bytes.end()));
        }
        EXPECT_EQ(values, one.values);
    }
}
