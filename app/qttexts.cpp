#include "app/qttexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>

#include <cstring>

QtTexts::QtTexts(QObject* parent) : QTranslator(parent) {
    const QLocale chinese(QLocale::Chinese, QLocale::SimplifiedHanScript, QLocale::China);
    const QString folders[] = {QCoreApplication::applicationDirPath() + QStringLiteral("/translations"),
                               QLibraryInfo::path(QLibraryInfo::TranslationsPath)};
    for (const QString& folder : folders) {
        if (load(chinese, QStringLiteral("qtbase"), QStringLiteral("_"), folder))
            return;
    }
}

QString QtTexts::translate(const char* context, const char* sourceText, const char* disambiguation,
                           int n) const {
    // The JSON parser's messages stay English: support looks them up.
    if (std::strcmp(context, "QJsonParseError") == 0)
        return {};
    return QTranslator::translate(context, sourceText, disambiguation, n);
}
