#include "tests/unit/hid/hid_fixture.h"

namespace {

class HidManagerIdentity : public HidFixture {
public:
    /// Connects one board of that model and those faults alone, and gives its name.
    std::string nameOf(const VirtualBoardModel& model, const HidLinkFaults& faults = {}) {
        const auto single = std::make_shared<VirtualBoard>(model);
        bus.setFaults(single, faults);
        bus.plug(single, "board");
        log.clear();
        manager->scanDevices();
        const auto found = devices();
        bus.unplug(single);
        return found.size() == 1 ? found[0].first : "not connected";
    }
};

VirtualBoardModel modelOf(const std::optional<HidProtocol::BoardId>& boardId, const std::string& serial) {
    VirtualBoardModel model;
    model.boardId = boardId;
    model.serial = serial;
    return model;
}

HidProtocol::Report reply(std::uint8_t reportId) {
    HidProtocol::Report report{};
    report.fill(0x11);
    report[0] = reportId;
    return report;
}

constexpr HidProtocol::BoardId boardId{0x01, 0xAB, 0x00, 0xFF, 0x10, 0x20, 0x30, 0x0C};

} // namespace

TEST_F(HidManagerIdentity, IsTheBoardIdElseTheSerialNumberElseThePath) {
    start();
    EXPECT_EQ(nameOf(modelOf(boardId, "SN-77")), "01AB00FF1020300C");
    EXPECT_EQ(nameOf(modelOf(HidProtocol::BoardId{}, "SN-77")), "0000000000000000");
    EXPECT_EQ(nameOf(modelOf(boardId, "SN-77"), {.failingFeatures = {0x20}}), "SN-77");
    EXPECT_EQ(nameOf(modelOf(boardId, "SN-77"), {.featureReplies = {{0x20, reply(0x21)}}}), "SN-77");
    EXPECT_EQ(nameOf(modelOf(std::nullopt, "S\xC3\xA9rie 7")), "S\xC3\xA9rie 7");
    EXPECT_EQ(nameOf(modelOf(std::nullopt, "")), "board#0006");
    EXPECT_EQ(nameOf(modelOf(std::nullopt, "SN-77"), {.serialFails = true}), "board#0007");
    EXPECT_EQ(log.lines().back(), "[INFO] HID device connected: board#0007 index=6");
    EXPECT_EQ(log.linesWith("WARN"), Lines());
}

TEST_F(HidManagerIdentity, ProtocolInfoIsLoggedOnTheDebugChannel) {
    start();
    auto model = modelOf(boardId, "");
    const auto protocolLines = [&](const HidProtocol::ProtocolInfo& info, const HidLinkFaults& faults = {}) {
        model.protocolInfo = info;
        nameOf(model, faults);
        return log.linesWith("HID protocol info");
    };
    const std::string head = "[DEBUG] HID protocol info: device=01AB00FF1020300C ";
    EXPECT_EQ(protocolLines({1, 12, 0x0A}), (Lines{head + "proto=1.12 flags=0x0A"}));
    EXPECT_EQ(protocolLines({255, 0, 0xFF}), (Lines{head + "proto=255.0 flags=0xFF"}));
    EXPECT_EQ(protocolLines({1, 2, 3}, {.featureReplies = {{0x21, reply(0x20)}}}), Lines());
    EXPECT_EQ(protocolLines({1, 2, 3}, {.failingFeatures = {0x21}}), Lines());
    Logger::instance().setDebugEnabled(false);
    manager->setTraceEnabled(true);
    EXPECT_EQ(protocolLines({1, 2, 3}), Lines());
}
