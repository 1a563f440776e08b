#pragma once

#include "tests/support/temp_folder.h"
#include "wire/simconnect_cfg.h"

#include <windows.h>

#include <array>
#include <string>

/// A user whose home holds a SimConnect.cfg, for as long as this lives.
class ConfiguredUser {
public:
    ConfiguredUser() {
        std::array<char, 1024> before{};
        GetEnvironmentVariableA(variable, before.data(), static_cast<DWORD>(before.size()));
        homeBefore = before.data();
        SetEnvironmentVariableA(variable, home.path().c_str());
    }
    explicit ConfiguredUser(const std::string& configuration) : ConfiguredUser() { configure(configuration); }
    explicit ConfiguredUser(const SimConnectEndpoint& endpoint) : ConfiguredUser(sectionOf(endpoint)) {}
    ~ConfiguredUser() { SetEnvironmentVariableA(variable, homeBefore.c_str()); }
    ConfiguredUser(const ConfiguredUser&) = delete;
    ConfiguredUser& operator=(const ConfiguredUser&) = delete;

    void configure(const std::string& configuration) const { home.write("SimConnect.cfg", configuration); }

private:
    static std::string sectionOf(const SimConnectEndpoint& endpoint) {
        const bool isPipe = !endpoint.pipe.empty();
        return "[SimConnect]\nProtocol=" + std::string(isPipe ? "Pipe" : "IPv4") + "\nAddress=" + endpoint.address +
               "\nPort=" + (isPipe ? endpoint.pipe : std::to_string(endpoint.port)) + "\n";
    }

    static constexpr const char* variable = "USERPROFILE";

    TempFolder home;
    std::string homeBefore;
};
