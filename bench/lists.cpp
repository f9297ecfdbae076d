#include "bench/lists.h"

#include "bench/filledlist.h"
#include "bench/measure.h"

#include <array>
#include <malloc.h>

namespace bench {

namespace {

constexpr std::array<std::int64_t, 5> counts{10, 100, 378, 1000, 1551}; // the most an answer can hold
constexpr double goalOfFurther = 1.5;
constexpr double goalOfMemory = 1.1;

struct Filling {
    double ms = 0;    ///< processor time, from the answer's records to the painted window
    double bytes = 0; ///< allocated for it and still held
};

double allocated() {
    return static_cast<double>(::mallinfo2().uordblks);
}

Filling fill(std::int64_t count, int rounds) {
    const auto all = v1Records(count);
    FilledList list;
    Filling filling;
    const double before = allocated();
    list.fill(all);
    filling.bytes = allocated() - before; // before the painting, which fills Qt's caches of glyphs
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        list.clear();
        const Stopwatch watch;
        list.fill(all);
        list.paint();
        times.push_back(watch.cpuSeconds() * 1000);
    }
    filling.ms = median(times);
    return filling;
}

} // namespace

void measureLists(Results& results, int rounds) {
    std::vector<Filling> all;
    fill(counts.front(), rounds); // not counted: fonts are found, caches filled
    for (const std::int64_t count : counts)
        all.push_back(fill(count, rounds));

    // A window costs something without any row; what may not grow is what one more record costs.
    std::vector<double> further;
    for (std::size_t i = 1; i < counts.size(); ++i)
        further.push_back((all[i].ms - all[i - 1].ms) / static_cast<double>(counts[i] - counts[i - 1]) *
                          1000);
    // Up to 100 records the window fills; beyond, no more is painted.
    const double middleTime = median({further.begin() + 1, further.end()});
    const double middleMemory = all[counts.size() / 2].bytes / static_cast<double>(counts[counts.size() / 2]);

    results.section("Picture lists as they grow");
    results.columns({"Records", "Time, ms", "Time of each, us", "Memory of each, bytes",
                     "Of the middle list's (goal 1.1)"});
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const auto count = static_cast<double>(counts[i]);
        results.addRow(std::to_string(counts[i]),
                       {{"time", all[i].ms, "ms", {}},
                        {"time of each", all[i].ms / count * 1000, "us", {}},
                        {"memory of each", all[i].bytes / count, "bytes", {}},
                        {"memory of each, of the middle list's", all[i].bytes / count / middleMemory, "x",
                         Goal{Goal::Kind::atMost, goalOfMemory}}});
    }
    for (std::size_t i = 1; i < counts.size(); ++i) {
        const std::string words =
            "each further record from " + std::to_string(counts[i - 1]) + " to " + std::to_string(counts[i]);
        results.add({words + ": time", further[i - 1], "us", {}});
        if (i > 1)
            results.add({words + ": of the middle one's", further[i - 1] / middleTime, "x",
                         Goal{Goal::Kind::atMost, goalOfFurther}});
    }
    results.remark("A V1 list window of its usual size, from the records of an answer to the painted window: "
                   "processor time, the median of " +
                   std::to_string(rounds) +
                   " fillings. Painting costs the same for every list that fills the window, so each further "
                   "record is the difference between two lists.");
}

} // namespace bench
