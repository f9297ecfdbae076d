// The link ends at a random moment of each flow.
#include "tests/life/livingwindow.h"
#include "tests/support/stdoutcapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

using namespace life;

namespace {

constexpr unsigned defaultSeed = 20240131;

unsigned numberFrom(const char* variable, unsigned otherwise) {
    const char* const text = std::getenv(variable);
    return text != nullptr ? static_cast<unsigned>(std::stoul(text)) : otherwise;
}

struct FlowAndEnding {
    std::size_t flow; ///< number in flows()
    Ending ending;
};

constexpr std::array endingNames{"UntilTheLinkIsClosed", "UntilTheWindowIsClosed", "UntilTheDeviceIsRemoved"};

std::vector<FlowAndEnding> everything() {
    std::vector<FlowAndEnding> all;
    for (std::size_t flow = 0; flow < flows().size(); ++flow) {
        for (const Ending ending : {Ending::closeLink, Ending::closeWindow, Ending::removeDevice})
            all.push_back({flow, ending});
    }
    return all;
}

std::string nameOf(const FlowAndEnding& test) {
    return std::string(flows()[test.flow].name) + endingNames.at(static_cast<std::size_t>(test.ending));
}

void PrintTo(const FlowAndEnding& test, std::ostream* out) {
    *out << nameOf(test);
}

class Life : public testing::TestWithParam<FlowAndEnding> {};

} // namespace

TEST_P(Life, EndsCleanlyAndTheNextLinkWorks) {
    const auto& [number, ending] = GetParam();
    const Flow& flow = flows()[number];
    const unsigned seed = numberFrom("CAMERA_LIFE_SEED", defaultSeed);
    const std::size_t moments =
        std::max<std::size_t>(1, numberFrom("CAMERA_LIFE_MOMENTS", 0) / everything().size());
    std::seed_seq mixed{seed, static_cast<unsigned>(number), static_cast<unsigned>(ending)};
    std::mt19937 source(mixed);
    for (std::size_t i = 0; i < moments && !HasFailure(); ++i) {
        const std::chrono::milliseconds moment(source() % static_cast<unsigned>(flow.duration.count()));
        SCOPED_TRACE("CAMERA_LIFE_SEED=" + std::to_string(seed) + ", moment " + std::to_string(i) + " at " +
                     std::to_string(moment.count()) + " ms");
        LivingWindow(flow).live(ending, moment);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFlow, Life, testing::ValuesIn(everything()),
                         [](const auto& test) { return nameOf(test.param); });
