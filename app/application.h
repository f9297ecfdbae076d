// The application object: reports exceptions that leave a handler and does not end. Sets the icon of windows
// and Qt's own texts in Chinese.
#pragma once

#include "app/qttexts.h"
#include "service/failuretext.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QQueue>

class Application final : public QApplication {
    Q_OBJECT

public:
    Application(int& argumentCount, char** arguments);
    ~Application() override;

    bool notify(QObject* receiver, QEvent* event) override;
    bool event(QEvent* event) override;

signals:
    /// An exception left a handler; the text is one line.
    void failureReported(const QString& text);

private:
    void report(const std::exception_ptr& failure);
    void showNextFailure();

    QtTexts m_qtTexts;
    // One box at a time, without an event loop of its own; the others wait.
    QQueue<FailureText> m_failures;
    FailureText m_shown; ///< in the box
    QPointer<QMessageBox> m_box;
};
