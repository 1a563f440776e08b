#include "logging/log_line.h"

#include <gtest/gtest.h>

namespace {

TEST(LogLine, IsReadAsItWasWritten) {
    for (const LogLine& line : {LogLine{"2026-01-31 12:00:00", "WARN", "a message"},
                                LogLine{"2026-01-31 12:00:00", "DEBUG", " [brackets] and blanks "},
                                LogLine{"2026-01-31 12:00:00", "INFO", ""}}) {
        EXPECT_EQ(readLogLine(logLine(line.time, line.level, line.message)), line);
    }
    EXPECT_EQ(logLine("2026-01-31 12:00:00", "WARN", "a message"), "2026-01-31 12:00:00 [WARN] a message");
}

TEST(LogLine, IsNotReadFromAnotherForm) {
    for (const char* const text :
         {"", "the second line of a message", "2026-01-31 12:00:00", "2026-01-31 12:00:00 [WARN",
          "12:00:00 [WARN] without a date", "[WARN] without a time"}) {
        EXPECT_EQ(readLogLine(text), std::nullopt) << text;
    }
}

} // namespace
