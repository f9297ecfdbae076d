// The English of shelf-camera.
#pragma once

#include <QTranslator>

#include <span>

namespace cli {

struct EnglishText {
    const char* chinese;
    const char* english;
};

[[nodiscard]] std::span<const EnglishText> englishTexts();

/// Gives the English of every Chinese text of the program and its services, whatever the context.
class EnglishTexts final : public QTranslator {
public:
    [[nodiscard]] QString translate(const char* context, const char* source, const char* disambiguation,
                                    int count) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }
};

/// By LANGUAGE, LC_ALL, LC_MESSAGES and LANG on Unix, by the user's language on Windows.
[[nodiscard]] bool speaksChinese();

} // namespace cli
