#include "hid/feature_reports.h"

#include <cstdint>
#include <string>

namespace {

bool readFeature(const HidTransport& transport, HidHandle handle, std::uint8_t reportId, HidProtocol::Report& report) {
    report = {};
    report[0] = reportId;
    return transport.getFeature(handle, report);
}

} // namespace

bool readDeviceInfo(const HidTransport& transport, HidHandle handle, HidProtocol::DeviceInfo& info) {
    HidProtocol::Report report{};
    std::string ignoredError;
    return readFeature(transport, handle, HidProtocol::deviceInfoReportId, report) &&
           HidProtocol::decodeDeviceInfo(report, info, ignoredError);
}

bool readProtocolInfo(const HidTransport& transport, HidHandle handle, HidProtocol::ProtocolInfo& info) {
    HidProtocol::Report report{};
    std::string ignoredError;
    return readFeature(transport, handle, HidProtocol::protocolInfoReportId, report) &&
           HidProtocol::decodeProtocolInfo(report, info, ignoredError);
}
