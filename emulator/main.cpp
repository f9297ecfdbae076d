// virtual-camera: serves a virtual camera until it is told to end.
#include "emulator/devicefront.h"
#include "emulator/options.h"
#include "emulator/terminalcamera.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>
#include <thread>

namespace {

using namespace emulator;
namespace fs = std::filesystem;

constexpr int badInput = 2;
constexpr int lineLost = 1;

volatile std::sig_atomic_t endAsked = 0;

void askForEnd(int) {
    endAsked = 1;
}

void printEvent(const Event& event) {
    constexpr std::array<const char*, 3> marks = {"<- ", "-> ", "   "};
    std::ostringstream line; // one write a line: a reader of a pipe sees whole lines
    line << std::fixed << std::setprecision(3) << std::setw(9)
         << std::chrono::duration<double>(event.at).count() << "  "
         << marks[static_cast<std::size_t>(event.kind)] << event.text << "\n";
    std::cout << line.str() << std::flush;
}

bool isJpeg(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".jpg" || extension == ".jpeg";
}

Bytes readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw OptionError("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void loadPictures(VirtualCamera& camera, const std::string& folder) {
    std::error_code error;
    std::vector<fs::path> paths;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (entry.is_regular_file() && isJpeg(entry.path()))
            paths.push_back(entry.path());
    }
    if (error)
        throw OptionError("--pictures: cannot read the folder " + folder);
    std::sort(paths.begin(), paths.end());
    CameraState& state = camera.state();
    for (const fs::path& path : paths) {
        Bytes jpeg = readFile(path);
        if (camera.settings().type == CameraType::quenta && !state.jsonPicture)
            state.jsonPicture = jpeg;
        state.pictures.push_back(makePicture(state.nextPictureId++, std::move(jpeg)));
    }
}

VirtualCamera makeCamera(const Options& options) {
    VirtualCamera camera(options.settings);
    if (!options.pictureFolder.empty())
        loadPictures(camera, options.pictureFolder);
    for (const Fault& fault : options.faults)
        camera.faults().add(fault);
    camera.onEvent(&printEvent);
    return camera;
}

int serveUntilEnd(CameraFront& front, const Options& options, const std::string& place) {
    front.setPace(options.bytesPerSecond);
    const CameraSettings& settings = options.settings;
    std::cout << "serving a camera of type " << static_cast<std::uint32_t>(settings.type) << ", address "
              << static_cast<unsigned>(settings.address) << ", " << settings.baudRate << " baud, on " << place
              << std::endl;
    while (endAsked == 0 && front.lineOpen())
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (endAsked != 0)
        return 0;
    std::cerr << "virtual-camera: the line is gone" << std::endl;
    return lineLost;
}

int serve(const Options& options) {
    std::signal(SIGINT, &askForEnd);
    std::signal(SIGTERM, &askForEnd);
    if (!options.device.empty()) {
        DeviceFront front(makeCamera(options), options.device);
        return serveUntilEnd(front, options, options.device);
    }
    const TerminalCamera terminal = serveOnNewTerminal(makeCamera(options), options.link);
    const std::string link = options.link.empty() ? std::string() : " (" + options.link + ")";
    return serveUntilEnd(*terminal.front, options, terminal.portName + link);
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Options options = parseOptions(std::vector<std::string>(argv + 1, argv + argc));
        switch (options.action) {
        case Options::Action::help:
            std::cout << helpText();
            return 0;
        case Options::Action::listFaults:
            std::cout << faultListText();
            return 0;
        case Options::Action::serve:
            return serve(options);
        }
    } catch (const std::exception& error) {
        std::cerr << "virtual-camera: " << error.what() << std::endl;
    }
    return badInput;
}
