#include "mobiflight/rpn_queue.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>

namespace {

/// Plays a script of steps, separated by commas, on a queue:
///
///     normal TEXT, hold TEXT, knob TEXT COUNT, handshake TEXT    adds a command
///     take, take-unready, back, finish, detents TEXT, cancel TEXT, clear
///     at TIME                                                    the time of the commands to come
///
/// and records the results: "+" or "=" for a command that became an entry or was absorbed, "TEXT@TIME" or "nothing" for
/// what was taken, "xCOUNT" for detents. At the end it adds the waiting texts in brackets, and "in flight" when a
/// command is.
class QueueScript {
public:
    static std::string play(const std::string& script) {
        QueueScript player;
        std::istringstream steps(script);
        for (std::string step; std::getline(steps, step, ',');) {
            player.perform(step);
        }
        return player.record + player.remainder();
    }

private:
    void perform(const std::string& step) {
        std::istringstream words(step);
        std::string verb;
        std::string text;
        words >> verb >> text;
        const std::map<std::string, std::function<void()>> actions{
            {"normal", [&] { add({.text = text, .needsReady = true}, words); }},
            {"hold", [&] { add({.text = text, .needsReady = true, .kind = RpnKind::Hold}, words); }},
            {"knob", [&] { add({.text = text, .needsReady = true, .kind = RpnKind::Encoder}, words); }},
            {"handshake", [&] { add({.text = text}, words); }},
            {"take", [&] { take(true); }},
            {"take-unready", [&] { take(false); }},
            {"back", [&] { queue.putBack(); }},
            {"finish", [&] { queue.finish(); }},
            {"detents", [&] { note("x" + std::to_string(queue.takeDetents(text))); }},
            {"cancel", [&] { queue.cancel(text); }},
            {"clear", [&] { queue.clear(); }},
            {"at", [&] { now = std::stoll(text); }},
        };
        actions.at(verb)();
    }

    void add(MobiFlightCommand command, std::istringstream& words) {
        std::uint32_t count = 1;
        words >> count;
        command.queuedAt = now;
        note(queue.enqueue(command, words ? count : 1) ? "+" : "=");
    }

    void take(bool ready) {
        MobiFlightCommand command;
        note(queue.takeNext(ready, command) ? command.text + "@" + std::to_string(command.queuedAt) : "nothing");
    }

    std::string remainder() const {
        std::string texts;
        for (const MobiFlightCommand& command : queue.waiting()) {
            texts += (texts.empty() ? "" : " ") + command.text;
        }
        return "[" + texts + "]" + (queue.hasInFlight() ? " in flight" : "");
    }

    void note(const std::string& event) { record += event + " "; }

    RpnQueue queue;
    std::int64_t now = 1;
    std::string record;
};

struct Row {
    const char* rule;
    const char* script;
    const char* record;
};

void expectAll(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(QueueScript::play(row.script), row.record) << row.rule;
    }
}

} // namespace

TEST(RpnQueue, MergesLikeCommandsOfOneKind) {
    expectAll({
        {"empty", "take, finish, back", "nothing []"},
        {"normal commands never merge", "normal a, normal a, normal b", "+ + + [a a b]"},
        {"a waiting hold absorbs its repeats", "hold a, hold a, hold b", "+ = + [a b]"},
        {"detents are counted beside one entry", "knob a 1, knob a 2, knob a 3, take, detents a",
         "+ = = a@1 x6 [] in flight"},
        {"kinds of one text don't merge with each other", "knob a 2, hold a, normal a", "+ + + [a a a]"},
        {"amount 0 is nothing", "normal a 0, hold a 0, knob a 0, hold a, knob a 1, take, finish, take, detents a",
         "= = = + + a@1 a@1 x1 [] in flight"},
        {"an amount multiplies neither presses nor holds", "normal a 5, hold b 5", "+ + [a b]"},
        {"the count stays at its limit", "knob a 4294967295, knob a 1, take, detents a",
         "+ = a@1 x2147483647 [] in flight"},
        {"no detents of an unknown text", "detents a", "x0 []"},
    });
}

TEST(RpnQueue, TakesTheFirstThatMayGo) {
    expectAll({
        {"in order", "normal a, hold b, knob c 1, take, finish, take, finish, take", "+ + + a@1 b@1 c@1 [] in flight"},
        {"the handshake passes what came before it, until the module is ready", "normal a, handshake r, take-unready",
         "+ + r@1 [a] in flight"},
        {"with no handshake the first is taken all the same", "normal a, normal b, take-unready",
         "+ + a@1 [b] in flight"},
        {"a ready module gets them in order", "normal a, handshake r, take", "+ + a@1 [r] in flight"},
    });
}

