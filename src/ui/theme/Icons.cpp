#include "ui/theme/Icons.h"

#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <utility>

static void loadIcons()
{
    Q_INIT_RESOURCE(icons); // a static library's resources are linked only when asked for
}

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QByteArray drawing(const QString &name, const QColor &ink)
{
    loadIcons();
    QFile file(u":/icons/%1.svg"_s.arg(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("there is no icon %s", qUtf8Printable(name));
    return file.readAll().replace("currentColor", ink.name().toUtf8());
}

class SvgIconEngine : public QIconEngine {
public:
    SvgIconEngine(QString name, Token ink) : m_name(std::move(name)), m_ink(ink) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        paintIcon(*painter, m_name, rect, ink(mode));
    }
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State, qreal scale) override
    {
        return iconPixmap(m_name, ink(mode), qRound(std::min(size.width(), size.height()) / scale), scale);
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }
    QIconEngine *clone() const override { return new SvgIconEngine(m_name, m_ink); }

private:
    QColor ink(QIcon::Mode mode) const
    {
        return Theme::current().color(mode == QIcon::Disabled ? &Tokens::disabledText : m_ink);
    }

    QString m_name;
    Token m_ink;
};

} // namespace

QIcon themeIcon(const QString &name, Token ink)
{
    return QIcon(new SvgIconEngine(name, ink)); // the icon owns its engine
}

QPixmap iconPixmap(const QString &name, const QColor &ink, int size, qreal pixelRatio)
{
    const QString key = u"%1/%2/%3/%4"_s.arg(name, ink.name()).arg(size).arg(pixelRatio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = QPixmap(QSize(size, size) * pixelRatio);
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(drawing(name, ink)).render(&painter, QRectF(0, 0, size, size));
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

void paintIcon(QPainter &painter, const QString &name, const QRect &place, const QColor &ink)
{
    const int size = std::min(place.width(), place.height());
    const qreal ratio = painter.device()->devicePixelRatioF();
    const QRect centered(place.center().x() - (size - 1) / 2, place.center().y() - (size - 1) / 2, size, size);
    painter.drawPixmap(centered, iconPixmap(name, ink, size, ratio));
}

} // namespace parcelory
