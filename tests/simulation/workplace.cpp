#include "tests/simulation/workplace.h"

#include "link/protocol/requests.h"

#include <QBuffer>
#include <QCryptographicHash>
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
    constexpr std::uint32_t kinds = 4;
    constexpr std::size_t large = 9000; // more than a piece of a picture by JSON
    constexpr std::size_t block = 512;
    constexpr std::size_t overhead = 11; // of a transfer
    std::string comment = "picture " + std::to_string(variation);
    const std::size_t transfer = static_cast<std::size_t>(grey.size()) + 4 + comment.size() + overhead;
    if (variation % kinds == 0)
        comment.resize(large, '.');
    else if (variation % kinds == 1) // whole blocks and one byte
        comment.resize(comment.size() + block + 1 - transfer % block, '.');
    const std::size_t length = comment.size() + 2;
    Bytes picture(grey.begin(), grey.begin() + 2);
    picture.insert(picture.end(), {0xFF, 0xFE, static_cast<std::uint8_t>(length >> 8U),
                                   static_cast<std::uint8_t>(length & 0xFFU)});
    picture.insert(picture.end(), comment.begin(), comment.end());
    picture.insert(picture.end(), grey.begin() + 2, grey.end());
    return picture;
}

constexpr const char* firstPort = "/dev/ttyUSB0";

emulator::MemoryPort adapterWith(emulator::MemoryLine* line) {
    return {"USB serial adapter", "USB VID:PID=1234:5678 SNR=A1", line, true, false};
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

/// Every kind of fault.
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

/// Every other time the next request, otherwise the next of one kind.
std::string requestText(std::uint32_t choice) {
    const auto names = protocol::requestNames();
    if (choice % 2 == 0)
        return "#1";
    return '@' + std::string(names[choice / 2 % names.size()].name) + "#1";
}

using protocol::PictureCommands;

/// Faults at the places where they lead somewhere, and the cameras that have these places.
struct Trouble {
    const char* text;
    std::optional<PictureCommands> cameras; ///< nothing: all
};

// clang-format off
constexpr std::array troubles{
    Trouble{"result=1@getSn",                  {}},
    Trouble{"echo=99@getSn",                   {}},
    Trouble{"result=1@getModelInfo",           {}},
    Trouble{"echo=99@getModelInfo",            {}},
    Trouble{"result=1@getAppVersion",          {}},
    Trouble{"value-size=0@getSystemVersion",   {}},
    Trouble{"raw=AA5A0102FFFFFFFF00#1",        {}}, // a length that is 9 in 32 bits
    Trouble{"raw=0102#1",                      {}}, // garbage of two bytes
    Trouble{"raw=AA5A011100000001FFFF@heartbeat", {}},  // the text of a good answer
    Trouble{"split=9,120#1",                   {}},
    Trouble{"split=9,120",                     {}},
    Trouble{"split=1,120#1",                   {}},
    Trouble{"split=1,120",                     {}},
    Trouble{"truncate=3#1",                    {}},
    Trouble{"truncate=8",                      {}},
    Trouble{"stray=1#1",                       {}},
    Trouble{"result=1@reboot",                 {}},
    Trouble{"result=1@reset",                  {}},
    Trouble{"payload=0#1",                     {}},
    Trouble{"result=1@delete",                 PictureCommands::origin},
    Trouble{"result=1@capture",                PictureCommands::origin},
    Trouble{"silent@catalogue",                PictureCommands::origin},
    Trouble{"records=0@catalogue",             PictureCommands::origin},
    Trouble{"payload=25@catalogue",            PictureCommands::origin}, // two bytes too few for a record
    Trouble{"payload=26@catalogue",            PictureCommands::origin}, // with the check code it is one
    Trouble{"result=1@read",                   PictureCommands::origin},
    Trouble{"result=1@read#2+",                PictureCommands::origin},
    Trouble{"result=1@deleteV1",               PictureCommands::v1},
    Trouble{"result=1@captureV1",              PictureCommands::v1},
    Trouble{"records=0@catalogueV1",           PictureCommands::v1},
    Trouble{"result=1@readV1",                 PictureCommands::v1},
    Trouble{"result=1@appUpdateV1#5",          PictureCommands::v1},
    Trouble{"silent@appUpdateV1#5",            PictureCommands::v1},
    Trouble{"offset=size-1@appUpdateV1#5",     PictureCommands::v1},
    Trouble{"result=2@packetV1#11+",           PictureCommands::v1},
    Trouble{"result=2@packetV1",               PictureCommands::v1},
    Trouble{"silent@packetV1#11+",             PictureCommands::v1},
    Trouble{"silent@jsonPicture#2+",           PictureCommands::json},
    Trouble{"truncate=3@jsonPicture#2+",       PictureCommands::json},
    Trouble{"no-size@jsonPicture",             PictureCommands::json},
    Trouble{"size-text=\"x\"@jsonPicture",     PictureCommands::json},
    Trouble{"no-marker@jsonPicture#2",         PictureCommands::json},
    Trouble{"invalid-json@jsonProperty",       PictureCommands::json},
    Trouble{"offset=2147483648@appUpdate",     {}},
    Trouble{"offset=2147483648@systemUpdate",  {}},
    Trouble{"offset=2147483648@modelUpdate",   {}},
    Trouble{"offset=512@appUpdate",            {}},
    Trouble{"offset=600@systemUpdate",         {}},
    Trouble{"offset=size+1@systemUpdate",      {}},
    Trouble{"result=1@appUpdate",              {}},
    Trouble{"verdict=1@appUpdate",             {}},
    Trouble{"no-verdict@appUpdate",            {}},
    Trouble{"stay-down@appUpdate",             {}},
    Trouble{"stay-down@systemUpdate",          {}},
    Trouble{"echo=0@modelUpdate",              {}},
    Trouble{"result=1@modelUpdate",            {}},
    Trouble{"verdict=1@modelUpdate",           {}},
    Trouble{"no-verdict@modelUpdate",          {}},
};
// clang-format on

/// Of all that fit, of those of this camera alone, of those of uploads, or of the others.
std::string troubleText(protocol::CameraType type, std::uint32_t choice) {
    constexpr std::uint32_t groups = 4;
    const auto pictures = protocol::infoOf(type).pictures;
    std::vector<const char*> fitting;
    for (const Trouble& trouble : troubles) {
        const std::string_view text(trouble.text);
        const bool upload = text.find("Update") != std::string_view::npos;
        const std::array<bool, groups> belongs{true, trouble.cameras.has_value(), upload,
                                               !trouble.cameras && !upload};
        if ((!trouble.cameras || trouble.cameras == pictures) && belongs.at(choice % groups))
            fitting.push_back(trouble.text);
    }
    return fitting.at(choice / groups % fitting.size());
}

/// Bytes that the adapter's driver takes while the camera does not read.
constexpr std::size_t smallQueue = 256;
constexpr const char* stuckUpload = "stop-reading=9000@";

} // namespace

