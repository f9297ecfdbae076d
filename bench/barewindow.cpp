// The least that a program with one window can be, for comparison. An argument is shown as a line of text.
#include <QApplication>
#include <QLabel>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QLabel window(QApplication::arguments().value(1));
    window.resize(1120, 660); // as large as the tool's
    window.show();
    return QApplication::exec();
}
