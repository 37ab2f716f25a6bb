#include "devices/LabelPicture.h"

#include "core/AppError.h"
#include "devices/Zpl.h"
#include "devices/zpl/ZplPainter.h"
#include "devices/zpl/ZplReader.h"

#include <QBuffer>
#include <QCache>
#include <QGuiApplication>
#include <QImageReader>
#include <QPageSize>
#include <QPainter>
#include <QPdfDocument>
#include <QPdfWriter>

#include <algorithm>
#include <mutex>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int widest = 2400, longest = 4800, mostPages = 10;
constexpr int sharpness = 3; ///< a thumbnail on a screen of three pixels for each logical pixel

AppError unreadable()
{
    return AppError(u"The label can't be drawn."_s);
}

/// Transparent paper is white paper.
QImage onWhite(const QImage &image)
{
    QImage paper(image.size(), QImage::Format_RGB32);
    paper.fill(Qt::white);
    QPainter(&paper).drawImage(0, 0, image);
    return paper;
}

void addZpl(LabelPicture &picture, const QByteArray &bytes)
{
    const QByteArray clamped = Zpl::clamped(bytes); // as the printer gets it
    const ZplDocument document = readZpl(clamped);
    picture.notShown = document.unknown;
    for (const ZplLabel &label : document.labels) {
        const ZplPicture drawn = paintZpl(label);
        picture.pages += LabelPage{drawn.image, drawn.places};
        picture.notShown += drawn.notDrawn;
    }
    picture.isTurned = Zpl::leavesTurned(clamped);
    picture.isTurnedBySetting = Zpl::leavesTurned(Zpl::rotated(clamped));
}

void addPdf(LabelPicture &picture, const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QPdfDocument document;
    document.load(&buffer);
    if (document.status() != QPdfDocument::Status::Ready)
        throw unreadable();
    constexpr double pointsPerInch = 72;
    for (int page = 0; page < std::min(document.pageCount(), mostPages); ++page) {
        const QSize dots = (document.pagePointSize(page) * picture.dotsPerInch / pointsPerInch).toSize();
        picture.pages += LabelPage{onWhite(document.render(page, dots.boundedTo({widest, longest}))), {}};
    }
}

void addPng(LabelPicture &picture, const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer, "png");
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > 2 * widest || size.height() > 2 * longest)
        throw unreadable();
    const QImage image = reader.read();
    constexpr double inchesPerMeter = 39.37;
    picture.pages += LabelPage{onWhite(image), {}};
    if (const int dots = qRound(image.dotsPerMeterX() / inchesPerMeter); dots >= 150) // otherwise a screen's
        picture.dotsPerInch = dots;
}

std::shared_ptr<const LabelPicture> draw(const QByteArray &label)
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        throw unreadable(); // without fonts
    LabelPicture picture;
    switch (labelKind(label)) {
    case LabelKind::zpl:
        addZpl(picture, label);
        break;
    case LabelKind::pdf:
        addPdf(picture, label);
        break;
    case LabelKind::png:
        addPng(picture, label);
        break;
    case LabelKind::notALabel:
        break;
    }
    if (picture.pages.isEmpty() || picture.pages.first().image.isNull())
        throw unreadable();
    picture.thumbnail =
        picture.pages.first().image.scaled(thumbnailSize * sharpness, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return std::make_shared<const LabelPicture>(std::move(picture));
}

} // namespace

LabelPlace LabelPicture::placeOf(qsizetype element) const
{
    LabelPlace place;
    for (const LabelPage &page : pages) {
        if (element < page.places.size()) {
            place.area = page.places.value(element).intersected(page.image.rect());
            return place;
        }
        element -= page.places.size();
        ++place.page;
    }
    return {};
}

LabelPlace LabelPicture::placeOf(const QList<qsizetype> &elements) const
{
    LabelPlace all;
    for (const qsizetype element : elements) {
        const LabelPlace place = placeOf(element);
        if (all.area.isEmpty())
            all = place;
        else if (place.page == all.page)
            all.area |= place.area;
    }
    return all;
}

QString LabelPicture::sizeText() const
{
    const auto inches = [this](int dots) { return QString::number(qRound(dots * 10.0 / dotsPerInch) / 10.0); };
    const QSize size = pages.first().image.size();
    return u"%1 × %2 in"_s.arg(inches(size.width()), inches(size.height()));
}

std::shared_ptr<const LabelPicture> drawnLabel(const QByteArray &label)
{
    using Kept = std::shared_ptr<const LabelPicture>;
    constexpr int mostKept = 16; // about a megabyte each
    static std::mutex access;
    static QCache<QByteArray, Kept> cache(mostKept);
    {
        const std::lock_guard lock(access);
        if (const Kept *kept = cache.object(label))
            return *kept;
    }
    const Kept picture = draw(label);
    const std::lock_guard lock(access);
    cache.insert(label, new Kept(picture));
    return picture;
}

QByteArray pngOf(const QImage &image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return buffer.data();
}

QByteArray pdfOf(const LabelPicture &picture)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    const auto choosePaper = [&](const LabelPage &page) {
        writer.setPageSize(QPageSize(QSizeF(page.image.size()) / picture.dotsPerInch, QPageSize::Inch));
    };
    writer.setResolution(picture.dotsPerInch);
    writer.setPageMargins({});
    choosePaper(picture.pages.first());
    QPainter painter(&writer);
    painter.setRenderHint(QPainter::LosslessImageRendering);
    for (qsizetype page = 0; page < picture.pages.size(); ++page) {
        if (page > 0) {
            choosePaper(picture.pages[page]);
            writer.newPage();
        }
        painter.drawImage(QPointF(), QImage(picture.pages[page].image));
    }
    painter.end();
    return buffer.data();
}

} // namespace parcelory
