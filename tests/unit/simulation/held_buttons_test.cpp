#include "simulation/boards/held_buttons.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

/// Two boards whose reports are noted as "value control mode".
class HeldButtonsTest : public testing::Test {
protected:
    void SetUp() override {
        for (VirtualBoard* const board : {&first, &second}) {
            board->powerOn([this](std::span<const std::uint8_t> report) {
                note(reports,
                     std::to_string(report[6]) + ' ' + std::to_string(report[4]) + ' ' + std::to_string(report[8]));
            });
        }
        for (const char* const holder : {"tab", "left", "right"}) {
            buttons->addHolder(holder);
        }
    }

    void note(Texts& texts, const std::string& text) {
        const std::lock_guard lock(mutex);
        texts.push_back(text);
    }
    Texts copyOf(const Texts& texts) {
        const std::lock_guard lock(mutex);
        return texts;
    }
    Texts sent() { return copyOf(reports); }
    /// Without the holds: on a busy machine any press may last long enough for one.
    Texts sentBesideHolds() {
        Texts texts = sent();
        std::erase_if(texts, [](const std::string& text) { return text.starts_with('2'); });
        return texts;
    }

    bool press(const HeldButtons::Button& button, const std::string& holder) {
        std::string error;
        return buttons->press(button, holder, error);
    }

    VirtualBoard first;
    VirtualBoard second;
    // Guards both lists.
    std::mutex mutex;
    Texts reports;
    Texts callbacks;
    std::optional<HeldButtons> buttons{[this](const HeldButtons::Button& button, std::string_view report) {
        note(callbacks, std::string(report) + ' ' + std::to_string(button.controlId));
    }};
};

} // namespace

TEST_F(HeldButtonsTest, SendPressAndReleaseOnce) {
    buttons->release({&first, 5, 1});
    press({&first, 5, 1}, "tab");
    press({&first, 5, 1}, "tab");
    EXPECT_EQ(buttons->heldOn(first), std::vector<std::uint16_t>{5});
    EXPECT_TRUE(buttons->heldOn(second).empty());
    buttons->release({&first, 5, 1});
    buttons->release({&first, 5, 1});
    EXPECT_TRUE(buttons->heldOn(first).empty());
    EXPECT_EQ(sentBesideHolds(), (Texts{"1 5 1", "0 5 1"}));
}

TEST_F(HeldButtonsTest, RepeatAHoldUntilTheRelease) {
    const auto begin = std::chrono::steady_clock::now();
    press({&first, 7, 0}, "tab");
    ASSERT_TRUE(waitUntil([this] { return sent().size() >= 4; }));
    // Three holds: not before their time.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, HeldButtons::firstHold + 2 * HeldButtons::holdPeriod);
    buttons->release({&first, 7, 0});
    const Texts all = sent();
    EXPECT_EQ(Texts(all.begin(), all.begin() + 4), (Texts{"1 7 0", "2 7 0", "2 7 0", "2 7 0"}));
    EXPECT_EQ(all.back(), "0 7 0");
    const Texts called = copyOf(callbacks);
    ASSERT_EQ(called.size(), all.size());
    EXPECT_EQ(Texts(called.begin(), called.begin() + 2), (Texts{"press 7", "hold 7"}));
    EXPECT_EQ(called.back(), "release 7");
}

TEST_F(HeldButtonsTest, HoldButtonsOfTwoBoardsSideBySide) {
    press({&first, 5, 0}, "tab");
    press({&second, 5, 1}, "tab");
    buttons->release({&first, 5, 0});
    EXPECT_EQ(buttons->heldOn(second), std::vector<std::uint16_t>{5});
    ASSERT_TRUE(waitUntil([this] { return sent().back() == "2 5 1"; }));
}

TEST_F(HeldButtonsTest, ReleaseThoseOfOneHolder) {
    press({&first, 5, 0}, "left");
    press({&first, 6, 0}, "right");
    press({&first, 5, 0}, "right");
    buttons->removeHolder("right");
    EXPECT_EQ(sentBesideHolds(), (Texts{"1 5 0", "1 6 0", "0 6 0"}));
}

TEST_F(HeldButtonsTest, ArePressedOnlyByThoseWhoAreThere) {
    EXPECT_TRUE(press({&first, 4, 0}, ""));
    buttons->addHolder("tab");
    buttons->removeHolder("tab");
    EXPECT_TRUE(press({&first, 5, 0}, "tab")) << "came twice";
    buttons->removeHolder("tab");
    EXPECT_FALSE(press({&first, 6, 0}, "tab"));
    EXPECT_EQ(sentBesideHolds(), (Texts{"1 4 0", "1 5 0", "0 5 0"}));
}

TEST_F(HeldButtonsTest, ReleaseThoseOfOneBoardOrAll) {
    press({&first, 5, 0}, "tab");
    press({&second, 6, 1}, "tab");
    buttons->releaseAllOn(first);
    EXPECT_EQ(sentBesideHolds(), (Texts{"1 5 0", "1 6 1", "0 5 0"}));
    press({&first, 7, 0}, "tab");
    buttons->releaseAll();
    EXPECT_EQ(sentBesideHolds().size(), 6U);
    EXPECT_TRUE(buttons->heldOn(first).empty());
    EXPECT_TRUE(buttons->heldOn(second).empty());
}

TEST_F(HeldButtonsTest, EndReleasesWhatIsStillDown) {
    press({&first, 5, 0}, "tab");
    buttons.reset();
    EXPECT_EQ(sentBesideHolds(), (Texts{"1 5 0", "0 5 0"}));
}
