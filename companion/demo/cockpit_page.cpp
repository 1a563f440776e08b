#include "companion/demo/cockpit_page.h"

#include "companion/demo/cockpit_configuration.h"
#include "companion/demo/web_files.h"
#include "companion/page/page_session.h"
#include "config/json.h"

namespace {

PageReply carryOut(CockpitController& controller, const PageRequest& request) {
    constexpr int badRequest = 400;
    const JsonParseResult parsed = JsonParser::parse(request.body);
    std::string error = parsed.error;
    if (!parsed.ok || !controller.act(parsed.value, request.tab, error)) {
        return refusal(badRequest, error);
    }
    return jsonReply("{}");
}

} // namespace

Page cockpitPage(CockpitController& controller) {
    Page page{"The virtual cockpit", demoWebFiles(), controller.feed()};
    page.routes = {
        {"GET /api/panel", [&controller](const PageRequest&) { return jsonReply(controller.panel()); }},
        {"POST /api/action", [&controller](const PageRequest& request) { return carryOut(controller, request); }},
    };
    page.onTabOpened = [&controller](const std::string& tab) { controller.openTab(tab); };
    page.onTabClosed = [&controller](const std::string& tab) { controller.closeTab(tab); };
    return page;
}

bool runCockpitPage(const CockpitPageOptions& options, std::ostream& screen, std::string& error) {
    CockpitConfiguration configuration;
    if (!loadCockpitConfiguration(options.configPath, configuration, error)) {
        return false;
    }
    CockpitController controller(configuration, options.sides);
    const Page page = cockpitPage(controller);
    PageSession session(page);
    if (!session.open(options.port, error) || !controller.start(error)) {
        return false;
    }
    session.run(options.inBrowser, screen);
    controller.stop();
    return true;
}
