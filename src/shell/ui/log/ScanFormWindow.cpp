#include "shell/ui/log/ScanFormWindow.h"

#include "records/Reprint.h"
#include "records/SaveFile.h"
#include "shell/ui/parts/Attention.h"
#include "shell/ui/parts/Button.h"
#include "shell/ui/parts/Toolbar.h"

#include <QBuffer>
#include <QFileInfo>
#include <QPdfDocument>
#include <QPdfView>
#include <QPointer>
#include <QShortcut>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QKeySequence printKeys(Qt::CTRL | Qt::Key_P), saveKeys(Qt::CTRL | Qt::Key_S);

Task<QString> print(AppState &app, QByteArray form)
{
    const bool sentToQueue = co_await printDocument(app, form);
    co_return sentToQueue ? u"SCAN form sent to the printer."_s
                          : u"SCAN form opened in Preview — set a document printer in Settings."_s;
}

/// Gives nothing when the clerk thinks better of it.
Task<QString> save(AppState &app, QByteArray form)
{
    const QString today = app.platform.clock.now().date().toString(Qt::ISODate);
    const QString path = co_await app.platform.prompts.saveFile(u"Save SCAN Form"_s, u"SCAN Form %1.pdf"_s.arg(today));
    if (path.isEmpty())
        co_return QString();
    auto writing = onPool([path, form] { saveBytes(path, form); });
    co_await writing;
    co_return u"Saved to "_s + QFileInfo(path).fileName();
}

} // namespace

ScanFormWindow::ScanFormWindow(AppState &app, QWidget *parent)
    : QWidget(parent, Qt::Window), m_app(app), m_bytes(new QBuffer(this)), m_document(new QPdfDocument(this)),
      m_view(new QPdfView(this)), m_outcome(new ElidedLabel({}, FontRole::body, &Tokens::muted)),
      m_save(new Button(u"Save…"_s, Button::Kind::standard, u"ui_export"_s)),
      m_print(new Button(u"Print"_s, Button::Kind::solid, u"ui_printer"_s)), m_follower([this] { refresh(); })
{
    setWindowTitle(u"SCAN Form"_s);
    setMinimumSize(Theme::current().scaled(420), 320);
    resize(Theme::current().scaled(760), 880);
    m_view->setAccessibleName(u"The SCAN form"_s);
    m_view->setFocusPolicy(Qt::StrongFocus); // the arrow keys scroll it
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setPageMode(QPdfView::PageMode::MultiPage);
    m_view->setZoomMode(QPdfView::ZoomMode::FitToWidth);
    m_view->setDocument(m_document);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(makeToolbar());
    rows->addWidget(m_view, 1);
    for (const QKeySequence &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    connect(new QShortcut(printKeys, this), &QShortcut::activated, m_print, &QPushButton::click);
    connect(new QShortcut(saveKeys, this), &QShortcut::activated, m_save, &QPushButton::click);
    m_follower.follow(app.scanFormPDF);
    refresh();
    m_print->setFocus();
}

/// The view draws with the document, which is a child as well.
ScanFormWindow::~ScanFormWindow()
{
    delete m_view;
}

QWidget *ScanFormWindow::makeToolbar()
{
    m_print->setToolTip(printKeys.toString(QKeySequence::NativeText));
    m_save->setToolTip(saveKeys.toString(QKeySequence::NativeText));
    m_outcome->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // the buttons keep their places
    connect(m_print, &QPushButton::clicked, this, [this] { begin(Operation::print); });
    connect(m_save, &QPushButton::clicked, this, [this] { begin(Operation::save); });
    return (new Toolbar)->add(m_outcome)->add(m_save)->add(m_print);
}

void ScanFormWindow::refresh()
{
    m_document->close();
    m_bytes->close();
    m_bytes->setData(m_app.scanFormPDF.value().value_or(QByteArray()));
    m_bytes->open(QIODevice::ReadOnly);
    m_document->load(m_bytes);
    say(m_document->status() == QPdfDocument::Status::Ready
            ? u"Hand one printed copy to the carrier."_s
            : u"The form cannot be shown here, but it can be printed and saved."_s);
}

void ScanFormWindow::say(const QString &outcome)
{
    m_outcome->setFullText(outcome);
    announce(m_outcome);
}

void ScanFormWindow::begin(Operation operation)
{
    if (m_busy)
        return;
    m_busy = true;
    say({});
    const QByteArray form = m_app.scanFormPDF.value().value_or(QByteArray());
    spawn([self = QPointer(this), operation, form] { return self->run(operation, form); });
}

Task<> ScanFormWindow::run(Operation operation, QByteArray form)
{
    AppState &app = m_app;
    const QPointer<ScanFormWindow> self = this; // it may be closed meanwhile
    QString outcome;
    try {
        outcome = co_await (operation == Operation::print ? print(app, form) : save(app, form));
    } catch (const AppError &error) {
        outcome = error.description();
        app.errors.record(u"SCAN Form"_s, error, Popup::no);
    }
    if (!self)
        co_return;
    self->m_busy = false;
    self->say(outcome);
}

} // namespace parcelory
