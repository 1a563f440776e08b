#include "companion/setup/setup_page.h"

#include "companion/page/page_session.h"
#include "companion/setup/web_files.h"
#include "config/json.h"

namespace {

constexpr int badSetupRequest = 400;

PageReply carryOutSetup(SetupController& controller, const PageRequest& request) {
    const JsonParseResult parsed = JsonParser::parse(request.body);
    std::string error = parsed.error;
    if (!parsed.ok || !controller.act(parsed.value, request.tab, error)) {
        return refusal(badSetupRequest, error);
    }
    return jsonReply("{}");
}

PageReply judgeCommand(const PageRequest& request) {
    const JsonParseResult parsed = JsonParser::parse(request.body);
    std::string command;
    if (!parsed.ok || !getString(parsed.value, "command", command)) {
        return refusal(badSetupRequest, "the command is missing");
    }
    return jsonReply(remarksJson(command));
}

} // namespace

Page setupPage(SetupController& controller) {
    Page page{"The setup page", setupWebFiles(), controller.feed()};
    page.routes = {
        {"GET /api/catalogue", [](const PageRequest&) { return jsonReply(catalogueJson()); }},
        {"GET /api/difference", [&controller](const PageRequest&) { return jsonReply(controller.difference()); }},
        {"GET /api/devices", [&controller](const PageRequest&) { return jsonReply(controller.devices()); }},
        {"GET /api/check-up", [&controller](const PageRequest&) { return jsonReply(controller.checkUp()); }},
        {"POST /api/remarks", judgeCommand},
        {"POST /api/action", [&controller](const PageRequest& request) { return carryOutSetup(controller, request); }},
    };
    page.onTabOpened = [&controller](const std::string& tab) { controller.openTab(tab); };
    page.onTabClosed = [&controller](const std::string& tab) { controller.closeTab(tab); };
    return page;
}

bool runSetupPage(const Platform& platform, const SetupPageOptions& options, std::ostream& screen, std::string& error) {
    SetupController controller(platform, options.setup);
    const Page page = setupPage(controller);
    PageSession session(page);
    if (!session.open(options.port, error) || !controller.start(error)) {
        return false;
    }
    session.run(options.inBrowser, screen);
    if (controller.hasUnsavedChanges()) {
        screen << "Changes that weren't saved are lost.\n";
    }
    if (controller.hasBridge()) {
        screen << "Ending the bridge, which may take half a minute.\n" << std::flush;
    }
    controller.stop();
    return true;
}
