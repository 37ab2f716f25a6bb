#include "ui/label/BuyBlock.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "carrier/ShippoRecords.h"
#include "core/Text.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString buyText = u"Buy & Print Label"_s;
const QString stillAsking =
    u"Still checking whether this recipient's last label was bought. You can buy again once Shippo answers."_s;

const QString readingInvoice = u"Loading the scanned invoice. You can buy once it is in the form."_s;

struct ModeLook {
    QString word;
    BadgeKind badge;
    Button::Kind button;
    QString consequence;
};

ModeLook lookOf(PostageMode mode)
{
    switch (mode) {
    case PostageMode::practice:
        return {u"PRACTICE"_s, BadgeKind::practice, Button::Kind::practice, u"Nothing is bought"_s};
    case PostageMode::test:
        return {u"TEST"_s, BadgeKind::test, Button::Kind::test, u"Not real postage"_s};
    case PostageMode::live:
        return {u"LIVE"_s, BadgeKind::live, Button::Kind::solid, u"Charges the account"_s};
    case PostageMode::unknown:
        return {u"…"_s, BadgeKind::plain, Button::Kind::solid, u"Reading the API key"_s};
    case PostageMode::none:
        break;
    }
    return {u"NO KEY"_s, BadgeKind::pending, Button::Kind::solid, u"Add an API key in Settings"_s};
}

} // namespace

