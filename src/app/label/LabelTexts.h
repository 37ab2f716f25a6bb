#pragma once

#include <QStringList>

namespace parcelory {

class LabelDraft;
class LabelScreen;
struct ShippoRate;

/// What the New Label screen says about its draft; empty if there is nothing to show.
namespace LabelTexts {

QString mailpieceName(const LabelDraft &draft);
/// The icon's name.
QString mailpieceIcon(const LabelDraft &draft);
QString sizeHint(const LabelDraft &draft);
QString classHint(const LabelDraft &draft);
QString signatureWarning(const LabelDraft &draft);
QString senderHint(const LabelDraft &draft);
QString internationalHint(const LabelDraft &draft);
QString customsHint(const LabelDraft &draft);
/// A declared value other than the invoice's subtotal is more often a slip than meant.
QString declaredValueWarning(const LabelDraft &draft);
QString paperworkText(const LabelDraft &draft);
/// What keeps the form from being complete, or the next thing to do.
QString formHint(const LabelDraft &draft);
/// The recipient's lines as the carrier gets them.
QStringList printedRecipient(const LabelDraft &draft);
/// What of the recipient is too long to be sent.
QString cutWarning(const LabelDraft &draft);
QString extrasSummary(const LabelDraft &draft);
/// A parcel of known value that is not insured.
QString uninsuredNote(const LabelDraft &draft);
/// "1,860.00"
QString invoiceAmount(const LabelDraft &draft);
/// Offers to insure the parcel for its invoice, or says that it is.
QString insuranceOffer(const LabelDraft &draft);
/// In place of the rates.
QString ratesHint(const LabelScreen &screen);
QString nextStepHint(const LabelScreen &screen);
/// "2 days"
QString transitText(const ShippoRate &rate);
/// "USPS · 2 days", and what tells the rate from another of the list that looks the same.
QString rateDetails(const ShippoRate &rate, const QList<ShippoRate> &all);

} // namespace LabelTexts

} // namespace parcelory
