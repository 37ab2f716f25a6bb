#pragma once

#include "ui/theme/Theme.h"

#include <QWidget>

namespace parcelory {

enum class BadgeKind { live, test, practice, pending, granted, failed, chosen, plain };

/// Measure and paint a badge without a widget, as in a table row.
int badgeWidth(const QString &word, FontRole role);
void paintBadge(QPainter &painter, const QRect &place, const QString &word, BadgeKind kind, FontRole role);

/// A word in a small colored box; the color only repeats what the word says.
class Badge : public QWidget {
public:
    Badge(const QString &word, BadgeKind kind, QWidget *parent = nullptr);

    void set(const QString &word, BadgeKind kind);
    /// For the taller badge in the header bar.
    void setTall(int height);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_word;
    BadgeKind m_kind = BadgeKind::plain;
    int m_height = 18;
};

} // namespace parcelory
