#include "companion/cli/send_command.h"

#include "companion/cli/exit_code.h"

#include <CLI/CLI.hpp>

#include <ostream>

SendCommand::SendCommand(CLI::App& program, const Platform& platform)
    : platform(platform),
      command(program.add_subcommand("send", "Send a command to the simulator")),
      session(*command, platform) {
    command->add_option("RPN", rpn, "The command, as in buttons.json")->required();
    command->footer(
        "Goes through the MobiFlight module, as a client of its own beside the bridge, which may run.\n"
        "Exit code: 0 sent, 1 not sent because something is wrong with the text, or sent but not confirmed,\n"
        "2 wrong usage, 3 no simulator or no module.\n"
        "Examples:\n"
        "  vantrel send \"(>K:AP_MASTER)\"\n"
        "  vantrel send \"250 (>K:HEADING_BUG_SET)\" --timeout 60");
}

int SendCommand::run(std::ostream& out, std::ostream& err) const {
    if (!session.accepts(rpn, err)) {
        return ExitCode::findings;
    }
    ModuleLink link(platform.simConnect, platform.host);
    std::string error;
    if (!session.connect(link, err)) {
        return ExitCode::couldNotLook;
    }
    if (!link.send(rpn, error)) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    // The module works through its commands in order, so the answer to this one comes behind ours.
    if (!link.read("0", session.limit(), error)) {
        err << "vantrel: sent, but " << error << ": the command may be lost\n";
        return ExitCode::findings;
    }
    out << "Sent, and taken by the module: " << rpn << '\n';
    return ExitCode::good;
}
