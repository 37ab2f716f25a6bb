#include "ui/settings/RestoreDialog.h"

#include "core/Task.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/ProgressBar.h"
#include "ui/parts/Separator.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int dialogWidth = 600, headingWidth = 136;
constexpr qsizetype shownLines = 3; ///< more of them scroll

struct Look {
    QString icon;
    Token ink;
};

Look lookOf(RestoreTexts::GroupKind kind)
{
    switch (kind) {
    case RestoreTexts::GroupKind::holds:
        return {u"ui_document"_s, &Tokens::text};
    case RestoreTexts::GroupKind::lost:
        return {u"ui_warning"_s, &Tokens::warn};
    case RestoreTexts::GroupKind::comesBack:
        return {u"ui_success"_s, &Tokens::ok};
    case RestoreTexts::GroupKind::staysLost:
        return {u"ui_error"_s, &Tokens::bad};
    }
    return {};
}

QString titleOf(const RestoreScreen &restore)
{
    return restore.logDamaged    ? u"The Mailing Log Is Damaged"_s
           : restore.bookDamaged ? u"The Address Book Is Damaged"_s
                                 : u"Restore This Copy?"_s;
}

TextLabel *wrapped(const QString &text, FontRole role)
{
    auto *label = new TextLabel(text, role);
    label->setWordWrap(true);
    return label;
}

} // namespace

RestoreDialog::RestoreDialog(Clock &clock, RestoreScreen &restore, QWidget *parent)
    : Dialog(clock, titleOf(restore), u"ui_warning"_s, &Tokens::warn, dialogWidth, parent), m_restore(restore),
      m_name(wrapped({}, FontRole::body)), m_box(new QVBoxLayout), m_note(wrapped({}, FontRole::caption)),
      m_steps(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_progress(new ProgressBar(u"Restoring the copy"_s, 0)), m_refresh([this] { refresh(); })
{
    body()->addWidget(m_name);
    static_cast<QVBoxLayout *>(body()->parent())->setSpacing(3); // the name belongs to the title
    auto *box = PanelFrame::card();
    box->setFill(&Tokens::panel);
    box->setLayout(m_box);
    m_box->setContentsMargins(14, 12, 14, 12);
    m_box->setSpacing(11);
    m_note->setInk(&Tokens::muted);
    auto *note = new QHBoxLayout;
    note->setSpacing(8);
    note->addWidget(new IconView(u"ui_info"_s, 16), 0, Qt::AlignTop);
    note->addWidget(m_note, 1, Qt::AlignTop);
    auto *column = static_cast<QVBoxLayout *>(layout());
    column->insertWidget(1, box);
    column->insertLayout(2, note);
    column->insertWidget(3, m_steps);
    column->insertWidget(4, m_progress);
    m_accept = addButton(u"Restore Copy"_s, Accepted, Button::Kind::standard);
    m_accept->setAutoDefault(false);
    disconnect(m_accept, &QPushButton::clicked, this, nullptr); // the dialog stays open until the copy is restored
    connect(m_accept, &QPushButton::clicked, this,
            [this] { spawn([&restore = m_restore] { return restore.restore(); }); });
    m_cancel = addButton(restore.isDamaged() ? u"Not Now"_s : u"Cancel"_s, Rejected, Button::Kind::solid);
    connect(&restore, &RestoreScreen::finished, this, [this] { done(Accepted); });
    m_refresh.follow(restore);
    refresh();
    m_cancel->setFocus();
}

void RestoreDialog::done(int result)
{
    if (m_restore.running)
        return;
    m_restore.close();
    Dialog::done(result);
}

/// The groups have their heights only once they are shown.
bool RestoreDialog::event(QEvent *event)
{
    const bool isTaken = Dialog::event(event);
    if (event->type() == QEvent::LayoutRequest)
        fitHeight();
    return isTaken;
}

void RestoreDialog::refresh()
{
    const RestoreReview &review = m_restore.review.value();
    if (review.copy.folder.isEmpty()) // answered
        return;
    m_name->setText(RestoreTexts::nameOf(review.copy));
    if (m_restore.looking)
        showGroups({{.kind = RestoreTexts::GroupKind::holds,
                     .title = u"This copy holds"_s,
                     .head = u"Reading the copy…"_s,
                     .lines = {}}});
    else if (!review.unreadable.isEmpty())
        showGroups({{.kind = RestoreTexts::GroupKind::staysLost,
                     .title = u"This copy holds"_s,
                     .head = review.unreadable,
                     .lines = {}}});
    else
        showGroups(RestoreTexts::groupsOf(review));
    m_note->setText(m_restore.looking ? QString() : RestoreTexts::noteOf(review));
    m_steps->setVisible(m_restore.running);
    m_progress->setVisible(m_restore.running);
    m_steps->setText(RestoreTexts::progressOf(review.copy, m_restore.progress));
    m_progress->setProgress(m_restore.progress);
    m_accept->setEnabled(m_restore.canRestore());
    m_cancel->setEnabled(!m_restore.running);
    fitHeight();
}

void RestoreDialog::showGroups(const QList<RestoreTexts::Group> &groups)
{
    if (groups == m_shown)
        return;
    m_shown = groups;
    while (QLayoutItem *item = m_box->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    QStringList texts{m_name->text()};
    for (const RestoreTexts::Group &group : groups) {
        if (m_box->count() > 0)
            m_box->addWidget(new Separator(Qt::Horizontal));
        m_box->addWidget(makeGroup(group));
        texts += group.title + u": "_s + (QStringList{group.head} + group.lines).join(u", "_s);
    }
    setAccessibleDescription(texts.join(u'\n'));
}

QWidget *RestoreDialog::makeGroup(const RestoreTexts::Group &group)
{
    const Look look = lookOf(group.kind);
    auto *widget = new QWidget;
    auto *row = new QHBoxLayout(widget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(10);
    row->addWidget(new IconView(look.icon, 16, look.ink), 0, Qt::AlignTop);
    auto *title = new TextLabel(group.title, FontRole::strong, look.ink);
    title->setFixedWidth(Theme::current().scaled(headingWidth));
    row->addWidget(title, 0, Qt::AlignTop);
    auto *words = new QVBoxLayout;
    words->setSpacing(3);
    words->addWidget(
        wrapped(group.head, group.kind == RestoreTexts::GroupKind::holds ? FontRole::body : FontRole::strong));
    if (!group.lines.isEmpty()) {
        TextLabel *lines = wrapped(group.lines.join(u'\n'), FontRole::body);
        if (group.lines.size() <= shownLines) {
            words->addWidget(lines);
        } else {
            auto *area = new QScrollArea;
            area->setFrameShape(QFrame::NoFrame);
            area->setWidgetResizable(true);
            area->setFixedHeight(int(shownLines) * lines->fontMetrics().lineSpacing());
            area->setWidget(lines);
            words->addWidget(area);
        }
    }
    row->addLayout(words, 1);
    return widget;
}

} // namespace parcelory
