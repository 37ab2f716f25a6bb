#include "ui/theme/Theme.h"

#include "ui/theme/Tokens.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QScreen>
#include <QStyleOption>
#include <QToolTip>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct FontSpec {
    int pixels;
    QFont::Weight weight;
};

FontSpec specOf(FontRole role)
{
    switch (role) {
    case FontRole::total:
        return {22, QFont::DemiBold};
    case FontRole::h1:
        return {20, QFont::DemiBold};
    case FontRole::h2:
        return {15, QFont::DemiBold};
    case FontRole::body:
        return {13, QFont::Normal};
    case FontRole::button:
        return {13, QFont::Medium};
    case FontRole::strong:
        return {13, QFont::DemiBold};
    case FontRole::caption:
    case FontRole::mono:
        return {12, QFont::Normal};
    case FontRole::captionStrong:
        return {12, QFont::Medium};
    case FontRole::badge:
        return {11, QFont::Bold};
    case FontRole::tableBadge:
        return {10, QFont::Bold};
    }
    return {13, QFont::Normal};
}

/// The system's scale factor for texts.
double systemTextScale()
{
#ifdef Q_OS_MACOS
    return 1; // macOS includes the text size in the display's scale
#else
    return std::clamp(QGuiApplication::primaryScreen()->logicalDotsPerInchY() / 96, 1.0, 2.0);
#endif
}

} // namespace

Theme::Theme(bool dark) : QProxyStyle(u"Fusion"_s), m_dark(dark), m_textScale(systemTextScale()) {}

void Theme::install(bool dark)
{
    auto *theme = new Theme(dark); // the application owns its style
    QApplication::setStyle(theme);
    QApplication::setPalette(theme->standardPalette());
    QToolTip::setPalette(theme->standardPalette());
    QApplication::setFont(theme->font(FontRole::body));
}

Theme &Theme::current()
{
    return *static_cast<Theme *>(QApplication::style());
}

void Theme::setDark(bool dark)
{
    if (m_dark == dark)
        return;
    m_dark = dark;
    QApplication::setPalette(standardPalette());
    QToolTip::setPalette(standardPalette());
    emit changed();
}

QFont Theme::font(FontRole role) const
{
    const FontSpec spec = specOf(role);
#ifdef Q_OS_MACOS
    QFont font =
        QFontDatabase::systemFont(role == FontRole::mono ? QFontDatabase::FixedFont : QFontDatabase::GeneralFont);
#else
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (role != FontRole::mono) {
        font = QFont();
        font.setFamilies({u"Inter"_s, u"Sans Serif"_s});
    }
#endif
    font.setPixelSize(scaled(spec.pixels));
    font.setWeight(spec.weight);
    font.setHintingPreference(QFont::PreferNoHinting); // even spacing at fractional scales
    return font;
}

QPalette Theme::standardPalette() const
{
    const Tokens &t = tokens();
    QPalette palette;
    const std::pair<QPalette::ColorRole, QColor> roles[] = {
        {QPalette::Window, t.window},       {QPalette::WindowText, t.text},
        {QPalette::Base, t.sheet},          {QPalette::AlternateBase, t.panel},
        {QPalette::Text, t.text},           {QPalette::Button, t.sheet},
        {QPalette::ButtonText, t.text},     {QPalette::PlaceholderText, t.muted},
        {QPalette::Highlight, t.rowSel},    {QPalette::HighlightedText, t.text},
        {QPalette::ToolTipBase, t.sheet},   {QPalette::ToolTipText, t.text},
        {QPalette::Link, t.accentText},     {QPalette::LinkVisited, t.accentText},
        {QPalette::BrightText, t.onAccent}, {QPalette::Light, t.sheet},
        {QPalette::Midlight, t.header},     {QPalette::Mid, t.line},
        {QPalette::Dark, t.button},         {QPalette::Shadow, t.control}};
    for (const auto &[role, color] : roles)
        palette.setColor(role, color);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, t.disabledText);
    palette.setColor(QPalette::Disabled, QPalette::Base, t.disabledFill);
    return palette;
}

void Theme::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (widget->inherits("QComboBox") || widget->inherits("QAbstractButton"))
        widget->setAttribute(Qt::WA_Hover);
}

int Theme::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
        return scaled(16);
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return 8;
    case PM_ScrollBarExtent:
        return 12;
    case PM_SplitterWidth:
        return 5;
    case PM_TabBarTabHSpace:
        return 34;
    case PM_TabBarBaseHeight:
    case PM_TabBarBaseOverlap:
    case PM_TabBarTabShiftHorizontal:
    case PM_TabBarTabShiftVertical:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    case PM_SmallIconSize:
    case PM_ButtonIconSize:
        return 16;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int Theme::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *answer) const
{
    switch (hint) {
    case SH_EtchDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_UnderlineShortcut:
    case SH_ComboBox_Popup:
        return 0;
    case SH_FocusFrame_AboveWidget:
        return 1;
#ifndef Q_OS_MACOS
    case SH_DialogButtonLayout:
        return QDialogButtonBox::GnomeLayout; // the default button is rightmost, in every desktop environment
#endif
    default:
        return QProxyStyle::styleHint(hint, option, widget, answer);
    }
}

QSize Theme::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                              const QWidget *widget) const
{
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_TabBarTab)
        result.setHeight(scaled(46));
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (type == CT_MenuItem && item && item->menuItemType != QStyleOptionMenuItem::Separator)
        result.setHeight(std::max(result.height(), scaled(24)));
    return result;
}

} // namespace parcelory
