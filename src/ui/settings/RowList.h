#pragma once

#include <QBoxLayout>
#include <QList>

#include <algorithm>
#include <vector>

namespace parcelory {

/// One row (a PanelFrame) for each record of a list, in the list's order. A row lives as long as its record, so that a
/// field is never recreated while the clerk types in it.
template <class Id, class Row>
class RowList {
public:
    /// `place` holds nothing but these rows.
    explicit RowList(QVBoxLayout *place) : m_place(place) {}

    /// True if rows were added or removed.
    template <class Make>
    bool follow(const QList<Id> &ids, Make make)
    {
        bool changed =
            std::erase_if(m_rows, [&](const Entry &entry) { return !ids.contains(entry.id) && drop(entry); });
        int at = 0;
        for (qsizetype i = 0; i < ids.size(); ++i) {
            if (ids.indexOf(ids[i]) < i) // a file edited by hand may contain an id twice; show it once
                continue;
            Row *row = find(ids[i]);
            if (!row) {
                row = m_rows.emplace_back(ids[i], make(ids[i])).row;
                changed = true;
            }
            if (m_place->indexOf(row) != at)
                m_place->insertWidget(at, row);
            row->setLines(at > 0 ? Qt::Edges(Qt::TopEdge) : Qt::Edges());
            ++at;
        }
        return changed;
    }

    Row *find(const Id &id) const
    {
        const auto found = std::ranges::find(m_rows, id, &Entry::id);
        return found == m_rows.end() ? nullptr : found->row;
    }

    template <class Visit>
    void forEach(Visit visit) const
    {
        for (const Entry &entry : m_rows)
            visit(entry.row);
    }

private:
    struct Entry {
        Entry(const Id &record, Row *widget) : id(record), row(widget) {}
        Id id;
        Row *row;
    };

    bool drop(const Entry &entry)
    {
        m_place->removeWidget(entry.row);
        entry.row->hide();
        entry.row->deleteLater(); // its own button may have triggered the removal
        return true;
    }

    QVBoxLayout *m_place;
    std::vector<Entry> m_rows;
};

} // namespace parcelory
