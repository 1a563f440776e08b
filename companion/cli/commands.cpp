#include "companion/cli/commands.h"

#include "companion/cli/terminal.h"

#include <functional>
#include <ostream>
#include <utility>

Commands::Commands(CLI::App& program, const Platform& platform)
    : platform(platform),
      setup(program, platform),
      doctor(program, platform),
      check(program, platform.host),
      boards(program, platform),
      watch(program, platform),
      record(program, platform),
      replay(program, platform),
      light(program, platform),
      send(program, platform),
      value(program, platform),
      report(program, platform, VANTREL_VERSION),
      demo(program),
      completions(program) {}

int Commands::run(std::ostream& out, std::ostream& err) const {
    // The demo's own stream to the screen: its bridge uses `out` while it runs in console mode.
    std::ostream screen(out.rdbuf());
    const TextStyle style{wantsColour(platform.host), showsUnicode(platform.host)};
    const std::pair<bool, std::function<int()>> commands[] = {
        {setup.isChosen(), [&] { return setup.run(out, err); }},
        {doctor.isChosen(), [&] { return doctor.run(out, style); }},
        {check.isChosen(), [&] { return check.run(out, err, style.colour); }},
        {boards.isChosen(), [&] { return boards.run(out, err); }},
        {watch.isChosen(), [&] { return watch.run(out, err); }},
        {record.isChosen(), [&] { return record.run(out, err); }},
        {replay.isChosen(), [&] { return replay.run(out, err); }},
        {light.isChosen(), [&] { return light.run(out, err); }},
        {send.isChosen(), [&] { return send.run(out, err); }},
        {value.isChosen(), [&] { return value.run(out, err); }},
        {report.isChosen(), [&] { return report.run(out, err); }},
        {demo.isChosen(), [&] { return demo.run(screen, err); }},
        {completions.isChosen(), [&] { return completions.run(out); }},
    };
    int code = 0;
    for (const auto& [isChosen, run] : commands) {
        if (isChosen) {
            code = run();
        }
    }
    return code;
}
