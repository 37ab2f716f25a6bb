#pragma once

#include "ui/theme/Theme.h"

#include <QWidget>

namespace parcelory {

enum class BadgeKind { live, test, practice, pending, granted, failed, chosen, plain };

/// How wide a badge is in a table's row, and its drawing there.
int badgeWidth(const QString &word, FontRole role);
void paintBadge(QPainter &painter, const QRect &place, const QString &word, BadgeKind kind, FontRole role);

/// A word in capitals in a small coloured box; the colour only repeats what the word says.
class Badge : public QWidget {
public:
    Badge(const QString &word, BadgeKind kind, QWidget *parent = nullptr);

    void set(const QString &word, BadgeKind kind);
    /// The large form in the window's head.
    void setTall(int height);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_word;
    BadgeKind m_kind;
    int m_height = 18;
};

} // namespace parcelory
