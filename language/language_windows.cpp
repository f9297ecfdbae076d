#include "language/language.h"

#include <QLocale>

namespace language {

bool speaksChinese() {
    return QLocale::system().language() == QLocale::Chinese;
}

} // namespace language
