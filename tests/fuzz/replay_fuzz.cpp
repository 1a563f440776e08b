// Records and trace logs. What was read is recorded again, and must be read back equal.

#include "companion/recording/record_text.h"
#include "companion/recording/replay_input.h"
#include "tests/fuzz/fuzz_support.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

namespace {

/// A step may stand for a thousand reports.
constexpr std::size_t mostReports = 100;

const BridgeConfiguration& noConfiguration() {
    static const BridgeConfiguration configuration;
    return configuration;
}

std::string recorded(const ReplayInput& input) {
    RecordText record(noConfiguration(), 0);
    std::string text = record.header("{}", "{}");
    std::set<std::string> boards;
    for (const LiveReport& report : input.reports) {
        if (boards.insert(report.board).second) {
            text += record.arrived({report.board, report.index, ""}, report.time);
        }
        text += record.reported(report);
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReplayInput input;
    std::string error;
    if (!readReplay("file", inputText(data, size), input, error)) {
        require(!error.empty(), "a refusal says why");
        return 0;
    }
    input.reports.resize(std::min(input.reports.size(), mostReports));
    ReplayInput again;
    require(readReplay("record", recorded(input), again, error), "a record can be read");
    require(again.reports.size() == input.reports.size(), "a record has every report");
    for (std::size_t i = 0; i < input.reports.size(); ++i) {
        decodeReport(input.reports[i], noConfiguration());
        decodeReport(again.reports[i], noConfiguration());
        require(input.reports[i].problem == again.reports[i].problem, "a report stays as readable as it was");
        require(!input.reports[i].event || input.reports[i].event->command == again.reports[i].event->command,
                "an event keeps its meaning");
    }
    return 0;
}
