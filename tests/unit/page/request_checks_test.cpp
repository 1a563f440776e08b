#include "companion/page/request_checks.h"

#include <gtest/gtest.h>

#include <set>

namespace {

constexpr std::uint16_t pagePort = 8080;
const std::string pageToken = "0123456789ABCDEF0123456789ABCDEF";

constexpr const char* otherHost = "this page answers at 127.0.0.1 and localhost only";
constexpr const char* otherOrigin = "a page from another origin can't do this";
constexpr const char* noToken = "the token of this session is missing or wrong";

/// A request of the cockpit's own page, but for one member.
RequestMarks marksWith(std::string RequestMarks::*member, const std::string& value) {
    RequestMarks marks{"127.0.0.1:8080", "http://127.0.0.1:8080", pageToken, "application/json"};
    marks.*member = value;
    return marks;
}

} // namespace

TEST(RequestChecks, PassARequestOfTheOwnPageAndOneThatNoPageSent) {
    for (const RequestMarks& marks :
         {marksWith(&RequestMarks::host, "127.0.0.1:8080"), marksWith(&RequestMarks::host, "localhost:8080"),
          marksWith(&RequestMarks::origin, "http://localhost:8080"), marksWith(&RequestMarks::origin, "")}) {
        EXPECT_EQ(refusalOf(marks, pagePort), "");
        EXPECT_EQ(refusalOfAction(marks, pagePort, pageToken), "");
    }
}

TEST(RequestChecks, RefuseAnotherHostsName) {
    for (const char* host :
         {"", "evil.example", "evil.example:8080", "127.0.0.1", "127.0.0.1:8081", "127.0.0.1:80800",
          "127.0.0.1:8080.evil.example", "x127.0.0.1:8080", "localhost", "[::1]:8080", "127.0.0.2:8080"}) {
        EXPECT_EQ(refusalOf(marksWith(&RequestMarks::host, host), pagePort), otherHost) << host;
        EXPECT_EQ(refusalOfAction(marksWith(&RequestMarks::host, host), pagePort, pageToken), otherHost) << host;
    }
}

TEST(RequestChecks, TakeAHostWithoutAPortAtTheStandardPortOnly) {
    EXPECT_EQ(refusalOf({"127.0.0.1", "", "", ""}, 80), "");
    EXPECT_EQ(refusalOf({"localhost", "http://localhost", "", ""}, 80), "");
    EXPECT_EQ(refusalOf({"127.0.0.1", "", "", ""}, 8080), otherHost);
}

TEST(RequestChecks, RefuseAnotherOrigin) {
    for (const char* origin : {"null", "http://evil.example", "https://127.0.0.1:8080", "http://127.0.0.1:8081",
                               "http://127.0.0.1", "http://127.0.0.1:8080/", "127.0.0.1:8080", "http://"}) {
        EXPECT_EQ(refusalOf(marksWith(&RequestMarks::origin, origin), pagePort), otherOrigin) << origin;
        EXPECT_EQ(refusalOfAction(marksWith(&RequestMarks::origin, origin), pagePort, pageToken), otherOrigin)
            << origin;
    }
}

TEST(RequestChecks, RefuseAnActionWithoutTheWholeToken) {
    for (const std::string& given :
         {std::string(), pageToken.substr(1), pageToken.substr(0, 31), pageToken + '0', std::string(32, '0'),
          std::string("0123456789abcdef0123456789abcdef"), pageToken + std::string(1, '\0')}) {
        EXPECT_EQ(refusalOfAction(marksWith(&RequestMarks::token, given), pagePort, pageToken), noToken) << given;
    }
    EXPECT_EQ(refusalOf(marksWith(&RequestMarks::token, ""), pagePort), "");
}

TEST(RequestChecks, KnowJsonFromWhatAFormCanSend) {
    EXPECT_TRUE(saysJson("application/json"));
    EXPECT_TRUE(saysJson("application/json; charset=utf-8"));
    for (const char* type : {"", "text/plain", "application/x-www-form-urlencoded", "application/jsonx", "text/json"}) {
        EXPECT_FALSE(saysJson(type)) << type;
    }
}

TEST(RequestChecks, MakeATokenOfItsOwnForEachSession) {
    std::set<std::string> tokens;
    for (int i = 0; i < 100; ++i) {
        tokens.insert(randomToken());
    }
    EXPECT_EQ(tokens.size(), 100U);
    EXPECT_EQ(tokens.begin()->size(), 32U);
    EXPECT_EQ(tokens.begin()->find_first_not_of("0123456789ABCDEF"), std::string::npos);
}
