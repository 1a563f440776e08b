// The page of vantrel.exe: it answers on this machine, and Ctrl+C ends the program in order.

#include "tests/windows/served_page.h"

TEST(DemoOnWindows, ServesItsPageToThisMachineAndEndsInOrderWhileATabListens) {
    ServedPage page(L"demo");
    ASSERT_TRUE(page.isUp()) << page.printed();
    std::string body;
    EXPECT_EQ(page.get("/", body), 200);
    EXPECT_TRUE(body.starts_with("<!doctype html>"));
    EXPECT_EQ(page.get("/api/panel", body), 403);
    // A tab that listens until the bridge has its session, then Ctrl+C, then what still comes.
    bool pressed = false;
    page.listen([&](const std::string& received) {
        if (!pressed && received.find("MobiFlight client registered") != std::string::npos) {
            pressed = SurvivingControlC::press();
        }
    });
    EXPECT_TRUE(pressed);
    EXPECT_EQ(page.exitCode(), 0U);
    EXPECT_NE(page.printed().find("The virtual cockpit ends."), std::string::npos) << page.printed();
}
