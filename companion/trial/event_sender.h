#pragma once

#include "companion/live/bridge_configuration.h"
#include "companion/trial/module_link.h"
#include "hid/hid_protocol.h"
#include "mapping/mapping_engine.h"
#include "platform/platform.h"
#include "sim/shared_sim_state.h"

#include <chrono>
#include <string>

/// Hands events to the bridge's own mapping, whose commands go over a link to the simulator. Used by one thread.
class EventSender {
public:
    /// The references must outlive the sender.
    EventSender(const Host& host, ModuleLink& link, const BridgeConfiguration& configuration);

    /// False with the system's reason in `error` when there is no thread.
    bool start(std::string& error);

    void send(const HidProtocol::HidEvent& event, const std::string& board, int index);

    /// Ends what is still held, and waits until everything is sent, but no longer than the limit.
    void finish(std::chrono::milliseconds limit);

private:
    const Host& host;
    ModuleLink& link;
    const BridgeConfiguration& configuration;
    SharedSimState state;
    MappingEngine mapping;
};
