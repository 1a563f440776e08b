#include "platform/windows/windows_version.h"

#include <gtest/gtest.h>

namespace {

TEST(WindowsVersion, NoticeIsForAllBefore1809) {
    for (const WindowsVersion old : {WindowsVersion{6, 1, 22000}, WindowsVersion{10, 0, 17762}}) {
        EXPECT_NE(windowsVersionNotice(old).find("version 1809"), std::string::npos);
    }
    for (const WindowsVersion fine :
         {WindowsVersion{10, 0, 17763}, WindowsVersion{10, 0, 26100}, WindowsVersion{11, 0, 1}}) {
        EXPECT_EQ(windowsVersionNotice(fine), "");
    }
}

TEST(WindowsVersion, IsThatOfARealSystem) {
    ASSERT_TRUE(windowsVersion().has_value());
    EXPECT_GE(windowsVersion()->major, 6U);
}

} // namespace
