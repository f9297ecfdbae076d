// The schema refuses what the program does not print.
#include "tests/cli/tool.h"

#include <gmock/gmock.h>

namespace clitest {
namespace {

using testing::HasSubstr;

const std::string head = R"({"port":"COM9","command":"sn","rate":9600,"address":1,"type":0,)";

TEST(Schema, TakesAReading) {
    EXPECT_EQ(schemaComplaints(head + R"("ok":true,"code":0,"serialNumber":"A1"})"), "");
}

TEST(Schema, RefusesAnUnknownField) {
    EXPECT_THAT(schemaComplaints(head + R"("ok":true,"code":0,"serialNumber":"A1","colour":3})"),
                HasSubstr("colour"));
}

TEST(Schema, RefusesTheFieldOfAnotherCommand) {
    EXPECT_THAT(schemaComplaints(head + R"("ok":true,"code":0,"serialNumber":"A1","heater":3})"),
                HasSubstr("heater"));
}

TEST(Schema, RefusesASuccessWithoutItsValue) {
    EXPECT_THAT(schemaComplaints(head + R"("ok":true,"code":0})"), HasSubstr("serialNumber"));
}

TEST(Schema, RefusesASuccessWithACode) {
    EXPECT_THAT(schemaComplaints(head + R"("ok":true,"code":4,"serialNumber":"A1"})"), HasSubstr("code"));
}

TEST(Schema, RefusesAnObjectWithoutHead) {
    EXPECT_THAT(schemaComplaints(R"({"command":"sn","ok":true,"code":0,"serialNumber":"A1"})"),
                HasSubstr("'port' is a required property"));
}

TEST(Schema, RefusesAnEmptyOutput) {
    EXPECT_THAT(schemaComplaints(""), HasSubstr("no line to judge"));
}

} // namespace
} // namespace clitest
