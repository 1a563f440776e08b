#include "companion/draft/json_edit.h"

#include <gtest/gtest.h>

namespace {

std::vector<PathStep> pathOf(const std::vector<std::string>& keys) {
    std::vector<PathStep> path;
    for (const std::string& key : keys) {
        const bool isIndex = key.find_first_not_of("0123456789") == std::string::npos;
        path.push_back(isIndex ? elementStep(std::stoul(key)) : keyStep(key));
    }
    return path;
}

struct Edit {
    std::string before;
    std::vector<std::string> path;
    std::string value;
    /// Empty: refused.
    std::string after;
};

} // namespace

TEST(JsonEdit, WritesAValueAndLeavesTheRest) {
    const std::vector<Edit> rows{
        {R"({"b":1,  "a": 2})", {"a"}, "3", R"({"b":1,  "a": 3})"},
        {R"({"b": 1})", {"a"}, "3", R"({"b": 1, "a": 3})"},
        {"{\n\t\"b\": 1\n}\n", {"a"}, "3", "{\n\t\"b\": 1,\n\t\"a\": 3\n}\n"},
        {"{\r\n  \"b\": 1\r\n}", {"a"}, "3", "{\r\n  \"b\": 1,\r\n  \"a\": 3\r\n}"},
        {"{\n  \"c\": 1,\n\n  \"b\": 1\n}", {"a"}, "3", "{\n  \"c\": 1,\n\n  \"b\": 1,\n  \"a\": 3\n}"},
        {"{}", {"a"}, "3", R"({"a": 3})"},
        {"{\n}", {"a"}, "3", "{\n  \"a\": 3\n}"},
        {"{\"b\": {\n  }}", {"b", "a"}, "3", "{\"b\": {\n    \"a\": 3\n  }}"},
        {"{\"b\": {}}", {"b", "c", "d"}, "3", R"({"b": {"c": {"d": 3}}})"},
        {"{}", {"b", "0", "d"}, "3", R"({"b": [{"d": 3}]})"},
        {"[\n  1\n]", {"1"}, "2", "[\n  1,\n  2\n]"},
        {R"({"a": 1, "a": 2})", {"b"}, "3", R"({"a": 1, "a": 2, "b": 3})"},
        {R"({"a": 1, "a": 2})", {"a"}, "3", R"({"a": 3, "a": 2})"},
        {R"({"a": 1})", {"a", "b"}, "3", ""},
        {R"({"a": {}})", {"a", "0"}, "3", ""},
        {"[1]", {"2"}, "3", ""},
        {"{\"a\"", {"a"}, "3", ""},
    };
    for (const Edit& row : rows) {
        std::string text = row.before;
        EXPECT_EQ(setJsonValue(text, pathOf(row.path), row.value), !row.after.empty()) << row.before;
        EXPECT_EQ(text, row.after.empty() ? row.before : row.after);
    }
}

TEST(JsonEdit, RemovesAValueWithItsComma) {
    const std::vector<Edit> rows{
        {R"({"a": 1, "b": 2})", {"a"}, "", R"({"b": 2})"},
        {R"({"a": 1, "b": 2})", {"b"}, "", R"({"a": 1})"},
        {"{\n  \"a\": 1,\n  \"b\": 2\n}", {"a"}, "", "{\n  \"b\": 2\n}"},
        {"{\n  \"a\": 1,\n  \"b\": 2\n}", {"b"}, "", "{\n  \"a\": 1\n}"},
        {"{\n  \"a\": 1\n}", {"a"}, "", "{\n}"},
        {R"({"a": 1})", {"a"}, "", "{}"},
        {"[1, 2, 3]", {"1"}, "", "[1, 3]"},
        {R"({"a": 1})", {"b"}, "", ""},
        {"1", {}, "", ""},
    };
    for (const Edit& row : rows) {
        std::string text = row.before;
        EXPECT_EQ(removeJsonValue(text, pathOf(row.path)), !row.after.empty()) << row.before;
        EXPECT_EQ(text, row.after.empty() ? row.before : row.after);
    }
}

TEST(JsonEdit, RenamesAMemberButNoElement) {
    std::string text = R"({"a": [{"b" : 1}]})";
    EXPECT_TRUE(renameJsonKey(text, pathOf({"a", "0", "b"}), "B 2"));
    EXPECT_FALSE(renameJsonKey(text, pathOf({"a", "0"}), "c"));
    EXPECT_FALSE(renameJsonKey(text, pathOf({"d"}), "c"));
    EXPECT_EQ(text, R"({"a": [{"B 2" : 1}]})");
}

TEST(JsonEdit, QuotesWhatJsonDoesNotTakeAsItIs) {
    EXPECT_EQ(quotedJson("a\"\\\n\x01\xC3\xA9"), "\"a\\\"\\\\\\n \xC3\xA9\"");
}
