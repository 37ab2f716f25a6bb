#pragma once

#include "core/ShippoAddress.h"

#include <QByteArray>
#include <QDate>
#include <QString>
#include <QStringList>

namespace parcelory {

/// The content of a practice label.
struct LabelContent {
    QString provider; ///< "USPS"
    QString service;  ///< "Priority Mail"
    QString tracking;
    QString reference; ///< may be empty
    QString shipDate;  ///< year, month and day
    double ounces = 0;
    bool needsSignature = false;
    bool isTest = true;     ///< bought with a test key: the label carries the carrier's sample mark
    ShippoAddress from, to; ///< without a country on a domestic label

    QString title() const { return provider + u' ' + service; }
};

/// An address as a label prints it, without empty lines.
QStringList addressLines(const ShippoAddress &address);

/// A 4 by 6 inch label for 203 dpi printers, in UTF-8, laid out as the carriers lay out theirs.
QByteArray zplLabel(const LabelContent &content);

/// The same label as a 4 by 6 inch PDF page.
QByteArray pdfLabel(const LabelContent &content);

/// A blank, crossed-out label of the same size; without text, because there are no fonts here.
QByteArray pngLabel();

/// A letter page with a title and lines of text: commercial invoices and SCAN forms.
QByteArray pdfPaper(const QString &title, const QStringList &lines);

} // namespace parcelory
