#include "benchmarks/Results.h"

#include <QtCore/QByteArray>

namespace ko::imagefx::benchmarks
{

namespace
{

// Three significant digits for times; a ratio is read against 1.10, so it gets three decimals.
std::string text(const Results::Figure &figure)
{
    int decimals = 3;
    if (!figure.isRatio) {
        decimals = figure.value >= 100 ? 0 : figure.value >= 10 ? 1 : figure.value >= 1 ? 2 : 3;
    }
    return QByteArray::number(figure.value, 'f', decimals).toStdString();
}

std::string headOf(const Results::Row &row)
{
    std::string head = "|";
    std::string rule = "|";
    for (const auto &label : row.labels) {
        head += " " + label.first + " |";
        rule += " --- |";
    }
    for (const Results::Figure &figure : row.figures) {
        head += " " + figure.column + (figure.isRatio ? " |" : ", ms |");
        rule += " ---: |";
    }
    return head + "\n" + rule + "\n";
}

std::string line(const Results::Row &row)
{
    std::string cells = "|";
    for (const auto &label : row.labels) {
        cells += " " + label.second + " |";
    }
    for (const Results::Figure &figure : row.figures) {
        cells += " " + text(figure) + " |";
    }
    return cells + "\n";
}

} // namespace

Results &Results::instance()
{
    static Results results;
    return results;
}

void Results::add(const std::string &table, const Row &row)
{
    for (Table &known : m_tables) {
        if (known.title == table) {
            known.rows.push_back(row);
            return;
        }
    }
    m_tables.push_back({table, {row}});
}

void Results::fail(const std::string &what)
{
    m_failures.push_back(what);
}

std::string Results::tables() const
{
    std::string markdown;
    for (const Table &table : m_tables) {
        markdown += "\n## " + table.title + "\n\n" + headOf(table.rows.front());
        for (const Row &row : table.rows) {
            markdown += line(row);
        }
    }
    return markdown;
}

} // namespace ko::imagefx::benchmarks
