#include "app/program.h"

#include "app/app.h"
#include "app/app_paths.h"
#include "app/command_line.h"
#include "app/registration_commands.h"
#include "logging/logger.h"

namespace {

constexpr const char* singleInstanceName = "Local\\VantrelBridgeHID.singleton";
/// Interrupt, break and close are handled; log-off and shutdown are not.
constexpr unsigned lastHandledControlEvent = 2;

/// How the control handler, a plain function, reaches the application. Set once and never cleared: the process ends
/// with the application, and clearing it couldn't stop a handler that runs at that moment.
App* controlledApp = nullptr;

int runBridge(const Platform& platform, const CommandLine& options, const std::string& configPath) {
    App app(platform);
    if (options.hidTrace) {
        app.setHidTraceOverride(true);
    }
    if (options.console) {
        controlledApp = &app;
        platform.host.installControlHandler(handleControlEvent);
    }
    std::string error;
    if (!app.init(configPath, options.console, error)) {
        logError("Failed to initialize: " + error);
        Logger::instance().close();
        return 1;
    }
    app.run();
    Logger::instance().close();
    return 0;
}

} // namespace

bool handleControlEvent(unsigned event) {
    if (controlledApp == nullptr || event > lastHandledControlEvent) {
        return false;
    }
    controlledApp->requestStop();
    return true;
}

int runProgram(const Platform& platform, int argc, const char* const* argv) {
    platform.host.attachConsole();
    const CommandLine options = parseCommandLine(argc, argv);
    const std::string configPath = options.configPath.empty() ? defaultConfigPath(platform.host) : options.configPath;
    if (options.listExeXml) {
        return listExeXmlFiles(platform.host);
    }
    if (options.registerProgram) {
        return registerProgram(platform.host, configPath);
    }
    if (options.unregisterProgram) {
        return unregisterProgram(platform.host);
    }
    // A second start isn't an error: the simulator starts the bridge even if the user already has. If the lock can't be
    // created at all, the bridge runs without it.
    if (platform.host.acquireSingleInstance(singleInstanceName) == SingleInstance::AlreadyRunning) {
        return 0;
    }
    return runBridge(platform, options, configPath);
}
