// Google Benchmark of the pure parts and of the picture lists.
#include "bench/filledlist.h"
#include "link/protocol/crc16.h"
#include "link/protocol/frame.h"

#include <QApplication>

#include <benchmark/benchmark.h>

namespace {

using protocol::Bytes;
using protocol::PictureInfo;

constexpr std::int64_t mostV1Records = 1551; // the most an answer can hold

/// A whole catalogue answer with this many records.
Bytes catalogue(std::int64_t count, Bytes (*build)(const PictureInfo&)) {
    Bytes payload{static_cast<std::uint8_t>(count)};
    for (std::int64_t i = 0; i < count; ++i)
        protocol::append(payload, build(bench::pictureNumber(i)));
    return protocol::buildFrame(7, payload, 1);
}

void checkCode(benchmark::State& state) {
    const Bytes bytes(static_cast<std::size_t>(state.range(0)), 0x5A);
    for (auto _ : state)
        benchmark::DoNotOptimize(protocol::crc16Xmodem(bytes));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(checkCode)->Name("CRC-16")->Arg(1 << 20);

void frameBuilding(benchmark::State& state) {
    const Bytes payload(static_cast<std::size_t>(state.range(0)), 0x5A);
    for (auto _ : state)
        benchmark::DoNotOptimize(protocol::buildFrame(2, payload, 1));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(frameBuilding)->Name("build a frame")->Arg(0)->Arg(1)->Arg(1032);

void decode(benchmark::State& state, const protocol::RecordForm& form, Bytes (*build)(const PictureInfo&)) {
    const Bytes answer = catalogue(state.range(0), build);
    for (auto _ : state) {
        for (const protocol::ByteView record : protocol::catalogueRecords(answer, form.size))
            benchmark::DoNotOptimize(form.parse(record));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK_CAPTURE(decode, origin, protocol::originRecordForm, &protocol::buildOriginRecord)
    ->Name("decode a catalogue of the first generation")
    ->Arg(10)
    ->Arg(100)
    ->Arg(378);
BENCHMARK_CAPTURE(decode, v1, protocol::v1RecordForm, &protocol::buildV1Record)
    ->Name("decode a V1 catalogue")
    ->Arg(10)
    ->Arg(100)
    ->Arg(378)
    ->Arg(1000)
    ->Arg(mostV1Records);

/// From the answer's records to the painted window.
void listFilling(benchmark::State& state) {
    const auto all = bench::v1Records(state.range(0));
    bench::FilledList list;
    for (auto _ : state) {
        list.clear();
        list.fill(all);
        list.paint();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(listFilling)
    ->Name("fill and paint a V1 list window")
    ->Unit(benchmark::kMillisecond)
    ->Arg(10)
    ->Arg(100)
    ->Arg(mostV1Records);

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
