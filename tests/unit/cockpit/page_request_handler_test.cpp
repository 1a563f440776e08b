#include "simulation/cockpit/page_request_handler.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint16_t port = 8080;
const std::string token = "SECRET";

/// Answers of a controller that is never started: none of these requests reaches a board.
class PageRequestHandlerTest : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(loadCockpitConfiguration("", configuration, error)) << error;
        controller.emplace(configuration, RigSides{});
        answers.emplace(*controller, token);
        answers->setPort(port);
    }

    static PageRequest request(const std::string& method, const std::string& path, const std::string& body = "") {
        PageRequest made;
        made.method = method;
        made.path = path;
        made.body = body;
        made.host = "127.0.0.1:8080";
        made.token = token;
        made.contentType = "application/json";
        return made;
    }

    PageReply answer(const std::string& method, const std::string& path, const std::string& body = "") {
        return answers->answer(request(method, path, body));
    }

    CockpitConfiguration configuration;
    std::optional<CockpitController> controller;
    std::optional<PageRequestHandler> answers;
};

} // namespace

TEST_F(PageRequestHandlerTest, ServeThePagesFilesWithTheirTypes) {
    const PageReply first = answer("GET", "/");
    EXPECT_EQ(first.status, 200);
    EXPECT_EQ(first.contentType, "text/html; charset=utf-8");
    EXPECT_TRUE(first.body.starts_with("<!doctype html>"));
    EXPECT_EQ(answer("GET", "/index.html").body, first.body);
    EXPECT_EQ(answer("GET", "/main.js").contentType, "text/javascript; charset=utf-8");
    EXPECT_EQ(answer("GET", "/base.css").contentType, "text/css; charset=utf-8");
    EXPECT_EQ(answer("GET", "/icon.svg").contentType, "image/svg+xml");
}

TEST_F(PageRequestHandlerTest, ServeNothingElse) {
    for (const char* path : {"/absent.js", "/../config.json", "/config.json", "//", "/api"}) {
        EXPECT_EQ(answer("GET", path).status, 404) << path;
    }
    EXPECT_EQ(answer("POST", "/").status, 404);
    EXPECT_EQ(answer("GET", "/api/action").status, 404);
    EXPECT_EQ(answer("POST", "/api/panel").status, 404);
}

TEST_F(PageRequestHandlerTest, GiveThePanelToWhoHasTheToken) {
    PageRequest asked = request("GET", "/api/panel");
    const PageReply reply = answers->answer(asked);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.contentType, "application/json");
    EXPECT_TRUE(JsonParser::parse(reply.body).ok);
    asked.token = "WRONG!";
    EXPECT_EQ(answers->answer(asked).status, 403);
    EXPECT_EQ(answers->answer(asked).body, "the token of this session is missing or wrong\n");
}

TEST_F(PageRequestHandlerTest, RefuseFilesUnderAnotherHostsName) {
    PageRequest asked = request("GET", "/");
    asked.host = "evil.example";
    EXPECT_EQ(answers->answer(asked).status, 403);
}

TEST_F(PageRequestHandlerTest, TellWhyAnActionIsRefused) {
    EXPECT_EQ(answer("POST", "/api/action", "{").status, 400);
    EXPECT_EQ(answer("POST", "/api/action", R"({"do":"explode"})").body, "unknown action \"explode\"\n");
    PageRequest form = request("POST", "/api/action", "{}");
    form.contentType = "text/plain";
    EXPECT_EQ(answers->answer(form).status, 415);
}

TEST_F(PageRequestHandlerTest, StreamWhatHappensUntilTheEnd) {
    const PageReply reply = answer("GET", "/api/events");
    EXPECT_EQ(reply.contentType, "text/event-stream");
    ASSERT_TRUE(reply.stream);
    controller->feed().publish("sim", "1");
    std::string piece;
    EXPECT_TRUE(reply.stream(piece));
    EXPECT_EQ(piece, "event: sim\ndata: 1\n\n");
    controller->feed().close();
    EXPECT_FALSE(reply.stream(piece));
}

TEST_F(PageRequestHandlerTest, HaveRoomForADozenPagesOnly) {
    std::vector<PageReply> open;
    for (int i = 0; i < 12; ++i) {
        open.push_back(answer("GET", "/api/events"));
        ASSERT_EQ(open.back().status, 200);
    }
    EXPECT_EQ(answer("GET", "/api/events").status, 503);
    open.pop_back();
    EXPECT_EQ(answer("GET", "/api/events").status, 200);
}
