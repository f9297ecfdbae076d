#include "cli/conform.h"

#include "conform/profilewriter.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QSaveFile>

#include <algorithm>

namespace cli {

namespace {

constexpr std::size_t longestProof = 48; // bytes

QString conformText(const char* text) {
    return QCoreApplication::translate("ConformCommand", text);
}

QString hexOf(protocol::ByteView bytes) {
    const auto shown = bytes.range(0, longestProof);
    const QByteArray hex =
        QByteArray(reinterpret_cast<const char*>(shown.begin()), static_cast<qsizetype>(shown.size()))
            .toHex(' ')
            .toUpper();
    return QString::fromLatin1(hex) + (shown.size() < bytes.size() ? QStringLiteral(" ...") : QString());
}

bool hasBytes(const conform::Exchange* proof) {
    return proof != nullptr && (!proof->request.empty() || proof->isAnswered());
}

QString proofText(const conform::Exchange& proof) {
    return QStringLiteral("    > %1\n    < %2").arg(hexOf(proof.request), hexOf(proof.answer()));
}

const char* outcomeKey(conform::Outcome outcome) {
    switch (outcome) {
    case conform::Outcome::good:
        return "good";
    case conform::Outcome::different:
        return "different";
    case conform::Outcome::notSeen:
        break;
    }
    return "notSeen";
}

QJsonObject jsonOf(const conform::Result& result) {
    const conform::Finding& finding = result.finding;
    QJsonObject object{{"name", QLatin1String(result.check->name)},
                       {"sentence", result.check->translatedSentence()},
                       {"result", QLatin1String(outcomeKey(finding.outcome))},
                       {"detail", QString::fromStdString(finding.detail)}};
    if (hasBytes(finding.proof)) {
        object.insert(QLatin1String("request"), hexOf(finding.proof->request));
        object.insert(QLatin1String("answer"), hexOf(finding.proof->answer()));
    }
    return object;
}

/// A line for each check, by kind; the bytes that prove it below.
QString tableText(const std::vector<conform::Result>& results) {
    QStringList lines;
    std::optional<conform::Kind> kind;
    for (const conform::Result& result : results) {
        if (kind != result.check->kind)
            lines.append(conform::kindWords(result.check->kind));
        kind = result.check->kind;
        const conform::Finding& finding = result.finding;
        const QString detail = finding.detail.empty()
                                   ? QString()
                                   : QStringLiteral(" (%1)").arg(QString::fromStdString(finding.detail));
        lines.append(
            QStringLiteral("  %1  %2%3")
                .arg(conform::outcomeWords(finding.outcome), result.check->translatedSentence(), detail));
        if (hasBytes(finding.proof))
            lines.append(proofText(*finding.proof));
    }
    return lines.join(QLatin1Char('\n'));
}

std::size_t countOf(const std::vector<conform::Result>& results, conform::Outcome outcome) {
    return static_cast<std::size_t>(
        std::count_if(results.begin(), results.end(), [outcome](const conform::Result& result) {
            return result.finding.outcome == outcome;
        }));
}

/// Empty, or what failed.
QString writeProfile(const trace::Profile& profile, const QString& path) {
    QSaveFile file(path);
    const QByteArray text = QByteArray::fromStdString(trace::profileText(profile));
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush() && file.commit())
        return {};
    return conformText("配置档没有写入 %1：%2").arg(path, file.errorString());
}

conform::Plan planOf(const CommandContext& context) {
    const Command& command = context.options.command;
    return {context.options.type, context.options.usedAddress(), command.repeats, command.takesPicture,
            command.uploadFile};
}

Result resultOf(const std::vector<conform::Result>& results) {
    using conform::Outcome;
    Result result;
    QJsonArray list;
    for (const conform::Result& each : results)
        list.append(jsonOf(each));
    result.fields = {{"checks", list}};
    result.text = tableText(results) + QLatin1Char('\n') +
                  conformText("符合 %1，不同 %2，没有看到 %3")
                      .arg(countOf(results, Outcome::good))
                      .arg(countOf(results, Outcome::different))
                      .arg(countOf(results, Outcome::notSeen));
    return result;
}

} // namespace

Result runConform(const CommandContext& context) {
    const conform::Evidence evidence =
        conform::visit(context.camera, planOf(context),
                       [&context](const std::string& name) { context.tell(QString::fromStdString(name)); });
    const QString what = conformText("检验");
    if (context.camera.stopRequested())
        return failureOf(what, {CommandEnd::stopped});
    if (context.camera.portFailed())
        return failureOf(what, {CommandEnd::portFailed});
    if (!evidence.isAnswered())
        return failureOf(what, {CommandEnd::noAnswer});
    const std::vector<conform::Result> results = conform::examine(evidence);
    Result result = resultOf(results);
    const QString path = context.fileFor(QString::fromStdString(context.options.command.file));
    if (path.isEmpty())
        return result;
    if (const QString error = writeProfile(conform::profileOf(evidence, results), path); !error.isEmpty())
        return failure(ExitCode::file, error);
    result.fields.insert(QLatin1String("profile"), path);
    return result;
}

} // namespace cli
