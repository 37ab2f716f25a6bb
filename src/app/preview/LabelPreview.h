#pragma once

#include "app/AppState.h"
#include "compose/LabelReadBack.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "devices/LabelPicture.h"
#include "records/ShipmentRecord.h"

#include <memory>
#include <optional>

namespace parcelory {

/// What can be seen of a label now.
struct LabelSight {
    enum class State {
        nothing, ///< no label is chosen
        drawing,
        drawn,
        noCopy, ///< the mailing log has no label for its row
        unread, ///< the mailing log cannot be read
        undrawable,
    };

    State state = State::nothing;
    std::shared_ptr<const LabelPicture> picture = {};
    std::optional<LabelVerdict> verdict = {}; ///< of the comparison with the parcel; nothing if it was not compared

    bool operator==(const LabelSight &) const = default;
};

/// One place where a label is shown: loads and draws the label on the thread pool. While the label changes, the place
/// shows no picture rather than the former label's. Lives as long as AppState.
class LabelPreview : public Observable {
    Q_OBJECT
public:
    explicit LabelPreview(AppState &app);

    Observed<std::optional<ShipmentRecord>> label{this};
    Observed<LabelSight> sight{this};
    Observed<QString> message{this}; ///< result of saving

    /// Shows a row of the mailing log, or a label that the record brings along. `verdict` is the comparison's result
    /// if it is known already; otherwise it is read from the log. The same label again only renews what may change.
    void show(const ShipmentRecord &record, const std::optional<LabelVerdict> &verdict = {});
    void clear();
    /// From now on shows what `other` shows, as long as that is a label, until show() is called.
    void follow(LabelPreview &other);

    /// Asks for a larger view of the label.
    void open() { emit opened(); }
    /// Saves the label as a picture or a PDF that the clerk names.
    Task<> save();

signals:
    void opened();

private:
    Task<> load(ShipmentRecord record, std::optional<LabelVerdict> verdict);
    QString proposedName() const;

    AppState &m_app;
    int m_shown = 0; ///< counts the labels shown
    QMetaObject::Connection m_following;
};

} // namespace parcelory
