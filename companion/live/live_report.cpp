#include "companion/live/live_report.h"

void decodeReport(LiveReport& report, const BridgeConfiguration& configuration) {
    HidProtocol::HidEvent event;
    if (HidProtocol::decodeInputReport(report.bytes.data(), report.bytes.size(), event, report.problem)) {
        report.event = decodeEvent(configuration, event, report.board, report.index);
    }
}
