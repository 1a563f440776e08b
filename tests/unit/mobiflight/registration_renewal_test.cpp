#include "mobiflight/registration_renewal.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t second = 1'000'000'000;

} // namespace

TEST(RegistrationRenewal, IsDueEveryTwoSecondsFromItsBeginning) {
    RegistrationRenewal renewal;
    EXPECT_FALSE(renewal.nextDue());
    EXPECT_FALSE(renewal.takeDue(100 * second));
    renewal.begin(5 * second);
    EXPECT_EQ(renewal.nextDue(), 7 * second);
    EXPECT_FALSE(renewal.takeDue(7 * second - 1));
    EXPECT_TRUE(renewal.takeDue(7 * second));
    EXPECT_FALSE(renewal.takeDue(7 * second));
    EXPECT_EQ(renewal.nextDue(), 9 * second);
    EXPECT_TRUE(renewal.takeDue(20 * second));
    EXPECT_EQ(renewal.nextDue(), 22 * second);
}

TEST(RegistrationRenewal, IsNeverDueOnceStopped) {
    RegistrationRenewal renewal;
    renewal.begin(0);
    renewal.stop();
    EXPECT_FALSE(renewal.nextDue());
    EXPECT_FALSE(renewal.takeDue(100 * second));
    EXPECT_FALSE(renewal.takeWarning(100 * second));
}

TEST(RegistrationRenewal, WarnsOnceAfterTenSecondsOfSilence) {
    RegistrationRenewal renewal;
    renewal.begin(0);
    EXPECT_FALSE(renewal.takeWarning(10 * second - 1));
    EXPECT_TRUE(renewal.takeWarning(10 * second));
    EXPECT_FALSE(renewal.takeWarning(60 * second));
    renewal.begin(60 * second);
    EXPECT_TRUE(renewal.takeWarning(70 * second));
}

TEST(RegistrationRenewal, DoesNotWarnOfAModuleThatHasSpoken) {
    RegistrationRenewal renewal;
    renewal.begin(0);
    renewal.moduleAnswered();
    EXPECT_FALSE(renewal.takeWarning(60 * second));
}
