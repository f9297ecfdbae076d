// Tables of translated texts.
#pragma once

#include <QTranslator>

#include <span>

namespace language {

struct Text {
    const char* source;
    const char* translation;
};

/// Null if the table has no such text.
[[nodiscard]] const char* translationIn(std::span<const Text> table, const char* source);

/// Gives the translation of every text of the table, whatever the context. The table outlives it.
class Texts final : public QTranslator {
public:
    explicit Texts(std::span<const Text> table) : m_table(table) {}
    [[nodiscard]] QString translate(const char* context, const char* source, const char* disambiguation,
                                    int count) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }

private:
    const std::span<const Text> m_table;
};

/// Chinese of the texts that sentence() takes.
[[nodiscard]] std::span<const Text> chineseTexts();

} // namespace language
