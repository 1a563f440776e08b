#pragma once

// The requests of the simulator's network protocol, byte by byte. Each function appends one whole request to `out`.
// Numbers are little-endian; names are in fixed, zero-padded fields. A name must satisfy `isName`.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace SimConnectWire {

/// The protocol versions that a client opens a session with, in the order in which it tries them. Every known simulator
/// takes the first. Requests and messages are the same in all of them.
constexpr std::array<std::uint32_t, 3> protocolVersions{4, 5, 6};
/// Size, protocol version, type and send id.
constexpr std::size_t requestHeadSize = 16;
/// The size of a name's field, its final zero byte included.
constexpr std::size_t nameFieldSize = 256;
/// The size of the largest client data area, so no block of client data is longer.
constexpr std::size_t maximumClientData = 8192;
/// Every request's type has these bits set.
constexpr std::uint32_t requestTypeMark = 0xF0000000U;

enum RequestType : std::uint32_t {
    openRequest = 0x01,
    mapClientEventToSimEventRequest = 0x04,
    transmitClientEventRequest = 0x05,
    setSystemEventStateRequest = 0x06,
    addClientEventToNotificationGroupRequest = 0x07,
    removeClientEventRequest = 0x08,
    setNotificationGroupPriorityRequest = 0x09,
    clearNotificationGroupRequest = 0x0A,
    requestNotificationGroupRequest = 0x0B,
    addToDataDefinitionRequest = 0x0C,
    clearDataDefinitionRequest = 0x0D,
    requestDataOnSimObjectRequest = 0x0E,
    requestDataOnSimObjectTypeRequest = 0x0F,
    setDataOnSimObjectRequest = 0x10,
    subscribeToSystemEventRequest = 0x17,
    unsubscribeFromSystemEventRequest = 0x18,
    requestSystemStateRequest = 0x35,
    mapClientDataNameToIdRequest = 0x37,
    createClientDataRequest = 0x38,
    addToClientDataDefinitionRequest = 0x39,
    clearClientDataDefinitionRequest = 0x3A,
    requestClientDataRequest = 0x3B,
    setClientDataRequest = 0x3C,
    transmitClientEventEx1Request = 0x44,
};

using Bytes = std::vector<std::uint8_t>;

/// The fields of a request's head besides size and type.
struct RequestHead {
    /// Counts a session's requests.
    std::uint32_t sendId = 0;
    /// One of `protocolVersions`, the same in all requests of a session.
    std::uint32_t protocol = protocolVersions.front();
};

/// Whether a text can be sent as a name: it isn't null and fits its field.
bool isName(const char* text);

void appendOpen(Bytes& out, RequestHead head, std::string_view applicationName);
void appendAddToDataDefinition(Bytes& out, RequestHead head, std::uint32_t definitionId, std::string_view datumName,
                               std::string_view unitsName, std::uint32_t datumType, float epsilon,
                               std::uint32_t datumId);
void appendRequestDataOnSimObject(Bytes& out, RequestHead head, std::uint32_t requestId, std::uint32_t definitionId,
                                  std::uint32_t objectId, std::uint32_t period, std::uint32_t flags,
                                  std::uint32_t origin, std::uint32_t interval, std::uint32_t limit);
void appendMapClientEventToSimEvent(Bytes& out, RequestHead head, std::uint32_t eventId, std::string_view eventName);
void appendTransmitClientEvent(Bytes& out, RequestHead head, std::uint32_t objectId, std::uint32_t eventId,
                               std::uint32_t data, std::uint32_t groupId, std::uint32_t flags);
void appendMapClientDataNameToId(Bytes& out, RequestHead head, std::string_view name, std::uint32_t clientDataId);
void appendAddToClientDataDefinition(Bytes& out, RequestHead head, std::uint32_t definitionId, std::uint32_t offset,
                                     std::uint32_t sizeOrType, float epsilon, std::uint32_t datumId);
void appendRequestClientData(Bytes& out, RequestHead head, std::uint32_t clientDataId, std::uint32_t requestId,
                             std::uint32_t definitionId, std::uint32_t period, std::uint32_t flags,
                             std::uint32_t origin, std::uint32_t interval, std::uint32_t limit);
void appendSetClientData(Bytes& out, RequestHead head, std::uint32_t clientDataId, std::uint32_t definitionId,
                         std::uint32_t flags, std::span<const std::uint8_t> data);

/// Appends a little-endian number.
void appendNumber(Bytes& out, std::uint32_t value);
/// Reads one back. `bytes` must have all four of its bytes.
std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t offset);

} // namespace SimConnectWire
