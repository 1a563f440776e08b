#include "tests/unit/hid/hid_fixture.h"

namespace {

class HidManagerIdentity : public HidFixture {
public:
    /// Connects one board of that model and those faults, and gives its name.
    std::string nameOf(const VirtualBoardModel& model, const HidLinkFaults& faults = {}) {
        const auto board = std::make_shared<VirtualBoard>(model);
        bus.setFaults(board, faults);
        bus.plug(board);
        start();
        const auto devices = manager->listDevices();
        return devices.size() == 1 ? devices[0].deviceName : "not connected";
    }
};

VirtualBoardModel namedModel() {
    VirtualBoardModel model;
    model.boardId = HidProtocol::BoardId{0x01, 0xAB, 0x00, 0xFF, 0x10, 0x20, 0x30, 0x0C};
    model.serial = "SN-77";
    return model;
}

VirtualBoardModel bareModel() {
    VirtualBoardModel model;
    model.boardId.reset();
    return model;
}

HidProtocol::Report reply(std::uint8_t reportId) {
    HidProtocol::Report report{};
    report.fill(0x11);
    report[0] = reportId;
    return report;
}

} // namespace

TEST_F(HidManagerIdentity, BoardIdComesFirst) {
    EXPECT_EQ(nameOf(namedModel()), "01AB00FF1020300C");
}

TEST_F(HidManagerIdentity, SerialComesNextWhenDeviceInfoFails) {
    EXPECT_EQ(nameOf(namedModel(), {.failingFeatures = {0x20}}), "SN-77");
}

TEST_F(HidManagerIdentity, SerialComesNextWhenDeviceInfoHasAnotherId) {
    EXPECT_EQ(nameOf(namedModel(), {.featureReplies = {{0x20, reply(0x21)}}}), "SN-77");
}

TEST_F(HidManagerIdentity, PathComesLast) {
    EXPECT_EQ(nameOf(bareModel()), "port#0001");
}

TEST_F(HidManagerIdentity, PathComesLastWhenTheSerialCanNotBeRead) {
    auto model = bareModel();
    model.serial = "SN-77";
    EXPECT_EQ(nameOf(model, {.serialFails = true}), "port#0001");
}

TEST_F(HidManagerIdentity, EmptySerialCountsAsNone) {
    auto model = bareModel();
    model.serial = "";
    EXPECT_EQ(nameOf(model), "port#0001");
}

TEST_F(HidManagerIdentity, SerialMayHoldAnyText) {
    auto model = bareModel();
    model.serial = "S\xC3\xA9rie 7";
    EXPECT_EQ(nameOf(model), "S\xC3\xA9rie 7");
}

TEST_F(HidManagerIdentity, BoardIdOfZerosIsAName) {
    VirtualBoardModel model;
    model.boardId = HidProtocol::BoardId{};
    model.serial = "SN-77";
    EXPECT_EQ(nameOf(model), "0000000000000000");
}

TEST_F(HidManagerIdentity, UnavailableIdentityIsNotWorthAMessage) {
    nameOf(bareModel());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device connected: port#0001 index=0"}));
}

TEST_F(HidManagerIdentity, ProtocolInfoIsLogged) {
    auto model = namedModel();
    model.protocolInfo = HidProtocol::ProtocolInfo{1, 12, 0x0A};
    nameOf(model);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device connected: 01AB00FF1020300C index=0",
                                  "[DEBUG] HID protocol info: device=01AB00FF1020300C proto=1.12 flags=0x0A"}));
}

TEST_F(HidManagerIdentity, ProtocolNumbersAreDecimalUpTo255) {
    auto model = namedModel();
    model.protocolInfo = HidProtocol::ProtocolInfo{255, 0, 0xFF};
    nameOf(model);
    EXPECT_TRUE(log.has("[DEBUG] HID protocol info: device=01AB00FF1020300C proto=255.0 flags=0xFF"));
}

TEST_F(HidManagerIdentity, ProtocolInfoNeedsOnlyTheDebugChannel) {
    Logger::instance().setDebugEnabled(false);
    auto model = namedModel();
    model.protocolInfo = HidProtocol::ProtocolInfo{1, 2, 3};
    manager->setTraceEnabled(true);
    nameOf(model);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device connected: 01AB00FF1020300C index=0"}));
}

TEST_F(HidManagerIdentity, ProtocolInfoOfAnotherIdIsIgnored) {
    auto model = namedModel();
    nameOf(model, {.featureReplies = {{0x21, reply(0x20)}}});
    EXPECT_EQ(log.linesWith("HID protocol info"), Lines());
}

TEST_F(HidManagerIdentity, ProtocolInfoThatCanNotBeReadIsIgnored) {
    auto model = namedModel();
    model.protocolInfo = HidProtocol::ProtocolInfo{1, 2, 3};
    nameOf(model, {.failingFeatures = {0x21}});
    EXPECT_EQ(log.linesWith("HID protocol info"), Lines());
}

TEST_F(HidManagerIdentity, NameIsFixedForTheSession) {
    const auto board = std::make_shared<VirtualBoard>(namedModel());
    bus.plug(board);
    start();
    bus.setFaults(board, {.serialFails = true, .failingFeatures = {0x20}});
    manager->scanDevices();
    EXPECT_EQ(manager->listDevices()[0].deviceName, "01AB00FF1020300C");
    bus.plug(board);
    manager->scanDevices();
    EXPECT_EQ(manager->listDevices()[0].deviceName, "port#0002");
}
