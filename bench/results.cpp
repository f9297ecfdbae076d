#include "bench/results.h"

#include <cmath>
#include <cstdio>

namespace bench {

namespace {

std::string numberText(double value) {
    // Ratios and milliseconds need their decimals, byte counts do not.
    const bool whole = value == std::floor(value);
    const int decimals = whole ? 0 : std::abs(value) < 100 ? 3 : std::abs(value) < 10000 ? 1 : 0;
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string goalText(const std::optional<Goal>& goal) {
    if (!goal)
        return {};
    return (goal->kind == Goal::Kind::atLeast ? ">= " : "<= ") + numberText(goal->limit);
}

std::string verdictText(const Figure& figure) {
    if (!figure.goal)
        return {};
    return figure.kept() ? "yes" : "NO";
}

} // namespace

bool Figure::kept() const {
    if (!goal)
        return true;
    return goal->kind == Goal::Kind::atLeast ? value >= goal->limit : value <= goal->limit;
}

void Results::section(const std::string& title) {
    m_section = title;
    m_inTable = false;
    std::printf("\n## %s\n", title.c_str());
}

void Results::add(const Figure& figure) {
    if (!m_inTable)
        std::printf("\n| Figure | Value | Unit | Goal | Kept |\n|---|---:|---|---|---|\n");
    m_inTable = true;
    std::printf("| %s | %s | %s | %s | %s |\n", figure.what.c_str(), numberText(figure.value).c_str(),
                figure.unit.c_str(), goalText(figure.goal).c_str(), verdictText(figure).c_str());
    std::fflush(stdout);
    keep(figure);
}

void Results::columns(const std::vector<std::string>& captions) {
    std::printf("\n|");
    for (const std::string& caption : captions)
        std::printf(" %s |", caption.c_str());
    std::printf("\n|---|");
    for (std::size_t i = 1; i < captions.size(); ++i)
        std::printf("---:|");
    std::printf("\n");
}

void Results::addRow(const std::string& name, const std::vector<Figure>& figures) {
    std::printf("| %s |", name.c_str());
    for (const Figure& figure : figures) {
        std::printf(" %s%s |", numberText(figure.value).c_str(), figure.kept() ? "" : " (missed)");
        keep({name + ": " + figure.what, figure.value, figure.unit, figure.goal});
    }
    std::printf("\n");
    std::fflush(stdout);
}

void Results::keep(const Figure& figure) {
    m_missed += figure.kept() ? 0 : 1;
    m_csv.push_back('"' + m_section + "\",\"" + figure.what + "\"," + numberText(figure.value) + ',' +
                    figure.unit + ',' + goalText(figure.goal) + ',' + verdictText(figure));
}

void Results::remark(const std::string& text) {
    m_inTable = false;
    std::printf("\n%s\n", text.c_str());
}

bool Results::writeCsv(const std::string& path) const {
    std::ofstream file(path);
    file << "section,figure,value,unit,goal,kept\n";
    for (const std::string& row : m_csv)
        file << row << '\n';
    return file.good();
}

} // namespace bench
