// The place of a simulated session: a camera on a line, an adapter, files.
#pragma once

#include "emulator/line/cameraprofile.h"
#include "emulator/memory/memoryports.h"
#include "tests/simulation/scenario.h"

#include <QStringList>

#include <set>
#include <string>
#include <vector>

namespace simulation {

/// Events after which some rules no longer apply: the protocol cannot detect their effects.
struct Disturbances {
    bool toCamera = false;  ///< the line changed bytes that the camera got
    bool toTool = false;    ///< the line changed bytes of answers
    bool late = false;      ///< answers may come after their time
    bool camera = false;    ///< a fault of the camera is in force or was
    bool adapter = false;   ///< it was pulled
    bool restarted = false; ///< the camera restarted by itself

    [[nodiscard]] bool any() const { return toCamera || toTool || late || camera || adapter || restarted; }
};

/// The cameras of all sessions from now on are as this profile describes them. The type of a scenario is then
/// that of the profile.
void followProfile(emulator::CameraProfile profile);
/// Null while there is none.
[[nodiscard]] const emulator::CameraProfile* followedProfile();

struct TakenPicture {
    std::uint16_t id = 0;
    protocol::Bytes jpeg;
};

/// One camera at the port of an adapter, and a second port with nothing behind it. The working directory
/// holds nothing but downloads; the files to upload lie beside it.
class Workplace {
public:
    /// The adapters' ports, before a camera is at one of them.
    static void addPorts();
    explicit Workplace(const Scenario& scenario);
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    /// A step of the line, the camera or the adapter.
    void perform(const Step& step);
    /// The adapter with this port, the camera's or the other.
    void pull(const std::string& port);

    [[nodiscard]] emulator::MemoryLine& line() { return m_line; }
    [[nodiscard]] emulator::VirtualCamera& camera() { return m_line.camera(); }
    [[nodiscard]] const Disturbances& disturbances() const { return m_disturbances; }
    /// Files to upload, small ones first.
    [[nodiscard]] const QStringList& files() const { return m_files; }
    /// The technician chose this file, or this folder for pictures, to be written.
    void choose(const QString& path) { m_chosen.insert(path); }
    [[nodiscard]] const std::set<QString>& chosen() const { return m_chosen; }
    /// Folders beside the working directory, for what is saved.
    static constexpr const char* savedFolder = "../saved";
    static constexpr const char* pictureFolder = "../pictures";
    /// Content of the file.
    [[nodiscard]] static protocol::Bytes contentOf(std::size_t file);
    /// Content of the file with this MD5 digest.
    [[nodiscard]] static std::optional<protocol::Bytes> fileWith(const protocol::Bytes& digest);
    /// Names of the camera's port so far.
    [[nodiscard]] const std::vector<std::string>& portNames() const { return m_portNames; }
    static constexpr const char* emptyPort = "/dev/ttyZ0";
    /// A file in the place of a device, as a program leaves it that writes while the adapter is away.
    static constexpr const char* filePort = "/proc/self/cwd/../ttyUSB9";
    /// Folders that have the names of pictures.
    [[nodiscard]] const QStringList& obstructions() const { return m_obstructions; }
    /// Every picture that the camera has had.
    [[nodiscard]] const std::vector<TakenPicture>& pictures() const { return m_pictures; }

private:
    void strikeLine(const Step& step);
    void obstruct(const Step& step);
    void plugIn(const std::string& name);

    std::vector<TakenPicture> m_pictures; // before the camera, which adds to it
    emulator::MemoryLine m_line;
    std::vector<std::string> m_portNames;
    Disturbances m_disturbances;
    QStringList m_files;
    QStringList m_obstructions;
    std::set<QString> m_chosen;
};

} // namespace simulation
