#include "emulator/line/ptyfront.h"

#include "emulator/line/terminal.h"

#include <sys/ioctl.h>

namespace emulator {

PtyFront::PtyFront(VirtualCamera camera) : CameraFront(std::move(camera)) {
    m_pty.open();
    start(m_pty.master());
}

PtyFront::~PtyFront() {
    stop();
    m_pty.close();
}

void PtyFront::closeLine() {
    m_pty.close();
}

void PtyFront::vanish() {
    runOnThread([this] {
        m_pty.close();
        setLine(LineIo::none);
    });
}

void PtyFront::comeBack() {
    std::exception_ptr failure;
    runOnThread([this, &failure] {
        if (m_pty.isOpen())
            return;
        try {
            m_pty.open();
        } catch (...) {
            failure = std::current_exception();
            return;
        }
        setLine(m_pty.master());
        reopened();
    });
    if (failure)
        std::rethrow_exception(failure);
}

void PtyFront::setBusy(bool busy) {
    runOnThread([this, busy] {
        if (m_pty.isOpen())
            ::ioctl(m_pty.slave(), busy ? TIOCEXCL : TIOCNXCL);
    });
}

std::optional<std::uint32_t> PtyFront::lineSpeed() const {
    return terminalSpeed(m_pty.slave());
}

} // namespace emulator
