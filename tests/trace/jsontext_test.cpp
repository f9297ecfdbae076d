// The JSON reader of recordings.
#include "trace/jsontext.h"

#include <gtest/gtest.h>

namespace tracetest {
namespace {

using trace::jsonNumber;
using trace::readJsonObject;

TEST(JsonText, ValuesAreFoundByTheirPath) {
    const auto values = readJsonObject(R"( {"a":1,"b":{"c":"x","d":[true,-2.5]},"e":{},"f":[]} )");
    ASSERT_TRUE(values);
    EXPECT_EQ(jsonNumber(*values, "a"), 1);
    EXPECT_EQ(values->at("b.c"), "x");
    EXPECT_EQ(values->at("b.d.0"), "true");
    EXPECT_EQ(values->at("b.d.1"), "-2.5");
    EXPECT_FALSE(jsonNumber(*values, "b.d.1"));
    EXPECT_FALSE(jsonNumber(*values, "missing"));
}

TEST(JsonText, RefusesAllButOneWellFormedObject) {
    for (const char* const text : {"", "1", "[]", "{", "{\"a\"}", "{\"a\":}", "{\"a\":1,}", "{\"a\":1}x",
                                   "{\"a\":x}", "{\"a\":\"x}", "{\"a\\\":1}", "{a:1}"})
        EXPECT_FALSE(readJsonObject(text)) << text;
    std::string deep;
    for (int i = 0; i < 100; ++i)
        deep += R"({"a":)";
    EXPECT_FALSE(readJsonObject(deep));
}

} // namespace
} // namespace tracetest
