#include "cli/batch.h"

#include "cli/batchstate.h"
#include "cli/jobwords.h"
#include "cli/portjob.h"
#include "cli/program.h"
#include "cli/system.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <map>

namespace cli {

namespace {

QString batchWords(const char* text) {
    return QCoreApplication::translate("Batch", text);
}

struct BatchJob {
    int line = 0; ///< in the file, from 1
    Options options;
    ExitCode code = ExitCode::done;
    bool ran = false;
    bool skipped = false; ///< done by an earlier run
};

using JobLists = std::map<std::string, std::vector<BatchJob>>; ///< by port

QByteArray readJobFile(const std::string& path) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly))
        throw UsageError(batchWords("任务文件不能读取：%1").arg(file.fileName()).toStdString());
    return file.readAll();
}

/// Empty lines and lines that begin with # hold no job. All lines are checked before the first job runs.
JobLists jobsIn(const QByteArray& text, const Options& general) {
    JobLists lists;
    int number = 0;
    for (const QString& raw : QString::fromUtf8(text).split(QLatin1Char('\n'))) {
        ++number;
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        try {
            BatchJob job{number, parseJob(jobWords(line), general)};
            lists[job.options.ports.front()].push_back(std::move(job));
        } catch (const UsageError& error) {
            throw UsageError(batchWords("任务文件第 %1 行：%2")
                                 .arg(number)
                                 .arg(QString::fromUtf8(error.what()))
                                 .toStdString());
        }
    }
    if (lists.empty())
        throw UsageError(batchWords("任务文件里没有任务").toStdString());
    return lists;
}

void confirmBatch(const JobLists& lists, const Options& options) {
    const bool destructive = std::any_of(lists.begin(), lists.end(), [](const auto& list) {
        return std::any_of(list.second.begin(), list.second.end(),
                           [](const BatchJob& job) { return job.options.command.isDestructive(); });
    });
    if (destructive && !options.confirmed)
        throw UsageError(batchWords("任务会改变摄像头，请加 --yes").toStdString());
}

/// The jobs of one port, in order, on its thread.
void runList(PortJob& port, std::vector<BatchJob>& jobs, const Options& general, BatchState& state,
             Output& output) {
    for (BatchJob& job : jobs) {
        if (port.stopped())
            return;
        job.skipped = state.isDone(job.line);
        if (job.skipped)
            continue;
        Result result = port.run(job.options, output, false);
        if (result.code == ExitCode::done && !state.noteDone(job.line))
            result = failure(ExitCode::file, batchWords("状态文件不能写入"));
        job.code = result.code;
        job.ran = true;
        QJsonObject head = headOf(job.options, port.port());
        head.insert(QLatin1String("jobLine"), job.line);
        output.result(head, QString::fromStdString(port.port()), result);
        if (result.code != ExitCode::done && !general.command.keepsGoing)
            return;
    }
}

QString stateWord(const BatchJob& job) {
    if (job.skipped)
        return batchWords("已做过");
    if (!job.ran)
        return batchWords("没有执行");
    return job.code == ExitCode::done ? batchWords("完成")
                                      : batchWords("失败（%1）").arg(static_cast<int>(job.code));
}

void printSummary(const JobLists& lists, Output& output) {
    output.line(QString());
    for (const auto& [port, jobs] : lists) {
        for (const BatchJob& job : jobs)
            output.line(QStringLiteral("%1  %2  %3  %4")
                            .arg(job.line, 4)
                            .arg(QString::fromStdString(port), stateWord(job),
                                 job.options.command.words.join(QLatin1Char(' '))));
    }
}

} // namespace

ExitCode runBatch(const Options& options, Output& output) {
    const QByteArray text = readJobFile(options.command.file);
    JobLists lists = jobsIn(text, options);
    confirmBatch(lists, options);
    BatchState state(QString::fromStdString(options.command.stateFile), text);
    std::vector<std::unique_ptr<PortJob>> ports;
    for (auto& [name, jobs] : lists)
        ports.push_back(std::make_unique<PortJob>(
            name, [&, list = &jobs](PortJob& port) { runList(port, *list, options, state, output); }));
    superviseJobs(ports, output);
    ports.clear();
    printSummary(lists, output);
    ExitCode worst = ExitCode::done;
    for (const auto& [port, jobs] : lists) {
        for (const BatchJob& job : jobs)
            worst = std::max(worst, job.code);
    }
    return worst;
}

} // namespace cli
