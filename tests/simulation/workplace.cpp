#include "tests/simulation/workplace.h"

#include "link/protocol/requests.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>

#include <algorithm>
#include <array>

using namespace std::chrono_literals;
using emulator::FaultKind;
using protocol::Bytes;

namespace simulation {

namespace {

constexpr std::array<std::size_t, 4> fileSizes{700, 1300, 0, 9000};
constexpr std::array<const char*, 4> fileNames{"app.bin", "image.bin", "system.bin", "model.bin"};
constexpr std::uint32_t bitsPerByte = 10;

/// A picture that decodes; the comment makes each another one.
Bytes smallPicture(std::uint16_t /*id*/, std::uint32_t variation) {
    static const QByteArray grey = [] {
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(Qt::gray);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "JPG");
        return bytes;
    }();
    const std::string comment = "picture " + std::to_string(variation);
    Bytes picture(grey.begin(), grey.begin() + 2);
    picture.insert(picture.end(), {0xFF, 0xFE, 0, static_cast<std::uint8_t>(comment.size() + 2)});
    picture.insert(picture.end(), comment.begin(), comment.end());
    picture.insert(picture.end(), grey.begin() + 2, grey.end());
    return picture;
}

std::optional<emulator::CameraProfile>& followed() {
    static std::optional<emulator::CameraProfile> profile;
    return profile;
}

emulator::CameraSettings settingsFor(const Scenario& scenario, std::vector<TakenPicture>& taken) {
    emulator::CameraSettings settings =
        followed() ? followed()->settings : emulator::settingsForType(scenario.type);
    settings.answersAllAddresses = true;
    settings.drawPicture = [&taken](std::uint16_t id, std::uint32_t variation) {
        taken.push_back({id, smallPicture(id, variation)});
        return taken.back().jpeg;
    };
    settings.pictureSeed = 1;
    settings.holdsAnnouncedImage = scenario.seed % 4 != 0;
    return settings;
}

emulator::VirtualCamera cameraFor(const Scenario& scenario, std::vector<TakenPicture>& taken) {
    const emulator::CameraSettings settings = settingsFor(scenario, taken);
    return followed() ? cameraOf(*followed(), settings) : emulator::VirtualCamera(settings);
}

/// The camera's faults that a session meets.
const std::vector<std::string>& faultTexts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> all;
        for (const emulator::FaultKindInfo& info : emulator::faultKinds()) {
            std::string text(info.name);
            if (!info.example.empty())
                text += '=' + std::string(info.example);
            all.push_back(text);
        }
        return all;
    }();
    return texts;
}

/// The next request of all, or the next of one kind.
std::string requestText(std::uint32_t choice) {
    const auto names = protocol::requestNames();
    if (choice % 3 == 0)
        return "#1";
    return '@' + std::string(names[choice / 3 % names.size()].name) + "#1";
}

} // namespace

void followProfile(emulator::CameraProfile profile) {
    followed() = std::move(profile);
}

const emulator::CameraProfile* followedProfile() {
    return followed() ? &*followed() : nullptr;
}

Workplace::Workplace(const Scenario& scenario) : m_line(cameraFor(scenario, m_pictures)) {
    m_line.setPace(protocol::infoOf(scenario.type).baudRate / bitsPerByte);
    if (followed())
        m_line.model().setTraits(followed()->line, scenario.seed);
    emulator::addMemoryPort(emptyPort, {});
    plugIn("/dev/ttyUSB0");
    emulator::CameraState& state = m_line.camera().state();
    for (std::uint16_t id = 20; id < 23; ++id) {
        m_pictures.push_back({id, smallPicture(id, 1000U + id)});
        state.pictures.push_back(emulator::makePicture(id, m_pictures.back().jpeg));
    }
    for (const char* const folder : {savedFolder, pictureFolder})
        QDir().mkdir(QLatin1String(folder));
    for (std::size_t i = 0; i < fileSizes.size(); ++i) {
        const QString name = QDir(QStringLiteral("..")).filePath(QLatin1String(fileNames.at(i)));
        QFile file(name);
        if (file.open(QIODevice::WriteOnly)) {
            const Bytes content = contentOf(i);
            file.write(reinterpret_cast<const char*>(content.data()), static_cast<qint64>(content.size()));
        }
        m_files.append(QDir::cleanPath(QDir::current().absoluteFilePath(name)));
    }
}

Workplace::~Workplace() {
    for (const std::string& name : m_portNames)
        emulator::removeMemoryPort(name);
    emulator::removeMemoryPort(emptyPort);
}

Bytes Workplace::contentOf(std::size_t file) {
    Bytes content(fileSizes.at(file));
    std::uint32_t value = 7 + static_cast<std::uint32_t>(file);
    for (std::uint8_t& byte : content) {
        value = value * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(value >> 24U);
    }
    return content;
}

void Workplace::plugIn(const std::string& name) {
    m_portNames.push_back(name);
    emulator::addMemoryPort(name,
                            {"USB serial adapter", "USB VID:PID=1234:5678 SNR=A1", &m_line, true, false});
}

// --- steps -------------------------------------------------------------------------------------------------

void Workplace::perform(const Step& step) {
    switch (step.kind) {
    case StepKind::flip:
    case StepKind::drop:
    case StepKind::repeat:
        strikeLine(step);
        break;
    case StepKind::latency: {
        constexpr std::array<int, 5> delays{0, 20, 60, 300, 1500};
        m_line.model().setLatency(std::chrono::milliseconds(delays.at(step.choice % delays.size())));
        m_disturbances.late = true;
        break;
    }
    case StepKind::fault:
        camera().addFault(faultTexts().at(step.choice % faultTexts().size()) + requestText(step.detail));
        m_disturbances.camera = true;
        break;
    case StepKind::reboot:
        camera().state().bootingUntil = m_line.lineTime() + std::chrono::milliseconds(step.choice % 8000);
        m_disturbances.restarted = true;
        break;
    case StepKind::pull:
        m_disturbances.adapter = true;
        emulator::removeMemoryPort(m_portNames.back());
        m_line.setPresent(false);
        break;
    case StepKind::plug:
        if (m_line.isPresent())
            break;
        // Every other time under another name, as systems do while the old one is still in use.
        plugIn(step.choice % 2 == 0 ? m_portNames.back()
                                    : "/dev/ttyUSB" + std::to_string(m_portNames.size()));
        m_line.setPresent(true);
        break;
    default:
        break;
    }
}

void Workplace::pull(const std::string& port) {
    if (port != emptyPort) {
        perform({StepKind::pull, 0, 0, 0});
        return;
    }
    m_disturbances.adapter = true;
    emulator::removeMemoryPort(emptyPort);
}

void Workplace::strikeLine(const Step& step) {
    using emulator::LineStrike;
    using Receiver = emulator::LineDamage::Receiver;
    const auto receiver = step.choice % 2 == 0 ? Receiver::tool : Receiver::camera;
    (receiver == Receiver::tool ? m_disturbances.toTool : m_disturbances.toCamera) = true;
    const std::uint32_t after = step.choice / 2 % 600;
    LineStrike strike{LineStrike::Kind::repeat, after, 1};
    if (step.kind == StepKind::flip)
        strike = {LineStrike::Kind::flip, after, step.detail % 8};
    else if (step.kind == StepKind::drop)
        strike = {LineStrike::Kind::lose, after, 1 + step.detail % 20};
    m_line.model().strike(receiver, strike);
}

} // namespace simulation
