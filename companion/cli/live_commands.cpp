#include "companion/cli/live_commands.h"

int LiveCommands::run(std::ostream& out, std::ostream& err) const {
    return watch.run(out, err);
}
