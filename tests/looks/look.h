// How a desktop presents the program: colours and size of texts.
#pragma once

#include <QFont>
#include <QPalette>

#include <iosfwd>
#include <vector>

namespace looks {

struct Look {
    const char* name;
    QPalette (*colors)();
    double textSize; ///< times the system's
};

void PrintTo(const Look& look, std::ostream* out);

/// The looks of this process, whose scale QT_SCALE_FACTOR sets: the extreme ones, or all if pictures are
/// made.
[[nodiscard]] std::vector<Look> looksOfThisScale();
/// Folder for pictures, from CAMERA_LOOKS; empty: none are made.
[[nodiscard]] QString pictureFolder();

/// Presents the program so as long as it lives.
class Presentation {
public:
    explicit Presentation(const Look& look);
    ~Presentation();
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;

private:
    QPalette m_colors;
    QFont m_font;
};

} // namespace looks
