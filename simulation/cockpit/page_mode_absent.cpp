// For builds without an HTTP library.

#include "simulation/cockpit/page_mode.h"

int runPage(const CockpitOptions&, std::ostream& screen) {
    screen << "virtual-cockpit: this build has no page; it plays scenarios (--script) and logs (--replay)\n";
    return 1;
}
