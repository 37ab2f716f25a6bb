#include "app/purchase/QuestionPictures.h"

#include "core/AppError.h"
#include "devices/LabelPicture.h"

#include <QPainter>
#include <QSize>

#include <algorithm>
#include <functional>
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
    size.setWidth(std::max(size.width(), (mark.height() + air) * shape.width() / shape.height()));
    size.setHeight(size.width() * shape.height() / shape.width());
    QRect area(QPoint(), size.boundedTo(page.size()));
    area.moveCenter(mark.center());
    area.moveLeft(std::clamp(area.left(), 0, page.width() - area.width()));
    area.moveTop(std::clamp(area.top(), 0, page.height() - area.height()));
    return area;
}

/// The part of a page without the texts that it would cut.
QImage partOf(const QImage &page, const QRect &part, const QList<QRect> &texts)
{
    QImage image = page.copy(part).convertToFormat(QImage::Format_RGB32);
    QPainter painter(&image);
    for (const QRect &text : texts) {
        if (text.intersects(part) && !part.contains(text))
            painter.fillRect(text.translated(-part.topLeft()), Qt::white);
    }
    return image;
}

/// Where the words of an upright line of text are. The widest gaps between its columns of ink are its blanks.
QList<QRect> placesOfWords(const QImage &page, const QRect &line, qsizetype words)
{
    struct Gap {
        int begin, end;
    };
    QList<Gap> gaps;
    int ink = -1; ///< the last column with ink, counted from the line's left
    int first = -1;
    for (int x = 0; x < line.width(); ++x) {
        bool hasInk = false;
        for (int y = line.top(); y <= line.bottom() && !hasInk; ++y)
            hasInk = qGray(page.pixel(line.left() + x, y)) < 128;
        if (!hasInk)
            continue;
        if (ink < 0)
            first = x;
        else if (x > ink + 1)
            gaps.append({ink + 1, x});
        ink = x;
    }
    if (first < 0 || gaps.size() + 1 < words)
        return {};
    std::ranges::sort(gaps, std::ranges::greater(), [](const Gap &gap) { return gap.end - gap.begin; });
    gaps.resize(words - 1);
    std::ranges::sort(gaps, {}, &Gap::begin);
    gaps.append({ink + 1, ink + 1});
    QList<QRect> places;
    for (const Gap &gap : std::as_const(gaps)) {
        places += QRect(line.left() + first, line.top(), gap.begin - first, line.height());
        first = gap.end;
    }
    return places;
}

/// Where the words that differ are in their line.
QList<QRect> differingWords(const QImage &page, const QRect &line, const LabelText &text, const QString &onLabel)
{
    const QStringList words = text.text.simplified().split(u' ');
    const QStringList differing = onLabel.simplified().split(u' ', Qt::SkipEmptyParts);
    if (text.turn != 0)
        return {};
    const QList<QRect> places = placesOfWords(page, line, words.size());
    QList<QRect> found;
    for (qsizetype at = 0; at < places.size(); ++at) {
        const auto isIn = [&](const QString &word) { return words[at].contains(word, Qt::CaseInsensitive); };
        if (std::ranges::any_of(differing, isIn))
            found += places[at];
    }
    return found.size() < words.size() ? found : QList<QRect>(); // a whole line is marked already
}

QString partName(const LabelFinding &difference)
{
    return difference.onLabel.isEmpty() ? u"the address"_s : difference.onLabel;
}

} // namespace

QList<QuestionPicture> thumbnailOf(const QByteArray &label, const QString &recipient)
{
    const auto drawn = drawnOrNull(label);
    if (!drawn)
        return {};
    return {{.png = pngOf(drawn->thumbnail), .name = u"Label picture, "_s + recipient}};
}

QList<QuestionPicture> enlargedParts(const QByteArray &label, const QList<LabelText> &texts,
                                     const QList<LabelFinding> &differences)
{
    const auto drawn = drawnOrNull(label);
    if (!drawn)
        return {};
    QList<QuestionPicture> parts;
    QList<LabelPlace> shown;
    for (const LabelFinding &difference : differences) {
        const LabelPlace place = drawn->placeOf(difference.elements);
        const auto isSame = [&](const LabelPlace &other) {
            return other.page == place.page && other.area == place.area;
        };
        if (place.area.isEmpty() || std::ranges::any_of(shown, isSame))
            continue;
        shown += place;
        const QImage &page = drawn->pages[place.page].image;
        const QRect part = around(place.area, page.rect());
        QList<QRect> words, others;
        for (const LabelText &text : texts) {
            const LabelPlace line = drawn->placeOf(text.element);
            if (line.page != place.page)
                continue;
            if (difference.elements.contains(text.element))
                words += differingWords(page, line.area, text, difference.onLabel);
            else
                others += line.area;
        }
        for (QRect &word : words)
            word.translate(-part.topLeft());
        parts += QuestionPicture{.png = pngOf(partOf(page, part, others)),
                                 .name = u"Part of the label: "_s + partName(difference),
                                 .caption = u"The label, enlarged:"_s,
                                 .mark = place.area.translated(-part.topLeft()),
                                 .words = words};
    }
    return parts;
}

} // namespace parcelory
