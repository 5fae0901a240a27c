#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ko::imagefx::benchmarks
{

// What the benchmarks of this run have found, kept until the end to be printed as tables.
class Results
{
public:
    struct Figure {
        std::string column;
        std::optional<double> value; // none: "-"
        bool isRatio;                // otherwise milliseconds
    };
    // One line of a table: its leading texts, then its figures. All rows of a table have the same
    // columns.
    struct Row {
        std::vector<std::pair<std::string, std::string>> labels; // column, text
        std::vector<Figure> figures;
    };

    static Results &instance();

    // Tables come out in the order of their first row.
    void add(const std::string &table, const Row &row);
    // A paragraph below that table, if it has rows.
    void note(const std::string &table, const std::string &text);
    // A sentence on something that was wrong: a run with failures is worth nothing.
    void fail(const std::string &what);

    const std::vector<std::string> &failures() const { return m_failures; }
    // Markdown; numbers in the C locale.
    std::string tables() const;

private:
    struct Table {
        std::string title;
        std::vector<Row> rows;
    };

    std::vector<Table> m_tables;
    std::map<std::string, std::string> m_notes;
    std::vector<std::string> m_failures;
};

} // namespace ko::imagefx::benchmarks
