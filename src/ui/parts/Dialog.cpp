#include "ui/parts/Dialog.h"
#include "core/ports/Clock.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWindow>

namespace parcelory {

namespace {

/// Dims the window behind a dialog.
class Shade : public QWidget {
public:
    explicit Shade(QWidget *window) : QWidget(window)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        window->installEventFilter(this);
        cover();
        show();
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Resize)
            cover();
        return false;
    }
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), QColor(20, 24, 31, 110)); }

private:
    void cover()
    {
        setGeometry(parentWidget()->rect());
        raise();
    }
};

} // namespace

Dialog::Dialog(Clock &clock, const QString &title, const QString &icon, Token ink, int width, QWidget *parent)
    : QDialog(parent), m_clock(clock), m_body(new QVBoxLayout), m_buttons(new QDialogButtonBox)
{
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    auto *heading = new TextLabel(title, FontRole::h2);
    heading->setWordWrap(true);
    auto *words = new QVBoxLayout;
    words->setSpacing(12);
    words->addWidget(heading);
    words->addLayout(m_body);
    m_body->setSpacing(12);
    auto *head = new QHBoxLayout;
    head->setSpacing(16);
    head->addWidget(new IconView(icon, 32, ink), 0, Qt::AlignTop);
    head->addLayout(words, 1);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(25, 22, 25, 20);
    column->setSpacing(18);
    column->addLayout(head);
    column->addWidget(m_buttons);
    setFixedWidth(Theme::current().scaled(width));
}

Dialog::~Dialog()
{
    if (m_guard)
        m_clock.cancel(*m_guard);
    delete m_shade;
}

Button *Dialog::addButton(const QString &text, int result, Button::Kind kind)
{
    auto *button = new Button(text, kind);
    const bool isDefault = kind == Button::Kind::solid;
    m_buttons->addButton(button, isDefault ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole);
    button->setDefault(isDefault);
    connect(button, &QPushButton::clicked, this, [this, result] { done(result); });
    if (isDefault)
        button->setFocus();
    return button;
}

void Dialog::addHelp(const std::function<void()> &help)
{
    auto *button = new Button(QStringLiteral("Help"));
    button->setFocusPolicy(Qt::TabFocus); // after a click, Return still presses the answer
    m_buttons->addButton(button, QDialogButtonBox::HelpRole);
    connect(button, &QPushButton::clicked, this, help);
}

void Dialog::fitHeight()
{
    setFixedHeight(layout()->totalHeightForWidth(width()));
}

void Dialog::hideEvent(QHideEvent *event)
{
    QDialog::hideEvent(event);
    delete m_shade;
}

void Dialog::showEvent(QShowEvent *event)
{
    fitHeight();
    if (parentWidget() && !m_shade)
        m_shade = new Shade(parentWidget()->window());
    QDialog::showEvent(event);
    if (m_guard)
        return;
    qApp->removeEventFilter(this);
    qApp->installEventFilter(this);
    m_guard = m_clock.after(keyGuard, [this] { m_guard.reset(); });
}

void Dialog::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), Theme::current().tokens().sheet);
}

bool Dialog::eventFilter(QObject *watched, QEvent *event)
{
    const auto type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease && type != QEvent::ShortcutOverride &&
        type != QEvent::Shortcut)
        return false;
    const auto *key = type == QEvent::Shortcut ? nullptr : static_cast<const QKeyEvent *>(event);
    const bool held = key && key->isAutoRepeat() && key->text().trimmed().isEmpty(); // letters may be held
    if (!m_guard && !held)
        return false;
    // A shortcut event goes to a child object of a widget. A key press goes to the native window first, where the
    // scanner is heard, and then to a widget.
    const auto *widget = qobject_cast<QWidget *>(watched->isWidgetType() ? watched : watched->parent());
    return (watched == windowHandle() && type != QEvent::KeyPress) || (widget && widget->window() == this);
}

} // namespace parcelory
