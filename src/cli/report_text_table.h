#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace kivo {

// A table of text cells printed in aligned columns: text columns to the left, number columns
// to the right, two blanks between columns.
class TextTable {
public:
    enum class Align { Left, Right };

    struct Column {
        QString header;
        Align align = Align::Left;
    };

    explicit TextTable(std::vector<Column> columns);

    void addRow(QStringList cells);
    bool isEmpty() const { return rows_.empty(); }

    // Every line starts with `indent` and ends with a newline; trailing blanks are cut.
    QString render(QStringView indent) const;

private:
    std::vector<Column> columns_;
    std::vector<QStringList> rows_;
};

}  // namespace kivo
