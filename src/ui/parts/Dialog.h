#pragma once

#include "core/ports/Clock.h"
#include "ui/parts/Button.h"
#include "ui/parts/TextLabel.h"

#include <QDialog>
#include <QPointer>

#include <functional>
#include <optional>

class QDialogButtonBox;
class QVBoxLayout;

namespace parcelory {

/// The frame of the program's dialogs: an icon, a title, the contents, and buttons in the system's order. Drops keys
/// pressed in the first moments, and repeats of held keys that type no character: neither a scanner that is still
/// typing nor a held Return answers a question.
class Dialog : public QDialog {
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds keyGuard{300};

    /// `width` in logical pixels; the height follows the contents.
    Dialog(Clock &clock, const QString &title, const QString &icon, Token ink, int width, QWidget *parent);
    ~Dialog() override;

    QVBoxLayout *body() const { return m_body; }
    /// Pressing the button ends the dialog with `result`. The solid button is the default.
    Button *addButton(const QString &text, int result, Button::Kind kind);
    /// Adds a Help button, which leaves the dialog open.
    void addHelp(const std::function<void()> &help);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    /// Call after the contents change.
    void fitHeight();
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    Clock &m_clock;
    QVBoxLayout *m_body;
    QDialogButtonBox *m_buttons;
    std::optional<quint64> m_guard;
    QPointer<QWidget> m_shade; ///< over the window behind
};

} // namespace parcelory
