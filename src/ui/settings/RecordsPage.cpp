#include "ui/settings/RecordsPage.h"

#include "app/logs/VerifyTexts.h"
#include "app/records/RecordsScreen.h"
#include "app/records/RestoreTexts.h"
#include "core/Task.h"
#include "records/ShipmentStatus.h"
#include "ui/parts/Button.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/ProgressBar.h"
#include "ui/parts/Separator.h"
#include "ui/settings/CopyTable.h"
#include "ui/settings/RestoreDialog.h"
#include "ui/theme/Theme.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QShortcut>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int shownRows = 8;
constexpr qsizetype shownFindings = 20;

QString counted(qint64 count, const QString &word)
{
    const QString number = QLocale(QLocale::English, QLocale::UnitedStates).toString(count);
    return number + u' ' + word + (count == 1 ? QString() : u"s"_s);
}

} // namespace

RecordsPage::RecordsPage(RecordsScreen &records, QWidget *parent)
    : SettingsPage(u"Records"_s, parent), m_records(records),
      m_damage(new Notice(u"ui_warning"_s, &Tokens::warn, FontRole::strong)),
      m_age(new Notice(u"ui_success"_s, &Tokens::ok, FontRole::strong)),
      m_detail(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_copy(new Button(u"Copy Now"_s, Button::Kind::standard, u"ui_copy"_s)),
      m_folder(new LineEdit(u"Copies folder"_s)), m_message(new Notice(u"ui_error"_s, &Tokens::bad)),
      m_restored(new Notice(u"ui_success"_s, &Tokens::ok)), m_copies(new CopyTable),
      m_restore(new Button(u"Restore…"_s, Button::Kind::standard, u"ui_refund"_s)),
      m_sum(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_verify(new Button(u"Verify Log"_s, Button::Kind::standard, u"ui_shield"_s)),
      m_result(new Notice(u"ui_success"_s, &Tokens::ok, FontRole::strong)),
      m_findings(new TextLabel({}, FontRole::caption, &Tokens::muted)),
      m_progress(new ProgressBar(u"Verifying the mailing log"_s, 0)), m_refresh([this] { refresh(); })
{
    append(m_damage);
    appendStatus();
    appendCopies();
    appendLog();
    m_refresh.follow(records);
    refresh();
}

void RecordsPage::appendStatus()
{
    auto *choose = new Button(u"Choose…"_s);
    auto *open = new Button(u"Open Copies Folder"_s, Button::Kind::standard, u"ui_external"_s);
    QVBoxLayout *rows = column(appendCard());
    auto *words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(m_age);
    words->addWidget(m_detail);
    auto *first = new QHBoxLayout;
    first->addLayout(words, 1);
    first->addWidget(m_copy);
    rows->addLayout(first);
    rows->addWidget(new Separator(Qt::Horizontal));
    m_folder->setReadOnly(true);
    auto *second = new QHBoxLayout;
    second->addWidget(new TextLabel(u"Copies folder"_s, FontRole::body, &Tokens::muted));
    second->addWidget(m_folder, 1);
    second->addWidget(choose);
    second->addWidget(open);
    rows->addLayout(second);
    rows->addWidget(m_message);
    rows->addWidget(m_restored);
    connect(m_copy, &QPushButton::clicked, this,
            [this] { spawn([&records = m_records] { return records.copyNow(); }); });
    connect(choose, &QPushButton::clicked, this,
            [this] { spawn([&records = m_records] { return records.chooseFolder(); }); });
    connect(open, &QPushButton::clicked, this,
            [this] { spawn([&records = m_records] { return records.openFolder(); }); });
}

void RecordsPage::appendCopies()
{
    auto *kept =
        new TextLabel(u"Once a day, before an import and before an update. %1 daily and %2 monthly copies are kept."_s
                          .arg(RecordCopies::keptDays)
                          .arg(RecordCopies::keptMonths),
                      FontRole::caption, &Tokens::muted);
    kept->setWordWrap(true);
    auto *head = new QWidget;
    auto *words = new QHBoxLayout(head);
    words->setContentsMargins(0, 0, 0, 0);
    words->setSpacing(7);
    words->addWidget(new TextLabel(u"Copies"_s, FontRole::h2));
    words->addWidget(kept, 1);
    append(head);
    QVBoxLayout *rows = column(appendListCard());
    const Theme &theme = Theme::current();
    m_copies->setFixedHeight(theme.scaled(RowTable::headPixels + shownRows * RowTable::rowPixels) + 2);
    rows->setContentsMargins(1, 1, 1, 8);
    rows->addWidget(m_copies);
    auto *foot = new QHBoxLayout;
    foot->setContentsMargins(16, 8, 16, 0);
    foot->addWidget(m_restore);
    foot->addSpacing(6);
    foot->addWidget(new TextLabel(u"First shows what the copy contains and what you would lose."_s, FontRole::caption,
                                  &Tokens::muted));
    foot->addStretch(1);
    foot->addWidget(m_sum);
    rows->addLayout(foot);
    connect(m_copies, &CopyTable::chosenChanged, this, [this] { m_records.selected = m_copies->chosen().toString(); });
    connect(m_copies, &CopyTable::restoreRequested, this, &RecordsPage::openRestore);
    connect(m_restore, &QPushButton::clicked, this, &RecordsPage::openRestore);
    connect(&m_records.restore, &RestoreScreen::opened, this, [this] {
        auto *dialog = new RestoreDialog(m_records.restore.clock(), m_records.restore, window());
        dialog->open();
    });
}

void RecordsPage::appendLog()
{
    append(new TextLabel(u"Mailing log"_s, FontRole::h2));
    QVBoxLayout *rows = column(appendCard());
    auto *line = new QHBoxLayout;
    line->addWidget(m_verify);
    line->addWidget(m_result, 1, Qt::AlignVCenter);
    rows->addLayout(line);
    rows->addWidget(m_progress);
    m_findings->setWordWrap(true);
    m_findings->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    rows->addWidget(m_findings);
    connect(m_verify, &QPushButton::clicked, this,
            [this] { spawn([&records = m_records] { return records.verify(); }); });
    auto *stop = new QShortcut(Qt::Key_Escape, this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(stop, &QShortcut::activated, this, [this] { m_records.cancelVerifying(); });
}

void RecordsPage::openRestore()
{
    spawn([&records = m_records] { return records.openRestore(); });
}

/// A damaged log brings the clerk here.
void RecordsPage::showEvent(QShowEvent *event)
{
    SettingsPage::showEvent(event);
    // The widgets around the page are shown after it.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_refresh.refreshNow();
            if (m_damage->isVisible() && m_restore->isEnabled())
                m_restore->setFocus();
        },
        Qt::QueuedConnection);
}

void RecordsPage::refresh()
{
    m_damage->setText(m_records.damageText());
    const std::optional<RecordCopy> last = m_records.lastGood();
    const bool isFine = last && !m_records.isLate();
    m_age->setText(m_records.copying ? u"Copying…"_s : m_records.ageText());
    m_age->setLook(isFine ? u"ui_success"_s : u"ui_warning"_s, isFine ? &Tokens::ok : &Tokens::warn);
    m_age->setTextInk(isFine ? &Tokens::text : &Tokens::warn);
    m_detail->setText(last ? u"%1 · %2 · checked"_s.arg(dateTimeText(last->madeAt), counted(last->labels, u"label"_s))
                           : QString());
    m_detail->setVisible(last.has_value());
    setBusy(m_copy, m_records.copying);
    m_folder->setText(RestoreTexts::placeOf(m_records.folder));
    m_folder->setToolTip(plainToolTip(m_records.folder));
    m_message->setText(m_records.message);
    m_restored->setText(m_records.restored);
    const QList<RecordCopy> copies = m_records.copies;
    m_copies->setCopies(copies);
    const bool isOffered = m_copies->chosen().toString() != m_records.selected.value();
    if (isOffered)
        m_copies->choose(m_records.selected.value());
    m_restore->setEnabled(m_records.canRestore());
    if (isOffered && m_damage->isVisible() &&
        m_restore->isEnabled()) // the page was shown before the copies were listed
        m_restore->setFocus();
    double bytes = 0;
    for (const RecordCopy &copy : copies)
        bytes += copy.bytes();
    m_sum->setText(copies.size() == 1 ? u"1 copy, "_s + RestoreTexts::sizeText(bytes)
                                      : u"%1 copies, %2"_s.arg(copies.size()).arg(RestoreTexts::sizeText(bytes)));
    refreshLog();
}

void RecordsPage::refreshLog()
{
    const std::optional<LogChain::Report> report = m_records.report;
    const QString failure = m_records.verifyFailure;
    const bool isGood = report && report->findings.isEmpty() && failure.isEmpty();
    setBusy(m_verify, m_records.verifying);
    m_progress->setVisible(m_records.verifying);
    m_progress->setProgress(m_records.verified);
    m_result->setLook(isGood                         ? u"ui_success"_s
                      : failure.isEmpty() && !report ? u"ui_info"_s
                                                     : u"ui_error"_s,
                      isGood                         ? &Tokens::ok
                      : failure.isEmpty() && !report ? &Tokens::muted
                                                     : &Tokens::bad);
    m_result->setTextInk(&Tokens::text);
    m_result->setText(m_records.verifying  ? u"Verifying… Esc stops."_s
                      : !failure.isEmpty() ? failure
                      : report             ? VerifyTexts::summaryOf(*report)
                                           : u"Not verified yet."_s);
    QStringList lines;
    if (report && failure.isEmpty()) {
        for (const LogChain::Finding &finding : report->findings.first(qMin(report->findings.size(), shownFindings)))
            lines += VerifyTexts::sentenceOf(finding);
        lines += u"Verified %1."_s.arg(dateTimeText(m_records.verifiedAt));
    }
    m_findings->setText(lines.join(u'\n'));
    m_findings->setVisible(!lines.isEmpty() && !m_records.verifying);
}

} // namespace parcelory
