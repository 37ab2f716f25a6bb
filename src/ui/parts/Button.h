#pragma once

#include "ui/theme/Theme.h"

#include <QPushButton>

namespace parcelory {

/// The program's push button. A screen has at most one solid button: the next step. Return presses the button that has
/// the focus, and not the default.
class Button : public QPushButton {
    Q_OBJECT
public:
    enum class Kind {
        standard,
        tint,     ///< the most frequent action
        solid,    ///< the next step
        test,     ///< solid, in the color of a test key
        practice, ///< solid, in the color of the practice desk
        danger,   ///< red text
        link,     ///< text without a frame
        icon,     ///< only an icon; needs describe()
    };

    explicit Button(const QString &text, Kind kind = Kind::standard, const QString &icon = {},
                    QWidget *parent = nullptr);

    void setKind(Kind kind);
    Kind kind() const { return m_kind; }
    /// Only Space, a click or a shortcut presses this button: Return ends a scanner's code.
    void ignoreReturn() { m_ignoresReturn = true; }
    /// Sets the name and tooltip of an icon button; `keys` is its shortcut in the system's notation.
    void describe(const QString &name, const QString &keys = {});

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    struct Colors {
        QColor fill, edge, text;
    };
    Colors colors() const;

    Kind m_kind;
    QString m_icon;
    bool m_ignoresReturn = false;
};

} // namespace parcelory