TEST(RpnQueue, ACommandInFlightLeavesTheTables) {
    expectAll({
        {"a repeat of a hold in flight is an entry of its own", "hold a, take, hold a, hold a, finish, take",
         "+ a@1 + = a@1 [] in flight"},
        {"detents in flight join the burst", "knob a 2, take, detents a, knob a 3, detents a, finish",
         "+ a@1 x2 = x3 []"},
        {"a finished knob is counted anew", "knob a 2, take, detents a, finish, at 5, knob a 1, take, detents a",
         "+ a@1 x2 + a@5 x1 [] in flight"},
        {"detents left after the burst go to the back, with the time of the first",
         "knob a 1, take, detents a, at 5, knob a 2, at 6, knob a 2, normal b, finish, take, finish, take, detents a",
         "+ a@1 x1 = = + b@6 a@5 x4 [] in flight"},
    });
}

TEST(RpnQueue, PutsBackAtTheFront) {
    expectAll({
        {"normal", "normal a, normal b, take, back", "+ + a@1 [a b]"},
        {"hold, which absorbs again", "hold a, normal b, take, back, hold a", "+ + a@1 = [a b]"},
        {"a hold that a newer copy has overtaken is dropped", "hold a, take, normal b, hold a, back",
         "+ a@1 + + [b a]"},
        {"knob, whose detents gather", "knob a 1, normal b, take, knob a 2, back, knob a 4, take, detents a",
         "+ + a@1 = = a@1 x7 [b] in flight"},
        {"the time of a knob's first detent is filled in when it is missing",
         "at 0, knob a 1, take, cancel a, back, at 5, knob a 1, take", "+ a@0 = a@5 [] in flight"},
    });
}

TEST(RpnQueue, CancelRemovesEveryKindOfTheTextAndNothingElse) {
    expectAll({
        {"all kinds", "normal a, normal b, hold a, hold c, knob a 3, normal aa, cancel a, detents a",
         "+ + + + + + x0 [b c aa]"},
        {"nothing to cancel", "normal a, cancel b", "+ [a]"},
        {"a cancelled hold can be queued again", "hold a, cancel a, hold a", "+ + [a]"},
        {"a cancelled knob counts from zero, at a new time", "knob a 7, cancel a, at 5, knob a 1, take, detents a",
         "+ + a@5 x1 [] in flight"},
        {"what is in flight isn't stopped", "normal a, take, cancel a", "+ a@1 [] in flight"},
        {"a hold in flight can still be put back", "hold a, take, cancel a, back", "+ a@1 [a]"},
        {"a knob in flight loses the detents that wait", "knob a 2, take, detents a, knob a 9, cancel a, finish",
         "+ a@1 x2 = []"},
        {"a knob cancelled in flight is put back with nothing to send", "knob a 2, take, cancel a, back, detents a",
         "+ a@1 x0 [a]"},
        {"detents after such a cancel still join it", "knob a 2, take, cancel a, at 5, knob a 1, finish, take",
         "+ a@1 = a@5 [] in flight"},
    });
}

TEST(RpnQueue, ClearForgetsTheCommandInFlight) {
    expectAll({
        {"everything waiting", "normal a, hold b, knob c 2, clear, hold b, knob c 1, take, finish, take, detents c",
         "+ + + + + b@1 c@1 x1 [] in flight"},
        {"it is not put back", "normal a, take, clear, back", "+ a@1 []"},
        {"a hold of the next session is untouched by it", "hold a, take, clear, hold a, back, hold a, finish",
         "+ a@1 + = [a]"},
        {"detents of the next session are untouched by it",
         "knob a 3, take, clear, knob a 2, finish, knob a 1, take, "
         "detents a",
         "+ a@1 + = a@1 x3 [] in flight"},
        {"nor by its return", "knob a 3, take, clear, knob a 2, back, take, detents a", "+ a@1 + a@1 x2 [] in flight"},
    });
}

TEST(RpnQueue, CommandsKeepAllTheirFields) {
    const auto isWhole = [](const MobiFlightCommand& command) {
        return command.text == "a" && command.needsReady && command.sendDummy && command.kind == RpnKind::Encoder &&
               command.queuedAt == 7;
    };
    RpnQueue queue;
    queue.enqueue({.text = "a", .needsReady = true, .sendDummy = true, .kind = RpnKind::Encoder, .queuedAt = 7});
    MobiFlightCommand taken;
    EXPECT_TRUE(queue.takeNext(true, taken) && isWhole(taken));
    queue.putBack();
    EXPECT_TRUE(isWhole(queue.waiting().front()));
    EXPECT_TRUE(queue.takeNext(true, taken));
    queue.finish();
    EXPECT_TRUE(isWhole(queue.waiting().front()));
}
