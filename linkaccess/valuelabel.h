// The label of a value of the camera. It stays of Qt's class for style sheets and screen readers.
#pragma once

#include <QLabel>

/// Without a text it shows a hint, the property "hint" of the form. User-interface thread.
class ValueLabel final : public QLabel {
public:
    using QLabel::QLabel;

    /// Greys a value of a camera that is no longer in use.
    void setOfPreviousCamera(bool previous);
    [[nodiscard]] bool isOfPreviousCamera() const { return m_previous; }

protected:
    /// Shows a text that has no room as tool tip.
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_previous = false;
};
