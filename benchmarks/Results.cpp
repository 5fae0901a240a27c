#include "benchmarks/Results.h"

#include <QtCore/QByteArray>

namespace ko::imagefx::benchmarks
{

namespace
{

// Three significant digits for times; a ratio is read against 1.10, so it gets three decimals.
std::string text(const Results::Figure &figure)
{
    if (!figure.value) {
        return "-";
    }
    const double value = *figure.value;
    int decimals = 3;
    if (!figure.isRatio) {
        decimals = value >= 100 ? 0 : value >= 10 ? 1 : value >= 1 ? 2 : 3;
    }
    return QByteArray::number(value, 'f', decimals).toStdString();
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

void Results::note(const std::string &table, const std::string &text)
{
    m_notes[table] = text;
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
        const auto note = m_notes.find(table.title);
        if (note != m_notes.end()) {
            markdown += "\n" + note->second + "\n";
        }
    }
    return markdown;
}

} // namespace ko::imagefx::benchmarks
