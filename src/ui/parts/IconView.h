#pragma once

#include "ui/theme/Theme.h"

#include <QWidget>

namespace parcelory {

/// A widget that shows one of the program's icons.
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
