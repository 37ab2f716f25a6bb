#pragma once

#include <QColor>

namespace parcelory {

/// Every color of the program's windows, for light and for dark. No other code defines a color.
struct Tokens {
    QColor window, sheet, panel;               ///< frame and sidebars; forms and tables; the rates
    QColor header, line, button;               ///< decorative fills and edges
    QColor control;                            ///< the edge of a field
    QColor text, muted;                        ///< reading text and second lines
    QColor accent, accentHover, onAccent;      ///< the one solid button of a screen
    QColor accentText, accentTint, rowSel;     ///< links; what is selected
    QColor ok, okTint;                         ///< success
    QColor warn, warnTint, warnEdge;           ///< warnings
    QColor bad, badTint;                       ///< errors
    QColor test, onTest;                       ///< a test key is active
    QColor practice, onPractice, practiceTint; ///< the practice desk
    QColor disabledText, disabledFill;
    QColor segBg, segOn; ///< segments: trough and raised choice
    QColor shade;        ///< over the window while a dialog is open
};

/// A color's name: `&Tokens::muted`.
using Token = QColor Tokens::*;

const Tokens &lightTokens();
const Tokens &darkTokens();

/// The contrast of two opaque colors as WCAG 2 defines it, from 1 to 21.
double contrast(const QColor &one, const QColor &other);

} // namespace parcelory
