#include "simulation/simulator/data_values.h"

#include "simconnect/simconnect_api.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t changed = simConnectRequestFlagChanged;
constexpr std::uint32_t tagged = requestFlagTagged;

const DataValues before{{7, {1, 0}}, {8, {2}}};
const DataValues now{{7, {1, 0}}, {8, {3}}};

void expectPayload(const DataPayload& payload, std::size_t count, const Bytes& bytes) {
    EXPECT_EQ(payload.count, count);
    EXPECT_EQ(payload.bytes, bytes);
}

TEST(DataPayload, UntaggedHoldsAllValuesInTheirOrder) {
    expectPayload(payloadOf(now, now, 0), 2, {1, 0, 3});
    expectPayload(payloadOf(now, {}, changed), 2, {1, 0, 3});
    expectPayload(payloadOf(now, before, changed), 2, {1, 0, 3});
}

TEST(DataPayload, UnchangedValuesMakeNone) {
    expectPayload(payloadOf(now, now, changed), 0, {});
    expectPayload(payloadOf(now, now, changed | tagged), 0, {});
}

TEST(DataPayload, TaggedHasEachValueBehindItsId) {
    const Bytes both{7, 0, 0, 0, 1, 0, 8, 0, 0, 0, 3};
    expectPayload(payloadOf(now, now, tagged), 2, both);
    expectPayload(payloadOf(now, {}, changed | tagged), 2, both);
}

TEST(DataPayload, TaggedAndChangedHasOnlyWhatDiffers) {
    expectPayload(payloadOf(now, before, changed | tagged), 1, {8, 0, 0, 0, 3});
}

TEST(DataPayload, DatumThatWasAddedSinceIsNew) {
    expectPayload(payloadOf(now, {now.front()}, changed | tagged), 1, {8, 0, 0, 0, 3});
}

const std::vector<DatumShape> shapes{{7, 2}, {8, 1}};

// Each value: the place of its datum, and its bytes.
std::vector<std::pair<std::size_t, Bytes>> read(const Bytes& block, bool isTagged) {
    const SetValues set = valuesOf(block, shapes, isTagged);
    EXPECT_FALSE(set.fault);
    std::vector<std::pair<std::size_t, Bytes>> values;
    for (const SetValue& value : set.values) {
        values.emplace_back(value.datum, Bytes(value.bytes.begin(), value.bytes.end()));
    }
    return values;
}

std::optional<BlockFault> faultOf(const Bytes& block, bool isTagged) {
    const SetValues set = valuesOf(block, shapes, isTagged);
    EXPECT_TRUE(set.values.empty());
    return set.fault;
}

using Values = std::vector<std::pair<std::size_t, Bytes>>;

TEST(SetBlock, UntaggedHoldsEveryDatum) {
    EXPECT_EQ(read({1, 2, 3}, false), (Values{{0, {1, 2}}, {1, {3}}}));
    EXPECT_EQ(faultOf({1, 2}, false), BlockFault::WrongSize);
    EXPECT_EQ(faultOf({1, 2, 3, 4}, false), BlockFault::WrongSize);
}

TEST(SetBlock, TaggedHoldsAnyDatumInAnyOrder) {
    EXPECT_EQ(read({8, 0, 0, 0, 3, 7, 0, 0, 0, 1, 2}, true), (Values{{1, {3}}, {0, {1, 2}}}));
    EXPECT_EQ(read({8, 0, 0, 0, 3}, true), (Values{{1, {3}}}));
    EXPECT_EQ(read({}, true), Values());
}

TEST(SetBlock, TaggedBlockMustEndWithAValueOfAKnownDatum) {
    EXPECT_EQ(faultOf({9, 0, 0, 0, 3}, true), BlockFault::UnknownDatum);
    EXPECT_EQ(faultOf({7, 0, 0, 0, 1}, true), BlockFault::WrongSize);
    EXPECT_EQ(faultOf({8, 0, 0, 0, 3, 7, 0, 0}, true), BlockFault::WrongSize);
}

} // namespace
