#include "simulation/cockpit/page_mode.h"

#include "simulation/cockpit/cockpit_configuration.h"
#include "simulation/cockpit/cockpit_controller.h"
#include "simulation/cockpit/open_browser.h"
#include "simulation/cockpit/page_request_handler.h"
#include "simulation/cockpit/page_server.h"
#include "simulation/cockpit/request_checks.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

std::atomic<bool> interrupted{false};

bool onInterrupt(unsigned) {
    interrupted = true;
    return true;
}

void waitForInterrupt() {
    while (!interrupted) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

int fail(std::ostream& screen, const std::string& reason) {
    screen << "virtual-cockpit: " << reason << '\n';
    return 1;
}

std::string portFailure(const CockpitOptions& options) {
    return options.port ? "port " + std::to_string(*options.port) +
                              " can't be had: something else uses it, or it needs other rights"
                        : std::string("none of the usual ports is free; choose one with --port");
}

} // namespace

int runPage(const CockpitOptions& options, std::ostream& screen) {
    CockpitConfiguration configuration;
    std::string error;
    if (!loadCockpitConfiguration(options.configPath, configuration, error)) {
        return fail(screen, error);
    }
    CockpitController controller(configuration, {options.realBoards, options.realSimulator});
    const std::string token = randomToken();
    PageRequestHandler answers(controller, token);
    PageServer server([&answers](const PageRequest& request) { return answers.answer(request); });
    if (!server.bind(options.port)) {
        return fail(screen, portFailure(options));
    }
    answers.setPort(server.port());
    systemPlatform().host.installControlHandler(onInterrupt);
    if (!controller.start(error)) {
        return fail(screen, error);
    }
    server.start();
    const std::string address = "http://127.0.0.1:" + std::to_string(server.port()) + "/#" + token;
    screen << "The virtual cockpit is at\n\n    " << address << "\n\nCtrl+C ends it.\n" << std::flush;
    if (options.openBrowser) {
        openBrowser(address);
    }
    waitForInterrupt();
    screen << "\nThe cockpit ends.\n" << std::flush;
    // The streams of events end with the feed, and with them the last requests.
    controller.feed().close();
    server.stop();
    controller.stop();
    return 0;
}
