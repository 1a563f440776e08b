#pragma once

// The reports that boards and host exchange, as pure data. Every report has 32 bytes, its id in byte 0; fields of more
// than one byte are little-endian; bytes that no field names are zero.

#include "platform/hid_report_size.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// What the output stage wants a board's light to do; the fields an effect doesn't use are zero.
struct LedCommand {
    /// 0 none, 1 steady, 2 breathe, 3 flash.
    std::uint8_t effect = 0;
    /// For steady.
    std::uint8_t brightness = 0;
    // For breathe and flash.
    std::uint8_t count = 0;
    std::uint16_t periodMs = 0;
    std::uint8_t level = 0;

    bool operator==(const LedCommand&) const = default;
};

namespace HidProtocol {

constexpr std::size_t reportSize = hidReportSize;
using Report = std::array<std::uint8_t, reportSize>;

constexpr std::uint8_t inputEventReportId = 0x01;
constexpr std::uint8_t ledCtlReportId = 0x10;
constexpr std::uint8_t simStatusReportId = 0x11;
constexpr std::uint8_t deviceCtlReportId = 0x12;
constexpr std::uint8_t deviceInfoReportId = 0x20;
constexpr std::uint8_t protocolInfoReportId = 0x21;

constexpr std::uint8_t eventTypeButton = 1;
constexpr std::uint8_t eventTypeEncoder = 2;
constexpr std::uint8_t eventTypeBoardNotice = 4;

/// The only action of a device control report: reboot into the bootloader (BOOTSEL).
constexpr std::uint8_t deviceActionBootsel = 2;

/// A decoded input report, without the board that it came from.
struct HidEvent {
    std::uint8_t headerByte = 0;
    std::uint8_t type = 0;
    std::uint16_t controlId = 0;
    std::int8_t value = 0;
    /// Rotation speed class of an encoder.
    std::uint8_t speed = 0;
    /// 0 is the role "PFD", 1 "MFD"; with any other value the configuration decides the role.
    std::uint8_t mode = 0;
    std::uint16_t trailerWord = 0;

    bool operator==(const HidEvent&) const = default;
};

enum class HidEventAction : std::int32_t {
    None = 0,
    ButtonPress = 1,
    ButtonRelease = 2,
    Hold = 3,
    EncCw = 4,
    EncCcw = 5,
};

using BoardId = std::array<std::uint8_t, 8>;

struct DeviceInfo {
    std::array<std::uint8_t, 6> infoBytes{};
    std::uint16_t infoWord0 = 0;
    std::uint16_t infoWord1 = 0;
    BoardId boardId{};
};

struct ProtocolInfo {
    std::uint8_t protocolMajor = 0;
    std::uint8_t protocolMinor = 0;
    std::uint8_t protocolFlags = 0;

    bool operator==(const ProtocolInfo&) const = default;
};

/// Decodes a read of `length` bytes, above 0: 31 bytes without the report id, or 32 with it. False with `error` set;
/// `event` is then unchanged.
bool decodeInputReport(const std::uint8_t* bytes, std::size_t length, HidEvent& event, std::string& error);

// Feature replies. False with `error` set when byte 0 isn't the id asked for; the record is then unchanged.
bool decodeDeviceInfo(const Report& bytes, DeviceInfo& info, std::string& error);
bool decodeProtocolInfo(const Report& bytes, ProtocolInfo& info, std::string& error);

/// The identity as 16 upper-case hexadecimal digits, in wire order.
std::string boardIdText(const DeviceInfo& info);

Report encodeLedCtl(const LedCommand& command);
Report encodeSimStatus(bool connected);
Report encodeBootsel();

HidEventAction classify(const HidEvent& event);

/// "NONE", "BUTTON_PRESS" and so on; "NONE" for any unknown number.
const char* actionName(HidEventAction action);

/// True for a button value of the hold class (2, 3 or 4), as a board repeats it while a button is down.
bool isHoldValue(std::int8_t value);

} // namespace HidProtocol
