#include "mobiflight/registration_renewal.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t oneSecond = 1'000'000'000;

} // namespace

TEST(RegistrationRenewal, IsDueEveryTwoSecondsFromItsBeginning) {
    RegistrationRenewal renewal;
    EXPECT_FALSE(renewal.nextDue());
    EXPECT_FALSE(renewal.takeDue(100 * oneSecond));
    renewal.begin(5 * oneSecond);
    EXPECT_EQ(renewal.nextDue(), 7 * oneSecond);
    EXPECT_FALSE(renewal.takeDue(7 * oneSecond - 1));
    EXPECT_TRUE(renewal.takeDue(7 * oneSecond));
    EXPECT_FALSE(renewal.takeDue(7 * oneSecond));
    EXPECT_EQ(renewal.nextDue(), 9 * oneSecond);
    EXPECT_TRUE(renewal.takeDue(20 * oneSecond));
    EXPECT_EQ(renewal.nextDue(), 22 * oneSecond);
}

TEST(RegistrationRenewal, IsNeverDueOnceStopped) {
    RegistrationRenewal renewal;
    renewal.begin(0);
    renewal.stop();
    EXPECT_FALSE(renewal.nextDue());
    EXPECT_FALSE(renewal.takeDue(100 * oneSecond));
    EXPECT_FALSE(renewal.takeWarning(100 * oneSecond));
}

TEST(RegistrationRenewal, WarnsOnceAfterTenSecondsOfSilence) {
    RegistrationRenewal renewal;
    renewal.begin(0);
    EXPECT_FALSE(renewal.takeWarning(10 * oneSecond - 1));
    EXPECT_TRUE(renewal.takeWarning(10 * oneSecond));
    EXPECT_FALSE(renewal.takeWarning(60 * oneSecond));
    renewal.begin(60 * oneSecond);
    EXPECT_TRUE(renewal.takeWarning(70 * oneSecond));
}

TEST(RegistrationRenewal, DoesNotWarnOfAModuleThatHasSpoken) {
    RegistrationRenewal renewal;
    renewal.begin(0);
    renewal.moduleAnswered();
    EXPECT_FALSE(renewal.takeWarning(60 * oneSecond));
}
