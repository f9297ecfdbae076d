// The application object: an exception that leaves a handler is told to the user and does not end the
// program. It also gives every window the program's icon and Qt's own texts in Chinese.
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

signals:
    /// An exception left a handler; the text is one line.
    void failureReported(const QString& text);

private:
    void report(const std::exception_ptr& failure);
    void showNextFailure();

    QtTexts m_qtTexts;
    // One box at a time, shown without an event loop of its own; the others wait.
    QQueue<QString> m_failures;
    QPointer<QMessageBox> m_box;
};
