#include "cli/watch.h"

#include "cli/program.h"
#include "service/linequality.h"
#include "service/readings.h"

#include <QCoreApplication>
#include <QDateTime>

namespace cli {

namespace {

QString watchWords(const char* text) {
    return QCoreApplication::translate("Watch", text);
}

struct Counts {
    int asked = 0;
    int answered = 0;
};

/// One heartbeat, printed.
void watchOnce(const CommandContext& context, Counts& counts) {
    const service::ReadValue value =
        service::readingOf("heartbeat")->read(context.camera, context.options.type);
    const bool alive = value.verdict != service::Verdict::failed;
    const QDateTime now = QDateTime::currentDateTime();
    ++counts.asked;
    counts.answered += alive ? 1 : 0;
    QJsonObject object = headOf(context.options, context.port);
    object.insert(QLatin1String("time"), now.toString(Qt::ISODateWithMs));
    object.insert(QLatin1String("heartbeat"), alive);
    context.output.object(object);
    context.output.line(QStringLiteral("%1  %2  %3  (%4/%5)")
                            .arg(now.toString(QStringLiteral("HH:mm:ss")),
                                 QString::fromStdString(context.port), alive ? value.text : value.reason)
                            .arg(counts.answered)
                            .arg(counts.asked));
}

Result watch(const CommandContext& context) {
    Counts counts;
    do {
        watchOnce(context, counts);
    } while (!context.camera.portFailed() && context.camera.pause(context.options.command.interval));
    const service::LineCounts line = context.quality.finish();
    Result result;
    result.code = context.camera.portFailed() ? ExitCode::portFailed : ExitCode::done;
    result.fields = {{"asked", counts.asked},
                     {"answered", counts.answered},
                     {"late", line.late},
                     {"broken", line.broken},
                     {"strayBytes", static_cast<qint64>(line.strayBytes)}};
    result.text = watchWords("心跳 %1 次，应答 %2 次，迟到 %3，损坏 %4，杂散字节 %5")
                      .arg(counts.asked)
                      .arg(counts.answered)
                      .arg(line.late)
                      .arg(line.broken)
                      .arg(line.strayBytes);
    if (result.code == ExitCode::portFailed)
        result.error = watchWords("串口出错，请检查转接器");
    return result;
}

} // namespace

Result runWatch(PortJob& job, const Options& options, Output& output) {
    return job.use(options, [&](CameraSp& camera, service::LineQuality& quality) {
        return watch({camera, options, job.port(), quality, output, false, {}});
    });
}

} // namespace cli
