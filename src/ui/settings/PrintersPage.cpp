#include "ui/settings/PrintersPage.h"

#include "app/AppState.h"
#include "app/settings/SettingsScreen.h"
#include "core/Task.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/IconView.h"
#include "ui/parts/Notice.h"
#include "ui/parts/TextLabel.h"
#include "ui/preview/LabelThumbnail.h"
#include "ui/settings/SettingsPage.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QVBoxLayout>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int labelColumn = 120, menuWidth = 280, rowGap = 5;
const QString printerIcon = u"ui_printer"_s;

/// The offered queues and, if it is missing among them, the chosen queue: the menu must never show another queue as
/// chosen.
QList<ComboBox::Item> itemsFor(const SettingsScreen &settings, const QStringList &offered, const QString &chosen)
{
    QList<ComboBox::Item> items;
    for (const QString &queue : offered)
        items.append({queue, queue, printerIcon});
    if (!chosen.isEmpty() && !offered.contains(chosen))
        items.append({settings.queueTitle(chosen), chosen, printerIcon});
    return items;
}

FormRow *rowFor(QWidget *widget)
{
    auto *row = new FormRow({}, labelColumn);
    row->add(widget, 1)->setMinimumHeight(0);
    return row;
}

} // namespace

PrintersPage::PrintersPage(AppState &app, SettingsScreen &settings, QWidget *parent)
    : SettingsPage(u"Printers"_s, parent), m_app(app), m_settings(settings), m_busy(new BusyBar),
      m_label(new ComboBox(u"Label printer"_s)), m_document(new ComboBox(u"Document printer"_s)),
      m_test(new Button(u"Print Test"_s)),
      m_refreshButton(new Button(u"Refresh"_s, Button::Kind::standard, u"ui_refresh"_s)),
      m_noZebra(new Notice(u"ui_warning"_s, &Tokens::warn)), m_outcome(new Notice({}, &Tokens::ok, FontRole::caption)),
      m_undo(new Button(u"Undo"_s, Button::Kind::link)), m_testLabel(new LabelThumbnail(settings.testLabel)),
      m_noZebraRow(rowFor(m_noZebra)), m_outcomeRow(rowFor(m_outcome)),
      m_scaleName(new TextLabel({}, FontRole::strong)),
      m_scaleState(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_weight(new TextLabel({}, FontRole::h2)),
      m_settling(new Notice(u"ui_check"_s, &Tokens::ok)), m_refresh([this] { refresh(); })
{
    appendLabels();
    appendDocuments();
    appendScale();
    m_outcomeRow->add(m_undo);
    auto *test = qobject_cast<QBoxLayout *>(m_outcomeRow->layout());
    test->insertWidget(test->indexOf(m_outcome), m_testLabel);
    connect(m_label, &QComboBox::activated, this,
            [this](int at) { m_settings.chooseLabelQueue(m_label->itemData(at).toString()); });
    connect(m_document, &QComboBox::activated, this,
            [this](int at) { m_settings.documentQueue = m_document->itemData(at).toString(); });
    connect(m_undo, &QPushButton::clicked, this, [this] { m_settings.undoReplacement(); });
    connect(m_test, &QPushButton::clicked, this, [&settings] { spawn([&] { return settings.printTest(); }); });
    connect(m_refreshButton, &QPushButton::clicked, this,
            [&settings] { spawn([&] { return settings.refreshPrinters(); }); });
    m_refresh.follow(app, settings);
    refresh();
}

void PrintersPage::appendScale()
{
    append(new TextLabel(u"Scale"_s, FontRole::h2));
    auto *card = new QHBoxLayout;
    auto *words = new QVBoxLayout;
    words->setSpacing(1);
    words->addWidget(m_scaleName);
    words->addWidget(m_scaleState);
    m_scaleState->setWordWrap(true);
    card->setSpacing(12);
    card->addWidget(new IconView(u"ui_scale"_s, 20));
    card->addLayout(words, 1);
    card->addWidget(m_weight);
    card->addWidget(m_settling, 0, Qt::AlignVCenter);
    m_settling->setUnwrapped();
    column(appendCard())->addLayout(card);
}

void PrintersPage::refreshScale()
{
    const USBScale &scale = m_app.scale;
    const QString fault = scale.fault;
    m_scaleName->setText(scale.connected ? scale.deviceName.value() : u"No scale"_s);
    m_scaleState->setText(scale.connected ? u"Connected · waits for a steady reading"_s
                                          : u"No HID scale detected. Plug in the USB scale and it will appear here "
                                            "automatically."_s);
    const bool faulty = scale.connected && !fault.isEmpty(); // the last weight is then meaningless
    const bool weighs = scale.connected && !faulty && scale.ounces.value().has_value();
    m_weight->setText(scale.display());
    m_weight->setVisible(scale.connected && !faulty);
    m_settling->setLook(faulty         ? u"ui_warning"_s
                        : scale.stable ? u"ui_check"_s
                                       : u"ui_pending"_s,
                        faulty         ? &Tokens::warn
                        : scale.stable ? &Tokens::ok
                                       : &Tokens::muted);
    const QString settling = scale.stable ? u"steady"_s : u"moving…"_s;
    m_settling->setText(faulty ? fault : weighs ? settling : QString());
}

void PrintersPage::showEvent(QShowEvent *event)
{
    SettingsPage::showEvent(event);
    if (m_settings.queues.value().isEmpty()) // not listed yet
        spawn([&settings = m_settings] { return settings.refreshPrinters(); });
}

void PrintersPage::appendLabels()
{
    QVBoxLayout *rows = column(appendCard());
    rows->setSpacing(rowGap);
    m_label->setMaximumWidth(Theme::current().scaled(menuWidth));
    auto *row = new FormRow(u"Label printer"_s, labelColumn);
    row->add(m_label, 1000)->add(m_test)->add(m_refreshButton)->fill();
    rows->addWidget(row);
    rows->addWidget(m_noZebraRow);
    rows->addWidget(m_outcomeRow);
    rows->addWidget(rowFor(makeSwitch(u"Show all printers"_s, m_settings.showAllPrinters)));
    rows->addWidget(rowFor(makeSwitch(u"Turn labels upside down before printing"_s, m_settings.rotate180)));
    rows->addWidget(m_busy);
}

void PrintersPage::appendDocuments()
{
    QVBoxLayout *rows = column(appendCard());
    rows->setSpacing(rowGap);
    m_document->setMaximumWidth(Theme::current().scaled(menuWidth));
    auto *row = new FormRow(u"Document printer"_s, labelColumn);
    row->add(m_document, 1000)->fill();
    rows->addWidget(row);
    auto *hint = new TextLabel(u"Commercial invoices and customs papers. With no printer chosen they open in the PDF "
                               "viewer."_s,
                               FontRole::caption, &Tokens::muted);
    hint->setWordWrap(true);
    rows->addWidget(rowFor(hint));
}

void PrintersPage::refresh()
{
    const QString zebra = m_settings.zebraQueue;
    QList<ComboBox::Item> labels = itemsFor(m_settings, m_settings.labelPrinterChoices(), zebra);
    if (zebra.isEmpty())
        labels.prepend({u"— none chosen —"_s, QString()});
    m_label->offer(labels, zebra);
    QList<ComboBox::Item> documents = itemsFor(m_settings, m_settings.queues, m_settings.documentQueue);
    documents.prepend({u"— open PDFs in Preview —"_s, QString()});
    m_document->offer(documents, m_settings.documentQueue.value());

    const PrinterMessage outcome = m_settings.printerMessage;
    m_outcome->setLook(outcome.ok ? u"ui_success"_s : u"ui_warning"_s, outcome.ok ? &Tokens::ok : &Tokens::warn);
    if (outcome.ok)
        m_outcome->setTextInk(&Tokens::text);
    m_outcome->setText(outcome.text);
    m_testLabel->setVisible(m_settings.testLabel.label.value().has_value());
    m_outcomeRow->setVisible(!outcome.text.isEmpty());
    m_undo->setVisible(!outcome.replacedQueue.isEmpty());
    m_noZebra->setText(m_settings.zebraHint());
    m_noZebraRow->setVisible(!m_settings.zebraHint().isEmpty());

    m_busy->setBusy(m_settings.busy);
    setBusy(m_test, m_settings.busy);
    setBusy(m_refreshButton, m_settings.busy);
    refreshScale();
}

} // namespace parcelory
