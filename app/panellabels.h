// Labels in the panels of the main window. They stay of Qt's class for style sheets and screen readers.
#pragma once

#include <QCoreApplication>
#include <QLabel>

/// A value that the camera gave. Without a text it shows a hint, the property "hint" of the form.
class ValueLabel final : public QLabel {
public:
    using QLabel::QLabel;

    /// Greys a value of a camera that is no longer in use.
    void setOfPreviousCamera(bool previous);
    [[nodiscard]] bool isOfPreviousCamera() const { return m_previous; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_previous = false;
};

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
