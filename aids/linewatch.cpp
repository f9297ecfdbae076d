#include "aids/linewatch.h"

#include "trace/recordingfile.h"

using namespace std::chrono_literals;

namespace {
constexpr auto markInterval = 1s; // nothing is shown more often without a window
}

LineWatch::LineWatch(Clock& clock, QualityMark* mark, QObject* parent)
    : QObject(parent), m_clock(clock), m_mark(mark) {
    m_timer.setInterval(m_clock.timerInterval(markInterval));
    connect(&m_timer, &QTimer::timeout, this, &LineWatch::update);
}

void LineWatch::linkOpened(CameraSp& camera, const QString& port) {
    trace::RecordingHead head;
    head.start = trace::wallClockText(std::chrono::system_clock::now());
    head.device = port.isEmpty() ? "-" : port.toStdString(); // a head's value is not empty
    head.baudRate = camera.baudRate();
    m_log = std::make_shared<service::LineLog>(head, m_clock.now());
    m_observation.emplace(camera, m_log->record);
    m_timer.start();
    update();
}

void LineWatch::linkClosed() {
    m_timer.stop();
    m_observation.reset();
    if (m_log != nullptr)
        m_log->rows.finish(m_log->record.timeOf(m_clock.now()));
    m_mark->clear();
}

void LineWatch::setPictureOffset(std::uint8_t offset) {
    if (m_observation)
        m_log->head.pictureOffset = offset;
}

void LineWatch::update() {
    if (!m_observation)
        return;
    m_log->rows.update(m_log->record.timeOf(m_clock.now()));
    m_mark->showSignal(m_log->rows.recent());
}
