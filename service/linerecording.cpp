#include "service/linerecording.h"

#include "link/guarded.h"
#include "trace/recordingfile.h"

namespace service {

LineRecording::LineRecording(const std::string& path, const trace::RecordingHead& head) {
    const auto file = std::make_shared<trace::RecordingFile>(path);
    m_recorder =
        std::make_unique<trace::Recorder>(head, [file](const std::string& lines) { file->append(lines); });
}

LineRecording::~LineRecording() {
    finish();
}

void LineRecording::finish() {
    const std::lock_guard lock(m_mutex);
    write([this] { m_recorder->finish(); });
    m_recorder.reset();
}

std::string LineRecording::failure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

void LineRecording::pass(trace::Side from, protocol::ByteView bytes, trace::Time at) {
    write([&] { m_recorder->pass(from, bytes, at); });
}

template <typename Work>
void LineRecording::write(Work work) {
    if (m_recorder == nullptr || !m_failure.empty())
        return;
    try {
        work();
    } catch (...) {
        m_failure = exceptionText();
    }
}

} // namespace service
