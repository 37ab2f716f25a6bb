#pragma once

#include "ui/UpdatePrompt.h"
#include "ui/parts/RefreshScheduler.h"

#include <QDateTime>
#include <QPointer>

#include <optional>

namespace parcelory {

class MainWindow;

/// Opens the update prompt, one at a time, whenever there is an update to offer. An offer comes by itself, so it waits
/// until nothing was typed for a while and no dialog is open: the prompt takes the keyboard.
class UpdateOffers : public QObject {
public:
    static constexpr std::chrono::milliseconds quietTime{3000};

    explicit UpdateOffers(MainWindow &window);
    ~UpdateOffers() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void refresh();
    /// How long to wait before the prompt may open; 0 if it may open now.
    std::chrono::milliseconds timeToQuiet() const;

    MainWindow &m_window;
    QPointer<UpdatePrompt> m_prompt;
    int m_shown;            ///< UpdateChecker::offers at the last prompt
    QDateTime m_lastTyping; ///< invalid: nothing was typed yet
    std::optional<quint64> m_timer;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
