// The command line of shelf-camera.
#pragma once

#include "link/protocol/cameratypes.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

enum class Verb {
    ports,
    find,
    heartbeat,
    versions,
    model,
    orientation,
    gyro,
    serialNumber,
    heater,
    compression,
    angles,
    direction,
    gyroState,
    capture,
    listPictures,
    getPicture,
    getAllPictures,
    deletePicture,
    deleteAllPictures,
    upload,
    reboot,
    factoryReset,
    door,
    check,
    conform,
    batch,
    watch,
};

enum class UploadKind { app, system, model };

/// A command with its own arguments.
struct Command {
    Verb verb = Verb::ports;
    QStringList words;               ///< as it was given, without the general options
    std::vector<std::string> values; ///< to set; empty: read
    std::string file;   ///< written (capture, get, check, conform) or read (upload, batch); UTF-8
    std::string folder; ///< get-all
    std::uint16_t picture = 0;
    UploadKind kind = UploadKind::app;
    std::string name; ///< of the image; empty: the file's
    bool waits = true;
    bool opens = true; ///< door
    bool takesPicture = false;
    int repeats = 20;       ///< conform: exchanges of each request
    std::string uploadFile; ///< conform: application image; UTF-8
    std::vector<std::uint32_t> rates;
    std::vector<std::uint8_t> addresses;
    bool firstOnly = false;
    bool keepsGoing = false;
    std::string stateFile; ///< --resume
    std::chrono::milliseconds interval{1000};

    /// Changes or deletes what the camera holds.
    [[nodiscard]] bool isDestructive() const;
};

struct Options {
    enum class Action { run, help, version };

    Action action = Action::run;
    QString help; ///< for Action::help
    std::vector<std::string> ports;
    std::optional<std::uint32_t> rate;
    std::optional<std::uint8_t> address;
    protocol::CameraType type = protocol::CameraType::ostra;
    bool typeGiven = false;
    bool json = false;
    bool quiet = false;
    bool verbose = false;
    bool confirmed = false; ///< --yes
    std::string recordFile;
    Command command;

    /// A report to hand over, which is in Chinese.
    [[nodiscard]] bool writesDocument() const;
    [[nodiscard]] std::uint32_t usedRate() const;
    [[nodiscard]] std::uint8_t usedAddress() const;
};

/// A wrong command line or job file; the text is for people.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Arguments without the program's name, UTF-8. Throws UsageError.
[[nodiscard]] Options parseOptions(const std::vector<std::string>& arguments);

/// A line of a batch file: port, address, type, command. Throws UsageError.
[[nodiscard]] Options parseJob(const std::vector<std::string>& words, const Options& general);

/// Fills an app with all options and commands, for the manual; the options outlive it.
void describeOptions(CLI::App& app, Options& options);

} // namespace cli
