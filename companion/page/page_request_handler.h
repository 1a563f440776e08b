#pragma once

#include "companion/page/page.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

/// Decides which requests may reach a page, and answers those that every page gets: its files and its events. Any
/// thread.
class PageRequestHandler {
public:
    /// The page must outlive this.
    PageRequestHandler(const Page& page, std::string token);

    /// Sets the server's port. To be called before the first request.
    void setPort(std::uint16_t taken) { port = taken; }

    PageReply answer(const PageRequest& request) const;

private:
    const Page& page;
    const std::string token;
    std::uint16_t port = 0;
    /// How many tabs listen.
    std::shared_ptr<std::atomic<int>> listeners = std::make_shared<std::atomic<int>>(0);

    PageReply file(const std::string& name) const;
    PageReply route(const PageRequest& request) const;
    PageReply events(const std::string& tab) const;
};
