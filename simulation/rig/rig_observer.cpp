#include "simulation/rig/rig_observer.h"

#include "simulation/rig/poll_until.h"
#include "simulation/rig/stream_texts.h"
#include "text/ascii.h"

#include <mutex>
#include <optional>
#include <utility>

struct RigObserver::Inbox {
    // Guards `observations`.
    std::mutex mutex;
    std::vector<Observation> observations;

    void add(const std::string& stream, const std::string& text) {
        const std::lock_guard lock(mutex);
        observations.push_back({std::chrono::steady_clock::now(), stream, text});
    }

    std::vector<Observation> empty() {
        const std::lock_guard lock(mutex);
        return std::exchange(observations, {});
    }
};

RigObserver::RigObserver(BridgeRig& rig, Sink sink, bool dummiesToo)
    : rig(rig),
      sink(std::move(sink)),
      inbox(std::make_shared<Inbox>()),
      lastInterruption(std::chrono::steady_clock::now()) {
    for (const RigBoard& made : rig.boards()) {
        rig.board(made.name).setOutputCallback(
            [to = inbox, name = made.name](const BoardOutput& output) { to->add(name, outputText(output)); });
    }
    rig.simulator().setRecordCallback([to = inbox, dummiesToo](const SimulatorRecord& record) {
        const std::optional<std::string> text = recordText(record);
        const bool fromBridge = record.session != 0;
        if (text && fromBridge && (dummiesToo || record.kind != SimulatorRecordKind::Dummy)) {
            to->add("sim", *text);
        }
    });
    rig.setExitCallback([to = inbox](int exitCode) { to->add("exit", std::to_string(exitCode)); });
}

std::vector<Observation> RigObserver::take() {
    std::vector<Observation> observations = inbox->empty();
    for (const LogLine& line : rig.newLogLines()) {
        // A scenario's line can't end with blanks.
        std::string text(rightTrimmed(line.level + ' ' + line.message, " "));
        observations.push_back({std::chrono::steady_clock::now(), "log", std::move(text)});
    }
    return observations;
}

void RigObserver::pump() {
    for (const Observation& observation : take()) {
        if (sink(observation)) {
            lastInterruption = observation.time;
        }
    }
}

bool RigObserver::pumpUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto pumped = [&] {
        pump();
        return condition();
    };
    return pollUntil(pumped, limit);
}

void RigObserver::pumpFor(std::chrono::milliseconds duration) {
    pumpUntil([] { return false; }, duration);
}

void RigObserver::waitForQuiet(std::chrono::milliseconds quiet, std::chrono::milliseconds limit) {
    lastInterruption = std::chrono::steady_clock::now();
    pumpUntil([&] { return quietFor(quiet); }, limit);
}

bool RigObserver::quietFor(std::chrono::milliseconds duration) const {
    return std::chrono::steady_clock::now() - lastInterruption >= duration;
}
