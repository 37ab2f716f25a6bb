#include "devices/DayPage.h"

#include "devices/PaperSheet.h"

#include <algorithm>

namespace parcelory::DayPage {
using namespace Qt::StringLiterals;

namespace {

// Everything is measured in points from the page's top left corner, y growing downward.
constexpr double left = 60, right = left + width, top = 112, bottom = 716;
constexpr double rowHeight = 14, headHeight = 18, gap = 10;
const QColor gray = QColor::fromRgbF(0.45F, 0.45F, 0.45F);

double heightOf(const QList<Section> &sections)
{
    double height = 0;
    for (const Section &section : sections)
        height += headHeight + rowHeight * double(section.rows.size()) + gap;
    return height;
}

/// Shortens the longest sections until all fit; the last row of a shortened section tells how many are missing.
QList<Section> fitting(QList<Section> sections)
{
    sections.removeIf([](const Section &section) { return section.rows.isEmpty(); });
    QList<qsizetype> missing(sections.size());
    while (heightOf(sections) > bottom - top) {
        const auto longest =
            std::ranges::max_element(sections, {}, [](const Section &section) { return section.rows.size(); });
        if (longest->rows.size() < 3)
            break;
        qsizetype &more = missing[longest - sections.begin()];
        longest->rows.resize(longest->rows.size() - 2); // two rows, or one and the line about the others
        more += more == 0 ? 2 : 1;
        longest->rows += QStringList{u"… and %1 more"_s.arg(more)};
    }
    return sections;
}

} // namespace

QByteArray pdf(const Data_ &data)
{
    return letterPage(u"The page"_s, data.title, [&data](PaperSheet &sheet) {
        sheet.draw(data.title, {left, 56, width, 24}, {.size = 16, .bold = true});
        sheet.draw(data.subtitle, {left, 82, width, 16}, {.size = 10, .color = gray});
        double y = top;
        for (const Section &section : fitting(data.sections)) {
            sheet.draw(section.title, {left, y, width, 14}, {.size = 10, .bold = true});
            sheet.rule(y + headHeight - 3, left, right);
            y += headHeight;
            for (const QStringList &row : section.rows) {
                double x = left;
                for (qsizetype at = 0; at < row.size(); ++at) {
                    const Column column = section.columns.value(at);
                    const double room = row.size() == 1 ? width : column.width;
                    sheet.draw(row[at], {x, y, room - 6, rowHeight - 1},
                               {.size = 9, .align = column.isNumber ? Qt::AlignRight : Qt::AlignLeft});
                    x += column.width;
                }
                y += rowHeight;
            }
            y += gap;
        }
        sheet.draw(data.foot, {left, 736, width, 14}, {.size = 8, .color = gray});
    });
}

} // namespace parcelory::DayPage
