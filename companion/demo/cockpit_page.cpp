#include "companion/demo/cockpit_page.h"

#include "companion/demo/cockpit_configuration.h"
#include "companion/demo/web_files.h"
#include "companion/page/page_action.h"
#include "companion/page/page_session.h"

Page cockpitPage(CockpitController& controller) {
    Page page{"The virtual cockpit", demoWebFiles(), controller.feed()};
    const auto act = [&controller](const JsonValue& action, const std::string& tab, std::string& error) {
        return controller.act(action, tab, error);
    };
    page.routes = {
        {"GET /api/panel", [&controller](const PageRequest&) { return jsonReply(controller.panel()); }},
        {"POST /api/action", actionHandler(act)},
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
