#include "tests/conform/examined.h"

#include "tests/support/stdoutcapture.h"
#include "tests/support/testfront.h"

#include <algorithm>

namespace conformtest {

namespace {

constexpr std::uint32_t bitsPerByte = 10;

std::string lineOf(const conform::Result& result) {
    return std::string(result.check->name) + " (" + result.finding.detail + ")\n";
}

std::vector<std::chrono::microseconds> threeOf(const std::vector<std::chrono::microseconds>& rising) {
    return {rising.front(), conform::quantile(rising, conform::medianPercent),
            conform::quantile(rising, conform::mostPercent)};
}

} // namespace

Examined examined(VirtualCamera camera, const How& how) {
    const StdoutCapture quiet;
    const emulator::CameraSettings settings = camera.settings();
    TestFront front(std::move(camera));
    front.setPace(settings.baudRate / bitsPerByte);
    CameraSp client(front.portName(), settings.baudRate);
    client.setSlaveAddress(settings.address);
    const conform::Evidence evidence = conform::visit(
        client, {settings.type, settings.address, how.repeats, how.takesPicture, how.uploadFile},
        [](const std::string&) {});
    Examined found;
    const std::vector<conform::Result> results = conform::examine(evidence);
    for (const conform::Result& result : results) {
        if (result.finding.outcome == conform::Outcome::different) {
            found.different.insert(result.check->name);
            found.table += lineOf(result);
        } else if (result.finding.outcome == conform::Outcome::good) {
            found.good.insert(result.check->name);
        }
    }
    found.profile = conform::profileOf(evidence, results);
    found.text = trace::profileText(found.profile);
    for (const conform::ReadingRequest& request : evidence.requests) {
        if (const auto delays = evidence.delays(request.name); !delays.empty())
            found.delays[std::string(request.name)] = threeOf(delays);
    }
    front.withCamera([&found](VirtualCamera& examinedCamera) {
        for (const emulator::ReceivedFrame& frame : examinedCamera.record().frames) {
            if (frame.wellFormed && !frame.json)
                found.codes.insert(frame.code);
        }
        found.uploads = examinedCamera.record().uploads.size();
    });
    return found;
}

Examined examinedAfter(const std::string& profile, const How& how) {
    return examined(cameraOf(emulator::cameraProfileOf(trace::readProfile(profile))), how);
}

VirtualCamera cameraWithPictures(emulator::CameraType type) {
    emulator::CameraSettings settings = emulator::settingsForType(type);
    settings.drawPicture = [](std::uint16_t, std::uint32_t variation) {
        emulator::Bytes jpeg(400 + variation % 100, static_cast<std::uint8_t>(variation));
        jpeg.front() = 0xFF;
        jpeg[1] = 0xD8;
        jpeg[jpeg.size() - 2] = 0xFF;
        jpeg.back() = 0xD9;
        return jpeg;
    };
    VirtualCamera camera(settings);
    std::uint32_t minutes = 0;
    for (int i = 0; i < 3; ++i) {
        const std::uint16_t id = camera.takePicture(emulator::Time::zero()).info.id;
        for (emulator::Picture& picture : camera.state().pictures)
            picture.info.creationTime += picture.info.id == id ? 60 * minutes : 0;
        ++minutes;
    }
    return camera;
}

std::set<std::string> linesOf(const trace::Profile& profile, const std::set<std::string>& keys) {
    std::set<std::string> lines;
    for (const trace::ProfileEntry& entry : profile.entries) {
        if (keys.contains(entry.key))
            lines.insert(entry.key + ' ' + entry.value);
    }
    return lines;
}

std::set<std::string> quirksOf(const trace::Profile& profile) {
    std::set<std::string> lines;
    for (const trace::ProfileEntry& entry : profile.entries) {
        if (entry.key != "delay")
            lines.insert(entry.key + ' ' + entry.value);
    }
    return lines;
}

} // namespace conformtest
