#include "tests/bench/latency_measure.h"

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
        std::vector<std::string> words{subject.program, std::to_string(ends[1]), std::to_string(port)};
        words.insert(words.end(), subject.arguments.begin(), subject.arguments.end());
        std::vector<char*> argv;
        for (std::string& word : words) {
            argv.push_back(word.data());
        }
        argv.push_back(nullptr);
        pid = fork();
        if (pid == 0) {
            execv(subject.program.c_str(), argv.data());
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
        const std::array<std::uint8_t, 32> report{
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

/// Presses in turn; gives when each report left.
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
    if (!simulator.waitUntilReady(subject.registers)) {
        throw std::runtime_error(subject.name + " doesn't connect");
    }
    // The registration's own writes settle.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));

    const std::vector<Clock::time_point> sent = feed(process, load);
    LatencyResult result;
    result.complete = simulator.waitForAll();
    result.residentMiB = residentMiB(std::to_string(process.pid));
    if (load.idleSeconds > 0) {
        result.idleCpu = watchIdle(process.pid, load.idleSeconds);
    }
    result.sent = load.reports;
    result.received = simulator.received();
    result.misplaced = simulator.misplaced();
    const std::size_t whole = std::min(result.sent, result.received);
    for (std::size_t i = 0; i < whole; ++i) {
        result.latencyUs.push_back(
            std::chrono::duration<double, std::micro>(simulator.arrivals()[i] - sent[i]).count());
    }
    if (whole > 0) {
        result.reportsPerSecond = static_cast<double>(whole) /
                                  std::chrono::duration<double>(simulator.arrivals()[whole - 1] - sent.front()).count();
    }
    return result;
}

double idleWithoutSimulator(const LatencySubject& subject, double seconds) {
    const SubjectProcess process(subject, 0);
    // Its start is over by then.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    return watchIdle(process.pid, seconds);
}

double percentile(std::vector<double> samples, double share) {
    if (samples.empty()) {
        return 0;
    }
    const auto rank = static_cast<std::size_t>(share * static_cast<double>(samples.size() - 1));
    const auto place = samples.begin() + static_cast<std::ptrdiff_t>(rank);
    std::nth_element(samples.begin(), place, samples.end());
    return *place;
}

std::string programFolder() {
    std::array<char, 4096> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::string whole(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    return whole.substr(0, whole.rfind('/') + 1);
}
