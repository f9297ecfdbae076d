// virtual-camera: serves a virtual camera until a stop is requested.
#include "emulator/lessons/lessons.h"
#include "emulator/line/devicefront.h"
#include "emulator/line/terminalcamera.h"
#include "emulator/program/console.h"
#include "language/language.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace {

using namespace emulator;
namespace fs = std::filesystem;

bool isJpeg(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".jpg" || extension == ".jpeg";
}

Bytes readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw OptionError(
            language::sentence("cannot read %1: %2", {path.string(), language::reasonOf(errno)}));
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
        throw OptionError(language::sentence("--pictures: cannot read the folder %1: %2",
                                             {folder, language::reasonOf(error.value())}));
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
    VirtualCamera camera =
        options.profile ? cameraOf(*options.profile, options.settings) : VirtualCamera(options.settings);
    if (!options.pictureFolder.empty())
        loadPictures(camera, options.pictureFolder);
    for (const Fault& fault : options.faults)
        camera.faults().add(fault);
    camera.onEvent(&printEvent);
    return camera;
}

int serveUntilStop(CameraFront& front, const Options& options, const std::string& place) {
    front.setPace(options.bytesPerSecond);
    front.setTraits(options.line, options.lineSeed);
    const CameraSettings& settings = options.settings;
    std::cout << "serving a camera of type " << static_cast<std::uint32_t>(settings.type) << ", address "
              << static_cast<unsigned>(settings.address) << ", " << settings.baudRate << " baud, on " << place
              << std::endl;
    if (waitWhile([&front] { return front.lineOpen(); }))
        return done;
    printFailure(language::sentence("the line is gone"));
    return lineLost;
}

int serve(const Options& options) {
    watchForStop();
    if (!options.device.empty()) {
        DeviceFront front(makeCamera(options), options.device);
        return serveUntilStop(front, options, options.device);
    }
    const TerminalCamera terminal = serveOnNewTerminal(makeCamera(options), options.link);
    const std::string link = options.link.empty() ? std::string() : " (" + options.link + ")";
    sayWhoOpens(options.link.empty() ? terminal.portName : options.link);
    return serveUntilStop(*terminal.front, options, terminal.portName + link);
}

} // namespace

int main(int argc, char** argv) {
    if (language::speaksChinese())
        language::chooseChinese();
    try {
        const Options options = parseOptions(std::vector<std::string>(argv + 1, argv + argc));
        switch (options.action) {
        case Options::Action::help:
            std::cout << helpText();
            return done;
        case Options::Action::version:
            std::cout << "virtual-camera " CAMERA_TOOL_VERSION << std::endl;
            return done;
        case Options::Action::listFaults:
            std::cout << faultListText();
            return done;
        case Options::Action::listLessons:
            std::cout << lessonListText();
            return done;
        case Options::Action::serve:
            return serve(options);
        case Options::Action::tap:
            return runTap(options);
        case Options::Action::replay:
            return runReplay(options);
        case Options::Action::lesson:
            return runLesson(options);
        }
    } catch (const std::exception& error) {
        printFailure(error.what());
    }
    return badInput;
}
