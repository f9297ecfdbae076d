#include "aids/manual.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QUrl>

namespace {

constexpr int foldersAbove = 4; // from a program in a build folder to the sources
const QString pageName = QStringLiteral("user-guide.zh-CN.html");
const QString sourceName = QStringLiteral("user-guide.zh-CN.md");

QString manualText(const char* text) {
    return QCoreApplication::translate("Manual", text);
}

void tell(const QString& text, QWidget* parent) {
    auto* const box =
        new QMessageBox(QMessageBox::Warning, manualText("使用手册"), text, QMessageBox::Ok, parent);
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace

QStringList manualPlaces(const QString& programFolder) {
    const QDir program(programFolder);
    const QString documents = QStringLiteral("../share/doc/shelf-camera-tool/");
    QStringList places{program.filePath(pageName), program.filePath(documents + pageName),
                       program.filePath(documents + sourceName)};
    QString above;
    for (int folder = 0; folder < foldersAbove; ++folder) {
        above += QStringLiteral("../");
        places.append(program.filePath(above + QStringLiteral("docs/") + sourceName));
    }
    for (QString& place : places)
        place = QDir::cleanPath(place);
    return places;
}

QString firstFile(const QStringList& places) {
    for (const QString& place : places) {
        if (QFileInfo(place).isFile())
            return place;
    }
    return {};
}

void openManual(const QString& file, QWidget* parent) {
    if (file.isEmpty())
        tell(manualText("没有找到使用手册，请重新安装程序"), parent);
    else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file)))
        tell(manualText("没有打开使用手册的程序，请手动打开：%1").arg(QDir::toNativeSeparators(file)),
             parent);
}
