#pragma once

#include "ui/theme/Theme.h"

#include <QFrame>

namespace parcelory {

/// A colored area, with a line at some of its edges or as a card with round corners.
class PanelFrame : public QFrame {
public:
    enum class Shape { flat, card };

    explicit PanelFrame(Token fill, QWidget *parent = nullptr);
    static PanelFrame *card(QWidget *parent = nullptr);
    void setCard() { m_shape = Shape::card; }

    void setFill(Token fill);
    void setEdge(Token edge); ///< the color of a card's edge or of the lines
    void setLines(Qt::Edges edges);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Token m_fill;
    Token m_edge = &Tokens::line;
    Shape m_shape = Shape::flat;
    Qt::Edges m_lines;
};

} // namespace parcelory
