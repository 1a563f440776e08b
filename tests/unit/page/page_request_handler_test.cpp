#include "companion/page/page_request_handler.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint16_t port = 8080;
const std::string token = "SECRET";

/// Answers of a page with a file of its own and two routes.
class PageRequestHandlerTest : public testing::Test {
protected:
    void SetUp() override { answers.setPort(port); }

    static PageRequest request(const std::string& method, const std::string& path, const std::string& body = "") {
        PageRequest made;
        made.method = method;
        made.path = path;
        made.body = body;
        made.host = "127.0.0.1:8080";
        made.token = token;
        made.contentType = "application/json";
        made.tab = "tab";
        return made;
    }

    PageReply answer(const std::string& method, const std::string& path, const std::string& body = "") {
        return answers.answer(request(method, path, body));
    }

    const EmbeddedFiles files{{"index.html", "<!doctype html>"}, {"own.js", ""}};
    EventFeed feed;
    std::vector<std::string> openedTabs;
    std::vector<std::string> closedTabs;
    const Page page{"The page",
                    files,
                    feed,
                    {{"GET /api/panel", [](const PageRequest&) { return jsonReply("{}"); }},
                     {"POST /api/action", [](const PageRequest& asked) { return refusal(400, asked.body); }}},
                    [this](const std::string& tab) { openedTabs.push_back(tab); },
                    [this](const std::string& tab) { closedTabs.push_back(tab); }};
    PageRequestHandler answers{page, token};
};

} // namespace

TEST_F(PageRequestHandlerTest, ServesThePagesFilesAndTheSharedOnesAndNothingElse) {
    struct Case {
        const char* method;
        const char* path;
        int status;
        const char* contentType;
    };
    const char* const text = "text/plain; charset=utf-8";
    const char* const script = "text/javascript; charset=utf-8";
    for (const Case& one :
         {Case{"GET", "/", 200, "text/html; charset=utf-8"},
          Case{"GET", "/index.html", 200, "text/html; charset=utf-8"}, Case{"GET", "/own.js", 200, script},
          Case{"GET", "/dom.js", 200, script}, Case{"GET", "/base.css", 200, "text/css; charset=utf-8"},
          Case{"GET", "/icon.svg", 200, "image/svg+xml"}, Case{"GET", "/absent.js", 404, text},
          Case{"GET", "/../config.json", 404, text}, Case{"GET", "//", 404, text}, Case{"GET", "/api", 404, text},
          Case{"GET", "/api/action", 404, text}, Case{"POST", "/", 404, text}, Case{"POST", "/api/panel", 404, text}}) {
        const PageReply reply = answer(one.method, one.path);
        EXPECT_EQ(reply.status, one.status) << one.path;
        EXPECT_EQ(reply.contentType, one.contentType) << one.path;
    }
    EXPECT_EQ(answer("GET", "/").body, "<!doctype html>");
}

TEST_F(PageRequestHandlerTest, ChecksHostTokenAndTypeBeforeARoute) {
    EXPECT_EQ(answer("GET", "/api/panel").contentType, "application/json");
    EXPECT_EQ(answer("POST", "/api/action", "{").body, "{\n");
    PageRequest asked = request("GET", "/api/panel");
    asked.token = "WRONG!";
    EXPECT_EQ(answers.answer(asked).status, 403);
    EXPECT_EQ(answers.answer(asked).body, "the token of this session is missing or wrong\n");
    asked = request("GET", "/");
    asked.host = "evil.example";
    EXPECT_EQ(answers.answer(asked).status, 403);
    asked = request("POST", "/api/action", "{}");
    asked.contentType = "text/plain";
    EXPECT_EQ(answers.answer(asked).status, 415);
}

TEST_F(PageRequestHandlerTest, StreamsWhatHappensUntilTheEnd) {
    const PageReply reply = answer("GET", "/api/events");
    EXPECT_EQ(reply.contentType, "text/event-stream");
    ASSERT_TRUE(reply.stream);
    feed.publish("sim", "1");
    std::string piece;
    EXPECT_TRUE(reply.stream(piece));
    EXPECT_EQ(piece, "event: sim\ndata: 1\n\n");
    feed.close();
    EXPECT_FALSE(reply.stream(piece));
}

TEST_F(PageRequestHandlerTest, ReportsATabWhoseStreamBeginsAndEnds) {
    std::optional<PageReply> reply = answer("GET", "/api/events");
    EXPECT_EQ(openedTabs, std::vector<std::string>{"tab"});
    EXPECT_TRUE(closedTabs.empty());
    reply.reset();
    EXPECT_EQ(closedTabs, std::vector<std::string>{"tab"});
}

TEST_F(PageRequestHandlerTest, LeavesABrowserAConnectionForRequests) {
    std::vector<PageReply> open;
    for (int i = 0; i < 5; ++i) {
        open.push_back(answer("GET", "/api/events"));
        ASSERT_EQ(open.back().status, 200);
    }
    EXPECT_EQ(answer("GET", "/api/events").status, 503);
    open.pop_back();
    EXPECT_EQ(answer("GET", "/api/events").status, 200);
}
