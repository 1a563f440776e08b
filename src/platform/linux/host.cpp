#include "platform/linux/closed_output.h"
#include "platform/linux/control_signals.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/process_list.h"
#include "platform/linux/single_instance.h"
#include "platform/portable_host.h"
#include "platform/system_parts.h"

#include <unistd.h>

#include <array>

namespace {

std::string executablePath() {
    // The same limit as on Windows, so that both systems refuse the same paths.
    std::array<char, 260> path{};
    const auto size = readlink("/proc/self/exe", path.data(), path.size());
    const bool fits = size > 0 && static_cast<std::size_t>(size) < path.size();
    return fits ? std::string(path.data(), static_cast<std::size_t>(size)) : std::string();
}

} // namespace

Host systemHost() {
    Host host = portableHost();
    host.findProcess = [](const auto& visit) { return findProcessIn("/proc", visit); };
    host.executablePath = executablePath;
    host.commonDataFolder = [host] { return dataFolder("/var/lib", host); };
    host.acquireSingleInstance = takeSingleInstance;
    // A program has its terminal already.
    host.attachConsole = surviveClosedOutput;
    host.installControlHandler = installControlSignals;
    return host;
}
