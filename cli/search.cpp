#include "cli/search.h"

#include "service/finder.h"
#include "service/linerecording.h"

#include <QCoreApplication>
#include <QJsonArray>

namespace cli {

namespace {

QString searchWords(const char* text) {
    return QCoreApplication::translate("Search", text);
}

service::FindPlan planFor(const PortJob& job, const Options& options) {
    const Command& command = options.command;
    service::FindPlan plan{job.port(), command.rates, command.addresses, command.firstOnly};
    if (plan.rates.empty() && options.rate)
        plan.rates = {*options.rate};
    if (plan.rates.empty())
        plan.rates.assign(protocol::baudRates.begin(), protocol::baudRates.end());
    if (plan.addresses.empty() && options.address)
        plan.addresses = {*options.address};
    if (plan.addresses.empty())
        plan.addresses = service::usualAddresses();
    return plan;
}

Result resultOf(const std::vector<service::FoundCamera>& cameras) {
    QJsonArray list;
    QStringList lines;
    for (const service::FoundCamera& camera : cameras) {
        list.append(QJsonObject{{"rate", static_cast<qint64>(camera.baudRate)}, {"address", camera.address}});
        lines.append(searchWords("%1  波特率 %2  从机地址 %3")
                         .arg(QString::fromStdString(camera.port))
                         .arg(camera.baudRate)
                         .arg(camera.address));
    }
    Result result{ExitCode::done, {{"cameras", list}}, lines.join(QLatin1Char('\n')), {}};
    if (cameras.empty()) {
        result.code = ExitCode::noAnswer;
        result.error = searchWords("没有摄像头应答，请检查电源和接线");
    }
    return result;
}

} // namespace

Result runSearch(PortJob& job, const Options& options) {
    const service::FindPlan plan = planFor(job, options);
    std::vector<service::FoundCamera> cameras;
    const service::FindObserver observer{
        [&](std::size_t attempt) {
            job.tell(searchWords("%1：第 %2 次，共 %3 次")
                         .arg(QString::fromStdString(job.port()))
                         .arg(attempt + 1)
                         .arg(plan.attempts()));
        },
        [&](const service::FoundCamera& camera) { cameras.push_back(camera); }};
    std::unique_ptr<service::LineRecording> recording;
    try {
        recording = startRecording(options, job.port());
    } catch (const std::exception& error) {
        return failure(ExitCode::file, QString::fromUtf8(error.what()));
    }
    try {
        service::findCameras(plan, observer, job.stopped(), recording.get());
    } catch (...) {
        return openingFailure();
    }
    Result result = resultOf(cameras);
    endRecording(recording.get(), result);
    if (job.stopped())
        result.code = ExitCode::interrupted;
    return result;
}

} // namespace cli
