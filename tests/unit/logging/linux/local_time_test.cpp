#include "logging/logger.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>

// The environment and its time zone belong to the whole process, in which no other thread runs here.
// NOLINTBEGIN(concurrency-mt-unsafe)

namespace {

/// The process's time zone for the rest of the test.
class TimeZone {
public:
    explicit TimeZone(const char* rule) {
        if (const char* value = std::getenv("TZ")) {
            before = value;
        }
        set(rule);
    }
    ~TimeZone() { set(before ? before->c_str() : nullptr); }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    static void set(const char* rule) {
        if (rule != nullptr) {
            setenv("TZ", rule, 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

    std::optional<std::string> before;
};

std::string localTimeNow() {
    const std::time_t now = std::time(nullptr);
    std::ostringstream text;
    text << std::put_time(std::localtime(&now), "%Y-%m-%d %H:%M:%S");
    return text.str();
}

TEST(LoggerLocalTime, StampIsThatOfTheTimeZone) {
    for (const char* rule : {"EAST-5:45", "WEST9:30"}) {
        const TimeZone zone(rule);
        const TempFolder folder;
        Logger logger;
        logger.configure(folder.path(), "bridge", false);
        const std::string before = localTimeNow();
        logger.log(Level::Info, "m");
        const std::string after = localTimeNow();
        std::string written;
        ASSERT_TRUE(FileSystem::readFile(folder.path("bridge.log"), written));
        const std::string stamp = written.substr(0, before.size());
        EXPECT_LE(before, stamp) << rule;
        EXPECT_LE(stamp, after) << rule;
    }
}

} // namespace

// NOLINTEND(concurrency-mt-unsafe)
