#pragma once

#include "core/Observable.h"

#include <functional>
#include <utility>

namespace parcelory {

/// The last change that the clerk can take back, wherever it was made: the status strip names it and offers Undo. The
/// next such change replaces it.
class LastChange : public Observable {
public:
    Observed<QString> text{this}; ///< empty if no change can be taken back

    /// Returns a number for forget().
    int note(const QString &what, std::function<void()> takeBack)
    {
        m_takeBack = std::move(takeBack);
        text = what;
        return ++m_number;
    }
    /// The change can no longer be taken back.
    void forget(int number)
    {
        if (number == m_number)
            text = QString();
    }
    bool isOffered(int number) const { return number == m_number && !text.value().isEmpty(); }
    void undo()
    {
        if (text.value().isEmpty())
            return;
        text = QString(); // first, so that a second press does nothing
        if (const std::function<void()> takeBack = std::exchange(m_takeBack, {}))
            takeBack();
    }

private:
    std::function<void()> m_takeBack;
    int m_number = 0;
};

} // namespace parcelory
