// Linked with a window program's own main: tells of its first painted window.
#include "bench/firstpaint.h"

#include <QCoreApplication>
#include <QEvent>

#include <unistd.h>

namespace {

class FirstPaint final : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType()) {
            qApp->removeEventFilter(this);
            // Not before the painting of the whole window has returned to the event loop.
            QMetaObject::invokeMethod(this, &FirstPaint::tell, Qt::QueuedConnection);
        }
        return false;
    }

private:
    static void tell() {
        const char painted = 'p';
        if (::write(bench::paintedDescriptor, &painted, 1) == 1)
            ::close(bench::paintedDescriptor);
    }
};

void watch() {
    qApp->installEventFilter(new FirstPaint); // as long as the program lives
}
Q_COREAPP_STARTUP_FUNCTION(watch)

} // namespace
