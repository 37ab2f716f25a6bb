#include "ui/settings/RulesPage.h"

#include "compose/rules/ShippingRules.h"
#include "core/Task.h"
#include "core/Text.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TabOrder.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLocale>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int switchWidth = 56, dateWidth = 142, rowHeight = 42, groupHeight = 26, margin = 16;

/// A line of the list with its three columns.
QWidget *makeLine(QWidget *mark, QWidget *words, QWidget *date, int height)
{
    const Theme &theme = Theme::current();
    auto *line = new QWidget;
    auto *columns = new QHBoxLayout(line);
    columns->setContentsMargins(margin, 3, 8, 3);
    columns->setSpacing(0);
    mark->setFixedWidth(theme.scaled(switchWidth));
    date->setFixedWidth(theme.scaled(dateWidth));
    columns->addWidget(mark);
    columns->addWidget(words, 1);
    columns->addSpacing(8);
    columns->addWidget(date);
    line->setMinimumHeight(theme.scaled(height));
    return line;
}

QWidget *makeBand(Token fill, QWidget *content, Qt::Edges lines)
{
    auto *band = new PanelFrame(fill);
    band->setLines(lines);
    auto *row = new QHBoxLayout(band);
    row->setContentsMargins(0, lines & Qt::TopEdge ? 1 : 0, 0, 1);
    row->addWidget(content);
    return band;
}

/// Two texts, one above the other.
QWidget *makePair(QWidget *upper, QWidget *lower)
{
    auto *pair = new QWidget;
    auto *rows = new QVBoxLayout(pair);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(1);
    rows->addStretch(1);
    rows->addWidget(upper);
    rows->addWidget(lower);
    rows->addStretch(1);
    return pair;
}

} // namespace

