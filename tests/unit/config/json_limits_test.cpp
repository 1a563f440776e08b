#include "config/json.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (; count > 0; --count) {
        all += text;
    }
    return all;
}

std::string enclosed(char open, const std::string& inner, char close) {
    std::string text(1, open);
    text += inner;
    text += close;
    return text;
}

std::string arrays(std::size_t depth, const std::string& inner = "") {
    return std::string(depth, '[') + inner + std::string(depth, ']');
}

std::string objects(std::size_t depth, const std::string& inner) {
    return repeated("{\"a\":", depth) + inner + std::string(depth, '}');
}

std::size_t depthOf(const JsonValue& value) {
    std::size_t depth = 0;
    const JsonValue* at = &value;
    while (at->type == JsonType::Array || at->type == JsonType::Object) {
        ++depth;
        if (at->type == JsonType::Array && !at->array.empty()) {
            at = &at->array.front();
        } else if (!at->object.empty()) {
            at = &at->object.begin()->second;
        } else {
            break;
        }
    }
    return depth;
}

} // namespace

TEST(JsonDepth, AThousandArraysRead) {
    const JsonParseResult result = JsonParser::parse(arrays(1000));
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(depthOf(result.value), 1000U);
}

TEST(JsonDepth, AThousandObjectsRead) {
    const JsonParseResult result = JsonParser::parse(objects(1000, "1"));
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(depthOf(result.value), 1000U);
}

TEST(JsonDepth, AValueInTheThousandthLevelIsNoFurtherLevel) {
    const JsonParseResult result = JsonParser::parse(arrays(1000, "1,\"x\",null"));
    EXPECT_TRUE(result.ok) << result.error;
}

TEST(JsonDepth, OneLevelMoreIsAnErrorForArraysAndObjects) {
    EXPECT_EQ(JsonParser::parse(arrays(1001)).error, "Nesting too deep");
    EXPECT_EQ(JsonParser::parse(objects(1001, "1")).error, "Nesting too deep");
    EXPECT_EQ(JsonParser::parse(arrays(1000, "{}")).error, "Nesting too deep");
    EXPECT_EQ(JsonParser::parse(objects(1000, "[]")).error, "Nesting too deep");
}

TEST(JsonDepth, CountsArraysAndObjectsAlike) {
    const std::string open = repeated("[{\"a\":", 500);
    const std::string close = repeated("}]", 500);
    const JsonParseResult result = JsonParser::parse(open + "1" + close);
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(depthOf(result.value), 1000U);
    EXPECT_EQ(JsonParser::parse(open + "[]" + close).error, "Nesting too deep");
}

TEST(JsonDepth, ClosedLevelsDoNotCount) {
    const std::string deep = arrays(999);
    EXPECT_TRUE(JsonParser::parse("[" + deep + "," + deep + "," + deep + "]").ok);
    EXPECT_TRUE(JsonParser::parse(enclosed('[', repeated("[],{},", 5000) + "1", ']')).ok);
}

TEST(JsonDepth, ADeepDuplicateCountsAsWell) {
    EXPECT_TRUE(JsonParser::parse("{\"a\":1,\"a\":" + arrays(999) + "}").ok);
    EXPECT_EQ(JsonParser::parse("{\"a\":1,\"a\":" + arrays(1000) + "}").error, "Nesting too deep");
}

TEST(JsonDepth, MillionsOfOpeningBracketsExhaustNothing) {
    const JsonParseResult result = JsonParser::parse(std::string(4000000, '['));
    EXPECT_EQ(result.error, "Nesting too deep");
    EXPECT_EQ(result.value.type, JsonType::Null);
    EXPECT_EQ(JsonParser::parse(repeated("{\"a\":[", 1000000)).error, "Nesting too deep");
}

TEST(JsonDepth, AnErrorAtTheDeepestLevelIsStillTold) {
    EXPECT_EQ(JsonParser::parse(std::string(1000, '[')).error, "Unterminated array");
    EXPECT_EQ(JsonParser::parse(arrays(1000, "tru")).error, "Invalid boolean");
}

TEST(JsonSize, ReadsAFileOfTenMegabytes) {
    std::string text = "[";
    while (text.size() < 10 * 1024 * 1024) {
        text += R"({"name":"CONTROL","text":")" + std::string(1000, 'x') + R"(\n","list":[1,2.5,true,null]},)";
    }
    text.back() = ']';
    const JsonParseResult result = JsonParser::parse(text);
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_GT(result.value.array.size(), 9000U);
    EXPECT_EQ(result.value.array.back().object.at("list").array.at(1).number, 2.5);
    EXPECT_EQ(result.value.array.back().object.at("text").string.size(), 1001U);
}

TEST(JsonSize, ReadsAStringOfTenMegabytes) {
    const JsonParseResult result = JsonParser::parse("\"" + std::string(10 * 1024 * 1024, 'x') + "\"");
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(result.value.string.size(), 10U * 1024 * 1024);
}

TEST(JsonSize, DuplicatesOfOneKeyDoNotPileUp) {
    const JsonParseResult result = JsonParser::parse(enclosed('{', repeated("\"a\":[1],", 50000) + "\"b\":2", '}'));
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(result.value.object.size(), 2U);
}

TEST(JsonThreads, SeparateParsesRunSideBySide) {
    std::vector<std::size_t> sizes(4);
    std::vector<std::thread> threads;
    for (std::size_t which = 0; which < sizes.size(); ++which) {
        threads.emplace_back([&sizes, which] {
            const std::string text = enclosed('[', repeated("{\"a\":[1,\"x\"]},", 200 * (which + 1)) + "0", ']');
            sizes[which] = JsonParser::parse(text).value.array.size();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{201, 401, 601, 801}));
}
