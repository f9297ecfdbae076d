// The session: opening and closing the port, the life of the link.
#include "link/camerasp.h"

#include "link/cameraline.h"
#include "link/diagnostics.h"
#include "link/guarded.h"
#include "link/protocol/jsonenvelope.h"
#include "link/runcommand.h"

#include <utility>

using namespace protocol;

namespace {

constexpr std::uint32_t defaultBaudRate = 9600;

/// The system refuses to guess among several ports.
std::string onlyPort() {
    const std::vector<serial::PortInfo> ports = serial::list_ports();
    if (ports.empty())
        throw "serial unavailable";
    if (ports.size() > 1)
        throw "serial port size>1";
    return ports.front().port;
}

} // namespace

CameraSp::CameraSp(const std::string& portName) : CameraSp(portName, defaultBaudRate) {}

CameraSp::CameraSp(const std::string& portName, std::uint32_t baudRate, Clock& clock)
    : m_line(std::make_unique<CameraLine>(portName, baudRate, namedPortTimeoutMs, clock)),
      m_baudRate(baudRate) {}

CameraSp::CameraSp(std::uint32_t baudRate)
    : m_line(std::make_unique<CameraLine>(onlyPort(), baudRate, onlyPortTimeoutMs, Clock::system())),
      m_baudRate(baudRate) {}

CameraSp::CameraSp() : CameraSp(defaultBaudRate) {}

CameraSp::~CameraSp() {
    m_line.reset();
    diagnostics::line("in ~CameraSp");
}

std::vector<std::string> CameraSp::getPorts() {
    std::vector<std::string> names;
    for (const serial::PortInfo& info : describePorts())
        names.push_back(info.port);
    return names;
}

std::vector<serial::PortInfo> CameraSp::describePorts() {
    return guarded(std::vector<serial::PortInfo>(), [] { return serial::list_ports(); });
}

void CameraSp::setSlaveAddress(std::int32_t address) {
    m_line->setAddress(address);
}

void CameraSp::setOriginPicCmdExtraAdd(std::uint8_t offset) {
    m_line->pictureOffset = offset;
}

void CameraSp::setAppFilePath(const std::string& path) {
    m_texts.appPath = path;
}

void CameraSp::setFirewareFilePath(const std::string& path) {
    m_texts.firewarePath = path;
}

void CameraSp::setModelNameAndPath(const std::string& name, const std::string& path) {
    m_texts.modelName = name;
    m_texts.modelPath = path;
}

bool CameraSp::checkData(std::vector<std::uint8_t>& answer, std::int32_t readSize, std::int32_t tries) {
    return readSize >= 0 &&
           m_line->readAnswer(answer, static_cast<std::uint32_t>(readSize), tries, frameForm);
}

bool CameraSp::checkQuentaData(std::vector<std::uint8_t>& answer, std::int32_t readSize,
                               std::int32_t rounds) {
    return runCommand(*m_line, LineUser::command, {}, false, [&] {
        const bool whole = readSize >= 0 &&
                           m_line->readAnswer(answer, static_cast<std::uint32_t>(readSize), rounds, jsonForm);
        if (!whole)
            m_line->setEnd(answer.empty() ? CommandEnd::noAnswer : CommandEnd::unusable);
        return whole;
    });
}

// --- the turn on the line --------------------------------------------------------------------------------

LineTurn::Hold CameraSp::takeLine(LineUser user) {
    return m_line->take(user);
}

LineTurn::Hold CameraSp::takeReadings() {
    return m_line->takeReadings();
}

LineTurn::State CameraSp::lineState() const {
    return m_line->turn().state();
}

void CameraSp::endDownload() {
    m_line->endDownload();
}

void CameraSp::setWaitCallback(std::function<void()> callback) {
    m_line->setWaitCallback(std::move(callback));
}

CameraSp::AddressHold::AddressHold(CameraSp& client) : m_client(client) {
    m_client.m_line->holdAddress();
}

CameraSp::AddressHold::~AddressHold() {
    m_client.m_line->releaseAddress();
}

// --- life of the link ------------------------------------------------------------------------------------

void CameraSp::requestStop() {
    m_line->requestStop();
}

bool CameraSp::stopRequested() const {
    return m_line->stopRequested();
}

bool CameraSp::pause(std::chrono::nanoseconds duration) {
    return m_line->pause(duration);
}

void CameraSp::waitUntilUnused() {
    m_line->waitUntilUnused();
}

bool CameraSp::portFailed() const {
    return m_line->portFailed();
}

const TransferProgress& CameraSp::progress() const {
    return m_line->progress;
}

std::string CameraSp::setPictureFolder(const std::string& folder) {
    return std::exchange(m_line->pictureFolder, folder);
}

void CameraSp::addLineObserver(LineObserver& observer) {
    m_line->observers().add(observer);
}

void CameraSp::removeLineObserver(const LineObserver& observer) {
    m_line->observers().remove(observer);
}

Clock& CameraSp::clock() const {
    return m_line->clock();
}

CameraSp::Lease::Lease(CameraSp& client) : m_client(&client) {
    client.m_line->addLease();
}

CameraSp::Lease::Lease(Lease&& other) noexcept : m_client(std::exchange(other.m_client, nullptr)) {}

CameraSp::Lease& CameraSp::Lease::operator=(Lease&& other) noexcept {
    if (this != &other) {
        release();
        m_client = std::exchange(other.m_client, nullptr);
    }
    return *this;
}

CameraSp::Lease::~Lease() {
    release();
}

void CameraSp::Lease::release() {
    if (CameraSp* const client = std::exchange(m_client, nullptr))
        client->m_line->removeLease();
}
