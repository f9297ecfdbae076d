// Google Benchmark of the pure parts and of the picture lists.
#include "link/protocol/crc16.h"
#include "link/protocol/frame.h"
#include "link/protocol/picturerecords.h"
#include "pictures/piclistv1.h"
#include "pictures/piclistv1model.h"

#include <QApplication>

#include <benchmark/benchmark.h>

namespace {

using protocol::Bytes;
using protocol::PictureInfo;

constexpr std::int64_t mostV1Records = 1551; // the most an answer can hold

PictureInfo pictureNumber(std::int64_t number) {
    return {static_cast<std::uint16_t>(number), 20240131, 3, 1, 45, 1700000000, 54321, Bytes(16, 0xAB)};
}

/// A whole catalogue answer with this many records.
Bytes catalogue(std::int64_t count, Bytes (*build)(const PictureInfo&)) {
    Bytes payload{static_cast<std::uint8_t>(count)};
    for (std::int64_t i = 0; i < count; ++i)
        protocol::append(payload, build(pictureNumber(i)));
    return protocol::buildFrame(7, payload, 1);
}

std::vector<protocol::RecordBytes> records(std::int64_t count) {
    std::vector<protocol::RecordBytes> all;
    for (std::int64_t i = 0; i < count; ++i) {
        const Bytes bytes = protocol::buildV1Record(pictureNumber(i));
        all.push_back(std::make_unique<std::uint8_t[]>(bytes.size()));
        std::copy(bytes.begin(), bytes.end(), all.back().get());
    }
    return all;
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
    ->Arg(378);
BENCHMARK_CAPTURE(decode, v1, protocol::v1RecordForm, &protocol::buildV1Record)
    ->Name("decode a V1 catalogue")
    ->Arg(10)
    ->Arg(mostV1Records);

/// From the answer's records to the painted window.
void listFilling(benchmark::State& state) {
    const auto all = records(state.range(0));
    PicListV1 window(nullptr, nullptr);
    window.show();
    auto* const model = window.findChild<PicListV1Model*>();
    QCoreApplication::processEvents();
    for (auto _ : state) {
        model->clear();
        model->appendPictures(all);
        QCoreApplication::processEvents();
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
