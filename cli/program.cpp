#include "cli/program.h"

#include "cli/batch.h"
#include "cli/portjob.h"
#include "cli/search.h"
#include "cli/system.h"
#include "cli/watch.h"
#include "service/systemtext.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <iostream>
#include <set>

namespace cli {

namespace {

using namespace std::chrono_literals;

constexpr auto lookInterval = 50ms;

QString programWords(const char* text) {
    return QCoreApplication::translate("Program", text);
}

ExitCode listPorts(Output& output) {
    QJsonArray ports;
    QStringList lines;
    for (const serial::PortInfo& port : CameraSp::describePorts()) {
        const QString name = QString::fromStdString(port.port);
        const QString description = systemText(port.description);
        const QString hardware = systemText(port.hardware_id);
        ports.append(QJsonObject{{"name", name}, {"description", description}, {"hardwareId", hardware}});
        lines.append(name + QLatin1String("  ") + description + QLatin1String("  ") + hardware);
    }
    if (lines.isEmpty())
        lines.append(programWords("没有串口，请插入转接器"));
    output.result({{"command", "ports"}}, {},
                  {ExitCode::done, {{"ports", ports}}, lines.join(QLatin1Char('\n')), {}});
    return ExitCode::done;
}

/// The only port there is.
std::vector<std::string> chosenPorts(const Options& options) {
    if (!options.ports.empty())
        return options.ports;
    std::vector<std::string> present = CameraSp::getPorts();
    if (present.empty())
        throw UsageError(programWords("没有串口，请插入转接器，或用 -p 指定").toStdString());
    if (present.size() > 1 && options.command.verb != Verb::find) {
        QStringList names;
        for (const std::string& name : present)
            names.append(QString::fromStdString(name));
        throw UsageError(programWords("有多个串口（%1），请用 -p 指定")
                             .arg(names.join(QLatin1String(", ")))
                             .toStdString());
    }
    return present;
}

/// Asks on the terminal before something is changed.
void confirm(const Options& options, std::size_t ports) {
    if (!options.command.isDestructive() || options.confirmed)
        return;
    if (!inputIsTerminal())
        throw UsageError(programWords("该命令会改变摄像头，请加 --yes").toStdString());
    std::cerr << programWords("%1：将改变 %2 台摄像头，继续吗？输入 y 继续：")
                     .arg(options.command.words.join(QLatin1Char(' ')))
                     .arg(ports)
                     .toStdString()
              << std::flush;
    std::string answer;
    if (awaitInput())
        std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y")
        throw UsageError(programWords("已取消").toStdString());
}

/// Options that the command does not use.
void checkUses(const Options& options) {
    struct Pair {
        bool given;
        const char* option;
        const char* with;
    };
    const Command& command = options.command;
    const bool ports = command.verb == Verb::ports;
    const bool batch = command.verb == Verb::batch;
    const bool named = !command.name.empty();
    const auto uploads = [&command](UploadKind kind) {
        return command.verb == Verb::upload && command.kind == kind;
    };
    const bool secondProtocol = protocol::infoOf(options.type).pictures == protocol::PictureCommands::v1;
    for (const Pair& pair :
         {Pair{ports && !options.ports.empty(), "--port", "ports"},
          Pair{ports && options.rate, "--baud", "ports"},
          Pair{ports && options.address, "--address", "ports"},
          Pair{ports && options.typeGiven, "--type", "ports"},
          Pair{batch && options.address, "--address", "batch"},
          Pair{batch && options.typeGiven, "--type", "batch"},
          Pair{!command.rates.empty() && options.rate, "--baud", "--rates"},
          Pair{!command.addresses.empty() && options.address, "--address", "--addresses"},
          Pair{uploads(UploadKind::app) && !secondProtocol && named, "--name", "upload app"},
          Pair{uploads(UploadKind::system) && named, "--name", "upload system"},
          Pair{uploads(UploadKind::model) && !command.waits, "--no-wait", "upload model"}}) {
        if (pair.given)
            throw UsageError(programWords("%1 对 %2 没有意义，请去掉")
                                 .arg(QLatin1String(pair.option), QLatin1String(pair.with))
                                 .toStdString());
    }
}

void checkTogether(const Options& options) {
    checkUses(options);
    if (std::set(options.ports.begin(), options.ports.end()).size() != options.ports.size())
        throw UsageError(programWords("同一个串口给了两次").toStdString());
    if (!options.recordFile.empty() &&
        (options.command.verb == Verb::batch || options.command.verb == Verb::ports))
        throw UsageError(programWords("--record 不能用于 batch 和 ports").toStdString());
    if (options.command.verb == Verb::batch && !options.ports.empty())
        throw UsageError(programWords("batch 的串口写在任务文件里，请去掉 -p").toStdString());
}

/// On the job's thread: the command, its result printed.
ExitCode runOnPort(PortJob& job, const Options& options, bool several, Output& output) {
    Result result;
    if (options.command.verb == Verb::find)
        result = runSearch(job, options);
    else if (options.command.verb == Verb::watch)
        result = runWatch(job, options, output);
    else
        result = job.run(options, output, several);
    output.result(headOf(options, job.port()), several ? QString::fromStdString(job.port()) : QString(),
                  result);
    return result.code;
}

ExitCode runOnPorts(const Options& options, const std::vector<std::string>& ports, Output& output) {
    std::vector<ExitCode> codes(ports.size(), ExitCode::done);
    std::vector<std::unique_ptr<PortJob>> jobs(ports.size());
    for (std::size_t i = 0; i < ports.size(); ++i) {
        jobs[i] = std::make_unique<PortJob>(
            ports[i], [&, i](PortJob& job) { codes[i] = runOnPort(job, options, ports.size() > 1, output); });
    }
    superviseJobs(jobs, output);
    jobs.clear(); // the threads have ended
    return *std::max_element(codes.begin(), codes.end());
}

} // namespace

QJsonObject headOf(const Options& options, const std::string& port) {
    QJsonObject head{{"port", QString::fromStdString(port)},
                     {"command", options.command.words.join(QLatin1Char(' '))}};
    if (options.command.verb != Verb::find) {
        head.insert(QLatin1String("rate"), static_cast<qint64>(options.usedRate()));
        head.insert(QLatin1String("address"), options.usedAddress());
        head.insert(QLatin1String("type"), static_cast<int>(options.type));
    }
    return head;
}

void superviseJobs(const std::vector<std::unique_ptr<PortJob>>& jobs, Output& output) {
    const auto isDone = [](const auto& job) { return job->isDone(); };
    while (!std::all_of(jobs.begin(), jobs.end(), isDone)) {
        if (interrupted() || output.failed()) {
            for (const auto& job : jobs)
                job->stop();
        }
        QStringList texts;
        for (const auto& job : jobs) {
            job->watchDownload();
            if (const QString text = job->progress(); !text.isEmpty())
                texts.append(text);
        }
        output.progress(texts.join(QLatin1String(" | ")));
        std::this_thread::sleep_for(lookInterval);
    }
    output.progress({});
}

ExitCode runProgram(const Options& options) {
    Output output(options.json, !options.quiet && errorIsTerminal());
    ExitCode code = ExitCode::done;
    try {
        checkTogether(options);
        if (options.command.verb == Verb::ports) {
            code = listPorts(output);
        } else if (options.command.verb == Verb::batch) {
            code = runBatch(options, output);
        } else {
            const std::vector<std::string> ports = chosenPorts(options);
            if (!options.recordFile.empty() && ports.size() > 1)
                throw UsageError(programWords("--record 只能用于一个串口").toStdString());
            confirm(options, ports.size());
            code = runOnPorts(options, ports, output);
        }
    } catch (const UsageError& error) {
        output.error(QString::fromUtf8(error.what()));
        return interrupted() ? ExitCode::interrupted : ExitCode::usage;
    }
    if (interrupted())
        return ExitCode::interrupted;
    if (output.failed()) {
        output.error(programWords("输出没有写完，请检查接收输出的程序或磁盘空间"));
        return ExitCode::file;
    }
    return code;
}

} // namespace cli
