#pragma once

#include <QScreen>
#include <QWidget>

namespace parcelory {

/// The part of a screen that a window may take, without its title bar.
inline QSize roomFor(QSize screen)
{
    constexpr int titleBar = 36;
    return {screen.width(), screen.height() - titleBar};
}

inline QSize roomFor(const QWidget &window)
{
    return roomFor(window.screen()->availableSize());
}

/// Gives a window its minimum and its first size, neither larger than its screen.
inline void sizeWindow(QWidget &window, QSize least, QSize first)
{
    const QSize room = roomFor(window);
    window.setMinimumSize(least.boundedTo(room));
    window.resize(first.boundedTo(room));
}

} // namespace parcelory
