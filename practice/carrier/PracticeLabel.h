#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace parcelory {

/// What stands on a practice label.
struct LabelContent {
    QString service; ///< "USPS Priority Mail"
    QString tracking;
    QString reference; ///< may be empty
    QString shipDate;
    QStringList from, to; ///< lines of the two addresses
};

/// A label of 4 by 6 inches for printers of 203 dots per inch, UTF-8.
QByteArray zplLabel(const LabelContent &content);

/// The same label as a PDF page of 4 by 6 inches.
QByteArray pdfLabel(const LabelContent &content);

/// A blank, crossed-out label of the same size; there are no fonts here to write on it.
QByteArray pngLabel();

/// A letter page with a title and lines of text: commercial invoices and SCAN forms.
QByteArray pdfPaper(const QString &title, const QStringList &lines);

} // namespace parcelory
