// The user guide: where it is installed, and opening it.
#pragma once

#include <QString>
#include <QStringList>

class QWidget;

/// Places of the guide, the best first: beside the program, in the package's documents, in the sources above
/// a build folder.
[[nodiscard]] QStringList manualPlaces(const QString& programFolder);

/// The first of the places at which a file is; empty if there is none.
[[nodiscard]] QString firstFile(const QStringList& places);

/// Opens the file with the system's program for it. A box tells when there is none, or no file. `parent` is
/// that of the box.
void openManual(const QString& file, QWidget* parent);