void followProfile(emulator::CameraProfile profile) {
    followed() = std::move(profile);
}

const emulator::CameraProfile* followedProfile() {
    return followed() ? &*followed() : nullptr;
}

void Workplace::addPorts() {
    emulator::addMemoryPort(emptyPort, {});
    emulator::addMemoryPort(filePort, {});
    emulator::addMemoryPort(firstPort, adapterWith(nullptr));
}

Workplace::Workplace(const Scenario& scenario) : m_line(cameraFor(scenario, m_pictures)) {
    m_line.setPace(protocol::infoOf(scenario.type).baudRate / bitsPerByte);
    if (followed())
        m_line.model().setTraits(followed()->line, scenario.seed);
    plugIn(firstPort);
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
    QFile notAPort{QString::fromLatin1(filePort)};
    std::ignore = notAPort.open(QIODevice::WriteOnly);
}

Workplace::~Workplace() {
    for (const std::string& name : m_portNames)
        emulator::removeMemoryPort(name);
    emulator::removeMemoryPort(emptyPort);
    emulator::removeMemoryPort(filePort);
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

std::optional<Bytes> Workplace::fileWith(const Bytes& digest) {
    for (std::size_t file = 0; file < fileSizes.size(); ++file) {
        Bytes content = contentOf(file);
        const QByteArrayView view(content.data(), static_cast<qsizetype>(content.size()));
        const QByteArray own = QCryptographicHash::hash(view, QCryptographicHash::Md5);
        if (Bytes(own.begin(), own.end()) == digest)
            return content;
    }
    return std::nullopt;
}

void Workplace::plugIn(const std::string& name) {
    m_portNames.push_back(name);
    emulator::addMemoryPort(name, adapterWith(&m_line));
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
    case StepKind::trouble:
        camera().addFault(troubleText(camera().settings().type, step.choice));
        m_disturbances.camera = true;
        break;
    case StepKind::clog:
        m_line.setQueue({smallQueue, smallQueue});
        for (const char* const upload : {"appUpdate", "systemUpdate", "modelUpdate"})
            camera().addFault(std::string(stuckUpload) + upload);
        m_disturbances.camera = true;
        break;
    case StepKind::fail:
        if (emulator::MemoryPort* const port = emulator::findMemoryPort(m_portNames.back()))
            port->failsOnce = true;
        m_disturbances.adapter = true;
        break;
    case StepKind::obstruct:
        obstruct(step);
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

/// A folder has the name of a picture.
void Workplace::obstruct(const Step& step) {
    constexpr std::array<int, 5> ids{1, 20, 21, 22, 23};
    const QString folder = step.detail % 2 == 0 ? QStringLiteral(".") : QString::fromLatin1(pictureFolder);
    const QString path = QDir::cleanPath(QDir::current().absoluteFilePath(
        QStringLiteral("%1/%2.jpg").arg(folder).arg(ids.at(step.choice % ids.size()))));
    if (QDir().mkdir(path))
        m_obstructions.append(path);
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
