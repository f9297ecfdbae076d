// Labels of chosen files in the main window. They stay of Qt's class for style sheets and screen readers.
#pragma once

#include <QCoreApplication>
#include <QLabel>

/// The path of a file below a caption, the property "caption" of the form. A long path is shown without its
/// middle; text() is the whole path, which the context menu copies.
class PathLabel final : public QLabel {
    Q_DECLARE_TR_FUNCTIONS(PathLabel)

public:
    explicit PathLabel(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    /// As it is painted.
    [[nodiscard]] QString shownPath() const;

protected:
    void paintEvent(QPaintEvent* event) override;
};
