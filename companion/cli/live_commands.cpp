#include "companion/cli/live_commands.h"

LiveCommands::LiveCommands(CLI::App& program, const Platform& platform)
    : watch(program, platform), light(program, platform), send(program, platform), value(program, platform) {}

bool LiveCommands::isChosen() const {
    return watch.isChosen() || light.isChosen() || send.isChosen() || value.isChosen();
}

int LiveCommands::run(std::ostream& out, std::ostream& err) const {
    if (watch.isChosen()) {
        return watch.run(out, err);
    }
    if (light.isChosen()) {
        return light.run(out, err);
    }
    return send.isChosen() ? send.run(out, err) : value.run(out, err);
}
