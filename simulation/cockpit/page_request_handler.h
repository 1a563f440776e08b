#pragma once

#include "simulation/cockpit/cockpit_controller.h"
#include "simulation/cockpit/page_server.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

/// Answers the server's requests: the page's files, the controller's state and events, and the page's actions. Any
/// thread.
class PageRequestHandler {
public:
    PageRequestHandler(CockpitController& controller, std::string token);

    /// Sets the server's port. To be called before the first request.
    void setPort(std::uint16_t taken) { port = taken; }

    PageReply answer(const PageRequest& request) const;

private:
    CockpitController& controller;
    const std::string token;
    std::uint16_t port = 0;
    /// How many pages listen.
    std::shared_ptr<std::atomic<int>> listeners = std::make_shared<std::atomic<int>>(0);

    PageReply action(const PageRequest& request) const;
    PageReply events() const;
};
