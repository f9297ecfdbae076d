#include "conform/visit.h"

#include "link/protocol/jsonenvelope.h"
#include "service/picturetaking.h"
#include "service/readings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>

namespace conform {

namespace {

using namespace std::chrono_literals;
using protocol::code;
using protocol::Command;
using protocol::PropertyId;

constexpr CameraSp::ProbeWait patient{1500ms, 400ms, 40ms};
constexpr CameraSp::ProbeWait listening{1000ms, 300ms, 300ms};
constexpr CameraSp::ProbeWait hasty{1500ms, 400ms, 1ms}; // returns with the answer's last byte
constexpr CameraSp::ProbeWait pieceSent{50ms, 50ms, 50ms};
constexpr CameraSp::ProbeWait calling{200ms, 100ms, 40ms};

constexpr auto pauseBetween = 100ms; // as the tool keeps between two reads
constexpr auto longPause = 2500ms;   // the orientation begins again
constexpr auto longestReturn = 60s;
constexpr int triesOfTheSilent = 3;

constexpr std::uint8_t unknownId = 0xEE;
constexpr std::uint8_t anotherAddress = 0x5C;

class Visitor {
public:
    Visitor(CameraSp& camera, const Plan& plan, const std::function<void(const std::string&)>& telling)
        : m_camera(camera), m_telling(telling) {
        m_evidence.plan = plan;
        m_evidence.baudRate = camera.baudRate();
        m_evidence.requests = readingRequests(plan.type);
    }

    Evidence run() {
        const LineObservation observation(m_camera, m_log);
        ask(probe::quietBefore, {}, listening);
        readOrientation();
        for (const ReadingRequest& request : m_evidence.requests)
            repeat(request);
        if (m_isThere)
            goFurther();
        m_evidence.exchanges = m_log.take();
        m_evidence.complete = goesOn();
        return std::move(m_evidence);
    }

private:
    /// Requests that are sent only if the camera has answered.
    void goFurther() {
        probeHeartbeats();
        probeProperties();
        probeRest();
        useTool();
        if (m_evidence.plan.takesPicture)
            takePicture();
        if (!m_evidence.plan.uploadFile.empty())
            upload();
        ask(probe::quietAfter, {}, listening);
    }

    [[nodiscard]] bool goesOn() const { return !m_camera.stopRequested() && !m_camera.portFailed(); }
    void expect(std::string_view name) {
        m_telling(std::string(name));
        m_log.expect(std::string(name), m_camera.clock().now());
    }
    /// True when something came.
    bool ask(std::string_view name, const Bytes& request, const CameraSp::ProbeWait& wait = patient) {
        if (!goesOn())
            return false;
        expect(name);
        const bool answered = !m_camera.probe(request, wait).empty();
        m_isThere = m_isThere || answered;
        m_camera.pause(pauseBetween);
        return answered;
    }
    [[nodiscard]] Bytes frame(Command command, const Bytes& payload) const {
        return protocol::buildFrame(code(command), payload, m_evidence.plan.address);
    }
    [[nodiscard]] bool isJson() const {
        return protocol::infoOf(m_evidence.plan.type).pictures == protocol::PictureCommands::json;
    }
    [[nodiscard]] Bytes bytesOf(const ReadingRequest& request) const {
        return requestBytes(request, m_evidence.plan.address);
    }

    void readOrientation() {
        const ReadingRequest* const request = requestNamed(m_evidence.requests, "getProperty:16");
        if (request == nullptr)
            return;
        m_camera.pause(longPause);
        for (std::size_t i = 0; i < 3 * orientationRound && goesOn(); ++i) {
            if (i == 2 * orientationRound - 1) // the pause begins in the middle of a round
                m_camera.pause(longPause);
            if (!ask(request->name, bytesOf(*request)))
                return;
        }
    }

    void repeat(const ReadingRequest& request) {
        int silent = 0;
        for (int i = 0; i < m_evidence.plan.repeats && silent < triesOfTheSilent && goesOn(); ++i)
            silent = ask(request.name, bytesOf(request)) ? 0 : silent + 1;
    }

    void probeHeartbeats() {
        const Bytes heartbeat = bytesOf(m_evidence.requests.front());
        ask(probe::foreignAddress,
            protocol::buildFrame(code(Command::heartbeat), Bytes{0},
                                 static_cast<std::uint8_t>(m_evidence.plan.address ^ anotherAddress)),
            calling);
        Bytes damaged = heartbeat;
        damaged.back() ^= 0xFFU;
        ask(probe::wrongCheckCode, damaged, calling);
        m_camera.pause(1500ms); // an incomplete frame is forgotten
        Bytes behind{0x00, 0x55, 0xAA};
        protocol::append(behind, heartbeat);
        ask(probe::behindGarbage, behind);
        const protocol::ByteView whole(heartbeat);
        constexpr std::size_t firstPiece = 5;
        expect(probe::tool);
        m_camera.probe(whole.range(0, firstPiece).toBytes(), pieceSent);
        ask(probe::inTwoPieces, whole.range(firstPiece, whole.size()).toBytes());
        Bytes both = isJson() ? bytesOf(m_evidence.requests[1]) : frame(Command::getProperty, {heaterId()});
        protocol::append(both, heartbeat);
        ask(probe::busy, both, {patient.first, patient.partial, patient.partial});
    }

    static std::uint8_t heaterId() { return code(PropertyId::heaterDuty); }

    void probeProperties() {
        if (isJson())
            return;
        ask(probe::unknownId, frame(Command::getProperty, {unknownId}));
        ask(probe::unknownInfo, frame(Command::getInfo, {unknownId}));
        ask(probe::shortRequest, frame(Command::getProperty, {}), calling);
    }

