#pragma once

#include "core/ports/Preferences.h"

#include <QString>

namespace parcelory {

/// What this desk used last, over restarts: carrier, class and mailpiece, the packaging of a weight, and how a clerk
/// signs customs papers. Knows only words; LabelDraft tells what they mean.
class DeskHabits {
public:
    explicit DeskHabits(Preferences &preferences) : m_preferences(preferences) {}

    struct Choice {
        QString carrier, svcClass, mailpiece;
    };
    Choice choice() const;
    void note(const Choice &choice);

    /// The packaging of the last parcel of about this weight; empty if there was no such parcel.
    QString mailpieceFor(double ounces) const;
    void noteMailpiece(double ounces, const QString &mailpiece);

    QString signerOf(const QString &user) const;
    void noteSigner(const QString &user, const QString &signer);

private:
    Preferences &m_preferences;
};

} // namespace parcelory
