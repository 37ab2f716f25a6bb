#pragma once

#include "core/ports/Clock.h"
#include "ui/parts/Button.h"
#include "ui/parts/TextLabel.h"

#include <QDialog>

#include <optional>

class QDialogButtonBox;
class QVBoxLayout;

namespace parcelory {

/// The frame of the program's dialogs: a drawing, a title, what the dialog asks, and buttons in the system's order.
/// Keys pressed in its first moments are dropped, and keys that repeat because they are held: neither a scanner that is
/// still typing nor a long Return answers a question.
class Dialog : public QDialog {
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds keyGuard{300};

    /// `width` in logical pixels; the height follows the contents.
    Dialog(Clock &clock, const QString &title, const QString &icon, Token ink, int width, QWidget *parent);
    ~Dialog() override;

    QVBoxLayout *body() const { return m_body; }
    /// `result` is what the dialog ends with. The solid button is the default one.
    Button *addButton(const QString &text, int result, Button::Kind kind);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    /// After a change of the contents.
    void fitHeight();
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    Clock &m_clock;
    QVBoxLayout *m_body;
    QDialogButtonBox *m_buttons;
    std::optional<quint64> m_guard;
};

} // namespace parcelory
