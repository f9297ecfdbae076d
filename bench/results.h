// The rows of the tables that a run fills, as Markdown for people and as CSV for programs.
#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace bench {

/// Goal of a figure.
struct Goal {
    enum class Kind { atLeast, atMost };
    Kind kind;
    double limit;
};

struct Figure {
    std::string what;
    double value = 0;
    std::string unit;
    std::optional<Goal> goal;

    [[nodiscard]] bool kept() const;
};

class Results {
public:
    /// Begins a table.
    void section(const std::string& title);
    /// A row of the table of figures; shown at once.
    void add(const Figure& figure);
    /// A table of several figures a row: its captions, then its rows.
    void columns(const std::vector<std::string>& captions);
    void addRow(const std::string& name, const std::vector<Figure>& figures);
    /// A sentence between the rows' tables.
    void remark(const std::string& text);
    [[nodiscard]] int missed() const { return m_missed; }
    /// "section,figure,value,unit,goal,kept", a header line first. False when the file cannot be written.
    [[nodiscard]] bool writeCsv(const std::string& path) const;

private:
    void keep(const Figure& figure);

    std::string m_section;
    std::vector<std::string> m_csv;
    bool m_inTable = false;
    int m_missed = 0;
};

} // namespace bench
