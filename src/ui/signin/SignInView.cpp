#include "ui/signin/SignInView.h"

#include "app/AppState.h"
#include "app/signin/SignInScreen.h"
#include "core/Task.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QShowEvent>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int cardWidth = 420, fieldHeight = 32, buttonHeight = 36;

QLayout *makeBrand()
{
    auto *names = new QVBoxLayout;
    names->setSpacing(0);
    names->addWidget(new TextLabel(u"Parcelory"_s, FontRole::h1));
    names->addWidget(new TextLabel(u"Shipping desk"_s, FontRole::body, &Tokens::muted));
    auto *brand = new QHBoxLayout;
    brand->setSpacing(12);
    brand->addWidget(new IconView(u"parcelory_mark"_s, 40, &Tokens::accent));
    brand->addLayout(names, 1);
    return brand;
}

QLayout *labeled(LineEdit *field)
{
    field->setFixedHeight(Theme::current().scaled(fieldHeight));
    auto *label = new TextLabel(field->accessibleName(), FontRole::caption);
    label->setBuddy(field);
    auto *rows = new QVBoxLayout;
    rows->setSpacing(5);
    rows->addWidget(label);
    rows->addWidget(field);
    return rows;
}

TextLabel *smallPrint(const QString &text)
{
    auto *label = new TextLabel(breakable(text), FontRole::caption, &Tokens::muted);
    label->setWordWrap(true);
    return label;
}

} // namespace

SignInView::SignInView(AppState &app, SignInScreen &screen, const QString &note, QWidget *parent)
    : PanelFrame(&Tokens::window, parent), m_app(app), m_screen(screen), m_name(new LineEdit(u"Email or user name"_s)),
      m_password(new LineEdit(u"Password"_s)), m_remember(new QCheckBox(u"Remember me on this Mac"_s)),
      m_signIn(new Button(u"Sign in"_s, Button::Kind::solid)), m_cancel(new Button(u"Cancel"_s)),
      m_error(new Notice(u"ui_error"_s, &Tokens::bad, FontRole::button)),
      m_wait(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_refresh([this] { refresh(); })
{
    auto *center = new QHBoxLayout;
    center->addStretch(1);
    center->addWidget(makeCard(note));
    center->addStretch(1);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 12, 0, 12);
    rows->addStretch(2);
    rows->addLayout(center);
    rows->addStretch(3);
    rows->addWidget(
        new TextLabel(u"Parcelory "_s + QCoreApplication::applicationVersion(), FontRole::caption, &Tokens::muted), 0,
        Qt::AlignHCenter);

    setAccessibleName(u"Sign in"_s);
    m_password->setEchoMode(QLineEdit::Password);
    bindText(m_name, screen.name);
    bindText(m_password, screen.password);
    connect(m_name, &QLineEdit::textChanged, this, [this] {
        if (window()->focusWidget() == m_name && !m_name->isModified()) // a remembered name was filled in
            placeFocus();
    });
    connect(m_password, &QLineEdit::textChanged, this, [this] {
        if (window()->focusWidget() == m_password && !m_password->isModified()) // a remembered password was filled in
            m_password->selectAll();
    });
    connect(m_remember, &QCheckBox::toggled, this, [this](bool on) { m_screen.remember = on; });
    connect(m_signIn, &QPushButton::clicked, this, &SignInView::signIn);
    connect(m_cancel, &QPushButton::clicked, &app, &AppState::cancelSignIn);
    m_refresh.follow(app, screen);
    refresh();
}

QWidget *SignInView::makeCard(const QString &note)
{
    const Theme &theme = Theme::current();
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(m_signIn, 1);
    buttons->addWidget(m_cancel);
    for (Button *button : {m_signIn, m_cancel})
        button->setFixedHeight(theme.scaled(buttonHeight));
    m_signIn->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto *card = PanelFrame::card();
    card->setFixedWidth(theme.scaled(cardWidth));
    auto *column = new QVBoxLayout(card);
    column->setContentsMargins(36, 32, 36, 28);
    column->setSpacing(13);
    column->addLayout(makeBrand());
    column->addSpacing(5);
    column->addLayout(labeled(m_name));
    column->addLayout(labeled(m_password));
    column->addWidget(m_remember, 0, Qt::AlignLeft);
    column->addSpacing(3);
    column->addLayout(buttons);
    column->addWidget(m_error);
    column->addWidget(m_wait);
    column->addSpacing(4);
    column->addWidget(new Separator);
    column->addWidget(smallPrint(u"Sign in with your deskline account (requires the office VPN). Your login is sent "
                                 "straight to deskline; check “Remember me” to stay signed in on this Mac."_s));
    if (!note.isEmpty())
        column->addWidget(smallPrint(note));
    return card;
}

void SignInView::showEvent(QShowEvent *event)
{
    PanelFrame::showEvent(event);
    if (event->spontaneous()) // the window was only minimized or hidden
        return;
    placeFocus();
    spawn([this] { return m_screen.appear(); });
}

void SignInView::refresh()
{
    const bool busy = m_app.loginBusy;
    const bool ended = !busy && !m_name->isEnabled();
    if (busy && m_name->isEnabled())
        setFocus(); // a disabled field would pass the focus on
    for (QWidget *control : {static_cast<QWidget *>(m_name), static_cast<QWidget *>(m_password),
                             static_cast<QWidget *>(m_remember), static_cast<QWidget *>(m_signIn)})
        control->setEnabled(!busy);
    m_signIn->setText(busy ? u"Signing in…"_s : u"Sign in"_s);
    const int left = m_app.loginSecondsLeft;
    m_wait->setText(left > 0 ? u"Waiting for deskline — up to %1 s"_s.arg(left) : u"Connecting to deskline…"_s);
    m_wait->setVisible(busy);
    m_cancel->setVisible(busy);
    m_remember->setChecked(m_screen.remember);
    showError();
    if (ended && m_app.flow == AppFlow::login)
        placeFocus();
}

void SignInView::showError()
{
    const QString text = breakable(m_app.loginError.value().value_or(QString()));
    if (text == m_error->text())
        return;
    m_error->setText(text);
    if (text.isEmpty())
        return;
    announce(m_error);
}

/// Focuses the field where the clerk continues, with its text selected, so that typing replaces a rejected password.
void SignInView::placeFocus()
{
    LineEdit *next = m_name->text().isEmpty() ? m_name : m_password;
    next->setFocus();
    next->selectAll();
}

void SignInView::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape && m_app.loginBusy)
        m_app.cancelSignIn();
    else if (!isReturn)
        PanelFrame::keyPressEvent(event);
    else if (!event->isAutoRepeat()) // a held key must not use up the account's attempts
        signIn();
}

void SignInView::signIn()
{
    if (m_app.loginBusy)
        return;
    if (m_name->text().isEmpty() || m_password->text().isEmpty())
        (m_name->text().isEmpty() ? m_name : m_password)->setFocus();
    else
        spawn([this] { return m_screen.signIn(); });
}

} // namespace parcelory
