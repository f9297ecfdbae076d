#include "bench/farend.h"

#include "bench/measure.h"
#include "emulator/line/ptyfront.h"

#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace bench {

namespace {

using emulator::CameraRecord;
using emulator::PtyFront;
using emulator::VirtualCamera;

constexpr std::size_t nameSize = 256;
/// A buffer of the line takes less, at any pace that is measured.
constexpr std::chrono::seconds patience{30};

Arrivals uploadArrivals(const CameraRecord& record) {
    if (record.uploads.empty() || !record.uploads.back().firstByteAt)
        return {};
    const emulator::UploadRecord& upload = record.uploads.back();
    const auto first = *upload.firstByteAt;
    const auto last = record.chunks.back().at;
    return {upload.received.size(), Seconds(last - first).count(), upload.digestRight};
}

} // namespace

ChildProcess::ChildProcess(const std::function<Side()>& start) {
    std::array<int, 2> sockets{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0)
        throw std::runtime_error("no socket pair");
    m_child = ::fork();
    if (m_child < 0)
        throw std::runtime_error("no process for the far end");
    if (m_child == 0) {
        ::close(sockets[0]);
        serve(sockets[1], start);
    }
    ::close(sockets[1]);
    m_socket = sockets[0];
    std::array<char, nameSize> name{};
    const ssize_t size = ::recv(m_socket, name.data(), name.size(), 0);
    if (size <= 0)
        throw std::runtime_error("the far end did not start");
    m_portName.assign(name.data(), static_cast<std::size_t>(size));
}

ChildProcess::~ChildProcess() {
    ::close(m_socket); // the child sees the end and leaves
    ::waitpid(m_child, nullptr, 0);
}

void ChildProcess::serve(int socket, const std::function<Side()>& start) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const Side side = start();
    const std::string name = side.portName();
    ::send(socket, name.data(), name.size(), 0);
    char question = 0;
    while (::recv(socket, &question, 1, 0) == 1) {
        const Arrivals answer = side.arrivals();
        ::send(socket, &answer, sizeof answer, 0);
    }
    ::_exit(0); // the parent's objects are not this process's to destroy
}

Arrivals ChildProcess::arrivals() {
    const char question = '?';
    Arrivals answer;
    if (::send(m_socket, &question, 1, MSG_NOSIGNAL) != 1 ||
        ::recv(m_socket, &answer, sizeof answer, 0) != static_cast<ssize_t>(sizeof answer))
        throw std::runtime_error("the far end has ended");
    return answer;
}

FarEnd::FarEnd(emulator::CameraType type, std::uint32_t bytesPerSecond, const Prepare& prepare)
    : ChildProcess([=] {
          auto settings = emulator::settingsForType(type);
          settings.answerDelay = {}; // the line's own time is what counts
          settings.rebootTime = {};
          settings.factoryResetTime = {};
          settings.updateRestartTime = {};
          settings.answersEveryGeneration = true;
          const auto front = std::make_shared<PtyFront>(settings);
          if (prepare)
              prepare(*front);
          front->setPace(bytesPerSecond);
          return Side{[front] { return front->portName(); },
                      [front] {
                          return front->withCamera(
                              [](VirtualCamera& camera) { return uploadArrivals(camera.record()); });
                      }};
      }) {}

Arrivals FarEnd::wholeUpload(std::size_t size) {
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + patience;
    Arrivals arrived = arrivals();
    while (arrived.bytes < size && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(10ms);
        arrived = arrivals();
    }
    if (arrived.bytes != size || !arrived.intact)
        throw std::runtime_error("the far end received other bytes");
    return arrived;
}

} // namespace bench
