#include "service/report.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPageSize>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTextDocument>
#include <QUrl>

#include <array>
#include <functional>

namespace service {

namespace {

constexpr QSize pictureSpace(380, 285); // fits below the table on one page
constexpr int pdfResolution = 300;

QString pageText(const char* text) {
    return QCoreApplication::translate("Report", text);
}

QString dateText(const Checkup& checkup) {
    return checkup.at.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString typeName(const Checkup& checkup) {
    const std::string_view name = protocol::infoOf(checkup.type).name;
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

QJsonObject lineJson(const LineCounts& line) {
    return {{"requests", line.requests},
            {"answers", line.answers},
            {"unanswered", line.unanswered},
            {"late", line.late},
            {"broken", line.broken},
            {"strayBytes", static_cast<qint64>(line.strayBytes)},
            {"slowestMs", static_cast<qint64>(line.slowest.count())}};
}

QString csvCell(QString text) {
    return '"' + text.replace('"', QLatin1String("\"\"")) + '"';
}

QString csvLine(const QStringList& cells) {
    QStringList quoted;
    for (const QString& cell : cells)
        quoted.append(csvCell(cell));
    return quoted.join(',') + QLatin1String("\r\n");
}

QString htmlRow(const QString& title, const QString& value, const QString& verdict) {
    return QStringLiteral("<tr><td>%1</td><td>%2</td><td>%3</td></tr>\n")
        .arg(title.toHtmlEscaped(), value.toHtmlEscaped(), verdict.toHtmlEscaped());
}

QString csvLines(const Checkup& checkup) {
    QString text;
    const QStringList head{dateText(checkup), checkup.port, QString::number(checkup.baudRate),
                           QString::number(checkup.address)};
    for (const CheckLine& line : checkup.lines)
        text += csvLine(head + QStringList{line.reading->translatedTitle(), line.value.text,
                                           verdictWords(line.value.verdict), line.value.reason});
    const ReadValue line = lineValue(checkup.line);
    text += csvLine(
        head + QStringList{pageText("通信"), line.text, verdictWords(line.verdict), checkup.pictureFailure});
    return text;
}

/// The readings of which the report shows one line each; the picture list is shown by its count.
QString tableRows(const Checkup& checkup) {
    QString rows;
    const auto add = [&rows](const QString& title, const ReadValue& value) {
        rows += htmlRow(title, value.text, verdictWithReason(value));
    };
    for (const CheckLine& line : checkup.lines)
        add(line.reading->translatedTitle(), line.value);
    add(pageText("通信"), lineValue(checkup.line));
    if (!checkup.pictureFailure.isEmpty())
        rows += htmlRow(pageText("拍照"), {},
                        verdictWords(Verdict::odd) + pageText("：") + checkup.pictureFailure);
    return rows;
}

/// Name of the picture of the check-up with this number.
using PictureSource = std::function<QString(std::size_t number)>;

QString pictureTag(const Checkup& checkup, const QString& source) {
    if (checkup.picture.isEmpty())
        return {};
    const QSize size = QImage::fromData(checkup.picture).size().scaled(pictureSpace, Qt::KeepAspectRatio);
    return QStringLiteral("<p><img width=\"%1\" height=\"%2\" src=\"%3\"></p>\n")
        .arg(size.width())
        .arg(size.height())
        .arg(source);
}

QString section(const Checkup& checkup, const QString& pictureSource, bool isFirst) {
    return QStringLiteral("<h2%1>%2</h2>\n<p>%3</p>\n<h3>%4</h3>\n"
                          "<table>\n<tr><th>%5</th><th>%6</th><th>%7</th></tr>\n%8</table>\n%9")
        .arg(isFirst ? QString() : QStringLiteral(" style=\"page-break-before:always\""),
             pageText("摄像头检查报告").toHtmlEscaped(),
             pageText("时间 %1，类型 %2，串口 %3，波特率 %4，从机地址 %5")
                 .arg(dateText(checkup), typeName(checkup), checkup.port)
                 .arg(checkup.baudRate)
                 .arg(checkup.address)
                 .toHtmlEscaped(),
             verdictLine(checkup), pageText("项目"), pageText("读数"), pageText("判断"), tableRows(checkup),
             pictureTag(checkup, pictureSource));
}

QString page(Checkups checkups, const PictureSource& pictureSource) {
    QString sections;
    for (std::size_t number = 0; number < checkups.size(); ++number)
        sections += section(checkups[number], pictureSource(number), number == 0);
    return QStringLiteral(
               "<!DOCTYPE html>\n<html lang=\"zh-CN\"><head><meta charset=\"utf-8\"><title>%1</title>\n"
               "<style>body{font-family:\"Noto Sans CJK SC\",\"Microsoft YaHei\",sans-serif;font-size:10pt}"
               "table{border-collapse:collapse}td,th{border:1px solid #888;padding:3px 8px;"
               "text-align:left}</style></head><body>\n%2</body></html>\n")
        .arg(pageText("摄像头检查报告").toHtmlEscaped(), sections);
}

QString pictureName(std::size_t number) {
    return QStringLiteral("picture%1.jpg").arg(number);
}

QByteArray jsonOf(Checkups checkups) {
    if (checkups.size() == 1)
        return QJsonDocument(checkupJson(checkups.front())).toJson();
    QJsonArray all;
    for (const Checkup& checkup : checkups)
        all.append(checkupJson(checkup));
    return QJsonDocument(all).toJson();
}

struct Format {
    const char* extension;
    QByteArray (*content)(Checkups checkups);
};

constexpr std::array formats{
    Format{"json", &jsonOf},
    Format{"csv", &checkupCsv},
    Format{"html", [](Checkups checkups) { return checkupHtml(checkups).toUtf8(); }},
    Format{"pdf", &checkupPdf},
};

const Format* formatOf(const QString& path) {
    const QString extension = QFileInfo(path).suffix().toLower();
    for (const Format& format : formats) {
        if (extension == QLatin1String(format.extension))
            return &format;
    }
    return nullptr;
}

} // namespace

QString verdictKey(Verdict verdict) {
    constexpr std::array keys{"good", "odd", "failed"};
    return QLatin1String(keys.at(static_cast<std::size_t>(verdict)));
}

QString verdictWords(Verdict verdict) {
    const std::array names{pageText("正常"), pageText("异常"), pageText("失败")};
    return names.at(static_cast<std::size_t>(verdict));
}

QString verdictWithReason(const ReadValue& value) {
    const QString verdict = verdictWords(value.verdict);
    return value.reason.isEmpty() ? verdict : verdict + pageText("：") + value.reason;
}

QString verdictLine(const Checkup& checkup) {
    return pageText("结论：%1").arg(verdictWords(checkup.verdict()));
}

ReadValue lineValue(const LineCounts& line) {
    const QString text = pageText("请求 %1，应答 %2，无应答 %3，迟到 %4，损坏 %5，杂散字节 %6，最慢 %7 毫秒")
                             .arg(line.requests)
                             .arg(line.answers)
                             .arg(line.unanswered)
                             .arg(line.late)
                             .arg(line.broken)
                             .arg(line.strayBytes)
                             .arg(line.slowest.count());
    return {line.isOdd() ? Verdict::odd : Verdict::good, {}, text, {}, CommandEnd::done};
}

QJsonObject checkupJson(const Checkup& checkup) {
    QJsonObject readings;
    for (const CheckLine& line : checkup.lines) {
        QJsonObject object{{"verdict", verdictKey(line.value.verdict)}, {"value", line.value.value}};
        if (!line.value.reason.isEmpty())
            object.insert(QLatin1String("reason"), line.value.reason);
        readings.insert(QLatin1String(line.reading->key), object);
    }
    QJsonObject object{{"time", checkup.at.toString(Qt::ISODate)},
                       {"port", checkup.port},
                       {"rate", static_cast<qint64>(checkup.baudRate)},
                       {"address", checkup.address},
                       {"type", static_cast<int>(checkup.type)},
                       {"verdict", verdictKey(checkup.verdict())},
                       {"readings", readings},
                       {"line", lineJson(checkup.line)}};
    if (!checkup.pictureFailure.isEmpty())
        object.insert(QLatin1String("pictureFailure"), checkup.pictureFailure);
    return object;
}

QByteArray checkupCsv(Checkups checkups) {
    QString text = csvLine({pageText("时间"), pageText("串口"), pageText("波特率"), pageText("从机地址"),
                            pageText("项目"), pageText("读数"), pageText("判断"), pageText("原因")});
    for (const Checkup& checkup : checkups)
        text += csvLines(checkup);
    return QByteArray("\xEF\xBB\xBF") + text.toUtf8();
}

QString checkupHtml(Checkups checkups) {
    return page(checkups, [&](std::size_t number) {
        return QStringLiteral("data:image/jpeg;base64,") +
               QString::fromLatin1(checkups[number].picture.toBase64());
    });
}

QByteArray checkupPdf(Checkups checkups) {
    QByteArray pdf;
    QBuffer buffer(&pdf);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setResolution(pdfResolution);
    writer.setTitle(pageText("摄像头检查报告"));
    printCheckups(checkups, writer);
    buffer.close();
    return pdf;
}

void printCheckups(Checkups checkups, QPagedPaintDevice& device) {
    QTextDocument document;
    document.setDocumentMargin(0);
    for (std::size_t number = 0; number < checkups.size(); ++number) {
        if (const QByteArray& picture = checkups[number].picture; !picture.isEmpty())
            document.addResource(QTextDocument::ImageResource, QUrl(pictureName(number)),
                                 QImage::fromData(picture));
    }
    document.setHtml(page(checkups, &pictureName));
    document.print(&device);
}

QString checkupText(const Checkup& checkup) {
    QString text;
    const auto add = [&text](const QString& title, const ReadValue& value) {
        text += QStringLiteral("%1\t%2\t%3\n").arg(title, value.text, verdictWithReason(value));
    };
    for (const CheckLine& line : checkup.lines)
        add(line.reading->translatedTitle(), line.value);
    add(pageText("通信"), lineValue(checkup.line));
    return text + verdictLine(checkup) + '\n';
}

QString writeReport(Checkups checkups, const QString& path) {
    const Format* const format = formatOf(path);
    if (format == nullptr)
        return pageText("报告文件的扩展名必须是 .html、.pdf、.json 或 .csv");
    QSaveFile file(path);
    const QByteArray content = format->content(checkups);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
                         file.flush() && file.commit(); // commit does not see that flushing fails
    if (!written)
        return pageText("报告没有写入 %1，请换一个文件夹：%2").arg(path, file.errorString());
    return {};
}

bool isReportName(const QString& path) {
    return formatOf(path) != nullptr;
}

} // namespace service
