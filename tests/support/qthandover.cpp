// Tells the thread sanitizer where Qt hands work from one thread to another.
//
// The distribution's Qt is not built for the sanitizer, so the locks inside Qt that order a hand-over are
// invisible to it, and every object handed to the pool or posted back looks like a race. The functions below
// take the place of Qt's own of the same name for calls from the program, note the hand-over and call
// Qt's. Accesses that no hand-over orders stay visible as the races they are. Linked into test programs of
// a thread-sanitizer build only.
#include <QCoreApplication>
#include <QEvent>
#include <QRunnable>
#include <QThread>
#include <QThreadPool>
#include <QTimer>

#include <dlfcn.h>

extern "C" {
void __tsan_acquire(void* address);
void __tsan_release(void* address);
}

namespace {

char handOverMark; // its address stands for "everything that Qt has ever handed over"

void handOver() {
    __tsan_release(&handOverMark);
}

void takeOver() {
    __tsan_acquire(&handOverMark);
}

/// Qt's own function behind the one of this file.
template <typename Function>
Function* original(const char* mangledName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mangledName));
}

/// Runs what was given to the pool, as the pool would.
class TakenOver final : public QRunnable {
public:
    explicit TakenOver(QRunnable* work) : m_work(work) {}
    void run() override {
        takeOver();
        const bool owned = m_work->autoDelete();
        m_work->run();
        if (owned)
            delete m_work;
        handOver();
    }

private:
    QRunnable* m_work;
};

/// A function posted to another thread: that of the two threads which drops the last reference deletes it.
class TakenOverSlot final : public QtPrivate::QSlotObjectBase {
public:
    explicit TakenOverSlot(QSlotObjectBase* slot) : QSlotObjectBase(&act), m_slot(slot) {}

private:
    static void act(int which, QSlotObjectBase* self, QObject* receiver, void** arguments, bool* /*equal*/) {
        auto* const taken = static_cast<TakenOverSlot*>(self);
        if (which == Call) {
            taken->m_slot->call(receiver, arguments);
            handOver();
        } else if (which == Destroy) {
            takeOver();
            taken->m_slot->destroyIfLastRef();
            delete taken;
        }
    }

    QSlotObjectBase* m_slot;
};

/// Sees every event of the user-interface thread before its receiver.
class TakeOverFilter final : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* /*receiver*/, QEvent* /*event*/) override {
        takeOver();
        return false;
    }
};

void watchEvents() {
    QCoreApplication::instance()->installEventFilter(new TakeOverFilter(QCoreApplication::instance()));
}
Q_COREAPP_STARTUP_FUNCTION(watchEvents)

} // namespace

void QThreadPool::start(QRunnable* runnable, int priority) {
    static const auto qt =
        original<void(QThreadPool*, QRunnable*, int)>("_ZN11QThreadPool5startEP9QRunnablei");
    auto* taken = new TakenOver(runnable);
    handOver();
    qt(this, taken, priority);
}

bool QThreadPool::waitForDone(int milliseconds) {
    static const auto qt = original<bool(QThreadPool*, int)>("_ZN11QThreadPool11waitForDoneEi");
    const bool done = qt(this, milliseconds);
    takeOver();
    return done;
}

void QThread::start(Priority priority) {
    static const auto qt = original<void(QThread*, Priority)>("_ZN7QThread5startENS_8PriorityE");
    connect(this, &QThread::finished, this, &handOver, Qt::DirectConnection);
    qt(this, priority);
}

bool QThread::wait(QDeadlineTimer deadline) {
    static const auto qt = original<bool(QThread*, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool ended = qt(this, deadline);
    takeOver();
    return ended;
}

void QTimer::singleShotImpl(int milliseconds, Qt::TimerType type, const QObject* receiver,
                            QtPrivate::QSlotObjectBase* slot) {
    static const auto qt = original<void(int, Qt::TimerType, const QObject*, QtPrivate::QSlotObjectBase*)>(
        "_ZN6QTimer14singleShotImplEiN2Qt9TimerTypeEPK7QObjectPN9QtPrivate15QSlotObjectBaseE");
    handOver();
    qt(milliseconds, type, receiver, slot);
}

void QMetaObject::activate(QObject* sender, const QMetaObject* meta, int signal, void** arguments) {
    static const auto qt = original<void(QObject*, const QMetaObject*, int, void**)>(
        "_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    handOver();
    qt(sender, meta, signal, arguments);
}

bool QMetaObject::invokeMethodImpl(QObject* object, QtPrivate::QSlotObjectBase* slot, Qt::ConnectionType type,
                                   void* result) {
    static const auto qt = original<bool(QObject*, QtPrivate::QSlotObjectBase*, Qt::ConnectionType, void*)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    auto* const taken = new TakenOverSlot(slot);
    handOver();
    return qt(object, taken, type, result);
}

void QCoreApplication::postEvent(QObject* receiver, QEvent* event, int priority) {
    static const auto qt =
        original<void(QObject*, QEvent*, int)>("_ZN16QCoreApplication9postEventEP7QObjectP6QEventi");
    handOver();
    qt(receiver, event, priority);
}
