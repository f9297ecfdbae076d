#include "emulator/line/pty.h"
#include "emulator/line/terminal.h"
#include "emulator/line/toolline.h"

namespace emulator {

namespace {

class PtyLine final : public ByteLine {
public:
    explicit PtyLine(const std::string& link) : m_link(link) {
        m_pty.open();
        if (!link.empty())
            m_pty.linkAt(link);
    }
    std::optional<std::uint32_t> rate() const override { return terminalSpeed(m_pty.slave()); }
    std::string name() const override {
        return m_link.empty() ? m_pty.portName() : m_pty.portName() + " (" + m_link + ')';
    }
    LineIo::Line line() const override { return m_pty.master(); }

private:
    Pty m_pty;
    std::string m_link;
};

} // namespace

std::unique_ptr<ByteLine> openToolLine(const std::string& link) {
    return std::make_unique<PtyLine>(link);
}

} // namespace emulator