BuyBlock::BuyBlock(LabelScreen &screen, KeysScreen &keys, SettingsScreen &settings, QWidget *parent)
    : PanelFrame(&Tokens::sheet, parent), m_screen(screen), m_keys(keys), m_settings(settings),
      m_none(new TextLabel(u"No rate chosen."_s, FontRole::body, &Tokens::muted)), m_summary(new QWidget),
      m_lines(new QGridLayout), m_service(new ElidedLabel({}, FontRole::strong)),
      m_transit(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_price(new TextLabel({}, FontRole::total)),
      m_to(nullptr), m_package(nullptr), m_extras(nullptr), m_printer(nullptr), m_uninsured(nullptr),
      m_cut(new Notice(u"ui_warning"_s, &Tokens::warn)), m_second(new Notice(u"ui_warning"_s, &Tokens::warn)),
      m_buy(new Button(buyText)), m_mode(new Badge({}, BadgeKind::plain)),
      m_consequence(new TextLabel({}, FontRole::caption)), m_refresh([this] { refresh(); })
{
    setCard();
    auto *head = new QGridLayout;
    head->addWidget(m_service, 0, 0);
    head->addWidget(m_transit, 1, 0);
    head->addWidget(m_price, 0, 1, 2, 1, Qt::AlignRight | Qt::AlignVCenter);
    head->setColumnStretch(0, 1);
    head->setVerticalSpacing(1);

    auto *summary = new QVBoxLayout(m_summary);
    summary->setContentsMargins(0, 0, 0, 0);
    summary->setSpacing(4);
    summary->addLayout(head);
    summary->addWidget(new Separator);
    summary->addLayout(m_lines);
    m_lines->setVerticalSpacing(3);
    m_lines->setHorizontalSpacing(8);
    m_lines->setColumnStretch(1, 1);
    m_to = addLine(u"To"_s);
    m_package = addLine(u"Package"_s);
    m_extras = addLine(u"Extras"_s);
    m_uninsured = addLine({});
    m_uninsured->setFont(Theme::current().font(FontRole::captionStrong));
    m_uninsured->setInk(&Tokens::warn);
    m_printer = addLine(u"Printer"_s);

    m_buy->ignoreReturn();
    m_buy->setFont(Theme::current().font(FontRole::h2));
    m_buy->setFixedHeight(Theme::current().scaled(42));
    m_buy->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto *foot = new QHBoxLayout;
    foot->setSpacing(6);
    foot->addWidget(m_mode);
    foot->addWidget(m_consequence);
    foot->addStretch(1);
    const QString keysText = QKeySequence(Qt::CTRL | Qt::Key_Return).toString(QKeySequence::NativeText);
    foot->addWidget(new TextLabel(keysText, FontRole::caption, &Tokens::muted));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(15, 12, 15, 12);
    column->setSpacing(6);
    column->addWidget(m_none);
    column->addWidget(m_summary);
    column->addWidget(m_cut);
    column->addWidget(m_second);
    column->addWidget(m_buy);
    column->addLayout(foot);

    connect(m_buy, &QPushButton::clicked, this, &BuyBlock::buyRequested);
    m_busyNow = screen.busy.addNotifier([this] { m_buy->setEnabled(m_screen.nextStep() == NextStep::buy); });
    m_refresh.follow(screen, keys, settings);
    refresh();
}

TextLabel *BuyBlock::addLine(const QString &name)
{
    const int row = m_lines->rowCount();
    auto *text = new TextLabel({}, FontRole::caption);
    text->setWordWrap(true);
    if (!name.isEmpty()) {
        auto *label = new TextLabel(name, FontRole::caption, &Tokens::muted);
        m_lines->addWidget(label, row, 0, Qt::AlignTop);
        m_named.emplace_back(label, text);
    }
    m_lines->addWidget(text, row, 1);
    m_lines->setColumnMinimumWidth(0, Theme::current().scaled(54));
    return text;
}

void BuyBlock::setLines(int shown)
{
    QStringList hidden;
    for (int at = 0; at < lineTotal; ++at) {
        const auto &[name, text] = m_named[size_t(at)];
        name->setVisible(at < shown);
        text->setVisible(at < shown);
        if (at >= shown)
            hidden += text->text();
    }
    m_summary->setToolTip(hidden.isEmpty() ? QString() : plainToolTip(hidden.join(u'\n')));
    m_summary->layout()->activate(); // the caller asks for the height now
}

QString BuyBlock::printerText() const
{
    const QString queue = m_settings.zebraQueue;
    if (queue.isEmpty())
        return u"No printer chosen — choose one in Settings"_s;
    return m_settings.rotate180 ? queue + u" · rotated 180°"_s : queue;
}

void BuyBlock::refresh()
{
    const std::optional<ShippoRate> rate = m_screen.selectedRate();
    m_none->setVisible(!rate);
    m_summary->setVisible(rate.has_value());
    if (rate) {
        m_service->setFullText(serviceName(rate->servicelevel));
        m_transit->setText(LabelTexts::rateDetails(*rate, m_screen.rates));
        m_price->setText(u'$' + rate->amount);
        m_to->setText(breakable(LabelTexts::printedRecipient(m_screen).join(u'\n')));
        m_package->setText(m_screen.weightDisplay() + u" · "_s + LabelTexts::mailpieceName(m_screen));
        m_extras->setText(LabelTexts::extrasSummary(m_screen));
        m_uninsured->setText(LabelTexts::uninsuredNote(m_screen));
        m_printer->setText(printerText());
        m_printer->setInk(m_settings.zebraQueue.value().isEmpty() ? &Tokens::warn : &Tokens::text);
    }
    m_uninsured->setVisible(!m_uninsured->text().isEmpty());
    m_cut->setText(rate ? LabelTexts::cutWarning(m_screen) : QString());
    m_buy->setEnabled(m_screen.nextStep() == NextStep::buy);
    refreshSecondLabel(rate.has_value());
    refreshMode();
}

void BuyBlock::refreshSecondLabel(bool hasRate)
{
    const QString warning = m_screen.secondLabel, question = m_screen.spendQuestion;
    const bool isSecond = hasRate && !warning.isEmpty();
    m_second->setText(hasRate && m_screen.awaitsFill()    ? readingInvoice
                      : hasRate && m_screen.isBuyClosed() ? stillAsking
                      : hasRate                           ? joinPresent({warning, question}, u"\n"_s)
                                                          : QString());
    m_buy->setText(!isSecond && hasRate && !question.isEmpty() ? u"Buy for $"_s + m_screen.selectedRate()->amount
                   : !isSecond                                 ? buyText
                   : m_screen.secondLabelAgreed                ? u"Buy a Second Label"_s
                                                               : u"Bought Already — Buy Again?"_s);
}

void BuyBlock::refreshMode()
{
    const ModeLook look = lookOf(m_keys.mode);
    m_buy->setKind(look.button);
    m_mode->set(look.word, look.badge);
    m_consequence->setText(look.consequence);
    nameWidget(m_buy, m_buy->text());
    if (const QString words = look.word + u": "_s + look.consequence; words != m_buy->accessibleDescription())
        m_buy->setAccessibleDescription(words);
}

} // namespace parcelory
