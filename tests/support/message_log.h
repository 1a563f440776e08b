#pragma once

#include "simconnect/simconnect_api.h"

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

/// Keeps what a dispatch hands out. `dispatchProc` with the log as context is the callback.
struct MessageLog {
    std::vector<std::vector<std::uint8_t>> messages;
    /// Called with each message after it was kept.
    std::function<void(const std::vector<std::uint8_t>& message)> onMessage;

    static void dispatchProc(SimConnectRecv* message, std::uint32_t size, void* context) {
        auto& log = *static_cast<MessageLog*>(context);
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(message);
        log.messages.emplace_back(bytes, bytes + size);
        if (log.onMessage) {
            log.onMessage(log.messages.back());
        }
    }

    std::vector<std::uint32_t> ids() const {
        std::vector<std::uint32_t> ids;
        for (const auto& message : messages) {
            ids.push_back(wordOf(message, 8));
        }
        return ids;
    }

    static std::uint32_t wordOf(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
        return static_cast<std::uint32_t>(bytes.at(offset)) | static_cast<std::uint32_t>(bytes.at(offset + 1)) << 8U |
               static_cast<std::uint32_t>(bytes.at(offset + 2)) << 16U |
               static_cast<std::uint32_t>(bytes.at(offset + 3)) << 24U;
    }
};
