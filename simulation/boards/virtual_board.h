#pragma once

#include "hid/hid_protocol.h"

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// How an output report reached the board.
enum class OutputCall { Write, SetOutputReport };

/// One output report as it reached a board, report id first. Shorter than 32 bytes when the bus cut it.
struct BoardOutput {
    OutputCall call = OutputCall::Write;
    std::vector<std::uint8_t> bytes;

    bool operator==(const BoardOutput&) const = default;
};

/// How a board is built.
struct VirtualBoardModel {
    std::uint16_t vendorId = 0x1234;
    std::uint16_t productId = 0xABCD;
    /// Without it, the board doesn't answer the device info report.
    std::optional<HidProtocol::BoardId> boardId = HidProtocol::BoardId{0, 0, 0, 0, 0, 0, 0, 1};
    std::array<std::uint8_t, 6> infoBytes{};
    std::uint16_t infoWord0 = 0;
    std::uint16_t infoWord1 = 0;
    /// UTF-8.
    std::optional<std::string> serial;
    /// Without it, the board doesn't answer the protocol info report.
    std::optional<HidProtocol::ProtocolInfo> protocolInfo;

    bool operator==(const VirtualBoardModel&) const = default;
};

/// What a whole LED control report says.
LedCommand ledCommandOf(std::span<const std::uint8_t> report);

/// The report of an event, as a board sends it.
HidProtocol::Report inputReport(const HidProtocol::HidEvent& event);

/// The firmware side of one board: answers feature reports, keeps the output reports that it received, and sends input
/// reports. A bus (see VirtualHidBus) carries it; reports of a board that isn't plugged in are lost. All operations may
/// be called from any thread.
class VirtualBoard {
public:
    /// Takes one input report, of any length.
    using InputSink = std::function<void(std::span<const std::uint8_t> report)>;
    using OutputCallback = std::function<void(const BoardOutput& output)>;

    explicit VirtualBoard(const VirtualBoardModel& model = {});
    VirtualBoard(const VirtualBoard&) = delete;
    VirtualBoard& operator=(const VirtualBoard&) = delete;

    const VirtualBoardModel& model() const;

    // What its user does. The mode is the position of the role switch: 0 for PFD, 1 for MFD.
    void press(std::uint16_t controlId, std::uint8_t mode = 0);
    /// One repeat of a button that is down; `value` is 2, 3 or 4.
    void hold(std::uint16_t controlId, std::uint8_t mode = 0, std::int8_t value = 2);
    void release(std::uint16_t controlId, std::uint8_t mode = 0);
    /// One report of that many detents, clockwise above 0.
    void turn(std::uint16_t controlId, std::int8_t detents, std::uint8_t speed = 0, std::uint8_t mode = 0);

    // What its firmware sends.
    void notice();
    void sendEvent(const HidProtocol::HidEvent& event);
    /// Sent unchanged: any length, any id, even no bytes.
    void sendRaw(std::span<const std::uint8_t> report);

    // What it received since it was powered.
    std::optional<LedCommand> led() const;
    std::optional<bool> simConnected() const;
    bool inBootsel() const;

    /// All output reports in the order of arrival, since construction or `clearOutputs`.
    std::vector<BoardOutput> outputs() const;
    void clearOutputs();

    /// Called on the writing thread, with no lock of the board's or the bus's held, after the board took the report.
    /// The writer may hold locks of its own: don't call back into it.
    void setOutputCallback(OutputCallback callback);

    // The bus's side.

    /// Boots the firmware, which has received nothing from the host yet and isn't in BOOTSEL mode.
    void powerOn(InputSink sink);
    /// Its last state stays readable.
    void powerOff();
    std::optional<HidProtocol::Report> featureReply(std::uint8_t reportId) const;
    void receiveOutput(OutputCall call, std::span<const std::uint8_t> bytes);

private:
    const VirtualBoardModel made;

    // Guards all below. Neither the sink nor the callback is called under it.
    mutable std::mutex mutex;
    InputSink inputSink;
    OutputCallback outputCallback;
    std::vector<BoardOutput> received;
    std::optional<LedCommand> ledState;
    std::optional<bool> simState;
    bool bootsel = false;

    // Needs the mutex held.
    void applyOutput(std::span<const std::uint8_t> bytes);
};
