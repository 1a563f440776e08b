#include "companion/page/event_feed.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace std::chrono_literals;

class EventFeedTest : public testing::Test {
protected:
    std::string next() {
        std::string events;
        feed.next(cursor, 0ms, events);
        return events;
    }

    EventFeed feed;
    EventFeed::Cursor cursor;
};

} // namespace

TEST_F(EventFeedTest, GivesWhatHappensInOrderAndKeepsTheConnectionAliveBetween) {
    feed.publish("sim", "1");
    feed.publish("log", "2");
    EXPECT_EQ(next(), "event: sim\ndata: 1\n\nevent: log\ndata: 2\n\n");
    feed.publish("sim", "3");
    EXPECT_EQ(next(), "event: sim\ndata: 3\n\n");
    EXPECT_EQ(next(), ": alive\n\n");
    cursor = {};
    EXPECT_TRUE(next().ends_with("event: sim\ndata: 3\n\n")) << "each listener gets all";
}

TEST_F(EventFeedTest, GivesTheLatestStateOnceAndBeforeWhatHappened) {
    feed.setState("old");
    feed.publish("sim", "1");
    feed.setState("new");
    EXPECT_EQ(next(), "event: state\ndata: new\n\nevent: sim\ndata: 1\n\n");
    feed.setState("new");
    EXPECT_EQ(next(), ": alive\n\n");
}

TEST_F(EventFeedTest, GivesALateListenerTheLastFewHundred) {
    for (int i = 1; i <= 1000; ++i) {
        feed.publish("n", std::to_string(i));
    }
    const std::string events = next();
    EXPECT_TRUE(events.starts_with("event: n\ndata: 401\n\nevent: n\ndata: 402\n\n")) << events.substr(0, 60);
    EXPECT_TRUE(events.ends_with("event: n\ndata: 1000\n\n"));
    EXPECT_EQ(next(), ": alive\n\n");
}

TEST_F(EventFeedTest, WakesAListenerAndEndsIt) {
    std::string events;
    std::thread source([this] { feed.publish("sim", "1"); });
    EXPECT_TRUE(feed.next(cursor, 30000ms, events));
    source.join();
    EXPECT_EQ(events, "event: sim\ndata: 1\n\n");
    std::thread closer([this] { feed.close(); });
    EXPECT_FALSE(feed.next(cursor, 30000ms, events));
    closer.join();
    EXPECT_FALSE(feed.next(cursor, 30000ms, events));
}
