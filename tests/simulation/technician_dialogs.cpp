// How the technician answers boxes and file dialogs.
#include "tests/simulation/choice.h"
#include "tests/simulation/technician.h"
#include "tests/support/guitest.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QRegularExpression>

namespace simulation {

bool Technician::answerDialog(const Step& step) {
    QWidget* const modal = QApplication::activeModalWidget();
    if (auto* const files = qobject_cast<QFileDialog*>(modal)) {
        chooseFile(*files, step);
        return true;
    }
    if (auto* const input = qobject_cast<QInputDialog*>(modal)) {
        note(QStringLiteral("enters a number"));
        input->setIntValue(static_cast<int>(step.choice % 300));
        input->done(static_cast<int>(step.detail % 2));
        return true;
    }
    if (auto* const box = qobject_cast<QMessageBox*>(modal)) {
        QAbstractButton* const button = chosen(box->buttons(), step.choice);
        note(QStringLiteral("answers with ") + (button == nullptr ? QString() : button->text()));
        if (button != nullptr)
            button->click();
        else
            box->close();
        return true;
    }
    return false;
}

void Technician::chooseFile(QFileDialog& dialog, const Step& step) {
    if (step.detail % 5 == 4) {
        note(QStringLiteral("chooses no file"));
        dialog.reject();
        return;
    }
    note(QStringLiteral("chooses a file"));
    guitest::choosePath(dialog, pathFor(dialog, step)); // Qt's own asks before it replaces a file
}

QString Technician::pathFor(const QFileDialog& dialog, const Step& step) {
    const auto absolute = [](const QString& path) {
        return QDir::cleanPath(QDir::current().absoluteFilePath(path));
    };
    if (dialog.fileMode() == QFileDialog::Directory) {
        const QString folder = absolute(QLatin1String(Workplace::pictureFolder));
        m_workplace.choose(folder);
        return folder;
    }
    static const QRegularExpression suffix(QStringLiteral("\\*(\\.\\w+)\\)$"));
    if (dialog.acceptMode() == QFileDialog::AcceptSave) {
        // Of few names: some files are replaced.
        const QString filter =
            dialog.nameFilters().at(static_cast<qsizetype>(step.detail / 5) % dialog.nameFilters().size());
        const QString path = absolute(QStringLiteral("%1/file%2%3")
                                          .arg(QLatin1String(Workplace::savedFolder))
                                          .arg(step.choice % 2)
                                          .arg(suffix.match(filter).captured(1)));
        m_workplace.choose(path);
        return path;
    }
    QStringList files = m_workplace.files();
    if (dialog.nameFilters().first().contains(QLatin1String("*.rec"))) {
        for (const QString& path : m_workplace.chosen()) {
            if (path.endsWith(QLatin1String(".rec")))
                files.prepend(path);
        }
    }
    return files.at(static_cast<qsizetype>(step.choice) % files.size());
}

} // namespace simulation
