#include "ui/LabelWindow.h"

#include "app/AppState.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"
#include "devices/LabelPicture.h"
#include "ui/log/ShipmentTexts.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/SegmentedControl.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/parts/Toolbar.h"
#include "ui/parts/WindowSize.h"
#include "ui/preview/FindingList.h"
#include "ui/preview/LabelSheet.h"
#include "ui/preview/VerdictNotice.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

enum Fit { fitted, fullSize };
enum Turn { asPrinted, upright };

constexpr int panelWidth = 246;
const QKeySequence copyKeys(Qt::CTRL | Qt::Key_C), saveKeys(Qt::CTRL | Qt::Key_S);

QString emptyText(LabelSight::State state)
{
    switch (state) {
    case LabelSight::State::nothing:
        return u"Choose a label in My Mailing Log."_s;
    case LabelSight::State::noCopy:
        return u"No copy of this label is stored, so it can't be shown."_s;
    case LabelSight::State::unread:
        return u"The mailing log can't be read now."_s;
    case LabelSight::State::undrawable:
        return u"This label can't be drawn."_s;
    case LabelSight::State::drawing:
    case LabelSight::State::drawn:
        break;
    }
    return {};
}

} // namespace

LabelWindow::LabelWindow(AppState &app, Screens &screens, QWidget *parent)
    : QWidget(parent, Qt::Window), m_app(app), m_screens(screens),
      m_smaller(new Button({}, Button::Kind::standard, u"ui_minus"_s)),
      m_larger(new Button({}, Button::Kind::standard, u"ui_plus"_s)),
      m_copy(new Button(u"Copy"_s, Button::Kind::standard, u"ui_copy"_s)),
      m_save(new Button(u"Save As…"_s, Button::Kind::standard, u"ui_export"_s)), m_fit(new SegmentedControl(u"Zoom"_s)),
      m_turn(new SegmentedControl(u"Turn"_s)), m_percent(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_bar(new BusyBar), m_pages(new QStackedWidget), m_sheet(new LabelSheet),
      m_empty(new EmptyState(u"ui_document"_s, {})), m_name(new TextLabel({}, FontRole::h2)),
      m_service(new TextLabel({}, FontRole::caption)), m_bought(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_tracking(new TextLabel({}, FontRole::mono)), m_hint(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_badge(new Badge({}, BadgeKind::plain)), m_verdict(new VerdictNotice), m_findings(new FindingList),
      m_foot(new Notice({}, &Tokens::muted, FontRole::caption)),
      m_size(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_isUpright(read(app.platform.preferences, settings::labelWindowUpright)), m_refresh([this] { refresh(); })
{
    const Theme &theme = Theme::current();
    auto *sheet = new QHBoxLayout;
    sheet->setSpacing(0);
    sheet->addWidget(m_sheet, 1);
    sheet->addWidget(makePanel());
    auto *page = new QWidget;
    page->setLayout(sheet);
    sheet->setContentsMargins(0, 0, 0, 0);
    m_pages->addWidget(page);
    auto *nothing = new PanelFrame(&Tokens::sheet);
    (new QVBoxLayout(nothing))->addWidget(m_empty);
    m_pages->addWidget(nothing);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(makeToolbar());
    rows->addWidget(m_bar);
    rows->addWidget(m_pages, 1);
    rows->addWidget(makeFoot());
    addShortcuts();
    orderTabsByLayout(this);
    connect(m_sheet, &LabelSheet::zoomed, this, &LabelWindow::refreshZoom);
    connect(m_sheet, &LabelSheet::closeRequested, this, &QWidget::close);
    connect(m_findings, &FindingList::closeRequested, this, &QWidget::close);
    connect(m_findings, &FindingList::findingChosen, this, &LabelWindow::showChosen);
    sizeWindow(*this, {theme.scaled(560), theme.scaled(520)}, {theme.scaled(720), theme.scaled(900)});
    restoreGeometry(read(app.platform.preferences, settings::labelWindowGeometry));
    m_refresh.follow(screens.openLabel, screens.settings);
    refresh();
    m_findings->setFocus();
}

QWidget *LabelWindow::makeToolbar()
{
    m_smaller->describe(u"Zoom out"_s, QKeySequence(QKeySequence::ZoomOut).toString(QKeySequence::NativeText));
    m_larger->describe(u"Zoom in"_s, QKeySequence(QKeySequence::ZoomIn).toString(QKeySequence::NativeText));
    for (Button *button : {m_smaller, m_larger})
        button->setFixedWidth(button->sizeHint().height());
    m_copy->setToolTip(copyKeys.toString(QKeySequence::NativeText));
    m_save->setToolTip(saveKeys.toString(QKeySequence::NativeText));
    m_fit->add(fitted, u"Fit"_s);
    m_fit->add(fullSize, u"100 %"_s);
    m_turn->add(asPrinted, u"As Printed"_s);
    m_turn->add(upright, u"Upright"_s);
    m_percent->setMinimumWidth(Theme::current().scaled(44));
    connect(m_smaller, &QPushButton::clicked, this, [this] { m_sheet->zoomBy(-1); });
    connect(m_larger, &QPushButton::clicked, this, [this] { m_sheet->zoomBy(+1); });
    connect(m_fit, &SegmentedControl::chosenByUser, this,
            [this](int fit) { m_sheet->setZoom(fit == fitted ? std::nullopt : std::optional(100)); });
    connect(m_turn, &SegmentedControl::chosenByUser, this, [this](int turn) {
        m_isUpright = turn == upright;
        write(m_app.platform.preferences, settings::labelWindowUpright, m_isUpright);
        refresh();
    });
    connect(m_copy, &QPushButton::clicked, this, &LabelWindow::copy);
    connect(m_save, &QPushButton::clicked, this,
            [this] { spawn([&label = m_screens.openLabel] { return label.save(); }); });
    return (new Toolbar)
        ->add(m_smaller)
        ->add(m_fit)
        ->add(m_larger)
        ->add(m_percent)
        ->add(m_turn)
        ->fill()
        ->add(m_copy)
        ->add(m_save);
}

QWidget *LabelWindow::makePanel()
{
    auto *panel = new PanelFrame(&Tokens::sheet);
    panel->setLines(Qt::LeftEdge);
    panel->setFixedWidth(Theme::current().scaled(panelWidth));
    auto *texts = new QVBoxLayout;
    texts->setContentsMargins(16, 16, 16, 6);
    texts->setSpacing(4);
    auto *title = new QHBoxLayout;
    title->addWidget(m_name, 1);
    title->addWidget(m_badge, 0, Qt::AlignTop);
    texts->addLayout(title);
    for (TextLabel *label : {m_name, m_service, m_bought, m_tracking, m_hint})
        label->setWordWrap(true);
    m_tracking->setTextInteractionFlags(Qt::TextSelectableByMouse);
    texts->addWidget(m_service);
    texts->addWidget(m_bought);
    texts->addWidget(m_tracking);
    texts->addSpacing(6);
    texts->addWidget(m_verdict);
    texts->addSpacing(6);
    texts->addWidget(m_hint);
    auto *rows = new QVBoxLayout(panel);
    rows->setContentsMargins(1, 0, 0, 0);
    rows->setSpacing(0);
    rows->addLayout(texts);
    rows->addWidget(m_findings, 1);
    return panel;
}

QWidget *LabelWindow::makeFoot()
{
    auto *foot = new PanelFrame(&Tokens::window);
    foot->setLines(Qt::TopEdge);
    foot->setMinimumHeight(Theme::current().scaled(30));
    auto *row = new QHBoxLayout(foot);
    row->setContentsMargins(16, 4, 12, 4);
    row->addWidget(m_foot, 1);
    row->addWidget(m_size);
    return foot;
}

void LabelWindow::addShortcuts()
{
    const auto add = [this](const QKeySequence &keys, auto action) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
    };
    add(QKeySequence(Qt::Key_Escape), [this] { close(); });
    add(QKeySequence(Qt::CTRL | Qt::Key_W), [this] { close(); });
    add(QKeySequence(QKeySequence::ZoomIn), [this] { m_sheet->zoomBy(+1); });
    add(QKeySequence(Qt::CTRL | Qt::Key_Equal), [this] { m_sheet->zoomBy(+1); });
    add(QKeySequence(QKeySequence::ZoomOut), [this] { m_sheet->zoomBy(-1); });
    add(QKeySequence(Qt::CTRL | Qt::Key_0), [this] { m_sheet->setZoom(std::nullopt); });
    add(QKeySequence(Qt::CTRL | Qt::Key_1), [this] { m_sheet->setZoom(100); });
    add(copyKeys, [this] { m_copy->click(); });
    add(saveKeys, [this] { m_save->click(); });
}

void LabelWindow::closeEvent(QCloseEvent *event)
{
    write(m_app.platform.preferences, settings::labelWindowGeometry, saveGeometry());
    QWidget::closeEvent(event);
}

/// The label's own turn, and the setting for the label printer.
bool LabelWindow::isTurnedByPrinter() const
{
    const auto picture = m_screens.openLabel.sight.value().picture;
    return picture && (m_screens.settings.rotate180 ? picture->isTurnedBySetting : picture->isTurned);
}

void LabelWindow::refresh()
{
    const std::optional<ShipmentRecord> record = m_screens.openLabel.label;
    const LabelSight sight = m_screens.openLabel.sight;
    setWindowTitle(record ? u"Label — "_s + record->recipientName() : u"Label"_s);
    m_bar->setBusy(sight.state == LabelSight::State::drawing);
    const QString nothing = emptyText(sight.state);
    m_pages->setCurrentIndex(nothing.isEmpty() ? 0 : 1);
    m_empty->set(u"ui_document"_s, nothing);
    m_sheet->setPicture(sight.picture);
    const bool turns = isTurnedByPrinter();
    m_turn->setVisible(turns);
    m_turn->choose(m_isUpright ? upright : asPrinted);
    m_sheet->setTurned(turns && !m_isUpright);
    for (QWidget *control :
         {static_cast<QWidget *>(m_smaller), static_cast<QWidget *>(m_larger), static_cast<QWidget *>(m_fit),
          static_cast<QWidget *>(m_copy), static_cast<QWidget *>(m_save)})
        enable(control, sight.picture != nullptr, m_findings);
    if (record)
        refreshPanel(*record, sight);
    m_foot->setText({});
    m_size->setText({});
    if (sight.picture)
        refreshFoot(*sight.picture);
    showChosen();
}

void LabelWindow::refreshPanel(const ShipmentRecord &record, const LabelSight &sight)
{
    m_name->setText(breakable(record.recipientName()));
    const bool isPractice = m_app.platform.practice;
    m_badge->setVisible(isPractice || record.testMode);
    m_badge->set(isPractice ? u"PRACTICE"_s : u"TEST"_s, isPractice ? BadgeKind::practice : BadgeKind::test);
    const bool isShipment = !record.service.isEmpty();
    m_service->setText(record.carrier + u' ' + record.service + u" · "_s + postageText(record));
    m_bought->setText(u"Bought "_s + timeText(record));
    m_tracking->setText(trackingLines(record.tracking));
    for (TextLabel *label : {m_service, m_bought, m_tracking})
        label->setVisible(isShipment);
    m_verdict->setVerdict(sight.verdict);
    m_verdict->setVisible(isShipment && sight.state != LabelSight::State::drawing);
    const QList<LabelFinding> findings = sight.verdict ? sight.verdict->findings : QList<LabelFinding>();
    m_findings->setFindings(findings);
    m_hint->setText(findings.isEmpty() ? QString() : u"Read from the label. Choose a line to see its place."_s);
}

void LabelWindow::refreshFoot(const LabelPicture &picture)
{
    const QString printer = m_screens.settings.zebraQueue.value().isEmpty() ? u"the label printer"_s
                                                                            : m_screens.settings.zebraQueue.value();
    const QString message = m_screens.openLabel.message;
    m_size->setText(u"%1 · %2 dpi"_s.arg(picture.sizeText()).arg(picture.dotsPerInch));
    m_foot->setLook(picture.notShown.isEmpty() ? QString() : u"ui_warning"_s,
                    picture.notShown.isEmpty() ? &Tokens::text : &Tokens::warn);
    m_foot->setToolTip(plainToolTip(picture.notShown.join(u' ')));
    if (!message.isEmpty())
        m_foot->setText(message);
    else if (picture.notShown.size() == 1)
        m_foot->setText(u"1 part of this label can't be shown."_s);
    else if (!picture.notShown.isEmpty())
        m_foot->setText(u"%1 parts of this label can't be shown."_s.arg(picture.notShown.size()));
    else if (!isTurnedByPrinter())
        m_foot->setText(u"Printed upright."_s);
    else if (m_isUpright)
        m_foot->setText(u"Shown upright. %1 prints it turned 180°."_s.arg(printer));
    else
        m_foot->setText(u"Turned 180° for %1: this is how it comes out."_s.arg(printer));
}

void LabelWindow::refreshZoom()
{
    const int percent = m_sheet->percent();
    m_percent->setText(QString::number(percent) + u" %"_s);
    if (m_sheet->isFitted() || percent == 100)
        m_fit->choose(m_sheet->isFitted() ? fitted : fullSize);
    else
        m_fit->chooseNone();
}

void LabelWindow::showChosen()
{
    const auto picture = m_screens.openLabel.sight.value().picture;
    const std::optional<LabelFinding> finding = m_findings->chosen();
    m_sheet->mark(finding && picture ? picture->placeOf(finding->elements) : LabelPlace());
}

void LabelWindow::copy()
{
    if (const auto picture = m_screens.openLabel.sight.value().picture)
        QGuiApplication::clipboard()->setImage(picture->pages.first().image);
}

} // namespace parcelory
