#include "app/purchase/QuestionPictures.h"

#include "core/AppError.h"
#include "devices/LabelPicture.h"

#include <QSize>

#include <algorithm>
#include <memory>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

std::shared_ptr<const LabelPicture> drawnOrNull(const QByteArray &label)
{
    try {
        return drawnLabel(label);
    } catch (const AppError &) {
        return nullptr;
    }
}

/// An area of the enlarged picture's shape around `mark`.
QRect around(const QRect &mark, const QRect &page)
{
    constexpr QSize shape(552, 148);
    constexpr int least = 440, air = 40; // dots
    QSize size(std::max(least, mark.width() + 2 * air), 0);
    size.setHeight(std::max(size.width() * shape.height() / shape.width(), mark.height() + air));
    QRect area(QPoint(), size.boundedTo(page.size()));
    area.moveCenter(mark.center());
    area.moveLeft(std::clamp(area.left(), 0, page.width() - area.width()));
    area.moveTop(std::clamp(area.top(), 0, page.height() - area.height()));
    return area;
}

} // namespace

std::optional<QuestionPicture> thumbnailOf(const QByteArray &label, const QString &recipient)
{
    const auto drawn = drawnOrNull(label);
    if (!drawn)
        return std::nullopt;
    return QuestionPicture{.png = pngOf(drawn->thumbnail), .name = u"Label picture, "_s + recipient};
}

std::optional<QuestionPicture> enlargedPart(const QByteArray &label, const LabelFinding &difference)
{
    const auto drawn = drawnOrNull(label);
    const LabelPlace mark = drawn ? drawn->placeOf(difference.elements) : LabelPlace();
    if (mark.area.isEmpty())
        return std::nullopt;
    const QImage &page = drawn->pages[mark.page].image;
    const QRect part = around(mark.area, page.rect());
    return QuestionPicture{.png = pngOf(page.copy(part)),
                           .name = u"Part of the label: "_s + difference.onLabel,
                           .caption = u"The label, enlarged:"_s,
                           .mark = mark.area.translated(-part.topLeft())};
}

} // namespace parcelory
