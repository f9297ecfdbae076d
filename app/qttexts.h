// What Qt itself writes into windows (the buttons of boxes, the file dialog, the menu of a text field), in
// Chinese.
#pragma once

#include <QTranslator>

/// Qt's own translation, where the machine has one: in the folder of Qt's translations, or in the folder
/// "translations" beside the program. Without one these texts stay English.
class QtTexts final : public QTranslator {
    Q_OBJECT

public:
    explicit QtTexts(QObject* parent = nullptr);

    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override;
};
