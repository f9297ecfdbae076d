// The tables of docs/protocol.md against the code they describe.
#include "dialogs/settingborrower.h"
#include "link/protocol/exchangetable.h"
#include "tests/support/markdown.h"

#include <gtest/gtest.h>

#include <array>
#include <map>

using namespace protocol;

namespace {

std::vector<markdown::Row> tableOf(std::string_view heading) {
    const std::string document = markdown::contentOf(markdown::sourceFolder() / "docs/protocol.md");
    return markdown::tableRows(markdown::section(document, heading));
}

std::string hexByte(unsigned value) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    return {digits[value >> 4U & 0xFU], digits[value & 0xFU]};
}

/// Empty for a value that is no command. The compiler names enumerators that are missing here.
std::string nameOf(Command command) {
    switch (command) {
    case Command::callers:
    case Command::json:
        return {};
    case Command::heartbeat:
        return "heartbeat";
    case Command::getProperty:
        return "getProperty";
    case Command::setProperty:
        return "setProperty";
    case Command::resetToFactory:
        return "resetToFactory";
    case Command::reboot:
        return "reboot";
    case Command::originCapture:
        return "originCapture";
    case Command::originCatalogue:
        return "originCatalogue";
    case Command::originDelete:
        return "originDelete";
    case Command::originRead:
        return "originRead";
    case Command::firewareAnnounce:
        return "firewareAnnounce";
    case Command::gyroTest:
        return "gyroTest";
    case Command::appAnnounce:
        return "appAnnounce";
    case Command::appV1Announce:
        return "appV1Announce";
    case Command::appV1Packet:
        return "appV1Packet";
    case Command::getInfo:
        return "getInfo";
    case Command::captureV1:
        return "captureV1";
    case Command::catalogueV1:
        return "catalogueV1";
    case Command::deleteV1:
        return "deleteV1";
    case Command::readV1:
        return "readV1";
    case Command::modelAnnounce:
        return "modelAnnounce";
    case Command::door:
        return "door";
    }
    return {};
}

std::string nameOf(PropertyId id) {
    switch (id) {
    case PropertyId::appVersion:
        return "appVersion";
    case PropertyId::serialNumber:
        return "serialNumber";
    case PropertyId::systemVersion:
        return "systemVersion";
    case PropertyId::modelInfo:
        return "modelInfo";
    case PropertyId::qvVersion:
        return "qvVersion";
    case PropertyId::compressionRate:
        return "compressionRate";
    case PropertyId::captureAngles:
        return "captureAngles";
    case PropertyId::captureDirection:
        return "captureDirection";
    case PropertyId::captureReserve:
        return "captureReserve";
    case PropertyId::gyroSwitch:
        return "gyroSwitch";
    case PropertyId::heaterDuty:
        return "heaterDuty";
    case PropertyId::orientation:
        return "orientation";
    }
    return {};
}

std::string wordOf(Reading reading) {
    constexpr std::array words{"none", "once", "frame", "json", "blocks"};
    return words.at(static_cast<std::size_t>(reading));
}

std::string codeOf(const ExchangeRule& rule) {
    if (rule.reading == Reading::json)
        return "none";
    return rule.command == Command::callers ? "caller's" : hexByte(code(rule.command));
}

markdown::Row rowOf(const ExchangeRule& rule) {
    const auto yesNo = [](bool value) { return std::string(value ? "yes" : "no"); };
    return {std::string(rule.name),
            codeOf(rule),
            rule.timeoutMs ? std::to_string(*rule.timeoutMs) : "kept",
            yesNo(rule.discardInput),
            yesNo(rule.flushOutput),
            wordOf(rule.reading),
            std::to_string(rule.readSize),
            std::to_string(rule.tries)};
}

} // namespace

TEST(ProtocolDocument, ListsEveryCommandWithItsCode) {
    std::vector<markdown::Row> expected;
    for (unsigned value = 0; value < 256; ++value) {
        if (const std::string name = nameOf(static_cast<Command>(value)); !name.empty())
            expected.push_back({hexByte(value), name});
    }
    std::vector<markdown::Row> documented;
    for (const markdown::Row& row : tableOf("## Commands"))
        documented.push_back({row.at(0), row.at(1)});
    EXPECT_EQ(documented, expected);
}

TEST(ProtocolDocument, OffsetsOnlyFirstGenerationPictureCommands) {
    std::vector<std::string> shifted;
    for (const markdown::Row& row : tableOf("## Commands")) {
        if (row.at(2) == "yes")
            shifted.push_back(row.at(1));
        else
            EXPECT_EQ(row.at(2), "no") << row.at(1);
    }
    EXPECT_EQ(shifted,
              (std::vector<std::string>{"originCapture", "originCatalogue", "originDelete", "originRead"}));
}

TEST(ProtocolDocument, ListsEveryPropertyId) {
    std::map<std::string, std::string> expected; // by id, in order
    for (unsigned value = 0; value < 256; ++value) {
        if (const std::string name = nameOf(static_cast<PropertyId>(value)); !name.empty())
            expected[hexByte(value)] = name;
    }
    std::map<std::string, std::string> documented;
    for (const markdown::Row& row : tableOf("## Property ids"))
        EXPECT_TRUE(documented.emplace(row.at(0), row.at(1)).second) << row.at(0);
    EXPECT_EQ(documented, expected);
}

TEST(ProtocolDocument, ListsEveryExchangeRuleAsItIs) {
    std::vector<markdown::Row> expected;
    for (const ExchangeRule* const rule : rules::all)
        expected.push_back(rowOf(*rule));
    EXPECT_EQ(tableOf("## Exchange rules"), expected);
}
