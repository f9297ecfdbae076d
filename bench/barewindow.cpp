// The smallest program with one window, for comparison. Shows its argument as a line of text.
#include <QApplication>
#include <QLabel>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QLabel window(QApplication::arguments().value(1));
    window.resize(1120, 660); // as large as the tool's
    window.show();
    return QApplication::exec();
}
