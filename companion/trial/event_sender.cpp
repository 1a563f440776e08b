#include "companion/trial/event_sender.h"

namespace {

/// More than the mapping needs for an event.
constexpr std::chrono::milliseconds eventTime{300};
constexpr std::chrono::milliseconds drainLook{20};

} // namespace

EventSender::EventSender(const Host& host, ModuleLink& link, const BridgeConfiguration& configuration)
    : host(host), link(link), configuration(configuration), mapping(host) {}

bool EventSender::start(std::string& error) {
    return mapping.start(&configuration.settings, nullptr, &link.simulatorClient(), &link.moduleClient(),
                         &configuration.buttons, &configuration.eventMap, &state, error);
}

void EventSender::send(const HidProtocol::HidEvent& event, const std::string& board, int index) {
    mapping.submitEvent(event, board, index);
}

void EventSender::finish(std::chrono::milliseconds limit) {
    host.sleepFor(eventTime);
    mapping.stop();
    const std::chrono::nanoseconds spacing =
        eventTime + std::chrono::milliseconds(configuration.settings.mobiflight.rpnRateLimitMs);
    const std::int64_t end = host.now() + std::chrono::nanoseconds(limit).count();
    while (host.now() < end && host.now() - link.lastWrite() < spacing.count()) {
        host.sleepFor(drainLook);
    }
}
