#include "companion/setup/setup_page.h"

#include "companion/page/page_action.h"
#include "companion/page/page_session.h"
#include "companion/setup/web_files.h"

namespace {

PageReply judgeCommand(const PageRequest& request) {
    const JsonParseResult parsed = JsonParser::parse(request.body);
    std::string command;
    if (!parsed.ok || !getString(parsed.value, "command", command)) {
        return refusal(badRequest, "the command is missing");
    }
    return jsonReply(remarksJson(command));
}

} // namespace

Page setupPage(SetupController& controller) {
    Page page{"The setup page", setupWebFiles(), controller.feed()};
    const auto act = [&controller](const JsonValue& action, const std::string& tab, std::string& error) {
        return controller.act(action, tab, error);
    };
    page.routes = {
        {"GET /api/catalogue", [](const PageRequest&) { return jsonReply(catalogueJson()); }},
        {"GET /api/difference", [&controller](const PageRequest&) { return jsonReply(controller.difference()); }},
        {"GET /api/devices", [&controller](const PageRequest&) { return jsonReply(controller.devices()); }},
        {"GET /api/check-up", [&controller](const PageRequest&) { return jsonReply(controller.checkUp()); }},
        {"POST /api/remarks", judgeCommand},
        {"POST /api/action", actionHandler(act)},
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
