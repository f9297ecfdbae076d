// A check-up as a document to hand over.
#pragma once

#include "service/checkup.h"

#include <QJsonObject>

#include <span>

class QPagedPaintDevice;

namespace service {

/// "good", "odd", "failed".
[[nodiscard]] QString verdictKey(Verdict verdict);
/// "正常", "异常", "失败".
[[nodiscard]] QString verdictWords(Verdict verdict);

/// "失败：没有应答".
[[nodiscard]] QString verdictWithReason(const ReadValue& value);
/// "结论：正常".
[[nodiscard]] QString verdictLine(const Checkup& checkup);
/// The counts of the line in words, judged.
[[nodiscard]] ReadValue lineValue(const LineCounts& line);

[[nodiscard]] QJsonObject checkupJson(const Checkup& checkup);

/// One check-up, or several in one document.
class Checkups : public std::span<const Checkup> {
public:
    Checkups(const Checkup& checkup) : span(&checkup, 1) {}
    Checkups(const std::vector<Checkup>& checkups) : span(checkups) {}
};

/// One head line and one line a reading; UTF-8 with a byte order mark, for spreadsheets.
[[nodiscard]] QByteArray checkupCsv(Checkups checkups);
/// One page a check-up in the language of the program, with the picture if there is one.
[[nodiscard]] QString checkupHtml(Checkups checkups);
/// The same as PDF. Needs a QGuiApplication.
[[nodiscard]] QByteArray checkupPdf(Checkups checkups);
/// The same onto a printer.
void printCheckups(Checkups checkups, QPagedPaintDevice& device);
/// One line a reading, separated by tabs, and the verdict.
[[nodiscard]] QString checkupText(const Checkup& checkup);

/// By the file's extension: .json, .csv, .html or .pdf. The file appears under its name when it is complete.
/// Empty, or what failed in words.
[[nodiscard]] QString writeReport(Checkups checkups, const QString& path);
/// True if the extension is one of them.
[[nodiscard]] bool isReportName(const QString& path);

} // namespace service
