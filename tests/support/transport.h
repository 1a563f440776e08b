#pragma once

#include "wire/pipe.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

/// How a client reaches a simulator.
enum class Transport { Tcp, Pipe };

/// Those that this system has.
inline std::vector<Transport> transports() {
    return havePipes() ? std::vector<Transport>{Transport::Tcp, Transport::Pipe}
                       : std::vector<Transport>{Transport::Tcp};
}

/// Names the instances of a test that runs over each of them.
inline std::string transportName(const testing::TestParamInfo<Transport>& info) {
    return info.param == Transport::Tcp ? "Tcp" : "Pipe";
}

/// A pipe's name that nobody else uses.
inline std::string freePipeName() {
    std::random_device random;
    return std::string("bridge-test-").append(std::to_string(random()));
}
