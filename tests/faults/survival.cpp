#include "tests/faults/survival.h"

#include "service/linelog.h"
#include "tests/faults/cell.h"
#include "tests/support/stdoutcapture.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <set>
#include <sstream>

using namespace std::chrono_literals;

namespace faultmatrix {

namespace {

namespace fs = std::filesystem;
using Receiver = emulator::LineDamage::Receiver;
using Signal = service::RecentExchanges::Signal;

constexpr std::uint8_t storedId = 1;
constexpr const char* uploadFile = "survival.bin";
constexpr std::uint32_t bitsPerByte = 10;
constexpr milliseconds patience = 5s; ///< beyond the bound of the command
constexpr std::size_t recordSize = 256 << 10;
constexpr auto silenceAfterwards = 3s; ///< incomplete answers are abandoned in it
constexpr std::uint64_t seedsPerCommand = 1'000'000;

/// One answer has no frame, one is not read.
bool readsFrames(const Command& command) {
    return command.method != "getCommonPropertyWithoutParse" && command.method != "opDoor";
}

milliseconds longestOf(const Command& command) {
    milliseconds longest{0};
    for (const Command& row : commands()) {
        if (row.method == command.method)
            longest = std::max(longest, row.longest);
    }
    return longest;
}

service::LineLog emptyLog(const Clock& clock) {
    trace::RecordingHead head;
    head.device = "-";
    return {head, clock.now(), recordSize};
}

void countEnding(Survival& survival, Ending ending, Signal signal) {
    survival.works += ending == Ending::works ? 1U : 0U;
    survival.wrong += ending == Ending::otherValue ? 1U : 0U;
    survival.wrongShown += ending == Ending::otherValue && signal == Signal::disturbed ? 1U : 0U;
    survival.fails += ending == Ending::fails || ending == Ending::endless ? 1U : 0U;
}

/// The mark after the last command of the run.
void countMark(Survival& survival, const Command& command, TestFront& front,
               const service::RecentExchanges& recent) {
    const emulator::LineDamageCounts none;
    const emulator::LineDamageCounts oneBit{1, 0, 0};
    const emulator::LineDamageCounts toTool = front.lineDamage(Receiver::tool);
    if (front.lineDamage(Receiver::camera) != none)
        return;
    if (toTool == none) {
        ++survival.cleanRuns;
        survival.cleanExchanges += static_cast<unsigned>(recent.counts().requests);
        const bool silentByIntent = command.method == "opDoor" && recent.signal() == Signal::unknown;
        survival.alarms += recent.signal() != Signal::good && !silentByIntent ? 1U : 0U;
    } else if (toTool == oneBit && readsFrames(command)) {
        ++survival.singleBits;
        survival.named += recent.signal() == Signal::disturbed ? 1U : 0U;
    }
}

void runOnce(Survival& survival, const Command& command, const emulator::LineTraits& line,
             std::uint64_t seed) {
    fs::remove(std::to_string(storedId) + ".jpg");
    fs::remove("a.jpg");
    TestFront front(settingsFor(command));
    front.setPace(protocol::infoOf(command.type).baudRate / bitsPerByte);
    storePictures(front, storedId);
    front.setTraits(line, seed);
    const StdoutCapture quiet;
    const auto client = connect(front);
    service::LineLog log = emptyLog(client->clock());
    const LineObservation observation(*client, log.record);
    Bench bench{*client, front, storedId, command.uploads ? uploadFile : ""};
    const Ending ending = runTimed(command, bench, longestOf(command) + patience).ending;
    log.rows.update(log.record.timeOf(client->clock().now()) + silenceAfterwards);
    countEnding(survival, ending, log.rows.recent().signal());
    countMark(survival, command, front, log.rows.recent());
}

// --- the page ----------------------------------------------------------------------------------------------

const std::vector<std::string>& rates() {
    static const std::vector<std::string> all{"1e-7", "1e-6", "1e-5", "1e-4", "1e-3"};
    return all;
}

std::vector<std::string> lines() {
    std::vector<std::string> all;
    for (const std::string& rate : rates())
        all.push_back("bits=" + rate);
    for (const emulator::LinePreset& preset : emulator::linePresets())
        all.emplace_back(preset.name);
    return all;
}

std::string cell(const Survival& survival) {
    return std::to_string(survival.works) + " / " + std::to_string(survival.fails) + " / " +
           std::to_string(survival.wrong);
}

std::string head(unsigned runs) {
    std::string text = "# Commands on bad lines\n\n" + std::to_string(runs) +
                       " runs a point, each with another seed: success / failed / wrong value.\n\n|Command|";
    for (const std::string& line : lines())
        text += line + "|";
    text += "\n|---|";
    for (std::size_t i = 0; i < lines().size(); ++i)
        text += "---:|";
    return text + "\n";
}

/// The kind of check that the protocol has for a command.
enum class Kind : std::uint8_t { digest, framed, unframed, noVerdict, count };

Kind checkOf(const Command& command) {
    if (hasDigestVerdict(command))
        return Kind::digest;
    if (command.method == "firewareUpdate")
        return Kind::noVerdict;
    return command.method == "getCommonPropertyWithoutParse" ? Kind::unframed : Kind::framed;
}

using Sums = std::array<Survival, static_cast<std::size_t>(Kind::count)>;

std::string sumsText(const Sums& sums) {
    constexpr std::array<const char*, std::tuple_size_v<Sums>> names{
        "uploads with a verdict by digest", "values and results in framed answers",
        "the gyro test, answered without a frame", "the system image, which has no verdict"};
    std::ostringstream text;
    text << "\n|Command|Runs|Wrong value or false success|Shown by the mark|\n|---|---:|---:|---:|\n";
    Survival all;
    for (std::size_t i = 0; i < sums.size(); ++i) {
        const Survival& sum = sums.at(i);
        text << '|' << names.at(i) << '|' << sum.works + sum.fails + sum.wrong << '|' << sum.wrong << '|'
             << sum.wrongShown << "|\n";
        all += sum;
    }
    text << "\nThe mark names " << all.named << " of " << all.singleBits
         << " single-bit errors in framed answers and raises " << all.alarms << " false alarms in "
         << all.cleanExchanges << " good exchanges.\n";
    return text.str();
}

} // namespace

Survival& Survival::operator+=(const Survival& other) {
    works += other.works;
    fails += other.fails;
    wrong += other.wrong;
    wrongShown += other.wrongShown;
    singleBits += other.singleBits;
    named += other.named;
    cleanRuns += other.cleanRuns;
    cleanExchanges += other.cleanExchanges;
    alarms += other.alarms;
    return *this;
}

const std::vector<const Command*>& methods() {
    static const std::vector<const Command*> all = [] {
        std::vector<const Command*> first;
        std::set<std::string> known;
        for (const Command& command : commands()) {
            if (known.insert(command.method).second)
                first.push_back(&command);
        }
        return first;
    }();
    return all;
}

const Command& methodNamed(const std::string& method) {
    const auto found = std::find_if(methods().begin(), methods().end(),
                                    [&method](const Command* each) { return each->method == method; });
    if (found == methods().end())
        throw std::out_of_range("no row for " + method);
    return **found;
}

bool hasDigestVerdict(const Command& command) {
    return command.method == "appUpdate" || command.method == "modelUpdate";
}

Survival survive(const Command& command, const std::string& line, unsigned runs) {
    if (command.uploads)
        writeUpdateFile(uploadFile, shortUpload);
    const emulator::LineTraits traits = emulator::parseLine(line);
    const auto row = std::find_if(methods().begin(), methods().end(),
                                  [&command](const Command* each) { return each->method == command.method; });
    const auto first = static_cast<std::uint64_t>(row - methods().begin()) * seedsPerCommand;
    Survival survival;
    for (unsigned run = 0; run < runs; ++run)
        runOnce(survival, command, traits, first + run);
    return survival;
}

bool writeSurvivalPage(const fs::path& page, const std::vector<const Command*>& commands, unsigned runs) {
    std::string text = head(runs);
    Sums sums;
    for (const Command* const command : commands) {
        text += "|`" + command->method + "`|";
        for (const std::string& line : lines()) {
            const Survival survival = survive(*command, line, runs);
            sums.at(static_cast<std::size_t>(checkOf(*command))) += survival;
            text += cell(survival) + "|";
        }
        text += "\n";
    }
    std::ofstream out(page);
    out << text << sumsText(sums);
    out.close();
    return out.good();
}

} // namespace faultmatrix
