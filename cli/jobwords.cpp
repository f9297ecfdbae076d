#include "cli/jobwords.h"

#include <QProcess>

namespace cli {

std::vector<std::string> jobWords(const QString& line) {
    std::vector<std::string> words;
    for (const QString& word : QProcess::splitCommand(line))
        words.push_back(word.toStdString());
    return words;
}

} // namespace cli
