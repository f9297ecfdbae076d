// The check-ups of a visit.
#include "service/visit.h"

#include <gtest/gtest.h>

namespace {

service::Checkup checkupOf(const QString& serial, const QString& port) {
    service::Checkup checkup;
    checkup.port = port;
    checkup.lines = {
        {service::readingOf("serialNumber"), {service::Verdict::good, serial, serial, {}, CommandEnd::done}}};
    return checkup;
}

TEST(Visit, KeepsTheOrder) {
    service::Visit visit;
    EXPECT_EQ(visit.add(checkupOf("A", "COM1")), 0U);
    EXPECT_EQ(visit.add(checkupOf("B", "COM2")), 1U);
    EXPECT_EQ(visit.checkups()[1].port, "COM2");
}

TEST(Visit, ReplacesTheSameSerialNumber) {
    service::Visit visit;
    visit.add(checkupOf("A", "COM1"));
    visit.add(checkupOf("B", "COM2"));
    EXPECT_EQ(visit.add(checkupOf("A", "COM3")), 0U);
    ASSERT_EQ(visit.checkups().size(), 2U);
    EXPECT_EQ(visit.checkups()[0].port, "COM3");
}

TEST(Visit, KeepsAllWithoutASerialNumber) {
    service::Visit visit;
    visit.add(checkupOf({}, "COM1"));
    visit.add(checkupOf({}, "COM1"));
    EXPECT_EQ(visit.checkups().size(), 2U);
}

} // namespace
