#include "cli/portjob.h"

#include "service/failuretext.h"
#include "service/linequality.h"
#include "service/linerecording.h"
#include "service/transfertext.h"
#include "trace/recordingfile.h"

#include <QCoreApplication>

namespace cli {

namespace {

using namespace std::chrono_literals;

constexpr auto longestStandstill = 10s;
constexpr int barWidth = 20;

QString jobWords(const char* text) {
    return QCoreApplication::translate("PortJob", text);
}

QString bar(int percent) {
    const auto filled = static_cast<qsizetype>(percent * barWidth / 100);
    return QLatin1Char('[') + QString(filled, QLatin1Char('#')) +
           QString(barWidth - filled, QLatin1Char('.')) + QLatin1String("] ");
}

trace::RecordingHead headFor(const Options& options, const std::string& port) {
    trace::RecordingHead head;
    head.start = trace::wallClockText(std::chrono::system_clock::now());
    head.device = port;
    head.baudRate = options.usedRate();
    return head;
}

} // namespace

/// The client of a job while it is open; the main thread may stop it.
class PortJob::OpenLink {
public:
    OpenLink(PortJob& job, const Options& options) : m_job(job), m_camera(job.m_port, options.usedRate()) {
        m_camera.setSlaveAddress(options.usedAddress());
        const std::lock_guard lock(job.m_mutex);
        job.m_camera = &m_camera;
        job.m_stoodStill = false;
        if (job.m_stopped)
            m_camera.requestStop();
    }
    ~OpenLink() {
        const std::lock_guard lock(m_job.m_mutex);
        m_job.m_camera = nullptr;
        m_job.m_text.clear();
        m_job.m_sendingSince.reset();
        m_job.m_lastByte.reset();
    }
    OpenLink(const OpenLink&) = delete;
    OpenLink& operator=(const OpenLink&) = delete;

    CameraSp& camera() { return m_camera; }

private:
    PortJob& m_job;
    CameraSp m_camera;
};

PortJob::PortJob(std::string port, Work work)
    : m_port(std::move(port)), m_thread([this, work = std::move(work)] {
          work(*this);
          m_done = true;
      }) {}

PortJob::~PortJob() {
    m_thread.join();
}

void PortJob::stop() {
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    if (m_camera != nullptr)
        m_camera->requestStop();
}

void PortJob::tell(const QString& text) {
    const std::lock_guard lock(m_mutex);
    m_text = text;
}

QString PortJob::progress() {
    const std::lock_guard lock(m_mutex);
    if (m_camera == nullptr || m_camera->progress().phase == TransferProgress::Phase::idle)
        return m_text;
    TransferSnapshot snapshot = snapshotOf(m_camera->progress());
    const Clock::Time now = m_camera->clock().now();
    if (snapshot.phase == TransferProgress::Phase::sending && !m_sendingSince)
        m_sendingSince = now;
    snapshot.seconds = std::chrono::duration<double>(now - m_sendingSince.value_or(now)).count();
    return bar(transferPercent(snapshot)) + transferText(snapshot);
}

void PortJob::watchDownload() {
    const std::lock_guard lock(m_mutex);
    if (m_camera == nullptr || m_camera->progress().phase != TransferProgress::Phase::downloading) {
        m_lastByte.reset();
        return;
    }
    const Clock::Time now = m_camera->clock().now();
    if (const std::uint64_t done = m_camera->progress().done; !m_lastByte || done != m_lastDone) {
        m_lastDone = done;
        m_lastByte = now;
    } else if (now - *m_lastByte > longestStandstill) {
        m_stoodStill = true;
        m_camera->endDownload();
    }
}

void PortJob::describeStandstill(Result& result) {
    const std::lock_guard lock(m_mutex);
    if (!m_stoodStill || result.code != ExitCode::interrupted)
        return;
    result.code = m_lastDone == 0 ? ExitCode::noAnswer : ExitCode::refused;
    result.error = jobWords("下载时摄像头 %1 秒没有发送数据，请检查接线后重试")
                       .arg(std::chrono::seconds(longestStandstill).count());
}

Result PortJob::run(const Options& options, Output& output, bool severalPorts) {
    return use(options, [&](CameraSp& camera, service::LineQuality& quality) {
        return runCommand({camera, options, m_port, quality, output, severalPorts,
                           [this](const QString& text) { tell(text); }});
    });
}

Result PortJob::use(const Options& options,
                    const std::function<Result(CameraSp& camera, service::LineQuality& quality)>& work) {
    service::LineQuality quality;
    std::optional<OpenLink> link;
    try {
        link.emplace(*this, options);
    } catch (...) {
        return openingFailure();
    }
    std::unique_ptr<service::LineRecording> recording;
    try {
        recording = startRecording(options, m_port);
    } catch (const std::exception& error) {
        return failure(ExitCode::file, QString::fromUtf8(error.what()));
    }
    CameraSp& camera = link->camera();
    std::optional<LineObservation> recorded;
    if (recording)
        recorded.emplace(camera, *recording);
    std::optional<LineObservation> counted(std::in_place, camera, quality);
    Result result = work(camera, quality);
    counted.reset();
    recorded.reset();
    endRecording(recording.get(), result);
    if (m_stopped)
        result.code = ExitCode::interrupted;
    else
        describeStandstill(result);
    return result;
}

std::unique_ptr<service::LineRecording> startRecording(const Options& options, const std::string& port) {
    if (options.recordFile.empty())
        return nullptr;
    return std::make_unique<service::LineRecording>(options.recordFile, headFor(options, port));
}

void endRecording(service::LineRecording* recording, Result& result) {
    if (recording == nullptr)
        return;
    recording->finish();
    if (!recording->failure().empty() && result.code == ExitCode::done)
        result = failure(ExitCode::file,
                         jobWords("录制没有完成：%1").arg(QString::fromStdString(recording->failure())));
}

Result openingFailure() {
    return failure(ExitCode::portFailed, failureText(std::current_exception()).inFull());
}

} // namespace cli
