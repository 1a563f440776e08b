#include "simulation/cockpit/event_feed.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace std::chrono_literals;

std::string nextOf(EventFeed& feed, EventFeed::Cursor& cursor) {
    std::string events;
    feed.next(cursor, 0ms, events);
    return events;
}

} // namespace

TEST(EventFeed, TellsWhatHappensInOrder) {
    EventFeed feed;
    EventFeed::Cursor cursor;
    feed.publish("sim", "1");
    feed.publish("log", "2");
    EXPECT_EQ(nextOf(feed, cursor), "event: sim\ndata: 1\n\nevent: log\ndata: 2\n\n");
    feed.publish("sim", "3");
    EXPECT_EQ(nextOf(feed, cursor), "event: sim\ndata: 3\n\n");
}

TEST(EventFeed, KeepsTheConnectionAliveWhenNothingHappens) {
    EventFeed feed;
    EventFeed::Cursor cursor;
    EXPECT_EQ(nextOf(feed, cursor), ": alive\n\n");
}

TEST(EventFeed, TellsOnlyTheLatestState) {
    EventFeed feed;
    EventFeed::Cursor cursor;
    feed.setState("old");
    feed.setState("new");
    EXPECT_EQ(nextOf(feed, cursor), "event: state\ndata: new\n\n");
    feed.setState("new");
    EXPECT_EQ(nextOf(feed, cursor), ": alive\n\n");
}

TEST(EventFeed, TellsTheStateBeforeWhatHappened) {
    EventFeed feed;
    EventFeed::Cursor cursor;
    feed.publish("sim", "1");
    feed.setState("now");
    EXPECT_EQ(nextOf(feed, cursor), "event: state\ndata: now\n\nevent: sim\ndata: 1\n\n");
}

TEST(EventFeed, TellsALateListenerTheLastFewHundred) {
    EventFeed feed;
    for (int i = 1; i <= 1000; ++i) {
        feed.publish("n", std::to_string(i));
    }
    EventFeed::Cursor cursor;
    const std::string events = nextOf(feed, cursor);
    EXPECT_TRUE(events.starts_with("event: n\ndata: 401\n\nevent: n\ndata: 402\n\n")) << events.substr(0, 60);
    EXPECT_TRUE(events.ends_with("event: n\ndata: 1000\n\n"));
    EXPECT_EQ(nextOf(feed, cursor), ": alive\n\n");
}

TEST(EventFeed, GivesEachListenerAll) {
    EventFeed feed;
    EventFeed::Cursor first;
    EventFeed::Cursor second;
    feed.publish("sim", "1");
    EXPECT_EQ(nextOf(feed, first), nextOf(feed, second));
}

TEST(EventFeed, WakesAListenerAndEndsIt) {
    EventFeed feed;
    EventFeed::Cursor cursor;
    std::string events;
    std::thread teller([&feed] { feed.publish("sim", "1"); });
    EXPECT_TRUE(feed.next(cursor, 30000ms, events));
    teller.join();
    EXPECT_EQ(events, "event: sim\ndata: 1\n\n");
    std::thread closer([&feed] { feed.close(); });
    EXPECT_FALSE(feed.next(cursor, 30000ms, events));
    closer.join();
    EXPECT_FALSE(feed.next(cursor, 30000ms, events));
}
