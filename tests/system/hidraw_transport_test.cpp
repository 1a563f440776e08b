// The transport on the kernel's own HID stack: the requests and failures of a real device.

#include "platform/platform.h"
#include "tests/support/wait_until.h"
#include "tests/system/support/uhid_board.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds longRead = 60s;

VirtualBoardModel fullModel() {
    VirtualBoardModel model;
    model.vendorId = 0xFEDC;
    model.productId = 0x0123;
    model.boardId = HidProtocol::BoardId{0xE6, 0x61, 0x38, 0xA1, 0xB2, 0xC3, 0xD4, 0xE5};
    model.serial = "PANEL-7";
    model.infoWord0 = 0x1234;
    model.protocolInfo = HidProtocol::ProtocolInfo{1, 2, 0xA5};
    return model;
}

/// One board and a handle of it.
class HidrawTransport : public testing::Test {
protected:
    explicit HidrawTransport(const VirtualBoardModel& model = fullModel()) : board(model) {
        EXPECT_NE(handle, invalidHidHandle);
    }
    ~HidrawTransport() override { transport.close(handle); }

    HidHandle open(const std::string& path) const {
        return transport.open(path, HidAccess::ReadWrite, HidMode::Overlapped);
    }

    bool lists(const std::string& path) const {
        const std::vector<std::string> paths = transport.enumerate();
        return std::find(paths.begin(), paths.end(), path) != paths.end();
    }

    UhidBoard board;
    const HidTransport transport = systemPlatform().hid;
    const std::string path = board.device().sysfsFolder();
    const HidHandle handle = open(path);
};

class HidrawTransportOfABoardThatAnswersNothing : public HidrawTransport {
protected:
    HidrawTransportOfABoardThatAnswersNothing() : HidrawTransport(modelThatAnswersNothing()) {}

private:
    static VirtualBoardModel modelThatAnswersNothing() {
        VirtualBoardModel model;
        model.boardId.reset();
        return model;
    }
};

} // namespace

TEST_F(HidrawTransport, ListsABoardWhileItIsPluggedInAndAReplugUnderANewPath) {
    const std::string node = board.device().node();
    EXPECT_TRUE(path.starts_with("/sys/devices/")) << path;
    EXPECT_TRUE(lists(path));
    board.unplug();
    EXPECT_FALSE(lists(path));
    transport.close(handle);
    board.plug();
    const std::string newPath = board.device().sysfsFolder();
    EXPECT_EQ(board.device().node(), node);
    EXPECT_NE(newPath, path);
    EXPECT_TRUE(lists(newPath));
    EXPECT_EQ(open(path), invalidHidHandle);
    std::filesystem::remove(node);
    EXPECT_TRUE(lists(newPath));
    EXPECT_EQ(open(newPath), invalidHidHandle);
}

TEST_F(HidrawTransport, ReadsWhatIdentifiesABoard) {
    HidAttributes attributes;
    EXPECT_TRUE(transport.attributes(handle, attributes));
    EXPECT_EQ(attributes.vendorId, 0xFEDC);
    EXPECT_EQ(attributes.productId, 0x0123);
    std::string serial;
    EXPECT_TRUE(transport.serialNumber(handle, serial));
    EXPECT_EQ(serial, "PANEL-7");
    for (const std::uint8_t reportId : {HidProtocol::deviceInfoReportId, HidProtocol::protocolInfoReportId}) {
        HidProtocol::Report report{reportId};
        EXPECT_TRUE(transport.getFeature(handle, report));
        EXPECT_EQ(report, board.panel.featureReply(reportId));
    }
}

TEST_F(HidrawTransportOfABoardThatAnswersNothing, ReportsThat) {
    std::string serial = "as before";
    EXPECT_FALSE(transport.serialNumber(handle, serial));
    EXPECT_EQ(serial, "as before");
    HidProtocol::Report report{HidProtocol::deviceInfoReportId};
    EXPECT_FALSE(transport.getFeature(handle, report));
}

TEST_F(HidrawTransport, ReadsWholeReportsInTheirOrderOnEachHandle) {
    const HidHandle other = open(path);
    board.panel.press(0x1234, 1);
    board.panel.turn(21, -3, 4);
    for (const HidHandle reading : {handle, other}) {
        const HidReader read = transport.makeReader(reading);
        const HidReadResult first = read(longRead);
        ASSERT_EQ(first.status, HidReadStatus::Data);
        ASSERT_EQ(first.data.size(), 32U);
        EXPECT_EQ(first.data[0], HidProtocol::inputEventReportId);
        EXPECT_EQ(first.data[4], 0x34);
        EXPECT_EQ(first.data[5], 0x12);
        EXPECT_EQ(first.data[8], 1);
        const HidReadResult second = read(longRead);
        ASSERT_EQ(second.status, HidReadStatus::Data);
        EXPECT_EQ(second.data[6], 0xFD);
        EXPECT_EQ(second.data[7], 4);
    }
    transport.close(other);
}

TEST_F(HidrawTransport, EndsTheReadOfABoardThatIsPulled) {
    const HidReader read = transport.makeReader(handle);
    std::thread puller([&] {
        std::this_thread::sleep_for(50ms);
        board.unplug();
    });
    EXPECT_EQ(read(longRead).status, HidReadStatus::Failure);
    puller.join();
    EXPECT_EQ(read(longRead).status, HidReadStatus::Failure);
}

TEST_F(HidrawTransport, SendsWholeOutputReportsByBothCalls) {
    const HidProtocol::Report status = HidProtocol::encodeSimStatus(true);
    const HidProtocol::Report bootsel = HidProtocol::encodeBootsel();
    const HidWriteResult written = transport.write(handle, status);
    EXPECT_TRUE(written.ok);
    EXPECT_EQ(written.count, 32U);
    EXPECT_EQ(written.error, 0U);
    const HidWriteResult set = transport.setOutputReport(handle, bootsel);
    EXPECT_TRUE(set.ok);
    EXPECT_EQ(set.count, 0U);
    ASSERT_TRUE(waitUntil([&] { return board.panel.outputs().size() >= 2; }));
    EXPECT_TRUE(std::ranges::equal(board.panel.outputs()[0].bytes, status));
    EXPECT_TRUE(std::ranges::equal(board.panel.outputs()[1].bytes, bootsel));
}

TEST_F(HidrawTransport, ReportsTheErrorOfAWriteToABoardThatHasGone) {
    board.unplug();
    const HidWriteResult written = transport.write(handle, HidProtocol::encodeSimStatus(true));
    EXPECT_FALSE(written.ok);
    EXPECT_EQ(written.count, 0U);
    EXPECT_NE(written.error, 0U);
    const HidWriteResult set = transport.setOutputReport(handle, HidProtocol::encodeBootsel());
    EXPECT_FALSE(set.ok);
    EXPECT_NE(set.error, 0U);
}
