#include "tests/bench/latency_measure.h"

#include "hid/hid_protocol.h"
#include "tests/bench/latency_simulator.h"
#include "tests/support/process_memory.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

using Clock = LatencySimulator::Clock;

/// The subject's process and the other end of its report socket.
class SubjectProcess {
public:
    SubjectProcess(const LatencySubject& subject, std::uint16_t port) {
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()) != 0) {
            throw std::runtime_error("no socket for reports");
        }
        reports = ends[0];
        fcntl(reports, F_SETFD, FD_CLOEXEC);
        const std::string socketText = std::to_string(ends[1]);
        const std::string portText = std::to_string(port);
        pid = fork();
        if (pid == 0) {
            execl("/proc/self/exe", "latency-bench", subject.mode.c_str(), socketText.c_str(), portText.c_str(),
                  subject.configPath.c_str(), nullptr);
            _exit(127);
        }
        close(ends[1]);
    }
    ~SubjectProcess() {
        close(reports);
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
    SubjectProcess(const SubjectProcess&) = delete;
    SubjectProcess& operator=(const SubjectProcess&) = delete;

    void press(std::uint32_t controlId) const {
        const HidProtocol::Report report{
            0x01, 0, 1, 0, static_cast<std::uint8_t>(controlId & 0xFFU), static_cast<std::uint8_t>(controlId >> 8U), 1};
        if (send(reports, report.data(), report.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(report.size())) {
            throw std::runtime_error("the subject is gone");
        }
    }

    int pid = -1;

private:
    int reports = -1;
};

/// How long the threads of a process have run, in seconds. The scheduler's own count: the ticks of /proc/PID/stat miss
/// or double what is shorter than they are.
double cpuSeconds(int pid) {
    double nanoseconds = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        double onCpu = 0;
        std::ifstream(task.path() / "schedstat") >> onCpu;
        nanoseconds += onCpu;
    }
    return nanoseconds / 1e9;
}

/// Presses in turn; returns when each report left.
std::vector<Clock::time_point> feed(const SubjectProcess& process, const LatencyLoad& load) {
    std::vector<Clock::time_point> sent(load.reports);
    const std::chrono::duration<double> pause(load.reportsPerSecond > 0 ? 1 / load.reportsPerSecond : 0);
    const auto start = Clock::now();
    for (std::size_t i = 0; i < load.reports; ++i) {
        if (load.reportsPerSecond > 0) {
            std::this_thread::sleep_until(start +
                                          std::chrono::duration_cast<Clock::duration>(pause * static_cast<double>(i)));
        }
        sent[i] = Clock::now();
        process.press(static_cast<std::uint32_t>(i % load.controls));
    }
    return sent;
}

double watchIdle(int pid, double seconds) {
    const double before = cpuSeconds(pid);
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    return (cpuSeconds(pid) - before) / seconds;
}

} // namespace

LatencyResult measureLatency(const LatencySubject& subject, const LatencyLoad& load) {
    LatencySimulator simulator(load.reports, load.controls);
    const SubjectProcess process(subject, simulator.port());
    if (!simulator.waitUntilReady(!subject.configPath.empty())) {
        throw std::runtime_error("the " + subject.mode + " doesn't connect");
    }
    // The registration's own writes settle.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));

    const std::vector<Clock::time_point> sent = feed(process, load);
    simulator.waitForAll();
    LatencyResult result;
    result.residentMiB = residentMiB(std::to_string(process.pid));
    result.idleCpu = load.idleSeconds > 0 ? watchIdle(process.pid, load.idleSeconds) : 0;
    result.sent = load.reports;
    result.received = simulator.received();
    result.misplaced = simulator.misplaced();
    const std::vector<Clock::time_point>& arrivals = simulator.arrivals();
    for (std::size_t i = 0; i < std::min(result.sent, result.received); ++i) {
        result.latencyUs.push_back(std::chrono::duration<double, std::micro>(arrivals[i] - sent[i]).count());
    }
    const std::chrono::duration<double> duration = arrivals.back() - sent.front();
    result.reportsPerSecond = static_cast<double>(result.sent) / duration.count();
    return result;
}

double idleWithoutSimulator(const LatencySubject& subject, double seconds) {
    const SubjectProcess process(subject, 0);
    // Its start is over by then.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    return watchIdle(process.pid, seconds);
}
