#include "ui/log/DocumentPages.h"

#include "ui/parts/PanelFrame.h"
#include "ui/theme/Tokens.h"

#include <QBuffer>
#include <QPdfDocument>
#include <QPdfView>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace parcelory {

DocumentPages::DocumentPages(const QString &name, QWidget *parent) : QScrollArea(parent)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus); // the arrow keys scroll it
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // always there: the pages' size must not depend on it
    auto *sheet = new PanelFrame(&Tokens::window);
    m_column = new QVBoxLayout(sheet);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_column->setAlignment(Qt::AlignTop);
    setWidget(sheet);
}

DocumentPages::~DocumentPages()
{
    clear();
}

/// Deletes the view first, because it uses its document until then.
void DocumentPages::clear()
{
    for (const Part &part : m_parts) {
        delete part.view;
        delete part.document;
    }
    m_parts.clear();
}

void DocumentPages::setDocuments(const QList<QByteArray> &documents)
{
    clear();
    for (const QByteArray &bytes : documents) {
        auto *document = new QPdfDocument(this);
        auto *buffer = new QBuffer(document);
        buffer->setData(bytes);
        buffer->open(QIODevice::ReadOnly);
        document->load(buffer);
        auto *view = new QPdfView;
        view->setFocusPolicy(Qt::NoFocus);
        view->setFrameShape(QFrame::NoFrame);
        view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view->setPageMode(QPdfView::PageMode::MultiPage);
        view->setZoomMode(QPdfView::ZoomMode::FitToWidth);
        view->setDocument(document);
        m_column->addWidget(view);
        m_parts.append({document, view});
    }
    fit();
    verticalScrollBar()->setValue(0);
}

bool DocumentPages::areReadable() const
{
    return std::ranges::all_of(m_parts,
                               [](const Part &part) { return part.document->status() == QPdfDocument::Status::Ready; });
}

void DocumentPages::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    fit();
}

/// Gives every view the height of all its pages, so that only this area scrolls.
void DocumentPages::fit()
{
    int total = 0;
    for (const auto &[document, view] : m_parts) {
        const QMargins margins = view->documentMargins();
        const double width = std::max(1, viewport()->width() - margins.left() - margins.right());
        double height = margins.top() + margins.bottom();
        for (int page = 0; page < document->pageCount(); ++page) {
            const QSizeF size = document->pagePointSize(page);
            height += size.height() * width / std::max(1.0, size.width()) + view->pageSpacing();
        }
        view->setFixedHeight(int(height));
        total += int(height);
    }
    widget()->resize(viewport()->width(), std::max(total, viewport()->height()));
}

} // namespace parcelory