    /// A request right behind an answer, and longer pauses until it is answered.
    void probeRest() {
        const Bytes heartbeat = bytesOf(m_evidence.requests.front());
        for (const auto rest : restsTried) {
            if (!goesOn())
                return;
            expect(probe::tool);
            m_camera.probe(heartbeat, hasty);
            if (rest > 0ms)
                m_camera.pause(rest);
            if (ask(probe::atOnce, heartbeat, calling))
                return;
        }
    }

    void useTool() {
        expect(probe::tool);
        for (const service::Reading& reading : service::readings()) {
            if (!goesOn() || !reading.isKnownTo(m_evidence.plan.type))
                continue;
            m_telling(reading.key);
            const service::ReadValue value = reading.read(m_camera, m_evidence.plan.type);
            m_evidence.toolReadings.push_back({reading.key, value.verdict != service::Verdict::failed});
            m_camera.pause(pauseBetween);
        }
    }

    void takePicture() {
        expect(probe::capture);
        const QTemporaryDir folder;
        const std::string before = m_camera.setPictureFolder(folder.path().toStdString());
        const service::PictureResult result =
            service::takePicture(m_camera, m_evidence.plan.type, folder.path());
        m_camera.setPictureFolder(before);
        PictureEvidence picture{result.succeeded(), {}, {}};
        picture.digest = result.info.digest;
        if (QFile file(result.file); picture.taken && file.open(QIODevice::ReadOnly)) {
            const QByteArray content = file.readAll();
            picture.jpeg.assign(content.begin(), content.end());
        }
        m_evidence.picture = std::move(picture);
    }

    void upload() {
        expect(probe::upload);
        const std::string& path = m_evidence.plan.uploadFile;
        UploadEvidence result;
        if (protocol::infoOf(m_evidence.plan.type).pictures == protocol::PictureCommands::v1) {
            const QString name = QFileInfo(QString::fromStdString(path)).fileName();
            result.succeeded = m_camera.appUpdateV1(name.toStdString(), path);
        } else {
            m_camera.setAppFilePath(path);
            result.succeeded = m_camera.appUpdate();
        }
        const Clock::Time verdict = m_camera.clock().now();
        const Bytes heartbeat = bytesOf(m_evidence.requests.front());
        while (result.succeeded && !result.returnedAfter && goesOn() &&
               m_camera.clock().now() - verdict < longestReturn) {
            expect(probe::returning);
            const Clock::Time asked = m_camera.clock().now();
            if (protocol::isHeartbeatAnswer(lastFrame(m_camera.probe(heartbeat, calling))))
                result.returnedAfter = std::chrono::duration_cast<std::chrono::milliseconds>(asked - verdict);
        }
        m_evidence.upload = result;
    }

    /// A heartbeat's answer behind whatever the camera said before.
    static Bytes lastFrame(const Bytes& bytes) {
        constexpr std::size_t size = protocol::frameOverhead + 1;
        return protocol::ByteView(bytes)
            .range(bytes.size() - std::min(bytes.size(), size), bytes.size())
            .toBytes();
    }

    CameraSp& m_camera;
    const std::function<void(const std::string&)>& m_telling;
    ExchangeLog m_log;
    Evidence m_evidence;
    bool m_isThere = false; ///< something came
};

} // namespace

std::vector<const Exchange*> Evidence::named(std::string_view name) const {
    std::vector<const Exchange*> found;
    for (const Exchange& exchange : exchanges) {
        if (exchange.name == name)
            found.push_back(&exchange);
    }
    return found;
}

bool Evidence::isAnswered() const {
    return std::any_of(exchanges.begin(), exchanges.end(),
                       [](const Exchange& exchange) { return exchange.isAnswered(); });
}

std::optional<std::chrono::microseconds> Evidence::delayOf(const Exchange& exchange) const {
    if (!exchange.isAnswered())
        return std::nullopt;
    constexpr std::int64_t bitsPerByte = 10;
    constexpr std::int64_t microsPerSecond = 1'000'000;
    const auto bytes = static_cast<std::int64_t>(exchange.request.size()) + 1;
    const std::chrono::microseconds onTheLine(bytes * bitsPerByte * microsPerSecond / std::max(baudRate, 1U));
    const auto passed = std::chrono::duration_cast<std::chrono::microseconds>(exchange.pieces.front().first -
                                                                              exchange.sentAt);
    return std::max(passed - onTheLine, 0us);
}

std::vector<std::chrono::microseconds> Evidence::delays(std::string_view name) const {
    std::vector<std::chrono::microseconds> all;
    for (const Exchange* const exchange : named(name)) {
        if (const auto delay = delayOf(*exchange))
            all.push_back(*delay);
    }
    std::sort(all.begin(), all.end());
    return all;
}

std::chrono::microseconds quantile(const std::vector<std::chrono::microseconds>& rising, unsigned percent) {
    constexpr double half = 0.5; // the n-th of them stands for the middle of its share
    constexpr double hundred = 100;
    const double last = static_cast<double>(rising.size()) - 1;
    const double place = std::clamp(static_cast<double>(rising.size()) * percent / hundred - half, 0.0, last);
    const auto before = static_cast<std::size_t>(place);
    const std::size_t behind = std::min(before + 1, rising.size() - 1);
    return rising[before] + std::chrono::duration_cast<std::chrono::microseconds>(
                                (rising[behind] - rising[before]) * (place - static_cast<double>(before)));
}

Evidence visit(CameraSp& camera, const Plan& plan,
               const std::function<void(const std::string& name)>& telling) {
    return Visitor(camera, plan, telling).run();
}

} // namespace conform
