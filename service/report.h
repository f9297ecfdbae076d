// A check-up as a document to hand over.
#pragma once

#include "service/checkup.h"

#include <QJsonObject>

namespace service {

/// "good", "odd", "failed".
[[nodiscard]] QString verdictKey(Verdict verdict);
/// "正常", "异常", "失败".
[[nodiscard]] QString verdictWords(Verdict verdict);

[[nodiscard]] QJsonObject checkupJson(const Checkup& checkup);
/// One head line and one line a reading; UTF-8 with a byte order mark, for spreadsheets.
[[nodiscard]] QByteArray checkupCsv(const Checkup& checkup);
/// One page in the language of the program, with the picture if there is one.
[[nodiscard]] QString checkupHtml(const Checkup& checkup);
/// The same as PDF. Needs a QGuiApplication.
[[nodiscard]] QByteArray checkupPdf(const Checkup& checkup);

/// By the file's extension: .json, .csv, .html or .pdf. The file appears under its name when it is complete.
/// Empty, or what failed in words.
[[nodiscard]] QString writeReport(const Checkup& checkup, const QString& path);
/// True if the extension is one of them.
[[nodiscard]] bool isReportName(const QString& path);

} // namespace service
