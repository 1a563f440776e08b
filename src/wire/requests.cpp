#include "wire/requests.h"

#include <algorithm>
#include <array>
#include <bit>
#include <initializer_list>

namespace SimConnectWire {
namespace {

// What a client of each protocol version sends about itself in OPEN: the generation's name spelled backwards ("FSX",
// "KH", "SR"), and the version and build of its library. Simulators check them against the protocol version.
struct ClientLibrary {
    std::uint32_t protocol;
    std::uint32_t tag;
    std::uint32_t versionMajor;
    std::uint32_t versionMinor;
    std::uint32_t buildMajor;
    std::uint32_t buildMinor;
};

constexpr std::array<ClientLibrary, protocolVersions.size()> clientLibraries{
    {{4, 0x46535800U, 10, 0, 61259, 0}, {5, 0x004B4800U, 11, 0, 62651, 3}, {6, 0x00535200U, 12, 2, 282174, 999}}};

const ClientLibrary& clientLibraryOf(std::uint32_t protocol) {
    const auto* const found = std::ranges::find(clientLibraries, protocol, &ClientLibrary::protocol);
    return found == clientLibraries.end() ? clientLibraries.front() : *found;
}

// A block of client data is an array of one element. The count is in the field that the C function calls reserved.
constexpr std::uint32_t singleElement = 1;

void appendNumbers(Bytes& out, std::initializer_list<std::uint32_t> values) {
    for (const std::uint32_t value : values) {
        appendNumber(out, value);
    }
}

void appendHead(Bytes& out, RequestType type, std::size_t bodySize, RequestHead head) {
    appendNumbers(out, {static_cast<std::uint32_t>(requestHeadSize + bodySize), head.protocol,
                        requestTypeMark | static_cast<std::uint32_t>(type), head.sendId});
}

void appendName(Bytes& out, std::string_view name) {
    out.insert(out.end(), name.begin(), name.end());
    out.resize(out.size() + nameFieldSize - name.size());
}

} // namespace

bool isName(const char* text) {
    return text != nullptr && std::string_view(text).size() < nameFieldSize;
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

void appendOpen(Bytes& out, RequestHead head, std::string_view applicationName) {
    appendHead(out, openRequest, nameFieldSize + 24, head);
    appendName(out, applicationName);
    const ClientLibrary& library = clientLibraryOf(head.protocol);
    appendNumbers(out,
                  {0, library.tag, library.versionMajor, library.versionMinor, library.buildMajor, library.buildMinor});
}

void appendAddToDataDefinition(Bytes& out, RequestHead head, std::uint32_t definitionId, std::string_view datumName,
                               std::string_view unitsName, std::uint32_t datumType, float epsilon,
                               std::uint32_t datumId) {
    appendHead(out, addToDataDefinitionRequest, 2 * nameFieldSize + 16, head);
    appendNumber(out, definitionId);
    appendName(out, datumName);
    appendName(out, unitsName);
    appendNumbers(out, {datumType, std::bit_cast<std::uint32_t>(epsilon), datumId});
}

void appendRequestDataOnSimObject(Bytes& out, RequestHead head, std::uint32_t requestId, std::uint32_t definitionId,
                                  std::uint32_t objectId, std::uint32_t period, std::uint32_t flags,
                                  std::uint32_t origin, std::uint32_t interval, std::uint32_t limit) {
    appendHead(out, requestDataOnSimObjectRequest, 32, head);
    appendNumbers(out, {requestId, definitionId, objectId, period, flags, origin, interval, limit});
}

void appendMapClientEventToSimEvent(Bytes& out, RequestHead head, std::uint32_t eventId, std::string_view eventName) {
    appendHead(out, mapClientEventToSimEventRequest, 4 + nameFieldSize, head);
    appendNumber(out, eventId);
    appendName(out, eventName);
}

void appendTransmitClientEvent(Bytes& out, RequestHead head, std::uint32_t objectId, std::uint32_t eventId,
                               std::uint32_t data, std::uint32_t groupId, std::uint32_t flags) {
    appendHead(out, transmitClientEventRequest, 20, head);
    appendNumbers(out, {objectId, eventId, data, groupId, flags});
}

void appendMapClientDataNameToId(Bytes& out, RequestHead head, std::string_view name, std::uint32_t clientDataId) {
    appendHead(out, mapClientDataNameToIdRequest, nameFieldSize + 4, head);
    appendName(out, name);
    appendNumber(out, clientDataId);
}

void appendAddToClientDataDefinition(Bytes& out, RequestHead head, std::uint32_t definitionId, std::uint32_t offset,
                                     std::uint32_t sizeOrType, float epsilon, std::uint32_t datumId) {
    appendHead(out, addToClientDataDefinitionRequest, 20, head);
    appendNumbers(out, {definitionId, offset, sizeOrType, std::bit_cast<std::uint32_t>(epsilon), datumId});
}

void appendRequestClientData(Bytes& out, RequestHead head, std::uint32_t clientDataId, std::uint32_t requestId,
                             std::uint32_t definitionId, std::uint32_t period, std::uint32_t flags,
                             std::uint32_t origin, std::uint32_t interval, std::uint32_t limit) {
    appendHead(out, requestClientDataRequest, 32, head);
    appendNumbers(out, {clientDataId, requestId, definitionId, period, flags, origin, interval, limit});
}

void appendSetClientData(Bytes& out, RequestHead head, std::uint32_t clientDataId, std::uint32_t definitionId,
                         std::uint32_t flags, std::span<const std::uint8_t> data) {
    appendHead(out, setClientDataRequest, 20 + data.size(), head);
    appendNumbers(out, {clientDataId, definitionId, flags, singleElement, static_cast<std::uint32_t>(data.size())});
    out.insert(out.end(), data.begin(), data.end());
}

} // namespace SimConnectWire
