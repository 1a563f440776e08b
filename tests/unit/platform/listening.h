#pragma once

#include "platform/platform.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <string>
#include <thread>
#include <utility>

/// Runs the system's source of notifications on a thread as the program does, and waits until it is set up. The test
/// requests the end of a source that is set up.
class Listening {
public:
    explicit Listening(
        DeviceNotificationSource systemSource, std::function<void()> onChange = [] {})
        : source(std::move(systemSource)) {
        std::promise<bool> setUp;
        thread = std::thread([this, &setUp, onChange = std::move(onChange)] {
            const bool isListening = source.setUp(error);
            setUp.set_value(isListening);
            if (isListening) {
                source.run(onChange);
                source.tearDown();
            }
        });
        succeeded = setUp.get_future().get();
    }
    ~Listening() { thread.join(); }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

    DeviceNotificationSource source;
    std::string error = "unchanged";
    bool succeeded = false;

private:
    std::thread thread;
};
