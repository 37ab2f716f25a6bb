#pragma once

#include "ui/theme/Theme.h"

#include <QFrame>

namespace parcelory {

/// A coloured area, with a line at some of its edges or as a card with round corners.
class Surface : public QFrame {
public:
    enum class Shape { flat, card };

    explicit Surface(Token fill, QWidget *parent = nullptr);
    static Surface *card(QWidget *parent = nullptr);
    void setCard() { m_shape = Shape::card; }

    void setFill(Token fill);
    void setEdge(Token edge); ///< of a card, or of the lines
    void setLines(Qt::Edges edges);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Token m_fill;
    Token m_edge = &Tokens::line;
    Shape m_shape = Shape::flat;
    Qt::Edges m_lines;
};

/// A hairline between sections.
class Rule : public QWidget {
public:
    explicit Rule(Qt::Orientation orientation = Qt::Horizontal, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// One of the program's drawings, standing by itself.
class IconView : public QWidget {
public:
    IconView(QString name, int size, Token ink = &Tokens::muted, QWidget *parent = nullptr);

    void set(const QString &name, Token ink);
    QSize sizeHint() const override { return {m_size, m_size}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_name;
    int m_size;
    Token m_ink;
};

} // namespace parcelory
