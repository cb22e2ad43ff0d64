#include "cli/report_text_table.h"

#include <algorithm>

namespace kivo {

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

void TextTable::addRow(QStringList cells) {
    cells.resize(static_cast<qsizetype>(columns_.size()));
    rows_.push_back(std::move(cells));
}

QString TextTable::render(QStringView indent) const {
    std::vector<qsizetype> widths;
    for (const auto& column : columns_) {
        widths.push_back(column.header.size());
    }
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            widths[i] = std::max(widths[i], row[static_cast<qsizetype>(i)].size());
        }
    }
    const auto line = [&](const QStringList& cells) -> QString {
        QString text = indent.toString();
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const QString& cell = cells[static_cast<qsizetype>(i)];
            if (i > 0) {
                text += u"  ";
            }
            text += columns_[i].align == Align::Left ? cell.leftJustified(widths[i])
                                                     : cell.rightJustified(widths[i]);
        }
        while (text.endsWith(u' ')) {
            text.chop(1);
        }
        return text + u'\n';
    };
    QStringList headers;
    for (const auto& column : columns_) {
        headers.append(column.header);
    }
    QString text = line(headers);
    for (const auto& row : rows_) {
        text += line(row);
    }
    return text;
}

}  // namespace kivo
