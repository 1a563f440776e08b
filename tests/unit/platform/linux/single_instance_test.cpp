#include "platform/linux/single_instance.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>
#include <string>

namespace {

std::string uniqueLockName() {
    std::random_device random;
    return "bridge-test-" + std::to_string(random()) + "-" + std::to_string(random());
}

/// Takes the lock in a process of its own, which ends at once.
SingleInstance takeElsewhere(const std::string& name) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(static_cast<int>(takeSingleInstance(name)));
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    return static_cast<SingleInstance>(WEXITSTATUS(status));
}

TEST(SingleInstanceOnLinux, IsTakenForOtherProcessesToo) {
    const std::string name = uniqueLockName();
    EXPECT_EQ(takeSingleInstance(name), SingleInstance::Acquired);
    EXPECT_EQ(takeElsewhere(name), SingleInstance::AlreadyRunning);
}

TEST(SingleInstanceOnLinux, GoesWithTheProcessThatTookIt) {
    const std::string name = uniqueLockName();
    EXPECT_EQ(takeElsewhere(name), SingleInstance::Acquired);
    EXPECT_EQ(takeSingleInstance(name), SingleInstance::Acquired);
}

TEST(SingleInstanceOnLinux, LongestNameThatFitsIsTakenAsAWhole) {
    const std::string user = "." + std::to_string(getuid());
    std::string name = uniqueLockName();
    name.resize(107 - user.size(), 'x');
    EXPECT_EQ(takeSingleInstance(name), SingleInstance::Acquired);
    EXPECT_EQ(takeSingleInstance(name.substr(1)), SingleInstance::Acquired);
    EXPECT_EQ(takeSingleInstance(name + "x"), SingleInstance::Unavailable);
}

} // namespace