RulesPage::RulesPage(RulesScreen &screen, QWidget *parent)
    : SettingsPage(u"Shipping Rules"_s, parent), m_screen(screen),
      m_count(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_icon(new IconView(u"ui_document"_s, 20)),
      m_title(new TextLabel({}, FontRole::strong)), m_origin(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_message(new TextLabel({}, FontRole::caption, &Tokens::warn)), m_above(new LineEdit(u"Limit, US dollars"_s, 84)),
      m_refresh([this] { refresh(); })
{
    head()->addWidget(m_count);
    appendCaption(u"A line under the rates shows the rules for this package. It never blocks a label."_s);
    appendFile();
    PanelFrame *list = appendListCard();
    m_list = column(list);
    m_list->setContentsMargins(1, 1, 1, 1);
    appendGuard();
    appendCaption(u"Changes are saved automatically."_s);
    m_refresh.follow(screen);
    refresh();
}

void RulesPage::appendFile()
{
    m_file = appendCard();
    auto *open = new Button(u"Open Data Folder"_s, Button::Kind::standard, u"ui_external"_s);
    auto *words = new QVBoxLayout;
    words->setSpacing(1);
    for (TextLabel *label : {m_title, m_origin, m_message}) {
        label->setWordWrap(true);
        words->addWidget(label);
    }
    auto *row = new QHBoxLayout;
    row->setSpacing(10);
    row->addWidget(m_icon);
    row->addLayout(words, 1);
    row->addWidget(open);
    column(m_file)->addLayout(row);
    connect(open, &QPushButton::clicked, this, [this] { spawn([&screen = m_screen] { return screen.openFolder(); }); });
}

void RulesPage::appendGuard()
{
    append(new TextLabel(u"Spend guard"_s, FontRole::h2));
    appendCaption(u"Above this limit, Buy asks once more."_s);
    QVBoxLayout *rows = column(appendCard());
    auto *first = new QHBoxLayout;
    first->addWidget(makeSwitch(u"Ask once more before a label above  $"_s, m_screen.guardOn));
    first->addWidget(m_above);
    first->addStretch(1);
    rows->addLayout(first);
    bindText(m_above, m_screen.guardAbove);
    QWidget *cheaper = makeSwitch(u"Suggest a cheaper service that is just as fast"_s, m_screen.guardNamesCheaper);
    QWidget *reference = makeSwitch(u"Require a reference"_s, m_screen.guardWantsReference);
    rows->addWidget(cheaper);
    rows->addWidget(reference);
    m_guardParts = {m_above, cheaper, reference};
}

QWidget *RulesPage::makeRow(const Rule &rule)
{
    auto *box = new QCheckBox;
    auto *text = new TextLabel(rule.text);
    text->setWordWrap(true);
    auto *age = new TextLabel({}, FontRole::caption, &Tokens::warn);
    QWidget *source = nullptr;
    if (RulesScreen::isAddress(rule.source)) {
        auto *link = new Button(rule.source, Button::Kind::link);
        link->setFont(Theme::current().font(FontRole::caption));
        connect(link, &QPushButton::clicked, this, [this, address = rule.source] {
            spawn([&screen = m_screen, address] { return screen.openSource(address); });
        });
        source = link;
    } else {
        source = new TextLabel(rule.source, FontRole::caption, &Tokens::muted);
    }
    connect(box, &QCheckBox::clicked, this, [this, id = rule.id](bool on) { m_screen.setOn(id, on); });
    m_rows.append({rule, box, text, age});
    return makeLine(box, makePair(text, source), makePair(new TextLabel(ruleDayText(rule.checked)), age), rowHeight);
}

/// The list is made again only if other rules are in use.
void RulesPage::fillList()
{
    const QList<Rule> rules = m_screen.rules().book.value().rules;
    if (m_listed == rules)
        return;
    m_listed = rules;
    m_rows.clear();
    while (QLayoutItem *item = m_list->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const auto head = [](const QString &text) { return new TextLabel(text, FontRole::captionStrong, &Tokens::muted); };
    QWidget *heads = makeLine(head(u"On"_s), head(u"Rule and source"_s), head(u"Date checked"_s), groupHeight);
    m_list->addWidget(makeBand(&Tokens::header, heads, Qt::BottomEdge));
    QString group;
    for (const Rule &rule : rules) {
        if (rule.group != group) {
            group = rule.group;
            auto *title = new TextLabel(group, FontRole::captionStrong);
            title->setContentsMargins(margin, 0, margin, 0);
            title->setMinimumHeight(Theme::current().scaled(groupHeight));
            m_list->addWidget(
                makeBand(&Tokens::panel, title, m_rows.isEmpty() ? Qt::BottomEdge : Qt::TopEdge | Qt::BottomEdge));
        } else {
            m_list->addWidget(new Separator);
        }
        m_list->addWidget(makeRow(rule));
    }
    orderTabsByLayout(this);
}

void RulesPage::refresh()
{
    fillList();
    const QString refusal = m_screen.rules().refusal;
    m_count->setText(m_screen.countText());
    m_title->setText(m_screen.title());
    m_origin->setText(refusal.isEmpty() ? m_screen.origin() : refusal);
    m_origin->setInk(refusal.isEmpty() ? &Tokens::muted : &Tokens::warn);
    m_icon->set(refusal.isEmpty() ? u"ui_document"_s : u"ui_warning"_s,
                refusal.isEmpty() ? &Tokens::muted : &Tokens::warn);
    m_file->setFill(refusal.isEmpty() ? &Tokens::sheet : &Tokens::warnTint);
    m_file->setEdge(refusal.isEmpty() ? &Tokens::line : &Tokens::warnEdge);
    m_message->setText(m_screen.message);
    m_message->setVisible(!m_message->text().isEmpty());
    for (const Row &row : m_rows) {
        const bool isOn = m_screen.rules().isOn(row.rule.id);
        row.box->setChecked(isOn);
        row.text->setInk(isOn ? &Tokens::text : &Tokens::muted);
        row.age->setText(m_screen.ageText(row.rule));
        row.age->setVisible(!row.age->text().isEmpty());
        const QString day =
            QLocale(QLocale::English, QLocale::UnitedStates).toString(row.rule.checked, u"MMMM d, yyyy"_s);
        nameWidget(row.box, u"%1, %2, checked %3"_s.arg(row.rule.text, isOn ? u"on"_s : u"off"_s, day));
    }
    for (QWidget *part : m_guardParts)
        part->setEnabled(m_screen.guardOn);
    m_above->setFault(decimal(m_screen.guardAbove) ? QString() : u"Type plain dollars, for example 100.00."_s);
}

} // namespace parcelory
