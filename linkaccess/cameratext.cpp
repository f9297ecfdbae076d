#include "linkaccess/cameratext.h"

#include "link/protocol/text.h"

#include <QLabel>

namespace {
constexpr qsizetype longestLine = 120; // characters; a serial number has 16, a version about 20
}

QString cameraText(std::string_view bytes) {
    const std::string_view text = protocol::untilZero(bytes);
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString shortened(const QString& line, qsizetype length) {
    return line.size() <= length ? line : line.left(length - 1) + QChar(u'…');
}

void showCameraText(QLabel* label, const QString& text) {
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines)
        line = shortened(line, longestLine);
    const QString shown = lines.join(QLatin1Char('\n'));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setText(shown);
    // A tool tip would take what looks like markup for markup.
    label->setToolTip(
        shown == text ? QString()
                      : QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(text.toHtmlEscaped()));
}
