#include "simconnect/wire.h"

#include <array>
#include <bit>
#include <initializer_list>

namespace SimConnectWire {
namespace {

// What a client of this protocol version says of itself in OPEN: the library's name "FSX", back to front, and the
// version and build that belong to it. Simulators check them against the protocol version.
constexpr std::uint32_t libraryTag = 0x46535800U;
constexpr std::uint32_t libraryVersionMajor = 10;
constexpr std::uint32_t libraryVersionMinor = 0;
constexpr std::uint32_t libraryBuildMajor = 61259;
constexpr std::uint32_t libraryBuildMinor = 0;

// Client data of one block is an array of one element, in the field that the C function calls reserved.
constexpr std::uint32_t singleElement = 1;

void appendNumbers(Bytes& out, std::initializer_list<std::uint32_t> values) {
    for (const std::uint32_t value : values) {
        appendNumber(out, value);
    }
}

void appendHead(Bytes& out, RequestType type, std::size_t bodySize, std::uint32_t sendId) {
    appendNumbers(out, {static_cast<std::uint32_t>(requestHeadSize + bodySize), protocolVersion,
                        requestTypeMark | static_cast<std::uint32_t>(type), sendId});
}

void appendName(Bytes& out, std::string_view name) {
    out.insert(out.end(), name.begin(), name.end());
    out.resize(out.size() + nameFieldSize - name.size());
}

} // namespace

bool fitsNameField(std::string_view name) {
    return name.size() < nameFieldSize;
}

void appendNumber(Bytes& out, std::uint32_t value) {
    const std::array<std::uint8_t, 4> bytes{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8U),
                                            static_cast<std::uint8_t>(value >> 16U),
                                            static_cast<std::uint8_t>(value >> 24U)};
    out.insert(out.end(), bytes.begin(), bytes.end());
}

std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(bytes[offset]) | static_cast<std::uint32_t>(bytes[offset + 1]) << 8U |
           static_cast<std::uint32_t>(bytes[offset + 2]) << 16U | static_cast<std::uint32_t>(bytes[offset + 3]) << 24U;
}

void appendOpen(Bytes& out, std::uint32_t sendId, std::string_view applicationName) {
    appendHead(out, openRequest, nameFieldSize + 24, sendId);
    appendName(out, applicationName);
    appendNumbers(out, {0, libraryTag, libraryVersionMajor, libraryVersionMinor, libraryBuildMajor, libraryBuildMinor});
}

void appendAddToDataDefinition(Bytes& out, std::uint32_t sendId, std::uint32_t definitionId, std::string_view datumName,
                               std::string_view unitsName, std::uint32_t datumType, float epsilon,
                               std::uint32_t datumId) {
    appendHead(out, addToDataDefinitionRequest, 2 * nameFieldSize + 16, sendId);
    appendNumber(out, definitionId);
    appendName(out, datumName);
    appendName(out, unitsName);
    appendNumbers(out, {datumType, std::bit_cast<std::uint32_t>(epsilon), datumId});
}

void appendRequestDataOnSimObject(Bytes& out, std::uint32_t sendId, std::uint32_t requestId, std::uint32_t definitionId,
                                  std::uint32_t objectId, std::uint32_t period, std::uint32_t flags,
                                  std::uint32_t origin, std::uint32_t interval, std::uint32_t limit) {
    appendHead(out, requestDataOnSimObjectRequest, 32, sendId);
    appendNumbers(out, {requestId, definitionId, objectId, period, flags, origin, interval, limit});
}

void appendMapClientEventToSimEvent(Bytes& out, std::uint32_t sendId, std::uint32_t eventId,
                                    std::string_view eventName) {
    appendHead(out, mapClientEventToSimEventRequest, 4 + nameFieldSize, sendId);
    appendNumber(out, eventId);
    appendName(out, eventName);
}

void appendTransmitClientEvent(Bytes& out, std::uint32_t sendId, std::uint32_t objectId, std::uint32_t eventId,
                               std::uint32_t data, std::uint32_t groupId, std::uint32_t flags) {
    appendHead(out, transmitClientEventRequest, 20, sendId);
    appendNumbers(out, {objectId, eventId, data, groupId, flags});
}

void appendMapClientDataNameToId(Bytes& out, std::uint32_t sendId, std::string_view name, std::uint32_t clientDataId) {
    appendHead(out, mapClientDataNameToIdRequest, nameFieldSize + 4, sendId);
    appendName(out, name);
    appendNumber(out, clientDataId);
}

void appendAddToClientDataDefinition(Bytes& out, std::uint32_t sendId, std::uint32_t definitionId, std::uint32_t offset,
                                     std::uint32_t sizeOrType, float epsilon, std::uint32_t datumId) {
    appendHead(out, addToClientDataDefinitionRequest, 20, sendId);
    appendNumbers(out, {definitionId, offset, sizeOrType, std::bit_cast<std::uint32_t>(epsilon), datumId});
}

void appendRequestClientData(Bytes& out, std::uint32_t sendId, std::uint32_t clientDataId, std::uint32_t requestId,
                             std::uint32_t definitionId, std::uint32_t period, std::uint32_t flags,
                             std::uint32_t origin, std::uint32_t interval, std::uint32_t limit) {
    appendHead(out, requestClientDataRequest, 32, sendId);
    appendNumbers(out, {clientDataId, requestId, definitionId, period, flags, origin, interval, limit});
}

void appendSetClientData(Bytes& out, std::uint32_t sendId, std::uint32_t clientDataId, std::uint32_t definitionId,
                         std::uint32_t flags, std::span<const std::uint8_t> data) {
    appendHead(out, setClientDataRequest, 20 + data.size(), sendId);
    appendNumbers(out, {clientDataId, definitionId, flags, singleElement, static_cast<std::uint32_t>(data.size())});
    out.insert(out.end(), data.begin(), data.end());
}

} // namespace SimConnectWire
