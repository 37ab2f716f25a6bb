#include "practice/carrier/PracticePdf.h"

#include <iterator>

namespace parcelory {

namespace {

/// The text in the encoding of a standard font; other letters become question marks.
QByteArray pdfString(QString text)
{
    constexpr char16_t dashInWinAnsi = 0x97;
    text.replace(u'—', QChar(dashInWinAnsi));
    QByteArray escaped;
    for (const char c : text.toLatin1()) {
        if (c == '(' || c == ')' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return '(' + escaped + ')';
}

} // namespace

PdfPage::PdfPage(int width, int height) : m_width(width), m_height(height) {}

void PdfPage::write(int x, int y, int size, const QString &text)
{
    m_content += "BT /F1 " + QByteArray::number(size) + " Tf " + QByteArray::number(x) + ' ' + QByteArray::number(y) +
                 " Td " + pdfString(text) + " Tj ET\n";
}

void PdfPage::writeLines(int x, int y, int size, const QStringList &lines)
{
    for (const QString &line : lines) {
        write(x, y, size, line);
        y -= size + size / 3;
    }
}

QByteArray PdfPage::document() const
{
    const QByteArray box = QByteArray::number(m_width) + ' ' + QByteArray::number(m_height);
    const QByteArray objects[] = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + box +
            "] /Contents 4 0 R /Resources << /Font << /F1 5 0 R >> >> >>",
        "<< /Length " + QByteArray::number(m_content.size()) + " >>\nstream\n" + m_content + "endstream",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>",
    };
    const QByteArray count = QByteArray::number(int(std::size(objects)) + 1);
    QByteArray pdf = "%PDF-1.4\n", references = "xref\n0 " + count + "\n0000000000 65535 f \n";
    int number = 0;
    for (const QByteArray &object : objects) {
        references += QByteArray::number(pdf.size()).rightJustified(10, '0') + " 00000 n \n";
        pdf += QByteArray::number(++number) + " 0 obj\n" + object + "\nendobj\n";
    }
    const QByteArray start = QByteArray::number(pdf.size());
    return pdf + references + "trailer\n<< /Size " + count + " /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
}

} // namespace parcelory
