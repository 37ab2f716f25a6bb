#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace parcelory {

/// A PDF document of one page with text in Helvetica.
class PdfPage {
public:
    /// The size in points.
    PdfPage(int width, int height);

    /// A line of text whose baseline starts at (x, y), counted from the lower left corner.
    void write(int x, int y, int size, const QString &text);
    /// Lines below one another, the first at (x, y).
    void writeLines(int x, int y, int size, const QStringList &lines);

    QByteArray document() const;

private:
    int m_width, m_height;
    QByteArray m_content;
};

} // namespace parcelory
