#include "companion/cli/live_commands.h"

namespace {

template <typename Command>
void runIfChosen(const Command& command, std::ostream& out, std::ostream& err, std::optional<int>& code) {
    if (command.isChosen()) {
        code = command.run(out, err);
    }
}

} // namespace

LiveCommands::LiveCommands(CLI::App& program, const Platform& platform)
    : watch(program, platform),
      record(program, platform),
      replay(program, platform),
      light(program, platform),
      send(program, platform),
      value(program, platform) {}

std::optional<int> LiveCommands::run(std::ostream& out, std::ostream& err) const {
    std::optional<int> code;
    runIfChosen(watch, out, err, code);
    runIfChosen(record, out, err, code);
    runIfChosen(replay, out, err, code);
    runIfChosen(light, out, err, code);
    runIfChosen(send, out, err, code);
    runIfChosen(value, out, err, code);
    return code;
}
