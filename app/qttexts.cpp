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
    // Whoever is asked about an answer that is no JSON looks the parser's message up as it is.
    if (std::strcmp(context, "QJsonParseError") == 0)
        return {};
    return QTranslator::translate(context, sourceText, disambiguation, n);
}
