// Qt's own texts in Chinese: buttons of boxes, the file dialog, menus of text fields.
#pragma once

#include <QTranslator>

/// Loads Qt's translation from Qt's folder or from "translations" beside the program. Without one the texts
/// stay English.
class QtTexts final : public QTranslator {
    Q_OBJECT

public:
    explicit QtTexts(QObject* parent = nullptr);

    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override;
};
