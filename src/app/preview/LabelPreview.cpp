#include "app/preview/LabelPreview.h"

#include "app/purchase/KeptLabel.h"
#include "core/AppError.h"
#include "core/SaveFile.h"
#include "core/SettingsKeys.h"
#include "core/StaleCheck.h"
#include "core/ports/Preferences.h"
#include "core/ports/Prompts.h"
#include "records/LogRead.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using State = LabelSight::State;

/// The bytes of a label never change once the log has them.
bool isSameLabel(const ShipmentRecord &one, const ShipmentRecord &other)
{
    return one.id == other.id && one.transactionID == other.transactionID && one.tracking == other.tracking &&
           one.zpl == other.zpl;
}

LabelSight sightOf(const LogRead<KeptLabel> &kept, const std::optional<LabelVerdict> &verdict)
{
    if (!kept.isRead())
        return {.state = State::unread};
    LabelSight sight{.state = State::noCopy, .verdict = verdict ? verdict : kept->verdict};
    if (!kept->bytes)
        return sight;
    try {
        sight.picture = drawnLabel(*kept->bytes);
        sight.state = State::drawn;
    } catch (const AppError &) {
        sight.state = State::undrawable;
    }
    return sight;
}

} // namespace

LabelPreview::LabelPreview(AppState &app) : m_app(app) {}

void LabelPreview::show(const ShipmentRecord &record, const std::optional<LabelVerdict> &verdict)
{
    disconnect(m_following);
    const std::optional<ShipmentRecord> before = label;
    const bool isSame = before && isSameLabel(*before, record);
    if (!isSame)
        sight = LabelSight{.state = State::drawing};
    label = record;
    ++m_shown;
    spawn([this, record, verdict] { return load(record, verdict); });
}

void LabelPreview::clear()
{
    ++m_shown;
    label = std::nullopt;
    sight = LabelSight();
}

Task<> LabelPreview::load(ShipmentRecord record, std::optional<LabelVerdict> verdict)
{
    const QPointer alive(this);
    const auto isStale = staleCheck(m_shown);
    const auto kept = co_await onPool([&log = m_app.log, record] { return keptLabel(log, record); });
    if (!alive || isStale()) // the place shows another label by now
        co_return;
    const LabelSight seen = co_await onPool([kept, verdict] { return sightOf(kept, verdict); });
    if (alive && !isStale())
        sight = seen;
}

void LabelPreview::follow(LabelPreview &other)
{
    const auto take = [this, &other] {
        const std::optional<ShipmentRecord> shown = other.label;
        if (!shown)
            return; // the clerk may still read it
        if (!label.value() || !isSameLabel(*label.value(), *shown))
            message = QString();
        label = shown;
        sight = other.sight.value();
    };
    disconnect(m_following);
    m_following = connect(&other, &LabelPreview::changed, this, take);
    take();
}

/// "Whitfield 9210…01.png"
QString LabelPreview::proposedName() const
{
    const ShipmentRecord &record = *label.value();
    QString name = record.recipientName().section(u' ', -1) + u' ' + record.tracking.right(6);
    for (QChar &c : name) {
        if (!c.isLetterOrNumber() && c != u'-')
            c = u' ';
    }
    return u"Label %1.png"_s.arg(name.simplified());
}

Task<> LabelPreview::save()
{
    const auto picture = sight.value().picture;
    if (!picture)
        co_return;
    const QPointer alive(this);
    const QString path = co_await m_app.platform.prompts.saveFile(
        u"Save Label"_s, QDir(read(m_app.platform.preferences, settings::labelFolder)).filePath(proposedName()));
    if (path.isEmpty() || !alive)
        co_return;
    message = QString();
    try {
        co_await onPool([path, picture] {
            const bool isPdf = path.endsWith(u".pdf"_s, Qt::CaseInsensitive);
            saveBytes(path, isPdf ? pdfOf(*picture) : pngOf(picture->pages.first().image));
        });
        write(m_app.platform.preferences, settings::labelFolder, QFileInfo(path).absolutePath());
        message = u"Saved to "_s + QFileInfo(path).fileName();
    } catch (const AppError &error) {
        message = m_app.recorded(u"Save Label"_s, error, Popup::no);
    }
}

} // namespace parcelory
