// The keyboard focus of a window that disables some of its controls for a while.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

/// Returns the focus to a control that lost it by being disabled, unless the user moved the focus meanwhile.
/// The window itself has it in between. Qt would move it to the next control, which one key press too many
/// would press.
///
/// A window has one keeper at most, which is its child. User-interface thread only.
class FocusKeeper final : public QObject {
    Q_OBJECT

public:
    /// The window's keeper; the first call creates it.
    static FocusKeeper& of(QWidget* window);

    /// Runs a change that disables or enables the window or its controls. May be nested.
    template <typename Change>
    void keep(Change change) {
        QWidget* const before = m_window->focusWidget();
        change();
        settle(before);
    }
    /// Moves the focus from the control that has it to the window. Tab brings it back.
    void rest();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit FocusKeeper(QWidget* window);

    void settle(QWidget* before);
    /// True when no control has the focus.
    [[nodiscard]] bool isResting() const;

    QWidget* m_window;
    QPointer<QWidget> m_control; ///< has lost the focus to the window
    bool m_returns = false;      ///< the control gets the focus back when it is enabled
};
