#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace parcelory {

/// The content of a practice label.
struct LabelContent {
    QString service; ///< "USPS Priority Mail"
    QString tracking;
    QString reference; ///< may be empty
    QString shipDate;
    QStringList from, to; ///< lines of the two addresses
};

/// A 4 by 6 inch label for 203 dpi printers, in UTF-8.
QByteArray zplLabel(const LabelContent &content);

/// The same label as a 4 by 6 inch PDF page.
QByteArray pdfLabel(const LabelContent &content);

/// A blank, crossed-out label of the same size; without text, because there are no fonts here.
QByteArray pngLabel();

/// A letter page with a title and lines of text: commercial invoices and SCAN forms.
QByteArray pdfPaper(const QString &title, const QStringList &lines);

} // namespace parcelory
